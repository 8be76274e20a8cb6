#include "QORSysSimpleHashTable.h"
#include "HashedElement.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

using testing::ElementsAre;

/// Allocations that still succeed; negative for no limit.
int s_allocationsLeft = -1;
std::size_t s_lastRequest = 0;
/// A larger request fails.
std::size_t s_largestRequest = SIZE_MAX;
/// The requests that failed for their size.
std::vector<std::size_t> s_refused;

using namespace HashedElement;

struct Elements {
    explicit Elements(int count) {
        for (int i = 0; i < count; ++i) {
            all.push_back({static_cast<unsigned int>(i), i});
        }
    }
    void* operator[](int i) { return &all[static_cast<std::size_t>(i)]; }
    std::vector<Element> all;
};

void Fill(QORSysSimpleHashTable& table, Elements& elements, int count) {
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(table.Insert(elements[i]), 1);
    }
}

std::vector<int> KeysInOrder(const QORSysSimpleHashTable& table) {
    std::vector<int> keys;
    for (int i = 0; i < table.Size(); ++i) {
        keys.push_back(static_cast<Element*>(table.Get(i))->key);
    }
    return keys;
}

} // namespace

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    if (size > s_largestRequest) {
        s_refused.push_back(size);
        return nullptr;
    }
    if (s_allocationsLeft == 0) {
        return nullptr;
    }
    if (s_allocationsLeft > 0) {
        --s_allocationsLeft;
    }
    s_lastRequest = size;
    return __real_malloc(size);
}

struct ModuloRow {
    int asked;
    int given;
    friend void PrintTo(const ModuloRow& row, std::ostream* out) { *out << row.asked << " gives " << row.given; }
};

class UpToNiceModulo : public testing::TestWithParam<ModuloRow> {};

TEST_P(UpToNiceModulo, GivesTheNextValueWithoutASmallDivisor) {
    EXPECT_EQ(QORSysSimpleHashTable::UpToNiceModulo(GetParam().asked), GetParam().given);
}

INSTANTIATE_TEST_SUITE_P(Rows, UpToNiceModulo,
                         testing::Values(ModuloRow{0, 0}, ModuloRow{1, 1}, ModuloRow{2, 2}, ModuloRow{3, 3},
                                         ModuloRow{4, 5}, ModuloRow{9, 11}, ModuloRow{22, 23}, ModuloRow{121, 127},
                                         ModuloRow{529, 529}, ModuloRow{-7, -7}, ModuloRow{19, 19},
                                         ModuloRow{INT_MAX - 2, INT_MAX}, ModuloRow{INT_MAX - 1, INT_MAX},
                                         ModuloRow{INT_MAX, INT_MAX}));

TEST(UpToNiceModulo, AgreesWithTheDefinitionUpToTenThousand) {
    const auto isNice = [](int n) {
        return std::ranges::none_of(std::vector{2, 3, 5, 7, 11, 13, 17, 19},
                                    [=](int prime) { return prime < n && n % prime == 0; });
    };
    for (int n = 4; n < 10'000; ++n) {
        int expected = n;
        while (!isNice(expected)) {
            ++expected;
        }
        ASSERT_EQ(QORSysSimpleHashTable::UpToNiceModulo(n), expected) << n;
    }
}

TEST(QORSysSimpleHashTable, HasElevenBucketsAtLeast) {
    for (const int size : {-5, 0, 1, 10, 11}) {
        QORSysSimpleHashTable table(size, HashOf, AreEqual);
        EXPECT_EQ(s_lastRequest, 11 * 3 * sizeof(void*)) << size;
    }
}

TEST(QORSysSimpleHashTable, GrowsAtTheTwelfthElementToTwentyThreeBuckets) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(12);
    Fill(table, elements, 11);
    s_lastRequest = 0;
    EXPECT_EQ(table.Insert(elements[11]), 1);
    EXPECT_EQ(s_lastRequest, 23 * 3 * sizeof(void*));
    EXPECT_EQ(table.Size(), 12);
}

