/// @file
/// Memory between two pages that nobody may touch: a test that reads or writes one byte too far ends at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t size)
        : _page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), _size((size + _page - 1) / _page * _page) {
        void* memory = mmap(nullptr, _size + 2 * _page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            throw std::bad_alloc();
        }
        _begin = static_cast<char*>(memory) + _page;
        if (mprotect(_begin, _size, PROT_READ | PROT_WRITE) != 0) {
            munmap(memory, _size + 2 * _page);
            throw std::bad_alloc();
        }
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() { munmap(_begin - _page, _size + 2 * _page); }

    /// Room for `count` elements directly in front of the upper guard.
    template <class T>
    T* AtEnd(std::size_t count) const {
        return reinterpret_cast<T*>(_begin + _size - count * sizeof(T));
    }

    /// Room directly behind the lower guard.
    template <class T>
    T* AtBegin() const {
        return reinterpret_cast<T*>(_begin);
    }

    /// A copy directly in front of the upper guard.
    template <class T>
    const T* CopyAtEnd(const T* from, std::size_t count) const {
        return Copy(AtEnd<T>(count), from, count);
    }

    /// A copy directly behind the lower guard.
    template <class T>
    const T* CopyAtBegin(const T* from, std::size_t count) const {
        return Copy(AtBegin<T>(), from, count);
    }

private:
    template <class T>
    static const T* Copy(T* to, const T* from, std::size_t count) {
        if (count != 0) {
            std::memcpy(to, from, count * sizeof(T));
        }
        return to;
    }

    std::size_t _page;
    std::size_t _size;
    char* _begin;
};
