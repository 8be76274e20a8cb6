/// @file
/// Option files: where they stand, which names they have, how they are read.

#include "VELSysTraceOptions.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "TestLocales.h"
#include "TraceCalls.h"
#include "TraceManagerHeld.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

namespace {

using namespace TraceCalls;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using VEL::internal::ApplyTraceOptionFiles;
using Paths = std::vector<std::wstring>;

/// What the next opendir is refused with.
int s_openDirectoryError = 0;

class TraceOptions : public ScratchTest {
protected:
    void SetUp() override {
        unsetenv("QORTraDecDir");
        unsetenv("HOME");
        ScratchTest::SetUp();
    }
    void TearDown() override {
        ScratchTest::TearDown();
        EXPECT_EQ(TraceManagerHeld::held, 0);
    }
    void Make(const std::vector<std::string>& names, const std::string& text = "") {
        for (const std::string& name : names) {
            WriteFile(scratch / name, text);
        }
    }
    /// The file names in the order in which the system lists them.
    Paths Listed() const {
        Paths names;
        for (const auto& entry : std::filesystem::directory_iterator(scratch.Path())) {
            names.push_back(entry.path().wstring());
        }
        return names;
    }
};

/// Keeps the paths, and answers with the next of the results.
struct Visitor {
    Paths paths = {};
    std::vector<int> results = {};

    static int Visit(const wchar_t* path, void* data) {
        auto& self = *static_cast<Visitor*>(data);
        self.paths.emplace_back(path);
        return self.paths.size() <= self.results.size() ? self.results[self.paths.size() - 1] : 0;
    }
    int Walk(const std::string& directory) { return VELSysTraceGetOpFileInDirectory(directory.c_str(), Visit, this); }
    Paths Names() const {
        Paths names;
        for (const std::wstring& path : paths) {
            names.push_back(path.substr(path.rfind(L'/') + 1));
        }
        return names;
    }
};

} // namespace

extern "C" DIR* __real_opendir(const char* name);
extern "C" DIR* __wrap_opendir(const char* name) {
    if (s_openDirectoryError == 0) {
        return __real_opendir(name);
    }
    errno = std::exchange(s_openDirectoryError, 0);
    return nullptr;
}

namespace {

TEST_F(TraceOptions, StandInTheDirectoryThatTheirVariableNames) {
    char path[32] = "";
    setenv("QORTraDecDir", "/nowhere/at/all/", 1);
    setenv("HOME", "/home", 1);
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, sizeof path), 0);
    EXPECT_STREQ(path, "/nowhere/at/all/");
}

TEST_F(TraceOptions, StandInTheHomeDirectoryOtherwise) {
    char path[32] = "";
    setenv("HOME", "/home", 1);
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, sizeof path), 0);
    EXPECT_STREQ(path, "/home");
}

TEST_F(TraceOptions, StandInTheTemporaryDirectoryAtLast) {
    char path[5] = "";
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 5), 0);
    EXPECT_STREQ(path, "/tmp");
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 4), -1);
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 0), -1);
    EXPECT_EQ(VELSysTraceGetConfigDirectory(nullptr, 100), -1);
}

TEST_F(TraceOptions, VariableThatDoesNotFitCountsAsNotSet) {
    char path[16] = "";
    setenv("QORTraDecDir", "/123456789", 1);
    setenv("HOME", "/12345", 1);
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 11), 0);
    EXPECT_STREQ(path, "/123456789");
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 10), 0);
    EXPECT_STREQ(path, "/12345");
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 6), 0);
    EXPECT_STREQ(path, "/tmp");
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, 4), -1);
}

TEST_F(TraceOptions, VariableThatIsEmptyIsSet) {
    char path[16] = "x";
    setenv("QORTraDecDir", "", 1);
    setenv("HOME", "/home", 1);
    EXPECT_EQ(VELSysTraceGetConfigDirectory(path, sizeof path), 0);
    EXPECT_STREQ(path, "");
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), -1);
}

TEST_F(TraceOptions, HaveNamesThatBeginAndEndRight) {
    Make({"OPFILE.1",  "opfile.2",    "OpFile.x9",    "OPFILE.12", "OPFILE.0",     "OPFILE.10",    "OPFILE.txt",
          "OPFILE.",   "OPFILE",      "OPFILE1",      "xOPFILE.1", ".optionfile1", ".OPTIONFILE3", ".option9",
          ".options7", ".optionfile", ".optionfile0", ".optio4",   "optionfile1",  "other.1"});
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    EXPECT_THAT(visitor.Names(), UnorderedElementsAre(L"OPFILE.1", L"opfile.2", L"OpFile.x9", L"OPFILE.12",
                                                      L".optionfile1", L".OPTIONFILE3", L".option9", L".options7"));
}

