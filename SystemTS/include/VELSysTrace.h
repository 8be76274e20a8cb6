/// @file
/// Named traces.
///
/// A trace is off unless the configuration of the run names it, and a trace that is off costs one test of a handle:
///
/// @code
/// static void* s_trace = nullptr;
/// VELSysTraceCreate__(&s_trace, "LifeCycle"); // once; s_trace stays null when nobody asks for this trace
/// if (auto* trace = static_cast<VELSysTrace*>(s_trace)) {
///     trace->Info("%d callbacks", count);
/// }
/// @endcode
///
/// Where a trace goes and what switches it on stands in VELSysTraceManager.h. Each line is written and flushed before
/// the call returns.
#pragma once

#include "QORSysTSExport.h"

#include <atomic>
#include <cstdarg>

class VELSysTraceObjBase;
class VELSysQORTrace;

/// Not looked at.
enum QORTraMode : int { QORTraModeDefault = 0 };

/// Elements of a line, as bits.
enum VELSysTraceElement : unsigned int {
    VELSysTraceTimeStamp = 1,
    VELSysTraceName = 2,
    VELSysTraceCode = 4,
    VELSysTraceThread = 16,
};

/// The level of a line.
enum VELSysTraceLevel : int {
    VELSysTraceNoLevel = 0,
    VELSysTraceInfo = 1,
    VELSysTraceDebug = 2,
    VELSysTraceWarning = 3,
    VELSysTraceError = 4,
};

/// What one line looks like.
struct VELSysTraceLineOptions {
    unsigned int options;   ///< The elements to print, of VELSysTraceElement.
    int level;              ///< Of VELSysTraceLevel; another value has no mark.
    int code;               ///< The caller's code.
    int line;               ///< Line of the source.
    const char* tag;        ///< Text of the name element.
    const char* terminator; ///< Text behind the message.
    const char* file;       ///< Source file, null for none.
};

static_assert(sizeof(VELSysTraceLineOptions) == 40);

/// A trace, bound to the destination that the configuration gives its name.
///
/// Lines may be written by any thread at once and stay whole. The functions answer the result of
/// InternalMessagePrint(), and -1 for a null format. An object may outlive the manager, and writes nothing then.
class QORSYSTS_EXPORT VELSysQORTrace {
public:
    /// Binds to the trace `name`, "COMMON" for null and the empty name. The other arguments have no effect.
    VELSysQORTrace(const char* name, const char* second, QORTraMode mode, const char* destination, int last);
    VELSysQORTrace(const VELSysQORTrace&) = delete;
    VELSysQORTrace& operator=(const VELSysQORTrace&) = delete;
    virtual ~VELSysQORTrace();

    // Lines with the elements of the line options, none at first, and without a level; written also while the trace is
    // not active. `format` is that of `printf`.

    /// A text without a line feed.
    int TraPrint(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int TraPrint(int code, const char* format, ...) __attribute__((format(printf, 3, 4)));
    /// A text and a line feed.
    int TraPrintNL(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int TraPrintNL(int code, const char* format, ...) __attribute__((format(printf, 3, 4)));
    /// TraPrint() with `text` as the format, deliberately.
    int TraPut(const char* text);
    int TraPut(int code, const char* text);
    /// TraPrint() of the text, a blank and the value.
    int TraPut(const char* text, int value);
    int TraPut(int code, const char* text, int value);
    /// TraPut() by way of TraPrintNL().
    int TraPutLN(const char* text);
    int TraPutLN(int code, const char* text);
    int TraPutLN(const char* text, int value);
    int TraPutLN(int code, const char* text, int value);

    /// Writes one line.
    /// @param options  Its looks.
    /// @return What the destination answers, usually 0. -1 when nothing is written: without format, options or manager,
    ///         when the trace is bound to nothing, its destination not enabled, the code out of the destination's
    ///         range, or the text empty.
    int InternalMessagePrint(VELSysTraceLineOptions* options, const char* format, std::va_list arguments);

    /// Binds to the destination that has the name, and makes the manager if there is none. May be called again: a name
    /// element that showed the old name shows the new one, and the destinations' counts of users stay as they are.
    /// @param mode  Kept by the destination, and not looked at.
    /// @return 0. -1 for null, with nothing changed; -1 when no destination has the name, and the trace is then neither
    ///         active nor enabled.
    int Build(const char* name, const char* destination, unsigned int mode);

protected:
    /// Whether lines are to be written.
    bool _IsOn() const {
        // Relaxed: nothing else hangs on the switches.
        return _isActive.load(std::memory_order_relaxed) && _isEnabled.load(std::memory_order_relaxed);
    }

    std::atomic<bool> _isActive{false};
    std::atomic<bool> _isEnabled{false};
    const char* _name = nullptr;                ///< The destination's.
    VELSysTraceObjBase* _destination = nullptr; ///< The manager's; null when there is none any more.
    VELSysTraceLineOptions _line = {};          ///< What lines start from; a line fills in a copy.

private:
    friend void VELSysTraceActivate__(VELSysQORTrace* trace, int on);
    friend class VELSysTraceManagerBase;
    struct Layout;

    QORSYSTS_PRIVATE int _Bind(const char* name, unsigned int mode);
    QORSYSTS_PRIVATE int _Print(const char* terminator, int code, const char* format, std::va_list arguments);
};

/// The trace of the usual call site: lines with a time stamp, the name, the thread, and a code when there is one.
///
/// All answer -1, and write nothing, while the trace is not active or not enabled and for a null format.
class QORSYSTS_EXPORT VELSysTrace : protected VELSysQORTrace {
public:
    explicit VELSysTrace(const char* name);
    ~VELSysTrace() override;

    int Info(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int Debug(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int Warning(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int Info(int code, const char* format, ...) __attribute__((format(printf, 3, 4)));
    int Debug(int code, const char* format, ...) __attribute__((format(printf, 3, 4)));
    int Warning(int code, const char* format, ...) __attribute__((format(printf, 3, 4)));
    int InfoV(const char* format, std::va_list arguments);
    int DebugV(const char* format, std::va_list arguments);
    int WarningV(const char* format, std::va_list arguments);

    /// A line with a source position.
    /// @param file  Printed as it is; null for none.
    int Error(const char* file, int line, const char* format, ...) __attribute__((format(printf, 4, 5)));
    int Error(const char* file, int line, int code, const char* format, ...) __attribute__((format(printf, 5, 6)));
    int ErrorV(const char* file, int line, const char* format, std::va_list arguments);

private:
    friend void VELSysTraceCreate__(void** handle, const char* name);

    struct Position;
    QORSYSTS_PRIVATE int _Write(VELSysTraceLevel level, const Position& position, int code, const char* format,
                                std::va_list arguments);
};

/// Makes the trace `name` and stores it in `*handle`, which is to be null before; it stays as it was when the
/// configuration doesn't name the trace. Several threads may do this with one handle at once. Null does nothing.
QORSYSTS_EXPORT void VELSysTraceCreate__(void** handle, const char* name);

/// Switches a trace on or off. Null does nothing.
QORSYSTS_EXPORT void VELSysTraceActivate__(VELSysQORTrace* trace, int on);

/// Takes the trace out of `*handle`, which becomes null, and deletes it.
QORSYSTS_EXPORT void VELSysTraceDestroy__(void** handle);
