#include "PathTrace.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

using namespace PathTrace;

static int s_traces[8];
static int s_traceCount = 0;

extern "C" void __wrap__Z19VELSysTraceCreate__PPvPKc(void** handle, const char* name) {
    events.push_back(std::string("create ") + name);
    if (isConfigured) {
        *handle = &s_traces[s_traceCount++];
    }
    if (const auto action = std::exchange(insideCreate, nullptr)) {
        action();
    }
}

extern "C" void __wrap__Z20VELSysTraceDestroy__PPv(void** handle) {
    events.push_back("destroy " + std::to_string(static_cast<int*>(*handle) - s_traces));
    *handle = nullptr;
}

extern "C" int __wrap__ZN3VEL8internal9TraceInfoEPvPKcz(void* trace, const char* format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    events.push_back(std::to_string(static_cast<int*>(trace) - s_traces) + ": " + line);
    return 0;
}
