/// @file
/// The language core when memory runs out at each of its requests: nothing throws, nothing hangs, no list is handed out
/// by halves, and the next query is right.

#include "HeapLog.h"
#include "LanguageTest.h"
#include "VELSysCodePage.h"
#include "VELSysStatus.h"

#include <functional>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

constexpr int MostRequests = 2000;

class LanguageShortage : public LanguageTest {};

using Query = std::function<void()>;

/// What is handed out as an object of the C++ library has that library's own way of saying that there is no memory.
void AllowBadAlloc(const Query& query) {
    try {
        query();
    } catch (const std::bad_alloc&) {
        EXPECT_TRUE(HeapShortage::HasStruck());
    }
}

/// First queries of a process.
const std::map<std::string, Query>& Queries() {
    static const std::map<std::string, Query> queries = {
        {"record",
         [] {
             VELSysNLSEnv env;
             GetEnvNLSData(&env);
         }},
        {"init", [] { InitNLSCore("Japanese", true); }},
        {"table", [] { GetCodePageByLanguage("Japanese", nullptr); }},
        {"languages",
         [] {
             AllowBadAlloc([] {
                 std::set<std::string> languages;
                 GetSupportedLanguageList(languages);
             });
         }},
        {"detect",
         [] {
             VELSysNLSEntry entry;
             DetectNLSCoreFromEnvironment(entry);
         }},
        {"converter", [] { VELSysCodePage::GetEnvConverter(); }},
        {"locale", [] { AllowBadAlloc([] { VELGetCxxLocale(); }); }},
        {"refused", [] { InitNLSCore("", true); }},
    };
    return queries;
}

class FirstQueryShortage : public testing::TestWithParam<const char*> {};

/// Runs `call` with its first request failing, then with its second, until it needs no more.
void Sweep(const std::function<void()>& call, const std::function<void()>& check) {
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        for (int request = 1;; ++request) {
            ASSERT_LT(request, MostRequests);
            bool hasStruck = false;
            {
                const HeapShortage shortage(request, extent);
                EXPECT_NO_THROW(call()) << request;
                hasStruck = HeapShortage::HasStruck();
            }
            check();
            if (!hasStruck) {
                break;
            }
        }
    }
}

} // namespace

/// Arguments: the query, the request that fails, whether those behind it do, too.
CHILD_PROGRAM(QueriesInShortage) {
    LanguageChild::BeginChild();
    const Query& query = Queries().at(arguments[0]);
    bool hasStruck = false;
    {
        const HeapShortage shortage(std::stoi(arguments[1]),
                                    arguments[2] == "1" ? HeapShortage::FromThatOneOn : HeapShortage::OnlyThatOne);
        query();
        hasStruck = HeapShortage::HasStruck();
    }
    LanguageChild::Report(hasStruck ? "struck" : "passed");
    LanguageChild::PlayStep("force");
    LanguageChild::PlayStep("record");
    LanguageChild::PlayStep("count");
    LanguageChild::PlayStep("converter");
    return 0;
}

INSTANTIATE_TEST_SUITE_P(Each, FirstQueryShortage,
                         testing::Values("record", "init", "table", "languages", "detect", "converter", "locale",
                                         "refused"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(FirstQueryShortage, IsOverWithTheNextOne) {
    const bool isRefused = std::string(GetParam()) == "refused";
    const std::string lang = isRefused ? "de_DE;comma" : "fr_FR.UTF-8";
    const std::string table = LanguageChild::Table("German de de_DE;comma ISO-8859-1\n" + LanguageChild::Rows);
    const std::string record = isRefused ? "German|de|de_DE;comma|ISO-8859-1|,|1" : "French|fr|fr_FR.UTF-8|UTF-8|,|4";
    for (const char* const extent : {"0", "1"}) {
        for (int request = 1;; ++request) {
            ASSERT_LT(request, MostRequests);
            const LanguageChild::Outcome outcome = LanguageChild::Run(
                "QueriesInShortage",
                {.lang = lang, .table = table, .script = {GetParam(), std::to_string(request), extent}});
            ASSERT_EQ(outcome.exitCode, 0) << "request " << request << ", signal " << outcome.signal << '\n'
                                           << outcome.err;
            ASSERT_EQ(outcome.report.size(), 5U) << "request " << request;
            EXPECT_THAT(
                std::vector<std::string>(outcome.report.begin() + 1, outcome.report.end()),
                ElementsAre("init 4", record, "count 0 11", isRefused ? "converter ISO-8859-1" : "converter UTF-8"))
                << "request " << request << ' ' << extent;
            if (outcome.report[0] == "passed") {
                break;
            }
        }
    }
}

TEST_F(LanguageShortage, OfASearchGivesNoListByHalves) {
    const VELSysNLSEntry japanese{"Japanese", "", "", ""};
    VELSysNLSFilter filter{};
    filter.pattern = &japanese;
    RowsFound();
    int status = 0;
    int count = 0;
    VELSysNLSNode* list = nullptr;
    int failures = 0;
    Sweep(
        [&] {
            count = 5;
            status = GetNLSInformationA(filter, 0, count, &list);
        },
        [&] {
            const std::vector<std::string> rows = TakeRows(list);
            if (status == VEL::StatusOk) {
                EXPECT_EQ(count, 2);
                EXPECT_THAT(rows, ElementsAre("Japanese|ja|ja_JP.EUC-JP|EUC-JP", "Japanese|ja2|ja_JP.SJIS|SHIFT_JIS"));
            } else {
                ++failures;
                EXPECT_TRUE(status == VEL::StatusFailure || status == VEL::StatusUnexpected) << status;
                EXPECT_TRUE(rows.empty());
            }
            list = nullptr;
            EXPECT_EQ(RowsFound().size(), 10U);
        });
    EXPECT_GE(failures, 4);
}

TEST_F(LanguageShortage, OfALaterDecisionLeavesOneThatIsWhole) {
    InitNLSCore("Japanese", false);
    Sweep([] { InitNLSCore("French", true); },
          [] {
              VELSysNLSEnv env;
              EXPECT_EQ(GetEnvNLSData(&env), VEL::StatusOk);
              const std::string text = std::string(env.language) + ' ' + env.langString + ' ' + env.codePage;
              EXPECT_TRUE(text == "Japanese ja_JP.EUC-JP EUC-JP" || text == "French fr_FR.UTF-8 UTF-8" ||
                          text == "German de_DE.ISO-8859-1 ISO-8859-1")
                  << text;
              InitNLSCore("Japanese", true);
          });
}

TEST_F(LanguageShortage, OfAQueryOfAStandingDecisionNeedsNoMemory) {
    InitNLSCore(nullptr, false);
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    VELSysNLSEnv env;
    GetEnvNLSData(&env);
    EXPECT_EQ(VELGetMultiByteCharMaxSize(), 1);
    EXPECT_EQ(InitNLSCore(nullptr, false), 1);
    EXPECT_FALSE(HeapShortage::HasStruck());
}
