/// @file
/// The door from the library's own functions to the state of a path, and the steps that building shares.
#pragma once

#include "VELSysPath.h"

#include <cstddef>

struct VEL::internal::PathAccess {
    /// The implementation behind a handle, or null.
    static VELSysPathImpl* Of(const VELSysPath& path) { return path._impl; }
    /// Puts `impl` behind a handle, whose implementation it was not.
    static void Adopt(VELSysPath& path, VELSysPathImpl* impl) {
        delete path._impl;
        path._impl = impl;
    }
    /// The implementation behind a handle, made if need be; null without memory.
    static VELSysPathImpl* Ensure(VELSysPath& path);

    /// UTF-8 with a terminator, or null.
    static const char* Text(const VELSysPathImpl& impl) { return impl._path; }
    static unsigned int Length(const VELSysPathImpl& impl) { return impl._length; }
    static std::size_t RootLength(const VELSysPathImpl& impl) { return static_cast<std::size_t>(impl._rootLength); }
    static unsigned int Mask(const VELSysPathImpl& impl) { return impl._typeMask; }
    static unsigned int& Mask(VELSysPathImpl& impl) { return impl._typeMask; }
    static bool IsStatValid(const VELSysPathImpl& impl) { return impl._statValid != 0; }
    static const QORUnicodeString& Translated(const VELSysPathImpl& impl) { return impl._translated; }
    static bool IsInvalid(const VELSysPathImpl& impl) { return (impl._typeMask & VELSysPathTypeInvalid) != 0; }
    static bool IsWeb(const VELSysPathImpl& impl) {
        return (impl._typeMask & (VELSysPathTypeHttp | VELSysPathTypeHttps)) != 0;
    }
    static bool IsLogical(const VELSysPathImpl& impl) { return (impl._typeMask & VELSysPathTypeLogical) != 0; }

    static void DeclareStatValid(VELSysPathImpl& impl) { impl._statValid = 1; }
    static void VoidStat(VELSysPathImpl& impl) { impl._statValid = 0; }

    /// Back to the state of a new path.
    static void Reset(VELSysPathImpl& impl);
    /// Gives the path `n` bytes of text, which may be its own. Nothing else is looked at.
    /// @return False, and nothing changed, for more than 65535 bytes and without memory.
    static bool SetText(VELSysPathImpl& impl, const char* text, std::size_t n);
    /// Appends `mark`, if wanted, and `n` bytes of text, under the same conditions.
    static bool AppendText(VELSysPathImpl& impl, bool withMark, char mark, const char* text, std::size_t n);
    /// Gives a path that is otherwise new `n` bytes of UTF-8, decides their kind, and checks nothing.
    static bool SetClassified(VELSysPathImpl& impl, const char* text, std::size_t n);
    /// The path of an entry of a directory: the text of `owner`, a slash unless it ends in one, and `n` bytes of UTF-8,
    /// in the kind of `owner`. For a path that is set over and over: the buffer is kept, nothing is checked. The stat
    /// cache is void.
    static bool SetEntry(VELSysPathImpl& impl, const VELSysPathImpl& owner, const char* name, std::size_t n);

    enum BuildForm { FromBytes, FromString };
    /// Builds from `n` bytes, at least one, none of them zero, which may be a piece of the path's own text.
    static int Build(VELSysPathImpl& impl, const char* text, std::size_t n, BuildForm form);
    /// As VELSysPathImpl::BuildFromUTF8(), with a length.
    static int BuildFromUTF8(VELSysPathImpl& impl, const char* text, std::size_t n);

    /// True when `n` bytes are a path of some kind, which a logical name written with its scheme is not.
    static bool HasKind(const char* text, std::size_t n);
    /// Where a path is split.
    struct Cut {
        std::size_t parentLength; ///< Bytes of the parent; 0 where there is none.
        const char* name;
        std::size_t nameLength;
    };
    /// @return 0 or 1 as VELSysPath::split(); VEL::StatusFailure for an invalid path.
    static int FindCut(const VELSysPathImpl& impl, Cut& cut);
    /// The extension without its dot, up to the end of the path; null where there is none.
    static const char* FindExtension(const VELSysPathImpl& impl);

    static constexpr bool HasPinnedLayout();

private:
    static void _ResetState(VELSysPathImpl& impl);
    /// Room for `n` bytes and a terminator. What is there stays.
    static bool _Grow(VELSysPathImpl& impl, std::size_t n);
};

// Types with a virtual destructor have their offsets all the same.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
/// Fields stand where programs that were compiled against the header know them.
constexpr bool VEL::internal::PathAccess::HasPinnedLayout() {
    return sizeof(VELSysPath) == 16 && sizeof(VELSysPathImpl) == 184 && offsetof(VELSysPath, _impl) == 8 &&
           offsetof(VELSysPathImpl, _path) == 8 && offsetof(VELSysPathImpl, _translated) == 16 &&
           offsetof(VELSysPathImpl, _statCache) == 24 && offsetof(VELSysPathImpl, _typeMask) == 168 &&
           offsetof(VELSysPathImpl, _length) == 172 && offsetof(VELSysPathImpl, _rootLength) == 174 &&
           offsetof(VELSysPathImpl, _statValid) == 176;
}
#pragma GCC diagnostic pop
