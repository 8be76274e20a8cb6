// The state of a path: its text, what kind of location that is, building and comparing.

#include "PathAccess.h"
#include "UpwardCalls.h"
#include "UTF8Text.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

using VEL::internal::PathAccess;
using VEL::internal::UTF8Text;

// The layout is seen by programs that were compiled against the header.
static_assert(PathAccess::HasPinnedLayout());

namespace {

constexpr std::size_t LengthLimit = 0xFFFF;
/// Local paths are shorter than this, in bytes.
constexpr std::size_t LocalLimit = 1025;

struct Kind {
    unsigned int bit;
    short rootLength;
};

template <std::size_t Size>
bool HasHead(const char* text, std::size_t n, const char (&head)[Size]) {
    return n >= Size - 1 && std::memcmp(text, head, Size - 1) == 0;
}

/// Kind of `n` bytes. VELSysPathTypeInvalid for a logical name written with its scheme, which has to be translated
/// before it is a path.
Kind KindOf(const char* text, std::size_t n) {
    if (HasHead(text, n, "/")) {
        return {VELSysPathTypeAbsolute, 1};
    }
    if (HasHead(text, n, "\x01\x02\\")) {
        return {VELSysPathTypeLogical, 3};
    }
    if (HasHead(text, n, "http://")) {
        return {VELSysPathTypeHttp, 7};
    }
    if (HasHead(text, n, "https://")) {
        return {VELSysPathTypeHttps, 8};
    }
    // All that VELSysGetPathType() would tell apart of what is left; the scheme alone is no such name.
    constexpr char LogicalScheme[] = "QORDLN://";
    if (n >= sizeof LogicalScheme && HasHead(text, n, LogicalScheme)) {
        return {VELSysPathTypeInvalid, 0};
    }
    return {VELSysPathTypeRelative, 0};
}

bool IsWebCharacter(char c) {
    return c >= 0x20 && c <= 0x7D;
}

/// What a build asks of `n` bytes of text besides being UTF-8.
int Check(const Kind& kind, const char* text, std::size_t n) {
    const auto root = static_cast<std::size_t>(kind.rootLength);
    if (root >= n && kind.bit != VELSysPathTypeAbsolute) {
        return VEL::StatusFailure;
    }
    if ((kind.bit & (VELSysPathTypeHttp | VELSysPathTypeHttps)) == 0) {
        return n >= LocalLimit ? VEL::StatusPathTooLong : VEL::StatusOk;
    }
    return std::all_of(text + root, text + n, IsWebCharacter) && n <= LengthLimit ? VEL::StatusOk : VEL::StatusFailure;
}

/// The trace of all paths; null while the configuration names none.
std::atomic<void*> s_trace{nullptr};

void* Trace() {
    if (void* const trace = s_trace.load(std::memory_order_acquire)) {
        return trace;
    }
    void* mine = nullptr;
    VELSysTraceCreate__(&mine, "VELSysPath");
    void* first = nullptr;
    if (mine == nullptr || s_trace.compare_exchange_strong(first, mine, std::memory_order_acq_rel)) {
        return mine;
    }
    VELSysTraceDestroy__(&mine);
    return first;
}

} // namespace

VELSysPathImpl::VELSysPathImpl()
    : _path(nullptr), _statCache{}, _typeMask(VELSysPathTypeInvalid), _length(0), _rootLength(0), _statValid(0) {}

VELSysPathImpl::VELSysPathImpl(const VELSysPathImpl& other) : VELSysPathImpl() {
    *this = other;
}

VELSysPathImpl& VELSysPathImpl::operator=(const VELSysPathImpl& other) {
    if (this == &other) {
        return *this;
    }
    if (other._path == nullptr || !PathAccess::SetText(*this, other._path, other._length)) {
        const bool isOutOfMemory = other._path != nullptr;
        PathAccess::Reset(*this);
        if (isOutOfMemory) {
            return *this;
        }
    }
    _translated = other._translated;
    _statCache = other._statCache;
    _typeMask = other._typeMask;
    _rootLength = other._rootLength;
    _statValid = other._statValid;
    return *this;
}

VELSysPathImpl::~VELSysPathImpl() {
    std::free(_path);
}

void PathAccess::Reset(VELSysPathImpl& impl) {
    std::free(std::exchange(impl._path, nullptr));
    impl._length = 0;
    _ResetState(impl);
}

void PathAccess::_ResetState(VELSysPathImpl& impl) {
    if (!impl._translated.IsEmpty()) {
        impl._translated.Reset();
    }
    impl._statCache = {};
    impl._typeMask = VELSysPathTypeInvalid;
    impl._rootLength = 0;
    impl._statValid = 0;
}

bool PathAccess::_Grow(VELSysPathImpl& impl, std::size_t n) {
    if (n > LengthLimit) {
        return false;
    }
    // The buffer holds at least the present text.
    if (impl._path != nullptr && n <= impl._length) {
        return true;
    }
    auto* const larger = static_cast<char*>(std::realloc(impl._path, n + 1));
    if (larger == nullptr) {
        return false;
    }
    impl._path = larger;
    return true;
}

bool PathAccess::SetText(VELSysPathImpl& impl, const char* text, std::size_t n) {
    // A piece of the path's own text is no longer than that, so the buffer stays.
    if (!_Grow(impl, n)) {
        return false;
    }
    std::memmove(impl._path, text, n);
    impl._path[n] = '\0';
    impl._length = static_cast<unsigned short>(n);
    return true;
}

