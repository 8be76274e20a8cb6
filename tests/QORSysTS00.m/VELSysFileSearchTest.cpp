/// @file
/// The search along lists of directories, for programs, and for where the program is installed.

#include "Child.h"
#include "FileCalls.h"
#include "ScratchDirectory.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELSysFile.h"

#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using FileCalls::Changes;

class VELFindFileByRelPathTest : public ScratchTest {
protected:
    void SetUp() override {
        ScratchTest::SetUp();
        for (const char* name : {"a", "b", "c"}) {
            std::filesystem::create_directory(scratch / name);
        }
    }
    int Find(const char* relative, const std::string& list) {
        const QORUnicodeString searchPath(list.c_str());
        return VELFindFileByRelPath(relative, found, &searchPath);
    }
    std::string A() const { return scratch + "/a"; }
    std::string B() const { return scratch + "/b"; }
    QORUnicodeString found = "as it was";
};

TEST_F(VELFindFileByRelPathTest, TheFirstDirectoryThatHasItWins) {
    WriteFile(scratch / "b/x", "");
    WriteFile(scratch / "c/x", "");
    EXPECT_EQ(Find("x", A() + ":" + B() + ":" + (scratch + "/c")), 1);
    EXPECT_EQ(found.ConvertToChar(), B() + "/x");
}

TEST_F(VELFindFileByRelPathTest, DirectoriesAreFoundAndPathsMayBeLong) {
    std::filesystem::create_directories(scratch / "b/x/y");
    EXPECT_EQ(Find("x/y", A() + ":" + B()), 1);
    EXPECT_EQ(found.ConvertToChar(), B() + "/x/y");
}

TEST_F(VELFindFileByRelPathTest, NothingFoundLeavesTheResult) {
    EXPECT_EQ(Find("x", A() + ":" + B()), 0);
    EXPECT_STREQ(found, "as it was");
}

TEST_F(VELFindFileByRelPathTest, TheFirstEmptyPieceEndsTheList) {
    WriteFile(scratch / "b/x", "");
    EXPECT_EQ(Find("x", A() + "::" + B()), 0);
    EXPECT_EQ(Find("x", ":" + B()), 0);
    EXPECT_EQ(Find("x", ""), 0);
    EXPECT_EQ(Find("x", ":"), 0);
    EXPECT_EQ(Find("x", B() + ":"), 1);
}

TEST_F(VELFindFileByRelPathTest, WhatCannotBeAppendedFindsTheDirectoryItself) {
    EXPECT_EQ(Find(std::string(1025, 'x').c_str(), (scratch + "/none:") + A() + ":" + B()), 1);
    EXPECT_EQ(found.ConvertToChar(), A());
}

TEST_F(VELFindFileByRelPathTest, NothingToAppendFindsTheDirectoryItself) {
    for (const char* const relative : {"", ".", "/"}) {
        found = "as it was";
        EXPECT_EQ(Find(relative, (scratch + "/none:") + B()), 1) << relative;
        EXPECT_EQ(found.ConvertToChar(), B());
    }
}

TEST_F(VELFindFileByRelPathTest, APieceThatIsNoPathIsPassedOver) {
    EXPECT_EQ(Find("x", "http://h:" + std::string(2000, 'd')), 0);
}

TEST_F(VELFindFileByRelPathTest, NullTakesTheInstallPath) {
    WriteFile(scratch / "b/x", "");
    setenv("QORInstallPath", (A() + ":" + B()).c_str(), 1);
    EXPECT_EQ(VELFindFileByRelPath("x", found, nullptr), 1);
    EXPECT_EQ(found.ConvertToChar(), B() + "/x");
    setenv("QORInstallPath", "", 1);
    EXPECT_EQ(VELFindFileByRelPath("x", found, nullptr), 0);
}

TEST_F(VELFindFileByRelPathTest, TheListMayBeTheResult) {
    WriteFile(scratch / "b/x", "");
    found = (A() + ":" + B()).c_str();
    EXPECT_EQ(VELFindFileByRelPath("x", found, &found), 1);
    EXPECT_EQ(found.ConvertToChar(), B() + "/x");
}

