#include "CountedStream.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace VEL::internal {

namespace {

constexpr mode_t FileMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

/// The size of a file; -1 for what is none.
off64_t EndOf(int descriptor) {
    struct stat64 status = {};
    return fstat64(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

/// What stands behind a stream.
struct CountedFile {
    int descriptor;
    pid_t opener = getpid();
    off64_t position; ///< -1 for a file that has none.

    explicit CountedFile(int opened) : descriptor(opened), position(EndOf(opened)) {}
    CountedFile(const CountedFile&) = delete;
    CountedFile& operator=(const CountedFile&) = delete;
    ~CountedFile() { close(descriptor); }
};

ssize_t Write(void* cookie, const char* block, std::size_t size) {
    auto* const file = static_cast<CountedFile*>(cookie);
    const std::size_t written = WriteWhole(file->descriptor, block, size);
    if (file->position >= 0) {
        file->position += static_cast<off64_t>(written);
    }
    return static_cast<ssize_t>(written);
}

int Seek(void* cookie, off64_t* offset, int whence) {
    const auto* const file = static_cast<const CountedFile*>(cookie);
    // A child doesn't know whether its parent has written since.
    const bool isUnknown = file->position == 0 && file->opener != getpid();
    if (whence != SEEK_CUR || *offset != 0 || file->position < 0 || isUnknown) {
        errno = ESPIPE;
        return -1;
    }
    *offset = file->position;
    return 0;
}

int Close(void* cookie) {
    delete static_cast<CountedFile*>(cookie);
    return 0;
}

} // namespace

std::FILE* OpenCountedStream(const char* path, CountedMode mode) {
    const int flags = mode == CountedMode::Append ? O_APPEND : O_TRUNC;
    const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC | flags, FileMode);
    if (descriptor < 0) {
        return nullptr;
    }
    std::unique_ptr<CountedFile> file(new (std::nothrow) CountedFile(descriptor));
    if (file == nullptr) {
        close(descriptor);
        return nullptr;
    }
    // The descriptor knows whether it appends; a stream that did so as well would ask for the end.
    std::FILE* const stream = fopencookie(file.get(), "w", {nullptr, Write, Seek, Close});
    if (stream != nullptr) {
        static_cast<void>(file.release());
    }
    return stream;
}

std::size_t WriteWhole(int descriptor, const char* block, std::size_t size) {
    std::size_t written = 0;
    while (written < size) {
        const ssize_t count = write(descriptor, block + written, size - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    return written;
}

} // namespace VEL::internal
