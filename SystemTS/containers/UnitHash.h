/// @file
/// The hash by which the maps place UTF-16 text: of its bytes in memory order, each as a signed number added to
/// HashFactor times the hash so far. Of the result 31 bits stay.
#pragma once

#include "VELHashMapTable.h"

#include <climits>
#include <cstddef>
#include <emmintrin.h>

namespace VEL::internal {

/// `HashFactor` to the power of `exponent`, in 32 bits.
constexpr unsigned int HashPower(int exponent) {
    return exponent == 0 ? 1 : HashFactor * HashPower(exponent - 1);
}

/// The hash of the two bytes of a unit, the low one in front.
inline unsigned int HashOfUnit(unsigned short unit) noexcept {
    return static_cast<unsigned int>(static_cast<signed char>(unit)) * HashFactor +
           static_cast<unsigned int>(static_cast<signed char>(unit >> 8));
}

/// The low halves of the products of 32-bit lanes.
inline __m128i MultiplyLanes(__m128i a, __m128i b) noexcept {
    const __m128i even = _mm_mul_epu32(a, b);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    constexpr int lowHalves = _MM_SHUFFLE(0, 0, 2, 0);
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, lowHalves), _mm_shuffle_epi32(odd, lowHalves));
}

/// The hashes of four pairs of units.
inline __m128i HashesOfPairs(__m128i units) noexcept {
    const __m128i low = _mm_srai_epi16(_mm_slli_epi16(units, 8), 8);
    const __m128i high = _mm_srai_epi16(units, 8);
    // No unit's hash leaves 16 bits.
    const __m128i hashes = _mm_add_epi16(_mm_mullo_epi16(low, _mm_set1_epi16(HashFactor)), high);
    constexpr int firstOfPair = HashPower(2);
    return _mm_madd_epi16(hashes, _mm_set1_epi32(1 << 16 | firstOfPair));
}

/// The hash of `blocks` times eight units, not yet cut to 31 bits.
inline unsigned int HashOfBlocks(const unsigned short* units, std::size_t blocks) noexcept {
    __m128i lanes = _mm_setzero_si128();
    const __m128i perBlock = _mm_set1_epi32(static_cast<int>(HashPower(16)));
    for (std::size_t i = 0; i < blocks; ++i) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + 8 * i));
        lanes = _mm_add_epi32(MultiplyLanes(lanes, perBlock), HashesOfPairs(block));
    }
    const __m128i perLane = _mm_set_epi32(1, static_cast<int>(HashPower(4)), static_cast<int>(HashPower(8)),
                                          static_cast<int>(HashPower(12)));
    lanes = MultiplyLanes(lanes, perLane);
    lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2)));
    lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<unsigned int>(_mm_cvtsi128_si32(lanes));
}

inline unsigned int HashOfUnits(const unsigned short* units, std::size_t count) noexcept {
    const std::size_t blocks = count / 8;
    unsigned int hash = HashOfBlocks(units, blocks);
    for (std::size_t i = 8 * blocks; i < count; ++i) {
        hash = hash * HashPower(2) + HashOfUnit(units[i]);
    }
    return hash & INT_MAX;
}

} // namespace VEL::internal
