#include "VELSysCodePage.h"

#include "VELString.h"
#include "VELSysNLSCore.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string s_codePage = "UTF-8";
long s_maxCharSize = 1;
std::atomic<int> s_hooksRegistered = 0;
std::atomic<int> s_requests = 0;

VELSysNLSEnv EnvironmentOf(const char* codePage) {
    VELSysNLSEnv env{};
    std::strcpy(env.codePage, codePage);
    return env;
}

/// The units of a UTF-16 text.
std::vector<unsigned short> Units(const std::u16string& text) {
    return {text.begin(), text.end()};
}

} // namespace

extern "C" int __wrap__Z13GetEnvNLSDataP12VELSysNLSEnv(VELSysNLSEnv* env) {
    ++s_requests;
    *env = EnvironmentOf(s_codePage.c_str());
    return 0;
}

extern "C" int __wrap__Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE(void (*hook)(const VELSysNLSEnv&)) {
    EXPECT_EQ(hook, &VELSysCodePage::OnChangeNLSCore);
    int none = 0;
    return s_hooksRegistered.compare_exchange_strong(none, 1) ? 0 : 1;
}

extern "C" long __wrap__Z26VELGetMultiByteCharMaxSizev() {
    return s_maxCharSize;
}

extern "C" char* __wrap__ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj(const char*, char* out,
                                                                                 unsigned int size) {
    return std::strncpy(out, "C", size);
}

TEST(VELSysCodePage, IgnoresTheCharacterSizeGivenForUTF8) {
    const VELSysCodePage codePage("UTF-8", 1, nullptr);
    EXPECT_EQ(codePage.GetMaxCharSize(), 4);
    EXPECT_TRUE(codePage.IsUTF8());
    EXPECT_TRUE(codePage.IsValid());
    EXPECT_STREQ(codePage.GetName(), "UTF-8");
    EXPECT_EQ(VELSysCodePage("UTF-8").GetMaxCharSize(), 4);
}

TEST(VELSysCodePage, StandsInIdentityWithoutACodePage) {
    for (const char* name : {static_cast<const char*>(nullptr), "N/A"}) {
        const VELSysCodePage codePage(name, 2, nullptr);
        EXPECT_STREQ(codePage.GetName(), "Identity");
        EXPECT_FALSE(codePage.IsValid());
        EXPECT_FALSE(codePage.IsUTF8());
        EXPECT_EQ(codePage.GetMaxCharSize(), 2);
    }
    EXPECT_EQ(VELSysCodePage("N/A").GetMaxCharSize(), 16);
}

TEST(VELSysCodePage, ComparesTheNameExactly) {
    EXPECT_FALSE(VELSysCodePage("utf-8").IsUTF8());
    EXPECT_FALSE(VELSysCodePage("UTF8").IsUTF8());
}

TEST(VELSysCodePage, ConvertsUTF8AndTerminates) {
    const VELSysCodePage codePage("UTF-8");
    const std::string text = "a\u00e9\u20ac\U0001F600";
    std::vector<unsigned short> units(text.size() + 1, 0xAAAA);
    int written = -5;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text.data(), static_cast<int>(text.size()), units.data(), &written), 5);
    EXPECT_EQ(written, 5);
    EXPECT_THAT(std::vector(units.begin(), units.begin() + 5),
                testing::ElementsAreArray(Units(u"a\u00e9\u20ac\U0001F600")));
    EXPECT_EQ(units[5], 0);

    std::vector<char> bytes(5 * 4 + 1, '#');
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(units.data(), 5, bytes.data(), &written), 10);
    EXPECT_EQ(written, 10);
    EXPECT_EQ(std::string(bytes.data()), text);
}

TEST(VELSysCodePage, LeavesUTF8UnterminatedWhenNobodyAsksForTheLength) {
    const VELSysCodePage codePage("UTF-8");
    const unsigned short units[] = {'a', 'b'};
    char bytes[9] = "########";
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(units, 2, bytes, nullptr), 2);
    EXPECT_STREQ(bytes, "ab######");
    const VELSysCodePage identity("N/A");
    EXPECT_EQ(identity.ConvertUTF16ToMBCS(units, 2, bytes, nullptr), 2);
    EXPECT_STREQ(bytes, "ab");
}

TEST(VELSysCodePage, ResumesUTF8WhereTheRoomEnded) {
    const VELSysCodePage codePage("UTF-8");
    const std::string text = "ab\U0001F600c";
    const char* src = text.data();
    unsigned long left = text.size();
    unsigned short units[4] = {};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 3ul), 2) << "the pair does not fit";
    EXPECT_EQ(src, text.data() + 2);
    EXPECT_EQ(left, 5u);
    EXPECT_EQ(units[2], 0) << "terminated";
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 3ul), 3);
    EXPECT_EQ(src, nullptr);
    EXPECT_EQ(left, 0u);
    EXPECT_EQ(units[0], 0xD83D);
    EXPECT_EQ(units[3], 0);
}

