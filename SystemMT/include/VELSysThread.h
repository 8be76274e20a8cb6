/// @file
/// A thread that can be run again and again, and a wait for a condition.
#pragma once

#include "QORSysMTExport.h"

#include <memory>
#include <mutex>

namespace VEL::internal {
class ThreadExecution;
}

/// A thread with a stored function. Each `Run` starts it once more.
///
/// All operations but the destructor may be called by any thread at once, the thread itself included. What was written
/// before `Run` is seen by the function, and what the function wrote is seen after `Join`.
class QORSYSMT_EXPORT VELSysThread {
public:
    VELSysThread();
    VELSysThread(const VELSysThread&) = delete;
    VELSysThread& operator=(const VELSysThread&) = delete;

    /// Joins the thread if it runs: whoever owns it tells its function to end first. Where `Join` is refused it does
    /// not wait, and the function runs on to its end.
    virtual ~VELSysThread();

    /// Stores what the next `Run` calls. A run under way is not touched.
    /// @param function   Its result is what `GetResult` answers. It lets no exception out.
    /// @param data       Handed to the function; stays the caller's.
    /// @param stackSize  Size of the thread's stack in bytes; 0 for the platform's default.
    /// @return 0, or -1, with nothing changed, when `function` is null.
    int SetFunction(int (*function)(void* data), void* data, unsigned long stackSize);

    /// Starts the thread.
    /// @return 0, or -1 when there is no function, the thread still runs, or the platform refuses a thread.
    int Run();

    /// Waits until the function has returned and the thread is gone. Several threads may wait at once.
    /// @return 0, also at once when nothing runs. -1, at once, when the calling thread would wait for itself: on this
    ///         thread, in the destructors of its thread-local objects too, and on a thread that this one joins, be it
    ///         through other threads or consumers.
    int Join();

    /// @return True from `Run` until the function has returned.
    bool IsRunning() const;

    /// @return What the function returned in its last run; 0 as long as that runs, and before the first.
    int GetResult() const;

private:
    QORSYSMT_PRIVATE std::shared_ptr<VEL::internal::ThreadExecution> GetExecution() const;

    mutable std::mutex _mutex;
    std::shared_ptr<VEL::internal::ThreadExecution> _execution;
    int (*_function)(void*);
    void* _data;
    unsigned long _stackSize;
};

/// Waits until `predicate` answers something other than 0, asking it at once and then every 10 milliseconds, on the
/// calling thread.
/// @param milliseconds  How long to wait; 0 asks once, a negative value waits without limit.
/// @param predicate     The condition: 0 for "not yet".
/// @param data          Handed to `predicate`.
/// @param idle          Called before each sleep, or null.
/// @param idleData      Handed to `idle`.
/// @return The first answer that is not 0, or 0 when the time has run out or `predicate` is null.
QORSYSMT_EXPORT int VELSysThreadWaitWithTimeOut(int milliseconds, int (*predicate)(void* data), void* data,
                                                void (*idle)(void* idleData), void* idleData);
