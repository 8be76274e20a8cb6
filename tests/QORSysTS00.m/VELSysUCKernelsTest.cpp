#include "VELSysUCKernels.h"

#include "ConversionCheck.h"
#include "UnicodeTexts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define UNDER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define UNDER_SANITIZER 1
#endif
#endif

namespace {

using namespace VEL::UCS::internal;
using UnicodeTexts::AllKinds;
using UnicodeTexts::Kind;
using UnicodeTexts::TellingBytes;
using UnicodeTexts::TellingUnits;

#ifdef UNDER_SANITIZER
/// Exhaustive loops take every so many-th input when each of them costs many times as much.
constexpr unsigned int Stride = 23;
#else
constexpr unsigned int Stride = 1;
#endif

constexpr std::size_t LongestText = 200;

/// Places where something changes: behind none, within or at the end of a vector or a block.
constexpr std::size_t PrefixSizes[] = {0,  1,  2,  3,  7,  12, 13, 14, 15, 16, 17, 29,
                                       30, 31, 32, 33, 45, 60, 61, 62, 63, 64, 70};

std::string NameOf(KernelLevel level) {
    switch (level) {
    case KernelLevel::SSE2:
        return "SSE2";
    case KernelLevel::SSE41:
        return "SSE41";
    case KernelLevel::AVX2:
        return "AVX2";
    }
    return "unknown";
}

/// A conversion that runs before `main`, as those of other libraries' static objects do.
const PlainUnicode::Units s_convertedEarly = [] {
    const std::string text(100, 'a');
    PlainUnicode::Units units(text.size());
    VELSysUCAlgorithm::unchecked::utf8to16(text.data(), text.data() + text.size(), units.data());
    return units;
}();

TEST(KernelChoice, WorksBeforeMain) {
    EXPECT_EQ(s_convertedEarly, PlainUnicode::Units(100, 'a'));
}

TEST(KernelChoice, TheBestLevelIsInForce) {
    EXPECT_EQ(ActiveKernels().level, BestKernelLevel());
}

TEST(KernelChoice, ALevelThatTheProcessorLacksIsRefused) {
    for (const KernelLevel level : {KernelLevel::SSE2, KernelLevel::SSE41, KernelLevel::AVX2}) {
        const bool isThere = level <= BestKernelLevel();
        EXPECT_EQ(UseKernelLevel(level), isThere);
        EXPECT_EQ(ActiveKernels().level == level, isThere);
    }
}

class Levels : public testing::TestWithParam<KernelLevel> {
protected:
    void SetUp() override {
        if (!UseKernelLevel(GetParam())) {
            GTEST_SKIP() << "the processor lacks this level";
        }
    }
    void TearDown() override { UseKernelLevel(BestKernelLevel()); }

