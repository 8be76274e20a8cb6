/// @file
/// A handful of strings of all three classes, and beside each the plain UTF-16 text that it should hold. Operations are
/// drawn from a source of numbers; afterwards every string is compared with its text, and what stands behind its handle
/// must agree with itself.
#pragma once

#include "QORSysTSVectorOfUnicodeString.h"
#include "StringTexts.h"
#include "VELVectorOfUnicodeString.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace StringModel {

using namespace StringTexts;

inline int Sign(int value) {
    return (value > 0) - (value < 0);
}

/// The text in ASCII upper or lower case, which is what the C locale knows.
inline std::u16string InCase(std::u16string text, bool isUpper) {
    for (char16_t& unit : text) {
        if (isUpper ? unit >= u'a' && unit <= u'z' : unit >= u'A' && unit <= u'Z') {
            unit ^= 0x20;
        }
    }
    return text;
}

inline std::u16string AllReplaced(std::u16string text, const std::u16string& what, const std::u16string& with) {
    for (std::size_t pos = 0; !what.empty() && (pos = text.find(what, pos)) != std::u16string::npos;
         pos += with.size()) {
        text.replace(pos, what.size(), with);
    }
    return text;
}

inline std::u16string WithoutSpaces(std::u16string text, int mode) {
    if (mode == 4) {
        std::erase(text, u' ');
    }
    if (mode == 1 || mode == 3) {
        text.erase(0, std::min(text.find_first_not_of(u' '), text.size()));
    }
    if (mode == 2 || mode == 3) {
        text.erase(text.find_last_not_of(u' ') + 1);
    }
    return text;
}

class Player {
public:
    /// @param below   Gives a number below its argument.
    /// @param isUTF8  Whether narrow text is UTF-8; otherwise it holds units up to 0xFF.
    Player(std::function<unsigned int(unsigned int)> below, bool isUTF8) : _below(std::move(below)), _isUTF8(isUTF8) {}

    /// Does one thing; says which.
    std::string Step() {
        _complaint.clear();
        const unsigned int kind = _below(10);
        const std::string what = kind < 5   ? Change()
                                 : kind < 6 ? Look()
                                 : kind < 8 ? Pass()
                                 : kind < 9 ? ChangeSafe()
                                            : ChangeNarrow();
        return what;
    }

    /// Empty when all is as it should be.
    std::string FirstDifference() const {
        if (!_complaint.empty()) {
            return _complaint;
        }
        std::map<Block, int> handles;
        std::string difference;
        const auto check = [&](const auto& strings, const char* name) {
            for (std::size_t i = 0; i < strings.size() && difference.empty(); ++i) {
                const Block block = StringAccess::BlockOf(strings[i].s);
                ++handles[block];
                difference = DifferenceIn(block, strings[i].text);
                if (!difference.empty()) {
                    difference = name + std::to_string(i) + ": " + difference;
                }
            }
        };
        check(_unicode, "unicode ");
        check(_safe, "safe ");
        check(_narrow, "narrow ");
        for (const auto& [block, count] : handles) {
            if (difference.empty() && block->_refCount != (block->IsTheEmptyBlock() ? 1 : count)) {
                difference = "a block is counted " + std::to_string(block->_refCount) + " times instead of " +
                             std::to_string(count);
            }
        }
        return difference;
    }

private:
    template <class String>
    struct Pair {
        String s;
        std::u16string text;
    };

