/// @file
/// Removal of directories: what goes, what stays, and that nothing outside is touched.

#include "Child.h"
#include "PathSupport.h"
#include "ScratchDirectory.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <set>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

using namespace PathSupport;
namespace fs = std::filesystem;

/// What the next removals of a directory by name do instead, and what happens in front of those on the way.
std::function<int()> s_rmdir;
std::function<void(const char* name)> s_beforeUnlink;
std::function<void(const char* name)> s_beforeOpen;

class Removal : public ScratchTest {
protected:
    void SetUp() override {
        ScratchTest::SetUp();
        root = scratch / "root";
        fs::create_directory(root);
        fs::create_directory(scratch / "outside");
        WriteFile(scratch / "outside" / "kept", "");
    }
    void TearDown() override {
        s_rmdir = nullptr;
        s_beforeUnlink = nullptr;
        s_beforeOpen = nullptr;
        EXPECT_TRUE(fs::exists(scratch / "outside" / "kept"));
        ScratchTest::TearDown();
    }

    int Remove(int recursive) { return PathOf(root.string()).Remove(recursive); }
    void Link(const std::string& to, const std::string& name) {
        ASSERT_EQ(symlink(to.c_str(), (root / name).c_str()), 0);
    }
    std::set<std::string> Left() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(root)) {
            names.insert(entry.path().filename());
        }
        return names;
    }

    fs::path root;
};

using Names = std::set<std::string>;

TEST_F(Removal, OfAnEmptyDirectory) {
    VELSysPath path = PathOf(root.string());
    EXPECT_EQ(path.Remove(0), 0);
    EXPECT_FALSE(fs::exists(root));
    EXPECT_FALSE(StateOf(path).isStatValid);
    EXPECT_EQ(path.Remove(0), VEL::StatusFailure);
}

