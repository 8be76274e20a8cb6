/// @file
/// Assertions that hold in every build: their texts are relied upon, so they don't go away with NDEBUG.
#pragma once

extern "C" [[noreturn]] void __assert_fail(const char* expression, const char* file, unsigned int line,
                                           const char* function) noexcept;

namespace VEL::internal {

/// Reports a failed assertion on standard error in the C library's form and aborts.
[[noreturn]] inline void FailAssertion(const char* expression, const char* file, unsigned int line,
                                       const char* function) {
    __assert_fail(expression, file, line, function);
}

} // namespace VEL::internal
