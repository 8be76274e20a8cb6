// Watchdog, trace manager and application context, for as long as none of them is there: each answers
// as it does while nothing is configured. Whoever brings one takes its lines away.

#include "UpwardCalls.h"

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
