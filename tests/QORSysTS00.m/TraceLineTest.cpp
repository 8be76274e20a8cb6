// What a line looks like, byte by byte.

#include "HeapLog.h"
#include "TraceSupport.h"

#include <clocale>
#include <cstdarg>
#include <cwchar>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace TraceSupport;

namespace {

int Forward(int (VELSysTrace::*write)(const char*, std::va_list), VELSysTrace& trace, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = (trace.*write)(format, arguments);
    va_end(arguments);
    return result;
}

int ForwardError(VELSysTrace& trace, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = trace.ErrorV("dir/x.cpp", 12, format, arguments);
    va_end(arguments);
    return result;
}

/// One of the calls that write a line, always "text 7".
struct Call {
    const char* name;
    int (*write)(VELSysTrace&);
    LineParts parts;
};

const Call s_calls[] = {
    {"Info", [](VELSysTrace& t) { return t.Info("text %d", 7); }, {.level = 1}},
    {"Debug", [](VELSysTrace& t) { return t.Debug("text %d", 7); }, {.level = 2}},
    {"Warning", [](VELSysTrace& t) { return t.Warning("text %d", 7); }, {.level = 3}},
    {"InfoWithCode", [](VELSysTrace& t) { return t.Info(42, "text %d", 7); }, {.level = 1, .code = 42}},
    {"DebugWithCode", [](VELSysTrace& t) { return t.Debug(1023, "text %d", 7); }, {.level = 2, .code = 1023}},
    {"WarningWithCode", [](VELSysTrace& t) { return t.Warning(1, "text %d", 7); }, {.level = 3, .code = 1}},
    {"InfoWithCodeZero", [](VELSysTrace& t) { return t.Info(0, "text %d", 7); }, {.level = 1}},
    {"InfoV", [](VELSysTrace& t) { return Forward(&VELSysTrace::InfoV, t, "text %d", 7); }, {.level = 1}},
    {"DebugV", [](VELSysTrace& t) { return Forward(&VELSysTrace::DebugV, t, "text %d", 7); }, {.level = 2}},
    {"WarningV", [](VELSysTrace& t) { return Forward(&VELSysTrace::WarningV, t, "text %d", 7); }, {.level = 3}},
    {"Error",
     [](VELSysTrace& t) { return t.Error("a/b.cpp", 725, "text %d", 7); },
     {.level = 4, .source = {{"a/b.cpp", 725}}}},
    {"ErrorWithCode",
     [](VELSysTrace& t) { return t.Error("a/b.cpp", -1, 42, "text %d", 7); },
     {.level = 4, .code = 42, .source = {{"a/b.cpp", -1}}}},
    {"ErrorWithoutFile", [](VELSysTrace& t) { return t.Error(nullptr, 3, "text %d", 7); }, {.level = 4}},
    {"ErrorV",
     [](VELSysTrace& t) { return ForwardError(t, "text %d", 7); },
     {.level = 4, .source = {{"dir/x.cpp", 12}}}},
};

/// What the time stamp is made from.
struct Clock {
    const char* name;
    bool isLocalTime;
    bool hasTimer;
};

const Clock s_clocks[] = {{"UTC", false, true},
                          {"LocalTime", true, true},
                          {"UTCWithoutTimer", false, false},
                          {"LocalWithoutTimer", true, false}};

/// Has the lines of a file that is open already, in the directory of its time in UTC, follow local time.
void UseLocalTime(const char* destination, bool on = true) {
    VELSysTraceManagerAddOptionToTrace(destination, VELSysTraceOptionLocalTime, on ? 1 : 0);
}

class TraceLine : public TraceTest {};

class TraceLineOfEachCall : public TraceTest, public testing::WithParamInterface<std::tuple<Call, Clock>> {};

} // namespace

