// What a trace line looks like, and how it is written.

#include "VELSysTraceManager.h"

#include "QORUnicodeString.h"
#include "VELSysTimer.h"
#include "VELSysTraceRotate.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <pthread.h>

namespace {

/// A bit of the code that is no part of it as it is shown.
constexpr int HiddenCodeBit = 0x400;

const char* MarkOf(int level) {
    switch (level) {
    case VELSysTraceInfo:
        return "[I]";
    case VELSysTraceDebug:
        return "[D]";
    case VELSysTraceWarning:
        return "[W]";
    case VELSysTraceError:
        return "[E]";
    default:
        return "";
    }
}

/// Appends to a buffer, as far as it has room, and keeps it terminated.
class Appender {
public:
    Appender(char* text, std::size_t size) : _begin(text), _next(text), _last(text + size - 1) { *_next = '\0'; }

    void Add(const char* text, std::size_t length) {
        const std::size_t part = std::min(length, static_cast<std::size_t>(_last - _next));
        std::memcpy(_next, text, part);
        _next += part;
        *_next = '\0';
    }
    void Add(const char* text) { Add(text, std::strlen(text)); }

    __attribute__((format(printf, 2, 3))) void Format(const char* format, ...) {
        const auto room = static_cast<std::size_t>(_last - _next);
        std::va_list arguments;
        va_start(arguments, format);
        const int length = std::vsnprintf(_next, room + 1, format, arguments);
        va_end(arguments);
        _next += std::min(static_cast<std::size_t>(std::max(length, 0)), room);
    }

    std::size_t Length() const { return static_cast<std::size_t>(_next - _begin); }

private:
    char* const _begin;
    char* _next;
    char* const _last;
};

/// A moment, broken down.
struct Moment {
    std::tm fields{};
    int milliseconds = -1; ///< Negative when they aren't known.
};

Moment Now(bool isLocalTime, std::time_t& time) {
    Moment moment;
    timeval now{};
    if (VELSysTimerGetTimeOfDay(&now) == 0) {
        time = now.tv_sec;
        constexpr long microseconds = 1000;
        moment.milliseconds = static_cast<int>(now.tv_usec / microseconds);
    } else {
        time = std::time(nullptr);
    }
    if (isLocalTime) {
        tzset();
        localtime_r(&time, &moment.fields);
    } else {
        gmtime_r(&time, &moment.fields);
    }
    return moment;
}

void AddTime(Appender& prefix, bool isLocalTime, std::time_t& time) {
    constexpr int epochYear = 1900;
    const Moment now = Now(isLocalTime, time);
    const std::tm& t = now.fields;
    prefix.Format("[%d-%02d-%02d%c%02d:%02d:%02d", t.tm_year + epochYear, t.tm_mon + 1, t.tm_mday,
                  isLocalTime ? '@' : 'T', t.tm_hour, t.tm_min, t.tm_sec);
    if (now.milliseconds >= 0) {
        prefix.Format(".%03d", now.milliseconds);
    }
    prefix.Add(isLocalTime ? "]" : "Z]");
}

} // namespace

std::size_t VELSysTraceObjBase::_FormPrefix(const VELSysTraceLineOptions& line) {
    Appender prefix(_prefix, sizeof _prefix);
    if (!_isEnabled) {
        return 0;
    }
    if ((line.options & VELSysTraceTimeStamp) != 0) {
        AddTime(prefix, _isLocalTime, _time);
    }
    if ((line.options & VELSysTraceName) != 0) {
        prefix.Add("[");
        prefix.Add(line.tag != nullptr ? line.tag : "");
        prefix.Add("]");
    }
    if ((line.options & VELSysTraceThread) != 0) {
        prefix.Format("[%016llX]", static_cast<unsigned long long>(pthread_self()));
    }
    if ((line.options & VELSysTraceCode) != 0 && (line.code & ~HiddenCodeBit) != 0) {
        prefix.Format("[%08x]", static_cast<unsigned int>(line.code));
    }
    if (line.file != nullptr) {
        prefix.Format("(%s : %d)", line.file, line.line);
    }
    prefix.Add(" ");
    return prefix.Length();
}

int VELSysTraceStreamObj::_WriteLine(const VELSysTraceLineOptions& line, const char* message) {
    const std::size_t prefix = _FormPrefix(line);
    const char* const terminator = line.terminator != nullptr ? line.terminator : "";
    if (_memory != nullptr) {
        return _WriteToRing(message, terminator);
    }
    const char* const mark = MarkOf(line.level);
    if (_file != nullptr) {
        return _WriteToFile(mark, prefix, message, terminator);
    }
    return _rotator != nullptr ? _WriteToRotator(mark, prefix, message, terminator) : -1;
}

int VELSysTraceStreamObj::_WriteToFile(const char* mark, std::size_t, const char* message, const char* terminator) {
    if (std::fprintf(_file, "%s%s%s%s", mark, _prefix, message, terminator) < 1) {
        return -1;
    }
    return std::fflush(_file);
}

int VELSysTraceStreamObj::_WriteToRotator(const char* mark, std::size_t, const char* message, const char* terminator) {
    QORUnicodeString line(mark);
    line.Append(_prefix).Append(message).Append(terminator);
    const int written = _rotator->Write(line.ConvertToChar());
    // In characters and bytes, deliberately: they are one number for ASCII alone.
    return written == line.GetLengthInChar() ? 0 : -1;
}

int VELSysTraceStreamObj::_WriteToRing(const char* message, const char* terminator) {
    // Without the level mark, deliberately.
    for (const char* text : {static_cast<const char*>(_prefix), message, terminator}) {
        if (_memory->Write(text) != 0) {
            return -1;
        }
    }
    return 0;
}
