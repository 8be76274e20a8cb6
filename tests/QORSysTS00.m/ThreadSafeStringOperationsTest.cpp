/// @file
/// Thread-safe strings that are cut, joined and written to: ranges, Append, Insert, ReplaceRange and SetCapacity.

#include "StringSubjects.h"
#include "VELSysStatus.h"

#include <climits>
#include <gmock/gmock.h>

namespace {

using namespace StringStates;

using String = QORSysTSUnicodeString;
using StringSubject = SubjectOf<String>;

/// The length by which a range is judged: units of the main representation.
int Limit(const std::u16string& text, bool isWide) {
    return static_cast<int>(isWide ? text.size() : NarrowForm(text).size());
}

/// Positions worth a look, on both sides of the bounds too.
std::vector<int> Positions(int limit) {
    std::vector<int> positions = {INT_MIN, -1};
    const int step = limit < 16 ? 1 : limit / 3;
    for (int pos = 0; pos < limit; pos += step) {
        positions.push_back(pos);
    }
    positions.insert(positions.end(), {limit, limit + 1, INT_MAX});
    return positions;
}

std::u16string Cut(const std::u16string& text, int start, int end) {
    return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

std::u16string Replaced(std::u16string text, int start, int end, const std::u16string& with) {
    return text.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start), with);
}

/// After a range was replaced: the string is wide, without room for growth.
void ExpectReplaced(const StringSubject& subject, const std::u16string& text) {
    const int length = static_cast<int>(text.size());
    if (subject.Start() == State::Wide && subject.CapacityBefore() > length) {
        EXPECT_EQ(subject.Now(), subject.BlockBefore());
        ExpectFreshlyWritten(Alias(subject.s), true);
    } else if (text.empty()) {
        EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
    } else {
        EXPECT_NE(subject.Now(), subject.BlockBefore());
        ExpectFreshlyWritten(Alias(subject.s), true);
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(true, length));
    }
    ExpectReadsAs(Alias(subject.s), text);
    subject.ExpectOthersUntouched();
}

/// A string that was an argument is what it was, but for its view.
class Argument {
public:
    explicit Argument(String argument) : s(std::move(argument)), _before(Alias(s)) {}
    ~Argument() {
        const Picture after{Alias(s)};
        EXPECT_EQ(after.block, _before.block);
        EXPECT_EQ(after.flags, _before.flags);
        EXPECT_EQ(after.bytes, _before.bytes);
        if (after.block != nullptr && !after.block->IsTheEmptyBlock()) {
            EXPECT_EQ(after.block->_refCount, 1);
        }
    }

    String s;

private:
    Picture _before;
};

Argument NarrowArgument(const std::u16string& text) {
    return Argument(Make<String>(text, false));
}
Argument WideArgument(const std::u16string& text) {
    return Argument(Make<String>(text, true));
}
Argument NullArgument() {
    return Argument(NullString<String>());
}

const std::u16string Insertions[] = {u"", u"x\u00e9yz", std::u16string(40, u'w')};

} // namespace

// Parts.

class ThreadSafeSubString : public InAllStates {};

TEST_P(ThreadSafeSubString, IsWhatStandsFromStartUpToEnd) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int units = static_cast<int>(text.size());
        const int limit = Limit(text, IsWide(TheState()));
        for (const int start : Positions(limit)) {
            for (const int end : Positions(limit)) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " from " << start << " to " << end);
                StringSubject subject(TheState(), text);
                const String part = subject.s.SubString(start, end);
                const String made(subject.s, start, end);
                const bool isValid = TheState() != State::Null && start >= 0 && start <= end && end <= limit;
                for (const String* result : {&part, &made}) {
                    if (!isValid || start == end) {
                        EXPECT_TRUE(IsOnTheEmptyBlock(*result));
                    } else if (end <= units) {
                        ExpectFreshlyWritten(Alias(*result), true);
                        EXPECT_EQ(TextOf(Alias(*result)), Cut(text, start, end));
                        EXPECT_NE(StringAccess::BlockOf(*result), subject.BlockBefore());
                    } else {
                        // Within the bytes and beyond the units there is nothing to cut.
                        EXPECT_TRUE(IsOnTheEmptyBlock(*result));
                    }
                }
                subject.ExpectUnchanged();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeSubString, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeSubStringStated, TakesStartAndEndNotACount) {
    const String s("abcd");
    EXPECT_STREQ(s.SubString(1, 3).ConvertToChar(), "bc");
    EXPECT_STREQ(s.SubString(2, 2).ConvertToChar(), "");
    EXPECT_STREQ(s.SubString(3, 2).ConvertToChar(), "");
    EXPECT_STREQ(s.SubString(0, 5).ConvertToChar(), "");
    EXPECT_STREQ(s.SubString(0, 4).ConvertToChar(), "abcd");
}

