/// @file
/// The iterators of the lists, on all of them.

#include "ListInstances.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace ListInstances;
using testing::ElementsAre;

} // namespace

template <class List>
class ListIterator : public testing::Test {
protected:
    static typename List::Element M(int number) { return Make<List>(number); }
    static List F(std::initializer_list<int> numbers) { return Filled<List>(numbers); }

    /// That an iterator stands on the element of a number, or on none for -1, and has this index.
    static void ExpectAt(const typename List::const_iterator& it, int number, int index) {
        EXPECT_EQ(it.GetIndex(), index);
        EXPECT_EQ(it.IsEnd(), number == -1);
        ASSERT_EQ(it.GetAsConstPtr() == nullptr, number == -1);
        if (number != -1) {
            EXPECT_EQ(NumberOf(*it.GetAsConstPtr()), number);
        }
    }
};
TYPED_TEST_SUITE(ListIterator, All);

TYPED_TEST(ListIterator, WithoutAListIsAtNoPosition) {
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

TYPED_TEST(ListIterator, StandsAtTheFirstAndTheLastElement) {
    TypeParam list = this->F({1, 2, 3});
    const TypeParam& constant = list;
    this->ExpectAt(constant.cBegin(), 1, 0);
    this->ExpectAt(list.Begin(), 1, 0);
    this->ExpectAt(constant.cLast(), 3, 2);
    this->ExpectAt(list.Last(), 3, 2);
    EXPECT_TRUE(list.Begin().IsBegin());
    EXPECT_FALSE(list.Begin().IsLast());
    EXPECT_TRUE(list.Last().IsLast());
    EXPECT_FALSE(list.Last().IsBegin());
    EXPECT_EQ(list.Begin().GetAsPtr(), list.GetAsPtr(0));
}

TYPED_TEST(ListIterator, IsAtNoPositionOfAnEmptyList) {
    TypeParam list;
    for (typename TypeParam::const_iterator it :
         {list.cBegin(), list.cLast(), typename TypeParam::const_iterator(list.Begin()),
          typename TypeParam::const_iterator(list.Last())}) {
        this->ExpectAt(it, -1, -2);
        EXPECT_EQ(it.Next(), Failure) << "-2 is not -1";
        EXPECT_EQ(it.Prev(), Failure);
        EXPECT_FALSE(it.IsLast());
        this->ExpectAt(it, -1, -2);
    }
    EXPECT_EQ(list.Begin().Insert(this->M(1)), Failure);
    EXPECT_EQ(list.Begin().Insert(this->F({1})), Failure);
    EXPECT_TRUE(list.IsEmpty());
}

TYPED_TEST(ListIterator, EntersAgainAtTheFirstElementWithTheIndexInFrontOfIt) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Begin();
    EXPECT_EQ(it.Prev(), Ok);
    this->ExpectAt(it, -1, -1);
    EXPECT_EQ(it.Prev(), Failure);
    this->ExpectAt(it, -1, -1);
    EXPECT_EQ(it.Next(), Ok);
    this->ExpectAt(it, 1, -1);
    EXPECT_FALSE(it.IsBegin());
    EXPECT_EQ(it.Next(), Ok);
    this->ExpectAt(it, 2, 0);
    EXPECT_TRUE(it.IsBegin()) << "by the index";
}

TYPED_TEST(ListIterator, EntersAgainAtTheLastElementWithTheIndexBehindIt) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Last();
    EXPECT_EQ(it.Next(), Ok);
    this->ExpectAt(it, -1, 3);
    EXPECT_EQ(it.Next(), Failure);
    this->ExpectAt(it, -1, 3);
    EXPECT_EQ(it.Prev(), Ok);
    this->ExpectAt(it, 3, 3);
    EXPECT_FALSE(it.IsLast());
    EXPECT_EQ(it.Prev(), Ok);
    this->ExpectAt(it, 2, 2);
    EXPECT_TRUE(it.IsLast()) << "by the index";
}

