#include "VELSysThread.h"

#include "FailingAllocation.h"
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>

namespace {

/// A function that runs until it is let go.
struct Gate {
    static int Wait(void* gate) {
        auto* const self = static_cast<Gate*>(gate);
        self->isInside = true;
        WaitUntil([self] { return self->isOpen.load(); });
        return 5;
    }

    std::atomic<bool> isInside{false};
    std::atomic<bool> isOpen{false};
};

int Increment(void* number) {
    return ++*static_cast<int*>(number);
}

TEST(VELSysThreadTest, RunsItsFunctionWithTheData) {
    int number = 6;
    VELSysThread thread;
    EXPECT_EQ(thread.SetFunction(Increment, &number, 0), 0);
    EXPECT_EQ(number, 6);
    EXPECT_EQ(thread.Run(), 0);
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(thread.GetResult(), 7);
}

TEST(VELSysThreadTest, TheFunctionRunsOnAThreadOfItsOwn) {
    pthread_t seen = pthread_self();
    VELSysThread thread;
    thread.SetFunction(
        [](void* place) {
            *static_cast<pthread_t*>(place) = pthread_self();
            return 0;
        },
        &seen, 0);
    thread.Run();
    thread.Join();
    EXPECT_FALSE(pthread_equal(seen, pthread_self()));
}

TEST(VELSysThreadTest, CanBeRunAgain) {
    int number = 0;
    VELSysThread thread;
    thread.SetFunction(Increment, &number, 0);
    for (int round = 1; round <= 3; ++round) {
        EXPECT_EQ(thread.Run(), 0);
        EXPECT_EQ(thread.Join(), 0);
        EXPECT_EQ(number, round);
    }
}

TEST(VELSysThreadTest, CanBeRunAgainWithoutAJoin) {
    int number = 0;
    VELSysThread thread;
    thread.SetFunction(Increment, &number, 0);
    EXPECT_EQ(thread.Run(), 0);
    EXPECT_TRUE(WaitUntil([&] { return !thread.IsRunning(); }));
    EXPECT_EQ(thread.Run(), 0);
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(number, 2);
}

TEST(VELSysThreadTest, WithoutAFunctionItDoesNotRun) {
    VELSysThread thread;
    EXPECT_EQ(thread.Run(), -1);
    EXPECT_EQ(thread.SetFunction(nullptr, nullptr, 0), -1);
    EXPECT_EQ(thread.Run(), -1);
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.GetResult(), 0);
}

TEST(VELSysThreadTest, ANullFunctionKeepsTheFormerOne) {
    int number = 0;
    VELSysThread thread;
    thread.SetFunction(Increment, &number, 0);
    EXPECT_EQ(thread.SetFunction(nullptr, nullptr, 0), -1);
    EXPECT_EQ(thread.Run(), 0);
    thread.Join();
    EXPECT_EQ(number, 1);
}

TEST(VELSysThreadTest, ARunningThreadIsNotRunTwice) {
    Gate gate;
    VELSysThread thread;
    thread.SetFunction(Gate::Wait, &gate, 0);
    EXPECT_EQ(thread.Run(), 0);
    EXPECT_EQ(thread.Run(), -1);
    EXPECT_TRUE(thread.IsRunning());
    EXPECT_EQ(thread.GetResult(), 0);
    gate.isOpen = true;
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.GetResult(), 5);
}

TEST(VELSysThreadTest, JoinWithoutARunEndsAtOnce) {
    VELSysThread thread;
    EXPECT_EQ(thread.Join(), 0);
    int number = 0;
    thread.SetFunction(Increment, &number, 0);
    thread.Run();
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(thread.Join(), 0);
}

TEST(VELSysThreadTest, TheThreadCannotJoinItself) {
    VELSysThread thread;
    thread.SetFunction([](void* self) { return static_cast<VELSysThread*>(self)->Join(); }, &thread, 0);
    thread.Run();
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(thread.GetResult(), -1);
}

