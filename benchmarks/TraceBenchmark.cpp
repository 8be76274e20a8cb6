// Traces: one that is off, a line of 80 bytes behind its prefix, flushed, and names that nobody has configured. All
// write the same elements in front of the text: level, time to the millisecond in UTC, name, thread.

#include "VELSysTrace.h"
#include "VELSysTraceManager.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <glog/logging.h>
#include <iomanip>
#include <memory>
#include <QLoggingCategory>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

/// 80 bytes with a number of six digits.
#define LINE_TEXT "the callback of the participant has been dispatched and has returned: %06d bytes"
constexpr const char* SpdlogText = "the callback of the participant has been dispatched and has returned: {:06d} bytes";
constexpr int Names = 10000;

/// A directory for the whole run.
const fs::path& Place() {
    static const struct Made {
        Made() {
            std::string name = (fs::temp_directory_path() / "qor-bench-XXXXXX").string();
            if (mkdtemp(name.data()) == nullptr) {
                std::abort();
            }
            path = name;
        }
        ~Made() {
            std::error_code ignored;
            fs::remove_all(path, ignored);
        }
        fs::path path;
    } s_made;
    return s_made.path;
}

void* s_offTrace = nullptr;
void* s_fileTrace = nullptr;
void* s_ringTrace = nullptr;

VELSysTrace& Trace(void* handle) {
    if (handle == nullptr) {
        std::abort();
    }
    return *static_cast<VELSysTrace*>(handle);
}

void OffOurs(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(s_offTrace);
        if (auto* const trace = static_cast<VELSysTrace*>(s_offTrace)) {
            trace->Info(LINE_TEXT, i);
        }
        benchmark::DoNotOptimize(++i);
    }
}

void OffPointer(benchmark::State& state) {
    static const int* s_pointer = nullptr;
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(s_pointer);
        if (s_pointer != nullptr) {
            benchmark::DoNotOptimize(*s_pointer);
        }
        benchmark::DoNotOptimize(++i);
    }
}

void Line(benchmark::State& state, void* handle) {
    VELSysTrace& trace = Trace(handle);
    int i = 0;
    for (auto _ : state) {
        trace.Info(LINE_TEXT, ++i);
    }
}

void LineOurs(benchmark::State& state) {
    Line(state, s_fileTrace);
}

void LineRing(benchmark::State& state) {
    Line(state, s_ringTrace);
}

void LineSpdlog(benchmark::State& state) {
    static const std::shared_ptr<spdlog::logger> s_logger = [] {
        auto made = spdlog::basic_logger_mt("Run", (Place() / "spdlog.log").string());
        made->set_pattern("[%L][%Y-%m-%dT%H:%M:%S.%eZ][%n][%t] %v", spdlog::pattern_time_type::utc);
        made->flush_on(spdlog::level::trace);
        return made;
    }();
    int i = 0;
    for (auto _ : state) {
        s_logger->info(SpdlogText, ++i);
    }
}

void LineGlog(benchmark::State& state) {
    static const bool s_isReady = [] {
        google::InitGoogleLogging("TraceBenchmark");
        google::SetLogDestination(google::INFO, (Place() / "glog.log").c_str());
        FLAGS_logbuflevel = -1; // Flushed at each line.
        FLAGS_log_utc_time = true;
        return true;
    }();
    benchmark::DoNotOptimize(s_isReady);
    int i = 0;
    for (auto _ : state) {
        LOG(INFO) << "the callback of the participant has been dispatched and has returned: " << std::setfill('0')
                  << std::setw(6) << ++i << " bytes";
    }
}

std::FILE* s_qtFile = nullptr;

void WriteQtLine(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    const QByteArray line = qFormatLogMessage(type, context, text).toUtf8();
    flockfile(s_qtFile);
    fwrite_unlocked(line.constData(), 1, static_cast<std::size_t>(line.size()), s_qtFile);
    fwrite_unlocked("\n", 1, 1, s_qtFile);
    fflush_unlocked(s_qtFile);
    funlockfile(s_qtFile);
}

