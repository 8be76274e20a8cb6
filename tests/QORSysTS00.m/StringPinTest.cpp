/// @file
/// How the library keeps itself in memory: by whom, with what, and what happens when that fails.

#include "VELStringPool.h"

#include <atomic>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

bool s_isWatching = false;
bool s_isKnown = true;  ///< dladdr() finds the library.
bool s_isOpened = true; ///< dlopen() succeeds.
std::atomic<int> s_searches = 0;
std::atomic<int> s_opened = 0;
std::atomic<int> s_errorsRead = 0;
std::string s_path;
int s_flags = 0;

/// A thread that uses its pool for the first time.
void UseOnANewThread() {
    s_isWatching = true;
    std::thread([] { VEL::internal::EnsureStringPool(); }).join();
}

} // namespace

extern "C" int __real_dladdr(const void* address, Dl_info* info);
extern "C" int __wrap_dladdr(const void* address, Dl_info* info) {
    if (!s_isWatching) {
        return __real_dladdr(address, info);
    }
    ++s_searches;
    if (!s_isKnown) {
        return 0;
    }
    *info = {};
    info->dli_fname = "/where/the/library/stands";
    return 1;
}

extern "C" void* __real_dlopen(const char* path, int flags);
extern "C" void* __wrap_dlopen(const char* path, int flags) {
    if (!s_isWatching) {
        return __real_dlopen(path, flags);
    }
    ++s_opened;
    s_path = path;
    s_flags = flags;
    return s_isOpened ? &s_opened : nullptr;
}

extern "C" char* __wrap_dlerror() {
    ++s_errorsRead;
    return nullptr;
}

TEST(StringPin, OpensTheLibrarysOwnFileForGood) {
    UseOnANewThread();
    EXPECT_EQ(s_opened, 1);
    EXPECT_EQ(s_path, "/where/the/library/stands");
    EXPECT_EQ(s_flags, RTLD_LAZY | RTLD_NODELETE);
    EXPECT_EQ(s_errorsRead, 0);
}

TEST(StringPin, HappensOncePerProcess) {
    UseOnANewThread();
    UseOnANewThread();
    VEL::internal::EnsureStringPool();
    EXPECT_EQ(s_searches, 1);
    EXPECT_EQ(s_opened, 1);
}

TEST(StringPin, HappensOnceForThreadsThatStartAtOnce) {
    s_isWatching = true;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] { VEL::internal::EnsureStringPool(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(s_opened, 1);
}

TEST(StringPin, IsTriedOncePerThread) {
    s_isWatching = true;
    s_isOpened = false;
    for (int i = 0; i < 3; ++i) {
        VEL::internal::EnsureStringPool();
    }
    EXPECT_EQ(s_opened, 1);
}

TEST(StringPin, IsTriedAgainByTheNextThreadWhenTheFileCannotBeOpened) {
    s_isOpened = false;
    UseOnANewThread();
    EXPECT_EQ(s_opened, 1);
    EXPECT_EQ(s_errorsRead, 2) << "the error is cleared";
    s_isOpened = true;
    UseOnANewThread();
    EXPECT_EQ(s_opened, 2);
    EXPECT_EQ(s_errorsRead, 2);
    UseOnANewThread();
    EXPECT_EQ(s_opened, 2);
}

TEST(StringPin, IsTriedAgainByTheNextThreadWhenTheFileIsNotFound) {
    s_isKnown = false;
    UseOnANewThread();
    EXPECT_EQ(s_searches, 1);
    EXPECT_EQ(s_opened, 0);
    EXPECT_EQ(s_errorsRead, 2);
    s_isKnown = true;
    UseOnANewThread();
    EXPECT_EQ(s_searches, 2);
    EXPECT_EQ(s_opened, 1);
}
