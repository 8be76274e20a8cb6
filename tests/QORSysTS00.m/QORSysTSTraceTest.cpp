/// @file
/// Reference traces: the option file, what is written where, and the table of the records.

#include "QORSysTSTrace.h"
#include "Child.h"
#include "ScratchDirectory.h"

#include <climits>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <memory>
#include <new>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

/// What the library has opened last.
std::string s_lastOpened;

} // namespace

extern "C" int __real_open(const char* name, int flags, ...);
extern "C" int __wrap_open(const char* name, int flags, ...) {
    s_lastOpened = name;
    std::va_list more;
    va_start(more, flags);
    const unsigned int mode = (flags & O_CREAT) != 0 ? va_arg(more, unsigned int) : 0;
    va_end(more);
    return __real_open(name, flags, mode);
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* FirstQuoteMissing =
    "Error in QORSysTSTraceOpt.txt file : Missing 1st \" in -o option. The -o option syntax is -o \"file_path\"  and "
    "the \" characters are mandatory .\n";
constexpr const char* SecondQuoteMissing =
    "Error in QORSysTSTraceOpt.txt file : missing 2nd  \" in -o option. The -o option syntax is -o \"file_path\"  and "
    "the \" characters are mandatory .\n";

// The option file.

struct Read {
    std::string name;
    std::string file;

    bool operator==(const Read& other) const { return name == other.name && file == other.file; }
};

void PrintTo(const Read& read, std::ostream* out) {
    *out << read.name << " to " << read.file;
}

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, Close>;

/// What is read from an option file, and the messages.
struct Options {
    explicit Options(std::string text) {
        const OpenFile options(text.empty() ? std::fopen("/dev/null", "r") : fmemopen(text.data(), text.size(), "r"));
        testing::internal::CaptureStderr();
        char name[64];
        char file[2049];
        int state = 7;
        while (QORSysTSRefTrace::ReadOptFile(options.get(), name, &state, file) != 0) {
            EXPECT_EQ(state, 0);
            lines.push_back({name, file});
            state = 7;
        }
        messages = testing::internal::GetCapturedStderr();
    }

    std::vector<Read> lines;
    std::string messages;
};

struct Line {
    const char* description;
    std::string text;
    std::vector<Read> expected;
    std::string messages;
};

void PrintTo(const Line& line, std::ostream* out) {
    *out << line.description;
}

class ReferenceTraceLines : public testing::TestWithParam<Line> {};

TEST_P(ReferenceTraceLines, AreReadAs) {
    const Options options(GetParam().text);
    EXPECT_EQ(options.lines, GetParam().expected);
    EXPECT_EQ(options.messages, GetParam().messages);
}

const std::string Name63(63, 'n');
const std::string File2048(2048, 'f');

const Line Lines[] = {
    {"Nothing", "", {}, ""},
    {"ANameAlone", "t:A\n", {{"A", "STDERR"}}, ""},
    {"NoLineFeedAtTheEnd", "t:A", {{"A", "STDERR"}}, ""},
    {"ACarriageReturnEndsAName", "t:A\r\n", {{"A", "STDERR"}}, ""},
    {"ATabIsPartOfAName", "t:A\tB\n", {{"A\tB", "STDERR"}}, ""},
    {"AnEmptyName", "t: B\n", {{"", "STDERR"}}, ""},
    {"AFile", "t:A -o \"/tmp/a b.txt\"\n", {{"A", "/tmp/a b.txt"}}, ""},
    {"AnEmptyFile", "t:A -o \"\"\n", {{"A", ""}}, ""},
    {"SpacesInFront", "   t:A -o \"f\"\n", {{"A", "f"}}, ""},
    {"ATabInFront", "\tt:A\n", {}, ""},
    {"AComment", "// t:A\n//t:B\n  //t:C\nt:D\n", {{"D", "STDERR"}}, ""},
    {"OtherLines", "A\nT:B\nt;C\nt\n\n:\nt:D\n", {{"D", "STDERR"}}, ""},
    {"SomethingBeforeTheOption", "t:A x y -o \"f\" z\n", {{"A", "f"}}, ""},
    {"TheFirstOfTwoOptions", "t:A -o \"f\" -o \"g\"\n", {{"A", "f"}}, ""},
    {"AnOptionWithoutItsSpaces", "t:A -o\"f\"\nt:B-o \"f\"\n", {{"A", "STDERR"}, {"B-o", "STDERR"}}, ""},
    {"NoOutputAfterOneWithOutput", "t:A -o \"f\"\nt:B\n", {{"A", "f"}, {"B", "STDERR"}}, ""},
    {"NoFirstQuote", "t:A -o \nt:B\n", {{"A", "STDERR"}, {"B", "STDERR"}}, FirstQuoteMissing},
    {"NoFirstQuoteAtTheEnd", "t:A -o ", {{"A", "STDERR"}}, FirstQuoteMissing},
    {"NoQuotes", "t:A -o f\n", {{"A", "STDERR"}}, FirstQuoteMissing},
    {"TwoSpacesBeforeTheQuote", "t:A -o  \"f\"\n", {{"A", "STDERR"}}, FirstQuoteMissing},
    {"NoSecondQuote", "t:A -o \"f\nt:B\n", {{"A", "STDERR"}, {"B", "STDERR"}}, SecondQuoteMissing},
    {"AQuoteAtTheEnd", "t:A -o \"", {{"A", "STDERR"}}, SecondQuoteMissing},
    {"ANameOf63Bytes", "t:" + Name63 + "\n", {{Name63, "STDERR"}}, ""},
    {"ANameOf64BytesIsCut", "t:" + Name63 + "x -o \"f\"\n", {{Name63, "f"}}, ""},
    {"AFileOf2048Bytes", "t:A -o \"" + File2048 + "\"\n", {{"A", File2048}}, ""},
    {"AFileOf2049BytesIsCut", "t:A -o \"" + File2048 + "x\"\n", {{"A", File2048}}, ""},
    {"ALineOf4091Bytes", std::string(4088, ' ') + "t:At:B\n", {{"A", "STDERR"}, {"B", "STDERR"}}, ""},
    {"TheRestOfALongLineIsALine", std::string(4091, 'x') + "t:B\n", {{"B", "STDERR"}}, ""},
    {"AnOutputCutByTheEndOfALine",
     "t:A -o \"" + std::string(4091, 'f') + "\"\n",
     {{"A", "STDERR"}},
     SecondQuoteMissing},
    {"AZeroByteEndsALine", std::string("t:A\0 -o \"f\"\nt:B\n", 17), {{"A", "STDERR"}, {"B", "STDERR"}}, ""},
};

INSTANTIATE_TEST_SUITE_P(Table, ReferenceTraceLines, testing::ValuesIn(Lines),
                         [](const auto& row) { return std::string(row.param.description); });

TEST(ReferenceTraceOptions, NullIsTheEnd) {
    std::string text = "t:A\n";
    const OpenFile options(fmemopen(text.data(), text.size(), "r"));
    char name[64];
    char file[2049];
    int state = 0;
    EXPECT_EQ(QORSysTSRefTrace::ReadOptFile(nullptr, name, &state, file), 0);
    EXPECT_EQ(QORSysTSRefTrace::ReadOptFile(options.get(), nullptr, &state, file), 0);
    EXPECT_EQ(QORSysTSRefTrace::ReadOptFile(options.get(), name, nullptr, file), 0);
    EXPECT_EQ(QORSysTSRefTrace::ReadOptFile(options.get(), name, &state, nullptr), 0);
    EXPECT_EQ(QORSysTSRefTrace::ReadOptFile(options.get(), name, &state, file), 1);
}

// The table.

TEST(ReferenceTraceKey, IsTheSumOfTheFirst64Bytes) {
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey(nullptr), 0U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey(""), 0U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey("A"), 65U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey("AB"), 131U & 127U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey("\xff"), 127U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey("\x80\x03"), 3U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey((std::string(63, '\x80') + "\x01").c_str()), 1U);
    EXPECT_EQ(QORSysTSRefTrace::CalcRefKey((std::string(64, '\x80') + "\x01").c_str()), 0U);
}

