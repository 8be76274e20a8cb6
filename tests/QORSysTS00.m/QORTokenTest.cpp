#include "QORToken.h"

#include "HeapLog.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace StringBlocks;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::u16string>;

QORUnicodeString WideString(const std::u16string& text) {
    QORUnicodeString s;
    s.BuildFromUCChar(Units(text.c_str()), static_cast<int>(text.size()));
    return s;
}

std::u16string TextOf(const QORUnicodeString& s) {
    return Units(s.ConvertToUCChar(), s.GetLengthInChar());
}

Texts Rest(QORToken& tokens, const QORUnicodeString& delimiters) {
    Texts texts;
    unsigned char found = 77;
    for (auto token = tokens.GetNextToken(delimiters, &found); found != 0;
         token = tokens.GetNextToken(delimiters, &found)) {
        EXPECT_EQ(found, 1);
        texts.push_back(TextOf(token));
    }
    EXPECT_TRUE(tokens.GetNextToken(delimiters, &found).IsEmpty());
    EXPECT_EQ(found, 0);
    return texts;
}

/// The rest by the form that delimits by white space.
Texts RestByWhiteSpace(QORToken& tokens) {
    Texts texts;
    unsigned char found = 77;
    for (auto token = tokens.GetNextToken(&found); found != 0; token = tokens.GetNextToken(&found)) {
        texts.push_back(TextOf(token));
    }
    return texts;
}

Texts Tokens(const std::u16string& text, const std::u16string& delimiters, unsigned char keepEmpty) {
    QORToken tokens(WideString(text), keepEmpty);
    return Rest(tokens, WideString(delimiters));
}

/// The same said plainly.
Texts PlainTokens(const std::u16string& text, const std::u16string& delimiters, bool keepEmpty) {
    const auto isDelimiter = [&](char16_t unit) { return delimiters.find(unit) != std::u16string::npos; };
    Texts texts;
    for (std::size_t position = 0; position < text.size();) {
        if (keepEmpty && isDelimiter(text[position])) {
            ++position;
        }
        while (!keepEmpty && position < text.size() && isDelimiter(text[position])) {
            ++position;
        }
        if (!keepEmpty && position == text.size()) {
            break;
        }
        std::u16string token;
        for (; position < text.size() && !isDelimiter(text[position]); ++position) {
            token += text[position];
        }
        texts.push_back(token);
    }
    return texts;
}

} // namespace

TEST(QORToken, TakesARunOfDelimitersAsOne) {
    EXPECT_THAT(Tokens(u"  a  b ", u" ", 0), ElementsAre(u"a", u"b"));
    EXPECT_THAT(Tokens(u",;a;,b", u",;", 0), ElementsAre(u"a", u"b"));
    EXPECT_THAT(Tokens(u"  ", u" ", 0), IsEmpty());
    EXPECT_THAT(Tokens(u"ab", u",", 0), ElementsAre(u"ab"));
}

TEST(QORToken, KeepsEmptyTokensButNotAtTheStart) {
    EXPECT_THAT(Tokens(u"a,b", u",", 1), ElementsAre(u"a", u"b"));
    EXPECT_THAT(Tokens(u"a,,b", u",", 1), ElementsAre(u"a", u"", u"b"));
    EXPECT_THAT(Tokens(u"a,", u",", 1), ElementsAre(u"a", u""));
    EXPECT_THAT(Tokens(u",a", u",", 1), ElementsAre(u"a"));
    EXPECT_THAT(Tokens(u",", u",", 1), ElementsAre(u""));
    EXPECT_THAT(Tokens(u",,", u",", 1), ElementsAre(u"", u""));
    EXPECT_THAT(Tokens(u"a,,b", u",", 0x80), ElementsAre(u"a", u"", u"b")) << "any byte but 0";
}

TEST(QORToken, FindsNothingInAnEmptyText) {
    for (const unsigned char keepEmpty : {0, 1}) {
        EXPECT_THAT(Tokens(u"", u",", keepEmpty), IsEmpty());
        EXPECT_THAT(Tokens(u"", u"", keepEmpty), IsEmpty());
        QORToken null(NullString<QORUnicodeString>(), keepEmpty);
        EXPECT_THAT(Rest(null, ","), IsEmpty());
    }
}

TEST(QORToken, GivesTheRestWithoutDelimiters) {
    for (const unsigned char keepEmpty : {0, 1}) {
        EXPECT_THAT(Tokens(u" a,b ", u"", keepEmpty), ElementsAre(u" a,b "));
        QORToken tokens("a,b", keepEmpty);
        tokens.GetNextToken(",", nullptr);
        EXPECT_THAT(Rest(tokens, ""), ElementsAre(u",b"));
        QORToken others("a,b", keepEmpty);
        EXPECT_THAT(Rest(others, NullString<QORUnicodeString>()), ElementsAre(u"a,b"));
    }
}

