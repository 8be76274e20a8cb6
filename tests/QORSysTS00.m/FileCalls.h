/// @file
/// Calls of the system as the tests of files change them: errors on demand, and something that happens in between.
#pragma once

#include <functional>
#include <sys/stat.h>

namespace FileCalls {

/// While it lives, calls go its way. One at a time; everything is as usual at the start.
struct Changes {
    Changes();
    Changes(const Changes&) = delete;
    Changes& operator=(const Changes&) = delete;
    ~Changes();

    int readdirCallsBeforeError = -1; ///< Then readdir64 fails with `readdirError`; -1 never.
    int readdirError = 0;
    int closedirError = 0;            ///< The directory is closed all the same.
    int fnmatchResult = -1;           ///< Answered instead of matching, unless -1.
    int fnmatchCalls = 0;             ///< Calls so far.
    std::function<void()> beforeRead; ///< Called before each fread and sendfile.
    std::size_t mostMoved = 0;        ///< What sendfile moves at most in one call; 0 has no limit.
    bool canMove = true;              ///< False: sendfile fails.
    int fcloseError = 0;              ///< Given for a stream that is open for writing, which is closed all the same.
    int setxattrError = 0;
    int removexattrError = 0;
    std::function<void()> afterSizeOfList;  ///< Called when listxattr was asked for a size.
    std::function<void()> afterSizeOfValue; ///< Called when getxattr was asked for a size.
    const char* startedName = nullptr;      ///< The program's argv[0]; null for a process without arguments.
    const char* loginName = nullptr;        ///< The user's name; null for a user without one.
    int (*httpInfo)(const char*, struct stat64*) = nullptr;
    int (*getRealPath)(const unsigned short*, unsigned short**, int, int, int) = nullptr;
};

} // namespace FileCalls
