// Where lines land, and what is left when a destination closes.

#include "Child.h"
#include "TraceSupport.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace TraceSupport;

namespace {

unsigned int ModeOf(const fs::path& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

std::vector<std::string> EntriesOf(const fs::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

class TraceDestination : public TraceTest {};

/// Lines without elements, so that a child's streams can be compared.
int Put(const char* name, const char* text) {
    VELSysQORTrace trace(name, nullptr, QORTraModeDefault, nullptr, 0);
    return trace.TraPutLN(text);
}

} // namespace

CHILD_PROGRAM(WritesToStandardStreams) {
    const int result = Configure({{"STDOUT", {"O"}}, {"STDERR", {"E"}}});
    std::printf("created %d\n", result);
    for (const char* name : {"O", "E", "COMMON"}) {
        std::printf("before %s\n", name);
        std::printf("put %d\n", Put(name, name));
    }
    VELSysTraceDestroyManager();
    std::puts("after");
    return 0;
}

TEST_F(TraceDestination, IsAStandardStreamByItsName) {
    const Child child = RunChild("WritesToStandardStreams");
    EXPECT_EQ(child.out, "created 0\nbefore O\n O\nput 0\nbefore E\nput 0\nbefore COMMON\n COMMON\nput 0\nafter\n");
    EXPECT_EQ(child.err, " E\n");
    EXPECT_EQ(child.exitCode, 0);
}

TEST_F(TraceDestination, MakesNothingForStandardStreams) {
    Configure({{"STDERR", {"E"}}});
    EXPECT_TRUE(fs::is_empty(scratch.Path()));
}

TEST_F(TraceDestination, OfAnotherCaseIsAFile) {
    Configure({{"stdout", {"O"}}, {"Stderr", {"E"}}, {"STDOUT_", {"C"}}});
    Put("O", "o");
    Put("E", "e");
    Put("C", "c");
    EXPECT_EQ(EntriesOf(ProcessDirectory()), (std::vector<std::string>{"STDOUT_", "Stderr", "stdout"}));
    EXPECT_EQ(FileText("stdout"), " o\n");
}

TEST_F(TraceDestination, StandsInTheDirectoryOfTheProcess) {
    Configure({{"f", {"A"}}});
    Put("A", "x");
    const std::string process = std::to_string(getpid());
    EXPECT_EQ(
        EntriesOf(BaseDirectory()),
        (std::vector<std::string>{"D20261115_T111827_P" + std::string(8 - process.size(), '0') + process + "_I"}));
    EXPECT_EQ(FileText("f"), " x\n");
}

TEST_F(TraceDestination, IsStampedInLocalTimeWhenItsLinesAre) {
    setenv("TZ", "XYZ+14", 1);
    Configure({{"f", {"A"}, {{VELSysTraceOptionLocalTime, 1}}}, {"g", {"B"}}});
    const auto names = EntriesOf(BaseDirectory());
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[0].substr(0, 17), "D20261114_T211827");
    EXPECT_EQ(names[1].substr(0, 17), "D20261115_T111827");
    unsetenv("TZ");
}

TEST_F(TraceDestination, IsPrivate) {
    const mode_t before = umask(022);
    Configure({{"f", {"A"}}, {"ring", {"R"}, {{VELSysTraceOptionMemory, 100}}}});
    EXPECT_EQ(ModeOf(BaseDirectory()), 0700U);
    EXPECT_EQ(ModeOf(ProcessDirectory()), 0700U);
    EXPECT_EQ(ModeOf(File("f")), 0644U);
    EXPECT_EQ(ModeOf(File("ring")), 0600U);
    umask(before);
}

TEST_F(TraceDestination, AppendsToWhatIsThere) {
    fs::create_directories(ProcessDirectory());
    WriteFile(File("f"), "old\n");
    Configure({{"f", {"A"}}});
    Put("A", "new");
    EXPECT_EQ(FileText("f"), "old\n new\n");
}

CHILD_PROGRAM(WritesToAFileThatCannotBeOpened) {
    const int result = Configure({{arguments[0], {"A"}}});
    std::printf("%d\n", result);
    std::printf("%d\n", Put("A", "line"));
    VELSysTraceDestroyManager();
    std::puts("end");
    return 0;
}

TEST_F(TraceDestination, ThatCannotBeOpenedFallsBackToStandardOutput) {
    for (const char* name : {"sub/x", ".", "./sub/x"}) {
        const Child child = RunChild("WritesToAFileThatCannotBeOpened", {{{"QORTraceDir", scratch.Path()}}, {name}});
        EXPECT_EQ(child.out, "0\n line\n0\nend\n") << name;
    }
    // Standard output leaves the rest as it is, so that the directories stay.
    EXPECT_EQ(EntriesOf(BaseDirectory()).size(), 3U);
}

TEST_F(TraceDestination, ThatWouldLeaveTheDirectoryIsNotOpened) {
    WriteFile(scratch / "outside", "");
    for (const char* name : {"../outside", "../../outside", "a/../../outside", "..", "../", "./../x", "a/.."}) {
        EXPECT_EQ(Configure({{name, {"A"}}, {std::string(name) + "/r", {"R"}, {{VELSysTraceOptionMemory, 10}}}}), -1);
        EXPECT_EQ(Put("A", "line"), -1) << name;
        EXPECT_EQ(Put("R", "line"), -1) << name;
        VELSysTraceDestroyManager();
        EXPECT_EQ(EntriesOf(scratch.Path()), std::vector<std::string>{"outside"}) << name;
    }
}

TEST_F(TraceDestination, WithDotsInItsNameIsAFile) {
    for (const char* name : {"..x", "x..", "...", "a..b", ".x"}) {
        Configure({{name, {"A"}}});
        EXPECT_EQ(Put("A", "line"), 0) << name;
        EXPECT_EQ(FileText(name), " line\n") << name;
        VELSysTraceDestroyManager();
    }
}

TEST_F(TraceDestination, StaysInTheDirectoryWhenItsNameBeginsWithASeparator) {
    Configure({{"/x", {"A"}}, {"./y", {"B"}}});
    Put("A", "a");
    Put("B", "b");
    EXPECT_EQ(FileText("x"), " a\n");
    EXPECT_EQ(FileText("y"), " b\n");
}

TEST_F(TraceDestination, LeavesNoDirectoryWhateverItsNameBeginsWith) {
    for (const char* name : {"f", "/f", "./f", ".//./f"}) {
        Configure({{name, {"A"}}});
        EXPECT_TRUE(fs::exists(File("f"))) << name;
        VELSysTraceDestroyManager();
        EXPECT_TRUE(fs::is_empty(BaseDirectory())) << name;
    }
}

TEST_F(TraceDestination, WithoutABaseDirectoryIsNotOpened) {
    setenv("QORTraceDir", "/proc", 1);
    EXPECT_EQ(Configure({{"f", {"A"}}}), -1);
    EXPECT_EQ(Put("A", "line"), -1);
    EXPECT_FALSE(DestinationPeek::IsOpen(DestinationOf("f")));
}

TEST_F(TraceDestination, IsOpenedLaterWhenItCouldNotBeAtFirst) {
    setenv("QORTraceDir", "/proc", 1);
    EXPECT_EQ(Configure({{"f", {"A"}}}), -1);
    setenv("QORTraceDir", scratch.Path().c_str(), 1);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("STDERR", "B", 0, 0), 0);
    EXPECT_EQ(Put("A", "line"), 0);
    EXPECT_EQ(FileText("f"), " line\n");
}

