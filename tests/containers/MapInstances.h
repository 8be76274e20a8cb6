/// @file
/// The maps as the tests see them, and the plain definition of what they do.
#pragma once

#include "QORSysTSHashMapOfIntToInt.h"
#include "QORSysTSHashMapOfIntToVoidPtr.h"
#include "QORSysTSHashMapOfQORSysTSUnicodeStringToQORSysTSUnicodeString.h"
#include "QORSysTSHashMapOfUnicodeStringToInt.h"
#include "QORSysTSLinkedMapOfIntToInt.h"
#include "QORSysTSMapOfUnicodeStringInt.h"
#include "QORSysTSMapOfUnicodeStringUnicodeString.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace MapInstances {

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);

using StringHashMap = QORSysTSHashMapOfQORSysTSUnicodeStringToQORSysTSUnicodeString;

using HashMaps =
    testing::Types<QORSysTSHashMapOfIntToInt, QORSysTSHashMapOfIntToVoidPtr, QORSysTSHashMapOfUnicodeStringToInt,
                   QORSysTSMapOfUnicodeStringInt, QORSysTSMapOfUnicodeStringUnicodeString, StringHashMap>;
using LinkedMaps =
    testing::Types<QORSysTSLinkedMapOfIntToInt, QORSysTSHashMapOfIntToInt::LinkedMapOfKeyVal,
                   QORSysTSHashMapOfIntToVoidPtr::LinkedMapOfKeyVal,
                   QORSysTSHashMapOfUnicodeStringToInt::LinkedMapOfKeyVal,
                   QORSysTSMapOfUnicodeStringInt::LinkedMapOfKeyVal,
                   QORSysTSMapOfUnicodeStringUnicodeString::LinkedMapOfKeyVal, StringHashMap::LinkedMapOfKeyVal>;
using AllMaps =
    testing::Types<QORSysTSHashMapOfIntToInt, QORSysTSHashMapOfIntToVoidPtr, QORSysTSHashMapOfUnicodeStringToInt,
                   QORSysTSMapOfUnicodeStringInt, QORSysTSMapOfUnicodeStringUnicodeString, StringHashMap,
                   QORSysTSLinkedMapOfIntToInt, QORSysTSMapOfUnicodeStringUnicodeString::LinkedMapOfKeyVal>;

/// The key or value that stands for a number. Keys that are integers are negative as often as not.
template <class Element>
Element Make(int number) {
    return Element(("entry " + std::to_string(number)).c_str());
}
template <>
inline int Make<int>(int number) {
    return (number - 100) * 1'234'567;
}
template <>
inline void* Make<void*>(int number) {
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(number));
}

template <class Map>
typename Map::Key Key(int number) {
    return Make<typename Map::Key>(number);
}
template <class Map>
typename Map::Value Value(int number) {
    return Make<typename Map::Value>(number);
}

/// The number that a key or value stands for.
inline int NumberOf(int element) {
    return element / 1'234'567 + 100;
}
inline int NumberOf(void* element) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(element));
}
inline int NumberOf(const QORSysTSUnicodeString& element) {
    return std::atoi(element.ConvertToChar() + std::strlen("entry "));
}

/// The entries in the order of the walk.
using Entries = std::vector<std::pair<int, int>>;

template <class Map>
Entries Content(const Map& map) {
    Entries entries;
    for (auto it = map.cBegin(); !it.IsEnd(); it.Next()) {
        entries.emplace_back(NumberOf(*it.GetKeyAsPtr()), NumberOf(*it.GetValAsConstPtr()));
    }
    return entries;
}

template <class Map>
void PutNumber(Map& map, int key, int value) {
    map.Put(Key<Map>(key), Value<Map>(value));
}

/// Puts the keys from `first` up to but not including `end`, each with its own number as value.
template <class Map>
void PutNumbers(Map& map, int first, int end) {
    for (int i = first; i < end; ++i) {
        PutNumber(map, i, i);
    }
}

/// What a hash map consists of.
struct Fields {
    template <class Map>
    explicit Fields(const Map& map) {
        static_assert(sizeof(Map) == sizeof *this);
        std::memcpy(static_cast<void*>(this), static_cast<const void*>(&map), sizeof *this);
    }
    void** slots;
    void** arraySlots;
    char* buckets;
    int tableLength;
    int capacity;
    int bucketSize;
    int unused;
    int count;
    float reciprocal;
};

template <class Map>
int TableLength(const Map& map) {
    return Fields(map).tableLength;
}

