/// @file
/// The Unicode conversions and hashes in their plain form, one character after the other: what the fast ones are
/// compared with. Each follows its definition to the letter and is built on the decoders, which have tests of their
/// own.
#pragma once

#include "VELSysUCDecoder.h"

#include <string>
#include <vector>

namespace PlainUnicode {

namespace internal = VEL::UCS::internal;

using Units = std::vector<unsigned short>;
using CodePoints = std::vector<unsigned int>;

inline unsigned short* Write(unsigned int codePoint, unsigned short* out) {
    return internal::WriteUTF16(codePoint, out);
}

inline char* Write(unsigned int codePoint, char* out) {
    return internal::_EncodeUTF8(codePoint, out);
}

inline unsigned int* Write(unsigned int codePoint, unsigned int* out) {
    *out = codePoint;
    return out + 1;
}

/// Unchecked conversion of UTF-8: by lead bytes up to three bytes before the end, carefully from there on.
template <class Target>
Target* FromUTF8(const char* first, const char* last, Target* out) {
    if (last - first > 3) {
        while (first < last - 3) {
            out = Write(internal::_DecodeUTF8Fast(first), out);
        }
    }
    while (first != last) {
        unsigned int codePoint = 0;
        if (internal::_DecodeUTF8Tail(first, last, codePoint) != 0) {
            ++first;
            continue;
        }
        out = Write(codePoint, out);
    }
    return out;
}

/// Unchecked conversion of UTF-16: high surrogates are joined with what follows, up to the last unit.
template <class Target>
Target* FromUTF16(const unsigned short* first, const unsigned short* last, Target* out) {
    if (last - first > 1) {
        while (first < last - 1) {
            const unsigned int unit = *first++;
            out = Write(unit >= 0xD800 && unit <= 0xDBFF ? (unit << 10) + *first++ - 0x35FDC00 : unit, out);
        }
    }
    while (first != last) {
        unsigned int codePoint = 0;
        internal::_DecodeUTF16Strict(first, last, codePoint);
        out = Write(codePoint, out);
    }
    return out;
}

template <class Target>
Target* FromUTF32(const unsigned int* first, const unsigned int* last, Target* out) {
    for (; first != last; ++first) {
        out = Write(*first, out);
    }
    return out;
}

inline Units ToUnits(const std::string& text) {
    Units units(text.size() + 1);
    units.resize(
        static_cast<std::size_t>(FromUTF8(text.data(), text.data() + text.size(), units.data()) - units.data()));
    return units;
}

inline std::string Encode(unsigned int codePoint) {
    char bytes[4];
    return {bytes, internal::_EncodeUTF8(codePoint, bytes)};
}

/// What a resumable conversion leaves behind.
template <class Source>
struct Resumed {
    const Source* source;
    int length;
    int result;

    bool operator==(const Resumed&) const = default;
};

/// Resumable conversion into a target of any size, or to none while measuring.
inline Resumed<char> ResumeUTF8(const char* source, int length, unsigned short* target, unsigned int room) {
    if (source == nullptr || length < 0) {
        return {source, length, -1};
    }
    int total = 0;
    while (length > 0) {
        const char* next = source;
        unsigned int codePoint = 0;
        if (length > 3) {
            codePoint = internal::_DecodeUTF8Fast(next);
        } else if (internal::_DecodeUTF8Tail(next, source + length, codePoint) != 0) {
            codePoint = 0;
            next = source + 1;
        }
        unsigned short small[2];
        const auto size = static_cast<unsigned int>(Write(codePoint, small) - small);
        const unsigned int free = room - static_cast<unsigned int>(total);
        const bool isScarce = target != nullptr && free < 2;
        if (isScarce && size > free) {
            break;
        }
        for (unsigned int i = 0; target != nullptr && i < size; ++i) {
            target[static_cast<unsigned int>(total) + i] = small[i];
        }
        length -= static_cast<int>(next - source);
        source = next;
        total += static_cast<int>(size);
        if (isScarce) {
            break;
        }
    }
    return {length == 0 ? nullptr : source, length, total};
}

inline Resumed<unsigned short> ResumeUTF16(const unsigned short* source, int length, char* target, unsigned int room) {
    if (source == nullptr || length < 0) {
        return {source, length, -1};
    }
    int total = 0;
    bool isFirst = true;
    while (length > 0) {
        const unsigned short* next = source;
        char small[4];
        const char* end = Write(internal::_DecodeUTF16Fast(next, source + length), small);
        const auto size = static_cast<unsigned int>(end - small);
        const bool isScarce = target != nullptr && !isFirst && static_cast<unsigned int>(total) > room - 4;
        if (isScarce && size > room - static_cast<unsigned int>(total)) {
            break;
        }
        for (unsigned int i = 0; target != nullptr && i < size; ++i) {
            target[static_cast<unsigned int>(total) + i] = small[i];
        }
        isFirst = false;
        length -= static_cast<int>(next - source);
        source = next;
        total += static_cast<int>(size);
        if (isScarce) {
            break;
        }
    }
    return {length == 0 ? nullptr : source, length, total};
}

inline bool IsUTF8(const char* first, const char* last) {
    unsigned int codePoint = 0;
    while (first < last) {
        if (internal::_DecodeUTF8Strict(first, last, codePoint) != 0) {
            return false;
        }
    }
    return true;
}

inline unsigned int HashUnits(const unsigned short* text, unsigned long n, unsigned int seed) {
    unsigned int hash = seed;
    for (unsigned long i = 0; i < n; ++i) {
        hash = hash * 37 + text[i];
    }
    return hash;
}

/// The hash of a text of `n` bytes; a character that it cuts off takes bytes from behind it up to the terminator.
inline unsigned int HashUTF8(const char* text, unsigned long n, unsigned int seed) {
    std::string padded(text, n);
    for (const char* behind = text + n; padded.size() < n + 3 && *behind != 0; ++behind) {
        padded += *behind;
    }
    padded.append(4, '\0');
    unsigned int hash = seed;
    for (const char* p = padded.data(); p < padded.data() + n;) {
        unsigned short units[2];
        const unsigned short* end = Write(internal::_DecodeUTF8Fast(p), units);
        hash = HashUnits(units, static_cast<unsigned long>(end - units), hash);
    }
    return hash;
}

} // namespace PlainUnicode
