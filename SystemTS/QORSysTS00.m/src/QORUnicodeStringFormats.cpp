// Forms in which QORUnicodeString exchanges text with others: exchange files, counted wide text, streams.

#include "QORUnicodeString.h"
#include "StringAccess.h"
#include "StringStream.h"
#include "StringText.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace VEL::internal;

namespace {

constexpr char Quote = '"';
constexpr const char* TwoByteMark = "\\X2\\";
constexpr const char* FourByteMark = "\\X4\\";
constexpr std::size_t MarkLength = 4;
constexpr unsigned int LastUnit = 0xFFFF;
constexpr unsigned int LastByte = 0xFF;

Block BlockOf(const QORUnicodeString& s) {
    return StringAccess::BlockOf(s);
}

void Replace(QORUnicodeString& s, Block block) {
    StringAccess::Reset(s);
    StringAccess::SetBlock(s, block);
}

int BuildFromQuoted(QORUnicodeString& s, const char* text, std::size_t length) {
    const Block block =
        length > INT_MAX ? QORInterUnicodeString::Empty() : QORInterUnicodeString::_NewWide(static_cast<int>(length));
    if (!block->IsTheEmptyBlock()) {
        for (std::size_t i = 0; i < length; ++i) {
            // Deliberate: bytes of 0x80 and above are sign-extended.
            block->Wide()[i] = static_cast<unsigned short>(static_cast<signed char>(text[i]));
        }
    }
    Replace(s, block);
    return 0;
}

void ReportDataLoss(const char* text, unsigned int value) {
    std::fputs("Message from  QORUnicodeString::BuildFromSTEP\n", stderr);
    std::fputs("Conversion from a 4 bytes Unicode character to a 2 bytes unicode character\n", stderr);
    std::fputs("with data loss\n", stderr);
    std::fprintf(stderr, "Express String : %s\n", text);
    std::fprintf(stderr, "Unicode value  : %x", value);
}

/// Reads one group of digits as `sscanf` does, which also takes white space, a sign and "0x" in front.
template <std::size_t Digits>
bool ReadGroup(const char* digits, unsigned int& value) {
    char group[Digits + 1] = {};
    std::memcpy(group, digits, Digits);
    return std::sscanf(group, "%x", &value) == 1;
}

/// @param text  The whole literal, with its mark.
template <std::size_t Digits>
int BuildFromDigits(QORUnicodeString& s, const char* text) {
    const char* digits = text + MarkLength;
    const std::size_t groups = std::strlen(digits) / Digits;
    if (groups == 0 || groups > INT_MAX) {
        return -1;
    }
    const Block block = QORInterUnicodeString::_NewWide(static_cast<int>(groups));
    int result = 0;
    if (!block->IsTheEmptyBlock()) {
        for (std::size_t i = 0; i < groups; ++i, digits += Digits) {
            unsigned int value = 0;
            if (!ReadGroup<Digits>(digits, value)) {
                block->SetLength(0);
                result = -1;
                break;
            }
            if (Digits > 4 && value > LastUnit) {
                ReportDataLoss(text, value);
            }
            block->Wide()[i] = static_cast<unsigned short>(value);
        }
    }
    Replace(s, block);
    return result;
}

} // namespace

int QORUnicodeString::BuildFromBSTR(wchar_t* const& s) {
    if (s == nullptr) {
        Reset();
        return -1;
    }
    if (_text == nullptr) {
        return -1;
    }
    std::uint32_t byteCount;
    std::memcpy(&byteCount, reinterpret_cast<const char*>(s) - sizeof byteCount, sizeof byteCount);
    const int count = static_cast<int>(byteCount / sizeof(wchar_t));
    const Block block = QORInterUnicodeString::_NewWide(count);
    if (!block->IsTheEmptyBlock()) {
        for (int i = 0; i < count; ++i) {
            block->Wide()[i] = static_cast<unsigned short>(s[i]);
        }
    }
    Replace(*this, block);
    return block->IsTheEmptyBlock() && count > 0 ? -1 : 0;
}

int QORUnicodeString::ConvertToBSTR(wchar_t** out) const {
    if (out == nullptr) {
        return 0;
    }
    const UTF16Range text = UTF16Of(BlockOf(*this));
    const std::size_t byteCount = static_cast<std::size_t>(text.length) * sizeof(wchar_t);
    auto* const memory = static_cast<char*>(std::malloc(byteCount + 2 * sizeof(std::uint32_t)));
    if (memory == nullptr) {
        *out = nullptr;
        return 0;
    }
    const auto stored = static_cast<std::uint32_t>(byteCount);
    std::memcpy(memory, &stored, sizeof stored);
    auto* const elements = reinterpret_cast<wchar_t*>(memory + sizeof stored);
    for (int i = 0; i < text.length; ++i) {
        elements[i] = text.text[i];
    }
    elements[text.length] = 0;
    *out = elements;
    return 0;
}

int QORUnicodeString::BuildFromSTEP(const char* s) {
    if (s == nullptr) {
        Reset();
        return -1;
    }
    const std::size_t length = std::strlen(s);
    if (length >= 2 && s[0] == Quote && s[length - 1] == Quote) {
        return BuildFromQuoted(*this, s + 1, length - 2);
    }
    if (std::strncmp(s, TwoByteMark, MarkLength) == 0) {
        return BuildFromDigits<4>(*this, s);
    }
    if (std::strncmp(s, FourByteMark, MarkLength) == 0) {
        return BuildFromDigits<8>(*this, s);
    }
    return -1;
}

int QORUnicodeString::ConvertToSTEP(char* out) const {
    const Block block = BlockOf(*this);
    if (block == nullptr || out == nullptr) {
        return 0;
    }
    const UTF16Range text = UTF16Of(block);
    bool isPlain = true;
    for (int i = 0; i < text.length; ++i) {
        isPlain = isPlain && text.text[i] <= LastByte;
    }
    if (isPlain) {
        *out++ = Quote;
        for (int i = 0; i < text.length; ++i) {
            *out++ = static_cast<char>(text.text[i]);
        }
        *out++ = Quote;
        *out = 0;
        return 0;
    }
    constexpr char Digits[] = "0123456789ABCDEF";
    std::memcpy(out, TwoByteMark, MarkLength);
    out += MarkLength;
    for (int i = 0; i < text.length; ++i) {
        for (int shift = 12; shift >= 0; shift -= 4) {
            *out++ = Digits[(text.text[i] >> shift) & 0xF];
        }
    }
    *out = 0;
    return 0;
}

std::istream& QORUnicodeString::BuildFromStream(std::istream& in, int skipWhite) {
    const StreamWithoutExceptions guard(in);
    Reset();
    if (skipWhite != 0 && !SkipWhite(in)) {
        return in;
    }
    ReadLineInPieces(in, [this](const char* piece) { Append(QORUnicodeString(piece)); });
    return in;
}
