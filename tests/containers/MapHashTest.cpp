/// @file
/// Which bucket a key belongs to, and what the maps consist of.

#include "ArrayAllocations.h"
#include "MapInstances.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "UnitHash.h"
#include "VirtualTable.h"

#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <type_traits>

using namespace MapInstances;
using StringBlocks::NullString;

using IntMap = QORSysTSHashMapOfIntToInt;
using DumpMap = QORSysTSHashMapOfUnicodeStringToInt;
using String = QORSysTSUnicodeString;

struct HashRow {
    int key;
    unsigned int hash;
    friend void PrintTo(const HashRow& row, std::ostream* out) { *out << row.key; }
};

class IntegerHash : public testing::TestWithParam<HashRow> {};

TEST_P(IntegerHash, TakesTheBytesAsSignedNumbers) {
    const auto& [key, hash] = GetParam();
    EXPECT_EQ(HashOfBytes(&key, sizeof key), hash);
    for (const int minEntries : {1, 7, 12, 1000}) {
        const IntMap map(minEntries, 1.0F);
        EXPECT_EQ(map.Hash(key), static_cast<int>(hash % static_cast<unsigned int>(minEntries)));
        const QORSysTSHashMapOfIntToVoidPtr other(minEntries, 1.0F);
        EXPECT_EQ(other.Hash(key), map.Hash(key));
    }
}

constexpr unsigned int Cubed = 131u * 131u * 131u;

INSTANTIATE_TEST_SUITE_P(Rows, IntegerHash,
                         testing::Values(HashRow{0, 0}, HashRow{1, Cubed}, HashRow{127, 127 * Cubed},
                                         HashRow{128, ((128u - 256u) * Cubed) & 0x7FFFFFFF},
                                         HashRow{255, (0u - Cubed) & 0x7FFFFFFF}, HashRow{256, 131u * 131u},
                                         HashRow{1 << 16, 131u}, HashRow{1 << 24, 1u},
                                         HashRow{-1, (0u - Cubed - 131u * 131u - 131u - 1u) & 0x7FFFFFFF},
                                         HashRow{INT_MIN, (128u - 256u) & 0x7FFFFFFF}));

TEST(IntegerHash, AgreesWithItsDefinition) {
    std::mt19937 random(5);
    const IntMap map(1 << 20, 1.0F);
    for (int i = 0; i < 100'000; ++i) {
        const int key = static_cast<int>(random());
        ASSERT_EQ(VEL::internal::HashOfNumber(key), HashOfBytes(&key, sizeof key)) << key;
        ASSERT_EQ(map.Hash(key), static_cast<int>(HashOfBytes(&key, sizeof key) % (1u << 20))) << key;
    }
}

TEST(DumpHash, AgreesWithItsDefinitionAtEveryLength) {
    std::mt19937 random(5);
    for (std::size_t length = 0; length < 70; ++length) {
        for (int round = 0; round < 50; ++round) {
            std::vector<unsigned short> units(length);
            std::ranges::generate(units, [&] { return static_cast<unsigned short>(random()); });
            ASSERT_EQ(VEL::internal::HashOfUnits(units.data(), length), HashOfBytes(units.data(), 2 * length));
        }
    }
}

TEST(DumpHash, TakesTheUnitsOfTheTextByte) {
    const DumpMap map(1'000'003, 1.0F);
    EXPECT_EQ(map.Hash(String("a")), static_cast<int>('a' * 131u % 1'000'003));
    EXPECT_EQ(map.Hash(String("ab")), static_cast<int>((('a' * 131u * 131u + 'b') * 131u) % 1'000'003));
    const unsigned short units[] = {0x8081, 0xFFFF};
    EXPECT_EQ(map.Hash(String(units, 2)), static_cast<int>(HashOfBytes(units, 4) % 1'000'003));
    EXPECT_EQ(QORSysTSMapOfUnicodeStringInt(1'000'003, 1.0F).Hash(String("ab")), map.Hash(String("ab")));
    EXPECT_EQ(QORSysTSMapOfUnicodeStringUnicodeString(1'000'003, 1.0F).Hash(String("ab")), map.Hash(String("ab")));
}

