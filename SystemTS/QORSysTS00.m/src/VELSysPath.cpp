// The handle: forwards to the implementation behind it, and answers where there is none.

#include "VELSysPath.h"

#include "PathAccess.h"
#include "VELString.h"
#include "VELSysStatus.h"

#include <new>
#include <utility>

using VEL::internal::PathAccess;

namespace {

/// A chain goes on until a code in it is negative.
bool IsBroken(const int* rc) {
    return rc != nullptr && *rc < 0;
}

void Report(int* rc, int code) {
    if (rc != nullptr) {
        *rc = code;
    }
}

QORUnicodeString Unicode(const QORSysTSUnicodeString& text) {
    QORUnicodeString shared;
    VEL::Copy(shared, text);
    return shared;
}

/// Whether `impl` equals what `text` builds, as far as that can be built.
template <class Text>
bool Equals(const VELSysPathImpl* impl, const Text& text, int (VELSysPathImpl::*build)(Text)) {
    VELSysPathImpl other;
    return (other.*build)(text) >= 0 && impl != nullptr && *impl == other;
}

} // namespace

VELSysPathImpl* PathAccess::Ensure(VELSysPath& path) {
    if (path._impl == nullptr) {
        path._impl = new (std::nothrow) VELSysPathImpl;
    }
    return path._impl;
}

VELSysPath::VELSysPath() : _impl(new (std::nothrow) VELSysPathImpl) {}

VELSysPath::VELSysPath(const VELSysPath& other)
    : _impl(other._impl != nullptr ? new (std::nothrow) VELSysPathImpl(*other._impl) : nullptr) {}

VELSysPath::VELSysPath(VELSysPath&& other) noexcept : _impl(std::exchange(other._impl, nullptr)) {}

VELSysPath::VELSysPath(const QORUnicodeString& text) : VELSysPath() {
    Set(text);
}

VELSysPath::~VELSysPath() {
    delete _impl;
}

VELSysPath& VELSysPath::operator=(const VELSysPath& other) {
    if (this == &other) {
        return *this;
    }
    if (other._impl == nullptr) {
        if (_impl != nullptr) {
            PathAccess::Mask(*_impl) = VELSysPathTypeInvalid;
        }
    } else if (VELSysPathImpl* const impl = PathAccess::Ensure(*this)) {
        *impl = *other._impl;
    }
    return *this;
}

VELSysPath& VELSysPath::operator=(VELSysPath&& other) noexcept {
    std::swap(_impl, other._impl);
    return *this;
}

int VELSysPath::Set(const char* text) {
    return _impl != nullptr ? _impl->BuildFromUTF8(text) : VEL::StatusNoObject;
}

int VELSysPath::Set(const unsigned short* text) {
    return _impl != nullptr ? _impl->BuildFromUCChar(text) : VEL::StatusNoObject;
}

int VELSysPath::Set(const QORUnicodeString& text) {
    return _impl != nullptr ? _impl->BuildFromUnicode(text) : VEL::StatusNoObject;
}

int VELSysPath::Set(const QORSysTSUnicodeString& text) {
    return Set(Unicode(text));
}

bool VELSysPath::operator==(const VELSysPath& other) const {
    const char* const mine = _impl != nullptr ? PathAccess::Text(*_impl) : nullptr;
    const char* const others = other._impl != nullptr ? PathAccess::Text(*other._impl) : nullptr;
    return mine == nullptr || others == nullptr ? mine == others : *_impl == *other._impl;
}

bool VELSysPath::operator==(const QORUnicodeString& text) const {
    // Deliberate: unlike the other forms, this one compares with what a failed build has left.
    VELSysPathImpl other;
    other.BuildFromUnicode(text);
    return _impl != nullptr ? *_impl == other : PathAccess::Text(other) == nullptr;
}

bool VELSysPath::operator==(const char* text) const {
    return Equals(_impl, text, &VELSysPathImpl::BuildFromUTF8);
}

bool VELSysPath::operator==(const unsigned short* text) const {
    return Equals(_impl, text, &VELSysPathImpl::BuildFromUCChar);
}

bool operator==(const QORUnicodeString& text, const VELSysPath& path) {
    return path.operator==(text);
}

bool operator==(const char* text, const VELSysPath& path) {
    return path.operator==(text);
}

bool operator==(const unsigned short* text, const VELSysPath& path) {
    return path.operator==(text);
}

bool VELSysPath::IsRelative() const {
    return (GetTypeMask() & VELSysPathTypeRelative) != 0;
}

bool VELSysPath::IsAbsolute() const {
    return (GetTypeMask() & VELSysPathTypeAbsolute) != 0;
}

bool VELSysPath::IsValid() const {
    return _impl != nullptr && !PathAccess::IsInvalid(*_impl);
}

unsigned char VELSysPath::getType() const {
    return _impl != nullptr ? static_cast<unsigned char>(GetTypeMask()) : static_cast<unsigned char>(1);
}

