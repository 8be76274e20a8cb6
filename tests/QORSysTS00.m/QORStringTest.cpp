#include "QORString.h"

#include "Child.h"
#include "HeapLog.h"
#include "NarrowReports.h"
#include "SessionState.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <utility>
#include <vector>

// Stands for the calling stack in what the warnings print.
extern "C" void __wrap__ZN3VEL8internal15PrintStackTraceEv() {
    std::fputs("the calling stack\n", stdout);
}

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;
using StringEnvironment::OneToOne;
using StringEnvironment::UseCodePage;

char* const NoText = nullptr;

Block BlockOf(const QORString& s) {
    return StringAccess::BlockOf(s);
}

/// The bytes of a string that is narrow already; looks without touching.
std::string BytesOf(const QORString& s) {
    return Narrow(BlockOf(s));
}

QORString WideString(const std::u16string& text) {
    return StringOn<QORString>(NewWide(text));
}

using namespace NarrowReports;

/// The hash by its definition.
unsigned int HashOf(const std::string& text) {
    unsigned int hash = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        hash ^= static_cast<unsigned int>(static_cast<unsigned char>(text[i])) << i % 4 * 8;
    }
    return hash;
}

struct Reader {
    const char* name;
    std::function<void(const QORString&)> read;
};

/// Every operation that reads.
const std::vector<Reader>& Readers() {
    static const std::vector<Reader> readers = {
        {"GetLengthInChar", [](const QORString& s) { s.GetLengthInChar(); }},
        {"GetLengthInByte", [](const QORString& s) { s.GetLengthInByte(); }},
        {"length", [](const QORString& s) { s.length(); }},
        {"Length", [](const QORString& s) { s.Length(); }},
        {"IsEmpty", [](const QORString& s) { s.IsEmpty(); }},
        {"ConvertToChar", [](const QORString& s) { s.ConvertToChar(); }},
        {"operator const char*", [](const QORString& s) { static_cast<void>(static_cast<const char*>(s)); }},
        {"ComputeHashKey", [](const QORString& s) { s.ComputeHashKey(); }},
        {"hash", [](const QORString& s) { s.hash(); }},
    };
    return readers;
}

} // namespace

TEST(QORString, TheDestructorLeavesANullHandle) {
    EXPECT_EQ(HandleAfterDestruction<QORString>(""), nullptr);
    EXPECT_EQ(HandleAfterDestruction<QORString>("text"), nullptr);
}

TEST(QORString, HoldsPlainText) {
    const QORString s("abc");
    EXPECT_EQ(BytesOf(s), "abc");
    EXPECT_STREQ(s.ConvertToChar(), "abc");
    EXPECT_STREQ(static_cast<const char*>(s), "abc");
    EXPECT_EQ(s.ConvertToChar(), BlockOf(s)->Text());
    EXPECT_EQ(s.GetLengthInChar(), 3);
    EXPECT_EQ(s.GetLengthInByte(), 3);
    EXPECT_EQ(s.length(), 3);
    EXPECT_EQ(s.Length(), 3);
    EXPECT_FALSE(s.IsEmpty());
    EXPECT_TRUE(s.Init());
}

TEST(QORString, CopiesTextThatMayBeWritten) {
    char text[] = "abc";
    const QORString s(text);
    text[0] = 'x';
    EXPECT_STREQ(s.ConvertToChar(), "abc");
}

TEST(QORString, WithoutTextIsOnTheEmptyBlock) {
    EXPECT_TRUE(IsOnTheEmptyBlock(QORString()));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORString(NoText)));
    EXPECT_TRUE(IsOnTheEmptyBlock(QORString("")));
    const QORString s;
    const QORString copy(s);
    EXPECT_TRUE(IsOnTheEmptyBlock(copy));
    EXPECT_EQ(Str::Empty()->_refCount, 1);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_TRUE(s.Init());
    EXPECT_EQ(s.Length(), 0);
    EXPECT_STREQ(s.ConvertToChar(), "");
    EXPECT_EQ(s.hash(), 0u);
}

TEST(QORString, LengthsCountBytes) {
    const QORString s("gr\u00fcn");
    EXPECT_EQ(s.GetLengthInChar(), 5);
    EXPECT_EQ(s.GetLengthInByte(), 5);
    EXPECT_EQ(BlockOf(s)->_secondView, nullptr);
}

