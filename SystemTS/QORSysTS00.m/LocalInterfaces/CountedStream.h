/// @file
/// Streams for writing that know their position: `ftell` answers without a call of the system, which the C library's
/// own streams make each time.
#pragma once

#include <cstdio>

namespace VEL::internal {

enum class CountedMode {
    Append, ///< As "a+"; the position is the end of what is there.
    Empty,  ///< As "w+".
};

/// Opens a file, which is closed by `fclose`. Its position counts what goes through this stream; pipes and devices have
/// none, and -1 is the answer, as it is in a child of the process that opened an empty file. The stream can't be read
/// or positioned, and has no `fileno`.
/// @return Null when it can't be opened, and without memory.
std::FILE* OpenCountedStream(const char* path, CountedMode mode);

/// Writes all of a block. @return What of it was written, less only after an error.
std::size_t WriteWhole(int descriptor, const char* block, std::size_t size);

} // namespace VEL::internal
