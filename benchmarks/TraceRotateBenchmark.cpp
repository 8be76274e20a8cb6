// A file that is rotated: a text of 100 bytes, flushed, and a rotation itself. The peer's rotating sink takes a message
// and formats it as the text by itself, and is flushed after each.

#include "VELSysTraceRotate.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <spdlog/sinks/rotating_file_sink.h>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t LargeSize = 256U << 20;
const std::string Text(100, 'x');

/// A directory for one run.
class Place {
public:
    Place() {
        std::string name = (fs::temp_directory_path() / "qor-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        _path = name;
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() { fs::remove_all(_path); }

    std::string File() const { return (_path / "run.log").string(); }

private:
    fs::path _path;
};

/// A rotated file whose numbers are all taken.
class Ours {
public:
    Ours(const Place& place, std::size_t size, std::size_t count) : _file(place.File().c_str(), size, count) {
        _file.Open();
    }
    void Write(const char* text) { _file.Write(text); }

private:
    VELSysTraceRotate _file;
};

class Spdlog {
public:
    Spdlog(const Place& place, std::size_t size, std::size_t count) : _sink(place.File(), size, count) {
        _sink.set_pattern("%v");
    }
    void Write(const char* text) {
        _sink.log(spdlog::details::log_msg("run", spdlog::level::info, text));
        _sink.flush();
    }

private:
    spdlog::sinks::rotating_file_sink_st _sink;
};

template <class File>
void Write(benchmark::State& state) {
    const Place place;
    File file(place, LargeSize, 1);
    for (auto _ : state) {
        file.Write(Text.c_str());
    }
}

/// Each text fills a file, so that each rotates.
template <class File>
void Rotate(benchmark::State& state) {
    const Place place;
    const auto count = static_cast<std::size_t>(state.range(0));
    File file(place, Text.size(), count);
    for (std::size_t i = 0; i <= count; ++i) {
        file.Write(Text.c_str());
    }
    for (auto _ : state) {
        file.Write(Text.c_str());
    }
}

const bool s_isRegistered = [] {
    benchmark::RegisterBenchmark("TraceRotateWrite/100:ours", Write<Ours>);
    benchmark::RegisterBenchmark("TraceRotateWrite/100:spdlog", Write<Spdlog>);
    for (const int count : {1, 5, 20}) {
        benchmark::RegisterBenchmark("TraceRotation:ours", Rotate<Ours>)->Arg(count);
        benchmark::RegisterBenchmark("TraceRotation:spdlog", Rotate<Spdlog>)->Arg(count);
    }
    return true;
}();

} // namespace
