// Opening, closing and copying local files.

#include "NativeText.h"
#include "VELSysFile.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <sys/sendfile.h>
#include <sys/stat.h>

namespace {

using VEL::internal::NativeText;

/// Read and written at once. The streams pass blocks of this size through to the system without a copy.
constexpr std::size_t CopyBlockSize = 128 * 1024;

int Open(const NativeText& path, const char* mode, FILE*& file) {
    file = nullptr;
    if (mode == nullptr) {
        return VELConvertError(EINVAL, VELSysFacilityStorage);
    }
    file = std::fopen(path.Get(), mode);
    return file != nullptr ? VEL::StatusOk : VELConvertError(errno, VELSysFacilityStorage);
}

struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<FILE, Close>;

/// Lets the system move bytes from one stream to the other, neither of which has a buffer yet.
/// @return The bytes that it moved; the rest goes through the streams, whose failures are the ones that are told.
std::size_t MoveBytes(FILE* target, FILE* source, std::size_t size) {
    std::size_t moved = 0;
    while (moved < size) {
        const ssize_t count = sendfile(fileno(target), fileno(source), nullptr, size - moved);
        if (count <= 0) {
            break;
        }
        moved += static_cast<std::size_t>(count);
    }
    return moved;
}

/// Copies `size` bytes. False when the source has fewer, when either side fails, and without memory.
bool CopyBytes(FILE* target, FILE* source, std::size_t size) {
    size -= MoveBytes(target, source, size);
    if (size == 0) {
        return true;
    }
    const std::unique_ptr<char[]> block(new (std::nothrow) char[std::min(size, CopyBlockSize)]);
    if (block == nullptr) {
        return false;
    }
    while (size > 0) {
        const std::size_t count = std::fread(block.get(), 1, std::min(size, CopyBlockSize), source);
        if (count == 0 || std::fwrite(block.get(), 1, count, target) != count) {
            return false;
        }
        size -= count;
    }
    return true;
}

template <class Text>
int CopyFile(const Text& targetPath, const Text& sourcePath, const unsigned short* sourceUnits) {
    struct stat64 status = {};
    const bool isKnown = VELSysFileStat(sourceUnits, &status) >= 0;
    FILE* file = nullptr;
    int rc = VELSysLocalFileOpen(sourcePath, "rb", file);
    if (rc < 0) {
        return rc;
    }
    OpenFile source(file);
    // Narrow text may name a file that its 16-bit form doesn't.
    if (!isKnown && fstat64(fileno(file), &status) != 0) {
        return VEL::StatusFailure;
    }
    // Deliberately a signed 32-bit number: a source of 2 GiB gives an empty file.
    const int size = static_cast<int>(status.st_size);
    rc = VELSysLocalFileOpen(targetPath, "wb", file);
    if (rc < 0) {
        return rc;
    }
    OpenFile target(file);
    if (size > 0 && !CopyBytes(target.get(), source.get(), static_cast<std::size_t>(size))) {
        return VEL::StatusFailure;
    }
    source.reset();
    return VELSysLocalFileClose(target.release());
}

} // namespace

int VELSysLocalFileOpen(const unsigned short* path, const char* mode, FILE*& file) {
    return Open(NativeText(path), mode, file);
}

int VELSysLocalFileOpen(const QORUnicodeString& path, const char* mode, FILE*& file) {
    return Open(NativeText(path), mode, file);
}

int VELSysLocalFileClose(FILE* file) {
    if (file == nullptr) {
        return VEL::StatusFailure;
    }
    return std::fclose(file) == 0 ? VEL::StatusOk : VELConvertError(errno, VELSysFacilityStorage);
}

int VELSysLocalFileCopy(const QORUnicodeString& target, const QORUnicodeString& source) {
    return CopyFile(target, source, source.ConvertToUCChar());
}

int VELSysLocalFileCopy(const unsigned short* target, const unsigned short* source) {
    return CopyFile(target, source, source);
}
