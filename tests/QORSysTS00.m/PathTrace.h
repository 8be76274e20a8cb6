/// @file
/// The trace of paths in the hands of the test.
#pragma once

#include <string>
#include <vector>

namespace PathTrace {

inline bool isConfigured = false;
inline std::vector<std::string> events = {}; ///< "create <name>", "destroy", or a line.
/// Called inside the next creation.
inline void (*insideCreate)() = nullptr;

} // namespace PathTrace