TEST(DumpHash, IsTheSameForWideAndNarrowText) {
    StringEnvironment::UseCodePage(StringEnvironment::UTF8);
    const DumpMap map(1'000'003, 1.0F);
    const unsigned short units[] = {'a', 0xE4, 0x20AC};
    const String narrow("a\u00E4\u20AC");
    EXPECT_EQ(map.Hash(narrow), map.Hash(String(units, 3)));
    EXPECT_EQ(map.Hash(narrow), static_cast<int>(HashOfBytes(units, 6) % 1'000'003));
}

TEST(DumpHash, OfNoTextIsTheFirstBucket) {
    const DumpMap map(1'000'003, 1.0F);
    EXPECT_EQ(map.Hash(String()), 0);
    EXPECT_EQ(map.Hash(String("")), 0);
    EXPECT_EQ(map.Hash(NullString<String>()), 0);
}

TEST(StringHash, IsTheHashOfTheStringWithoutAMask) {
    const StringHashMap map(1'000'003, 1.0F);
    const String key("some text that is long enough");
    EXPECT_EQ(map.Hash(key), static_cast<int>(key.HashFunc() % 1'000'003));
    EXPECT_NE(map.Hash(key), QORSysTSMapOfUnicodeStringUnicodeString(1'000'003, 1.0F).Hash(key));
    EXPECT_EQ(map.Hash(NullString<String>()), 0);
}

TEST(MapOfStrings, HoldsANullHandleAndAnEmptyTextAsKeys) {
    DumpMap map;
    map.Put(NullString<String>(), 1);
    map.Put(String(), 2);
    const bool areEqual = NullString<String>() == String();
    EXPECT_EQ(map.GetLength(), areEqual ? 1 : 2);
    int out = 0;
    EXPECT_EQ(map.Get(String(""), out), Ok);
    EXPECT_EQ(out, 2);
}

// What the maps consist of.

namespace {

using namespace VirtualTable;

template <class Map>
class MapLayout : public testing::Test {};
TYPED_TEST_SUITE(MapLayout, HashMaps);

template <class Map>
class AnyMapLayout : public testing::Test {
protected:
    AnyMapLayout() { MakeTheConverter(); }
};
TYPED_TEST_SUITE(AnyMapLayout, AllMaps);

} // namespace

TYPED_TEST(MapLayout, IsAVirtualTableTheBucketsTheCountAndTheReciprocal) {
    TypeParam map(12, 0.5F);
    PutNumbers(map, 0, 3);
    const Fields fields(map);
    EXPECT_EQ(sizeof(TypeParam), 48u);
    EXPECT_EQ(fields.tableLength, 24);
    EXPECT_EQ(fields.capacity, 24);
    EXPECT_EQ(fields.bucketSize, 32);
    EXPECT_EQ(fields.count, 3);
    EXPECT_EQ(fields.reciprocal, 2.0F);
    EXPECT_EQ(fields.buckets,
              reinterpret_cast<const char*>(&map.GetLinkedMap(Key<TypeParam>(1))) - 32 * map.Hash(Key<TypeParam>(1)));
}

TYPED_TEST(MapLayout, OfABucketIsAVirtualTableAndTheChain) {
    using Bucket = typename TypeParam::LinkedMapOfKeyVal;
    TypeParam map(1, 100.0F);
    PutNumbers(map, 0, 3);
    struct {
        void* slots;
        int count;
        const void* first;
        const void* last;
    } fields;
    static_assert(sizeof(Bucket) == sizeof fields);
    std::memcpy(&fields, static_cast<const void*>(&map.GetLinkedMap(Key<TypeParam>(0))), sizeof fields);
    EXPECT_EQ(fields.count, 3);
    EXPECT_EQ(fields.first, map.GetLinkedMap(Key<TypeParam>(0)).FindNode(Key<TypeParam>(0)));
    EXPECT_EQ(fields.last, map.GetLinkedMap(Key<TypeParam>(0)).FindNode(Key<TypeParam>(2)));
    static_assert(sizeof(typename Bucket::Node) ==
                  16 + sizeof(std::pair<typename TypeParam::Key, typename TypeParam::Value>));
}

