/// @file
/// What a scope does where the C library has no locale for the thread.

#include "LocaleCalls.h"
#include "VELSysCLocale.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <cstring>
#include <gmock/gmock.h>
#include <ostream>

namespace {

using LocaleCalls::BlocksHeld;
using LocaleCalls::Fail;
using LocaleCalls::FieldsOf;
using LocaleCalls::Freed;
using LocaleCalls::IsLockHeld;
using LocaleCalls::Log;
using LocaleCalls::Record;
using LocaleCalls::ScopeFields;
using testing::ElementsAre;
using testing::IsEmpty;
using ThreadLC = VELSysCLocale::ThreadLC;

constexpr int Untouched = 4711;

class LocaleFallback : public LocaleCalls::Test {
protected:
    void SetUp() override {
        Test::SetUp();
        GetLocaleBeforeLoad();
        Record();
        Fail("newlocale", ENOMEM);
    }
};

/// A per-thread call that fails, and what is said of it.
struct Case {
    const char* name;
    const char* call;
    int nth;
    int error;
    int category;
    const char* report;
    const char* errorText;
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

class LocaleFallbackReport : public testing::TestWithParam<Case> {};

} // namespace

TEST_F(LocaleFallback, SetsTheProcesssUnderTheLock) {
    int status = Untouched;
    ThreadLC scope(LC_NUMERIC, TestLocales::German, &status);
    EXPECT_EQ(status, VEL::StatusOk);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "newlocale all C", "strerror", "WriteLock", "setlocale 1 ?", "new",
                                   "setlocale 1 de_DE.ISO-8859-1"));
    const ScopeFields fields = FieldsOf(scope);
    EXPECT_STREQ(fields.savedName, "C");
    EXPECT_EQ(fields.savedLocale, nullptr);
    EXPECT_EQ(fields.category, LC_NUMERIC);
    EXPECT_EQ(fields.flags, 2 | 4);
    EXPECT_FALSE(VELSysCLocaleIsPerThread());
    EXPECT_TRUE(IsLockHeld());
    Record();
    scope.Reset();
    EXPECT_THAT(Log(), ElementsAre("setlocale 1 C", "WriteUnlock"));
    EXPECT_EQ(FieldsOf(scope).flags, 0);
    EXPECT_EQ(FieldsOf(scope).savedName, nullptr);
    EXPECT_FALSE(IsLockHeld());
    EXPECT_EQ(BlocksHeld(), 0);
    Record();
    scope.Reset();
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(LocaleFallback, KeepsTheLockWhereNothingHasToChange) {
    int status = Untouched;
    {
        const ThreadLC scope(LC_ALL, "C", &status);
        EXPECT_EQ(status, VEL::StatusNote);
        EXPECT_THAT(Log(), ElementsAre("uselocale ?", "newlocale all C", "strerror", "WriteLock", "setlocale 6 ?"));
        EXPECT_EQ(FieldsOf(scope).savedName, nullptr);
        EXPECT_EQ(FieldsOf(scope).flags, 2 | 4);
        EXPECT_TRUE(IsLockHeld());
        Record();
    }
    EXPECT_THAT(Log(), ElementsAre("WriteUnlock"));
    EXPECT_FALSE(IsLockHeld());
}

TEST_F(LocaleFallback, RestoresALongNameOfAllCategories) {
    TestLocales::UseLocale(TestLocales::German);
    std::setlocale(LC_NUMERIC, TestLocales::English);
    const std::string name = std::setlocale(LC_ALL, nullptr);
    ASSERT_GT(name.size(), 85U);
    {
        const ThreadLC scope(LC_ALL, TestLocales::Turkish, nullptr);
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), TestLocales::Turkish);
    }
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), name);
}

TEST_F(LocaleFallback, ComparesTheWholeNameAndTakesTheEmptyOneForTheEnvironments) {
    setenv("LC_ALL", TestLocales::German, 1);
    int status = Untouched;
    const ThreadLC scope(LC_ALL, "", &status);
    EXPECT_EQ(status, VEL::StatusOk);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), TestLocales::German);
}

TEST_F(LocaleFallback, NestsOnOneThread) {
    ThreadLC outer(LC_ALL, TestLocales::English, nullptr);
    {
        Fail("newlocale", EINVAL);
        int status = Untouched;
        const ThreadLC inner(LC_ALL, TestLocales::German, &status);
        EXPECT_EQ(status, VEL::StatusOk);
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), TestLocales::German);
    }
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), TestLocales::English);
    EXPECT_TRUE(IsLockHeld());
    outer.Reset();
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    EXPECT_FALSE(IsLockHeld());
}

TEST_F(LocaleFallback, ThatIsRefusedLeavesNothing) {
    int status = Untouched;
    ThreadLC scope(LC_ALL, "nowhere", &status);
    EXPECT_EQ(status, VEL::StatusBadArgument);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "newlocale all nowhere", "strerror", "WriteLock", "setlocale 6 ?",
                                   "new", "setlocale 6 nowhere", "WriteUnlock"));
    EXPECT_EQ(FieldsOf(scope).flags, 0);
    EXPECT_EQ(FieldsOf(scope).savedName, nullptr);
    EXPECT_EQ(BlocksHeld(), 0);
    EXPECT_FALSE(IsLockHeld());
    Record();
    scope.Reset();
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(LocaleFallback, FailsWhereThePresentLocaleCannotBeHad) {
    int status = Untouched;
    const ThreadLC scope(42, "C", &status);
    EXPECT_EQ(status, VEL::StatusFailure);
    EXPECT_THAT(
        Log(), ElementsAre("uselocale ?", "newlocale all C", "strerror", "WriteLock", "setlocale 42 ?", "WriteUnlock"));
    EXPECT_EQ(FieldsOf(scope).flags, 0);
    EXPECT_FALSE(IsLockHeld());
}

