// What destinations ask of the system, and what they do when it refuses.

#include "TraceSupport.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace TraceSupport;

namespace {

using Names = std::vector<std::string>;

/// What the system answers; everything is as usual at the start.
struct Calls {
    bool isCloseFailing = false;
    int allocateError = 0;
    bool isNameRefused = false; ///< No memory for the name of a file.
    int inheritable = 0;        ///< Descriptors opened so far that another program would inherit.
    Names removed = {};         ///< The names of the files removed so far.
};

Calls s_calls;

class TraceSystem : public TraceTest {
protected:
    void SetUp() override {
        TraceTest::SetUp();
        s_calls = {};
    }
    void TearDown() override {
        TraceTest::TearDown();
        s_calls = {};
    }
};

int Put(const char* name, const char* text) {
    VELSysQORTrace trace(name, nullptr, QORTraModeDefault, nullptr, 0);
    return trace.TraPutLN(text);
}

Names EntriesOf(const fs::path& directory) {
    Names names;
    for (const auto& entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

std::set<int> DescriptorNumbers() {
    std::set<int> descriptors;
    for (const std::string& name : EntriesOf("/proc/self/fd")) {
        if (const int number = std::stoi(name); fcntl(number, F_GETFD) >= 0) {
            descriptors.insert(number);
        }
    }
    return descriptors;
}

unsigned int ModeOf(const fs::path& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

Item Rotated(const char* destination, const char* name) {
    return {destination, {name}, {{VELSysTraceOptionRotateSize, 100}, {VELSysTraceOptionRotateCount, 3}}};
}

Item Ring(const std::string& destination, const char* name) {
    return {destination, {name}, {{VELSysTraceOptionMemory, 10}}};
}

/// Runs `action` in a child of this process. @return Its exit code.
int InChild(const std::function<void()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        action();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

} // namespace

TEST_F(TraceSystem, AnOpenDestinationIsNotOpenedAgain) {
    Configure({{"f", {"A"}}, Rotated("r", "R")});
    const auto before = DescriptorNumbers();
    for (const char* name : {"STDOUT_COMMON", "f", "r"}) {
        EXPECT_EQ(DestinationOf(name).Open(), -1) << name;
    }
    VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionRotateSize, 100);
    VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionRotateCount, 3);
    VELSysTraceManagerAddOptionToTrace("r", VELSysTraceOptionRotateCount, 0);
    for (const char* name : {"f", "r"}) {
        EXPECT_EQ(DestinationOf(name).Open(), -1) << name;
    }
    EXPECT_EQ(DescriptorNumbers(), before);
    EXPECT_EQ(Put("A", "line"), 0);
    EXPECT_EQ(Put("R", "line"), 0);
    EXPECT_EQ(FileText("f"), " line\n");
    EXPECT_EQ(FileText("r"), " line\n");
}

TEST_F(TraceSystem, TheDirectoryIsMadeOnce) {
    fs::create_directories(File("r"));
    EXPECT_EQ(Configure({Rotated("r", "R")}), -1);
    fs::remove(File("r"));
    plainTime += 100;
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("STDERR", "B", 0, 0), 0);
    EXPECT_EQ(Put("R", "line"), 0);
    EXPECT_EQ(EntriesOf(BaseDirectory()), Names{ProcessDirectory().filename()});
    EXPECT_EQ(FileText("r"), " line\n");
}

TEST_F(TraceSystem, AComposedPathHas8191BytesAtMost) {
    const std::size_t behind = ProcessDirectoryIn("/").string().size() + std::strlen("/ring");
    insideStat = [](const std::string&) { return 0; };
    insideMakeDirectory = [](const std::string&, unsigned int) { return 0; };
    for (const std::size_t length : {8191U, 8192U}) {
        // The system refuses what is as long; what is longer isn't asked for.
        setenv("QORTraceDir", ("/" + std::string(length - behind - 1, 'd')).c_str(), 1);
        EXPECT_EQ(Configure({Ring("ring", "A")}), length == 8191 ? -1 : 0) << length;
        VELSysTraceDestroyManager();
    }
}

TEST_F(TraceSystem, OtherProgramsInheritNoDescriptor) {
    const auto before = DescriptorNumbers();
    Configure({{"f", {"A"}}, Rotated("r", "R"), Ring("ring", "M")});
    int opened = 0;
    for (const int number : DescriptorNumbers()) {
        if (!before.contains(number)) {
            ++opened;
            EXPECT_EQ(fcntl(number, F_GETFD), FD_CLOEXEC);
        }
    }
    EXPECT_EQ(opened, 2);
    EXPECT_EQ(s_calls.inheritable, 0);
}

TEST_F(TraceSystem, RotatedFilesHaveTheModeOfOtherFiles) {
    const mode_t before = umask(022);
    Configure({Rotated("r", "R")});
    EXPECT_EQ(ModeOf(File("r")), 0644U);
    umask(before);
}

TEST_F(TraceSystem, AFullDiskTakesNoRing) {
    s_calls.allocateError = ENOSPC;
    EXPECT_EQ(Configure({Ring("ring", "A")}), -1);
    EXPECT_EQ(Put("A", "line"), -1);
}

TEST_F(TraceSystem, AFileWithoutMemoryForItsNameTakesLinesAndStays) {
    s_calls.isNameRefused = true;
    EXPECT_EQ(Configure({{"f", {"A"}}, {"g", {"B"}}}), 0);
    EXPECT_EQ(Put("A", "line"), 0);
    VELSysTraceDestroyManager();
    EXPECT_EQ(EntriesOf(ProcessDirectory()), (Names{"f", "g"}));
    EXPECT_EQ(FileText("f"), " line\n");
}

TEST_F(TraceSystem, AFailingCloseLeavesFileAndDirectory) {
    Configure({{"f", {"A"}}});
    s_calls.isCloseFailing = true;
    VELSysTraceDestroyManager();
    s_calls.isCloseFailing = false;
    EXPECT_EQ(EntriesOf(ProcessDirectory()), Names{"f"});
}

TEST_F(TraceSystem, DestinationsAreClosedFromTheLastSlotOn) {
    Configure({{"f", {"A"}}, {"g", {"B"}}, Rotated("r", "R"), {"h", {"C"}}});
    Names expected = Destinations();
    std::erase(expected, "STDOUT_COMMON");
    ASSERT_EQ(expected.size(), 4U);
    VELSysTraceDestroyManager();
    EXPECT_EQ(s_calls.removed, expected);
}

TEST_F(TraceSystem, DestinationsAreOpenedFromTheLastSlotOn) {
    insideMakeDirectory = [](const std::string&, unsigned int) -> std::optional<int> {
        // Each destination has a directory of its own.
        ++plainTime;
        return std::nullopt;
    };
    Configure({{"f", {"A"}}, {"g", {"B"}}, Rotated("r", "R"), {"h", {"C"}}});
    Names expected = Destinations();
    std::erase(expected, "STDOUT_COMMON");
    Names opened;
    for (const std::string& directory : EntriesOf(BaseDirectory())) {
        for (const std::string& name : EntriesOf(BaseDirectory() / directory)) {
            opened.push_back(name);
        }
    }
    EXPECT_EQ(opened, expected);
}

TEST_F(TraceSystem, AChildLeavesTheFilesOfItsParent) {
    Configure({{"f", {"A"}}, Rotated("r", "R")});
    EXPECT_EQ(InChild(VELSysTraceDestroyManager), 0);
    EXPECT_EQ(EntriesOf(ProcessDirectory()), (Names{"f", "r"}));
    EXPECT_EQ(Put("A", "line"), 0);
    EXPECT_EQ(Put("R", "line"), 0);
    EXPECT_EQ(InChild(VELSysTraceDestroyManager), 0);
    EXPECT_EQ(FileText("f"), " line\n");
    EXPECT_EQ(FileText("r"), " line\n");
}

TEST_F(TraceSystem, AChildLeavesTheEmptyDirectoryOfItsParent) {
    Configure({{"f", {"A"}}});
    fs::remove(File("f"));
    EXPECT_EQ(InChild(VELSysTraceDestroyManager), 0);
    EXPECT_TRUE(fs::is_directory(ProcessDirectory()));
}

TEST_F(TraceSystem, AChildRemovesWhatItOpenedItself) {
    Configure({{"f", {"A"}}});
    EXPECT_EQ(InChild([] {
                  VELSysTraceDestroyManager();
                  Configure({{"f", {"A"}}, Rotated("r", "R")});
                  VELSysTraceDestroyManager();
              }),
              0);
    EXPECT_EQ(EntriesOf(BaseDirectory()), Names{ProcessDirectory().filename()});
}

extern "C" {

int __real_fclose(std::FILE* file);
int __wrap_fclose(std::FILE* file) {
    const int result = __real_fclose(file);
    return s_calls.isCloseFailing ? EOF : result;
}

int __real_posix_fallocate(int number, off_t offset, off_t length);
int __wrap_posix_fallocate(int number, off_t offset, off_t length) {
    return s_calls.allocateError != 0 ? s_calls.allocateError : __real_posix_fallocate(number, offset, length);
}

char* __real_strdup(const char* text);
char* __wrap_strdup(const char* text) {
    return s_calls.isNameRefused && std::strchr(text, '/') != nullptr ? nullptr : __real_strdup(text);
}

int __real_unlink(const char* name);
int __wrap_unlink(const char* name) {
    s_calls.removed.push_back(fs::path(name).filename());
    return __real_unlink(name);
}

int __real_open(const char* path, int flags, mode_t mode);
int __wrap_open(const char* path, int flags, mode_t mode) {
    s_calls.inheritable += (flags & O_CLOEXEC) == 0 ? 1 : 0;
    return __real_open(path, flags, mode);
}
}
