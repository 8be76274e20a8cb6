// The hash maps from integers to integers and from strings to strings, beside what a user would pick instead. Keys are
// spread at random; those looked up are not the very strings that were put, but equal ones. Strings are longer than
// what a standard string keeps in itself.
//
// `Put` and `Remove` time nothing but the calls; what is put is all new, and all of it is removed.

#include "ContainerElements.h"
#include "QORSysTSHashMapOfIntToInt.h"
#include "QORSysTSMapOfUnicodeStringUnicodeString.h"

#include <absl/container/flat_hash_map.h>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using ContainerElements::Make;
using ContainerElements::Weight;

/// One set of operations over our maps and those of the C++ library's kind.
template <class Map>
struct Operations {
    using Key = typename Map::key_type;
    using Value = typename Map::mapped_type;
    static void Put(Map& map, const Key& key, const Value& value) { map[key] = value; }
    static const Value* Get(const Map& map, const Key& key) {
        const auto it = map.find(key);
        return it != map.end() ? &it->second : nullptr;
    }
    static void Remove(Map& map, const Key& key) { map.erase(key); }
    template <class Visit>
    static void ForEach(const Map& map, Visit visit) {
        for (const auto& [key, value] : map) {
            visit(key, value);
        }
    }
};

template <class Map>
struct OurOperations {
    using Key = typename Map::Key;
    using Value = typename Map::Value;
    static void Put(Map& map, const Key& key, const Value& value) { map.Put(key, value); }
    static const Value* Get(const Map& map, const Key& key) { return map.GetAsPtr(key); }
    static void Remove(Map& map, const Key& key) { map.Remove(key); }
    template <class Visit>
    static void ForEach(const Map& map, Visit visit) {
        auto it = map.cBegin();
        while (const auto* entry = it.GetEntryAsPtrGoToNext()) {
            visit(entry->key, entry->value);
        }
    }
};
template <>
struct Operations<QORSysTSHashMapOfIntToInt> : OurOperations<QORSysTSHashMapOfIntToInt> {};
template <>
struct Operations<QORSysTSMapOfUnicodeStringUnicodeString> : OurOperations<QORSysTSMapOfUnicodeStringUnicodeString> {};

/// `size` keys that differ, in random order; those of another `seed` are none of them.
template <class Key>
std::vector<Key> Keys(int size, int seed) {
    std::vector<int> numbers;
    std::mt19937 random(7);
    for (int i = 0; i < size; ++i) {
        // Spread over all numbers: the factor is odd, so no two are equal.
        numbers.push_back(
            static_cast<int>((static_cast<unsigned int>(i) * 2 + static_cast<unsigned int>(seed)) * 2654435769u));
    }
    std::ranges::shuffle(numbers, random);
    std::vector<Key> keys;
    keys.reserve(numbers.size());
    for (const int number : numbers) {
        keys.push_back(Make<Key>(number));
    }
    return keys;
}

template <class Map>
struct Subject {
    using Key = typename Operations<Map>::Key;

    explicit Subject(int size) : keys(Keys<Key>(size, 0)), value(Make<typename Operations<Map>::Value>(1)) {}
    void Fill(Map& map) const {
        for (const Key& key : keys) {
            Operations<Map>::Put(map, key, value);
        }
    }

    std::vector<Key> keys;
    typename Operations<Map>::Value value;
};

/// Times `run` alone.
template <class Run>
void Time(benchmark::State& state, Run run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    benchmark::ClobberMemory();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

template <class Map>
void Put(benchmark::State& state, int size) {
    const Subject<Map> subject(size);
    for (auto _ : state) {
        Map map;
        Time(state, [&] { subject.Fill(map); });
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Map>
void Remove(benchmark::State& state, int size) {
    const Subject<Map> subject(size);
    const auto keys = Keys<typename Subject<Map>::Key>(size, 0);
    for (auto _ : state) {
        Map map;
        subject.Fill(map);
        Time(state, [&] {
            for (const auto& key : keys) {
                Operations<Map>::Remove(map, key);
            }
        });
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Map>
void Get(benchmark::State& state, int size, int seed) {
    const Subject<Map> subject(size);
    const auto keys = Keys<typename Subject<Map>::Key>(size, seed);
    Map map;
    subject.Fill(map);
    for (auto _ : state) {
        for (const auto& key : keys) {
            benchmark::DoNotOptimize(Operations<Map>::Get(map, key));
        }
    }
    state.SetItemsProcessed(state.iterations() * size);
}
template <class Map>
void GetHit(benchmark::State& state, int size) {
    Get<Map>(state, size, 0);
}
template <class Map>
void GetMiss(benchmark::State& state, int size) {
    Get<Map>(state, size, 1);
}

template <class Map>
void Iterate(benchmark::State& state, int size) {
    const Subject<Map> subject(size);
    Map map;
    subject.Fill(map);
    for (auto _ : state) {
        long sum = 0;
        Operations<Map>::ForEach(map, [&](const auto& key, const auto& value) { sum += Weight(key) + Weight(value); });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Map>
void RegisterAll(const std::string& types, const std::string& who) {
    for (const int size : {100, 10'000, 1'000'000}) {
        const auto add = [&](const std::string& name, void (*run)(benchmark::State&, int)) {
            return benchmark::RegisterBenchmark(
                ("Map" + name + "/" + types + "/" + std::to_string(size) + ":" + who).c_str(),
                [run, size](benchmark::State& state) { run(state, size); });
        };
        add("Put", Put<Map>)->UseManualTime();
        add("GetHit", GetHit<Map>);
        add("GetMiss", GetMiss<Map>);
        add("Iterate", Iterate<Map>);
        add("Remove", Remove<Map>)->UseManualTime();
    }
}

const bool s_areRegistered = [] {
    RegisterAll<QORSysTSHashMapOfIntToInt>("int", "ours");
    RegisterAll<std::unordered_map<int, int>>("int", "std::unordered_map");
    RegisterAll<absl::flat_hash_map<int, int>>("int", "absl::flat_hash_map");
    RegisterAll<QORSysTSMapOfUnicodeStringUnicodeString>("string", "ours");
    RegisterAll<std::unordered_map<std::string, std::string>>("string", "std::unordered_map");
    RegisterAll<absl::flat_hash_map<std::string, std::string>>("string", "absl::flat_hash_map");
    return true;
}();

} // namespace
