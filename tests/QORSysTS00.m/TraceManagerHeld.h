/// @file
/// The manager of the traces as the tests choose it: whether there is one, and how often it is held.
#pragma once

namespace TraceManagerHeld {

/// What is locked as the manager; null for none. It is never looked into.
inline void* manager = nullptr;
/// Locks that are held, and locks taken so far.
inline int held = 0;
inline int taken = 0;

} // namespace TraceManagerHeld
