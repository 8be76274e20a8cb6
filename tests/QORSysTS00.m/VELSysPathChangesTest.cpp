/// @file
/// Making, moving and setting; removal of files.

#include "Child.h"
#include "PathSupport.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace PathSupport;

std::vector<mode_t> s_masks;

class PathChanges : public ScratchTest {
protected:
    VELSysPath In(const std::string& name) const { return PathOf(scratch + "/" + name); }
    bool Exists(const std::string& name) const { return std::filesystem::exists(scratch / name); }
    static mode_t ModeOf(const std::string& path) {
        struct stat64 status = {};
        stat64(path.c_str(), &status);
        return status.st_mode & 07777;
    }
};

TEST_F(PathChanges, MakeADirectoryAndWhatItStandsIn) {
    VELSysPath path = In("a/b//c/d");
    EXPECT_EQ(path.MakeDir(), 0);
    EXPECT_TRUE(std::filesystem::is_directory(scratch / "a/b/c/d"));
    EXPECT_EQ(StateOf(path).isStatValid, false);
    EXPECT_EQ(path.MakeDir(), 0) << "it is there";
    EXPECT_EQ(StateOf(path).isStatValid, true);
    EXPECT_EQ(StateOf(path).text, scratch + "/a/b//c/d");
}

TEST_F(PathChanges, MakeARelativeDirectory) {
    ASSERT_EQ(chdir(scratch.Path().c_str()), 0);
    VELSysPath path = PathOf("r/s/t//");
    EXPECT_EQ(path.MakeDir(), 0);
    EXPECT_TRUE(Exists("r/s/t"));
    path = PathOf("u");
    EXPECT_EQ(path.MakeDir(), 0);
    EXPECT_TRUE(Exists("u"));
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(PathChanges, MakeAtAnyDepth) {
    VELSysPath path = PathOf(scratch.Path().string());
    for (int i = 0; i < 300; ++i) {
        path.Append("d");
    }
    EXPECT_EQ(path.MakeDir(), 0);
    EXPECT_TRUE(path.IsDirectory(1));
    for (int i = 0; i < 32000; ++i) {
        path.Append("d");
    }
    EXPECT_EQ(path.MakeDir(), static_cast<int>(0x8007007Bu)) << "a name too long";
}

TEST_F(PathChanges, MakeLeavesTheMaskToTheKernel) {
    const mode_t former = umask(027);
    s_masks.clear();
    EXPECT_EQ(In("m").MakeDir(), 0);
    EXPECT_EQ(s_masks, (std::vector<mode_t>{0, 027}));
    EXPECT_EQ(ModeOf(scratch + "/m"), 0750u);
    EXPECT_EQ(umask(former), 027u);
}

TEST_F(PathChanges, MakeOverAFileCountsAsMade) {
    WriteFile(scratch / "f", "");
    VELSysPath path = In("f");
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_EQ(path.MakeDir(), 0);
    EXPECT_FALSE(StateOf(path).isStatValid);
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_EQ(In("f/x").MakeDir(), VELConvertError(ENOTDIR, 7)) << "the parent's own result doesn't count";
}

TEST_F(PathChanges, MakeThroughALink) {
    std::filesystem::create_directory(scratch / "d");
    symlink("d", (scratch + "/l").c_str());
    EXPECT_EQ(In("l/x").MakeDir(), 0);
    EXPECT_TRUE(Exists("d/x"));
    symlink("missing", (scratch + "/dangling").c_str());
    EXPECT_EQ(In("dangling").MakeDir(), 0) << "something is there";
    EXPECT_EQ(In("dangling/x").MakeDir(), VEL::StatusNotFound);
}

TEST_F(PathChanges, MakeOfNoPath) {
    EXPECT_EQ(VELSysPath().MakeDir(), VEL::StatusFailure);
    VELSysPath web = PathOf("http://h/x");
    EXPECT_EQ(web.MakeDir(), VEL::StatusNotFound);
    VELSysPath invalid = In("i");
    PathAccess::Mask(*PathAccess::Of(invalid)) = Invalid;
    EXPECT_EQ(invalid.MakeDir(), 0) << "its text is made, without what it stands in";
    EXPECT_TRUE(Exists("i"));
    invalid = In("j/k");
    PathAccess::Mask(*PathAccess::Of(invalid)) = Invalid;
    EXPECT_EQ(invalid.MakeDir(), VEL::StatusNotFound);
}

TEST_F(PathChanges, MoveRenames) {
    WriteFile(scratch / "f", "text");
    VELSysPath from = In("f");
    VELSysPath to = In("g");
    EXPECT_TRUE(from.Exists(0));
    EXPECT_FALSE(to.Exists(0));
    EXPECT_EQ(from.Move(to), 0);
    EXPECT_FALSE(Exists("f"));
    EXPECT_EQ(ReadFile(scratch / "g"), "text");
    EXPECT_TRUE(StateOf(from).isStatValid) << "the caches aren't touched";
    EXPECT_FALSE(StateOf(to).isStatValid);
    EXPECT_EQ(from.Move(to), VEL::StatusNotFound);
    EXPECT_EQ(to.Move(In("missing/x")), VEL::StatusNotFound);
}

TEST_F(PathChanges, MoveOnlyLocalPaths) {
    WriteFile(scratch / "f", "");
    VELSysPath local = In("f");
    VELSysPath kept = local;
    const VELSysPath nothing = Empty();
    kept = nothing;
    for (VELSysPath other :
         {PathOf("http://h"), PathOf("https://h"), PathOf("\x01\x02\\x"), VELSysPath(), PathOf("QORDLN://x"), kept}) {
        EXPECT_EQ(local.Move(other), VEL::StatusFailure);
        EXPECT_EQ(other.Move(local), VEL::StatusFailure);
    }
    EXPECT_TRUE(Exists("f"));
}

TEST_F(PathChanges, MoveToNothingTellsTheFormerError) {
    VELSysPath path = In("f");
    errno = EACCES;
    EXPECT_EQ(path.Move(Empty()), VEL::StatusRefused);
    errno = 0;
    EXPECT_EQ(path.Move(Empty()), VELConvertError(0, 7));
    errno = EACCES;
    EXPECT_EQ(VELSysPath().Move(Empty()), VEL::StatusFailure) << "this path counts first";
}

TEST_F(PathChanges, ChmodSetsPermissions) {
    WriteFile(scratch / "f", "");
    VELSysPath path = In("f");
    EXPECT_EQ(path.Chmod(0640), 0);
    EXPECT_EQ(ModeOf(scratch + "/f"), 0640u);
    EXPECT_EQ(In("missing").Chmod(0640), VEL::StatusNotFound);
    EXPECT_EQ(VELSysPath().Chmod(0640), VEL::StatusFailure);
}

TEST_F(PathChanges, RemoveAFile) {
    WriteFile(scratch / "f", "");
    VELSysPath path = In("f");
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_EQ(path.Remove(0), 0);
    EXPECT_FALSE(Exists("f"));
    EXPECT_FALSE(StateOf(path).isStatValid);
    EXPECT_EQ(path.Remove(0), VEL::StatusFailure);
    EXPECT_EQ(VELSysPath().Remove(1), VEL::StatusFailure);
}

TEST_F(PathChanges, RemoveAFileByAStaleAnswer) {
    WriteFile(scratch / "f", "");
    VELSysPath path = In("f");
    EXPECT_TRUE(path.IsFile(0));
    std::filesystem::remove(scratch / "f");
    EXPECT_EQ(path.Remove(0), VEL::StatusNotFound);
    EXPECT_FALSE(StateOf(path).isStatValid);
}

TEST_F(PathChanges, RemoveFileRefusesOthers) {
    std::filesystem::create_directory(scratch / "d");
    VELSysPath path = In("d");
    EXPECT_EQ(PathAccess::Of(path)->removeFile(), VEL::StatusFailure);
    EXPECT_FALSE(StateOf(path).isStatValid);
    EXPECT_TRUE(Exists("d"));
    EXPECT_EQ(VELSysPathImpl().removeFile(), VEL::StatusFailure);
    EXPECT_EQ(VELSysPathImpl().removeDirectory(1), VEL::StatusFailure);
}

TEST_F(PathChanges, RemoveALinkToAFileLeavesTheFile) {
    WriteFile(scratch / "f", "");
    symlink("f", (scratch + "/l").c_str());
    EXPECT_EQ(In("l").Remove(0), 0);
    EXPECT_TRUE(Exists("f"));
    EXPECT_FALSE(std::filesystem::is_symlink(scratch / "l"));
}

TEST_F(PathChanges, RemoveADirectoryByAStaleAnswer) {
    std::filesystem::create_directory(scratch / "d");
    VELSysPath path = In("d");
    EXPECT_TRUE(path.IsDirectory(0));
    std::filesystem::remove(scratch / "d");
    EXPECT_EQ(path.Remove(1), VEL::StatusFailure);
    EXPECT_FALSE(StateOf(path).isStatValid);
}

// In the one-to-one environment U+012E becomes a dot and U+0100 ends the name.

TEST_F(PathChanges, RemoveNothingUnderACutName) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    std::filesystem::create_directory(scratch / "d");
    WriteFile(scratch / "d" / "f", "");
    for (const char* const name : {"d/f\u0100", "d/\u012e", "d\u0100", "d/\u0166"}) {
        VELSysPath path = In(name);
        ASSERT_TRUE(path.Exists(0)) << "something else answers";
        EXPECT_EQ(path.Remove(1), VEL::StatusNotFound) << name;
        EXPECT_TRUE(Exists("d/f"));
    }
}

