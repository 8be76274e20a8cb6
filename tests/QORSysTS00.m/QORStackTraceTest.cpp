#include "QORStackTrace.h"

#include "StackSamples.h"
#include "UpwardCalls.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <tuple>
#include <type_traits>

using namespace StackSamples;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr int NoLimit = 1000;

/// A stream into memory.
class Stream {
public:
    Stream() : _file(open_memstream(&_text, &_size)) {}
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() {
        std::fclose(_file);
        std::free(_text);
    }
    operator std::FILE*() { return _file; }
    std::string Text() {
        std::fflush(_file);
        return {_text, _size};
    }

private:
    char* _text = nullptr;
    std::size_t _size = 0;
    std::FILE* _file;
};

std::string NameIn(QORBasicStackTrace& trace, int index) {
    char name[64];
    trace.Read(index, name, sizeof name);
    return name;
}

std::vector<std::string> NamesIn(QORBasicStackTrace& trace) {
    std::vector<std::string> names;
    trace.Print([](void* data, const char* name, const char*, const char*,
                   int) { static_cast<std::vector<std::string>*>(data)->emplace_back(name); },
                &names);
    return names;
}

std::string Hex(const void* address, int digits = 0) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*lx", digits, reinterpret_cast<unsigned long>(address));
    return text;
}

/// The line that Print() gives for an entry.
std::string PrintLine(void* address, const std::string& name) {
    return "pc:" + Hex(address, 14) + " in " + name + "\n";
}

/// The line that an address decodes to.
std::string DecodedLine(void* address) {
    Dl_info info;
    if (dladdr(address, &info) == 0) {
        return "unknown [pc:" + Hex(address) + "]\n";
    }
    const auto* start = static_cast<char*>(info.dli_saddr);
    return std::string(info.dli_sname) + "+" + Hex(reinterpret_cast<void*>(static_cast<char*>(address) - start)) +
           " [pc:" + Hex(address) + " func:" + Hex(start) + " load=" + info.dli_fname + "(" + Hex(info.dli_fbase) +
           ")]\n";
}

long LinesOf(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

/// A trace of sample functions 0 to 4.
class SampleTrace : public QORStackTrace {
public:
    SampleTrace() { GetTrace(_stack.Context()); }

private:
    FiveSamples _stack;
};

[[gnu::noinline]] std::vector<void*> CapturedHere(int skip, int maximum, int count) {
    std::vector<void*> addresses(300);
    const int stored = QORSysGetIPStack(nullptr, skip, maximum, addresses.data(), count);
    addresses.resize(static_cast<std::size_t>(stored));
    return addresses;
}

using Action = void (*)();

QORStackTrace s_trace;
std::vector<void*> s_addresses;
std::string s_text;

/// The name of the frame `position` behind the one with which a capture begins.
std::string NameBehindFirst(int position) {
    return NameIn(s_trace, static_cast<int>(FramesOfBacktraceItself()) + position);
}

/// The decoded form of the address with which a capture begins.
std::string FirstDecoded() {
    Stream stream;
    const auto first = static_cast<int>(FramesOfBacktraceItself());
    s_trace.PrintIPStack(stream, first, first + 1);
    return stream.Text();
}

} // namespace

// Exported, so that their names are known. Nothing is the last act of one, so that all of them have frames.
extern "C" {

__attribute__((noinline)) void StandsInside(Action action) {
    action();
    asm volatile("");
}

__attribute__((noinline)) void StandsOutside(Action action) {
    StandsInside(action);
    asm volatile("");
}

__attribute__((noinline)) int StandsDeep(Action action, int levels) {
    const int below = levels > 1 ? StandsDeep(action, levels - 1) : (action(), 0);
    asm volatile("");
    return below + 1;
}

__attribute__((noinline)) void TracesItself() {
    s_trace.GetTrace();
    asm volatile("");
}

__attribute__((noinline)) void TracesItselfWithNull() {
    s_trace.GetTrace(nullptr);
    asm volatile("");
}

__attribute__((noinline)) void TracesItsCaller() {
    s_trace.GetTrace(reinterpret_cast<void*>(1));
    asm volatile("");
}

__attribute__((noinline)) void CapturesItself() {
    s_addresses = CapturedHere(0, NoLimit, 300);
    asm volatile("");
}

__attribute__((noinline)) void StoresItself() {
    s_trace.GetIPStack(nullptr);
    asm volatile("");
}

__attribute__((noinline)) void StoresItsCaller() {
    s_trace.GetIPStack(reinterpret_cast<void*>(1));
    asm volatile("");
}

__attribute__((noinline)) void PrintsItself() {
    VEL::internal::PrintStackTrace();
    asm volatile("");
}
}

