/// @file
/// A mutex that comes and goes while the process runs.
#pragma once

#include "QORMutex.h"

#include <mutex>
#include <new>
#include <utility>

namespace VEL::internal {

/// A mutex that is published when there is none and withdrawn at the end, while another thread may just have read it:
/// whoever reads it holds it, and the last holder destroys it. Constant-initialised and never destroyed, so that it
/// works before `main` and after it.
class WithdrawableMutex {
public:
    constexpr WithdrawableMutex() = default;
    WithdrawableMutex(const WithdrawableMutex&) = delete;
    WithdrawableMutex& operator=(const WithdrawableMutex&) = delete;

    /// Makes a mutex and publishes it, unless one is published. Without memory there is none.
    void Publish() {
        auto* made = new (std::nothrow) Held;
        const std::lock_guard guard(_guard);
        if (_published == nullptr) {
            _published = made;
        } else {
            delete made;
        }
    }

    bool IsPublished() {
        const std::lock_guard guard(_guard);
        return _published != nullptr;
    }

    /// Takes the mutex back from those who come later.
    void Withdraw() {
        const std::lock_guard guard(_guard);
        if (_published != nullptr) {
            Drop(std::exchange(_published, nullptr));
        }
    }

private:
    struct Held {
        QORMutex mutex{0, 1, 0};
        int holders = 1; ///< Threads that hold it, and 1 while it is published; under `_guard`.
    };

public:
    /// The published mutex as one thread holds and locks it.
    class Lock {
    public:
        explicit Lock(WithdrawableMutex& owner) : _owner(owner), _held(owner.Hold()) {
            if (_held != nullptr) {
                _held->mutex.Lock();
            }
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock() {
            if (_held != nullptr) {
                _held->mutex.Unlock();
                const std::lock_guard guard(_owner._guard);
                Drop(_held);
            }
        }
        /// False when no mutex is published.
        explicit operator bool() const { return _held != nullptr; }

    private:
        WithdrawableMutex& _owner;
        Held* const _held;
    };

private:
    Held* Hold() {
        const std::lock_guard guard(_guard);
        if (_published != nullptr) {
            ++_published->holders;
        }
        return _published;
    }

    static void Drop(Held* held) {
        if (--held->holders == 0) {
            delete held;
        }
    }

    std::mutex _guard;
    Held* _published = nullptr;
};

} // namespace VEL::internal
