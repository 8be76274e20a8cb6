/// @file
/// Who waits for whom, so that no thread comes to wait for itself.
#pragma once

namespace VEL::internal {

/// @return The number of the calling thread. It bears the number until it is gone, in the destructors of its
///         thread-local objects too, and no other thread ever gets it. Never 0.
unsigned long GetThreadNumber();

/// @return A number for a thread that is about to start, and that takes it with `TakeThreadNumber` before anything
///         else.
unsigned long ReserveThreadNumber();
void TakeThreadNumber(unsigned long number);

/// A wait of the calling thread for another one, noted for as long as the object lives. A thread has one at a time.
class ThreadWait {
public:
    /// Notes the wait. It is not under way from the start when the calling thread would wait for itself: when the other
    /// one is the calling thread or waits for it, directly or through others.
    explicit ThreadWait(unsigned long threadNumber);
    ThreadWait(const ThreadWait&) = delete;
    ThreadWait& operator=(const ThreadWait&) = delete;
    ~ThreadWait();

    bool IsUnderWay() const;

    /// Called by the thread that is waited for where it lives on after what is waited for: from now on it may itself
    /// wait for the waiting thread, which may not have noticed yet.
    void End();

private:
    static const ThreadWait* Find(unsigned long threadNumber);
    static bool LeadsTo(unsigned long threadNumber, unsigned long goal);

    const unsigned long _thread;
    /// 0 when the wait is not under way.
    unsigned long _waitsFor;
    ThreadWait* _next;
};

} // namespace VEL::internal
