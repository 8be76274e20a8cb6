/// @file
/// The check of what gets into a narrow string, and what it reports on standard output.
#pragma once

#include "StringText.h"

#include <cstddef>

namespace VEL::internal {

/// True for text that may stand in a narrow string: all text while the string checks are off, otherwise text whose
/// bytes print. The first byte that doesn't is reported.
bool PassesCheck(const char* text, std::size_t n);

/// A new block with a copy of `text`; the empty block for null, "" and text that doesn't pass.
Block CheckedBlock(const char* text);

/// A new block with the narrow form of a wide block's text. ASCII passes silently; anything else is reported and goes
/// through the multi-byte view and the check.
Block NarrowBlockFrom(Block wide);

} // namespace VEL::internal
