/// @file
/// The map of settings that is handed to VELSystemInit().
#pragma once

#include "QORSysSimpleHashTable.h"
#include "QORSysTSExport.h"

/// A map from text to text that borrows both.
///
/// Keys and values are never copied: they must outlive the map. Keys are equal when their text is equal. There is no
/// lock; one thread builds the map and hands it over.
///
/// @code
/// VELSysHashMapString settings;
/// settings.Put("sys.nls.core.preferredlang", "French");
/// VELSystemInit(settings);
/// @endcode
class QORSYSTS_EXPORT VELSysHashMapString : public QORSysSimpleHashTable {
public:
    VELSysHashMapString();
    VELSysHashMapString(const VELSysHashMapString&) = delete;
    VELSysHashMapString& operator=(const VELSysHashMapString&) = delete;
    ~VELSysHashMapString();

    /// Stores `value` under `key`. A key of equal text that is there keeps its own pointer and takes the new value. A
    /// null key does nothing; a null value is stored. Without memory the map stays as it was.
    void Put(const char* key, const char* value);

    /// The value under a key of equal text, or null when there is none, which a stored null looks like.
    const char* Get(const char* key) const;

private:
    struct Record;

    QORSYSTS_PRIVATE static unsigned int _HashIt(void* record);
    QORSYSTS_PRIVATE static int _HaveEqualKeys(void* a, void* b);
    /// Leaves a record behind for the life of the process: a replacement deliberately does not reclaim the record that
    /// it did not need. All of them hang together, so that a leak checker finds them.
    QORSYSTS_PRIVATE static void _Abandon(Record* record);
};
