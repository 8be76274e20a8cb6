#include "QORSysTSUnicodeString.h"

#include "GuardedMemory.h"
#include "HeapLog.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"
#include "VELSysStatus.h"

#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <type_traits>
#include <utility>

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;
using StringEnvironment::OneToOne;

constexpr const char* NoText = nullptr;
constexpr const wchar_t* NoWide = nullptr;

Block BlockOf(const QORSysTSUnicodeString& s) {
    return StringAccess::BlockOf(s);
}

QORSysTSUnicodeString WideString(const std::u16string& text) {
    return StringOn<QORSysTSUnicodeString>(NewWide(text));
}

std::u16string UTF16Of(const QORSysTSUnicodeString& s) {
    return Units(s.ConvertToUCChar(), s.GetLengthInChar());
}

// No pointer comes out of one without being asked for.
static_assert(!std::is_convertible_v<QORSysTSUnicodeString, const char*>);
static_assert(!std::is_convertible_v<QORSysTSUnicodeString, const unsigned short*>);
static_assert(!std::is_polymorphic_v<QORSysTSUnicodeString> && sizeof(QORSysTSUnicodeString) == 8);

} // namespace

TEST(QORSysTSUnicodeString, TheDestructorLeavesANullHandle) {
    EXPECT_EQ(HandleAfterDestruction<QORSysTSUnicodeString>(""), nullptr);
    EXPECT_EQ(HandleAfterDestruction<QORSysTSUnicodeString>("text"), nullptr);
}

TEST(QORSysTSUnicodeString, PlacementNewAnswersItsArgumentAndDeleteDoesNothing) {
    char storage[sizeof(QORSysTSUnicodeString)] = "1234567";
    EXPECT_EQ(QORSysTSUnicodeString::operator new(sizeof(QORSysTSUnicodeString), storage), storage);
    // By its address: called by name, the compiler takes it for a release of what no heap gave.
    void (*placementDelete)(void*, void*) = &QORSysTSUnicodeString::operator delete;
    placementDelete(storage, storage);
    EXPECT_STREQ(storage, "1234567");
}

TEST(QORSysTSUnicodeString, ComesFromTheOrdinaryHeapToo) {
    const QORSysTSUnicodeString* const s = new QORSysTSUnicodeString("text");
    EXPECT_STREQ(s->ConvertToChar(), "text");
    delete s;
}

TEST(QORSysTSUnicodeString, CopiesShareTheBlockAndAreCounted) {
    const QORSysTSUnicodeString s("text");
    {
        const QORSysTSUnicodeString copy(s);
        QORSysTSUnicodeString assigned("old");
        assigned = copy;
        EXPECT_EQ(BlockOf(assigned), BlockOf(s));
        EXPECT_EQ(BlockOf(s)->_refCount, 3);
        assigned = s;
        EXPECT_EQ(BlockOf(s)->_refCount, 3);
    }
    EXPECT_EQ(BlockOf(s)->_refCount, 1);
}

TEST(QORSysTSUnicodeString, CopiesOfTheEmptyStringAreNotCounted) {
    const HeapLog log;
    const QORSysTSUnicodeString s;
    const QORSysTSUnicodeString copy(s);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_TRUE(IsOnTheEmptyBlock(copy));
    EXPECT_EQ(Str::Empty()->_refCount, 1);
    EXPECT_THAT(log.Requests(), testing::IsEmpty());
}

TEST(QORSysTSUnicodeString, AMovedStringIsEmptyAndItsBlockNotCopied) {
    QORSysTSUnicodeString s("text");
    const Block block = BlockOf(s);
    QORSysTSUnicodeString moved(std::move(s));
    EXPECT_EQ(BlockOf(moved), block);
    EXPECT_TRUE(IsOnTheEmptyBlock(s)); // NOLINT(bugprone-use-after-move): the state is promised
    s = std::move(moved);
    EXPECT_EQ(BlockOf(s), block);
    EXPECT_EQ(block->_refCount, 1);
}

TEST(QORSysTSUnicodeString, ACopyOfANullHandleIsNullAndReadsAsEmpty) {
    const auto null = NullString<QORSysTSUnicodeString>();
    const QORSysTSUnicodeString copy(null);
    QORSysTSUnicodeString assigned("old");
    assigned = null;
    for (const QORSysTSUnicodeString* s : {&null, &copy, &std::as_const(assigned)}) {
        EXPECT_EQ(BlockOf(*s), nullptr);
        EXPECT_STREQ(s->ConvertToChar(), "");
        EXPECT_EQ(s->ConvertToUCChar(), nullptr);
        EXPECT_EQ(s->GetLengthInChar(), 0);
        EXPECT_EQ(s->GetLengthInByte(), 0);
        EXPECT_EQ(s->HashFunc(), 0u);
        unsigned int byteCount = 77;
        EXPECT_EQ(s->GetBinDump(byteCount), nullptr);
        EXPECT_EQ(byteCount, 0u);
        unsigned long n = 77;
        EXPECT_EQ(s->ConvertToUTF8(nullptr, &n), 0);
        EXPECT_EQ(n, 0u);
        EXPECT_EQ(BlockOf(*s), nullptr) << "still";
    }
}

