/// @file
/// ToUpper and ToLower: under the C locale, which knows ASCII alone, and under one that knows all letters.

#include "StringStates.h"
#include "TestLocales.h"

#include <cwctype>
#include <random>

namespace {

using namespace StringStates;

using TestLocales::UseLocale;

unsigned int Mapped(unsigned int code, bool isUpper) {
    if (code < 0x80) {
        const bool isMapped = isUpper ? code >= 'a' && code <= 'z' : code >= 'A' && code <= 'Z';
        return isMapped ? code ^ 0x20 : code;
    }
    return static_cast<unsigned int>(isUpper ? std::towupper(code) : std::towlower(code));
}

/// Sound text in the other case. In wide text a mapping that takes another number of units is left out.
std::u16string InCase(const std::u16string& text, bool isUpper, bool isWide) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::u16string character(1, text[i]);
        unsigned int code = text[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size()) {
            character += text[++i];
            code = 0x10000 + ((code - 0xD800) << 10) + (text[i] - 0xDC00u);
        }
        const std::u16string mapped = UnitsOf(Mapped(code, isUpper));
        result += isWide && mapped.size() != character.size() ? character : mapped;
    }
    return result;
}

/// The greatest length that the text has on its way from the old case to the new, character by character.
int PeakLength(const std::u16string& text, bool isUpper, bool isWide) {
    if (isWide) {
        return static_cast<int>(text.size());
    }
    std::size_t peak = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        peak = std::max(peak, NarrowForm(InCase(text.substr(0, i), isUpper, false) + text.substr(i)).size());
    }
    return static_cast<int>(peak);
}

const std::vector<std::u16string>& CaseTexts() {
    static const std::vector<std::u16string> texts = {
        u"abc",
        u"ABC",
        u"aBcD xYz 019 @[`{",
        u"\u00e4\u00f6\u00fc \u00c4\u00d6\u00dc",
        u"stra\u00dfe \u00ff",
        u"\u03b1\u03b2\u03b3 \u0391\u0392\u0393 \u03c2\u03c3\u03a3",
        u"\u0430\u0431 \u0410\u0411",
        u"\u0131\u0130iI",
        u"\u0250 \u2c6f \u2c65 \u023a \u017f \u212a \u1e9e",
        u"\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250\u0250",
        u"\u2c65\u2c65\u2c65\u2c65\u023a\u023a\u023a\u023a",
        u"\U00010428\U00010400 a\U00010429",
        u"\u65e5\u672c \U0001F600",
    };
    return texts;
}

QORUnicodeString& Turn(QORUnicodeString& s, bool isUpper) {
    return isUpper ? s.ToUpper() : s.ToLower();
}

} // namespace

/// Locale, environment and state.
class Case : public testing::TestWithParam<std::tuple<const char*, const char*, State>> {
protected:
    void SetUp() override {
        StringEnvironment::UseCodePage(std::get<1>(GetParam()));
        UseLocale(std::get<0>(GetParam()));
    }
    State TheState() const { return std::get<2>(GetParam()); }
    bool IsNarrowOneToOne() const { return !IsWide(TheState()) && !IsUTF8Environment(); }

    /// Texts for the state. A one-to-one code page cuts letters that leave it, so none of those are there.
    std::vector<std::u16string> Texts() const {
        if (!HasText(TheState())) {
            return {u""};
        }
        std::vector<std::u16string> texts;
        for (const std::u16string& text : CaseTexts()) {
            if (!IsNarrowOneToOne() || (FitsNarrow(text) && FitsNarrow(InCase(text, true, false)))) {
                texts.push_back(text);
            }
        }
        return texts;
    }
};

