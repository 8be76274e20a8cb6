#include "StringCompare.h"
#include "TextScan.h"
#include "VELSysUCDecoder.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <unordered_set>
#include <vector>

namespace VEL::internal {
namespace {

constexpr unsigned short Apostrophe = u'\'';

/// Units of a text. A piece that is not wholly within it is empty.
struct Piece {
    const unsigned short* text;
    int length;

    Piece Cut(int start, int count) const {
        if (start < 0 || count < 1 || count > length - start) {
            return {text, 0};
        }
        return {text + start, count};
    }
    /// All from `start` on.
    Piece From(int start) const { return Cut(start, length - start); }

    int Find(const Piece& what, int start = 0) const {
        if (what.length == 0 || start >= length || what.length > length - start) {
            return -1;
        }
        const std::ptrdiff_t place = FindFirst(text + start, length - start, what.text, what.length);
        return place == NotFound ? -1 : start + static_cast<int>(place);
    }

    bool IsIdentical(const Piece& other) const {
        return length == other.length &&
               std::memcmp(text, other.text, static_cast<std::size_t>(length) * sizeof *text) == 0;
    }
};

/// A character as text; none for a code of 0.
struct CharacterText {
    constexpr explicit CharacterText(unsigned int code)
        : length(code == 0 ? 0 : static_cast<int>(UCS::internal::WriteUTF16(code, units) - units)) {}

    Piece AsPiece() const { return {units, length}; }

    unsigned short units[2] = {};
    int length;
};

constexpr CharacterText s_apostrophe(Apostrophe);

/// Answers, for each rest of a text, where `what` first stands outside of sections in apostrophes.
class UnquotedPlaces {
public:
    UnquotedPlaces(const Piece& text, const Piece& what)
        : _apostrophes(PlacesOf(text, s_apostrophe.AsPiece())), _places(PlacesOf(text, what)),
          _behindSection(_apostrophes.size(), -1) {
        // From the end on, so that what follows a section is known.
        for (std::size_t i = _apostrophes.size(); i-- > 0;) {
            if (i + 1 < _apostrophes.size()) {
                _behindSection[i] = FirstFrom(_apostrophes[i + 1] + 1);
            }
        }
    }

    /// The first place at or behind `start`, or -1.
    int FirstFrom(int start) const {
        const auto place = std::lower_bound(_places.begin(), _places.end(), start);
        if (place == _places.end()) {
            return -1;
        }
        const auto apostrophe = std::lower_bound(_apostrophes.begin(), _apostrophes.end(), start);
        if (apostrophe == _apostrophes.end() || *apostrophe > *place) {
            return *place;
        }
        return _behindSection[static_cast<std::size_t>(apostrophe - _apostrophes.begin())];
    }

private:
    static std::vector<int> PlacesOf(const Piece& text, const Piece& what) {
        std::vector<int> places;
        for (int place = text.Find(what); place >= 0; place = text.Find(what, place + 1)) {
            places.push_back(place);
        }
        return places;
    }

    std::vector<int> _apostrophes;
    std::vector<int> _places;
    std::vector<int> _behindSection; ///< The answer for a rest whose first apostrophe this is.
};

/// Whether `pattern` without its apostrophes is identical with `text`. A doubled apostrophe stands for one; a single
/// one that nothing closes leaves the pattern as it is, all of it.
class UnquotedText {
public:
    explicit UnquotedText(const Piece& quoted) {
        int done = 0;
        int search = 0;
        for (;;) {
            const int first = quoted.Find(s_apostrophe.AsPiece(), search);
            if (first < 0) {
                break;
            }
            const int second = quoted.Find(s_apostrophe.AsPiece(), first + 1);
            if (second < 0) {
                _text.assign(quoted.text, quoted.text + quoted.length);
                return;
            }
            const bool isDoubled = second == first + 1;
            Add(quoted, done, isDoubled ? second : first);
            if (!isDoubled) {
                Add(quoted, first + 1, second);
            }
            done = search = second + 1;
        }
        Add(quoted, done, quoted.length);
    }

    bool IsIdentical(const Piece& other) const {
        return other.IsIdentical({_text.data(), static_cast<int>(_text.size())});
    }

private:
    void Add(const Piece& from, int first, int last) { _text.insert(_text.end(), from.text + first, from.text + last); }

    std::vector<unsigned short> _text;
};

/// The matching as a search over positions: from each state, which is a rest of the text and a rest of the pattern, a
/// step gives an answer, or another state, or two of which either may match.
class WildMatcher {
public:
    WildMatcher(unsigned int wild, unsigned int quote)
        : _wildCode(wild), _wild(wild), _quote(quote),
          _isPlainWild(_wild.length == 1 && !UCS::internal::IsHighSurrogate(wild)) {}

    bool Matches(const Piece& text, const Piece& pattern);

private:
    struct State {
        Piece text;
        Piece pattern;
    };
    enum class Answer { No, Yes, GoesOn };

    Answer Step(State& state);
    Answer StepInQuotes(State& state, int quote, int wild);
    Answer StepAtWild(State& state, int wild);
    bool MatchesWithoutQuotes(const Piece& text, const Piece& pattern) const;
    bool StartsWithWild(const Piece& pattern) const;
    int FindUnquoted(const Piece& text);
    void Try(const Piece& text, const Piece& pattern) { _pending.push_back({text, pattern}); }

