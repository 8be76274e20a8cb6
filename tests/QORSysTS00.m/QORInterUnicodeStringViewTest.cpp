/// @file
/// The second view of a block: when it is built, how large it is, how long it lives.

#include "Child.h"
#include "HeapLog.h"
#include "QORInterUnicodeString.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "TestHarness.h"
#include "UnicodeTexts.h"
#include "VELString.h"
#include "VELSysCodePage.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;
using StringEnvironment::OneToOne;
using StringEnvironment::UseCodePage;
using testing::ElementsAre;
using testing::HasSubstr;

std::u16string UTF16Of(const Str* block) {
    return Units(block->_GetUTF16Text(), block->_GetUTF16Length());
}

std::string BytesOf(const Str* block) {
    return {block->_GetMBCSText(), static_cast<std::size_t>(block->_GetMBCSLength())};
}

/// A narrow block in two hands.
Block NewSharedNarrow() {
    const Block block = NewNarrow("abc");
    Share(block);
    return block;
}

} // namespace

class View : public StringEnvironment::InBoth {};

TEST_P(View, HoldsTheOtherEncodingTerminated) {
    const Owner narrow(NewNarrow(IsUTF8() ? "gr\u00fcn" : "gr\xfcn"));
    const Str::View utf16 = narrow->_GetUTF16View();
    EXPECT_EQ(utf16->_length, 4);
    EXPECT_EQ(Units(utf16->UTF16(), 5), std::u16string(u"gr\u00fcn\0", 5));
    const Owner wide(NewWide(u"gr\u00fcn"));
    const Str::View bytes = wide->_GetMBCSView();
    EXPECT_EQ(bytes->_length, IsUTF8() ? 5 : 4);
    EXPECT_STREQ(bytes->Narrow(), narrow->Text());
}

TEST_P(View, IsBuiltOnceAndStaysWhereItIs) {
    const Owner narrow(NewNarrow("abc"));
    EXPECT_EQ(narrow->_secondView, nullptr);
    const Str::View first = narrow->_GetUTF16View();
    const HeapLog log;
    EXPECT_EQ(narrow->_GetUTF16View(), first);
    EXPECT_EQ(narrow->_secondView, first);
    EXPECT_EQ(narrow->_GetUTF16Text(), first->UTF16());
    const Owner wide(NewWide(u"abc"));
    EXPECT_EQ(wide->_GetMBCSView(), wide->_GetMBCSView());
    EXPECT_EQ(wide->_GetMBCSText(), wide->_secondView.load()->Narrow());
    EXPECT_LE(log.Requests().size(), 2u) << "the wide block and its view";
}

TEST_P(View, TextInItsOwnRepresentationNeedsNone) {
    const Owner narrow(NewNarrow("abc"));
    EXPECT_EQ(narrow->_GetMBCSText(), narrow->Text());
    EXPECT_EQ(narrow->_GetMBCSLength(), 3);
    EXPECT_EQ(narrow->_secondView, nullptr);
    const Owner wide(NewWide(u"abc"));
    EXPECT_EQ(wide->_GetUTF16Text(), wide->Wide());
    EXPECT_EQ(wide->_GetUTF16Length(), 3);
    EXPECT_EQ(wide->_secondView, nullptr);
}

TEST_P(View, ANarrowTextOfLengthZeroHasItsUTF16LengthWithoutOne) {
    const Owner narrow(NewNarrow(""));
    ASSERT_NE(narrow.Get(), Str::Empty());
    EXPECT_EQ(narrow->_GetUTF16Length(), 0);
    EXPECT_EQ(narrow->_secondView, nullptr);
    EXPECT_EQ(narrow->_GetUTF16Text()[0], 0);
}

TEST_P(View, AWideTextOfLengthZeroHasItsByteLengthByOne) {
    const Owner wide(NewWide(u""));
    EXPECT_EQ(wide->_GetMBCSLength(), 0);
    EXPECT_NE(wide->_secondView, nullptr);
    EXPECT_STREQ(wide->_GetMBCSText(), "");
}

