/// @file
/// Start and end of a session.
///
/// No class of this library needs a session: whatever has state makes it on first use, and a process may build strings
/// before any of these calls. A session brings the facilities up together and takes them down in order.
#pragma once

#include "QORSysTSExport.h"
#include "VELSysHashMapString.h"

/// Dispatches initialisation to all registered participants. The arguments are ignored.
/// @return The dispatcher's result. A second call dispatches a second time.
QORSYSTS_EXPORT int QORSysNewSessionTS(int, int, char const**);

/// Ends the session: finalisation is dispatched (which destroys the trace manager when this library made it), the
/// companion's processor resources are released, the calling thread's string pool is drained and switched off, and
/// conversion support ends. Strings go on working, without the pool and without conversions that need a converter.
/// A later session does not switch the pool on again; VELStringInit() does.
/// @param code  Given to every step that takes one.
/// @return 0, whatever the steps did.
QORSYSTS_EXPORT int QORSysEndSessionTS(int code);

/// Applies settings, then dispatches initialisation. The one key read is "sys.nls.core.preferredlang": the preferred
/// language of the process; when it is there, the language core is brought up anew in it.
/// @return 0, or -1 when the dispatcher's result was not 0.
QORSYSTS_EXPORT int VELSystemInit(VELSysHashMapString const& settings);

/// Flags of VELSysMainInitialize().
enum VELSysMainFlag : int {
    VELSysMainStoreArguments = 1, ///< Keep the command line in the argument store.
    VELSysMainStartWatchDog = 2,  ///< Start the watchdog.
};

/// Called by an application's `main`: stores the flags, then does what they ask for, the command line first. A second
/// call does the same again. May be called on several threads at once.
QORSYSTS_EXPORT void VELSysMainInitialize(int argc, char** argv, int flags);

/// Undoes VELSysMainInitialize(); without one before it, does nothing. The stored command line stays readable.
QORSYSTS_EXPORT void VELSysMainFinalize();
