/// @file
/// Decoders and encoders of single code points: the plain definition of what the Unicode conversions do.
///
/// There are three UTF-8 decoders and two UTF-16 decoders, and their difference in strictness is relied upon: text that
/// one of them refuses is given a meaning by another. The vector kernels produce what these produce, only faster, and
/// step aside for them wherever a text is damaged.
///
/// Every function is inline and needs nothing but its arguments.
#pragma once

namespace VEL::UCS::internal {

inline constexpr unsigned int HighSurrogateFirst = 0xD800;
inline constexpr unsigned int LowSurrogateFirst = 0xDC00;
inline constexpr unsigned int SurrogateLast = 0xDFFF;
inline constexpr unsigned int BasicPlaneLast = 0xFFFF;
inline constexpr unsigned int CodePointLast = 0x10FFFF;

/// Bits of a code point that the low surrogate carries.
inline constexpr unsigned int SurrogateBits = 10;
inline constexpr unsigned int LowSurrogateMask = (1U << SurrogateBits) - 1;

/// What `(high << 10) + low` exceeds the code point of the pair by.
inline constexpr unsigned int SurrogatePairOffset = (HighSurrogateFirst << SurrogateBits) + LowSurrogateFirst - 0x10000;

/// What `codePoint >> 10` falls short of the high surrogate by.
inline constexpr unsigned int HighSurrogateOffset = HighSurrogateFirst - (0x10000 >> SurrogateBits);

inline constexpr unsigned int UTF8TwoByteFirst = 0x80;
inline constexpr unsigned int UTF8ThreeByteFirst = 0x800;
inline constexpr unsigned int UTF8FourByteFirst = 0x10000;

/// Payload of a continuation byte.
inline constexpr unsigned int ContinuationBits = 6;
inline constexpr unsigned int ContinuationMask = (1U << ContinuationBits) - 1;

/// Longest character in bytes; a whole one is there while more than `UTF8MaxLength - 1` bytes remain.
inline constexpr int UTF8MaxLength = 4;

/// Outcome of decoding one UTF-8 character.
enum UTF8Result : int {
    UTF8Decoded = 0,
    UTF8EndInside = 1,           ///< The range ended inside the character, or at its start.
    UTF8InvalidFirstByte = 2,    ///< 10xxxxxx or 11111xxx.
    UTF8InvalidContinuation = 3, ///< A following byte is not 10xxxxxx.
    UTF8Overlong = 4,            ///< The value has a shorter form.
    UTF8InvalidCodePoint = 5,    ///< A surrogate, or above U+10FFFF.
};

/// Outcome of decoding one UTF-16 character strictly.
enum UTF16Result : int {
    UTF16Unpaired = 0, ///< A surrogate without its partner.
    UTF16Decoded = 1,
};

constexpr bool IsHighSurrogate(unsigned int unit) {
    return unit >= HighSurrogateFirst && unit < LowSurrogateFirst;
}

constexpr bool IsLowSurrogate(unsigned int unit) {
    return unit >= LowSurrogateFirst && unit <= SurrogateLast;
}

/// Code point of a surrogate pair; nobody asks whether `low` is a low surrogate.
constexpr unsigned int JoinSurrogates(unsigned int high, unsigned int low) {
    return (high << SurrogateBits) + low - SurrogatePairOffset;
}

constexpr bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

/// Length in bytes of the character that `lead` starts; 1 for a byte that cannot start one.
constexpr int UTF8LengthByLead(unsigned char lead) {
    if (lead < 0xC0 || lead >= 0xF8) {
        return 1;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// Value of `length` bytes: the payload of the lead and the low six bits of each byte that follows.
constexpr unsigned int UTF8Payload(const char* text, int length) {
    unsigned int value = static_cast<unsigned char>(text[0]);
    if (length > 1) {
        value &= 0x7FU >> length;
    }
    for (int i = 1; i < length; ++i) {
        value = (value << ContinuationBits) | (static_cast<unsigned char>(text[i]) & ContinuationMask);
    }
    return value;
}

/// Bytes that `_EncodeUTF8` writes.
constexpr int UTF8Length(unsigned int codePoint) {
    if (codePoint < UTF8TwoByteFirst) {
        return 1;
    }
    return codePoint < UTF8ThreeByteFirst ? 2 : codePoint < UTF8FourByteFirst ? 3 : 4;
}

/// Units that `WriteUTF16` writes.
constexpr int UTF16Length(unsigned int codePoint) {
    return codePoint > BasicPlaneLast ? 2 : 1;
}

/// Writes 1 to 4 bytes and gives the position behind them. Surrogates take their three-byte form. A value beyond
/// Unicode is not refused: its first byte is whatever `0xF0 | (codePoint >> 18)` leaves in eight bits.
constexpr char* _EncodeUTF8(unsigned int codePoint, char* out) {
    if (codePoint < UTF8TwoByteFirst) {
        *out++ = static_cast<char>(codePoint);
        return out;
    }
    if (codePoint < UTF8ThreeByteFirst) {
        *out++ = static_cast<char>(0xC0 | (codePoint >> 6));
        *out++ = static_cast<char>(0x80 | (codePoint & ContinuationMask));
        return out;
    }
    if (codePoint < UTF8FourByteFirst) {
        *out++ = static_cast<char>(0xE0 | (codePoint >> 12));
        *out++ = static_cast<char>(0x80 | ((codePoint >> 6) & ContinuationMask));
        *out++ = static_cast<char>(0x80 | (codePoint & ContinuationMask));
        return out;
    }
    *out++ = static_cast<char>(0xF0 | (codePoint >> 18));
    *out++ = static_cast<char>(0x80 | ((codePoint >> 12) & ContinuationMask));
    *out++ = static_cast<char>(0x80 | ((codePoint >> 6) & ContinuationMask));
    *out++ = static_cast<char>(0x80 | (codePoint & ContinuationMask));
    return out;
}

/// Writes 1 or 2 units and gives the position behind them. There is no upper bound: surrogates of a value beyond
/// Unicode are cut to 16 bits.
constexpr unsigned short* WriteUTF16(unsigned int codePoint, unsigned short* out) {
    if (codePoint <= BasicPlaneLast) {
        *out++ = static_cast<unsigned short>(codePoint);
        return out;
    }
    *out++ = static_cast<unsigned short>((codePoint >> SurrogateBits) + HighSurrogateOffset);
    *out++ = static_cast<unsigned short>((codePoint & LowSurrogateMask) + LowSurrogateFirst);
    return out;
}

/// Decodes by the first byte alone and looks at no limit: up to four bytes are read. The upper bits of the bytes that
/// follow are dropped unseen, and a byte that cannot lead stands for itself.
constexpr unsigned int _DecodeUTF8Fast(const char*& p) {
    const int length = UTF8LengthByLead(static_cast<unsigned char>(*p));
    const unsigned int codePoint = UTF8Payload(p, length);
    p += length;
    return codePoint;
}

/// Decodes within `[p, end)` and looks at the form of the bytes only: overlong forms, surrogates and values beyond
/// Unicode pass. `p` moves on success alone.
constexpr UTF8Result _DecodeUTF8Tail(const char*& p, const char* end, unsigned int& codePoint) {
    if (p >= end) {
        return UTF8EndInside;
    }
    const auto lead = static_cast<unsigned char>(*p);
    if (IsContinuation(lead) || lead >= 0xF8) {
        return UTF8InvalidFirstByte;
    }
    const int length = UTF8LengthByLead(lead);
    for (int i = 1; i < length; ++i) {
        if (end - p <= i) {
            return UTF8EndInside;
        }
        if (!IsContinuation(static_cast<unsigned char>(p[i]))) {
            return UTF8InvalidContinuation;
        }
    }
    codePoint = UTF8Payload(p, length);
    p += length;
    return UTF8Decoded;
}

/// Decodes within `[p, end)` what RFC 3629 admits. `p` and `codePoint` change on success alone. A value that is both
/// overlong and no code point counts as no code point.
constexpr UTF8Result _DecodeUTF8Strict(const char*& p, const char* end, unsigned int& codePoint) {
    const char* next = p;
    unsigned int value = 0;
    const UTF8Result form = _DecodeUTF8Tail(next, end, value);
    if (form != UTF8Decoded) {
        return form;
    }
    if (value > CodePointLast || (value >= HighSurrogateFirst && value <= SurrogateLast)) {
        return UTF8InvalidCodePoint;
    }
    if (next - p != UTF8Length(value)) {
        return UTF8Overlong;
    }
    codePoint = value;
    p = next;
    return UTF8Decoded;
}

/// Takes one character of `[p, end)` and tells whether it was sound. A high surrogate that is not followed by a low
/// one gives the unit behind it: both are consumed, the high surrogate is lost.
constexpr UTF16Result _DecodeUTF16Strict(const unsigned short*& p, const unsigned short* end, unsigned int& codePoint) {
    if (p >= end) {
        codePoint = 0;
        return UTF16Unpaired;
    }
    codePoint = *p++;
    if (!IsHighSurrogate(codePoint)) {
        return IsLowSurrogate(codePoint) ? UTF16Unpaired : UTF16Decoded;
    }
    if (p == end) {
        return UTF16Unpaired;
    }
    const unsigned int second = *p++;
    if (!IsLowSurrogate(second)) {
        codePoint = second;
        return UTF16Unpaired;
    }
    codePoint = JoinSurrogates(codePoint, second);
    return UTF16Decoded;
}

/// Takes one character of `[p, end)`; 0 at its end. A high surrogate that is not the last unit is joined with the next
/// one, whatever that is.
constexpr unsigned int _DecodeUTF16Fast(const unsigned short*& p, const unsigned short* end) {
    if (p >= end) {
        return 0;
    }
    const unsigned int unit = *p++;
    if (!IsHighSurrogate(unit) || p == end) {
        return unit;
    }
    return JoinSurrogates(unit, *p++);
}

} // namespace VEL::UCS::internal
