/// @file
/// The string for plain text: identifiers, keys, resource names.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

/// Narrow text that is meant to be plain. Always narrow, and one byte is one character: lengths and positions count
/// bytes, and nothing here decodes a code page.
///
/// While the string checks are on (the default), text with bytes that don't print is reported on standard output and
/// refused: the string is then empty. A block with wide text, which VEL::Move() or VEL::Copy() can bring, is turned
/// back into narrow text on first use, and a null handle is repaired. Both write the handle, also from `const`
/// operations, so an object that may hold such a block must not be read on two threads at once.
class QORSYSTS_EXPORT QORString {
public:
    /// Empty, without an allocation.
    QORSYSTS_INLINE QORString() noexcept : _text(VEL::internal::EmptyHandle()) {}
    /// Copies `s`. Null, "" and text that the check refuses give an empty string.
    QORString(char* s);
    /// The same for text that may not be written.
    QORString(const char* s) : QORString(const_cast<char*>(s)) {}
    /// Shares the block. A null handle is reported through VELDebugBreak(), and the copy is empty.
    QORSYSTS_INLINE QORString(const QORString& s) noexcept : _text(s._text) {
        if (_text == nullptr) {
            _ReportNullHandle();
        }
        VEL::internal::AddHandle(_text);
    }
    /// Takes the block; `s` is empty afterwards.
    QORSYSTS_INLINE QORString(QORString&& s) noexcept : _text(s._text) { s._text = VEL::internal::EmptyHandle(); }
    /// Gives the block up and leaves a null handle.
    QORSYSTS_INLINE ~QORString() {
        VEL::internal::DropHandle(_text);
        VEL::internal::ClearHandle(_text);
    }

    /// Shares the block of `s`. Two strings on one block stay as they are.
    QORSYSTS_INLINE QORString& operator=(const QORString& s) noexcept {
        if (_text != s._text) {
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
            char* const text = s._text;
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

private:
    friend struct VEL::internal::StringAccess;

    void _ReportNullHandle() const;
    QORSYSTS_PRIVATE void _Prepare() const;

    mutable char* _text; ///< The first text unit of the block.
};

static_assert(sizeof(QORString) == sizeof(char*));
