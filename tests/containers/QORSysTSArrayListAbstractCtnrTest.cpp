#include "QORSysTSArrayListAbstractCtnr.h"
#include "ArrayAllocations.h"
#include "QORSysTSArrayListAbstractCtnrFC.h"
#include "QORSysTSArrayListAbstractCtnrFTS.h"

#include <climits>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <random>
#include <vector>

namespace {

using testing::ElementsAre;

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);
constexpr int Frozen = static_cast<int>(0x80070057u);

using Plain = QORSysTSArrayListAbstractCtnr;
using FC = QORSysTSArrayListAbstractCtnrFC;
using FTS = QORSysTSArrayListAbstractCtnrFTS;

/// What all variants answer alike, made ready for use.
template <class Engine>
struct Ready {
    explicit Ready(int elementSize = sizeof(int)) : engine(elementSize) {
        if constexpr (std::is_same_v<Engine, FC>) {
            engine.UnFreezeContent();
        }
    }
    explicit Ready(const Ready& other) : engine(other.engine) {
        if constexpr (std::is_same_v<Engine, FC>) {
            engine.UnFreezeContent();
        }
    }
    Engine* operator->() { return &engine; }
    VEL::internal::ArrayStorage& Fields() { return engine._storage; }
    int* Elements() { return reinterpret_cast<int*>(Fields().buffer); }
    std::vector<int> Content() { return {Elements(), Elements() + Fields().size}; }
    /// Appends 0, 1, ... up to `count` - 1.
    void Fill(int count) {
        engine.MakeRoom(0, count);
        for (int i = 0; i < count; ++i) {
            Elements()[i] = i;
        }
    }

    Engine engine;
};

template <class Engine>
class AllVariants : public testing::Test {};
using AllEngines = testing::Types<Plain, FC, FTS>;
TYPED_TEST_SUITE(AllVariants, AllEngines);

template <class Engine>
class Guarded : public testing::Test {};
using GuardedEngines = testing::Types<FC, FTS>;
TYPED_TEST_SUITE(Guarded, GuardedEngines);

} // namespace

// What the variants have in common.

TYPED_TEST(AllVariants, StartEmptyWithoutABuffer) {
    const int taken = ArrayAllocations::Taken();
    Ready<TypeParam> engine(12);
    EXPECT_EQ(engine.Fields().buffer, nullptr);
    EXPECT_EQ(engine.Fields().size, 0);
    EXPECT_EQ(engine.Fields().capacity, 0);
    EXPECT_EQ(engine.Fields().elementSize, 12);
    EXPECT_EQ(ArrayAllocations::Taken(), taken);
}

TYPED_TEST(AllVariants, GrowToFourSlotsThenTwofoldOrToWhatIsAskedFor) {
    struct Row {
        int first;
        int added;
        int capacity;
    };
    for (const auto& [first, added, capacity] :
         {Row{0, 1, 4}, Row{0, 4, 4}, Row{0, 5, 5}, Row{4, 1, 8}, Row{4, 4, 8}, Row{4, 5, 9}, Row{4, 9, 13},
          Row{3, 1, 4}, Row{5, 1, 10}, Row{1, 3, 4}, Row{1, 4, 8}}) {
        SCOPED_TRACE(testing::Message() << first << " and " << added);
        Ready<TypeParam> engine;
        engine.Fill(first);
        EXPECT_EQ(engine->MakeRoom(first, added), Ok);
        EXPECT_EQ(engine.Fields().size, first + added);
        EXPECT_EQ(engine.Fields().capacity, capacity);
        EXPECT_EQ(ArrayAllocations::LastSize(), static_cast<std::size_t>(capacity) * sizeof(int));
    }
}

TYPED_TEST(AllVariants, OpenAGapByMovingTheTail) {
    for (const int capacity : {4, 100}) {
        Ready<TypeParam> engine;
        engine->SetCapacity(capacity);
        engine.Fill(4);
        EXPECT_EQ(engine->MakeRoom(1, 3), Ok);
        engine.Elements()[1] = engine.Elements()[2] = engine.Elements()[3] = -1;
        EXPECT_THAT(engine.Content(), ElementsAre(0, -1, -1, -1, 1, 2, 3));
        EXPECT_EQ(engine->MakeRoom(0, 1), Ok);
        engine.Elements()[0] = -2;
        EXPECT_THAT(engine.Content(), ElementsAre(-2, 0, -1, -1, -1, 1, 2, 3));
    }
}

