/// @file
/// The contiguous storage engine of the generated array containers.
#pragma once

#include "QORSysTSExport.h"
#include "VELArrayStorage.h"
#include "VELContainerMember.h"
#include "VELSysStatus.h"

#include <cstddef>

/// A growing array of raw slots that knows nothing of its elements: it moves bytes, and the container that holds it
/// constructs, copies and destroys. Elements must therefore bear being moved as raw bytes.
///
/// A status is 0 or VEL::StatusFailure. Without memory, the allocator's exception leaves; elements and size are then as
/// they were. There is no lock.
class QORSYSTS_EXPORT QORSysTSArrayListAbstractCtnr {
public:
    /// Empty, without a buffer. @param elementSize  Bytes of one slot.
    QORSYSTS_CONTAINER_INLINE explicit QORSysTSArrayListAbstractCtnr(int elementSize) noexcept
        : _storage{nullptr, 0, 0, elementSize, 0} {}
    QORSysTSArrayListAbstractCtnr(const QORSysTSArrayListAbstractCtnr&) = delete;
    QORSysTSArrayListAbstractCtnr& operator=(const QORSysTSArrayListAbstractCtnr&) = delete;
    /// Frees the buffer and leaves no buffer and no size.
    ~QORSysTSArrayListAbstractCtnr();

    /// Moves `count` slots from slot `src` to slot `dst`; they may overlap. @return A failure, with nothing moved, when
    /// there is no buffer, and when slots outside of it are named.
    int Move(int dst, int src, int count);
    /// 0 when an element stands at `i`.
    QORSYSTS_CONTAINER_INLINE int CheckIndex(int i) const {
        return VEL::internal::IsIndex(_storage, i) ? VEL::StatusOk : VEL::StatusFailure;
    }
    /// 0 when elements stand from `first` up to but not including `end`. An empty range is refused.
    QORSYSTS_CONTAINER_INLINE int CheckRange(int first, int end) const {
        return VEL::internal::IsRange(_storage, first, end) ? VEL::StatusOk : VEL::StatusFailure;
    }
    /// Gives the array exactly `n` slots; 0 frees the buffer. @return A failure when `n` is below the size.
    int SetCapacity(int n);
    /// Sets the size to 0 and sees to it that there are at least `n` slots. A buffer that suffices stays.
    int ReInit(int n);
    /// Opens a gap of `count` slots at slot `pos`, which may be the size; the size grows by as much. What stands in the
    /// gap is stale. The first growth gives at least 4 slots, each further one at least twice as many.
    /// @return A failure, with nothing changed, for a `pos` outside 0 to the size, for a negative `count` and for a
    /// size that no int can hold.
    int MakeRoom(int pos, int count);
    /// Grows as MakeRoom() does until `size` elements have room. The size stays.
    QORSYSTS_PRIVATE int _Reserve(int size);

    /// For the container that is built on the engine.
    VEL::internal::ArrayStorage _storage;
};

static_assert(sizeof(QORSysTSArrayListAbstractCtnr) == 24);
static_assert(offsetof(QORSysTSArrayListAbstractCtnr, _storage.buffer) == 0);
static_assert(offsetof(QORSysTSArrayListAbstractCtnr, _storage.size) == 8);
static_assert(offsetof(QORSysTSArrayListAbstractCtnr, _storage.capacity) == 12);
static_assert(offsetof(QORSysTSArrayListAbstractCtnr, _storage.elementSize) == 16);
