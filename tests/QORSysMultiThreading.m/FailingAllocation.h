/// @file
/// Memory shortage on demand.
#pragma once

/// While one is alive, allocations by operator `new` on the calling thread fail from the given one on.
class FailingAllocation {
public:
    /// @param first  Number of the first allocation that fails, counted from 1.
    explicit FailingAllocation(int first);
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    /// True when an allocation was refused.
    bool HasFailed() const;
};

/// Blocks that the calling thread has taken by operator `new`, less those that it has given back.
long CountBlocks();

/// Calls `attempt()` again and again, each time with one more allocation that succeeds, until none is refused.
/// @return The number of calls in which an allocation was refused.
template <typename Attempt>
int SweepAllocations(Attempt attempt) {
    for (int first = 1;; ++first) {
        const FailingAllocation shortage(first);
        attempt(shortage);
        if (!shortage.HasFailed()) {
            return first - 1;
        }
    }
}