TEST_F(PathChanges, MoveNothingUnderACutName) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    WriteFile(scratch / "f", "text");
    WriteFile(scratch / "g", "other");
    EXPECT_EQ(In("f\u0100").Move(In("h")), VEL::StatusNotFound);
    EXPECT_EQ(In("\u0166").Move(In("h")), VEL::StatusNotFound);
    EXPECT_EQ(In("f").Move(In("g\u0100")), VEL::StatusNotFound);
    EXPECT_EQ(In("f").Move(In("\u0167")), VEL::StatusNotFound);
    EXPECT_EQ(In("f").Move(In("h\u0100")), VEL::StatusNotFound);
    EXPECT_EQ(In("f").Move(In("\u012e/h")), VEL::StatusNotFound);
    EXPECT_EQ(ReadFile(scratch / "f"), "text");
    EXPECT_EQ(ReadFile(scratch / "g"), "other");
    EXPECT_FALSE(Exists("h"));
}

TEST_F(PathChanges, RemoveWhatIsNeither) {
    mkfifo((scratch + "/p").c_str(), 0600);
    EXPECT_EQ(In("p").Remove(1), VEL::StatusFailure);
    EXPECT_TRUE(Exists("p"));
}

} // namespace

extern "C" mode_t __real_umask(mode_t mask);

extern "C" mode_t __wrap_umask(mode_t mask) {
    s_masks.push_back(mask);
    return __real_umask(mask);
}
