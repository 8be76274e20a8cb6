#include "QORUnicodeString.h"

#include "GuardedMemory.h"
#include "HeapLog.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "UnicodeTexts.h"
#include "VELString.h"

#include <climits>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;
using StringEnvironment::OneToOne;
using StringEnvironment::UseCodePage;
using testing::IsEmpty;

constexpr const unsigned short* NoUnits = nullptr;
constexpr const wchar_t* NoWide = nullptr;

Block BlockOf(const QORUnicodeString& s) {
    return StringAccess::BlockOf(s);
}

QORUnicodeString WideString(const std::u16string& text) {
    return StringOn<QORUnicodeString>(NewWide(text));
}

std::u16string UTF16Of(const QORUnicodeString& s) {
    return Units(s.ConvertToUCChar(), s.GetLengthInChar());
}

} // namespace

// The handle.

TEST(QORUnicodeString, TheDestructorLeavesANullHandle) {
    EXPECT_EQ(HandleAfterDestruction<QORUnicodeString>(""), nullptr);
    EXPECT_EQ(HandleAfterDestruction<QORUnicodeString>("text"), nullptr);
}

TEST(QORUnicodeString, WithoutTextIsOnTheEmptyBlockWithoutAnAllocation) {
    const HeapLog log;
    const QORUnicodeString s;
    const QORUnicodeString copy(s);
    QORUnicodeString assigned;
    assigned = copy;
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_TRUE(IsOnTheEmptyBlock(copy));
    EXPECT_TRUE(IsOnTheEmptyBlock(assigned));
    EXPECT_EQ(Str::Empty()->_refCount, 1);
    EXPECT_THAT(log.Requests(), IsEmpty());
}

TEST(QORUnicodeString, CopiesShareTheBlockAndAreCounted) {
    const QORUnicodeString s("text");
    EXPECT_EQ(BlockOf(s)->_refCount, 1);
    {
        const QORUnicodeString copy(s);
        EXPECT_EQ(BlockOf(copy), BlockOf(s));
        QORUnicodeString assigned("old");
        assigned = s;
        EXPECT_EQ(BlockOf(s)->_refCount, 3);
    }
    EXPECT_EQ(BlockOf(s)->_refCount, 1);
}

TEST(QORUnicodeString, AssignmentReleasesTheOldBlock) {
    VELStringPoolSetForCurrentThrd(0);
    QORUnicodeString s("old");
    const QORUnicodeString other("text");
    const Block old = BlockOf(s);
    const HeapLog log;
    s = other;
    EXPECT_THAT(log.Freed(), testing::ElementsAre(old));
}

TEST(QORUnicodeString, AssignmentBetweenTwoHandlesOfOneBlockChangesNothing) {
    QORUnicodeString s("text");
    const QORUnicodeString copy(s);
    s = copy;
    const QORUnicodeString& itself = s;
    s = itself;
    EXPECT_EQ(BlockOf(s)->_refCount, 2);
    EXPECT_STREQ(s.ConvertToChar(), "text");
}

TEST(QORUnicodeString, AMovedStringIsEmptyAndItsBlockNotCopied) {
    QORUnicodeString s("text");
    const Block block = BlockOf(s);
    QORUnicodeString moved(std::move(s));
    EXPECT_EQ(BlockOf(moved), block);
    EXPECT_TRUE(IsOnTheEmptyBlock(s)); // NOLINT(bugprone-use-after-move): the state is promised
    QORUnicodeString assigned("old");
    assigned = std::move(moved);
    EXPECT_EQ(BlockOf(assigned), block);
    EXPECT_EQ(block->_refCount, 1);
    QORUnicodeString& itself = assigned;
    assigned = std::move(itself);
    EXPECT_EQ(BlockOf(assigned), block);
}

TEST(QORUnicodeString, ACopyOfANullHandleIsNullAndReadsAsEmpty) {
    const auto null = NullString<QORUnicodeString>();
    const QORUnicodeString copy(null);
    QORUnicodeString assigned("old");
    assigned = null;
    for (const QORUnicodeString* s : {&null, &copy, &std::as_const(assigned)}) {
        EXPECT_EQ(BlockOf(*s), nullptr);
        EXPECT_STREQ(s->ConvertToChar(), "");
        EXPECT_STREQ(s->CastToCharPtr(), "");
        EXPECT_STREQ(static_cast<const char*>(*s), "");
        EXPECT_EQ(s->ConvertToUCChar(), nullptr);
        EXPECT_EQ(static_cast<const unsigned short*>(*s), nullptr);
        EXPECT_EQ(s->GetLengthInChar(), 0);
        EXPECT_EQ(s->GetLengthInByte(), 0);
        EXPECT_EQ(s->ComputeHashKey(), 0u);
        EXPECT_TRUE(s->IsEmpty());
        EXPECT_EQ(BlockOf(*s), nullptr) << "still";
    }
}

