/// @file
/// Blocks of the C library's heap, held by an owner that frees them.
#pragma once

#include <cstdlib>
#include <memory>

namespace VEL::internal {

struct FreeMemory {
    void operator()(void* block) const { std::free(block); }
};

template <class Element>
using HeapArray = std::unique_ptr<Element[], FreeMemory>;

} // namespace VEL::internal
