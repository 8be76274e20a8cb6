// The splitter of command lines against its rules written down once more.

#include "PlainCommandLine.h"
#include "StringFuzz.h"
#include "VELSysEnviron.h"

using StringFuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string line(std::string(reinterpret_cast<const char*>(data), size).c_str());
    char** argv = nullptr;
    int argc = 0;
    Require(VELSysEnvironBuildArgumentFromCommandLine(line.c_str(), &argv, &argc) == 0);
    const auto expected = PlainCommandLine::Split(line);
    Require(expected.size() == static_cast<std::size_t>(argc));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        Require(expected[i].has_value() == (argv[i] != nullptr));
        Require(argv[i] == nullptr || *expected[i] == argv[i]);
    }
    Require(VELSysEnvironDeleteArgumentArrayA(&argv, argc) == 0 && argv == nullptr);
    return 0;
}
