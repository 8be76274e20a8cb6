/// @file
/// Parsing of options.

#include "VELSysEnviron.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

/// Options "--flag", "--need" (at least one value), "--any" (any number), "-a" and "-b".
class Options : public testing::Test {
protected:
    int flag = 7;
    int need = 7;
    int any = 7;
    int a = 7;
    int b = 7;
    char** needValue = &anything;
    char** anyValue = &anything;
    char** flagValue = &anything;
    VELSysEnvironCommandLongOptionStructA longOptions[4] = {
        {"flag", VELSysEnvironCommandOptionFlag, &flagValue, &flag},
        {"need", VELSysEnvironCommandOptionValues, &needValue, &need},
        {"any", 3, &anyValue, &any},
        {nullptr, 0, nullptr, nullptr}};
    VELSysEnvironCommandShortOptionStruct shortOptions[3] = {{'a', &a}, {'b', &b}, {0, nullptr}};
    bool hasLongOptions = true;
    bool hasShortOptions = true;
    int errorIndex = 7;

    /// Parses what stands behind the program's name.
    int Parse(const Texts& arguments) {
        texts = {"program"};
        texts.insert(texts.end(), arguments.begin(), arguments.end());
        argv.clear();
        for (std::string& text : texts) {
            argv.push_back(text.data());
        }
        return VELSysEnvironParseCommandOptionA(static_cast<int>(argv.size()), argv.data(),
                                                hasLongOptions ? longOptions : nullptr,
                                                hasShortOptions ? shortOptions : nullptr, &errorIndex);
    }

    void ExpectFailureAt(int index, const Texts& arguments) {
        EXPECT_EQ(Parse(arguments), -1);
        EXPECT_EQ(errorIndex, index);
    }

    Texts texts;
    std::vector<char*> argv;

private:
    char* anything = nullptr;
};

} // namespace

TEST_F(Options, AreResetFirst) {
    EXPECT_EQ(Parse({}), 0);
    EXPECT_EQ(errorIndex, 0);
    for (const int counter : {flag, need, any, a, b}) {
        EXPECT_EQ(counter, 0);
    }
    for (char** const value : {flagValue, needValue, anyValue}) {
        EXPECT_EQ(value, nullptr);
    }
}

TEST_F(Options, AreNotTouchedByACallThatIsRefused) {
    char program[] = "program";
    char* arguments[] = {program, nullptr};
    EXPECT_EQ(VELSysEnvironParseCommandOptionA(0, arguments, longOptions, shortOptions, &errorIndex), -1);
    EXPECT_EQ(VELSysEnvironParseCommandOptionA(-1, arguments, longOptions, shortOptions, &errorIndex), -1);
    EXPECT_EQ(VELSysEnvironParseCommandOptionA(1, arguments, longOptions, shortOptions, nullptr), -1);
    EXPECT_EQ(VELSysEnvironParseCommandOptionA(1, nullptr, longOptions, shortOptions, &errorIndex), -1);
    EXPECT_EQ(flag, 7);
    EXPECT_EQ(a, 7);
    EXPECT_EQ(errorIndex, 7);
    EXPECT_NE(needValue, nullptr);
}

TEST_F(Options, AreCounted) {
    EXPECT_EQ(Parse({"--flag", "-a", "--any"}), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 0);
    EXPECT_EQ(any, 1);
    EXPECT_EQ(need, 0);
    EXPECT_EQ(anyValue, nullptr);
}

TEST_F(Options, TakeTheirValues) {
    EXPECT_EQ(Parse({"--need", "x", "y", "--any", "z"}), 0);
    EXPECT_EQ(need, 3);
    EXPECT_EQ(needValue, argv.data() + 2);
    EXPECT_EQ(any, 2);
    EXPECT_EQ(anyValue, argv.data() + 5);
}

TEST_F(Options, TakeNumbersAsValues) {
    EXPECT_EQ(Parse({"--need", "-5", "-0x"}), 0);
    EXPECT_EQ(need, 3);
    ExpectFailureAt(1, {"-5"});
    EXPECT_EQ(Parse({"--any", "-0", "-9"}), 0);
    EXPECT_EQ(any, 3);
}

