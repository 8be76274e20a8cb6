/// @file
/// Getting text into and out of a block: what the two Unicode string classes share.
///
/// The makers take the block that a string stands on and answer the one that it stands on from then on; the other is
/// released. The readers take null for a null handle.
#pragma once

#include "QORInterUnicodeString.h"

namespace VEL::internal {

using Block = QORInterUnicodeString::Block;
using UTF16Range = TextRange<unsigned short>;
using MBCSRange = TextRange<char>;

/// `n` bytes of UTF-8, unchecked: narrow in a UTF-8 environment, otherwise wide.
Block BlockFromUTF8(Block block, const char* s, unsigned long n);
/// `n` elements of 32-bit wide text; an `n` of -1 means up to the terminator. Wide.
Block BlockFromWChar(Block block, const wchar_t* s, unsigned long n);
/// Units up to the zero unit, counted; 0 for null.
int CountUnits(const unsigned short* s);

/// The public accessors: a null handle gives "", null, 0 and 0, and so does a view that can't be allocated, but that
/// its UTF-16 text is the empty one.
const char* NarrowText(Block block);
const unsigned short* WideText(Block block);
int NarrowLength(Block block);
int WideLength(Block block);
unsigned int HashOf(Block block);

/// True when `range` is what is left of a text whose view can't be allocated.
template <class Range>
bool IsMissing(Block block, const Range& range) {
    return range.length == 0 && block != nullptr && block->_length != 0;
}

/// Text and length from one look at the block; an empty text for a null handle and for a view that can't be allocated.
inline UTF16Range UTF16Of(Block block) {
    // A block without text is asked for none, so that no view is built for it.
    const UTF16Range range = block != nullptr && block->_length != 0 ? block->_GetUTF16() : UTF16Range{};
    return range.text != nullptr ? range : UTF16Range{EmptyText, 0};
}
inline MBCSRange MBCSOf(Block block) {
    const MBCSRange range = block != nullptr ? block->_GetMBCS() : MBCSRange{};
    return range.text != nullptr ? range : MBCSRange{EmptyHandle(), 0};
}
/// One of the two.
template <bool IsWide>
TextRange<UnitOf<IsWide>> RangeOf(Block block) {
    if constexpr (IsWide) {
        return UTF16Of(block);
    } else {
        return MBCSOf(block);
    }
}

/// The text as UTF-8 where it lies ready in a block, in a UTF-8 environment; otherwise null. `length` receives its
/// length in bytes.
const char* ReadyUTF8(Block block, unsigned long& length);

/// Copies the text as UTF-8 without a terminator, or measures it when `out` is null.
int CopyAsUTF8(Block block, char* out, unsigned long* n);
/// Copies the text as UTF-16 without a terminator, or measures it when `out` is null.
int CopyAsUTF16(Block block, unsigned short* out, unsigned long* n);
/// Copies the text as code points with a terminator, or suggests a size when `out` is null.
int CopyAsWChar(Block block, wchar_t* out);

} // namespace VEL::internal
