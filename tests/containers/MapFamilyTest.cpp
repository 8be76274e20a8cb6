/// @file
/// What all maps do alike, what hash maps do beyond that, and what linked maps do.

#include "MapInstances.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace MapInstances;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using IntMap = QORSysTSHashMapOfIntToInt;

namespace {

template <class Map>
class EveryMap : public testing::Test {};
TYPED_TEST_SUITE(EveryMap, AllMaps);

template <class Map>
class EveryHashMap : public testing::Test {};
TYPED_TEST_SUITE(EveryHashMap, HashMaps);

template <class Map>
class EveryLinkedMap : public testing::Test {};
TYPED_TEST_SUITE(EveryLinkedMap, LinkedMaps);

} // namespace

TYPED_TEST(EveryMap, StartsEmpty) {
    const TypeParam map;
    EXPECT_EQ(map.GetLength(), 0);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_FALSE(map.Find(Key<TypeParam>(1)));
    EXPECT_EQ(map.GetAsPtr(Key<TypeParam>(1)), nullptr);
    EXPECT_TRUE(map.cBegin().IsEnd());
}

TYPED_TEST(EveryMap, FindsWhatWasPut) {
    TypeParam map;
    PutNumber(map, 1, 10);
    PutNumber(map, 2, 20);
    auto out = Value<TypeParam>(0);
    EXPECT_EQ(map.Get(Key<TypeParam>(2), out), Ok);
    EXPECT_EQ(NumberOf(out), 20);
    EXPECT_TRUE(map.Find(Key<TypeParam>(1)));
    EXPECT_EQ(NumberOf(*map.GetAsPtr(Key<TypeParam>(1))), 10);
    EXPECT_EQ(map.GetAsPtr(Key<TypeParam>(1)), std::as_const(map).GetAsPtr(Key<TypeParam>(1)));
    EXPECT_EQ(map.GetLength(), 2);
    EXPECT_FALSE(map.IsEmpty());
}

TYPED_TEST(EveryMap, LeavesTheOutputUntouchedForAnAbsentKey) {
    TypeParam map;
    PutNumber(map, 1, 10);
    auto out = Value<TypeParam>(5);
    EXPECT_EQ(map.Get(Key<TypeParam>(2), out), Failure);
    EXPECT_EQ(NumberOf(out), 5);
}

TYPED_TEST(EveryMap, AssignsTheValueOfAKeyThatIsThereInPlace) {
    TypeParam map;
    PutNumbers(map, 0, 5);
    const Entries before = Content(map);
    const auto* const place = map.GetAsPtr(Key<TypeParam>(2));
    PutNumber(map, 2, 22);
    EXPECT_EQ(map.GetLength(), 5);
    EXPECT_EQ(map.GetAsPtr(Key<TypeParam>(2)), place);
    Entries expected = before;
    std::ranges::find(expected, std::pair(2, 2))->second = 22;
    EXPECT_EQ(Content(map), expected);
}

TYPED_TEST(EveryMap, RemovesAKeyAndIsSilentAboutAnAbsentOne) {
    TypeParam map;
    PutNumbers(map, 0, 3);
    map.Remove(Key<TypeParam>(1));
    EXPECT_THAT(Content(map), UnorderedElementsAre(std::pair(0, 0), std::pair(2, 2)));
    map.Remove(Key<TypeParam>(1));
    EXPECT_EQ(map.GetLength(), 2);
}

TYPED_TEST(EveryMap, RemovesAllEntriesOfAValue) {
    TypeParam map;
    PutNumbers(map, 0, 10);
    PutNumber(map, 3, 7);
    PutNumber(map, 9, 7);
    map.RemoveValues(Value<TypeParam>(7));
    EXPECT_EQ(map.GetLength(), 7);
    EXPECT_FALSE(map.Find(Key<TypeParam>(3)));
    map.RemoveValues(Value<TypeParam>(100));
    EXPECT_EQ(map.GetLength(), 7);
}

TYPED_TEST(EveryMap, RemovesByKeysAndValuesOfItsOwn) {
    TypeParam map;
    PutNumbers(map, 0, 10);
    PutNumber(map, 3, 7);
    map.RemoveValues(*map.GetAsPtr(Key<TypeParam>(3)));
    EXPECT_EQ(map.GetLength(), 8);
    map.Remove(*map.cBegin().GetKeyAsPtr());
    EXPECT_EQ(map.GetLength(), 7);
}

