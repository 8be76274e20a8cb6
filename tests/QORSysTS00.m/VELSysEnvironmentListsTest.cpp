/// @file
/// The table and the lists of the environment manager, as containers of their own.

#include "VELSysEnvironmentManager.h"
#include "VirtualTable.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

/// A container whose handling of entries can be called from outside.
template <class Container>
class Open : public Container {
public:
    using Container::ChildCompareItem;
    using Container::ChildCopyItem;
    using Container::ChildDeleteItem;
};

char* NewText(const char* text) {
    auto* const copy = new char[std::strlen(text) + 1];
    std::strcpy(copy, text);
    return copy;
}

VELSysEnvironArgumentSuite* NewSuite(const char* name) {
    auto* const suite = new VELSysEnvironArgumentSuite{1, new char* [2] {}, nullptr, nullptr, -1, 0, nullptr};
    suite->argv[0] = name != nullptr ? NewText(name) : nullptr;
    suite->name = suite->argv[0];
    suite->lifeCycle = new VELSysEnvironLifeCycleBlock{};
    return suite;
}

} // namespace

TEST(VELSysEnvironTable, CopiesValues) {
    Open<VELSysEnvironTable> table;
    char value[] = "value";
    void* const copy = table.ChildCopyItem(value);
    EXPECT_NE(copy, value);
    EXPECT_STREQ(static_cast<char*>(copy), "value");
    table.ChildDeleteItem(copy);
    EXPECT_EQ(table.ChildCopyItem(nullptr), nullptr);
    table.ChildDeleteItem(nullptr);
}

TEST(VELSysEnvironTable, ComparesValues) {
    Open<VELSysEnvironTable> table;
    char a[] = "a";
    char otherA[] = "a";
    char b[] = "b";
    EXPECT_EQ(table.ChildCompareItem(a, otherA), 0);
    EXPECT_LT(table.ChildCompareItem(a, b), 0);
    EXPECT_GT(table.ChildCompareItem(b, a), 0);
    EXPECT_EQ(table.ChildCompareItem(nullptr, a), -1);
    EXPECT_EQ(table.ChildCompareItem(a, nullptr), -1);
    EXPECT_EQ(table.ChildCompareItem(nullptr, nullptr), -1);
}

TEST(VELSysEnvironTable, RespectsTheCaseOfKeys) {
    VELSysEnvironTable table;
    char value[] = "value";
    EXPECT_EQ(table.Add("a", value), 0);
    EXPECT_EQ(table.Add("A", value), 0);
    EXPECT_EQ(table.Get("b"), nullptr);
}

TEST(VELSysEnvironTable, HasItsOperationsInOrder) {
    using Table = Open<VELSysEnvironTable>;
    EXPECT_EQ(VirtualTable::SlotOf(&Table::ChildCopyItem), 2);
    EXPECT_EQ(VirtualTable::SlotOf(&Table::ChildDeleteItem), 3);
    EXPECT_EQ(VirtualTable::SlotOf(&Table::ChildCompareItem), 4);
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<Table>::OneMore), 6) << "behind the hash function";
}

template <class List>
class EnvironLists : public testing::Test {};

using AllLists =
    testing::Types<VELSysEnvironArgumentSuiteList, VELSysEnvironExpandableList, VELSysEnvironExpandableAddrList>;
TYPED_TEST_SUITE(EnvironLists, AllLists);

TYPED_TEST(EnvironLists, HaveTheirOperationsInOrder) {
    using List = Open<TypeParam>;
    EXPECT_EQ(VirtualTable::SlotOf(&List::ChildCopyItem), 2);
    EXPECT_EQ(VirtualTable::SlotOf(&List::ChildDeleteItem), 3);
    EXPECT_EQ(VirtualTable::SlotOf(&List::ChildCompareItem), 4);
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<List>::OneMore), 5);
}

TEST(VELSysEnvironmentManager, HasAVirtualDestructorAlone) {
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<VELSysEnvironmentManager>::OneMore), 2);
}

TEST(VELSysEnvironArgumentSuiteList, TakesSuitesOver) {
    VELSysEnvironArgumentSuiteList list;
    EXPECT_EQ(list.GetType(), 2);
    VELSysEnvironArgumentSuite* const suite = NewSuite("a");
    EXPECT_EQ(list.Add(suite), suite);
    EXPECT_EQ(list.Add(NewSuite(nullptr)) != nullptr, true);
    Open<VELSysEnvironArgumentSuiteList>().ChildDeleteItem(nullptr);
}

TEST(VELSysEnvironArgumentSuiteList, ComparesNames) {
    Open<VELSysEnvironArgumentSuiteList> list;
    void* const a = list.Add(NewSuite("a"));
    void* const otherA = list.Add(NewSuite("a"));
    void* const b = list.Add(NewSuite("b"));
    void* const empty = list.Add(NewSuite(""));
    void* const none = list.Add(NewSuite(nullptr));
    EXPECT_EQ(list.ChildCompareItem(a, otherA), 0);
    EXPECT_LT(list.ChildCompareItem(a, b), 0);
    EXPECT_GT(list.ChildCompareItem(b, a), 0);
    for (void* const nameless : {empty, none}) {
        EXPECT_EQ(list.ChildCompareItem(a, nameless), 0);
        EXPECT_EQ(list.ChildCompareItem(nameless, a), 0);
    }
}

TEST(VELSysEnvironExpandableList, CopiesTags) {
    Open<VELSysEnvironExpandableList> list;
    EXPECT_EQ(list.GetType(), 2);
    char a[] = "${A}";
    char b[] = "${B}";
    auto* const stored = static_cast<char*>(list.Add(a));
    EXPECT_NE(stored, a);
    EXPECT_STREQ(stored, a);
    EXPECT_EQ(list.ChildCompareItem(stored, a), 0);
    EXPECT_LT(list.ChildCompareItem(a, b), 0);
    EXPECT_EQ(list.ChildCompareItem(nullptr, a), 0);
    EXPECT_EQ(list.ChildCompareItem(a, nullptr), 0);
    list.ChildDeleteItem(nullptr);
}

TEST(VELSysEnvironExpandableAddrList, KeepsAddresses) {
    Open<VELSysEnvironExpandableAddrList> list;
    EXPECT_EQ(list.GetType(), 3);
    char a[] = "a";
    char otherA[] = "a";
    EXPECT_EQ(list.Add(a), a);
    EXPECT_EQ(list.Add(a), a);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(list.ChildCopyItem(a), a);
    EXPECT_EQ(list.ChildCompareItem(a, a), 0);
    EXPECT_EQ(list.ChildCompareItem(a, otherA), -1);
    EXPECT_EQ(list.ChildCompareItem(nullptr, nullptr), 0);
    list.ChildDeleteItem(a);
}
