#include "SessionCalls.h"

#include "SessionState.h"
#include "UpwardCalls.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

class QORMutex;
class QORResourceLock;

namespace {

// Plain arrays: calls are recorded before any object of this file is made.
constexpr int Capacity = 256;
constinit char s_log[Capacity][96];
constinit int s_logged = 0;
constinit SessionCalls::Participant s_participants[16];
constinit int s_participantCount = 0;

template <class... Arguments>
void Record(const char* format, Arguments... arguments) {
    if (s_logged < Capacity) {
        std::snprintf(s_log[s_logged++], sizeof s_log[0], format, arguments...);
    }
}

/// Prints what happens after `main`, when nobody can ask any more.
void RecordAtExit(const char* call) {
    Record("%s", call);
    if (getenv("PRINT_EXIT_CALLS") != nullptr) {
        std::puts(call);
        std::fflush(stdout);
    }
}

} // namespace

std::vector<std::string> SessionCalls::Log() {
    return {s_log, s_log + s_logged};
}

void SessionCalls::Clear() {
    s_logged = 0;
}

std::vector<SessionCalls::Participant> SessionCalls::Participants() {
    return {s_participants, s_participants + s_participantCount};
}

extern "C" {

void* __real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    return SessionCalls::memoryIsOut ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}

void* __real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
void* __wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    return SessionCalls::memoryIsOut ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}

int __real___cxa_atexit(void (*destroy)(void*), void* object, void* library);
int __wrap___cxa_atexit(void (*destroy)(void*), void* object, void* library) {
    if (object == &VEL::internal::s_localeLock) {
        Record("AtExit locale lock");
    } else if (object == &VEL::internal::s_standardLocale) {
        Record("AtExit standard locale");
    }
    return __real___cxa_atexit(destroy, object, library);
}

char* __real_getenv(const char* name);
char* __wrap_getenv(const char* name) {
    if (std::strcmp(name, "QORDevelopmentStage") == 0) {
        Record("getenv %s", name);
    }
    return __real_getenv(name);
}

void __real__ZN3VEL8internal14ClearEmptyViewEv();
void __wrap__ZN3VEL8internal14ClearEmptyViewEv() {
    Record("ClearEmptyView");
    __real__ZN3VEL8internal14ClearEmptyViewEv();
}

void __real__ZN15QORResourceLockC1Ei(QORResourceLock* self, int argument);
void __wrap__ZN15QORResourceLockC1Ei(QORResourceLock* self, int argument) {
    Record("QORResourceLock %d", argument);
    __real__ZN15QORResourceLockC1Ei(self, argument);
}

void __real__ZN15QORResourceLockD1Ev(QORResourceLock* self);
void __wrap__ZN15QORResourceLockD1Ev(QORResourceLock* self) {
    RecordAtExit("~QORResourceLock");
    __real__ZN15QORResourceLockD1Ev(self);
}

int __real__Z35VELSysLifeCycleGlobalFactoryPrivate24VELSysLifeCyclePriorFlagPFvPvEPFviES4_(
    VELSysLifeCyclePriorFlag priority, void (*start)(void*), void (*state)(int), void (*event)(int));
int __wrap__Z35VELSysLifeCycleGlobalFactoryPrivate24VELSysLifeCyclePriorFlagPFvPvEPFviES4_(
    VELSysLifeCyclePriorFlag priority, void (*start)(void*), void (*state)(int), void (*event)(int)) {
    Record("Register %X", static_cast<unsigned int>(priority));
    s_participants[s_participantCount++] = {static_cast<unsigned int>(priority), start, state, event};
    return __real__Z35VELSysLifeCycleGlobalFactoryPrivate24VELSysLifeCyclePriorFlagPFvPvEPFviES4_(priority, start,
                                                                                                  state, event);
}

int __real__Z37VELSysLifeCycleDispatchInitializationv();
int __wrap__Z37VELSysLifeCycleDispatchInitializationv() {
    Record("DispatchInitialization");
    __real__Z37VELSysLifeCycleDispatchInitializationv();
    return SessionCalls::dispatchResult;
}

