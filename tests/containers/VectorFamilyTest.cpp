/// @file
/// What every array container does, on all of them.

#include "ArrayAllocations.h"
#include "VectorInstances.h"

#include <climits>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using namespace VectorInstances;
using testing::ElementsAre;
using testing::IsEmpty;

/// Indexes at which nothing stands and nothing can be inserted, for a length of 3.
constexpr int BadPlaces[] = {-1, -2, 4, INT_MAX, INT_MIN};

} // namespace

template <class Vector>
class VectorFamily : public testing::Test {
protected:
    using Element = typename Vector::Element;
    static Element M(int number) { return Make<Vector>(number); }
    static Vector F(std::initializer_list<int> numbers) { return Filled<Vector>(numbers); }
};
TYPED_TEST_SUITE(VectorFamily, All);

// Construction and storage.

TYPED_TEST(VectorFamily, StartsEmptyWithoutABuffer) {
    const int taken = ArrayAllocations::Taken();
    const TypeParam vector;
    EXPECT_EQ(vector.GetLength(), 0);
    EXPECT_TRUE(vector.IsEmpty());
    EXPECT_EQ(vector.pT(0), nullptr);
    EXPECT_EQ(CapacityOf(vector), 0);
    EXPECT_EQ(Fields(vector).elementSize, static_cast<int>(sizeof(typename TypeParam::Element)));
    EXPECT_EQ(ArrayAllocations::Taken(), taken);
}

TYPED_TEST(VectorFamily, CountsItsElements) {
    const TypeParam vector = this->F({7, 8, 9});
    EXPECT_EQ(vector.GetLength(), 3);
    EXPECT_FALSE(vector.IsEmpty());
}

TYPED_TEST(VectorFamily, CopyHasTheElementsAndTheCapacity) {
    TypeParam vector = this->F({1, 2, 3});
    vector.SetCapacity(50);
    TypeParam copy(vector);
    EXPECT_THAT(Content(copy), ElementsAre(1, 2, 3));
    EXPECT_EQ(CapacityOf(copy), 50);
    EXPECT_EQ(vector.Set(0, this->M(9)), Ok);
    EXPECT_THAT(Content(copy), ElementsAre(1, 2, 3));
}

TYPED_TEST(VectorFamily, CopyOfAnEmptyOneHasTheCapacityToo) {
    TypeParam vector;
    vector.SetCapacity(6);
    const TypeParam copy(vector);
    EXPECT_TRUE(copy.IsEmpty());
    EXPECT_EQ(CapacityOf(copy), 6);
    EXPECT_NE(copy.pT(0), vector.pT(0));
    const TypeParam copyWithoutBuffer{TypeParam()};
    EXPECT_EQ(copyWithoutBuffer.pT(0), nullptr);
}

TYPED_TEST(VectorFamily, CopyOfARangeHasThatCapacity) {
    const TypeParam vector = this->F({1, 2, 3, 4, 5});
    const TypeParam middle(vector, 1, 4);
    EXPECT_THAT(Content(middle), ElementsAre(2, 3, 4));
    EXPECT_EQ(CapacityOf(middle), 3);
    EXPECT_THAT(Content(TypeParam(vector, 0, 5)), ElementsAre(1, 2, 3, 4, 5));
}

TYPED_TEST(VectorFamily, CopyOfABadRangeIsEmpty) {
    const TypeParam vector = this->F({1, 2, 3});
    struct Row {
        int first;
        int end;
    };
    for (const auto& [first, end] : {Row{-1, 2}, Row{2, 2}, Row{2, 1}, Row{0, 4}, Row{0, INT_MAX}, Row{INT_MIN, 3}}) {
        const TypeParam copy(vector, first, end);
        EXPECT_TRUE(copy.IsEmpty());
        EXPECT_EQ(copy.pT(0), nullptr) << "without a buffer";
    }
}