    static std::string DifferenceIn(const QORInterUnicodeString* block, const std::u16string& text) {
        if (TextOf(block) != text) {
            return "'" + UTF8Of(TextOf(block)) + "' instead of '" + UTF8Of(text) + "'";
        }
        if (block->IsTheEmptyBlock()) {
            const QORInterUnicodeView* view = block->_secondView;
            const bool isIntact = block->_capacity == 0 && block->_flags == 0 && view != nullptr &&
                                  view->_length == 0 && view->_text[0] == 0 && block->Text()[0] == 0;
            return isIntact ? "" : "the empty block was written";
        }
        if (block->_length >= block->_capacity) {
            return "no room for the terminator";
        }
        if (block->IsWide() ? block->Wide()[block->_length] != 0 : block->Text()[block->_length] != 0) {
            return "no terminator";
        }
        if (QORInterUnicodeView* const view = block->_secondView) {
            const bool isSame =
                block->IsWide()
                    ? std::string(view->Narrow(), static_cast<std::size_t>(view->_length)) == NarrowForm(text)
                    : std::u16string(view->UTF16(), view->UTF16() + view->_length) == text;
            if (!isSame) {
                return "the view is of another text";
            }
        }
        const auto* units = reinterpret_cast<const unsigned short*>(text.data());
        if (!IsStale(block) && block->_hash != (PlainUnicode::HashUnits(units, text.size(), 0) & 0x7FFFFFFF)) {
            return "the hash is of another text";
        }
        return "";
    }

    void Require(bool condition, const char* complaint) {
        if (!condition && _complaint.empty()) {
            _complaint = complaint;
        }
    }

    /// Units of a text that is not made longer.
    static constexpr std::size_t Longest = 120;

    // Choices.

    Pair<QORUnicodeString>& AnyUnicode() { return _unicode[_below(static_cast<unsigned int>(_unicode.size()))]; }
    Pair<QORSysTSUnicodeString>& AnySafe() { return _safe[_below(static_cast<unsigned int>(_safe.size()))]; }
    Pair<QORString>& AnyNarrow() { return _narrow[_below(static_cast<unsigned int>(_narrow.size()))]; }

    std::u16string AnyCharacter() {
        static const std::u16string Characters[] = {u"a",      u"b",      u"A",          u" ",         u",",
                                                    u"z",      u"\u00e9", u"\u00fc",     u"\u00c9",    u"\u20ac",
                                                    u"\u65e5", u"\uffee", u"\U0001F600", u"\U00010428"};
        return Characters[_below(_isUTF8 ? 14 : 9)];
    }

    std::u16string AnyText() {
        std::u16string text;
        for (unsigned int left = _below(_below(4) == 0 ? 60 : 6); left > 0; --left) {
            text += AnyCharacter();
        }
        return text;
    }

    /// A place between two characters.
    std::size_t AnyPlace(const std::u16string& text) {
        return Whole(text, _below(static_cast<unsigned int>(text.size()) + 1));
    }
    static std::size_t Whole(const std::u16string& text, std::size_t place) {
        const bool isInside = place < text.size() && text[place] >= 0xDC00 && text[place] <= 0xDFFF;
        return isInside ? place - 1 : place;
    }
    std::pair<std::size_t, std::size_t> AnyRange(const std::u16string& text) {
        const std::size_t a = AnyPlace(text);
        const std::size_t b = AnyPlace(text);
        return {std::min(a, b), std::max(a, b)};
    }

    /// Some text that may well be found in the given one.
    std::u16string AnyNeedle(const std::u16string& text) {
        const auto [first, last] = AnyRange(text);
        const std::size_t end = Whole(text, std::min(last, first + 4));
        return _below(2) == 0 ? AnyCharacter() : text.substr(first, end - first);
    }

    QORUnicodeString AnyRepresentation(const std::u16string& text) {
        if (text.empty()) {
            return _below(2) == 0 ? QORUnicodeString() : StringOf(text, true);
        }
        return StringOf(text, _below(2) == 0);
    }

    // Operations.

