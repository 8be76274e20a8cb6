#include "QORThrLibraryManager.h"

#include "LibraryLoader.h"

#include <dlfcn.h>

void* QORThrLibraryManager::GetFunctionAddress(const char* library, const char* symbol) {
    if (!symbol) {
        return nullptr;
    }
    if (!library) {
        return dlsym(RTLD_DEFAULT, symbol);
    }
    void* const handle = LoadLibraryByName(library);
    if (!handle) {
        return nullptr;
    }
    void* const address = dlsym(handle, symbol);
    if (!address) {
        dlclose(handle);
    }
    return address;
}
