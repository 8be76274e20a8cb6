/// @file
/// The environment's converter as tests of single characters see it: counted, and made to answer what no code page of
/// a test answers. Needs the two conversions below to be wrapped.
#pragma once

#include <string>

namespace FakeConverter {

/// When set, the converter gives this in place of any character.
extern const std::string* s_longForm;
/// When set, conversions from UTF-16 fail: their count is -1, and nothing is written.
extern bool s_fails;
/// Conversions from UTF-16 so far.
extern int s_conversions;

} // namespace FakeConverter
