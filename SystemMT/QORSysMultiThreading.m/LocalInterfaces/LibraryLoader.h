/// @file
/// The resolution of a library's name, shared by all calls that bind by name.
#pragma once

/// Loads `library` and resolves all its symbols at once, so that a library with missing parts is refused here and not
/// at a later call. Its symbols are not offered to other libraries.
///
/// A name that holds a slash or ".so" is loaded as it stands. Any other is tried as "lib<name>.so" first and then as it
/// stands. The platform's search path applies.
/// @return The platform's handle, or null for an empty or unknown name.
void* LoadLibraryByName(const char* library);
