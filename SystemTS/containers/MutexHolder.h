/// @file
/// How the engines with a lock hold it.
#pragma once

#include "QORMutex.h"

/// Holds a mutex through the pointers that its library offers for it.
class MutexHolder {
public:
    explicit MutexHolder(QORMutex& mutex, int (QORMutex::*lock)() = QORMutex::LockF) : _mutex(mutex) {
        (_mutex.*lock)();
    }
    MutexHolder(const MutexHolder&) = delete;
    MutexHolder& operator=(const MutexHolder&) = delete;
    ~MutexHolder() { (_mutex.*QORMutex::UnlockF)(); }

private:
    QORMutex& _mutex;
};