TYPED_TEST(VectorFamily, ClearKeepsBufferAndCapacity) {
    TypeParam vector = this->F({1, 2, 3, 4, 5});
    const auto* const buffer = vector.pT(0);
    vector.Clear();
    EXPECT_TRUE(vector.IsEmpty());
    EXPECT_EQ(vector.pT(0), buffer);
    EXPECT_EQ(CapacityOf(vector), 8);
    const int taken = ArrayAllocations::Taken();
    for (int i = 0; i < 8; ++i) {
        vector.PutBack(this->M(i));
    }
    EXPECT_EQ(ArrayAllocations::Taken(), taken) << "refilled without an allocation";
    TypeParam empty;
    empty.Clear();
    EXPECT_EQ(empty.pT(0), nullptr);
}

TYPED_TEST(VectorFamily, SetCapacityAnswersAsTheEngineDoes) {
    TypeParam vector = this->F({1, 2, 3});
    EXPECT_EQ(vector.SetCapacity(2), Failure);
    EXPECT_EQ(vector.SetCapacity(-1), Failure);
    EXPECT_EQ(CapacityOf(vector), 4);
    EXPECT_EQ(vector.SetCapacity(3), Ok);
    EXPECT_EQ(CapacityOf(vector), 3);
    EXPECT_EQ(vector.SetCapacity(10), Ok);
    EXPECT_EQ(CapacityOf(vector), 10);
    EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3));
    vector.Clear();
    EXPECT_EQ(vector.SetCapacity(0), Ok);
    EXPECT_EQ(vector.pT(0), nullptr);
}

TYPED_TEST(VectorFamily, GrowsToFourThenTwofold) {
    TypeParam vector;
    std::vector<int> capacities;
    for (int i = 0; i < 17; ++i) {
        vector.PutBack(this->M(i));
        capacities.push_back(CapacityOf(vector));
    }
    EXPECT_THAT(capacities, ElementsAre(4, 4, 4, 4, 8, 8, 8, 8, 16, 16, 16, 16, 16, 16, 16, 16, 32));
    TypeParam five;
    five.PutBack(TypeParam(vector, 0, 5));
    EXPECT_EQ(CapacityOf(five), 5);
    five.PutBack(TypeParam(vector, 0, 6));
    EXPECT_EQ(CapacityOf(five), 11);
}

TYPED_TEST(VectorFamily, FreesEverythingAtTheEnd) {
    const int live = ArrayAllocations::Live();
    {
        const TypeParam vector = this->F({1, 2, 3, 4, 5});
        const TypeParam copy(vector);
        TypeParam assigned;
        assigned = copy;
        EXPECT_EQ(ArrayAllocations::Live(), live + 3);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

// Pieces for those who keep the slots themselves.

TYPED_TEST(VectorFamily, BuildsRangesInSlotsWithoutChangingTheSize) {
    const TypeParam source = this->F({1, 2, 3, 4});
    const int size = source.GetLength();
    TypeParam vector;
    vector.SetCapacity(10);
    vector.BuildRangeFromBuffer(0, source.pT(1), 2);
    vector.BuildRangeFromRange(2, source, 0, 3);
    vector.BuildRangeFromList(5, source);
    vector.BuildRangeFromBuffer(9, source.pT(0), 0);
    vector.BuildRangeFromBuffer(9, nullptr, 0);
    vector.BuildRangeFromBuffer(9, source.pT(0), -1);
    vector.BuildRangeFromRange(9, source, 3, 1);
    EXPECT_EQ(vector.GetLength(), 0);
    std::vector<int> slots;
    for (int i = 0; i < 9; ++i) {
        slots.push_back(NumberOf(*vector.pT(i)));
    }
    EXPECT_THAT(slots, ElementsAre(2, 3, 1, 2, 3, 1, 2, 3, 4));
    vector.Destroy(0);
    vector.DestroyRange(1, 9);
    vector.DestroyRange(5, 5);
    EXPECT_EQ(vector.GetLength(), 0);
    EXPECT_EQ(source.GetLength(), size);
}

// Element access.

TYPED_TEST(VectorFamily, InsertsAnElementAnywhere) {
    TypeParam vector;
    EXPECT_EQ(vector.Insert(0, this->M(3)), Ok);
    EXPECT_EQ(vector.Insert(0, this->M(1)), Ok);
    EXPECT_EQ(vector.Insert(1, this->M(2)), Ok);
    EXPECT_EQ(vector.Insert(3, this->M(4)), Ok) << "the length appends";
    EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3, 4));
}

