#include "LanguageChild.h"

#include "QORSysSession.h"
#include "VELSysCLocale.h"
#include "VELSysCodePage.h"
#include "VELSysHashMapString.h"
#include "VELSysNLSCore.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <langinfo.h>
#include <regex>
#include <sstream>
#include <unistd.h>

namespace {

/// Longer than a slow machine needs under a sanitizer.
constexpr unsigned int SecondsToHang = 60;

std::optional<std::string> s_codeset;
std::optional<std::string> s_radix;
/// Requests for a locale up to the first that is refused; below 0 for none.
int s_untilRefusal = -1;

const char* TextOrNull(const std::optional<std::string>& text) {
    return text ? text->c_str() : nullptr;
}

std::string Columns(const VELSysNLSEntry& entry) {
    return entry.language + '|' + entry.alias + '|' + entry.langString + '|' + entry.codePage;
}

std::string Narrow(const wchar_t* text) {
    return {text, text + std::wcslen(text)};
}

void Prefer(const std::string& language) {
    VELSysHashMapString settings;
    settings.Put("sys.nls.core.preferredlang", language.c_str());
    LanguageChild::Report("prefer " + std::to_string(VELSystemInit(settings)));
}

void ReportLocale() {
    const std::shared_ptr<const std::locale> locale = VELGetCxxLocale();
    const auto& narrow = std::use_facet<std::numpunct<char>>(*locale);
    const auto& wide = std::use_facet<std::numpunct<wchar_t>>(*locale);
    std::string line = "locale " + locale->name() + ' ' + narrow.decimal_point();
    line += static_cast<char>(wide.decimal_point());
    line += ' ' + std::to_string(narrow.thousands_sep()) + ' ' + std::to_string(wide.thousands_sep());
    LanguageChild::Report(line);
}

void ReportLanguages() {
    std::set<std::string> languages = {"left over"};
    GetSupportedLanguageList(languages);
    std::string line = "languages";
    for (const std::string& language : languages) {
        line += ' ' + language;
    }
    LanguageChild::Report(line);
}

void ReportAccepted() {
    char name[VELSysCLocale::EnvironNameSize];
    LanguageChild::Report(std::string("accepted ") + VELSysCLocaleEnvironGet(name));
}

void Detect() {
    VELSysNLSEntry entry = {"came", "in", "as", "it"};
    const int result = DetectNLSCoreFromEnvironment(entry);
    LanguageChild::Report("detect " + std::to_string(result) + ' ' + Columns(entry));
}

void ReportCodePage(const std::string& language) {
    int status = 4711;
    const std::string name = GetCodePageByLanguage(language.c_str(), &status);
    LanguageChild::Report("codepage " + std::to_string(status) + ' ' + name);
}

void Count() {
    const VELSysNLSEntry all;
    VELSysNLSFilter filter{};
    filter.pattern = &all;
    int count = 0;
    const int status = GetNLSInformationA(filter, 0, count, nullptr);
    LanguageChild::Report("count " + std::to_string(status) + ' ' + std::to_string(count));
}

std::string TablePath() {
    return std::string(std::getenv("TABLE_DIRECTORY")) + "/NLS/SUPPLANG_R9";
}

void SetVariable(const std::string& text) {
    const std::size_t end = text.find('=');
    setenv(text.substr(0, end).c_str(), text.substr(end + 1).c_str(), 1);
}

using Action = std::function<void(const std::optional<std::string>& text)>;

void ReportInit(const std::optional<std::string>& text, bool force) {
    LanguageChild::Report("init " + std::to_string(InitNLSCore(TextOrNull(text), force)));
}

const std::map<std::string, Action>& Actions() {
    using LanguageChild::Report;
    using Text = const std::optional<std::string>&;
    static const std::map<std::string, Action> actions = {
        {"init", [](Text text) { ReportInit(text, false); }},
        {"force", [](Text text) { ReportInit(text, true); }},
        {"deinit", [](Text) { Report("deinit " + std::to_string(DeInitNLSCore(7))); }},
        {"prefer", [](Text text) { Prefer(*text); }},
        {"session", [](Text) { Report("session " + std::to_string(QORSysNewSessionTS(0, 0, nullptr))); }},
        {"end", [](Text) { Report("end " + std::to_string(QORSysEndSessionTS(0))); }},
        {"record", [](Text) { Report(LanguageChild::Record()); }},
        {"accepted", [](Text) { ReportAccepted(); }},
        {"size", [](Text) { Report("size " + std::to_string(VELGetMultiByteCharMaxSize())); }},
        {"languages", [](Text) { ReportLanguages(); }},
        {"locale", [](Text) { ReportLocale(); }},
        {"converter", [](Text) { Report(std::string("converter ") + VELSysCodePage::GetEnvConverter().GetName()); }},
        {"detect", [](Text) { Detect(); }},
        {"codepage", [](Text text) { ReportCodePage(*text); }},
        {"count", [](Text) { Count(); }},
        {"process", [](Text) { Report(std::string("process ") + std::setlocale(LC_ALL, nullptr)); }},
        {"env", [](Text text) { SetVariable(*text); }},
        {"unset", [](Text text) { unsetenv(text->c_str()); }},
        {"table", [](Text text) { WriteFile(TablePath(), *text); }},
        {"remove", [](Text) { std::filesystem::remove(TablePath()); }},
        {"codeset", [](Text text) { s_codeset = text; }},
        {"radix", [](Text text) { s_radix = text; }},
        {"refuse", [](Text text) { s_untilRefusal = std::stoi(*text); }},
    };
    return actions;
}

/// Takes "[PID:<digits>]" for "[PID]".
std::string WithoutProcessId(const std::string& text) {
    static const std::regex id("\\[PID:[1-9][0-9]*\\]");
    return std::regex_replace(text, id, "[PID]");
}

LanguageChild::Outcome OutcomeOf(const Child& child) {
    LanguageChild::Outcome outcome{{}, {}, WithoutProcessId(child.err), child.exitCode, child.signal};
    std::istringstream lines(child.out);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("= ", 0) == 0) {
            outcome.report.push_back(line.substr(2));
        } else {
            outcome.out += WithoutProcessId(line) + (lines.eof() ? "" : "\n");
        }
    }
    return outcome;
}

} // namespace

