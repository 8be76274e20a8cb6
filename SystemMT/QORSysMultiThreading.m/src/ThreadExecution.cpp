#include "ThreadExecution.h"

#include <algorithm>
#include <climits>
#include <new>
#include <utility>

namespace VEL::internal {

namespace {

/// The run that the calling thread is, null on threads that were started elsewhere.
thread_local ThreadExecution* t_current = nullptr;

/// Guards who waits for whom, over all runs.
constinit std::mutex s_waitMutex;

} // namespace

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

ThreadExecution::ThreadExecution(int (*function)(void*), void* data) : _function(function), _data(data) {}

ThreadExecution::~ThreadExecution() {
    if (_joinState == JoinState::Done) {
        return;
    }
    // The thread may be here before its creator has stored the identity.
    pthread_detach(t_current == this ? pthread_self() : _thread);
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
    t_current = static_cast<ThreadExecution*>(execution);
    t_current->Run();
    t_current = nullptr;
    return nullptr;
}

void ThreadExecution::Run() {
    const std::shared_ptr<ThreadExecution> self = std::move(_share);
    const int result = _function(_data);
    const std::lock_guard lock(_mutex);
    _result = result;
    _isRunning = false;
}

int ThreadExecution::Join() {
    if (!BeginWait()) {
        return -1;
    }
    Await();
    EndWait();
    return 0;
}

bool ThreadExecution::BeginWait() {
    const std::lock_guard lock(s_waitMutex);
    for (const ThreadExecution* execution = this; execution; execution = execution->_waitsFor) {
        if (execution == t_current) {
            return false;
        }
    }
    if (t_current) {
        t_current->_waitsFor = this;
    }
    return true;
}

void ThreadExecution::EndWait() {
    if (t_current) {
        const std::lock_guard lock(s_waitMutex);
        t_current->_waitsFor = nullptr;
    }
}

void ThreadExecution::Await() {
    std::unique_lock lock(_mutex);
    if (_joinState != JoinState::Open) {
        _joined.wait(lock, [this] { return _joinState == JoinState::Done; });
        return;
    }
    _joinState = JoinState::UnderWay;
    lock.unlock();
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
