// A path of 60 bytes: set, appended to, split, asked for its extension and its parent; and what is asked of the file
// system, with the answer kept and afresh. Peers are what a user would pick for the same job; for questions that is the
// system's own call.

#include "VELSysPath.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <cstdio>
#include <filesystem>
#include <QDir>
#include <QFileInfo>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* Text = "/home/somebody/projects/engine/assembly/parts/wheel_rim.part";
static_assert(std::char_traits<char>::length(Text) == 60);
constexpr const char* Directory = "/home/somebody/projects/engine/assembly/parts";
constexpr const char* Piece = "wheel_rim.part";

template <class Run>
void Register(const std::string& name, const Run& run) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        auto repeated = run;
        for (auto _ : state) {
            repeated();
        }
    });
}

template <class Path>
struct Standard {
    static void RegisterAll(const std::string& who) {
        Register("PathMake/60:" + who, [] {
            Path path(Text);
            benchmark::DoNotOptimize(path);
        });
        Path reused;
        Register("PathSet/60:" + who, [reused]() mutable {
            reused = Text;
            benchmark::DoNotOptimize(reused);
        });
        Register("PathAppend/60:" + who, [] {
            Path path(Directory);
            path /= Piece;
            benchmark::DoNotOptimize(path);
        });
        const Path path(Text);
        Register("PathSplit/60:" + who, [path] {
            Path parent = path.parent_path();
            Path name = path.filename();
            benchmark::DoNotOptimize(parent);
            benchmark::DoNotOptimize(name);
        });
        Register("PathParent/60:" + who, [path] {
            Path parent = path.parent_path();
            benchmark::DoNotOptimize(parent);
        });
        Register("PathExtension/60:" + who, [path] {
            Path extension = path.extension();
            benchmark::DoNotOptimize(extension);
        });
    }
};

void RegisterOurs() {
    Register("PathMake/60:ours", [] {
        VELSysPath path;
        path.Set(Text);
        benchmark::DoNotOptimize(path);
    });
    Register("PathSet/60:ours", [path = VELSysPath()]() mutable {
        path.Set(Text);
        benchmark::DoNotOptimize(path);
    });
    Register("PathAppend/60:ours", [] {
        VELSysPath path;
        path.Set(Directory);
        path.Append(Piece);
        benchmark::DoNotOptimize(path);
    });
    VELSysPath path;
    path.Set(Text);
    Register("PathSplit/60:ours", [path] {
        VELSysPath parent;
        QORSysTSUnicodeString name;
        path.split(parent, name);
        benchmark::DoNotOptimize(parent);
        benchmark::DoNotOptimize(name);
    });
    Register("PathParent/60:ours", [path] {
        VELSysPath parent = path.GetParent(nullptr);
        benchmark::DoNotOptimize(parent);
    });
    Register("PathExtension/60:ours", [path] {
        QORUnicodeString extension;
        path.GetExtension(extension);
        benchmark::DoNotOptimize(extension);
    });
}

void RegisterQt() {
    const QString text = QString::fromLatin1(Text);
    Register("PathSplit/60:QFileInfo", [text] {
        const QFileInfo info(text);
        QString parent = info.path();
        QString name = info.fileName();
        benchmark::DoNotOptimize(parent);
        benchmark::DoNotOptimize(name);
    });
    Register("PathParent/60:QFileInfo", [text] {
        QString parent = QFileInfo(text).path();
        benchmark::DoNotOptimize(parent);
    });
    Register("PathExtension/60:QFileInfo", [text] {
        QString extension = QFileInfo(text).suffix();
        benchmark::DoNotOptimize(extension);
    });
    const QString piece = QString::fromLatin1(Piece);
    const QDir directory(QString::fromLatin1(Directory));
    Register("PathAppend/60:QDir", [directory, piece] {
        QString path = directory.filePath(piece);
        benchmark::DoNotOptimize(path);
    });
}

void RegisterQuestions(const std::string& file) {
    VELSysPath path;
    path.Set(file.c_str());
    Register("PathExists/asked:ours", [path] { benchmark::DoNotOptimize(path.Exists(1)); });
    Register("PathIsFile/asked:ours", [path] { benchmark::DoNotOptimize(path.IsFile(1)); });
    Register("PathExists/kept:ours", [path] { benchmark::DoNotOptimize(path.Exists(0)); });
    Register("PathIsFile/kept:ours", [path] { benchmark::DoNotOptimize(path.IsFile(0)); });
    for (const char* const way : {"asked", "kept"}) {
        Register(std::string("PathExists/") + way + ":stat", [file] {
            struct stat64 status;
            benchmark::DoNotOptimize(stat64(file.c_str(), &status) == 0);
        });
        Register(std::string("PathIsFile/") + way + ":stat", [file] {
            struct stat64 status;
            benchmark::DoNotOptimize(stat64(file.c_str(), &status) == 0 && S_ISREG(status.st_mode));
        });
    }
    const std::filesystem::path standard(file);
    Register("PathExists/asked:std::filesystem", [standard] { benchmark::DoNotOptimize(exists(standard)); });
    Register("PathIsFile/asked:std::filesystem", [standard] { benchmark::DoNotOptimize(is_regular_file(standard)); });
    const boost::filesystem::path boosted(file);
    Register("PathExists/asked:boost", [boosted] { benchmark::DoNotOptimize(exists(boosted)); });
    Register("PathIsFile/asked:boost", [boosted] { benchmark::DoNotOptimize(is_regular_file(boosted)); });
    const QFileInfo info(QString::fromStdString(file));
    Register("PathIsFile/kept:QFileInfo", [info] { benchmark::DoNotOptimize(info.isFile()); });
}

} // namespace

int main(int argc, char** argv) {
    char file[] = "/tmp/qor-path-benchmark-XXXXXX";
    const int descriptor = mkstemp(file);
    if (descriptor < 0) {
        std::perror(file);
        return 1;
    }
    close(descriptor);
    RegisterOurs();
    Standard<std::filesystem::path>::RegisterAll("std::filesystem");
    Standard<boost::filesystem::path>::RegisterAll("boost");
    RegisterQt();
    RegisterQuestions(file);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    unlink(file);
    return 0;
}
