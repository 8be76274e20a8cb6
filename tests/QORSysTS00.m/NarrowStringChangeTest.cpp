/// @file
/// Narrow strings that are written to: appending, numbers, Resize, replacement, Remove, Insert and case, from every
/// state.

#include "HeapLog.h"
#include "StringSubjects.h"

#include <climits>
#include <functional>
#include <gmock/gmock.h>
#include <utility>

namespace {

using namespace StringStates;
using testing::AnyOf;

using NarrowSubject = SubjectOf<QORString>;

constexpr const char* NoText = nullptr;

QORString Bytes(const std::string& bytes) {
    return StringOn<QORString>(NewNarrow(bytes));
}

/// Room of the block that can be written without another one, once the string is narrow.
int RoomOf(const NarrowSubject& subject, const std::u16string& text) {
    switch (subject.Start()) {
    case State::Narrow:
    case State::NarrowOfNoLength:
        return subject.CapacityBefore();
    case State::Wide:
    case State::WideShared:
        return CapacityFor(false, static_cast<int>(NarrowForm(text).size()));
    default:
        return 0;
    }
}

/// The string stands on another block. The address of a wide block that it gave up earlier may have come back.
void ExpectNewBlock(const NarrowSubject& subject) {
    if (subject.Start() != State::Wide) {
        EXPECT_NE(subject.Now(), subject.BlockBefore());
    }
}

/// After bytes were appended: in place where there is room, otherwise in a block of exactly that length.
void ExpectAppended(const NarrowSubject& subject, const std::u16string& text, const std::string& bytes) {
    ExpectBytes(subject, bytes);
    const int length = static_cast<int>(bytes.size());
    const int room = RoomOf(subject, text);
    if (room > length) {
        EXPECT_EQ(subject.Now()->_capacity, room);
        if (!IsWide(subject.Start())) {
            EXPECT_EQ(subject.Now(), subject.BlockBefore());
        }
    } else {
        ExpectNewBlock(subject);
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(false, length)) << "no room for growth";
    }
}

std::string Replaced(std::string bytes, int pos, int count, const std::string& with) {
    return bytes.replace(static_cast<std::size_t>(pos), static_cast<std::size_t>(count), with);
}

/// Positions and counts worth a look.
std::vector<std::pair<int, int>> Ranges(int length) {
    std::vector<std::pair<int, int>> ranges;
    const int step = length < 12 ? 1 : length / 4;
    for (int pos = 0; pos <= length; pos += step) {
        for (int count = 0; pos + count <= length; count += step) {
            ranges.emplace_back(pos, count);
        }
        ranges.emplace_back(pos, length - pos);
    }
    return ranges;
}

const std::string Appendices[] = {"x", "0123", std::string(100, 'w')};

} // namespace

// Appending.

class NarrowAppend : public InAllStates {};

TEST_P(NarrowAppend, OfChars) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const std::string& appendix : Appendices) {
            NarrowSubject subject(TheState(), text);
            EXPECT_EQ(&(subject.s += appendix.c_str()), &subject.s);
            ExpectAppended(subject, text, NarrowForm(text) + appendix);
        }
    }
}

TEST_P(NarrowAppend, OfNoCharsChangesNothing) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const char* nothing : {NoText, ""}) {
            NarrowSubject subject(TheState(), text);
            EXPECT_EQ(&(subject.s += nothing), &subject.s);
            EXPECT_EQ(subject.s.Length(), static_cast<int>(NarrowForm(text).size()));
            ExpectOnlyNormalised(subject, text);
        }
    }
}

