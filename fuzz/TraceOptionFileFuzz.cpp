// The reader of option files tells what its lines tell one by one, less the last byte of each.

#include "TraceFuzz.h"
#include "TraceManagerHeld.h"
#include "VELSysTraceOptions.h"

#include <algorithm>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t longestLine = 8191;
    // A part of the input is repeated, so that lines come to their limit.
    std::string text = TraceFuzz::TextOf(data, size);
    if (size > 2 && data[0] >= 0x80) {
        text.insert(size / 2, data[1] * 64U, static_cast<char>(data[2]));
    }
    TraceFuzz::Checker lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t feed = text.find('\n', start);
        const std::size_t length = std::min(longestLine, (feed != std::string::npos ? feed + 1 : text.size()) - start);
        VEL::internal::ApplyTraceLine(text.substr(start, length - 1).c_str(), lines.Sink());
        start += length;
    }

    TraceFuzz::Checker read;
    TraceManagerHeld::manager = static_cast<TraceCalls::Recorder*>(&read);
    std::FILE* const file = text.empty() ? std::fopen("/dev/null", "re") : fmemopen(text.data(), text.size(), "r");
    const int result =
        VELSysTraceOpFileParser(file, TraceFuzz::Checker::AddTrace, TraceFuzz::Checker::AddOption, nullptr, nullptr);
    std::fclose(file);
    StringFuzz::Require(result == 0);
    StringFuzz::Require(read.calls == lines.calls);
    return 0;
}
