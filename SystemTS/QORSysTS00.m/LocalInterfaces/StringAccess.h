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

    /// The block of a narrow string after what comes before each of its operations.
    template <class String>
    static Block Prepared(const String& s) {
        s._Prepare();
        return BlockOf(s);
    }

    /// Puts a block in place of the one that `s` stood on and that its maker has released.
    template <class String>
    static void SetBlock(String& s, Block block) {
        s._text = block->Text();
    }

    /// Stands `s` on what `change` makes of its block; a null handle stays as it is.
    template <class String, class Change>
    static String& Apply(String& s, const Change& change) {
        if (const Block block = BlockOf(s)) {
            SetBlock(s, change(block));
        }
        return s;
    }

    /// A string that takes over one handle of `block`.
    template <class String>
    static String Make(Block block) {
        String s;
        s._text = block->Text();
        return s;
    }

    /// The code point of a character.
    template <class Character>
    static unsigned int CodeOf(const Character& c) {
        return c._code;
    }

    /// Gives up the block of `s`, a null handle included, and stands `s` on the empty block.
    template <class String>
    static void Reset(String& s) {
        DropHandle(s._text);
        s._text = EmptyHandle();
    }
};
