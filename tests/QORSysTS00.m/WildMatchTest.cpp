/// @file
/// WildMatch, beside its plain form.

#include "PlainWildMatch.h"
#include "StringStates.h"

namespace {

using namespace StringStates;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t LongestText = 4;
#else
constexpr std::size_t LongestText = 5;
#endif
constexpr std::size_t LongestPattern = 5;

std::vector<std::u16string> AllTexts(const std::u16string& alphabet, std::size_t longest) {
    std::vector<std::u16string> texts{u""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < longest; ++i) {
        for (const char16_t unit : alphabet) {
            texts.push_back(texts[i] + unit);
        }
    }
    return texts;
}

std::vector<QORUnicodeString> StringsOf(const std::vector<std::u16string>& texts, bool isWide) {
    std::vector<QORUnicodeString> strings;
    strings.reserve(texts.size());
    for (const std::u16string& text : texts) {
        strings.push_back(StringOf(text, isWide));
    }
    return strings;
}

bool Match(const char* text, const char* pattern, char wild = '*', char quote = '\'') {
    return QORUnicodeString(text).WildMatch(QORUnicodeString(pattern), QORUnicodeChar(wild), QORUnicodeChar(quote));
}

/// Compares all texts with all patterns.
void ExpectPlainResults(const std::vector<std::u16string>& texts, const std::vector<std::u16string>& patterns,
                        unsigned int wild, unsigned int quote, bool isWide = true) {
    const PlainWildMatch::Matcher plain(wild, quote);
    const std::vector<QORUnicodeString> strings = StringsOf(texts, isWide);
    const QORUnicodeChar wildChar = Character(wild);
    const QORUnicodeChar quoteChar = Character(quote);
    for (const std::u16string& pattern : patterns) {
        const QORUnicodeString p = StringOf(pattern, isWide);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            ASSERT_EQ(strings[i].WildMatch(p, wildChar, quoteChar), plain.Matches(texts[i], pattern))
                << "\"" << UTF8Of(texts[i]) << "\" with pattern \"" << UTF8Of(pattern) << "\"";
        }
    }
}

} // namespace

/// All short texts with all short patterns that begin with one of the alphabet's units.
class WildMatchOfAll : public testing::TestWithParam<std::tuple<const char16_t*, int>> {};

TEST_P(WildMatchOfAll, AgreesWithThePlainForm) {
    const std::u16string alphabet = std::get<0>(GetParam());
    const char16_t first = alphabet[static_cast<std::size_t>(std::get<1>(GetParam()))];
    std::vector<std::u16string> patterns = AllTexts(alphabet, LongestPattern);
    std::erase_if(patterns, [first](const std::u16string& pattern) { return pattern.empty() || pattern[0] != first; });
    ExpectPlainResults(AllTexts(alphabet, LongestText), patterns, '*', alphabet[4]);
}

// The second alphabet's quote is not the apostrophe, which is a letter there.
INSTANTIATE_TEST_SUITE_P(Patterns, WildMatchOfAll,
                         testing::Combine(testing::Values(u"abc*'", u"ab'*\""), testing::Range(0, 5)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param)[4] == u'\'' ? "Apostrophe" : "Another") +
                                    std::to_string(std::get<1>(test.param));
                         });

TEST(WildMatchForms, NarrowTextsAgreeToo) {
    ExpectPlainResults(AllTexts(u"a*'", 5), AllTexts(u"a*'", 5), '*', '\'', false);
    ExpectPlainResults(AllTexts(u"a*'\"", 3), AllTexts(u"a*'\"", 4), '*', '"', false);
}

TEST(WildMatchForms, WildAndQuoteAreAnyCharacters) {
    for (const unsigned int wild : {0x3Fu, 0x61u, 0xE9u, 0x20ACu, 0xFFFFu}) {
        for (const unsigned int quote : {0x27u, 0x62u, 0xE8u, 0x20ADu}) {
            const std::u16string alphabet{u'a', u'\'', static_cast<char16_t>(wild), static_cast<char16_t>(quote)};
            ExpectPlainResults(AllTexts(alphabet, 3), AllTexts(alphabet, 4), wild, quote);
        }
    }
}

