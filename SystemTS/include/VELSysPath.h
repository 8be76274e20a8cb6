/// @file
/// The value class of a location: a path of the file system, a web address, or a logical name of the document system.
///
/// A location is kept as it was given, less one trailing slash. Nothing resolves "." or "..", follows a symbolic link
/// or looks at the current directory until the file system is asked.
///
/// @code
/// VELSysPath file;
/// file.Set("/home/user/");            // "/home/user"
/// file.Append("parts/wheel");         // "/home/user/parts/wheel"
/// file.AddExtension("txt");           // "/home/user/parts/wheel.txt"
/// if (file.IsFile(0)) { ... }         // asks the file system and keeps the answer
/// @endcode
#pragma once

#include "QORSysTSExport.h"
#include "QORSysTSUnicodeString.h"
#include "QORUnicodeString.h"

#include <sys/stat.h>

class VELSysDirectoryIterator;
class VELSysPath;
struct VELSysFNMatchOptions;

namespace VEL::internal {
struct PathAccess;
} // namespace VEL::internal

/// Bits of the type mask of a path. A valid path has exactly one of those from Absolute on.
enum VELSysPathTypeBit : unsigned int {
    VELSysPathTypeInvalid = 1,   ///< No usable path; a failed build leaves this bit alone.
    VELSysPathTypeAbsolute = 2,  ///< Begins with "/".
    VELSysPathTypeRelative = 4,  ///< None of the others.
    VELSysPathTypeHttp = 32,     ///< Begins with "http://".
    VELSysPathTypeHttps = 64,    ///< Begins with "https://".
    VELSysPathTypeLogical = 128, ///< Begins with the bytes 0x01, 0x02, 0x5C.
    VELSysPathTypeReserved = 256 ///< Cleared by each append, set nowhere.
};

/// The state of a path and all that is done with it. VELSysPath owns one and forwards.
///
/// Results are status codes, see VELSysStatus.h; what the system refuses is told as `VELConvertError(errno, 7)`. A path
/// never holds more than 65535 bytes: what would exceed them is refused with VEL::StatusFailure and changes nothing.
/// Nothing throws. Not thread-safe: questions write the stat cache.
class QORSYSTS_EXPORT VELSysPathImpl {
public:
    /// No path: type mask 1, all else null or zero.
    VELSysPathImpl();
    /// Copies text and state. Without memory the copy is invalid and has no text.
    VELSysPathImpl(const VELSysPathImpl& other);
    VELSysPathImpl& operator=(const VELSysPathImpl& other);
    virtual ~VELSysPathImpl();

    /// Takes a location from UTF-8. See VELSysPath::Set(). Failures write a line on the trace "VELSysPath".
    int BuildFromUTF8(const char* text);
    /// Takes a location from 16-bit text.
    int BuildFromUCChar(const unsigned short* text);
    /// Takes a location from a string. Deliberately, a trailing slash stays when the text isn't pure ASCII.
    int BuildFromUnicode(const QORUnicodeString& text);
    /// Decides anew what kind of location the text is; the bits of the type mask that aren't of a kind stay.
    /// @return 0, also where the invalid bit stays set; VEL::StatusFailure without text.
    int InitPathType();

    /// Equal text but for ASCII case, whatever the kinds. Two paths without text are equal.
    bool operator==(const VELSysPathImpl& other) const;

    // What follows is told at the operations of VELSysPath.

    int append(const char* piece);
    int append(const unsigned short* piece);
    int append(const QORUnicodeString& piece);
    int getExtension(QORUnicodeString& extension) const;
    int addExtension(const char* extension);
    int addExtension(const unsigned short* extension);
    int addExtension(const QORUnicodeString& extension);
    int removeExtension();
    int removeExtension(const QORUnicodeString& extension);
    int split(VELSysPathImpl& parent, QORSysTSUnicodeString& name) const;
    int split(VELSysPathImpl& parent, QORSysTSUnicodeString& directory, QORSysTSUnicodeString& stem,
              QORSysTSUnicodeString& extension) const;
    int getAsString(QORUnicodeString& text) const;

    /// Asks for the status of the location.
    /// @param out      Receives the answer.
    /// @param refresh  0 lets a local path answer from the cache while that is good.
    /// @return 0, or negative; for web addresses whatever "HttpInfo" of the library "PX4GROUP" answers, or
    ///         VEL::StatusNoLibrary. The answer for a local path lands in the cache, which this doesn't declare good.
    int stat(struct stat64& out, int refresh);
    /// Asks for the status anew and declares the cache good on success. @return As stat().
    int Initialize();
    bool exists(int refresh);
    bool isFile(int refresh);
    bool isDirectory(int refresh);
    bool canRead(int);
    bool canWrite(int);
    int getTimes(long& modified, long& accessed);
    int setTimes(long modified, long accessed);
    /// The real location of a logical name, in the native code page; null for any other path and when "VELGetRealPath"
    /// of the library "PX4GROUP" has none. Looked up once and kept, deliberately also while the path grows.
    const char* TranslateDLName();
    /// The real location of a logical name. @return 1 with `out` set; 0 when there is none, or no logical name.
    int getTranslatedPath(QORUnicodeString& out);

