#include "QORSysTSThreadLocalStorage.h"
#include "ArrayAllocations.h"
#include "Child.h"
#include "MapInstances.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

namespace {

using Storage = QORSysTSThreadLocalStorage;

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);
constexpr auto NoKey = static_cast<pthread_key_t>(-1);

bool s_hasNoThreadKeys = false;
/// The keys that were made and deleted, each in turn.
std::vector<pthread_key_t> s_made;
std::vector<pthread_key_t> s_deleted;
/// What was there when a key was deleted.
int s_liveAtDeletion = 0;
pthread_key_t s_keyAtDeletion = 0;
int s_value;
int s_other;

} // namespace

extern "C" int __real_pthread_key_create(pthread_key_t* key, void (*destructor)(void*));
extern "C" int __wrap_pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
    if (s_hasNoThreadKeys) {
        return EAGAIN;
    }
    const int result = __real_pthread_key_create(key, destructor);
    s_made.push_back(*key);
    return result;
}

extern "C" int __real_pthread_key_delete(pthread_key_t key);
extern "C" int __wrap_pthread_key_delete(pthread_key_t key) {
    s_deleted.push_back(key);
    s_liveAtDeletion = ArrayAllocations::Live();
    s_keyAtDeletion = Storage::S_tlsKey;
    return __real_pthread_key_delete(key);
}

TEST(ThreadLocalStorage, HandsOutKeysFromOneOn) {
    EXPECT_EQ(Storage::S_counterKey, 0);
    EXPECT_EQ(Storage::CreateNewKey(), 1);
    EXPECT_EQ(VELSysThreadLocalStorageCreateNewKey(), 2);
    EXPECT_EQ(Storage::S_counterKey, 2);
}

TEST(ThreadLocalStorage, HandsOutDifferentKeysToAllThreads) {
    std::vector<std::vector<int>> keys(4);
    std::vector<std::thread> threads;
    for (auto& own : keys) {
        threads.emplace_back([&own] {
            for (int i = 0; i < 1000; ++i) {
                own.push_back(Storage::CreateNewKey());
            }
        });
    }
    std::set<int> all;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i].join();
        all.insert(keys[i].begin(), keys[i].end());
    }
    EXPECT_EQ(all.size(), 4000u);
    EXPECT_EQ(*all.begin(), 1);
    EXPECT_EQ(*all.rbegin(), 4000);
}

TEST(ThreadLocalStorage, AnswersWhatWasSet) {
    EXPECT_EQ(Storage::SetValue(7, &s_value), Ok);
    EXPECT_EQ(Storage::GetValue(7), &s_value);
    EXPECT_EQ(Storage::GetValue(8), nullptr);
    EXPECT_EQ(Storage::SetValue(7, &s_other), Ok);
    EXPECT_EQ(Storage::GetValue(7), &s_other);
    EXPECT_EQ(Storage::SetValue(7, nullptr), Ok);
    EXPECT_EQ(Storage::GetValue(7), nullptr);
}

TEST(ThreadLocalStorage, AnswersNullBeforeAnythingWasSet) {
    EXPECT_EQ(Storage::GetValue(1), nullptr);
    EXPECT_EQ(VELSysThreadLocalStorageGetValue(1), nullptr);
}

TEST(ThreadLocalStorage, DeletesAValue) {
    int key = 3;
    int absent = 4;
    Storage::SetValue(key, &s_value);
    EXPECT_EQ(Storage::DeleteValue(&absent), Ok);
    EXPECT_EQ(Storage::DeleteValue(&key), Ok);
    EXPECT_EQ(key, 3);
    EXPECT_EQ(Storage::GetValue(key), nullptr);
    EXPECT_EQ(Storage::DeleteValue(&key), Ok);
    EXPECT_EQ(Storage::DeleteValue(nullptr), Failure);
}

TEST(ThreadLocalStorage, FailsToDeleteOnAThreadWithoutValues) {
    Storage::SetValue(3, &s_value);
    std::thread([] {
        int key = 3;
        EXPECT_EQ(Storage::DeleteValue(&key), Failure);
        EXPECT_EQ(VELSysThreadLocalStorageDeleteValue(&key), -1);
        EXPECT_EQ(Storage::GetValue(key), nullptr);
        EXPECT_EQ(Storage::DeleteValue(&key), Failure) << "reading makes no table";
    }).join();
}

