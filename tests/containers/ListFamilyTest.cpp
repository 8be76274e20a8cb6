/// @file
/// What every list does, on all of them.

#include "ListInstances.h"

#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace ListInstances;
using testing::ElementsAre;
using testing::IsEmpty;

/// Indexes at which nothing stands and nothing can be inserted, for a length of 3.
constexpr int BadPlaces[] = {-1, -2, 4, INT_MAX, INT_MIN};

/// Ranges that are none, for a length of 3.
struct Range {
    int first;
    int end;
};
constexpr Range BadRanges[] = {{-1, 2},      {-2, -1},           {2, 2},       {2, 1},       {0, 4},
                               {3, 4},       {0, INT_MAX},       {INT_MIN, 3}, {1, INT_MIN}, {INT_MAX, INT_MAX},
                               {3, INT_MAX}, {INT_MIN, INT_MAX}, {0, 0},       {3, 3},       {0, -1},
                               {INT_MAX, 0}};

} // namespace

template <class List>
class ListFamily : public testing::Test {
protected:
    using Element = typename List::Element;
    static Element M(int number) { return Make<List>(number); }
    static List F(std::initializer_list<int> numbers) { return Filled<List>(numbers); }
};
TYPED_TEST_SUITE(ListFamily, All);

// Construction and storage.

TYPED_TEST(ListFamily, StartsEmpty) {
    const TypeParam list;
    EXPECT_EQ(list.GetLength(), 0);
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_THAT(Content(list), IsEmpty());
}

TYPED_TEST(ListFamily, CopyHasElementsOfItsOwn) {
    TypeParam list = this->F({1, 2, 3});
    const TypeParam copy(list);
    EXPECT_EQ(list.Set(0, this->M(9)), Ok);
    list.Remove(2);
    EXPECT_THAT(Content(copy), ElementsAre(1, 2, 3));
    EXPECT_FALSE(copy.IsEmpty());
    const TypeParam copyOfEmpty{TypeParam()};
    EXPECT_THAT(Content(copyOfEmpty), IsEmpty());
}

TYPED_TEST(ListFamily, CopyOfARange) {
    const TypeParam list = this->F({1, 2, 3, 4, 5});
    EXPECT_THAT(Content(TypeParam(list, 1, 4)), ElementsAre(2, 3, 4));
    EXPECT_THAT(Content(TypeParam(list, 0, 5)), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(Content(TypeParam(list, 4, 5)), ElementsAre(5));
}

TYPED_TEST(ListFamily, CopyOfABadRangeIsEmpty) {
    const TypeParam list = this->F({1, 2, 3});
    for (const auto& [first, end] : BadRanges) {
        EXPECT_THAT(Content(TypeParam(list, first, end)), IsEmpty()) << first << ' ' << end;
    }
}

TYPED_TEST(ListFamily, ClearRemovesAll) {
    TypeParam list = this->F({1, 2, 3});
    list.Clear();
    EXPECT_THAT(Content(list), IsEmpty());
    list.Clear();
    list.PutBack(this->M(4));
    EXPECT_THAT(Content(list), ElementsAre(4));
}

TYPED_TEST(ListFamily, SetCapacityAlwaysFails) {
    TypeParam list = this->F({1, 2, 3});
    for (const int n : {10, 3, 0, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(list.SetCapacity(n), Failure);
    }
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3));
    EXPECT_EQ(TypeParam().SetCapacity(10), Failure);
}

TYPED_TEST(ListFamily, AssignmentReplacesAll) {
    TypeParam list = this->F({1, 2, 3});
    const TypeParam other = this->F({7, 8});
    EXPECT_EQ(&(list = other), &list);
    EXPECT_THAT(Content(list), ElementsAre(7, 8));
    EXPECT_THAT(Content(other), ElementsAre(7, 8));
    const TypeParam& same = list;
    list = same;
    EXPECT_THAT(Content(list), ElementsAre(7, 8));
    list = TypeParam();
    EXPECT_THAT(Content(list), IsEmpty());
}

// Element access.

TYPED_TEST(ListFamily, PutsAtBothEnds) {
    TypeParam list;
    list.PutBack(this->M(2));
    list.PutFront(this->M(1));
    list.PutBack(this->M(3));
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3));
}

TYPED_TEST(ListFamily, PutsOtherListsInTheirOrder) {
    TypeParam list = this->F({1});
    list.PutFront(this->F({2, 3, 4}));
    list.PutBack(this->F({5, 6}));
    EXPECT_THAT(Content(list), ElementsAre(2, 3, 4, 1, 5, 6));
    list.PutFront(TypeParam());
    list.PutBack(TypeParam());
    EXPECT_EQ(list.GetLength(), 6);
    TypeParam empty;
    empty.PutFront(list);
    EXPECT_THAT(Content(empty), ElementsAre(2, 3, 4, 1, 5, 6));
}

