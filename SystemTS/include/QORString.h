/// @file
/// The string for plain text: identifiers, keys, resource names.
#pragma once

#include "QORChar.h"
#include "QORSysTSExport.h"
#include "VELStringHandle.h"

#include <cstddef>
#include <iosfwd>

/// Narrow text that is meant to be plain. Always narrow, and one byte is one character: lengths and positions count
/// bytes, and nothing here decodes a code page.
///
/// While the string checks are on (the default), text with bytes that don't print is reported on standard output and
/// refused: the string is then empty. A block with wide text, which VEL::Move() or VEL::Copy() can bring, is turned
/// back into narrow text on first use, and a null handle is repaired. Both write the handle, also from `const`
/// operations, so an object that may hold such a block must not be read on two threads at once.
class QORSYSTS_EXPORT QORString {
public:
    /// What Strip() takes away. Other values take nothing.
    enum QORStripMode {
        QORStripModeLeading = 1,
        QORStripModeTrailing = 2,
        QORStripModeBoth = 3,
        QORStripModeAll = 4, ///< Every occurrence, wherever it stands.
    };

    /// Empty, without an allocation.
    QORSYSTS_INLINE QORString() noexcept : _text(VEL::internal::EmptyHandle()) {}
    /// Copies `s`. Null, "" and text that the check refuses give an empty string.
    QORString(char* s);
    /// The same for text that may not be written.
    QORString(const char* s) : QORString(const_cast<char*>(s)) {}
    /// Empty.
    QORString(std::nullptr_t) noexcept : QORString() {}
    /// Shares the block. A null handle is reported through VELDebugBreak(), and the copy is empty.
    QORSYSTS_INLINE QORString(const QORString& s) noexcept : _text(s._text) {
        if (_text == nullptr) {
            s._ReportNullHandle();
            _text = s._text;
        }
        VEL::internal::AddHandle(_text);
    }
    /// Takes the block; `s` is empty afterwards.
    QORSYSTS_INLINE QORString(QORString&& s) noexcept : _text(s._Repaired()) { s._text = VEL::internal::EmptyHandle(); }
    /// `n` copies of a byte. An `n` of 0 gives an empty string.
    QORString(QORChar c, unsigned long n);
    /// `n` copies of the text of `s`; one copy shares the block.
    QORString(const QORString& s, unsigned long n);
    /// Gives the block up and leaves a null handle.
    QORSYSTS_INLINE ~QORString() {
        VEL::internal::DropHandle(_text);
        VEL::internal::ClearHandle(_text);
    }

    /// Shares the block of `s`. Two strings on one block stay as they are.
    QORSYSTS_INLINE QORString& operator=(const QORString& s) noexcept {
        if (_Repaired() != s._Repaired()) {
            char* const text = s._text;
            VEL::internal::AddHandle(text);
            VEL::internal::DropHandle(_text);
            _text = text;
        }
        return *this;
    }
    /// Takes the block of `s`, which is empty afterwards. Moving a string to itself changes nothing.
    QORSYSTS_INLINE QORString& operator=(QORString&& s) noexcept {
        if (this != &s) {
            char* const text = s._Repaired();
            s._text = VEL::internal::EmptyHandle();
            VEL::internal::DropHandle(_text);
            _text = text;
        }
        return *this;
    }
    /// Copies `s` into a new block. Null, "" and text that the check refuses give an empty string. A null handle is
    /// reported through VELDebugBreak() and repaired.
    QORString& operator=(const char* s);

    /// True when the handle is not null.
    bool Init() const;
    /// A static block of 16 zero bytes.
    static const void* ClassId();

    /// Length in bytes.
    int GetLengthInChar() const;
    /// GetLengthInChar().
    int GetLengthInByte() const;
    /// GetLengthInChar().
    int length() const;
    /// GetLengthInChar().
    int Length() const;
    /// True for a string without text.
    bool IsEmpty() const;
    /// The text, zero-terminated, valid while the block lives unchanged.
    const char* ConvertToChar() const;
    /// ConvertToChar().
    QORSYSTS_INLINE operator const char*() const { return ConvertToChar(); }
    /// The text's 32-bit little-endian words combined by exclusive or, the last 1 to 3 bytes into the low bytes; 0 for
    /// an empty string. Deliberately not the hash of the Unicode strings.
    unsigned int ComputeHashKey() const;
    /// ComputeHashKey().
    unsigned int hash() const;

