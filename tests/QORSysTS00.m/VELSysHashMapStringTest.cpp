#include "VELSysHashMapString.h"

#include "VELSysUCAlgorithm.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <vector>

namespace {

bool s_recordsFail = false;
bool s_tablesFail = false;
const void* s_newestRecord = nullptr;
bool s_newestIsReclaimed = false;

void NoteDeletion(const void* block) {
    s_newestIsReclaimed = s_newestIsReclaimed || (block != nullptr && block == s_newestRecord);
}

} // namespace

extern "C" void* __real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
extern "C" void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag) {
    if (s_recordsFail) {
        return nullptr;
    }
    void* const block = __real__ZnwmRKSt9nothrow_t(size, tag);
    s_newestRecord = block;
    s_newestIsReclaimed = false;
    return block;
}

extern "C" void __real__ZdlPv(void* block);
extern "C" void __wrap__ZdlPv(void* block) {
    NoteDeletion(block);
    __real__ZdlPv(block);
}

extern "C" void __real__ZdlPvm(void* block, std::size_t size);
extern "C" void __wrap__ZdlPvm(void* block, std::size_t size) {
    NoteDeletion(block);
    __real__ZdlPvm(block, size);
}

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    return s_tablesFail ? nullptr : __real_malloc(size);
}

TEST(VELSysHashMapString, FindsByTheTextOfTheKey) {
    VELSysHashMapString map;
    const std::string key = "sys.nls.core.preferredlang";
    const char* value = "French";
    map.Put("sys.nls.core.preferredlang", value);
    EXPECT_EQ(map.Get(key.c_str()), value);
    EXPECT_EQ(map.Get("sys.nls.core.preferredlan"), nullptr);
    EXPECT_EQ(map.Get("SYS.NLS.CORE.PREFERREDLANG"), nullptr);
}

TEST(VELSysHashMapString, ReplacesTheValueAndKeepsTheFirstKey) {
    VELSysHashMapString map;
    char first[] = "key";
    char second[] = "key";
    map.Put(first, "one");
    map.Put(second, "two");
    EXPECT_EQ(map.Size(), 1);
    EXPECT_STREQ(map.Get("key"), "two");
    std::strcpy(second, "xxx");
    EXPECT_STREQ(map.Get("key"), "two") << "the key is the first pointer";
    std::strcpy(first, "yyy");
    EXPECT_EQ(map.Get("key"), nullptr);
}

TEST(VELSysHashMapString, NeverReclaimsTheRecordOfAReplacement) {
    {
        VELSysHashMapString map;
        map.Put("key", "one");
        const void* const stored = s_newestRecord;
        map.Put("key", "two");
        EXPECT_NE(s_newestRecord, stored);
        EXPECT_EQ(map.QORSysSimpleHashTable::Get(0), stored);
        EXPECT_FALSE(s_newestIsReclaimed);
    }
    EXPECT_FALSE(s_newestIsReclaimed) << "the map's end does not reach it either";
}

TEST(VELSysHashMapString, ReclaimsTheRecordsThatItHolds) {
    {
        VELSysHashMapString map;
        map.Put("key", "one");
    }
    EXPECT_TRUE(s_newestIsReclaimed);
}

TEST(VELSysHashMapString, IgnoresANullKey) {
    VELSysHashMapString map;
    map.Put(nullptr, "value");
    EXPECT_EQ(map.Size(), 0);
    EXPECT_EQ(map.Get(nullptr), nullptr);
}

TEST(VELSysHashMapString, StoresANullValue) {
    VELSysHashMapString map;
    map.Put("key", nullptr);
    EXPECT_EQ(map.Size(), 1);
    EXPECT_EQ(map.Get("key"), nullptr);
    map.Put("key", "value");
    EXPECT_STREQ(map.Get("key"), "value");
    map.Put("key", nullptr);
    EXPECT_EQ(map.Get("key"), nullptr);
    EXPECT_EQ(map.Size(), 1);
}

TEST(VELSysHashMapString, TakesAnEmptyKeyAndAnyBytes) {
    VELSysHashMapString map;
    map.Put("", "empty");
    map.Put("\xE9t\xE9", "summer");
    map.Put("\xF0", "cut off");
    EXPECT_STREQ(map.Get(""), "empty");
    EXPECT_STREQ(map.Get("\xE9t\xE9"), "summer");
    EXPECT_STREQ(map.Get("\xF0"), "cut off");
}

TEST(VELSysHashMapString, HoldsManyKeys) {
    std::vector<std::string> keys;
    for (int i = 0; i < 2000; ++i) {
        keys.push_back("key" + std::to_string(i));
    }
    VELSysHashMapString map;
    for (const std::string& key : keys) {
        map.Put(key.c_str(), key.c_str() + 3);
    }
    EXPECT_EQ(map.Size(), 2000);
    for (const std::string& key : keys) {
        EXPECT_EQ(map.Get(key.c_str()), key.c_str() + 3);
    }
}

TEST(VELSysHashMapString, HashesTheBytesOfTheKeyAsUTF8) {
    // Elements are two borrowed pointers, the key first.
    struct Record {
        const char* key;
        const char* value;
    };
    VELSysHashMapString map;
    const char* key = "\xC3\xA9t\xC3\xA9";
    map.Put(key, "summer");
    const auto* stored = static_cast<Record*>(
        static_cast<const QORSysSimpleHashTable&>(map).KeyLocate(VELSysUCAlgorithm::HashV3FromUTF8(key, 5, 0)));
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->key, key);
    EXPECT_STREQ(stored->value, "summer");
}

TEST(VELSysHashMapString, StaysAsItWasWithoutMemory) {
    VELSysHashMapString map;
    std::vector<std::string> keys;
    for (int i = 0; i < 12; ++i) {
        keys.push_back(std::to_string(i));
    }
    for (int i = 0; i < 11; ++i) {
        map.Put(keys[static_cast<std::size_t>(i)].c_str(), "value");
    }
    s_recordsFail = true;
    map.Put("0", "other");
    s_recordsFail = false;
    EXPECT_STREQ(map.Get("0"), "value");
    s_tablesFail = true;
    map.Put("11", "value");
    s_tablesFail = false;
    EXPECT_EQ(map.Size(), 11);
    EXPECT_EQ(map.Get("11"), nullptr);
    map.Put("11", "value");
    EXPECT_STREQ(map.Get("11"), "value");
}
