/// @file
/// What the file system and the optional library answer, and what the cache keeps of it.

#include "Child.h"
#include "PathSupport.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>
#include <utime.h>

namespace {

using namespace PathSupport;

const std::string Head = "\x01\x02\\";

class PathQueries : public ScratchTest {
protected:
    VELSysPath In(const std::string& name) const { return PathOf(scratch + "/" + name); }
    bool IsStatValid(const VELSysPath& path) const { return StateOf(path).isStatValid; }
};

TEST_F(PathQueries, StatDoesNotDeclareTheCacheGood) {
    WriteFile(scratch / "f", "four");
    const VELSysPath path = In("f");
    struct stat64 status = {};
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_EQ(status.st_size, 4);
    EXPECT_FALSE(IsStatValid(path));
    WriteFile(scratch / "f", "longer");
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_EQ(status.st_size, 6) << "so it asks again";
}

TEST_F(PathQueries, StatAnswersFromAGoodCache) {
    WriteFile(scratch / "f", "four");
    const VELSysPath path = In("f");
    EXPECT_TRUE(path.Exists(0));
    EXPECT_TRUE(IsStatValid(path));
    WriteFile(scratch / "f", "longer");
    struct stat64 status = {};
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_EQ(status.st_size, 4);
    EXPECT_EQ(path.Stat(status, 1), 0);
    EXPECT_EQ(status.st_size, 6);
    status = {};
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_EQ(status.st_size, 6) << "the answer landed in the cache";
}

TEST_F(PathQueries, StatOfNothing) {
    struct stat64 status = {};
    status.st_size = 77;
    EXPECT_EQ(VELSysPath().Stat(status, 1), VEL::StatusFailure);
    const VELSysPath path = In("missing");
    EXPECT_EQ(path.Stat(status, 0), VEL::StatusNotFound);
    EXPECT_EQ(PathAccess::Of(path)->Initialize(), VEL::StatusNotFound);
    EXPECT_FALSE(IsStatValid(path));
    WriteFile(scratch / "f", "");
    EXPECT_EQ(In("f/x").Stat(status, 0), VELConvertError(ENOTDIR, 7));
    EXPECT_EQ(In(std::string(300, 'x')).Stat(status, 0), static_cast<int>(0x8007007Bu));
    EXPECT_EQ(status.st_size, 77);
    EXPECT_EQ(VELSysPathImpl().Initialize(), VEL::StatusFailure);
}

TEST_F(PathQueries, ExistsKeepsItsAnswerUntilItIsRefreshed) {
    WriteFile(scratch / "f", "");
    const VELSysPath path = In("f");
    EXPECT_TRUE(path.Exists(0));
    std::filesystem::remove(scratch / "f");
    EXPECT_TRUE(path.Exists(0));
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_FALSE(path.Exists(1));
    EXPECT_TRUE(IsStatValid(path)) << "a question that fails voids nothing";
    EXPECT_TRUE(path.Exists(0));
    EXPECT_FALSE(path.IsFile(1));
    EXPECT_FALSE(In("f").Exists(0));
    EXPECT_FALSE(VELSysPath().Exists(1));
}

TEST_F(PathQueries, FileAndDirectoryFillTheCache) {
    WriteFile(scratch / "f", "");
    const VELSysPath file = In("f");
    EXPECT_TRUE(file.IsFile(0));
    EXPECT_TRUE(IsStatValid(file));
    EXPECT_FALSE(file.IsDirectory(0));
    const VELSysPath directory = PathOf(scratch.Path().string());
    EXPECT_TRUE(directory.IsDirectory(0));
    EXPECT_TRUE(IsStatValid(directory));
    EXPECT_FALSE(directory.IsFile(0));
    EXPECT_FALSE(In("missing").IsFile(0));
    EXPECT_FALSE(In("missing").IsDirectory(0));
    EXPECT_FALSE(VELSysPath().IsFile(0));
    EXPECT_FALSE(VELSysPath().IsDirectory(0));
}

TEST_F(PathQueries, FollowLinks) {
    WriteFile(scratch / "f", "");
    symlink("f", (scratch + "/link").c_str());
    symlink("missing", (scratch + "/dangling").c_str());
    symlink(".", (scratch + "/dots").c_str());
    EXPECT_TRUE(In("link").IsFile(0));
    EXPECT_TRUE(In("dots").IsDirectory(0));
    EXPECT_FALSE(In("dangling").Exists(0));
}

TEST_F(PathQueries, TestOneBitOfTheMode) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, (scratch + "/socket").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
    EXPECT_TRUE(In("socket").IsFile(0));
    EXPECT_TRUE(In("socket").IsDirectory(0));
    mkfifo((scratch + "/fifo").c_str(), 0600);
    EXPECT_TRUE(In("fifo").Exists(0));
    EXPECT_FALSE(In("fifo").IsFile(0));
    EXPECT_FALSE(In("fifo").IsDirectory(0));
    EXPECT_FALSE(PathOf("/dev/null").IsFile(0));
    EXPECT_FALSE(PathOf("/dev/null").IsDirectory(0));
    if (mknod((scratch + "/block").c_str(), S_IFBLK | 0600, makedev(7, 250)) == 0) {
        EXPECT_FALSE(In("block").IsFile(0));
        EXPECT_TRUE(In("block").IsDirectory(0));
    }
}

