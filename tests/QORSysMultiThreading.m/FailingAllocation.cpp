#include "FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations that still succeed, negative without shortage.
thread_local int t_left = -1;
thread_local bool t_hasFailed = false;
thread_local long t_blocks = 0;

void* Allocate(std::size_t size) noexcept {
    if (t_left == 0) {
        t_hasFailed = true;
        return nullptr;
    }
    if (t_left > 0) {
        --t_left;
    }
    ++t_blocks;
    return std::malloc(size > 0 ? size : 1);
}

void Release(void* block) noexcept {
    t_blocks -= block ? 1 : 0;
    std::free(block);
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

long CountBlocks() {
    return t_blocks;
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
    Release(block);
}

void operator delete[](void* block) noexcept {
    Release(block);
}

void operator delete(void* block, std::size_t) noexcept {
    Release(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    Release(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    Release(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Release(block);
}
