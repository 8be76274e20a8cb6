/// @file
/// The string hash over a few units, with what every processor has.
#pragma once

#include "VELSysUCKernelTables.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace VEL::UCS::internal {

constexpr unsigned int HashUnit(unsigned int hash, unsigned int unit) {
    return hash * HashFactor + unit;
}

/// Hash of `count` units of 0x8000.
constexpr unsigned int HashOfBias(int count) {
    unsigned int hash = 0;
    for (int i = 0; i < count; ++i) {
        hash = HashUnit(hash, 0x8000);
    }
    return hash;
}

inline constexpr std::ptrdiff_t HashGroup = 8;

/// Eight units, which join in pairs and then in fours.
inline unsigned int HashEightUnits(const unsigned short* units, unsigned int hash) {
    constexpr int PairWeights = (1 << 16) | HashFactor;
    constexpr int PairFactor = HashPower(2);
    constexpr unsigned int FourFactor = HashPower(4);
    constexpr unsigned int EightFactor = HashPower(8);
    constexpr unsigned int Bias = HashOfBias(HashGroup);
    __m128i lanes;
    std::memcpy(&lanes, units, sizeof lanes);
    // The multiplication of pairs is signed: units are taken less 0x8000, and what that lacks is added at last.
    lanes = _mm_xor_si128(lanes, _mm_set1_epi16(static_cast<short>(0x8000)));
    const __m128i pairs = _mm_madd_epi16(lanes, _mm_set1_epi32(PairWeights));
    const __m128i fours = _mm_add_epi32(_mm_mul_epu32(pairs, _mm_set1_epi32(PairFactor)), _mm_srli_epi64(pairs, 32));
    const auto front = static_cast<unsigned int>(_mm_cvtsi128_si32(fours));
    const auto back = static_cast<unsigned int>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(fours, fours)));
    return hash * EightFactor + front * FourFactor + back + Bias;
}

/// Hashes units, eight in the time of one multiplication.
inline unsigned int HashShortUnits(const unsigned short* first, const unsigned short* last, unsigned int hash) {
    for (; last - first >= HashGroup; first += HashGroup) {
        hash = HashEightUnits(first, hash);
    }
    for (; first < last; ++first) {
        hash = HashUnit(hash, *first);
    }
    return hash;
}

/// Eight bytes below 0x80, the first of them lowest.
constexpr unsigned int HashEightASCII(std::uint64_t bytes, unsigned int hash) {
    constexpr std::uint64_t EvenBytes = 0x00FF00FF00FF00FF;
    constexpr std::uint64_t EvenPairs = 0x0000FFFF0000FFFF;
    constexpr unsigned int PairFactor = HashPower(2);
    constexpr unsigned int FourFactor = HashPower(4);
    constexpr unsigned int EightFactor = HashPower(8);
    // Neighbours join within their place: a pair stays below 2^16, two pairs below 2^32.
    const std::uint64_t pairs = (bytes & EvenBytes) * HashFactor + ((bytes >> 8) & EvenBytes);
    const std::uint64_t fours = (pairs & EvenPairs) * PairFactor + ((pairs >> 16) & EvenPairs);
    return hash * EightFactor + static_cast<unsigned int>(fours) * FourFactor + static_cast<unsigned int>(fours >> 32);
}

} // namespace VEL::UCS::internal
