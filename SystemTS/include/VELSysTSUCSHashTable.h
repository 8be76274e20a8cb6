/// @file
/// A hash table of pointers into which threads insert at once.
#pragma once

#include "QORMutex.h"
#include "QORSysTSExport.h"
#include "VELSysTSVector.h"

/// A hash table of untyped pointers, with hash and comparison given by the caller, that only ever grows: insertion and
/// search take no lock, and nothing is removed. Elements are never owned.
///
/// A hash leads to one slot, which holds two elements at most, one in each of two rows; a third one that differs is
/// refused, however empty the table is. TryInsert() and Locate() may be called by any thread at once. While a
/// Reallocate() runs, which TryInsert() starts when the table is well filled, an insertion by another thread may lose
/// its element; all calls stay safe.
class QORSYSTS_EXPORT VELSysTSUCSHashTable {
public:
    using Hash = unsigned int (*)(void*);
    using Compare = int (*)(void*, void*);

    /// A walk over the elements, first those of the primary row, then those of the overflow row that was there when
    /// the walk was made.
    class QORSYSTS_EXPORT VELSysIterator {
    public:
        /// At the first element of `primary`. @param overflow  May be null.
        VELSysIterator(VELSysTSVector* primary, VELSysTSVector* overflow);
        VELSysIterator(const VELSysIterator& other);
        VELSysIterator& operator=(const VELSysIterator& other);
        virtual ~VELSysIterator();

        /// Goes to the next element, or ends. Does nothing once it has ended.
        virtual VELSysIterator& operator++();
        /// As the other one. @return The iterator as it was.
        virtual VELSysIterator operator++(int);

        /// The same primary row, and both have ended or neither has.
        bool operator==(const VELSysIterator& other) const;
        /// The element; null when there is none.
        void* operator*() const;

    private:
        friend class VELSysTSUCSHashTable;

        int _state;
        VELSysTSVector::iterator _position;
        VELSysTSVector* _primary;
        VELSysTSVector* _overflow;
        VELSysTSVector* _walked;
    };

    /// @param size     Slots. A table of 0 slots refuses all elements.
    /// @param hash     Hash of an element or key.
    /// @param compare  1 when two elements are equal.
    VELSysTSUCSHashTable(unsigned int size, Hash hash, Compare compare);
    VELSysTSUCSHashTable(const VELSysTSUCSHashTable&) = delete;
    VELSysTSUCSHashTable& operator=(const VELSysTSUCSHashTable&) = delete;
    /// The elements stay.
    virtual ~VELSysTSUCSHashTable();

    /// Inserts `element` unless an equal one is there. Of equal elements that threads insert at once, one is stored and
    /// all are answered that one.
    /// @return The stored element: `element`, or the equal one that is there; null when the slot holds two others, when
    ///         memory is short, and for null.
    void* TryInsert(void* element);
    /// The element equal to `key`, or null.
    void* Locate(void* key);
    /// Deliberately does nothing: elements are never removed. @return Null.
    void* Remove(void* element);
    /// Gives the table more slots; nothing happens unless `size` is above the present number, and without memory. An
    /// element whose new slot already holds two others is dropped.
    void Reallocate(int size);

    /// The one iterator of the process, made at the first call of all, for the table of that call; the state is set to
    /// active. Deliberately, it is not set back to the start nor to another table: it is good for one walk over one
    /// table. It ends when that table is destroyed.
    VELSysIterator* begin();
    /// One other iterator of the process, which each call makes the end of this table.
    VELSysIterator* end();

private:
    /// Makes rows of slots.
    class VectorCreator : public ObjectFactory<VELSysTSVector> {
    public:
        explicit VectorCreator(int size) : _size(size) {}
        VELSysTSVector* CreateObject() override;

        int _size; ///< Read and written as an atomic.
    };

    QORSYSTS_PRIVATE int _SlotOf(void* element, int size) const;
    QORSYSTS_PRIVATE VELSysTSVector* _Overflow();
    QORSYSTS_PRIVATE bool _Resize(int size);
    QORSYSTS_PRIVATE void _Place(const VELSysTSVector& elements, int size);
    QORSYSTS_PRIVATE void* _Stored(void* element);

    VectorCreator _creator;
    VELSysTSVector* _primary;
    VELSysTSVector* _overflow; ///< Null until a slot needs it. Read and written as an atomic.
    int _size;                 ///< Read and written as an atomic.
    Hash _hash;
    Compare _compare;
    int _count; ///< Read and written as an atomic.
    QORMutex _mutex;
};

static_assert(sizeof(VELSysTSUCSHashTable::VELSysIterator) == 56);
static_assert(sizeof(VELSysTSUCSHashTable) == 72 + sizeof(QORMutex));
