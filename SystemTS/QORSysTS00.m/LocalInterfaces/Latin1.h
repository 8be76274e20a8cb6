/// @file
/// ISO-8859-1, in which each byte is the unit of the same number.
#pragma once

#include <cstddef>
#include <emmintrin.h>

namespace VEL::internal {

inline constexpr const char* Latin1Name = "ISO-8859-1";

/// Writes the units of `length` bytes.
inline void WidenLatin1(const char* text, std::size_t length, unsigned short* out) {
    constexpr std::size_t step = sizeof(__m128i);
    std::size_t i = 0;
    for (; length - i >= step; i += step) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        auto* const target = reinterpret_cast<__m128i*>(out + i);
        _mm_storeu_si128(target, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        _mm_storeu_si128(target + 1, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    }
    for (; i < length; ++i) {
        out[i] = static_cast<unsigned char>(text[i]);
    }
}

/// Writes the bytes of the units from the start on that have one.
/// @return How many these are.
inline std::size_t NarrowLatin1(const unsigned short* text, std::size_t length, char* out) {
    constexpr std::size_t step = sizeof(__m128i);
    std::size_t i = 0;
    for (; length - i >= step; i += step) {
        const auto* const source = reinterpret_cast<const __m128i*>(text + i);
        const __m128i first = _mm_loadu_si128(source);
        const __m128i second = _mm_loadu_si128(source + 1);
        const __m128i high = _mm_srli_epi16(_mm_or_si128(first, second), 8);
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF) {
            break;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(first, second));
    }
    for (; i < length && text[i] <= 0xFF; ++i) {
        out[i] = static_cast<char>(text[i]);
    }
    return i;
}

} // namespace VEL::internal
