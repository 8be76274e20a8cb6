/// @file
/// How the lists treat their elements and their memory; and what they consist of.

#include "ArrayAllocations.h"
#include "ListInstances.h"
#include "StringBlocks.h"
#include "VirtualTable.h"

#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <type_traits>

namespace {

using namespace ListInstances;
using testing::ElementsAre;
using Strings = QORSysTSListOfUnicodeString;

/// How many handles there are on the block of a string.
int HandlesOf(const QORSysTSUnicodeString& s) {
    return StringBlocks::StringAccess::BlockOf(s)->_refCount;
}

} // namespace

// Strings.

TEST(ListOfStrings, SharesTheBlocksOfItsElements) {
    const QORSysTSUnicodeString s("text");
    {
        Strings list;
        list.PutBack(s);
        EXPECT_EQ(HandlesOf(s), 2);
        EXPECT_EQ(list.GetAsPtr(0)->ConvertToChar(), s.ConvertToChar());
        list.PutFront(s);
        EXPECT_EQ(HandlesOf(s), 3);
        const Strings copy(list);
        EXPECT_EQ(HandlesOf(s), 5);
        Strings assigned;
        assigned = copy;
        EXPECT_EQ(HandlesOf(s), 7);
        assigned.Clear();
        EXPECT_EQ(HandlesOf(s), 5);
        QORSysTSUnicodeString out;
        list.PopBack(out);
        EXPECT_EQ(HandlesOf(s), 5);
        list.PopFront(out);
        EXPECT_EQ(HandlesOf(s), 4);
        list.PutBack(copy);
        list.RemoveRange(0, 1);
        list.Begin().RemoveGoToNext();
        EXPECT_EQ(HandlesOf(s), 4);
    }
    EXPECT_EQ(HandlesOf(s), 1);
}

TEST(ListOfStrings, LeavesNeighboursAlone) {
    std::vector<QORSysTSUnicodeString> strings;
    Strings list;
    for (int i = 0; i < 50; ++i) {
        strings.push_back(Make<Strings>(i));
        list.PutBack(strings.back());
    }
    list.Remove(10);
    list.RemoveRange(20, 30);
    list.Insert(5, Make<Strings>(7));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(HandlesOf(strings[static_cast<std::size_t>(i)]), i == 10 || (i >= 21 && i < 31) ? 1 : 2) << i;
    }
}

TEST(ListOfStrings, HoldsNullHandlesAndEmptyStrings) {
    Strings list;
    list.PutBack(StringBlocks::NullString<QORSysTSUnicodeString>());
    list.PutBack(QORSysTSUnicodeString());
    list.PutBack(list);
    EXPECT_EQ(list.GetLength(), 4);
    Strings copy(list);
    EXPECT_EQ(copy.Find(StringBlocks::NullString<QORSysTSUnicodeString>(), 1), 2);
    EXPECT_EQ(copy.Find(QORSysTSUnicodeString()), 1);
    copy.RemoveRange(0, 4);
}

TEST(ListOfArrays, ComparesArraysByTheirBytes) {
    QORSysTSVectorOfBYTE two;
    two.PutBack(1);
    two.PutBack(2);
    QORSysTSListOfVectorOfBYTE list = Filled<QORSysTSListOfVectorOfBYTE>({1, 2});
    list.PutBack(two);
    EXPECT_EQ(list.Find(two), 2);
    EXPECT_EQ(list.Find(QORSysTSVectorOfBYTE()), -1);
    list.GetAsPtr(0)->PutBack(2);
    EXPECT_EQ(list.Find(two), 0);
}

// Memory.

template <class List>
class ListMemory : public testing::Test {};
TYPED_TEST_SUITE(ListMemory, All);

TYPED_TEST(ListMemory, IsOneBlockPerElement) {
    const auto x = Make<TypeParam>(1);
    TypeParam list;
    const int taken = ArrayAllocations::Taken();
    list.PutBack(x);
    const int perElement = std::is_same_v<typename TypeParam::Element, QORSysTSVectorOfBYTE> ? 2 : 1;
    EXPECT_EQ(ArrayAllocations::Taken(), taken + perElement);
    EXPECT_EQ(sizeof(typename TypeParam::Node), perElement == 2 ? 48u : 24u);
    if (perElement == 1) {
        EXPECT_EQ(ArrayAllocations::LastSize(), 24u);
    }
    EXPECT_EQ(static_cast<const void*>(list.GetAsPtr(0)),
              static_cast<const void*>(reinterpret_cast<const char*>(NodeAt(list, 0)) + 16))
        << "the element stands directly behind the links";
}

