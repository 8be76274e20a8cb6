#include "VELSysTSUCSHashTable.h"

#include "MutexHolder.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <memory>
#include <new>

namespace {

constexpr int Active = 1;
constexpr int Ended = -1;
constexpr int EqualElements = 1;
constexpr int SlotIsFilled = 1;
constexpr int SlotIsOccupied = 0;
/// A table that grows gets this many times its slots.
constexpr long GrowthFactor = 4;

/// The primary row of the table that the process's one iterator walks; null when there is none any more.
std::atomic<VELSysTSVector*> s_walkedRow = nullptr;

int AsSize(unsigned int size) {
    return static_cast<int>(std::min<unsigned int>(size, INT_MAX));
}

/// A value that other threads change. Acquire: the rows have got their slots before their number is told.
template <class Value>
Value Read(Value& value) {
    return std::atomic_ref(value).load(std::memory_order_acquire);
}

} // namespace

// The walk.

VELSysTSUCSHashTable::VELSysIterator::VELSysIterator(VELSysTSVector* primary, VELSysTSVector* overflow)
    : _state(Active), _primary(primary), _overflow(overflow), _walked(primary) {
    if (primary != nullptr) {
        _position = primary->begin();
    }
}

VELSysTSUCSHashTable::VELSysIterator::VELSysIterator(const VELSysIterator& other) = default;
VELSysTSUCSHashTable::VELSysIterator&
VELSysTSUCSHashTable::VELSysIterator::operator=(const VELSysIterator& other) = default;
VELSysTSUCSHashTable::VELSysIterator::~VELSysIterator() = default;

VELSysTSUCSHashTable::VELSysIterator& VELSysTSUCSHashTable::VELSysIterator::operator++() {
    if (_state == Ended) {
        return *this;
    }
    ++_position;
    if (*_position == nullptr && _walked == _primary && _overflow != nullptr) {
        _walked = _overflow;
        _position = _overflow->begin();
    }
    if (*_position == nullptr) {
        _state = Ended;
    }
    return *this;
}

VELSysTSUCSHashTable::VELSysIterator VELSysTSUCSHashTable::VELSysIterator::operator++(int) {
    const VELSysIterator former(*this);
    ++*this;
    return former;
}

bool VELSysTSUCSHashTable::VELSysIterator::operator==(const VELSysIterator& other) const {
    return _primary == other._primary && _state == other._state;
}

void* VELSysTSUCSHashTable::VELSysIterator::operator*() const {
    return _state == Ended ? nullptr : *_position;
}

// The table.

VELSysTSVector* VELSysTSUCSHashTable::VectorCreator::CreateObject() {
    return new (std::nothrow) VELSysTSVector(Read(_size));
}

VELSysTSUCSHashTable::VELSysTSUCSHashTable(unsigned int size, Hash hash, Compare compare)
    : _creator(AsSize(size)), _primary(_creator.CreateObject()), _overflow(nullptr), _size(AsSize(size)), _hash(hash),
      _compare(compare), _count(0), _mutex(0, 1, 0) {}

VELSysTSUCSHashTable::~VELSysTSUCSHashTable() {
    VELSysTSVector* walked = _primary;
    if (walked != nullptr && s_walkedRow.compare_exchange_strong(walked, nullptr)) {
        *begin() = VELSysIterator(nullptr, nullptr);
    }
    delete _overflow;
    delete _primary;
}

/// Only for a size above 0.
int VELSysTSUCSHashTable::_SlotOf(void* element, int size) const {
    return static_cast<int>(_hash(element) % static_cast<unsigned int>(size));
}

void* VELSysTSUCSHashTable::_Stored(void* element) {
    // Relaxed: the number decides when to grow, and nothing is published with it.
    std::atomic_ref(_count).fetch_add(1, std::memory_order_relaxed);
    return element;
}

/// The overflow row, made when it is missing. Null without memory.
VELSysTSVector* VELSysTSUCSHashTable::_Overflow() {
    return _creator.GetOrCreate(_overflow);
}