TYPED_TEST(AllVariants, RefuseAGapOutsideOfTheElements) {
    Ready<TypeParam> engine;
    engine.Fill(3);
    for (const int pos : {-1, -2, 4, INT_MAX, INT_MIN}) {
        for (const int count : {0, 1, 2, INT_MAX}) {
            EXPECT_EQ(engine->MakeRoom(pos, count), Failure) << pos << " " << count;
        }
    }
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
    EXPECT_EQ(engine.Fields().capacity, 4);
}

TYPED_TEST(AllVariants, RefuseMoreElementsThanAnIntCounts) {
    Ready<TypeParam> engine(1);
    engine.Fill(1);
    const int taken = ArrayAllocations::Taken();
    EXPECT_EQ(engine->MakeRoom(0, INT_MAX), Failure);
    EXPECT_EQ(engine->MakeRoom(1, INT_MAX), Failure);
    EXPECT_EQ(engine.Fields().size, 1);
    EXPECT_EQ(engine.Fields().capacity, 4);
    EXPECT_EQ(ArrayAllocations::Taken(), taken);
}

TYPED_TEST(AllVariants, StopDoublingAtTheLargestInt) {
    Ready<TypeParam> engine(0);
    engine->MakeRoom(0, INT_MAX / 2 + 2);
    EXPECT_EQ(engine.Fields().capacity, INT_MAX / 2 + 2);
    EXPECT_EQ(engine->MakeRoom(0, 1), Ok);
    EXPECT_EQ(engine.Fields().capacity, INT_MAX);
}

TYPED_TEST(AllVariants, OpenAnEmptyGapWithoutAChange) {
    Ready<TypeParam> engine;
    EXPECT_EQ(engine->MakeRoom(0, 0), Ok);
    EXPECT_EQ(engine.Fields().buffer, nullptr);
    engine.Fill(3);
    const int taken = ArrayAllocations::Taken();
    for (int pos = 0; pos <= 3; ++pos) {
        EXPECT_EQ(engine->MakeRoom(pos, 0), Ok);
    }
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
    EXPECT_EQ(ArrayAllocations::Taken(), taken);
}

TYPED_TEST(AllVariants, CheckIndexesAndHalfOpenRanges) {
    Ready<TypeParam> engine;
    EXPECT_EQ(engine->CheckIndex(0), Failure);
    EXPECT_EQ(engine->CheckRange(0, 0), Failure);
    engine.Fill(3);
    for (int i = -3; i < 6; ++i) {
        EXPECT_EQ(engine->CheckIndex(i), i >= 0 && i < 3 ? Ok : Failure);
        for (int end = -3; end < 6; ++end) {
            EXPECT_EQ(engine->CheckRange(i, end), 0 <= i && i < end && end <= 3 ? Ok : Failure) << i << " " << end;
        }
    }
    for (const int i : {INT_MAX, INT_MIN}) {
        EXPECT_EQ(engine->CheckIndex(i), Failure);
        EXPECT_EQ(engine->CheckRange(0, i), Failure);
        EXPECT_EQ(engine->CheckRange(i, 3), Failure);
    }
}

TYPED_TEST(AllVariants, MoveOverlappingSlots) {
    Ready<TypeParam> engine;
    engine.Fill(6);
    engine->Move(1, 0, 5);
    EXPECT_THAT(engine.Content(), ElementsAre(0, 0, 1, 2, 3, 4));
    engine->Move(0, 2, 4);
    EXPECT_THAT(engine.Content(), ElementsAre(1, 2, 3, 4, 3, 4));
    engine->Move(3, 3, 3);
    EXPECT_THAT(engine.Content(), ElementsAre(1, 2, 3, 4, 3, 4));
}

