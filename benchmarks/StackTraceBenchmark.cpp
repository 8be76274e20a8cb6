// Capturing a stack of 20 frames, of the running thread and of a saved context, without and with names. The peer is the
// C library: `backtrace`, and `dladdr` for each frame where names are wanted.

#include "QORStackTrace.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>
#include <ucontext.h>

namespace {

constexpr int Frames = 20;
constexpr int MostEntries = 40;
constexpr int FramesOfContext = Frames - 2;

using Measure = void (*)(benchmark::State&);

} // namespace

/// Stands `levels` frames deep, each with a frame pointer and a name. The result is used, so that no call is the last
/// act of a frame.
extern "C" __attribute__((noinline)) int DescendToMeasure(Measure measure, benchmark::State& state, int levels) {
    int result = levels;
    if (levels > 1) {
        result += DescendToMeasure(measure, state, levels - 1);
    } else {
        measure(state);
    }
    benchmark::DoNotOptimize(result);
    return result;
}

namespace {

struct Task {
    Measure measure;
    benchmark::State& state;
};

/// Runs on a thread of its own, whose stack holds nothing but what is made here.
void* RunTask(void* data) {
    auto& task = *static_cast<Task*>(data);
    // Besides the levels: the function that measures and the frames of the thread's start.
    DescendToMeasure(task.measure, task.state, Frames - 4);
    return nullptr;
}

template <Measure measure>
void AtDepth(benchmark::State& state) {
    Task task = {measure, state};
    pthread_t thread;
    if (pthread_create(&thread, nullptr, RunTask, &task) != 0) {
        state.SkipWithError("no thread");
        return;
    }
    pthread_join(thread, nullptr);
}

void AddressesOurs(benchmark::State& state) {
    void* addresses[MostEntries];
    int count = 0;
    for (auto _ : state) {
        count = QORSysGetIPStack(nullptr, 0, 99, addresses, MostEntries);
        benchmark::DoNotOptimize(addresses);
    }
    state.counters["frames"] = count;
}

void AddressesBacktrace(benchmark::State& state) {
    void* addresses[MostEntries];
    int count = 0;
    for (auto _ : state) {
        count = backtrace(addresses, MostEntries);
        benchmark::DoNotOptimize(addresses);
    }
    state.counters["frames"] = count;
}

void NamesOurs(benchmark::State& state) {
    QORStackTrace trace;
    for (auto _ : state) {
        trace.GetTrace(nullptr);
        benchmark::DoNotOptimize(trace);
    }
    state.counters["frames"] = trace.GetDepth();
}

template <int most>
void NamesBacktrace(benchmark::State& state) {
    void* addresses[most];
    char names[most][64];
    int count = 0;
    for (auto _ : state) {
        count = backtrace(addresses, most);
        for (int i = 0; i < count; ++i) {
            Dl_info info;
            const bool isNamed = dladdr(addresses[i], &info) != 0 && info.dli_sname != nullptr;
            std::strncpy(names[i], isNamed ? info.dli_sname : "unknown", sizeof names[i] - 1);
            names[i][sizeof names[i] - 1] = 0;
        }
        benchmark::DoNotOptimize(names);
    }
    state.counters["frames"] = count;
}

/// The context is one of this function, whose frame is the first of the chain.
__attribute__((noinline)) void ContextNamesOurs(benchmark::State& state) {
    ucontext_t context;
    getcontext(&context);
    // The top of the stack is nothing that looks like a caller.
    void* const top = nullptr;
    context.uc_mcontext.gregs[REG_RBP] = reinterpret_cast<greg_t>(__builtin_frame_address(0));
    context.uc_mcontext.gregs[REG_RSP] = reinterpret_cast<greg_t>(&top);
    QORStackTrace trace;
    for (auto _ : state) {
        trace.GetTrace(&context);
        benchmark::DoNotOptimize(trace);
    }
    state.counters["frames"] = trace.GetDepth();
}

BENCHMARK(AtDepth<AddressesOurs>)->Name("StackTrace/addresses:ours")->UseRealTime();
BENCHMARK(AtDepth<AddressesBacktrace>)->Name("StackTrace/addresses:backtrace")->UseRealTime();
BENCHMARK(AtDepth<NamesOurs>)->Name("StackTrace/names:ours")->UseRealTime();
BENCHMARK(AtDepth<NamesBacktrace<MostEntries>>)->Name("StackTrace/names:backtrace")->UseRealTime();
// The C library's own frames at the start of a thread have no frame pointers, so its capture is held to the same
// number.
BENCHMARK(AtDepth<ContextNamesOurs>)->Name("StackTrace/namesOfContext:ours")->UseRealTime();
BENCHMARK(AtDepth<NamesBacktrace<FramesOfContext>>)->Name("StackTrace/namesOfContext:backtrace")->UseRealTime();

} // namespace
