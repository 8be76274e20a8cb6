/// @file
/// Walks through directories: where an iterator stands, when two are equal, what names and failures do to it.

#include "VELSysDirectoryIterator.h"
#include "Child.h"
#include "FileCalls.h"
#include "QORSysTSUnicodeString.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <vector>

namespace {

using FileCalls::Changes;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

std::string TextOf(const VELSysPath& path) {
    int rc = 0;
    return path.ToString(&rc).ConvertToChar();
}

std::string NameOf(const VELSysDirectoryIterator& it) {
    QORSysTSUnicodeString name;
    EXPECT_EQ(it.GetCurrentName(name), VEL::StatusOk);
    return name.ConvertToChar();
}

VELSysFNMatchOptions WithLiteralBrackets() {
    VELSysFNMatchOptions options;
    options.literalBrackets = 1;
    return options;
}

VELSysFNMatchOptions IgnoringCase() {
    VELSysFNMatchOptions options;
    options.matchMode = VELSysFNMatchIgnoreCase;
    return options;
}

class VELSysDirectoryIteratorTest : public ScratchTest {
protected:
    void SetUp() override {
        ScratchTest::SetUp();
        path.Set(scratch.Path().c_str());
    }
    void Make(const Texts& names) {
        for (const std::string& name : names) {
            WriteFile(scratch / name, name);
        }
    }
    VELSysPath path;
    int rc = 77;
};

TEST_F(VELSysDirectoryIteratorTest, GivesEveryEntryButTheDots) {
    Make({"a", ".b", "..c", "..."});
    std::filesystem::create_directory(scratch / "d");
    Texts found;
    rc = 0;
    for (VELSysDirectoryIterator it = path.Begin(&rc); it != path.End(); ++it) {
        EXPECT_EQ(TextOf(*it), scratch + "/" + NameOf(it));
        EXPECT_TRUE((*it).IsAbsolute());
        EXPECT_TRUE((*it).Exists(0));
        VELSysPath current;
        EXPECT_EQ(it.GetCurrentPath(current), VEL::StatusOk);
        EXPECT_TRUE(current == *it);
        found.push_back(NameOf(it));
    }
    EXPECT_EQ(rc, VEL::StatusOk);
    EXPECT_THAT(found, UnorderedElementsAre("a", ".b", "..c", "...", "d"));
}

TEST_F(VELSysDirectoryIteratorTest, NextTellsTheEnd) {
    Make({"a"});
    rc = 0;
    VELSysDirectoryIterator it = path.Begin(&rc);
    EXPECT_FALSE(it == path.End());
    EXPECT_EQ(it.next(), VEL::StatusNoMoreFiles);
    EXPECT_TRUE(it == path.End());
}

TEST_F(VELSysDirectoryIteratorTest, AFinishedWalkHoldsNoDescriptor) {
    Make({"a"});
    const int before = OpenDescriptors();
    VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(OpenDescriptors(), before + 1);
    ++it;
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(VELSysDirectoryIteratorTest, AnEmptyDirectoryBeginsAtItsEnd) {
    rc = 0;
    const VELSysDirectoryIterator it = path.Begin(&rc);
    EXPECT_EQ(rc, 1);
    EXPECT_TRUE(it == path.End());
}

TEST_F(VELSysDirectoryIteratorTest, AStarInAnEmptyDirectoryBeginsAtItsEnd) {
    rc = 0;
    const VELSysDirectoryIterator it = path.Begin("*", VELSysFNMatchOptions(), &rc);
    EXPECT_EQ(rc, 1);
    EXPECT_TRUE(it == path.End());
}

TEST_F(VELSysDirectoryIteratorTest, APatternWithoutAMatchIsNotFoundAndEnded) {
    Make({"a"});
    rc = 0;
    VELSysDirectoryIterator it = path.Begin("b", VELSysFNMatchOptions(), &rc);
    EXPECT_EQ(rc, VEL::StatusNotFound);
    EXPECT_FALSE(it != path.End());
    EXPECT_EQ(it.next(), VEL::StatusFailure);
}

TEST_F(VELSysDirectoryIteratorTest, APatternChoosesEntries) {
    Make({"a.c", "b.c", "c.h", "D.C"});
    rc = 0;
    Texts found;
    for (VELSysDirectoryIterator it = path.Begin("*.c", IgnoringCase(), &rc); it != path.End(); ++it) {
        found.push_back(NameOf(it));
    }
    EXPECT_THAT(found, UnorderedElementsAre("a.c", "b.c", "D.C"));
}

TEST_F(VELSysDirectoryIteratorTest, AFileCannotBeWalked) {
    Make({"a"});
    VELSysPath file;
    file.Set((scratch + "/a").c_str());
    rc = 0;
    const VELSysDirectoryIterator it = file.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusFailure);
    VELSysDirectoryIterator other;
    EXPECT_EQ(file.GetDirectoryIterator(other), VEL::StatusFailure);
}

TEST_F(VELSysDirectoryIteratorTest, AnEarlierFailureIsKept) {
    Make({"a"});
    rc = VEL::StatusRefused;
    VELSysDirectoryIterator it = path.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusRefused);
    EXPECT_EQ(it.next(), VEL::StatusFailure);
    VELSysDirectoryIterator withPattern = path.Begin("a", VELSysFNMatchOptions(), &rc);
    EXPECT_EQ(rc, VEL::StatusRefused);
    EXPECT_EQ(withPattern.next(), VEL::StatusFailure);
}

