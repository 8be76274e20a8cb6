#include "QORSysSession.h"

#include "DuplicateText.h"
#include "QORMutex.h"
#include "SessionState.h"
#include "UpwardCalls.h"
#include "VELString.h"
#include "VELSysLifeCycle.h"
#include "VELSysTSArg.h"

#include <atomic>
#include <mutex>
#include <new>
#include <utility>

using VEL::internal::s_preferredLanguage;

namespace {

constexpr const char* PreferredLanguageKey = "sys.nls.core.preferredlang";

/// The main mutex, published when there is none and withdrawn at the end, while another thread may just have read it:
/// whoever reads it holds it, and the last holder destroys it.
class MainMutex {
public:
    /// Makes a mutex and makes it the main mutex, unless there is one.
    static void Publish() {
        auto* made = new (std::nothrow) MainMutex;
        const std::lock_guard guard(s_guard);
        if (s_published == nullptr) {
            s_published = made;
        } else {
            delete made;
        }
    }

    /// Takes the main mutex back from those who come later.
    static void Withdraw() {
        const std::lock_guard guard(s_guard);
        if (s_published != nullptr) {
            std::exchange(s_published, nullptr)->Drop();
        }
    }

    /// The main mutex as one thread holds and locks it.
    class Lock {
    public:
        Lock() : _held(Hold()) {
            if (_held != nullptr) {
                _held->_mutex.Lock();
            }
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock() {
            if (_held != nullptr) {
                _held->_mutex.Unlock();
                const std::lock_guard guard(s_guard);
                _held->Drop();
            }
        }
        /// False when no mutex is published.
        explicit operator bool() const { return _held != nullptr; }

    private:
        static MainMutex* Hold() {
            const std::lock_guard guard(s_guard);
            if (s_published != nullptr) {
                ++s_published->_holders;
            }
            return s_published;
        }

        MainMutex* const _held;
    };

private:
    void Drop() {
        if (--_holders == 0) {
            delete this;
        }
    }

    static constinit std::mutex s_guard;
    static constinit MainMutex* s_published;

    QORMutex _mutex{0, 1, 0};
    int _holders = 1; ///< Threads that hold it, and 1 while it is published; under `s_guard`.
};

constinit std::mutex MainMutex::s_guard;
constinit MainMutex* MainMutex::s_published = nullptr;

/// The last flags given. Atomic, since a withdrawn mutex and its successor may both be locked at one moment.
constinit std::atomic<int> s_mainFlags{0};

void KeepPreferredLanguage(const char* language) {
    const std::lock_guard guard(VEL::internal::s_preferredLanguageGuard);
    delete[] std::exchange(s_preferredLanguage, nullptr);
    s_preferredLanguage = VEL::internal::DuplicateText(language).release();
}

} // namespace

int QORSysNewSessionTS(int, int, char const**) {
    return VELSysLifeCycleDispatchInitialization();
}

int QORSysEndSessionTS(int code) {
    VELSysLifeCycleDispatchFinalization();
    VELSysFinalReleaseCPUResourceManager(code);
    VELStringDeInit(code);
    VEL::internal::DeinitIConvTS(code);
    return 0;
}

int VELSystemInit(VELSysHashMapString const& settings) {
    if (const char* language = settings.Get(PreferredLanguageKey)) {
        DeInitNLSCore(0);
        KeepPreferredLanguage(language);
    }
    // After the change, so that the language participant comes up in the preferred language.
    return VELSysLifeCycleDispatchInitialization() == 0 ? 0 : -1;
}

void VELSysMainInitialize(int argc, char** argv, int flags) {
    // On every call, also when one is published already.
    MainMutex::Publish();
    const MainMutex::Lock lock;
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
        const MainMutex::Lock lock;
        if (!lock) {
            return;
        }
        if ((s_mainFlags & VELSysMainStartWatchDog) != 0) {
            VELSysWatchDogFinalize();
        }
    }
    MainMutex::Withdraw();
}

int VELStringInit(unsigned int checks) {
    VEL::internal::s_StringChecksEnabled = static_cast<int>(checks);
    return VELStringPoolSetForCurrentThrd(1);
}

int VELStringDeInit(int) {
    VELStringPoolSetForCurrentThrd(0);
    return 0;
}
