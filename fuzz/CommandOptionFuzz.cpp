// The option parser: an input is a command line of pieces with zero bytes between them. Whatever it is, counters and
// first values fit together.

#include "CommandLineInput.h"
#include "StringFuzz.h"
#include "VELSysEnviron.h"

using StringFuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CommandLineInput line(data, size);
    int flag = 7;
    int need = 7;
    int any = 7;
    int a = 7;
    int b = 7;
    char** needValue = nullptr;
    char** anyValue = nullptr;
    VELSysEnvironCommandLongOptionStructA longOptions[] = {
        {"flag", VELSysEnvironCommandOptionFlag, nullptr, &flag},
        {"need", VELSysEnvironCommandOptionValues, &needValue, &need},
        {"any", 0, &anyValue, &any},
        {"", 0, nullptr, nullptr},
        {nullptr, 0, nullptr, nullptr}};
    VELSysEnvironCommandShortOptionStruct shortOptions[] = {{'a', &a}, {'b', &b}, {0, nullptr}};
    int errorIndex = -1;
    const int count = line.Count();
    const int result =
        VELSysEnvironParseCommandOptionA(count, line.Arguments(), longOptions, shortOptions, &errorIndex);
    Require(result == 0 || result == -1);
    Require(result == 0 ? errorIndex == 0 : errorIndex > 0 && errorIndex < count);
    for (char** const value : {needValue, anyValue}) {
        Require(value == nullptr || (value > line.Arguments() && value < line.Arguments() + count));
    }
    if (result == 0) {
        Require(flag <= 1 && a <= 1 && b <= 1);
        Require((needValue != nullptr) == (need > 1) && (anyValue != nullptr) == (any > 1));
        Require(flag + need + any < count);
    }
    return 0;
}
