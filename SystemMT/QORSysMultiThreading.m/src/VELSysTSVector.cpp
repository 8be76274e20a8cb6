#include "VELSysTSVector.h"

#include <algorithm>
#include <memory>
#include <new>

template class ObjectFactory<VELSysTSVector>;

struct VELSysTSVector::Slots {
    /// @return Null when memory is short.
    static Slots* Make(int size) {
        std::unique_ptr<Slots> slots(new (std::nothrow) Slots);
        if (!slots) {
            return nullptr;
        }
        slots->elements.reset(new (std::nothrow) std::atomic<void*>[static_cast<unsigned int>(size)]());
        slots->size = size;
        return slots->elements ? slots.release() : nullptr;
    }

    /// Takes over the elements of `other` as far as there is room.
    void CopyFrom(const Slots& other) {
        for (int index = 0; index < std::min(size, other.size); ++index) {
            // Relaxed store: the slots are not published yet.
            elements[index].store(other.elements[index].load(std::memory_order_acquire), std::memory_order_relaxed);
        }
    }

    std::unique_ptr<std::atomic<void*>[]> elements;
    int size = 0;
    /// The slots that these replaced. Threads may still be in them.
    std::unique_ptr<Slots> former;
};

// Slots and elements are published with release and read with acquire: whoever gets a pointer sees what it points to.

VELSysTSVector::VELSysTSVector(int size) : _slots(size > 0 ? Slots::Make(size) : nullptr) {}

VELSysTSVector::~VELSysTSVector() {
    // Relaxed: nobody else uses the vector any more.
    delete _slots.load(std::memory_order_relaxed);
}

int VELSysTSVector::TryInsertAt(int index, void* value, void*& existing) {
    existing = nullptr;
    const Slots* const slots = _slots.load(std::memory_order_acquire);
    if (!value || !slots || index < 0 || index >= slots->size) {
        return -1;
    }
    const bool isStored = slots->elements[index].compare_exchange_strong(existing, value, std::memory_order_acq_rel,
                                                                         std::memory_order_acquire);
    return isStored ? 1 : 0;
}

void* VELSysTSVector::GetElementAt(int index) const {
    const Slots* const slots = _slots.load(std::memory_order_acquire);
    if (!slots || index < 0 || index >= slots->size) {
        return nullptr;
    }
    return slots->elements[index].load(std::memory_order_acquire);
}

int VELSysTSVector::GetSize() const {
    const Slots* const slots = _slots.load(std::memory_order_acquire);
    return slots ? slots->size : 0;
}

VELSysTSVector* VELSysTSVector::Duplicate() const {
    const Slots* const slots = _slots.load(std::memory_order_acquire);
    const int size = slots ? slots->size : 0;
    std::unique_ptr<VELSysTSVector> copy(new (std::nothrow) VELSysTSVector(size));
    if (!copy || copy->GetSize() != size) {
        return nullptr;
    }
    if (slots) {
        copy->_slots.load(std::memory_order_relaxed)->CopyFrom(*slots);
    }
    return copy.release();
}

void VELSysTSVector::Clear() {
    const Slots* const slots = _slots.load(std::memory_order_acquire);
    if (!slots) {
        return;
    }
    for (int index = 0; index < slots->size; ++index) {
        slots->elements[index].store(nullptr, std::memory_order_release);
    }
}

int VELSysTSVector::Reallocate(int size) {
    Slots* const former = _slots.load(std::memory_order_acquire);
    if ((former ? former->size : 0) == std::max(size, 0)) {
        return 0;
    }
    Slots* const slots = Slots::Make(std::max(size, 0));
    if (!slots) {
        return -1;
    }
    if (former) {
        slots->CopyFrom(*former);
        slots->former.reset(former);
    }
    _slots.store(slots, std::memory_order_release);
    return 0;
}

VELSysTSVector::iterator VELSysTSVector::begin() const {
    return {this, NextElement(0)};
}

VELSysTSVector::iterator VELSysTSVector::end() const {
    return {this, iterator::endIndex};
}

int VELSysTSVector::NextElement(int index) const {
    const Slots* const slots = _slots.load(std::memory_order_acquire);
    for (; slots && index < slots->size; ++index) {
        if (slots->elements[index].load(std::memory_order_acquire)) {
            return index;
        }
    }
    return iterator::endIndex;
}

void* VELSysTSVector::iterator::operator*() const {
    return _vector ? _vector->GetElementAt(_index) : nullptr;
}

VELSysTSVector::iterator& VELSysTSVector::iterator::operator++() {
    if (_index != endIndex) {
        _index = _vector->NextElement(_index + 1);
    }
    return *this;
}

VELSysTSVector::iterator VELSysTSVector::iterator::operator++(int) {
    const iterator former = *this;
    ++*this;
    return former;
}
