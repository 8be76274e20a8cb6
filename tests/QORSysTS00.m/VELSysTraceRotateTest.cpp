/// @file
/// What single operations of a rotated file do, and what they do when the system fails them.

#include "VELSysTraceRotate.h"
#include "RotatedFiles.h"
#include "ScratchDirectory.h"

#include <csignal>
#include <gmock/gmock.h>
#include <limits>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace RotatedFiles;
namespace fs = std::filesystem;

constexpr unsigned long Most = std::numeric_limits<unsigned long>::max();

class TraceRotate : public ScratchTest {
protected:
    std::string Path() const { return scratch + "/log.txt"; }
    Contents Files() const { return ContentsOf(scratch.Path()); }
};

// Names.

struct Named {
    unsigned long count;
    const char* format;
    const char* name;
};

void PrintTo(const Named& named, std::ostream* out) {
    *out << named.count;
}

class TraceRotateNames : public TraceRotate, public testing::WithParamInterface<Named> {};

TEST_P(TraceRotateNames, HaveAsManyDigitsAsTheCountNeeds) {
    VELSysTraceRotate file(Path().c_str(), 4, GetParam().count);
    EXPECT_EQ(FormatOf(file), GetParam().format);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("old."), 4);
    EXPECT_EQ(file.Write("new"), 3);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "new"}, {GetParam().name, "old."}}));
}

INSTANTIATE_TEST_SUITE_P(Counts, TraceRotateNames,
                         testing::Values(Named{0, "%s.%00d%s", "log.1.txt"}, Named{1, "%s.%00d%s", "log.1.txt"},
                                         Named{2, "%s.%01d%s", "log.1.txt"}, Named{9, "%s.%01d%s", "log.1.txt"},
                                         Named{10, "%s.%01d%s", "log.1.txt"}, Named{11, "%s.%02d%s", "log.01.txt"},
                                         Named{100, "%s.%02d%s", "log.01.txt"}, Named{101, "%s.%03d%s", "log.001.txt"},
                                         Named{1UL << 31, "%s.%010d%s", "log.0000000001.txt"},
                                         Named{10000000000000000000UL, "%s.%019d%s", "log.0000000000000000001.txt"},
                                         Named{Most, "%s.%020d%s", "log.00000000000000000001.txt"}));

TEST_F(TraceRotate, ReplacesTheOnlyNumberedFile) {
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    for (const char* text : {"one.", "two.", "tri."}) {
        EXPECT_EQ(file.Write(text), 4);
    }
    EXPECT_EQ(Files(), (Contents{{"log.txt", "tri."}, {"log.1.txt", "two."}}));
}

TEST_F(TraceRotate, ANameWithoutDotHasTheNumberAtItsEnd) {
    VELSysTraceRotate file((scratch + "/log").c_str(), 4, 100);
    ASSERT_EQ(file.Open(), 0);
    file.Write("old.");
    file.Write("new.");
    EXPECT_EQ(Files(), (Contents{{"log", "new."}, {"log.01", "old."}}));
}

TEST_F(TraceRotate, ADotInADirectoryTakesTheNumberThereAndTheTextIsLost) {
    fs::create_directory(scratch / "a.b");
    VELSysTraceRotate file((scratch + "/a.b/log").c_str(), 4, 9);
    ASSERT_EQ(file.Open(), 0);
    file.Write("old.");
    EXPECT_EQ(file.Write("new."), 4);
    EXPECT_EQ(NextOf(file), 1U);
    EXPECT_EQ(ContentsOf(scratch / "a.b"), (Contents{{"log", "new."}}));
    fs::create_directory(scratch / "a.1.b");
    EXPECT_EQ(file.Write("last"), 4);
    EXPECT_EQ(ContentsOf(scratch / "a.1.b"), (Contents{{"log", "new."}}));
}

// Sizes.

TEST_F(TraceRotate, DefaultsAre1024BytesAndOneNumber) {
    const VELSysTraceRotate file(Path().c_str(), 0, 0);
    EXPECT_TRUE(file.IsMoreWriteAllowed(1024));
    EXPECT_FALSE(file.IsMoreWriteAllowed(1025));
    EXPECT_EQ(FieldOf(file, 16), 1024U);
    EXPECT_EQ(FieldOf(file, 64), 1U);
}

