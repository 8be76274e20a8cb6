#include "VELSysQuickSort.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

/// Where an element stands: its distance from the first one in bytes.
using Place = std::ptrdiff_t;

/// The first and the last element.
struct Range {
    Place lo;
    Place hi;
};

constexpr int FirstCapacity = 16;
/// Up to so many elements are sorted without partitions.
constexpr Place MostForExchanges = 8;

/// The range in hand and those that wait for it.
class RangeStack {
public:
    explicit RangeStack(Range range) : _fixed{range} {}
    RangeStack(const RangeStack&) = delete;
    RangeStack& operator=(const RangeStack&) = delete;
    ~RangeStack() { std::free(_block); }

    bool IsEmpty() const { return _inUse == 0; }
    Range& InHand() { return _entries[_inUse - 1]; }
    /// Takes `range` in hand; the one before waits.
    void Push(Range range) { _entries[_inUse++] = range; }
    /// Goes back to the range that waits.
    void Pop() { --_inUse; }
    /// Makes room for one more range. False when there is no memory.
    bool HasRoom() { return _inUse < _capacity || Grow(); }

private:
    bool Grow() {
        const std::size_t inUse = static_cast<std::size_t>(_inUse) * sizeof(Range);
        auto* const block = static_cast<Range*>(std::malloc(2 * inUse));
        if (block == nullptr) {
            return false;
        }
        std::memcpy(block, _entries, inUse);
        std::free(_block);
        _block = block;
        _entries = block;
        _capacity *= 2;
        return true;
    }

    Range _fixed[FirstCapacity];
    Range* _entries = _fixed;
    Range* _block = nullptr;
    int _inUse = 1;
    int _capacity = FirstCapacity;
};

void ExchangeWords(void* a, void* b) {
    std::uint64_t first;
    std::uint64_t second;
    std::memcpy(&first, a, sizeof first);
    std::memcpy(&second, b, sizeof second);
    std::memcpy(a, &second, sizeof second);
    std::memcpy(b, &first, sizeof first);
}

struct CallbackSwap {
    void* context;
    void (*swap)(void*, void*, void*);
    void operator()(void* a, void* b) const { swap(context, a, b); }
};

/// The default one, without a call.
struct WordSwap {
    void operator()(void* a, void* b) const { ExchangeWords(a, b); }
};

/// The order of all calls is relied upon: callers keep other data in step with the exchanges.
template <class Exchange>
class Sorter {
public:
    Sorter(void* base, int elementSize, Exchange exchange, void* context,
           int (*compare)(void*, const void*, const void*))
        : _base(static_cast<char*>(base)), _step(elementSize), _exchange(exchange), _context(context),
          _compare(compare) {}

    void Sort(Range whole) {
        RangeStack ranges(whole);
        while (!ranges.IsEmpty()) {
            const Range range = ranges.InHand();
            if (CountOf(range) <= MostForExchanges) {
                SortByExchanges(range);
                ranges.Pop();
                continue;
            }
            const Place pivot = Partition(range);
            const bool hasRoom = ranges.HasRoom();
            const Range left = {range.lo, pivot - _step};
            const Range right = WithoutEqualsInFront({pivot + _step, range.hi}, pivot);
            ranges.InHand() = left;
            if (hasRoom) {
                GoOn(ranges, right);
            } else {
                // The shorter part right now: calls then nest no deeper than the logarithm of the count.
                const bool isLeftShorter = CountOf(left) < CountOf(right);
                ranges.InHand() = isLeftShorter ? right : left;
                Sort(isLeftShorter ? left : right);
            }
        }
    }

private:
    static void GoOn(RangeStack& ranges, Range right) {
        const Range left = ranges.InHand();
        const bool hasLeft = left.lo < left.hi;
        const bool hasRight = right.lo < right.hi;
        if (hasLeft && hasRight) {
            ranges.Push(right);
        } else if (hasRight) {
            ranges.InHand() = right;
        } else if (!hasLeft) {
            ranges.Pop();
        }
    }

