#include "ProcessPerTest.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

/// A test that takes longer hangs.
constexpr unsigned int LongestSeconds = 300;

// What GoogleTest says at the end of a test that it has run.
constexpr const char* PassedMark = "[  PASSED  ] 1 test.";
constexpr const char* SkippedMark = "[  SKIPPED ] 1 test,";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// What became of a test.
struct Outcome {
    int status;         ///< As waitpid() gives it.
    std::string output; ///< Of both streams.

    bool Has(const char* mark) const { return output.find(mark) != std::string::npos; }
    bool IsSkipped() const { return status == 0 && Has(SkippedMark); }
    bool HasPassed() const { return status == 0 && Has(PassedMark); }

    /// Why it failed.
    std::string Reason() const {
        if (WIFSIGNALED(status)) {
            return "signal " + std::to_string(WTERMSIG(status));
        }
        return status != 0 ? "exit code " + std::to_string(WEXITSTATUS(status)) : "it did not come to its end";
    }
};

/// Starts the program anew without the variables that tell GoogleTest what to run and how: some of them are read before
/// `main` is called.
void DropVariablesOfGoogleTest(char** argv) {
    constexpr std::string_view prefix = "GTEST_";
    std::vector<std::string> names;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable(*entry);
        if (variable.substr(0, prefix.size()) == prefix) {
            names.emplace_back(variable.substr(0, variable.find('=')));
        }
    }
    if (names.empty()) {
        return;
    }
    for (const std::string& name : names) {
        unsetenv(name.c_str());
    }
    execv("/proc/self/exe", argv);
    std::perror("/proc/self/exe");
    _exit(2);
}

/// As GoogleTest judges the name of a suite or of a test.
bool IsDisabled(const std::string& name) {
    return name.rfind("DISABLED_", 0) == 0 || name.find("/DISABLED_") != std::string::npos;
}

std::vector<std::string> TestNames() {
    std::vector<std::string> names;
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *program.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j) {
            const std::string test = suite.GetTestInfo(j)->name();
            if (!IsDisabled(suite.name()) && !IsDisabled(test)) {
                names.push_back(std::string(suite.name()) + "." + test);
            }
        }
    }
    return names;
}

[[noreturn]] void RunAlone(const std::string& name, std::FILE* output) {
    setpgid(0, 0);
    // Nobody else ends it when what started it is killed.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(fileno(output), STDOUT_FILENO);
    dup2(fileno(output), STDERR_FILENO);
    alarm(LongestSeconds);
    testing::GTEST_FLAG(filter) = name;
    std::exit(RUN_ALL_TESTS());
}

/// Waits for the end of a test, and ends what it has started and left behind.
int WaitForGroup(pid_t pid) {
    siginfo_t ended;
    // As long as it isn't waited for, its group is nobody else's.
    waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOWAIT);
    kill(-pid, SIGKILL);
    int status = -1;
    waitpid(pid, &status, 0);
    return status;
}

Outcome Run(const std::string& name) {
    const std::unique_ptr<std::FILE, CloseFile> output(std::tmpfile());
    if (output == nullptr) {
        return {-1, "no temporary file\n"};
    }
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        RunAlone(name, output.get());
    }
    if (pid < 0) {
        return {-1, "no process\n"};
    }
    Outcome outcome{WaitForGroup(pid), {}};
    std::rewind(output.get());
    char buffer[4096];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, output.get())) {
        outcome.output.append(buffer, count);
    }
    return outcome;
}

} // namespace

int RunEachTestInItsOwnProcess(char** argv) {
    DropVariablesOfGoogleTest(argv);
    int failed = 0;
    int skipped = 0;
    // Where the leak check of a copy finds it even if it takes the stack for that of a thread that has ended.
    static const std::vector<std::string> names = TestNames();
    for (const std::string& name : names) {
        const Outcome outcome = Run(name);
        if (outcome.IsSkipped()) {
            ++skipped;
            std::printf("skipped: %s\n", name.c_str());
        } else if (!outcome.HasPassed()) {
            ++failed;
            std::printf("%s\nFAILED: %s (%s)\n", outcome.output.c_str(), name.c_str(), outcome.Reason().c_str());
        }
    }
    std::printf("%zu tests, %d failed, %d skipped\n", names.size(), failed, skipped);
    return failed == 0 && !names.empty() ? 0 : 1;
}