TEST(ReferenceTraceTable, MakesARecordOnDemand) {
    int wasNew = 7;
    EXPECT_EQ(QORSysTSRefTrace::FindRef("AB", 0, &wasNew), nullptr);
    EXPECT_EQ(wasNew, 7);
    QORSysTSRefTrace* const made = QORSysTSRefTrace::FindRef("AB", 1, &wasNew);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(wasNew, -1);
    EXPECT_FALSE(made->IsActive());
    for (const int create : {0, 1}) {
        wasNew = 7;
        EXPECT_EQ(QORSysTSRefTrace::FindRef("AB", create, &wasNew), made);
        EXPECT_EQ(wasNew, 0);
    }
    EXPECT_EQ(QORSysTSRefTrace::FindRef("AB", 0, nullptr), made);
}

QORSysTSRefTrace* NextOf(const QORSysTSRefTrace* record) {
    QORSysTSRefTrace* next = nullptr;
    std::memcpy(&next, reinterpret_cast<const char*>(record) + 80, sizeof next);
    return next;
}

TEST(ReferenceTraceTable, KeepsTheOrderOfABucket) {
    QORSysTSRefTrace* const first = QORSysTSRefTrace::FindRef("AD", 1, nullptr);
    QORSysTSRefTrace* const second = QORSysTSRefTrace::FindRef("DA", 1, nullptr);
    QORSysTSRefTrace* const third = QORSysTSRefTrace::FindRef("BC", 1, nullptr);
    EXPECT_EQ(NextOf(first), second);
    EXPECT_EQ(NextOf(second), third);
    EXPECT_EQ(NextOf(third), nullptr);
    EXPECT_EQ(QORSysTSRefTrace::FindRef("DA", 0, nullptr), second);
    EXPECT_EQ(QORSysTSRefTrace::FindRef("CB", 0, nullptr), nullptr);
}

