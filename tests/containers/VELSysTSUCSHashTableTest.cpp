#include "VELSysTSUCSHashTable.h"
#include "HashedElement.h"
#include "VirtualTable.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <pthread.h>
#include <random>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using Table = VELSysTSUCSHashTable;

using namespace HashedElement;

/// Requests that still succeed; negative for no limit.
std::atomic<int> s_allocationsLeft = -1;

bool Refuses() {
    if (s_allocationsLeft == 0) {
        return true;
    }
    if (s_allocationsLeft > 0) {
        --s_allocationsLeft;
    }
    return false;
}

// The table's mutex, and what happens around it; of one thread alone.
const void* s_watched = nullptr;
int s_locks = 0;
std::function<void()> s_beforeLock;
std::function<void()> s_whenLocked;
std::function<void()> s_beforeUnlock;

/// Runs `action` if there is one, once.
void RunOnce(std::function<void()>& action) {
    if (const auto once = std::exchange(action, nullptr)) {
        once();
    }
}

struct Fields {
    explicit Fields(const Table& table) { std::memcpy(static_cast<void*>(this), static_cast<const void*>(&table), 72); }
    void* slots;
    void* creatorSlots;
    int initialSize;
    VELSysTSVector* primary;
    VELSysTSVector* overflow;
    int size;
    Table::Hash hash;
    Table::Compare compare;
    int count;
};

} // namespace

extern "C" void* __real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
extern "C" void* __real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
extern "C" void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    return Refuses() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
extern "C" void* __wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    return Refuses() ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    const bool isWatched = mutex != nullptr && mutex == s_watched;
    if (isWatched) {
        ++s_locks;
        RunOnce(s_beforeLock);
    }
    const int result = __real_pthread_mutex_lock(mutex);
    if (isWatched) {
        RunOnce(s_whenLocked);
    }
    return result;
}

extern "C" int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    if (mutex != nullptr && mutex == s_watched) {
        RunOnce(s_beforeUnlock);
    }
    return __real_pthread_mutex_unlock(mutex);
}

TEST(VELSysTSUCSHashTable, KeepsOneOfEqualElements) {
    Table table(16, HashOf, AreEqual);
    Element a{3, 1};
    Element equal{3, 1};
    EXPECT_EQ(table.TryInsert(&a), &a);
    EXPECT_EQ(table.TryInsert(&equal), &a);
    EXPECT_EQ(table.TryInsert(&a), &a);
    EXPECT_EQ(table.Locate(&equal), &a);
    EXPECT_EQ(Fields(table).count, 1);
}

TEST(VELSysTSUCSHashTable, HasTwoElementsInASlotAndRefusesAThird) {
    Table table(16, HashOf, AreEqual);
    Element a{3, 1};
    Element b{19, 2};
    Element equalToB{19, 2};
    Element c{35, 3};
    EXPECT_EQ(table.TryInsert(&a), &a);
    EXPECT_EQ(Fields(table).overflow, nullptr);
    EXPECT_EQ(table.TryInsert(&b), &b);
    EXPECT_NE(Fields(table).overflow, nullptr);
    EXPECT_EQ(table.TryInsert(&equalToB), &b);
    EXPECT_EQ(table.TryInsert(&c), nullptr);
    EXPECT_EQ(table.Locate(&a), &a);
    EXPECT_EQ(table.Locate(&equalToB), &b);
    EXPECT_EQ(table.Locate(&c), nullptr);
    EXPECT_EQ(Fields(table).count, 2);
}

TEST(VELSysTSUCSHashTable, OfSizeOneRefusesTheThirdElementOfAHash) {
    Table table(1, HashOf, AreEqual);
    Element elements[] = {{0, 1}, {0, 2}, {0, 3}};
    EXPECT_EQ(table.TryInsert(&elements[0]), &elements[0]);
    EXPECT_EQ(table.TryInsert(&elements[1]), &elements[1]);
    EXPECT_EQ(table.TryInsert(&elements[2]), nullptr);
}

TEST(VELSysTSUCSHashTable, ComparesTheNewElementFirstInThePrimaryRowAndSecondInTheOther) {
    static std::vector<std::pair<void*, void*>> s_compared;
    Table table(16, HashOf, [](void* a, void* b) {
        s_compared.emplace_back(a, b);
        return AreEqual(a, b);
    });
    Element a{3, 1};
    Element b{3, 2};
    Element c{3, 3};
    for (Element* element : {&a, &b, &c}) {
        table.TryInsert(element);
    }
    EXPECT_THAT(s_compared, ElementsAre(std::pair<void*, void*>(&b, &a), std::pair<void*, void*>(&c, &a),
                                        std::pair<void*, void*>(&b, &c)));
}

