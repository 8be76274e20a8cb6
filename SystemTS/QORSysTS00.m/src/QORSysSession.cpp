#include "QORSysSession.h"

#include "SessionState.h"
#include "UpwardCalls.h"
#include "VELString.h"
#include "VELSysIConvTSWrap.h"
#include "VELSysLifeCycle.h"
#include "VELSysTSArg.h"
#include "WithdrawableMutex.h"

#include <atomic>
#include <mutex>
#include <new>
#include <utility>

namespace {

constexpr const char* PreferredLanguageKey = "sys.nls.core.preferredlang";

/// Taken while VELSysMainInitialize() and VELSysMainFinalize() work.
constinit VEL::internal::WithdrawableMutex s_mainMutex;

/// The last flags given. Atomic, since a withdrawn mutex and its successor may both be locked at one moment.
constinit std::atomic<int> s_mainFlags{0};

} // namespace

int QORSysNewSessionTS(int, int, char const**) {
    return VELSysLifeCycleDispatchInitialization();
}

int QORSysEndSessionTS(int code) {
    VELSysLifeCycleDispatchFinalization();
    VELSysFinalReleaseCPUResourceManager(code);
    VELStringDeInit(code);
    VELSysIConvTSWrap::sDeinitIConvTS(code);
    return 0;
}

int VELSystemInit(VELSysHashMapString const& settings) {
    if (const char* language = settings.Get(PreferredLanguageKey)) {
        DeInitNLSCore(0);
        VEL::internal::KeepPreferredLanguage(language);
    }
    // After the change, so that the language participant comes up in the preferred language.
    return VELSysLifeCycleDispatchInitialization() == 0 ? 0 : -1;
}

void VELSysMainInitialize(int argc, char** argv, int flags) {
    // On every call, also when one is published already.
    s_mainMutex.Publish();
    const VEL::internal::WithdrawableMutex::Lock lock(s_mainMutex);
    if (!lock) {
        return;
    }
    s_mainFlags = flags;
    if ((flags & VELSysMainStoreArguments) != 0) {
        VELSysTSSetArg(argc, argv);
    }
    // Read again, deliberately: the command line always comes before the watchdog.
    if ((s_mainFlags & VELSysMainStartWatchDog) != 0) {
        VELSysWatchDogInitialize(argc, const_cast<const char**>(argv), nullptr, 0);
    }
}

void VELSysMainFinalize() {
    {
        const VEL::internal::WithdrawableMutex::Lock lock(s_mainMutex);
        if (!lock) {
            return;
        }
        if ((s_mainFlags & VELSysMainStartWatchDog) != 0) {
            VELSysWatchDogFinalize();
        }
    }
    s_mainMutex.Withdraw();
}

int VELStringInit(unsigned int checks) {
    VEL::internal::s_StringChecksEnabled = static_cast<int>(checks);
    return VELStringPoolSetForCurrentThrd(1);
}

int VELStringDeInit(int) {
    VELStringPoolSetForCurrentThrd(0);
    return 0;
}
