#include "VELSysLifeCycle.h"

#include "LibraryLoader.h"
#include "NeverDestroyed.h"
#include "ThreadWait.h"

#include <algorithm>
#include <compare>
#include <condition_variable>
#include <dlfcn.h>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>

using VEL::internal::ThreadWait;

namespace {

/// The order of the registry.
struct Place {
    unsigned long priority;
    /// Number of the registration; unique, and never used again.
    unsigned long sequence;

    auto operator<=>(const Place&) const = default;
};

/// Behind every priority flag.
constexpr unsigned long s_priorityOfModules = 1UL << 32;

struct Functions {
    void (*onInitialize)(void*);
    void (*onState)(int);
    void (*onSystemCall)(int);
};

} // namespace

struct VELSysLifeCycleStruct {
    Functions functions;
    std::string name;
    unsigned short version;
};

namespace {

enum class Order { Rising, Falling };

class Registry {
public:
    VELSysLifeCycleStruct* Register(unsigned long priority, const Functions& functions, const char* name,
                                    unsigned short version);
    int UnregisterModule(const VELSysLifeCycleStruct* module);

    /// Calls `function` with the functions of every participant, without the lock. The walk goes by place and not by
    /// position, so participants may come and go while it runs.
    template <typename Function>
    void Dispatch(Order order, Function function);

private:
    using Participants = std::map<Place, std::unique_ptr<VELSysLifeCycleStruct>>;

    /// One call of a participant's function, for as long as it runs. It lies on the stack of the dispatching thread
    /// and is linked into the registry, so that a module that leaves can wait for it. The registry's lock, held when it
    /// is made and when it is gone, is open in between.
    class RunningCall {
    public:
        RunningCall(Registry& registry, std::unique_lock<std::mutex>& lock, unsigned long calledSequence);
        RunningCall(const RunningCall&) = delete;
        RunningCall& operator=(const RunningCall&) = delete;
        ~RunningCall();

        const unsigned long sequence;
        const unsigned long thread;
        RunningCall* next;
        /// The wait of the thread on which the module leaves, null as long as there is none.
        ThreadWait* wait;

    private:
        Registry& _registry;
        std::unique_lock<std::mutex>& _lock;
    };

    Participants::const_iterator Next(Order order, const Place* last) const;
    /// @return A call of the participant on another thread, or null.
    RunningCall* FindCallElsewhere(unsigned long sequence) const;

