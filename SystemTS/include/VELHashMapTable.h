/// @file
/// The arithmetic of the hash maps' tables.
#pragma once

#include <climits>
#include <cmath>

namespace VEL::internal {

/// What each byte of a key multiplies the hash of the bytes before by.
constexpr unsigned int HashFactor = 131;

/// The hash of a number: of its bytes in memory order, each as a signed number.
inline unsigned int HashOfNumber(int key) noexcept {
    const auto byteAt = [key](int shift) { return static_cast<unsigned int>(static_cast<signed char>(key >> shift)); };
    constexpr unsigned int squared = HashFactor * HashFactor;
    // Not step by step: the products don't wait for each other.
    const unsigned int hash =
        byteAt(0) * (squared * HashFactor) + byteAt(8) * squared + byteAt(16) * HashFactor + byteAt(24);
    return hash & INT_MAX;
}

/// `hash` modulo the length of the table. Tables are mostly as long as a power of two, which spares the division.
inline int BucketIndex(unsigned int hash, int tableLength) noexcept {
    const auto length = static_cast<unsigned int>(tableLength);
    return static_cast<int>((length & (length - 1)) == 0 ? hash & (length - 1) : hash % length);
}

/// The buckets wanted for `entries`, rounded up; INT_MAX or INT_MIN where no int can hold that.
inline int TableLength(int entries, float reciprocalOfLoadFactor) noexcept {
    const float length = std::ceil(static_cast<float>(entries) * reciprocalOfLoadFactor);
    if (length >= static_cast<float>(INT_MAX)) {
        return INT_MAX;
    }
    return length < static_cast<float>(INT_MIN) ? INT_MIN : static_cast<int>(length);
}

/// True when TableLength() is above `tableLength`.
inline bool IsTableTooShort(int tableLength, int entries, float reciprocalOfLoadFactor) noexcept {
    // A double holds both exactly, and whether the float is rounded up makes no difference.
    return static_cast<double>(static_cast<float>(entries) * reciprocalOfLoadFactor) > tableLength;
}

} // namespace VEL::internal
