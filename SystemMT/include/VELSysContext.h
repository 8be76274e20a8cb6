/// @file
/// The current application context of the process.
#pragma once

#include "QORSysMTExport.h"

/// Makes `context` the current context of the whole process, for every thread. The context stays its caller's, who
/// keeps it alive while it is current. What was written to it before is seen by whoever gets it.
/// @return 0, or -1, with nothing changed, when `context` is null: `VELSysContextFinalize` is the way to have none.
QORSYSMT_EXPORT int VELSysContextSetCurrentContext(void* context);

/// @return The context set last, by whatever thread, or null when there is none.
QORSYSMT_EXPORT void* VELSysContextGetCurrentContext();

/// Ends the use of the current context: there is none afterwards, until the next one is set. Nothing is destroyed.
/// @return 0.
QORSYSMT_EXPORT int VELSysContextFinalize();
