#include "VELSysPathType.h"

#include "VELSysStatus.h"

#include <algorithm>
#include <cerrno>

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

unsigned int StorageCode(int error) {
    switch (error) {
    case ENOENT:
        return 0x02;
    case EIO:
        return 0x1d;
    case EBADF:
        return 0x06;
    case EAGAIN:
        return 0x21;
    case ENOMEM:
        return 0x08;
    case EACCES:
        return 0x05;
    case EFAULT:
        return 0xfc;
    case EEXIST:
        return 0x50;
    case EINVAL:
        return 0x57;
    case ENFILE:
        return 0x70;
    case EMFILE:
        return 0x04;
    case ENOSPC:
        return 0x70;
    case EROFS:
        return 0x13;
    case ENAMETOOLONG:
        return 0xfc;
    case EDQUOT:
        return 0x1d;
    default:
        return 0xfd;
    }
}

unsigned int SystemCode(int error) {
    switch (error) {
    case ENOENT:
        return 0x02;
    case EINTR:
        return 0x3e3;
    case EBADF:
        return 0x06;
    case ENOMEM:
        return 0x08;
    case EACCES:
        return 0x05;
    case EEXIST:
        return 0x50;
    case EINVAL:
        return 0x57;
    case ENFILE:
        return 0x12;
    case EMFILE:
        return 0x04;
    case ENOSPC:
        return 0x70;
    case EROFS:
        return 0x13;
    case ENAMETOOLONG:
        return 0x7b;
    case EOVERFLOW:
        return 0x216;
    default:
        return 0x4005;
    }
}

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
    const unsigned int code = facility == VELSysFacilityStorage ? StorageCode(error) : SystemCode(error);
    return static_cast<int>(0x80000000u | static_cast<unsigned int>(facility) << 16 | code);
}
