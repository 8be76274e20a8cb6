/// @file
/// Narrow strings as they are made and read: repetition, indexes, comparison, searches, parts and stripping, from every
/// state. Whatever is read first is turned narrow first.

#include "HeapLog.h"
#include "StringSubjects.h"
#include "VELSysStatus.h"

#include <climits>
#include <cstring>
#include <gmock/gmock.h>
#include <utility>

namespace {

using namespace StringStates;
using StringEnvironment::OneToOne;
using StringEnvironment::UTF8;

using NarrowSubject = SubjectOf<QORString>;

constexpr const char* NoText = nullptr;

int Sign(int value) {
    return (value > 0) - (value < 0);
}

/// A narrow string with these bytes, whatever they are.
QORString Bytes(const std::string& bytes) {
    return StringOn<QORString>(NewNarrow(bytes));
}

/// Other texts as narrow and as wide strings, and what they read as.
struct Other {
    std::string bytes;
    bool isWide;
    QORString Make() const {
        return isWide ? StringOn<QORString>(NewWide({bytes.begin(), bytes.end()})) : Bytes(bytes);
    }
};

std::vector<Other> Others(const std::string& text) {
    std::vector<Other> others;
    for (const char* other : {"", "a", "b", "ab", "abc", "abcd", "ABC", "aBc", "abd", "The"}) {
        others.push_back({other, false});
        others.push_back({other, true});
    }
    others.push_back({text, false});
    others.push_back({text + "x", false});
    others.push_back({text.substr(0, text.size() / 2), false});
    others.push_back({"\x7f\x80\xff", false});
    return others;
}

/// After a string was an argument: a wide one stands in a narrow block, a narrow one where it stood.
void ExpectArgumentNormalised(const QORString& argument, const Other& other) {
    EXPECT_FALSE(StringAccess::BlockOf(argument)->IsWide());
    EXPECT_EQ(BytesOf(argument), other.bytes);
}

} // namespace

// Repetition.

TEST(RepeatedByte, StandsSoManyTimes) {
    for (const char c : {'a', ' ', '\0', '\x01', '\xff'}) {
        for (const unsigned long n : {1ul, 2ul, 5ul, 100ul, 5000ul}) {
            const QORString s(QORChar(c), n);
            EXPECT_EQ(BytesOf(s), std::string(n, c)) << "no check takes place";
            ExpectFreshlyWritten(Alias(s), false);
        }
    }
}

TEST(RepeatedByte, NoTimesIsEmpty) {
    EXPECT_TRUE(IsOnTheEmptyBlock(QORString(QORChar('a'), 0)));
    ExpectTheEmptyBlockIntact();
}

TEST(RepeatedByte, BeyondAllLengthsIsEmpty) {
    for (const unsigned long n : {1ul << 31, 1ul << 32, (1ul << 32) + 5, 1ul << 63, ~0ul}) {
        EXPECT_TRUE(QORString(QORChar('a'), n).IsEmpty()) << n;
    }
}

class NarrowRepetition : public InAllStates {};

TEST_P(NarrowRepetition, OfAStringStandsSoManyTimes) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const unsigned long n : {0ul, 1ul, 2ul, 3ul, 10ul}) {
            NarrowSubject subject(TheState(), text);
            const QORString result(subject.s, n);
            std::string expected;
            for (unsigned long i = 0; i < n; ++i) {
                expected += NarrowForm(text);
            }
            EXPECT_STREQ(result.ConvertToChar(), expected.c_str());
            EXPECT_EQ(VEL::GetMainRepEncoding(result), 1);
            if (n == 0) {
                EXPECT_TRUE(IsOnTheEmptyBlock(result));
            } else if (n > 1 && !text.empty()) {
                ExpectFreshlyWritten(Alias(result), false);
            }
        }
        NarrowSubject subject(TheState(), text);
        const QORString shared(subject.s, 1);
        // The block that is shared is the narrow one on which the string stands from then on.
        EXPECT_EQ(StringAccess::BlockOf(shared), subject.Now());
        EXPECT_EQ(BytesOf(subject.s), NarrowForm(text));
        if (TheState() == State::Narrow) {
            EXPECT_EQ(subject.Now(), subject.BlockBefore());
        }
        if (subject.Now()->IsTheEmptyBlock()) {
            ExpectTheEmptyBlockIntact();
        } else {
            EXPECT_EQ(subject.Now()->_refCount, TheState() == State::NarrowShared ? 3 : 2);
        }
    }
}