TEST_P(NarrowAppend, OfCharsOutOfTheStringItself) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const bool isPlain = std::ranges::all_of(text, [](char16_t unit) { return unit < 0x7F; });
        if (!isPlain && !IsUTF8Environment()) {
            continue;
        }
        const std::string bytes = NarrowForm(text);
        for (const bool hasRoom : {false, true}) {
            NarrowSubject subject(TheState(), text);
            if (hasRoom) {
                subject.s.Resize(400, QORChar('x'), 1);
                subject.s.Resize(static_cast<int>(bytes.size()), QORChar('x'), 1);
            }
            subject.s += subject.s.ConvertToChar();
            EXPECT_EQ(BytesOf(subject.s), bytes + bytes);
            if (!bytes.empty()) {
                subject.s += subject.s.ConvertToChar() + bytes.size() * 2 - 1;
                EXPECT_EQ(BytesOf(subject.s), bytes + bytes + bytes.back());
            }
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(NarrowAppend, OfAString) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const std::string& appendix : Appendices) {
            for (const bool isWide : {false, true}) {
                for (const bool isOperator : {false, true}) {
                    NarrowSubject subject(TheState(), text);
                    const QORString argument =
                        isWide ? StringOn<QORString>(NewWide({appendix.begin(), appendix.end()})) : Bytes(appendix);
                    const QORString& result = isOperator ? subject.s += argument : subject.s.Append(argument);
                    EXPECT_EQ(&result, &subject.s);
                    EXPECT_EQ(BytesOf(argument), appendix);
                    EXPECT_EQ(VEL::GetMainRepEncoding(argument), 1);
                    if (HasText(TheState()) || TheState() == State::NarrowOfNoLength) {
                        ExpectAppended(subject, text, NarrowForm(text) + appendix);
                    } else {
                        EXPECT_EQ(subject.Now(), StringAccess::BlockOf(argument)) << "shared";
                        EXPECT_EQ(subject.Now()->_refCount, 2);
                    }
                }
            }
        }
    }
}

TEST_P(NarrowAppend, OfAStringIsNotCheckedAgain) {
    const std::string bytes("\x01\x80\0\xff", 4);
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        testing::internal::CaptureStdout();
        NarrowSubject subject(TheState(), text);
        subject.s += Bytes(bytes);
        EXPECT_EQ(BytesOf(subject.s), NarrowForm(text) + bytes);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        subject.ExpectOthersUntouched();
    }
}

TEST_P(NarrowAppend, OfAStringWithoutTextKeepsTheText) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const QORString& nothing : {QORString(), Bytes(""), StringOn<QORString>(NewWide(u""))}) {
            NarrowSubject subject(TheState(), text);
            subject.s += nothing;
            EXPECT_EQ(BytesOf(subject.s), NarrowForm(text));
            EXPECT_EQ(VEL::GetMainRepEncoding(subject.s), 1);
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(NarrowAppend, OfANullHandleKeepsTheText) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        NarrowSubject subject(TheState(), text);
        const QORString null = NullString<QORString>();
        subject.s += null;
        subject.s.Append(null);
        EXPECT_EQ(subject.s.Length(), static_cast<int>(NarrowForm(text).size()));
        EXPECT_TRUE(IsOnTheEmptyBlock(null)) << "repaired";
        EXPECT_EQ(BytesOf(subject.s), NarrowForm(text));
        EXPECT_EQ(DebugBreaks(), 0);
        subject.ExpectOthersUntouched();
    }
}

TEST_P(NarrowAppend, OfTheStringItselfAndOfAnotherHandleOfItsBlock) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        NarrowSubject itself(TheState(), text);
        itself.s += itself.s;
        EXPECT_EQ(BytesOf(itself.s), bytes + bytes);
        itself.s.Append(itself.s);
        EXPECT_EQ(BytesOf(itself.s), bytes + bytes + bytes + bytes);
        itself.ExpectOthersUntouched();
        if (TheState() == State::Null) {
            continue;
        }
        NarrowSubject subject(TheState(), text);
        const QORString copy(subject.s);
        subject.s += copy;
        EXPECT_EQ(BytesOf(subject.s), bytes + bytes);
        EXPECT_EQ(copy.ConvertToChar(), bytes);
        ExpectTheEmptyBlockIntact();
    }
}

TEST_P(NarrowAppend, OfTheStringItselfInPlace) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        std::string expected = NarrowForm(text);
        NarrowSubject subject(TheState(), text);
        subject.s.Resize(1000, QORChar('x'), 1);
        subject.s.Resize(static_cast<int>(expected.size()), QORChar('x'), 1);
        const Block block = subject.Now();
        for (int i = 0; i < 3; ++i) {
            subject.s += subject.s;
            expected += expected;
            EXPECT_EQ(BytesOf(subject.s), expected);
            EXPECT_EQ(subject.Now(), block);
        }
        subject.ExpectOthersUntouched();
    }
}

