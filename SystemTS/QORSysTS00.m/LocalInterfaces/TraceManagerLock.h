/// @file
/// The manager of the traces, held while it is used.
#pragma once

#include "VELSysTraceManager.h"

namespace VEL::internal {

/// Locks the manager, so that no other thread uses or destroys it. A thread may hold several of these; when it destroys
/// the manager meanwhile, that is in effect at once but the object goes with the last of them.
class TraceManagerLock {
public:
    TraceManagerLock();
    TraceManagerLock(const TraceManagerLock&) = delete;
    TraceManagerLock& operator=(const TraceManagerLock&) = delete;
    ~TraceManagerLock();

    /// False when there is no manager.
    explicit operator bool() const { return _manager != nullptr; }
    VELSysTraceManagerBase* operator->() const { return _manager; }
    VELSysTraceManagerBase* Get() const { return _manager; }

private:
    VELSysTraceManagerBase* _manager;
    int _error;
};

} // namespace VEL::internal