TYPED_TEST(VectorFamily, InsertsAnotherContainer) {
    const TypeParam other = this->F({7, 8});
    TypeParam vector = this->F({1, 2, 3});
    EXPECT_EQ(vector.Insert(1, other), Ok);
    EXPECT_EQ(vector.Insert(5, other), Ok);
    EXPECT_EQ(vector.Insert(0, other), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(7, 8, 1, 7, 8, 2, 3, 7, 8));
    EXPECT_EQ(vector.Insert(4, TypeParam()), Ok) << "nothing is inserted";
    EXPECT_EQ(vector.GetLength(), 9);
    EXPECT_THAT(Content(other), ElementsAre(7, 8));
}

TYPED_TEST(VectorFamily, InsertsARangeOfAnotherContainer) {
    const TypeParam other = this->F({6, 7, 8, 9});
    TypeParam vector = this->F({1, 2, 3});
    EXPECT_EQ(vector.Insert(1, other, 1, 3), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 7, 8, 2, 3));
    EXPECT_EQ(vector.Insert(5, other, 0, 4), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 7, 8, 2, 3, 6, 7, 8, 9));
    EXPECT_EQ(vector.Insert(0, other, 2, 2), Failure);
    EXPECT_EQ(vector.Insert(0, other, 3, 2), Failure);
    EXPECT_EQ(vector.Insert(0, other, -1, 2), Failure);
    EXPECT_EQ(vector.Insert(0, other, 0, 5), Failure);
    EXPECT_EQ(vector.Insert(0, other, INT_MIN, INT_MAX), Failure);
    EXPECT_EQ(vector.Insert(10, other, 0, 4), Failure);
    EXPECT_EQ(vector.GetLength(), 9);
}

TYPED_TEST(VectorFamily, InsertsABuffer) {
    const typename TypeParam::Element buffer[] = {this->M(7), this->M(8), this->M(9)};
    TypeParam vector = this->F({1, 2});
    EXPECT_EQ(vector.Insert(1, buffer, 3), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 7, 8, 9, 2));
    EXPECT_EQ(vector.Insert(5, buffer, 1), Ok);
    EXPECT_EQ(vector.Insert(0, nullptr, 3), Failure);
    EXPECT_EQ(vector.Insert(0, buffer, 0), Failure);
    EXPECT_EQ(vector.Insert(0, buffer, -1), Failure);
    EXPECT_EQ(vector.Insert(0, buffer, INT_MIN), Failure);
    EXPECT_EQ(vector.Insert(0, buffer, INT_MAX), Failure) << "more than an int counts";
    EXPECT_EQ(vector.Insert(7, buffer, 3), Failure);
    EXPECT_THAT(Content(vector), ElementsAre(1, 7, 8, 9, 2, 7));
}

TYPED_TEST(VectorFamily, InsertsNothingOutsideOfItsLength) {
    const TypeParam other = this->F({7, 8});
    TypeParam vector = this->F({1, 2, 3});
    for (const int pos : BadPlaces) {
        EXPECT_EQ(vector.Insert(pos, this->M(9)), Failure);
        EXPECT_EQ(vector.Insert(pos, other), Failure);
        EXPECT_EQ(vector.Insert(pos, TypeParam()), Failure);
        EXPECT_EQ(vector.Insert(pos, other, 0, 1), Failure);
        EXPECT_EQ(vector.Insert(pos, other.pT(0), 1), Failure);
        EXPECT_EQ(vector.Insert(pos, vector), Failure);
        EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3));
    }
    EXPECT_EQ(CapacityOf(vector), 4);
}

