/// @file
/// The order in which the parts of the environment manager are made and given back.

#include "EnvironmentCalls.h"
#include "VELSysEnvironmentManager.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Records, while it lives, what becomes of lists, tables and traces, and of the blocks that have a name once operator
/// `delete` gets them. One at a time.
class PartLog {
public:
    PartLog() {
        s_log = this;
        EnvironmentCalls::insideTraceCreate = [] { Record("trace"); };
        EnvironmentCalls::insideTraceDestroy = [] { Record("~trace"); };
    }
    PartLog(const PartLog&) = delete;
    PartLog& operator=(const PartLog&) = delete;
    ~PartLog() {
        s_log = nullptr;
        EnvironmentCalls::insideTraceCreate = nullptr;
        EnvironmentCalls::insideTraceDestroy = nullptr;
    }

    void Name(const void* part, const char* name) { _names[part] = name; }
    const std::vector<std::string>& Entries() const { return _entries; }

    static void Record(const std::string& entry) {
        // What the log itself takes and gives back is no part.
        if (PartLog* const log = std::exchange(s_log, nullptr)) {
            log->_entries.push_back(entry);
            s_log = log;
        }
    }
    static void RecordGone(const void* part) {
        if (PartLog* const log = std::exchange(s_log, nullptr)) {
            // Once: its block may come to be another's.
            if (const auto name = log->_names.extract(part)) {
                log->_entries.push_back("~" + name.mapped());
            }
            s_log = log;
        }
    }

private:
    static inline PartLog* s_log = nullptr;

    std::map<const void*, std::string> _names;
    std::vector<std::string> _entries;
};

VELSysEnvironArgumentSuite* NewSuite(int argc) {
    auto* const suite = new VELSysEnvironArgumentSuite{argc, new char* [3] {}, nullptr, nullptr, -1, 0, nullptr};
    for (int i = 0; i < argc; ++i) {
        suite->argv[i] = new char[2]();
    }
    suite->lifeCycle = new VELSysEnvironLifeCycleBlock{};
    return suite;
}

using Entries = std::vector<std::string>;

} // namespace

extern "C" {

void __real__ZdaPv(void* block);
void __wrap__ZdaPv(void* block) {
    PartLog::RecordGone(block);
    __real__ZdaPv(block);
}

void __real__ZdlPv(void* block);
void __wrap__ZdlPv(void* block) {
    PartLog::RecordGone(block);
    __real__ZdlPv(block);
}

void __real__ZdlPvm(void* block, std::size_t size);
void __wrap__ZdlPvm(void* block, std::size_t size) {
    PartLog::RecordGone(block);
    __real__ZdlPvm(block, size);
}

void __real__ZN10VELSysListC2Eib(VELSysList* self, int listType, bool owns);
void __wrap__ZN10VELSysListC2Eib(VELSysList* self, int listType, bool owns) {
    PartLog::Record("list " + std::to_string(listType) + (owns ? " owning" : ""));
    __real__ZN10VELSysListC2Eib(self, listType, owns);
}

void __real__ZN10VELSysList9removeallEv(VELSysList* self);
void __wrap__ZN10VELSysList9removeallEv(VELSysList* self) {
    PartLog::RecordGone(self);
    __real__ZN10VELSysList9removeallEv(self);
}

void __real__ZN15VELSysHashTableC2Eii(VELSysHashTable* self, int buckets, int ignoreCase);
void __wrap__ZN15VELSysHashTableC2Eii(VELSysHashTable* self, int buckets, int ignoreCase) {
    PartLog::Record("table " + std::to_string(buckets) + " " + std::to_string(ignoreCase));
    __real__ZN15VELSysHashTableC2Eii(self, buckets, ignoreCase);
}
}

TEST(EnvironmentParts, AreMadeInOrder) {
    const PartLog log;
    const VELSysEnvironmentManager manager;
    EXPECT_EQ(log.Entries(), (Entries{"list 2 owning", "list 2 owning", "list 3", "trace", "table 8192 -1"}));
}

TEST(EnvironmentParts, AreGivenBackInOrder) {
    PartLog log;
    {
        VELSysEnvironmentManager manager;
        manager.BuildDynamicEnviron(1);
        manager.BuildStaticEnviron(1);
        manager.BuildOfficialEnviron(1);
        for (char** const array : {manager.DynamicEnviron(), manager.StaticEnviron(), manager.OfficialEnviron()}) {
            manager.BuildEnvironString(array, "A=${A}");
            log.Name(*array, "array");
        }
        manager.PutEnvInTable("A", "1");
        log.Name(manager.GetEnvInTable("A"), "table");
        manager.AddMain("a");
        log.Name(manager.GetMainFirst(), "main");
        // Behind the virtual table, the three arrays, the table and the current main.
        const char* const lists = reinterpret_cast<const char*>(&manager) + 6 * sizeof(void*);
        log.Name(lists, "mains");
        log.Name(lists + sizeof(VELSysList), "tags");
        log.Name(lists + 2 * sizeof(VELSysList), "tag addresses");
        EXPECT_EQ(log.Entries().size(), 5U) << "nothing is given back before the end";
    }
    EXPECT_EQ(
        Entries(log.Entries().begin() + 5, log.Entries().end()),
        (Entries{"~array", "~array", "~array", "~table", "~trace", "~tag addresses", "~tags", "~mains", "~main"}));
}

TEST(EnvironmentParts, OfASuiteAreGivenBackInOrder) {
    PartLog log;
    VELSysEnvironArgumentSuiteList list;
    VELSysEnvironArgumentSuite* const suite = NewSuite(3);
    log.Name(suite->argv[0], "first");
    log.Name(suite->argv[1], "second");
    log.Name(suite->argv[2], "third");
    log.Name(suite->argv, "vector");
    log.Name(suite->lifeCycle, "life cycle");
    log.Name(suite, "suite");
    ASSERT_EQ(list.Add(suite), suite);
    list.removeall();
    EXPECT_EQ(log.Entries(),
              (Entries{"list 2 owning", "~third", "~second", "~first", "~vector", "~life cycle", "~suite"}));
}
