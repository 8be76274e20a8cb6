#include "QORSysTSArrayListAbstractCtnrFTS.h"
#include "ArrayAllocations.h"

#include <gtest/gtest.h>
#include <new>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int Ok = 0;

using FTS = QORSysTSArrayListAbstractCtnrFTS;

// Watched by one thread alone.
const void* s_watched = nullptr;
const void* s_watchedCopy = nullptr;
std::string s_events;

void LogLock(const void* mutex, char event, char eventOfCopy) {
    if (mutex == s_watched && mutex != nullptr) {
        s_events += event;
    } else if (mutex == s_watchedCopy && mutex != nullptr) {
        s_events += eventOfCopy;
    }
}

/// The locks and unlocks of an engine's mutex while it lives, as "LU", and those of a second one, as "lu".
class LockLog {
public:
    explicit LockLog(const FTS& engine, const void* copy = nullptr) {
        s_events.clear();
        s_watched = &engine._mutex;
        s_watchedCopy = copy;
    }
    LockLog(const LockLog&) = delete;
    LockLog& operator=(const LockLog&) = delete;
    ~LockLog() { s_watched = s_watchedCopy = nullptr; }

    std::string Take() { return std::exchange(s_events, ""); }
};

} // namespace

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    const int result = __real_pthread_mutex_lock(mutex);
    LogLock(mutex, 'L', 'l');
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