TEST_P(TraceLineOfEachCall, HasItsElements) {
    const auto& [call, clock] = GetParam();
    setenv("TZ", "XYZ-5:45", 1);
    ASSERT_EQ(Configure({{"f", {"LifeCycle"}}}), 0);
    UseLocalTime("f", clock.isLocalTime);
    if (!clock.hasTimer) {
        timer.reset();
    }
    const TraceHandle trace("LifeCycle");
    EXPECT_EQ(call.write(*trace), 0);
    LineParts parts = call.parts;
    parts.tag = "LifeCycle";
    parts.isLocalTime = clock.isLocalTime;
    EXPECT_EQ(FileText("f"), PlainLine(parts, "text 7"));
}

INSTANTIATE_TEST_SUITE_P(Calls, TraceLineOfEachCall,
                         testing::Combine(testing::ValuesIn(s_calls), testing::ValuesIn(s_clocks)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + std::get<1>(row.param).name;
                         });

TEST_F(TraceLine, IsSpelledOut) {
    Configure({{"f", {"LifeCycle"}}, {"g", {"Other"}}});
    UseLocalTime("g");
    setenv("TZ", "XYZ-1", 1);
    char thread[32];
    std::snprintf(thread, sizeof thread, "[%016llX]", static_cast<unsigned long long>(pthread_self()));
    TraceHandle("LifeCycle")->Info("text");
    EXPECT_EQ(FileText("f"), std::string("[I][2026-11-15T11:18:27.123Z][LifeCycle]") + thread + " text\n");
    TraceHandle("Other")->Error("src/Process", 725, 42, "text");
    EXPECT_EQ(FileText("g"),
              std::string("[E][2026-11-15@12:18:27.123][Other]") + thread + "[0000002a](src/Process : 725) text\n");
}

TEST_F(TraceLine, FollowsTheTimeZoneOfTheMoment) {
    Configure({{"f", {"A"}}});
    UseLocalTime("f");
    const TraceHandle trace("A");
    std::string expected;
    for (const char* zone : {"XYZ-1", "XYZ+11", "UTC0"}) {
        setenv("TZ", zone, 1);
        tzset();
        expected += PlainLine({.level = 1, .tag = "A", .isLocalTime = true}, zone);
        setenv("TZ", "XYZ-3", 1);
        tzset();
        setenv("TZ", zone, 1);
        trace->Info("%s", zone);
    }
    EXPECT_EQ(FileText("f"), expected);
}

TEST_F(TraceLine, HasTheTimeOfEachMoment) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    std::mt19937_64 random(7);
    std::string expected;
    for (int i = 0; i < 4000; ++i) {
        // Year -9999 to 20000, with runs within a second.
        if (i % 3 != 0) {
            timer->tv_sec = std::uniform_int_distribution<long>(-377705116800, 568971820800)(random);
        }
        timer->tv_usec = std::uniform_int_distribution<long>(0, 999999)(random);
        trace->Debug("%d", i);
        expected += PlainLine({.level = 2, .tag = "A"}, std::to_string(i));
    }
    EXPECT_EQ(FileText("f"), expected);
}

TEST_F(TraceLine, HasTheTimeOfTheBordersOfMonthsAndDays) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    std::string expected;
    for (const std::time_t second : {0L, -1L, 951782399L, 951782400L, 951868800L, 1709164800L, 4107542400L,
                                     253402300799L, 253402300800L, -62135596800L, -62135596801L}) {
        for (const long microseconds : {0L, 999L, 1000L, 999999L}) {
            timer = timeval{second, microseconds};
            trace->Info("x");
            expected += PlainLine({.level = 1, .tag = "A"}, "x");
        }
    }
    EXPECT_EQ(FileText("f"), expected);
}