namespace {

// --- form ------------------------------------------------------------------------------------------------------------

static_assert(std::is_base_of_v<QORBasicStackTrace, QORStackTrace>);
static_assert(!std::is_polymorphic_v<QORBasicStackTrace>);
static_assert(!std::has_virtual_destructor_v<QORStackTrace>);

/// Notes which of its operations are called, and with what.
class NotingTrace : public QORStackTrace {
public:
    int GetTrace() override {
        contexts.emplace_back("none");
        return 0;
    }
    int GetTrace(void* context) override {
        contexts.push_back(std::to_string(reinterpret_cast<std::uintptr_t>(context)));
        return 17;
    }
    std::vector<std::string> contexts;
};

TEST(QORStackTrace, HasTwoVirtualOperationsInOrder) {
    NotingTrace trace;
    using Slot = int (*)(void* object, void* argument);
    const Slot* slots = nullptr;
    std::memcpy(&slots, static_cast<void*>(&trace), sizeof slots);
    slots[0](&trace, nullptr);
    EXPECT_EQ(slots[1](&trace, reinterpret_cast<void*>(5)), 17);
    EXPECT_THAT(trace.contexts, ElementsAre("none", "5"));
}

TEST(QORStackTrace, GetTraceCallsTheOtherWith1AndYieldsTheDepth) {
    NotingTrace trace;
    EXPECT_EQ(trace.QORStackTrace::GetTrace(), 0);
    EXPECT_THAT(trace.contexts, ElementsAre("1"));
}

TEST(QORStackTrace, IsEmptyAtFirst) {
    QORStackTrace trace;
    EXPECT_EQ(trace.GetDepth(), 0);
    Stream stream;
    trace.Print(stream, 0, 0);
    trace.Print(stream, 0, 5);
    trace.PrintIPStack(stream, 0, 0);
    EXPECT_EQ(stream.Text(), "");
    EXPECT_THAT(NamesIn(trace), IsEmpty());
    EXPECT_EQ(NameIn(trace, 0), "");
}

// --- the running thread ----------------------------------------------------------------------------------------------

TEST(RunningStack, BeginsWithTheCallerOfTheCapture) {
    StandsOutside(CapturesItself);
    const std::size_t first = FramesOfBacktraceItself();
    ASSERT_GT(s_addresses.size(), first + 3);
    // CapturedHere() has no name of its own.
    EXPECT_EQ(NameOf(s_addresses[first + 1]), "CapturesItself");
    EXPECT_EQ(NameOf(s_addresses[first + 2]), "StandsInside");
    EXPECT_EQ(NameOf(s_addresses[first + 3]), "StandsOutside");
}

TEST(RunningStack, OfGetTraceBeginsWithTheCaller) {
    StandsOutside(TracesItself);
    EXPECT_EQ(NameBehindFirst(0), "TracesItself");
    EXPECT_EQ(NameBehindFirst(1), "StandsInside");
}

TEST(RunningStack, OfGetTraceWithNullBeginsWithTheCaller) {
    StandsOutside(TracesItselfWithNull);
    EXPECT_EQ(NameBehindFirst(0), "TracesItselfWithNull");
    EXPECT_EQ(NameBehindFirst(1), "StandsInside");
}

TEST(RunningStack, OfGetTraceWith1BeginsWithTheCallersCaller) {
    StandsOutside(TracesItsCaller);
    EXPECT_EQ(NameBehindFirst(0), "StandsInside");
    EXPECT_EQ(NameBehindFirst(1), "StandsOutside");
}

TEST(RunningStack, HasMainAsItsLastEntry) {
    TracesItself();
    const std::vector<std::string> names = NamesIn(s_trace);
    ASSERT_EQ(names.size(), static_cast<std::size_t>(s_trace.GetDepth()));
    EXPECT_EQ(names.back(), "main");
    EXPECT_EQ(std::count(names.begin(), names.end(), "main"), 1);
}

TEST(RunningStack, IsCutAt40Entries) {
    EXPECT_EQ(StandsDeep([] { EXPECT_EQ(s_trace.GetTrace(), 40); }, 60), 60);
    EXPECT_EQ(s_trace.GetDepth(), 40);
    EXPECT_EQ(NameIn(s_trace, 39), "StandsDeep");
    EXPECT_EQ(StandsDeep([] { EXPECT_EQ(s_trace.GetIPStack(nullptr), 40); }, 60), 60);
    EXPECT_EQ(s_trace.GetDepth(), 40);
}

TEST(RunningStack, IsCutAt256Addresses) {
    // This function itself is one of them.
    StandsDeep([] { s_addresses = CapturedHere(0, NoLimit, 300); }, 300);
    EXPECT_EQ(s_addresses.size(), 255U);
    StandsDeep([] { s_addresses = CapturedHere(254, NoLimit, 300); }, 300);
    EXPECT_EQ(s_addresses.size(), 1U);
    StandsDeep([] { s_addresses = CapturedHere(255, NoLimit, 300); }, 300);
    EXPECT_EQ(s_addresses.size(), 0U);
}

/// Captures 60 calls deep.
std::size_t SizeOfPart(int skip, int maximum, int count) {
    static int s_skip;
    static int s_maximum;
    static int s_count;
    std::tie(s_skip, s_maximum, s_count) = std::tie(skip, maximum, count);
    StandsDeep([] { s_addresses = CapturedHere(s_skip, s_maximum, s_count); }, 60);
    return s_addresses.size();
}

TEST(RunningStack, GivesThePartThatIsAskedFor) {
    // The maximum counts from the frame that is left out.
    ASSERT_EQ(SizeOfPart(0, 10, 300), 9U);
    const std::vector<void*> innermost = s_addresses;
    ASSERT_EQ(SizeOfPart(4, 10, 300), 5U);
    EXPECT_THAT(s_addresses, ElementsAreArray(innermost.begin() + 4, innermost.end()));
    EXPECT_EQ(SizeOfPart(4, 10, 3), 3U);
    EXPECT_EQ(SizeOfPart(9, 10, 300), 0U);
    EXPECT_EQ(SizeOfPart(0, 0, 300), 0U);
    EXPECT_EQ(SizeOfPart(0, 1, 300), 0U);
    EXPECT_EQ(SizeOfPart(0, -5, 300), 0U);
    EXPECT_EQ(SizeOfPart(-1, 10, 300), 10U);
    EXPECT_EQ(SizeOfPart(INT_MIN, 10, 300), 10U);
    EXPECT_EQ(SizeOfPart(0, NoLimit, 0), 0U);
    EXPECT_EQ(SizeOfPart(0, NoLimit, INT_MIN), 0U);
    EXPECT_EQ(SizeOfPart(INT_MAX, INT_MAX, 300), 0U);
    const std::size_t whole = SizeOfPart(0, NoLimit, 300);
    ASSERT_GT(whole, 60U);
    EXPECT_EQ(SizeOfPart(0, INT_MAX, 300), whole);
    EXPECT_EQ(SizeOfPart(static_cast<int>(whole) - 1, NoLimit, 300), 1U);
    EXPECT_EQ(SizeOfPart(static_cast<int>(whole), NoLimit, 300), 0U);
    EXPECT_EQ(QORSysGetIPStack(nullptr, 0, NoLimit, nullptr, 300), 0);
}

TEST(RunningStack, OfGetIPStackBeginsWithTheCaller) {
    StandsOutside(StoresItself);
    EXPECT_THAT(FirstDecoded(), StartsWith("StoresItself+"));
}

TEST(RunningStack, OfGetIPStackWith1BeginsWithTheCallersCaller) {
    StandsOutside(StoresItsCaller);
    EXPECT_THAT(FirstDecoded(), StartsWith("StandsInside+"));
}

TEST(RunningStack, OfGetIPStackGoesOnBehindMain) {
    TracesItself();
    const int depthToMain = s_trace.GetDepth();
    StoresItself();
    EXPECT_GT(s_trace.GetDepth(), depthToMain);
}

TEST(RunningStack, IsPrintedForTheWarnings) {
    testing::internal::CaptureStdout();
    PrintsItself();
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_THAT(text, StartsWith("pc:0x"));
    EXPECT_THAT(text, HasSubstr(" in PrintsItself\n"));
    EXPECT_THAT(text, EndsWith(" in main\n"));
}

namespace {

void* s_caller;

/// No lambda, which may be called by way of another function.
__attribute__((noinline)) void NotesItsCaller() {
    s_caller = __builtin_return_address(0);
    TracesItself();
    asm volatile("");
}

} // namespace

TEST(RunningStack, GoesOnBehindAFunctionThatIsUnknown) {
    static const MadeFunction s_made;
    StandsInside([] {
        s_made.Call(NotesItsCaller);
        asm volatile("");
    });
    ASSERT_TRUE(s_made.Holds(s_caller));
    const std::vector<std::string> names = NamesIn(s_trace);
    const auto unknown = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
        Stream stream;
        const int index = static_cast<int>(&name - names.data());
        s_trace.Print(stream, index, index + 1);
        return stream.Text() == PrintLine(s_caller, "unknown");
    });
    ASSERT_NE(unknown, names.end());
    EXPECT_NE(std::find(unknown, names.end(), "StandsInside"), names.end());
    EXPECT_EQ(names.back(), "main");
}