    std::string Change() {
        Pair<QORUnicodeString>& a = AnyUnicode();
        Pair<QORUnicodeString>& b = AnyUnicode();
        const std::u16string other = b.text;
        const auto [first, last] = AnyRange(a.text);
        const int pos = static_cast<int>(first);
        const int count = static_cast<int>(last - first);
        if (a.text.size() > Longest) {
            a.s.Reset();
            a.text.clear();
            return "Reset";
        }
        switch (_below(18)) {
        case 0:
            a.text = AnyText();
            a.s = NarrowForm(a.text).c_str();
            return "assign narrow text";
        case 1:
            a.text = AnyText();
            a.s.BuildFromUCChar(Units(a.text.c_str()), static_cast<int>(a.text.size()));
            return "assign wide text";
        case 2:
            a.s = b.s;
            a.text = other;
            return "assign";
        case 3:
        case 4:
            a.s.Append(b.s);
            a.text += other;
            return "Append";
        case 5: {
            const std::u16string c = AnyCharacter();
            a.s += Character(CodePointOf(c));
            a.text += c;
            return "+= character";
        }
        case 6:
            a.s.Insert(pos, b.s);
            a.text.insert(first, other);
            return "Insert";
        case 7:
            a.s.Remove(pos, count);
            a.text.erase(first, last - first);
            return "Remove";
        case 8: {
            const std::size_t newCount = Whole(other, _below(static_cast<unsigned int>(other.size()) + 4));
            a.s.ReplaceSubString(pos, count, b.s, static_cast<int>(newCount));
            std::u16string with = other.substr(0, newCount);
            with.resize(newCount, u' ');
            a.text.replace(first, last - first, with);
            return "ReplaceSubString range";
        }
        case 9: {
            const std::u16string what = AnyNeedle(a.text);
            const std::size_t found = what.empty() ? std::u16string::npos : a.text.find(what);
            const int expected = found == std::u16string::npos ? -1 : static_cast<int>(found);
            Require(a.s.ReplaceSubString(AnyRepresentation(what), b.s) == expected, "position of the replaced text");
            if (expected >= 0) {
                a.text.replace(found, what.size(), other);
            }
            return "ReplaceSubString";
        }
        case 10: {
            const std::u16string what = AnyNeedle(a.text);
            const std::u16string with = AnyText();
            a.s.ReplaceAll(AnyRepresentation(what), AnyRepresentation(with));
            a.text = AllReplaced(a.text, what, with);
            return "ReplaceAll";
        }
        case 11:
            b.s = a.s.SubString(pos, count);
            b.text = std::u16string(a.text).substr(first, last - first);
            return "SubString";
        case 12: {
            const auto mode = static_cast<int>(1 + _below(4));
            b.s = a.s.Strip(static_cast<QORUnicodeString::QORStripMode>(mode));
            b.text = WithoutSpaces(a.text, mode);
            return "Strip";
        }
        case 13: {
            const std::size_t n = Whole(a.text, _below(static_cast<unsigned int>(a.text.size()) + 8));
            a.s.Resize(static_cast<int>(n));
            a.text.resize(n, u' ');
            return "Resize";
        }
        case 14:
        case 15: {
            const bool isUpper = _below(2) == 0;
            isUpper ? a.s.ToUpper() : a.s.ToLower();
            a.text = InCase(a.text, isUpper);
            return "ToUpper or ToLower";
        }
        case 16:
            VEL::Pack(a.s);
            return "Pack";
        default:
            VEL::Isolate(a.s);
            return "Isolate";
        }
    }

