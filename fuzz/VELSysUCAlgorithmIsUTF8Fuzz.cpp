#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const UCFuzz::Input input(data, size);
    const UCFuzz::Block<char> text = input.Text<char>();
    const char* p = text.data();
    const int result = VELSysUCAlgorithm::IsUTF8(p, text.size);
    UCFuzz::Require(p == text.data());
    UCFuzz::Require(result == (PlainUnicode::IsUTF8(text.data(), text.end()) ? 0 : -1));
    return 0;
}
