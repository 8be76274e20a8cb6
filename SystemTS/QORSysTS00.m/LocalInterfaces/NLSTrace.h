/// @file
/// Diagnostics of the language support.
#pragma once

#include <cstdio>

namespace VEL::internal {

/// Writes "[PID:<process id>]", the formatted text and a newline to `stream` and flushes it, when the variable
/// "VELSysNLSCoreTrace" is known at the first use in the process, whatever its value; otherwise does nothing.
void NLSTrace(FILE* stream, const char* format, ...) __attribute__((format(printf, 2, 3)));

} // namespace VEL::internal
