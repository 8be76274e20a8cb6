#include "VELSysUCKernels.h"

#include "VELSysUCDecoder.h"
#include "VELSysUCHashSteps.h"

#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace VEL::UCS::internal {
namespace {

// The baseline: runs of ASCII at the speed of vectors, all else with the plain decoders.

constexpr std::ptrdiff_t StepBytes = 16;
constexpr std::ptrdiff_t StepUnits = 8;

__m128i LoadBytes(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

void StoreBytes(void* to, __m128i bytes) {
    _mm_storeu_si128(static_cast<__m128i*>(to), bytes);
}

Progress<char, unsigned short> ASCIIToUTF16(const char* first, const char* last, unsigned short* out) {
    const __m128i zero = _mm_setzero_si128();
    while (last - first >= StepBytes) {
        const __m128i bytes = LoadBytes(first);
        if (_mm_movemask_epi8(bytes) != 0) {
            break;
        }
        StoreBytes(out, _mm_unpacklo_epi8(bytes, zero));
        StoreBytes(out + StepUnits, _mm_unpackhi_epi8(bytes, zero));
        first += StepBytes;
        out += StepBytes;
    }
    return {first, out};
}

Progress<char, unsigned int> ASCIIToUTF32(const char* first, const char* last, unsigned int* out) {
    const __m128i zero = _mm_setzero_si128();
    while (last - first >= StepBytes) {
        const __m128i bytes = LoadBytes(first);
        if (_mm_movemask_epi8(bytes) != 0) {
            break;
        }
        const __m128i lower = _mm_unpacklo_epi8(bytes, zero);
        const __m128i upper = _mm_unpackhi_epi8(bytes, zero);
        StoreBytes(out, _mm_unpacklo_epi16(lower, zero));
        StoreBytes(out + 4, _mm_unpackhi_epi16(lower, zero));
        StoreBytes(out + 8, _mm_unpacklo_epi16(upper, zero));
        StoreBytes(out + 12, _mm_unpackhi_epi16(upper, zero));
        first += StepBytes;
        out += StepBytes;
    }
    return {first, out};
}

bool AreASCII(__m128i units) {
    const __m128i notASCII = _mm_set1_epi16(static_cast<short>(0xFF80));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(units, notASCII), _mm_setzero_si128())) == 0xFFFF;
}

Progress<unsigned short, char> ASCIIToUTF8(const unsigned short* first, const unsigned short* last, char* out) {
    while (last - first >= StepBytes) {
        const __m128i a = LoadBytes(first);
        const __m128i b = LoadBytes(first + StepUnits);
        if (!AreASCII(_mm_or_si128(a, b))) {
            break;
        }
        StoreBytes(out, _mm_packus_epi16(a, b));
        first += StepBytes;
        out += StepBytes;
    }
    return {first, out};
}

Progress<unsigned short, unsigned int> NoUTF16ToUTF32(const unsigned short* first, const unsigned short*,
                                                      unsigned int* out) {
    return {first, out};
}

Progress<unsigned int, unsigned short> NoUTF32ToUTF16(const unsigned int* first, const unsigned int*,
                                                      unsigned short* out) {
    return {first, out};
}

Progress<unsigned int, char> NoUTF32ToUTF8(const unsigned int* first, const unsigned int*, char* out) {
    return {first, out};
}

Measure<char> MeasureASCII(const char* first, const char* last) {
    const char* p = first;
    while (last - p >= StepBytes && _mm_movemask_epi8(LoadBytes(p)) == 0) {
        p += StepBytes;
    }
    return {p, static_cast<unsigned long>(p - first)};
}

Measure<unsigned short> MeasureASCIIUnits(const unsigned short* first, const unsigned short* last) {
    const unsigned short* p = first;
    while (last - p >= StepUnits && AreASCII(LoadBytes(p))) {
        p += StepUnits;
    }
    return {p, static_cast<unsigned long>(p - first)};
}

bool IsWellFormed(const char* first, const char* last) {
    while (first < last) {
        first = MeasureASCII(first, last).source;
        const char* const stretchEnd = last - first > PlainStretch ? first + PlainStretch : last;
        unsigned int codePoint = 0;
        while (first < stretchEnd) {
            if (_DecodeUTF8Strict(first, last, codePoint) != UTF8Decoded) {
                return false;
            }
        }
    }
    return true;
}

HashProgress HashASCIIPlainly(const char* first, const char* last, unsigned int seed) {
    unsigned int hash = seed;
    for (; last - first >= StepBytes && _mm_movemask_epi8(LoadBytes(first)) == 0; first += StepBytes) {
        std::uint64_t halves[2];
        std::memcpy(halves, first, sizeof halves);
        hash = HashEightASCII(halves[1], HashEightASCII(halves[0], hash));
    }
    return {first, hash};
}

constexpr Kernels SSE2Kernels = {
    .level = KernelLevel::SSE2,
    .utf8ToUTF16 = ASCIIToUTF16,
    .utf8ToUTF32 = ASCIIToUTF32,
    .utf16ToUTF8 = ASCIIToUTF8,
    .utf16ToUTF32 = NoUTF16ToUTF32,
    .utf32ToUTF16 = NoUTF32ToUTF16,
    .utf32ToUTF8 = NoUTF32ToUTF8,
    .utf16Length = MeasureASCII,
    .utf8Length = MeasureASCIIUnits,
    .isUTF8 = IsWellFormed,
    .hashUnits = HashShortUnits,
    .hashASCII = HashASCIIPlainly,
};

const Kernels& KernelsOf(KernelLevel level) {
    switch (level) {
    case KernelLevel::AVX2:
        return AVX2Kernels;
    case KernelLevel::SSE41:
        return SSE41Kernels;
    case KernelLevel::SSE2:
        break;
    }
    return SSE2Kernels;
}

} // namespace

constinit std::atomic<const Kernels*> s_activeKernels{nullptr};

KernelLevel BestKernelLevel() {
    __builtin_cpu_init();
    const bool hasSSE41 = __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("popcnt");
    if (!hasSSE41) {
        return KernelLevel::SSE2;
    }
    const bool hasAVX2 =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    return hasAVX2 ? KernelLevel::AVX2 : KernelLevel::SSE41;
}

const Kernels& ChooseKernels() {
    // Relaxed: threads that race here find the same.
    const Kernels& best = KernelsOf(BestKernelLevel());
    s_activeKernels.store(&best, std::memory_order_relaxed);
    return best;
}

bool UseKernelLevel(KernelLevel level) {
    if (level > BestKernelLevel()) {
        return false;
    }
    s_activeKernels.store(&KernelsOf(level), std::memory_order_relaxed);
    return true;
}

} // namespace VEL::UCS::internal
