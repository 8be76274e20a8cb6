#include "VELSysEnvironmentManager.h"

#include "EnvironmentCalls.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>
#include <vector>

using namespace EnvironmentCalls;

namespace {

enum class Array { Dynamic, Static, Official };

/// Makes an array of the entries.
void Fill(VELSysEnvironmentManager& manager, Array array, const std::vector<const char*>& entries) {
    char** slots = nullptr;
    switch (array) {
    case Array::Dynamic:
        ASSERT_EQ(manager.BuildDynamicEnviron(entries.size()), 0);
        slots = manager.DynamicEnviron();
        break;
    case Array::Static:
        ASSERT_EQ(manager.BuildStaticEnviron(entries.size()), 0);
        slots = manager.StaticEnviron();
        break;
    case Array::Official:
        ASSERT_EQ(manager.BuildOfficialEnviron(entries.size()), 0);
        slots = manager.OfficialEnviron();
        break;
    }
    for (const char* entry : entries) {
        ASSERT_EQ(manager.BuildEnvironString(slots++, entry), 0);
    }
    ASSERT_EQ(*slots, nullptr);
}

} // namespace

TEST(VELSysEnvironmentManager, IsMadeEmpty) {
    VELSysEnvironmentManager manager;
    EXPECT_EQ(manager.DynamicEnviron(), nullptr);
    EXPECT_EQ(manager.StaticEnviron(), nullptr);
    EXPECT_EQ(manager.OfficialEnviron(), nullptr);
    EXPECT_EQ(manager.CurrentMain(), nullptr);
    EXPECT_EQ(manager.GetMainFirst(), nullptr);
    EXPECT_EQ(manager.GetEnv("A"), nullptr);
    EXPECT_EQ(manager.GetOfficialEnv("A"), nullptr);
    EXPECT_EQ(manager.GetEnvInTable("A"), nullptr);
}

TEST(VELSysEnvironmentManager, HoldsTheTraceOfTheLifeCycle) {
    for (const bool traced : {false, true}) {
        traces.clear();
        isTraced = traced;
        {
            const VELSysEnvironmentManager manager;
            EXPECT_EQ(traces, std::vector<std::string>{"create LifeCycle"});
        }
        EXPECT_EQ(traces.back(), traced ? "destroy" : "destroy null");
        EXPECT_EQ(traces.size(), 2U);
    }
}

TEST(VELSysEnvironmentManager, DoesNotReadTheProcesssEnvironment) {
    setenv("QOR_TEST", "process", 1);
    VELSysEnvironmentManager manager;
    EXPECT_EQ(manager.GetEnv("QOR_TEST"), nullptr);
    manager.PutEnvInTable("QOR_TEST", "table");
    EXPECT_STREQ(std::getenv("QOR_TEST"), "process");
}

TEST(VELSysEnvironmentManager, LooksInTableOfficialStaticAndDynamic) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Dynamic, {"A=dynamic"});
    EXPECT_STREQ(manager.GetEnv("A"), "dynamic");
    Fill(manager, Array::Static, {"A=static"});
    EXPECT_STREQ(manager.GetEnv("A"), "static");
    Fill(manager, Array::Official, {"A=official"});
    EXPECT_STREQ(manager.GetEnv("A"), "official");
    manager.PutEnvInTable("A", "table");
    EXPECT_STREQ(manager.GetEnv("A"), "table");
    EXPECT_STREQ(manager.GetEnvInTable("A"), "table");
    EXPECT_STREQ(manager.GetOfficialEnv("A"), "official");
}

TEST(VELSysEnvironmentManager, EachLookupHasItsOwnPlaces) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Dynamic, {"D=1"});
    Fill(manager, Array::Static, {"S=1"});
    Fill(manager, Array::Official, {"O=1"});
    manager.PutEnvInTable("T", "1");
    EXPECT_EQ(manager.GetOfficialEnv("D"), nullptr);
    EXPECT_EQ(manager.GetOfficialEnv("S"), nullptr);
    EXPECT_EQ(manager.GetOfficialEnv("T"), nullptr);
    EXPECT_STREQ(manager.GetOfficialEnv("O"), "1");
    EXPECT_EQ(manager.GetEnvInTable("O"), nullptr);
    for (const char* name : {"D", "S", "O", "T"}) {
        EXPECT_STREQ(manager.GetEnv(name), "1") << name;
    }
}

