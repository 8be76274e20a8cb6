/// @file
/// A named trace of the audit.
#pragma once

#include "QORSysTS.h"

/// The trace of a name for as long as this object lives; empty unless the configuration of the run asks for it.
class AuditTrace {
public:
    explicit AuditTrace(const char* name) { VELSysTraceCreate__(&_handle, name); }
    AuditTrace(const AuditTrace&) = delete;
    AuditTrace& operator=(const AuditTrace&) = delete;
    ~AuditTrace() { VELSysTraceDestroy__(&_handle); }

    explicit operator bool() const { return _handle != nullptr; }
    VELSysTrace* operator->() const { return static_cast<VELSysTrace*>(_handle); }

private:
    void* _handle = nullptr;
};
