#include "QORMutex.h"

int (QORMutex::*const QORMutex::LockF)() = &QORMutex::Lock;
int (QORMutex::*const QORMutex::UnlockF)() = &QORMutex::Unlock;

QORMutex::QORMutex(int, int recursive, int) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

QORMutex::~QORMutex() {
    pthread_mutex_destroy(&_mutex);
}

int QORMutex::Lock() {
    return pthread_mutex_lock(&_mutex) == 0 ? 0 : -1;
}

int QORMutex::Unlock() {
    return pthread_mutex_unlock(&_mutex) == 0 ? 0 : -1;
}
