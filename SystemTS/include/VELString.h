/// @file
/// Functions over the three string classes, the string pool of a thread, and the string checks.
#pragma once

#include "QORString.h"
#include "QORSysTSExport.h"
#include "QORSysTSUnicodeString.h"
#include "QORUnicodeString.h"
#include "VELStringIteration.h"

class VELVectorOfUnicodeString;

namespace VEL {

/// How a string holds its text.
enum MainRepEncoding : int {
    MainRepNone = 0,   ///< The handle is null.
    MainRepNarrow = 1, ///< Bytes in the environment's code page.
    MainRepWide = 2,   ///< UTF-16 in host byte order.
};

/// The main representation, one of ::MainRepEncoding.
QORSYSTS_EXPORT int GetMainRepEncoding(QORUnicodeString const& s);
/// The main representation, one of ::MainRepEncoding.
QORSYSTS_EXPORT int GetMainRepEncoding(QORString const& s);

/// Gives the string a block of its own: a shared block is copied, without its second view; a block alone is left as it
/// is.
QORSYSTS_EXPORT void Isolate(QORUnicodeString& s);
/// Gives the string a block of its own.
QORSYSTS_EXPORT void Isolate(QORString& s);

/// Turns a wide string into a narrow one when that loses nothing: when it is empty or all its units are ASCII.
/// @return True when the string now stands on a different block.
QORSYSTS_EXPORT bool Pack(QORUnicodeString& s);
/// Turns a wide string into a narrow one when that loses nothing.
QORSYSTS_EXPORT bool Pack(QORString& s);

// Copy: `to` shares the block of `from`, across the classes, without touching the text.
QORSYSTS_EXPORT void Copy(QORString& to, QORUnicodeString const& from);
QORSYSTS_EXPORT void Copy(QORString& to, QORSysTSUnicodeString const& from);
QORSYSTS_EXPORT void Copy(QORUnicodeString& to, QORString const& from);
QORSYSTS_EXPORT void Copy(QORUnicodeString& to, QORSysTSUnicodeString const& from);
QORSYSTS_EXPORT void Copy(QORSysTSUnicodeString& to, QORString const& from);
QORSYSTS_EXPORT void Copy(QORSysTSUnicodeString& to, QORUnicodeString const& from);

// Move: gives up the block of `to`, moves that of `from` there, and leaves `from` empty. Moving a string to itself is
// not guarded: the text is lost.
QORSYSTS_EXPORT void Move(QORString& to, QORString& from);
QORSYSTS_EXPORT void Move(QORString& to, QORUnicodeString& from);
QORSYSTS_EXPORT void Move(QORString& to, QORSysTSUnicodeString& from);
QORSYSTS_EXPORT void Move(QORUnicodeString& to, QORString& from);
QORSYSTS_EXPORT void Move(QORUnicodeString& to, QORUnicodeString& from);
QORSYSTS_EXPORT void Move(QORUnicodeString& to, QORSysTSUnicodeString& from);
QORSYSTS_EXPORT void Move(QORSysTSUnicodeString& to, QORString& from);
QORSYSTS_EXPORT void Move(QORSysTSUnicodeString& to, QORUnicodeString& from);
QORSYSTS_EXPORT void Move(QORSysTSUnicodeString& to, QORSysTSUnicodeString& from);

/// A string of `n` UTF-16 units, or of all up to the zero unit for an `n` of -1.
/// @param err  Set to 0 whatever happened, unless null.
QORSYSTS_EXPORT QORUnicodeString QUSFrom(const char16_t* s, unsigned long n, int* err);
/// A string of `n` UTF-16 units.
QORSYSTS_EXPORT QORUnicodeString QUSFrom(const unsigned short* s, unsigned long n, int* err);
/// A string of `n` elements of 32-bit wide text.
QORSYSTS_EXPORT QORUnicodeString QUSFrom(const wchar_t* s, unsigned long n, int* err);

/// The pieces of `s` between occurrences of `separator`, and the rest behind the last. An empty `separator` never
/// occurs; an empty `s` is one empty piece. `out` is cleared first.
QORSYSTS_EXPORT void Split(const QORUnicodeString& s, const QORUnicodeString& separator, VELVectorOfUnicodeString& out);

/// True when `s.SubString(pos, length of what)` equals `what`.
QORSYSTS_EXPORT bool IsSubStringAt(const QORUnicodeString& s, int pos, const QORUnicodeString& what);

/// Compares by the collation of the C locale: `strcoll` of the narrow texts.
/// @return -1 for a null handle of `a`, 1 for one of `b`.
QORSYSTS_EXPORT int StrCollate(const QORUnicodeString& a, const QORUnicodeString& b);

namespace internal {

/// True when the string's block has a second view at this moment; false for a null handle, true for an empty block.
QORSYSTS_EXPORT bool IsSecondViewAvailable(QORUnicodeString const& s);

} // namespace internal
} // namespace VEL

/// Frees all blocks of the calling thread's pool. @return 1 when there was one, otherwise 0.
QORSYSTS_EXPORT int VELStringPoolFlush();

/// Switches the calling thread's pool on (1) or off (any other byte). Only the low byte of `on` counts; a pool that is
/// off is switched on by any byte but 0.
/// @return 0 when that changed something, 1 when the pool stood so already, VEL::StatusRefused when the process has no
///         pools.
QORSYSTS_EXPORT int VELStringPoolSetForCurrentThrd(int on);

/// Sets the string checks (0 is off) and switches the calling thread's pool on.
/// @return The result of VELStringPoolSetForCurrentThrd().
QORSYSTS_EXPORT int VELStringInit(unsigned int checks);

/// Drains the calling thread's pool and switches it off. @return 0.
QORSYSTS_EXPORT int VELStringDeInit(int);

/// For debugger extensions: bit value 1 is set while narrow text is UTF-8. Bit values 1 and 2 belong to this library.
QORSYSTS_EXPORT extern unsigned int* s_pQUSFlagsForDebugger;
