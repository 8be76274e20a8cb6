/// @file
/// The environment when memory runs out at each request of a call: nothing leaks, nothing is read that has gone.

#include "EnvironmentCalls.h"
#include "HeapLog.h"
#include "VELSysEnviron.h"
#include "VELSysEnvironmentManager.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr int Thrown = 77;

/// Runs a call with its first request failing, then with its second, until it needs no more.
/// @param check  Told what each run gave: the result, or Thrown for std::bad_alloc.
void Sweep(const std::function<int(VELSysEnvironmentManager&)>& call,
           const std::function<void(VELSysEnvironmentManager&, int)>& check) {
    for (int request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        VELSysEnvironmentManager manager;
        manager.BuildStaticEnviron(2);
        manager.BuildEnvironString(&manager.StaticEnviron()[0], "A=1");
        manager.BuildEnvironString(&manager.StaticEnviron()[1], "B=${A}${A}");
        int result = 0;
        bool hasStruck = false;
        {
            const HeapShortage shortage(request, HeapShortage::OnlyThatOne);
            try {
                result = call(manager);
            } catch (const std::bad_alloc&) {
                result = Thrown;
            }
            hasStruck = HeapShortage::HasStruck();
        }
        if (!hasStruck) {
            EXPECT_EQ(result, 0);
            return;
        }
        check(manager, result);
    }
}

} // namespace

TEST(EnvironmentShortage, OfAManagerIsThrown) {
    for (int request = 1;; ++request) {
        ASSERT_LT(request, 10);
        EnvironmentCalls::traces = {};
        EnvironmentCalls::traces.reserve(8);
        const HeapShortage shortage(request, HeapShortage::OnlyThatOne);
        try {
            VELSysEnvironmentManager manager;
            if (!HeapShortage::HasStruck()) {
                break;
            }
            EXPECT_EQ(manager.PutEnvInTable("A", "1"), -1) << "a table without buckets refuses";
        } catch (const std::bad_alloc&) {
        }
    }
}

TEST(EnvironmentShortage, OfAManagersTableDestroysItsTrace) {
    EnvironmentCalls::isTraced = true;
    int failures = 0;
    for (int request = 1; failures == 0; ++request) {
        ASSERT_LT(request, 10);
        EnvironmentCalls::traces = {};
        EnvironmentCalls::traces.reserve(8);
        try {
            const HeapShortage shortage(request, HeapShortage::OnlyThatOne);
            const VELSysEnvironmentManager manager;
        } catch (const std::bad_alloc&) {
            // The first request may be the trace's own.
            failures += EnvironmentCalls::traces.empty() ? 0 : 1;
        }
    }
    EXPECT_EQ(EnvironmentCalls::traces, (std::vector<std::string>{"create LifeCycle", "destroy"}));
}

TEST(EnvironmentShortage, OfADynamicArrayComesWhenTheOldOneIsGone) {
    VELSysEnvironmentManager manager;
    manager.BuildDynamicEnviron(1);
    manager.BuildEnvironString(manager.DynamicEnviron(), "A=1");
    {
        const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
        EXPECT_THROW(manager.BuildDynamicEnviron(3), std::bad_alloc);
    }
    EXPECT_EQ(manager.DynamicEnviron(), nullptr);
    EXPECT_EQ(manager.GetEnv("A"), nullptr);
}

TEST(EnvironmentShortage, OfAnArrayIsThrown) {
    Sweep([](VELSysEnvironmentManager& manager) { return manager.BuildDynamicEnviron(3); },
          [](VELSysEnvironmentManager& manager, int result) {
              EXPECT_EQ(result, Thrown);
              EXPECT_EQ(manager.DynamicEnviron(), nullptr);
          });
    Sweep([](VELSysEnvironmentManager& manager) { return manager.BuildStaticEnviron(3); },
          [](VELSysEnvironmentManager& manager, int result) {
              EXPECT_EQ(result, Thrown);
              EXPECT_STREQ(manager.GetEnv("A"), "1");
          });
}

TEST(EnvironmentShortage, OfAStringsCopyIsAFailure) {
    Sweep([](VELSysEnvironmentManager& manager) { return manager.BuildEnvironString(manager.StaticEnviron(), "C=1"); },
          [](VELSysEnvironmentManager& manager, int result) {
              EXPECT_EQ(result, -1);
              EXPECT_EQ(manager.StaticEnviron()[0], nullptr);
          });
}

TEST(EnvironmentShortage, OfATagIsThrown) {
    int failures = 0;
    Sweep(
        [](VELSysEnvironmentManager& manager) { return manager.BuildEnvironString(manager.StaticEnviron(), "C=${A}"); },
        [&](VELSysEnvironmentManager& manager, int result) {
            EXPECT_EQ(result, ++failures == 1 ? -1 : Thrown);
            // Both lists are as long as each other, so the rest still works.
            EXPECT_EQ(manager.ExpandAllEnvironStrings(), 0);
        });
    EXPECT_GE(failures, 5);
}

TEST(EnvironmentShortage, OfTheSubstitutionIsThrown) {
    Sweep([](VELSysEnvironmentManager& manager) { return manager.ExpandAllEnvironStrings(); },
          [](VELSysEnvironmentManager& manager, int result) {
              EXPECT_EQ(result, Thrown);
              const std::string value = manager.GetEnv("B");
              EXPECT_TRUE(value == "11" || value == "${A}${A}") << value;
          });
}

TEST(EnvironmentShortage, OfTheTableIsAFailure) {
    Sweep([](VELSysEnvironmentManager& manager) { return manager.PutEnvInTable("C", "1"); },
          [](VELSysEnvironmentManager& manager, int result) {
              EXPECT_EQ(result, -1);
              EXPECT_EQ(manager.GetEnv("C"), nullptr);
          });
}

TEST(EnvironmentShortage, OfACommandLineIsThrownOrAFailure) {
    const auto check = [](VELSysEnvironmentManager& manager, int result) {
        EXPECT_TRUE(result == -1 || result == Thrown) << result;
        EXPECT_EQ(manager.GetMainFirst(), nullptr);
    };
    Sweep([](VELSysEnvironmentManager& manager) { return manager.AddMain("a \"b c\" d"); }, check);
    char a[] = "a";
    char* argv[] = {a, a, nullptr};
    Sweep([&](VELSysEnvironmentManager& manager) { return manager.AddMain(argv, 2); }, check);
}

TEST(EnvironmentShortage, OfAnArgumentIsThrown) {
    char* slot = nullptr;
    VELSysEnvironmentManager::BuildArgumentString(&slot, "old");
    const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
    EXPECT_THROW(VELSysEnvironmentManager::BuildArgumentString(&slot, "new"), std::bad_alloc);
    EXPECT_EQ(slot, nullptr);
}

TEST(EnvironmentShortage, OfAReplacementLeavesTheText) {
    const std::unique_ptr<char[]> text(new char[4]);
    std::strcpy(text.get(), "aba");
    const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
    EXPECT_THROW(VELSysEnvironStringReplaceA(text.get(), "a", "xx"), std::bad_alloc);
    EXPECT_STREQ(text.get(), "aba");
}
