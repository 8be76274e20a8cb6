#include "VELStringPool.h"

#include "Child.h"
#include "HeapLog.h"
#include "StringBlocks.h"
#include "VELString.h"
#include "VELSysStatus.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <pthread.h>
#include <thread>

namespace {

using namespace StringBlocks;
using testing::ElementsAre;
using testing::IsEmpty;
using VEL::internal::EnsureStringPool;
using VEL::internal::StringPoolBucket;
using VEL::internal::t_stringPool;

/// Gives the pool blocks of a bucket's largest size until it holds `count` more.
void Fill(std::size_t bucket, int count) {
    for (int i = 0; i < count; ++i) {
        const std::size_t size = (bucket + 1) * 8;
        EnsureStringPool().Give(std::malloc(size), size);
    }
}

std::vector<unsigned int> Counts() {
    std::vector<unsigned int> counts;
    for (const StringPoolBucket& bucket : t_stringPool.buckets) {
        counts.push_back(bucket.count);
    }
    return counts;
}

/// Runs in the destructor of a thread-local object.
struct AtThreadEnd {
    std::function<void()> action;
    ~AtThreadEnd() {
        if (action) {
            action();
        }
    }
};

thread_local AtThreadEnd t_atThreadEnd;

/// A thread whose last act, after its pool has ended, is `late`: what is made first is destroyed last.
void RunThread(const std::function<void()>& body, std::function<void()> late) {
    std::thread([&] {
        t_atThreadEnd.action = std::move(late);
        body();
    }).join();
}

} // namespace

TEST(VELStringPool, StartsWithTwelveEmptyBucketsOfTwoHundredAndFiftySix) {
    std::thread([] {
        EXPECT_FALSE(t_stringPool.initialised);
        const StringPool& pool = EnsureStringPool();
        EXPECT_EQ(&pool, &t_stringPool);
        EXPECT_TRUE(pool.initialised);
        EXPECT_EQ(pool.status, 1);
        EXPECT_EQ(std::size(pool.buckets), 12u);
        for (const StringPoolBucket& bucket : pool.buckets) {
            EXPECT_EQ(bucket.head, nullptr);
            EXPECT_EQ(bucket.count, 0u);
            EXPECT_EQ(bucket.limit, 256u);
        }
    }).join();
}

TEST(VELStringPool, BeginsWithAnyOperation) {
    const std::vector<std::pair<const char*, std::function<void()>>> operations = {
        {"flush", [] { EXPECT_EQ(VELStringPoolFlush(), 0); }},
        {"switch", [] { EXPECT_EQ(VELStringPoolSetForCurrentThrd(1), 1); }},
        {"take", [] { const QORUnicodeString s("abc"); }},
        {"give", [] { t_stringPool.Give(std::malloc(8), 8); }},
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.first);
        std::thread([&] {
            operation.second();
            EXPECT_TRUE(t_stringPool.initialised);
            EXPECT_EQ(t_stringPool.status, 1);
            EXPECT_EQ(t_stringPool.buckets[5].limit, 256u);
        }).join();
    }
}

TEST(VELStringPool, TheEmptyStringLeavesItAlone) {
    std::thread([] {
        const QORUnicodeString s;
        const QORUnicodeString copy(s);
        EXPECT_FALSE(t_stringPool.initialised);
    }).join();
}

TEST(VELStringPool, RoundsRequestsUpToEightBytes) {
    EnsureStringPool();
    for (std::size_t size = 1; size <= 300; ++size) {
        const HeapLog log;
        std::free(t_stringPool.Take(size));
        ASSERT_THAT(log.Requests(), ElementsAre((size + 7) / 8 * 8));
    }
}