TEST_P(NarrowAppend, OfAByteWithoutACheck) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const char c : {'x', '\x01', '\x80', '\xff', '\0'}) {
            NarrowSubject subject(TheState(), text);
            EXPECT_EQ(&(subject.s += QORChar(c)), &subject.s);
            ExpectAppended(subject, text, NarrowForm(text) + c);
        }
    }
}

TEST_P(NarrowAppend, OfNumbers) {
    using Action = std::function<QORString&(QORString&)>;
    const std::pair<Action, const char*> rows[] = {
        {[](QORString& s) -> QORString& { return s += 0; }, "0"},
        {[](QORString& s) -> QORString& { return s += -7; }, "-7"},
        {[](QORString& s) -> QORString& { return s += INT_MAX; }, "2147483647"},
        {[](QORString& s) -> QORString& { return s += INT_MIN; }, "-2147483648"},
        {[](QORString& s) -> QORString& { return s += 0u; }, "0"},
        {[](QORString& s) -> QORString& { return s += UINT_MAX; }, "4294967295"},
        {[](QORString& s) -> QORString& { return s += LONG_MAX; }, "9223372036854775807"},
        {[](QORString& s) -> QORString& { return s += LONG_MIN; }, "-9223372036854775808"},
        {[](QORString& s) -> QORString& { return s += 12l; }, "12"},
        {[](QORString& s) -> QORString& { return s += 0ul; }, "0"},
        {[](QORString& s) -> QORString& { return s += ULONG_MAX; }, "18446744073709551615"},
        {[](QORString& s) -> QORString& { return s += LLONG_MIN; }, "-9223372036854775808"},
        {[](QORString& s) -> QORString& { return s += LLONG_MAX; }, "9223372036854775807"},
        {[](QORString& s) -> QORString& { return s += -1ll; }, "-1"},
        {[](QORString& s) -> QORString& { return s += ULLONG_MAX; }, "18446744073709551615"},
        {[](QORString& s) -> QORString& { return s += 10ull; }, "10"},
    };
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const auto& [append, digits] : rows) {
            NarrowSubject subject(TheState(), text);
            EXPECT_EQ(&append(subject.s), &subject.s);
            ExpectAppended(subject, text, NarrowForm(text) + digits);
        }
    }
}

TEST_P(NarrowAppend, JoinedStringsAreNewAndTheOperandsStay) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const bool isWide : {false, true}) {
            const NarrowSubject subject(TheState(), text);
            const QORString argument = isWide ? StringOn<QORString>(NewWide(u"xy")) : Bytes("xy");
            const QORString joined = subject.s + argument;
            EXPECT_EQ(BytesOf(joined), bytes + "xy");
            EXPECT_EQ(VEL::GetMainRepEncoding(joined), 1);
            EXPECT_EQ(BytesOf(argument), "xy");
            EXPECT_EQ(BytesOf(subject.s), bytes);
        }
        const NarrowSubject subject(TheState(), text);
        const QORString behind = subject.s + "xy";
        EXPECT_EQ(BytesOf(behind), bytes + "xy");
        const QORString before = "xy" + subject.s;
        EXPECT_EQ(BytesOf(before), "xy" + bytes);
        EXPECT_EQ((subject.s + subject.s).ConvertToChar(), bytes + bytes);
        EXPECT_EQ(subject.s.ConvertToChar(), bytes);
        ExpectOnlyNormalised(subject, text);
    }
}

TEST_P(NarrowAppend, JoinedWithNothingIsACopy) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const NarrowSubject subject(TheState(), text);
        EXPECT_EQ((NoText + subject.s).ConvertToChar(), bytes);
        EXPECT_EQ(("" + subject.s).ConvertToChar(), bytes);
        EXPECT_EQ((subject.s + NoText).ConvertToChar(), bytes);
        EXPECT_EQ((subject.s + "").ConvertToChar(), bytes);
        EXPECT_EQ((subject.s + QORString()).ConvertToChar(), bytes);
        EXPECT_EQ((subject.s + NullString<QORString>()).ConvertToChar(), bytes);
        EXPECT_EQ(subject.s.ConvertToChar(), bytes);
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowAppend, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// Resize.

