/// @file
/// The streams of the process that nobody here closes.
#pragma once

#include <cstdio>

namespace VEL::internal {

inline bool IsStandard(const std::FILE* stream) {
    return stream == stdout || stream == stderr;
}

} // namespace VEL::internal
