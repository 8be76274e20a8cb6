#include "VELSysUCAlgorithm.h"

#include "EnvironmentConverter.h"
#include "VELSysUCDecoder.h"
#include "VELSysUCHashSteps.h"
#include "VELSysUCKernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

using namespace VEL::UCS::internal;

namespace {

/// Texts up to this length are hashed whole by version 2, longer ones at about 64 places.
constexpr long SampleFrom = 400;
constexpr int SampleShift = 6;
constexpr unsigned long HashV2Mask = 0x7FFFFFFF;

/// Below this many units the plain hash is the faster one.
constexpr unsigned long ShortText = 32;

/// Units of one batch of a conversion. A code page terminates its result, so its
/// buffer has one more.
constexpr unsigned long BatchUnits = 256;

constexpr unsigned int HashCodePoint(unsigned int hash, unsigned int codePoint) {
    unsigned short units[2] = {};
    const unsigned short* end = WriteUTF16(codePoint, units);
    for (const unsigned short* unit = units; unit < end; ++unit) {
        hash = HashUnit(hash, *unit);
    }
    return hash;
}

/// Hashes the bytes in front of the first one of 0x80 or above.
inline HashProgress HashLeadingASCII(const char* p, const char* end, unsigned int hash) {
    if (end - p >= static_cast<std::ptrdiff_t>(ShortText)) {
        const HashProgress progress = ActiveKernels().hashASCII(p, end, hash);
        p = progress.source;
        hash = progress.hash;
    }
    constexpr std::uint64_t TopBitOfEach = 0x8080808080808080;
    std::uint64_t group = 0;
    for (; end - p >= static_cast<std::ptrdiff_t>(sizeof group); p += sizeof group) {
        std::memcpy(&group, p, sizeof group);
        if ((group & TopBitOfEach) != 0) {
            break;
        }
        hash = HashEightASCII(group, hash);
    }
    for (; p < end && static_cast<unsigned char>(*p) < UTF8TwoByteFirst; ++p) {
        hash = HashUnit(hash, static_cast<unsigned char>(*p));
    }
    return {p, hash};
}

/// Decodes the character that the end of the text cuts off. Its rest stands behind the range, up to a terminator;
/// nothing behind that is read, all of it counts as zero.
unsigned int DecodeAcrossEnd(const char* p, const char* end) {
    char bytes[UTF8MaxLength] = {};
    const int length = UTF8LengthByLead(static_cast<unsigned char>(*p));
    for (int i = 0; i < length && (p + i < end || p[i] != 0); ++i) {
        bytes[i] = p[i];
    }
    return UTF8Payload(bytes, length);
}

/// Hashes UTF-8 from a character on. Kept out of the way of ASCII texts, which end before.
__attribute__((noinline)) unsigned int HashAnyUTF8(const char* p, const char* end, unsigned int hash) {
    while (end - p >= KernelMinimum) {
        unsigned short batch[BatchUnits];
        const char* const limit = p + std::min<std::ptrdiff_t>(end - p, BatchUnits);
        const auto progress = ActiveKernels().utf8ToUTF16(p, limit, batch);
        hash = ActiveKernels().hashUnits(batch, progress.target, hash);
        p = progress.source;
        // What stopped the kernel: damage, or a character that reaches across the end of the batch.
        const char* const stretchEnd = p + std::min(PlainStretch, limit - p);
        while (p < stretchEnd && end - p >= UTF8MaxLength) {
            hash = HashCodePoint(hash, _DecodeUTF8Fast(p));
        }
        if (end - p < UTF8MaxLength) {
            break;
        }
    }
    while (p < end) {
        if (UTF8LengthByLead(static_cast<unsigned char>(*p)) > end - p) {
            return HashCodePoint(hash, DecodeAcrossEnd(p, end));
        }
        hash = HashCodePoint(hash, _DecodeUTF8Fast(p));
    }
    return hash;
}

constexpr long SampleStride(long n) {
    return n < SampleFrom ? 1 : n >> SampleShift;
}

template <class Unit>
unsigned long SampledSum(const Unit* text, long n) {
    unsigned long sum = 0;
    if (text == nullptr) {
        return sum;
    }
    const long stride = SampleStride(n);
    for (long i = 0; i < n; i += stride) {
        sum = sum * HashFactor + static_cast<unsigned long>(static_cast<long>(text[i]));
    }
    return sum;
}

} // namespace

unsigned int VELSysUCAlgorithm::HashV3FromUCS2(const unsigned short* text, unsigned long n, unsigned int seed) {
    if (text == nullptr) {
        return seed;
    }
    if (n < ShortText) {
        return HashShortUnits(text, text + n, seed);
    }
    return ActiveKernels().hashUnits(text, text + n, seed);
}

unsigned int VELSysUCAlgorithm::HashV3FromUTF8(const char* text, unsigned long n, unsigned int seed) {
    if (text == nullptr) {
        return seed;
    }
    const char* const end = text + n;
    const HashProgress ascii = HashLeadingASCII(text, end, seed);
    return ascii.source == end ? ascii.hash : HashAnyUTF8(ascii.source, end, ascii.hash);
}

unsigned int VELSysUCAlgorithm::HashV3FromMBCS(const char* text, unsigned long n, unsigned int seed,
                                               const VELSysCodePage* codePage) {
    if (text == nullptr) {
        return seed;
    }
    const VELSysCodePage& converter = codePage != nullptr ? *codePage : VEL::internal::EnvironmentConverter();
    unsigned int hash = seed;
    while (text != nullptr) {
        unsigned short batch[BatchUnits + 1];
        const char* const before = text;
        const int units = converter.ConvertMBCSToUTF16(text, n, batch, BatchUnits);
        if (units < 0) {
            return hash;
        }
        hash = HashV3FromUCS2(batch, static_cast<unsigned long>(units), hash);
        if (text == before) {
            // Nothing was consumed, so nothing ever will be.
            return hash;
        }
    }
    return hash;
}

unsigned int VELSysUCAlgorithm::HashV3FromMBCSOptimistic(const char* text, unsigned long n, unsigned int seed,
                                                         const VELSysCodePage* codePage) {
    if (text == nullptr) {
        return seed;
    }
    const char* const end = text + n;
    const HashProgress ascii = HashLeadingASCII(text, end, seed);
    if (ascii.source == end) {
        return ascii.hash;
    }
    return HashV3FromMBCS(ascii.source, static_cast<unsigned long>(end - ascii.source), ascii.hash, codePage);
}

unsigned int VELSysUCAlgorithm::HashV2UCS2(const unsigned short* text, long n) {
    const unsigned long sum = SampledSum(text, n);
    return sum == 0 ? 1U : static_cast<unsigned int>(sum & HashV2Mask);
}

unsigned int VELSysUCAlgorithm::HashV2MBCS(const char* text, long n) {
    return static_cast<unsigned int>(SampledSum(reinterpret_cast<const signed char*>(text), n) & HashV2Mask);
}
