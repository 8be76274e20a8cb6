#include "VELSysContext.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(VELSysContextTest, ThereIsNoneAtFirst) {
    VELSysContextFinalize();
    EXPECT_EQ(VELSysContextGetCurrentContext(), nullptr);
}

TEST(VELSysContextTest, TheContextSetLastIsCurrentInEveryThread) {
    int first = 0;
    int second = 0;
    EXPECT_EQ(VELSysContextSetCurrentContext(&first), 0);
    EXPECT_EQ(VELSysContextSetCurrentContext(&second), 0);
    EXPECT_EQ(VELSysContextGetCurrentContext(), &second);
    std::thread([&] { EXPECT_EQ(VELSysContextGetCurrentContext(), &second); }).join();
    VELSysContextFinalize();
}

TEST(VELSysContextTest, ANullContextIsRefused) {
    int context = 0;
    VELSysContextSetCurrentContext(&context);
    EXPECT_EQ(VELSysContextSetCurrentContext(nullptr), -1);
    EXPECT_EQ(VELSysContextGetCurrentContext(), &context);
    VELSysContextFinalize();
}

TEST(VELSysContextTest, FinalisationLeavesNoneAndANewOneCanBeSet) {
    int context = 0;
    VELSysContextSetCurrentContext(&context);
    EXPECT_EQ(VELSysContextFinalize(), 0);
    EXPECT_EQ(VELSysContextGetCurrentContext(), nullptr);
    EXPECT_EQ(VELSysContextFinalize(), 0);
    EXPECT_EQ(VELSysContextSetCurrentContext(&context), 0);
    EXPECT_EQ(VELSysContextGetCurrentContext(), &context);
    VELSysContextFinalize();
}

TEST(VELSysContextTest, WhoGetsAContextSeesWhatWasWrittenToIt) {
    VELSysContextFinalize();
    int context = 0;
    RunAtOnce(2, [&](int number) {
        if (number == 0) {
            context = 7;
            VELSysContextSetCurrentContext(&context);
            return;
        }
        EXPECT_TRUE(WaitUntil([] { return VELSysContextGetCurrentContext() != nullptr; }));
        EXPECT_EQ(*static_cast<int*>(VELSysContextGetCurrentContext()), 7);
    });
    VELSysContextFinalize();
}

} // namespace
