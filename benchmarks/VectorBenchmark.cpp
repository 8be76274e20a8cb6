// The array containers of integers and of strings, beside what a user would pick instead. Strings are shared handles on
// both sides: appending one counts it, and a container that grows or closes a gap has to move it.
//
// A size counts elements; `InsertInTheMiddle` and `RemoveFromTheMiddle` insert or remove a tenth of them.

#include "ContainerElements.h"
#include "QORSysTSVectorOfInt.h"
#include "VELVectorOfUnicodeString.h"

#include <absl/container/inlined_vector.h>
#include <benchmark/benchmark.h>
#include <chrono>
#include <QList>
#include <QString>
#include <string>
#include <vector>

namespace {

constexpr int Million = 1'000'000;
constexpr int TenThousand = 10'000;

using ContainerElements::Choice;
using ContainerElements::Weight;

/// One set of operations over our containers and those of the C++ library's kind.
template <class Container>
struct Operations {
    using Element = typename Container::value_type;
    static void Append(Container& c, const Element& x) { c.push_back(x); }
    static void Insert(Container& c, int i, const Element& x) { c.insert(c.begin() + i, x); }
    static void Remove(Container& c, int i) { c.erase(c.begin() + i); }
    static void Clear(Container& c) { c.clear(); }
    static const Element& At(const Container& c, int i) { return c[static_cast<std::size_t>(i)]; }
    static int Size(const Container& c) { return static_cast<int>(c.size()); }
    template <class Visit>
    static void ForEach(const Container& c, Visit visit) {
        for (const Element& x : c) {
            visit(x);
        }
    }
};

template <class Vector>
struct OurOperations {
    using Element = typename Vector::Element;
    static void Append(Vector& v, const Element& x) { v.PutBack(x); }
    static void Insert(Vector& v, int i, const Element& x) { v.Insert(i, x); }
    static void Remove(Vector& v, int i) { v.Remove(i); }
    static void Clear(Vector& v) { v.Clear(); }
    static const Element& At(const Vector& v, int i) { return *v.GetAsPtr(i); }
    static int Size(const Vector& v) { return v.GetLength(); }
    template <class Visit>
    static void ForEach(const Vector& v, Visit visit) {
        auto it = v.cBegin();
        while (const Element* x = it.GetAsConstPtrGoToNext()) {
            visit(*x);
        }
    }
};
template <>
struct Operations<QORSysTSVectorOfInt> : OurOperations<QORSysTSVectorOfInt> {};
template <>
struct Operations<VELVectorOfUnicodeString> : OurOperations<VELVectorOfUnicodeString> {};

template <class Container>
using ElementOf = typename Operations<Container>::Element;

template <class Container>
void Fill(Container& container, int size) {
    const auto& choice = Choice<ElementOf<Container>>();
    for (int i = 0; i < size; ++i) {
        Operations<Container>::Append(container, choice[static_cast<std::size_t>(i) % 64]);
    }
}

template <class Container>
void Append(benchmark::State& state, int size) {
    for (auto _ : state) {
        Container container;
        Fill(container, size);
        benchmark::DoNotOptimize(&container);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Container>
void ClearAndRefill(benchmark::State& state, int size) {
    Container container;
    Fill(container, size);
    for (auto _ : state) {
        Operations<Container>::Clear(container);
        Fill(container, size);
        benchmark::DoNotOptimize(&container);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Container>
void Copy(benchmark::State& state, int size) {
    Container container;
    Fill(container, size);
    for (auto _ : state) {
        Container copy(container);
        // A container that shares until it is written has to part now.
        Operations<Container>::Remove(copy, Operations<Container>::Size(copy) - 1);
        benchmark::DoNotOptimize(&copy);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Container>
void Iterate(benchmark::State& state, int size) {
    Container container;
    Fill(container, size);
    for (auto _ : state) {
        long sum = 0;
        Operations<Container>::ForEach(container, [&](const auto& x) { sum += Weight(x); });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * size);
}

template <class Container>
void IterateByIndex(benchmark::State& state, int size) {
    Container container;
    Fill(container, size);
    for (auto _ : state) {
        long sum = 0;
        for (int i = 0; i < Operations<Container>::Size(container); ++i) {
            sum += Weight(Operations<Container>::At(container, i));
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * size);
}

/// Times `change`, which runs on a fresh copy of a container of `size` elements.
template <class Container, class Change>
void TimeOnACopy(benchmark::State& state, int size, Change change) {
    Container original;
    Fill(original, size);
    for (auto _ : state) {
        Container container(original);
        Operations<Container>::Append(container, Choice<ElementOf<Container>>()[0]);
        const auto start = std::chrono::steady_clock::now();
        change(container);
        benchmark::ClobberMemory();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * (size / 10));
}

template <class Container>
void InsertInTheMiddle(benchmark::State& state, int size) {
    const auto& x = Choice<ElementOf<Container>>()[1];
    TimeOnACopy<Container>(state, size, [&](Container& container) {
        for (int i = 0; i < size / 10; ++i) {
            Operations<Container>::Insert(container, size / 2, x);
        }
    });
}

template <class Container>
void RemoveFromTheMiddle(benchmark::State& state, int size) {
    TimeOnACopy<Container>(state, size, [&](Container& container) {
        for (int i = 0; i < size / 10; ++i) {
            Operations<Container>::Remove(container, size / 2);
        }
    });
}

template <class Container>
void RegisterAll(const std::string& elements, const std::string& who) {
    const auto add = [&](const std::string& name, int size, void (*run)(benchmark::State&, int)) {
        return benchmark::RegisterBenchmark(
            ("Vector" + name + "/" + elements + "/" + std::to_string(size) + ":" + who).c_str(),
            [run, size](benchmark::State& state) { run(state, size); });
    };
    add("Append", Million, Append<Container>);
    add("ClearAndRefill", Million, ClearAndRefill<Container>);
    add("Copy", Million, Copy<Container>);
    add("Iterate", Million, Iterate<Container>);
    add("IterateByIndex", Million, IterateByIndex<Container>);
    add("Append", TenThousand, Append<Container>);
    add("InsertInTheMiddle", TenThousand, InsertInTheMiddle<Container>)->UseManualTime();
    add("RemoveFromTheMiddle", TenThousand, RemoveFromTheMiddle<Container>)->UseManualTime();
}

const bool s_areRegistered = [] {
    RegisterAll<QORSysTSVectorOfInt>("int", "ours");
    RegisterAll<std::vector<int>>("int", "std::vector");
    RegisterAll<QList<int>>("int", "QList");
    RegisterAll<absl::InlinedVector<int, 4>>("int", "absl::InlinedVector");
    RegisterAll<VELVectorOfUnicodeString>("string", "ours");
    RegisterAll<std::vector<QORUnicodeString>>("string", "std::vector");
    RegisterAll<QList<QString>>("string", "QList");
    RegisterAll<absl::InlinedVector<QORUnicodeString, 4>>("string", "absl::InlinedVector");
    return true;
}();

} // namespace
