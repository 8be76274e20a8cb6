// What the file system, and the libraries for web addresses and logical names, know of a path.

#include "NativeText.h"
#include "OptionalLibraries.h"
#include "PathAccess.h"
#include "SystemError.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <memory>
#include <optional>
#include <unistd.h>
#include <utime.h>

using VEL::internal::NativeText;
using VEL::internal::PathAccess;
using VEL::internal::StatusOfCall;

namespace {

int AskWeb(const VELSysPathImpl& impl, struct stat64& out) {
    const auto ask = VEL::internal::HttpInfo();
    return ask != nullptr ? ask(PathAccess::Text(impl), &out) : VEL::StatusNoLibrary;
}

int AskWeb(const VELSysPathImpl& impl) {
    struct stat64 scratch = {};
    return AskWeb(impl, scratch);
}

/// The name that the system knows a path by.
class SystemName {
public:
    explicit SystemName(VELSysPathImpl& impl) {
        if (PathAccess::IsLogical(impl)) {
            _name = impl.TranslateDLName();
            return;
        }
        _name = _text.emplace(PathAccess::Text(impl)).Get();
    }

    /// Null where there is none.
    const char* Get() const { return _name; }

private:
    std::optional<NativeText> _text;
    const char* _name;
};

} // namespace

int VELSysPathImpl::stat(struct stat64& out, int refresh) {
    if (_path == nullptr) {
        return VEL::StatusFailure;
    }
    if (PathAccess::IsWeb(*this)) {
        return AskWeb(*this, out);
    }
    if (_statValid == 0 || refresh != 0) {
        const int code = _AskSystem();
        if (code < 0) {
            return code;
        }
    }
    out = _statCache;
    return VEL::StatusOk;
}

int VELSysPathImpl::_AskSystem() {
    const SystemName name(*this);
    if (name.Get() == nullptr) {
        return VEL::StatusFailure;
    }
    return StatusOfCall(stat64(name.Get(), &_statCache));
}

int VELSysPathImpl::Initialize() {
    if (_path == nullptr) {
        return VEL::StatusFailure;
    }
    // Deliberate: what is told of a web address doesn't land in the cache, which is declared good all the same.
    const int code = PathAccess::IsWeb(*this) ? AskWeb(*this) : _AskSystem();
    if (code < 0) {
        return code;
    }
    _statValid = 1;
    return VEL::StatusOk;
}

bool VELSysPathImpl::exists(int refresh) {
    if (_path == nullptr) {
        return false;
    }
    return (!PathAccess::IsWeb(*this) && _statValid != 0 && refresh == 0) || Initialize() >= 0;
}

bool VELSysPathImpl::_HasMode(bool (*isMode)(unsigned int), int refresh) {
    if (_path == nullptr) {
        return false;
    }
    if (PathAccess::IsWeb(*this)) {
        struct stat64 answer = {};
        return AskWeb(*this, answer) >= 0 && isMode(answer.st_mode);
    }
    return ((_statValid != 0 && refresh == 0) || Initialize() >= 0) && isMode(_statCache.st_mode);
}

bool VELSysPathImpl::isFile(int refresh) {
    return _HasMode(VEL::internal::IsFileMode, refresh);
}

bool VELSysPathImpl::isDirectory(int refresh) {
    return _HasMode(VEL::internal::IsDirectoryMode, refresh);
}

bool VELSysPathImpl::_IsAccessible(int permission) {
    const SystemName name(*this);
    return name.Get() != nullptr && access(name.Get(), permission) == 0;
}

bool VELSysPathImpl::canRead(int) {
    if (_path == nullptr) {
        return false;
    }
    return PathAccess::IsWeb(*this) ? Initialize() >= 0 : _IsAccessible(R_OK);
}

bool VELSysPathImpl::canWrite(int) {
    return _path != nullptr && !PathAccess::IsWeb(*this) && _IsAccessible(W_OK);
}

int VELSysPathImpl::getTimes(long& modified, long& accessed) {
    if (_path == nullptr || (_statValid == 0 && Initialize() < 0)) {
        return VEL::StatusFailure;
    }
    modified = _statCache.st_mtime;
    accessed = _statCache.st_atime;
    return VEL::StatusOk;
}

int VELSysPathImpl::setTimes(long modified, long accessed) {
    if (_path == nullptr) {
        return VEL::StatusFailure;
    }
    const utimbuf times{accessed, modified};
    return StatusOfCall(utime(NativeText(_path).Get(), &times));
}

const char* VELSysPathImpl::TranslateDLName() {
    if (_path == nullptr || !PathAccess::IsLogical(*this)) {
        return nullptr;
    }
    if (!_translated.IsEmpty()) {
        return _translated.ConvertToChar();
    }
    const auto translate = VEL::internal::GetRealPath();
    if (translate == nullptr) {
        return nullptr;
    }
    QORUnicodeString name;
    name.BuildFromUTF8(_path, _length);
    unsigned short* found = nullptr;
    const int code = translate(name.ConvertToUCChar(), &found, 0, 0, 1);
    const std::unique_ptr<unsigned short[]> owned(found);
    if (code < 0) {
        return nullptr;
    }
    if (found != nullptr) {
        _translated.BuildFromUCChar(found);
    }
    // Deliberate: a text that came with another success is kept for the next question, not given for this one.
    return code == VEL::StatusOk && !_translated.IsEmpty() ? _translated.ConvertToChar() : nullptr;
}

int VELSysPathImpl::getTranslatedPath(QORUnicodeString& out) {
    if (TranslateDLName() == nullptr) {
        return VEL::StatusOk;
    }
    out = _translated;
    return VEL::StatusNote;
}