TEST_F(TraceOptions, NamesHaveEachOfNineDigits) {
    for (char c = ' '; c < 0x7F; ++c) {
        if (c != '/') {
            Make({std::string("OPFILE.") + c});
        }
    }
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    EXPECT_THAT(visitor.Names(), UnorderedElementsAre(L"OPFILE.1", L"OPFILE.2", L"OPFILE.3", L"OPFILE.4", L"OPFILE.5",
                                                      L"OPFILE.6", L"OPFILE.7", L"OPFILE.8", L"OPFILE.9"));
}

TEST_F(TraceOptions, NamesDoNotHangOnTheLocale) {
    TestLocales::UseLocale(TestLocales::Turkish);
    Make({"OPFILE.1", "opfile.2", ".OPTION3"});
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    EXPECT_EQ(visitor.paths.size(), 3);
}

TEST_F(TraceOptions, ComeByTheirFullPathInTheOrderOfTheSystem) {
    for (int i = 0; i < 40; ++i) {
        Make({"OPFILE." + std::to_string(i * 37 % 100) + "1"});
    }
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    EXPECT_EQ(visitor.paths, Listed());
}

TEST_F(TraceOptions, ResultsAddUp) {
    Make({"OPFILE.1", "OPFILE.2", "OPFILE.3"});
    Visitor none{{}, {5, -7, 2}};
    EXPECT_EQ(none.Walk(scratch.Path()), 0);
    EXPECT_EQ(none.paths.size(), 3) << "a failure doesn't end the walk";
    Visitor some{{}, {0, 0, 1}};
    EXPECT_EQ(some.Walk(scratch.Path()), -1);
    Visitor large{{}, {INT_MIN, INT_MIN, 0}};
    EXPECT_EQ(large.Walk(scratch.Path()), -1);
}

TEST_F(TraceOptions, AreNoneInADirectoryThatIsNotThere) {
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch + "/none"), 0);
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    Make({"OPFILE.1"});
    EXPECT_EQ(visitor.Walk(scratch + "/OPFILE.1"), 0);
    EXPECT_THAT(visitor.paths, ElementsAre());
}

TEST_F(TraceOptions, AreNoneInADirectoryThatCanNotBeListed) {
    Make({"OPFILE.1"});
    s_openDirectoryError = EACCES;
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    EXPECT_THAT(visitor.paths, ElementsAre());
}

TEST_F(TraceOptions, AreRefusedWithoutAPath) {
    Visitor visitor;
    EXPECT_EQ(VELSysTraceGetOpFileInDirectory(nullptr, Visitor::Visit, &visitor), -1);
    EXPECT_EQ(VELSysTraceGetOpFileInDirectory(scratch.Path().c_str(), nullptr, &visitor), -1);
    EXPECT_EQ(visitor.Walk(""), -1);
    EXPECT_EQ(visitor.Walk("http://"), -1);
    EXPECT_EQ(visitor.Walk("/" + std::string(1024, 'x')), -1);
    EXPECT_EQ(visitor.Walk("/not UTF-8 \xFF"), -1);
}

TEST_F(TraceOptions, WithNamesThatNoPathHoldsArePassedOver) {
    // Of such a name the iterator shows the directory, which here looks like an option file.
    std::filesystem::create_directory(scratch / "OPFILE.5");
    Make({"OPFILE.5/OPFILE.\xFF"
          "1",
          "OPFILE.5/OPFILE.3"});
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch + "/OPFILE.5"), 0);
    EXPECT_THAT(visitor.paths, ElementsAre(std::filesystem::path(scratch + "/OPFILE.5/OPFILE.3").wstring()));
}

TEST_F(TraceOptions, MayStandInALongDirectory) {
    std::string directory = scratch.Path();
    for (const std::size_t least : {300U, 700U}) {
        while (directory.size() < least) {
            directory += "/" + std::string(199, 'd');
        }
        std::filesystem::create_directories(directory);
        WriteFile(directory + "/OPFILE.1", "-O A\n");
        setenv("HOME", directory.c_str(), 1);
        Recorder recorder;
        EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
        EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A")) << directory.size();
    }
}

TEST_F(TraceOptions, MayStandInARelativeDirectory) {
    Make({"OPFILE.1"});
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Path());
    Visitor visitor;
    EXPECT_EQ(visitor.Walk("."), 0);
    EXPECT_THAT(visitor.paths, ElementsAre(L"./OPFILE.1"));
    std::filesystem::current_path(before);
}