TEST(VELSysEnvironmentManager, AnEntryWithoutAnEqualsSignIsNeverFound) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Static, {"A", "AB=1", "A=2"});
    EXPECT_STREQ(manager.GetEnv("A"), "2");
    Fill(manager, Array::Static, {"A"});
    EXPECT_EQ(manager.GetEnv("A"), nullptr);
}

TEST(VELSysEnvironmentManager, TheFirstEqualsSignEndsTheName) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Official, {"A=B=C"});
    EXPECT_STREQ(manager.GetEnv("A"), "B=C");
    EXPECT_EQ(manager.GetEnv("A=B"), nullptr);
    EXPECT_EQ(manager.GetOfficialEnv("A=B"), nullptr);
    EXPECT_EQ(manager.GetEnv("A="), nullptr);
}

TEST(VELSysEnvironmentManager, NamesAreComparedWholeAndWithCase) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Static, {"Name=1"});
    EXPECT_EQ(manager.GetEnv("name"), nullptr);
    EXPECT_EQ(manager.GetEnv("Nam"), nullptr);
    EXPECT_EQ(manager.GetEnv("Names"), nullptr);
    manager.PutEnvInTable("Table", "1");
    EXPECT_EQ(manager.GetEnv("TABLE"), nullptr);
}

TEST(VELSysEnvironmentManager, TheFirstOfEqualNamesWins) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Static, {"A=1", "A=2"});
    EXPECT_STREQ(manager.GetEnv("A"), "1");
}

TEST(VELSysEnvironmentManager, AnEmptyValueIsFound) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Static, {"A="});
    EXPECT_STREQ(manager.GetEnv("A"), "");
    manager.PutEnvInTable("B", "");
    EXPECT_STREQ(manager.GetEnv("B"), "");
}

TEST(VELSysEnvironmentManager, AnEmptyNameIsFoundInTheTableAlone) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Official, {"=official"});
    EXPECT_EQ(manager.GetEnv(""), nullptr);
    EXPECT_EQ(manager.GetOfficialEnv(""), nullptr);
    manager.PutEnvInTable("", "table");
    EXPECT_STREQ(manager.GetEnv(""), "table");
    EXPECT_EQ(manager.GetOfficialEnv(""), nullptr);
}

TEST(VELSysEnvironmentManager, ANullNameIsNotFound) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Official, {"A=1"});
    EXPECT_EQ(manager.GetEnv(nullptr), nullptr);
    EXPECT_EQ(manager.GetEnvInTable(nullptr), nullptr);
    EXPECT_EQ(manager.GetOfficialEnv(nullptr), nullptr);
}

TEST(VELSysEnvironmentManager, AnArrayEndsWithItsFirstNullSlot) {
    VELSysEnvironmentManager manager;
    manager.BuildStaticEnviron(3);
    manager.BuildEnvironString(&manager.StaticEnviron()[0], "A=1");
    manager.BuildEnvironString(&manager.StaticEnviron()[1], "B=1");
    manager.BuildEnvironString(&manager.StaticEnviron()[0], static_cast<const char*>(nullptr));
    EXPECT_EQ(manager.GetEnv("B"), nullptr);
    manager.BuildEnvironString(&manager.StaticEnviron()[0], "C=1");
    EXPECT_STREQ(manager.GetEnv("B"), "1");
}

