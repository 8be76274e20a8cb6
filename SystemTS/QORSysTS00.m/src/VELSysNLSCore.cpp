#include "VELSysNLSCore.h"

#include "DuplicateText.h"
#include "LanguageTable.h"
#include "NLSTrace.h"
#include "SettledRecord.h"
#include "VELDebugBreak.h"
#include "VELSysCLocale.h"
#include "VELSysNLS.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

using VEL::internal::FirstRow;
using VEL::internal::LanguageRows;
using VEL::internal::LanguageTableUse;
using VEL::internal::NLSTrace;
using VEL::internal::ReadGuard;
using VEL::internal::WriteGuard;

namespace {

/// What InitNLSCore() answers.
enum InitResult : int {
    NoTable = 0,
    DecisionStands = 1,
    DecisionIsBeingMade = 2,
    DecisionStandsAfterAll = 3,
    DecisionIsMade = 4,
};

using Hook = void (*)(const VELSysNLSEnv&);

// All of these are guarded by the lock of the language core, the first also between a request and its nested ones.

constinit int s_depth = 0;
constinit Hook s_hooks[4] = {};
constinit std::size_t s_hookCount = 0;
/// From array `new`.
constinit char* s_preferredLanguage = nullptr;

/// What GetEnvNLSData() answers while no decision is due; published under the write side.
constinit VEL::internal::SettledRecord<VELSysNLSEnv> s_settled;

/// Counts the requests for a decision that the deciding thread is in.
class Entry {
public:
    Entry() { ++s_depth; }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() {
        if (--s_depth < 0) {
            VELDebugBreak(1);
        }
    }
    bool IsNested() const { return s_depth > 1; }
};

bool IsRequired(const VELSysNLS& nls, const char* language) {
    bool fromEnvironment = false;
    bool fromLanguage = false;
    return nls.IsInitNLSRequired(language, fromEnvironment, fromLanguage);
}

/// Lets queries go without the lock when no decision is due for them. Under the write side.
void Settle(const VELSysNLS& nls) {
    if (IsRequired(nls, s_preferredLanguage)) {
        s_settled.Withdraw();
    } else {
        s_settled.Publish(nls.Snapshot());
    }
}

/// IsRequired() without a lock where that can be; otherwise what others decide now is waited for.
bool IsRequiredNow(VELSysNLS& nls, const char* language) {
    if (language == nullptr || *language == '\0') {
        return IsRequired(nls, language);
    }
    const ReadGuard guard(nls.lock);
    return IsRequired(nls, language);
}

const VELSysNLSEntry* RowOfLanguage(LanguageRows rows, const char* language) {
    return FirstRow(rows, [language](const VELSysNLSEntry& row) { return row.language == language; });
}

/// As far as the environment alone says; this is what holds without a table, and while the decision is being made.
void TakeEnvironment(VELSysNLS& nls) {
    nls.environmentLanguage = VEL::internal::EnvironmentLanguage();
    VEL::internal::TakeCodeSet(nls.environmentLanguage, nls.codePage);
    nls.langString = nls.environmentLanguage;
    NLSTrace(stdout, "[VELSysNLS][INFO] LANG variable: \"%s\"", nls.environmentLanguage.c_str());
}

/// The row of `language`, otherwise the environment's; what stands when the table has neither that nor English.
VELSysNLSEntry ChooseEntry(const VELSysNLS& nls, LanguageRows rows, const char* language, bool fromLanguage) {
    if (fromLanguage) {
        if (const VELSysNLSEntry* const row = RowOfLanguage(rows, language)) {
            return *row;
        }
    }
    VELSysNLSEntry entry{nls.language, nls.alias, nls.langString, nls.codePage};
    VEL::internal::ValidateEnvironmentEntry(rows, nls.environmentLanguage, entry);
    return entry;
}

void TakeEntry(VELSysNLS& nls, VELSysNLSEntry entry) {
    NLSTrace(stdout, "[VELSysNLS][INFO] Lang string (in config file format): \"%s\"", entry.langString.c_str());
    const std::string name = VEL::internal::TranslateLangString(entry.langString.c_str(), nls.environmentLanguage);
    const char* const accepted = VELSysCLocale::SetLocale(LC_ALL, name.c_str());
    NLSTrace(stdout, "[VELSysNLS][INFO] Locale string (translated): \"%s\"", name.c_str());
    if (accepted != nullptr) {
        NLSTrace(stdout, "[VELSysNLS][INFO] libC setlocale success: \"%s\"", accepted);
    }
    nls.language = std::move(entry.language);
    nls.alias = std::move(entry.alias);
    nls.langString = std::move(entry.langString);
    nls.codePage = std::move(entry.codePage);
    VEL::internal::AdoptLocale(nls, accepted != nullptr ? name.c_str() : nullptr);
}

void TakeLanguages(VELSysNLS& nls, LanguageRows rows) {
    nls.languages.clear();
    for (const VELSysNLSEntry& row : rows) {
        nls.languages.insert(row.language);
    }
}

void CallHooks(const VELSysNLS& nls) {
    const VELSysNLSEnv env = nls.Snapshot();
    // A hook may register a further one, which is called, too.
    for (std::size_t i = 0; i < s_hookCount; ++i) {
        s_hooks[i](env);
    }
}

/// The decision, with the write side of the lock held. Without a table nothing is decided, so that it stays due.
/// @return Whether there is a table.
bool Decide(VELSysNLS& nls, const char* language, bool fromLanguage) {
    TakeEnvironment(nls);
    const LanguageTableUse table;
    if (table.Rows().empty()) {
        return false;
    }
    TakeEntry(nls, ChooseEntry(nls, table.Rows(), language, fromLanguage));
    TakeLanguages(nls, table.Rows());
    VEL::internal::SetDecisionDue(false);
    CallHooks(nls);
    return true;
}

/// `read` of the state in which the decision stands.
template <class Read>
auto Query(const Read& read) {
    VELSysNLS& nls = VELSysNLS::Instance();
    {
        const ReadGuard guard(nls.lock);
        if (!IsRequired(nls, s_preferredLanguage)) {
            return read(nls);
        }
    }
    InitNLSCore(VEL::internal::PreferredLanguage().get(), false);
    const ReadGuard guard(nls.lock);
    return read(nls);
}

bool Matches(const VELSysNLSEntry& row, const VELSysNLSEntry& pattern) {
    return (pattern.language.empty() || pattern.language == row.language) &&
           (pattern.langString.empty() || pattern.langString.find(row.langString) != std::string::npos) &&
           (pattern.codePage.empty() || pattern.codePage == row.codePage);
}

/// `strncpy`, also onto the text itself.
char* CopyWithZeros(char* out, const char* text, std::size_t size) {
    const std::size_t length = strnlen(text, size);
    std::memmove(out, text, length);
    std::memset(out + length, 0, size - length);
    return out;
}

/// A list of rows that nobody has taken yet.
class NodeList {
public:
    NodeList() = default;
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;
    ~NodeList() {
        while (_first != nullptr) {
            delete std::exchange(_first, _first->next);
        }
    }
    void Append(const VELSysNLSEntry& row) {
        *_end = new VELSysNLSNode{row, nullptr};
        _end = &(*_end)->next;
    }
    bool IsEmpty() const { return _first == nullptr; }
    VELSysNLSNode* Release() { return std::exchange(_first, nullptr); }

private:
    VELSysNLSNode* _first = nullptr;
    VELSysNLSNode** _end = &_first;
};

/// Counts the rows of which `isWanted` holds, and hands out as many as `count` has asked for.
template <class Wanted>
void FindRows(LanguageRows rows, const Wanted& isWanted, int room, int& count, VELSysNLSNode** list) {
    NodeList found;
    for (const VELSysNLSEntry& row : rows) {
        if (!isWanted(row)) {
            continue;
        }
        if (list != nullptr && count < room) {
            found.Append(row);
        }
        ++count;
    }
    if (!found.IsEmpty()) {
        *list = found.Release();
    }
}

} // namespace

