/// @file
/// The code page that files are said to be in.
#pragma once

#include "QORSysTS.h"

#include <optional>

/// Tells whether text is what its code page makes of it.
class DeclaredCodePage {
public:
    explicit DeclaredCodePage(const char* name) : _codePage(name) {}

    /// True when text in `name` can be converted here.
    static bool IsKnown(const char* name);

    const char* Name() const { return _codePage.GetName(); }

    /// The offset of the first character that doesn't survive the way to UTF-16 and back; nothing when all do.
    std::optional<unsigned long> FirstOffence(const char* text, unsigned long size) const;

private:
    VELSysCodePage _codePage;
};
