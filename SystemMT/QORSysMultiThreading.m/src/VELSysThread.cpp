#include "VELSysThread.h"

#include "ThreadExecution.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

using VEL::internal::ThreadExecution;

VELSysThread::VELSysThread() : _function(nullptr), _data(nullptr), _stackSize(0) {}

VELSysThread::~VELSysThread() {
    Join();
}

int VELSysThread::SetFunction(int (*function)(void*), void* data, unsigned long stackSize) {
    if (!function) {
        return -1;
    }
    const std::lock_guard lock(_mutex);
    _function = function;
    _data = data;
    _stackSize = stackSize;
    return 0;
}

int VELSysThread::Run() {
    const std::lock_guard lock(_mutex);
    if (!_function || (_execution && _execution->IsRunning())) {
        return -1;
    }
    std::shared_ptr<ThreadExecution> execution = ThreadExecution::Launch(_function, _data, _stackSize);
    if (!execution) {
        return -1;
    }
    _execution = std::move(execution);
    return 0;
}

int VELSysThread::Join() {
    const std::shared_ptr<ThreadExecution> execution = GetExecution();
    return execution ? execution->Join() : 0;
}

bool VELSysThread::IsRunning() const {
    const std::shared_ptr<ThreadExecution> execution = GetExecution();
    return execution && execution->IsRunning();
}

int VELSysThread::GetResult() const {
    const std::shared_ptr<ThreadExecution> execution = GetExecution();
    return execution ? execution->GetResult() : 0;
}

std::shared_ptr<ThreadExecution> VELSysThread::GetExecution() const {
    const std::lock_guard lock(_mutex);
    return _execution;
}

int VELSysThreadWaitWithTimeOut(int milliseconds, int (*predicate)(void*), void* data, void (*idle)(void*),
                                void* idleData) {
    using Clock = std::chrono::steady_clock;
    constexpr Clock::duration pause = std::chrono::milliseconds(10);
    if (!predicate) {
        return 0;
    }
    const bool isLimited = milliseconds >= 0;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        if (const int answer = predicate(data)) {
            return answer;
        }
        const Clock::duration left = end - Clock::now();
        if (isLimited && left <= Clock::duration::zero()) {
            return 0;
        }
        if (idle) {
            idle(idleData);
        }
        std::this_thread::sleep_for(isLimited ? std::min(pause, left) : pause);
    }
}
