/// @file
/// Vectors of 16 bytes, for the kernels that are stamped from VELSysUCKernelUTF8.inc and its kin.
#pragma once

#include <cstdint>
#include <immintrin.h>

/// Stands at every function that may hold instructions of this level.
#define VEL_UCS_TARGET __attribute__((target("sse4.1,popcnt")))
#define VEL_UCS_INLINE VEL_UCS_TARGET __attribute__((always_inline)) inline

namespace VEL::UCS::internal {
namespace {

using Vector = __m128i;

constexpr int VectorBytes = 16;
/// Parts of 16 bytes that the shuffle works in.
constexpr int VectorParts = 1;

VEL_UCS_INLINE Vector Load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

/// A constant that stands in memory. Compilers make a vector that they know anew at each use, in three instructions;
/// an operand in memory costs none.
struct alignas(VectorBytes) VectorConstant {
    std::uint8_t bytes[VectorBytes];
};

constexpr VectorConstant Repeat8(std::uint8_t value) {
    VectorConstant constant{};
    for (std::uint8_t& byte : constant.bytes) {
        byte = value;
    }
    return constant;
}

constexpr VectorConstant Repeat16(std::uint16_t value) {
    VectorConstant constant{};
    for (int i = 0; i < VectorBytes; i += 2) {
        constant.bytes[i] = static_cast<std::uint8_t>(value & 0xFF);
        constant.bytes[i + 1] = static_cast<std::uint8_t>(value >> 8);
    }
    return constant;
}

VEL_UCS_INLINE Vector Load(const VectorConstant& constant) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(constant.bytes));
}

/// A set of constants, of which the compiler is not to know that it knows them.
template <class Constants>
VEL_UCS_INLINE const Constants& InMemory(const Constants& constants) {
    const Constants* address = &constants;
    __asm__("" : "+r"(address));
    return *address;
}

VEL_UCS_INLINE void Store(void* to, Vector v) {
    _mm_storeu_si128(static_cast<__m128i*>(to), v);
}

/// Sixteen bytes that a table shuffle looks up in.
template <class Table>
VEL_UCS_INLINE Vector LoadTable(const Table& sixteenBytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(sixteenBytes.data()));
}

VEL_UCS_INLINE Vector Zero() {
    return _mm_setzero_si128();
}

VEL_UCS_INLINE Vector Splat8(unsigned int value) {
    return _mm_set1_epi8(static_cast<char>(value));
}

VEL_UCS_INLINE Vector Splat16(unsigned int value) {
    return _mm_set1_epi16(static_cast<short>(value));
}

VEL_UCS_INLINE Vector Splat32(unsigned int value) {
    return _mm_set1_epi32(static_cast<int>(value));
}

/// Shifts within 16-bit lanes.
template <int Bits>
VEL_UCS_INLINE Vector Left16(Vector v) {
    return _mm_slli_epi16(v, Bits);
}

template <int Bits>
VEL_UCS_INLINE Vector Right16(Vector v) {
    return _mm_srli_epi16(v, Bits);
}

VEL_UCS_INLINE Vector Add8(Vector a, Vector b) {
    return _mm_add_epi8(a, b);
}

VEL_UCS_INLINE Vector Add16(Vector a, Vector b) {
    return _mm_add_epi16(a, b);
}

VEL_UCS_INLINE Vector Add32(Vector a, Vector b) {
    return _mm_add_epi32(a, b);
}

VEL_UCS_INLINE Vector Multiply32(Vector a, Vector b) {
    return _mm_mullo_epi32(a, b);
}

VEL_UCS_INLINE Vector SaturatingSubtract8(Vector a, Vector b) {
    return _mm_subs_epu8(a, b);
}

VEL_UCS_INLINE Vector Equal8(Vector a, Vector b) {
    return _mm_cmpeq_epi8(a, b);
}

VEL_UCS_INLINE Vector Equal16(Vector a, Vector b) {
    return _mm_cmpeq_epi16(a, b);
}

/// Signed comparison.
VEL_UCS_INLINE Vector Greater8(Vector a, Vector b) {
    return _mm_cmpgt_epi8(a, b);
}

/// `b` where the top bit of the mask's byte is set, `a` elsewhere.
VEL_UCS_INLINE Vector Choose8(Vector a, Vector b, Vector mask) {
    return _mm_blendv_epi8(a, b, mask);
}

