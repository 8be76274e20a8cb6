#include "Child.h"

#include "ProcessPerTest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

constexpr const char* ChildSwitch = "--child-program";
constexpr const char* ProcessPerTestSwitch = "--process-per-test";

std::map<std::string, ChildProgram>& Programs() {
    static std::map<std::string, ChildProgram> programs;
    return programs;
}

/// Variables without which a child would not start or would not be judged as the test is.
bool IsNeededByTheRuntime(const std::string& variable) {
    static const std::array prefixes = {"LD_LIBRARY_PATH=", "ASAN_OPTIONS=", "UBSAN_OPTIONS=",    "TSAN_OPTIONS=",
                                        "LSAN_OPTIONS=",    "GCOV_PREFIX",   "LLVM_PROFILE_FILE="};
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const char* prefix) { return variable.rfind(prefix, 0) == 0; });
}

std::vector<std::string> EnvironmentOf(const ChildSetup& setup) {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (IsNeededByTheRuntime(*entry)) {
            environment.emplace_back(*entry);
        }
    }
    for (const auto& [name, value] : setup.set) {
        environment.push_back(name + "=" + value);
    }
    return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

struct Pipe {
    int ends[2];
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe2 failed");
        }
    }
};

/// Reads both pipes to their ends.
void Capture(int out, int err, Child& child) {
    std::array<pollfd, 2> sources{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
    const std::array<std::string*, 2> targets{&child.out, &child.err};
    for (int open = 2; open > 0;) {
        if (poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) {
            break;
        }
        for (std::size_t i = 0; i < sources.size(); ++i) {
            if (sources[i].fd < 0 || sources[i].revents == 0) {
                continue;
            }
            char buffer[4096];
            const ssize_t count = read(sources[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                targets[i]->append(buffer, static_cast<std::size_t>(count));
            } else {
                sources[i].fd = -1;
                --open;
            }
        }
    }
}

/// True when a sanitizer complains. Signals, which children also end by on purpose, have names in capitals.
bool HasReport(const std::string& text) {
    constexpr std::string_view mark = "Sanitizer: ";
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        const std::size_t kind = at + mark.size();
        if (kind < text.size() && text[kind] >= 'a' && text[kind] <= 'z') {
            return true;
        }
    }
    return text.find("runtime error: ") != std::string::npos;
}

Child Run(std::vector<std::string> command, const ChildSetup& setup) {
    std::vector<std::string> environment = EnvironmentOf(setup);
    const std::vector<char*> argv = Pointers(command);
    const std::vector<char*> envp = Pointers(environment);
    Pipe out;
    Pipe err;
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(out.ends[1], STDOUT_FILENO);
        dup2(err.ends[1], STDERR_FILENO);
        if (!setup.workingDirectory.empty() && chdir(setup.workingDirectory.c_str()) != 0) {
            _exit(126);
        }
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(out.ends[1]);
    close(err.ends[1]);
    Child child{};
    Capture(out.ends[0], err.ends[0], child);
    close(out.ends[0]);
    close(err.ends[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    child.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    child.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    if (!setup.mayBeReported && HasReport(child.err)) {
        ADD_FAILURE() << "a sanitizer reports of the child:\n" << child.err;
    }
    return child;
}

} // namespace

ChildRegistration::ChildRegistration(const char* name, ChildProgram program) {
    Programs()[name] = program;
}

void EndWithoutFlush(const std::function<void()>& action) {
    static char buffer[4096];
    std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
    action();
    _exit(0);
}

Child RunExecutable(const std::string& path, const ChildSetup& setup) {
    std::vector<std::string> command{path};
    command.insert(command.end(), setup.arguments.begin(), setup.arguments.end());
    return Run(std::move(command), setup);
}

Child RunChild(const std::string& program, const ChildSetup& setup) {
    char self[4096];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length < 0) {
        throw std::runtime_error("the test's own path is unknown");
    }
    std::vector<std::string> command{std::string(self, static_cast<std::size_t>(length)), ChildSwitch, program};
    command.insert(command.end(), setup.arguments.begin(), setup.arguments.end());
    return Run(std::move(command), setup);
}

int main(int argc, char** argv) {
    if (argc > 2 && std::strcmp(argv[1], ChildSwitch) == 0) {
        const auto program = Programs().find(argv[2]);
        return program != Programs().end() ? program->second({argv + 3, argv + argc}) : 125;
    }
    const bool isAlone = argc == 2;
    testing::InitGoogleMock(&argc, argv);
    if (isAlone && argc == 2 && std::strcmp(argv[1], ProcessPerTestSwitch) == 0) {
        return RunEachTestInItsOwnProcess(argv);
    }
    if (argc > 1) {
        std::fprintf(stderr, "usage: %s [GoogleTest's options] | %s\n", argv[0], ProcessPerTestSwitch);
        return 2;
    }
    return RUN_ALL_TESTS();
}
