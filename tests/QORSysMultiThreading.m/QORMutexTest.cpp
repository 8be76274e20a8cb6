#include "QORMutex.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(QORMutexTest, TheHolderMayLockAgain) {
    QORMutex mutex(0, 1, 0);
    EXPECT_EQ(mutex.Lock(), 0);
    EXPECT_EQ(mutex.Lock(), 0);
    EXPECT_EQ(mutex.Unlock(), 0);
    EXPECT_EQ(mutex.Unlock(), 0);
}

TEST(QORMutexTest, ANestedLockKeepsOthersOutUntilTheLastUnlock) {
    QORMutex mutex(0, 1, 0);
    std::atomic<bool> hasEntered{false};
    mutex.Lock();
    mutex.Lock();
    std::thread other([&] {
        mutex.Lock();
        hasEntered = true;
        mutex.Unlock();
    });
    mutex.Unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(hasEntered);
    mutex.Unlock();
    other.join();
    EXPECT_TRUE(hasEntered);
}

TEST(QORMutexTest, AnotherThreadCannotUnlock) {
    if (s_isThreadSanitized) {
        GTEST_SKIP() << "the sanitizer reports this by itself";
    }
    QORMutex mutex(0, 1, 0);
    mutex.Lock();
    std::thread([&] { EXPECT_EQ(mutex.Unlock(), -1); }).join();
    EXPECT_EQ(mutex.Unlock(), 0);
}

TEST(QORMutexTest, UnlockOfAFreeMutexIsRefused) {
    if (s_isThreadSanitized) {
        GTEST_SKIP() << "the sanitizer reports this by itself";
    }
    QORMutex mutex(0, 1, 0);
    EXPECT_EQ(mutex.Unlock(), -1);
}

TEST(QORMutexTest, AMutexThatIsNotRecursiveRefusesItsHolder) {
    if (s_isThreadSanitized) {
        GTEST_SKIP() << "the sanitizer reports this by itself";
    }
    QORMutex mutex(0, 0, 0);
    EXPECT_EQ(mutex.Lock(), 0);
    EXPECT_EQ(mutex.Lock(), -1);
    EXPECT_EQ(mutex.Unlock(), 0);
    EXPECT_EQ(mutex.Unlock(), -1);
}

TEST(QORMutexTest, TheMemberPointersLockAndUnlock) {
    QORMutex mutex(0, 1, 0);
    EXPECT_EQ((mutex.*QORMutex::LockF)(), 0);
    EXPECT_EQ((mutex.*QORMutex::UnlockF)(), 0);
    EXPECT_TRUE(QORMutex::LockF == &QORMutex::Lock);
    EXPECT_TRUE(QORMutex::UnlockF == &QORMutex::Unlock);
}

const bool s_memberPointersStoodAtStaticInitialisation = QORMutex::LockF && QORMutex::UnlockF;

TEST(QORMutexTest, TheMemberPointersStandDuringStaticInitialisation) {
    EXPECT_TRUE(s_memberPointersStoodAtStaticInitialisation);
}

TEST(QORMutexTest, OnlyOneOfManyThreadsIsInside) {
    constexpr int threads = 4;
    constexpr int rounds = 2000;
    QORMutex mutex(0, 1, 0);
    long counter = 0;
    RunAtOnce(threads, [&](int) {
        for (int round = 0; round < rounds; ++round) {
            (mutex.*QORMutex::LockF)();
            mutex.Lock();
            ++counter;
            mutex.Unlock();
            (mutex.*QORMutex::UnlockF)();
        }
    });
    EXPECT_EQ(counter, threads * rounds);
}

} // namespace