CHILD_PROGRAM(AsksForAccessWithoutPrivileges) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
        return 99;
    }
    for (const std::string& name : arguments) {
        const VELSysPath path = PathOf(name);
        std::printf("%d%d%d ", path.CanRead(0), path.CanWrite(0), path.Exists(0));
    }
    return 0;
}

TEST_F(PathQueries, AccessIsAskedOfTheSystem) {
    chmod(scratch.Path().c_str(), 0755);
    const struct {
        const char* name;
        mode_t mode;
    } files[] = {{"none", 0}, {"read", 0444}, {"write", 0222}, {"both", 0666}};
    std::vector<std::string> names;
    for (const auto& [name, mode] : files) {
        names.push_back(scratch + "/" + name);
        WriteFile(names.back(), "");
        chmod(names.back().c_str(), mode);
    }
    names.push_back(scratch + "/missing");
    const Child child = RunChild("AsksForAccessWithoutPrivileges", {.set = {}, .arguments = names});
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.out, "001 101 011 111 000 ");
}

TEST_F(PathQueries, AccessIgnoresTheCache) {
    WriteFile(scratch / "f", "");
    const VELSysPath path = In("f");
    EXPECT_TRUE(path.Exists(0));
    EXPECT_TRUE(path.CanRead(0));
    EXPECT_TRUE(path.CanWrite(0));
    std::filesystem::remove(scratch / "f");
    EXPECT_FALSE(path.CanRead(0));
    EXPECT_FALSE(path.CanWrite(0));
    EXPECT_FALSE(VELSysPath().CanRead(0));
    EXPECT_FALSE(VELSysPath().CanWrite(0));
}

TEST_F(PathQueries, TimesComeFromTheCache) {
    WriteFile(scratch / "f", "");
    VELSysPath path = In("f");
    EXPECT_EQ(path.SetTimes(1000, 2000), 0);
    EXPECT_FALSE(IsStatValid(path));
    long modified = 0;
    long accessed = 0;
    EXPECT_EQ(path.GetTimes(modified, accessed), 0);
    EXPECT_EQ(modified, 1000);
    EXPECT_EQ(accessed, 2000);
    EXPECT_TRUE(IsStatValid(path));
    EXPECT_EQ(path.SetTimes(3000, 4000), 0);
    EXPECT_EQ(path.GetTimes(modified, accessed), 0);
    EXPECT_EQ(modified, 1000) << "setting voids nothing";
    EXPECT_TRUE(path.Exists(1));
    EXPECT_EQ(path.GetTimes(modified, accessed), 0);
    EXPECT_EQ(modified, 3000);
    EXPECT_EQ(accessed, 4000);
    EXPECT_EQ(In("missing").GetTimes(modified, accessed), VEL::StatusFailure);
    EXPECT_EQ(VELSysPath().GetTimes(modified, accessed), VEL::StatusFailure);
    EXPECT_EQ(modified, 3000);
}