TEST(ThreadLocalStorage, DeletesNothingOfTheKeyThatItBeginsWith) {
    // Key 0 of the system may well be another's.
    pthread_key_t key;
    ASSERT_EQ(__real_pthread_key_create(&key, nullptr), 0);
    EXPECT_EQ(Storage::S_tlsKey, 0u);
    int foreign = 5;
    pthread_setspecific(0, &foreign);
    int ours = 5;
    EXPECT_EQ(Storage::DeleteValue(&ours), Failure);
    EXPECT_EQ(foreign, 5);
    pthread_setspecific(0, nullptr);
}

TEST(ThreadLocalStorage, HasFlatForms) {
    int key = VELSysThreadLocalStorageCreateNewKey();
    EXPECT_EQ(VELSysThreadLocalStorageSetValue(key, &s_value), 0);
    EXPECT_EQ(VELSysThreadLocalStorageGetValue(key), &s_value);
    EXPECT_EQ(Storage::GetValue(key), &s_value);
    EXPECT_EQ(VELSysThreadLocalStorageDeleteValue(&key), 0);
    EXPECT_EQ(VELSysThreadLocalStorageGetValue(key), nullptr);
    EXPECT_EQ(VELSysThreadLocalStorageDeleteValue(nullptr), -1);
}

TEST(ThreadLocalStorage, FailsWithoutAKeyOfTheSystem) {
    s_hasNoThreadKeys = true;
    int key = 1;
    EXPECT_EQ(Storage::SetValue(1, &s_value), Failure);
    EXPECT_EQ(VELSysThreadLocalStorageSetValue(1, &s_value), -1);
    EXPECT_EQ(Storage::GetValue(1), nullptr);
    EXPECT_EQ(Storage::DeleteValue(&key), Failure);
    EXPECT_EQ(Storage::S_tlsKey, NoKey);
}

TEST(ThreadLocalStorage, WantsAKeyOfTheSystemAlreadyWhenItReads) {
    s_hasNoThreadKeys = true;
    EXPECT_EQ(Storage::GetValue(1), nullptr);
    EXPECT_EQ(Storage::S_tlsKey, NoKey);
    s_hasNoThreadKeys = false;
    EXPECT_EQ(Storage::SetValue(1, &s_value), Failure) << "it asks once";
}

TEST(ThreadLocalStorage, MakesAKeyOfTheSystemWhenItReadsOrWritesAndNotWhenItDeletes) {
    s_made.clear();
    int key = 1;
    EXPECT_EQ(Storage::DeleteValue(&key), Failure);
    EXPECT_EQ(s_made.size(), 0u);
    EXPECT_EQ(Storage::S_tlsKey, 0u);
    EXPECT_EQ(Storage::GetValue(1), nullptr);
    ASSERT_EQ(s_made.size(), 1u);
    EXPECT_EQ(Storage::S_tlsKey, s_made[0]);
    EXPECT_EQ(pthread_getspecific(Storage::S_tlsKey), nullptr) << "reading makes no map";
    EXPECT_EQ(Storage::SetValue(1, &s_value), Ok);
    EXPECT_EQ(s_made.size(), 1u);
}

TEST(ThreadLocalStorage, HasAMapForTwelveEntriesUnderTheKeyOfTheSystem) {
    using Map = QORSysTSHashMapOfIntToVoidPtr;
    EXPECT_EQ(Storage::SetValue(1, &s_value), Ok);
    const auto* const map = static_cast<const Map*>(pthread_getspecific(Storage::S_tlsKey));
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(MapInstances::TableLength(*map), 16);
    EXPECT_EQ(MapInstances::Fields(*map).reciprocal, 1.3333334F);
    EXPECT_EQ(map->GetLength(), 1);
    EXPECT_EQ(*map->GetAsPtr(1), &s_value);
    int key = 1;
    Storage::DeleteValue(&key);
    EXPECT_EQ(pthread_getspecific(Storage::S_tlsKey), map) << "an empty map stays";
    EXPECT_EQ(map->GetLength(), 0);
}

namespace {

/// What the storage answers where the thread's map is gone.
struct AtTheEndOfAThread {
    void* before = &s_value;
    int statusOfDelete = Ok;
    int statusOfSet = Failure;
    void* after = nullptr;
    void* map = nullptr;
};
AtTheEndOfAThread s_atTheEnd;

void UseTheStorageAtTheEnd(void*) {
    int key = 1;
    s_atTheEnd.before = Storage::GetValue(1);
    s_atTheEnd.statusOfDelete = Storage::DeleteValue(&key);
    s_atTheEnd.statusOfSet = Storage::SetValue(2, &s_other);
    s_atTheEnd.after = Storage::GetValue(2);
    s_atTheEnd.map = pthread_getspecific(Storage::S_tlsKey);
}

} // namespace

