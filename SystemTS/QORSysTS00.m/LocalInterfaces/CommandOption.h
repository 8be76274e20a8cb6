/// @file
/// What the option parser takes for an option.
#pragma once

namespace VEL::internal {

/// Whether an argument is an option. A dash with a digit behind it is a value, as a negative number is.
inline bool IsCommandOption(const char* argument) {
    const char second = argument[0] == '-' ? argument[1] : '0';
    return second < '0' || second > '9';
}

} // namespace VEL::internal