// Deliberate: the bound of a narrow string is its length in bytes.
TEST(ThreadSafeSubStringStated, CountsBytesOfANarrowStringForTheBoundAlone) {
    const String narrow = Make<String>(u"\u00e4\u00f6\u00fc", false);
    ASSERT_EQ(narrow.GetLengthInByte(), 6);
    EXPECT_EQ(TextOf(Alias(narrow.SubString(1, 3))), u"\u00f6\u00fc");
    EXPECT_TRUE(IsOnTheEmptyBlock(narrow.SubString(1, 4)));
    EXPECT_TRUE(IsOnTheEmptyBlock(narrow.SubString(4, 6)));
    EXPECT_TRUE(IsOnTheEmptyBlock(narrow.SubString(1, 7)));
    const String wide = Make<String>(u"\u00e4\u00f6\u00fc", true);
    EXPECT_TRUE(IsOnTheEmptyBlock(wide.SubString(1, 4)));
}

TEST(ThreadSafeSubStringStated, MayCutAPairInTwo) {
    const String s = Make<String>(u"a\U0001F600b", true);
    EXPECT_EQ(TextOf(Alias(s.SubString(1, 2))), std::u16string(1, char16_t(0xD83D)));
    EXPECT_EQ(TextOf(Alias(s.SubString(2, 4))), (std::u16string{char16_t(0xDE00), u'b'}));
}

// Ranges that are replaced.

class ThreadSafeReplaceRange : public InAllStates {};

TEST_P(ThreadSafeReplaceRange, ReplacesFromStartUpToEndByAllOfAString) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int units = static_cast<int>(text.size());
        for (const int start : Positions(units)) {
            for (const int end : Positions(units)) {
                for (const std::u16string& with : Insertions) {
                    SCOPED_TRACE(testing::Message() << UTF8Of(text) << " from " << start << " to " << end);
                    for (const bool isWide : {false, true}) {
                        StringSubject subject(TheState(), text);
                        const Argument argument(Make<String>(with, isWide));
                        const int result = subject.s.ReplaceRange(start, end, argument.s);
                        if (TheState() == State::Null || start < 0 || start > end || end > units) {
                            EXPECT_EQ(result, VEL::StatusFailure);
                            subject.ExpectUnchanged();
                        } else {
                            EXPECT_EQ(result, 0);
                            ExpectReplaced(subject, Replaced(text, start, end, with));
                        }
                    }
                }
            }
        }
    }
}

TEST_P(ThreadSafeReplaceRange, ByANullHandleFails) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        EXPECT_EQ(subject.s.ReplaceRange(0, 0, NullArgument().s), VEL::StatusFailure);
        subject.ExpectUnchanged();
        EXPECT_EQ(subject.s.ReplaceRange(0, static_cast<int>(text.size()), NullArgument().s), VEL::StatusFailure);
        subject.ExpectUnchanged();
        EXPECT_EQ(subject.s.Insert(0, NullArgument().s), VEL::StatusFailure);
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeReplaceRange, ByTheStringItselfOrAnotherHandleOfItsBlock) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int units = static_cast<int>(text.size());
        for (const int start : Positions(units)) {
            for (const int end : Positions(units)) {
                if (TheState() == State::Null || start < 0 || start > end || end > units) {
                    continue;
                }
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " from " << start << " to " << end);
                StringSubject itself(TheState(), text);
                EXPECT_EQ(itself.s.ReplaceRange(start, end, itself.s), 0);
                ExpectReplaced(itself, Replaced(text, start, end, text));
                StringSubject subject(TheState(), text);
                const String copy(subject.s);
                const Picture before{Alias(copy)};
                EXPECT_EQ(subject.s.ReplaceRange(start, end, copy), 0);
                EXPECT_EQ(TextOf(Alias(subject.s)), Replaced(text, start, end, text));
                EXPECT_EQ(Picture(Alias(copy)), before);
                ExpectTheEmptyBlockIntact();
            }
        }
    }
}

