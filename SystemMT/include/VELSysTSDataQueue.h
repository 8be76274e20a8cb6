/// @file
/// A queue of untyped entries between threads.
#pragma once

#include "QORSysMTExport.h"

#include <condition_variable>
#include <list>
#include <mutex>

/// A queue with two ends. All operations but the destructor may be called by any thread at once, also through a derived
/// class. Entries are never owned: whoever ends a queue pops and releases them first. What was written to an entry
/// before it was pushed is seen by whoever pops it.
///
/// Waits are in milliseconds. With a wait below 1 a call never blocks: it answers at once that the queue is full or
/// empty.
class QORSYSMT_EXPORT VELSysTSDataQueue {
public:
    /// An empty queue without a limit.
    VELSysTSDataQueue();
    VELSysTSDataQueue(const VELSysTSDataQueue&) = delete;
    VELSysTSDataQueue& operator=(const VELSysTSDataQueue&) = delete;
    virtual ~VELSysTSDataQueue();

    /// @return A new queue, set up with `Init`, owned by the caller and deleted with `delete`; null when `Init` refuses
    ///         or memory is short.
    static VELSysTSDataQueue* CreateEmptyQueue(int maximumCount, int reserved);

    /// Sets the limit. Entries stay, also those above it. A call that waits for room goes on when there is some now.
    /// @param maximumCount  Number of entries from which on the queue is full; 0 for no limit.
    /// @param reserved      Pass 0; not read.
    /// @return 0, or -1, with nothing changed, when `maximumCount` is negative.
    int Init(int maximumCount, int reserved);

    /// Puts an entry at the front, or at the back.
    /// @param entry         May be null.
    /// @param milliseconds  How long to wait while the queue is full.
    /// @return 0, or -1 when the queue stayed full or memory is short.
    int PushFirst(void* entry, int milliseconds);
    int PushLast(void* entry, int milliseconds);

    /// Takes the entry at the front, or at the back.
    /// @param entry         Receives the entry; null on failure.
    /// @param milliseconds  How long to wait while the queue is empty.
    /// @return 0, or -1 when the queue stayed empty or `entry` is null.
    int PopFirst(void** entry, int milliseconds);
    int PopLast(void** entry, int milliseconds);

    /// @return The number of entries at this moment.
    int Count() const;

private:
    enum class End { First, Last };

    QORSYSMT_PRIVATE int Push(End end, void* entry, int milliseconds);
    QORSYSMT_PRIVATE int Pop(End end, void** entry, int milliseconds);

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::list<void*> _entries;
    int _maximumCount;
};
