#include "VELSysHashTable.h"

#include "FailingAllocation.h"
#include "TestSupport.h"
#include "VirtualTable.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A table of numbers that notes what it releases.
class NumberTable : public VELSysHashTable {
public:
    explicit NumberTable(int buckets = 7, int ignoreCase = -1) : VELSysHashTable(buckets, ignoreCase) {}
    ~NumberTable() override { removeall(); }

    int AddNumber(const char* key, int number) { return Add(key, &number); }
    int ReplaceNumber(const char* key, int number) { return Replace(key, &number); }
    /// The number, or -1 for none.
    int GetNumber(const char* key) {
        void* const value = Get(key);
        return value ? *static_cast<int*>(value) : -1;
    }

    static void CheckSlots() {
        EXPECT_EQ(VirtualTable::SlotOf(&NumberTable::ChildCopyItem), 2);
        EXPECT_EQ(VirtualTable::SlotOf(&NumberTable::ChildDeleteItem), 3);
        EXPECT_EQ(VirtualTable::SlotOf(&NumberTable::ChildCompareItem), 4);
        EXPECT_EQ(VirtualTable::SlotOf(&NumberTable::ChildHashFunction), 5);
    }

    bool refusesToCopy = false;
    std::vector<int> released;
    int releasedNulls = 0;
    /// Called once, within the next copying or the next release.
    std::function<void()> withinCopy;
    std::function<void()> withinRelease;

protected:
    void* ChildCopyItem(void* value) override {
        CallOnce(withinCopy);
        return value && !refusesToCopy ? new int(*static_cast<int*>(value)) : nullptr;
    }
    void ChildDeleteItem(void* value) override {
        CallOnce(withinRelease);
        if (!value) {
            ++releasedNulls;
            return;
        }
        released.push_back(*static_cast<int*>(value));
        delete static_cast<int*>(value);
    }
    int ChildCompareItem(void* first, void* second) override {
        return first && second ? *static_cast<int*>(first) - *static_cast<int*>(second) : -1;
    }

private:
    static void CallOnce(std::function<void()>& function) {
        if (function) {
            std::exchange(function, nullptr)();
        }
    }
};

TEST(VELSysHashTableTest, TheVirtualOperationsFollowTheDestructorsInTheirOrder) {
    NumberTable::CheckSlots();
}

TEST(VELSysHashTableTest, AddStoresACopyUnderACopyOfTheKey) {
    NumberTable table;
    std::string key = "one";
    int number = 1;
    EXPECT_EQ(table.Add(key.c_str(), &number), 0);
    number = 9;
    key = "two";
    EXPECT_EQ(table.GetNumber("one"), 1);
    EXPECT_EQ(table.GetNumber("two"), -1);
    EXPECT_EQ(table.Count(), 1);
}

TEST(VELSysHashTableTest, AddRefusesAKnownKey) {
    NumberTable table;
    EXPECT_EQ(table.AddNumber("one", 1), 0);
    EXPECT_EQ(table.AddNumber("one", 2), -1);
    EXPECT_EQ(table.GetNumber("one"), 1);
    EXPECT_EQ(table.Count(), 1);
}

TEST(VELSysHashTableTest, ReplaceSetsAKnownKeyAndANewOne) {
    NumberTable table;
    EXPECT_EQ(table.ReplaceNumber("one", 1), 0);
    EXPECT_EQ(table.ReplaceNumber("one", 2), 0);
    EXPECT_EQ(table.GetNumber("one"), 2);
    EXPECT_EQ(table.Count(), 1);
    EXPECT_THAT(table.released, ElementsAre(1));
}

TEST(VELSysHashTableTest, ReplaceTakesTheStoredValueItself) {
    NumberTable table;
    table.AddNumber("one", 1);
    EXPECT_EQ(table.Replace("one", table.Get("one")), 0);
    EXPECT_EQ(table.GetNumber("one"), 1);
}

TEST(VELSysHashTableTest, ANullKeyIsRefused) {
    NumberTable table;
    EXPECT_EQ(table.AddNumber(nullptr, 1), -1);
    EXPECT_EQ(table.ReplaceNumber(nullptr, 1), -1);
    EXPECT_EQ(table.Get(nullptr), nullptr);
    EXPECT_EQ(table.Remove(nullptr), -1);
    EXPECT_EQ(table.Count(), 0);
}

TEST(VELSysHashTableTest, AnEmptyKeyIsAKey) {
    NumberTable table;
    EXPECT_EQ(table.Get(""), nullptr);
    EXPECT_EQ(table.AddNumber("", 4), 0);
    EXPECT_EQ(table.GetNumber(""), 4);
}

TEST(VELSysHashTableTest, ANullValueIsStoredAndLooksLikeAMissingKey) {
    NumberTable table;
    EXPECT_EQ(table.Add("none", nullptr), 0);
    EXPECT_EQ(table.Get("none"), nullptr);
    EXPECT_EQ(table.Count(), 1);
    EXPECT_EQ(table.Add("none", nullptr), -1);
    EXPECT_EQ(table.ReplaceNumber("none", 3), 0);
    EXPECT_EQ(table.GetNumber("none"), 3);
    EXPECT_EQ(table.Replace("none", nullptr), 0);
    EXPECT_EQ(table.Get("none"), nullptr);
}

