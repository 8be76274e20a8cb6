#include "QORInterUnicodeString.h"

#include "HeapLog.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"
#include "VELSysCodePage.h"
#include "VELSysUCAlgorithm.h"

#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;
using testing::ElementsAre;

Block New(bool isWide, int length) {
    return isWide ? Str::_NewWide(length) : Str::_NewNarrow(length);
}

Block Digits(bool isWide) {
    return isWide ? NewWide(u"0123456789") : NewNarrow("0123456789");
}

std::string DigitsOf(const Str* block) {
    const std::u16string wide = block->IsWide() ? Wide(block) : std::u16string();
    return block->IsWide() ? std::string(wide.begin(), wide.end()) : Narrow(block);
}

/// Builds the second view, whichever it is.
Str::View ViewOf(const Str* block) {
    return block->IsWide() ? block->_GetMBCSView() : block->_GetUTF16View();
}

bool IsTerminated(const Str* block) {
    return block->IsWide() ? block->Wide()[block->_length] == 0 : block->Text()[block->_length] == 0;
}

template <class T>
T FieldAt(const Str* block, std::size_t offset) {
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(block) + offset, sizeof value);
    return value;
}

} // namespace

struct CapacityRow {
    bool isWide;
    int length;
    std::size_t request;
    int capacity;
    friend void PrintTo(const CapacityRow& row, std::ostream* out) {
        *out << (row.isWide ? "wide " : "narrow ") << row.length;
    }
};

class NewBlock : public testing::TestWithParam<CapacityRow> {};

TEST_P(NewBlock, TakesTheGrantedSizeAndHasItAsCapacity) {
    const auto [isWide, length, request, capacity] = GetParam();
    VELStringPoolSetForCurrentThrd(0);
    const HeapLog log;
    const Owner block(New(isWide, length));
    EXPECT_THAT(log.Requests(), ElementsAre(request));
    EXPECT_EQ(block->_capacity, capacity);
    EXPECT_EQ(block->_length, length);
}

INSTANTIATE_TEST_SUITE_P(Rows, NewBlock,
                         testing::Values(CapacityRow{false, 1, 32, 6}, CapacityRow{false, 5, 32, 6},
                                         CapacityRow{false, 6, 40, 14}, CapacityRow{false, 69, 96, 70},
                                         CapacityRow{false, 70, 104, 78}, CapacityRow{true, 1, 32, 3},
                                         CapacityRow{true, 2, 32, 3}, CapacityRow{true, 3, 40, 7},
                                         CapacityRow{true, 34, 96, 35}, CapacityRow{true, 35, 104, 39}));

TEST(QORInterUnicodeString, CapacityFollowsFromTheLength) {
    for (const bool isWide : {false, true}) {
        for (int length = 1; length < 1000; ++length) {
            const Owner block(New(isWide, length));
            ASSERT_EQ(block->_capacity, CapacityFor(isWide, length)) << isWide << " " << length;
            ASSERT_TRUE(IsTerminated(block.Get()));
        }
    }
}

TEST(QORInterUnicodeString, KeepsItsFieldsWithoutGaps) {
    const Owner narrow(NewNarrow("a"));
    EXPECT_EQ(FieldAt<void*>(narrow.Get(), 0), nullptr);
    EXPECT_EQ(FieldAt<int>(narrow.Get(), 8), 1);
    EXPECT_EQ(FieldAt<int>(narrow.Get(), 12), 6);
    EXPECT_EQ(FieldAt<unsigned int>(narrow.Get(), 16), 0u);
    EXPECT_EQ(FieldAt<int>(narrow.Get(), 20), 1);
    EXPECT_EQ(FieldAt<unsigned short>(narrow.Get(), 24), 2);
    EXPECT_EQ(FieldAt<char>(narrow.Get(), 26), 'a');
    EXPECT_EQ(FieldAt<char>(narrow.Get(), 27), 0);
    const Owner wide(NewWide(u"\u20ac"));
    EXPECT_EQ(FieldAt<int>(wide.Get(), 12), 3);
    EXPECT_EQ(FieldAt<unsigned short>(wide.Get(), 24), 3);
    EXPECT_EQ(FieldAt<unsigned short>(wide.Get(), 26), 0x20AC);
    EXPECT_EQ(FieldAt<unsigned short>(wide.Get(), 28), 0);
}

