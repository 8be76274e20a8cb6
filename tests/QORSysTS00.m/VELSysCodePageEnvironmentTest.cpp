/// @file
/// The converter of the environment: when it is made, what it follows, how long it lives.

#include "Child.h"
#include "LanguageCalls.h"
#include "VELString.h"
#include "VELSysCodePage.h"
#include "VELSysStatus.h"
#include "VELSysTSDataQueue.h"

#include <csignal>
#include <cstdio>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace LanguageCalls;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const VELSysCodePage* Converter() {
    return &VELSysCodePage::GetEnvConverter();
}

/// The code pages of the objects that went away, in order.
std::vector<std::string>& Destroyed() {
    // Objects go away to the very end of the process.
    static auto& destroyed = *new std::vector<std::string>;
    return destroyed;
}
bool s_tellsDestruction = false;

/// What the debugger was told, with the converter in force at that time; only once there is one.
std::vector<std::string>& Told() {
    static auto& told = *new std::vector<std::string>;
    return told;
}
bool s_recordsTold = false;
/// Runs inside the next word to the debugger.
std::function<void()> s_insideNextWord;

/// A request from inside the decision, whose record is "ISO-8859-1" so far; then the decision is for `codePage`.
const VELSysCodePage* RequestedFromWithin(const std::string& codePage) {
    const VELSysCodePage* answer = nullptr;
    s_initResult = 2;
    s_codePage = "ISO-8859-1";
    answer = Converter();
    s_initResult = 1;
    s_codePage = codePage;
    return answer;
}

} // namespace

extern "C" void __real__ZN14VELSysCodePageD2Ev(VELSysCodePage* self);
extern "C" void __wrap__ZN14VELSysCodePageD2Ev(VELSysCodePage* self) {
    if (s_tellsDestruction) {
        std::printf("~%s\n", self->GetName());
        std::fflush(stdout);
    } else {
        Destroyed().emplace_back(self->GetName() != nullptr ? self->GetName() : "");
    }
    __real__ZN14VELSysCodePageD2Ev(self);
}

extern "C" int __real__ZN17VELSysTSDataQueue8PushLastEPvi(VELSysTSDataQueue* self, void* entry, int milliseconds);
extern "C" int __wrap__ZN17VELSysTSDataQueue8PushLastEPvi(VELSysTSDataQueue* self, void* entry, int milliseconds) {
    if (s_tellsDestruction) {
        std::puts("queued");
    }
    return __real__ZN17VELSysTSDataQueue8PushLastEPvi(self, entry, milliseconds);
}

extern "C" void __real__ZN3VEL8internal22TellDebuggerOfCodePageEb(bool isUTF8);
extern "C" void __wrap__ZN3VEL8internal22TellDebuggerOfCodePageEb(bool isUTF8) {
    if (s_insideNextWord) {
        std::exchange(s_insideNextWord, nullptr)();
    }
    if (s_recordsTold) {
        Told().push_back((isUTF8 ? "UTF-8 in " : "other in ") + std::string(Converter()->GetName()));
    }
    __real__ZN3VEL8internal22TellDebuggerOfCodePageEb(isUTF8);
}

TEST(EnvironmentConverter, RegistersAheadOfAskingForTheRecord) {
    s_codePage = "EUC-JP";
    s_langString = "ja";
    s_maxCharSize = 3;
    const VELSysCodePage* const converter = Converter();
    EXPECT_STREQ(converter->GetName(), "EUC-JP");
    EXPECT_EQ(converter->GetMaxCharSize(), 3);
    EXPECT_THAT(Calls(), ElementsAre("RegisterNLSChangeHook", "GetEnvNLSData", "GetLocaleStringFromLangString ja 85"));
    EXPECT_EQ(Converter(), converter);
    EXPECT_EQ(Calls().size(), 3u) << "nobody is asked again";
}