TEST(VELSysHashTableTest, ANullValueIsReleasedAsAnyOther) {
    NumberTable table;
    table.Add("one", nullptr);
    EXPECT_EQ(table.Replace("one", nullptr), 0);
    EXPECT_EQ(table.releasedNulls, 1);
    EXPECT_EQ(table.Remove("one"), 0);
    EXPECT_EQ(table.releasedNulls, 2);
    table.Add("one", nullptr);
    table.removeall();
    EXPECT_EQ(table.releasedNulls, 3);
    EXPECT_THAT(table.released, IsEmpty());
}

TEST(VELSysHashTableTest, ACopyingMayRemoveTheEntryBeforeTheNewOne) {
    NumberTable table(1);
    table.AddNumber("one", 1);
    table.withinCopy = [&] { table.Remove("one"); };
    EXPECT_EQ(table.AddNumber("two", 2), 0);
    EXPECT_EQ(table.GetNumber("two"), 2);
    EXPECT_EQ(table.Count(), 1);
}

TEST(VELSysHashTableTest, ACopyingMayAddAnotherEntryToTheBucket) {
    NumberTable table(1);
    table.withinCopy = [&] { table.AddNumber("one", 1); };
    EXPECT_EQ(table.AddNumber("two", 2), 0);
    EXPECT_EQ(table.GetNumber("one"), 1);
    EXPECT_EQ(table.GetNumber("two"), 2);
    EXPECT_EQ(table.Count(), 2);
}

TEST(VELSysHashTableTest, AKeyThatTheCopyingAddedIsKnown) {
    NumberTable table;
    table.withinCopy = [&] { table.AddNumber("one", 1); };
    EXPECT_EQ(table.AddNumber("one", 2), -1);
    EXPECT_EQ(table.GetNumber("one"), 1);
    EXPECT_THAT(table.released, ElementsAre(2));
    table.withinCopy = [&] { table.AddNumber("two", 3); };
    EXPECT_EQ(table.ReplaceNumber("two", 4), 0);
    EXPECT_EQ(table.GetNumber("two"), 4);
    EXPECT_THAT(table.released, ElementsAre(2, 3));
    EXPECT_EQ(table.Count(), 2);
}

TEST(VELSysHashTableTest, ReplaceSetsAKeyThatTheCopyingRemoved) {
    NumberTable table(1);
    table.AddNumber("one", 1);
    int number = 1;
    const char* const storedKey = table.FindKey(&number);
    table.withinCopy = [&] { table.removeall(); };
    EXPECT_EQ(table.ReplaceNumber(storedKey, 2), 0);
    EXPECT_EQ(table.GetNumber("one"), 2);
    EXPECT_EQ(table.Count(), 1);
}

TEST(VELSysHashTableTest, AKnownKeyIsRefusedBeforeACopyIsMade) {
    NumberTable table;
    bool copies = false;
    table.AddNumber("one", 1);
    table.withinCopy = [&] { copies = true; };
    EXPECT_EQ(table.AddNumber("one", 2), -1);
    EXPECT_FALSE(copies);
}

TEST(VELSysHashTableTest, AReleaseWithinRemoveallMayRemoveAnotherEntry) {
    NumberTable table(1);
    for (int number = 1; number <= 3; ++number) {
        table.AddNumber(std::to_string(number).c_str(), number);
    }
    table.withinRelease = [&] { EXPECT_EQ(table.Remove("3"), 0); };
    table.removeall();
    EXPECT_THAT(table.released, UnorderedElementsAre(1, 2, 3));
    EXPECT_EQ(table.Count(), 0);
}

TEST(VELSysHashTableTest, CaseIsRespectedOnlyWhereAskedFor) {
    NumberTable respecting(7, -1);
    respecting.AddNumber("Name", 1);
    EXPECT_EQ(respecting.GetNumber("NAME"), -1);
    EXPECT_EQ(respecting.AddNumber("NAME", 2), 0);
    NumberTable ignoring(7, 0);
    ignoring.AddNumber("Name", 1);
    EXPECT_EQ(ignoring.GetNumber("nAME"), 1);
    EXPECT_EQ(ignoring.AddNumber("NAME", 2), -1);
    EXPECT_EQ(ignoring.GetNumber("Nam"), -1);
    EXPECT_EQ(ignoring.GetNumber("Names"), -1);
    EXPECT_EQ(ignoring.GetNumber("Name["), -1);
}

TEST(VELSysHashTableTest, KeysOfOneBucketAreKeptApart) {
    NumberTable table(1);
    for (int number = 0; number < 20; ++number) {
        EXPECT_EQ(table.AddNumber(std::to_string(number).c_str(), number), 0);
    }
    for (int number = 0; number < 20; ++number) {
        EXPECT_EQ(table.GetNumber(std::to_string(number).c_str()), number);
    }
    EXPECT_EQ(table.Count(), 20);
}