TEST_F(TraceRotate, AllowsWhatRemains) {
    VELSysTraceRotate file(Path().c_str(), 10, 1);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("1234"), 4);
    EXPECT_TRUE(file.IsMoreWriteAllowed(6));
    EXPECT_FALSE(file.IsMoreWriteAllowed(7));
    EXPECT_FALSE(file.IsMoreWriteAllowed(Most));
    EXPECT_EQ(file.Write("567890"), 6);
    EXPECT_TRUE(file.IsMoreWriteAllowed(0));
    EXPECT_FALSE(file.IsMoreWriteAllowed(1));
    EXPECT_EQ(file.Write(""), 0);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "1234567890"}}));
}

TEST_F(TraceRotate, ATextLongerThanTheMaximumHasAFileOfItsOwn) {
    VELSysTraceRotate file(Path().c_str(), 4, 9);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("much too long"), 13);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "much too long"}}));
    EXPECT_FALSE(file.IsMoreWriteAllowed(0));
    EXPECT_EQ(file.Write("x"), 1);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "x"}, {"log.1.txt", "much too long"}}));
}

TEST_F(TraceRotate, EachTextIsInTheFileWhenWriteReturns) {
    VELSysTraceRotate file(Path().c_str(), 100000, 1);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("%s%n"), 4);
    EXPECT_EQ(ReadFile(Path()), "%s%n");
    const std::string large(50000, 'x');
    EXPECT_EQ(file.Write(large.c_str()), 50000);
    EXPECT_EQ(ReadFile(Path()), "%s%n" + large);
}

TEST_F(TraceRotate, WhatWasThereCounts) {
    WriteFile(Path(), "12345678");
    VELSysTraceRotate file(Path().c_str(), 10, 9);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_TRUE(file.IsMoreWriteAllowed(2));
    EXPECT_FALSE(file.IsMoreWriteAllowed(3));
    EXPECT_EQ(file.Write("90"), 2);
    EXPECT_EQ(file.Write("x"), 1);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "x"}, {"log.1.txt", "1234567890"}}));
}

TEST_F(TraceRotate, AFileThatWasTooLargeRotatesAtTheFirstText) {
    WriteFile(Path(), "12345678");
    VELSysTraceRotate file(Path().c_str(), 4, 9);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "12345678"}}));
    EXPECT_EQ(file.Write(""), 0);
    EXPECT_EQ(Files(), (Contents{{"log.txt", ""}, {"log.1.txt", "12345678"}}));
}

TEST_F(TraceRotate, APipeNeverFills) {
    ASSERT_EQ(mkfifo(Path().c_str(), S_IRWXU), 0);
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("abcd"), 4);
    EXPECT_EQ(file.Write("efgh"), 4);
    file.Close();
    EXPECT_TRUE(fs::is_fifo(Path()));
}

// Opening and closing.

TEST_F(TraceRotate, AFileWithoutTextGoesAtClose) {
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(Files(), (Contents{{"log.txt", ""}}));
    file.Close();
    EXPECT_EQ(Files(), Contents{});
    file.Close();
}

TEST_F(TraceRotate, AFileWithContentStaysAtCloseEvenUnwritten) {
    WriteFile(Path(), "text");
    VELSysTraceRotate file(Path().c_str(), 40, 1);
    ASSERT_EQ(file.Open(), 0);
    file.Close();
    EXPECT_EQ(Files(), (Contents{{"log.txt", "text"}}));
}

TEST_F(TraceRotate, TheDestructorCloses) {
    {
        VELSysTraceRotate file(Path().c_str(), 4, 1);
        ASSERT_EQ(file.Open(), 0);
    }
    EXPECT_EQ(Files(), Contents{});
}

TEST_F(TraceRotate, AChildLeavesTheEmptyFileOfItsParent) {
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    const pid_t child = fork();
    if (child == 0) {
        file.Close();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    EXPECT_EQ(Files(), (Contents{{"log.txt", ""}}));
    EXPECT_EQ(file.Write("text"), 4);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "text"}}));
}

