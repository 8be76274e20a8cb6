#include "CodePageFuzz.h"

#include <algorithm>
#include <cstring>

using CodePageFuzz::Require;
using CodePageOracle::Units;

// The first byte names the code page.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    CodePageFuzz::Subject& subject = CodePageFuzz::SubjectOf(data[0]);
    const std::size_t length = std::min<std::size_t>((size - 1) / 2, 200);
    std::unique_ptr<unsigned short[]> text(new unsigned short[length]);
    std::memcpy(text.get(), data + 1, 2 * length);
    std::unique_ptr<char[]> target(new char[4 * length + 1]);
    int written = -1;
    const int count =
        subject.codePage->ConvertUTF16ToMBCS(text.get(), static_cast<int>(length), target.get(), &written);
    Require(count == written && target[static_cast<std::size_t>(count)] == '\0');
    if (subject.plain) {
        Require(std::string(target.get(), static_cast<std::size_t>(count)) ==
                subject.plain->FromUTF16(Units(text.get(), text.get() + length)));
    }
    const int answer = subject.codePage->CanConvertUTF16ToMBCS(text.get(), static_cast<int>(length));
    Require(answer == 0 || answer == -1);
    return 0;
}