TYPED_TEST(EveryMap, PutsValuesOfItsOwnThroughAnyGrowth) {
    TypeParam map;
    PutNumber(map, 0, 42);
    for (int i = 1; i < 100; ++i) {
        map.Put(Key<TypeParam>(i), *map.GetAsPtr(Key<TypeParam>(i - 1)));
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(NumberOf(*map.GetAsPtr(Key<TypeParam>(i))), 42);
    }
}

TYPED_TEST(EveryMap, PutsAllEntriesOfAnother) {
    TypeParam map;
    TypeParam other;
    PutNumbers(map, 0, 3);
    PutNumber(other, 2, 20);
    PutNumber(other, 3, 30);
    map.Put(other);
    EXPECT_THAT(Content(map),
                UnorderedElementsAre(std::pair(0, 0), std::pair(1, 1), std::pair(2, 20), std::pair(3, 30)));
    EXPECT_EQ(map.GetLength(), 4);
}

TYPED_TEST(EveryMap, StaysAsItIsWhenPutIntoOrAssignedToItself) {
    TypeParam map;
    PutNumbers(map, 0, 30);
    const Entries before = Content(map);
    map.Put(map);
    TypeParam& same = map;
    map = same;
    EXPECT_EQ(Content(map), before);
    EXPECT_EQ(map.GetLength(), 30);
}

TYPED_TEST(EveryMap, CopiesInOrder) {
    TypeParam map;
    PutNumbers(map, 0, 40);
    const TypeParam copy(map);
    TypeParam assigned;
    PutNumber(assigned, 99, 99);
    assigned = map;
    PutNumber(map, 1, 50);
    map.Remove(Key<TypeParam>(2));
    EXPECT_EQ(copy.GetLength(), 40);
    EXPECT_EQ(assigned.GetLength(), 40);
    EXPECT_EQ(Content(copy), Content(assigned));
    EXPECT_EQ(NumberOf(*copy.GetAsPtr(Key<TypeParam>(1))), 1);
    EXPECT_FALSE(assigned.Find(Key<TypeParam>(99)));
}

TYPED_TEST(EveryMap, IsEqualByKeysAndValuesInAnyOrder) {
    TypeParam a;
    TypeParam b;
    PutNumbers(a, 0, 5);
    for (int i = 4; i >= 0; --i) {
        PutNumber(b, i, i);
    }
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
    PutNumber(b, 4, 5);
    EXPECT_FALSE(a == b) << "another value";
    EXPECT_TRUE(a != b);
    PutNumber(b, 4, 4);
    PutNumber(b, 5, 5);
    EXPECT_FALSE(a == b) << "another length";
    PutNumber(a, 6, 6);
    EXPECT_FALSE(a == b) << "another key";
    EXPECT_TRUE(TypeParam() == TypeParam());
}

TYPED_TEST(EveryMap, ClearsAll) {
    TypeParam map;
    PutNumbers(map, 0, 50);
    map.Clear(12, 0.75F);
    EXPECT_EQ(map.GetLength(), 0);
    EXPECT_THAT(Content(map), IsEmpty());
    PutNumber(map, 1, 1);
    EXPECT_THAT(Content(map), ElementsAre(std::pair(1, 1)));
}

// Iterators.

TYPED_TEST(EveryMap, WalksToTheEndAndNoFurther) {
    TypeParam map;
    PutNumbers(map, 0, 2);
    auto it = map.cBegin();
    EXPECT_EQ(it.Next(), Ok);
    EXPECT_FALSE(it.IsEnd());
    EXPECT_EQ(it.Next(), Ok) << "from the last entry to the end";
    EXPECT_TRUE(it.IsEnd());
    EXPECT_EQ(it.Next(), Failure);
    EXPECT_EQ(it.Next(), Failure);
    EXPECT_TRUE(it.IsEnd());
}

