/// @file
/// The 32-bit status codes, named once.
///
/// A status is 0 for success and negative for failure; a few operations answer 1, a success with a note. Where a
/// declaration returns `long`, the code is sign-extended.
#pragma once

namespace VEL {

/// A status as the operations of paths, files, containers, language support, time, JSON and digests return it.
enum Status : int {
    StatusOk = 0,                                         ///< Success.
    StatusNote = 1,                                       ///< Success with a note; the operation says which.
    StatusNotImplemented = static_cast<int>(0x80004001u), ///< The operation does nothing on this platform.
    StatusNoInterface = static_cast<int>(0x80004002u),    ///< The object doesn't have what is asked for.
    StatusNoObject = static_cast<int>(0x80004003u),       ///< The handle has nothing behind it.
    StatusFailure = static_cast<int>(0x80004005u),        ///< Failure without a closer reason.
    StatusUnexpected = static_cast<int>(0x8000FFFFu),     ///< The object is in a state that the operation can't serve.
    StatusNotFound = static_cast<int>(0x80070002u),       ///< There is no such thing.
    StatusRefused = static_cast<int>(0x80070005u),        ///< Access is refused or the facility is switched off.
    StatusBadHandle = static_cast<int>(0x80070006u),      ///< A file argument is null.
    StatusNoMoreFiles = static_cast<int>(0x80070012u),    ///< An enumeration has ended.
    StatusBadArgument = static_cast<int>(0x80070057u),    ///< An argument is null or out of range.
    StatusTooLarge = static_cast<int>(0x8007006fu),       ///< A number doesn't fit where it has to go.
    StatusNoLibrary = static_cast<int>(0x8007045au),      ///< The library that would answer can't be reached.
    StatusNotEmpty = static_cast<int>(0x80074005u),       ///< A directory still has entries; any unmapped `errno`.
    StatusBadName = static_cast<int>(0x800300fcu),        ///< A name holds a character that names don't have.
    StatusPathTooLong = static_cast<int>(0x80010135u),    ///< A path or a piece of one has 1025 bytes or more.
};

} // namespace VEL