TEST(QORSysSimpleHashTable, KeepsTheOrderOfInsertionThroughGrowth) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(100);
    Fill(table, elements, 100);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(table.Get(i), elements[i]);
    }
}

TEST(QORSysSimpleHashTable, AnswersTheStoredElementForAnEqualOne) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Element stored{5, 1};
    Element equal{5, 1};
    EXPECT_EQ(table.Insert(&stored), 1);
    EXPECT_EQ(table.Insert(&equal), 0);
    EXPECT_EQ(table.InsertAndReturn(&equal), &stored);
    EXPECT_EQ(table.Insert(&stored), 0) << "the very same element counts as there";
    EXPECT_EQ(table.Locate(&equal), &stored);
    EXPECT_EQ(table.LocateBucket(&equal)->element, &stored);
    EXPECT_EQ(table.Size(), 1);
}

TEST(QORSysSimpleHashTable, ComparesTheStoredElementWithTheNewOne) {
    static void* first;
    static void* second;
    QORSysSimpleHashTable table(0, HashOf, [](void* a, void* b) {
        first = a;
        second = b;
        return 0;
    });
    Element stored{5, 1};
    Element added{5, 2};
    table.Insert(&stored);
    table.Insert(&added);
    EXPECT_EQ(first, &stored);
    EXPECT_EQ(second, &added);
}

TEST(QORSysSimpleHashTable, FindsNothingWhereThereIsNothing) {
    const QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Element element{5, 1};
    EXPECT_EQ(table.Locate(&element), nullptr);
    EXPECT_EQ(table.LocateBucket(&element), nullptr);
    EXPECT_EQ(table.KeyLocate(5), nullptr);
    EXPECT_EQ(table.Next(nullptr), nullptr);
    EXPECT_EQ(table.Next(&element), nullptr);
    EXPECT_EQ(table.NextWithKey(nullptr), nullptr);
    EXPECT_EQ(table.NextWithKey(&element), nullptr);
    EXPECT_EQ(table.Get(0), nullptr);
    EXPECT_EQ(table.Get(-1), nullptr);
    EXPECT_EQ(table.Size(), 0);
}

TEST(QORSysSimpleHashTable, WalksElementsInNodeOrder) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(5);
    Fill(table, elements, 5);
    void* element = table.Next(nullptr);
    for (int i = 0; i < 5; ++i, element = table.Next(element)) {
        EXPECT_EQ(element, elements[i]);
    }
    EXPECT_EQ(element, nullptr);
    EXPECT_EQ(table.Get(5), nullptr);
}

TEST(QORSysSimpleHashTable, WalksTheElementsOfOneHash) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Element a{3, 1};
    Element otherHashInTheSameChain{14, 2};
    Element b{3, 3};
    for (Element* element : {&a, &otherHashInTheSameChain, &b}) {
        table.Insert(element);
    }
    EXPECT_EQ(table.KeyLocate(3), &a);
    EXPECT_EQ(table.KeyLocate(14), &otherHashInTheSameChain);
    EXPECT_EQ(table.KeyLocate(25), nullptr) << "the chain alone is not enough";
    EXPECT_EQ(table.NextWithKey(&a), &b);
    EXPECT_EQ(table.NextWithKey(&b), nullptr);
    EXPECT_EQ(table.NextWithKey(&otherHashInTheSameChain), nullptr);
}

TEST(QORSysSimpleHashTable, GoesOnFromNoElementToNone) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(5);
    Fill(table, elements, 5);
    EXPECT_EQ(table.NextWithKey(nullptr), nullptr);
    QORSysSimpleHashTable pointers(0, QORSimpleHashIt, QORSimpleHashCompare);
    pointers.Insert(nullptr);
    pointers.Insert(reinterpret_cast<void*>(1));
    EXPECT_EQ(pointers.NextWithKey(nullptr), nullptr) << "even if null is an element, with another of its hash";
}

