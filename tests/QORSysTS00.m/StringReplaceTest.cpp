/// @file
/// Ranges and occurrences within strings: ReplaceSubString, Insert, Remove, SubString and ReplaceAll.

#include "StringStates.h"

#include <climits>
#include <gmock/gmock.h>

namespace {

using namespace StringStates;

/// After a change of a range, which makes the string wide.
void ExpectWritten(const Subject& subject, const std::u16string& text) {
    const int length = static_cast<int>(text.size());
    if (subject.state == State::Null) {
        // A null handle has no block to write: it may stay, or take the text.
        EXPECT_THAT(TextOf(subject.s), testing::AnyOf(std::u16string(), text));
    } else if (subject.state == State::Wide && subject.capacity > length) {
        EXPECT_EQ(subject.Now(), subject.block);
        ExpectFreshlyWritten(subject.s, true);
    } else if (text.empty()) {
        EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
    } else {
        EXPECT_NE(subject.Now(), subject.block);
        ExpectFreshlyWritten(subject.s, true);
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(true, length)) << "no room for growth";
    }
    if (subject.state != State::Null) {
        ExpectReadsAs(subject.s, text);
    }
    subject.ExpectOthersUntouched();
}

std::u16string Replaced(const std::u16string& text, int pos, int count, std::u16string with, int newCount) {
    with.resize(static_cast<std::size_t>(newCount), u' ');
    return text.substr(0, static_cast<std::size_t>(pos)) + with + text.substr(static_cast<std::size_t>(pos + count));
}

/// Ranges worth a look: all of a short text, some of a long one.
std::vector<std::pair<int, int>> Ranges(int length) {
    std::vector<std::pair<int, int>> ranges;
    const int step = length < 10 ? 1 : length / 4;
    for (int pos = 0; pos <= length; pos += step) {
        for (int count = 0; pos + count <= length; count += step) {
            ranges.emplace_back(pos, count);
        }
        ranges.emplace_back(pos, length - pos);
    }
    return ranges;
}

} // namespace

class ReplaceRange : public InAllStates {};

TEST_P(ReplaceRange, ByExactlySoManyUnits) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const auto& [pos, count] : Ranges(static_cast<int>(text.size()))) {
            for (const std::u16string& with :
                 {std::u16string(u""), std::u16string(u"x\u00e9yz"), std::u16string(40, u'w')}) {
                for (const int newCount : {0, 1, 3, 6, 45}) {
                    for (const bool isWide : {false, true}) {
                        SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count << " by "
                                                        << newCount << " of " << UTF8Of(with));
                        Subject subject(TheState(), text);
                        const QORUnicodeString argument = StringOf(with, isWide);
                        EXPECT_EQ(&subject.s.ReplaceSubString(pos, count, argument, newCount), &subject.s);
                        ExpectWritten(subject, Replaced(text, pos, count, with, newCount));
                        EXPECT_EQ(TextOf(argument), with);
                    }
                }
            }
        }
    }
}

TEST_P(ReplaceRange, ByAllOfAString) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const auto& [pos, count] : Ranges(static_cast<int>(text.size()))) {
            for (const std::u16string& with :
                 {std::u16string(u""), std::u16string(u"x\u00e9yz"), std::u16string(40, u'w')}) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count);
                Subject subject(TheState(), text);
                EXPECT_EQ(&subject.s.ReplaceSubString(pos, count, NarrowString(with)), &subject.s);
                ExpectWritten(subject, Replaced(text, pos, count, with, static_cast<int>(with.size())));
            }
        }
    }
}

TEST_P(ReplaceRange, RemovesAndInserts) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const auto& [pos, count] : Ranges(static_cast<int>(text.size()))) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count);
            Subject shorter(TheState(), text);
            EXPECT_EQ(&shorter.s.Remove(pos, count), &shorter.s);
            ExpectWritten(shorter, Replaced(text, pos, count, u"", 0));
            for (const bool isWide : {false, true}) {
                Subject longer(TheState(), text);
                EXPECT_EQ(&longer.s.Insert(pos, StringOf(u"x\u00e9", isWide)), &longer.s);
                ExpectWritten(longer, Replaced(text, pos, 0, u"x\u00e9", 2));
            }
        }
    }
}