TEST_F(Options, BeginWithADashAndNoDigit) {
    // The neighbours of the digits.
    for (const char* const argument : {"-/", "-:"}) {
        ExpectFailureAt(2, {"--any", argument});
        EXPECT_EQ(any, 1) << argument;
    }
}

TEST_F(Options, TakeEmptyValues) {
    EXPECT_EQ(Parse({"--need", ""}), 0);
    EXPECT_EQ(need, 2);
}

TEST_F(Options, AreUnknown) {
    ExpectFailureAt(2, {"--flag", "--fla"});
    ExpectFailureAt(1, {"--flags"});
    ExpectFailureAt(1, {"--flag=1"});
    ExpectFailureAt(1, {"--Flag"});
    ExpectFailureAt(3, {"--flag", "-a", "-c"});
    ExpectFailureAt(1, {"-ac"});
}

TEST_F(Options, AreGivenOnce) {
    ExpectFailureAt(2, {"--flag", "--flag"});
    EXPECT_EQ(flag, 2);
    ExpectFailureAt(3, {"--any", "x", "--any"});
    EXPECT_EQ(any, 3);
    ExpectFailureAt(2, {"-a", "-a"});
    EXPECT_EQ(a, 2);
    ExpectFailureAt(1, {"-aa"});
}

TEST_F(Options, InAClusterCountEach) {
    EXPECT_EQ(Parse({"-ab"}), 0);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 1);
}

TEST_F(Options, OfADashAloneAreNone) {
    EXPECT_EQ(Parse({"-", "--any", "-"}), 0);
    EXPECT_EQ(any, 1);
}

TEST_F(Options, OfTwoDashesAreOneWithAnEmptyName) {
    ExpectFailureAt(1, {"--"});
    longOptions[0].name = "";
    EXPECT_EQ(Parse({"--"}), 0);
    EXPECT_EQ(flag, 1);
}

TEST_F(Options, ThatAreFlagsTakeNoValue) {
    ExpectFailureAt(2, {"--flag", "x"});
    ExpectFailureAt(4, {"--any", "x", "--flag", "y"});
}

TEST_F(Options, AreMissingInFrontOfAValue) {
    ExpectFailureAt(1, {"x"});
    ExpectFailureAt(2, {"-a", "x"});
}

TEST_F(Options, ThatNeedAValueGoWithoutOne) {
    ExpectFailureAt(2, {"--need", "--flag"});
    EXPECT_EQ(flag, 0);
    ExpectFailureAt(2, {"--need", "-a"});
    ExpectFailureAt(2, {"--need", "-"});
    ExpectFailureAt(2, {"--need", "--unknown"});
}

TEST_F(Options, ThatNeedAValueMayStandLastWithoutOne) {
    EXPECT_EQ(Parse({"--need"}), 0);
    EXPECT_EQ(need, 1);
}

TEST_F(Options, ThatNeedAValueHaveItWithTheFirst) {
    EXPECT_EQ(Parse({"--need", "x", "--flag"}), 0);
    EXPECT_EQ(need, 2);
    EXPECT_EQ(flag, 1);
}

TEST_F(Options, ThatAreShortLeaveTheLongOne) {
    EXPECT_EQ(Parse({"--any", "x", "-a", "y"}), 0);
    EXPECT_EQ(any, 3);
    EXPECT_EQ(anyValue, argv.data() + 2);
    EXPECT_EQ(Parse({"--any", "-a", "y"}), 0);
    EXPECT_EQ(any, 2);
    EXPECT_EQ(anyValue, argv.data() + 3);
}

TEST_F(Options, OfAnyOtherKindTakeAnyNumberOfValues) {
    for (const int kind : {0, 3, -1}) {
        longOptions[2].kind = kind;
        EXPECT_EQ(Parse({"--any", "--flag"}), 0) << kind;
        EXPECT_EQ(Parse({"--any", "x", "y"}), 0) << kind;
        EXPECT_EQ(any, 3);
    }
}

TEST_F(Options, WithoutALongTableAreIgnored) {
    hasLongOptions = false;
    EXPECT_EQ(Parse({"--flag", "-a", "--unknown"}), 0);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(flag, 7);
    ExpectFailureAt(2, {"--any", "x"});
}

