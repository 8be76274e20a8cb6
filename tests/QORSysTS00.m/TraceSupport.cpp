#include "TraceSupport.h"

#include "TraceConfiguration.h"
#include "TraceManagerLock.h"

#include <cstdio>
#include <mutex>
#include <pthread.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using VEL::internal::TraceSink;

namespace TraceSupport {

namespace {

struct ManagerPeek : VELSysTraceManager {
    static VELSysTraceObjBase** Slots(VELSysTraceManagerBase& manager) { return manager.*(&ManagerPeek::_slots); }
};

/// Several threads may configure a manager; one is taken.
void Ask(const std::string& source) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    asked.push_back(source);
}

int Apply(const std::optional<Items>& items, const TraceSink& sink) {
    if (!items) {
        return -1;
    }
    for (const Item& item : *items) {
        sink.addTrace(item.kind, item.destination.c_str(), nullptr, sink.data);
        for (const std::string& name : item.names) {
            sink.addTrace(item.kind, item.destination.c_str(), name.c_str(), sink.data);
        }
        for (const auto& [option, value] : item.options) {
            sink.addOption(item.destination.c_str(), option, value, sink.data);
        }
    }
    return 0;
}

std::string Format(const char* format, auto... arguments) {
    char text[16384];
    const int length = std::snprintf(text, sizeof text, format, arguments...);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

int Configure(const Items& items) {
    sources = Sources{.text = items};
    return VELSysTraceCreateManager("", nullptr);
}

std::string PlainStamp(std::time_t seconds, std::optional<long> microseconds, bool isLocalTime) {
    const std::tm& t = isLocalTime ? *std::localtime(&seconds) : *std::gmtime(&seconds);
    const int year = t.tm_year + 1900;
    const int month = t.tm_mon + 1;
    if (!microseconds) {
        return Format(isLocalTime ? "[%d-%02d-%02d@%02d:%02d:%02d]" : "[%d-%02d-%02dT%02d:%02d:%02dZ]", year, month,
                      t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
    }
    return Format(isLocalTime ? "[%d-%02d-%02d@%02d:%02d:%02d.%03d]" : "[%d-%02d-%02dT%02d:%02d:%02d.%03dZ]", year,
                  month, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, static_cast<int>(*microseconds / 1000));
}

std::string PlainPrefix(const LineParts& parts) {
    std::string prefix;
    if ((parts.options & 1) != 0) {
        prefix += timer ? PlainStamp(timer->tv_sec, timer->tv_usec, parts.isLocalTime)
                        : PlainStamp(plainTime, {}, parts.isLocalTime);
    }
    if ((parts.options & 2) != 0) {
        prefix += "[" + parts.tag + "]";
    }
    if ((parts.options & 16) != 0) {
        prefix += Format("[%016llX]", static_cast<unsigned long long>(pthread_self()));
    }
    if ((parts.options & 4) != 0 && (parts.code & ~0x400) != 0) {
        prefix += Format("[%08x]", static_cast<unsigned int>(parts.code));
    }
    if (parts.source) {
        prefix += Format("(%s : %d)", parts.source->first.c_str(), parts.source->second);
    }
    return (prefix + " ").substr(0, 8191);
}

std::string PlainLine(const LineParts& parts, const std::string& message, const std::string& terminator) {
    static const char* const marks[] = {"", "[I]", "[D]", "[W]", "[E]"};
    return marks[parts.level] + PlainPrefix(parts) + message + terminator;
}

std::vector<std::string> DestinationPeek::Names(VELSysTraceObjBase& o) {
    std::vector<std::string> names;
    char** const stored = o.*(&DestinationPeek::_names);
    for (int i = NameSlots - 1; i >= 0 && stored[i] != nullptr; --i) {
        names.emplace_back(stored[i]);
    }
    return names;
}

std::string DestinationPeek::Prefix(VELSysTraceObjBase& o, const VELSysTraceLineOptions& line) {
    const std::size_t length = (o.*(&DestinationPeek::_FormPrefix))(line);
    return {o.*(&DestinationPeek::_prefix), length};
}

VELSysTraceObjBase* DestinationAt(int slot) {
    const VEL::internal::TraceManagerLock manager;
    return manager ? ManagerPeek::Slots(*manager.Get())[slot] : nullptr;
}

VELSysTraceObjBase& DestinationOf(const std::string& name) {
    for (int i = 0; i < VELSysTraceManagerBase::Slots; ++i) {
        if (VELSysTraceObjBase* const destination = DestinationAt(i);
            destination != nullptr && DestinationPeek::Name(*destination) == name) {
            return *destination;
        }
    }
    throw std::runtime_error("no destination " + name);
}

std::vector<std::string> Destinations() {
    std::vector<std::string> names;
    for (int i = VELSysTraceManagerBase::Slots - 1; i >= 0; --i) {
        if (VELSysTraceObjBase* const destination = DestinationAt(i)) {
            names.push_back(DestinationPeek::Name(*destination));
        }
    }
    return names;
}

std::filesystem::path ProcessDirectoryIn(const std::filesystem::path& base) {
    return base / "VELSysTrace" / Format("D20261115_T111827_P%08d_I", static_cast<int>(getpid()));
}

void TraceTest::SetUp() {
    VELSysTraceDestroyManager();
    setenv("QORTraceDir", scratch.Path().c_str(), 1);
    for (const char* name : {"QORTemp", "VELSysTrace", "TZ"}) {
        unsetenv(name);
    }
    timer = timeval{FixedTime, 123456};
    plainTime = FixedTime;
    usesSystemClocks = false;
    asked.clear();
    sources = Sources{};
    ScratchTest::SetUp();
}

void TraceTest::TearDown() {
    VELSysTraceDestroyManager();
    insideStat = nullptr;
    insideMakeDirectory = nullptr;
    ScratchTest::TearDown();
}

} // namespace TraceSupport

using namespace TraceSupport;

extern "C" {

int __real__Z23VELSysTimerGetTimeOfDayP7timeval(timeval* time);
int __wrap__Z23VELSysTimerGetTimeOfDayP7timeval(timeval* time) {
    if (usesSystemClocks) {
        return __real__Z23VELSysTimerGetTimeOfDayP7timeval(time);
    }
    if (!timer) {
        return -1;
    }
    *time = *timer;
    return 0;
}

std::time_t __real_time(std::time_t* seconds);
std::time_t __wrap_time(std::time_t* seconds) {
    if (usesSystemClocks) {
        return __real_time(seconds);
    }
    if (seconds != nullptr) {
        *seconds = plainTime;
    }
    return plainTime;
}

int __real_stat64(const char* path, struct stat64* status);
int __wrap_stat64(const char* path, struct stat64* status) {
    const auto answer = insideStat ? insideStat(path) : std::nullopt;
    return answer ? *answer : __real_stat64(path, status);
}

int __real_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode) {
    const auto answer = insideMakeDirectory ? insideMakeDirectory(path, mode) : std::nullopt;
    return answer ? *answer : __real_mkdir(path, mode);
}

int __real__ZN3VEL8internal14ApplyTraceLineEPKcRKNS0_9TraceSinkE(const char* text, const TraceSink& sink);
int __wrap__ZN3VEL8internal14ApplyTraceLineEPKcRKNS0_9TraceSinkE(const char* text, const TraceSink& sink) {
    if (!sources) {
        return __real__ZN3VEL8internal14ApplyTraceLineEPKcRKNS0_9TraceSinkE(text, sink);
    }
    Ask(std::string("text ") + (text != nullptr ? text : "(null)"));
    return Apply(sources->text, sink);
}

int __real__ZN3VEL8internal18ApplyTraceVariableERKNS0_9TraceSinkE(const TraceSink& sink);
int __wrap__ZN3VEL8internal18ApplyTraceVariableERKNS0_9TraceSinkE(const TraceSink& sink) {
    if (!sources) {
        return __real__ZN3VEL8internal18ApplyTraceVariableERKNS0_9TraceSinkE(sink);
    }
    Ask("variable");
    return Apply(sources->variable, sink);
}

int __real__ZN3VEL8internal21ApplyTraceOptionFilesERKNS0_9TraceSinkE(const TraceSink& sink);
int __wrap__ZN3VEL8internal21ApplyTraceOptionFilesERKNS0_9TraceSinkE(const TraceSink& sink) {
    if (!sources) {
        return __real__ZN3VEL8internal21ApplyTraceOptionFilesERKNS0_9TraceSinkE(sink);
    }
    Ask("files");
    return Apply(sources->files, sink);
}
}