TEST_P(ReplaceRange, OfNothingByNothingIsAWriteToo) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        subject.s.Insert(0, QORUnicodeString());
        ExpectWritten(subject, text);
    }
}

TEST_P(ReplaceRange, OutsideTheStringChangesNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        const std::pair<int, int> ranges[] = {{-1, 0},         {0, -1},      {-1, -1},           {-1, 2},
                                              {0, length + 1}, {length, 1},  {length + 1, 0},    {length + 1, -1},
                                              {INT_MAX, 1},    {1, INT_MAX}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN},
                                              {INT_MIN, 0},    {0, INT_MIN}, {INT_MAX, INT_MIN}};
        for (const auto& [pos, count] : ranges) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count);
            Subject subject(TheState(), text);
            EXPECT_EQ(&subject.s.ReplaceSubString(pos, count, QORUnicodeString("xyz"), 2), &subject.s);
            subject.ExpectUnchanged();
            subject.s.ReplaceSubString(pos, count, QORUnicodeString("xyz"));
            subject.ExpectUnchanged();
            subject.s.Remove(pos, count);
            subject.ExpectUnchanged();
            if (pos < 0 || pos > length) {
                subject.s.Insert(pos, QORUnicodeString("xyz"));
                subject.ExpectUnchanged();
            }
        }
    }
}

// There is no such number of units: whatever becomes of the range, nothing outside the block is touched.
TEST_P(ReplaceRange, ByANegativeNumberOfUnitsBreaksNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        for (const int newCount : {-1, -2, -1000, INT_MIN}) {
            for (const auto& [pos, count] : {std::pair(0, 0), std::pair(0, length), std::pair(length, 0)}) {
                Subject subject(TheState(), text);
                subject.s.ReplaceSubString(pos, count, QORUnicodeString("xyz"), newCount);
                EXPECT_THAT(TextOf(subject.s), testing::AnyOf(text, Replaced(text, pos, count, u"", 0)));
                subject.ExpectOthersUntouched();
            }
        }
    }
}

TEST_P(ReplaceRange, ByMoreUnitsThanThereCanBeBreaksNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        if (text.empty()) {
            continue;
        }
        Subject subject(TheState(), text);
        subject.s.ReplaceSubString(0, 0, QORUnicodeString("xyz"), INT_MAX);
        EXPECT_THAT(TextOf(subject.s), testing::AnyOf(text, std::u16string()));
        subject.ExpectOthersUntouched();
    }
}

TEST_P(ReplaceRange, ByANullHandleIsByNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        Subject shorter(TheState(), text);
        shorter.s.ReplaceSubString(0, length / 2, NullString<QORUnicodeString>());
        ExpectWritten(shorter, text.substr(text.size() / 2));
        Subject padded(TheState(), text);
        padded.s.ReplaceSubString(0, length, NullString<QORUnicodeString>(), 3);
        ExpectWritten(padded, u"   ");
        Subject inserted(TheState(), text);
        inserted.s.Insert(length, NullString<QORUnicodeString>());
        ExpectWritten(inserted, text);
    }
}

TEST_P(ReplaceRange, ByTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        for (const auto& [pos, count] : Ranges(length)) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count);
            Subject whole(TheState(), text);
            whole.s.ReplaceSubString(pos, count, whole.s);
            ExpectWritten(whole, Replaced(text, pos, count, text, length));
            for (const int newCount : {0, 1, length + 5}) {
                Subject counted(TheState(), text);
                counted.s.ReplaceSubString(pos, count, counted.s, newCount);
                ExpectWritten(counted, Replaced(text, pos, count, text, newCount));
            }
            Subject inserted(TheState(), text);
            inserted.s.Insert(pos, inserted.s);
            ExpectWritten(inserted, Replaced(text, pos, 0, text, length));
        }
    }
}

