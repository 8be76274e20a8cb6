/// @file
/// Strings that grow and are cut: repetition of a character, Append, +=, + and Resize.

#include "StringStates.h"

#include <climits>
#include <functional>
#include <gmock/gmock.h>

namespace {

using namespace StringStates;
using Str = QORInterUnicodeString;
using StringEnvironment::OneToOne;
using StringEnvironment::UseCodePage;
using StringEnvironment::UTF8;

/// Room of the block that growth gives: exact, or half as much again as the old block when that was too small.
int GrownCapacity(const Subject& subject, bool isWide, int length) {
    const int grown = subject.capacity <= length ? static_cast<int>(subject.capacity * 1.5) : 0;
    return CapacityFor(isWide, std::max(length, grown));
}

/// After appending something to a string that has a handle.
void ExpectAppended(const Subject& subject, const std::u16string& text, bool isArgumentWide) {
    const bool isWide = IsWide(subject.state) || isArgumentWide;
    ExpectFreshlyWritten(subject.s, isWide);
    const int length = subject.Now()->_length;
    if (isWide != IsWide(subject.state)) {
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(true, length)) << "the way from narrow to wide is exact";
    } else if (!IsShared(subject.state) && subject.capacity > length) {
        EXPECT_EQ(subject.Now(), subject.block);
    } else {
        EXPECT_NE(subject.Now(), subject.block);
        EXPECT_EQ(subject.Now()->_capacity, GrownCapacity(subject, isWide, length));
    }
    ExpectReadsAs(subject.s, text);
    subject.ExpectOthersUntouched();
}

const std::u16string Appendices[] = {u"x", u"0123456789abcdefghijklmnopqrstuvwxyz0123456789abcdefghijklmnopqrstuvwxyz",
                                     u"\u00e9t\u00e9"};

} // namespace

// Repetition of a character.

TEST(RepeatedCharacter, IsWide) {
    for (const unsigned int code : {0x41u, 0xE9u, 0x20ACu, 0xFFFFu, 0xD800u, 0x10000u, 0x1F600u, 0x10FFFFu}) {
        for (const unsigned long n : {1ul, 2ul, 5ul, 100ul}) {
            const QORUnicodeString s(Character(code), n);
            std::u16string expected;
            for (unsigned long i = 0; i < n; ++i) {
                expected += UnitsOf(code);
            }
            ExpectFreshlyWritten(s, true);
            EXPECT_EQ(TextOf(s), expected);
        }
    }
}

TEST(RepeatedCharacter, NoTimesOrOfCodeZeroIsEmpty) {
    EXPECT_TRUE(IsOnTheEmptyBlock(QORUnicodeString(Character('a'), 0)));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORUnicodeString(Character(0), 5)));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORUnicodeString(QORUnicodeChar(), 1)));
    ExpectTheEmptyBlockIntact();
}

TEST(RepeatedCharacter, BeyondAllLengthsIsEmpty) {
    for (const unsigned long n : {1ul << 31, 1ul << 32, 1ul << 62, 1ul << 63, ~0ul}) {
        EXPECT_TRUE(QORUnicodeString(Character('a'), n).IsEmpty()) << n;
        EXPECT_TRUE(QORUnicodeString(Character(0x1F600), n).IsEmpty()) << n;
    }
}

// Append.

class Append : public InAllStates {};

TEST_P(Append, ToAnyStringFromAnyOther) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const std::u16string& appendix : Appendices) {
            for (const bool isArgumentWide : {false, true}) {
                for (const bool isOperator : {false, true}) {
                    SCOPED_TRACE(testing::Message() << UTF8Of(text) << " + " << UTF8Of(appendix) << isArgumentWide);
                    Subject subject(TheState(), text);
                    const QORUnicodeString argument = StringOf(appendix, isArgumentWide);
                    const Block argumentBlock = StringAccess::BlockOf(argument);
                    const QORUnicodeString& result = isOperator ? subject.s += argument : subject.s.Append(argument);
                    EXPECT_EQ(&result, &subject.s);
                    EXPECT_EQ(StringAccess::BlockOf(argument), argumentBlock);
                    EXPECT_EQ(TextOf(argument), appendix);
                    if (TheState() == State::Null) {
                        subject.ExpectUnchanged();
                        continue;
                    }
                    EXPECT_EQ(argumentBlock->_refCount, 1);
                    ExpectAppended(subject, text + appendix, isArgumentWide);
                }
            }
        }
    }
}

