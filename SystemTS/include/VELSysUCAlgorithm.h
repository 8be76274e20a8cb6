/// @file
/// Conversion between UTF-8, UTF-16 and UTF-32 without a code page, and the string hash.
///
/// Everything here is a total function: whatever bytes it is given, it produces something, and nothing raises an
/// error in words. Only VELSysUCAlgorithm::IsUTF8 and VELSysUCAlgorithm::CharUTF8Len judge their input. Nothing here
/// holds state, takes a lock or allocates memory, so every function may be called on any thread at any time.
#pragma once

#include "QORSysTSExport.h"

class VELSysCodePage;

/// Unicode algorithms, all static. Code points travel as `unsigned int`, UTF-16 code units as `unsigned short` in host
/// byte order, UTF-8 bytes as `char`; lengths count units of the source. The caller provides the target, which holds
/// at most 4 bytes of UTF-8, 2 units of UTF-16 or 1 unit of UTF-32 for each code point.
class QORSYSTS_EXPORT VELSysUCAlgorithm {
public:
    /// Conversions of whole ranges that check nothing. `[first, last)` is the source, `out` has room for the worst
    /// case stated with each; the result points behind the last unit written, and no terminator is written. An empty
    /// range gives `out` back.
    ///
    /// Damaged UTF-8 is decoded by its lead byte alone: up to three bytes before the end, the bits of the bytes that
    /// follow are taken without a look at their form, and a byte that cannot lead stands for itself. Within the last
    /// three bytes, damaged text is dropped. An unpaired high surrogate is joined with whatever unit follows.
    ///
    /// @code
    /// unsigned short units[5];
    /// unsigned short* end = VELSysUCAlgorithm::unchecked::utf8to16(text, text + 5, units);
    /// @endcode
    struct QORSYSTS_EXPORT unchecked {
        /// UTF-8 to UTF-16. Writes at most one unit for each source byte.
        static unsigned short* utf8to16(const char* first, const char* last, unsigned short* out);
        /// UTF-8 to UTF-32. Writes at most one value for each source byte.
        static unsigned int* utf8to32(const char* first, const char* last, unsigned int* out);
        /// UTF-16 to UTF-8. Writes at most three bytes for each source unit. An unpaired surrogate at the end, or a
        /// low surrogate anywhere, is written in its three-byte form.
        static char* utf16to8(const unsigned short* first, const unsigned short* last, char* out);
        /// UTF-16 to UTF-32. Writes at most one value for each source unit.
        static unsigned int* utf16to32(const unsigned short* first, const unsigned short* last, unsigned int* out);
        /// UTF-32 to UTF-16. Writes at most two units for each value; values beyond Unicode are cut, not refused.
        static unsigned short* utf32to16(const unsigned int* first, const unsigned int* last, unsigned short* out);
        /// UTF-32 to UTF-8. Writes at most four bytes for each value; values beyond Unicode are cut, not refused.
        static char* utf32to8(const unsigned int* first, const unsigned int* last, char* out);
    };

    /// Resumable UTF-8 to UTF-16.
    ///
    /// Converts code point by code point until the source is used up or `room` units are, and moves `src` and `len`
    /// past what it consumed; a code point that does not fit is not consumed. When all of the source was consumed,
    /// `src` becomes null: that is how a caller knows. A damaged byte within the last three bytes gives a zero unit.
    ///
    /// @param src   Source text; null is refused.
    /// @param len   Its length in bytes; negative is refused. 0 sets `src` to null and gives 0.
    /// @param dst   Target of `room` units, or null to measure: nothing is written then, but the source is consumed
    ///              all the same, so a caller who measures first keeps a copy of `src` and `len`.
    /// @param room  Units that `dst` holds; not looked at while measuring.
    /// @return Units written or needed, or -1 when an argument is refused.
    static int ConvertUTF8ToUTF16(const char*& src, int& len, unsigned short* dst, unsigned int room);

