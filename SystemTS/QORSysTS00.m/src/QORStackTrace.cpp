#include "QORStackTrace.h"

#include "UpwardCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>

struct QORBasicStackTrace::Layout {
    static_assert(sizeof(Entry) == 72 && offsetof(Entry, address) == 0 && offsetof(Entry, name) == 8);
    static_assert(offsetof(QORBasicStackTrace, _depth) == 0 && offsetof(QORBasicStackTrace, _entries) == 8);
};
static_assert(sizeof(QORBasicStackTrace) == 8 + 40 * 72);
static_assert(sizeof(QORStackTrace) == sizeof(void*) + sizeof(QORBasicStackTrace));

namespace {

/// Most addresses that a capture looks at.
constexpr int WorkSize = 256;
/// Where the captures of a trace object end.
constexpr int TraceMaximum = 99;

constexpr const char* UnknownName = "unknown";

const char* NameOf(const Dl_info& info) {
    return info.dli_sname != nullptr ? info.dli_sname : UnknownName;
}

bool IsMain(const Dl_info& info) {
    return std::strcmp(NameOf(info), "main") == 0;
}

/// Reads memory that may not be there. The kernel copies, and says so when it cannot: no address faults, even if
/// another thread unmaps it meanwhile. It copies a window at a time, and the frames of a stack lie close together, so
/// that most reads cost no system call.
class CheckedMemory {
public:
    /// False when any of the bytes cannot be read.
    bool Read(std::uintptr_t address, void* to, std::size_t size) {
        auto* target = static_cast<char*>(to);
        while (size > 0) {
            const std::size_t offset = address % WindowSize;
            const std::size_t part = std::min(size, WindowSize - offset);
            if (!_Load(address - offset)) {
                return false;
            }
            std::memcpy(target, _bytes + offset, part);
            target += part;
            address += part;
            size -= part;
        }
        return true;
    }

private:
    /// A divisor of every page size, so that a window can be read as a whole or not at all.
    static constexpr std::size_t WindowSize = 1024;
    /// Not the address of a window.
    static constexpr std::uintptr_t NoWindow = 1;

    bool _Load(std::uintptr_t window) {
        if (window == _window) {
            return true;
        }
        const int callersError = errno;
        void* const source = reinterpret_cast<void*>(window);
        const iovec local = {_bytes, WindowSize};
        const iovec remote = {source, WindowSize};
        bool isCopied = process_vm_readv(_process, &local, 1, &remote, 1, 0) == WindowSize;
        if (!isCopied && errno != EFAULT) {
            isCopied = _CopyThroughPipe(source);
        }
        errno = callersError;
        _window = isCopied ? window : NoWindow;
        return isCopied;
    }

    /// For where `process_vm_readv` is refused or missing.
    bool _CopyThroughPipe(void* source) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            return false;
        }
        // Not write(): checking tools look at what it is given, and a window holds bytes that are nobody's.
        const bool isCopied = syscall(SYS_write, ends[1], source, WindowSize) == WindowSize &&
                              read(ends[0], _bytes, WindowSize) == WindowSize;
        close(ends[0]);
        close(ends[1]);
        return isCopied;
    }

    const pid_t _process = getpid();
    std::uintptr_t _window = NoWindow;
    char _bytes[WindowSize];
};

/// A walk along the frame pointers of a saved context. A chain may lead back into itself: who walks sets the limit.
class SavedStack {
public:
    explicit SavedStack(void* context) {
        gregset_t registers;
        const auto address = reinterpret_cast<std::uintptr_t>(context) + offsetof(ucontext_t, uc_mcontext.gregs);
        if (!_memory.Read(address, &registers, sizeof registers)) {
            return;
        }
        _next.frame = static_cast<std::uintptr_t>(registers[REG_RBP]);
        _next.address = reinterpret_cast<void*>(registers[REG_RIP]);
        _top = static_cast<std::uintptr_t>(registers[REG_RSP]);
    }

    /// Goes to the next address; the first call to the innermost one.
    bool Next() {
        if (_isAtEnd || !(_StepToCallerOnTop() || _StepToFrame())) {
            return false;
        }
        ++_count;
        _isAtEnd = IsMain(_info);
        return true;
    }

    void* Address() const { return _address; }
    /// What `dladdr` knows about the address.
    const Dl_info& Info() const { return _info; }

private:
    /// What a function's prologue leaves on the stack.
    struct Frame {
        std::uintptr_t frame;
        void* address;
    };

