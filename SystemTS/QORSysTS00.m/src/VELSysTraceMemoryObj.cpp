#include "VELSysTraceManager.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysTraceMemoryObj::Layout {
    static_assert(offsetof(VELSysTraceMemoryObj, _size) == 0 && offsetof(VELSysTraceMemoryObj, _left) == 8);
    static_assert(offsetof(VELSysTraceMemoryObj, _base) == 16 && offsetof(VELSysTraceMemoryObj, _position) == 24);
    static_assert(sizeof(VELSysTraceMemoryObj) == 32);
};
#pragma GCC diagnostic pop

VELSysTraceMemoryObj::~VELSysTraceMemoryObj() {
    if (_base != nullptr) {
        munmap(_base, _size);
    }
}

int VELSysTraceMemoryObj::Open(const char* path, unsigned long size) {
    if (path == nullptr || size == 0 || _base != nullptr) {
        return -1;
    }
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        return -1;
    }
    void* memory = MAP_FAILED;
    const auto length = static_cast<off_t>(size);
    // Room that is only promised would end the process at the first line that finds the disk full.
    if (ftruncate(file, length) == 0 && posix_fallocate(file, 0, length) == 0) {
        memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    }
    close(file);
    if (memory == MAP_FAILED) {
        return -1;
    }
    std::memset(memory, 0, size);
    _size = size;
    _left = size;
    _base = static_cast<char*>(memory);
    _position = _base;
    return 0;
}

int VELSysTraceMemoryObj::Write(const char* text) {
    if (_base == nullptr || text == nullptr) {
        return -1;
    }
    std::size_t length = std::strlen(text);
    while (length > 0) {
        const std::size_t part = std::min<std::size_t>(length, _left);
        std::memcpy(_position, text, part);
        text += part;
        length -= part;
        _position += part;
        _left -= part;
        if (_left == 0) {
            _position = _base;
            _left = _size;
        }
    }
    return 0;
}
