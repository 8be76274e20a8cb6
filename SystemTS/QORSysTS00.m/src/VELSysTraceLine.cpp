// What a trace line looks like, and how it is written. A line takes no memory and, below the size of the buffers, one
// call of the file.

#include "VELSysTraceManager.h"

#include "QORUnicodeString.h"
#include "TraceTime.h"
#include "VELSysTimer.h"
#include "VELSysTraceRotate.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <pthread.h>

namespace {

/// A bit of the code that is no part of it as it is shown.
constexpr int HiddenCodeBit = 0x400;

constexpr const char* UpperDigits = "0123456789ABCDEF";
constexpr const char* LowerDigits = "0123456789abcdef";

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

/// Appends to a buffer, as far as it has room.
class Appender {
public:
    Appender(char* text, std::size_t size) : _begin(text), _next(text), _last(text + size - 1) {}

    void Add(std::string_view text) {
        const std::size_t part = std::min(text.size(), static_cast<std::size_t>(_last - _next));
        std::memcpy(_next, text.data(), part);
        _next += part;
    }

    /// So many bytes; the usual case, that there is room, needs no call.
    template <std::size_t Count>
    void AddFixed(const char* text) {
        if (static_cast<std::size_t>(_last - _next) < Count) {
            Add({text, Count});
            return;
        }
        std::memcpy(_next, text, Count);
        _next += Count;
    }

    void AddCharacter(char character) { AddFixed<1>(&character); }

    void AddNumber(long number) {
        char text[LongestNumber];
        Add({text, static_cast<std::size_t>(std::to_chars(text, text + sizeof text, number).ptr - text)});
    }

    /// A number with zeros in front, so that it has `Count` characters.
    template <std::size_t Count>
    void AddDecimal(long number) {
        constexpr long base = 10;
        constexpr long end = Count == 2 ? base * base : base * base * base;
        static_assert(Count == 2 || Count == 3);
        if (number < 0 || number >= end) {
            // The timer is another library's, and may answer anything.
            char text[LongestNumber];
            const int length = std::snprintf(text, sizeof text, "%0*ld", static_cast<int>(Count), number);
            Add({text, static_cast<std::size_t>(length)});
            return;
        }
        char text[Count];
        for (std::size_t i = Count; i-- > 0; number /= base) {
            text[i] = LowerDigits[number % base];
        }
        AddFixed<Count>(text);
    }

    /// All digits of a number, in base 16 and in brackets.
    template <class Number>
    void AddHexadecimal(Number number, const char* digits) {
        constexpr unsigned int lowest = 0xF;
        constexpr unsigned int bits = 4;
        char text[2 * sizeof number + 2];
        text[0] = '[';
        text[sizeof text - 1] = ']';
        for (std::size_t i = sizeof text - 1; i-- > 1; number >>= bits) {
            text[i] = digits[number & lowest];
        }
        AddFixed<sizeof text>(text);
    }

    /// Terminates the text. @return Its length.
    std::size_t Finish() {
        *_next = '\0';
        return static_cast<std::size_t>(_next - _begin);
    }

private:
    static constexpr std::size_t LongestNumber = 24;

    char* const _begin;
    char* _next;
    char* const _last;
};

/// A second as text, without what follows the seconds.
struct SecondText {
    static constexpr std::size_t Size = 48;

    std::time_t second;
    std::size_t length;
    char text[Size];

    std::string_view View() const { return {text, length}; }
};

void FormSecond(SecondText& second, const std::tm& t, char separator) {
    Appender text(second.text, SecondText::Size);
    text.AddCharacter('[');
    text.AddNumber(VEL::internal::TraceYear(t));
    text.AddCharacter('-');
    text.AddDecimal<2>(t.tm_mon + 1);
    text.AddCharacter('-');
    text.AddDecimal<2>(t.tm_mday);
    text.AddCharacter(separator);
    text.AddDecimal<2>(t.tm_hour);
    text.AddCharacter(':');
    text.AddDecimal<2>(t.tm_min);
    text.AddCharacter(':');
    text.AddDecimal<2>(t.tm_sec);
    second.length = text.Finish();
}

/// The last second of a line in UTC; lines come many in a second. Under the manager's mutex.
constinit SecondText s_lastSecond = {};

std::string_view SecondInUTC(std::time_t time) {
    if (s_lastSecond.length == 0 || s_lastSecond.second != time) {
        FormSecond(s_lastSecond, VEL::internal::TraceTimeFields(time, false), 'T');
        s_lastSecond.second = time;
    }
    return s_lastSecond.View();
}

/// Anew for each line, since the time zone may change between two.
void AddSecondInLocalTime(Appender& prefix, std::time_t time) {
    SecondText second{};
    FormSecond(second, VEL::internal::TraceTimeFields(time, true), '@');
    prefix.Add(second.View());
}

void AddTime(Appender& prefix, bool isLocalTime, std::time_t& time) {
    timeval now{};
    const bool hasMicroseconds = VELSysTimerGetTimeOfDay(&now) == 0;
    time = hasMicroseconds ? now.tv_sec : std::time(nullptr);
    if (isLocalTime) {
        AddSecondInLocalTime(prefix, time);
    } else {
        prefix.Add(SecondInUTC(time));
    }
    if (hasMicroseconds) {
        constexpr long microseconds = 1000;
        prefix.AddCharacter('.');
        prefix.AddDecimal<3>(now.tv_usec / microseconds);
    }
    prefix.Add(isLocalTime ? "]" : "Z]");
}

std::string_view ViewOf(const char* text) {
    return text != nullptr ? text : "";
}

/// Writes pieces to a stream that is locked. @return False when not all of it was taken.
bool WritePieces(std::FILE* file, const std::string_view* begin, const std::string_view* end) {
    return std::all_of(begin, end, [file](std::string_view piece) {
        return fwrite_unlocked(piece.data(), 1, piece.size(), file) == piece.size();
    });
}

} // namespace

