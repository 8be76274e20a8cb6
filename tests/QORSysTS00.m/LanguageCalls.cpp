#include "LanguageCalls.h"

#include "VELSysCLocale.h"
#include "VELSysCodePage.h"
#include "VELSysStatus.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

using namespace LanguageCalls;

namespace LanguageCalls {

std::vector<VELSysNLSEntry> s_table;
std::string s_codePage = "UTF-8";
std::string s_langString;
long s_maxCharSize = 1;
int s_initResult = 1;
int s_refusal = 0;
std::function<void()> s_insideNextRequest;
std::function<void()> s_insideNextTableRequest;

} // namespace LanguageCalls

namespace {

std::mutex s_mutex;
bool s_isRegistered = false;

/// A plain array, since calls are also recorded while there is no memory.
std::array<std::array<char, 96>, 4096> s_calls;
std::size_t s_callCount = 0;

template <class... Arguments>
void Record(const char* format, Arguments... arguments) {
    const std::lock_guard lock(s_mutex);
    if (s_callCount < s_calls.size()) {
        std::snprintf(s_calls[s_callCount].data(), s_calls[s_callCount].size(), format, arguments...);
        ++s_callCount;
    }
}

} // namespace

std::vector<std::string> LanguageCalls::Calls() {
    const std::lock_guard lock(s_mutex);
    std::vector<std::string> calls;
    for (std::size_t i = 0; i < s_callCount; ++i) {
        calls.emplace_back(s_calls[i].data());
    }
    return calls;
}

VELSysNLSEnv LanguageCalls::Record() {
    VELSysNLSEnv env{};
    std::strncpy(env.codePage, s_codePage.c_str(), sizeof env.codePage - 1);
    std::strncpy(env.langString, s_langString.c_str(), sizeof env.langString - 1);
    return env;
}

void LanguageCalls::Change(const std::string& codePage, const std::string& langString) {
    s_codePage = codePage;
    s_langString = langString;
    VELSysCodePage::OnChangeNLSCore(Record());
}

extern "C" int __wrap__Z11InitNLSCorePKcb(const char*, bool) {
    ::Record("%s", "InitNLSCore");
    return s_initResult;
}

extern "C" int __wrap__Z13GetEnvNLSDataP12VELSysNLSEnv(VELSysNLSEnv* env) {
    ::Record("%s", "GetEnvNLSData");
    if (s_insideNextRequest) {
        std::exchange(s_insideNextRequest, nullptr)();
    }
    *env = LanguageCalls::Record();
    return VEL::StatusOk;
}

extern "C" int __wrap__Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE(void (*hook)(const VELSysNLSEnv&)) {
    ::Record("%s",
             hook == &VELSysCodePage::OnChangeNLSCore ? "RegisterNLSChangeHook" : "RegisterNLSChangeHook of another");
    if (s_refusal < 0) {
        return s_refusal;
    }
    const std::lock_guard lock(s_mutex);
    return std::exchange(s_isRegistered, true) ? VEL::StatusNote : VEL::StatusOk;
}

extern "C" long __wrap__Z26VELGetMultiByteCharMaxSizev() {
    return s_maxCharSize;
}

extern "C" int __wrap__Z18GetNLSInformationA15VELSysNLSFiltercRiPP13VELSysNLSNode(VELSysNLSFilter filter, char mode,
                                                                                  int& count, VELSysNLSNode** list) {
    ::Record("%s", "GetNLSInformationA");
    if (s_insideNextTableRequest) {
        std::exchange(s_insideNextTableRequest, nullptr)();
    }
    const int room = std::exchange(count, 0);
    if (s_table.empty()) {
        return VEL::StatusUnexpected;
    }
    for (const VELSysNLSEntry& row : s_table) {
        const bool matches =
            mode == 0 ? row.codePage == filter.pattern->codePage : filter.predicate(row, filter.argument) != 0;
        if (!matches) {
            continue;
        }
        if (list != nullptr && count < room) {
            try {
                *list = new VELSysNLSNode{row, nullptr};
            } catch (const std::bad_alloc&) {
                return VEL::StatusFailure;
            }
            list = &(*list)->next;
        }
        ++count;
    }
    return VEL::StatusOk;
}

extern "C" char* __wrap__ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj(const char* langString, char* out,
                                                                                 unsigned int size) {
    ::Record("GetLocaleStringFromLangString %.40s %u", langString, size);
    // The language string is the C library's name, but for that of the environment.
    return std::strncpy(out, std::strcmp(langString, "environment") == 0 ? "" : langString, size);
}

extern "C" char* __wrap__Z23VELSysCLocaleEnvironGetPc(char* out) {
    return std::strcpy(out, "C");
}
