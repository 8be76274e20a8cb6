#include "VELSysList.h"

#include "FailingAllocation.h"
#include "TestSupport.h"
#include "VirtualTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A list of numbers that counts what becomes of its clones.
class NumberList : public VELSysList {
public:
    explicit NumberList(int listType = 2, bool owns = true) : VELSysList(listType, owns) {}
    ~NumberList() override { removeall(); }

    std::vector<int> Walk() {
        std::vector<int> numbers;
        for (void* item = GetFirst(); item; item = GetNext()) {
            numbers.push_back(*static_cast<int*>(item));
        }
        return numbers;
    }

    static void CheckSlots() {
        EXPECT_EQ(VirtualTable::SlotOf(&NumberList::ChildCopyItem), 2);
        EXPECT_EQ(VirtualTable::SlotOf(&NumberList::ChildDeleteItem), 3);
        EXPECT_EQ(VirtualTable::SlotOf(&NumberList::ChildCompareItem), 4);
    }

    bool refusesToClone = false;
    int cloned = 0;
    std::vector<int> released;

protected:
    void* ChildCopyItem(void* item) override {
        if (refusesToClone) {
            return nullptr;
        }
        ++cloned;
        return new int(*static_cast<int*>(item));
    }
    void ChildDeleteItem(void* item) override {
        released.push_back(*static_cast<int*>(item));
        delete static_cast<int*>(item);
    }
    int ChildCompareItem(void* first, void* second) override {
        return *static_cast<int*>(first) - *static_cast<int*>(second);
    }
};

/// A list that adds the given numbers.
void Fill(VELSysList& list, std::vector<int>& numbers) {
    for (int& number : numbers) {
        ASSERT_NE(list.Add(&number), nullptr);
    }
}

TEST(VELSysListTest, TheVirtualOperationsFollowTheDestructorsInTheirOrder) {
    NumberList::CheckSlots();
}

TEST(VELSysListTest, KeepsTheOrderOfItsEntriesAndDuplicates) {
    std::vector<int> numbers{3, 1, 3, 2};
    NumberList list;
    Fill(list, numbers);
    EXPECT_THAT(list.Walk(), ElementsAre(3, 1, 3, 2));
    EXPECT_EQ(list.Count(), 4);
}

TEST(VELSysListTest, AListOfAddressesKeepsOrderAndDuplicatesToo) {
    std::vector<int> numbers{2, 1};
    VELSysList list(3, false);
    Fill(list, numbers);
    list.Add(&numbers[0]);
    EXPECT_EQ(list.GetType(), 3);
    EXPECT_EQ(list.GetFirst(), &numbers[0]);
    EXPECT_EQ(list.GetNext(), &numbers[1]);
    EXPECT_EQ(list.GetNext(), &numbers[0]);
    EXPECT_EQ(list.GetNext(), nullptr);
}

TEST(VELSysListTest, AnUnknownTypeCountsAsAListOfObjects) {
    EXPECT_EQ(VELSysList(2, false).GetType(), 2);
    EXPECT_EQ(VELSysList(7, false).GetType(), 2);
}

TEST(VELSysListTest, AnOwningListAnswersAndStoresTheClone) {
    int number = 5;
    NumberList list;
    void* const stored = list.Add(&number);
    EXPECT_NE(stored, &number);
    EXPECT_EQ(*static_cast<int*>(stored), 5);
    EXPECT_EQ(list.GetFirst(), stored);
}

TEST(VELSysListTest, AListThatDoesNotOwnStoresTheEntryItself) {
    int number = 5;
    NumberList list(2, false);
    EXPECT_EQ(list.Add(&number), &number);
    list.removeall();
    EXPECT_THAT(list.released, IsEmpty());
}

TEST(VELSysListTest, AddRefusesANullEntry) {
    NumberList list;
    EXPECT_EQ(list.Add(nullptr), nullptr);
    EXPECT_EQ(list.Count(), 0);
}

TEST(VELSysListTest, AddRefusesAnEntryThatCannotBeCloned) {
    int number = 5;
    NumberList list;
    list.refusesToClone = true;
    EXPECT_EQ(list.Add(&number), nullptr);
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.GetFirst(), nullptr);
}

TEST(VELSysListTest, AddUnderMemoryShortageRefuses) {
    int number = 5;
    VELSysList list(2, false);
    const int refusals = SweepAllocations([&](const FailingAllocation& shortage) {
        void* const stored = list.Add(&number);
        EXPECT_EQ(stored, shortage.HasFailed() ? nullptr : &number);
    });
    EXPECT_EQ(refusals, 1);
    EXPECT_EQ(list.Count(), 1);
}

TEST(VELSysListTest, AddUnderMemoryShortageMakesNoClone) {
    int number = 5;
    NumberList list;
    {
        const FailingAllocation shortage(1);
        EXPECT_EQ(list.Add(&number), nullptr);
    }
    EXPECT_EQ(list.cloned, 0);
    EXPECT_EQ(list.Count(), 0);
    EXPECT_NE(list.Add(&number), nullptr);
    EXPECT_EQ(list.cloned, 1);
}

TEST(VELSysListTest, AnEmptyListHasNoFirstAndNoNext) {
    VELSysList list(2, true);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetFirst(), nullptr);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.Count(), 0);
}

