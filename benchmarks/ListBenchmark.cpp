// The linked lists of integers and of strings beside std::list. Strings are shared handles on both sides.
//
// A size counts elements. `RemoveWhileWalking` removes every other one.

#include "ContainerElements.h"
#include "QORSysTSListOfInt.h"
#include "QORSysTSListOfUnicodeString.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <list>
#include <string>
#include <vector>

namespace {

constexpr int Million = 1'000'000;

using ContainerElements::Choice;
using ContainerElements::Weight;

/// One set of operations over our lists and the C++ library's.
template <class List>
struct Operations {
    using Element = typename List::value_type;
    static void Append(List& list, const Element& x) { list.push_back(x); }
    template <class Visit>
    static void ForEach(const List& list, Visit visit) {
        for (const Element& x : list) {
            visit(x);
        }
    }
    static void RemoveEveryOther(List& list) {
        for (auto it = list.begin(); it != list.end();) {
            it = list.erase(it);
            if (it != list.end()) {
                ++it;
            }
        }
    }
    static void InsertAtEachElement(List& list, const Element& x) {
        for (auto it = list.begin(); it != list.end(); ++it) {
            list.insert(it, x);
        }
    }
    static bool PopFront(List& list, Element& out) {
        if (list.empty()) {
            return false;
        }
        out = list.front();
        list.pop_front();
        return true;
    }
};

template <class List>
struct OurOperations {
    using Element = typename List::Element;
    static void Append(List& list, const Element& x) { list.PutBack(x); }
    template <class Visit>
    static void ForEach(const List& list, Visit visit) {
        auto it = list.cBegin();
        while (const Element* x = it.GetAsConstPtrGoToNext()) {
            visit(*x);
        }
    }
    static void RemoveEveryOther(List& list) {
        for (auto it = list.Begin(); !it.IsEnd(); it.Next()) {
            it.RemoveGoToNext();
        }
    }
    static void InsertAtEachElement(List& list, const Element& x) {
        for (auto it = list.Begin(); !it.IsEnd(); it.Next()) {
            it.Insert(x);
        }
    }
    static bool PopFront(List& list, Element& out) { return list.PopFront(out) == 0; }
};
template <>
struct Operations<QORSysTSListOfInt> : OurOperations<QORSysTSListOfInt> {};
template <>
struct Operations<QORSysTSListOfUnicodeString> : OurOperations<QORSysTSListOfUnicodeString> {};

template <class List>
using ElementOf = typename Operations<List>::Element;

template <class List>
void Fill(List& list, int size) {
    const auto& choice = Choice<ElementOf<List>>();
    for (int i = 0; i < size; ++i) {
        Operations<List>::Append(list, choice[static_cast<std::size_t>(i) % 64]);
    }
}

/// Times `change`, which runs on a fresh list of `size` elements.
template <class List, class Change>
void TimeOnAFreshOne(benchmark::State& state, int size, Change change) {
    for (auto _ : state) {
        List list;
        Fill(list, size);
        const auto start = std::chrono::steady_clock::now();
        change(list);
        benchmark::ClobberMemory();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * size);
}

/// The whole life of a list: appending and freeing.
template <class List>
void AppendAndFree(benchmark::State& state, int size) {
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        {
            List list;
            Fill(list, size);
            benchmark::DoNotOptimize(&list);
            benchmark::ClobberMemory();
        }
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class List>
void Append(benchmark::State& state, int size) {
    for (auto _ : state) {
        List list;
        const auto start = std::chrono::steady_clock::now();
        Fill(list, size);
        benchmark::ClobberMemory();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class List>
void Copy(benchmark::State& state, int size) {
    TimeOnAFreshOne<List>(state, size, [](List& list) {
        const List copy(list);
        benchmark::DoNotOptimize(&copy);
    });
}

template <class List>
void Iterate(benchmark::State& state, int size) {
    TimeOnAFreshOne<List>(state, size, [](List& list) {
        for (int round = 0; round < 10; ++round) {
            long sum = 0;
            Operations<List>::ForEach(list, [&](const auto& x) { sum += Weight(x); });
            benchmark::DoNotOptimize(sum);
        }
    });
}

template <class List>
void RemoveWhileWalking(benchmark::State& state, int size) {
    TimeOnAFreshOne<List>(state, size, [](List& list) { Operations<List>::RemoveEveryOther(list); });
}

template <class List>
void InsertWhileWalking(benchmark::State& state, int size) {
    TimeOnAFreshOne<List>(
        state, size, [](List& list) { Operations<List>::InsertAtEachElement(list, Choice<ElementOf<List>>()[1]); });
}

template <class List>
void PopAll(benchmark::State& state, int size) {
    TimeOnAFreshOne<List>(state, size, [](List& list) {
        ElementOf<List> out = Choice<ElementOf<List>>()[0];
        while (Operations<List>::PopFront(list, out)) {
            benchmark::DoNotOptimize(&out);
        }
    });
}

template <class List>
void RegisterAll(const std::string& elements, const std::string& who) {
    const auto add = [&](const std::string& name, void (*run)(benchmark::State&, int)) {
        for (const int size : {1000, Million}) {
            benchmark::RegisterBenchmark(
                ("List" + name + "/" + elements + "/" + std::to_string(size) + ":" + who).c_str(),
                [run, size](benchmark::State& state) { run(state, size); })
                ->UseManualTime();
        }
    };
    add("Append", Append<List>);
    add("AppendAndFree", AppendAndFree<List>);
    add("Copy", Copy<List>);
    add("Iterate", Iterate<List>);
    add("RemoveWhileWalking", RemoveWhileWalking<List>);
    add("InsertWhileWalking", InsertWhileWalking<List>);
    add("PopAll", PopAll<List>);
}

const bool s_areRegistered = [] {
    RegisterAll<QORSysTSListOfInt>("int", "ours");
    RegisterAll<std::list<int>>("int", "std::list");
    RegisterAll<QORSysTSListOfUnicodeString>("string", "ours");
    RegisterAll<std::list<QORSysTSUnicodeString>>("string", "std::list");
    return true;
}();

} // namespace
