#include "QORUnicodeChar.h"

#include "FakeConverter.h"
#include "GuardedMemory.h"
#include "StringEnvironment.h"
#include "TestLocales.h"

#include <cstring>
#include <cwctype>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using FakeConverter::s_longForm;
using TestLocales::UseLocale;

QORUnicodeChar Character(unsigned int code) {
    QORUnicodeChar c;
    c.BuildFromUCChar32(code);
    return c;
}

unsigned int CodeOf(const QORUnicodeChar& c) {
    unsigned int code;
    std::memcpy(&code, &c, sizeof code);
    return code;
}

/// What is stored of the narrow form, without having it computed.
std::string Stored(const QORUnicodeChar& c) {
    return reinterpret_cast<const char*>(&c) + sizeof(unsigned int);
}

void ExpectQuestionMark(const QORUnicodeChar& c) {
    EXPECT_EQ(CodeOf(c), 0x3Fu);
    EXPECT_EQ(Stored(c), "?");
}

constexpr auto AllOfIt = static_cast<unsigned long>(-1);

} // namespace

TEST(QORUnicodeChar, IsACodeAndRoomForANarrowForm) {
    static_assert(sizeof(QORUnicodeChar) == 12 && alignof(QORUnicodeChar) == 4);
    static_assert(!std::is_polymorphic_v<QORUnicodeChar>);
    const QORUnicodeChar c;
    EXPECT_EQ(CodeOf(c), 0u);
    EXPECT_EQ(Stored(c), "");
    EXPECT_STREQ(c.ConvertToChar(), "");
    EXPECT_EQ(static_cast<char>(c), 0);
}

TEST(QORUnicodeChar, TakesASCIIWithItsNarrowForm) {
    for (int byte = 1; byte < 0x80; ++byte) {
        const QORUnicodeChar c(static_cast<char>(byte));
        EXPECT_EQ(CodeOf(c), static_cast<unsigned int>(byte));
        EXPECT_EQ(Stored(c), std::string(1, static_cast<char>(byte)));
        QORUnicodeChar assigned;
        EXPECT_EQ(&(assigned = static_cast<char>(byte)), &assigned);
        EXPECT_EQ(assigned, c);
        EXPECT_EQ(static_cast<char>(assigned), static_cast<char>(byte));
    }
    EXPECT_EQ(CodeOf(QORUnicodeChar('\0')), 0u);
    EXPECT_EQ(Stored(QORUnicodeChar('\0')), "");
}

class UnicodeCharInBoth : public StringEnvironment::InBoth {};

TEST_P(UnicodeCharInBoth, TakesAByteThatIsNotASCIIFromTheCodePage) {
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const QORUnicodeChar c(static_cast<char>(byte));
        if (IsUTF8()) {
            ExpectQuestionMark(c);
        } else {
            EXPECT_EQ(CodeOf(c), static_cast<unsigned int>(byte));
            EXPECT_EQ(Stored(c), std::string(1, static_cast<char>(byte)));
        }
    }
}

TEST_P(UnicodeCharInBoth, BecomesAQuestionMarkWithoutAText) {
    QORUnicodeChar c = Character(0x20AC);
    EXPECT_EQ(c.BuildFromChar(nullptr, 1), 1);
    ExpectQuestionMark(c);
    c = Character(0x20AC);
    EXPECT_EQ(c.BuildFromChar(nullptr, AllOfIt), 1);
    ExpectQuestionMark(c);
    c = Character(0x20AC);
    EXPECT_EQ(c.BuildFromChar("a", 0), 1);
    ExpectQuestionMark(c);
    c = Character(0x20AC);
    c = static_cast<const char*>(nullptr);
    ExpectQuestionMark(c);
}

TEST_P(UnicodeCharInBoth, TakesNothingFromAnEmptyText) {
    for (const unsigned long n : {1ul, 4ul, AllOfIt}) {
        const char text[4] = {};
        QORUnicodeChar c('x');
        EXPECT_EQ(c.BuildFromChar(text, n), 0);
        EXPECT_EQ(CodeOf(c), 0u);
        EXPECT_EQ(Stored(c), "");
        EXPECT_STREQ(c.ConvertToChar(), "");
    }
    QORUnicodeChar c('x');
    c = "";
    EXPECT_EQ(CodeOf(c), 0u);
}

TEST_P(UnicodeCharInBoth, TakesTheFirstCharacterOfAText) {
    const std::string text = IsUTF8() ? "\u20acuro" : "\xA4uro";
    QORUnicodeChar c;
    EXPECT_EQ(c.BuildFromChar(text.c_str(), AllOfIt), 0);
    EXPECT_EQ(CodeOf(c), IsUTF8() ? 0x20ACu : 0xA4u);
    EXPECT_EQ(Stored(c), IsUTF8() ? "\u20ac" : "\xA4");
    EXPECT_EQ(&(c = "zz"), &c);
    EXPECT_EQ(CodeOf(c), u'z');
    EXPECT_EQ(Stored(c), "z");
    EXPECT_EQ(c.BuildFromChar(text.c_str(), text.size()), 0);
    EXPECT_EQ(Stored(c), IsUTF8() ? "\u20ac" : "\xA4");
}

