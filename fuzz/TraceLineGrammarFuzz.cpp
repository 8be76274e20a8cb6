// The line grammar: whatever the line is, the traces are its pieces without a dash, cut, in their order.

#include "TraceFuzz.h"

#include <cstring>

using StringFuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text = TraceFuzz::TextOf(data, size);
    TraceFuzz::Checker checker;
    const int result = VEL::internal::ApplyTraceLine(text.c_str(), checker.Sink());
    const TraceCalls::Calls& calls = checker.calls;
    Require(result == (calls.empty() ? -1 : 0));
    if (calls.empty()) {
        return 0;
    }
    const std::string& destination = calls[0];
    Require(destination.size() > 2 && destination.size() <= 2 + 63);
    std::size_t next = 1;
    char* state = nullptr;
    for (const char* piece = strtok_r(text.data(), " ,;:|", &state); piece != nullptr;
         piece = strtok_r(nullptr, " ,;:|", &state)) {
        if (*piece != '-') {
            const std::string wanted = destination + " " + std::string(piece).substr(0, 63);
            while (next < calls.size() && calls[next] != wanted) {
                // Options that stand before it.
                Require(calls[next].find('=') != std::string::npos);
                ++next;
            }
            Require(next < calls.size());
            ++next;
        }
    }
    return 0;
}