class NarrowResize : public InAllStates {
protected:
    using Way = QORString& (*)(QORString&, int, char, int);
    static constexpr Way Ways[] = {
        [](QORString& s, int n, char fill, int truncate) -> QORString& { return s.Resize(n, QORChar(fill), truncate); },
        [](QORString& s, int n, char fill, int truncate) -> QORString& { return s.pad(n, fill, truncate); }};
};

TEST_P(NarrowResize, ToTheLengthOrMoreTakesANewBlock) {
    for (const Way way : Ways) {
        for (const std::u16string& text : NarrowTextsFor(TheState())) {
            const std::string bytes = NarrowForm(text);
            for (const int more : {0, 1, 3, 100}) {
                for (const int truncate : {0, 1, 2}) {
                    const int n = static_cast<int>(bytes.size()) + more;
                    NarrowSubject subject(TheState(), text);
                    EXPECT_EQ(&way(subject.s, n, 'x', truncate), &subject.s);
                    ExpectBytes(subject, bytes + std::string(static_cast<std::size_t>(more), 'x'));
                    if (n == 0) {
                        EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
                    } else {
                        ExpectNewBlock(subject);
                        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(false, n));
                    }
                }
            }
        }
    }
}

TEST_P(NarrowResize, BelowTheLengthCutsOrLeaves) {
    for (const Way way : Ways) {
        for (const std::u16string& text : NarrowTextsFor(TheState())) {
            const std::string bytes = NarrowForm(text);
            for (int n = -2; n < static_cast<int>(bytes.size()); ++n) {
                NarrowSubject kept(TheState(), text);
                EXPECT_EQ(&way(kept.s, n, 'x', 0), &kept.s);
                ExpectOnlyNormalised(kept, text);
                for (const int truncate : {1, 2, -1}) {
                    NarrowSubject cut(TheState(), text);
                    EXPECT_EQ(&way(cut.s, n, 'x', truncate), &cut.s);
                    ExpectBytes(cut, bytes.substr(0, static_cast<std::size_t>(std::max(n, 0))));
                    if (TheState() == State::Narrow) {
                        EXPECT_EQ(cut.Now(), cut.BlockBefore());
                    } else if (n > 0 && IsShared(TheState())) {
                        EXPECT_NE(cut.Now(), cut.BlockBefore());
                    }
                    if (n > 0 && TheState() == State::NarrowShared) {
                        EXPECT_EQ(cut.Now()->_capacity, CapacityFor(false, n)) << "of that length";
                    }
                }
            }
        }
    }
}

TEST_P(NarrowResize, ToANegativeLengthIsToNone) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const int n : {-1, -1000, INT_MIN}) {
            for (const int truncate : {0, 1}) {
                NarrowSubject subject(TheState(), text);
                subject.s.Resize(n, QORChar('x'), truncate);
                EXPECT_EQ(subject.s.Length(), truncate != 0 ? 0 : static_cast<int>(NarrowForm(text).size()));
                EXPECT_EQ(BytesOf(subject.s), truncate != 0 ? "" : NarrowForm(text));
                EXPECT_EQ(subject.s.ConvertToChar()[subject.s.Length()], '\0');
                subject.ExpectOthersUntouched();
            }
        }
    }
}

TEST_P(NarrowResize, BeyondAllMemoryEmptiesTheString) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        NarrowSubject subject(TheState(), text);
        subject.s.Length();
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        subject.s.Resize(INT_MAX, QORChar('x'), 1);
        EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowResize, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowResizeStated, CutsOrLeavesOrFills) {
    QORString s("abcd");
    s.Resize(3, QORChar('x'), 0);
    EXPECT_STREQ(s.ConvertToChar(), "abcd");
    s.Resize(3, QORChar('x'), 1);
    EXPECT_STREQ(s.ConvertToChar(), "abc");
    QORString longer("abcd");
    longer.Resize(6, QORChar('x'), 0);
    EXPECT_STREQ(longer.ConvertToChar(), "abcdxx");
}

// Ranges.

