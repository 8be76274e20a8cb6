#include "VELSysUCAlgorithm.h"

#include "VELSysUCDecoder.h"
#include "VELSysUCKernels.h"
#include "VELSysUCShortText.h"

#include <algorithm>
#include <climits>
#include <cstdint>

using namespace VEL::UCS::internal;

namespace {

unsigned short* Write(unsigned int codePoint, unsigned short* out) {
    return WriteUTF16(codePoint, out);
}

char* Write(unsigned int codePoint, char* out) {
    return _EncodeUTF8(codePoint, out);
}

unsigned int* Write(unsigned int codePoint, unsigned int* out) {
    *out++ = codePoint;
    return out;
}

/// Writes a code point below 0x80.
template <class Target>
Target* WriteASCII(unsigned int codePoint, Target* out) {
    *out++ = static_cast<Target>(codePoint);
    return out;
}

// Plain conversion of the characters that start in front of `stretchEnd`. The range itself goes on to `last`: how a
// character is decoded depends on how far that is.

template <class Target>
Target* ConvertPlainly(const char*& first, const char* stretchEnd, const char* last, Target* out) {
    while (first < stretchEnd) {
        unsigned int codePoint = static_cast<unsigned char>(*first);
        if (codePoint < UTF8TwoByteFirst) {
            // All decoders agree on these, and short texts consist of them.
            out = WriteASCII(codePoint, out);
            ++first;
        } else if (last - first >= UTF8MaxLength) {
            out = Write(_DecodeUTF8Fast(first), out);
        } else if (_DecodeUTF8Tail(first, last, codePoint) == UTF8Decoded) {
            out = Write(codePoint, out);
        } else {
            ++first;
        }
    }
    return out;
}

template <class Target>
Target* ConvertPlainly(const unsigned short*& first, const unsigned short* stretchEnd, const unsigned short* last,
                       Target* out) {
    while (first < stretchEnd) {
        if (*first < UTF8TwoByteFirst) {
            out = WriteASCII(*first++, out);
        } else {
            out = Write(_DecodeUTF16Fast(first, last), out);
        }
    }
    return out;
}

template <class Target>
Target* ConvertPlainly(const unsigned int*& first, const unsigned int* stretchEnd, const unsigned int*, Target* out) {
    for (; first < stretchEnd; ++first) {
        out = Write(*first, out);
    }
    return out;
}

template <class Source, class Target>
using Kernel = Progress<Source, Target> (*)(const Source*, const Source*, Target*);

template <class Source>
const Source* StretchEnd(const Source* first, const Source* last) {
    return first + std::min(PlainStretch, last - first);
}

/// Kernel and plain decoders by turns: the kernel as far as it goes, then what stopped it.
template <class Source, class Target>
Target* Convert(const Source* first, const Source* last, Target* out, Kernel<Source, Target> Kernels::*kernel) {
    if (last - first < KernelMinimum) {
        if (last - first >= ShortHalf && ConvertShortASCII(first, last, out)) {
            return out + (last - first);
        }
        return ConvertPlainly(first, last, last, out);
    }
    const Kernel<Source, Target> convert = ActiveKernels().*kernel;
    for (;;) {
        const Progress<Source, Target> progress = convert(first, last, out);
        if (progress.source == last) {
            return progress.target;
        }
        first = progress.source;
        out = ConvertPlainly(first, StretchEnd(first, last), last, progress.target);
        if (last - first < KernelMinimum) {
            return ConvertPlainly(first, last, last, out);
        }
    }
}

/// The last place in `[first, limit]` that is not within a character, as far as a look at four bytes can tell.
const char* WholeCharacters(const char* first, const char* limit, const char* last) {
    if (limit == last) {
        return limit;
    }
    const char* place = limit;
    for (int i = 1; i < UTF8MaxLength && place > first && IsContinuation(static_cast<unsigned char>(*place)); ++i) {
        --place;
    }
    return place;
}

const unsigned short* WholeCharacters(const unsigned short* first, const unsigned short* limit,
                                      const unsigned short* last) {
    return limit < last && limit > first && IsHighSurrogate(limit[-1]) ? limit - 1 : limit;
}

} // namespace

unsigned short* VELSysUCAlgorithm::unchecked::utf8to16(const char* first, const char* last, unsigned short* out) {
    return Convert(first, last, out, &Kernels::utf8ToUTF16);
}

unsigned int* VELSysUCAlgorithm::unchecked::utf8to32(const char* first, const char* last, unsigned int* out) {
    return Convert(first, last, out, &Kernels::utf8ToUTF32);
}

char* VELSysUCAlgorithm::unchecked::utf16to8(const unsigned short* first, const unsigned short* last, char* out) {
    return Convert(first, last, out, &Kernels::utf16ToUTF8);
}

unsigned int* VELSysUCAlgorithm::unchecked::utf16to32(const unsigned short* first, const unsigned short* last,
                                                      unsigned int* out) {
    return Convert(first, last, out, &Kernels::utf16ToUTF32);
}