TEST(VELSysTSUCSHashTable, TakesOnlyOneForEqual) {
    Table table(16, HashOf, [](void*, void*) { return 2; });
    Element a{3, 1};
    Element b{3, 1};
    EXPECT_EQ(table.TryInsert(&a), &a);
    EXPECT_EQ(table.TryInsert(&b), &b);
    EXPECT_EQ(table.Locate(&a), nullptr);
}

TEST(VELSysTSUCSHashTable, NeverRemoves) {
    Table table(16, HashOf, AreEqual);
    Element a{3, 1};
    table.TryInsert(&a);
    EXPECT_EQ(table.Remove(&a), nullptr);
    EXPECT_EQ(table.Locate(&a), &a);
}

TEST(VELSysTSUCSHashTable, GrowsFourfoldOnceItHoldsOneAndAHalfTimesItsSize) {
    Table table(4, HashOf, AreEqual);
    Element elements[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(table.TryInsert(&elements[i]), &elements[i]);
        EXPECT_EQ(Fields(table).size, 4);
    }
    EXPECT_EQ(table.TryInsert(&elements[6]), &elements[6]);
    EXPECT_EQ(Fields(table).size, 16);
    EXPECT_EQ(Fields(table).primary->GetSize(), 16);
    EXPECT_EQ(Fields(table).overflow->GetSize(), 16);
    for (Element& element : elements) {
        EXPECT_EQ(table.Locate(&element), &element);
        EXPECT_EQ(Fields(table).primary->GetElementAt(static_cast<int>(element.hash)), &element);
    }
}

TEST(VELSysTSUCSHashTable, GrowsAtAWholeNumberOfElements) {
    Element elements[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}};
    Table three(3, HashOf, AreEqual);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(three.TryInsert(&elements[i]), &elements[i]);
        EXPECT_EQ(Fields(three).size, 3);
    }
    EXPECT_EQ(three.TryInsert(&elements[4]), &elements[4]);
    EXPECT_EQ(Fields(three).size, 12) << "behind four, not four and a half";
    Table one(1, HashOf, AreEqual);
    one.TryInsert(&elements[0]);
    EXPECT_EQ(Fields(one).size, 1);
    one.TryInsert(&elements[1]);
    EXPECT_EQ(Fields(one).size, 4);
}

TEST(VELSysTSUCSHashTable, FindsTheElementOfThePrimaryRowFirst) {
    Table table(16, HashOf, AreEqual);
    Element a{3, 1};
    Element equal{3, 1};
    Element others[] = {{4, 2}, {4, 3}};
    for (Element* element : {&a, &others[0], &others[1]}) {
        table.TryInsert(element);
    }
    void* existing = nullptr;
    ASSERT_EQ(Fields(table).overflow->TryInsertAt(3, &equal, existing), 1);
    EXPECT_EQ(table.Locate(&equal), &a);
    EXPECT_EQ(table.Locate(&a), &a);
}

TEST(VELSysTSUCSHashTable, ReallocatesUnderItsMutex) {
    Table table(4, HashOf, AreEqual);
    Element elements[] = {{0, 0}, {4, 1}};
    for (Element& element : elements) {
        table.TryInsert(&element);
    }
    s_locks = 0;
    s_watched = reinterpret_cast<const char*>(&table) + 72;
    const auto expectSize = [&table](int size) {
        EXPECT_EQ(Fields(table).size, size);
        EXPECT_EQ(Fields(table).primary->GetSize(), size);
        EXPECT_EQ(Fields(table).overflow->GetSize(), size);
    };
    s_whenLocked = [&] { expectSize(4); };
    s_beforeUnlock = [&] {
        expectSize(8);
        EXPECT_EQ(table.Locate(&elements[0]), &elements[0]);
        EXPECT_EQ(table.Locate(&elements[1]), &elements[1]);
    };
    table.Reallocate(8);
    EXPECT_EQ(s_locks, 1);
    EXPECT_FALSE(s_whenLocked || s_beforeUnlock);
    table.Reallocate(8);
    EXPECT_EQ(s_locks, 1) << "not for what it has";
    s_watched = nullptr;
}

