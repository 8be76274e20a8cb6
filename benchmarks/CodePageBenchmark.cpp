// Narrow text of a code page to UTF-16 and back, beside what a user would pick instead.
//
// Latin-1 is German and French prose, the others are Japanese or Chinese prose with ASCII figures as they occur. A size
// counts bytes of the code page in both directions; the text is cut at a character. All convert the same text from and
// to a buffer of the caller, iconv by a descriptor that stays open, ICU by a converter that does; QStringDecoder and
// QStringEncoder know Latin-1 alone. "NextCharacter" takes a text of that size character by character.

#include "VELSysCodePage.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <QStringDecoder>
#include <QStringEncoder>
#include <string>
#include <unicode/ucnv.h>
#include <vector>

namespace {

using Units = std::vector<unsigned short>;

constexpr const char* Western =
    "Über den Dächern der Altstadt lag noch der Nebel, als die Prüferin das Gebäude betrat. Können Sie mir sagen, wo "
    "die Maße für das neue Gehäuse stehen? Le lendemain, l'ingénieur relut à haute voix les résultats de la première "
    "série d'essais. Sa collègue avait déjà vérifié l'épaisseur et même l'étalonnage des capteurs.\n";
constexpr const char* Japanese =
    "朝の工場はまだ静かで、窓ぎわの長い机の上に新しい軸受の図面が三枚ひろげてあった。内輪の公差がここでは0.02ミリ、"
    "14枚目では0.05ミリになっています、と彼女は言った。翌朝のメールにはCAD/CAMの担当者から一行がそえられていた。\n";
constexpr const char* Chinese =
    "早上的车间还很安静,窗边的长桌上摊着三张新轴承的图纸。这里内圈的公差是0.02毫米,第14张上却是0.05毫米,她说。"
    "没有人马上回答。中午改好的一套送到了下面的车间,CAD/CAM的四台机器从前一天就在等着。\n";

/// A code page with a text of it.
struct Case {
    const char* name;
    const char* codePage;
    const char* utf8;
    const char* icu;
};

constexpr Case Cases[] = {
    {"latin1", "ISO-8859-1", Western, "ISO-8859-1"},
    {"sjis", "SHIFT_JIS", Japanese, "Shift_JIS"},
    {"eucjp", "EUC-JP", Japanese, "EUC-JP"},
    {"gb18030", "GB18030", Chinese, "GB18030"},
};

Units UnitsOf(const std::string& text) {
    const VELSysCodePage utf8("UTF-8");
    Units units(text.size() + 1);
    int written = 0;
    utf8.ConvertMBCSToUTF16(text.data(), static_cast<int>(text.size()), units.data(), &written);
    units.resize(static_cast<std::size_t>(written));
    return units;
}

/// A text of about `size` bytes in the code page, and its UTF-16.
struct Text {
    std::string bytes;
    Units units;

    Text(const Case& which, std::size_t size) {
        const VELSysCodePage codePage(which.codePage);
        const Units once = UnitsOf(which.utf8);
        std::vector<char> buffer(9);
        while (bytes.size() < size) {
            for (std::size_t i = 0; i < once.size(); ++i) {
                const int count = codePage.ConvertUTF16ToMBCS(&once[i], 1, buffer.data(), nullptr);
                if (bytes.size() + static_cast<std::size_t>(count) > size) {
                    return;
                }
                bytes.append(buffer.data(), static_cast<std::size_t>(count));
                units.push_back(once[i]);
            }
        }
    }
};

void OursToUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    const VELSysCodePage codePage(which.codePage);
    Units target(text.bytes.size() + 1);
    for (auto _ : state) {
        int written = 0;
        codePage.ConvertMBCSToUTF16(text.bytes.data(), static_cast<int>(text.bytes.size()), target.data(), &written);
        benchmark::DoNotOptimize(written);
        benchmark::ClobberMemory();
    }
}

void OursFromUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    const VELSysCodePage codePage(which.codePage);
    std::vector<char> target(4 * text.units.size() + 1);
    for (auto _ : state) {
        int written = 0;
        codePage.ConvertUTF16ToMBCS(text.units.data(), static_cast<int>(text.units.size()), target.data(), &written);
        benchmark::DoNotOptimize(written);
        benchmark::ClobberMemory();
    }
}

