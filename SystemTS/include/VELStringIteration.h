/// @file
/// Walking and converting text of unknown encoding: the layer on which generic code stands.
#pragma once

#include "QORSysTSExport.h"

#include <cstdlib>
#include <iosfwd>

class QORUnicodeChar;
class QORUnicodeString;

namespace VEL::internal {

/// Tells code that iterates which text it walks.
enum SType : int {
    STypeNarrow = 1,
    STypeWide = 2,
};

/// Scratch storage of elements, in place as long as `N` are enough.
template <class T, unsigned long N>
class OptimizedBuffer {
public:
    OptimizedBuffer() = default;
    OptimizedBuffer(const OptimizedBuffer&) = delete;
    OptimizedBuffer& operator=(const OptimizedBuffer&) = delete;
    ~OptimizedBuffer() {
        if (_storage != _inline) {
            std::free(_storage);
        }
    }

    /// Makes room for `count` elements. What is stored stays. @return The storage, or null without memory.
    T* Reserve(unsigned long count) {
        if (count <= _reserved) {
            return _storage;
        }
        if (count > static_cast<unsigned long>(-1) / sizeof(T)) {
            return nullptr;
        }
        const bool isInline = _storage == _inline;
        void* const memory = std::realloc(isInline ? nullptr : static_cast<void*>(_storage), count * sizeof(T));
        if (memory == nullptr) {
            return nullptr;
        }
        _storage = static_cast<T*>(memory);
        if (isInline) {
            for (unsigned long i = 0; i < N; ++i) {
                _storage[i] = _inline[i];
            }
        }
        _reserved = count;
        return _storage;
    }

    /// The storage in use.
    T* Data() { return _storage; }
    /// Elements that the storage holds.
    unsigned long Capacity() const { return _reserved; }

private:
    T _inline[N] = {};
    T* _storage = _inline;
    unsigned long _reserved = N;
};

static_assert(sizeof(OptimizedBuffer<char, 32>) == 48);
static_assert(sizeof(OptimizedBuffer<unsigned short, 16>) == 48);
static_assert(sizeof(OptimizedBuffer<unsigned int, 8>) == 48);

/// The first unit of the text of `s` as it is held: `t` says whether `p` points to bytes or to UTF-16 units.
QORSYSTS_EXPORT void _GetIteratorBegin(const QORUnicodeString& s, const void*& p, SType& t);
/// The place behind the last unit.
QORSYSTS_EXPORT void _GetIteratorEnd(const QORUnicodeString& s, const void*& p, SType& t);

// One character of zero-terminated UTF-16. A high surrogate is joined with the unit behind it, whatever that is, unless
// it is the terminator. The result is the number of units taken.

/// Gives the code point.
QORSYSTS_EXPORT int _GetNext(unsigned int& out, const unsigned short* p);
/// Gives the UTF-8 bytes, at most 4, and a terminator.
QORSYSTS_EXPORT int _GetNext(char* out, const unsigned short* p);
/// Gives the units, at most 2, and a terminator.
QORSYSTS_EXPORT int _GetNext(unsigned short* out, const unsigned short* p);
/// One character of zero-terminated UTF-8, judged by its first byte alone: copies its bytes and a terminator.
/// @return The number of bytes, which never goes beyond the terminator.
QORSYSTS_EXPORT int _GetNext(char* out, const char* p);

// One character of zero-terminated text in the environment's code page. The result is the number of bytes taken, at
// least 1.

/// Gives the code point.
QORSYSTS_EXPORT int _GetNextMbcs(unsigned int& out, const char* p);
/// Gives the UTF-8 bytes, at most 4, and a terminator.
QORSYSTS_EXPORT int _GetNextMbcs(char* out, const char* p);
/// Gives the units, at most 2, and a terminator.
QORSYSTS_EXPORT int _GetNextMbcs(unsigned short* out, const char* p);

} // namespace VEL::internal

namespace VEL::UCS::internal {

using VEL::internal::OptimizedBuffer;

// The text of `s` in a wanted encoding: `out` points to it, zero-terminated, and `n` is its length. It lies in the
// string as far as it lies ready there, otherwise in `buffer`. Without memory `out` is null and `n` 0.

/// As UTF-8.
QORSYSTS_EXPORT void _GetStringAs(const char*& out, unsigned int& n, const QORUnicodeString& s,
                                  OptimizedBuffer<char, 32>& buffer);
/// As UTF-16; never in the buffer.
QORSYSTS_EXPORT void _GetStringAs(const unsigned short*& out, unsigned int& n, const QORUnicodeString& s,
                                  OptimizedBuffer<unsigned short, 16>& buffer);
/// As UTF-32.
QORSYSTS_EXPORT void _GetStringAs(const unsigned int*& out, unsigned int& n, const QORUnicodeString& s,
                                  OptimizedBuffer<unsigned int, 8>& buffer);

// Narrow text of `n` bytes, or up to its terminator for an `n` of -1, in a wanted encoding: the result is
// zero-terminated, and `n` becomes its length. Without memory the result is null and `n` 0.

/// As UTF-16.
QORSYSTS_EXPORT const unsigned short* _GetStringAs(const char* s, unsigned long& n,
                                                   OptimizedBuffer<unsigned short, 16>& buffer);
/// As UTF-8; `s` itself in a UTF-8 environment.
QORSYSTS_EXPORT const char* _GetStringAs(const char* s, unsigned long& n, OptimizedBuffer<char, 32>& buffer);
/// As UTF-32.
QORSYSTS_EXPORT const unsigned int* _GetStringAs(const char* s, unsigned long& n,
                                                 OptimizedBuffer<unsigned int, 8>& buffer);

/// Inserts the UTF-8 text of `s` up to its first zero byte; sets `failbit` when there is no memory for it.
QORSYSTS_EXPORT std::ostream& StreamInsertUTF8(std::ostream& out, const QORUnicodeString& s);
/// Inserts the UTF-8 bytes of a character.
QORSYSTS_EXPORT std::ostream& StreamInsertUTF8(std::ostream& out, const QORUnicodeChar& c);

} // namespace VEL::UCS::internal