TEST_P(UnicodeCharInBoth, TakesItsOwnNarrowForm) {
    QORUnicodeChar c = Character(0xE9);
    c = c.ConvertToChar();
    EXPECT_EQ(CodeOf(c), 0xE9u);
    EXPECT_EQ(Stored(c), IsUTF8() ? "\u00e9" : "\xE9");
}

TEST_P(UnicodeCharInBoth, GivesTheNarrowFormOnDemand) {
    const QORUnicodeChar c = Character(0xE9);
    EXPECT_EQ(Stored(c), "");
    EXPECT_STREQ(c.ConvertToChar(), IsUTF8() ? "\u00e9" : "\xE9");
    EXPECT_EQ(c.ConvertToChar(), reinterpret_cast<const char*>(&c) + 4);
    EXPECT_EQ(Stored(c), IsUTF8() ? "\u00e9" : "\xE9");
    EXPECT_EQ(static_cast<char>(c), IsUTF8() ? '\xC3' : '\xE9');
    EXPECT_EQ(static_cast<char>(Character(0xE9)), IsUTF8() ? '\xC3' : '\xE9');
}

TEST_P(UnicodeCharInBoth, NeverOverrunsTheNarrowForm) {
    for (const unsigned int code : {0xFFFFu, 0x1F600u, 0x10FFFFu, 0x110000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        struct {
            QORUnicodeChar c = Character(0);
            unsigned int behind = 0x5A5A5A5A;
        } guarded;
        guarded.c.BuildFromUCChar32(code);
        EXPECT_LE(std::strlen(guarded.c.ConvertToChar()), 7u);
        EXPECT_EQ(guarded.behind, 0x5A5A5A5Au);
    }
    const std::string longForm = "\x1b$*H\x1b.A!";
    s_longForm = &longForm;
    struct {
        QORUnicodeChar c;
        unsigned int behind = 0x5A5A5A5A;
    } guarded;
    guarded.c.BuildFromUCChar32(7);
    EXPECT_EQ(std::string(guarded.c.ConvertToChar()), longForm.substr(0, 7));
    EXPECT_EQ(guarded.c.BuildFromChar("0123456789", 10), 0);
    EXPECT_EQ(Stored(guarded.c), "0123456");
    EXPECT_EQ(guarded.behind, 0x5A5A5A5Au);
    s_longForm = nullptr;
}

INSTANTIATE_TEST_SUITE_P(Environments, UnicodeCharInBoth,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(QORUnicodeChar, RejectsWhatIsNotUTF8) {
    // Each of them asks for bytes behind its terminator.
    for (const char* text : {"\xE2", "\xF0", "\xF0\x9F"}) {
        QORUnicodeChar c('x');
        EXPECT_EQ(c.BuildFromChar(text, AllOfIt), 1) << text;
        ExpectQuestionMark(c);
    }
    for (const char* text : {"\x80", "\xBF", "\xFF", "\x80q"}) {
        QORUnicodeChar c('x');
        EXPECT_EQ(c.BuildFromChar(text, std::strlen(text)), 1) << text;
        ExpectQuestionMark(c);
    }
}

TEST(QORUnicodeChar, ReadsDamageTheFastWayUpToTheTerminator) {
    const struct {
        const char* text;
        unsigned int code;
        const char* stored;
    } rows[] = {
        {"\x80", 0x80, "\x80"},     {"\xFF", 0xFF, "\xFF"}, {"\x80qrs", 0x80, "\x80"},        {"\xC3(", 0xE8, "\xC3("},
        {"\xC3(ab", 0xE8, "\xC3("}, {"\xC3", 0xC0, "\xC3"}, {"\xE2\x82", 0x2080, "\xE2\x82"},
    };
    for (const auto& row : rows) {
        QORUnicodeChar c('x');
        EXPECT_EQ(c.BuildFromChar(row.text, AllOfIt), 0) << row.text;
        EXPECT_EQ(CodeOf(c), row.code) << row.text;
        EXPECT_EQ(Stored(c), row.stored) << row.text;
    }
}

// A form that is longer than it need be gives the same code, and is the one that is given back.
TEST(QORUnicodeChar, KeepsTheNarrowFormThatItCameFrom) {
    QORUnicodeChar c;
    EXPECT_EQ(c.BuildFromChar("\xC1\x81", 2), 0);
    EXPECT_EQ(CodeOf(c), 0x41u);
    EXPECT_EQ(Stored(c), "\xC1\x81");
    EXPECT_STREQ(c.ConvertToChar(), "\xC1\x81");
    EXPECT_EQ(static_cast<char>(c), '\xC1');
    EXPECT_TRUE(c == QORUnicodeChar('A'));
    c.BuildFromUCChar32(0x41);
    EXPECT_STREQ(c.ConvertToChar(), "A");
}

TEST(QORUnicodeChar, ComputesTheNarrowFormOnceButThatOfCodeZeroEachTime) {
    const QORUnicodeChar accent = Character(0xE9);
    const QORUnicodeChar zero;
    int before = FakeConverter::s_conversions;
    EXPECT_STREQ(accent.ConvertToChar(), "\u00e9");
    EXPECT_STREQ(accent.ConvertToChar(), "\u00e9");
    EXPECT_EQ(static_cast<char>(accent), '\xC3');
    EXPECT_EQ(FakeConverter::s_conversions, before + 1);
    before = FakeConverter::s_conversions;
    for (int call = 1; call <= 3; ++call) {
        EXPECT_STREQ(zero.ConvertToChar(), "");
        EXPECT_EQ(FakeConverter::s_conversions, before + call);
    }
}

TEST(QORUnicodeChar, StopsWhereTheCallerSays) {
    QORUnicodeChar c;
    EXPECT_EQ(c.BuildFromChar("\u20ac", 2), 1);
    ExpectQuestionMark(c);
    EXPECT_EQ(c.BuildFromChar("\u20ac", 3), 0);
    EXPECT_EQ(CodeOf(c), 0x20ACu);
}

TEST(QORUnicodeChar, NeverReadsBehindTheTextOrItsTerminator) {
    const GuardedMemory memory(64);
    for (const std::string text : {"\xF0", "\xE2", "\xC3", "a", "\xF0\x9F", "\xE2\x82", "\xF0\x9F\x98", "\U0001F600"}) {
        const char* const terminated = memory.CopyAtEnd(text.c_str(), text.size() + 1);
        QORUnicodeChar c;
        c.BuildFromChar(terminated, AllOfIt);
        c = terminated;
        const char* const counted = memory.CopyAtEnd(text.data(), text.size());
        c.BuildFromChar(counted, text.size());
        EXPECT_EQ(CodeOf(c), text == "a" ? 'a' : text.size() == 4 ? 0x1F600u : 0x3Fu);
    }
}

TEST(QORUnicodeChar, ReadsNoMoreThanTheLongestCharacterOfTheCodePage) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne, 1);
    const GuardedMemory memory(1);
    QORUnicodeChar c;
    EXPECT_EQ(c.BuildFromChar(memory.CopyAtEnd("a", 1), AllOfIt), 0) << "an unterminated text of one character";
    EXPECT_EQ(CodeOf(c), u'a');
}

