/// @file
/// How the linked engine with a lock holds it.

#include "QORSysTSLinkedAbstractCtnrFTS.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <new>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using FTS = QORSysTSLinkedAbstractCtnrFTS;
using Node = FTS::Node;

// Watched by one thread alone.
const void* s_watched = nullptr;
std::string s_events;

void LogLock(const void* mutex, char event) {
    if (mutex == s_watched && mutex != nullptr) {
        s_events += event;
    }
}

/// The locks and unlocks of an engine's mutex while it lives, as "LU".
class LockLog {
public:
    explicit LockLog(const void* mutex) {
        s_events.clear();
        s_watched = mutex;
    }
    LockLog(const LockLog&) = delete;
    LockLog& operator=(const LockLog&) = delete;
    ~LockLog() { s_watched = nullptr; }

    std::string Take() { return std::exchange(s_events, ""); }
};

} // namespace

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    const int result = __real_pthread_mutex_lock(mutex);
    LogLock(mutex, 'L');
    return result;
}

extern "C" int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    LogLock(mutex, 'U');
    return __real_pthread_mutex_unlock(mutex);
}

TEST(LockingLinkedEngine, HasTheMutexLast) {
    FTS engine;
    EXPECT_EQ(static_cast<void*>(&engine._chain), static_cast<void*>(&engine));
    EXPECT_EQ(static_cast<void*>(&engine._mutex), static_cast<void*>(&engine._chain + 1));
}

TEST(LockingLinkedEngine, LocksForTheWholeRunOfItsSteps) {
    FTS engine;
    Node nodes[6];
    Node* first = nullptr;
    Node* end = nullptr;
    LockLog log(&engine._mutex);
    for (Node& node : nodes) {
        engine.InsertNodeBetween(engine._chain.last, node, nullptr);
        EXPECT_EQ(log.Take(), "LU");
    }
    engine.GetNode(2);
    EXPECT_EQ(log.Take(), "LU");
    engine.GetNode(-1);
    EXPECT_EQ(log.Take(), "LU");
    engine.RemoveNode(nodes[5]);
    EXPECT_EQ(log.Take(), "LU");
    engine.RemoveNodeGetNext(nodes[4]);
    EXPECT_EQ(log.Take(), "LLUU") << "nested through RemoveNode";
    engine.RemoveNodeGetPrev(nodes[3]);
    EXPECT_EQ(log.Take(), "LLUU");
    engine.GetNodeRange(0, 2, first, end);
    EXPECT_EQ(log.Take(), "LULU") << "two steps, and nothing around them";
    engine.GetNodeRange(0, 9, first, end);
    EXPECT_EQ(log.Take(), "LULU");
    engine.GetNodeRange(1, 1, first, end);
    EXPECT_EQ(log.Take(), "");
    engine.PopNode(1);
    EXPECT_EQ(log.Take(), "LULU");
    engine.PopNode(7);
    EXPECT_EQ(log.Take(), "LU");
    engine.PopFirstNode();
    EXPECT_EQ(log.Take(), "LU") << "the end is read without the mutex";
    engine.PopLastNode();
    EXPECT_EQ(log.Take(), "LU");
    engine.PopFirstNode();
    engine.PopLastNode();
    EXPECT_EQ(log.Take(), "") << "empty";
    engine.Init();
    EXPECT_EQ(log.Take(), "LU");
}

TEST(LockingLinkedEngine, IsMadeUnderItsOwnLock) {
    alignas(FTS) unsigned char storage[sizeof(FTS)] = {};
    LockLog log(storage + 24);
    auto* const engine = new (storage) FTS();
    EXPECT_EQ(log.Take(), "LU");
    engine->~FTS();
    EXPECT_EQ(log.Take(), "") << "no lock at the end";
}

TEST(LockingLinkedEngine, ServesSeveralThreads) {
    constexpr std::size_t Threads = 4;
    constexpr std::size_t Rounds = 300;
    FTS engine;
    // Each thread works behind a node of its own, whose next link no other thread changes.
    std::vector<Node> heads(Threads);
    std::vector<Node> nodes(Threads * Rounds);
    for (Node& head : heads) {
        engine.InsertNodeBetween(engine._chain.last, head, nullptr);
    }
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&, thread] {
            Node& head = heads[thread];
            for (std::size_t i = 0; i < Rounds; ++i) {
                Node& node = nodes[thread * Rounds + i];
                engine.InsertNodeBetween(&head, node, head.next);
                EXPECT_NE(engine.GetNode(static_cast<int>(i % Threads)), nullptr);
                if (i % 3 == 1) {
                    EXPECT_EQ(engine.RemoveNode(node), &node);
                } else if (i % 3 == 2) {
                    EXPECT_EQ(engine.RemoveNodeGetPrev(node), &head);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(engine._chain.count, static_cast<int>(Threads + Threads * Rounds / 3));
    int walked = 0;
    for (const Node* node = engine._chain.first; node != nullptr; node = node->next) {
        ++walked;
    }
    EXPECT_EQ(walked, engine._chain.count);
}

TEST(LockingLinkedEngine, HandsNodesFromOneThreadToAnother) {
    constexpr int Count = 500;
    FTS engine;
    std::vector<Node> nodes(Count);
    std::thread producer([&] {
        for (Node& node : nodes) {
            engine.InsertNodeBetween(nullptr, node, nullptr);
            while (engine.GetNode(0) != nullptr) {
                std::this_thread::yield();
            }
        }
    });
    // Reads the ends without the mutex while the other thread changes them.
    int taken = 0;
    while (taken < Count) {
        taken += (taken % 2 == 0 ? engine.PopFirstNode() : engine.PopLastNode()) != nullptr ? 1 : 0;
        std::this_thread::yield();
    }
    producer.join();
    EXPECT_EQ(engine._chain.count, 0);
    EXPECT_EQ(engine.PopFirstNode(), nullptr);
}