// The block has room for the result, so it is written while it is read.
TEST_P(ThreadSafeReplaceRange, ByTheStringItselfInPlace) {
    for (const std::u16string& text : TextsFor(State::Wide)) {
        const int units = static_cast<int>(text.size());
        for (const int start : Positions(units)) {
            for (const int end : Positions(units)) {
                if (start < 0 || start > end || end > units) {
                    continue;
                }
                String s = Make<String>(text, true);
                s.SetCapacity(2 * units + 10);
                const Block block = StringAccess::BlockOf(s);
                EXPECT_EQ(s.ReplaceRange(start, end, s), 0);
                EXPECT_EQ(StringAccess::BlockOf(s), block);
                EXPECT_EQ(TextOf(Alias(s)), Replaced(text, start, end, text));
            }
        }
    }
}

TEST_P(ThreadSafeReplaceRange, InsertsInFrontOfAPosition) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int units = static_cast<int>(text.size());
        for (const int pos : Positions(units)) {
            for (const std::u16string& with : Insertions) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " at " << pos);
                for (const bool isWide : {false, true}) {
                    StringSubject subject(TheState(), text);
                    const Argument argument(Make<String>(with, isWide));
                    const int result = subject.s.Insert(pos, argument.s);
                    if (TheState() == State::Null || pos < 0 || pos > units) {
                        EXPECT_EQ(result, VEL::StatusFailure);
                        subject.ExpectUnchanged();
                    } else {
                        EXPECT_EQ(result, 0);
                        ExpectReplaced(subject, Replaced(text, pos, pos, with));
                    }
                }
                StringSubject itself(TheState(), text);
                if (itself.s.Insert(pos, itself.s) == 0) {
                    ExpectReplaced(itself, Replaced(text, pos, pos, text));
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeReplaceRange, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeReplaceRangeStated, AnswersWhetherTheRangeWasWithin) {
    String s("abcd");
    EXPECT_EQ(s.ReplaceRange(1, 3, String("x")), 0);
    EXPECT_STREQ(s.ConvertToChar(), "axd");
    EXPECT_EQ(static_cast<unsigned int>(s.ReplaceRange(1, 4, String("y"))), 0x80004005u);
    EXPECT_STREQ(s.ConvertToChar(), "axd");
}

// Parts that are inserted.

class ThreadSafeInsertPart : public InAllStates {
protected:
    struct Call {
        std::u16string text;
        std::u16string with;
        bool isArgumentWide;
        int pos;
        int start;
        int end;
    };

    void ExpectInserted(const Call& call) const {
        SCOPED_TRACE(testing::Message() << UTF8Of(call.text) << " at " << call.pos << " part " << call.start << " to "
                                        << call.end << " of " << UTF8Of(call.with) << call.isArgumentWide);
        StringSubject subject(TheState(), call.text);
        const Argument argument(Make<String>(call.with, call.isArgumentWide));
        const int length = HasText(TheState()) ? subject.BlockBefore()->_length : 0;
        const int result = subject.s.Insert(call.pos, argument.s, call.start, call.end);
        const bool isPartWithin =
            call.start >= 0 && call.start < call.end && call.end <= Limit(call.with, call.isArgumentWide);
        if (TheState() == State::Null || !isPartWithin || call.pos < 0 || call.pos > length) {
            EXPECT_EQ(result, VEL::StatusFailure);
            subject.ExpectUnchanged();
            return;
        }
        if (call.pos == length) {
            StringSubject appended(TheState(), call.text);
            appended.s.Append(argument.s, call.start, call.end);
            EXPECT_EQ(TextOf(Alias(subject.s)), TextOf(Alias(appended.s)));
            EXPECT_EQ(subject.Now()->_flags, appended.Now()->_flags);
            EXPECT_EQ(result, IsOnTheEmptyBlock(subject.s) ? VEL::StatusFailure : 0);
            subject.ExpectOthersUntouched();
            return;
        }
        EXPECT_EQ(result, 0);
        // Within the bytes and beyond the units there is no such part, and no such position.
        const bool isPart = call.end <= static_cast<int>(call.with.size());
        if (call.pos <= static_cast<int>(call.text.size())) {
            ExpectReplaced(subject, Replaced(call.text, call.pos, call.pos,
                                             isPart ? Cut(call.with, call.start, call.end) : std::u16string()));
        } else {
            subject.ExpectTextUnchanged();
        }
    }
};

