/// @file
/// Stack traces: captures the instruction addresses of a call stack, names them with what the dynamic linker knows, and
/// prints them.
///
/// The stack is that of the running thread, or the one that a signal handler was given as its third argument. Nothing
/// here allocates or takes a lock of its own, so all of it may run in a signal handler as far as `backtrace`, `dladdr`
/// and the stream that is printed on allow; the first `backtrace` of a process loads a library, so a crash handler does
/// well to have taken one trace early. Names are those of exported symbols: a program shows its own when it is linked
/// with `-rdynamic`.
///
/// @code
/// void OnCrash(int, siginfo_t*, void* context) {
///     QORStackTrace trace;
///     trace.GetTrace(context);
///     trace.Print(stderr, 0, 0);
/// }
/// @endcode
#pragma once

#include "QORSysTSExport.h"

#include <cstdio>

/// Captures instruction addresses, innermost first.
///
/// The stack of a saved context is followed along its frame pointers, for at most 256 addresses. That walk ends behind
/// an address whose nearest symbol is `main`, and before a null frame, a null address, an address that belongs to no
/// loaded object, and a frame that cannot be read; a damaged frame pointer is harmless. Where the interrupted function
/// has no frame yet, the value on top of its stack is taken for the address of its caller.
/// @param context    A `ucontext_t`, or null for the running thread; this function itself is not among its addresses.
/// @param skip       Number of innermost addresses to leave out.
/// @param maximum    Position at which the capture ends, counted before anything is left out; of the running thread
///                   this function counts as the first.
/// @param addresses  Receives the addresses.
/// @param count      Room in `addresses`.
/// @return The number of addresses stored. 0 for null `addresses` and a `count` below 1.
QORSYSTS_EXPORT int QORSysGetIPStack(void* context, int skip, int maximum, void** addresses, int count);

/// Prints one line for each address: `<symbol>+<offset> [pc:<address> func:<symbol's address> load=<file>(<base>)]`,
/// or `unknown [pc:<address>]` for one that belongs to no loaded object. Nothing is printed behind `main`.
/// @return 1, or 0 for a null argument and a `count` below 1.
QORSYSTS_EXPORT int QORSysDecodeIPStack(void** addresses, int count, std::FILE* file);

/// Not implemented on this platform.
/// @return 0.
QORSYSTS_EXPORT int QORSysGetSymbol(void* address, std::FILE* file, char* buffer, int size, int mode);

/// Not implemented on this platform.
/// @return 0.
QORSYSTS_EXPORT int QORSysGetSymbolFromMethodPointer(void* method, std::FILE* file, char* buffer, int size, int mode);

/// Not implemented on this platform.
/// @return 4 when any of the four pointers is not null, otherwise 1.
QORSYSTS_EXPORT int QORSysGetLoadsList(int* count, int* size, char*** list, std::FILE* file, int mode);

/// Frees a list of strings and the strings, all of which come from `malloc`, and makes `*list` null.
/// @return 0; 1 for a null `list` or `*list`; 2 for a `count` of 0. 1 also when a string is "end of list": the strings
///         before it are freed then and their places null, while that string, the ones behind it and the array stay.
QORSYSTS_EXPORT int QORSysDelLoadsList(char*** list, int count);

/// Up to 40 addresses of a call stack with their names, innermost first. See QORStackTrace for how it is filled.
class QORSYSTS_EXPORT QORBasicStackTrace {
public:
    QORBasicStackTrace();

    /// The number of entries.
    int GetDepth();

    /// Prints a line for each of the entries from `from` up to, not including, `to`: address and name.
    /// @param file  Null prints nothing.
    /// @param from  Below 0 or above the depth it counts as 0.
    /// @param to    Above the depth, or not above `from`, it counts as the depth.
    void Print(std::FILE* file, int from, int to);

    /// Calls `callback` for each entry.
    /// @param callback  Gets `data`, the entry's name, two nulls and 0. Null does nothing.
    void Print(void (*callback)(void* data, const char* name, const char*, const char*, int), void* data);

    /// Copies the name of an entry; an `index` out of range gives an empty string.
    /// @param buffer  Null yields null.
    /// @param size    Above 0: room in `buffer`, of which the terminator takes one byte. Below 0: at most `-size` bytes
    ///                of name and terminator, and at most 64, so that a name which fills them is not terminated. 0
    ///                copies nothing.
    /// @return `buffer` for a `size` of 0 and below. For a `size` above 0 the length of the name, as a number in the
    ///         place of a pointer.
    char* Read(int index, char* buffer, int size);

protected:
    /// Most entries of a trace.
    static constexpr int MaximumDepth = 40;
    /// Bytes of a name with its terminator.
    static constexpr int NameSize = 64;

    struct Entry {
        void* address;
        char name[NameSize];
    };

    int _depth;
    Entry _entries[MaximumDepth];

private:
    struct Layout;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A trace that fills itself. Objects are not destroyed through a pointer to a base: the virtual table deliberately
/// holds the two operations and no destructor.
///
/// The `context` of a capture is a `ucontext_t`; or null for the stack of the running thread, beginning with the caller
/// of the operation; or the number 1 for that stack beginning with the caller's caller.
class QORSYSTS_EXPORT QORStackTrace : public QORBasicStackTrace {
public:
    QORStackTrace();

    /// Captures the stack of the running thread, beginning with the caller, with names.
    /// @return The depth.
    virtual int GetTrace();

    /// Captures a stack with names. The name of an address is that of the nearest exported symbol, cut to 63 bytes, or
    /// "unknown". The entry named `main` is the last one.
    /// @return The depth.
    virtual int GetTrace(void* context);

    /// Captures up to 40 addresses and decodes them at once, as QORSysGetIPStack() and QORSysDecodeIPStack() do. This
    /// operation itself is the first address of the running thread. The entries stay as they are.
    /// @return The number of addresses.
    int DirectTrace(std::FILE* file, void* context, int skip, int maximum);

    /// Captures up to 40 addresses, whose names stay empty. `main` does not end the stack of the running thread here.
    /// @return The depth.
    int GetIPStack(void* context);

    /// Decodes the addresses of the entries from `from` up to, not including, `to`, which count as in Print(), in the
    /// way of QORSysDecodeIPStack().
    void PrintIPStack(std::FILE* file, int from, int to);
};

#pragma GCC diagnostic pop
