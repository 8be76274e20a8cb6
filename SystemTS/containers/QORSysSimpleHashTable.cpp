#include "QORSysSimpleHashTable.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace {

constexpr int MinimumBuckets = 11;
/// Without memory the constructor halves a size of this or more; a smaller one falls to the fewest buckets at once.
constexpr int SmallestHalvedSize = 42;
/// A table with fewer elements than this never shrinks.
constexpr int SmallestShrinkingCount = 12;
constexpr int WordsPerBucket = 3;

unsigned int HashOfAddress(const void* p) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(p) >> 3);
}

} // namespace

unsigned int QORSimpleHashIt(void* p) {
    return HashOfAddress(p);
}

int QORSimpleHashCompare(void* a, void* b) {
    return a == b ? 1 : 0;
}

// Tables of raw pointers are common enough to spare them the two calls.

unsigned int QORSysSimpleHashTable::_HashOf(void* element) const {
    return _hash == QORSimpleHashIt ? HashOfAddress(element) : _hash(element);
}

bool QORSysSimpleHashTable::_AreEqual(void* stored, void* other) const {
    return _compare == QORSimpleHashCompare ? stored == other : _compare(stored, other) != 0;
}

int QORSysSimpleHashTable::UpToNiceModulo(int n) {
    constexpr int divisors[] = {2, 3, 5, 7, 11, 13, 17, 19};
    std::size_t next = 0;
    while (n >= 4 && next < std::size(divisors) && divisors[next] < n) {
        if (n % divisors[next] != 0) {
            ++next;
            continue;
        }
        // The largest int is a prime, so no step leads beyond it.
        ++n;
        if (n % 2 == 0) {
            ++n;
        }
        // The value is odd from here on, so the test starts again behind 2.
        next = 1;
    }
    return n;
}

QORSysSimpleHashTable::QORSysSimpleHashTable(int size, Hash hash, Compare compare)
    : _compare(compare), _hash(hash), _table(nullptr), _bucketCount(0), _count(0) {
    const auto bucketsFor = [](int wanted) {
        const int buckets = UpToNiceModulo(wanted);
        return buckets < MinimumBuckets ? MinimumBuckets : buckets;
    };
    _bucketCount = bucketsFor(size);
    while (!_Allocate() && _bucketCount > MinimumBuckets) {
        size = size >= SmallestHalvedSize ? size / 2 : MinimumBuckets;
        _bucketCount = bucketsFor(size);
    }
    if (_table == nullptr) {
        _bucketCount = 0;
    }
}

QORSysSimpleHashTable::~QORSysSimpleHashTable() {
    std::free(_table);
}

/// A fresh block for the present number of buckets, all of them empty. The old block is left alone.
bool QORSysSimpleHashTable::_Allocate() {
    const auto buckets = static_cast<std::size_t>(_bucketCount);
    void* block = std::malloc(buckets * WordsPerBucket * sizeof(void*));
    if (block == nullptr) {
        return false;
    }
    _table = static_cast<void**>(block);
    std::memset(_table, 0, buckets * sizeof(void*));
    return true;
}

QORSysSimpleHashTable::Node** QORSysSimpleHashTable::_Chain(void* element) const {
    return &_Heads()[_HashOf(element) % static_cast<unsigned int>(_bucketCount)];
}

void QORSysSimpleHashTable::_Append(Node** link, void* element) {
    Node* node = &_Nodes()[_count++];
    node->element = element;
    node->next = nullptr;
    *link = node;
}

int QORSysSimpleHashTable::Insert(void* element) {
    const int before = _count;
    void* stored = InsertAndReturn(element);
    if (stored == nullptr) {
        return -1;
    }
    if (stored != element) {
        return 0;
    }
    return _count != before ? 1 : 0;
}

void* QORSysSimpleHashTable::InsertAndReturn(void* element) {
    for (;;) {
        if (_bucketCount > 0) {
            Node** link = _Chain(element);
            for (; *link != nullptr; link = &(*link)->next) {
                if (_AreEqual((*link)->element, element)) {
                    return (*link)->element;
                }
            }
            if (_count < _bucketCount) {
                _Append(link, element);
                return element;
            }
        }
        if (ReAllocate(0) != 0) {
            return nullptr;
        }
    }
}

void* QORSysSimpleHashTable::Locate(void* key) const {
    const Node* const node = _Find(key);
    return node != nullptr ? node->element : nullptr;
}

QORSysSimpleHashTable::Node* QORSysSimpleHashTable::LocateBucket(void* key) const {
    return _Find(key);
}

