#include "TokenInput.h"
#include "VELSysStr.h"

#include <memory>
#include <utility>

namespace {

using TokenInput::Require;

/// The definition, byte by byte, on the index of a text that ends with a zero byte.
struct PlainTokens {
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    std::string text;
    std::size_t state = 0;

    std::size_t Next(const std::string& delimiters) {
        if (state == None) {
            return None;
        }
        std::size_t start = state;
        while (text[start] != 0 && delimiters.find(text[start]) != std::string::npos) {
            ++start;
        }
        if (text[start] == 0) {
            return None;
        }
        std::size_t end = start;
        while (text[end] != 0 && delimiters.find(text[end]) == std::string::npos) {
            ++end;
        }
        if (text[end] == 0) {
            state = None;
            return start;
        }
        text[end] = 0;
        state = text[end + 1] != 0 ? end + 1 : end;
        return start;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TokenInput::Input<char> input(data, size);
    // Both end at their first zero byte.
    const std::string delimiters = input.delimiters.c_str();
    const std::string text = std::string(input.text.c_str()) + '\0';
    // In a block of exactly its size, so that whoever goes too far is seen.
    const std::unique_ptr<char[]> block(new char[text.size()]);
    std::memcpy(block.get(), text.data(), text.size());
    PlainTokens plain{text};
    char* state = nullptr;
    char* first = block.get();
    if ((input.choices & 1) != 0) {
        state = std::exchange(first, nullptr);
    }
    for (;;) {
        const char* const token = QORSysStrtokLegacy(first, delimiters.c_str(), &state);
        const std::size_t expected = plain.Next(delimiters);
        Require(token == (expected == PlainTokens::None ? nullptr : block.get() + expected));
        Require(std::memcmp(block.get(), plain.text.data(), plain.text.size()) == 0);
        if (token == nullptr) {
            return 0;
        }
        Require(state == (plain.state == PlainTokens::None ? nullptr : block.get() + plain.state));
        first = nullptr;
        if (state == nullptr) {
            Require(QORSysStrtokLegacy(nullptr, delimiters.c_str(), &state) == nullptr);
            return 0;
        }
    }
}
