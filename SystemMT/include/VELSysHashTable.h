/// @file
/// A table from texts to untyped values, with the handling of a value left to a derived class.
#pragma once

#include "QORSysMTExport.h"

/// A chained hash table with a fixed number of buckets. Keys are copied; values are handled by a derived class.
///
/// A derived class says how a value is copied, released and compared, and its destructor calls `removeall`: once this
/// class's own destructor runs, the derived operations are gone, and values that are still there are dropped
/// unreleased.
///
/// There is no lock. Calls of `Get`, `FindKey` and `Count` may run at once with each other, but not with a change.
class QORSYSMT_EXPORT VELSysHashTable {
public:
    /// @param buckets     Number of buckets, kept for good; below 1 counts as 1. When there is no memory for them the
    ///                    table is empty and refuses every entry.
    /// @param ignoreCase  -1: keys are compared with case respected. 0: ASCII letters are equal in both cases.
    VELSysHashTable(int buckets, int ignoreCase);
    VELSysHashTable(const VELSysHashTable&) = delete;
    VELSysHashTable& operator=(const VELSysHashTable&) = delete;
    virtual ~VELSysHashTable();

protected:
    /// The copy of a value that the table stores. Answers `value` itself here. It may change the table; the place of
    /// the entry is found afterwards.
    /// @return Null when there is no memory, or for a null `value`.
    virtual void* ChildCopyItem(void* value);

    /// Releases a value that leaves the table, or a copy that is not stored after all. Called for null values too. Does
    /// nothing here.
    virtual void ChildDeleteItem(void* value);

    /// Compares two values: 0 for equal. Compares the addresses here.
    virtual int ChildCompareItem(void* first, void* second);

    /// The hash of a key. Equal keys have an equal hash; with case ignored, also those that differ in case only.
    virtual unsigned int ChildHashFunction(const char* key);

public:
    /// Stores a copy of `value` under a new key.
    /// @param key    Any text, the empty one included.
    /// @param value  May be null; a stored null value looks like a missing key to `Get`.
    /// @return 0, or -1, with nothing changed, when `key` is null or known already, or memory is short.
    int Add(const char* key, void* value);

    /// Stores a copy of `value` under the key, known or not. A value that stood there is released after the copy is
    /// made, so `value` may be the stored one.
    /// @return 0, or -1, with nothing changed, when `key` is null or memory is short.
    int Replace(const char* key, void* value);

    /// @return The value stored under the key, or null when there is none or `key` is null. It stays the table's and is
    ///         valid until it is replaced or removed.
    void* Get(const char* key);

    /// @return The key of an entry whose value compares equal to `value`, whichever is met first; null when there is
    ///         none. It stays the table's.
    const char* FindKey(void* value);

    /// Removes one entry and releases its value.
    /// @return 0, or -1 when `key` is null or unknown.
    int Remove(const char* key);

    /// Removes all entries and releases their values. The buckets stay.
    void removeall();

    /// @return The number of entries.
    int Count() const;

private:
    struct Node;

    /// The link that leads to the entry of `key`, or the end of its chain. There must be buckets.
    QORSYSMT_PRIVATE Node** LinkOf(const char* key);
    QORSYSMT_PRIVATE int Store(const char* key, void* value, bool replaces);
    QORSYSMT_PRIVATE bool KeysAreEqual(const char* first, const char* second) const;

    Node** _buckets;
    unsigned int _bucketCount;
    int _count;
    bool _ignoresCase;
};
