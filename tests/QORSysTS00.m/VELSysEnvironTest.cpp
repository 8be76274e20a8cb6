#include "VELSysEnviron.h"

#include "EnvironmentCalls.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>

using namespace EnvironmentCalls;

namespace {

std::string Replaced(const std::string& text, const char* find, const char* replacement) {
    auto* const copy = new char[text.size() + 1];
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
    const std::unique_ptr<char[]> result(VELSysEnvironStringReplaceA(copy, find, replacement));
    return result.get();
}

} // namespace

TEST(VELGetEnvInt, FindsAVariableOfTheProcessFirst) {
    applicationVariables = {{"QOR_TEST", "application"}};
    setenv("QOR_TEST", "process=\xC3\xA9", 1);
    QORUnicodeString value("old");
    EXPECT_EQ(VELGetEnvInt("QOR_TEST", &value), 1);
    EXPECT_STREQ(value.ConvertToChar(), "process=\xC3\xA9");
    EXPECT_EQ(VEL::GetMainRepEncoding(value), VEL::MainRepNarrow);
    EXPECT_TRUE(asked.empty());
}

TEST(VELGetEnvInt, AnEmptyVariableIsKnown) {
    setenv("QOR_TEST", "", 1);
    QORUnicodeString value("old");
    EXPECT_EQ(VELGetEnvInt("QOR_TEST", &value), 1);
    EXPECT_STREQ(value.ConvertToChar(), "");
}

TEST(VELGetEnvInt, AsksTheApplicationNext) {
    applicationVariables = {{"QOR_TEST", "application"}};
    unsetenv("QOR_TEST");
    QORUnicodeString value("old");
    EXPECT_EQ(VELGetEnvInt("QOR_TEST", &value), 1);
    EXPECT_STREQ(value.ConvertToChar(), "application");
    EXPECT_EQ(asked, std::vector<std::string>{"QOR_TEST"});
}

TEST(VELGetEnvInt, LeavesTheValueOfAnUnknownVariable) {
    unsetenv("QOR_TEST");
    QORUnicodeString value("old");
    EXPECT_EQ(VELGetEnvInt("QOR_TEST", &value), 0);
    EXPECT_STREQ(value.ConvertToChar(), "old");
}

TEST(VELGetEnvInt, TellsWithoutAValueWhetherAVariableIsKnown) {
    applicationVariables = {{"QOR_OTHER", "application"}};
    installPath = "/install";
    setenv("QOR_TEST", "1", 1);
    unsetenv("QORInstallPath");
    EXPECT_EQ(VELGetEnvInt("QOR_TEST", nullptr), 1);
    EXPECT_EQ(VELGetEnvInt("QOR_OTHER", nullptr), 1);
    EXPECT_EQ(VELGetEnvInt("QORInstallPath", nullptr), 1);
    EXPECT_EQ(VELGetEnvInt("QOR_MISSING", nullptr), 0);
    EXPECT_EQ(VELGetEnvInt("", nullptr), 0);
    EXPECT_EQ(VELGetEnvInt(nullptr, nullptr), 0);
}

TEST(VELGetEnvInt, TakesTheInstallPathLast) {
    unsetenv("QORInstallPath");
    installPath = "/install/\xC3\xA9";
    QORUnicodeString value;
    EXPECT_EQ(VELGetEnvInt("QORInstallPath", &value), 1);
    EXPECT_EQ(StringBlocks::Units(value.ConvertToUCChar(), value.GetLengthInChar()), u"/install/é");
    EXPECT_EQ(asked, (std::vector<std::string>{"QORInstallPath", "install path"}));
}

TEST(VELGetEnvInt, ReadsTheInstallPathAsUTF8WhateverTheCodePage) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    unsetenv("QORInstallPath");
    installPath = "/\xC3\xA9";
    QORUnicodeString value;
    EXPECT_EQ(VELGetEnvInt("QORInstallPath", &value), 1);
    EXPECT_EQ(StringBlocks::Units(value.ConvertToUCChar(), value.GetLengthInChar()), u"/é");
}

TEST(VELGetEnvInt, AVariableHidesTheInstallPath) {
    installPath = "/install";
    applicationVariables = {{"QORInstallPath", "/application"}};
    unsetenv("QORInstallPath");
    QORUnicodeString value;
    EXPECT_EQ(VELGetEnvInt("QORInstallPath", &value), 1);
    EXPECT_STREQ(value.ConvertToChar(), "/application");
    setenv("QORInstallPath", "/process", 1);
    EXPECT_EQ(VELGetEnvInt("QORInstallPath", &value), 1);
    EXPECT_STREQ(value.ConvertToChar(), "/process");
}

TEST(VELGetEnvInt, AnUnknownInstallPathIsUnknown) {
    unsetenv("QORInstallPath");
    QORUnicodeString value("old");
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
        installPath = path;
        EXPECT_EQ(VELGetEnvInt("QORInstallPath", &value), 0);
        EXPECT_STREQ(value.ConvertToChar(), "old");
    }
}

TEST(VELGetEnvInt, OtherNamesDoNotTakeTheInstallPath) {
    installPath = "/install";
    EXPECT_EQ(VELGetEnvInt("QORInstallPat", nullptr), 0);
    EXPECT_EQ(VELGetEnvInt("QORInstallPath2", nullptr), 0);
    EXPECT_EQ(VELGetEnvInt("qorinstallpath", nullptr), 0);
}

