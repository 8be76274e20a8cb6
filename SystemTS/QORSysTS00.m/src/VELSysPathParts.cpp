// Parts of a path: appending, extensions, splitting.

#include "PathAccess.h"
#include "UTF8Text.h"
#include "VELSysStatus.h"

#include <cstring>

using VEL::internal::IsUTF8;
using VEL::internal::PathAccess;
using VEL::internal::UTF8Text;
using Cut = PathAccess::Cut;

namespace {

/// Pieces are shorter than this, in bytes, whatever they are appended to.
constexpr std::size_t PieceLimit = 1025;

/// The last `c` in `n` bytes, or null.
const char* FindLast(const char* text, char c, std::size_t n) {
    return n > 0 ? static_cast<const char*>(memrchr(text, c, n)) : nullptr;
}

bool EndsInSlash(const VELSysPathImpl& impl) {
    const std::size_t n = PathAccess::Length(impl);
    return n > 0 && PathAccess::Text(impl)[n - 1] == '/';
}

/// Appends `n` bytes to a path that has a text.
int AppendPiece(VELSysPathImpl& impl, const char* piece, std::size_t n) {
    if (n == 1 && piece[0] == '.') {
        return VEL::StatusOk;
    }
    if (!IsUTF8(piece, n)) {
        return VEL::StatusBadArgument;
    }
    PathAccess::VoidStat(impl);
    if (n >= PieceLimit) {
        return VEL::StatusPathTooLong;
    }
    if (n > 0 && piece[n - 1] == '/') {
        --n;
    }
    if (n > 0 && piece[0] == '/') {
        ++piece;
        --n;
    }
    // A web address takes the slash for an empty piece too, and so does an empty text, which becomes absolute.
    const bool takesSlash = !EndsInSlash(impl) && (n > 0 || PathAccess::IsWeb(impl) || PathAccess::Length(impl) == 0);
    if (!PathAccess::AppendText(impl, takesSlash, '/', piece, n)) {
        return VEL::StatusFailure;
    }
    PathAccess::Mask(impl) &= ~static_cast<unsigned int>(VELSysPathTypeReserved);
    return PathAccess::IsInvalid(impl) ? VEL::StatusFailure : VEL::StatusOk;
}

/// Appends `n` bytes behind a dot, of which they may bring their own.
int AppendExtension(VELSysPathImpl& impl, const char* extension, std::size_t n) {
    if (!IsUTF8(extension, n)) {
        return VEL::StatusBadArgument;
    }
    if (PathAccess::Text(impl) == nullptr) {
        return VEL::StatusFailure;
    }
    PathAccess::VoidStat(impl);
    const bool takesDot = n == 0 || extension[0] != '.';
    return PathAccess::AppendText(impl, takesDot, '.', extension, n) ? VEL::StatusOk : VEL::StatusFailure;
}

/// Where the last component of `n` bytes starts.
const char* LastComponent(const char* text, std::size_t n) {
    const char* const slash = FindLast(text, '/', n);
    return slash != nullptr ? slash + 1 : text;
}

} // namespace

int VELSysPathImpl::append(const char* piece) {
    if (_path == nullptr) {
        return VEL::StatusFailure;
    }
    return piece != nullptr ? AppendPiece(*this, piece, std::strlen(piece)) : AppendPiece(*this, "", 0);
}

int VELSysPathImpl::append(const unsigned short* piece) {
    if (piece == nullptr) {
        return append("");
    }
    const UTF8Text utf8(piece);
    return _path != nullptr && utf8.Get() != nullptr ? AppendPiece(*this, utf8.Get(), utf8.Length())
                                                     : VEL::StatusFailure;
}

int VELSysPathImpl::append(const QORUnicodeString& piece) {
    const UTF8Text utf8(piece);
    return _path != nullptr && utf8.Get() != nullptr ? AppendPiece(*this, utf8.Get(), utf8.Length())
                                                     : VEL::StatusFailure;
}

const char* PathAccess::FindExtension(const VELSysPathImpl& impl) {
    const char* const text = impl._path;
    if (text == nullptr) {
        return nullptr;
    }
    const char* const end = text + impl._length;
    const char* dot = end;
    do {
        if (dot == text || *--dot == '/') {
            return nullptr;
        }
    } while (*dot != '.');
    // Deliberate: a dot in front makes no extension of a relative name, but of one behind a slash; and only relative
    // names do without any slash.
    const bool mayDoWithout = (impl._typeMask & VELSysPathTypeRelative) != 0 && dot != text;
    if (dot + 1 == end || (!mayDoWithout && FindLast(text, '/', static_cast<std::size_t>(dot - text)) == nullptr)) {
        return nullptr;
    }
    return dot + 1;
}

int VELSysPathImpl::getExtension(QORUnicodeString& extension) const {
    const char* const found = PathAccess::FindExtension(*this);
    if (found == nullptr) {
        return VEL::StatusFailure;
    }
    extension.BuildFromUTF8(found, static_cast<unsigned long>(_path + _length - found));
    return VEL::StatusOk;
}

// Deliberate: none of these asks whether the path ends in a slash; the extension then stands behind it.

int VELSysPathImpl::addExtension(const char* extension) {
    return extension != nullptr ? AppendExtension(*this, extension, std::strlen(extension)) : VEL::StatusFailure;
}

