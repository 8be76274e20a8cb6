/// @file
/// The door from the library's own functions to the handle and block of a string.
#pragma once

#include "QORInterUnicodeString.h"
#include "VELStringHandle.h"

struct VEL::internal::StringAccess {
    using Block = QORInterUnicodeString::Block;

    /// The handle of a string of any class.
    template <class String>
    static auto& Handle(String& s) {
        return s._text;
    }

    /// The block of a string, or null for a null handle.
    template <class String>
    static Block BlockOf(const String& s) {
        return s._text != nullptr ? QORInterUnicodeString::FromText(s._text) : nullptr;
    }

    /// Puts a block in place of the one that `s` stood on and that its maker has released.
    template <class String>
    static void SetBlock(String& s, Block block) {
        s._text = block->Text();
    }

    /// Gives up the block of `s`, a null handle included, and stands `s` on the empty block.
    template <class String>
    static void Reset(String& s) {
        DropHandle(s._text);
        s._text = EmptyHandle();
    }
};
