#include "VELSysDirectoryIterator.h"

#include "PathAccess.h"
#include "UTF8Text.h"
#include "VELString.h"
#include "VELSysStatus.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

using VEL::internal::PathAccess;

/// Where a walk stands.
class VELSysDirectoryIteratorImpl {
public:
    enum State : int {
        Nowhere = -1, ///< Not started, or broken.
        OnEntry = 0,
        AtEnd = 1,
    };

    ~VELSysDirectoryIteratorImpl() { CloseFinder(); }

    void CloseFinder() {
        VELSysFileFinderClose(finder);
        finder = nullptr;
    }
    int Start(VELSysPathImpl* newOwner, const QORUnicodeString* newPattern, const VELSysFNMatchOptions& newOptions);
    int Next();
    int PathOfEntry(const char* name, VELSysPath& path) const;
    /// The name of the current entry, or null.
    const char* Name() const { return finder != nullptr && finder->entry != nullptr ? finder->entry->d_name : nullptr; }
    bool HasSameChoice(const QORUnicodeString& otherPattern, const VELSysFNMatchOptions& otherOptions) const;

    VELSysPath current;
    QORUnicodeString pattern;
    VELSysFileFinderCtx* finder = nullptr; ///< Open during a walk, and owned.
    VELSysPathImpl* owner = nullptr;       ///< The path that is listed; borrowed.
    int state = Nowhere;
    VELSysFNMatchOptions options;
    int delivered = 0; ///< Entries since the start.

private:
    int MoveFinder();
};

// A type with a virtual destructor among its members has its offsets all the same.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(sizeof(VELSysDirectoryIterator) == 8);
static_assert(sizeof(VELSysDirectoryIteratorImpl) == 56);
static_assert(offsetof(VELSysDirectoryIteratorImpl, current) == 0 &&
              offsetof(VELSysDirectoryIteratorImpl, pattern) == 16 &&
              offsetof(VELSysDirectoryIteratorImpl, finder) == 24 &&
              offsetof(VELSysDirectoryIteratorImpl, owner) == 32 &&
              offsetof(VELSysDirectoryIteratorImpl, state) == 40 &&
              offsetof(VELSysDirectoryIteratorImpl, options) == 44 &&
              offsetof(VELSysDirectoryIteratorImpl, delivered) == 48);
#pragma GCC diagnostic pop

namespace {

using Impl = VELSysDirectoryIteratorImpl;

bool IsDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

/// True when an entry's path is `owner`'s text and the name, with at most a slash between them. A second slash at the
/// end of the text would go, and what is too long or no local path fails to build.
bool IsJoinedAsItStands(const VELSysPathImpl& owner) {
    static constexpr unsigned int LimitOfBuilding = 1025;
    const char* const text = PathAccess::Text(owner);
    const unsigned int length = PathAccess::Length(owner);
    const unsigned int mask = PathAccess::Mask(owner);
    const bool isLocal = mask == VELSysPathTypeAbsolute || mask == VELSysPathTypeRelative;
    return isLocal && length > 0 && length < LimitOfBuilding &&
           (length == 1 || text[length - 1] != '/' || text[length - 2] != '/');
}

} // namespace

bool VELSysDirectoryIteratorImpl::HasSameChoice(const QORUnicodeString& otherPattern,
                                                const VELSysFNMatchOptions& otherOptions) const {
    return options.matchMode == otherOptions.matchMode && options.literalBrackets == otherOptions.literalBrackets &&
           pattern == otherPattern;
}

int VELSysDirectoryIteratorImpl::Start(VELSysPathImpl* newOwner, const QORUnicodeString* newPattern,
                                       const VELSysFNMatchOptions& newOptions) {
    if (newOwner == nullptr) {
        return VEL::StatusFailure;
    }
    const QORUnicodeString wanted = newPattern != nullptr ? *newPattern : QORUnicodeString();
    if (state == OnEntry && delivered == 1 && owner == newOwner && HasSameChoice(wanted, newOptions)) {
        return VEL::StatusOk;
    }
    if (!newOwner->isDirectory(0)) {
        return VEL::StatusFailure;
    }
    owner = newOwner;
    pattern = wanted;
    options = newOptions;
    CloseFinder();
    state = OnEntry;
    delivered = 0;
    const int rc = Next();
    // An empty directory is no failure.
    return rc == VEL::StatusNoMoreFiles ? VEL::StatusNote : rc;
}

int VELSysDirectoryIteratorImpl::MoveFinder() {
    if (finder != nullptr) {
        return VELSysFileFinderNext(finder);
    }
    const char* const text = PathAccess::Text(*owner);
    QORUnicodeString directory;
    directory.BuildFromUTF8(text, PathAccess::Length(*owner));
    return VELSysFileFinderFirst(finder, directory, pattern, options);
}

int VELSysDirectoryIteratorImpl::Next() {
    if (state == Nowhere || owner == nullptr) {
        return VEL::StatusFailure;
    }
    int rc = MoveFinder();
    while (Name() != nullptr && IsDotOrDotDot(Name())) {
        rc = MoveFinder();
    }
    if (const char* const name = Name()) {
        // Deliberately, a name that no path can hold is an entry all the same, and so is one behind the end.
        PathOfEntry(name, current);
        ++delivered;
        return VEL::StatusOk;
    }
    state = rc == VEL::StatusNoMoreFiles ? AtEnd : Nowhere;
    CloseFinder();
    return rc;
}

