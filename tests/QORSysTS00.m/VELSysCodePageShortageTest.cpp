/// @file
/// Code pages without memory: nothing is thrown, and what was there stays.

#include "HeapLog.h"
#include "LanguageCalls.h"
#include "TestLocales.h"
#include "VELSysCodePage.h"
#include "VELSysIConvTSWrap.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>

using namespace LanguageCalls;

namespace {

constexpr HeapShortage::Extent Extents[] = {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn};

/// Runs `operation` with its first request failing, then with its second, and so on until none fails.
template <class Operation, class Check>
void Sweep(const Operation& operation, const Check& check) {
    for (const HeapShortage::Extent extent : Extents) {
        bool hasStruck = true;
        for (int first = 1; hasStruck; ++first) {
            ASSERT_LT(first, 200);
            {
                const HeapShortage shortage(first, extent);
                operation();
                hasStruck = HeapShortage::HasStruck();
            }
            check(hasStruck);
        }
    }
}

/// How a conversion of EUC-JP text went.
std::string Converted(const VELSysCodePage& codePage) {
    unsigned short units[8];
    const int count = codePage.ConvertMBCSToUTF16("\xA4\xA2\xFFz", 4, units, nullptr);
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += std::to_string(units[i]) + " ";
    }
    return text;
}

constexpr const char* ByIconv = "12354 63 122 ";
constexpr const char* ByIdentity = "164 162 255 122 ";

class CodePageShortage : public testing::Test {
protected:
    void SetUp() override { setenv("LOCPATH", QOR_TEST_LOCALES, 1); }
};

} // namespace

TEST_F(CodePageShortage, LeavesAConverterThatWorks) {
    testing::internal::CaptureStderr();
    alignas(VELSysCodePage) static char memory[sizeof(VELSysCodePage)];
    Sweep([&] { new (memory) VELSysCodePage("EUC-JP", 3, TestLocales::Japanese); },
          [&](bool hasStruck) {
              auto* const codePage = reinterpret_cast<VELSysCodePage*>(memory);
              if (hasStruck && !codePage->IsValid()) {
                  EXPECT_EQ(Converted(*codePage), ByIdentity);
              } else {
                  EXPECT_EQ(Converted(*codePage), ByIconv);
              }
              if (!hasStruck) {
                  EXPECT_STREQ(codePage->GetName(), "EUC-JP");
                  EXPECT_TRUE(codePage->IsValid());
              }
              codePage->~VELSysCodePage();
          });
    // What can't be registered has no handles.
    testing::internal::GetCapturedStderr();
}

TEST_F(CodePageShortage, OfAConversionGivesIdentityOrAllOfIt) {
    testing::internal::CaptureStderr();
    s_table = {{"Japanese", "", TestLocales::Japanese, "EUC-JP"}};
    std::unique_ptr<VELSysCodePage> codePage;
    std::string converted;
    converted.reserve(64);
    const auto prepare = [&] { codePage = std::make_unique<VELSysCodePage>("EUC-JP"); };
    prepare();
    for (const HeapShortage::Extent extent : Extents) {
        bool hasStruck = true;
        for (int first = 1; hasStruck; ++first) {
            unsigned short units[8];
            int count = 0;
            {
                const HeapShortage shortage(first, extent);
                count = codePage->ConvertMBCSToUTF16("\xA4\xA2\xFFz", 4, units, nullptr);
                hasStruck = HeapShortage::HasStruck();
            }
            EXPECT_TRUE(count == 3 || (hasStruck && count == 4));
            prepare();
        }
    }
    EXPECT_EQ(Converted(*codePage), ByIconv);
    testing::internal::GetCapturedStderr();
}

TEST_F(CodePageShortage, OfTheFirstRequestIsAnsweredByIdentityForOnce) {
    s_codePage = "EUC-JP";
    const VELSysCodePage* during = nullptr;
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        during = &VELSysCodePage::GetEnvConverter();
    }
    ASSERT_NE(during, nullptr);
    EXPECT_FALSE(during->IsValid());
    EXPECT_EQ(Converted(*during), ByIdentity);
    const VELSysCodePage& after = VELSysCodePage::GetEnvConverter();
    EXPECT_NE(&after, during);
    EXPECT_STREQ(after.GetName(), "EUC-JP");
    EXPECT_EQ(Converted(*during), ByIdentity) << "it stays usable";
    EXPECT_EQ(&VELSysCodePage::GetEnvConverter(), &after);
}

TEST_F(CodePageShortage, OfAChangeLeavesTheFormerConverter) {
    Change("UTF-8");
    const VELSysCodePage* const former = &VELSysCodePage::GetEnvConverter();
    const VELSysNLSEnv env = [] {
        s_codePage = "ISO-8859-1";
        return LanguageCalls::Record();
    }();
    {
        const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
        VELSysCodePage::OnChangeNLSCore(env);
    }
    EXPECT_EQ(&VELSysCodePage::GetEnvConverter(), former);
}

// Leak checkers see whoever is lost.
TEST_F(CodePageShortage, OfTheQueueKeepsTheReplacedConverter) {
    Change("EUC-JP");
    s_codePage = "ISO-8859-1";
    s_langString = "de";
    const VELSysNLSEnv env = LanguageCalls::Record();
    testing::internal::CaptureStderr();
    const VELSysCodePage* before = &VELSysCodePage::GetEnvConverter();
    Sweep([&] { VELSysCodePage::OnChangeNLSCore(env); },
          [&](bool) {
              unsigned short units[8];
              EXPECT_GE(before->ConvertMBCSToUTF16("\xA4\xA2", 2, units, nullptr), 1);
              before = &VELSysCodePage::GetEnvConverter();
          });
    EXPECT_STREQ(before->GetName(), "ISO-8859-1");
    testing::internal::GetCapturedStderr();
}
