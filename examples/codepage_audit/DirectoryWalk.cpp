#include "DirectoryWalk.h"

#include <algorithm>
#include <cstdio>

namespace {

bool IsSame(const struct stat64& a, const struct stat64& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// False for what has no content of its own, or would make its reader wait: pipes, sockets, devices. What can't be
/// asked counts as a file, so that it is reported.
bool IsFile(const VELSysPath& path) {
    struct stat64 status {};
    return path.Stat(status, 0) != VEL::StatusOk || S_ISREG(status.st_mode);
}

} // namespace

std::vector<VELSysPath> DirectoryWalk::_List(const VELSysPath& directory, const QORUnicodeString& pattern) {
    std::vector<VELSysPath> entries;
    int rc = 0;
    VELSysDirectoryIterator entry = directory.Begin(pattern, VELSysFNMatchOptions(), &rc);
    while (rc == VEL::StatusOk) {
        entries.push_back(*entry);
        rc = entry.next();
    }
    if (rc < 0 && rc != VEL::StatusNoMoreFiles && rc != VEL::StatusNotFound) {
        std::fprintf(stderr, "%s: cannot be listed: status 0x%08x\n", directory.ToString(nullptr).ConvertToChar(),
                     static_cast<unsigned int>(rc));
        ++_failures;
    }
    std::sort(entries.begin(), entries.end(),
              [](const VELSysPath& a, const VELSysPath& b) { return a.ToString(nullptr) < b.ToString(nullptr); });
    return entries;
}

void DirectoryWalk::_Enter(const VELSysPath& directory, int depth, std::vector<VELSysPath>& files) {
    struct stat64 status {};
    if (directory.Stat(status, 1) == VEL::StatusOk) {
        for (const struct stat64& ancestor : _ancestors) {
            if (IsSame(ancestor, status)) {
                return;
            }
        }
    }
    for (const VELSysPath& entry : _List(directory, _pattern)) {
        if (!entry.IsDirectory(0) && IsFile(entry)) {
            files.push_back(entry);
        }
    }
    if (depth == 0) {
        return;
    }
    _ancestors.push_back(status);
    // The pattern is for files; every directory is entered.
    for (const VELSysPath& entry : _List(directory, QORUnicodeString())) {
        if (entry.IsDirectory(0)) {
            _Enter(entry, depth - 1, files);
        }
    }
    _ancestors.pop_back();
}