// The block has room for the result, so it is written while it is read.
TEST_P(ReplaceRange, ByTheStringItselfInPlace) {
    for (const std::u16string& text : TextsFor(TheState())) {
        if (!HasText(TheState())) {
            continue;
        }
        const int length = static_cast<int>(text.size());
        for (const auto& [pos, count] : Ranges(length)) {
            Subject subject(TheState(), text);
            subject.s.Resize(4 * length + 10);
            subject.s.Resize(length);
            const Block block = subject.Now();
            subject.s.ReplaceSubString(pos, count, subject.s);
            EXPECT_EQ(subject.Now(), block);
            EXPECT_EQ(TextOf(subject.s), Replaced(text, pos, count, text, length));
        }
    }
}

TEST_P(ReplaceRange, ByAnotherHandleOfTheBlock) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        for (const auto& [pos, count] : Ranges(length)) {
            Subject subject(TheState(), text);
            const QORUnicodeString copy(subject.s);
            const Picture before(copy);
            subject.s.ReplaceSubString(pos, count, copy);
            EXPECT_EQ(TextOf(subject.s), Replaced(text, pos, count, text, length));
            EXPECT_EQ(Picture(copy), before);
            ExpectTheEmptyBlockIntact();
        }
    }
}

// Parts.

TEST_P(ReplaceRange, SubStringIsWideAndLeavesTheSourceAlone) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const auto& [pos, count] : Ranges(static_cast<int>(text.size()))) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count);
            Subject subject(TheState(), text);
            const QORUnicodeString part = subject.s.SubString(pos, count);
            EXPECT_EQ(TextOf(part), text.substr(static_cast<std::size_t>(pos), static_cast<std::size_t>(count)));
            if (count == 0) {
                EXPECT_TRUE(IsOnTheEmptyBlock(part));
            } else if (count < static_cast<int>(text.size())) {
                ExpectFreshlyWritten(part, true);
            } else {
                EXPECT_EQ(VEL::GetMainRepEncoding(part), 2);
            }
            EXPECT_EQ(Picture(subject.s).bytes, subject.before.bytes);
            EXPECT_EQ(Picture(subject.s).view, subject.before.view);
        }
    }
}

TEST_P(ReplaceRange, SubStringBeyondTheEndIsEmpty) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        const std::pair<int, int> ranges[] = {{-1, 1},
                                              {-1, 0},
                                              {0, 0},
                                              {0, length + 1},
                                              {1, length},
                                              {length, 1},
                                              {length, 0},
                                              {length + 1, 0},
                                              {INT_MAX, 1},
                                              {1, INT_MAX},
                                              {0, INT_MAX},
                                              {INT_MAX, INT_MAX},
                                              {INT_MIN, 1},
                                              {0, -1},
                                              {1, -1},
                                              {length, -1},
                                              {length + 1, -1},
                                              {0, INT_MIN},
                                              {INT_MAX, INT_MIN},
                                              {INT_MIN, INT_MIN}};
        for (const auto& [start, count] : ranges) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << start << " " << count);
            Subject subject(TheState(), text);
            EXPECT_TRUE(IsOnTheEmptyBlock(subject.s.SubString(start, count)));
            subject.ExpectUnchanged();
        }
    }
}

// The first occurrence.

TEST_P(ReplaceRange, FirstOccurrenceIsReplacedAndItsPositionGiven) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const std::u16string& with :
             {std::u16string(u""), std::u16string(u"y"), std::u16string(u"\u00e9t\u00e9")}) {
            for (std::size_t pos = 0; pos < text.size(); ++pos) {
                const std::u16string what = text.substr(pos, 2);
                const auto first = static_cast<int>(text.find(what));
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos);
                Subject subject(TheState(), text);
                EXPECT_EQ(subject.s.ReplaceSubString(WideString(what), NarrowString(with)), first);
                ExpectWritten(
                    subject, Replaced(text, first, static_cast<int>(what.size()), with, static_cast<int>(with.size())));
            }
        }
    }
}

