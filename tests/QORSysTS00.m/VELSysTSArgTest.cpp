#include "VELSysTSArg.h"

#include "ArgumentStore.h"
#include "QORSysSession.h"
#include "QORSysTSUnicodeString.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"

#include <gtest/gtest.h>
#include <map>
#include <type_traits>

using namespace ArgumentStore;

namespace {

using Options = std::map<std::string, Found>;

/// Arguments, and the options that they give; a key that is asked for in vain is missing.
struct Case {
    const char* name;
    std::vector<std::string> arguments;
    Options options;
};

std::ostream& operator<<(std::ostream& out, const Case& line) {
    return out << line.name;
}

std::string NameOf(const testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

class CommandLine : public testing::TestWithParam<Case> {};

const Case Cases[] = {
    {"Help", {"-help", "x"}, {{"help", Flag()}}},
    {"Admin", {"-admin", "x"}, {{"admin", Flag()}}},
    {"Batch", {"-batch", "x"}, {{"batch", Flag()}}},
    {"RegServer", {"/regserver", "x"}, {{"regserver", Flag()}}},
    {"UnregServer", {"/unregserver", "x"}, {{"unregserver", Flag()}}},
    {"Object", {"-object", "x", "-y"}, {{"object", Value("x")}, {"y", Flag()}}},
    {"ServiceId", {"-serviceId", "x", "-y"}, {{"serviceId", Value("x")}, {"y", Flag()}}},
    {"ObjectType", {"-objectType", "x", "-y"}, {{"objectType", Value("x")}, {"y", Flag()}}},
    {"File", {"-file", "x", "-y"}, {{"file", Value("x")}, {"y", Flag()}}},
    {"WorkBench", {"-workbench", "x", "-y"}, {{"workbench", Value("x")}, {"y", Flag()}}},
    {"Env", {"-env", "x", "-y"}, {{"env", Value("x")}, {"y", Flag()}}},
    {"DirEnv", {"-direnv", "x", "-y"}, {{"direnv", Value("x")}, {"y", Flag()}}},
    {"Url", {"-Url", "x", "-y"}, {{"Url", Value("x")}, {"y", Flag()}}},
    {"Sli", {"-Sli", "x", "-y"}, {{"Sli", Value("x")}, {"y", Flag()}}},
    {"Cas", {"-Cas", "x", "-y"}, {{"Cas", Value("x")}, {"y", Flag()}}},
    {"Ctx", {"-Ctx", "x", "-y"}, {{"Ctx", Value("x")}, {"y", Flag()}}},
    {"WorkBenchByItsBeginning", {"-workbenchX", "x"}, {{"workbench", Value("x")}, {"workbenchX", Missing()}}},
    {"EnvByItsBeginning", {"-envfoo", "bar"}, {{"env", Value("bar")}, {"envfoo", Missing()}}},
    {"EnvironmentIsEnv", {"-environment", "x"}, {{"env", Value("x")}, {"environment", Missing()}}},
    {"EnvWithAnEqualsSign", {"-env=1", "x"}, {{"env", Value("x")}}},
    {"DirEnvByItsBeginning", {"-direnvironment", "x"}, {{"direnv", Value("x")}}},
    {"OthersAreComparedWhole", {"-objects", "x"}, {{"objects", Flag()}, {"object", Missing()}}},
    {"CaseCounts", {"-Object", "x", "-HELP"}, {{"Object", Flag()}, {"object", Missing()}, {"HELP", Flag()}}},
    {"ServersNeedTheSlash", {"-regserver", "/help"}, {{"regserver", Flag()}, {"help", Missing()}}},
    {"AValueMayBeginWithADash", {"-object", "-batch"}, {{"object", Value("-batch")}, {"batch", Missing()}}},
    {"ObjectInTheLastPlace", {"-object"}, {{"object", Flag()}}},
    {"EnvInTheLastPlace", {"-envfoo"}, {{"envfoo", Flag()}, {"env", Missing()}}},
    {"EnvWithAnEqualsSignInTheLastPlace", {"-env=1"}, {{"env", Value("1")}}},
    {"WorkBenchInTheLastPlace", {"x", "-workbench"}, {{"workbench", Flag()}}},
    {"EInTheLastPlace", {"-e"}, {{"e", Flag()}}},
    {"EJoinsWords", {"-e", "a", "b", "c", "-x"}, {{"e", Value("a b c")}, {"x", Flag()}}},
    {"EJoinsUpToTheEnd", {"-e", "a", "b"}, {{"e", Value("a b")}}},
    {"EStopsAtABackslash", {"-e", "a", "b", "\\c", "d"}, {{"e", Value("a b")}}},
    {"ETakesAnyFirstWord", {"-e", "-a", "b"}, {{"e", Value("-a b")}, {"a", Missing()}}},
    {"ETakesABackslashFirst", {"-e", "\\a", "b"}, {{"e", Value("\\a b")}}},
    {"EJoinsEmptyWords", {"-e", "", "", "b"}, {{"e", Value("  b")}}},
    {"JoinedWordsComeUpAgain", {"-e", "a", "/regserver", "b"}, {{"e", Value("a /regserver b")}, {"regserver", Flag()}}},
    {"Render", {"-render=fast", "x", "-y"}, {{"render", Value("fast")}, {"y", Flag()}}},
    {"RenderTakesNothing", {"-render="}, {{"render", Value("")}}},
    {"RenderWithTwoDashes", {"--render=a=b"}, {{"render", Value("a=b")}}},
    {"WordsAreSkipped", {"/other", "plain", "", "a=b"}, {{"other", Missing()}, {"plain", Missing()}, {"a", Missing()}}},
    {"TwoDashesAlone", {"--"}, {{"", Flag()}}},
    {"OneDashAlone", {"-"}, {{"", Flag()}}},
    {"AnEmptyKeyWithAValue", {"-=x"}, {{"", Value("x")}}},
    {"TwoDashesAndAValue", {"--level=3"}, {{"level", Value("3")}}},
    {"OneDashAndAValue", {"-level=3"}, {{"level", Value("3")}}},
    {"Verbose", {"--verbose"}, {{"verbose", Flag()}}},
    {"ThreeDashes", {"---a"}, {{"-a", Flag()}}},
    {"TheFirstEqualsSignSeparates", {"-a=b=c"}, {{"a", Value("b=c")}}},
    {"AnEmptyValue", {"-a="}, {{"a", Value("")}}},
    {"TheFirstOfEqualKeysCounts", {"-a=1", "-a=2", "-a"}, {{"a", Value("1")}}},
    {"MaintenanceFirst", {"-maintenance", "x"}, {{"maintenance", Flag()}}},
    {"MaintenanceAlone", {"-maintenance"}, {{"maintenance", Flag()}}},
    {"MaintenanceSecond", {"x", "-maintenance"}, {{"maintenance", {0, 1, 0, Untouched}}}},
    {"MaintenanceSecondByItsBeginning", {"x", "-maintenanceX"}, {{"maintenanceX", Flag()}, {"maintenance", Missing()}}},
    {"MaintenanceSecondWithTwoDashes", {"x", "--maintenance"}, {{"maintenance", Flag()}}},
    {"MaintenanceSecondOfThree", {"x", "-maintenance", "y"}, {{"maintenance", Flag()}}},
    {"BytesThatAreNotUTF8", {"-\xE9=1"}, {{"\xE9", Value("1")}}},
    {"NoArguments", {}, {{"help", Missing()}}},
};

INSTANTIATE_TEST_SUITE_P(All, CommandLine, testing::ValuesIn(Cases), NameOf);

/// Listed options without their dash.
class ComparedWhole : public testing::TestWithParam<const char*> {};
class WithAValue : public testing::TestWithParam<const char*> {};

constexpr auto ItsName = [](const testing::TestParamInfo<const char*>& info) { return std::string(info.param); };

INSTANTIATE_TEST_SUITE_P(All, ComparedWhole,
                         testing::Values("help", "admin", "batch", "object", "serviceId", "objectType", "file", "e",
                                         "Url", "Sli", "Cas", "Ctx"),
                         ItsName);
INSTANTIATE_TEST_SUITE_P(All, WithAValue,
                         testing::Values("object", "serviceId", "objectType", "file", "workbench", "e", "env", "direnv",
                                         "Url", "Sli", "Cas", "Ctx"),
                         ItsName);

} // namespace

TEST_P(ComparedWhole, IsAnotherOptionWhenItIsLonger) {
    const std::string option = GetParam();
    Set({"-" + option + "X", "next"});
    EXPECT_EQ(Get((option + "X").c_str()), Flag());
    EXPECT_EQ(Get(option.c_str()), Missing());
}

TEST_P(WithAValue, IsAFlagInTheLastPlace) {
    const std::string option = GetParam();
    Set({"x", "-" + option});
    EXPECT_EQ(Get(option.c_str()), Flag());
}

TEST(VELSysTSArg, PassesOverServerWordsThatAreLonger) {
    Set({"/regserverX", "/unregserverX"});
    for (const char* const key : {"regserver", "regserverX", "unregserver", "unregserverX"}) {
        EXPECT_EQ(Get(key), Missing()) << key;
    }
}

TEST(VELSysTSArg, OutlivesTheSessionAndTheMainPair) {
    char program[] = "program";
    char option[] = "-a=1";
    char* argv[] = {program, option, nullptr};
    QORSysNewSessionTS(0, 0, nullptr);
    VELSysMainInitialize(2, argv, VELSysMainStoreArguments);
    const QORUnicodeString value("2");
    VELSysTSAddArg("b", &value);
    VELSysMainFinalize();
    EXPECT_EQ(Get("a"), Value("1"));
    EXPECT_EQ(Get("b"), Value("2", 1));
    EXPECT_EQ(QORSysEndSessionTS(0), 0);
    EXPECT_EQ(Get("a"), Value("1"));
    EXPECT_EQ(Get("b"), Value("2", 1));
}

TEST_P(CommandLine, GivesItsOptions) {
    EXPECT_EQ(Set(GetParam().arguments), 0);
    for (const auto& [key, expected] : GetParam().options) {
        EXPECT_EQ(Get(key.c_str()), expected) << key;
    }
}

TEST(VELSysTSArg, IsNotPossibleBeforeAnythingIsSet) {
    EXPECT_EQ(Get("help"), Failed(VEL::StatusFailure));
    EXPECT_EQ(Get(nullptr), Failed(VEL::StatusFailure));
}

TEST(VELSysTSArg, IsThereOnceSomethingIsSetAddedOrReset) {
    EXPECT_EQ(VELSysTSResetArg("a"), VEL::StatusFailure);
    EXPECT_EQ(Get("a"), Missing());
}

TEST(VELSysTSArg, IsThereAfterAnAddition) {
    EXPECT_EQ(VELSysTSAddArg("a", nullptr), 0);
    EXPECT_EQ(Get("b"), Missing());
}

TEST(VELSysTSArg, StartsAfreshWithEachCommandLine) {
    Set({"-a=1"});
    VELSysTSAddArg("b", nullptr);
    Set({});
    EXPECT_EQ(Get("a"), Missing());
    EXPECT_EQ(Get("b"), Missing());
    Set({"-c"});
    EXPECT_EQ(Get("c"), Flag());
}

TEST(VELSysTSArg, DoesNotReadTheProgramsName) {
    char program[] = "-help";
    char* argv[] = {program, nullptr};
    VELSysTSSetArg(1, argv);
    EXPECT_EQ(Get("help"), Missing());
}

TEST(VELSysTSArg, TakesNoArgumentsAtAll) {
    EXPECT_EQ(VELSysTSSetArg(0, nullptr), 0);
    EXPECT_EQ(VELSysTSSetArg(5, nullptr), 0);
    EXPECT_EQ(VELSysTSSetArg(-1, nullptr), 0);
    EXPECT_EQ(Get("a"), Missing());
}

TEST(VELSysTSArg, PassesOverNullArguments) {
    char program[] = "program";
    char object[] = "-object";
    char e[] = "-e";
    char flag[] = "-flag";
    char* argv[] = {program, object, nullptr, nullptr, e, nullptr, flag, nullptr};
    VELSysTSSetArg(7, argv);
    EXPECT_EQ(Get("object"), (Found{0, 1, 0, Untouched}));
    EXPECT_EQ(Get("e"), (Found{0, 1, 0, Untouched}));
    EXPECT_EQ(Get("flag"), Flag());
}

TEST(VELSysTSArg, MaintenanceTakesWhatStandsBehindTheLastArgument) {
    char program[] = "program";
    char word[] = "word";
    char maintenance[] = "-maintenance";
    char behind[] = "behind";
    char* argv[] = {program, word, maintenance, behind, nullptr};
    VELSysTSSetArg(3, argv);
    EXPECT_EQ(Get("maintenance"), Value("behind"));
}

TEST(VELSysTSArg, AddsAFlag) {
    EXPECT_EQ(VELSysTSAddArg("a", static_cast<const QORUnicodeString*>(nullptr)), 0);
    EXPECT_EQ(Get("a"), Flag(1));
    EXPECT_EQ(VELSysTSAddArg("b", static_cast<QORSysTSUnicodeString*>(nullptr)), 0);
    EXPECT_EQ(Get("b"), Flag(1));
}

TEST(VELSysTSArg, AddsAFlagForALiteralNull) {
    char key[] = "b";
    EXPECT_EQ(VELSysTSAddArg("a", nullptr), 0);
    EXPECT_EQ(VELSysTSAddArg(key, nullptr), 0);
    EXPECT_EQ(Get("a"), Flag(1));
    EXPECT_EQ(Get("b"), Flag(1));
}

TEST(VELSysTSArg, AddsAValue) {
    const QORUnicodeString value("text");
    EXPECT_EQ(VELSysTSAddArg("a", &value), 0);
    EXPECT_EQ(Get("a"), Value("text", 1));
}

TEST(VELSysTSArg, AddsAnEmptyValue) {
    const QORUnicodeString value;
    EXPECT_EQ(VELSysTSAddArg("a", &value), 0);
    EXPECT_EQ(Get("a"), Value("", 1));
    const auto null = StringBlocks::NullString<QORUnicodeString>();
    EXPECT_EQ(VELSysTSAddArg("b", &null), 0);
    EXPECT_EQ(Get("b"), Value("", 1));
}

TEST(VELSysTSArg, AnAddedOptionReplacesOneOfTheCommandLine) {
    Set({"-a=1", "-b"});
    const QORUnicodeString value("2");
    VELSysTSAddArg("a", &value);
    EXPECT_EQ(Get("a"), Value("2", 1));
    EXPECT_EQ(Get("b"), Flag());
}

TEST(VELSysTSArg, AFlagReplacesAValue) {
    const QORUnicodeString value("1");
    VELSysTSAddArg("a", &value);
    VELSysTSAddArg("a", nullptr);
    EXPECT_EQ(Get("a"), Flag(1));
}

TEST(VELSysTSArg, ResetRemovesAnOption) {
    Set({"-a=1", "-b"});
    EXPECT_EQ(VELSysTSResetArg("a"), 0);
    EXPECT_EQ(Get("a"), Missing());
    EXPECT_EQ(Get("b"), Flag());
    EXPECT_EQ(VELSysTSResetArg("a"), VEL::StatusFailure);
    EXPECT_EQ(VELSysTSResetArg("unknown"), VEL::StatusFailure);
}

TEST(VELSysTSArg, RefusesANullKey) {
    Set({"-a=1"});
    const QORUnicodeString value("1");
    EXPECT_EQ(VELSysTSAddArg(static_cast<const char*>(nullptr), &value), VEL::StatusFailure);
    EXPECT_EQ(VELSysTSAddArg(static_cast<const char*>(nullptr), nullptr), VEL::StatusFailure);
    EXPECT_EQ(VELSysTSResetArg(static_cast<const char*>(nullptr)), VEL::StatusFailure);
    EXPECT_EQ(Get(nullptr), Missing());
    EXPECT_EQ(Get("a"), Value("1"));
}

TEST(VELSysTSArg, KeepsSurrogatesAndAllOtherCharacters) {
    std::u16string text = u"é€\U0001F600\uFFFD x";
    for (char16_t unit = 1; unit < 0xD800; unit += 251) {
        text += unit;
    }
    QORUnicodeString value;
    value.BuildFromUCChar(StringBlocks::Units(text.c_str()), static_cast<int>(text.size()));
    ASSERT_EQ(VELSysTSAddArg("a", &value), 0);
    QORUnicodeString found;
    int hasValue = 0;
    ASSERT_EQ(VELSysTSGetArg("a", hasValue, found), 0);
    EXPECT_EQ(found, value);
    EXPECT_EQ(StringBlocks::Units(found.ConvertToUCChar(), found.GetLengthInChar()), text);
}

TEST(VELSysTSArg, HandsOutWideText) {
    Set({"-a=text"});
    QORUnicodeString value;
    int hasValue = 0;
    VELSysTSGetArg("a", hasValue, value);
    EXPECT_EQ(VEL::GetMainRepEncoding(value), VEL::MainRepWide);
}

TEST(VELSysTSArg, CommandLineIsUTF8WhateverTheCodePage) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    Set({"-a=\xC3\xA9"});
    QORUnicodeString value;
    int hasValue = 0;
    VELSysTSGetArg("a", hasValue, value);
    EXPECT_EQ(StringBlocks::Units(value.ConvertToUCChar(), value.GetLengthInChar()), u"é");
}

