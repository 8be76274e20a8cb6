/// @file
/// The iterators of the array containers, on all of them.

#include "VectorInstances.h"

#include <climits>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace VectorInstances;
using testing::ElementsAre;

} // namespace

template <class Vector>
class VectorIterator : public testing::Test {
protected:
    using Const = typename Vector::const_iterator;
    using Iterator = typename Vector::iterator;
    static typename Vector::Element M(int number) { return Make<Vector>(number); }
    static Vector F(std::initializer_list<int> numbers) { return Filled<Vector>(numbers); }
};
TYPED_TEST_SUITE(VectorIterator, All);

TYPED_TEST(VectorIterator, WithoutAContainerIsAtNoPosition) {
    typename TypeParam::const_iterator constant;
    typename TypeParam::iterator iterator;
    auto out = this->M(9);
    for (auto* it : {&constant, static_cast<typename TypeParam::const_iterator*>(&iterator)}) {
        EXPECT_EQ(it->GetIndex(), -2);
        EXPECT_TRUE(it->IsEnd());
        EXPECT_FALSE(it->IsBegin());
        EXPECT_FALSE(it->IsLast());
        EXPECT_EQ(it->Next(), Failure);
        EXPECT_EQ(it->Prev(), Failure);
        EXPECT_EQ(it->Get(out), Failure);
        EXPECT_EQ(it->GetAsConstPtr(), nullptr);
        EXPECT_EQ(it->GetAsConstPtrGoToNext(), nullptr);
        EXPECT_EQ(it->GetAsConstPtrGoToPrev(), nullptr);
        EXPECT_EQ(it->GetIndex(), -2);
    }
    EXPECT_EQ(iterator.Set(this->M(1)), Failure);
    EXPECT_EQ(iterator.GetAsPtr(), nullptr);
    EXPECT_EQ(iterator.GetAsPtrGoToNext(), nullptr);
    EXPECT_EQ(iterator.GetAsPtrGoToPrev(), nullptr);
    EXPECT_EQ(iterator.Insert(this->M(1)), Failure);
    EXPECT_EQ(iterator.Insert(this->F({1})), Failure);
    EXPECT_EQ(iterator.RemoveGoToNext(), Failure);
    EXPECT_EQ(iterator.RemoveGoToPrev(), Failure);
    EXPECT_EQ(iterator.GetIndex(), -2);
    EXPECT_EQ(NumberOf(out), 9);
    EXPECT_TRUE(constant == iterator);
}

TYPED_TEST(VectorIterator, StandsAtTheFirstAndTheLastElement) {
    TypeParam vector = this->F({1, 2, 3});
    const TypeParam& constant = vector;
    EXPECT_EQ(constant.cBegin().GetIndex(), 0);
    EXPECT_EQ(vector.Begin().GetIndex(), 0);
    EXPECT_EQ(constant.cLast().GetIndex(), 2);
    EXPECT_EQ(vector.Last().GetIndex(), 2);
    EXPECT_EQ(vector.Begin().GetAsPtr(), vector.pT(0));
    EXPECT_EQ(constant.cLast().GetAsConstPtr(), vector.pT(2));
    EXPECT_TRUE(vector.Begin().IsBegin());
    EXPECT_TRUE(vector.Last().IsLast());
}

TYPED_TEST(VectorIterator, IsAtNoPositionOfAnEmptyContainer) {
    TypeParam vector;
    for (auto it : {vector.cBegin(), vector.cLast(), typename TypeParam::const_iterator(vector.Begin()),
                    typename TypeParam::const_iterator(vector.Last())}) {
        EXPECT_EQ(it.GetIndex(), -2);
        EXPECT_TRUE(it.IsEnd());
        EXPECT_EQ(it.Next(), Failure) << "-2 is below -1";
        EXPECT_EQ(it.Prev(), Failure);
        EXPECT_EQ(it.GetIndex(), -2);
    }
}

TYPED_TEST(VectorIterator, StepsAsItsIndexAllows) {
    TypeParam vector = this->F({1, 2, 3});
    for (const int index : {INT_MIN, -3, -2, -1, 0, 1, 2, 3, 4, INT_MAX}) {
        SCOPED_TRACE(index);
        typename TypeParam::const_iterator next(vector, index);
        EXPECT_EQ(next.GetIndex(), index) << "taken unchecked";
        const bool canStep = index >= -1 && index < 3;
        EXPECT_EQ(next.Next(), canStep ? Ok : Failure);
        EXPECT_EQ(next.GetIndex(), canStep ? index + 1 : index);
        typename TypeParam::iterator prev(vector, index);
        const bool canStepBack = index >= 0 && index <= 3;
        EXPECT_EQ(prev.Prev(), canStepBack ? Ok : Failure);
        EXPECT_EQ(prev.GetIndex(), canStepBack ? index - 1 : index);
    }
}

