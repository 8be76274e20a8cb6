/// @file
/// What the fuzzers of the tokenisers share: an input of one byte of choices, a byte that says how long the delimiters
/// are, the delimiters, and the text.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace TokenInput {

/// Ends the run: libFuzzer keeps the input.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

template <class Unit>
struct Input {
    Input(const std::uint8_t* data, std::size_t size) {
        choices = size > 0 ? data[0] : 0;
        const std::size_t header = size < 2 ? size : 2;
        const std::size_t units = (size - header) / sizeof(Unit);
        const std::size_t wanted = size > 1 ? data[1] % 8 : 0;
        const std::size_t count = wanted < units ? wanted : units;
        delimiters = Units(data + header, count);
        text = Units(data + header + count * sizeof(Unit), units - count);
    }

    unsigned int choices;
    std::basic_string<Unit> delimiters;
    std::basic_string<Unit> text;

private:
    static std::basic_string<Unit> Units(const std::uint8_t* data, std::size_t count) {
        std::basic_string<Unit> units(count, Unit());
        if (count > 0) {
            std::memcpy(units.data(), data, count * sizeof(Unit));
        }
        return units;
    }
};

} // namespace TokenInput
