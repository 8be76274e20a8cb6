#include "TreeRemoval.h"

#include "SystemError.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace VEL::internal {
namespace {

/// Levels that are kept open at a time. Those above are opened again from below when their turn comes.
constexpr int OpenLimit = 16;

/// A directory on the way down. One block, with its name behind it.
struct Level {
    Level* above = nullptr;
    Level* below = nullptr;
    DIR* entries = nullptr; ///< Null while it is closed.
    dev_t device = 0;
    ino_t node = 0;

    char* Name() { return reinterpret_cast<char*>(this + 1); }

    static Level* Make(const char* name) {
        const std::size_t size = std::strlen(name) + 1;
        void* const memory = std::malloc(sizeof(Level) + size);
        if (memory == nullptr) {
            return nullptr;
        }
        auto* const level = new (memory) Level;
        std::memcpy(level->Name(), name, size);
        return level;
    }

    /// Takes over the descriptor. True when it is of the directory that this level was opened as before, if it was.
    bool Open(int descriptor) {
        struct stat64 status = {};
        const bool isKnown = node != 0;
        if (fstat64(descriptor, &status) == 0 && (!isKnown || (device == status.st_dev && node == status.st_ino))) {
            device = status.st_dev;
            node = status.st_ino;
            entries = fdopendir(descriptor);
        }
        if (entries == nullptr) {
            const int error = errno;
            close(descriptor);
            errno = error;
        }
        return entries != nullptr;
    }

    void Close() {
        if (entries != nullptr) {
            closedir(entries);
            entries = nullptr;
        }
    }
};

class Removal {
public:
    explicit Removal(bool isRecursive) : _isRecursive(isRecursive) {}
    Removal(const Removal&) = delete;
    Removal& operator=(const Removal&) = delete;
    ~Removal() {
        while (_level != nullptr) {
            _Drop();
        }
    }

    int Run(const char* root) {
        int code = _Enter("", open(root, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
        while (code == VEL::StatusOk && _level != nullptr) {
            errno = 0;
            if (const dirent64* const entry = readdir64(_level->entries)) {
                code = _Take(entry->d_name);
                continue;
            }
            // Deliberate: a directory that can't be read on counts as read; removing it will tell.
            if (_level->above == nullptr) {
                break;
            }
            code = _Leave();
        }
        return code;
    }

private:
    int _Take(const char* name) {
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
            return VEL::StatusOk;
        }
        const int directory = dirfd(_level->entries);
        struct stat64 status = {};
        if (fstatat64(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return VEL::StatusOk;
        }
        if (S_ISLNK(status.st_mode) ? _MayUnlink(directory, name) : IsFileMode(status.st_mode)) {
            return StatusOfCall(unlinkat(directory, name, 0));
        }
        // What is neither is passed over, and so are directories as long as they are to stay.
        if (!_isRecursive || !IsDirectoryMode(status.st_mode)) {
            return VEL::StatusOk;
        }
        return _Enter(name, openat(directory, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    }

    /// A link goes, whatever it points at; but with the directories that stay, links to directories stay.
    bool _MayUnlink(int directory, const char* link) const {
        struct stat64 target = {};
        return _isRecursive || fstatat64(directory, link, &target, 0) != 0 || IsFileMode(target.st_mode) ||
               !IsDirectoryMode(target.st_mode);
    }

    /// Goes down into a directory that `descriptor` has open.
    int _Enter(const char* name, int descriptor) {
        if (descriptor < 0) {
            return SystemError();
        }
        Level* const level = Level::Make(name);
        if (level == nullptr) {
            close(descriptor);
            return VEL::StatusFailure;
        }
        level->above = _level;
        if (_level != nullptr) {
            _level->below = level;
        }
        _level = level;
        if (!level->Open(descriptor)) {
            return SystemError();
        }
        if (_oldestOpen == nullptr) {
            _oldestOpen = level;
        }
        if (++_openCount > OpenLimit) {
            _oldestOpen->Close();
            _oldestOpen = _oldestOpen->below;
            --_openCount;
        }
        return VEL::StatusOk;
    }

    /// Goes up from an emptied directory and removes it.
    int _Leave() {
        Level* const above = _level->above;
        if (above->entries == nullptr) {
            // It is read from its start again, where only what hasn't been removed is left.
            const int descriptor = openat(dirfd(_level->entries), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            // The directory may have been moved elsewhere, and what is above it there is none of ours.
            if (descriptor < 0 || !above->Open(descriptor)) {
                return errno != 0 ? SystemError() : VEL::StatusFailure;
            }
            _oldestOpen = above;
            ++_openCount;
        }
        const int code = StatusOfRemovedDirectory(unlinkat(dirfd(above->entries), _level->Name(), AT_REMOVEDIR));
        _Drop();
        return code;
    }

    void _Drop() {
        Level* const level = _level;
        _level = level->above;
        _openCount -= level->entries != nullptr ? 1 : 0;
        level->Close();
        std::free(level);
        if (_level != nullptr) {
            _level->below = nullptr;
        }
    }

    bool _isRecursive;
    int _openCount = 0;
    Level* _level = nullptr;      ///< The deepest one.
    Level* _oldestOpen = nullptr; ///< The highest one that is open.
};

} // namespace

int StatusOfRemovedDirectory(int result) {
    // Deliberate: errno is looked at whatever the call answered.
    if (errno == EEXIST || errno == ENOTEMPTY) {
        return VEL::StatusNotEmpty;
    }
    return StatusOfCall(result);
}

int EmptyDirectory(const char* name, bool isRecursive) {
    return Removal(isRecursive).Run(name);
}

} // namespace VEL::internal
