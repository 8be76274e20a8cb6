#include "VLString.h"

#include "QORSysTSCodePage.h"
#include "TextScan.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

using VEL::internal::FindFirst;
using VEL::internal::NotFound;

namespace {

constexpr unsigned short EmptyText[] = {0};

const unsigned short* OrEmpty(const unsigned short* s) {
    return s != nullptr ? s : EmptyText;
}

/// A zeroed array, or null when there is no memory.
template <class Unit>
Unit* NewArray(unsigned long size) {
    return new (std::nothrow) Unit[size]();
}

/// Bytes that a conversion to the environment's code page may write for `units` units, terminator included.
constexpr unsigned long RoomForBytes(unsigned long units) {
    return 4 * units + 1;
}

/// Longest texts that a conversion can be asked for.
constexpr unsigned long MaxUnits = (INT_MAX - 1) / 4;
constexpr unsigned long MaxBytes = INT_MAX - 1;

} // namespace

unsigned long VLwcslen(const unsigned short* s) {
    const unsigned short* end = OrEmpty(s);
    while (*end != 0) {
        ++end;
    }
    return static_cast<unsigned long>(end - OrEmpty(s));
}

unsigned short* VLwcscpy(unsigned short* dst, const unsigned short* src) {
    return VLwcsncpy(dst, src, ULONG_MAX);
}

unsigned short* VLwcsncpy(unsigned short* dst, const unsigned short* src, unsigned long n) {
    if (dst == nullptr) {
        return dst;
    }
    unsigned short* end = dst;
    for (src = OrEmpty(src); n > 0 && *src != 0; --n) {
        *end++ = *src++;
    }
    *end = 0;
    return dst;
}

int VLwcscmp(const unsigned short* a, const unsigned short* b) {
    return VLwcsncmp(a, b, ULONG_MAX);
}

int VLwcsncmp(const unsigned short* a, const unsigned short* b, unsigned long n) {
    a = OrEmpty(a);
    b = OrEmpty(b);
    // The units are looked at before the count is, so that an `n` of 0 deliberately compares the first two.
    for (; n > 1 && *a == *b && *a != 0; --n) {
        ++a;
        ++b;
    }
    return static_cast<int>(*a) - static_cast<int>(*b);
}

unsigned short* VLwcsrchr(const unsigned short* s, unsigned short c) {
    if (s == nullptr) {
        return nullptr;
    }
    const unsigned short* place = s + VLwcslen(s);
    while (*place != c) {
        if (place == s) {
            return nullptr;
        }
        --place;
    }
    return const_cast<unsigned short*>(place);
}

unsigned short* VLwcscat(unsigned short* dst, const unsigned short* src) {
    if (dst == nullptr) {
        return nullptr;
    }
    // Deliberately behind the terminator, and without one of its own: callers lay texts one behind the other with it.
    dst += VLwcslen(dst) + 1;
    return std::copy_n(OrEmpty(src), VLwcslen(src), dst);
}

unsigned short* VLwcsstr(const unsigned short* s, const unsigned short* what) {
    const unsigned long length = VLwcslen(s);
    if (length == 0) {
        return nullptr;
    }
    const std::ptrdiff_t place =
        FindFirst(s, static_cast<std::ptrdiff_t>(length), OrEmpty(what), static_cast<std::ptrdiff_t>(VLwcslen(what)));
    return place != NotFound ? const_cast<unsigned short*>(s + place) : nullptr;
}

unsigned short* VLwstrdup(const unsigned short* s) {
    return s != nullptr ? VLwstrappend(s, EmptyText) : nullptr;
}

unsigned short* VLwstrappend(const unsigned short* a, const unsigned short* b) {
    const unsigned long aLength = VLwcslen(a);
    const unsigned long bLength = VLwcslen(b);
    auto* const joined = NewArray<unsigned short>(aLength + bLength + 1);
    if (joined != nullptr) {
        std::copy_n(OrEmpty(b), bLength, std::copy_n(OrEmpty(a), aLength, joined));
    }
    return joined;
}

unsigned short* VLwstrappend(const unsigned short* a, const char* b) {
    const unsigned long aLength = VLwcslen(a);
    const unsigned long bLength = b != nullptr ? std::strlen(b) : 0;
    if (bLength > MaxBytes) {
        return nullptr;
    }
    auto* const joined = NewArray<unsigned short>(aLength + bLength + 1);
    if (joined == nullptr) {
        return nullptr;
    }
    unsigned short* const behind = std::copy_n(OrEmpty(a), aLength, joined);
    if (bLength > 0) {
        QORSysTSCodePage::ConvertStrToUcs(b, static_cast<int>(bLength), behind, nullptr);
    }
    return joined;
}

int VLwstrTostr(const unsigned short* s, char*& out) {
    out = nullptr;
    const unsigned long length = VLwcslen(s);
    if (s == nullptr || length > MaxUnits) {
        return 0;
    }
    // Two bytes a unit don't hold every text, so it is converted aside and measured.
    const std::unique_ptr<char[]> bytes(NewArray<char>(RoomForBytes(length)));
    if (bytes == nullptr) {
        return 0;
    }
    int written = 0;
    QORSysTSCodePage::ConvertUcsToStr(s, static_cast<int>(length), bytes.get(), &written);
    written = std::max(written, 0);
    const auto count = static_cast<unsigned long>(written);
    out = NewArray<char>(std::max(2 * length, count) + 1);
    if (out == nullptr) {
        return 0;
    }
    std::memcpy(out, bytes.get(), count);
    return written;
}

int VLstrTowstr(const char* s, unsigned short*& out) {
    out = nullptr;
    if (s == nullptr) {
        return 0;
    }
    const unsigned long length = std::strlen(s);
    out = length <= MaxBytes ? NewArray<unsigned short>(length + 1) : nullptr;
    if (out == nullptr) {
        return 0;
    }
    int written = 0;
    QORSysTSCodePage::ConvertStrToUcs(s, static_cast<int>(length), out, &written);
    return written;
}
