/// @file
/// What a decision does to the locales of the process: what it asks of the C library and in which order, and the
/// standard library's locale where that library refuses the name.

#include "LanguageChild.h"
#include "TestLocales.h"
#include "VELSysCLocale.h"
#include "VELSysNLSCore.h"

#include <clocale>
#include <cstdlib>
#include <gmock/gmock.h>
#include <locale>
#include <new>
#include <stdexcept>

namespace {

using LanguageChild::Outcome;
using LanguageChild::PlayStep;
using LanguageChild::Report;
using LanguageChild::Rows;
using LanguageChild::Table;
using testing::ElementsAre;

const std::string WithRefused = Table("German de de_DE;comma ISO-8859-1\nJapanese ja ja_JP.EUC-JP EUC-JP\n");

/// A facet that no locale has of its own.
struct Mark : std::locale::facet {
    static std::locale::id id;
};
std::locale::id Mark::id;

/// The arguments of VELSysCLocaleSetPerThread() so far.
std::vector<int> s_perThread;
/// Whether all that is made once the standard library has refused a locale is refused, too.
bool s_refusesTheRest = false;
bool s_hasRefused = false;

} // namespace

extern "C" {

int __real__Z25VELSysCLocaleSetPerThreadi(int perThread);
void __real__ZNSt6localeC1EPKc(std::locale* locale, const char* name);
void* __real__Znwm(std::size_t size);

int __wrap__Z25VELSysCLocaleSetPerThreadi(int perThread) {
    s_perThread.push_back(perThread);
    return __real__Z25VELSysCLocaleSetPerThreadi(perThread);
}

void __wrap__ZNSt6localeC1EPKc(std::locale* locale, const char* name) {
    try {
        __real__ZNSt6localeC1EPKc(locale, name);
    } catch (const std::runtime_error&) {
        s_hasRefused = s_refusesTheRest;
        throw;
    }
}

void* __wrap__Znwm(std::size_t size) {
    if (s_hasRefused) {
        s_hasRefused = false;
        throw std::runtime_error("refused");
    }
    return __real__Znwm(size);
}
}

CHILD_PROGRAM(AdoptsOnAMarkedLocale) {
    LanguageChild::BeginChild();
    std::locale::global(std::locale(std::locale(), new Mark));
    PlayStep("init");
    PlayStep("locale");
    Report(std::has_facet<Mark>(*VELGetCxxLocale()) ? "marked" : "not marked");
    return 0;
}

TEST(LanguageAdoption, OfARefusedLocaleStandsOnTheDefaultOne) {
    const Outcome outcome = LanguageChild::Run("AdoptsOnAMarkedLocale", {.lang = "de_DE;comma", .table = WithRefused});
    EXPECT_THAT(outcome.report, ElementsAre("init 4", "locale * ,, 0 0", "marked"));
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST(LanguageAdoption, OfAKnownLocaleDoesNot) {
    const Outcome outcome =
        LanguageChild::Run("AdoptsOnAMarkedLocale", {.lang = "de_DE.ISO-8859-1", .table = Table(Rows)});
    EXPECT_THAT(outcome.report, ElementsAre("init 4", "locale de_DE.ISO-8859-1 ,, 46 46", "not marked"));
    EXPECT_EQ(outcome.exitCode, 0);
}

CHILD_PROGRAM(AdoptsWhatIsRefusedTwice) {
    LanguageChild::BeginChild();
    PlayStep("init=Japanese");
    const std::shared_ptr<const std::locale> published = VELGetCxxLocale();
    s_refusesTheRest = true;
    PlayStep("init=");
    s_refusesTheRest = false;
    Report(VELGetCxxLocale() == published ? "the same" : "another");
    PlayStep("locale");
    PlayStep("record");
    PlayStep("init");
    return 0;
}

TEST(LanguageAdoption, ThatFailsTwiceIsSaidAndLeavesTheStandardLocale) {
    const Outcome outcome =
        LanguageChild::Run("AdoptsWhatIsRefusedTwice", {.lang = "de_DE;comma", .table = WithRefused});
    EXPECT_THAT(outcome.report, ElementsAre("init 4", "init 4", "the same", "locale ja_JP.EUC-JP .. 44 44",
                                            "German|de|de_DE;comma|ISO-8859-1|,|1", "init 1"));
    EXPECT_EQ(outcome.out, "[VELSysNLSCore] Catastrophic failure!\n") << "without a trace";
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
}

CHILD_PROGRAM(AsksForTheThreadsLocale) {
    LanguageChild::BeginChild();
    s_perThread.clear();
    for (const std::string& step : arguments) {
        PlayStep(step);
        std::string line = "asked";
        for (const int perThread : s_perThread) {
            line += ' ' + std::to_string(perThread);
        }
        Report(line);
        s_perThread.clear();
    }
    return 0;
}

TEST(LanguageAdoption, AsksForALocaleOfTheThread) {
    const Outcome outcome = LanguageChild::Run(
        "AsksForTheThreadsLocale",
        {.lang = "de_DE.ISO-8859-1", .table = Table(Rows), .script = {"init", "init", "init=Japanese"}});
    EXPECT_THAT(outcome.report, ElementsAre("init 4", "asked 1", "init 1", "asked", "init 4", "asked 1"));
}

TEST(LanguageAdoption, OfNoLocaleAsksForNone) {
    const Outcome outcome = LanguageChild::Run(
        "AsksForTheThreadsLocale",
        {.lang = "de_DE.ISO-8859-1", .table = Table(Rows), .script = {"init"}, .more = {{"LOCPATH", "/nowhere"}}});
    EXPECT_THAT(outcome.report, ElementsAre("init 4", "asked"));
}

// The process's locale ahead of and beside a decision.

CHILD_PROGRAM(DetectsInTurkish) {
    LanguageChild::BeginChild();
    std::setlocale(LC_ALL, TestLocales::Turkish);
    VELSysNLSEntry entry;
    Report(std::to_string(DetectNLSCoreFromEnvironment(entry)));
    PlayStep("process");
    Report(GetLocaleBeforeLoad());
    return 0;
}

TEST(LanguageOfTheEnvironment, IsFetchedBehindTheLocaleOfTheProcess) {
    // Without a table the environment's locale is the first thing that is asked of the C library.
    const Outcome outcome =
        LanguageChild::Run("DetectsInTurkish", {.lang = "xx.YY", .more = {{"LC_ALL", TestLocales::German}}});
    EXPECT_THAT(outcome.report, ElementsAre("1", "process de_DE.ISO-8859-1", TestLocales::Turkish));
    EXPECT_EQ(outcome.exitCode, 0);
}

CHILD_PROGRAM(DecidesInAScope) {
    LanguageChild::BeginChild();
    const VELSysCLocale::ThreadLC scope(LC_ALL, TestLocales::Japanese, nullptr);
    PlayStep("init");
    PlayStep("record");
    PlayStep("process");
    return 0;
}

TEST(LanguageOfTheEnvironment, OnAThreadWithALocaleOfItsOwnHasThatOnesCodeSet) {
    const Outcome outcome = LanguageChild::Run("DecidesInAScope", {.lang = TestLocales::GermanRefused});
    EXPECT_THAT(outcome.report, ElementsAre("init 0", "English||de_DE;comma|EUC-JP|.|1", "process C"));
    EXPECT_EQ(outcome.exitCode, 0);
}