TEST_F(TraceDestination, WhosePathIsTooLongCountsAsOpened) {
    const std::string directory = "/" + std::string(8170, 'd');
    setenv("QORTraceDir", directory.c_str(), 1);
    insideStat = [](const std::string&) { return 0; };
    insideMakeDirectory = [](const std::string&, unsigned int) { return 0; };
    EXPECT_EQ(Configure({{std::string(63, 'f'), {"A"}}}), 0);
    EXPECT_TRUE(DestinationPeek::IsOpen(DestinationOf(std::string(63, 'f'))));
    EXPECT_EQ(Put("A", "line"), -1);
}

TEST_F(TraceDestination, WhoseDirectoryCannotBeMadeIsNotOpened) {
    insideMakeDirectory = [](const std::string& path, unsigned int mode) -> std::optional<int> {
        EXPECT_EQ(mode, 0700U);
        if (path.find("_P") == std::string::npos) {
            return std::nullopt;
        }
        errno = ENOSPC;
        return -1;
    };
    EXPECT_EQ(Configure({{"f", {"A"}}}), -1);
    EXPECT_EQ(Put("A", "line"), -1);
}

// What closing leaves.

TEST_F(TraceDestination, WithoutLinesLeavesNothingButTheBaseDirectory) {
    Configure({{"f", {"A"}}, {"g", {"B"}}});
    EXPECT_EQ(EntriesOf(ProcessDirectory()), (std::vector<std::string>{"f", "g"}));
    VELSysTraceDestroyManager();
    EXPECT_TRUE(fs::is_empty(BaseDirectory()));
    EXPECT_TRUE(fs::is_directory(BaseDirectory()));
}

