/// @file
/// Queries on several threads while the language changes under them; what is wrong here shows under ThreadSanitizer.

#include "LanguageTest.h"
#include "QORSysSession.h"
#include "QORUnicodeString.h"
#include "TestLocales.h"
#include "VELSysCLocale.h"
#include "VELSysCodePage.h"
#include "VELSysHashMapString.h"
#include "VELSysStr.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstring>
#include <functional>
#include <set>
#include <thread>

namespace {

constexpr int Decisions = 200;

/// Whether the C library has no locale for this thread.
thread_local bool t_hasNoLocale = false;

class LanguageThreads : public LanguageTest {
protected:
    /// Runs `work` over and over on two threads while `change` runs to its end.
    static void While(const std::function<void()>& change, const std::function<void()>& work) {
        std::atomic<bool> isDone = false;
        std::atomic<int> runs = 0;
        {
            const auto repeat = [&] {
                do {
                    work();
                    ++runs;
                } while (!isDone);
            };
            std::jthread first(repeat);
            std::jthread second(repeat);
            while (runs < 2) {
                std::this_thread::yield();
            }
            change();
            isDone = true;
        }
    }

    /// Takes turns between languages of differing locales.
    static void ChangeLanguages() {
        for (int i = 0; i < Decisions; ++i) {
            static const char* const languages[] = {"Japanese", "German", nullptr, "French", "Klingon", ""};
            EXPECT_EQ(InitNLSCore(languages[i % 6], true), 4);
        }
    }

    static void PreferLanguages() {
        for (int i = 0; i < Decisions / 4; ++i) {
            VELSysHashMapString settings;
            settings.Put("sys.nls.core.preferredlang", i % 2 == 0 ? "Japanese" : "French");
            EXPECT_EQ(VELSystemInit(settings), 0);
        }
    }
};

/// What a record of one decision may be.
void ExpectWhole(const VELSysNLSEnv& env) {
    static const std::set<std::string> whole = {"Japanese ja ja_JP.EUC-JP EUC-JP 3",
                                                "German de de_DE.ISO-8859-1 ISO-8859-1 1",
                                                "French fr fr_FR.UTF-8 UTF-8 4"};
    const std::string text = std::string(env.language) + ' ' + env.alias + ' ' + env.langString + ' ' + env.codePage +
                             ' ' + std::to_string(env.maxCharSize);
    EXPECT_EQ(whole.count(text), 1U) << text;
}

void ReadRecord() {
    VELSysNLSEnv env;
    EXPECT_EQ(GetEnvNLSData(&env), 0);
    ExpectWhole(env);
}

void ReadTable() {
    int status = -1;
    EXPECT_EQ(GetCodePageByLanguage("Korean", &status), "EUC-KR");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(GetLocaleTypeFromCP("BIG5"), 3);
    std::set<std::string> languages;
    GetSupportedLanguageList(languages);
    EXPECT_EQ(languages.size(), 7U);
}

void ReadLocales() {
    EXPECT_NE(VELGetCxxLocale(), nullptr);
    char name[VELSysCLocale::EnvironNameSize];
    VELSysCLocaleEnvironGet(name);
    EXPECT_TRUE(std::strcmp(name, "") == 0 || std::strlen(name) > 5) << name;
    VELSysCLocale::GetLocaleStringFromLangString("x", name, sizeof name);
    EXPECT_STREQ(name, "x");
    const long size = VELGetMultiByteCharMaxSize();
    EXPECT_TRUE(size == 1 || size == 3 || size == 4) << size;
}

void ReadConverter() {
    const VELSysCodePage& converter = VELSysCodePage::GetEnvConverter();
    unsigned short units[8];
    int written = 0;
    converter.ConvertMBCSToUTF16("abc", 3, units, &written);
    EXPECT_EQ(written, 3);
    const QORUnicodeString text("abc");
    EXPECT_EQ(text.ConvertToUCChar()[2], 'c');
}

} // namespace

extern "C" {

locale_t __real_newlocale(int mask, const char* name, locale_t base);

locale_t __wrap_newlocale(int mask, const char* name, locale_t base) {
    if (t_hasNoLocale) {
        errno = ENOMEM;
        return nullptr;
    }
    return __real_newlocale(mask, name, base);
}
}

TEST_F(LanguageThreads, SeeWholeRecordsWhileTheLanguageChanges) {
    While(ChangeLanguages, ReadRecord);
}

