// Language core, watchdog, trace manager and application context, for as long as none of them is there: each answers
// as it does while nothing is configured. Whoever brings one takes its lines away.

#include "UpwardCalls.h"

#include "VELSysCLocale.h"
#include "VELSysNLSCore.h"
#include "VELSysStatus.h"

#include <cstdio>
#include <cstring>

int InitNLSCore(const char*, bool) {
    return VEL::StatusOk;
}

int DeInitNLSCore(int) {
    return VEL::StatusOk;
}

int GetEnvNLSData(VELSysNLSEnv* env) {
    if (env == nullptr) {
        return VEL::StatusBadArgument;
    }
    *env = {};
    std::snprintf(env->codePage, sizeof env->codePage, "UTF-8");
    return VEL::StatusOk;
}

int RegisterNLSChangeHook(void (*hook)(const VELSysNLSEnv&)) {
    return hook != nullptr ? VEL::StatusOk : VEL::StatusBadArgument;
}

long VELGetMultiByteCharMaxSize() {
    return 1;
}

char* VELSysCLocaleEnvironGet(char* out) {
    if (out != nullptr) {
        *out = '\0';
    }
    return out;
}

char* VELSysCLocale::GetLocaleStringFromLangString(const char*, char* out, unsigned int size) {
    return out != nullptr ? std::strncpy(out, "", size) : nullptr;
}

int VELSysWatchDogInitialize(int, const char**, const char**, int) {
    return 0;
}

void VELSysWatchDogFinalize() {}

int VELSysTraceCreateManager(const char*, int*) {
    return 0;
}

void VELSysTraceDestroyManager() {}

void VELSysTraceCreate__(void**, const char*) {}

void VELSysTraceDestroy__(void** handle) {
    *handle = nullptr;
}

int VEL::internal::TraceInfo(void*, const char*, ...) {
    return -1;
}

const char* VELSysNeutralCoreApplicationGetEnvironmentVariableA(const char*) {
    return nullptr;
}

void VEL::internal::EnsureMainContext() {}
