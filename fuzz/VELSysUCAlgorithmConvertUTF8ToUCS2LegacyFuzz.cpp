#include "UCFuzz.h"

namespace {

int PlainLegacy(const char* text, std::size_t size, std::vector<unsigned short>& units) {
    static constexpr unsigned int Offsets[] = {0, 0x3080, 0xE2080, 0x3C82080, 0xFA082080, 0x82082080};
    for (std::size_t position = 0; position < size;) {
        const unsigned int lead = static_cast<unsigned char>(text[position]);
        const std::size_t trailing = (lead >= 0xC0) + (lead >= 0xE0) + (lead >= 0xF0) + (lead >= 0xF8) + (lead >= 0xFC);
        if (position + trailing > size) {
            return -2;
        }
        unsigned int value = 0;
        for (std::size_t i = 0; i <= trailing; ++i) {
            value = value * 64 + static_cast<unsigned char>(text[position + i]);
        }
        value -= Offsets[trailing];
        units.push_back(value >= 0x10000 ? 0x3F : static_cast<unsigned short>(value));
        position += trailing + 1;
    }
    return 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const UCFuzz::Input input(data, size);
    const UCFuzz::Block<char> text = input.Text<char>();
    if (text.size == 0) {
        return 0;
    }
    // The last byte stands behind the range: no byte further on may be read.
    const std::size_t length = text.size - 1;
    std::vector<unsigned short> expected;
    const int expectedResult = PlainLegacy(text.data(), length, expected);
    const UCFuzz::Block<unsigned short> result(length);
    int written = -1;
    UCFuzz::Require(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(text.data(), length, result.data(), &written) ==
                    expectedResult);
    UCFuzz::Require(static_cast<std::size_t>(written) == expected.size());
    UCFuzz::Require(expected.empty() || std::memcmp(result.data(), expected.data(), expected.size() * 2) == 0);
    return 0;
}
