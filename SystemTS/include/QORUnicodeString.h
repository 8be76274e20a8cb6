/// @file
/// The string class of the whole system.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

/// Unicode text: one pointer to the text of a shared, reference-counted block.
///
/// A block keeps text in the encoding in which it arrived: narrow, in the environment's code page, or wide, as UTF-16
/// in host byte order. The other encoding, the second view, is made on demand and once. Copying a string shares the
/// block; a block with more than one handle is never written. Positions and lengths count UTF-16 code units, also
/// where a name says "Char".
///
/// Nothing here throws. Without memory, a string becomes empty. Any number of threads may read one object; changing an
/// object needs exclusive use of that object, never of others on the same block.
///
/// @code
/// QORUnicodeString name("Grüße");
/// name.GetLengthInChar();                      // 5
/// const unsigned short* units = name.ConvertToUCChar();
/// @endcode
class QORSYSTS_EXPORT QORUnicodeString {
public:
    /// Empty, without an allocation.
    QORSYSTS_INLINE QORUnicodeString() noexcept : _text(VEL::internal::EmptyHandle()) {}
    /// Shares the block. A copy of a null handle is a null handle.
    QORSYSTS_INLINE QORUnicodeString(const QORUnicodeString& s) noexcept : _text(s._text) {
        VEL::internal::AddHandle(_text);
    }
    /// Takes the block; `s` is empty afterwards.
    QORSYSTS_INLINE QORUnicodeString(QORUnicodeString&& s) noexcept : _text(s._text) {
        s._text = VEL::internal::EmptyHandle();
    }
    /// Narrow text up to the terminator, stored as it is, without a conversion or a check. Null gives an empty string.
    QORUnicodeString(const char* s);
    /// At most `n` bytes of narrow text, fewer when a zero byte comes earlier. Null, a zero first byte or an `n` below
    /// 1 as a signed 32-bit number give an empty string.
    QORUnicodeString(const char* s, unsigned long n);
    /// `n` copies of the text of `s`, in its main representation.
    QORUnicodeString(const QORUnicodeString& s, unsigned long n);
    /// Gives the block up and leaves a null handle.
    QORSYSTS_INLINE ~QORUnicodeString() {
        VEL::internal::DropHandle(_text);
        VEL::internal::ClearHandle(_text);
    }

    /// Shares the block of `s`. Two strings on one block stay as they are.
    QORSYSTS_INLINE QORUnicodeString& operator=(const QORUnicodeString& s) noexcept {
        if (_text != s._text) {
            // Counted before the old block goes, which may be all that keeps `s` alive.
            char* const text = s._text;
            VEL::internal::AddHandle(text);
            VEL::internal::DropHandle(_text);
            _text = text;
        }
        return *this;
    }
    /// Takes the block of `s`, which is empty afterwards. Moving a string to itself changes nothing.
    QORSYSTS_INLINE QORUnicodeString& operator=(QORUnicodeString&& s) noexcept {
        if (this != &s) {
            char* const text = s._text;
            s._text = VEL::internal::EmptyHandle();
            VEL::internal::DropHandle(_text);
            _text = text;
        }
        return *this;
    }
    /// Takes narrow text up to the terminator; null gives an empty string. A narrow block that this string holds alone
    /// is written in place when it is large enough.
    QORUnicodeString& operator=(const char* s);

    /// Takes `n` bytes of UTF-8, unchecked: as narrow text in a UTF-8 environment, otherwise as UTF-16. Null or an `n`
    /// of 0 reset the string. @return 0.
    int BuildFromUTF8(const char* s, unsigned long n);
    /// Takes `n` UTF-16 units; null counts as none. @return 1, or -1 when the string is left on the empty block.
    int BuildFromUCChar(const unsigned short* s, int n);
    /// Takes UTF-16 up to the zero unit; null counts as none. @return As the form with a length.
    int BuildFromUCChar(const unsigned short* s);
    /// Takes `n` UTF-16 units. @return -1 for null or an `n` of 0, which reset the string; otherwise as
    /// BuildFromUCChar().
    int BuildFromUTF16(const unsigned short* s, unsigned long n);
    /// Takes 32-bit wide text up to the terminator. @return As BuildFromUCChar().
    int BuildFromWChar(const wchar_t* s);
    /// Takes `n` elements of 32-bit wide text; an `n` of -1 means up to the terminator. @return As BuildFromUCChar().
    int BuildFromWChar(const wchar_t* s, unsigned long n);

    /// The text in the environment's code page, zero-terminated; "" for a null handle. The pointer stays valid while
    /// the block lives unchanged: a second handle on the block keeps it valid whatever happens to this one.
    const char* ConvertToChar() const;
    /// ConvertToChar().
    QORSYSTS_INLINE operator const char*() const { return ConvertToChar(); }
    /// ConvertToChar().
    const char* CastToCharPtr() const;
    /// The text in UTF-16, zero-terminated, valid as long as that of ConvertToChar(); null for a null handle.
    const unsigned short* ConvertToUCChar() const;
    /// ConvertToUCChar().
    QORSYSTS_INLINE operator const unsigned short*() const { return ConvertToUCChar(); }
    /// Copies the UTF-16 units, without a terminator.
    /// @param out  Target, or null to ask for a capacity: the length rounded up, never below the length.
    /// @param n    Receives the number of units.
    /// @return 0.
    int ConvertToUTF16(unsigned short* out, unsigned long* n) const;
    /// Copies the text as UTF-8 bytes, without a terminator.
    /// @param out  Target, or null to ask for a capacity: the length in bytes rounded up, never below the length.
    /// @param n    Receives the number of bytes, unless null.
    /// @return 0.
    int ConvertToUTF8(char* out, unsigned long* n) const;
    /// Writes the code points and a terminator.
    /// @param out  Target, or null to ask for a number of elements that is large enough.
    /// @return The number of code points, or that suggestion.
    int ConvertToWChar(wchar_t* out) const;

    /// Length in UTF-16 units; builds the UTF-16 view of a narrow string.
    int GetLengthInChar() const;
    /// Length in bytes of the environment's code page; builds the multi-byte view of a wide string.
    int GetLengthInByte() const;
    /// True for a string without text and for a null handle.
    bool IsEmpty() const;
    /// The hash of the text, 31 bits: equal text has an equal hash whatever its representation. A null handle has 0.
    unsigned int ComputeHashKey() const;
    /// A static block of 16 zero bytes.
    static const void* ClassId();

    /// Empties the string; the block is given up.
    void Reset();

private:
    friend struct VEL::internal::StringAccess;

    char* _text; ///< The first text unit of the block.
};

static_assert(sizeof(QORUnicodeString) == sizeof(char*));
