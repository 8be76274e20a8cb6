/// @file
/// What a consumer, its thread and its producers share.
#pragma once

#include "ThreadExecution.h"
#include "VELSysProducer.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>

namespace VEL::internal {

/// The works of a consumer. The consumer's thread and the producers hold shares of it, so each of the three may end
/// first.
struct ConsumerState : std::enable_shared_from_this<ConsumerState> {
    struct Message {
        VELSysProducerFunction function;
        int code;
        void* data;
        void* userData;
    };

    int Start(int newMilliseconds, void (*newFunction)(void*), void* newData);
    void Stop();
    /// Refuses messages from now on and cancels those that wait.
    void Close();
    int Send(const Message& message);
    bool IsRunning();

private:
    static int Main(void* state);
    void Deliver();
    /// Waits for the next thing to do.
    /// @return True when the wait has run out with nothing to do.
    bool WaitRunsOut(std::unique_lock<std::mutex>& lock);
    int Launch();
    static void Cancel(const std::list<Message>& messages);

    std::mutex _mutex;
    std::condition_variable _wake;
    std::list<Message> _messages;
    int _milliseconds = 0;
    void (*_timeOutFunction)(void*) = nullptr;
    void* _timeOutData = nullptr;
    /// Changes when a wait that is under way is to begin anew.
    unsigned long _waitNumber = 0;
    bool _isStopping = false;
    bool _isClosed = false;
    std::shared_ptr<ThreadExecution> _worker;
    /// The worker's own share, until it takes it.
    std::shared_ptr<ConsumerState> _workersShare;
};

} // namespace VEL::internal