TEST_P(ThreadSafeInsertPart, FromStartUpToEnd) {
    const std::u16string with = u"x\u00e9yz";
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const bool isArgumentWide : {false, true}) {
            const int limit = Limit(with, isArgumentWide);
            for (const int pos : Positions(Limit(text, IsWide(TheState())))) {
                for (const int start : Positions(limit)) {
                    for (const int end : Positions(limit)) {
                        ExpectInserted({text, with, isArgumentWide, pos, start, end});
                    }
                }
            }
        }
    }
}

TEST_P(ThreadSafeInsertPart, OfNothingOrANullHandleFails) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        EXPECT_EQ(subject.s.Insert(0, NullArgument().s, 0, 0), VEL::StatusFailure);
        EXPECT_EQ(subject.s.Insert(0, NullArgument().s, 0, 1), VEL::StatusFailure);
        EXPECT_EQ(subject.s.Insert(0, NarrowArgument(u"").s, 0, 0), VEL::StatusFailure);
        EXPECT_EQ(subject.s.Insert(0, WideArgument(u"").s, 0, 1), VEL::StatusFailure);
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeInsertPart, OfTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int units = static_cast<int>(text.size());
        for (int pos = 0; pos < units; ++pos) {
            StringSubject subject(TheState(), text);
            EXPECT_EQ(subject.s.Insert(pos, subject.s, units / 2, units), 0);
            ExpectReplaced(subject, Replaced(text, pos, pos, Cut(text, units / 2, units)));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeInsertPart, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeInsertPartStated, AppendsAtTheEndAndFailsBeyond) {
    String s("abcd");
    EXPECT_EQ(s.Insert(4, String("xyz"), 1, 2), 0);
    EXPECT_STREQ(s.ConvertToChar(), "abcdy");
    String beyond("abcd");
    EXPECT_EQ(static_cast<unsigned int>(beyond.Insert(5, String("xyz"), 0, 1)), 0x80004005u);
    EXPECT_STREQ(beyond.ConvertToChar(), "abcd");
}

// Deliberate: the position is judged by the bytes of a narrow string, and is one of units for whoever writes.
TEST(ThreadSafeInsertPartStated, BetweenTheUnitsAndTheBytesDoesNothingAndSucceeds) {
    String s = Make<String>(u"\u00e4\u00f6\u00fc", false);
    const Block block = StringAccess::BlockOf(s);
    for (const int pos : {4, 5}) {
        EXPECT_EQ(s.Insert(pos, String("xyz"), 0, 1), 0);
        EXPECT_EQ(StringAccess::BlockOf(s), block);
        EXPECT_EQ(BytesOf(s), "\u00e4\u00f6\u00fc");
    }
    EXPECT_EQ(s.Insert(7, String("xyz"), 0, 1), VEL::StatusFailure);
    EXPECT_EQ(BytesOf(s), "\u00e4\u00f6\u00fc");
}

// Append of one.

class ThreadSafeAppend : public InAllStates {};

TEST_P(ThreadSafeAppend, OfOneGrowsByHalfAndIsNarrowOnlyWhenBothAre) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const std::u16string& appendix : {std::u16string(u"x\u00e9"), std::u16string(70, u'w')}) {
            for (const bool isArgumentWide : {false, true}) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " + " << UTF8Of(appendix) << isArgumentWide);
                StringSubject subject(TheState(), text);
                const Argument argument(Make<String>(appendix, isArgumentWide));
                EXPECT_EQ(&subject.s.Append(argument.s), &subject.s);
                if (TheState() == State::Null) {
                    subject.ExpectUnchanged();
                    continue;
                }
                const bool isWide = IsWide(TheState()) || isArgumentWide;
                const Block block = subject.Now();
                const int old = subject.CapacityBefore();
                ExpectFreshlyWritten(Alias(subject.s), isWide);
                if (isWide != IsWide(TheState())) {
                    EXPECT_EQ(block->_capacity, CapacityFor(true, block->_length));
                } else if (!IsShared(TheState()) && old > block->_length) {
                    EXPECT_EQ(block, subject.BlockBefore());
                } else {
                    const int grown = old > block->_length ? 0 : static_cast<int>(old * 1.5);
                    EXPECT_EQ(block->_capacity, CapacityFor(isWide, std::max(block->_length, grown)));
                }
                ExpectReadsAs(Alias(subject.s), text + appendix);
                subject.ExpectOthersUntouched();
            }
        }
    }
}