TYPED_TEST(VectorFamily, RefusesMoreElementsThanAnIntCounts) {
    using Operation = std::function<int(TypeParam&)>;
    const auto x = this->M(9);
    const TypeParam other = this->F({7, 8});
    const std::vector<Operation> ofOne = {
        [&](TypeParam& vector) { return vector.Insert(0, x); },
        [&](TypeParam& vector) { return vector.Insert(vector.GetLength(), x); },
        [&](TypeParam& vector) { return vector.Insert(1, other, 0, 1); },
        [&](TypeParam& vector) { return vector.Insert(1, &x, 1); },
        [&](TypeParam& vector) { return vector.PutFront(x); },
        [&](TypeParam& vector) { return vector.PutBack(x); },
    };
    const std::vector<Operation> ofMore = {
        [&](TypeParam& vector) { return vector.Insert(0, other); },
        [&](TypeParam& vector) { return vector.Insert(vector.GetLength(), other); },
        [&](TypeParam& vector) { return vector.Insert(1, other, 0, 2); },
        [&](TypeParam& vector) { return vector.Insert(1, other.pT(0), 2); },
        [&](TypeParam& vector) { return vector.PutFront(other); },
        [&](TypeParam& vector) { return vector.PutBack(other); },
        [&](TypeParam& vector) { return vector.PutBack(vector); },
    };
    TypeParam vector = this->F({1, 2, 3});
    char* const size = reinterpret_cast<char*>(&vector) + 16;
    const auto forge = [&](int number) { std::memcpy(size, &number, sizeof number); };
    const Fields before(vector);
    for (const int length : {INT_MAX - 1, INT_MAX}) {
        forge(length);
        if (length == INT_MAX) {
            for (const Operation& operation : ofOne) {
                EXPECT_EQ(operation(vector), Failure);
                EXPECT_EQ(vector.GetLength(), length);
            }
        }
        for (const Operation& operation : ofMore) {
            EXPECT_EQ(operation(vector), Failure);
            EXPECT_EQ(vector.GetLength(), length);
        }
        typename TypeParam::iterator it(vector, 1);
        if (length == INT_MAX) {
            EXPECT_EQ(it.Insert(x), Failure);
        }
        EXPECT_EQ(it.Insert(other), Failure);
        EXPECT_EQ(it.GetIndex(), 1);
        EXPECT_EQ(vector.GetLength(), length);
        forge(3);
        EXPECT_EQ(vector.pT(0), before.buffer);
        EXPECT_EQ(CapacityOf(vector), before.capacity);
        EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3));
    }
}

TYPED_TEST(VectorFamily, PutsInFrontAndBehind) {
    TypeParam vector;
    EXPECT_EQ(vector.PutBack(this->M(2)), Ok);
    EXPECT_EQ(vector.PutFront(this->M(1)), Ok);
    EXPECT_EQ(vector.PutBack(this->F({3, 4})), Ok);
    EXPECT_EQ(vector.PutFront(this->F({8, 9})), Ok);
    EXPECT_EQ(vector.PutBack(TypeParam()), Ok);
    EXPECT_EQ(vector.PutFront(TypeParam()), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(8, 9, 1, 2, 3, 4));
}

TYPED_TEST(VectorFamily, InsertsItselfAsACopyWould) {
    for (const bool hasRoom : {false, true}) {
        for (int pos = 0; pos <= 3; ++pos) {
            TypeParam vector = this->F({1, 2, 3});
            vector.SetCapacity(hasRoom ? 6 : 3);
            const TypeParam copy(vector);
            TypeParam expected(vector);
            EXPECT_EQ(expected.Insert(pos, copy), Ok);
            EXPECT_EQ(vector.Insert(pos, vector), Ok);
            EXPECT_EQ(Content(vector), Content(expected)) << pos;
        }
    }
    TypeParam vector = this->F({1, 2});
    EXPECT_EQ(vector.PutBack(vector), Ok);
    EXPECT_EQ(vector.PutFront(vector), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 2, 1, 2, 1, 2, 1, 2));
    TypeParam empty;
    EXPECT_EQ(empty.PutBack(empty), Ok);
    EXPECT_EQ(empty.PutFront(empty), Ok);
    EXPECT_TRUE(empty.IsEmpty());
}

