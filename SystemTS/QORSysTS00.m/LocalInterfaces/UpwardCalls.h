/// @file
/// The calls that go upward: from strings, session, environment and paths.
///
/// Strings and the session frame stand at the bottom, environment and paths above them; what they start, end, ask or
/// report belongs to higher rooms. Each of these functions is declared here alone, so that no lower room includes a
/// header of a higher one.
#pragma once

#include "QORSysTSExport.h"

#include <memory>

/// Language core: makes the language decision, unless it stands. The session brings it up.
QORSYSTS_EXPORT int InitNLSCore(const char* language, bool force);
/// Language core: makes the next request decide anew. A new preferred language asks for that.
QORSYSTS_EXPORT int DeInitNLSCore(int reserved);

/// Watchdog: the session starts and ends it for `main`.
int VELSysWatchDogInitialize(int argc, const char** argv, const char** envp, int keepSignals);
void VELSysWatchDogFinalize();

/// Trace manager: made at initialisation; `*created` becomes 1 when this call made it.
QORSYSTS_EXPORT int VELSysTraceCreateManager(const char* options, int* created);
QORSYSTS_EXPORT void VELSysTraceDestroyManager();
/// Trace: makes the trace `name`; `*handle` stays as it was, usually null, when the configuration doesn't name it. What
/// stands below the traces reports through such a handle.
QORSYSTS_EXPORT void VELSysTraceCreate__(void** handle, const char* name);
QORSYSTS_EXPORT void VELSysTraceDestroy__(void** handle);

/// Application: a variable of the current context, then of the main context; null when neither has it. The lookup of a
/// variable goes on there when the process doesn't know it.
const char* VELSysNeutralCoreApplicationGetEnvironmentVariableA(const char* name);

namespace VEL::internal {

/// Language core: keeps the language in which the process is to run, null for the environment's.
void KeepPreferredLanguage(const char* language);
/// Language core: a copy of it, null for none.
std::unique_ptr<char[]> PreferredLanguage();
/// Language core: makes what it keeps. Loading does that, so that the core outlives what the program makes later.
void PrepareNLSCore();

/// Application: makes the context manager and its "Main" context, unless they exist.
void EnsureMainContext();

/// Trace: writes a line of level Info. `trace` is a handle that VELSysTraceCreate__() has filled.
int TraceInfo(void* trace, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Stack traces: prints the calling stack on standard output. The warnings of the narrow string show it.
void PrintStackTrace();

} // namespace VEL::internal