TEST(RunningStack, EndsWithMainAndNoOtherNameThatBeginsSo) {
    mainLoop(TracesItself);
    const std::vector<std::string> names = NamesIn(s_trace);
    EXPECT_EQ(std::count(names.begin(), names.end(), "mainLoop"), 1);
    EXPECT_EQ(names.back(), "main");
}

// --- names -----------------------------------------------------------------------------------------------------------

TEST(TraceNames, AreThoseOfTheNearestSymbols) {
    SampleTrace trace;
    EXPECT_EQ(trace.GetDepth(), 5);
    EXPECT_THAT(NamesIn(trace), ElementsAre("SampleFunction0", "SampleFunction1", "SampleFunction2", "SampleFunction3",
                                            "SampleFunction4"));
}

TEST(TraceNames, AreUnknownWithoutSymbolAndCutTo63Bytes) {
    const Frame outermost = {&outermost, InMain()};
    const Frame outer = {&outermost, InTheLongSample()};
    const Frame inner = {&outer, WithoutSymbol()};
    ucontext_t context = ContextAt(InSample(0), &inner);
    QORStackTrace trace;
    EXPECT_EQ(trace.GetTrace(&context), 4);
    EXPECT_THAT(NamesIn(trace), ElementsAre("SampleFunction0", "unknown",
                                            "SampleFunctionWithANameThatIsLongerThanTheSixtyThreeBytesThatAn", "main"));
}