TEST(VELSysThreadTest, OfThreadsThatJoinEachOtherOneIsRefused) {
    // Three in a ring: each waits for the next.
    VELSysThread threads[3];
    for (int number = 0; number < 3; ++number) {
        threads[number].SetFunction([](void* next) { return static_cast<VELSysThread*>(next)->Join() == 0 ? 1 : 2; },
                                    &threads[(number + 1) % 3], 0);
    }
    for (VELSysThread& thread : threads) {
        thread.Run();
    }
    for (VELSysThread& thread : threads) {
        EXPECT_EQ(thread.Join(), 0);
    }
    for (VELSysThread& thread : threads) {
        EXPECT_NE(thread.GetResult(), 0);
    }
}

TEST(VELSysThreadTest, ARingOfJoinsIsBrokenByTheLastOne) {
    struct Pair {
        VELSysThread first;
        VELSysThread second;
        Gate gate;
    } pair;
    pair.first.SetFunction(
        [](void* data) {
            auto* const self = static_cast<Pair*>(data);
            self->gate.isInside = true;
            return self->second.Join();
        },
        &pair, 0);
    pair.second.SetFunction(
        [](void* data) {
            auto* const self = static_cast<Pair*>(data);
            WaitUntil([self] { return self->gate.isInside.load(); });
            // Long enough for the first to be within its join.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            return self->first.Join();
        },
        &pair, 0);
    pair.second.Run();
    pair.first.Run();
    EXPECT_EQ(pair.first.Join(), 0);
    EXPECT_EQ(pair.second.Join(), 0);
    EXPECT_EQ(pair.first.GetResult(), 0);
    EXPECT_EQ(pair.second.GetResult(), -1);
}

TEST(VELSysThreadTest, SeveralThreadsMayJoin) {
    Gate gate;
    VELSysThread thread;
    thread.SetFunction(Gate::Wait, &gate, 0);
    thread.Run();
    RunAtOnce(4, [&](int number) {
        if (number == 0) {
            gate.isOpen = true;
        }
        EXPECT_EQ(thread.Join(), 0);
        EXPECT_EQ(thread.GetResult(), 5);
    });
}

TEST(VELSysThreadTest, TheDestructorJoins) {
    int number = 0;
    {
        VELSysThread thread;
        thread.SetFunction(
            [](void* data) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                return Increment(data);
            },
            &number, 0);
        thread.Run();
    }
    EXPECT_EQ(number, 1);
}

TEST(VELSysThreadTest, AThreadMayDestroyItsOwnObject) {
    struct Self {
        VELSysThread* thread;
        std::atomic<bool> isOver{false};
    } self;
    self.thread = new VELSysThread;
    self.thread->SetFunction(
        [](void* data) {
            auto* const owner = static_cast<Self*>(data);
            delete owner->thread;
            owner->isOver = true;
            return 0;
        },
        &self, 0);
    ASSERT_EQ(self.thread->Run(), 0);
    EXPECT_TRUE(WaitUntil([&] { return self.isOver.load(); }));
}

TEST(VELSysThreadTest, TheStackHasTheSizeAskedFor) {
    // More than a thread gets that asks for nothing.
    constexpr unsigned long size = 64UL << 20;
    unsigned long seen = 0;
    VELSysThread thread;
    thread.SetFunction(
        [](void* place) {
            pthread_attr_t attributes;
            pthread_getattr_np(pthread_self(), &attributes);
            pthread_attr_getstacksize(&attributes, static_cast<unsigned long*>(place));
            pthread_attr_destroy(&attributes);
            return 0;
        },
        &seen, size);
    EXPECT_EQ(thread.Run(), 0);
    thread.Join();
    EXPECT_GE(seen, size);
}

TEST(VELSysThreadTest, ATinyStackIsRaisedToWhatThePlatformNeeds) {
    int number = 0;
    VELSysThread thread;
    thread.SetFunction(Increment, &number, 1);
    EXPECT_EQ(thread.Run(), 0);
    thread.Join();
    EXPECT_EQ(number, 1);
}

