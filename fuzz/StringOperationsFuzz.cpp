#include "StringFuzz.h"
#include "StringModel.h"

#include <cstdio>

namespace {
/// Longer runs find no more, and take their time.
constexpr int MostSteps = 60;
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    StringFuzz::UseUTF8();
    return 0;
}

// Each byte is one choice: what is done, to which string, with what text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    StringFuzz::Input input(data, size);
    StringModel::Player player([&input](unsigned int bound) { return input.Below(bound); }, true);
    for (int step = 0; step < MostSteps && !input.IsEmpty(); ++step) {
        const std::string what = player.Step();
        const std::string difference = player.FirstDifference();
        if (!difference.empty()) {
            std::fprintf(stderr, "%s: %s\n", what.c_str(), difference.c_str());
            std::abort();
        }
    }
    return 0;
}
