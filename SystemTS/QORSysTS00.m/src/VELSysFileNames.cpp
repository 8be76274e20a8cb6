// Names of files as text alone: the check of a name, joining and splitting, the way to the native code page.

#include "StringAccess.h"
#include "StringText.h"
#include "VELSysFile.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"
#include "VLString.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

using VEL::internal::StringAccess;
using VEL::internal::UTF16Of;
using VEL::internal::UTF16Range;

/// Longest name that VELSysSplitPath() puts in place of the path that it came from.
constexpr int StagedNameSize = 2048;

constexpr const char* RefusedCharacters = "*?:|<>\"\\";

int OutOfMemory() {
    return VELConvertError(ENOMEM, VELSysFacilitySystem);
}

/// True when `mark`, of which the last unit is its terminator, stands at the head of a zero-terminated text.
template <std::size_t Size>
bool HasHead(const unsigned short* text, const unsigned short (&mark)[Size]) {
    return VLwcsncmp(text, mark, Size - 1) == 0;
}

template <std::size_t Size>
bool HasHead(const UTF16Range& text, const unsigned short (&mark)[Size]) {
    return text.length >= static_cast<int>(Size) - 1 && std::equal(mark, mark + Size - 1, text.text);
}

constexpr int LogicalHeadLength = 3;

bool IsRefused(unsigned short unit, bool isStrict) {
    return unit < 0x20 || unit > 0x7F || (isStrict && std::strchr(RefusedCharacters, unit) != nullptr);
}

bool IsGoodName(const unsigned short* path, bool isStrict) {
    const unsigned short* text = HasHead(path, DLHead) ? path + LogicalHeadLength : path;
    const bool isWebAddress = HasHead(text, HTTPURL) || HasHead(text, HTTPSURL);
    const unsigned short* const slash = VLwcsrchr(text, Slash[0]);
    for (text = slash != nullptr ? slash + 1 : text; *text != 0; ++text) {
        if (isWebAddress && *text == '?') {
            return true;
        }
        if (IsRefused(*text, isStrict)) {
            return false;
        }
    }
    return true;
}

/// The native form of `length` units in a zeroed array of `size` bytes, or of more where the text takes more: some
/// characters have three bytes for one unit.
int NewNativeArray(const unsigned short* text, std::size_t length, std::size_t size, char** out) {
    if (length > INT_MAX) {
        return OutOfMemory();
    }
    QORUnicodeString string;
    string.BuildFromUTF16(text, length);
    const auto bytes = VEL::internal::MBCSOf(StringAccess::BlockOf(string));
    if (bytes.length == 0 && length != 0) {
        return OutOfMemory();
    }
    const std::size_t used = static_cast<std::size_t>(bytes.length);
    *out = new (std::nothrow) char[std::max(size, used + 1)]();
    if (*out == nullptr) {
        return OutOfMemory();
    }
    std::memcpy(*out, bytes.text, used);
    return VEL::StatusOk;
}

bool EndsInSlash(const QORUnicodeString& s) {
    const auto block = StringAccess::BlockOf(s);
    const int last = block->_length - 1;
    return block->IsWide() ? block->Wide()[last] == Slash[0] : block->Text()[last] == '/';
}

/// Index of the unit that splits a path, or -1.
int FindSplit(const UTF16Range& path) {
    const unsigned short* const begin = path.text + (HasHead(path, DLHead) ? LogicalHeadLength : 0);
    const unsigned short* const end = path.text + path.length;
    const auto last = [=](unsigned short unit) {
        const auto found = std::find(std::make_reverse_iterator(end), std::make_reverse_iterator(begin), unit);
        return static_cast<int>(found.base() - path.text) - 1;
    };
    const int none = static_cast<int>(begin - path.text) - 1;
    // A text with a scheme has a slash, so a backslash never splits it.
    int split = last(Slash[0]);
    if (split == none) {
        split = last(AntiS[0]);
    }
    return split == none ? -1 : split;
}

} // namespace

int VELSysNameFilter(const unsigned short* path, char** narrow, int strict) {
    if (path == nullptr) {
        return VELConvertError(EBADF, VELSysFacilitySystem);
    }
    if (!IsGoodName(path, strict != 0)) {
        return VEL::StatusBadName;
    }
    if (narrow == nullptr) {
        return VEL::StatusOk;
    }
    const std::size_t length = VLwcslen(path);
    return NewNativeArray(path, length, 2 * length + 2, narrow);
}

int QORConvertUcsToStr(const unsigned short* text, char** out, std::size_t length) {
    if (text == nullptr || out == nullptr) {
        return VEL::StatusBadArgument;
    }
    *out = nullptr;
    if (length == 0) {
        length = VLwcslen(text);
    }
    return NewNativeArray(text, length, 2 * length + 1, out);
}

int VELSysMakePath(unsigned short*& directory, unsigned short* name) {
    if (directory == nullptr) {
        return VEL::StatusBadArgument;
    }
    const std::size_t length = VLwcslen(directory);
    const std::size_t nameLength = name != nullptr ? VLwcslen(name) : 0;
    std::unique_ptr<unsigned short[]> joined(new (std::nothrow) unsigned short[length + nameLength + 2]);
    if (joined == nullptr) {
        return OutOfMemory();
    }
    unsigned short* end = std::copy_n(directory, length, joined.get());
    if (length == 0 || end[-1] != Slash[0]) {
        *end++ = Slash[0];
    }
    end = std::copy_n(name, nameLength, end);
    *end = 0;
    delete[] directory;
    directory = joined.release();
    return VEL::StatusOk;
}

int VELSysMakePath(QORUnicodeString& directory, const QORUnicodeString& name) {
    if (directory.IsEmpty()) {
        return VEL::StatusBadArgument;
    }
    // Joined aside, since the two may be one object.
    QORUnicodeString joined(directory);
    const bool isApart = !EndsInSlash(joined);
    if (isApart) {
        joined.Append("/");
    }
    joined.Append(name);
    if (joined.GetLengthInChar() != directory.GetLengthInChar() + (isApart ? 1 : 0) + name.GetLengthInChar()) {
        return OutOfMemory();
    }
    directory = std::move(joined);
    return VEL::StatusOk;
}

int VELSysSplitPath(const QORUnicodeString& path, QORUnicodeString& directory, QORUnicodeString& name) {
    if (&path == &directory && &path == &name) {
        return VELConvertError(EINVAL, VELSysFacilitySystem);
    }
    // Holds the text while the arguments change.
    const QORUnicodeString whole(path);
    const auto block = StringAccess::BlockOf(whole);
    const UTF16Range text = UTF16Of(block);
    if (VEL::internal::IsMissing(block, text)) {
        return OutOfMemory();
    }
    const int split = FindSplit(text);
    if (split < 0) {
        directory.Reset();
        name = whole;
        return VEL::StatusOk;
    }
    const int nameLength = text.length - split - 1;
    QORUnicodeString head;
    QORUnicodeString tail;
    head.BuildFromUTF16(text.text, static_cast<unsigned long>(split));
    tail.BuildFromUTF16(text.text + split + 1, static_cast<unsigned long>(nameLength));
    if (head.IsEmpty() != (split == 0) || tail.IsEmpty() != (nameLength == 0)) {
        return OutOfMemory();
    }
    const bool isTooLong = &path == &name && nameLength > StagedNameSize;
    directory = std::move(head);
    if (!isTooLong) {
        name = std::move(tail);
    }
    return VEL::StatusOk;
}
