#include "VELSysEnviron.h"

#include "QORUnicodeString.h"
#include "UpwardCalls.h"
#include "VELSysFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* InstallPathVariable = "QORInstallPath";

constexpr int IsKnown = 1;
constexpr int IsUnknown = 0;

int ApplicationVariable(const char* name, QORUnicodeString* value) {
    const char* const text = VELSysNeutralCoreApplicationGetEnvironmentVariableA(name);
    if (text == nullptr) {
        return IsUnknown;
    }
    if (value != nullptr) {
        *value = text;
    }
    return IsKnown;
}

int InstallPath(QORUnicodeString* value) {
    const char* const path = VELGetMainInstallPath();
    if (path == nullptr || *path == '\0') {
        return IsUnknown;
    }
    if (value != nullptr) {
        value->BuildFromUTF8(path, std::strlen(path));
    }
    return IsKnown;
}

} // namespace

int VELGetEnvInt(const char* name, QORUnicodeString* value) {
    if (name == nullptr) {
        return IsUnknown;
    }
    if (const char* const text = std::getenv(name)) {
        if (value != nullptr) {
            *value = text;
        }
        return IsKnown;
    }
    if (ApplicationVariable(name, value) == IsKnown) {
        return IsKnown;
    }
    return std::strcmp(name, InstallPathVariable) == 0 ? InstallPath(value) : IsUnknown;
}

int _VELGetEnvironmentVariableFromOS(const char* name, QORUnicodeString& value) {
    const char* const text = name != nullptr ? std::getenv(name) : nullptr;
    if (text == nullptr) {
        return IsUnknown;
    }
    value = text;
    return IsKnown;
}

int VELSysGetEnvA(std::size_t*, char*, std::size_t, const char*) {
    return -1;
}

int VELSysEnvironDeleteArgumentArrayA(char*** argv, int argc) {
    if (argv == nullptr || *argv == nullptr || argc < 1) {
        return 0;
    }
    for (int i = 0; i < argc; ++i) {
        delete[](*argv)[i];
    }
    delete[] * argv;
    *argv = nullptr;
    return 0;
}

char* VELSysEnvironStringReplaceA(char* text, const char* find, const char* replacement) {
    if (text == nullptr || find == nullptr || replacement == nullptr || *find == '\0') {
        return text;
    }
    const std::size_t findLength = std::strlen(find);
    const std::size_t replacementLength = std::strlen(replacement);
    std::size_t hits = 0;
    for (const char* hit = std::strstr(text, find); hit != nullptr; hit = std::strstr(hit + findLength, find)) {
        ++hits;
    }
    if (hits == 0) {
        return text;
    }
    const std::size_t size = std::strlen(text) - hits * findLength + hits * replacementLength + 1;
    auto* const result = new char[size];
    char* out = result;
    const char* rest = text;
    for (; hits > 0; --hits) {
        const char* const hit = std::strstr(rest, find);
        out = std::copy(rest, hit, out);
        out = std::copy(replacement, replacement + replacementLength, out);
        rest = hit + findLength;
    }
    std::strcpy(out, rest);
    delete[] text;
    return result;
}