TEST_F(TraceDestination, WithALineStaysBesideOneWithout) {
    Configure({{"f", {"A"}}, {"g", {"B"}}, {"h", {"C"}}});
    Put("B", "line");
    VELSysTraceDestroyManager();
    EXPECT_EQ(EntriesOf(ProcessDirectory()), std::vector<std::string>{"g"});
    EXPECT_EQ(FileText("g"), " line\n");
}

TEST_F(TraceDestination, WithEarlierTextStaysWithoutLines) {
    fs::create_directories(ProcessDirectory());
    WriteFile(File("f"), "old\n");
    Configure({{"f", {"A"}}});
    VELSysTraceDestroyManager();
    EXPECT_EQ(FileText("f"), "old\n");
}

TEST_F(TraceDestination, LeavesADirectoryInWhichAnotherFileStands) {
    Configure({{"f", {"A"}}});
    WriteFile(File("foreign"), "");
    VELSysTraceDestroyManager();
    EXPECT_EQ(EntriesOf(ProcessDirectory()), std::vector<std::string>{"foreign"});
}

TEST_F(TraceDestination, LeavesADirectoryInWhichADirectoryStands) {
    Configure({{"f", {"A"}}});
    fs::create_directory(File("foreign"));
    VELSysTraceDestroyManager();
    EXPECT_EQ(EntriesOf(ProcessDirectory()), std::vector<std::string>{"foreign"});
}

TEST_F(TraceDestination, WhoseDirectoryIsGoneCloses) {
    Configure({{"f", {"A"}}});
    Put("A", "line");
    fs::remove_all(scratch / "VELSysTrace");
    EXPECT_EQ(Put("A", "line"), 0);
    VELSysTraceDestroyManager();
    EXPECT_TRUE(fs::is_empty(scratch.Path()));
}

TEST_F(TraceDestination, ClosingMakesNoNewManager) {
    Configure({{"f", {"A"}}});
    int traces = 0;
    insideStat = [&](const std::string&) -> std::optional<int> {
        // What closing calls may trace itself.
        traces += TraceHandle("A") ? 100 : 1;
        return std::nullopt;
    };
    VELSysTraceDestroyManager();
    EXPECT_EQ(traces, 1);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("STDERR", "A", 0, 0), -1);
}

// A disk that is full.

TEST_F(TraceDestination, ThatIsFullAnswersThatNothingWasWritten) {
    fs::create_directories(ProcessDirectory());
    fs::create_symlink("/dev/full", File("full"));
    Configure({{"full", {"A"}}});
    EXPECT_EQ(Put("A", "line"), -1);
    const std::string longer(100000, 'x');
    EXPECT_EQ(Put("A", longer.c_str()), -1);
    VELSysTraceDestroyManager();
    EXPECT_TRUE(fs::is_symlink(File("full")));
}

CHILD_PROGRAM(WritesBeyondTheLimit) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000, 1000};
    setrlimit(RLIMIT_FSIZE, &limit);
    usesSystemClocks = true;
    sources = Sources{.text = Items{{"f", {"A"}}, {"ring", {"R"}, {{VELSysTraceOptionMemory, 1001}}}}};
    if (VELSysTraceCreateManager("", nullptr) != -1) {
        return 2;
    }
    const std::string text(99, 'x');
    for (int i = 0; i < 12; ++i) {
        // Nine whole lines of 101 bytes fit.
        if (Put("A", text.c_str()) != (i < 9 ? 0 : -1)) {
            return 3;
        }
    }
    return Put("R", "x") == -1 ? 0 : 4;
}

