#include "VELSysIConvTSWrap.h"

#include "DuplicateText.h"
#include "NoDescriptor.h"
#include "PrintAndFlush.h"
#include "TestHarness.h"
#include "VELSysStatus.h"
#include "VELSysTSDataQueue.h"
#include "WithdrawableMutex.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

using VEL::internal::DuplicateText;
using VEL::internal::IsInRTX;
using VEL::internal::NoDescriptor;
using Lock = VEL::internal::WithdrawableMutex::Lock;

namespace {

/// The two code sets of a conversion.
struct CodeSets {
    std::unique_ptr<char[]> first;
    std::unique_ptr<char[]> second;

    bool AreComplete() const { return first != nullptr && second != nullptr; }
    bool Are(const char* one, const char* other) const {
        return std::strcmp(first.get(), one) == 0 && std::strcmp(second.get(), other) == 0;
    }
};

/// A registered conversion: from the first code set to the second, and back.
struct RegistryEntry {
    CodeSets codeSets;
    IConvDesc_t base;
    RegistryEntry* next;
};

/// A conversion as one thread has it. The thread alone follows `next`.
struct CacheEntry {
    IConvDesc_t base;
    bool hasFailed = true; ///< Also while the descriptors are being opened.
    iconv_t forward = NoDescriptor;
    iconv_t backward = NoDescriptor;
    CacheEntry* next = nullptr;

    iconv_t DescriptorOf(IConvDesc_t handle) const {
        if (hasFailed) {
            return NoDescriptor;
        }
        return (handle & 1) == 0 ? forward : backward;
    }
    bool HasDescriptor() const { return forward != NoDescriptor || backward != NoDescriptor; }
};

/// Guards registry and queue. It is never held while a descriptor is opened.
constinit VEL::internal::WithdrawableMutex s_mutex;
constinit RegistryEntry* s_registry = nullptr;
constinit IConvDesc_t s_nextBase = 0;
/// The cache entries of all threads.
constinit VELSysTSDataQueue* s_entries = nullptr;
/// Failed entries with one open descriptor, which nobody uses; touched by the end alone.
constinit CacheEntry* s_idle = nullptr;

// Relaxed throughout: the end is told to other threads by whoever ends the session, and what races with it is decided
// under the mutex.
constinit std::atomic<bool> s_hasEnded{false};
constinit std::atomic<bool> s_endIsTold{false};

/// The calling thread's entries, the one used last in front. Dangling after the end, when nobody looks at it.
constinit thread_local CacheEntry* t_entries __attribute__((tls_model("initial-exec"))) = nullptr;

bool HasEnded() {
    return s_hasEnded.load(std::memory_order_relaxed);
}

IConvDesc_t BaseOf(IConvDesc_t handle) {
    return handle & ~1;
}

__attribute__((format(printf, 2, 3))) void TellHarness(std::FILE* stream, const char* format, ...) {
    if (!IsInRTX()) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    VEL::internal::PrintAndFlush(stream, format, arguments);
    va_end(arguments);
}

/// Looks a conversion up in either direction.
bool FindHandle(const char* to, const char* from, IConvDesc_t& handle) {
    for (const RegistryEntry* entry = s_registry; entry != nullptr; entry = entry->next) {
        if (entry->codeSets.Are(from, to)) {
            handle = entry->base;
            return true;
        }
        if (entry->codeSets.Are(to, from)) {
            handle = entry->base + 1;
            return true;
        }
    }
    return false;
}

/// Copies the names of a registered conversion, since the end of the session frees them. False when there is no such
/// conversion; the copy is incomplete when there is no memory.
bool CopyCodeSets(IConvDesc_t base, CodeSets& copy) {
    const Lock lock(s_mutex);
    if (!lock) {
        return false;
    }
    for (const RegistryEntry* entry = s_registry; entry != nullptr; entry = entry->next) {
        if (entry->base == base) {
            copy = {DuplicateText(entry->codeSets.first.get()), DuplicateText(entry->codeSets.second.get())};
            return true;
        }
    }
    return false;
}

/// Finds a conversion behind the head of the calling thread's list and moves it to the front.
CacheEntry* BringToFront(CacheEntry* head, IConvDesc_t base) {
    CacheEntry* previous = head;
    while (CacheEntry* const entry = previous->next) {
        if (entry->base == base) {
            previous->next = entry->next;
            entry->next = head;
            t_entries = entry;
            return entry;
        }
        previous = entry;
    }
    return nullptr;
}

/// Gives the calling thread an entry without descriptors; null after the end and when there is no memory.
CacheEntry* AddEntry(IConvDesc_t base) {
    auto entry = std::unique_ptr<CacheEntry>(new (std::nothrow) CacheEntry{.base = base, .next = t_entries});
    VELSysIConvTSWrap::sInitIConvTS(nullptr);
    const Lock lock(s_mutex);
    if (!lock || entry == nullptr || s_entries == nullptr || HasEnded() || s_entries->PushFirst(entry.get(), -1) != 0) {
        return nullptr;
    }
    t_entries = entry.release();
    return t_entries;
}

void CloseBoth(iconv_t forward, iconv_t backward) {
    if (forward != NoDescriptor) {
        iconv_close(forward);
    }
    if (backward != NoDescriptor) {
        iconv_close(backward);
    }
}

/// Opens both directions. The entry is only touched while the session lasts: its end frees it.
iconv_t OpenDescriptors(CacheEntry& entry, const CodeSets& codeSets, IConvDesc_t handle) {
    const iconv_t forward = iconv_open(codeSets.second.get(), codeSets.first.get());
    const iconv_t backward = iconv_open(codeSets.first.get(), codeSets.second.get());
    iconv_t descriptor = NoDescriptor;
    {
        const Lock lock(s_mutex);
        if (HasEnded()) {
            CloseBoth(forward, backward);
            return NoDescriptor;
        }
        entry.forward = forward;
        entry.backward = backward;
        entry.hasFailed = forward == NoDescriptor || backward == NoDescriptor;
        descriptor = entry.DescriptorOf(handle);
    }
    if (descriptor == NoDescriptor) {
        TellHarness(stderr, "[VELSysIConvTSWrap] failed to initialize converters for conversion %s <-> %s\n",
                    codeSets.first.get(), codeSets.second.get());
    }
    return descriptor;
}

/// Gives the calling thread what it doesn't have yet. Kept out of line: the way to a hit saves no registers for it.
__attribute__((noinline)) iconv_t OpenForThread(IConvDesc_t handle) {
    CodeSets codeSets;
    if (!CopyCodeSets(BaseOf(handle), codeSets)) {
        TellHarness(stderr, "[VELSysIConvTSWrap] The input IConvDesc_t handle is invalid.\n");
        return NoDescriptor;
    }
    if (!codeSets.AreComplete()) {
        return NoDescriptor;
    }
    CacheEntry* const entry = AddEntry(BaseOf(handle));
    return entry != nullptr ? OpenDescriptors(*entry, codeSets, handle) : NoDescriptor;
}

__attribute__((cold, noinline)) iconv_t RefuseAfterTheEnd() {
    if (!s_endIsTold.exchange(true, std::memory_order_relaxed)) {
        // The dot behind the line feed is deliberate: logs are compared byte by byte.
        TellHarness(stdout, "[VELSysIConvTSWrap] INFO: session is ending. Support for MBCS has been dropped in a "
                            "earlier stage\n.");
    }
    return NoDescriptor;
}

void ReleaseEntry(CacheEntry* entry) {
    if (entry->hasFailed && entry->HasDescriptor()) {
        // Deliberately not closed: the one descriptor of a failed pair stays idle to the end of the process. It is kept
        // where a leak checker finds it.
        entry->next = std::exchange(s_idle, entry);
        return;
    }
    CloseBoth(entry->forward, entry->backward);
    delete entry;
}

/// Closes the descriptors of all threads.
void ReleaseEntries(std::unique_ptr<VELSysTSDataQueue> entries) {
    TellHarness(stdout, "[VELSysIConvTSWrap] WARNING: from this point, conversions are no longer supported.\n");
    for (void* entry = nullptr; entries->PopLast(&entry, -1) == 0;) {
        ReleaseEntry(static_cast<CacheEntry*>(entry));
    }
}

} // namespace

