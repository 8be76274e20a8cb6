/// @file
/// Changing the text of a block: what the three string classes share.
///
/// Each function takes the block that a string stands on and answers the one that it stands on from then on; the other
/// is released. The text that goes in may be that of the same block, or of its view. A text whose view can't be
/// allocated changes nothing; without memory for a block the string stands on the empty block.
#pragma once

#include "StringAccess.h"
#include "StringText.h"

#include <initializer_list>

namespace VEL::internal {

/// Stands for all of the text that goes in.
constexpr int WholeLength = -1;

/// `length` units, repeated `times` times, in a new block.
template <bool IsWide>
Block RepeatUnits(const UnitOf<IsWide>* text, int length, unsigned long times);

/// Appends to a block of the same representation, all at once. @param grow  Leave room for further growth.
template <bool IsWide>
Block AppendTexts(Block block, std::initializer_list<TextRange<UnitOf<IsWide>>> texts, bool grow);
/// Appends a text: narrow when both are, otherwise wide.
Block AppendText(Block block, Block text);

/// Appends the text of `text` to `s`; a null handle on either side changes nothing.
template <class String>
String& AppendString(String& s, const String& text) {
    const Block block = StringAccess::BlockOf(s);
    const Block added = StringAccess::BlockOf(text);
    if (block != nullptr && added != nullptr) {
        StringAccess::SetBlock(s, AppendText(block, added));
    }
    return s;
}

/// Replaces the `count` units at `pos` of a wide block by the first `newCount` units of `with`, filled up with spaces.
/// A narrow block becomes wide. A range that is not within the text, and a negative number, change nothing.
Block ReplaceRange(Block block, int pos, int count, Block with, int newCount = WholeLength);
/// Replaces the `count` bytes at `pos` of a narrow block; see QORString::ReplaceSubString().
Block ReplaceBytes(Block block, int pos, int count, const TextRange<char>& with);
/// Gives a narrow text `n` bytes; see QORString::Resize().
Block ResizeBytes(Block block, int n, char fill, bool truncate);
/// Replaces all places of `what` that don't overlap. @param isWide  Work on UTF-16, also when all three are narrow.
Block ReplaceAllText(Block block, Block what, Block with, bool isWide);
/// Appends a code point; the block becomes wide.
Block AppendCharacter(Block block, unsigned int code);
/// Gives the text `n` units, wide: cut, or filled up with copies of a code point as far as they fit.
/// @param grow  Leave room for further growth.
Block ResizeWide(Block block, int n, unsigned int fill, bool truncate, bool grow = false);

/// Modes of stripping, the same for all classes.
enum StripMode : int { StripLeading = 1, StripTrailing = 2, StripAll = 4 };

/// What is left when a code point is stripped: a new block, or one handle more on this one when there is nothing to do.
/// Narrow when the block is and the code point is 126 or below, otherwise wide.
Block StripText(Block block, int mode, unsigned int code);
/// What is left of a narrow block when a byte is stripped; always a new block.
Block StripBytes(Block block, int mode, char byte);
/// A new wide block with the `count` units from `start` on, which are within the text.
Block CutText(const UTF16Range& text, int start, int count);

/// Turns all letters to one case; a block on which there is nothing to change stays.
enum class LetterCase { Lower, Upper };
Block ChangeCase(Block block, LetterCase to);
/// Maps one code point: ASCII by its own rule, all others by the C locale in force.
unsigned int MapCase(unsigned int code, LetterCase to);

} // namespace VEL::internal
