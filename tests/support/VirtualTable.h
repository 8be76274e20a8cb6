/// @file
/// Where virtual operations stand in the table of their class.
#pragma once

#include <cstring>

namespace VirtualTable {

/// The slot of a virtual operation.
template <class Pointer>
long SlotOf(Pointer operation) {
    long word;
    static_assert(sizeof operation >= sizeof word);
    std::memcpy(&word, &operation, sizeof word);
    return (word - 1) / static_cast<long>(sizeof(void*));
}

/// A class of which a further virtual operation takes the first free slot.
template <class Base>
class WithOneMore : public Base {
public:
    virtual void OneMore() {}
};

using Slot = void (*)(void*);

/// What stands in a slot of the table of an object.
inline Slot SlotAt(const void* object, int i) {
    Slot* table;
    std::memcpy(&table, object, sizeof table);
    return table[i];
}

} // namespace VirtualTable
