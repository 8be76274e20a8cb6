// The reader of the reference traces' option file: an input is the text of the file. What is read is what a plain
// reading of the same lines gives.

#include "QORSysTSTrace.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace {

constexpr std::size_t LongestLine = 4091;
constexpr std::size_t LongestName = 63;
constexpr std::size_t LongestFile = 2048;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, Close>;

struct Trace {
    std::string name;
    std::string file;
};

/// What a line switches on. @param line  Without what stands behind its first zero byte.
std::optional<Trace> TraceOf(std::string line) {
    line.erase(0, line.find_first_not_of(' '));
    if (line.rfind("t:", 0) != 0) {
        return std::nullopt;
    }
    const std::size_t end = line.find_first_of(" \r\n", 2);
    Trace trace{line.substr(2, end == std::string::npos ? end : end - 2).substr(0, LongestName), "STDERR"};
    const std::size_t option = line.find(" -o \"", 2);
    // The first option counts, also when it lacks its quote.
    if (option != std::string::npos && option == line.find(" -o ", 2)) {
        const std::size_t begin = option + 5;
        const std::size_t quote = line.find('"', begin);
        if (quote != std::string::npos) {
            trace.file = line.substr(begin, quote - begin).substr(0, LongestFile);
        }
    }
    return trace;
}

/// The next trace by the plain reading; nothing at the end.
std::optional<Trace> NextTrace(std::string& text) {
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), LongestLine - 1) + 1;
        const std::string line = text.substr(0, size);
        text.erase(0, size);
        if (const std::optional<Trace> trace = TraceOf(line.substr(0, line.find('\0')))) {
            return trace;
        }
    }
    return std::nullopt;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // The messages about faulty lines go nowhere; the fuzzer's own go to the descriptor.
    stderr = std::fopen("/dev/null", "w");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    if (text.empty()) {
        return 0;
    }
    std::string whole = text;
    const OpenFile options(fmemopen(whole.data(), whole.size(), "rb"));
    const auto name = std::make_unique<char[]>(QORSysTSRefTrace::NameSize);
    const auto file = std::make_unique<char[]>(QORSysTSRefTrace::FileSize);
    int state = 0;
    while (QORSysTSRefTrace::ReadOptFile(options.get(), name.get(), &state, file.get()) != 0) {
        const std::optional<Trace> expected = NextTrace(text);
        Require(expected && expected->name == name.get() && expected->file == file.get() && state == 0);
    }
    Require(!NextTrace(text));
    return 0;
}