int VELSysPathImpl::addExtension(const unsigned short* extension) {
    const UTF8Text utf8(extension);
    return _path != nullptr && utf8.Get() != nullptr ? AppendExtension(*this, utf8.Get(), utf8.Length())
                                                     : VEL::StatusFailure;
}

int VELSysPathImpl::addExtension(const QORUnicodeString& extension) {
    const UTF8Text utf8(extension);
    if (_path == nullptr || utf8.Length() == 0) {
        return VEL::StatusFailure;
    }
    if (!IsUTF8(utf8.Get(), utf8.Length())) {
        return VEL::StatusBadArgument;
    }
    _statValid = 0;
    // Deliberate: this form adds no dot.
    return PathAccess::AppendText(*this, false, '.', utf8.Get(), utf8.Length()) ? VEL::StatusOk : VEL::StatusFailure;
}

int VELSysPathImpl::removeExtension() {
    if (_path == nullptr || _length == 0 || EndsInSlash(*this)) {
        return VEL::StatusFailure;
    }
    const char* const component = LastComponent(_path, _length);
    const char* const dot = FindLast(component, '.', static_cast<std::size_t>(_path + _length - component));
    if (dot == nullptr || dot == component || (dot == component + 1 && *component == '.')) {
        return VEL::StatusFailure;
    }
    return PathAccess::BuildFromUTF8(*this, _path, static_cast<std::size_t>(dot - _path));
}

int VELSysPathImpl::removeExtension(const QORUnicodeString& extension) {
    Cut cut{};
    if (_path == nullptr || EndsInSlash(*this) || PathAccess::FindCut(*this, cut) < 0) {
        return VEL::StatusFailure;
    }
    const UTF8Text utf8(extension);
    if (utf8.Get() == nullptr) {
        return VEL::StatusFailure;
    }
    const bool bringsDot = utf8.Get()[0] == '.';
    const std::size_t wanted = utf8.Length() + (bringsDot ? 0 : 1);
    if (cut.nameLength <= wanted) {
        return VEL::StatusFailure;
    }
    const std::size_t stemLength = cut.nameLength - wanted;
    const char* const tail = cut.name + stemLength;
    if (tail[0] != '.' || std::memcmp(tail + (bringsDot ? 0 : 1), utf8.Get(), utf8.Length()) != 0) {
        return VEL::StatusFailure;
    }
    if (cut.parentLength == 0) {
        return PathAccess::BuildFromUTF8(*this, _path, stemLength);
    }
    VELSysPathImpl rebuilt;
    if (!PathAccess::SetClassified(rebuilt, _path, cut.parentLength)) {
        return VEL::StatusFailure;
    }
    const int code = AppendPiece(rebuilt, cut.name, stemLength);
    if (code >= 0) {
        *this = rebuilt;
    }
    return code;
}

int PathAccess::FindCut(const VELSysPathImpl& impl, Cut& cut) {
    if (impl._path == nullptr || IsInvalid(impl)) {
        return VEL::StatusFailure;
    }
    const std::size_t length = impl._length - (EndsInSlash(impl) ? 1u : 0u);
    const bool isAbsolute = (impl._typeMask & VELSysPathTypeAbsolute) != 0;
    const std::size_t start = isAbsolute ? 0 : RootLength(impl);
    const char* const slash = start < length ? FindLast(impl._path + start, '/', length - start) : nullptr;
    if (slash == nullptr) {
        cut = {0, impl._path, length};
        return VEL::StatusNote;
    }
    const auto position = static_cast<std::size_t>(slash - impl._path);
    cut = {position == 0 && isAbsolute ? 1 : position, slash + 1, length - position - 1};
    return VEL::StatusOk;
}

int VELSysPathImpl::split(VELSysPathImpl& parent, QORSysTSUnicodeString& name) const {
    Cut cut{};
    const int code = PathAccess::FindCut(*this, cut);
    if (code < 0) {
        return code;
    }
    // First, since the parent may be this path itself.
    name.BuildFromUTF8(cut.name, cut.nameLength);
    if (code == VEL::StatusOk && !PathAccess::SetClassified(parent, _path, cut.parentLength)) {
        return VEL::StatusFailure;
    }
    return code;
}

int VELSysPathImpl::split(VELSysPathImpl& parent, QORSysTSUnicodeString& directory, QORSysTSUnicodeString& stem,
                          QORSysTSUnicodeString& extension) const {
    const char* const found = PathAccess::FindExtension(*this);
    if (found == nullptr) {
        return VEL::StatusFailure;
    }
    extension.BuildFromUTF8(found, static_cast<unsigned long>(_path + _length - found));
    Cut cut{};
    const int code = PathAccess::FindCut(*this, cut);
    if (code < 0) {
        return code;
    }
    stem.BuildFromUTF8(cut.name, static_cast<unsigned long>(found - 1 - cut.name));
    // Deliberate: a name that stands in no directory has none to split, and that fails.
    VELSysPathImpl rest;
    if (code == VEL::StatusOk && !PathAccess::SetClassified(rest, _path, cut.parentLength)) {
        return VEL::StatusFailure;
    }
    const int restCode = rest.split(parent, directory);
    return restCode == VEL::StatusNote ? VEL::StatusOk : restCode;
}