void RunIconv(benchmark::State& state, iconv_t descriptor, const void* source, std::size_t size, std::size_t room) {
    std::vector<char> target(room);
    for (auto _ : state) {
        char* in = static_cast<char*>(const_cast<void*>(source));
        std::size_t inLeft = size;
        char* out = target.data();
        std::size_t outLeft = target.size();
        benchmark::DoNotOptimize(iconv(descriptor, &in, &inLeft, &out, &outLeft));
        benchmark::ClobberMemory();
    }
    iconv_close(descriptor);
}

void IconvToUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    RunIconv(state, iconv_open("UTF-16LE", which.codePage), text.bytes.data(), text.bytes.size(),
             2 * text.bytes.size());
}

void IconvFromUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    RunIconv(state, iconv_open(which.codePage, "UTF-16LE"), text.units.data(), 2 * text.units.size(),
             4 * text.units.size());
}

void ICUToUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(which.icu, &status);
    std::vector<UChar> target(text.bytes.size() + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ucnv_toUChars(converter, target.data(), static_cast<int>(target.size()),
                                               text.bytes.data(), static_cast<int>(text.bytes.size()), &status));
        benchmark::ClobberMemory();
    }
    ucnv_close(converter);
}

void ICUFromUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(which.icu, &status);
    std::vector<char> target(4 * text.units.size() + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ucnv_fromUChars(converter, target.data(), static_cast<int>(target.size()),
                                                 reinterpret_cast<const UChar*>(text.units.data()),
                                                 static_cast<int>(text.units.size()), &status));
        benchmark::ClobberMemory();
    }
    ucnv_close(converter);
}

void QtToUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    QStringDecoder decoder(QStringConverter::Latin1, QStringConverter::Flag::Stateless);
    std::vector<QChar> target(text.bytes.size() + 8);
    for (auto _ : state) {
        benchmark::DoNotOptimize(decoder.appendToBuffer(
            target.data(), QByteArrayView(text.bytes.data(), static_cast<qsizetype>(text.bytes.size()))));
        benchmark::ClobberMemory();
    }
}

void QtFromUTF16(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    QStringEncoder encoder(QStringConverter::Latin1, QStringConverter::Flag::Stateless);
    std::vector<char> target(
        static_cast<std::size_t>(encoder.requiredSpace(static_cast<qsizetype>(text.units.size()))));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            encoder.appendToBuffer(target.data(), QStringView(reinterpret_cast<const char16_t*>(text.units.data()),
                                                              static_cast<qsizetype>(text.units.size()))));
        benchmark::ClobberMemory();
    }
}

void OursCharacters(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    const VELSysCodePage codePage(which.codePage);
    for (auto _ : state) {
        const char* src = text.bytes.data();
        unsigned long left = text.bytes.size();
        while (left > 0) {
            unsigned int code = 0;
            codePage.GetNextMultiByteCharAsUTF32(code, src, left);
            benchmark::DoNotOptimize(code);
        }
    }
}

void ICUCharacters(benchmark::State& state, const Case& which) {
    const Text text(which, static_cast<std::size_t>(state.range(0)));
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(which.icu, &status);
    for (auto _ : state) {
        const char* src = text.bytes.data();
        const char* const end = src + text.bytes.size();
        while (src < end) {
            benchmark::DoNotOptimize(ucnv_getNextUChar(converter, &src, end, &status));
        }
    }
    ucnv_close(converter);
}

using Function = void (*)(benchmark::State&, const Case&);

void Register(const char* direction, const Case& which, const char* who, Function function) {
    const std::string name = std::string(direction) + "/" + which.name + "/";
    for (const int size : {64, 4096, 1 << 20}) {
        benchmark::RegisterBenchmark((name + std::to_string(size) + ":" + who).c_str(), [function, &which](
                                                                                            benchmark::State& state) {
            function(state, which);
        })->Arg(size);
    }
}

/// All cases, before the program's `main` runs them.
const bool s_isRegistered = [] {
    for (const Case& which : Cases) {
        Register("CodePageToUtf16", which, "ours", OursToUTF16);
        Register("CodePageToUtf16", which, "iconv", IconvToUTF16);
        Register("CodePageToUtf16", which, "icu", ICUToUTF16);
        Register("Utf16ToCodePage", which, "ours", OursFromUTF16);
        Register("Utf16ToCodePage", which, "iconv", IconvFromUTF16);
        Register("Utf16ToCodePage", which, "icu", ICUFromUTF16);
        Register("NextCharacter", which, "ours", OursCharacters);
        Register("NextCharacter", which, "icu", ICUCharacters);
    }
    Register("CodePageToUtf16", Cases[0], "qt", QtToUTF16);
    Register("Utf16ToCodePage", Cases[0], "qt", QtFromUTF16);
    return true;
}();

} // namespace
