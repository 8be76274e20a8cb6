#include "VELSysRingBuffer.h"

#include "FailingAllocation.h"
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

struct RingDeleter {
    void operator()(VELSysRingBuffer* ring) const { VELSysRingBufferFree(ring); }
};
using Ring = std::unique_ptr<VELSysRingBuffer, RingDeleter>;

int s_numbers[1000];

TEST(VELSysRingBufferTest, EntriesLeaveInTheOrderTheyCame) {
    const Ring ring(VELSysRingBufferAlloc(3));
    ASSERT_NE(ring, nullptr);
    void* entry = nullptr;
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(VELSysRingBufferPush(ring.get(), &s_numbers[0]), 0);
        EXPECT_EQ(VELSysRingBufferPush(ring.get(), &s_numbers[1]), 0);
        EXPECT_EQ(VELSysRingBufferPop(ring.get(), &entry), 0);
        EXPECT_EQ(entry, &s_numbers[0]);
        EXPECT_EQ(VELSysRingBufferPop(ring.get(), &entry), 0);
        EXPECT_EQ(entry, &s_numbers[1]);
    }
}

TEST(VELSysRingBufferTest, PopStoresNullWhenNothingIsLeft) {
    const Ring ring(VELSysRingBufferAlloc(1));
    void* entry = s_numbers;
    EXPECT_EQ(VELSysRingBufferPop(ring.get(), &entry), -1);
    EXPECT_EQ(entry, nullptr);
}

TEST(VELSysRingBufferTest, AFullRingRefusesAndKeepsItsEntries) {
    const Ring ring(VELSysRingBufferAlloc(512));
    for (int index = 0; index < 512; ++index) {
        EXPECT_EQ(VELSysRingBufferPush(ring.get(), &s_numbers[index]), 0);
    }
    EXPECT_EQ(VELSysRingBufferPush(ring.get(), &s_numbers[512]), -1);
    void* entry = nullptr;
    for (int index = 0; index < 512; ++index) {
        EXPECT_EQ(VELSysRingBufferPop(ring.get(), &entry), 0);
        EXPECT_EQ(entry, &s_numbers[index]);
    }
    EXPECT_EQ(VELSysRingBufferPop(ring.get(), &entry), -1);
}

TEST(VELSysRingBufferTest, IsEmptyAnswersZeroForYesAndMinusOneForNo) {
    const Ring ring(VELSysRingBufferAlloc(2));
    EXPECT_EQ(VELSysRingBufferIsEmpty(ring.get()), 0);
    VELSysRingBufferPush(ring.get(), s_numbers);
    EXPECT_EQ(VELSysRingBufferIsEmpty(ring.get()), -1);
    VELSysRingBufferPush(ring.get(), s_numbers);
    EXPECT_EQ(VELSysRingBufferIsEmpty(ring.get()), -1);
    void* entry = nullptr;
    VELSysRingBufferPop(ring.get(), &entry);
    VELSysRingBufferPop(ring.get(), &entry);
    EXPECT_EQ(VELSysRingBufferIsEmpty(ring.get()), 0);
}

TEST(VELSysRingBufferTest, NullArgumentsAreRefused) {
    const Ring ring(VELSysRingBufferAlloc(2));
    void* entry = s_numbers;
    EXPECT_EQ(VELSysRingBufferPush(nullptr, s_numbers), -1);
    EXPECT_EQ(VELSysRingBufferPush(ring.get(), nullptr), -1);
    EXPECT_EQ(VELSysRingBufferIsEmpty(ring.get()), 0);
    EXPECT_EQ(VELSysRingBufferPop(nullptr, &entry), -1);
    EXPECT_EQ(entry, nullptr);
    EXPECT_EQ(VELSysRingBufferPop(ring.get(), nullptr), -1);
    EXPECT_EQ(VELSysRingBufferIsEmpty(nullptr), 0);
    VELSysRingBufferFree(nullptr);
}

TEST(VELSysRingBufferTest, ARingNeedsACapacity) {
    EXPECT_EQ(VELSysRingBufferAlloc(0), nullptr);
    EXPECT_EQ(VELSysRingBufferAlloc(-1), nullptr);
}

TEST(VELSysRingBufferTest, MemoryShortageGivesNoRing) {
    EXPECT_EQ(SweepAllocations([](const FailingAllocation& shortage) {
                  const Ring ring(VELSysRingBufferAlloc(512));
                  EXPECT_EQ(ring == nullptr, shortage.HasFailed());
              }),
              2);
}

TEST(VELSysRingBufferTest, NothingIsAllocatedAfterTheRingWasMade) {
    const Ring ring(VELSysRingBufferAlloc(4));
    const FailingAllocation shortage(1);
    for (int index = 0; index < 4; ++index) {
        EXPECT_EQ(VELSysRingBufferPush(ring.get(), s_numbers), 0);
    }
    EXPECT_FALSE(shortage.HasFailed());
}

TEST(VELSysRingBufferTest, EveryEntryArrivesOnce) {
    constexpr int rounds = 2000;
    const Ring ring(VELSysRingBufferAlloc(8));
    std::atomic<long> sum{0};
    std::atomic<int> left{2 * rounds};
    RunAtOnce(4, [&](int number) {
        if (number < 2) {
            for (int round = 1; round <= rounds; ++round) {
                int* const entry = new int(round);
                while (VELSysRingBufferPush(ring.get(), entry) != 0) {
                    std::this_thread::yield();
                }
            }
            return;
        }
        while (left > 0) {
            void* entry = nullptr;
            if (VELSysRingBufferIsEmpty(ring.get()) == 0 || VELSysRingBufferPop(ring.get(), &entry) != 0) {
                std::this_thread::yield();
                continue;
            }
            const std::unique_ptr<int> value(static_cast<int*>(entry));
            sum += *value;
            --left;
        }
    });
    EXPECT_EQ(sum, 2L * rounds * (rounds + 1) / 2);
}

} // namespace