template <class Map, class Iterator>
void ExpectAtTheEnd(Iterator it) {
    auto key = Key<Map>(5);
    auto value = Value<Map>(5);
    EXPECT_TRUE(it.IsEnd());
    EXPECT_EQ(it.Next(), Failure);
    EXPECT_EQ(it.GetKey(key), Failure);
    EXPECT_EQ(it.GetVal(value), Failure);
    EXPECT_EQ(it.Get(key, value), Failure);
    EXPECT_EQ(NumberOf(key), 5);
    EXPECT_EQ(NumberOf(value), 5);
    EXPECT_EQ(it.SetVal(value), Failure);
    EXPECT_EQ(it.GetKeyAsPtr(), nullptr);
    EXPECT_EQ(it.GetValAsConstPtr(), nullptr);
    EXPECT_EQ(it.GetValAsPtr(), nullptr);
    EXPECT_EQ(it.GetEntryAsPtr(), nullptr);
    EXPECT_EQ(it.GetKeyAsPtrGoToNext(), nullptr);
    EXPECT_EQ(it.GetValAsConstPtrGoToNext(), nullptr);
    EXPECT_EQ(it.GetValAsPtrGoToNext(), nullptr);
    EXPECT_EQ(it.GetEntryAsPtrGoToNext(), nullptr);
}

TYPED_TEST(EveryMap, AnswersNothingAtTheEnd) {
    TypeParam map;
    ExpectAtTheEnd<TypeParam>(map.Begin());
    ExpectAtTheEnd<TypeParam>(typename TypeParam::iterator());
    PutNumbers(map, 0, 1);
    auto it = map.Begin();
    it.Next();
    ExpectAtTheEnd<TypeParam>(it);
}

TYPED_TEST(EveryMap, ReadsAndWritesThroughIterators) {
    TypeParam map;
    PutNumber(map, 1, 10);
    auto it = map.Begin();
    auto key = Key<TypeParam>(0);
    auto value = Value<TypeParam>(0);
    EXPECT_EQ(it.GetKey(key), Ok);
    EXPECT_EQ(it.GetVal(value), Ok);
    EXPECT_EQ(NumberOf(key), 1);
    EXPECT_EQ(NumberOf(value), 10);
    EXPECT_EQ(it.SetVal(Value<TypeParam>(11)), Ok);
    EXPECT_EQ(NumberOf(*map.GetAsPtr(key)), 11);
    *it.GetValAsPtr() = Value<TypeParam>(12);
    EXPECT_EQ(NumberOf(*it.GetValAsConstPtr()), 12);
    EXPECT_EQ(it.GetValAsConstPtrGoToNext(), map.GetAsPtr(key));
    EXPECT_TRUE(it.IsEnd());
}

TYPED_TEST(EveryMap, ComparesIteratorsByMapAndPosition) {
    TypeParam map;
    PutNumbers(map, 0, 3);
    const TypeParam other(map);
    auto it = map.cBegin();
    EXPECT_TRUE(it == map.Begin());
    EXPECT_FALSE(it != map.Begin());
    EXPECT_FALSE(it == other.cBegin());
    it.Next();
    EXPECT_FALSE(it == map.cBegin());
    auto assigned = map.cBegin();
    assigned = it;
    EXPECT_TRUE(it == assigned);
}

template <class Map>
auto EndOf(const Map& map) {
    auto it = map.cBegin();
    while (it.Next() == Ok) {
    }
    return it;
}

TYPED_TEST(EveryMap, EndsAreEqualWithinOneMap) {
    TypeParam map(100, 0.75F);
    const TypeParam other(map);
    const auto ofTheEmptyMap = map.cBegin();
    EXPECT_TRUE(ofTheEmptyMap == map.cBegin());
    EXPECT_FALSE(ofTheEmptyMap == other.cBegin()) << "of another map";
    EXPECT_TRUE(ofTheEmptyMap != other.cBegin());
    PutNumber(map, 0, 0);
    const auto behindOne = EndOf(map);
    EXPECT_TRUE(behindOne == ofTheEmptyMap);
    EXPECT_FALSE(behindOne != ofTheEmptyMap);
    PutNumbers(map, 1, 30);
    EXPECT_TRUE(EndOf(map) == behindOne);
    EXPECT_TRUE(EndOf(map) == ofTheEmptyMap);
    EXPECT_FALSE(EndOf(map) == map.cBegin());
    EXPECT_FALSE(EndOf(map) == EndOf(TypeParam(map)));
    EXPECT_FALSE(EndOf(map) == typename TypeParam::const_iterator());
}

TYPED_TEST(EveryMap, TellsAllItsPositionsApart) {
    TypeParam map;
    PutNumbers(map, 0, 40);
    for (auto it = map.cBegin(); !it.IsEnd(); it.Next()) {
        int equal = 0;
        for (auto other = map.cBegin(); !other.IsEnd(); other.Next()) {
            EXPECT_NE(it == other, it != other);
            equal += it == other ? 1 : 0;
        }
        ASSERT_EQ(equal, 1);
    }
}

