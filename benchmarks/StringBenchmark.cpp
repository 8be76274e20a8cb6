// Strings as handles: copying, making, the second view. Peers are what a user would pick for the same job.
//
// The process stays single-threaded, where we and std::shared_ptr count without locked instructions; the same rows in a
// process with threads stand in StringThreadsBenchmark.

#include "QORUnicodeString.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <memory>
#include <QByteArray>
#include <QString>
#include <string>
#include <vector>

namespace {

/// Longer than any small-string buffer, so that a peer which shares has something to share.
const std::string s_longText(100, 'x');

const std::string& Text(long length) {
    static std::string text;
    text.clear();
    while (text.size() < static_cast<std::size_t>(length)) {
        text += "identifier_of_a_part ";
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Copy and destroy a handle.

template <class Shared>
void CopyAndDestroy(benchmark::State& state, const Shared& original) {
    for (auto _ : state) {
        Shared copy(original);
        benchmark::DoNotOptimize(copy);
    }
}

void CopyOurs(benchmark::State& state) {
    CopyAndDestroy(state, QORUnicodeString(s_longText.c_str()));
}
void CopyQString(benchmark::State& state) {
    CopyAndDestroy(state, QString::fromStdString(s_longText));
}
void CopySharedPointer(benchmark::State& state) {
    CopyAndDestroy(state, std::make_shared<std::string>(s_longText));
}
BENCHMARK(CopyOurs)->Name("CopyAndDestroy:ours");
BENCHMARK(CopyQString)->Name("CopyAndDestroy:QString");
BENCHMARK(CopySharedPointer)->Name("CopyAndDestroy:shared_ptr");

// Assign between two: the target changes its block each time.

template <class Shared>
void AssignInTurn(benchmark::State& state, const Shared& first, const Shared& second) {
    Shared target(first);
    for (auto _ : state) {
        target = second;
        benchmark::DoNotOptimize(target);
        target = first;
        benchmark::DoNotOptimize(target);
    }
}

void AssignOurs(benchmark::State& state) {
    AssignInTurn(state, QORUnicodeString(s_longText.c_str()), QORUnicodeString(s_longText.c_str()));
}
void AssignQString(benchmark::State& state) {
    const QString first = QString::fromStdString(s_longText);
    QString second = first;
    second.detach();
    AssignInTurn(state, first, second);
}
void AssignSharedPointer(benchmark::State& state) {
    AssignInTurn(state, std::make_shared<std::string>(s_longText), std::make_shared<std::string>(s_longText));
}
BENCHMARK(AssignOurs)->Name("AssignBetweenTwo:ours");
BENCHMARK(AssignQString)->Name("AssignBetweenTwo:QString");
BENCHMARK(AssignSharedPointer)->Name("AssignBetweenTwo:shared_ptr");

// Default construct and destroy.

template <class String>
void DefaultConstruct(benchmark::State& state) {
    for (auto _ : state) {
        String text;
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(DefaultConstruct<QORUnicodeString>)->Name("DefaultConstruct:ours");
BENCHMARK(DefaultConstruct<std::string>)->Name("DefaultConstruct:std::string");
BENCHMARK(DefaultConstruct<QString>)->Name("DefaultConstruct:QString");

// Make from narrow bytes and destroy.

template <class Make>
void MakeFrom(benchmark::State& state, long length, const Make& make) {
    const std::string text = Text(length);
    const char* bytes = text.c_str();
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes);
        auto made = make(bytes);
        benchmark::DoNotOptimize(made);
    }
}

const auto MakeOurs = [](const char* bytes) { return QORUnicodeString(bytes); };
const auto MakeStdString = [](const char* bytes) { return std::string(bytes); };
const auto MakeQString = [](const char* bytes) { return QString::fromUtf8(bytes); };
const auto MakeQByteArray = [](const char* bytes) { return QByteArray(bytes); };

// The second view, first request: a narrow string is asked for its UTF-16 for the first time. The peer makes its UTF-16
// from the same bytes. Both allocate; neither the making of the narrow text nor the freeing is timed.

constexpr int Batch = 256;

template <class Prepared, class Prepare, class Request>
void FirstRequest(benchmark::State& state, long length, const Prepare& prepare, const Request& request) {
    const std::string text = Text(length);
    std::vector<Prepared> batch(Batch);
    for (auto _ : state) {
        for (Prepared& one : batch) {
            prepare(one, text);
        }
        const auto start = std::chrono::steady_clock::now();
        for (Prepared& one : batch) {
            request(one, text);
        }
        benchmark::ClobberMemory();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * Batch);
}

void FirstViewOurs(benchmark::State& state, long length) {
    FirstRequest<QORUnicodeString>(
        state, length, [](QORUnicodeString& one, const std::string& text) { one = QORUnicodeString(text.c_str()); },
        [](QORUnicodeString& one, const std::string&) { benchmark::DoNotOptimize(one.ConvertToUCChar()); });
}

void FirstViewQString(benchmark::State& state, long length) {
    FirstRequest<QString>(
        state, length, [](QString& one, const std::string&) { one = QString(); },
        [](QString& one, const std::string& text) {
            one = QString::fromUtf8(text.c_str());
            benchmark::DoNotOptimize(one.utf16());
        });
}

// The whole road: bytes, a string, its UTF-16, gone again. Ours holds both encodings on the way, the peer only one.

template <class Make>
void WholeRoad(benchmark::State& state, long length, const Make& make) {
    const std::string text = Text(length);
    const char* bytes = text.c_str();
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes);
        make(bytes);
    }
}

const auto WholeRoadOurs = [](const char* bytes) {
    const QORUnicodeString text(bytes);
    benchmark::DoNotOptimize(text.ConvertToUCChar());
};
const auto WholeRoadQString = [](const char* bytes) {
    const QString text = QString::fromUtf8(bytes);
    benchmark::DoNotOptimize(text.utf16());
};

void LaterViewOurs(benchmark::State& state, long length) {
    const QORUnicodeString text(Text(length).c_str());
    benchmark::DoNotOptimize(text.ConvertToUCChar());
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.ConvertToUCChar());
    }
}

