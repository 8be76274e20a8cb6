#include "UCFuzz.h"

using namespace VEL::UCS::internal;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const UCFuzz::Input input(data, size);
    const UCFuzz::Block<char> text = input.Text<char>();
    for (const char* p = text.data(); p < text.end();) {
        const char* tail = p;
        const char* strict = p;
        unsigned int loose = 0;
        unsigned int judged = 0;
        const int tailResult = _DecodeUTF8Tail(tail, text.end(), loose);
        const int strictResult = _DecodeUTF8Strict(strict, text.end(), judged);
        UCFuzz::Require(tailResult <= 3 && strictResult <= 5);
        UCFuzz::Require(tailResult == 0 || (tail == p && strictResult == tailResult));
        UCFuzz::Require(strictResult == 0 ? strict == tail && judged == loose : strict == p);
        if (tailResult == 0) {
            const char* fast = p;
            UCFuzz::Require(_DecodeUTF8Fast(fast) == loose && fast == tail);
        }
        if (strictResult == 0) {
            char bytes[4];
            const char* end = _EncodeUTF8(judged, bytes);
            UCFuzz::Require(end - bytes == strict - p &&
                            std::memcmp(bytes, p, static_cast<std::size_t>(end - bytes)) == 0);
        }
        p = tailResult == 0 ? tail : p + 1;
    }
    const UCFuzz::Block<unsigned short> units = input.Text<unsigned short>();
    for (const unsigned short* p = units.data(); p < units.end();) {
        const unsigned short* strict = p;
        const unsigned short* fast = p;
        unsigned int judged = 0;
        const int result = _DecodeUTF16Strict(strict, units.end(), judged);
        const unsigned int joined = _DecodeUTF16Fast(fast, units.end());
        UCFuzz::Require(strict == fast && strict > p);
        UCFuzz::Require(result == 0 || joined == judged);
        p = strict;
    }
    return 0;
}
