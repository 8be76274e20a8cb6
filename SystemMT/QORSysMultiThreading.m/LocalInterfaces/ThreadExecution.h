/// @file
/// One run of one thread.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <pthread.h>

namespace VEL::internal {

/// A thread from its start to its end. The thread holds a share of it while it runs, so whoever started it may let go
/// at any time; a run that nobody joined is detached when the last share goes.
class ThreadExecution {
public:
    /// Starts a thread.
    /// @param stackSize  In bytes; 0 for the platform's default.
    /// @return Null when the platform refuses the thread or memory is short.
    static std::shared_ptr<ThreadExecution> Launch(int (*function)(void*), void* data, unsigned long stackSize);

    ThreadExecution(int (*function)(void*), void* data);
    ThreadExecution(const ThreadExecution&) = delete;
    ThreadExecution& operator=(const ThreadExecution&) = delete;
    ~ThreadExecution();

    /// Waits until the thread is gone; several threads may wait at once.
    /// @return 0, or -1, at once, when the calling thread would wait for itself: on the thread itself, and on one that
    ///         it waits for, directly or through others. Both hold until the thread is gone, in the destructors of its
    ///         thread-local objects too.
    int Join();

    /// True until the function has returned.
    bool IsRunning() const;
    /// What the function returned, 0 before.
    int GetResult() const;

private:
    enum class JoinState { Open, UnderWay, Done };

    static void* Main(void* execution);
    /// The life of the thread. The object may be gone afterwards.
    void Run();
    int Create(unsigned long stackSize);
    void Await();

    mutable std::mutex _mutex;
    std::condition_variable _joined;
    JoinState _joinState = JoinState::Open;
    bool _isRunning = true;
    int _result = 0;
    pthread_t _thread{};
    const unsigned long _threadNumber;
    int (*_function)(void*);
    void* _data;
    /// The thread's own share, until it takes it.
    std::shared_ptr<ThreadExecution> _share;
};

} // namespace VEL::internal
