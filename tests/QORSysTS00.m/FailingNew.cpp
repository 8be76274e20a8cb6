/// @file
/// Operator `new` as a request to the heap that a HeapShortage refuses, too.

#include "HeapLog.h"

#include <new>

extern "C" void* __real__Znwm(std::size_t size);
extern "C" void* __real__Znam(std::size_t size);
extern "C" void* __real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
extern "C" void* __real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);

extern "C" void* __wrap__Znwm(std::size_t size) {
    return HeapShortage::Refuses() ? throw std::bad_alloc() : __real__Znwm(size);
}

extern "C" void* __wrap__Znam(std::size_t size) {
    return HeapShortage::Refuses() ? throw std::bad_alloc() : __real__Znam(size);
}

extern "C" void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    return HeapShortage::Refuses() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}

extern "C" void* __wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    return HeapShortage::Refuses() ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}