TEST(DebuggersWord, IsToldByTheMakerOfTheFirstConverter) {
    s_codePage = "EUC-JP";
    s_recordsTold = true;
    *s_pQUSFlagsForDebugger = 0xFFFF0007;
    Converter();
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFF0004u);
    EXPECT_THAT(Told(), ElementsAre("other in EUC-JP"));
    Converter();
    EXPECT_EQ(Told().size(), 1u);
}

TEST(DebuggersWord, IsToldAheadOfAChangeAndAfterIt) {
    Change("EUC-JP");
    s_recordsTold = true;
    *s_pQUSFlagsForDebugger = 0xFFFF0006;
    Change("UTF-8");
    EXPECT_THAT(Told(), ElementsAre("UTF-8 in EUC-JP", "UTF-8 in UTF-8"));
    EXPECT_EQ(*s_pQUSFlagsForDebugger, 0xFFFF0005u) << "the other bits stay";
}

TEST(DebuggersWord, IsNotTakenByAMakerThatCameTooLate) {
    s_insideNextRequest = [] {
        Change("EUC-KR");
        s_recordsTold = true;
        s_codePage = "UTF-8";
    };
    EXPECT_STREQ(Converter()->GetName(), "EUC-KR");
    EXPECT_THAT(Told(), testing::IsEmpty());
}

TEST(DebuggersWord, IsToldAgainWhenTheConverterWasReplacedMeanwhile) {
    s_codePage = "EUC-JP";
    s_insideNextWord = [] { Change("UTF-8"); };
    s_recordsTold = true;
    EXPECT_STREQ(Converter()->GetName(), "UTF-8");
    EXPECT_THAT(Told(), ElementsAre("UTF-8 in EUC-JP", "UTF-8 in UTF-8", "other in UTF-8", "UTF-8 in UTF-8"));
    EXPECT_EQ(*s_pQUSFlagsForDebugger & 1, 1u);
}

TEST(EnvironmentConverter, IsThatOfAChangeThatCameInBetween) {
    s_insideNextRequest = [] { Change("EUC-KR"); };
    const VELSysCodePage* const converter = Converter();
    EXPECT_STREQ(converter->GetName(), "EUC-KR");
    EXPECT_THAT(Destroyed(), ElementsAre("EUC-KR")) << "the one that came too late";
    EXPECT_EQ(Converter(), converter);
    EXPECT_EQ(*s_pQUSFlagsForDebugger & 1, 0u);
}

TEST(EnvironmentConverter, IsReplacedByTheHookWhenItWasMadeFromWithinTheDecision) {
    const VELSysCodePage* within = nullptr;
    s_insideNextRequest = [&] {
        within = RequestedFromWithin("EUC-JP");
        EXPECT_EQ(Converter(), within);
        Change("EUC-JP");
    };
    EXPECT_STREQ(Converter()->GetName(), "EUC-JP");
    ASSERT_NE(within, nullptr);
    EXPECT_STREQ(within->GetName(), "ISO-8859-1") << "it stays usable";
    EXPECT_THAT(Destroyed(), ElementsAre("EUC-JP"));
}

TEST(RefusedHook, LeavesTheSettledRecordInForce) {
    s_refusal = VEL::StatusFailure;
    const VELSysCodePage* within = nullptr;
    s_insideNextRequest = [&] { within = RequestedFromWithin("EUC-JP"); };
    const VELSysCodePage* const converter = Converter();
    EXPECT_STREQ(converter->GetName(), "EUC-JP");
    EXPECT_EQ(Converter(), converter);
    ASSERT_NE(within, nullptr);
    EXPECT_STREQ(within->GetName(), "ISO-8859-1") << "it stays usable";
    EXPECT_THAT(Destroyed(), testing::IsEmpty());
    EXPECT_THAT(Calls(), ElementsAre("RegisterNLSChangeHook", "GetEnvNLSData", "GetEnvNLSData",
                                     "GetLocaleStringFromLangString  85", "InitNLSCore",
                                     "GetLocaleStringFromLangString  85", "InitNLSCore"));
}

