/// @file
/// Thread-safe strings that are searched, replaced by what was found, split, turned to another case and compared.

#include "QORSysTSVectorOfUnicodeString.h"
#include "StringSubjects.h"
#include "VELSysStatus.h"

#include <array>
#include <climits>
#include <gmock/gmock.h>
#include <random>

namespace {

using namespace StringStates;
using testing::AnyOf;

using String = QORSysTSUnicodeString;
using StringSubject = SubjectOf<String>;

int Sign(int value) {
    return (value > 0) - (value < 0);
}

int PlainSearch(const std::u16string& text, const std::u16string& what, int start) {
    if (start < 0 || start >= static_cast<int>(text.size()) || what.empty()) {
        return -1;
    }
    const std::size_t found = text.find(what, static_cast<std::size_t>(start));
    return found == std::u16string::npos ? -1 : static_cast<int>(found);
}

/// The last position at or in front of the one that keeps `start` units away from the end.
int PlainSearchBackward(const std::u16string& text, const std::u16string& what, int start) {
    const int length = static_cast<int>(text.size());
    const int first = length - static_cast<int>(what.size()) - start;
    if (start < 0 || start >= length || what.empty() || first < 0) {
        return -1;
    }
    const std::size_t found = text.rfind(what, static_cast<std::size_t>(first));
    return found == std::u16string::npos ? -1 : static_cast<int>(found);
}

std::u16string PlainReplaceAll(const std::u16string& text, const std::u16string& what, const std::u16string& with) {
    std::u16string result;
    std::size_t pos = 0;
    for (std::size_t found; (found = text.find(what, pos)) != std::u16string::npos; pos = found + what.size()) {
        result += text.substr(pos, found - pos) + with;
    }
    return result + text.substr(pos);
}

/// Texts to look for in a text: parts of it, and some that are not.
std::vector<std::u16string> Needles(const std::u16string& text) {
    std::vector<std::u16string> needles = {u"#", u"\u00e9#", text + u"#", u"o"};
    for (std::size_t length : {std::size_t{1}, std::size_t{2}, std::size_t{5}, text.size()}) {
        for (std::size_t pos = 0; length > 0 && pos + length <= text.size(); pos += 1 + text.size() / 8) {
            needles.push_back(text.substr(pos, length));
        }
    }
    return needles;
}

/// A needle may stand in either representation, as far as narrow text can hold it.
std::vector<bool> Representations(const std::u16string& text) {
    const bool isSound = std::ranges::none_of(text, [](char16_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; });
    return FitsNarrow(text) && isSound ? std::vector{false, true} : std::vector{true};
}

} // namespace

// Searches.

class ThreadSafeSearch : public InAllStates {};

TEST_P(ThreadSafeSearch, FindsTheFirstAtOrBehindStartAndTheLastInFrontOfIt) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        StringSubject subject(TheState(), text);
        for (const std::u16string& needle : Needles(text)) {
            for (const bool isWide : Representations(needle)) {
                const String what = Make<String>(needle, isWide);
                for (int start = -1; start <= length + 1; ++start) {
                    ASSERT_EQ(subject.s.SearchSubString(what, start), PlainSearch(text, needle, start))
                        << UTF8Of(text) << " / " << UTF8Of(needle) << " from " << start;
                    ASSERT_EQ(subject.s.SearchSubStringBackward(what, start), PlainSearchBackward(text, needle, start))
                        << UTF8Of(text) << " / " << UTF8Of(needle) << " from the end and " << start;
                }
                for (const int start : {INT_MIN, INT_MAX}) {
                    EXPECT_EQ(subject.s.SearchSubString(what, start), -1);
                    EXPECT_EQ(subject.s.SearchSubStringBackward(what, start), -1);
                }
            }
        }
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeSearch, ForNothingOrANullHandleFindsNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        const String nothings[] = {String(), Make<String>(u"", true), StringOn<String>(NewNarrow("")),
                                   NullString<String>()};
        for (const String& nothing : nothings) {
            for (const int start : {-1, 0, 1, static_cast<int>(text.size())}) {
                EXPECT_EQ(subject.s.SearchSubString(nothing, start), -1);
                EXPECT_EQ(subject.s.SearchSubStringBackward(nothing, start), -1);
            }
        }
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeSearch, FindsTheStringInItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        const String copy(subject.s);
        const int expected = text.empty() ? -1 : 0;
        EXPECT_EQ(subject.s.SearchSubString(subject.s, 0), expected);
        EXPECT_EQ(subject.s.SearchSubStringBackward(copy, 0), expected);
        EXPECT_EQ(subject.s.SearchSubStringBackward(subject.s, 1), -1);
        EXPECT_EQ(subject.s.IsSubStringAt(0, subject.s), TheState() != State::Null);
        EXPECT_EQ(subject.s.IsSubStringAt(0, copy), TheState() != State::Null);
        EXPECT_FALSE(subject.s.IsSubStringAt(1, subject.s) && !text.empty());
    }
}