TYPED_TEST(VectorIterator, KnowsBeginLastAndEndByItsIndex) {
    TypeParam vector = this->F({1, 2, 3});
    for (const int index : {INT_MIN, -2, -1, 0, 1, 2, 3, 4, INT_MAX}) {
        SCOPED_TRACE(index);
        const typename TypeParam::const_iterator it(vector, index);
        EXPECT_EQ(it.IsBegin(), index == 0);
        EXPECT_EQ(it.IsLast(), index == 2);
        EXPECT_EQ(it.IsEnd(), index < 0 || index > 2);
    }
    TypeParam empty;
    EXPECT_TRUE(typename TypeParam::const_iterator(empty, 0).IsBegin()) << "the container is not looked at";
    EXPECT_TRUE(typename TypeParam::const_iterator(empty, -1).IsLast());
}

TYPED_TEST(VectorIterator, WalksInBothDirections) {
    const TypeParam vector = this->F({1, 2, 3});
    std::vector<int> seen;
    auto it = vector.cBegin();
    for (; !it.IsEnd(); it.Next()) {
        seen.push_back(NumberOf(*it.GetAsConstPtr()));
    }
    EXPECT_EQ(it.GetIndex(), 3);
    EXPECT_EQ(it.Next(), Failure) << "once behind the end";
    for (it.Prev(); !it.IsEnd(); it.Prev()) {
        seen.push_back(NumberOf(*it.GetAsConstPtr()));
    }
    EXPECT_EQ(it.GetIndex(), -1);
    EXPECT_EQ(it.Prev(), Failure);
    EXPECT_EQ(it.Next(), Ok);
    EXPECT_EQ(it.GetIndex(), 0);
    EXPECT_THAT(seen, ElementsAre(1, 2, 3, 3, 2, 1));
}

TYPED_TEST(VectorIterator, AnswersElementsOnItsWay) {
    TypeParam vector = this->F({1, 2, 3});
    const auto walk = [&](auto it, auto step) {
        std::vector<int> seen;
        while (const auto* element = step(it)) {
            seen.push_back(NumberOf(*element));
        }
        seen.push_back(it.GetIndex());
        return seen;
    };
    EXPECT_THAT(walk(vector.cBegin(), [](auto& it) { return it.GetAsConstPtrGoToNext(); }), ElementsAre(1, 2, 3, 3));
    EXPECT_THAT(walk(vector.cLast(), [](auto& it) { return it.GetAsConstPtrGoToPrev(); }), ElementsAre(3, 2, 1, -1));
    EXPECT_THAT(walk(vector.Begin(), [](auto& it) { return it.GetAsPtrGoToNext(); }), ElementsAre(1, 2, 3, 3));
    EXPECT_THAT(walk(vector.Last(), [](auto& it) { return it.GetAsPtrGoToPrev(); }), ElementsAre(3, 2, 1, -1));
}

TYPED_TEST(VectorIterator, ReadsAndWritesItsElement) {
    TypeParam vector = this->F({1, 2, 3});
    auto out = this->M(99);
    const typename TypeParam::iterator it(vector, 1);
    EXPECT_EQ(it.Get(out), Ok);
    EXPECT_EQ(NumberOf(out), 2);
    EXPECT_EQ(it.Set(this->M(7)), Ok);
    *it.GetAsPtr() = this->M(NumberOf(*it.GetAsPtr()) + 1);
    EXPECT_THAT(Content(vector), ElementsAre(1, 8, 3));
    for (const int index : {-2, -1, 3, INT_MAX, INT_MIN}) {
        const typename TypeParam::iterator outside(vector, index);
        EXPECT_EQ(outside.Get(out), Failure);
        EXPECT_EQ(outside.Set(this->M(9)), Failure);
        EXPECT_EQ(outside.GetAsPtr(), nullptr);
        EXPECT_EQ(outside.GetAsConstPtr(), nullptr);
    }
    EXPECT_EQ(NumberOf(out), 2);
    EXPECT_THAT(Content(vector), ElementsAre(1, 8, 3));
}

