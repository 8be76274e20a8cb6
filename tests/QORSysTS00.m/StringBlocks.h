/// @file
/// Blocks and what stands in them, for tests that look behind the handle.
#pragma once

#include "QORInterUnicodeString.h"
#include "StringAccess.h"
#include "VELStringPool.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace StringBlocks {

using Block = QORInterUnicodeString::Block;
using VEL::internal::StringAccess;
using VEL::internal::StringPool;

/// A narrow block with these bytes; a text without bytes gets a block with room for `room` bytes.
inline Block NewNarrow(const std::string& text, int room = 1) {
    const Block block = QORInterUnicodeString::_NewNarrow(text.empty() ? room : static_cast<int>(text.size()));
    std::memcpy(block->Text(), text.c_str(), text.size() + 1);
    block->_length = static_cast<int>(text.size());
    return block;
}

/// A wide block with these units, likewise.
inline Block NewWide(const std::u16string& text, int room = 1) {
    const Block block = QORInterUnicodeString::_NewWide(text.empty() ? room : static_cast<int>(text.size()));
    std::memcpy(block->Text(), text.c_str(), (text.size() + 1) * sizeof(char16_t));
    block->_length = static_cast<int>(text.size());
    return block;
}

/// The bytes of a narrow block.
inline std::string Narrow(const QORInterUnicodeString* block) {
    return {block->Text(), static_cast<std::size_t>(block->_length)};
}

/// The units of a wide block.
inline std::u16string Wide(const QORInterUnicodeString* block) {
    const unsigned short* units = block->Wide();
    return {units, units + block->_length};
}

/// Any units as text.
inline std::u16string Units(const unsigned short* units, int length) {
    return {units, units + length};
}

inline const unsigned short* Units(const char16_t* text) {
    return reinterpret_cast<const unsigned short*>(text);
}

inline bool IsStale(const QORInterUnicodeString* block) {
    return (block->_flags & QORInterUnicodeString::StaleFlag) != 0;
}

/// Units that a block of this length holds.
inline int CapacityFor(bool isWide, int length) {
    const std::size_t unit = isWide ? 2 : 1;
    const std::size_t size = (static_cast<std::size_t>(length) + 1) * unit + 26;
    return static_cast<int>(((size + 7) / 8 * 8 - 26) / unit);
}

/// A handle more, as copying a string makes it.
inline void Share(Block block) {
    VEL::internal::AddHandle(block->Text());
}

/// Holds one handle of a block.
class Owner {
public:
    explicit Owner(Block block) : _block(block) {}
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { QORInterUnicodeString::_Release(_block); }

    Block operator->() const { return _block; }
    Block Get() const { return _block; }

private:
    Block _block;
};

/// A string on the given block, whose handle it takes.
template <class String>
String StringOn(Block block) {
    String s;
    StringAccess::Handle(s) = block->Text();
    return s;
}

/// A string with a null handle.
template <class String>
String NullString() {
    String s;
    StringAccess::Handle(s) = nullptr;
    return s;
}

template <class String>
bool IsOnTheEmptyBlock(const String& s) {
    return StringAccess::BlockOf(s) == QORInterUnicodeString::Empty();
}

/// What stands in the storage of a string once its destructor has run.
template <class String>
void* HandleAfterDestruction(const char* text) {
    alignas(String) unsigned char storage[sizeof(String)];
    void* where = storage;
    (new (where) String(text))->~String();
    // No object lives there any more, so the compiler must not know whose storage is read.
    asm volatile("" : "+r"(where) : : "memory");
    void* handle;
    std::memcpy(&handle, where, sizeof handle);
    return handle;
}

} // namespace StringBlocks
