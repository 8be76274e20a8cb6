#include "LocaleCalls.h"
#include "VELSysCLocale.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <optional>

namespace {

using LocaleCalls::Fail;
using LocaleCalls::FieldsOf;
using LocaleCalls::Freed;
using LocaleCalls::Log;
using LocaleCalls::NameOf;
using LocaleCalls::Record;
using LocaleCalls::ScopeFields;
using testing::ElementsAre;
using testing::IsEmpty;
using ThreadLC = VELSysCLocale::ThreadLC;

constexpr int Untouched = 4711;
constexpr const char* All = "newlocale all ";

class ThreadLocale : public LocaleCalls::Test {
protected:
    void SetUp() override {
        Test::SetUp();
        GetLocaleBeforeLoad();
        Record();
    }
};

void ExpectNothing(const ThreadLC& scope) {
    const ScopeFields fields = FieldsOf(scope);
    EXPECT_EQ(fields.savedName, nullptr);
    EXPECT_EQ(fields.savedLocale, nullptr);
    EXPECT_EQ(fields.category, 0);
    EXPECT_EQ(fields.flags, 0);
}

class OfCategory : public ThreadLocale, public testing::WithParamInterface<int> {};
class OfAllCategories : public ThreadLocale, public testing::WithParamInterface<int> {};

} // namespace

TEST_F(ThreadLocale, NullIsRefused) {
    int status = Untouched;
    ThreadLC scope(LC_CTYPE, nullptr, &status);
    EXPECT_EQ(status, VEL::StatusFailure);
    ExpectNothing(scope);
    scope.Reset();
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ThreadLocale, NegativeCategoryIsRefused) {
    int status = Untouched;
    const ThreadLC scope(-1, TestLocales::German, &status);
    EXPECT_EQ(status, VEL::StatusBadArgument);
    ExpectNothing(scope);
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_P(OfCategory, ChangesThatAlone) {
    LocaleCalls::UseEnvironmentLocale(TestLocales::Turkish);
    const int category = GetParam();
    int status = Untouched;
    ThreadLC scope(category, TestLocales::German, &status);
    EXPECT_EQ(status, VEL::StatusOk);
    EXPECT_THAT(Log(),
                ElementsAre("uselocale ?", std::string(All) + TestLocales::Turkish,
                            "newlocale " + std::to_string(1 << category) + " " + TestLocales::German, "uselocale own"));
    const locale_t installed = uselocale(nullptr);
    for (int other = LC_CTYPE; other < LC_ALL; ++other) {
        EXPECT_EQ(NameOf(other, installed), other == category ? TestLocales::German : TestLocales::Turkish) << other;
    }
    const ScopeFields fields = FieldsOf(scope);
    EXPECT_EQ(fields.savedName, nullptr);
    EXPECT_EQ(fields.savedLocale, LC_GLOBAL_LOCALE);
    EXPECT_EQ(fields.category, category);
    EXPECT_EQ(fields.flags, 1 | 2);
    scope.Reset();
    EXPECT_THAT(Freed(), ElementsAre(installed));
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
}

INSTANTIATE_TEST_SUITE_P(Each, OfCategory, testing::Range(0, 6));

TEST_P(OfAllCategories, ChangesAll) {
    int status = Untouched;
    const ThreadLC scope(GetParam(), TestLocales::German, &status);
    EXPECT_EQ(status, VEL::StatusOk);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", std::string(All) + TestLocales::German, "uselocale own"));
    EXPECT_EQ(FieldsOf(scope).category, GetParam());
    for (int category = LC_CTYPE; category < LC_ALL; ++category) {
        EXPECT_EQ(NameOf(category, uselocale(nullptr)), TestLocales::German) << category;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, OfAllCategories, testing::Values(6, 7, 42));

TEST_F(ThreadLocale, ACategoryOfAThreadsOwnLocaleLeavesTheOthers) {
    const ThreadLC outer(LC_ALL, TestLocales::English, nullptr);
    Record();
    const ThreadLC inner(LC_NUMERIC, TestLocales::German, nullptr);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "duplocale", "newlocale 2 de_DE.ISO-8859-1", "uselocale own"));
    EXPECT_EQ(NameOf(LC_NUMERIC, uselocale(nullptr)), TestLocales::German);
    EXPECT_EQ(NameOf(LC_CTYPE, uselocale(nullptr)), TestLocales::English);
}

