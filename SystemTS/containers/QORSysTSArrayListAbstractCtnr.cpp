#define QORSYSTS_EMIT_CONTAINER_MEMBERS
#include "QORSysTSArrayListAbstractCtnr.h"

#include "MutexHolder.h"
#include "QORSysTSArrayListAbstractCtnrFC.h"
#include "QORSysTSArrayListAbstractCtnrFTS.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

using VEL::StatusBadArgument;
using VEL::StatusFailure;
using VEL::StatusOk;
using VEL::internal::ArrayStorage;

namespace {

constexpr int FirstCapacity = 4;

std::size_t BytesOf(const ArrayStorage& storage, int slots) {
    return static_cast<std::size_t>(slots) * static_cast<std::size_t>(storage.elementSize);
}

/// Raw slots, or the exception that an array `new` of that size throws.
char* NewSlots(const ArrayStorage& storage, int slots) {
    if (slots < 0 || storage.elementSize < 0) {
        throw std::bad_array_new_length();
    }
    return new char[BytesOf(storage, slots)];
}

char* SlotAt(const ArrayStorage& storage, int i) {
    return storage.buffer + BytesOf(storage, i);
}

/// The capacity that growth to `size` elements gives. A capacity that there was no memory for isn't asked for again.
int GrownCapacity(const ArrayStorage& storage, int size) {
    const int slots = std::min(storage.capacity, storage.slots);
    const int doubled = slots > INT_MAX / 2 ? INT_MAX : 2 * slots;
    return std::max(slots == 0 ? FirstCapacity : doubled, size);
}

bool HasRoomFor(const ArrayStorage& storage, int size) {
    // The slots fall behind the capacity when memory has run out.
    return size <= storage.capacity && size <= storage.slots;
}

/// Frees the buffer; its address stays.
void Release(ArrayStorage& storage) {
    if (storage.slots != 0) {
        delete[] storage.buffer;
        storage.slots = 0;
    }
}

/// Takes a buffer of as many slots as the capacity says, and the elements over into it.
void Relocate(ArrayStorage& storage) {
    char* const buffer = NewSlots(storage, storage.capacity);
    if (storage.slots != 0 && storage.size != 0) {
        std::memcpy(buffer, storage.buffer, BytesOf(storage, storage.size));
    }
    Release(storage);
    storage.buffer = buffer;
    storage.slots = storage.capacity;
}

int MoveSlots(ArrayStorage& storage, int dst, int src, int count) {
    if (storage.slots == 0 || count < 0) {
        return StatusFailure;
    }
    if (count == 0) {
        return StatusOk;
    }
    if (dst < 0 || src < 0 || count > storage.slots - dst || count > storage.slots - src) {
        return StatusFailure;
    }
    std::memmove(SlotAt(storage, dst), SlotAt(storage, src), BytesOf(storage, count));
    return StatusOk;
}

/// False also when the elements would be more than an int counts.
bool CanMakeRoom(const ArrayStorage& storage, int pos, int count) {
    return pos >= 0 && pos <= storage.size && count <= INT_MAX - storage.size;
}

// What follows serves the two variants with a guard.

void Empty(ArrayStorage& storage) {
    Release(storage);
    storage.buffer = nullptr;
    storage.size = 0;
    storage.capacity = 0;
}

/// Takes `n` raw slots in place of what was there.
void ReInitTo(ArrayStorage& storage, int n) {
    if (n == 0) {
        // Deliberately leaves the address of the freed buffer; without slots it is never looked at again.
        Release(storage);
        storage.size = 0;
        storage.capacity = 0;
        return;
    }
    Empty(storage);
    storage.buffer = NewSlots(storage, n);
    storage.size = n;
    storage.capacity = n;
    storage.slots = n;
}

/// Raw slots, one for each element of `source`; what stands in them is for the derived class to copy.
void CopyShape(ArrayStorage& storage, const ArrayStorage& source) {
    storage = {nullptr, source.size, source.size, source.elementSize, 0};
    if (source.size != 0) {
        storage.buffer = NewSlots(source, source.size);
        storage.slots = source.size;
    }
}

/// Changes the capacity alone. False when nothing is to be done.
bool ChangeCapacity(ArrayStorage& storage, int n) {
    if (storage.size > n || (storage.capacity == n && storage.slots >= n)) {
        return false;
    }
    storage.capacity = n;
    return true;
}

/// Raises the capacity for growth to `size` elements. False when they have room.
bool RaiseCapacity(ArrayStorage& storage, int size) {
    if (HasRoomFor(storage, size)) {
        return false;
    }
    storage.capacity = GrownCapacity(storage, size);
    return true;
}

/// The move of MakeRoom(), once the length has grown from `oldSize`.
void OpenGap(ArrayStorage& storage, int pos, int count, int oldSize) {
    if (pos != oldSize) {
        MoveSlots(storage, pos + count, pos, oldSize - pos);
    }
}

} // namespace

