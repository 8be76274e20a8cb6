/// @file
/// What the environment asks of higher rooms and reports to them, as the tests choose and see it.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace EnvironmentCalls {

/// True: the trace that is asked for is there.
inline bool isTraced = false;
/// Traces made, by name, and destroyed handles, in order.
inline std::vector<std::string> traces;
/// Run, when set, as a trace is made and as a handle is destroyed.
inline void (*insideTraceCreate)() = nullptr;
inline void (*insideTraceDestroy)() = nullptr;
/// The Info lines.
inline std::vector<std::string> lines;

/// The variables of the application context.
inline std::map<std::string, std::string> applicationVariables;
/// The names that it was asked for.
inline std::vector<std::string> asked;

/// Where the product is installed.
inline const char* installPath = nullptr;

} // namespace EnvironmentCalls
