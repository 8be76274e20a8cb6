// What loading the library does. All of it stands in this one file, since the order of its steps is fixed: the string
// checks, the locale lock, then the participants of language, trace and context. Registering only records functions;
// no participant runs at load.

#include "QORInterUnicodeString.h"
#include "QORResourceLock.h"
#include "SessionState.h"
#include "UpwardCalls.h"
#include "VELSysLifeCycle.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <memory>

namespace {

constexpr VELSysLifeCyclePriorFlag LanguagePriority = static_cast<VELSysLifeCyclePriorFlag>(0xA00A);
constexpr VELSysLifeCyclePriorFlag TracePriority = static_cast<VELSysLifeCyclePriorFlag>(0xA002);
constexpr VELSysLifeCyclePriorFlag ContextPriority = static_cast<VELSysLifeCyclePriorFlag>(0xA003);

/// Life-cycle state code of the end.
constexpr int Terminate = 0;

/// 1 when this library made the trace manager, and so destroys it. Atomic, since sessions may begin on several threads.
constinit std::atomic<int> s_traceOwnership{-1};

int ComputeStringChecks() {
    VEL::internal::ClearEmptyView();
    const char* stage = std::getenv("QORDevelopmentStage");
    return stage != nullptr && std::strcmp(stage, "FALSE") == 0 ? 0 : 1;
}

void NoSystemEvent(int) {}

void StartLanguage(void*) {
    InitNLSCore(VEL::internal::PreferredLanguage().get(), false);
}

void LanguageState(int) {}

void StartTrace(void*) {
    int ownership = 0;
    VELSysTraceCreateManager(nullptr, &ownership);
    s_traceOwnership = ownership;
}

void TraceState(int state) {
    if (state == Terminate && s_traceOwnership == 1) {
        VELSysTraceDestroyManager();
    }
}

// The context participant does the same in all three places: whichever dispatch comes first, the manager then exists.
void StartContext(void*) {
    VEL::internal::EnsureMainContext();
}

void EnsureContext(int) {
    VEL::internal::EnsureMainContext();
}

/// Registers a participant while the library loads.
struct Participant {
    Participant(VELSysLifeCyclePriorFlag priority, void (*start)(void*), void (*state)(int), void (*event)(int)) {
        VELSysLifeCycleGlobalFactoryPrivate(priority, start, state, event);
    }
};

} // namespace

// Constant-initialised to the default first, for strings that are made before this file's initialisers run.
constinit int VEL::internal::s_StringChecksEnabled = 1;

namespace {
[[maybe_unused]] const int s_stringChecksAreComputed = VEL::internal::s_StringChecksEnabled = ComputeStringChecks();
}

QORResourceLock VEL::internal::s_localeLock(1);

namespace {
[[maybe_unused]] const bool s_languageCoreIsPrepared = (VEL::internal::PrepareNLSCore(), true);
const Participant s_language(LanguagePriority, StartLanguage, LanguageState, NoSystemEvent);
} // namespace

std::shared_ptr<const std::locale> VEL::internal::s_standardLocale;

namespace {
const Participant s_trace(TracePriority, StartTrace, TraceState, NoSystemEvent);
const Participant s_context(ContextPriority, StartContext, EnsureContext, EnsureContext);
} // namespace
