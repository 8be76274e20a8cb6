/// @file
/// The UTF-8 form of a string of the library.
#pragma once

#include <string>

template <class String>
std::string UTF8Of(const String& s) {
    unsigned long n = 0;
    s.ConvertToUTF8(nullptr, &n);
    std::string bytes(n, '\0');
    s.ConvertToUTF8(bytes.data(), &n);
    bytes.resize(n);
    return bytes;
}
