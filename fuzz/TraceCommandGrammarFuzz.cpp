// The command grammar: an item that is refused tells nothing, another its destination first, and all its names before
// its options. The same text as the environment variable is refused or tells something.

#include "TraceFuzz.h"

#include <algorithm>
#include <cstdlib>

using StringFuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = TraceFuzz::TextOf(data, size);
    TraceFuzz::Checker checker;
    const int result = VEL::internal::ApplyTraceCommand(text.c_str(), checker.Sink());
    Require(result == 0 || result == -1);
    Require((result == -1) == checker.calls.empty());
    if (result == 0) {
        const std::string& destination = checker.calls[0];
        Require(destination.starts_with("0 "));
        const std::string ofName = destination + " ";
        const auto isOption = [&](const std::string& call) { return !call.starts_with(ofName); };
        const auto option = std::find_if(checker.calls.begin() + 1, checker.calls.end(), isOption);
        Require(checker.calls.end() - option <= 4);
    }
    setenv("VELSysTrace", text.c_str(), 1);
    TraceFuzz::Checker ofVariable;
    const int variable = VEL::internal::ApplyTraceVariable(ofVariable.Sink());
    Require(variable == 0 || variable == -1);
    Require(variable == -1 || !ofVariable.calls.empty());
    return 0;
}
