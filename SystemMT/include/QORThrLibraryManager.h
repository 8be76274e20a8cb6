/// @file
/// Functions of optional libraries, found by name.
#pragma once

#include "QORSysMTExport.h"

/// Finds functions in libraries that may be absent.
class QORSYSMT_EXPORT QORThrLibraryManager {
public:
    QORThrLibraryManager() = delete;

    /// Loads `library` as needed and looks `symbol` up in it. A library in which something was found stays loaded for
    /// the rest of the process, so the address may be kept; one in which nothing was found does not. A library with
    /// missing parts counts as missing, and the symbols of one that is loaded here are not offered to other libraries.
    /// May be called by any thread at once.
    /// @param library  A name with a slash or ".so" in it is loaded as it stands; any other is tried as
    ///                 "lib<name>.so" and then as it stands, on the platform's search path. Null means the program
    ///                 itself with the libraries it was started with.
    /// @param symbol   The exported name, exactly.
    /// @return The address, or null when the library or the symbol is missing, or `symbol` is null.
    static void* GetFunctionAddress(const char* library, const char* symbol);
};