TEST(ReferenceTraceTable, TakesNamesOf63Bytes) {
    int wasNew = 7;
    EXPECT_EQ(QORSysTSRefTrace::FindRef(nullptr, 1, &wasNew), nullptr);
    EXPECT_EQ(QORSysTSRefTrace::FindRef(std::string(64, 'n').c_str(), 1, &wasNew), nullptr);
    EXPECT_EQ(QORSysTSRefTrace::FindRef(std::string(1000, 'n').c_str(), 1, &wasNew), nullptr);
    EXPECT_EQ(wasNew, 7);
    EXPECT_NE(QORSysTSRefTrace::FindRef(Name63.c_str(), 1, &wasNew), nullptr);
    EXPECT_NE(QORSysTSRefTrace::FindRef("", 1, &wasNew), nullptr);
}

TEST(ReferenceTraceCount, GoesDownToZeroAndTheRecordStays) {
    QORSysTSRefTrace* const made = QORSysTSRefTrace::FindRef("A", 1, nullptr);
    EXPECT_EQ(made->Release(), 0);
    EXPECT_EQ(made->Release(), 0);
    EXPECT_EQ(QORSysTSRefTrace::FindRef("A", 0, nullptr), made);
}

// Records by themselves.

class ReferenceTraceRecord : public ScratchTest {
protected:
    std::string file = scratch + "/out.txt";
};

