#include "ThreadExecution.h"

#include "ThreadWait.h"

#include <algorithm>
#include <climits>
#include <new>
#include <utility>

namespace VEL::internal {

std::shared_ptr<ThreadExecution> ThreadExecution::Launch(int (*function)(void*), void* data, unsigned long stackSize) {
    try {
        auto execution = std::make_shared<ThreadExecution>(function, data);
        execution->_share = execution;
        if (execution->Create(stackSize) == 0) {
            return execution;
        }
        execution->_joinState = JoinState::Done;
        execution->_share.reset();
        return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

ThreadExecution::ThreadExecution(int (*function)(void*), void* data)
    : _threadNumber(ReserveThreadNumber()), _function(function), _data(data) {}

ThreadExecution::~ThreadExecution() {
    // The creator keeps its share until the identity is stored, so it is there on the thread itself too.
    if (_joinState != JoinState::Done) {
        pthread_detach(_thread);
    }
}

int ThreadExecution::Create(unsigned long stackSize) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return -1;
    }
    int error = 0;
    if (stackSize > 0) {
        error =
            pthread_attr_setstacksize(&attributes, std::max(stackSize, static_cast<unsigned long>(PTHREAD_STACK_MIN)));
    }
    if (error == 0) {
        error = pthread_create(&_thread, &attributes, &ThreadExecution::Main, this);
    }
    pthread_attr_destroy(&attributes);
    return error == 0 ? 0 : -1;
}

void* ThreadExecution::Main(void* execution) {
    static_cast<ThreadExecution*>(execution)->Run();
    return nullptr;
}

void ThreadExecution::Run() {
    const std::shared_ptr<ThreadExecution> self = std::move(_share);
    TakeThreadNumber(_threadNumber);
    const int result = _function(_data);
    const std::lock_guard lock(_mutex);
    _result = result;
    _isRunning = false;
}

int ThreadExecution::Join() {
    const ThreadWait wait(_threadNumber);
    if (!wait.IsUnderWay()) {
        return -1;
    }
    Await();
    return 0;
}

void ThreadExecution::Await() {
    std::unique_lock lock(_mutex);
    if (_joinState != JoinState::Open) {
        _joined.wait(lock, [this] { return _joinState == JoinState::Done; });
        return;
    }
    _joinState = JoinState::UnderWay;
    lock.unlock();
    // Cannot fail: the thread is not the calling one, and nobody else joins or detaches it.
    pthread_join(_thread, nullptr);
    lock.lock();
    _joinState = JoinState::Done;
    _joined.notify_all();
}

bool ThreadExecution::IsRunning() const {
    const std::lock_guard lock(_mutex);
    return _isRunning;
}

int ThreadExecution::GetResult() const {
    const std::lock_guard lock(_mutex);
    return _result;
}

} // namespace VEL::internal
