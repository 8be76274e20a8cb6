/// @file
/// Where traces go, and what switches them on.
///
/// A process has one manager with up to 16 destinations, and each destination has up to 64 trace names. The names that
/// the configuration gives are the traces that are on, and "COMMON", which always goes to standard output.
///
/// A configuration is a list of items; each names a destination, the traces that go there, and options. They are taken
/// from the text that the creator of the manager gives, else from the environment variable "VELSysTrace", else from
/// option files; VELSysTraceOptions.h has their grammar. For instance
///
/// @code
/// VELSysTrace="--name LifeCycle Path --file run.txt --local-time" ./program
/// @endcode
///
/// writes two traces to `<base>/VELSysTrace/D<date>_T<time>_P<process>_I/run.txt`, where `<base>` is "QORTraceDir",
/// "QORTemp", the working directory or "/tmp".
#pragma once

#include "QORMutex.h"
#include "QORSysTSExport.h"
#include "VELSysTrace.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>

class VELSysTraceRotate;

namespace VEL::internal {
class TraceManagerLock;
struct TraceTable;
} // namespace VEL::internal

/// Options of a destination. Other numbers do nothing.
enum VELSysTraceOption : int {
    VELSysTraceOptionActive = 4,       ///< Whether new traces are active: not 0.
    VELSysTraceOptionMaximumCode = 8,  ///< Lines have codes below this, at most 1024.
    VELSysTraceOptionMinimumCode = 9,  ///< Lines have codes from this on, at least 0.
    VELSysTraceOptionMemory = 10,      ///< A ring on a mapped file, of so many bytes, at most 8192; 0 is refused.
    VELSysTraceOptionEnabled = 11,     ///< Whether lines are written: not 0.
    VELSysTraceOptionLocalTime = 12,   ///< Time stamps in local time instead of UTC: not 0.
    VELSysTraceOptionRotateSize = 13,  ///< Bytes of a file before it is rotated away.
    VELSysTraceOptionRotateCount = 14, ///< How many files are kept beside the present one.
};

/// What a destination is.
enum VELSysTraceKind : unsigned int {
    VELSysTraceKindStream = 0, ///< A standard stream, a file or a rotated file.
    VELSysTraceKindMemory = 1, ///< A ring on a mapped file.
    VELSysTraceKindSystem = 2, ///< Nothing is written.
    VELSysTraceKindNone = 255,
};

/// A ring of text on a mapped file, which outlives a process that is killed. It has no header: the oldest text is
/// overwritten without a mark.
class QORSYSTS_EXPORT VELSysTraceMemoryObj {
public:
    VELSysTraceMemoryObj() = default;
    VELSysTraceMemoryObj(const VELSysTraceMemoryObj&) = delete;
    VELSysTraceMemoryObj& operator=(const VELSysTraceMemoryObj&) = delete;
    ~VELSysTraceMemoryObj();

    /// Maps `path`, which is made when it is missing, and clears it.
    /// @param size  Bytes of the ring.
    /// @return 0, or -1.
    int Open(const char* path, unsigned long size);
    /// Adds text, from the start again where the ring ends. @return 0; -1 without text or mapping.
    int Write(const char* text);

private:
    struct Layout;

    unsigned long _size = 0;
    unsigned long _left = 0; ///< Bytes before the end of the ring.
    char* _base = nullptr;
    char* _position = nullptr;
};

/// A destination. Its manager's mutex covers all of it.
class QORSYSTS_EXPORT VELSysTraceObjBase {
public:
    static constexpr int NameSlots = 65;
    static constexpr int MaximumCode = 1024;
    static constexpr std::size_t NameSize = 64;
    static constexpr std::size_t BufferSize = 8192;

    VELSysTraceObjBase();
    VELSysTraceObjBase(const VELSysTraceObjBase&) = delete;
    VELSysTraceObjBase& operator=(const VELSysTraceObjBase&) = delete;
    virtual ~VELSysTraceObjBase();

    /// @return 0 when it can be written to.
    virtual int Open() = 0;

protected:
    friend class VELSysTraceManagerBase;
    friend class VELSysQORTrace;
    struct Layout;

