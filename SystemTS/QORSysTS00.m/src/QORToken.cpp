#include "QORToken.h"

#include "StringAccess.h"
#include "StringEdit.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <emmintrin.h>

using VEL::internal::CutText;
using VEL::internal::StringAccess;
using VEL::internal::UTF16Of;
using VEL::internal::UTF16Range;

namespace {

/// The units of a set of delimiters: ASCII as bits, all others in the text that gives them, and a set of a few units in
/// the lanes of vectors.
class DelimiterSet {
public:
    constexpr explicit DelimiterSet(UTF16Range units) : _others(units) {
        bool areAllASCII = true;
        for (int i = 0; i < units.length; ++i) {
            const unsigned int unit = units.text[i];
            if (unit < ASCIICount) {
                _ascii[unit / 64] |= std::uint64_t{1} << unit % 64;
            } else {
                areAllASCII = false;
            }
        }
        if (areAllASCII) {
            _others.length = 0;
        }
        _areFew = units.length > 0 && units.length <= FewCount;
        for (int i = 0; _areFew && i < FewCount; ++i) {
            for (unsigned short& lane : _few[i]) {
                lane = units.text[std::min(i, units.length - 1)];
            }
        }
    }

    bool Has(unsigned int unit) const {
        if (unit < ASCIICount) {
            return (_ascii[unit / 64] >> unit % 64 & 1) != 0;
        }
        const unsigned short* const end = _others.text + _others.length;
        return std::find(_others.text, end, unit) != end;
    }

    /// True when MaskOf() knows the delimiters.
    bool AreFew() const { return _areFew; }

    /// The delimiters among the first StepUnits units of a text, the first one in the lowest bit.
    unsigned int MaskOf(const unsigned short* text) const {
        return static_cast<unsigned int>(
            _mm_movemask_epi8(_mm_packs_epi16(AreDelimiters(text), AreDelimiters(text + LaneCount))));
    }

    static constexpr int LaneCount = 8;
    static constexpr int StepUnits = 2 * LaneCount;

private:
    static constexpr unsigned int ASCIICount = 128;
    static constexpr int FewCount = 4;

    __m128i AreDelimiters(const unsigned short* text) const {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
        const auto equal = [&](int i) {
            return _mm_cmpeq_epi16(units, _mm_load_si128(reinterpret_cast<const __m128i*>(_few[i])));
        };
        return _mm_or_si128(_mm_or_si128(equal(0), equal(1)), _mm_or_si128(equal(2), equal(3)));
    }

    std::uint64_t _ascii[ASCIICount / 64] = {};
    UTF16Range _others;
    bool _areFew = false;
    alignas(16) unsigned short _few[FewCount][LaneCount] = {};
};

constexpr unsigned short WhiteSpace[] = {' ', '\t', '\n'};
constexpr DelimiterSet WhiteSpaceSet(UTF16Range{WhiteSpace, 3});

const unsigned short* FindDelimiter(const unsigned short* text, const unsigned short* end,
                                    const DelimiterSet& delimiters) {
    for (; delimiters.AreFew() && end - text >= DelimiterSet::StepUnits; text += DelimiterSet::StepUnits) {
        if (const unsigned int mask = delimiters.MaskOf(text)) {
            return text + std::countr_zero(mask);
        }
    }
    return std::find_if(text, end, [&](unsigned short unit) { return delimiters.Has(unit); });
}

struct Token {
    const unsigned short* start;
    const unsigned short* end;
};

/// The first run of units that aren't delimiters; an empty one when the text has none.
Token FindRun(const unsigned short* text, const unsigned short* end, const DelimiterSet& delimiters) {
    if (delimiters.AreFew() && end - text >= DelimiterSet::StepUnits) {
        // Most runs begin and end in one step.
        const unsigned int mask = delimiters.MaskOf(text);
        const int skipped = std::countr_one(mask);
        const unsigned int rest = mask >> skipped;
        if (rest != 0) {
            return {text + skipped, text + skipped + std::countr_zero(rest)};
        }
        text += skipped;
    }
    const auto* const start = std::find_if_not(text, end, [&](unsigned short unit) { return delimiters.Has(unit); });
    return {start, FindDelimiter(start, end, delimiters)};
}

/// Where each delimiter ends a token: the first one, when the text starts with a delimiter, is passed over.
Token FindPiece(const unsigned short* text, const unsigned short* end, const DelimiterSet& delimiters) {
    const unsigned short* const start = delimiters.Has(*text) ? text + 1 : text;
    return {start, FindDelimiter(start, end, delimiters)};
}

QORUnicodeString TakeToken(const QORUnicodeString& s, const DelimiterSet& delimiters, bool keepEmpty,
                           unsigned long& position, unsigned char* found) {
    const UTF16Range text = UTF16Of(StringAccess::BlockOf(s));
    const auto length = static_cast<unsigned long>(text.length);
    bool isFound = position < length;
    Token token{};
    if (isFound) {
        const unsigned short* const end = text.text + length;
        token = keepEmpty ? FindPiece(text.text + position, end, delimiters)
                          : FindRun(text.text + position, end, delimiters);
        isFound = keepEmpty || token.start != end;
        // The delimiter behind the token is left for the next call.
        position = static_cast<unsigned long>(token.end - text.text);
    }
    if (found != nullptr) {
        *found = isFound ? 1 : 0;
    }
    if (!isFound) {
        return {};
    }
    return StringAccess::Make<QORUnicodeString>(
        CutText(text, static_cast<int>(token.start - text.text), static_cast<int>(token.end - token.start)));
}

} // namespace

QORToken::QORToken(const QORUnicodeString& text, unsigned char keepEmpty)
    : _text(text), _position(0), _keepEmpty(keepEmpty) {}

QORToken::~QORToken() = default;

void QORToken::Reset() {
    _position = 0;
}

QORUnicodeString QORToken::GetNextToken(const QORUnicodeString& delimiters, unsigned char* found) {
    const auto block = StringAccess::BlockOf(delimiters);
    const UTF16Range units = UTF16Of(block);
    if (VEL::internal::IsMissing(block, units)) {
        // Without memory for the delimiters there is no token, and the position stays.
        if (found != nullptr) {
            *found = 0;
        }
        return {};
    }
    return TakeToken(_text, DelimiterSet(units), _keepEmpty != 0, _position, found);
}

QORUnicodeString QORToken::GetNextToken(unsigned char* found) {
    return TakeToken(_text, WhiteSpaceSet, _keepEmpty != 0, _position, found);
}
