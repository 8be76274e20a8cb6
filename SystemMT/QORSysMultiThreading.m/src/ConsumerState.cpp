#include "ConsumerState.h"

#include <chrono>
#include <new>

namespace VEL::internal {

int ConsumerState::Start(int newMilliseconds, void (*newFunction)(void*), void* newData) {
    std::unique_lock lock(_mutex);
    while (_isStopping && _worker) {
        const std::shared_ptr<ThreadExecution> stopping = _worker;
        lock.unlock();
        if (stopping->Join() != 0) {
            return -1;
        }
        lock.lock();
        if (_worker == stopping) {
            _worker.reset();
        }
    }
    _milliseconds = newMilliseconds;
    _timeOutFunction = newFunction;
    _timeOutData = newData;
    if (!_worker) {
        return Launch();
    }
    ++_waitNumber;
    _wake.notify_all();
    return 0;
}

int ConsumerState::Launch() {
    _isStopping = false;
    _workersShare = shared_from_this();
    _worker = ThreadExecution::Launch(&ConsumerState::Main, this, 0);
    if (_worker) {
        return 0;
    }
    _workersShare.reset();
    return -1;
}

void ConsumerState::Stop() {
    std::list<Message> cancelled;
    std::unique_lock lock(_mutex);
    cancelled.swap(_messages);
    _isStopping = true;
    _wake.notify_all();
    // This very run and not whichever is under way later: another thread may start the consumer again.
    const std::shared_ptr<ThreadExecution> worker = _worker;
    lock.unlock();
    if (worker) {
        worker->Join();
    }
    Cancel(cancelled);
}

void ConsumerState::Close() {
    std::list<Message> cancelled;
    {
        const std::lock_guard lock(_mutex);
        _isClosed = true;
        cancelled.swap(_messages);
    }
    Cancel(cancelled);
}

int ConsumerState::Send(const Message& message) {
    const std::lock_guard lock(_mutex);
    if (_isClosed) {
        return -1;
    }
    try {
        _messages.push_back(message);
    } catch (const std::bad_alloc&) {
        return -1;
    }
    _wake.notify_all();
    return 0;
}

bool ConsumerState::IsRunning() {
    const std::lock_guard lock(_mutex);
    return _worker && !_isStopping;
}

int ConsumerState::Main(void* state) {
    const std::shared_ptr<ConsumerState> self = [state] {
        auto* const shared = static_cast<ConsumerState*>(state);
        const std::lock_guard lock(shared->_mutex);
        return std::move(shared->_workersShare);
    }();
    self->Deliver();
    return 0;
}

void ConsumerState::Deliver() {
    std::unique_lock lock(_mutex);
    while (!_isStopping) {
        if (!_messages.empty()) {
            const Message message = _messages.front();
            _messages.pop_front();
            lock.unlock();
            message.function(message.code, 0, message.data, message.userData);
            lock.lock();
            continue;
        }
        if (!WaitRunsOut(lock) || !_timeOutFunction) {
            continue;
        }
        void (*const function)(void*) = _timeOutFunction;
        void* const data = _timeOutData;
        lock.unlock();
        function(data);
        lock.lock();
    }
}

bool ConsumerState::WaitRunsOut(std::unique_lock<std::mutex>& lock) {
    const auto isInterrupted = [this, number = _waitNumber] {
        return _isStopping || !_messages.empty() || _waitNumber != number;
    };
    if (_milliseconds < 1) {
        _wake.wait(lock, isInterrupted);
        return false;
    }
    return !_wake.wait_for(lock, std::chrono::milliseconds(_milliseconds), isInterrupted);
}

void ConsumerState::Cancel(const std::list<Message>& messages) {
    for (const Message& message : messages) {
        message.function(message.code, 1, message.data, message.userData);
    }
}

} // namespace VEL::internal
