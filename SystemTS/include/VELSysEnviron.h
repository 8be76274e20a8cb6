/// @file
/// Variables as the whole process sees them, and command lines: splitting, options, replacing text in narrow strings.
///
/// These functions keep no state. Results are 0 for success and -1 for failure unless stated.
#pragma once

#include "QORSysTSExport.h"

#include <cstddef>

class QORUnicodeString;

/// Looks a variable up: in the process's environment, then in the current application context, then in the main one.
/// "QORInstallPath" that stands in none of them is the directory in which the product is installed, when that is known.
/// @param value  Receives the value of a variable that is known; null asks only whether it is.
/// @return 1 when the variable is known, 0 when it is not or `name` is null.
QORSYSTS_EXPORT int VELGetEnvInt(const char* name, QORUnicodeString* value);

/// Looks a variable up in the process's environment alone.
/// @return 1, or 0, with `value` untouched, when it is not there.
QORSYSTS_EXPORT int _VELGetEnvironmentVariableFromOS(const char* name, QORUnicodeString& value);

/// Has no implementation on this platform.
/// @return -1; nothing is touched.
QORSYSTS_EXPORT int VELSysGetEnvA(std::size_t* length, char* buffer, std::size_t bufferLength, const char* name);

/// Splits a command line at blanks (space and tab).
///
/// A run of blanks separates; blanks around the line give an empty argument. Text between a `"` that opens and the last
/// `"` in front of a blank is one argument, in which a run of blanks is one space; such quotes may stand in the middle
/// of an argument, and quotes between them are kept. A quote that is never closed is a plain character. Backslashes
/// before a `"` are halved, a single one is dropped; all others are plain. A line feed in the line separates too, but
/// is not counted: as many pieces at the end are dropped.
/// @param argv  Receives the arguments: a vector of exactly `*argc` slots, each a string or null, to be freed by
///              VELSysEnvironDeleteArgumentArrayA().
/// @param argc  Receives the number of slots, at least 1.
/// @return 0, or -1 when an argument is null.
QORSYSTS_EXPORT int VELSysEnvironBuildArgumentFromCommandLine(const char* line, char*** argv, int* argc);

/// Frees `argc` strings and the vector, and sets `*argv` to null. A null `argv` or an `argc` below 1 does nothing.
/// @return 0.
QORSYSTS_EXPORT int VELSysEnvironDeleteArgumentArrayA(char*** argv, int argc);

/// Replaces every occurrence of `find`, from the start on; what has been put in is not searched again.
/// @param text  From array `new`. Consumed when anything is replaced: the result takes its place.
/// @return The new text, from array `new`, or `text` when nothing is replaced, an argument is null or `find` is empty.
QORSYSTS_EXPORT char* VELSysEnvironStringReplaceA(char* text, const char* find, const char* replacement);

/// A short option, such as "-v". A zero character ends a table.
struct VELSysEnvironCommandShortOptionStruct {
    int character; ///< What stands behind the dash.
    int* counter;  ///< Becomes 1 when the option is given.
};

/// Kinds of long options; any other number takes any number of values.
enum VELSysEnvironCommandOptionKind : int {
    VELSysEnvironCommandOptionFlag = 1,   ///< Takes no values.
    VELSysEnvironCommandOptionValues = 2, ///< Takes at least one value.
};

/// A long option, such as "--name". A null name ends a table.
struct VELSysEnvironCommandLongOptionStructA {
    const char* name;   ///< What stands behind the two dashes.
    int kind;           ///< One of ::VELSysEnvironCommandOptionKind.
    char*** firstValue; ///< Receives the place of the first value in `argv`; null without one.
    int* counter;       ///< Counts the option itself and its values.
};

/// Parses options. `argv[0]` is not read. What begins with a dash and no decimal digit behind it is an option; all else
/// is a value of the long option before it, so the values of a long option are the `*counter - 1` slots of `argv` from
/// `*firstValue` on, provided nothing else stands between them.
/// @param longOptions   A table, or null to pass over all long options. Entries without a counter are not known.
/// @param shortOptions  A table, or null to pass over all short options. Entries without a counter are not known.
/// @param errorIndex    Receives 0, or the index of the argument that is wrong: an unknown or repeated option, a value
///                      without a long option before it, or what follows an option that goes without the value that
///                      it needs. Such an option in the last place is not reported.
/// @return 0, or -1 for a wrong argument, for an `argc` below 1 and for a null `argv` or `errorIndex`.
QORSYSTS_EXPORT int VELSysEnvironParseCommandOptionA(int argc, char** argv,
                                                     VELSysEnvironCommandLongOptionStructA* longOptions,
                                                     VELSysEnvironCommandShortOptionStruct* shortOptions,
                                                     int* errorIndex);