std::size_t VELSysTraceObjBase::_FormPrefix(const VELSysTraceLineOptions& line) {
    Appender prefix(_prefix, sizeof _prefix);
    if (!_isEnabled) {
        return prefix.Finish();
    }
    if ((line.options & VELSysTraceTimeStamp) != 0) {
        AddTime(prefix, _isLocalTime, _time);
    }
    if ((line.options & VELSysTraceName) != 0) {
        prefix.AddCharacter('[');
        prefix.Add(ViewOf(line.tag));
        prefix.AddCharacter(']');
    }
    if ((line.options & VELSysTraceThread) != 0) {
        prefix.AddHexadecimal(static_cast<unsigned long>(pthread_self()), UpperDigits);
    }
    if ((line.options & VELSysTraceCode) != 0 && (line.code & ~HiddenCodeBit) != 0) {
        prefix.AddHexadecimal(static_cast<unsigned int>(line.code), LowerDigits);
    }
    if (line.file != nullptr) {
        prefix.AddCharacter('(');
        prefix.Add(line.file);
        prefix.Add(" : ");
        prefix.AddNumber(line.line);
        prefix.AddCharacter(')');
    }
    prefix.AddCharacter(' ');
    return prefix.Finish();
}

int VELSysTraceObjBase::_WriteToRing(const VELSysTraceLineOptions& line, const char* message) {
    _FormPrefix(line);
    // Without the level mark, deliberately.
    for (const char* text : {static_cast<const char*>(_prefix), message, line.terminator}) {
        if (text != nullptr && _memory->Write(text) != 0) {
            return -1;
        }
    }
    return 0;
}

int VELSysTraceStreamObj::_WriteLine(const VELSysTraceLineOptions& line, const char* message) {
    const std::size_t prefix = _FormPrefix(line);
    const char* const mark = MarkOf(line.level);
    if (_file != nullptr) {
        return _WriteToFile(mark, {_prefix, prefix}, message, ViewOf(line.terminator));
    }
    return _rotator != nullptr ? _WriteToRotator(mark, message, line.terminator) : -1;
}

int VELSysTraceStreamObj::_WriteToFile(std::string_view mark, std::string_view prefix, std::string_view message,
                                       std::string_view terminator) {
    const std::string_view pieces[] = {mark, prefix, message, terminator};
    std::string_view joined;
    const std::size_t length = mark.size() + prefix.size() + message.size() + terminator.size();
    if (length < sizeof _work) {
        Appender line(_work, sizeof _work);
        for (const std::string_view piece : pieces) {
            line.Add(piece);
        }
        joined = {_work, length};
    }
    flockfile(_file);
    const bool isTaken = joined.empty() ? WritePieces(_file, std::begin(pieces), std::end(pieces))
                                        : WritePieces(_file, &joined, &joined + 1);
    const int result = isTaken ? fflush_unlocked(_file) : -1;
    funlockfile(_file);
    return result;
}

int VELSysTraceStreamObj::_WriteToRotator(const char* mark, const char* message, const char* terminator) {
    QORUnicodeString line(mark);
    std::size_t length = std::strlen(mark);
    for (const char* piece : {static_cast<const char*>(_prefix), message, ViewOf(terminator).data()}) {
        line.Append(piece);
        length += std::strlen(piece);
    }
    const int characters = line.GetLengthInChar();
    if (static_cast<std::size_t>(line.GetLengthInByte()) != length || characters == 0) {
        // Without memory: a line that lacks a piece is none.
        return -1;
    }
    const int written = _rotator->Write(line.ConvertToChar());
    // In characters and bytes, deliberately: they are one number for ASCII alone.
    return written == characters ? 0 : -1;
}