TEST_P(ThreadSafeAppend, OfANullHandleChangesNothing) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        const String null = NullString<String>();
        EXPECT_EQ(&subject.s.Append(null), &subject.s);
        subject.ExpectUnchanged();
        subject.s.Append(null, null);
        subject.ExpectUnchanged();
        subject.s.Append(null, null, null);
        subject.ExpectUnchanged();
        subject.s.Append(null, 0, 1);
        subject.ExpectUnchanged();
    }
}

TEST_P(ThreadSafeAppend, OfTheStringItselfAndOfAnotherHandleOfItsBlock) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject itself(TheState(), text);
        itself.s.Append(itself.s);
        EXPECT_EQ(TextOf(Alias(itself.s)), text + text);
        itself.s.Append(itself.s);
        EXPECT_EQ(TextOf(Alias(itself.s)), text + text + text + text);
        itself.ExpectOthersUntouched();
        StringSubject subject(TheState(), text);
        const String copy(subject.s);
        const Picture before{Alias(copy)};
        subject.s.Append(copy);
        EXPECT_EQ(TextOf(Alias(subject.s)), text + text);
        EXPECT_EQ(Picture(Alias(copy)), before);
        ExpectTheEmptyBlockIntact();
    }
}

// Append of several.

namespace {

/// After an append of several: the target's representation stays, and one block is as large as it must be.
void ExpectAppendedAtOnce(const StringSubject& subject, const std::u16string& text,
                          const std::vector<std::u16string>& appended) {
    const bool isWide = IsWide(subject.Start());
    std::u16string units = text;
    std::string bytes = NarrowForm(text);
    for (const std::u16string& piece : appended) {
        units += piece;
        bytes += NarrowForm(piece);
    }
    const int length = static_cast<int>(isWide ? units.size() : bytes.size());
    const int before = subject.Start() == State::Null ? 0
                       : isWide                       ? static_cast<int>(text.size())
                                                      : static_cast<int>(NarrowForm(text).size());
    if (subject.Start() == State::Null || length == before) {
        subject.ExpectUnchanged();
        return;
    }
    ExpectFreshlyWritten(Alias(subject.s), isWide);
    if (!IsShared(subject.Start()) && subject.CapacityBefore() > length) {
        EXPECT_EQ(subject.Now(), subject.BlockBefore());
    } else {
        EXPECT_NE(subject.Now(), subject.BlockBefore());
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(isWide, length));
    }
    if (isWide) {
        EXPECT_EQ(StringBlocks::Wide(subject.Now()), units);
    } else {
        EXPECT_EQ(BytesOf(subject.s), bytes);
    }
    subject.ExpectOthersUntouched();
}

struct Piece {
    std::u16string text;
    bool isWide;
};

const Piece Pieces[] = {{u"", false},          {u"", true},
                        {u"x", false},         {u"y\u00e9", false},
                        {u"y\u00e9", true},    {u"\u20ac\U0001F600", true},
                        {u"0123456789", true}, {u"01234567890123456789012345678901234567890123456789", false}};

} // namespace

TEST_P(ThreadSafeAppend, OfTwoFollowsTheTargetsRepresentation) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const Piece& a : Pieces) {
            for (const Piece& b : Pieces) {
                SCOPED_TRACE(testing::Message() << UTF8Of(text) << " + " << UTF8Of(a.text) << " + " << UTF8Of(b.text));
                StringSubject subject(TheState(), text);
                const Argument first(Make<String>(a.text, a.isWide));
                const Argument second(Make<String>(b.text, b.isWide));
                EXPECT_EQ(&subject.s.Append(first.s, second.s), &subject.s);
                ExpectAppendedAtOnce(subject, text, {a.text, b.text});
            }
        }
    }
}

TEST_P(ThreadSafeAppend, OfThreeFollowsTheTargetsRepresentation) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const Piece& a : Pieces) {
            for (const Piece& b : Pieces) {
                for (const Piece& c : Pieces) {
                    StringSubject subject(TheState(), text);
                    const Argument first(Make<String>(a.text, a.isWide));
                    const Argument second(Make<String>(b.text, b.isWide));
                    const Argument third(Make<String>(c.text, c.isWide));
                    EXPECT_EQ(&subject.s.Append(first.s, second.s, third.s), &subject.s);
                    ExpectAppendedAtOnce(subject, text, {a.text, b.text, c.text});
                }
            }
        }
    }
}