TEST_F(Removal, TakesFilesInAnyCase) {
    WriteFile(root / "a", "");
    WriteFile(root / "line\nfeed", "");
    WriteFile(root / "\xff\xfe", "");
    EXPECT_EQ(Remove(0), 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(Removal, LeavesDirectoriesUnlessRecursive) {
    for (const int recursive : {0, 2, -1}) {
        fs::create_directories(root / "d" / "e");
        WriteFile(root / "f", "");
        WriteFile(root / "d" / "g", "");
        VELSysPath path = PathOf(root.string());
        EXPECT_EQ(path.Remove(recursive), VEL::StatusNotEmpty) << recursive;
        EXPECT_EQ(Left(), Names{"d"});
        EXPECT_TRUE(fs::exists(root / "d" / "g"));
        EXPECT_FALSE(StateOf(path).isStatValid);
    }
    EXPECT_EQ(Remove(1), 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(Removal, TakesATree) {
    for (int i = 0; i < 40; ++i) {
        const fs::path directory = root / std::to_string(i) / "x" / "y";
        fs::create_directories(directory);
        for (int j = 0; j < 5; ++j) {
            WriteFile(directory / std::to_string(j), "");
        }
    }
    EXPECT_EQ(Remove(1), 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(Removal, TakesManyEntries) {
    for (int i = 0; i < 5000; ++i) {
        WriteFile(root / ("a-name-of-some-length-" + std::to_string(i)), "");
    }
    EXPECT_EQ(Remove(0), 0);
}

/// Makes a chain of directories deeper than a path can name.
void MakeChain(const fs::path& root, int depth, int filesEach) {
    int directory = open(root.c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth; ++i) {
        for (int j = 0; j < filesEach; ++j) {
            close(openat(directory, ("f" + std::to_string(j)).c_str(), O_CREAT | O_WRONLY, 0600));
        }
        ASSERT_EQ(mkdirat(directory, "directory", 0700), 0);
        mkdirat(directory, "sibling", 0700);
        const int next = openat(directory, "directory", O_RDONLY | O_DIRECTORY);
        close(directory);
        directory = next;
    }
    close(directory);
}

TEST_F(Removal, TakesAnyDepth) {
    MakeChain(root, 200, 2);
    EXPECT_EQ(Remove(1), 0);
    EXPECT_FALSE(fs::exists(root));
    fs::create_directory(root);
    MakeChain(root, 3000, 1);
    EXPECT_EQ(Remove(1), 0);
    EXPECT_FALSE(fs::exists(root));
}

CHILD_PROGRAM(RemovesWithFewDescriptors) {
    const rlimit limit{40, 40};
    setrlimit(RLIMIT_NOFILE, &limit);
    const rlimit stack{256 * 1024, 256 * 1024};
    setrlimit(RLIMIT_STACK, &stack);
    return PathOf(arguments[0]).Remove(1) == 0 ? 0 : 1;
}

TEST_F(Removal, NeedsFewDescriptors) {
    MakeChain(root, 1000, 1);
    EXPECT_EQ(RunChild("RemovesWithFewDescriptors", {.set = {}, .arguments = {root.string()}}).exitCode, 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(Removal, TakesLinksThemselves) {
    fs::create_directory(root / "d");
    Link("../../outside", "d/directory");
    Link("../outside", "directory");
    Link("../outside/kept", "file");
    Link("missing", "dangling");
    Link("loop", "loop");
    Link(".", "here");
    Link("..", "above");
    Link("/", "top");
    EXPECT_EQ(Remove(1), 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(Removal, LeavesLinksToDirectoriesUnlessRecursive) {
    Link("../outside", "directory");
    Link("../outside/kept", "file");
    Link("missing", "dangling");
    EXPECT_EQ(Remove(0), VEL::StatusNotEmpty);
    EXPECT_EQ(Left(), Names{"directory"});
}

TEST_F(Removal, OfALinkToADirectoryEmptiesWhatItNames) {
    WriteFile(root / "f", "");
    fs::create_directory(root / "d");
    symlink("root", (scratch + "/link").c_str());
    EXPECT_EQ(PathOf(scratch + "/link").Remove(1), VELConvertError(ENOTDIR, 7));
    EXPECT_EQ(Left(), Names{});
    EXPECT_TRUE(fs::is_symlink(scratch / "link"));
}

TEST_F(Removal, PassesOverWhatIsNeitherFileNorDirectory) {
    mkfifo((root / "p").c_str(), 0600);
    for (const int recursive : {0, 1}) {
        for (const char* const name : {"a", "o", "q", "z"}) {
            WriteFile(root / name, "");
        }
        VELSysPath path = PathOf(root.string());
        EXPECT_EQ(path.Remove(recursive), VEL::StatusNotEmpty);
        EXPECT_EQ(Left(), Names{"p"});
        EXPECT_FALSE(StateOf(path).isStatValid);
    }
    fs::remove(root / "p");
    mkfifo((scratch + "/p").c_str(), 0600);
    Link("../p", "l");
    EXPECT_EQ(Remove(0), 0) << "a link to one goes";
}

TEST_F(Removal, StopsAtADirectoryThatKeepsWhatIsNeither) {
    fs::create_directory(root / "d");
    mkfifo((root / "d" / "p").c_str(), 0600);
    WriteFile(root / "d" / "f", "");
    VELSysPath path = PathOf(root.string());
    EXPECT_EQ(path.Remove(1), VEL::StatusNotEmpty);
    EXPECT_TRUE(fs::exists(root / "d" / "p"));
    EXPECT_FALSE(fs::exists(root / "d" / "f"));
    EXPECT_TRUE(StateOf(path).isStatValid) << "it ends there";
}

TEST_F(Removal, PassesOverWhatVanishesMeanwhile) {
    WriteFile(root / "a", "");
    WriteFile(root / "b", "");
    bool isFirst = true;
    s_beforeUnlink = [&](const char* name) {
        if (std::exchange(isFirst, false)) {
            fs::remove(root / (std::strcmp(name, "a") == 0 ? "b" : "a"));
        }
    };
    EXPECT_EQ(Remove(0), 0);
    EXPECT_FALSE(fs::exists(root));
}

TEST_F(Removal, TakesSockets) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, (root / "s").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
    EXPECT_EQ(Remove(0), 0);
}

TEST_F(Removal, CannotEnterABlockDevice) {
    if (mknod((root / "b").c_str(), S_IFBLK | 0600, makedev(7, 250)) != 0) {
        GTEST_SKIP() << "no device can be made here";
    }
    EXPECT_EQ(Remove(0), VEL::StatusNotEmpty) << "it stays like a directory";
    EXPECT_EQ(Remove(1), VELConvertError(ENOTDIR, 7));
    EXPECT_EQ(PathOf((root / "b").string()).Remove(1), VELConvertError(ENOTDIR, 7));
}

CHILD_PROGRAM(RemovesWithoutPrivileges) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
        return 99;
    }
    std::printf("%x", static_cast<unsigned int>(PathOf(arguments[0]).Remove(1)));
    return 0;
}

TEST_F(Removal, TellsWhatTheSystemRefuses) {
    chmod(scratch.Path().c_str(), 0777);
    const auto codeOf = [&] {
        return RunChild("RemovesWithoutPrivileges", {.set = {}, .arguments = {root.string()}}).out;
    };
    chmod(root.c_str(), 0777);
    fs::create_directory(root / "closed");
    chmod((root / "closed").c_str(), 0);
    if (geteuid() == 0) {
        EXPECT_EQ(codeOf(), "80070005") << "it can't be listed";
        chmod((root / "closed").c_str(), 0755);
        WriteFile(root / "closed" / "f", "");
        EXPECT_EQ(codeOf(), "80070005") << "what is in it can't be removed";
        chmod(root.c_str(), 0);
        EXPECT_EQ(codeOf(), "80070005");
    }
    chmod(root.c_str(), 0700);
    chmod((root / "closed").c_str(), 0700);
    EXPECT_EQ(Remove(1), 0);
}

TEST_F(Removal, LooksAtErrnoWhateverTheCallAnswered) {
    for (const int error : {EEXIST, ENOTEMPTY}) {
        s_rmdir = [=] {
            errno = error;
            return 0;
        };
        EXPECT_EQ(Remove(1), VEL::StatusNotEmpty);
        s_rmdir = [=] {
            errno = error;
            return -1;
        };
        EXPECT_EQ(Remove(1), VEL::StatusNotEmpty);
    }
    s_rmdir = [] {
        errno = EACCES;
        return 0;
    };
    EXPECT_EQ(Remove(1), 0);
    s_rmdir = [] {
        errno = EACCES;
        return -1;
    };
    EXPECT_EQ(Remove(1), VEL::StatusRefused);
}

TEST_F(Removal, DoesNotTakeAnErrorOfOldForItsOwn) {
    errno = EEXIST;
    EXPECT_EQ(Remove(1), 0);
}

TEST_F(Removal, DoesNotEnterALinkThatTakesThePlaceOfADirectory) {
    fs::create_directory(root / "d");
    WriteFile(root / "d" / "f", "");
    s_beforeOpen = [&](const char* name) {
        if (std::strcmp(name, "d") == 0) {
            fs::rename(root / "d", scratch / "moved");
            fs::create_directory_symlink(scratch / "outside", root / "d");
        }
    };
    EXPECT_LT(Remove(1), 0);
    EXPECT_TRUE(fs::is_symlink(root / "d"));
    EXPECT_TRUE(fs::exists(scratch / "moved" / "f"));
    s_beforeOpen = nullptr;
    EXPECT_EQ(Remove(1), 0);
}

TEST_F(Removal, DoesNotFollowADirectoryThatIsMovedAway) {
    // Deep enough that the way back is by the directory above.
    fs::path deep = root;
    for (int i = 0; i < 40; ++i) {
        deep /= "d";
    }
    fs::create_directories(deep);
    fs::path high = root / "d" / "d";
    fs::create_directory(scratch / "outside" / "d");
    bool isMoved = false;
    int removed = 0;
    s_beforeUnlink = [&](const char*) {
        // Just before the way up leaves the levels that are still open.
        if (++removed == 20 && !isMoved) {
            isMoved = true;
            fs::path place = root;
            for (int i = 0; i < 10; ++i) {
                place /= "d";
            }
            fs::rename(place, scratch / "outside" / "stolen");
        }
    };
    EXPECT_LT(Remove(1), 0);
    EXPECT_TRUE(isMoved);
    EXPECT_TRUE(fs::exists(scratch / "outside" / "d"));
    EXPECT_TRUE(fs::exists(scratch / "outside" / "stolen"));
    EXPECT_TRUE(fs::exists(high));
}

/// Exchanges a directory for a link and back until it is told to stop.
void KeepExchanging(const fs::path& where, const fs::path& link, const std::atomic<bool>& stop) {
    while (!stop) {
        syscall(SYS_renameat2, AT_FDCWD, where.c_str(), AT_FDCWD, link.c_str(), 2 /* RENAME_EXCHANGE */);
    }
}

TEST_F(Removal, TouchesNothingOutsideWhileDirectoriesAreExchangedForLinks) {
    for (int i = 0; i < 20; ++i) {
        WriteFile(scratch / "outside" / std::to_string(i), "");
    }
    for (int round = 0; round < 60; ++round) {
        fs::create_directories(root / "d" / "e");
        for (int i = 0; i < 20; ++i) {
            WriteFile(root / "d" / std::to_string(i), "");
            WriteFile(root / "d" / "e" / std::to_string(i), "");
        }
        fs::create_directory_symlink(scratch / "outside", scratch / "link");
        std::atomic<bool> stop = false;
        std::thread other(KeepExchanging, root / "d", scratch / "link", std::cref(stop));
        Remove(1);
        stop = true;
        other.join();
        ASSERT_EQ(std::distance(fs::directory_iterator(scratch / "outside"), fs::directory_iterator()), 21);
        fs::remove_all(root);
        fs::remove_all(scratch / "link");
    }
}

} // namespace

extern "C" int __real_rmdir(const char* name);
extern "C" int __real_unlinkat(int directory, const char* name, int flags);
extern "C" int __real_openat(int directory, const char* name, int flags, ...);

extern "C" int __wrap_rmdir(const char* name) {
    return s_rmdir ? s_rmdir() : __real_rmdir(name);
}

extern "C" int __wrap_unlinkat(int directory, const char* name, int flags) {
    if (s_beforeUnlink) {
        s_beforeUnlink(name);
        errno = 0;
    }
    return __real_unlinkat(directory, name, flags);
}

extern "C" int __wrap_openat(int directory, const char* name, int flags, mode_t mode) {
    if (s_beforeOpen) {
        s_beforeOpen(name);
    }
    return __real_openat(directory, name, flags, mode);
}