TEST_P(ThreadSafeSearch, SeesWhetherATextStandsAtAPosition) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        StringSubject subject(TheState(), text);
        for (const std::u16string& needle : Needles(text)) {
            for (const bool isWide : Representations(needle)) {
                const String what = Make<String>(needle, isWide);
                for (int pos = -1; pos <= length + 1; ++pos) {
                    const bool expected = pos >= 0 && pos + static_cast<int>(needle.size()) <= length &&
                                          text.substr(static_cast<std::size_t>(pos), needle.size()) == needle;
                    ASSERT_EQ(subject.s.IsSubStringAt(pos, what), expected)
                        << UTF8Of(text) << " / " << UTF8Of(needle) << " at " << pos;
                }
                for (const int pos : {INT_MIN, INT_MAX, INT_MAX - 1}) {
                    EXPECT_FALSE(subject.s.IsSubStringAt(pos, what));
                }
            }
        }
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeSearch, SeesNothingEverywhereWithinTheString) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        StringSubject subject(TheState(), text);
        for (const bool isWide : {false, true}) {
            const String nothing = Make<String>(u"", isWide);
            for (int pos = 0; pos <= length; ++pos) {
                EXPECT_EQ(subject.s.IsSubStringAt(pos, nothing), TheState() != State::Null) << pos;
            }
            EXPECT_FALSE(subject.s.IsSubStringAt(-1, nothing));
            EXPECT_FALSE(subject.s.IsSubStringAt(length + 1, nothing));
        }
        EXPECT_FALSE(subject.s.IsSubStringAt(0, NullString<String>()));
        subject.ExpectUnchanged();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeSearch, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeSearchStated, CountsFromTheEndBackward) {
    const String s("abcbc");
    EXPECT_EQ(s.SearchSubString(String("bc"), 0), 1);
    EXPECT_EQ(s.SearchSubString(String("bc"), 2), 3);
    EXPECT_EQ(s.SearchSubStringBackward(String("bc"), 0), 3);
    EXPECT_EQ(s.SearchSubStringBackward(String("bc"), 1), 1);
}

// Replacing what was found.

class ThreadSafeReplace : public InAllStates {};

namespace {

const std::u16string Replacements[] = {u"", u"y", u"\u00e9t\u00e9", std::u16string(30, u'w')};

} // namespace

TEST_P(ThreadSafeReplace, TheFirstAtOrBehindStart) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const std::u16string& needle : Needles(text)) {
            for (const std::u16string& with : Replacements) {
                for (const int start : {-1, 0, 1, static_cast<int>(text.size()) / 2, static_cast<int>(text.size())}) {
                    SCOPED_TRACE(testing::Message() << UTF8Of(text) << " / " << UTF8Of(needle) << " from " << start);
                    StringSubject subject(TheState(), text);
                    const String what = Make<String>(needle, true);
                    const String other = Make<String>(with, Representations(with).front());
                    const int expected = PlainSearch(text, needle, start);
                    EXPECT_EQ(subject.s.ReplaceSubString(what, other, start), expected);
                    if (expected < 0) {
                        subject.ExpectUnchanged();
                        continue;
                    }
                    std::u16string result = text;
                    result.replace(static_cast<std::size_t>(expected), needle.size(), with);
                    if (!IsOnTheEmptyBlock(subject.s)) {
                        ExpectFreshlyWritten(Alias(subject.s), true);
                    }
                    ExpectReadsAs(Alias(subject.s), result);
                    EXPECT_EQ(subject.Now() == subject.BlockBefore(),
                              TheState() == State::Wide && subject.CapacityBefore() > static_cast<int>(result.size()));
                    subject.ExpectOthersUntouched();
                }
            }
        }
    }
}

