/// @file
/// Characters stripped off a string.

#include "StringStates.h"

#include <gmock/gmock.h>

namespace {

using namespace StringStates;
using Mode = QORUnicodeString::QORStripMode;

constexpr Mode AllModes[] = {QORUnicodeString::QORStripModeLeading, QORUnicodeString::QORStripModeTrailing,
                             QORUnicodeString::QORStripModeBoth, QORUnicodeString::QORStripModeAll};

/// The text as characters: pairs are one each.
std::vector<std::u16string> CharactersOf(const std::u16string& text) {
    std::vector<std::u16string> characters;
    for (std::size_t i = 0; i < text.size();) {
        const bool isPair = text[i] >= 0xD800 && text[i] <= 0xDBFF && i + 1 < text.size();
        characters.push_back(text.substr(i, isPair ? 2 : 1));
        i += characters.back().size();
    }
    return characters;
}

std::u16string Stripped(const std::u16string& text, Mode mode, unsigned int code) {
    std::vector<std::u16string> characters = CharactersOf(text);
    const std::u16string c = UnitsOf(code);
    if (mode == QORUnicodeString::QORStripModeAll) {
        std::erase(characters, c);
    }
    if (mode == QORUnicodeString::QORStripModeLeading || mode == QORUnicodeString::QORStripModeBoth) {
        while (!characters.empty() && characters.front() == c) {
            characters.erase(characters.begin());
        }
    }
    if (mode == QORUnicodeString::QORStripModeTrailing || mode == QORUnicodeString::QORStripModeBoth) {
        while (!characters.empty() && characters.back() == c) {
            characters.pop_back();
        }
    }
    std::u16string result;
    for (const std::u16string& character : characters) {
        result += character;
    }
    return result;
}

} // namespace

class Strip : public InAllStates {
protected:
    void SetUp() override {
        InAllStates::SetUp();
        texts = TextsFor(TheState());
        if (!HasText(TheState())) {
            return;
        }
        for (const std::u16string text :
             {u" ", u"  ", u" a ", u"  a b  ", u"banana", u"nab", u"~~x~~", u"\x7f\x7fx\x7f", u"\u00e9\u00e9",
              u"\u00e9a\u00e9b\u00e9", u"a\U0001F600\U0001F600", u"\U0001F600 \U0001F600",
              u"\U0001F600\U0001F601\U0001F600", u"\u20acx\u20ac"}) {
            if (IsWide(TheState()) || FitsNarrow(text)) {
                texts.push_back(text);
            }
        }
    }
    std::vector<std::u16string> texts;
};

TEST_P(Strip, TakesTheCharacterAwayWhereTheModeSays) {
    for (const std::u16string& text : texts) {
        for (const unsigned int code :
             {0x20u, 0x61u, 0x7Eu, 0x7Fu, 0xE9u, 0x20ACu, 0x1F600u, 0xF600u, 0xDE00u, 0x110000u}) {
            for (const Mode mode : AllModes) {
                SCOPED_TRACE(testing::Message() << "'" << UTF8Of(text) << "' without " << code << " mode " << mode);
                Subject subject(TheState(), text);
                const std::u16string expected = Stripped(text, mode, code);
                const QORUnicodeString result = subject.s.Strip(mode, Character(code));
                EXPECT_EQ(TextOf(result), expected);
                EXPECT_EQ(Picture(subject.s), subject.before);
                ExpectTheEmptyBlockIntact();
                if (expected.empty()) {
                    EXPECT_TRUE(result.IsEmpty());
                    continue;
                }
                const bool isNarrow = !IsWide(TheState()) && code <= 126;
                const bool isNothingDone = expected == text;
                if (isNothingDone && (isNarrow || IsWide(TheState()))) {
                    EXPECT_EQ(StringAccess::BlockOf(result), subject.block);
                } else {
                    // Narrow text without such a character, too, gives a wide string.
                    ExpectFreshlyWritten(result, !isNarrow);
                    EXPECT_EQ(StringAccess::BlockOf(result)->_capacity,
                              CapacityFor(!isNarrow, StringAccess::BlockOf(result)->_length));
                    subject.ExpectOthersUntouched();
                }
                ExpectReadsAs(result, expected);
            }
        }
    }
}