TEST_P(Append, OfNothingKeepsTheText) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const QORUnicodeString nothings[] = {QORUnicodeString(), BytesString("")};
        for (const QORUnicodeString& nothing : nothings) {
            Subject subject(TheState(), text);
            subject.s.Append(nothing);
            EXPECT_EQ(TextOf(subject.s), text);
            EXPECT_EQ(VEL::GetMainRepEncoding(subject.s), TheState() == State::Null ? 0 : IsWide(TheState()) ? 2 : 1);
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(Append, OfAWideStringWithoutTextMakesTheTextWide) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        subject.s.Append(WideString(u""));
        EXPECT_EQ(TextOf(subject.s), text);
        if (HasText(TheState())) {
            EXPECT_EQ(VEL::GetMainRepEncoding(subject.s), 2);
        }
        subject.ExpectOthersUntouched();
    }
}

TEST_P(Append, OfANullHandleChangesNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        subject.s.Append(NullString<QORUnicodeString>());
        subject.ExpectUnchanged();
        subject.s += NullString<QORUnicodeString>();
        subject.ExpectUnchanged();
    }
}

TEST_P(Append, OfTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        subject.s.Append(subject.s);
        EXPECT_EQ(TextOf(subject.s), text + text);
        if (HasText(TheState())) {
            ExpectAppended(subject, text + text, IsWide(TheState()));
        }
        subject.ExpectOthersUntouched();
        subject.s += subject.s;
        EXPECT_EQ(TextOf(subject.s), text + text + text + text);
        subject.ExpectOthersUntouched();
    }
}

// The block has room for the text twice, so it is written while it is read.
TEST_P(Append, OfTheStringItselfInPlace) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        subject.s.Append(NarrowString(u"a longer text, so that there is room"));
        subject.s.Append(NarrowString(u"!"));
        std::u16string expected = TextOf(subject.s);
        for (int i = 0; i < 5; ++i) {
            subject.s.Append(subject.s);
            expected += expected;
            EXPECT_EQ(TextOf(subject.s), expected);
        }
    }
}

TEST_P(Append, OfAnotherHandleOfTheBlock) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const QORUnicodeString copy(subject.s);
        const Picture before(copy);
        subject.s.Append(copy);
        EXPECT_EQ(TextOf(subject.s), text + text);
        EXPECT_EQ(Picture(copy), before);
        ExpectTheEmptyBlockIntact();
    }
}

INSTANTIATE_TEST_SUITE_P(States, Append, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(AppendNarrow, JoinsBytesWithoutALookAtCharacters) {
    QORUnicodeString s("\xC3");
    s.Append(BytesString("\xA9"));
    EXPECT_EQ(TextOf(s), u"\u00e9");
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), "\xC3\xA9");
}

TEST(AppendNarrow, KeepsZeroBytes) {
    QORUnicodeString s = BytesString(std::string("a\0b", 3));
    s.Append(BytesString(std::string("\0c", 2)));
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), std::string("a\0b\0c", 5));
}

TEST(AppendNarrow, GrowsByHalf) {
    QORUnicodeString s;
    std::string expected;
    int blocks = 0;
    for (int i = 0; i < 100000; ++i) {
        const Block before = StringAccess::BlockOf(s);
        s.Append(BytesString(std::string(1, static_cast<char>('a' + i % 26))));
        expected += static_cast<char>('a' + i % 26);
        blocks += StringAccess::BlockOf(s) != before ? 1 : 0;
    }
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), expected);
    EXPECT_LT(blocks, 30);
}

TEST(AppendWide, GrowsByHalf) {
    QORUnicodeString s;
    int blocks = 0;
    const QORUnicodeString piece = WideString(u"\u20ac");
    for (int i = 0; i < 100000; ++i) {
        const Block before = StringAccess::BlockOf(s);
        s.Append(piece);
        blocks += StringAccess::BlockOf(s) != before ? 1 : 0;
    }
    EXPECT_EQ(TextOf(s), std::u16string(100000, u'\u20ac'));
    EXPECT_LT(blocks, 30);
}