TEST(QORUnicodeString, ANullHandleTakesText) {
    const auto check = [](const std::function<void(QORUnicodeString&)>& take) {
        auto s = NullString<QORUnicodeString>();
        take(s);
        EXPECT_EQ(UTF16Of(s), u"abc");
    };
    check([](QORUnicodeString& s) { s = "abc"; });
    check([](QORUnicodeString& s) { s = QORUnicodeString("abc"); });
    check([](QORUnicodeString& s) { s.BuildFromUTF8("abc", 3); });
    check([](QORUnicodeString& s) { s.BuildFromUCChar(Units(u"abc"), 3); });
    check([](QORUnicodeString& s) { s.BuildFromWChar(L"abc"); });
}

TEST(QORUnicodeString, ResetReleasesTheBlock) {
    VELStringPoolSetForCurrentThrd(0);
    QORUnicodeString s("text");
    const Block block = BlockOf(s);
    const HeapLog log;
    s.Reset();
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_THAT(log.Freed(), testing::ElementsAre(block));
    s.Reset();
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    auto null = NullString<QORUnicodeString>();
    null.Reset();
    EXPECT_TRUE(null.IsEmpty());
}

TEST(QORUnicodeString, ClassIdIsOneBlockOfSixteenZeroBytes) {
    const void* const id = QORUnicodeString::ClassId();
    EXPECT_EQ(QORUnicodeString::ClassId(), id);
    const char zero[16] = {};
    EXPECT_EQ(std::memcmp(id, zero, sizeof zero), 0);
}

TEST(QORUnicodeString, APointerStaysGoodWhileAnotherHandleHoldsTheBlock) {
    QORUnicodeString s("text");
    const QORUnicodeString holder(s);
    const char* const bytes = s.ConvertToChar();
    const unsigned short* const units = s.ConvertToUCChar();
    s = "changed";
    EXPECT_STREQ(bytes, "text");
    EXPECT_EQ(Units(units, 5), std::u16string(u"text\0", 5));
    s.Reset();
    EXPECT_EQ(holder.ConvertToChar(), bytes);
    EXPECT_EQ(holder.ConvertToUCChar(), units);
}

// Narrow text in.

TEST(NarrowText, IsStoredAsItIs) {
    for (const char* codePage : {StringEnvironment::UTF8, OneToOne}) {
        UseCodePage(codePage);
        const QORUnicodeString s("a\x80\xff\x01");
        EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
        EXPECT_EQ(Narrow(BlockOf(s)), "a\x80\xff\x01");
        EXPECT_EQ(BlockOf(s)->_secondView, nullptr);
        EXPECT_EQ(s.ConvertToChar(), BlockOf(s)->Text());
    }
}

TEST(NarrowText, NoneGivesTheEmptyBlock) {
    const char* const null = nullptr;
    EXPECT_TRUE(IsOnTheEmptyBlock(QORUnicodeString(null)));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORUnicodeString("")));
    QORUnicodeString s("abc");
    s = null;
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

struct CountedRow {
    const char* text;
    unsigned long n;
    const char* result;
    friend void PrintTo(const CountedRow& row, std::ostream* out) {
        *out << (row.text != nullptr ? row.text : "null") << ", " << row.n;
    }
};

class CountedNarrowText : public testing::TestWithParam<CountedRow> {};

