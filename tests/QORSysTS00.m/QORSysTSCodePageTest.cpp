#include "QORSysTSCodePage.h"

#include "StringEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

class CodePageFacade : public StringEnvironment::InBoth {};

TEST_P(CodePageFacade, ConvertsFromTheEnvironmentsCodePage) {
    unsigned short units[4] = {9, 9, 9, 9};
    int written = -1;
    EXPECT_EQ(QORSysTSCodePage::ConvertStrToUcs("\u00e9", 2, units, &written), IsUTF8() ? 1 : 2);
    EXPECT_EQ(written, IsUTF8() ? 1 : 2);
    EXPECT_EQ(units[0], IsUTF8() ? 0xE9 : 0xC3);
    EXPECT_EQ(QORSysTSCodePage::ConvertStrToUcs("ab", 2, units, nullptr), 2);
}

TEST_P(CodePageFacade, ConvertsToTheEnvironmentsCodePage) {
    const unsigned short units[] = {'a', 0xE9};
    char bytes[9] = "########";
    int written = -1;
    EXPECT_EQ(QORSysTSCodePage::ConvertUcsToStr(units, 2, bytes, &written), IsUTF8() ? 3 : 2);
    EXPECT_EQ(written, IsUTF8() ? 3 : 2);
    EXPECT_STREQ(bytes, IsUTF8() ? "a\u00e9" : "a\xE9");
    EXPECT_EQ(QORSysTSCodePage::ConvertUcsToStr(units, 1, bytes, nullptr), 1);
}

TEST_P(CodePageFacade, ConvertsUTF8WhateverTheEnvironment) {
    unsigned short units[] = {0x20AC, 0xD83D, 0xDE00, 9};
    char bytes[10] = "#########";
    unsigned long byteCount = 77;
    EXPECT_EQ(QORSysTSCodePage::ConvertUCS2ToUTF8(units, 3, bytes, &byteCount), 0);
    EXPECT_EQ(byteCount, 7u);
    EXPECT_EQ(std::string(bytes), "\u20ac\U0001F600##") << "no terminator";
    EXPECT_EQ(QORSysTSCodePage::ConvertUCS2ToUTF8(units, 0, bytes, nullptr), 0);

    unsigned short back[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    int unitCount = 77;
    EXPECT_EQ(QORSysTSCodePage::ConvertUTF8ToUCS2(bytes, 7, back, &unitCount), 0);
    EXPECT_EQ(unitCount, 3);
    EXPECT_THAT(back, testing::ElementsAre(0x20AC, 0xD83D, 0xDE00, 9, 9, 9, 9, 9)) << "no terminator";
    EXPECT_EQ(QORSysTSCodePage::ConvertUTF8ToUCS2(bytes, 7, back, nullptr), 0);
    EXPECT_EQ(QORSysTSCodePage::ConvertUTF8ToUCS2(bytes, 0, back, &unitCount), 0);
    EXPECT_EQ(unitCount, 0);
}

INSTANTIATE_TEST_SUITE_P(Environments, CodePageFacade,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);
