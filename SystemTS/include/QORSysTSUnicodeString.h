/// @file
/// The string of the library's thread-safe interfaces.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

#include <new>

class QORSysTSVectorOfUnicodeString;

/// Unicode text with the operation set of the thread-safe interfaces: the same handle, block and guarantees as
/// QORUnicodeString, no implicit conversion to pointers, failures as status codes, ranges by start and end.
class QORSYSTS_EXPORT QORSysTSUnicodeString {
public:
    /// Empty, without an allocation.
    QORSYSTS_INLINE QORSysTSUnicodeString() noexcept : _text(VEL::internal::EmptyHandle()) {}
    /// Shares the block. A copy of a null handle is a null handle.
    QORSYSTS_INLINE QORSysTSUnicodeString(const QORSysTSUnicodeString& s) noexcept : _text(s._text) {
        VEL::internal::AddHandle(_text);
    }
    /// Takes the block; `s` is empty afterwards.
    QORSYSTS_INLINE QORSysTSUnicodeString(QORSysTSUnicodeString&& s) noexcept : _text(s._text) {
        s._text = VEL::internal::EmptyHandle();
    }
    /// Narrow text up to the terminator, stored as it is. Null gives an empty string.
    QORSysTSUnicodeString(const char* s);
    /// 32-bit wide text up to the terminator. Null gives an empty string.
    QORSysTSUnicodeString(const wchar_t* s);
    /// `n` UTF-16 units; null counts as none.
    QORSysTSUnicodeString(const unsigned short* s, int n);
    /// SubString() of `s`.
    QORSysTSUnicodeString(const QORSysTSUnicodeString& s, int start, int end);
    /// Gives the block up and leaves a null handle.
    QORSYSTS_INLINE ~QORSysTSUnicodeString() {
        VEL::internal::DropHandle(_text);
        VEL::internal::ClearHandle(_text);
    }

    /// Shares the block of `s`. Two strings on one block stay as they are.
    QORSYSTS_INLINE QORSysTSUnicodeString& operator=(const QORSysTSUnicodeString& s) noexcept {
        if (_text != s._text) {
            char* const text = s._text;
            VEL::internal::AddHandle(text);
            VEL::internal::DropHandle(_text);
            _text = text;
        }
        return *this;
    }
    /// Takes the block of `s`, which is empty afterwards. Moving a string to itself changes nothing.
    QORSYSTS_INLINE QORSysTSUnicodeString& operator=(QORSysTSUnicodeString&& s) noexcept {
        if (this != &s) {
            char* const text = s._text;
            s._text = VEL::internal::EmptyHandle();
            VEL::internal::DropHandle(_text);
            _text = text;
        }
        return *this;
    }
    /// Takes narrow text up to the terminator. With a null handle nothing happens. Null text gives an empty string and
    /// deliberately keeps the count of the block held before, which is never freed then.
    QORSysTSUnicodeString& operator=(const char* s);
    /// Takes 32-bit wide text up to the terminator.
    QORSysTSUnicodeString& operator=(const wchar_t* s);

    /// Takes `n` UTF-16 units, in the present block where that is wide, large enough and held alone; null counts as
    /// none. @return 0, or VEL::StatusFailure when the string is left on the empty block.
    int BuildFromUCChar(const unsigned short* s, int n);
    /// As QORUnicodeString::BuildFromUTF8(). @return 0.
    int BuildFromUTF8(const char* s, unsigned long n);
    /// As QORUnicodeString::BuildFromNum(), but with a null handle nothing is stored. @return 0, or VEL::StatusFailure
    /// when nothing was written.
    int BuildFromNum(int value, const char* format = "%d");

    /// As QORUnicodeString::ConvertToChar().
    const char* ConvertToChar() const;
    /// As QORUnicodeString::ConvertToUCChar().
    const unsigned short* ConvertToUCChar() const;
    /// As QORUnicodeString::ConvertToUTF8().
    int ConvertToUTF8(char* out, unsigned long* n) const;
    /// As QORUnicodeString::ConvertToNum(). @return 0, or VEL::StatusFailure when no number was read.
    int ConvertToNum(int& value, const char* format = "%d") const;
    /// Length in UTF-16 units.
    int GetLengthInChar() const;
    /// Length in bytes of the environment's code page.
    int GetLengthInByte() const;
    /// The UTF-16 text; `byteCount` receives twice its length.
    const unsigned short* GetBinDump(unsigned int& byteCount) const;
    /// The hash of the text, as QORUnicodeString::ComputeHashKey().
    unsigned int HashFunc() const;

