#include "VELSysHashTable.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

struct VELSysHashTable::Node {
    std::unique_ptr<char[]> key;
    void* value;
    Node* next;
};

namespace {

/// Folds ASCII letters, whatever the locale of the process.
unsigned char ToLower(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

std::unique_ptr<char[]> CopyText(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    std::unique_ptr<char[]> copy(new (std::nothrow) char[size]);
    if (copy) {
        std::memcpy(copy.get(), text, size);
    }
    return copy;
}

} // namespace

VELSysHashTable::VELSysHashTable(int buckets, int ignoreCase)
    : _buckets(nullptr), _bucketCount(static_cast<unsigned int>(std::max(buckets, 1))), _count(0),
      _ignoresCase(ignoreCase == 0) {
    _buckets = new (std::nothrow) Node*[_bucketCount]();
}

VELSysHashTable::~VELSysHashTable() {
    removeall();
    delete[] _buckets;
}

void* VELSysHashTable::ChildCopyItem(void* value) {
    return value;
}

void VELSysHashTable::ChildDeleteItem(void*) {}

int VELSysHashTable::ChildCompareItem(void* first, void* second) {
    return first == second ? 0 : -1;
}

unsigned int VELSysHashTable::ChildHashFunction(const char* key) {
    // FNV-1a, 32 bits.
    constexpr unsigned int offsetBasis = 2166136261U;
    constexpr unsigned int prime = 16777619U;
    unsigned int hash = offsetBasis;
    for (; *key; ++key) {
        hash ^= _ignoresCase ? ToLower(*key) : static_cast<unsigned char>(*key);
        hash *= prime;
    }
    return hash;
}

int VELSysHashTable::Add(const char* key, void* value) {
    // A known key is refused before a copy is made, which some derived classes could not release alone.
    if (!key || !_buckets || *LinkOf(key)) {
        return -1;
    }
    return Store(key, value, false);
}

int VELSysHashTable::Replace(const char* key, void* value) {
    return key && _buckets ? Store(key, value, true) : -1;
}

int VELSysHashTable::Store(const char* key, void* value, bool replaces) {
    std::unique_ptr<Node> node(new (std::nothrow) Node{CopyText(key), nullptr, nullptr});
    if (!node || !node->key) {
        return -1;
    }
    node->value = ChildCopyItem(value);
    if (value && !node->value) {
        return -1;
    }
    // Only now: the copying may have changed the table, and `key` may have stood in it.
    Node** const link = LinkOf(node->key.get());
    if (!*link) {
        *link = node.release();
        ++_count;
        return 0;
    }
    if (replaces) {
        std::swap((*link)->value, node->value);
    }
    ChildDeleteItem(node->value);
    return replaces ? 0 : -1;
}

void* VELSysHashTable::Get(const char* key) {
    if (!key || !_buckets) {
        return nullptr;
    }
    Node* const node = *LinkOf(key);
    return node ? node->value : nullptr;
}

const char* VELSysHashTable::FindKey(void* value) {
    if (!_buckets) {
        return nullptr;
    }
    for (unsigned int bucket = 0; bucket < _bucketCount; ++bucket) {
        for (Node* node = _buckets[bucket]; node; node = node->next) {
            if (ChildCompareItem(node->value, value) == 0) {
                return node->key.get();
            }
        }
    }
    return nullptr;
}

int VELSysHashTable::Remove(const char* key) {
    if (!key || !_buckets) {
        return -1;
    }
    Node** const link = LinkOf(key);
    const std::unique_ptr<Node> node(*link);
    if (!node) {
        return -1;
    }
    *link = node->next;
    --_count;
    ChildDeleteItem(node->value);
    return 0;
}

void VELSysHashTable::removeall() {
    if (!_buckets) {
        return;
    }
    for (unsigned int bucket = 0; bucket < _bucketCount; ++bucket) {
        while (_buckets[bucket]) {
            const std::unique_ptr<Node> node(_buckets[bucket]);
            _buckets[bucket] = node->next;
            --_count;
            ChildDeleteItem(node->value);
        }
    }
}

int VELSysHashTable::Count() const {
    return _count;
}

VELSysHashTable::Node** VELSysHashTable::LinkOf(const char* key) {
    Node** link = &_buckets[ChildHashFunction(key) % _bucketCount];
    while (*link && !KeysAreEqual((*link)->key.get(), key)) {
        link = &(*link)->next;
    }
    return link;
}

bool VELSysHashTable::KeysAreEqual(const char* first, const char* second) const {
    if (!_ignoresCase) {
        return std::strcmp(first, second) == 0;
    }
    while (*first && ToLower(*first) == ToLower(*second)) {
        ++first;
        ++second;
    }
    return ToLower(*first) == ToLower(*second);
}
