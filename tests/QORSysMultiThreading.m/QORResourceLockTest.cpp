#include "QORResourceLock.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

/// Long enough for another thread to get in where it may.
constexpr std::chrono::milliseconds s_aWhile{50};

/// A thread that takes and gives back one side of a lock, once.
class Visitor {
public:
    enum Side { Read, Write };

    Visitor(QORResourceLock& lock, Side side)
        : _thread([this, &lock, side] {
              side == Read ? lock.ReadLock() : lock.WriteLock();
              _hasEntered = true;
              side == Read ? lock.ReadUnlock() : lock.WriteUnlock();
          }) {}
    ~Visitor() { Join(); }

    bool IsKeptOut() const {
        std::this_thread::sleep_for(s_aWhile);
        return !_hasEntered;
    }
    bool GetsIn() {
        const bool result = WaitUntil([this] { return _hasEntered.load(); });
        Join();
        return result;
    }

private:
    void Join() {
        if (_thread.joinable()) {
            _thread.join();
        }
    }

    std::atomic<bool> _hasEntered{false};
    std::thread _thread;
};

TEST(QORResourceLockTest, ReadersShareTheLock) {
    QORResourceLock lock(1);
    EXPECT_EQ(lock.ReadLock(), 0);
    EXPECT_TRUE(Visitor(lock, Visitor::Read).GetsIn());
    EXPECT_EQ(lock.ReadUnlock(), 0);
}

TEST(QORResourceLockTest, AReaderKeepsWritersOut) {
    QORResourceLock lock(1);
    lock.ReadLock();
    Visitor writer(lock, Visitor::Write);
    EXPECT_TRUE(writer.IsKeptOut());
    lock.ReadUnlock();
    EXPECT_TRUE(writer.GetsIn());
}

TEST(QORResourceLockTest, AReaderMayReadAgainWhileAWriterWaits) {
    QORResourceLock lock(1);
    lock.ReadLock();
    Visitor writer(lock, Visitor::Write);
    ASSERT_TRUE(writer.IsKeptOut());
    EXPECT_EQ(lock.ReadLock(), 0);
    lock.ReadUnlock();
    lock.ReadUnlock();
    EXPECT_TRUE(writer.GetsIn());
}

TEST(QORResourceLockTest, AWriterKeepsAllOthersOut) {
    QORResourceLock lock(1);
    EXPECT_EQ(lock.WriteLock(), 0);
    Visitor reader(lock, Visitor::Read);
    Visitor writer(lock, Visitor::Write);
    EXPECT_TRUE(reader.IsKeptOut());
    EXPECT_TRUE(writer.IsKeptOut());
    EXPECT_EQ(lock.WriteUnlock(), 0);
    EXPECT_TRUE(reader.GetsIn());
    EXPECT_TRUE(writer.GetsIn());
}

TEST(QORResourceLockTest, TheWriterMayTakeEitherSideAgain) {
    QORResourceLock lock(1);
    EXPECT_EQ(lock.WriteLock(), 0);
    EXPECT_EQ(lock.WriteLock(), 0);
    EXPECT_EQ(lock.ReadLock(), 0);
    EXPECT_EQ(lock.WriteLock(), 0);
    EXPECT_EQ(lock.WriteUnlock(), 0);
    EXPECT_EQ(lock.ReadUnlock(), 0);
    EXPECT_EQ(lock.WriteUnlock(), 0);
    EXPECT_EQ(lock.WriteUnlock(), 0);
    EXPECT_TRUE(Visitor(lock, Visitor::Write).GetsIn());
}

TEST(QORResourceLockTest, TheLockStaysTheWritersUntilItHasGivenBackEverySide) {
    QORResourceLock lock(1);
    lock.WriteLock();
    lock.ReadLock();
    lock.WriteUnlock();
    Visitor reader(lock, Visitor::Read);
    EXPECT_TRUE(reader.IsKeptOut());
    lock.ReadUnlock();
    EXPECT_TRUE(reader.GetsIn());
}

TEST(QORResourceLockTest, WithoutReentryTheWriterIsRefused) {
    QORResourceLock lock(0);
    EXPECT_EQ(lock.WriteLock(), 0);
    EXPECT_EQ(lock.WriteLock(), -1);
    EXPECT_EQ(lock.ReadLock(), -1);
    EXPECT_EQ(lock.WriteUnlock(), 0);
    EXPECT_TRUE(Visitor(lock, Visitor::Write).GetsIn());
}

TEST(QORResourceLockTest, OnlyTheWriterUnlocksTheWriteSide) {
    QORResourceLock lock(1);
    EXPECT_EQ(lock.WriteUnlock(), -1);
    lock.WriteLock();
    std::thread([&] { EXPECT_EQ(lock.WriteUnlock(), -1); }).join();
    EXPECT_EQ(lock.WriteUnlock(), 0);
}

TEST(QORResourceLockTest, ReadersNeverSeeAWriteHalfDone) {
    constexpr int rounds = 2000;
    QORResourceLock lock(1);
    long first = 0;
    long second = 0;
    std::atomic<long> mismatches{0};
    RunAtOnce(4, [&](int number) {
        for (int round = 0; round < rounds; ++round) {
            if (number == 0) {
                lock.WriteLock();
                ++first;
                lock.ReadLock();
                ++second;
                lock.ReadUnlock();
                lock.WriteUnlock();
                continue;
            }
            lock.ReadLock();
            mismatches += first != second;
            lock.ReadUnlock();
        }
    });
    EXPECT_EQ(mismatches, 0);
    EXPECT_EQ(first, rounds);
}

} // namespace
