#include "VELDebugBreak.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

void VELDebugBreak(int code) {
    constexpr int maximumLength = 128;
    const int savedError = errno;
    char line[maximumLength];
    const int length = std::snprintf(line, sizeof line, "VELDebugBreak: programming error, code %d, reported from %p\n",
                                     code, __builtin_return_address(0));
    // One write, so that lines of several threads do not mix; there is nowhere to report a failure of the report.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, static_cast<size_t>(length));
    errno = savedError;
}