TEST_P(ThreadSafeReplace, AllOfThemAndBecomesWide) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const std::u16string& needle : Needles(text)) {
            for (const std::u16string& with : Replacements) {
                for (const bool isWide : Representations(needle)) {
                    SCOPED_TRACE(testing::Message()
                                 << UTF8Of(text) << " / " << UTF8Of(needle) << " by " << UTF8Of(with) << isWide);
                    StringSubject subject(TheState(), text);
                    const String what = Make<String>(needle, isWide);
                    EXPECT_EQ(&subject.s.ReplaceAll(what, Make<String>(with, false)), &subject.s);
                    if (text.find(needle) == std::u16string::npos) {
                        subject.ExpectUnchanged();
                        continue;
                    }
                    const std::u16string result = PlainReplaceAll(text, needle, with);
                    if (result.empty()) {
                        EXPECT_TRUE(Alias(subject.s).operator const QORUnicodeString&().IsEmpty());
                    } else {
                        ExpectFreshlyWritten(Alias(subject.s), true);
                    }
                    ExpectReadsAs(Alias(subject.s), result);
                    subject.ExpectOthersUntouched();
                }
            }
        }
    }
}

TEST_P(ThreadSafeReplace, OfNothingChangesNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        const String nothings[] = {String(), Make<String>(u"", true), StringOn<String>(NewNarrow("")),
                                   NullString<String>()};
        for (const String& nothing : nothings) {
            EXPECT_EQ(subject.s.ReplaceSubString(nothing, String("xyz"), 0), -1);
            EXPECT_EQ(&subject.s.ReplaceAll(nothing, String("xyz")), &subject.s);
            subject.ExpectUnchanged();
        }
    }
}

TEST_P(ThreadSafeReplace, ByANullHandleTakesNothingForeignIn) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const String null = NullString<String>();
        const String first = Make<String>(text.substr(0, 1), true);
        StringSubject one(TheState(), text);
        one.s.ReplaceSubString(first, null, 0);
        EXPECT_THAT(TextOf(Alias(one.s)), AnyOf(text, text.substr(std::min<std::size_t>(1, text.size()))));
        one.ExpectOthersUntouched();
        StringSubject all(TheState(), text);
        all.s.ReplaceAll(first, null);
        EXPECT_THAT(TextOf(Alias(all.s)),
                    AnyOf(text, text.empty() ? text : PlainReplaceAll(text, text.substr(0, 1), u"")));
        all.ExpectOthersUntouched();
    }
}