TYPED_TEST(VectorFamily, InsertsARangeOfItselfAsACopyWould) {
    for (const bool hasRoom : {false, true}) {
        for (int pos = 0; pos <= 4; ++pos) {
            for (int first = 0; first < 4; ++first) {
                for (int end = first + 1; end <= 4; ++end) {
                    for (const bool asBuffer : {false, true}) {
                        TypeParam vector = this->F({1, 2, 3, 4});
                        vector.SetCapacity(hasRoom ? 8 : 4);
                        const TypeParam copy(vector);
                        TypeParam expected(vector);
                        EXPECT_EQ(expected.Insert(pos, copy, first, end), Ok);
                        EXPECT_EQ(asBuffer ? vector.Insert(pos, vector.pT(first), end - first)
                                           : vector.Insert(pos, vector, first, end),
                                  Ok);
                        EXPECT_EQ(Content(vector), Content(expected)) << pos << " " << first << " " << end;
                    }
                }
            }
        }
    }
}

TYPED_TEST(VectorFamily, InsertsNothingFromBehindItsOwnElements) {
    TypeParam vector = this->F({1, 2, 3});
    EXPECT_EQ(vector.Insert(0, vector.pT(1), 3), Failure);
    EXPECT_EQ(vector.Insert(0, vector.pT(0), INT_MAX), Failure);
    EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3));
}

TYPED_TEST(VectorFamily, InsertsAnElementOfItsOwn) {
    for (const bool hasRoom : {false, true}) {
        for (int pos = 0; pos <= 4; ++pos) {
            for (int own = 0; own < 4; ++own) {
                TypeParam vector = this->F({1, 2, 3, 4});
                vector.SetCapacity(hasRoom ? 8 : 4);
                std::vector<int> expected = Content(vector);
                expected.insert(expected.begin() + pos, own + 1);
                EXPECT_EQ(vector.Insert(pos, *vector.pT(own)), Ok);
                EXPECT_EQ(Content(vector), expected) << pos << " " << own;
            }
        }
        TypeParam vector = this->F({1, 2, 3, 4});
        vector.SetCapacity(hasRoom ? 8 : 4);
        vector.PutBack(*vector.GetAsPtr(1));
        vector.PutFront(*vector.GetAsPtr(4));
        EXPECT_THAT(Content(vector), ElementsAre(2, 1, 2, 3, 4, 2));
    }
}

TYPED_TEST(VectorFamily, RemovesOneElement) {
    TypeParam vector = this->F({1, 2, 3, 4});
    EXPECT_EQ(vector.Remove(1), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 3, 4));
    for (const int i : {3, -1, -2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(vector.Remove(i), Failure);
    }
    EXPECT_EQ(vector.Remove(2), Ok);
    EXPECT_EQ(vector.Remove(0), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(3));
    EXPECT_EQ(vector.Remove(0), Ok);
    EXPECT_EQ(vector.Remove(0), Failure);
    EXPECT_EQ(CapacityOf(vector), 4);
}

