/// @file
/// The C locales that tests choose. They are compiled into the build tree, so the machine's own have no say.
#pragma once

#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>

namespace TestLocales {

inline constexpr const char* English = "en_US.UTF-8";
/// Its capital of "i" is U+0130, and the small letter of "I" U+0131.
inline constexpr const char* Turkish = "tr_TR.UTF-8";
/// One byte is one character; numbers have a comma.
inline constexpr const char* German = "de_DE.ISO-8859-1";
/// Letters have two or three bytes.
inline constexpr const char* Japanese = "ja_JP.EUC-JP";
/// Letters have one or two bytes, and the second may be an ASCII one.
inline constexpr const char* JapaneseShiftJIS = "ja_JP.SHIFT_JIS";
inline constexpr const char* Korean = "ko_KR.EUC-KR";
/// Letters have two or four bytes.
inline constexpr const char* SimplifiedChinese = "zh_CN.GB18030";
inline constexpr const char* SimplifiedChineseOld = "zh_CN.GB2312";
inline constexpr const char* TraditionalChinese = "zh_TW.BIG5";
/// UTF-8, and numbers have a comma.
inline constexpr const char* French = "fr_FR.UTF-8";
/// The German one by a name in `LANG` that the C library takes and the C++ library refuses.
inline constexpr const char* GermanRefused = "de_DE;comma";
/// The currency symbol is the Euro sign and 299 letters.
inline constexpr const char* LongCurrency = "long_currency.UTF-8";
/// The decimal point is U+00B7, of two bytes and of one.
inline constexpr const char* MiddleDot = "middle_dot.UTF-8";
inline constexpr const char* MiddleDotOfOneByte = "middle_dot.ISO-8859-1";

/// Makes a locale the process's.
inline void UseLocale(const char* name) {
    setenv("LOCPATH", QOR_TEST_LOCALES, 1);
    ASSERT_NE(std::setlocale(LC_ALL, name), nullptr) << "no locale " << name << " in " << QOR_TEST_LOCALES;
}

} // namespace TestLocales