TYPED_TEST(ListFamily, InsertsAnElementAnywhere) {
    TypeParam list;
    EXPECT_EQ(list.Insert(0, this->M(3)), Ok);
    EXPECT_EQ(list.Insert(0, this->M(1)), Ok);
    EXPECT_EQ(list.Insert(1, this->M(2)), Ok);
    EXPECT_EQ(list.Insert(3, this->M(4)), Ok) << "the length appends";
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3, 4));
}

TYPED_TEST(ListFamily, InsertsAnotherList) {
    const TypeParam other = this->F({7, 8});
    TypeParam list = this->F({1, 2, 3});
    EXPECT_EQ(list.Insert(1, other), Ok);
    EXPECT_EQ(list.Insert(5, other), Ok);
    EXPECT_EQ(list.Insert(0, other), Ok);
    EXPECT_THAT(Content(list), ElementsAre(7, 8, 1, 7, 8, 2, 3, 7, 8));
    EXPECT_EQ(list.Insert(4, TypeParam()), Ok) << "nothing is inserted";
    EXPECT_EQ(list.GetLength(), 9);
    EXPECT_THAT(Content(other), ElementsAre(7, 8));
}

TYPED_TEST(ListFamily, InsertsARangeOfAnotherList) {
    const TypeParam other = this->F({6, 7, 8, 9});
    TypeParam list = this->F({1, 2});
    EXPECT_EQ(list.Insert(1, other, 1, 3), Ok);
    EXPECT_THAT(Content(list), ElementsAre(1, 7, 8, 2));
    EXPECT_EQ(list.Insert(4, other, 3, 4), Ok);
    EXPECT_EQ(list.Insert(0, other, 0, 4), Ok);
    EXPECT_THAT(Content(list), ElementsAre(6, 7, 8, 9, 1, 7, 8, 2, 9));
}

TYPED_TEST(ListFamily, InsertsABufferInItsOrder) {
    const typename TypeParam::Element buffer[] = {this->M(7), this->M(8), this->M(9)};
    TypeParam list = this->F({1, 2});
    EXPECT_EQ(list.Insert(1, buffer, 3), Ok);
    EXPECT_EQ(list.Insert(5, buffer, 2), Ok);
    EXPECT_EQ(list.Insert(0, buffer, 1), Ok);
    EXPECT_THAT(Content(list), ElementsAre(7, 1, 7, 8, 9, 2, 7, 8));
}

TYPED_TEST(ListFamily, RefusesBadPlaces) {
    TypeParam list = this->F({1, 2, 3});
    const TypeParam other = this->F({7, 8});
    const auto x = this->M(9);
    for (const int place : BadPlaces) {
        SCOPED_TRACE(place);
        EXPECT_EQ(list.Insert(place, x), Failure);
        EXPECT_EQ(list.Insert(place, other), Failure);
        EXPECT_EQ(list.Insert(place, TypeParam()), Failure) << "also when nothing is to be inserted";
        EXPECT_EQ(list.Insert(place, other, 0, 2), Failure);
        EXPECT_EQ(list.Insert(place, &x, 1), Failure);
        EXPECT_EQ(list.Insert(place, list), Failure);
    }
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3));
}

TYPED_TEST(ListFamily, RefusesBadRanges) {
    TypeParam list = this->F({1, 2, 3});
    const TypeParam other = this->F({7, 8, 9});
    for (const auto& [first, end] : BadRanges) {
        SCOPED_TRACE(testing::Message() << first << ' ' << end);
        EXPECT_EQ(list.Insert(0, other, first, end), Failure);
        EXPECT_EQ(list.Insert(3, list, first, end), Failure);
        EXPECT_EQ(list.RemoveRange(first, end), Failure);
    }
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3));
}

TYPED_TEST(ListFamily, RefusesBuffersWithoutElements) {
    TypeParam list = this->F({1, 2, 3});
    const auto x = this->M(9);
    EXPECT_EQ(list.Insert(0, static_cast<const typename TypeParam::Element*>(nullptr), 3), Failure);
    for (const int count : {0, -1, INT_MIN}) {
        EXPECT_EQ(list.Insert(0, &x, count), Failure);
    }
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 3));
}

TYPED_TEST(ListFamily, InsertsItselfAsACopyOfIt) {
    for (int pos = 0; pos <= 3; ++pos) {
        TypeParam list = this->F({1, 2, 3});
        std::vector<int> expected = {1, 2, 3};
        expected.insert(expected.begin() + pos, {1, 2, 3});
        EXPECT_EQ(list.Insert(pos, list), Ok);
        EXPECT_EQ(Content(list), expected) << pos;
    }
    TypeParam list = this->F({1, 2});
    list.PutFront(list);
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 1, 2));
    list.PutBack(list);
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 1, 2, 1, 2, 1, 2));
    TypeParam empty;
    empty.PutFront(empty);
    empty.PutBack(empty);
    EXPECT_EQ(empty.Insert(0, empty), Ok);
    EXPECT_THAT(Content(empty), IsEmpty());
}

