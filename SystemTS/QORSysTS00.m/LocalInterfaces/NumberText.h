/// @file
/// Numbers as the C library's formats write and read them: what the string classes share.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace VEL::internal {

// The formats that write a number as it is.
template <class Number>
inline constexpr const char* PlainFormat = nullptr;
template <>
inline constexpr const char* PlainFormat<int> = "%d";
template <>
inline constexpr const char* PlainFormat<unsigned int> = "%u";
template <>
inline constexpr const char* PlainFormat<long> = "%ld";
template <>
inline constexpr const char* PlainFormat<unsigned long> = "%lu";
template <>
inline constexpr const char* PlainFormat<long long> = "%lld";
template <>
inline constexpr const char* PlainFormat<unsigned long long> = "%llu";

/// Puts the plain format of a long number in place of that of a short one, so that callers may pass the latter.
template <class Number>
const char* FormatFor(const char* format) {
    using Short = std::conditional_t<std::is_signed_v<Number>, int, unsigned int>;
    const bool isShort = format != nullptr && std::strcmp(format, PlainFormat<Short>) == 0;
    return isShort ? PlainFormat<Number> : format;
}

/// The text of a number, in the C locale of the thread.
template <class Number>
class NumberText {
public:
    NumberText(Number number, const char* format) : _result(Print(number, format)) {}

    /// As of `sprintf`; -1 for a null format. Text that is longer than the room is cut, and this tells its full length.
    int Result() const { return _result; }
    /// Zero-terminated; only for a result above 0.
    const char* Text() const { return _text; }

private:
    static constexpr std::size_t Room = std::is_floating_point_v<Number> ? 400 : 48;

    int Print(Number number, const char* format) {
        if (format == nullptr) {
            return -1;
        }
        if constexpr (std::is_integral_v<Number>) {
            if (std::strcmp(format, PlainFormat<Number>) == 0) {
                char* const end = std::to_chars(_text, _text + Room - 1, number).ptr;
                *end = '\0';
                return static_cast<int>(end - _text);
            }
        }
        return std::snprintf(_text, Room, format, number);
    }

    char _text[Room];
    int _result;
};

/// Writes a number into `s`. A result below 1 leaves it unchanged. @return As NumberText::Result().
template <class String, class Number>
int BuildNumber(String& s, Number number, const char* format) {
    const NumberText<Number> text(number, format);
    if (text.Result() > 0) {
        s = text.Text();
    }
    return text.Result();
}

/// Reads a number. @return As `sscanf`; `EOF` for a null `number` or `format`.
template <class Number>
int ReadNumber(const char* text, Number* number, const char* format) {
    return number != nullptr && format != nullptr ? std::sscanf(text, format, number) : EOF;
}

} // namespace VEL::internal