TEST_F(TraceLine, ShowsEachNumberOfMicroseconds) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    std::string expected;
    for (const auto& [microseconds, shown] :
         std::vector<std::pair<long, std::string>>{{0, "000"},
                                                   {999999, "999"},
                                                   {1000000, "1000"},
                                                   {-1, "000"},
                                                   {-1000, "-01"},
                                                   {-5000000, "-5000"},
                                                   {std::numeric_limits<long>::max(), "9223372036854775"},
                                                   {std::numeric_limits<long>::min(), "-9223372036854775"}}) {
        timer = timeval{FixedTime, microseconds};
        EXPECT_EQ(trace->Info("x"), 0);
        std::string line = PlainLine({.level = 1, .tag = "A"}, "x");
        const std::size_t point = line.find('.') + 1;
        expected += line.replace(point, line.find('Z') - point, shown);
    }
    EXPECT_EQ(FileText("f"), expected);
}

TEST_F(TraceLine, ShowsYearsBeyondThoseThatAnIntCanHold) {
    Configure({{"f", {"A"}}});
    VELSysTraceLineOptions line{VELSysTraceTimeStamp, 1, 0, 0, "A", "\n", nullptr};
    timer->tv_sec = 67768036191676799;
    EXPECT_EQ(DestinationPeek::Prefix(DestinationOf("f"), line), "[2147485547-12-31T23:59:59.123Z] ");
    UseLocalTime("f");
    setenv("TZ", "UTC0", 1);
    EXPECT_EQ(DestinationPeek::Prefix(DestinationOf("f"), line), "[2147485547-12-31@23:59:59.123] ");
}

TEST_F(TraceLine, OfATimeThatNoCalendarHoldsHasTheDay0) {
    Configure({{"f", {"A"}}});
    VELSysTraceLineOptions line{VELSysTraceTimeStamp, 1, 0, 0, "A", "\n", nullptr};
    for (const std::time_t time :
         {67768036191676800L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
        timer->tv_sec = time;
        UseLocalTime("f", false);
        EXPECT_EQ(DestinationPeek::Prefix(DestinationOf("f"), line), "[1900-01-00T00:00:00.123Z] ");
        UseLocalTime("f");
        EXPECT_EQ(DestinationPeek::Prefix(DestinationOf("f"), line), "[1900-01-00@00:00:00.123] ");
    }
}

TEST_F(TraceLine, WithoutATimerKeepsNoOlderTime) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    trace->Info("a");
    std::string expected = PlainLine({.level = 1, .tag = "A"}, "a");
    timer.reset();
    plainTime += 86400;
    trace->Info("b");
    expected += PlainLine({.level = 1, .tag = "A"}, "b");
    EXPECT_EQ(FileText("f"), expected);
}

TEST_F(TraceLine, ShowsTheCodeWithoutItsHiddenBit) {
    Configure({{"f", {"A"}}});
    VELSysTraceObjBase& destination = DestinationOf("f");
    for (const int code : {0, 1, 0x400, 0x401, 0x3FF, 0x7FF, 0x800, -1, 0x7FFFFFFF, static_cast<int>(0x80000000U)}) {
        VELSysTraceLineOptions line{VELSysTraceCode, 1, code, 0, "A", "\n", nullptr};
        EXPECT_EQ(DestinationPeek::Prefix(destination, line), PlainPrefix({.code = code, .options = 4})) << code;
    }
    VELSysTraceLineOptions line{VELSysTraceCode, 1, 0x400, 0, "A", "\n", nullptr};
    EXPECT_EQ(DestinationPeek::Prefix(destination, line), " ");
    line.code = 0x401;
    EXPECT_EQ(DestinationPeek::Prefix(destination, line), "[00000401] ");
}

TEST_F(TraceLine, HasTheElementsOfItsOptions) {
    Configure({{"f", {"A"}}});
    VELSysTraceObjBase& destination = DestinationOf("f");
    for (unsigned int options = 0; options < 64; ++options) {
        VELSysTraceLineOptions line{options, 1, 9, 3, "tag", "\n", options % 2 != 0 ? "x" : nullptr};
        LineParts parts{.tag = "tag", .code = 9, .options = options};
        if (options % 2 != 0) {
            parts.source = {{"x", 3}};
        }
        EXPECT_EQ(DestinationPeek::Prefix(destination, line), PlainPrefix(parts)) << options;
    }
}