TEST(QORSysSimpleHashTable, StoresNullWithTheAnswerOfATableThatCannotGrow) {
    QORSysSimpleHashTable table(0, QORSimpleHashIt, QORSimpleHashCompare);
    EXPECT_EQ(table.Insert(nullptr), -1);
    EXPECT_EQ(table.Size(), 1);
    EXPECT_EQ(table.Insert(nullptr), -1);
    EXPECT_EQ(table.InsertAndReturn(nullptr), nullptr);
    EXPECT_EQ(table.Size(), 1) << "once";
    EXPECT_NE(table.LocateBucket(nullptr), nullptr);
    EXPECT_EQ(table.ReAllocate(0), 0);
    EXPECT_EQ(table.Size(), 1);
}

TEST(QORSysSimpleHashTable, KeepsOneOfTheElementsThatHaveBecomeEqualWhenItReallocates) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(6);
    Fill(table, elements, 6);
    elements.all[3] = elements.all[5] = elements.all[1];
    EXPECT_EQ(table.Size(), 6);
    EXPECT_EQ(table.ReAllocate(0), 0);
    EXPECT_THAT(KeysInOrder(table), ElementsAre(0, 1, 2, 4));
    EXPECT_EQ(table.Locate(elements[5]), elements[1]) << "the first of them";
    EXPECT_EQ(table.Get(3), elements[4]);
}

TEST(QORSysSimpleHashTable, PutsTheLastElementIntoThePlaceOfTheRemovedOne) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(5);
    Fill(table, elements, 5);
    EXPECT_EQ(table.Remove(elements[1]), elements[1]);
    EXPECT_THAT(KeysInOrder(table), ElementsAre(0, 4, 2, 3));
    EXPECT_EQ(table.Locate(elements[4]), elements[4]);
    EXPECT_EQ(table.Remove(elements[1]), nullptr);
    EXPECT_EQ(table.Remove(elements[3]), elements[3]);
    EXPECT_THAT(KeysInOrder(table), ElementsAre(0, 4, 2));
}

TEST(QORSysSimpleHashTable, RemovesItsOnlyElement) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Element element{3, 1};
    Element other{3, 2};
    table.Insert(&element);
    EXPECT_EQ(table.Remove(&other), nullptr);
    EXPECT_EQ(table.Remove(&element), &element);
    EXPECT_EQ(table.Size(), 0);
    EXPECT_EQ(table.Remove(&element), nullptr);
    EXPECT_EQ(table.Insert(&element), 1);
}

TEST(QORSysSimpleHashTable, AnswersTheElementThatItRemovedForAnEqualOne) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(2);
    Elements equal(2);
    Fill(table, elements, 2);
    EXPECT_EQ(table.Remove(equal[0]), elements[0]);
    EXPECT_EQ(table.Remove(equal[1]), elements[1]) << "the only one left";
}

TEST(QORSysSimpleHashTable, DoesNotShrinkBelowTwelveElements) {
    QORSysSimpleHashTable table(37, HashOf, AreEqual);
    Elements elements(12);
    Fill(table, elements, 12);
    s_lastRequest = 0;
    EXPECT_NE(table.Remove(elements[0]), nullptr);
    EXPECT_EQ(s_lastRequest, 0u);
    EXPECT_EQ(table.Size(), 11);
}

TEST(QORSysSimpleHashTable, ShrinksWithTwelveElements) {
    QORSysSimpleHashTable table(37, HashOf, AreEqual);
    Elements elements(13);
    Fill(table, elements, 13);
    s_lastRequest = 0;
    table.Remove(elements[12]);
    // 36 is below 37, and 12 * 1.1 asks for 13.
    EXPECT_EQ(s_lastRequest, 13 * 3 * sizeof(void*));
    EXPECT_EQ(table.Size(), 12);
}

