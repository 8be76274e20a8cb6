/// @file
/// Text as UTF-8: borrowed where it lies ready, otherwise converted, short ones without an allocation.
#pragma once

#include "VELSysUCAlgorithm.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

class QORUnicodeString;

namespace VEL::internal {

/// True for text below 0x80, which most names are, without a call.
inline bool IsASCII(const char* text, std::size_t n) {
    constexpr std::uint64_t TopBits = 0x8080808080808080;
    std::uint64_t all = 0;
    for (; n >= sizeof all; text += sizeof all, n -= sizeof all) {
        std::uint64_t bytes;
        std::memcpy(&bytes, text, sizeof bytes);
        all |= bytes;
    }
    for (; n > 0; ++text, --n) {
        all |= static_cast<unsigned char>(*text);
    }
    return (all & TopBits) == 0;
}

/// True for well-formed UTF-8.
inline bool IsUTF8(const char* text, std::size_t n) {
    return IsASCII(text, n) || VELSysUCAlgorithm::IsUTF8(text, n) == 0;
}

/// The UTF-8 form of one text up to its first zero, for the life of the object; what it is made from must stay as it is
/// for as long.
class UTF8Text {
public:
    /// Null gives null.
    explicit UTF8Text(const unsigned short* text);
    explicit UTF8Text(const QORUnicodeString& text);
    UTF8Text(const UTF8Text&) = delete;
    UTF8Text& operator=(const UTF8Text&) = delete;
    ~UTF8Text() { std::free(_memory); }

    /// The bytes, with a terminator; null without memory. Unpaired surrogates make them ill-formed.
    const char* Get() const { return _bytes; }
    std::size_t Length() const { return _length; }

private:
    void _Convert(const unsigned short* text, std::size_t n);

    const char* _bytes = nullptr;
    std::size_t _length = 0;
    char* _memory = nullptr;
    char _room[1024];
};

} // namespace VEL::internal