Q_LOGGING_CATEGORY(Run, "Run")

void LineQt(benchmark::State& state) {
    static const bool s_isReady = [] {
        s_qtFile = std::fopen((Place() / "qt.log").c_str(), "a+");
        qSetMessagePattern("[%{type}][%{time yyyy-MM-ddThh:mm:ss.zzzZ}][%{category}][%{threadid}] %{message}");
        qInstallMessageHandler(WriteQtLine);
        return true;
    }();
    benchmark::DoNotOptimize(s_isReady);
    int i = 0;
    for (auto _ : state) {
        qCInfo(Run, LINE_TEXT, ++i);
    }
}

/// 10^4 names, none of them configured; the time is that of one.
template <class Create>
void CreateAll(benchmark::State& state, Create create) {
    static const auto s_names = [] {
        std::array<std::string, Names> made;
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] = "Family." + std::to_string(i);
        }
        return made;
    }();
    std::size_t next = 0;
    for (auto _ : state) {
        create(s_names[next]);
        next = next + 1 < s_names.size() ? next + 1 : 0;
    }
}

void CreateOurs(benchmark::State& state) {
    CreateAll(state, [](const std::string& name) {
        void* handle = nullptr;
        VELSysTraceCreate__(&handle, name.c_str());
        benchmark::DoNotOptimize(handle);
    });
}

void CreateSpdlog(benchmark::State& state) {
    CreateAll(state, [](const std::string& name) { benchmark::DoNotOptimize(spdlog::get(name)); });
}

void CreateQt(benchmark::State& state) {
    CreateAll(state, [](const std::string& name) {
        const QLoggingCategory category(name.c_str(), QtWarningMsg);
        benchmark::DoNotOptimize(category.isInfoEnabled());
    });
}

BENCHMARK(OffOurs)->Name("TraceOff:ours");
BENCHMARK(OffPointer)->Name("TraceOff:null-pointer");
BENCHMARK(LineOurs)->Name("TraceLine/80:ours");
BENCHMARK(LineSpdlog)->Name("TraceLine/80:spdlog");
BENCHMARK(LineGlog)->Name("TraceLine/80:glog");
BENCHMARK(LineQt)->Name("TraceLine/80:QLoggingCategory");
BENCHMARK(LineOurs)->Name("TraceLine/80:ours")->Threads(2)->UseRealTime();
BENCHMARK(LineSpdlog)->Name("TraceLine/80:spdlog")->Threads(2)->UseRealTime();
BENCHMARK(LineGlog)->Name("TraceLine/80:glog")->Threads(2)->UseRealTime();
BENCHMARK(LineQt)->Name("TraceLine/80:QLoggingCategory")->Threads(2)->UseRealTime();
BENCHMARK(LineRing)->Name("TraceLineToRing/80:ours");
BENCHMARK(LineOurs)->Name("TraceLineToRing/80:file");
BENCHMARK(CreateOurs)->Name("TraceCreateUnconfigured:ours");
BENCHMARK(CreateSpdlog)->Name("TraceCreateUnconfigured:spdlog");
BENCHMARK(CreateQt)->Name("TraceCreateUnconfigured:QLoggingCategory");

} // namespace

int main(int argc, char** argv) {
    // From here on the process counts as one with threads.
    std::thread([] {}).join();
    setenv("QORTraceDir", Place().c_str(), 1);
    VELSysTraceCreateManager("-Fring.log Ring -M8192", nullptr);
    VELSysTraceManagerAddStreamTrace("run.log", "Run", 0, 0);
    VELSysTraceCreate__(&s_offTrace, "Off");
    VELSysTraceCreate__(&s_fileTrace, "Run");
    VELSysTraceCreate__(&s_ringTrace, "Ring");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    VELSysTraceDestroyManager();
}
