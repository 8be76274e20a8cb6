/// @file
/// How the directories of the traces are found.
#pragma once

#include <cstddef>

namespace VEL::internal {

/// The directory when no variable names one.
inline constexpr char TraceLastResort[] = "/tmp";

/// Takes the value of a variable of the process. @return False when it isn't set or doesn't fit.
bool TakeVariable(const char* name, char* path, std::size_t size);
/// Takes one separator away at the end.
void StripSeparator(char* path);

} // namespace VEL::internal