TEST_P(Strip, ShortFormTakesSpacesAway) {
    for (const std::u16string& text : texts) {
        for (const Mode mode : AllModes) {
            Subject subject(TheState(), text);
            EXPECT_EQ(TextOf(subject.s.Strip(mode)), Stripped(text, mode, ' '));
            EXPECT_EQ(Picture(subject.s), subject.before);
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(Strip, OfCodeZeroAndInAnyOtherModeDoesNothing) {
    for (const std::u16string& text : texts) {
        Subject subject(TheState(), text);
        for (const Mode mode : AllModes) {
            const QORUnicodeString same = subject.s.Strip(mode, Character(0));
            EXPECT_EQ(StringAccess::BlockOf(same), subject.block);
        }
        for (const int mode : {0, 5, 6, 7}) {
            EXPECT_EQ(TextOf(subject.s.Strip(static_cast<Mode>(mode), Character(' '))), text) << mode;
            EXPECT_EQ(TextOf(subject.s.Strip(static_cast<Mode>(mode))), text) << mode;
            EXPECT_EQ(TextOf(subject.s.Strip(static_cast<Mode>(mode), Character(0xE9))), text) << mode;
        }
        subject.ExpectUnchanged();
    }
}

INSTANTIATE_TEST_SUITE_P(States, Strip, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(StripStated, Cases) {
    EXPECT_TRUE(QORUnicodeString("  ").Strip(QORUnicodeString::QORStripModeBoth).IsEmpty());
    EXPECT_STREQ(
        QORUnicodeString("banana").Strip(QORUnicodeString::QORStripModeAll, QORUnicodeChar('a')).ConvertToChar(),
        "bnn");
}

TEST(StripNarrow, WorksOnBytesAndBuildsNoView) {
    const QORUnicodeString s(" \xC3 \xFF ");
    const QORUnicodeString result = s.Strip(QORUnicodeString::QORStripModeBoth);
    EXPECT_EQ(Narrow(StringAccess::BlockOf(result)), "\xC3 \xFF");
    EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(s));
}

TEST(StripNarrow, KeepsZeroBytes) {
    const QORUnicodeString s = BytesString(std::string("  a\0 b\0  ", 9));
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s.Strip(QORUnicodeString::QORStripModeBoth))), std::string("a\0 b\0", 5));
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s.Strip(QORUnicodeString::QORStripModeAll))), std::string("a\0b\0", 4));
}

TEST(StripWide, UnpairedLowSurrogatesAreCharacters) {
    const std::u16string low(1, char16_t(0xDE00));
    const QORUnicodeString s = WideString(low + u"\U0001F600" + low);
    EXPECT_EQ(TextOf(s.Strip(QORUnicodeString::QORStripModeBoth, Character(0xDE00))), u"\U0001F600");
    EXPECT_EQ(TextOf(s.Strip(QORUnicodeString::QORStripModeAll, Character(0xDE00))), u"\U0001F600");
    EXPECT_EQ(TextOf(s.Strip(QORUnicodeString::QORStripModeAll, Character(0x1F600))), low + low);
}

// Cut to two units such a code would give two that a text can hold.
TEST(StripWide, CodesBeyondUnicodeStandNowhere) {
    const std::u16string lows(2, char16_t(0xDC00));
    ASSERT_EQ(UnitsOf(0x110000), lows);
    for (const std::u16string& text : {lows, lows + u"a" + lows, UnitsOf(0xFFFFFFFF) + u"a"}) {
        for (const unsigned int code : {0x110000u, 0xFFFFFFFFu, 0x80000061u}) {
            for (const Mode mode : AllModes) {
                const QORUnicodeString s = WideString(text);
                const QORUnicodeString result = s.Strip(mode, Character(code));
                EXPECT_EQ(TextOf(result), text) << code;
                EXPECT_EQ(StringAccess::BlockOf(result), StringAccess::BlockOf(s));
            }
        }
    }
}

TEST(StripModes, HaveTheirNumbers) {
    EXPECT_EQ(QORUnicodeString::QORStripModeLeading, 1);
    EXPECT_EQ(QORUnicodeString::QORStripModeTrailing, 2);
    EXPECT_EQ(QORUnicodeString::QORStripModeBoth, 3);
    EXPECT_EQ(QORUnicodeString::QORStripModeAll, 4);
    EXPECT_EQ(TextOf(WideString(u" a a ").Strip(static_cast<Mode>(1))), u"a a ");
    EXPECT_EQ(TextOf(WideString(u" a a ").Strip(static_cast<Mode>(2))), u" a a");
    EXPECT_EQ(TextOf(WideString(u" a a ").Strip(static_cast<Mode>(3))), u"a a");
    EXPECT_EQ(TextOf(WideString(u" a a ").Strip(static_cast<Mode>(4))), u"aa");
}

TEST(StripLong, AgreesWithThePlainWay) {
    for (const bool isWide : {false, true}) {
        for (std::size_t length = 0; length < 200; ++length) {
            for (const std::size_t inner : {std::size_t(0), length / 3, length}) {
                const std::u16string text = std::u16string(length, u' ') + std::u16string(inner, u'x') + u" " +
                                            std::u16string(length / 2, u' ');
                for (const Mode mode : AllModes) {
                    ASSERT_EQ(TextOf(StringOf(text, isWide).Strip(mode)), Stripped(text, mode, ' ')) << length;
                }
            }
        }
    }
}
