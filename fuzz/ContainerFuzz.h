/// @file
/// What the fuzzers of the containers share: their input, which is a sequence of operations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace ContainerFuzz {

/// Ends the run: libFuzzer keeps the input.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// The operations, a byte at a time; zeros behind the last.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : _data(data), _size(size) {}

    bool IsEmpty() const { return _size == 0; }
    int Byte() {
        if (_size == 0) {
            return 0;
        }
        --_size;
        return *_data++;
    }
    /// From two below 0 to two above `size`, and now and then far out.
    int Place(int size) {
        const int byte = Byte();
        if (byte >= 250) {
            constexpr int FarOut[] = {INT32_MAX, INT32_MIN, INT32_MAX - 1, INT32_MIN + 1, 1 << 30, -(1 << 30)};
            return FarOut[byte - 250];
        }
        return byte % (size + 5) - 2;
    }

private:
    const std::uint8_t* _data;
    std::size_t _size;
};

} // namespace ContainerFuzz
