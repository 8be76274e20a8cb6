/// @file
/// Pointers that each thread keeps for itself under integer keys.
#pragma once

#include "QORSysTSExport.h"

#include <pthread.h>

/// For each thread a table from integer keys to pointers, made by the thread's first SetValue() and freed when the
/// thread ends. What the pointers lead to is never freed. All calls may be made by any thread at once.
class QORSYSTS_EXPORT QORSysTSThreadLocalStorage {
public:
    QORSysTSThreadLocalStorage() = delete;

    /// A key that no call has answered before, from 1 on.
    static int CreateNewKey();
    /// Stores `value` for the calling thread. @return 0, or VEL::StatusFailure when the process ends or has no memory.
    static int SetValue(int key, void* value);
    /// The calling thread's value, or null when there is none.
    static void* GetValue(int key);
    /// Removes the calling thread's value, if there is one. @return 0, or VEL::StatusFailure for null and for a thread
    /// that never stored a value.
    static int DeleteValue(int* key);

    /// The system's key for the tables; 0 before the first use, and -1 when there is none.
    static pthread_key_t S_tlsKey;
    /// The last key that was handed out.
    static int S_counterKey;

private:
    QORSYSTS_PRIVATE static void _Init();
    QORSYSTS_PRIVATE static void _CreateThreadKey();
    QORSYSTS_PRIVATE static void _ThreadCleanup(void* map);
    QORSYSTS_PRIVATE static void _Cleanup();
};

extern "C" {

/// As QORSysTSThreadLocalStorage::CreateNewKey().
QORSYSTS_EXPORT int VELSysThreadLocalStorageCreateNewKey();
/// As QORSysTSThreadLocalStorage::GetValue().
QORSYSTS_EXPORT void* VELSysThreadLocalStorageGetValue(int key);
/// As QORSysTSThreadLocalStorage::SetValue(). @return 0, or -1 for a failure.
QORSYSTS_EXPORT int VELSysThreadLocalStorageSetValue(int key, void* value);
/// As QORSysTSThreadLocalStorage::DeleteValue(). @return 0, or -1 for a failure.
QORSYSTS_EXPORT int VELSysThreadLocalStorageDeleteValue(int* key);

} // extern "C"
