#include "VELSysUCAlgorithm.h"

#include "PlainUnicode.h"
#include "VELSysUCKernels.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using PlainUnicode::Units;
using VEL::UCS::internal::BestKernelLevel;
using VEL::UCS::internal::KernelLevel;
using VEL::UCS::internal::UseKernelLevel;

constexpr unsigned short Untouched = 0xABCD;
constexpr char UntouchedByte = '\x55';

struct ToUnits {
    int result;
    std::size_t consumed;
    bool isDone; ///< Whether the source became null.
    int length;
    Units written;

    bool operator==(const ToUnits&) const = default;
};

ToUnits Convert(const std::string& text, unsigned int room) {
    Units target(room + text.size() + 4, Untouched);
    const char* source = text.data();
    int length = static_cast<int>(text.size());
    const int result = VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, target.data(), room);
    for (std::size_t i = static_cast<std::size_t>(result); i < target.size(); ++i) {
        EXPECT_EQ(target[i], Untouched);
    }
    target.resize(static_cast<std::size_t>(result));
    const std::size_t consumed = text.size() - static_cast<std::size_t>(length);
    EXPECT_TRUE(source == nullptr || source == text.data() + consumed);
    return {result, consumed, source == nullptr, length, target};
}

struct ToBytes {
    int result;
    bool isDone;
    int length;
    std::string written;

    bool operator==(const ToBytes&) const = default;
};

ToBytes Convert(const Units& units, unsigned int room) {
    std::string target(3 * units.size() + 8, UntouchedByte);
    const unsigned short* source = units.data();
    int length = static_cast<int>(units.size());
    const int result = VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, length, target.data(), room);
    for (std::size_t i = static_cast<std::size_t>(result); i < target.size(); ++i) {
        EXPECT_EQ(target[i], UntouchedByte);
    }
    target.resize(static_cast<std::size_t>(result));
    EXPECT_TRUE(source == nullptr || source == units.data() + units.size() - length);
    return {result, source == nullptr, length, target};
}

TEST(ConvertUTF8ToUTF16, RefusesANullSource) {
    const char* source = nullptr;
    int length = 3;
    unsigned short target[4];
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, target, 4), -1);
    EXPECT_EQ(length, 3);
    length = 0;
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, target, 4), -1);
}

TEST(ConvertUTF8ToUTF16, RefusesANegativeLength) {
    const char* const text = "abc";
    const char* source = text;
    int length = -1;
    unsigned short target[4];
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, target, 4), -1);
    EXPECT_EQ(source, text);
    EXPECT_EQ(length, -1);
}

TEST(ConvertUTF8ToUTF16, AnEmptySourceBecomesNull) {
    const char* source = "abc";
    int length = 0;
    unsigned short target[] = {Untouched};
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, target, 1), 0);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(target[0], Untouched);
}

TEST(ConvertUTF8ToUTF16, TheSourceBecomesNullWhenAllIsConsumed) {
    EXPECT_EQ(Convert("abc", 8), (ToUnits{3, 3, true, 0, {'a', 'b', 'c'}}));
}

TEST(ConvertUTF8ToUTF16, MeasuringConsumesAndWritesNothing) {
    const std::string text = "A\u00e4\u20ac\U0001F600";
    const char* source = text.data();
    int length = static_cast<int>(text.size());
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, nullptr, 0), 5);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(ConvertUTF8ToUTF16, DamagedBytesNearTheEndGiveZeroUnits) {
    EXPECT_EQ(Convert("\xC3", 8), (ToUnits{1, 1, true, 0, {0}}));
    EXPECT_EQ(Convert("ab\xE2\x82", 8), (ToUnits{4, 4, true, 0, {'a', 'b', 0, 0}}));
    EXPECT_EQ(Convert("\xF0\x9F\x98", 8), (ToUnits{3, 3, true, 0, {0, 0, 0}}));
    const char* source = "\xC3";
    int length = 1;
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, nullptr, 0), 1);
}

TEST(ConvertUTF8ToUTF16, ALastUnitOfRoomIsUsed) {
    EXPECT_EQ(Convert("abcd", 3), (ToUnits{3, 3, false, 1, {'a', 'b', 'c'}}));
    EXPECT_EQ(Convert("abc", 3), (ToUnits{3, 3, true, 0, {'a', 'b', 'c'}}));
    EXPECT_EQ(Convert("abc", 1), (ToUnits{1, 1, false, 2, {'a'}}));
}

TEST(ConvertUTF8ToUTF16, APairThatDoesNotFitIsPutBack) {
    EXPECT_EQ(Convert("\U0001F600", 1), (ToUnits{0, 0, false, 4, {}}));
    EXPECT_EQ(Convert("ab\U0001F600z", 3), (ToUnits{2, 2, false, 5, {'a', 'b'}}));
    EXPECT_EQ(Convert("ab\U0001F600z", 4), (ToUnits{4, 6, false, 1, {'a', 'b', 0xD83D, 0xDE00}}));
}