TEST_P(Case, TurnsEveryLetterAndKeepsTheRepresentation) {
    for (const std::u16string& text : Texts()) {
        for (const bool isUpper : {true, false}) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << isUpper);
            Subject subject(TheState(), text);
            EXPECT_EQ(&Turn(subject.s, isUpper), &subject.s);
            const std::u16string expected = InCase(text, isUpper, IsWide(TheState()));
            if (expected == text) {
                subject.ExpectUnchanged();
                continue;
            }
            ExpectFreshlyWritten(subject.s, IsWide(TheState()));
            EXPECT_EQ(TextOf(subject.s), expected);
            if (IsShared(TheState())) {
                EXPECT_NE(subject.Now(), subject.block);
            } else if (PeakLength(text, isUpper, IsWide(TheState())) < subject.capacity) {
                EXPECT_EQ(subject.Now(), subject.block) << "there was room";
            }
            if (!IsWide(TheState())) {
                EXPECT_EQ(Narrow(subject.Now()), NarrowForm(expected));
            }
            ExpectReadsAs(subject.s, expected);
            subject.ExpectOthersUntouched();
            // Nothing is left to do, so the block stays, shared or not.
            const QORUnicodeString copy(subject.s);
            const Picture before(subject.s);
            Turn(subject.s, isUpper);
            EXPECT_EQ(Picture(subject.s), before);
        }
    }
}

TEST_P(Case, ChangesAtEachPosition) {
    if (!HasText(TheState())) {
        return;
    }
    for (const std::u16string letter : {u"q", u"\u00e9", u"\u0250", u"\u2c65", u"\U00010428"}) {
        if (IsNarrowOneToOne() && !FitsNarrow(letter)) {
            continue;
        }
        for (const std::size_t length : {1ul, 2ul, 5ul, 15ul, 16ul, 17ul, 31ul, 32ul, 33ul, 64ul, 65ul, 100ul}) {
            for (std::size_t pos = 0; pos < length; ++pos) {
                std::u16string text(length, u'Q');
                text.replace(pos, 1, letter);
                Subject subject(TheState(), text);
                subject.s.ToUpper();
                ASSERT_EQ(TextOf(subject.s), InCase(text, true, IsWide(TheState()))) << length << " at " << pos;
                subject.ExpectOthersUntouched();
            }
        }
    }
}

// Growing letters, until the block has room no more, with text behind them.
TEST_P(Case, LettersThatTakeMoreOrFewerBytes) {
    if (!HasText(TheState()) || !IsUTF8Environment()) {
        return;
    }
    for (const char16_t letter : {u'\u0250', u'\u2c65', u'\u0131', u'\u017f', u'\u212a', u'\u1e9e', u'\u023a'}) {
        for (std::size_t count = 1; count < 80; ++count) {
            for (const std::u16string& rest :
                 {std::u16string(), std::u16string(u"abcDEF"), std::u16string(30, u'\u00e9')}) {
                const std::u16string text = rest + std::u16string(count, letter) + rest;
                for (const bool isUpper : {true, false}) {
                    Subject subject(TheState(), text);
                    Turn(subject.s, isUpper);
                    const std::u16string expected = InCase(text, isUpper, IsWide(TheState()));
                    ASSERT_EQ(TextOf(subject.s), expected) << count << " of " << static_cast<int>(letter);
                    if (!IsWide(TheState())) {
                        ASSERT_EQ(Narrow(subject.Now()), UTF8Of(expected));
                        ASSERT_LT(subject.Now()->_length, subject.Now()->_capacity);
                        ASSERT_EQ(subject.Now()->Text()[subject.Now()->_length], 0);
                    }
                    subject.ExpectOthersUntouched();
                }
            }
        }
    }
}

TEST_P(Case, ZeroUnitsAreText) {
    if (!HasText(TheState())) {
        return;
    }
    const std::u16string text(u"a\0b\0\u00e9", 5);
    Subject subject(TheState(), text);
    subject.s.ToUpper();
    EXPECT_EQ(TextOf(subject.s), InCase(text, true, IsWide(TheState())));
    subject.ExpectOthersUntouched();
}

