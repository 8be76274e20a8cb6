// Where trace lines go: how a destination is opened and closed.

#include "VELSysTraceManager.h"

#include "HeapMemory.h"
#include "VELSysTraceRotate.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysTraceObjBase::Layout {
    using Base = VELSysTraceObjBase;
    static_assert(offsetof(Base, _kind) == 8 && offsetof(Base, _mode) == 12 && offsetof(Base, _memory) == 16);
    static_assert(offsetof(Base, _names) == 24 && offsetof(Base, _nameCapacity) == 544);
    static_assert(offsetof(Base, _nextName) == 548 && offsetof(Base, _destination) == 552);
    static_assert(offsetof(Base, _maximumCode) == 616 && offsetof(Base, _minimumCode) == 620);
    static_assert(offsetof(Base, _memorySize) == 624 && offsetof(Base, _isActive) == 628);
    static_assert(offsetof(Base, _isEnabled) == 629 && offsetof(Base, _isOpen) == 630);
    static_assert(offsetof(Base, _users) == 632 && offsetof(Base, _time) == 640);
    static_assert(offsetof(Base, _prefix) == 648 && offsetof(Base, _work) == 648 + BufferSize);
    static_assert(offsetof(Base, _isLocalTime) == 648 + 2 * BufferSize);
    static_assert(offsetof(Base, _rotateSize) == 656 + 2 * BufferSize);
    static_assert(offsetof(Base, _rotateCount) == 664 + 2 * BufferSize && sizeof(Base) == 672 + 2 * BufferSize);
};

struct VELSysTraceStreamObj::Layout {
    using Stream = VELSysTraceStreamObj;
    static constexpr std::size_t Base = sizeof(VELSysTraceObjBase);
    static_assert(offsetof(Stream, _file) == Base && offsetof(Stream, _fileName) == Base + 8);
    static_assert(offsetof(Stream, _rotator) == Base + 16 && offsetof(Stream, _directory) == Base + 24);
    static_assert(offsetof(Stream, _path) == Base + 32 && sizeof(Stream) == Base + 32 + PathSize);
};
#pragma GCC diagnostic pop

namespace {

constexpr const char* StandardOutput = "STDOUT";
constexpr const char* StandardError = "STDERR";
constexpr const char* CommonOutput = "STDOUT_COMMON";

bool IsStandard(const std::FILE* stream) {
    return stream == stdout || stream == stderr;
}

/// True when a name would leave the directory in which it is looked up.
bool LeadsUp(std::string_view name) {
    constexpr std::string_view parent = "..";
    while (true) {
        const std::size_t end = name.find('/');
        if (name.substr(0, end) == parent) {
            return true;
        }
        if (end == std::string_view::npos) {
            return false;
        }
        name.remove_prefix(end + 1);
    }
}

/// Removes a file that nobody has written to, and its directory when that leaves nothing in it.
void RemoveWhatIsEmpty(const char* name) {
    struct stat64 status;
    // A device has no size either, and stays.
    if (stat64(name, &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0) {
        unlink(name);
    }
    const std::string_view directory(name, static_cast<std::size_t>(std::strrchr(name, '/') - name));
    const VEL::internal::HeapArray<char> copy(strndup(directory.data(), directory.size()));
    if (copy != nullptr) {
        rmdir(copy.get());
    }
}

} // namespace

VELSysTraceObjBase::VELSysTraceObjBase() = default;

VELSysTraceObjBase::~VELSysTraceObjBase() {
    delete _memory;
    for (char* name : _names) {
        std::free(name);
    }
}

const char* VELSysTraceObjBase::_FindName(const char* name) const {
    for (int i = _nameCapacity - 1; i > _nextName; --i) {
        if (std::strcmp(_names[i], name) == 0) {
            return _names[i];
        }
    }
    return nullptr;
}

int VELSysTraceObjBase::_AddName(const char* name) {
    if (name == nullptr || _FindName(name) != nullptr) {
        return 0;
    }
    // The first slot is never used, deliberately.
    if (_nextName < 1) {
        return -1;
    }
    char* const copy = strdup(name);
    if (copy == nullptr) {
        return -1;
    }
    _names[_nextName--] = copy;
    return 0;
}

int VELSysTraceObjBase::_AddMemory(int size) {
    constexpr int largest = 8192;
    if (_memory != nullptr) {
        return 0;
    }
    if (size <= 0) {
        return -1;
    }
    _memory = new (std::nothrow) VELSysTraceMemoryObj;
    if (_memory == nullptr) {
        return -1;
    }
    _kind = VELSysTraceKindMemory;
    _memorySize = static_cast<unsigned int>(std::min(size, largest));
    return 0;
}

VELSysTraceSystemObj::~VELSysTraceSystemObj() = default;

int VELSysTraceSystemObj::Open() {
    return -1;
}

VELSysTraceStreamObj::~VELSysTraceStreamObj() {
    _Close();
    std::free(_fileName);
    std::free(_directory);
}

int VELSysTraceStreamObj::Open() {
    if (std::strcmp(_destination, StandardError) == 0) {
        return _OpenStandardStream(stderr, StandardError);
    }
    if (std::strcmp(_destination, StandardOutput) == 0 || std::strcmp(_destination, CommonOutput) == 0) {
        return _OpenStandardStream(stdout, StandardOutput);
    }
    return _OpenFile();
}

int VELSysTraceStreamObj::_OpenStandardStream(std::FILE* stream, const char* name) {
    if (_file != nullptr) {
        return -1;
    }
    _file = stream;
    if (_memory != nullptr) {
        // Counts as not opened.
        return 1;
    }
    std::free(std::exchange(_fileName, strdup(name)));
    return 0;
}

int VELSysTraceStreamObj::_OpenFile() {
    if (LeadsUp(_destination)) {
        return -1;
    }
    if (_directory == nullptr && _MakeDirectory() != 0) {
        return -1;
    }
    const int length = std::snprintf(_work, sizeof _work, "%s/%s", _directory, _destination);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof _work) {
        // Deliberately no failure, though nothing is opened.
        return 0;
    }
    if (_memory != nullptr) {
        return _memory->Open(_work, _memorySize);
    }
    if (_rotateSize != 0 && _rotateCount != 0) {
        if (_OpenRotated() != 0) {
            return -1;
        }
    } else {
        _file = std::fopen(_work, "a+e");
        if (_file == nullptr) {
            return _OpenStandardStream(stdout, StandardOutput);
        }
    }
    std::free(std::exchange(_fileName, strdup(_work)));
    return 0;
}

