#include "VELString.h"

#include "HeapLog.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;
using testing::ElementsAre;
using testing::IsEmpty;

template <class A, class B>
struct Pair {
    using To = A;
    using From = B;
};

using AllPairs = testing::Types<Pair<QORString, QORString>, Pair<QORString, QORUnicodeString>,
                                Pair<QORString, QORSysTSUnicodeString>, Pair<QORUnicodeString, QORString>,
                                Pair<QORUnicodeString, QORUnicodeString>, Pair<QORUnicodeString, QORSysTSUnicodeString>,
                                Pair<QORSysTSUnicodeString, QORString>, Pair<QORSysTSUnicodeString, QORUnicodeString>,
                                Pair<QORSysTSUnicodeString, QORSysTSUnicodeString>>;
using DifferentPairs =
    testing::Types<Pair<QORString, QORUnicodeString>, Pair<QORString, QORSysTSUnicodeString>,
                   Pair<QORUnicodeString, QORString>, Pair<QORUnicodeString, QORSysTSUnicodeString>,
                   Pair<QORSysTSUnicodeString, QORString>, Pair<QORSysTSUnicodeString, QORUnicodeString>>;

template <class String>
Block BlockOf(const String& s) {
    return StringAccess::BlockOf(s);
}

} // namespace

template <class Types>
class CopyBetween : public testing::Test {
protected:
    using To = typename Types::To;
    using From = typename Types::From;
};

TYPED_TEST_SUITE(CopyBetween, DifferentPairs);

TYPED_TEST(CopyBetween, SharesTheBlockAndReleasesTheOldOne) {
    VELStringPoolSetForCurrentThrd(0);
    const typename TestFixture::From from("text");
    typename TestFixture::To to("old");
    const Block block = BlockOf(from);
    const Block old = BlockOf(to);
    const HeapLog log;
    VEL::Copy(to, from);
    EXPECT_EQ(BlockOf(to), block);
    EXPECT_EQ(BlockOf(from), block);
    EXPECT_EQ(block->_refCount, 2);
    EXPECT_THAT(log.Freed(), ElementsAre(old));
    EXPECT_THAT(log.Requests(), IsEmpty());
}

TYPED_TEST(CopyBetween, OfTheSameBlockChangesNothing) {
    const typename TestFixture::From from("text");
    typename TestFixture::To to;
    VEL::Copy(to, from);
    VEL::Copy(to, from);
    EXPECT_EQ(BlockOf(from)->_refCount, 2);
    EXPECT_EQ(Narrow(BlockOf(to)), "text");
}

TYPED_TEST(CopyBetween, DoesNotCountTheEmptyBlock) {
    const typename TestFixture::From from;
    typename TestFixture::To to("old");
    VEL::Copy(to, from);
    EXPECT_TRUE(IsOnTheEmptyBlock(to));
    EXPECT_EQ(Str::Empty()->_refCount, 1);
}

TYPED_TEST(CopyBetween, KeepsAWideBlockWide) {
    const auto from = StringOn<typename TestFixture::From>(NewWide(u"gr\u00fcn"));
    typename TestFixture::To to;
    VEL::Copy(to, from);
    EXPECT_EQ(BlockOf(to), BlockOf(from));
    EXPECT_TRUE(BlockOf(to)->IsWide());
}

TYPED_TEST(CopyBetween, OfANullHandleIsReadAsEmpty) {
    VELStringPoolSetForCurrentThrd(0);
    const auto from = NullString<typename TestFixture::From>();
    typename TestFixture::To to("old");
    const Block old = BlockOf(to);
    const HeapLog log;
    VEL::Copy(to, from);
    EXPECT_TRUE(log.HasFreed(old));
    EXPECT_EQ(to.GetLengthInChar(), 0);
    EXPECT_STREQ(to.ConvertToChar(), "");
}

TYPED_TEST(CopyBetween, WorksOntoANullHandle) {
    const typename TestFixture::From from("text");
    auto to = NullString<typename TestFixture::To>();
    VEL::Copy(to, from);
    EXPECT_EQ(BlockOf(to), BlockOf(from));
    EXPECT_EQ(BlockOf(from)->_refCount, 2);
}

template <class Types>
class MoveBetween : public testing::Test {
protected:
    using To = typename Types::To;
    using From = typename Types::From;
};

TYPED_TEST_SUITE(MoveBetween, AllPairs);