void* VELSysTSUCSHashTable::TryInsert(void* element) {
    if (const int size = Read(_size); Read(_count) - 3L * size / 2 >= 0) {
        Reallocate(static_cast<int>(std::min<long>(GrowthFactor * size, INT_MAX)));
    }
    const int size = Read(_size);
    if (element == nullptr || _primary == nullptr || size == 0) {
        return nullptr;
    }
    const int slot = _SlotOf(element, size);
    void* existing = nullptr;
    int result = _primary->TryInsertAt(slot, element, existing);
    if (result == SlotIsFilled) {
        return _Stored(element);
    }
    if (result != SlotIsOccupied) {
        return nullptr;
    }
    if (_compare(element, existing) == EqualElements) {
        return existing;
    }
    VELSysTSVector* const overflow = _Overflow();
    if (overflow == nullptr) {
        return nullptr;
    }
    result = overflow->TryInsertAt(slot, element, existing);
    if (result == SlotIsFilled) {
        return _Stored(element);
    }
    return result == SlotIsOccupied && _compare(existing, element) == EqualElements ? existing : nullptr;
}

void* VELSysTSUCSHashTable::Locate(void* key) {
    const int size = Read(_size);
    if (key == nullptr || size == 0) {
        return nullptr;
    }
    const int slot = _SlotOf(key, size);
    for (const VELSysTSVector* const row : {_primary, Read(_overflow)}) {
        void* const element = row != nullptr ? row->GetElementAt(slot) : nullptr;
        if (element != nullptr && _compare(element, key) == EqualElements) {
            return element;
        }
    }
    return nullptr;
}

void* VELSysTSUCSHashTable::Remove(void*) {
    return nullptr;
}

/// Gives both rows `size` slots; all elements stay where they are. False without memory.
bool VELSysTSUCSHashTable::_Resize(int size) {
    VELSysTSVector* const overflow = Read(_overflow);
    return _primary->Reallocate(size) == 0 && (overflow == nullptr || overflow->Reallocate(size) == 0);
}

/// Puts all elements where a table of `size` slots has them.
void VELSysTSUCSHashTable::_Place(const VELSysTSVector& elements, int size) {
    for (void* const element : elements) {
        void* existing = nullptr;
        const int slot = _SlotOf(element, size);
        if (_primary->TryInsertAt(slot, element, existing) == SlotIsFilled) {
            continue;
        }
        // Deliberately without a notice when this slot is taken, too: the element is dropped.
        if (VELSysTSVector* const overflow = _Overflow()) {
            overflow->TryInsertAt(slot, element, existing);
        }
    }
}

void VELSysTSUCSHashTable::Reallocate(int size) {
    if (Read(_size) >= size || _primary == nullptr) {
        return;
    }
    const MutexHolder lock(_mutex);
    if (Read(_size) >= size) {
        return;
    }
    VELSysTSVector* const overflow = Read(_overflow);
    const std::unique_ptr<VELSysTSVector> primaryCopy(_primary->Duplicate());
    const std::unique_ptr<VELSysTSVector> overflowCopy(overflow != nullptr ? overflow->Duplicate() : nullptr);
    if (primaryCopy == nullptr || (overflow != nullptr && overflowCopy == nullptr) || !_Resize(size)) {
        return;
    }
    std::atomic_ref(_creator._size).store(size, std::memory_order_release);
    _primary->Clear();
    if (overflow != nullptr) {
        overflow->Clear();
    }
    _Place(*primaryCopy, size);
    if (overflowCopy != nullptr) {
        _Place(*overflowCopy, size);
    }
    // Release: who reads the new size finds the rows that long.
    std::atomic_ref(_size).store(size, std::memory_order_release);
}

VELSysTSUCSHashTable::VELSysIterator* VELSysTSUCSHashTable::begin() {
    static VELSysIterator s_begin = [this] {
        s_walkedRow.store(_primary);
        return VELSysIterator(_primary, Read(_overflow));
    }();
    s_begin._state = Active;
    return &s_begin;
}

VELSysTSUCSHashTable::VELSysIterator* VELSysTSUCSHashTable::end() {
    static VELSysIterator s_end(nullptr, nullptr);
    s_end = VELSysIterator(_primary, Read(_overflow));
    s_end._state = Ended;
    return &s_end;
}