TEST_F(Options, WithoutAShortTableAreIgnored) {
    hasShortOptions = false;
    EXPECT_EQ(Parse({"-xyz", "--any", "-x", "y"}), 0);
    EXPECT_EQ(any, 2);
    EXPECT_EQ(a, 7);
}

TEST_F(Options, WithoutACounterAreUnknown) {
    longOptions[0].counter = nullptr;
    EXPECT_EQ(Parse({"--any"}), 0);
    EXPECT_EQ(flagValue, nullptr) << "the first value is reset all the same";
    EXPECT_EQ(flag, 7);
    ExpectFailureAt(1, {"--flag"});
}

TEST_F(Options, WithoutACounterGiveWayToLaterOnesOfTheirName) {
    longOptions[0].counter = nullptr;
    longOptions[2].name = "flag";
    EXPECT_EQ(Parse({"--flag", "x"}), 0);
    EXPECT_EQ(any, 2);
}

TEST_F(Options, OfAShortTableAreResetUpToTheFirstWithoutACounter) {
    shortOptions[0].counter = nullptr;
    b = 0;
    EXPECT_EQ(Parse({"-b"}), 0);
    EXPECT_EQ(b, 1);
    ExpectFailureAt(1, {"-b"});
    EXPECT_EQ(b, 2) << "not reset, so it counts as given";
    ExpectFailureAt(1, {"-a"});
}

TEST_F(Options, OfAShortTableEndAtTheZeroCharacter) {
    // The end may have a counter, too.
    shortOptions[1].character = 0;
    EXPECT_EQ(Parse({"-a"}), 0);
    EXPECT_EQ(b, 0);
    ExpectFailureAt(1, {"-b"});
}

TEST_F(Options, BehindTheZeroCharacterAreNotTouched) {
    int end = 7;
    VELSysEnvironCommandShortOptionStruct table[] = {{'a', &a}, {0, &end}, {'b', &b}, {0, nullptr}};
    char program[] = "program";
    char option[] = "-a";
    char* arguments[] = {program, option, nullptr};
    EXPECT_EQ(VELSysEnvironParseCommandOptionA(2, arguments, nullptr, table, &errorIndex), 0);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(end, 0);
    EXPECT_EQ(b, 7);
}

TEST_F(Options, WithoutAPlaceForTheFirstValueAreCounted) {
    longOptions[2].firstValue = nullptr;
    EXPECT_EQ(Parse({"--any", "x"}), 0);
    EXPECT_EQ(any, 2);
}

TEST_F(Options, MayBeOfCharactersAbove127) {
    shortOptions[0].character = static_cast<char>(0xE9);
    EXPECT_EQ(Parse({"-\xE9"}), 0);
    EXPECT_EQ(a, 1);
}

TEST_F(Options, PassOverNullArguments) {
    char program[] = "program";
    char option[] = "--any";
    char value[] = "x";
    char* arguments[] = {program, nullptr, option, nullptr, value, nullptr};
    EXPECT_EQ(VELSysEnvironParseCommandOptionA(6, arguments, longOptions, shortOptions, &errorIndex), 0);
    EXPECT_EQ(any, 2);
    EXPECT_EQ(anyValue, arguments + 4);
}

TEST(OptionsOfALargeTable, AreAllFound) {
    constexpr int count = 700;
    std::vector<std::string> names;
    std::vector<int> counters(count);
    for (int i = 0; i < count; ++i) {
        names.push_back(i == 300 ? "" : "option" + std::to_string(i));
    }
    std::vector<VELSysEnvironCommandLongOptionStructA> table;
    for (std::size_t i = 0; i < count; ++i) {
        table.push_back({names[i].c_str(), VELSysEnvironCommandOptionFlag, nullptr, &counters[i]});
    }
    table.push_back({nullptr, 0, nullptr, nullptr});
    for (std::size_t i = 0; i < count; ++i) {
        std::string program = "program";
        std::string option = "--" + names[i];
        char* argv[] = {program.data(), option.data(), nullptr};
        int errorIndex = 0;
        ASSERT_EQ(VELSysEnvironParseCommandOptionA(2, argv, table.data(), nullptr, &errorIndex), 0) << names[i];
        ASSERT_EQ(counters[i], 1);
    }
}
