#include "StringText.h"

#include "EnvironmentConverter.h"
#include "VELStringHandle.h"
#include "VELSysUCAlgorithm.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <cwchar>

namespace VEL::internal {
namespace {

constexpr unsigned int FirstSupplementary = 0x10000;
/// What is taken off `(high << 10) + low` to give the code point of a surrogate pair.
constexpr unsigned int SurrogateOffset = (0xD800u << 10) + 0xDC00u - FirstSupplementary;

/// Sizes are suggested in whole granules of this many bytes.
constexpr unsigned long Granule = 8;

Block ResetBlock(Block block) {
    QORInterUnicodeString::_Release(block);
    return QORInterUnicodeString::Empty();
}

unsigned long RoundUp(unsigned long size) {
    return (size + Granule - 1) / Granule * Granule;
}

/// Calls `take` with each code point as the unchecked conversions see it: a high surrogate is joined with whatever
/// unit follows.
template <class Take>
void ForEachCodePoint(const unsigned short* text, int length, const Take& take) {
    for (int i = 0; i < length; ++i) {
        const unsigned int unit = text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < length) {
            take((unit << 10) + text[++i] - SurrogateOffset);
        } else {
            take(unit);
        }
    }
}

unsigned long UTF8LengthOf(const unsigned short* text, int length) {
    unsigned long bytes = 0;
    ForEachCodePoint(text, length, [&](unsigned int codePoint) {
        bytes += codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < FirstSupplementary ? 3 : 4;
    });
    return bytes;
}

} // namespace

Block BlockFromUTF8(Block block, const char* s, unsigned long n) {
    // A length that no block can have counts as no memory.
    if (s == nullptr || n == 0 || n > INT_MAX) {
        return ResetBlock(block);
    }
    const int length = static_cast<int>(n);
    if (EnvironmentConverter().IsUTF8()) {
        return QORInterUnicodeString::_SetBytes(block, s, length);
    }
    const Block fresh = QORInterUnicodeString::_NewWide(length);
    if (!fresh->IsTheEmptyBlock()) {
        const unsigned short* end = VELSysUCAlgorithm::unchecked::utf8to16(s, s + length, fresh->Wide());
        fresh->SetLength(static_cast<int>(end - fresh->Wide()));
    }
    // Last, since the bytes may be the old block's own.
    QORInterUnicodeString::_Release(block);
    return fresh;
}

Block BlockFromWChar(Block block, const wchar_t* s, unsigned long n) {
    constexpr auto UpToTerminator = static_cast<unsigned long>(-1);
    if (s == nullptr) {
        return ResetBlock(block);
    }
    if (n == UpToTerminator) {
        n = std::wcslen(s);
    }
    // A length that no block can have counts as no memory.
    if (n > INT_MAX) {
        return ResetBlock(block);
    }
    const auto* first = reinterpret_cast<const unsigned int*>(s);
    unsigned long units = n;
    for (unsigned long i = 0; i < n; ++i) {
        units += static_cast<unsigned int>(s[i]) >= FirstSupplementary ? 1 : 0;
    }
    if (units > INT_MAX) {
        return ResetBlock(block);
    }
    const Block fresh = QORInterUnicodeString::_NewWide(static_cast<int>(units));
    if (!fresh->IsTheEmptyBlock()) {
        VELSysUCAlgorithm::unchecked::utf32to16(first, first + n, fresh->Wide());
    }
    QORInterUnicodeString::_Release(block);
    return fresh;
}

int CountUnits(const unsigned short* s) {
    if (s == nullptr) {
        return 0;
    }
    const unsigned short* end = s;
    while (*end != 0) {
        ++end;
    }
    return end - s > INT_MAX ? 0 : static_cast<int>(end - s);
}

const char* ReadyUTF8(Block block, unsigned long& length) {
    if (!EnvironmentConverter().IsUTF8()) {
        return nullptr;
    }
    if (!block->IsWide()) {
        length = static_cast<unsigned long>(block->_length);
        return block->Text();
    }
    if (const QORInterUnicodeString::View view = block->SecondView()) {
        length = static_cast<unsigned long>(view->_length);
        return view->Narrow();
    }
    return nullptr;
}

const char* NarrowText(Block block) {
    const char* text = block != nullptr ? block->_GetMBCSText() : nullptr;
    return text != nullptr ? text : EmptyHandle();
}

const unsigned short* WideText(Block block) {
    if (block == nullptr) {
        return nullptr;
    }
    const unsigned short* text = block->_GetUTF16Text();
    return text != nullptr ? text : EmptyText;
}

int NarrowLength(Block block) {
    return block != nullptr ? block->_GetMBCSLength() : 0;
}

int WideLength(Block block) {
    return block != nullptr ? block->_GetUTF16Length() : 0;
}

unsigned int HashOf(Block block) {
    return block != nullptr ? block->_GetHash() : 0;
}

int CopyAsUTF8(Block block, char* out, unsigned long* n) {
    unsigned long length = 0;
    if (block != nullptr) {
        const char* ready = ReadyUTF8(block, length);
        const UTF16Range source = ready == nullptr ? UTF16Of(block) : UTF16Range{};
        if (out != nullptr && ready != nullptr) {
            std::memcpy(out, ready, length);
        } else if (out != nullptr) {
            length = static_cast<unsigned long>(
                VELSysUCAlgorithm::unchecked::utf16to8(source.text, source.text + source.length, out) - out);
        } else if (ready == nullptr) {
            length = UTF8LengthOf(source.text, source.length);
        }
    }
    if (out == nullptr && length > 0) {
        length = std::max(RoundUp(length) - 1, length);
    }
    if (n != nullptr) {
        *n = length;
    }
    return 0;
}

int CopyAsUTF16(Block block, unsigned short* out, unsigned long* n) {
    const UTF16Range source = UTF16Of(block);
    auto length = static_cast<unsigned long>(source.length);
    if (out != nullptr && length > 0) {
        std::memcpy(out, source.text, length * sizeof(unsigned short));
    } else if (length > 0) {
        length = std::max(RoundUp(length * sizeof(unsigned short)) / sizeof(unsigned short) - 1, length);
    }
    if (n != nullptr) {
        *n = length;
    }
    return 0;
}

int CopyAsWChar(Block block, wchar_t* out) {
    const auto [text, units] = UTF16Of(block);
    if (out != nullptr) {
        auto* first = reinterpret_cast<unsigned int*>(out);
        unsigned int* end = VELSysUCAlgorithm::unchecked::utf16to32(text, text + units, first);
        *end = 0;
        return static_cast<int>(end - first);
    }
    unsigned long codePoints = 0;
    ForEachCodePoint(text, units, [&](unsigned int) { ++codePoints; });
    const unsigned long bytes = (codePoints + 1) * sizeof(wchar_t) + Granule - 1;
    return static_cast<int>(bytes / sizeof(wchar_t) & ~1ul);
}

} // namespace VEL::internal