TEST(QORString, CopiesShareTheBlock) {
    const QORString s("text");
    const QORString copy(s);
    QORString assigned("old");
    assigned = s;
    EXPECT_EQ(BlockOf(copy), BlockOf(s));
    EXPECT_EQ(BlockOf(assigned), BlockOf(s));
    EXPECT_EQ(BlockOf(s)->_refCount, 3);
    assigned = copy;
    EXPECT_EQ(BlockOf(s)->_refCount, 3);
}

TEST(QORString, AMovedStringIsEmptyAndItsBlockNotCopied) {
    QORString s("text");
    const Block block = BlockOf(s);
    QORString moved(std::move(s));
    EXPECT_EQ(BlockOf(moved), block);
    EXPECT_TRUE(IsOnTheEmptyBlock(s)); // NOLINT(bugprone-use-after-move): the state is promised
    s = std::move(moved);
    EXPECT_EQ(BlockOf(s), block);
    EXPECT_EQ(block->_refCount, 1);
}

TEST(QORString, AssignedTextAlwaysTakesANewBlock) {
    VELStringPoolSetForCurrentThrd(0);
    QORString s("abcdef");
    const Block old = BlockOf(s);
    const HeapLog log;
    s = "x";
    EXPECT_EQ(BytesOf(s), "x");
    EXPECT_EQ(BlockOf(s)->_capacity, CapacityFor(false, 1));
    EXPECT_EQ(log.Requests().size(), 1u);
    EXPECT_TRUE(log.HasFreed(old));
}

TEST(QORString, AssignedNothingGivesTheEmptyBlock) {
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        VELStringPoolSetForCurrentThrd(0);
        QORString s("abc");
        const Block old = BlockOf(s);
        const HeapLog log;
        s = text;
        EXPECT_TRUE(IsOnTheEmptyBlock(s));
        EXPECT_TRUE(log.HasFreed(old));
    }
}

TEST(QORString, AssignmentLeavesSharersAlone) {
    QORString s("abc");
    const QORString other(s);
    s = "xyz";
    EXPECT_STREQ(other.ConvertToChar(), "abc");
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
}

TEST(QORString, TakesTextOutOfItself) {
    QORString s("abcdef");
    s = s.ConvertToChar() + 2;
    EXPECT_EQ(BytesOf(s), "cdef");
    s = s.ConvertToChar();
    EXPECT_EQ(BytesOf(s), "cdef");
}

TEST(QORString, ClassIdIsOneBlockOfSixteenZeroBytes) {
    const void* const id = QORString::ClassId();
    EXPECT_EQ(QORString::ClassId(), id);
    const char zero[16] = {};
    EXPECT_EQ(std::memcmp(id, zero, sizeof zero), 0);
}

// Hash.

TEST(HashOfQORString, CombinesWordsAndTheRemainingBytes) {
    EXPECT_EQ(QORString("abcd").ComputeHashKey(), 0x64636261u);
    EXPECT_EQ(QORString("abcde").ComputeHashKey(), 0x64636204u);
    EXPECT_EQ(QORString("a").ComputeHashKey(), 0x61u);
    EXPECT_EQ(QORString("abc").ComputeHashKey(), 0x636261u);
    EXPECT_EQ(QORString("abcd").hash(), 0x64636261u);
    EXPECT_EQ(QORString("\xff\xfe\xfd").ComputeHashKey(), 0xfdfeffu) << "bytes have no sign";
    EXPECT_EQ(QORString("abc\xff\x80").ComputeHashKey(), 0xff6362e1u);
    std::string text;
    for (int length = 0; length < 200; ++length) {
        ASSERT_EQ(QORString(text.c_str()).ComputeHashKey(), HashOf(text)) << length;
        text += static_cast<char>(0x20 + length * 37 % 0xE0);
    }
}

TEST(HashOfQORString, IsNotCachedAndNotThatOfTheBlock) {
    const QORString s("abc");
    BlockOf(s)->_hash = 42;
    EXPECT_EQ(s.ComputeHashKey(), 0x636261u);
    EXPECT_EQ(BlockOf(s)->_hash, 42u);
    EXPECT_TRUE(IsStale(BlockOf(s)));
    BlockOf(s)->_GetHash();
    EXPECT_EQ(s.ComputeHashKey(), 0x636261u);
}

// The check of text that comes in.

