#include "QORSysTSThreadLocalStorage.h"

#include "QORSysTSHashMapOfIntToVoidPtr.h"
#include "VELSysStatus.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>

using VEL::StatusFailure;
using VEL::StatusOk;

namespace {

using Map = QORSysTSHashMapOfIntToVoidPtr;

constexpr auto NoKey = static_cast<pthread_key_t>(-1);
constexpr int MapEntries = 12;
constexpr float MapLoadFactor = 0.75F;

/// The calling thread's map, as it stands under the key, too: reading it here spares a call of the system.
constinit thread_local Map* t_map __attribute__((tls_model("initial-exec"))) = nullptr;

/// The key; NoKey when there is none. Relaxed: nobody else's writing hangs on it.
pthread_key_t Key() {
    return std::atomic_ref(QORSysTSThreadLocalStorage::S_tlsKey).load(std::memory_order_relaxed);
}

/// The calling thread's map; null when it has none, and once the process ends.
Map* ThreadMap() {
    return Key() != NoKey ? t_map : nullptr;
}

/// Makes the calling thread's map. Null when there is no key.
Map* NewThreadMap() {
    const pthread_key_t key = Key();
    if (key == NoKey) {
        return nullptr;
    }
    auto map = std::make_unique<Map>(MapEntries, MapLoadFactor);
    if (pthread_setspecific(key, map.get()) != 0) {
        return nullptr;
    }
    t_map = map.release();
    return t_map;
}

} // namespace

pthread_key_t QORSysTSThreadLocalStorage::S_tlsKey = 0;
int QORSysTSThreadLocalStorage::S_counterKey = 0;

void QORSysTSThreadLocalStorage::_ThreadCleanup(void* map) {
    t_map = nullptr;
    delete static_cast<Map*>(map);
}

void QORSysTSThreadLocalStorage::_Cleanup() {
    _ThreadCleanup(t_map);
    if (Key() != NoKey) {
        pthread_key_delete(Key());
    }
    std::atomic_ref(S_tlsKey).store(NoKey, std::memory_order_relaxed);
}

void QORSysTSThreadLocalStorage::_CreateThreadKey() {
    pthread_key_t key;
    if (pthread_key_create(&key, _ThreadCleanup) != 0) {
        key = NoKey;
    }
    std::atomic_ref(S_tlsKey).store(key, std::memory_order_relaxed);
    std::atexit(_Cleanup);
}

void QORSysTSThreadLocalStorage::_Init() {
    static pthread_once_t s_once = PTHREAD_ONCE_INIT;
    pthread_once(&s_once, _CreateThreadKey);
}

int QORSysTSThreadLocalStorage::CreateNewKey() {
    // Relaxed: keys have to differ, and nothing is published with them.
    return std::atomic_ref(S_counterKey).fetch_add(1, std::memory_order_relaxed) + 1;
}

int QORSysTSThreadLocalStorage::SetValue(int key, void* value) {
    try {
        Map* map = ThreadMap();
        if (map == nullptr) {
            _Init();
            map = NewThreadMap();
        }
        if (map != nullptr) {
            map->Put(key, value);
            return StatusOk;
        }
    } catch (const std::bad_alloc&) {
        // Callers know nothing but the status.
    }
    return StatusFailure;
}

void* QORSysTSThreadLocalStorage::GetValue(int key) {
    const Map* const map = ThreadMap();
    if (map == nullptr) {
        _Init();
        return nullptr;
    }
    void* const* const value = map->GetAsPtr(key);
    return value != nullptr ? *value : nullptr;
}

int QORSysTSThreadLocalStorage::DeleteValue(int* key) {
    // Deliberately does not make the system's key. The 0 that it begins with may be another's, and is not looked at.
    Map* const map = key != nullptr ? ThreadMap() : nullptr;
    if (map == nullptr) {
        return StatusFailure;
    }
    map->Remove(*key);
    return StatusOk;
}

int VELSysThreadLocalStorageCreateNewKey() {
    return QORSysTSThreadLocalStorage::CreateNewKey();
}

void* VELSysThreadLocalStorageGetValue(int key) {
    return QORSysTSThreadLocalStorage::GetValue(key);
}

int VELSysThreadLocalStorageSetValue(int key, void* value) {
    return QORSysTSThreadLocalStorage::SetValue(key, value) == StatusOk ? 0 : -1;
}

int VELSysThreadLocalStorageDeleteValue(int* key) {
    return QORSysTSThreadLocalStorage::DeleteValue(key) == StatusOk ? 0 : -1;
}
