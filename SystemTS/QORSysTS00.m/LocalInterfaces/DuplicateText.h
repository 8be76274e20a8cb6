/// @file
/// Copies of narrow text from array `new`, as functions hand them to a caller or records own them.
#pragma once

#include <cstring>
#include <memory>
#include <new>

namespace VEL::internal {

/// A zero-terminated copy of `length` bytes; null when there is no memory.
inline std::unique_ptr<char[]> DuplicateText(const char* text, std::size_t length) noexcept {
    std::unique_ptr<char[]> copy(new (std::nothrow) char[length + 1]);
    if (copy != nullptr) {
        std::memcpy(copy.get(), text, length);
        copy[length] = '\0';
    }
    return copy;
}

/// A copy of zero-terminated text; null for null and when there is no memory.
inline std::unique_ptr<char[]> DuplicateText(const char* text) noexcept {
    return text != nullptr ? DuplicateText(text, std::strlen(text)) : nullptr;
}

} // namespace VEL::internal