TEST_F(TraceDestination, BeyondTheLimitOfFilesAnswersThatNothingWasWritten) {
    const Child child = RunChild("WritesBeyondTheLimit", {{{"QORTraceDir", scratch.Path()}}});
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

// Rings.

namespace {

/// The plain form of a ring.
class PlainRing {
public:
    explicit PlainRing(std::size_t size) : _text(size, '\0') {}

    void Write(const std::string& text) {
        for (const char c : text) {
            _text[_next] = c;
            _next = (_next + 1) % _text.size();
        }
    }
    const std::string& Text() const { return _text; }

private:
    std::string _text;
    std::size_t _next = 0;
};

class TraceRing : public TraceTest, public testing::WithParamInterface<int> {};

} // namespace

TEST_P(TraceRing, TakesTextsAtEveryPosition) {
    const std::size_t size = static_cast<std::size_t>(std::min(GetParam(), 8192));
    Configure({{"ring", {"A"}, {{VELSysTraceOptionMemory, GetParam()}}}});
    EXPECT_EQ(fs::file_size(File("ring")), size);
    EXPECT_EQ(FileText("ring"), std::string(size, '\0'));
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    PlainRing ring(size);
    for (int i = 0; i < 300; ++i) {
        const std::string text(static_cast<std::size_t>(1 + i * 7 % 97), static_cast<char>('a' + i % 26));
        EXPECT_EQ(trace.TraPutLN(text.c_str()), 0);
        ring.Write(" " + text + "\n");
        ASSERT_TRUE(FileText("ring") == ring.Text()) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, TraceRing, testing::Values(1, 2, 7, 64, 100, 4096, 8191, 8192, 8193, 2147483647));

TEST_F(TraceDestination, RingHasNoLevelMark) {
    Configure({{"ring", {"A"}, {{VELSysTraceOptionMemory, 300}}}});
    EXPECT_EQ(TraceHandle("A")->Warning(3, "text"), 0);
    std::string expected = PlainPrefix({.tag = "A", .code = 3}) + "text\n";
    expected.resize(300, '\0');
    EXPECT_EQ(FileText("ring"), expected);
}

TEST_F(TraceDestination, RingIsClearedWhenItIsOpened) {
    fs::create_directories(ProcessDirectory());
    WriteFile(File("ring"), std::string(500, 'x'));
    Configure({{"ring", {"A"}, {{VELSysTraceOptionMemory, 300}}}});
    EXPECT_EQ(FileText("ring"), std::string(300, '\0'));
}

TEST_F(TraceDestination, RingStaysWhenItIsClosed) {
    Configure({{"ring", {"A"}, {{VELSysTraceOptionMemory, 30}}}});
    VELSysTraceDestroyManager();
    EXPECT_EQ(FileText("ring"), std::string(30, '\0'));
}

TEST_F(TraceDestination, RingOnAStandardStreamIsNotOpened) {
    for (const char* name : {"STDOUT", "STDERR"}) {
        EXPECT_EQ(Configure({{name, {"A"}, {{VELSysTraceOptionMemory, 30}}}}), -1);
        EXPECT_EQ(Put("A", "line"), -1);
        // It has its stream by now, and fails again.
        EXPECT_EQ(VELSysTraceManagerAddStreamTrace("STDOUT_COMMON", "B", 0, 0), -1);
        EXPECT_FALSE(DestinationPeek::IsOpen(DestinationOf(name)));
        VELSysTraceDestroyManager();
    }
}

TEST_F(TraceDestination, RingOnADirectoryIsNotOpened) {
    fs::create_directories(File("ring"));
    EXPECT_EQ(Configure({{"ring", {"A"}, {{VELSysTraceOptionMemory, 30}}}}), -1);
    EXPECT_EQ(Put("A", "line"), -1);
}

TEST(TraceMemoryObj, FailsWithoutTextOrMapping) {
    VELSysTraceMemoryObj ring;
    EXPECT_EQ(ring.Write("x"), -1);
    EXPECT_EQ(ring.Open(nullptr, 10), -1);
    EXPECT_EQ(ring.Open("/proc/none", 10), -1);
    const ScratchDirectory scratch;
    const std::string path = scratch / "ring";
    EXPECT_EQ(ring.Open(path.c_str(), 0), -1);
    EXPECT_EQ(ring.Open(path.c_str(), 10), 0);
    EXPECT_EQ(ring.Open(path.c_str(), 10), -1);
    EXPECT_EQ(ring.Write(nullptr), -1);
    EXPECT_EQ(ring.Write(""), 0);
    EXPECT_EQ(ring.Write("0123456789ab"), 0);
    EXPECT_EQ(ReadFile(path), "ab23456789");
}

// The system kind.

TEST_F(TraceDestination, OfTheSystemKindTakesLinesAndWritesNone) {
    EXPECT_EQ(Configure({{"s", {"A"}, {}, VELSysTraceKindSystem}}), -1);
    const TraceHandle trace("A");
    ASSERT_TRUE(trace);
    EXPECT_EQ(trace->Info("line"), 0);
    EXPECT_EQ(trace->Info(1024, "line"), -1);
    EXPECT_EQ(trace->Info("%s", ""), -1);
    EXPECT_TRUE(fs::is_empty(scratch.Path()));
}

TEST_F(TraceDestination, OfTheSystemKindIsNoRing) {
    EXPECT_EQ(Configure({{"s", {"A"}, {{VELSysTraceOptionMemory, 100}}, VELSysTraceKindSystem}}), -1);
    EXPECT_EQ(Put("A", "line"), -1);
    EXPECT_TRUE(fs::is_empty(scratch.Path()));
}

// Rotated files.

TEST_F(TraceDestination, IsRotatedWithSizeAndCount) {
    Configure({{"f.txt", {"A"}, {{VELSysTraceOptionRotateSize, 100000}, {VELSysTraceOptionRotateCount, 3}}}});
    EXPECT_EQ(TraceHandle("A")->Info("line"), 0);
    EXPECT_EQ(FileText("f.txt"), PlainLine({.level = 1, .tag = "A"}, "line"));
    VELSysTraceDestroyManager();
    EXPECT_EQ(EntriesOf(ProcessDirectory()), std::vector<std::string>{"f.txt"});
}

TEST_F(TraceDestination, ThatIsRotatedLeavesNothingWithoutLines) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, 100}, {VELSysTraceOptionRotateCount, 3}}}});
    EXPECT_TRUE(fs::exists(File("f")));
    VELSysTraceDestroyManager();
    EXPECT_TRUE(fs::is_empty(BaseDirectory()));
}