// Without a guard.

QORSysTSArrayListAbstractCtnr::~QORSysTSArrayListAbstractCtnr() {
    Empty(_storage);
    // Kept from the optimiser: a destroyed engine stays recognisable, although no program may look at it.
    asm volatile("" : : "r"(this) : "memory");
}

int QORSysTSArrayListAbstractCtnr::Move(int dst, int src, int count) {
    return MoveSlots(_storage, dst, src, count);
}

int QORSysTSArrayListAbstractCtnr::SetCapacity(int n) {
    if (_storage.size > n) {
        return StatusFailure;
    }
    if (_storage.capacity == n && _storage.slots == n) {
        return StatusOk;
    }
    // Deliberately ahead of the allocation, which may throw; the slots then tell what is really there.
    _storage.capacity = n;
    if (n == 0) {
        Empty(_storage);
        return StatusOk;
    }
    _storage.slots = std::min(_storage.slots, n);
    Relocate(_storage);
    return StatusOk;
}

int QORSysTSArrayListAbstractCtnr::ReInit(int n) {
    _storage.size = 0;
    return HasRoomFor(_storage, n) ? static_cast<int>(StatusOk) : SetCapacity(n);
}

int QORSysTSArrayListAbstractCtnr::_Reserve(int size) {
    return HasRoomFor(_storage, size) ? static_cast<int>(StatusOk) : SetCapacity(GrownCapacity(_storage, size));
}

int QORSysTSArrayListAbstractCtnr::MakeRoom(int pos, int count) {
    if (count < 0 || !CanMakeRoom(_storage, pos, count)) {
        return StatusFailure;
    }
    const int oldSize = _storage.size;
    const int status = _Reserve(oldSize + count);
    if (status != StatusOk || count == 0) {
        return status;
    }
    _storage.size = oldSize + count;
    return pos != oldSize ? Move(pos + count, pos, oldSize - pos) : static_cast<int>(StatusOk);
}

// With a flag that refuses all operations.

// Deliberately without a look at the flag, here and in the copy.
QORSysTSArrayListAbstractCtnrFC::QORSysTSArrayListAbstractCtnrFC(int elementSize)
    : _storage{nullptr, 0, 0, elementSize, 0} {}

QORSysTSArrayListAbstractCtnrFC::QORSysTSArrayListAbstractCtnrFC(const QORSysTSArrayListAbstractCtnrFC& other) {
    CopyShape(_storage, other._storage);
}

QORSysTSArrayListAbstractCtnrFC::~QORSysTSArrayListAbstractCtnrFC() {
    Empty(_storage);
}

void QORSysTSArrayListAbstractCtnrFC::FreezeContent() {
    _frozen = 1;
}

void QORSysTSArrayListAbstractCtnrFC::UnFreezeContent() {
    _frozen = 0;
}

void QORSysTSArrayListAbstractCtnrFC::ReInit() {
    if (_frozen == 0) {
        Empty(_storage);
    }
}

void QORSysTSArrayListAbstractCtnrFC::ReInit(int n) {
    if (_frozen == 0) {
        ReInitTo(_storage, n);
    }
}

void QORSysTSArrayListAbstractCtnrFC::Move(int dst, int src, int count) {
    if (_frozen == 0) {
        MoveSlots(_storage, dst, src, count);
    }
}

void QORSysTSArrayListAbstractCtnrFC::ReAllocate() {
    if (_frozen == 0 && _storage.capacity != 0) {
        Relocate(_storage);
    }
}

