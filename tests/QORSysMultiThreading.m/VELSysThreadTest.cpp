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
    // Three in a ring: each waits for the next, and begins when all are there.
    struct Ring {
        struct Member {
            static int JoinNext(void* data) {
                auto* const self = static_cast<Member*>(data);
                ++self->ring->inside;
                WaitUntil([self] { return self->ring->inside == 3; });
                return self->next->Join();
            }
            VELSysThread thread;
            VELSysThread* next = nullptr;
            Ring* ring = nullptr;
        };
        Member members[3];
        std::atomic<int> inside{0};
    } ring;
    for (int number = 0; number < 3; ++number) {
        Ring::Member& member = ring.members[number];
        member.next = &ring.members[(number + 1) % 3].thread;
        member.ring = &ring;
        member.thread.SetFunction(Ring::Member::JoinNext, &member, 0);
    }
    for (Ring::Member& member : ring.members) {
        member.thread.Run();
    }
    int results = 0;
    for (Ring::Member& member : ring.members) {
        EXPECT_EQ(member.thread.Join(), 0);
        results += member.thread.GetResult();
    }
    EXPECT_EQ(results, -1);
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

/// Joins a thread when the thread that it belongs to ends.
struct ThreadLocalJoiner {
    /// The thread's function: the object is to join `thread`, and the function ends when it `mayEnd`.
    struct Order {
        static int Take(void* order);

        VELSysThread* thread;
        std::atomic<bool> mayEnd{true};
        std::atomic<bool> isJoining{false};
        std::atomic<int> result{7};
    };

    ~ThreadLocalJoiner() {
        if (order) {
            order->isJoining = true;
            order->result = order->thread->Join();
        }
    }

    Order* order = nullptr;
};

thread_local ThreadLocalJoiner t_joiner;

int ThreadLocalJoiner::Order::Take(void* order) {
    auto* const self = static_cast<Order*>(order);
    t_joiner.order = self;
    WaitUntil([self] { return self->mayEnd.load(); });
    return 3;
}

TEST(VELSysThreadTest, AThreadLocalObjectCannotJoinItsThread) {
    VELSysThread thread;
    ThreadLocalJoiner::Order order{&thread};
    thread.SetFunction(ThreadLocalJoiner::Order::Take, &order, 0);
    thread.Run();
    // Nobody joins yet.
    ASSERT_TRUE(WaitUntil([&] { return order.result != 7; }));
    EXPECT_EQ(order.result, -1);
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(thread.GetResult(), 3);
}

TEST(VELSysThreadTest, AThreadLocalObjectCannotJoinItsThreadThatAnotherOneJoins) {
    VELSysThread thread;
    ThreadLocalJoiner::Order order{&thread};
    order.mayEnd = false;
    thread.SetFunction(ThreadLocalJoiner::Order::Take, &order, 0);
    thread.Run();
    std::thread release([&] {
        // Long enough for the join below to be under way.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        order.mayEnd = true;
    });
    EXPECT_EQ(thread.Join(), 0);
    EXPECT_EQ(order.result, -1);
    release.join();
}

TEST(VELSysThreadTest, AThreadLocalObjectAndTheThreadThatItJoinsDoNotWaitForEachOther) {
    struct Pair {
        VELSysThread first;
        VELSysThread second;
        ThreadLocalJoiner::Order order{&second};
    } pair;
    pair.first.SetFunction(ThreadLocalJoiner::Order::Take, &pair.order, 0);
    pair.second.SetFunction(
        [](void* data) {
            auto* const self = static_cast<Pair*>(data);
            WaitUntil([self] { return self->order.isJoining.load(); });
            // Long enough for the first to be within its join.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            return self->first.Join();
        },
        &pair, 0);
    pair.second.Run();
    pair.first.Run();
    EXPECT_EQ(pair.first.Join(), 0);
    EXPECT_EQ(pair.second.Join(), 0);
    EXPECT_EQ(pair.order.result, 0);
    EXPECT_EQ(pair.second.GetResult(), -1);
}

/// Destroys a thread's object when that thread ends.
struct ThreadLocalOwner {
    ~ThreadLocalOwner() {
        delete thread;
        if (isOver) {
            *isOver = true;
        }
    }

    VELSysThread* thread = nullptr;
    std::atomic<bool>* isOver = nullptr;
};

thread_local ThreadLocalOwner t_owner;

TEST(VELSysThreadTest, AThreadLocalObjectMayDestroyItsThreadsObject) {
    struct Self {
        static int HandOver(void* data) {
            auto* const self = static_cast<Self*>(data);
            t_owner.thread = self->thread;
            t_owner.isOver = &self->isOver;
            return 0;
        }
        VELSysThread* thread = new VELSysThread;
        std::atomic<bool> isOver{false};
    } self;
    self.thread->SetFunction(Self::HandOver, &self, 0);
    ASSERT_EQ(self.thread->Run(), 0);
    EXPECT_TRUE(WaitUntil([&] { return self.isOver.load(); }));
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
    const long blocks = CountBlocks();
    EXPECT_EQ(thread.Run(), -1);
    EXPECT_EQ(CountBlocks(), blocks);
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