TEST_F(TraceDestination, ThatIsRotatedTakesLongLines) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, 10000000}, {VELSysTraceOptionRotateCount, 3}}}});
    const std::string message(100000, 'm');
    EXPECT_EQ(TraceHandle("A")->Info("%s", message.c_str()), 0);
    EXPECT_TRUE(FileText("f") == PlainLine({.level = 1, .tag = "A"}, message));
}

TEST_F(TraceDestination, ThatCannotBeRotatedIsNotOpened) {
    fs::create_directories(File("f"));
    EXPECT_EQ(Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, 100}, {VELSysTraceOptionRotateCount, 3}}}}), -1);
    EXPECT_EQ(Put("A", "line"), -1);
}

TEST_F(TraceDestination, IsAPlainFileWithOneRotateNumberAlone) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, 1}}}, {"g", {"B"}, {{VELSysTraceOptionRotateCount, 1}}}});
    for (int i = 0; i < 3; ++i) {
        Put("A", "line");
        Put("B", "line");
    }
    EXPECT_EQ(EntriesOf(ProcessDirectory()), (std::vector<std::string>{"f", "g"}));
}

TEST_F(TraceDestination, IsAPlainFileWithNegativeRotateNumbers) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, -1}, {VELSysTraceOptionRotateCount, -2147483647}}}});
    EXPECT_EQ(Put("A", "line"), 0);
    EXPECT_EQ(DestinationPeek::RotateSize(DestinationOf("f")), 0U);
    EXPECT_EQ(DestinationPeek::RotateCount(DestinationOf("f")), 0U);
}