TYPED_TEST(VectorFamily, RemovesARange) {
    TypeParam vector = this->F({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(vector.RemoveRange(1, 3), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 4, 5, 6));
    struct Row {
        int first;
        int end;
    };
    for (const auto& [first, end] : {Row{1, 1}, Row{2, 1}, Row{-1, 2}, Row{0, 5}, Row{4, 5}, Row{0, INT_MAX},
                                     Row{INT_MAX, INT_MIN}, Row{INT_MIN, INT_MAX}}) {
        EXPECT_EQ(vector.RemoveRange(first, end), Failure);
    }
    EXPECT_EQ(vector.RemoveRange(3, 4), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(1, 4, 5));
    EXPECT_EQ(vector.RemoveRange(0, 3), Ok);
    EXPECT_THAT(Content(vector), IsEmpty());
}

TYPED_TEST(VectorFamily, PopsAtBothEnds) {
    TypeParam vector = this->F({1, 2, 3});
    auto out = this->M(99);
    EXPECT_EQ(vector.PopFront(out), Ok);
    EXPECT_EQ(NumberOf(out), 1);
    EXPECT_EQ(vector.PopBack(out), Ok);
    EXPECT_EQ(NumberOf(out), 3);
    EXPECT_THAT(Content(vector), ElementsAre(2));
    EXPECT_EQ(vector.PopBack(out), Ok);
    EXPECT_EQ(vector.PopBack(out), Failure);
    EXPECT_EQ(vector.PopFront(out), Failure);
    EXPECT_EQ(NumberOf(out), 2) << "a failure assigns nothing";
    EXPECT_EQ(CapacityOf(vector), 4);
}

TYPED_TEST(VectorFamily, PopsIntoItsOwnElements) {
    TypeParam vector = this->F({1, 2, 3, 4});
    EXPECT_EQ(vector.PopFront(*vector.GetAsPtr(2)), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(2, 1, 4));
    EXPECT_EQ(vector.PopBack(*vector.GetAsPtr(0)), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(4, 1));
    EXPECT_EQ(vector.PopFront(*vector.GetAsPtr(0)), Ok);
    EXPECT_EQ(vector.PopBack(*vector.GetAsPtr(0)), Ok);
    EXPECT_TRUE(vector.IsEmpty());
}

TYPED_TEST(VectorFamily, SetsAndGetsElements) {
    TypeParam vector = this->F({1, 2, 3});
    const TypeParam& constant = vector;
    EXPECT_EQ(vector.Set(1, this->M(9)), Ok);
    auto out = this->M(99);
    EXPECT_EQ(vector.Get(1, out), Ok);
    EXPECT_EQ(NumberOf(out), 9);
    EXPECT_EQ(vector.GetAsPtr(2), vector.pT(2));
    EXPECT_EQ(constant.GetAsPtr(2), constant.pT(2));
    EXPECT_EQ(vector.pT(1) + 1, vector.pT(2));
    for (const int i : {3, -1, -2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(vector.Set(i, this->M(5)), Failure);
        EXPECT_EQ(vector.Get(i, out), Failure);
        EXPECT_EQ(vector.GetAsPtr(i), nullptr);
        EXPECT_EQ(constant.GetAsPtr(i), nullptr);
    }
    EXPECT_EQ(NumberOf(out), 9);
    EXPECT_THAT(Content(vector), ElementsAre(1, 9, 3));
    EXPECT_EQ(vector.Set(0, *vector.GetAsPtr(1)), Ok);
    EXPECT_EQ(vector.Set(0, *vector.GetAsPtr(0)), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(9, 9, 3));
}

TYPED_TEST(VectorFamily, AssignmentKeepsACapacityThatSuffices) {
    TypeParam vector = this->F({1, 2, 3, 4, 5});
    const auto* const buffer = vector.pT(0);
    const TypeParam shorter = this->F({8, 9});
    EXPECT_EQ(&(vector = shorter), &vector);
    EXPECT_THAT(Content(vector), ElementsAre(8, 9));
    EXPECT_EQ(CapacityOf(vector), 8);
    EXPECT_EQ(vector.pT(0), buffer);
    EXPECT_THAT(Content(shorter), ElementsAre(8, 9));
    vector = TypeParam();
    EXPECT_TRUE(vector.IsEmpty());
    EXPECT_EQ(CapacityOf(vector), 8);
}

TYPED_TEST(VectorFamily, AssignmentGrowsAsInsertionDoes) {
    struct Row {
        int capacity;
        int assigned;
        int result;
    };
    for (const auto& [capacity, assigned, result] :
         {Row{0, 0, 0}, Row{0, 1, 4}, Row{0, 6, 6}, Row{4, 6, 8}, Row{4, 9, 9}, Row{2, 3, 4}, Row{6, 6, 6}}) {
        TypeParam other;
        for (int i = 0; i < assigned; ++i) {
            other.PutBack(this->M(i));
        }
        TypeParam vector;
        if (capacity > 0) {
            vector.PutBack(this->M(77));
            vector.SetCapacity(capacity);
        }
        vector = other;
        EXPECT_EQ(Content(vector), Content(other));
        EXPECT_EQ(CapacityOf(vector), result) << capacity << " " << assigned;
    }
}

TYPED_TEST(VectorFamily, AssignmentToItselfChangesNothing) {
    TypeParam vector = this->F({1, 2, 3});
    const auto* const buffer = vector.pT(0);
    TypeParam& same = vector;
    vector = same;
    EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3));
    EXPECT_EQ(vector.pT(0), buffer);
}