    int createDirectory();
    int remove(int recursive);
    int removeFile();
    int removeDirectory(int recursive);
    int move(const VELSysPath& target);
    int chmod(long mode);

    static int getTempDirectory(VELSysPath& out);
    static int getHomeDirectory(VELSysPath& out);
    static int getTempFilePath(VELSysPath& out, const QORUnicodeString* prefix, const VELSysPath* directory);

    void PrintInTrace(const char* label, int) const;

    /// The stored text; empty for a handle without implementation.
    static QORUnicodeString ToString_NoExtendedLengthPrefix(const VELSysPath& path);

private:
    friend struct VEL::internal::PathAccess;

    /// Asks the file system for the status of a local path or a logical name, into the cache.
    QORSYSTS_PRIVATE int _AskSystem();
    /// True when the mode of the location has `bit`.
    QORSYSTS_PRIVATE bool _HasMode(bool (*isMode)(unsigned int), int refresh);
    QORSYSTS_PRIVATE bool _IsAccessible(int permission);

    char* _path;                  ///< UTF-8 with a terminator, from `malloc`; may be null.
    QORUnicodeString _translated; ///< Real location of a logical name; empty until translated.
    struct stat64 _statCache;     ///< Answer of the last successful question about a local path.
    unsigned int _typeMask;       ///< VELSysPathTypeBit.
    unsigned short _length;       ///< Bytes of `_path`.
    short _rootLength;            ///< Bytes of the scheme or root prefix.
    unsigned char _statValid;     ///< 1 while the stat cache is good.
};

/// A location.
///
/// Kinds: absolute paths, relative paths, web addresses ("http://", "https://"), logical names. A path is invalid until
/// it was set, and after a set that failed.
///
/// What an operation answers for a handle without implementation, which a copy for which there was no memory is:
/// VEL::StatusNoObject from Set(), otherwise VEL::StatusFailure, false or an empty result.
///
/// Operations with an `int* rc` can be chained: with a negative value there they do nothing and give an empty result;
/// otherwise they store their code there. Null drops the code.
///
/// Not thread-safe: questions write a cache. Two threads may use two objects freely.
class QORSYSTS_EXPORT VELSysPath {
public:
    /// An invalid path.
    VELSysPath();
    VELSysPath(const VELSysPath& other);
    /// Leaves `other` without implementation.
    VELSysPath(VELSysPath&& other) noexcept;
    /// Set(), dropping its code.
    VELSysPath(const QORUnicodeString& text);
    virtual ~VELSysPath();

    /// Copies text and state. A source without implementation makes this path invalid, its text staying.
    VELSysPath& operator=(const VELSysPath& other);
    /// Exchanges the two.
    VELSysPath& operator=(VELSysPath&& other) noexcept;

    /// Takes a location: one trailing slash goes, nothing else is changed.
    /// @param text  UTF-8 up to its terminator.
    /// @return 0; VEL::StatusFailure for null, for a scheme with nothing behind it, and for a web address with a byte
    ///         outside 0x20 to 0x7D; VEL::StatusBadArgument for empty text and for bytes that aren't UTF-8;
    ///         VEL::StatusPathTooLong for 1025 bytes and more of anything but a web address. 0 is also the answer to a
    ///         text that begins with "QORDLN://", which leaves the path invalid. On failure the path is invalid.
    int Set(const char* text);
    /// Set() from 16-bit text, with VEL::StatusFailure for empty text.
    int Set(const unsigned short* text);
    /// Set() from a string, with VEL::StatusFailure for empty text. Deliberately, a trailing slash stays when the text
    /// isn't pure ASCII.
    int Set(const QORUnicodeString& text);
    int Set(const QORSysTSUnicodeString& text);

    /// Equal stored text but for ASCII case. Nothing is normalised.
    bool operator==(const VELSysPath& other) const;
    /// As a path that is set from `text`.
    bool operator==(const QORUnicodeString& text) const;
    /// As a path that is set from `text`; false when that fails.
    bool operator==(const char* text) const;
    bool operator==(const unsigned short* text) const;