TEST_P(NarrowRepetition, OfAStringBeyondAllLengthsIsEmpty) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const unsigned long length = std::max<std::size_t>(NarrowForm(text).size(), 1);
        // The length just beyond what a length can be, around what 32 bits hold, and around what 64 hold.
        for (const unsigned long n : {(1ul << 31) / length + 1, (1ul << 32) / length + 1, 1ul << 32, ~0ul / length + 1,
                                      ~0ul / length, 1ul << 63, ~0ul}) {
            NarrowSubject subject(TheState(), text);
            EXPECT_TRUE(QORString(subject.s, n).IsEmpty()) << n;
            EXPECT_EQ(subject.s.Length(), static_cast<int>(NarrowForm(text).size()));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowRepetition, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// UTF-8 without a check.

class UncheckedUTF8 : public InAllStates {};

TEST_P(UncheckedUTF8, IsStoredAsItIs) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const std::string& bytes :
             {std::string("gr\u00fcn"), std::string("\x01\x80\xff"), std::string(200, 'x')}) {
            std::string copy = bytes;
            NarrowSubject subject(TheState(), text);
            testing::internal::CaptureStdout();
            EXPECT_EQ(QORSysUTF8Str(&subject.s, copy.data()), 0);
            EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
            ExpectBytes(subject, bytes);
        }
    }
}

TEST_P(UncheckedUTF8, WithoutBytesEmptiesTheStringAndFails) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        NarrowSubject subject(TheState(), text);
        char nothing[] = "";
        EXPECT_EQ(QORSysUTF8Str(&subject.s, nothing), VEL::StatusFailure);
        ExpectBytes(subject, "");
    }
}

TEST_P(UncheckedUTF8, NullChangesNothing) {
    char bytes[] = "abc";
    EXPECT_EQ(QORSysUTF8Str(nullptr, bytes), 0);
    EXPECT_EQ(QORSysUTF8Str(nullptr, nullptr), 0);
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        NarrowSubject subject(TheState(), text);
        EXPECT_EQ(QORSysUTF8Str(&subject.s, nullptr), 0);
        subject.s.Length();
        ExpectOnlyNormalised(subject, text);
    }
}

INSTANTIATE_TEST_SUITE_P(States, UncheckedUTF8, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(UncheckedUTF8Stated, MayComeOutOfTheStringItself) {
    QORString s("abcdef");
    EXPECT_EQ(QORSysUTF8Str(&s, s.CastToCharPtr() + 2), 0);
    EXPECT_EQ(BytesOf(s), "cdef");
}

// Large enough that its memory goes when the string leaves it.
TEST(UncheckedUTF8Stated, MayComeOutOfALargeStringItself) {
    std::string text;
    for (int i = 0; i < 300000; ++i) {
        text += static_cast<char>('a' + i % 26);
    }
    QORString s = Bytes(text);
    EXPECT_EQ(QORSysUTF8Str(&s, s.CastToCharPtr() + 2), 0);
    EXPECT_TRUE(BytesOf(s) == text.substr(2));
    EXPECT_EQ(static_cast<unsigned int>(QORSysUTF8Str(&s, s.CastToCharPtr() + s.Length())), 0x80004005u);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    QORString small("abc");
    EXPECT_EQ(static_cast<unsigned int>(QORSysUTF8Str(&small, small.CastToCharPtr() + 3)), 0x80004005u);
    EXPECT_TRUE(IsOnTheEmptyBlock(small));
}

// Reading.

class NarrowReading : public InAllStates {};

TEST_P(NarrowReading, LengthsAndText) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const NarrowSubject subject(TheState(), text);
        EXPECT_EQ(subject.s.IsEmpty(), bytes.empty());
        ExpectOnlyNormalised(subject, text);
        EXPECT_EQ(subject.s.GetLengthInChar(), static_cast<int>(bytes.size()));
        EXPECT_EQ(subject.s.GetLengthInByte(), static_cast<int>(bytes.size()));
        EXPECT_EQ(subject.s.Length(), static_cast<int>(bytes.size()));
        EXPECT_EQ(subject.s.length(), static_cast<int>(bytes.size()));
        EXPECT_EQ(subject.s.ConvertToChar(), bytes);
        ExpectOnlyNormalised(subject, text);
    }
}