TEST(VELSysListTest, ThereIsNoNextBeforeAWalk) {
    std::vector<int> numbers{1, 2};
    NumberList list;
    Fill(list, numbers);
    EXPECT_EQ(list.GetNext(), nullptr);
}

TEST(VELSysListTest, AWalkCanBeStartedAgain) {
    std::vector<int> numbers{1, 2};
    NumberList list;
    Fill(list, numbers);
    list.GetFirst();
    EXPECT_THAT(list.Walk(), ElementsAre(1, 2));
    EXPECT_THAT(list.Walk(), ElementsAre(1, 2));
}

TEST(VELSysListTest, AnEntryAddedDuringAWalkIsReached) {
    std::vector<int> numbers{1, 2};
    VELSysList list(2, false);
    list.Add(&numbers[0]);
    list.GetFirst();
    EXPECT_EQ(list.GetNext(), nullptr);
    list.Add(&numbers[1]);
    EXPECT_EQ(list.GetNext(), &numbers[1]);
}

TEST(VELSysListTest, RemoveallReleasesFromFirstToLast) {
    std::vector<int> numbers{3, 1, 2};
    NumberList list;
    Fill(list, numbers);
    list.GetFirst();
    list.removeall();
    EXPECT_THAT(list.released, ElementsAre(3, 1, 2));
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.GetNext(), nullptr);
    EXPECT_EQ(list.GetFirst(), nullptr);
}

TEST(VELSysListTest, AListCanBeFilledAgainAfterRemoveall) {
    std::vector<int> numbers{1, 2};
    NumberList list;
    Fill(list, numbers);
    list.removeall();
    Fill(list, numbers);
    EXPECT_THAT(list.Walk(), ElementsAre(1, 2));
}

TEST(VELSysListTest, FindGoesByTheComparison) {
    std::vector<int> numbers{1, 2, 2};
    VELSysList addresses(3, false);
    NumberList list;
    Fill(list, numbers);
    int sought = 2;
    list.GetFirst();
    void* const second = list.GetNext();
    list.GetFirst();
    EXPECT_EQ(list.Find(&sought), second);
    EXPECT_EQ(list.GetNext(), second);
    sought = 9;
    EXPECT_EQ(list.Find(&sought), nullptr);
    EXPECT_EQ(list.Find(nullptr), nullptr);
    addresses.Add(&numbers[1]);
    EXPECT_EQ(addresses.Find(&numbers[2]), nullptr);
    EXPECT_EQ(addresses.Find(&numbers[1]), &numbers[1]);
}

TEST(VELSysListTest, EraseRemovesTheVeryEntryAndReleasesIt) {
    std::vector<int> numbers{1, 2, 2};
    NumberList list;
    Fill(list, numbers);
    list.GetFirst();
    list.GetNext();
    void* const third = list.GetNext();
    EXPECT_EQ(list.Erase(third), 0);
    EXPECT_THAT(list.released, ElementsAre(2));
    EXPECT_THAT(list.Walk(), ElementsAre(1, 2));
    EXPECT_EQ(list.Count(), 2);
}

TEST(VELSysListTest, EraseRefusesWhatIsNotListed) {
    int number = 1;
    NumberList list;
    list.Add(&number);
    EXPECT_EQ(list.Erase(&number), -1);
    EXPECT_EQ(list.Erase(nullptr), -1);
    EXPECT_EQ(list.Count(), 1);
}

TEST(VELSysListTest, AWalkGoesOnBehindAnErasedEntry) {
    std::vector<int> numbers{1, 2, 3};
    VELSysList list(2, false);
    Fill(list, numbers);
    list.GetFirst();
    list.GetNext();
    EXPECT_EQ(list.Erase(&numbers[1]), 0);
    EXPECT_EQ(list.Erase(&numbers[0]), 0);
    EXPECT_EQ(list.GetNext(), &numbers[2]);
    EXPECT_EQ(list.Erase(&numbers[2]), 0);
    EXPECT_EQ(list.GetNext(), nullptr);
}

TEST(VELSysListTest, AddAfterErasingTheLastEntryKeepsTheOrder) {
    std::vector<int> numbers{1, 2, 3};
    NumberList list;
    list.Add(&numbers[0]);
    list.Erase(list.Add(&numbers[1]));
    list.Add(&numbers[2]);
    EXPECT_THAT(list.Walk(), ElementsAre(1, 3));
}

TEST(VELSysListTest, WhatABaseListOwnsIsDroppedUnreleased) {
    int number = 1;
    VELSysList list(2, true);
    EXPECT_EQ(list.Add(&number), &number);
}

TEST(VELSysListTest, AListPassesFromThreadToThreadUnderALock) {
    constexpr int threads = 4;
    constexpr int rounds = 200;
    std::mutex mutex;
    NumberList shared;
    RunAtOnce(threads, [&](int number) {
        NumberList own;
        for (int round = 0; round < rounds; ++round) {
            own.Add(&number);
            const std::lock_guard lock(mutex);
            shared.Add(own.GetFirst());
            shared.GetNext();
        }
        EXPECT_EQ(own.Count(), rounds);
    });
    EXPECT_EQ(shared.Count(), threads * rounds);
}

} // namespace
