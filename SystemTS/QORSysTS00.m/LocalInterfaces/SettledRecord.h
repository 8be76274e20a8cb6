/// @file
/// A plain record that one thread at a time publishes and all others read without a lock.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace VEL::internal {

/// Holds a `Record`, or nothing. Publish() and Withdraw() are called under a lock of the owner's; readers never wait,
/// and get nothing while a record is being replaced.
template <class Record>
class SettledRecord {
    static_assert(std::is_trivially_copyable_v<Record> && sizeof(Record) % sizeof(unsigned long) == 0);

public:
    constexpr SettledRecord() = default;

    void Withdraw() {
        const unsigned long version = _version.load(std::memory_order_relaxed);
        if (IsHeld(version)) {
            _version.store(version + 1, std::memory_order_relaxed);
        }
    }

    void Publish(const Record& record) {
        Withdraw();
        unsigned long words[Words];
        std::memcpy(words, &record, sizeof record);
        for (std::size_t i = 0; i < Words; ++i) {
            // Release: who sees the word sees that the record before it was withdrawn.
            _words[i].store(words[i], std::memory_order_release);
        }
        // Release: who sees the version sees the words.
        _version.store(_version.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }

    /// @return False, with `record` in no certain state, when there is nothing to be had.
    bool Read(Record& record) const {
        const unsigned long version = _version.load(std::memory_order_acquire);
        if (!IsHeld(version)) {
            return false;
        }
        auto* const bytes = reinterpret_cast<unsigned char*>(&record);
        for (std::size_t i = 0; i < Words; ++i) {
            // Acquire: the version is read again after the words.
            const unsigned long word = _words[i].load(std::memory_order_acquire);
            std::memcpy(bytes + i * sizeof word, &word, sizeof word);
        }
        return _version.load(std::memory_order_relaxed) == version;
    }

    /// Read() of the one word at `offset`.
    bool ReadWord(std::size_t offset, unsigned long& word) const {
        const unsigned long version = _version.load(std::memory_order_acquire);
        if (!IsHeld(version)) {
            return false;
        }
        // Acquire: as above.
        word = _words[offset / sizeof word].load(std::memory_order_acquire);
        return _version.load(std::memory_order_relaxed) == version;
    }

private:
    static constexpr std::size_t Words = sizeof(Record) / sizeof(unsigned long);

    static constexpr bool IsHeld(unsigned long version) { return version % 2 != 0; }

    /// Odd while a record is held.
    std::atomic<unsigned long> _version{0};
    std::atomic<unsigned long> _words[Words] = {};
};

} // namespace VEL::internal
