/// @file
/// Copying text between places that don't overlap.
///
/// Short runs are copied where they are met: a call costs more than they do. Long ones are copied by vectors, since the
/// C library's instruction for them is up to thirty times slower on some processors when both addresses lie
/// unfavourably, and text behind a header of 26 bytes lies so as a rule.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace VEL::internal {

/// Copies `bytes` bytes, LongCopy to LongestCopy of them.
void CopyLong(char* to, const char* from, std::size_t bytes);

constexpr std::size_t ShortCopy = 16;
constexpr std::size_t LongCopy = 2048;
/// Beyond, the C library keeps the copy out of the cache.
constexpr std::size_t LongestCopy = std::size_t{1} << 20;

/// Copies two words that overlap where the run is shorter than both.
template <class Word>
inline void CopyEnds(char* to, const char* from, std::size_t bytes) {
    Word first;
    Word last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + bytes - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + bytes - sizeof last, &last, sizeof last);
}

inline void CopyShort(char* to, const char* from, std::size_t bytes) {
    if (bytes >= sizeof(std::uint64_t)) {
        CopyEnds<std::uint64_t>(to, from, bytes);
    } else if (bytes >= sizeof(std::uint32_t)) {
        CopyEnds<std::uint32_t>(to, from, bytes);
    } else if (bytes >= sizeof(std::uint16_t)) {
        CopyEnds<std::uint16_t>(to, from, bytes);
    } else if (bytes == 1) {
        *to = *from;
    }
}

/// Copies `count` units. @return The place behind the last one.
template <class Unit>
inline Unit* Copy(Unit* out, const Unit* from, std::ptrdiff_t count) {
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(Unit);
    auto* const to = reinterpret_cast<char*>(out);
    const auto* const source = reinterpret_cast<const char*>(from);
    if (bytes <= ShortCopy) {
        CopyShort(to, source, bytes);
    } else if (bytes < LongCopy || bytes > LongestCopy) {
        std::memcpy(to, source, bytes);
    } else {
        CopyLong(to, source, bytes);
    }
    return out + count;
}

} // namespace VEL::internal
