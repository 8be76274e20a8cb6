/// @file
/// A message that is out before the program goes on.
#pragma once

#include <cstdarg>
#include <cstdio>

namespace VEL::internal {

/// `vfprintf` and `fflush`.
inline void PrintAndFlush(std::FILE* stream, const char* format, std::va_list arguments) {
    std::vfprintf(stream, format, arguments);
    std::fflush(stream);
}

/// `fprintf` and `fflush`.
__attribute__((format(printf, 2, 3))) inline void PrintAndFlush(std::FILE* stream, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    PrintAndFlush(stream, format, arguments);
    va_end(arguments);
}

} // namespace VEL::internal