TEST(QORToken, LeavesTheDelimiterForTheNextCall) {
    QORToken tokens("a,b;c", 0);
    EXPECT_EQ(TextOf(tokens.GetNextToken(",", nullptr)), u"a");
    EXPECT_EQ(TextOf(tokens.GetNextToken(";", nullptr)), u",b");
    EXPECT_EQ(TextOf(tokens.GetNextToken(",;", nullptr)), u"c");
}

TEST(QORToken, StartsAgainAfterReset) {
    QORToken tokens("a b", 0);
    EXPECT_THAT(Rest(tokens, " "), ElementsAre(u"a", u"b"));
    tokens.Reset();
    EXPECT_THAT(Rest(tokens, " "), ElementsAre(u"a", u"b"));
}

TEST(QORToken, DelimitsByWhiteSpaceUnlessToldOtherwise) {
    QORToken tokens("a b\tc\nd\re\vf,g", 0);
    Texts texts;
    unsigned char found = 77;
    for (auto token = tokens.GetNextToken(&found); found != 0; token = tokens.GetNextToken(&found)) {
        EXPECT_EQ(found, 1);
        texts.push_back(TextOf(token));
    }
    EXPECT_THAT(texts, ElementsAre(u"a", u"b", u"c", u"d\re\vf,g"));
    EXPECT_TRUE(tokens.GetNextToken(nullptr).IsEmpty()) << "nobody asks whether there was one";
    tokens.Reset();
    EXPECT_EQ(TextOf(tokens.GetNextToken(nullptr)), u"a");
    EXPECT_EQ(TextOf(tokens.GetNextToken(" \t", nullptr)), u"b");
}

TEST(QORToken, KeepsEmptyTokensBetweenWhiteSpaceToo) {
    QORToken tokens("a \tb\n\n", 1);
    EXPECT_THAT(RestByWhiteSpace(tokens), ElementsAre(u"a", u"", u"b", u"", u""));
    for (const std::u16string text : {u"", u" ", u"a", u" a", u"a ", u" \t\n", u"a b\tc\nd", u"  a  b  ",
                                      u"a long token, and \t others behind it\n\n, long enough for vectors"}) {
        for (const unsigned char keepEmpty : {0, 1, 2}) {
            QORToken others(WideString(text), keepEmpty);
            EXPECT_EQ(RestByWhiteSpace(others), PlainTokens(text, u" \t\n", keepEmpty != 0));
        }
    }
}

// Delimiters are passed over also when no token comes behind them.
TEST(QORToken, MovesAlongPastTrailingDelimiters) {
    for (const std::u16string end : {u" ", u"  ", u"                                        "}) {
        QORToken tokens(WideString(u"a" + end), 0);
        EXPECT_EQ(TextOf(tokens.GetNextToken(" ", nullptr)), u"a");
        unsigned char found = 77;
        EXPECT_TRUE(tokens.GetNextToken(" ", &found).IsEmpty());
        EXPECT_EQ(found, 0);
        found = 77;
        EXPECT_TRUE(tokens.GetNextToken(",", &found).IsEmpty());
        EXPECT_EQ(found, 0) << "the position is at the end";
    }
}

TEST(QORToken, ComparesUnits) {
    EXPECT_THAT(Tokens(u"a\u20acb\u00e9c", u"\u00e9\u20ac", 0), ElementsAre(u"a", u"b", u"c"));
    EXPECT_THAT(Tokens(u"a\u20acb,c", u",\u20ac", 0), ElementsAre(u"a", u"b", u"c"));
    EXPECT_THAT(Tokens(u"a\u012Cb", u",", 0), ElementsAre(u"a\u012Cb")) << "its low byte is a comma";
    EXPECT_THAT(Tokens(u"a\U0001F600b\U0001F601c", u"\U0001F600", 0), ElementsAre(u"a", u"b",
                                                                                  u"\xDE01"
                                                                                  u"c"))
        << "half of a pair delimits too";
    EXPECT_THAT(Tokens(std::u16string(u"a\0b", 3), std::u16string(1, u'\0'), 0), ElementsAre(u"a", u"b"));
    EXPECT_THAT(Tokens(u"a\x7f"
                       u"b\x80"
                       u"c",
                       u"\x7f\x80", 0),
                ElementsAre(u"a", u"b", u"c"));
}

TEST(QORToken, SharesTheTextAndGivesWideTokens) {
    const QORUnicodeString text("gr\u00fcn blau");
    const int handles = StringAccess::BlockOf(text)->_refCount;
    QORToken tokens(text, 0);
    EXPECT_EQ(StringAccess::BlockOf(text)->_refCount, handles + 1);
    const QORUnicodeString token = tokens.GetNextToken(nullptr);
    EXPECT_EQ(VEL::GetMainRepEncoding(token), VEL::MainRepWide);
    EXPECT_EQ(TextOf(token), u"gr\u00fcn");
    EXPECT_EQ(StringAccess::BlockOf(token)->_refCount, 1);
    EXPECT_EQ(StringAccess::BlockOf(token)->_capacity, CapacityFor(true, 4));
    EXPECT_TRUE(StringBlocks::IsStale(StringAccess::BlockOf(token)));
}