const char* VEL::internal::TranslateLangString(const char* langString, const std::string& environmentLanguage) {
    return langString == nullptr || langString == environmentLanguage ? "" : langString;
}

void VEL::internal::PrepareNLSCore() {
    VELSysNLS::Instance();
}

void VEL::internal::KeepPreferredLanguage(const char* language) {
    std::unique_ptr<char[]> copy = DuplicateText(language);
    const WriteGuard guard(VELSysNLS::Instance().lock);
    delete[] std::exchange(s_preferredLanguage, copy.release());
    Settle(VELSysNLS::Instance());
}

std::unique_ptr<char[]> VEL::internal::PreferredLanguage() {
    const ReadGuard guard(VELSysNLS::Instance().lock);
    return DuplicateText(s_preferredLanguage);
}

int InitNLSCore(const char* language, bool force) {
    VELSysNLS& nls = VELSysNLS::Instance();
    if (!force && !IsRequiredNow(nls, language)) {
        return DecisionStands;
    }
    const WriteGuard guard(nls.lock);
    const Entry entry;
    if (entry.IsNested()) {
        return DecisionIsBeingMade;
    }
    VEL::internal::SetDecisionDue(true);
    bool fromEnvironment = false;
    bool fromLanguage = false;
    if (!nls.IsInitNLSRequired(language, fromEnvironment, fromLanguage) && !force) {
        return DecisionStandsAfterAll;
    }
    // Others wait at the lock from here on, until the hooks have been called.
    s_settled.Withdraw();
    bool isMade = false;
    try {
        isMade = Decide(nls, language, fromLanguage);
    } catch (const std::bad_alloc&) {
        // It stays due.
    }
    Settle(nls);
    return isMade ? DecisionIsMade : NoTable;
}