    /// False for an address of no loaded object, as null is.
    bool _StepTo(void* address) {
        _address = address;
        return dladdr(address, &_info) != 0;
    }

    /// A function that has no frame yet has the return address on top of the stack. Deliberately, what it finds there
    /// is believed whenever it lies in a loaded object.
    bool _StepToCallerOnTop() {
        void* caller = nullptr;
        return _count == 1 && _memory.Read(_top, &caller, sizeof caller) && _StepTo(caller);
    }

    /// An address counts only together with a frame, deliberately: the one that is found with a null frame is left out.
    bool _StepToFrame() {
        if (_isFrameRead && !_memory.Read(_next.frame, &_next, sizeof _next)) {
            return false;
        }
        _isFrameRead = true;
        return _next.frame != 0 && _StepTo(_next.address);
    }

    CheckedMemory _memory;
    Frame _next = {0, nullptr};
    std::uintptr_t _top = 0;
    void* _address = nullptr;
    Dl_info _info = {};
    int _count = 0;
    bool _isFrameRead = false;
    bool _isAtEnd = false;
};

int CopySavedStack(void* context, int begin, int end, void** addresses) {
    SavedStack stack(context);
    int stored = 0;
    for (int position = 0; position < end && stack.Next(); ++position) {
        if (position >= begin) {
            addresses[stored++] = stack.Address();
        }
    }
    return stored;
}

/// What the `context` of a trace object asks for.
struct Request {
    void* context;
    int skip;

    explicit Request(void* wanted) : context(wanted), skip(0) {
        if (reinterpret_cast<std::uintptr_t>(wanted) <= 1) {
            skip = wanted == nullptr ? 1 : 2;
            context = nullptr;
        }
    }
};

/// A range of entries as Print() understands it.
struct Range {
    int from;
    int to;

    Range(int wantedFrom, int wantedTo, int depth) : from(wantedFrom), to(wantedTo) {
        if (from < 0 || from > depth) {
            from = 0;
        }
        if (to > depth || to <= from) {
            to = depth;
        }
    }
};

void CopyName(char* target, const char* name, std::size_t size) {
    const std::size_t length = strnlen(name, size - 1);
    std::memcpy(target, name, length);
    target[length] = 0;
}

} // namespace

// A capture leaves its own frames out by their number: all that stands between a caller and `backtrace` is kept from
// being inlined.

[[gnu::noinline]] int QORSysGetIPStack(void* context, int skip, int maximum, void** addresses, int count) {
    if (addresses == nullptr || count < 1) {
        return 0;
    }
    const long begin = std::max(0L, context == nullptr ? skip + 1L : skip);
    const long end = std::min({begin + count, static_cast<long>(maximum), static_cast<long>(WorkSize)});
    if (begin >= end) {
        return 0;
    }
    if (context != nullptr) {
        return CopySavedStack(context, static_cast<int>(begin), static_cast<int>(end), addresses);
    }
    void* work[WorkSize];
    const int found = backtrace(work, static_cast<int>(end));
    if (found <= begin) {
        return 0;
    }
    std::copy(work + begin, work + found, addresses);
    return found - static_cast<int>(begin);
}

int QORSysDecodeIPStack(void** addresses, int count, std::FILE* file) {
    if (addresses == nullptr || file == nullptr || count < 1) {
        return 0;
    }
    for (int i = 0; i < count; ++i) {
        void* const address = addresses[i];
        Dl_info info;
        if (dladdr(address, &info) == 0) {
            std::fprintf(file, "unknown [pc:%p]\n", address);
            continue;
        }
        // Without a symbol the offset is the address itself.
        const auto offset =
            reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(info.dli_saddr);
        std::fprintf(file, "%s+%p [pc:%p func:%p load=%s(%p)]\n", NameOf(info), reinterpret_cast<void*>(offset),
                     address, info.dli_saddr, info.dli_fname, info.dli_fbase);
        if (IsMain(info)) {
            break;
        }
    }
    return 1;
}

int QORSysGetSymbol(void*, std::FILE*, char*, int, int) {
    return 0;
}

int QORSysGetSymbolFromMethodPointer(void*, std::FILE*, char*, int, int) {
    return 0;
}

int QORSysGetLoadsList(int* count, int* size, char*** list, std::FILE* file, int) {
    return count != nullptr || size != nullptr || list != nullptr || file != nullptr ? 4 : 1;
}

