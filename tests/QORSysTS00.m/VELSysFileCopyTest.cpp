/// @file
/// Opening, closing and copying local files: contents, sizes that count as 32 bits, and every way in which a copy fails
/// without leaving anything open.

#include "Child.h"
#include "FileCalls.h"
#include "ScratchDirectory.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELSysFile.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>

namespace {

using FileCalls::Changes;
using StringBlocks::Units;

std::u16string Wide(const std::filesystem::path& path) {
    return path.u16string();
}

class VELSysLocalFileTest : public ScratchTest {
protected:
    const std::filesystem::path source = scratch / "source";
    const std::filesystem::path target = scratch / "target";
    int Copy() { return VELSysLocalFileCopy(QORUnicodeString(target.c_str()), QORUnicodeString(source.c_str())); }
    /// Copies a million bytes, of which the second read finds `size`.
    int CopyWhileTheSourceBecomes(std::uintmax_t size, bool canMove) {
        WriteFile(source, std::string(1000000, 'x'));
        Changes changes;
        changes.canMove = canMove;
        changes.mostMoved = 300000;
        int reads = 0;
        changes.beforeRead = [&] {
            if (++reads == 2) {
                std::filesystem::resize_file(source, size);
            }
        };
        return Copy();
    }
    FILE* file = reinterpret_cast<FILE*>(8);
};

TEST_F(VELSysLocalFileTest, OpensAndCloses) {
    WriteFile(source, "text");
    for (int form = 0; form < 2; ++form) {
        const std::u16string wide = Wide(source);
        ASSERT_EQ(form == 0 ? VELSysLocalFileOpen(QORUnicodeString(source.c_str()), "rb", file)
                            : VELSysLocalFileOpen(Units(wide.c_str()), "rb", file),
                  VEL::StatusOk);
        EXPECT_EQ(std::fgetc(file), 't');
        EXPECT_EQ(VELSysLocalFileClose(file), VEL::StatusOk);
    }
}

TEST_F(VELSysLocalFileTest, AFileThatIsNotThereIsAStorageError) {
    EXPECT_EQ(VELSysLocalFileOpen(QORUnicodeString(source.c_str()), "rb", file), VELConvertError(ENOENT, 3));
    EXPECT_EQ(file, nullptr);
    file = reinterpret_cast<FILE*>(8);
    const std::u16string wide = Wide(source);
    EXPECT_EQ(VELSysLocalFileOpen(Units(wide.c_str()), "rb", file), static_cast<int>(0x80030002));
    EXPECT_EQ(file, nullptr);
}

TEST_F(VELSysLocalFileTest, NullOpensNothing) {
    const unsigned short* const none = nullptr;
    EXPECT_EQ(VELSysLocalFileOpen(none, "rb", file), VELConvertError(ENOENT, 3));
    EXPECT_EQ(VELSysLocalFileOpen(QORUnicodeString(source.c_str()), nullptr, file), VELConvertError(EINVAL, 3));
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(VELSysLocalFileClose(nullptr), VEL::StatusFailure);
}

TEST_F(VELSysLocalFileTest, AFailingCloseIsAStorageError) {
    ASSERT_EQ(VELSysLocalFileOpen(QORUnicodeString(target.c_str()), "wb", file), VEL::StatusOk);
    Changes changes;
    changes.fcloseError = ENOSPC;
    EXPECT_EQ(VELSysLocalFileClose(file), VELConvertError(ENOSPC, 3));
}

/// A size, and whether the system moves blocks by itself.
class VELSysLocalFileSizesTest : public VELSysLocalFileTest,
                                 public testing::WithParamInterface<std::tuple<std::size_t, bool>> {};

TEST_P(VELSysLocalFileSizesTest, AreCopiedWhole) {
    const auto [size, canMove] = GetParam();
    std::string text(size, 'x');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i * 31 + i / 251);
    }
    WriteFile(source, text);
    WriteFile(target, "longer than nothing");
    Changes changes;
    changes.canMove = canMove;
    changes.mostMoved = 70000;
    EXPECT_EQ(Copy(), VEL::StatusOk);
    EXPECT_TRUE(ReadFile(target) == text);
    EXPECT_TRUE(ReadFile(source) == text);
}

INSTANTIATE_TEST_SUITE_P(Sizes, VELSysLocalFileSizesTest,
                         testing::Combine(testing::Values(0, 1, 4095, 4096, 4097, 5120, 5121, 131071, 131072, 131073,
                                                          1000000),
                                          testing::Bool()));

TEST_F(VELSysLocalFileTest, CopiesUnder16BitNames) {
    WriteFile(source, "text");
    const std::u16string from = Wide(source);
    const std::u16string to = Wide(target);
    EXPECT_EQ(VELSysLocalFileCopy(Units(to.c_str()), Units(from.c_str())), VEL::StatusOk);
    EXPECT_EQ(ReadFile(target), "text");
    const unsigned short* const none = nullptr;
    EXPECT_EQ(VELSysLocalFileCopy(Units(to.c_str()), none), VELConvertError(ENOENT, 3));
}

TEST_F(VELSysLocalFileTest, AMissingSourceLeavesTheTargetAlone) {
    WriteFile(target, "old");
    EXPECT_EQ(Copy(), VELConvertError(ENOENT, 3));
    EXPECT_EQ(ReadFile(target), "old");
    std::filesystem::remove(target);
    EXPECT_EQ(Copy(), VELConvertError(ENOENT, 3));
    EXPECT_FALSE(std::filesystem::exists(target)) << "and makes none";
}