/// The directory of this process's files below the base directory.
int VELSysTraceStreamObj::_MakeDirectory() {
    if (VELSysTraceGetDestinationDirectoryA(_path, sizeof _path) != 0) {
        return -1;
    }
    const std::size_t end = std::strlen(_path);
    if (end > 0 && (_path[end - 1] == '/' || _path[end - 1] == '\\')) {
        _path[end - 1] = '\0';
    }
    const std::time_t now = std::time(nullptr);
    std::tm t{};
    if (_isLocalTime) {
        tzset();
        localtime_r(&now, &t);
    } else {
        gmtime_r(&now, &t);
    }
    constexpr int epochYear = 1900;
    char* made = nullptr;
    const int length = asprintf(&made, "%s/D%d%02d%02d_T%02d%02d%02d_P%08d_I", _path, t.tm_year + epochYear,
                                t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, static_cast<int>(getpid()));
    if (length < 0) {
        return -1;
    }
    if (mkdir(made, S_IRWXU) != 0 && errno != EEXIST) {
        std::free(made);
        return -1;
    }
    _directory = made;
    return 0;
}

int VELSysTraceStreamObj::_OpenRotated() {
    if (_rotator != nullptr) {
        return -1;
    }
    auto made =
        std::unique_ptr<VELSysTraceRotate>(new (std::nothrow) VELSysTraceRotate(_work, _rotateSize, _rotateCount));
    if (made == nullptr || made->Open() != 0) {
        return -1;
    }
    _rotator = made.release();
    return 0;
}

int VELSysTraceStreamObj::_Close() {
    std::FILE* const file = std::exchange(_file, nullptr);
    VELSysTraceRotate* const rotator = std::exchange(_rotator, nullptr);
    if (IsStandard(file) || (file == nullptr && rotator == nullptr)) {
        return 0;
    }
    if (file != nullptr) {
        std::fflush(file);
        if (std::fclose(file) != 0) {
            return -1;
        }
    } else {
        rotator->Close();
        delete rotator;
    }
    if (_fileName != nullptr) {
        RemoveWhatIsEmpty(_fileName);
    }
    return 0;
}