class QORWhenceTest : public ScratchTest {
protected:
    void SetUp() override {
        ScratchTest::SetUp();
        std::filesystem::create_directory(scratch / "bin");
        setenv("PATH", (scratch + "/none:" + (scratch + "/bin")).c_str(), 1);
    }
    void MakeProgram(const std::string& name, unsigned int mode = 0700) {
        WriteFile(scratch / name, "");
        std::filesystem::permissions(scratch / name, static_cast<std::filesystem::perms>(mode));
    }
    QORUnicodeString found = "as it was";
};

TEST_F(QORWhenceTest, AProgramIsTakenAsItStands) {
    MakeProgram("prog");
    EXPECT_EQ(QORWhence(found, (scratch + "/prog").c_str()), 0);
    EXPECT_EQ(found.ConvertToChar(), scratch + "/prog");
}

TEST_F(QORWhenceTest, QuotesAndThenBlanksAreTakenOff) {
    MakeProgram("prog");
    for (const std::string& name :
         {"\"" + (scratch + "/prog\""), "  " + (scratch + "/prog "), "\" " + (scratch + "/prog \"")}) {
        EXPECT_EQ(QORWhence(found, name.c_str()), 0) << name;
        EXPECT_EQ(found.ConvertToChar(), scratch + "/prog");
    }
}

TEST_F(QORWhenceTest, ANameThatIsThereIsNotStripped) {
    MakeProgram(" prog ");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Path());
    EXPECT_EQ(QORWhence(found, " prog "), 0);
    EXPECT_STREQ(found, " prog ");
    std::filesystem::current_path(before);
}

TEST_F(QORWhenceTest, ThePathIsSearched) {
    MakeProgram("bin/prog-in-path");
    EXPECT_EQ(QORWhence(found, "prog-in-path"), 0);
    EXPECT_EQ(found.ConvertToChar(), scratch + "/bin/prog-in-path");
}

TEST_F(QORWhenceTest, TheTwoMayBeOne) {
    MakeProgram("bin/prog-in-path");
    found = "prog-in-path";
    EXPECT_EQ(QORWhence(found, found), 0);
    EXPECT_EQ(found.ConvertToChar(), scratch + "/bin/prog-in-path");
}

TEST_F(QORWhenceTest, OnlyTheOwnersBitCounts) {
    MakeProgram("bin/prog-in-path", 0677);
    EXPECT_EQ(QORWhence(found, "prog-in-path"), -2);
    MakeProgram("bin/prog-in-path", 0100);
    EXPECT_EQ(QORWhence(found, "prog-in-path"), 0);
}

TEST_F(QORWhenceTest, ADirectoryIsNoProgram) {
    EXPECT_EQ(QORWhence(found, scratch.Path().c_str()), -2);
    std::filesystem::create_directory(scratch / "bin/directory-in-path");
    EXPECT_EQ(QORWhence(found, "directory-in-path"), -2);
}

TEST_F(QORWhenceTest, TheRootIsTheLastPlace) {
    EXPECT_EQ(QORWhence(found, "no-such-program"), -2);
    EXPECT_STREQ(found, "/no-such-program");
    MakeProgram("prog");
    EXPECT_EQ(QORWhence(found, (scratch + "/prog").c_str() + 1), 0);
    EXPECT_EQ(found.ConvertToChar(), scratch + "/prog");
}

TEST_F(QORWhenceTest, AnEmptyPieceEndsTheSearch) {
    MakeProgram("bin/prog-in-path");
    setenv("PATH", (scratch + "/none::" + (scratch + "/bin")).c_str(), 1);
    EXPECT_EQ(QORWhence(found, "prog-in-path"), -2);
    EXPECT_STREQ(found, "/prog-in-path");
}

