// UTF-8 to UTF-16 and back, beside what a user would pick instead.
//
// Texts are of four kinds: `ascii` is English prose without any accent; `western` is German and French prose, with
// umlauts, accents and typographic quotes where the language puts them; `japanese` is Japanese prose with its
// punctuation, and ASCII figures and line breaks as they occur; `emoji` is runs of emoji, some with joiners and skin
// tones, with a space between the runs. A size counts bytes of UTF-8, in both directions, and the text is cut at a
// character.
//
// A case runs over several texts in turn, cut from different places, so that short ones do not train the branch
// predictor on a single text. Ours and the others convert the same texts. Ours, ICU and iconv write to a buffer of the
// caller; QString brings its own, as it does wherever it is used.

#include "VELSysUCAlgorithm.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <QByteArray>
#include <QString>
#include <string>
#include <string_view>
#include <unicode/ustring.h>
#include <vector>

namespace {

constexpr std::string_view ASCIIProse =
    "It was a bright morning in the workshop, and the drawings for the new bearing lay on the long table under the "
    "window. Each of them bore a number, a date and the initials of whoever had checked it last; three were marked "
    "with a red pencil. \"The tolerance of the inner ring,\" she said, \"is given as 0.02 mm here, and as 0.05 mm on "
    "sheet 14.\" Nobody answered at once. The older of the two men took off his glasses, polished them, put them on "
    "again and read both sheets from the first line to the last. Then he nodded, drew a line through the larger "
    "figure, wrote the smaller one above it and signed. At noon the corrected set went down to the milling shop, where "
    "four machines had been waiting since the day before, and by half past six the first ring was on the gauge.\n";

constexpr std::string_view WesternProse =
    "Über den Dächern der Altstadt lag noch der Nebel, als die Prüferin das Gebäude betrat. „Können Sie mir sagen, "
    "wo die Maße für das neue Gehäuse stehen?“, fragte sie den Pförtner, der gerade Kaffee einschenkte. Er überlegte "
    "kurz, schüttelte den Kopf und führte sie schließlich in den ersten Stock, wo große Schränke voller Zeichnungen "
    "standen. Die jüngste trug das Datum vom 3. März; für die älteren gab es nur ein Verzeichnis, das niemand mehr "
    "vollständig gelesen hatte. Dort fand sich, nach längerem Blättern, auch die gesuchte Tabelle.\n"
    "Le lendemain, l’ingénieur relut à haute voix les résultats de la première série d’essais. « C’est étrange, "
    "dit-il, "
    "la pièce a résisté deux fois plus longtemps que prévu. » Sa collègue haussa les épaules : elle avait déjà vérifié "
    "l’épaisseur, la température du four et même l’étalonnage des capteurs, sans rien découvrir d’inhabituel. On "
    "décida "
    "donc de recommencer, cette fois avec un échantillon coulé à côté, dans l’ancien atelier, où les fenêtres "
    "donnaient sur le fleuve. Vers midi, après quelques hésitations, la machine fut enfin prête.\n";

constexpr std::string_view JapaneseProse =
    "朝の工場はまだ静かで、窓ぎわの長い机の上に新しい軸受の図面が三枚ひろげてあった。どの図面にも番号と日付、そして"
    "最後に確かめた人の名前が書いてある。「内輪の公差がここでは0.02ミリ、14枚目では0.05ミリになっています」と彼女は"
    "言った。すぐに答える者はいなかった。年上の男は眼鏡をはずし、ていねいに拭いてからかけ直し、二枚の図面をはじめの"
    "行から終わりの行まで読んだ。それからうなずいて、大きいほうの数字に線を引き、その上に小さい数字を書いて署名した。\n"
    "昼までに直された一式は下の作業場へ運ばれた。そこでは4台の機械が前の日から待っていて、夕方の6時半には最初の輪が"
    "測定器にのせられた。結果は予想よりも良く、みんなが少しだけ笑顔になった。翌朝のメールにはCAD/CAMの担当者から"
    "「ありがとうございました」という一行と、次の試験の予定表(PDF)がそえられていた。\n";

constexpr std::string_view EmojiRuns =
    "😀😃😄😁 🚀🌍🌕 👩🏽‍🔬🔧🔩 🎉🎊🥳🎂🎁 🐶🐱🐭🐹🐰🦊 🍏🍐🍊🍋 🏗🏭🏢 "
    "👍🏻👍🏼👍🏽👍🏾👍🏿 "
    "📐📏📎 🧲🧪🧫🧬 🚗🚕🚙🚌🚎 🌧🌨🌩🌪 👨‍👩‍👧‍👦 🎹🎸🎺🎻 💾💿📀 🔒🔓🔑 🧩🧸🪁 🤖👾👽 "
    "🟥🟧🟨🟩🟦🟪 "
    "🥐🥖🥨🧀🥗 🏀🏈🎾🏐 😂🤣😊😇🙂🙃😉😌😍🥰 ";

struct Kind {
    const char* name;
    std::string_view prose;
};

constexpr Kind Kinds[] = {
    {"ascii", ASCIIProse}, {"western", WesternProse}, {"japanese", JapaneseProse}, {"emoji", EmojiRuns}};

constexpr std::size_t Sizes[] = {64, 4096, 1 << 20};

/// Bytes that the texts of a case have together, but for long texts, of which there is one.
constexpr std::size_t TextsOfCase = 32;

bool StartsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

std::string CutText(std::string_view prose, std::size_t start, std::size_t size) {
    while (!StartsCharacter(prose[start])) {
        ++start;
    }
    std::string text;
    while (text.size() < size + 4) {
        text += prose.substr(start);
        start = 0;
    }
    while (!StartsCharacter(text[size])) {
        --size;
    }
    text.resize(size);
    return text;
}

std::vector<std::string> MakeTexts(const Kind& kind, std::size_t size) {
    const std::size_t count = size <= 4096 ? TextsOfCase : 1;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i) {
        texts.push_back(CutText(kind.prose, i * kind.prose.size() / (count + 1), size));
    }
    return texts;
}