int QORSysDelLoadsList(char*** list, int count) {
    if (list == nullptr || *list == nullptr) {
        return 1;
    }
    if (count == 0) {
        return 2;
    }
    for (int i = 0; i < count; ++i) {
        char*& text = (*list)[i];
        if (text != nullptr && std::strcmp(text, "end of list") == 0) {
            return 1;
        }
        std::free(text);
        // The array may outlive this call, and must not hold what is gone.
        text = nullptr;
    }
    std::free(*list);
    *list = nullptr;
    return 0;
}

QORBasicStackTrace::QORBasicStackTrace() : _depth(0) {}

int QORBasicStackTrace::GetDepth() {
    return _depth;
}

void QORBasicStackTrace::Print(std::FILE* file, int from, int to) {
    if (file == nullptr) {
        return;
    }
    const Range range(from, to, _depth);
    for (int i = range.from; i < range.to; ++i) {
        // The width and its zeros mean something for an address to this platform's C library only.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
        std::fprintf(file, "pc:%016p in %s\n", _entries[i].address, _entries[i].name);
#pragma GCC diagnostic pop
    }
}

void QORBasicStackTrace::Print(void (*callback)(void*, const char*, const char*, const char*, int), void* data) {
    if (callback == nullptr) {
        return;
    }
    for (int i = 0; i < _depth; ++i) {
        callback(data, _entries[i].name, nullptr, nullptr, 0);
    }
}

char* QORBasicStackTrace::Read(int index, char* buffer, int size) {
    if (buffer == nullptr) {
        return nullptr;
    }
    const char* name = index >= 0 && index < _depth ? _entries[index].name : "";
    if (size > 0) {
        const std::intptr_t length = std::snprintf(buffer, static_cast<std::size_t>(size), "%s", name);
        // A length in the place of a pointer is deliberate: callers cast it back.
        return reinterpret_cast<char*>(length);
    }
    // With its terminator a name has 64 bytes at most.
    const auto room = static_cast<std::size_t>(-static_cast<long>(size));
    std::memcpy(buffer, name, std::min(room, std::strlen(name) + 1));
    return buffer;
}

QORStackTrace::QORStackTrace() = default;

[[gnu::noinline]] int QORStackTrace::GetTrace() {
    GetTrace(reinterpret_cast<void*>(1));
    return _depth;
}

[[gnu::noinline]] int QORStackTrace::GetTrace(void* context) {
    const auto append = [this](void* address, const char* name) {
        Entry& entry = _entries[_depth++];
        entry.address = address;
        CopyName(entry.name, name, NameSize);
    };
    const Request request(context);
    _depth = 0;
    if (request.context != nullptr) {
        // The walk looks up every address anyway, and ends with `main`.
        SavedStack stack(request.context);
        while (_depth < MaximumDepth && stack.Next()) {
            append(stack.Address(), NameOf(stack.Info()));
        }
        return _depth;
    }
    void* addresses[MaximumDepth];
    const int count = QORSysGetIPStack(nullptr, request.skip, TraceMaximum, addresses, MaximumDepth);
    for (int i = 0; i < count; ++i) {
        Dl_info info;
        if (dladdr(addresses[i], &info) == 0) {
            append(addresses[i], UnknownName);
            continue;
        }
        append(addresses[i], NameOf(info));
        if (IsMain(info)) {
            break;
        }
    }
    return _depth;
}

[[gnu::noinline]] int QORStackTrace::DirectTrace(std::FILE* file, void* context, int skip, int maximum) {
    void* addresses[MaximumDepth];
    const int count = QORSysGetIPStack(context, skip, maximum, addresses, MaximumDepth);
    QORSysDecodeIPStack(addresses, count, file);
    return count;
}

[[gnu::noinline]] int QORStackTrace::GetIPStack(void* context) {
    const Request request(context);
    void* addresses[MaximumDepth];
    _depth = QORSysGetIPStack(request.context, request.skip, TraceMaximum, addresses, MaximumDepth);
    for (int i = 0; i < _depth; ++i) {
        _entries[i].address = addresses[i];
        _entries[i].name[0] = 0;
    }
    return _depth;
}

void QORStackTrace::PrintIPStack(std::FILE* file, int from, int to) {
    const Range range(from, to, _depth);
    void* addresses[MaximumDepth];
    int count = 0;
    for (int i = range.from; i < range.to; ++i) {
        addresses[count++] = _entries[i].address;
    }
    QORSysDecodeIPStack(addresses, count, file);
}

[[gnu::noinline]] void VEL::internal::PrintStackTrace() {
    QORStackTrace trace;
    trace.GetTrace();
    trace.Print(stdout, 0, 0);
}
