/// @file
/// Calls of the system as the tests of files change them: errors on demand, and something that happens in between.
#pragma once

#include "ScratchDirectory.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
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
    int opendirError = 0;
    int closedirError = 0;            ///< The directory is closed all the same.
    int fnmatchResult = -1;           ///< Answered instead of matching, unless -1.
    int fnmatchCalls = 0;             ///< Calls so far.
    int fnmatchErrno = 0;             ///< What each leaves in `errno`, unless 0.
    std::function<void()> beforeRead; ///< Called before each fread and sendfile.
    std::size_t mostMoved = 0;        ///< What sendfile moves at most in one call; 0 has no limit.
    bool canMove = true;              ///< False: sendfile fails.
    int fcloseError = 0;              ///< Given for a stream that is open for writing, which is closed all the same.
    int fcloseErrorOfReader = 0;      ///< The same for a stream that is open for reading.
    int setxattrError = 0;
    int removexattrError = 0;
    std::function<void()> afterSizeOfList;     ///< Called when listxattr was asked for a size.
    std::function<void()> afterSizeOfValue;    ///< Called when getxattr was asked for a size.
    const char* startedName = nullptr;         ///< The program's argv[0]; null for a process without arguments.
    const char* loginName = nullptr;           ///< The user's name; null for a user without one.
    int listsOutOfRange = 0;                   ///< So many times listxattr finds the given room too small.
    int getxattrError = 0;                     ///< Given for the next getxattr, and cleared by that.
    std::optional<std::uint64_t> randomNumber; ///< What the next getrandom gives, which clears it.
    const void* watchedArray = nullptr;        ///< One whose releases are counted.
    int watchedArrayReleases = 0;              ///< How often that was released with array delete.
    int (*httpInfo)(const char*, struct stat64*) = nullptr;
    int (*getRealPath)(const unsigned short*, unsigned short**, int, int, int) = nullptr;
};

/// As a member of a fixture: what a test opens, it closes.
class DescriptorBalance {
public:
    DescriptorBalance() = default;
    DescriptorBalance(const DescriptorBalance&) = delete;
    DescriptorBalance& operator=(const DescriptorBalance&) = delete;
    ~DescriptorBalance() { EXPECT_EQ(OpenDescriptors(), _before) << "descriptors open"; }

private:
    const int _before = OpenDescriptors();
};

} // namespace FileCalls