TEST_F(LanguageThreads, ReadTheTableWhileTheLanguageChanges) {
    While(ChangeLanguages, ReadTable);
}

TEST_F(LanguageThreads, ReadLocalesWhileTheLanguageChanges) {
    While(ChangeLanguages, ReadLocales);
}

TEST_F(LanguageThreads, ConvertWhileTheLanguageChanges) {
    While(ChangeLanguages, ReadConverter);
}

TEST_F(LanguageThreads, QueryWhileLanguagesArePreferred) {
    While(PreferLanguages, [] {
        ReadRecord();
        ReadLocales();
    });
}

TEST_F(LanguageThreads, QueryWhileChangesAreAnnounced) {
    While(
        [] {
            for (int i = 0; i < Decisions; ++i) {
                DeInitNLSCore(0);
                std::this_thread::yield();
            }
        },
        [] {
            ReadRecord();
            ReadTable();
            ReadLocales();
            ReadConverter();
        });
}

TEST_F(LanguageThreads, DecideAtOnce) {
    While(ChangeLanguages, [] { EXPECT_EQ(InitNLSCore("Japanese", true), 4); });
}

TEST_F(LanguageThreads, RegisterHooksWhileTheLanguageChanges) {
    static std::atomic<int> calls = 0;
    While(ChangeLanguages, [] {
        const int code = RegisterNLSChangeHook([](const VELSysNLSEnv& env) {
            ++calls;
            ExpectWhole(env);
        });
        EXPECT_TRUE(code == 0 || code == 1) << code;
    });
    EXPECT_GE(calls, Decisions - 1);
}

TEST_F(LanguageThreads, DetectWhileTheLanguageChanges) {
    While(ChangeLanguages, [] {
        VELSysNLSEntry entry;
        EXPECT_EQ(DetectNLSCoreFromEnvironment(entry), 1);
        EXPECT_EQ(entry.language, "German");
    });
}

// A scope that has the process's locale to itself, because the C library has none for its thread.

namespace {

constexpr int Scopes = 50;

void UseTheLanguage() {
    ReadRecord();
    ReadLocales();
    char narrow[16];
    EXPECT_EQ(VELSysStrCpy(narrow, sizeof narrow, L"abc"), 0);
    EXPECT_STREQ(narrow, "abc");
    ReadConverter();
    unsigned short units[8];
    int written = 0;
    // Damaged where letters have two bytes.
    VELSysCodePage::GetEnvConverter().ConvertMBCSToUTF16("\xFF\xFF", 2, units, &written);
}

/// Decides anew on another thread, which waits for the scope of this one, and uses the language meanwhile.
void UseTheLanguageInAScope(bool hasNoLocaleWithin) {
    t_hasNoLocale = true;
    int status = -1;
    VELSysCLocale::ThreadLC scope(LC_NUMERIC, TestLocales::French, &status);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(VELSysCLocaleIsPerThread()) << "it has the process's";
    std::atomic<bool> isDeciding = false;
    const std::jthread other([&] {
        isDeciding = true;
        EXPECT_EQ(InitNLSCore("Japanese", true), 4);
        EXPECT_EQ(InitNLSCore(nullptr, true), 4);
    });
    while (!isDeciding) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    t_hasNoLocale = hasNoLocaleWithin;
    UseTheLanguage();
    {
        const VELSysCLocale::ThreadLC inner(LC_TIME, TestLocales::English, &status);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(VELSysCLocaleIsPerThread(), !hasNoLocaleWithin);
        UseTheLanguage();
    }
    scope.Reset();
    t_hasNoLocale = false;
}

} // namespace

CHILD_PROGRAM(UsesTheLanguageInScopes) {
    LanguageChild::BeginChild();
    for (int i = 0; i < Scopes; ++i) {
        DeInitNLSCore(0);
        UseTheLanguageInAScope(i % 2 == 0);
    }
    LanguageChild::Report(testing::Test::HasFailure() ? "failed" : "done");
    return 0;
}

TEST(LanguageScope, DoesNotWaitForADecisionThatWaitsForIt) {
    const LanguageChild::Outcome outcome = LanguageChild::Run(
        "UsesTheLanguageInScopes", {.lang = "de_DE.ISO-8859-1", .table = LanguageChild::Table(LanguageChild::Rows)});
    EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal << '\n' << outcome.err;
    ASSERT_FALSE(outcome.report.empty()) << outcome.out;
    EXPECT_EQ(outcome.report.back(), "done") << outcome.out;
}
