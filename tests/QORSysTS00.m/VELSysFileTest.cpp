/// @file
/// File helpers: the check of names, joining and splitting, and single calls of the system.

#include "VELSysFile.h"
#include "Child.h"
#include "FileCalls.h"
#include "ScratchDirectory.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <climits>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using FileCalls::Changes;
using StringBlocks::StringAccess;
using StringBlocks::Units;
using Array = std::unique_ptr<unsigned short[]>;

std::u16string WideOf(const QORUnicodeString& s) {
    return {reinterpret_cast<const char16_t*>(s.ConvertToUCChar()), static_cast<std::size_t>(s.GetLengthInChar())};
}

QORUnicodeString StringOf(const std::u16string& text) {
    QORUnicodeString s;
    s.BuildFromUCChar(Units(text.c_str()), static_cast<int>(text.size()));
    return s;
}

// Names.

struct NameRow {
    std::u16string path;
    int strict;
    bool isGood;
};

class VELSysNameFilterTest : public testing::TestWithParam<NameRow> {};

TEST_P(VELSysNameFilterTest, ChecksTheLastComponent) {
    const NameRow& row = GetParam();
    EXPECT_EQ(VELSysNameFilter(Units(row.path.c_str()), nullptr, row.strict),
              row.isGood ? VEL::StatusOk : VEL::StatusBadName);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VELSysNameFilterTest,
    testing::Values(NameRow{u"/tmp/a:b", 1, false}, NameRow{u"/tmp/a:b", 0, true}, NameRow{u"/t:mp/ab", 1, true},
                    NameRow{u"http://h/a?x=*", 1, true}, NameRow{u"https://h/a?x=*", 1, true},
                    NameRow{u"ftp://h/a?x=*", 1, false}, NameRow{u"http://h/a*?x", 1, false},
                    NameRow{u"http://h/a?\u00E9", 0, true}, NameRow{u"http://h/a?x/y*", 1, false},
                    NameRow{u"", 1, true}, NameRow{u"/", 1, true}, NameRow{u"a/", 1, true},
                    NameRow{u"a\u001F", 0, false}, NameRow{u"a\u0020", 1, true}, NameRow{u"a\u007F", 1, true},
                    NameRow{u"a\u0080", 0, false}, NameRow{u"\u00E9/a", 1, true}, NameRow{u"a\u00E9", 0, false},
                    NameRow{u"a\xD83D\xDE00", 0, false}, NameRow{u"\u0001\u0002\\ab", 1, true},
                    NameRow{u"\u0001\u0002\\a\\b", 1, false}, NameRow{u"\u0001\u0002\\a\\b", 0, true},
                    NameRow{u"\u0001\u0002ab", 0, false}, NameRow{u"\u0001\u0002\\http://h/a?*", 1, true}));

class VELSysNameFilterRefusedTest : public testing::TestWithParam<char> {};

TEST_P(VELSysNameFilterRefusedTest, OnlyWhenStrict) {
    const unsigned short name[] = {'a', static_cast<unsigned short>(GetParam()), 0};
    EXPECT_EQ(VELSysNameFilter(name, nullptr, 1), VEL::StatusBadName);
    EXPECT_EQ(VELSysNameFilter(name, nullptr, -1), VEL::StatusBadName);
    EXPECT_EQ(VELSysNameFilter(name, nullptr, 0), VEL::StatusOk);
}

INSTANTIATE_TEST_SUITE_P(Characters, VELSysNameFilterRefusedTest,
                         testing::Values('*', '?', ':', '|', '<', '>', '"', '\\'));

TEST(VELSysNameFilter, NullIsABadFile) {
    char* narrow = nullptr;
    EXPECT_EQ(VELSysNameFilter(nullptr, &narrow, 0), VELConvertError(9, 7));
    EXPECT_EQ(VELSysNameFilter(nullptr, &narrow, 0), static_cast<int>(0x80070006));
}

