/// @file
/// What every set does, on all of them.

#include "ArrayAllocations.h"
#include "QORSysTSHashSetOfInt.h"
#include "QORSysTSLinkedSetOfInt.h"
#include "QORSysTSSetOfInt.h"
#include "VirtualTable.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <new>
#include <random>
#include <type_traits>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);

template <class Set>
Set SetOf(const std::vector<int>& numbers) {
    Set set;
    for (const int number : numbers) {
        set.Put(number);
    }
    return set;
}

template <class Set>
std::vector<int> Content(const Set& set) {
    std::vector<int> numbers;
    for (auto it = set.cBegin(); !it.IsEnd(); it.Next()) {
        numbers.push_back(*it.GetAsPtr());
    }
    EXPECT_EQ(static_cast<int>(numbers.size()), set.GetLength());
    EXPECT_EQ(set.IsEmpty(), numbers.empty());
    return numbers;
}

} // namespace

template <class Set>
class SetFamily : public testing::Test {
protected:
    static Set S(std::initializer_list<int> numbers) { return SetOf<Set>(numbers); }
};
using Sets = testing::Types<QORSysTSHashSetOfInt, QORSysTSLinkedSetOfInt, QORSysTSSetOfInt>;
TYPED_TEST_SUITE(SetFamily, Sets);

TYPED_TEST(SetFamily, PutsWhatIsAbsentInOrder) {
    EXPECT_THAT(Content(TypeParam()), IsEmpty());
    EXPECT_THAT(Content(this->S({1, 2, 1})), ElementsAre(1, 2));
    EXPECT_THAT(Content(this->S({3, 1, 2, INT_MIN, 1, 3, INT_MAX})), ElementsAre(3, 1, 2, INT_MIN, INT_MAX));
}

TYPED_TEST(SetFamily, PutsAllOfAnother) {
    TypeParam set = this->S({1, 2, 3});
    set.Put(this->S({5, 2, 4}));
    EXPECT_THAT(Content(set), ElementsAre(1, 2, 3, 5, 4));
    set.Put(set);
    set.Put(TypeParam());
    EXPECT_THAT(Content(set), ElementsAre(1, 2, 3, 5, 4));
}

TYPED_TEST(SetFamily, FindsItsElements) {
    const TypeParam set = this->S({1, 2});
    EXPECT_TRUE(set.Find(1));
    EXPECT_TRUE(set.Find(2));
    EXPECT_FALSE(set.Find(3));
    EXPECT_FALSE(TypeParam().Find(0));
    ASSERT_NE(set.FindNode(2), nullptr);
    EXPECT_EQ(set.FindNode(2)->element, 2);
    EXPECT_EQ(set.FindNode(1)->next, set.FindNode(2));
    EXPECT_EQ(set.FindNode(3), nullptr);
}

TYPED_TEST(SetFamily, CopiesKeepTheOrder) {
    TypeParam set = this->S({3, 1, 2});
    const TypeParam copy(set);
    TypeParam assigned = this->S({7, 8});
    EXPECT_EQ(&(assigned = set), &assigned);
    set.Remove(1);
    EXPECT_THAT(Content(copy), ElementsAre(3, 1, 2));
    EXPECT_THAT(Content(assigned), ElementsAre(3, 1, 2));
    const TypeParam& same = assigned;
    assigned = same;
    EXPECT_THAT(Content(assigned), ElementsAre(3, 1, 2));
    assigned = TypeParam();
    EXPECT_THAT(Content(assigned), IsEmpty());
}

TYPED_TEST(SetFamily, ClearRemovesAll) {
    TypeParam set = this->S({1, 2});
    set.Clear();
    EXPECT_THAT(Content(set), IsEmpty());
    set.Clear();
    set.Put(1);
    EXPECT_THAT(Content(set), ElementsAre(1));
}

TYPED_TEST(SetFamily, SetCapacityDoesNothing) {
    TypeParam set = this->S({1, 2});
    for (const int n : {10, 0, -1, INT_MAX}) {
        set.SetCapacity(n);
    }
    EXPECT_THAT(Content(set), ElementsAre(1, 2));
}

TYPED_TEST(SetFamily, RemovesWhatIsThere) {
    TypeParam set = this->S({1, 2, 3});
    set.Remove(4);
    set.Remove(2);
    set.Remove(2);
    EXPECT_THAT(Content(set), ElementsAre(1, 3));
    set.Remove(*set.cBegin().GetAsPtr());
    set.Remove(3);
    EXPECT_THAT(Content(set), IsEmpty());
    set.Remove(3);
}