TEST_F(ReferenceTraceRecord, WritesEachKind) {
    {
        QORSysTSRefTrace record("A");
        record.SetState(0, file.data());
        EXPECT_EQ(record << QORUnicodeString("string "), 0);
        EXPECT_EQ(record << "text%d ", 0);
        EXPECT_EQ(record << INT_MIN, 0);
        EXPECT_EQ(record << " ", 0);
        EXPECT_EQ(record << UINT_MAX, 0);
        EXPECT_EQ(record << QORSysTSTrcEndLine, 0);
        EXPECT_EQ(record << LONG_MIN, 0);
        EXPECT_EQ(record << QORSysTSTrcEndLine, 0);
        EXPECT_EQ(record << ULONG_MAX, 0);
        EXPECT_EQ(record << QORSysTSTrcEndLine, 0);
        EXPECT_EQ(record << 1.5, 0);
        EXPECT_EQ(record << " ", 0);
        EXPECT_EQ(record << 0.1F, 0);
        EXPECT_EQ(record << static_cast<const char*>(nullptr), 0);
        EXPECT_EQ(record << QORUnicodeString(), 0);
        EXPECT_EQ(record << static_cast<QORSysTSTrcControl>(2), 0);
        EXPECT_EQ(record << static_cast<QORSysTSTrcControl>(0), 0);
        EXPECT_EQ(record.Flush(), 0);
    }
    EXPECT_EQ(ReadFile(file), "string text%d -2147483648 4294967295\n-9223372036854775808\n18446744073709551615\n"
                              "1.500000 0.100000");
}

TEST_F(ReferenceTraceRecord, AppendsUnlessItWasAskedToEmpty) {
    WriteFile(file, "old ");
    {
        QORSysTSRefTrace record("A");
        record.SetState(0, file.data());
        record << "appended";
    }
    EXPECT_EQ(ReadFile(file), "old appended");
    {
        QORSysTSRefTrace record("A");
        record.SetState(2, file.data());
        record << " again";
    }
    EXPECT_EQ(ReadFile(file), "old appended again");
    {
        QORSysTSRefTrace record("A");
        record.SetState(1, file.data());
        record << "new";
    }
    EXPECT_EQ(ReadFile(file), "new");
}

TEST_F(ReferenceTraceRecord, IsActiveOnceTheStateIsSet) {
    QORSysTSRefTrace record("A");
    EXPECT_FALSE(record.IsActive());
    record.SetState(2, nullptr);
    EXPECT_TRUE(record.IsActive());
}

unsigned short StateOf(const QORSysTSRefTrace& record) {
    unsigned short state = 0;
    std::memcpy(&state, reinterpret_cast<const char*>(&record) + 2, sizeof state);
    return state;
}

unsigned short ReferencesOf(const QORSysTSRefTrace& record) {
    unsigned short references = 0;
    std::memcpy(&references, &record, sizeof references);
    return references;
}

std::FILE* FileOf(const QORSysTSRefTrace& record) {
    std::FILE* opened = nullptr;
    std::memcpy(&opened, reinterpret_cast<const char*>(&record) + 72, sizeof opened);
    return opened;
}

TEST_F(ReferenceTraceRecord, TakesANewStateInPlaceOfTheOldOne) {
    QORSysTSRefTrace record("A");
    record.SetState(2, nullptr);
    EXPECT_EQ(StateOf(record), 3);
    record.SetState(0, nullptr);
    EXPECT_EQ(StateOf(record), 1);
}

TEST_F(ReferenceTraceRecord, CanReadWhatItAppendsTo) {
    QORSysTSRefTrace record("A");
    record.SetState(0, file.data());
    const int appending = fcntl(fileno(FileOf(record)), F_GETFL);
    EXPECT_EQ(appending & O_ACCMODE, O_RDWR);
    EXPECT_NE(appending & O_APPEND, 0);
    record.SetState(1, file.data());
    const int emptying = fcntl(fileno(FileOf(record)), F_GETFL);
    EXPECT_EQ(emptying & O_ACCMODE, O_WRONLY);
    EXPECT_EQ(emptying & O_APPEND, 0);
}

TEST_F(ReferenceTraceRecord, IsClearWhenItIsDestroyed) {
    alignas(QORSysTSRefTrace) unsigned char place[sizeof(QORSysTSRefTrace)];
    QORSysTSRefTrace* const record = new (place) QORSysTSRefTrace("A");
    record->SetState(2, file.data());
    const auto* const next = reinterpret_cast<const unsigned char*>(&file);
    std::memcpy(place + 80, &next, sizeof next);
    record->~QORSysTSRefTrace();
    EXPECT_THAT(std::vector<unsigned char>(place, place + 4), testing::Each(0));
    EXPECT_THAT(std::vector<unsigned char>(place + 72, place + 88), testing::Each(0));
}