unsigned int VELSysPath::GetTypeMask() const {
    return _impl != nullptr ? PathAccess::Mask(*std::as_const(_impl)) : 0;
}

int VELSysPath::GetExtension(QORUnicodeString& extension) const {
    return _impl != nullptr ? _impl->getExtension(extension) : VEL::StatusFailure;
}

int VELSysPath::getExtension(QORSysTSUnicodeString& extension) const {
    QORUnicodeString found;
    const int code = GetExtension(found);
    if (code >= 0) {
        VEL::Copy(extension, found);
    }
    return code;
}

VELSysPath& VELSysPath::RemExtension(int* rc) {
    if (!IsBroken(rc)) {
        Report(rc, _impl != nullptr ? _impl->removeExtension() : VEL::StatusFailure);
    }
    return *this;
}

int VELSysPath::RemExtension(const QORUnicodeString& extension) {
    return _impl != nullptr ? _impl->removeExtension(extension) : VEL::StatusFailure;
}

int VELSysPath::removeExtension(const QORSysTSUnicodeString& extension) {
    return RemExtension(Unicode(extension));
}

int VELSysPath::Append(const VELSysPath& piece) {
    return _impl != nullptr && piece._impl != nullptr ? _impl->append(PathAccess::Text(*piece._impl))
                                                      : VEL::StatusFailure;
}

int VELSysPath::Append(const QORUnicodeString& piece) {
    return _impl != nullptr ? _impl->append(piece) : VEL::StatusFailure;
}

int VELSysPath::Append(const QORSysTSUnicodeString& piece) {
    return Append(Unicode(piece));
}

int VELSysPath::Append(const unsigned short* piece) {
    return _impl != nullptr ? _impl->append(piece) : VEL::StatusFailure;
}

int VELSysPath::Append(const char* piece) {
    return _impl != nullptr ? _impl->append(piece) : VEL::StatusFailure;
}

int VELSysPath::append(const VELSysPath& piece) {
    return Append(piece);
}

int VELSysPath::append(const QORUnicodeString& piece) {
    return Append(piece);
}

int VELSysPath::append(const QORSysTSUnicodeString& piece) {
    return Append(piece);
}

int VELSysPath::append(const unsigned short* piece) {
    return Append(piece);
}

int VELSysPath::append(const char* piece) {
    return Append(piece);
}

VELSysPath& VELSysPath::Add(const VELSysPath& piece, int* rc) {
    if (!IsBroken(rc)) {
        Report(rc, Append(piece));
    }
    return *this;
}

VELSysPath& VELSysPath::Add(const QORUnicodeString& piece, int* rc) {
    if (!IsBroken(rc)) {
        Report(rc, Append(piece));
    }
    return *this;
}

int VELSysPath::AddExtension(const char* extension) {
    return _impl != nullptr ? _impl->addExtension(extension) : VEL::StatusFailure;
}

int VELSysPath::AddExtension(const unsigned short* extension) {
    return _impl != nullptr ? _impl->addExtension(extension) : VEL::StatusFailure;
}

int VELSysPath::AddExtension(const QORUnicodeString& extension) {
    return _impl != nullptr ? _impl->addExtension(extension) : VEL::StatusFailure;
}

int VELSysPath::addExtension(const char* extension) {
    return AddExtension(extension);
}

int VELSysPath::addExtension(const unsigned short* extension) {
    return AddExtension(extension);
}

int VELSysPath::addExtension(const QORUnicodeString& extension) {
    return AddExtension(extension);
}

int VELSysPath::addExtension(const QORSysTSUnicodeString& extension) {
    return AddExtension(Unicode(extension));
}

int VELSysPath::split(VELSysPath& parent, QORSysTSUnicodeString& name) const {
    VELSysPathImpl* const parentImpl = _impl != nullptr ? PathAccess::Ensure(parent) : nullptr;
    return parentImpl != nullptr ? _impl->split(*parentImpl, name) : VEL::StatusFailure;
}

int VELSysPath::split(VELSysPath& parent, QORSysTSUnicodeString& directory, QORSysTSUnicodeString& stem,
                      QORSysTSUnicodeString& extension) const {
    VELSysPathImpl* const parentImpl = _impl != nullptr ? PathAccess::Ensure(parent) : nullptr;
    return parentImpl != nullptr ? _impl->split(*parentImpl, directory, stem, extension) : VEL::StatusFailure;
}

VELSysPath VELSysPath::GetParent(int* rc) const {
    VELSysPath parent;
    if (IsBroken(rc)) {
        return parent;
    }
    PathAccess::Cut cut{};
    int code = _impl != nullptr ? PathAccess::FindCut(*_impl, cut) : VEL::StatusFailure;
    if (code == VEL::StatusOk &&
        (parent._impl == nullptr ||
         !PathAccess::SetClassified(*parent._impl, PathAccess::Text(*_impl), cut.parentLength))) {
        code = VEL::StatusFailure;
    }
    Report(rc, code);
    return parent;
}

