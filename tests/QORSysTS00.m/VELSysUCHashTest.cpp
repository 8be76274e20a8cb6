#include "VELSysUCAlgorithm.h"

#include "GuardedMemory.h"
#include "PlainUnicode.h"
#include "UnicodeTexts.h"
#include "VELSysCodePage.h"
#include "VELSysUCKernels.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

using PlainUnicode::Units;
using VEL::UCS::internal::BestKernelLevel;
using VEL::UCS::internal::KernelLevel;
using VEL::UCS::internal::UseKernelLevel;

/// Batches that the code page still converts; negative for no limit.
int s_batchesLeft = -1;

unsigned int HashUCS2(const Units& units, unsigned int seed = 0) {
    return VELSysUCAlgorithm::HashV3FromUCS2(units.data(), units.size(), seed);
}

unsigned int HashUTF8(const std::string& text, unsigned int seed = 0) {
    return VELSysUCAlgorithm::HashV3FromUTF8(text.data(), text.size(), seed);
}

unsigned int HashMBCS(const std::string& text, unsigned int seed, const VELSysCodePage* codePage) {
    return VELSysUCAlgorithm::HashV3FromMBCS(text.data(), text.size(), seed, codePage);
}

unsigned int HashOptimistic(const std::string& text, unsigned int seed, const VELSysCodePage* codePage) {
    return VELSysUCAlgorithm::HashV3FromMBCSOptimistic(text.data(), text.size(), seed, codePage);
}

TEST(HashV3, TheHashOfAbcIsKnown) {
    EXPECT_EQ(HashUTF8("abc"), 136518U);
    EXPECT_EQ(HashUCS2({'a', 'b', 'c'}), 136518U);
}

TEST(HashV3, ACharacterBeyondTheBasicPlaneIsHashedAsItsPair) {
    EXPECT_EQ(HashUTF8("\xF0\x9F\x98\x80"), HashUCS2({0xD83D, 0xDE00}));
}

TEST(HashV3, AnEmptyTextGivesTheSeed) {
    EXPECT_EQ(HashUCS2({}, 7), 7U);
    EXPECT_EQ(HashUTF8("", 7), 7U);
    EXPECT_EQ(HashMBCS("", 7, nullptr), 7U);
    EXPECT_EQ(HashOptimistic("", 7, nullptr), 7U);
}

TEST(HashV3, ANullTextGivesTheSeed) {
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUCS2(nullptr, 5, 7), 7U);
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(nullptr, 5, 7), 7U);
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromMBCS(nullptr, 5, 7, nullptr), 7U);
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromMBCSOptimistic(nullptr, 5, 7, nullptr), 7U);
}

TEST(HashV3, TheSeedContinuesAHash) {
    EXPECT_EQ(HashUTF8("cd", HashUTF8("ab")), HashUTF8("abcd"));
    EXPECT_EQ(HashUCS2({'c', 'd'}, HashUCS2({'a', 'b'})), HashUTF8("abcd"));
}

TEST(HashV3, TheSumRunsOverIn32Bits) {
    EXPECT_EQ(HashUCS2({0xFFFF}, 0xFFFFFFFF), 0xFFFFFFFFU * 37U + 0xFFFFU);
}

TEST(HashV3FromUTF8, AStrayByteCountsAsItself) {
    EXPECT_EQ(HashUTF8("\x80z"), HashUCS2({0x80, 'z'}));
    EXPECT_EQ(HashUTF8("a\xFF"), HashUCS2({'a', 0xFF}));
}

TEST(HashV3FromUTF8, ACutOffCharacterTakesBytesFromBehindTheRange) {
    const std::string text = "a\u20ac";
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(text.data(), 2, 0), HashUCS2({'a', 0x20AC}));
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(text.data(), 3, 0), HashUCS2({'a', 0x20AC}));
    const std::string face = "\U0001F600";
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(face.data(), 1, 0), HashUCS2({0xD83D, 0xDE00}));
}

TEST(HashV3FromUTF8, ATerminatorBehindTheRangeCountsAsZero) {
    EXPECT_EQ(HashUTF8("a\xC3"), HashUCS2({'a', 0xC0}));
    EXPECT_EQ(HashUTF8("a\xE2\x82"), HashUCS2({'a', 0x2080}));
}