TYPED_TEST(AllVariants, MoveNothingOutsideOfTheBuffer) {
    Ready<TypeParam> engine;
    engine->Move(0, 0, 1);
    engine.Fill(4);
    struct Row {
        int dst;
        int src;
        int count;
    };
    for (const auto& [dst, src, count] :
         {Row{-1, 0, 1}, Row{0, -1, 1}, Row{4, 0, 1}, Row{0, 4, 1}, Row{1, 0, 4}, Row{0, 1, 4}, Row{1, 2, -1},
          Row{0, 0, INT_MAX}, Row{0, 1, INT_MAX}, Row{INT_MAX, 0, 1}, Row{0, INT_MAX, 1}, Row{INT_MIN, 0, 1},
          Row{0, INT_MIN, 1}, Row{INT_MAX, INT_MAX, INT_MAX}, Row{0, 0, INT_MIN}}) {
        engine->Move(dst, src, count);
        EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3)) << dst << " " << src << " " << count;
    }
}

TYPED_TEST(AllVariants, TakeExactlyTheCapacityAskedFor) {
    Ready<TypeParam> engine;
    engine->SetCapacity(3);
    EXPECT_EQ(engine.Fields().capacity, 3);
    EXPECT_EQ(ArrayAllocations::LastSize(), 3 * sizeof(int));
    engine.Fill(3);
    engine->SetCapacity(10);
    EXPECT_EQ(engine.Fields().capacity, 10);
    engine->SetCapacity(5);
    EXPECT_EQ(engine.Fields().capacity, 5);
    EXPECT_EQ(ArrayAllocations::LastSize(), 5 * sizeof(int));
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
    const int taken = ArrayAllocations::Taken();
    engine->SetCapacity(5);
    EXPECT_EQ(ArrayAllocations::Taken(), taken);
}

TYPED_TEST(AllVariants, KeepTheCapacityWhenLessThanTheSizeIsAskedFor) {
    Ready<TypeParam> engine;
    engine.Fill(3);
    for (const int n : {2, 0, -1, INT_MIN}) {
        engine->SetCapacity(n);
        EXPECT_EQ(engine.Fields().capacity, 4);
    }
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
    Ready<TypeParam> empty;
    empty->SetCapacity(-1);
    EXPECT_EQ(empty.Fields().capacity, 0);
}

TYPED_TEST(AllVariants, FreeTheBufferAtTheEnd) {
    const int live = ArrayAllocations::Live();
    {
        Ready<TypeParam> engine;
        engine.Fill(100);
        engine->SetCapacity(200);
        engine->MakeRoom(0, 300);
        EXPECT_EQ(ArrayAllocations::Live(), live + 1);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(AllVariants, StayWholeWhenMemoryRunsOut) {
    const int live = ArrayAllocations::Live();
    {
        Ready<TypeParam> engine;
        engine.Fill(4);
        {
            const ArrayAllocations::Shortage shortage;
            EXPECT_THROW(engine->MakeRoom(1, 1), std::bad_alloc);
            EXPECT_EQ(engine.Fields().capacity, 8) << "deliberately changed ahead of the allocation";
            EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3));
            EXPECT_THROW(engine->MakeRoom(4, 1), std::bad_alloc)
                << "the slots that the capacity tells of are not there";
            EXPECT_THROW(engine->SetCapacity(8), std::bad_alloc);
            EXPECT_THROW(engine->SetCapacity(100), std::bad_alloc);
            engine->Move(4, 0, 4);
            EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3));
        }
        EXPECT_EQ(engine->MakeRoom(4, 1), Ok);
        engine.Elements()[4] = 4;
        EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3, 4));
        EXPECT_EQ(engine.Fields().capacity, 8) << "what there was no memory for isn't asked for again";
        EXPECT_EQ(ArrayAllocations::LastSize(), 8 * sizeof(int));
        {
            const ArrayAllocations::Shortage shortage;
            EXPECT_THROW(engine->SetCapacity(5), std::bad_alloc);
        }
        EXPECT_EQ(engine.Fields().capacity, 5);
        EXPECT_EQ(engine->MakeRoom(5, 1), Ok);
        EXPECT_EQ(engine.Fields().capacity, 10);
        engine.Elements()[5] = 5;
        EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3, 4, 5));
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(AllVariants, RefuseSlotsOfNegativeSizeAsTheAllocatorDoes) {
    Ready<TypeParam> engine(-8);
    EXPECT_THROW(engine->MakeRoom(0, 1), std::bad_alloc);
    EXPECT_THROW(engine->SetCapacity(10), std::bad_alloc);
    EXPECT_EQ(engine.Fields().size, 0);
}

