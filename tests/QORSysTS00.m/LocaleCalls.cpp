#include "LocaleCalls.h"

#include "QORResourceLock.h"
#include "SessionState.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <future>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

struct Failure {
    std::string call;
    int error = 0;
    int countdown = 0;
};

struct State {
    std::vector<std::string> log;
    std::vector<locale_t> freed;
    Failure failure;
    std::optional<locale_t> pretended;
    std::map<nl_item, const char*> answers;
};

thread_local State t_state;
std::function<void()> s_duringLookup;
const char* s_environmentLocale = "C";
std::atomic<int> s_localeConvCalls = 0;

std::mutex& BlocksMutex() {
    static auto* const mutex = new std::mutex;
    return *mutex;
}

std::set<const void*>& Blocks() {
    static auto* const blocks = new std::set<const void*>;
    return *blocks;
}

std::string TextOf(const char* locale) {
    return locale != nullptr ? locale : "?";
}

void Note(const std::string& call) {
    t_state.log.push_back(call);
}

bool Fails(const std::string& call) {
    Failure& failure = t_state.failure;
    if (failure.countdown == 0 || failure.call != call || --failure.countdown > 0) {
        return false;
    }
    errno = failure.error;
    return true;
}

} // namespace

void LocaleCalls::Record() {
    t_state.log.clear();
    t_state.freed.clear();
}

std::vector<std::string> LocaleCalls::Log() {
    return t_state.log;
}

std::vector<locale_t> LocaleCalls::Freed() {
    return t_state.freed;
}

void LocaleCalls::Fail(const std::string& call, int error, int nth) {
    t_state.failure = {call, error, nth};
}

void LocaleCalls::PretendCurrent(locale_t current) {
    t_state.pretended = current;
}

void LocaleCalls::Answer(nl_item item, const char* text) {
    t_state.answers[item] = text;
}

void LocaleCalls::UseEnvironmentLocale(const char* name) {
    s_environmentLocale = name;
}

void LocaleCalls::DuringLookup(std::function<void()> action) {
    s_duringLookup = std::move(action);
}

int LocaleCalls::LocaleConvCalls() {
    return s_localeConvCalls;
}

int LocaleCalls::BlocksHeld() {
    const std::lock_guard guard(BlocksMutex());
    return static_cast<int>(Blocks().size());
}

bool LocaleCalls::IsLockHeld() {
    // A thread that waits for the lock would outlast the question.
    static std::vector<std::future<void>> s_probes;
    s_probes.push_back(std::async(std::launch::async, [] {
        VEL::internal::s_localeLock.WriteLock();
        VEL::internal::s_localeLock.WriteUnlock();
    }));
    return s_probes.back().wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
}

std::string LocaleCalls::NameOf(int category, locale_t locale) {
    return nl_langinfo_l(NL_LOCALE_NAME(category), locale);
}

LocaleCalls::ScopeFields LocaleCalls::FieldsOf(const VELSysCLocale::ThreadLC& scope) {
    ScopeFields fields;
    static_assert(sizeof fields == sizeof scope);
    std::memcpy(static_cast<void*>(&fields), static_cast<const void*>(&scope), sizeof fields);
    return fields;
}

void LocaleCalls::PrintProcessId() {
    std::printf("%u\n", static_cast<unsigned int>(getpid()));
    std::fflush(stdout);
}

Child LocaleCalls::Traced(const std::string& program, const std::vector<std::string>& arguments) {
    Child child =
        RunChild(program, {.set = {{"VELSysNLSCoreTrace", ""}, {"LOCPATH", QOR_TEST_LOCALES}}, .arguments = arguments});
    const std::size_t end = child.out.find('\n');
    const std::string id = "[PID:" + child.out.substr(0, end) + "]";
    child.out.erase(0, end + 1);
    for (std::string* const text : {&child.out, &child.err}) {
        for (std::size_t at = text->find(id); at != std::string::npos; at = text->find(id, at)) {
            text->replace(at, id.size(), "[PID]");
        }
    }
    return child;
}