INSTANTIATE_TEST_SUITE_P(States, Case,
                         testing::Combine(testing::Values("C", "en_US.UTF-8"),
                                          testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                                          testing::ValuesIn(AllStates)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param) == std::string("C") ? "C" : "Letters") +
                                    (std::get<1>(test.param) == std::string(StringEnvironment::UTF8) ? "UTF8"
                                                                                                     : "OneToOne") +
                                    NameOf(std::get<2>(test.param));
                         });

// What the locale is expected to know, so that the tests above are not empty.

TEST(CaseLetters, KnownPairs) {
    UseLocale("en_US.UTF-8");
    QORUnicodeString s("gr\u00fcn \u03b1\u03c3 \u0250 \U00010428 \u00df");
    s.ToUpper();
    EXPECT_STREQ(s.ConvertToChar(), "GR\u00dcN \u0391\u03a3 \u2c6f \U00010400 \u00df");
    s.ToLower();
    EXPECT_STREQ(s.ConvertToChar(), "gr\u00fcn \u03b1\u03c3 \u0250 \U00010428 \u00df");
    QORUnicodeString dotless("\u0131");
    dotless.ToUpper();
    EXPECT_STREQ(dotless.ConvertToChar(), "I");
    QORUnicodeString shrinks("\u2c65x");
    shrinks.ToUpper();
    EXPECT_STREQ(shrinks.ConvertToChar(), "\u023aX");
    QORUnicodeString wide = WideString(u"\U00010428\u00e9");
    wide.ToUpper();
    EXPECT_EQ(TextOf(wide), u"\U00010400\u00c9");
}

TEST(CaseLetters, TheCLocaleKnowsASCIIAlone) {
    UseLocale("C");
    QORUnicodeString s("gr\u00fcn");
    s.ToUpper();
    EXPECT_STREQ(s.ConvertToChar(), "GR\u00fcN");
}

TEST(CaseLetters, ASCIIHasItsOwnRuleInEveryLocale) {
    UseLocale(TestLocales::Turkish);
    ASSERT_EQ(std::towupper('i'), 0x130U) << "the locale has another rule";
    ASSERT_EQ(std::towlower('I'), 0x131U);
    const std::u16string lower = u"abcdefghijklmnopqrstuvwxyz";
    const std::u16string upper = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    // As many letters as a vector has, and single ones beside a letter that is not ASCII.
    for (const auto& [small, capital] : {std::pair<std::u16string, std::u16string>{lower + lower, upper + upper},
                                         {u"i", u"I"},
                                         {u"\u00fci", u"\u00dcI"}}) {
        for (const bool isWide : {false, true}) {
            QORUnicodeString s = StringOf(small, isWide);
            const QORUnicodeString other = StringOf(capital, isWide);
            EXPECT_EQ(s.Compare(other), 1) << UTF8Of(small);
            s.ToUpper();
            EXPECT_EQ(TextOf(s), capital);
            s.ToLower();
            EXPECT_EQ(TextOf(s), small);
        }
    }
}

// What becomes longer than the block has room for stands in a block of exactly its length.
TEST(CaseLetters, ALongerTextTakesABlockOfItsLength) {
    UseLocale(TestLocales::English);
    for (const int count : {20, 40, 400}) {
        const std::u16string text(static_cast<std::size_t>(count), u'\u0250');
        for (const bool isShared : {false, true}) {
            QORUnicodeString s = NarrowString(text);
            const QORUnicodeString other = isShared ? s : QORUnicodeString();
            ASSERT_LE(StringAccess::BlockOf(s)->_capacity, 3 * count);
            s.ToUpper();
            EXPECT_EQ(TextOf(s), std::u16string(static_cast<std::size_t>(count), u'\u2c6f'));
            EXPECT_EQ(StringAccess::BlockOf(s)->_capacity, CapacityFor(false, 3 * count));
        }
    }
}