TEST(VELSysEnvironmentManager, PutKeepsAndReplaceReplaces) {
    VELSysEnvironmentManager manager;
    EXPECT_EQ(manager.PutEnvInTable("A", "1"), 0);
    EXPECT_EQ(manager.PutEnvInTable("A", "2"), -1);
    EXPECT_STREQ(manager.GetEnv("A"), "1");
    EXPECT_EQ(manager.ReplaceEnvInTable("A", "3"), 0);
    EXPECT_STREQ(manager.GetEnv("A"), "3");
    EXPECT_EQ(manager.ReplaceEnvInTable("B", "4"), 0);
    EXPECT_STREQ(manager.GetEnv("B"), "4");
    EXPECT_EQ(manager.PutEnvInTable(nullptr, "1"), -1);
    EXPECT_EQ(manager.ReplaceEnvInTable(nullptr, "1"), -1);
}

TEST(VELSysEnvironmentManager, TheTableCopiesValues) {
    VELSysEnvironmentManager manager;
    char value[] = "value";
    manager.PutEnvInTable("A", value);
    value[0] = 'x';
    EXPECT_STREQ(manager.GetEnv("A"), "value");
    EXPECT_EQ(manager.PutEnvInTable("B", nullptr), 0);
    EXPECT_EQ(manager.GetEnv("B"), nullptr);
    EXPECT_EQ(manager.ReplaceEnvInTable("A", manager.GetEnv("A")), 0);
    EXPECT_STREQ(manager.GetEnv("A"), "value");
}

TEST(VELSysEnvironmentManager, ArraysAreMadeOfNullSlots) {
    VELSysEnvironmentManager manager;
    EXPECT_EQ(manager.BuildDynamicEnviron(3), 0);
    EXPECT_EQ(manager.BuildStaticEnviron(3), 0);
    EXPECT_EQ(manager.BuildOfficialEnviron(3), 0);
    for (char** array : {manager.DynamicEnviron(), manager.StaticEnviron(), manager.OfficialEnviron()}) {
        for (int i = 0; i <= 3; ++i) {
            EXPECT_EQ(array[i], nullptr);
        }
    }
}

TEST(VELSysEnvironmentManager, ADynamicArrayOfNoneIsNoArray) {
    VELSysEnvironmentManager manager;
    EXPECT_EQ(manager.BuildDynamicEnviron(0), -1);
    Fill(manager, Array::Dynamic, {"A=1"});
    EXPECT_EQ(manager.BuildDynamicEnviron(0), -1);
    EXPECT_EQ(manager.DynamicEnviron(), nullptr);
    EXPECT_EQ(manager.GetEnv("A"), nullptr);
}

TEST(VELSysEnvironmentManager, TheOtherArraysStayWhenNoneIsAskedFor) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Static, {"A=1"});
    Fill(manager, Array::Official, {"B=1"});
    EXPECT_EQ(manager.BuildStaticEnviron(0), -1);
    EXPECT_EQ(manager.BuildOfficialEnviron(0), -1);
    EXPECT_STREQ(manager.GetEnv("A"), "1");
    EXPECT_STREQ(manager.GetEnv("B"), "1");
}

TEST(VELSysEnvironmentManager, StringsOfAReplacedArrayStayReadable) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Static, {"A=static"});
    Fill(manager, Array::Official, {"B=official"});
    const char* const first = manager.GetEnv("A");
    const char* const second = manager.GetEnv("B");
    for (int i = 0; i < 3; ++i) {
        Fill(manager, Array::Static, {"C=1"});
        Fill(manager, Array::Official, {"C=1"});
    }
    EXPECT_EQ(manager.GetEnv("A"), nullptr);
    EXPECT_STREQ(first, "static");
    EXPECT_STREQ(second, "official");
}

TEST(VELSysEnvironmentManager, AnArrayWhoseSizeOverflowsIsRefused) {
    VELSysEnvironmentManager manager;
    for (const std::size_t count : {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX / sizeof(char*), SIZE_MAX / sizeof(char*) - 1}) {
        EXPECT_THROW(manager.BuildDynamicEnviron(count), std::bad_alloc);
        EXPECT_THROW(manager.BuildStaticEnviron(count), std::bad_alloc);
        EXPECT_THROW(manager.BuildOfficialEnviron(count), std::bad_alloc);
    }
    EXPECT_EQ(manager.DynamicEnviron(), nullptr);
    EXPECT_EQ(manager.StaticEnviron(), nullptr);
}

