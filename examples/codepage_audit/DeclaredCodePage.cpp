#include "DeclaredCodePage.h"

#include <algorithm>

namespace {

/// Whether `count` units become the bytes from `begin` to `end` again.
bool ComesBack(const VELSysCodePage& codePage, const unsigned short* units, int count, const char* begin,
               const char* end) {
    char bytes[16];
    int size = 0;
    codePage.ConvertUTF16ToMBCS(units, count, bytes, &size);
    return size == end - begin && std::equal(begin, end, bytes);
}

} // namespace

bool DeclaredCodePage::IsKnown(const char* name) {
    IConvDesc_t handle = 0;
    return VELSysIConvTSWrap::Open("UTF-16LE", name, handle) == VEL::StatusOk &&
           VELSysIConvTSWrap::GetIConvDesc(handle) != reinterpret_cast<iconv_t>(-1);
}

std::optional<unsigned long> DeclaredCodePage::FirstOffence(const char* text, unsigned long size) const {
    const char* next = text;
    for (unsigned long left = size; left > 0;) {
        const char* const start = next;
        unsigned short units[2];
        const int count = _codePage.GetNextMultiByteCharAsUTF16(units, next, left);
        if (count < 1 || !ComesBack(_codePage, units, count, start, next)) {
            return static_cast<unsigned long>(start - text);
        }
    }
    return std::nullopt;
}