TEST(QORInterUnicodeString, HandleAndBlockLeadToEachOther) {
    const Owner block(NewNarrow("text"));
    const QORUnicodeString s = StringOn<QORUnicodeString>(NewNarrow("other"));
    EXPECT_EQ(Str::FromText(block->Text()), block.Get());
    EXPECT_EQ(block->Text() - reinterpret_cast<char*>(block.Get()), 26);
    char* handle;
    std::memcpy(&handle, &s, sizeof handle);
    EXPECT_STREQ(handle, "other") << "the object is a pointer to its text";
}

TEST(QORInterUnicodeString, LengthsBelowOneGiveTheEmptyBlock) {
    for (const int length : {0, -1, -1000, INT_MIN}) {
        EXPECT_EQ(Str::_NewNarrow(length), Str::Empty());
        EXPECT_EQ(Str::_NewWide(length), Str::Empty());
    }
}

TEST(QORInterUnicodeString, ABlockThatNoMemoryCanHoldIsTheEmptyBlock) {
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(Str::_NewNarrow(1000), Str::Empty());
    EXPECT_EQ(Str::_NewWide(1000), Str::Empty());
    EXPECT_EQ(Str::_NewNarrow(INT_MAX), Str::Empty());
    EXPECT_EQ(Str::_NewWide(INT_MAX), Str::Empty());
}

TEST(QORInterUnicodeString, TheEmptyBlockIsNarrowAndHasAnEmptyView) {
    const Block empty = Str::Empty();
    EXPECT_EQ(empty->_length, 0);
    EXPECT_EQ(empty->_capacity, 0);
    EXPECT_EQ(empty->_refCount, 1);
    EXPECT_EQ(empty->_flags, 0);
    ASSERT_NE(empty->_secondView, nullptr);
    EXPECT_EQ(empty->_secondView.load()->_length, 0);
    EXPECT_EQ(empty->_secondView.load()->UTF16()[0], 0);
    EXPECT_EQ(empty->Text()[0], 0);
    EXPECT_EQ(empty->_GetUTF16View(), empty->_secondView);
    EXPECT_EQ(empty->_GetUTF16Length(), 0);
    EXPECT_EQ(empty->_GetMBCSLength(), 0);
}

TEST(QORInterUnicodeString, ClearingMakesTheEmptyViewAnEmptyText) {
    const Str::View view = Str::Empty()->_secondView;
    view->_length = 5;
    view->_text[0] = 0x4142;
    view->_text[1] = 0x4344;
    VEL::internal::ClearEmptyView();
    EXPECT_EQ(view->_length, 0);
    EXPECT_EQ(view->UTF16()[0], 0);
    EXPECT_STREQ(view->Narrow(), "");
}

TEST(QORInterUnicodeString, TheEmptyBlockIsNeitherCountedNorFreed) {
    const HeapLog log;
    EXPECT_EQ(Str::_Release(Str::Empty()), -1);
    EXPECT_EQ(Str::_Release(Str::Empty()), -1);
    Share(Str::Empty());
    EXPECT_EQ(Str::Empty()->_refCount, 1);
    EXPECT_THAT(log.Freed(), testing::IsEmpty());
}

TEST(QORInterUnicodeString, ReleaseAnswersTheHandlesLeftAndFreesAtZero) {
    VELStringPoolSetForCurrentThrd(0);
    const Block block = NewNarrow("abc");
    const Str::View view = block->_GetUTF16View();
    Share(block);
    const HeapLog log;
    EXPECT_EQ(Str::_Release(block), 1);
    EXPECT_THAT(log.Freed(), testing::IsEmpty());
    EXPECT_EQ(block->_secondView, view) << "the last handle keeps the view";
    EXPECT_EQ(Str::_Release(block), 0);
    EXPECT_THAT(log.Freed(), ElementsAre(view, block));
}

TEST(QORInterUnicodeString, ReleaseFreesTheViewAndPoolsTheBlock) {
    VELStringPoolFlush();
    const Block block = NewNarrow("abc");
    const Str::View view = block->_GetUTF16View();
    const HeapLog log;
    EXPECT_EQ(Str::_Release(block), 0);
    EXPECT_THAT(log.Freed(), ElementsAre(view));
    EXPECT_EQ(static_cast<void*>(VEL::internal::t_stringPool.buckets[3].head), block);
}

