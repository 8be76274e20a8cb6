/// @file
/// Zero-terminated text of 16-bit units, which are not `wchar_t` here.
///
/// New arrays come from array `new`; the caller releases them with array `delete`. Without memory the result is null.
/// A null text counts as an empty one where a text is read, and nothing is written to a null target.
#pragma once

#include "QORSysTSExport.h"

/// Units before the terminator.
QORSYSTS_EXPORT unsigned long VLwcslen(const unsigned short* s);
/// Copies `src` with its terminator. @return `dst`.
QORSYSTS_EXPORT unsigned short* VLwcscpy(unsigned short* dst, const unsigned short* src);
/// Copies at most `n` units and always adds a terminator; nothing is padded.
/// @param dst  Target of at least `n` + 1 units.
/// @return `dst`.
QORSYSTS_EXPORT unsigned short* VLwcsncpy(unsigned short* dst, const unsigned short* src, unsigned long n);
/// The difference of the first two units that differ; 0 when the texts are equal.
QORSYSTS_EXPORT int VLwcscmp(const unsigned short* a, const unsigned short* b);
/// VLwcscmp() over at most `n` units. Deliberately, an `n` of 0 still gives the difference of the first units.
QORSYSTS_EXPORT int VLwcsncmp(const unsigned short* a, const unsigned short* b, unsigned long n);
/// The last unit equal to `c`, or null. A `c` of 0 gives the terminator; a null `s` gives null.
QORSYSTS_EXPORT unsigned short* VLwcsrchr(const unsigned short* s, unsigned short c);
/// Writes the units of `src` behind the terminator of `dst`. Deliberately not a concatenation: the terminator stays, so
/// `dst` reads as before, and none is added.
/// @param dst  Target with room behind its terminator for the units of `src`.
/// @return The place behind the last unit written; not `dst`.
QORSYSTS_EXPORT unsigned short* VLwcscat(unsigned short* dst, const unsigned short* src);
/// The first occurrence of `what`, or null. An empty `s` gives null, whatever `what` is; an empty `what` gives any
/// other `s`.
QORSYSTS_EXPORT unsigned short* VLwcsstr(const unsigned short* s, const unsigned short* what);
/// A new array with a copy; null for null.
QORSYSTS_EXPORT unsigned short* VLwstrdup(const unsigned short* s);
/// A new array with `a` and then `b`.
QORSYSTS_EXPORT unsigned short* VLwstrappend(const unsigned short* a, const unsigned short* b);
/// A new array with `a` and then `b`, which is text in the environment's code page.
QORSYSTS_EXPORT unsigned short* VLwstrappend(const unsigned short* a, const char* b);
/// The text in the environment's code page.
/// @param out  Receives a new zero-terminated array of at least two bytes for each unit and one more; null for a null
///             `s`.
/// @return The number of bytes.
QORSYSTS_EXPORT int VLwstrTostr(const unsigned short* s, char*& out);
/// The UTF-16 form of a text in the environment's code page.
/// @param out  Receives a new zero-terminated array of one unit for each byte and one more; null for a null `s`.
/// @return The number of units.
QORSYSTS_EXPORT int VLstrTowstr(const char* s, unsigned short*& out);