class NarrowReplace : public InAllStates {
protected:
    /// After a range was replaced: always a new block of exactly that length.
    static void ExpectReplaced(const NarrowSubject& subject, const std::string& bytes) {
        ExpectBytes(subject, bytes);
        if (bytes.empty()) {
            EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
            return;
        }
        ExpectNewBlock(subject);
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(false, static_cast<int>(bytes.size())));
    }
};

TEST_P(NarrowReplace, OfARangeTakesANewBlock) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const auto& [pos, count] : Ranges(static_cast<int>(bytes.size()))) {
            for (const std::string& with : {std::string(), std::string("xyz"), std::string(60, 'w')}) {
                for (const bool isWide : {false, true}) {
                    SCOPED_TRACE(testing::Message() << bytes << " at " << pos << " " << count << " by " << with);
                    const QORString argument =
                        isWide ? StringOn<QORString>(NewWide({with.begin(), with.end()})) : Bytes(with);
                    NarrowSubject subject(TheState(), text);
                    EXPECT_EQ(&subject.s.ReplaceSubString(pos, count, argument), &subject.s);
                    if (bytes.empty()) {
                        ExpectOnlyNormalised(subject, text);
                    } else {
                        ExpectReplaced(subject, Replaced(bytes, pos, count, with));
                        EXPECT_EQ(BytesOf(argument), with);
                    }
                    NarrowSubject alias(TheState(), text);
                    EXPECT_EQ(&alias.s.replace(pos, count, argument), &alias.s);
                    EXPECT_EQ(BytesOf(alias.s), BytesOf(subject.s));
                }
            }
        }
    }
}

TEST_P(NarrowReplace, ByACountedPartOfAString) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const auto& [pos, count] : Ranges(static_cast<int>(bytes.size()))) {
            for (const int newCount : {0, 1, 3, 5, 70}) {
                const QORString argument("xyz");
                NarrowSubject subject(TheState(), text);
                EXPECT_EQ(&subject.s.ReplaceSubString(pos, count, argument, newCount), &subject.s);
                EXPECT_STREQ(argument.ConvertToChar(), "xyz");
                EXPECT_EQ(StringAccess::BlockOf(argument)->_refCount, 1);
                if (bytes.empty()) {
                    ExpectOnlyNormalised(subject, text);
                    continue;
                }
                std::string with = "xyz";
                with.resize(static_cast<std::size_t>(newCount), ' ');
                ExpectReplaced(subject, Replaced(bytes, pos, count, with));
            }
            for (const int newCount : {-1, INT_MIN}) {
                NarrowSubject subject(TheState(), text);
                subject.s.ReplaceSubString(pos, count, QORString("xyz"), newCount);
                EXPECT_EQ(subject.s.ConvertToChar(), bytes.empty() ? "" : Replaced(bytes, pos, count, ""));
                subject.ExpectOthersUntouched();
            }
        }
    }
}

TEST_P(NarrowReplace, OutsideChangesNothing) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const int length = static_cast<int>(NarrowForm(text).size());
        const std::pair<int, int> ranges[] = {
            {-1, 0},      {0, -1},      {-1, -1},         {length + 1, 0},    {INT_MAX, 0},
            {INT_MIN, 1}, {0, INT_MIN}, {length + 1, -1}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MIN}};
        for (const auto& [pos, count] : ranges) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos << " " << count);
            NarrowSubject subject(TheState(), text);
            EXPECT_EQ(&subject.s.ReplaceSubString(pos, count, QORString("xyz")), &subject.s);
            subject.s.ReplaceSubString(pos, count, QORString("xyz"), 2);
            subject.s.Remove(pos, count);
            if (pos < 0 || pos > length) {
                subject.s.Insert(pos, QORString("xyz"));
            }
            ExpectOnlyNormalised(subject, text);
        }
    }
}

