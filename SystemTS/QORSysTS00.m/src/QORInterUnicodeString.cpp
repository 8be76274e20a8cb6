#include "QORInterUnicodeString.h"

#include "Assertion.h"
#include "EnvironmentConverter.h"
#include "TestHarness.h"
#include "TextCopy.h"
#include "VELDebugBreak.h"
#include "VELStringHandle.h"
#include "VELStringPool.h"
#include "VELSysUCAlgorithm.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

using VEL::internal::StringPool;
using VEL::internal::ThisThreadsStringPool;
using Block = QORInterUnicodeString::Block;
using View = QORInterUnicodeString::View;

static_assert(QORInterUnicodeString::HeaderSize - offsetof(QORInterUnicodeString, _refCount) ==
              VEL::internal::HandleCountOffset);
static_assert(QORInterUnicodeString::HeaderSize - offsetof(QORInterUnicodeString, _flags) ==
              VEL::internal::FlagsOffset);
static_assert(QORInterUnicodeString::HeaderSize - offsetof(QORInterUnicodeString, _length) ==
              VEL::internal::LengthOffset);
static_assert(QORInterUnicodeString::HeaderSize - offsetof(QORInterUnicodeString, _capacity) ==
              VEL::internal::CapacityOffset);
static_assert(QORInterUnicodeString::HeaderSize - offsetof(QORInterUnicodeString, _secondView) ==
              VEL::internal::SecondViewOffset);
static_assert(QORInterUnicodeString::WideFlag == VEL::internal::WideTextFlag &&
              QORInterUnicodeString::StaleFlag == VEL::internal::StaleHashFlag);

namespace {

/// Serves as an empty narrow and as an empty UTF-16 text.
constinit QORInterUnicodeView s_emptyView{0, {0, 0}};

/// Bytes of a block for `length` units, and what that gives it room for.
template <bool IsWide>
struct BlockSize {
    explicit BlockSize(int length)
        : bytes((static_cast<std::size_t>(length) + 1) * UnitSize + QORInterUnicodeString::HeaderSize),
          capacity((StringPool::GrantedSize(bytes) - QORInterUnicodeString::HeaderSize) / UnitSize) {}

    /// A capacity that its field can't hold counts as no memory.
    bool IsTooLarge() const { return capacity > INT_MAX; }