VELSysPath VELSysPath::GetName(int* rc) const {
    VELSysPath name;
    if (IsBroken(rc)) {
        return name;
    }
    PathAccess::Cut cut{};
    const bool hasParent = _impl != nullptr && PathAccess::FindCut(*_impl, cut) == VEL::StatusOk &&
                           PathAccess::HasKind(PathAccess::Text(*_impl), cut.parentLength);
    int code = VEL::StatusFailure;
    if (!hasParent) {
        name = *this;
        code = IsValid() && !name.IsValid() ? VEL::StatusFailure : VEL::StatusOk;
    } else if (name._impl != nullptr && cut.nameLength > 0) {
        code = PathAccess::Build(*name._impl, cut.name, cut.nameLength, PathAccess::FromString);
    }
    Report(rc, code);
    return name;
}

int VELSysPath::GetAsString(QORUnicodeString& text) const {
    if (_impl == nullptr) {
        text.Reset();
        return VEL::StatusFailure;
    }
    return _impl->getAsString(text);
}

int VELSysPath::getAsString(QORSysTSUnicodeString& text) const {
    QORUnicodeString stored;
    const int code = GetAsString(stored);
    VEL::Copy(text, stored);
    return code;
}

QORUnicodeString VELSysPath::ToString(int* rc) const {
    QORUnicodeString text;
    if (!IsBroken(rc)) {
        Report(rc, GetAsString(text));
    }
    return text;
}

int VELSysPath::GetTimes(long& modified, long& accessed) const {
    return _impl != nullptr ? _impl->getTimes(modified, accessed) : VEL::StatusFailure;
}

int VELSysPath::SetTimes(long modified, long accessed) {
    return _impl != nullptr ? _impl->setTimes(modified, accessed) : VEL::StatusFailure;
}

int VELSysPath::Stat(struct stat64& out, int refresh) const {
    return _impl != nullptr ? _impl->stat(out, refresh) : VEL::StatusFailure;
}

bool VELSysPath::Exists(int refresh) const {
    return _impl != nullptr && _impl->exists(refresh);
}

bool VELSysPath::IsFile(int refresh) const {
    return _impl != nullptr && _impl->isFile(refresh);
}

bool VELSysPath::IsDirectory(int refresh) const {
    return _impl != nullptr && _impl->isDirectory(refresh);
}

bool VELSysPath::CanRead(int) const {
    return _impl != nullptr && _impl->canRead(0);
}

bool VELSysPath::CanWrite(int) const {
    return _impl != nullptr && _impl->canWrite(0);
}

int VELSysPath::MakeDir() {
    return _impl != nullptr ? _impl->createDirectory() : VEL::StatusFailure;
}

int VELSysPath::Remove(int recursive) {
    return _impl != nullptr ? _impl->remove(recursive) : VEL::StatusFailure;
}

int VELSysPath::Chmod(long mode) {
    return _impl != nullptr ? _impl->chmod(mode) : VEL::StatusFailure;
}

int VELSysPath::Move(const VELSysPath& target) {
    return _impl != nullptr ? _impl->move(target) : VEL::StatusFailure;
}

int VELSysPath::getTempDirectory(VELSysPath& out) {
    return VELSysPathImpl::getTempDirectory(out);
}

int VELSysPath::getHomeDirectory(VELSysPath& out) {
    return VELSysPathImpl::getHomeDirectory(out);
}

int VELSysPath::GetTempFilePath(VELSysPath& out, const QORUnicodeString* prefix, const VELSysPath* directory) {
    return VELSysPathImpl::getTempFilePath(out, prefix, directory);
}

int VELSysPath::getTempFilePath(VELSysPath& out, const QORSysTSUnicodeString* prefix, const VELSysPath* directory) {
    const QORUnicodeString shared = prefix != nullptr ? Unicode(*prefix) : QORUnicodeString();
    return VELSysPathImpl::getTempFilePath(out, prefix != nullptr ? &shared : nullptr, directory);
}

void VELSysPath::PrintInTrace(const char* label, int level) const {
    const VELSysPathImpl none;
    (_impl != nullptr ? *_impl : none).PrintInTrace(label, level);
}

int VELSysPathHome(VELSysPath& out) {
    return VELSysPath::getHomeDirectory(out);
}

int VELSysPathTemporary(VELSysPath& out) {
    return VELSysPath::getTempDirectory(out);
}

int VELSysPathBaseName(const VELSysPath& path, QORUnicodeString& name) {
    VELSysPath parent;
    QORSysTSUnicodeString directory;
    QORSysTSUnicodeString stem;
    QORSysTSUnicodeString extension;
    const int code = path.split(parent, directory, stem, extension);
    name.Reset();
    if (code >= 0) {
        name = Unicode(stem) + "." + Unicode(extension);
    }
    return code;
}
