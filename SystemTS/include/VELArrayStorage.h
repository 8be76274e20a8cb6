/// @file
/// The fields that the three array engines have in common.
#pragma once

namespace VEL::internal {

/// An array of slots of one size, with nothing known of what stands in them. The owner is the engine that holds it.
struct ArrayStorage {
    char* buffer;    ///< Raw bytes from an array `new`.
    int size;        ///< Elements in use.
    int capacity;    ///< Slots as the engine counts them.
    int elementSize; ///< Bytes of one slot.
    /// Slots that are really there, 0 when `buffer` is not owned. It differs from `capacity` when memory ran out after
    /// the capacity was raised. It takes the four bytes that would otherwise pad the record.
    int slots;
};

static_assert(sizeof(ArrayStorage) == 24);

/// True when an element stands at `i`.
inline bool IsIndex(const ArrayStorage& storage, int i) noexcept {
    // An index below 0 is one above all sizes.
    return static_cast<unsigned int>(i) < static_cast<unsigned int>(storage.size);
}

/// True when elements stand from `first` up to but not including `end`. An empty range is none.
inline bool IsRange(const ArrayStorage& storage, int first, int end) noexcept {
    return first >= 0 && first < end && end <= storage.size;
}

} // namespace VEL::internal
