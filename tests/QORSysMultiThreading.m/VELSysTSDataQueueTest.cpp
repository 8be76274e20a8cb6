#include "VELSysTSDataQueue.h"

#include "FailingAllocation.h"
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

namespace {

constexpr int s_long = 10000;
constexpr int s_short = 30;

static_assert(std::has_virtual_destructor_v<VELSysTSDataQueue>);

int s_numbers[10];

TEST(VELSysTSDataQueueTest, EachEndPushesAndPops) {
    VELSysTSDataQueue queue;
    EXPECT_EQ(queue.Init(0, 0), 0);
    EXPECT_EQ(queue.PushLast(&s_numbers[1], -1), 0);
    EXPECT_EQ(queue.PushLast(&s_numbers[2], -1), 0);
    EXPECT_EQ(queue.PushFirst(&s_numbers[0], -1), 0);
    EXPECT_EQ(queue.Count(), 3);
    void* entry = nullptr;
    EXPECT_EQ(queue.PopFirst(&entry, -1), 0);
    EXPECT_EQ(entry, &s_numbers[0]);
    EXPECT_EQ(queue.PopLast(&entry, -1), 0);
    EXPECT_EQ(entry, &s_numbers[2]);
    EXPECT_EQ(queue.PopLast(&entry, -1), 0);
    EXPECT_EQ(entry, &s_numbers[1]);
    EXPECT_EQ(queue.Count(), 0);
}

TEST(VELSysTSDataQueueTest, AnEmptyQueueAnswersAtOnceWithoutAWait) {
    VELSysTSDataQueue queue;
    for (int milliseconds : {-1, 0}) {
        void* entry = s_numbers;
        EXPECT_EQ(queue.PopLast(&entry, milliseconds), -1);
        EXPECT_EQ(entry, nullptr);
        entry = s_numbers;
        EXPECT_EQ(queue.PopFirst(&entry, milliseconds), -1);
        EXPECT_EQ(entry, nullptr);
    }
}

TEST(VELSysTSDataQueueTest, ANullEntryIsAnEntry) {
    VELSysTSDataQueue queue;
    EXPECT_EQ(queue.PushLast(nullptr, -1), 0);
    void* entry = s_numbers;
    EXPECT_EQ(queue.PopFirst(&entry, -1), 0);
    EXPECT_EQ(entry, nullptr);
}

TEST(VELSysTSDataQueueTest, PopNeedsAPlaceForTheEntry) {
    VELSysTSDataQueue queue;
    queue.PushLast(s_numbers, -1);
    EXPECT_EQ(queue.PopFirst(nullptr, -1), -1);
    EXPECT_EQ(queue.Count(), 1);
}

TEST(VELSysTSDataQueueTest, AFullQueueRefuses) {
    VELSysTSDataQueue queue;
    EXPECT_EQ(queue.Init(2, 0), 0);
    EXPECT_EQ(queue.PushLast(s_numbers, -1), 0);
    EXPECT_EQ(queue.PushFirst(s_numbers, -1), 0);
    EXPECT_EQ(queue.PushLast(s_numbers, -1), -1);
    EXPECT_EQ(queue.PushFirst(s_numbers, s_short), -1);
    EXPECT_EQ(queue.Count(), 2);
}

TEST(VELSysTSDataQueueTest, InitRefusesANegativeLimitAndKeepsTheFormerOne) {
    VELSysTSDataQueue queue;
    queue.Init(1, 0);
    EXPECT_EQ(queue.Init(-1, 0), -1);
    queue.PushLast(s_numbers, -1);
    EXPECT_EQ(queue.PushLast(s_numbers, -1), -1);
    EXPECT_EQ(queue.Init(0, 0), 0);
    EXPECT_EQ(queue.PushLast(s_numbers, -1), 0);
    EXPECT_EQ(queue.Init(1, 0), 0);
    EXPECT_EQ(queue.Count(), 2);
}

TEST(VELSysTSDataQueueTest, TheFactoryMakesAQueueOrRefuses) {
    const std::unique_ptr<VELSysTSDataQueue> queue(VELSysTSDataQueue::CreateEmptyQueue(0, 0));
    ASSERT_NE(queue, nullptr);
    EXPECT_EQ(queue->Count(), 0);
    EXPECT_EQ(VELSysTSDataQueue::CreateEmptyQueue(-1, 0), nullptr);
}

TEST(VELSysTSDataQueueTest, AWaitForAnEntryRunsOut) {
    VELSysTSDataQueue queue;
    void* entry = nullptr;
    const Stopwatch watch;
    EXPECT_EQ(queue.PopFirst(&entry, s_short), -1);
    EXPECT_GE(watch.Elapsed().count(), s_short - 1);
}

TEST(VELSysTSDataQueueTest, AWaitEndsWhenAnEntryComes) {
    VELSysTSDataQueue queue;
    std::thread sender([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(s_short));
        queue.PushLast(s_numbers, -1);
    });
    void* entry = nullptr;
    EXPECT_EQ(queue.PopFirst(&entry, s_long), 0);
    EXPECT_EQ(entry, s_numbers);
    sender.join();
}

