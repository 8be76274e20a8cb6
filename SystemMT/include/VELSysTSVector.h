/// @file
/// A fixed row of atomic slots for pointers, and the factory that publishes shared objects.
#pragma once

#include "QORSysMTExport.h"

#include <atomic>

/// Makes objects of one class, and publishes one of them where several threads need the same.
///
/// A derived class holds what the making needs and gives `CreateObject`.
template <typename T>
class QORSYSMT_EXPORT ObjectFactory {
public:
    virtual ~ObjectFactory() = default;

    /// @return A new object, made with `new` and owned by the caller; null when memory is short.
    virtual T* CreateObject() = 0;

    /// Answers the object that `shared` points to, and makes and publishes it first when there is none. Threads that
    /// race all get the one object that was published; the others delete their own. What the making wrote is seen by
    /// every caller. As long as threads may race, `shared` is changed by this call alone.
    /// @return The shared object, or null when there is none and none could be made.
    T* GetOrCreate(T*& shared) {
        if (T* const present = __atomic_load_n(&shared, __ATOMIC_ACQUIRE)) {
            return present;
        }
        T* const made = CreateObject();
        if (!made) {
            return nullptr;
        }
        T* present = nullptr;
        if (__atomic_compare_exchange_n(&shared, &present, made, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE)) {
            return made;
        }
        delete made;
        return present;
    }
};

/// A row of slots, each of which is empty or holds one pointer, filled without a lock.
///
/// All operations may be called by any thread at once, with two exceptions: the destructor, and what `Clear` and
/// `Reallocate` say. An element is never owned. What was written to an element before it was inserted is seen by
/// whoever gets it from here.
class QORSYSMT_EXPORT VELSysTSVector {
public:
    /// A position among the elements. It visits the filled slots by rising index and passes over the empty ones.
    ///
    /// It is a plain value: it does not keep the vector alive. An element inserted behind it while it walks is visited,
    /// one inserted before it is not.
    class QORSYSMT_EXPORT iterator {
    public:
        /// The end of no vector.
        iterator() = default;

        /// @return The element, or null at the end.
        void* operator*() const;
        /// Steps to the next element. Nothing happens at the end.
        iterator& operator++();
        iterator operator++(int);

        /// Equal: the same position in the same vector.
        bool operator==(const iterator& other) const { return _vector == other._vector && _index == other._index; }
        bool operator!=(const iterator& other) const { return !(*this == other); }

    private:
        friend class VELSysTSVector;
        static constexpr int endIndex = -1;

        iterator(const VELSysTSVector* vector, int index) : _vector(vector), _index(index) {}

        const VELSysTSVector* _vector = nullptr;
        int _index = endIndex;
    };

    /// @param size  Number of slots, all empty; below 1 gives none. When there is no memory for them there are none.
    explicit VELSysTSVector(int size);
    VELSysTSVector(const VELSysTSVector&) = delete;
    VELSysTSVector& operator=(const VELSysTSVector&) = delete;
    virtual ~VELSysTSVector();

    /// Puts `value` into the slot when it is empty. Of several threads one succeeds.
    /// @param existing  Receives what occupies the slot when the result is 0; otherwise null.
    /// @return 1 when the value was stored, 0 when the slot is occupied, be it by `value` itself, and -1 when there is
    ///         no such slot or `value` is null.
    int TryInsertAt(int index, void* value, void*& existing);

    /// @return The element in the slot, or null when it is empty or there is no such slot.
    void* GetElementAt(int index) const;

    /// @return The number of slots.
    int GetSize() const;

    /// @return A new vector of the same size with the same elements, owned by the caller and deleted with `delete`;
    ///         null when memory is short.
    VELSysTSVector* Duplicate() const;

    /// Empties all slots. An element that another thread inserts meanwhile may stay or go.
    void Clear();

    /// Gives the vector `size` slots. Elements keep their index; those beyond the new size are dropped. An element that
    /// another thread inserts meanwhile may be lost, but all calls stay safe: the former slots are kept until the
    /// vector is destroyed. Two threads must not reallocate one vector at once.
    /// @param size  Below 1 gives no slots.
    /// @return 0, or -1, with nothing changed, when memory is short.
    int Reallocate(int size);

    /// @return The position of the first element, or `end()` when there is none.
    iterator begin() const;
    /// @return The position behind all elements. It is the same whatever happens to the vector.
    iterator end() const;

private:
    struct Slots;

    int NextElement(int index) const;

    /// The slots in use, which lead to those they replaced; null for none.
    std::atomic<Slots*> _slots;
};

extern template class ObjectFactory<VELSysTSVector>;