TEST_F(TraceOptions, WidenUTF8) {
    Make({"OPFILE.\u00e4\U0001F3261"});
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch.Path()), 0);
    EXPECT_THAT(visitor.Names(), ElementsAre(L"OPFILE.\u00e4\U0001F3261"));
}

TEST_F(TraceOptions, NameTheirDirectoryInTheNativeCodePage) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    std::filesystem::create_directory(scratch / "\xE4");
    Make({"\xE4/OPFILE.\xF6"
          "1"},
         "-O A\n");
    Visitor visitor;
    EXPECT_EQ(visitor.Walk(scratch + "/\xE4"), 0);
    EXPECT_THAT(visitor.Names(), ElementsAre(L"OPFILE.\u00f61"));
    TestLocales::UseLocale(TestLocales::German);
    setenv("HOME", (scratch + "/\xE4").c_str(), 1);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A"));
    StringEnvironment::UseCodePage(StringEnvironment::UTF8);
}

TEST_F(TraceOptions, AreAppliedLineByLine) {
    setenv("QORTraDecDir", scratch.Path().c_str(), 1);
    Make({"OPFILE.1"}, "-O A B\n-Frun.txt C -L5\n");
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls,
                ElementsAre("0 STDOUT", "0 STDOUT A", "0 STDOUT B", "0 run.txt", "0 run.txt C", "run.txt 8=5"));
}

TEST_F(TraceOptions, AreAllReadWhenALineIsRefused) {
    setenv("HOME", scratch.Path().c_str(), 1);
    Make({"OPFILE.1", ".option2"}, "A\n\n-O A\n--name B --file\n");
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "0 ile", "0 ile B", "0 STDOUT", "0 STDOUT A",
                                            "0 ile", "0 ile B"));
}

TEST_F(TraceOptions, FailWhenADestinationIsRefused) {
    setenv("HOME", scratch.Path().c_str(), 1);
    Make({"OPFILE.1"}, "-O A\n");
    Recorder recorder;
    recorder.answers = {{"0 STDOUT", 3}};
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), -1);
}

TEST_F(TraceOptions, LoseTheLastByteOfTheirLastLine) {
    setenv("HOME", scratch.Path().c_str(), 1);
    for (const auto& [text, name] : {std::pair("-O\tABC\n", "0 STDOUT"), std::pair("-O ABC", "0 STDOUT AB")}) {
        Make({"OPFILE.1"}, text);
        Recorder recorder;
        EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
        ASSERT_FALSE(recorder.calls.empty());
        EXPECT_EQ(recorder.calls.back(), name);
    }
}

TEST_F(TraceOptions, ThatAreEmptyDoNothing) {
    setenv("HOME", scratch.Path().c_str(), 1);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0) << "there are none";
    Make({"OPFILE.1"});
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre());
}

TEST_F(TraceOptions, DirectoryLosesOneSeparatorAtItsEnd) {
    Make({"OPFILE.1"}, "-O A\n");
    for (const char* end : {"/", "\\"}) {
        setenv("HOME", (scratch + end).c_str(), 1);
        Recorder recorder;
        EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
        EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A")) << end;
    }
    // Which leaves nothing of the root.
    setenv("HOME", "/", 1);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), -1);
}

TEST_F(TraceOptions, ThatCanNotBeOpenedFail) {
    setenv("HOME", scratch.Path().c_str(), 1);
    std::filesystem::create_symlink(scratch / "none", scratch / "OPFILE.1");
    Make({"OPFILE.2"}, "-O A\n");
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A"));
}

TEST_F(TraceOptions, WithNamesThatTheLocaleDoesNotHoldFail) {
    setenv("HOME", scratch.Path().c_str(), 1);
    Make({"OPFILE.\u20AC1"}, "-O A\n");
    TestLocales::UseLocale(TestLocales::German);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre());
    TestLocales::UseLocale(TestLocales::English);
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A"));
}

TEST_F(TraceOptions, ThatAreNoRegularFilesAreEmpty) {
    setenv("HOME", scratch.Path().c_str(), 1);
    std::filesystem::create_directory(scratch / "OPFILE.1");
    std::filesystem::create_symlink("/dev/zero", scratch / "OPFILE.2");
    ASSERT_EQ(mkfifo((scratch / "OPFILE.3").c_str(), 0600), 0);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceOptionFiles(recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre());
}