    /// Reads that build views and hashes, searches, comparisons.
    std::string Look() {
        Pair<QORUnicodeString>& a = AnyUnicode();
        Pair<QORUnicodeString>& b = AnyUnicode();
        switch (_below(7)) {
        case 0:
            Require(StringBlocks::Units(a.s.ConvertToUCChar(), a.s.GetLengthInChar()) == a.text, "ConvertToUCChar");
            return "ConvertToUCChar";
        case 1:
            Require(!FitsNarrow(a.text) ||
                        std::string(a.s.ConvertToChar(), static_cast<std::size_t>(a.s.GetLengthInByte())) ==
                            NarrowForm(a.text),
                    "ConvertToChar");
            return "ConvertToChar";
        case 2:
            a.s.ComputeHashKey();
            return "ComputeHashKey";
        case 3: {
            const std::u16string what = AnyNeedle(a.text);
            const std::size_t start = _below(static_cast<unsigned int>(a.text.size()) + 2);
            const QORUnicodeString needle = AnyRepresentation(what);
            const bool isVain = what.empty() || start >= a.text.size();
            const std::size_t forward = a.text.find(what, start);
            const bool isNear = what.size() + start <= a.text.size();
            const std::size_t backward =
                isNear ? a.text.rfind(what, a.text.size() - what.size() - start) : std::u16string::npos;
            Require(a.s.FindPosition(needle, static_cast<int>(start)) == (isVain ? -1 : static_cast<int>(forward)),
                    "FindPosition");
            Require(a.s.SearchSubString(needle, static_cast<int>(start), QORUnicodeString::QORSearchModeBackward) ==
                        (isVain ? -1 : static_cast<int>(backward)),
                    "SearchSubString backward");
            return "search";
        }
        case 4: {
            Require((a.s == b.s) == (a.text == b.text), "==");
            Require((a.s != b.s) == (a.text != b.text), "!=");
            const bool isNarrow = VEL::GetMainRepEncoding(a.s) == 1 && VEL::GetMainRepEncoding(b.s) == 1;
            const int order = isNarrow ? NarrowForm(a.text).compare(NarrowForm(b.text)) : a.text.compare(b.text);
            Require(Sign(a.s.SortCompare(b.s)) == Sign(order), "SortCompare");
            const int same = a.text == b.text ? 2 : InCase(a.text, false) == InCase(b.text, false) ? 1 : 0;
            Require(a.s.Compare(b.s) == same, "Compare");
            return "compare";
        }
        case 5: {
            VELVectorOfUnicodeString pieces;
            VEL::Split(a.s, AnyRepresentation(u","), pieces);
            std::u16string joined;
            for (int i = 0; i < pieces.GetLength(); ++i) {
                joined += (i == 0 ? u"" : u",") + TextOf(*pieces.GetAsPtr(i));
            }
            Require(pieces.GetLength() == 1 + std::ranges::count(a.text, u','), "number of pieces");
            Require(joined == a.text, "pieces");
            return "Split";
        }
        default: {
            std::vector<char> step(8 + 4 * (a.text.size() + 1));
            a.s.ConvertToSTEP(step.data());
            if (std::ranges::all_of(a.text, [](char16_t unit) { return unit <= 0x7F; }) ||
                std::ranges::any_of(a.text, [](char16_t unit) { return unit > 0xFF; })) {
                Require(b.s.BuildFromSTEP(step.data()) == 0, "BuildFromSTEP");
                b.text = a.text;
            }
            return "STEP";
        }
        }
    }

    /// A text that every class can hold.
    bool IsPlain(const std::u16string& text) const {
        return _isUTF8 || std::ranges::all_of(text, [](char16_t unit) { return unit < 0x7F; });
    }

    /// From class to class.
    std::string Pass() {
        Pair<QORUnicodeString>& a = AnyUnicode();
        Pair<QORSysTSUnicodeString>& b = AnySafe();
        Pair<QORString>& c = AnyNarrow();
        switch (_below(8)) {
        case 0:
            return Copied(b, a);
        case 1:
            return Copied(a, b);
        case 2:
            return IsPlain(a.text) ? Copied(c, a) : "nothing";
        case 3:
            return Copied(a, c);
        case 4:
            return Moved(b, a);
        case 5:
            return Moved(a, b);
        case 6:
            return IsPlain(b.text) ? Moved(c, b) : "nothing";
        default:
            return Moved(b, c);
        }
    }
    template <class To, class From>
    static std::string Copied(Pair<To>& to, Pair<From>& from) {
        VEL::Copy(to.s, from.s);
        to.text = from.text;
        return "Copy";
    }
    template <class To, class From>
    static std::string Moved(Pair<To>& to, Pair<From>& from) {
        VEL::Move(to.s, from.s);
        to.text = std::exchange(from.text, {});
        return "Move";
    }