TEST_P(NarrowReading, BytesByIndex) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const int length = static_cast<int>(bytes.size());
        for (int i = -2; i < length + 3; ++i) {
            const NarrowSubject subject(TheState(), text);
            const char expected = i >= 0 && i < length ? bytes[static_cast<std::size_t>(i)] : '\0';
            EXPECT_EQ(static_cast<char>(subject.s[i]), expected);
            ExpectOnlyNormalised(subject, text);
        }
        for (const int i : {INT_MIN, INT_MAX}) {
            const NarrowSubject subject(TheState(), text);
            EXPECT_EQ(static_cast<char>(subject.s[i]), '\0');
            ExpectOnlyNormalised(subject, text);
        }
    }
}

TEST_P(NarrowReading, HashOfTheBytes) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const NarrowSubject subject(TheState(), text);
        const std::string bytes = NarrowForm(text);
        EXPECT_EQ(subject.s.ComputeHashKey(), Bytes(bytes).hash());
        EXPECT_EQ(subject.s.hash(), subject.s.ComputeHashKey());
        ExpectOnlyNormalised(subject, text);
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowReading, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// The pointer to write through.

class NarrowPointer : public InAllStates {
protected:
    static constexpr char* (QORString::*Ways[])() = {&QORString::CastToCharPtr, &QORString::getUnicodeString,
                                                     &QORString::getMBCSString};
};