TEST(VELSysThreadTest, AStackThatThePlatformCannotGiveIsRefused) {
    int number = 0;
    VELSysThread thread;
    thread.SetFunction(Increment, &number, 1UL << 60);
    EXPECT_EQ(thread.Run(), -1);
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_EQ(thread.Join(), 0);
    thread.SetFunction(Increment, &number, 0);
    EXPECT_EQ(thread.Run(), 0);
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(number, 1);
}

TEST(VELSysThreadTest, MemoryShortageRefusesARun) {
    int number = 0;
    VELSysThread thread;
    thread.SetFunction(Increment, &number, 0);
    {
        const FailingAllocation shortage(1);
        EXPECT_EQ(thread.Run(), -1);
    }
    EXPECT_EQ(thread.Run(), 0);
    EXPECT_EQ(thread.Join(), 0);
}

TEST(VELSysThreadTest, ThreadsRunAndJoinOneObjectAtOnce) {
    std::atomic<int> runs{0};
    std::atomic<int> started{0};
    VELSysThread thread;
    thread.SetFunction(
        [](void* data) {
            ++*static_cast<std::atomic<int>*>(data);
            return 0;
        },
        &runs, 0);
    RunAtOnce(4, [&](int) {
        for (int round = 0; round < 50; ++round) {
            started += thread.Run() == 0;
            EXPECT_EQ(thread.Join(), 0);
            thread.IsRunning();
            thread.GetResult();
        }
    });
    EXPECT_EQ(runs, started);
    EXPECT_GE(started, 50);
}

TEST(VELSysThreadWaitWithTimeOutTest, AnswersTheFirstAnswerThatIsNotZero) {
    int calls = 0;
    const auto fifth = [](void* data) { return ++*static_cast<int*>(data) < 5 ? 0 : -1; };
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(10000, fifth, &calls, nullptr, nullptr), -1);
    EXPECT_EQ(calls, 5);
}

TEST(VELSysThreadWaitWithTimeOutTest, AnswersZeroWhenTheTimeHasRunOut) {
    constexpr int milliseconds = 50;
    const Stopwatch watch;
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(
                  milliseconds, [](void*) { return 0; }, nullptr, nullptr, nullptr),
              0);
    EXPECT_GE(watch.Elapsed().count(), milliseconds - 1);
    EXPECT_LT(watch.Elapsed(), s_promptly);
}

TEST(VELSysThreadWaitWithTimeOutTest, WithoutTimeItAsksOnce) {
    int calls = 0;
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(
                  0, [](void* data) { return ++*static_cast<int*>(data) * 0; }, &calls, nullptr, nullptr),
              0);
    EXPECT_EQ(calls, 1);
}

TEST(VELSysThreadWaitWithTimeOutTest, ANegativeTimeWaitsUntilTheConditionHolds) {
    int calls = 0;
    const auto third = [](void* data) { return ++*static_cast<int*>(data) < 3 ? 0 : 7; };
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(-1, third, &calls, nullptr, nullptr), 7);
}

TEST(VELSysThreadWaitWithTimeOutTest, ANullConditionEndsAtOnce) {
    const Stopwatch watch;
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(60000, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(-1, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_LT(watch.Elapsed(), s_promptly);
}

TEST(VELSysThreadWaitWithTimeOutTest, TheIdleFunctionIsCalledBeforeEachSleep) {
    int calls = 0;
    int idles = 0;
    const auto third = [](void* data) { return ++*static_cast<int*>(data) < 3 ? 0 : 1; };
    EXPECT_EQ(VELSysThreadWaitWithTimeOut(
                  -1, third, &calls, [](void* data) { ++*static_cast<int*>(data); }, &idles),
              1);
    EXPECT_EQ(idles, 2);
}

TEST(VELSysThreadWaitWithTimeOutTest, SeesWhatAnotherThreadDoes) {
    std::atomic<int> ready{0};
    std::thread other([&] { ready = 1; });
    EXPECT_EQ(
        VELSysThreadWaitWithTimeOut(
            10000, [](void* data) { return static_cast<std::atomic<int>*>(data)->load(); }, &ready, nullptr, nullptr),
        1);
    other.join();
}

} // namespace