TEST(ConvertUTF8ToUTF16, NoRoomTakesNothing) {
    EXPECT_EQ(Convert("abc", 0), (ToUnits{0, 0, false, 3, {}}));
}

TEST(ConvertUTF16ToUTF8, RefusesANullSourceAndANegativeLength) {
    const unsigned short units[] = {'a'};
    const unsigned short* source = nullptr;
    int length = 1;
    char target[4];
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, length, target, 4), -1);
    source = units;
    length = -1;
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, length, target, 4), -1);
    EXPECT_EQ(source, units);
    EXPECT_EQ(length, -1);
}

TEST(ConvertUTF16ToUTF8, AnEmptySourceBecomesNull) {
    const unsigned short units[] = {'a'};
    const unsigned short* source = units;
    int length = 0;
    char target[] = {UntouchedByte};
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, length, target, 4), 0);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(target[0], UntouchedByte);
}

TEST(ConvertUTF16ToUTF8, MeasuringConsumesAndWritesNothing) {
    const Units units{'A', 0xE4, 0x20AC, 0xD83D, 0xDE00, 0xD800};
    const unsigned short* source = units.data();
    int length = static_cast<int>(units.size());
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, length, nullptr, 0), 1 + 2 + 3 + 4 + 3);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(ConvertUTF16ToUTF8, WithinTheLastFourBytesOneMoreCodePointIsTried) {
    // After "a" one byte is written, of four: the limit is passed, "b" still goes out, and that is the end.
    EXPECT_EQ(Convert(Units{'a', 'b', 'c'}, 4), (ToBytes{2, false, 1, "ab"}));
    EXPECT_EQ(Convert(Units{'a', 'b', 'c'}, 5), (ToBytes{3, true, 0, "abc"}));
    EXPECT_EQ(Convert(Units{'a', 0x20AC, 'c'}, 4), (ToBytes{4, false, 1, "a\u20ac"}));
}

TEST(ConvertUTF16ToUTF8, ACodePointThatDoesNotFitIsPutBack) {
    EXPECT_EQ(Convert(Units{'a', 0xD83D, 0xDE00}, 4), (ToBytes{1, false, 2, "a"}));
    EXPECT_EQ(Convert(Units{0x20AC, 0xE4, 'x'}, 4), (ToBytes{3, false, 2, "\u20ac"}));
    EXPECT_EQ(Convert(Units{0xD83D, 0xDE00, 'x'}, 4), (ToBytes{4, false, 1, "\U0001F600"}));
}

TEST(ConvertUTF16ToUTF8, ARoomBelowFourPutsNoLimit) {
    const Units units(100, 0x20AC);
    for (unsigned int room = 0; room < 4; ++room) {
        const ToBytes converted = Convert(units, room);
        EXPECT_EQ(converted.result, 300);
        EXPECT_TRUE(converted.isDone);
        EXPECT_EQ(Convert(Units{'a', 0x20AC, 0xD83D, 0xDE00}, room), (ToBytes{8, true, 0, "a\u20ac\U0001F600"}));
    }
    EXPECT_EQ(Convert(units, 4).result, 3);
}

TEST(ConvertUTF16ToUTF8, AHighSurrogateAtTheEndTakesThreeBytes) {
    EXPECT_EQ(Convert(Units{'a', 0xD800}, 16), (ToBytes{4, true, 0, "a\xED\xA0\x80"}));
    EXPECT_EQ(Convert(Units{0xD800, 'A'}, 16), (ToBytes{3, true, 0, "\xE2\x91\x81"}));
}

TEST(ConvertUTF8ToUCS2, NarrowsItsArguments) {
    constexpr unsigned long Beyond = 1UL << 32;
    const char* source = "abc";
    unsigned long length = Beyond + 3;
    unsigned short target[4] = {};
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2(source, length, target, Beyond + 2), 2);
    EXPECT_EQ(length, 1U);
    EXPECT_EQ(*source, 'c');
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2(source, length, target, 4), 1);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(length, 0U);
}

TEST(ConvertUTF8ToUCS2, ALengthThatNarrowsToANegativeOneIsRefused) {
    const char* const text = "abc";
    const char* source = text;
    unsigned long length = 0x80000000UL;
    unsigned short target[4];
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2(source, length, target, 4), -1);
    EXPECT_EQ(source, text);
    EXPECT_EQ(length, 0x80000000UL);
}

TEST(ConvertUCS2ToUTF8, NarrowsItsArguments) {
    constexpr unsigned long Beyond = 1UL << 32;
    const unsigned short units[] = {'a', 'b', 'c'};
    const unsigned short* source = units;
    unsigned long length = Beyond + 3;
    char target[8] = {};
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUCS2ToUTF8(source, length, target, Beyond + 4), 2);
    EXPECT_EQ(length, 1U);
    EXPECT_EQ(source, units + 2);
    length = 0x80000000UL;
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUCS2ToUTF8(source, length, target, 4), -1);
    EXPECT_EQ(length, 0x80000000UL);
}

