/// @file
/// The wildcard match in its plain form, one substring after the other: what the library's is compared with. The
/// asymmetries are required.
#pragma once

#include <string>

namespace PlainWildMatch {

inline constexpr int None = -1;

/// The `count` units from `start` on; nothing when any of them is not within the text.
inline std::u16string Part(const std::u16string& text, int start, int count) {
    const int length = static_cast<int>(text.size());
    if (start < 0 || count <= 0 || start > length || count > length - start) {
        return {};
    }
    return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(count));
}

inline std::u16string From(const std::u16string& text, int start) {
    return Part(text, start, static_cast<int>(text.size()) - start);
}

inline int Find(const std::u16string& text, const std::u16string& what, int start) {
    if (what.empty() || start < 0) {
        return None;
    }
    const std::size_t found = text.find(what, static_cast<std::size_t>(start));
    return found == std::u16string::npos ? None : static_cast<int>(found);
}

/// The code point of the first character; 0 for a text without one.
inline unsigned int First(const std::u16string& text) {
    if (text.empty()) {
        return 0;
    }
    const unsigned int unit = text[0];
    const bool isJoined = unit >= 0xD800 && unit <= 0xDBFF && text.size() > 1;
    return isJoined ? (unit << 10) + text[1] - 0x35FDC00 : unit;
}

inline std::u16string Units(unsigned int code) {
    if (code <= 0xFFFF) {
        return std::u16string(1, static_cast<char16_t>(code));
    }
    return {static_cast<char16_t>((code >> 10) + 0xD7C0), static_cast<char16_t>((code & 0x3FF) + 0xDC00)};
}

/// The first position of `what` outside sections in apostrophes.
inline int FindUnquoted(const std::u16string& text, const std::u16string& what) {
    const int q = Find(text, u"'", 0);
    const int w = Find(text, what, 0);
    if (q < 0 || w < 0 || q > w) {
        return w;
    }
    const std::u16string r = From(text, q + 1);
    const int q2 = Find(r, u"'", 0);
    if (q2 < 0) {
        return None;
    }
    const int found = FindUnquoted(From(r, q2 + 1), what);
    return found < 0 ? found : found + q + q2 + 2;
}

/// The text without the apostrophes that enclose; a doubled one stands for itself.
inline std::u16string RemoveQuotes(const std::u16string& text) {
    std::u16string copy = text;
    for (int position = 0;;) {
        const int a = Find(copy, u"'", position);
        if (a < 0) {
            return copy;
        }
        const int b = Find(copy, u"'", a + 1);
        if (b < 0) {
            return text;
        }
        if (b == a + 1) {
            copy.erase(static_cast<std::size_t>(a), 1);
            position = b;
        } else {
            copy.erase(static_cast<std::size_t>(b), 1);
            copy.erase(static_cast<std::size_t>(a), 1);
        }
    }
}

class Matcher {
public:
    Matcher(unsigned int wild, unsigned int quote) : _wild(wild), _wildText(Units(wild)), _quoteText(Units(quote)) {}

    bool Matches(const std::u16string& s, const std::u16string& p) const {
        const bool startsWild = !p.empty() && First(p) == _wild;
        if (s.empty()) {
            return startsWild ? Matches(s, From(p, 1)) : p.empty();
        }
        if (startsWild) {
            return Matches(s, From(p, 1)) || Matches(From(s, 1), p);
        }
        const int q1 = Find(p, _quoteText, 0);
        const int w1 = Find(p, _wildText, 0);
        if (q1 < 0) {
            return w1 < 0 ? p == s : MatchesUpTo(s, p, w1);
        }
        const int w2 = FindUnquoted(s, _wildText);
        if (w2 < 0) {
            return RemoveQuotes(p) == s;
        }
        if (q1 > w2) {
            return MatchesUpTo(s, p, w2);
        }
        const int q2 = Find(p, _quoteText, q1 + 1);
        if (q2 < 0) {
            return MatchesUpTo(s, p, w2);
        }
        if (q2 == q1 + 1) {
            return Part(p, 0, q2) == Part(s, 0, q2) && Matches(From(s, q2 + 1), From(p, q2 + 1));
        }
        return RemoveQuotes(Part(p, 0, q2 + 1)) == Part(s, 0, q2 - 1) && Matches(From(s, q2 - 1), From(p, q2 + 1));
    }

private:
    /// A literal beginning of `w` units, and a run behind it.
    bool MatchesUpTo(const std::u16string& s, const std::u16string& p, int w) const {
        if (Part(p, 0, w) != Part(s, 0, w)) {
            return false;
        }
        return Matches(From(s, w), From(p, w + 1)) || Matches(From(s, w + 1), From(p, w));
    }

    unsigned int _wild;
    std::u16string _wildText;
    std::u16string _quoteText;
};

} // namespace PlainWildMatch
