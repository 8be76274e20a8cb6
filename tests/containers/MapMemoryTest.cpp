/// @file
/// How the maps treat memory: shortage at every allocation of a call, what they take, and the strings that they hold.

#include "ArrayAllocations.h"
#include "MapInstances.h"
#include "StringBlocks.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>

using namespace MapInstances;
using ArrayAllocations::Shortage;

namespace {

template <class Map>
class MapMemory : public testing::Test {
protected:
    MapMemory() { MakeTheConverter(); }
};
TYPED_TEST_SUITE(MapMemory, AllMaps);

template <class Map>
class HashMapMemory : public testing::Test {};
TYPED_TEST_SUITE(HashMapMemory, HashMaps);

/// Runs `action` on a map of `size` entries with shortage at each of its allocations in turn. Each time the exception
/// leaves and `check` looks at the map, which must then take and give all that a map does.
template <class Map>
void Sweep(int size, const std::function<void(Map&)>& action, const std::function<void(Map&, const Entries&)>& check) {
    for (int successes = 0;; ++successes) {
        const int live = ArrayAllocations::Live();
        bool hasStruck;
        {
            Map map;
            PutNumbers(map, 0, size);
            const Entries before = Content(map);
            {
                const Shortage shortage(successes);
                try {
                    action(map);
                } catch (const std::bad_alloc&) {
                    ASSERT_TRUE(shortage.HasStruck());
                }
                hasStruck = shortage.HasStruck();
            }
            if (hasStruck) {
                check(map, before);
            }
            ASSERT_EQ(static_cast<int>(Content(map).size()), map.GetLength());
            PutNumbers(map, 0, 60);
            ASSERT_EQ(map.GetLength(), 60);
            ASSERT_TRUE(map == Map(map));
        }
        ASSERT_EQ(ArrayAllocations::Live(), live) << "nothing leaks";
        if (!hasStruck) {
            return;
        }
        ASSERT_LT(successes, 1000);
    }
}

template <class Map>
void ExpectUnchanged(Map& map, const Entries& before) {
    EXPECT_EQ(Content(map), before);
}

} // namespace

TYPED_TEST(MapMemory, PutChangesNothingWithoutMemory) {
    for (const int size : {0, 5, 12, 24}) {
        Sweep<TypeParam>(
            size, [](TypeParam& map) { map.Put(Key<TypeParam>(50), Value<TypeParam>(50)); },
            ExpectUnchanged<TypeParam>);
    }
}

TYPED_TEST(MapMemory, AssignmentChangesNothingWithoutMemory) {
    TypeParam other;
    PutNumbers(other, 30, 45);
    Sweep<TypeParam>(
        14, [&](TypeParam& map) { map = other; }, ExpectUnchanged<TypeParam>);
}

TYPED_TEST(MapMemory, CopiesLeakNothingWithoutMemory) {
    Sweep<TypeParam>(
        14, [](TypeParam& map) { const TypeParam copy(map); }, ExpectUnchanged<TypeParam>);
    Sweep<TypeParam>(
        14, [](TypeParam& map) { const TypeParam copy(map, 3); }, ExpectUnchanged<TypeParam>);
    Sweep<TypeParam>(
        14, [](TypeParam& map) { const TypeParam copy(map, 3, 0.5F); }, ExpectUnchanged<TypeParam>);
}

TYPED_TEST(MapMemory, ClearAndRehashChangeNothingWithoutMemory) {
    Sweep<TypeParam>(
        14, [](TypeParam& map) { map.ReHash(50, 0.5F); }, ExpectUnchanged<TypeParam>);
    Sweep<TypeParam>(
        14, [](TypeParam& map) { map.Clear(50, 0.5F); }, ExpectUnchanged<TypeParam>);
}

TYPED_TEST(MapMemory, PutOfAnotherMapKeepsWhatItHasPut) {
    TypeParam other;
    PutNumbers(other, 5, 30);
    Sweep<TypeParam>(
        10, [&](TypeParam& map) { map.Put(other); },
        [](TypeParam& map, const Entries& before) {
            EXPECT_GE(map.GetLength(), static_cast<int>(before.size()));
            for (const auto& [key, value] : before) {
                EXPECT_TRUE(map.Find(Key<TypeParam>(key)));
            }
        });
}

TYPED_TEST(MapMemory, TakesOneBlockForEachEntry) {
    TypeParam map(100, 0.75F);
    const auto keys = {Key<TypeParam>(1), Key<TypeParam>(2), Key<TypeParam>(3)};
    const auto value = Value<TypeParam>(1);
    const int taken = ArrayAllocations::Taken();
    for (const auto& key : keys) {
        map.Put(key, value);
        map.Put(key, value);
    }
    EXPECT_EQ(ArrayAllocations::Taken(), taken + 3);
    EXPECT_TRUE(map.Find(*keys.begin()));
    map.Remove(*keys.begin());
    EXPECT_EQ(ArrayAllocations::Taken(), taken + 3);
}

TYPED_TEST(HashMapMemory, AMoveToALongerTableCopiesNoEntry) {
    TypeParam map;
    PutNumbers(map, 0, 12);
    const auto key = Key<TypeParam>(12);
    const auto value = Value<TypeParam>(12);
    const int taken = ArrayAllocations::Taken();
    map.Put(key, value);
    EXPECT_EQ(TableLength(map), 32);
    EXPECT_EQ(ArrayAllocations::Taken(), taken + 2) << "the table and the entry";
}

TEST(MapOfStrings, CountsEachStringOnceThroughAllGrowth) {
    using Map = QORSysTSMapOfUnicodeStringUnicodeString;
    const QORSysTSUnicodeString key("a key");
    const QORSysTSUnicodeString value("a value");
    const auto handles = [](const QORSysTSUnicodeString& s) -> int {
        return StringBlocks::StringAccess::BlockOf(s)->_refCount;
    };
    {
        Map map;
        map.Put(key, value);
        EXPECT_EQ(handles(key), 2);
        EXPECT_EQ(handles(value), 2);
        PutNumbers(map, 0, 150);
        EXPECT_EQ(handles(key), 2);
        EXPECT_EQ(handles(value), 2);
        map.ReHash(1, 1.0F);
        EXPECT_EQ(handles(key), 2);
        const Map copy(map);
        EXPECT_EQ(handles(key), 3);
        map.Put(key, QORSysTSUnicodeString("another"));
        EXPECT_EQ(handles(value), 2);
        map.Remove(key);
        EXPECT_EQ(handles(key), 2);
    }
    EXPECT_EQ(handles(key), 1);
    EXPECT_EQ(handles(value), 1);
}
