#include "VELSysTSDataQueue.h"

#include <chrono>
#include <memory>
#include <new>

namespace {

/// Waits until `isDone`, for a wait below 1 not at all.
template <typename Condition>
bool WaitFor(std::unique_lock<std::mutex>& lock, std::condition_variable& changed, int milliseconds, Condition isDone) {
    if (milliseconds < 1) {
        return isDone();
    }
    return changed.wait_for(lock, std::chrono::milliseconds(milliseconds), isDone);
}

} // namespace

VELSysTSDataQueue::VELSysTSDataQueue() : _maximumCount(0) {}

VELSysTSDataQueue::~VELSysTSDataQueue() = default;

VELSysTSDataQueue* VELSysTSDataQueue::CreateEmptyQueue(int maximumCount, int reserved) {
    std::unique_ptr<VELSysTSDataQueue> queue(new (std::nothrow) VELSysTSDataQueue);
    if (!queue || queue->Init(maximumCount, reserved) != 0) {
        return nullptr;
    }
    return queue.release();
}

int VELSysTSDataQueue::Init(int maximumCount, int) {
    if (maximumCount < 0) {
        return -1;
    }
    const std::lock_guard lock(_mutex);
    _maximumCount = maximumCount;
    _changed.notify_all();
    return 0;
}

int VELSysTSDataQueue::PushFirst(void* entry, int milliseconds) {
    return Push(End::First, entry, milliseconds);
}

int VELSysTSDataQueue::PushLast(void* entry, int milliseconds) {
    return Push(End::Last, entry, milliseconds);
}

int VELSysTSDataQueue::PopFirst(void** entry, int milliseconds) {
    return Pop(End::First, entry, milliseconds);
}

int VELSysTSDataQueue::PopLast(void** entry, int milliseconds) {
    return Pop(End::Last, entry, milliseconds);
}

int VELSysTSDataQueue::Count() const {
    const std::lock_guard lock(_mutex);
    return static_cast<int>(_entries.size());
}

int VELSysTSDataQueue::Push(End end, void* entry, int milliseconds) {
    std::unique_lock lock(_mutex);
    const auto hasRoom = [this] {
        return _maximumCount == 0 || _entries.size() < static_cast<unsigned int>(_maximumCount);
    };
    if (!WaitFor(lock, _changed, milliseconds, hasRoom)) {
        return -1;
    }
    try {
        _entries.insert(end == End::First ? _entries.begin() : _entries.end(), entry);
    } catch (const std::bad_alloc&) {
        return -1;
    }
    _changed.notify_all();
    return 0;
}

int VELSysTSDataQueue::Pop(End end, void** entry, int milliseconds) {
    if (!entry) {
        return -1;
    }
    *entry = nullptr;
    std::unique_lock lock(_mutex);
    if (!WaitFor(lock, _changed, milliseconds, [this] { return !_entries.empty(); })) {
        return -1;
    }
    const auto position = end == End::First ? _entries.begin() : std::prev(_entries.end());
    *entry = *position;
    _entries.erase(position);
    _changed.notify_all();
    return 0;
}