TEST(VELSysTSUCSHashTable, TestsItsSizeAgainUnderItsMutex) {
    Table table(4, HashOf, AreEqual);
    Element element{3, 1};
    table.TryInsert(&element);
    s_locks = 0;
    s_watched = reinterpret_cast<const char*>(&table) + 72;
    // As another thread that gets the mutex first.
    s_beforeLock = [&] { table.Reallocate(16); };
    table.Reallocate(8);
    s_watched = nullptr;
    EXPECT_EQ(s_locks, 2);
    EXPECT_EQ(Fields(table).size, 16);
    EXPECT_EQ(Fields(table).primary->GetSize(), 16);
    EXPECT_EQ(table.Locate(&element), &element);
}

TEST(VELSysTSUCSHashTable, HasAnOverflowRowOfItsPresentSize) {
    Table table(2, HashOf, AreEqual);
    table.Reallocate(100);
    Element a{99, 1};
    Element b{99, 2};
    EXPECT_EQ(table.TryInsert(&a), &a);
    EXPECT_EQ(table.TryInsert(&b), &b);
}

TEST(VELSysTSUCSHashTable, NeverGetsSmaller) {
    Table table(10, HashOf, AreEqual);
    for (const int size : {10, 9, 1, 0, -1, -2, INT_MIN}) {
        table.Reallocate(size);
        EXPECT_EQ(Fields(table).size, 10);
    }
    table.Reallocate(11);
    EXPECT_EQ(Fields(table).size, 11);
}

TEST(VELSysTSUCSHashTable, DropsAnElementWhoseSlotIsFullAfterReallocation) {
    Table table(4, HashOf, AreEqual);
    // Slots 0, 1, 2 of four; all in slot 0 of five.
    Element elements[] = {{0, 0}, {5, 1}, {10, 2}};
    for (Element& element : elements) {
        EXPECT_EQ(table.TryInsert(&element), &element);
    }
    table.Reallocate(5);
    EXPECT_EQ(table.Locate(&elements[0]), &elements[0]);
    EXPECT_EQ(table.Locate(&elements[1]), &elements[1]);
    EXPECT_EQ(table.Locate(&elements[2]), nullptr);
    EXPECT_EQ(Fields(table).count, 3) << "without notice";
}

TEST(VELSysTSUCSHashTable, PlacesTheElementsOfThePrimaryRowFirst) {
    Table table(4, HashOf, AreEqual);
    Element elements[] = {{0, 0}, {20, 1}, {5, 2}};
    for (Element& element : elements) {
        EXPECT_EQ(table.TryInsert(&element), &element);
    }
    EXPECT_EQ(Fields(table).overflow->GetElementAt(0), &elements[1]);
    table.Reallocate(5);
    EXPECT_EQ(Fields(table).primary->GetElementAt(0), &elements[0]);
    EXPECT_EQ(Fields(table).overflow->GetElementAt(0), &elements[2]);
}

TEST(VELSysTSUCSHashTable, StaysAsItWasWhenThereIsNoMemoryToReallocate) {
    for (int successes = 0;; ++successes) {
        ASSERT_LT(successes, 100);
        Table table(4, HashOf, AreEqual);
        Element elements[] = {{0, 0}, {4, 1}, {1, 2}, {7, 3}};
        for (Element& element : elements) {
            EXPECT_EQ(table.TryInsert(&element), &element);
        }
        s_allocationsLeft = successes;
        table.Reallocate(32);
        const bool hasEnough = s_allocationsLeft > 0;
        s_allocationsLeft = -1;
        EXPECT_EQ(Fields(table).size, hasEnough || Fields(table).size == 32 ? 32 : 4);
        for (Element& element : elements) {
            EXPECT_EQ(table.Locate(&element), &element);
        }
        if (hasEnough) {
            return;
        }
    }
}

TEST(VELSysTSUCSHashTable, RefusesElementsWithoutMemoryOrSlots) {
    Element a{3, 1};
    Element b{3, 2};
    for (const int successes : {0, 1}) {
        s_allocationsLeft = successes;
        Table table(16, HashOf, AreEqual);
        EXPECT_EQ(table.TryInsert(&a), nullptr) << successes;
        EXPECT_EQ(table.Locate(&a), nullptr);
        table.Reallocate(32);
        s_allocationsLeft = -1;
    }
    Table table(16, HashOf, AreEqual);
    table.TryInsert(&a);
    s_allocationsLeft = 0;
    EXPECT_EQ(table.TryInsert(&b), nullptr) << "no overflow row";
    s_allocationsLeft = -1;
    EXPECT_EQ(table.TryInsert(&b), &b);
    Table withoutSlots(0, HashOf, AreEqual);
    EXPECT_EQ(withoutSlots.TryInsert(&a), nullptr);
    EXPECT_EQ(withoutSlots.Locate(&a), nullptr);
    withoutSlots.Reallocate(1);
    EXPECT_EQ(withoutSlots.TryInsert(&a), &a);
}

