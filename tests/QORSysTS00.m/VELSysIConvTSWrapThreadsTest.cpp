/// @file
/// The converter registry on several threads at once; what is wrong here shows under the sanitizers.

#include "IConvCalls.h"
#include "VELSysIConvTSWrap.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

using IConvCalls::Closed;
using IConvCalls::None;
using IConvCalls::Opened;

namespace {

constexpr int Threads = 4;

/// Runs `work` with the numbers of the threads, all starting together.
template <class Work>
void RunAtOnce(const Work& work) {
    std::atomic<int> ready{0};
    std::vector<std::jthread> threads;
    for (int number = 0; number < Threads; ++number) {
        threads.emplace_back([&ready, &work, number] {
            ++ready;
            while (ready < Threads) {
                std::this_thread::yield();
            }
            work(number);
        });
    }
}

template <class Entry>
std::vector<Entry> Sorted(std::vector<Entry> entries) {
    std::ranges::sort(entries);
    return entries;
}

} // namespace

TEST(IConvThreads, EachHasDescriptorsOfItsOwn) {
    IConvDesc_t handle = 0;
    ASSERT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle), VEL::StatusOk);
    iconv_t found[Threads][2];
    RunAtOnce([&](int number) {
        found[number][0] = VELSysIConvTSWrap::GetIConvDesc(handle);
        found[number][1] = VELSysIConvTSWrap::GetIConvDesc(handle + 1);
    });
    std::set<iconv_t> different;
    for (const auto& pair : found) {
        different.insert({pair[0], pair[1]});
    }
    EXPECT_EQ(different.size(), 2u * Threads);
    EXPECT_EQ(different.count(None), 0u);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_EQ(Sorted(Closed()), Sorted(Opened()));
}

TEST(IConvThreads, FirstUseIsMadeOnSeveral) {
    constexpr int rounds = 50;
    std::atomic<unsigned int> seen[2 * rounds]{};
    RunAtOnce([&](int number) {
        for (int i = 0; i < rounds; ++i) {
            const std::string name = "set " + std::to_string(i);
            const bool isCrossed = number % 2 != 0;
            IConvDesc_t handle = -77;
            ASSERT_EQ(VELSysIConvTSWrap::Open(isCrossed ? "B" : name.c_str(), isCrossed ? name.c_str() : "B", handle),
                      VEL::StatusOk);
            ASSERT_EQ(handle / 2, i) << "one entry for both directions";
            ++seen[handle];
        }
    });
    for (const auto& count : seen) {
        EXPECT_EQ(count, Threads / 2u);
    }
}

TEST(IConvThreads, RegisterWhileOthersAsk) {
    constexpr int rounds = 300;
    RunAtOnce([](int number) {
        for (int i = 0; i < rounds; ++i) {
            IConvDesc_t handle = -77;
            const std::string name = "ISO-8859-" + std::to_string(1 + (i + number) % 16);
            ASSERT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", name.c_str(), handle), VEL::StatusOk);
            const bool isKnown = name != "ISO-8859-12";
            ASSERT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle) != None, isKnown) << name;
            ASSERT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle + 1) != None, isKnown) << name;
        }
    });
    EXPECT_EQ(Opened().size(), 2u * 15 * Threads);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_EQ(Sorted(Closed()), Sorted(Opened()));
}

TEST(IConvThreads, EndMayMeetFirstRequests) {
    IConvDesc_t handle = 0;
    ASSERT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle), VEL::StatusOk);
    RunAtOnce([handle](int number) {
        if (number == 0) {
            VELSysIConvTSWrap::sDeinitIConvTS(0);
            return;
        }
        IConvDesc_t other = 0;
        VELSysIConvTSWrap::GetIConvDesc(handle);
        VELSysIConvTSWrap::Open("UTF-16LE", "UTF-8", other);
    });
    EXPECT_EQ(Sorted(Closed()), Sorted(Opened()));
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
}