    std::mutex _mutex;
    std::condition_variable _callEnded;
    Participants _participants;
    RunningCall* _runningCalls = nullptr;
    unsigned long _lastSequence = 0;
};

Registry& GetRegistry() {
    static NeverDestroyed<Registry> registry;
    return registry.Get();
}

VELSysLifeCycleStruct* Registry::Register(unsigned long priority, const Functions& functions, const char* name,
                                          unsigned short version) {
    try {
        auto record = std::make_unique<VELSysLifeCycleStruct>(VELSysLifeCycleStruct{functions, name, version});
        const std::lock_guard lock(_mutex);
        const auto inserted = _participants.emplace(Place{priority, ++_lastSequence}, std::move(record));
        return inserted.first->second.get();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int Registry::UnregisterModule(const VELSysLifeCycleStruct* module) {
    std::unique_lock lock(_mutex);
    const auto firstModule = _participants.lower_bound(Place{s_priorityOfModules, 0});
    const auto found = std::find_if(firstModule, _participants.end(),
                                    [module](const auto& entry) { return entry.second.get() == module; });
    if (found == _participants.end()) {
        return -1;
    }
    const unsigned long sequence = found->first.sequence;
    _participants.erase(found);
    // No further call begins, so these become fewer, and a module leaves but once.
    while (RunningCall* const call = FindCallElsewhere(sequence)) {
        ThreadWait wait(call->thread);
        if (!wait.IsUnderWay()) {
            return -1;
        }
        call->wait = &wait;
        _callEnded.wait(lock, [&wait] { return !wait.IsUnderWay(); });
    }
    return 0;
}

template <typename Function>
void Registry::Dispatch(Order order, Function function) {
    Place last{};
    bool isFirst = true;
    std::unique_lock lock(_mutex);
    for (;;) {
        const auto next = Next(order, isFirst ? nullptr : &last);
        if (next == _participants.end()) {
            return;
        }
        isFirst = false;
        last = next->first;
        const Functions functions = next->second->functions;
        const RunningCall call(*this, lock, last.sequence);
        function(functions);
    }
}

Registry::Participants::const_iterator Registry::Next(Order order, const Place* last) const {
    if (order == Order::Rising) {
        return last ? _participants.upper_bound(*last) : _participants.begin();
    }
    const auto behind = last ? _participants.lower_bound(*last) : _participants.end();
    return behind == _participants.begin() ? _participants.end() : std::prev(behind);
}

Registry::RunningCall::RunningCall(Registry& registry, std::unique_lock<std::mutex>& lock, unsigned long calledSequence)
    : sequence(calledSequence), thread(VEL::internal::GetThreadNumber()), next(registry._runningCalls), wait(nullptr),
      _registry(registry), _lock(lock) {
    _registry._runningCalls = this;
    _lock.unlock();
}

Registry::RunningCall::~RunningCall() {
    _lock.lock();
    RunningCall** link = &_registry._runningCalls;
    while (*link != this) {
        link = &(*link)->next;
    }
    *link = next;
    if (wait) {
        wait->End();
        _registry._callEnded.notify_all();
    }
}

Registry::RunningCall* Registry::FindCallElsewhere(unsigned long sequence) const {
    RunningCall* call = _runningCalls;
    while (call && (call->sequence != sequence || call->thread == VEL::internal::GetThreadNumber())) {
        call = call->next;
    }
    return call;
}

int DispatchState(Order order, int state) {
    GetRegistry().Dispatch(order, [state](const Functions& functions) {
        if (functions.onState) {
            functions.onState(state);
        }
    });
    return 0;
}

} // namespace

int VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag priority, void (*onInitialize)(void*),
                                        void (*onState)(int), void (*onSystemCall)(int)) {
    return GetRegistry().Register(priority, {onInitialize, onState, onSystemCall}, "", 0) ? 0 : -1;
}

VELSysLifeCycleStruct* VELSysLifeCycleGlobalFactoryInternal(const char* name, void (*onInitialize)(void*),
                                                            void (*onState)(int), void (*onSystemCall)(int),
                                                            unsigned short version) {
    return GetRegistry().Register(s_priorityOfModules, {onInitialize, onState, onSystemCall}, name ? name : "",
                                  version);
}

int VELSysLifeCycleGlobalFactoryInternalCheck(VELSysLifeCycleStruct* module) {
    return GetRegistry().UnregisterModule(module);
}

int VELSysLifeCycleDispatchInitialization() {
    GetRegistry().Dispatch(Order::Rising, [](const Functions& functions) {
        if (functions.onInitialize) {
            functions.onInitialize(nullptr);
        }
    });
    return 0;
}

int VELSysLifeCycleDispatchFinalization() {
    constexpr int terminate = 0;
    return DispatchState(Order::Falling, terminate);
}

int VELSysLifeCycleDispatchStateChange(int state) {
    return DispatchState(Order::Rising, state);
}

int VELSysLifeCycleDispatchSystemCall(int call) {
    GetRegistry().Dispatch(Order::Rising, [call](const Functions& functions) {
        if (functions.onSystemCall) {
            functions.onSystemCall(call);
        }
    });
    return 0;
}

int VELSysFinalReleaseCPUResourceManager(int) {
    return 0;
}

int VELSysLifeCycleDynamicLoad(const char* library, void** handle) {
    if (!handle) {
        return -1;
    }
    *handle = library ? LoadLibraryByName(library) : nullptr;
    return *handle ? 0 : -1;
}

void* VELSysLifeCycleDynamicGetFunction(void* handle, const char* function) {
    return handle && function ? dlsym(handle, function) : nullptr;
}

int VELSysLifeCycleDynamicUnload(void* handle) {
    return handle && dlclose(handle) == 0 ? 0 : -1;
}
