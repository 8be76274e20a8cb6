/// @file
/// The export macro of libQORSysMultiThreading.
///
/// The library is built with hidden visibility: a name is part of its binary interface exactly when its declaration
/// carries this macro.
#pragma once

#define QORSYSMT_EXPORT __attribute__((visibility("default")))

/// A member of an exported class that only the library itself calls.
#define QORSYSMT_PRIVATE __attribute__((visibility("hidden")))
