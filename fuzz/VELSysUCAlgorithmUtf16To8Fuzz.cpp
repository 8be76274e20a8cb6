#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Compare<3>(UCFuzz::Input(data, size), VELSysUCAlgorithm::unchecked::utf16to8,
                       PlainUnicode::FromUTF16<char>);
    return 0;
}
