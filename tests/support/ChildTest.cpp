/// @file
/// Child processes: what is captured, and what of it fails the test that has started them.

#include "Child.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

CHILD_PROGRAM(WritesToStandardError) {
    std::fputs(arguments[0].c_str(), stderr);
    return 3;
}

CHILD_PROGRAM(Aborts) {
    std::abort();
}

CHILD_PROGRAM(HitsNothing) {
    std::raise(SIGSEGV);
    return 0;
}

class ChildReports : public testing::TestWithParam<const char*> {};

TEST_P(ChildReports, FailTheTest) {
    static ChildSetup setup;
    setup.arguments = {GetParam()};
    EXPECT_NONFATAL_FAILURE(RunChild("WritesToStandardError", setup), GetParam());
}

TEST_P(ChildReports, MayBeAskedFor) {
    const Child child =
        RunChild("WritesToStandardError", {.set = {}, .arguments = {GetParam()}, .mayBeReported = true});
    EXPECT_EQ(child.err, GetParam());
    EXPECT_EQ(child.exitCode, 3);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ChildReports,
                         testing::Values("==1==ERROR: LeakSanitizer: detected memory leaks\n",
                                         "WARNING: ThreadSanitizer: data race (pid=1)\n",
                                         "==1==ERROR: AddressSanitizer: heap-buffer-overflow on address 0x1\n",
                                         "==1==ERROR: AddressSanitizer: attempting double-free on 0x1\n",
                                         "a.cpp:1:2: runtime error: signed integer overflow\n",
                                         "AddressSanitizer: SEGV\nLeakSanitizer: detected memory leaks\n"));

TEST(ChildSignals, AreNoReport) {
    const Child told = RunChild("WritesToStandardError",
                                {.set = {}, .arguments = {"==1==ERROR: AddressSanitizer: SEGV on unknown address\n"}});
    EXPECT_EQ(told.exitCode, 3);
    // A sanitizer makes an exit code of a signal that it catches.
    const Child aborted = RunChild("Aborts");
    EXPECT_TRUE(aborted.signal == SIGABRT || aborted.exitCode > 0);
    const Child hit = RunChild("HitsNothing");
    EXPECT_TRUE(hit.signal == SIGSEGV || hit.exitCode > 0);
}

} // namespace
