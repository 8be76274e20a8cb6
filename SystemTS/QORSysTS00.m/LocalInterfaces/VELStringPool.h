/// @file
/// The per-thread pool of small string blocks.
///
/// Freed blocks of up to 96 bytes are kept on lists of the freeing thread, so that making and destroying short strings
/// does not reach the C library's heap and takes no lock and no atomic. Every block is a plain `malloc` block: it may
/// be freed on another thread than the one that took it, and may be given to `free` at any time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace VEL::internal {

/// A free block; the link stands in its first bytes.
struct FreeBlock {
    FreeBlock* next;
};

/// The free blocks of one size class.
struct StringPoolBucket {
    FreeBlock* head;
    std::uint32_t count;
    std::uint32_t limit;
};

/// The pool of one thread. Zero-initialised, so that it costs nothing until the thread uses it.
struct StringPool {
    static constexpr std::size_t BucketCount = 12;
    static constexpr std::size_t Granularity = 8; ///< Bucket k serves requests of 8k+1 to 8k+8 bytes.
    static constexpr std::size_t LargestPooledSize = BucketCount * Granularity;
    static constexpr std::uint32_t BucketLimit = 256;
    static constexpr std::int32_t On = 1;
    static constexpr std::int32_t Off = -1;

    bool initialised;
    bool exitHandlerIsSet;
    StringPoolBucket buckets[BucketCount];
    std::int32_t status;

    static std::size_t GrantedSize(std::size_t size) { return (size + Granularity - 1) & ~(Granularity - 1); }
    static std::size_t BucketIndex(std::size_t size) { return (size - 1) / Granularity; }

    /// A block of GrantedSize(size) bytes, or null when there is no memory. `size` is at least 1.
    void* Take(std::size_t size) {
        // A pool that the thread has not used yet is not on.
        if (status == On && size <= LargestPooledSize) [[likely]] {
            StringPoolBucket& bucket = buckets[BucketIndex(size)];
            if (bucket.head != nullptr) [[likely]] {
                FreeBlock* block = bucket.head;
                bucket.head = block->next;
                --bucket.count;
                return block;
            }
        }
        return TakeFromHeap(size);
    }

    /// Gives back a block of at least `size` bytes; null does nothing.
    void Give(void* block, std::size_t size) {
        if (status == On && size <= LargestPooledSize && block != nullptr) [[likely]] {
            StringPoolBucket& bucket = buckets[BucketIndex(size)];
            if (bucket.count < bucket.limit) [[likely]] {
                auto* free = static_cast<FreeBlock*>(block);
                free->next = bucket.head;
                bucket.head = free;
                ++bucket.count;
                return;
            }
        }
        GiveToHeap(block, size);
    }

    /// Frees all blocks. True when there was one.
    bool Flush();

private:
    // The roads that leave the pool. A thread's first use comes along them.
    void* TakeFromHeap(std::size_t size);
    void GiveToHeap(void* block, std::size_t size);
};

/// The pool of this thread, as it stands. Local exec is out of reach for a shared library; initial exec costs one load
/// and takes some 200 bytes of the space that the C library sets aside for libraries loaded late.
extern thread_local constinit StringPool t_stringPool __attribute__((tls_model("initial-exec")));

/// The pool of this thread. What does more than take and give asks EnsureStringPool() for it.
inline StringPool& ThisThreadsStringPool() {
    return t_stringPool;
}

/// The pool of this thread, ready for use. First use on a thread gives it empty buckets, the status that the process's
/// switch asks for, and the exit handler; once per process the library pins itself in memory.
StringPool& EnsureStringPool();

} // namespace VEL::internal