TEST_F(QORWhenceTest, AnEmptyPieceAtTheStartIsPassedOver) {
    MakeProgram("bin/prog-in-path");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Path());
    setenv("PATH", ":bin", 1);
    EXPECT_EQ(QORWhence(found, "prog-in-path"), 0);
    EXPECT_STREQ(found, "bin/prog-in-path");
    std::filesystem::current_path(before);
}

TEST_F(QORWhenceTest, APathOfEmptyPiecesHasTheRootAlone) {
    setenv("PATH", ":", 1);
    EXPECT_EQ(QORWhence(found, "no-such-program"), -2);
    EXPECT_STREQ(found, "/no-such-program");
}

TEST_F(QORWhenceTest, WhatIsNoProgramHereIsLookedForInThePath) {
    MakeProgram("bin/a");
    MakeProgram("bin/b");
    std::filesystem::create_directory(scratch / "a");
    MakeProgram("b", 0600);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Path());
    for (const char* const name : {"a", "b"}) {
        EXPECT_EQ(QORWhence(found, name), 0);
        EXPECT_EQ(found.ConvertToChar(), scratch + "/bin/" + name);
    }
    std::filesystem::current_path(before);
}

TEST_F(QORWhenceTest, BlanksOutsideTheQuotesKeepThem) {
    MakeProgram("prog");
    EXPECT_EQ(QORWhence(found, (" \"" + (scratch + "/prog\" ")).c_str()), -2);
}

TEST_F(QORWhenceTest, AnEmptyPathIsReported) {
    for (const bool isSet : {true, false}) {
        isSet ? setenv("PATH", "", 1) : unsetenv("PATH");
        testing::internal::CaptureStderr();
        EXPECT_EQ(QORWhence(found, "no-such-program"), -1);
        const std::string report = testing::internal::GetCapturedStderr();
        EXPECT_EQ(report.rfind("QORWhence -> QORGetEnvU() | PATH incorrect : ", 0), 0U) << report;
        EXPECT_STREQ(found, "no-such-program");
    }
}

// Each of these has a process of its own, since the answer is kept.

class VELGetMainInstallPathTest : public ScratchTest {
protected:
    std::string PathWhenStartedAs(const std::string& name) {
        Changes changes;
        changes.startedName = name.c_str();
        return VELGetMainInstallPath();
    }
};

TEST_F(VELGetMainInstallPathTest, IsThreeLevelsAboveTheProgram) {
    EXPECT_EQ(PathWhenStartedAs("/opt/linux/code/bin/prog"), "/opt/linux");
}

TEST_F(VELGetMainInstallPathTest, IsKept) {
    const char* const first = (PathWhenStartedAs("/opt/linux/code/bin/prog"), VELGetMainInstallPath());
    EXPECT_EQ(PathWhenStartedAs("/other/linux/code/bin/prog"), "/opt/linux");
    EXPECT_EQ(VELGetMainInstallPath(), first);
}

TEST_F(VELGetMainInstallPathTest, IsEmptyWithoutArguments) {
    EXPECT_STREQ(VELGetMainInstallPath(), "");
}

TEST_F(VELGetMainInstallPathTest, StopsWhereNoSlashRemains) {
    EXPECT_EQ(PathWhenStartedAs("/prog"), "");
}

TEST_F(VELGetMainInstallPathTest, IsRelativeToTheWorkingDirectory) {
    std::filesystem::current_path(scratch.Path());
    EXPECT_EQ(PathWhenStartedAs("code/bin/prog"), scratch.Path());
    std::filesystem::current_path("/");
}

TEST_F(VELGetMainInstallPathTest, IsEmptyWithoutAWorkingDirectory) {
    std::filesystem::create_directory(scratch / "gone");
    std::filesystem::current_path(scratch / "gone");
    std::filesystem::remove(scratch / "gone");
    EXPECT_EQ(PathWhenStartedAs("code/linux/code/bin/prog"), "");
    std::filesystem::current_path("/");
}