int VELSysDirectoryIteratorImpl::PathOfEntry(const char* name, VELSysPath& path) const {
    const std::size_t length = std::strlen(name);
    const bool isUTF8 = VEL::internal::IsUTF8(name, length);
    VELSysPathImpl* const target = PathAccess::Ensure(path);
    if (isUTF8 && target != nullptr && target != owner && IsJoinedAsItStands(*owner)) {
        if (PathAccess::SetEntry(*target, *owner, name, length)) {
            return VEL::StatusOk;
        }
        // What stood there names something else.
        PathAccess::Reset(*target);
        return VEL::StatusFailure;
    }
    // Built aside, since `path` may be the path that is listed.
    VELSysPath built;
    int rc = built.Set(PathAccess::Text(*owner));
    if (rc >= 0 && isUTF8) {
        rc = built.Append(name);
    } else if (rc >= 0) {
        const QORUnicodeString text(name);
        const bool isOutOfMemory = text.IsEmpty();
        rc = isOutOfMemory ? VEL::StatusFailure : built.Append(text);
        if (isOutOfMemory) {
            built = VELSysPath();
        }
    }
    path = built;
    return rc;
}

VELSysDirectoryIterator::VELSysDirectoryIterator() : _impl(new (std::nothrow) Impl) {}

VELSysDirectoryIterator::VELSysDirectoryIterator(const VELSysDirectoryIterator& other) : VELSysDirectoryIterator() {
    *this = other;
}

VELSysDirectoryIterator::VELSysDirectoryIterator(VELSysPathImpl* owner, const QORUnicodeString* pattern,
                                                 const VELSysFNMatchOptions& options, int* rc)
    : VELSysDirectoryIterator() {
    if (rc != nullptr && *rc < 0) {
        return;
    }
    const int result = _Start(owner, pattern, options);
    if (rc != nullptr) {
        *rc = result;
    }
}

VELSysDirectoryIterator::VELSysDirectoryIterator(VELSysPathImpl* owner) : VELSysDirectoryIterator() {
    if (_impl != nullptr) {
        _impl->owner = owner;
        _impl->state = Impl::AtEnd;
    }
}

VELSysDirectoryIterator::~VELSysDirectoryIterator() {
    delete _impl;
}

VELSysDirectoryIterator& VELSysDirectoryIterator::operator=(const VELSysDirectoryIterator& other) {
    if (other._impl != nullptr) {
        const VELSysFNMatchOptions options = other._impl->options;
        _Start(other._impl->owner, &other._impl->pattern, options);
    }
    return *this;
}

int VELSysDirectoryIterator::_Start(VELSysPathImpl* owner, const QORUnicodeString* pattern,
                                    const VELSysFNMatchOptions& options) {
    return _impl != nullptr ? _impl->Start(owner, pattern, options) : VEL::StatusFailure;
}

bool VELSysDirectoryIterator::operator==(const VELSysDirectoryIterator& other) const {
    // A walk that failed has ended, but among themselves such walks are told apart.
    const auto hasEnded = [](const Impl* walk) { return walk == nullptr || walk->state != Impl::OnEntry; };
    if (hasEnded(_impl) != hasEnded(other._impl)) {
        return false;
    }
    if (_impl == nullptr || other._impl == nullptr) {
        // Without memory for one side, a loop still comes to its end.
        return true;
    }
    const Impl& a = *_impl;
    const Impl& b = *other._impl;
    if (a.owner != b.owner) {
        return false;
    }
    if (a.state == Impl::AtEnd || b.state == Impl::AtEnd) {
        return true;
    }
    return a.HasSameChoice(b.pattern, b.options) && a.delivered == b.delivered;
}

int VELSysDirectoryIterator::next() {
    return _impl != nullptr ? _impl->Next() : VEL::StatusFailure;
}

const VELSysPath& VELSysDirectoryIterator::operator*() const {
    static const VELSysPath s_none;
    return _impl != nullptr ? _impl->current : s_none;
}

int VELSysDirectoryIterator::GetCurrentPath(VELSysPath& path) const {
    if (_impl == nullptr || _impl->state == Impl::Nowhere) {
        return VEL::StatusFailure;
    }
    const char* const name = _impl->Name();
    return name != nullptr ? _impl->PathOfEntry(name, path) : VEL::StatusBadArgument;
}

int VELSysDirectoryIterator::GetCurrentName(QORSysTSUnicodeString& name) const {
    if (_impl == nullptr || _impl->state == Impl::Nowhere) {
        return VEL::StatusFailure;
    }
    QORUnicodeString current;
    const int rc = VELSysFileFinderCurrentName(_impl->finder, current);
    if (rc == VEL::StatusOk) {
        VEL::Copy(name, current);
    }
    return rc;
}

int VELSysPath::GetDirectoryIterator(VELSysDirectoryIterator& iterator) const {
    return iterator._Start(PathAccess::Of(*this), nullptr, VELSysFNMatchOptions());
}

VELSysDirectoryIterator VELSysPath::Begin(int* rc) const {
    return VELSysDirectoryIterator(PathAccess::Of(*this), nullptr, VELSysFNMatchOptions(), rc);
}

VELSysDirectoryIterator VELSysPath::Begin(const QORUnicodeString& pattern, const VELSysFNMatchOptions& options,
                                          int* rc) const {
    return VELSysDirectoryIterator(PathAccess::Of(*this), &pattern, options, rc);
}

VELSysDirectoryIterator VELSysPath::End() const {
    return VELSysDirectoryIterator(PathAccess::Of(*this));
}