    /// Appends the text of `s`, as QORUnicodeString::Append().
    QORSYSTS_INLINE QORSysTSUnicodeString& Append(const QORSysTSUnicodeString& s) {
        return VEL::internal::AppendShortText(_text, s._text) ? *this : _AppendText(s);
    }
    /// Appends several texts at once, in the main representation of this string: to a narrow string, a wide text is
    /// appended as narrow text.
    QORSysTSUnicodeString& Append(const QORSysTSUnicodeString& a, const QORSysTSUnicodeString& b);
    QORSysTSUnicodeString& Append(const QORSysTSUnicodeString& a, const QORSysTSUnicodeString& b,
                                  const QORSysTSUnicodeString& c);
    /// Appends what stands in `s` from `start` up to but not including `end`: units, or bytes when this string is
    /// narrow. An empty string becomes `s.SubString(start, end)`. A range that is empty or not within `s` appends
    /// nothing.
    QORSysTSUnicodeString& Append(const QORSysTSUnicodeString& s, int start, int end);
    /// Inserts `s` in front of the unit at `pos`. @return As ReplaceRange().
    int Insert(int pos, const QORSysTSUnicodeString& s);
    /// Inserts what stands in `s` from `start` up to but not including `end`. `pos` is measured in the units of the
    /// main representation, and must be one of UTF-16 too for anything to happen. @return 0, or VEL::StatusFailure for
    /// a `pos` that is not within the string and for a range that is not within `s` or is empty.
    int Insert(int pos, const QORSysTSUnicodeString& s, int start, int end);
    /// Replaces the units from `start` up to but not including `end` by `s`; the string becomes wide. @return 0, or
    /// VEL::StatusFailure for a null handle or a range that is not within the string, which change nothing.
    int ReplaceRange(int start, int end, const QORSysTSUnicodeString& s);
    /// Replaces the first occurrence of `what` at or behind `start`. @return Its position, or -1 when there is none.
    int ReplaceSubString(const QORSysTSUnicodeString& what, const QORSysTSUnicodeString& with, int start);
    /// Replaces all occurrences of `what` that don't overlap, from left to right; the string becomes wide. An empty
    /// `what` and no occurrence change nothing.
    QORSysTSUnicodeString& ReplaceAll(const QORSysTSUnicodeString& what, const QORSysTSUnicodeString& with);
    /// The units from `start` up to but not including `end`, wide. Empty when the range is not within the string;
    /// deliberately, the length of a narrow string counts in bytes there.
    QORSysTSUnicodeString SubString(int start, int end) const;
    /// The position of `what` at or behind `start`, or -1; also for an empty `what`, a null handle and a `start` that
    /// is not within the string.
    int SearchSubString(const QORSysTSUnicodeString& what, int start) const;
    /// The last position of `what` that ends at least `start` units in front of the end, or -1.
    int SearchSubStringBackward(const QORSysTSUnicodeString& what, int start) const;
    /// True when `what` stands at `pos`. An empty `what` stands everywhere within the string.
    bool IsSubStringAt(int pos, const QORSysTSUnicodeString& what) const;
    /// The pieces between occurrences of `separator`, as VEL::Split(). `out` is cleared first.
    void Split(const QORSysTSUnicodeString& separator, QORSysTSVectorOfUnicodeString& out) const;
    /// As QORUnicodeString::ToUpper().
    QORSysTSUnicodeString& ToUpper();
    /// As QORUnicodeString::ToLower().
    QORSysTSUnicodeString& ToLower();
    /// Makes room for `n` units of the main representation, as before several calls of Append(). An `n` below 1 resets
    /// the string.
    void SetCapacity(int n);
    /// An ordering of the texts in the environment's code page, by their bytes.
    /// @param ignoreCase  0: as `strcmp`; otherwise as `strcasecmp`.
    int Compare(const QORSysTSUnicodeString& other, unsigned char ignoreCase) const;
    // Equality and ordering as of QORUnicodeString.
    QORSYSTS_INLINE bool operator==(const QORSysTSUnicodeString& other) const {
        return VEL::internal::AreEqualTexts(_text, other._text);
    }
    QORSYSTS_INLINE bool operator!=(const QORSysTSUnicodeString& other) const { return !(*this == other); }
    QORSYSTS_INLINE bool operator<(const QORSysTSUnicodeString& other) const {
        return VEL::internal::OrderTexts(_text, other._text) < 0;
    }
    QORSYSTS_INLINE bool operator<=(const QORSysTSUnicodeString& other) const {
        return VEL::internal::OrderTexts(_text, other._text) <= 0;
    }
    QORSYSTS_INLINE bool operator>(const QORSysTSUnicodeString& other) const {
        return VEL::internal::OrderTexts(_text, other._text) > 0;
    }
    QORSYSTS_INLINE bool operator>=(const QORSysTSUnicodeString& other) const {
        return VEL::internal::OrderTexts(_text, other._text) >= 0;
    }

    /// Builds in storage that the caller provides, as the generated containers do.
    QORSYSTS_INLINE static void* operator new(unsigned long, void* where) noexcept { return where; }
    /// Matches the placement form; does nothing.
    QORSYSTS_INLINE static void operator delete(void*, void*) noexcept {}
    // The ordinary forms, which the placement forms would hide.
    static void* operator new(unsigned long size) { return ::operator new(size); }
    static void operator delete(void* memory) noexcept { ::operator delete(memory); }

private:
    friend struct VEL::internal::StringAccess;

    QORSysTSUnicodeString& _AppendText(const QORSysTSUnicodeString& s);

    char* _text; ///< The first text unit of the block.
};

static_assert(sizeof(QORSysTSUnicodeString) == sizeof(char*));