int DeInitNLSCore(int) {
    VEL::internal::SetDecisionDue(true);
    return VEL::StatusOk;
}

int GetEnvNLSData(VELSysNLSEnv* env) {
    if (env == nullptr) {
        return VEL::StatusBadArgument;
    }
    if (VEL::internal::IsDecisionDue() || !s_settled.Read(*env)) {
        *env = Query([](const VELSysNLS& nls) { return nls.Snapshot(); });
    }
    return VEL::StatusOk;
}

int GetNLSInformationA(VELSysNLSFilter filter, char mode, int& count, VELSysNLSNode** list) {
    const int room = std::exchange(count, 0);
    if (mode != VELSysNLSByPattern && mode != VELSysNLSByPredicate) {
        return VEL::StatusBadArgument;
    }
    const bool isByPattern = mode == VELSysNLSByPattern;
    const LanguageTableUse table;
    if (table.Rows().empty()) {
        return VEL::StatusUnexpected;
    }
    if (isByPattern ? filter.pattern == nullptr : filter.predicate == nullptr) {
        return VEL::StatusFailure;
    }
    const auto isWanted = [&](const VELSysNLSEntry& row) {
        return isByPattern ? Matches(row, *filter.pattern) : filter.predicate(row, filter.argument) != 0;
    };
    try {
        FindRows(table.Rows(), isWanted, room, count, list);
    } catch (const std::bad_alloc&) {
        return VEL::StatusFailure;
    }
    return VEL::StatusOk;
}

std::string GetCodePageByLanguage(const char* language, int* status) {
    int unused = 0;
    int& result = status != nullptr ? *status : unused;
    result = VEL::StatusFailure;
    if (language == nullptr) {
        return {};
    }
    const LanguageTableUse table;
    const VELSysNLSEntry* const row = RowOfLanguage(table.Rows(), language);
    if (row == nullptr) {
        return {};
    }
    std::string codePage = row->codePage;
    result = VEL::StatusOk;
    return codePage;
}