bool PathAccess::AppendText(VELSysPathImpl& impl, bool withMark, char mark, const char* text, std::size_t n) {
    const std::size_t start = impl._length + (withMark ? 1 : 0);
    const std::less_equal<> isNotBehind;
    const bool isOwn = isNotBehind(static_cast<const char*>(impl._path), text) &&
                       isNotBehind(text, static_cast<const char*>(impl._path + impl._length));
    const std::ptrdiff_t offset = isOwn ? text - impl._path : 0;
    if (!_Grow(impl, start + n)) {
        return false;
    }
    std::memmove(impl._path + start, isOwn ? impl._path + offset : text, n);
    if (withMark) {
        impl._path[start - 1] = mark;
    }
    impl._path[start + n] = '\0';
    impl._length = static_cast<unsigned short>(start + n);
    return true;
}

bool PathAccess::SetClassified(VELSysPathImpl& impl, const char* text, std::size_t n) {
    if (!SetText(impl, text, n)) {
        return false;
    }
    _ResetState(impl);
    impl.InitPathType();
    return true;
}

bool PathAccess::HasKind(const char* text, std::size_t n) {
    return KindOf(text, n).bit != VELSysPathTypeInvalid;
}

bool PathAccess::SetEntry(VELSysPathImpl& impl, const VELSysPathImpl& owner, const char* name, std::size_t n) {
    if (owner._path == nullptr) {
        return false;
    }
    const bool hasSlash = owner._length > 0 && owner._path[owner._length - 1] == '/';
    const std::size_t start = owner._length + (hasSlash ? 0 : 1);
    // One look at the buffer: entry after entry, it's mostly large enough.
    if (!_Grow(impl, start + n)) {
        return false;
    }
    std::memcpy(impl._path, owner._path, owner._length);
    impl._path[start - 1] = '/';
    std::memcpy(impl._path + start, name, n);
    impl._path[start + n] = 0;
    impl._length = static_cast<unsigned short>(start + n);
    if (!impl._translated.IsEmpty()) {
        impl._translated.Reset();
    }
    impl._typeMask = owner._typeMask;
    impl._rootLength = owner._rootLength;
    impl._statValid = 0;
    return true;
}

int PathAccess::Build(VELSysPathImpl& impl, const char* text, std::size_t n, BuildForm form) {
    if (!IsUTF8(text, n)) {
        Reset(impl);
        return VEL::StatusBadArgument;
    }
    const int code = Check(KindOf(text, n), text, n);
    if (n > LengthLimit || !SetClassified(impl, text, n)) {
        Reset(impl);
        return code < 0 ? code : VEL::StatusFailure;
    }
    if (code < 0) {
        impl._typeMask = VELSysPathTypeInvalid;
        return code;
    }
    // Deliberate: a build from a string looks for the last character at the index of the last byte, where it is only
    // in pure ASCII; other text keeps its slash.
    if (n > static_cast<std::size_t>(impl._rootLength) && impl._path[n - 1] == '/' &&
        (form == FromBytes || IsASCII(impl._path, n))) {
        impl._path[--impl._length] = '\0';
    }
    return VEL::StatusOk;
}

int VELSysPathImpl::BuildFromUTF8(const char* text) {
    const std::size_t n = text != nullptr ? std::strlen(text) : 0;
    return PathAccess::BuildFromUTF8(*this, text, n);
}

int PathAccess::BuildFromUTF8(VELSysPathImpl& impl, const char* text, std::size_t n) {
    int code = text != nullptr ? VEL::StatusBadArgument : VEL::StatusFailure;
    if (n > 0) {
        code = Build(impl, text, n, FromBytes);
    } else {
        Reset(impl);
    }
    if (code < 0) {
        impl.PrintInTrace("BuildFromUTF8 Failed", 0);
    }
    return code;
}

int VELSysPathImpl::BuildFromUCChar(const unsigned short* text) {
    const UTF8Text utf8(text);
    if (utf8.Length() == 0) {
        PathAccess::Reset(*this);
        return VEL::StatusFailure;
    }
    return PathAccess::Build(*this, utf8.Get(), utf8.Length(), PathAccess::FromBytes);
}

int VELSysPathImpl::BuildFromUnicode(const QORUnicodeString& text) {
    const UTF8Text utf8(text);
    if (utf8.Length() == 0) {
        PathAccess::Reset(*this);
        return VEL::StatusFailure;
    }
    return PathAccess::Build(*this, utf8.Get(), utf8.Length(), PathAccess::FromString);
}

int VELSysPathImpl::InitPathType() {
    _typeMask |= VELSysPathTypeInvalid;
    if (_path == nullptr) {
        return VEL::StatusFailure;
    }
    const Kind kind = KindOf(_path, _length);
    if (kind.bit != VELSysPathTypeInvalid) {
        _typeMask = (_typeMask & ~VELSysPathTypeInvalid) | kind.bit;
        _rootLength = kind.rootLength;
    }
    return VEL::StatusOk;
}

bool VELSysPathImpl::operator==(const VELSysPathImpl& other) const {
    if (_path == nullptr || other._path == nullptr) {
        return _path == other._path;
    }
    // Deliberate: case is ignored though the file system respects it.
    return strcasecmp(_path, other._path) == 0;
}

int VELSysPathImpl::getAsString(QORUnicodeString& text) const {
    text.BuildFromUTF8(_path, _length);
    return _path != nullptr ? VEL::StatusOk : VEL::StatusFailure;
}

void VELSysPathImpl::PrintInTrace(const char* label, int) const {
    if (void* const trace = Trace()) {
        VEL::internal::TraceInfo(trace, "%s : Path is %s", label != nullptr ? label : "",
                                 _path != nullptr ? _path : "");
    }
}

QORUnicodeString VELSysPathImpl::ToString_NoExtendedLengthPrefix(const VELSysPath& path) {
    QORUnicodeString text;
    if (const VELSysPathImpl* const impl = PathAccess::Of(path)) {
        impl->getAsString(text);
    }
    return text;
}
