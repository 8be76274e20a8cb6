/// @file
/// A thread that delivers the messages of producers.
#pragma once

#include "QORSysMTExport.h"

#include <memory>

namespace VEL::internal {
struct ConsumerState;
}

/// Delivers messages, one at a time and in the order in which they came, on a thread of its own.
///
/// Messages come from a `VELSysProducer`. While the consumer does not run they wait, and are delivered when it is
/// started. All operations but the destructor may be called by any thread at once, from within a delivered message and
/// from within the time-out function included. No lock is held while a function runs. Functions let no exception out.
class QORSYSMT_EXPORT VELSysConsumer {
public:
    VELSysConsumer();
    VELSysConsumer(const VELSysConsumer&) = delete;
    VELSysConsumer& operator=(const VELSysConsumer&) = delete;

    /// Stops the consumer as `Stop` does, and cancels what came meanwhile. A producer may outlive it; what it sends
    /// afterwards is refused.
    virtual ~VELSysConsumer();

    /// Runs the thread. It waits for messages, each time for up to the given time, and calls the time-out function when
    /// a wait runs out; each message and each time-out begins a new wait. On a consumer that runs already only the time
    /// and the function are replaced, and a new wait begins.
    /// @param milliseconds  Length of one wait; below 1 it has no limit.
    /// @param function      The time-out function, called on the consumer's thread, or null.
    /// @param data          Handed to `function`; stays the caller's.
    /// @return 0, or -1 when the platform refuses a thread, when memory was short at the construction, or when the
    ///         thread that ends after `Stop` cannot be waited for: on that very thread, and on one that it waits for in
    ///         a join or `Stop`, be it through others.
    int Start(int milliseconds, void (*function)(void* data), void* data);

    /// Ends the thread. A function that is being called is waited for; no further one is begun. The messages that
    /// waited when `Stop` was called are then handed to their functions with a cancel argument of 1, on the calling
    /// thread, in order. Messages that come later wait for the next `Start`.
    ///
    /// Called on the consumer's own thread, or by a thread that this one waits for in a join or `Stop`, it cancels the
    /// messages and returns without waiting; the consumer's thread ends when the function that it runs has returned. On
    /// a consumer that does not run only the messages are cancelled.
    void Stop();

    /// @return True from a successful `Start` until the thread has been told to end.
    bool IsRunning() const;

private:
    friend class VELSysProducer;

    /// Shared with the thread and with producers, which may outlive this object. Null when memory was short.
    std::shared_ptr<VEL::internal::ConsumerState> _state;
};