    Place CountOf(Range range) const { return (range.hi - range.lo) / _step + 1; }
    int Compare(Place a, Place b) const { return _compare(_context, _base + a, _base + b); }
    void Swap(Place a, Place b) const { _exchange(_base + a, _base + b); }
    void Order(Place a, Place b) const {
        if (Compare(a, b) > 0) {
            Swap(a, b);
        }
    }

    /// The first place behind `i` whose element is not below the pivot, at most the pivot's own.
    Place NotBelow(Place i, Place pivot) const {
        while (i < pivot) {
            i += _step;
            if (i == pivot || Compare(i, pivot) >= 0) {
                break;
            }
        }
        return i;
    }
    /// The first place in front of `j` whose element is below the pivot, at least the pivot's own.
    Place Below(Place j, Place pivot) const {
        while (j > pivot) {
            j -= _step;
            if (j == pivot || Compare(j, pivot) < 0) {
                break;
            }
        }
        return j;
    }

    /// Brings the elements below a pivot in front of it and the others behind it. @return The place of the pivot.
    Place Partition(Range range) const {
        Place pivot = range.lo + _step * (CountOf(range) / 2);
        Order(range.lo, pivot);
        Order(range.lo, range.hi);
        Order(pivot, range.hi);
        Place i = range.lo - _step;
        Place j = range.hi + _step;
        while (true) {
            i = NotBelow(i, pivot);
            j = Below(j, pivot);
            if (i == j) {
                return pivot;
            }
            if (i < pivot && j > pivot) {
                Swap(i, j);
            } else if (j > pivot) {
                // Nothing is left to exchange in front of the pivot, which moves one place back.
                const Place next = pivot + _step;
                if (next == j) {
                    Swap(pivot, j);
                    return j;
                }
                Swap(next, j);
                Swap(next, pivot);
                pivot = next;
                j += _step;
            } else {
                const Place previous = pivot - _step;
                if (previous == i) {
                    Swap(pivot, i);
                    return i;
                }
                Swap(previous, i);
                Swap(previous, pivot);
                pivot = previous;
                i -= _step;
            }
        }
    }

    /// Keeps arrays with many equal elements from degrading.
    Range WithoutEqualsInFront(Range range, Place pivot) const {
        while (range.lo < range.hi && Compare(range.lo, pivot) == 0) {
            range.lo += _step;
        }
        return range;
    }

    /// A bubble sort that goes up and down between the places of the outermost exchanges.
    void SortByExchanges(Range range) const {
        while (range.lo < range.hi) {
            Place last = range.lo;
            for (Place a = range.lo; a < range.hi; a += _step) {
                if (Compare(a, a + _step) > 0) {
                    Swap(a, a + _step);
                    last = a;
                }
            }
            // Without an exchange downward, this bound ends the loop as the one at `lo` does.
            Place first = last;
            for (Place b = last; b > range.lo; b -= _step) {
                if (Compare(b, b - _step) < 0) {
                    Swap(b, b - _step);
                    first = b;
                }
            }
            range = {first, last};
        }
    }

    char* _base;
    Place _step;
    Exchange _exchange;
    void* _context;
    int (*_compare)(void*, const void*, const void*);
};

} // namespace

void VELSysQuickSort(void* base, int count, int elementSize, void* swapContext, void (*swap)(void*, void*, void*),
                     void* compareContext, int (*compare)(void*, const void*, const void*)) {
    if (count < 2 || elementSize < 1 || swap == nullptr || compare == nullptr) {
        return;
    }
    const Range whole = {0, static_cast<Place>(count - 1) * elementSize};
    if (swap == VELSysQuickSortSwapDefault) {
        Sorter(base, elementSize, WordSwap(), compareContext, compare).Sort(whole);
    } else {
        Sorter(base, elementSize, CallbackSwap{swapContext, swap}, compareContext, compare).Sort(whole);
    }
}

void VELSysQuickSortSwapDefault(void*, void* a, void* b) {
    ExchangeWords(a, b);
}