TEST_P(NarrowPointer, GivesTheNarrowTextOfABlockOfItsOwn) {
    for (const auto way : Ways) {
        for (const std::u16string& text : NarrowTextsFor(TheState())) {
            // The reassignment of a shared text checks it once more.
            const bool isPlain = std::ranges::all_of(text, [](char16_t unit) { return unit < 0x7F; });
            if (IsShared(TheState()) && !isPlain && !IsUTF8Environment()) {
                continue;
            }
            NarrowSubject subject(TheState(), text);
            char* const pointer = (subject.s.*way)();
            const std::string bytes = NarrowForm(text);
            EXPECT_EQ(std::string(pointer), bytes);
            if (TheState() == State::Narrow || TheState() == State::NarrowOfNoLength) {
                EXPECT_EQ(subject.Now(), subject.BlockBefore());
                EXPECT_EQ(pointer, subject.Now()->Text());
            } else if (HasText(TheState())) {
                EXPECT_NE(subject.Now(), subject.BlockBefore());
                EXPECT_EQ(subject.Now()->_refCount, 1);
                EXPECT_EQ(pointer, subject.Now()->Text());
                subject.ExpectOthersUntouched();
            } else {
                EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
                ExpectTheEmptyBlockIntact();
            }
            if (!bytes.empty()) {
                pointer[0] = 'Q';
                EXPECT_EQ(subject.s.ConvertToChar(), "Q" + bytes.substr(1));
                subject.ExpectOthersUntouched();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowPointer, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowPointerStated, ChangesDoNotReachTheOtherString) {
    QORString s("abc");
    const QORString other(s);
    s.CastToCharPtr()[1] = 'x';
    EXPECT_STREQ(s.ConvertToChar(), "axc");
    EXPECT_STREQ(other.ConvertToChar(), "abc");
}

TEST(NarrowPointerStated, DropsTheViewAndTheHash) {
    QORString s("abc");
    const Block block = StringAccess::BlockOf(s);
    block->_GetUTF16View();
    block->_GetHash();
    ASSERT_NE(block->_secondView, nullptr);
    ASSERT_FALSE(IsStale(block));
    s.CastToCharPtr();
    EXPECT_EQ(StringAccess::BlockOf(s), block);
    ExpectFreshlyWritten(Alias(s), false);
}

TEST(NarrowPointerStated, OfASharedBlockWithoutTextIsEmpty) {
    QORString s = StringOn<QORString>(NewNarrow(""));
    const QORString other(s);
    EXPECT_STREQ(s.CastToCharPtr(), "");
    EXPECT_NE(StringAccess::BlockOf(s), StringAccess::BlockOf(other));
    ExpectTheEmptyBlockIntact();
}

// Comparison.

class NarrowComparison : public InAllStates {};

TEST_P(NarrowComparison, IsThatOfStrcmp) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const Other& other : Others(bytes)) {
            const int expected = Sign(std::strcmp(bytes.c_str(), other.bytes.c_str()));
            const NarrowSubject subject(TheState(), text);
            const QORString s = other.Make();
            EXPECT_EQ(Sign(subject.s.Compare(s)), expected);
            ExpectOnlyNormalised(subject, text);
            ExpectArgumentNormalised(s, other);
            const char* const chars = other.bytes.c_str();
            const NarrowSubject fresh(TheState(), text);
            EXPECT_EQ(Sign(fresh.s.Compare(chars)), expected);
            ExpectOnlyNormalised(fresh, text);
            EXPECT_EQ(Sign(NarrowSubject(TheState(), text).s.compare(other.Make())), expected);
            EXPECT_EQ(Sign(NarrowSubject(TheState(), text).s.compare(chars)), expected);
            EXPECT_EQ(Sign(other.Make().Compare(NarrowSubject(TheState(), text).s)), -expected);
        }
    }
}

TEST_P(NarrowComparison, OperatorsTellItsSign) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const Other& other : Others(bytes)) {
            SCOPED_TRACE(bytes + " / " + other.bytes);
            const int order = std::strcmp(bytes.c_str(), other.bytes.c_str());
            const char* const chars = other.bytes.c_str();
            const auto subject = [&] { return NarrowSubject(TheState(), text); };
            EXPECT_EQ(subject().s == other.Make(), order == 0);
            EXPECT_EQ(subject().s != other.Make(), order != 0);
            EXPECT_EQ(subject().s < other.Make(), order < 0);
            EXPECT_EQ(subject().s <= other.Make(), order <= 0);
            EXPECT_EQ(subject().s > other.Make(), order > 0);
            EXPECT_EQ(subject().s >= other.Make(), order >= 0);
            EXPECT_EQ(subject().s == chars, order == 0);
            EXPECT_EQ(subject().s != chars, order != 0);
            EXPECT_EQ(subject().s < chars, order < 0);
            EXPECT_EQ(subject().s <= chars, order <= 0);
            EXPECT_EQ(subject().s > chars, order > 0);
            EXPECT_EQ(subject().s >= chars, order >= 0);
        }
    }
}

TEST_P(NarrowComparison, WithANullPointerIsTheFirstByte) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const int first = static_cast<signed char>(bytes.c_str()[0]);
        const NarrowSubject subject(TheState(), text);
        EXPECT_EQ(subject.s.Compare(NoText), first);
        ExpectOnlyNormalised(subject, text);
        EXPECT_EQ(subject.s.compare(NoText), first);
        EXPECT_EQ(subject.s == NoText, first == 0);
        EXPECT_EQ(subject.s != NoText, first != 0);
        EXPECT_EQ(subject.s < NoText, first < 0);
        EXPECT_EQ(subject.s <= NoText, first <= 0);
        EXPECT_EQ(subject.s > NoText, first > 0);
        EXPECT_EQ(subject.s >= NoText, first >= 0);
    }
}

