/// @file
/// One byte of a narrow string.
#pragma once

#include "QORSysTSExport.h"
#include "VELStringHandle.h"

#include <iosfwd>

/// A byte as an object: what QORString takes and gives for a single character.
class QORSYSTS_EXPORT QORChar {
public:
    /// Holds 0.
    QORSYSTS_INLINE QORChar() noexcept : _char(0) {}
    QORSYSTS_INLINE QORChar(char c) noexcept : _char(c) {}
    QORSYSTS_INLINE QORChar(const QORChar& c) noexcept : _char(c._char) {}
    virtual ~QORChar();

    QORSYSTS_INLINE QORChar& operator=(char c) noexcept {
        _char = c;
        return *this;
    }
    QORSYSTS_INLINE QORChar& operator=(const QORChar& c) noexcept {
        _char = c._char;
        return *this;
    }

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
    /// The byte. The `const` does nothing, but it belongs to the name in the binary interface.
    // NOLINTNEXTLINE(readability-const-return-type)
    QORSYSTS_INLINE operator const char() const noexcept {
        return _char;
    }
#pragma GCC diagnostic pop

private:
    char _char;
};

static_assert(sizeof(QORChar) == 16);

// The bytes are compared as signed characters.
QORSYSTS_EXPORT bool operator==(const QORChar& a, const QORChar& b);
QORSYSTS_EXPORT bool operator!=(const QORChar& a, const QORChar& b);
QORSYSTS_EXPORT bool operator<(const QORChar& a, const QORChar& b);
QORSYSTS_EXPORT bool operator<=(const QORChar& a, const QORChar& b);
QORSYSTS_EXPORT bool operator>(const QORChar& a, const QORChar& b);
QORSYSTS_EXPORT bool operator>=(const QORChar& a, const QORChar& b);

/// Inserts the byte.
QORSYSTS_EXPORT std::ostream& operator<<(std::ostream& out, const QORChar& c);