TYPED_TEST(MapLayout, OfIteratorsIsTheMapTheBucketAndTheEntry) {
    using Buckets = typename TypeParam::ArrayListOfLinkedMapOfKeyVal;
    using Bucket = typename TypeParam::LinkedMapOfKeyVal;
    static_assert(sizeof(typename TypeParam::const_iterator) ==
                  16 + sizeof(typename Buckets::iterator) + sizeof(typename Bucket::iterator));
    static_assert(std::is_base_of_v<typename TypeParam::const_iterator, typename TypeParam::iterator>);
    static_assert(std::is_base_of_v<typename Bucket::const_iterator, typename Bucket::iterator>);
    TypeParam map;
    PutNumber(map, 1, 1);
    struct {
        void* slots;
        const void* map;
        void* arraySlots;
        const void* array;
        int index;
        void* bucketSlots;
        const void* bucket;
        const void* node;
    } fields;
    const auto it = map.Begin();
    static_assert(sizeof fields == sizeof it);
    std::memcpy(&fields, static_cast<const void*>(&it), sizeof fields);
    EXPECT_EQ(fields.map, &map);
    EXPECT_EQ(fields.array, reinterpret_cast<const char*>(&map) + 8);
    EXPECT_EQ(fields.index, map.Hash(Key<TypeParam>(1)));
    EXPECT_EQ(fields.bucket, &map.GetLinkedMap(Key<TypeParam>(1)));
    EXPECT_EQ(fields.node, map.GetLinkedMap(Key<TypeParam>(1)).FindNode(Key<TypeParam>(1)));
}

namespace {

template <class Class>
constexpr bool HasFind = requires {
    &Class::Find;
};
template <class Class>
constexpr bool HasSort = requires {
    &Class::Sort;
};
template <class Class>
constexpr bool HasEquality = requires(const Class& a) {
    a == a;
};

} // namespace

TYPED_TEST(MapLayout, OfTheBucketArrayHasTwoVirtualSlotsAndKnowsNoEquality) {
    using Buckets = typename TypeParam::ArrayListOfLinkedMapOfKeyVal;
    using Bucket = typename TypeParam::LinkedMapOfKeyVal;
    static_assert(sizeof(Buckets) == 32);
    static_assert(!HasFind<Buckets>);
    static_assert(!HasSort<Buckets>);
    static_assert(!HasEquality<Buckets>);
    static_assert(HasFind<Bucket> && HasEquality<Bucket>);
    EXPECT_EQ(SlotOf(&WithOneMore<Buckets>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename Buckets::const_iterator>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename Buckets::iterator>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<Bucket>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename Bucket::const_iterator>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename Bucket::iterator>::OneMore), 2);
    static_assert(std::has_virtual_destructor_v<Buckets>);
    static_assert(std::has_virtual_destructor_v<Bucket>);
}

TYPED_TEST(AnyMapLayout, HasTheDestructorsAsItsOnlyVirtualOperations) {
    EXPECT_EQ(SlotOf(&WithOneMore<TypeParam>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename TypeParam::const_iterator>::OneMore), 2);
    EXPECT_EQ(SlotOf(&WithOneMore<typename TypeParam::iterator>::OneMore), 2);
    static_assert(std::has_virtual_destructor_v<TypeParam>);
    static_assert(std::has_virtual_destructor_v<typename TypeParam::const_iterator>);
}

TYPED_TEST(AnyMapLayout, HasTheCompleteDestructorFirst) {
    const int live = ArrayAllocations::Live();
    alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
    auto* const inPlace = new (storage) TypeParam();
    PutNumber(*inPlace, 1, 1);
    SlotAt(inPlace, 0)(inPlace);
    EXPECT_EQ(ArrayAllocations::Live(), live);
    auto* const onHeap = new TypeParam();
    PutNumber(*onHeap, 1, 1);
    SlotAt(onHeap, 1)(onHeap);
    EXPECT_EQ(ArrayAllocations::Live(), live);
}
