/// @file
/// The bulk kernels behind the Unicode conversions and hashes, and the one point at which they are chosen.
///
/// A kernel converts a prefix of a range, as long as the text is *sound*: each UTF-8 lead byte is followed by exactly
/// its count of continuation bytes and no byte stands outside a character; each surrogate has its partner. In sound
/// text there is one way to place the characters, and all decoders of VELSysUCDecoder.h agree on it. Where a text is
/// not sound, where a form is rare, or where the end is too near, a kernel stops in front of the character; the caller
/// takes a stretch with the plain decoders from there, and may then call the kernel again.
///
/// A range has `KernelMinimum` units at least. Every kernel reads inside the range only, and writes only where the
/// conversion of the whole range writes. So a target may be as small as the exact result.
#pragma once

#include <atomic>
#include <cstddef>

namespace VEL::UCS::internal {

/// How far a kernel came: everything in front of `source` stands converted in front of `target`.
template <class Source, class Target>
struct Progress {
    const Source* source;
    Target* target;
};

/// How far a measuring kernel came, and the length of what it saw in units of the target.
template <class Source>
struct Measure {
    const Source* source;
    unsigned long length;
};

/// How far a hashing kernel came, and the hash up to there.
struct HashProgress {
    const char* source;
    unsigned int hash;
};

/// Instruction sets that kernels exist for, each including those before it.
enum class KernelLevel {
    SSE2,  ///< What every x86-64 processor has.
    SSE41, ///< Up to SSE4.1, and POPCNT.
    AVX2,  ///< Up to AVX2, and BMI.
};

/// One set of kernels.
struct Kernels {
    KernelLevel level;
    Progress<char, unsigned short> (*utf8ToUTF16)(const char* first, const char* last, unsigned short* out);
    Progress<char, unsigned int> (*utf8ToUTF32)(const char* first, const char* last, unsigned int* out);
    Progress<unsigned short, char> (*utf16ToUTF8)(const unsigned short* first, const unsigned short* last, char* out);
    Progress<unsigned short, unsigned int> (*utf16ToUTF32)(const unsigned short* first, const unsigned short* last,
                                                           unsigned int* out);
    Progress<unsigned int, unsigned short> (*utf32ToUTF16)(const unsigned int* first, const unsigned int* last,
                                                           unsigned short* out);
    Progress<unsigned int, char> (*utf32ToUTF8)(const unsigned int* first, const unsigned int* last, char* out);
    /// UTF-16 units that a text takes.
    Measure<char> (*utf16Length)(const char* first, const char* last);
    /// UTF-8 bytes that a text takes.
    Measure<unsigned short> (*utf8Length)(const unsigned short* first, const unsigned short* last);
    /// Whether all of a range is well-formed UTF-8; this one never stops early.
    bool (*isUTF8)(const char* first, const char* last);
    /// The string hash of any units.
    unsigned int (*hashUnits)(const unsigned short* first, const unsigned short* last, unsigned int seed);
    /// The string hash of bytes below 0x80; stops in front of another one, or of one that stands a few bytes ahead.
    HashProgress (*hashASCII)(const char* first, const char* last, unsigned int seed);
};

/// The kernels in force; null until they are chosen. Constant initialisation, since strings of other libraries' static
/// objects come by before this library is initialised.
extern constinit std::atomic<const Kernels*> s_activeKernels;

/// Chooses the best kernels that the processor has.
const Kernels& ChooseKernels();

/// The kernels in force: the best that the processor has, unless a test asked for others. Works at any time and on any
/// thread.
inline const Kernels& ActiveKernels() {
    // Relaxed: what the pointer leads to is constant.
    const Kernels* kernels = s_activeKernels.load(std::memory_order_relaxed);
    return kernels != nullptr ? *kernels : ChooseKernels();
}

/// The best level that this processor has.
KernelLevel BestKernelLevel();

/// Puts a level in force, for tests and benchmarks. Gives false, and changes nothing, when the processor lacks it.
bool UseKernelLevel(KernelLevel level);

/// Shorter texts are taken with the plain decoders at once.
inline constexpr std::ptrdiff_t KernelMinimum = 16;

/// What a caller converts plainly, in units of the source, before it tries a kernel again.
inline constexpr std::ptrdiff_t PlainStretch = 64;

extern const Kernels SSE41Kernels;
extern const Kernels AVX2Kernels;

} // namespace VEL::UCS::internal
