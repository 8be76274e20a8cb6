/// @file
/// The argument store on several threads at once.

#include "ArgumentStore.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace ArgumentStore;

TEST(VELSysTSArgThreads, ReadersSeeWholeOptionsWhileAnotherSetsThem) {
    constexpr int rounds = 300;
    Set({"-a=first value"});
    std::atomic<bool> isOver{false};
    const auto read = [&] {
        while (!isOver) {
            const Found found = Get("a");
            ASSERT_TRUE(found == Value("first value") || found == Value("second value", 1) || found == Missing())
                << found;
        }
    };
    std::thread first(read);
    std::thread second(read);
    const QORUnicodeString value("second value");
    for (int i = 0; i < rounds; ++i) {
        Set({"-a=first value", "-b", "-c=3"});
        VELSysTSAddArg("a", &value);
        VELSysTSResetArg("a");
    }
    isOver = true;
    first.join();
    second.join();
}

TEST(VELSysTSArgThreads, TheFirstUseIsMadeOnSeveralThreads) {
    std::atomic<int> ready{0};
    const auto add = [&](const char* key) {
        ++ready;
        while (ready < 2) {
        }
        EXPECT_EQ(VELSysTSAddArg(key, nullptr), 0);
        EXPECT_EQ(Get(key), Flag(1));
    };
    std::thread first(add, "a");
    std::thread second(add, "b");
    first.join();
    second.join();
    EXPECT_EQ(Get("a"), Flag(1));
    EXPECT_EQ(Get("b"), Flag(1));
}
