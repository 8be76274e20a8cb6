#include "UCFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    UCFuzz::Input input(data, size);
    const unsigned int room = input.TakeByte() * 2;
    const UCFuzz::Block<char> text = input.Text<char>();
    const auto length = static_cast<int>(text.size);
    for (const bool measure : {false, true}) {
        std::vector<unsigned short> expected(text.size + 2);
        const auto plain = PlainUnicode::ResumeUTF8(text.data(), length, measure ? nullptr : expected.data(), room);
        const UCFuzz::Block<unsigned short> result(static_cast<std::size_t>(plain.result));
        const char* source = text.data();
        int left = length;
        const int count = VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, left, measure ? nullptr : result.data(), room);
        UCFuzz::Require(PlainUnicode::Resumed<char>{source, left, count} == plain);
        UCFuzz::Require(measure || std::memcmp(result.data(), expected.data(), result.size * 2) == 0);
    }
    return 0;
}