TEST_F(TraceLine, OfNoTagHasAnEmptyNameElement) {
    Configure({{"f", {"A"}}});
    VELSysTraceLineOptions line{VELSysTraceName, 1, 0, 0, nullptr, "\n", nullptr};
    EXPECT_EQ(DestinationPeek::Prefix(DestinationOf("f"), line), "[] ");
}

TEST_F(TraceLine, HasNoPrefixWhileTheDestinationIsNotEnabled) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionEnabled, 0}}}});
    VELSysTraceLineOptions line{63, 1, 0, 0, "A", "\n", nullptr};
    EXPECT_EQ(DestinationPeek::Prefix(DestinationOf("f"), line), "");
}

TEST_F(TraceLine, HasAPrefixThatIsCutAtItsLimit) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    std::string expected;
    for (const int length : {8000, 8110, 8120, 8121, 8122, 8123, 8124, 8125, 8126, 8127, 8128,
                             8129, 8130, 8131, 8132, 8133, 8134, 8135, 8190, 8191, 8192, 9000}) {
        const std::string file(static_cast<std::size_t>(length), 'f');
        EXPECT_EQ(trace->Error(file.c_str(), 1234567, "message %d", length), 0);
        expected +=
            PlainLine({.level = 4, .tag = "A", .source = {{file, 1234567}}}, "message " + std::to_string(length));
    }
    EXPECT_EQ(FileText("f"), expected);
}

TEST_F(TraceLine, TakesAMessageOfEveryLength) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    std::vector<std::size_t> lengths{1, 2, 80, 4094, 4095, 4096, 4097, 5000, 8191, 8192, 8193, 1000000};
    for (std::size_t length = 8100; length < 8160; ++length) {
        lengths.push_back(length);
    }
    std::string expected;
    for (const std::size_t length : lengths) {
        std::string message(length, 'm');
        message.back() = '$';
        EXPECT_EQ(trace->Info("%s", message.c_str()), 0);
        expected += PlainLine({.level = 1, .tag = "A"}, message);
    }
    EXPECT_TRUE(FileText("f") == expected);
}

TEST_F(TraceLine, OfAnEmptyMessageIsNotWritten) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("%s", ""), -1);
    EXPECT_EQ(trace->Error("f", 1, "%s", ""), -1);
    EXPECT_EQ(FileText("f"), "");
}

TEST_F(TraceLine, OfANullFormatIsNotWritten) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    const char* const none = nullptr;
    EXPECT_EQ(trace->Info(none), -1);
    EXPECT_EQ(trace->Debug(none), -1);
    EXPECT_EQ(trace->Warning(none), -1);
    EXPECT_EQ(trace->Info(3, none), -1);
    EXPECT_EQ(trace->Debug(3, none), -1);
    EXPECT_EQ(trace->Warning(3, none), -1);
    EXPECT_EQ(trace->Error("f", 1, none), -1);
    EXPECT_EQ(trace->Error("f", 1, 3, none), -1);
    EXPECT_EQ(Forward(&VELSysTrace::InfoV, *trace, none), -1);
    EXPECT_EQ(ForwardError(*trace, none), -1);
    EXPECT_EQ(FileText("f"), "");
}

TEST_F(TraceLine, ThatCannotBeFormattedIsNotWritten) {
    std::setlocale(LC_ALL, "C");
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("before %ls", L"\u20AC"), -1);
    EXPECT_EQ(FileText("f"), "");
}

TEST_F(TraceLine, EndsItsMessageAtAZero) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("a%cb", 0), 0);
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "A"}, "a"));
}

TEST_F(TraceLine, IsCutWhenThereIsNoMemoryForItsMessage) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    const std::string message(5000, 'm');
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_EQ(trace->Info("%s", message.c_str()), 0);
        EXPECT_TRUE(HeapShortage::HasStruck());
    }
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "A"}, message.substr(0, 4095)));
}

