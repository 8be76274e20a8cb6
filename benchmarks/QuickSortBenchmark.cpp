// The quick sort over arrays of pointers, beside the C library's sort with a context and the C++ library's. All of them
// call the same comparison through a pointer, but for `std::sort(inlined)`, which shows what the calls cost.

#include "VELSysQuickSort.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int Million = 1'000'000;

using Pointers = std::vector<const int*>;

int CompareFirst(void*, const void* a, const void* b) {
    const int x = **static_cast<const int* const*>(a);
    const int y = **static_cast<const int* const*>(b);
    return x < y ? -1 : x > y;
}

/// The same for the C library, whose context comes last.
int CompareLast(const void* a, const void* b, void* context) {
    return CompareFirst(context, a, b);
}

void Quick(Pointers& pointers) {
    VELSysQuickSort(pointers.data(), static_cast<int>(pointers.size()), sizeof(const int*), nullptr,
                    VELSysQuickSortSwapDefault, nullptr, CompareFirst);
}

/// An exchange of the caller's own, which has to be called.
void QuickOwnSwap(Pointers& pointers) {
    VELSysQuickSort(
        pointers.data(), static_cast<int>(pointers.size()), sizeof(const int*), nullptr,
        [](void*, void* a, void* b) { std::swap(*static_cast<const int**>(a), *static_cast<const int**>(b)); }, nullptr,
        CompareFirst);
}

void CLibrary(Pointers& pointers) {
    qsort_r(pointers.data(), pointers.size(), sizeof(const int*), CompareLast, nullptr);
}

void CppLibrary(Pointers& pointers) {
    int (*compare)(void*, const void*, const void*) = CompareFirst;
    benchmark::DoNotOptimize(compare);
    std::sort(pointers.begin(), pointers.end(),
              [compare](const int* a, const int* b) { return compare(nullptr, &a, &b) < 0; });
}

void CppLibraryInlined(Pointers& pointers) {
    std::sort(pointers.begin(), pointers.end(), [](const int* a, const int* b) { return *a < *b; });
}

/// Pointers in the order in which the keys are to be met; the keys themselves stand in that order in memory.
std::vector<int> Keys(const std::string& order, int size) {
    std::mt19937 random(1);
    std::vector<int> keys(static_cast<std::size_t>(size));
    std::iota(keys.begin(), keys.end(), 0);
    if (order == "reversed") {
        std::reverse(keys.begin(), keys.end());
    } else if (order == "random") {
        std::shuffle(keys.begin(), keys.end(), random);
    } else if (order == "few") {
        for (int& key : keys) {
            key = std::uniform_int_distribution<int>(0, 15)(random);
        }
    }
    return keys;
}

void Run(benchmark::State& state, void (*sort)(Pointers&), const std::string& order, int size) {
    const std::vector<int> keys = Keys(order, size);
    Pointers pointers(keys.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            pointers[i] = &keys[i];
        }
        const auto start = std::chrono::steady_clock::now();
        sort(pointers);
        benchmark::ClobberMemory();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    if (!std::is_sorted(pointers.begin(), pointers.end(), [](const int* a, const int* b) { return *a < *b; })) {
        state.SkipWithError("not sorted");
    }
    state.SetItemsProcessed(state.iterations() * size);
}

const bool s_areRegistered = [] {
    for (const int size : {1000, Million}) {
        for (const char* order : {"random", "sorted", "reversed", "few"}) {
            const auto add = [&](const std::string& name, const std::string& who, void (*sort)(Pointers&)) {
                benchmark::RegisterBenchmark(
                    (name + "/" + order + "/" + std::to_string(size) + ":" + who).c_str(),
                    [sort, order, size](benchmark::State& state) { Run(state, sort, order, size); })
                    ->UseManualTime();
            };
            add("QuickSort", "ours", Quick);
            add("QuickSort", "qsort_r", CLibrary);
            add("QuickSort", "std::sort", CppLibrary);
            add("QuickSort", "std::sort(inlined)", CppLibraryInlined);
            add("QuickSortOwnSwap", "ours", QuickOwnSwap);
            add("QuickSortOwnSwap", "qsort_r", CLibrary);
        }
    }
    return true;
}();

} // namespace