TEST(HashV3FromUTF8, BehindATerminatorNothingIsReadAndAllIsZero) {
    const GuardedMemory memory(256);
    for (const std::string prefix : {"", "abc", "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef"}) {
        for (const std::string cut : {"\xF1", "\xF1\x80", "\xF1\x81\x82", "\xE2", "\xE2\x82", "\xC3"}) {
            const std::string text = prefix + cut;
            const char* guarded = memory.CopyAtEnd(text.c_str(), text.size() + 1);
            EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(guarded, text.size(), 0),
                      PlainUnicode::HashUTF8(text.c_str(), text.size(), 0));
        }
    }
    // What stands behind the terminator does not matter.
    EXPECT_EQ(VELSysUCAlgorithm::HashV3FromUTF8("\xE2\0\xAC", 1, 0),
              VELSysUCAlgorithm::HashV3FromUTF8("\xE2\0\x80", 1, 0));
}

TEST(HashV3FromUTF8, AWholeTextNeedsNoTerminator) {
    const GuardedMemory memory(256);
    UnicodeTexts::Source random(99);
    for (const auto kind : UnicodeTexts::AllKinds) {
        for (std::size_t size = 0; size <= 200; ++size) {
            const std::string text = random.Text(kind, size);
            const char* guarded = memory.CopyAtEnd(text.data(), size);
            ASSERT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(guarded, size, 3), HashUCS2(PlainUnicode::ToUnits(text), 3));
        }
    }
}

TEST(HashV3FromMBCS, HasOneHashForOneTextInEveryEncoding) {
    const VELSysCodePage utf8("UTF-8");
    UnicodeTexts::Source random(5);
    // Beyond 256 units a text takes several batches, and characters lie across their bounds.
    for (std::size_t size = 0; size < 1500; size += 1 + size / 7) {
        const std::string text = random.Text(UnicodeTexts::Mixed, size);
        const unsigned int expected = HashUCS2(PlainUnicode::ToUnits(text), 11);
        ASSERT_EQ(HashMBCS(text, 11, &utf8), expected);
        ASSERT_EQ(HashOptimistic(text, 11, &utf8), expected);
        ASSERT_EQ(HashUTF8(text, 11), expected);
    }
}

TEST(HashV3FromMBCS, ADamagedByteNearTheEndIsAZeroUnit) {
    const VELSysCodePage utf8("UTF-8");
    EXPECT_EQ(HashMBCS("a\xC3", 0, &utf8), HashUCS2({'a', 0}));
    EXPECT_EQ(HashOptimistic("a\xC3", 0, &utf8), HashUCS2({'a', 0}));
}

TEST(HashV3FromMBCS, ThePageDecidesWhatAByteIs) {
    const VELSysCodePage identity("N/A");
    std::string text(700, '\xE4');
    EXPECT_EQ(HashMBCS(text, 0, &identity), HashUCS2(Units(700, 0xE4)));
    EXPECT_EQ(HashOptimistic("abc" + text, 0, &identity), HashUCS2(Units(700, 0xE4), HashUTF8("abc")));
}

TEST(HashV3FromMBCS, ABatchThatFailsEndsWithTheHashSoFar) {
    const VELSysCodePage identity("N/A");
    const std::string text(700, '\xE4');
    s_batchesLeft = 0;
    EXPECT_EQ(HashMBCS(text, 7, &identity), 7U);
    EXPECT_EQ(HashOptimistic("abc" + text, 7, &identity), HashUTF8("abc", 7));
    s_batchesLeft = 2;
    EXPECT_EQ(HashMBCS(text, 7, &identity), HashUCS2(Units(512, 0xE4), 7));
    EXPECT_EQ(s_batchesLeft, 0);
    s_batchesLeft = -1;
    EXPECT_EQ(HashMBCS(text, 7, &identity), HashUCS2(Units(700, 0xE4), 7));
}

TEST(HashV3FromMBCS, WithoutAPageTheEnvironmentsCounts) {
    const std::string text = "Gr\u00fc\u00dfe";
    const VELSysCodePage& page = VELSysCodePage::GetEnvConverter();
    EXPECT_EQ(HashMBCS(text, 1, nullptr), HashMBCS(text, 1, &page));
    EXPECT_EQ(HashOptimistic(text, 1, nullptr), HashMBCS(text, 1, &page));
}

TEST(HashV3FromMBCSOptimistic, ASCIINeedsNoPage) {
    EXPECT_EQ(HashOptimistic("abc", 0, nullptr), 136518U);
    EXPECT_EQ(HashOptimistic(std::string(1000, 'x'), 0, nullptr), HashUTF8(std::string(1000, 'x')));
}

