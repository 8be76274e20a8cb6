#include "VELSysHashMapString.h"

#include "VELSysUCAlgorithm.h"

#include <atomic>
#include <cstring>
#include <new>

/// One allocation each, owned by the map; the texts are borrowed.
struct VELSysHashMapString::Record {
    const char* key;
    const char* value;
};

void VELSysHashMapString::_Abandon(Record* record) {
    static constinit std::atomic<Record*> s_abandoned{nullptr};
    record->key = nullptr;
    record->value = reinterpret_cast<const char*>(s_abandoned.exchange(record, std::memory_order_relaxed));
}

VELSysHashMapString::VELSysHashMapString() : QORSysSimpleHashTable(0, _HashIt, _HaveEqualKeys) {}

VELSysHashMapString::~VELSysHashMapString() {
    for (int i = 0; i < Size(); ++i) {
        delete static_cast<Record*>(QORSysSimpleHashTable::Get(i));
    }
    RemoveAll();
}

unsigned int VELSysHashMapString::_HashIt(void* record) {
    const char* key = static_cast<Record*>(record)->key;
    return VELSysUCAlgorithm::HashV3FromUTF8(key, std::strlen(key), 0);
}

int VELSysHashMapString::_HaveEqualKeys(void* a, void* b) {
    return std::strcmp(static_cast<Record*>(a)->key, static_cast<Record*>(b)->key) == 0 ? 1 : 0;
}

void VELSysHashMapString::Put(const char* key, const char* value) {
    if (key == nullptr) {
        return;
    }
    auto* record = new (std::nothrow) Record{key, value};
    if (record == nullptr) {
        return;
    }
    auto* stored = static_cast<Record*>(InsertAndReturn(record));
    if (stored == nullptr) {
        delete record;
        return;
    }
    if (stored != record) {
        stored->value = value;
        _Abandon(record);
    }
}

const char* VELSysHashMapString::Get(const char* key) const {
    if (key == nullptr) {
        return nullptr;
    }
    Record wanted{key, nullptr};
    const auto* record = static_cast<const Record*>(Locate(&wanted));
    return record != nullptr ? record->value : nullptr;
}
