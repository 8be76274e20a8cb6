/// @file
/// Well-known directories and names of temporary files.

#include "Child.h"
#include "PathSupport.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysStatus.h"

#include <atomic>
#include <cstdlib>
#include <set>

namespace {

using namespace PathSupport;

using Getter = const char* (*)();

TEST(HomeDirectory, IsRememberedOnceItIsThere) {
    unsetenv("HOME");
    VELSysPath path;
    for (const Getter getter : {VELSysPathImplGetHomeDirectoryPathA, VELSysPathImplGetDocumentDirectoryPathA}) {
        unsetenv("HOME");
        EXPECT_EQ(getter(), nullptr);
        setenv("HOME", "/home/a", 1);
        const char* const first = getter();
        EXPECT_STREQ(first, "/home/a");
        setenv("HOME", "/home/b", 1);
        EXPECT_EQ(getter(), first);
    }
    EXPECT_NE(VELSysPathImplGetHomeDirectoryPathA(), VELSysPathImplGetDocumentDirectoryPathA());
}

TEST(HomeDirectory, HasACacheOfItsOwn) {
    setenv("HOME", "/home/a", 1);
    EXPECT_STREQ(VELSysPathImplGetHomeDirectoryPathA(), "/home/a");
    setenv("HOME", "/home/b", 1);
    EXPECT_STREQ(VELSysPathImplGetDocumentDirectoryPathA(), "/home/b");
    EXPECT_STREQ(VELSysPathImplGetHomeDirectoryPathA(), "/home/a");
}

TEST(HomeDirectory, IsSetAsAPath) {
    setenv("HOME", "/home/\u00e4/", 1);
    VELSysPath path;
    EXPECT_EQ(VELSysPath::getHomeDirectory(path), 0);
    EXPECT_EQ(StateOf(path), (State{"/home/\u00e4", Absolute, 1}));
    EXPECT_EQ(VELSysPathHome(path), 0);
    EXPECT_EQ(StateOf(path).text, "/home/\u00e4");
    EXPECT_EQ(VELSysPathDocument(path), 0);
    EXPECT_EQ(StateOf(path).text, "/home/\u00e4");
}

TEST(HomeDirectory, IsNative) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    setenv("HOME", "/home/\xe4", 1);
    VELSysPath path;
    EXPECT_EQ(VELSysPathHome(path), 0);
    EXPECT_EQ(StateOf(path).text, "/home/\u00e4");
}

TEST(HomeDirectory, IsNativeTextThatLosesItsSlash) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    setenv("HOME", "/h\xe4/", 1);
    VELSysPath path;
    EXPECT_EQ(VELSysPathHome(path), 0);
    EXPECT_EQ(StateOf(path), (State{"/h\u00e4", Absolute, 1}));
    EXPECT_EQ(VELSysPathDocument(path), 0);
    EXPECT_EQ(StateOf(path), (State{"/h\u00e4", Absolute, 1}));
}

class HomeDirectoryInBoth : public StringEnvironment::InBoth {};

TEST_P(HomeDirectoryInBoth, ThatIsEmptyIsABadArgument) {
    setenv("HOME", "", 1);
    VELSysPath path = PathOf("/former");
    EXPECT_EQ(VELSysPathHome(path), VEL::StatusBadArgument);
    EXPECT_EQ(VELSysPathDocument(path), VEL::StatusBadArgument);
}

INSTANTIATE_TEST_SUITE_P(Environments, HomeDirectoryInBoth,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(HomeDirectory, ThatIsMissingFails) {
    unsetenv("HOME");
    VELSysPath path = PathOf("/former");
    EXPECT_EQ(VELSysPathHome(path), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), Nothing());
    EXPECT_EQ(VELSysPathDocument(path), VEL::StatusFailure);
    setenv("HOME", "", 1);
    EXPECT_EQ(VELSysPathHome(path), VEL::StatusBadArgument);
}

TEST(ResourceDirectory, IsTheFirstOfTheList) {
    unsetenv("QORInstallPath");
    EXPECT_EQ(VELSysPathImplGetResourceDirectoryPathA(), nullptr);
    setenv("QORInstallPath", ":/a", 1);
    EXPECT_EQ(VELSysPathImplGetResourceDirectoryPathA(), nullptr);
    setenv("QORInstallPath", "/b:/c:/d", 1);
    const char* const first = VELSysPathImplGetResourceDirectoryPathA();
    EXPECT_STREQ(first, "/b");
    setenv("QORInstallPath", "/e", 1);
    EXPECT_EQ(VELSysPathImplGetResourceDirectoryPathA(), first);
}

TEST(ResourceDirectory, MayBeTheOnlyOne) {
    setenv("QORInstallPath", "/only", 1);
    EXPECT_STREQ(VELSysPathImplGetResourceDirectoryPathA(), "/only");
}

TEST(TemporaryDirectory, IsAlwaysTheSame) {
    setenv("TMPDIR", "/elsewhere", 1);
    setenv("QORTemp", "/elsewhere", 1);
    EXPECT_STREQ(VELSysPathImplGetTemporaryDirectoryPathA(), "/tmp");
    EXPECT_EQ(VELSysPathImplGetTemporaryDirectoryPathA(), VELSysPathImplGetTemporaryDirectoryPathA());
    VELSysPath path;
    EXPECT_EQ(VELSysPath::getTempDirectory(path), 0);
    EXPECT_EQ(StateOf(path), (State{"/tmp", Absolute, 1}));
    path.Set("x");
    EXPECT_EQ(VELSysPathTemporary(path), 0);
    EXPECT_EQ(StateOf(path).text, "/tmp");
}