TEST_P(View, TakesRoomForOneUnitPerByteAndATerminator) {
    VELStringPoolSetForCurrentThrd(0);
    for (int length = 1; length < 60; ++length) {
        const Owner narrow(NewNarrow(std::string(static_cast<std::size_t>(length), 'a')));
        const HeapLog log;
        narrow->_GetUTF16View();
        ASSERT_THAT(log.Requests(),
                    ElementsAre(StringPool::GrantedSize((static_cast<std::size_t>(length) + 1) * 2 + 4)));
    }
}

// A converter may write four bytes for each unit, however short its longest character is said to be.
TEST_P(View, TakesRoomForTheLongestCharacterPerUnitAndForFourBytesAtLeast) {
    VELStringPoolSetForCurrentThrd(0);
    for (const long said : {1, 3, 4, 6}) {
        UseCodePage(GetParam(), said);
        const std::size_t longest = IsUTF8() ? 4 : std::max<std::size_t>(static_cast<std::size_t>(said), 4);
        for (std::size_t length = 1; length < 60; ++length) {
            const Owner wide(NewWide(std::u16string(length, u'a')));
            const HeapLog log;
            wide->_GetMBCSView();
            ASSERT_THAT(log.Requests(), ElementsAre(StringPool::GrantedSize(length * longest + 1 + 4)));
        }
    }
}

TEST_P(View, ComesFromThePoolAndGoesToTheHeap) {
    VEL::internal::EnsureStringPool();
    VELStringPoolFlush();
    // A request of (3 + 1) * 2 + 4 bytes.
    void* const pooled = std::malloc(StringPool::GrantedSize(12));
    VEL::internal::t_stringPool.Give(pooled, 12);
    const Owner narrow(NewNarrow("abc"));
    const HeapLog log;
    EXPECT_EQ(static_cast<void*>(narrow->_GetUTF16View()), pooled);
    EXPECT_EQ(VEL::internal::t_stringPool.buckets[1].count, 0u);
    narrow->_MarkChanged();
    EXPECT_THAT(log.Freed(), ElementsAre(pooled));
    EXPECT_EQ(VEL::internal::t_stringPool.buckets[1].count, 0u);
}

TEST_P(View, TheSlowerOfTwoBuildersGivesItsOwnBackAndTakesTheOthers) {
    VEL::internal::EnsureStringPool();
    for (const bool isWide : {false, true}) {
        VELStringPoolFlush();
        const Owner block(isWide ? NewWide(u"abc") : NewNarrow("abc"));
        const auto build = [&] { return isWide ? block->_GetMBCSView() : block->_GetUTF16View(); };
        Str::View faster = nullptr;
        const HeapLog log;
        InsideNextRequest([&] { faster = build(); });
        const Str::View view = build();
        EXPECT_NE(faster, nullptr);
        EXPECT_EQ(view, faster);
        EXPECT_EQ(block->_secondView, faster);
        EXPECT_EQ(log.Requests().size(), 2u);
        EXPECT_THAT(log.Freed(), testing::IsEmpty()) << "the loser's room is pooled";
        const auto& buckets = VEL::internal::t_stringPool.buckets;
        // By its granted size: 16 bytes for the units; for the bytes 24, with four to a character.
        EXPECT_EQ(buckets[isWide ? 2 : 1].count, 1u);
    }
}

TEST_P(View, AFailureToBuildIsReported) {
    const Owner narrow(NewNarrow(std::string(1000, 'a')));
    const Owner wide(NewWide(std::u16string(1000, u'a')));
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_EQ(narrow->_GetUTF16View(), nullptr);
        EXPECT_EQ(DebugBreaks(), 1);
        EXPECT_EQ(wide->_GetMBCSView(), nullptr);
        EXPECT_EQ(DebugBreaks(), 2);
    }
    EXPECT_EQ(UTF16Of(narrow.Get()).size(), 1000u) << "the next reader finds memory";
    EXPECT_EQ(BytesOf(wide.Get()).size(), 1000u);
}

TEST_P(View, IsFreedWhenTheTextOfABlockAloneChanges) {
    const Owner narrow(NewNarrow("abc"));
    const Str::View view = narrow->_GetUTF16View();
    const HeapLog log;
    narrow->Text()[0] = 'x';
    narrow->_MarkChanged();
    EXPECT_THAT(log.Freed(), ElementsAre(view));
    EXPECT_EQ(narrow->_secondView, nullptr);
    EXPECT_EQ(UTF16Of(narrow.Get()), u"xbc");
}

