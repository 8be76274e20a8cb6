/// @file
/// Child processes for tests of what happens once per process: environment, loading, exit.
///
/// A child program is a function in the test's own executable. It runs in a fresh process of that executable, with the
/// environment that the test gives, and its streams are captured.
///
/// @code
/// CHILD_PROGRAM(PrintsHome) {
///     std::puts(std::getenv("HOME"));
///     return 0;
/// }
///
/// TEST(Home, IsTakenFromTheEnvironment) {
///     const Child child = RunChild("PrintsHome", {.set = {{"HOME", "/nowhere"}}});
///     EXPECT_EQ(child.out, "/nowhere\n");
///     EXPECT_EQ(child.exitCode, 0);
/// }
/// @endcode
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

/// How a child is started.
struct ChildSetup {
    std::map<std::string, std::string> set;  ///< Variables added to the environment.
    std::vector<std::string> arguments = {}; ///< Given to the child program.
    std::string workingDirectory = {};       ///< Where it runs; empty for the test's own.
    bool mayBeReported = false;              ///< What a sanitizer reports of it doesn't fail the test.
};

/// What became of a child.
struct Child {
    int exitCode;    ///< Its exit code, or -1 when a signal ended it.
    int signal;      ///< The signal that ended it, or 0.
    std::string out; ///< What it wrote to standard output.
    std::string err; ///< What it wrote to standard error.
};

/// Runs a child program to its end. The environment holds what `setup` sets, besides the variables that the loader and
/// the sanitizers read; everything else of the test's own environment is left out. A sanitizer's report on the child's
/// standard error fails the calling test, whatever else is expected of the child; signals, as of a deliberate abort,
/// are no report.
Child RunChild(const std::string& program, const ChildSetup& setup = {});

/// Runs another executable in the same way.
Child RunExecutable(const std::string& path, const ChildSetup& setup = {});

using ChildProgram = int (*)(const std::vector<std::string>& arguments);

/// Makes a function known as a child program.
struct ChildRegistration {
    ChildRegistration(const char* name, ChildProgram program);
};

/// Ends a child program with what `action` wrote to standard error and flushed itself: the stream holds back the rest,
/// and the end of the process doesn't flush it.
[[noreturn]] void EndWithoutFlush(const std::function<void()>& action);

#define CHILD_PROGRAM(name)                                                                                            \
    static int ChildProgram##name(const std::vector<std::string>& arguments);                                          \
    static const ChildRegistration s_child##name(#name, ChildProgram##name);                                           \
    static int ChildProgram##name([[maybe_unused]] const std::vector<std::string>& arguments)
