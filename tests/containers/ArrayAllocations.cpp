#include "ArrayAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr int NoLimit = -1;

std::atomic<int> s_live = 0;
std::atomic<int> s_taken = 0;
std::atomic<std::size_t> s_lastSize = 0;
std::atomic<int> s_left = NoLimit;
bool s_hasStruck = false;

} // namespace

int ArrayAllocations::Live() {
    return s_live;
}

int ArrayAllocations::Taken() {
    return s_taken;
}

std::size_t ArrayAllocations::LastSize() {
    return s_lastSize;
}

ArrayAllocations::Shortage::Shortage(int successes) {
    s_hasStruck = false;
    s_left = successes;
}

ArrayAllocations::Shortage::~Shortage() {
    s_left = NoLimit;
}

bool ArrayAllocations::Shortage::HasStruck() const {
    return s_hasStruck;
}

void* operator new[](std::size_t size) {
    if (s_left == 0) {
        s_hasStruck = true;
        throw std::bad_alloc();
    }
    if (s_left != NoLimit) {
        --s_left;
    }
    void* const block = std::malloc(size != 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++s_live;
    ++s_taken;
    s_lastSize = size;
    return block;
}

void operator delete[](void* block) noexcept {
    if (block != nullptr) {
        --s_live;
    }
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    operator delete[](block);
}
