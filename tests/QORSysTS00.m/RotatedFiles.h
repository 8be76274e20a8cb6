/// @file
/// A plain model of a rotated file, and calls of the system that fail on demand while it is tested.
#pragma once

#include "VELSysTraceRotate.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace RotatedFiles {

/// What the system answers; everything is as usual at the start.
struct Calls {
    int renameError = 0;
    int writeError = 0;
    int opendirError = 0;
    int accessError = 0;   ///< Of files that are asked whether they can be read.
    int interruptions = 0; ///< So many writes are interrupted before they begin.
    int wholeWrites = 0;   ///< So many are done before they fail as `writeError` says.
    std::size_t longestWrite = static_cast<std::size_t>(-1);
    int asked = 0;       ///< Calls of faccessat and stat64 so far.
    int listed = 0;      ///< Calls of opendir so far.
    int inheritable = 0; ///< Descriptors opened so far that another program would inherit.
};

Calls& SystemCalls();

/// What is in the files, by their names, of which the directory has no others.
using Contents = std::map<std::string, std::string>;

Contents ContentsOf(const std::filesystem::path& directory);

/// Gives a file a time of its last change, in seconds.
void StampFile(const std::filesystem::path& path, long time);

/// What an object keeps, at the places where it keeps it.
inline std::uint64_t FieldOf(const VELSysTraceRotate& object, std::size_t offset) {
    std::uint64_t value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&object) + offset, sizeof value);
    return value;
}
inline std::uint64_t NextOf(const VELSysTraceRotate& object) {
    return FieldOf(object, 48);
}
inline std::uint64_t OldestOf(const VELSysTraceRotate& object) {
    return FieldOf(object, 56);
}
inline const QORUnicodeString& TextOf(const VELSysTraceRotate& object, std::size_t offset) {
    return *reinterpret_cast<const QORUnicodeString*>(reinterpret_cast<const char*>(&object) + offset);
}
inline std::string FormatOf(const VELSysTraceRotate& object) {
    return reinterpret_cast<const char*>(&object) + 72;
}

/// The files "log.txt" and "log.<number>.txt" as they are to be.
class Model {
public:
    Model(std::uint64_t maximumSize, std::uint64_t count) : _maximumSize(maximumSize), _count(count) {}

    /// A new object on what is there.
    void Start();
    void Open() { _present = _present.value_or(""); }
    void Write(const std::string& text);
    void Close();
    /// Somebody else removes a numbered file.
    void Remove(std::uint64_t index) { _numbered.erase(index); }

    Contents Files() const;
    std::string NameOf(std::uint64_t index) const;
    /// Times of the numbered files, in the order in which they became so.
    std::map<std::uint64_t, long> Times() const;
    std::uint64_t Next() const { return _next; }
    std::uint64_t Oldest() const { return _oldest; }
    int Rotations() const { return _rotations; }

private:
    struct Numbered {
        std::string text;
        long time;
    };

    void _Rotate();
    void _MoveTo(std::uint64_t index);

    std::uint64_t _maximumSize;
    std::uint64_t _count;
    std::uint64_t _next = 1;
    std::uint64_t _oldest = 1;
    std::optional<std::string> _present;
    std::map<std::uint64_t, Numbered> _numbered;
    int _rotations = 0;
};

} // namespace RotatedFiles