// The base directory.

namespace {

class TraceBaseDirectory : public TraceTest {
protected:
    void SetUp() override {
        TraceTest::SetUp();
        unsetenv("QORTraceDir");
        unsetenv("PWD");
    }

    static std::string Get(std::size_t size = 4096) {
        std::string path(size + 1, '#');
        const int result = VELSysTraceGetDestinationDirectoryA(path.data(), size);
        EXPECT_EQ(path[size], '#');
        return result == 0 ? path.c_str() : "failure " + std::to_string(result);
    }

    /// "/tmp" as the test has it, made by nobody.
    static void PretendToHave(bool isThere) {
        insideStat = [isThere](const std::string& path) -> std::optional<int> {
            return path == "/tmp"               ? std::optional(isThere ? 0 : -1)
                   : path == "/tmp/VELSysTrace" ? std::optional(0)
                                                : std::nullopt;
        };
    }
};

} // namespace

TEST_F(TraceBaseDirectory, IsTheFirstThatExists) {
    for (const char* name : {"a", "b", "c"}) {
        fs::create_directory(scratch / name);
    }
    setenv("QORTraceDir", (scratch / "a").c_str(), 1);
    setenv("QORTemp", (scratch / "b").c_str(), 1);
    setenv("PWD", (scratch / "c").c_str(), 1);
    EXPECT_EQ(Get(), scratch + "/a/VELSysTrace");
    EXPECT_EQ(ModeOf(scratch / "a/VELSysTrace"), 0700U);
    setenv("QORTraceDir", (scratch / "none").c_str(), 1);
    EXPECT_EQ(Get(), scratch + "/b/VELSysTrace");
    setenv("QORTemp", (scratch / "none").c_str(), 1);
    EXPECT_EQ(Get(), scratch + "/c/VELSysTrace");
}

TEST_F(TraceBaseDirectory, IsTheWorkingDirectoryAsItStands) {
    setenv("PWD", (scratch / "none").c_str(), 1);
    PretendToHave(true);
    EXPECT_EQ(Get(), "failure -1");
    EXPECT_FALSE(fs::exists(scratch / "none"));
}

TEST_F(TraceBaseDirectory, IsTemporaryWithoutVariables) {
    PretendToHave(true);
    EXPECT_EQ(Get(), "/tmp/VELSysTrace");
    EXPECT_EQ(Get(17), "/tmp/VELSysTrace");
    EXPECT_EQ(Get(16), "failure -1");
    EXPECT_EQ(Get(5), "failure -1");
    EXPECT_EQ(Get(4), "failure -1");
    EXPECT_EQ(Get(0), "failure -1");
    PretendToHave(false);
    EXPECT_EQ(Get(), "failure -1");
}

TEST_F(TraceBaseDirectory, PassesOverWhatDoesNotFit) {
    PretendToHave(true);
    setenv("QORTraceDir", scratch.Path().c_str(), 1);
    setenv("QORTemp", scratch.Path().c_str(), 1);
    setenv("PWD", scratch.Path().c_str(), 1);
    const std::size_t length = scratch.Path().string().size();
    ASSERT_GE(length, 17U);
    EXPECT_EQ(Get(length), "/tmp/VELSysTrace");
    EXPECT_EQ(Get(length + 1), "failure -1");
    EXPECT_EQ(Get(length + 12), "failure -1");
    EXPECT_EQ(Get(length + 13), scratch + "/VELSysTrace");
}

TEST_F(TraceBaseDirectory, LosesOneSeparatorAtItsEnd) {
    setenv("QORTraceDir", (scratch + "/").c_str(), 1);
    EXPECT_EQ(Get(), scratch + "/VELSysTrace");
    setenv("QORTraceDir", (scratch + "//").c_str(), 1);
    EXPECT_EQ(Get(), scratch + "//VELSysTrace");
    fs::create_directory(scratch / "a\\");
    fs::create_directory(scratch / "a");
    setenv("QORTraceDir", (scratch + "/a\\").c_str(), 1);
    EXPECT_EQ(Get(), scratch + "/a/VELSysTrace");
}

