/// @file
/// The argument store: the options of the command line, for every library of the process.
///
/// One table holds the options by name, without their leading dashes. VELSysTSSetArg() fills it from the arguments of
/// `main`, VELSysGetCmdLineArgs() from what the system knows of the process, and code adds and removes options of its
/// own at any time. Values are UTF-8. All functions may be called by any thread at once.
///
/// @code
/// int hasValue = 0;
/// QORUnicodeString object;
/// if (VELSysTSGetArg("object", hasValue, object) == VEL::StatusOk && hasValue != 0) {
///     Open(object);
/// }
/// @endcode
#pragma once

#include "QORSysTSExport.h"

#include <cstddef>

class QORSysTSUnicodeString;
class QORUnicodeString;

/// The record of one option, as the store keeps it.
class QORSYSTS_EXPORT ArgEnt {
public:
    ArgEnt() = default;
    ArgEnt(const ArgEnt&) = delete;
    ArgEnt& operator=(const ArgEnt&) = delete;
    /// Frees key and value, except those of a record that was made for a look-up.
    virtual ~ArgEnt();

    char* key = nullptr;   ///< Name without leading dashes; from array `new`.
    int hasValue = 0;      ///< 1 with a value, 0 for a bare flag, -1 in a record for a look-up, which owns nothing.
    int isAdded = 0;       ///< 0 from the command line, 1 from VELSysTSAddArg().
    unsigned int hash = 0; ///< Hash of the key.
    char* value = nullptr; ///< Value as UTF-8, zero-terminated, from array `new`; null when there is none.
};

/// Empties the store and fills it from a command line. `argv[0]` is not read; `argv[argc]` is null, as for `main`.
///
/// Known options are "-help", "-admin", "-batch", "/regserver" and "/unregserver" without a value; "-object",
/// "-serviceId", "-objectType", "-file", "-Url", "-Sli", "-Cas", "-Ctx" and what begins with "-workbench", "-env" or
/// "-direnv", each with the next argument as value; "-e" with all words up to the next dash or backslash, joined by
/// blanks; "-maintenance" as the second of two, whose value is `argv[3]` and so usually no text; and "-render=value".
/// Any other argument with one or two dashes is "-key=value" or a bare flag, and so is a listed option that lacks its
/// next argument; what begins otherwise is passed over. Of options of one name the first counts.
/// @return 0, also when memory is short: options that could not be kept are missing then.
QORSYSTS_EXPORT int VELSysTSSetArg(int argc, char** argv);

/// Looks an option up.
/// @param hasValue  Receives 1 when the option has a value, 0 for a bare flag.
/// @param isAdded   Receives 0 for an option of the command line, 1 for one of VELSysTSAddArg().
/// @param value     Receives the value; keeps its text when there is none.
/// @return 0; VEL::StatusNotFound when there is no such option; VEL::StatusFailure when nobody has filled the store yet
///         or there is no memory. On failure nothing is touched, but that a lack of memory may leave `value` empty.
QORSYSTS_EXPORT int VELSysTSGetArg(const char* key, int& hasValue, int& isAdded, QORUnicodeString& value);
QORSYSTS_EXPORT int VELSysTSGetArg(char* key, int& hasValue, int& isAdded, QORUnicodeString& value);
QORSYSTS_EXPORT int VELSysTSGetArg(const char* key, int& hasValue, int& isAdded, QORSysTSUnicodeString& value);
QORSYSTS_EXPORT int VELSysTSGetArg(char* key, int& hasValue, int& isAdded, QORSysTSUnicodeString& value);
/// The same without `isAdded`.
QORSYSTS_EXPORT int VELSysTSGetArg(const char* key, int& hasValue, QORUnicodeString& value);
QORSYSTS_EXPORT int VELSysTSGetArg(char* key, int& hasValue, QORUnicodeString& value);
QORSYSTS_EXPORT int VELSysTSGetArg(const char* key, int& hasValue, QORSysTSUnicodeString& value);
QORSYSTS_EXPORT int VELSysTSGetArg(char* key, int& hasValue, QORSysTSUnicodeString& value);

/// Adds an option, in place of one of that name.
/// @param value  Its value; null makes a bare flag.
/// @return 0, or VEL::StatusFailure when `key` is null or memory is short.
QORSYSTS_EXPORT int VELSysTSAddArg(const char* key, const QORUnicodeString* value);
QORSYSTS_EXPORT int VELSysTSAddArg(char* key, const QORUnicodeString* value);
QORSYSTS_EXPORT int VELSysTSAddArg(const char* key, QORSysTSUnicodeString* value);
QORSYSTS_EXPORT int VELSysTSAddArg(char* key, QORSysTSUnicodeString* value);
/// Adds a bare flag: a literal null pointer belongs to neither string class.
inline int VELSysTSAddArg(const char* key, std::nullptr_t) {
    return VELSysTSAddArg(key, static_cast<const QORUnicodeString*>(nullptr));
}
inline int VELSysTSAddArg(char* key, std::nullptr_t) {
    return VELSysTSAddArg(key, static_cast<const QORUnicodeString*>(nullptr));
}

/// Removes an option.
/// @return 0, or VEL::StatusFailure when it was not there.
QORSYSTS_EXPORT int VELSysTSResetArg(const char* key);
QORSYSTS_EXPORT int VELSysTSResetArg(char* key);

/// The command line of the process, as the system knows it. The first call that gets it fills the argument store with
/// it, which drops what was added there before; later calls answer the same pointers.
/// @param argc  Receives the number of arguments, 0 when the system doesn't tell.
/// @param argv  Receives the arguments, with a null behind the last, or null. They stay the library's, for the life of
///              the process.
QORSYSTS_EXPORT void VELSysGetCmdLineArgs(int& argc, char**& argv);

/// The same as strings of narrow text.
/// @return An array that the caller releases with array `delete`; null when there are no arguments or no memory for it.
///         A text for which there is no memory is empty.
QORSYSTS_EXPORT QORUnicodeString* VELSysGetCmdLineArgs(int& argc);