// Names of temporary files.

std::string NameIn(const VELSysPath* directory, const QORUnicodeString* prefix = nullptr) {
    VELSysPath path;
    EXPECT_EQ(VELSysPath::GetTempFilePath(path, prefix, directory), 0);
    EXPECT_FALSE(path.Exists(0));
    return StateOf(path).text;
}

TEST(TemporaryName, HasSixFreshCharacters) {
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i) {
        const std::string name = NameIn(nullptr);
        EXPECT_EQ(name.size(), 12u);
        EXPECT_EQ(name.substr(0, 6), "/tmp/_");
        EXPECT_TRUE(std::all_of(name.begin() + 6, name.end(), [](unsigned char c) { return std::isalnum(c); }));
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 100u);
}

TEST(TemporaryName, StandsBehindTheTextOfTheDirectory) {
    const VELSysPath directory = PathOf("/tmp");
    EXPECT_EQ(NameIn(&directory).substr(0, 5), "/tmp_") << "no slash is added";
    const VELSysPath nothing;
    EXPECT_EQ(NameIn(&nothing).substr(0, 1), "_");
    const VELSysPath empty = Empty();
    EXPECT_EQ(NameIn(&empty).substr(0, 6), "/tmp/_");
}

TEST(TemporaryName, IsTakenAsNativeText) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    const VELSysPath directory = PathOf("/tmp/\u00e4");
    EXPECT_EQ(NameIn(&directory).substr(0, 10), "/tmp/\u00c3\u00a4_") << "the directory's UTF-8 is, too";
}

TEST(TemporaryName, IgnoresAShortPrefix) {
    const QORUnicodeString shortOne("prefix");
    EXPECT_EQ(NameIn(nullptr, &shortOne).size(), 12u);
    const QORUnicodeString longest(std::string(250, 'p').c_str());
    EXPECT_EQ(NameIn(nullptr, &longest).size(), 12u);
    VELSysPath path;
    const QORSysTSUnicodeString threadSafe("prefix");
    EXPECT_EQ(VELSysPath::getTempFilePath(path, &threadSafe, nullptr), 0);
    EXPECT_EQ(StateOf(path).text.size(), 12u);
    EXPECT_EQ(VELSysPath::getTempFilePath(path, nullptr, nullptr), 0);
}

TEST(TemporaryName, RefusesALongPrefix) {
    VELSysPath path = PathOf("/former");
    const QORUnicodeString prefix(std::string(251, 'p').c_str());
    EXPECT_EQ(VELSysPath::GetTempFilePath(path, &prefix, nullptr), VEL::StatusFailure);
    const QORSysTSUnicodeString threadSafe(std::string(251, 'p').c_str());
    EXPECT_EQ(VELSysPath::getTempFilePath(path, &threadSafe, nullptr), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path).text, "/former");
}

TEST(TemporaryName, RefusesALongDirectory) {
    VELSysPath path;
    const auto codeOf = [&](std::size_t length) {
        std::string text = "/tmp/";
        while (text.size() < length) {
            text += "./";
        }
        const VELSysPath directory = PathOf(text.substr(0, length - 1) + "x");
        return VELSysPath::GetTempFilePath(path, nullptr, &directory);
    };
    EXPECT_EQ(codeOf(247), 0);
    EXPECT_EQ(codeOf(248), VEL::StatusFailure);
    EXPECT_EQ(codeOf(255), VEL::StatusFailure);
    EXPECT_EQ(codeOf(256), VEL::StatusFailure);
    EXPECT_EQ(codeOf(1000), VEL::StatusFailure);
}

int s_taken = 0;

TEST(TemporaryName, PassesOverNamesThatAreTaken) {
    s_taken = 3;
    EXPECT_EQ(NameIn(nullptr).size(), 12u);
    EXPECT_EQ(s_taken, 0);
    VELSysPath path;
    s_taken = 1000000;
    EXPECT_EQ(VELSysPath::GetTempFilePath(path, nullptr, nullptr), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), Nothing());
}

TEST(TemporaryName, FailsWhereNoneCanBeLookedFor) {
    const ScratchDirectory scratch;
    WriteFile(scratch / "f", "");
    const VELSysPath inFile = PathOf(scratch + "/f/x");
    VELSysPath path;
    EXPECT_EQ(VELSysPath::GetTempFilePath(path, nullptr, &inFile), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), Nothing());
    const VELSysPath missing = PathOf(scratch + "/missing/x");
    EXPECT_EQ(VELSysPath::GetTempFilePath(path, nullptr, &missing), 0) << "a directory that isn't there has no files";
}

} // namespace

extern "C" int __real_lstat64(const char* name, struct stat64* status);

extern "C" int __wrap_lstat64(const char* name, struct stat64* status) {
    if (s_taken > 0) {
        --s_taken;
        return 0;
    }
    return __real_lstat64(name, status);
}
