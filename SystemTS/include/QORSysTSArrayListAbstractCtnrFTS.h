/// @file
/// The array engine with a lock.
#pragma once

#include "QORMutex.h"
#include "QORSysTSExport.h"
#include "VELArrayStorage.h"

/// The engine of QORSysTSArrayListAbstractCtnr with a recursive mutex that guards its fields, not its elements: a
/// pointer into the buffer is not protected once a call has returned.
///
/// A status is 0 or VEL::StatusFailure. Without memory, the allocator's exception leaves; elements and size are then as
/// they were.
class QORSYSTS_EXPORT QORSysTSArrayListAbstractCtnrFTS {
public:
    /// Empty, without a buffer. @param elementSize  Bytes of one slot.
    explicit QORSysTSArrayListAbstractCtnrFTS(int elementSize);
    /// Takes raw slots for as many elements as `other` has; the derived class copies the elements into them. Holds the
    /// mutex of `other`.
    QORSysTSArrayListAbstractCtnrFTS(const QORSysTSArrayListAbstractCtnrFTS& other);
    QORSysTSArrayListAbstractCtnrFTS& operator=(const QORSysTSArrayListAbstractCtnrFTS&) = delete;
    /// Frees the buffer.
    ~QORSysTSArrayListAbstractCtnrFTS();

    // These three take no lock.

    /// Frees the buffer: no elements, no capacity.
    void ReInit();
    /// Frees the buffer and takes `n` raw slots, all of them in use. When there is no memory for them, the array is
    /// empty afterwards.
    void ReInit(int n);
    /// Moves `count` slots from slot `src` to slot `dst`; they may overlap. Nothing is moved when slots outside of the
    /// buffer are named.
    void Move(int dst, int src, int count);

    // These hold the mutex while they run.

    /// Takes a new buffer of as many slots as the capacity says, unless that is 0, and moves the elements there.
    void ReAllocate();
    /// Adds `n` raw slots to those in use. An `n` below 1 adds none.
    void IncreaseLength(int n);
    /// 0 when an element stands at `i`.
    int CheckIndex(int i) const;
    /// 0 when elements stand from `first` up to but not including `end`.
    int CheckRange(int first, int end) const;
    /// Opens a gap of `count` slots at slot `pos`, which may be the size. With a `count` below 1 the size stays, and
    /// what stands from `pos` on still moves, by that many slots towards the front.
    /// @return A failure for a `pos` outside 0 to the size, and for a size that no int can hold.
    int MakeRoom(int pos, int count);
    /// Gives the array exactly `n` slots. Does nothing for an `n` below the size; 0 leaves the buffer. Deliberately
    /// gives the mutex back between setting the capacity and taking the new buffer.
    void SetCapacity(int n);

    // For the container that is built on the engine. The mutex stands first.

    mutable QORMutex _mutex;
    VEL::internal::ArrayStorage _storage;
};

static_assert(sizeof(QORSysTSArrayListAbstractCtnrFTS) == sizeof(QORMutex) + sizeof(VEL::internal::ArrayStorage));