/// The node of the element equal to `key`, or null.
inline QORSysSimpleHashTable::Node* QORSysSimpleHashTable::_Find(void* key) const {
    if (_count == 0) {
        return nullptr;
    }
    Node* node = *_Chain(key);
    while (node != nullptr && !_AreEqual(node->element, key)) {
        node = node->next;
    }
    return node;
}

void* QORSysSimpleHashTable::KeyLocate(unsigned int hash) const {
    if (_count == 0) {
        return nullptr;
    }
    for (const Node* node = _Heads()[hash % static_cast<unsigned int>(_bucketCount)]; node != nullptr;
         node = node->next) {
        if (_HashOf(node->element) == hash) {
            return node->element;
        }
    }
    return nullptr;
}

void* QORSysSimpleHashTable::Next(void* element) const {
    if (element == nullptr) {
        return Get(0);
    }
    const Node* node = _Find(element);
    return node != nullptr ? Get(static_cast<int>(node - _Nodes()) + 1) : nullptr;
}

void* QORSysSimpleHashTable::NextWithKey(void* element) const {
    if (element == nullptr) {
        return nullptr;
    }
    const Node* node = _Find(element);
    if (node == nullptr) {
        return nullptr;
    }
    const unsigned int hash = _HashOf(element);
    for (node = node->next; node != nullptr; node = node->next) {
        if (_HashOf(node->element) == hash) {
            return node->element;
        }
    }
    return nullptr;
}

void* QORSysSimpleHashTable::Get(int i) const {
    if (i < 0 || i >= _count) {
        return nullptr;
    }
    return _Nodes()[i].element;
}

void* QORSysSimpleHashTable::Remove(void* element) {
    if (_count == 0) {
        return nullptr;
    }
    Node** link = _Chain(element);
    while (*link != nullptr && !_AreEqual((*link)->element, element)) {
        link = &(*link)->next;
    }
    Node* const removed = *link;
    if (removed == nullptr) {
        return nullptr;
    }
    void* const result = removed->element;
    Node* const last = &_Nodes()[_count - 1];
    if (removed == last) {
        *link = removed->next;
    } else {
        Node** const linkToLast = _LinkTo(last);
        *link = removed->next;
        // The last node's content moves into the freed one, which keeps the node area dense.
        *removed = *last;
        *(linkToLast != &removed->next ? linkToLast : link) = removed;
    }
    --_count;
    if (_count >= SmallestShrinkingCount && 3L * _count < _bucketCount) {
        ReAllocate(static_cast<int>(_count * 1.1));
    }
    return result;
}

/// What leads to `node`. It is looked for by its address: an equal element may stand in front of it in its chain, when
/// the comparison is not consistent.
QORSysSimpleHashTable::Node** QORSysSimpleHashTable::_LinkTo(const Node* node) const {
    for (Node** link = _Chain(node->element); *link != nullptr; link = &(*link)->next) {
        if (*link == node) {
            return link;
        }
    }
    // The element's hash has changed since it was inserted, so it is in another chain.
    for (Node** head = _Heads();; ++head) {
        for (Node** link = head; *link != nullptr; link = &(*link)->next) {
            if (*link == node) {
                return link;
            }
        }
    }
}

void QORSysSimpleHashTable::RemoveAll() {
    if (_table != nullptr) {
        std::memset(_table, 0, static_cast<std::size_t>(_bucketCount) * sizeof(void*));
    }
    _count = 0;
}

int QORSysSimpleHashTable::Size() const {
    return _count;
}

int QORSysSimpleHashTable::ReAllocate(int size) {
    void** const oldTable = _table;
    const int oldBucketCount = _bucketCount;
    const int oldCount = _count;
    const Node* oldNodes = _Nodes();

    const int doubled = oldBucketCount > INT_MAX / 2 ? INT_MAX : 2 * oldBucketCount;
    _bucketCount = UpToNiceModulo(size < 1 ? (doubled > 0 ? doubled : MinimumBuckets) : size);
    if (!_Allocate()) {
        _bucketCount = oldBucketCount;
        return -1;
    }
    _count = 0;
    const auto restore = [&] {
        std::free(_table);
        _table = oldTable;
        _bucketCount = oldBucketCount;
        _count = oldCount;
    };
    try {
        for (int i = 0; i < oldCount; ++i) {
            // Fewer buckets than elements were asked for, the table grew again on the way, and there is no memory for
            // it.
            if (InsertAndReturn(oldNodes[i].element) == nullptr && oldNodes[i].element != nullptr) {
                restore();
                return -1;
            }
        }
    } catch (...) {
        // From the caller's hash or comparison.
        restore();
        throw;
    }
    std::free(oldTable);
    return 0;
}

void QORSysSimpleHashTable::PrintStats() const {}