TEST_F(TraceLine, BelowTheSizeOfTheBufferTakesNoMemory) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    const HeapLog log;
    trace->Info("%s", std::string(4095, 'm').c_str());
    EXPECT_EQ(log.Requests().size(), 0U);
}

namespace {

/// A trace of the older writers, and its call.
struct WriterCall {
    const char* name;
    int (*write)(VELSysQORTrace&);
    const char* expected;
};

const WriterCall s_writerCalls[] = {
    {"TraPrint", [](VELSysQORTrace& t) { return t.TraPrint("text %d", 7); }, " text 7"},
    {"TraPrintWithCode", [](VELSysQORTrace& t) { return t.TraPrint(9, "text %d", 7); }, " text 7"},
    {"TraPrintNL", [](VELSysQORTrace& t) { return t.TraPrintNL("text %d", 7); }, " text 7\n"},
    {"TraPrintNLWithCode", [](VELSysQORTrace& t) { return t.TraPrintNL(9, "text %d", 7); }, " text 7\n"},
    {"TraPut", [](VELSysQORTrace& t) { return t.TraPut("text 100%%"); }, " text 100%"},
    {"TraPutWithCode", [](VELSysQORTrace& t) { return t.TraPut(9, "text 100%%"); }, " text 100%"},
    {"TraPutNumber", [](VELSysQORTrace& t) { return t.TraPut("text%%", -5); }, " text%% -5"},
    {"TraPutNumberWithCode", [](VELSysQORTrace& t) { return t.TraPut(9, "text%%", -5); }, " text%% -5"},
    {"TraPutLN", [](VELSysQORTrace& t) { return t.TraPutLN("text 100%%"); }, " text 100%\n"},
    {"TraPutLNWithCode", [](VELSysQORTrace& t) { return t.TraPutLN(9, "text 100%%"); }, " text 100%\n"},
    {"TraPutLNNumber", [](VELSysQORTrace& t) { return t.TraPutLN("text%%", -5); }, " text%% -5\n"},
    {"TraPutLNNumberWithCode", [](VELSysQORTrace& t) { return t.TraPutLN(9, "text%%", -5); }, " text%% -5\n"},
};

class TraceLineOfEachWriter : public TraceTest, public testing::WithParamInterface<WriterCall> {};

} // namespace

TEST_P(TraceLineOfEachWriter, HasABlankInFront) {
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    EXPECT_EQ(GetParam().write(trace), 0);
    EXPECT_EQ(FileText("f"), GetParam().expected);
}

TEST_P(TraceLineOfEachWriter, NeedsNoTraceThatIsActive) {
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    VELSysTraceActivate__(&trace, 0);
    EXPECT_EQ(GetParam().write(trace), 0);
    EXPECT_EQ(FileText("f"), GetParam().expected);
}

TEST_P(TraceLineOfEachWriter, NeedsADestinationThatIsEnabled) {
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionEnabled, 0);
    EXPECT_EQ(GetParam().write(trace), -1);
    EXPECT_EQ(FileText("f"), "");
}

INSTANTIATE_TEST_SUITE_P(Writers, TraceLineOfEachWriter, testing::ValuesIn(s_writerCalls),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(TraceLine, OfAWriterKeepsToTheRangeOfCodes) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionMinimumCode, 5}, {VELSysTraceOptionMaximumCode, 7}}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    EXPECT_EQ(trace.TraPrint(4, "4"), -1);
    EXPECT_EQ(trace.TraPrint(5, "5"), 0);
    EXPECT_EQ(trace.TraPrint(6, "6"), 0);
    EXPECT_EQ(trace.TraPrint(7, "7"), -1);
    EXPECT_EQ(trace.TraPrint("0"), -1);
    EXPECT_EQ(FileText("f"), " 5 6");
}
