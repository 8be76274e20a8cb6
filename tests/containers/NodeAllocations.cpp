/// @file
/// Counts the blocks of single objects among those of arrays; see ArrayAllocations.h.

#include <cstddef>
#include <new>

void* operator new(std::size_t size) {
    return operator new[](size);
}

void operator delete(void* block) noexcept {
    operator delete[](block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete[](block);
}