TEST_P(ReplaceRange, NoOccurrenceChangesNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const QORUnicodeString absent[] = {QORUnicodeString("#"),    WideString(u"#"), QORUnicodeString(),
                                           BytesString(""),          WideString(u""),  NullString<QORUnicodeString>(),
                                           NarrowString(text + u"#")};
        for (const QORUnicodeString& what : absent) {
            Subject subject(TheState(), text);
            EXPECT_EQ(subject.s.ReplaceSubString(what, QORUnicodeString("y")), -1);
            subject.ExpectUnchanged();
            EXPECT_EQ(&subject.s.ReplaceAll(what, QORUnicodeString("y")), &subject.s);
            subject.ExpectUnchanged();
        }
    }
}

TEST_P(ReplaceRange, FirstOccurrenceWithTheStringItselfOnEitherSide) {
    for (const std::u16string& text : TextsFor(TheState())) {
        if (text.empty()) {
            continue;
        }
        Subject both(TheState(), text);
        EXPECT_EQ(both.s.ReplaceSubString(both.s, both.s), 0);
        ExpectWritten(both, text);
        Subject what(TheState(), text);
        EXPECT_EQ(what.s.ReplaceSubString(what.s, QORUnicodeString("xy")), 0);
        ExpectWritten(what, u"xy");
        Subject with(TheState(), text);
        EXPECT_EQ(with.s.ReplaceSubString(WideString(text.substr(0, 1)), with.s), 0);
        ExpectWritten(with, text + text.substr(1));
        Subject null(TheState(), text);
        EXPECT_EQ(null.s.ReplaceSubString(WideString(text.substr(0, 1)), NullString<QORUnicodeString>()), 0);
        ExpectWritten(null, text.substr(1));
    }
}