    /// Resumable UTF-16 to UTF-8, in the shape of ConvertUTF8ToUTF16().
    ///
    /// The first code point is written without a look at `room`, and a `room` below 4 puts no limit on what is
    /// written at all: callers pass 4 or more.
    ///
    /// @return Bytes written or needed, or -1 when `src` is null or `len` negative.
    static int ConvertUTF16ToUTF8(const unsigned short*& src, int& len, char* dst, unsigned int room);

    /// ConvertUTF8ToUTF16() with 64-bit arguments, which are narrowed to 32 bits. A refused call leaves `len` alone;
    /// any other leaves in it what remains of the narrowed length.
    static int ConvertUTF8ToUCS2(const char*& src, unsigned long& len, unsigned short* dst, unsigned long room);

    /// ConvertUTF16ToUTF8() with 64-bit arguments, which are narrowed to 32 bits.
    static int ConvertUCS2ToUTF8(const unsigned short*& src, unsigned long& len, char* dst, unsigned long room);

    /// The older conversion, which has no surrogates: a code point of 0x10000 or above is stored as "?".
    ///
    /// A character that lacks exactly its last byte takes the byte behind the range, so callers pass terminated text.
    ///
    /// @param src      Source text of `len` bytes, followed by a terminator.
    /// @param len      Length in bytes.
    /// @param dst      Target with room for `len` units.
    /// @param written  Receives the number of units stored, unless the result is -1.
    /// @return 0 at the end of the range, -1 for a null `dst` or a null `src` that is not empty, -2 when the text ends
    ///         inside a character, -3 when the target is full.
    static int ConvertUTF8ToUCS2Legacy(const char* src, unsigned long len, unsigned short* dst, int* written);

    /// Tells whether `n` bytes are well-formed UTF-8 (RFC 3629: no overlong form, no surrogate, nothing above
    /// U+10FFFF).
    /// @param p  The text; the reference is not moved.
    /// @return 0 when they are, also for an empty range; -1 when they are not.
    static int IsUTF8(const char*& p, unsigned long n);

    /// Length in bytes of the first character of a text of `n` bytes. A terminator is looked for first, whatever `n` is;
    /// a character that reaches beyond `n` bytes is ill-formed.
    /// @return 1 to 4, 0 for a text that starts with its terminator, -1 for a null pointer or an ill-formed character.
    static int CharUTF8Len(const char* p, unsigned long n);

    /// Hash version 3 of `n` UTF-16 units: `h = h * 37 + unit` in 32 bits, starting from `seed`. An empty range gives
    /// `seed`. All version 3 forms give one value for one text, whatever its encoding.
    static unsigned int HashV3FromUCS2(const unsigned short* text, unsigned long n, unsigned int seed);

    /// Hash version 3 of the UTF-16 form of `n` bytes of UTF-8. A text that ends inside a character has its remaining
    /// bytes taken from behind the range up to the terminator, so callers pass terminated text.
    static unsigned int HashV3FromUTF8(const char* text, unsigned long n, unsigned int seed);

    /// Hash version 3 of the UTF-16 form of `n` bytes in a code page; a null `codePage` means the environment's.
    /// A null `text` gives `seed`.
    static unsigned int HashV3FromMBCS(const char* text, unsigned long n, unsigned int seed,
                                       const VELSysCodePage* codePage);

    /// HashV3FromMBCS() for code pages whose first 128 values are ASCII: leading ASCII is hashed without conversion.
    static unsigned int HashV3FromMBCSOptimistic(const char* text, unsigned long n, unsigned int seed,
                                                 const VELSysCodePage* codePage);

    /// The older, sampling hash over `n` UTF-16 units: every unit up to 399 units, every `n / 64`-th beyond.
    /// @return 31 bits; 1 for an empty text, and when the 64-bit sum is 0.
    static unsigned int HashV2UCS2(const unsigned short* text, long n);

    /// The older, sampling hash over `n` bytes, each taken as a signed number. @return 31 bits; 0 for an empty text.
    static unsigned int HashV2MBCS(const char* text, long n);
};
