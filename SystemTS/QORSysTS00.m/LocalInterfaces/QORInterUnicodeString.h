/// @file
/// The block in which all text lives.
#pragma once

#include "VELStringHandle.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

/// The other encoding of a block's text, made on demand: UTF-16 for a narrow block, the environment's multi-byte text
/// for a wide one. One allocation; the text follows the length.
struct QORInterUnicodeView {
    std::int32_t _length;    ///< Length in the view's own units, without the terminator.
    unsigned short _text[2]; ///< The text, zero-terminated; runs on behind the structure.

    // From the structure's start: the text is longer than the member.
    char* Narrow() { return reinterpret_cast<char*>(this) + HeaderSize; }
    unsigned short* UTF16() { return reinterpret_cast<unsigned short*>(Narrow()); }

    static constexpr std::size_t HeaderSize = sizeof(std::int32_t);
};

/// Text in one of the encodings. Text and length belong together: a view that was missing when one of them was asked
/// for may be there for the other.
template <class Unit>
struct TextRange {
    const Unit* text;
    int length;
};

/// A shared, reference-counted text block: a header without gaps and, directly behind the flags, the text in the
/// encoding in which it arrived.
///
/// A block with one handle may be written by the holder of that handle; a block with more is read-only. Who writes:
/// `_secondView`, `_hash` and `_flags` any reader, each atomically; `_refCount` any holder, atomically; all else only
/// the holder of a block alone.
class QORInterUnicodeString {
public:
    using Block = QORInterUnicodeString*;
    using View = QORInterUnicodeView*;

    /// Bytes in front of the text. Takes part in the arithmetic of capacities.
    static constexpr std::size_t HeaderSize = 26;
    static constexpr std::uint16_t WideFlag = 1;  ///< The main representation is UTF-16.
    static constexpr std::uint16_t StaleFlag = 2; ///< `_hash` is not that of the text.

    // Blocks and handles.
    static Block FromText(char* text) { return reinterpret_cast<Block>(text - HeaderSize); }
    char* Text() { return reinterpret_cast<char*>(this) + HeaderSize; }
    const char* Text() const { return reinterpret_cast<const char*>(this) + HeaderSize; }
    unsigned short* Wide() { return reinterpret_cast<unsigned short*>(Text()); }
    const unsigned short* Wide() const { return reinterpret_cast<const unsigned short*>(Text()); }

    /// The one block of every string without text: narrow, of length and capacity 0, never counted, never freed.
    static Block Empty();
    bool IsTheEmptyBlock() const { return this == Empty(); }
    bool IsWide() const { return (_flags.load(std::memory_order_relaxed) & WideFlag) != 0; }
    /// True while one handle holds the block. Acquire: what other handles read before they went is behind us.
    bool IsAlone() const { return _refCount.load(std::memory_order_acquire) < 2; }

    /// A narrow block whose text of `length` bytes the caller fills in; the empty block for a length below 1 and when
    /// there is no memory.
    static Block _NewNarrow(int length);
    /// A wide block for `length` units, likewise.
    static Block _NewWide(int length);
    /// A narrow block with a copy of `length` bytes; the empty block for null and a length below 1.
    static Block _FromBytes(const char* bytes, std::size_t length);
    /// One handle less. The new count, or -1 for the empty block; frees the block at 0.
    static int _Release(Block block);

    /// The block that now holds `length` bytes (all up to the terminator for a negative length) as narrow text: the
    /// given one where it can be reused, otherwise a new one, the given one being released.
    static Block _SetBytes(Block block, const char* bytes, int length);
    /// As _SetBytes() for UTF-16; a null `units` or a length below 1 gives the empty block.
    static Block _SetUnits(Block block, const unsigned short* units, int length);

    /// A block of one handle in which `length` units can be written, from one of the same representation.
    /// @param keep  Keep the text, as far as it fits. Then the caller runs _MarkChanged() after writing.
    /// @param grow  Leave room for further growth when a larger block is needed.
    static Block _EnsureNarrow(Block block, int length, bool keep, bool grow);
    static Block _EnsureWide(Block block, int length, bool keep, bool grow);
    /// The length of the block that replaces one which can't be written or is too small for `length` units.
    /// @param grow  Leave room for further growth when the old block is too small.
    static int _NewLength(Block block, int length, bool grow);
    /// True for a block alone and too large for the pool, which the C library may give more room where it stands: that
    /// spares large texts their copy.
    static bool _IsEnlargedInPlace(Block block);
    /// Such a block with room for `length` units, changed and with its text; the empty block without memory.
    static Block _Enlarge(Block block, int length);
    /// A new wide block from a narrow one, which is released.
    static Block _ToWide(Block block, int length, bool keep);
    /// A new narrow block from a wide one, which is released.
    static Block _ToNarrow(Block block, int length, bool keep);

    /// The second view, or null while none is built.
    View SecondView() const {
        // Acquire: with the pointer comes the view's text.
        return _secondView.load(std::memory_order_acquire);
    }
    /// The second view of a narrow block, built when missing; null when there is no memory for it.
    View _GetUTF16View() const;
    /// The second view of a wide block, likewise.
    View _GetMBCSView() const;
    /// Drops the second view. A view that readers of a shared block may still hold is abandoned, not freed.
    void _DeleteSecondView() const;
    /// Every change of text ends with this: the view is dropped and the hash is stale.
    void _MarkChanged() {
        if (IsTheEmptyBlock()) {
            return;
        }
        if (_secondView.load(std::memory_order_relaxed) != nullptr) {
            _DeleteSecondView();
        }
        std::uint16_t flags = _flags.load(std::memory_order_relaxed);
        while ((flags & StaleFlag) == 0 && !_flags.compare_exchange_weak(flags, flags | StaleFlag)) {
        }
    }
    /// The hash of the text: 31 bits, equal for equal text in either representation.
    std::uint32_t _GetHash() const;

