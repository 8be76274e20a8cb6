/// @file
/// Functions of libraries of the family that may be absent. Each is looked for once, at the first need.
#pragma once

struct stat64;

namespace VEL::internal {

/// Asks for the status of a web address, UTF-8, as the status of a file. Negative on failure.
using HttpInfoFunction = int (*)(const char* address, struct stat64* out);
/// "HttpInfo" of the library "PX4GROUP", or null.
HttpInfoFunction HttpInfo();

/// Finds the real location of a logical name. `*result` receives a text that the caller releases with array delete, or
/// stays as it was. The three numbers are 0, 0 and 1. Negative on failure.
using GetRealPathFunction = int (*)(const unsigned short* name, unsigned short** result, int, int, int);
/// "VELGetRealPath" of the library "PX4GROUP", or null.
GetRealPathFunction GetRealPath();

} // namespace VEL::internal
