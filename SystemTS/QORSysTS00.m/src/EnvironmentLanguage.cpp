// Which row of the language table the environment asks for.

#include "LanguageTable.h"
#include "LocaleGuard.h"
#include "NLSTrace.h"
#include "VELSysCLocale.h"
#include "VELSysNLS.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <new>
#include <optional>

using VEL::internal::FirstRow;
using VEL::internal::LanguageRows;
using VEL::internal::NLSTrace;

namespace {

constexpr const char* DefaultLanguage = "en_US.UTF-8";
constexpr const char* DefaultCodeSet = "UTF-8";

/// The text is never empty.
const VELSysNLSEntry* FirstRowContaining(LanguageRows rows, const std::string& text) {
    return FirstRow(rows, [&](const VELSysNLSEntry& row) { return row.langString.find(text) != std::string::npos; });
}

/// By `LANG` as a whole, or without its code set.
const VELSysNLSEntry* RowOfLang(LanguageRows rows, const std::string& full) {
    if (full.empty()) {
        return nullptr;
    }
    const VELSysNLSEntry* const row = FirstRowContaining(rows, full);
    const std::size_t point = full.rfind('.');
    if (row != nullptr || point == std::string::npos) {
        return row;
    }
    return FirstRow(rows,
                    [&](const VELSysNLSEntry& each) { return each.langString.compare(0, point, full, 0, point) == 0; });
}

std::optional<std::string> EnvironmentLocale() {
    VEL::internal::CaptureLocaleBeforeLoad();
    const char* const locale = std::setlocale(LC_ALL, "");
    return locale != nullptr ? std::optional<std::string>(locale) : std::nullopt;
}

/// By the locale that all of the environment's variables give.
const VELSysNLSEntry* RowOfEnvironmentLocale(LanguageRows rows) {
    const std::optional<std::string> locale = EnvironmentLocale();
    NLSTrace(stdout, "[VELSysNLSCore][INFO] Environment locale: \"%s\"", locale ? locale->c_str() : "null");
    if (!locale || *locale == "C") {
        return nullptr;
    }
    if (const VELSysNLSEntry* const row = FirstRowContaining(rows, *locale)) {
        return row;
    }
    constexpr std::size_t languageLength = 2;
    return FirstRow(rows, [&](const VELSysNLSEntry& row) {
        return std::strncmp(row.langString.c_str(), locale->c_str(), languageLength) == 0;
    });
}

/// The first row of English, but another one, deliberately never the first itself, that has the code set is better.
const VELSysNLSEntry* RowOfLastResort(LanguageRows rows, const std::string& codeSet) {
    const VELSysNLSEntry* first = nullptr;
    for (const VELSysNLSEntry& row : rows) {
        if (row.language != "English") {
            continue;
        }
        if (first == nullptr) {
            first = &row;
        } else if (row.codePage == codeSet) {
            return &row;
        }
    }
    return first;
}

} // namespace

std::string VEL::internal::EnvironmentLanguage() {
    const char* const language = std::getenv("LANG");
    return language != nullptr ? language : DefaultLanguage;
}

void VEL::internal::TakeCodeSet(const std::string& language, std::string& codeSet) {
    const std::size_t point = language.find('.');
    if (point != std::string::npos) {
        codeSet = language.substr(point + 1);
    }
    if (!codeSet.empty()) {
        return;
    }
    VELSysCLocale::SetLocale(LC_ALL, "");
    codeSet = nl_langinfo(CODESET);
    if (codeSet.empty()) {
        codeSet = DefaultCodeSet;
    }
}

int VEL::internal::ValidateEnvironmentEntry(LanguageRows rows, const std::string& environmentLanguage,
                                            VELSysNLSEntry& entry) {
    const VELSysNLSEntry* row = RowOfLang(rows, environmentLanguage);
    if (row == nullptr) {
        row = RowOfEnvironmentLocale(rows);
    }
    if (row == nullptr) {
        NLSTrace(stderr, "[VELSysNLS][WARNING] Failed to validate environment settings => Falling back to default "
                         "locale settings");
        const std::size_t point = environmentLanguage.rfind('.');
        row = RowOfLastResort(rows, point != std::string::npos ? environmentLanguage.substr(point + 1) : std::string());
    }
    if (row != nullptr) {
        entry = *row;
    }
    return 1;
}

int DetectNLSCoreFromEnvironment(VELSysNLSEntry& entry) {
    // Those that put the C library into another locale come one after the other.
    const VEL::internal::WriteGuard guard(VELSysNLS::Instance().lock);
    try {
        const VEL::internal::LanguageTableUse table;
        const std::string language = VEL::internal::EnvironmentLanguage();
        std::string codeSet;
        VEL::internal::TakeCodeSet(language, codeSet);
        NLSTrace(stdout, "[VELSysNLSCore][INFO] DetectNLSCoreFromEnvironment | LangEnv=\"%s\" | CodePage=\"%s\"",
                 language.c_str(), codeSet.c_str());
        VEL::internal::ValidateEnvironmentEntry(table.Rows(), language, entry);
    } catch (const std::bad_alloc&) {
        // The entry is what has been written so far.
    }
    return 1;
}