int __real__Z35VELSysLifeCycleDispatchFinalizationv();
int __wrap__Z35VELSysLifeCycleDispatchFinalizationv() {
    Record("DispatchFinalization");
    __real__Z35VELSysLifeCycleDispatchFinalizationv();
    return SessionCalls::dispatchResult;
}

void __wrap__Z36VELSysFinalReleaseCPUResourceManageri(int code) {
    Record("FinalReleaseCPUResourceManager %d", code);
}

int __real__Z30VELStringPoolSetForCurrentThrdi(int on);
int __wrap__Z30VELStringPoolSetForCurrentThrdi(int on) {
    Record("StringPoolSet %d", on);
    return __real__Z30VELStringPoolSetForCurrentThrdi(on);
}

void __wrap__ZN17VELSysIConvTSWrap14sDeinitIConvTSEi(int code) {
    Record("DeinitIConvTS %d", code);
}

int __wrap__Z11InitNLSCorePKcb(const char* language, bool force) {
    Record("InitNLSCore %s %d", language != nullptr ? language : "(null)", force ? 1 : 0);
    return 0;
}

int __wrap__Z13DeInitNLSCorei(int argument) {
    const bool isOut = std::exchange(SessionCalls::memoryIsOut, false);
    const auto language = VEL::internal::PreferredLanguage();
    SessionCalls::memoryIsOut = isOut;
    Record("DeInitNLSCore %d before %s", argument, language != nullptr ? language.get() : "(null)");
    return 0;
}

int __wrap__Z24VELSysTraceCreateManagerPKcPi(const char* options, int* created) {
    Record("TraceCreateManager %s %d", options != nullptr ? options : "(null)", *created);
    if (SessionCalls::traceIsCreated >= 0) {
        *created = SessionCalls::traceIsCreated;
    }
    return 0;
}

void __wrap__Z25VELSysTraceDestroyManagerv() {
    Record("TraceDestroyManager");
}

void __wrap__ZN3VEL8internal17EnsureMainContextEv() {
    Record("EnsureMainContext");
}

int __wrap__Z14VELSysTSSetArgiPPc(int argc, char** argv) {
    Record("SetArg %d %s", argc, argc > 0 ? argv[0] : "");
    if (SessionCalls::insideSetArg != nullptr) {
        SessionCalls::insideSetArg();
    }
    return 0;
}

int __wrap__Z24VELSysWatchDogInitializeiPPKcS1_i(int argc, const char** argv, const char** envp, int keepSignals) {
    Record("WatchDogInitialize %d %s %s %d", argc, argc > 0 ? argv[0] : "", envp == nullptr ? "(null)" : "?",
           keepSignals);
    return 0;
}

void __wrap__Z22VELSysWatchDogFinalizev() {
    Record("WatchDogFinalize");
}

void __real__ZN8QORMutexC1Eiii(QORMutex* self, int a, int b, int c);
void __wrap__ZN8QORMutexC1Eiii(QORMutex* self, int a, int b, int c) {
    Record("QORMutex %d %d %d", a, b, c);
    __real__ZN8QORMutexC1Eiii(self, a, b, c);
}

void __real__ZN8QORMutexD1Ev(QORMutex* self);
void __wrap__ZN8QORMutexD1Ev(QORMutex* self) {
    Record("~QORMutex");
    __real__ZN8QORMutexD1Ev(self);
}

int __real__ZN8QORMutex4LockEv(QORMutex* self);
int __wrap__ZN8QORMutex4LockEv(QORMutex* self) {
    Record("Lock");
    return __real__ZN8QORMutex4LockEv(self);
}

int __real__ZN8QORMutex6UnlockEv(QORMutex* self);
int __wrap__ZN8QORMutex6UnlockEv(QORMutex* self) {
    Record("Unlock");
    return __real__ZN8QORMutex6UnlockEv(self);
}
}
