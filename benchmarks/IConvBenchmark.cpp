// Getting a thread's descriptor for a registered conversion, against a bare thread-local read. "Depth4" asks for four
// conversions in turn, so that each stands at the end of the thread's list when its turn comes.

#include "VELSysIConvTSWrap.h"
#include "VELSysStatus.h"

#include <benchmark/benchmark.h>
#include <vector>

namespace {

thread_local iconv_t t_descriptor = nullptr;

/// Handles of registered conversions, opened for this thread.
std::vector<IConvDesc_t> OpenedHandles(std::size_t count) {
    const char* const names[] = {"ISO-8859-1", "ISO-8859-2", "ISO-8859-5", "ISO-8859-15"};
    std::vector<IConvDesc_t> handles(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (VELSysIConvTSWrap::Open("UTF-16LE", names[i], handles[i]) != VEL::StatusOk) {
            return {};
        }
        VELSysIConvTSWrap::GetIConvDesc(handles[i]);
    }
    return handles;
}

void Ours(benchmark::State& state, std::size_t depth) {
    const std::vector<IConvDesc_t> handles = OpenedHandles(depth);
    if (handles.empty()) {
        state.SkipWithError("no handle");
        return;
    }
    // Turns by a mask: a remainder or a branch would weigh as much as what is measured.
    const std::size_t mask = depth - 1;
    std::size_t turn = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VELSysIConvTSWrap::GetIConvDesc(handles[turn & mask]));
        ++turn;
    }
}

void ThreadLocalRead(benchmark::State& state) {
    for (auto _ : state) {
        iconv_t* descriptor = &t_descriptor;
        benchmark::DoNotOptimize(descriptor);
        benchmark::DoNotOptimize(*descriptor);
    }
}

} // namespace

BENCHMARK_CAPTURE(Ours, Head, 1)->Name("GetIConvDesc/head:ours");
BENCHMARK(ThreadLocalRead)->Name("GetIConvDesc/head:thread-local");
BENCHMARK_CAPTURE(Ours, Depth4, 4)->Name("GetIConvDesc/depth4:ours");
BENCHMARK(ThreadLocalRead)->Name("GetIConvDesc/depth4:thread-local");
