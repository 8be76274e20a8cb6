/// @file
/// The pieces of a text between delimiters.
#pragma once

#include "QORSysTSExport.h"
#include "QORUnicodeString.h"

/// Walks through a text and hands out what stands between delimiters.
///
/// A delimiter is one UTF-16 unit of a set that each call gives. It is passed over by the call that follows the token
/// in front of it. When empty tokens are kept, "a,,b" gives "a", "" and "b", and "a," gives "a" and ""; a delimiter at
/// the very start of the text gives no empty token.
///
/// @code
/// QORToken words(line, 0);
/// unsigned char found = 0;
/// for (QORUnicodeString word = words.GetNextToken(&found); found; word = words.GetNextToken(&found)) {
///     Take(word);
/// }
/// @endcode
class QORSYSTS_EXPORT QORToken {
public:
    /// Starts at the beginning of `text`, whose block it shares.
    /// @param keepEmpty  0: a run of delimiters counts as one. Otherwise each delimiter ends a token.
    QORToken(const QORUnicodeString& text, unsigned char keepEmpty);
    virtual ~QORToken();

    /// Goes back to the beginning of the text.
    void Reset();
    /// The next token, wide; an empty string when the text is used up.
    /// @param delimiters  The units that delimit; an empty set gives all that is left.
    /// @param found       Receives 1 for a token and 0 when the text is used up, unless null.
    QORUnicodeString GetNextToken(const QORUnicodeString& delimiters, unsigned char* found);
    /// The next token delimited by space, tab and line feed.
    QORUnicodeString GetNextToken(unsigned char* found);

private:
    QORUnicodeString _text;
    unsigned long _position; ///< Index of the next unit to look at.
    unsigned char _keepEmpty;
};

static_assert(sizeof(QORToken) == 32);
