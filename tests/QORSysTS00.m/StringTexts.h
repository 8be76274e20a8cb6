/// @file
/// Texts beside strings: in UTF-16 as a plain text, in the environment's code page, in a block of either kind, and back
/// without a look at the library's own conversions.
#pragma once

#include "PlainUnicode.h"
#include "QORUnicodeChar.h"
#include "StringBlocks.h"
#include "VELString.h"
#include "VELSysCodePage.h"

#include <string>

namespace StringTexts {

using namespace StringBlocks;

inline bool IsUTF8Environment() {
    return VELSysCodePage::GetEnvConverter().IsUTF8();
}

/// UTF-8 of sound UTF-16; an unpaired surrogate takes its three-byte form.
inline std::string UTF8Of(const std::u16string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned int codePoint = text[i];
        if (codePoint >= 0xD800 && codePoint <= 0xDBFF && i + 1 < text.size()) {
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (text[++i] - 0xDC00u);
        }
        bytes += PlainUnicode::Encode(codePoint);
    }
    return bytes;
}

/// The text in the environment's code page.
inline std::string NarrowForm(const std::u16string& text) {
    return IsUTF8Environment() ? UTF8Of(text) : std::string(text.begin(), text.end());
}

/// True when narrow text in this environment can hold the text.
inline bool FitsNarrow(const std::u16string& text) {
    return IsUTF8Environment() || std::ranges::all_of(text, [](char16_t unit) { return unit <= 0xFF; });
}

/// What a block holds, read without its view.
inline std::u16string TextOf(const QORInterUnicodeString* block) {
    if (block->IsWide()) {
        return StringBlocks::Wide(block);
    }
    const std::string bytes = StringBlocks::Narrow(block);
    if (IsUTF8Environment()) {
        // The way of a view: a damaged byte at the end is a zero unit.
        PlainUnicode::Units units(bytes.size() + 2);
        const int length = PlainUnicode::ResumeUTF8(bytes.data(), static_cast<int>(bytes.size()), units.data(),
                                                    static_cast<unsigned int>(bytes.size()) + 1)
                               .result;
        return {units.begin(), units.begin() + length};
    }
    std::u16string text;
    for (const char byte : bytes) {
        text += static_cast<unsigned char>(byte);
    }
    return text;
}

/// What a string holds, read without its view; nothing for a null handle.
inline std::u16string TextOf(const QORUnicodeString& s) {
    const Block block = StringAccess::BlockOf(s);
    return block != nullptr ? TextOf(block) : std::u16string();
}

inline QORUnicodeString NarrowString(const std::u16string& text) {
    return text.empty() ? QORUnicodeString() : StringOn<QORUnicodeString>(NewNarrow(NarrowForm(text)));
}

inline QORUnicodeString BytesString(const std::string& bytes) {
    return StringOn<QORUnicodeString>(NewNarrow(bytes));
}

inline QORUnicodeString WideString(const std::u16string& text) {
    return StringOn<QORUnicodeString>(NewWide(text));
}

inline QORUnicodeString StringOf(const std::u16string& text, bool isWide) {
    return isWide ? WideString(text) : NarrowString(text);
}

inline QORUnicodeChar Character(unsigned int code) {
    QORUnicodeChar c;
    c.BuildFromUCChar32(code);
    return c;
}

/// The units of a code point, surrogates and values beyond Unicode as they are cut.
inline std::u16string UnitsOf(unsigned int code) {
    if (code <= 0xFFFF) {
        return {static_cast<char16_t>(code)};
    }
    return {static_cast<char16_t>((code >> 10) + 0xD7C0), static_cast<char16_t>((code & 0x3FF) + 0xDC00)};
}

} // namespace StringTexts