    bool IsRelative() const;
    bool IsAbsolute() const;
    bool IsValid() const;
    /// The low byte of the type mask; 1 for a handle without implementation.
    unsigned char getType() const;
    /// All bits, see ::VELSysPathTypeBit; 0 for a handle without implementation.
    unsigned int GetTypeMask() const;

    /// The extension of the last component, without its dot. "/a/.profile" has one, the relative ".profile" hasn't.
    /// @return 0, or VEL::StatusFailure where there is none, which leaves `extension` as it was.
    int GetExtension(QORUnicodeString& extension) const;
    int getExtension(QORSysTSUnicodeString& extension) const;
    /// Removes the extension; `rc` receives VEL::StatusFailure where there is none to remove. @return This path.
    VELSysPath& RemExtension(int* rc);
    /// Removes `extension`, with or without its dot, from a last component that ends in exactly that and is longer.
    /// @return 0, or VEL::StatusFailure.
    int RemExtension(const QORUnicodeString& extension);
    int removeExtension(const QORSysTSUnicodeString& extension);

    /// Appends one component or more. One slash at either end of `piece` goes, one stands between what is there and
    /// what comes; a web address gets it for an empty `piece` too. "." changes nothing. The kind isn't decided anew.
    /// @return 0; VEL::StatusFailure when there is nothing to append to, and, with the piece appended, for an invalid
    ///         path; VEL::StatusBadArgument for a piece that isn't UTF-8; VEL::StatusPathTooLong for a piece of 1025
    ///         bytes and more.
    int Append(const VELSysPath& piece);
    int Append(const QORUnicodeString& piece);
    int Append(const QORSysTSUnicodeString& piece);
    int Append(const unsigned short* piece);
    int Append(const char* piece);
    int append(const VELSysPath& piece);
    int append(const QORUnicodeString& piece);
    int append(const QORSysTSUnicodeString& piece);
    int append(const unsigned short* piece);
    int append(const char* piece);
    /// Append() for chains. @return This path.
    VELSysPath& Add(const VELSysPath& piece, int* rc);
    VELSysPath& Add(const QORUnicodeString& piece, int* rc);

    /// Appends an extension and the dot in front of it, unless it has one.
    /// @return 0; VEL::StatusFailure without text to append to or for null; VEL::StatusBadArgument for text that isn't
    ///         UTF-8.
    int AddExtension(const char* extension);
    int AddExtension(const unsigned short* extension);
    /// Deliberately different: appends the text as it stands, without a dot, and refuses an empty one.
    int AddExtension(const QORUnicodeString& extension);
    int addExtension(const char* extension);
    int addExtension(const unsigned short* extension);
    int addExtension(const QORUnicodeString& extension);
    /// As the form with a QORUnicodeString.
    int addExtension(const QORSysTSUnicodeString& extension);

    /// Splits at the last slash, a trailing one not counted: "/a/b" is "/a" and "b", "/a" is "/" and "a".
    /// @return 0; 1 where there is no slash to split at: `name` is then the whole text and `parent` stays as it was;
    ///         VEL::StatusFailure for an invalid path.
    int split(VELSysPath& parent, QORSysTSUnicodeString& name) const;
    /// Splits "/x/y/f.e" into "/x", "y", "f" and "e". @return 0, or a failure, which a missing extension is.
    int split(VELSysPath& parent, QORSysTSUnicodeString& directory, QORSysTSUnicodeString& stem,
              QORSysTSUnicodeString& extension) const;
    /// The parent as split() gives it; `rc` receives the result, so 1 with an invalid path where there is none.
    VELSysPath GetParent(int* rc) const;
    /// The last component as a path; a copy of this path where there is no parent.
    VELSysPath GetName(int* rc) const;

    /// The stored text. @return 0, or VEL::StatusFailure without any, which gives an empty string.
    int GetAsString(QORUnicodeString& text) const;
    int getAsString(QORSysTSUnicodeString& text) const;
    QORUnicodeString ToString(int* rc) const;

    /// Times of the location in seconds, from the cache where that is good. A web address has none: both are 0.
    int GetTimes(long& modified, long& accessed) const;
    /// Sets the times of the location, in seconds. @return 0, or a failure.
    int SetTimes(long modified, long accessed);

    // Questions to the file system. With a `refresh` of 0 a local path answers from its cache once an answer is there:
    // Initialize() fills it, appending, making and removing void it, nothing else does. A web address asks each time.

    /// The status of the location. @return 0, or a failure.
    int Stat(struct stat64& out, int refresh) const;
    bool Exists(int refresh) const;
    /// Deliberately tests one bit of the mode: a socket is a file and a directory, a block device a directory.
    bool IsFile(int refresh) const;
    bool IsDirectory(int refresh) const;
    /// Always asks.
    bool CanRead(int) const;
    /// Always asks. A web address can't be written.
    bool CanWrite(int) const;

