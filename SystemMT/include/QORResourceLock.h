/// @file
/// The reader/writer lock of the family.
#pragma once

#include "QORSysMTExport.h"

#include <atomic>
#include <pthread.h>

/// A lock that many readers share, or one writer has for itself.
///
/// All operations may be called by any thread at once. Readers are preferred: a thread that reads may take the read
/// side again, whoever waits to write, and a writer waits until no reader is left. A thread that only reads must not
/// ask for the write side: it would wait for itself.
class QORSYSMT_EXPORT QORResourceLock {
public:
    /// @param writerMayReenter  Non-zero: the thread that holds the write side may take either side again. The lock
    ///                          stays its own until it has given back every one of them, in whatever order. Zero: such
    ///                          a second request is refused.
    explicit QORResourceLock(int writerMayReenter);
    QORResourceLock(const QORResourceLock&) = delete;
    QORResourceLock& operator=(const QORResourceLock&) = delete;
    ~QORResourceLock();

    /// Waits until no other thread holds the write side.
    /// @return 0, or -1 when the calling thread holds the write side and re-entry is off, or when the platform admits
    ///         no further reader.
    int ReadLock();

    /// Gives back one `ReadLock` of the calling thread.
    /// @return 0.
    int ReadUnlock();

    /// Waits until no other thread holds either side.
    /// @return 0, or -1 when the calling thread holds the write side and re-entry is off.
    int WriteLock();

    /// Gives back one `WriteLock` of the calling thread.
    /// @return 0, or -1, with nothing changed, when the calling thread does not hold the write side.
    int WriteUnlock();

private:
    QORSYSMT_PRIVATE bool IsMine() const;
    QORSYSMT_PRIVATE int Reenter();
    QORSYSMT_PRIVATE int Leave();

    pthread_rwlock_t _lock;
    /// The thread that holds the write side, 0 for none.
    std::atomic<pthread_t> _writer;
    /// How often the writer holds the lock; the writer's own.
    int _depth;
    bool _writerMayReenter;
};
