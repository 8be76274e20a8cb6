/// @file
/// How the linked engine with a lock holds it.

#include "QORSysTSLinkedAbstractCtnrFTS.h"

#include <cstddef>
#include <functional>
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
std::function<void(const std::string&)> s_onEvent;

void LogLock(const void* mutex, char event) {
    if (mutex != s_watched || mutex == nullptr) {
        return;
    }
    s_events += event;
    if (s_onEvent) {
        s_onEvent(s_events);
    }
}

/// The successful locks and the unlocks of an engine's mutex while it lives, as "LU".
class LockLog {
public:
    explicit LockLog(const void* mutex) {
        s_events.clear();
        s_watched = mutex;
    }
    LockLog(const LockLog&) = delete;
    LockLog& operator=(const LockLog&) = delete;
    ~LockLog() {
        s_watched = nullptr;
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
        LogLock(mutex, 'L');
    }
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

TEST(LockingLinkedEngine, ReadsTheLinksOfANodeThatItTakesOutUnderTheLock) {
    for (const bool isNext : {true, false}) {
        FTS engine;
        Node nodes[3];
        Node neighbour;
        for (Node& node : nodes) {
            engine.InsertNodeBetween(engine._chain.last, node, nullptr);
        }
        LockLog log(&engine._mutex);
        log.OnEvent([&](const std::string& events) {
            if (events == "L") {
                isNext ? engine._chain.InsertBetween(&nodes[1], neighbour, &nodes[2])
                       : engine._chain.InsertBetween(&nodes[0], neighbour, &nodes[1]);
            } else if (events == "LLU") {
                nodes[1].next = nodes[1].previous = nullptr;
            }
        });
        EXPECT_EQ(isNext ? engine.RemoveNodeGetNext(nodes[1]) : engine.RemoveNodeGetPrev(nodes[1]), &neighbour);
        EXPECT_EQ(log.Take(), "LLUU");
        EXPECT_EQ(engine._chain.count, 3);
    }
}

TEST(LockingLinkedEngine, WalksTheChainOnlyWhileItIsLocked) {
    FTS engine;
    Node nodes[2];
    Node third;
    for (Node& node : nodes) {
        engine.InsertNodeBetween(engine._chain.last, node, nullptr);
    }
    LockLog log(&engine._mutex);
    log.OnEvent([&](const std::string& events) {
        if (events == "L") {
            engine._chain.InsertBetween(&nodes[1], third, nullptr);
        } else {
            engine._chain.Remove(third);
        }
    });
    EXPECT_EQ(engine.GetNode(2), &third);
    log.Take();
    EXPECT_EQ(engine.GetNode(3), nullptr);
}

TEST(LockingLinkedEngine, ChangesTheChainOnlyWhileItIsLocked) {
    FTS engine;
    Node nodes[2];
    Node third;
    engine.InsertNodeBetween(nullptr, nodes[0], nullptr);
    LockLog log(&engine._mutex);
    log.OnEvent([&](const std::string& events) {
        EXPECT_EQ(engine._chain.count, events == "L" ? 1 : 2);
        EXPECT_EQ(engine._chain.last, &nodes[events == "L" ? 0 : 1]);
    });
    engine.InsertNodeBetween(&nodes[0], nodes[1], nullptr);
    log.Take();
    // The end that it leaves is the one that it finds under the lock.
    log.OnEvent([&](const std::string& events) {
        if (events == "L") {
            engine._chain.InsertBetween(&nodes[1], third, nullptr);
        } else {
            EXPECT_EQ(engine._chain.count, 2);
            EXPECT_EQ(engine._chain.last, &third);
        }
    });
    EXPECT_EQ(engine.RemoveNode(nodes[1]), &nodes[1]);
    log.Take();
    log.OnEvent([&](const std::string& events) {
        EXPECT_EQ(engine._chain.count, events == "L" ? 2 : 0);
        EXPECT_EQ(engine._chain.first, events == "L" ? &nodes[0] : nullptr);
        EXPECT_EQ(engine._chain.last, events == "L" ? &third : nullptr);
    });
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