TYPED_TEST(SetFamily, Intersects) {
    TypeParam set = this->S({1, 2, 3, 4, 5});
    set.Intersect(this->S({5, 4, 2, 7}));
    EXPECT_THAT(Content(set), ElementsAre(2, 4, 5));
    set.Intersect(set);
    EXPECT_THAT(Content(set), ElementsAre(2, 4, 5));
    set.Intersect(TypeParam());
    EXPECT_THAT(Content(set), IsEmpty());
    set.Intersect(this->S({1}));
    EXPECT_THAT(Content(set), IsEmpty());
}

TYPED_TEST(SetFamily, KnowsInclusion) {
    const TypeParam set = this->S({1, 2, 3});
    EXPECT_TRUE(TypeParam().IsIncludedIn(set));
    EXPECT_TRUE(TypeParam().IsIncludedIn(TypeParam()));
    EXPECT_TRUE(this->S({3, 1}).IsIncludedIn(set));
    EXPECT_TRUE(set.IsIncludedIn(set));
    EXPECT_FALSE(this->S({1, 4}).IsIncludedIn(set));
    EXPECT_FALSE(set.IsIncludedIn(this->S({1, 2})));
    EXPECT_FALSE(set.IsIncludedIn(TypeParam()));
}

TYPED_TEST(SetFamily, KnowsIntersection) {
    const TypeParam set = this->S({1, 2, 3});
    EXPECT_TRUE(set.IsIntersect(this->S({7, 3})));
    EXPECT_FALSE(set.IsIntersect(this->S({7, 8})));
    EXPECT_FALSE(set.IsIntersect(TypeParam()));
    EXPECT_FALSE(TypeParam().IsIntersect(set));
    EXPECT_FALSE(TypeParam().IsIntersect(TypeParam()));
    EXPECT_TRUE(set.IsIntersect(set));
}

TYPED_TEST(SetFamily, ComparesWithoutOrder) {
    EXPECT_TRUE(this->S({1, 2, 3}) == this->S({3, 1, 2}));
    EXPECT_FALSE(this->S({1, 2, 3}) != this->S({3, 1, 2}));
    EXPECT_TRUE(this->S({1, 2, 3}) != this->S({1, 2}));
    EXPECT_TRUE(this->S({1, 2}) != this->S({1, 2, 3}));
    EXPECT_FALSE(this->S({1, 2, 3}) == this->S({1, 2, 4}));
    EXPECT_TRUE(TypeParam() == TypeParam());
}

TYPED_TEST(SetFamily, IteratesInOrder) {
    TypeParam set = this->S({3, 1});
    auto it = set.cBegin();
    int out = 9;
    EXPECT_EQ(it.Get(out), Ok);
    EXPECT_EQ(out, 3);
    EXPECT_EQ(*it.GetAsPtrGoToNext(), 3);
    EXPECT_EQ(*it.GetAsPtr(), 1);
    EXPECT_FALSE(it.IsEnd());
    EXPECT_EQ(it.Next(), Ok);
    EXPECT_TRUE(it.IsEnd());
    EXPECT_EQ(it.Next(), Failure);
    EXPECT_EQ(it.Get(out), Failure);
    EXPECT_EQ(out, 3);
    EXPECT_EQ(it.GetAsPtr(), nullptr);
    EXPECT_EQ(it.GetAsPtrGoToNext(), nullptr);
    EXPECT_TRUE(TypeParam().cBegin().IsEnd());
}

TYPED_TEST(SetFamily, IteratorsAreEqualOnOneNodeOfOneSet) {
    using Iterator = typename TypeParam::const_iterator;
    TypeParam set = this->S({3, 1});
    TypeParam other = this->S({3, 1});
    EXPECT_TRUE(Iterator(set, set.FindNode(3)) == set.cBegin());
    EXPECT_TRUE(Iterator(set, set.FindNode(1)) != set.cBegin());
    EXPECT_TRUE(set.cBegin() != other.cBegin());
    EXPECT_TRUE(Iterator(set, nullptr) != Iterator(other, nullptr));
    Iterator none;
    EXPECT_TRUE(none == Iterator());
    EXPECT_TRUE(none.IsEnd());
    EXPECT_EQ(none.Next(), Failure);
    EXPECT_EQ(none.GetAsPtr(), nullptr);
}