TEST(VELSysTSUCSHashTable, TakesNoNull) {
    Table table(16, HashOf, AreEqual);
    EXPECT_EQ(table.TryInsert(nullptr), nullptr);
    EXPECT_EQ(table.Locate(nullptr), nullptr);
}

// The walk.

TEST(VELSysTSUCSHashTableWalk, VisitsThePrimaryRowThenTheOverflow) {
    Table table(16, HashOf, AreEqual);
    Element elements[] = {{5, 0}, {3, 1}, {3, 2}, {9, 3}, {9, 4}};
    for (Element& element : elements) {
        table.TryInsert(&element);
    }
    std::vector<void*> visited;
    for (Table::VELSysIterator* it = table.begin(); !(*it == *table.end()); ++*it) {
        visited.push_back(**it);
    }
    EXPECT_THAT(visited, ElementsAre(&elements[1], &elements[0], &elements[3], &elements[2], &elements[4]));
    EXPECT_EQ(**table.begin(), nullptr) << "it is not set back to the start";
}

TEST(VELSysTSUCSHashTableWalk, IsGoodForOneTableOnce) {
    Table first(16, HashOf, AreEqual);
    Table second(16, HashOf, AreEqual);
    Element a{1, 1};
    Element b{2, 2};
    first.TryInsert(&a);
    second.TryInsert(&b);
    Table::VELSysIterator* const it = first.begin();
    EXPECT_EQ(second.begin(), it);
    EXPECT_EQ(**it, &a);
    EXPECT_FALSE(*it == *second.end());
    EXPECT_EQ(first.end(), second.end());
    ++*it;
    EXPECT_TRUE(*it == *first.end());
    EXPECT_FALSE(*it == *second.end());
    first.begin();
    EXPECT_FALSE(*it == *first.end()) << "active again, at the end of the rows";
    ++*it;
    EXPECT_TRUE(*it == *first.end());
}

TEST(VELSysTSUCSHashTableWalk, EndsWithItsTable) {
    Element a{1, 1};
    auto table = std::make_unique<Table>(16u, HashOf, AreEqual);
    table->TryInsert(&a);
    Table::VELSysIterator* const it = table->begin();
    EXPECT_EQ(**it, &a);
    table.reset();
    EXPECT_EQ(**it, nullptr);
    ++*it;
    Table other(16, HashOf, AreEqual);
    other.TryInsert(&a);
    EXPECT_EQ(**other.begin(), nullptr);
    ++*other.begin();
    EXPECT_EQ(**it, nullptr);
}

TEST(VELSysTSUCSHashTableWalk, CopiesAndStepsLikeAnyIterator) {
    Table table(16, HashOf, AreEqual);
    Element a{1, 1};
    Element b{2, 2};
    table.TryInsert(&a);
    table.TryInsert(&b);
    Table::VELSysIterator it(Fields(table).primary, Fields(table).overflow);
    Table::VELSysIterator copy(it);
    EXPECT_EQ(*it++, &a);
    EXPECT_EQ(*it, &b);
    EXPECT_EQ(*copy, &a);
    copy = it;
    EXPECT_EQ(*copy, &b);
    EXPECT_TRUE(copy == it);
    ++it;
    EXPECT_EQ(*it, nullptr);
    EXPECT_FALSE(copy == it);
    ++it;
    it++;
    EXPECT_EQ(*it, nullptr);
    EXPECT_TRUE(it == *table.end());
}

TEST(VELSysTSUCSHashTableWalk, EndsBehindThePrimaryRowWhenTheOverflowIsEmpty) {
    Table table(16, HashOf, AreEqual);
    Element a{1, 1};
    table.TryInsert(&a);
    VELSysTSVector overflow(16);
    Table::VELSysIterator it(Fields(table).primary, &overflow);
    EXPECT_EQ(*it, &a);
    EXPECT_FALSE(it == *table.end());
    ++it;
    EXPECT_TRUE(it == *table.end());
    EXPECT_EQ(*it, nullptr);
}