    ConversionCheck& Check() { return *_check; }
    UnicodeTexts::Source& Random() { return _random; }

private:
    std::unique_ptr<ConversionCheck> _check = std::make_unique<ConversionCheck>();
    UnicodeTexts::Source _random{4711};
};

INSTANTIATE_TEST_SUITE_P(All, Levels, testing::Values(KernelLevel::SSE2, KernelLevel::SSE41, KernelLevel::AVX2),
                         [](const auto& level) { return NameOf(level.param); });

TEST_P(Levels, EveryOneAndTwoByteTextBehindEveryPrefix) {
    for (const Kind kind : AllKinds) {
        for (const std::size_t size : PrefixSizes) {
            std::string text = Random().Text(kind, size) + "..";
            for (unsigned int first = 0; first < 0x100; ++first) {
                text[size] = static_cast<char>(first);
                ASSERT_EQ(Check().UTF8ToUTF16(text.data(), size + 1), "");
                for (unsigned int second = 0; second < 0x100; second += Stride) {
                    text[size + 1] = static_cast<char>(second);
                    ASSERT_EQ(Check().UTF8ToUTF16(text.data(), size + 2), "");
                }
            }
        }
    }
}

TEST_P(Levels, EveryThreeByteTextAtTheEndOfARange) {
    constexpr std::size_t PrefixSize = 29;
    std::string text = Random().Text(UnicodeTexts::Western, PrefixSize) + "...";
    for (unsigned int value = 0; value < 0x1000000; value += Stride) {
        text[PrefixSize] = static_cast<char>(value >> 16);
        text[PrefixSize + 1] = static_cast<char>(value >> 8);
        text[PrefixSize + 2] = static_cast<char>(value);
        const std::string complaint = Check().UTF8ToUTF16(text.data(), text.size());
        ASSERT_TRUE(complaint.empty()) << complaint;
    }
}

TEST_P(Levels, TellingThreeByteTextsAtTheEndBehindEveryPrefix) {
    constexpr unsigned int Count = TellingBytes.size();
    for (const Kind kind : AllKinds) {
        for (const std::size_t size : PrefixSizes) {
            std::string text = Random().Text(kind, size) + "...";
            for (unsigned int value = 0; value < Count * Count * Count; value += Stride) {
                text[size] = static_cast<char>(TellingBytes[value % Count]);
                text[size + 1] = static_cast<char>(TellingBytes[value / Count % Count]);
                text[size + 2] = static_cast<char>(TellingBytes[value / Count / Count]);
                const std::string complaint = Check().UTF8ToUTF16(text.data(), text.size());
                ASSERT_TRUE(complaint.empty()) << complaint;
            }
        }
    }
}

TEST_P(Levels, TellingFourByteFormsAnywhere) {
    constexpr unsigned int Count = TellingBytes.size();
    unsigned int turn = 0;
    for (unsigned int value = 0; value < Count * Count * Count * Count; value += Stride) {
        if (turn++ % 4096 == 0 && HasFailure()) {
            return;
        }
        char form[4];
        unsigned int rest = value;
        for (char& byte : form) {
            byte = static_cast<char>(TellingBytes[rest % Count]);
            rest /= Count;
        }
        // Each form comes by at one place or another of a block.
        std::string text(100, 'x');
        text.replace(turn * 7 % 96, 4, form, 4);
        const std::string complaint = Check().UTF8(text);
        ASSERT_TRUE(complaint.empty()) << complaint;
    }
}

TEST_P(Levels, SoundTextsOfEveryLength) {
    for (const Kind kind : AllKinds) {
        for (std::size_t size = 0; size <= LongestText; ++size) {
            const std::string text = Random().Text(kind, size);
            ASSERT_EQ(Check().UTF8(text), "");
            ASSERT_EQ(Check().UTF16(PlainUnicode::ToUnits(text)), "");
        }
    }
}

TEST_P(Levels, TextsCutOffAnywhere) {
    for (const Kind kind : AllKinds) {
        const std::string text = Random().Text(kind, LongestText);
        for (std::size_t begin = 0; begin < 70; ++begin) {
            for (std::size_t end = begin; end <= LongestText; end += 1 + end % 3) {
                ASSERT_EQ(Check().UTF8(text.data() + begin, end - begin), "");
            }
        }
    }
}

TEST_P(Levels, DamageAtEveryOffsetOfEveryLength) {
    for (const Kind kind : AllKinds) {
        for (std::size_t size = 1; size <= LongestText; size += Stride == 1 ? 1 : 7) {
            const std::string sound = Random().Text(kind, size);
            for (std::size_t offset = 0; offset < size; ++offset) {
                std::string text = sound;
                text[offset] = Random().TellingByte();
                const std::string complaint = Check().UTF8(text);
                ASSERT_TRUE(complaint.empty()) << complaint;
            }
        }
    }
}

TEST_P(Levels, MuchDamage) {
    for (unsigned int round = 0; round < 60000; round += Stride) {
        std::string text = Random().Text(AllKinds[round % AllKinds.size()], Random().Below(LongestText + 1));
        for (unsigned int count = Random().Below(6); count > 0 && !text.empty(); --count) {
            const bool isTelling = Random().Below(2) != 0;
            text[Random().Below(static_cast<unsigned int>(text.size()))] =
                isTelling ? Random().TellingByte() : static_cast<char>(Random().Below(0x100));
        }
        const std::string complaint = Check().UTF8(text);
        ASSERT_TRUE(complaint.empty()) << complaint;
    }
}

TEST_P(Levels, TextsThatAreNotUTF8AtAll) {
    for (unsigned int round = 0; round < 20000; round += Stride) {
        std::string text(Random().Below(LongestText + 1), '\0');
        for (char& byte : text) {
            byte = static_cast<char>(Random().Below(0x100));
        }
        const std::string complaint = Check().UTF8(text);
        ASSERT_TRUE(complaint.empty()) << complaint;
    }
}

TEST_P(Levels, LongTexts) {
    for (const Kind kind : AllKinds) {
        for (const std::size_t size : {1000UL, 4096UL, 10007UL}) {
            std::string text = Random().Text(kind, size);
            ASSERT_EQ(Check().UTF8(text), "");
            ASSERT_EQ(Check().UTF16(PlainUnicode::ToUnits(text)), "");
            text[size / 2] = '\xFF';
            ASSERT_EQ(Check().UTF8(text), "");
        }
    }
}

TEST_P(Levels, EveryPairOfATellingAndAnyUnit) {
    for (const unsigned short first : TellingUnits) {
        for (const std::size_t before : {0U, 14U, 15U, 31U, 40U}) {
            PlainUnicode::Units units(before + 2, 0x3042);
            units[before] = first;
            for (unsigned int second = 0; second <= 0xFFFF; second += Stride) {
                units[before + 1] = static_cast<unsigned short>(second);
                const std::string complaint = Check().UTF16(units);
                ASSERT_TRUE(complaint.empty()) << complaint;
            }
        }
    }
}

TEST_P(Levels, TellingUnitsInThreesAtEveryPlace) {
    constexpr unsigned int Count = TellingUnits.size();
    for (const unsigned short filler : {0x41, 0xE4, 0x3042, 0xD83D}) {
        for (std::size_t size = 3; size <= 84; size += Stride == 1 ? 9 : 27) {
            for (std::size_t place = 0; place + 3 <= size; ++place) {
                PlainUnicode::Units units(size, filler);
                if (filler == 0xD83D) {
                    for (std::size_t i = 1; i < size; i += 2) {
                        units[i] = 0xDE00;
                    }
                }
                for (unsigned int value = place % 5; value < Count * Count * Count; value += 4 + Stride) {
                    units[place] = TellingUnits[value % Count];
                    units[place + 1] = TellingUnits[value / Count % Count];
                    units[place + 2] = TellingUnits[value / Count / Count];
                    const std::string complaint = Check().UTF16(units);
                    ASSERT_TRUE(complaint.empty()) << complaint;
                }
            }
        }
    }
}

TEST_P(Levels, DamagedUnitsOfEveryLength) {
    for (const Kind kind : AllKinds) {
        for (std::size_t size = 1; size <= LongestText; size += Stride == 1 ? 1 : 7) {
            const PlainUnicode::Units sound = PlainUnicode::ToUnits(Random().Text(kind, size));
            for (std::size_t offset = 0; offset < sound.size(); ++offset) {
                PlainUnicode::Units units = sound;
                units[offset] = Random().TellingUnit();
                const std::string complaint = Check().UTF16(units);
                ASSERT_TRUE(complaint.empty()) << complaint;
            }
        }
    }
}

TEST_P(Levels, EveryUnitAsText) {
    PlainUnicode::Units units(0x10000);
    for (unsigned int unit = 0; unit < units.size(); ++unit) {
        units[unit] = static_cast<unsigned short>(unit);
    }
    constexpr std::size_t Piece = 77;
    for (std::size_t first = 0; first < units.size(); first += Piece) {
        ASSERT_EQ(Check().UTF16(units.data() + first, std::min(Piece, units.size() - first)), "");
    }
}

TEST_P(Levels, EveryCodePointFromUTF32) {
    constexpr unsigned int Piece = 53;
    unsigned int values[Piece];
    for (unsigned int first = 0; first <= CodePointLast + Piece; first += Piece) {
        for (unsigned int i = 0; i < Piece; ++i) {
            values[i] = first + i;
        }
        const std::string complaint = Check().UTF32(values, Piece);
        ASSERT_TRUE(complaint.empty()) << complaint;
    }
}

TEST_P(Levels, AnyValuesFromUTF32) {
    for (unsigned int round = 0; round < 20000; round += Stride) {
        const unsigned int bound = round % 2 == 0 ? 0x10000 : 0x200000;
        PlainUnicode::CodePoints values(Random().Below(120));
        for (unsigned int& value : values) {
            value = Random().Below(20) != 0 ? Random().Below(bound) : 0xFFFFFFFF - Random().Below(0x300);
        }
        const std::string complaint = Check().UTF32(values.data(), values.size());
        ASSERT_TRUE(complaint.empty()) << complaint;
    }
}

} // namespace