TYPED_TEST(SetFamily, ShortageLeavesTheSetWhole) {
    using Operation = std::function<void(TypeParam&, const TypeParam&)>;
    const std::vector<Operation> operations = {
        [](TypeParam& set, const TypeParam&) { set.Put(9); },
        [](TypeParam& set, const TypeParam& other) { set = other; },
        [](TypeParam&, const TypeParam& other) { const TypeParam copy(other); },
        [](TypeParam& set, const TypeParam& other) { set.Put(other); },
    };
    const TypeParam other = this->S({1, 4, 5, 6});
    const int live = ArrayAllocations::Live();
    for (std::size_t i = 0; i < operations.size(); ++i) {
        for (int successes = 0;; ++successes) {
            ASSERT_LT(successes, 10);
            TypeParam set = this->S({1, 2, 3});
            bool hasThrown = false;
            {
                const ArrayAllocations::Shortage shortage(successes);
                try {
                    operations[i](set, other);
                } catch (const std::bad_alloc&) {
                    hasThrown = true;
                }
                EXPECT_EQ(hasThrown, shortage.HasStruck()) << "the exception leaves";
            }
            if (!hasThrown) {
                EXPECT_GT(successes, 0);
                break;
            }
            std::vector<int> expected = {1, 2, 3};
            for (int put = 0; i == 3 && put < successes; ++put) {
                expected.push_back(4 + put);
            }
            EXPECT_EQ(Content(set), expected);
        }
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(SetFamily, AgreesWithAVectorOverARandomSequence) {
    std::mt19937 random(1);
    const auto number = [&](int to) { return std::uniform_int_distribution<int>(0, to)(random); };
    TypeParam set;
    std::vector<int> model;
    const auto contains = [](const std::vector<int>& numbers, int x) { return std::ranges::count(numbers, x) != 0; };
    const auto put = [&](int x) {
        if (!contains(model, x)) {
            model.push_back(x);
        }
    };
    for (int step = 0; step < 10'000; ++step) {
        const int x = number(30);
        std::vector<int> others;
        for (int i = number(20); i > 0; --i) {
            others.push_back(number(30));
        }
        const TypeParam other = SetOf<TypeParam>(others);
        switch (number(5)) {
        case 0:
        case 1:
            set.Put(x);
            put(x);
            break;
        case 2:
            set.Put(other);
            std::ranges::for_each(others, put);
            break;
        case 3:
            set.Intersect(other);
            std::erase_if(model, [&](int y) { return !contains(others, y); });
            break;
        default:
            set.Remove(x);
            std::erase(model, x);
        }
        ASSERT_EQ(Content(set), model) << step;
        ASSERT_EQ(set.Find(x), contains(model, x));
        const bool isIncluded = std::ranges::all_of(model, [&](int y) { return contains(others, y); });
        ASSERT_EQ(set.IsIncludedIn(other), isIncluded);
        ASSERT_EQ(set.IsIntersect(other), std::ranges::any_of(model, [&](int y) { return contains(others, y); }));
        ASSERT_EQ(set == other, isIncluded && other.GetLength() == set.GetLength());
    }
}

TYPED_TEST(SetFamily, IsAVirtualTableAndTheEngine) {
    EXPECT_EQ(sizeof(TypeParam), 32u);
    TypeParam set = this->S({1, 2});
    struct {
        const void* table;
        int count;
        const void* first;
        const void* last;
    } fields;
    std::memcpy(static_cast<void*>(&fields), reinterpret_cast<const char*>(&set), sizeof fields);
    EXPECT_EQ(fields.count, 2);
    EXPECT_EQ(fields.first, set.FindNode(1));
    EXPECT_EQ(fields.last, set.FindNode(2));
    const auto it = set.cBegin();
    EXPECT_EQ(sizeof(it), 24u);
    const void* words[3];
    std::memcpy(words, reinterpret_cast<const char*>(&it), sizeof words);
    EXPECT_EQ(words[1], &set);
    EXPECT_EQ(words[2], set.FindNode(1));
}

namespace {

using namespace VirtualTable;

} // namespace

TYPED_TEST(SetFamily, HasTheDestructorsAsItsOnlyVirtualOperations) {
    using Iterator = typename TypeParam::const_iterator;
    EXPECT_EQ(SlotOf(&WithOneMore<TypeParam>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<Iterator>::OneMore), 2);
    static_assert(std::has_virtual_destructor_v<TypeParam>);
    static_assert(std::has_virtual_destructor_v<Iterator>);
}

TYPED_TEST(SetFamily, HasTheCompleteDestructorFirst) {
    const int live = ArrayAllocations::Live();
    alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
    auto* const inPlace = new (storage) TypeParam();
    inPlace->Put(1);
    SlotAt(inPlace, 0)(inPlace);
    EXPECT_EQ(ArrayAllocations::Live(), live);
    auto* const onHeap = new TypeParam();
    onHeap->Put(1);
    SlotAt(onHeap, 1)(onHeap);
    EXPECT_EQ(ArrayAllocations::Live(), live);
}