TEST_P(ThreadSafeAppend, OfSeveralPassesOverNullHandles) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const String null = NullString<String>();
        const Argument argument = WideArgument(u"x\u00e9");
        for (int place = 0; place < 3; ++place) {
            StringSubject two(TheState(), text);
            two.s.Append(place == 0 ? argument.s : null, place == 0 ? null : argument.s);
            ExpectAppendedAtOnce(two, text, {u"x\u00e9"});
            StringSubject three(TheState(), text);
            three.s.Append(place == 0 ? argument.s : null, place == 1 ? argument.s : null,
                           place == 2 ? argument.s : null);
            ExpectAppendedAtOnce(three, text, {u"x\u00e9"});
        }
    }
}

TEST_P(ThreadSafeAppend, OfSeveralTakesTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject twice(TheState(), text);
        twice.s.Append(twice.s, twice.s);
        ExpectAppendedAtOnce(twice, text, {text, text});
        StringSubject thrice(TheState(), text);
        thrice.s.Append(thrice.s, thrice.s, thrice.s);
        ExpectAppendedAtOnce(thrice, text, {text, text, text});
        const Argument argument = WideArgument(u"x\u00e9");
        for (int place = 0; place < 3; ++place) {
            StringSubject mixed(TheState(), text);
            mixed.s.Append(place == 0 ? mixed.s : argument.s, place == 1 ? mixed.s : argument.s,
                           place == 2 ? mixed.s : argument.s);
            std::vector<std::u16string> pieces(3, u"x\u00e9");
            pieces[static_cast<std::size_t>(place)] = text;
            ExpectAppendedAtOnce(mixed, text, pieces);
        }
    }
}

TEST_P(ThreadSafeAppend, OfSeveralInPlaceTakesTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        subject.s.SetCapacity(1000);
        const Block block = subject.Now();
        subject.s.Append(subject.s, subject.s, subject.s);
        EXPECT_EQ(subject.Now(), block);
        EXPECT_EQ(TextOf(Alias(subject.s)), text + text + text + text);
        subject.ExpectOthersUntouched();
    }
}

TEST_P(ThreadSafeAppend, OfSeveralTakesOtherHandlesOfTheBlock) {
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        const String copy(subject.s);
        const Picture before{Alias(copy)};
        subject.s.Append(copy, subject.s, copy);
        EXPECT_EQ(TextOf(Alias(subject.s)), text + text + text + text);
        EXPECT_EQ(Picture(Alias(copy)), before);
        ExpectTheEmptyBlockIntact();
    }
}

// Append of a part.

TEST_P(ThreadSafeAppend, OfAPartCountsUnitsOrTheBytesOfANarrowTarget) {
    const std::u16string source = u"gr\u00fcn \u00e9";
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const bool isArgumentWide : {false, true}) {
            const int limit = Limit(source, isArgumentWide);
            for (const int start : Positions(limit)) {
                for (const int end : Positions(limit)) {
                    SCOPED_TRACE(testing::Message()
                                 << UTF8Of(text) << " + " << start << " to " << end << isArgumentWide);
                    StringSubject subject(TheState(), text);
                    const Argument argument(Make<String>(source, isArgumentWide));
                    EXPECT_EQ(&subject.s.Append(argument.s, start, end), &subject.s);
                    const bool isEmptyRange = start < 0 || start >= end || end > limit;
                    if (TheState() == State::Null || isEmptyRange) {
                        subject.ExpectUnchanged();
                    } else if (!IsWide(TheState()) && TheState() != State::EmptyBlock) {
                        ExpectFreshlyWritten(Alias(subject.s), false);
                        EXPECT_EQ(BytesOf(subject.s),
                                  NarrowForm(text) + NarrowForm(source).substr(static_cast<std::size_t>(start),
                                                                               static_cast<std::size_t>(end - start)));
                    } else if (end <= static_cast<int>(source.size())) {
                        ExpectFreshlyWritten(Alias(subject.s), true);
                        EXPECT_EQ(TextOf(Alias(subject.s)), text + Cut(source, start, end));
                    } else {
                        // Within the bytes and beyond the units there is nothing to append.
                        subject.ExpectTextUnchanged();
                    }
                    subject.ExpectOthersUntouched();
                }
            }
        }
    }
}

