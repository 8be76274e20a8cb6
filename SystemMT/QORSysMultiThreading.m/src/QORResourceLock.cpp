#include "QORResourceLock.h"

QORResourceLock::QORResourceLock(int writerMayReenter)
    : _writer(pthread_t{}), _depth(0), _writerMayReenter(writerMayReenter != 0) {
    pthread_rwlock_init(&_lock, nullptr);
}

QORResourceLock::~QORResourceLock() {
    pthread_rwlock_destroy(&_lock);
}

bool QORResourceLock::IsMine() const {
    // Relaxed: only the calling thread itself ever stores its own identity, whatever else may be read here.
    return _writer.load(std::memory_order_relaxed) == pthread_self();
}

int QORResourceLock::Reenter() {
    if (!_writerMayReenter) {
        return -1;
    }
    ++_depth;
    return 0;
}

int QORResourceLock::Leave() {
    if (--_depth > 0) {
        return 0;
    }
    // Relaxed: the unlocking below orders it before the next writer's store.
    _writer.store(pthread_t{}, std::memory_order_relaxed);
    pthread_rwlock_unlock(&_lock);
    return 0;
}

int QORResourceLock::ReadLock() {
    if (IsMine()) {
        return Reenter();
    }
    return pthread_rwlock_rdlock(&_lock) == 0 ? 0 : -1;
}

int QORResourceLock::ReadUnlock() {
    if (IsMine()) {
        return Leave();
    }
    return pthread_rwlock_unlock(&_lock) == 0 ? 0 : -1;
}

int QORResourceLock::WriteLock() {
    if (IsMine()) {
        return Reenter();
    }
    if (pthread_rwlock_wrlock(&_lock) != 0) {
        return -1;
    }
    _writer.store(pthread_self(), std::memory_order_relaxed);
    _depth = 1;
    return 0;
}

int QORResourceLock::WriteUnlock() {
    return IsMine() ? Leave() : -1;
}
