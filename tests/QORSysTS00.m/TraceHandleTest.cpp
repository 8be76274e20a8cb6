// Handles of the usual call site.

#include "Child.h"
#include "TraceSupport.h"
#include "VELSysLifeCycle.h"

#include <clocale>
#include <cstdio>
#include <gtest/gtest.h>

using namespace TraceSupport;

namespace {

class TraceHandles : public TraceTest {};

} // namespace

TEST_F(TraceHandles, StayAsTheyAreForNamesThatAreNotConfigured) {
    Configure({{"f", {"A"}}});
    int other = 0;
    for (const char* name : {"B", "a", "A ", ""}) {
        void* handle = nullptr;
        VELSysTraceCreate__(&handle, *name != '\0' ? name : "none");
        EXPECT_EQ(handle, nullptr) << name;
        handle = &other;
        VELSysTraceCreate__(&handle, *name != '\0' ? name : "none");
        EXPECT_EQ(handle, &other) << name;
    }
}

TEST_F(TraceHandles, AreNotOverwritten) {
    Configure({{"f", {"A"}}});
    int other = 0;
    void* handle = &other;
    VELSysTraceCreate__(&handle, "A");
    EXPECT_EQ(handle, &other);
    EXPECT_EQ(DestinationPeek::Users(DestinationOf("f")), 0U);
}

TEST_F(TraceHandles, OfNamesThatAreNotEnabledStayNull) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionEnabled, 0}}}});
    EXPECT_FALSE(TraceHandle("A"));
    VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionEnabled, 1);
    EXPECT_TRUE(TraceHandle("A"));
}

TEST_F(TraceHandles, OfADestinationThatIsDisabledLaterWriteNothing) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionEnabled, 0);
    EXPECT_EQ(trace->Info("text"), -1);
    EXPECT_EQ(FileText("f"), "");
}

TEST_F(TraceHandles, OfNamesThatAreNotActiveWaitForActivation) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionActive, 0}}}});
    const TraceHandle trace("A");
    const TraceHandle other("A");
    ASSERT_TRUE(trace);
    EXPECT_EQ(trace->Info("1"), -1);
    EXPECT_EQ(trace->Error("f", 1, "1"), -1);
    VELSysTraceActivate__(trace.Writer(), 1);
    EXPECT_EQ(trace->Info("2"), 0);
    EXPECT_EQ(other->Info("3"), -1);
    VELSysTraceActivate__(trace.Writer(), 0);
    EXPECT_EQ(trace->Info("4"), -1);
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "A"}, "2"));
}

TEST_F(TraceHandles, TakeNull) {
    VELSysTraceCreate__(nullptr, "A");
    VELSysTraceActivate__(nullptr, 1);
    VELSysTraceDestroy__(nullptr);
    void* handle = nullptr;
    VELSysTraceDestroy__(&handle);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(TraceHandles, AreNullAfterTheirEnd) {
    Configure({{"f", {"A"}}});
    void* handle = nullptr;
    VELSysTraceCreate__(&handle, "A");
    ASSERT_NE(handle, nullptr);
    VELSysTraceDestroy__(&handle);
    EXPECT_EQ(handle, nullptr);
}

CHILD_PROGRAM(WritesToCommon) {
    for (const char* name : {"COMMON", "", static_cast<const char*>(nullptr)}) {
        void* handle = nullptr;
        VELSysTraceCreate__(&handle, name);
        if (handle == nullptr) {
            return 1;
        }
        static_cast<VELSysTrace*>(handle)->Info("text");
        VELSysTraceDestroy__(&handle);
    }
    std::fputs((PlainLine({.level = 1, .tag = "COMMON"}, "text")).c_str(), stderr);
    return 0;
}

TEST_F(TraceHandles, OfCommonAlwaysWriteToStandardOutput) {
    const Child child = RunChild("WritesToCommon", {{{"HOME", scratch.Path()}, {"QORTraceDir", scratch.Path()}}});
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.out, child.err + child.err + child.err);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path()));
}

TEST_F(TraceHandles, KeepToTheRangeOfCodes) {
    Configure({{"f", {"A"}}, {"g", {"B"}, {{VELSysTraceOptionMinimumCode, 10}, {VELSysTraceOptionMaximumCode, 20}}}});
    const TraceHandle a("A");
    EXPECT_EQ(a->Info(-1, "x"), -1);
    EXPECT_EQ(a->Info(0, "x"), 0);
    EXPECT_EQ(a->Info(1023, "x"), 0);
    EXPECT_EQ(a->Info(1024, "x"), -1);
    const TraceHandle b("B");
    EXPECT_EQ(b->Info("x"), -1);
    EXPECT_EQ(b->Info(9, "x"), -1);
    EXPECT_EQ(b->Info(10, "x"), 0);
    EXPECT_EQ(b->Info(19, "x"), 0);
    EXPECT_EQ(b->Error("f", 1, 20, "x"), -1);
}

TEST_F(TraceHandles, WriteAllLevels) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("1"), 0);
    EXPECT_EQ(trace->Debug("2"), 0);
    EXPECT_EQ(trace->Warning("3"), 0);
    EXPECT_EQ(trace->Error(nullptr, 0, "4"), 0);
    std::string expected;
    for (int level = 1; level <= 4; ++level) {
        expected += PlainLine({.level = level, .tag = "A"}, std::to_string(level));
    }
    EXPECT_EQ(FileText("f"), expected);
}