TEST_P(NarrowComparison, WithANullHandleIsWithNothing) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const NarrowSubject subject(TheState(), text);
        const QORString null = NullString<QORString>();
        EXPECT_EQ(Sign(subject.s.Compare(null)), text.empty() ? 0 : 1);
        EXPECT_TRUE(IsOnTheEmptyBlock(null)) << "repaired";
        EXPECT_EQ(subject.s.CompareByCase(NullString<QORString>()), text.empty() ? 1 : 0);
        EXPECT_EQ(subject.s == NullString<QORString>(), text.empty());
        EXPECT_EQ(subject.s.FindPosition(NullString<QORString>(), 0), 0);
        EXPECT_EQ(DebugBreaks(), 0);
        ExpectOnlyNormalised(subject, text);
    }
}

TEST_P(NarrowComparison, WithItself) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const NarrowSubject subject(TheState(), text);
        EXPECT_EQ(subject.s.Compare(subject.s), 0);
        EXPECT_EQ(subject.s.CompareByCase(subject.s), 1);
        EXPECT_TRUE(subject.s == subject.s);
        EXPECT_EQ(subject.s.FindPosition(subject.s, 0), 0);
        ExpectOnlyNormalised(subject, text);
    }
}

TEST_P(NarrowComparison, ByCaseToldByOneAndTwo) {
    const auto lower = [](std::string bytes) {
        for (char& byte : bytes) {
            byte = static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte);
        }
        return bytes;
    };
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (const Other& other : Others(bytes)) {
            SCOPED_TRACE(bytes + " / " + other.bytes);
            const int expected = bytes == other.bytes ? 1 : lower(bytes) == lower(other.bytes) ? 2 : 0;
            const NarrowSubject subject(TheState(), text);
            const QORString s = other.Make();
            EXPECT_EQ(subject.s.CompareByCase(s), expected);
            ExpectOnlyNormalised(subject, text);
            ExpectArgumentNormalised(s, other);
            EXPECT_EQ(subject.s.equal(s), expected);
            EXPECT_EQ(s.CompareByCase(subject.s), expected);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowComparison, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowComparisonStated, OneIsIdenticalAndTwoDiffersInCase) {
    EXPECT_EQ(QORString("ABC").CompareByCase(QORString("abc")), 2);
    EXPECT_EQ(QORString("abc").CompareByCase(QORString("abc")), 1);
    EXPECT_EQ(QORString("abc").CompareByCase(QORString("abcd")), 0);
    EXPECT_EQ(QORString("abc").CompareByCase(QORString("abd")), 0);
    EXPECT_EQ(QORString("").CompareByCase(QORString()), 1);
    EXPECT_EQ(QORString("").CompareByCase(QORString("a")), 0);
    EXPECT_EQ(QORString("abc").Compare(NoText), 'a');
    EXPECT_EQ(Bytes("\xe9").Compare(NoText), -23);
}

TEST(NarrowComparisonStated, LooksAtAllBytesByCaseAndAtThoseUpToAZeroOtherwise) {
    const QORString a = Bytes(std::string("a\0b", 3));
    const QORString b = Bytes(std::string("a\0c", 3));
    EXPECT_EQ(a.Compare(b), 0);
    EXPECT_TRUE(a == b);
    EXPECT_EQ(a.CompareByCase(b), 0);
    EXPECT_EQ(a.CompareByCase(Bytes(std::string("A\0B", 3))), 2);
}

// Searches.

class NarrowSearch : public InAllStates {};