    // The text in either encoding, whatever the main representation. Null and 0 only when a view can't be allocated.
    TextRange<unsigned short> _GetUTF16() const {
        if (IsWide()) {
            return {Wide(), _length};
        }
        View view = SecondView();
        if (view == nullptr) {
            view = _GetUTF16View();
        }
        return view != nullptr ? TextRange<unsigned short>{view->UTF16(), view->_length}
                               : TextRange<unsigned short>{nullptr, 0};
    }
    TextRange<char> _GetMBCS() const {
        if (!IsWide()) {
            return {Text(), _length};
        }
        View view = SecondView();
        if (view == nullptr) {
            view = _GetMBCSView();
        }
        return view != nullptr ? TextRange<char>{view->Narrow(), view->_length} : TextRange<char>{nullptr, 0};
    }
    const unsigned short* _GetUTF16Text() const { return _GetUTF16().text; }
    /// Of a narrow block without text no view is built.
    int _GetUTF16Length() const { return _length != 0 ? _GetUTF16().length : 0; }
    const char* _GetMBCSText() const { return _GetMBCS().text; }
    int _GetMBCSLength() const { return _GetMBCS().length; }

    /// Puts the terminator behind `length` units and makes that the length.
    void SetLength(int length) {
        _length = length;
        if (IsWide()) {
            Wide()[length] = 0;
        } else {
            Text()[length] = 0;
        }
    }

    constexpr QORInterUnicodeString(View view, std::int32_t length, std::int32_t capacity, std::uint16_t flags)
        : _secondView(view), _length(length), _capacity(capacity), _hash(0), _refCount(1), _flags(flags), _text{} {}

    mutable std::atomic<View> _secondView;
    std::int32_t _length;   ///< Units of the main representation, without the terminator.
    std::int32_t _capacity; ///< Units that the block holds, terminator included.
    mutable std::atomic<std::uint32_t> _hash;
    std::atomic<std::int32_t> _refCount;
    mutable std::atomic<std::uint16_t> _flags;
    unsigned short _text[3]; ///< The first bytes of the text, which runs on behind the structure.

private:
    template <class Convert>
    View _PublishView(std::size_t bytes, const Convert& convert) const;
};

/// What the two representations differ in.
template <bool IsWide>
struct Representation;

template <>
struct Representation<false> {
    using Unit = char;
    using Block = QORInterUnicodeString::Block;
    static constexpr std::uint16_t Flag = 0;
    static Unit* Text(Block block) { return block->Text(); }
    static Block New(int length) { return QORInterUnicodeString::_NewNarrow(length); }
    static Block Set(Block block, const Unit* text, int length) {
        return QORInterUnicodeString::_SetBytes(block, text, length);
    }
};

template <>
struct Representation<true> {
    using Unit = unsigned short;
    using Block = QORInterUnicodeString::Block;
    static constexpr std::uint16_t Flag = QORInterUnicodeString::WideFlag;
    static Unit* Text(Block block) { return block->Wide(); }
    static Block New(int length) { return QORInterUnicodeString::_NewWide(length); }
    static Block Set(Block block, const Unit* text, int length) {
        return QORInterUnicodeString::_SetUnits(block, text, length);
    }
};

template <bool IsWide>
using UnitOf = typename Representation<IsWide>::Unit;

/// The empty block where its address tells it from all others; VEL::internal::IsCounted() says how.
struct alignas(16) QOREmptyBlock {
    unsigned long offset;
    QORInterUnicodeString block;
};

static_assert(((offsetof(QOREmptyBlock, block) + QORInterUnicodeString::HeaderSize) &
               VEL::internal::CountedAddressBit) == 0);
static_assert((QORInterUnicodeString::HeaderSize & VEL::internal::CountedAddressBit) != 0 &&
                  alignof(std::max_align_t) >= 2 * VEL::internal::CountedAddressBit,
              "the text of a block from the heap has the bit set");

namespace VEL::internal {

extern QOREmptyBlock s_emptyBlock;

/// Makes the view of the empty block an empty text; part of loading the library.
void ClearEmptyView();

} // namespace VEL::internal

inline QORInterUnicodeString::Block QORInterUnicodeString::Empty() {
    return &VEL::internal::s_emptyBlock.block;
}

static_assert(offsetof(QORInterUnicodeView, _text) == QORInterUnicodeView::HeaderSize);
static_assert(offsetof(QORInterUnicodeString, _secondView) == 0);
static_assert(offsetof(QORInterUnicodeString, _length) == 8);
static_assert(offsetof(QORInterUnicodeString, _capacity) == 12);
static_assert(offsetof(QORInterUnicodeString, _hash) == 16);
static_assert(offsetof(QORInterUnicodeString, _refCount) == 20);
static_assert(offsetof(QORInterUnicodeString, _flags) == 24);
static_assert(offsetof(QORInterUnicodeString, _text) == QORInterUnicodeString::HeaderSize);
static_assert(sizeof(QORInterUnicodeString) == 32, "the smallest granted block holds the whole structure");
static_assert(std::atomic<std::uint16_t>::is_always_lock_free &&
              std::atomic<QORInterUnicodeView*>::is_always_lock_free);
