/// @file
/// Searching and comparing the texts of blocks: what the three string classes share. Null stands for a null handle.
#pragma once

#include "StringText.h"

namespace VEL::internal {

/// The first place of `what` at or behind `start`, or -1: also for an empty `what` and a `start` that is not within the
/// text.
int SearchForward(Block text, Block what, int start);
/// The last place of `what` that ends at least `start` units in front of the end, or -1.
int SearchBackward(Block text, Block what, int start);

/// True when `what` stands at `pos`; an empty `what` stands everywhere within the text.
bool IsTextAt(Block text, int pos, Block what);

/// 2 for identical texts, 1 for texts that differ only in case, otherwise 0.
int CompareByCase(Block a, Block b);
/// Equality with zero-terminated narrow text.
bool EqualsNarrow(Block block, const char* s);

/// The whole of `text` against `pattern`; see QORUnicodeString::WildMatch().
bool MatchWild(const UTF16Range& text, const UTF16Range& pattern, unsigned int wild, unsigned int quote);

} // namespace VEL::internal