TEST_P(ThreadSafeAppend, OfAPartOfTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const bool hasRoom : {false, true}) {
            StringSubject subject(TheState(), text);
            if (hasRoom) {
                subject.s.SetCapacity(1000);
            }
            const int limit = Limit(text, IsWide(TheState()));
            subject.s.Append(subject.s, limit / 2, limit);
            if (!HasText(TheState())) {
                EXPECT_EQ(TextOf(Alias(subject.s)), u"");
            } else if (IsWide(TheState())) {
                EXPECT_EQ(TextOf(Alias(subject.s)), text + Cut(text, limit / 2, limit));
            } else {
                EXPECT_EQ(BytesOf(subject.s),
                          NarrowForm(text) + NarrowForm(text).substr(static_cast<std::size_t>(limit / 2)));
            }
            subject.ExpectOthersUntouched();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeAppend, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(ThreadSafeAppendStated, KeepsANarrowTargetNarrow) {
    String s("a");
    s.Append(Make<String>(u"\u20ac", true), Make<String>(u"b", true));
    EXPECT_EQ(BytesOf(s), "a\u20acb");
    String empty;
    empty.Append(Make<String>(u"\u20ac", true), Make<String>(u"b", true));
    EXPECT_EQ(BytesOf(empty), "\u20acb");
}

TEST(ThreadSafeAppendStated, OfAPartToTheEmptyStringIsThePart) {
    String s;
    s.Append(String("abc"), 1, 3);
    EXPECT_STREQ(s.ConvertToChar(), "bc");
    EXPECT_TRUE(StringAccess::BlockOf(s)->IsWide());
}

// Room.

class ThreadSafeCapacity : public InAllStates {};

TEST_P(ThreadSafeCapacity, IsMadeInTheMainRepresentation) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const StringSubject model(TheState(), text);
        const int length = TheState() == State::Null ? 0 : model.BlockBefore()->_length;
        const int capacity = model.CapacityBefore();
        for (const int n : {1, length - 1, length, length + 1, capacity - 1, capacity, capacity + 1, 1000}) {
            if (n < 1) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << " for " << n);
            StringSubject subject(TheState(), text);
            subject.s.SetCapacity(n);
            if (TheState() == State::Null || (!IsShared(TheState()) && capacity > n)) {
                subject.ExpectUnchanged();
                continue;
            }
            const bool isWide = IsWide(TheState());
            ExpectFreshlyWritten(Alias(subject.s), isWide);
            EXPECT_NE(subject.Now(), subject.BlockBefore());
            EXPECT_EQ(subject.Now()->_capacity, CapacityFor(isWide, n));
            const auto kept = static_cast<std::size_t>(std::min(length, n));
            if (isWide) {
                EXPECT_EQ(StringBlocks::Wide(subject.Now()), text.substr(0, kept));
            } else {
                EXPECT_EQ(BytesOf(subject.s), NarrowForm(text).substr(0, kept));
            }
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(ThreadSafeCapacity, BelowOneEmptiesTheString) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const int n : {0, -1, INT_MIN}) {
            StringSubject subject(TheState(), text);
            subject.s.SetCapacity(n);
            if (TheState() == State::Null) {
                subject.ExpectUnchanged();
            } else {
                EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
                subject.ExpectOthersUntouched();
            }
        }
    }
}

TEST_P(ThreadSafeCapacity, TakesWhatIsAppendedWithoutAnotherBlock) {
    if (TheState() == State::Null) {
        return;
    }
    for (const std::u16string& text : TextsFor(TheState())) {
        StringSubject subject(TheState(), text);
        subject.s.SetCapacity(500);
        const Block block = subject.Now();
        const Argument argument(Make<String>(u"xyz", IsWide(TheState())));
        std::u16string expected = text;
        for (int i = 0; i < 50; ++i) {
            subject.s.Append(argument.s);
            expected += u"xyz";
        }
        EXPECT_EQ(subject.Now(), block);
        EXPECT_EQ(TextOf(Alias(subject.s)), expected);
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, ThreadSafeCapacity, EnvironmentsAndStates(), NameOfEnvironmentAndState);
