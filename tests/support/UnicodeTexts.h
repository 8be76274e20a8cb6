/// @file
/// Texts for tests of the Unicode conversions: of each form of character, mixed, and damaged.
#pragma once

#include "PlainUnicode.h"

#include <array>
#include <random>
#include <string>

namespace UnicodeTexts {

/// What a text consists of.
enum Kind { ASCII, Western, TwoBytes, ThreeBytes, FourBytes, Mixed };

inline constexpr std::array AllKinds{ASCII, Western, TwoBytes, ThreeBytes, FourBytes, Mixed};

/// Bytes on either side of each bound that a decoder knows.
inline constexpr std::array<unsigned char, 24> TellingBytes{0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                                            0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xEC, 0xED, 0xEE,
                                                            0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0xF7, 0xF8, 0xFF};

/// Units on either side of each bound that an encoder knows.
inline constexpr std::array<unsigned short, 15> TellingUnits{0x0000, 0x0041, 0x007F, 0x0080, 0x07FF,
                                                             0x0800, 0xD7FF, 0xD800, 0xD801, 0xDBFF,
                                                             0xDC00, 0xDC01, 0xDFFF, 0xE000, 0xFFFF};

class Source {
public:
    explicit Source(unsigned int seed) : _random(seed) {}

    unsigned int Below(unsigned int bound) { return static_cast<unsigned int>(_random() >> 8) % bound; }

    std::string Character(Kind kind) {
        switch (kind) {
        case ASCII:
            return PlainUnicode::Encode(Below(0x80));
        case Western:
            return PlainUnicode::Encode(Below(12) != 0 ? 0x20 + Below(0x5F) : 0xA0 + Below(0x60));
        case TwoBytes:
            return PlainUnicode::Encode(0x80 + Below(0x780));
        case ThreeBytes:
            return PlainUnicode::Encode(Below(2) != 0 ? 0x3040 + Below(0x6000) : 0xE000 + Below(0x2000));
        case FourBytes:
            return PlainUnicode::Encode(0x10000 + Below(0x100000));
        case Mixed:
            break;
        }
        return Character(static_cast<Kind>(Below(5)));
    }

    /// A sound text of exactly `size` bytes; ASCII fills up what no character of the kind fits into.
    std::string Text(Kind kind, std::size_t size) {
        std::string text;
        while (text.size() < size) {
            const std::string character = Character(kind);
            text += text.size() + character.size() <= size ? character : "~";
        }
        return text;
    }

    char TellingByte() {
        return static_cast<char>(TellingBytes[Below(static_cast<unsigned int>(TellingBytes.size()))]);
    }

    unsigned short TellingUnit() { return TellingUnits[Below(static_cast<unsigned int>(TellingUnits.size()))]; }

private:
    std::minstd_rand _random;
};

} // namespace UnicodeTexts