unsigned short* VELSysUCAlgorithm::unchecked::utf32to16(const unsigned int* first, const unsigned int* last,
                                                        unsigned short* out) {
    return Convert(first, last, out, &Kernels::utf32ToUTF16);
}

char* VELSysUCAlgorithm::unchecked::utf32to8(const unsigned int* first, const unsigned int* last, char* out) {
    return Convert(first, last, out, &Kernels::utf32ToUTF8);
}

namespace {

// Resumable conversions. A direction says how its characters are decoded, how much one takes, and how many units of
// the source certainly pass before the room becomes scarce; the rest is common.

struct ToUTF16 {
    using Source = char;
    using Target = unsigned short;
    static constexpr auto Convert = &Kernels::utf8ToUTF16;
    static constexpr auto Measure = &Kernels::utf16Length;

    /// A damaged byte near the end counts as the code point 0 here; the unchecked conversions drop it.
    static unsigned int Decode(const char*& p, const char* end) {
        if (end - p >= UTF8MaxLength) {
            return _DecodeUTF8Fast(p);
        }
        unsigned int codePoint = 0;
        if (_DecodeUTF8Tail(p, end, codePoint) != UTF8Decoded) {
            ++p;
            return 0;
        }
        return codePoint;
    }

    static unsigned int Length(unsigned int codePoint) { return static_cast<unsigned int>(UTF16Length(codePoint)); }

    static bool IsScarce(unsigned int room, unsigned int count) { return room - count < 2; }

    /// A byte gives one unit at most, and two units are to be free before each character.
    static std::ptrdiff_t UnlimitedSource(unsigned int room, unsigned int count) {
        return std::ptrdiff_t{room - count} - 1;
    }
};

struct ToUTF8 {
    using Source = unsigned short;
    using Target = char;
    static constexpr auto Convert = &Kernels::utf16ToUTF8;
    static constexpr auto Measure = &Kernels::utf8Length;

    static unsigned int Decode(const unsigned short*& p, const unsigned short* end) { return _DecodeUTF16Fast(p, end); }

    static unsigned int Length(unsigned int codePoint) { return static_cast<unsigned int>(UTF8Length(codePoint)); }

    /// In 32 bits: below a room of 4 the difference wraps around, and there is no limit. With more, the first
    /// character is never limited.
    static bool IsScarce(unsigned int room, unsigned int count) { return count > room - UTF8MaxLength; }

    /// A unit gives three bytes at most, and four bytes are to be free before each character.
    static std::ptrdiff_t UnlimitedSource(unsigned int room, unsigned int count) {
        if (room < UTF8MaxLength) {
            return PTRDIFF_MAX;
        }
        return (std::ptrdiff_t{room - count} - 1) / 3;
    }
};

template <class Direction>
unsigned long MeasureAll(const typename Direction::Source* p, const typename Direction::Source* end) {
    const auto measure = ActiveKernels().*Direction::Measure;
    unsigned long count = 0;
    while (p < end) {
        if (end - p >= KernelMinimum) {
            const auto measured = measure(p, end);
            count += measured.length;
            p = measured.source;
        }
        const auto* const stretchEnd = StretchEnd(p, end);
        while (p < stretchEnd) {
            count += static_cast<unsigned long>(Direction::Length(Direction::Decode(p, end)));
        }
    }
    return count;
}

/// Counts of what was written are of 32 bits, as the room is.
template <class Target>
unsigned int CountWritten(const Target* dst, const Target* out) {
    return static_cast<unsigned int>(out - dst);
}

/// One character after the other, as long as they start in front of `stretchEnd`. Gives false when the room is used up.
template <class Direction>
bool FillPlainly(const typename Direction::Source*& p, const typename Direction::Source* stretchEnd,
                 const typename Direction::Source* end, typename Direction::Target* dst, unsigned int room,
                 typename Direction::Target*& out) {
    while (p < stretchEnd) {
        const auto* const start = p;
        const unsigned int count = CountWritten(dst, out);
        const unsigned int codePoint = Direction::Decode(p, end);
        const unsigned int length = Direction::Length(codePoint);
        const bool scarce = Direction::IsScarce(room, count);
        if (scarce && length > room - count) {
            p = start;
            return false;
        }
        out = Write(codePoint, out);
        if (scarce) {
            return false;
        }
    }
    return true;
}

/// Converts until the source or the room is used up; gives the units written and moves `p`.
template <class Direction>
unsigned int Fill(const typename Direction::Source*& p, const typename Direction::Source* end,
                  typename Direction::Target* dst, unsigned int room) {
    const auto convert = ActiveKernels().*Direction::Convert;
    auto* out = dst;
    while (p < end) {
        const std::ptrdiff_t unlimited = std::min(end - p, Direction::UnlimitedSource(room, CountWritten(dst, out)));
        const auto* const limit = unlimited > 0 ? WholeCharacters(p, p + unlimited, end) : p;
        if (limit - p >= KernelMinimum) {
            const auto progress = convert(p, limit, out);
            out = progress.target;
            p = progress.source;
            if (p == limit) {
                continue;
            }
        }
        if (!FillPlainly<Direction>(p, StretchEnd(p, end), end, dst, room, out)) {
            break;
        }
    }
    return CountWritten(dst, out);
}

template <class Direction>
int ConvertResumably(const typename Direction::Source*& src, int& len, typename Direction::Target* dst,
                     unsigned int room) {
    if (src == nullptr || len < 0) {
        return -1;
    }
    const auto* p = src;
    const auto* const end = src + len;
    if (dst == nullptr) {
        const unsigned long count = MeasureAll<Direction>(p, end);
        // A number that the result can't tell.
        if (count > INT_MAX) {
            return -1;
        }
        src = nullptr;
        len = 0;
        return static_cast<int>(count);
    }
    const unsigned int count = Fill<Direction>(p, end, dst, room);
    len = static_cast<int>(end - p);
    src = len == 0 ? nullptr : p;
    return static_cast<int>(count);
}

} // namespace