TEST(VELSysTSArg, HandsOutValuesOfAnyLength) {
    for (const std::size_t length : {511UL, 512UL, 513UL, 200000UL}) {
        const std::string text(length, 'x');
        Set({"-a=" + text});
        EXPECT_EQ(Get("a"), Value(text));
    }
}

TEST(VELSysTSArg, HandsOutDamagedTextWithoutReadingBehindIt) {
    for (const char* text : {"\xF0", "\xF0\x9F", "\xE2\x82", "\xC3", "a\xFF", "\x80"}) {
        Set({std::string("-a=") + text});
        EXPECT_EQ(Get("a").status, 0);
        EXPECT_EQ(Get("a").hasValue, 1);
    }
}

TEST(VELSysTSArg, AnswersTheFormWithoutTheOrigin) {
    Set({"-a=1", "-b"});
    int hasValue = 77;
    QORUnicodeString value(Untouched);
    EXPECT_EQ(VELSysTSGetArg("b", hasValue, value), 0);
    EXPECT_EQ(hasValue, 0);
    EXPECT_EQ(UTF8Of(value), Untouched);
    EXPECT_EQ(VELSysTSGetArg("a", hasValue, value), 0);
    EXPECT_EQ(hasValue, 1);
    EXPECT_EQ(UTF8Of(value), "1");
    hasValue = 77;
    EXPECT_EQ(VELSysTSGetArg("c", hasValue, value), VEL::StatusNotFound);
    EXPECT_EQ(hasValue, 77);
    EXPECT_EQ(UTF8Of(value), "1");
}