TYPED_TEST(AllVariants, AgreeWithAPlainModelOverRandomOperations) {
    constexpr bool IsPlain = std::is_same_v<TypeParam, Plain>;
    std::mt19937 random(11);
    const auto number = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
    Ready<TypeParam> engine;
    std::vector<int> model;
    int capacity = 0;
    for (int step = 0; step < 20'000; ++step) {
        const int size = static_cast<int>(model.size());
        switch (number(0, 9)) {
        default: {
            const int pos = number(-1, size + 1);
            const int count = number(0, 6);
            const bool isGood = pos >= 0 && pos <= size;
            ASSERT_EQ(engine->MakeRoom(pos, count), isGood ? Ok : Failure);
            if (isGood) {
                if (capacity < size + count) {
                    capacity = std::max(capacity == 0 ? 4 : 2 * capacity, size + count);
                }
                model.insert(model.begin() + pos, static_cast<std::size_t>(count), step);
                std::fill_n(engine.Elements() + pos, count, step);
            }
            break;
        }
        case 0: {
            const int n = number(-1, 2 * size + 2);
            engine->SetCapacity(n);
            capacity = n < size ? capacity : n;
            break;
        }
        case 1:
            if (number(0, 20) != 0) {
                break;
            }
            if constexpr (IsPlain) {
                const int n = number(0, 2 * size);
                ASSERT_EQ(engine->ReInit(n), Ok);
                capacity = std::max(capacity, n);
            } else {
                engine->ReInit();
                capacity = 0;
            }
            model.clear();
            break;
        case 2:
        case 3:
        case 4: {
            const int first = number(-1, size + 1);
            const int end = number(-1, size + 1);
            const bool isGood = 0 <= first && first < end && end <= size;
            ASSERT_EQ(engine->CheckRange(first, end), isGood ? Ok : Failure);
            if (isGood) {
                engine->Move(first, end, size - end);
                engine.Fields().size -= end - first;
                model.erase(model.begin() + first, model.begin() + end);
            }
            break;
        }
        }
        ASSERT_EQ(engine.Content(), model);
        ASSERT_EQ(engine.Fields().capacity, capacity);
    }
}

// The variant without a guard.

TEST(PlainEngine, KeepsTheOrderOfItsFields) {
    Ready<Plain> engine;
    engine.Fill(3);
    struct {
        int* buffer;
        int size;
        int capacity;
        int elementSize;
    } fields;
    std::memcpy(&fields, &engine.engine, sizeof fields);
    EXPECT_EQ(fields.buffer, engine.Elements());
    EXPECT_EQ(fields.size, 3);
    EXPECT_EQ(fields.capacity, 4);
    EXPECT_EQ(fields.elementSize, 4);
}

TEST(PlainEngine, AnswersWhetherSlotsWereMoved) {
    Plain engine(4);
    EXPECT_EQ(engine.Move(0, 0, 0), Failure) << "there is no buffer";
    EXPECT_EQ(engine.Move(0, 0, 1), Failure);
    engine.MakeRoom(0, 4);
    EXPECT_EQ(engine.Move(0, 1, 3), Ok);
    EXPECT_EQ(engine.Move(0, 0, 0), Ok);
    EXPECT_EQ(engine.Move(4, 4, 0), Ok);
    EXPECT_EQ(engine.Move(0, 1, 4), Failure);
    EXPECT_EQ(engine.Move(1, 1, -1), Failure);
}

TEST(PlainEngine, AnswersWhetherTheCapacityIsAsAsked) {
    Plain engine(4);
    EXPECT_EQ(engine.SetCapacity(0), Ok);
    EXPECT_EQ(engine.SetCapacity(3), Ok);
    EXPECT_EQ(engine.SetCapacity(3), Ok);
    engine.MakeRoom(0, 3);
    EXPECT_EQ(engine.SetCapacity(2), Failure);
    EXPECT_EQ(engine.SetCapacity(-1), Failure);
}

