/// @file
/// Tests that end in every way there is.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(Sample, Passes) {}

TEST(Sample, Skips) {
    GTEST_SKIP() << "always";
}

TEST(Sample, Fails) {
    ADD_FAILURE() << "on purpose";
}

TEST(Sample, Exits) {
    std::exit(0);
}

TEST(Sample, ExitsAtOnce) {
    _exit(0);
}

TEST(Sample, HasDISABLED_InItsName) {
    ADD_FAILURE() << "runs";
}

TEST(SampleOfDISABLED_, HasItInTheNameOfItsSuite) {
    ADD_FAILURE() << "runs";
}

TEST(Sample, DISABLED_Test) {
    ADD_FAILURE() << "must not run";
}

TEST(DISABLED_Sample, Test) {
    ADD_FAILURE() << "must not run";
}

class DISABLED_SampleRow : public testing::TestWithParam<int> {};

TEST_P(DISABLED_SampleRow, Test) {
    ADD_FAILURE() << "must not run";
}

INSTANTIATE_TEST_SUITE_P(Rows, DISABLED_SampleRow, testing::Values(1));

/// Is ended as one that takes too long, and has a process of its own by then.
TEST(Sample, LeavesAProcess) {
    const pid_t left = fork();
    if (left == 0) {
        sleep(60);
        _exit(0);
    }
    if (const char* const name = std::getenv("SAMPLE_PROCESS_FILE")) {
        std::FILE* const file = std::fopen(name, "w");
        std::fprintf(file, "%d\n", static_cast<int>(left));
        std::fclose(file);
    }
    std::raise(SIGALRM);
}

} // namespace