class InputCheck : public StringEnvironment::InBoth {
protected:
    bool Passes(unsigned char byte) const {
        return byte == 0x09 || byte == 0x0A || byte == 0x0D || (byte >= 0x20 && (IsUTF8() || byte <= 0x7E));
    }
};

TEST_P(InputCheck, JudgesEachByte) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text = std::string("ab") + static_cast<char>(byte) + "c";
        const bool passes = Passes(static_cast<unsigned char>(byte));
        QORString assigned("old");
        std::string made;
        const std::string printed = Printed([&] {
            made = BytesOf(QORString(text.c_str()));
            assigned = text.c_str();
        });
        ASSERT_EQ(made, passes ? text : "") << byte;
        ASSERT_EQ(BytesOf(assigned), passes ? text : "") << byte;
        ASSERT_EQ(IsOnTheEmptyBlock(assigned), !passes);
        ASSERT_EQ(printed, passes ? "" : NotPrintable(3, text) + NotPrintable(3, text)) << byte;
    }
}

TEST_P(InputCheck, StopsAtTheFirstBadByte) {
    EXPECT_EQ(Printed([] { const QORString s("a\x01\x02"); }), NotPrintable(2, "a\x01\x02"));
    EXPECT_EQ(Printed([] { const QORString s("\x1f"); }), NotPrintable(1, "\x1f"));
    const std::string late = std::string(300, 'a') + "\x0b";
    EXPECT_EQ(Printed([&] { const QORString s(late.c_str()); }), NotPrintable(301, late));
}

TEST_P(InputCheck, LetsUTF8PassInAnEnvironmentOfUTF8Alone) {
    std::string kept;
    const std::string printed = Printed([&] { kept = BytesOf(QORString("\u00e9")); });
    EXPECT_EQ(kept, IsUTF8() ? "\u00e9" : "");
    EXPECT_EQ(printed, IsUTF8() ? "" : NotPrintable(1, "\u00e9"));
}

TEST_P(InputCheck, SwitchedOffLetsEverythingPass) {
    VELStringInit(0);
    EXPECT_EQ(Printed([] {
                  EXPECT_EQ(BytesOf(QORString("\x01\x80\xff")), "\x01\x80\xff");
                  QORString s;
                  s = "\x02";
                  EXPECT_EQ(BytesOf(s), "\x02");
              }),
              "");
}

TEST_P(InputCheck, TheReferenceToOtherHandlesOfARefusingStringGoes) {
    QORString s("old");
    const QORString other(s);
    Printed([&] { s = "\x01"; });
    EXPECT_EQ(BlockOf(other)->_refCount, 1);
    EXPECT_EQ(BytesOf(other), "old");
}

INSTANTIATE_TEST_SUITE_P(Environments, InputCheck, testing::Values(StringEnvironment::UTF8, OneToOne),
                         StringEnvironment::NameOf);

// The warnings, by process.

CHILD_PROGRAM(MakesTextThatIsRefused) {
    const QORString s("a\x01");
    const bool isRefused = BlockOf(s)->_length == 0;
    // What was printed is out already.
    _exit(isRefused ? 10 : 20);
}

CHILD_PROGRAM(WarnsThenSuppressesThenWarns) {
    { const QORString s("\x01"); }
    setenv("QORStringWarningSuppress", "1", 1);
    { const QORString s("b\x01"); }
    return 0;
}

CHILD_PROGRAM(ReadsNonASCIIWideText) {
    UseCodePage(OneToOne);
    const QORString s = WideString(u"a\u00e9");
    const std::string text = s.ConvertToChar();
    return text.empty() ? 10 : text == "a\xe9" ? 20 : 30;
}

struct StageRow {
    ChildSetup setup;
    std::string printed;
    int exitCode;
    friend void PrintTo(const StageRow& row, std::ostream* out) {
        for (const auto& [name, value] : row.setup.set) {
            *out << name << "=" << value << " ";
        }
    }
};

class RefusedText : public testing::TestWithParam<StageRow> {};

TEST_P(RefusedText, IsReportedAsTheEnvironmentSays) {
    const Child child = RunChild("MakesTextThatIsRefused", GetParam().setup);
    EXPECT_EQ(child.out, GetParam().printed);
    EXPECT_EQ(child.exitCode, GetParam().exitCode);
    EXPECT_EQ(child.err, "");
}