int VELSysUCAlgorithm::ConvertUTF8ToUTF16(const char*& src, int& len, unsigned short* dst, unsigned int room) {
    return ConvertResumably<ToUTF16>(src, len, dst, room);
}

int VELSysUCAlgorithm::ConvertUTF16ToUTF8(const unsigned short*& src, int& len, char* dst, unsigned int room) {
    return ConvertResumably<ToUTF8>(src, len, dst, room);
}

int VELSysUCAlgorithm::ConvertUTF8ToUCS2(const char*& src, unsigned long& len, unsigned short* dst,
                                         unsigned long room) {
    int narrowLength = static_cast<int>(len);
    const int result = ConvertUTF8ToUTF16(src, narrowLength, dst, static_cast<unsigned int>(room));
    if (result >= 0) {
        len = static_cast<unsigned long>(narrowLength);
    }
    return result;
}

int VELSysUCAlgorithm::ConvertUCS2ToUTF8(const unsigned short*& src, unsigned long& len, char* dst,
                                         unsigned long room) {
    int narrowLength = static_cast<int>(len);
    const int result = ConvertUTF16ToUTF8(src, narrowLength, dst, static_cast<unsigned int>(room));
    if (result >= 0) {
        len = static_cast<unsigned long>(narrowLength);
    }
    return result;
}

int VELSysUCAlgorithm::IsUTF8(const char*& p, unsigned long n) {
    if (n == 0) {
        return 0;
    }
    if (p == nullptr) {
        return -1;
    }
    const char* next = p;
    const char* const end = p + n;
    if (end - next >= KernelMinimum) {
        return ActiveKernels().isUTF8(next, end) ? 0 : -1;
    }
    unsigned int codePoint = 0;
    while (next < end) {
        if (_DecodeUTF8Strict(next, end, codePoint) != UTF8Decoded) {
            return -1;
        }
    }
    return 0;
}

int VELSysUCAlgorithm::CharUTF8Len(const char* p, unsigned long n) {
    if (p == nullptr) {
        return -1;
    }
    if (*p == 0) {
        return 0;
    }
    const char* next = p;
    unsigned int codePoint = 0;
    return _DecodeUTF8Strict(next, p + n, codePoint) == UTF8Decoded ? static_cast<int>(next - p) : -1;
}

namespace {

/// The published reference converter's idea of a character: up to six bytes, told by the first.
constexpr int LegacyTrailingBytes(unsigned char lead) {
    if (lead < 0xC0) {
        return 0;
    }
    return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF8 ? 3 : lead < 0xFC ? 4 : 5;
}

/// What the marker bits of all the bytes of a character add up to.
constexpr unsigned int LegacyOffsets[] = {0, 0x3080, 0xE2080, 0x3C82080, 0xFA082080, 0x82082080};

constexpr unsigned short LegacyReplacement = '?';

} // namespace

int VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(const char* src, unsigned long len, unsigned short* dst, int* written) {
    if (dst == nullptr || (src == nullptr && len != 0)) {
        return -1;
    }
    unsigned long position = 0;
    unsigned long stored = 0;
    int result = 0;
    while (position < len) {
        const int trailing = LegacyTrailingBytes(static_cast<unsigned char>(src[position]));
        // Equality is admitted: a character that lacks exactly its last byte takes the byte behind the range.
        if (static_cast<unsigned long>(trailing) > len - position) {
            result = -2;
            break;
        }
        unsigned int value = 0;
        for (int i = 0; i <= trailing; ++i) {
            value = (value << ContinuationBits) + static_cast<unsigned char>(src[position++]);
        }
        value -= LegacyOffsets[trailing];
        if (stored == len) {
            result = -3;
            break;
        }
        dst[stored++] = value > BasicPlaneLast ? LegacyReplacement : static_cast<unsigned short>(value);
    }
    if (written != nullptr) {
        *written = static_cast<int>(stored);
    }
    return result;
}