TYPED_TEST(ListFamily, InsertsRangesOfItselfAsCopiesOfThem) {
    for (int pos = 0; pos <= 4; ++pos) {
        for (int first = 0; first < 4; ++first) {
            for (int end = first + 1; end <= 4; ++end) {
                TypeParam list = this->F({1, 2, 3, 4});
                std::vector<int> expected = {1, 2, 3, 4};
                const std::vector<int> range(expected.begin() + first, expected.begin() + end);
                expected.insert(expected.begin() + pos, range.begin(), range.end());
                EXPECT_EQ(list.Insert(pos, list, first, end), Ok);
                EXPECT_EQ(Content(list), expected) << pos << ' ' << first << ' ' << end;
            }
        }
    }
}

TYPED_TEST(ListFamily, PutsElementsOfItsOwn) {
    TypeParam list = this->F({1, 2, 3});
    list.PutFront(*list.GetAsPtr(2));
    list.PutBack(*list.GetAsPtr(1));
    EXPECT_EQ(list.Insert(2, *list.GetAsPtr(0)), Ok);
    EXPECT_EQ(list.Insert(6, list.GetAsPtr(0), 1), Ok);
    EXPECT_THAT(Content(list), ElementsAre(3, 1, 3, 2, 3, 1, 3));
}

