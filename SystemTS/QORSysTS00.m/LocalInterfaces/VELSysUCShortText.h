/// @file
/// Conversion of short ASCII texts, which most names and keys are, in two steps that overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace VEL::UCS::internal {

/// Texts of this many units on, and below 16, are taken in two halves of eight.
inline constexpr std::ptrdiff_t ShortHalf = 8;

/// Widens 8 to 15 bytes when all of them are below 0x80; otherwise gives false and writes nothing.
inline bool ConvertShortASCII(const char* first, const char* last, unsigned short* out) {
    constexpr std::uint64_t TopBits = 0x8080808080808080;
    std::uint64_t front = 0;
    std::uint64_t back = 0;
    std::memcpy(&front, first, sizeof front);
    std::memcpy(&back, last - ShortHalf, sizeof back);
    if (((front | back) & TopBits) != 0) {
        return false;
    }
    const __m128i zero = _mm_setzero_si128();
    const __m128i frontUnits = _mm_unpacklo_epi8(_mm_cvtsi64_si128(static_cast<long long>(front)), zero);
    const __m128i backUnits = _mm_unpacklo_epi8(_mm_cvtsi64_si128(static_cast<long long>(back)), zero);
    std::memcpy(out, &frontUnits, sizeof frontUnits);
    std::memcpy(out + (last - first - ShortHalf), &backUnits, sizeof backUnits);
    return true;
}

/// Narrows 8 to 15 units when all of them are below 0x80; otherwise gives false and writes nothing.
inline bool ConvertShortASCII(const unsigned short* first, const unsigned short* last, char* out) {
    __m128i front;
    __m128i back;
    std::memcpy(&front, first, sizeof front);
    std::memcpy(&back, last - ShortHalf, sizeof back);
    const __m128i others = _mm_and_si128(_mm_or_si128(front, back), _mm_set1_epi16(static_cast<short>(0xFF80)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(others, _mm_setzero_si128())) != 0xFFFF) {
        return false;
    }
    const std::int64_t frontBytes = _mm_cvtsi128_si64(_mm_packus_epi16(front, front));
    const std::int64_t backBytes = _mm_cvtsi128_si64(_mm_packus_epi16(back, back));
    std::memcpy(out, &frontBytes, sizeof frontBytes);
    std::memcpy(out + (last - first - ShortHalf), &backBytes, sizeof backBytes);
    return true;
}

/// No other conversion has a form for short texts.
template <class Source, class Target>
bool ConvertShortASCII(const Source*, const Source*, Target*) {
    return false;
}

} // namespace VEL::UCS::internal
