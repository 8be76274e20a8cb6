#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const UCFuzz::Input input(data, size);
    const UCFuzz::Block<char> text = input.Text<char>();
    if (text.size == 0) {
        return 0;
    }
    const char* p = text.data();
    unsigned int codePoint = 0;
    int expected = 0;
    if (*p != 0) {
        const bool isSound = VEL::UCS::internal::_DecodeUTF8Strict(p, text.end(), codePoint) == 0;
        expected = isSound ? static_cast<int>(p - text.data()) : -1;
    }
    UCFuzz::Require(VELSysUCAlgorithm::CharUTF8Len(text.data(), text.size) == expected);
    return 0;
}