namespace LanguageChild {

std::string Table(const std::string& rows) {
    return "a word ahead\n*BEGIN* Linux\n" + rows + "*END*\n";
}

Outcome Run(const std::string& program, const Setting& setting) {
    const ScratchDirectory scratch;
    std::filesystem::create_directory(scratch / "NLS");
    std::filesystem::create_directory(scratch / "install");
    std::filesystem::create_directory_symlink(scratch.Path(), scratch / "install/reffiles");
    if (setting.table) {
        WriteFile(scratch / "NLS/SUPPLANG_R9", *setting.table);
    }
    std::map<std::string, std::string> variables = setting.more;
    variables.insert({{"LOCPATH", QOR_TEST_LOCALES},
                      {"TABLE_DIRECTORY", scratch.Path()},
                      {"QORReffilesPath", scratch.Path()},
                      {"QORInstallPath", "/nowhere"}});
    if (setting.lang) {
        variables.insert({"LANG", *setting.lang});
    }
    if (setting.isTraced) {
        variables["VELSysNLSCoreTrace"] = "";
    }
    // "{}" stands for the directory, and a variable that is just "-" is unset.
    for (auto variable = variables.begin(); variable != variables.end();) {
        std::string& value = variable->second;
        for (std::size_t at = value.find("{}"); at != std::string::npos; at = value.find("{}")) {
            value.replace(at, 2, scratch.Path());
        }
        variable = value == "-" ? variables.erase(variable) : std::next(variable);
    }
    return OutcomeOf(RunChild(program, {.set = variables, .arguments = setting.script}));
}

Outcome Play(const Setting& setting) {
    return Run("PlaysScript", setting);
}

void BeginChild() {
    alarm(SecondsToHang);
}

void Report(const std::string& line) {
    std::printf("= %s\n", line.c_str());
    std::fflush(stdout);
}

void PlayStep(const std::string& step) {
    const std::size_t end = step.find('=');
    const auto action = Actions().find(step.substr(0, end));
    if (action == Actions().end()) {
        Report("no step " + step);
        return;
    }
    action->second(end == std::string::npos ? std::nullopt : std::optional(step.substr(end + 1)));
}

std::string Record() {
    VELSysNLSEnv env = {};
    const int status = GetEnvNLSData(&env);
    std::ostringstream text;
    text << env.language << '|' << env.alias << '|' << env.langString << '|' << env.codePage << '|'
         << Narrow(env.decimalPoint) << '|' << env.maxCharSize;
    return status == 0 ? text.str() : "status " + std::to_string(status);
}

} // namespace LanguageChild

CHILD_PROGRAM(PlaysScript) {
    LanguageChild::BeginChild();
    for (const std::string& step : arguments) {
        LanguageChild::PlayStep(step);
    }
    return 0;
}

extern "C" {

char* __real_nl_langinfo(nl_item item);
char* __real_setlocale(int category, const char* locale);

char* __wrap_nl_langinfo(nl_item item) {
    const std::optional<std::string>& answer = item == CODESET ? s_codeset : s_radix;
    return (item == CODESET || item == RADIXCHAR) && answer ? const_cast<char*>(answer->c_str())
                                                            : __real_nl_langinfo(item);
}

char* __wrap_setlocale(int category, const char* locale) {
    if (locale != nullptr && s_untilRefusal > 0) {
        --s_untilRefusal;
    }
    return locale != nullptr && s_untilRefusal == 0 ? nullptr : __real_setlocale(category, locale);
}
}
