/// @file
/// Hooks of the language decision: registration, order, what they may do, and the codes of a decision from within.

#include "LanguageTest.h"
#include "QORSysSession.h"
#include "VELSysCodePage.h"
#include "VELSysHashMapString.h"
#include "VELSysLifeCycle.h"
#include "VELSysNLS.h"
#include "VELSysStatus.h"

#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LanguageHook : public LanguageTest {};

/// The calls of hooks, as "<hook> <language> <code page>".
std::vector<std::string> s_calls;
std::function<void(const VELSysNLSEnv&)> s_inside;

template <int Number>
void Hook(const VELSysNLSEnv& env) {
    s_calls.push_back(std::to_string(Number) + ' ' + env.language + ' ' + env.codePage);
    if (s_inside) {
        s_inside(env);
    }
}

constexpr void (*Hooks[])(const VELSysNLSEnv&) = {Hook<0>, Hook<1>, Hook<2>, Hook<3>, Hook<4>};

std::vector<std::string> Decide(const char* language) {
    s_calls.clear();
    EXPECT_EQ(InitNLSCore(language, true), 4);
    return s_calls;
}

/// Whether `query` comes to its end within a time in which it would if nobody held the lock.
template <class Query>
std::future<void> StartBlocked(Query query) {
    std::future<void> result = std::async(std::launch::async, query);
    EXPECT_EQ(result.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    return result;
}

} // namespace

TEST_F(LanguageHook, NullIsRefused) {
    EXPECT_EQ(RegisterNLSChangeHook(nullptr), static_cast<int>(0x80070057));
}

TEST_F(LanguageHook, TwiceIsOnce) {
    EXPECT_EQ(RegisterNLSChangeHook(Hook<0>), VEL::StatusOk);
    EXPECT_EQ(RegisterNLSChangeHook(Hook<0>), 1);
    EXPECT_THAT(Decide("German"), ElementsAre("0 German ISO-8859-1"));
}

TEST_F(LanguageHook, FiveAreTooMany) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(RegisterNLSChangeHook(Hooks[i]), VEL::StatusOk) << i;
    }
    EXPECT_EQ(RegisterNLSChangeHook(Hooks[4]), static_cast<int>(0x80004005));
    EXPECT_EQ(RegisterNLSChangeHook(Hooks[3]), 1) << "known though all places are taken";
    EXPECT_EQ(RegisterNLSChangeHook(nullptr), static_cast<int>(0x80070057));
    EXPECT_THAT(Decide("Japanese"),
                ElementsAre("0 Japanese EUC-JP", "1 Japanese EUC-JP", "2 Japanese EUC-JP", "3 Japanese EUC-JP"));
}

TEST_F(LanguageHook, TheConverterTakesAPlace) {
    VELSysCodePage::GetEnvConverter();
    EXPECT_EQ(RegisterNLSChangeHook(VELSysCodePage::OnChangeNLSCore), 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(RegisterNLSChangeHook(Hooks[i]), VEL::StatusOk) << i;
    }
    EXPECT_EQ(RegisterNLSChangeHook(Hooks[3]), static_cast<int>(0x80004005));
}

TEST_F(LanguageHook, RunsInOrderOfRegistration) {
    RegisterNLSChangeHook(Hook<2>);
    RegisterNLSChangeHook(Hook<0>);
    RegisterNLSChangeHook(Hook<1>);
    EXPECT_THAT(Decide("German"), ElementsAre("2 German ISO-8859-1", "0 German ISO-8859-1", "1 German ISO-8859-1"));
}