TYPED_TEST(EveryMap, HasTheValueOfAnEntryDirectlyBehindTheKey) {
    using Pair = std::pair<typename TypeParam::Key, typename TypeParam::Value>;
    TypeParam map;
    PutNumber(map, 1, 10);
    const auto it = map.cBegin();
    const auto* const entry = it.GetEntryAsPtr();
    EXPECT_EQ(static_cast<const void*>(entry), it.GetKeyAsPtr());
    EXPECT_EQ(reinterpret_cast<const char*>(entry) + offsetof(Pair, second),
              reinterpret_cast<const char*>(it.GetValAsConstPtr()));
    EXPECT_EQ(sizeof *entry, sizeof(Pair));
}

// Hash maps.

struct TableRow {
    int minEntries;
    float loadFactor;
    int length;
    friend void PrintTo(const TableRow& row, std::ostream* out) { *out << row.minEntries << ", " << row.loadFactor; }
};

class Tables : public testing::TestWithParam<TableRow> {};

TEST_P(Tables, HaveRoomForTheEntriesAtTheLoadFactor) {
    const auto& [minEntries, loadFactor, length] = GetParam();
    EXPECT_EQ(TableLength(IntMap(minEntries, loadFactor)), length);
    IntMap map;
    PutNumbers(map, 0, 5);
    map.Clear(minEntries, loadFactor);
    EXPECT_EQ(TableLength(map), length);
    EXPECT_TRUE(map.IsEmpty());
    PutNumbers(map, 0, 5);
    map.ReHash(minEntries, loadFactor);
    EXPECT_EQ(TableLength(map), length);
    EXPECT_EQ(map.GetLength(), 5);
    map.Init(minEntries, loadFactor);
    EXPECT_EQ(TableLength(map), length);
    EXPECT_TRUE(map.IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, Tables,
                         testing::Values(TableRow{12, 0.75F, 16}, TableRow{0, 0.75F, 16}, TableRow{-1, 0.75F, 16},
                                         TableRow{-2, 0.75F, 16}, TableRow{INT32_MIN, 0.75F, 16}, TableRow{1, 0.75F, 2},
                                         TableRow{12, 200, 16}, TableRow{12, 100, 1}, TableRow{12, 100.01F, 16},
                                         TableRow{12, 0.1F, 120}, TableRow{12, 0.0999F, 16}, TableRow{12, 0, 16},
                                         TableRow{12, -1, 16}, TableRow{12, NAN, 16}, TableRow{12, INFINITY, 16},
                                         TableRow{24, 0.75F, 32}, TableRow{13, 0.75F, 18}, TableRow{10, 1, 10},
                                         TableRow{10, 3, 4}));

TEST(HashMap, HasSixteenBucketsByDefault) {
    EXPECT_EQ(TableLength(IntMap()), 16);
    EXPECT_EQ(Fields(IntMap()).reciprocal, 1.3333334F);
    EXPECT_EQ(Fields(IntMap(12)).reciprocal, 1.3333334F);
    EXPECT_EQ(Fields(IntMap(12, 4.0F)).reciprocal, 0.25F);
}

TEST(HashMap, WantsBucketsByTheReciprocalOfTheLoadFactorRoundedUp) {
    const IntMap map;
    EXPECT_EQ(map.GetMinimumTableLength(0), 0);
    EXPECT_EQ(map.GetMinimumTableLength(1), 2);
    EXPECT_EQ(map.GetMinimumTableLength(12), 16);
    EXPECT_EQ(map.GetMinimumTableLength(13), 18);
    EXPECT_EQ(map.GetMinimumTableLength(24), 32);
    EXPECT_EQ(map.GetMinimumTableLength(-1), -1);
    EXPECT_EQ(map.GetMinimumTableLength(-3), -4);
    EXPECT_EQ(map.GetMinimumTableLength(INT32_MAX), INT32_MAX);
    EXPECT_EQ(map.GetMinimumTableLength(INT32_MIN), INT32_MIN);
}

TEST(HashMap, RefusesATableWhoseLengthNoIntHolds) {
    EXPECT_THROW(IntMap(INT32_MAX, 0.75F), std::bad_alloc);
    EXPECT_THROW(IntMap(INT32_MAX, 1.0F), std::bad_alloc);
    IntMap map;
    PutNumbers(map, 0, 20);
    const Entries before = Content(map);
    EXPECT_THROW(map.ReHash(INT32_MAX, 0.1F), std::bad_alloc);
    EXPECT_THROW(map.Clear(INT32_MAX, 0.1F), std::bad_alloc);
    EXPECT_THROW(IntMap(map, INT32_MAX), std::bad_alloc);
    EXPECT_EQ(Content(map), before);
    EXPECT_EQ(TableLength(map), 32);
}

TYPED_TEST(EveryHashMap, GrowsWithTheThirteenthEntryToThirtyTwoBuckets) {
    TypeParam map;
    PutNumbers(map, 0, 12);
    EXPECT_EQ(TableLength(map), 16);
    PutNumber(map, 3, 33);
    EXPECT_EQ(TableLength(map), 16) << "a value alone never makes the table longer";
    PutNumber(map, 12, 12);
    EXPECT_EQ(TableLength(map), 32);
    EXPECT_EQ(map.GetLength(), 13);
    PutNumbers(map, 13, 24);
    EXPECT_EQ(TableLength(map), 32);
    PutNumber(map, 24, 24);
    EXPECT_EQ(TableLength(map), 64);
}

TYPED_TEST(EveryHashMap, KeepsItsTableWhenEntriesGo) {
    TypeParam map;
    PutNumbers(map, 0, 100);
    const int length = TableLength(map);
    for (int i = 0; i < 100; ++i) {
        map.Remove(Key<TypeParam>(i));
    }
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(TableLength(map), length);
    map.Clear(12, 0.75F);
    EXPECT_EQ(TableLength(map), 16);
}

TYPED_TEST(EveryHashMap, CopiesTheTableOrMakesOne) {
    TypeParam map(50, 0.5F);
    PutNumbers(map, 0, 10);
    EXPECT_EQ(TableLength(TypeParam(map)), 100);
    const TypeParam resized(map, 5);
    EXPECT_EQ(TableLength(resized), 10) << "with the load factor of the other, and no test for growth";
    EXPECT_TRUE(resized == map);
    EXPECT_EQ(TableLength(TypeParam(map, 5, 1.0F)), 5);
    TypeParam assigned;
    assigned = map;
    EXPECT_EQ(TableLength(assigned), 100);
    EXPECT_EQ(Fields(assigned).reciprocal, 2.0F);
}

TYPED_TEST(EveryHashMap, FillsWithoutGrowth) {
    TypeParam source;
    PutNumbers(source, 0, 30);
    TypeParam map(1, 1.0F);
    map.Fill(source);
    EXPECT_EQ(TableLength(map), 1);
    EXPECT_EQ(map.GetLength(), 30);
    EXPECT_EQ(Content(map), Content(source)) << "one bucket has the order of the walk";
}

TYPED_TEST(EveryHashMap, FilledHasTheCountOfItsSource) {
    TypeParam source;
    PutNumber(source, 2, 20);
    PutNumber(source, 7, 70);
    TypeParam map(100, 0.75F);
    PutNumbers(map, 0, 5);
    map.Fill(source);
    EXPECT_EQ(map.GetLength(), 2) << "not what is there";
    EXPECT_THAT(Content(map), UnorderedElementsAre(std::pair(0, 0), std::pair(1, 1), std::pair(2, 20), std::pair(3, 3),
                                                   std::pair(4, 4), std::pair(7, 70)))
        << "a key that is there gets the value";
}

TYPED_TEST(EveryHashMap, EndOfAShorterTableIsNotThatOfALonger) {
    TypeParam map;
    const auto end = map.cBegin();
    map.ReHash(100, 0.75F);
    EXPECT_FALSE(map.cBegin() == end);
}

TYPED_TEST(EveryHashMap, TellsEntriesOfOneBucketApart) {
    TypeParam map(1, 100.0F);
    PutNumbers(map, 0, 2);
    ASSERT_EQ(TableLength(map), 1);
    auto first = map.cBegin();
    auto second = map.cBegin();
    second.Next();
    EXPECT_FALSE(first == second);
    EXPECT_TRUE(first != second);
    first.Next();
    EXPECT_TRUE(first == second);
}

TYPED_TEST(EveryHashMap, HasABucketForEachKey) {
    TypeParam map;
    PutNumbers(map, 0, 12);
    for (int i = 0; i < 12; ++i) {
        const auto key = Key<TypeParam>(i);
        EXPECT_TRUE(map.GetLinkedMap(key).Find(key));
        EXPECT_EQ(&map.GetLinkedMap(key), &std::as_const(map).GetLinkedMap(key));
        EXPECT_EQ(static_cast<void*>(&map.GetLinkedMap(key)), Fields(map).buckets + map.Hash(key) * 32);
    }
}

TEST(HashMap, KeepsTheOrderOfTheWalkWhereEntriesShareABucketAfterARehash) {
    IntMap map(4, 1.0F);
    HashModel<IntMap> model(4, 1.0F);
    for (int i = 0; i < 200; ++i) {
        PutNumber(map, i, i);
        model.Put(i, i);
        ASSERT_EQ(Content(map), model.Order()) << i;
    }
    map.ReHash(1, 1.0F);
    model.ReHash(1, 1.0F);
    EXPECT_EQ(TableLength(map), 1);
    EXPECT_EQ(Content(map), model.Order());
}

// Linked maps.

TYPED_TEST(EveryLinkedMap, IgnoresTheNumbersOfAHashMap) {
    TypeParam map(0, -1.0F);
    PutNumbers(map, 0, 3);
    map.ReHash(1000, 0.1F);
    const Entries expected = {{0, 0}, {1, 1}, {2, 2}};
    EXPECT_EQ(Content(map), expected);
    EXPECT_EQ(Content(TypeParam(map, 7)), expected);
    EXPECT_EQ(Content(TypeParam(map, -1, NAN)), expected);
    map.Clear(-5, 1000.0F);
    EXPECT_TRUE(map.IsEmpty());
}

TYPED_TEST(EveryLinkedMap, CopiesAnotherMapWithoutATestForDuplicates) {
    TypeParam map;
    PutNumbers(map, 0, 2);
    TypeParam other;
    PutNumber(other, 1, 10);
    map.CopyMap(other);
    EXPECT_EQ(Content(map), (Entries{{0, 0}, {1, 1}, {1, 10}}));
    EXPECT_EQ(map.GetLength(), 3);
    EXPECT_EQ(NumberOf(*map.GetAsPtr(Key<TypeParam>(1))), 1);
    map.Remove(Key<TypeParam>(1));
    EXPECT_EQ(Content(map), (Entries{{0, 0}, {1, 10}}));
}

TYPED_TEST(EveryLinkedMap, IsEqualWhenEachEntryHasAnEqualOneAmongSeveralOfItsKey) {
    const auto twoOfOneKey = [](int first, int second) {
        TypeParam map;
        PutNumber(map, 1, first);
        TypeParam other;
        PutNumber(other, 1, second);
        map.CopyMap(other);
        return map;
    };
    const TypeParam map = twoOfOneKey(1, 10);
    EXPECT_TRUE(map == map);
    EXPECT_TRUE(map == TypeParam(map));
    EXPECT_TRUE(map == twoOfOneKey(10, 1));
    EXPECT_FALSE(map != twoOfOneKey(10, 1));
    EXPECT_FALSE(map == twoOfOneKey(1, 11));
    EXPECT_FALSE(map == twoOfOneKey(11, 10));
    EXPECT_TRUE(twoOfOneKey(1, 1) == map) << "each of the left is on the right";
    EXPECT_FALSE(map == twoOfOneKey(1, 1));
}

TYPED_TEST(EveryLinkedMap, CopiedIntoItselfHasEachEntryTwice) {
    TypeParam map;
    PutNumbers(map, 0, 2);
    map.CopyMap(map);
    EXPECT_EQ(Content(map), (Entries{{0, 0}, {1, 1}, {0, 0}, {1, 1}}));
}

TYPED_TEST(EveryLinkedMap, AnswersTheNodeOfAKey) {
    TypeParam map;
    PutNumbers(map, 0, 2);
    const auto* const node = map.FindNode(Key<TypeParam>(1));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(&node->entry.value, map.GetAsPtr(Key<TypeParam>(1)));
    EXPECT_EQ(static_cast<const void*>(&node->entry), reinterpret_cast<const char*>(node) + 2 * sizeof(void*));
    EXPECT_EQ(node->next, nullptr);
    EXPECT_EQ(node->previous, map.FindNode(Key<TypeParam>(0)));
    EXPECT_EQ(map.FindNode(Key<TypeParam>(2)), nullptr);
    const typename TypeParam::const_iterator it(map, map.FindNode(Key<TypeParam>(0)));
    EXPECT_TRUE(it == map.cBegin());
}
