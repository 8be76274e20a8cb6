/// @file
/// What guards and remembers the C locale of the process.
#pragma once

#include "QORResourceLock.h"
#include "SessionState.h"
#include "VELSysCLocale.h"

#include <clocale>

namespace VEL::internal {

/// Keeps the name of the process's locale, at the first call; later ones do nothing. To be called ahead of whatever
/// reads or changes the locale of the process. @return That name.
const char* CaptureLocaleBeforeLoad();

/// Whether `locale`, as `uselocale` answers it, is a thread's own.
bool IsOwnLocale(locale_t locale);

/// The environment's locale, see VELSysCLocaleEnvironGet(), by value.
struct EnvironmentLocaleName {
    EnvironmentLocaleName() { VELSysCLocaleEnvironGet(text); }

    char text[VELSysCLocale::EnvironNameSize];
};

/// Holds the lock of the process's locale.
class LocaleGuard {
public:
    LocaleGuard() { s_localeLock.WriteLock(); }
    LocaleGuard(const LocaleGuard&) = delete;
    LocaleGuard& operator=(const LocaleGuard&) = delete;
    ~LocaleGuard() { s_localeLock.WriteUnlock(); }
};

} // namespace VEL::internal