TEST_F(PathQueries, SetTimesTellsWhatTheSystemRefuses) {
    EXPECT_EQ(In("missing").SetTimes(1, 2), VEL::StatusNotFound);
    EXPECT_EQ(VELSysPath().SetTimes(1, 2), VEL::StatusFailure);
}

TEST_F(PathQueries, NamesAreNative) {
    WriteFile(scratch / "\u00e4", "");
    EXPECT_TRUE(In("\u00e4").IsFile(0));
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    EXPECT_FALSE(In("\u00e4").Exists(0));
    WriteFile(scratch / "\xe4", "");
    EXPECT_TRUE(In("\u00e4").IsFile(0));
    EXPECT_TRUE(In("\u00e4").CanRead(0));
    VELSysPath path = In("\u00e4");
    EXPECT_EQ(path.SetTimes(5, 6), 0);
    EXPECT_EQ(path.Chmod(0600), 0);
    EXPECT_EQ(path.Move(In("\u00f6")), 0);
    EXPECT_TRUE(std::filesystem::exists(scratch / "\xf6"));
    path = In("\u00fc");
    EXPECT_EQ(path.MakeDir(), 0);
    EXPECT_TRUE(std::filesystem::is_directory(scratch / "\xfc"));
    WriteFile(scratch / "\xfc" / "\xe4", "");
    EXPECT_EQ(path.Remove(1), 0);
    EXPECT_FALSE(std::filesystem::exists(scratch / "\xfc"));
}

TEST_F(PathQueries, NamesHaveAnyBytes) {
    WriteFile(scratch / "line\nfeed *?\x01", "");
    EXPECT_TRUE(In("line\nfeed *?\x01").IsFile(0));
}

TEST_F(PathQueries, ChangesOfTheTextVoidTheCache) {
    std::filesystem::create_directories(scratch / "d");
    VELSysPath path = PathOf(scratch.Path().string());
    EXPECT_TRUE(path.IsDirectory(0));
    EXPECT_EQ(path.Append("missing"), 0);
    EXPECT_FALSE(IsStatValid(path));
    EXPECT_FALSE(path.Exists(0));
}

// Web addresses.

TEST(WebAddresses, CannotBeAskedWithoutTheLibrary) {
    const VELSysPath path = PathOf("http://h/x");
    struct stat64 status = {};
    EXPECT_EQ(path.Stat(status, 0), VEL::StatusNoLibrary);
    EXPECT_EQ(PathAccess::Of(path)->Initialize(), VEL::StatusNoLibrary);
    EXPECT_FALSE(path.Exists(0));
    EXPECT_FALSE(path.IsFile(0));
    EXPECT_FALSE(path.IsDirectory(0));
    EXPECT_FALSE(path.CanRead(0));
    EXPECT_FALSE(path.CanWrite(0));
    long modified = 0;
    EXPECT_EQ(path.GetTimes(modified, modified), VEL::StatusFailure);
    GroupLibrary();
    EXPECT_EQ(path.Stat(status, 0), VEL::StatusNoLibrary) << "it is looked for once";
}

TEST(WebAddresses, AreAskedAfresh) {
    GroupLibraryState& library = GroupLibrary();
    const VELSysPath path = PathOf("http://h/x");
    struct stat64 status = {};
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_EQ(library.address, "http://h/x");
    EXPECT_EQ(status.st_mtime, 77);
    EXPECT_FALSE(StateOf(path).isStatValid);
    EXPECT_TRUE(path.Exists(0));
    EXPECT_TRUE(StateOf(path).isStatValid);
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_TRUE(path.Exists(0));
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_FALSE(path.IsDirectory(0));
    EXPECT_TRUE(path.CanRead(0));
    EXPECT_EQ(library.httpCalls, 7);
    EXPECT_FALSE(path.CanWrite(0));
    EXPECT_EQ(library.httpCalls, 7);
    library.mode = S_IFDIR;
    EXPECT_TRUE(path.IsDirectory(0));
    EXPECT_FALSE(path.IsFile(0));
}