TEST(TraceNames, OfMainAloneEndTheTrace) {
    const Frame outermost = {&outermost, InMain()};
    const Frame outer = {&outermost, InSample(1)};
    ucontext_t context = ContextAt(InMainLoop(), &outer);
    QORStackTrace trace;
    EXPECT_EQ(trace.GetTrace(&context), 3);
    EXPECT_THAT(NamesIn(trace), ElementsAre("mainLoop", "SampleFunction1", "main"));
    EXPECT_EQ(trace.GetIPStack(&context), 3);
}

TEST(TraceNames, AreEmptyAfterGetIPStack) {
    SampleTrace trace;
    FiveSamples stack;
    EXPECT_EQ(trace.GetIPStack(stack.Context()), 5);
    EXPECT_EQ(trace.GetDepth(), 5);
    EXPECT_THAT(NamesIn(trace), Each(""));
    Stream stream;
    trace.Print(stream, 1, 2);
    EXPECT_EQ(stream.Text(), PrintLine(InSample(1), ""));
}

TEST(TraceNames, GoWithTheEntriesThatANewCaptureDoesNotHave) {
    SampleTrace trace;
    ucontext_t context = ContextAt(nullptr, nullptr);
    EXPECT_EQ(trace.GetTrace(&context), 0);
    EXPECT_EQ(trace.GetDepth(), 0);
    EXPECT_EQ(NameIn(trace, 0), "");
}

// --- printing --------------------------------------------------------------------------------------------------------

struct PrintedRange {
    int from;
    int to;
    int first; ///< Number of the first sample that is printed.
    int last;  ///< Number behind the last one.
};

class TraceRange : public testing::TestWithParam<PrintedRange> {};

TEST_P(TraceRange, IsPrinted) {
    const PrintedRange range = GetParam();
    std::string expected;
    for (int i = range.first; i < range.last; ++i) {
        expected += PrintLine(InSample(i), "SampleFunction" + std::to_string(i));
    }
    SampleTrace trace;
    Stream stream;
    trace.Print(stream, range.from, range.to);
    EXPECT_EQ(stream.Text(), expected);
}

