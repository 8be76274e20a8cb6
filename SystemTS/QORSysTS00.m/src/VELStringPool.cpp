#include "VELStringPool.h"

#include "VELString.h"
#include "VELSysStatus.h"

#include <atomic>
#include <dlfcn.h>

extern "C" int __cxa_thread_atexit(void (*destructor)(void*), void* object, void* library) noexcept;
extern "C" void* __dso_handle;

namespace VEL::internal {

thread_local constinit StringPool t_stringPool __attribute__((tls_model("initial-exec"))) = {};

namespace {

/// Computed once per process, at the first need.
bool PoolIsSwitchedOn() {
    static const bool isOn = [] {
        if (const char* forced = std::getenv("VELStringRecyclePoolForceEnable")) {
            return std::strtoul(forced, nullptr, 10) != 0;
        }
        return std::getenv("ReplayPurify") == nullptr;
    }();
    return isOn;
}

/// 1 until the library has pinned itself in memory.
constinit std::atomic<unsigned char> s_pinIsDue{1};

/// Keeps this library loaded for the rest of the process: threads hold blocks and an exit handler of ours.
void PinLibrary() {
    unsigned char due = 1;
    if (!s_pinIsDue.compare_exchange_strong(due, 0)) {
        return;
    }
    Dl_info self;
    if (dladdr(reinterpret_cast<void*>(&EnsureStringPool), &self) != 0 &&
        dlopen(self.dli_fname, RTLD_LAZY | RTLD_NODELETE) != nullptr) {
        return;
    }
    // Twice, deliberately: the first call may hand out the message, the second one clears what is left of it.
    dlerror();
    dlerror();
    s_pinIsDue.store(1);
}

/// Strings that other thread-local destructors destroy after this go straight to `free`.
void OnThreadExit(void* object) {
    auto& pool = *static_cast<StringPool*>(object);
    pool.exitHandlerIsSet = false;
    pool.status = StringPool::Off;
    pool.Flush();
}

void SetExitHandler(StringPool& pool) {
    if (pool.exitHandlerIsSet) {
        return;
    }
    pool.exitHandlerIsSet = __cxa_thread_atexit(OnThreadExit, &pool, &__dso_handle) == 0;
}

void ResetLimits(StringPool& pool) {
    for (StringPoolBucket& bucket : pool.buckets) {
        bucket.limit = StringPool::BucketLimit;
    }
}

} // namespace

bool StringPool::Flush() {
    bool hadBlocks = false;
    for (std::size_t i = BucketCount; i-- > 0;) {
        StringPoolBucket& bucket = buckets[i];
        while (bucket.head != nullptr) {
            FreeBlock* block = bucket.head;
            bucket.head = block->next;
            std::free(block);
            hadBlocks = true;
        }
        bucket.count = 0;
    }
    return hadBlocks;
}

void* StringPool::TakeFromHeap(std::size_t size) {
    EnsureStringPool();
    return std::malloc(GrantedSize(size));
}

void StringPool::GiveToHeap(void* block, std::size_t size) {
    if (!initialised) {
        EnsureStringPool().Give(block, size);
        return;
    }
    std::free(block);
}

StringPool& EnsureStringPool() {
    StringPool& pool = t_stringPool;
    if (pool.initialised) {
        return pool;
    }
    pool.initialised = true;
    ResetLimits(pool);
    pool.status = PoolIsSwitchedOn() ? StringPool::On : StringPool::Off;
    PinLibrary();
    SetExitHandler(pool);
    return pool;
}

} // namespace VEL::internal

using namespace VEL::internal;

int VELStringPoolFlush() {
    return EnsureStringPool().Flush() ? 1 : 0;
}

int VELStringPoolSetForCurrentThrd(int on) {
    StringPool& pool = EnsureStringPool();
    if (!PoolIsSwitchedOn()) {
        return VEL::StatusRefused;
    }
    const auto request = static_cast<unsigned char>(on);
    if (pool.status == StringPool::On) {
        // Deliberate: any byte but 1 switches off.
        if (request == 1) {
            return VEL::StatusNote;
        }
        VELStringPoolFlush();
        pool.status = StringPool::Off;
        return VEL::StatusOk;
    }
    if (request == 0) {
        return VEL::StatusNote;
    }
    ResetLimits(pool);
    pool.status = StringPool::On;
    // A thread that is already running its exit handlers gets its blocks freed once more.
    SetExitHandler(pool);
    return VEL::StatusOk;
}