int GetLocaleTypeFromCP(const char* codePage) {
    if (codePage == nullptr) {
        return 0;
    }
    constexpr const char* languages[] = {"Japanese", "Korean", "Traditional_Chinese", "Simplified_Chinese"};
    int type = 0;
    const LanguageTableUse table;
    for (const VELSysNLSEntry& row : table.Rows()) {
        const auto* const language = std::find(std::begin(languages), std::end(languages), row.language);
        if (row.codePage == codePage && language != std::end(languages)) {
            type = static_cast<int>(language - std::begin(languages)) + 1;
        }
    }
    return type;
}

void GetSupportedLanguageList(std::set<std::string>& out) {
    out = Query([](const VELSysNLS& nls) { return nls.languages; });
}

char* VELSysCLocaleEnvironGet(char* out) {
    return Query([out](const VELSysNLS& nls) {
        return out != nullptr ? std::strcpy(out, nls.acceptedLocale.c_str()) : nullptr;
    });
}

long VELGetMultiByteCharMaxSize() {
    unsigned long size = 0;
    if (!VEL::internal::IsDecisionDue() && s_settled.ReadWord(offsetof(VELSysNLSEnv, maxCharSize), size)) {
        return static_cast<long>(size);
    }
    return Query([](const VELSysNLS& nls) { return nls.maxCharSize; });
}

char* VELSysCLocale::GetLocaleStringFromLangString(const char* langString, char* out, unsigned int size) {
    return Query([=](const VELSysNLS& nls) {
        const char* const name = VEL::internal::TranslateLangString(langString, nls.environmentLanguage);
        return out != nullptr ? CopyWithZeros(out, name, size) : nullptr;
    });
}

int VELGetANSICodePageByLanguage(const char* language, char* out) {
    // clang-format off
    constexpr std::pair<const char*, const char*> codePages[] = {
        {"English", "ISO-8859-1"},
        {"French", "ISO-8859-1"},
        {"German", "ISO-8859-1"},
        {"Dutch", "ISO-8859-1"},
        {"Danish", "ISO-8859-1"},
        {"Spanish", "ISO-8859-1"},
        {"Italian", "ISO-8859-1"},
        {"Portuguese", "ISO-8859-1"},
        {"Swedish", "ISO-8859-1"},
        {"Finnish", "ISO-8859-1"},
        {"Icelandic", "ISO-8859-1"},
        {"Japanese", "IBM-932"},
        {"Simplified_Chinese", "EUC-CN"},
        {"Korean", "EUC-KR"},
        {"Czech", "ISO-8859-2"},
        {"Polish", "ISO-8859-2"},
        {"Russian", "ISO-8859-5"},
        {"Traditional_Chinese", "CN-BIG5"},
    };
    // clang-format on
    constexpr std::size_t size = 85;
    if (language == nullptr) {
        return VEL::StatusBadArgument;
    }
    for (const auto& [name, codePage] : codePages) {
        if (std::strcmp(name, language) == 0) {
            if (out != nullptr) {
                std::strncpy(out, codePage, size);
            }
            return VEL::StatusOk;
        }
    }
    return VEL::StatusNotFound;
}

bool VELSysIsPointerNull(void* pointer) {
    return pointer == nullptr;
}

int RegisterNLSChangeHook(void (*hook)(const VELSysNLSEnv& env)) {
    if (hook == nullptr) {
        return VEL::StatusBadArgument;
    }
    const WriteGuard guard(VELSysNLS::Instance().lock);
    Hook* const end = s_hooks + s_hookCount;
    if (std::find(s_hooks, end, hook) != end) {
        return VEL::StatusNote;
    }
    if (s_hookCount == std::size(s_hooks)) {
        return VEL::StatusFailure;
    }
    *end = hook;
    ++s_hookCount;
    return VEL::StatusOk;
}
