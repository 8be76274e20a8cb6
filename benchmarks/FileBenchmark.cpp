// Walking a tree of 10^5 files in 100 directories, and copying files. The tree is made once, in a temporary directory
// that goes at the end.
//
// "Walk" goes through both levels, knowing that the first holds directories, and takes the path of each file. "Readdir"
// is the plain system interface with the path of each file put together in one buffer. "WalkStat" asks each entry for
// its kind and its size, by which it goes down.

#include "QORUnicodeString.h"
#include "VELSysDirectoryIterator.h"
#include "VELSysFile.h"

#include <benchmark/benchmark.h>
#include <boost/filesystem.hpp>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <filesystem>
#include <fnmatch.h>
#include <fstream>
#include <QDirIterator>
#include <QFile>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
namespace bfs = boost::filesystem;

constexpr int DirectoryCount = 100;
constexpr int FilesInEach = 1000;
constexpr int SmallCount = 1000;
constexpr std::size_t SmallSize = 4096;
constexpr std::size_t LargeSize = 64U << 20;

void Write(const fs::path& path, std::size_t size) {
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
}

/// What is walked and copied.
class Subjects {
public:
    Subjects() {
        std::string name = (fs::temp_directory_path() / "qor-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        root = name;
        tree = root / "tree";
        for (int d = 0; d < DirectoryCount; ++d) {
            const fs::path directory = tree / ("directory_" + std::to_string(d));
            fs::create_directories(directory);
            for (int f = 0; f < FilesInEach; ++f) {
                Write(directory / ("part_number_" + std::to_string(f) + (f % 10 == 0 ? ".drawing" : ".part")), 0);
            }
        }
        fs::create_directories(root / "small");
        for (int f = 0; f < SmallCount; ++f) {
            Write(root / "small" / std::to_string(f), SmallSize);
        }
        Write(root / "large", LargeSize);
    }
    ~Subjects() { fs::remove_all(root); }

    fs::path root;
    fs::path tree;
};

Subjects& Files() {
    static Subjects s_files;
    return s_files;
}

// Walks: each calls `take` with the path of each file and answers nothing.

template <class Take>
void WalkOurs(const char* pattern, Take& take) {
    VELSysPath root;
    root.Set(Files().tree.c_str());
    const VELSysFNMatchOptions options;
    const QORUnicodeString names(pattern);
    const VELSysDirectoryIterator end = root.End();
    for (VELSysDirectoryIterator directory = root.Begin(nullptr); directory != end; ++directory) {
        const VELSysDirectoryIterator endOfFiles = (*directory).End();
        for (VELSysDirectoryIterator file = (*directory).Begin(names, options, nullptr); file != endOfFiles; ++file) {
            take(*file);
        }
    }
}

bool IsDots(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

template <class Take>
void ReadEntries(std::string& path, const Take& take) {
    DIR* const directory = opendir(path.c_str());
    path += '/';
    const std::size_t length = path.size();
    while (const dirent64* entry = readdir64(directory)) {
        if (!IsDots(entry->d_name)) {
            path.resize(length);
            path += entry->d_name;
            take(entry->d_name);
        }
    }
    closedir(directory);
    path.resize(length - 1);
}

template <class Take>
void WalkReaddir(const char* pattern, Take& take) {
    std::string path = Files().tree.string();
    ReadEntries(path, [&](const char*) {
        ReadEntries(path, [&](const char* name) {
            if (*pattern == 0 || fnmatch(pattern, name, 0) == 0) {
                take(path);
            }
        });
    });
}

template <class Take>
void WalkStd(const char* pattern, Take& take) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Files().tree)) {
        if (!entry.is_directory() && (*pattern == 0 || fnmatch(pattern, entry.path().filename().c_str(), 0) == 0)) {
            take(entry.path());
        }
    }
}

template <class Take>
void WalkBoost(const char* pattern, Take& take) {
    for (const bfs::directory_entry& entry : bfs::recursive_directory_iterator(Files().tree.string())) {
        if (entry.status().type() != bfs::directory_file &&
            (*pattern == 0 || fnmatch(pattern, entry.path().filename().c_str(), 0) == 0)) {
            take(entry.path());
        }
    }
}

template <class Take>
void WalkQt(const char* pattern, Take& take) {
    const QStringList names = *pattern != 0 ? QStringList(QString(pattern)) : QStringList();
    QDirIterator files(QString::fromStdString(Files().tree.string()), names, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        take(files.next());
    }
}

/// The length of a path, so that it is looked at.
struct Sum {
    void operator()(const VELSysPath& path) { total += path.getType(); }
    void operator()(const std::string& path) { total += path.size(); }
    void operator()(const fs::path& path) { total += path.native().size(); }
    void operator()(const bfs::path& path) { total += path.native().size(); }
    void operator()(const QString& path) { total += static_cast<std::size_t>(path.size()); }
    std::size_t total = 0;
};