TYPED_TEST(ListIterator, EntersAListThatHasBecomeEmpty) {
    TypeParam list = this->F({1});
    auto it = list.Begin();
    EXPECT_EQ(it.RemoveGoToPrev(), Ok);
    this->ExpectAt(it, -1, -1);
    EXPECT_TRUE(it.IsLast()) << "the length less 1";
    EXPECT_EQ(it.Next(), Ok);
    this->ExpectAt(it, -1, -1);
    EXPECT_EQ(it.Prev(), Failure);
    list.PutBack(this->M(2));
    EXPECT_EQ(it.Next(), Ok);
    this->ExpectAt(it, 2, -1);
}

TYPED_TEST(ListIterator, StepsBackOnlyFromTheLength) {
    TypeParam list = this->F({1, 2});
    auto it = list.Last();
    it.Next();
    list.PutBack(this->M(3));
    EXPECT_EQ(it.Prev(), Failure) << "the length is another one now";
    list.Remove(0);
    EXPECT_EQ(it.Prev(), Ok);
    this->ExpectAt(it, 3, 2);
}

TYPED_TEST(ListIterator, ComparesListAndIndexOnly) {
    TypeParam list = this->F({1, 2, 3});
    TypeParam other = this->F({1, 2, 3});
    EXPECT_TRUE(list.cBegin() == list.Begin());
    EXPECT_FALSE(list.cBegin() != list.Begin());
    EXPECT_TRUE(list.Begin() != other.Begin());
    EXPECT_TRUE(list.Begin() != list.Last());
    auto it = list.Begin();
    it.Prev();
    it.Next();
    it.Next();
    EXPECT_NE(it.GetAsPtr(), list.Begin().GetAsPtr());
    EXPECT_TRUE(it == list.Begin()) << "the node is not compared";
    EXPECT_TRUE(typename TypeParam::iterator() == typename TypeParam::iterator());
    EXPECT_TRUE(typename TypeParam::iterator() != TypeParam().Begin());
}

TYPED_TEST(ListIterator, GetsAndSetsTheElement) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Begin();
    it.Next();
    auto out = this->M(9);
    EXPECT_EQ(it.Get(out), Ok);
    EXPECT_EQ(NumberOf(out), 2);
    EXPECT_EQ(it.Set(this->M(7)), Ok);
    *list.Last().GetAsPtr() = this->M(8);
    EXPECT_THAT(Content(list), ElementsAre(1, 7, 8));
    EXPECT_EQ(it.GetIndex(), 1);
}

TYPED_TEST(ListIterator, GivesTheElementAndSteps) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Begin();
    EXPECT_EQ(NumberOf(*it.GetAsPtrGoToNext()), 1);
    EXPECT_EQ(NumberOf(*it.GetAsConstPtrGoToNext()), 2);
    EXPECT_EQ(NumberOf(*it.GetAsPtrGoToNext()), 3);
    this->ExpectAt(it, -1, 3);
    EXPECT_EQ(it.GetAsPtrGoToNext(), nullptr);
    EXPECT_EQ(it.GetAsConstPtrGoToPrev(), nullptr);
    this->ExpectAt(it, -1, 3);
    it.Prev();
    it.Prev();
    EXPECT_EQ(NumberOf(*it.GetAsPtrGoToPrev()), 2);
    EXPECT_EQ(NumberOf(*it.GetAsConstPtrGoToPrev()), 1);
    this->ExpectAt(it, -1, 0);
    EXPECT_EQ(it.GetAsPtrGoToPrev(), nullptr);
    EXPECT_EQ(it.GetAsConstPtrGoToNext(), nullptr);
    this->ExpectAt(it, -1, 0);
}

TYPED_TEST(ListIterator, KeepsItsNodeWhileOthersComeAndGo) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Begin();
    it.Next();
    list.PutFront(this->M(7));
    list.Remove(3);
    this->ExpectAt(it, 2, 1);
    EXPECT_EQ(it.Prev(), Ok);
    this->ExpectAt(it, 1, 0);
}

