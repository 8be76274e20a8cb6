/// @file
/// What the fuzzers of the Unicode algorithms share.
///
/// The first byte of an input says which kernels are in force, so that all that the processor has are compared with the
/// plain form; the rest is the text. It stands in a block of its own of exactly its size, as does each result, so that
/// AddressSanitizer sees whoever reads or writes too far.
#pragma once

#include "PlainUnicode.h"
#include "VELSysUCAlgorithm.h"
#include "VELSysUCKernels.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace UCFuzz {

/// Ends the run: libFuzzer keeps the input.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// An array of exactly `size` elements.
template <class T>
struct Block {
    explicit Block(std::size_t count) : size(count), begin(new T[count]) {}

    T* data() const { return begin.get(); }
    T* end() const { return begin.get() + size; }

    std::size_t size;
    std::unique_ptr<T[]> begin;
};

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : _data(data), _size(size) {
        using VEL::UCS::internal::KernelLevel;
        constexpr KernelLevel Levels[] = {KernelLevel::AVX2, KernelLevel::SSE41, KernelLevel::SSE2};
        const unsigned int wanted = TakeByte();
        if (!VEL::UCS::internal::UseKernelLevel(Levels[wanted % 3])) {
            VEL::UCS::internal::UseKernelLevel(VEL::UCS::internal::BestKernelLevel());
        }
    }

    unsigned int TakeByte() {
        if (_size == 0) {
            return 0;
        }
        --_size;
        return *_data++;
    }

    /// All that is left, as elements of `T`.
    template <class T>
    Block<T> Text() const {
        Block<T> text(_size / sizeof(T));
        if (text.size != 0) {
            std::memcpy(text.data(), _data, text.size * sizeof(T));
        }
        return text;
    }

private:
    const std::uint8_t* _data;
    std::size_t _size;
};

template <class Source, class Target>
using Conversion = Target* (*)(const Source*, const Source*, Target*);

/// Compares an unchecked conversion with its plain form. A unit of the source gives `MostPerUnit` of the target.
template <std::size_t MostPerUnit, class Source, class Target>
void Compare(const Input& input, Conversion<Source, Target> fast, Conversion<Source, Target> plain) {
    const Block<Source> text = input.Text<Source>();
    std::vector<Target> expected(text.size * MostPerUnit + 1);
    const Target* expectedEnd = plain(text.data(), text.end(), expected.data());
    Block<Target> result(static_cast<std::size_t>(expectedEnd - expected.data()));
    Require(fast(text.data(), text.end(), result.data()) == result.end());
    Require(result.size == 0 || std::memcmp(result.data(), expected.data(), result.size * sizeof(Target)) == 0);
}

} // namespace UCFuzz
