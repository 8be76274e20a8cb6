#include "HeapLog.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>
#include <utility>

namespace {

std::atomic<HeapLog*> s_log = nullptr;
std::atomic<int> s_debugBreaks = 0;

/// Number of the next request, while there is a shortage.
thread_local int t_next = 0;
thread_local int t_firstToFail = 0;
thread_local HeapShortage::Extent t_extent = HeapShortage::OnlyThatOne;
thread_local bool t_hasStruck = false;
thread_local std::function<void()>* t_insideNextRequest = nullptr;
/// What a log asks for itself is nobody's request.
thread_local bool t_isLogging = false;

class Logging {
public:
    explicit Logging(std::mutex& mutex) : _lock(mutex) { t_isLogging = true; }
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;
    ~Logging() { t_isLogging = false; }

private:
    std::lock_guard<std::mutex> _lock;
};

bool IsRefused() {
    if (t_firstToFail == 0) {
        return false;
    }
    ++t_next;
    const bool refused = t_next == t_firstToFail || (t_next > t_firstToFail && t_extent == HeapShortage::FromThatOneOn);
    t_hasStruck = t_hasStruck || refused;
    return refused;
}

} // namespace

extern "C" void* __real_malloc(std::size_t size);
extern "C" void __real_free(void* block);

extern "C" void* __wrap_malloc(std::size_t size) {
    if (t_insideNextRequest != nullptr) {
        const auto action = std::exchange(t_insideNextRequest, nullptr);
        (*action)();
        delete action;
    }
    if (IsRefused()) {
        return nullptr;
    }
    void* const block = __real_malloc(size);
    if (HeapLog* const log = s_log) {
        log->RecordTaken(block, size);
    }
    return block;
}

extern "C" void __wrap_free(void* block) {
    HeapLog* const log = s_log;
    if (log != nullptr && block != nullptr) {
        log->RecordFreed(block);
    }
    __real_free(block);
}

extern "C" void __wrap__Z13VELDebugBreaki(int code) {
    EXPECT_EQ(code, 1);
    ++s_debugBreaks;
}

HeapLog::HeapLog() {
    s_log = this;
}

HeapLog::~HeapLog() {
    s_log = nullptr;
}

std::vector<std::size_t> HeapLog::Requests() const {
    const Logging logging(_mutex);
    return _requests;
}

std::vector<const void*> HeapLog::Freed() const {
    const Logging logging(_mutex);
    return _freed;
}

bool HeapLog::HasFreed(const void* block) const {
    const Logging logging(_mutex);
    return std::ranges::find(_freed, block) != _freed.end();
}

std::size_t HeapLog::Live() const {
    const Logging logging(_mutex);
    return _live.size();
}

void HeapLog::RecordTaken(const void* block, std::size_t size) {
    const Logging logging(_mutex);
    _requests.push_back(size);
    _live.push_back(block);
}

void HeapLog::RecordFreed(const void* block) {
    const Logging logging(_mutex);
    _freed.push_back(block);
    std::erase(_live, block);
}

HeapShortage::HeapShortage(int first, Extent extent) {
    t_next = 0;
    t_extent = extent;
    t_hasStruck = false;
    t_firstToFail = first;
}

HeapShortage::~HeapShortage() {
    t_firstToFail = 0;
}

bool HeapShortage::HasStruck() {
    return t_hasStruck;
}

bool HeapShortage::Refuses() {
    return !t_isLogging && IsRefused();
}

void InsideNextRequest(std::function<void()> action) {
    t_insideNextRequest = new std::function<void()>(std::move(action));
}

int DebugBreaks() {
    return s_debugBreaks;
}

// By `malloc`, so that it is logged and refused as all that is.
extern "C" void* __wrap_realloc(void* block, std::size_t size) {
    void* const larger = std::malloc(size);
    if (larger != nullptr && block != nullptr) {
        std::memcpy(larger, block, std::min(malloc_usable_size(block), size));
        std::free(block);
    }
    return larger;
}