TEST(QORToken, GivesAllOfATextOfItsOwn) {
    const QORUnicodeString text = WideString(u"whole");
    QORToken tokens(text, 0);
    const QORUnicodeString token = tokens.GetNextToken(nullptr);
    EXPECT_EQ(TextOf(token), u"whole");
    EXPECT_NE(StringAccess::BlockOf(token), StringAccess::BlockOf(text));
}

TEST(QORToken, KeepsItsTextWhenTheStringChanges) {
    QORUnicodeString text("a b");
    QORToken tokens(text, 0);
    text = "x y z";
    EXPECT_THAT(Rest(tokens, " "), ElementsAre(u"a", u"b"));
}

TEST(QORToken, IsLaidOutAsATableATextAPositionAndAByte) {
    static_assert(std::has_virtual_destructor_v<QORToken> && sizeof(QORToken) == 32);
    const QORUnicodeString text("ab cd");
    QORToken tokens(text, 5);
    tokens.GetNextToken(nullptr);
    const char* const bytes = reinterpret_cast<const char*>(&tokens);
    char* handle = nullptr;
    std::memcpy(&handle, bytes + 8, sizeof handle);
    EXPECT_EQ(handle, StringAccess::Handle(text));
    unsigned long position = 0;
    std::memcpy(&position, bytes + 16, sizeof position);
    EXPECT_EQ(position, 2u);
    EXPECT_EQ(bytes[24], 5);
}

TEST(QORToken, AgreesWithThePlainForm) {
    std::mt19937 random(7);
    const std::u16string alphabet = u"ab ,\t\n\u00e9\u20ac\x7f\x80";
    const auto someText = [&](std::size_t most) {
        std::u16string text(random() % (most + 1), u' ');
        for (char16_t& unit : text) {
            unit = alphabet[random() % alphabet.size()];
        }
        return text;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::u16string text = someText(i % 10 == 0 ? 200 : 12);
        const std::u16string delimiters = someText(4);
        for (const unsigned char keepEmpty : {0, 1}) {
            ASSERT_EQ(Tokens(text, delimiters, keepEmpty), PlainTokens(text, delimiters, keepEmpty != 0))
                << "text " << i;
        }
    }
}

TEST(QORToken, AgreesWithThePlainFormInLongTokens) {
    for (std::size_t length = 0; length < 70; ++length) {
        for (const std::u16string delimiters : {u",", u",;", u",;:!", u",;:!?", u",;:!?\u20ac"}) {
            // Each delimiter in turn, the last one too.
            for (const char16_t delimiter : delimiters) {
                const std::u16string text =
                    std::u16string(length, u'x') + std::u16string(length + 1, delimiter) + std::u16string(length, u'y');
                for (const unsigned char keepEmpty : {0, 1}) {
                    ASSERT_EQ(Tokens(text, delimiters, keepEmpty), PlainTokens(text, delimiters, keepEmpty != 0))
                        << length;
                }
            }
        }
    }
}

TEST(QORTokenShortage, GivesEmptyTokensAndGoesOn) {
    VELStringPoolSetForCurrentThrd(0);
    QORToken tokens(WideString(u"a b c"), 0);
    const QORUnicodeString delimiter = WideString(u" ");
    unsigned char found = 0;
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_TRUE(IsOnTheEmptyBlock(tokens.GetNextToken(delimiter, &found)));
        EXPECT_EQ(found, 1);
    }
    EXPECT_EQ(TextOf(tokens.GetNextToken(delimiter, &found)), u"b");
    EXPECT_EQ(DebugBreaks(), 0);
}

TEST(QORTokenShortage, StaysWhereItIsWhileTheDelimitersHaveNoView) {
    VELStringPoolSetForCurrentThrd(0);
    for (const unsigned char keepEmpty : {0, 1}) {
        QORToken tokens(WideString(u"a b"), keepEmpty);
        for (const char16_t* const token : {u"a", u"b"}) {
            const QORUnicodeString delimiter(" ");
            unsigned char found = 77;
            {
                const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
                EXPECT_TRUE(IsOnTheEmptyBlock(tokens.GetNextToken(delimiter, &found)));
                EXPECT_EQ(found, 0);
                EXPECT_TRUE(IsOnTheEmptyBlock(tokens.GetNextToken(delimiter, nullptr)));
            }
            {
                const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
                EXPECT_TRUE(IsOnTheEmptyBlock(tokens.GetNextToken(delimiter, &found)));
                EXPECT_EQ(found, 0);
            }
            EXPECT_EQ(TextOf(tokens.GetNextToken(delimiter, &found)), token);
            EXPECT_EQ(found, 1);
        }
    }
}

TEST(QORTokenShortage, FindsNothingWhileTheTextHasNoView) {
    VELStringPoolSetForCurrentThrd(0);
    QORToken tokens("a b", 0);
    unsigned char found = 1;
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_TRUE(tokens.GetNextToken(&found).IsEmpty());
        EXPECT_EQ(found, 0);
        EXPECT_EQ(DebugBreaks(), 1);
    }
    EXPECT_EQ(TextOf(tokens.GetNextToken(&found)), u"a");
    EXPECT_EQ(found, 1);
}
