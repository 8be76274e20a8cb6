/// @file
/// What a call of the system on a file answered, as a status; and the kinds of file that are told apart.
#pragma once

#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>

namespace VEL::internal {

/// The status of the call that has just set `errno`.
inline int SystemError() {
    return VELConvertError(errno, VELSysFacilitySystem);
}

/// The status of a call that answers 0, or anything else with `errno` set. To be asked before anything can change
/// `errno`, a destructor included.
inline int StatusOfCall(int result) {
    return result == 0 ? VEL::StatusOk : SystemError();
}

// Deliberate: one bit of the mode is tested, not the type, which has four. So a socket is a file and a directory, and a
// block device a directory.

inline bool IsFileMode(unsigned int mode) {
    return (mode & 0x8000) != 0;
}

inline bool IsDirectoryMode(unsigned int mode) {
    return (mode & 0x4000) != 0;
}

} // namespace VEL::internal
