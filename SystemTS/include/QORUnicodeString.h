/// @file
/// The string class of the whole system.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

#include <iosfwd>

class QORUnicodeChar;

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
    /// Which way a search goes. Every value but Forward goes backward.
    enum QORSearchMode {
        QORSearchModeForward = 1,
        QORSearchModeBackward = 2,
    };

    /// What Strip() takes away. Other values take nothing.
    enum QORStripMode {
        QORStripModeLeading = 1,
        QORStripModeTrailing = 2,
        QORStripModeBoth = 3,
        QORStripModeAll = 4, ///< Every occurrence, wherever it stands.
    };

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
    /// `n` copies of a character, wide. A character above U+FFFF takes two units a copy. An `n` or a code of 0 gives an
    /// empty string.
    QORUnicodeString(const QORUnicodeChar& c, unsigned long n);
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
    /// Takes a counted wide text: 32-bit elements with their size in bytes, 32 bits, in front of the pointer. Each
    /// element is cut to 16 bits. Null resets the string.
    /// @return 0; -1 for null, for a null handle, and when there was text but the string is left on the empty block.
    int BuildFromBSTR(wchar_t* const& s);
    /// Takes a string literal of an exchange file (ISO 10303-21): a text in double quotes, one unit a byte, or
    /// hexadecimal units behind `\X2\` (4 digits each) or `\X4\` (8 digits, cut to 16 bits with a report on standard
    /// error). Deliberately, bytes of 0x80 and above are sign-extended, so they don't come back as ConvertToSTEP()
    /// wrote them.
    /// @return 0; -1 for null, which resets the string; -1 for digits that can't be read, which leave it empty; -1 for
    /// anything else, which leaves it unchanged.
    int BuildFromSTEP(const char* s);
    /// Takes a number as `sprintf` writes it under the C locale of the thread, as narrow text.
    ///
    /// Text of 48 bytes or more, of 400 for a `double` and a `long double`, is cut to one byte less. Exactly "%d" for a
    /// `long` counts as "%ld", and exactly "%u" for an `unsigned long` as "%lu".
    /// @param format  Takes this one number.
    /// @return As `sprintf`, the full length for text that is cut; -1 for null. A result below 1 leaves the string
    /// unchanged.
    int BuildFromNum(int value, const char* format = "%d");
    int BuildFromNum(unsigned int value, const char* format = "%u");
    int BuildFromNum(long value, const char* format = "%d");
    int BuildFromNum(unsigned long value, const char* format = "%u");
    int BuildFromNum(long long value, const char* format = "%lld");
    int BuildFromNum(unsigned long long value, const char* format = "%llu");
    int BuildFromNum(double value, const char* format);
    int BuildFromNum(long double value, const char* format);
    /// As BuildFromNum(), but every format is taken as it is.
    int ConvertNumToString(int value, const char* format);
    int ConvertNumToString(long value, const char* format);
    int ConvertNumToString(unsigned long value, const char* format);
    int ConvertNumToString(double value, const char* format);
    int ConvertNumToString(long double value, const char* format);
    /// Takes one line of narrow text and consumes its line feed.
    /// @param skipWhite  Pass over white space in front, line feeds too, unless 0.
    /// @return `in`.
    std::istream& BuildFromStream(std::istream& in, int skipWhite);

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
    /// Gives the text as counted wide text, one 32-bit element a unit; see BuildFromBSTR().
    /// @param out  Receives the text, or null when there is no memory. The caller calls `free` on the block, which
    /// starts
    ///             4 bytes in front of the text.
    /// @return 0.
    int ConvertToBSTR(wchar_t** out) const;
    /// Writes the text as a string literal of an exchange file, zero-terminated: `\X2\` and 4 digits a unit when a unit
    /// is above 0xFF, otherwise one byte a unit in double quotes, which are not escaped inside. A null handle writes
    /// nothing.
    /// @param out  Target of at least 4 bytes for each unit plus 5.
    /// @return 0.
    int ConvertToSTEP(char* out) const;
    /// Reads a number from ConvertToChar() as `sscanf` does, under the C locale of the thread. VEL::ConvertToNumEx() is
    /// the one that doesn't depend on it. Exactly "%d" for a `long` counts as "%ld", and exactly "%u" for an `unsigned
    /// long` as "%lu".
    /// @param format  Stores one number of this type.
    /// @return As `sscanf`: 1 for a number; 0 or `EOF`, with `value` left alone, for none; `EOF` for null.
    int ConvertToNum(int* value, const char* format = "%d") const;
    int ConvertToNum(unsigned int* value, const char* format = "%u") const;
    int ConvertToNum(long* value, const char* format = "%d") const;
    int ConvertToNum(unsigned long* value, const char* format = "%u") const;
    int ConvertToNum(long long* value, const char* format = "%lld") const;
    int ConvertToNum(unsigned long long* value, const char* format = "%llu") const;
    int ConvertToNum(double* value, const char* format) const;
    int ConvertToNum(long double* value, const char* format) const;

    /// Length in UTF-16 units; builds the UTF-16 view of a narrow string.
    int GetLengthInChar() const;
    /// Length in bytes of the environment's code page; builds the multi-byte view of a wide string.
    int GetLengthInByte() const;
    /// True for a string without text and for a null handle.
    QORSYSTS_INLINE bool IsEmpty() const { return _text == nullptr || VEL::internal::TextLength(_text) == 0; }
    /// The code point that starts at unit `i`: a high surrogate is joined with the unit behind it, and the index of
    /// that unit gives the unit by itself. Code 0 beyond the end and for a null handle.
    QORUnicodeChar operator[](unsigned long i) const;
    /// The hash of the text, 31 bits: equal text has an equal hash whatever its representation, but for narrow text
    /// that ends inside a character. A null handle has 0.
    unsigned int ComputeHashKey() const;
    /// A static block of 16 zero bytes.
    static const void* ClassId();

    /// Empties the string; the block is given up.
    void Reset();
    /// Gives the text a length of `n` units, wide. A string that already has that length stays as it is.
    /// @param n         Below 1 resets the string.
    /// @param fill      Fills a longer string. A pair is never split, so the string may end one unit short of `n`.
    /// @param truncate  0 keeps a longer text.
    QORUnicodeString& Resize(int n, const QORUnicodeChar& fill, int truncate);
    /// Resize() that fills with spaces and truncates.
    QORUnicodeString& Resize(int n);
    /// Appends the text of `s`, which may be this string. Narrow while both are, otherwise wide. A null handle on
    /// either side leaves the string as it is.
    QORSYSTS_INLINE QORUnicodeString& Append(const QORUnicodeString& s) {
        return VEL::internal::AppendShortText(_text, s._text) ? *this : _AppendText(s);
    }
    /// Append().
    QORSYSTS_INLINE QORUnicodeString& operator+=(const QORUnicodeString& s) { return Append(s); }
    /// Appends a character; the string becomes wide.
    QORUnicodeString& operator+=(const QORUnicodeChar& c);
    /// The joined text.
    QORUnicodeString operator+(const QORUnicodeString& s) const;
    /// The joined text.
    QORUnicodeString operator+(const char* s) const;
    /// Replaces the `count` units at `pos` by the first `newCount` units of `s`, filled up with spaces when `s` is
    /// shorter. The string becomes wide. A range that is not within the string changes nothing.
    QORUnicodeString& ReplaceSubString(int pos, int count, const QORUnicodeString& s, int newCount);
    /// Replaces the `count` units at `pos` by `s`.
    QORUnicodeString& ReplaceSubString(int pos, int count, const QORUnicodeString& s);
    /// Replaces the first occurrence of `what`. @return Its position, or -1 when there is none.
    int ReplaceSubString(const QORUnicodeString& what, const QORUnicodeString& with);
    /// Replaces all occurrences of `what` that don't overlap, from left to right. Narrow when all three strings are,
    /// otherwise wide. An empty `what` and no occurrence change nothing.
    QORUnicodeString& ReplaceAll(const QORUnicodeString& what, const QORUnicodeString& with);
    /// Removes the `count` units at `pos`, as ReplaceSubString() does.
    QORUnicodeString& Remove(int pos, int count);
    /// Inserts `s` in front of the unit at `pos`, which may be the length.
    QORUnicodeString& Insert(int pos, const QORUnicodeString& s);
    /// The `count` units from `start` on, wide. Empty when any of them is not within the string: nothing is clipped.
    QORUnicodeString SubString(int start, int count) const;
    /// The text without `c` where `mode` says; see ::QORStripMode. A string on which nothing has to be done shares its
    /// block. A code of 0 strips nothing.
    QORUnicodeString Strip(QORStripMode mode, const QORUnicodeChar& c) const;
    /// Strip() of spaces.
    QORUnicodeString Strip(QORStripMode mode) const;
    /// Turns letters to upper case: ASCII by its own rule, all others by the C locale in force. Main representation and
    /// unit count stay where the mapping keeps them; a text already in upper case keeps its block.
    QORUnicodeString& ToUpper();
    /// Turns letters to lower case, as ToUpper().
    QORUnicodeString& ToLower();

    /// Searches `what` in UTF-16 units.
    /// @param start  First position to try; in a backward search the units to keep away from the end.
    /// @return The position, or -1: also for an empty `what`, a null handle, and a `start` that is not within the
    /// string.
    int SearchSubString(const QORUnicodeString& what, int start, QORSearchMode mode) const;
    /// SearchSubString() forward.
    int FindPosition(const QORUnicodeString& what, int start) const;
    /// 2 for identical texts, 1 for texts that differ only in case, otherwise 0. Not an ordering.
    int Compare(const QORUnicodeString& other) const;
    /// An ordering without a locale: of the bytes when both strings are narrow, otherwise of the UTF-16 units, up to
    /// the first zero unit.
    /// @param mode  Bit value 1 orders two narrow strings by their units, too.
    /// @return Below, equal to or above 0; -1 for a null handle here, 1 for one in `other`.
    int SortCompare(const QORUnicodeString& other, int mode) const;
    /// SortCompare() with a `mode` of 0.
    QORSYSTS_INLINE int SortCompare(const QORUnicodeString& other) const {
        return VEL::internal::OrderTexts(_text, other._text);
    }
    // By the sign of SortCompare().
    QORSYSTS_INLINE bool operator<(const QORUnicodeString& other) const { return SortCompare(other) < 0; }
    QORSYSTS_INLINE bool operator<=(const QORUnicodeString& other) const { return SortCompare(other) <= 0; }
    QORSYSTS_INLINE bool operator>(const QORUnicodeString& other) const { return SortCompare(other) > 0; }
    QORSYSTS_INLINE bool operator>=(const QORUnicodeString& other) const { return SortCompare(other) >= 0; }
    /// Equality of text, whatever the representation. A null handle equals nothing but another one.
    QORSYSTS_INLINE bool operator==(const QORUnicodeString& other) const {
        return VEL::internal::AreEqualTexts(_text, other._text);
    }
    QORSYSTS_INLINE bool operator!=(const QORUnicodeString& other) const { return !(*this == other); }
    /// Equality with narrow text; null and "" equal an empty string.
    bool operator==(const char* s) const;
    bool operator!=(const char* s) const;
    /// Matches the whole string with `pattern`. Case counts.
    /// @param wild   Stands for any run of units in the pattern, an empty one too.
    /// @param quote  Encloses what is to be taken literally. Deliberately asymmetric: once a pattern holds a quote, the
    ///               wild character is looked for in this string, and inside of it quotes are always apostrophes.
    bool WildMatch(const QORUnicodeString& pattern, const QORUnicodeChar& wild, const QORUnicodeChar& quote) const;

private:
    friend struct VEL::internal::StringAccess;

    QORUnicodeString& _AppendText(const QORUnicodeString& s);

    char* _text; ///< The first text unit of the block.
};

static_assert(sizeof(QORUnicodeString) == sizeof(char*));

/// The joined text.
QORSYSTS_EXPORT QORUnicodeString operator+(const char* a, const QORUnicodeString& b);

/// An ordering for sort functions. @return 0 when equal, -1 when `a` is less than `b`, otherwise 1.
QORSYSTS_EXPORT int VELSysCompareUnicodeStrings(QORUnicodeString& a, QORUnicodeString& b);

/// The same for pointers. @return When either is null: 0 when both are, otherwise 1.
QORSYSTS_EXPORT int VELSysCmpUnicodeStrings(QORUnicodeString* a, QORUnicodeString* b);