TYPED_TEST(MoveBetween, HandsTheBlockOverAndReleasesTheOldOne) {
    VELStringPoolSetForCurrentThrd(0);
    typename TestFixture::From from("text");
    typename TestFixture::To to("old");
    const Block block = BlockOf(from);
    const Block old = BlockOf(to);
    const HeapLog log;
    VEL::Move(to, from);
    EXPECT_EQ(BlockOf(to), block);
    EXPECT_TRUE(IsOnTheEmptyBlock(from));
    EXPECT_EQ(block->_refCount, 1);
    EXPECT_EQ(Narrow(block), "text");
    EXPECT_EQ(from.GetLengthInChar(), 0);
    EXPECT_THAT(log.Freed(), ElementsAre(old));
    EXPECT_THAT(log.Requests(), IsEmpty());
}

TYPED_TEST(MoveBetween, BetweenTwoHandlesOfOneBlockLeavesOne) {
    typename TestFixture::From from("text");
    const Block block = BlockOf(from);
    Share(block);
    typename TestFixture::To to;
    StringAccess::Handle(to) = block->Text();
    VEL::Move(to, from);
    EXPECT_EQ(BlockOf(to), block);
    EXPECT_EQ(block->_refCount, 1);
    EXPECT_TRUE(IsOnTheEmptyBlock(from));
}

TYPED_TEST(MoveBetween, KeepsAWideBlockWide) {
    auto from = StringOn<typename TestFixture::From>(NewWide(u"gr\u00fcn"));
    const Block block = BlockOf(from);
    typename TestFixture::To to;
    VEL::Move(to, from);
    EXPECT_EQ(BlockOf(to), block);
    EXPECT_TRUE(block->IsWide());
}

TYPED_TEST(MoveBetween, OfAnEmptyStringEmptiesTheTarget) {
    typename TestFixture::From from;
    typename TestFixture::To to("old");
    VEL::Move(to, from);
    EXPECT_TRUE(IsOnTheEmptyBlock(to));
    EXPECT_TRUE(IsOnTheEmptyBlock(from));
    EXPECT_EQ(Str::Empty()->_refCount, 1);
}

TYPED_TEST(MoveBetween, OfANullHandleIsReadAsEmpty) {
    auto from = NullString<typename TestFixture::From>();
    typename TestFixture::To to("old");
    VEL::Move(to, from);
    EXPECT_TRUE(IsOnTheEmptyBlock(from));
    EXPECT_EQ(to.GetLengthInChar(), 0);
    EXPECT_STREQ(to.ConvertToChar(), "");
}

template <class String>
class MoveToItself : public testing::Test {};

using AllStrings = testing::Types<QORString, QORUnicodeString, QORSysTSUnicodeString>;
TYPED_TEST_SUITE(MoveToItself, AllStrings);

TYPED_TEST(MoveToItself, LosesTheTextWithoutALeak) {
    VELStringPoolSetForCurrentThrd(0);
    TypeParam s("text");
    const Block block = BlockOf(s);
    const HeapLog log;
    VEL::Move(s, s);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_THAT(log.Freed(), ElementsAre(block));
}

TYPED_TEST(MoveToItself, LeavesOtherHandlesTheirText) {
    TypeParam s("text");
    const TypeParam other(s);
    VEL::Move(s, s);
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
    EXPECT_STREQ(other.ConvertToChar(), "text");
}

// Functions that the thread-safe class has no share in.

template <class String>
class StringOfTwo : public testing::Test {};

using TwoStrings = testing::Types<QORUnicodeString, QORString>;
TYPED_TEST_SUITE(StringOfTwo, TwoStrings);

TYPED_TEST(StringOfTwo, MainRepresentationIsNoneNarrowOrWide) {
    EXPECT_EQ(VEL::GetMainRepEncoding(NullString<TypeParam>()), 0);
    EXPECT_EQ(VEL::GetMainRepEncoding(TypeParam()), 1);
    EXPECT_EQ(VEL::GetMainRepEncoding(TypeParam("abc")), 1);
    EXPECT_EQ(VEL::GetMainRepEncoding(StringOn<TypeParam>(NewWide(u"abc"))), 2);
}

TYPED_TEST(StringOfTwo, IsolateLeavesABlockAloneAsItIs) {
    for (const Block block : {NewNarrow("abc"), NewWide(u"abc"), NewNarrow("")}) {
        auto s = StringOn<TypeParam>(block);
        const Str::View view = block->IsWide() ? block->_GetMBCSView() : block->_GetUTF16View();
        block->_GetHash();
        VEL::Isolate(s);
        EXPECT_EQ(BlockOf(s), block);
        EXPECT_EQ(block->_secondView, view);
        EXPECT_FALSE(IsStale(block));
    }
}

