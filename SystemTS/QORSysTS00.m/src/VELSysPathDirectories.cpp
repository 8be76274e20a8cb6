// Well-known directories, and names of temporary files.

#include "EnvironmentConverter.h"
#include "FreshName.h"
#include "PathAccess.h"
#include "UTF8Text.h"
#include "VELSysStatus.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

using VEL::internal::PathAccess;

namespace {

using Remembered = std::atomic<const char*>;

/// What is remembered; otherwise the first `n` bytes of `text`, remembered from now on. Null without memory.
const char* Remember(Remembered& remembered, const char* text, std::size_t n) {
    char* const copy = strndup(text, n);
    const char* first = nullptr;
    // Release and acquire: whoever sees the pointer sees the text.
    if (remembered.compare_exchange_strong(first, copy, std::memory_order_acq_rel, std::memory_order_acquire)) {
        return copy;
    }
    std::free(copy);
    return first;
}

const char* RememberVariable(Remembered& remembered, const char* variable) {
    if (const char* const known = remembered.load(std::memory_order_acquire)) {
        return known;
    }
    const char* const value = std::getenv(variable);
    return value != nullptr ? Remember(remembered, value, std::strlen(value)) : nullptr;
}

int SetFromNative(VELSysPath& path, const char* text) {
    if (text == nullptr || VEL::internal::EnvironmentConverter().IsUTF8()) {
        return path.Set(text);
    }
    const QORUnicodeString native(text);
    return path.Set(VEL::internal::UTF8Text(native).Get());
}

/// Room for the name of a temporary file with its terminator.
constexpr std::size_t NameRoom = 255;

} // namespace

const char* VELSysPathImplGetHomeDirectoryPathA() {
    static constinit Remembered remembered{nullptr};
    return RememberVariable(remembered, "HOME");
}

const char* VELSysPathImplGetDocumentDirectoryPathA() {
    static constinit Remembered remembered{nullptr};
    return RememberVariable(remembered, "HOME");
}

const char* VELSysPathImplGetResourceDirectoryPathA() {
    static constinit Remembered remembered{nullptr};
    if (const char* const known = remembered.load(std::memory_order_acquire)) {
        return known;
    }
    const char* const list = std::getenv("QORInstallPath");
    return list != nullptr && list[0] != ':' ? Remember(remembered, list, std::strcspn(list, ":")) : nullptr;
}

const char* VELSysPathImplGetTemporaryDirectoryPathA() {
    return "/tmp";
}

int VELSysPathImpl::getTempDirectory(VELSysPath& out) {
    return SetFromNative(out, VELSysPathImplGetTemporaryDirectoryPathA());
}

int VELSysPathImpl::getHomeDirectory(VELSysPath& out) {
    return SetFromNative(out, VELSysPathImplGetHomeDirectoryPathA());
}

int VELSysPathDocument(VELSysPath& out) {
    return SetFromNative(out, VELSysPathImplGetDocumentDirectoryPathA());
}

int VELSysPathImpl::getTempFilePath(VELSysPath& out, const QORUnicodeString* prefix, const VELSysPath* directory) {
    const VELSysPathImpl* const impl = directory != nullptr ? PathAccess::Of(*directory) : nullptr;
    const char* start = "/tmp/";
    if (impl != nullptr) {
        start = impl->_path != nullptr ? impl->_path : "";
    }
    constexpr char Tail[] = "_XXXXXX";
    const std::size_t startLength = std::strlen(start);
    // Deliberate: a prefix counts only when it is longer than the room that is left, and so never fits.
    const bool hasPrefix = prefix != nullptr && startLength <= NameRoom &&
                           static_cast<std::size_t>(prefix->GetLengthInChar()) > NameRoom - startLength;
    if (hasPrefix || startLength + sizeof Tail > NameRoom) {
        return VEL::StatusFailure;
    }
    char name[NameRoom];
    std::memcpy(name, start, startLength);
    std::memcpy(name + startLength, Tail, sizeof Tail);
    if (!VEL::internal::FillInFreshName(name, startLength + sizeof Tail - 1)) {
        name[0] = '\0';
    }
    return out.Set(QORUnicodeString(name));
}
