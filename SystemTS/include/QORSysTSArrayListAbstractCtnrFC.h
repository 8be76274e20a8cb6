/// @file
/// The array engine whose content can be frozen.
#pragma once

#include "QORSysTSExport.h"
#include "VELArrayStorage.h"

#include <cstddef>

/// The engine of QORSysTSArrayListAbstractCtnr with a flag that closes it: while it is set every operation is refused,
/// reads included. Operations with a status then answer VEL::StatusBadArgument, before they look at anything else; the
/// others do nothing.
///
/// Without memory, the allocator's exception leaves; elements and size are then as they were. There is no lock.
class QORSYSTS_EXPORT QORSysTSArrayListAbstractCtnrFC {
public:
    /// Empty, without a buffer. Deliberately leaves the flag as it finds it, as does the copy: a derived class calls
    /// UnFreezeContent() before its first use. @param elementSize  Bytes of one slot.
    explicit QORSysTSArrayListAbstractCtnrFC(int elementSize);
    /// Takes raw slots for as many elements as `other` has; the derived class copies the elements into them.
    QORSysTSArrayListAbstractCtnrFC(const QORSysTSArrayListAbstractCtnrFC& other);
    QORSysTSArrayListAbstractCtnrFC& operator=(const QORSysTSArrayListAbstractCtnrFC&) = delete;
    /// Frees the buffer, frozen or not.
    ~QORSysTSArrayListAbstractCtnrFC();

    /// Sets the flag. Setting it twice needs one UnFreezeContent() only.
    void FreezeContent();
    /// Clears the flag.
    void UnFreezeContent();
    /// Frees the buffer: no elements, no capacity.
    void ReInit();
    /// Frees the buffer and takes `n` raw slots, all of them in use. When there is no memory for them, the array is
    /// empty afterwards.
    void ReInit(int n);
    /// Moves `count` slots from slot `src` to slot `dst`; they may overlap. Nothing is moved when slots outside of the
    /// buffer are named.
    void Move(int dst, int src, int count);
    /// Takes a new buffer of as many slots as the capacity says, unless that is 0, and moves the elements there.
    void ReAllocate();
    /// Adds `n` raw slots to those in use. An `n` below 1 adds none.
    void IncreaseLength(int n);
    /// 0 when an element stands at `i`, otherwise VEL::StatusFailure.
    int CheckIndex(int i) const;
    /// 0 when elements stand from `first` up to but not including `end`, otherwise VEL::StatusFailure.
    int CheckRange(int first, int end) const;
    /// Opens a gap of `count` slots at slot `pos`, which may be the size. With a `count` below 1 the size stays, and
    /// what stands from `pos` on still moves, by that many slots towards the front.
    /// @return VEL::StatusFailure for a `pos` outside 0 to the size, and for a size that no int can hold.
    int MakeRoom(int pos, int count);
    /// Gives the array exactly `n` slots. Does nothing for an `n` below the size; 0 leaves the buffer.
    void SetCapacity(int n);

    // For the container that is built on the engine.

    int _frozen;
    VEL::internal::ArrayStorage _storage;
};

static_assert(sizeof(QORSysTSArrayListAbstractCtnrFC) == 32);
static_assert(offsetof(QORSysTSArrayListAbstractCtnrFC, _frozen) == 0);
static_assert(offsetof(QORSysTSArrayListAbstractCtnrFC, _storage) == 8);