TEST(QORSysSimpleHashTable, ShrinksWhenLessThanAThirdFull) {
    QORSysSimpleHashTable table(41, HashOf, AreEqual);
    Elements elements(14);
    Fill(table, elements, 14);
    s_lastRequest = 0;
    table.Remove(elements[13]);
    // 13 elements in 41 buckets: 39 is below 41, and 13 * 1.1 asks for 14, which gives 17.
    EXPECT_EQ(s_lastRequest, 17 * 3 * sizeof(void*));
    EXPECT_EQ(table.Size(), 13);
    for (int i = 0; i < 13; ++i) {
        EXPECT_EQ(table.Locate(elements[i]), elements[i]);
    }
}

TEST(QORSysSimpleHashTable, StaysAsLargeAsItIsAtAThirdFull) {
    QORSysSimpleHashTable table(37, HashOf, AreEqual);
    Elements elements(14);
    Fill(table, elements, 14);
    s_lastRequest = 0;
    table.Remove(elements[13]);
    EXPECT_EQ(s_lastRequest, 0u) << "39 is not below 37";
}

TEST(QORSysSimpleHashTable, KeepsItsBlockWhenEmptied) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(11);
    Fill(table, elements, 11);
    s_lastRequest = 0;
    table.RemoveAll();
    EXPECT_EQ(table.Size(), 0);
    EXPECT_EQ(table.Locate(elements[0]), nullptr);
    Fill(table, elements, 11);
    EXPECT_EQ(s_lastRequest, 0u);
}

TEST(QORSysSimpleHashTable, ReallocatesToWhatIsAskedOrToTwice) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(3);
    Fill(table, elements, 3);
    EXPECT_EQ(table.ReAllocate(50), 0);
    EXPECT_EQ(s_lastRequest, 53 * 3 * sizeof(void*));
    EXPECT_EQ(table.ReAllocate(0), 0);
    EXPECT_EQ(s_lastRequest, 107 * 3 * sizeof(void*));
    EXPECT_EQ(table.ReAllocate(-4), 0);
    EXPECT_EQ(s_lastRequest, 223 * 3 * sizeof(void*));
    EXPECT_THAT(KeysInOrder(table), ElementsAre(0, 1, 2));
}

TEST(QORSysSimpleHashTable, KeepsAllElementsWhenAskedForFewerBuckets) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(10);
    Fill(table, elements, 10);
    EXPECT_EQ(table.ReAllocate(1), 0);
    EXPECT_EQ(table.Size(), 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(table.Get(i), elements[i]);
        EXPECT_EQ(table.Locate(elements[i]), elements[i]);
    }
}

TEST(QORSysSimpleHashTable, KeepsTheOldTableWhenThereIsNoMemory) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(12);
    Fill(table, elements, 11);
    s_allocationsLeft = 0;
    EXPECT_EQ(table.Insert(elements[11]), -1);
    EXPECT_EQ(table.InsertAndReturn(elements[11]), nullptr);
    EXPECT_EQ(table.ReAllocate(100), -1);
    s_allocationsLeft = 1;
    EXPECT_EQ(table.ReAllocate(1), -1) << "the smaller table has to grow again on the way";
    s_allocationsLeft = -1;
    EXPECT_EQ(table.Size(), 11);
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(table.Get(i), elements[i]);
        EXPECT_EQ(table.Locate(elements[i]), elements[i]);
    }
    EXPECT_EQ(table.Insert(elements[11]), 1);
}

TEST(QORSysSimpleHashTable, HalvesTheSizeUntilThereIsMemory) {
    const auto bytes = [](int size) {
        return static_cast<std::size_t>(QORSysSimpleHashTable::UpToNiceModulo(size)) * 3 * sizeof(void*);
    };
    s_largestRequest = bytes(300);
    QORSysSimpleHashTable table(1000, HashOf, AreEqual);
    EXPECT_EQ(s_lastRequest, bytes(250));
    s_largestRequest = bytes(11);
    QORSysSimpleHashTable smallest(1000, HashOf, AreEqual);
    EXPECT_EQ(s_lastRequest, bytes(11));
}