TEST(CaseLetters, EveryCodeOfTheBasicPlaneAndTheLettersBeyond) {
    UseLocale("en_US.UTF-8");
    for (unsigned int code = 1; code < 0x1EA00; ++code) {
        if ((code >= 0xD800 && code <= 0xDFFF) ||
            (code > 0xFFFF && code % 7 != 0 && (code < 0x10400 || code > 0x10450))) {
            continue;
        }
        const std::u16string text = u"x" + UnitsOf(code) + u"y";
        for (const bool isUpper : {true, false}) {
            for (const bool isWide : {false, true}) {
                QORUnicodeString s = StringOf(text, isWide);
                Turn(s, isUpper);
                ASSERT_EQ(TextOf(s), InCase(text, isUpper, isWide)) << std::hex << code;
            }
        }
    }
}

TEST(CaseLetters, CompareKnowsThemToo) {
    UseLocale("en_US.UTF-8");
    const std::pair<const char16_t*, const char16_t*> pairs[] = {{u"gr\u00fcn", u"GR\u00dcN"},
                                                                 {u"\u03b1", u"\u0391"},
                                                                 {u"\u0250x", u"\u2c6fX"},
                                                                 {u"\u212a", u"k"},
                                                                 {u"\U00010428", u"\U00010400"}};
    for (const auto& [lower, upper] : pairs) {
        for (const int wide : {0, 1, 2, 3}) {
            const QORUnicodeString a = StringOf(lower, (wide & 1) != 0);
            const QORUnicodeString b = StringOf(upper, (wide & 2) != 0);
            EXPECT_EQ(a.Compare(b), 1) << UTF8Of(lower) << wide;
            EXPECT_EQ(b.Compare(a), 1) << UTF8Of(lower) << wide;
            EXPECT_EQ(a.Compare(a + QORUnicodeString("x")), 0);
        }
    }
}

// Damaged narrow text.

TEST(CaseDamaged, StaysWhereItCantBeDecoded) {
    for (const char* locale : {"C", "en_US.UTF-8"}) {
        UseLocale(locale);
        for (const std::string end : {"\x80", "\xBF", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xFF", "\xE2", "\xFE\xFF"}) {
            QORUnicodeString s = BytesString("abc" + end);
            s.ToUpper();
            EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), "ABC" + end) << testing::PrintToString(end);
            QORUnicodeString untouched = BytesString("ABC" + end);
            const Picture before(untouched);
            untouched.ToUpper();
            EXPECT_EQ(Picture(untouched), before);
        }
        QORUnicodeString middle = BytesString("\x80"
                                              "abcdef");
        middle.ToUpper();
        EXPECT_EQ(Narrow(StringAccess::BlockOf(middle)), "\x80"
                                                         "ABCDEF")
            << "a byte that leads nothing stands for itself";
    }
}

TEST(CaseDamaged, AnyBytesGiveATerminatedText) {
    for (const char* locale : {"C", "en_US.UTF-8"}) {
        UseLocale(locale);
        std::minstd_rand random(11);
        for (int round = 0; round < 20000; ++round) {
            std::string bytes;
            for (std::size_t left = (random() >> 8) % 24; left > 0; --left) {
                const unsigned int dice = static_cast<unsigned int>(random() >> 8);
                bytes += static_cast<char>(dice % 3 == 0 ? 'a' + dice / 3 % 26 : 1 + dice / 3 % 255);
            }
            for (const bool isUpper : {true, false}) {
                QORUnicodeString s = BytesString(bytes);
                const QORUnicodeString copy(s);
                Turn(s, isUpper);
                const Block block = StringAccess::BlockOf(s);
                ASSERT_EQ(VEL::GetMainRepEncoding(s), 1);
                ASSERT_EQ(std::strlen(block->Text()), static_cast<std::size_t>(block->_length));
                ASSERT_EQ(Narrow(StringAccess::BlockOf(copy)), bytes);
                QORUnicodeString joined = BytesString(bytes);
                joined.Append(BytesString("q"));
                joined.Compare(s);
            }
        }
    }
}
