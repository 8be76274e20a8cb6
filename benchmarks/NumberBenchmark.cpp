// Numbers from text and into it.
//
// A case runs over several numbers of one kind in turn. `strtod`, `sscanf` and `snprintf` are what the same texts and
// formats cost without a string; in `ReadDouble/comma` they read the text with a point, since the C library's own
// separator is the locale's. `BuildInt` writes into a string or buffer that has room, `MakeInt` into a new one.

#include "QORUnicodeString.h"
#include "VELNumConvert.h"

#include <benchmark/benchmark.h>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <QLocale>
#include <QString>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Kind {
    const char* name;
    std::vector<std::string> texts;
};

const Kind DoubleKinds[] = {
    {"short", {"1.5", "0.25", "10.0", "3.75", "2.5", "99.5", "7.125", "-4.5"}},
    {"long", {"3.141592653589793", "-2.718281828459045e-3", "6.02214076e23", "1.7976931348623157e308"}},
};

const std::vector<int> Ints = {0, 7, -42, 1000, 65536, -123456, 20231121, 2147483647};

/// Runs `use` over the subjects in turn.
template <class Subjects, class Use>
void Register(const std::string& name, Subjects subjects, Use use) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) mutable {
        std::size_t next = 0;
        for (auto _ : state) {
            use(subjects[next]);
            next = next + 1 < subjects.size() ? next + 1 : 0;
        }
    });
}

std::string WithComma(std::string text) {
    const std::size_t place = text.find('.');
    if (place != std::string::npos) {
        text[place] = ',';
    }
    return text;
}

void RegisterReading(const Kind& kind, char separator) {
    const std::string prefix = std::string("ReadDouble/") + (separator == ',' ? "comma/" : "point/") + kind.name + ":";
    std::vector<QORUnicodeString> ours;
    std::vector<QString> qt;
    for (const std::string& text : kind.texts) {
        const std::string written = separator == ',' ? WithComma(text) : text;
        ours.emplace_back(written.c_str());
        qt.push_back(QString::fromStdString(written));
    }
    Register(prefix + "ours", ours, [separator](const QORUnicodeString& text) {
        static VEL::NumConvertCtx ctx;
        ctx.SetDecimalSeparator(separator);
        double value = 0;
        benchmark::DoNotOptimize(VEL::ConvertToNumEx(value, text, &ctx));
        benchmark::DoNotOptimize(value);
    });
    Register(prefix + "strtod", kind.texts, [](const std::string& text) {
        char* end = nullptr;
        benchmark::DoNotOptimize(std::strtod(text.c_str(), &end));
        benchmark::DoNotOptimize(end);
    });
    if (separator == ',') {
        const QLocale german(QLocale::German, QLocale::Germany);
        Register(prefix + "QLocale", qt, [german](const QString& text) {
            bool isNumber = false;
            benchmark::DoNotOptimize(german.toDouble(text, &isNumber));
            benchmark::DoNotOptimize(isNumber);
        });
        return;
    }
    Register(prefix + "from_chars", kind.texts, [](const std::string& text) {
        double value = 0;
        benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), value));
        benchmark::DoNotOptimize(value);
    });
    Register(prefix + "QString", qt, [](const QString& text) {
        bool isNumber = false;
        benchmark::DoNotOptimize(text.toDouble(&isNumber));
        benchmark::DoNotOptimize(isNumber);
    });
}

void RegisterBuilding() {
    Register("BuildInt:ours", Ints, [s = QORUnicodeString("with room for any")](int value) mutable {
        benchmark::DoNotOptimize(s.BuildFromNum(value, "%d"));
        benchmark::DoNotOptimize(s);
    });
    Register("BuildInt:snprintf", Ints, [](int value) {
        char text[48];
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%d", value));
        benchmark::DoNotOptimize(text);
    });
    Register("BuildInt:QString", Ints, [s = QString("with room for any")](int value) mutable {
        s.setNum(value);
        benchmark::DoNotOptimize(s);
    });
    Register("MakeInt:ours", Ints, [](int value) {
        QORUnicodeString s;
        benchmark::DoNotOptimize(s.BuildFromNum(value, "%d"));
        benchmark::DoNotOptimize(s);
    });
    Register("MakeInt:snprintf", Ints, [](int value) {
        char text[48];
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%d", value));
        benchmark::DoNotOptimize(text);
    });
    Register("MakeInt:to_string", Ints, [](int value) {
        std::string s = std::to_string(value);
        benchmark::DoNotOptimize(s);
    });
    Register("MakeInt:QString", Ints, [](int value) {
        QString s = QString::number(value);
        benchmark::DoNotOptimize(s);
    });
    const std::vector<double> doubles = {0.0, 1.5, -2.25, 3.141592653589793, 1e100};
    Register("BuildDouble:ours", doubles, [s = QORUnicodeString("with room for any")](double value) mutable {
        benchmark::DoNotOptimize(s.BuildFromNum(value, "%g"));
        benchmark::DoNotOptimize(s);
    });
    Register("BuildDouble:snprintf", doubles, [](double value) {
        char text[400];
        benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%g", value));
        benchmark::DoNotOptimize(text);
    });
}

void RegisterScanning() {
    std::vector<QORUnicodeString> ours;
    std::vector<std::string> texts;
    for (const int value : Ints) {
        texts.push_back(std::to_string(value));
        ours.emplace_back(texts.back().c_str());
    }
    Register("ScanInt:ours", ours, [](const QORUnicodeString& text) {
        int value = 0;
        benchmark::DoNotOptimize(text.ConvertToNum(&value, "%d"));
        benchmark::DoNotOptimize(value);
    });
    Register("ScanInt:sscanf", texts, [](const std::string& text) {
        int value = 0;
        benchmark::DoNotOptimize(std::sscanf(text.c_str(), "%d", &value));
        benchmark::DoNotOptimize(value);
    });
}

} // namespace

int main(int argc, char** argv) {
    for (const Kind& kind : DoubleKinds) {
        RegisterReading(kind, '.');
        RegisterReading(kind, ',');
    }
    RegisterBuilding();
    RegisterScanning();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
