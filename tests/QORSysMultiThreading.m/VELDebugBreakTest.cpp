#include "VELDebugBreak.h"

#include "TestSupport.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::MatchesRegex;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(VELDebugBreakTest, ReportsTheCodeAndTheCallerInOneLineAndReturns) {
    CaptureStderr();
    VELDebugBreak(1);
    EXPECT_THAT(GetCapturedStderr(),
                MatchesRegex("VELDebugBreak: programming error, code 1, reported from 0x[0-9a-f]+\n"));
}

TEST(VELDebugBreakTest, WritesNothingOnStandardOutput) {
    CaptureStderr();
    testing::internal::CaptureStdout();
    VELDebugBreak(1);
    GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(VELDebugBreakTest, KeepsErrno) {
    CaptureStderr();
    errno = EDOM;
    VELDebugBreak(-7);
    EXPECT_EQ(errno, EDOM);
    EXPECT_THAT(GetCapturedStderr(), testing::HasSubstr("code -7"));
}

TEST(VELDebugBreakTest, LinesOfSeveralThreadsDoNotMix) {
    constexpr int threads = 4;
    constexpr int rounds = 50;
    CaptureStderr();
    RunAtOnce(threads, [](int) {
        for (int round = 0; round < rounds; ++round) {
            VELDebugBreak(1);
        }
    });
    std::istringstream lines(GetCapturedStderr());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_THAT(line, MatchesRegex("VELDebugBreak: programming error, code 1, reported from 0x[0-9a-f]+"));
    }
    EXPECT_EQ(count, threads * rounds);
}

} // namespace
