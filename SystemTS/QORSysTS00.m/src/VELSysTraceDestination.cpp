// Where trace lines go: how a destination is opened and closed.

#include "VELSysTraceManager.h"

#include "StandardStream.h"
#include "TraceDirectory.h"
#include "TraceNames.h"
#include "TraceTime.h"
#include "VELSysTraceRotate.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

using VEL::internal::TraceCommonDestination;
using VEL::internal::TraceStandardError;
using VEL::internal::TraceStandardOutput;

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

/// False in a child, whose parent still uses the files.
bool IsOfThisProcess(const char* directory) {
    return VELSysTraceFilterNameByPid(std::strrchr(directory, '/') + 1, getpid()) == 0;
}

/// Removes a file that nobody has written to, and the directory of the process when that leaves nothing in it.
void RemoveWhatIsEmpty(const char* name, const char* directory) {
    struct stat64 status;
    // A device has no size either, and stays.
    if (stat64(name, &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0) {
        unlink(name);
    }
    rmdir(directory);
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
    if (_file != nullptr || _rotator != nullptr) {
        return -1;
    }
    if (std::strcmp(_destination, TraceStandardError) == 0) {
        return _OpenStandardStream(stderr, TraceStandardError);
    }
    if (std::strcmp(_destination, TraceStandardOutput) == 0 || std::strcmp(_destination, TraceCommonDestination) == 0) {
        return _OpenStandardStream(stdout, TraceStandardOutput);
    }
    return _OpenFile();
}

int VELSysTraceStreamObj::_OpenStandardStream(std::FILE* stream, const char* name) {
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
            return _OpenStandardStream(stdout, TraceStandardOutput);
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
    VEL::internal::StripSeparator(_path);
    const std::tm t = VEL::internal::TraceTimeFields(std::time(nullptr), _isLocalTime);
    char* made = nullptr;
    const int length = asprintf(&made, "%s/D%ld%02d%02d_T%02d%02d%02d_P%08d_I", _path, VEL::internal::TraceYear(t),
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
    if (VEL::internal::IsStandard(file) || (file == nullptr && rotator == nullptr)) {
        return 0;
    }
    delete rotator;
    if (file != nullptr) {
        std::fflush(file);
        if (std::fclose(file) != 0) {
            return -1;
        }
    }
    if (_fileName != nullptr && IsOfThisProcess(_directory)) {
        RemoveWhatIsEmpty(_fileName, _directory);
    }
    return 0;
}
