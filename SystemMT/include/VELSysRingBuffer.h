/// @file
/// A ring of a fixed number of pointers between threads.
#pragma once

#include "QORSysMTExport.h"

/// A ring buffer. All functions but `VELSysRingBufferFree` may be called by any thread at once with one ring. Entries
/// are never owned: whoever frees a ring pops and releases them first. What was written to an entry before it was
/// pushed is seen by whoever pops it. Nothing is allocated after the ring was made.
struct VELSysRingBuffer;

/// @param capacity  The largest number of entries.
/// @return A new ring, given back with `VELSysRingBufferFree`; null when `capacity` is below 1 or memory is short.
QORSYSMT_EXPORT VELSysRingBuffer* VELSysRingBufferAlloc(int capacity);

/// Puts an entry behind all others.
/// @return 0, or -1, at once and with nothing changed, when the ring is full or an argument is null.
QORSYSMT_EXPORT int VELSysRingBufferPush(VELSysRingBuffer* ring, void* entry);

/// Takes the oldest entry.
/// @param entry  Receives the entry, or null when nothing is left or `ring` is null.
/// @return 0, or -1 when there was no entry to take or `entry` is null.
QORSYSMT_EXPORT int VELSysRingBufferPop(VELSysRingBuffer* ring, void** entry);

/// Answers as all yes-or-no questions of the family do, so that a non-zero answer says that there is something to take.
/// @return 0 when the ring is empty or `ring` is null, -1 when it holds at least one entry.
QORSYSMT_EXPORT int VELSysRingBufferIsEmpty(VELSysRingBuffer* ring);

/// Frees a ring that nobody uses any more. Null is ignored.
QORSYSMT_EXPORT void VELSysRingBufferFree(VELSysRingBuffer* ring);