TYPED_TEST(StringOfTwo, IsolateCopiesASharedBlockWithoutViewAndHash) {
    for (const Block block : {NewNarrow("abc"), NewWide(u"abc")}) {
        auto s = StringOn<TypeParam>(block);
        const TypeParam other(s);
        const Str::View view = block->IsWide() ? block->_GetMBCSView() : block->_GetUTF16View();
        block->_GetHash();
        VEL::Isolate(s);
        const Block own = BlockOf(s);
        ASSERT_NE(own, block);
        EXPECT_EQ(own->IsWide(), block->IsWide());
        EXPECT_EQ(own->_length, 3);
        EXPECT_EQ(own->_capacity, CapacityFor(own->IsWide(), 3));
        EXPECT_EQ(own->_GetMBCSText(), std::string("abc"));
        EXPECT_TRUE(IsStale(own));
        EXPECT_EQ(own->_refCount, 1);
        EXPECT_EQ(BlockOf(other), block);
        EXPECT_EQ(block->_refCount, 1);
        EXPECT_EQ(block->_secondView, view);
        EXPECT_FALSE(IsStale(block));
    }
}

TYPED_TEST(StringOfTwo, IsolateCopiesNoView) {
    auto s = StringOn<TypeParam>(NewNarrow("abc"));
    const TypeParam other(s);
    BlockOf(s)->_GetUTF16View();
    VEL::Isolate(s);
    EXPECT_EQ(BlockOf(s)->_secondView, nullptr);
}

TYPED_TEST(StringOfTwo, AChangeAfterIsolateLeavesTheOtherItsTextAndPointers) {
    TypeParam s("abc");
    const TypeParam other(s);
    const char* const text = other.ConvertToChar();
    const unsigned short* const units = BlockOf(other)->_GetUTF16Text();
    VEL::Isolate(s);
    s = "xyz";
    EXPECT_EQ(other.ConvertToChar(), text);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(BlockOf(other)->_GetUTF16Text(), units);
    EXPECT_EQ(Units(units, 4), std::u16string(u"abc\0", 4));
}

TYPED_TEST(StringOfTwo, IsolateLeavesTheEmptyBlockAndNullAlone) {
    TypeParam empty;
    VEL::Isolate(empty);
    EXPECT_TRUE(IsOnTheEmptyBlock(empty));
    auto null = NullString<TypeParam>();
    VEL::Isolate(null);
    EXPECT_EQ(null.GetLengthInChar(), 0);
}

TYPED_TEST(StringOfTwo, IsolateOfASharedBlockOfLengthZeroGivesTheEmptyBlock) {
    auto s = StringOn<TypeParam>(NewNarrow(""));
    const TypeParam other(s);
    VEL::Isolate(s);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
}

TYPED_TEST(StringOfTwo, PackTurnsWideASCIINarrow) {
    for (const char* codePage : {StringEnvironment::UTF8, StringEnvironment::OneToOne}) {
        StringEnvironment::UseCodePage(codePage);
        VELStringPoolSetForCurrentThrd(0);
        const Block block = NewWide(u"abc\u007f\u0001");
        auto s = StringOn<TypeParam>(block);
        const HeapLog log;
        EXPECT_TRUE(VEL::Pack(s));
        EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
        EXPECT_EQ(Narrow(BlockOf(s)), "abc\x7f\x01");
        EXPECT_EQ(BlockOf(s)->_capacity, CapacityFor(false, 5));
        EXPECT_TRUE(log.HasFreed(block));
        EXPECT_FALSE(VEL::Pack(s)) << "once is enough";
    }
}

TYPED_TEST(StringOfTwo, PackLeavesWideTextAboveASCIIAlone) {
    for (const char16_t* text : {u"\u0080", u"abc\u0080", u"\u20acabc", u"\U0001F600", u"a\u00e9b"}) {
        const Block block = NewWide(text);
        auto s = StringOn<TypeParam>(block);
        EXPECT_FALSE(VEL::Pack(s));
        EXPECT_EQ(BlockOf(s), block);
        EXPECT_EQ(block->_secondView, nullptr);
    }
}

TYPED_TEST(StringOfTwo, PackLeavesNarrowTextAndNullAlone) {
    TypeParam narrow("abc");
    const Block block = BlockOf(narrow);
    EXPECT_FALSE(VEL::Pack(narrow));
    EXPECT_EQ(BlockOf(narrow), block);
    TypeParam empty;
    EXPECT_FALSE(VEL::Pack(empty));
    auto null = NullString<TypeParam>();
    EXPECT_FALSE(VEL::Pack(null));
}

