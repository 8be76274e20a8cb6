#include "VELSysContext.h"

#include <atomic>

namespace {

constinit std::atomic<void*> s_currentContext{nullptr};

} // namespace

int VELSysContextSetCurrentContext(void* context) {
    if (!context) {
        return -1;
    }
    // Release and acquire: whoever gets the context sees what was written to it before.
    s_currentContext.store(context, std::memory_order_release);
    return 0;
}

void* VELSysContextGetCurrentContext() {
    return s_currentContext.load(std::memory_order_acquire);
}

int VELSysContextFinalize() {
    s_currentContext.store(nullptr, std::memory_order_release);
    return 0;
}
