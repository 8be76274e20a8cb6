/// @file
/// Code pages on several threads at once, while the language changes under them.

#include "LanguageCalls.h"
#include "TestLocales.h"
#include "VELSysCodePage.h"

#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace LanguageCalls;

namespace {

constexpr int Rounds = 300;

/// Text with a damaged character in its midst.
constexpr const char* Text = "a\xA4\xA2\xFFz";
constexpr int TextLength = 5;

std::vector<unsigned short> Convert(const VELSysCodePage& codePage) {
    std::vector<unsigned short> units(TextLength + 1);
    units.resize(static_cast<std::size_t>(codePage.ConvertMBCSToUTF16(Text, TextLength, units.data(), nullptr)));
    return units;
}

} // namespace

TEST(CodePageThreads, ConvertByOneObject) {
    setenv("LOCPATH", QOR_TEST_LOCALES, 1);
    s_table = {{"Japanese", "", TestLocales::Japanese, "EUC-JP"}};
    const VELSysCodePage codePage("EUC-JP");
    const std::vector<unsigned short> expected{'a', 0x3042, '?', 'z'};
    std::vector<std::jthread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < Rounds; ++round) {
                ASSERT_EQ(Convert(codePage), expected);
                char bytes[17];
                ASSERT_EQ(codePage.ConvertUTF16ToMBCS(expected.data(), 4, bytes, nullptr), 5);
                ASSERT_STREQ(bytes, "a\xA4\xA2?z");
            }
        });
    }
}

TEST(CodePageThreads, ReadWhileTheLanguageChanges) {
    setenv("LOCPATH", QOR_TEST_LOCALES, 1);
    s_codePage = "ISO-8859-1";
    std::atomic<bool> ends = false;
    std::vector<std::jthread> readers;
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] {
            while (!ends) {
                const VELSysCodePage& codePage = VELSysCodePage::GetEnvConverter();
                const std::string name = codePage.GetName();
                const std::size_t units = Convert(codePage).size();
                ASSERT_EQ(units, name == "EUC-JP" ? 4u : 5u) << name;
            }
        });
    }
    const char* const codePages[] = {"EUC-JP", "ISO-8859-1", "N/A"};
    VELSysNLSEnv env{};
    for (int round = 0; round < Rounds; ++round) {
        std::snprintf(env.codePage, sizeof env.codePage, "%s", codePages[round % 3]);
        VELSysCodePage::OnChangeNLSCore(env);
    }
    ends = true;
}

TEST(CodePageThreads, MakeOneConverterOfTheEnvironment) {
    s_codePage = "EUC-JP";
    std::vector<const VELSysCodePage*> seen(6);
    {
        std::vector<std::jthread> threads;
        for (auto& slot : seen) {
            threads.emplace_back([&slot] {
                slot = &VELSysCodePage::GetEnvConverter();
                EXPECT_EQ(Convert(*slot).size(), 4u);
            });
        }
    }
    for (const VELSysCodePage* converter : seen) {
        EXPECT_EQ(converter, seen.front());
    }
}