TEST_P(NarrowSearch, FindsTheFirstAtOrBehindStart) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const int length = static_cast<int>(bytes.size());
        std::vector<Other> needles = Others(bytes);
        for (std::size_t i = 0; i < bytes.size(); i += 1 + bytes.size() / 6) {
            needles.push_back({bytes.substr(i, 1), false});
            needles.push_back({bytes.substr(i, 3), false});
            needles.push_back({bytes.substr(i), false});
        }
        for (const Other& needle : needles) {
            for (int start = -1; start <= length + 2; ++start) {
                const NarrowSubject subject(TheState(), text);
                const QORString what = needle.Make();
                int expected = -1;
                if (start >= 0 && start <= length) {
                    const std::size_t found = bytes.find(needle.bytes, static_cast<std::size_t>(start));
                    expected = found == std::string::npos ? -1 : static_cast<int>(found);
                }
                ASSERT_EQ(subject.s.FindPosition(what, start), expected)
                    << bytes << " / " << needle.bytes << " from " << start;
                ASSERT_EQ(subject.s.index(what, start), expected);
                ExpectOnlyNormalised(subject, text);
                ExpectArgumentNormalised(what, needle);
            }
            for (const int start : {INT_MIN, INT_MAX}) {
                const NarrowSubject subject(TheState(), text);
                EXPECT_EQ(subject.s.FindPosition(needle.Make(), start), -1);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowSearch, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowSearchStated, FindsNothingWhereItStarts) {
    const QORString s("abc");
    EXPECT_EQ(s.FindPosition(QORString(), 1), 1);
    EXPECT_EQ(s.FindPosition(QORString(), 3), 3);
    EXPECT_EQ(s.FindPosition(QORString(), 4), -1);
    EXPECT_EQ(QORString().FindPosition(QORString(), 0), 0);
}

TEST(NarrowSearchStated, GoesThroughZeroBytes) {
    const QORString s = Bytes(std::string("a\0b\0c", 5));
    EXPECT_EQ(s.FindPosition(QORString("c"), 0), 4);
    EXPECT_EQ(s.FindPosition(Bytes(std::string("b\0", 2)), 0), 2);
    EXPECT_EQ(s.FindPosition(Bytes(std::string("\0", 1)), 2), 3);
}

// Parts.

class NarrowParts : public InAllStates {};

TEST_P(NarrowParts, SubStringWithinIsANewBlock) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        for (std::size_t start = 0; start <= bytes.size(); ++start) {
            std::vector<std::size_t> counts;
            for (std::size_t count = 1; start + count < bytes.size(); count += 1 + bytes.size() / 10) {
                counts.push_back(count);
            }
            if (start < bytes.size()) {
                // The rest, which may be the whole string.
                counts.push_back(bytes.size() - start);
            }
            for (const std::size_t count : counts) {
                const NarrowSubject subject(TheState(), text);
                const QORString part = subject.s.SubString(start, count);
                EXPECT_EQ(BytesOf(part), bytes.substr(start, count));
                ExpectFreshlyWritten(Alias(part), false);
                ExpectOnlyNormalised(subject, text);
            }
        }
    }
}

