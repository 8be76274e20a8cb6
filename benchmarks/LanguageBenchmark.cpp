// The language decision. "LanguageQuery" asks a settled process, against the read side of a std::shared_mutex and the
// same value copied under it. "LanguageFirstUse" is the first narrow text of a fresh process, the decision and the
// converter included, against what every such process does on its own: take the environment's locale and open one
// conversion.

#include "QORUnicodeString.h"
#include "VELSysNLSCore.h"

#include <array>
#include <benchmark/benchmark.h>
#include <charconv>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <optional>
#include <shared_mutex>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* FirstUseSwitch = "--first-use";
constexpr const char* Accented = "caf\xC3\xA9";
constexpr int Processes = 21;

struct Settled {
    std::shared_mutex mutex;
    VELSysNLSEnv record = {};
    long size = 4;
};

Settled& Peer() {
    static Settled settled;
    return settled;
}

void SizeOurs(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(VELGetMultiByteCharMaxSize());
    }
}

void SizeSharedMutex(benchmark::State& state) {
    Settled& settled = Peer();
    for (auto _ : state) {
        const std::shared_lock lock(settled.mutex);
        benchmark::DoNotOptimize(settled.size);
    }
}

void RecordOurs(benchmark::State& state) {
    VELSysNLSEnv record;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetEnvNLSData(&record));
        benchmark::DoNotOptimize(record);
    }
}

void RecordSharedMutex(benchmark::State& state) {
    Settled& settled = Peer();
    VELSysNLSEnv record;
    for (auto _ : state) {
        const std::shared_lock lock(settled.mutex);
        record = settled.record;
        benchmark::DoNotOptimize(record);
    }
}

/// What is done in a fresh process; prints how long it took, in nanoseconds.
int UseAndReport(bool isOurs) {
    const auto start = std::chrono::steady_clock::now();
    if (isOurs) {
        const QORUnicodeString text(Accented);
        benchmark::DoNotOptimize(text.ConvertToUCChar());
    } else {
        benchmark::DoNotOptimize(std::setlocale(LC_ALL, ""));
        benchmark::DoNotOptimize(iconv_open("UTF-16LE", "UTF-8"));
    }
    const auto end = std::chrono::steady_clock::now();
    std::printf("%lld\n",
                static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count()));
    std::fflush(stdout);
    // No destructors: the process is only there for the first use.
    _exit(EXIT_SUCCESS);
}

/// Runs this program in a fresh process and gives the nanoseconds that it reports.
std::optional<long long> UseInProcess(const char* who, const char* table) {
    int channel[2];
    if (pipe(channel) != 0) {
        return std::nullopt;
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(channel[1], STDOUT_FILENO);
        close(channel[0]);
        close(channel[1]);
        setenv("VELSysNLSInstallPath", table, 1);
        execl("/proc/self/exe", "LanguageBenchmark", FirstUseSwitch, who, static_cast<char*>(nullptr));
        _exit(127);
    }
    close(channel[1]);
    std::array<char, 64> report{};
    const ssize_t got = read(channel[0], report.data(), report.size());
    close(channel[0]);
    int status = 0;
    long long nanoseconds = 0;
    const bool isEnded = child > 0 && waitpid(child, &status, 0) == child && status == 0 && got > 0;
    if (!isEnded || std::from_chars(report.data(), report.data() + got, nanoseconds).ec != std::errc()) {
        return std::nullopt;
    }
    return nanoseconds;
}

void FirstUse(benchmark::State& state, const char* who, const char* table) {
    for (auto _ : state) {
        const std::optional<long long> nanoseconds = UseInProcess(who, table);
        if (!nanoseconds) {
            state.SkipWithError("no process");
            return;
        }
        state.SetIterationTime(static_cast<double>(*nanoseconds) * 1e-9);
    }
}

BENCHMARK(SizeOurs)->Name("LanguageQuery/size:ours");
BENCHMARK(SizeSharedMutex)->Name("LanguageQuery/size:shared_mutex");
BENCHMARK(SizeOurs)->Name("LanguageQuery/size:ours")->Threads(2)->UseRealTime();
BENCHMARK(SizeSharedMutex)->Name("LanguageQuery/size:shared_mutex")->Threads(2)->UseRealTime();
BENCHMARK(RecordOurs)->Name("LanguageQuery/record:ours");
BENCHMARK(RecordSharedMutex)->Name("LanguageQuery/record:shared_mutex");
BENCHMARK(RecordOurs)->Name("LanguageQuery/record:ours")->Threads(2)->UseRealTime();
BENCHMARK(RecordSharedMutex)->Name("LanguageQuery/record:shared_mutex")->Threads(2)->UseRealTime();

void RegisterFirstUse(const char* name, const char* who, const char* table) {
    benchmark::RegisterBenchmark(name, FirstUse, who, table)->UseManualTime()->Iterations(Processes);
}

} // namespace

int main(int argc, char** argv) {
    // A locale that every machine has, and the table that an installation ships.
    setenv("LC_ALL", "", 1);
    setenv("LANG", "C.UTF-8", 1);
    if (argc == 3 && std::strcmp(argv[1], FirstUseSwitch) == 0) {
        return UseAndReport(std::strcmp(argv[2], "ours") == 0);
    }
    unsetenv("QORReffilesPath");
    unsetenv("QORInstallPath");
    setenv("VELSysNLSInstallPath", LANGUAGE_TABLE, 1);
    RegisterFirstUse("LanguageFirstUse/table:ours", "ours", LANGUAGE_TABLE);
    RegisterFirstUse("LanguageFirstUse/table:setlocale", "setlocale", LANGUAGE_TABLE);
    RegisterFirstUse("LanguageFirstUse/no_table:ours", "ours", "");
    RegisterFirstUse("LanguageFirstUse/no_table:setlocale", "setlocale", "");
    benchmark::Initialize(&argc, argv);
    VELSysNLSEnv record = {};
    GetEnvNLSData(&record);
    Peer().record = record;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