TEST_F(VELSysLocalFileTest, ANarrowNameNeedNotBeUTF8) {
    const std::filesystem::path bytes = scratch / "x\xE9";
    WriteFile(bytes, std::string(300000, 'x'));
    EXPECT_EQ(VELSysLocalFileCopy(QORUnicodeString(target.c_str()), QORUnicodeString(bytes.c_str())), VEL::StatusOk);
    EXPECT_EQ(ReadFile(target), std::string(300000, 'x'));
}

TEST_F(VELSysLocalFileTest, ATargetThatCannotBeOpenedIsTold) {
    WriteFile(source, "text");
    std::filesystem::create_directory(target);
    EXPECT_EQ(Copy(), VELConvertError(EISDIR, 3));
}

TEST_F(VELSysLocalFileTest, ADirectoryCannotBeRead) {
    std::filesystem::create_directory(source);
    struct stat64 status;
    ASSERT_EQ(stat64(source.c_str(), &status), 0);
    EXPECT_EQ(Copy(), status.st_size > 0 ? VEL::StatusFailure : VEL::StatusOk);
}

TEST_F(VELSysLocalFileTest, AFileCopiedToItselfIsEmptied) {
    WriteFile(source, "text");
    EXPECT_EQ(VELSysLocalFileCopy(QORUnicodeString(source.c_str()), QORUnicodeString(source.c_str())),
              VEL::StatusFailure);
    EXPECT_EQ(ReadFile(source), "");
}

TEST_F(VELSysLocalFileTest, ASourceThatShrinksFails) {
    for (const bool canMove : {true, false}) {
        EXPECT_EQ(CopyWhileTheSourceBecomes(500000, canMove), VEL::StatusFailure);
        EXPECT_EQ(ReadFile(target), std::string(500000, 'x'));
    }
}

TEST_F(VELSysLocalFileTest, ASourceThatGrowsIsCopiedAsLongAsItWas) {
    for (const bool canMove : {true, false}) {
        EXPECT_EQ(CopyWhileTheSourceBecomes(2000000, canMove), VEL::StatusOk);
        EXPECT_EQ(ReadFile(target), std::string(1000000, 'x'));
    }
}

TEST_F(VELSysLocalFileTest, ASizeCountsAsASigned32BitNumber) {
    WriteFile(source, "start");
    std::filesystem::resize_file(source, 0x80000000);
    EXPECT_EQ(Copy(), VEL::StatusOk);
    EXPECT_EQ(std::filesystem::file_size(target), 0U);
    std::filesystem::resize_file(source, 0x100000003);
    EXPECT_EQ(Copy(), VEL::StatusOk);
    EXPECT_EQ(ReadFile(target), "sta");
}

TEST_F(VELSysLocalFileTest, AFailingCloseOfTheTargetFailsTheCopy) {
    WriteFile(source, "text");
    Changes changes;
    changes.fcloseError = EIO;
    EXPECT_EQ(Copy(), VELConvertError(EIO, 3));
}

TEST_F(VELSysLocalFileTest, AFailingCloseOfTheSourceDoesNotCount) {
    WriteFile(source, "text");
    Changes changes;
    changes.fcloseErrorOfReader = EIO;
    EXPECT_EQ(Copy(), VEL::StatusOk);
    EXPECT_EQ(ReadFile(target), "text");
}

CHILD_PROGRAM(CopiesOntoAFullDisk) {
    const std::string& where = arguments.at(0);
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("none", where.c_str(), "tmpfs", 0, "size=64k") != 0) {
        return 77;
    }
    const std::string source = where + "-source";
    const auto copy = [&](std::size_t size) {
        WriteFile(source, std::string(size, 'x'));
        const int before = OpenDescriptors();
        const int rc = VELSysLocalFileCopy(QORUnicodeString((where + "/target").c_str()), source.c_str());
        std::printf("%x %d\n", static_cast<unsigned int>(rc), OpenDescriptors() - before);
    };
    copy(1000000);
    std::filesystem::remove(where + "/target");
    WriteFile(where + "/filler", std::string(1000000, 'x'));
    copy(100);
    return 0;
}

TEST_F(VELSysLocalFileTest, AFullDiskFailsTheWriteAndForASmallRestTheClose) {
    const std::filesystem::path where = scratch / "disk";
    std::filesystem::create_directory(where);
    const Child child = RunChild("CopiesOntoAFullDisk", {.set = {}, .arguments = {where}});
    if (child.exitCode == 77) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    EXPECT_EQ(child.out, "80004005 0\n80030070 0\n");
}

CHILD_PROGRAM(CopiesWhatItMayNot) {
    if (geteuid() == 0 && seteuid(65534) != 0) {
        return 77;
    }
    const std::string& where = arguments.at(0);
    const auto copy = [&](const char* target, const char* source) {
        const int rc =
            VELSysLocalFileCopy(QORUnicodeString((where + target).c_str()), QORUnicodeString((where + source).c_str()));
        std::printf("%x\n", static_cast<unsigned int>(rc));
    };
    copy("/new", "/unreadable");
    copy("/unreadable", "/readable");
    return 0;
}

TEST_F(VELSysLocalFileTest, WhatMayNotBeReadOrWrittenIsRefused) {
    WriteFile(scratch / "unreadable", "text");
    WriteFile(scratch / "readable", "text");
    std::filesystem::permissions(scratch / "unreadable", std::filesystem::perms::none);
    std::filesystem::permissions(scratch / "readable", std::filesystem::perms::all);
    std::filesystem::permissions(scratch.Path(), std::filesystem::perms::all);
    const Child child = RunChild("CopiesWhatItMayNot", {.set = {}, .arguments = {scratch.Path()}});
    if (child.exitCode == 77) {
        GTEST_SKIP() << "privileges can't be dropped here";
    }
    EXPECT_EQ(child.out, "80030005\n80030005\n");
}

} // namespace
