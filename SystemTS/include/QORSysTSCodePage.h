/// @file
/// Conversions of text as static functions: from and to the environment's code page, and between UTF-8 and UTF-16.
#pragma once

#include "QORSysTSExport.h"

/// Static functions only. Nothing here holds state, so any thread may call them at any time.
class QORSYSTS_EXPORT QORSysTSCodePage {
public:
    /// The environment's code page to UTF-16; see VELSysCodePage::ConvertMBCSToUTF16().
    /// @param dst      Target of at least `length` + 1 units.
    /// @param written  Receives the number of units, unless null.
    /// @return The number of units written.
    static int ConvertStrToUcs(const char* src, int length, unsigned short* dst, int* written);
    /// UTF-16 to the environment's code page; see VELSysCodePage::ConvertUTF16ToMBCS().
    /// @param dst      Target of at least 4 bytes for each unit, plus one.
    /// @param written  Receives the number of bytes, unless null.
    /// @return The number of bytes written.
    static int ConvertUcsToStr(const unsigned short* src, int length, char* dst, int* written);
    /// UTF-16 to UTF-8, unchecked and without a terminator.
    /// @param dst      Target of at least 3 bytes for each unit.
    /// @param written  Receives the number of bytes, unless null.
    /// @return 0.
    static int ConvertUCS2ToUTF8(unsigned short* src, int length, char* dst, unsigned long* written);
    /// UTF-8 to UTF-16, unchecked and without a terminator.
    /// @param dst      Target of at least one unit for each byte.
    /// @param written  Receives the number of units, unless null.
    /// @return 0.
    static int ConvertUTF8ToUCS2(const char* src, unsigned long length, unsigned short* dst, int* written);
};
