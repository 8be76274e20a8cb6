/// @file
/// What the three string classes share: how a handle counts the block that it points into.
///
/// A string object is one pointer, to the first text unit of a shared, reference-counted block. The block's header
/// stands directly in front of the text. Only the count is touched here, so that copying and destroying a handle is
/// compiled into the caller; everything else about the block is the library's own.
#pragma once

#include "QORSysTSExport.h"

#include <sys/single_threaded.h>

// Members that callers inline are also names of the library, whether the compiler inlines them or not; the source file
// that owns them says so by defining QORSYSTS_EMIT_STRING_MEMBERS.
#ifdef QORSYSTS_EMIT_STRING_MEMBERS
#define QORSYSTS_INLINE __attribute__((used)) QORSYSTS_EXPORT inline
#else
#define QORSYSTS_INLINE QORSYSTS_EXPORT inline
#endif

namespace VEL::internal {

/// Text of the shared empty block, on which every string without text stands. That block is never counted, never
/// written and never freed.
QORSYSTS_EXPORT extern unsigned short* const EmptyText;

/// The handle of a string on the empty block.
inline char* EmptyHandle() noexcept {
    return reinterpret_cast<char*>(EmptyText);
}

/// Frees the block behind `text`, whose last handle is gone.
QORSYSTS_EXPORT void DestroyBlock(char* text) noexcept;

/// Set in the address of every block's text but that of the empty block, and so clear in null: blocks come from the
/// C library's heap, 16 bytes aligned, and their text begins 26 bytes further; the empty block stands 8 bytes off.
/// One test without a load tells what is counted from what is not.
constexpr unsigned long CountedAddressBit = 8;

/// False for null and the empty block.
inline bool IsCounted(const char* text) noexcept {
    return (reinterpret_cast<unsigned long>(text) & CountedAddressBit) != 0;
}

/// The count of handles stands this many bytes in front of the text.
constexpr long HandleCountOffset = 6;

/// The count of the block behind `text`.
inline int* HandleCount(char* text) noexcept {
    return reinterpret_cast<int*>(text - HandleCountOffset);
}

/// Counts one more handle on the block of `text`. Null and the empty block are not counted.
inline void AddHandle(char* text) noexcept {
    if (!IsCounted(text)) {
        return;
    }
    int* count = HandleCount(text);
    // Relaxed: a new handle comes from a live one, which keeps the block. A process that never had a second thread
    // needs no locked instruction.
    if (__libc_single_threaded) {
        __atomic_store_n(count, __atomic_load_n(count, __ATOMIC_RELAXED) + 1, __ATOMIC_RELAXED);
    } else {
        __atomic_fetch_add(count, 1, __ATOMIC_RELAXED);
    }
}

/// Counts one handle less on the block of `text`, and frees the block when that was the last one.
/// @return The handles left, or -1 for null and the empty block.
inline int DropHandle(char* text) noexcept {
    if (!IsCounted(text)) {
        return -1;
    }
    int* count = HandleCount(text);
    int left;
    // Release: what this handle read is read before the block is freed or written. Acquire: whoever frees it sees all
    // of that. Not preceded by a look whether this is the last handle: on a block that several threads copy, such a
    // look costs more than the locked instruction that it saves elsewhere.
    if (__libc_single_threaded) {
        left = __atomic_load_n(count, __ATOMIC_RELAXED) - 1;
        __atomic_store_n(count, left, __ATOMIC_RELAXED);
    } else {
        left = __atomic_sub_fetch(count, 1, __ATOMIC_ACQ_REL);
    }
    if (left == 0) {
        DestroyBlock(text);
    }
    return left;
}

/// Stores null through a pointer that the compiler can't see through: a destroyed string stays recognisable by its
/// null handle, although no program may look at a destroyed object.
inline void ClearHandle(char*& text) noexcept {
    *const_cast<char* volatile*>(&text) = nullptr;
}

struct StringAccess;

} // namespace VEL::internal
