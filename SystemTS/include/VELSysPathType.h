/// @file
/// Kinds of path, told from the head of a text, and status codes for errors of the system: what all path and file code
/// stands on.
#pragma once

#include "QORSysTSExport.h"

#include <cstddef>

// Marks of a location as 16-bit text, each with a zero unit behind it.
QORSYSTS_EXPORT extern const unsigned short URL[4];      ///< "://"
QORSYSTS_EXPORT extern const unsigned short HTTPURL[8];  ///< "http://"
QORSYSTS_EXPORT extern const unsigned short HTTPSURL[9]; ///< "https://"
QORSYSTS_EXPORT extern const unsigned short DLURL[10];   ///< "QORDLN://"
QORSYSTS_EXPORT extern const unsigned short RBQURL[12];  ///< "RBQVAULT://"
QORSYSTS_EXPORT extern const unsigned short DLHead[4];   ///< Head of a logical name: 0x0001, 0x0002, 0x005C.

// Single units, without a terminator.
QORSYSTS_EXPORT extern const unsigned short Slash[1]; ///< "/"
QORSYSTS_EXPORT extern const unsigned short AntiS[1]; ///< "\"
QORSYSTS_EXPORT extern const unsigned short Env[1];   ///< "$"

/// Kinds of path as VELSysGetPathType() reports them.
enum VELSysPathKind : int {
    VELSysPathKindNone = -1,      ///< No path.
    VELSysPathKindAbsolute = 1,   ///< Begins with "/".
    VELSysPathKindHttp = 2,       ///< Begins with "http://".
    VELSysPathKindLogical = 5,    ///< Begins with `DLHead`.
    VELSysPathKindRelative = 6,   ///< None of the others.
    VELSysPathKindLogicalURL = 9, ///< Begins with "QORDLN://".
    VELSysPathKindHttps = 10,     ///< Begins with "https://".
    VELSysPathKindOtherURL = 16,  ///< Any other text with "://" in it.
};

/// Tells what kind of location a text names. Only its head is looked at, and schemes count in exact case.
/// @param path    16-bit text.
/// @param kind    Receives a VELSysPathKind. A text of fewer than 2 units is none, "/" included; "http://" and
///                "https://" with nothing behind them are VELSysPathKindOtherURL.
/// @param length  Units of `path`; 0 means up to its zero unit.
/// @return 0; VEL::StatusFailure for no path; `VELConvertError(9, 7)` for a null argument.
QORSYSTS_EXPORT int VELSysGetPathType(const unsigned short* path, int* kind, std::size_t length);

/// Facilities of VELConvertError() in use.
enum VELSysErrorFacility : int {
    VELSysFacilityStorage = 3, ///< Status codes of the form 0x8003xxxx.
    VELSysFacilitySystem = 7,  ///< Status codes of the form 0x8007xxxx.
};

/// The status code of an `errno`.
/// @param error     The `errno`.
/// @param facility  Bits 16 and up of the code. Facility 3 has a table of its own and 0x800300FD for what isn't in it;
///                  all others share one, with 0x4005 as the low part of what isn't in it.
/// @return A negative status, also for an `error` of 0.
QORSYSTS_EXPORT int VELConvertError(int error, int facility);
