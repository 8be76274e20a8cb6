#include "QORSysTSArrayListAbstractCtnrFTS.h"
#include "ArrayAllocations.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);

using FTS = QORSysTSArrayListAbstractCtnrFTS;

// Watched by one thread alone.
const void* s_watched = nullptr;
const void* s_watchedCopy = nullptr;
std::string s_events;
std::function<void(const std::string&)> s_onEvent;

void LogLock(const void* mutex, char event, char eventOfCopy) {
    if (mutex == nullptr || (mutex != s_watched && mutex != s_watchedCopy)) {
        return;
    }
    s_events += mutex == s_watched ? event : eventOfCopy;
    if (s_onEvent) {
        s_onEvent(s_events);
    }
}

/// The successful locks and the unlocks of an engine's mutex while it lives, as "LU", and those of a second one, as
/// "lu".
class LockLog {
public:
    explicit LockLog(const FTS& engine, const void* copy = nullptr) {
        s_events.clear();
        s_watched = &engine._mutex;
        s_watchedCopy = copy;
    }
    LockLog(const LockLog&) = delete;
    LockLog& operator=(const LockLog&) = delete;
    ~LockLog() {
        s_watched = s_watchedCopy = nullptr;
        s_onEvent = nullptr;
    }

    /// Runs `action` with all events so far, right behind each lock and right in front of each unlock.
    void OnEvent(std::function<void(const std::string&)> action) { s_onEvent = std::move(action); }
    std::string Take() { return std::exchange(s_events, ""); }
};

} // namespace

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    const int result = __real_pthread_mutex_lock(mutex);
    if (result == 0) {
        LogLock(mutex, 'L', 'l');
    }
    return result;
}

extern "C" int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    LogLock(mutex, 'U', 'u');
    return __real_pthread_mutex_unlock(mutex);
}

TEST(LockingEngine, KeepsTheOrderOfItsFields) {
    FTS engine(4);
    EXPECT_EQ(static_cast<void*>(&engine._mutex), static_cast<void*>(&engine));
    EXPECT_EQ(static_cast<void*>(&engine._storage), static_cast<void*>(&engine._mutex + 1));
}

TEST(LockingEngine, LocksForTheWholeRunOfMostOperations) {
    FTS engine(4);
    LockLog log(engine);
    engine.ReInit(3);
    engine.ReInit();
    engine.MakeRoom(0, 3);
    EXPECT_EQ(log.Take(), "LLLUUU") << "nested through IncreaseLength and ReAllocate";
    engine.Move(0, 1, 1);
    engine.ReInit(0);
    EXPECT_EQ(log.Take(), "") << "no lock";
    engine.IncreaseLength(0);
    EXPECT_EQ(log.Take(), "");
    engine.IncreaseLength(3);
    EXPECT_EQ(log.Take(), "LLUU");
    engine.IncreaseLength(1);
    EXPECT_EQ(log.Take(), "LU");
    engine.MakeRoom(0, -1);
    EXPECT_EQ(log.Take(), "LU");
    engine.MakeRoom(-1, 1);
    EXPECT_EQ(log.Take(), "LU");
    engine.ReAllocate();
    EXPECT_EQ(log.Take(), "LU");
    engine.CheckIndex(0);
    EXPECT_EQ(log.Take(), "LU");
    engine.CheckRange(0, 1);
    EXPECT_EQ(log.Take(), "LU");
    engine.SetCapacity(20);
    EXPECT_EQ(log.Take(), "LULU") << "given back in between";
    engine.SetCapacity(20);
    EXPECT_EQ(log.Take(), "LU");
}

TEST(LockingEngine, LooksAtItsFieldsOnlyWhileTheyAreLocked) {
    FTS engine(4);
    engine.MakeRoom(0, 3);
    // The size is another one for as long as the mutex is held.
    const auto withSize = [&engine](int size, const std::function<int()>& operation) {
        LockLog log(engine);
        log.OnEvent([&engine, size](const std::string& events) {
            if (events == "L") {
                engine._storage.size = size;
            } else if (events.back() == 'U') {
                engine._storage.size = 3;
            }
        });
        return operation();
    };
    EXPECT_EQ(withSize(4, [&] { return engine.CheckIndex(3); }), Ok);
    EXPECT_EQ(withSize(2, [&] { return engine.CheckIndex(2); }), Failure);
    EXPECT_EQ(withSize(4, [&] { return engine.CheckRange(0, 4); }), Ok);
    EXPECT_EQ(withSize(2, [&] { return engine.CheckRange(0, 3); }), Failure);
    EXPECT_EQ(withSize(1, [&] { return engine.MakeRoom(2, 1); }), Failure);
    EXPECT_EQ(withSize(4, [&] { return engine.MakeRoom(4, 0); }), Ok);
}

