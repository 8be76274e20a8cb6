/// @file
/// Variables, command lines, options and the argument store, against what a program would use instead.

#include "QORUnicodeString.h"
#include "VELSysEnviron.h"
#include "VELSysEnvironmentManager.h"
#include "VELSysTSArg.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <getopt.h>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <vector>
#include <wordexp.h>

namespace {

/// The process's environment as a desktop session has it: 60 variables, the one that is looked up behind them.
void FillProcess() {
    clearenv();
    for (int i = 0; i < 60; ++i) {
        setenv(("SESSION_VARIABLE_" + std::to_string(i)).c_str(), "/usr/local/share:/usr/share", 1);
    }
    setenv("QORTemp", "/var/tmp/session", 1);
}

void LookupInProcess(benchmark::State& state) {
    FillProcess();
    QORUnicodeString value;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VELGetEnvInt("QORTemp", &value));
    }
}
BENCHMARK(LookupInProcess)->Name("EnvironmentLookup/process:ours");

void LookupInProcessByPlatform(benchmark::State& state) {
    FillProcess();
    for (auto _ : state) {
        benchmark::DoNotOptimize(getenv("QORTemp"));
    }
}
BENCHMARK(LookupInProcessByPlatform)->Name("EnvironmentLookup/process:getenv");

void LookupMissingInProcess(benchmark::State& state) {
    FillProcess();
    QORUnicodeString value;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VELGetEnvInt("QORMissing", &value));
    }
}
BENCHMARK(LookupMissingInProcess)->Name("EnvironmentLookup/process-missing:ours");

void LookupMissingInProcessByPlatform(benchmark::State& state) {
    FillProcess();
    for (auto _ : state) {
        benchmark::DoNotOptimize(getenv("QORMissing"));
    }
}
BENCHMARK(LookupMissingInProcessByPlatform)->Name("EnvironmentLookup/process-missing:getenv");

constexpr std::size_t Entries = 1000;

std::string NameAt(std::size_t i) {
    return "PRODUCT_VARIABLE_" + std::to_string(i);
}

/// A manager whose table and static array hold a thousand variables each.
class Variables {
public:
    Variables() {
        _manager.BuildStaticEnviron(Entries);
        for (std::size_t i = 0; i < Entries; ++i) {
            const std::string entry = NameAt(i) + "=/opt/product/data";
            _manager.BuildEnvironString(&_manager.StaticEnviron()[i], entry.c_str());
            _manager.PutEnvInTable(("TABLE_" + NameAt(i)).c_str(), "/opt/product/data");
        }
    }
    VELSysEnvironmentManager* operator->() { return &_manager; }

private:
    VELSysEnvironmentManager _manager;
};

/// What getenv() does with the same thousand variables.
void FillProcessWithEntries() {
    clearenv();
    for (std::size_t i = 0; i < Entries; ++i) {
        setenv(NameAt(i).c_str(), "/opt/product/data", 1);
    }
}

void LookupOurs(benchmark::State& state, const std::string& name) {
    Variables variables;
    for (auto _ : state) {
        benchmark::DoNotOptimize(variables->GetEnv(name.c_str()));
    }
}

void LookupByPlatform(benchmark::State& state, const std::string& name) {
    FillProcessWithEntries();
    for (auto _ : state) {
        benchmark::DoNotOptimize(getenv(name.c_str()));
    }
}

void LookupByMap(benchmark::State& state, const std::string& name) {
    std::unordered_map<std::string, std::string> map;
    for (std::size_t i = 0; i < Entries; ++i) {
        map.emplace("TABLE_" + NameAt(i), "/opt/product/data");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(name.c_str()));
    }
}

BENCHMARK_CAPTURE(LookupOurs, table, "TABLE_" + NameAt(500))->Name("EnvironmentLookup/table:ours");
BENCHMARK_CAPTURE(LookupByMap, table, "TABLE_" + NameAt(500))->Name("EnvironmentLookup/table:unordered_map");
BENCHMARK_CAPTURE(LookupOurs, array, NameAt(500))->Name("EnvironmentLookup/array-1000:ours");
BENCHMARK_CAPTURE(LookupByPlatform, array, NameAt(500))->Name("EnvironmentLookup/array-1000:getenv");
BENCHMARK_CAPTURE(LookupOurs, missing, "PRODUCT_MISSING")->Name("EnvironmentLookup/array-1000-missing:ours");
BENCHMARK_CAPTURE(LookupByPlatform, missing, "PRODUCT_MISSING")->Name("EnvironmentLookup/array-1000-missing:getenv");

/// A line of about 4 KiB: quoted parts and options.
std::string LongLine() {
    std::string line = "program";
    for (int i = 0; line.size() < 4080; ++i) {
        line += i % 4 == 0 ? " \"a quoted part\"" : " --option" + std::to_string(i);
    }
    return line;
}

