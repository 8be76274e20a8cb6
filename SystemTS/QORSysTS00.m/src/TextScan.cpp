#include "TextScan.h"

#include "TextCopy.h"
#include "VELSysUCKernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

namespace VEL::internal {
namespace {

using Mask = std::uint32_t;

/// What the letters of both cases differ in.
constexpr unsigned int CaseBit = 0x20;

/// One set of kernels. Runs have at least the length of a vector, but for those of the flips.
struct ScanKernels {
    std::ptrdiff_t lanesOfBytes;
    void (*copyVectors)(char*, const char*, std::size_t);
    int (*findBytes)(const Search<char>&, std::ptrdiff_t, std::ptrdiff_t*, int);
    int (*findUnits)(const Search<unsigned short>&, std::ptrdiff_t, std::ptrdiff_t*, int);
    std::ptrdiff_t (*findLastUnit)(const unsigned short*, std::ptrdiff_t, const unsigned short*, std::ptrdiff_t);
    std::ptrdiff_t (*findDifferenceOrZero)(const unsigned short*, const unsigned short*, std::ptrdiff_t);
    std::ptrdiff_t (*findLetterByte)(const char*, std::ptrdiff_t, char);
    std::ptrdiff_t (*findLetterUnit)(const unsigned short*, std::ptrdiff_t, char);
    std::ptrdiff_t (*flipBytes)(char*, std::ptrdiff_t, char);
    std::ptrdiff_t (*flipUnits)(unsigned short*, std::ptrdiff_t, char);
};

template <class Unit>
inline bool IsEqual(const Unit* a, const Unit* b, std::ptrdiff_t length) {
    const std::size_t bytes = static_cast<std::size_t>(length) * sizeof(Unit);
    if (bytes >= sizeof(std::uint64_t)) {
        // Most candidates end here.
        std::uint64_t x;
        std::uint64_t y;
        std::memcpy(&x, a, sizeof x);
        std::memcpy(&y, b, sizeof y);
        return x == y && std::memcmp(a, b, bytes) == 0;
    }
    return std::equal(a, a + length, b);
}

/// What the candidates of a search have cost. In a text of few candidates comparing them is cheap; in a periodic one it
/// would cost the product of both lengths.
class Effort {
public:
    bool IsTooGreat(std::ptrdiff_t unitsSeen, std::ptrdiff_t whatLength) {
        _spent += whatLength;
        return _spent > Allowance + 8 * unitsSeen;
    }

private:
    static constexpr std::ptrdiff_t Allowance = 4096;
    std::ptrdiff_t _spent = 0;
};

/// Searches with a rolling hash, each place at the same cost: from place `from` on, counted from the start for a
/// direction of 1, and from the end for one of -1.
template <class Unit, int Direction>
std::ptrdiff_t FindByHash(const Unit* text, std::ptrdiff_t length, const Unit* what, std::ptrdiff_t whatLength,
                          std::ptrdiff_t from) {
    constexpr std::uint64_t Factor = 0x9E3779B97F4A7C15;
    const std::ptrdiff_t places = length - whatLength + 1;
    if (from >= places) {
        return NotFound;
    }
    const auto at = [&](std::ptrdiff_t i) {
        return static_cast<std::uint64_t>(text[Direction > 0 ? i : length - 1 - i]);
    };
    std::uint64_t wanted = 0;
    std::uint64_t hash = 0;
    std::uint64_t factorOfFirst = 1;
    for (std::ptrdiff_t i = 0; i < whatLength; ++i) {
        wanted = wanted * Factor + static_cast<std::uint64_t>(what[Direction > 0 ? i : whatLength - 1 - i]);
        hash = hash * Factor + at(from + i);
        factorOfFirst *= i > 0 ? Factor : 1;
    }
    for (std::ptrdiff_t i = from;; ++i) {
        const std::ptrdiff_t place = Direction > 0 ? i : places - 1 - i;
        if (hash == wanted &&
            std::memcmp(text + place, what, static_cast<std::size_t>(whatLength) * sizeof(Unit)) == 0) {
            return place;
        }
        if (i + 1 >= places) {
            return NotFound;
        }
        hash = (hash - at(i) * factorOfFirst) * Factor + at(i + whatLength);
    }
}

/// Goes on with FindPlaces() from `start` on, with `count` places found so far.
template <class Unit>
int FindPlacesByHash(const Search<Unit>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int count, int max) {
    while (count < max) {
        const std::ptrdiff_t place =
            FindByHash<Unit, +1>(search.text, search.length, search.what, search.whatLength, start);
        if (place == NotFound) {
            break;
        }
        found[count++] = place;
        start = place + search.whatLength;
    }
    return count;
}

namespace SSE2 {

#define TEXT_SCAN_TARGET
#define TEXT_SCAN_VECTOR __m128i

constexpr Mask AllLanes = 0xFFFF;

inline __m128i Load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void Store(void* to, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(to), v);
}
template <class Unit>
inline __m128i Splat(unsigned int unit) {
    return sizeof(Unit) == 1 ? _mm_set1_epi8(static_cast<char>(unit)) : _mm_set1_epi16(static_cast<short>(unit));
}
template <class Unit>
inline __m128i Equal(__m128i a, __m128i b) {
    return sizeof(Unit) == 1 ? _mm_cmpeq_epi8(a, b) : _mm_cmpeq_epi16(a, b);
}
template <class Unit>
inline __m128i AddLanes(__m128i a, __m128i b) {
    return sizeof(Unit) == 1 ? _mm_add_epi8(a, b) : _mm_add_epi16(a, b);
}
template <class Unit>
inline __m128i LessLanes(__m128i a, __m128i b) {
    return sizeof(Unit) == 1 ? _mm_cmplt_epi8(a, b) : _mm_cmplt_epi16(a, b);
}
inline __m128i And(__m128i a, __m128i b) {
    return _mm_and_si128(a, b);
}
inline __m128i Or(__m128i a, __m128i b) {
    return _mm_or_si128(a, b);
}
inline __m128i ExclusiveOr(__m128i a, __m128i b) {
    return _mm_xor_si128(a, b);
}
inline Mask MaskOf(__m128i v) {
    return static_cast<Mask>(_mm_movemask_epi8(v));
}

#include "TextScanKernels.inc"

#undef TEXT_SCAN_TARGET
#undef TEXT_SCAN_VECTOR

} // namespace SSE2

namespace AVX2 {

#define TEXT_SCAN_TARGET __attribute__((target("avx2,bmi")))
#define TEXT_SCAN_VECTOR __m256i

constexpr Mask AllLanes = 0xFFFFFFFF;

TEXT_SCAN_TARGET inline __m256i Load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
TEXT_SCAN_TARGET inline void Store(void* to, __m256i v) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), v);
}
template <class Unit>
TEXT_SCAN_TARGET inline __m256i Splat(unsigned int unit) {
    return sizeof(Unit) == 1 ? _mm256_set1_epi8(static_cast<char>(unit)) : _mm256_set1_epi16(static_cast<short>(unit));
}
template <class Unit>
TEXT_SCAN_TARGET inline __m256i Equal(__m256i a, __m256i b) {
    return sizeof(Unit) == 1 ? _mm256_cmpeq_epi8(a, b) : _mm256_cmpeq_epi16(a, b);
}
template <class Unit>
TEXT_SCAN_TARGET inline __m256i AddLanes(__m256i a, __m256i b) {
    return sizeof(Unit) == 1 ? _mm256_add_epi8(a, b) : _mm256_add_epi16(a, b);
}
template <class Unit>
TEXT_SCAN_TARGET inline __m256i LessLanes(__m256i a, __m256i b) {
    return sizeof(Unit) == 1 ? _mm256_cmpgt_epi8(b, a) : _mm256_cmpgt_epi16(b, a);
}
TEXT_SCAN_TARGET inline __m256i And(__m256i a, __m256i b) {
    return _mm256_and_si256(a, b);
}
TEXT_SCAN_TARGET inline __m256i Or(__m256i a, __m256i b) {
    return _mm256_or_si256(a, b);
}
TEXT_SCAN_TARGET inline __m256i ExclusiveOr(__m256i a, __m256i b) {
    return _mm256_xor_si256(a, b);
}
TEXT_SCAN_TARGET inline Mask MaskOf(__m256i v) {
    return static_cast<Mask>(_mm256_movemask_epi8(v));
}