TEST_F(ThreadLocale, NestedScopesRestoreInReverseOrder) {
    std::optional<ThreadLC> outer;
    outer.emplace(LC_ALL, TestLocales::English, nullptr);
    const locale_t first = uselocale(nullptr);
    std::optional<ThreadLC> inner;
    inner.emplace(LC_ALL, TestLocales::German, nullptr);
    const locale_t second = uselocale(nullptr);
    ASSERT_NE(first, second);
    EXPECT_EQ(FieldsOf(*inner).savedLocale, first);
    inner.reset();
    EXPECT_EQ(uselocale(nullptr), first);
    EXPECT_THAT(Freed(), ElementsAre(second));
    outer.reset();
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    EXPECT_THAT(Freed(), ElementsAre(second, first));
}

TEST_F(ThreadLocale, ResetIsDoneOnce) {
    {
        ThreadLC scope(LC_ALL, TestLocales::German, nullptr);
        scope.Reset();
        EXPECT_EQ(FieldsOf(scope).flags, 1);
        Record();
        scope.Reset();
    }
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ThreadLocale, ResetFreesNeitherTheProcesssLocaleNorNone) {
    ThreadLC plain(LC_ALL, TestLocales::German, nullptr);
    const locale_t installed = uselocale(LC_GLOBAL_LOCALE);
    plain.Reset();
    EXPECT_THAT(Freed(), IsEmpty());
    ThreadLC failing(LC_ALL, TestLocales::German, nullptr);
    const locale_t second = uselocale(nullptr);
    Fail("uselocale", EINVAL);
    failing.Reset();
    EXPECT_THAT(Freed(), IsEmpty());
    uselocale(LC_GLOBAL_LOCALE);
    freelocale(installed);
    freelocale(second);
}

TEST_F(ThreadLocale, EmptyIsTheEnvironments) {
    setenv("LC_ALL", TestLocales::Turkish, 1);
    int status = Untouched;
    const ThreadLC scope(LC_ALL, "", &status);
    EXPECT_EQ(status, VEL::StatusOk);
    EXPECT_EQ(NameOf(LC_CTYPE, uselocale(nullptr)), TestLocales::Turkish);
}

TEST_F(ThreadLocale, OneOf300BytesIsRefused) {
    const std::string name(300, 'x');
    for (const int category : {LC_ALL, LC_NUMERIC}) {
        int status = Untouched;
        const ThreadLC scope(category, name.c_str(), &status);
        EXPECT_EQ(status, VEL::StatusBadArgument);
        EXPECT_EQ(FieldsOf(scope).savedName, nullptr);
        EXPECT_EQ(FieldsOf(scope).flags, 0);
    }
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    EXPECT_EQ(LocaleCalls::BlocksHeld(), 0);
}

// The thread's locale is another than it was said to be.
TEST_F(ThreadLocale, OneThatCannotTakeItsPlaceIsFreed) {
    const locale_t own = newlocale(LC_ALL_MASK, TestLocales::Turkish, nullptr);
    const locale_t other = newlocale(LC_ALL_MASK, TestLocales::English, nullptr);
    uselocale(own);
    LocaleCalls::PretendCurrent(other);
    Record();
    int status = Untouched;
    {
        const ThreadLC scope(LC_ALL, TestLocales::German, &status);
        EXPECT_EQ(status, VEL::StatusOk) << "the process's has changed";
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), TestLocales::German);
        EXPECT_EQ(Freed().size(), 1U);
        EXPECT_EQ(uselocale(nullptr), own);
    }
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    uselocale(LC_GLOBAL_LOCALE);
    freelocale(own);
    freelocale(other);
}