    /// Makes the directory and those that it stands in, as far as they are missing. The process's umask is zero for a
    /// moment. @return 0, also where something of that name is there; otherwise a failure.
    int MakeDir();
    /// Removes a file or a directory.
    ///
    /// A directory is emptied, and with it what stands under it when `recursive` is 1; otherwise directories in it
    /// stay, and so does it. The first failure ends the removal.
    ///
    /// The directory itself is opened by its name. From there the way down goes from open directory to open directory
    /// and never through a symbolic link: a link in the tree is removed itself, whatever it points at, and nothing that
    /// did not stand in the tree is listed or removed, also while others exchange directories for links under it. A
    /// directory that others move out of the tree while it is being emptied may still be emptied. Depth is bounded
    /// neither by descriptors nor by the stack. What is neither file nor directory, such as a pipe, is left.
    /// @return 0; VEL::StatusFailure for what is neither file nor directory; VEL::StatusNotEmpty for a directory in
    ///         which something is left; otherwise the failure of the system.
    int Remove(int recursive);
    /// Sets the permissions. @return 0, or a failure.
    int Chmod(long mode);
    /// Renames to `target`. Only local paths move: anything else is VEL::StatusFailure. The caches of both stay as they
    /// are.
    int Move(const VELSysPath& target);

    /// Stands `iterator` on the first entry of this directory. This path must outlive it.
    int GetDirectoryIterator(VELSysDirectoryIterator& iterator) const;
    VELSysDirectoryIterator Begin(int* rc) const;
    /// The entries that match `pattern`.
    VELSysDirectoryIterator Begin(const QORUnicodeString& pattern, const VELSysFNMatchOptions& options, int* rc) const;
    VELSysDirectoryIterator End() const;

    /// "/tmp".
    static int getTempDirectory(VELSysPath& out);
    /// The value of `HOME`, remembered for the life of the process. @return Of Set().
    static int getHomeDirectory(VELSysPath& out);
    /// A name that no file has, `directory` followed by an underscore and six characters; no file is made.
    /// @param prefix     Deliberately counts only when its length exceeds 255 less that of the directory, where the
    ///                   name doesn't fit any more: a short prefix has no effect, a long one fails.
    /// @param directory  Null means "/tmp/". No slash is added behind it.
    /// @return 0; VEL::StatusFailure for a name beyond 254 bytes and for a directory that can't be searched.
    static int GetTempFilePath(VELSysPath& out, const QORUnicodeString* prefix, const VELSysPath* directory);
    static int getTempFilePath(VELSysPath& out, const QORSysTSUnicodeString* prefix, const VELSysPath* directory);

    /// Writes the Info line "<label> : Path is <text>" on the trace "VELSysPath".
    void PrintInTrace(const char* label, int) const;

private:
    friend struct VEL::internal::PathAccess;

    VELSysPathImpl* _impl; ///< Owned; null where there was no memory.
};

// As the members, with the text on the left.
QORSYSTS_EXPORT bool operator==(const QORUnicodeString& text, const VELSysPath& path);
QORSYSTS_EXPORT bool operator==(const char* text, const VELSysPath& path);
QORSYSTS_EXPORT bool operator==(const unsigned short* text, const VELSysPath& path);

/// VELSysPath::getHomeDirectory().
QORSYSTS_EXPORT int VELSysPathHome(VELSysPath& out);
/// VELSysPath::getTempDirectory().
QORSYSTS_EXPORT int VELSysPathTemporary(VELSysPath& out);
/// The directory of the user's documents, which is the home directory. @return Of VELSysPath::Set().
QORSYSTS_EXPORT int VELSysPathDocument(VELSysPath& out);
/// The last component as stem, "." and extension.
/// @return 0, or the failure of the four-way split, which leaves `name` empty: a name without extension fails.
QORSYSTS_EXPORT int VELSysPathBaseName(const VELSysPath& path, QORUnicodeString& name);

// Well-known directories as native text. Each is found out once and stays the library's for the life of the process.

/// `HOME`; null while it isn't set.
QORSYSTS_EXPORT const char* VELSysPathImplGetHomeDirectoryPathA();
/// `HOME`, remembered by itself.
QORSYSTS_EXPORT const char* VELSysPathImplGetDocumentDirectoryPathA();
/// The first directory of `QORInstallPath`, a list at ":"; null while it isn't set or begins with ":".
QORSYSTS_EXPORT const char* VELSysPathImplGetResourceDirectoryPathA();
/// "/tmp", whatever the environment says.
QORSYSTS_EXPORT const char* VELSysPathImplGetTemporaryDirectoryPathA();
