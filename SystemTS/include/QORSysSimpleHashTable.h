/// @file
/// A compact chained hash table of untyped pointers.
#pragma once

#include "QORSysTSExport.h"

/// Hash of a pointer by its address: the address shifted right by 3 bits.
QORSYSTS_EXPORT unsigned int QORSimpleHashIt(void* p);
/// 1 when both addresses are equal, otherwise 0.
QORSYSTS_EXPORT int QORSimpleHashCompare(void* a, void* b);

/// A hash table of pointers, with hash and comparison given by the caller.
///
/// One allocation holds the bucket heads and all nodes. Nodes stand densely in the order of insertion, so an index
/// walks all elements; removal moves the last element into the place of the removed one. Elements are never owned.
/// There is no lock.
class QORSYSTS_EXPORT QORSysSimpleHashTable {
public:
    using Compare = int (*)(void*, void*);
    using Hash = unsigned int (*)(void*);

    /// One element in its chain.
    struct Node {
        void* element;
        Node* next;
    };

    /// @param size     Buckets wanted; UpToNiceModulo() of it, and at least 11. The table holds as many elements
    ///                 before it grows.
    /// @param hash     Hash of an element or key.
    /// @param compare  Non-zero when the stored element (first) equals the other (second).
    QORSysSimpleHashTable(int size, Hash hash, Compare compare);
    QORSysSimpleHashTable(const QORSysSimpleHashTable&) = delete;
    QORSysSimpleHashTable& operator=(const QORSysSimpleHashTable&) = delete;
    /// Frees the table; the elements stay.
    ~QORSysSimpleHashTable();

    /// @return 1 when `element` was added, 0 when an equal one is there, -1 when the table could not grow.
    int Insert(void* element);
    /// @return The stored element: `element`, or the equal one that is there; null when the table could not grow.
    void* InsertAndReturn(void* element);
    /// The element equal to `key`, or null.
    void* Locate(void* key) const;
    /// The node of the element equal to `key`, or null. It does not survive an insertion or a removal.
    Node* LocateBucket(void* key) const;
    /// The first element of the chain of `hash` whose own hash is exactly that, or null.
    void* KeyLocate(unsigned int hash) const;
    /// With null the first element in node order; otherwise the one behind `element`. Null at the end, and when
    /// `element` is not there.
    void* Next(void* element) const;
    /// The next element in the chain whose hash is that of `element`, or null.
    void* NextWithKey(void* element) const;
    /// The element of node `i`, or null outside 0 to Size() - 1.
    void* Get(int i) const;
    /// Takes out the element equal to `element`. The last element takes its node. A table of 12 or more that is less
    /// than a third full shrinks.
    /// @return The element removed, or null.
    void* Remove(void* element);
    /// Empties the table and keeps its allocation.
    void RemoveAll();
    /// The number of elements.
    int Size() const;
    /// Rebuilds the table with UpToNiceModulo(size) buckets, or that of twice the present number for a size below 1.
    /// @return 0, or -1 when there is no memory; the table is then as it was.
    int ReAllocate(int size);
    /// The smallest number not below `n` without a divisor among 2, 3, 5, 7, 11, 13, 17 and 19 smaller than itself.
    static int UpToNiceModulo(int n);
    /// Does nothing.
    void PrintStats() const;

private:
    Node** _Heads() const { return reinterpret_cast<Node**>(_table); }
    Node* _Nodes() const { return reinterpret_cast<Node*>(_table + _bucketCount); }
    QORSYSTS_PRIVATE unsigned int _HashOf(void* element) const;
    QORSYSTS_PRIVATE bool _AreEqual(void* stored, void* other) const;
    QORSYSTS_PRIVATE Node* _Find(void* key) const;
    QORSYSTS_PRIVATE Node** _Chain(void* element) const;
    QORSYSTS_PRIVATE bool _Allocate();
    QORSYSTS_PRIVATE void _Append(Node** link, void* element);
    QORSYSTS_PRIVATE Node** _LinkTo(const Node* node) const;

    Compare _compare;
    Hash _hash;
    void** _table;
    int _bucketCount;
    int _count;
};
