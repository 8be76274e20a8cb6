/// @file
/// How the array containers treat their elements and their memory: strings as elements, elements whose copy throws,
/// shortage of memory; and what the containers consist of.

#include "ArrayAllocations.h"
#include "StringBlocks.h"
#include "VectorInstances.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

// What the definition of the containers needs.
#include <algorithm>
#include <cstring>
#include <functional>

using namespace VectorInstances;
using testing::ElementsAre;

/// A container of the family as a map nests it: elements with a virtual destructor and a copy that may throw.
class MapOfBuckets {
public:
    class Bucket {
    public:
        explicit Bucket(int number) : _number(std::make_unique<int>(number)) { ++s_live; }
        Bucket(const Bucket& other) {
            if (s_copiesLeft == 0) {
                throw std::runtime_error("no copy");
            }
            --s_copiesLeft;
            ++s_copies;
            ++s_live;
            _number = std::make_unique<int>(*other._number);
        }
        Bucket& operator=(const Bucket& other) {
            if (s_assignmentsLeft == 0) {
                throw std::runtime_error("no assignment");
            }
            --s_assignmentsLeft;
            ++s_assignments;
            *_number = *other._number;
            return *this;
        }
        virtual ~Bucket() { --s_live; }

        int Number() const { return *_number; }

        static inline int s_live = 0;
        /// Copies that still succeed; negative for no limit.
        static inline int s_copiesLeft = -1;
        static inline int s_assignmentsLeft = -1;
        static inline int s_copies = 0;
        static inline int s_assignments = 0;

    private:
        std::unique_ptr<int> _number;
        long _unused[2] = {};
    };

#define QORSYSTS_VECTOR ListOfBuckets
#define QORSYSTS_VECTOR_ELEMENT Bucket
#include "VELVectorClass.inc"
};

#define QORSYSTS_VECTOR ListOfBuckets
#define QORSYSTS_VECTOR_SCOPE MapOfBuckets::
#include "VectorMembers.inc"
#include "VirtualTable.h"

namespace {

using Bucket = MapOfBuckets::Bucket;
using ListOfBuckets = MapOfBuckets::ListOfBuckets;

std::vector<int> BucketNumbers(const ListOfBuckets& list) {
    std::vector<int> numbers;
    for (int i = 0; i < list.GetLength(); ++i) {
        numbers.push_back(list.pT(i)->Number());
    }
    return numbers;
}

ListOfBuckets Buckets(std::initializer_list<int> numbers) {
    ListOfBuckets list;
    for (const int number : numbers) {
        list.PutBack(Bucket(number));
    }
    return list;
}

/// The copies and assignments of elements in an operation.
struct Calls {
    int copies;
    int assignments;
    bool operator==(const Calls&) const = default;
    friend void PrintTo(const Calls& calls, std::ostream* out) {
        *out << calls.copies << " copies, " << calls.assignments << " assignments";
    }
};

template <class Operation>
Calls CallsOf(const Operation& operation) {
    Bucket::s_copies = Bucket::s_assignments = 0;
    operation();
    return {Bucket::s_copies, Bucket::s_assignments};
}

/// The calls of the C library's sort.
struct SortCall {
    const void* base;
    std::size_t count;
    std::size_t size;
    int (*compare)(const void*, const void*);
};
std::vector<SortCall> s_sortCalls;

/// How many handles there are on the block of a string.
template <class String>
int HandlesOf(const String& s) {
    return StringBlocks::StringAccess::BlockOf(s)->_refCount;
}

} // namespace

extern "C" void __real_qsort(void* base, std::size_t count, std::size_t size, int (*compare)(const void*, const void*));
extern "C" void __wrap_qsort(void* base, std::size_t count, std::size_t size,
                             int (*compare)(const void*, const void*)) {
    s_sortCalls.push_back({base, count, size, compare});
    __real_qsort(base, count, size, compare);
}

// Strings.

template <class Vector>
class VectorsOfStrings : public testing::Test {};
TYPED_TEST_SUITE(VectorsOfStrings, Strings);