TEST(PlainEngine, FreesTheBufferAtCapacityZero) {
    const int live = ArrayAllocations::Live();
    Plain engine(4);
    engine.SetCapacity(3);
    EXPECT_EQ(engine.SetCapacity(0), Ok);
    EXPECT_EQ(engine._storage.buffer, nullptr);
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TEST(PlainEngine, ReInitKeepsABufferThatSuffices) {
    Ready<Plain> engine;
    engine.Fill(4);
    const int* const elements = engine.Elements();
    for (const int n : {0, 4, -7}) {
        engine.Fields().size = 4;
        EXPECT_EQ(engine->ReInit(n), Ok);
        EXPECT_EQ(engine.Fields().size, 0);
        EXPECT_EQ(engine.Fields().capacity, 4);
        EXPECT_EQ(engine.Elements(), elements);
    }
    EXPECT_EQ(engine->ReInit(5), Ok);
    EXPECT_EQ(engine.Fields().size, 0);
    EXPECT_EQ(engine.Fields().capacity, 5);
}

TEST(PlainEngine, RefusesANegativeGap) {
    Ready<Plain> engine;
    engine.Fill(4);
    for (const int count : {-1, -4, INT_MIN}) {
        EXPECT_EQ(engine->MakeRoom(2, count), Failure);
    }
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3));
}

TEST(PlainEngine, LeavesNoBufferAndNoSizeBehind) {
    alignas(Plain) unsigned char storage[sizeof(Plain)];
    auto* const engine = new (storage) Plain(4);
    engine->MakeRoom(0, 3);
    engine->~Plain();
    void* where = storage;
    // No object lives there any more, so the compiler must not know whose storage is read.
    asm volatile("" : "+r"(where) : : "memory");
    VEL::internal::ArrayStorage fields;
    std::memcpy(&fields, where, sizeof fields);
    EXPECT_EQ(fields.buffer, nullptr);
    EXPECT_EQ(fields.size, 0);
}

// The two variants with a guard.

TYPED_TEST(Guarded, AddRawSlots) {
    Ready<TypeParam> engine;
    engine.Fill(3);
    for (const int n : {0, -1, INT_MIN}) {
        engine->IncreaseLength(n);
        EXPECT_EQ(engine.Fields().size, 3);
    }
    engine->IncreaseLength(INT_MAX);
    EXPECT_EQ(engine.Fields().size, 3);
    const int taken = ArrayAllocations::Taken();
    engine->IncreaseLength(1);
    EXPECT_EQ(engine.Fields().size, 4);
    EXPECT_EQ(ArrayAllocations::Taken(), taken);
    engine->IncreaseLength(1);
    EXPECT_EQ(engine.Fields().size, 5);
    EXPECT_EQ(engine.Fields().capacity, 8);
    engine->IncreaseLength(20);
    EXPECT_EQ(engine.Fields().capacity, 25);
}

TYPED_TEST(Guarded, RefuseABadPlaceWhateverTheCount) {
    Ready<TypeParam> engine;
    engine.Fill(4);
    for (const int pos : {-1, 5, INT_MIN, INT_MAX}) {
        for (const int count : {0, -1, -3, INT_MIN}) {
            EXPECT_EQ(engine->MakeRoom(pos, count), Failure) << pos << " " << count;
        }
    }
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(engine->MakeRoom(4, -1), Ok);
    EXPECT_EQ(engine->MakeRoom(4, 0), Ok);
}

TYPED_TEST(Guarded, MoveElementsForANegativeGapWithinTheBufferOnly) {
    Ready<TypeParam> engine;
    engine.Fill(4);
    EXPECT_EQ(engine->MakeRoom(3, -1), Ok);
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 3, 3));
    EXPECT_EQ(engine->MakeRoom(2, -2), Ok);
    EXPECT_THAT(engine.Content(), ElementsAre(3, 3, 3, 3));
    engine.Elements()[0] = 7;
    for (const int count : {-2, -100, INT_MIN}) {
        EXPECT_EQ(engine->MakeRoom(1, count), Ok);
        EXPECT_EQ(engine->MakeRoom(4, count), Ok) << "nothing stands behind the end";
    }
    EXPECT_THAT(engine.Content(), ElementsAre(7, 3, 3, 3));
}