TEST_P(CountedNarrowText, EndsAtTheCountOrAtAZeroByte) {
    const QORUnicodeString s(GetParam().text, GetParam().n);
    EXPECT_EQ(s.ConvertToChar(), std::string(GetParam().result));
    EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
    EXPECT_EQ(IsOnTheEmptyBlock(s), *GetParam().result == 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CountedNarrowText,
    testing::Values(CountedRow{"abc", 0, ""}, CountedRow{"abc", 1, "a"}, CountedRow{"abc", 3, "abc"},
                    CountedRow{"abc", 4, "abc"}, CountedRow{"abc", 1000, "abc"}, CountedRow{"abc", INT_MAX, "abc"},
                    CountedRow{"ab\0cd", 5, "ab"}, CountedRow{"\0ab", 3, ""}, CountedRow{"", 5, ""},
                    CountedRow{nullptr, 5, ""}, CountedRow{"abc", 0x80000000ul, ""},
                    CountedRow{"abc", 0xFFFFFFFFul, ""}, CountedRow{"abc", 0x100000000ul, ""},
                    CountedRow{"abc", ULONG_MAX, ""},
                    // Whether there is anything to take is asked of the low half alone.
                    CountedRow{"abcdefgh", 0x100000000ul, ""}, CountedRow{"abcdefgh", 0x100000005ul, "abcdefgh"},
                    CountedRow{"abcdefgh", 0x17FFFFFFFul, "abcdefgh"}, CountedRow{"abcdefgh", 0x180000000ul, ""}));

TEST(NarrowText, ReadsNothingBehindTheCount) {
    const GuardedMemory memory(100);
    EXPECT_STREQ(QORUnicodeString(memory.CopyAtEnd("abc", 3), 3).ConvertToChar(), "abc");
    EXPECT_STREQ(QORUnicodeString(memory.CopyAtEnd("abc", 4), 1000).ConvertToChar(), "abc");
}

TEST(NarrowText, AssignedIsWrittenInPlaceWhenTheBlockIsAloneAndLargeEnough) {
    QORUnicodeString s("abcd");
    const Block block = BlockOf(s);
    const HeapLog log;
    s = "12345";
    EXPECT_EQ(BlockOf(s), block);
    s = "";
    EXPECT_EQ(BlockOf(s), block) << "the block is kept with length 0";
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_FALSE(IsOnTheEmptyBlock(s));
    EXPECT_EQ(s.GetLengthInChar(), 0);
    s = "1234567890";
    EXPECT_NE(BlockOf(s), block);
    EXPECT_STREQ(s.ConvertToChar(), "1234567890");
}

TEST(NarrowText, AssignedLeavesSharersAlone) {
    QORUnicodeString s("abcd");
    const QORUnicodeString other(s);
    s = "12";
    EXPECT_STREQ(other.ConvertToChar(), "abcd");
    EXPECT_STREQ(s.ConvertToChar(), "12");
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
}

TEST(NarrowText, AssignedOverWideTextIsNarrow) {
    QORUnicodeString s = WideString(u"\u20ac\u20ac\u20ac\u20ac");
    s = "ab";
    EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
    EXPECT_EQ(UTF16Of(s), u"ab");
}

TEST(NarrowText, AssignedChangesTheHash) {
    QORUnicodeString s("abd");
    s.ComputeHashKey();
    s = "abc";
    EXPECT_EQ(s.ComputeHashKey(), 136518u);
}

TEST(NarrowText, RepeatedKeepsTheRepresentation) {
    const QORUnicodeString narrow("ab\xc3\xa9");
    const QORUnicodeString wide = WideString(u"ab\u00e9");
    EXPECT_EQ(Narrow(BlockOf(QORUnicodeString(narrow, 3))), "ab\u00e9ab\u00e9ab\u00e9");
    EXPECT_EQ(Wide(BlockOf(QORUnicodeString(wide, 3))), u"ab\u00e9ab\u00e9ab\u00e9");
    EXPECT_EQ(Narrow(BlockOf(QORUnicodeString(narrow, 1))), "ab\u00e9");
    EXPECT_EQ(Wide(BlockOf(QORUnicodeString(wide, 1))), u"ab\u00e9");
    EXPECT_EQ(BlockOf(narrow)->_secondView, nullptr);
}

TEST(NarrowText, RepeatedNoTimesOrOutOfNothingIsEmpty) {
    const QORUnicodeString narrow("ab");
    EXPECT_TRUE(QORUnicodeString(narrow, 0).IsEmpty());
    EXPECT_TRUE(QORUnicodeString(WideString(u"ab"), 0).IsEmpty());
    EXPECT_TRUE(QORUnicodeString(QORUnicodeString(), 5).IsEmpty());
    EXPECT_TRUE(QORUnicodeString(NullString<QORUnicodeString>(), 5).IsEmpty());
    EXPECT_TRUE(QORUnicodeString(StringOn<QORUnicodeString>(NewWide(u"")), ULONG_MAX).IsEmpty());
}

TEST(NarrowText, RepeatedBeyondAllLengthsIsEmpty) {
    const QORUnicodeString narrow("abcd");
    const QORUnicodeString wide = WideString(u"abcd");
    for (const unsigned long n : {1ul << 29, 1ul << 30, 1ul << 31, 1ul << 62, ULONG_MAX}) {
        const HeapShortage noHugeBlocks(1, HeapShortage::FromThatOneOn);
        EXPECT_TRUE(QORUnicodeString(narrow, n).IsEmpty()) << n;
        EXPECT_TRUE(QORUnicodeString(wide, n).IsEmpty()) << n;
    }
}

// Text in by name.

class BuildFrom : public StringEnvironment::InBoth {};

TEST_P(BuildFrom, UTF8IsNarrowInAnEnvironmentOfUTF8AndWideInAnother) {
    QORUnicodeString s("old");
    EXPECT_EQ(s.BuildFromUTF8("gr\u00fcn \U0001F600!", 10), 0);
    EXPECT_EQ(VEL::GetMainRepEncoding(s), IsUTF8() ? 1 : 2);
    EXPECT_EQ(UTF16Of(s), u"gr\u00fcn \U0001F600");
    if (IsUTF8()) {
        EXPECT_EQ(Narrow(BlockOf(s)), "gr\u00fcn \U0001F600");
    }
}

TEST_P(BuildFrom, UTF8IsNotChecked) {
    for (const std::string& bytes :
         {std::string("a\0b\xff", 4), std::string("\xff"), std::string("abc\xe2\x82"), std::string("\x80qrstu\xc3"),
          std::string("\xed\xa0\x80gr\xc3\xbcn"), std::string("\xf0\x9f\x98"), std::string("\xc1\x81 abc")}) {
        QORUnicodeString s("old");
        EXPECT_EQ(s.BuildFromUTF8(bytes.data(), bytes.size()), 0);
        if (IsUTF8()) {
            EXPECT_EQ(Narrow(BlockOf(s)), bytes);
            continue;
        }
        // The unchecked conversion, to the last damaged byte.
        const PlainUnicode::Units units = PlainUnicode::ToUnits(bytes);
        EXPECT_EQ(Wide(BlockOf(s)), std::u16string(units.begin(), units.end())) << testing::PrintToString(bytes);
        EXPECT_EQ(BlockOf(s)->Wide()[BlockOf(s)->_length], 0);
    }
}

TEST_P(BuildFrom, NoUTF8Resets) {
    for (const bool isNull : {true, false}) {
        QORUnicodeString s("old");
        EXPECT_EQ(s.BuildFromUTF8(isNull ? nullptr : "abc", isNull ? 3 : 0), 0);
        EXPECT_TRUE(IsOnTheEmptyBlock(s));
    }
}

TEST_P(BuildFrom, UTF8OutOfTheStringsOwnText) {
    QORUnicodeString narrow("abcdef");
    narrow.BuildFromUTF8(narrow.ConvertToChar() + 2, 3);
    EXPECT_EQ(UTF16Of(narrow), u"cde");
    QORUnicodeString shared("abcdef");
    const QORUnicodeString other(shared);
    shared.BuildFromUTF8(shared.ConvertToChar() + 2, 3);
    EXPECT_EQ(UTF16Of(shared), u"cde");
    EXPECT_EQ(UTF16Of(other), u"abcdef");
    QORUnicodeString wide = WideString(u"abcdef");
    wide.BuildFromUTF8(wide.ConvertToChar() + 2, 3);
    EXPECT_EQ(UTF16Of(wide), u"cde");
}

TEST_P(BuildFrom, UTF8ReadsNothingBehindTheCount) {
    const GuardedMemory memory(100);
    for (const std::string text : {"abc", "\u20ac\u20ac", "abcdefghijklmnopqrstuvwxyz0123456789"}) {
        QORUnicodeString s;
        s.BuildFromUTF8(memory.CopyAtEnd(text.data(), text.size()), text.size());
        EXPECT_EQ(s.GetLengthInChar(), text[0] == 'a' ? static_cast<int>(text.size()) : 2);
    }
}

TEST_P(BuildFrom, UnitsAreWide) {
    QORUnicodeString s("old");
    EXPECT_EQ(s.BuildFromUCChar(Units(u"ab\0\xd800z"), 4), 1);
    EXPECT_EQ(VEL::GetMainRepEncoding(s), 2);
    EXPECT_EQ(Wide(BlockOf(s)), std::u16string(u"ab\0\xd800", 4));
    EXPECT_EQ(s.BuildFromUCChar(Units(u"gr\u00fcn")), 1);
    EXPECT_EQ(Wide(BlockOf(s)), u"gr\u00fcn");
    EXPECT_EQ(s.BuildFromUTF16(Units(u"\u20ac12"), 2), 1);
    EXPECT_EQ(Wide(BlockOf(s)), u"\u20ac1");
    EXPECT_EQ(s.BuildFromWChar(L"w\u00e9\U0001F600!"), 1);
    EXPECT_EQ(Wide(BlockOf(s)), u"w\u00e9\U0001F600!");
    EXPECT_EQ(s.BuildFromWChar(L"a\0\U0001F600!", 3), 1);
    EXPECT_EQ(Wide(BlockOf(s)), std::u16string(u"a\0\U0001F600", 4));
    EXPECT_EQ(s.BuildFromWChar(L"up to the end", -1ul), 1);
    EXPECT_EQ(Wide(BlockOf(s)), u"up to the end");
    EXPECT_EQ(VEL::GetMainRepEncoding(s), 2);
}

TEST_P(BuildFrom, NoUnitsGiveMinusOneAndTheEmptyBlock) {
    const std::vector<std::pair<const char*, std::function<int(QORUnicodeString&)>>> calls = {
        {"null units", [](QORUnicodeString& s) { return s.BuildFromUCChar(NoUnits, 3); }},
        {"no units", [](QORUnicodeString& s) { return s.BuildFromUCChar(Units(u"abc"), 0); }},
        {"fewer than none", [](QORUnicodeString& s) { return s.BuildFromUCChar(Units(u"abc"), -1); }},
        {"far fewer than none", [](QORUnicodeString& s) { return s.BuildFromUCChar(Units(u"abc"), INT_MIN); }},
        {"null text", [](QORUnicodeString& s) { return s.BuildFromUCChar(NoUnits); }},
        {"no text", [](QORUnicodeString& s) { return s.BuildFromUCChar(Units(u"")); }},
        {"null UTF-16", [](QORUnicodeString& s) { return s.BuildFromUTF16(nullptr, 3); }},
        {"no UTF-16", [](QORUnicodeString& s) { return s.BuildFromUTF16(Units(u"abc"), 0); }},
        {"null wide text", [](QORUnicodeString& s) { return s.BuildFromWChar(NoWide); }},
        {"null wide text to its end", [](QORUnicodeString& s) { return s.BuildFromWChar(NoWide, -1ul); }},
        {"null wide elements", [](QORUnicodeString& s) { return s.BuildFromWChar(NoWide, 3); }},
        {"no wide text", [](QORUnicodeString& s) { return s.BuildFromWChar(L""); }},
        {"no wide elements", [](QORUnicodeString& s) { return s.BuildFromWChar(L"abc", 0); }},
    };
    for (const auto& [name, call] : calls) {
        for (const bool isWide : {false, true}) {
            SCOPED_TRACE(name);
            QORUnicodeString s = isWide ? WideString(u"old") : QORUnicodeString("old");
            const QORUnicodeString other(s);
            EXPECT_EQ(call(s), -1);
            EXPECT_TRUE(IsOnTheEmptyBlock(s));
            EXPECT_EQ(UTF16Of(other), u"old");
            EXPECT_EQ(BlockOf(other)->_refCount, 1);
        }
    }
}

// No string is that long: nothing is read and nothing is taken.
TEST_P(BuildFrom, LengthsBeyondAllTextGiveAnEmptyString) {
    for (const unsigned long n : {0x80000000ul, 0xFFFFFFFFul, 1ul << 62, ULONG_MAX - 1}) {
        SCOPED_TRACE(n);
        QORUnicodeString s("old");
        s.BuildFromUTF8("abc", n);
        EXPECT_TRUE(s.IsEmpty());
        s = "old";
        EXPECT_EQ(s.BuildFromUTF16(Units(u"abc"), n), -1);
        EXPECT_TRUE(s.IsEmpty());
    }
}

TEST_P(BuildFrom, WideLengthsBeyondAllTextGiveAnEmptyString) {
    for (const unsigned long n : {0x80000000ul, 0xFFFFFFFFul, 1ul << 62, ULONG_MAX - 1}) {
        SCOPED_TRACE(n);
        QORUnicodeString s("old");
        EXPECT_EQ(s.BuildFromWChar(L"abc", n), -1);
        EXPECT_TRUE(s.IsEmpty());
    }
}

TEST_P(BuildFrom, UnitsOutOfTheStringsOwnTextAndView) {
    QORUnicodeString wide = WideString(u"abcdef");
    EXPECT_EQ(wide.BuildFromUCChar(wide.ConvertToUCChar() + 2, 3), 1);
    EXPECT_EQ(Wide(BlockOf(wide)), u"cde");
    EXPECT_EQ(wide.BuildFromUCChar(wide.ConvertToUCChar() + 1), 1);
    EXPECT_EQ(Wide(BlockOf(wide)), u"de");
    QORUnicodeString narrow("abcdef");
    EXPECT_EQ(narrow.BuildFromUTF16(narrow.ConvertToUCChar() + 2, 3), 1);
    EXPECT_EQ(Wide(BlockOf(narrow)), u"cde");
    QORUnicodeString assigned = WideString(u"abcdef");
    assigned = assigned.ConvertToChar() + 3;
    EXPECT_EQ(UTF16Of(assigned), u"def");
    assigned = assigned.ConvertToChar() + 1;
    EXPECT_EQ(UTF16Of(assigned), u"ef");
    assigned = assigned.ConvertToChar();
    EXPECT_EQ(UTF16Of(assigned), u"ef");
}

TEST_P(BuildFrom, LeavesSharersTheirText) {
    QORUnicodeString s = WideString(u"abc");
    const QORUnicodeString other(s);
    s.BuildFromUCChar(Units(u"xyz"), 3);
    EXPECT_EQ(UTF16Of(other), u"abc");
    EXPECT_EQ(UTF16Of(s), u"xyz");
}

TEST_P(BuildFrom, ChangesHashAndView) {
    QORUnicodeString s = WideString(u"xyz");
    s.ComputeHashKey();
    s.ConvertToChar();
    s.BuildFromUCChar(Units(u"abc"), 3);
    EXPECT_EQ(s.ComputeHashKey(), 136518u);
    EXPECT_STREQ(s.ConvertToChar(), "abc");
}

TEST_P(BuildFrom, EveryWideElementAboveSixteenBitsTakesTwoUnits) {
    const GuardedMemory memory(100);
    for (const unsigned int code :
         {0x41u, 0xD800u, 0xFFFFu, 0x10000u, 0x10FFFFu, 0x110000u, 0x80000000u, 0xFFFFFFFFu}) {
        const wchar_t text[] = {static_cast<wchar_t>(code), static_cast<wchar_t>(code)};
        QORUnicodeString s;
        EXPECT_EQ(s.BuildFromWChar(memory.CopyAtEnd(text, 2), 2), 1);
        EXPECT_EQ(BlockOf(s)->_length, code > 0xFFFF ? 4 : 2) << std::hex << code;
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, BuildFrom, testing::Values(StringEnvironment::UTF8, OneToOne),
                         StringEnvironment::NameOf);

// Text out.

class ConvertTo : public StringEnvironment::InBoth {};

TEST_P(ConvertTo, LengthsCountUnitsAndBytes) {
    const QORUnicodeString narrow(IsUTF8() ? "a\u00e9\U0001F600" : "a\xe9");
    EXPECT_EQ(narrow.GetLengthInByte(), IsUTF8() ? 7 : 2);
    EXPECT_EQ(BlockOf(narrow)->_secondView, nullptr);
    EXPECT_EQ(narrow.GetLengthInChar(), IsUTF8() ? 4 : 2);
    EXPECT_NE(BlockOf(narrow)->_secondView, nullptr);
    const QORUnicodeString wide = WideString(u"a\u00e9\U0001F600");
    EXPECT_EQ(wide.GetLengthInChar(), 4);
    EXPECT_EQ(BlockOf(wide)->_secondView, nullptr);
    EXPECT_EQ(wide.GetLengthInByte(), IsUTF8() ? 7 : 4);
    EXPECT_NE(BlockOf(wide)->_secondView, nullptr);
}

TEST_P(ConvertTo, AllNamesOfThePointersGiveOneText) {
    const QORUnicodeString s("abc");
    EXPECT_EQ(s.CastToCharPtr(), s.ConvertToChar());
    EXPECT_EQ(static_cast<const char*>(s), s.ConvertToChar());
    EXPECT_EQ(static_cast<const unsigned short*>(s), s.ConvertToUCChar());
    EXPECT_EQ(Units(s.ConvertToUCChar(), 4), std::u16string(u"abc\0", 4));
}

TEST_P(ConvertTo, TheEmptyBlockReadsAsEmpty) {
    const QORUnicodeString s;
    EXPECT_STREQ(s.ConvertToChar(), "");
    ASSERT_NE(s.ConvertToUCChar(), nullptr);
    EXPECT_EQ(*s.ConvertToUCChar(), 0);
    EXPECT_EQ(s.GetLengthInChar(), 0);
    EXPECT_EQ(s.GetLengthInByte(), 0);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(s.ComputeHashKey(), 0u);
}

TEST_P(ConvertTo, IsEmptyLooksAtTheLength) {
    EXPECT_TRUE(StringOn<QORUnicodeString>(NewNarrow("")).IsEmpty());
    EXPECT_TRUE(StringOn<QORUnicodeString>(NewWide(u"")).IsEmpty());
    EXPECT_FALSE(QORUnicodeString(" ").IsEmpty());
    EXPECT_FALSE(StringOn<QORUnicodeString>(NewNarrow(std::string(1, '\0'))).IsEmpty());
}

TEST_P(ConvertTo, HashDoesNotDependOnTheRepresentation) {
    EXPECT_EQ(QORUnicodeString("abc").ComputeHashKey(), 136518u);
    EXPECT_EQ(WideString(u"abc").ComputeHashKey(), 136518u);
    EXPECT_EQ(QORUnicodeString(IsUTF8() ? "\u00fc" : "\xfc").ComputeHashKey(), WideString(u"\u00fc").ComputeHashKey());
}

TEST_P(ConvertTo, UTF16IsCopiedWithoutATerminator) {
    const GuardedMemory memory(100);
    for (const QORUnicodeString& s : {QORUnicodeString(IsUTF8() ? "gr\u00fcn" : "gr\xfcn"), WideString(u"gr\u00fcn")}) {
        auto* const out = memory.AtEnd<unsigned short>(4);
        unsigned long n = 77;
        EXPECT_EQ(s.ConvertToUTF16(out, &n), 0);
        EXPECT_EQ(n, 4u);
        EXPECT_EQ(Units(out, 4), u"gr\u00fcn");
    }
}

TEST_P(ConvertTo, UTF16MeasuredIsACapacityOfWholeEightBytesButOne) {
    const unsigned long expected[] = {0, 3, 3, 3, 4, 7, 7, 7, 8, 11, 11, 11, 12};
    for (std::size_t length = 0; length < std::size(expected); ++length) {
        for (const QORUnicodeString& s :
             {QORUnicodeString(std::string(length, 'a').c_str()), WideString(std::u16string(length, u'a'))}) {
            unsigned long n = 77;
            EXPECT_EQ(s.ConvertToUTF16(nullptr, &n), 0);
            EXPECT_EQ(n, expected[length]) << length;
        }
    }
}

TEST_P(ConvertTo, NoTextIsNoUTF16) {
    for (const QORUnicodeString& s : {QORUnicodeString(), NullString<QORUnicodeString>(),
                                      StringOn<QORUnicodeString>(NewNarrow("")), WideString(u"")}) {
        unsigned short out = 77;
        unsigned long n = 77;
        EXPECT_EQ(s.ConvertToUTF16(&out, &n), 0);
        EXPECT_EQ(n, 0u);
        EXPECT_EQ(out, 77);
        n = 77;
        EXPECT_EQ(s.ConvertToUTF16(nullptr, &n), 0);
        EXPECT_EQ(n, 0u);
    }
}

TEST_P(ConvertTo, UTF8IsCopiedWithoutATerminator) {
    const GuardedMemory memory(100);
    const std::string expected = "gr\u00fcn\u20ac\U0001F600";
    for (const QORUnicodeString& s : {WideString(u"gr\u00fcn\u20ac\U0001F600"), QORUnicodeString(expected.c_str())}) {
        if (!IsUTF8() && VEL::GetMainRepEncoding(s) == 1) {
            continue;
        }
        for (int withView = 0; withView < 2; ++withView) {
            char* const out = memory.AtEnd<char>(expected.size());
            std::memset(out, '#', expected.size());
            unsigned long n = 77;
            EXPECT_EQ(s.ConvertToUTF8(out, &n), 0);
            EXPECT_EQ(n, expected.size());
            EXPECT_EQ(std::string(out, n), expected);
            s.ConvertToChar();
        }
        std::memset(memory.AtEnd<char>(expected.size()), '#', expected.size());
        EXPECT_EQ(s.ConvertToUTF8(memory.AtEnd<char>(expected.size()), nullptr), 0);
        EXPECT_EQ(std::string(memory.AtEnd<char>(expected.size()), expected.size()), expected);
    }
}

TEST_P(ConvertTo, UTF8OfNarrowTextOfAnotherCodePageIsConverted) {
    UseCodePage(OneToOne);
    const GuardedMemory memory(100);
    const QORUnicodeString s("gr\xfcn");
    unsigned long n = 77;
    EXPECT_EQ(s.ConvertToUTF8(memory.AtEnd<char>(5), &n), 0);
    EXPECT_EQ(std::string(memory.AtEnd<char>(5), n), "gr\u00fcn");
}

TEST_P(ConvertTo, UTF8MeasuredIsACapacityOfWholeEightBytesButOne) {
    for (unsigned long length = 0; length < 40; ++length) {
        const unsigned long expected = length == 0 ? 0 : std::max((length + 7) / 8 * 8 - 1, length);
        for (const QORUnicodeString& s :
             {QORUnicodeString(std::string(length, 'a').c_str()), WideString(std::u16string(length, u'a'))}) {
            unsigned long n = 77;
            EXPECT_EQ(s.ConvertToUTF8(nullptr, &n), 0);
            EXPECT_EQ(n, expected) << length;
        }
    }
    unsigned long n = 77;
    WideString(u"\u20ac\u20ac\u20ac").ConvertToUTF8(nullptr, &n);
    EXPECT_EQ(n, 15u) << "nine bytes";
    WideString(u"\U0001F600\U0001F600").ConvertToUTF8(nullptr, &n);
    EXPECT_EQ(n, 8u) << "eight bytes";
}

// A high surrogate is joined with whatever follows, as it is when the text is written.
TEST_P(ConvertTo, UnpairedSurrogatesAreMeasuredAsTheyAreWritten) {
    UnicodeTexts::Source random(29);
    for (int round = 0; round < 2000; ++round) {
        std::u16string text;
        for (std::size_t left = random.Below(30); left > 0; --left) {
            text += static_cast<char16_t>(random.TellingUnit());
        }
        const QORUnicodeString s = WideString(text);
        const auto* const first = Units(text.c_str());
        std::vector<char> bytes(4 * text.size() + 1);
        std::vector<unsigned int> codePoints(text.size() + 1);
        const auto length = static_cast<unsigned long>(
            PlainUnicode::FromUTF16(first, first + text.size(), bytes.data()) - bytes.data());
        const auto count = PlainUnicode::FromUTF16(first, first + text.size(), codePoints.data()) - codePoints.data();
        unsigned long n = 77;
        EXPECT_EQ(s.ConvertToUTF8(nullptr, &n), 0);
        ASSERT_EQ(n, length == 0 ? 0 : std::max((length + 7) / 8 * 8 - 1, length)) << testing::PrintToString(text);
        ASSERT_EQ(s.ConvertToWChar(nullptr), (4 * (count + 1) + 7) / 4 & ~1L) << testing::PrintToString(text);
    }
}

TEST_P(ConvertTo, NoTextIsNoUTF8) {
    for (const QORUnicodeString& s : {QORUnicodeString(), NullString<QORUnicodeString>(),
                                      StringOn<QORUnicodeString>(NewNarrow("")), WideString(u"")}) {
        for (const bool hasOut : {false, true}) {
            char out = 'x';
            unsigned long n = 77;
            EXPECT_EQ(s.ConvertToUTF8(hasOut ? &out : nullptr, &n), 0);
            EXPECT_EQ(n, 0u);
            EXPECT_EQ(out, 'x');
            EXPECT_EQ(s.ConvertToUTF8(hasOut ? &out : nullptr, nullptr), 0);
        }
    }
}

TEST_P(ConvertTo, UTF8BuildsNoViewOfWideTextAndNeedsNoneOfNarrowUTF8) {
    char out[16];
    unsigned long n;
    const QORUnicodeString wide = WideString(u"\u20ac");
    wide.ConvertToUTF8(out, &n);
    wide.ConvertToUTF8(nullptr, &n);
    EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(wide));
    const QORUnicodeString narrow("abc");
    narrow.ConvertToUTF8(out, &n);
    narrow.ConvertToUTF8(nullptr, &n);
    if (IsUTF8()) {
        EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(narrow));
    }
}

