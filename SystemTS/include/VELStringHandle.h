/// @file
/// What the three string classes share: how a handle counts the block that it points into.
///
/// A string object is one pointer, to the first text unit of a shared, reference-counted block. The block's header
/// stands directly in front of the text. What is read and counted here is compiled into the caller, so that copying,
/// destroying and comparing strings costs no call; everything else about the block is the library's own.
#pragma once

#include "QORSysTSExport.h"

#include <cstring>
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

/// Where other fields of a block stand in front of the text.
constexpr long FlagsOffset = 2;
constexpr long CapacityOffset = 14;
constexpr long LengthOffset = 18;
constexpr long SecondViewOffset = 26;
/// Flags: the text is UTF-16, and the cached hash is not that of the text.
constexpr unsigned short WideTextFlag = 1;
constexpr unsigned short StaleHashFlag = 2;

/// The flags of a block. Readers may change any of them but the one for UTF-16, which is the block's for good.
inline unsigned short TextFlags(const char* text) noexcept {
    return __atomic_load_n(reinterpret_cast<const unsigned short*>(text - FlagsOffset), __ATOMIC_RELAXED);
}

/// Bytes or UTF-16 units, by the text's encoding.
inline int TextLength(const char* text) noexcept {
    return *reinterpret_cast<const int*>(text - LengthOffset);
}

/// True when neither is null or the empty block's.
inline bool AreCounted(const char* a, const char* b) noexcept {
    return (reinterpret_cast<unsigned long>(a) & reinterpret_cast<unsigned long>(b) & CountedAddressBit) != 0;
}

/// Equality of any two handles' texts; null equals null alone.
QORSYSTS_EXPORT bool AreEqualAnyTexts(const char* a, const char* b) noexcept;

/// Equality of a text in UTF-16 with a narrow one, whose second view is made on demand.
inline bool AreEqualAcrossEncodings(const char* wide, const char* narrow) noexcept {
    // Acquire: with the pointer comes the view, a 32-bit length and the text behind it.
    const char* view =
        __atomic_load_n(reinterpret_cast<const char* const*>(narrow - SecondViewOffset), __ATOMIC_ACQUIRE);
    if (view == nullptr) {
        return AreEqualAnyTexts(wide, narrow);
    }
    const int length = *reinterpret_cast<const int*>(view);
    return length == TextLength(wide) &&
           std::memcmp(wide, view + sizeof length, static_cast<unsigned long>(length) * sizeof(short)) == 0;
}

/// AreEqualAnyTexts(), mostly without a call.
inline bool AreEqualTexts(const char* a, const char* b) noexcept {
    if (a == b) {
        return true;
    }
    if (!AreCounted(a, b)) {
        return AreEqualAnyTexts(a, b);
    }
    const unsigned int wide = TextFlags(a) & WideTextFlag;
    if (wide != (TextFlags(b) & WideTextFlag)) {
        return wide != 0 ? AreEqualAcrossEncodings(a, b) : AreEqualAcrossEncodings(b, a);
    }
    const int length = TextLength(a);
    return length == TextLength(b) && std::memcmp(a, b, static_cast<unsigned long>(length) << wide) == 0;
}

/// The order of any two handles' texts; see QORUnicodeString::SortCompare(). @param byUnits  Of UTF-16 units always.
QORSYSTS_EXPORT int OrderAnyTexts(const char* a, const char* b, bool byUnits) noexcept;

/// OrderAnyTexts() by bytes where both texts are narrow, which takes no call.
inline int OrderTexts(const char* a, const char* b) noexcept {
    if (AreCounted(a, b) && ((TextFlags(a) | TextFlags(b)) & WideTextFlag) == 0) {
        return std::strcmp(a, b);
    }
    return OrderAnyTexts(a, b, false);
}

/// Appends a short narrow text to one that nobody else holds, that has room for it and that has no second view and no
/// hash that would go stale. @return False when one of these is missing; then nothing has changed.
inline bool AppendShortText(char* text, const char* added) noexcept {
    constexpr unsigned long Short = 16;
    // The count comes first. Acquire: what readers on other handles made of the block before they went is there.
    if (!AreCounted(text, added) || __atomic_load_n(HandleCount(text), __ATOMIC_ACQUIRE) != 1 ||
        TextFlags(text) != StaleHashFlag || (TextFlags(added) & WideTextFlag) != 0 ||
        __atomic_load_n(reinterpret_cast<void* const*>(text - SecondViewOffset), __ATOMIC_RELAXED) != nullptr) {
        return false;
    }
    const int length = TextLength(text);
    const auto count = static_cast<unsigned long>(TextLength(added));
    const long newLength = length + static_cast<long>(count);
    if (count > Short || newLength >= *reinterpret_cast<const int*>(text - CapacityOffset)) {
        return false;
    }
    char* const end = text + length;
    // Two words that overlap where the text is shorter than both.
    if (count >= 8) {
        unsigned long words[2];
        std::memcpy(&words[0], added, 8);
        std::memcpy(&words[1], added + count - 8, 8);
        std::memcpy(end, &words[0], 8);
        std::memcpy(end + count - 8, &words[1], 8);
    } else {
        for (unsigned long i = 0; i < count; ++i) {
            end[i] = added[i];
        }
    }
    end[count] = 0;
    *reinterpret_cast<int*>(text - LengthOffset) = static_cast<int>(newLength);
    return true;
}

struct StringAccess;

} // namespace VEL::internal
