// The command line of the process, as the system knows it.

#include "HeapMemory.h"
#include "QORUnicodeString.h"
#include "VELSysTSArg.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <new>
#include <unistd.h>

using VEL::internal::HeapArray;

namespace {

constexpr std::size_t FirstReadSize = 1024;

/// The command line, once it was read.
struct SavedCommandLine {
    std::mutex guard;
    std::atomic<bool> isSaved{false};
    char* text = nullptr;
    char** argv = nullptr;
    int argc = 0;
};
constinit SavedCommandLine s_saved;

/// A file of the process's own.
class OpenFile {
public:
    explicit OpenFile(const char* name) : _descriptor(open(name, O_RDONLY | O_CLOEXEC)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { Close(); }

    bool IsOpen() const { return _descriptor >= 0; }
    void Close() {
        if (_descriptor >= 0) {
            close(_descriptor);
            _descriptor = -1;
        }
    }
    /// @return The bytes read, 0 at the end, or a negative number on failure.
    ssize_t Read(char* out, std::size_t room) {
        ssize_t count;
        do {
            count = read(_descriptor, out, room);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int _descriptor;
};

/// All of the file, with at least one byte of room behind it; null on failure.
HeapArray<char> ReadAll(OpenFile& file, std::size_t& size) {
    std::size_t readSize = FirstReadSize;
    std::size_t room = readSize;
    HeapArray<char> text(static_cast<char*>(std::malloc(room)));
    size = 0;
    while (text != nullptr) {
        const ssize_t count = file.Read(text.get() + size, room - size);
        if (count < 0) {
            return nullptr;
        }
        size += static_cast<std::size_t>(count);
        if (count == 0) {
            return text;
        }
        if (size == room) {
            readSize *= 2;
            room += readSize;
            char* const larger = static_cast<char*>(std::realloc(text.get(), room));
            if (larger == nullptr) {
                return nullptr;
            }
            text.release();
            text.reset(larger);
        }
    }
    return nullptr;
}

/// Gives back the room behind the text. A process that has changed its title may leave the last argument without a
/// terminator; it gets one here.
void Trim(HeapArray<char>& text, std::size_t& size) {
    if (size > 0 && text[size - 1] != '\0') {
        text[size++] = '\0';
    }
    if (size == 0) {
        return;
    }
    if (char* const smaller = static_cast<char*>(std::realloc(text.get(), size))) {
        text.release();
        text.reset(smaller);
    }
}

/// The start of each of the `count` texts, and a null; null without memory.
HeapArray<char*> Index(char* text, std::size_t size, std::size_t count) {
    HeapArray<char*> argv(static_cast<char**>(std::malloc((count + 1) * sizeof(char*))));
    if (argv == nullptr) {
        return nullptr;
    }
    char* next = text;
    for (std::size_t i = 0; i < count; ++i) {
        argv[i] = next;
        next = static_cast<char*>(std::memchr(next, '\0', size - static_cast<std::size_t>(next - text))) + 1;
    }
    argv[count] = nullptr;
    return argv;
}

/// Reads the command line, stores its options and saves it. False on failure. Under the guard.
bool Save() {
    char name[32];
    std::snprintf(name, sizeof name, "/proc/%d/cmdline", static_cast<int>(getpid()));
    OpenFile file(name);
    if (!file.IsOpen()) {
        return false;
    }
    std::size_t size = 0;
    HeapArray<char> text = ReadAll(file, size);
    if (text == nullptr) {
        return false;
    }
    Trim(text, size);
    const auto count = static_cast<std::size_t>(std::count(text.get(), text.get() + size, '\0'));
    HeapArray<char*> argv = Index(text.get(), size, count);
    if (argv == nullptr) {
        return false;
    }
    file.Close();
    s_saved.argc = static_cast<int>(count);
    VELSysTSSetArg(s_saved.argc, argv.get());
    s_saved.text = text.release();
    s_saved.argv = argv.release();
    return true;
}

/// True once the command line is there. Callers wait for the one that reads it.
bool IsSaved() {
    if (s_saved.isSaved.load(std::memory_order_acquire)) {
        return true;
    }
    const std::lock_guard lock(s_saved.guard);
    if (!s_saved.isSaved.load(std::memory_order_relaxed) && Save()) {
        // Release, with the acquiring load above: what was saved is seen by those who see this.
        s_saved.isSaved.store(true, std::memory_order_release);
    }
    return s_saved.isSaved.load(std::memory_order_relaxed);
}

} // namespace

void VELSysGetCmdLineArgs(int& argc, char**& argv) {
    const bool isSaved = IsSaved();
    argc = isSaved ? s_saved.argc : 0;
    argv = isSaved ? s_saved.argv : nullptr;
}

QORUnicodeString* VELSysGetCmdLineArgs(int& argc) {
    char** argv = nullptr;
    VELSysGetCmdLineArgs(argc, argv);
    if (argv == nullptr || argc < 1) {
        return nullptr;
    }
    auto* const strings = new (std::nothrow) QORUnicodeString[static_cast<std::size_t>(argc)];
    if (strings == nullptr) {
        return nullptr;
    }
    for (int i = 0; i < argc; ++i) {
        strings[i] = argv[i];
    }
    return strings;
}