// Deliberate: a range that makes no sense is the whole string.
TEST_P(NarrowParts, SubStringOutsideIsTheWholeString) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const std::string bytes = NarrowForm(text);
        const unsigned long length = bytes.size();
        const std::pair<unsigned long, unsigned long> ranges[] = {
            {0, 0},           {1, 0},          {length, 0},  {length + 1, 0}, {0, length + 1}, {length, 1},
            {1, length},      {length + 1, 1}, {~0ul, 1},    {1, ~0ul},       {~0ul, ~0ul},    {1ul << 63, 1ul << 63},
            {1ul << 32, 1ul}, {1, 1ul << 32},  {2, ~0ul - 1}};
        for (const auto& [start, count] : ranges) {
            const NarrowSubject subject(TheState(), text);
            const QORString whole = subject.s.SubString(start, count);
            EXPECT_EQ(BytesOf(whole), bytes) << start << " " << count;
            EXPECT_EQ(VEL::GetMainRepEncoding(whole), 1);
            EXPECT_EQ(BytesOf(subject.s), bytes);
            ExpectTheEmptyBlockIntact();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowParts, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowPartsStated, SubStringDoesNotClip) {
    EXPECT_STREQ(QORString("abc").SubString(1, 0).ConvertToChar(), "abc");
    EXPECT_STREQ(QORString("abc").SubString(2, 5).ConvertToChar(), "abc");
    EXPECT_STREQ(QORString("abc").SubString(1, 2).ConvertToChar(), "bc");
    EXPECT_STREQ(QORString("abc").SubString(2, 1).ConvertToChar(), "c");
}

// Stripping.

class NarrowStrip : public InAllStates {
protected:
    static std::string Stripped(std::string bytes, int mode, char c) {
        if (mode == 4) {
            std::erase(bytes, c);
            return bytes;
        }
        if ((mode & 1) != 0) {
            bytes.erase(0, std::min(bytes.find_first_not_of(c), bytes.size()));
        }
        if ((mode & 2) != 0) {
            bytes.erase(bytes.find_last_not_of(c) + 1);
        }
        return bytes;
    }
};

TEST_P(NarrowStrip, TakesBytesWhereTheModeSays) {
    std::vector<std::u16string> texts = NarrowTextsFor(TheState());
    if (HasText(TheState())) {
        texts.insert(texts.end(), {u"  a b  ", u" ", u"     ", u"aaa", u"aba", u"banana"});
    }
    for (const std::u16string& text : texts) {
        const std::string bytes = NarrowForm(text);
        for (const char c : {' ', 'a', 'n', bytes.empty() ? 'x' : bytes.back(), '#'}) {
            // Bit values of any mode but that of all places.
            for (const int mode : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0x7FFFFFFF}) {
                SCOPED_TRACE(bytes + " less " + c + " by " + std::to_string(mode));
                const NarrowSubject subject(TheState(), text);
                const QORString result = subject.s.Strip(static_cast<QORString::QORStripMode>(mode), QORChar(c));
                const std::string expected = Stripped(bytes, mode, c);
                EXPECT_EQ(BytesOf(result), expected);
                if (!expected.empty()) {
                    ExpectFreshlyWritten(Alias(result), false);
                    ExpectOnlyNormalised(subject, text);
                } else if (!bytes.empty()) {
                    EXPECT_TRUE(IsOnTheEmptyBlock(result));
                    ExpectOnlyNormalised(subject, text);
                } else {
                    EXPECT_EQ(StringAccess::BlockOf(result), subject.Now()) << "without text there is a copy";
                }
            }
            const NarrowSubject subject(TheState(), text);
            EXPECT_EQ(BytesOf(subject.s.strip(c)), Stripped(bytes, 1, c));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowStrip, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowStripStated, ModesHaveTheirNumbers) {
    EXPECT_EQ(QORString::QORStripModeLeading, 1);
    EXPECT_EQ(QORString::QORStripModeTrailing, 2);
    EXPECT_EQ(QORString::QORStripModeBoth, 3);
    EXPECT_EQ(QORString::QORStripModeAll, 4);
}

TEST(NarrowStripStated, ComparesBytes) {
    const QORString s = Bytes("\xe9 \xe9");
    EXPECT_EQ(BytesOf(s.Strip(QORString::QORStripModeAll, QORChar('\xe9'))), " ");
    EXPECT_EQ(BytesOf(s.Strip(QORString::QORStripModeBoth, QORChar('\xe9'))), " ");
    const QORString zeros = Bytes(std::string("\0a\0", 3));
    EXPECT_EQ(BytesOf(zeros.Strip(QORString::QORStripModeBoth, QORChar())), "a");
}
