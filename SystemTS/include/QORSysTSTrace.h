/// @file
/// Traces in the manner of streams, switched on by one option file and independent of the trace manager.
///
/// The file "QORSysTSTraceOpt.txt" stands in the directory that the environment variable "QORSysTSTraDec" names, else
/// in `HOME`, else in "/tmp/". It is read when the first trace is made, unless "QORSysTSTraDecLoad" is in the
/// environment. Each of its lines that begins with "t:" switches a trace on, which goes to the file, "STDOUT" or
/// "STDERR" in quotes behind "-o", or to standard error without. The quotes are required:
///
/// @code
/// // What the importer does
/// t:Import -o "/tmp/import.txt"
/// t:Export
/// @endcode
///
/// Of two lines with one name the first counts. There are no locks: the first trace is to be made before threads are,
/// and one thread at a time writes to a trace.
#pragma once

#include "QORSysTSExport.h"
#include "QORUnicodeString.h"

#include <cstdio>

/// What is written by itself. Other values write nothing.
enum QORSysTSTrcControl : int {
    QORSysTSTrcEndLine = 1, ///< A line feed.
};

/// A trace that the option file names: what all QORSysTSTrace of that name share. It lasts as long as the process.
class QORSYSTS_EXPORT QORSysTSRefTrace {
public:
    static constexpr unsigned int NameSize = 64;   ///< Bytes of a name with its terminator.
    static constexpr unsigned int FileSize = 2049; ///< Bytes of the name of an output with its terminator.
    static constexpr unsigned int TableSize = 128;
    static constexpr int StateActive = 1; ///< A bit of the state.

    /// A record that is not active and goes to standard error. A name of 64 bytes and more is cut; null counts as
    /// empty.
    explicit QORSysTSRefTrace(const char* name);
    QORSysTSRefTrace(const QORSysTSRefTrace&) = delete;
    QORSysTSRefTrace& operator=(const QORSysTSRefTrace&) = delete;
    /// Closes the file, unless it is a standard stream.
    ~QORSysTSRefTrace();

    /// The bucket of a name: the sum of its first 64 bytes, modulo 128. 0 for null.
    static unsigned int CalcRefKey(const char* name);

    /// Opens the option file, which the caller closes; null when there is none. What is no regular file counts as
    /// empty.
    static std::FILE* OpenOptFile();

    /// Reads up to the next line that switches a trace on. Faults of the line are reported on standard error.
    ///
    /// A line of more than 4091 bytes counts as several.
    /// @param name   Receives the name, cut to 63 bytes; room for 64.
    /// @param state  Becomes 0.
    /// @param file   Receives the output, cut to 2048 bytes, "STDERR" when the line has none; room for 2049.
    /// @return 0 at the end of the file and for null, otherwise 1.
    static int ReadOptFile(std::FILE* options, char* name, int* state, char* file);

    /// The record of a name.
    /// @param create  Not 0: it is made when there is none.
    /// @param wasNew  Becomes -1 when the record was made and 0 when it was there; may be null.
    /// @return Null when there is none, for null, for names of 64 bytes and more, and without memory.
    static QORSysTSRefTrace* FindRef(const char* name, int create, int* wasNew);

    /// Switches the trace on.
    /// @param state  The new state; with StateActive a file is emptied when it is opened, otherwise it is appended to.
    /// @param file   "STDOUT", "stdout", "STDERR", "stderr" or the name of a file; standard error, with a
    ///               message there, when that can't be opened. Null leaves what is set.
    void SetState(int state, char* file);

    /// Reads the option file, once per process.
    static void InitFromEnv();

    /// InitFromEnv(), then the record of a name, or null. It isn't counted, deliberately.
    static QORSysTSRefTrace* ObtainRef(const char* name);

    /// Takes 1 from the reference count, unless it is 0. The record stays. @return The count.
    int Release();

    bool IsActive() const { return (_state & StateActive) != 0; }

    // Writing: 0, or 1 without a file. Numbers are formatted as "%d", "%u", "%ld", "%lu" and "%f". Null is ignored.

    int operator<<(const QORUnicodeString& text);
    int operator<<(const char* text);
    int operator<<(int value);
    int operator<<(unsigned int value);
    int operator<<(long value);
    int operator<<(unsigned long value);
    int operator<<(double value);
    int operator<<(float value);
    int operator<<(QORSysTSTrcControl control);

    /// Does nothing, deliberately. @return 0.
    int Flush();

private:
    struct Layout;

    template <class Value>
    QORSYSTS_PRIVATE int _Print(const char* format, Value value);
    QORSYSTS_PRIVATE void _CloseFile();

    static QORSysTSRefTrace** S_RefTable; ///< The buckets, never freed.
    static unsigned int S_Status;         ///< Bit 1: the option file has been read, or isn't to be.

    unsigned short _references = 1;
    unsigned short _state = 0;
    char _name[NameSize] = {};
    std::FILE* _file;
    QORSysTSRefTrace* _next = nullptr; ///< In the bucket.
};

/// A trace at its place of use. It does nothing when the option file doesn't have its name.
///
/// @code
/// QORSysTSTrace trace("Import");
/// trace << "read " << count << QORSysTSTrcEndLine;
/// @endcode
class QORSYSTS_EXPORT QORSysTSTrace {
public:
    explicit QORSysTSTrace(const char* name);
    QORSysTSTrace(const QORSysTSTrace&) = default;
    QORSysTSTrace& operator=(const QORSysTSTrace&) = default;
    /// QORSysTSRefTrace::Release().
    ~QORSysTSTrace();

    bool IsActive() const;

    // Writing, as QORSysTSRefTrace does it.

    QORSysTSTrace& operator<<(const QORUnicodeString& text);
    QORSysTSTrace& operator<<(const char* text);
    QORSysTSTrace& operator<<(int value);
    QORSysTSTrace& operator<<(unsigned int value);
    QORSysTSTrace& operator<<(long value);
    QORSysTSTrace& operator<<(unsigned long value);
    QORSysTSTrace& operator<<(double value);
    QORSysTSTrace& operator<<(float value);
    QORSysTSTrace& operator<<(QORSysTSTrcControl control);

    /// Does nothing, deliberately. @return 0.
    int Flush();

    /// The name of a status code: "S_OK", "S_FALSE", "E_FAIL", "E_UNEXPECTED", "E_NOINTERFACE", "E_NOTIMPL"; another
    /// code as "HR_0x80070057". Such a text is overwritten by the next one.
    static const char* HRV(int code);

private:
    template <class Value>
    QORSYSTS_PRIVATE QORSysTSTrace& _Forward(const Value& value);

    QORSysTSRefTrace* _reference; ///< Null when the name isn't configured.
};
