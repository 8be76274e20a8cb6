/// @file
/// The string of the library's thread-safe interfaces.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

#include <new>

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

    /// As QORUnicodeString::ConvertToChar().
    const char* ConvertToChar() const;
    /// As QORUnicodeString::ConvertToUCChar().
    const unsigned short* ConvertToUCChar() const;
    /// As QORUnicodeString::ConvertToUTF8().
    int ConvertToUTF8(char* out, unsigned long* n) const;
    /// Length in UTF-16 units.
    int GetLengthInChar() const;
    /// Length in bytes of the environment's code page.
    int GetLengthInByte() const;
    /// The UTF-16 text; `byteCount` receives twice its length.
    const unsigned short* GetBinDump(unsigned int& byteCount) const;
    /// The hash of the text, as QORUnicodeString::ComputeHashKey().
    unsigned int HashFunc() const;

    /// Builds in storage that the caller provides, as the generated containers do.
    QORSYSTS_INLINE static void* operator new(unsigned long, void* where) noexcept { return where; }
    /// Matches the placement form; does nothing.
    QORSYSTS_INLINE static void operator delete(void*, void*) noexcept {}
    // The ordinary forms, which the placement forms would hide.
    static void* operator new(unsigned long size) { return ::operator new(size); }
    static void operator delete(void* memory) noexcept { ::operator delete(memory); }

private:
    friend struct VEL::internal::StringAccess;

    char* _text; ///< The first text unit of the block.
};

static_assert(sizeof(QORSysTSUnicodeString) == sizeof(char*));