#include "TextScanKernels.inc"

#undef TEXT_SCAN_TARGET
#undef TEXT_SCAN_VECTOR

} // namespace AVX2

const ScanKernels& ActiveScanKernels() {
    using UCS::internal::KernelLevel;
    return UCS::internal::ActiveKernels().level == KernelLevel::AVX2 ? AVX2::Kernels : SSE2::Kernels;
}

template <class Unit>
std::ptrdiff_t LanesOf(const ScanKernels& kernels) {
    return kernels.lanesOfBytes / static_cast<std::ptrdiff_t>(sizeof(Unit));
}

/// The plain form of FindPlaces(), for texts of a few places.
template <class Unit>
int FindPlacesPlainly(const Search<Unit>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int max) {
    int count = 0;
    for (std::ptrdiff_t place = start; count < max && place <= search.length - search.whatLength;) {
        if (search.text[place] == search.what[0] && IsEqual(search.text + place, search.what, search.whatLength)) {
            found[count++] = place;
            place += search.whatLength;
        } else {
            ++place;
        }
    }
    return count;
}

template <class Unit, class Kernel>
int FindPlacesOf(const Search<Unit>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int max,
                 Kernel ScanKernels::*kernel) {
    const std::ptrdiff_t places = search.length - search.whatLength + 1 - start;
    const ScanKernels& kernels = ActiveScanKernels();
    return places < LanesOf<Unit>(kernels) ? FindPlacesPlainly(search, start, found, max)
                                           : (kernels.*kernel)(search, start, found, max);
}

