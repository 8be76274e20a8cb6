#include "VELSysFileFinder.h"

#include "NativeText.h"
#include "PathAccess.h"
#include "StringAccess.h"
#include "StringText.h"
#include "SystemError.h"
#include "UTF8Text.h"
#include "VELSysFile.h"
#include "VELSysPath.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fnmatch.h>
#include <memory>
#include <new>
#include <string_view>

static_assert(sizeof(VELSysFNMatchOptions) == 2);
static_assert(sizeof(VELSysFileFinderCtx) == 40);
static_assert(offsetof(VELSysFileFinderCtx, entry) == 0 && offsetof(VELSysFileFinderCtx, directory) == 8 &&
              offsetof(VELSysFileFinderCtx, directoryText) == 16 && offsetof(VELSysFileFinderCtx, pattern) == 24 &&
              offsetof(VELSysFileFinderCtx, matchMode) == 32 && offsetof(VELSysFileFinderCtx, literalBrackets) == 33 &&
              offsetof(VELSysFileFinderCtx, hasPattern) == 34);

namespace {

using VEL::internal::NativeText;
using VEL::internal::PathAccess;
using VEL::internal::SystemError;

/// Answers of `fnmatch`; what is above is an error.
enum MatchResult : int { Matches = 0, MatchesNot = FNM_NOMATCH };

bool IsASCII(std::string_view text) {
    return VEL::internal::IsASCII(text.data(), text.size());
}

/// A pattern as it is used for name after name. One of ASCII with at most one "*" and nothing else special is compared
/// directly, as long as the names are ASCII too: what bytes above mean, and what case is, is the locale's affair.
class NamePattern {
public:
    NamePattern(const char* pattern, bool isCaseIgnored) : _pattern(pattern), _flags(isCaseIgnored ? FNM_CASEFOLD : 0) {
        const std::string_view text(pattern);
        const std::size_t star = text.find('*');
        _isSimple = !isCaseIgnored && text.find_first_of("?[\\") == std::string_view::npos && text.rfind('*') == star &&
                    IsASCII(text);
        _hasStar = star != std::string_view::npos;
        _head = text.substr(0, star);
        _tail = _hasStar ? text.substr(star + 1) : std::string_view();
    }

    /// @return A MatchResult or an error of `fnmatch`.
    int Match(const char* name) const {
        if (_isSimple) {
            const std::string_view text(name);
            if (IsASCII(text)) {
                return MatchesSimply(text) ? Matches : MatchesNot;
            }
        }
        return fnmatch(_pattern, name, _flags);
    }

private:
    bool MatchesSimply(std::string_view name) const {
        if (!_hasStar) {
            return name == _head;
        }
        return name.size() >= _head.size() + _tail.size() && name.starts_with(_head) && name.ends_with(_tail);
    }

    const char* _pattern;
    int _flags;
    bool _isSimple;
    bool _hasStar;
    std::string_view _head;
    std::string_view _tail;
};

/// A listing with what its pattern was taken apart into, which borrows the pattern's text.
struct Listing : VELSysFileFinderCtx {
    NamePattern names;
};

/// The pattern with its brackets made literal.
QORUnicodeString QuoteBrackets(const QORUnicodeString& pattern) {
    QORUnicodeString quoted(pattern);
    quoted.ReplaceAll("[", "\\[");
    quoted.ReplaceAll("]", "\\]");
    return quoted;
}

/// Builds a path from what a logical name stands for.
int BuildFromLogicalName(VELSysPathImpl& path) {
    PathAccess::Mask(path) = VELSysPathTypeLogical;
    QORUnicodeString location;
    if (path.getTranslatedPath(location) != 1) {
        return VEL::StatusBadArgument;
    }
    return path.BuildFromUnicode(location) < 0 ? VEL::StatusBadArgument : VEL::StatusOk;
}

/// Builds the local path that `text` names.
int BuildLocalPath(VELSysPathImpl& path, const QORUnicodeString& text) {
    const int rc = path.BuildFromUnicode(text);
    const bool isValid = (PathAccess::Mask(path) & VELSysPathTypeInvalid) == 0;
    if (isValid && !PathAccess::IsLogical(path)) {
        return PathAccess::IsWeb(path) ? VEL::StatusNotImplemented : rc;
    }
    int kind = VELSysPathKindNone;
    if (VELSysGetPathType(text.ConvertToUCChar(), &kind, 0) < 0) {
        return VEL::StatusBadArgument;
    }
    if (kind != VELSysPathKindLogical && kind != VELSysPathKindLogicalURL) {
        return rc;
    }
    return BuildFromLogicalName(path);
}

/// What stands in front of the names of a directory's entries.
QORUnicodeString WithSlash(const VELSysPathImpl& path) {
    const char* const text = PathAccess::Text(path);
    const unsigned int length = PathAccess::Length(path);
    QORUnicodeString s;
    s.BuildFromUTF8(text, length);
    if (text[length - 1] != '/') {
        s.Append("/");
    }
    return s;
}

/// A listing on an open directory, which it takes over; null without memory, and the directory is closed then.
Listing* NewListing(DIR* opened, const VELSysPathImpl& path, const QORUnicodeString& pattern,
                    const VELSysFNMatchOptions& options) {
    const QORUnicodeString directoryText = WithSlash(path);
    const QORUnicodeString names = options.literalBrackets == 1 ? QuoteBrackets(pattern) : pattern;
    const NamePattern match(names.ConvertToChar(), options.matchMode == VELSysFNMatchIgnoreCase);
    Listing* listing = nullptr;
    if (!directoryText.IsEmpty() && (pattern.IsEmpty() || names.GetLengthInByte() > 0)) {
        listing = new (std::nothrow) Listing{{.entry = nullptr,
                                              .directory = opened,
                                              .directoryText = directoryText,
                                              .pattern = names,
                                              .matchMode = options.matchMode,
                                              .literalBrackets = options.literalBrackets,
                                              .hasPattern = !names.IsEmpty()},
                                             match};
    }
    if (listing == nullptr) {
        closedir(opened);
    }
    return listing;
}

int OpenListing(VELSysFileFinderCtx*& ctx, const QORUnicodeString& directory, const QORUnicodeString& pattern,
                const VELSysFNMatchOptions& options) {
    VELSysPathImpl path;
    const int rc = BuildLocalPath(path, directory);
    if (rc < 0) {
        return rc;
    }
    const NativeText name(PathAccess::Text(path));
    DIR* const opened = opendir(name.Get());
    if (opened == nullptr) {
        return SystemError();
    }
    ctx = NewListing(opened, path, pattern, options);
    return ctx != nullptr ? VEL::StatusOk : VELConvertError(ENOMEM, VELSysFacilitySystem);
}

} // namespace

