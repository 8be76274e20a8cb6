// What a path changes in the file system.

#include "NativeText.h"
#include "PathAccess.h"
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

namespace {

int SystemError() {
    return VELConvertError(errno, VELSysFacilitySystem);
}

int CodeOf(int result) {
    return result == 0 ? VEL::StatusOk : SystemError();
}

/// Makes one directory. Something that is there under its name is as good.
int MakeDirectory(const char* text) {
    // The mask can only be read by setting it, which other threads see for a moment.
    const mode_t mask = umask(0);
    umask(mask);
    const int code = CodeOf(mkdir(NativeText(text).Get(), mask | S_IRWXU | S_IRWXG | S_IRWXO));
    return code < 0 && errno == EEXIST ? VEL::StatusOk : code;
}

struct Free {
    void operator()(char* text) const { std::free(text); }
};

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
    const std::unique_ptr<char, Free> text(strdup(_path));
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
    const int code = isFile(0) ? CodeOf(unlink(NativeText(_path).Get())) : VEL::StatusFailure;
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
    errno = 0;
    // What a logical name stands for is listed but never removed: its entries have no name that the system knows, and
    // neither has it.
    if (!PathAccess::IsLogical(*this)) {
        const int code = VEL::internal::EmptyDirectory(name.Get(), recursive == 1);
        if (code < 0) {
            return code;
        }
    }
    const int code = VEL::internal::CodeOfRemovedDirectory(rmdir(name.Get()));
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
    return CodeOf(rename(NativeText(_path).Get(), NativeText(PathAccess::Text(*to)).Get()));
}

int VELSysPathImpl::chmod(long mode) {
    return _path != nullptr ? CodeOf(::chmod(NativeText(_path).Get(), static_cast<mode_t>(mode))) : VEL::StatusFailure;
}
