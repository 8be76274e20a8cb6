#include "VELSysPathType.h"

#include "VELSysStatus.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

const unsigned short URL[4] = {':', '/', '/', 0};
const unsigned short HTTPURL[8] = {'h', 't', 't', 'p', ':', '/', '/', 0};
const unsigned short HTTPSURL[9] = {'h', 't', 't', 'p', 's', ':', '/', '/', 0};
const unsigned short DLURL[10] = {'Q', 'O', 'R', 'D', 'L', 'N', ':', '/', '/', 0};
const unsigned short RBQURL[12] = {'R', 'B', 'Q', 'V', 'A', 'U', 'L', 'T', ':', '/', '/', 0};
const unsigned short DLHead[4] = {0x0001, 0x0002, 0x005C, 0};
const unsigned short Slash[1] = {'/'};
const unsigned short AntiS[1] = {'\\'};
const unsigned short Env[1] = {'$'};

namespace {

/// True when `mark`, of which the last unit is its terminator, stands at the head of a text that is no shorter.
template <std::size_t Size>
bool HasHead(const unsigned short* text, const unsigned short (&mark)[Size]) {
    return std::equal(mark, mark + Size - 1, text);
}

bool HasScheme(const unsigned short* text, std::size_t length) {
    const unsigned short* const end = text + length;
    return std::search(text, end, URL, URL + 3) != end;
}

int KindOf(const unsigned short* text, std::size_t length) {
    if (length < 2) {
        return VELSysPathKindNone;
    }
    if (length >= 4 && HasHead(text, DLHead)) {
        return VELSysPathKindLogical;
    }
    if (text[0] == Slash[0]) {
        return VELSysPathKindAbsolute;
    }
    // A scheme with nothing behind it is no web address, deliberately.
    if (length >= 8 && HasHead(text, HTTPURL)) {
        return VELSysPathKindHttp;
    }
    if (length > 8 && HasHead(text, HTTPSURL)) {
        return VELSysPathKindHttps;
    }
    if (length > 9 && HasHead(text, DLURL)) {
        return VELSysPathKindLogicalURL;
    }
    return HasScheme(text, length) ? VELSysPathKindOtherURL : VELSysPathKindRelative;
}

/// The low part of the status codes of one `errno`: of facility 3, and of all others.
struct ErrorCodes {
    int error;
    unsigned int storage;
    unsigned int other;
};

constexpr unsigned int UnknownStorage = 0xfd;
constexpr unsigned int UnknownOther = 0x4005;

constexpr ErrorCodes Errors[] = {
    {ENOENT, 0x02, 0x02},         {EINTR, UnknownStorage, 0x3e3},
    {EIO, 0x1d, UnknownOther},    {EBADF, 0x06, 0x06},
    {EAGAIN, 0x21, UnknownOther}, {ENOMEM, 0x08, 0x08},
    {EACCES, 0x05, 0x05},         {EFAULT, 0xfc, UnknownOther},
    {EEXIST, 0x50, 0x50},         {EINVAL, 0x57, 0x57},
    {ENFILE, 0x70, 0x12},         {EMFILE, 0x04, 0x04},
    {ENOSPC, 0x70, 0x70},         {EROFS, 0x13, 0x13},
    {ENAMETOOLONG, 0xfc, 0x7b},   {EOVERFLOW, UnknownStorage, 0x216},
    {EDQUOT, 0x1d, UnknownOther},
};

} // namespace

int VELSysGetPathType(const unsigned short* path, int* kind, std::size_t length) {
    if (path == nullptr || kind == nullptr) {
        return VELConvertError(EBADF, VELSysFacilitySystem);
    }
    if (length == 0) {
        while (path[length] != 0) {
            ++length;
        }
    }
    *kind = KindOf(path, length);
    return *kind == VELSysPathKindNone ? VEL::StatusFailure : VEL::StatusOk;
}

int VELConvertError(int error, int facility) {
    const bool isStorage = facility == VELSysFacilityStorage;
    const auto* const known = std::find_if(std::begin(Errors), std::end(Errors),
                                           [=](const ErrorCodes& codes) { return codes.error == error; });
    unsigned int code = isStorage ? UnknownStorage : UnknownOther;
    if (known != std::end(Errors)) {
        code = isStorage ? known->storage : known->other;
    }
    return static_cast<int>(0x80000000u | static_cast<unsigned int>(facility) << 16 | code);
}
