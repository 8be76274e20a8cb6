/// @file
/// The C library's heap as the strings use it: what they take and give back, shortage on demand, and the reports of
/// programming errors that go with it. Blocks of operator `new` are not seen here.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

/// Records, while it lives, the blocks taken and freed on all threads. One at a time.
class HeapLog {
public:
    HeapLog();
    HeapLog(const HeapLog&) = delete;
    HeapLog& operator=(const HeapLog&) = delete;
    ~HeapLog();

    /// The sizes asked for, in order.
    std::vector<std::size_t> Requests() const;
    /// The blocks freed, in order, those taken earlier included.
    std::vector<const void*> Freed() const;
    bool HasFreed(const void* block) const;
    /// Blocks taken and not freed since.
    std::size_t Live() const;

    void RecordTaken(const void* block, std::size_t size);
    void RecordFreed(const void* block);

private:
    mutable std::mutex _mutex;
    std::vector<std::size_t> _requests;
    std::vector<const void*> _freed;
    std::vector<const void*> _live;
};

/// While it lives, requests of this thread fail: the given one, counted from 1, and those behind it or not.
class HeapShortage {
public:
    enum Extent { OnlyThatOne, FromThatOneOn };

    HeapShortage(int first, Extent extent);
    HeapShortage(const HeapShortage&) = delete;
    HeapShortage& operator=(const HeapShortage&) = delete;
    ~HeapShortage();

    /// True when a request was refused.
    static bool HasStruck();

    /// Counts a request that reaches the heap by another way than `malloc`. True when it must be refused.
    static bool Refuses();
};

/// Runs `action` inside the next request of this thread.
void InsideNextRequest(std::function<void()> action);

/// Programming errors reported so far; each must have come with code 1.
int DebugBreaks();