const std::string RefusedTwo = NotPrintable(2, "a\x01");
const ChildSetup NoSetup = {.set = {}};
const ChildSetup Suppressed = {.set = {{"QORStringWarningSuppress", "1"}}};
const ChildSetup SuppressedByEmpty = {.set = {{"QORStringWarningSuppress", ""}}};
const ChildSetup SuppressedByZero = {.set = {{"QORStringWarningSuppress", "0"}}};
const ChildSetup NoChecks = {.set = {{"QORDevelopmentStage", "FALSE"}}};
const ChildSetup LowerCase = {.set = {{"QORDevelopmentStage", "false"}}};

INSTANTIATE_TEST_SUITE_P(Rows, RefusedText,
                         testing::Values(StageRow{NoSetup, RefusedTwo, 10}, StageRow{Suppressed, "", 10},
                                         StageRow{SuppressedByEmpty, "", 10}, StageRow{SuppressedByZero, "", 10},
                                         StageRow{NoChecks, "", 20}, StageRow{LowerCase, RefusedTwo, 10}));

TEST(RefusedText, TheWishForSilenceIsReadOncePerProcess) {
    const Child child = RunChild("WarnsThenSuppressesThenWarns");
    EXPECT_EQ(child.out, NotPrintable(1, "\x01") + NotPrintable(2, "b\x01"));
}

TEST(RefusedText, SilenceDoesNotReachTheWarningOfDataCorruption) {
    const Child child = RunChild("ReadsNonASCIIWideText", Suppressed);
    EXPECT_EQ(child.out, DataCorruption);
    EXPECT_EQ(child.exitCode, 10);
}

TEST(RefusedText, WithoutChecksWideTextIsCutToBytesInSilence) {
    const Child child = RunChild("ReadsNonASCIIWideText", NoChecks);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.exitCode, 20);
}

// Wide blocks.

class WideBlock : public StringEnvironment::InBoth {};

TEST_P(WideBlock, OfASCIITextIsTurnedNarrowInSilence) {
    for (const Reader& reader : Readers()) {
        SCOPED_TRACE(reader.name);
        const QORString s = WideString(u"abc\u007f\u0001");
        const QORString other(s);
        const Block wide = BlockOf(s);
        EXPECT_EQ(VEL::GetMainRepEncoding(s), 2);
        EXPECT_EQ(Printed([&] { reader.read(s); }), "");
        EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
        EXPECT_EQ(BytesOf(s), "abc\x7f\x01") << "no check takes place";
        EXPECT_EQ(BlockOf(s)->_capacity, CapacityFor(false, 5));
        EXPECT_EQ(BlockOf(other), wide) << "the handle alone moves";
        EXPECT_EQ(wide->_refCount, 1);
        EXPECT_EQ(wide->_secondView, nullptr);
    }
}

TEST_P(WideBlock, ComesByMoveAndCopyAndReadsTheSame) {
    QORUnicodeString source;
    source.BuildFromUCChar(Units(u"abc"));
    QORString copied;
    VEL::Copy(copied, source);
    QORString moved;
    VEL::Move(moved, source);
    EXPECT_EQ(Printed([&] {
                  EXPECT_STREQ(copied.ConvertToChar(), "abc");
                  EXPECT_STREQ(moved.ConvertToChar(), "abc");
                  EXPECT_EQ(moved.ComputeHashKey(), 0x636261u);
                  EXPECT_EQ(moved.Length(), 3);
              }),
              "");
    EXPECT_EQ(VEL::GetMainRepEncoding(moved), 1);
}

TEST_P(WideBlock, OfLengthZeroGivesTheEmptyBlock) {
    for (const Reader& reader : Readers()) {
        SCOPED_TRACE(reader.name);
        const QORString s = WideString(u"");
        EXPECT_EQ(Printed([&] { reader.read(s); }), "");
        EXPECT_TRUE(IsOnTheEmptyBlock(s));
    }
}

TEST_P(WideBlock, OfOtherTextIsConvertedOrLost) {
    for (const Reader& reader : Readers()) {
        SCOPED_TRACE(reader.name);
        VELStringPoolSetForCurrentThrd(0);
        const QORString s = WideString(u"gr\u00fcn");
        const Block wide = BlockOf(s);
        const HeapLog log;
        const std::string printed = Printed([&] { reader.read(s); });
        EXPECT_EQ(BytesOf(s), IsUTF8() ? "gr\u00fcn" : "");
        EXPECT_EQ(IsOnTheEmptyBlock(s), !IsUTF8());
        EXPECT_EQ(printed, IsUTF8() ? "" : DataCorruption + NotPrintable(3, "gr\xfcn")) << "reported twice and lost";
        EXPECT_TRUE(log.HasFreed(wide));
    }
}