TYPED_TEST(VectorsOfStrings, ShareTheBlocksOfTheirElements) {
    const typename TypeParam::Element s("text");
    {
        TypeParam vector;
        vector.PutBack(s);
        EXPECT_EQ(HandlesOf(s), 2);
        EXPECT_EQ(vector.pT(0)->ConvertToChar(), s.ConvertToChar());
        vector.Insert(0, s);
        EXPECT_EQ(HandlesOf(s), 3);
        const TypeParam copy(vector);
        EXPECT_EQ(HandlesOf(s), 5);
        TypeParam assigned;
        assigned = copy;
        EXPECT_EQ(HandlesOf(s), 7);
        assigned.Clear();
        EXPECT_EQ(HandlesOf(s), 5);
        typename TypeParam::Element out;
        vector.PopBack(out);
        EXPECT_EQ(HandlesOf(s), 5);
        vector.PopFront(out);
        EXPECT_EQ(HandlesOf(s), 4);
        vector.PutBack(copy);
        vector.RemoveRange(0, 1);
        vector.Remove(0);
        EXPECT_EQ(HandlesOf(s), 4);
    }
    EXPECT_EQ(HandlesOf(s), 1);
}

TYPED_TEST(VectorsOfStrings, MoveAsRawBytes) {
    std::vector<typename TypeParam::Element> strings;
    TypeParam vector;
    for (int i = 0; i < 100; ++i) {
        strings.push_back(Make<TypeParam>(i));
        vector.PutBack(strings.back());
    }
    vector.SetCapacity(1000);
    vector.SetCapacity(vector.GetLength());
    vector.Remove(10);
    vector.RemoveRange(20, 30);
    vector.Insert(5, Make<TypeParam>(7));
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(HandlesOf(strings[static_cast<std::size_t>(i)]), i == 10 || (i >= 21 && i < 31) ? 1 : 2) << i;
    }
}

TYPED_TEST(VectorsOfStrings, HoldNullHandlesAndEmptyStrings) {
    TypeParam vector;
    vector.PutBack(StringBlocks::NullString<typename TypeParam::Element>());
    vector.PutBack(typename TypeParam::Element());
    vector.Insert(0, vector);
    EXPECT_EQ(vector.GetLength(), 4);
    TypeParam copy(vector);
    EXPECT_EQ(copy.Find(StringBlocks::NullString<typename TypeParam::Element>(), 1), 2);
    EXPECT_EQ(copy.Find(typename TypeParam::Element()), 1);
    copy.RemoveRange(0, 4);
}

TYPED_TEST(VectorsOfStrings, SortByAComparison) {
    using String = typename TypeParam::Element;
    TypeParam vector = Filled<TypeParam>({30, 1, 200, 4, 4, 77});
    vector.Sort([](const String* a, const String* b) { return NumberOf(*a) - NumberOf(*b); });
    EXPECT_THAT(Content(vector), ElementsAre(1, 4, 4, 30, 77, 200));
    vector.Sort([](const String* a, const String* b) { return NumberOf(*b) - NumberOf(*a); });
    EXPECT_THAT(Content(vector), ElementsAre(200, 77, 30, 4, 4, 1));
    EXPECT_EQ(HandlesOf(*vector.pT(0)), 1);
    vector.Sort(nullptr);
    EXPECT_THAT(Content(vector), ElementsAre(200, 77, 30, 4, 4, 1));
}

TYPED_TEST(VectorsOfStrings, SortComparesTheElementsThemselves) {
    using String = typename TypeParam::Element;
    static const TypeParam* s_vector;
    TypeParam vector = Filled<TypeParam>({2, 1});
    s_vector = &vector;
    static int s_calls;
    s_calls = 0;
    const auto compare = [](const String* a, const String* b) {
        ++s_calls;
        EXPECT_TRUE(a != b && a != nullptr && b != nullptr);
        EXPECT_EQ(s_vector->GetLength(), 2);
        return NumberOf(*a) - NumberOf(*b);
    };
    vector.Sort(compare);
    EXPECT_GE(s_calls, 1);
    s_calls = 0;
    TypeParam empty;
    empty.Sort(compare);
    Filled<TypeParam>({1}).Sort(compare);
    EXPECT_EQ(s_calls, 0);
}

