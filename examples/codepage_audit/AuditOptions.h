/// @file
/// The command line of the audit.
#pragma once

#include "QORSysTS.h"

#include <vector>

/// What the command line asks for.
struct AuditOptions {
    std::vector<const char*> locations; ///< Directories and files, as they were given.
    QORUnicodeString pattern;           ///< Which file names count; empty for all.
    QORUnicodeString output;            ///< Where the report goes; empty for standard output.
    QORUnicodeString codePage;          ///< What the files are said to be in; empty when nothing is said.
    int depth = -1;                     ///< Levels of directories to enter below a location; -1 for all.
    bool help = false;                  ///< Only the usage text is wanted.
};

/// Takes the options from the argument store and the locations from the arguments of `main`.
/// @return False when something is wrong, which has been told on standard error.
bool ReadOptions(int argc, char** argv, AuditOptions& options);

/// Prints how the program is called.
void PrintUsage(std::FILE* stream, const char* program);
