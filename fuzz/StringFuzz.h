/// @file
/// What the fuzzers of the strings share: the environment, and numbers and texts drawn from an input.
#pragma once

#include "StringTexts.h"
#include "VELSysCodePage.h"
#include "VELSysNLSCore.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace StringFuzz {

/// Ends the run: libFuzzer keeps the input.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// Makes narrow text UTF-8, whatever the machine's locale.
inline void UseUTF8() {
    VELSysNLSEnv env{};
    std::strcpy(env.codePage, "UTF-8");
    VELSysCodePage::OnChangeNLSCore(env);
}

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : _data(data), _size(size) {}

    bool IsEmpty() const { return _size == 0; }

    unsigned int TakeByte() {
        if (_size == 0) {
            return 0;
        }
        --_size;
        return *_data++;
    }

    /// A number below `bound`, of as few bytes as it takes.
    unsigned int Below(unsigned int bound) {
        unsigned int number = TakeByte();
        if (bound > 0x100) {
            number = number << 8 | TakeByte();
        }
        return bound != 0 ? number % bound : 0;
    }

    /// All that is left.
    std::string Rest() const { return {reinterpret_cast<const char*>(_data), _size}; }

private:
    const std::uint8_t* _data;
    std::size_t _size;
};

} // namespace StringFuzz
