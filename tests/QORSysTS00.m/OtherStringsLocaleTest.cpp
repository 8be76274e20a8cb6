/// @file
/// Thread-safe and narrow strings under locales that know more letters than ASCII has, or treat those otherwise.

#include "StringSubjects.h"
#include "TestLocales.h"

#include <cctype>
#include <cstring>
#include <cwctype>

namespace {

using namespace StringStates;
using StringEnvironment::OneToOne;
using StringEnvironment::UseCodePage;
using TestLocales::UseLocale;

/// Sound text in both cases.
struct Letters {
    std::u16string lower;
    std::u16string upper;
};

const Letters& KnownLetters() {
    static const Letters letters{u"gr\u00fcn \u03b1\u03b2 \u0430\u0431 \U00010428 z",
                                 u"GR\u00dcN \u0391\u0392 \u0410\u0411 \U00010400 Z"};
    return letters;
}

template <class String>
void ExpectTurned(String s, bool isUpper, const std::u16string& expected) {
    const bool isWide = StringAccess::BlockOf(s)->IsWide();
    const String& result = isUpper ? s.ToUpper() : s.ToLower();
    EXPECT_EQ(&result, &s);
    ExpectFreshlyWritten(Alias(s), isWide);
    EXPECT_EQ(TextOf(Alias(s)), expected);
}

} // namespace

TEST(LocaleCase, OfThreadSafeStringsIsThatOfAllLetters) {
    UseLocale(TestLocales::English);
    const auto& [lower, upper] = KnownLetters();
    for (const bool isWide : {false, true}) {
        ExpectTurned(Make<QORSysTSUnicodeString>(lower, isWide), true, upper);
        ExpectTurned(Make<QORSysTSUnicodeString>(upper, isWide), false, lower);
        // A letter that takes one byte more, in a text that fills its block.
        ExpectTurned(Make<QORSysTSUnicodeString>(std::u16string(100, u'\u0250'), isWide), true,
                     std::u16string(100, u'\u2c6f'));
    }
}

TEST(LocaleCase, OfNarrowStringsIsThatOfAllLetters) {
    UseLocale(TestLocales::English);
    const auto& [lower, upper] = KnownLetters();
    ExpectTurned(Make<QORString>(lower, false), true, upper);
    ExpectTurned(Make<QORString>(upper, false), false, lower);
    ExpectTurned(Make<QORString>(std::u16string(100, u'\u0250'), false), true, std::u16string(100, u'\u2c6f'));
    QORString wide = Make<QORString>(lower, true);
    wide.toUpper();
    EXPECT_EQ(BytesOf(wide), UTF8Of(upper)) << "narrow before it is turned";
    wide.toLower();
    EXPECT_EQ(BytesOf(wide), UTF8Of(lower));
}

TEST(LocaleCase, OfASCIIHasItsOwnRule) {
    UseLocale(TestLocales::Turkish);
    ASSERT_EQ(std::towupper('i'), 0x130U) << "the locale has another rule";
    for (const bool isWide : {false, true}) {
        ExpectTurned(Make<QORSysTSUnicodeString>(u"xi", isWide), true, u"XI");
        ExpectTurned(Make<QORSysTSUnicodeString>(u"XI", isWide), false, u"xi");
    }
    ExpectTurned(Make<QORString>(u"xi", false), true, u"XI");
    ExpectTurned(Make<QORString>(u"XI", false), false, u"xi");
}

TEST(LocaleComparison, OfNarrowStringsByCaseFoldsEachByte) {
    UseCodePage(OneToOne);
    const auto bytes = [](const char* text) { return StringOn<QORString>(NewNarrow(text)); };
    UseLocale("C");
    EXPECT_EQ(bytes("gr\xDCn").CompareByCase(bytes("GR\xFCN")), 0);
    UseLocale(TestLocales::German);
    ASSERT_EQ(std::tolower(0xDC), 0xFC) << "the locale knows no such letter";
    EXPECT_EQ(bytes("gr\xDCn").CompareByCase(bytes("GR\xFCN")), 2);
    EXPECT_EQ(bytes("gr\xDCn").equal(bytes("gr\xFCn")), 2);
    EXPECT_EQ(bytes("gr\xDCn").CompareByCase(bytes("gr\xDCn")), 1);
    EXPECT_EQ(bytes("gr\xDCn").CompareByCase(bytes("gr\xF6n")), 0);
}

// Bytes order as bytes, whatever the locale's alphabet says.
TEST(LocaleComparison, OfThreadSafeAndNarrowStringsFollowsNoLocale) {
    UseLocale(TestLocales::English);
    ASSERT_LT(std::strcoll("a", "B"), 0) << "the locale orders as bytes do";
    for (const int wide : {0, 1, 2, 3}) {
        const auto a = Make<QORSysTSUnicodeString>(u"a", (wide & 1) != 0);
        const auto b = Make<QORSysTSUnicodeString>(u"B", (wide & 2) != 0);
        EXPECT_TRUE(a > b);
        EXPECT_TRUE(b < a);
        EXPECT_GT(a.Compare(b, 0), 0);
    }
    EXPECT_TRUE(QORString("a") > QORString("B"));
    EXPECT_GT(QORString("a").Compare("B"), 0);
}