TEST(LockingEngine, HasDoneItsWorkWhenItUnlocks) {
    FTS engine(4);
    engine.MakeRoom(0, 4);
    const VEL::internal::ArrayStorage& fields = engine._storage;
    LockLog log(engine);
    log.OnEvent([&](const std::string& events) {
        if (events == "L") {
            engine._storage.size = 2;
        } else {
            EXPECT_EQ(fields.size, 3);
        }
    });
    engine.IncreaseLength(1);
    EXPECT_EQ(log.Take(), "LU");
    log.OnEvent([&](const std::string& events) {
        if (events == "L") {
            engine._storage.size = 2;
        } else if (events == "LLU") {
            EXPECT_EQ(fields.size, 3) << "the nested growth is over";
        } else if (events == "LLUU") {
            EXPECT_EQ(fields.size, 3);
            EXPECT_EQ(fields.buffer[8], fields.buffer[4]) << "the tail has moved";
        }
    });
    std::memcpy(engine._storage.buffer, "aaaabbbbcccc", 12);
    engine.MakeRoom(1, 1);
    EXPECT_EQ(log.Take(), "LLUU");
    const char* const buffer = fields.buffer;
    log.OnEvent([&](const std::string& events) {
        if (events == "L") {
            engine._storage.capacity = 20;
        } else {
            EXPECT_EQ(fields.slots, 20);
            EXPECT_NE(fields.buffer, buffer);
        }
    });
    engine.ReAllocate();
    EXPECT_EQ(log.Take(), "LU");
    log.OnEvent([&](const std::string& events) {
        if (events == "L") {
            engine._storage.size = 2;
        } else if (events == "LU") {
            EXPECT_EQ(fields.capacity, 2) << "set, with the buffer still to come";
            EXPECT_EQ(fields.slots, 20);
        } else if (events == "LULU") {
            EXPECT_EQ(fields.slots, 2);
        }
    });
    engine.SetCapacity(2);
    EXPECT_EQ(log.Take(), "LULU");
}

TEST(LockingEngine, SetsItsFieldsUnderItsLock) {
    const FTS other(4);
    alignas(FTS) unsigned char storage[sizeof(FTS)];
    unsigned char* const fields = storage + sizeof(QORMutex);
    VEL::internal::ArrayStorage atUnlock;
    LockLog log(other, storage);
    log.OnEvent([&](const std::string& events) {
        if (events == "l") {
            std::memset(fields, 0xAA, sizeof atUnlock);
        } else {
            std::memcpy(&atUnlock, fields, sizeof atUnlock);
        }
    });
    auto* const engine = new (storage) FTS(12);
    EXPECT_EQ(log.Take(), "lu");
    EXPECT_EQ(std::memcmp(&atUnlock, fields, sizeof atUnlock), 0) << "and then no more";
    EXPECT_EQ(atUnlock.buffer, nullptr);
    EXPECT_EQ(atUnlock.size, 0);
    EXPECT_EQ(atUnlock.capacity, 0);
    EXPECT_EQ(atUnlock.elementSize, 12);
    engine->_storage = {nullptr, 0, 0, 12, 0};
    engine->~FTS();
}

TEST(LockingEngine, CopiesWhileBothLocksAreHeld) {
    FTS engine(4);
    engine.MakeRoom(0, 3);
    alignas(FTS) unsigned char storage[sizeof(FTS)];
    unsigned char* const fields = storage + sizeof(QORMutex);
    VEL::internal::ArrayStorage atUnlock;
    LockLog log(engine, storage);
    log.OnEvent([&](const std::string& events) {
        if (events == "Ll") {
            std::memset(fields, 0, sizeof atUnlock);
            engine._storage.size = 2;
        } else if (events == "Llu") {
            std::memcpy(&atUnlock, fields, sizeof atUnlock);
            engine._storage.size = 3;
        }
    });
    auto* const copy = new (storage) FTS(engine);
    EXPECT_EQ(log.Take(), "LluU");
    EXPECT_EQ(std::memcmp(&atUnlock, fields, sizeof atUnlock), 0);
    EXPECT_NE(atUnlock.buffer, nullptr);
    EXPECT_EQ(atUnlock.size, 2);
    EXPECT_EQ(atUnlock.capacity, 2);
    EXPECT_EQ(atUnlock.elementSize, 4);
    copy->~FTS();
}

TEST(LockingEngine, IsMadeUnderItsOwnLock) {
    const FTS other(4);
    alignas(FTS) unsigned char storage[sizeof(FTS)];
    LockLog log(other, storage);
    auto* const engine = new (storage) FTS(4);
    EXPECT_EQ(log.Take(), "lu");
    engine->~FTS();
    EXPECT_EQ(log.Take(), "") << "no lock at the end";
}

TEST(LockingEngine, CopiesUnderBothLocks) {
    FTS engine(4);
    engine.MakeRoom(0, 3);
    alignas(FTS) unsigned char storage[sizeof(FTS)];
    LockLog log(engine, storage);
    (new (storage) FTS(engine))->~FTS();
    EXPECT_EQ(log.Take(), "LluU");
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(new (storage) FTS(engine), std::bad_alloc);
    }
    EXPECT_EQ(log.Take(), "LluU") << "given back when memory runs out";
    {
        const ArrayAllocations::Shortage shortage;
        EXPECT_THROW(engine.MakeRoom(0, 100), std::bad_alloc);
    }
    EXPECT_EQ(log.Take(), "LLLUUU");
}

TEST(LockingEngine, ServesSeveralThreads) {
    constexpr int Threads = 4;
    constexpr int Rounds = 2000;
    FTS engine(sizeof(int));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < Rounds; ++i) {
                engine.MakeRoom(0, 1);
                engine.IncreaseLength(1);
                engine.CheckIndex(i);
                engine.CheckRange(0, i);
                if (i % 100 == thread) {
                    engine.SetCapacity(3 * Threads * Rounds + i);
                    engine.ReAllocate();
                    const FTS copy(engine);
                    EXPECT_EQ(copy.CheckIndex(0), Ok);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(engine._storage.size, 2 * Threads * Rounds);
    EXPECT_EQ(engine.CheckRange(0, 2 * Threads * Rounds), Ok);
}
