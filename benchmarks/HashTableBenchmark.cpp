// The simple hash table of pointers and the values of threads, beside what a user would pick instead. Pointers lead to
// the elements of one array and come in random order.
//
// `Put` and `Remove` time nothing but the calls; what is put is all new, and all of it is removed.

#include "QORSysSimpleHashTable.h"
#include "QORSysTSThreadLocalStorage.h"

#include <absl/container/flat_hash_set.h>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <random>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

/// One set of operations over our table and those of the C++ library's kind.
template <class Set>
struct Operations {
    static void Put(Set& set, void* p) { set.insert(p); }
    static bool Locate(Set& set, void* p) { return set.find(p) != set.end(); }
    static void Remove(Set& set, void* p) { set.erase(p); }
};
struct OurTable : QORSysSimpleHashTable {
    OurTable() : QORSysSimpleHashTable(0, QORSimpleHashIt, QORSimpleHashCompare) {}
};
template <>
struct Operations<OurTable> {
    static void Put(OurTable& table, void* p) { table.Insert(p); }
    static bool Locate(OurTable& table, void* p) { return table.Locate(p) != nullptr; }
    static void Remove(OurTable& table, void* p) { table.Remove(p); }
};

/// `size` pointers in random order.
std::vector<void*> Pointers(int size) {
    static std::vector<long> elements(1'000'000);
    std::vector<void*> pointers;
    for (int i = 0; i < size; ++i) {
        pointers.push_back(&elements[static_cast<std::size_t>(i)]);
    }
    std::ranges::shuffle(pointers, std::mt19937(7));
    return pointers;
}

template <class Set>
void Fill(Set& set, const std::vector<void*>& pointers) {
    for (void* const p : pointers) {
        Operations<Set>::Put(set, p);
    }
}

/// Times `run` alone.
template <class Run>
void Time(benchmark::State& state, Run run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    benchmark::ClobberMemory();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

template <class Set>
void Put(benchmark::State& state, int size) {
    const std::vector<void*> pointers = Pointers(size);
    for (auto _ : state) {
        Set set;
        Time(state, [&] { Fill(set, pointers); });
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Set>
void Locate(benchmark::State& state, int size) {
    const std::vector<void*> pointers = Pointers(size);
    Set set;
    Fill(set, pointers);
    for (auto _ : state) {
        for (void* const p : pointers) {
            benchmark::DoNotOptimize(Operations<Set>::Locate(set, p));
        }
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Set>
void Remove(benchmark::State& state, int size) {
    const std::vector<void*> pointers = Pointers(size);
    for (auto _ : state) {
        Set set;
        Fill(set, pointers);
        Time(state, [&] {
            for (void* const p : pointers) {
                Operations<Set>::Remove(set, p);
            }
        });
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Set>
void RegisterSet(const std::string& who) {
    for (const int size : {100, 1'000'000}) {
        const auto add = [&](const std::string& name, void (*run)(benchmark::State&, int)) {
            return benchmark::RegisterBenchmark(
                ("HashTable" + name + "/pointer/" + std::to_string(size) + ":" + who).c_str(),
                [run, size](benchmark::State& state) { run(state, size); });
        };
        add("Put", Put<Set>)->UseManualTime();
        add("Locate", Locate<Set>);
        add("Remove", Remove<Set>)->UseManualTime();
    }
}

// The values of threads, under as many keys as a program has libraries that want one.

constexpr int KeyCount = 16;

struct OurStorage {
    static void Set(int key, void* value) { QORSysTSThreadLocalStorage::SetValue(key, value); }
    static void* Get(int key) { return QORSysTSThreadLocalStorage::GetValue(key); }
};

struct ThreadLocalMap {
    static void Set(int key, void* value) { s_values[key] = value; }
    static void* Get(int key) {
        const auto it = s_values.find(key);
        return it != s_values.end() ? it->second : nullptr;
    }
    static thread_local std::unordered_map<int, void*> s_values;
};
thread_local std::unordered_map<int, void*> ThreadLocalMap::s_values;

template <class Storage>
void SetValue(benchmark::State& state) {
    for (auto _ : state) {
        for (int key = 1; key <= KeyCount; ++key) {
            Storage::Set(key, &state);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * KeyCount);
}

template <class Storage>
void GetValue(benchmark::State& state) {
    for (int key = 1; key <= KeyCount; ++key) {
        Storage::Set(key, &state);
    }
    for (auto _ : state) {
        for (int key = 1; key <= KeyCount; ++key) {
            benchmark::DoNotOptimize(Storage::Get(key));
        }
    }
    state.SetItemsProcessed(state.iterations() * KeyCount);
}

template <class Storage>
void RegisterStorage(const std::string& who) {
    benchmark::RegisterBenchmark(("ThreadLocalSet/16:" + who).c_str(), SetValue<Storage>);
    benchmark::RegisterBenchmark(("ThreadLocalGet/16:" + who).c_str(), GetValue<Storage>);
}

const bool s_areRegistered = [] {
    RegisterSet<OurTable>("ours");
    RegisterSet<std::unordered_set<void*>>("std::unordered_set");
    RegisterSet<absl::flat_hash_set<void*>>("absl::flat_hash_set");
    RegisterStorage<OurStorage>("ours");
    RegisterStorage<ThreadLocalMap>("std::unordered_map");
    return true;
}();

} // namespace
