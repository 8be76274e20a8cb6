// Single calls of the system on files and users.

#include "VELSysFile.h"

#include "FreshName.h"
#include "NativeText.h"
#include "OptionalLibraries.h"
#include "SystemError.h"
#include "UTF8Text.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"
#include "VLString.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

namespace {

using VEL::internal::NativeText;
using VEL::internal::StatusOfCall;

bool IsWebAddress(const unsigned short* path) {
    return VLwcslen(path) >= 8 && (VLwcsncmp(path, HTTPURL, 7) == 0 || VLwcsncmp(path, HTTPSURL, 8) == 0);
}

/// Asks the library that answers for web addresses, which takes UTF-8.
int WebAddressStat(const unsigned short* address, struct stat64* out) {
    const auto ask = VEL::internal::HttpInfo();
    if (ask == nullptr) {
        return VEL::StatusNoLibrary;
    }
    const VEL::internal::UTF8Text text(address);
    if (text.Get() == nullptr) {
        return VELConvertError(ENOMEM, VELSysFacilitySystem);
    }
    return ask(text.Get(), out);
}

int SetFileTimes(const NativeText& path, long accessed, long modified) {
    const utimbuf times = {.actime = accessed, .modtime = modified};
    return StatusOfCall(utime(path.Get(), &times));
}

constexpr char TemporaryName[] = P_tmpdir "/fileXXXXXX";

} // namespace

int VELSysFileStat(const unsigned short* path, struct stat64* out) {
    if (path == nullptr || out == nullptr) {
        return VEL::StatusBadHandle;
    }
    const int rc = StatusOfCall(stat64(NativeText(path).Get(), out));
    if (rc < 0 && IsWebAddress(path)) {
        return WebAddressStat(path, out);
    }
    return rc;
}

int VELSysFSetTimes(const unsigned short* path, long accessed, long modified) {
    return SetFileTimes(NativeText(path), accessed, modified);
}

int VELSysFSetTimes(const QORUnicodeString& path, long accessed, long modified) {
    return SetFileTimes(NativeText(path), accessed, modified);
}

int VELSysDeleteFile(const QORUnicodeString& path) {
    return StatusOfCall(unlink(NativeText(path).Get()));
}

int VELSysDeleteFile(const unsigned short* path) {
    return StatusOfCall(unlink(NativeText(path).Get()));
}

int VELSysGetTempFileName(QORUnicodeString& out, const char*, QORUnicodeString*) {
    char name[sizeof TemporaryName];
    std::memcpy(name, TemporaryName, sizeof name);
    VEL::internal::FillInFreshName(name, sizeof name - 1);
    out = name;
    return VEL::StatusOk;
}

int QORStat64ToStat32(struct stat64& from, struct stat& to) {
    if (from.st_size > 0xFFFFFFFFL) {
        return VEL::StatusTooLarge;
    }
    to = {};
    to.st_dev = from.st_dev;
    to.st_ino = from.st_ino;
    to.st_mode = from.st_mode;
    to.st_nlink = from.st_nlink;
    to.st_uid = from.st_uid;
    to.st_gid = from.st_gid;
    to.st_rdev = from.st_rdev;
    to.st_size = from.st_size;
    to.st_blksize = from.st_blksize;
    to.st_blocks = from.st_blocks;
    to.st_atim = from.st_atim;
    to.st_mtim = from.st_mtim;
    to.st_ctim = from.st_ctim;
    return VEL::StatusOk;
}

int QORGetLoginName(char* buffer, unsigned size) {
    if (buffer == nullptr) {
        return -1;
    }
    passwd entry = {};
    passwd* found = nullptr;
    std::unique_ptr<char[]> texts;
    int error = ERANGE;
    for (std::size_t room = 1024; error == ERANGE; room *= 2) {
        texts.reset(new (std::nothrow) char[room]);
        error = texts != nullptr ? getpwuid_r(getuid(), &entry, texts.get(), room, &found) : ENOMEM;
    }
    const std::size_t length = found != nullptr ? std::strlen(entry.pw_name) : 0;
    if (found == nullptr || length >= size) {
        std::fill_n(buffer, std::min(size, 1U), '\0');
        return -1;
    }
    std::memcpy(buffer, entry.pw_name, length + 1);
    return 0;
}

int QORSysGetUserName(char* buffer, unsigned size) {
    return QORGetLoginName(buffer, size);
}
