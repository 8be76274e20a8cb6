#include "RotatedFiles.h"

#include "ScratchDirectory.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace RotatedFiles {

Calls& SystemCalls() {
    static Calls s_calls;
    return s_calls;
}

Contents ContentsOf(const std::filesystem::path& directory) {
    Contents contents;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        contents[entry.path().filename()] = ReadFile(entry.path());
    }
    return contents;
}

void StampFile(const std::filesystem::path& path, long time) {
    const timespec times[2] = {{time, 0}, {time, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

void Model::Start() {
    _next = _oldest = 1;
    long oldest = 0;
    for (const auto& [index, numbered] : _numbered) {
        if (oldest == 0 || numbered.time < oldest) {
            oldest = numbered.time;
            _next = _oldest = index;
        }
    }
}

void Model::Write(const std::string& text) {
    if (_present->size() + text.size() > _maximumSize) {
        Close();
        _Rotate();
        _present = "";
    }
    *_present += text;
}

void Model::Close() {
    if (_present && _present->empty()) {
        _present.reset();
    }
}

void Model::_Rotate() {
    ++_rotations;
    std::uint64_t free = _next;
    while (free <= _count && _numbered.count(free) != 0) {
        ++free;
    }
    if (free <= _count) {
        if (_present) {
            _MoveTo(free);
            _next = free + 1;
        }
        return;
    }
    const std::uint64_t target = _oldest;
    if (_oldest < _count) {
        ++_oldest;
        _next = _oldest == _count ? 1 : _oldest;
    } else {
        _next = 2;
        _oldest = 1;
    }
    _numbered.erase(target);
    if (_present) {
        _MoveTo(target);
    }
}

void Model::_MoveTo(std::uint64_t index) {
    constexpr long someTime = 1000000;
    _numbered[index] = {*_present, someTime + _rotations};
    _present.reset();
}

Contents Model::Files() const {
    Contents files;
    if (_present) {
        files["log.txt"] = *_present;
    }
    for (const auto& [index, numbered] : _numbered) {
        files[NameOf(index)] = numbered.text;
    }
    return files;
}

std::string Model::NameOf(std::uint64_t index) const {
    // A power of ten needs as many digits as the number before it.
    const std::size_t width = _count == 1 ? 0 : std::to_string(_count - 1).size();
    std::string digits = std::to_string(index);
    digits.insert(0, width > digits.size() ? width - digits.size() : 0, '0');
    return "log." + digits + ".txt";
}

std::map<std::uint64_t, long> Model::Times() const {
    std::map<std::uint64_t, long> times;
    for (const auto& [index, numbered] : _numbered) {
        times[index] = numbered.time;
    }
    return times;
}

} // namespace RotatedFiles

using RotatedFiles::SystemCalls;

extern "C" int __real_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to) {
    if (SystemCalls().renameError != 0) {
        errno = SystemCalls().renameError;
        return -1;
    }
    return __real_rename(from, to);
}

extern "C" ssize_t __real_write(int number, const void* bytes, std::size_t size);
extern "C" ssize_t __wrap_write(int number, const void* bytes, std::size_t size) {
    RotatedFiles::Calls& calls = SystemCalls();
    if (calls.interruptions > 0) {
        --calls.interruptions;
        errno = EINTR;
        return -1;
    }
    if (calls.writeError != 0 && calls.wholeWrites-- <= 0) {
        errno = calls.writeError;
        return -1;
    }
    return __real_write(number, bytes, std::min(size, calls.longestWrite));
}

extern "C" int __real_open(const char* path, int flags, mode_t mode);
extern "C" int __wrap_open(const char* path, int flags, mode_t mode) {
    SystemCalls().inheritable += (flags & O_CLOEXEC) == 0 ? 1 : 0;
    return __real_open(path, flags, mode);
}

extern "C" DIR* __real_opendir(const char* name);
extern "C" DIR* __wrap_opendir(const char* name) {
    ++SystemCalls().listed;
    if (SystemCalls().opendirError != 0) {
        errno = SystemCalls().opendirError;
        return nullptr;
    }
    return __real_opendir(name);
}

extern "C" int __real_faccessat(int directory, const char* name, int mode, int flags);
extern "C" int __wrap_faccessat(int directory, const char* name, int mode, int flags) {
    ++SystemCalls().asked;
    if (SystemCalls().accessError != 0 && (mode & R_OK) != 0) {
        errno = SystemCalls().accessError;
        return -1;
    }
    return __real_faccessat(directory, name, mode, flags);
}

extern "C" int __real_stat64(const char* name, struct stat64* status);
extern "C" int __wrap_stat64(const char* name, struct stat64* status) {
    ++SystemCalls().asked;
    return __real_stat64(name, status);
}
