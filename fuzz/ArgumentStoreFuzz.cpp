// The argument store: an input is a command line of pieces with zero bytes between them. Each option that a piece names
// is there; what is added and reset afterwards is found and gone.

#include "QORUnicodeString.h"
#include "StringFuzz.h"
#include "VELSysStatus.h"
#include "VELSysTSArg.h"

#include <string>
#include <utility>
#include <vector>

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
    std::vector<std::string> texts{"program"};
    std::string piece;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0) {
            texts.push_back(std::exchange(piece, {}));
        } else {
            piece.push_back(static_cast<char>(data[i]));
        }
    }
    texts.push_back(piece);
    std::vector<char*> argv;
    for (std::string& text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    Require(isUTF8 && VELSysTSSetArg(static_cast<int>(texts.size()), argv.data()) == VEL::StatusOk);
    for (const std::string& text : texts) {
        int hasValue = 7;
        int isAdded = 0;
        const int status = Get(text.empty() ? text : text.substr(1), hasValue, isAdded);
        Require(status == VEL::StatusNotFound || (status == VEL::StatusOk && isAdded == 0));
        Require(status != VEL::StatusOk || hasValue == 0 || hasValue == 1);
    }
    AddAndReset(texts.back());
    return 0;
}
