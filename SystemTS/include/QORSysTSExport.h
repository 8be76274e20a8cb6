/// @file
/// The export macro of libQORSysTS.
///
/// The library is built with hidden visibility: a name is part of its binary interface exactly when its declaration
/// carries the export macro, or belongs to a class that does and is not marked as private.
#pragma once

#define QORSYSTS_EXPORT __attribute__((visibility("default")))

/// Keeps a private operation of an exported class out of the binary interface.
#define QORSYSTS_PRIVATE __attribute__((visibility("hidden")))