TEST_F(LanguageHook, RegistrationDecidesNothing) {
    RegisterNLSChangeHook(Hook<0>);
    EXPECT_THAT(s_calls, IsEmpty());
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_F(LanguageHook, RunsAtEachDecisionAndOnlyThen) {
    RegisterNLSChangeHook(Hook<0>);
    InitNLSCore(nullptr, false);
    InitNLSCore(nullptr, false);
    VELGetMultiByteCharMaxSize();
    InitNLSCore("Japanese", false);
    DeInitNLSCore(0);
    InitNLSCore("Japanese", false);
    VELSysNLSEntry entry;
    DetectNLSCoreFromEnvironment(entry);
    EXPECT_THAT(s_calls, ElementsAre("0 German ISO-8859-1", "0 Japanese EUC-JP", "0 Japanese EUC-JP"));
}

TEST_F(LanguageHook, DoesNotRunWithoutATable) {
    RemoveTable();
    RegisterNLSChangeHook(Hook<0>);
    EXPECT_EQ(InitNLSCore(nullptr, false), 0);
    EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(LanguageHook, GetsTheRecord) {
    RegisterNLSChangeHook(Hook<0>);
    VELSysNLSEnv given;
    s_inside = [&](const VELSysNLSEnv& env) { given = env; };
    InitNLSCore("French", false);
    VELSysNLSEnv record;
    GetEnvNLSData(&record);
    EXPECT_STREQ(given.language, record.language);
    EXPECT_STREQ(given.alias, record.alias);
    EXPECT_STREQ(given.langString, record.langString);
    EXPECT_STREQ(given.codePage, record.codePage);
    EXPECT_STREQ(given.decimalPoint, record.decimalPoint);
    EXPECT_EQ(given.maxCharSize, record.maxCharSize);
    EXPECT_STREQ(given.decimalPoint, L",");
}

TEST_F(LanguageHook, RunsOnTheThreadThatDecidesBehindTheDecision) {
    RegisterNLSChangeHook(Hook<0>);
    const std::thread::id self = std::this_thread::get_id();
    bool isRequired = true;
    s_inside = [&](const VELSysNLSEnv&) {
        EXPECT_EQ(std::this_thread::get_id(), self);
        bool ignored = false;
        isRequired = VELSysNLS::Instance().IsInitNLSRequired(nullptr, ignored, ignored);
        EXPECT_EQ(VELSysNLS::Instance().languages.count("Korean"), 1U);
        EXPECT_EQ(VELGetCxxLocale()->name(), "de_DE.ISO-8859-1");
    };
    Decide(nullptr);
    EXPECT_FALSE(isRequired);
}

TEST_F(LanguageHook, RunsWithTheWriteLockHeld) {
    RegisterNLSChangeHook(Hook<0>);
    std::vector<std::future<void>> blocked;
    s_inside = [&](const VELSysNLSEnv&) {
        blocked.push_back(StartBlocked([] { VELGetMultiByteCharMaxSize(); }));
        blocked.push_back(StartBlocked([] { RegisterNLSChangeHook(Hook<1>); }));
        blocked.push_back(StartBlocked([] { GetCodePageByLanguage("German", nullptr); }));
    };
    Decide(nullptr);
    for (std::future<void>& query : blocked) {
        query.get();
    }
    EXPECT_EQ(RegisterNLSChangeHook(Hook<1>), 1);
}

TEST_F(LanguageHook, MayQuery) {
    RegisterNLSChangeHook(Hook<0>);
    std::string record;
    std::vector<std::string> rows;
    s_inside = [&](const VELSysNLSEnv&) {
        record = LanguageChild::Record();
        rows = RowsFound();
        EXPECT_EQ(VELGetMultiByteCharMaxSize(), 3);
        EXPECT_EQ(GetLocaleTypeFromCP("BIG5"), 3);
        EXPECT_STREQ(VELSysCodePage::GetEnvConverter().GetName(), VELSysCodePage::GetEnvConverter().GetName());
    };
    Decide("Japanese");
    EXPECT_EQ(record, "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3");
    EXPECT_EQ(rows.size(), 10U);
}

TEST_F(LanguageHook, SeesTheLaterDecisionAndNoRecordOfTheEarlier) {
    ASSERT_EQ(InitNLSCore("German", false), 4);
    ASSERT_EQ(LanguageChild::Record(), "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1");
    RegisterNLSChangeHook(Hook<0>);
    s_inside = [](const VELSysNLSEnv&) {
        EXPECT_EQ(LanguageChild::Record(), "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3");
        EXPECT_EQ(VELGetMultiByteCharMaxSize(), 3);
    };
    EXPECT_THAT(Decide("Japanese"), ElementsAre("0 Japanese EUC-JP"));
}

TEST_F(LanguageHook, OfALaterDecisionKeepsTheRecordFromOtherThreads) {
    ASSERT_EQ(InitNLSCore("German", false), 4);
    ASSERT_EQ(LanguageChild::Record(), "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1");
    RegisterNLSChangeHook(Hook<0>);
    std::string seen;
    std::future<void> blocked;
    std::future<int> request;
    s_inside = [&](const VELSysNLSEnv&) {
        blocked = StartBlocked([&seen] { seen = LanguageChild::Record(); });
        request = std::async(std::launch::async, [] { return InitNLSCore(nullptr, false); });
        EXPECT_EQ(request.wait_for(std::chrono::seconds(30)), std::future_status::ready) << "it needs no lock";
    };
    Decide("Japanese");
    blocked.get();
    EXPECT_EQ(seen, "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3");
    EXPECT_EQ(request.get(), 1);
}

TEST_F(LanguageHook, FromWithinADecisionIsNotMade) {
    RegisterNLSChangeHook(Hook<0>);
    std::vector<int> codes;
    s_inside = [&](const VELSysNLSEnv&) {
        codes = {InitNLSCore(nullptr, false), InitNLSCore(nullptr, true),     InitNLSCore("Korean", false),
                 InitNLSCore("", false),      InitNLSCore("Japanese", false), InitNLSCore("Japanese", true)};
    };
    EXPECT_THAT(Decide("Japanese"), ElementsAre("0 Japanese EUC-JP"));
    EXPECT_THAT(codes, ElementsAre(1, 2, 2, 2, 1, 2));
    EXPECT_EQ(LanguageChild::Record(), "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3");
    EXPECT_EQ(InitNLSCore("Korean", false), 4) << "the next one is made again";
}

TEST_F(LanguageHook, FromWithinTheTableIsNotMadeEither) {
    RegisterNLSChangeHook(Hook<0>);
    int code = -1;
    s_inside = [&](const VELSysNLSEnv&) {
        VELSysNLSFilter filter{};
        filter.argument = &code;
        filter.predicate = [](const VELSysNLSEntry&, void* argument) {
            *static_cast<int*>(argument) = InitNLSCore("Korean", true);
            return 0;
        };
        int count = 0;
        GetNLSInformationA(filter, 1, count, nullptr);
    };
    Decide("Japanese");
    EXPECT_EQ(code, 2);
}

TEST_F(LanguageHook, MayAnnounceAChange) {
    RegisterNLSChangeHook(Hook<0>);
    s_inside = [](const VELSysNLSEnv&) { DeInitNLSCore(0); };
    Decide("Japanese");
    s_inside = nullptr;
    EXPECT_EQ(LanguageChild::Record(), "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1");
}

TEST_F(LanguageHook, MayRegisterAHook) {
    RegisterNLSChangeHook(Hook<0>);
    std::vector<int> codes;
    s_inside = [&](const VELSysNLSEnv&) { codes.push_back(RegisterNLSChangeHook(Hook<1>)); };
    Decide("Japanese");
    ASSERT_FALSE(codes.empty());
    EXPECT_EQ(codes.front(), VEL::StatusOk);
    s_inside = nullptr;
    EXPECT_THAT(Decide("Korean"), ElementsAre("0 Korean EUC-KR", "1 Korean EUC-KR"));
}

TEST_F(LanguageHook, RegisteredByAHookRunsInTheSameDecisionWithTheSameRecord) {
    RegisterNLSChangeHook(Hook<0>);
    std::vector<const VELSysNLSEnv*> records;
    s_inside = [&](const VELSysNLSEnv& env) {
        records.push_back(&env);
        RegisterNLSChangeHook(Hook<1>);
    };
    EXPECT_THAT(Decide("Japanese"), ElementsAre("0 Japanese EUC-JP", "1 Japanese EUC-JP"));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0], records[1]);
}