TEST(VELStringPool, FindsTheBucketBySizeBeforeRounding) {
    EnsureStringPool();
    for (std::size_t size = 1; size <= 96; ++size) {
        VELStringPoolFlush();
        const std::size_t bucket = (size - 1) / 8;
        void* const block = t_stringPool.Take(size);
        t_stringPool.Give(block, size);
        ASSERT_EQ(t_stringPool.buckets[bucket].count, 1u) << size;
        ASSERT_EQ(static_cast<void*>(t_stringPool.buckets[bucket].head), block);
        const HeapLog log;
        ASSERT_EQ(t_stringPool.Take(size), block) << size;
        ASSERT_EQ(t_stringPool.buckets[bucket].count, 0u);
        ASSERT_THAT(log.Requests(), IsEmpty());
        std::free(block);
    }
}

TEST(VELStringPool, ServesRequestsOfUpToNinetySixBytes) {
    EnsureStringPool();
    VELStringPoolFlush();
    const HeapLog log;
    void* const largest = t_stringPool.Take(96);
    t_stringPool.Give(largest, 96);
    EXPECT_EQ(t_stringPool.buckets[11].count, 1u);
    void* const tooLarge = t_stringPool.Take(97);
    EXPECT_THAT(log.Requests(), ElementsAre(96u, 104u));
    t_stringPool.Give(tooLarge, 97);
    EXPECT_THAT(log.Freed(), ElementsAre(tooLarge));
    EXPECT_THAT(Counts(), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1));
}

TEST(VELStringPool, TakesOutTheBlockPutInLast) {
    EnsureStringPool();
    void* const first = t_stringPool.Take(20);
    void* const second = t_stringPool.Take(20);
    t_stringPool.Give(first, 20);
    t_stringPool.Give(second, 20);
    EXPECT_EQ(t_stringPool.Take(24), second);
    EXPECT_EQ(t_stringPool.Take(17), first);
    std::free(first);
    std::free(second);
}

TEST(VELStringPool, TheTwoHundredAndFiftySeventhBlockOfABucketIsFreed) {
    EnsureStringPool();
    VELStringPoolFlush();
    const HeapLog log;
    Fill(4, 256);
    EXPECT_THAT(log.Freed(), IsEmpty());
    EXPECT_EQ(t_stringPool.buckets[4].count, 256u);
    Fill(4, 1);
    EXPECT_EQ(log.Freed().size(), 1u);
    EXPECT_EQ(t_stringPool.buckets[4].count, 256u);
    EXPECT_EQ(log.Live(), 256u);
    Fill(3, 1);
    EXPECT_EQ(log.Freed().size(), 1u) << "each bucket has its own limit";
}

TEST(VELStringPool, GivingNullDoesNothing) {
    EnsureStringPool();
    VELStringPoolFlush();
    for (const int on : {1, 0}) {
        VELStringPoolSetForCurrentThrd(on);
        const HeapLog log;
        t_stringPool.Give(nullptr, 8);
        t_stringPool.Give(nullptr, 96);
        t_stringPool.Give(nullptr, 97);
        EXPECT_THAT(log.Freed(), IsEmpty());
        EXPECT_THAT(Counts(), testing::Each(0u));
    }
}

TEST(VELStringPool, FlushFreesEverythingAndSaysWhetherThereWasAnything) {
    EnsureStringPool();
    VELStringPoolFlush();
    const HeapLog log;
    for (std::size_t bucket = 0; bucket < 12; ++bucket) {
        Fill(bucket, 3);
    }
    t_stringPool.buckets[2].limit = 9;
    EXPECT_EQ(VELStringPoolFlush(), 1);
    EXPECT_EQ(log.Live(), 0u);
    EXPECT_THAT(Counts(), testing::Each(0u));
    EXPECT_EQ(t_stringPool.buckets[2].limit, 9u) << "limits stay";
    EXPECT_EQ(t_stringPool.buckets[3].limit, 256u);
    EXPECT_EQ(t_stringPool.status, 1);
    EXPECT_EQ(VELStringPoolFlush(), 0);
    VELStringPoolSetForCurrentThrd(0);
    EXPECT_EQ(VELStringPoolFlush(), 0);
    EXPECT_EQ(t_stringPool.status, -1);
}

TEST(VELStringPool, OneBucketIsEnoughForAFlush) {
    for (std::size_t bucket = 0; bucket < 12; ++bucket) {
        VELStringPoolFlush();
        Fill(bucket, 1);
        EXPECT_EQ(VELStringPoolFlush(), 1) << bucket;
    }
}