TEST_F(ReferenceTraceRecord, LosesAReferenceWithEachTrace) {
    setenv("QORSysTSTraDecLoad", "", 1);
    QORSysTSRefTrace* const record = QORSysTSRefTrace::FindRef("counted", 1, nullptr);
    EXPECT_EQ(ReferencesOf(*record), 1);
    {
        const QORSysTSTrace trace("counted");
        // What uses the record isn't counted, deliberately.
        EXPECT_EQ(ReferencesOf(*record), 1);
    }
    EXPECT_EQ(ReferencesOf(*record), 0);
    EXPECT_EQ(QORSysTSRefTrace::FindRef("counted", 0, nullptr), record);
}

TEST_F(ReferenceTraceRecord, GoesToTheStandardStreams) {
    const struct {
        const char* name;
        const char* out;
        const char* err;
    } rows[] = {{"STDOUT", "x", ""}, {"stdout", "x", ""}, {"STDERR", "", "x"}, {"stderr", "", "x"}, {nullptr, "", "x"}};
    for (const auto& row : rows) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        {
            QORSysTSRefTrace record("A");
            std::string name = row.name != nullptr ? row.name : "";
            record.SetState(0, row.name != nullptr ? name.data() : nullptr);
            record << "x";
        }
        std::fflush(stdout);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.out);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.err);
    }
    // They are open still.
    EXPECT_EQ(std::fflush(stdout), 0);
    EXPECT_EQ(std::fflush(stderr), 0);
}

TEST_F(ReferenceTraceRecord, WithoutANewFileKeepsTheOldOne) {
    {
        QORSysTSRefTrace record("A");
        record.SetState(0, file.data());
        record.SetState(0, nullptr);
        record << "x";
        std::string other = scratch + "/other.txt";
        record.SetState(0, other.data());
        EXPECT_EQ(ReadFile(file), "x");
    }
}

TEST_F(ReferenceTraceRecord, AFileThatCantBeOpenedIsStandardError) {
    testing::internal::CaptureStderr();
    {
        QORSysTSRefTrace record("A");
        std::string name = "/no/such/file";
        record.SetState(0, name.data());
        record << "x";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "QORSysTSTrace Error  : unable to open trace file /no/such/file. Trace redirected to stderr.\nx");
}

TEST_F(ReferenceTraceRecord, WithoutAFileWritesNothing) {
    QORSysTSRefTrace record("A");
    std::FILE* const none = nullptr;
    std::memcpy(reinterpret_cast<char*>(&record) + 72, &none, sizeof none);
    EXPECT_EQ(record << "x", 1);
    EXPECT_EQ(record << QORUnicodeString("x"), 1);
    EXPECT_EQ(record << 1, 1);
    EXPECT_EQ(record << 1U, 1);
    EXPECT_EQ(record << 1L, 1);
    EXPECT_EQ(record << 1UL, 1);
    EXPECT_EQ(record << 1.0, 1);
    EXPECT_EQ(record << 1.0F, 1);
    EXPECT_EQ(record << QORSysTSTrcEndLine, 1);
    EXPECT_EQ(record << static_cast<const char*>(nullptr), 1);
}

TEST_F(ReferenceTraceRecord, CutsItsName) {
    const QORSysTSRefTrace record(std::string(70, 'n').c_str());
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&record) + 4), Name63);
    const QORSysTSRefTrace nameless(nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&nameless) + 4), "");
}

// Whole traces, each in a process of its own.

/// Writes to the traces that its arguments name, and prints which are active.
CHILD_PROGRAM(WriteReferenceTraces) {
    for (const std::string& name : arguments) {
        QORSysTSTrace trace(name.c_str());
        std::printf("%d%d", trace.IsActive() ? 1 : 0, trace.Flush());
        trace << QORUnicodeString(name.c_str()) << " " << 1 << -2L << 3U << 4UL << 5.0 << 6.0F << QORSysTSTrcEndLine;
    }
    return 0;
}