class HashLevels : public testing::TestWithParam<KernelLevel> {
protected:
    void SetUp() override {
        if (!UseKernelLevel(GetParam())) {
            GTEST_SKIP() << "the processor lacks this level";
        }
    }
    void TearDown() override { UseKernelLevel(BestKernelLevel()); }
};

TEST_P(HashLevels, UnitsOfEveryLengthAtEveryAlignment) {
    const GuardedMemory memory(4096);
    UnicodeTexts::Source random(17);
    for (std::size_t size = 0; size <= 400; ++size) {
        Units units(size);
        for (unsigned short& unit : units) {
            unit = static_cast<unsigned short>(random.Below(0x10000));
        }
        const unsigned int seed = random.Below(0xFFFFFFFF);
        const unsigned int expected = PlainUnicode::HashUnits(units.data(), size, seed);
        ASSERT_EQ(VELSysUCAlgorithm::HashV3FromUCS2(memory.CopyAtEnd(units.data(), size), size, seed), expected);
        ASSERT_EQ(VELSysUCAlgorithm::HashV3FromUCS2(memory.CopyAtBegin(units.data(), size), size, seed), expected);
    }
}

TEST_P(HashLevels, TheLargestUnitsDoNotSpillIntoTheirNeighbours) {
    for (const unsigned short unit : {0x7FFF, 0x8000, 0xFFFF}) {
        const Units units(333, unit);
        ASSERT_EQ(HashUCS2(units, 1), PlainUnicode::HashUnits(units.data(), units.size(), 1));
    }
    const std::string bytes(333, '\x7F');
    ASSERT_EQ(HashUTF8(bytes, 1), PlainUnicode::HashUTF8(bytes.data(), bytes.size(), 1));
}

TEST_P(HashLevels, ASCIIOfEveryLengthWithAnotherByteAnywhere) {
    const GuardedMemory memory(4096);
    UnicodeTexts::Source random(23);
    for (std::size_t size = 1; size <= 300; size += 1 + size / 40) {
        std::string text = random.Text(UnicodeTexts::ASCII, size);
        for (std::size_t offset = 0; offset <= size; ++offset) {
            std::string damaged = text;
            if (offset < size) {
                damaged[offset] = random.TellingByte();
            }
            const char* guarded = memory.CopyAtEnd(damaged.c_str(), size + 1);
            ASSERT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(guarded, size, 5), PlainUnicode::HashUTF8(guarded, size, 5))
                << "size " << size << " offset " << offset;
        }
    }
}