TEST(VELSysEnvironmentManager, ADynamicArrayIsGoneBeforeAnotherIsRefused) {
    VELSysEnvironmentManager manager;
    Fill(manager, Array::Dynamic, {"A=1"});
    EXPECT_THROW(manager.BuildDynamicEnviron(SIZE_MAX), std::bad_alloc);
    EXPECT_EQ(manager.DynamicEnviron(), nullptr);
    EXPECT_EQ(manager.GetEnv("A"), nullptr);
}

TEST(VELSysEnvironmentManager, ASlotKeepsACopy) {
    VELSysEnvironmentManager manager;
    manager.BuildStaticEnviron(1);
    char text[] = "A=1";
    char** const slot = manager.StaticEnviron();
    EXPECT_EQ(manager.BuildEnvironString(slot, text), 0);
    text[2] = '2';
    EXPECT_STREQ(*slot, "A=1");
    EXPECT_EQ(manager.BuildEnvironString(slot, "B=1"), 0);
    EXPECT_STREQ(*slot, "B=1");
    EXPECT_EQ(manager.BuildEnvironString(slot, *slot), 0) << "its own text";
    EXPECT_STREQ(*slot, "B=1");
}

TEST(VELSysEnvironmentManager, NoTextLeavesASlotNull) {
    VELSysEnvironmentManager manager;
    manager.BuildStaticEnviron(1);
    char** const slot = manager.StaticEnviron();
    manager.BuildEnvironString(slot, "A=1");
    EXPECT_EQ(manager.BuildEnvironString(slot, static_cast<const char*>(nullptr)), -1);
    EXPECT_EQ(*slot, nullptr);
    EXPECT_EQ(manager.BuildEnvironString(nullptr, "A=1"), 0);
    EXPECT_EQ(manager.BuildEnvironString(nullptr, static_cast<const char*>(nullptr)), 0);
}

TEST(VELSysEnvironmentManager, WideTextIsNotSupported) {
    VELSysEnvironmentManager manager;
    manager.BuildStaticEnviron(1);
    char** const slot = manager.StaticEnviron();
    manager.BuildEnvironString(slot, "A=1");
    EXPECT_EQ(manager.BuildEnvironString(slot, L"B=1", 3), -1);
    EXPECT_EQ(*slot, nullptr);
    EXPECT_EQ(manager.BuildEnvironString(nullptr, L"B=1", 3), 0);
}

TEST(VELSysEnvironmentManager, BuildsArgumentStrings) {
    char* slot = nullptr;
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentString(&slot, "${A}"), 0);
    EXPECT_STREQ(slot, "${A}");
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentString(&slot, slot + 1), 0);
    EXPECT_STREQ(slot, "{A}");
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentString(&slot, nullptr), 0);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentString(nullptr, "A"), 0);
}

TEST(VELSysEnvironmentManager, BuildsArgumentVectors) {
    char** vector = nullptr;
    ASSERT_EQ(VELSysEnvironmentManager::BuildArgumentArrayA(2, &vector), 0);
    const std::unique_ptr<char*[]> owner(vector);
    EXPECT_EQ(vector[0], nullptr);
    EXPECT_EQ(vector[1], nullptr);
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentArrayA(0, &vector), -1);
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentArrayA(-1, &vector), -1);
    EXPECT_EQ(VELSysEnvironmentManager::BuildArgumentArrayA(1, nullptr), -1);
    EXPECT_EQ(vector, owner.get());
}

TEST(VELSysEnvironmentManager, KeepsTheMainThatIsChosen) {
    VELSysEnvironmentManager manager;
    manager.AddMain("a");
    EXPECT_EQ(manager.CurrentMain(), nullptr);
    manager.SetCurrentMain(manager.GetMainFirst());
    EXPECT_EQ(manager.CurrentMain(), manager.GetMainFirst());
}

