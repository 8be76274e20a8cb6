#include "VELSysTSVector.h"

#include "FailingAllocation.h"
#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

int s_numbers[100];

/// The indexes into `s_numbers` of the elements, in the order of the walk.
std::vector<long> Walk(const VELSysTSVector& vector) {
    std::vector<long> indexes;
    for (void* const element : vector) {
        indexes.push_back(static_cast<int*>(element) - s_numbers);
    }
    return indexes;
}

int InsertAt(VELSysTSVector& vector, int index) {
    void* existing = nullptr;
    return vector.TryInsertAt(index, &s_numbers[index], existing);
}

TEST(VELSysTSVectorTest, AnEmptySlotTakesTheValue) {
    VELSysTSVector vector(3);
    void* existing = s_numbers;
    EXPECT_EQ(vector.TryInsertAt(1, &s_numbers[1], existing), 1);
    EXPECT_EQ(existing, nullptr);
    EXPECT_EQ(vector.GetElementAt(1), &s_numbers[1]);
    EXPECT_EQ(vector.GetElementAt(0), nullptr);
}

TEST(VELSysTSVectorTest, AnOccupiedSlotTellsItsElement) {
    VELSysTSVector vector(3);
    void* existing = nullptr;
    InsertAt(vector, 1);
    EXPECT_EQ(vector.TryInsertAt(1, &s_numbers[2], existing), 0);
    EXPECT_EQ(existing, &s_numbers[1]);
    EXPECT_EQ(vector.TryInsertAt(1, &s_numbers[1], existing), 0);
    EXPECT_EQ(existing, &s_numbers[1]);
    EXPECT_EQ(vector.GetElementAt(1), &s_numbers[1]);
}

TEST(VELSysTSVectorTest, ASlotThatDoesNotExistIsAFailure) {
    VELSysTSVector vector(3);
    for (int index : {-1, 3}) {
        void* existing = s_numbers;
        EXPECT_EQ(vector.TryInsertAt(index, s_numbers, existing), -1);
        EXPECT_EQ(existing, nullptr);
        EXPECT_EQ(vector.GetElementAt(index), nullptr);
    }
}

TEST(VELSysTSVectorTest, ANullValueIsAFailure) {
    VELSysTSVector vector(3);
    void* existing = nullptr;
    EXPECT_EQ(vector.TryInsertAt(0, nullptr, existing), -1);
}

TEST(VELSysTSVectorTest, AVectorWithoutSlotsIsEmpty) {
    for (int size : {0, -4}) {
        VELSysTSVector vector(size);
        EXPECT_EQ(vector.GetSize(), 0);
        EXPECT_EQ(vector.begin(), vector.end());
        vector.Clear();
        const std::unique_ptr<VELSysTSVector> copy(vector.Duplicate());
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy->GetSize(), 0);
    }
}

TEST(VELSysTSVectorTest, TheIteratorVisitsTheFilledSlotsByRisingIndex) {
    VELSysTSVector vector(10);
    EXPECT_THAT(Walk(vector), IsEmpty());
    InsertAt(vector, 9);
    InsertAt(vector, 0);
    InsertAt(vector, 4);
    EXPECT_THAT(Walk(vector), ElementsAre(0, 4, 9));
}

TEST(VELSysTSVectorTest, BothIncrementsStep) {
    VELSysTSVector vector(10);
    InsertAt(vector, 2);
    InsertAt(vector, 5);
    VELSysTSVector::iterator position = vector.begin();
    const VELSysTSVector::iterator copy = position;
    EXPECT_EQ(*position++, &s_numbers[2]);
    EXPECT_EQ(*position, &s_numbers[5]);
    EXPECT_NE(position, copy);
    EXPECT_EQ(*++position, nullptr);
    EXPECT_EQ(position, vector.end());
    EXPECT_EQ(++position, vector.end());
}

TEST(VELSysTSVectorTest, PositionsOfDifferentVectorsDiffer) {
    VELSysTSVector first(1);
    VELSysTSVector second(1);
    EXPECT_NE(first.end(), second.end());
    EXPECT_EQ(*VELSysTSVector::iterator(), nullptr);
    EXPECT_EQ(++VELSysTSVector::iterator(), VELSysTSVector::iterator());
}

TEST(VELSysTSVectorTest, TheEndStaysTheEndWhenTheVectorGrows) {
    VELSysTSVector vector(2);
    const VELSysTSVector::iterator end = vector.end();
    vector.Reallocate(20);
    EXPECT_EQ(vector.end(), end);
}

