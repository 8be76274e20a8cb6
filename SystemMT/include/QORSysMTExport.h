/// @file
/// The export macro of libQORSysMultiThreading.
///
/// The library is built with hidden visibility: a name is part of its binary interface exactly when its declaration
/// carries this macro.
#pragma once

#define QORSYSMT_EXPORT __attribute__((visibility("default")))
