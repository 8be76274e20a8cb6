/// @file
/// Locales of several threads at once.

#include "LocaleCalls.h"
#include "VELSysCLocale.h"
#include "VELSysStatus.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <thread>

namespace {

constexpr int Rounds = 300;

class LocaleThreads : public LocaleCalls::Test {};

/// Runs `act` with the number of each of four threads.
template <class Act>
void OnFourThreads(const Act& act) {
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&act, i] { act(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace

TEST_F(LocaleThreads, EachHasItsOwn) {
    OnFourThreads([](std::size_t i) {
        const bool isGerman = i % 2 == 0;
        for (int round = 0; round < Rounds; ++round) {
            int status = -1;
            const VELSysCLocale::ThreadLC scope(LC_ALL, isGerman ? TestLocales::German : TestLocales::English, &status);
            ASSERT_EQ(status, VEL::StatusOk);
            ASSERT_EQ(std::strtod("1,5", nullptr), isGerman ? 1.5 : 1);
            VELSysCLocale::LConv conventions;
            VELSysCLocale::GetLCConv(conventions);
            ASSERT_STREQ(conventions.decimal_point(), isGerman ? L"," : L".");
        }
    });
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_F(LocaleThreads, FallbacksExcludeEachOtherAndTheConventionsOfPlainThreads) {
    static int s_inside = 0;
    OnFourThreads([](std::size_t i) {
        for (int round = 0; round < Rounds; ++round) {
            if (i == 3) {
                VELSysCLocale::LConv conventions;
                VELSysCLocale::GetLCConv(conventions);
                ASSERT_NE(conventions.decimal_point(), nullptr);
                continue;
            }
            LocaleCalls::Fail("newlocale", ENOMEM);
            int status = -1;
            const VELSysCLocale::ThreadLC scope(LC_NUMERIC, i == 0 ? "C" : TestLocales::German, &status);
            ASSERT_EQ(status, i == 0 ? VEL::StatusNote : VEL::StatusOk);
            ASSERT_EQ(++s_inside, 1);
            --s_inside;
        }
    });
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}
