/// @file
/// Operator `new` and `realloc` as requests to the heap that a HeapShortage refuses, too.

#include "HeapLog.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
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

// By `malloc`, so that it is logged and refused as all that is.
extern "C" void* __wrap_realloc(void* block, std::size_t size) {
    void* const larger = std::malloc(size);
    if (larger != nullptr && block != nullptr) {
        std::memcpy(larger, block, std::min(malloc_usable_size(block), size));
        std::free(block);
    }
    return larger;
}