/// The first place, which for an empty `what` is the start.
template <class Unit>
std::ptrdiff_t FindFirstPlace(const Search<Unit>& search) {
    if (search.whatLength == 0) {
        return 0;
    }
    std::ptrdiff_t place = NotFound;
    FindPlaces(search, 0, &place, 1);
    return place;
}

/// The lanes of a vector that differ from a unit. The runs are short, so the kernel isn't chosen.
template <class Unit>
Mask OtherLanes(const Unit* text, Unit unit) {
    return ~SSE2::MaskOf(SSE2::Equal<Unit>(SSE2::Load(text), SSE2::Splat<Unit>(unit))) & SSE2::AllLanes;
}

template <class Unit>
std::ptrdiff_t CountLeadingUnits(const Unit* text, std::ptrdiff_t length, Unit unit) {
    std::ptrdiff_t i = 0;
    for (; length - i >= SSE2::Lanes<Unit>; i += SSE2::Lanes<Unit>) {
        if (const Mask others = OtherLanes(text + i, unit)) {
            return i + SSE2::FirstLane<Unit>(others);
        }
    }
    while (i < length && text[i] == unit) {
        ++i;
    }
    return i;
}

template <class Unit>
std::ptrdiff_t CountTrailingUnits(const Unit* text, std::ptrdiff_t length, Unit unit) {
    std::ptrdiff_t left = length;
    for (; left >= SSE2::Lanes<Unit>; left -= SSE2::Lanes<Unit>) {
        if (const Mask others = OtherLanes(text + left - SSE2::Lanes<Unit>, unit)) {
            return length - left + SSE2::Lanes<Unit> - 1 - SSE2::LastLane<Unit>(others);
        }
    }
    while (left > 0 && text[left - 1] == unit) {
        --left;
    }
    return length - left;
}

template <class Unit>
bool IsLetterFrom(Unit unit, char letter) {
    return static_cast<unsigned int>(unit) - static_cast<unsigned int>(letter) < 26;
}

template <class Unit>
bool IsASCII(Unit unit) {
    return (static_cast<unsigned int>(unit) & ~0x7Fu) == 0;
}

template <class Unit, class Kernel>
std::ptrdiff_t FindLetterFrom(const Unit* text, std::ptrdiff_t length, char letter, Kernel ScanKernels::*kernel) {
    const ScanKernels& kernels = ActiveScanKernels();
    if (length >= LanesOf<Unit>(kernels)) {
        return (kernels.*kernel)(text, length, letter);
    }
    const Unit* const found =
        std::find_if(text, text + length, [=](Unit unit) { return !IsASCII(unit) || IsLetterFrom(unit, letter); });
    return found - text;
}

template <class Unit, class Kernel>
std::ptrdiff_t FlipASCII(Unit* text, std::ptrdiff_t length, char letter, Kernel ScanKernels::*kernel) {
    std::ptrdiff_t i = (ActiveScanKernels().*kernel)(text, length, letter);
    for (; i < length && IsASCII(text[i]); ++i) {
        text[i] = IsLetterFrom(text[i], letter) ? static_cast<Unit>(text[i] ^ CaseBit) : text[i];
    }
    return i;
}

} // namespace