TEST(QORUnicodeChar, KeepsCodesAboveTheBasicPlane) {
    const QORUnicodeChar c = Character(0x1F600);
    EXPECT_EQ(CodeOf(c), 0x1F600u);
    EXPECT_EQ(c.ConvertToUC2Bytes(), 0xF600);
    EXPECT_STREQ(c.ConvertToChar(), "\U0001F600");
    EXPECT_STREQ(Character(0xD800).ConvertToChar(), "\xED\xA0\x80");
}

TEST(QORUnicodeChar, TakesAUnitAsItsCode) {
    QORUnicodeChar c('x');
    const unsigned short unit = 0xD83D;
    c.BuildFromUC2Bytes(unit);
    EXPECT_EQ(CodeOf(c), 0xD83Du);
    EXPECT_EQ(Stored(c), "");
    EXPECT_EQ(c.ConvertToUC2Bytes(), 0xD83D);
    c = 'x';
    c.BuildFromUCChar32(0xE9);
    EXPECT_EQ(Stored(c), "");
}

TEST(QORUnicodeChar, CopiesTheNarrowFormToo) {
    const QORUnicodeChar c = Character(0xE9);
    c.ConvertToChar();
    const QORUnicodeChar copy(c);
    EXPECT_EQ(CodeOf(copy), 0xE9u);
    EXPECT_EQ(Stored(copy), "\u00e9");
    QORUnicodeChar assigned('x');
    EXPECT_EQ(&(assigned = c), &assigned);
    EXPECT_EQ(CodeOf(assigned), 0xE9u);
    EXPECT_EQ(Stored(assigned), "\u00e9");
    assigned = Character(0xE8);
    EXPECT_EQ(Stored(assigned), "") << "not computed in the source either";
}

TEST(QORUnicodeChar, ComparesCodesOnly) {
    const QORUnicodeChar computed('a');
    const QORUnicodeChar bare = Character('a');
    EXPECT_NE(Stored(computed), Stored(bare));
    EXPECT_TRUE(computed == bare);
    EXPECT_FALSE(Character(0x10061) == bare);
}

