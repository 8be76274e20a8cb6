/// @file
/// The life-cycle registry, its dispatcher, and the binding of optional libraries by name.
///
/// Two kinds of participant stand in one registry: those that libraries register when they are loaded, under a priority
/// flag, and the modules, which register under a name and may leave again. The dispatcher calls them
///
/// - by rising priority flag, and for equal flags in the order of registration, at initialisation, state changes and
///   system calls; modules come behind all priority flags;
/// - in exactly the opposite order at finalisation.
///
/// The registry is usable during static initialisation and until the process has ended. All functions may be called by
/// any thread at once and from within a callback. No lock is held while a callback runs, so a callback may wait for
/// another thread that registers or dispatches.
#pragma once

#include "QORSysMTExport.h"

/// The place of a participant among the others. Any value serves.
enum VELSysLifeCyclePriorFlag : unsigned int {};

/// A registered participant. Its contents belong to the registry.
struct VELSysLifeCycleStruct;

/// Registers a participant for the rest of the process. None of its functions is called by this; a participant that is
/// registered while a dispatch runs is reached by that dispatch if its place is still to come.
/// @param priority      Its place.
/// @param onInitialize  Called with null at each initialisation, or null.
/// @param onState       Called with the code of each state change, and with 0 (terminate) at finalisation, or null.
/// @param onSystemCall  Called with the code of each system call, or null.
/// @return 0, or -1 when memory is short.
QORSYSMT_EXPORT int VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag priority, void (*onInitialize)(void*),
                                                        void (*onState)(int), void (*onSystemCall)(int));

/// Registers a module. The three functions are as above.
/// @param name     Name of the module, copied; null counts as empty. Two modules may bear one name.
/// @param version  Version of the module, kept with its record.
/// @return The record, which stays the registry's and is valid until `VELSysLifeCycleGlobalFactoryInternalCheck`; null
///         when memory is short.
QORSYSMT_EXPORT VELSysLifeCycleStruct*
VELSysLifeCycleGlobalFactoryInternal(const char* name, void (*onInitialize)(void*), void (*onState)(int),
                                     void (*onSystemCall)(int), unsigned short version);

/// Takes a module out of the registry. When it answers 0, none of the module's functions runs on another thread and
/// none will be called again, so the module may be unloaded. Called from within a function of the module it does not
/// wait for that very call.
///
/// The wait for functions on other threads is not begun, and the answer is -1, when the calling thread would wait for
/// itself, because such a thread waits for it: in this very call for another module, or in a join or `Stop` of this
/// library, be it through other threads. The module has left all the same and none of its functions will be called
/// again, but it is not to be unloaded before that function has returned. A wait of another kind, such as a lock or a
/// join of the platform's own, is not known here: no function waits in that way for a thread that takes its module out.
/// @return 0, or -1 when `module` is null or not registered as a module, or a function of it still runs as above.
QORSYSMT_EXPORT int VELSysLifeCycleGlobalFactoryInternalCheck(VELSysLifeCycleStruct* module);

/// Calls the first function of all participants with null, by rising priority. Each call dispatches anew.
/// @return 0.
QORSYSMT_EXPORT int VELSysLifeCycleDispatchInitialization();

/// Calls the second function of all participants with 0 (terminate), by falling priority. The registry stays as it is.
/// @return 0.
QORSYSMT_EXPORT int VELSysLifeCycleDispatchFinalization();

/// Calls the second function of all participants with `state`, by rising priority.
/// @return 0.
QORSYSMT_EXPORT int VELSysLifeCycleDispatchStateChange(int state);

/// Calls the third function of all participants with `call`, by rising priority.
/// @return 0.
QORSYSMT_EXPORT int VELSysLifeCycleDispatchSystemCall(int call);

/// Gives up what the library holds of the processor for the process, at the end of a session.
///
/// The library keeps no threads in reserve: each thread belongs to a `VELSysThread` or `VELSysConsumer` and ends with
/// it. There is therefore nothing to give up, every object stays usable, and the call may be repeated.
/// @param code  The code that the session ends with; not read.
/// @return 0.
QORSYSMT_EXPORT int VELSysFinalReleaseCPUResourceManager(int code);

/// Loads a library by name. The name is resolved as by `QORThrLibraryManager::GetFunctionAddress`.
/// @param library  Name of the library.
/// @param handle   Receives the handle, or null on failure.
/// @return 0, or -1 when an argument is null or there is no such library.
QORSYSMT_EXPORT int VELSysLifeCycleDynamicLoad(const char* library, void** handle);

/// @param handle    From `VELSysLifeCycleDynamicLoad`.
/// @param function  Name of an exported function.
/// @return Its address, good until the library is unloaded; null when there is none or an argument is null.
QORSYSMT_EXPORT void* VELSysLifeCycleDynamicGetFunction(void* handle, const char* function);

/// Gives back one `VELSysLifeCycleDynamicLoad`. The handle is not used again.
/// @return 0, or -1 when the handle is null or the platform refuses it.
QORSYSMT_EXPORT int VELSysLifeCycleDynamicUnload(void* handle);