// As a run configures them.

CHILD_PROGRAM(RunsWithTheConfigurationOfItsEnvironment) {
    VELSysLifeCycleDispatchInitialization();
    {
        const TraceHandle trace("LifeCycle");
        if (!trace) {
            return 1;
        }
        std::printf("%d\n", trace->Info(7, "first"));
        VELSysTraceActivate__(trace.Writer(), 1);
        std::printf("%d\n", trace->Info("second"));
        std::fflush(stdout);
        std::fputs(PlainLine({.level = 1, .tag = "LifeCycle"}, "second").c_str(), stdout);
    }
    VELSysLifeCycleDispatchFinalization();
    return 0;
}

namespace {

std::string OnlyFileBelow(const std::filesystem::path& directory, const std::string& name) {
    std::string found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            found += entry.path().filename() == name ? ReadFile(entry.path()) : entry.path().string();
        }
    }
    return found;
}

} // namespace

TEST_F(TraceHandles, FollowTheVariableOfTheRun) {
    const auto run = [&](const char* variable) {
        return RunChild("RunsWithTheConfigurationOfItsEnvironment",
                        {{{"VELSysTrace", variable}, {"HOME", scratch.Path()}, {"QORTraceDir", scratch.Path()}}});
    };
    Child child = run("--name LifeCycle Path --file life.txt --rotate-file-size 100000 --rotate-file-count 12 -n");
    EXPECT_EQ(child.exitCode, 0);
    ASSERT_EQ(child.out.substr(0, 5), "-1\n0\n");
    EXPECT_EQ(OnlyFileBelow(BaseDirectory(), "life.txt"), child.out.substr(5));

    std::filesystem::remove_all(BaseDirectory());
    child = run("-FLifeCycle.txt LifeCycle Path -N");
    EXPECT_EQ(OnlyFileBelow(BaseDirectory(), "LifeCycle.txt"), child.out.substr(5));

    std::filesystem::remove_all(BaseDirectory());
    child = run("-e LifeCycle -N");
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.err, child.out.substr(5));
    EXPECT_FALSE(std::filesystem::exists(BaseDirectory()));

    EXPECT_EQ(run("-e Other").exitCode, 1);
}

CHILD_PROGRAM(AsksForATraceInSilence) {
    sources.reset();
    const TraceHandle trace("A");
    std::fputs(std::setlocale(LC_ALL, nullptr), stderr);
    return trace ? 1 : 0;
}

TEST_F(TraceHandles, OfARunWithoutConfigurationLeaveTheLocaleAlone) {
    const Child child = RunChild("AsksForATraceInSilence",
                                 {{{"HOME", scratch.Path()}, {"QORTraceDir", scratch.Path()}, {"LANG", "C.UTF-8"}}});
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "C");
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path()));
}

CHILD_PROGRAM(InitializesAndFinalizes) {
    const auto hasManager = [] { return VELSysTraceManagerAddOptionToTrace("STDOUT_COMMON", 4, 1) == 0; };
    for (const std::string& step : arguments) {
        if (step == "initialize") {
            VELSysLifeCycleDispatchInitialization();
        } else if (step == "finalize") {
            VELSysLifeCycleDispatchFinalization();
        } else if (step == "trace") {
            const TraceHandle trace("COMMON");
        } else {
            VELSysLifeCycleDispatchStateChange(std::stoi(step));
        }
        std::fputs(hasManager() ? "1" : "0", stderr);
    }
    return 0;
}

TEST_F(TraceHandles, LiveAsLongAsTheSessionThatMadeTheManager) {
    const auto steps = [&](const std::vector<std::string>& arguments) {
        return RunChild("InitializesAndFinalizes", {.set = {{"HOME", scratch.Path()}}, .arguments = arguments}).err;
    };
    EXPECT_EQ(steps({"initialize", "1", "2", "3", "finalize"}), "11110");
    EXPECT_EQ(steps({"trace", "initialize", "finalize"}), "111") << "somebody else's";
    EXPECT_EQ(steps({"initialize", "initialize", "finalize"}), "111") << "the second didn't make it";
    EXPECT_EQ(steps({"finalize", "initialize", "finalize", "initialize"}), "0101");
}

TEST_F(TraceHandles, LeaveTheErrorNumberAlone) {
    Configure({{"f", {"A"}}, {"g", {"B"}}});
    const std::string cause("%m");
    errno = 77;
    const TraceHandle trace("A");
    EXPECT_EQ(errno, 77);
    trace->Info(cause.c_str(), 0);
    EXPECT_EQ(errno, 77);
    VELSysTraceManagerAddStreamTrace("sub/h", "C", 0, 0);
    EXPECT_EQ(errno, 77);
    errno = ENOENT;
    trace->Info(cause.c_str(), 0);
    EXPECT_NE(FileText("f").find("No such file"), std::string::npos);
}

TEST_F(TraceHandles, FollowTheOptionFilesOfTheRun) {
    WriteFile(scratch / "OPFILE.1", "LifeCycle -Flife.txt -N\n");
    const Child child = RunChild("RunsWithTheConfigurationOfItsEnvironment",
                                 {{{"HOME", scratch.Path()}, {"QORTraceDir", scratch.Path()}}});
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(OnlyFileBelow(BaseDirectory(), "life.txt"), child.out.substr(5));
}