/// The hash of a key before it is taken modulo the length of the table, in the plainest form.
inline unsigned int HashOfBytes(const void* bytes, std::size_t count) {
    unsigned int hash = 0;
    for (std::size_t i = 0; i < count; ++i) {
        hash = hash * 131 + static_cast<unsigned int>(static_cast<const signed char*>(bytes)[i]);
    }
    return hash & 0x7FFFFFFF;
}

template <class Map>
unsigned int PlainHash(const typename Map::Key& key) {
    if constexpr (std::is_same_v<typename Map::Key, int>) {
        return HashOfBytes(&key, sizeof key);
    } else if constexpr (std::is_same_v<Map, StringHashMap>) {
        return key.HashFunc();
    } else {
        unsigned int byteCount = 0;
        const unsigned short* const units = key.GetBinDump(byteCount);
        return units != nullptr ? HashOfBytes(units, byteCount) : 0;
    }
}

/// A linked map as its plain definition.
class LinkedModel {
public:
    Entries entries;

    auto Find(int key) {
        return std::ranges::find_if(entries, [=](const auto& entry) { return entry.first == key; });
    }
    void Put(int key, int value) {
        const auto it = Find(key);
        if (it != entries.end()) {
            it->second = value;
        } else {
            entries.emplace_back(key, value);
        }
    }
    void Remove(int key) {
        const auto it = Find(key);
        if (it != entries.end()) {
            entries.erase(it);
        }
    }
    void RemoveValues(int value) {
        std::erase_if(entries, [=](const auto& entry) { return entry.second == value; });
    }
};

/// A hash map as its plain definition, with a rehash that copies everything twice.
template <class Map>
class HashModel {
public:
    explicit HashModel(int minEntries = 12, float loadFactor = 0.75F) { Init(minEntries, loadFactor); }
    HashModel(const HashModel& other, int minEntries, float loadFactor) : HashModel(minEntries, loadFactor) {
        Fill(other);
    }

    void Init(int minEntries, float loadFactor) {
        _count = 0;
        _reciprocal = loadFactor < 0.1F || loadFactor > 100.0F ? 1.0F / 0.75F : 1.0F / loadFactor;
        _buckets.assign(static_cast<std::size_t>(MinimumTableLength(minEntries < 1 ? 12 : minEntries)), {});
    }
    int MinimumTableLength(int n) const { return static_cast<int>(std::ceil(static_cast<float>(n) * _reciprocal)); }
    LinkedModel& BucketOf(int key) {
        return _buckets[PlainHash<Map>(Key<Map>(key)) % static_cast<unsigned int>(_buckets.size())];
    }
    int Length() const { return _count; }
    int TableLength() const { return static_cast<int>(_buckets.size()); }
    float Reciprocal() const { return _reciprocal; }

    void Put(int key, int value) {
        LinkedModel& bucket = BucketOf(key);
        const std::size_t before = bucket.entries.size();
        bucket.Put(key, value);
        if (bucket.entries.size() == before) {
            return;
        }
        if (MinimumTableLength(_count + 1) > TableLength()) {
            ReHash(2 * _count, 1.0F / _reciprocal);
        }
        ++_count;
    }
    void Put(const HashModel& other) {
        for (const auto& [key, value] : other.Order()) {
            Put(key, value);
        }
    }
    void Fill(const HashModel& other) {
        for (const auto& [key, value] : other.Order()) {
            BucketOf(key).Put(key, value);
        }
        _count = other._count;
    }
    void ReHash(int minEntries, float loadFactor) {
        const HashModel rehashed(*this, minEntries, loadFactor);
        *this = rehashed;
    }
    const int* Get(int key) {
        LinkedModel& bucket = BucketOf(key);
        const auto it = bucket.Find(key);
        return it != bucket.entries.end() ? &it->second : nullptr;
    }
    void Remove(int key) {
        LinkedModel& bucket = BucketOf(key);
        _count -= static_cast<int>(bucket.entries.size());
        bucket.Remove(key);
        _count += static_cast<int>(bucket.entries.size());
    }
    void RemoveValues(int value) {
        for (LinkedModel& bucket : _buckets) {
            _count -= static_cast<int>(bucket.entries.size());
            bucket.RemoveValues(value);
            _count += static_cast<int>(bucket.entries.size());
        }
    }
    Entries Order() const {
        Entries order;
        for (const LinkedModel& bucket : _buckets) {
            order.insert(order.end(), bucket.entries.begin(), bucket.entries.end());
        }
        return order;
    }

private:
    std::vector<LinkedModel> _buckets;
    int _count;
    float _reciprocal;
};

/// The first text that needs a view makes the environment's converter, which no test means to count.
inline void MakeTheConverter() {
    QORSysTSUnicodeString("x").GetLengthInChar();
}

} // namespace MapInstances
