/// @file
/// The C locale that goes with a code page, and what a second initialisation changes.

#include "CLibraryConversion.h"
#include "LanguageCalls.h"
#include "TestLocales.h"
#include "VELSysCodePage.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

// The private second initialisation.
extern "C" void _ZN14VELSysCodePage13_ReinitializeEPKciS1_(VELSysCodePage*, const char* codePage, int maxCharSize,
                                                           const char* langString);

using namespace LanguageCalls;

namespace {

using testing::ElementsAre;

/// Three bytes that EUC-JP has no meaning for, one character in UTF-8, and a letter.
constexpr const char* Damaged = "\xE2\x8E\x8Fz";

/// The locale buffer; null when there is none.
const char* LocaleOf(const VELSysCodePage& codePage) {
    const char* locale = nullptr;
    std::memcpy(&locale, reinterpret_cast<const char*>(&codePage) + 48, sizeof locale);
    return locale;
}

std::string Convert(const VELSysCodePage& codePage, const std::string& text) {
    std::vector<unsigned short> units(text.size() + 1);
    const int count = codePage.ConvertMBCSToUTF16(text.data(), static_cast<int>(text.size()), units.data(), nullptr);
    return {units.begin(), units.begin() + count};
}

void Reinitialize(VELSysCodePage& codePage, const char* name, int maxCharSize, const char* langString) {
    _ZN14VELSysCodePage13_ReinitializeEPKciS1_(&codePage, name, maxCharSize, langString);
}

long TableRequests() {
    return std::ranges::count(Calls(), "GetNLSInformationA");
}

class AssociatedLocale : public testing::Test {
protected:
    void SetUp() override {
        setenv("LOCPATH", QOR_TEST_LOCALES, 1);
        s_table = {{"English", "", TestLocales::English, "UTF-8"},
                   {"Japanese", "", TestLocales::English, "EUC-JP"},
                   {"Japanese", "", "C", "EUC-JP"}};
    }
};

} // namespace

TEST_F(AssociatedLocale, IsThatOfTheLanguageString) {
    const VELSysCodePage codePage("EUC-JP", 1, TestLocales::English);
    EXPECT_THAT(Calls(), ElementsAre(std::string("GetLocaleStringFromLangString ") + TestLocales::English + " 85"));
    EXPECT_STREQ(LocaleOf(codePage), TestLocales::English);
    EXPECT_EQ(Convert(codePage, Damaged), "?z");
    EXPECT_EQ(TableRequests(), 0);
}

TEST_F(AssociatedLocale, IsThatOfTheFirstRowWithTheCodePage) {
    const VELSysCodePage codePage("EUC-JP");
    EXPECT_EQ(Convert(codePage, "abc"), "abc");
    EXPECT_EQ(TableRequests(), 0) << "asked for only when a character is damaged";
    EXPECT_EQ(LocaleOf(codePage), nullptr);
    EXPECT_EQ(Convert(codePage, Damaged), "?z");
    EXPECT_STREQ(LocaleOf(codePage), TestLocales::English);
    EXPECT_EQ(Convert(codePage, Damaged), "?z");
    EXPECT_EQ(TableRequests(), 1) << "once for all";
}

TEST_F(AssociatedLocale, IsNotAskedForWhereTheMarkHasNoRoom) {
    const VELSysCodePage codePage("EUC-JP");
    const char text[] = "a\xFFz";
    const char* src = text;
    unsigned long left = 3;
    unsigned short unit = 0;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, &unit, 1ul), 1);
    EXPECT_EQ(left, 2u);
    EXPECT_EQ(unit, 'a');
    EXPECT_EQ(TableRequests(), 0);
    EXPECT_EQ(LocaleOf(codePage), nullptr);
}

TEST_F(AssociatedLocale, IsNeutralWithoutARow) {
    s_table.pop_back();
    s_table.pop_back();
    const VELSysCodePage codePage("EUC-JP");
    EXPECT_EQ(Convert(codePage, Damaged), "???z");
    EXPECT_STREQ(LocaleOf(codePage), "C");
    EXPECT_EQ(Convert(codePage, Damaged), "???z");
    EXPECT_EQ(TableRequests(), 1);
    s_table.clear();
    const VELSysCodePage other("EUC-JP");
    EXPECT_EQ(Convert(other, Damaged), "???z");
    EXPECT_STREQ(LocaleOf(other), "C");
}