TEST(VELSysNameFilter, GivesTheWholeTextZeroedBehind) {
    char* narrow = nullptr;
    ASSERT_EQ(VELSysNameFilter(Units(u"/a/bc"), &narrow, 1), VEL::StatusOk);
    EXPECT_EQ(std::string(narrow, 12), std::string("/a/bc\0\0\0\0\0\0\0", 12));
    delete[] narrow;
}

TEST(VELSysNameFilter, ABadNameGivesNoText) {
    char* narrow = nullptr;
    EXPECT_EQ(VELSysNameFilter(Units(u"/a/b*"), &narrow, 1), VEL::StatusBadName);
    EXPECT_EQ(narrow, nullptr);
}

TEST(VELSysNameFilter, TextOfThreeBytesAUnitFits) {
    std::u16string path(1000, u'\u20AC');
    path += u"/a";
    char* narrow = nullptr;
    ASSERT_EQ(VELSysNameFilter(Units(path.c_str()), &narrow, 1), VEL::StatusOk);
    EXPECT_EQ(std::string(narrow).size(), 3002U);
    delete[] narrow;
}

class QORConvertUcsToStrTest : public StringEnvironment::InBoth {};

TEST_P(QORConvertUcsToStrTest, GivesNativeText) {
    char* out = nullptr;
    ASSERT_EQ(QORConvertUcsToStr(Units(u"a\u00E9"), &out, 0), 0);
    EXPECT_EQ(std::string(out), IsUTF8() ? "a\xC3\xA9" : "a\xE9");
    delete[] out;
    ASSERT_EQ(QORConvertUcsToStr(Units(u"abc"), &out, 2), 0);
    EXPECT_EQ(std::string(out, 5), std::string("ab\0\0\0", 5));
    delete[] out;
    ASSERT_EQ(QORConvertUcsToStr(Units(u""), &out, 0), 0);
    EXPECT_STREQ(out, "");
    delete[] out;
    const std::u16string euros(500, u'\u20AC');
    ASSERT_EQ(QORConvertUcsToStr(Units(euros.c_str()), &out, 0), 0);
    EXPECT_EQ(std::string(out).size(), IsUTF8() ? 1500U : 500U);
    delete[] out;
}

INSTANTIATE_TEST_SUITE_P(Environments, QORConvertUcsToStrTest,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(QORConvertUcsToStr, NullIsABadArgument) {
    char* out = nullptr;
    EXPECT_EQ(QORConvertUcsToStr(nullptr, &out, 0), VEL::StatusBadArgument);
    EXPECT_EQ(QORConvertUcsToStr(Units(u"a"), nullptr, 0), VEL::StatusBadArgument);
}

// Joining.

struct JoinRow {
    std::u16string directory;
    std::u16string name;
    std::u16string joined;
};

class VELSysMakePathTest : public testing::TestWithParam<JoinRow> {
protected:
    static Array NewArray(const std::u16string& text) {
        Array array(new unsigned short[text.size() + 1]);
        std::copy_n(Units(text.c_str()), text.size() + 1, array.get());
        return array;
    }
};

TEST_P(VELSysMakePathTest, Joins16BitText) {
    const Array name = NewArray(GetParam().name);
    unsigned short* directory = NewArray(GetParam().directory).release();
    EXPECT_EQ(VELSysMakePath(directory, name.get()), VEL::StatusOk);
    EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(directory)), GetParam().joined);
    delete[] directory;
}

TEST_P(VELSysMakePathTest, JoinsStrings) {
    QORUnicodeString directory = StringOf(GetParam().directory);
    const bool isEmpty = directory.IsEmpty();
    EXPECT_EQ(VELSysMakePath(directory, StringOf(GetParam().name)), isEmpty ? VEL::StatusBadArgument : VEL::StatusOk);
    EXPECT_EQ(WideOf(directory), isEmpty ? u"" : GetParam().joined);
}

INSTANTIATE_TEST_SUITE_P(Rows, VELSysMakePathTest,
                         testing::Values(JoinRow{u"/a", u"b", u"/a/b"}, JoinRow{u"/a/", u"b", u"/a/b"},
                                         JoinRow{u"/a", u"", u"/a/"}, JoinRow{u"/a/", u"", u"/a/"},
                                         JoinRow{u"", u"b", u"/b"}, JoinRow{u"", u"", u"/"},
                                         JoinRow{u"a\\", u"b", u"a\\/b"}, JoinRow{u"/a", u"/b", u"/a//b"},
                                         JoinRow{u"\u20AC", u"\u00E9", u"\u20AC/\u00E9"}));

