// Watchdog and application context, for as long as neither of them is there: each answers
// as it does while nothing is configured. Whoever brings one takes its lines away.

#include "UpwardCalls.h"

int VELSysWatchDogInitialize(int, const char**, const char**, int) {
    return 0;
}

void VELSysWatchDogFinalize() {}

const char* VELSysNeutralCoreApplicationGetEnvironmentVariableA(const char*) {
    return nullptr;
}

void VEL::internal::EnsureMainContext() {}
