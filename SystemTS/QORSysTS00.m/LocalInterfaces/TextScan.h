/// @file
/// Looking through runs of bytes and of UTF-16 units: searching, comparing, finding what a change of case would change.
///
/// Every function reads inside the given runs only. Lengths count units of the run. The work is done by vectors, which
/// are chosen once by what the processor has.
#pragma once

#include <cstddef>

namespace VEL::internal {

constexpr std::ptrdiff_t NotFound = -1;

/// A text, and what is looked for in it.
template <class Unit>
struct Search {
    const Unit* text;
    std::ptrdiff_t length;
    const Unit* what;
    std::ptrdiff_t whatLength;
};

/// Finds the places of a `what` that is not empty, from left to right, none of them overlapping another: at most `max`
/// from `start` on. Linear in practice for periodic texts, too. @return Their number.
int FindPlaces(const Search<char>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int max);
int FindPlaces(const Search<unsigned short>& search, std::ptrdiff_t start, std::ptrdiff_t* found, int max);

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

/// How many units at the start (end) of a text are `unit`.
std::ptrdiff_t CountLeading(const char* text, std::ptrdiff_t length, char byte);
std::ptrdiff_t CountLeading(const unsigned short* text, std::ptrdiff_t length, unsigned short unit);
std::ptrdiff_t CountTrailing(const char* text, std::ptrdiff_t length, char byte);
std::ptrdiff_t CountTrailing(const unsigned short* text, std::ptrdiff_t length, unsigned short unit);

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
