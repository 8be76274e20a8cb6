/// @file
/// Processes whose very first act needs the language: a text, the converter, a query, a session; on one thread and on
/// several at once; with a table that each of the variables tells, and without one.
///
/// The decision uses texts, which want the converter, which wants the decision: it is met half made on the way, and the
/// end must be as if it had not been.

#include "LanguageChild.h"
#include "LanguageTest.h"
#include "QORSysSession.h"
#include "QORUnicodeString.h"
#include "VELSysCodePage.h"

#include <atomic>
#include <barrier>
#include <gmock/gmock.h>
#include <ostream>
#include <thread>

namespace {

using LanguageChild::Outcome;
using LanguageChild::Rows;
using LanguageChild::Setting;
using LanguageChild::Table;
using testing::ElementsAre;

constexpr int Threads = 4;

template <int Number>
void EmptyHook(const VELSysNLSEnv&) {}

void Act(const std::string& act) {
    if (act == "text") {
        const QORUnicodeString text("caf\xC3\xA9");
        const QORUnicodeString other("\xA4\xA2");
    } else if (act == "units") {
        const QORUnicodeString text("caf\xE9");
        text.ConvertToUCChar();
    } else if (act == "converter") {
        VELSysCodePage::GetEnvConverter();
    } else if (act == "query") {
        VELSysNLSEnv env;
        GetEnvNLSData(&env);
    } else if (act == "table") {
        GetCodePageByLanguage("Japanese", nullptr);
    } else if (act == "detect") {
        VELSysNLSEntry entry;
        DetectNLSCoreFromEnvironment(entry);
    } else if (act == "session") {
        QORSysNewSessionTS(0, 0, nullptr);
    }
}

/// Each act as a program needs it, on all threads at once.
void ActAtOnce(const std::vector<std::string>& acts) {
    std::barrier<> start(static_cast<std::ptrdiff_t>(acts.size()));
    std::vector<std::jthread> threads;
    for (const std::string& act : acts) {
        threads.emplace_back([&start, &act] {
            start.arrive_and_wait();
            Act(act);
        });
    }
}

struct Place {
    const char* name;
    std::map<std::string, std::string> variables;
    const char* record;
    const char* codePage;
};

using Case = std::tuple<const char*, Place, bool>;

class FirstUse : public testing::TestWithParam<Case> {
protected:
    static Setting SettingOf(const Place& place) {
        Setting setting{.lang = "fr_FR.ISO-8859-1", .table = Table(Rows), .more = place.variables};
        setting.more.insert({"QORReffilesPath", "-"});
        return setting;
    }

    /// What a process that began with `arguments` is in the end.
    static void ExpectSettled(const std::string& program, std::vector<std::string> arguments) {
        const auto& [act, place, isTraced] = GetParam();
        Setting setting = SettingOf(place);
        setting.script = std::move(arguments);
        setting.isTraced = isTraced;
        const Outcome outcome = LanguageChild::Run(program, setting);
        EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal << '\n' << outcome.err;
        EXPECT_THAT(outcome.report, ElementsAre(place.record, std::string("converter ") + place.codePage));
        if (!isTraced) {
            EXPECT_EQ(outcome.out + outcome.err, "");
        }
    }
};

// LANG names ISO-8859-1, which the nested converter is made for, and the table has the locale in UTF-8 only.
constexpr const char* French = "French|fr|fr_FR.UTF-8|UTF-8|,|4";

const Place Places[] = {
    {"ReferenceFiles", {{"QORReffilesPath", "{}"}}, French, "UTF-8"},
    {"Installation", {{"QORInstallPath", "{}/install"}}, French, "UTF-8"},
    {"File", {{"VELSysNLSInstallPath", "{}/NLS/SUPPLANG_R9"}}, French, "UTF-8"},
    {"NoTable", {{"LANG", "fr_FR.UTF-8"}}, "English||fr_FR.UTF-8|UTF-8|.|1", "UTF-8"},
};

std::string NameOf(const testing::TestParamInfo<Case>& test) {
    const auto& [act, place, isTraced] = test.param;
    return std::string(act) + place.name + (isTraced ? "Traced" : "");
}

} // namespace

CHILD_PROGRAM(ActsFirst) {
    LanguageChild::BeginChild();
    Act(arguments[0]);
    LanguageChild::PlayStep("record");
    LanguageChild::PlayStep("converter");
    return 0;
}

CHILD_PROGRAM(ActsFirstOnThreads) {
    LanguageChild::BeginChild();
    ActAtOnce(arguments);
    LanguageChild::PlayStep("record");
    LanguageChild::PlayStep("converter");
    return 0;
}

