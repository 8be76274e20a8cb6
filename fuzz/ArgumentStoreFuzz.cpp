// The argument store: an input is a command line of pieces with zero bytes between them. Each option that a piece names
// is there; what is added and reset afterwards is found and gone.

#include "CommandLineInput.h"
#include "QORUnicodeString.h"
#include "StringFuzz.h"
#include "VELSysStatus.h"
#include "VELSysTSArg.h"

#include <string>

namespace {

using StringFuzz::Require;

int Get(const std::string& key, int& hasValue, int& isAdded) {
    QORUnicodeString value;
    return VELSysTSGetArg(key.c_str(), hasValue, isAdded, value);
}

void AddAndReset(const std::string& text) {
    QORUnicodeString value;
    value.BuildFromUTF8(text.data(), text.size());
    int hasValue = 7;
    int isAdded = 7;
    Require(VELSysTSAddArg(text.c_str(), &value) == VEL::StatusOk);
    Require(Get(text, hasValue, isAdded) == VEL::StatusOk && hasValue == 1 && isAdded == 1);
    Require(VELSysTSAddArg(text.c_str(), nullptr) == VEL::StatusOk);
    Require(Get(text, hasValue, isAdded) == VEL::StatusOk && hasValue == 0 && isAdded == 1);
    Require(VELSysTSResetArg(text.c_str()) == VEL::StatusOk);
    Require(Get(text, hasValue, isAdded) == VEL::StatusNotFound);
    Require(VELSysTSResetArg(text.c_str()) == VEL::StatusFailure);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isUTF8 = (StringFuzz::UseUTF8(), true);
    CommandLineInput line(data, size);
    Require(isUTF8 && VELSysTSSetArg(line.Count(), line.Arguments()) == VEL::StatusOk);
    for (const std::string& text : line.Texts()) {
        int hasValue = 7;
        int isAdded = 0;
        const int status = Get(text.empty() ? text : text.substr(1), hasValue, isAdded);
        Require(status == VEL::StatusNotFound || (status == VEL::StatusOk && isAdded == 0));
        Require(status != VEL::StatusOk || hasValue == 0 || hasValue == 1);
    }
    AddAndReset(line.Texts().back());
    return 0;
}