    /// The text to write through, as far as it goes: the string is given a block of its own first, and its text passes
    /// the check once more for that.
    char* CastToCharPtr();
    /// CastToCharPtr(); deliberately the narrow text, too.
    char* getUnicodeString();
    /// CastToCharPtr().
    char* getMBCSString();
    /// The byte at `i`, or 0 for an index that is not within the string.
    QORChar operator[](int i) const;
    /// `strcmp` with `s`; a null `s` gives the first byte as a signed number.
    int Compare(const char* s) const;
    /// `strcmp` with `s`.
    int Compare(const QORString& s) const;
    /// Compare().
    int compare(const char* s) const;
    /// Compare().
    int compare(const QORString& s) const;
    /// 1 for identical bytes, 2 for bytes that differ only by `tolower`, otherwise 0. Deliberately not the codes of
    /// QORUnicodeString::Compare().
    int CompareByCase(const QORString& s) const;
    /// CompareByCase().
    int equal(const QORString& s) const;
    // By the sign of Compare().
    bool operator==(const char* s) const;
    bool operator!=(const char* s) const;
    bool operator<(const char* s) const;
    bool operator<=(const char* s) const;
    bool operator>(const char* s) const;
    bool operator>=(const char* s) const;
    bool operator==(const QORString& s) const;
    bool operator!=(const QORString& s) const;
    bool operator<(const QORString& s) const;
    bool operator<=(const QORString& s) const;
    bool operator>(const QORString& s) const;
    bool operator>=(const QORString& s) const;
    /// The first position of `what` at or behind `start`, or -1. An empty `what` is found at `start`, which may be the
    /// length.
    int FindPosition(const QORString& what, int start) const;
    /// FindPosition().
    int index(const QORString& what, int start) const;
    /// The `count` bytes from `start` on. Deliberately the whole string when it is empty, when `count` is 0 and when
    /// the range is not within the string.
    QORString SubString(unsigned long start, unsigned long count) const;
    /// The text without `c` where `mode` says; see ::QORStripMode.
    QORString Strip(QORStripMode mode, QORChar c) const;
    /// Strip() of leading bytes.
    QORString strip(char c) const;

    /// Appends `s`. Null, "" and text that the check refuses change nothing.
    QORString& operator+=(const char* s);
    /// Appends `s`. A string on the empty block shares the block of `s`.
    QORString& operator+=(const QORString& s);
    /// Appends `s`, as the operator does.
    QORString& Append(const QORString& s);
    /// Appends a byte, whatever it is.
    QORString& operator+=(QORChar const& c);
    // Append the number in decimal digits.
    QORString& operator+=(int number);
    QORString& operator+=(unsigned int number);
    QORString& operator+=(long number);
    QORString& operator+=(unsigned long number);
    QORString& operator+=(long long number);
    QORString& operator+=(unsigned long long number);
    /// The joined text.
    QORString operator+(const char* s) const;
    /// The joined text.
    QORString operator+(const QORString& s) const;
    /// Gives the text a length of `n` bytes, filled with `fill`. 0 for `truncate` keeps a longer text.
    QORString& Resize(int n, QORChar fill, int truncate);
    /// Resize().
    QORString& pad(int n, char fill, int truncate);
    /// Replaces the `count` bytes at `pos` by `s`. Negative numbers, a `pos` behind the end and an empty string change
    /// nothing; a range that goes beyond the end ends there.
    QORString& ReplaceSubString(int pos, int count, const QORString& s);
    /// Replaces the `count` bytes at `pos` by `newCount` bytes: those of `s`, cut or filled up with spaces.
    QORString& ReplaceSubString(int pos, int count, const QORString& s, int newCount);
    /// Replaces the first occurrence of `what`. @return Its position, or -1 when there is none.
    int ReplaceSubString(const QORString& what, const QORString& with);
    /// ReplaceSubString().
    QORString& replace(int pos, int count, const QORString& s);
    /// ReplaceSubString().
    int replace(const QORString& what, const QORString& with);
    /// Removes the `count` bytes at `pos`.
    QORString& Remove(int pos, int count);
    /// Remove().
    QORString& remove(int pos, int count);
    /// Inserts `s` in front of the byte at `pos`, which may be the length. Nothing is inserted into an empty string.
    QORString& Insert(int pos, const QORString& s);
    /// Insert().
    QORString& insert(int pos, const QORString& s);
    /// As QORUnicodeString::ToUpper().
    QORString& ToUpper();
    /// As QORUnicodeString::ToLower().
    QORString& ToLower();
    /// ToUpper().
    QORString& toUpper();
    /// ToLower().
    QORString& toLower();
    /// Reads a line, as QORUnicodeString::BuildFromStream(), in pieces of 79 bytes. A piece that the check refuses is
    /// left out on its own. @return `in`.
    std::istream& ReadLine(std::istream& in, int skipWhite);

private:
    friend struct VEL::internal::StringAccess;

    void _ReportNullHandle() const;
    /// The handle, which is never null from here on.
    char* _Repaired() const noexcept {
        if (_text == nullptr) {
            _text = VEL::internal::EmptyHandle();
        }
        return _text;
    }
    QORSYSTS_PRIVATE void _Prepare() const;

    mutable char* _text; ///< The first text unit of the block.
};

static_assert(sizeof(QORString) == sizeof(char*));

/// The joined text; a copy of `b` when `a` is null, "" or refused by the check.
QORSYSTS_EXPORT QORString operator+(const char* a, const QORString& b);

/// Inserts the text.
QORSYSTS_EXPORT std::ostream& operator<<(std::ostream& out, const QORString& s);

/// Puts UTF-8 into a narrow string: the one way in without a check. Null arguments change nothing.
/// @return 0, or VEL::StatusFailure when `text` is "".
QORSYSTS_EXPORT int QORSysUTF8Str(QORString* s, char* text);
