// Copying and destroying a handle in a process that has threads, where every count is a locked instruction: on one
// thread alone, and on two threads that share one block.

#include "QORUnicodeString.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <QString>
#include <string>
#include <thread>

namespace {

const std::string s_longText(100, 'x');

template <class Shared>
void CopyAndDestroy(benchmark::State& state, const Shared& original) {
    for (auto _ : state) {
        Shared copy(original);
        benchmark::DoNotOptimize(copy);
    }
}

void CopyOurs(benchmark::State& state) {
    static const QORUnicodeString shared(s_longText.c_str());
    CopyAndDestroy(state, shared);
}

void CopyQString(benchmark::State& state) {
    static const QString shared = QString::fromStdString(s_longText);
    CopyAndDestroy(state, shared);
}

void CopySharedPointer(benchmark::State& state) {
    static const auto shared = std::make_shared<std::string>(s_longText);
    CopyAndDestroy(state, shared);
}

BENCHMARK(CopyOurs)->Name("CopyAndDestroyWithThreads:ours");
BENCHMARK(CopyQString)->Name("CopyAndDestroyWithThreads:QString");
BENCHMARK(CopySharedPointer)->Name("CopyAndDestroyWithThreads:shared_ptr");

BENCHMARK(CopyOurs)->Name("CopyOnTwoThreads:ours")->Threads(2)->UseRealTime();
BENCHMARK(CopyQString)->Name("CopyOnTwoThreads:QString")->Threads(2)->UseRealTime();
BENCHMARK(CopySharedPointer)->Name("CopyOnTwoThreads:shared_ptr")->Threads(2)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    // From here on the process counts as one with threads.
    std::thread([] {}).join();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
