/// @file
/// Looking through runs of bytes and of UTF-16 units: searching, comparing, finding what a change of case would change.
///
/// Every function reads inside the given runs only. Lengths count units of the run. The work is done by vectors, which
/// are chosen once by what the processor has.
#pragma once

#include <cstddef>

namespace VEL::internal {

constexpr std::ptrdiff_t NotFound = -1;

/// The first place of `what` in a text, or NotFound. Neither length is negative; an empty `what` is found at 0. Linear
/// in practice for periodic texts, too.
std::ptrdiff_t FindFirst(const char* text, std::ptrdiff_t length, const char* what, std::ptrdiff_t whatLength);
std::ptrdiff_t FindFirst(const unsigned short* text, std::ptrdiff_t length, const unsigned short* what,
                         std::ptrdiff_t whatLength);

/// The last place of `what` in a text, or NotFound.
std::ptrdiff_t FindLast(const unsigned short* text, std::ptrdiff_t length, const unsigned short* what,
                        std::ptrdiff_t whatLength);

/// The first place at which `a` and `b` differ or `a` has a zero unit; `length` when there is none.
std::ptrdiff_t FindDifferenceOrZero(const unsigned short* a, const unsigned short* b, std::ptrdiff_t length);

/// The first unit that a change to lower (upper) case may change: a letter of the other case, or one that is not ASCII.
/// `length` when there is none.
std::ptrdiff_t FindNotLowerCase(const char* text, std::ptrdiff_t length);
std::ptrdiff_t FindNotLowerCase(const unsigned short* text, std::ptrdiff_t length);
std::ptrdiff_t FindNotUpperCase(const char* text, std::ptrdiff_t length);
std::ptrdiff_t FindNotUpperCase(const unsigned short* text, std::ptrdiff_t length);

/// Turns the leading ASCII units of a text to lower (upper) case, in place. @return Their number.
std::ptrdiff_t LowerASCII(char* text, std::ptrdiff_t length);
std::ptrdiff_t LowerASCII(unsigned short* text, std::ptrdiff_t length);
std::ptrdiff_t UpperASCII(char* text, std::ptrdiff_t length);
std::ptrdiff_t UpperASCII(unsigned short* text, std::ptrdiff_t length);

} // namespace VEL::internal
