// What a path changes in the file system.

#include "HeapMemory.h"
#include "NativeText.h"
#include "PathAccess.h"
#include "SystemError.h"
#include "TreeRemoval.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using VEL::internal::NativeText;
using VEL::internal::PathAccess;
using VEL::internal::StatusOfCall;
using VEL::internal::SystemError;

namespace {

/// What is removed or moved over must be what is meant: a text with characters that the native code page lacks would
/// name something else, and stands for nothing that is there.
constexpr int NoSuchName = VEL::StatusNotFound;

/// Makes one directory. Something that is there under its name is as good.
int MakeDirectory(const char* text) {
    // The mask can only be read by setting it, which other threads see for a moment.
    const mode_t mask = umask(0);
    umask(mask);
    const int code = StatusOfCall(mkdir(NativeText(text).Get(), mask | S_IRWXU | S_IRWXG | S_IRWXO));
    return code == VELConvertError(EEXIST, VELSysFacilitySystem) ? VEL::StatusOk : code;
}

/// Ends `text`, which is that of `path`, at each directory that has to be made before the one behind it, and puts a
/// terminator in place of the slash there.
void CutAtMissingParents(const VELSysPathImpl& path, char* text) {
    VELSysPathImpl level(path);
    PathAccess::Cut cut{};
    while (PathAccess::FindCut(level, cut) == VEL::StatusOk && text[cut.parentLength] == '/') {
        if (!PathAccess::SetClassified(level, text, cut.parentLength) || level.isDirectory(1)) {
            return;
        }
        text[PathAccess::Length(level)] = '\0';
    }
}

bool IsLocal(const VELSysPathImpl& impl) {
    constexpr unsigned int Others =
        VELSysPathTypeInvalid | VELSysPathTypeHttp | VELSysPathTypeHttps | VELSysPathTypeLogical;
    return (PathAccess::Mask(impl) & Others) == 0;
}

} // namespace

int VELSysPathImpl::createDirectory() {
    if (_path == nullptr) {
        return VEL::StatusFailure;
    }
    if (isDirectory(1)) {
        return VEL::StatusOk;
    }
    _statValid = 0;
    const VEL::internal::HeapArray<char> text(strdup(_path));
    if (text == nullptr) {
        return VEL::StatusFailure;
    }
    CutAtMissingParents(*this, text.get());
    for (;;) {
        const int code = MakeDirectory(text.get());
        const std::size_t made = std::strlen(text.get());
        if (made == _length) {
            return code;
        }
        text.get()[made] = '/';
    }
}

int VELSysPathImpl::remove(int recursive) {
    if (isFile(0)) {
        return removeFile();
    }
    return isDirectory(0) ? removeDirectory(recursive) : VEL::StatusFailure;
}

int VELSysPathImpl::removeFile() {
    int code = VEL::StatusFailure;
    if (isFile(0)) {
        const NativeText name(_path);
        code = name.IsExact() ? StatusOfCall(unlink(name.Get())) : NoSuchName;
    }
    _statValid = 0;
    return code;
}

int VELSysPathImpl::removeDirectory(int recursive) {
    if (!isDirectory(1)) {
        _statValid = 0;
        return VEL::StatusFailure;
    }
    if (PathAccess::IsWeb(*this)) {
        return VEL::StatusNotImplemented;
    }
    const NativeText name(_path);
    if (!name.IsExact()) {
        return NoSuchName;
    }
    errno = 0;
    // What a logical name stands for is never removed: its entries have no name that the system knows, and neither has
    // it.
    if (!PathAccess::IsLogical(*this)) {
        const int code = VEL::internal::EmptyDirectory(name.Get(), recursive == 1);
        if (code < 0) {
            return code;
        }
    }
    const int code = VEL::internal::StatusOfRemovedDirectory(rmdir(name.Get()));
    _statValid = 0;
    return code;
}

int VELSysPathImpl::move(const VELSysPath& target) {
    if (!IsLocal(*this)) {
        return VEL::StatusFailure;
    }
    const VELSysPathImpl* const to = PathAccess::Of(target);
    if (to == nullptr) {
        return SystemError();
    }
    if (!IsLocal(*to)) {
        return VEL::StatusFailure;
    }
    const NativeText from(_path);
    const NativeText name(PathAccess::Text(*to));
    return from.IsExact() && name.IsExact() ? StatusOfCall(rename(from.Get(), name.Get())) : NoSuchName;
}

int VELSysPathImpl::chmod(long mode) {
    return _path != nullptr ? StatusOfCall(::chmod(NativeText(_path).Get(), static_cast<mode_t>(mode)))
                            : VEL::StatusFailure;
}