TEST_F(VELSysDirectoryIteratorTest, StandsNowhereAtFirst) {
    VELSysDirectoryIterator it;
    VELSysPath current;
    QORSysTSUnicodeString name;
    EXPECT_EQ(it.next(), VEL::StatusFailure);
    EXPECT_EQ(it.GetCurrentPath(current), VEL::StatusFailure);
    EXPECT_EQ(it.GetCurrentName(name), VEL::StatusFailure);
    EXPECT_FALSE((*it).IsValid());
    EXPECT_TRUE(it == VELSysDirectoryIterator());
    EXPECT_FALSE(it == path.End());
    const VELSysDirectoryIterator copy(it);
    EXPECT_TRUE(copy == it);
}

TEST_F(VELSysDirectoryIteratorTest, AtItsEndNothingIsCurrent) {
    const VELSysDirectoryIterator end = path.End();
    VELSysPath current;
    QORSysTSUnicodeString name;
    EXPECT_EQ(end.GetCurrentPath(current), VEL::StatusBadArgument);
    EXPECT_EQ(end.GetCurrentName(name), VEL::StatusBadArgument);
}

TEST_F(VELSysDirectoryIteratorTest, APathWithoutImplementationHasNoWalk) {
    VELSysPath donor;
    const VELSysPath taken(std::move(donor));
    rc = 0;
    VELSysDirectoryIterator it = donor.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusFailure);
    VELSysDirectoryIterator end = donor.End();
    EXPECT_EQ(end.next(), VEL::StatusFailure);
}