TEST(VELSysTSVectorTest, DuplicateIsIndependent) {
    VELSysTSVector vector(5);
    InsertAt(vector, 3);
    const std::unique_ptr<VELSysTSVector> copy(vector.Duplicate());
    ASSERT_NE(copy, nullptr);
    vector.Clear();
    EXPECT_EQ(copy->GetSize(), 5);
    EXPECT_THAT(Walk(*copy), ElementsAre(3));
    InsertAt(*copy, 1);
    EXPECT_THAT(Walk(vector), IsEmpty());
}

TEST(VELSysTSVectorTest, ClearEmptiesAllSlotsAndKeepsThem) {
    VELSysTSVector vector(5);
    InsertAt(vector, 0);
    InsertAt(vector, 4);
    vector.Clear();
    EXPECT_THAT(Walk(vector), IsEmpty());
    EXPECT_EQ(vector.GetSize(), 5);
    EXPECT_EQ(InsertAt(vector, 4), 1);
}

TEST(VELSysTSVectorTest, ReallocateKeepsElementsAtTheirIndex) {
    VELSysTSVector vector(4);
    InsertAt(vector, 1);
    InsertAt(vector, 3);
    EXPECT_EQ(vector.Reallocate(8), 0);
    EXPECT_EQ(vector.GetSize(), 8);
    EXPECT_THAT(Walk(vector), ElementsAre(1, 3));
    EXPECT_EQ(InsertAt(vector, 7), 1);
    EXPECT_EQ(vector.Reallocate(2), 0);
    EXPECT_EQ(vector.GetSize(), 2);
    EXPECT_THAT(Walk(vector), ElementsAre(1));
    EXPECT_EQ(vector.Reallocate(2), 0);
    EXPECT_EQ(vector.Reallocate(-1), 0);
    EXPECT_EQ(vector.GetSize(), 0);
    EXPECT_EQ(vector.Reallocate(3), 0);
    EXPECT_EQ(vector.GetSize(), 3);
}

TEST(VELSysTSVectorTest, MemoryShortageIsRefusedAndChangesNothing) {
    VELSysTSVector vector(4);
    InsertAt(vector, 1);
    EXPECT_EQ(SweepAllocations([&](const FailingAllocation& shortage) {
                  const int result = vector.Reallocate(8);
                  EXPECT_EQ(result, shortage.HasFailed() ? -1 : 0);
                  EXPECT_EQ(vector.GetSize(), shortage.HasFailed() ? 4 : 8);
              }),
              2);
    EXPECT_EQ(vector.GetElementAt(1), &s_numbers[1]);
    EXPECT_EQ(SweepAllocations([&](const FailingAllocation& shortage) {
                  const std::unique_ptr<VELSysTSVector> copy(vector.Duplicate());
                  EXPECT_EQ(copy == nullptr, shortage.HasFailed());
              }),
              3);
}

TEST(VELSysTSVectorTest, AVectorWithoutMemoryForItsSlotsHasNone) {
    const FailingAllocation shortage(1);
    VELSysTSVector vector(4);
    EXPECT_EQ(vector.GetSize(), 0);
    EXPECT_EQ(InsertAt(vector, 0), -1);
}

TEST(VELSysTSVectorTest, OneOfManyThreadsGetsASlot) {
    constexpr int size = 100;
    VELSysTSVector vector(size);
    std::atomic<int> stored{0};
    std::atomic<int> mismatches{0};
    RunAtOnce(4, [&](int) {
        for (int index = 0; index < size; ++index) {
            auto number = std::make_unique<int>(index);
            void* existing = nullptr;
            if (vector.TryInsertAt(index, number.get(), existing) == 1) {
                ++stored;
                number.release();
                continue;
            }
            mismatches += *static_cast<int*>(existing) != index;
        }
    });
    EXPECT_EQ(stored, size);
    EXPECT_EQ(mismatches, 0);
    for (void* const element : vector) {
        delete static_cast<int*>(element);
    }
}

TEST(VELSysTSVectorTest, ReadersAndWritersStaySafeWhileTheVectorGrows) {
    VELSysTSVector vector(100);
    RunAtOnce(4, [&](int number) {
        if (number == 0) {
            for (int size = 100; size < 2000; size += 100) {
                vector.Reallocate(size);
            }
            return;
        }
        for (int round = 0; round < 20; ++round) {
            for (int index = 0; index < 100; ++index) {
                InsertAt(vector, index);
                void* const element = vector.GetElementAt(index);
                EXPECT_TRUE(!element || element == &s_numbers[index]);
            }
            Walk(vector);
        }
    });
    EXPECT_EQ(vector.GetSize(), 1900);
}

} // namespace