TEST_P(ThreadSafeReplace, TakesTheStringItselfOnEitherSide) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const bool hasText = HasText(TheState());
        const std::u16string first = text.substr(0, 1);
        const String what = Make<String>(first, true);

        StringSubject itself(TheState(), text);
        EXPECT_EQ(itself.s.ReplaceSubString(itself.s, itself.s, 0), hasText ? 0 : -1);
        EXPECT_EQ(TextOf(Alias(itself.s)), text);
        itself.ExpectOthersUntouched();

        StringSubject by(TheState(), text);
        EXPECT_EQ(by.s.ReplaceSubString(what, by.s, 0), hasText ? 0 : -1);
        EXPECT_EQ(TextOf(Alias(by.s)), text + text.substr(first.size()));
        by.ExpectOthersUntouched();

        StringSubject of(TheState(), text);
        EXPECT_EQ(of.s.ReplaceSubString(of.s, String("xy"), 0), hasText ? 0 : -1);
        EXPECT_EQ(TextOf(Alias(of.s)), hasText ? u"xy" : u"");
        of.ExpectOthersUntouched();

        StringSubject allBy(TheState(), text);
        allBy.s.ReplaceAll(what, allBy.s);
        EXPECT_EQ(TextOf(Alias(allBy.s)), hasText ? PlainReplaceAll(text, first, text) : u"");
        allBy.ExpectOthersUntouched();

        StringSubject allOf(TheState(), text);
        allOf.s.ReplaceAll(allOf.s, String("xy"));
        EXPECT_EQ(TextOf(Alias(allOf.s)), hasText ? u"xy" : u"");
        allOf.ExpectOthersUntouched();

        StringSubject both(TheState(), text);
        const String copy(both.s);
        const Picture before{Alias(copy)};
        both.s.ReplaceAll(copy, both.s);
        EXPECT_EQ(TextOf(Alias(both.s)), text);
        EXPECT_EQ(Picture(Alias(copy)).bytes, before.bytes);
        ExpectTheEmptyBlockIntact();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeReplace, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeReplaceStated, AllFromTheLeftWithoutOverlap) {
    String s("aaaaa");
    s.ReplaceAll(String("aa"), String("b"));
    EXPECT_STREQ(s.ConvertToChar(), "bba");
    EXPECT_TRUE(StringAccess::BlockOf(s)->IsWide());
    s.ReplaceAll(String("bba"), String());
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

// Pieces.

namespace {

std::vector<std::u16string> PiecesOf(const QORSysTSVectorOfUnicodeString& out) {
    std::vector<std::u16string> pieces;
    for (int i = 0; i < out.GetLength(); ++i) {
        pieces.push_back(TextOf(Alias(*out.pT(i))));
    }
    return pieces;
}

} // namespace

class ThreadSafeSplit : public InAllStates {
protected:
    static std::vector<std::u16string> PlainSplit(std::u16string text, const std::u16string& separator) {
        std::vector<std::u16string> pieces;
        for (std::size_t found; !separator.empty() && (found = text.find(separator)) != std::u16string::npos;) {
            pieces.push_back(text.substr(0, found));
            text.erase(0, found + separator.size());
        }
        pieces.push_back(text);
        return pieces;
    }
};

TEST_P(ThreadSafeSplit, GivesThePiecesBetweenSeparators) {
    std::vector<std::u16string> texts = TextsFor(TheState());
    if (HasText(TheState())) {
        texts.insert(texts.end(), {u",", u",,", u"a,b", u",a,,b,", u"a,", u",a", u"a-,-b"});
    }
    for (const std::u16string& text : texts) {
        std::vector<std::u16string> separators = Needles(text);
        separators.insert(separators.end(), {u"", u",", u",,", u"-,-"});
        for (const std::u16string& separator : separators) {
            for (const bool isWide : Representations(separator)) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << UTF8Of(separator));
                StringSubject subject(TheState(), text);
                QORSysTSVectorOfUnicodeString out;
                out.PutBack(String("old"));
                subject.s.Split(Make<String>(separator, isWide), out);
                EXPECT_EQ(PiecesOf(out), PlainSplit(text, separator));
                out.Clear();
                subject.ExpectOthersUntouched();
                EXPECT_EQ(Picture(Alias(subject.s)).bytes, Picture(Alias(StringSubject(TheState(), text).s)).bytes);
            }
        }
    }
}

TEST_P(ThreadSafeSplit, AtANullHandleGivesThePieceThatItIs) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        QORSysTSVectorOfUnicodeString out;
        subject.s.Split(NullString<String>(), out);
        EXPECT_EQ(PiecesOf(out), std::vector{text});
        subject.s.Split(subject.s, out);
        EXPECT_EQ(PiecesOf(out), PlainSplit(text, text));
        out.Clear();
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeSplit, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeSplitStated, TextAndSeparatorMayShareTheBlocksOfTheVectorThatIsCleared) {
    QORSysTSVectorOfUnicodeString out;
    out.PutBack(String("a,b"));
    out.PutBack(String(","));
    const String text(*out.pT(0));
    const String separator(*out.pT(1));
    text.Split(separator, out);
    EXPECT_EQ(PiecesOf(out), (std::vector<std::u16string>{u"a", u"b"}));
}

// Case.

class ThreadSafeCase : public InAllStates {};