class ThreadSafeString : public StringEnvironment::InBoth {};

TEST_P(ThreadSafeString, NarrowTextIsStoredAsItIs) {
    const QORSysTSUnicodeString s("a\x80\xff\x01");
    EXPECT_EQ(Narrow(BlockOf(s)), "a\x80\xff\x01");
    EXPECT_FALSE(BlockOf(s)->IsWide());
    QORSysTSUnicodeString assigned = WideString(u"\u20ac\u20ac");
    assigned = "b\xfe";
    EXPECT_EQ(Narrow(BlockOf(assigned)), "b\xfe");
    EXPECT_TRUE(IsOnTheEmptyBlock(QORSysTSUnicodeString("")));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORSysTSUnicodeString(NoText)));
}

TEST_P(ThreadSafeString, NarrowTextIsWrittenInPlaceWhereItCanBe) {
    QORSysTSUnicodeString s("abcd");
    const Block block = BlockOf(s);
    s = "12345";
    EXPECT_EQ(BlockOf(s), block);
    s = "";
    EXPECT_EQ(BlockOf(s), block);
    EXPECT_EQ(s.GetLengthInChar(), 0);
    const QORSysTSUnicodeString other(s);
    s = "x";
    EXPECT_NE(BlockOf(s), block);
    EXPECT_STREQ(other.ConvertToChar(), "");
}

// Deliberate: the caller who assigns null keeps whatever pointer it had into the text.
TEST_P(ThreadSafeString, NullTextDoesNotReleaseTheBlockHeldBefore) {
    VELStringPoolSetForCurrentThrd(0);
    QORSysTSUnicodeString s("text");
    const Block block = BlockOf(s);
    const HeapLog log;
    s = NoText;
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    ASSERT_THAT(log.Freed(), testing::IsEmpty());
    EXPECT_EQ(Narrow(block), "text");
    EXPECT_EQ(Str::_Release(block), 0);
}

TEST_P(ThreadSafeString, ANullHandleTakesNoNarrowText) {
    auto s = NullString<QORSysTSUnicodeString>();
    s = "abc";
    EXPECT_EQ(BlockOf(s), nullptr);
    s = NoText;
    EXPECT_EQ(BlockOf(s), nullptr);
}

TEST_P(ThreadSafeString, WideTextIsCodePoints) {
    const QORSysTSUnicodeString s(L"w\u00e9\U0001F600!");
    EXPECT_TRUE(BlockOf(s)->IsWide());
    EXPECT_EQ(Wide(BlockOf(s)), u"w\u00e9\U0001F600!");
    QORSysTSUnicodeString assigned("old");
    assigned = L"\u20ac";
    EXPECT_EQ(Wide(BlockOf(assigned)), u"\u20ac");
    assigned = L"";
    EXPECT_TRUE(IsOnTheEmptyBlock(assigned));
    assigned = L"abc";
    assigned = NoWide;
    EXPECT_TRUE(IsOnTheEmptyBlock(assigned));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORSysTSUnicodeString(NoWide)));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORSysTSUnicodeString(L"")));
}

TEST_P(ThreadSafeString, UnitsAreCounted) {
    const QORSysTSUnicodeString s(Units(u"ab\0\xd800z"), 4);
    EXPECT_EQ(Wide(BlockOf(s)), std::u16string(u"ab\0\xd800", 4));
    for (const int n : {0, -1, INT_MIN}) {
        EXPECT_TRUE(IsOnTheEmptyBlock(QORSysTSUnicodeString(Units(u"abc"), n)));
    }
    EXPECT_TRUE(IsOnTheEmptyBlock(QORSysTSUnicodeString(static_cast<const unsigned short*>(nullptr), 3)));
}