TEST(WildMatchForms, WildAndQuoteMayBeTheSame) {
    ExpectPlainResults(AllTexts(u"a'*", 4), AllTexts(u"a'*", 5), '*', '*');
    ExpectPlainResults(AllTexts(u"a'*", 4), AllTexts(u"a'*", 5), '\'', '\'');
}

// The pattern goes on behind the first unit of the pair, so a pair hardly ever matches anything.
TEST(WildMatchForms, WildAndQuoteAboveSixteenBits) {
    const std::u16string alphabet{u'a', u'\'', char16_t(0xD83D), char16_t(0xDE00)};
    const std::vector<std::u16string> texts = AllTexts(alphabet, 4);
    ExpectPlainResults(texts, texts, 0x1F600, '\'');
    ExpectPlainResults(texts, texts, 0x1F600, 0x1F600);
    ExpectPlainResults(texts, texts, 'a', 0x1F600);
    ExpectPlainResults(texts, texts, 0xD83D, 0xDE00);
    ExpectPlainResults(texts, texts, 0xDE00, 0xD83D);
    EXPECT_FALSE(QORUnicodeString("abc").WildMatch(WideString(u"\U0001F600"), Character(0x1F600), Character('\'')));
    EXPECT_TRUE(WideString(std::u16string{u'a', char16_t(0xDE00)})
                    .WildMatch(WideString(u"\U0001F600"), Character(0x1F600), Character('\'')));
}

TEST(WildMatchForms, CodeZeroIsNeverFoundInTextWithoutIt) {
    const std::vector<std::u16string> texts = AllTexts(u"a*'", 4);
    ExpectPlainResults(texts, texts, 0, '\'');
    ExpectPlainResults(texts, texts, '*', 0);
    ExpectPlainResults(texts, texts, 0, 0);
}

TEST(WildMatchForms, CodeZeroAndZeroUnitsFinish) {
    const std::vector<std::u16string> texts = AllTexts(std::u16string(u"a\0'", 3), 4);
    for (const std::u16string& text : texts) {
        const QORUnicodeString s = WideString(text);
        for (const std::u16string& pattern : texts) {
            const QORUnicodeString p = WideString(pattern);
            s.WildMatch(p, Character(0), Character('\''));
            s.WildMatch(p, Character('*'), Character(0));
            s.WildMatch(p, Character(0), Character(0));
        }
    }
}

TEST(WildMatchForms, ZeroUnitsAreLetters) {
    const std::u16string alphabet(u"a\0*'", 4);
    ExpectPlainResults(AllTexts(alphabet, 4), AllTexts(alphabet, 4), '*', '\'');
}

TEST(WildMatchStated, Cases) {
    EXPECT_TRUE(Match("abc", "a*c"));
    EXPECT_TRUE(Match("abc", "*"));
    EXPECT_TRUE(Match("", "*"));
    EXPECT_FALSE(Match("abc", "ab"));
    EXPECT_FALSE(Match("ab", "abc*"));
    EXPECT_FALSE(Match("abc", "'a'*"));
    EXPECT_TRUE(Match("a*", "'a'*"));
    EXPECT_FALSE(Match("abc", "A*"));
    EXPECT_TRUE(Match("", ""));
    EXPECT_FALSE(Match("", "a"));
    EXPECT_FALSE(Match("a", ""));
    EXPECT_TRUE(Match("", "***"));
}

class WildMatchIn : public InAllStates {};

TEST_P(WildMatchIn, TheSameResultAndNoChange) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const PlainWildMatch::Matcher plain('*', '\'');
        for (const State patternState : AllStates) {
            for (const std::u16string& pattern :
                 {std::u16string(u"*"), text, text + u"*", std::u16string(u"a*"), std::u16string(u"*c"),
                  std::u16string(u"*b*"), std::u16string(u"'a'")}) {
                if (!IsWide(patternState) && !FitsNarrow(pattern)) {
                    continue;
                }
                Subject other(patternState, pattern);
                const std::u16string effective = HasText(patternState) ? pattern : u"";
                if (HasText(patternState) && pattern.empty()) {
                    continue;
                }
                EXPECT_EQ(subject.s.WildMatch(other.s, QORUnicodeChar('*'), QORUnicodeChar('\'')),
                          plain.Matches(text, effective))
                    << UTF8Of(text) << " with " << UTF8Of(effective);
                other.ExpectUnchanged();
            }
        }
        EXPECT_TRUE(subject.s.WildMatch(subject.s, QORUnicodeChar('*'), QORUnicodeChar('\'')));
        subject.ExpectUnchanged();
    }
}