TEST_P(TraceRange, IsDecoded) {
    const PrintedRange range = GetParam();
    std::string expected;
    for (int i = range.first; i < range.last; ++i) {
        expected += DecodedLine(InSample(i));
    }
    SampleTrace trace;
    Stream stream;
    trace.PrintIPStack(stream, range.from, range.to);
    EXPECT_EQ(stream.Text(), expected);
}

INSTANTIATE_TEST_SUITE_P(All, TraceRange,
                         testing::Values(PrintedRange{0, 0, 0, 5}, PrintedRange{0, 5, 0, 5}, PrintedRange{0, 6, 0, 5},
                                         PrintedRange{0, 3, 0, 3}, PrintedRange{2, 3, 2, 3}, PrintedRange{2, 2, 2, 5},
                                         PrintedRange{3, 2, 3, 5}, PrintedRange{2, -1, 2, 5}, PrintedRange{-1, 2, 0, 2},
                                         PrintedRange{INT_MIN, INT_MIN, 0, 5}, PrintedRange{4, 5, 4, 5},
                                         PrintedRange{5, 0, 5, 5}, PrintedRange{5, 5, 5, 5}, PrintedRange{5, 9, 5, 5},
                                         PrintedRange{6, 2, 0, 2}, PrintedRange{6, 9, 0, 5},
                                         PrintedRange{INT_MAX, INT_MAX, 0, 5}));

TEST(TracePrint, GivesAnAddressFourteenDigits) {
    EXPECT_EQ(PrintLine(reinterpret_cast<void*>(0x55), "x"), "pc:0x00000000000055 in x\n");
}

TEST(TracePrint, WithoutFilePrintsNothing) {
    SampleTrace trace;
    trace.Print(nullptr, 0, 0);
    trace.PrintIPStack(nullptr, 0, 0);
    EXPECT_EQ(trace.GetDepth(), 5);
}

TEST(TracePrint, CallsBackWithTheNameAndNothingElse) {
    SampleTrace trace;
    using Call = std::tuple<std::string, const char*, const char*, int>;
    std::vector<Call> calls;
    trace.Print([](void* data, const char* name, const char* second, const char* third,
                   int number) { static_cast<std::vector<Call>*>(data)->emplace_back(name, second, third, number); },
                &calls);
    ASSERT_EQ(calls.size(), 5U);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        EXPECT_EQ(calls[i], Call("SampleFunction" + std::to_string(i), nullptr, nullptr, 0));
    }
    trace.Print(nullptr, &calls);
    EXPECT_EQ(calls.size(), 5U);
}

// --- reading a name --------------------------------------------------------------------------------------------------

struct ReadCase {
    int index;
    int size;
    long result; ///< The number that is yielded, or -1 for the buffer.
    std::string bytes;
};

class TraceRead : public testing::TestWithParam<ReadCase> {};

TEST_P(TraceRead, CopiesTheName) {
    const ReadCase& row = GetParam();
    SampleTrace trace;
    std::string buffer(100, '#');
    char* result = trace.Read(row.index, buffer.data(), row.size);
    EXPECT_EQ(result, row.result == -1 ? buffer.data() : reinterpret_cast<char*>(row.result));
    EXPECT_EQ(buffer, row.bytes + std::string(100 - row.bytes.size(), '#'));
}

const std::string s_name = "SampleFunction1";
const std::string s_zero(1, 0);

INSTANTIATE_TEST_SUITE_P(
    All, TraceRead,
    testing::Values(ReadCase{1, 100, 15, s_name + s_zero}, ReadCase{1, 64, 15, s_name + s_zero},
                    ReadCase{1, INT_MAX, 15, s_name + s_zero}, ReadCase{1, 16, 15, s_name + s_zero},
                    ReadCase{1, 15, 15, "SampleFunction" + s_zero}, ReadCase{1, 1, 15, s_zero}, ReadCase{1, 0, -1, ""},
                    ReadCase{1, -1, -1, "S"}, ReadCase{1, -15, -1, s_name}, ReadCase{1, -16, -1, s_name + s_zero},
                    ReadCase{1, -64, -1, s_name + s_zero}, ReadCase{1, -65, -1, s_name + s_zero},
                    ReadCase{1, INT_MIN, -1, s_name + s_zero}, ReadCase{4, 100, 15, "SampleFunction4" + s_zero},
                    ReadCase{5, 100, 0, s_zero}, ReadCase{40, 100, 0, s_zero}, ReadCase{INT_MAX, 100, 0, s_zero},
                    ReadCase{-1, 100, 0, s_zero}, ReadCase{INT_MIN, 100, 0, s_zero}, ReadCase{5, -10, -1, s_zero},
                    ReadCase{-1, -1, -1, s_zero}, ReadCase{5, 0, -1, ""}));

