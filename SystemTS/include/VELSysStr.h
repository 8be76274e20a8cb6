/// @file
/// Copies and concatenations of zero-terminated text that know the size of their target, some of them between UTF-8
/// and 32-bit wide text, and tokenisers of such text.
///
/// Unless stated otherwise the result is 0, or -1 for a null argument and for a target that is too small; a `size`
/// counts elements of the target, terminator included, and a refused call leaves the target alone.
#pragma once

#include "QORSysTSExport.h"

#include <cstddef>

class QORUnicodeString;

/// Copies up to `size` - 1 bytes as `strncpy` does: the rest of the target is filled with zeros, a longer text is cut.
QORSYSTS_EXPORT int VELSysStrCpy(char* dst, std::size_t size, const char* src);
/// UTF-8 to wide text. The target is too small when it has fewer elements than the source has bytes and a terminator.
QORSYSTS_EXPORT int VELSysStrCpy(wchar_t* dst, std::size_t size, const char* src);
/// Wide text to UTF-8. The target is too small when it has fewer than 4 bytes for each element and one more, whatever
/// the text needs.
QORSYSTS_EXPORT int VELSysStrCpy(char* dst, std::size_t size, const wchar_t* src);
/// Copies up to `size` - 1 elements; a longer text is cut.
QORSYSTS_EXPORT int VELSysStrCpy(wchar_t* dst, std::size_t size, const wchar_t* src);

/// Appends as far as the room goes. A target that is exactly full stays as it is, and the result is 0. A target
/// without a terminator is refused.
QORSYSTS_EXPORT int VELSysStrCat(char* dst, std::size_t size, const char* src);
/// VELSysStrCat() of wide text.
QORSYSTS_EXPORT int VELSysStrCat(wchar_t* dst, std::size_t size, const wchar_t* src);

/// `strsep`. @return The token, or null, also for a null argument.
QORSYSTS_EXPORT char* VELSysStrSep(char** s, const char* delimiters);

/// The next token of a text, whose delimiters are overwritten with zero bytes. Runs of delimiters count as one.
/// @param s      The text; null goes on with `*state`.
/// @param state  Where the caller keeps how far it came. Null behind the last token that ends with its text; untouched
///               when there is no token left.
/// @return The token, or null when there is none, and for null `delimiters` or a null `state`.
QORSYSTS_EXPORT char* QORSysStrtokLegacy(char* s, const char* delimiters, char** state);

/// The text as UTF-8; the rest of the target is filled with zeros. An empty string is refused, and so is a target whose
/// size is not above what QORUnicodeString::ConvertToUTF8() suggests, which may be more than the text needs.
QORSYSTS_EXPORT int VELSysStrToUTF8(char* dst, std::size_t size, QORUnicodeString& s);
/// The text as UTF-8 in a new block. The caller calls `free`. @return Null for an empty string and without memory.
QORSYSTS_EXPORT char* VELSysStrToUTF8(const QORUnicodeString& s);
/// Wide text as UTF-8, likewise. @return Null for null, too.
QORSYSTS_EXPORT char* VELSysStrToUTF8(const wchar_t* s);
/// The text as 32-bit wide text in a new block. The caller calls `free`. @return Null without memory.
QORSYSTS_EXPORT wchar_t* VELSysStrToWChar(const QORUnicodeString& s);
/// Takes zero-terminated UTF-8; see QORUnicodeString::BuildFromUTF8().
QORSYSTS_EXPORT int VELSysStrBuildU(QORUnicodeString& s, const char* utf8);