TEST_P(ConvertTo, WCharIsCodePointsAndATerminator) {
    const GuardedMemory memory(100);
    const QORUnicodeString wide = WideString(u"a\u20ac\U0001F600");
    auto* const out = memory.AtEnd<wchar_t>(4);
    EXPECT_EQ(wide.ConvertToWChar(out), 3);
    EXPECT_EQ(std::wstring(out, 4), std::wstring(L"a\u20ac\U0001F600\0", 4));
    const QORUnicodeString narrow("abc");
    EXPECT_EQ(narrow.ConvertToWChar(out), 3);
    EXPECT_STREQ(out, L"abc");
}

TEST_P(ConvertTo, WCharMeasuredIsAnEvenNumberOfElementsThatIsEnough) {
    const int expected[] = {2, 2, 4, 4, 6, 6, 8, 8, 10};
    for (std::size_t length = 1; length < std::size(expected); ++length) {
        EXPECT_EQ(WideString(std::u16string(length, u'a')).ConvertToWChar(nullptr), expected[length]) << length;
        EXPECT_EQ(QORUnicodeString(std::string(length, 'a').c_str()).ConvertToWChar(nullptr), expected[length]);
    }
    EXPECT_EQ(WideString(u"\U0001F600").ConvertToWChar(nullptr), 2) << "code points, not units";
    EXPECT_EQ(QORUnicodeString().ConvertToWChar(nullptr), 2);
}

TEST_P(ConvertTo, NoTextIsATerminatorAlone) {
    for (const QORUnicodeString& s : {QORUnicodeString(), NullString<QORUnicodeString>(),
                                      StringOn<QORUnicodeString>(NewNarrow("")), WideString(u"")}) {
        wchar_t out[2] = {L'x', L'y'};
        EXPECT_EQ(s.ConvertToWChar(out), 0);
        EXPECT_EQ(out[0], 0);
        EXPECT_EQ(out[1], L'y');
        EXPECT_GE(s.ConvertToWChar(nullptr), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, ConvertTo, testing::Values(StringEnvironment::UTF8, OneToOne),
                         StringEnvironment::NameOf);