void SplitOurs(benchmark::State& state) {
    const std::string line = LongLine();
    for (auto _ : state) {
        char** argv = nullptr;
        int argc = 0;
        VELSysEnvironBuildArgumentFromCommandLine(line.c_str(), &argv, &argc);
        benchmark::DoNotOptimize(argv);
        VELSysEnvironDeleteArgumentArrayA(&argv, argc);
    }
}
BENCHMARK(SplitOurs)->Name("CommandLineSplit/4096:ours");

void SplitByWordexp(benchmark::State& state) {
    const std::string line = LongLine();
    for (auto _ : state) {
        wordexp_t words;
        if (wordexp(line.c_str(), &words, WRDE_NOCMD) != 0) {
            state.SkipWithError("refused");
            break;
        }
        benchmark::DoNotOptimize(words);
        wordfree(&words);
    }
}
BENCHMARK(SplitByWordexp)->Name("CommandLineSplit/4096:wordexp");

constexpr std::size_t OptionCount = 100;

/// A hundred long options, each given once, the half of them with a value.
struct CommandLine {
    CommandLine() {
        for (std::size_t i = 0; i < OptionCount; ++i) {
            names.push_back("option-name-" + std::to_string(i));
        }
        texts.emplace_back("program");
        for (std::size_t i = 0; i < OptionCount; ++i) {
            texts.push_back("--" + names[i]);
            if (i % 2 == 0) {
                texts.push_back("value" + std::to_string(i));
            }
        }
        for (std::string& text : texts) {
            argv.push_back(text.data());
        }
        argv.push_back(nullptr);
    }
    int Count() const { return static_cast<int>(argv.size()) - 1; }

    std::vector<std::string> names;
    std::vector<std::string> texts;
    std::vector<char*> argv;
};

void ParseOurs(benchmark::State& state) {
    CommandLine line;
    std::vector<VELSysEnvironCommandLongOptionStructA> options;
    std::vector<int> counters(OptionCount);
    std::vector<char**> values(OptionCount);
    for (std::size_t i = 0; i < OptionCount; ++i) {
        options.push_back({line.names[i].c_str(), i % 2 == 0 ? 2 : 1, &values[i], &counters[i]});
    }
    options.push_back({nullptr, 0, nullptr, nullptr});
    for (auto _ : state) {
        int errorIndex = 0;
        if (VELSysEnvironParseCommandOptionA(line.Count(), line.argv.data(), options.data(), nullptr, &errorIndex) !=
            0) {
            state.SkipWithError("refused");
        }
    }
}
BENCHMARK(ParseOurs)->Name("OptionParse/100:ours");

void ParseByGetopt(benchmark::State& state) {
    CommandLine line;
    std::vector<option> options;
    for (std::size_t i = 0; i < OptionCount; ++i) {
        options.push_back({line.names[i].c_str(), i % 2 == 0 ? required_argument : no_argument, nullptr, 1});
    }
    options.push_back({nullptr, 0, nullptr, 0});
    for (auto _ : state) {
        optind = 0;
        int found = 0;
        while (getopt_long(line.Count(), line.argv.data(), "", options.data(), nullptr) == 1) {
            ++found;
        }
        if (found != OptionCount) {
            state.SkipWithError("refused");
        }
    }
}
BENCHMARK(ParseByGetopt)->Name("OptionParse/100:getopt_long");

constexpr int StoredOptions = 20;

std::string OptionAt(int i) {
    return "option" + std::to_string(i);
}

void StoreLookupOurs(benchmark::State& state) {
    if (state.thread_index() == 0) {
        VELSysTSResetArg("");
        for (int i = 0; i < StoredOptions; ++i) {
            const QORUnicodeString value("/home/user/documents/part.model");
            VELSysTSAddArg(OptionAt(i).c_str(), &value);
        }
    }
    const std::string key = OptionAt(7);
    QORUnicodeString value;
    int hasValue = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VELSysTSGetArg(key.c_str(), hasValue, value));
    }
}
BENCHMARK(StoreLookupOurs)->Name("ArgumentLookup/1:ours")->UseRealTime();
BENCHMARK(StoreLookupOurs)->Name("ArgumentLookup/2-threads:ours")->Threads(2)->UseRealTime();

std::shared_mutex s_mutex;
std::unordered_map<std::string, std::string> s_map;

void StoreLookupByMap(benchmark::State& state) {
    if (state.thread_index() == 0) {
        const std::unique_lock lock(s_mutex);
        for (int i = 0; i < StoredOptions; ++i) {
            s_map[OptionAt(i)] = "/home/user/documents/part.model";
        }
    }
    const std::string key = OptionAt(7);
    std::string value;
    for (auto _ : state) {
        const std::shared_lock lock(s_mutex);
        const auto found = s_map.find(key.c_str());
        if (found != s_map.end()) {
            value = found->second;
        }
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(StoreLookupByMap)->Name("ArgumentLookup/1:shared_mutex")->UseRealTime();
BENCHMARK(StoreLookupByMap)->Name("ArgumentLookup/2-threads:shared_mutex")->Threads(2)->UseRealTime();

} // namespace