// Joined strings.

class Joined : public InAllStates {};

TEST_P(Joined, IsANewStringAndTheOperandsStay) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const bool isArgumentWide : {false, true}) {
            Subject subject(TheState(), text);
            const QORUnicodeString argument = StringOf(u"\u00e9nd", isArgumentWide);
            const QORUnicodeString result = subject.s + argument;
            EXPECT_EQ(TextOf(argument), u"\u00e9nd");
            subject.ExpectUnchanged();
            if (TheState() == State::Null) {
                EXPECT_TRUE(result.IsEmpty());
                continue;
            }
            ExpectReadsAs(result, text + u"\u00e9nd");
            EXPECT_EQ(VEL::GetMainRepEncoding(result), IsWide(TheState()) || isArgumentWide ? 2 : 1);
        }
    }
}

TEST_P(Joined, WithNarrowTextOnEitherSide) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const QORUnicodeString behind = subject.s + "xy";
        const QORUnicodeString before = "xy" + subject.s;
        subject.ExpectUnchanged();
        EXPECT_EQ(TextOf(behind), TheState() == State::Null ? u"" : text + u"xy");
        EXPECT_EQ(TextOf(before), u"xy" + text);
        if (HasText(TheState())) {
            EXPECT_EQ(VEL::GetMainRepEncoding(behind), IsWide(TheState()) ? 2 : 1);
            EXPECT_EQ(VEL::GetMainRepEncoding(before), IsWide(TheState()) ? 2 : 1);
        }
    }
}

TEST_P(Joined, WithNullPointersAndHandlesIsTheOtherSide) {
    constexpr const char* NoText = nullptr;
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        EXPECT_EQ(TextOf(subject.s + NoText), text);
        EXPECT_EQ(TextOf(subject.s + ""), text);
        EXPECT_EQ(TextOf(NoText + subject.s), text);
        EXPECT_EQ(TextOf("" + subject.s), text);
        EXPECT_EQ(TextOf(subject.s + NullString<QORUnicodeString>()), text);
        EXPECT_EQ(TextOf(subject.s + subject.s), text + text);
        EXPECT_EQ(TextOf(subject.s), text);
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, Joined, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// Resize.

class Resize : public InAllStates {
protected:
    /// The text cut or filled up.
    static std::u16string Resized(std::u16string text, int n, unsigned int code) {
        const auto length = static_cast<std::size_t>(n);
        if (text.size() >= length) {
            return text.substr(0, length);
        }
        const std::u16string fill = UnitsOf(code);
        while (text.size() + fill.size() <= length) {
            text += fill;
        }
        return text;
    }

    static void ExpectResized(const Subject& subject, int n, const std::u16string& text) {
        if (subject.state == State::Null) {
            // A null handle has no block to fill: it may stay, or take the text.
            EXPECT_THAT(TextOf(subject.s), testing::AnyOf(std::u16string(), text));
            subject.ExpectOthersUntouched();
            return;
        }
        ExpectFreshlyWritten(subject.s, true);
        EXPECT_EQ(subject.Now() == subject.block, subject.state == State::Wide && subject.capacity > n);
        ExpectReadsAs(subject.s, text);
        subject.ExpectOthersUntouched();
    }

    /// A block that was made for a length has no room for growth.
    static void ExpectNoRoomForGrowth(const Subject& subject, int n) {
        if (subject.state != State::Null && subject.Now() != subject.block) {
            EXPECT_EQ(subject.Now()->_capacity, CapacityFor(true, n));
        }
    }
};

TEST_P(Resize, ToEveryLength) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        for (const unsigned int code : {0x20u, 0xE9u, 0xFFFFu, 0x10000u, 0x1F600u, 0x10FFFFu}) {
            for (int n = 1; n <= length + 12; ++n) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " to " << n << " by " << code);
                Subject subject(TheState(), text);
                EXPECT_EQ(&subject.s.Resize(n, Character(code), 1), &subject.s);
                if (n == length) {
                    subject.ExpectUnchanged();
                } else {
                    ExpectResized(subject, n, Resized(text, n, code));
                    ExpectNoRoomForGrowth(subject, n);
                }
            }
        }
    }
}