TYPED_TEST(VectorsOfStrings, SortIsThatOfTheCLibraryOnTheSlots) {
    using String = typename TypeParam::Element;
    int (*const compare)(const String*, const String*) = [](const String* a, const String* b) {
        return NumberOf(*a) - NumberOf(*b);
    };
    TypeParam vector;
    s_sortCalls.clear();
    vector.Sort(compare);
    EXPECT_TRUE(s_sortCalls.empty()) << "there is no buffer";
    vector = Filled<TypeParam>({30, 1, 200, 4, 4, 77});
    vector.SetCapacity(50);
    vector.Sort(compare);
    ASSERT_EQ(s_sortCalls.size(), 1u);
    EXPECT_EQ(s_sortCalls[0].base, vector.pT(0));
    EXPECT_EQ(s_sortCalls[0].count, 6u);
    EXPECT_EQ(s_sortCalls[0].size, 8u);
    EXPECT_EQ(reinterpret_cast<void*>(s_sortCalls[0].compare), reinterpret_cast<void*>(compare));
    vector.Clear();
    vector.Sort(compare);
    ASSERT_EQ(s_sortCalls.size(), 2u) << "the buffer is still there";
    EXPECT_EQ(s_sortCalls[1].count, 0u);
}

// Elements whose copy or assignment throws.

TEST(VectorsOfBuckets, ServeElementsWithAVirtualDestructor) {
    static_assert(sizeof(Bucket) == 32);
    {
        ListOfBuckets list = Buckets({1, 2, 3});
        EXPECT_EQ(Bucket::s_live, 3);
        list.Insert(1, list);
        EXPECT_THAT(BucketNumbers(list), ElementsAre(1, 1, 2, 3, 2, 3));
        list.RemoveRange(0, 4);
        EXPECT_EQ(Bucket::s_live, 2);
        Bucket out(0);
        EXPECT_EQ(list.PopFront(out), Ok);
        EXPECT_EQ(out.Number(), 2);
        ListOfBuckets copy(list);
        copy = Buckets({7, 8});
        EXPECT_THAT(BucketNumbers(copy), ElementsAre(7, 8));
        EXPECT_EQ(Fields(copy).elementSize, 32);
        EXPECT_EQ(copy.Begin().GetAsPtr()->Number(), 7);
    }
    EXPECT_EQ(Bucket::s_live, 0);
}

TEST(VectorsOfBuckets, MoveElementsWithoutACopy) {
    ListOfBuckets list = Buckets({1, 2, 3, 4});
    const Bucket added(5);
    Bucket::s_copiesLeft = 1;
    EXPECT_EQ(list.Insert(0, added), Ok);
    EXPECT_EQ(list.Remove(2), Ok);
    EXPECT_EQ(list.SetCapacity(100), Ok);
    Bucket::s_copiesLeft = -1;
    EXPECT_THAT(BucketNumbers(list), ElementsAre(5, 1, 3, 4));
}

TEST(VectorsOfBuckets, CloseGapsWithoutACallOfTheElements) {
    ListOfBuckets list = Buckets({1, 2, 3, 4, 5, 6, 7, 8});
    Bucket out(0);
    EXPECT_EQ(CallsOf([&] { list.Remove(1); }), (Calls{0, 0}));
    EXPECT_EQ(CallsOf([&] { list.RemoveRange(1, 3); }), (Calls{0, 0}));
    EXPECT_EQ(CallsOf([&] { list.Begin().RemoveGoToNext(); }), (Calls{0, 0}));
    EXPECT_EQ(CallsOf([&] { list.Begin().RemoveGoToPrev(); }), (Calls{0, 0}));
    EXPECT_THAT(BucketNumbers(list), ElementsAre(6, 7, 8));
    EXPECT_EQ(CallsOf([&] { list.PopFront(out); }), (Calls{0, 1})) << "of the output alone";
    EXPECT_EQ(out.Number(), 6);
    EXPECT_EQ(CallsOf([&] { list.PopBack(out); }), (Calls{0, 1}));
    EXPECT_EQ(out.Number(), 8);
    EXPECT_THAT(BucketNumbers(list), ElementsAre(7));
}