TEST_P(ThreadSafeCase, ChangesLettersInPlaceAndKeepsTheRepresentation) {
    const std::u16string texts[] = {u"aBc", u"abz AZ @[`{", std::u16string(100, u'q') + u"R", u"\u00d7 x \u00a7 Y"};
    for (const std::u16string& text : texts) {
        for (const bool isUpper : {false, true}) {
            const std::u16string start = HasText(TheState()) ? text : u"";
            StringSubject subject(TheState(), start);
            const String& result = isUpper ? subject.s.ToUpper() : subject.s.ToLower();
            EXPECT_EQ(&result, &subject.s);
            if (!HasText(TheState())) {
                subject.ExpectUnchanged();
                continue;
            }
            std::u16string expected = text;
            for (char16_t& unit : expected) {
                const bool isChanged = isUpper ? unit >= u'a' && unit <= u'z' : unit >= u'A' && unit <= u'Z';
                unit = static_cast<char16_t>(isChanged ? unit ^ 0x20 : unit);
            }
            ExpectFreshlyWritten(Alias(subject.s), IsWide(TheState()));
            EXPECT_EQ(subject.Now() == subject.BlockBefore(), !IsShared(TheState()));
            ExpectReadsAs(Alias(subject.s), expected);
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(ThreadSafeCase, LeavesTextInThatCaseAlone) {
    for (const std::u16string text : {u"ABC \u00d7 1@[`{", u"abc \u00d7 1@[`{"}) {
        StringSubject subject(TheState(), HasText(TheState()) ? text : u"");
        text[0] == u'A' ? subject.s.ToUpper() : subject.s.ToLower();
        subject.ExpectUnchanged();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeCase, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// Comparison.

class ThreadSafeComparison : public InAllStates {
protected:
    static const std::vector<std::u16string>& Others() {
        static const std::vector<std::u16string> texts = {
            u"",          u"a",      u"A",         u"ABC",       u"abc",
            u"abd",       u"abcd",   u"gr\u00fcn", u"gr\u00dcn", u"\u00e4\u00f6\u00fc \u00df\u00ff",
            u"\u20ac 20", u"\uffee", u"\U0001F600"};
        return texts;
    }
    static std::string WithoutCase(std::string bytes) {
        for (char& byte : bytes) {
            byte = static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte);
        }
        return bytes;
    }
    /// The order of bytes without a sign, as `strcmp` has it.
    static int ByteOrder(const std::string& a, const std::string& b) { return Sign(std::strcmp(a.c_str(), b.c_str())); }
};

TEST_P(ThreadSafeComparison, OrdersTheNarrowTextsByTheirBytes) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const StringSubject subject(TheState(), text);
        const std::string bytes = NarrowForm(text);
        for (const std::u16string& other : Others()) {
            for (const bool isWide : Representations(other)) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " / " << UTF8Of(other) << isWide);
                const String s = Make<String>(other, isWide);
                const std::string otherBytes = NarrowForm(other);
                EXPECT_EQ(Sign(subject.s.Compare(s, 0)), ByteOrder(bytes, otherBytes));
                EXPECT_EQ(Sign(s.Compare(subject.s, 0)), ByteOrder(otherBytes, bytes));
                for (const unsigned char ignoreCase : {1, 2, 255}) {
                    EXPECT_EQ(Sign(subject.s.Compare(s, ignoreCase)),
                              ByteOrder(WithoutCase(bytes), WithoutCase(otherBytes)));
                }
            }
        }
        EXPECT_EQ(subject.s.Compare(subject.s, 0), 0);
        EXPECT_EQ(Sign(subject.s.Compare(NullString<String>(), 0)), bytes.empty() ? 0 : 1);
        EXPECT_EQ(Sign(subject.s.Compare(NullString<String>(), 1)), bytes.empty() ? 0 : 1);
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeComparison, FindsTextsEqualInEitherRepresentation) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const StringSubject subject(TheState(), text);
        std::vector<std::u16string> others = Others();
        others.push_back(text);
        for (const std::u16string& other : others) {
            for (const bool isWide : Representations(other)) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " / " << UTF8Of(other) << isWide);
                const String s = Make<String>(other, isWide);
                const bool isEqual = TheState() != State::Null && text == other;
                EXPECT_EQ(subject.s == s, isEqual);
                EXPECT_EQ(subject.s != s, !isEqual);
            }
        }
        const String copy(subject.s);
        EXPECT_TRUE(subject.s == subject.s);
        EXPECT_TRUE(subject.s == copy);
        EXPECT_FALSE(subject.s != copy);
        EXPECT_EQ(NullString<String>() == subject.s, TheState() == State::Null);
    }
}