    static constexpr std::size_t UnitSize = sizeof(UnitOf<IsWide>);
    std::size_t bytes;
    std::size_t capacity;
};

/// Bytes with which a block goes back to the pool. Deliberate: the capacity of a wide block counts units, so it goes
/// back as a smaller block than it is.
std::size_t ReturnedSize(const QORInterUnicodeString& block) {
    return static_cast<std::size_t>(block._capacity) + QORInterUnicodeString::HeaderSize;
}

/// A block of one handle; its text is left to the caller, but for the terminator.
template <bool IsWide>
inline Block NewBlock(int length) {
    if (length < 1) {
        return QORInterUnicodeString::Empty();
    }
    const BlockSize<IsWide> size(length);
    if (size.IsTooLarge()) [[unlikely]] {
        return QORInterUnicodeString::Empty();
    }
    const auto block = static_cast<Block>(ThisThreadsStringPool().Take(size.bytes));
    if (block == nullptr) [[unlikely]] {
        return QORInterUnicodeString::Empty();
    }
    // The fields are set one by one: the structure's last bytes are text already, which the caller fills in.
    new (&block->_secondView) std::atomic<View>(nullptr);
    block->_length = length;
    block->_capacity = static_cast<std::int32_t>(size.capacity);
    new (&block->_hash) std::atomic<std::uint32_t>(0);
    new (&block->_refCount) std::atomic<std::int32_t>(1);
    new (&block->_flags) std::atomic<std::uint16_t>(QORInterUnicodeString::StaleFlag | Representation<IsWide>::Flag);
    Representation<IsWide>::Text(block)[length] = 0;
    return block;
}

/// Fills a new block with the first units of a text, at most `length` of them, and makes that its length.
template <bool IsWide>
void CopyInto(Block block, const UnitOf<IsWide>* text, int count) {
    VEL::internal::Copy(Representation<IsWide>::Text(block), text, count);
    block->SetLength(count);
}

template <bool IsWide>
Block Enlarge(Block block, int length) {
    const BlockSize<IsWide> size(length);
    void* const larger = size.IsTooLarge() ? nullptr : std::realloc(block, StringPool::GrantedSize(size.bytes));
    if (larger == nullptr) {
        QORInterUnicodeString::_Release(block);
        return QORInterUnicodeString::Empty();
    }
    block = static_cast<Block>(larger);
    block->_capacity = static_cast<std::int32_t>(size.capacity);
    block->_MarkChanged();
    return block;
}

template <bool IsWide>
Block Ensure(Block block, int length, bool keep, bool grow) {
    length = std::max(length, 0);
    if (block->_capacity > length && block->IsAlone()) {
        if (!keep) {
            block->_MarkChanged();
        }
        return block;
    }
    const int newLength = QORInterUnicodeString::_NewLength(block, length, grow);
    if (keep && block->_capacity <= length && QORInterUnicodeString::_IsEnlargedInPlace(block)) {
        return Enlarge<IsWide>(block, newLength);
    }
    const Block fresh = NewBlock<IsWide>(newLength);
    if (keep && !fresh->IsTheEmptyBlock()) {
        CopyInto<IsWide>(fresh, Representation<IsWide>::Text(block), std::min(block->_length, length));
    }
    QORInterUnicodeString::_Release(block);
    return fresh;
}

/// A block of the other representation, filled from the second view. Without a view, for want of memory, the text is
/// lost as it is when the block itself can't be had.
template <bool IsWide>
Block Change(Block block, int length, bool keep) {
    Block fresh = NewBlock<IsWide>(length);
    if (keep && !fresh->IsTheEmptyBlock()) {
        const auto source = [&] {
            if constexpr (IsWide) {
                return block->_GetUTF16();
            } else {
                return block->_GetMBCS();
            }
        }();
        if (source.text != nullptr) {
            CopyInto<IsWide>(fresh, source.text, std::min(source.length, length));
        } else {
            QORInterUnicodeString::_Release(fresh);
            fresh = QORInterUnicodeString::Empty();
        }
    }
    QORInterUnicodeString::_Release(block);
    return fresh;
}

/// The block that now holds `length` units at `text`, which may lie inside the given block.
template <bool IsWide>
Block Store(Block block, const UnitOf<IsWide>* text, int length) {
    if (block->IsAlone() && block->_capacity > length && block->IsWide() == IsWide) {
        std::memmove(Representation<IsWide>::Text(block), text,
                     static_cast<std::size_t>(length) * sizeof(UnitOf<IsWide>));
        block->SetLength(length);
        block->_MarkChanged();
        return block;
    }
    const Block fresh = NewBlock<IsWide>(length);
    if (!fresh->IsTheEmptyBlock()) {
        CopyInto<IsWide>(fresh, text, length);
    }
    // Last, since the text may be the old block's own.
    QORInterUnicodeString::_Release(block);
    return fresh;
}

/// False for a text whose narrow form is too long for any block.
bool HasNarrowLength(const VELSysCodePage& converter, const unsigned short* text, int length) {
    return converter.IsUTF8() && VELSysUCAlgorithm::ConvertUTF16ToUTF8(text, length, nullptr, 0) >= 0;
}

} // namespace

constinit QOREmptyBlock VEL::internal::s_emptyBlock{0, {&s_emptyView, 0, 0, 0}};

constinit unsigned short* const VEL::internal::EmptyText = VEL::internal::s_emptyBlock.block._text;

void VEL::internal::ClearEmptyView() {
    s_emptyView._length = 0;
    std::memset(s_emptyView._text, 0, sizeof s_emptyView._text);
}

