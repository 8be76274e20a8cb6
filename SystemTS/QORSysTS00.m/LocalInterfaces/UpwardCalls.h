/// @file
/// The calls that the session and the strings make upward.
///
/// Strings and the session frame stand at the bottom; what they start, end or ask belongs to higher rooms. Each of
/// these functions is declared here alone, so that no header of a higher room reaches down.
#pragma once

struct VELSysNLSEnv;

/// Language core: makes the language decision. The session brings it up.
int InitNLSCore(const char* language, bool force);
/// Language core: makes the next request decide anew. A new preferred language asks for that.
int DeInitNLSCore(int);
/// Language core: the decision. The environment converter gets its code page from it.
int GetEnvNLSData(VELSysNLSEnv* env);
/// Language core: calls `hook` on each change. The environment converter follows the language.
int RegisterNLSChangeHook(void (*hook)(const VELSysNLSEnv&));
/// Language core: longest multi-byte character in bytes.
long VELGetMultiByteCharMaxSize();

/// Argument store: the session keeps the command line of `main` there.
int VELSysTSSetArg(int argc, char** argv);

/// Watchdog: the session starts and ends it for `main`.
int VELSysWatchDogInitialize(int argc, const char** argv, const char** envp, int keepSignals);
void VELSysWatchDogFinalize();

/// Trace manager: made at initialisation; `*created` becomes 1 when this call made it.
int VELSysTraceCreateManager(const char* options, int* created);
void VELSysTraceDestroyManager();

namespace VEL::internal {

/// Application: makes the context manager and its "Main" context, unless they exist.
void EnsureMainContext();

/// Stack traces: prints the calling stack on standard output. The warnings of the narrow string show it.
void PrintStackTrace();

/// Converter registry: ends all conversion support at the end of a session.
void DeinitIConvTS(int code);

} // namespace VEL::internal