const std::string Written = " 1-2345.0000006.000000\n";

class ReferenceTraces : public ScratchTest {
protected:
    void WriteOptions(const std::string& text) { WriteFile(scratch / "QORSysTSTraceOpt.txt", text); }
    Child Run(const std::vector<std::string>& names) {
        return RunChild("WriteReferenceTraces", {.set = {{"HOME", scratch.Path()}}, .arguments = names});
    }
};

TEST_F(ReferenceTraces, DoNothingWithoutTheFile) {
    const Child child = Run({"A", "B", ""});
    EXPECT_EQ(child.out, "000000");
    EXPECT_EQ(child.err, "");
}

TEST_F(ReferenceTraces, GoWhereTheFileSays) {
    WriteOptions("t:A -o \"" + (scratch + "/a.txt") + "\"\nt:B -o \"STDOUT\"\nt:C\n");
    const Child child = Run({"A", "B", "C", "D"});
    EXPECT_EQ(child.out, "1010B" + Written + "1000");
    EXPECT_EQ(child.err, "C" + Written);
    EXPECT_EQ(ReadFile(scratch / "a.txt"), "A" + Written);
    Run({"A", "A"});
    EXPECT_EQ(ReadFile(scratch / "a.txt"), "A" + Written + "A" + Written + "A" + Written);
}

TEST_F(ReferenceTraces, TheFirstOfTwoLinesWins) {
    WriteOptions("t:A -o \"" + (scratch + "/a.txt") + "\"\nt:A -o \"" + (scratch + "/b.txt") + "\"\n");
    Run({"A"});
    EXPECT_EQ(ReadFile(scratch / "a.txt"), "A" + Written);
    EXPECT_FALSE(std::filesystem::exists(scratch / "b.txt"));
}

TEST_F(ReferenceTraces, AFaultyLineIsActiveOnStandardError) {
    WriteOptions("t:A -o \n");
    const Child child = Run({"A"});
    EXPECT_EQ(child.out, "10");
    EXPECT_EQ(child.err, FirstQuoteMissing + ("A" + Written));
}

TEST_F(ReferenceTraces, ANameOf64BytesFindsNothing) {
    WriteOptions("t:" + Name63 + "x\n");
    EXPECT_EQ(Run({Name63 + "x", Name63}).out, "0010");
}

TEST_F(ReferenceTraces, TheDirectoryIsTheVariableThenHome) {
    const ScratchDirectory other;
    WriteOptions("t:Home\n");
    WriteFile(other / "QORSysTSTraceOpt.txt", "t:Other\n");
    const std::map<std::string, std::string> set = {{"HOME", scratch.Path()}, {"QORSysTSTraDec", other.Path()}};
    EXPECT_EQ(RunChild("WriteReferenceTraces", {.set = set, .arguments = {"Home", "Other"}}).out, "0010");
    EXPECT_EQ(Run({"Home", "Other"}).out, "1000");
}

TEST_F(ReferenceTraces, AnEmptyVariableIsTheRoot) {
    WriteOptions("t:Home\n");
    const std::map<std::string, std::string> set = {{"HOME", scratch.Path()}, {"QORSysTSTraDec", ""}};
    EXPECT_EQ(RunChild("WriteReferenceTraces", {.set = set, .arguments = {"Home"}}).out, "00");
}

TEST_F(ReferenceTraces, TheLoadVariableLeavesTheFileUnread) {
    WriteOptions("t:A -o \nt:B\n");
    const std::map<std::string, std::string> set = {{"HOME", scratch.Path()}, {"QORSysTSTraDecLoad", ""}};
    const Child child = RunChild("WriteReferenceTraces", {.set = set, .arguments = {"A", "B"}});
    EXPECT_EQ(child.out, "0000");
    EXPECT_EQ(child.err, "");
}