TEST(VectorsOfBuckets, InsertWithOneCopyForEachElement) {
    const ListOfBuckets other = Buckets({6, 7, 8, 9});
    using Operation = std::function<void(ListOfBuckets&)>;
    struct Row {
        const char* name;
        int copies;
        Operation operation;
    };
    const std::vector<Row> rows = {
        {"element", 1, [&](ListOfBuckets& list) { list.Insert(1, *other.pT(0)); }},
        {"container", 4, [&](ListOfBuckets& list) { list.Insert(1, other); }},
        {"range", 3, [&](ListOfBuckets& list) { list.Insert(1, other, 1, 4); }},
        {"buffer", 2, [&](ListOfBuckets& list) { list.Insert(1, other.pT(2), 2); }},
        {"in front", 4, [&](ListOfBuckets& list) { list.PutFront(other); }},
        {"behind", 4, [&](ListOfBuckets& list) { list.PutBack(other); }},
        {"iterator", 4, [&](ListOfBuckets& list) { list.Begin().Insert(other); }},
        {"itself", 3, [&](ListOfBuckets& list) { list.Insert(1, list); }},
        {"a part of itself", 2, [&](ListOfBuckets& list) { list.Insert(1, list, 0, 2); }},
    };
    for (const auto& [name, copies, operation] : rows) {
        for (const int capacity : {3, 20}) {
            ListOfBuckets list = Buckets({1, 2, 3});
            list.SetCapacity(capacity);
            const int taken = ArrayAllocations::Taken();
            EXPECT_EQ(CallsOf([&] { operation(list); }), (Calls{copies, 0})) << name;
            EXPECT_EQ(ArrayAllocations::Taken() - taken, capacity == 3 ? 1 : 0) << name;
            EXPECT_EQ(list.GetLength(), 3 + copies) << name;
        }
    }
}

TEST(VectorsOfBuckets, StayAsTheyWereWhenTheOutputCannotBeAssigned) {
    ListOfBuckets list = Buckets({1, 2, 3});
    Bucket out(7);
    const int live = Bucket::s_live;
    Bucket::s_assignmentsLeft = 0;
    EXPECT_THROW(list.PopFront(out), std::runtime_error);
    EXPECT_THROW(list.PopBack(out), std::runtime_error);
    EXPECT_THROW(list.Get(1, out), std::runtime_error);
    EXPECT_THROW(list.Set(1, out), std::runtime_error);
    Bucket::s_assignmentsLeft = -1;
    EXPECT_THAT(BucketNumbers(list), ElementsAre(1, 2, 3));
    EXPECT_EQ(Bucket::s_live, live);
    EXPECT_EQ(list.PopFront(out), Ok);
    EXPECT_EQ(out.Number(), 1);
    EXPECT_EQ(list.PopBack(out), Ok);
    EXPECT_EQ(out.Number(), 3);
    EXPECT_EQ(Bucket::s_live, live - 2);
}