namespace {

struct CountingIterator : Table::VELSysIterator {
    using VELSysIterator::VELSysIterator;
    using VELSysIterator::operator++;
    VELSysIterator& operator++() override {
        ++steps;
        return VELSysIterator::operator++();
    }
    int steps = 0;
};

} // namespace

TEST(VELSysTSUCSHashTableWalk, StepsBehindByTheStepOfTheDerivedIterator) {
    Table table(16, HashOf, AreEqual);
    Element a{1, 1};
    Element b{2, 2};
    table.TryInsert(&a);
    table.TryInsert(&b);
    CountingIterator it(Fields(table).primary, nullptr);
    Table::VELSysIterator& base = it;
    EXPECT_EQ(*base++, &a);
    EXPECT_EQ(it.steps, 1);
    EXPECT_EQ(*it, &b);
}

// Threads.

TEST(VELSysTSUCSHashTableThreads, KeepOneOfEachEqualElement) {
    constexpr int Keys = 4'000;
    // Large enough to need no reallocation.
    Table table(8'000, HashOf, AreEqual);
    std::vector<std::vector<Element>> sets(3);
    std::vector<std::vector<void*>> stored(3);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        for (int key = 0; key < Keys; ++key) {
            // Two keys a slot.
            sets[i].push_back({static_cast<unsigned int>(key / 2), key});
        }
        std::mt19937 random(static_cast<unsigned int>(i));
        std::ranges::shuffle(sets[i], random);
    }
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        threads.emplace_back([&, i] {
            for (Element& element : sets[i]) {
                void* const result = table.TryInsert(&element);
                stored[i].push_back(result);
                if (table.Locate(&element) != result) {
                    stored[i].push_back(nullptr);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<void*> all;
    for (const auto& results : stored) {
        ASSERT_EQ(results.size(), static_cast<std::size_t>(Keys));
        for (void* const element : results) {
            ASSERT_NE(element, nullptr);
            EXPECT_EQ(table.Locate(element), element);
            all.insert(element);
        }
    }
    EXPECT_EQ(all.size(), static_cast<std::size_t>(Keys));
    EXPECT_EQ(Fields(table).count, Keys);
}

TEST(VELSysTSUCSHashTableThreads, StaySafeWhileTheTableGrows) {
    Table table(2, HashOf, AreEqual);
    std::vector<Element> elements;
    for (int key = 0; key < 2'000; ++key) {
        elements.push_back({static_cast<unsigned int>(key), key});
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            for (Element& element : elements) {
                void* const result = table.TryInsert(&element);
                EXPECT_TRUE(result == nullptr || result == &element);
                void* const found = table.Locate(&element);
                EXPECT_TRUE(found == nullptr || found == &element);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GE(Fields(table).size, 2'000 / 2);
}

// What it consists of.

TEST(VELSysTSUCSHashTable, HasTheStatedFields) {
    Table table(16, HashOf, AreEqual);
    Element a{3, 1};
    Element b{3, 2};
    table.TryInsert(&a);
    table.TryInsert(&b);
    const Fields fields(table);
    EXPECT_EQ(sizeof table, 72 + sizeof(QORMutex));
    EXPECT_EQ(fields.initialSize, 16);
    EXPECT_EQ(fields.primary->GetElementAt(3), &a);
    EXPECT_EQ(fields.overflow->GetElementAt(3), &b);
    EXPECT_EQ(fields.size, 16);
    EXPECT_EQ(fields.hash, HashOf);
    EXPECT_EQ(fields.compare, AreEqual);
    EXPECT_EQ(fields.count, 2);
}

namespace {

using VirtualTable::SlotOf;

struct LargerTable : Table {
    using Table::Table;
    virtual void OneMore() {}
};

struct LargerIterator : Table::VELSysIterator {
    using Table::VELSysIterator::VELSysIterator;
    virtual void OneMore() {}
};

} // namespace

TEST(VELSysTSUCSHashTable, HasTheStatedVirtualSlots) {
    EXPECT_EQ(SlotOf(&LargerTable::OneMore), 2);
    using Iterator = Table::VELSysIterator;
    EXPECT_EQ(SlotOf(static_cast<Iterator& (Iterator::*)()>(&Iterator::operator++)), 2);
    EXPECT_EQ(SlotOf(static_cast<Iterator (Iterator::*)(int)>(&Iterator::operator++)), 3);
    EXPECT_EQ(SlotOf(&LargerIterator::OneMore), 4);
}