TEST(VELStringPool, WhileOffEverythingGoesToTheHeap) {
    EnsureStringPool();
    VELStringPoolSetForCurrentThrd(0);
    const HeapLog log;
    void* const block = t_stringPool.Take(20);
    t_stringPool.Give(block, 20);
    EXPECT_THAT(log.Requests(), ElementsAre(24u));
    EXPECT_THAT(log.Freed(), ElementsAre(block));
    EXPECT_THAT(Counts(), testing::Each(0u));
}

struct SwitchRow {
    bool isOn;
    int argument;
    int result;
    bool isOnThen;
    friend void PrintTo(const SwitchRow& row, std::ostream* out) {
        *out << (row.isOn ? "on, " : "off, ") << row.argument;
    }
};

class SwitchOfAThread : public testing::TestWithParam<SwitchRow> {};

TEST_P(SwitchOfAThread, FollowsTheLowByte) {
    const auto [isOn, argument, result, isOnThen] = GetParam();
    EnsureStringPool();
    if (!isOn) {
        ASSERT_EQ(VELStringPoolSetForCurrentThrd(0), 0);
    }
    Fill(4, isOn ? 2 : 0);
    for (StringPoolBucket& bucket : t_stringPool.buckets) {
        bucket.limit = 7;
    }
    const HeapLog log;
    EXPECT_EQ(VELStringPoolSetForCurrentThrd(argument), result);
    EXPECT_EQ(t_stringPool.status, isOnThen ? 1 : -1);
    for (const StringPoolBucket& bucket : t_stringPool.buckets) {
        EXPECT_EQ(bucket.limit, !isOn && isOnThen ? 256u : 7u) << "set by switching on alone";
    }
    EXPECT_EQ(log.Freed().size(), isOn && !isOnThen ? 2u : 0u);
    EXPECT_EQ(t_stringPool.buckets[4].count, isOn && isOnThen ? 2u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Rows, SwitchOfAThread,
                         testing::Values(SwitchRow{true, 1, 1, true}, SwitchRow{true, 0x101, 1, true},
                                         SwitchRow{true, -255, 1, true}, SwitchRow{true, 0, 0, false},
                                         SwitchRow{true, 0x100, 0, false}, SwitchRow{true, 2, 0, false},
                                         SwitchRow{true, -1, 0, false}, SwitchRow{true, 0x102, 0, false},
                                         SwitchRow{false, 0, 1, false}, SwitchRow{false, 0x100, 1, false},
                                         SwitchRow{false, -256, 1, false}, SwitchRow{false, 1, 0, true},
                                         SwitchRow{false, 0x101, 0, true}, SwitchRow{false, 2, 0, true},
                                         SwitchRow{false, -1, 0, true}, SwitchRow{false, 0x17F, 0, true}));

TEST(SwitchOfAThread, ReachesThatThreadOnly) {
    EnsureStringPool();
    std::thread([] { EXPECT_EQ(VELStringPoolSetForCurrentThrd(0), 0); }).join();
    EXPECT_EQ(t_stringPool.status, 1);
    EXPECT_EQ(VELStringPoolSetForCurrentThrd(0), 0);
    std::thread([] { EXPECT_EQ(VELStringPoolSetForCurrentThrd(1), 1); }).join();
    EXPECT_EQ(t_stringPool.status, -1);
}

TEST(SwitchOfAThread, StringInitTurnsItOnAndDeInitOff) {
    EXPECT_EQ(VELStringInit(1), 1);
    EXPECT_EQ(VELStringDeInit(0), 0);
    EXPECT_EQ(t_stringPool.status, -1);
    EXPECT_EQ(VELStringInit(1), 0);
    EXPECT_EQ(t_stringPool.status, 1);
}

// The switch of the process.

CHILD_PROGRAM(TellsWhetherThePoolIsOn) {
    const auto tell = [] {
        const int result = VELStringPoolSetForCurrentThrd(1);
        std::printf("%x %d\n", static_cast<unsigned int>(result), t_stringPool.status);
    };
    tell();
    std::thread(tell).join();
    return 0;
}

CHILD_PROGRAM(TriesAllBytesOnAProcessWithoutPools) {
    for (const int on : {0, 1, 2, -1, 0x100, 0x101}) {
        if (VELStringPoolSetForCurrentThrd(on) != VEL::StatusRefused || t_stringPool.status != -1) {
            std::printf("%d\n", on);
        }
    }
    const QORUnicodeString s("abc");
    return VELStringPoolFlush();
}

CHILD_PROGRAM(ChangesTheEnvironmentBeforeAndAfterFirstUse) {
    setenv("ReplayPurify", "1", 1);
    const int first = VELStringPoolSetForCurrentThrd(1);
    unsetenv("ReplayPurify");
    std::thread([first] {
        std::printf("%d %d\n", first == VEL::StatusRefused, VELStringPoolSetForCurrentThrd(1) == VEL::StatusRefused);
    }).join();
    return 0;
}

struct ProcessRow {
    std::optional<std::string> force;
    std::optional<std::string> replay;
    bool isOn;
    friend void PrintTo(const ProcessRow& row, std::ostream* out) {
        *out << "force " << row.force.value_or("unset") << ", replay " << row.replay.value_or("unset");
    }
};

class SwitchOfTheProcess : public testing::TestWithParam<ProcessRow> {};

TEST_P(SwitchOfTheProcess, FollowsTheEnvironment) {
    ChildSetup setup;
    if (GetParam().force) {
        setup.set["VELStringRecyclePoolForceEnable"] = *GetParam().force;
    }
    if (GetParam().replay) {
        setup.set["ReplayPurify"] = *GetParam().replay;
    }
    const Child child = RunChild("TellsWhetherThePoolIsOn", setup);
    EXPECT_EQ(child.out, GetParam().isOn ? "1 1\n1 1\n" : "80070005 -1\n80070005 -1\n");
    EXPECT_EQ(child.exitCode, 0);
}

std::vector<ProcessRow> ProcessRows() {
    std::vector<ProcessRow> rows = {
        {{}, {}, true},
        {{}, "1", false},
        {{}, "", false},
        {{}, "0", false},
    };
    const std::vector<std::pair<const char*, bool>> forced = {
        {"0", false},
        {"1", true},
        {"", false},
        {"x", false},
        {"12", true},
        {"00", false},
        {" 7", true},
        {"1x", true},
        {"x1", false},
        {"0x10", false},
        {"-1", true},
        {"4294967296", true},
        {"99999999999999999999999", true},
    };
    for (const auto& [value, isOn] : forced) {
        rows.push_back({value, {}, isOn});
        rows.push_back({value, "1", isOn});
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Rows, SwitchOfTheProcess, testing::ValuesIn(ProcessRows()));

TEST(SwitchOfTheProcess, WhenOffRefusesEveryThreadsWish) {
    const Child child = RunChild("TriesAllBytesOnAProcessWithoutPools", {.set = {{"ReplayPurify", "1"}}});
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.exitCode, 0);
}

TEST(SwitchOfTheProcess, IsSettledAtFirstNeedAndKept) {
    EXPECT_EQ(RunChild("ChangesTheEnvironmentBeforeAndAfterFirstUse").out, "1 1\n");
}

// Strings and the pool.

TEST(StringsAndThePool, ShortNarrowStringsDoNotReachTheHeapOnceWarm) {
    const auto makeAll = [] {
        for (std::size_t length = 1; length <= 69; ++length) {
            const QORUnicodeString s(std::string(length, 'a').c_str());
        }
    };
    makeAll();
    const HeapLog log;
    makeAll();
    EXPECT_THAT(log.Requests(), IsEmpty());
    EXPECT_THAT(log.Freed(), IsEmpty());
}

TEST(StringsAndThePool, ABlockReleasedOnAnotherThreadJoinsThatThreadsPool) {
    EnsureStringPool();
    VELStringPoolFlush();
    auto* const s = new QORUnicodeString("abc");
    const Block block = StringAccess::BlockOf(*s);
    std::thread([&] {
        EnsureStringPool();
        delete s;
        EXPECT_EQ(static_cast<void*>(t_stringPool.buckets[3].head), block);
        EXPECT_EQ(t_stringPool.buckets[3].count, 1u);
    }).join();
    EXPECT_EQ(t_stringPool.buckets[3].count, 0u);
}

// The end of a thread.

TEST(EndOfAThread, FreesTheBucketsFromTheLastToTheFirst) {
    std::map<const void*, std::size_t> bucketOf;
    const HeapLog log;
    std::thread([&] {
        StringPool& pool = EnsureStringPool();
        for (std::size_t bucket = 0; bucket < 12; ++bucket) {
            for (int i = 0; i < 3; ++i) {
                void* const block = std::malloc(bucket * 8 + 8);
                bucketOf[block] = bucket;
                pool.Give(block, bucket * 8 + 8);
            }
        }
    }).join();
    std::vector<std::size_t> order;
    for (const void* block : log.Freed()) {
        order.push_back(bucketOf.at(block));
    }
    EXPECT_EQ(order.size(), 36u);
    EXPECT_TRUE(std::is_sorted(order.rbegin(), order.rend()));
    EXPECT_EQ(log.Live(), 0u);
}

TEST(EndOfAThread, LeavesNoBlockOfAFullPool) {
    const HeapLog log;
    std::thread([] {
        for (std::size_t bucket = 0; bucket < 12; ++bucket) {
            Fill(bucket, 300);
        }
    }).join();
    EXPECT_EQ(log.Requests().size(), 12u * 300);
    EXPECT_EQ(log.Live(), 0u);
}

TEST(EndOfAThread, AStringDestroyedLaterGoesStraightToTheHeap) {
    QORUnicodeString kept;
    const HeapLog log;
    RunThread([&] { kept = "abc"; },
              [&] {
                  EXPECT_EQ(t_stringPool.status, -1);
                  EXPECT_THAT(Counts(), testing::Each(0u));
                  const Block block = StringAccess::BlockOf(kept);
                  EXPECT_FALSE(log.HasFreed(block));
                  kept.Reset();
                  EXPECT_TRUE(log.HasFreed(block));
              });
    EXPECT_EQ(log.Live(), 0u);
}

TEST(EndOfAThread, AStringMadeLaterIsFreedToo) {
    const HeapLog log;
    RunThread([] { const QORUnicodeString s("abc"); }, [] { const QORUnicodeString late("late"); });
    EXPECT_EQ(log.Requests().size(), 2u);
    EXPECT_EQ(log.Live(), 0u);
}

TEST(EndOfAThread, APoolSwitchedOnAgainLaterLeavesNothing) {
    const HeapLog log;
    RunThread([] { const QORUnicodeString s("abc"); },
              [] {
                  EXPECT_EQ(VELStringPoolSetForCurrentThrd(1), 0);
                  { const QORUnicodeString late("late"); }
                  EXPECT_EQ(t_stringPool.buckets[3].count, 1u);
              });
    EXPECT_EQ(log.Live(), 0u);
}

TEST(EndOfAThread, APoolFirstUsedLateLeavesNothing) {
    const HeapLog log;
    RunThread([] {},
              [] {
                  EXPECT_FALSE(t_stringPool.initialised);
                  const QORUnicodeString late("late");
              });
    EXPECT_EQ(log.Requests().size(), 1u);
    EXPECT_EQ(log.Live(), 0u);
}

TEST(EndOfAThread, AStringDestroyedByAThreadKeyIsFreed) {
    pthread_key_t key;
    ASSERT_EQ(pthread_key_create(&key, [](void* s) { delete static_cast<QORUnicodeString*>(s); }), 0);
    const HeapLog log;
    std::thread([key] { pthread_setspecific(key, new QORUnicodeString("abc")); }).join();
    EXPECT_EQ(log.Requests().size(), 1u);
    EXPECT_EQ(log.Live(), 0u);
    pthread_key_delete(key);
}