TEST(RefusedHook, LeavesTheSettledRecordInForceWhenNobodyAskedFromOutside) {
    s_refusal = VEL::StatusFailure;
    EXPECT_STREQ(RequestedFromWithin("EUC-JP")->GetName(), "ISO-8859-1");
    EXPECT_STREQ(Converter()->GetName(), "EUC-JP");
}

TEST(RefusedHook, KeepsOneConverterForManyRequestsFromWithin) {
    s_refusal = VEL::StatusFailure;
    s_initResult = 2;
    s_codePage = "EUC-JP";
    const VELSysCodePage* const first = Converter();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Converter(), first);
    }
    EXPECT_EQ(Destroyed(), std::vector<std::string>(5, "EUC-JP")) << "all that were made in vain";
    s_codePage = "EUC-KR";
    const VELSysCodePage* const second = Converter();
    EXPECT_STREQ(second->GetName(), "EUC-KR") << "the record changed";
    EXPECT_EQ(Converter(), second);
    EXPECT_EQ(Destroyed().size(), 6u);
    EXPECT_STREQ(first->GetName(), "EUC-JP") << "it stays usable";
}

CHILD_PROGRAM(HasNoCodePage) {
    s_codePage = "";
    Converter();
    return 0;
}

TEST(EnvironmentConverter, NeedsACodePage) {
    const Child child = RunChild("HasNoCodePage");
    EXPECT_EQ(child.signal, SIGABRT);
    EXPECT_THAT(child.err, HasSubstr("l_NLSEntry.codePage && strcmp(l_NLSEntry.codePage, \"\")"));
}

namespace {

/// Destroyed behind all that is made later.
struct ChangesLanguageAtTheEnd {
    ~ChangesLanguageAtTheEnd() {
        if (s_tellsDestruction) {
            std::puts("late");
            Change("EUC-CN");
            Change("EUC-TW");
            std::puts(Converter()->GetName());
            std::fflush(stdout);
        }
    }
};

} // namespace

CHILD_PROGRAM(EndsAfterChanges) {
    static const ChangesLanguageAtTheEnd s_late;
    s_tellsDestruction = true;
    for (const char* name : {"EUC-JP", "EUC-KR", "UTF-8", "ISO-8859-1"}) {
        Change(name);
    }
    std::puts("end");
    std::fflush(stdout);
    return 0;
}

TEST(ReplacedConverters, LiveUntilTheProcessEnds) {
    const Child child = RunChild("EndsAfterChanges");
    EXPECT_EQ(child.out, "queued\nqueued\nqueued\nend\n~EUC-JP\n~EUC-KR\n~UTF-8\nlate\nEUC-TW\n");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.exitCode, 0);
}

TEST(ReplacedConverters, StayUsable) {
    Change("EUC-JP");
    const VELSysCodePage* const first = Converter();
    Change("UTF-8");
    const VELSysCodePage* const second = Converter();
    Change("ISO-8859-1");
    unsigned short units[4];
    EXPECT_EQ(first->ConvertMBCSToUTF16("\xA4\xA2", 2, units, nullptr), 1);
    EXPECT_EQ(second->ConvertMBCSToUTF16("\xE3\x81\x82", 3, units, nullptr), 1);
    EXPECT_EQ(Converter()->ConvertMBCSToUTF16("\xA4\xA2", 2, units, nullptr), 2);
    EXPECT_THAT(Destroyed(), testing::IsEmpty());
}

TEST(ChangeOfLanguage, TakesTheRecordAndTheLongestCharacterOfTheCore) {
    s_maxCharSize = 7;
    Change("EUC-JP", "ja");
    EXPECT_EQ(Converter()->GetMaxCharSize(), 7);
    EXPECT_THAT(Calls(), ElementsAre("GetLocaleStringFromLangString ja 85"));
    *s_pQUSFlagsForDebugger |= 1;
    Change("EUC-JP", "ja");
    EXPECT_EQ(*s_pQUSFlagsForDebugger & 1, 0u);
    Change("UTF-8");
    EXPECT_EQ(*s_pQUSFlagsForDebugger & 1, 1u);
}