void VELSysIConvTSWrap::sInitIConvTS(void*) {
    if (!s_mutex.IsPublished()) {
        s_mutex.Publish();
    }
    const Lock lock(s_mutex);
    if (lock && s_entries == nullptr) {
        s_entries = VELSysTSDataQueue::CreateEmptyQueue(0, 0);
    }
}

int VELSysIConvTSWrap::Open(const char* to, const char* from, IConvDesc_t& handle) {
    if (HasEnded() || to == nullptr || from == nullptr) {
        return VEL::StatusFailure;
    }
    sInitIConvTS(nullptr);
    const Lock lock(s_mutex);
    if (!lock || HasEnded()) {
        return VEL::StatusFailure;
    }
    if (FindHandle(to, from, handle)) {
        return VEL::StatusOk;
    }
    CodeSets codeSets{DuplicateText(from), DuplicateText(to)};
    if (!codeSets.AreComplete()) {
        return VEL::StatusFailure;
    }
    auto* const entry = new (std::nothrow) RegistryEntry{std::move(codeSets), s_nextBase, s_registry};
    if (entry == nullptr) {
        return VEL::StatusFailure;
    }
    s_registry = entry;
    s_nextBase += 2;
    handle = entry->base;
    return VEL::StatusOk;
}

iconv_t VELSysIConvTSWrap::GetIConvDesc(IConvDesc_t handle) {
    if (HasEnded()) [[unlikely]] {
        return RefuseAfterTheEnd();
    }
    CacheEntry* entry = t_entries;
    if (entry != nullptr && entry->base != BaseOf(handle)) {
        entry = BringToFront(entry, BaseOf(handle));
    }
    return entry != nullptr ? entry->DescriptorOf(handle) : OpenForThread(handle);
}

void VELSysIConvTSWrap::sDeinitIConvTS(int) {
    s_hasEnded.store(true, std::memory_order_relaxed);
    std::unique_ptr<VELSysTSDataQueue> entries;
    RegistryEntry* registry = nullptr;
    if (const Lock lock(s_mutex); lock) {
        entries.reset(std::exchange(s_entries, nullptr));
        registry = std::exchange(s_registry, nullptr);
    }
    if (entries != nullptr) {
        ReleaseEntries(std::move(entries));
    }
    while (registry != nullptr) {
        delete std::exchange(registry, registry->next);
    }
    s_mutex.Withdraw();
}
