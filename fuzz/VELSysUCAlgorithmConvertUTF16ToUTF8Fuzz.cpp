#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Input input(data, size);
    const unsigned int room = input.TakeByte() * 4 + input.TakeByte() % 4;
    const UCFuzz::Block<unsigned short> text = input.Text<unsigned short>();
    const auto length = static_cast<int>(text.size);
    for (const bool measure : {false, true}) {
        std::vector<char> expected(3 * text.size + 4);
        const auto plain = PlainUnicode::ResumeUTF16(text.data(), length, measure ? nullptr : expected.data(), room);
        const UCFuzz::Block<char> result(static_cast<std::size_t>(plain.result));
        const unsigned short* source = text.data();
        int left = length;
        const int count = VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, left, measure ? nullptr : result.data(), room);
        UCFuzz::Require(PlainUnicode::Resumed<unsigned short>{source, left, count} == plain);
        UCFuzz::Require(measure || std::memcmp(result.data(), expected.data(), result.size) == 0);
    }
    return 0;
}