TEST_F(TraceBaseDirectory, IsWhateverStandsThere) {
    WriteFile(scratch / "VELSysTrace", "");
    setenv("QORTraceDir", scratch.Path().c_str(), 1);
    EXPECT_EQ(Get(), scratch + "/VELSysTrace");
}

TEST_F(TraceBaseDirectory, MayBeMadeByAnotherAtTheSameTime) {
    setenv("QORTraceDir", scratch.Path().c_str(), 1);
    int error = EEXIST;
    insideMakeDirectory = [&](const std::string& path, unsigned int mode) {
        EXPECT_EQ(path, scratch + "/VELSysTrace");
        EXPECT_EQ(mode, 0700U);
        errno = error;
        return -1;
    };
    EXPECT_EQ(Get(), scratch + "/VELSysTrace");
    error = EACCES;
    EXPECT_EQ(Get(), "failure -1");
}

TEST_F(TraceBaseDirectory, NeedsRoom) {
    EXPECT_EQ(VELSysTraceGetDestinationDirectoryA(nullptr, 100), -1);
}

// Helpers.

TEST(TraceStrFastCat, AppendsAsFarAsThereIsRoom) {
    for (std::size_t size = 0; size < 12; ++size) {
        for (const char* start : {"", "ab", "abcdef"}) {
            for (const char* addition : {"", "x", "xyz", "0123456789"}) {
                char text[16];
                std::memset(text, '#', sizeof text);
                std::strcpy(text, start);
                if (std::strlen(start) >= size) {
                    continue;
                }
                const std::string expected = (std::string(start) + addition).substr(0, size - 1);
                EXPECT_EQ(VELSysTraceStrFastCat(text, size, addition), text + expected.size());
                EXPECT_EQ(text, expected);
            }
        }
    }
}

TEST(TraceStrFastCat, FailsWithoutText) {
    char text[] = "a";
    EXPECT_EQ(VELSysTraceStrFastCat(nullptr, 10, "a"), nullptr);
    EXPECT_EQ(VELSysTraceStrFastCat(text, 2, nullptr), nullptr);
}

TEST(TraceStrFastCat, TerminatesWhatIsFull) {
    char text[] = {'a', 'b', 'c', '#'};
    EXPECT_EQ(VELSysTraceStrFastCat(text, 3, "x"), text + 2);
    EXPECT_STREQ(text, "ab");
    EXPECT_EQ(VELSysTraceStrFastCat(text, 0, "x"), text);
    EXPECT_EQ(text[3], '#');
}

namespace {

struct NameRow {
    const char* name;
    int process;
    int result;
};

class TraceFilterNameByPid : public testing::TestWithParam<NameRow> {};

} // namespace

TEST_P(TraceFilterNameByPid, ComparesTheNumber) {
    EXPECT_EQ(VELSysTraceFilterNameByPid(GetParam().name, GetParam().process), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Names, TraceFilterNameByPid,
    testing::Values(NameRow{nullptr, 1, -1}, NameRow{"", 0, -1}, NameRow{"D20261115_T111827_P00012345_I", 12345, 0},
                    NameRow{"D20261115_T111827_P00012345_I", 1234, -1}, NameRow{"P7_", 7, 0}, NameRow{"P7", 7, -1},
                    NameRow{"7_", 7, -1}, NameRow{"P_7_", 7, -1}, NameRow{"P_", 0, -1}, NameRow{"PP7_", 7, -1},
                    NameRow{"PP7_", 0, 0}, NameRow{"p7_", 7, -1}, NameRow{"_P7_P8_", 7, 0}, NameRow{"_P7_P8_", 8, -1},
                    NameRow{"P-3_", -3, 0}, NameRow{"P 5x_", 5, 0}, NameRow{"P4294967297_", 1, -1},
                    NameRow{"P99999999999999999999999_", -1, -1}, NameRow{"P010_", 10, 0},
                    NameRow{"P000000000000000000000000000000000000000000000000000000000000007_", 7, 0},
                    NameRow{"P0000000000000000000000000000000000000000000000000000000000000007_", 7, -1}));
