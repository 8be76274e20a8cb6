/// @file
/// Tables of the Unicode kernels, all made by the compiler.
#pragma once

#include "VELSysUCDecoder.h"

#include <array>
#include <bit>
#include <cstdint>

namespace VEL::UCS::internal {

/// A control operand of the byte shuffle: byte `i` of the result is byte `from[i]` of the source.
struct alignas(16) Shuffle {
    std::array<std::uint8_t, 16> from;
};

/// A shuffle index that gives a zero byte.
inline constexpr std::uint8_t ShuffleZero = 0x80;

namespace tables {

constexpr Shuffle EmptyShuffle() {
    Shuffle shuffle{};
    shuffle.from.fill(ShuffleZero);
    return shuffle;
}

/// Bytes that stand for zero on either side of the identity.
constexpr std::array<std::uint8_t, 64> MakeByteMoves() {
    std::array<std::uint8_t, 64> moves{};
    moves.fill(ShuffleZero);
    for (std::size_t i = 0; i < 16; ++i) {
        moves[16 + i] = static_cast<std::uint8_t>(i);
    }
    return moves;
}

constexpr bool HasBit(unsigned int mask, unsigned int bit) {
    return ((mask >> bit) & 1U) != 0;
}

constexpr std::array<Shuffle, 256> MakeKeptUnits() {
    std::array<Shuffle, 256> table{};
    for (unsigned int kept = 0; kept < table.size(); ++kept) {
        table[kept] = EmptyShuffle();
        std::size_t next = 0;
        for (unsigned int lane = 0; lane < 8; ++lane) {
            if (HasBit(kept, lane)) {
                table[kept].from[next++] = static_cast<std::uint8_t>(2 * lane);
                table[kept].from[next++] = static_cast<std::uint8_t>(2 * lane + 1);
            }
        }
    }
    return table;
}

constexpr std::array<Shuffle, 256> MakeOneOrTwoBytes() {
    std::array<Shuffle, 256> table{};
    for (unsigned int twoByte = 0; twoByte < table.size(); ++twoByte) {
        table[twoByte] = EmptyShuffle();
        std::size_t next = 0;
        for (unsigned int lane = 0; lane < 8; ++lane) {
            if (HasBit(twoByte, lane)) {
                table[twoByte].from[next++] = static_cast<std::uint8_t>(2 * lane);
            }
            table[twoByte].from[next++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
    }
    return table;
}

constexpr std::array<Shuffle, 256> MakeOneToThreeBytes() {
    std::array<Shuffle, 256> table{};
    for (unsigned int classes = 0; classes < table.size(); ++classes) {
        table[classes] = EmptyShuffle();
        std::size_t next = 0;
        for (unsigned int lane = 0; lane < 4; ++lane) {
            const auto base = static_cast<std::uint8_t>(4 * lane);
            if (HasBit(classes, lane + 4)) {
                table[classes].from[next++] = base + 2;
            }
            if (HasBit(classes, lane)) {
                table[classes].from[next++] = base;
            }
            table[classes].from[next++] = base + 1;
        }
    }
    return table;
}

} // namespace tables

/// Sixteen shuffle indices from `ByteMovesCentre` + n on move bytes down by n, or up where n is negative.
inline constexpr std::array<std::uint8_t, 64> ByteMoves = tables::MakeByteMoves();
inline constexpr std::size_t ByteMovesCentre = 16;

/// Moves those of eight 16-bit lanes whose bit is set to the front.
inline constexpr std::array<Shuffle, 256> KeptUnits = tables::MakeKeptUnits();

/// Takes from each of eight 16-bit lanes the second byte, and the first before it where the lane's bit is set.
inline constexpr std::array<Shuffle, 256> OneOrTwoBytes = tables::MakeOneOrTwoBytes();

/// Takes from each of four 32-bit lanes its second byte, the first before it where the lane's bit among the lower four
/// is set, and the third before those where its bit among the upper four is set too.
inline constexpr std::array<Shuffle, 256> OneToThreeBytes = tables::MakeOneToThreeBytes();

inline constexpr unsigned int HashFactor = 37;

/// 37 to the power of `exponent`, modulo 2^32.
constexpr unsigned int HashPower(unsigned long exponent) {
    unsigned int power = 1;
    for (unsigned int base = HashFactor; exponent != 0; exponent >>= 1, base *= base) {
        if ((exponent & 1) != 0) {
            power *= base;
        }
    }
    return power;
}

/// What each of `Lanes` lanes counts when they hold the hashes of groups of `GroupUnits` units, in order.
template <std::size_t Lanes, unsigned long GroupUnits>
constexpr std::array<unsigned int, Lanes> MakeHashWeights() {
    std::array<unsigned int, Lanes> weights{};
    for (std::size_t lane = 0; lane < Lanes; ++lane) {
        weights[lane] = HashPower(GroupUnits * (Lanes - 1 - lane));
    }
    return weights;
}

/// Ways in which two bytes in a row cannot stand in well-formed UTF-8. A pair is in error where the set of its first
/// byte's upper half, that of its lower half and that of the second byte's upper half have one in common.
enum PairError : std::uint8_t {
    TooShort = 1 << 0,         ///< A lead, then no continuation.
    TooLong = 1 << 1,          ///< ASCII, then a continuation.
    Overlong3 = 1 << 2,        ///< E0, then below A0.
    TooLarge = 1 << 3,         ///< F4, then 90 or above; F5 and above.
    Surrogate = 1 << 4,        ///< ED, then A0 or above.
    Overlong2 = 1 << 5,        ///< C0 or C1.
    Overlong4 = 1 << 6,        ///< F0, or F5 and above, then below 90.
    TwoContinuations = 1 << 7, ///< In error unless a lead two or three bytes before the second one claims it.
};

namespace tables {

/// Whether a pair whose bytes are known by the given halves can show the error.
constexpr bool Shows(PairError error, unsigned int first, unsigned int second) {
    const bool secondContinues = (second & 0xC0) == 0x80;
    switch (error) {
    case TooShort:
        return first >= 0xC0 && !secondContinues;
    case TooLong:
        return first < 0x80 && secondContinues;
    case Overlong3:
        return first == 0xE0 && second >= 0x80 && second < 0xA0;
    case TooLarge:
        return first >= 0xF4 && second >= 0x90 && second < 0xC0;
    case Surrogate:
        return first == 0xED && second >= 0xA0 && second < 0xC0;
    case Overlong2:
        return (first == 0xC0 || first == 0xC1) && secondContinues;
    case Overlong4:
        return (first == 0xF0 || first > 0xF4) && second >= 0x80 && second < 0x90;
    case TwoContinuations:
        return (first & 0xC0) == 0x80 && secondContinues;
    }
    return false;
}

/// Errors that some pair with the value `half` in the nibble that `Matches` looks at shows.
template <class Matches>
constexpr std::array<std::uint8_t, 16> MakeErrorSets(Matches matches) {
    std::array<std::uint8_t, 16> sets{};
    for (unsigned int bit = 0; bit < 8; ++bit) {
        const auto error = static_cast<PairError>(1U << bit);
        for (unsigned int first = 0; first < 256; ++first) {
            for (unsigned int second = 0; second < 256; second += 16) {
                if (Shows(error, first, second)) {
                    sets[matches(first, second)] |= error;
                }
            }
        }
    }
    return sets;
}

} // namespace tables

inline constexpr auto ErrorsByFirstUpper =
    tables::MakeErrorSets([](unsigned int first, unsigned int) { return first >> 4; });
inline constexpr auto ErrorsByFirstLower =
    tables::MakeErrorSets([](unsigned int first, unsigned int) { return first & 0x0F; });
inline constexpr auto ErrorsBySecondUpper =
    tables::MakeErrorSets([](unsigned int, unsigned int second) { return second >> 4; });

} // namespace VEL::UCS::internal