/// Texts of all kinds, some damaged, against the plain definition, at every level.
class ResumableLevels : public testing::TestWithParam<KernelLevel> {
protected:
    void SetUp() override {
        if (!UseKernelLevel(GetParam())) {
            GTEST_SKIP() << "the processor lacks this level";
        }
    }
    void TearDown() override { UseKernelLevel(BestKernelLevel()); }

    unsigned int Below(unsigned int bound) { return static_cast<unsigned int>(_random()) % bound; }

    std::string RandomText() {
        static constexpr unsigned int Firsts[] = {0, 0x80, 0x800, 0x10000};
        static constexpr unsigned int Counts[] = {0x80, 0x780, 0xD000, 0x100000};
        const unsigned int kind = Below(5);
        std::string text;
        for (unsigned int i = Below(220); i > 0; --i) {
            const unsigned int form = kind < 4 ? kind : Below(4);
            text += PlainUnicode::Encode(Firsts[form] + Below(Counts[form]));
        }
        for (unsigned int i = Below(3); i > 0 && !text.empty(); --i) {
            text[Below(static_cast<unsigned int>(text.size()))] = static_cast<char>(Below(256));
        }
        return text;
    }

private:
    std::minstd_rand _random{20240229};
};

TEST_P(ResumableLevels, UTF8ToUTF16IsAsDefinedInAnyRoom) {
    for (int round = 0; round < 6000; ++round) {
        const std::string text = RandomText();
        const unsigned int room = Below(2) == 0 ? static_cast<unsigned int>(text.size()) : Below(300);
        for (const bool measure : {false, true}) {
            Units expected(text.size() + 2, Untouched);
            const auto plain = PlainUnicode::ResumeUTF8(text.data(), static_cast<int>(text.size()),
                                                        measure ? nullptr : expected.data(), room);
            Units target(text.size() + 2, Untouched);
            const char* source = text.data();
            int length = static_cast<int>(text.size());
            const int result =
                VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, measure ? nullptr : target.data(), room);
            ASSERT_EQ((PlainUnicode::Resumed<char>{source, length, result}), plain) << "room " << room;
            ASSERT_EQ(target, expected) << "room " << room;
        }
    }
}

TEST_P(ResumableLevels, UTF16ToUTF8IsAsDefinedInAnyRoom) {
    for (int round = 0; round < 6000; ++round) {
        Units units = PlainUnicode::ToUnits(RandomText());
        if (Below(4) == 0 && !units.empty()) {
            units[Below(static_cast<unsigned int>(units.size()))] = static_cast<unsigned short>(0xD800 + Below(0x800));
        }
        const unsigned int room = Below(2) == 0 ? static_cast<unsigned int>(3 * units.size()) : Below(600);
        for (const bool measure : {false, true}) {
            std::string expected(3 * units.size() + 4, UntouchedByte);
            const auto plain = PlainUnicode::ResumeUTF16(units.data(), static_cast<int>(units.size()),
                                                         measure ? nullptr : expected.data(), room);
            std::string target(3 * units.size() + 4, UntouchedByte);
            const unsigned short* source = units.data();
            int length = static_cast<int>(units.size());
            const int result =
                VELSysUCAlgorithm::ConvertUTF16ToUTF8(source, length, measure ? nullptr : target.data(), room);
            if (units.data() != nullptr) {
                ASSERT_EQ((PlainUnicode::Resumed<unsigned short>{source, length, result}), plain) << "room " << room;
                ASSERT_EQ(target, expected) << "room " << room;
            }
        }
    }
}

TEST_P(ResumableLevels, PiecesMakeUpTheWhole) {
    for (int round = 0; round < 500; ++round) {
        const std::string text = RandomText() + RandomText() + "abc";
        const unsigned int room = 2 + Below(120);
        Units whole(text.size());
        const char* all = text.data();
        int allLength = static_cast<int>(text.size());
        whole.resize(
            static_cast<std::size_t>(VELSysUCAlgorithm::ConvertUTF8ToUTF16(all, allLength, whole.data(), 0x7FFFFFFF)));
        Units pieces;
        const char* source = text.data();
        int length = static_cast<int>(text.size());
        while (source != nullptr) {
            Units piece(room);
            piece.resize(
                static_cast<std::size_t>(VELSysUCAlgorithm::ConvertUTF8ToUTF16(source, length, piece.data(), room)));
            ASSERT_FALSE(piece.empty());
            pieces.insert(pieces.end(), piece.begin(), piece.end());
        }
        ASSERT_EQ(pieces, whole);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, ResumableLevels,
                         testing::Values(KernelLevel::SSE2, KernelLevel::SSE41, KernelLevel::AVX2),
                         [](const auto& level) {
                             return level.param == KernelLevel::SSE2    ? "SSE2"
                                    : level.param == KernelLevel::SSE41 ? "SSE41"
                                                                        : "AVX2";
                         });

} // namespace