INSTANTIATE_TEST_SUITE_P(States, WildMatchIn, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// What recursion and substrings would take hours and gigabytes of stack for.

namespace {
constexpr std::size_t Long = 100000;
}

TEST(WildMatchLong, OneWildCharacter) {
    const QORUnicodeString s(std::string(Long, 'a').c_str());
    EXPECT_TRUE(s.WildMatch(QORUnicodeString("*"), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_TRUE(s.WildMatch(QORUnicodeString("a*"), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_TRUE(s.WildMatch(QORUnicodeString("*a"), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_FALSE(s.WildMatch(QORUnicodeString("*b"), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_FALSE(s.WildMatch(QORUnicodeString("b*"), QORUnicodeChar('*'), QORUnicodeChar('\'')));
}

TEST(WildMatchLong, SeveralWildCharacters) {
    const std::string as(Long, 'a');
    const auto match = [](const std::string& text, const char* pattern) {
        return QORUnicodeString(text.c_str())
            .WildMatch(QORUnicodeString(pattern), QORUnicodeChar('*'), QORUnicodeChar('\''));
    };
    EXPECT_FALSE(match(as, "a*b*c"));
    EXPECT_TRUE(match(as + "b" + as + "c", "a*b*c"));
    EXPECT_FALSE(match(as + "b" + as, "a*b*c"));
    EXPECT_FALSE(match(as + "c", "a*b*c"));
    EXPECT_TRUE(match(as, "***a***"));
}

TEST(WildMatchLong, AnEqualPattern) {
    const std::string as(Long, 'a');
    const QORUnicodeString s(as.c_str());
    EXPECT_TRUE(s.WildMatch(QORUnicodeString(as.c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_TRUE(s.WildMatch(QORUnicodeString((as + "*").c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_FALSE(s.WildMatch(QORUnicodeString((as + "b").c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
}

TEST(WildMatchLong, ManyWildCharacters) {
    const QORUnicodeString s(std::string(200, 'a').c_str());
    std::string pattern;
    for (int i = 0; i < 30; ++i) {
        pattern += "a*";
    }
    EXPECT_TRUE(s.WildMatch(QORUnicodeString(pattern.c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_FALSE(s.WildMatch(QORUnicodeString((pattern + "b").c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
}

TEST(WildMatchLong, OnlyWildCharacters) {
    const QORUnicodeString stars(std::string(Long, '*').c_str());
    EXPECT_TRUE(QORUnicodeString().WildMatch(stars, QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_TRUE(QORUnicodeString("a").WildMatch(stars, QORUnicodeChar('*'), QORUnicodeChar('\'')));
}

TEST(WildMatchLong, ManyQuotedSections) {
    std::string text;
    std::string pattern;
    for (std::size_t i = 0; i < Long / 4; ++i) {
        pattern += "'ab'";
        text += "ab";
    }
    // A wild character in the text is what makes quotes be looked at one section after the other.
    const QORUnicodeString s((text + "*").c_str());
    EXPECT_TRUE(s.WildMatch(QORUnicodeString((pattern + "*").c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
    EXPECT_TRUE(QORUnicodeString(text.c_str())
                    .WildMatch(QORUnicodeString(pattern.c_str()), QORUnicodeChar('*'), QORUnicodeChar('\'')));
}

TEST(WildMatchLong, ManyApostrophesInTheText) {
    const QORUnicodeString s((std::string(Long, '\'') + "*").c_str());
    s.WildMatch(QORUnicodeString("''*"), QORUnicodeChar('*'), QORUnicodeChar('\''));
    s.WildMatch(QORUnicodeString("a'b"), QORUnicodeChar('*'), QORUnicodeChar('\''));
    s.WildMatch(s, QORUnicodeChar('*'), QORUnicodeChar('\''));
}