TEST(VELSysTSDataQueueTest, AWaitForRoomEndsWhenAnEntryGoes) {
    VELSysTSDataQueue queue;
    queue.Init(1, 0);
    queue.PushLast(&s_numbers[0], -1);
    std::thread receiver([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(s_short));
        void* entry = nullptr;
        queue.PopFirst(&entry, -1);
    });
    EXPECT_EQ(queue.PushLast(&s_numbers[1], s_long), 0);
    receiver.join();
}

TEST(VELSysTSDataQueueTest, AWaitForRoomEndsWhenInitGivesMore) {
    VELSysTSDataQueue queue;
    queue.Init(1, 0);
    queue.PushLast(&s_numbers[0], -1);
    std::thread setter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(s_short));
        EXPECT_EQ(queue.Init(2, 0), 0);
    });
    const Stopwatch watch;
    EXPECT_EQ(queue.PushLast(&s_numbers[1], 6 * s_long), 0);
    EXPECT_LT(watch.Elapsed(), s_promptly);
    setter.join();
}

TEST(VELSysTSDataQueueTest, MemoryShortageRefusesAnEntryAndAQueue) {
    VELSysTSDataQueue queue;
    EXPECT_EQ(SweepAllocations([&](const FailingAllocation& shortage) {
                  const int result = queue.PushLast(s_numbers, -1);
                  EXPECT_EQ(result, shortage.HasFailed() ? -1 : 0);
              }),
              1);
    EXPECT_EQ(queue.Count(), 1);
    const FailingAllocation shortage(1);
    EXPECT_EQ(VELSysTSDataQueue::CreateEmptyQueue(0, 0), nullptr);
}

/// A queue that ends what it still holds, as a private base.
class QueueOfNumbers : private VELSysTSDataQueue {
public:
    QueueOfNumbers() { Init(0, 0); }
    ~QueueOfNumbers() override {
        void* entry = nullptr;
        while (PopLast(&entry, -1) == 0) {
            delete static_cast<int*>(entry);
        }
    }
    void Push(int number) { PushFirst(new int(number), -1); }
};

TEST(VELSysTSDataQueueTest, ADerivedQueueEndsItsEntries) {
    QueueOfNumbers queue;
    queue.Push(1);
    queue.Push(2);
}

TEST(VELSysTSDataQueueTest, EveryEntryArrivesOnce) {
    constexpr int senders = 2;
    constexpr int rounds = 1000;
    VELSysTSDataQueue queue;
    queue.Init(16, 0);
    std::atomic<long> sum{0};
    RunAtOnce(2 * senders, [&](int number) {
        for (int round = 1; round <= rounds; ++round) {
            if (number < senders) {
                EXPECT_EQ(queue.PushLast(new int(round), s_long), 0);
                continue;
            }
            void* entry = nullptr;
            EXPECT_EQ(queue.PopFirst(&entry, s_long), 0);
            const std::unique_ptr<int> value(static_cast<int*>(entry));
            sum += value ? *value : 0;
        }
    });
    EXPECT_EQ(sum, senders * rounds * (rounds + 1) / 2);
    EXPECT_EQ(queue.Count(), 0);
}

} // namespace
