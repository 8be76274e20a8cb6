/// @file
/// A log file of limited size with numbered successors.
#pragma once

#include "QORSysTSExport.h"
#include "QORUnicodeString.h"

#include <cstddef>
#include <cstdio>

namespace VEL::internal {
enum class CountedMode;
}

/// A present file, and the full ones before it under numbered names.
///
/// Texts go to the present file until the next one would make it larger than the maximum; then it is moved to a
/// numbered name and begun anew. When all numbers are taken, the oldest numbered file goes. "/a/b.log" with a count
/// of 100 has "/a/b.01.log" to "/a/b.100.log". The number stands in front of the first dot of the whole path,
/// deliberately also where that is in the name of a directory.
///
/// @code
/// VELSysTraceRotate file("/var/tmp/run.log", 1 << 20, 9);
/// if (file.Open() == 0) {
///     file.Write("begin\n");
/// }
/// @endcode
///
/// One thread at a time uses an object.
class QORSYSTS_EXPORT VELSysTraceRotate {
public:
    /// Called when the present file was renamed, not when it was copied.
    /// @param newPath  UTF-8, valid during the call.
    using Callback = void (*)(const char* newPath, void* data);

    static constexpr unsigned long DefaultMaximumSize = 1024;
    static constexpr unsigned long DefaultCount = 1;

    /// Opens nothing yet. Looks for numbered files that are there already: the one that was changed first is the first
    /// to be overwritten.
    /// @param path         UTF-8, which is also what the system is given; null counts as empty, and can't be opened.
    /// @param maximumSize  Bytes of a file, 0 for 1024.
    /// @param count        The highest number, 0 for 1. Numbers above 2^31 - 1 are not used.
    VELSysTraceRotate(const char* path, unsigned long maximumSize, unsigned long count);
    /// @param callback  May be null.
    /// @param data      Given to it.
    VELSysTraceRotate(const char* path, Callback callback, void* data, unsigned long maximumSize, unsigned long count);
    VELSysTraceRotate(const VELSysTraceRotate&) = delete;
    VELSysTraceRotate& operator=(const VELSysTraceRotate&) = delete;
    /// Close().
    virtual ~VELSysTraceRotate();

    /// Opens the present file; what is in it counts towards its size.
    /// @return 0, or -1.
    int Open();

    /// Writes a text and flushes it. One that is longer than the maximum is written whole to a file of its own.
    /// @return Its bytes; -1 for null, while no file is open, and when it can't be written. A file that couldn't be
    ///         opened anew after a rotation leaves none open.
    int Write(const char* text);

    /// Closes the present file, and removes it when there is nothing in it. A child of the process that opened it
    /// removes nothing.
    void Close();

    /// Whether a text of `length` bytes still goes to the present file. Pipes and devices take all.
    bool IsMoreWriteAllowed(std::size_t length) const;

    /// Rotates if a text of `length` bytes wants it: Close(), RenameFile(), and the present file is opened empty.
    void PrepareToWrite(std::size_t length);

    /// Moves the present file to the next free number, or to the oldest when there is none. Where it can't be renamed
    /// it is copied. A failure leaves it where it is.
    void RenameFile();

private:
    struct Layout;

    QORSYSTS_PRIVATE void _Build(const char* path);
    QORSYSTS_PRIVATE int _OpenStream(VEL::internal::CountedMode mode);
    QORSYSTS_PRIVATE bool _MoveTo(const char* present, const char* target) const;
    QORSYSTS_PRIVATE void _AdvanceOldest(unsigned long last);

    std::FILE* _stream = nullptr;
    unsigned long _maximumSize;
    QORUnicodeString _path;
    QORUnicodeString _stem;      ///< The path before its first dot.
    QORUnicodeString _extension; ///< The path from its first dot on.
    unsigned long _next = 1;     ///< Where the next rotation tries first.
    unsigned long _oldest = 1;   ///< What is overwritten when all numbers are taken.
    unsigned long _count;
    char _format[64] = {}; ///< Of a numbered name, for `printf`.
    Callback _callback;
    void* _data;
};
