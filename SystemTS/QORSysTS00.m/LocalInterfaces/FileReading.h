/// @file
/// Files of others that the library reads when it finds them.
#pragma once

#include <cstdio>
#include <memory>

namespace VEL::internal {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens what has the name. What is there and is no regular file counts as empty: a pipe may have nothing to say, and a
/// device no end.
/// @return Null when it can't be opened.
File OpenForReading(const char* name);

} // namespace VEL::internal