CHILD_PROGRAM(ChangeTheOptionFile) {
    const QORSysTSTrace before("A");
    WriteFile(arguments[0], "t:A\n");
    const QORSysTSTrace after("A");
    // A copy is the same trace.
    const QORSysTSTrace copy = after;
    std::printf("%d%d%d", before.IsActive() ? 1 : 0, after.IsActive() ? 1 : 0, copy.IsActive() ? 1 : 0);
    return 0;
}

TEST_F(ReferenceTraces, TheFileIsReadOnce) {
    const std::string options = scratch + "/QORSysTSTraceOpt.txt";
    const std::map<std::string, std::string> set = {{"HOME", scratch.Path()}};
    EXPECT_EQ(RunChild("ChangeTheOptionFile", {.set = set, .arguments = {options}}).out, "000");
    EXPECT_EQ(RunChild("ChangeTheOptionFile", {.set = set, .arguments = {options}}).out, "111");
}

CHILD_PROGRAM(ReadsTheOptionFile) {
    const int before = OpenDescriptors();
    QORSysTSRefTrace::InitFromEnv();
    std::printf("%s %d", s_lastOpened.c_str(), OpenDescriptors() - before);
    return 0;
}

TEST_F(ReferenceTraces, TheDirectoryIsTheTemporaryOneAtLast) {
    EXPECT_EQ(RunChild("ReadsTheOptionFile").out, "/tmp//QORSysTSTraceOpt.txt 0");
}

TEST_F(ReferenceTraces, TheFileIsClosedBehindTheLastLine) {
    WriteOptions("t:A\n");
    const Child child = RunChild("ReadsTheOptionFile", {.set = {{"HOME", scratch.Path()}}});
    EXPECT_EQ(child.out, scratch + "/QORSysTSTraceOpt.txt 0");
}

TEST_F(ReferenceTraces, TheDirectoryMayHaveALongName) {
    std::string directory = scratch.Path();
    while (directory.size() < 700) {
        directory += "/" + std::string(199, 'd');
    }
    std::filesystem::create_directories(directory);
    WriteFile(directory + "/QORSysTSTraceOpt.txt", "t:A\n");
    const std::map<std::string, std::string> set = {{"HOME", directory}};
    EXPECT_EQ(RunChild("WriteReferenceTraces", {.set = set, .arguments = {"A"}}).out, "10");
}

TEST_F(ReferenceTraces, AFileThatIsNoneIsEmpty) {
    const std::filesystem::path name = scratch / "QORSysTSTraceOpt.txt";
    ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
    EXPECT_EQ(Run({"A"}).out, "00");
    std::filesystem::remove(name);
    std::filesystem::create_symlink("/dev/zero", name);
    EXPECT_EQ(Run({"A"}).out, "00");
    std::filesystem::remove(name);
    std::filesystem::create_directory(name);
    EXPECT_EQ(Run({"A"}).out, "00");
}

// Names of status codes.

TEST(ReferenceTraceHRV, NamesCodes) {
    const struct {
        unsigned int code;
        const char* name;
    } rows[] = {{0, "S_OK"},
                {1, "S_FALSE"},
                {0x80004005U, "E_FAIL"},
                {0x8000FFFFU, "E_UNEXPECTED"},
                {0x80004002U, "E_NOINTERFACE"},
                {0x80004001U, "E_NOTIMPL"},
                {0x80070057U, "HR_0x80070057"},
                {2, "HR_0x2"},
                {0xFFFFFFFFU, "HR_0xffffffff"}};
    for (const auto& row : rows) {
        EXPECT_STREQ(QORSysTSTrace::HRV(static_cast<int>(row.code)), row.name);
    }
}

TEST(ReferenceTraceHRV, OverwritesItsLastNumber) {
    const char* const first = QORSysTSTrace::HRV(2);
    EXPECT_EQ(QORSysTSTrace::HRV(3), first);
    EXPECT_STREQ(first, "HR_0x3");
}

} // namespace
