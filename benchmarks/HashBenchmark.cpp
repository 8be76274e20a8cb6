// The string hash, beside a plain loop of the same polynomial and the hash of a common container library.
//
// A size counts UTF-16 units in `HashUnits` and ASCII bytes in `HashBytes`. A case runs over several texts in turn.

#include "VELSysUCAlgorithm.h"

#include <absl/hash/hash.h>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::size_t Sizes[] = {8, 64, 1024};
constexpr std::size_t TextsOfCase = 32;
constexpr unsigned int Seed = 0;

/// One unit after the other.
template <class Text>
__attribute__((noinline)) unsigned int PlainHash(const Text& text) {
    unsigned int hash = Seed;
    for (const auto unit : text) {
        hash = hash * 37 + static_cast<unsigned int>(unit);
    }
    return hash;
}

template <class Text>
std::vector<Text> MakeTexts(std::size_t size) {
    std::vector<Text> texts;
    for (std::size_t i = 0; i < TextsOfCase; ++i) {
        Text text;
        for (std::size_t k = 0; k < size; ++k) {
            text += static_cast<typename Text::value_type>('0' + (i * 7 + k * 13) % 75);
        }
        texts.push_back(text);
    }
    return texts;
}

unsigned int OurHash(const std::u16string& text) {
    return VELSysUCAlgorithm::HashV3FromUCS2(reinterpret_cast<const unsigned short*>(text.data()), text.size(), Seed);
}

unsigned int OurHash(const std::string& text) {
    return VELSysUCAlgorithm::HashV3FromUTF8(text.data(), text.size(), Seed);
}

template <class Text, class Hash>
void Run(benchmark::State& state, std::size_t size, Hash hash) {
    const std::vector<Text> texts = MakeTexts<Text>(size);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(hash(texts[next]));
        next = next + 1 < texts.size() ? next + 1 : 0;
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

template <class Text>
void RegisterText(const std::string& name) {
    for (const std::size_t size : Sizes) {
        const std::string prefix = name + '/' + std::to_string(size) + ':';
        benchmark::RegisterBenchmark((prefix + "ours").c_str(), [size](benchmark::State& state) {
            Run<Text>(state, size, [](const Text& text) { return OurHash(text); });
        });
        benchmark::RegisterBenchmark((prefix + "plain").c_str(), [size](benchmark::State& state) {
            Run<Text>(state, size, [](const Text& text) { return PlainHash(text); });
        });
        benchmark::RegisterBenchmark((prefix + "absl").c_str(), [size](benchmark::State& state) {
            Run<Text>(state, size, [](const Text& text) { return absl::Hash<Text>()(text); });
        });
    }
}

const bool s_registered = [] {
    RegisterText<std::u16string>("HashUnits");
    RegisterText<std::string>("HashBytes");
    return true;
}();

} // namespace