TEST_F(VELSysDirectoryIteratorTest, BehindTheEndTheDirectoryIsWalkedAgainAndStaysEnded) {
    Make({"a"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    ++it;
    ASSERT_TRUE(it == path.End());
    EXPECT_EQ(it.next(), VEL::StatusOk);
    EXPECT_EQ(NameOf(it), "a");
    EXPECT_TRUE(it == path.End());
    EXPECT_EQ(it.next(), VEL::StatusNoMoreFiles);
}

TEST_F(VELSysDirectoryIteratorTest, ACopyStartsAnew) {
    Make({"a", "b", "c"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    const std::string first = NameOf(it);
    ++it;
    const VELSysDirectoryIterator copy(it);
    EXPECT_EQ(NameOf(copy), first);
    EXPECT_FALSE(copy == it);
    VELSysDirectoryIterator assigned;
    assigned = it;
    EXPECT_EQ(NameOf(assigned), first);
    it = *&it;
    EXPECT_EQ(NameOf(it), first);
}

TEST_F(VELSysDirectoryIteratorTest, ACopyOfTheEndStartsAWalk) {
    Make({"a"});
    const VELSysDirectoryIterator end = path.End();
    const VELSysDirectoryIterator copy(end);
    EXPECT_FALSE(copy == end);
    EXPECT_EQ(NameOf(copy), "a");
}

TEST_F(VELSysDirectoryIteratorTest, ACopyKeepsPatternAndOptions) {
    Make({"A", "b"});
    const VELSysDirectoryIterator it = path.Begin("a", IgnoringCase(), nullptr);
    VELSysDirectoryIterator copy(it);
    EXPECT_TRUE(copy == it);
    EXPECT_EQ(NameOf(copy), "A");
    EXPECT_EQ(copy.next(), VEL::StatusNoMoreFiles);
    Make({"[A]"});
    const VELSysDirectoryIterator brackets = path.Begin("[A]", WithLiteralBrackets(), nullptr);
    copy = brackets;
    EXPECT_TRUE(copy == brackets);
    EXPECT_EQ(NameOf(copy), "[A]");
    EXPECT_EQ(NameOf(VELSysDirectoryIterator(brackets)), "[A]");
}

TEST_F(VELSysDirectoryIteratorTest, AssigningWhatListsNothingChangesNothing) {
    Make({"a"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    it = VELSysDirectoryIterator();
    EXPECT_EQ(NameOf(it), "a");
}

TEST_F(VELSysDirectoryIteratorTest, OnTheFirstEntryOfTheSameWalkAStartDoesNothing) {
    Make({"a", "b"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    Changes changes;
    changes.readdirCallsBeforeError = 0;
    EXPECT_EQ(path.GetDirectoryIterator(it), VEL::StatusOk);
    EXPECT_EQ(changes.readdirCallsBeforeError, 0) << "nothing was read";
}

TEST_F(VELSysDirectoryIteratorTest, AnAdvancedWalkIsStartedAnew) {
    Make({"a", "b"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    const std::string first = NameOf(it);
    ++it;
    EXPECT_EQ(path.GetDirectoryIterator(it), VEL::StatusOk);
    EXPECT_EQ(NameOf(it), first);
}

TEST_F(VELSysDirectoryIteratorTest, AWalkThatIsStartedAnewCountsAnew) {
    Make({"a", "b"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    ++it;
    ASSERT_EQ(path.GetDirectoryIterator(it), VEL::StatusOk);
    EXPECT_TRUE(it == path.Begin(nullptr));
}

TEST_F(VELSysDirectoryIteratorTest, AnotherChoiceIsStartedAnew) {
    Make({"a", "B", "[a]"});
    VELSysDirectoryIterator it = path.Begin("a", VELSysFNMatchOptions(), nullptr);
    EXPECT_EQ(NameOf(it), "a");
    it = path.Begin("B", VELSysFNMatchOptions(), nullptr);
    EXPECT_EQ(NameOf(it), "B");
    it = path.Begin("[a]", VELSysFNMatchOptions(), nullptr);
    EXPECT_EQ(NameOf(it), "a");
    it = path.Begin("[a]", WithLiteralBrackets(), nullptr);
    EXPECT_EQ(NameOf(it), "[a]");
    it = path.Begin("[a]", IgnoringCase(), nullptr);
    EXPECT_EQ(NameOf(it), "a");
}

TEST_F(VELSysDirectoryIteratorTest, AnotherPathIsStartedAnew) {
    std::filesystem::create_directory(scratch / "d");
    std::filesystem::create_directory(scratch / "e");
    WriteFile(scratch / "d/one", "");
    WriteFile(scratch / "e/two", "");
    VELSysPath d;
    VELSysPath e;
    d.Set((scratch + "/d").c_str());
    e.Set((scratch + "/e").c_str());
    VELSysDirectoryIterator it = d.Begin(nullptr);
    EXPECT_EQ(NameOf(it), "one");
    EXPECT_EQ(e.GetDirectoryIterator(it), VEL::StatusOk);
    EXPECT_EQ(NameOf(it), "two");
    EXPECT_EQ(TextOf(*it), scratch + "/e/two");
}

TEST_F(VELSysDirectoryIteratorTest, AStartThatIsRefusedLeavesTheWalk) {
    Make({"a"});
    VELSysPath file;
    file.Set((scratch + "/a").c_str());
    VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(file.GetDirectoryIterator(it), VEL::StatusFailure);
    EXPECT_EQ(NameOf(it), "a");
    EXPECT_EQ(TextOf(*it), scratch + "/a");
    EXPECT_TRUE(it == path.Begin(nullptr));
    EXPECT_EQ(it.next(), VEL::StatusNoMoreFiles);
}

TEST_F(VELSysDirectoryIteratorTest, WhatIsKnownToBeADirectoryIsOpened) {
    std::filesystem::create_directory(scratch / "d");
    path.Append("d");
    EXPECT_TRUE(path.IsDirectory(0));
    std::filesystem::remove(scratch / "d");
    rc = 0;
    const VELSysDirectoryIterator it = path.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusNotFound);
}

TEST_F(VELSysDirectoryIteratorTest, EqualityGoesByPathChoiceAndCount) {
    Make({"a", "b"});
    VELSysPath samePlace(path);
    VELSysDirectoryIterator it = path.Begin(nullptr);
    VELSysDirectoryIterator same = path.Begin(nullptr);
    EXPECT_TRUE(it == same);
    EXPECT_FALSE(it == samePlace.Begin(nullptr));
    EXPECT_FALSE(path.End() == samePlace.End());
    EXPECT_FALSE(it == path.Begin("*", VELSysFNMatchOptions(), nullptr));
    EXPECT_FALSE(it == path.Begin("", IgnoringCase(), nullptr));
    EXPECT_FALSE(it == path.Begin("", WithLiteralBrackets(), nullptr));
    ++same;
    EXPECT_FALSE(it == same);
    ++it;
    EXPECT_TRUE(it == same);
}

TEST_F(VELSysDirectoryIteratorTest, FinishedWalksAreEqualWhateverTheirPattern) {
    Make({"a"});
    VELSysDirectoryIterator it = path.Begin("a", IgnoringCase(), nullptr);
    ++it;
    VELSysDirectoryIterator other = path.Begin(nullptr);
    EXPECT_FALSE(it == other);
    ++other;
    EXPECT_TRUE(it == other);
}

TEST_F(VELSysDirectoryIteratorTest, BrokenWalksAreToldApartByChoiceAndCount) {
    Make({"a"});
    const VELSysDirectoryIterator b = path.Begin("b", VELSysFNMatchOptions(), nullptr);
    const VELSysDirectoryIterator c = path.Begin("c", VELSysFNMatchOptions(), nullptr);
    EXPECT_FALSE(b == c);
    EXPECT_TRUE(b == path.Begin("b", VELSysFNMatchOptions(), nullptr));
    EXPECT_TRUE(b == path.End());
}

TEST_F(VELSysDirectoryIteratorTest, AFailingReadEndsALoopAndIsToldByNext) {
    Make({"a", "b"});
    const int before = OpenDescriptors();
    VELSysDirectoryIterator it = path.Begin(nullptr);
    {
        Changes changes;
        changes.readdirCallsBeforeError = 0;
        changes.readdirError = EBADF;
        EXPECT_EQ(it.next(), VELConvertError(EBADF, 7));
    }
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_FALSE(it != path.End());
    EXPECT_EQ(it.next(), VEL::StatusFailure);
    QORSysTSUnicodeString name;
    EXPECT_EQ(it.GetCurrentName(name), VEL::StatusFailure);
}

TEST_F(VELSysDirectoryIteratorTest, TooManyFilesReadAsTheEnd) {
    Make({"a", "b"});
    VELSysDirectoryIterator it = path.Begin(nullptr);
    {
        Changes changes;
        changes.readdirCallsBeforeError = 0;
        changes.readdirError = ENFILE;
        EXPECT_EQ(it.next(), VEL::StatusNoMoreFiles) << "the two have one code";
    }
    EXPECT_TRUE(it == path.End());
    EXPECT_EQ(it.next(), VEL::StatusOk) << "as behind every end";
    Changes changes;
    changes.opendirError = ENFILE;
    rc = 0;
    it = VELSysDirectoryIterator();
    VELSysDirectoryIterator unopened = path.Begin(&rc);
    EXPECT_EQ(rc, 1);
    EXPECT_TRUE(unopened == path.End());
    EXPECT_EQ(unopened.next(), VEL::StatusNoMoreFiles);
    changes.opendirError = 0;
    EXPECT_EQ(unopened.next(), VEL::StatusOk);
}

// Owners that are no local path.

std::u16string s_location;
int GiveRealPath(const unsigned short*, unsigned short** result, int, int, int) {
    *result = new unsigned short[s_location.size() + 1]();
    std::copy(s_location.begin(), s_location.end(), *result);
    return 0;
}

TEST_F(VELSysDirectoryIteratorTest, EntriesOfALogicalNameStandBehindThatName) {
    Make({"a"});
    Changes changes;
    changes.getRealPath = GiveRealPath;
    s_location = scratch.Path().u16string();
    path.Set("\x01\x02\\docs");
    rc = 0;
    VELSysDirectoryIterator it = path.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusOk);
    EXPECT_EQ(NameOf(it), "a");
    EXPECT_EQ(TextOf(*it), "\x01\x02\\docs/a");
    EXPECT_EQ((*it).getType(), VELSysPathTypeLogical);
    VELSysPath current;
    EXPECT_EQ(it.GetCurrentPath(current), VEL::StatusOk);
    EXPECT_EQ(TextOf(current), "\x01\x02\\docs/a");
    EXPECT_EQ(it.next(), VEL::StatusNoMoreFiles);
}

int AnswerWithADirectory(const char*, struct stat64* out) {
    *out = {};
    out->st_mode = S_IFDIR;
    return 0;
}

TEST_F(VELSysDirectoryIteratorTest, AWebAddressIsNotWalked) {
    Changes changes;
    changes.httpInfo = AnswerWithADirectory;
    path.Set("http://h/x");
    rc = 0;
    VELSysDirectoryIterator it = path.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusNotImplemented);
    EXPECT_TRUE(it == path.End());
    EXPECT_EQ(it.next(), VEL::StatusFailure);
    changes.httpInfo = nullptr;
    rc = 0;
    it = path.Begin(&rc);
    EXPECT_EQ(rc, VEL::StatusFailure) << "it is no directory";
}

TEST_F(VELSysDirectoryIteratorTest, AnEntryIsAskedAboutAnew) {
    Make({"a"});
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    std::filesystem::remove(scratch / "a");
    EXPECT_FALSE((*it).Exists(0));
}

TEST_F(VELSysDirectoryIteratorTest, SpecialFilesAreEntries) {
    Make({"file"});
    std::filesystem::create_symlink("nowhere", scratch / "dangling");
    std::filesystem::create_directory_symlink(".", scratch / "loop");
    ASSERT_EQ(mkfifo((scratch / "fifo").c_str(), 0600), 0);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    (scratch + "/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
    Texts found;
    for (VELSysDirectoryIterator it = path.Begin(nullptr); it != path.End(); ++it) {
        found.push_back(NameOf(it));
    }
    EXPECT_THAT(found, UnorderedElementsAre("file", "dangling", "loop", "fifo", "socket"));
}

TEST_F(VELSysDirectoryIteratorTest, TheRootHasOneSlashInFrontOfItsEntries) {
    VELSysPath root;
    root.Set("/");
    for (VELSysDirectoryIterator it = root.Begin(nullptr); it != root.End(); ++it) {
        EXPECT_EQ(TextOf(*it), "/" + NameOf(it));
    }
}

TEST_F(VELSysDirectoryIteratorTest, OneOfTwoTrailingSlashesGoes) {
    Make({"a"});
    path.Set((scratch + "///").c_str());
    ASSERT_EQ(TextOf(path), scratch + "//");
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(TextOf(*it), scratch + "/a");
}

TEST_F(VELSysDirectoryIteratorTest, ARelativePathGivesRelativeEntries) {
    Make({"a"});
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Path());
    path.Set(".");
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(TextOf(*it), "./a");
    EXPECT_TRUE((*it).IsRelative());
    std::filesystem::current_path(before);
}

TEST_F(VELSysDirectoryIteratorTest, CurrentPathMayGoIntoThePathThatIsListed) {
    Make({"a"});
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(it.GetCurrentPath(path), VEL::StatusOk);
    EXPECT_EQ(TextOf(path), scratch + "/a");
}

TEST_F(VELSysDirectoryIteratorTest, CurrentPathGoesIntoAHandleWithoutImplementation) {
    Make({"a"});
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    VELSysPath donor;
    const VELSysPath taken(std::move(donor));
    it.GetCurrentPath(donor);
    EXPECT_EQ(TextOf(*it), scratch + "/a");
}

TEST_F(VELSysDirectoryIteratorTest, WalksADirectoryOfManyEntries) {
    constexpr int Count = 100000;
    for (int i = 0; i < Count; ++i) {
        const int descriptor = creat((scratch / std::to_string(i)).c_str(), 0600);
        ASSERT_GE(descriptor, 0);
        close(descriptor);
    }
    std::vector<bool> seen(Count);
    int count = 0;
    for (VELSysDirectoryIterator it = path.Begin(nullptr); it != path.End(); ++it, ++count) {
        const std::size_t number = std::stoul(NameOf(it));
        EXPECT_FALSE(seen.at(number));
        seen.at(number) = true;
    }
    EXPECT_EQ(count, Count);
}

int DepthBelow(const VELSysPath& directory) {
    for (VELSysDirectoryIterator it = directory.Begin(nullptr); it != directory.End(); ++it) {
        if ((*it).IsDirectory(0)) {
            return 1 + DepthBelow(*it);
        }
    }
    return 0;
}

TEST_F(VELSysDirectoryIteratorTest, WalksATreeOfDepth200) {
    std::filesystem::path deepest = scratch.Path();
    for (int i = 0; i < 200; ++i) {
        deepest /= "d";
    }
    std::filesystem::create_directories(deepest);
    EXPECT_EQ(DepthBelow(path), 200);
}

CHILD_PROGRAM(WalksAnUnreadableDirectory) {
    if (geteuid() == 0 && seteuid(65534) != 0) {
        return 77;
    }
    VELSysPath path;
    path.Set(arguments.at(0).c_str());
    int rc = 0;
    VELSysDirectoryIterator it = path.Begin(&rc);
    std::printf("%x %d", static_cast<unsigned int>(rc), it == path.End());
    return 0;
}

TEST_F(VELSysDirectoryIteratorTest, AnUnreadableDirectoryIsRefused) {
    Make({"a"});
    std::filesystem::permissions(scratch.Path(), std::filesystem::perms::none);
    const Child child = RunChild("WalksAnUnreadableDirectory", {.set = {}, .arguments = {scratch.Path()}});
    std::filesystem::permissions(scratch.Path(), std::filesystem::perms::owner_all);
    if (child.exitCode == 77) {
        GTEST_SKIP() << "privileges can't be dropped here";
    }
    EXPECT_EQ(child.out, "80070005 1");
}

// Names that no path can hold, and those that only one environment can.

class VELSysDirectoryIteratorNamesTest : public StringEnvironment::InBoth {
protected:
    const FileCalls::DescriptorBalance balance;
    const ScratchDirectory scratch;
    VELSysPath path{QORUnicodeString(scratch.Path().c_str())};
};

TEST_P(VELSysDirectoryIteratorNamesTest, BytesThatAreUTF8AreTakenAsTheyAre) {
    const std::string name = "\xC3\xA9\n\xE2\x82\xAC";
    WriteFile(scratch / name, "");
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(NameOf(it), name);
    QORUnicodeString text;
    (*it).GetAsString(text);
    char bytes[200] = {};
    unsigned long length = 0;
    text.ConvertToUTF8(bytes, &length);
    EXPECT_EQ(std::string(bytes, length), scratch + "/" + name);
}

TEST_P(VELSysDirectoryIteratorNamesTest, BytesThatAreUTF8StandBehindOneOfTwoSlashes) {
    const std::string name = "\xC3\xA9";
    WriteFile(scratch / name, "");
    path.Set((scratch + "///").c_str());
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    VELSysPath expected;
    expected.Set((scratch + "/" + name).c_str());
    VELSysPath current;
    EXPECT_EQ(it.GetCurrentPath(current), VEL::StatusOk);
    EXPECT_TRUE(current == expected);
    EXPECT_TRUE(*it == expected);
}

TEST_P(VELSysDirectoryIteratorNamesTest, OtherBytesAreConvertedWhereTheEnvironmentCan) {
    WriteFile(scratch / "x\xE9", "");
    const VELSysDirectoryIterator it = path.Begin(nullptr);
    EXPECT_EQ(NameOf(it), "x\xE9");
    VELSysPath current;
    EXPECT_EQ(it.GetCurrentPath(current), IsUTF8() ? VEL::StatusBadArgument : VEL::StatusOk);
    EXPECT_TRUE(current == *it);
    QORUnicodeString expected;
    const std::string utf8 = scratch + (IsUTF8() ? "" : "/x\xC3\xA9");
    expected.BuildFromUTF8(utf8.c_str(), utf8.size());
    EXPECT_TRUE(current == expected);
}

INSTANTIATE_TEST_SUITE_P(Environments, VELSysDirectoryIteratorNamesTest,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

} // namespace
