#include "VELSysTimer.h"

#include "TestSupport.h"

#include <ctime>
#include <gtest/gtest.h>

namespace {

TEST(VELSysTimerTest, TellsTheWallClock) {
    timeval now{};
    const time_t before = time(nullptr);
    ASSERT_EQ(VELSysTimerGetTimeOfDay(&now), 0);
    // The coarse clock of `time` may lag behind by a tick.
    EXPECT_GE(now.tv_sec, before);
    EXPECT_LE(now.tv_sec, time(nullptr) + 1);
    EXPECT_GE(now.tv_usec, 0);
    EXPECT_LE(now.tv_usec, 999999);
}

TEST(VELSysTimerTest, ANullPlaceIsRefused) {
    EXPECT_EQ(VELSysTimerGetTimeOfDay(nullptr), -1);
}

TEST(VELSysTimerTest, ThreadsReadAtOnce) {
    RunAtOnce(4, [](int) {
        timeval now{};
        EXPECT_EQ(VELSysTimerGetTimeOfDay(&now), 0);
        EXPECT_GT(now.tv_sec, 0);
    });
}

} // namespace