TYPED_TEST(ListFamily, RemovesElements) {
    TypeParam list = this->F({1, 2, 3, 4});
    EXPECT_EQ(list.Remove(1), Ok);
    EXPECT_THAT(Content(list), ElementsAre(1, 3, 4));
    for (const int i : {3, 4, -1, -2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(list.Remove(i), Failure) << i;
    }
    EXPECT_EQ(list.Remove(2), Ok);
    EXPECT_EQ(list.Remove(0), Ok);
    EXPECT_THAT(Content(list), ElementsAre(3));
    EXPECT_EQ(list.Remove(0), Ok);
    EXPECT_EQ(list.Remove(0), Failure);
    EXPECT_THAT(Content(list), IsEmpty());
}

TYPED_TEST(ListFamily, RemovesRanges) {
    for (int first = 0; first < 5; ++first) {
        for (int end = first + 1; end <= 5; ++end) {
            TypeParam list = this->F({1, 2, 3, 4, 5});
            std::vector<int> expected = {1, 2, 3, 4, 5};
            expected.erase(expected.begin() + first, expected.begin() + end);
            EXPECT_EQ(list.RemoveRange(first, end), Ok);
            EXPECT_EQ(Content(list), expected) << first << ' ' << end;
        }
    }
}

TYPED_TEST(ListFamily, PopsAtBothEnds) {
    TypeParam list = this->F({1, 2, 3});
    auto out = this->M(9);
    EXPECT_EQ(list.PopFront(out), Ok);
    EXPECT_EQ(NumberOf(out), 1);
    EXPECT_EQ(list.PopBack(out), Ok);
    EXPECT_EQ(NumberOf(out), 3);
    EXPECT_THAT(Content(list), ElementsAre(2));
    EXPECT_EQ(list.PopBack(out), Ok);
    EXPECT_EQ(list.PopFront(out), Failure);
    EXPECT_EQ(list.PopBack(out), Failure);
    EXPECT_EQ(NumberOf(out), 2) << "left as it was";
}

TYPED_TEST(ListFamily, SetsAndGetsByIndex) {
    TypeParam list = this->F({1, 2, 3});
    const TypeParam& constant = list;
    auto out = this->M(9);
    EXPECT_EQ(list.Set(1, this->M(7)), Ok);
    EXPECT_EQ(constant.Get(1, out), Ok);
    EXPECT_EQ(NumberOf(out), 7);
    EXPECT_EQ(NumberOf(*list.GetAsPtr(2)), 3);
    EXPECT_EQ(constant.GetAsPtr(2), list.GetAsPtr(2));
    *list.GetAsPtr(0) = this->M(6);
    EXPECT_THAT(Content(list), ElementsAre(6, 7, 3));
    for (const int i : {-1, -2, 3, 4, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(i);
        EXPECT_EQ(list.Set(i, this->M(8)), Failure);
        EXPECT_EQ(constant.Get(i, out), Failure);
        EXPECT_EQ(list.GetAsPtr(i), nullptr);
        EXPECT_EQ(constant.GetAsPtr(i), nullptr);
    }
    EXPECT_EQ(NumberOf(out), 7);
    EXPECT_THAT(Content(list), ElementsAre(6, 7, 3));
}

TYPED_TEST(ListFamily, FindsFromAStart) {
    const TypeParam list = this->F({5, 6, 5, 7});
    EXPECT_EQ(list.Find(this->M(5)), 0);
    EXPECT_EQ(list.Find(this->M(5), 1), 2);
    EXPECT_EQ(list.Find(this->M(5), 2), 2);
    EXPECT_EQ(list.Find(this->M(5), 3), -1);
    EXPECT_EQ(list.Find(this->M(8)), -1);
    for (const int start : {-1, -2, 4, 5, INT_MAX, INT_MIN}) {
        EXPECT_EQ(list.Find(this->M(5), start), -1) << start;
    }
    EXPECT_EQ(TypeParam().Find(this->M(5)), -1);
}

TYPED_TEST(ListFamily, ComparesLengthAndElementsInOrder) {
    const TypeParam list = this->F({1, 2, 3});
    EXPECT_TRUE(list == this->F({1, 2, 3}));
    EXPECT_FALSE(list != this->F({1, 2, 3}));
    EXPECT_TRUE(list == list);
    EXPECT_TRUE(TypeParam() == TypeParam());
    for (const TypeParam& other : {this->F({1, 2}), this->F({1, 2, 3, 4}), this->F({3, 2, 1}), TypeParam()}) {
        EXPECT_FALSE(list == other);
        EXPECT_TRUE(list != other);
    }
}

TYPED_TEST(ListFamily, ElementsStayWhereTheyAre) {
    TypeParam list = this->F({1, 2, 3});
    const auto* const second = list.GetAsPtr(1);
    list.PutFront(this->F({7, 8}));
    list.PutBack(list);
    list.Remove(0);
    list.Remove(1);
    EXPECT_EQ(list.GetAsPtr(1), second);
    EXPECT_EQ(NumberOf(*second), 2);
}

// Pieces for those who work on nodes.

TYPED_TEST(ListFamily, InsertsInFrontOfNodes) {
    TypeParam list = this->F({1, 2, 3});
    list.InsertElementBeforeNode(*NodeAt(list, 1), this->M(9));
    list.InsertListBeforeNode(*NodeAt(list, 0), this->F({7, 8}));
    EXPECT_THAT(Content(list), ElementsAre(7, 8, 1, 9, 2, 3));
    list.InsertListBeforeNode(*NodeAt(list, 5), list);
    EXPECT_THAT(Content(list), ElementsAre(7, 8, 1, 9, 2, 7, 8, 1, 9, 2, 3, 3));
}

TYPED_TEST(ListFamily, CopiesRunsOfNodes) {
    TypeParam list = this->F({1, 2});
    const TypeParam other = this->F({5, 6, 7});
    list.PutBackNodeRange(NodeAt(other, 0), NodeAt(other, 2));
    EXPECT_THAT(Content(list), ElementsAre(1, 2, 5, 6));
    list.InsertNodeRangeBeforeNode(*NodeAt(list, 0), NodeAt(other, 1), nullptr);
    EXPECT_THAT(Content(list), ElementsAre(6, 7, 1, 2, 5, 6));
    list.PutBackNodeRange(NodeAt(list, 4), nullptr);
    list.InsertNodeRangeBeforeNode(*NodeAt(list, 1), NodeAt(list, 0), NodeAt(list, 2));
    EXPECT_THAT(Content(list), ElementsAre(6, 6, 7, 7, 1, 2, 5, 6, 5, 6));
    list.PutBackNodeRange(nullptr, nullptr);
    list.PutBackNodeRange(nullptr, NodeAt(list, 1));
    list.PutBackNodeRange(NodeAt(list, 3), NodeAt(list, 3));
    EXPECT_EQ(list.GetLength(), 10);
    list.PutBackNodeRange(NodeAt(list, 8), NodeAt(list, 2));
    EXPECT_EQ(list.GetLength(), 12) << "an end that is not met is that of the chain";
    EXPECT_THAT(Content(other), ElementsAre(5, 6, 7));
}

template <class List>
class ListOfNumbers : public testing::Test {};
TYPED_TEST_SUITE(ListOfNumbers, Numbers);

TYPED_TEST(ListOfNumbers, SortDoesNothing) {
    const TypeParam list = Filled<TypeParam>({3, 1, 2});
    list.Sort();
    EXPECT_THAT(Content(list), ElementsAre(3, 1, 2));
}

namespace {

template <class List>
constexpr bool HasSort = requires {
    &List::Sort;
};

} // namespace

TEST(ListRows, OfNumbersAloneHaveASort) {
    static_assert(HasSort<QORSysTSLinkedListOfInt>);
    static_assert(HasSort<QORSysTSListOfInt>);
    static_assert(!HasSort<QORSysTSListOfUnicodeString>);
    static_assert(!HasSort<QORSysTSListOfVectorOfBYTE>);
}