TEST_P(ThreadSafeString, BuildFromUCCharAnswersWhetherThereIsText) {
    QORSysTSUnicodeString s("old");
    EXPECT_EQ(s.BuildFromUCChar(Units(u"gr\u00fcn"), 4), 0);
    EXPECT_EQ(Wide(BlockOf(s)), u"gr\u00fcn");
    const QORSysTSUnicodeString other(s);
    EXPECT_EQ(s.BuildFromUCChar(Units(u"abc"), 0), VEL::StatusFailure);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
    s = other;
    EXPECT_EQ(s.BuildFromUCChar(nullptr, 3), VEL::StatusFailure);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

TEST_P(ThreadSafeString, BuildFromUCCharKeepsAWideBlockWhereItCan) {
    QORSysTSUnicodeString s = WideString(u"abcdef");
    const Block block = BlockOf(s);
    ASSERT_EQ(block->_capacity, 7);
    s.HashFunc();
    s.ConvertToChar();
    const HeapLog log;
    EXPECT_EQ(s.BuildFromUCChar(Units(u"abc"), 3), 0);
    EXPECT_EQ(BlockOf(s), block);
    EXPECT_EQ(Wide(block), u"abc");
    EXPECT_EQ(block->Wide()[3], 0);
    EXPECT_EQ(s.HashFunc(), 136518u);
    EXPECT_STREQ(s.ConvertToChar(), "abc");
    EXPECT_EQ(s.BuildFromUCChar(Units(u"1234567"), 7), 0);
    EXPECT_EQ(UTF16Of(s), u"1234567");
    const QORSysTSUnicodeString other(s);
    EXPECT_EQ(s.BuildFromUCChar(Units(u"x"), 1), 0);
    EXPECT_NE(BlockOf(s), BlockOf(other));
    EXPECT_EQ(UTF16Of(other), u"1234567");
}

TEST_P(ThreadSafeString, BuildsOutOfItsOwnTextAndView) {
    QORSysTSUnicodeString wide = WideString(u"abcdef");
    wide.BuildFromUCChar(wide.ConvertToUCChar() + 2, 3);
    EXPECT_EQ(UTF16Of(wide), u"cde");
    QORSysTSUnicodeString narrow("abcdef");
    narrow.BuildFromUCChar(narrow.ConvertToUCChar() + 2, 3);
    EXPECT_EQ(UTF16Of(narrow), u"cde");
    QORSysTSUnicodeString assigned("abcdef");
    assigned = assigned.ConvertToChar() + 2;
    EXPECT_EQ(UTF16Of(assigned), u"cdef");
    QORSysTSUnicodeString utf8 = WideString(u"abcdef");
    utf8.BuildFromUTF8(utf8.ConvertToChar() + 2, 3);
    EXPECT_EQ(UTF16Of(utf8), u"cde");
}

TEST_P(ThreadSafeString, BuildFromUTF8FollowsTheEnvironment) {
    QORSysTSUnicodeString s("old");
    EXPECT_EQ(s.BuildFromUTF8("gr\u00fcn!", 5), 0);
    EXPECT_EQ(BlockOf(s)->IsWide(), !IsUTF8());
    EXPECT_EQ(UTF16Of(s), u"gr\u00fcn");
    EXPECT_EQ(s.BuildFromUTF8("abc", 0), 0);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    s = "old";
    EXPECT_EQ(s.BuildFromUTF8(nullptr, 3), 0);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

TEST_P(ThreadSafeString, ReadsInBothEncodings) {
    const QORSysTSUnicodeString narrow(IsUTF8() ? "gr\u00fcn" : "gr\xfcn");
    const QORSysTSUnicodeString wide = WideString(u"gr\u00fcn");
    EXPECT_EQ(narrow.GetLengthInByte(), IsUTF8() ? 5 : 4);
    EXPECT_EQ(wide.GetLengthInByte(), IsUTF8() ? 5 : 4);
    EXPECT_EQ(narrow.GetLengthInChar(), 4);
    EXPECT_EQ(wide.GetLengthInChar(), 4);
    EXPECT_STREQ(wide.ConvertToChar(), narrow.ConvertToChar());
    EXPECT_EQ(UTF16Of(narrow), UTF16Of(wide));
    EXPECT_EQ(narrow.HashFunc(), wide.HashFunc());
    EXPECT_EQ(QORSysTSUnicodeString("abc").HashFunc(), 136518u);
}

TEST_P(ThreadSafeString, GetBinDumpGivesTheUnitsAndTheirBytes) {
    unsigned int byteCount = 77;
    const QORSysTSUnicodeString wide = WideString(u"a\U0001F600");
    EXPECT_EQ(wide.GetBinDump(byteCount), wide.ConvertToUCChar());
    EXPECT_EQ(byteCount, 6u);
    const QORSysTSUnicodeString narrow("abc");
    EXPECT_EQ(Units(narrow.GetBinDump(byteCount), 3), u"abc");
    EXPECT_EQ(byteCount, 6u);
    const QORSysTSUnicodeString empty;
    empty.GetBinDump(byteCount);
    EXPECT_EQ(byteCount, 0u);
}

TEST_P(ThreadSafeString, ConvertToUTF8WritesOrMeasures) {
    const GuardedMemory memory(100);
    const QORSysTSUnicodeString wide = WideString(u"\u20ac\u20ac\u20ac");
    unsigned long n = 77;
    EXPECT_EQ(wide.ConvertToUTF8(memory.AtEnd<char>(9), &n), 0);
    EXPECT_EQ(std::string(memory.AtEnd<char>(9), n), "\u20ac\u20ac\u20ac");
    EXPECT_EQ(wide.ConvertToUTF8(nullptr, &n), 0);
    EXPECT_EQ(n, 15u);
    EXPECT_EQ(wide.ConvertToUTF8(nullptr, nullptr), 0);
    EXPECT_EQ(QORSysTSUnicodeString("12345678").ConvertToUTF8(nullptr, &n), 0);
    EXPECT_EQ(n, 8u);
    EXPECT_EQ(QORSysTSUnicodeString().ConvertToUTF8(nullptr, &n), 0);
    EXPECT_EQ(n, 0u);
}

INSTANTIATE_TEST_SUITE_P(Environments, ThreadSafeString, testing::Values(StringEnvironment::UTF8, OneToOne),
                         StringEnvironment::NameOf);
