/// @file
/// Reading a number by the definition, step by step.
#pragma once

#include "QORUnicodeString.h"
#include "VELSysCLocale.h"
#include "VELSysStatus.h"

#include <cctype>
#include <climits>
#include <cstdlib>
#include <cwchar>
#include <string>

namespace PlainNumber {

/// A Unicode character as narrow text; empty when the code page doesn't have it.
inline std::string NarrowForm(int code) {
    if (code <= 0 || code > 0x10FFFF) {
        return {};
    }
    const wchar_t character = code;
    QORUnicodeString wide;
    wide.BuildFromWChar(&character, 1);
    const QORUnicodeString narrow(wide.ConvertToChar());
    return narrow == wide ? narrow.ConvertToChar() : "";
}

inline std::string LocaleForm(const wchar_t* text) {
    char bytes[16 * MB_LEN_MAX] = {};
    std::mbstate_t state = {};
    std::wcsrtombs(bytes, &text, sizeof bytes - 1, &state);
    return bytes;
}

/// Reads in the locale of the thread.
inline int Parse(double& value, std::string text, int separator) {
    VELSysCLocale::LConv conventions;
    VELSysCLocale::GetLCConv(conventions);
    const wchar_t* const point = conventions.decimal_point();
    if (*point != separator) {
        const std::string from = NarrowForm(separator);
        const std::string to = LocaleForm(point);
        int count = 0;
        std::string copy;
        for (std::size_t at = 0; at < text.size();) {
            const bool isSeparator = !from.empty() && text.compare(at, from.size(), from) == 0;
            copy += isSeparator ? to : std::string(1, text[at]);
            at += isSeparator ? from.size() : 1;
            count += isSeparator ? 1 : 0;
        }
        if (count > 1 || (count == 0 && text.find(to) != std::string::npos)) {
            return VEL::StatusBadArgument;
        }
        text = copy;
    }
    char* rest = nullptr;
    value = std::strtod(text.c_str(), &rest);
    if (value == 0 && rest == text.c_str()) {
        return text.empty() ? VEL::StatusOk : VEL::StatusBadArgument;
    }
    while (std::isspace(static_cast<unsigned char>(*rest)) != 0) {
        ++rest;
    }
    return rest == text.c_str() + text.size() ? VEL::StatusOk : VEL::StatusBadArgument;
}

/// @param environmentLocale  Null unless the locale is taken from the environment.
inline int Convert(double& value, const QORUnicodeString& s, int separator, const char* environmentLocale) {
    const std::string text(s.ConvertToChar(), static_cast<std::size_t>(s.GetLengthInByte()));
    if (VELSysCLocaleIsPerThread() || VELSysCLocaleSetPerThread(1) != -1) {
        const int result = Parse(value, text, separator);
        const std::string form = NarrowForm(separator);
        if (result >= 0 || form.empty() || text.find(form) == std::string::npos) {
            return result;
        }
    }
    const bool hasLocale = environmentLocale != nullptr && *environmentLocale != '\0';
    int status = 0;
    const VELSysCLocale::ThreadLC scope(LC_ALL, hasLocale ? environmentLocale : "C", &status);
    return Parse(value, text, separator);
}

} // namespace PlainNumber