void VEL::internal::DestroyBlock(char* text) noexcept {
    const Block block = QORInterUnicodeString::FromText(text);
    if (block->_secondView.load(std::memory_order_relaxed) != nullptr) {
        block->_DeleteSecondView();
    }
    ThisThreadsStringPool().Give(block, ReturnedSize(*block));
}

Block QORInterUnicodeString::_NewNarrow(int length) {
    return NewBlock<false>(length);
}

Block QORInterUnicodeString::_NewWide(int length) {
    return NewBlock<true>(length);
}

Block QORInterUnicodeString::_FromBytes(const char* bytes, std::size_t length) {
    // A length that no block can have counts as no memory.
    if (bytes == nullptr || length > INT_MAX) {
        return Empty();
    }
    const Block block = NewBlock<false>(static_cast<int>(length));
    if (!block->IsTheEmptyBlock()) {
        VEL::internal::Copy(block->Text(), bytes, static_cast<std::ptrdiff_t>(length));
    }
    return block;
}

int QORInterUnicodeString::_Release(Block block) {
    return VEL::internal::DropHandle(block->Text());
}

Block QORInterUnicodeString::_SetBytes(Block block, const char* bytes, int length) {
    std::size_t count = static_cast<std::size_t>(length);
    if (bytes != nullptr && length < 0) {
        count = std::strlen(bytes);
    }
    if (bytes == nullptr || count > INT_MAX) {
        _Release(block);
        return Empty();
    }
    return Store<false>(block, bytes, static_cast<int>(count));
}

Block QORInterUnicodeString::_SetUnits(Block block, const unsigned short* units, int length) {
    if (units == nullptr || length < 1) {
        _Release(block);
        return Empty();
    }
    return Store<true>(block, units, length);
}

int QORInterUnicodeString::_NewLength(Block block, int length, bool grow) {
    if (block->_capacity > length || !grow) {
        return length;
    }
    const std::int64_t grown = static_cast<std::int64_t>(block->_capacity) * 3 / 2;
    return static_cast<int>(std::clamp<std::int64_t>(grown, length, INT_MAX));
}

bool QORInterUnicodeString::_IsEnlargedInPlace(Block block) {
    return block->IsAlone() && ReturnedSize(*block) > StringPool::LargestPooledSize;
}

Block QORInterUnicodeString::_Enlarge(Block block, int length) {
    return block->IsWide() ? Enlarge<true>(block, length) : Enlarge<false>(block, length);
}

Block QORInterUnicodeString::_EnsureNarrow(Block block, int length, bool keep, bool grow) {
    return Ensure<false>(block, length, keep, grow);
}

Block QORInterUnicodeString::_EnsureWide(Block block, int length, bool keep, bool grow) {
    return Ensure<true>(block, length, keep, grow);
}

Block QORInterUnicodeString::_ToWide(Block block, int length, bool keep) {
    return Change<true>(block, length, keep);
}

Block QORInterUnicodeString::_ToNarrow(Block block, int length, bool keep) {
    return Change<false>(block, length, keep);
}

/// Builds a view of `bytes` bytes and makes it the block's, unless another thread was faster.
template <class Convert>
View QORInterUnicodeString::_PublishView(std::size_t bytes, const Convert& convert) const {
    StringPool& pool = ThisThreadsStringPool();
    const auto view = static_cast<View>(pool.Take(bytes));
    if (view == nullptr) {
        VELDebugBreak(1);
        return nullptr;
    }
    convert(view);
    View published = nullptr;
    // Release: whoever sees the pointer sees the text. Acquire: the other thread's text, when it was faster.
    if (_secondView.compare_exchange_strong(published, view, std::memory_order_acq_rel, std::memory_order_acquire)) {
        return view;
    }
    pool.Give(view, StringPool::GrantedSize(bytes));
    return published;
}