TEST_P(ThreadSafeComparison, OrdersByBytesWhenBothAreNarrowAndByUnitsOtherwise) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const StringSubject subject(TheState(), text);
        for (const std::u16string& other : Others()) {
            for (const bool isWide : Representations(other)) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " / " << UTF8Of(other) << isWide);
                const String s = Make<String>(other, isWide);
                const int order = TheState() == State::Null        ? -1
                                  : !isWide && !IsWide(TheState()) ? ByteOrder(NarrowForm(text), NarrowForm(other))
                                                                   : Sign(text.compare(other));
                EXPECT_EQ(subject.s < s, order < 0);
                EXPECT_EQ(subject.s <= s, order <= 0);
                EXPECT_EQ(subject.s > s, order > 0);
                EXPECT_EQ(subject.s >= s, order >= 0);
            }
        }
        const String null = NullString<String>();
        const bool isNull = TheState() == State::Null;
        EXPECT_EQ(subject.s > null, !isNull);
        EXPECT_EQ(subject.s >= null, !isNull);
        EXPECT_EQ(subject.s < null, isNull) << "the left side is looked at first";
        EXPECT_EQ(subject.s <= null, isNull);
        EXPECT_TRUE(null < subject.s);
        EXPECT_TRUE(null <= subject.s);
        subject.ExpectUnchanged();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeComparison, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeComparisonStated, IgnoresCaseOnRequest) {
    EXPECT_EQ(String("ABC").Compare(String("abc"), 1), 0);
    EXPECT_NE(String("ABC").Compare(String("abc"), 0), 0);
}

// U+FFEE stands behind the surrogates in UTF-16 and in front of the supplementary characters in UTF-8.
TEST(ThreadSafeComparisonStated, TheOrderDependsOnTheRepresentations) {
    const std::u16string low = u"\uffee";
    const std::u16string high = u"\U0001F600";
    EXPECT_TRUE(Make<String>(low, false) < Make<String>(high, false));
    EXPECT_TRUE(Make<String>(low, true) > Make<String>(high, false));
    EXPECT_TRUE(Make<String>(low, false) > Make<String>(high, true));
    EXPECT_TRUE(Make<String>(low, true) > Make<String>(high, true));
    EXPECT_LT(Make<String>(low, true).Compare(Make<String>(high, true), 0), 0);
}

// Everything in any order, beside plain texts.

namespace {

class Model {
public:
    explicit Model(unsigned int seed, bool isUTF8) : _random(seed), _isUTF8(isUTF8) {}

    void Step() {
        Entry& a = Any();
        Entry& b = Any();
        Entry& c = Any();
        const std::u16string other = b.text;
        const std::u16string third = c.text;
        const int first = Below(static_cast<int>(a.text.size()) + 1);
        const int last = first + Below(static_cast<int>(a.text.size()) - first + 1);
        if (a.text.size() > 400) {
            a.s.SetCapacity(0);
            a.text.clear();
            return;
        }
        switch (Below(15)) {
        case 0:
            a.text = AnyText();
            a.s = Make<String>(a.text, Below(2) == 0);
            break;
        case 1:
            a.s = b.s;
            a.text = other;
            break;
        case 2:
            a.s.Append(b.s);
            a.text += other;
            break;
        case 3:
            a.s.Append(b.s, c.s);
            a.text += other + third;
            break;
        case 4:
            a.s.Append(b.s, a.s, c.s);
            a.text += other + a.text + third;
            break;
        case 5:
            AppendPart(a, b);
            break;
        case 6:
            EXPECT_EQ(a.s.Insert(first, b.s), 0);
            a.text.insert(static_cast<std::size_t>(first), other);
            break;
        case 7:
            InsertPart(a, b, first);
            break;
        case 8:
            EXPECT_EQ(a.s.ReplaceRange(first, last, b.s), 0);
            a.text = Replaced(a.text, first, last, other);
            break;
        case 9: {
            const std::u16string what = AnyText().substr(0, 2);
            const int expected = PlainSearch(a.text, what, first);
            EXPECT_EQ(a.s.ReplaceSubString(Make<String>(what, Below(2) == 0), b.s, first), expected);
            if (expected >= 0) {
                a.text = Replaced(a.text, expected, expected + static_cast<int>(what.size()), other);
            }
            break;
        }
        case 10: {
            const std::u16string what = AnyText().substr(0, 2);
            const std::u16string with = AnyText();
            a.s.ReplaceAll(Make<String>(what, Below(2) == 0), Make<String>(with, Below(2) == 0));
            a.text = what.empty() ? a.text : PlainReplaceAll(a.text, what, with);
            break;
        }
        case 11:
            b.s = a.s.SubString(first, last);
            b.text =
                std::u16string(a.text).substr(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first));
            break;
        case 12:
            a.s.SetCapacity(1 + 4 * static_cast<int>(a.text.size()) + Below(20));
            break;
        case 13: {
            const std::u16string what = AnyText().substr(0, 2);
            EXPECT_EQ(a.s.SearchSubStringBackward(Make<String>(what, false), first),
                      PlainSearchBackward(a.text, what, first));
            break;
        }
        default:
            EXPECT_EQ(a.s == b.s, a.text == b.text);
            EXPECT_EQ(Sign(a.s.Compare(b.s, 0)), Sign(NarrowForm(a.text).compare(NarrowForm(b.text))));
            a.s.HashFunc();
            break;
        }
    }