TEST(VELSysHashTableTest, FewerThanOneBucketCountsAsOne) {
    for (int buckets : {0, -5}) {
        NumberTable table(buckets);
        EXPECT_EQ(table.AddNumber("one", 1), 0);
        EXPECT_EQ(table.GetNumber("one"), 1);
    }
}

TEST(VELSysHashTableTest, RemoveReleasesTheValueOfOneKey) {
    NumberTable table(1);
    for (int number = 1; number <= 3; ++number) {
        table.AddNumber(std::to_string(number).c_str(), number);
    }
    EXPECT_EQ(table.Remove("2"), 0);
    EXPECT_EQ(table.Remove("2"), -1);
    EXPECT_THAT(table.released, ElementsAre(2));
    EXPECT_EQ(table.Count(), 2);
    EXPECT_EQ(table.GetNumber("1"), 1);
    EXPECT_EQ(table.GetNumber("3"), 3);
}

TEST(VELSysHashTableTest, RemoveallReleasesEverythingAndTheTableStaysUsable) {
    NumberTable table;
    table.AddNumber("one", 1);
    table.AddNumber("two", 2);
    table.removeall();
    EXPECT_THAT(table.released, UnorderedElementsAre(1, 2));
    EXPECT_EQ(table.Count(), 0);
    EXPECT_EQ(table.Get("one"), nullptr);
    EXPECT_EQ(table.AddNumber("one", 3), 0);
}

TEST(VELSysHashTableTest, FindKeyGoesByTheComparison) {
    NumberTable table;
    table.AddNumber("one", 1);
    table.Add("none", nullptr);
    int number = 1;
    EXPECT_STREQ(table.FindKey(&number), "one");
    number = 2;
    EXPECT_EQ(table.FindKey(&number), nullptr);
    EXPECT_EQ(table.FindKey(nullptr), nullptr);
}

TEST(VELSysHashTableTest, TheBaseTableStoresWhatItIsGiven) {
    int number = 1;
    VELSysHashTable table(3, -1);
    EXPECT_EQ(table.Add("one", &number), 0);
    EXPECT_EQ(table.Get("one"), &number);
    EXPECT_STREQ(table.FindKey(&number), "one");
}

TEST(VELSysHashTableTest, AValueThatCannotBeCopiedChangesNothing) {
    NumberTable table;
    table.AddNumber("one", 1);
    table.refusesToCopy = true;
    EXPECT_EQ(table.AddNumber("two", 2), -1);
    EXPECT_EQ(table.ReplaceNumber("one", 2), -1);
    EXPECT_EQ(table.ReplaceNumber("three", 3), -1);
    EXPECT_EQ(table.GetNumber("one"), 1);
    EXPECT_EQ(table.Count(), 1);
    EXPECT_THAT(table.released, IsEmpty());
}

TEST(VELSysHashTableTest, AddUnderMemoryShortageChangesNothing) {
    int number = 1;
    VELSysHashTable table(3, -1);
    const int refusals = SweepAllocations([&](const FailingAllocation& shortage) {
        const int result = table.Add("one", &number);
        EXPECT_EQ(result, shortage.HasFailed() ? -1 : 0);
        EXPECT_EQ(table.Count(), shortage.HasFailed() ? 0 : 1);
    });
    EXPECT_EQ(refusals, 2);
}

TEST(VELSysHashTableTest, ReplaceUnderMemoryShortageChangesNothing) {
    int numbers[2] = {};
    VELSysHashTable table(3, -1);
    table.Add("one", &numbers[0]);
    SweepAllocations([&](const FailingAllocation& shortage) {
        const int result = table.Replace("one", &numbers[1]);
        EXPECT_EQ(result, shortage.HasFailed() ? -1 : 0);
        EXPECT_EQ(table.Get("one"), &numbers[shortage.HasFailed() ? 0 : 1]);
    });
}

TEST(VELSysHashTableTest, ATableWithoutMemoryForItsBucketsRefusesEverything) {
    alignas(VELSysHashTable) unsigned char storage[sizeof(VELSysHashTable)];
    VELSysHashTable* table = nullptr;
    {
        const FailingAllocation shortage(1);
        table = new (storage) VELSysHashTable(8192, -1);
    }
    int number = 1;
    EXPECT_EQ(table->Add("one", &number), -1);
    EXPECT_EQ(table->Replace("one", &number), -1);
    EXPECT_EQ(table->Get("one"), nullptr);
    EXPECT_EQ(table->FindKey(&number), nullptr);
    EXPECT_EQ(table->Remove("one"), -1);
    table->removeall();
    table->~VELSysHashTable();
}

TEST(VELSysHashTableTest, ThreadsReadAtOnce) {
    NumberTable table(8192);
    for (int number = 0; number < 100; ++number) {
        table.AddNumber(std::to_string(number).c_str(), number);
    }
    RunAtOnce(4, [&](int) {
        for (int number = 0; number < 100; ++number) {
            EXPECT_EQ(table.GetNumber(std::to_string(number).c_str()), number);
        }
        EXPECT_EQ(table.Count(), 100);
    });
}

} // namespace