TYPED_TEST(ListIterator, InsertsInFrontOfItsElementAndStaysOnIt) {
    TypeParam list = this->F({1, 2});
    auto it = list.Begin();
    EXPECT_EQ(it.Insert(this->M(7)), Ok);
    this->ExpectAt(it, 1, 1);
    EXPECT_EQ(it.Insert(this->F({8, 9})), Ok);
    this->ExpectAt(it, 1, 3);
    EXPECT_EQ(it.Insert(TypeParam()), Ok);
    this->ExpectAt(it, 1, 3);
    EXPECT_THAT(Content(list), ElementsAre(7, 8, 9, 1, 2));
    EXPECT_EQ(it.Insert(list), Ok);
    this->ExpectAt(it, 1, 8);
    EXPECT_THAT(Content(list), ElementsAre(7, 8, 9, 7, 8, 9, 1, 2, 1, 2));
}

TYPED_TEST(ListIterator, AppendsAtTheLength) {
    TypeParam list = this->F({1, 2});
    auto it = list.Last();
    it.Next();
    EXPECT_EQ(it.Insert(this->M(3)), Ok);
    this->ExpectAt(it, -1, 3);
    EXPECT_EQ(it.Insert(this->F({4, 5})), Ok);
    this->ExpectAt(it, -1, 5);
    EXPECT_EQ(it.Insert(list), Ok);
    this->ExpectAt(it, -1, 10);
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3, 4, 5, 1, 2, 3, 4, 5));
    list.PutBack(this->M(6));
    EXPECT_EQ(it.Insert(this->M(7)), Failure) << "neither at the length nor on an element";
    EXPECT_EQ(it.Insert(this->F({7})), Failure);
    this->ExpectAt(it, -1, 10);
    auto front = list.Begin();
    front.Prev();
    EXPECT_EQ(front.Insert(this->M(7)), Failure);
    EXPECT_EQ(list.GetLength(), 11);
}

TYPED_TEST(ListIterator, AppendsAtTheLengthEvenOnAnElement) {
    TypeParam list = this->F({1, 2});
    auto it = list.Begin();
    EXPECT_EQ(it.RemoveGoToNext(), Ok);
    this->ExpectAt(it, 2, 1);
    EXPECT_EQ(it.Insert(this->M(3)), Ok);
    this->ExpectAt(it, 2, 2);
    EXPECT_EQ(it.Insert(this->F({4, 5})), Ok);
    this->ExpectAt(it, 2, 4);
    EXPECT_THAT(Content(list), ElementsAre(2, 3, 4, 5));
}

TYPED_TEST(ListIterator, RemovesForwardWithAnIndexOneTooHigh) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Begin();
    EXPECT_EQ(it.RemoveGoToNext(), Ok);
    this->ExpectAt(it, 2, 1);
    EXPECT_THAT(Content(list), ElementsAre(2, 3));
    EXPECT_EQ(it.RemoveGoToNext(), Ok);
    EXPECT_EQ(it.RemoveGoToNext(), Ok);
    this->ExpectAt(it, -1, 3);
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(it.RemoveGoToNext(), Failure);
    EXPECT_EQ(it.RemoveGoToPrev(), Failure);
    this->ExpectAt(it, -1, 3);
}

TYPED_TEST(ListIterator, RemovesBackwardWithATrueIndex) {
    TypeParam list = this->F({1, 2, 3});
    auto it = list.Last();
    EXPECT_EQ(it.RemoveGoToPrev(), Ok);
    this->ExpectAt(it, 2, 1);
    EXPECT_THAT(Content(list), ElementsAre(1, 2));
    EXPECT_EQ(it.RemoveGoToPrev(), Ok);
    EXPECT_EQ(it.RemoveGoToPrev(), Ok);
    this->ExpectAt(it, -1, -1);
    EXPECT_EQ(it.RemoveGoToPrev(), Failure);
    EXPECT_TRUE(list.IsEmpty());
}
