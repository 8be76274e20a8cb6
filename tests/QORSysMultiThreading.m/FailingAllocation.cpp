#include "FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations that still succeed, negative without shortage.
thread_local int t_left = -1;
thread_local bool t_hasFailed = false;

void* Allocate(std::size_t size) noexcept {
    if (t_left == 0) {
        t_hasFailed = true;
        return nullptr;
    }
    if (t_left > 0) {
        --t_left;
    }
    return std::malloc(size > 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
    if (void* const block = Allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}

} // namespace

FailingAllocation::FailingAllocation(int first) {
    t_hasFailed = false;
    t_left = first - 1;
}

FailingAllocation::~FailingAllocation() {
    t_left = -1;
}

bool FailingAllocation::HasFailed() const {
    return t_hasFailed;
}

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