TEST(VELSysCodePage, ResumingWithoutRoomDoesNothing) {
    const VELSysCodePage codePage("UTF-8");
    const char* const text = "abc";
    const char* src = text;
    unsigned long left = 3;
    unsigned short units[1] = {7};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 0ul), 0);
    EXPECT_EQ(src, text);
    EXPECT_EQ(left, 3u);
    EXPECT_EQ(units[0], 7);
    src = nullptr;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 1ul), -1);
}

TEST(VELSysCodePage, ResumingFromNothingEnds) {
    const VELSysCodePage codePage("UTF-8");
    const char* src = "";
    unsigned long left = 0;
    unsigned short units[2] = {7, 7};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 1ul), 0);
    EXPECT_EQ(src, nullptr);
    EXPECT_EQ(units[0], 0);
}

TEST(VELSysCodePage, MapsBytesOneToOneInIdentity) {
    const VELSysCodePage codePage(nullptr);
    const char text[] = "a\xE9\xFF";
    unsigned short units[4] = {9, 9, 9, 9};
    int written = 0;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text, 3, units, &written), 3);
    EXPECT_EQ(written, 3);
    EXPECT_THAT(units, testing::ElementsAre('a', 0xE9, 0xFF, 9)) << "no terminator without a room";
    const unsigned short wide[] = {'a', 0x20AC, 0x1FF};
    char bytes[4] = "###";
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(wide, 3, bytes, &written), 3);
    EXPECT_STREQ(bytes, "a\xAC\xFF") << "the low bytes";
}

TEST(VELSysCodePage, ResumesIdentity) {
    const VELSysCodePage codePage(nullptr);
    const char* const text = "abc";
    const char* src = text;
    unsigned long left = 3;
    unsigned short units[4] = {9, 9, 9, 9};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 2ul), 2);
    EXPECT_EQ(src, text + 2);
    EXPECT_EQ(left, 1u);
    EXPECT_THAT(units, testing::ElementsAre('a', 'b', 9, 9)) << "the room ended first: no terminator";
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 2ul), 1);
    EXPECT_EQ(src, nullptr);
    EXPECT_THAT(units, testing::ElementsAre('c', 0, 9, 9)) << "the input ended first: a zero unit";
}

TEST(EnvConverter, IsMadeOnceAndFollowsTheLanguage) {
    const VELSysCodePage& first = VELSysCodePage::GetEnvConverter();
    EXPECT_TRUE(first.IsUTF8());
    EXPECT_EQ(&VELSysCodePage::GetEnvConverter(), &first);
    EXPECT_EQ(s_hooksRegistered, 1);
    s_maxCharSize = 2;
    VELSysCodePage::OnChangeNLSCore(EnvironmentOf("N/A"));
    const VELSysCodePage& second = VELSysCodePage::GetEnvConverter();
    EXPECT_FALSE(second.IsUTF8());
    EXPECT_EQ(second.GetMaxCharSize(), 2);
    EXPECT_TRUE(first.IsUTF8()) << "a replaced converter stays usable";
    EXPECT_EQ(s_hooksRegistered, 1);
}

TEST(EnvConverter, TellsTheDebuggerOfUTF8AndKeepsTheOtherBits) {
    *s_pQUSFlagsForDebugger = 0xFFFF0006;
    VELSysCodePage::GetEnvConverter();
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFF0005u);
    *s_pQUSFlagsForDebugger |= 2;
    VELSysCodePage::OnChangeNLSCore(EnvironmentOf("N/A"));
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFF0004u);
    VELSysCodePage::OnChangeNLSCore(EnvironmentOf("UTF-8"));
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFF0005u);
}

TEST(EnvConverter, TakesTheCodePageOfTheDecision) {
    s_codePage = "N/A";
    EXPECT_FALSE(VELSysCodePage::GetEnvConverter().IsUTF8());
    EXPECT_EQ(VELSysCodePage::GetEnvConverter().GetMaxCharSize(), 1);
    EXPECT_EQ(s_requests, 1);
}

TEST(EnvConverter, IsOneForAllThreads) {
    std::vector<const VELSysCodePage*> seen(8);
    {
        std::vector<std::jthread> threads;
        for (auto& slot : seen) {
            threads.emplace_back([&slot] { slot = &VELSysCodePage::GetEnvConverter(); });
        }
    }
    EXPECT_THAT(seen, testing::Each(seen[0]));
    EXPECT_EQ(s_hooksRegistered, 1);
}

TEST(EnvConverter, CanBeReplacedWhileOthersConvert) {
    std::atomic<bool> ends = false;
    std::vector<std::jthread> readers;
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] {
            unsigned short units[4];
            while (!ends) {
                EXPECT_EQ(VELSysCodePage::GetEnvConverter().ConvertMBCSToUTF16("abc", 3, units, nullptr), 3);
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        VELSysCodePage::OnChangeNLSCore(EnvironmentOf(i % 2 == 0 ? "N/A" : "UTF-8"));
    }
    ends = true;
}

TEST(EnvConverter, HasAVirtualDestructorFirst) {
    static_assert(std::has_virtual_destructor_v<VELSysCodePage>);
    EXPECT_EQ(sizeof(VELSysCodePage), 72u);
}
