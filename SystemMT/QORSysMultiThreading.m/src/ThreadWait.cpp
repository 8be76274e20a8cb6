#include "ThreadWait.h"

#include <atomic>
#include <mutex>

namespace VEL::internal {

namespace {

/// Guards all waits.
constinit std::mutex s_mutex;
ThreadWait* s_first = nullptr;

constinit std::atomic<unsigned long> s_lastNumber{0};

/// 0 as long as nobody asked for it. It has no destructor, so it lasts as long as the thread.
thread_local unsigned long t_number = 0;

} // namespace

unsigned long ReserveThreadNumber() {
    // Relaxed: the number stands for itself and publishes nothing.
    return s_lastNumber.fetch_add(1, std::memory_order_relaxed) + 1;
}

void TakeThreadNumber(unsigned long number) {
    t_number = number;
}

unsigned long GetThreadNumber() {
    if (t_number == 0) {
        t_number = ReserveThreadNumber();
    }
    return t_number;
}

ThreadWait::ThreadWait(unsigned long threadNumber) : _thread(GetThreadNumber()) {
    const std::lock_guard lock(s_mutex);
    _waitsFor = LeadsTo(threadNumber, _thread) ? 0 : threadNumber;
    _next = s_first;
    s_first = this;
}

ThreadWait::~ThreadWait() {
    const std::lock_guard lock(s_mutex);
    ThreadWait** link = &s_first;
    while (*link != this) {
        link = &(*link)->_next;
    }
    *link = _next;
}

bool ThreadWait::IsUnderWay() const {
    const std::lock_guard lock(s_mutex);
    return _waitsFor != 0;
}

void ThreadWait::End() {
    const std::lock_guard lock(s_mutex);
    _waitsFor = 0;
}

const ThreadWait* ThreadWait::Find(unsigned long threadNumber) {
    const ThreadWait* wait = s_first;
    while (wait && wait->_thread != threadNumber) {
        wait = wait->_next;
    }
    return wait;
}

bool ThreadWait::LeadsTo(unsigned long threadNumber, unsigned long goal) {
    while (threadNumber != 0 && threadNumber != goal) {
        const ThreadWait* const wait = Find(threadNumber);
        threadNumber = wait ? wait->_waitsFor : 0;
    }
    return threadNumber == goal;
}

} // namespace VEL::internal
