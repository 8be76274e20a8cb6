/// @file
/// How the generated containers and their engines declare the members that callers inline.
#pragma once

#include "QORSysTSExport.h"

// Such members are also names of the library; the source file that owns them says so by defining
// QORSYSTS_EMIT_CONTAINER_MEMBERS. The export stands in both forms: one object file of the library that held a hidden
// copy would hide the name altogether.
#ifdef QORSYSTS_EMIT_CONTAINER_MEMBERS
#define QORSYSTS_CONTAINER_INLINE __attribute__((used)) QORSYSTS_EXPORT inline
#else
#define QORSYSTS_CONTAINER_INLINE QORSYSTS_EXPORT inline
#endif