TEST(VectorsOfBuckets, StayAsTheyWereWhenACopyThrows) {
    using Operation = std::function<void(ListOfBuckets&, const ListOfBuckets&)>;
    const std::vector<Operation> operations = {
        [](ListOfBuckets& list, const ListOfBuckets& other) { list.PutBack(*other.pT(0)); },
        [](ListOfBuckets& list, const ListOfBuckets& other) { list.PutFront(*other.pT(0)); },
        [](ListOfBuckets& list, const ListOfBuckets& other) { list.Insert(1, other); },
        [](ListOfBuckets& list, const ListOfBuckets& other) { list.Insert(1, other, 1, 4); },
        [](ListOfBuckets& list, const ListOfBuckets& other) { list.Insert(3, other.pT(0), 4); },
        [](ListOfBuckets& list, const ListOfBuckets&) { list.Insert(1, list); },
        [](ListOfBuckets& list, const ListOfBuckets&) { list.PutBack(list); },
        [](ListOfBuckets& list, const ListOfBuckets&) { list.PutFront(list); },
        [](ListOfBuckets&, const ListOfBuckets& other) { const ListOfBuckets copy(other); },
        [](ListOfBuckets&, const ListOfBuckets& other) { const ListOfBuckets copy(other, 1, 4); },
        [](ListOfBuckets& list, const ListOfBuckets& other) {
            list.SetCapacity(10);
            list.BuildRangeFromList(3, other);
            list.DestroyRange(3, 7);
        },
    };
    const ListOfBuckets other = Buckets({6, 7, 8, 9});
    for (std::size_t i = 0; i < operations.size(); ++i) {
        for (const int capacity : {3, 20}) {
            for (int copies = 0;; ++copies) {
                SCOPED_TRACE(testing::Message() << "operation " << i << ", copy " << copies);
                ASSERT_LT(copies, 10);
                ListOfBuckets list = Buckets({1, 2, 3});
                list.SetCapacity(capacity);
                const int live = Bucket::s_live;
                const int arrays = ArrayAllocations::Live();
                Bucket::s_copiesLeft = copies;
                bool hasThrown = false;
                try {
                    operations[i](list, other);
                } catch (const std::runtime_error&) {
                    hasThrown = true;
                }
                Bucket::s_copiesLeft = -1;
                EXPECT_EQ(ArrayAllocations::Live(), arrays);
                if (!hasThrown) {
                    break;
                }
                EXPECT_THAT(BucketNumbers(list), ElementsAre(1, 2, 3));
                EXPECT_EQ(Bucket::s_live, live);
                list.PutBack(Bucket(4));
                EXPECT_THAT(BucketNumbers(list), ElementsAre(1, 2, 3, 4));
            }
        }
    }
}

TEST(VectorsOfBuckets, AreEmptyWhenACopyThrowsInAnAssignment) {
    const ListOfBuckets other = Buckets({6, 7, 8});
    ListOfBuckets list = Buckets({1, 2});
    const int live = Bucket::s_live;
    Bucket::s_copiesLeft = 2;
    EXPECT_THROW(list = other, std::runtime_error);
    Bucket::s_copiesLeft = -1;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(Bucket::s_live, live - 2);
    list = other;
    EXPECT_THAT(BucketNumbers(list), ElementsAre(6, 7, 8));
}

// Shortage.

template <class Vector>
class VectorShortage : public testing::Test {};
TYPED_TEST_SUITE(VectorShortage, All);

TYPED_TEST(VectorShortage, LeavesTheContainerAsItWas) {
    using Operation = std::function<void(TypeParam&, const TypeParam&)>;
    const std::vector<Operation> operations = {
        [](TypeParam& vector, const TypeParam& other) { vector.PutBack(*other.pT(0)); },
        [](TypeParam& vector, const TypeParam& other) { vector.PutFront(*other.pT(0)); },
        [](TypeParam& vector, const TypeParam& other) { vector.PutBack(other); },
        [](TypeParam& vector, const TypeParam& other) { vector.PutFront(other); },
        [](TypeParam& vector, const TypeParam& other) { vector.Insert(1, *other.pT(0)); },
        [](TypeParam& vector, const TypeParam& other) { vector.Insert(1, other); },
        [](TypeParam& vector, const TypeParam& other) { vector.Insert(2, other, 0, 2); },
        [](TypeParam& vector, const TypeParam& other) { vector.Insert(2, other.pT(0), 2); },
        [](TypeParam& vector, const TypeParam&) { vector.Insert(2, vector); },
        [](TypeParam& vector, const TypeParam& other) { vector.Begin().Insert(*other.pT(0)); },
        [](TypeParam& vector, const TypeParam& other) { vector.Begin().Insert(other); },
        [](TypeParam& vector, const TypeParam& other) { vector = other; },
        [](TypeParam& vector, const TypeParam&) { vector.SetCapacity(50); },
        [](TypeParam&, const TypeParam& other) { const TypeParam copy(other); },
        [](TypeParam&, const TypeParam& other) { const TypeParam copy(other, 0, 2); },
        [](TypeParam& vector, const TypeParam&) { vector.SetCapacity(4); },
    };
    const TypeParam other = Filled<TypeParam>({7, 8, 9, 10, 11, 12});
    const int live = ArrayAllocations::Live();
    for (std::size_t i = 0; i < operations.size(); ++i) {
        for (int successes = 0;; ++successes) {
            SCOPED_TRACE(testing::Message() << "operation " << i << ", allocation " << successes);
            ASSERT_LT(successes, 5);
            TypeParam expected = Filled<TypeParam>({1, 2, 3, 4});
            operations[i](expected, other);
            TypeParam vector = Filled<TypeParam>({1, 2, 3, 4});
            bool hasThrown = false;
            {
                const ArrayAllocations::Shortage shortage(successes);
                try {
                    operations[i](vector, other);
                } catch (const std::bad_alloc&) {
                    hasThrown = true;
                }
                EXPECT_EQ(hasThrown, shortage.HasStruck()) << "the exception leaves";
            }
            if (!hasThrown) {
                break;
            }
            EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3, 4));
            operations[i](vector, other);
            EXPECT_EQ(Content(vector), Content(expected));
            vector.PutBack(Make<TypeParam>(5));
            EXPECT_EQ(vector.GetLength(), expected.GetLength() + 1);
        }
    }
    EXPECT_EQ(ArrayAllocations::Live(), live);
}

