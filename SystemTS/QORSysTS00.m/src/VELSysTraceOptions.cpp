// Where the configuration of the traces is found.

#include "VELSysTraceOptions.h"

#include "FileReading.h"
#include "PathAccess.h"
#include "TraceConfiguration.h"
#include "TraceDirectory.h"
#include "TraceManagerLock.h"
#include "VELSysDirectoryIterator.h"
#include "VELSysStatus.h"
#include "VELSysStr.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

using VEL::internal::File;
using VEL::internal::PathAccess;
using VEL::internal::TraceManagerLock;
using VEL::internal::TraceSink;

/// A line, or the value of the variable, and its terminator.
constexpr std::size_t LineSize = 8192;
/// The elements of a path, and its terminator.
constexpr std::size_t WidePathSize = 8192;

constexpr const char* ItemSeparators = ",;:|";

/// Reads up to the end of a line, or as much of it as there is room for, and takes its last byte away. Deliberately it
/// goes whatever it is. @return False when there is nothing left.
bool ReadLine(std::FILE* file, char (&line)[LineSize]) {
    std::size_t length = 0;
    for (int c = 0; length < LineSize - 1 && c != '\n';) {
        c = std::getc(file);
        if (c == EOF) {
            break;
        }
        line[length++] = static_cast<char>(c);
    }
    if (length == 0) {
        return false;
    }
    line[length - 1] = '\0';
    return true;
}

/// @return How many lines were refused.
long ApplyLines(std::FILE* file, const TraceSink& sink) {
    long refused = 0;
    char line[LineSize];
    while (ReadLine(file, line)) {
        refused += VEL::internal::ApplyTraceLine(line, sink) != 0 ? 1 : 0;
    }
    return refused;
}

/// Whether `text` begins with `prefix`, which is in lower case, whatever the locale thinks of ASCII letters.
bool BeginsWith(std::string_view text, std::string_view prefix) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (i == text.size() || lower(text[i]) != prefix[i]) {
            return false;
        }
    }
    return true;
}

/// Of a name that ends in a number, deliberately, the last digit alone counts.
bool IsOptionFile(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return (BeginsWith(name, "opfile.") || BeginsWith(name, ".option")) && name.back() >= '1' && name.back() <= '9';
}

/// Tells of the entry if it is an option file. @return What `onFile` answers, or 0.
int VisitEntry(const VELSysDirectoryIterator& entry, int (*onFile)(const wchar_t* path, void* data), void* data) {
    VELSysPath path;
    if (entry.GetCurrentPath(path) != VEL::StatusOk) {
        return 0;
    }
    const VELSysPathImpl* const found = PathAccess::Of(path);
    const char* const text = found != nullptr ? PathAccess::Text(*found) : nullptr;
    wchar_t wide[WidePathSize];
    if (text == nullptr || !IsOptionFile(text) || VELSysStrCpy(wide, WidePathSize, text) != 0) {
        return 0;
    }
    return onFile(wide, data);
}

int ApplyFile(const wchar_t* path, void* sink) {
    char name[WidePathSize];
    const std::size_t length = std::wcstombs(name, path, sizeof name);
    // What the locale can't hold is -1, thus above all sizes.
    if (length >= sizeof name) {
        return -1;
    }
    const File file = VEL::internal::OpenForReading(name);
    return file != nullptr && ApplyLines(file.get(), *static_cast<const TraceSink*>(sink)) == 0 ? 0 : -1;
}

} // namespace

int VELSysTraceGetConfigDirectory(char* path, std::size_t size) {
    if (path == nullptr) {
        return -1;
    }
    for (const char* name : {"QORTraDecDir", "HOME"}) {
        if (VEL::internal::TakeVariable(name, path, size)) {
            return 0;
        }
    }
    if (size < sizeof VEL::internal::TraceLastResort) {
        return -1;
    }
    std::strcpy(path, VEL::internal::TraceLastResort);
    return 0;
}

int VELSysTraceGetOpFileInDirectory(const char* directory, int (*onFile)(const wchar_t* path, void* data), void* data) {
    if (directory == nullptr || onFile == nullptr) {
        return -1;
    }
    VELSysPath path;
    if (path.Set(QORUnicodeString(directory)) != VEL::StatusOk || !path.IsValid()) {
        return -1;
    }
    int rc = VEL::StatusOk;
    VELSysDirectoryIterator entry = path.Begin(&rc);
    if (rc < 0) {
        // It can't be listed, and the iterator equals no end.
        return 0;
    }
    long sum = 0;
    for (const VELSysDirectoryIterator end = path.End(); entry != end; ++entry) {
        sum += VisitEntry(entry, onFile, data);
    }
    return sum == 0 ? 0 : -1;
}

int VELSysTraceOpFileParser(std::FILE* file,
                            int (*addTrace)(int kind, const char* destination, const char* name, void* data),
                            int (*addOption)(const char* destination, int option, int value, void* data), void*,
                            bool*) {
    if (file == nullptr || addTrace == nullptr || addOption == nullptr) {
        return 0;
    }
    if (const TraceManagerLock manager; manager) {
        ApplyLines(file, {addTrace, addOption, manager.Get()});
    }
    return 0;
}

int VEL::internal::ApplyTraceVariable(const TraceSink& sink) {
    const char* const value = std::getenv("VELSysTrace");
    if (value == nullptr || *value == '\0') {
        return -1;
    }
    char items[LineSize];
    VELSysStrCpy(items, sizeof items, value);
    char* rest = items;
    while (const char* const item = VELSysStrSep(&rest, ItemSeparators)) {
        if (*item != '\0' && ApplyTraceCommand(item, sink) == 0) {
            continue;
        }
        if (const int refusal = ApplyTraceLine(item, sink); refusal != 0) {
            return refusal;
        }
    }
    return 0;
}

int VEL::internal::ApplyTraceOptionFiles(const TraceSink& sink) {
    char directory[LineSize];
    if (VELSysTraceGetConfigDirectory(directory, sizeof directory) != 0) {
        return -1;
    }
    StripSeparator(directory);
    return VELSysTraceGetOpFileInDirectory(directory, ApplyFile, const_cast<TraceSink*>(&sink));
}
