#include "VELSysTraceManager.h"

#include "HeapMemory.h"
#include "TraceConfiguration.h"
#include "TraceManagerLock.h"
#include "TraceNames.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <pthread.h>
#include <utility>
#include <vector>

using VEL::internal::TraceManagerLock;

namespace {

/// Guards the two pointers, and keeps the manager while it is used: its own mutex goes with it. Recursive, since a line
/// may be written while another is. Never destroyed.
constinit pthread_mutex_t s_guard = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
/// The manager in use.
constinit VELSysTraceManagerBase* s_manager = nullptr;
/// The one to delete; longer there than the one in use while it is deleted, so that nothing makes another meanwhile.
constinit VELSysTraceManagerBase* s_owned = nullptr;
/// The locks that the holder of the guard has on the manager.
constinit int s_locks = 0;
/// Set when it destroyed the manager, which goes with the last of them.
constinit bool s_isDoomed = false;

/// Set while this thread reads a configuration: what that traces makes no manager.
constinit thread_local bool t_isConfiguring = false;

class Guard {
public:
    Guard() { pthread_mutex_lock(&s_guard); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { pthread_mutex_unlock(&s_guard); }
};

/// The traces that are bound to destinations of the manager. Under the guard.
union BoundTraces {
    constexpr BoundTraces() : traces() {}
    ~BoundTraces() {} // Never destroyed, deliberately: traces may go after it.
    std::vector<VELSysQORTrace*> traces;
};

constinit BoundTraces s_bound;

/// @return False without memory.
bool Remember(VELSysQORTrace* trace) {
    try {
        s_bound.traces.push_back(trace);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

/// The latest is looked for first: traces usually go in the opposite order.
void Forget(const VELSysQORTrace* trace) {
    auto& traces = s_bound.traces;
    const auto found = std::find(traces.rbegin(), traces.rend(), trace);
    if (found != traces.rend()) {
        *found = traces.back();
        traces.pop_back();
    }
}

/// From the first call on, which alone counts.
void CallAtForks(void (*prepare)(), void (*inParent)(), void (*inChild)()) {
    [[maybe_unused]] static const int result = pthread_atfork(prepare, inParent, inChild);
}

void DeleteOwned() {
    delete s_owned;
    s_owned = nullptr;
}

} // namespace

/// The table of a manager as what the configuration is written to.
struct VEL::internal::TraceTable {
    static int AddTrace(int kind, const char* destination, const char* name, void* manager) {
        return static_cast<VELSysTraceManagerBase*>(manager)->_AddTrace(kind, destination, name);
    }
    static int AddOption(const char* destination, int option, int value, void* manager) {
        return static_cast<VELSysTraceManagerBase*>(manager)->_AddOption(destination, option, value);
    }
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysTraceManagerBase::Layout {
    static_assert(offsetof(VELSysTraceManagerBase, _slotCount) == 8 && offsetof(VELSysTraceManagerBase, _slots) == 16);
    static_assert(offsetof(VELSysTraceManagerBase, _mutex) == 24);
    static_assert(offsetof(VELSysTraceManagerBase, _message) == 24 + sizeof(QORMutex));
    static_assert(sizeof(VELSysTraceManager) == sizeof(VELSysTraceManagerBase));
};
#pragma GCC diagnostic pop

// The error number stays what it was for who traces between a call and the look at it.

VEL::internal::TraceManagerLock::TraceManagerLock() : _error(errno) {
    pthread_mutex_lock(&s_guard);
    ++s_locks;
    _manager = s_manager;
    if (_manager != nullptr) {
        _manager->_mutex.Lock();
    }
}

VEL::internal::TraceManagerLock::~TraceManagerLock() {
    if (_manager != nullptr) {
        _manager->_mutex.Unlock();
    }
    if (--s_locks == 0 && std::exchange(s_isDoomed, false)) {
        DeleteOwned();
    }
    pthread_mutex_unlock(&s_guard);
    errno = _error;
}

/// A copy of the process that is made in the midst of a line would find the locks held by a thread that it doesn't
/// have.
struct VELSysTraceManagerBase::Forking {
    static void Prepare() {
        pthread_mutex_lock(&s_guard);
        if (s_owned != nullptr) {
            s_owned->_mutex.Lock();
        }
    }
    static void GoOnInParent() {
        if (s_owned != nullptr) {
            s_owned->_mutex.Unlock();
        }
        pthread_mutex_unlock(&s_guard);
    }
    /// The locks know their holder by a number that the copy's thread doesn't have.
    static void GoOnInChild() {
        if (s_owned != nullptr) {
            new (&s_owned->_mutex) QORMutex(0, 1, 0);
        }
        s_guard = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    }
    static void Watch() { CallAtForks(Prepare, GoOnInParent, GoOnInChild); }
};

VELSysTraceManagerBase::VELSysTraceManagerBase() = default;

VELSysTraceManagerBase::~VELSysTraceManagerBase() {
    _mutex.Lock();
    for (int i = _slotCount; i-- > 0;) {
        delete std::exchange(_slots[i], nullptr);
    }
    delete[] _slots;
    _mutex.Unlock();
}

VELSysTraceManager::~VELSysTraceManager() = default;

bool VELSysTraceManagerBase::_BuildTable(const char* options) {
    _slots = new (std::nothrow) VELSysTraceObjBase*[Slots]();
    if (_slots == nullptr) {
        return false;
    }
    _slotCount = Slots;
    _AddTrace(VELSysTraceKindStream, VEL::internal::TraceCommonDestination, VEL::internal::TraceCommonName);
    const VEL::internal::TraceSink sink{VEL::internal::TraceTable::AddTrace, VEL::internal::TraceTable::AddOption,
                                        this};
    // The first source that works.
    if (VEL::internal::ApplyTraceLine(options, sink) != 0 && VEL::internal::ApplyTraceVariable(sink) != 0) {
        VEL::internal::ApplyTraceOptionFiles(sink);
    }
    return true;
}

/// Opens the destinations that aren't open. @return -1 when one of them can't be opened.
int VELSysTraceManagerBase::_OpenAll() {
    int result = 0;
    for (int i = _slotCount; i-- > 0;) {
        VELSysTraceObjBase* const destination = _slots[i];
        if (destination == nullptr || destination->_isOpen) {
            continue;
        }
        if (destination->Open() == 0) {
            destination->_isOpen = true;
        } else {
            result = -1;
        }
    }
    return result;
}

int VELSysTraceManagerBase::_AddTrace(int kind, const char* destination, const char* name) {
    if (destination == nullptr) {
        return -1;
    }
    int slot = _slotCount - 1;
    for (; slot >= 0 && _slots[slot] != nullptr; --slot) {
        if (std::strcmp(_slots[slot]->_destination, destination) == 0) {
            return _slots[slot]->_AddName(name);
        }
        if (name != nullptr && _slots[slot]->_FindName(name) != nullptr) {
            return -1;
        }
    }
    if (slot < 0 || std::strlen(destination) >= VELSysTraceObjBase::NameSize) {
        return -1;
    }
    VELSysTraceObjBase* made = nullptr;
    if (kind == VELSysTraceKindSystem) {
        made = new (std::nothrow) VELSysTraceSystemObj;
    } else {
        made = new (std::nothrow) VELSysTraceStreamObj;
    }
    if (made == nullptr) {
        return -1;
    }
    made->_kind = kind == VELSysTraceKindSystem ? VELSysTraceKindSystem : VELSysTraceKindStream;
    std::strcpy(made->_destination, destination);
    _slots[slot] = made;
    made->_isActive = true;
    made->_isEnabled = true;
    return name != nullptr && *name != '\0' ? made->_AddName(name) : 0;
}

int VELSysTraceManagerBase::_AddStreamTrace(const char* destination, const char* name, unsigned long rotateCount,
                                            unsigned long rotateSize) {
    if (_AddTrace(VELSysTraceKindStream, destination, name) != 0) {
        return -1;
    }
    if (rotateCount != 0 && rotateSize != 0) {
        VELSysTraceObjBase* const found = _Find(destination);
        found->_rotateCount = rotateCount;
        found->_rotateSize = rotateSize;
    }
    return _OpenAll();
}

VELSysTraceObjBase* VELSysTraceManagerBase::_Find(const char* destination) const {
    for (int i = _slotCount; destination != nullptr && i-- > 0;) {
        if (_slots[i] != nullptr && std::strcmp(_slots[i]->_destination, destination) == 0) {
            return _slots[i];
        }
    }
    return nullptr;
}

int VELSysTraceManagerBase::_AddOption(const char* destination, int option, int value) {
    VELSysTraceObjBase* const found = _Find(destination);
    if (found == nullptr) {
        return -1;
    }
    switch (option) {
    case VELSysTraceOptionActive:
        found->_isActive = value != 0;
        return 0;
    case VELSysTraceOptionMaximumCode:
        found->_maximumCode = std::min(value, VELSysTraceObjBase::MaximumCode);
        return 0;
    case VELSysTraceOptionMinimumCode:
        found->_minimumCode = std::max(value, 0);
        return 0;
    case VELSysTraceOptionMemory:
        return found->_AddMemory(value);
    case VELSysTraceOptionEnabled:
        found->_isEnabled = value != 0;
        return 0;
    case VELSysTraceOptionLocalTime:
        found->_isLocalTime = value != 0;
        return 0;
    case VELSysTraceOptionRotateSize:
        found->_rotateSize = static_cast<unsigned long>(std::max(value, 0));
        return 0;
    case VELSysTraceOptionRotateCount:
        found->_rotateCount = static_cast<unsigned long>(std::max(value, 0));
        return 0;
    default:
        return 0;
    }
}

int VELSysTraceManagerBase::_Bind(VELSysQORTrace& trace, const char* name, unsigned int mode) {
    for (int i = _slotCount; i-- > 0;) {
        VELSysTraceObjBase* const destination = _slots[i];
        const char* const stored = destination != nullptr ? destination->_FindName(name) : nullptr;
        if (stored == nullptr) {
            continue;
        }
        if (trace._destination == nullptr && !Remember(&trace)) {
            break;
        }
        destination->_mode = mode;
        if (trace._name != nullptr && trace._line.tag == trace._name) {
            trace._line.tag = stored;
        }
        trace._name = stored;
        trace._destination = destination;
        trace._isEnabled.store(destination->_isEnabled, std::memory_order_relaxed);
        trace._isActive.store(destination->_isActive, std::memory_order_relaxed);
        return 0;
    }
    return -1;
}

void VELSysTraceManagerBase::_AddUser(const VELSysQORTrace& trace) {
    if (trace._destination != nullptr) {
        ++trace._destination->_users;
    }
}

void VELSysTraceManagerBase::_Unbind(VELSysQORTrace& trace) {
    if (trace._destination == nullptr) {
        return;
    }
    if (trace._destination->_users > 0) {
        --trace._destination->_users;
    }
    Forget(&trace);
}

/// Has the traces that are left write nothing, also when a new manager stands. Under the guard.
void VELSysTraceManagerBase::_UnbindAll() {
    for (VELSysQORTrace* trace : s_bound.traces) {
        trace->_destination = nullptr;
    }
    s_bound.traces.clear();
}

int VELSysTraceManagerBase::_Write(VELSysTraceObjBase& destination, const VELSysTraceLineOptions& line,
                                   const char* format, std::va_list arguments) {
    if (!destination._isEnabled || line.code < destination._minimumCode || line.code >= destination._maximumCode) {
        return -1;
    }
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(_message, MessageSize, format, arguments);
    VEL::internal::HeapArray<char> larger;
    if (length >= static_cast<int>(MessageSize)) {
        const auto size = static_cast<std::size_t>(length) + 1;
        larger.reset(static_cast<char*>(std::malloc(size)));
        if (larger != nullptr) {
            std::vsnprintf(larger.get(), size, format, again);
        }
    }
    va_end(again);
    if (length < 1) {
        return -1;
    }
    // Without memory the text is cut.
    const char* const message = larger != nullptr ? larger.get() : _message;
    switch (destination._kind) {
    case VELSysTraceKindMemory:
        return destination._WriteToRing(line, message);
    case VELSysTraceKindStream:
        return static_cast<VELSysTraceStreamObj&>(destination)._WriteLine(line, message);
    case VELSysTraceKindSystem:
        destination._FormPrefix(line);
        return 0;
    default:
        return -1;
    }
}

/// The table is made before anybody else sees the manager, and under no lock but the manager's own: the text of option
/// files may need a language decision, whose hooks may trace.
std::unique_ptr<VELSysTraceManagerBase> VELSysTraceManagerBase::_Make(const char* options) {
    std::unique_ptr<VELSysTraceManagerBase> made(new (std::nothrow) VELSysTraceManager);
    if (made == nullptr) {
        return nullptr;
    }
    t_isConfiguring = true;
    made->_mutex.Lock();
    const bool hasTable = made->_BuildTable(options);
    made->_mutex.Unlock();
    t_isConfiguring = false;
    return hasTable ? std::move(made) : nullptr;
}

/// Puts a manager into use, unless there is one. @return The result of opening its destinations.
int VELSysTraceManagerBase::_Publish(std::unique_ptr<VELSysTraceManagerBase> made, int* created) {
    const Guard guard;
    if (s_owned != nullptr) {
        return 0;
    }
    s_manager = s_owned = made.release();
    s_manager->_mutex.Lock();
    const int result = s_manager->_OpenAll();
    s_manager->_mutex.Unlock();
    if (created != nullptr) {
        *created = 1;
    }
    return result;
}

int VELSysTraceCreateManager(const char* options, int* created) {
    {
        const Guard guard;
        if (s_owned != nullptr || t_isConfiguring) {
            return 0;
        }
    }
    VELSysTraceManagerBase::Forking::Watch();
    std::unique_ptr<VELSysTraceManagerBase> made = VELSysTraceManagerBase::_Make(options);
    return made != nullptr ? VELSysTraceManagerBase::_Publish(std::move(made), created) : -1;
}

void VELSysTraceDestroyManager() {
    const Guard guard;
    s_manager = nullptr;
    VELSysTraceManagerBase::_UnbindAll();
    if (s_locks != 0) {
        s_isDoomed = true;
        return;
    }
    DeleteOwned();
}

int VELSysTraceManagerAddStreamTrace(const char* destination, const char* name, unsigned long rotateCount,
                                     unsigned long rotateSize) {
    const TraceManagerLock manager;
    return manager ? manager->_AddStreamTrace(destination, name, rotateCount, rotateSize) : -1;
}

int VELSysTraceManagerAddOptionToTrace(const char* destination, int option, int value) {
    const TraceManagerLock manager;
    return manager ? manager->_AddOption(destination, option, value) : -1;
}