TEST_F(VELGetMainInstallPathTest, ARelativeNameIsNotCut) {
    const std::string name(4090, 'x');
    std::filesystem::current_path(scratch.Path());
    EXPECT_EQ(PathWhenStartedAs(name + "/code/bin/prog"), scratch + "/" + name);
    std::filesystem::current_path("/");
}

CHILD_PROGRAM(LooksForItselfWithoutPrivileges) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
        return 77;
    }
    Changes changes;
    changes.startedName = "prog";
    std::fputs(VELGetMainInstallPath(), stdout);
    return 0;
}

TEST_F(VELGetMainInstallPathTest, AProgramThatMayNotBeReadIsPassedOver) {
    for (const char* const system : {"closed", "open"}) {
        std::filesystem::create_directories(scratch / system / "code/bin");
        WriteFile(scratch / system / "code/bin/prog", "");
    }
    std::filesystem::permissions(scratch / "closed/code/bin/prog", std::filesystem::perms::none);
    std::filesystem::permissions(scratch.Path(), static_cast<std::filesystem::perms>(0755));
    const std::string list = (scratch + "/closed/code/bin:") + (scratch + "/open/code/bin");
    const Child child = RunChild("LooksForItselfWithoutPrivileges", {.set = {{"PATH", list}}});
    if (child.exitCode == 77) {
        GTEST_SKIP() << "privileges can't be dropped here";
    }
    EXPECT_EQ(child.out, scratch + "/open");
}

TEST_F(VELGetMainInstallPathTest, IsSearchedInThePath) {
    std::filesystem::create_directories(scratch / "linux/code/bin");
    WriteFile(scratch / "linux/code/bin/prog", "");
    setenv("PATH", ("::" + (scratch + "/none:") + (scratch + "/linux/code/bin/:/bin")).c_str(), 1);
    EXPECT_EQ(PathWhenStartedAs("prog"), scratch + "/linux");
}

TEST_F(VELGetMainInstallPathTest, IsEmptyForAProgramThatThePathLacks) {
    setenv("PATH", scratch.Path().c_str(), 1);
    EXPECT_EQ(PathWhenStartedAs("prog"), "");
}

TEST_F(VELGetMainInstallPathTest, IsEmptyWithoutAPath) {
    unsetenv("PATH");
    EXPECT_EQ(PathWhenStartedAs("prog"), "");
}

TEST_F(VELGetMainInstallPathTest, AnAbsoluteNameIsCutAt4095Bytes) {
    const std::string head = "/" + std::string(4094, 'x');
    EXPECT_EQ(PathWhenStartedAs(head + "/a/b/c"), "");
}

TEST_F(VELGetMainInstallPathTest, ThePathIsCutAt4095Bytes) {
    std::filesystem::create_directories(scratch / "code/bin");
    WriteFile(scratch / "code/bin/prog", "");
    const std::string piece = scratch + "/code/bin";
    setenv("PATH", (std::string(4096 - piece.size(), ':') + piece).c_str(), 1);
    EXPECT_EQ(PathWhenStartedAs("prog"), "");
}

TEST_F(VELGetMainInstallPathTest, ThePathIsReadUpTo4095Bytes) {
    std::filesystem::create_directories(scratch / "code/bin");
    WriteFile(scratch / "code/bin/prog", "");
    const std::string piece = scratch + "/code/bin";
    setenv("PATH", (std::string(4095 - piece.size(), ':') + piece).c_str(), 1);
    EXPECT_EQ(PathWhenStartedAs("prog"), scratch.Path());
}

TEST_F(VELGetMainInstallPathTest, NativeTextBecomesUTF8) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    EXPECT_EQ(PathWhenStartedAs("/d\xE9/code/bin/prog"), "/d\xC3\xA9");
}

TEST_F(VELGetMainInstallPathTest, UTF8StaysInAnyEnvironment) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    EXPECT_EQ(PathWhenStartedAs("/d\xC3\xA9/code/bin/prog"), "/d\xC3\xA9");
}

} // namespace