int FindPlaces(const Search<char>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int max) {
    return FindPlacesOf(search, start, found, max, &ScanKernels::findBytes);
}

int FindPlaces(const Search<unsigned short>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int max) {
    return FindPlacesOf(search, start, found, max, &ScanKernels::findUnits);
}

std::ptrdiff_t FindFirst(const char* text, std::ptrdiff_t length, const char* what, std::ptrdiff_t whatLength) {
    return FindFirstPlace<char>({text, length, what, whatLength});
}

std::ptrdiff_t FindFirst(const unsigned short* text, std::ptrdiff_t length, const unsigned short* what,
                         std::ptrdiff_t whatLength) {
    return FindFirstPlace<unsigned short>({text, length, what, whatLength});
}

std::ptrdiff_t FindLast(const unsigned short* text, std::ptrdiff_t length, const unsigned short* what,
                        std::ptrdiff_t whatLength) {
    const std::ptrdiff_t places = length - whatLength + 1;
    if (whatLength == 0) {
        return length;
    }
    const ScanKernels& kernels = ActiveScanKernels();
    if (places >= LanesOf<unsigned short>(kernels)) {
        return kernels.findLastUnit(text, length, what, whatLength);
    }
    for (std::ptrdiff_t place = places - 1; place >= 0; --place) {
        if (text[place] == what[0] && IsEqual(text + place, what, whatLength)) {
            return place;
        }
    }
    return NotFound;
}

std::ptrdiff_t FindDifferenceOrZero(const unsigned short* a, const unsigned short* b, std::ptrdiff_t length) {
    constexpr std::ptrdiff_t Long = 48;
    if (length >= Long) {
        return ActiveScanKernels().findDifferenceOrZero(a, b, length);
    }
    // Choosing the kernel would cost more than it gains.
    if (length >= SSE2::Lanes<unsigned short>) {
        return SSE2::FindDifferenceOrZeroFrom(a, b, length, 0);
    }
    std::ptrdiff_t i = 0;
    while (i < length && a[i] == b[i] && a[i] != 0) {
        ++i;
    }
    return i;
}

void CopyLong(char* to, const char* from, std::size_t bytes) {
    ActiveScanKernels().copyVectors(to, from, bytes);
}

std::ptrdiff_t CountLeading(const char* text, std::ptrdiff_t length, char byte) {
    return CountLeadingUnits(text, length, byte);
}

std::ptrdiff_t CountLeading(const unsigned short* text, std::ptrdiff_t length, unsigned short unit) {
    return CountLeadingUnits(text, length, unit);
}

std::ptrdiff_t CountTrailing(const char* text, std::ptrdiff_t length, char byte) {
    return CountTrailingUnits(text, length, byte);
}

std::ptrdiff_t CountTrailing(const unsigned short* text, std::ptrdiff_t length, unsigned short unit) {
    return CountTrailingUnits(text, length, unit);
}

std::ptrdiff_t FindNotLowerCase(const char* text, std::ptrdiff_t length) {
    return FindLetterFrom(text, length, 'A', &ScanKernels::findLetterByte);
}

std::ptrdiff_t FindNotLowerCase(const unsigned short* text, std::ptrdiff_t length) {
    return FindLetterFrom(text, length, 'A', &ScanKernels::findLetterUnit);
}

std::ptrdiff_t FindNotUpperCase(const char* text, std::ptrdiff_t length) {
    return FindLetterFrom(text, length, 'a', &ScanKernels::findLetterByte);
}

std::ptrdiff_t FindNotUpperCase(const unsigned short* text, std::ptrdiff_t length) {
    return FindLetterFrom(text, length, 'a', &ScanKernels::findLetterUnit);
}

std::ptrdiff_t LowerASCII(char* text, std::ptrdiff_t length) {
    return FlipASCII(text, length, 'A', &ScanKernels::flipBytes);
}

std::ptrdiff_t LowerASCII(unsigned short* text, std::ptrdiff_t length) {
    return FlipASCII(text, length, 'A', &ScanKernels::flipUnits);
}

std::ptrdiff_t UpperASCII(char* text, std::ptrdiff_t length) {
    return FlipASCII(text, length, 'a', &ScanKernels::flipBytes);
}

std::ptrdiff_t UpperASCII(unsigned short* text, std::ptrdiff_t length) {
    return FlipASCII(text, length, 'a', &ScanKernels::flipUnits);
}

} // namespace VEL::internal
