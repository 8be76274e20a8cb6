/// @file
/// The decision of language and code page.
#pragma once

#include <cstddef>

/// The plain record of the language decision. Callers may zero it and pass it in.
struct VELSysNLSEnv {
    char language[32];       ///< Current language, or empty when it has 32 characters or more.
    char alias[32];          ///< Its alias, likewise.
    char langString[32];     ///< Its locale string, likewise.
    char codePage[16];       ///< Current code page, or empty when it has 16 characters or more.
    wchar_t decimalPoint[8]; ///< Decimal separator of the locale, or empty when it has 8 wide characters or more.
    long maxCharSize;        ///< Longest multi-byte character in bytes.
};

static_assert(sizeof(VELSysNLSEnv) == 152);
static_assert(offsetof(VELSysNLSEnv, decimalPoint) == 112 && offsetof(VELSysNLSEnv, maxCharSize) == 144);