struct HalvingRow {
    int size;
    std::vector<int> buckets;
    friend void PrintTo(const HalvingRow& row, std::ostream* out) { *out << row.size; }
};

class Halving : public testing::TestWithParam<HalvingRow> {};

TEST_P(Halving, AsksForFewerBucketsDownToEleven) {
    s_refused.clear();
    s_largestRequest = 0;
    const QORSysSimpleHashTable table(GetParam().size, HashOf, AreEqual);
    s_largestRequest = SIZE_MAX;
    std::vector<std::size_t> requests;
    for (const int buckets : GetParam().buckets) {
        requests.push_back(static_cast<std::size_t>(buckets) * 3 * sizeof(void*));
    }
    EXPECT_EQ(s_refused, requests);
}

INSTANTIATE_TEST_SUITE_P(Rows, Halving,
                         testing::Values(HalvingRow{1000, {1009, 503, 251, 127, 67, 31, 11}},
                                         HalvingRow{84, {89, 43, 23, 11}}, HalvingRow{83, {83, 41, 11}},
                                         HalvingRow{42, {43, 23, 11}}, HalvingRow{41, {41, 11}},
                                         HalvingRow{12, {13, 11}}, HalvingRow{11, {11}}, HalvingRow{0, {11}}));

TEST(QORSysSimpleHashTable, WorksWithoutATable) {
    s_allocationsLeft = 0;
    QORSysSimpleHashTable table(1000, HashOf, AreEqual);
    Element element{5, 1};
    EXPECT_EQ(table.Insert(&element), -1);
    EXPECT_EQ(table.Locate(&element), nullptr);
    EXPECT_EQ(table.Remove(&element), nullptr);
    table.RemoveAll();
    s_allocationsLeft = -1;
    EXPECT_EQ(table.Insert(&element), 1);
    EXPECT_EQ(table.Locate(&element), &element);
}

TEST(QORSysSimpleHashTable, StaysWholeWhenTheHashOfAnElementChanges) {
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(5);
    Fill(table, elements, 5);
    // The last element moves, and the chain of its present hash does not hold it.
    elements.all[4].hash = 7;
    EXPECT_EQ(table.Remove(elements[1]), elements[1]);
    EXPECT_THAT(KeysInOrder(table), ElementsAre(0, 4, 2, 3));
    EXPECT_EQ(table.Locate(elements[4]), nullptr);
    elements.all[4].hash = 4;
    EXPECT_EQ(table.Locate(elements[4]), elements[4]);
}

TEST(QORSysSimpleHashTable, FindsTheLastNodeBehindAnElementThatComparesAsEqual) {
    static bool s_isEqual = false;
    QORSysSimpleHashTable table(0, HashOf, [](void* a, void* b) { return s_isEqual ? 1 : AreEqual(a, b); });
    Element first{3, 1};
    Element second{3, 2};
    Element third{3, 3};
    for (Element* element : {&first, &second, &third}) {
        table.Insert(element);
    }
    s_isEqual = true;
    EXPECT_EQ(table.Remove(&second), &first) << "the first of the chain";
    s_isEqual = false;
    EXPECT_THAT(KeysInOrder(table), ElementsAre(3, 2));
    EXPECT_EQ(table.Locate(&second), &second);
    EXPECT_EQ(table.Locate(&third), &third);
    EXPECT_EQ(table.Remove(&second), &second);
    EXPECT_EQ(table.Remove(&third), &third);
    EXPECT_EQ(table.Size(), 0);
}

TEST(QORSysSimpleHashTable, MovesTheLastNodeWithinOneChainInAnyOrder) {
    // Removal of each of three in one chain, from each place that the last node may have in it.
    for (int removed = 0; removed < 3; ++removed) {
        for (int removedNext = 0; removedNext < 3; ++removedNext) {
            QORSysSimpleHashTable table(0, HashOf, AreEqual);
            Element elements[] = {{3, 0}, {3, 1}, {3, 2}, {3, 3}};
            for (Element& element : elements) {
                table.Insert(&element);
            }
            table.Remove(&elements[removed]);
            table.Remove(&elements[removedNext]);
            for (int i = 0; i < 4; ++i) {
                const bool isThere = i != removed && i != removedNext;
                EXPECT_EQ(table.Locate(&elements[i]), isThere ? &elements[i] : nullptr);
            }
        }
    }
}

