/// @file
/// What the C library answers to conversions, as the test has it. Needs `iconv` and `mbrtowc` to be wrapped.
#pragma once

#include <cstddef>
#include <cwchar>
#include <functional>
#include <iconv.h>

namespace CLibraryConversion {

/// In place of `iconv`, but for its resets; null for the true one.
extern std::function<std::size_t(iconv_t, char** in, std::size_t* inLeft, char** out, std::size_t* outLeft)> s_iconv;
/// In place of `mbrtowc`; null for the true one.
extern std::function<std::size_t(const char* text, std::size_t length, std::mbstate_t& state)> s_length;
/// Resets of descriptors so far.
extern int s_resets;

} // namespace CLibraryConversion