TEST_F(LanguageHook, MayFillThePlaces) {
    RegisterNLSChangeHook(Hook<0>);
    RegisterNLSChangeHook(Hook<1>);
    s_inside = [](const VELSysNLSEnv&) {
        for (const auto hook : Hooks) {
            RegisterNLSChangeHook(hook);
        }
    };
    EXPECT_EQ(InitNLSCore("Japanese", false), 4);
    s_inside = nullptr;
    // The converter took one of the places while the table was read.
    EXPECT_THAT(Decide("Korean"), ElementsAre("0 Korean EUC-KR", "1 Korean EUC-KR", "2 Korean EUC-KR"));
    EXPECT_EQ(RegisterNLSChangeHook(Hook<3>), static_cast<int>(0x80004005));
}

// The order at which the converter follows.

TEST_F(LanguageHook, OfTheConverterRunsInItsPlace) {
    setenv("LANG", "fr_FR.UTF-8", 1);
    RegisterNLSChangeHook(Hook<0>);
    RegisterNLSChangeHook(VELSysCodePage::OnChangeNLSCore);
    RegisterNLSChangeHook(Hook<1>);
    const VELSysCodePage* const before = &VELSysCodePage::GetEnvConverter();
    std::vector<const VELSysCodePage*> seen;
    s_inside = [&](const VELSysNLSEnv&) { seen.push_back(&VELSysCodePage::GetEnvConverter()); };
    Decide(nullptr);
    EXPECT_THAT(seen, ElementsAre(before, &VELSysCodePage::GetEnvConverter()));
    EXPECT_NE(before, &VELSysCodePage::GetEnvConverter());
    EXPECT_TRUE(VELSysCodePage::GetEnvConverter().IsUTF8());
}

// The session frame.

TEST_F(LanguageHook, RunsWhenASessionBegins) {
    RegisterNLSChangeHook(Hook<0>);
    QORSysNewSessionTS(0, 0, nullptr);
    EXPECT_THAT(s_calls, ElementsAre("0 German ISO-8859-1"));
    QORSysNewSessionTS(0, 0, nullptr);
    EXPECT_THAT(s_calls, ElementsAre("0 German ISO-8859-1"));
}

TEST_F(LanguageHook, RunsWhenTheLifeCycleIsInitialised) {
    RegisterNLSChangeHook(Hook<0>);
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(s_calls, ElementsAre("0 German ISO-8859-1"));
}

TEST_F(LanguageHook, RunsWhenALanguageIsPreferred) {
    RegisterNLSChangeHook(Hook<0>);
    VELSysHashMapString settings;
    settings.Put("sys.nls.core.preferredlang", "Korean");
    VELSystemInit(settings);
    EXPECT_EQ(s_calls.back(), "0 Korean EUC-KR");
    s_calls.clear();
    VELSystemInit(settings);
    EXPECT_THAT(s_calls, ElementsAre("0 Korean EUC-KR")) << "announced anew";
    VELSystemInit(VELSysHashMapString());
    EXPECT_THAT(s_calls, ElementsAre("0 Korean EUC-KR")) << "not asked for";
}