struct ReturnRow {
    bool isWide;
    int length;
    int bucket; ///< -1 for the C library's heap.
    friend void PrintTo(const ReturnRow& row, std::ostream* out) {
        *out << (row.isWide ? "wide " : "narrow ") << row.length;
    }
};

class ReturnedBlock : public testing::TestWithParam<ReturnRow> {};

// A block goes back with its capacity plus the header as its size, also when the capacity counts 16-bit units.
TEST_P(ReturnedBlock, LandsInTheBucketOfItsCapacity) {
    const auto [isWide, length, bucket] = GetParam();
    VEL::internal::EnsureStringPool();
    VELStringPoolFlush();
    const Block block = New(isWide, length);
    const HeapLog log;
    Str::_Release(block);
    EXPECT_EQ(log.HasFreed(block), bucket < 0);
    for (int i = 0; i < static_cast<int>(StringPool::BucketCount); ++i) {
        const auto& at = VEL::internal::t_stringPool.buckets[i];
        EXPECT_EQ(at.count, i == bucket ? 1u : 0u) << i;
        EXPECT_EQ(static_cast<void*>(at.head), i == bucket ? block : nullptr) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ReturnedBlock,
                         testing::Values(ReturnRow{false, 1, 3}, ReturnRow{false, 6, 4}, ReturnRow{false, 69, 11},
                                         ReturnRow{false, 70, -1}, ReturnRow{true, 1, 3}, ReturnRow{true, 3, 4},
                                         ReturnRow{true, 7, 4}, ReturnRow{true, 34, 7}, ReturnRow{true, 35, 8},
                                         ReturnRow{true, 66, 11}, ReturnRow{true, 67, -1}));

// Writing bytes.

TEST(SetBytes, ReusesALargeEnoughNarrowBlockHeldAlone) {
    const Owner block(NewNarrow("ab"));
    block->_GetHash();
    const Str::View view = block->_GetUTF16View();
    const HeapLog log;
    EXPECT_EQ(Str::_SetBytes(block.Get(), "12345", 5), block.Get());
    EXPECT_EQ(Narrow(block.Get()), "12345");
    EXPECT_TRUE(IsTerminated(block.Get()));
    EXPECT_TRUE(IsStale(block.Get()));
    EXPECT_EQ(block->_secondView, nullptr);
    EXPECT_THAT(log.Freed(), ElementsAre(view));
    EXPECT_THAT(log.Requests(), testing::IsEmpty());
}

TEST(SetBytes, TakesANewBlockWhenTheTerminatorWouldNotFit) {
    const Block block = NewNarrow("ab");
    ASSERT_EQ(block->_capacity, 6);
    VELStringPoolSetForCurrentThrd(0);
    const HeapLog log;
    const Owner result(Str::_SetBytes(block, "123456", 6));
    EXPECT_NE(result.Get(), block);
    EXPECT_EQ(Narrow(result.Get()), "123456");
    EXPECT_EQ(result->_capacity, CapacityFor(false, 6));
    EXPECT_TRUE(IsTerminated(result.Get()));
    EXPECT_TRUE(IsStale(result.Get()));
    EXPECT_TRUE(log.HasFreed(block));
}

TEST(SetBytes, NeverWritesASharedBlock) {
    const Owner other(NewNarrow("abc"));
    Share(other.Get());
    const Owner result(Str::_SetBytes(other.Get(), "1", 1));
    EXPECT_NE(result.Get(), other.Get());
    EXPECT_EQ(Narrow(result.Get()), "1");
    EXPECT_EQ(Narrow(other.Get()), "abc");
    EXPECT_EQ(other->_refCount, 1);
}

TEST(SetBytes, ReplacesAWideBlockByANarrowOne) {
    const Block block = NewWide(u"abcdefgh");
    VELStringPoolSetForCurrentThrd(0);
    const HeapLog log;
    const Owner result(Str::_SetBytes(block, "1", 1));
    EXPECT_EQ(result->_flags, Str::StaleFlag);
    EXPECT_EQ(Narrow(result.Get()), "1");
    EXPECT_TRUE(log.HasFreed(block));
}

TEST(SetBytes, NullGivesTheEmptyBlockAndReleasesTheOld) {
    const Owner shared(NewNarrow("abc"));
    Share(shared.Get());
    EXPECT_EQ(Str::_SetBytes(shared.Get(), nullptr, 3), Str::Empty());
    EXPECT_EQ(shared->_refCount, 1);
    EXPECT_EQ(Str::_SetBytes(Str::Empty(), nullptr, -1), Str::Empty());
}

TEST(SetBytes, ANegativeLengthMeansUpToTheTerminator) {
    for (const int length : {-1, -2, INT_MIN}) {
        const Owner block(Str::_SetBytes(Str::Empty(), "text", length));
        EXPECT_EQ(Narrow(block.Get()), "text");
    }
}

TEST(SetBytes, TakesZeroBytesWithinTheLength) {
    const Owner block(Str::_SetBytes(Str::Empty(), "a\0b\0", 4));
    EXPECT_EQ(Narrow(block.Get()), std::string("a\0b\0", 4));
}

TEST(SetBytes, NoBytesKeepANarrowBlockHeldAlone) {
    for (const int length : {0, -1}) {
        const Owner block(NewNarrow("abc"));
        ASSERT_EQ(Str::_SetBytes(block.Get(), "", length), block.Get());
        EXPECT_EQ(block->_length, 0);
        EXPECT_EQ(block->_capacity, 6);
        EXPECT_TRUE(IsTerminated(block.Get()));
        EXPECT_NE(block.Get(), Str::Empty());
    }
}

TEST(SetBytes, NoBytesInPlaceOfASharedOrWideBlockGiveTheEmptyBlock) {
    const Owner shared(NewNarrow("abc"));
    Share(shared.Get());
    EXPECT_EQ(Str::_SetBytes(shared.Get(), "", 0), Str::Empty());
    EXPECT_EQ(shared->_refCount, 1);
    EXPECT_EQ(Str::_SetBytes(NewWide(u"abc"), "", 0), Str::Empty());
    EXPECT_EQ(Str::_SetBytes(Str::Empty(), "", 0), Str::Empty());
}

TEST(SetBytes, TakesBytesOutOfItsOwnText) {
    const Owner reused(NewNarrow("abcdef"));
    EXPECT_EQ(Str::_SetBytes(reused.Get(), reused->Text() + 2, 4), reused.Get());
    EXPECT_EQ(Narrow(reused.Get()), "cdef");

    const Owner shared(NewNarrow("abcdef"));
    Share(shared.Get());
    const Owner copy(Str::_SetBytes(shared.Get(), shared->Text() + 1, -1));
    EXPECT_EQ(Narrow(copy.Get()), "bcdef");
}

TEST(SetBytes, TakesBytesOutOfItsOwnView) {
    const Block wide = NewWide(u"abcdef");
    const Owner narrow(Str::_SetBytes(wide, wide->_GetMBCSText() + 1, -1));
    EXPECT_EQ(Narrow(narrow.Get()), "bcdef");
}

// Making room.

enum class Room { JustFits, JustNot, FarBeyond };

using EnsureCase = std::tuple<bool, bool, Room, bool, bool>;

std::string NameOfEnsureCase(const testing::TestParamInfo<EnsureCase>& info) {
    const auto [isWide, isShared, room, keep, grow] = info.param;
    const char* rooms[] = {"JustFits", "JustNot", "FarBeyond"};
    return std::string(isWide ? "Wide" : "Narrow") + (isShared ? "Shared" : "Alone") + rooms[static_cast<int>(room)] +
           (keep ? "Keep" : "") + (grow ? "Grow" : "");
}

class Ensure : public testing::TestWithParam<EnsureCase> {};

TEST_P(Ensure, FollowsItsTable) {
    const auto [isWide, isShared, room, keep, grow] = GetParam();
    VELStringPoolSetForCurrentThrd(0);
    const Block block = Digits(isWide);
    block->_GetHash();
    const Str::View view = ViewOf(block);
    if (isShared) {
        Share(block);
    }
    const int capacity = block->_capacity;
    ASSERT_EQ(capacity, isWide ? 11 : 14);
    const int length = room == Room::JustFits ? capacity - 1 : room == Room::JustNot ? capacity : 200;

    HeapLog log;
    const Owner result(isWide ? Str::_EnsureWide(block, length, keep, grow)
                              : Str::_EnsureNarrow(block, length, keep, grow));
    if (!isShared && room == Room::JustFits) {
        ASSERT_EQ(result.Get(), block);
        EXPECT_THAT(log.Requests(), testing::IsEmpty());
        EXPECT_EQ(block->_capacity, capacity);
        EXPECT_EQ(block->_length, 10);
        EXPECT_EQ(block->_secondView, keep ? view : nullptr);
        EXPECT_EQ(IsStale(block), !keep);
        EXPECT_EQ(log.HasFreed(view), !keep);
        return;
    }

    ASSERT_NE(result.Get(), block);
    // 1.5 times 11 is cut to 16.
    const int grown = isWide ? 16 : 21;
    const int expected = room != Room::JustFits && grow ? std::max(length, grown) : length;
    EXPECT_EQ(result->_capacity, CapacityFor(isWide, expected));
    EXPECT_EQ(result->_length, keep ? 10 : expected);
    EXPECT_TRUE(IsTerminated(result.Get()));
    EXPECT_EQ(result->_refCount, 1);
    EXPECT_EQ(result->_secondView, nullptr);
    EXPECT_EQ(result->_flags, isWide ? 3 : 2);
    if (keep) {
        EXPECT_EQ(DigitsOf(result.Get()), "0123456789");
    }
    EXPECT_EQ(log.HasFreed(block), !isShared);
    EXPECT_EQ(log.HasFreed(view), !isShared);
    if (isShared) {
        EXPECT_EQ(block->_refCount, 1);
        EXPECT_EQ(DigitsOf(block), "0123456789");
        EXPECT_EQ(block->_secondView, view);
        EXPECT_FALSE(IsStale(block));
        Str::_Release(block);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Ensure,
                         testing::Combine(testing::Bool(), testing::Bool(),
                                          testing::Values(Room::JustFits, Room::JustNot, Room::FarBeyond),
                                          testing::Bool(), testing::Bool()),
                         NameOfEnsureCase);

class EnsureOfEither : public testing::TestWithParam<bool> {
protected:
    Block Call(Block block, int length, bool keep, bool grow) const {
        return GetParam() ? Str::_EnsureWide(block, length, keep, grow) : Str::_EnsureNarrow(block, length, keep, grow);
    }
};

TEST_P(EnsureOfEither, ASharedBlockIsCutToTheRoomAskedFor) {
    for (const bool grow : {false, true}) {
        const Owner shared(Digits(GetParam()));
        Share(shared.Get());
        const Owner result(Call(shared.Get(), 4, true, grow));
        EXPECT_EQ(DigitsOf(result.Get()), "0123");
        EXPECT_EQ(result->_capacity, CapacityFor(GetParam(), 4));
        EXPECT_TRUE(IsTerminated(result.Get()));
        EXPECT_EQ(DigitsOf(shared.Get()), "0123456789");
    }
}

TEST_P(EnsureOfEither, ASharedBlockOfNoRoomIsTheEmptyBlock) {
    const Owner shared(Digits(GetParam()));
    Share(shared.Get());
    EXPECT_EQ(Call(shared.Get(), 0, true, false), Str::Empty());
    EXPECT_EQ(shared->_refCount, 1);
}

TEST_P(EnsureOfEither, ANegativeRoomIsNone) {
    for (const int length : {-1, -1000, INT_MIN}) {
        for (const bool grow : {false, true}) {
            for (const bool keep : {false, true}) {
                const Owner shared(Digits(GetParam()));
                Share(shared.Get());
                EXPECT_EQ(Call(shared.Get(), length, keep, grow), Str::Empty());
                EXPECT_EQ(shared->_refCount, 1);
                EXPECT_EQ(DigitsOf(shared.Get()), "0123456789");
                EXPECT_EQ(Call(shared.Get(), length, keep, grow), shared.Get()) << "alone, it has room for none";
                EXPECT_EQ(DigitsOf(shared.Get()), "0123456789");
                EXPECT_EQ(Call(Str::Empty(), length, keep, grow), Str::Empty());
            }
        }
    }
}

TEST_P(EnsureOfEither, TheEmptyBlockIsAlwaysTooSmall) {
    for (const bool grow : {false, true}) {
        const Owner kept(Call(Str::Empty(), 10, true, grow));
        EXPECT_EQ(kept->_length, 0) << "there was no text to keep";
        EXPECT_EQ(kept->_capacity, CapacityFor(GetParam(), 10));
        EXPECT_EQ(kept->IsWide(), GetParam());
        EXPECT_TRUE(IsTerminated(kept.Get()));
        const Owner fresh(Call(Str::Empty(), 10, false, grow));
        EXPECT_EQ(fresh->_length, 10);
        EXPECT_EQ(Call(Str::Empty(), 0, true, grow), Str::Empty());
    }
    EXPECT_EQ(Str::Empty()->_flags, 0);
    EXPECT_EQ(Str::Empty()->_refCount, 1);
}

TEST_P(EnsureOfEither, WithoutMemoryTheResultIsTheEmptyBlockAndTheOldOneGoes) {
    VELStringPoolSetForCurrentThrd(0);
    const Block block = Digits(GetParam());
    const HeapLog log;
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(Call(block, 100, true, true), Str::Empty());
    EXPECT_TRUE(log.HasFreed(block));
    EXPECT_EQ(Str::Empty()->_length, 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, EnsureOfEither, testing::Bool());

// From one representation to the other.

TEST(ToWide, TakesExactlyTheRoomAskedForAndTheTextThatFits) {
    struct Row {
        int length;
        bool keep;
        std::u16string text;
    };
    for (const Row& row : {Row{4, true, u"gr\u00fcn"}, Row{9, true, u"gr\u00fcn"}, Row{2, true, u"gr"}}) {
        VELStringPoolSetForCurrentThrd(0);
        const Block narrow = NewNarrow("gr\u00fcn");
        const HeapLog log;
        const Owner wide(Str::_ToWide(narrow, row.length, row.keep));
        EXPECT_EQ(Wide(wide.Get()), row.text);
        EXPECT_TRUE(IsTerminated(wide.Get()));
        EXPECT_EQ(wide->_capacity, CapacityFor(true, row.length));
        EXPECT_EQ(wide->_flags, 3);
        EXPECT_EQ(wide->_refCount, 1);
        EXPECT_TRUE(log.HasFreed(narrow));
    }
}

TEST(ToNarrow, TakesExactlyTheRoomAskedForAndTheTextThatFits) {
    struct Row {
        int length;
        std::string text;
    };
    for (const Row& row : {Row{5, "gr\u00fcn"}, Row{9, "gr\u00fcn"}, Row{2, "gr"}}) {
        VELStringPoolSetForCurrentThrd(0);
        const Block wide = NewWide(u"gr\u00fcn");
        const HeapLog log;
        const Owner narrow(Str::_ToNarrow(wide, row.length, true));
        EXPECT_EQ(Narrow(narrow.Get()), row.text);
        EXPECT_TRUE(IsTerminated(narrow.Get()));
        EXPECT_EQ(narrow->_capacity, CapacityFor(false, row.length));
        EXPECT_EQ(narrow->_flags, 2);
        EXPECT_TRUE(log.HasFreed(wide));
    }
}

TEST(ToTheOther, WithoutKeepingBuildsNoViewAndLeavesTheLength) {
    const Owner narrow(NewNarrow("abc"));
    Share(narrow.Get());
    const Owner wide(Str::_ToWide(narrow.Get(), 7, false));
    EXPECT_EQ(wide->_length, 7);
    EXPECT_EQ(narrow->_secondView, nullptr);
    Share(wide.Get());
    const Owner back(Str::_ToNarrow(wide.Get(), 8, false));
    EXPECT_EQ(back->_length, 8);
    EXPECT_EQ(wide->_secondView, nullptr);
}

TEST(ToTheOther, ASharedBlockStaysWithTheOtherHandle) {
    const Owner narrow(NewNarrow("abc"));
    Share(narrow.Get());
    const Owner wide(Str::_ToWide(narrow.Get(), 3, true));
    EXPECT_EQ(narrow->_refCount, 1);
    EXPECT_EQ(Narrow(narrow.Get()), "abc");
    Share(wide.Get());
    const Owner back(Str::_ToNarrow(wide.Get(), 3, true));
    EXPECT_EQ(wide->_refCount, 1);
    EXPECT_EQ(Wide(wide.Get()), u"abc");
    EXPECT_EQ(Narrow(back.Get()), "abc");
}

TEST(ToTheOther, NoRoomGivesTheEmptyBlock) {
    EXPECT_EQ(Str::_ToWide(NewNarrow("abc"), 0, true), Str::Empty());
    EXPECT_EQ(Str::_ToNarrow(NewWide(u"abc"), 0, true), Str::Empty());
    EXPECT_EQ(Str::_ToWide(Str::Empty(), 0, true), Str::Empty());
    const Owner wide(Str::_ToWide(Str::Empty(), 5, true));
    EXPECT_EQ(wide->_length, 0);
    EXPECT_TRUE(wide->IsWide());
}

// Hash.

class Hash : public StringEnvironment::InBoth {};

TEST_P(Hash, IsThatOfTheUTF16TextWhateverTheRepresentation) {
    const Owner narrow(NewNarrow("abc"));
    const Owner wide(NewWide(u"abc"));
    EXPECT_EQ(narrow->_GetHash(), 136518u);
    EXPECT_EQ(wide->_GetHash(), 136518u);
    const Owner accented(NewNarrow(IsUTF8() ? "\u00e9\u00e8!" : "\xe9\xe8!"));
    const Owner accentedWide(NewWide(u"\u00e9\u00e8!"));
    EXPECT_EQ(accented->_GetHash(), accentedWide->_GetHash());
    EXPECT_EQ(accentedWide->_GetHash(), (0xe9u * 37 + 0xe8) * 37 + '!');
}

// In UTF-8 the two ways of hashing bytes differ in damage at the end of a text.
TEST_P(Hash, OfACutOffCharacterDependsOnTheCodePage) {
    const Owner block(NewNarrow("a\xC3"));
    EXPECT_EQ(block->_GetHash(), IsUTF8() ? 'a' * 37u + 0xC0 : 'a' * 37u + 0xC3);
}

TEST_P(Hash, KeepsThirtyOneBits) {
    int withHighBit = 0;
    for (std::size_t length = 1; length < 40; ++length) {
        const std::u16string text(length, u'z');
        const unsigned int full = VELSysUCAlgorithm::HashV3FromUCS2(Units(text.c_str()), length, 0);
        withHighBit += full >> 31 != 0 ? 1 : 0;
        const Owner wide(NewWide(text));
        const Owner narrow(NewNarrow(std::string(length, 'z')));
        ASSERT_EQ(wide->_GetHash(), full & 0x7FFFFFFFu);
        ASSERT_EQ(narrow->_GetHash(), full & 0x7FFFFFFFu);
    }
    EXPECT_GT(withHighBit, 5);
}

INSTANTIATE_TEST_SUITE_P(Environments, Hash, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(Hash, IsComputedOncePerContent) {
    for (const bool isWide : {false, true}) {
        const Owner block(Digits(isWide));
        ASSERT_TRUE(IsStale(block.Get()));
        const unsigned int hash = block->_GetHash();
        EXPECT_FALSE(IsStale(block.Get()));
        EXPECT_EQ(block->IsWide(), isWide) << "the other flag stays";
        EXPECT_EQ(block->_hash, hash);
        block->_hash = 42;
        EXPECT_EQ(block->_GetHash(), 42u) << "the cached value";
        block->_MarkChanged();
        EXPECT_TRUE(IsStale(block.Get()));
        EXPECT_EQ(block->_GetHash(), hash);
    }
}

TEST(Hash, OfTheEmptyBlockIsZero) {
    EXPECT_EQ(Str::Empty()->_GetHash(), 0u);
}

TEST(Hash, BuildsNoView) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    const Owner narrow(NewNarrow("abc\xe9"));
    const Owner wide(NewWide(u"abc\u00e9"));
    narrow->_GetHash();
    wide->_GetHash();
    EXPECT_EQ(wide->_secondView, nullptr);
}

// The word for debuggers.

TEST(FlagsForDebugger, FollowTheCodePageAndKeepTheOtherBits) {
    *s_pQUSFlagsForDebugger = 0xFFFFFFFFu;
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFFFFFCu);
    *s_pQUSFlagsForDebugger = 0xFFFFFFFFu;
    StringEnvironment::UseCodePage(StringEnvironment::UTF8);
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFFFFFDu);
    *s_pQUSFlagsForDebugger = 0;
    StringEnvironment::UseCodePage(StringEnvironment::UTF8);
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 1u);
}

TEST(FlagsForDebugger, AreSetWhenTheConverterIsMade) {
    *s_pQUSFlagsForDebugger = 0xF2;
    VELSysCodePage::GetEnvConverter();
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xF1u);
}
