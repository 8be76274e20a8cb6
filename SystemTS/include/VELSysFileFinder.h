/// @file
/// The entries of one directory: a flat interface over the system's own listing, in the system's order.
#pragma once

#include "QORSysTSExport.h"
#include "QORUnicodeString.h"

#include <dirent.h>

struct stat64;

/// Values of VELSysFNMatchOptions::matchMode that mean something; every other one respects case.
enum VELSysFNMatchMode : unsigned char {
    VELSysFNMatchIgnoreCase = 2, ///< Case doesn't count.
};

/// How names are matched with a pattern of the shell's kind (`fnmatch`).
struct VELSysFNMatchOptions {
    unsigned char matchMode = 0;       ///< A ::VELSysFNMatchMode.
    unsigned char literalBrackets = 0; ///< 1: "[" and "]" in the pattern stand for themselves.
};

/// One open listing. It comes from VELSysFileFinderFirst() and goes with VELSysFileFinderClose(); one thread at a time
/// uses it.
struct VELSysFileFinderCtx {
    dirent64* entry;                ///< The current entry, or null.
    DIR* directory;                 ///< Open as long as the listing is.
    QORUnicodeString directoryText; ///< What is listed, with a slash at its end.
    QORUnicodeString pattern;       ///< Empty when every entry is taken.
    unsigned char matchMode;        ///< See VELSysFNMatchOptions.
    unsigned char literalBrackets;  ///< See VELSysFNMatchOptions.
    bool hasPattern;                ///< The pattern is in use.
};

/// Opens a directory and moves to the first entry that matches. Without a pattern "." and ".." are entries, too.
/// @param ctx        Receives the listing, which the caller closes; null on failure.
/// @param directory  A local directory, or a logical name, which is translated.
/// @param pattern    Names must match it as a whole; empty takes every entry.
/// @return 0; VEL::StatusNotFound when no entry matches; VEL::StatusBadArgument for an empty directory text and for one
/// that names no location; VEL::StatusNotImplemented for a web address; otherwise the code of the system's error,
/// facility 7.
QORSYSTS_EXPORT int VELSysFileFinderFirst(VELSysFileFinderCtx*& ctx, const QORUnicodeString& directory,
                                          const QORUnicodeString& pattern, const VELSysFNMatchOptions& options);

/// Moves to the next entry that matches. After a failure nothing is current.
/// @return 0; VEL::StatusNoMoreFiles at the end; VEL::StatusBadArgument for null; otherwise the code of the system's
/// error, facility 7.
QORSYSTS_EXPORT int VELSysFileFinderNext(VELSysFileFinderCtx* ctx);

/// The name of the current entry, narrow, in the bytes in which the file system has it.
/// @return 0; VEL::StatusBadArgument when nothing is current.
QORSYSTS_EXPORT int VELSysFileFinderCurrentName(const VELSysFileFinderCtx* ctx, QORUnicodeString& name);

/// What VELSysFileStat() says of the current entry.
/// @return Its result; VEL::StatusBadArgument when nothing is current.
QORSYSTS_EXPORT int VELSysFileFinderCurrentStat(const VELSysFileFinderCtx* ctx, struct stat64* out);

/// Closes a listing and frees it, also when it fails.
/// @return 0; 1 for null; the code of the system's error, facility 7, when closing fails.
QORSYSTS_EXPORT int VELSysFileFinderClose(VELSysFileFinderCtx* ctx);