template <class Walk>
void RegisterWalk(const char* who, const Walk& walk) {
    for (const auto& [kind, pattern] :
         {std::pair("all", ""), std::pair("pattern", "*.drawing"), std::pair("question", "part_?umber_*.drawing")}) {
        const std::string text = pattern;
        benchmark::RegisterBenchmark((std::string("Walk/") + kind + ":" + who).c_str(), [=](benchmark::State& state) {
            Sum sum;
            for (auto _ : state) {
                walk(text.c_str(), sum);
            }
            benchmark::DoNotOptimize(sum.total);
        })->Unit(benchmark::kMillisecond);
    }
}

// Walks that ask for each entry's kind and size.

std::size_t SizesOurs(const VELSysPath& directory) {
    std::size_t total = 0;
    const VELSysDirectoryIterator end = directory.End();
    for (VELSysDirectoryIterator entry = directory.Begin(nullptr); entry != end; ++entry) {
        if ((*entry).IsDirectory(0)) {
            total += SizesOurs(*entry);
            continue;
        }
        struct stat64 status;
        (*entry).Stat(status, 0);
        total += static_cast<std::size_t>(status.st_size);
    }
    return total;
}

std::size_t SizesReaddir(std::string& path) {
    std::size_t total = 0;
    ReadEntries(path, [&](const char*) {
        struct stat64 status;
        stat64(path.c_str(), &status);
        total += S_ISDIR(status.st_mode) ? SizesReaddir(path) : static_cast<std::size_t>(status.st_size);
    });
    return total;
}

std::size_t SizesStd() {
    std::size_t total = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Files().tree)) {
        total += entry.is_directory() ? 0 : entry.file_size();
    }
    return total;
}

std::size_t SizesBoost() {
    std::size_t total = 0;
    for (const bfs::directory_entry& entry : bfs::recursive_directory_iterator(Files().tree.string())) {
        total += entry.status().type() == bfs::directory_file ? 0 : bfs::file_size(entry.path());
    }
    return total;
}

std::size_t SizesQt() {
    std::size_t total = 0;
    QDirIterator files(QString::fromStdString(Files().tree.string()), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        total += static_cast<std::size_t>(files.fileInfo().size());
    }
    return total;
}

template <class Run>
void Register(const char* name, const Run& run) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        for (auto _ : state) {
            benchmark::DoNotOptimize(run());
        }
    })->Unit(benchmark::kMillisecond);
}

void RegisterStatWalks() {
    Register("WalkStat:ours", [] {
        VELSysPath root;
        root.Set(Files().tree.c_str());
        return SizesOurs(root);
    });
    Register("WalkStat:readdir", [] {
        std::string path = Files().tree.string();
        return SizesReaddir(path);
    });
    Register("WalkStat:std", SizesStd);
    Register("WalkStat:boost", SizesBoost);
    Register("WalkStat:QDirIterator", SizesQt);
}

// Copies.

int CopyOurs(const fs::path& from, const fs::path& to) {
    return VELSysLocalFileCopy(QORUnicodeString(to.c_str()), QORUnicodeString(from.c_str()));
}
int CopyStd(const fs::path& from, const fs::path& to) {
    return fs::copy_file(from, to, fs::copy_options::overwrite_existing) ? 0 : -1;
}
int CopyBoost(const fs::path& from, const fs::path& to) {
    bfs::copy_file(from.string(), to.string(), bfs::copy_option::overwrite_if_exists);
    return 0;
}
int CopyQt(const fs::path& from, const fs::path& to) {
    const QString target = QString::fromStdString(to.string());
    QFile::remove(target);
    return QFile::copy(QString::fromStdString(from.string()), target) ? 0 : -1;
}

void RegisterCopies(const char* who, int (*copy)(const fs::path&, const fs::path&)) {
    Register((std::string("Copy/64MiB:") + who).c_str(),
             [=] { return copy(Files().root / "large", Files().root / "large-copy"); });
    Register((std::string("Copy/1000x4KiB:") + who).c_str(), [=] {
        const fs::path copies = Files().root / "copies";
        fs::create_directories(copies);
        int result = 0;
        for (int f = 0; f < SmallCount; ++f) {
            result |= copy(Files().root / "small" / std::to_string(f), copies / std::to_string(f));
        }
        return result;
    });
}

} // namespace

int main(int argc, char** argv) {
    RegisterWalk("ours", [](const char* pattern, Sum& sum) { WalkOurs(pattern, sum); });
    RegisterWalk("readdir", [](const char* pattern, Sum& sum) { WalkReaddir(pattern, sum); });
    RegisterWalk("std", [](const char* pattern, Sum& sum) { WalkStd(pattern, sum); });
    RegisterWalk("boost", [](const char* pattern, Sum& sum) { WalkBoost(pattern, sum); });
    RegisterWalk("QDirIterator", [](const char* pattern, Sum& sum) { WalkQt(pattern, sum); });
    RegisterStatWalks();
    RegisterCopies("ours", CopyOurs);
    RegisterCopies("std", CopyStd);
    RegisterCopies("boost", CopyBoost);
    RegisterCopies("QFile", CopyQt);
    benchmark::Initialize(&argc, argv);
    Files();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