TEST(QORSysSimpleHashTable, StaysAsItWasWhenTheHashThrowsInAReallocation) {
    static int s_hashesLeft = -1;
    QORSysSimpleHashTable table(
        0,
        [](void* element) {
            if (s_hashesLeft == 0) {
                throw std::runtime_error("no hash");
            }
            --s_hashesLeft;
            return HashOf(element);
        },
        AreEqual);
    Elements elements(11);
    Fill(table, elements, 11);
    s_hashesLeft = 5;
    EXPECT_THROW(table.ReAllocate(100), std::runtime_error);
    s_hashesLeft = -1;
    EXPECT_EQ(table.Size(), 11);
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(table.Locate(elements[i]), elements[i]);
    }
}

TEST(QORSysSimpleHashTable, AgreesWithAMapOverARandomSequence) {
    std::mt19937 random(7);
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Elements elements(400);
    for (Element& element : elements.all) {
        element.hash = random() % 50;
    }
    std::map<int, void*> model;
    for (int step = 0; step < 20'000; ++step) {
        const int key = static_cast<int>(random() % 400);
        if (random() % 5 < (step / 4000 % 2 == 0 ? 3u : 2u)) {
            ASSERT_EQ(table.Insert(elements[key]), model.emplace(key, elements[key]).second ? 1 : 0);
        } else {
            ASSERT_EQ(table.Remove(elements[key]), model.erase(key) != 0 ? elements[key] : nullptr);
        }
        ASSERT_EQ(table.Size(), static_cast<int>(model.size()));
    }
    for (int key = 0; key < 400; ++key) {
        EXPECT_EQ(table.Locate(elements[key]) != nullptr, model.contains(key));
    }
    std::vector<int> keys = KeysInOrder(table);
    std::ranges::sort(keys);
    std::vector<int> expected;
    for (const auto& [key, element] : model) {
        expected.push_back(key);
    }
    EXPECT_EQ(keys, expected);
}

TEST(QORSimpleHash, TakesPointersByTheirAddress) {
    auto* pointer = reinterpret_cast<void*>(std::uintptr_t{0x1238});
    EXPECT_EQ(QORSimpleHashIt(pointer), 0x1238u >> 3);
    EXPECT_EQ(QORSimpleHashIt(reinterpret_cast<void*>(std::uintptr_t{0x7FFF00001238})), 0xE0000247u);
    EXPECT_EQ(QORSimpleHashCompare(pointer, pointer), 1);
    EXPECT_EQ(QORSimpleHashCompare(pointer, nullptr), 0);
}

TEST(QORSysSimpleHashTable, HasTheStatedFields) {
    EXPECT_EQ(sizeof(QORSysSimpleHashTable), 3 * sizeof(void*) + 2 * sizeof(int));
    QORSysSimpleHashTable table(0, HashOf, AreEqual);
    Element element{5, 1};
    table.Insert(&element);
    const auto* words = reinterpret_cast<void* const*>(&table);
    EXPECT_EQ(words[0], reinterpret_cast<void*>(AreEqual));
    EXPECT_EQ(words[1], reinterpret_cast<void*>(HashOf));
    const auto* counts = reinterpret_cast<const int*>(words + 3);
    EXPECT_EQ(counts[0], 11);
    EXPECT_EQ(counts[1], 1);
    // Bucket heads first, then the nodes.
    const auto* block = static_cast<void* const*>(words[2]);
    EXPECT_EQ(block[5], block + 11);
    EXPECT_EQ(block[11], &element);
    EXPECT_EQ(block[12], nullptr);
}
