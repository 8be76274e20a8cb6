/// @file
/// The report of a programming error.
#pragma once

#include "QORSysMTExport.h"

/// Reports a programming error on standard error, in one line with the code and the address of the caller, and
/// returns. Nothing is allocated and `errno` is kept, so it may be called where memory has run out.
/// @param code  Stands in the report; it decides nothing.
QORSYSMT_EXPORT void VELDebugBreak(int code);
