/// @file
/// Cutting a string into pieces, for both Unicode string classes.
#pragma once

#include "StringAccess.h"
#include "StringEdit.h"
#include "TextScan.h"

#include <new>

namespace VEL::internal {

/// Fills `out` with the pieces of `s` between the places of `separator`, and with the rest behind the last. Without
/// memory `out` is left empty.
template <class String, class Vector>
void SplitText(const String& s, const String& separator, Vector& out) try {
    // Both may be elements of `out`.
    const String text(s);
    const String between(separator);
    out.Clear();
    const UTF16Range in = UTF16Of(StringAccess::BlockOf(text));
    const UTF16Range wanted = UTF16Of(StringAccess::BlockOf(between));
    constexpr int AtOnce = 256;
    std::ptrdiff_t places[AtOnce];
    std::ptrdiff_t start = 0;
    int found = wanted.length > 0 ? AtOnce : 0;
    while (found == AtOnce) {
        found =
            FindPlaces(Search<unsigned short>{in.text, in.length, wanted.text, wanted.length}, start, places, AtOnce);
        for (int i = 0; i < found; ++i) {
            const Block piece = CutText(in, static_cast<int>(start), static_cast<int>(places[i] - start));
            out.PutBack(StringAccess::Make<String>(piece));
            start = places[i] + wanted.length;
        }
    }
    if (start == 0 && StringAccess::BlockOf(text) != nullptr) {
        out.PutBack(text);
        return;
    }
    const Block rest = CutText(in, static_cast<int>(start), static_cast<int>(in.length - start));
    out.PutBack(StringAccess::Make<String>(rest));
} catch (const std::bad_alloc&) {
    out.Clear();
}

} // namespace VEL::internal
