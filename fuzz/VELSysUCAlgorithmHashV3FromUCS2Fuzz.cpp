#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Input input(data, size);
    const unsigned int seed = input.TakeByte();
    const UCFuzz::Block<unsigned short> text = input.Text<unsigned short>();
    UCFuzz::Require(VELSysUCAlgorithm::HashV3FromUCS2(text.data(), text.size, seed) ==
                    PlainUnicode::HashUnits(text.data(), text.size, seed));
    return 0;
}