TYPED_TEST(VectorIterator, IsEqualAtTheSameIndexOfTheSameContainer) {
    TypeParam vector = this->F({1, 2});
    TypeParam same = this->F({1, 2});
    EXPECT_TRUE(vector.Begin() == vector.cBegin());
    EXPECT_FALSE(vector.Begin() != vector.cBegin());
    EXPECT_FALSE(vector.Begin() == vector.Last());
    EXPECT_TRUE(vector.Begin() != vector.Last());
    EXPECT_FALSE(vector.Begin() == same.Begin());
    EXPECT_TRUE(vector.Begin() != same.Begin());
}

TYPED_TEST(VectorIterator, StaysOnItsElementWhenItInserts) {
    TypeParam vector = this->F({1, 2, 3});
    typename TypeParam::iterator it(vector, 1);
    EXPECT_EQ(it.Insert(this->M(9)), Ok);
    EXPECT_EQ(it.GetIndex(), 2);
    EXPECT_EQ(NumberOf(*it.GetAsPtr()), 2);
    EXPECT_EQ(it.Insert(this->F({7, 8})), Ok);
    EXPECT_EQ(it.GetIndex(), 4);
    EXPECT_EQ(NumberOf(*it.GetAsPtr()), 2);
    EXPECT_EQ(it.Insert(TypeParam()), Ok);
    EXPECT_EQ(it.GetIndex(), 4);
    EXPECT_THAT(Content(vector), ElementsAre(1, 9, 7, 8, 2, 3));
    typename TypeParam::iterator end(vector, 6);
    EXPECT_EQ(end.Insert(this->M(4)), Ok) << "behind the last element";
    EXPECT_EQ(end.GetIndex(), 7);
    for (const int index : {-2, -1, 8, INT_MAX, INT_MIN}) {
        typename TypeParam::iterator outside(vector, index);
        EXPECT_EQ(outside.Insert(this->M(9)), Failure);
        EXPECT_EQ(outside.Insert(this->F({9})), Failure);
        EXPECT_EQ(outside.GetIndex(), index);
    }
    EXPECT_EQ(vector.GetLength(), 7);
}

TYPED_TEST(VectorIterator, StaysOnItsElementWhenItInsertsTheContainerItself) {
    TypeParam vector = this->F({1, 2, 3});
    typename TypeParam::iterator it(vector, 1);
    EXPECT_EQ(it.Insert(vector), Ok);
    EXPECT_EQ(it.GetIndex(), 4);
    EXPECT_THAT(Content(vector), ElementsAre(1, 1, 2, 3, 2, 3));
}

TYPED_TEST(VectorIterator, PassesOverAnElementWhenItRemovesForward) {
    TypeParam vector = this->F({1, 2, 3});
    auto it = vector.Begin();
    EXPECT_EQ(it.RemoveGoToNext(), Ok);
    EXPECT_THAT(Content(vector), ElementsAre(2, 3));
    EXPECT_EQ(it.GetIndex(), 1);
    EXPECT_EQ(NumberOf(*it.GetAsPtr()), 3);
    EXPECT_EQ(it.RemoveGoToNext(), Ok);
    EXPECT_EQ(it.GetIndex(), 2);
    EXPECT_EQ(it.RemoveGoToNext(), Failure);
    EXPECT_EQ(it.GetIndex(), 2);
    EXPECT_THAT(Content(vector), ElementsAre(2));
}

TYPED_TEST(VectorIterator, VisitsAllWhenItRemovesBackward) {
    TypeParam vector = this->F({1, 2, 3, 4, 5});
    std::vector<int> seen;
    for (auto it = vector.Begin(); !it.IsEnd(); it.Next()) {
        const int number = NumberOf(*it.GetAsPtr());
        seen.push_back(number);
        if (number % 2 != 0) {
            EXPECT_EQ(it.RemoveGoToPrev(), Ok);
        }
    }
    EXPECT_THAT(seen, ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(Content(vector), ElementsAre(2, 4));
    typename TypeParam::iterator outside(vector, 2);
    EXPECT_EQ(outside.RemoveGoToPrev(), Failure);
    EXPECT_EQ(outside.GetIndex(), 2);
}

TYPED_TEST(VectorIterator, NamesTheSameIndexWhateverHappensToTheContainer) {
    TypeParam vector = this->F({1, 2, 3});
    const typename TypeParam::iterator it(vector, 1);
    vector.PutFront(this->M(0));
    EXPECT_EQ(NumberOf(*it.GetAsPtr()), 1);
    vector.Clear();
    EXPECT_EQ(it.GetIndex(), 1);
    EXPECT_TRUE(it.IsEnd());
    EXPECT_EQ(it.GetAsPtr(), nullptr);
}
