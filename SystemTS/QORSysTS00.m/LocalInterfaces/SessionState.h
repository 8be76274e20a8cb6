/// @file
/// Process-wide state of the session frame that other modules read.
#pragma once

#include <locale>
#include <memory>

class QORResourceLock;

namespace VEL::internal {

/// Non-zero while narrow text is checked and warned about. Set at load, overwritten by VELStringInit(); a plain word
/// that is read without a lock.
extern int s_StringChecksEnabled;

/// Guards what touches the C locale of the whole process. Made at load, destroyed at exit.
extern QORResourceLock s_localeLock;

/// The language core's shared standard-library locale; read and written with the atomic shared-pointer operations.
extern std::shared_ptr<const std::locale> s_standardLocale;

} // namespace VEL::internal