TEST(VELSysMakePath, NullIsABadArgumentAndNoName) {
    unsigned short* directory = nullptr;
    EXPECT_EQ(VELSysMakePath(directory, nullptr), VEL::StatusBadArgument);
    EXPECT_EQ(directory, nullptr);
    directory = new unsigned short[2]{'a', 0};
    EXPECT_EQ(VELSysMakePath(directory, nullptr), VEL::StatusOk);
    EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(directory)), u"a/");
    delete[] directory;
}

TEST(VELSysMakePath, TheTwoMayBeOne) {
    unsigned short* directory = new unsigned short[2]{'a', 0};
    EXPECT_EQ(VELSysMakePath(directory, directory), VEL::StatusOk);
    EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(directory)), u"a/a");
    delete[] directory;
    QORUnicodeString s("a");
    EXPECT_EQ(VELSysMakePath(s, s), VEL::StatusOk);
    EXPECT_STREQ(s, "a/a");
}

TEST(VELSysMakePath, NarrowStaysNarrow) {
    QORUnicodeString s("\xC3\xA9");
    EXPECT_EQ(VELSysMakePath(s, "b"), VEL::StatusOk);
    EXPECT_FALSE(StringAccess::BlockOf(s)->IsWide());
    EXPECT_STREQ(s, "\xC3\xA9/b");
}

// Splitting.

struct SplitRow {
    std::u16string path;
    std::u16string directory;
    std::u16string name;
};

class VELSysSplitPathTest : public testing::TestWithParam<SplitRow> {};

TEST_P(VELSysSplitPathTest, Splits) {
    const QORUnicodeString path = StringOf(GetParam().path);
    QORUnicodeString directory("old");
    QORUnicodeString name("old");
    EXPECT_EQ(VELSysSplitPath(path, directory, name), VEL::StatusOk);
    EXPECT_EQ(WideOf(directory), GetParam().directory);
    EXPECT_EQ(WideOf(name), GetParam().name);
}

TEST_P(VELSysSplitPathTest, PathMayBeTheDirectory) {
    QORUnicodeString directory = StringOf(GetParam().path);
    QORUnicodeString name;
    EXPECT_EQ(VELSysSplitPath(directory, directory, name), VEL::StatusOk);
    EXPECT_EQ(WideOf(directory), GetParam().directory);
    EXPECT_EQ(WideOf(name), GetParam().name);
}

