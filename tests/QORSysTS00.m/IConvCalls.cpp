#include "IConvCalls.h"

#include "VELSysTSDataQueue.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <new>
#include <type_traits>
#include <utility>

class QORMutex;

namespace {

std::mutex s_mutex;

using Line = std::array<char, 64>;

/// A plain array, since entries are also recorded while there is no memory.
template <class Entry>
class Calls {
public:
    void Add(const Entry& entry) {
        const std::lock_guard lock(s_mutex);
        _entries.at(_count++) = entry;
    }
    template <class Copy>
    std::vector<Copy> All() const {
        const std::lock_guard lock(s_mutex);
        std::vector<Copy> all;
        for (std::size_t i = 0; i < _count; ++i) {
            if constexpr (std::is_same_v<Entry, Line>) {
                all.emplace_back(_entries[i].data());
            } else {
                all.push_back(_entries[i]);
            }
        }
        return all;
    }

private:
    std::array<Entry, 4096> _entries;
    std::size_t _count = 0;
};

Calls<Line> s_opens;
Calls<iconv_t> s_opened;
Calls<iconv_t> s_closed;
Calls<Line> s_companion;
Calls<const void*> s_entries;
Line s_refused{};
std::function<void()> s_insideNextOpen;
std::function<void()> s_insideNextClose;

template <class... Arguments>
Line LineOf(const char* format, Arguments... arguments) {
    Line line{};
    std::snprintf(line.data(), line.size(), format, arguments...);
    return line;
}

class RecordedQueue : public VELSysTSDataQueue {
public:
    ~RecordedQueue() override { s_companion.Add({"~VELSysTSDataQueue"}); }
};

} // namespace

std::vector<std::string> IConvCalls::Opens() {
    return s_opens.All<std::string>();
}

std::vector<iconv_t> IConvCalls::Opened() {
    return s_opened.All<iconv_t>();
}

std::vector<iconv_t> IConvCalls::Closed() {
    return s_closed.All<iconv_t>();
}

std::vector<std::string> IConvCalls::Companion() {
    return s_companion.All<std::string>();
}

std::vector<const void*> IConvCalls::Entries() {
    return s_entries.All<const void*>();
}

void IConvCalls::Refuse(const std::string& from, const std::string& to) {
    s_refused = LineOf("%s > %s", from.c_str(), to.c_str());
}

void IConvCalls::InsideNextOpen(std::function<void()> action) {
    s_insideNextOpen = std::move(action);
}

void IConvCalls::InsideNextClose(std::function<void()> action) {
    s_insideNextClose = std::move(action);
}

extern "C" {

iconv_t __real_iconv_open(const char* to, const char* from);
iconv_t __wrap_iconv_open(const char* to, const char* from) {
    if (s_insideNextOpen) {
        std::exchange(s_insideNextOpen, nullptr)();
    }
    const Line direction = LineOf("%s > %s", from, to);
    s_opens.Add(direction);
    const iconv_t descriptor = direction == s_refused ? IConvCalls::None : __real_iconv_open(to, from);
    if (descriptor != IConvCalls::None) {
        s_opened.Add(descriptor);
    }
    return descriptor;
}

int __real_iconv_close(iconv_t descriptor);
int __wrap_iconv_close(iconv_t descriptor) {
    if (s_insideNextClose) {
        std::exchange(s_insideNextClose, nullptr)();
    }
    s_closed.Add(descriptor);
    return __real_iconv_close(descriptor);
}

VELSysTSDataQueue* __wrap__ZN17VELSysTSDataQueue16CreateEmptyQueueEii(int maximumCount, int reserved) {
    s_companion.Add(LineOf("CreateEmptyQueue %d %d", maximumCount, reserved));
    return new (std::nothrow) RecordedQueue;
}

int __real__ZN17VELSysTSDataQueue9PushFirstEPvi(VELSysTSDataQueue* self, void* entry, int milliseconds);
int __wrap__ZN17VELSysTSDataQueue9PushFirstEPvi(VELSysTSDataQueue* self, void* entry, int milliseconds) {
    s_companion.Add(LineOf("PushFirst %d", milliseconds));
    s_entries.Add(entry);
    return __real__ZN17VELSysTSDataQueue9PushFirstEPvi(self, entry, milliseconds);
}

int __real__ZN17VELSysTSDataQueue7PopLastEPPvi(VELSysTSDataQueue* self, void** entry, int milliseconds);
int __wrap__ZN17VELSysTSDataQueue7PopLastEPPvi(VELSysTSDataQueue* self, void** entry, int milliseconds) {
    s_companion.Add(LineOf("PopLast %d", milliseconds));
    return __real__ZN17VELSysTSDataQueue7PopLastEPPvi(self, entry, milliseconds);
}

void __real__ZN8QORMutexC1Eiii(QORMutex* self, int first, int recursive, int last);
void __wrap__ZN8QORMutexC1Eiii(QORMutex* self, int first, int recursive, int last) {
    s_companion.Add(LineOf("QORMutex %d %d %d", first, recursive, last));
    __real__ZN8QORMutexC1Eiii(self, first, recursive, last);
}

void __real__ZN8QORMutexD1Ev(QORMutex* self);
void __wrap__ZN8QORMutexD1Ev(QORMutex* self) {
    s_companion.Add({"~QORMutex"});
    __real__ZN8QORMutexD1Ev(self);
}
}