INSTANTIATE_TEST_SUITE_P(States, ReplaceRange, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// All occurrences.

namespace {

std::u16string AllReplaced(std::u16string text, const std::u16string& what, const std::u16string& with) {
    for (std::size_t pos = 0; !what.empty() && (pos = text.find(what, pos)) != std::u16string::npos;
         pos += with.size()) {
        text.replace(pos, what.size(), with);
    }
    return text;
}

} // namespace

class ReplaceAll : public InAllStates {
protected:
    void SetUp() override {
        InAllStates::SetUp();
        if (HasText(TheState())) {
            texts = {
                u"a",  u"aa", u"aaa", u"abab", u"xaax", u"ba\u00e9ba\u00e9a", u"\u00e9\u00e9", std::u16string(70, u'a'),
                u"xyz"};
        }
    }
    std::vector<std::u16string> texts;
};

TEST_P(ReplaceAll, FromLeftToRightWithoutOverlap) {
    for (const std::u16string& text : texts) {
        for (const std::u16string what : {u"a", u"aa", u"ab", u"\u00e9", u"a\u00e9"}) {
            for (const std::u16string with : {u"", u"a", u"aa", u"q", u"<\u00e9>", u"\u00e9"}) {
                for (const int wide : {0, 1, 2, 3}) {
                    SCOPED_TRACE(testing::Message()
                                 << UTF8Of(text) << ": " << UTF8Of(what) << " by " << UTF8Of(with) << " " << wide);
                    Subject subject(TheState(), text);
                    const QORUnicodeString whatString = StringOf(what, (wide & 1) != 0);
                    const QORUnicodeString withString = StringOf(with, (wide & 2) != 0);
                    EXPECT_EQ(&subject.s.ReplaceAll(whatString, withString), &subject.s);
                    EXPECT_EQ(TextOf(whatString), what);
                    EXPECT_EQ(TextOf(withString), with);
                    const std::u16string expected = AllReplaced(text, what, with);
                    if (text.find(what) == std::u16string::npos) {
                        subject.ExpectUnchanged();
                        continue;
                    }
                    ExpectReadsAs(subject.s, expected);
                    if (expected.empty()) {
                        subject.ExpectOthersUntouched();
                        continue;
                    }
                    Subject again(TheState(), text);
                    again.s.ReplaceAll(whatString, withString);
                    const bool isNarrow = !IsWide(TheState()) && wide == 0;
                    ExpectFreshlyWritten(again.s, !isNarrow);
                    if (isNarrow) {
                        const bool isKept = TheState() == State::Narrow && again.capacity > again.Now()->_length;
                        EXPECT_EQ(again.Now() == again.block, isKept);
                    }
                    if (again.Now() != again.block) {
                        EXPECT_EQ(again.Now()->_capacity, CapacityFor(!isNarrow, again.Now()->_length));
                    }
                    again.ExpectOthersUntouched();
                }
            }
        }
    }
}

TEST_P(ReplaceAll, WithTheStringItselfInAnyPlace) {
    for (const std::u16string& text : texts) {
        SCOPED_TRACE(UTF8Of(text));
        Subject both(TheState(), text);
        both.s.ReplaceAll(both.s, both.s);
        ExpectReadsAs(both.s, text);
        both.ExpectOthersUntouched();
        Subject what(TheState(), text);
        what.s.ReplaceAll(what.s, QORUnicodeString("xy"));
        ExpectReadsAs(what.s, u"xy");
        what.ExpectOthersUntouched();
        Subject with(TheState(), text);
        with.s.ReplaceAll(QORUnicodeString("a"), with.s);
        ExpectReadsAs(with.s, AllReplaced(text, u"a", text));
        with.ExpectOthersUntouched();
        Subject handle(TheState(), text);
        const QORUnicodeString copy(handle.s);
        const Picture before(copy);
        handle.s.ReplaceAll(QORUnicodeString("a"), copy);
        EXPECT_EQ(TextOf(handle.s), AllReplaced(text, u"a", text));
        handle.s = copy;
        handle.s.ReplaceAll(copy, QORUnicodeString("z"));
        EXPECT_EQ(TextOf(handle.s), u"z");
        EXPECT_EQ(Picture(copy), before);
    }
}

// Whether a null handle stands for no text or for no wish to replace is open; nothing else may happen.
TEST_P(ReplaceAll, ByANullHandleRemovesOrChangesNothing) {
    for (const std::u16string& text : texts) {
        Subject subject(TheState(), text);
        subject.s.ReplaceAll(QORUnicodeString("a"), NullString<QORUnicodeString>());
        EXPECT_THAT(TextOf(subject.s), testing::AnyOf(text, AllReplaced(text, u"a", u"")));
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ReplaceAll, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ReplaceAllNarrow, WorksOnBytes) {
    QORUnicodeString s("\xC3\xA9 \xC3\xA8");
    s.ReplaceAll(BytesString("\xC3"), BytesString("\xC2"));
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), "\xC2\xA9 \xC2\xA8");
    QORUnicodeString wide = WideString(u"\u00e9");
    wide.ReplaceAll(BytesString("\xA9"), BytesString("x"));
    EXPECT_EQ(TextOf(wide), u"\u00e9") << "a wide string has no such byte";
}

TEST(ReplaceAllNarrow, BuildsNoViews) {
    QORUnicodeString s("abcabc");
    const QORUnicodeString what("b");
    const QORUnicodeString with("xyz");
    s.ReplaceAll(what, with);
    s.ReplaceAll(QORUnicodeString("#"), with);
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), "axyzcaxyzc");
    for (const QORUnicodeString* each : {&std::as_const(s), &what, &with}) {
        EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(*each));
    }
}

TEST(ReplaceAllNarrow, KeepsAndFindsZeroBytes) {
    QORUnicodeString s = BytesString(std::string("a\0b\0c", 5));
    s.ReplaceAll(BytesString(std::string("\0", 1)), BytesString("--"));
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), "a--b--c");
    s.ReplaceAll(BytesString("--"), BytesString(std::string("\0\0", 2)));
    EXPECT_EQ(Narrow(StringAccess::BlockOf(s)), std::string("a\0\0b\0\0c", 7));
}