TEST_F(TraceRotate, OpenedAgainItGoesOnAppending) {
    VELSysTraceRotate file(Path().c_str(), 40, 1);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one");
    ASSERT_EQ(file.Open(), 0);
    file.Write("two");
    file.Close();
    ASSERT_EQ(file.Open(), 0);
    file.Write("three");
    EXPECT_EQ(Files(), (Contents{{"log.txt", "onetwothree"}}));
}

TEST_F(TraceRotate, OpenedAgainAboveTheMaximumItRotates) {
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    file.Write("12345");
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(Files(), (Contents{{"log.txt", ""}, {"log.1.txt", "12345"}}));
}

TEST_F(TraceRotate, WritesNothingUnlessOpen) {
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    EXPECT_EQ(file.Write("text"), -1);
    EXPECT_EQ(file.Write("a long text"), -1);
    EXPECT_EQ(Files(), Contents{});
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write(nullptr), -1);
    EXPECT_EQ(Files(), (Contents{{"log.txt", ""}}));
}

TEST_F(TraceRotate, PrepareToWriteOpensWhereNothingIsOpen) {
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    file.PrepareToWrite(4);
    EXPECT_EQ(Files(), Contents{});
    file.PrepareToWrite(5);
    EXPECT_EQ(file.Write("text"), 4);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "text"}}));
}

TEST_F(TraceRotate, ANullPathCantBeOpenedAndTouchesNothing) {
    fs::current_path(scratch.Path());
    WriteFile(".1", "somebody's");
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
        VELSysTraceRotate file(path, 4, 1);
        EXPECT_EQ(file.Open(), -1);
        EXPECT_EQ(file.Write("text"), -1);
        file.PrepareToWrite(5);
        file.RenameFile();
        file.RenameFile();
        file.Close();
    }
    EXPECT_EQ(Files(), (Contents{{".1", "somebody's"}}));
    fs::current_path("/");
}

TEST_F(TraceRotate, ADirectoryCantBeOpened) {
    VELSysTraceRotate file(scratch.Path().c_str(), 4, 1);
    EXPECT_EQ(file.Open(), -1);
}

TEST_F(TraceRotate, APathInTheWorkingDirectoryIsFoundAgain) {
    fs::current_path(scratch.Path());
    WriteFile("log.001.txt", "1");
    WriteFile("log.002.txt", "2");
    StampFile("log.001.txt", 2000);
    StampFile("log.002.txt", 1000);
    EXPECT_EQ(OldestOf(VELSysTraceRotate("log.txt", 4, 200)), 2U);
    fs::current_path("/");
}

// Failures.

TEST_F(TraceRotate, WhatCantBeRenamedIsCopied) {
    struct Called {
        int times = 0;
    } called;
    const auto count = [](const char*, void* data) { ++static_cast<Called*>(data)->times; };
    const std::string large(20000, 'x');
    VELSysTraceRotate file(Path().c_str(), count, &called, 20000, 2);
    ASSERT_EQ(file.Open(), 0);
    file.Write(large.c_str());
    SystemCalls().renameError = EXDEV;
    EXPECT_EQ(file.Write("two"), 3);
    EXPECT_EQ(called.times, 0);
    EXPECT_EQ(NextOf(file), 2U);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "two"}, {"log.1.txt", large}}));
    struct stat status = {};
    ASSERT_EQ(stat((scratch + "/log.1.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    file.Write(large.c_str());
    file.Write(large.c_str());
    EXPECT_EQ(file.Write("last"), 4);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "last"}, {"log.1.txt", large}, {"log.2.txt", large}}));
    SystemCalls().renameError = 0;
}

TEST_F(TraceRotate, AFailedCopyLeavesTheNumberAndTheTextGoes) {
    VELSysTraceRotate file(Path().c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    SystemCalls().renameError = EXDEV;
    SystemCalls().writeError = ENOSPC;
    file.RenameFile();
    EXPECT_EQ(NextOf(file), 1U);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "one."}, {"log.1.txt", ""}}));
    SystemCalls() = {};
    file.Write("two.");
    EXPECT_EQ(Files(), (Contents{{"log.txt", "two."}, {"log.1.txt", ""}, {"log.2.txt", "one."}}));
}