TEST_P(HashLevels, DamagedTextsOfEveryKind) {
    const GuardedMemory memory(4096);
    UnicodeTexts::Source random(29);
    for (int round = 0; round < 12000; ++round) {
        std::string text = random.Text(UnicodeTexts::AllKinds[static_cast<std::size_t>(round) % 6], random.Below(700));
        for (unsigned int count = random.Below(4); count > 0 && !text.empty(); --count) {
            text[random.Below(static_cast<unsigned int>(text.size()))] = random.TellingByte();
        }
        text.resize(random.Below(static_cast<unsigned int>(text.size()) + 1));
        const char* guarded = memory.CopyAtEnd(text.c_str(), text.size() + 1);
        ASSERT_EQ(VELSysUCAlgorithm::HashV3FromUTF8(guarded, text.size(), 5),
                  PlainUnicode::HashUTF8(guarded, text.size(), 5));
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, HashLevels, testing::Values(KernelLevel::SSE2, KernelLevel::SSE41, KernelLevel::AVX2),
                         [](const auto& level) {
                             return level.param == KernelLevel::SSE2    ? "SSE2"
                                    : level.param == KernelLevel::SSE41 ? "SSE41"
                                                                        : "AVX2";
                         });

/// The sampling sum over the places named.
template <class Text>
unsigned long SampledSum(const Text& text, long stride) {
    unsigned long sum = 0;
    for (long i = 0; i < static_cast<long>(text.size()); i += stride) {
        sum = sum * 37 + static_cast<unsigned long>(static_cast<long>(text[static_cast<std::size_t>(i)]));
    }
    return sum;
}

unsigned int HashV2(const Units& units) {
    return VELSysUCAlgorithm::HashV2UCS2(units.data(), static_cast<long>(units.size()));
}

unsigned int HashV2(const std::string& text) {
    return VELSysUCAlgorithm::HashV2MBCS(text.data(), static_cast<long>(text.size()));
}

TEST(HashV2, AnEmptyTextGivesOneInUnitsAndZeroInBytes) {
    EXPECT_EQ(HashV2(Units{}), 1U);
    EXPECT_EQ(HashV2(std::string()), 0U);
}

TEST(HashV2, ANegativeLengthIsThatOfAnEmptyText) {
    const Units units{'a'};
    EXPECT_EQ(VELSysUCAlgorithm::HashV2UCS2(units.data(), -5), 1U);
    EXPECT_EQ(VELSysUCAlgorithm::HashV2UCS2(units.data(), std::numeric_limits<long>::min()), 1U);
    EXPECT_EQ(VELSysUCAlgorithm::HashV2MBCS("a", -5), 0U);
}

TEST(HashV2, ANullTextIsAnEmptyOne) {
    EXPECT_EQ(VELSysUCAlgorithm::HashV2UCS2(nullptr, 5), 1U);
    EXPECT_EQ(VELSysUCAlgorithm::HashV2MBCS(nullptr, 5), 0U);
}

TEST(HashV2, ASumOfZeroGivesOneInUnitsOnly) {
    EXPECT_EQ(HashV2(Units{0, 0}), 1U);
    EXPECT_EQ(HashV2(std::string(2, '\0')), 0U);
}

TEST(HashV2, BytesAreSigned) {
    EXPECT_EQ(HashV2(std::string("\x80")), static_cast<unsigned int>(-128L & 0x7FFFFFFF));
    EXPECT_EQ(HashV2(std::string("a\xFF")), 97U * 37U - 1U);
}

TEST(HashV2, UnitsAreUnsigned) {
    EXPECT_EQ(HashV2(Units{0xFFFF}), 0xFFFFU);
    EXPECT_EQ(HashV2(Units{0x8000, 1}), 0x8000U * 37U + 1U);
}

/// Units of the given sum: its digits to the base 37.
Units UnitsOfSum(unsigned long sum) {
    Units units;
    for (; sum != 0; sum /= 37) {
        units.insert(units.begin(), static_cast<unsigned short>(sum % 37));
    }
    return units;
}

TEST(HashV2, TheUpperBitsOfTheSumCountForItsBeingZero) {
    // These have none of the 31 bits that the result keeps.
    for (const unsigned long sum : {0x80000000UL, 0x100000000UL, 0x8000000000000000UL}) {
        const Units units = UnitsOfSum(sum);
        ASSERT_EQ(SampledSum(units, 1), sum);
        EXPECT_EQ(HashV2(units), 0U) << sum;
    }
}

TEST(HashV2, From400UnitsOnPlacesAreSampled) {
    UnicodeTexts::Source random(31);
    struct Row {
        std::size_t size;
        long stride;
    };
    for (const Row row : {Row{1, 1}, Row{64, 1}, Row{399, 1}, Row{400, 6}, Row{447, 6}, Row{448, 7}, Row{6400, 100}}) {
        Units units(row.size);
        std::string text(row.size, '\0');
        for (std::size_t i = 0; i < row.size; ++i) {
            units[i] = static_cast<unsigned short>(random.Below(0x10000));
            text[i] = static_cast<char>(random.Below(0x100));
        }
        EXPECT_EQ(HashV2(units), SampledSum(units, row.stride) & 0x7FFFFFFF) << row.size;
        EXPECT_EQ(HashV2(text), SampledSum(text, row.stride) & 0x7FFFFFFF) << row.size;
    }
}

TEST(HashV2, WhatIsNotSampledDoesNotCount) {
    std::string text(400, 'a');
    const unsigned int hash = HashV2(text);
    text[1] = 'b';
    EXPECT_EQ(HashV2(text), hash);
    text[6] = 'b';
    EXPECT_NE(HashV2(text), hash);
}

} // namespace

extern "C" int __real__ZNK14VELSysCodePage18ConvertMBCSToUTF16ERPKcRmPtm(const VELSysCodePage* self, const char** src,
                                                                         unsigned long* left, unsigned short* dst,
                                                                         unsigned long room);
extern "C" int __wrap__ZNK14VELSysCodePage18ConvertMBCSToUTF16ERPKcRmPtm(const VELSysCodePage* self, const char** src,
                                                                         unsigned long* left, unsigned short* dst,
                                                                         unsigned long room) {
    if (s_batchesLeft == 0) {
        return -1;
    }
    if (s_batchesLeft > 0) {
        --s_batchesLeft;
    }
    return __real__ZNK14VELSysCodePage18ConvertMBCSToUTF16ERPKcRmPtm(self, src, left, dst, room);
}
