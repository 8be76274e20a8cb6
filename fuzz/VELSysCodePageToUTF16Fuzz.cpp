#include "CodePageFuzz.h"

#include <algorithm>
#include <cstring>

namespace {

using CodePageFuzz::Require;
using CodePageFuzz::Subject;
using CodePageOracle::Result;
using CodePageOracle::Units;

/// A copy in a block of its own, so that AddressSanitizer sees whoever reads too far.
std::unique_ptr<char[]> Copy(const std::string& text) {
    std::unique_ptr<char[]> copy(new char[text.size()]);
    std::memcpy(copy.get(), text.data(), text.size());
    return copy;
}

/// Converts a text piece by piece, each in a room that the input gives.
void Resume(Subject& subject, std::string rest, unsigned int seed) {
    const auto text = Copy(rest);
    const char* src = text.get();
    unsigned long left = rest.size();
    while (src != nullptr && left > 0) {
        const unsigned long room = seed % 5;
        seed = seed * 1103515245 + 12345;
        const unsigned long before = left;
        const std::size_t units = room > 0 ? room + (subject.plain ? 0 : 1) : left;
        std::unique_ptr<unsigned short[]> target(new unsigned short[units]);
        const int count = subject.codePage->ConvertMBCSToUTF16(src, left, target.get(), room);
        if (subject.plain) {
            const Result expected = subject.plain->ToUTF16(rest, static_cast<long>(room));
            Require(Units(target.get(), target.get() + count) == expected.units);
            Require(before - left == expected.consumed);
        }
        rest.erase(0, before - left);
        if (left == before) {
            return;
        }
    }
}

void TakeCharacters(Subject& subject, std::string rest) {
    const auto text = Copy(rest);
    const char* src = text.get();
    unsigned long left = rest.size();
    while (left > 0) {
        const unsigned long before = left;
        unsigned short units[2];
        const int count = subject.codePage->GetNextMultiByteCharAsUTF16(units, src, left);
        Require(count >= 0 && count <= 2 && left <= before);
        if (subject.plain) {
            int answer = 0;
            const Result expected = subject.plain->Next(rest, answer);
            Require(count == answer && before - left == expected.consumed);
            Require(Units(units, units + count) == expected.units);
        }
        if (left == before) {
            return;
        }
        rest.erase(0, before - left);
    }
}

} // namespace

// The first byte names the code page, the second how it is cut.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    Subject& subject = CodePageFuzz::SubjectOf(data[0]);
    const std::string text(reinterpret_cast<const char*>(data) + 2, std::min<std::size_t>(size - 2, 200));
    const auto copy = Copy(text);
    // The UTF-8 way terminates.
    const std::size_t room = text.size() + (subject.plain ? 0 : 1);
    std::unique_ptr<unsigned short[]> target(new unsigned short[room]);
    const int count =
        subject.codePage->ConvertMBCSToUTF16(copy.get(), static_cast<int>(text.size()), target.get(), nullptr);
    if (subject.plain) {
        Require(Units(target.get(), target.get() + count) == subject.plain->ToUTF16(text, -1).units);
        subject.plain->messages.clear();
    }
    Resume(subject, text, data[1]);
    TakeCharacters(subject, text);
    subject.codePage->CanConvertMBCSToUTF16(copy.get(), text.size());
    return 0;
}