TEST_P(WideBlock, OfOtherTextIsCheckedAfterConversion) {
    const QORString s = WideString(u"\u0001\u00fc");
    const std::string bytes = IsUTF8() ? "\x01\u00fc" : "\x01\xfc";
    EXPECT_EQ(Printed([&] { EXPECT_STREQ(s.ConvertToChar(), ""); }),
              (IsUTF8() ? "" : DataCorruption) + NotPrintable(1, bytes));
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

TEST_P(WideBlock, KeepsAllTextWithoutChecks) {
    VELStringInit(0);
    const QORString s = WideString(u"\u0001gr\u00fcn");
    EXPECT_EQ(Printed([&] { EXPECT_EQ(s.Length(), IsUTF8() ? 6 : 5); }), "");
    EXPECT_EQ(BytesOf(s), IsUTF8() ? "\x01gr\u00fcn" : "\x01gr\xfcn");
    EXPECT_FALSE(BlockOf(s)->IsWide());
}

TEST_P(WideBlock, WithoutMemoryGivesTheEmptyBlock) {
    VELStringPoolSetForCurrentThrd(0);
    const QORString s = WideString(u"abc");
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(s.Length(), 0);
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

INSTANTIATE_TEST_SUITE_P(Environments, WideBlock, testing::Values(StringEnvironment::UTF8, OneToOne),
                         StringEnvironment::NameOf);

// A text of the caller's may be that of the view, which goes with the wide block that the operation leaves. This one is
// so large that its memory goes too.
TEST(WideBlockLeft, StaysWhileItsViewIsTheText) {
    std::u16string units = u"\u00e9";
    std::string bytes = "\u00e9";
    for (int i = 1; i < 300000; ++i) {
        units += static_cast<char16_t>(u'a' + i % 26);
        bytes += static_cast<char>('a' + i % 26);
    }
    const std::pair<const char*, std::function<bool(QORString&, const char*)>> operations[] = {
        {"+=", [&](QORString& s, const char* p) { return BytesOf(s += p) == bytes + bytes; }},
        {"+", [&](QORString& s, const char* p) { return BytesOf(s + p) == bytes + bytes; }},
        {"free +", [&](QORString& s, const char* p) { return BytesOf(p + s) == bytes + bytes; }},
        {"=", [&](QORString& s, const char* p) { return BytesOf(s = p) == bytes; }},
        {"Compare", [](QORString& s, const char* p) { return s.Compare(p) == 0; }},
        {"compare", [](QORString& s, const char* p) { return s.compare(p) == 0; }},
        {"==", [](QORString& s, const char* p) { return s == p; }},
        {"<=", [](QORString& s, const char* p) { return s <= p; }},
        {"!=", [](QORString& s, const char* p) { return !(s != p); }},
    };
    // The environment's converter is there before the heap is looked at.
    const QORString first("x");
    for (const auto& [name, operation] : operations) {
        SCOPED_TRACE(name);
        QORUnicodeString u = StringOn<QORUnicodeString>(NewWide(units));
        const HeapLog log;
        {
            QORString s;
            const char* const p = u.ConvertToChar();
            VEL::Move(s, u);
            EXPECT_TRUE(operation(s, p));
            EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
            EXPECT_EQ(BlockOf(s)->_refCount, 1);
        }
        EXPECT_EQ(log.Live(), 0u) << "the block goes after the operation";
    }
}

// Null handles.

TEST(NullHandle, IsRepairedByWhoeverReads) {
    for (const Reader& reader : Readers()) {
        SCOPED_TRACE(reader.name);
        const auto s = NullString<QORString>();
        reader.read(s);
        EXPECT_TRUE(IsOnTheEmptyBlock(s));
        EXPECT_EQ(DebugBreaks(), 0);
    }
}

TEST(NullHandle, ReadsAsEmpty) {
    EXPECT_EQ(NullString<QORString>().Length(), 0);
    EXPECT_TRUE(NullString<QORString>().IsEmpty());
    EXPECT_STREQ(NullString<QORString>().ConvertToChar(), "");
    EXPECT_EQ(NullString<QORString>().ComputeHashKey(), 0u);
}

TEST(NullHandle, InitTellsOfIt) {
    EXPECT_FALSE(NullString<QORString>().Init());
}

TEST(NullHandle, CopiedIsReportedAndEmpty) {
    const auto null = NullString<QORString>();
    const QORString copy(null);
    EXPECT_EQ(DebugBreaks(), 1);
    EXPECT_TRUE(IsOnTheEmptyBlock(copy));
    EXPECT_TRUE(copy.Init());
    EXPECT_TRUE(IsOnTheEmptyBlock(null)) << "the source is repaired too";
    EXPECT_TRUE(null.Init());
    EXPECT_EQ(copy.Length(), 0);
    const QORString another(null);
    EXPECT_EQ(DebugBreaks(), 1) << "it is no null handle any more";
}

TEST(NullHandle, AssignedToIsReportedAndRepaired) {
    auto s = NullString<QORString>();
    s = "abc";
    EXPECT_EQ(DebugBreaks(), 1);
    EXPECT_STREQ(s.ConvertToChar(), "abc");
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        StringAccess::Reset(s);
        StringAccess::Handle(s) = nullptr;
        s = text;
        EXPECT_TRUE(IsOnTheEmptyBlock(s));
    }
    EXPECT_EQ(DebugBreaks(), 3);
}

TEST(NullHandle, AssignedFromAnotherStringReadsAsEmpty) {
    VELStringPoolSetForCurrentThrd(0);
    // The environment's converter is there before the heap is looked at.
    const QORString first("x");
    const HeapLog log;
    {
        const auto null = NullString<QORString>();
        QORString s("old");
        s = null;
        for (const QORString* each : {&std::as_const(s), &null}) {
            EXPECT_TRUE(each->Init());
            EXPECT_TRUE(IsOnTheEmptyBlock(*each));
        }
        EXPECT_EQ(s.Length(), 0);
        auto repaired = NullString<QORString>();
        repaired = QORString("abc");
        EXPECT_STREQ(repaired.ConvertToChar(), "abc");
        const QORString text("text");
        auto shared = NullString<QORString>();
        shared = text;
        EXPECT_EQ(BlockOf(shared), BlockOf(text));
    }
    EXPECT_EQ(log.Live(), 0u);
    EXPECT_EQ(DebugBreaks(), 0);
}

TEST(NullHandle, AssignedToANullHandleLeavesBothOnTheEmptyBlock) {
    const auto source = NullString<QORString>();
    auto target = NullString<QORString>();
    target = source;
    auto itself = NullString<QORString>();
    const QORString& alias = itself;
    itself = alias;
    for (const QORString* each : {&source, &std::as_const(target), &std::as_const(itself)}) {
        EXPECT_TRUE(each->Init());
        EXPECT_TRUE(IsOnTheEmptyBlock(*each));
    }
    auto onEmpty = NullString<QORString>();
    onEmpty = QORString();
    EXPECT_TRUE(IsOnTheEmptyBlock(onEmpty));
    QORString empty;
    const auto null = NullString<QORString>();
    empty = null;
    EXPECT_TRUE(IsOnTheEmptyBlock(empty));
    EXPECT_TRUE(IsOnTheEmptyBlock(null));
}

// NOLINTBEGIN(bugprone-use-after-move): the state is promised
TEST(NullHandle, MovedIsRepaired) {
    auto null = NullString<QORString>();
    const QORString made(std::move(null));
    EXPECT_TRUE(made.Init());
    EXPECT_TRUE(IsOnTheEmptyBlock(made));
    EXPECT_TRUE(IsOnTheEmptyBlock(null));
    auto another = NullString<QORString>();
    QORString assigned("old");
    assigned = std::move(another);
    EXPECT_TRUE(assigned.Init());
    EXPECT_TRUE(IsOnTheEmptyBlock(assigned));
    EXPECT_TRUE(IsOnTheEmptyBlock(another));
    auto target = NullString<QORString>();
    target = QORString("abc");
    EXPECT_STREQ(target.ConvertToChar(), "abc");
    EXPECT_EQ(DebugBreaks(), 0);
}
// NOLINTEND(bugprone-use-after-move)

TEST(QORString, OfANullPointerIsEmpty) {
    EXPECT_TRUE(IsOnTheEmptyBlock(QORString(nullptr)));
    const QORString s = nullptr;
    EXPECT_TRUE(s.Init());
    EXPECT_STREQ(s.ConvertToChar(), "");
}
