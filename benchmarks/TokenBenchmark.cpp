// Cutting a text of 64 KiB into tokens at space, tab and line feed, with a string made of each. Peers are what a user
// would pick for the same job. "Each" uses a token and drops it before the next; "All" keeps all of them in a vector.

#include "QORToken.h"

#include <absl/strings/str_split.h>
#include <benchmark/benchmark.h>
#include <QString>
#include <QStringList>
#include <QStringTokenizer>
#include <string>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <vector>

namespace {

constexpr std::size_t TextSize = 65536;

struct Kind {
    const char* name;
    const char* text;
};

constexpr Kind Kinds[] = {
    {"prose", "the part number of a wheel,\tits material and the\ncoating that goes with it "},
    {"identifiers", "MECHANICAL_PART_0001\tCOATING_OF_A_WHEEL_RIM\nMATERIAL_CATALOGUE_ENTRY "},
    {"lines", "a text whose tokens are as long as lines are: no token ends before the line feed,so to say\n"},
};

std::string TextOf(const Kind& kind) {
    std::string text;
    while (text.size() < TextSize) {
        text += kind.text;
    }
    if (std::string(kind.name) == "lines") {
        for (char& byte : text) {
            byte = byte == ' ' ? '_' : byte;
        }
    }
    text.resize(TextSize);
    return text;
}

/// Calls `take` with each token.
template <class Take>
void ForEachOurs(const QORUnicodeString& text, const Take& take) {
    QORToken tokens(text, 0);
    unsigned char found = 0;
    for (;;) {
        QORUnicodeString token = tokens.GetNextToken(&found);
        if (found == 0) {
            return;
        }
        take(std::move(token));
    }
}

template <class Take>
void ForEachU16(const std::u16string& text, const Take& take) {
    const char16_t* const delimiters = u" \t\n";
    for (std::size_t start = text.find_first_not_of(delimiters); start != std::u16string::npos;) {
        const std::size_t end = std::min(text.find_first_of(delimiters, start), text.size());
        take(text.substr(start, end - start));
        start = text.find_first_not_of(delimiters, end);
    }
}

template <class Take>
void ForEachICU(const icu::UnicodeString& text, const Take& take) {
    // The tokeniser writes into the text.
    icu::UnicodeString copy(text);
    char16_t* state = nullptr;
    char16_t* first = const_cast<char16_t*>(copy.getTerminatedBuffer());
    for (char16_t* token = u_strtok_r(first, u" \t\n", &state); token != nullptr;
         token = u_strtok_r(nullptr, u" \t\n", &state)) {
        take(icu::UnicodeString(token));
    }
}

template <class Take>
void ForEachAbsl(const std::string& text, const Take& take) {
    for (const absl::string_view token : absl::StrSplit(text, absl::ByAnyChar(" \t\n"), absl::SkipEmpty())) {
        take(std::string(token));
    }
}

template <class Take>
void ForEachQString(const QString& text, const Take& take) {
    // All white space becomes one space, and the rest of the way there is one delimiter.
    const QString simplified = text.simplified();
    for (const QStringView token : QStringTokenizer{simplified, u' '}) {
        take(token.toString());
    }
}

template <class Run>
void Register(const std::string& name, const Run& run) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        for (auto _ : state) {
            run();
        }
        state.SetBytesProcessed(static_cast<long>(state.iterations() * TextSize));
    });
}

template <class String, class Text, class ForEach>
void RegisterBoth(const std::string& kind, const std::string& who, const Text& text, const ForEach& forEach) {
    Register("TokeniseEach/" + kind + ":" + who,
             [=] { forEach(text, [](String&& token) { benchmark::DoNotOptimize(token); }); });
    Register("TokeniseAll/" + kind + ":" + who, [=] {
        std::vector<String> tokens;
        forEach(text, [&](String&& token) { tokens.push_back(std::move(token)); });
        benchmark::DoNotOptimize(tokens);
    });
}

void RegisterKind(const Kind& kind) {
    const std::string bytes = TextOf(kind);
    const std::u16string units(bytes.begin(), bytes.end());
    QORUnicodeString ours;
    ours.BuildFromUCChar(reinterpret_cast<const unsigned short*>(units.data()), static_cast<int>(units.size()));
    RegisterBoth<QORUnicodeString>(kind.name, "ours", ours,
                                   [](const auto& text, const auto& take) { ForEachOurs(text, take); });
    RegisterBoth<QString>(kind.name, "QString", QString::fromStdString(bytes),
                          [](const auto& text, const auto& take) { ForEachQString(text, take); });
    RegisterBoth<std::string>(kind.name, "absl", bytes,
                              [](const auto& text, const auto& take) { ForEachAbsl(text, take); });
    RegisterBoth<std::u16string>(kind.name, "u16string", units,
                                 [](const auto& text, const auto& take) { ForEachU16(text, take); });
    RegisterBoth<icu::UnicodeString>(kind.name, "icu", icu::UnicodeString(units.data(), static_cast<int>(units.size())),
                                     [](const auto& text, const auto& take) { ForEachICU(text, take); });
    Register(std::string("TokeniseAll/") + kind.name + ":absl-vector", [=] {
        std::vector<std::string> tokens = absl::StrSplit(bytes, absl::ByAnyChar(" \t\n"), absl::SkipEmpty());
        benchmark::DoNotOptimize(tokens);
    });
}

} // namespace

int main(int argc, char** argv) {
    for (const Kind& kind : Kinds) {
        RegisterKind(kind);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