TEST(QORUnicodeChar, MapsASCIIByItsOwnRuleInEveryLocale) {
    for (const char* locale : {"C", TestLocales::English, TestLocales::Turkish}) {
        UseLocale(locale);
        for (unsigned int code = 0; code < 0x80; ++code) {
            const bool isUpper = code >= 'A' && code <= 'Z';
            const bool isLower = code >= 'a' && code <= 'z';
            QORUnicodeChar c = Character(code);
            EXPECT_EQ(&c.ToLower(), &c);
            EXPECT_EQ(CodeOf(c), isUpper ? code + 32 : code) << locale;
            c.BuildFromUCChar32(code);
            EXPECT_EQ(&c.ToUpper(), &c);
            EXPECT_EQ(CodeOf(c), isLower ? code - 32 : code) << locale;
        }
    }
    ASSERT_EQ(std::towupper('i'), 0x130U) << "the locale has another rule";
    ASSERT_EQ(std::towlower('I'), 0x131U);
    QORUnicodeChar c('A');
    EXPECT_STREQ(c.ToLower().ConvertToChar(), "a");
}

TEST(QORUnicodeChar, DropsTheNarrowFormOnlyWhenTheCodeChanges) {
    QORUnicodeChar c('a');
    c.ToLower();
    EXPECT_EQ(Stored(c), "a");
    c.ToUpper();
    EXPECT_EQ(Stored(c), "");
    EXPECT_STREQ(c.ConvertToChar(), "A");
}

TEST(QORUnicodeChar, MapsOtherLettersByTheLocale) {
    EXPECT_EQ(CodeOf(Character(0xE9).ToUpper()), static_cast<unsigned int>(std::towupper(0xE9)));
    UseLocale("en_US.UTF-8");
    EXPECT_EQ(CodeOf(Character(0xE9).ToUpper()), 0xC9u);
    EXPECT_EQ(CodeOf(Character(0xC9).ToLower()), 0xE9u);
    EXPECT_EQ(CodeOf(Character(0x10428).ToUpper()), 0x10400u);
    EXPECT_EQ(CodeOf(Character(0x20AC).ToUpper()), 0x20ACu);
}

namespace {

void ExpectClassesOf(unsigned int code) {
    const QORUnicodeChar c = Character(code);
    EXPECT_EQ(c.IsAlpha(), std::iswalpha(code) != 0) << code;
    EXPECT_EQ(c.IsAlnum(), std::iswalnum(code) != 0) << code;
    EXPECT_EQ(c.IsCntrl(), std::iswcntrl(code) != 0) << code;
    EXPECT_EQ(c.IsDigit(), std::iswdigit(code) != 0) << code;
    EXPECT_EQ(c.IsGraph(), std::iswgraph(code) != 0) << code;
    EXPECT_EQ(c.IsLower(), std::iswlower(code) != 0) << code;
    EXPECT_EQ(c.IsUpper(), std::iswupper(code) != 0) << code;
    EXPECT_EQ(c.IsPrint(), std::iswprint(code) != 0) << code;
    EXPECT_EQ(c.IsPunct(), std::iswpunct(code) != 0) << code;
    EXPECT_EQ(c.IsSpace(), std::iswspace(code) != 0) << code;
    EXPECT_EQ(c.IsXDigit(), std::iswxdigit(code) != 0) << code;
}

} // namespace

TEST(QORUnicodeChar, IsClassifiedByTheLocaleInForce) {
    for (unsigned int code = 0; code < 0x3000; ++code) {
        ExpectClassesOf(code);
    }
    EXPECT_FALSE(Character(0xE9).IsAlpha());
    UseLocale("en_US.UTF-8");
    EXPECT_TRUE(Character(0xE9).IsAlpha());
    EXPECT_TRUE(Character(0x3000).IsSpace());
    for (unsigned int code = 0; code < 0x30000; ++code) {
        ExpectClassesOf(code);
    }
    ExpectClassesOf(0xFFFFFFFF);
}

TEST(QORUnicodeChar, IsOrderedByTheCollationOfTheLocale) {
    const QORUnicodeChar a('a');
    const QORUnicodeChar b('B');
    EXPECT_TRUE(b < a) << "the C locale has the order of codes";
    EXPECT_TRUE(b <= a);
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(a <= b);
    EXPECT_FALSE(a < a);
    EXPECT_TRUE(a <= a);
    UseLocale("en_US.UTF-8");
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(a <= b);
    EXPECT_FALSE(b < a);
    EXPECT_FALSE(b <= a);
    EXPECT_TRUE(Character(0xE9) < Character('f'));
    EXPECT_FALSE(Character(0xE9) < Character('e'));
    EXPECT_TRUE(Character(0x1F600) <= Character(0x1F600));
}
