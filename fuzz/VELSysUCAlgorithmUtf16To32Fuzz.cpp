#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Compare<1>(UCFuzz::Input(data, size), VELSysUCAlgorithm::unchecked::utf16to32,
                       PlainUnicode::FromUTF16<unsigned int>);
    return 0;
}
