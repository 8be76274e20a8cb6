/// @file
/// The flat listing of a directory: what is an entry, which ones match, what each failure is called.

#include "VELSysFileFinder.h"
#include "FileCalls.h"
#include "ScratchDirectory.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cerrno>
#include <fnmatch.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <vector>

namespace {

using FileCalls::Changes;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Names = std::vector<std::string>;

VELSysFNMatchOptions Options(unsigned char matchMode, unsigned char literalBrackets = 0) {
    VELSysFNMatchOptions options;
    options.matchMode = matchMode;
    options.literalBrackets = literalBrackets;
    return options;
}

std::string NameOf(const VELSysFileFinderCtx* ctx) {
    QORUnicodeString name;
    EXPECT_EQ(VELSysFileFinderCurrentName(ctx, name), VEL::StatusOk);
    EXPECT_FALSE(StringBlocks::StringAccess::BlockOf(name)->IsWide());
    return name.ConvertToChar();
}

/// All names that a listing gives, and the code that ends it.
struct Result {
    Names names;
    int end;
};

Result List(const std::string& directory, const char* pattern = "", const VELSysFNMatchOptions& options = {}) {
    Result result;
    VELSysFileFinderCtx* ctx = nullptr;
    result.end = VELSysFileFinderFirst(ctx, directory.c_str(), pattern, options);
    for (; result.end == VEL::StatusOk; result.end = VELSysFileFinderNext(ctx)) {
        result.names.push_back(NameOf(ctx));
    }
    std::sort(result.names.begin(), result.names.end());
    VELSysFileFinderClose(ctx);
    return result;
}

class VELSysFileFinderTest : public ScratchTest {
protected:
    std::string Directory() const { return scratch.Path(); }
    void Make(const Names& names) {
        for (const std::string& name : names) {
            WriteFile(scratch / name, name);
        }
    }
    int First(const QORUnicodeString& directory, const char* pattern = "") {
        ctx = reinterpret_cast<VELSysFileFinderCtx*>(8);
        return VELSysFileFinderFirst(ctx, directory, pattern, {});
    }
    VELSysFileFinderCtx* ctx = nullptr;
};

TEST_F(VELSysFileFinderTest, WithoutAPatternTheDotsAreEntries) {
    Make({"a", ".b"});
    const Result result = List(Directory());
    EXPECT_THAT(result.names, ElementsAre(".", "..", ".b", "a"));
    EXPECT_EQ(result.end, VEL::StatusNoMoreFiles);
}

TEST_F(VELSysFileFinderTest, StarMatchesNamesWithALeadingDot) {
    Make({"a", ".b"});
    EXPECT_THAT(List(Directory(), "*").names, ElementsAre(".", "..", ".b", "a"));
}

TEST_F(VELSysFileFinderTest, AnEmptyDirectoryTextIsABadArgument) {
    EXPECT_EQ(First(""), VEL::StatusBadArgument);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AMissingDirectoryIsNotFound) {
    EXPECT_EQ(First((scratch / "none").c_str()), VEL::StatusNotFound);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AFileIsNoDirectory) {
    Make({"a"});
    EXPECT_EQ(First((scratch / "a").c_str()), VELConvertError(ENOTDIR, 7));
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AWebAddressIsNotImplemented) {
    EXPECT_EQ(First("http://host/a"), VEL::StatusNotImplemented);
    EXPECT_EQ(First("https://host/a"), VEL::StatusNotImplemented);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, ATooLongDirectoryKeepsTheCodeOfItsBuilding) {
    EXPECT_EQ(First(std::string(1025, 'a').c_str()), VEL::StatusPathTooLong);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, ABadWebAddressKeepsTheCodeOfItsBuilding) {
    EXPECT_EQ(First("http://host/\xC3\xA9"), VEL::StatusFailure);
}

TEST_F(VELSysFileFinderTest, APatternWithoutAMatchIsNotFound) {
    Make({"a"});
    EXPECT_EQ(First(Directory().c_str(), "b"), VEL::StatusNotFound);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, TheEndIsNoMoreFilesAgainAndAgain) {
    Make({"a"});
    ASSERT_EQ(First(Directory().c_str(), "a"), VEL::StatusOk);
    EXPECT_EQ(VELSysFileFinderNext(ctx), VEL::StatusNoMoreFiles);
    EXPECT_EQ(VELSysFileFinderNext(ctx), VEL::StatusNoMoreFiles);
    QORUnicodeString name("as it was");
    EXPECT_EQ(VELSysFileFinderCurrentName(ctx, name), VEL::StatusBadArgument);
    EXPECT_STREQ(name, "as it was");
    struct stat64 status;
    EXPECT_EQ(VELSysFileFinderCurrentStat(ctx, &status), VEL::StatusBadArgument);
    EXPECT_EQ(VELSysFileFinderClose(ctx), VEL::StatusOk);
}

TEST_F(VELSysFileFinderTest, NullIsRefused) {
    QORUnicodeString name;
    struct stat64 status;
    EXPECT_EQ(VELSysFileFinderNext(nullptr), VEL::StatusBadArgument);
    EXPECT_EQ(VELSysFileFinderCurrentName(nullptr, name), VEL::StatusBadArgument);
    EXPECT_EQ(VELSysFileFinderCurrentStat(nullptr, &status), VEL::StatusBadArgument);
    EXPECT_EQ(VELSysFileFinderClose(nullptr), 1);
}

TEST_F(VELSysFileFinderTest, StatIsThatOfTheCurrentEntry) {
    WriteFile(scratch / "a", "12345");
    ASSERT_EQ(First(Directory().c_str(), "a"), VEL::StatusOk);
    struct stat64 status = {};
    EXPECT_EQ(VELSysFileFinderCurrentStat(ctx, &status), VEL::StatusOk);
    EXPECT_EQ(status.st_size, 5);
    EXPECT_EQ(VELSysFileFinderCurrentStat(ctx, nullptr), VEL::StatusBadHandle);
    std::filesystem::remove(scratch / "a");
    EXPECT_EQ(VELSysFileFinderCurrentStat(ctx, &status), VEL::StatusNotFound);
    VELSysFileFinderClose(ctx);
}

TEST_F(VELSysFileFinderTest, TheContextHoldsDirectoryPatternAndOptions) {
    Make({"A[b]c"});
    ASSERT_EQ(VELSysFileFinderFirst(ctx, Directory().c_str(), "a[b]*", Options(2, 1)), VEL::StatusOk);
    EXPECT_STREQ(ctx->entry->d_name, "A[b]c");
    EXPECT_NE(ctx->directory, nullptr);
    EXPECT_EQ(ctx->directoryText.ConvertToChar(), Directory() + "/");
    EXPECT_STREQ(ctx->pattern, "a\\[b\\]*");
    EXPECT_EQ(ctx->matchMode, 2);
    EXPECT_EQ(ctx->literalBrackets, 1);
    EXPECT_TRUE(ctx->hasPattern);
    VELSysFileFinderClose(ctx);
}

TEST_F(VELSysFileFinderTest, ADirectoryTextKeepsItsOneSlash) {
    ASSERT_EQ(First("/"), VEL::StatusOk);
    EXPECT_STREQ(ctx->directoryText, "/");
    EXPECT_FALSE(ctx->hasPattern);
    VELSysFileFinderClose(ctx);
}

TEST_F(VELSysFileFinderTest, BracketsAreLiteralWhenAskedFor) {
    Make({"a[1]", "a1"});
    EXPECT_THAT(List(Directory(), "a[1]", Options(0, 1)).names, ElementsAre("a[1]"));
    EXPECT_THAT(List(Directory(), "a[1]", Options(0, 2)).names, ElementsAre("a1"));
}

TEST_F(VELSysFileFinderTest, ModeTwoIgnoresCase) {
    Make({"README", "other"});
    EXPECT_THAT(List(Directory(), "readme", Options(2)).names, ElementsAre("README"));
    EXPECT_EQ(List(Directory(), "readme", Options(1)).end, VEL::StatusNotFound);
    EXPECT_EQ(List(Directory(), "readme", Options(3)).end, VEL::StatusNotFound);
}

TEST_F(VELSysFileFinderTest, AFailingReadIsTold) {
    Make({"a", "b"});
    ASSERT_EQ(First(Directory().c_str()), VEL::StatusOk);
    Changes changes;
    changes.readdirCallsBeforeError = 0;
    changes.readdirError = ENOENT;
    EXPECT_EQ(VELSysFileFinderNext(ctx), VEL::StatusNotFound);
    changes.readdirCallsBeforeError = 0;
    changes.readdirError = EBADF;
    EXPECT_EQ(VELSysFileFinderNext(ctx), VELConvertError(EBADF, 7));
    EXPECT_EQ(VELSysFileFinderClose(ctx), VEL::StatusOk);

    changes.readdirCallsBeforeError = 1;
    EXPECT_EQ(First(Directory().c_str(), "c"), VELConvertError(EBADF, 7));
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AnOldErrorIsNoFailingRead) {
    Make({"a"});
    ASSERT_EQ(First(Directory().c_str(), "a"), VEL::StatusOk);
    errno = EBADF;
    EXPECT_EQ(VELSysFileFinderNext(ctx), VEL::StatusNoMoreFiles);
    VELSysFileFinderClose(ctx);
}

TEST_F(VELSysFileFinderTest, AnErrorOfTheMatchIsConverted) {
    Make({"a"});
    Changes changes;
    changes.fnmatchResult = 5;
    EXPECT_EQ(First(Directory().c_str(), "?"), VELConvertError(5, 7));
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, BehindAnErrorOfTheMatchNothingIsCurrent) {
    Make({"a", "b"});
    ASSERT_EQ(First(Directory().c_str(), "?"), VEL::StatusOk);
    {
        Changes changes;
        changes.fnmatchResult = 5;
        EXPECT_EQ(VELSysFileFinderNext(ctx), VELConvertError(5, 7));
    }
    QORUnicodeString name("as it was");
    EXPECT_EQ(VELSysFileFinderCurrentName(ctx, name), VEL::StatusBadArgument);
    EXPECT_STREQ(name, "as it was");
    VELSysFileFinderClose(ctx);
}

TEST_F(VELSysFileFinderTest, WhatTheMatchLeavesInErrnoIsNoFailingRead) {
    Make({"a", "b"});
    ASSERT_EQ(First(Directory().c_str(), "?"), VEL::StatusOk);
    {
        Changes changes;
        changes.fnmatchResult = FNM_NOMATCH;
        changes.fnmatchErrno = EBADF;
        EXPECT_EQ(VELSysFileFinderNext(ctx), VEL::StatusNoMoreFiles);
    }
    VELSysFileFinderClose(ctx);
    Changes changes;
    changes.fnmatchResult = FNM_NOMATCH;
    changes.fnmatchErrno = EBADF;
    EXPECT_EQ(First(Directory().c_str(), "?"), VEL::StatusNotFound);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AnErrorOfTheReadThatMeansTheEndIsNoMatch) {
    Changes changes;
    changes.readdirCallsBeforeError = 0;
    changes.readdirError = ENFILE;
    EXPECT_EQ(First(Directory().c_str()), VEL::StatusNotFound);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AnErrorOfTheOpeningIsConverted) {
    Changes changes;
    changes.opendirError = EMFILE;
    EXPECT_EQ(First(Directory().c_str()), VELConvertError(EMFILE, 7));
    changes.opendirError = ENFILE;
    EXPECT_EQ(First(Directory().c_str()), VEL::StatusNoMoreFiles) << "it is not the one of a read";
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, AFailingCloseIsToldAndFreesAll) {
    ASSERT_EQ(First(Directory().c_str()), VEL::StatusOk);
    Changes changes;
    changes.closedirError = EBADF;
    EXPECT_EQ(VELSysFileFinderClose(ctx), VELConvertError(EBADF, 7));
}

// Logical names.

std::u16string s_asked;
std::u16string s_location = std::filesystem::temp_directory_path().u16string();
int s_realPathResult = 0;
Changes* s_watcher = nullptr;

int GiveRealPath(const unsigned short* name, unsigned short** result, int, int, int) {
    s_asked = reinterpret_cast<const char16_t*>(name);
    *result = new unsigned short[s_location.size() + 1]();
    std::copy(s_location.begin(), s_location.end(), *result);
    if (s_watcher != nullptr) {
        s_watcher->watchedArray = *result;
    }
    return s_realPathResult;
}

TEST_F(VELSysFileFinderTest, LogicalNamesAreTranslated) {
    Changes changes;
    changes.getRealPath = GiveRealPath;
    for (const char* name : {"QORDLN://docs", "\x01\x02\\docs"}) {
        ASSERT_EQ(First(name), VEL::StatusOk) << name;
        EXPECT_EQ(ctx->directoryText.ConvertToChar(), std::filesystem::temp_directory_path().string() + "/");
        VELSysFileFinderClose(ctx);
    }
    EXPECT_EQ(s_asked, u"\x01\x02\\docs");
}

TEST_F(VELSysFileFinderTest, ALogicalNameWithoutTranslationIsABadArgument) {
    EXPECT_EQ(First("QORDLN://docs"), VEL::StatusBadArgument);
    EXPECT_EQ(First("\x01\x02\\docs"), VEL::StatusBadArgument);
    EXPECT_EQ(ctx, nullptr);
}

TEST_F(VELSysFileFinderTest, ATranslationThatIsNoPathIsABadArgument) {
    Changes changes;
    changes.getRealPath = GiveRealPath;
    for (const std::u16string& location : {std::u16string(1025, u'd'), std::u16string(u"http://")}) {
        s_location = location;
        EXPECT_EQ(First("QORDLN://docs"), VEL::StatusBadArgument);
        EXPECT_EQ(First("\x01\x02\\docs"), VEL::StatusBadArgument);
        EXPECT_EQ(ctx, nullptr);
    }
}

TEST_F(VELSysFileFinderTest, ATranslationIsReleasedWhateverComesWithIt) {
    Changes changes;
    changes.getRealPath = GiveRealPath;
    s_watcher = &changes;
    for (const int result : {0, 1, -1}) {
        s_realPathResult = result;
        changes.watchedArrayReleases = 0;
        EXPECT_EQ(First("QORDLN://docs"), result == 0 ? VEL::StatusOk : VEL::StatusBadArgument);
        EXPECT_EQ(changes.watchedArrayReleases, 1) << result;
        VELSysFileFinderClose(ctx);
    }
    s_watcher = nullptr;
}

// Patterns compared directly must say what `fnmatch` says.

struct Pattern {
    const char* text;
    bool isDirect;
};

class VELSysFileFinderPatternTest : public testing::TestWithParam<Pattern> {
    const FileCalls::DescriptorBalance balance;
};

TEST_P(VELSysFileFinderPatternTest, AgreesWithTheSystem) {
    const Names names = {"a",     "ab",   "abc", "abcb",  "a.c",  "b.c",        ".c",          "A.C", "a*c",
                         "[a]",   "aa",   "aba", "x.tar", "a\nb", "\xC3\xA9.c", "a\xFF.c",     "a b", "a\\b",
                         "c.cpp", "c.cp", "cpp", "a.c.c", "-",    "a?c",        "\xE2\x82\xAC"};
    const ScratchDirectory scratch;
    for (const std::string& name : names) {
        WriteFile(scratch / name, "");
    }
    Names expected;
    for (const std::string& name : names) {
        if (fnmatch(GetParam().text, name.c_str(), 0) == 0) {
            expected.push_back(name);
        }
    }
    Changes changes;
    Result result = List(scratch.Path(), GetParam().text);
    std::erase_if(result.names, [](const std::string& name) { return name == "." || name == ".."; });
    EXPECT_THAT(result.names, testing::UnorderedElementsAreArray(expected));
    const int notASCII = 3;
    EXPECT_EQ(changes.fnmatchCalls > notASCII, !GetParam().isDirect);
}

INSTANTIATE_TEST_SUITE_P(Shapes, VELSysFileFinderPatternTest,
                         testing::Values(Pattern{"*", true}, Pattern{"*.c", true}, Pattern{"a*", true},
                                         Pattern{"a*b", true}, Pattern{"ab*b", true}, Pattern{"abc", true},
                                         Pattern{"ab*bc", true}, Pattern{"aba*aba", true}, Pattern{"a b", true},
                                         Pattern{"**", false}, Pattern{"?", false}, Pattern{"a?c", false},
                                         Pattern{"[ab]*", false}, Pattern{"a\\*c", false}, Pattern{"*b*", false},
                                         Pattern{"\\[a]", false}, Pattern{"[", false}, Pattern{"\xC3\xA9*", false}));

// Names as the file system has them.

class VELSysFileFinderNamesTest : public StringEnvironment::InBoth {
    const FileCalls::DescriptorBalance balance;
};

TEST_P(VELSysFileFinderNamesTest, AreTheBytesOfTheFileSystem) {
    const ScratchDirectory scratch;
    const Names names = {"a\nb", "\xC3\xA9t\xC3\xA9", "\xFF\xFE", "x\xE9", std::string(255, 'n')};
    for (const std::string& name : names) {
        WriteFile(scratch / name, "12");
    }
    EXPECT_THAT(List(scratch.Path(), "?*[!.]").names, testing::UnorderedElementsAreArray(names));
}

TEST_P(VELSysFileFinderNamesTest, ADirectoryIsNamedInTheNativeCodePage) {
    const ScratchDirectory scratch;
    const std::string native = IsUTF8() ? "d\xC3\xA9" : "d\xE9";
    std::filesystem::create_directory(scratch / native);
    WriteFile(scratch / native / "in", "123");
    QORUnicodeString directory;
    const std::u16string text = scratch.Path().u16string() + u"/d\u00E9";
    directory.BuildFromUCChar(StringBlocks::Units(text.c_str()));
    VELSysFileFinderCtx* ctx = nullptr;
    ASSERT_EQ(VELSysFileFinderFirst(ctx, directory, "in", {}), VEL::StatusOk);
    struct stat64 status = {};
    EXPECT_EQ(VELSysFileFinderCurrentStat(ctx, &status), VEL::StatusOk);
    EXPECT_EQ(status.st_size, 3);
    VELSysFileFinderClose(ctx);
}

INSTANTIATE_TEST_SUITE_P(Environments, VELSysFileFinderNamesTest,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

} // namespace
