/// @file
/// Queries on several threads while the language changes under them; what is wrong here shows under ThreadSanitizer.

#include "LanguageTest.h"
#include "QORSysSession.h"
#include "QORUnicodeString.h"
#include "TestLocales.h"
#include "VELSysCLocale.h"
#include "VELSysCodePage.h"
#include "VELSysHashMapString.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <set>
#include <thread>

namespace {

constexpr int Decisions = 200;

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
