#include "VELSysCLocale.h"

#include "LocaleCalls.h"

#include <gmock/gmock.h>
#include <ostream>

namespace {

using LocaleCalls::Log;
using LocaleCalls::Record;
using testing::ElementsAre;
using testing::IsEmpty;

class CLocale : public LocaleCalls::Test {};

constexpr const char* AskedForAll = "setlocale 6 ?";

/// What looks at the process's locale first.
struct FirstUse {
    const char* name;
    void (*act)();
};

void PrintTo(const FirstUse& use, std::ostream* out) {
    *out << use.name;
}

class LocaleBeforeLoad : public LocaleCalls::Test, public testing::WithParamInterface<FirstUse> {};

} // namespace

TEST_F(CLocale, APlainThreadHasNoneOfItsOwn) {
    EXPECT_FALSE(VELSysCLocaleIsPerThread());
    EXPECT_EQ(VELSysCLocaleSetPerThread(0), 0);
    EXPECT_EQ(VELSysCLocaleSetPerThread(1), -1);
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE) << "the question changes nothing";
}

TEST_F(CLocale, AScopeIsTheThreadsOwn) {
    const VELSysCLocale::ThreadLC scope(LC_ALL, TestLocales::German, nullptr);
    EXPECT_TRUE(VELSysCLocaleIsPerThread());
    EXPECT_EQ(VELSysCLocaleSetPerThread(0), -1);
    EXPECT_EQ(VELSysCLocaleSetPerThread(1), 0);
    EXPECT_EQ(VELSysCLocaleSetPerThread(2), -1);
    EXPECT_TRUE(VELSysCLocaleIsPerThread());
}

TEST_F(CLocale, AThreadWhoseStateCannotBeHadHasNoneOfItsOwn) {
    LocaleCalls::Fail("uselocale ?", EINVAL);
    EXPECT_FALSE(VELSysCLocaleIsPerThread());
}

TEST_F(CLocale, SetLocaleIsTheProcesss) {
    EXPECT_STREQ(VELSysCLocale::SetLocale(LC_NUMERIC, TestLocales::German), TestLocales::German);
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), TestLocales::German);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    EXPECT_STREQ(VELSysCLocale::SetLocale(LC_NUMERIC, nullptr), TestLocales::German);
    EXPECT_EQ(VELSysCLocale::SetLocale(LC_NUMERIC, "nowhere"), nullptr);
    EXPECT_EQ(VELSysCLocale::SetLocale(-1, "C"), nullptr);
}

TEST_F(CLocale, SetLocaleCapturesFirst) {
    Record();
    VELSysCLocale::SetLocale(LC_ALL, TestLocales::English);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", AskedForAll, "setlocale 6 en_US.UTF-8"));
    Record();
    VELSysCLocale::SetLocale(LC_ALL, "C");
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "setlocale 6 C")) << "once";
}

TEST_F(CLocale, SetLocaleDoesNothingInAScope) {
    const VELSysCLocale::ThreadLC scope(LC_ALL, TestLocales::German, nullptr);
    Record();
    EXPECT_EQ(VELSysCLocale::SetLocale(LC_ALL, ""), nullptr);
    EXPECT_EQ(VELSysCLocale::SetLocale(LC_ALL, nullptr), nullptr);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "uselocale ?"));
}

TEST_P(LocaleBeforeLoad, IsWhatTheFirstUseFound) {
    TestLocales::UseLocale(TestLocales::Turkish);
    GetParam().act();
    EXPECT_THAT(Log(), testing::Contains(AskedForAll));
    TestLocales::UseLocale("C");
    Record();
    EXPECT_STREQ(GetLocaleBeforeLoad(), TestLocales::Turkish);
    EXPECT_THAT(Log(), IsEmpty());
    VELSysCLocale::SetLocale(LC_ALL, TestLocales::German);
    EXPECT_STREQ(GetLocaleBeforeLoad(), TestLocales::Turkish);
}

INSTANTIATE_TEST_SUITE_P(Each, LocaleBeforeLoad,
                         testing::Values(FirstUse{"Question", [] { GetLocaleBeforeLoad(); }},
                                         FirstUse{"NullScope",
                                                  [] { VELSysCLocale::ThreadLC(LC_ALL, nullptr, nullptr); }},
                                         FirstUse{"Scope", [] { VELSysCLocale::ThreadLC(LC_ALL, "C", nullptr); }},
                                         FirstUse{"SetLocale", [] { VELSysCLocale::SetLocale(LC_ALL, nullptr); }},
                                         FirstUse{"Conventions",
                                                  [] {
                                                      VELSysCLocale::LConv conventions;
                                                      VELSysCLocale::GetLCConv(conventions);
                                                  }}),
                         [](const auto& test) { return test.param.name; });

TEST_F(CLocale, TheLocaleBeforeLoadIsCutTo85Bytes) {
    TestLocales::UseLocale(TestLocales::German);
    std::setlocale(LC_NUMERIC, TestLocales::English);
    const std::string name = std::setlocale(LC_ALL, nullptr);
    ASSERT_GT(name.size(), 85U) << "a name of every category";
    EXPECT_EQ(GetLocaleBeforeLoad(), name.substr(0, 85));
}

TEST_F(CLocale, TheLocaleBeforeLoadIsEmptyWhenItCannotBeHad) {
    LocaleCalls::Fail("setlocale ?", EINVAL);
    EXPECT_STREQ(GetLocaleBeforeLoad(), "");
    EXPECT_STREQ(GetLocaleBeforeLoad(), "") << "for good";
}