template <class Function, class... Arguments>
void Register(const std::string& name, const Function& function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { function(state, arguments...); });
}

template <class Function>
void RegisterManual(const std::string& name, const Function& function, long length) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        function(state, length);
    })->UseManualTime();
}

const bool s_registered = [] {
    for (const long length : {5, 24, 60}) {
        const std::string name = "MakeAndDestroy/" + std::to_string(length);
        Register(name + ":ours", MakeFrom<decltype(MakeOurs)>, length, MakeOurs);
        Register(name + ":std::string", MakeFrom<decltype(MakeStdString)>, length, MakeStdString);
        Register(name + ":QString", MakeFrom<decltype(MakeQString)>, length, MakeQString);
        Register(name + ":QByteArray", MakeFrom<decltype(MakeQByteArray)>, length, MakeQByteArray);
    }
    for (const long length : {24, 60, 1024}) {
        const std::string size = std::to_string(length);
        RegisterManual("SecondView/first/" + size + ":ours", FirstViewOurs, length);
        RegisterManual("SecondView/first/" + size + ":QString", FirstViewQString, length);
        Register("SecondView/later/" + size + ":ours", LaterViewOurs, length);
        Register("SecondView/later/" + size + ":QString", WholeRoad<decltype(WholeRoadQString)>, length,
                 WholeRoadQString);
        Register("NarrowToUTF16/" + size + ":ours", WholeRoad<decltype(WholeRoadOurs)>, length, WholeRoadOurs);
        Register("NarrowToUTF16/" + size + ":QString", WholeRoad<decltype(WholeRoadQString)>, length, WholeRoadQString);
    }
    return true;
}();

} // namespace

BENCHMARK_MAIN();
