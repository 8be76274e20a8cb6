#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Compare<4>(UCFuzz::Input(data, size), VELSysUCAlgorithm::unchecked::utf32to8,
                       PlainUnicode::FromUTF32<char>);
    return 0;
}
