#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Input input(data, size);
    const unsigned int seed = input.TakeByte();
    const std::size_t behind = input.TakeByte() % 4;
    const UCFuzz::Block<char> text = input.Text<char>();
    if (text.size <= behind) {
        return 0;
    }
    // The text is terminated, and up to three bytes of it stand behind the range.
    text.data()[text.size - 1] = 0;
    const std::size_t length = text.size - 1 - behind;
    UCFuzz::Require(VELSysUCAlgorithm::HashV3FromUTF8(text.data(), length, seed) ==
                    PlainUnicode::HashUTF8(text.data(), length, seed));
    return 0;
}
