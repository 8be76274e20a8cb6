/// @file
/// The array `new` of the whole program: what it is asked for, and shortage on demand.
#pragma once

#include <cstddef>
#include <limits>

namespace ArrayAllocations {

/// Blocks taken and not freed.
int Live();
/// Blocks taken so far.
int Taken();
/// Bytes of the latest block.
std::size_t LastSize();

/// While it lives, the array `new` throws std::bad_alloc once `successes` requests have been served.
class Shortage {
public:
    explicit Shortage(int successes = 0);
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;
    ~Shortage();

    /// True when a request was refused.
    bool HasStruck() const;
};

} // namespace ArrayAllocations
