/// @file
/// The mutex of the family: recursive, and usable as a base of larger operations that lock each other.
#pragma once

#include "QORSysMTExport.h"

#include <pthread.h>

/// A mutual exclusion lock within one process.
///
/// All operations may be called by any thread at once. A mutex is destroyed when nobody holds it and nobody waits for
/// it. What a thread wrote before `Unlock` is seen by the next thread whose `Lock` answers 0.
class QORSYSMT_EXPORT QORMutex {
public:
    /// @param reservedFirst  Pass 0; not read.
    /// @param recursive      Non-zero: the thread that holds the mutex may lock it again, and holds it until it has
    ///                       unlocked it as often. Zero: its second `Lock` is refused.
    /// @param reservedLast   Pass 0; not read.
    QORMutex(int reservedFirst, int recursive, int reservedLast);
    QORMutex(const QORMutex&) = delete;
    QORMutex& operator=(const QORMutex&) = delete;
    ~QORMutex();

    /// Waits until the calling thread holds the mutex.
    /// @return 0, or -1 when the mutex is not recursive and the calling thread holds it already.
    int Lock();

    /// Gives back one `Lock` of the calling thread.
    /// @return 0, or -1, with nothing changed, when the calling thread does not hold the mutex.
    int Unlock();

    /// `Lock` and `Unlock` as pointers, for code that is handed its way of locking:
    /// `(mutex.*QORMutex::LockF)()`. They are set before any static initialiser runs.
    static int (QORMutex::*const LockF)();
    static int (QORMutex::*const UnlockF)();

private:
    pthread_mutex_t _mutex;
};