TYPED_TEST(StringOfTwo, PackOfAWideBlockOfLengthZeroGivesTheEmptyBlock) {
    VELStringPoolSetForCurrentThrd(0);
    const Block block = NewWide(u"");
    auto s = StringOn<TypeParam>(block);
    const HeapLog log;
    EXPECT_TRUE(VEL::Pack(s));
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
    EXPECT_TRUE(log.HasFreed(block));
}

TYPED_TEST(StringOfTwo, PackOfASharedBlockLeavesTheOtherHandleItsText) {
    auto s = StringOn<TypeParam>(NewWide(u"abc"));
    const TypeParam other(s);
    EXPECT_TRUE(VEL::Pack(s));
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
    EXPECT_EQ(Wide(BlockOf(other)), u"abc");
    EXPECT_EQ(Narrow(BlockOf(s)), "abc");
}

TEST(SecondView, IsAvailableOnceSomebodyAskedForIt) {
    using VEL::internal::IsSecondViewAvailable;
    EXPECT_TRUE(IsSecondViewAvailable(QORUnicodeString()));
    EXPECT_FALSE(IsSecondViewAvailable(NullString<QORUnicodeString>()));
    QORUnicodeString narrow("abc");
    EXPECT_FALSE(IsSecondViewAvailable(narrow));
    narrow.ConvertToChar();
    EXPECT_FALSE(IsSecondViewAvailable(narrow));
    narrow.GetLengthInChar();
    EXPECT_TRUE(IsSecondViewAvailable(narrow));
    narrow = "xyz";
    EXPECT_FALSE(IsSecondViewAvailable(narrow));
    const auto wide = StringOn<QORUnicodeString>(NewWide(u"abc"));
    EXPECT_FALSE(IsSecondViewAvailable(wide));
    wide.GetLengthInByte();
    EXPECT_TRUE(IsSecondViewAvailable(wide));
    EXPECT_FALSE(IsSecondViewAvailable(StringOn<QORUnicodeString>(NewNarrow(""))));
}

// Free makers.

struct QUSFromUnits {
    static QORUnicodeString Make(const char16_t* s, unsigned long n, int* err) {
        return VEL::QUSFrom(StringBlocks::Units(s), n, err);
    }
};
struct QUSFromChar16 {
    static QORUnicodeString Make(const char16_t* s, unsigned long n, int* err) { return VEL::QUSFrom(s, n, err); }
};
struct QUSFromWide {
    static QORUnicodeString Make(const char16_t* s, unsigned long n, int* err) {
        std::wstring text;
        for (const char16_t* unit = s; unit != nullptr && *unit != 0; ++unit) {
            text += static_cast<wchar_t>(*unit);
        }
        return VEL::QUSFrom(s != nullptr ? text.c_str() : static_cast<const wchar_t*>(nullptr), n, err);
    }
};

template <class Maker>
class QUSFrom : public testing::Test {};

using Makers = testing::Types<QUSFromUnits, QUSFromChar16, QUSFromWide>;
TYPED_TEST_SUITE(QUSFrom, Makers);

TYPED_TEST(QUSFrom, MakesAWideStringAndReportsSuccess) {
    int err = 7;
    const QORUnicodeString s = TypeParam::Make(u"gr\u00fcn", 3, &err);
    EXPECT_EQ(err, 0);
    EXPECT_EQ(VEL::GetMainRepEncoding(s), 2);
    EXPECT_EQ(Wide(BlockOf(s)), u"gr\u00fc");
}

TYPED_TEST(QUSFrom, MinusOneMeansUpToTheZeroUnit) {
    const QORUnicodeString s = TypeParam::Make(u"gr\u00fcn", -1ul, nullptr);
    EXPECT_EQ(Wide(BlockOf(s)), u"gr\u00fcn");
}

TYPED_TEST(QUSFrom, ReportsSuccessWhateverHappened) {
    int err = 7;
    EXPECT_TRUE(IsOnTheEmptyBlock(TypeParam::Make(nullptr, 3, &err)));
    EXPECT_EQ(err, 0);
    err = 7;
    EXPECT_TRUE(IsOnTheEmptyBlock(TypeParam::Make(nullptr, -1ul, &err)));
    EXPECT_EQ(err, 0);
    err = 7;
    EXPECT_TRUE(IsOnTheEmptyBlock(TypeParam::Make(u"abc", 0, &err)));
    EXPECT_EQ(err, 0);
    EXPECT_TRUE(IsOnTheEmptyBlock(TypeParam::Make(u"", -1ul, nullptr)));
    VELStringPoolFlush();
    err = 7;
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_TRUE(IsOnTheEmptyBlock(TypeParam::Make(u"abc", 3, &err)));
    EXPECT_EQ(err, 0);
}