TEST_P(View, OfASharedBlockIsAbandonedNotFreed) {
    const Owner first(NewSharedNarrow());
    const Owner second(first.Get());
    const Str::View view = first->_GetUTF16View();
    const HeapLog log;
    first->_MarkChanged();
    EXPECT_EQ(first->_secondView, nullptr);
    EXPECT_THAT(log.Freed(), testing::IsEmpty());
    EXPECT_EQ(Units(view->UTF16(), view->_length), u"abc");
    std::free(view);
}

TEST_P(View, ChangingWithoutOneOnlyMakesTheHashStale) {
    const Owner block(NewWide(u"abc"));
    block->_GetHash();
    const HeapLog log;
    block->_MarkChanged();
    block->_MarkChanged();
    EXPECT_EQ(block->_flags, 3);
    EXPECT_THAT(log.Freed(), testing::IsEmpty());
    block->_DeleteSecondView();
    EXPECT_THAT(log.Freed(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Environments, View, testing::Values(StringEnvironment::UTF8, OneToOne),
                         StringEnvironment::NameOf);

// What doesn't fit is seen by AddressSanitizer.

TEST(ViewRoom, HoldsTheLongestTextOfAnyUnits) {
    UnicodeTexts::Source source(7);
    const VELSysCodePage utf8("UTF-8");
    for (int round = 0; round < 3000; ++round) {
        std::u16string text(source.Below(60) + 1, u'\0');
        for (char16_t& unit : text) {
            const unsigned int kind = static_cast<unsigned int>(round) % 4;
            unit = kind == 0   ? static_cast<char16_t>(0xD800 + source.Below(0x800))
                   : kind == 1 ? u'\uffff'
                   : kind == 2 ? u'\xd83d'
                               : static_cast<char16_t>(source.TellingUnit());
        }
        const Owner wide(NewWide(text));
        std::vector<char> expected(text.size() * 4 + 1);
        int length = 0;
        utf8.ConvertUTF16ToMBCS(wide->Wide(), wide->_length, expected.data(), &length);
        ASSERT_EQ(BytesOf(wide.Get()), std::string(expected.data(), static_cast<std::size_t>(length)));
        ASSERT_EQ(wide->_GetMBCSText()[length], 0);
    }
}

TEST(ViewRoom, HoldsTheLongestTextOfAnyBytes) {
    UnicodeTexts::Source source(11);
    const VELSysCodePage utf8("UTF-8");
    for (int round = 0; round < 3000; ++round) {
        std::string text =
            source.Text(UnicodeTexts::AllKinds[static_cast<std::size_t>(round) % 6], source.Below(60) + 1);
        if (round % 2 == 0) {
            for (char& byte : text) {
                byte = source.Below(3) == 0 ? source.TellingByte() : byte;
            }
        }
        const Owner narrow(NewNarrow(text));
        // What the converter makes of the text in the room of its length and one more.
        std::vector<unsigned short> expected(text.size() + 2);
        const char* from = text.c_str();
        unsigned long left = text.size();
        const int length = utf8.ConvertMBCSToUTF16(from, left, expected.data(), text.size() + 1);
        ASSERT_EQ(UTF16Of(narrow.Get()), Units(expected.data(), length));
        ASSERT_EQ(narrow->_GetUTF16Text()[length], 0);
    }
}

// The converter works in a room, and its way of working in one makes a zero unit of each such byte.
TEST(ViewRoom, BytesOfACharacterCutOffAtTheEndBecomeZeroUnits) {
    for (const std::string& text : {std::string("abc\xc3"), std::string("abcd\xe2\x82"), std::string("\x80")}) {
        const Owner narrow(NewNarrow(text));
        std::u16string expected;
        for (const char byte : text) {
            expected += byte > 0 ? static_cast<char16_t>(byte) : u'\0';
        }
        EXPECT_EQ(UTF16Of(narrow.Get()), expected);
    }
}

TEST(ViewRoom, HoldsOneByteForEachUnitWhateverTheLongestCharacterIsSaidToBe) {
    for (const long longest : {1L, 2L, 0L, -1L}) {
        UseCodePage(OneToOne, longest);
        for (std::size_t length = 1; length < 100; ++length) {
            const Owner wide(NewWide(std::u16string(length, u'\u00fc')));
            ASSERT_EQ(BytesOf(wide.Get()), std::string(length, '\xfc')) << longest;
        }
    }
}

TEST(ViewRoom, UnitsAreCutToTheirLowBytesWithoutAConverter) {
    UseCodePage(OneToOne);
    const Owner wide(NewWide(u"\u20ac\u0141"));
    EXPECT_EQ(BytesOf(wide.Get()), "\xac\x41");
    const Owner narrow(NewNarrow("\x80\xff\x41"));
    EXPECT_EQ(UTF16Of(narrow.Get()), std::u16string(u"\u0080\u00ff\u0041"));
}

TEST(ViewRoom, ZeroUnitsAreText) {
    const Owner wide(NewWide(std::u16string(u"a\0b", 3)));
    EXPECT_EQ(BytesOf(wide.Get()), std::string("a\0b", 3));
    const Owner narrow(NewNarrow(std::string("a\0bcdef", 7)));
    EXPECT_EQ(UTF16Of(narrow.Get()), std::u16string(u"a\0bcdef", 7));
}

// Under the test harness.

CHILD_PROGRAM(DropsTheViewOfASharedBlock) {
    const Block block = NewSharedNarrow();
    block->_GetUTF16View();
    block->_MarkChanged();
    std::puts("went on");
    return 0;
}

CHILD_PROGRAM(DeletesTheMissingViewOfASharedBlock) {
    NewSharedNarrow()->_DeleteSecondView();
    std::puts("went on");
    return 0;
}

CHILD_PROGRAM(DropsTheViewOfABlockAlone) {
    const Block block = NewNarrow("abc");
    block->_GetUTF16View();
    block->_MarkChanged();
    const bool dropped = block->_secondView == nullptr;
    Str::_Release(block);
    std::puts(dropped ? "dropped" : "kept");
    return 0;
}

CHILD_PROGRAM(ComesUnderTheHarnessTooLate) {
    const bool before = VEL::internal::IsInRTX();
    setenv("KVT_RTX_IN", "1", 1);
    std::printf("%d %d\n", before, VEL::internal::IsInRTX());
    return 0;
}

struct HarnessRow {
    const char* program;
    std::optional<const char*> variable;
    friend void PrintTo(const HarnessRow& row, std::ostream* out) {
        *out << row.program << " " << row.variable.value_or("without");
    }
};

class UnderTheHarness : public testing::TestWithParam<HarnessRow> {};

TEST_P(UnderTheHarness, DroppingTheViewOfASharedBlockFailsAnAssertion) {
    const Child child = RunChild(GetParam().program, {.set = {{"KVT_RTX_IN", GetParam().variable.value()}}});
    EXPECT_EQ(child.signal, SIGABRT);
    EXPECT_EQ(child.out, "");
    EXPECT_THAT(child.err,
                HasSubstr("void QORInterUnicodeString::_DeleteSecondView() const: Assertion `!IsInRTX()' failed."));
}

INSTANTIATE_TEST_SUITE_P(Rows, UnderTheHarness,
                         testing::Values(HarnessRow{"DropsTheViewOfASharedBlock", "1"},
                                         HarnessRow{"DropsTheViewOfASharedBlock", ""},
                                         HarnessRow{"DropsTheViewOfASharedBlock", "0"},
                                         HarnessRow{"DeletesTheMissingViewOfASharedBlock", "1"}));

TEST(Harness, LetsTheViewOfABlockAloneGo) {
    const Child child = RunChild("DropsTheViewOfABlockAlone", {.set = {{"KVT_RTX_IN", "1"}}});
    EXPECT_EQ(child.out, "dropped\n");
    EXPECT_EQ(child.exitCode, 0);
}

TEST(Harness, IsLookedForOncePerProcess) {
    const Child child = RunChild("ComesUnderTheHarnessTooLate");
    EXPECT_EQ(child.out, "0 0\n");
}
