#include "ProcessPerTest.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

/// A test that takes longer hangs.
constexpr unsigned int LongestSeconds = 300;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// What became of a test.
struct Outcome {
    int status;         ///< As waitpid() gives it.
    std::string output; ///< Of both streams.
};

std::vector<std::string> TestNames() {
    std::vector<std::string> names;
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *program.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j) {
            const std::string name = std::string(suite.name()) + "." + suite.GetTestInfo(j)->name();
            if (name.find("DISABLED_") == std::string::npos) {
                names.push_back(name);
            }
        }
    }
    return names;
}

[[noreturn]] void RunAlone(const std::string& name, std::FILE* output) {
    dup2(fileno(output), STDOUT_FILENO);
    dup2(fileno(output), STDERR_FILENO);
    alarm(LongestSeconds);
    testing::GTEST_FLAG(filter) = name;
    std::exit(RUN_ALL_TESTS());
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
    Outcome outcome{-1, {}};
    waitpid(pid, &outcome.status, 0);
    std::rewind(output.get());
    char buffer[4096];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, output.get())) {
        outcome.output.append(buffer, count);
    }
    return outcome;
}

} // namespace

int RunEachTestInItsOwnProcess() {
    int failed = 0;
    int skipped = 0;
    const std::vector<std::string> names = TestNames();
    for (const std::string& name : names) {
        const Outcome outcome = Run(name);
        if (outcome.status != 0) {
            ++failed;
            std::printf("%s\nFAILED: %s (%s %d)\n", outcome.output.c_str(), name.c_str(),
                        WIFSIGNALED(outcome.status) ? "signal" : "exit code",
                        WIFSIGNALED(outcome.status) ? WTERMSIG(outcome.status) : WEXITSTATUS(outcome.status));
        } else if (outcome.output.find("[  SKIPPED ]") != std::string::npos) {
            ++skipped;
            std::printf("skipped: %s\n", name.c_str());
        }
    }
    std::printf("%zu tests, %d failed, %d skipped\n", names.size(), failed, skipped);
    return failed == 0 && !names.empty() ? 0 : 1;
}