std::vector<std::u16string> MakeUnits(const Kind& kind, std::size_t size) {
    std::vector<std::u16string> all;
    for (const std::string& text : MakeTexts(kind, size)) {
        std::vector<unsigned short> units(text.size());
        units.resize(static_cast<std::size_t>(
            VELSysUCAlgorithm::unchecked::utf8to16(text.data(), text.data() + text.size(), units.data()) -
            units.data()));
        all.emplace_back(units.begin(), units.end());
    }
    return all;
}

const unsigned short* AsUnits(const std::u16string& text) {
    return reinterpret_cast<const unsigned short*>(text.data());
}

class IConv {
public:
    IConv(const char* to, const char* from) : _descriptor(iconv_open(to, from)) {}
    IConv(const IConv&) = delete;
    IConv& operator=(const IConv&) = delete;
    ~IConv() { iconv_close(_descriptor); }

    void Convert(const void* source, std::size_t size, void* target, std::size_t room) {
        char* in = static_cast<char*>(const_cast<void*>(source));
        char* out = static_cast<char*>(target);
        iconv(_descriptor, &in, &size, &out, &room);
    }

private:
    iconv_t _descriptor;
};

/// Runs `convert` over the texts in turn.
template <class Text, class Convert>
void Run(benchmark::State& state, const std::vector<Text>& texts, std::size_t size, Convert convert) {
    std::size_t next = 0;
    for (auto _ : state) {
        convert(texts[next]);
        benchmark::ClobberMemory();
        next = next + 1 < texts.size() ? next + 1 : 0;
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

using Case = void (*)(benchmark::State&, const Kind&, std::size_t size);

void OursToUtf16(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<unsigned short> target(size);
    Run(state, MakeTexts(kind, size), size, [&](const std::string& text) {
        benchmark::DoNotOptimize(
            VELSysUCAlgorithm::unchecked::utf8to16(text.data(), text.data() + text.size(), target.data()));
    });
}

void ICUToUtf16(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<UChar> target(size + 1);
    Run(state, MakeTexts(kind, size), size, [&](const std::string& text) {
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t length = 0;
        benchmark::DoNotOptimize(u_strFromUTF8(target.data(), static_cast<std::int32_t>(target.size()), &length,
                                               text.data(), static_cast<std::int32_t>(text.size()), &error));
        benchmark::DoNotOptimize(length);
    });
}

void QtToUtf16(benchmark::State& state, const Kind& kind, std::size_t size) {
    Run(state, MakeTexts(kind, size), size, [&](const std::string& text) {
        benchmark::DoNotOptimize(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    });
}

void IConvToUtf16(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<unsigned short> target(size);
    IConv converter("UTF-16LE", "UTF-8");
    Run(state, MakeTexts(kind, size), size, [&](const std::string& text) {
        converter.Convert(text.data(), text.size(), target.data(), target.size() * sizeof(unsigned short));
    });
}

void OursToUtf8(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<char> target(size);
    Run(state, MakeUnits(kind, size), size, [&](const std::u16string& text) {
        benchmark::DoNotOptimize(
            VELSysUCAlgorithm::unchecked::utf16to8(AsUnits(text), AsUnits(text) + text.size(), target.data()));
    });
}

void ICUToUtf8(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<char> target(size + 1);
    Run(state, MakeUnits(kind, size), size, [&](const std::u16string& text) {
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t length = 0;
        benchmark::DoNotOptimize(u_strToUTF8(target.data(), static_cast<std::int32_t>(target.size()), &length,
                                             text.data(), static_cast<std::int32_t>(text.size()), &error));
        benchmark::DoNotOptimize(length);
    });
}

void QtToUtf8(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<QString> texts;
    for (const std::u16string& text : MakeUnits(kind, size)) {
        texts.push_back(QString::fromStdU16String(text));
    }
    Run(state, texts, size, [&](const QString& text) { benchmark::DoNotOptimize(text.toUtf8()); });
}

void IConvToUtf8(benchmark::State& state, const Kind& kind, std::size_t size) {
    std::vector<char> target(size);
    IConv converter("UTF-8", "UTF-16LE");
    Run(state, MakeUnits(kind, size), size, [&](const std::u16string& text) {
        converter.Convert(text.data(), text.size() * sizeof(char16_t), target.data(), target.size());
    });
}

struct Contender {
    const char* direction;
    const char* name;
    Case run;
};

constexpr Contender Contenders[] = {
    {"Utf8ToUtf16", "ours", OursToUtf16},   {"Utf8ToUtf16", "icu", ICUToUtf16},    {"Utf8ToUtf16", "qt", QtToUtf16},
    {"Utf8ToUtf16", "iconv", IConvToUtf16}, {"Utf16ToUtf8", "ours", OursToUtf8},   {"Utf16ToUtf8", "icu", ICUToUtf8},
    {"Utf16ToUtf8", "qt", QtToUtf8},        {"Utf16ToUtf8", "iconv", IConvToUtf8},
};

void Register(const Contender& contender, const Kind& kind, std::size_t size) {
    const std::string name =
        std::string(contender.direction) + '/' + kind.name + '/' + std::to_string(size) + ':' + contender.name;
    benchmark::RegisterBenchmark(
        name.c_str(), [&contender, &kind, size](benchmark::State& state) { contender.run(state, kind, size); });
}

const bool s_registered = [] {
    for (const Kind& kind : Kinds) {
        for (const std::size_t size : Sizes) {
            for (const Contender& contender : Contenders) {
                Register(contender, kind, size);
            }
        }
    }
    return true;
}();

} // namespace