TEST_P(VELSysSplitPathTest, PathMayBeTheName) {
    QORUnicodeString directory;
    QORUnicodeString name = StringOf(GetParam().path);
    EXPECT_EQ(VELSysSplitPath(name, directory, name), VEL::StatusOk);
    EXPECT_EQ(WideOf(directory), GetParam().directory);
    EXPECT_EQ(WideOf(name), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Rows, VELSysSplitPathTest,
                         testing::Values(SplitRow{u"a\\b", u"a", u"b"}, SplitRow{u"a/b\\c", u"a", u"b\\c"},
                                         SplitRow{u"http://h\\x", u"http:/", u"h\\x"}, SplitRow{u"://h", u":/", u"h"},
                                         SplitRow{u"/a", u"", u"a"}, SplitRow{u"/", u"", u""},
                                         SplitRow{u"a/", u"a", u""}, SplitRow{u"a", u"", u"a"}, SplitRow{u"", u"", u""},
                                         SplitRow{u"\\a", u"", u"a"}, SplitRow{u"a\\b\\c", u"a\\b", u"c"},
                                         SplitRow{u"a/b/c", u"a/b", u"c"},
                                         SplitRow{u"\u0001\u0002\\a", u"", u"\u0001\u0002\\a"},
                                         SplitRow{u"\u0001\u0002\\a\\b", u"\u0001\u0002\\a", u"b"},
                                         SplitRow{u"\u0001\u0002\\\\b", u"\u0001\u0002\\", u"b"},
                                         SplitRow{u"\u0001\u0002\\a/b\\c", u"\u0001\u0002\\a", u"b\\c"},
                                         SplitRow{u"\u20AC/\u00E9", u"\u20AC", u"\u00E9"}));

TEST(VELSysSplitPath, AllThreeMayNotBeOne) {
    QORUnicodeString s("a/b");
    EXPECT_EQ(VELSysSplitPath(s, s, s), VELConvertError(22, 7));
    EXPECT_STREQ(s, "a/b");
}

TEST(VELSysSplitPath, ALongNameLeavesAPathThatIsTheName) {
    for (const std::size_t length : {2048U, 2049U}) {
        const std::u16string name(length, u'n');
        QORUnicodeString directory;
        QORUnicodeString path = StringOf(u"d/" + name);
        EXPECT_EQ(VELSysSplitPath(path, directory, path), VEL::StatusOk);
        EXPECT_STREQ(directory, "d");
        EXPECT_EQ(WideOf(path), length == 2048 ? name : u"d/" + name);

        path = StringOf(u"d/" + name);
        QORUnicodeString other;
        EXPECT_EQ(VELSysSplitPath(path, directory, other), VEL::StatusOk);
        EXPECT_EQ(WideOf(other), name);
    }
}

// Single calls.

class VELSysFileTest : public ScratchTest {
protected:
    const std::filesystem::path path = scratch / "file";
    const std::u16string wide = path.u16string();
};

TEST_F(VELSysFileTest, StatTellsTheSize) {
    WriteFile(path, "12345");
    struct stat64 status = {};
    EXPECT_EQ(VELSysFileStat(Units(wide.c_str()), &status), VEL::StatusOk);
    EXPECT_EQ(status.st_size, 5);
}

TEST_F(VELSysFileTest, StatOfNullIsABadHandle) {
    struct stat64 status;
    EXPECT_EQ(VELSysFileStat(nullptr, &status), VEL::StatusBadHandle);
    EXPECT_EQ(VELSysFileStat(Units(wide.c_str()), nullptr), VEL::StatusBadHandle);
}

TEST_F(VELSysFileTest, StatOfWhatIsNotThereIsNotFound) {
    struct stat64 status;
    EXPECT_EQ(VELSysFileStat(Units(wide.c_str()), &status), VEL::StatusNotFound);
    EXPECT_EQ(VELSysFileStat(Units(u""), &status), VEL::StatusNotFound);
    EXPECT_EQ(VELSysFileStat(Units(u"http://"), &status), VEL::StatusNotFound);
}

std::string s_address;
int AnswerForTheWeb(const char* address, struct stat64* out) {
    s_address = address;
    out->st_size = 42;
    return 3;
}

TEST_F(VELSysFileTest, StatOfAWebAddressAsksTheLibrary) {
    struct stat64 status = {};
    EXPECT_EQ(VELSysFileStat(Units(u"http://h"), &status), VEL::StatusNoLibrary);
    EXPECT_EQ(VELSysFileStat(Units(u"https://"), &status), VEL::StatusNoLibrary);
    Changes changes;
    changes.httpInfo = AnswerForTheWeb;
    EXPECT_EQ(VELSysFileStat(Units(u"https://h/\u20AC\xD83D\xDE00"), &status), 3);
    EXPECT_EQ(s_address, "https://h/\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(status.st_size, 42);
}

TEST_F(VELSysFileTest, WhatIsThereUnderAWebAddressIsLocal) {
    std::filesystem::create_directory(scratch / "http:");
    WriteFile(scratch / "http:" / "h", "12345");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Path());
    Changes changes;
    changes.httpInfo = AnswerForTheWeb;
    struct stat64 status = {};
    EXPECT_EQ(VELSysFileStat(Units(u"http://h"), &status), VEL::StatusOk);
    EXPECT_EQ(status.st_size, 5);
    EXPECT_EQ(s_address, "") << "it isn't asked for";
    std::filesystem::current_path(before);
}

TEST_F(VELSysFileTest, TimesAreSetAccessedFirst) {
    WriteFile(path, "");
    struct stat64 status = {};
    EXPECT_EQ(VELSysFSetTimes(Units(wide.c_str()), 1000, 2000), VEL::StatusOk);
    ASSERT_EQ(stat64(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, 1000);
    EXPECT_EQ(status.st_mtim.tv_sec, 2000);
    EXPECT_EQ(VELSysFSetTimes(QORUnicodeString(path.c_str()), 3000, 4000), VEL::StatusOk);
    ASSERT_EQ(stat64(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, 3000);
    EXPECT_EQ(status.st_mtim.tv_sec, 4000);
    const unsigned short* const none = nullptr;
    EXPECT_EQ(VELSysFSetTimes(none, 1, 2), VEL::StatusNotFound);
    EXPECT_EQ(VELSysFSetTimes(QORUnicodeString("/nowhere/at/all"), 1, 2), VEL::StatusNotFound);
}

TEST_F(VELSysFileTest, DeletesFilesOnly) {
    WriteFile(path, "");
    EXPECT_EQ(VELSysDeleteFile(Units(wide.c_str())), VEL::StatusOk);
    EXPECT_FALSE(std::filesystem::exists(path));
    WriteFile(path, "");
    EXPECT_EQ(VELSysDeleteFile(QORUnicodeString(path.c_str())), VEL::StatusOk);
    EXPECT_EQ(VELSysDeleteFile(QORUnicodeString(path.c_str())), VEL::StatusNotFound);
    EXPECT_EQ(VELSysDeleteFile(QORUnicodeString(scratch.Path().c_str())), VELConvertError(EISDIR, 7));
    EXPECT_TRUE(std::filesystem::exists(scratch.Path()));
}

TEST_F(VELSysFileTest, TemporaryNamesAreFreshAndOfOneForm) {
    QORUnicodeString first;
    QORUnicodeString second;
    QORUnicodeString directory("/ignored");
    EXPECT_EQ(VELSysGetTempFileName(first, "ignored", &directory), VEL::StatusOk);
    EXPECT_EQ(VELSysGetTempFileName(second, nullptr, nullptr), VEL::StatusOk);
    EXPECT_FALSE(first == second);
    for (const QORUnicodeString* name : {&first, &second}) {
        const std::string text = name->ConvertToChar();
        EXPECT_EQ(text.size(), std::string("/tmp/fileXXXXXX").size());
        EXPECT_EQ(text.rfind("/tmp/file", 0), 0U);
        EXPECT_FALSE(std::filesystem::exists(text));
    }
}

TEST_F(VELSysFileTest, ATemporaryNameThatIsTakenIsPassedOver) {
    const auto number = static_cast<std::uint64_t>(getpid());
    Changes changes;
    changes.randomNumber = number;
    QORUnicodeString first;
    ASSERT_EQ(VELSysGetTempFileName(first, nullptr, nullptr), VEL::StatusOk);
    WriteFile(first.ConvertToChar(), "");
    changes.randomNumber = number;
    QORUnicodeString second;
    EXPECT_EQ(VELSysGetTempFileName(second, nullptr, nullptr), VEL::StatusOk);
    EXPECT_FALSE(changes.randomNumber.has_value());
    EXPECT_FALSE(first == second);
    EXPECT_EQ(VELSysDeleteFile(first), VEL::StatusOk);
}

TEST(QORStat64ToStat32, CopiesFieldByField) {
    struct stat64 from = {};
    ASSERT_EQ(stat64("/", &from), 0);
    from.st_size = 0xFFFFFFFF;
    from.st_rdev = 7;
    struct stat to = {};
    EXPECT_EQ(QORStat64ToStat32(from, to), 0);
    EXPECT_EQ(to.st_size, 0xFFFFFFFF);
    EXPECT_EQ(to.st_dev, from.st_dev);
    EXPECT_EQ(to.st_ino, from.st_ino);
    EXPECT_EQ(to.st_mode, from.st_mode);
    EXPECT_EQ(to.st_nlink, from.st_nlink);
    EXPECT_EQ(to.st_uid, from.st_uid);
    EXPECT_EQ(to.st_gid, from.st_gid);
    EXPECT_EQ(to.st_rdev, 7U);
    EXPECT_EQ(to.st_blksize, from.st_blksize);
    EXPECT_EQ(to.st_blocks, from.st_blocks);
    EXPECT_EQ(to.st_atim.tv_sec, from.st_atim.tv_sec);
    EXPECT_EQ(to.st_mtim.tv_nsec, from.st_mtim.tv_nsec);
    EXPECT_EQ(to.st_ctim.tv_nsec, from.st_ctim.tv_nsec);
}

TEST(QORStat64ToStat32, ALargerSizeIsTooLarge) {
    struct stat64 from = {};
    from.st_size = 0x100000000;
    struct stat to = {};
    to.st_size = 5;
    EXPECT_EQ(QORStat64ToStat32(from, to), VEL::StatusTooLarge);
    EXPECT_EQ(VEL::StatusTooLarge, static_cast<int>(0x8007006f));
    EXPECT_EQ(to.st_size, 5);
}

class LoginNameTest : public testing::TestWithParam<int (*)(char*, unsigned)> {};

TEST_P(LoginNameTest, IsGivenWhereItFits) {
    Changes changes;
    changes.loginName = "wheel";
    char buffer[10] = "123456789";
    EXPECT_EQ(GetParam()(buffer, 6), 0);
    EXPECT_STREQ(buffer, "wheel");
    EXPECT_EQ(buffer[6], '7');
    buffer[5] = '6';
    EXPECT_EQ(GetParam()(buffer, 4), -1);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(buffer[5], '6');
    EXPECT_EQ(GetParam()(buffer, 5), -1) << "its terminator doesn't fit";
}

TEST_P(LoginNameTest, IsRefusedWithoutANameOrABuffer) {
    Changes changes;
    char buffer[2] = "a";
    EXPECT_EQ(GetParam()(buffer, 2), -1);
    EXPECT_EQ(buffer[0], 0);
    buffer[0] = 'a';
    EXPECT_EQ(GetParam()(buffer, 0), -1);
    EXPECT_EQ(buffer[0], 'a');
    EXPECT_EQ(GetParam()(nullptr, 10), -1);
}

TEST_P(LoginNameTest, MayBeLong) {
    const std::string name(5000, 'n');
    Changes changes;
    changes.loginName = name.c_str();
    std::string buffer(6000, 'x');
    EXPECT_EQ(GetParam()(buffer.data(), 6000), 0);
    EXPECT_STREQ(buffer.c_str(), name.c_str());
}

INSTANTIATE_TEST_SUITE_P(Functions, LoginNameTest, testing::Values(QORGetLoginName, QORSysGetUserName),
                         [](const auto& row) { return row.index == 0 ? "Login" : "User"; });

class VELSysFileNativeTest : public StringEnvironment::InBoth {
    const FileCalls::DescriptorBalance balance;
};

TEST_P(VELSysFileNativeTest, FilesAreNamedInTheNativeCodePage) {
    const ScratchDirectory scratch;
    const std::filesystem::path native = scratch / (IsUTF8() ? "\xC3\xA9" : "\xE9");
    const std::u16string wide = scratch.Path().u16string() + u"/\u00E9";
    const QORUnicodeString text = StringOf(wide);
    WriteFile(native, "12345");
    struct stat64 status = {};
    EXPECT_EQ(VELSysFileStat(Units(wide.c_str()), &status), VEL::StatusOk);
    EXPECT_EQ(VELSysFSetTimes(text, 1, 2), VEL::StatusOk);
    FILE* file = nullptr;
    EXPECT_EQ(VELSysLocalFileOpen(text, "rb", file), VEL::StatusOk);
    EXPECT_EQ(VELSysLocalFileClose(file), VEL::StatusOk);
    EXPECT_EQ(VELSysDeleteFile(Units(wide.c_str())), VEL::StatusOk);
    EXPECT_FALSE(std::filesystem::exists(native));
}

INSTANTIATE_TEST_SUITE_P(Environments, VELSysFileNativeTest,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

} // namespace
