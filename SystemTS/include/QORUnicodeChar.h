/// @file
/// One Unicode character.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

/// A code point and, on demand, its form in the environment's code page.
///
/// A plain value without a lock: ConvertToChar() and the conversion to `char` write the narrow form from `const`
/// operations, so one object must not be used from two threads at once. The classifications, the case mapping of what
/// is not ASCII, and the ordering follow the C locale of the calling thread.
///
/// @code
/// QORUnicodeChar c('A');
/// c.ToLower().ConvertToChar();    // "a"
/// @endcode
class QORSYSTS_EXPORT QORUnicodeChar {
public:
    /// Code 0.
    QORSYSTS_INLINE QORUnicodeChar() noexcept : _code(0), _mbChar{} {}
    /// A byte of the environment's code page: ASCII as it is, any other as BuildFromChar() takes it.
    QORUnicodeChar(char c);
    QORSYSTS_INLINE QORUnicodeChar(const QORUnicodeChar& c) noexcept : _code(c._code) { _CopyMbChar(c); }

    /// As the constructor from a byte.
    QORUnicodeChar& operator=(char c);
    QORSYSTS_INLINE QORUnicodeChar& operator=(const QORUnicodeChar& c) noexcept {
        _code = c._code;
        _CopyMbChar(c);
        return *this;
    }
    /// The first character of a zero-terminated text; see BuildFromChar().
    QORUnicodeChar& operator=(const char* s);

    /// Takes a code point, which may be above U+FFFF.
    QORSYSTS_INLINE void BuildFromUCChar32(unsigned int code) noexcept {
        _code = code;
        _mbChar[0] = 0;
    }
    /// Takes one UTF-16 unit as the code.
    QORSYSTS_INLINE void BuildFromUC2Bytes(const unsigned short& unit) noexcept { BuildFromUCChar32(unit); }
    /// Takes the first character of a text in the environment's code page. What can't be decoded becomes "?", as do
    /// null and an `n` of 0. An empty text gives code 0.
    /// @param s  The text. It must be zero-terminated when `n` is -1, and is not read behind its terminator then.
    /// @param n  Bytes that may be read, or -1 for as many as the longest character of the code page has.
    /// @return 1 when the character became "?" for want of a better one, otherwise 0. How many bytes of the text it
    /// took is the length of ConvertToChar(), at least 1.
    int BuildFromChar(const char* s, unsigned long n);

    /// The code in 16 bits: its low half when it is above U+FFFF.
    QORSYSTS_INLINE unsigned short ConvertToUC2Bytes() const noexcept { return static_cast<unsigned short>(_code); }
    /// The character in the environment's code page, zero-terminated; "" for code 0. The pointer stays valid until the
    /// object changes or dies.
    const char* ConvertToChar() const;
    /// The first byte of ConvertToChar().
    operator char() const;

    // The code's class in the C locale in force: iswalpha() and its kin.
    bool IsAlpha() const;
    bool IsAlnum() const;
    bool IsCntrl() const;
    bool IsDigit() const;
    bool IsGraph() const;
    bool IsLower() const;
    bool IsUpper() const;
    bool IsPrint() const;
    bool IsPunct() const;
    bool IsSpace() const;
    bool IsXDigit() const;

    /// Turns the character to upper case: ASCII by its own rule, all others by the C locale in force.
    QORUnicodeChar& ToUpper();
    /// Turns the character to lower case, likewise.
    QORUnicodeChar& ToLower();

    /// Equal codes, whatever the narrow forms.
    QORSYSTS_INLINE bool operator==(const QORUnicodeChar& c) const noexcept { return _code == c._code; }
    /// The collation of the C locale in force, by `wcscoll`; not the order of codes.
    bool operator<(const QORUnicodeChar& c) const;
    bool operator<=(const QORUnicodeChar& c) const;

private:
    friend struct VEL::internal::StringAccess;

    static constexpr unsigned long MbCharSize = 8;

    QORSYSTS_PRIVATE void _BuildFromChar(char c);
    QORSYSTS_PRIVATE int _BuildQuestionMark();
    QORSYSTS_PRIVATE void _StoreMbChar(const char* bytes, unsigned long count) const;
    QORSYSTS_PRIVATE void _EnsureMbChar() const;
    QORSYSTS_PRIVATE void _TakeMapped(unsigned int code);
    QORSYSTS_PRIVATE int _Collate(const QORUnicodeChar& c) const;
    void _CopyMbChar(const QORUnicodeChar& c) noexcept { __builtin_memcpy(_mbChar, c._mbChar, MbCharSize); }

    unsigned int _code;               ///< The code point; 0 by default.
    mutable char _mbChar[MbCharSize]; ///< The narrow form, zero-terminated; empty while it is not computed.
};

static_assert(sizeof(QORUnicodeChar) == 12);
