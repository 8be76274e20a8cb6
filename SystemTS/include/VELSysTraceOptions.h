/// @file
/// The text of a trace configuration, and the option files that hold it.
///
/// A configuration is a list of items. An item names one destination, the traces that go to it, and options. There are
/// two grammars; VELSysTraceManager.h says where items are taken from.
///
/// The line grammar, which every source can use:
///
/// | Piece | Meaning |
/// |---|---|
/// | `-O`, `-E` | the destination is standard output, standard error |
/// | `-F<name>` | the destination is a file; the name follows at once and goes up to white space |
/// | `-S<name>` | a destination of the system kind, which takes nothing |
/// | `<name>` | a trace |
/// | `-I<number>`, `-L<number>` | lines have codes from this on, below this; 0 has no effect |
/// | `-M<number>` | the destination is a ring of so many bytes; 0 has no effect |
/// | `-N` | the traces are made inactive |
/// | `--local-time` | time stamps in local time |
///
/// Letters may be of either case. Blanks and the characters `,;:|` separate pieces; those that begin with a dash and
/// mean nothing are passed over. The destination is looked for first, as the first dash that one of its letters
/// follows, wherever that stands: the trace name "my-output" makes it standard output. An item without a destination is
/// refused. What exceeds 63 bytes is cut.
///
/// @code
/// -FLifeCycle.txt LifeCycle Path -L100
/// LifeCycle,Path -L100 -FLifeCycle.txt
/// @endcode
///
/// The command grammar, which is tried first for the items of the environment variable "VELSysTrace". Arguments are
/// split and quoted as VELSysEnvironBuildArgumentFromCommandLine() does:
///
/// | Option | Meaning |
/// |---|---|
/// | `--name <name>...` | the traces |
/// | `--file <name>` | the destination is a file |
/// | `-o`, `-e` | the destination is standard output, standard error, whatever file is named |
/// | `--rotate-file-size <bytes>`, `--rotate-file-count <number>` | the file is rotated |
/// | `--local-time` | time stamps in local time |
/// | `-n` | the traces are made inactive |
///
/// @code
/// --name LifeCycle Path --file life.txt --rotate-file-size 100000 --rotate-file-count 12 --local-time
/// @endcode
///
/// The variable may hold several items with one of `,;:|` between them; of what it holds 8191 bytes count. The first
/// item that both grammars refuse ends it, an empty one too. An option file has items in the line grammar, one on each
/// line of up to 8191 bytes, all ending in a line feed; a line that is refused has no effect.
#pragma once

#include "QORSysTSExport.h"

#include <cstddef>
#include <cstdio>

/// The directory of the option files: the value of the environment variable "QORTraDecDir", else that of "HOME", else
/// "/tmp". A value that doesn't fit counts as not set.
/// @param path  Receives it.
/// @param size  Bytes of `path`.
/// @return 0; -1 for null, and when there is no room for "/tmp".
QORSYSTS_EXPORT int VELSysTraceGetConfigDirectory(char* path, std::size_t size);

/// Finds the option files of a directory, in the system's order. Their names begin with "OPFILE." or ".option", in any
/// case, and end in a digit from 1 to 9.
/// @param directory  In the native code page.
/// @param onFile     Told the full path of each.
/// @param data       Handed on.
/// @return 0 when the results of `onFile` add up to 0, so also when there is no such file or no such directory; -1
///         otherwise, for null, and for a directory that no path can hold.
QORSYSTS_EXPORT int VELSysTraceGetOpFileInDirectory(const char* directory,
                                                    int (*onFile)(const wchar_t* path, void* data), void* data);

/// Reads an option file. The last byte of each line goes, whatever it is, so the last line must end in a line feed. A
/// line of more than 8191 bytes counts as several, and what stands behind a zero byte has no effect.
/// @param file       Is read to its end, and stays open.
/// @param addTrace   Told the destination of each line, with a null name, and then each of its traces. Anything but 0
///                   for the destination ends the line.
/// @param addOption  Told each option of a destination, of VELSysTraceOption.
/// The callbacks receive the manager of the traces as `data`. It is locked meanwhile: they may use it, other threads
/// wait. The two last arguments have no effect.
/// @return 0. Nothing is read without a manager, and for null.
QORSYSTS_EXPORT int
VELSysTraceOpFileParser(std::FILE* file,
                        int (*addTrace)(int kind, const char* destination, const char* name, void* data),
                        int (*addOption)(const char* destination, int option, int value, void* data), void*, bool*);