extern "C" {

locale_t __real_uselocale(locale_t locale);
locale_t __real_newlocale(int mask, const char* name, locale_t base);
locale_t __real_duplocale(locale_t locale);
void __real_freelocale(locale_t locale);
char* __real_setlocale(int category, const char* locale);
char* __real_nl_langinfo(nl_item item);
char* __real_nl_langinfo_l(nl_item item, locale_t locale);
void* __real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
void __real__ZdaPv(void* block);
int __real__ZN15QORResourceLock9WriteLockEv(QORResourceLock* lock);
int __real__ZN15QORResourceLock11WriteUnlockEv(QORResourceLock* lock);

locale_t __wrap_uselocale(locale_t locale) {
    const bool asks = locale == nullptr;
    Note(asks ? "uselocale ?" : locale == LC_GLOBAL_LOCALE ? "uselocale global" : "uselocale own");
    if (Fails(asks ? "uselocale ?" : "uselocale")) {
        return nullptr;
    }
    if (asks && t_state.pretended) {
        return *std::exchange(t_state.pretended, std::nullopt);
    }
    return __real_uselocale(locale);
}

locale_t __wrap_newlocale(int mask, const char* name, locale_t base) {
    Note("newlocale " + (mask == LC_ALL_MASK ? "all" : std::to_string(mask)) + " " + name);
    return Fails("newlocale") ? nullptr : __real_newlocale(mask, name, base);
}

locale_t __wrap_duplocale(locale_t locale) {
    Note("duplocale");
    return Fails("duplocale") ? nullptr : __real_duplocale(locale);
}

void __wrap_freelocale(locale_t locale) {
    Note("freelocale");
    t_state.freed.push_back(locale);
    __real_freelocale(locale);
    errno = EPERM;
}

char* __wrap_setlocale(int category, const char* locale) {
    Note("setlocale " + std::to_string(category) + " " + TextOf(locale));
    return Fails(locale == nullptr ? "setlocale ?" : "setlocale") ? nullptr : __real_setlocale(category, locale);
}

lconv* __wrap_localeconv() {
    ++s_localeConvCalls;
    return nullptr;
}

char* __wrap_nl_langinfo(nl_item item) {
    const auto answer = t_state.answers.find(item);
    return answer != t_state.answers.end() ? const_cast<char*>(answer->second) : __real_nl_langinfo(item);
}

char* __wrap_nl_langinfo_l(nl_item item, locale_t locale) {
    const auto answer = t_state.answers.find(item);
    return answer != t_state.answers.end() ? const_cast<char*>(answer->second) : __real_nl_langinfo_l(item, locale);
}

char* __real_strerror(int error);
char* __wrap_strerror(int error) {
    Note("strerror");
    return __real_strerror(error);
}

int __wrap_swprintf(wchar_t* text, std::size_t length, const wchar_t* format, ...) {
    if (Fails("swprintf")) {
        return -1;
    }
    va_list arguments;
    va_start(arguments, format);
    const int result = std::vswprintf(text, length, format, arguments);
    va_end(arguments);
    return result;
}

int __wrap__ZN15QORResourceLock9WriteLockEv(QORResourceLock* lock) {
    if (lock == &VEL::internal::s_localeLock) {
        Note("WriteLock");
    }
    return __real__ZN15QORResourceLock9WriteLockEv(lock);
}

int __wrap__ZN15QORResourceLock11WriteUnlockEv(QORResourceLock* lock) {
    if (lock == &VEL::internal::s_localeLock) {
        Note("WriteUnlock");
    }
    return __real__ZN15QORResourceLock11WriteUnlockEv(lock);
}

char* __wrap__Z23VELSysCLocaleEnvironGetPc(char* out) {
    return std::strcpy(out, s_environmentLocale);
}

const char* __wrap__Z51VELSysNeutralCoreApplicationGetEnvironmentVariableAPKc(const char*) {
    if (s_duringLookup) {
        s_duringLookup();
    }
    return nullptr;
}

void* __wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    Note("new");
    if (Fails("new")) {
        return nullptr;
    }
    void* const block = __real__ZnamRKSt9nothrow_t(size, tag);
    const std::lock_guard guard(BlocksMutex());
    Blocks().insert(block);
    return block;
}

void __wrap__ZdaPv(void* block) {
    {
        const std::lock_guard guard(BlocksMutex());
        Blocks().erase(block);
    }
    __real__ZdaPv(block);
}
}