TEST(VELGetEnvironmentVariableFromOS, AsksTheProcessAlone) {
    applicationVariables = {{"QOR_OTHER", "application"}};
    installPath = "/install";
    unsetenv("QORInstallPath");
    setenv("QOR_TEST", "1", 1);
    QORUnicodeString value("old");
    EXPECT_EQ(_VELGetEnvironmentVariableFromOS("QOR_OTHER", value), 0);
    EXPECT_EQ(_VELGetEnvironmentVariableFromOS("QORInstallPath", value), 0);
    EXPECT_EQ(_VELGetEnvironmentVariableFromOS(nullptr, value), 0);
    EXPECT_STREQ(value.ConvertToChar(), "old");
    EXPECT_EQ(_VELGetEnvironmentVariableFromOS("QOR_TEST", value), 1);
    EXPECT_STREQ(value.ConvertToChar(), "1");
    EXPECT_TRUE(asked.empty());
}

TEST(VELSysGetEnvA, HasNoImplementation) {
    setenv("QOR_TEST", "1", 1);
    std::size_t length = 77;
    char buffer[8] = "old";
    EXPECT_EQ(VELSysGetEnvA(&length, buffer, sizeof buffer, "QOR_TEST"), -1);
    EXPECT_EQ(VELSysGetEnvA(nullptr, nullptr, 0, nullptr), -1);
    EXPECT_EQ(length, 77U);
    EXPECT_STREQ(buffer, "old");
}

TEST(VELSysEnvironStringReplaceA, ReplacesEveryOccurrence) {
    EXPECT_EQ(Replaced("a${X}b${X}${X}", "${X}", "value"), "avaluebvaluevalue");
    EXPECT_EQ(Replaced("${X}", "${X}", "1"), "1");
    EXPECT_EQ(Replaced("aXa", "a", "bb"), "bbXbb");
}

TEST(VELSysEnvironStringReplaceA, AnEmptyReplacementDeletes) {
    EXPECT_EQ(Replaced("a${X}b${X}", "${X}", ""), "ab");
    EXPECT_EQ(Replaced("aaa", "a", ""), "");
}

TEST(VELSysEnvironStringReplaceA, WhatWasPutInIsNotSearchedAgain) {
    EXPECT_EQ(Replaced("a", "a", "aa"), "aa");
    EXPECT_EQ(Replaced("aab", "ab", "b"), "ab");
    EXPECT_EQ(Replaced("${X}", "${X}", "-${X}-"), "-${X}-");
}

TEST(VELSysEnvironStringReplaceA, OccurrencesDoNotOverlap) {
    EXPECT_EQ(Replaced("aaaaa", "aa", "b"), "bba");
}

TEST(VELSysEnvironStringReplaceA, KeepsTheTextWhenThereIsNothingToReplace) {
    char text[] = "text";
    EXPECT_EQ(VELSysEnvironStringReplaceA(text, "x-", "y"), text);
    EXPECT_EQ(VELSysEnvironStringReplaceA(text, "textual", "y"), text);
    EXPECT_EQ(VELSysEnvironStringReplaceA(text, "", "y"), text);
    EXPECT_STREQ(text, "text");
}

TEST(VELSysEnvironStringReplaceA, PassesNullArgumentsThrough) {
    char text[] = "text";
    EXPECT_EQ(VELSysEnvironStringReplaceA(nullptr, "t", "y"), nullptr);
    EXPECT_EQ(VELSysEnvironStringReplaceA(text, nullptr, "y"), text);
    EXPECT_EQ(VELSysEnvironStringReplaceA(text, "t", nullptr), text);
    EXPECT_STREQ(text, "text");
}

TEST(VELSysEnvironStringReplaceA, TakesPiecesOfTheTextItself) {
    auto* const text = new char[8];
    std::memcpy(text, "ab ab x", 8);
    const std::unique_ptr<char[]> result(VELSysEnvironStringReplaceA(text, text + 5, text));
    EXPECT_STREQ(result.get(), "ab abab ab x");
}

TEST(VELSysEnvironDeleteArgumentArrayA, FreesStringsAndVector) {
    auto** argv = new char*[3];
    argv[0] = new char[1]();
    argv[1] = nullptr;
    argv[2] = new char[5]();
    EXPECT_EQ(VELSysEnvironDeleteArgumentArrayA(&argv, 3), 0);
    EXPECT_EQ(argv, nullptr);
    EXPECT_EQ(VELSysEnvironDeleteArgumentArrayA(&argv, 3), 0);
}

TEST(VELSysEnvironDeleteArgumentArrayA, DoesNothingWithoutAVectorOrACount) {
    EXPECT_EQ(VELSysEnvironDeleteArgumentArrayA(nullptr, 3), 0);
    char* slots[] = {nullptr};
    char** argv = slots;
    EXPECT_EQ(VELSysEnvironDeleteArgumentArrayA(&argv, 0), 0);
    EXPECT_EQ(VELSysEnvironDeleteArgumentArrayA(&argv, -1), 0);
    EXPECT_EQ(argv, slots);
}