    unsigned int _wildCode;
    CharacterText _wild;
    CharacterText _quote;
    bool _isPlainWild; ///< A unit of the pattern tells by itself whether it is the wild character.
    Piece _text{}; ///< All of the text; what is matched is the rest of it from some place on.
    std::optional<UnquotedPlaces> _unquotedPlaces;
    std::vector<State> _pending;
};

bool WildMatcher::StartsWithWild(const Piece& pattern) const {
    if (pattern.length == 0) {
        return false;
    }
    const unsigned short* next = pattern.text;
    return UCS::internal::_DecodeUTF16Fast(next, pattern.text + pattern.length) == _wildCode;
}

/// A pattern in which the wild character occurs and no quote. Each section between two wild characters may as well
/// stand at its first place: what follows then has the most room.
bool WildMatcher::MatchesWithoutQuotes(const Piece& text, const Piece& pattern) const {
    int wild = pattern.Find(_wild.AsPiece());
    if (!pattern.Cut(0, wild).IsIdentical(text.Cut(0, wild))) {
        return false;
    }
    int place = wild;
    for (;;) {
        const int section = wild + 1;
        wild = pattern.Find(_wild.AsPiece(), section);
        if (wild < 0) {
            const Piece last = pattern.From(section);
            return last.length <= text.length - place && last.IsIdentical(text.From(text.length - last.length));
        }
        const Piece wanted = pattern.Cut(section, wild - section);
        if (wanted.length > 0) {
            place = text.Find(wanted, place);
            if (place < 0) {
                return false;
            }
            place += wanted.length;
        }
    }
}

/// The place of the wild character in a rest of the text, outside of sections in apostrophes, or -1.
int WildMatcher::FindUnquoted(const Piece& text) {
    if (!_unquotedPlaces) {
        _unquotedPlaces.emplace(_text, _wild.AsPiece());
    }
    const int start = _text.length - text.length;
    const int place = _unquotedPlaces->FirstFrom(start);
    return place < 0 ? place : place - start;
}

WildMatcher::Answer WildMatcher::Step(State& state) {
    auto& [text, pattern] = state;
    const bool startsWithWild = StartsWithWild(pattern);
    if (text.length == 0 && !startsWithWild) {
        return pattern.length == 0 ? Answer::Yes : Answer::No;
    }
    if (startsWithWild) {
        if (_isPlainWild && pattern.Find(_quote.AsPiece()) < 0) {
            return MatchesWithoutQuotes(text, pattern) ? Answer::Yes : Answer::No;
        }
        if (text.length > 0) {
            Try(text.From(1), pattern);
        }
        pattern = pattern.From(1);
        return Answer::GoesOn;
    }
    const int quote = pattern.Find(_quote.AsPiece());
    if (quote < 0) {
        const int wild = pattern.Find(_wild.AsPiece());
        if (wild < 0) {
            return pattern.IsIdentical(text) ? Answer::Yes : Answer::No;
        }
        if (_isPlainWild) {
            return MatchesWithoutQuotes(text, pattern) ? Answer::Yes : Answer::No;
        }
        return StepAtWild(state, wild);
    }
    // Deliberate: the wild character is looked for in the text, not in the pattern.
    const int wild = FindUnquoted(text);
    if (wild < 0) {
        return UnquotedText(pattern).IsIdentical(text) ? Answer::Yes : Answer::No;
    }
    return quote > wild ? StepAtWild(state, wild) : StepInQuotes(state, quote, wild);
}

WildMatcher::Answer WildMatcher::StepInQuotes(State& state, int quote, int wild) {
    auto& [text, pattern] = state;
    const int end = pattern.Find(_quote.AsPiece(), quote + 1);
    if (end < 0) {
        return StepAtWild(state, wild);
    }
    if (end == quote + 1) {
        if (!pattern.Cut(0, end).IsIdentical(text.Cut(0, end))) {
            return Answer::No;
        }
        text = text.From(end + 1);
    } else {
        if (!UnquotedText(pattern.Cut(0, end + 1)).IsIdentical(text.Cut(0, end - 1))) {
            return Answer::No;
        }
        text = text.From(end - 1);
    }
    pattern = pattern.From(end + 1);
    return Answer::GoesOn;
}

WildMatcher::Answer WildMatcher::StepAtWild(State& state, int wild) {
    auto& [text, pattern] = state;
    if (!pattern.Cut(0, wild).IsIdentical(text.Cut(0, wild))) {
        return Answer::No;
    }
    Try(text.From(wild + 1), pattern.From(wild));
    text = text.From(wild);
    pattern = pattern.From(wild + 1);
    return Answer::GoesOn;
}

bool WildMatcher::Matches(const Piece& text, const Piece& pattern) {
    // A state that was tried before is not tried again: what is pending then leads nowhere, and the number of states is
    // the product of both lengths at most.
    std::unordered_set<unsigned long> tried;
    _text = text;
    Try(text, pattern);
    while (!_pending.empty()) {
        State state = _pending.back();
        _pending.pop_back();
        const auto textLeft = static_cast<unsigned long>(state.text.length);
        const auto patternLeft = static_cast<unsigned int>(state.pattern.length);
        if (!tried.insert(textLeft << 32 | patternLeft).second) {
            continue;
        }
        Answer answer = Answer::GoesOn;
        while (answer == Answer::GoesOn) {
            answer = Step(state);
        }
        if (answer == Answer::Yes) {
            return true;
        }
    }
    return false;
}

} // namespace

bool MatchWild(const UTF16Range& text, const UTF16Range& pattern, unsigned int wild, unsigned int quote) {
    try {
        return WildMatcher(wild, quote).Matches({text.text, text.length}, {pattern.text, pattern.length});
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace VEL::internal
