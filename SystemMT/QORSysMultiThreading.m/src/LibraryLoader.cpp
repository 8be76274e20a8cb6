#include "LibraryLoader.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>

void* LoadLibraryByName(const char* library) {
    constexpr int flags = RTLD_NOW | RTLD_LOCAL;
    // The platform takes an empty name for the program itself, which is no library.
    if (!*library) {
        return nullptr;
    }
    if (std::strchr(library, '/') || std::strstr(library, ".so")) {
        return dlopen(library, flags);
    }
    char fileName[NAME_MAX + 1];
    const int length = std::snprintf(fileName, sizeof fileName, "lib%s.so", library);
    if (length < 0 || static_cast<unsigned long>(length) >= sizeof fileName) {
        return nullptr;
    }
    if (void* const handle = dlopen(fileName, flags)) {
        return handle;
    }
    return dlopen(library, flags);
}