TEST(ReplaceAllWide, WorksOnUnits) {
    QORUnicodeString s = WideString(u"a\U0001F600b\U0001F601");
    s.ReplaceAll(WideString(std::u16string(1, char16_t(0xD83D))), WideString(u"-"));
    EXPECT_EQ(TextOf(s), (std::u16string{u'a', u'-', char16_t(0xDE00), u'b', u'-', char16_t(0xDE01)}));
}

TEST(ReplaceAllLong, AgreesWithThePlainWay) {
    for (const bool isWide : {false, true}) {
        for (std::size_t length = 1; length < 200; ++length) {
            std::u16string text;
            for (std::size_t i = 0; i < length; ++i) {
                text += u"abcaab"[i * i % 6];
            }
            for (const std::u16string what : {u"a", u"aa", u"abc", u"caab", u"aabaab"}) {
                for (const std::u16string with : {u"", u"b", u"aab", u"longer than anything"}) {
                    QORUnicodeString s = StringOf(text, isWide);
                    s.ReplaceAll(StringOf(what, isWide), StringOf(with, isWide));
                    ASSERT_EQ(TextOf(s), AllReplaced(text, what, with)) << UTF8Of(text);
                }
            }
        }
    }
}

// Places are found and kept so many at a time.
TEST(ReplaceAllLong, AroundTheNumberOfPlacesThatAreKept) {
    for (const int hits : {511, 512, 513, 1023, 1024, 1025}) {
        for (const std::u16string what : {u"a", u"abc", u"abcabcabc"}) {
            std::u16string text;
            for (int i = 0; i < hits; ++i) {
                text += std::u16string(static_cast<std::size_t>(i % 3), u'-') + what;
            }
            for (const std::u16string with : {u"", u"x", u"xyz", u"<a longer text>"}) {
                const std::u16string expected = AllReplaced(text, what, with);
                for (const bool isWide : {false, true}) {
                    for (const bool isShared : {false, true}) {
                        SCOPED_TRACE(testing::Message() << hits << " " << UTF8Of(what) << " by " << UTF8Of(with));
                        QORUnicodeString s = StringOf(text, isWide);
                        const QORUnicodeString other = isShared ? s : QORUnicodeString();
                        const Block before = StringAccess::BlockOf(s);
                        const bool isInPlace = !isShared && before->_capacity > static_cast<int>(expected.size());
                        s.ReplaceAll(StringOf(what, isWide), StringOf(with, isWide));
                        ASSERT_EQ(TextOf(s), expected);
                        ExpectFreshlyWritten(s, isWide);
                        if (isInPlace) {
                            EXPECT_EQ(StringAccess::BlockOf(s), before);
                        } else {
                            EXPECT_EQ(StringAccess::BlockOf(s)->_capacity,
                                      CapacityFor(isWide, static_cast<int>(expected.size())))
                                << "no room for growth";
                        }
                        EXPECT_EQ(TextOf(other), isShared ? text : u"");
                    }
                }
            }
        }
    }
}

// Stated cases.

TEST(ReplaceStated, Cases) {
    QORUnicodeString s("abc");
    EXPECT_TRUE(IsOnTheEmptyBlock(s.SubString(1, 3)));
    EXPECT_STREQ(s.SubString(1, 2).ConvertToChar(), "bc");
    EXPECT_STREQ(s.ReplaceSubString(1, 1, QORUnicodeString("xy"), 4).ConvertToChar(), "axy  c");
    s = "abc";
    EXPECT_STREQ(s.Insert(3, QORUnicodeString("d")).ConvertToChar(), "abcd");
    EXPECT_STREQ(s.Insert(5, QORUnicodeString("e")).ConvertToChar(), "abcd");
}

TEST(ReplaceStated, PositionsCountUnits) {
    QORUnicodeString s("a\xF0\x9F\x98\x80"
                       "b");
    s.Insert(3, QORUnicodeString("|"));
    EXPECT_EQ(TextOf(s), u"a\U0001F600|b");
    s.Remove(1, 2);
    EXPECT_EQ(TextOf(s), u"a|b");
}