TEST(VELSysEnvironmentManager, AMainIsACopyOfItsArguments) {
    VELSysEnvironmentManager manager;
    char program[] = "program";
    char argument[] = "${A}";
    char* argv[] = {program, argument, nullptr};
    ASSERT_EQ(manager.AddMain(argv, 3), 0);
    const VELSysEnvironArgumentSuite* const suite = manager.GetMainFirst();
    ASSERT_NE(suite, nullptr);
    program[0] = 'x';
    EXPECT_EQ(suite->argc, 3);
    EXPECT_STREQ(suite->argv[0], "program");
    EXPECT_STREQ(suite->argv[1], "${A}");
    EXPECT_EQ(suite->argv[2], nullptr);
    EXPECT_EQ(suite->argv[3], nullptr);
    EXPECT_EQ(suite->name, suite->argv[0]);
    EXPECT_EQ(suite->secondName, suite->argv[0]);
    EXPECT_EQ(suite->mark, -1);
    EXPECT_EQ(suite->state, 0);
    ASSERT_NE(suite->lifeCycle, nullptr);
    for (const void* word : suite->lifeCycle->words) {
        EXPECT_EQ(word, nullptr);
    }
}

TEST(VELSysEnvironmentManager, MainsStandInTheirOrder) {
    VELSysEnvironmentManager manager;
    EXPECT_EQ(manager.GetMainNext(), nullptr);
    EXPECT_EQ(manager.AddMain("first a"), 0);
    EXPECT_EQ(manager.AddMain("second"), 0);
    EXPECT_EQ(manager.AddMain("first b"), 0);
    EXPECT_STREQ(manager.GetMainFirst()->name, "first");
    EXPECT_STREQ(manager.GetMainNext()->name, "second");
    EXPECT_STREQ(manager.GetMainNext()->argv[1], "b");
    EXPECT_EQ(manager.GetMainNext(), nullptr);
    EXPECT_STREQ(manager.GetMainFirst()->argv[1], "a");
}

TEST(VELSysEnvironmentManager, ANullCommandLineRemovesAllMains) {
    VELSysEnvironmentManager manager;
    manager.AddMain("a");
    manager.AddMain("b");
    EXPECT_EQ(manager.AddMain(nullptr), 0);
    EXPECT_EQ(manager.GetMainFirst(), nullptr);
    EXPECT_EQ(manager.AddMain(nullptr), 0);
}

TEST(VELSysEnvironmentManager, ANullCommandLineLeavesTheMainThatIsChosen) {
    VELSysEnvironmentManager manager;
    VELSysEnvironArgumentSuite chosen{};
    manager.AddMain("a");
    manager.SetCurrentMain(&chosen);
    EXPECT_EQ(manager.AddMain(nullptr), 0);
    EXPECT_EQ(manager.CurrentMain(), &chosen);
}

TEST(VELSysEnvironmentManager, RefusesAMainWithoutArguments) {
    VELSysEnvironmentManager manager;
    char program[] = "program";
    char* argv[] = {program, nullptr};
    EXPECT_EQ(manager.AddMain(static_cast<char**>(nullptr), 1), -1);
    EXPECT_EQ(manager.AddMain(argv, 0), -1);
    EXPECT_EQ(manager.AddMain(argv, -1), -1);
    EXPECT_EQ(manager.GetMainFirst(), nullptr);
}

TEST(VELSysEnvironmentManager, SplitsACommandLine) {
    VELSysEnvironmentManager manager;
    ASSERT_EQ(manager.AddMain("program \"a b\" c"), 0);
    const VELSysEnvironArgumentSuite* const suite = manager.GetMainFirst();
    ASSERT_EQ(suite->argc, 3);
    EXPECT_STREQ(suite->argv[1], "a b");
    ASSERT_EQ(manager.AddMain(""), 0);
    manager.GetMainFirst();
    EXPECT_STREQ(manager.GetMainNext()->name, "");
}