    void ExpectAllAsTheirTexts() const {
        for (const Entry& entry : _entries) {
            ASSERT_EQ(TextOf(Alias(entry.s)), entry.text);
        }
        ExpectTheEmptyBlockIntact();
    }

    void ExpectViewsAndHashesAsTheirTexts() const {
        for (const Entry& entry : _entries) {
            ExpectReadsAs(Alias(entry.s), entry.text);
            EXPECT_EQ(std::string(entry.s.ConvertToChar(), static_cast<std::size_t>(entry.s.GetLengthInByte())),
                      NarrowForm(entry.text));
        }
    }

private:
    struct Entry {
        String s;
        std::u16string text;
    };

    int Below(int bound) { return static_cast<int>((_random() >> 8) % static_cast<unsigned int>(bound)); }
    Entry& Any() { return _entries[static_cast<std::size_t>(Below(4))]; }

    std::u16string AnyText() {
        static const char16_t Characters[] = {u'a', u'b', u'a', u'b', u',', u'\u00e9', u'\u00fc', u'\u20ac'};
        std::u16string text;
        for (int left = Below(Below(5) == 0 ? 50 : 5); left > 0; --left) {
            text += Characters[Below(_isUTF8 ? 8 : 7)];
        }
        return text;
    }

    static std::u16string Replaced(std::u16string text, int start, int end, const std::u16string& with) {
        return text.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start), with);
    }

    /// A range of units that a narrow target may take as bytes.
    bool IsOneToOne(const std::u16string& text) const {
        return !_isUTF8 || std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; });
    }

    void AppendPart(Entry& a, Entry& b) {
        if (!IsOneToOne(b.text) && !StringAccess::BlockOf(a.s)->IsWide() && !IsOnTheEmptyBlock(a.s)) {
            return;
        }
        const int start = Below(static_cast<int>(b.text.size()) + 1);
        const int end = start + Below(static_cast<int>(b.text.size()) - start + 1);
        const std::u16string part =
            b.text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
        a.s.Append(b.s, start, end);
        a.text += part;
    }

    void InsertPart(Entry& a, Entry& b, int pos) {
        const int start = Below(static_cast<int>(b.text.size()) + 1);
        const int end = start + Below(static_cast<int>(b.text.size()) - start + 1);
        const bool isAtTheEnd = pos == StringAccess::BlockOf(a.s)->_length;
        if (isAtTheEnd && !IsOneToOne(b.text)) {
            return;
        }
        const std::u16string part =
            b.text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
        EXPECT_EQ(a.s.Insert(pos, b.s, start, end), start < end ? 0 : VEL::StatusFailure);
        a.text.insert(static_cast<std::size_t>(pos), part);
    }

    std::minstd_rand _random;
    bool _isUTF8;
    std::array<Entry, 4> _entries;
};

} // namespace

class ThreadSafeRandomOperations : public StringEnvironment::InBoth {};

TEST_P(ThreadSafeRandomOperations, AgreeWithPlainTexts) {
    for (unsigned int seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        Model model(seed, IsUTF8());
        for (int step = 0; step < 500; ++step) {
            SCOPED_TRACE(step);
            model.Step();
            model.ExpectAllAsTheirTexts();
            if (step % 7 == 0) {
                model.ExpectViewsAndHashesAsTheirTexts();
            }
            if (HasFailure()) {
                return;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, ThreadSafeRandomOperations,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);
