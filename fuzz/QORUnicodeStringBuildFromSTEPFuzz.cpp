#include "StringFuzz.h"

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using namespace StringTexts;
using StringFuzz::Require;

/// What the groups of digits come to by the C library: whether all can be read, and the units.
bool ReadGroups(const std::string& digits, std::size_t width, std::u16string& text) {
    for (std::size_t i = 0; i + width <= digits.size(); i += width) {
        const std::string group = digits.substr(i, width);
        unsigned short half = 0;
        unsigned int full = 0;
        if ((width == 4 ? std::sscanf(group.c_str(), "%hx", &half) : std::sscanf(group.c_str(), "%x", &full)) != 1) {
            return false;
        }
        text += static_cast<char16_t>(width == 4 ? half : full);
    }
    return true;
}

void Check(const std::string& step, const QORUnicodeString& s, int result) {
    const std::u16string text = TextOf(s);
    if (step == "\"") {
        return;
    }
    if (step.size() > 1 && step.front() == '"' && step.back() == '"') {
        std::u16string expected;
        for (const char byte : step.substr(1, step.size() - 2)) {
            expected += static_cast<char16_t>(byte);
        }
        Require(result == 0 && text == expected);
        return;
    }
    const bool isShort = step.starts_with("\\X2\\");
    if (!isShort && !step.starts_with("\\X4\\")) {
        Require(result == -1 && text == u"old");
        return;
    }
    std::u16string expected;
    if (!ReadGroups(step.substr(4), isShort ? 4 : 8, expected)) {
        Require(result == -1 && s.IsEmpty());
        return;
    }
    Require(expected.empty() ? result == -1 && text == u"old" : result == 0 && text == expected);
}

/// What is written of any text is within its bounds, and digits come back.
void CheckWriting(const QORUnicodeString& s) {
    const std::u16string text = TextOf(s);
    const std::size_t room = text.empty() ? 3 : 4 + 4 * text.size() + 1;
    const std::unique_ptr<char[]> out(new char[room]);
    Require(s.ConvertToSTEP(out.get()) == 0);
    if (std::strncmp(out.get(), "\\X2\\", 4) == 0) {
        QORUnicodeString again;
        Require(again.BuildFromSTEP(out.get()) == 0 && TextOf(again) == text);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    StringFuzz::UseUTF8();
    // The report of cut values would fill the log; the fuzzer keeps the stream that it started with.
    stderr = std::fopen("/dev/null", "w");
    return stderr != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string step(reinterpret_cast<const char*>(data), size);
    step = step.c_str();
    // In a block of exactly its size, so that whoever reads too far is seen.
    const std::unique_ptr<char[]> exact(new char[step.size() + 1]);
    std::memcpy(exact.get(), step.c_str(), step.size() + 1);
    QORUnicodeString s("old");
    const int result = s.BuildFromSTEP(exact.get());
    Check(step, s, result);
    CheckWriting(s);
    CheckWriting(BytesString(step));
    return 0;
}