TYPED_TEST(ListMemory, IsGivenBackAtTheEnd) {
    const int live = ArrayAllocations::Live();
    {
        TypeParam list = Filled<TypeParam>({1, 2, 3, 4, 5});
        const TypeParam copy(list);
        TypeParam assigned = Filled<TypeParam>({6});
        assigned = copy;
        list.PutBack(copy);
        list.Begin().RemoveGoToNext();
        list.Last().RemoveGoToPrev();
        list.RemoveRange(1, 3);
        auto out = Make<TypeParam>(0);
        list.PopBack(out);
        list.Remove(0);
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(ListMemory, ShortageLeavesTheListAsItWas) {
    using Operation = std::function<void(TypeParam&, const TypeParam&)>;
    const typename TypeParam::Element buffer[] = {Make<TypeParam>(20), Make<TypeParam>(21)};
    const std::vector<Operation> operations = {
        [](TypeParam& list, const TypeParam& other) { list.PutBack(*other.GetAsPtr(0)); },
        [](TypeParam& list, const TypeParam& other) { list.PutFront(*other.GetAsPtr(0)); },
        [](TypeParam& list, const TypeParam& other) { list.PutBack(other); },
        [](TypeParam& list, const TypeParam& other) { list.PutFront(other); },
        [](TypeParam& list, const TypeParam& other) { list.Insert(1, *other.GetAsPtr(0)); },
        [](TypeParam& list, const TypeParam& other) { list.Insert(4, *other.GetAsPtr(0)); },
        [](TypeParam& list, const TypeParam& other) { list.Insert(1, other); },
        [](TypeParam& list, const TypeParam& other) { list.Insert(2, other, 0, 2); },
        [&](TypeParam& list, const TypeParam&) { list.Insert(2, buffer, 2); },
        [](TypeParam& list, const TypeParam&) { list.Insert(2, list); },
        [](TypeParam& list, const TypeParam&) { list.PutBack(list); },
        [](TypeParam& list, const TypeParam& other) { list.Begin().Insert(*other.GetAsPtr(0)); },
        [](TypeParam& list, const TypeParam& other) { list.Begin().Insert(other); },
        [](TypeParam& list, const TypeParam& other) { list = other; },
        [](TypeParam&, const TypeParam& other) { const TypeParam copy(other); },
        [](TypeParam&, const TypeParam& other) { const TypeParam copy(other, 0, 2); },
        [](TypeParam& list, const TypeParam& other) {
            list.InsertNodeRangeBeforeNode(*NodeAt(list, 0), NodeAt(other, 0), nullptr);
        },
    };
    const TypeParam other = Filled<TypeParam>({7, 8, 9});
    // False when the operation did not run out of memory.
    const auto runsOut = [&](const Operation& operation, int successes) {
        TypeParam expected = Filled<TypeParam>({1, 2, 3, 4});
        operation(expected, other);
        TypeParam list = Filled<TypeParam>({1, 2, 3, 4});
        bool hasThrown = false;
        {
            const ArrayAllocations::Shortage shortage(successes);
            try {
                operation(list, other);
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
            EXPECT_EQ(hasThrown, shortage.HasStruck()) << "the exception leaves";
        }
        if (hasThrown) {
            EXPECT_THAT(Content(list), ElementsAre(1, 2, 3, 4));
            operation(list, other);
        }
        EXPECT_EQ(Content(list), Content(expected));
        list.PutBack(Make<TypeParam>(5));
        EXPECT_EQ(list.GetLength(), expected.GetLength() + 1);
        return hasThrown;
    };
    for (std::size_t i = 0; i < operations.size(); ++i) {
        for (int successes = 0;; ++successes) {
            SCOPED_TRACE(testing::Message() << "operation " << i << ", allocation " << successes);
            ASSERT_LT(successes, 10);
            const int live = ArrayAllocations::Live();
            const bool hasRunOut = runsOut(operations[i], successes);
            EXPECT_EQ(ArrayAllocations::Live(), live);
            if (!hasRunOut) {
                EXPECT_GT(successes, 0);
                break;
            }
        }
    }
}

TYPED_TEST(ListMemory, ShortageLeavesIteratorsAsTheyWere) {
    TypeParam list = Filled<TypeParam>({1, 2});
    const TypeParam other = Filled<TypeParam>({7});
    auto onElement = list.Begin();
    auto behind = list.Last();
    behind.Next();
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(onElement.Insert(*other.GetAsPtr(0)), std::bad_alloc);
        EXPECT_THROW(onElement.Insert(other), std::bad_alloc);
        EXPECT_THROW(behind.Insert(*other.GetAsPtr(0)), std::bad_alloc);
        EXPECT_THROW(behind.Insert(other), std::bad_alloc);
    }
    EXPECT_EQ(onElement.GetIndex(), 0);
    EXPECT_EQ(behind.GetIndex(), 2);
}

TEST(ListOfArrays, KeepsTheElementThatHasNoRoomOutside) {
    QORSysTSListOfVectorOfBYTE list = Filled<QORSysTSListOfVectorOfBYTE>({1, 2});
    QORSysTSVectorOfBYTE out;
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(list.PopFront(out), std::bad_alloc);
        EXPECT_THROW(list.PopBack(out), std::bad_alloc);
        EXPECT_THROW(list.Get(0, out), std::bad_alloc);
    }
    EXPECT_THAT(Content(list), ElementsAre(1, 2));
}

// What the lists consist of.

namespace {

using namespace VirtualTable;

} // namespace

template <class List>
class ListLayout : public testing::Test {};
TYPED_TEST_SUITE(ListLayout, All);

TYPED_TEST(ListLayout, IsAVirtualTableAndTheEngine) {
    TypeParam list = Filled<TypeParam>({1, 2, 3});
    EXPECT_EQ(sizeof(TypeParam), 32u);
    int count;
    std::memcpy(&count, reinterpret_cast<const char*>(&list) + 8, sizeof count);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(&NodeAt(list, 0)->element, list.GetAsPtr(0));
}

TYPED_TEST(ListLayout, OfIteratorsIsAVirtualTableTheListTheNodeAndTheIndex) {
    TypeParam list = Filled<TypeParam>({1, 2, 3});
    const typename TypeParam::iterator it = list.Last();
    static_assert(sizeof(typename TypeParam::const_iterator) == 32);
    static_assert(sizeof(it) == 32);
    static_assert(std::is_base_of_v<typename TypeParam::const_iterator, typename TypeParam::iterator>);
    struct {
        const void* table;
        const TypeParam* list;
        const void* node;
        int index;
    } fields;
    std::memcpy(&fields, reinterpret_cast<const char*>(&it), sizeof fields);
    EXPECT_EQ(fields.list, &list);
    EXPECT_EQ(fields.node, NodeAt(list, 2));
    EXPECT_EQ(fields.index, 2);
}

TYPED_TEST(ListLayout, HasTheDestructorsAsItsOnlyVirtualOperations) {
    EXPECT_EQ(SlotOf(&WithOneMore<TypeParam>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename TypeParam::const_iterator>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename TypeParam::iterator>::OneMore), 2);
    static_assert(std::has_virtual_destructor_v<TypeParam>);
    static_assert(std::has_virtual_destructor_v<typename TypeParam::const_iterator>);
}

TYPED_TEST(ListLayout, HasTheCompleteDestructorFirst) {
    const int live = ArrayAllocations::Live();
    alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
    auto* const inPlace = new (storage) TypeParam();
    inPlace->PutBack(Make<TypeParam>(1));
    SlotAt(inPlace, 0)(inPlace);
    EXPECT_EQ(ArrayAllocations::Live(), live);
    auto* const onHeap = new TypeParam();
    onHeap->PutBack(Make<TypeParam>(1));
    SlotAt(onHeap, 1)(onHeap);
    EXPECT_EQ(ArrayAllocations::Live(), live);
}