TEST_P(Resize, OfALongTextToo) {
    const std::u16string text(HasText(TheState()) ? 500 : 0, u'x');
    for (const int n : {1, 400, 499, 501, 520, 2000}) {
        Subject subject(TheState(), text);
        subject.s.Resize(n, Character('y'), 1);
        if (TheState() == State::Null) {
            ExpectResized(subject, n, Resized(text, n, 'y'));
            continue;
        }
        EXPECT_EQ(TextOf(subject.s), Resized(text, n, 'y'));
        ExpectFreshlyWritten(subject.s, true);
        if (TheState() == State::Wide && subject.capacity > n) {
            EXPECT_EQ(subject.Now(), subject.block);
        } else {
            EXPECT_EQ(subject.Now()->_capacity, CapacityFor(true, n));
        }
        subject.ExpectOthersUntouched();
    }
}

TEST_P(Resize, ShortFormFillsWithSpacesAndTruncates) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const int n : {1, 2, 200}) {
            Subject subject(TheState(), text);
            EXPECT_EQ(&subject.s.Resize(n), &subject.s);
            if (n == static_cast<int>(text.size())) {
                subject.ExpectUnchanged();
            } else {
                ExpectResized(subject, n, Resized(text, n, ' '));
            }
        }
    }
}

TEST_P(Resize, WithoutTruncationKeepsALongerText) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (int n = 1; n < static_cast<int>(text.size()); ++n) {
            Subject subject(TheState(), text);
            subject.s.Resize(n, Character('x'), 0);
            subject.ExpectUnchanged();
        }
        Subject subject(TheState(), text);
        const int longer = static_cast<int>(text.size()) + 3;
        subject.s.Resize(longer, Character('x'), 0);
        ExpectResized(subject, longer, Resized(text, longer, 'x'));
    }
}

TEST_P(Resize, BelowOneResetsWhateverTruncateSays) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const int n : {0, -1, INT_MIN}) {
            for (const int truncate : {0, 1}) {
                Subject subject(TheState(), text);
                subject.s.Resize(n, Character('x'), truncate);
                EXPECT_TRUE(subject.s.IsEmpty());
                EXPECT_TRUE(TheState() == State::Null || IsOnTheEmptyBlock(subject.s));
                subject.ExpectOthersUntouched();
            }
            Subject subject(TheState(), text);
            subject.s.Resize(n);
            EXPECT_TRUE(subject.s.IsEmpty());
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(Resize, OneUnitFurtherWithAPairKeepsTheText) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        Subject subject(TheState(), text);
        subject.s.Resize(length + 1, Character(0x1F600), 1);
        EXPECT_EQ(TextOf(subject.s), text);
        if (HasText(TheState())) {
            ExpectResized(subject, length + 1, text);
        }
        subject.ExpectOthersUntouched();
    }
}

TEST_P(Resize, AppendsACharacter) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const unsigned int code : {0x41u, 0xE9u, 0x20ACu, 0xFFFFu, 0x10000u, 0x1F600u, 0x110000u, 0x80000041u}) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " + " << code);
            Subject subject(TheState(), text);
            EXPECT_EQ(&(subject.s += Character(code)), &subject.s);
            const std::u16string expected = text + UnitsOf(code);
            ExpectResized(subject, static_cast<int>(expected.size()), expected);
        }
    }
}

TEST_P(Resize, WithCodeZeroAppendsZeroUnits) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const int length = static_cast<int>(text.size()) + 2;
        subject.s.Resize(length, Character(0), 1);
        if (TheState() != State::Null) {
            EXPECT_EQ(TextOf(subject.s), text + std::u16string(2, u'\0'));
        }
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, Resize, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ResizeStated, CutsOrLeaves) {
    QORUnicodeString s("abcdefgh");
    s.Resize(5, Character('x'), 0);
    EXPECT_STREQ(s.ConvertToChar(), "abcdefgh");
    s.Resize(5);
    EXPECT_STREQ(s.ConvertToChar(), "abcde");
}

TEST(ResizeStated, MayCutAPairInTwo) {
    QORUnicodeString s = WideString(u"a\U0001F600");
    s.Resize(2);
    EXPECT_EQ(TextOf(s), (std::u16string{u'a', char16_t(0xD83D)}));
}