TYPED_TEST(Guarded, ReAllocateTakesANewBufferOfTheCapacity) {
    Ready<TypeParam> engine;
    const int taken = ArrayAllocations::Taken();
    engine->ReAllocate();
    EXPECT_EQ(ArrayAllocations::Taken(), taken) << "there is no capacity";
    engine.Fill(3);
    const int live = ArrayAllocations::Live();
    const int takenBefore = ArrayAllocations::Taken();
    engine->ReAllocate();
    EXPECT_EQ(ArrayAllocations::Taken(), takenBefore + 1);
    EXPECT_EQ(ArrayAllocations::LastSize(), 4 * sizeof(int));
    EXPECT_EQ(ArrayAllocations::Live(), live);
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
}

TYPED_TEST(Guarded, KeepTheBufferAtCapacityZero) {
    const int live = ArrayAllocations::Live();
    {
        Ready<TypeParam> engine;
        engine->SetCapacity(5);
        const int* const elements = engine.Elements();
        engine->SetCapacity(0);
        EXPECT_EQ(engine.Fields().capacity, 0);
        EXPECT_EQ(engine.Elements(), elements);
        EXPECT_EQ(ArrayAllocations::Live(), live + 1);
        engine.Fill(1);
        EXPECT_EQ(engine.Fields().capacity, 4);
        EXPECT_EQ(ArrayAllocations::Live(), live + 1);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(Guarded, ReInitFreesTheBuffer) {
    Ready<TypeParam> engine;
    const int live = ArrayAllocations::Live();
    engine.Fill(3);
    engine->ReInit();
    EXPECT_EQ(engine.Fields().buffer, nullptr);
    EXPECT_EQ(engine.Fields().size, 0);
    EXPECT_EQ(engine.Fields().capacity, 0);
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(Guarded, ReInitTakesSlotsThatAreAllInUse) {
    Ready<TypeParam> engine;
    const int live = ArrayAllocations::Live();
    engine.Fill(3);
    engine->ReInit(7);
    EXPECT_EQ(engine.Fields().size, 7);
    EXPECT_EQ(engine.Fields().capacity, 7);
    EXPECT_EQ(ArrayAllocations::LastSize(), 7 * sizeof(int));
    EXPECT_EQ(ArrayAllocations::Live(), live + 1);
    engine->ReInit(2);
    EXPECT_EQ(engine.Fields().size, 2);
    EXPECT_EQ(engine.Fields().capacity, 2);
}

TYPED_TEST(Guarded, ReInitToZeroLeavesAnAddressThatIsNeverUsed) {
    const int live = ArrayAllocations::Live();
    {
        Ready<TypeParam> engine;
        engine.Fill(3);
        const char* const buffer = engine.Fields().buffer;
        engine->ReInit(0);
        EXPECT_EQ(engine.Fields().buffer, buffer);
        EXPECT_EQ(engine.Fields().size, 0);
        EXPECT_EQ(engine.Fields().capacity, 0);
        EXPECT_EQ(ArrayAllocations::Live(), live);
        engine->Move(0, 1, 1);
        engine->ReInit(0);
        EXPECT_EQ(ArrayAllocations::Live(), live);
        Ready<TypeParam> copy(engine);
        EXPECT_EQ(copy.Fields().buffer, nullptr);
        engine.Fill(2);
        EXPECT_THAT(engine.Content(), ElementsAre(0, 1));
        engine->ReInit(0);
        engine->ReInit();
        EXPECT_EQ(engine.Fields().buffer, nullptr);
        engine->ReInit(3);
        engine->ReInit(0);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(Guarded, ReInitWithoutMemoryLeavesAnEmptyArray) {
    Ready<TypeParam> engine;
    const int live = ArrayAllocations::Live();
    engine.Fill(3);
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(engine->ReInit(7), std::bad_alloc);
    }
    EXPECT_EQ(engine.Fields().buffer, nullptr);
    EXPECT_EQ(engine.Fields().size, 0);
    EXPECT_EQ(engine.Fields().capacity, 0);
    EXPECT_EQ(ArrayAllocations::Live(), live);
    engine.Fill(3);
    EXPECT_THROW(engine->ReInit(-1), std::bad_alloc);
    EXPECT_THROW(engine->ReInit(INT_MIN), std::bad_alloc);
    EXPECT_EQ(engine.Fields().size, 0);
}

TYPED_TEST(Guarded, CopyTheShapeAndNoElements) {
    Ready<TypeParam> engine(12);
    engine->SetCapacity(10);
    engine->MakeRoom(0, 3);
    const int live = ArrayAllocations::Live();
    {
        Ready<TypeParam> copy(engine);
        EXPECT_NE(copy.Fields().buffer, engine.Fields().buffer);
        EXPECT_EQ(copy.Fields().size, 3);
        EXPECT_EQ(copy.Fields().capacity, 3) << "of the size";
        EXPECT_EQ(copy.Fields().elementSize, 12);
        EXPECT_EQ(ArrayAllocations::LastSize(), 36u);
        EXPECT_EQ(ArrayAllocations::Live(), live + 1);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(Guarded, CopyOfAnEmptyEngineDoesNotShareItsBuffer) {
    const int live = ArrayAllocations::Live();
    {
        Ready<TypeParam> engine;
        engine->SetCapacity(10);
        Ready<TypeParam> copy(engine);
        EXPECT_EQ(copy.Fields().capacity, 0);
        EXPECT_EQ(copy.Fields().buffer, nullptr);
        copy.Fill(1);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(Guarded, CopyWithoutMemoryLeavesNothingBehind) {
    Ready<TypeParam> engine;
    engine.Fill(3);
    const int live = ArrayAllocations::Live();
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(Ready<TypeParam>{engine}, std::bad_alloc);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
    engine->ReAllocate();
}

// The variant with a flag.

TEST(FreezableEngine, RefusesEveryOperationWhileFrozen) {
    Ready<FC> engine;
    engine.Fill(3);
    engine->FreezeContent();
    const VEL::internal::ArrayStorage before = engine.Fields();
    EXPECT_EQ(engine->CheckIndex(0), Frozen);
    EXPECT_EQ(engine->CheckIndex(3), Frozen);
    EXPECT_EQ(engine->CheckRange(0, 1), Frozen);
    EXPECT_EQ(engine->CheckRange(2, 2), Frozen);
    EXPECT_EQ(engine->MakeRoom(0, 1), Frozen);
    EXPECT_EQ(engine->MakeRoom(-1, 1), Frozen);
    engine->ReInit();
    engine->ReInit(0);
    engine->ReInit(9);
    engine->Move(0, 1, 2);
    engine->ReAllocate();
    engine->IncreaseLength(1);
    engine->SetCapacity(100);
    EXPECT_EQ(std::memcmp(&before, &engine.Fields(), sizeof before), 0);
    EXPECT_THAT(engine.Content(), ElementsAre(0, 1, 2));
    engine->UnFreezeContent();
    EXPECT_EQ(engine->CheckIndex(0), Ok);
    EXPECT_EQ(engine->CheckIndex(3), Failure);
    EXPECT_EQ(engine->MakeRoom(0, 1), Ok);
}

TEST(FreezableEngine, FrozenTwiceIsOpenedAtOnce) {
    Ready<FC> engine;
    engine.Fill(1);
    engine->FreezeContent();
    engine->FreezeContent();
    engine->UnFreezeContent();
    EXPECT_EQ(engine->CheckIndex(0), Ok);
    engine->UnFreezeContent();
    EXPECT_EQ(engine->CheckIndex(0), Ok);
}

TEST(FreezableEngine, IsMadeAndCopiedWithTheFlagAsItFindsIt) {
    const auto flagOf = [](int found, const FC* source) {
        alignas(FC) unsigned char storage[sizeof(FC)];
        std::memcpy(storage, &found, sizeof found);
        void* where = storage;
        asm volatile("" : "+r"(where) : : "memory");
        FC* const engine = source != nullptr ? new (where) FC(*source) : new (where) FC(4);
        asm volatile("" : "+r"(where) : : "memory");
        int flag;
        std::memcpy(&flag, where, sizeof flag);
        engine->~FC();
        return flag;
    };
    EXPECT_EQ(flagOf(0, nullptr), 0);
    EXPECT_EQ(flagOf(1, nullptr), 1);
    Ready<FC> source;
    source->FreezeContent();
    EXPECT_EQ(flagOf(0, &source.engine), 0);
    source->UnFreezeContent();
    EXPECT_EQ(flagOf(1, &source.engine), 1);
}