// A count that makes the new length negative changes nothing; any other range beyond the end ends there.
TEST_P(NarrowReplace, BeyondTheEndNeverReadsPastIt) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const int length = static_cast<int>(bytes.size());
        for (int pos = 0; pos <= length; pos += 1 + length / 10) {
            for (const std::string& with : {std::string(), std::string("xyz"), std::string(60, 'w')}) {
                for (const int over : {1, 2, 3, 5, 40, INT_MAX - length}) {
                    const int count = over == INT_MAX - length ? INT_MAX : length - pos + over;
                    SCOPED_TRACE(testing::Message() << bytes << " at " << pos << " " << count << " by " << with);
                    NarrowSubject subject(TheState(), text);
                    subject.s.ReplaceSubString(pos, count, QORString(with.c_str()));
                    const std::int64_t newLength = std::int64_t{length} - count + static_cast<int>(with.size());
                    if (bytes.empty() || newLength < 0) {
                        ExpectOnlyNormalised(subject, text);
                    } else {
                        ExpectBytes(subject, bytes.substr(0, static_cast<std::size_t>(pos)) + with);
                    }
                }
            }
        }
    }
}

TEST_P(NarrowReplace, ByANullHandleIsByNothing) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const int length = static_cast<int>(bytes.size());
        NarrowSubject subject(TheState(), text);
        subject.s.ReplaceSubString(0, length / 2, NullString<QORString>());
        EXPECT_EQ(subject.s.ConvertToChar(), bytes.substr(bytes.size() / 2));
        NarrowSubject inserted(TheState(), text);
        inserted.s.Insert(0, NullString<QORString>());
        EXPECT_EQ(inserted.s.ConvertToChar(), bytes);
        NarrowSubject first(TheState(), text);
        EXPECT_EQ(first.s.ReplaceSubString(NullString<QORString>(), QORString("x")), 0) << "nothing stands at 0";
        NarrowSubject by(TheState(), text);
        by.s.ReplaceSubString(QORString(bytes.substr(0, 1).c_str()), NullString<QORString>());
        subject.ExpectOthersUntouched();
        inserted.ExpectOthersUntouched();
        first.ExpectOthersUntouched();
        by.ExpectOthersUntouched();
    }
}

TEST_P(NarrowReplace, ByTheStringItselfOrAnotherHandleOfItsBlock) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const int length = static_cast<int>(bytes.size());
        for (const auto& [pos, count] : Ranges(length)) {
            SCOPED_TRACE(testing::Message() << bytes << " at " << pos << " " << count);
            NarrowSubject itself(TheState(), text);
            itself.s.ReplaceSubString(pos, count, itself.s);
            EXPECT_EQ(itself.s.ConvertToChar(), Replaced(bytes, pos, count, bytes));
            itself.ExpectOthersUntouched();
            NarrowSubject counted(TheState(), text);
            counted.s.ReplaceSubString(pos, count, counted.s, 2);
            std::string two = bytes;
            two.resize(2, ' ');
            EXPECT_EQ(counted.s.ConvertToChar(), bytes.empty() ? "" : Replaced(bytes, pos, count, two));
            counted.ExpectOthersUntouched();
            NarrowSubject inserted(TheState(), text);
            inserted.s.Insert(pos, inserted.s);
            EXPECT_EQ(inserted.s.ConvertToChar(), Replaced(bytes, pos, 0, bytes));
            inserted.ExpectOthersUntouched();
            if (TheState() == State::Null) {
                continue;
            }
            NarrowSubject subject(TheState(), text);
            const QORString copy(subject.s);
            subject.s.ReplaceSubString(pos, count, copy);
            EXPECT_EQ(subject.s.ConvertToChar(), Replaced(bytes, pos, count, bytes));
            EXPECT_EQ(copy.ConvertToChar(), bytes);
            ExpectTheEmptyBlockIntact();
        }
    }
}

TEST_P(NarrowReplace, RemovesAndInserts) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const auto& [pos, count] : Ranges(static_cast<int>(bytes.size()))) {
            for (const bool isAlias : {false, true}) {
                NarrowSubject shorter(TheState(), text);
                EXPECT_EQ(&(isAlias ? shorter.s.remove(pos, count) : shorter.s.Remove(pos, count)), &shorter.s);
                NarrowSubject longer(TheState(), text);
                const QORString argument("xy");
                EXPECT_EQ(&(isAlias ? longer.s.insert(pos, argument) : longer.s.Insert(pos, argument)), &longer.s);
                if (bytes.empty()) {
                    ExpectOnlyNormalised(shorter, text);
                    ExpectOnlyNormalised(longer, text);
                } else {
                    ExpectReplaced(shorter, Replaced(bytes, pos, count, ""));
                    ExpectReplaced(longer, Replaced(bytes, pos, 0, "xy"));
                }
            }
        }
    }
}