TEST_F(LocaleFallback, FailsWhereThePresentLocaleCannotBeKept) {
    std::string name(300, 'x');
    Fail("new", ENOMEM);
    int status = Untouched;
    // Refused for the thread, too.
    const ThreadLC scope(LC_ALL, name.c_str(), &status);
    EXPECT_EQ(status, VEL::StatusFailure);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "newlocale all " + name, "strerror", "WriteLock", "setlocale 6 ?",
                                   "new", "WriteUnlock"));
    EXPECT_EQ(FieldsOf(scope).flags, 0);
    EXPECT_FALSE(IsLockHeld());
}

TEST_F(LocaleFallback, FreesTheBaseOfARefusedCategory) {
    Fail("newlocale", EINVAL, 2);
    const ThreadLC scope(LC_TIME, "C", nullptr);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "newlocale all C", "newlocale 4 C", "freelocale", "strerror",
                                   "WriteLock", "setlocale 2 ?"));
}

TEST_F(LocaleFallback, FreesALocaleThatTheThreadRefuses) {
    Fail("uselocale", EINVAL);
    const ThreadLC scope(LC_ALL, "C", nullptr);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "newlocale all C", "uselocale own", "freelocale", "strerror",
                                   "WriteLock", "setlocale 6 ?"));
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
}

/// Arguments: the call that fails, which of them, errno, category.
CHILD_PROGRAM(FallsBack) {
    LocaleCalls::PrintProcessId();
    const int category = std::atoi(arguments[3].c_str());
    int status = Untouched;
    const locale_t own = newlocale(LC_ALL_MASK, TestLocales::English, nullptr);
    if (arguments[0] == "duplocale") {
        uselocale(own);
    }
    Fail(arguments[0], std::atoi(arguments[2].c_str()), std::atoi(arguments[1].c_str()));
    { const ThreadLC scope(category, TestLocales::German, &status); }
    uselocale(LC_GLOBAL_LOCALE);
    freelocale(own);
    return status;
}

TEST_P(LocaleFallbackReport, NamesTheCallAndTheError) {
    const Case& c = GetParam();
    const Child child = LocaleCalls::Traced(
        "FallsBack", {c.call, std::to_string(c.nth), std::to_string(c.error), std::to_string(c.category)});
    EXPECT_EQ(child.err, std::string("[PID][VELSysCLocale::ThreadLC][ERROR] ") + c.report + "\n\n");
    EXPECT_EQ(child.out,
              std::string("[PID][VELSysCLocale::ThreadLC][WARNING] Failed to set a per-thread C locale with error ") +
                  c.errorText + ": " + std::strerror(c.error) + "\n\n");
    EXPECT_EQ(child.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Each, LocaleFallbackReport,
    testing::Values(
        Case{"AllQuestion", "uselocale ?", 1, EINVAL, 6, "uselocale((locale_t)0) returned EINVAL", "EINVAL"},
        Case{"OneQuestion", "uselocale ?", 1, ENOMEM, 1, "uselocale((locale_t)0) returned ENOMEM", "ENOMEM"},
        Case{"AllNew", "newlocale", 1, ENOENT, 6,
             "newlocale(LC_ALL_MASK, \"de_DE.ISO-8859-1\", (locale_t)0) returned ENOENT", "ENOENT"},
        Case{"OneBase", "newlocale", 1, EACCES, 0,
             "_get_changed_locale(locObj, 1, \"de_DE.ISO-8859-1\") returned Unknown", "Unknown"},
        Case{"OneNew", "newlocale", 2, ENOENT, 5,
             "_get_changed_locale(locObj, 32, \"de_DE.ISO-8859-1\") returned ENOENT", "ENOENT"},
        Case{"OneCopy", "duplocale", 1, ENOMEM, 4,
             "_get_changed_locale(locObj, 16, \"de_DE.ISO-8859-1\") returned ENOMEM", "ENOMEM"},
        Case{"OneCopyOfOthers", "duplocale", 1, EPERM, 3,
             "_get_changed_locale(locObj, 8, \"de_DE.ISO-8859-1\") returned Unknown", "Unknown"},
        Case{"AllInstall", "uselocale", 1, EINVAL, 6, "uselocale(newLoc) returned EINVAL", "EINVAL"},
        Case{"OneInstall", "uselocale", 1, ENOMEM, 2, "uselocale(newLoc) returned ENOMEM", "ENOMEM"}),
    [](const auto& test) { return test.param.name; });

CHILD_PROGRAM(TakesNoFallback) {
    LocaleCalls::PrintProcessId();
    int status = Untouched;
    const ThreadLC scope(LC_NUMERIC, TestLocales::German, &status);
    return status;
}

TEST(LocaleFallbackSilence, NothingIsReportedOnTheThreadsOwnPath) {
    const Child child = LocaleCalls::Traced("TakesNoFallback");
    EXPECT_EQ(child.out + child.err, "");
    EXPECT_EQ(child.exitCode, 0);
}