TEST_F(TraceRotate, ACopyLeavesTheEndOfALongerFile) {
    WriteFile(scratch / "log.1.txt", "somebody's");
    VELSysTraceRotate file(Path().c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    SystemCalls().renameError = EXDEV;
    SystemCalls().accessError = EACCES;
    file.RenameFile();
    SystemCalls() = {};
    EXPECT_EQ(Files(), (Contents{{"log.txt", "one."}, {"log.1.txt", "one.body's"}}));
    EXPECT_EQ(NextOf(file), 2U);
}

TEST_F(TraceRotate, ANumberedFileThatCantBeReadIsReplaced) {
    WriteFile(scratch / "log.1.txt", "somebody's");
    VELSysTraceRotate file(Path().c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    SystemCalls().accessError = EACCES;
    file.RenameFile();
    SystemCalls() = {};
    EXPECT_EQ(Files(), (Contents{{"log.1.txt", "one."}}));
}

TEST_F(TraceRotate, OtherProgramsInheritNoDescriptor) {
    SystemCalls() = {};
    VELSysTraceRotate file(Path().c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    SystemCalls().renameError = EXDEV;
    file.Write("two.");
    EXPECT_EQ(Files(), (Contents{{"log.txt", "two."}, {"log.1.txt", "one."}}));
    EXPECT_EQ(SystemCalls().inheritable, 0);
    SystemCalls() = {};
}

TEST_F(TraceRotate, ShortAndInterruptedWritesGoOn) {
    VELSysTraceRotate file(Path().c_str(), 20, 2);
    ASSERT_EQ(file.Open(), 0);
    SystemCalls().longestWrite = 1;
    SystemCalls().interruptions = 3;
    EXPECT_EQ(file.Write("0123456789"), 10);
    EXPECT_EQ(SystemCalls().interruptions, 0);
    SystemCalls() = {};
    EXPECT_EQ(Files(), (Contents{{"log.txt", "0123456789"}}));
    EXPECT_TRUE(file.IsMoreWriteAllowed(10));
    EXPECT_FALSE(file.IsMoreWriteAllowed(11));
}

TEST_F(TraceRotate, OfAWriteThatFailsWhatIsWrittenCounts) {
    VELSysTraceRotate file(Path().c_str(), 20, 2);
    ASSERT_EQ(file.Open(), 0);
    SystemCalls().longestWrite = 3;
    SystemCalls().wholeWrites = 2;
    SystemCalls().writeError = ENOSPC;
    EXPECT_EQ(file.Write("0123456789"), 10);
    SystemCalls() = {};
    EXPECT_EQ(Files(), (Contents{{"log.txt", "012345"}}));
    EXPECT_TRUE(file.IsMoreWriteAllowed(14));
    EXPECT_FALSE(file.IsMoreWriteAllowed(15));
    EXPECT_EQ(file.Write("next"), 4);
    EXPECT_EQ(Files(), (Contents{{"log.txt", "012345next"}}));
}

TEST_F(TraceRotate, AnEmptyFileTakesNoNumber) {
    VELSysTraceRotate file(Path().c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    file.PrepareToWrite(5);
    EXPECT_EQ(NextOf(file), 1U);
    EXPECT_EQ(Files(), (Contents{{"log.txt", ""}}));
}

TEST_F(TraceRotate, ADirectoryThatDisappearsEndsTheWriting) {
    fs::create_directory(scratch / "d");
    VELSysTraceRotate file((scratch + "/d/log.txt").c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("one."), 4);
    fs::remove_all(scratch / "d");
    EXPECT_EQ(file.Write("two."), -1);
    fs::create_directory(scratch / "d");
    EXPECT_EQ(file.Write("two."), -1);
    EXPECT_EQ(file.Write("longer"), -1);
    EXPECT_EQ(ContentsOf(scratch / "d"), Contents{});
    EXPECT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("two."), 4);
}

TEST_F(TraceRotate, WhatCantBeRemovedIsNotReplaced) {
    fs::create_directory(scratch / "log.1.txt");
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    file.RenameFile();
    EXPECT_EQ(ReadFile(Path()), "one.");
    EXPECT_TRUE(fs::is_directory(scratch / "log.1.txt"));
    EXPECT_EQ(NextOf(file), 2U);
}

TEST_F(TraceRotate, ANumberedPipeIsPassedOver) {
    ASSERT_EQ(mkfifo((scratch + "/log.1.txt").c_str(), S_IRWXU), 0);
    VELSysTraceRotate file(Path().c_str(), 4, 2);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    file.Write("two.");
    EXPECT_EQ(ReadFile(scratch / "log.2.txt"), "one.");
}

TEST_F(TraceRotate, AFullDiskIsToldOfTextBeyondTheBufferOnly) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit limit = {2, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    VELSysTraceRotate file(Path().c_str(), 1000000, 1);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("text"), 4);
    EXPECT_EQ(file.Write(std::string(100000, 'x').c_str()), -1);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
}

TEST_F(TraceRotate, ADeviceIsNeitherMovedNorRemoved) {
    fs::create_symlink("/dev/null", Path());
    VELSysTraceRotate file(Path().c_str(), 4, 1);
    ASSERT_EQ(file.Open(), 0);
    EXPECT_EQ(file.Write("abcd"), 4);
    EXPECT_EQ(file.Write("much too long"), 13);
    file.Close();
    ASSERT_EQ(file.Open(), 0);
    file.Close();
    EXPECT_EQ(fs::read_symlink(Path()), "/dev/null");
    EXPECT_FALSE(fs::exists(scratch / "log.1.txt"));
}

// Callbacks.

TEST_F(TraceRotate, TheCallbackHasTheNewNameOfEachRename) {
    std::vector<std::string> names;
    const auto keep = [](const char* path, void* data) {
        EXPECT_TRUE(fs::exists(path));
        static_cast<std::vector<std::string>*>(data)->emplace_back(path);
    };
    VELSysTraceRotate file(Path().c_str(), keep, &names, 4, 2);
    ASSERT_EQ(file.Open(), 0);
    for (int i = 0; i < 5; ++i) {
        file.Write("text");
    }
    const std::string first = scratch + "/log.1.txt";
    const std::string second = scratch + "/log.2.txt";
    EXPECT_THAT(names, testing::ElementsAre(first, second, first, second));
}

// The search for numbered files.

TEST_F(TraceRotate, OfFilesOfOneTimeTheLowestIsTheOldest) {
    for (const char* name : {"/log.2.txt", "/log.3.txt", "/log.5.txt"}) {
        WriteFile(scratch + name, name);
        StampFile(scratch + name, 1000);
    }
    EXPECT_EQ(OldestOf(VELSysTraceRotate(Path().c_str(), 4, 9)), 2U);
    StampFile(scratch / "log.3.txt", 999);
    const VELSysTraceRotate file(Path().c_str(), 4, 9);
    EXPECT_EQ(OldestOf(file), 3U);
    EXPECT_EQ(NextOf(file), 3U);
}

/// The definition: one number after the other.
std::uint64_t PlainOldest(const Model& names, const fs::path& directory, std::uint64_t count) {
    std::uint64_t oldest = 1;
    std::optional<long> time;
    for (std::uint64_t i = 1; i <= count; ++i) {
        struct stat status = {};
        if (stat((directory / names.NameOf(i)).c_str(), &status) == 0 && (!time || status.st_mtime < *time)) {
            time = status.st_mtime;
            oldest = i;
        }
    }
    return oldest;
}

TEST_F(TraceRotate, TheListedOldestIsThatOfTheNumbers) {
    std::minstd_rand random(1);
    for (const std::uint64_t count : {64U, 65U, 99U, 100U, 101U, 1000U, 1001U}) {
        const Model names(1, count);
        for (int round = 0; round < 10; ++round) {
            for (const auto& entry : fs::directory_iterator(scratch.Path())) {
                fs::remove_all(entry);
            }
            for (int i = 0; i < 20; ++i) {
                std::string name = names.NameOf(random() % (count + 3));
                const std::string others[] = {
                    name,     name, name + ".old", "x" + name, "log.0" + name, "log.1.txt.", "log.+" + name.substr(4),
                    "log.txt"};
                name = others[random() % 8];
                WriteFile(scratch / name, "");
                StampFile(scratch / name, 1000 + static_cast<long>(random() % 10));
            }
            ASSERT_EQ(OldestOf(VELSysTraceRotate(Path().c_str(), 4, count)), PlainOldest(names, scratch.Path(), count));
        }
    }
}

TEST_F(TraceRotate, ADirectoryWithTheNumberIsListedToo) {
    for (const char* name : {"a.005.b", "a.007.b", "a.003.b", "a.002.bb"}) {
        fs::create_directories(scratch / name / "c");
    }
    WriteFile(scratch / "a.005.b/c/log", "5");
    WriteFile(scratch / "a.007.b/c/log", "7");
    WriteFile(scratch / "a.002.bb/c/log", "2");
    StampFile(scratch / "a.005.b/c/log", 2000);
    StampFile(scratch / "a.007.b/c/log", 1000);
    EXPECT_EQ(OldestOf(VELSysTraceRotate((scratch + "/a.b/c/log").c_str(), 4, 300)), 7U);
}

TEST_F(TraceRotate, AHugeCountCostsOneListing) {
    for (const unsigned long count : {1UL << 31, Most}) {
        const Model names(4, count);
        const std::string old = names.NameOf(2147483647);
        WriteFile(scratch / old, "old");
        // A number beyond those that names can have.
        WriteFile(scratch / names.NameOf(2147483648), "beyond");
        StampFile(scratch / old, 2000);
        StampFile(scratch / names.NameOf(2147483648), 1000);
        SystemCalls() = {};
        VELSysTraceRotate file(Path().c_str(), 4, count);
        EXPECT_EQ(OldestOf(file), 2147483647U);
        EXPECT_EQ(SystemCalls().listed, 1);
        EXPECT_EQ(SystemCalls().asked, 1);
        ASSERT_EQ(file.Open(), 0);
        file.Write("one.");
        file.Write("two.");
        EXPECT_EQ(SystemCalls().asked, 2);
        // The highest number is taken, so the oldest is replaced.
        EXPECT_EQ(ReadFile(scratch / old), "one.");
        EXPECT_EQ(OldestOf(file), 1U);
        EXPECT_EQ(NextOf(file), 2U);
        file.Write("tri.");
        EXPECT_EQ(ReadFile(scratch / names.NameOf(2)), "two.");
        fs::remove(scratch / names.NameOf(2));
        EXPECT_FALSE(fs::exists(scratch / names.NameOf(2147483649)));
        file.Close();
        fs::remove(Path());
    }
}

TEST_F(TraceRotate, TheHighestNumberThatNamesCanHaveIsThatOfAHugeCount) {
    for (const unsigned long count : {2147483647UL, 1UL << 31, Most}) {
        const Model names(4, count);
        for (const std::uint64_t index : {2147483646U, 2147483647U}) {
            WriteFile(scratch / names.NameOf(index), std::to_string(index));
            StampFile(scratch / names.NameOf(index), static_cast<long>(index));
        }
        VELSysTraceRotate file(Path().c_str(), 4, count);
        ASSERT_EQ(file.Open(), 0);
        file.Write("one.");
        file.RenameFile();
        EXPECT_EQ(OldestOf(file), 2147483647U);
        EXPECT_EQ(NextOf(file), 1U);
        file.Close();
        for (const auto& entry : fs::directory_iterator(scratch.Path())) {
            fs::remove(entry);
        }
    }
}

TEST_F(TraceRotate, ADirectoryThatCantBeListedIsAskedInPart) {
    const Model names(4, Most);
    WriteFile(scratch / names.NameOf(77), "77");
    SystemCalls().opendirError = EACCES;
    EXPECT_EQ(OldestOf(VELSysTraceRotate(Path().c_str(), 4, Most)), 77U);
    SystemCalls() = {};
}

TEST_F(TraceRotate, ADirectoryThatIsNotThereHasNoOldest) {
    SystemCalls() = {};
    EXPECT_EQ(OldestOf(VELSysTraceRotate((scratch + "/no/log.txt").c_str(), 4, Most)), 1U);
    EXPECT_EQ(OldestOf(VELSysTraceRotate((scratch + "/no/log.txt").c_str(), 4, 1000)), 1U);
    EXPECT_EQ(SystemCalls().asked, 0);
}

// Names at the limit.

class TraceRotateLongNames : public TraceRotate {
protected:
    /// A path without a dot, `size` bytes long, whose directories are there.
    std::string PathOf(std::size_t size) {
        std::string directory = scratch + "/" + std::string(150, 'd');
        fs::create_directory(directory);
        return directory + "/" + std::string(size - directory.size() - 1, 'f');
    }
    Contents In(const std::string& path) { return ContentsOf(fs::path(path).parent_path()); }
    static std::string Leaf(const std::string& path) { return path.substr(path.rfind('/') + 1); }
};

TEST_F(TraceRotateLongNames, AreWholeUpTo259Bytes) {
    const std::string path = PathOf(256);
    VELSysTraceRotate file(path.c_str(), 4, 100);
    ASSERT_EQ(file.Open(), 0);
    file.Write("one.");
    file.Write("two.");
    file.Write("tri.");
    EXPECT_EQ(In(path), (Contents{{Leaf(path), "tri."}, {Leaf(path) + ".01", "one."}, {Leaf(path) + ".02", "two."}}));
}

TEST_F(TraceRotateLongNames, LoseTheirLastDigits) {
    const std::string path = PathOf(257);
    VELSysTraceRotate file(path.c_str(), 4, 11);
    ASSERT_EQ(file.Open(), 0);
    for (const char* text : {"one.", "two.", "tri."}) {
        file.Write(text);
    }
    // The first name that is free after that of 1 to 9 is that of 10.
    EXPECT_EQ(In(path), (Contents{{Leaf(path), "tri."}, {Leaf(path) + ".0", "one."}, {Leaf(path) + ".1", "two."}}));
    EXPECT_EQ(NextOf(file), 11U);
}

TEST_F(TraceRotateLongNames, AreFoundAgainWithoutTheirLastDigits) {
    const std::string path = PathOf(256);
    WriteFile(path + ".03", "3");
    WriteFile(path + ".07", "7");
    WriteFile(path + ".7", "no number");
    StampFile(path + ".03", 2000);
    StampFile(path + ".07", 1000);
    StampFile(path + ".7", 500);
    EXPECT_EQ(OldestOf(VELSysTraceRotate(path.c_str(), 4, 1000)), 70U);
    EXPECT_EQ(OldestOf(VELSysTraceRotate(path.c_str(), 4, 10000)), 700U);
    StampFile(path + ".7", 5000);
    WriteFile(path + ".00", "0");
    StampFile(path + ".00", 100);
    EXPECT_EQ(OldestOf(VELSysTraceRotate(path.c_str(), 4, 10000)), 1U);
}

TEST_F(TraceRotateLongNames, AreNotThoseOfNumbersAboveTheCount) {
    const std::string path = PathOf(255);
    WriteFile(path + ".499", "499");
    WriteFile(path + ".700", "700");
    StampFile(path + ".499", 2000);
    StampFile(path + ".700", 1000);
    EXPECT_EQ(OldestOf(VELSysTraceRotate(path.c_str(), 4, 5000)), 4990U);
}

TEST_F(TraceRotateLongNames, AreOneWithoutADigit) {
    for (const std::size_t size : {258U, 259U, 260U, 300U}) {
        const std::string path = PathOf(size);
        const std::string numbered = (path + ".").substr(0, 259);
        {
            VELSysTraceRotate file(path.c_str(), 4, Most);
            ASSERT_EQ(file.Open(), 0);
            for (const char* text : {"one.", "two.", "tri."}) {
                EXPECT_EQ(file.Write(text), 4);
            }
        }
        // One of 259 bytes is its own numbered file, which makes place for itself.
        EXPECT_EQ(In(path), size == 259 ? (Contents{{Leaf(path), "tri."}})
                                        : (Contents{{Leaf(path), "tri."}, {Leaf(numbered), "two."}}));
        fs::remove(path);
        fs::remove(numbered);
    }
}

} // namespace