TEST_P(NarrowReplace, OfTheFirstOccurrence) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        std::vector<std::string> needles = {"", "#", "a", "xyz", bytes, bytes + "#"};
        for (std::size_t i = 0; i < bytes.size(); i += 1 + bytes.size() / 5) {
            needles.push_back(bytes.substr(i, 2));
        }
        for (const std::string& what : needles) {
            for (const char* with : {"", "y", "a longer text than the one before"}) {
                for (const bool isAlias : {false, true}) {
                    SCOPED_TRACE(testing::Message() << bytes << " / " << what << " by " << with);
                    NarrowSubject subject(TheState(), text);
                    const QORString needle = Bytes(what);
                    const QORString other(with);
                    const int result =
                        isAlias ? subject.s.replace(needle, other) : subject.s.ReplaceSubString(needle, other);
                    const std::size_t found = bytes.find(what);
                    EXPECT_EQ(result, found == std::string::npos ? -1 : static_cast<int>(found));
                    if (found == std::string::npos || bytes.empty()) {
                        ExpectOnlyNormalised(subject, text);
                    } else {
                        ExpectReplaced(subject,
                                       Replaced(bytes, static_cast<int>(found), static_cast<int>(what.size()), with));
                    }
                }
            }
        }
    }
}

TEST_P(NarrowReplace, OfTheFirstOccurrenceTakesTheStringItself) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        NarrowSubject itself(TheState(), text);
        EXPECT_EQ(itself.s.ReplaceSubString(itself.s, itself.s), 0);
        EXPECT_EQ(itself.s.ConvertToChar(), bytes);
        itself.ExpectOthersUntouched();
        NarrowSubject of(TheState(), text);
        EXPECT_EQ(of.s.ReplaceSubString(of.s, QORString("xy")), 0);
        EXPECT_EQ(std::string(of.s.ConvertToChar()), bytes.empty() ? "" : "xy");
        of.ExpectOthersUntouched();
        NarrowSubject by(TheState(), text);
        by.s.ReplaceSubString(Bytes(bytes.substr(0, 1)), by.s);
        EXPECT_EQ(by.s.ConvertToChar(), bytes.empty() ? "" : bytes + bytes.substr(1));
        by.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowReplace, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// Case.

class NarrowCase : public InAllStates {};

TEST_P(NarrowCase, ChangesLetters) {
    for (const std::u16string& text :
         {std::u16string(u"aBc"), std::u16string(u"az AZ @[`{ 1"), std::u16string(200, u'q') + u"R"}) {
        for (const bool isUpper : {false, true}) {
            for (const bool isAlias : {false, true}) {
                const std::u16string start = HasText(TheState()) ? text : u"";
                NarrowSubject subject(TheState(), start);
                const QORString& result = isUpper ? (isAlias ? subject.s.toUpper() : subject.s.ToUpper())
                                                  : (isAlias ? subject.s.toLower() : subject.s.ToLower());
                EXPECT_EQ(&result, &subject.s);
                std::string expected = NarrowForm(start);
                for (char& byte : expected) {
                    const bool isChanged = isUpper ? byte >= 'a' && byte <= 'z' : byte >= 'A' && byte <= 'Z';
                    byte = static_cast<char>(isChanged ? byte ^ 0x20 : byte);
                }
                if (HasText(TheState())) {
                    ExpectBytes(subject, expected);
                    if (TheState() == State::Narrow) {
                        EXPECT_EQ(subject.Now(), subject.BlockBefore());
                    }
                } else {
                    ExpectOnlyNormalised(subject, start);
                }
            }
        }
    }
}

TEST_P(NarrowCase, LeavesTextInThatCaseAlone) {
    for (const std::u16string text : {u"ABC 1@[`{", u"abc 1@[`{"}) {
        const std::u16string start = HasText(TheState()) ? text : u"";
        NarrowSubject subject(TheState(), start);
        text[0] == u'A' ? subject.s.ToUpper() : subject.s.ToLower();
        ExpectOnlyNormalised(subject, start);
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowCase, EnvironmentsAndStates(), NameOfEnvironmentAndState);