VEL_UCS_INLINE Vector Shuffle8(Vector table, Vector indices) {
    return _mm_shuffle_epi8(table, indices);
}

/// Top bits of all bytes.
VEL_UCS_INLINE std::uint32_t TopBits(Vector v) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(v));
}

VEL_UCS_INLINE bool HasAnyBit(Vector v) {
    return _mm_testz_si128(v, v) == 0;
}

/// Interleave within each part.
VEL_UCS_INLINE Vector InterleaveLower8(Vector a, Vector b) {
    return _mm_unpacklo_epi8(a, b);
}

VEL_UCS_INLINE Vector InterleaveUpper8(Vector a, Vector b) {
    return _mm_unpackhi_epi8(a, b);
}

VEL_UCS_INLINE Vector InterleaveLower16(Vector a, Vector b) {
    return _mm_unpacklo_epi16(a, b);
}

VEL_UCS_INLINE Vector InterleaveUpper16(Vector a, Vector b) {
    return _mm_unpackhi_epi16(a, b);
}

/// Narrows 16-bit lanes with signed saturation, within each part: first those of `a`, then those of `b`.
VEL_UCS_INLINE Vector NarrowSigned16(Vector a, Vector b) {
    return _mm_packs_epi16(a, b);
}

/// Swaps the second and third quarter of each part.
VEL_UCS_INLINE Vector SwapMiddle(Vector v) {
    return _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 1, 2, 0));
}

/// Narrows values below 0x100 from 16 to 8 bits, in order.
VEL_UCS_INLINE Vector Narrow16(Vector a, Vector b) {
    return _mm_packus_epi16(a, b);
}

/// Narrows values below 0x10000 from 32 to 16 bits, in order.
VEL_UCS_INLINE Vector Narrow32(Vector a, Vector b) {
    return _mm_packus_epi32(a, b);
}

/// The vector moved up by `Bytes`, with the last bytes of `previous` in front.
template <int Bytes>
VEL_UCS_INLINE Vector MoveUp(Vector previous, Vector v) {
    return _mm_alignr_epi8(v, previous, 16 - Bytes);
}

/// The vector moved down by `Bytes`, with the first bytes of `next` behind.
template <int Bytes>
VEL_UCS_INLINE Vector MoveDown(Vector v, Vector next) {
    return _mm_alignr_epi8(next, v, Bytes);
}

/// The lower part, which is all of a vector.
VEL_UCS_INLINE Vector JoinParts(__m128i lower, __m128i) {
    return lower;
}

template <int Part>
VEL_UCS_INLINE __m128i TakePart(Vector v) {
    static_assert(Part == 0);
    return v;
}

/// Widens half a vector of bytes, or half a vector of units, from memory.
VEL_UCS_INLINE Vector LoadWidened8(const char* from) {
    return _mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
}

VEL_UCS_INLINE Vector LoadWidened16(const unsigned short* from) {
    return _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
}

/// Pairs of 16-bit lanes, multiplied by `weights` and summed; of 8-bit lanes, the first being unsigned.
VEL_UCS_INLINE Vector WeighPairs16(Vector v, Vector weights) {
    return _mm_madd_epi16(v, weights);
}

VEL_UCS_INLINE Vector WeighPairs8(Vector v, Vector weights) {
    return _mm_maddubs_epi16(v, weights);
}

VEL_UCS_INLINE unsigned int Sum32(Vector v) {
    __m128i sum = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<unsigned int>(_mm_cvtsi128_si32(sum));
}

/// Place of the lowest bit; 64 when there is none.
VEL_UCS_INLINE unsigned int LowestBit(std::uint64_t mask) {
    return mask != 0 ? static_cast<unsigned int>(__builtin_ctzll(mask)) : 64U;
}

/// The lower `count` bits; all of them from 64 on.
VEL_UCS_INLINE std::uint64_t LowerBits(std::uint64_t mask, unsigned int count) {
    return count < 64 ? mask & ((std::uint64_t{1} << count) - 1) : mask;
}

VEL_UCS_INLINE unsigned int CountBits(std::uint64_t mask) {
    return static_cast<unsigned int>(_mm_popcnt_u64(mask));
}

} // namespace
} // namespace VEL::UCS::internal