    std::string ChangeSafe() {
        Pair<QORSysTSUnicodeString>& a = AnySafe();
        Pair<QORSysTSUnicodeString>& b = AnySafe();
        const std::u16string other = b.text;
        const auto [first, last] = AnyRange(a.text);
        if (a.text.size() > Longest) {
            a.s.SetCapacity(0);
            a.text.clear();
            return "SetCapacity(0)";
        }
        switch (_below(8)) {
        case 0:
            a.s.Append(b.s);
            a.text += other;
            return "safe Append";
        case 1:
            Require(a.s.Insert(static_cast<int>(first), b.s) == 0, "safe Insert");
            a.text.insert(first, other);
            return "safe Insert";
        case 2:
            Require(a.s.ReplaceRange(static_cast<int>(first), static_cast<int>(last), b.s) == 0, "safe ReplaceRange");
            a.text.replace(first, last - first, other);
            return "safe ReplaceRange";
        case 3:
            b.s = a.s.SubString(static_cast<int>(first), static_cast<int>(last));
            b.text = std::u16string(a.text).substr(first, last - first);
            return "safe SubString";
        case 4:
            a.s.ToUpper();
            a.text = InCase(a.text, true);
            return "safe ToUpper";
        case 5:
            a.s.SetCapacity(static_cast<int>(4 * a.text.size() + 4));
            return "safe SetCapacity";
        case 6: {
            const std::u16string what = AnyNeedle(a.text);
            QORSysTSUnicodeString needle(StringBlocks::Units(what.c_str()), static_cast<int>(what.size()));
            a.s.ReplaceAll(needle, b.s);
            a.text = AllReplaced(a.text, what, other);
            return "safe ReplaceAll";
        }
        default: {
            QORSysTSVectorOfUnicodeString pieces;
            a.s.Split(QORSysTSUnicodeString(","), pieces);
            Require(pieces.GetLength() == 1 + std::ranges::count(a.text, u','), "number of safe pieces");
            Require((a.s == b.s) == (a.text == b.text), "safe ==");
            return "safe Split";
        }
        }
    }

    std::string ChangeNarrow() {
        Pair<QORString>& a = AnyNarrow();
        Pair<QORString>& b = AnyNarrow();
        const std::u16string other = b.text;
        const auto [first, last] = AnyRange(a.text);
        const int pos = static_cast<int>(NarrowForm(a.text.substr(0, first)).size());
        const int count = static_cast<int>(NarrowForm(a.text.substr(first, last - first)).size());
        if (a.text.size() > Longest) {
            a.s = "";
            a.text.clear();
            return "narrow reset";
        }
        switch (_below(6)) {
        case 0:
            a.s += b.s;
            a.text += other;
            return "narrow +=";
        case 1:
            a.s.Insert(pos, b.s);
            if (!a.text.empty()) {
                a.text.insert(first, other);
            }
            return "narrow Insert";
        case 2:
            a.s.Remove(pos, count);
            a.text.erase(first, last - first);
            return "narrow Remove";
        case 3: {
            const auto mode = static_cast<int>(1 + _below(4));
            b.s = a.s.Strip(static_cast<QORString::QORStripMode>(mode), QORChar(' '));
            b.text = WithoutSpaces(a.text, mode);
            return "narrow Strip";
        }
        case 4:
            a.s.ToLower();
            a.text = InCase(a.text, false);
            return "narrow ToLower";
        default:
            Require((a.s == b.s) == (a.text == b.text), "narrow ==");
            Require(static_cast<std::size_t>(a.s.Length()) == NarrowForm(a.text).size(), "narrow length");
            return "narrow compare";
        }
    }

    static unsigned int CodePointOf(const std::u16string& c) {
        return c.size() == 1 ? c[0] : 0x10000 + ((c[0] - 0xD800u) << 10) + (c[1] - 0xDC00u);
    }

    std::function<unsigned int(unsigned int)> _below;
    bool _isUTF8;
    std::string _complaint;
    std::array<Pair<QORUnicodeString>, 4> _unicode;
    std::array<Pair<QORSysTSUnicodeString>, 2> _safe;
    std::array<Pair<QORString>, 2> _narrow;
};

} // namespace StringModel
