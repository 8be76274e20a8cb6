#include "VELSysTrace.h"

#include "TraceManagerLock.h"
#include "TraceNames.h"
#include "UpwardCalls.h"

#include <cstddef>
#include <new>
#include <utility>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysQORTrace::Layout {
    static_assert(offsetof(VELSysQORTrace, _isActive) == 8 && offsetof(VELSysQORTrace, _isEnabled) == 9);
    static_assert(offsetof(VELSysQORTrace, _name) == 16 && offsetof(VELSysQORTrace, _destination) == 24);
    static_assert(offsetof(VELSysQORTrace, _line) == 32 && sizeof(VELSysQORTrace) == 72);
};
#pragma GCC diagnostic pop

/// Where in the source a line comes from.
struct VELSysTrace::Position {
    const char* file = nullptr;
    int line = 0;
};

namespace {

constexpr const char* NoTerminator = "";
constexpr const char* LineFeed = "\n";

/// All elements; two of the bits have no effect, deliberately.
constexpr unsigned int AllElements = 63;

const char* OrStandard(const char* text, const char* standard) {
    return text != nullptr && *text != '\0' ? text : standard;
}

} // namespace

VELSysQORTrace::VELSysQORTrace(const char* name, const char*, QORTraMode, const char* destination, int) {
    if (Build(OrStandard(name, VEL::internal::TraceCommonName),
              OrStandard(destination, VEL::internal::TraceCommonDestination), 0) != 0) {
        return;
    }
    if (const VEL::internal::TraceManagerLock manager; manager) {
        manager->_AddUser(*this);
    }
}

VELSysQORTrace::~VELSysQORTrace() {
    if (_name == nullptr) {
        return; // Never bound.
    }
    if (const VEL::internal::TraceManagerLock manager; manager) {
        manager->_Unbind(*this);
    }
}

int VELSysQORTrace::Build(const char* name, const char*, unsigned int mode) {
    if (name == nullptr) {
        return -1;
    }
    if (_Bind(name, mode) == 0) {
        return 0;
    }
    _isEnabled.store(false, std::memory_order_relaxed);
    _isActive.store(false, std::memory_order_relaxed);
    return -1;
}

int VELSysQORTrace::_Bind(const char* name, unsigned int mode) {
    if (const VEL::internal::TraceManagerLock manager; manager) {
        return manager->_Bind(*this, name, mode);
    }
    VELSysTraceCreateManager(nullptr, nullptr);
    const VEL::internal::TraceManagerLock manager;
    return manager ? manager->_Bind(*this, name, mode) : -1;
}

int VELSysQORTrace::InternalMessagePrint(VELSysTraceLineOptions* options, const char* format, std::va_list arguments) {
    if (format == nullptr || options == nullptr) {
        return -1;
    }
    const VEL::internal::TraceManagerLock manager;
    if (!manager || _destination == nullptr) {
        return -1;
    }
    return manager->_Write(*_destination, *options, format, arguments);
}

/// A line that the trace's options describe but for terminator and code. Deliberately it is written on a trace that is
/// not active, too.
int VELSysQORTrace::_Print(const char* terminator, int code, const char* format, std::va_list arguments) {
    VELSysTraceLineOptions line = _line;
    line.terminator = terminator;
    line.code = code;
    return InternalMessagePrint(&line, format, arguments);
}

int VELSysQORTrace::TraPrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Print(NoTerminator, 0, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysQORTrace::TraPrint(int code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Print(NoTerminator, code, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysQORTrace::TraPrintNL(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Print(LineFeed, 0, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysQORTrace::TraPrintNL(int code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Print(LineFeed, code, format, arguments);
    va_end(arguments);
    return result;
}

// The text is the format, deliberately.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

int VELSysQORTrace::TraPut(const char* text) {
    return TraPrint(text);
}

int VELSysQORTrace::TraPut(int code, const char* text) {
    return TraPrint(code, text);
}

int VELSysQORTrace::TraPutLN(const char* text) {
    return TraPrintNL(text);
}

int VELSysQORTrace::TraPutLN(int code, const char* text) {
    return TraPrintNL(code, text);
}

#pragma GCC diagnostic pop

int VELSysQORTrace::TraPut(const char* text, int value) {
    return TraPrint("%s %d", text, value);
}

int VELSysQORTrace::TraPut(int code, const char* text, int value) {
    return TraPrint(code, "%s %d", text, value);
}

int VELSysQORTrace::TraPutLN(const char* text, int value) {
    return TraPrintNL("%s %d", text, value);
}

int VELSysQORTrace::TraPutLN(int code, const char* text, int value) {
    return TraPrintNL(code, "%s %d", text, value);
}

VELSysTrace::VELSysTrace(const char* name) : VELSysQORTrace(name, nullptr, QORTraModeDefault, nullptr, 0) {
    _line.options = AllElements;
    _line.tag = _name;
    _line.terminator = LineFeed;
}

VELSysTrace::~VELSysTrace() = default;

int VELSysTrace::_Write(VELSysTraceLevel level, const Position& position, int code, const char* format,
                        std::va_list arguments) {
    if (!_IsOn()) {
        return -1;
    }
    VELSysTraceLineOptions line = _line;
    line.level = level;
    line.code = code;
    line.line = position.line;
    line.file = position.file;
    return InternalMessagePrint(&line, format, arguments);
}

int VELSysTrace::Info(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceInfo, {}, 0, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::Info(int code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceInfo, {}, code, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::InfoV(const char* format, std::va_list arguments) {
    return _Write(VELSysTraceInfo, {}, 0, format, arguments);
}

int VELSysTrace::Debug(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceDebug, {}, 0, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::Debug(int code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceDebug, {}, code, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::DebugV(const char* format, std::va_list arguments) {
    return _Write(VELSysTraceDebug, {}, 0, format, arguments);
}

int VELSysTrace::Warning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceWarning, {}, 0, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::Warning(int code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceWarning, {}, code, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::WarningV(const char* format, std::va_list arguments) {
    return _Write(VELSysTraceWarning, {}, 0, format, arguments);
}

int VELSysTrace::Error(const char* file, int line, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceError, {file, line}, 0, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::Error(const char* file, int line, int code, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = _Write(VELSysTraceError, {file, line}, code, format, arguments);
    va_end(arguments);
    return result;
}

int VELSysTrace::ErrorV(const char* file, int line, const char* format, std::va_list arguments) {
    return _Write(VELSysTraceError, {file, line}, 0, format, arguments);
}

void VELSysTraceCreate__(void** handle, const char* name) {
    if (handle == nullptr) {
        return;
    }
    auto* const made = new (std::nothrow) VELSysTrace(name);
    if (made == nullptr) {
        return;
    }
    void* none = nullptr;
    // Who sees the handle sees the trace behind it, also who comes second.
    if (!made->_isEnabled || !std::atomic_ref(*handle).compare_exchange_strong(none, made, std::memory_order_acq_rel,
                                                                               std::memory_order_acquire)) {
        delete made;
    }
}

void VELSysTraceActivate__(VELSysQORTrace* trace, int on) {
    if (trace != nullptr) {
        trace->_isActive.store(on != 0, std::memory_order_relaxed);
    }
}

void VELSysTraceDestroy__(void** handle) {
    if (handle != nullptr) {
        delete static_cast<VELSysTrace*>(std::atomic_ref(*handle).exchange(nullptr, std::memory_order_acq_rel));
    }
}

int VEL::internal::TraceInfo(void* trace, const char* format, ...) {
    if (trace == nullptr) {
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const int result = static_cast<VELSysTrace*>(trace)->InfoV(format, arguments);
    va_end(arguments);
    return result;
}