TEST(VELSysTSArg, AnswersTheThreadSafeString) {
    QORSysTSUnicodeString text("1");
    ASSERT_EQ(VELSysTSAddArg("a", &text), 0);
    EXPECT_STREQ(text.ConvertToChar(), "1") << "the argument stays";
    VELSysTSAddArg("b", nullptr);
    int hasValue = 77;
    int isAdded = 77;
    QORSysTSUnicodeString value(Untouched);
    EXPECT_EQ(VELSysTSGetArg("b", hasValue, isAdded, value), 0);
    EXPECT_STREQ(value.ConvertToChar(), Untouched);
    EXPECT_EQ(VELSysTSGetArg("c", hasValue, isAdded, value), VEL::StatusNotFound);
    EXPECT_STREQ(value.ConvertToChar(), Untouched);
    EXPECT_EQ(VELSysTSGetArg("a", hasValue, isAdded, value), 0);
    EXPECT_STREQ(value.ConvertToChar(), "1");
    EXPECT_EQ(hasValue, 1);
    EXPECT_EQ(isAdded, 1);
    value = Untouched;
    EXPECT_EQ(VELSysTSGetArg("a", hasValue, value), 0);
    EXPECT_STREQ(value.ConvertToChar(), "1");
}

TEST(VELSysTSArg, TakesKeysThatAreNotConstant) {
    char key[] = "a";
    const QORUnicodeString text("1");
    QORSysTSUnicodeString safeText("2");
    int hasValue = 0;
    int isAdded = 0;
    QORUnicodeString value;
    QORSysTSUnicodeString safeValue;
    EXPECT_EQ(VELSysTSAddArg(key, &text), 0);
    EXPECT_EQ(VELSysTSGetArg(key, hasValue, isAdded, value), 0);
    EXPECT_EQ(UTF8Of(value), "1");
    EXPECT_EQ(VELSysTSAddArg(key, &safeText), 0);
    EXPECT_EQ(VELSysTSGetArg(key, hasValue, value), 0);
    EXPECT_EQ(UTF8Of(value), "2");
    EXPECT_EQ(VELSysTSGetArg(key, hasValue, isAdded, safeValue), 0);
    EXPECT_STREQ(safeValue.ConvertToChar(), "2");
    EXPECT_EQ(VELSysTSGetArg(key, hasValue, safeValue), 0);
    EXPECT_EQ(VELSysTSResetArg(key), 0);
    EXPECT_EQ(VELSysTSResetArg(key), VEL::StatusFailure);
}

TEST(VELSysTSArg, HoldsManyOptions) {
    std::vector<std::string> arguments;
    for (int i = 0; i < 3000; ++i) {
        arguments.push_back("-k" + std::to_string(i) + "=" + std::to_string(i));
    }
    Set(arguments);
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(Get(("k" + std::to_string(i)).c_str()), Value(std::to_string(i)));
    }
    for (int i = 0; i < 3000; i += 2) {
        ASSERT_EQ(VELSysTSResetArg(("k" + std::to_string(i)).c_str()), 0);
    }
    for (int i = 1; i < 3000; i += 2) {
        ASSERT_EQ(Get(("k" + std::to_string(i)).c_str()), Value(std::to_string(i)));
    }
}

TEST(ArgEnt, HasAVirtualDestructorAlone) {
    EXPECT_TRUE(std::has_virtual_destructor_v<ArgEnt>);
    const ArgEnt record;
    EXPECT_EQ(record.key, nullptr);
    EXPECT_EQ(record.value, nullptr);
}

TEST(ArgEnt, OfALookUpOwnsNothing) {
    char key[] = "key";
    char value[] = "value";
    ArgEnt record;
    record.key = key;
    record.value = value;
    record.hasValue = -1;
}