    QORSYSTS_PRIVATE int _AddName(const char* name);
    QORSYSTS_PRIVATE int _AddMemory(int size);
    QORSYSTS_PRIVATE const char* _FindName(const char* name) const;
    /// Forms what stands between the level mark and the message of a line. @return Its length.
    QORSYSTS_PRIVATE std::size_t _FormPrefix(const VELSysTraceLineOptions& line);
    QORSYSTS_PRIVATE int _WriteToRing(const VELSysTraceLineOptions& line, const char* message);

    VELSysTraceKind _kind = VELSysTraceKindNone;
    unsigned int _mode = 0;
    VELSysTraceMemoryObj* _memory = nullptr; ///< Owned.
    char* _names[NameSlots] = {};            ///< From `strdup`; filled from the last slot on, the first stays empty.
    int _nameCapacity = NameSlots;
    int _nextName = NameSlots - 1;
    char _destination[NameSize] = {}; ///< "STDOUT", "STDERR", "STDOUT_COMMON" or the name of a file.
    int _maximumCode = MaximumCode;
    int _minimumCode = 0;
    unsigned int _memorySize = 0; ///< Not 0 for a ring.
    bool _isActive = true;        ///< What new traces start with.
    bool _isEnabled = true;
    bool _isOpen = false;
    std::atomic<unsigned int> _users{0};
    std::time_t _time = 0;
    char _prefix[BufferSize] = {};
    char _work[BufferSize] = {};
    bool _isLocalTime = false;
    unsigned long _rotateSize = 0;
    unsigned long _rotateCount = 0;
};

/// A standard stream, a file, a rotated file or a ring.
class QORSYSTS_EXPORT VELSysTraceStreamObj : public VELSysTraceObjBase {
public:
    static constexpr std::size_t PathSize = 32768;

    VELSysTraceStreamObj() = default;
    /// Closes the file. A file without content goes, and its directory when there is no file left in it.
    ~VELSysTraceStreamObj() override;

    int Open() override;

private:
    friend class VELSysTraceManagerBase;
    struct Layout;

    QORSYSTS_PRIVATE int _WriteLine(const VELSysTraceLineOptions& line, const char* message);
    QORSYSTS_PRIVATE int _WriteToFile(std::string_view mark, std::string_view prefix, std::string_view message,
                                      std::string_view terminator);
    QORSYSTS_PRIVATE int _WriteToRotator(const char* mark, const char* message, const char* terminator);
    QORSYSTS_PRIVATE int _OpenStandardStream(std::FILE* stream, const char* name);
    QORSYSTS_PRIVATE int _OpenFile();
    QORSYSTS_PRIVATE int _MakeDirectory();
    QORSYSTS_PRIVATE int _OpenRotated();
    QORSYSTS_PRIVATE int _Close();

    std::FILE* _file = nullptr;
    char* _fileName = nullptr; ///< From `strdup`.
    VELSysTraceRotate* _rotator = nullptr;
    char* _directory = nullptr; ///< From `strdup`.
    char _path[PathSize] = {};
};

/// A destination that takes nothing: it can't be opened.
class QORSYSTS_EXPORT VELSysTraceSystemObj : public VELSysTraceObjBase {
public:
    VELSysTraceSystemObj() = default;
    ~VELSysTraceSystemObj() override;
    /// @return -1.
    int Open() override;
};

/// The destinations of the process.
class QORSYSTS_EXPORT VELSysTraceManagerBase {
public:
    static constexpr int Slots = 16;
    static constexpr std::size_t MessageSize = 4096;

    VELSysTraceManagerBase();
    VELSysTraceManagerBase(const VELSysTraceManagerBase&) = delete;
    VELSysTraceManagerBase& operator=(const VELSysTraceManagerBase&) = delete;
    virtual ~VELSysTraceManagerBase();

protected:
    friend class VELSysQORTrace;
    friend class VEL::internal::TraceManagerLock;
    friend int VELSysTraceCreateManager(const char* options, int* created);
    friend void VELSysTraceDestroyManager();
    friend int VELSysTraceManagerAddStreamTrace(const char* destination, const char* name, unsigned long rotateCount,
                                                unsigned long rotateSize);
    friend int VELSysTraceManagerAddOptionToTrace(const char* destination, int option, int value);
    friend struct VEL::internal::TraceTable;
    struct Layout;
    struct Forking;