TYPED_TEST(VectorFamily, EqualityIsOfLengthAndElementsInOrder) {
    const auto areEqual = [this](std::initializer_list<int> a, std::initializer_list<int> b) {
        const TypeParam left = this->F(a);
        TypeParam right = this->F(b);
        right.SetCapacity(20);
        EXPECT_NE(left == right, left != right);
        EXPECT_EQ(left == right, right == left);
        return left == right;
    };
    EXPECT_TRUE(areEqual({}, {}));
    EXPECT_TRUE(areEqual({1, 2}, {1, 2}));
    EXPECT_FALSE(areEqual({1, 2}, {2, 1}));
    EXPECT_FALSE(areEqual({1, 2}, {1, 3}));
    EXPECT_FALSE(areEqual({3, 2}, {1, 2}));
    EXPECT_FALSE(areEqual({1, 2}, {1}));
    EXPECT_FALSE(areEqual({}, {1}));
    EXPECT_TRUE(TypeParam() == TypeParam());
    EXPECT_FALSE(TypeParam() != TypeParam());
}

TYPED_TEST(VectorFamily, FindsTheFirstEqualElementFromTheStartOn) {
    const TypeParam vector = this->F({5, 6, 5, 7});
    EXPECT_EQ(vector.Find(this->M(5)), 0) << "from the front when nothing is said";
    EXPECT_EQ(vector.Find(this->M(5), 0), 0);
    EXPECT_EQ(vector.Find(this->M(5), 1), 2);
    EXPECT_EQ(vector.Find(this->M(5), 2), 2);
    EXPECT_EQ(vector.Find(this->M(5), 3), -1);
    EXPECT_EQ(vector.Find(this->M(7), 3), 3);
    EXPECT_EQ(vector.Find(this->M(8), 0), -1);
    for (const int start : {4, 5, -1, -2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(vector.Find(this->M(5), start), -1);
    }
    EXPECT_EQ(TypeParam().Find(this->M(5), 0), -1);
}

// What differs between the rows.

template <class Vector>
class VectorsOfNumbers : public VectorFamily<Vector> {};
TYPED_TEST_SUITE(VectorsOfNumbers, Numbers);

TYPED_TEST(VectorsOfNumbers, SortDoesNothing) {
    const TypeParam vector = this->F({3, 1, 2});
    vector.Sort();
    EXPECT_THAT(Content(vector), ElementsAre(3, 1, 2));
}

TEST(VectorRows, HaveTheStatedElementSizes) {
    EXPECT_EQ(Fields(QORSysTSArrayListOfInt()).elementSize, 4);
    EXPECT_EQ(Fields(QORSysTSVectorOfInt()).elementSize, 4);
    EXPECT_EQ(Fields(QORSysTSVectorOfBYTE()).elementSize, 1);
    EXPECT_EQ(Fields(QORSysTSVectorOfBoolean()).elementSize, 1);
    EXPECT_EQ(Fields(QORSysTSVectorOfQORUC2Bytes()).elementSize, 2);
    EXPECT_EQ(Fields(QORSysTSVectorOfUnicodeString()).elementSize, 8);
    EXPECT_EQ(Fields(VELVectorOfUnicodeString()).elementSize, 8);
}

TEST(VectorRows, HoldTheWholeRangeOfTheirElements) {
    QORSysTSVectorOfInt ints;
    ints.PutBack(INT_MIN);
    ints.PutBack(INT_MAX);
    EXPECT_EQ(*ints.GetAsPtr(0), INT_MIN);
    EXPECT_EQ(ints.Find(INT_MAX), 1);
    QORSysTSVectorOfBoolean truths;
    truths.PutBack(2);
    EXPECT_EQ(*truths.GetAsPtr(0), 2) << "a byte each, not a bit";
    EXPECT_EQ(truths.Find(1), -1);
    QORSysTSVectorOfQORUC2Bytes units;
    units.PutBack(0xFFFF);
    EXPECT_EQ(*units.GetAsPtr(0), 0xFFFF);
}
