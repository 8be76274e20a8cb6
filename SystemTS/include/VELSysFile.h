/// @file
/// File helpers and search: checks, splitting and joining by text alone, operations on local files, and the search
/// along lists of directories and for programs. Nothing here keeps state, and any thread may call any of it.
///
/// Paths are 16-bit text or strings; a file is named to the system in the native code page.
#pragma once

#include "QORSysTSExport.h"
#include "QORUnicodeString.h"

#include <cstddef>
#include <cstdio>

struct stat;
struct stat64;

/// Checks the last component of a path: each of its characters must lie in 0x20 to 0x7F. In a web address it ends at a
/// "?".
/// @param narrow  Unless null: receives the whole text in the native code page, in an array of at least twice the
/// length
///                plus two bytes, zeroed behind the text. The caller releases it with array `delete`.
/// @param strict  Not 0: none of the characters may be one of `*?:|<>"\` either.
/// @return 0; VEL::StatusBadName for a character that may not stand there; `VELConvertError(9, 7)` for a null `path`;
/// `VELConvertError(12, 7)` without memory.
QORSYSTS_EXPORT int VELSysNameFilter(const unsigned short* path, char** narrow, int strict);

/// Turns 16-bit text into the native code page.
/// @param out     Receives an array of at least twice the length plus one bytes, zeroed behind the text. The caller
///                releases it with array `delete`.
/// @param length  Units of `text`; 0 means up to its zero unit.
/// @return 0; VEL::StatusBadArgument for null; `VELConvertError(12, 7)` without memory.
QORSYSTS_EXPORT int QORConvertUcsToStr(const unsigned short* text, char** out, std::size_t length);

/// What the system says of a file; of a web address, what the library that answers for those says.
/// @return 0; VEL::StatusBadHandle for null; VEL::StatusNoLibrary for a web address that nobody answers for; otherwise
/// the code of the system's error, facility 7.
QORSYSTS_EXPORT int VELSysFileStat(const unsigned short* path, struct stat64* out);

/// Joins a directory and a name, with one slash between them unless there is one. An empty directory becomes "/".
/// @param directory  From array `new`; replaced by another array that the caller releases.
/// @param name       Null and an empty name add nothing.
/// @return 0; VEL::StatusBadArgument for a null directory; `VELConvertError(12, 7)` without memory.
QORSYSTS_EXPORT int VELSysMakePath(unsigned short*& directory, unsigned short* name);
/// Joins a directory and a name, likewise.
/// @return 0; VEL::StatusBadArgument for an empty directory.
QORSYSTS_EXPORT int VELSysMakePath(QORUnicodeString& directory, const QORUnicodeString& name);

/// Splits a path at its last slash or, where it has neither a slash nor a scheme, at its last backslash. Without one
/// the directory is empty and the name is all of it. The slash itself goes to neither.
///
/// The arguments may be the same object, two at a time. Deliberately, a `path` that is `name` too stays as it is when
/// its name has more than 2048 units.
/// @return 0; `VELConvertError(22, 7)` when all three are the same object.
QORSYSTS_EXPORT int VELSysSplitPath(const QORUnicodeString& path, QORUnicodeString& directory, QORUnicodeString& name);

/// `fopen`.
/// @param file  Receives the stream, which goes with VELSysLocalFileClose(); null on failure.
/// @return 0, or the code of the system's error, facility 3.
QORSYSTS_EXPORT int VELSysLocalFileOpen(const unsigned short* path, const char* mode, FILE*& file);
QORSYSTS_EXPORT int VELSysLocalFileOpen(const QORUnicodeString& path, const char* mode, FILE*& file);

/// `fclose`.
/// @return 0; VEL::StatusFailure for null; otherwise the code of the system's error, facility 3.
QORSYSTS_EXPORT int VELSysLocalFileClose(FILE* file);

/// Copies the contents of a file; note the order. A target that is there is overwritten.
///
/// The size is taken beforehand and as a signed 32-bit number: what is added meanwhile isn't copied, and deliberately a
/// source of 2 GiB, or of any size that is negative as such a number, is copied as an empty file.
/// @return 0; VEL::StatusFailure when the source is shorter than it was or can't be read, and when the target can't be
/// written; the code of VELSysLocalFileOpen() or, for the target, VELSysLocalFileClose().
QORSYSTS_EXPORT int VELSysLocalFileCopy(const QORUnicodeString& target, const QORUnicodeString& source);
QORSYSTS_EXPORT int VELSysLocalFileCopy(const unsigned short* target, const unsigned short* source);

/// Sets the times of a file, in seconds; note the order, the reverse of VELSysPath::SetTimes().
/// @return 0, or the code of the system's error, facility 7.
QORSYSTS_EXPORT int VELSysFSetTimes(const unsigned short* path, long accessed, long modified);
QORSYSTS_EXPORT int VELSysFSetTimes(const QORUnicodeString& path, long accessed, long modified);

/// Removes a file.
/// @return 0, or the code of the system's error, facility 7.
QORSYSTS_EXPORT int VELSysDeleteFile(const QORUnicodeString& path);
QORSYSTS_EXPORT int VELSysDeleteFile(const unsigned short* path);

/// A name under the system's directory of temporary files that no file has. Nothing is created, so another process may
/// take the name before the caller does.
/// @param prefix     Ignored.
/// @param directory  Ignored.
/// @return 0.
QORSYSTS_EXPORT int VELSysGetTempFileName(QORUnicodeString& out, const char* prefix, QORUnicodeString* directory);

/// Copies field by field.
/// @return 0; VEL::StatusTooLarge for a size above 0xFFFFFFFF, which leaves `to` as it is.
QORSYSTS_EXPORT int QORStat64ToStat32(struct stat64& from, struct stat& to);

/// Searches a file or directory along a list of directories, which ends at its first empty piece.
/// @param relative    What to append to each directory.
/// @param found       Receives the path; unchanged when there is none.
/// @param searchPath  Directories with ":" between them; null takes the variable "QORInstallPath".
/// @return 1 when found, otherwise 0.
QORSYSTS_EXPORT int VELFindFileByRelPath(const QORUnicodeString& relative, QORUnicodeString& found,
                                         const QORUnicodeString* searchPath);

/// Searches a program: `name` as it stands, then in the directories of the variable "PATH", and at last in the root.
/// A program is what isn't a directory and may be executed by its owner. Quotes and blanks around a name that isn't
/// there are taken off.
/// @param found  Receives the path, or what was tried last.
/// @return 0; -1 when "PATH" is empty, which is reported on standard error; -2 when there is no such program.
QORSYSTS_EXPORT int QORWhence(QORUnicodeString& found, const QORUnicodeString& name);

/// The directory that the program is installed under, in UTF-8: its path as it was started, without the last three
/// components.
/// @return Kept for the life of the process; empty when it isn't known.
QORSYSTS_EXPORT const char* VELGetMainInstallPath();

/// The name of the user who runs the process.
/// @param size  Bytes of `buffer`.
/// @return 0; -1 for a user without a name, a null buffer, and a name that doesn't fit with its terminator. The buffer
/// is empty then.
QORSYSTS_EXPORT int QORGetLoginName(char* buffer, unsigned size);
/// QORGetLoginName().
QORSYSTS_EXPORT int QORSysGetUserName(char* buffer, unsigned size);