    QORSYSTS_PRIVATE static std::unique_ptr<VELSysTraceManagerBase> _Make(const char* options);
    QORSYSTS_PRIVATE static int _Publish(std::unique_ptr<VELSysTraceManagerBase> made, int* created);
    /// Makes the table of destinations from `options`, the variable or the option files. @return False without memory.
    QORSYSTS_PRIVATE bool _BuildTable(const char* options);
    QORSYSTS_PRIVATE int _OpenAll();
    QORSYSTS_PRIVATE int _AddTrace(int kind, const char* destination, const char* name);
    QORSYSTS_PRIVATE int _AddStreamTrace(const char* destination, const char* name, unsigned long rotateCount,
                                         unsigned long rotateSize);
    QORSYSTS_PRIVATE int _AddOption(const char* destination, int option, int value);
    QORSYSTS_PRIVATE VELSysTraceObjBase* _Find(const char* destination) const;
    QORSYSTS_PRIVATE int _Bind(VELSysQORTrace& trace, const char* name, unsigned int mode);
    QORSYSTS_PRIVATE static void _AddUser(const VELSysQORTrace& trace);
    QORSYSTS_PRIVATE static void _Unbind(VELSysQORTrace& trace);
    QORSYSTS_PRIVATE static void _UnbindAll();
    QORSYSTS_PRIVATE int _Write(VELSysTraceObjBase& destination, const VELSysTraceLineOptions& line, const char* format,
                                std::va_list arguments);

    int _slotCount = 0;
    VELSysTraceObjBase** _slots = nullptr;
    QORMutex _mutex{0, 1, 0};
    char _message[MessageSize] = {};
};

/// The manager as a process has it.
class QORSYSTS_EXPORT VELSysTraceManager : public VELSysTraceManagerBase {
public:
    VELSysTraceManager() = default;
    ~VELSysTraceManager() override;
};

/// Makes the manager, unless there is one.
/// @param options  A configuration item, or null for none.
/// @param created  Becomes 1 when this call made it; may be null.
/// @return 0; -1 when a destination of the configuration can't be opened, and without memory, where none is made.
QORSYSTS_EXPORT int VELSysTraceCreateManager(const char* options, int* created);

/// Destroys the manager with its destinations. Traces that are left write nothing from then on.
QORSYSTS_EXPORT void VELSysTraceDestroyManager();

/// Has the trace `name` go to a stream or file, from now on: traces that were made before stay as they are.
/// @param rotateCount  With `rotateSize`, rotates the file; 0 for none.
/// @param rotateSize   In bytes; 0 for none.
/// @return 0; -1 when that can't be done, and without a manager.
QORSYSTS_EXPORT int VELSysTraceManagerAddStreamTrace(const char* destination, const char* name,
                                                     unsigned long rotateCount, unsigned long rotateSize);

/// Changes an option of a destination.
/// @param option  Of VELSysTraceOption.
/// @return 0, also for a number that does nothing; -1 when there is no such destination, without a manager, and for a
///         ring of 0 bytes.
QORSYSTS_EXPORT int VELSysTraceManagerAddOptionToTrace(const char* destination, int option, int value);

/// The directory in which each process makes its own for its trace files; it is made when it is missing.
/// @param path  Receives it.
/// @param size  Bytes of `path`.
/// @return 0; -1 for null, for a directory that can't be had, and when there is too little room.
QORSYSTS_EXPORT int VELSysTraceGetDestinationDirectoryA(char* path, std::size_t size);

/// Appends `addition` to `text`, as far as `size` bytes hold it with a terminator.
/// @return The end of the text; null for null.
QORSYSTS_EXPORT char* VELSysTraceStrFastCat(char* text, std::size_t size, const char* addition);

/// Whether a directory of trace files belongs to the process `pid`, by its name "D..._P<pid>_I".
/// @return 0 when it does, otherwise -1.
QORSYSTS_EXPORT int VELSysTraceFilterNameByPid(const char* name, int pid);
