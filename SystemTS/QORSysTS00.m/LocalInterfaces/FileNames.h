/// @file
/// What the listing of directories asks of each name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace VEL::internal {

/// True when all bytes are below 0x80, as those of most names are.
inline bool IsASCIIName(std::string_view name) {
    constexpr std::uint64_t TopBits = 0x8080808080808080;
    constexpr std::size_t Step = sizeof(std::uint64_t);
    std::uint64_t bits = 0;
    const auto take = [&bits](const char* bytes) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, Step);
        bits |= word;
    };
    const char* const end = name.data() + name.size();
    if (name.size() < Step) {
        for (const char byte : name) {
            bits |= static_cast<unsigned char>(byte);
        }
        return (bits & TopBits) == 0;
    }
    for (const char* next = name.data(); end - next > static_cast<std::ptrdiff_t>(Step); next += Step) {
        take(next);
    }
    // The last step overlaps the one in front of it.
    take(end - Step);
    return (bits & TopBits) == 0;
}

} // namespace VEL::internal