struct CloseStream {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Reads a text as an option file.
class TraceOptionParser : public testing::Test {
protected:
    void SetUp() override { TraceManagerHeld::manager = &recorder; }
    void TearDown() override {
        TraceManagerHeld::manager = nullptr;
        EXPECT_EQ(TraceManagerHeld::held, 0);
    }
    static std::unique_ptr<std::FILE, CloseStream> FileOf(std::string text) {
        std::unique_ptr<std::FILE, CloseStream> file(std::tmpfile());
        std::fwrite(text.data(), 1, text.size(), file.get());
        std::rewind(file.get());
        return file;
    }
    int Parse(const std::string& text) {
        bool unused = false;
        return VELSysTraceOpFileParser(FileOf(text).get(), Recorder::AddTrace, Recorder::AddOption, this, &unused);
    }

    Recorder recorder;
};

TEST_F(TraceOptionParser, HandsTheManagerToTheCallbacks) {
    EXPECT_EQ(Parse("-O A -N\nB -Frun\n"), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "STDOUT 4=0", "0 run", "0 run B"));
}

TEST_F(TraceOptionParser, HoldsTheManagerMeanwhile) {
    static int s_held = 0;
    const auto addTrace = [](int, const char*, const char*, void*) { return s_held = TraceManagerHeld::held, 0; };
    EXPECT_EQ(VELSysTraceOpFileParser(FileOf("-O\n").get(), addTrace, Recorder::AddOption, nullptr, nullptr), 0);
    EXPECT_EQ(s_held, 1);
}

TEST_F(TraceOptionParser, YieldsZeroWhateverIsRefused) {
    recorder.answers = {{"0 STDOUT", -1}, {"0 run A", -1}};
    EXPECT_EQ(Parse("nothing\n-O A\n-Frun A B\n"), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 run", "0 run A", "0 run B"));
}

TEST_F(TraceOptionParser, DoesNothingWithoutAManager) {
    TraceManagerHeld::manager = nullptr;
    const auto file = FileOf("-O A\n");
    EXPECT_EQ(VELSysTraceOpFileParser(file.get(), Recorder::AddTrace, Recorder::AddOption, &recorder, nullptr), 0);
    EXPECT_THAT(recorder.calls, ElementsAre());
    EXPECT_EQ(std::ftell(file.get()), 0);
}

TEST_F(TraceOptionParser, DoesNothingForNull) {
    EXPECT_EQ(VELSysTraceOpFileParser(nullptr, Recorder::AddTrace, Recorder::AddOption, nullptr, nullptr), 0);
    EXPECT_EQ(VELSysTraceOpFileParser(FileOf("-O A\n").get(), nullptr, Recorder::AddOption, nullptr, nullptr), 0);
    EXPECT_EQ(VELSysTraceOpFileParser(FileOf("-O A\n").get(), Recorder::AddTrace, nullptr, nullptr, nullptr), 0);
    EXPECT_THAT(recorder.calls, ElementsAre());
}

TEST_F(TraceOptionParser, ReadsLinesOf8191Bytes) {
    const std::string line = "-O" + std::string(8191 - 6, ' ') + "ABC\n";
    ASSERT_EQ(line.size(), 8191);
    EXPECT_EQ(Parse(line + "-E D\n"), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT ABC", "0 STDERR", "0 STDERR D"));
}

TEST_F(TraceOptionParser, TakesALongerLineForSeveral) {
    // The last byte of the first 8191 goes.
    const std::string line = "-O" + std::string(8191 - 5, ' ') + "ABC-E D\n";
    EXPECT_EQ(Parse(line + "-Frun F\n"), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT AB", "0 STDERR", "0 STDERR D", "0 run", "0 run F"));
}

TEST_F(TraceOptionParser, TakesALineOf8192BytesForOneThatIsCutAndAnEmptyOne) {
    const std::string line = "-O" + std::string(8191 - 5, ' ') + "ABC\n";
    ASSERT_EQ(line.size(), 8192);
    EXPECT_EQ(Parse(line), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT AB"));
}

TEST_F(TraceOptionParser, ReadsALineOf20000Bytes) {
    EXPECT_EQ(Parse(std::string(20000, ' ') + "-O A\n-E B\n"), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "0 STDERR", "0 STDERR B"));
}

TEST_F(TraceOptionParser, ReadsNothingBehindAZeroByteOfALine) {
    using namespace std::string_literals;
    EXPECT_EQ(Parse("\0-O A\n"s + "-E BC\0D\n"s + "\0"s), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDERR", "0 STDERR BC"));
}

TEST_F(TraceOptionParser, StopsWhereTheFileCanNotBeRead) {
    const std::unique_ptr<std::FILE, CloseStream> directory(std::fopen("/", "re"));
    ASSERT_NE(directory, nullptr);
    EXPECT_EQ(VELSysTraceOpFileParser(directory.get(), Recorder::AddTrace, Recorder::AddOption, nullptr, nullptr), 0);
    EXPECT_THAT(recorder.calls, ElementsAre());
}

} // namespace
