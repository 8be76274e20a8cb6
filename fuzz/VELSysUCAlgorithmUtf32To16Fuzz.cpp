#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Compare<2>(UCFuzz::Input(data, size), VELSysUCAlgorithm::unchecked::utf32to16,
                       PlainUnicode::FromUTF32<unsigned short>);
    return 0;
}
