#include "VELSysStr.h"

#include "QORUnicodeString.h"
#include "VELSysUCAlgorithm.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

using unchecked = VELSysUCAlgorithm::unchecked;

constexpr int Done = 0;
constexpr int Refused = -1;

/// Longest UTF-8 form of a code point.
constexpr std::size_t MaxUTF8Length = 4;

const unsigned int* CodePoints(const wchar_t* s) {
    return reinterpret_cast<const unsigned int*>(s);
}

unsigned int* CodePoints(wchar_t* s) {
    return reinterpret_cast<unsigned int*>(s);
}

void WriteUTF8(char* dst, const wchar_t* src, std::size_t length) {
    *unchecked::utf32to8(CodePoints(src), CodePoints(src) + length, dst) = 0;
}

/// What ConvertToUTF8() suggests for a text; 0 for one that is empty or can't be converted for want of memory.
unsigned long SuggestUTF8Size(const QORUnicodeString& s) {
    unsigned long suggestion = 0;
    s.ConvertToUTF8(nullptr, &suggestion);
    return suggestion;
}

} // namespace

int VELSysStrCpy(char* dst, std::size_t size, const char* src) {
    if (dst == nullptr || src == nullptr || size == 0) {
        return Refused;
    }
    std::strncpy(dst, src, size - 1);
    dst[size - 1] = 0;
    return Done;
}

int VELSysStrCpy(wchar_t* dst, std::size_t size, const char* src) {
    if (dst == nullptr || src == nullptr) {
        return Refused;
    }
    const std::size_t length = std::strlen(src);
    if (length >= size) {
        return Refused;
    }
    *unchecked::utf8to32(src, src + length, CodePoints(dst)) = 0;
    return Done;
}

int VELSysStrCpy(char* dst, std::size_t size, const wchar_t* src) {
    if (dst == nullptr || src == nullptr) {
        return Refused;
    }
    const std::size_t length = std::wcslen(src);
    if (MaxUTF8Length * length >= size) {
        return Refused;
    }
    WriteUTF8(dst, src, length);
    return Done;
}

int VELSysStrCpy(wchar_t* dst, std::size_t size, const wchar_t* src) {
    if (dst == nullptr || src == nullptr || size == 0) {
        return Refused;
    }
    *std::copy_n(src, wcsnlen(src, size - 1), dst) = 0;
    return Done;
}

int VELSysStrCat(char* dst, std::size_t size, const char* src) {
    if (dst == nullptr || src == nullptr) {
        return Refused;
    }
    const std::size_t length = strnlen(dst, size);
    if (length == size) {
        return Refused;
    }
    std::strncat(dst, src, size - 1 - length);
    return Done;
}

int VELSysStrCat(wchar_t* dst, std::size_t size, const wchar_t* src) {
    if (dst == nullptr || src == nullptr) {
        return Refused;
    }
    const std::size_t length = wcsnlen(dst, size);
    if (length == size) {
        return Refused;
    }
    std::wcsncat(dst, src, size - 1 - length);
    return Done;
}

char* VELSysStrSep(char** s, const char* delimiters) {
    return s != nullptr && delimiters != nullptr ? strsep(s, delimiters) : nullptr;
}

char* QORSysStrtokLegacy(char* s, const char* delimiters, char** state) {
    if (delimiters == nullptr || state == nullptr) {
        return nullptr;
    }
    char* token = s != nullptr ? s : *state;
    if (token == nullptr) {
        return nullptr;
    }
    token += std::strspn(token, delimiters);
    if (*token == 0) {
        return nullptr;
    }
    char* const end = token + std::strcspn(token, delimiters);
    if (*end == 0) {
        *state = nullptr;
        return token;
    }
    *end = 0;
    // On the zero byte the next call finds nothing, and the caller sees that a delimiter ended the text.
    *state = end[1] != 0 ? end + 1 : end;
    return token;
}

int VELSysStrToUTF8(char* dst, std::size_t size, QORUnicodeString& s) {
    if (dst == nullptr) {
        return Refused;
    }
    const unsigned long suggestion = SuggestUTF8Size(s);
    if (suggestion == 0 || suggestion >= size) {
        return Refused;
    }
    std::memset(dst, 0, size);
    unsigned long length = 0;
    return s.ConvertToUTF8(dst, &length);
}

char* VELSysStrToUTF8(const QORUnicodeString& s) {
    const unsigned long suggestion = SuggestUTF8Size(s);
    if (suggestion == 0) {
        return nullptr;
    }
    auto* const block = static_cast<char*>(std::malloc(suggestion + 1));
    if (block != nullptr) {
        unsigned long length = 0;
        s.ConvertToUTF8(block, &length);
        block[length] = 0;
    }
    return block;
}

char* VELSysStrToUTF8(const wchar_t* s) {
    const std::size_t length = s != nullptr ? std::wcslen(s) : 0;
    if (length == 0) {
        return nullptr;
    }
    auto* const block = static_cast<char*>(std::malloc(MaxUTF8Length * length + 1));
    if (block != nullptr) {
        WriteUTF8(block, s, length);
    }
    return block;
}

wchar_t* VELSysStrToWChar(const QORUnicodeString& s) {
    // A text whose UTF-16 form is missing now could be there when it is written, and be longer than was measured.
    if (!s.IsEmpty() && s.GetLengthInChar() == 0) {
        return nullptr;
    }
    const auto size = static_cast<std::size_t>(s.ConvertToWChar(nullptr));
    auto* const block = static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t)));
    if (block != nullptr) {
        s.ConvertToWChar(block);
    }
    return block;
}

int VELSysStrBuildU(QORUnicodeString& s, const char* utf8) {
    return utf8 != nullptr ? s.BuildFromUTF8(utf8, std::strlen(utf8)) : Refused;
}