TYPED_TEST(VectorShortage, KeepsWithinTheCapacityThatAFailedShrinkLeft) {
    TypeParam vector = Filled<TypeParam>({1, 2, 3, 4});
    vector.SetCapacity(20);
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(vector.SetCapacity(4), std::bad_alloc);
    }
    EXPECT_EQ(CapacityOf(vector), 4);
    EXPECT_EQ(vector.PutBack(Make<TypeParam>(5)), Ok);
    EXPECT_EQ(CapacityOf(vector), 8);
    EXPECT_THAT(Content(vector), ElementsAre(1, 2, 3, 4, 5));
}

// What the containers consist of.

namespace {

using namespace VirtualTable;

template <class Vector>
class VectorLayout : public testing::Test {};
TYPED_TEST_SUITE(VectorLayout, All);

} // namespace

TYPED_TEST(VectorLayout, IsAVirtualTableAndTheEngine) {
    static_assert(std::is_nothrow_destructible_v<TypeParam>);
    TypeParam vector = Filled<TypeParam>({1, 2, 3});
    EXPECT_EQ(sizeof(TypeParam), 32u);
    const Fields fields(vector);
    EXPECT_EQ(fields.buffer, vector.pT(0));
    EXPECT_EQ(fields.size, 3);
    EXPECT_EQ(fields.capacity, 4);
}

TYPED_TEST(VectorLayout, OfIteratorsIsAVirtualTableTheContainerAndTheIndex) {
    TypeParam vector = Filled<TypeParam>({1, 2, 3});
    const typename TypeParam::iterator it(vector, 2);
    static_assert(sizeof(typename TypeParam::const_iterator) == 24);
    static_assert(sizeof(it) == 24);
    static_assert(std::is_base_of_v<typename TypeParam::const_iterator, typename TypeParam::iterator>);
    struct {
        const void* table;
        const TypeParam* container;
        int index;
    } fields;
    std::memcpy(&fields, reinterpret_cast<const char*>(&it), sizeof fields);
    EXPECT_EQ(fields.container, &vector);
    EXPECT_EQ(fields.index, 2);
}

TYPED_TEST(VectorLayout, HasTheDestructorsAsItsOnlyVirtualOperations) {
    EXPECT_EQ(SlotOf(&WithOneMore<TypeParam>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename TypeParam::const_iterator>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename TypeParam::iterator>::OneMore), 2);
    static_assert(std::has_virtual_destructor_v<TypeParam>);
    static_assert(std::has_virtual_destructor_v<typename TypeParam::const_iterator>);
}

TYPED_TEST(VectorLayout, HasTheCompleteDestructorFirst) {
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
    auto* const iterator = new typename TypeParam::iterator();
    SlotAt(iterator, 1)(iterator);
    auto* const constant = new typename TypeParam::const_iterator();
    SlotAt(constant, 0)(constant);
    ::operator delete(constant);
}