TEST(WebAddresses, AreKnownToBeThereByTwoQuestions) {
    GroupLibrary();
    const VELSysPath path = PathOf("http://h/x");
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_TRUE(path.IsFile(1));
    EXPECT_FALSE(path.IsDirectory(0));
    EXPECT_FALSE(StateOf(path).isStatValid);
    EXPECT_TRUE(path.CanRead(0));
    EXPECT_TRUE(StateOf(path).isStatValid);
    const VELSysPath other = PathOf("http://h/y");
    EXPECT_TRUE(other.Exists(0));
    EXPECT_TRUE(StateOf(other).isStatValid);
}

TEST(WebAddresses, PassTheResultOn) {
    GroupLibraryState& library = GroupLibrary();
    const VELSysPath path = PathOf("https://h/x");
    struct stat64 status = {};
    library.httpResult = 3;
    EXPECT_EQ(path.Stat(status, 1), 3);
    EXPECT_TRUE(path.Exists(0));
    library.httpResult = -5;
    EXPECT_EQ(path.Stat(status, 1), -5);
    EXPECT_EQ(PathAccess::Of(path)->Initialize(), -5);
    EXPECT_FALSE(path.Exists(0)) << "though the cache is good";
    EXPECT_FALSE(path.IsFile(0));
    EXPECT_FALSE(path.CanRead(0));
}

TEST(WebAddresses, HaveNoTimes) {
    GroupLibrary();
    const VELSysPath path = PathOf("http://h/x");
    long modified = 5;
    long accessed = 5;
    EXPECT_EQ(path.GetTimes(modified, accessed), 0);
    EXPECT_EQ(modified, 0);
    EXPECT_EQ(accessed, 0);
    EXPECT_TRUE(StateOf(path).isStatValid);
}

TEST(WebAddresses, AreNeitherMadeNorRemoved) {
    GroupLibraryState& library = GroupLibrary();
    VELSysPath path = PathOf("http://h/x");
    EXPECT_EQ(path.Remove(1), VEL::StatusNotFound) << "no such file";
    library.mode = S_IFDIR;
    EXPECT_EQ(path.MakeDir(), 0) << "it is a directory";
    EXPECT_EQ(path.Remove(1), VEL::StatusNotImplemented);
    library.httpResult = -1;
    EXPECT_EQ(path.MakeDir(), VEL::StatusNotFound);
    EXPECT_EQ(path.Remove(1), VEL::StatusFailure);
}

// Logical names.

class LogicalNames : public PathQueries {
protected:
    GroupLibraryState& library = GroupLibrary();
    void Translate(const std::string& location) {
        const QORUnicodeString text = Unicode(location);
        library.realPath.assign(text.ConvertToUCChar(), text.ConvertToUCChar() + text.GetLengthInChar());
    }
    static VELSysPathImpl& ImplOf(const VELSysPath& path) { return *PathAccess::Of(path); }
};

TEST(LogicalName, IsUnknownWithoutTheLibrary) {
    const VELSysPath path = PathOf(Head + "x");
    struct stat64 status = {};
    QORUnicodeString location("former");
    EXPECT_EQ(path.Stat(status, 0), VEL::StatusFailure);
    EXPECT_FALSE(path.Exists(0));
    EXPECT_FALSE(path.CanRead(0));
    EXPECT_FALSE(path.CanWrite(0));
    EXPECT_EQ(PathAccess::Of(path)->TranslateDLName(), nullptr);
    EXPECT_EQ(PathAccess::Of(path)->getTranslatedPath(location), 0);
    EXPECT_STREQ(location.ConvertToChar(), "former");
    GroupLibrary().realPath = u"/";
    EXPECT_FALSE(path.Exists(0)) << "it is looked for once";
}

