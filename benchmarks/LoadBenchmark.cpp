/// @file
/// What it costs a process to load the library: the time from `dlopen` to ready, the dynamic relocations behind it, and
/// the size of the file.
///
/// Each load happens in a process of its own, which is this program executed again, so that nothing is loaded yet; the
/// libraries take turns. The report has the form of the other benchmark programs, and `--benchmark_out=FILE` and
/// `--benchmark_filter=REGEX` are understood; other options are not looked at.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int Loads = 101;

struct Library {
    std::string who;
    std::string name;
    std::string path;
    std::vector<double> nanoseconds;
};

struct Row {
    std::string name;
    double value;
    const char* unit;
};

/// Loads `name` and prints how long that took, in nanoseconds, and where the library stands.
int LoadAndReport(const char* name) {
    const auto start = std::chrono::steady_clock::now();
    void* handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    const auto end = std::chrono::steady_clock::now();
    if (handle == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return EXIT_FAILURE;
    }
    link_map* map = nullptr;
    dlinfo(handle, RTLD_DI_LINKMAP, &map);
    std::printf("%lld %s\n",
                static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count()),
                map->l_name);
    std::fflush(stdout);
    // No destructors: the process is only there for the load.
    _exit(EXIT_SUCCESS);
}

/// Runs this program in a fresh process that loads `library` once, and notes what it reports.
bool LoadOnce(Library& library) {
    int channel[2];
    if (pipe(channel) != 0) {
        return false;
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(channel[1], STDOUT_FILENO);
        close(channel[0]);
        close(channel[1]);
        execl("/proc/self/exe", "LoadBenchmark", "--load", library.name.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(channel[1]);
    std::string report;
    std::array<char, 4096> buffer;
    for (ssize_t got; (got = read(channel[0], buffer.data(), buffer.size())) > 0;) {
        report.append(buffer.data(), static_cast<std::size_t>(got));
    }
    close(channel[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        return false;
    }
    const std::size_t blank = report.find(' ');
    library.nanoseconds.push_back(std::stod(report.substr(0, blank)));
    library.path = report.substr(blank + 1, report.find('\n') - blank - 1);
    return true;
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct FileFacts {
    double relocations = 0;
    double size = 0;
};

/// Reads the dynamic relocations of a 64-bit ELF file, and its size without what `strip` takes away, since one library
/// may come stripped and another not.
std::optional<FileFacts> ReadFacts(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    Elf64_Ehdr header;
    if (bytes.size() < sizeof header) {
        return std::nullopt;
    }
    std::memcpy(&header, bytes.data(), sizeof header);
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) {
        return std::nullopt;
    }
    FileFacts facts;
    facts.size = static_cast<double>(bytes.size());
    for (unsigned index = 0; index < header.e_shnum; ++index) {
        const std::size_t position = header.e_shoff + static_cast<std::size_t>(index) * header.e_shentsize;
        Elf64_Shdr section;
        if (position > bytes.size() || bytes.size() - position < sizeof section) {
            return std::nullopt;
        }
        std::memcpy(&section, bytes.data() + position, sizeof section);
        const bool isLoaded = (section.sh_flags & SHF_ALLOC) != 0;
        if (isLoaded && section.sh_type == SHT_RELA) {
            facts.relocations += static_cast<double>(section.sh_size / sizeof(Elf64_Rela));
        }
        const bool isStripped = section.sh_type == SHT_SYMTAB || section.sh_type == SHT_STRTAB ||
                                section.sh_type == SHT_PROGBITS;
        if (!isLoaded && isStripped && index != header.e_shstrndx) {
            facts.size -= static_cast<double>(section.sh_size);
        }
    }
    return facts;
}

void WriteReport(std::FILE* out, const std::vector<Row>& rows) {
    std::fputs("{\n  \"context\": {\"library_build_type\": \"release\"},\n  \"benchmarks\": [", out);
    const char* separator = "\n";
    for (const Row& row : rows) {
        std::fprintf(out,
                     "%s    {\"name\": \"%s_median\", \"run_name\": \"%s\", \"run_type\": \"aggregate\", "
                     "\"aggregate_name\": \"median\", \"repetitions\": %d, \"real_time\": %.0f, \"cpu_time\": %.0f, "
                     "\"time_unit\": \"%s\"}",
                     separator, row.name.c_str(), row.name.c_str(), Loads, row.value, row.value, row.unit);
        separator = ",\n";
    }
    std::fputs("\n  ]\n}\n", out);
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--load") == 0) {
        return LoadAndReport(argv[2]);
    }
    constexpr std::string_view OutOption = "--benchmark_out=";
    constexpr std::string_view FilterOption = "--benchmark_filter=";
    std::string outPath;
    std::regex filter(".*");
    for (int index = 1; index < argc; ++index) {
        const std::string_view argument = argv[index];
        if (argument.substr(0, OutOption.size()) == OutOption) {
            outPath = argument.substr(OutOption.size());
        } else if (argument.substr(0, FilterOption.size()) == FilterOption) {
            filter = std::string(argument.substr(FilterOption.size()));
        }
    }

    std::vector<Row> rows;
    const auto isWanted = [&filter](const std::string& name) { return std::regex_search(name, filter); };
    Library libraries[] = {{"ours", OUR_LIBRARY, "", {}}, {"qt", "libQt6Core.so.6", "", {}}};
    bool isAnyWanted = false;
    for (const Library& library : libraries) {
        for (const char* what : {"Load/dlopen:", "Load/relocations:", "Load/size:"}) {
            isAnyWanted = isAnyWanted || isWanted(what + library.who);
        }
    }
    // The first round warms the file cache and is thrown away.
    for (int round = 0; isAnyWanted && round <= Loads; ++round) {
        for (Library& library : libraries) {
            if (!LoadOnce(library)) {
                std::fprintf(stderr, "LoadBenchmark: %s cannot be loaded\n", library.name.c_str());
                return EXIT_FAILURE;
            }
            if (round == 0) {
                library.nanoseconds.clear();
            }
        }
    }
    for (const Library& library : libraries) {
        if (!isAnyWanted) {
            break;
        }
        const std::optional<FileFacts> facts = ReadFacts(library.path);
        if (!facts) {
            std::fprintf(stderr, "LoadBenchmark: %s is no 64-bit ELF file\n", library.path.c_str());
            return EXIT_FAILURE;
        }
        const Row all[] = {{"Load/dlopen:" + library.who, Median(library.nanoseconds), "ns"},
                           {"Load/relocations:" + library.who, facts->relocations, "count"},
                           {"Load/size:" + library.who, facts->size, "bytes"}};
        std::copy_if(std::begin(all), std::end(all), std::back_inserter(rows),
                     [&isWanted](const Row& row) { return isWanted(row.name); });
    }

    std::FILE* out = outPath.empty() ? stdout : std::fopen(outPath.c_str(), "w");
    if (out == nullptr) {
        std::fprintf(stderr, "LoadBenchmark: %s cannot be written\n", outPath.c_str());
        return EXIT_FAILURE;
    }
    WriteReport(out, rows);
    return std::fclose(out) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
