#include "EnvironmentConverter.h"
#include "StringEdit.h"
#include "TextScan.h"
#include "VELSysUCAlgorithm.h"
#include "VELSysUCDecoder.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <memory>

namespace VEL::internal {
namespace {

using UCS::internal::UTF16Length;

constexpr unsigned int FirstNonASCII = 0x80;
constexpr unsigned int CaseBit = 0x20;

template <class Unit>
std::ptrdiff_t FindInOtherCase(const Unit* text, std::ptrdiff_t length, LetterCase to) {
    return to == LetterCase::Lower ? FindNotLowerCase(text, length) : FindNotUpperCase(text, length);
}

template <class Unit>
std::ptrdiff_t ChangeASCII(Unit* text, std::ptrdiff_t length, LetterCase to) {
    return to == LetterCase::Lower ? LowerASCII(text, length) : UpperASCII(text, length);
}

/// A character at some place of a text, and what it becomes.
template <class Unit>
struct MappedCharacter {
    int consumed;    ///< Units that the character takes; at least 1.
    bool isChanged;  ///< False for a character that stays as it is.
    int length;      ///< Units of what it becomes.
    Unit mapped[16]; ///< These units.
};

/// UTF-16 has room only for a mapping of as many units.
void MapAt(const unsigned short* text, std::ptrdiff_t left, LetterCase to, MappedCharacter<unsigned short>& character) {
    const unsigned short* next = text;
    const unsigned int code = UCS::internal::_DecodeUTF16Fast(next, text + left);
    const unsigned int mapped = MapCase(code, to);
    character.consumed = static_cast<int>(next - text);
    character.isChanged = mapped != code && UTF16Length(mapped) == character.consumed;
    if (character.isChanged) {
        character.length = static_cast<int>(UCS::internal::WriteUTF16(mapped, character.mapped) - character.mapped);
    }
}

/// Narrow text goes through its code page, there and back. A byte that can't be decoded stays.
void MapAt(const char* text, std::ptrdiff_t left, LetterCase to, MappedCharacter<char>& character) {
    const VELSysCodePage& converter = EnvironmentConverter();
    const char* next = text;
    auto bytesLeft = static_cast<unsigned long>(left);
    unsigned int code = 0;
    if (static_cast<unsigned char>(*text) < FirstNonASCII) {
        code = static_cast<unsigned char>(*text);
        ++next;
    } else if (converter.GetNextMultiByteCharAsUTF32(code, next, bytesLeft) < 1) {
        code = 0;
    }
    const unsigned int mapped = MapCase(code, to);
    character.consumed = next > text ? static_cast<int>(next - text) : 1;
    character.isChanged = mapped != code;
    if (!character.isChanged) {
        return;
    }
    if (converter.IsUTF8()) {
        character.length = static_cast<int>(UCS::internal::_EncodeUTF8(mapped, character.mapped) - character.mapped);
        return;
    }
    unsigned short units[2];
    const int count = static_cast<int>(UCS::internal::WriteUTF16(mapped, units) - units);
    character.length = converter.ConvertUTF16ToMBCS(units, count, character.mapped, nullptr);
}

/// The first character from `from` on that changes; the length when there is none.
template <class Unit>
std::ptrdiff_t FindChange(const Unit* text, std::ptrdiff_t length, std::ptrdiff_t from, LetterCase to,
                          MappedCharacter<Unit>& character) {
    for (;;) {
        from += FindInOtherCase(text + from, length - from, to);
        if (from >= length) {
            return length;
        }
        MapAt(text + from, length - from, to, character);
        if (character.isChanged) {
            return from;
        }
        from += character.consumed;
    }
}

/// Changes a text in place as long as characters keep their length. @return Units done.
template <class Unit>
std::ptrdiff_t ChangeInPlace(Unit* text, std::ptrdiff_t length, std::ptrdiff_t from, LetterCase to) {
    MappedCharacter<Unit> character;
    for (;;) {
        from += ChangeASCII(text + from, length - from, to);
        if (from >= length) {
            return length;
        }
        MapAt(text + from, length - from, to, character);
        if (character.isChanged) {
            if (character.length != character.consumed) {
                return from;
            }
            std::memcpy(text + from, character.mapped, static_cast<std::size_t>(character.length) * sizeof(Unit));
        }
        from += character.consumed;
    }
}

/// The bytes of a text from a character on that changes its length. With a null `out` they are only counted.
std::ptrdiff_t WriteChanged(const char* text, std::ptrdiff_t length, LetterCase to, char* out) {
    std::ptrdiff_t written = 0;
    MappedCharacter<char> character;
    for (std::ptrdiff_t from = 0; from < length;) {
        const std::ptrdiff_t change = FindChange(text, length, from, to, character);
        const std::ptrdiff_t kept = change - from;
        const int added = change < length ? character.length : 0;
        if (out != nullptr) {
            std::memcpy(out + written, text + from, static_cast<std::size_t>(kept));
            std::memcpy(out + written + kept, character.mapped, static_cast<std::size_t>(added));
        }
        written += kept + added;
        from = change < length ? change + character.consumed : length;
    }
    return written;
}

/// Ends a narrow text whose first `done` bytes are changed and whose next character changes its length.
Block EndNarrow(Block block, std::ptrdiff_t done, LetterCase to) {
    const char* const rest = block->Text() + done;
    const std::ptrdiff_t restLength = block->_length - done;
    const std::ptrdiff_t newRest = WriteChanged(rest, restLength, to, nullptr);
    if (newRest > INT_MAX - done) {
        QORInterUnicodeString::_Release(block);
        return QORInterUnicodeString::Empty();
    }
    const int length = static_cast<int>(done + newRest);
    if (block->_capacity <= length) {
        const Block fresh = QORInterUnicodeString::_NewNarrow(length);
        if (!fresh->IsTheEmptyBlock()) {
            std::memcpy(fresh->Text(), block->Text(), static_cast<std::size_t>(done));
            WriteChanged(rest, restLength, to, fresh->Text() + done);
        }
        QORInterUnicodeString::_Release(block);
        return fresh;
    }
    // The block stays. What becomes longer would run over what is still to be read, so it is written aside.
    const std::unique_ptr<char, decltype(&std::free)> aside(
        static_cast<char*>(std::malloc(static_cast<std::size_t>(newRest) + 1)), std::free);
    if (aside == nullptr) {
        QORInterUnicodeString::_Release(block);
        return QORInterUnicodeString::Empty();
    }
    WriteChanged(rest, restLength, to, aside.get());
    std::memcpy(block->Text() + done, aside.get(), static_cast<std::size_t>(newRest));
    block->SetLength(length);
    return block;
}

Block ChangeWide(Block block, LetterCase to) {
    MappedCharacter<unsigned short> character;
    const std::ptrdiff_t first = FindChange(block->Wide(), block->_length, 0, to, character);
    if (first == block->_length) {
        return block;
    }
    block = QORInterUnicodeString::_EnsureWide(block, block->_length, true, false);
    if (!block->IsTheEmptyBlock()) {
        ChangeInPlace(block->Wide(), block->_length, first, to);
        block->_MarkChanged();
    }
    return block;
}

Block ChangeNarrow(Block block, LetterCase to) {
    MappedCharacter<char> character;
    const std::ptrdiff_t first = FindChange(block->Text(), block->_length, 0, to, character);
    if (first == block->_length) {
        return block;
    }
    block = QORInterUnicodeString::_EnsureNarrow(block, block->_length, true, false);
    if (block->IsTheEmptyBlock()) {
        return block;
    }
    const std::ptrdiff_t done = ChangeInPlace(block->Text(), block->_length, first, to);
    if (done < block->_length) {
        block = EndNarrow(block, done, to);
    }
    block->_MarkChanged();
    return block;
}

} // namespace

unsigned int MapCase(unsigned int code, LetterCase to) {
    if (code < FirstNonASCII) {
        const unsigned int letter = to == LetterCase::Lower ? 'A' : 'a';
        return code - letter < 26 ? code ^ CaseBit : code;
    }
    return to == LetterCase::Lower ? std::towlower(code) : std::towupper(code);
}

Block ChangeCase(Block block, LetterCase to) {
    if (block->IsTheEmptyBlock()) {
        return block;
    }
    return block->IsWide() ? ChangeWide(block, to) : ChangeNarrow(block, to);
}

} // namespace VEL::internal
