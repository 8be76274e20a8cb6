// The directory of the trace files.

#include "VELSysTraceManager.h"

#include "TraceDirectory.h"
#include "VELSysStr.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace {

using VEL::internal::StripSeparator;
using VEL::internal::TakeVariable;
using VEL::internal::TraceLastResort;

constexpr const char* Directory = "/VELSysTrace";

bool Exists(const char* path) {
    struct stat64 status;
    return stat64(path, &status) == 0;
}

bool TakeBase(char* path, std::size_t size) {
    for (const char* name : {"QORTraceDir", "QORTemp"}) {
        if (TakeVariable(name, path, size) && Exists(path)) {
            return true;
        }
    }
    // As it stands, deliberately: a directory that is gone is noticed when it is used.
    if (TakeVariable("PWD", path, size)) {
        return true;
    }
    if (size <= std::strlen(TraceLastResort)) {
        return false;
    }
    std::strcpy(path, TraceLastResort);
    return Exists(path);
}

} // namespace

bool VEL::internal::TakeVariable(const char* name, char* path, std::size_t size) {
    const char* const value = std::getenv(name);
    if (value == nullptr || std::strlen(value) >= size) {
        return false;
    }
    std::strcpy(path, value);
    return true;
}

void VEL::internal::StripSeparator(char* path) {
    const std::size_t length = std::strlen(path);
    if (length > 0 && (path[length - 1] == '/' || path[length - 1] == '\\')) {
        path[length - 1] = '\0';
    }
}

int VELSysTraceGetDestinationDirectoryA(char* path, std::size_t size) {
    if (path == nullptr || !TakeBase(path, size)) {
        return -1;
    }
    StripSeparator(path);
    const std::size_t wanted = std::strlen(path) + std::strlen(Directory);
    if (VELSysStrCat(path, size, Directory) != 0 || std::strlen(path) < wanted) {
        return -1;
    }
    if (Exists(path) || mkdir(path, S_IRWXU) == 0 || errno == EEXIST) {
        return 0;
    }
    return -1;
}

char* VELSysTraceStrFastCat(char* text, std::size_t size, const char* addition) {
    if (text == nullptr || addition == nullptr) {
        return nullptr;
    }
    const std::size_t length = strnlen(text, size);
    if (length == size) {
        // Full, or without a terminator.
        if (size > 0) {
            text[size - 1] = '\0';
        }
        return size > 0 ? text + size - 1 : text;
    }
    const std::size_t added = std::min(std::strlen(addition), size - length - 1);
    std::memcpy(text + length, addition, added);
    text[length + added] = '\0';
    return text + length + added;
}

int VELSysTraceFilterNameByPid(const char* name, int pid) {
    constexpr std::ptrdiff_t longest = 63;
    const char* const letter = name != nullptr ? std::strchr(name, 'P') : nullptr;
    const char* const end = letter != nullptr ? std::strchr(letter, '_') : nullptr;
    if (end == nullptr) {
        return -1;
    }
    const char* const number = letter + 1;
    if (end - number < 1 || end - number > longest) {
        return -1;
    }
    char text[longest + 1] = {};
    std::copy(number, end, text);
    constexpr int decimal = 10;
    return std::strtol(text, nullptr, decimal) == pid ? 0 : -1;
}