TEST(ThreadLocalStorage, BeginsAnewWhereADestructorOfTheThreadComesBehindIts) {
    Storage::GetValue(1);
    pthread_key_t later;
    ASSERT_EQ(__real_pthread_key_create(&later, UseTheStorageAtTheEnd), 0);
    ASSERT_GT(later, Storage::S_tlsKey) << "its turn comes behind";
    const int live = ArrayAllocations::Live();
    std::thread([later] {
        EXPECT_EQ(Storage::SetValue(1, &s_value), Ok);
        pthread_setspecific(later, &s_value);
    }).join();
    EXPECT_EQ(s_atTheEnd.before, nullptr);
    EXPECT_EQ(s_atTheEnd.statusOfDelete, Failure);
    EXPECT_EQ(s_atTheEnd.statusOfSet, Ok);
    EXPECT_EQ(s_atTheEnd.after, &s_other);
    EXPECT_NE(s_atTheEnd.map, nullptr);
    EXPECT_EQ(ArrayAllocations::Live(), live) << "the second map ends, too";
}

TEST(ThreadLocalStorage, FailsWithoutMemoryAndGoesOnWithIt) {
    for (int successes = 0;; ++successes) {
        ASSERT_LT(successes, 10);
        int status;
        {
            const ArrayAllocations::Shortage shortage(successes);
            status = Storage::SetValue(1, &s_value);
        }
        if (status == Ok) {
            break;
        }
        EXPECT_EQ(status, Failure);
        EXPECT_EQ(Storage::GetValue(1), nullptr);
    }
    EXPECT_EQ(Storage::GetValue(1), &s_value);
}

TEST(ThreadLocalStorage, BelongsToTheThreadAndEndsWithIt) {
    Storage::SetValue(1, &s_value);
    const int live = ArrayAllocations::Live();
    for (int round = 0; round < 50; ++round) {
        std::thread([] {
            EXPECT_EQ(Storage::GetValue(1), nullptr);
            for (int key = 0; key < 100; ++key) {
                EXPECT_EQ(Storage::SetValue(key, &s_other), Ok);
            }
            EXPECT_EQ(Storage::GetValue(1), &s_other);
        }).join();
    }
    EXPECT_LE(ArrayAllocations::Live(), live + 10) << "threads leave nothing behind";
    EXPECT_EQ(Storage::GetValue(1), &s_value);
}

CHILD_PROGRAM(LooksAtTheStorageAfterItsEnd) {
    static const int registered = std::atexit([] {
        int key = 1;
        std::printf("%d %d %d %d\n", Storage::S_tlsKey == NoKey, Storage::GetValue(1) == nullptr,
                    Storage::SetValue(1, &s_value) == Failure, Storage::DeleteValue(&key) == Failure);
        std::fflush(stdout);
    });
    // Behind the handler, so that the storage's own runs in front of it.
    Storage::SetValue(1, &s_value);
    return registered;
}

TEST(ThreadLocalStorage, AnswersNothingOnceTheProcessEnds) {
    const Child child = RunChild("LooksAtTheStorageAfterItsEnd");
    EXPECT_EQ(child.out, "1 1 1 1\n") << child.err;
    EXPECT_EQ(child.exitCode, 0);
}

CHILD_PROGRAM(CountsWhatTheStorageLeaves) {
    static int s_live;
    static pthread_key_t s_key;
    static const int registered = std::atexit([] {
        std::printf("%zu %d %d\n", s_deleted.size(), !s_deleted.empty() && s_deleted[0] == s_key,
                    ArrayAllocations::Live() - s_live);
        std::printf("%d %d %d\n", s_liveAtDeletion - s_live, s_keyAtDeletion == s_key, Storage::S_tlsKey == NoKey);
        std::fflush(stdout);
    });
    s_deleted.reserve(10);
    s_live = ArrayAllocations::Live();
    for (int key = 0; key < 30; ++key) {
        Storage::SetValue(key, &s_value);
    }
    s_key = Storage::S_tlsKey;
    return ArrayAllocations::Live() > s_live && s_deleted.empty() ? registered : 1;
}

TEST(ThreadLocalStorage, GivesBackMapThenKeyOnceTheProcessEnds) {
    const Child child = RunChild("CountsWhatTheStorageLeaves");
    EXPECT_EQ(child.out, "1 1 0\n0 1 1\n") << child.err;
    EXPECT_EQ(child.exitCode, 0);
}
