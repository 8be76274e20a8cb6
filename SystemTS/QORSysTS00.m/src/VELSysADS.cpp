#include "VELSysADS.h"

#include "HeapMemory.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <sys/xattr.h>

static_assert(sizeof(VELSysADSItem) == 1280 && offsetof(VELSysADSItem, value) == 256);

namespace {

constexpr const char* UnsupportedMessage = "The namespace prefix of name is not valid. Or rxtended attributes are not "
                                           "supported by the filesystem, or are disabled\n";
constexpr const char* UnknownMessage = "Unknow error.\n";

const char* SetMessage(int error) {
    switch (error) {
    case EEXIST:
        return "XATTR_CREATE was specified, and the attribute exists already.\n";
    case ENOTDIR:
        return "A component of path is not a directory\n";
    case EINVAL:
        return "Name or options is invalid.  name must be valid UTF-8 and options must make sense\n";
    case ENOSPC:
        return "There is insufficient space remaining to store the extended attribute.\n";
    case EROFS:
        return "The file system is mounted read-only\n";
    case EOPNOTSUPP:
        return UnsupportedMessage;
    case EDQUOT:
        return "Disk quota limits meant that there is insufficient space remaining to store the extended attribute.\n";
    default:
        return UnknownMessage;
    }
}

int Refuse(const char* message) {
    std::fputs(message, stdout);
    std::fflush(stdout);
    return -1;
}

/// A block of the C library's heap that grows and is freed.
class Buffer {
public:
    /// Makes room for `size` bytes; what stood there may go. False without memory.
    bool Reserve(std::size_t size) {
        if (size <= _size) {
            return true;
        }
        void* const bytes = std::realloc(_bytes.get(), size);
        if (bytes == nullptr) {
            return false;
        }
        static_cast<void>(_bytes.release());
        _bytes.reset(static_cast<char*>(bytes));
        _size = size;
        return true;
    }
    char* Get() const { return _bytes.get(); }
    std::size_t Size() const { return _size; }

private:
    VEL::internal::HeapArray<char> _bytes;
    std::size_t _size = 0;
};

/// Reads what the system first tells the size of, and again where that has grown meanwhile, but not for ever. What is
/// read is terminated.
/// @param read  Called with a target and its size; a size of 0 asks for the size.
/// @return The bytes read, or a negative number.
template <class Read>
ssize_t ReadGrowing(Buffer& buffer, const Read& read) {
    constexpr int tries = 16;
    for (int i = 0; i < tries; ++i) {
        const ssize_t wanted = read(nullptr, 0);
        if (wanted <= 0) {
            return wanted;
        }
        if (!buffer.Reserve(static_cast<std::size_t>(wanted) + 1)) {
            return -1;
        }
        const ssize_t length = read(buffer.Get(), buffer.Size() - 1);
        if (length >= 0) {
            buffer.Get()[length] = 0;
            return length;
        }
        if (errno != ERANGE) {
            return -1;
        }
    }
    return -1;
}

/// Calls `take` with the name and the value of each attribute that has one.
template <class Take>
void ForEachText(const char* path, const Take& take) {
    Buffer names;
    Buffer value;
    const ssize_t length =
        ReadGrowing(names, [=](char* target, std::size_t size) { return listxattr(path, target, size); });
    if (length <= 0) {
        return;
    }
    const char* const end = names.Get() + length;
    for (const char* name = names.Get(); name < end; name += std::strlen(name) + 1) {
        const ssize_t size =
            ReadGrowing(value, [=](char* target, std::size_t room) { return getxattr(path, name, target, room); });
        if (size < 0) {
            return;
        }
        if (size > 0) {
            take(name, value.Get());
        }
    }
}

template <std::size_t Size>
void CopyCut(char (&target)[Size], const char* text) {
    if (text != nullptr) {
        std::memcpy(target, text, strnlen(text, Size - 1));
    }
}

} // namespace

VELSysADSList::VELSysADSList() : VELSysList(2, true) {}

VELSysADSList::~VELSysADSList() {
    VELSysADSList::RemoveAll();
}

void VELSysADSList::Add(const char* name, const char* value) {
    VELSysADSItem item = {};
    CopyCut(item.name, name);
    CopyCut(item.value, value);
    VELSysList::Add(&item);
}

VELSysADSItem* VELSysADSList::GetStringFirst() {
    return static_cast<VELSysADSItem*>(GetFirst());
}

VELSysADSItem* VELSysADSList::GetStringNext() {
    return static_cast<VELSysADSItem*>(GetNext());
}

int VELSysADSList::Count() const {
    return VELSysList::Count();
}

void VELSysADSList::RemoveAll() {
    removeall();
}

void* VELSysADSList::ChildCopyItem(void* item) {
    return item != nullptr ? new (std::nothrow) VELSysADSItem(*static_cast<VELSysADSItem*>(item)) : nullptr;
}

void VELSysADSList::ChildDeleteItem(void* item) {
    delete static_cast<VELSysADSItem*>(item);
}

int VELSysADSList::ChildCompareItem(void* first, void* second) {
    if (first == nullptr || second == nullptr) {
        return 0;
    }
    return std::strcmp(static_cast<VELSysADSItem*>(first)->name, static_cast<VELSysADSItem*>(second)->name);
}

void VELSysADSStringGet(char* value, std::size_t size, const char* name, const char* path) {
    if (value == nullptr) {
        return;
    }
    std::memset(value, 0, size);
    if (name == nullptr || path == nullptr) {
        return;
    }
    const ssize_t length = getxattr(path, name, value, size);
    if (length > 0 && size > 0 && static_cast<std::size_t>(length) >= size) {
        // Somebody else's value may come without a terminator.
        value[size - 1] = 0;
    }
}

int VELSysADSStringSet(const char* name, const char* value, const char* path, int flags) {
    if (name == nullptr || value == nullptr || path == nullptr) {
        return -1;
    }
    const int mode = flags != 0 ? XATTR_CREATE : 0;
    if (setxattr(path, name, value, std::strlen(value) + 1, mode) != 0) {
        return Refuse(SetMessage(errno));
    }
    return 0;
}

int VELSysADSStringDel(const char* name, const char* path) {
    if (removexattr(path, name) != 0) {
        return Refuse(errno == EOPNOTSUPP ? UnsupportedMessage : UnknownMessage);
    }
    return 0;
}

void VELSysADSStringList(VELSysADSList* list, const char* path) {
    if (list == nullptr || path == nullptr) {
        return;
    }
    list->RemoveAll();
    ForEachText(path, [list](const char* name, const char* value) { list->Add(name, value); });
}