TEST_F(AssociatedLocale, MayBeOneThatIsNotThere) {
    const VELSysCodePage codePage("EUC-JP", 1, "xx_YY.none");
    EXPECT_EQ(Convert(codePage, Damaged), "???z");
}

TEST_F(AssociatedLocale, IsCutTo84Bytes) {
    const std::string name(200, 'x');
    const VELSysCodePage codePage("EUC-JP", 1, name.c_str());
    EXPECT_STREQ(LocaleOf(codePage), std::string(84, 'x').c_str());
    EXPECT_EQ(Convert(codePage, Damaged), "???z");
}

TEST_F(AssociatedLocale, IsTakenUpByUTF8Too) {
    EXPECT_STREQ(LocaleOf(VELSysCodePage("UTF-8", 1, "xy")), "xy");
    EXPECT_EQ(LocaleOf(VELSysCodePage("UTF-8", 1, nullptr)), nullptr);
}

TEST_F(AssociatedLocale, IsNotAskedForInIdentity) {
    const VELSysCodePage codePage("N/A", 1, "xy");
    EXPECT_EQ(LocaleOf(codePage), nullptr);
    EXPECT_EQ(Convert(codePage, Damaged), Damaged);
    EXPECT_THAT(Calls(), testing::IsEmpty());
}

TEST_F(AssociatedLocale, IsNoneWhileItIsLookedUp) {
    const VELSysCodePage codePage("EUC-JP");
    const VELSysCodePage other("EUC-JP");
    std::string inside;
    s_insideNextTableRequest = [&] { inside = Convert(codePage, Damaged) + Convert(other, Damaged); };
    EXPECT_EQ(Convert(codePage, Damaged), "?z");
    EXPECT_EQ(inside, "???z?z") << "only the converter itself is without";
    EXPECT_EQ(TableRequests(), 2);
    EXPECT_EQ(Convert(other, Damaged), "?z");
}

class SecondInitialisation : public AssociatedLocale {};

TEST_F(SecondInitialisation, ByTheSameNameChangesTheCharacterSizeAlone) {
    VELSysCodePage codePage("EUC-JP", 3, "de");
    const char* const name = codePage.GetName();
    const auto calls = Calls();
    Reinitialize(codePage, "EUC-JP", 7, "fr");
    EXPECT_EQ(codePage.GetMaxCharSize(), 7);
    EXPECT_STREQ(LocaleOf(codePage), "de");
    EXPECT_EQ(codePage.GetName(), name);
    EXPECT_EQ(Calls(), calls);
    VELSysCodePage utf8("UTF-8");
    Reinitialize(utf8, "UTF-8", 2, nullptr);
    EXPECT_EQ(utf8.GetMaxCharSize(), 2);
    EXPECT_TRUE(utf8.IsUTF8());
}

TEST_F(SecondInitialisation, ByAnotherNameChangesAll) {
    VELSysCodePage codePage("UTF-8", 3, "de");
    Reinitialize(codePage, "EUC-JP", 7, nullptr);
    EXPECT_FALSE(codePage.IsUTF8());
    EXPECT_STREQ(codePage.GetName(), "EUC-JP");
    EXPECT_EQ(codePage.GetMaxCharSize(), 7);
    EXPECT_STREQ(LocaleOf(codePage), "C") << "back to the neutral one";
    EXPECT_EQ(Convert(codePage, "\xA4\xA2"), "B") << "the low byte of U+3042";
    Reinitialize(codePage, "ISO-8859-1", 1, "fr");
    EXPECT_STREQ(LocaleOf(codePage), "fr");
    EXPECT_EQ(Convert(codePage, "\xA4\xA2"), "\xA4\xA2");
    Reinitialize(codePage, "UTF-8", 1, nullptr);
    EXPECT_TRUE(codePage.IsUTF8());
    EXPECT_EQ(codePage.GetMaxCharSize(), 4);
    EXPECT_STREQ(LocaleOf(codePage), "C");
}

TEST_F(SecondInitialisation, ByNoNameLeadsToIdentity) {
    for (const char* name : {static_cast<const char*>(nullptr), "N/A"}) {
        VELSysCodePage codePage("UTF-8", 3, "de");
        Reinitialize(codePage, name, 5, "fr");
        EXPECT_FALSE(codePage.IsUTF8());
        EXPECT_FALSE(codePage.IsValid());
        EXPECT_STREQ(codePage.GetName(), "Identity");
        EXPECT_EQ(codePage.GetMaxCharSize(), 5);
        EXPECT_STREQ(LocaleOf(codePage), "C");
    }
}
