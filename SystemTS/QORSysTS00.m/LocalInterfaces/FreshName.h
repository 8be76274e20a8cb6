/// @file
/// Names of files that aren't there, for callers that make the file themselves.
#pragma once

#include <cstddef>

namespace VEL::internal {

/// How many characters FillInFreshName() chooses.
inline constexpr std::size_t FreshNameLength = 6;

/// Puts letters and digits in place of the last FreshNameLength bytes of a native name of `n` bytes, so that nothing
/// has that name. Nothing is made.
/// @return False, with `errno` set, where no such name can be found, as in a directory that can't be searched.
bool FillInFreshName(char* name, std::size_t n);

} // namespace VEL::internal
