#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORUnicodeChar.h"

#include "EnvironmentConverter.h"
#include "StringEdit.h"
#include "VELSysUCAlgorithm.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <cwctype>

using VEL::internal::EnvironmentConverter;
using VEL::internal::LetterCase;
using VEL::internal::MapCase;

namespace {

constexpr unsigned char FirstNonASCII = 0x80;
constexpr auto UpToLongestCharacter = static_cast<unsigned long>(-1);

/// A code point and the bytes that it was read from; code 0 when there is none.
struct FirstCharacter {
    unsigned int code;
    unsigned long bytes;
};

FirstCharacter Decode(const char* s, unsigned long n) {
    const char* next = s;
    unsigned int code = 0;
    if (EnvironmentConverter().GetNextMultiByteCharAsUTF32(code, next, n) < 1) {
        code = 0;
    }
    return {code, static_cast<unsigned long>(next - s)};
}

/// Decodes with the longest character in sight. What stands behind the terminator isn't the caller's: it reads as zero,
/// and a character that needs it is none.
FirstCharacter DecodeTerminated(const char* s) {
    char sight[MB_LEN_MAX] = {};
    const VELSysCodePage& converter = EnvironmentConverter();
    const auto width = static_cast<std::size_t>(
        std::clamp(converter.GetMaxCharSize(), converter.GetLongestCharacter(), static_cast<int>(sizeof sight)));
    const std::size_t length = strnlen(s, width);
    std::memcpy(sight, s, length);
    const FirstCharacter first = Decode(sight, width);
    return first.bytes <= length + 1 ? first : FirstCharacter{0, 0};
}

} // namespace

QORUnicodeChar::QORUnicodeChar(char c) {
    _BuildFromChar(c);
}

QORUnicodeChar& QORUnicodeChar::operator=(char c) {
    _BuildFromChar(c);
    return *this;
}

QORUnicodeChar& QORUnicodeChar::operator=(const char* s) {
    BuildFromChar(s, UpToLongestCharacter);
    return *this;
}

void QORUnicodeChar::_BuildFromChar(char c) {
    static_assert(offsetof(QORUnicodeChar, _code) == 0 && offsetof(QORUnicodeChar, _mbChar) == 4);
    if (static_cast<unsigned char>(c) >= FirstNonASCII) {
        BuildFromChar(&c, 1);
        return;
    }
    _code = static_cast<unsigned char>(c);
    _StoreMbChar(&c, 1);
}

int QORUnicodeChar::_BuildQuestionMark() {
    _BuildFromChar('?');
    return 1;
}

int QORUnicodeChar::BuildFromChar(const char* s, unsigned long n) {
    if (s == nullptr || n == 0) {
        return _BuildQuestionMark();
    }
    const FirstCharacter first = n == UpToLongestCharacter ? DecodeTerminated(s) : Decode(s, n);
    if (first.code != 0) {
        _code = first.code;
        _StoreMbChar(s, first.bytes);
        return 0;
    }
    if (*s != 0) {
        return _BuildQuestionMark();
    }
    BuildFromUCChar32(0);
    return 0;
}

void QORUnicodeChar::_StoreMbChar(const char* bytes, unsigned long count) const {
    count = std::min(count, MbCharSize - 1);
    // The bytes may be this character's own.
    std::memmove(_mbChar, bytes, count);
    _mbChar[count] = 0;
}

void QORUnicodeChar::_EnsureMbChar() const {
    if (_mbChar[0] != 0) {
        return;
    }
    unsigned short units[2];
    const auto count = static_cast<int>(VELSysUCAlgorithm::unchecked::utf32to16(&_code, &_code + 1, units) - units);
    // As much as the converter asks of its callers.
    char bytes[4 * 2 + 1];
    int written = 0;
    EnvironmentConverter().ConvertUTF16ToMBCS(units, count, bytes, &written);
    _StoreMbChar(bytes, static_cast<unsigned long>(std::max(written, 0)));
}

const char* QORUnicodeChar::ConvertToChar() const {
    _EnsureMbChar();
    return _mbChar;
}

QORUnicodeChar::operator char() const {
    return *ConvertToChar();
}

bool QORUnicodeChar::IsAlpha() const {
    return std::iswalpha(_code) != 0;
}

bool QORUnicodeChar::IsAlnum() const {
    return std::iswalnum(_code) != 0;
}

bool QORUnicodeChar::IsCntrl() const {
    return std::iswcntrl(_code) != 0;
}

bool QORUnicodeChar::IsDigit() const {
    return std::iswdigit(_code) != 0;
}

bool QORUnicodeChar::IsGraph() const {
    return std::iswgraph(_code) != 0;
}

bool QORUnicodeChar::IsLower() const {
    return std::iswlower(_code) != 0;
}

bool QORUnicodeChar::IsUpper() const {
    return std::iswupper(_code) != 0;
}

bool QORUnicodeChar::IsPrint() const {
    return std::iswprint(_code) != 0;
}

bool QORUnicodeChar::IsPunct() const {
    return std::iswpunct(_code) != 0;
}

bool QORUnicodeChar::IsSpace() const {
    return std::iswspace(_code) != 0;
}

bool QORUnicodeChar::IsXDigit() const {
    return std::iswxdigit(_code) != 0;
}

QORUnicodeChar& QORUnicodeChar::ToUpper() {
    _TakeMapped(MapCase(_code, LetterCase::Upper));
    return *this;
}

QORUnicodeChar& QORUnicodeChar::ToLower() {
    _TakeMapped(MapCase(_code, LetterCase::Lower));
    return *this;
}

void QORUnicodeChar::_TakeMapped(unsigned int code) {
    if (code != _code) {
        BuildFromUCChar32(code);
    }
}

int QORUnicodeChar::_Collate(const QORUnicodeChar& c) const {
    const wchar_t mine[] = {static_cast<wchar_t>(_code), 0};
    const wchar_t other[] = {static_cast<wchar_t>(c._code), 0};
    return std::wcscoll(mine, other);
}

bool QORUnicodeChar::operator<(const QORUnicodeChar& c) const {
    return _Collate(c) < 0;
}

bool QORUnicodeChar::operator<=(const QORUnicodeChar& c) const {
    return _Collate(c) < 1;
}