int VELSysFileFinderFirst(VELSysFileFinderCtx*& ctx, const QORUnicodeString& directory, const QORUnicodeString& pattern,
                          const VELSysFNMatchOptions& options) {
    ctx = nullptr;
    if (directory.IsEmpty()) {
        return VEL::StatusBadArgument;
    }
    int rc = OpenListing(ctx, directory, pattern, options);
    if (rc < 0) {
        return rc;
    }
    rc = VELSysFileFinderNext(ctx);
    if (rc < 0) {
        VELSysFileFinderClose(ctx);
        ctx = nullptr;
    }
    // A pattern that nothing matches is a file that isn't there.
    return rc == VEL::StatusNoMoreFiles ? VEL::StatusNotFound : rc;
}

int VELSysFileFinderNext(VELSysFileFinderCtx* ctx) {
    if (ctx == nullptr) {
        return VEL::StatusBadArgument;
    }
    const NamePattern& names = static_cast<Listing*>(ctx)->names;
    errno = 0;
    while ((ctx->entry = readdir64(ctx->directory)) != nullptr) {
        const int result = ctx->hasPattern ? names.Match(ctx->entry->d_name) : Matches;
        if (result == Matches) {
            return VEL::StatusOk;
        }
        if (result > MatchesNot) {
            ctx->entry = nullptr;
            return VELConvertError(result, VELSysFacilitySystem);
        }
        errno = 0;
    }
    return errno != 0 ? SystemError() : VEL::StatusNoMoreFiles;
}

int VELSysFileFinderCurrentName(const VELSysFileFinderCtx* ctx, QORUnicodeString& name) {
    if (ctx == nullptr || ctx->entry == nullptr) {
        return VEL::StatusBadArgument;
    }
    name = ctx->entry->d_name;
    return VEL::StatusOk;
}

int VELSysFileFinderCurrentStat(const VELSysFileFinderCtx* ctx, struct stat64* out) {
    if (ctx == nullptr || ctx->entry == nullptr) {
        return VEL::StatusBadArgument;
    }
    const QORUnicodeString name(ctx->entry->d_name);
    const QORUnicodeString path = ctx->directoryText + name;
    // Without memory a part would be missing, and what is left names something else.
    if (name.IsEmpty() || path.GetLengthInChar() != ctx->directoryText.GetLengthInChar() + name.GetLengthInChar()) {
        return VELConvertError(ENOMEM, VELSysFacilitySystem);
    }
    return VELSysFileStat(path.ConvertToUCChar(), out);
}

int VELSysFileFinderClose(VELSysFileFinderCtx* ctx) {
    if (ctx == nullptr) {
        return VEL::StatusNote;
    }
    const int result = closedir(ctx->directory);
    const int error = errno;
    delete static_cast<Listing*>(ctx);
    return result == 0 ? VEL::StatusOk : VELConvertError(error, VELSysFacilitySystem);
}
