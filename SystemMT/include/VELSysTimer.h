/// @file
/// The time of day.
#pragma once

#include "QORSysMTExport.h"

#include <sys/time.h>

/// Reads the wall clock. It may be called by any thread at once.
/// @param time  Receives the seconds since 1970-01-01T00:00:00Z and the microseconds within the second, 0 to 999999.
/// @return 0, or -1 when `time` is null or the platform has no time.
QORSYSMT_EXPORT int VELSysTimerGetTimeOfDay(timeval* time);