TEST(TraceReadWithoutBuffer, YieldsNull) {
    SampleTrace trace;
    EXPECT_EQ(trace.Read(1, nullptr, 10), nullptr);
    EXPECT_EQ(trace.Read(1, nullptr, 0), nullptr);
    EXPECT_EQ(trace.Read(1, nullptr, -10), nullptr);
}

// --- decoding --------------------------------------------------------------------------------------------------------

TEST(DecodeIPStack, PrintsWhereAnAddressLies) {
    Stream stream;
    void* addresses[] = {InSample(0), InSample(1)};
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 2, stream), 1);
    EXPECT_EQ(stream.Text(), DecodedLine(InSample(0)) + DecodedLine(InSample(1)));
    EXPECT_THAT(stream.Text(), StartsWith("SampleFunction0+0x1 [pc:0x"));
}

TEST(DecodeIPStack, PrintsNoOffsetAtTheStartOfAFunction) {
    Stream stream;
    void* addresses[] = {static_cast<char*>(InSample(0)) - 1};
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 1, stream), 1);
    EXPECT_THAT(stream.Text(), StartsWith("SampleFunction0+(nil) [pc:0x"));
}

TEST(DecodeIPStack, PrintsUnknownAddresses) {
    Stream stream;
    void* addresses[] = {nullptr, Unknown(), InSample(0), nullptr};
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 4, stream), 1);
    EXPECT_EQ(stream.Text(),
              "unknown [pc:(nil)]\nunknown [pc:0x1000]\n" + DecodedLine(InSample(0)) + "unknown [pc:(nil)]\n");
}

TEST(DecodeIPStack, PrintsAnAddressWithoutSymbolAsItsOwnOffset) {
    Stream stream;
    void* addresses[] = {WithoutSymbol()};
    Dl_info info;
    dladdr(addresses[0], &info);
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 1, stream), 1);
    const std::string address = Hex(addresses[0]);
    EXPECT_EQ(stream.Text(), "unknown+" + address + " [pc:" + address + " func:(nil) load=" + info.dli_fname + "(" +
                                 Hex(info.dli_fbase) + ")]\n");
}

TEST(DecodeIPStack, StopsBehindMain) {
    Stream stream;
    void* addresses[] = {InSample(0), InMain(), InSample(1)};
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 3, stream), 1);
    EXPECT_EQ(stream.Text(), DecodedLine(InSample(0)) + DecodedLine(InMain()));
}

TEST(DecodeIPStack, GoesOnBehindANameThatOnlyBeginsAsMain) {
    Stream stream;
    void* addresses[] = {InMainLoop(), InSample(1)};
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 2, stream), 1);
    EXPECT_EQ(stream.Text(), DecodedLine(InMainLoop()) + DecodedLine(InSample(1)));
}

TEST(DecodeIPStack, RefusesBadArguments) {
    Stream stream;
    void* addresses[] = {InSample(0)};
    EXPECT_EQ(QORSysDecodeIPStack(nullptr, 1, stream), 0);
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 1, nullptr), 0);
    EXPECT_EQ(QORSysDecodeIPStack(addresses, 0, stream), 0);
    EXPECT_EQ(QORSysDecodeIPStack(addresses, INT_MIN, stream), 0);
    EXPECT_EQ(stream.Text(), "");
}

TEST(DirectTrace, DecodesAtOnceAndKeepsTheEntries) {
    QORStackTrace trace;
    FiveSamples stack;
    Stream stream;
    EXPECT_EQ(trace.DirectTrace(stream, stack.Context(), 1, 4), 3);
    EXPECT_EQ(stream.Text(), DecodedLine(InSample(1)) + DecodedLine(InSample(2)) + DecodedLine(InSample(3)));
    EXPECT_EQ(trace.GetDepth(), 0);
    EXPECT_EQ(trace.DirectTrace(nullptr, stack.Context(), 0, 99), 5);
    EXPECT_EQ(trace.DirectTrace(stream, stack.Context(), 5, 99), 0);
}