TEST_F(LogicalNames, AreTranslatedOnce) {
    WriteFile(scratch / "\u00e4", "four");
    Translate(scratch + "/\u00e4");
    const VELSysPath path = PathOf(Head + "doc\u00f6");
    struct stat64 status = {};
    EXPECT_EQ(path.Stat(status, 0), 0);
    EXPECT_EQ(status.st_size, 4);
    EXPECT_TRUE(path.Exists(0));
    EXPECT_TRUE(path.IsFile(1));
    EXPECT_TRUE(path.CanRead(0));
    EXPECT_TRUE(path.CanWrite(0));
    EXPECT_EQ(library.realPathCalls, 1);
    EXPECT_EQ(library.name, u"\x01\x02\\doc\u00f6");
    EXPECT_EQ(library.numbers[0], 0);
    EXPECT_EQ(library.numbers[1], 0);
    EXPECT_EQ(library.numbers[2], 1);
    QORUnicodeString location;
    EXPECT_EQ(ImplOf(path).getTranslatedPath(location), 1);
    EXPECT_EQ(UTF8Of(location), scratch + "/\u00e4");
    EXPECT_EQ(ImplOf(path).TranslateDLName(), scratch + "/\u00e4");
}

TEST_F(LogicalNames, AreTranslatedToNativeText) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    WriteFile(scratch / "\xe4", "");
    library.realPath = std::u16string(scratch.Path().u16string()) + u"/\u00e4";
    const VELSysPath path = PathOf(Head + "x");
    EXPECT_TRUE(path.IsFile(0));
    EXPECT_EQ(ImplOf(path).TranslateDLName(), scratch + "/\xe4");
}

TEST_F(LogicalNames, WithoutATranslationAreNowhere) {
    const VELSysPath path = PathOf(Head + "x");
    EXPECT_FALSE(path.Exists(0));
    EXPECT_FALSE(path.Exists(0));
    EXPECT_EQ(library.realPathCalls, 2) << "nothing is kept";
    Translate(scratch.Path().string());
    library.realPathResult = -1;
    library.realPath.clear();
    EXPECT_EQ(ImplOf(path).TranslateDLName(), nullptr);
    QORUnicodeString location;
    EXPECT_EQ(ImplOf(path).getTranslatedPath(location), 0);
    Translate(scratch.Path().string());
    EXPECT_EQ(ImplOf(path).TranslateDLName(), nullptr) << "what comes with a failure doesn't count";
    EXPECT_TRUE(PathAccess::Translated(ImplOf(path)).IsEmpty());
}

TEST_F(LogicalNames, AnotherSuccessIsKeptForTheNextQuestion) {
    Translate("/");
    library.realPathResult = 1;
    const VELSysPath path = PathOf(Head + "x");
    EXPECT_FALSE(path.Exists(0));
    EXPECT_EQ(UTF8Of(PathAccess::Translated(ImplOf(path))), "/");
    EXPECT_TRUE(path.Exists(0));
    EXPECT_EQ(library.realPathCalls, 1);
}

TEST_F(LogicalNames, StayTranslatedWhileTheyGrow) {
    Translate("/");
    VELSysPath path = PathOf(Head + "x");
    EXPECT_TRUE(path.IsDirectory(0));
    path.Append("missing");
    EXPECT_TRUE(path.IsDirectory(0));
    EXPECT_EQ(library.realPathCalls, 1);
}

TEST_F(LogicalNames, OnlyTheyAreTranslated) {
    Translate("/");
    for (const char* const text : {"/a", "a", "http://h", "QORDLN://x"}) {
        const VELSysPath path = PathOf(text);
        QORUnicodeString location("former");
        EXPECT_EQ(ImplOf(path).TranslateDLName(), nullptr);
        EXPECT_EQ(ImplOf(path).getTranslatedPath(location), 0);
        EXPECT_STREQ(location.ConvertToChar(), "former");
    }
    EXPECT_EQ(VELSysPathImpl().TranslateDLName(), nullptr);
    EXPECT_EQ(library.realPathCalls, 0);
}

TEST_F(LogicalNames, CannotBeRemoved) {
    WriteFile(scratch / "f", "");
    Translate(scratch.Path().string());
    VELSysPath directory = PathOf(Head + "x");
    EXPECT_TRUE(directory.IsDirectory(0));
    EXPECT_EQ(directory.Remove(1), VEL::StatusNotFound);
    EXPECT_TRUE(std::filesystem::exists(scratch / "f"));
    Translate(scratch + "/f");
    VELSysPath file = PathOf(Head + "f");
    EXPECT_EQ(file.Remove(1), VEL::StatusNotFound);
    EXPECT_TRUE(std::filesystem::exists(scratch / "f"));
}

} // namespace