INSTANTIATE_TEST_SUITE_P(Each, FirstUse,
                         testing::Combine(testing::Values("text", "units", "converter", "query", "table", "detect",
                                                          "session"),
                                          testing::ValuesIn(Places), testing::Bool()),
                         NameOf);

TEST_P(FirstUse, OnOneThreadSettles) {
    ExpectSettled("ActsFirst", {std::get<0>(GetParam())});
}

TEST_P(FirstUse, OnSeveralThreadsSettles) {
    ExpectSettled("ActsFirstOnThreads", std::vector<std::string>(Threads, std::get<0>(GetParam())));
}

TEST(FirstUseMixed, OnSeveralThreadsSettles) {
    for (int round = 0; round < 20; ++round) {
        const Outcome outcome = LanguageChild::Run(
            "ActsFirstOnThreads",
            {.lang = "fr_FR.ISO-8859-1", .table = Table(Rows), .script = {"session", "text", "query", "converter"}});
        EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal << '\n' << outcome.err;
        EXPECT_THAT(outcome.report, ElementsAre(French, "converter UTF-8"));
        EXPECT_EQ(outcome.out + outcome.err, "");
    }
}

// A process that has filled all places of the hooks before.

CHILD_PROGRAM(FillsThePlacesFirst) {
    LanguageChild::BeginChild();
    RegisterNLSChangeHook(EmptyHook<0>);
    RegisterNLSChangeHook(EmptyHook<1>);
    RegisterNLSChangeHook(EmptyHook<2>);
    LanguageChild::Report("last " + std::to_string(RegisterNLSChangeHook(EmptyHook<3>)));
    ActAtOnce(arguments);
    LanguageChild::PlayStep("record");
    LanguageChild::PlayStep("converter");
    return 0;
}

namespace {
class FirstUseWithoutAHook : public testing::TestWithParam<const char*> {};
} // namespace

INSTANTIATE_TEST_SUITE_P(Each, FirstUseWithoutAHook,
                         testing::Values("text", "units", "converter", "query", "table", "detect", "session"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(FirstUseWithoutAHook, ConvertsRightlyForTheLanguageItHas) {
    for (const int threads : {1, Threads}) {
        const Outcome outcome = LanguageChild::Run(
            "FillsThePlacesFirst",
            {.lang = "fr_FR.UTF-8", .table = Table(Rows), .script = std::vector<std::string>(threads, GetParam())});
        EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal << '\n' << outcome.err;
        EXPECT_THAT(outcome.report, ElementsAre("last 0", French, "converter UTF-8"));
    }
}

TEST(FirstUseWithoutAHookInUTF8, TheConverterIsTheRecords) {
    for (const char* const act : {"text", "units", "converter", "query", "session", "table", "detect"}) {
        for (const int threads : {1, Threads}) {
            const Outcome outcome = LanguageChild::Run(
                "FillsThePlacesFirst",
                {.lang = "fr_FR.ISO-8859-1", .table = Table(Rows), .script = std::vector<std::string>(threads, act)});
            EXPECT_EQ(outcome.exitCode, 0) << act << ", signal " << outcome.signal << '\n' << outcome.err;
            EXPECT_THAT(outcome.report, ElementsAre("last 0", French, "converter UTF-8")) << act;
        }
    }
}

TEST(FirstUseInEUC, TheConverterIsTheRecords) {
    for (const char* const act : {"text", "units", "converter", "query", "table", "detect", "session"}) {
        const Outcome outcome = LanguageChild::Run(
            "ActsFirstOnThreads",
            {.lang = "ja_JP.UTF-8", .table = Table(Rows), .script = std::vector<std::string>(Threads, act)});
        EXPECT_EQ(outcome.exitCode, 0) << act << ", signal " << outcome.signal << '\n' << outcome.err;
        EXPECT_THAT(outcome.report, ElementsAre("Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3", "converter EUC-JP")) << act;
    }
}

// A process that ends without having done anything with the language, or right after the first use.

CHILD_PROGRAM(AsksWhileItEnds) {
    LanguageChild::BeginChild();
    static const struct AsksLate {
        ~AsksLate() {
            LanguageChild::PlayStep("record");
            LanguageChild::PlayStep("converter");
        }
    } s_asksLate;
    return 0;
}

TEST(FirstUseAtTheEnd, Settles) {
    const Outcome outcome = LanguageChild::Run("AsksWhileItEnds", {.lang = "fr_FR.ISO-8859-1", .table = Table(Rows)});
    EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal << '\n' << outcome.err;
    EXPECT_THAT(outcome.report, ElementsAre(French, "converter UTF-8"));
    EXPECT_EQ(outcome.err, "");
}