TEST(DirectTrace, IsCutAt40) {
    StandsDeep(
        [] {
            Stream stream;
            EXPECT_EQ(s_trace.DirectTrace(stream, nullptr, 0, 99), 40);
            EXPECT_EQ(LinesOf(stream.Text()), 40);
            s_text = stream.Text();
        },
        60);
    EXPECT_THAT(s_text, HasSubstr("_ZN13QORStackTrace11DirectTraceE"));
}

TEST(DirectTrace, ReachesBehindTheAddressesOfATrace) {
    StandsDeep(
        [] {
            Stream stream;
            EXPECT_EQ(s_trace.DirectTrace(stream, nullptr, 120, 1000), 40);
            EXPECT_EQ(LinesOf(stream.Text()), 40);
            EXPECT_THAT(stream.Text(), StartsWith("StandsDeep+"));
            EXPECT_EQ(s_trace.DirectTrace(nullptr, nullptr, 120, 131), 10);
            EXPECT_EQ(s_trace.DirectTrace(nullptr, nullptr, 90, 99), 8);
        },
        200);
}

// --- without implementation ------------------------------------------------------------------------------------------

TEST(Symbols, AreNotLookedUp) {
    char buffer[8] = "as was";
    EXPECT_EQ(QORSysGetSymbol(InSample(0), stdout, buffer, sizeof buffer, 1), 0);
    EXPECT_EQ(QORSysGetSymbolFromMethodPointer(InSample(0), stdout, buffer, sizeof buffer, 1), 0);
    EXPECT_STREQ(buffer, "as was");
}

TEST(LoadsList, CannotBeHad) {
    int number = 0;
    char** list = nullptr;
    EXPECT_EQ(QORSysGetLoadsList(nullptr, nullptr, nullptr, nullptr, 7), 1);
    EXPECT_EQ(QORSysGetLoadsList(&number, nullptr, nullptr, nullptr, 7), 4);
    EXPECT_EQ(QORSysGetLoadsList(nullptr, &number, nullptr, nullptr, 7), 4);
    EXPECT_EQ(QORSysGetLoadsList(nullptr, nullptr, &list, nullptr, 7), 4);
    EXPECT_EQ(QORSysGetLoadsList(nullptr, nullptr, nullptr, stdout, 7), 4);
    EXPECT_EQ(list, nullptr);
}

char** NewList(const std::vector<const char*>& texts) {
    auto* list = static_cast<char**>(std::calloc(texts.size() + 1, sizeof(char*)));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        list[i] = texts[i] != nullptr ? strdup(texts[i]) : nullptr;
    }
    return list;
}

TEST(LoadsList, IsFreedWithItsStrings) {
    char** list = NewList({"one", "two", nullptr, ""});
    EXPECT_EQ(QORSysDelLoadsList(&list, 4), 0);
    EXPECT_EQ(list, nullptr);
}

TEST(LoadsList, IsRefusedWhenItIsNull) {
    char** list = nullptr;
    EXPECT_EQ(QORSysDelLoadsList(nullptr, 1), 1);
    EXPECT_EQ(QORSysDelLoadsList(&list, 1), 1);
    EXPECT_EQ(QORSysDelLoadsList(nullptr, 0), 1);
    EXPECT_EQ(QORSysDelLoadsList(&list, 0), 1);
}

TEST(LoadsList, OfNoStringsIsLeftAlone) {
    char** list = NewList({});
    char** const before = list;
    EXPECT_EQ(QORSysDelLoadsList(&list, 0), 2);
    EXPECT_EQ(list, before);
    std::free(list);
}

TEST(LoadsList, OfLessThanNoStringsLosesItsArrayOnly) {
    char** list = NewList({});
    EXPECT_EQ(QORSysDelLoadsList(&list, -1), 0);
    EXPECT_EQ(list, nullptr);
}

TEST(LoadsList, IsFreedUpToItsEndMark) {
    char** list = NewList({"one", "end of list", "two"});
    char** const before = list;
    EXPECT_EQ(QORSysDelLoadsList(&list, 3), 1);
    ASSERT_EQ(list, before);
    EXPECT_EQ(list[0], nullptr);
    EXPECT_STREQ(list[1], "end of list");
    EXPECT_STREQ(list[2], "two");
    // Once more, nothing is freed twice.
    EXPECT_EQ(QORSysDelLoadsList(&list, 3), 1);
    std::free(list[1]);
    std::free(list[2]);
    std::free(list);
}

} // namespace