View QORInterUnicodeString::_GetUTF16View() const {
    if (const View view = SecondView()) {
        return view;
    }
    const std::size_t room = static_cast<std::size_t>(_length) + 1;
    return _PublishView(room * sizeof(unsigned short) + QORInterUnicodeView::HeaderSize, [this, room](View view) {
        // The converter's way of working in a room makes a unit of each damaged byte at the end, too.
        const char* next = Text();
        auto left = static_cast<unsigned long>(_length);
        const int units = VEL::internal::EnvironmentConverter().ConvertMBCSToUTF16(next, left, view->UTF16(), room);
        // A few code pages have bytes that give several units each; what exceeds the room is lost.
        view->_length = std::min(units, _length);
        view->UTF16()[view->_length] = 0;
    });
}

View QORInterUnicodeString::_GetMBCSView() const {
    if (const View view = SecondView()) {
        return view;
    }
    const VELSysCodePage& converter = VEL::internal::EnvironmentConverter();
    // The longest character is no bound by itself: while no language table is configured it is 1 whatever the code
    // page is. What the converter really asks of its callers is 4 bytes per unit.
    constexpr int ConvertersDemand = 4;
    const auto bytesPerUnit = static_cast<std::size_t>(std::max(converter.GetMaxCharSize(), ConvertersDemand));
    const std::size_t room = static_cast<std::size_t>(_length) * bytesPerUnit + 1;
    // A length that its field can't hold counts as no memory.
    if (room > INT_MAX && !HasNarrowLength(converter, Wide(), _length)) {
        VELDebugBreak(1);
        return nullptr;
    }
    return _PublishView(room + QORInterUnicodeView::HeaderSize, [&](View view) {
        int written = 0;
        converter.ConvertUTF16ToMBCS(Wide(), _length, view->Narrow(), &written);
        view->Narrow()[written] = 0;
        view->_length = written;
    });
}

void QORInterUnicodeString::_DeleteSecondView() const {
    if (IsTheEmptyBlock()) {
        return;
    }
    if (!IsAlone()) {
        // A reader on another thread may hold a pointer into the view: a small leak is better than a dangling pointer.
        // The test harness wants to know, also in a build without assertions.
        if (VEL::internal::IsInRTX()) {
            VEL::internal::FailAssertion("!IsInRTX()", __FILE__, __LINE__, __PRETTY_FUNCTION__);
        }
        _secondView.store(nullptr, std::memory_order_relaxed);
        // What a reader publishes from here on is that reader's.
        return;
    }
    if (const View view = SecondView()) {
        // Deliberately not through the pool, whose buckets stay those of blocks.
        std::free(view);
        _secondView.store(nullptr, std::memory_order_relaxed);
    }
}

std::uint32_t QORInterUnicodeString::_GetHash() const {
    // Acquire: with the bit clear, the hash stored before it was cleared is the one read.
    std::uint16_t flags = _flags.load(std::memory_order_acquire);
    if ((flags & StaleFlag) == 0) {
        return _hash.load(std::memory_order_relaxed);
    }
    const auto length = static_cast<unsigned long>(_length);
    std::uint32_t hash;
    if ((flags & WideFlag) != 0) {
        hash = VELSysUCAlgorithm::HashV3FromUCS2(Wide(), length, 0);
    } else if (VEL::internal::EnvironmentConverter().IsUTF8()) {
        hash = VELSysUCAlgorithm::HashV3FromUTF8(Text(), length, 0);
    } else {
        hash = VELSysUCAlgorithm::HashV3FromMBCSOptimistic(Text(), length, 0, nullptr);
    }
    hash &= 0x7FFFFFFFu;
    _hash.store(hash, std::memory_order_relaxed);
    // Sequentially consistent, which is the full fence between the two stores.
    while ((flags & StaleFlag) != 0 &&
           !_flags.compare_exchange_weak(flags, static_cast<std::uint16_t>(flags & ~StaleFlag))) {
    }
    return hash;
}
