// What strings do with text: searching, changing, comparing, cutting. Peers are what a user would pick for the same
// job.

#include "QORSysTSUnicodeString.h"
#include "QORUnicodeString.h"
#include "VELString.h"
#include "VELVectorOfUnicodeString.h"

#include <absl/strings/ascii.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <benchmark/benchmark.h>
#include <QString>
#include <QStringList>
#include <string>
#include <unicode/unistr.h>
#include <vector>

namespace {

template <class Function>
void Register(const std::string& name, const Function& function) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { function(state); });
}

/// Registers a case whose body is `run`; what it gives is kept from the optimiser.
template <class Run>
void RegisterRun(const std::string& name, const Run& run) {
    Register(name, [=](benchmark::State& state) {
        for (auto _ : state) {
            benchmark::DoNotOptimize(run());
        }
    });
}

QORUnicodeString Wide(const std::u16string& text) {
    QORUnicodeString s;
    s.BuildFromUCChar(reinterpret_cast<const unsigned short*>(text.data()), static_cast<int>(text.size()));
    return s;
}

QString Qt(const std::u16string& text) {
    return QString::fromStdU16String(text);
}

icu::UnicodeString ICU(const std::u16string& text) {
    return {text.data(), static_cast<int>(text.size())};
}

std::u16string Widened(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string Prose(std::size_t size) {
    std::string text;
    while (text.size() < size) {
        text += "the part number of a wheel, its material and ";
    }
    text.resize(size);
    return text;
}

// Searching

void RegisterSearch(const std::string& row, const std::u16string& text, const std::u16string& what) {
    const QORUnicodeString ours = Wide(text);
    const QORUnicodeString ourWhat = Wide(what);
    const QString qt = Qt(text);
    const QString qtWhat = Qt(what);
    const icu::UnicodeString icu = ICU(text);
    const icu::UnicodeString icuWhat = ICU(what);
    RegisterRun("SearchForward/" + row + ":ours", [=] { return ours.FindPosition(ourWhat, 0); });
    RegisterRun("SearchForward/" + row + ":QString", [=] { return qt.indexOf(qtWhat); });
    RegisterRun("SearchForward/" + row + ":icu", [=] { return icu.indexOf(icuWhat); });
    RegisterRun("SearchForward/" + row + ":u16string", [=] { return text.find(what); });
}

void RegisterSearchBackward(const std::string& row, const std::u16string& text, const std::u16string& what) {
    const QORUnicodeString ours = Wide(text);
    const QORUnicodeString ourWhat = Wide(what);
    const QString qt = Qt(text);
    const QString qtWhat = Qt(what);
    const icu::UnicodeString icu = ICU(text);
    const icu::UnicodeString icuWhat = ICU(what);
    RegisterRun("SearchBackward/" + row + ":ours",
                [=] { return ours.SearchSubString(ourWhat, 0, QORUnicodeString::QORSearchModeBackward); });
    RegisterRun("SearchBackward/" + row + ":QString", [=] { return qt.lastIndexOf(qtWhat); });
    RegisterRun("SearchBackward/" + row + ":icu", [=] { return icu.lastIndexOf(icuWhat); });
    RegisterRun("SearchBackward/" + row + ":u16string", [=] { return text.rfind(what); });
}

void RegisterSearches() {
    const std::u16string pattern = u"ZQ~ a needle of forty units, no more, no";
    for (const std::size_t size : {std::size_t{4096}, std::size_t{1} << 20}) {
        for (const std::size_t length : {std::size_t{1}, std::size_t{5}, std::size_t{40}}) {
            const std::u16string what = pattern.substr(0, length);
            const std::u16string prose = Widened(Prose(size));
            const std::string row = std::to_string(length) + "/" + std::to_string(size);
            RegisterSearch(row, prose.substr(0, size - 50) + what + u"........", what);
            RegisterSearchBackward(row, u"........" + what + prose.substr(0, size - 50), what);
        }
    }
    const std::u16string periodic(std::size_t{1} << 16, u'a');
    RegisterSearch("periodic/65536", periodic, std::u16string(500, u'a') + u'b' + std::u16string(499, u'a'));
    RegisterSearchBackward("periodic/65536", periodic, std::u16string(499, u'a') + u'b' + std::u16string(500, u'a'));
}

// Appending

template <class String, class Piece, class Append>
void RegisterAppend(const std::string& name, const Piece& piece, std::size_t pieces, const Append& append) {
    RegisterRun(name, [=] {
        String s;
        for (std::size_t i = 0; i < pieces; ++i) {
            append(s, piece);
        }
        return s;
    });
}

void RegisterAppends() {
    for (const std::size_t size : {std::size_t{1}, std::size_t{16}, std::size_t{1000}}) {
        const std::size_t pieces = (std::size_t{1} << 20) / size;
        const std::string text = Prose(size);
        const std::string name = "Append/" + std::to_string(size);
        RegisterAppend<QORUnicodeString>(name + ":ours", QORUnicodeString(text.c_str()), pieces,
                                         [](auto& s, const auto& piece) { s.Append(piece); });
        RegisterAppend<QString>(name + ":QString", QString::fromStdString(text), pieces,
                                [](auto& s, const auto& piece) { s.append(piece); });
        RegisterAppend<std::string>(name + ":std::string", text, pieces,
                                    [](auto& s, const auto& piece) { s.append(piece); });
        RegisterAppend<icu::UnicodeString>(name + ":icu", ICU(Widened(text)), pieces,
                                           [](auto& s, const auto& piece) { s.append(piece); });
    }
    const std::string a = Prose(20);
    const std::string b = Prose(30);
    const std::string c = Prose(40);
    RegisterRun("AppendThree:ours", [a = QORSysTSUnicodeString(a.c_str()), b = QORSysTSUnicodeString(b.c_str()),
                                     c = QORSysTSUnicodeString(c.c_str())] {
        QORSysTSUnicodeString s(a);
        s.Append(b, c, a);
        return s;
    });
    RegisterRun("AppendThree:QString",
                [a = QString::fromStdString(a), b = QString::fromStdString(b), c = QString::fromStdString(c)] {
                    QString s(a);
                    s.append(b).append(c).append(a);
                    return s;
                });
    RegisterRun("AppendThree:std::string", [=] {
        std::string s(a);
        s.append(b).append(c).append(a);
        return s;
    });
}

// Replacing

std::string WithHits(const std::string& what, std::size_t each) {
    std::string text = Prose(65536);
    for (std::size_t i = each / 2; each > 0 && i + what.size() < text.size(); i += each) {
        text.replace(i, what.size(), what);
    }
    return text;
}

void ReplaceStd(std::string& text, const std::string& what, const std::string& with) {
    for (std::size_t i = text.find(what); i != std::string::npos; i = text.find(what, i + with.size())) {
        text.replace(i, what.size(), with);
    }
}

void RegisterReplaces() {
    const std::string what = "@#";
    const struct {
        const char* name;
        std::size_t each;
    } densities[] = {{"none", 0}, {"few", 4096}, {"many", 16}};
    for (const auto& density : densities) {
        for (const std::string with : {"<>", "[...]"}) {
            const std::string text = WithHits(what, density.each);
            const std::string row = std::string(density.name) + (with.size() == 2 ? "/same" : "/longer");
            const QORUnicodeString narrow(text.c_str());
            const QORUnicodeString ourWhat(what.c_str());
            const QORUnicodeString ourWith(with.c_str());
            RegisterRun("ReplaceAll/narrow/" + row + ":ours", [=] {
                QORUnicodeString s(narrow);
                s.ReplaceAll(ourWhat, ourWith);
                return s;
            });
            RegisterRun("ReplaceAll/narrow/" + row + ":std::string", [=] {
                std::string s(text);
                ReplaceStd(s, what, with);
                return s;
            });
            RegisterRun("ReplaceAll/narrow/" + row + ":absl", [=] {
                return absl::StrReplaceAll(text, {{what, with}});
            });
            const QORUnicodeString wide = Wide(Widened(text));
            const QORUnicodeString wideWhat = Wide(Widened(what));
            const QORUnicodeString wideWith = Wide(Widened(with));
            RegisterRun("ReplaceAll/wide/" + row + ":ours", [=] {
                QORUnicodeString s(wide);
                s.ReplaceAll(wideWhat, wideWith);
                return s;
            });
            const QString qt = QString::fromStdString(text);
            RegisterRun("ReplaceAll/wide/" + row + ":QString",
                        [=, a = QString::fromStdString(what), b = QString::fromStdString(with)] {
                            QString s(qt);
                            s.replace(a, b);
                            return s;
                        });
            RegisterRun("ReplaceAll/wide/" + row + ":icu",
                        [=, t = ICU(Widened(text)), a = ICU(Widened(what)), b = ICU(Widened(with))] {
                            icu::UnicodeString s(t);
                            s.findAndReplace(a, b);
                            return s;
                        });
        }
    }
}

// Comparing: texts that are equal, or that differ in case at their end only.

void RegisterCompares() {
    for (const std::size_t size : {std::size_t{8}, std::size_t{64}, std::size_t{4096}}) {
        const std::string a = Prose(size - 1) + "x";
        const std::string b = Prose(size - 1) + "x";
        const std::string c = Prose(size - 1) + "X";
        const std::string row = std::to_string(size);
        const auto registerThree = [&](const std::string& kind, const QORUnicodeString& x, const QORUnicodeString& y,
                                       const QORUnicodeString& z) {
            x.GetLengthInChar();
            y.GetLengthInChar();
            z.GetLengthInChar();
            RegisterRun("Equal/" + kind + "/" + row + ":ours", [=] { return x == y; });
            RegisterRun("CompareByCase/" + kind + "/" + row + ":ours", [=] { return x.Compare(z); });
            RegisterRun("Order/" + kind + "/" + row + ":ours", [=] { return x.SortCompare(z); });
        };
        const QORUnicodeString narrow[] = {a.c_str(), b.c_str(), c.c_str()};
        const QORUnicodeString wide[] = {Wide(Widened(a)), Wide(Widened(b)), Wide(Widened(c))};
        registerThree("narrow", narrow[0], narrow[1], narrow[2]);
        registerThree("wide", wide[0], wide[1], wide[2]);
        registerThree("mixed", narrow[0], wide[1], wide[2]);
        RegisterRun("Equal/narrow/" + row + ":std::string", [=] { return a == b; });
        RegisterRun("Order/narrow/" + row + ":std::string", [=] { return a.compare(c); });
        for (const char* kind : {"narrow", "wide", "mixed"}) {
            const std::string tail = std::string(kind) + "/" + row;
            const QString x = QString::fromStdString(a);
            const QString y = QString::fromStdString(b);
            const QString z = QString::fromStdString(c);
            RegisterRun("Equal/" + tail + ":QString", [=] { return x == y; });
            RegisterRun("CompareByCase/" + tail + ":QString", [=] { return x.compare(z, Qt::CaseInsensitive); });
            RegisterRun("Order/" + tail + ":QString", [=] { return x.compare(z); });
            const icu::UnicodeString i = ICU(Widened(a));
            const icu::UnicodeString j = ICU(Widened(b));
            const icu::UnicodeString k = ICU(Widened(c));
            RegisterRun("Equal/" + tail + ":icu", [=] { return i == j; });
            RegisterRun("CompareByCase/" + tail + ":icu", [=] { return i.caseCompare(k, 0); });
            RegisterRun("Order/" + tail + ":icu", [=] { return i.compare(k); });
        }
    }
}

// Case

void RegisterCases() {
    const struct {
        const char* name;
        const char* text;
    } kinds[] = {{"already", "A PART NUMBER, A WHEEL 7 "},
                 {"ascii", "a part number, a wheel 7 "},
                 {"western", "Gr\u00fc\u00dfe aus M\u00fcnchen, \u00e0 bient\u00f4t "}};
    for (const auto& kind : kinds) {
        for (const std::size_t size : {std::size_t{64}, std::size_t{65536}}) {
            std::string bytes;
            while (bytes.size() < size) {
                bytes += kind.text;
            }
            const QString qt = QString::fromStdString(bytes);
            const std::u16string units = qt.toStdU16String();
            const std::string row = std::string(kind.name) + "/" + std::to_string(size);
            const auto upper = [](const auto& original) {
                auto s(original);
                s.ToUpper();
                return s;
            };
            RegisterRun("ToUpper/wide/" + row + ":ours", [=, s = Wide(units)] { return upper(s); });
            RegisterRun("ToUpper/narrow/" + row + ":ours",
                        [=, s = QORUnicodeString(bytes.c_str())] { return upper(s); });
            for (const char* form : {"ToUpper/wide/", "ToUpper/narrow/"}) {
                RegisterRun(form + row + ":QString", [=] { return qt.toUpper(); });
                RegisterRun(form + row + ":icu", [=, t = ICU(units)] {
                    icu::UnicodeString s(t);
                    s.toUpper();
                    return s;
                });
            }
        }
    }
}

// Cutting

void RegisterCuts() {
    std::string list;
    while (list.size() < 65536) {
        list += "identifier,7,Grundplatte,";
    }
    RegisterRun("Split/65536:ours", [s = QORUnicodeString(list.c_str()), comma = QORUnicodeString(",")] {
        VELVectorOfUnicodeString pieces;
        VEL::Split(s, comma, pieces);
        return pieces.GetLength();
    });
    RegisterRun("Split/65536:QString", [s = QString::fromStdString(list)] { return s.split(u',').size(); });
    RegisterRun("Split/65536:absl", [=] { return std::vector<std::string>(absl::StrSplit(list, ',')).size(); });
    const std::u16string padded = std::u16string(20, u' ') + Widened(Prose(200)) + std::u16string(20, u' ');
    RegisterRun("StripBoth/240:ours", [s = Wide(padded)] { return s.Strip(QORUnicodeString::QORStripModeBoth); });
    RegisterRun("StripBoth/240:QString", [s = Qt(padded)] { return s.trimmed(); });
    RegisterRun("StripBoth/240:icu", [t = ICU(padded)] {
        icu::UnicodeString s(t);
        return s.trim();
    });
    const std::u16string text = Widened(Prose(4096));
    RegisterRun("SubString/4096:ours", [s = Wide(text)] { return s.SubString(1024, 2048); });
    RegisterRun("SubString/4096:QString", [s = Qt(text)] { return s.mid(1024, 2048); });
    RegisterRun("SubString/4096:u16string", [=] { return text.substr(1024, 2048); });
    RegisterRun("SubString/4096:icu", [s = ICU(text)] { return icu::UnicodeString(s, 1024, 2048); });
    const std::u16string piece = Widened(Prose(30));
    RegisterRun("InsertAndRemove/4096:ours", [s = Wide(text), p = Wide(piece)] {
        QORUnicodeString t(s);
        t.Insert(2048, p);
        t.Remove(2048, 30);
        return t;
    });
    RegisterRun("InsertAndRemove/4096:QString", [s = Qt(text), p = Qt(piece)] {
        QString t(s);
        t.insert(2048, p);
        t.remove(2048, 30);
        return t;
    });
    RegisterRun("InsertAndRemove/4096:u16string", [=] {
        std::u16string t(text);
        t.insert(2048, piece);
        t.erase(2048, 30);
        return t;
    });
}

} // namespace

int main(int argc, char** argv) {
    RegisterSearches();
    RegisterAppends();
    RegisterReplaces();
    RegisterCompares();
    RegisterCases();
    RegisterCuts();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