void QORSysTSArrayListAbstractCtnrFC::IncreaseLength(int n) {
    if (_frozen != 0 || n < 1 || !CanMakeRoom(_storage, 0, n)) {
        return;
    }
    if (RaiseCapacity(_storage, _storage.size + n)) {
        ReAllocate();
    }
    _storage.size += n;
}

int QORSysTSArrayListAbstractCtnrFC::CheckIndex(int i) const {
    if (_frozen != 0) {
        return StatusBadArgument;
    }
    return IsIndex(_storage, i) ? StatusOk : StatusFailure;
}

int QORSysTSArrayListAbstractCtnrFC::CheckRange(int first, int end) const {
    if (_frozen != 0) {
        return StatusBadArgument;
    }
    return IsRange(_storage, first, end) ? StatusOk : StatusFailure;
}

int QORSysTSArrayListAbstractCtnrFC::MakeRoom(int pos, int count) {
    if (_frozen != 0) {
        return StatusBadArgument;
    }
    if (!CanMakeRoom(_storage, pos, count)) {
        return StatusFailure;
    }
    const int oldSize = _storage.size;
    IncreaseLength(count);
    OpenGap(_storage, pos, count, oldSize);
    return StatusOk;
}

void QORSysTSArrayListAbstractCtnrFC::SetCapacity(int n) {
    if (_frozen == 0 && ChangeCapacity(_storage, n)) {
        ReAllocate();
    }
}

// With a mutex. Operations that are made of others take it again for each of them.

QORSysTSArrayListAbstractCtnrFTS::QORSysTSArrayListAbstractCtnrFTS(int elementSize) : _mutex(0, 1, 0) {
    const MutexHolder own(_mutex);
    _storage = {nullptr, 0, 0, elementSize, 0};
}

QORSysTSArrayListAbstractCtnrFTS::QORSysTSArrayListAbstractCtnrFTS(const QORSysTSArrayListAbstractCtnrFTS& other)
    : _mutex(0, 1, 0) {
    const MutexHolder source(other._mutex, &QORMutex::Lock);
    const MutexHolder own(_mutex);
    CopyShape(_storage, other._storage);
}

QORSysTSArrayListAbstractCtnrFTS::~QORSysTSArrayListAbstractCtnrFTS() {
    Empty(_storage);
}

void QORSysTSArrayListAbstractCtnrFTS::ReInit() {
    Empty(_storage);
}

void QORSysTSArrayListAbstractCtnrFTS::ReInit(int n) {
    ReInitTo(_storage, n);
}

void QORSysTSArrayListAbstractCtnrFTS::Move(int dst, int src, int count) {
    MoveSlots(_storage, dst, src, count);
}

void QORSysTSArrayListAbstractCtnrFTS::ReAllocate() {
    const MutexHolder own(_mutex);
    if (_storage.capacity != 0) {
        Relocate(_storage);
    }
}

void QORSysTSArrayListAbstractCtnrFTS::IncreaseLength(int n) {
    if (n < 1) {
        return;
    }
    const MutexHolder own(_mutex);
    if (!CanMakeRoom(_storage, 0, n)) {
        return;
    }
    if (RaiseCapacity(_storage, _storage.size + n)) {
        ReAllocate();
    }
    _storage.size += n;
}

int QORSysTSArrayListAbstractCtnrFTS::CheckIndex(int i) const {
    const MutexHolder own(_mutex);
    return IsIndex(_storage, i) ? StatusOk : StatusFailure;
}

int QORSysTSArrayListAbstractCtnrFTS::CheckRange(int first, int end) const {
    const MutexHolder own(_mutex);
    return IsRange(_storage, first, end) ? StatusOk : StatusFailure;
}

int QORSysTSArrayListAbstractCtnrFTS::MakeRoom(int pos, int count) {
    const MutexHolder own(_mutex);
    if (!CanMakeRoom(_storage, pos, count)) {
        return StatusFailure;
    }
    const int oldSize = _storage.size;
    IncreaseLength(count);
    OpenGap(_storage, pos, count, oldSize);
    return StatusOk;
}

void QORSysTSArrayListAbstractCtnrFTS::SetCapacity(int n) {
    {
        const MutexHolder own(_mutex);
        if (!ChangeCapacity(_storage, n)) {
            return;
        }
    }
    ReAllocate();
}
