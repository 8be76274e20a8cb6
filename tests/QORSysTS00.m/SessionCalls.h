/// @file
/// Records the calls that the session frame makes, from the first static initialiser on.
#pragma once

#include "VELSysLifeCycle.h"

#include <string>
#include <vector>

namespace SessionCalls {

/// A participant as the library registered it.
struct Participant {
    unsigned int priority;
    void (*start)(void*);
    void (*state)(int);
    void (*event)(int);
};

/// The calls so far, one text each.
std::vector<std::string> Log();
void Clear();
/// Participants in the order of registration.
std::vector<Participant> Participants();

/// What the recorded functions answer.
inline int dispatchResult = 0;
/// What VELSysTraceCreateManager() stores in the ownership word; negative leaves it alone.
inline int traceIsCreated = -1;
/// Runs inside VELSysTSSetArg().
inline void (*insideSetArg)() = nullptr;
/// True while `new` without exceptions finds no memory.
inline bool memoryIsOut = false;

} // namespace SessionCalls
