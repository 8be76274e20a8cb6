/// @file
/// The files of a directory tree.
#pragma once

#include "QORSysTS.h"

#include <vector>

/// Collects the files under directories, in the order of their names; pipes, sockets and devices are left out.
class DirectoryWalk {
public:
    /// @param pattern  Which file names count; empty for all.
    /// @param depth    Levels of directories to enter; -1 for all.
    DirectoryWalk(const QORUnicodeString& pattern, int depth) : _pattern(pattern), _depth(depth) {}

    /// Appends the files under `directory` to `files`. A directory that contains itself, by a link, is entered once.
    void Collect(const VELSysPath& directory, std::vector<VELSysPath>& files) { _Enter(directory, _depth, files); }

    /// Directories that could not be listed.
    int Failures() const { return _failures; }

private:
    void _Enter(const VELSysPath& directory, int depth, std::vector<VELSysPath>& files);
    std::vector<VELSysPath> _List(const VELSysPath& directory, const QORUnicodeString& pattern);

    QORUnicodeString _pattern;
    int _depth;
    int _failures = 0;
    std::vector<struct stat64> _ancestors; ///< The directories that are being listed.
};
