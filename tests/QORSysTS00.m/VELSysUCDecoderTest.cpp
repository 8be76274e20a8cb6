#include "VELSysUCDecoder.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace VEL::UCS::internal;

namespace {

std::string Encoded(unsigned int codePoint) {
    char bytes[4];
    return {bytes, _EncodeUTF8(codePoint, bytes)};
}

std::vector<unsigned short> Units(unsigned int codePoint) {
    unsigned short units[2];
    return {units, WriteUTF16(codePoint, units)};
}

struct EncodeRow {
    unsigned int codePoint;
    std::string bytes;
};

class EncodeUTF8 : public testing::TestWithParam<EncodeRow> {};

TEST_P(EncodeUTF8, WritesTheForm) {
    EXPECT_EQ(Encoded(GetParam().codePoint), GetParam().bytes);
    EXPECT_EQ(static_cast<std::size_t>(UTF8Length(GetParam().codePoint)), GetParam().bytes.size());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, EncodeUTF8,
    testing::Values(EncodeRow{0, std::string(1, '\0')}, EncodeRow{0x41, "A"}, EncodeRow{0x7F, "\x7F"},
                    EncodeRow{0x80, "\xC2\x80"}, EncodeRow{0x7FF, "\xDF\xBF"}, EncodeRow{0x800, "\xE0\xA0\x80"},
                    EncodeRow{0xD7FF, "\xED\x9F\xBF"}, EncodeRow{0xD800, "\xED\xA0\x80"},
                    EncodeRow{0xDFFF, "\xED\xBF\xBF"}, EncodeRow{0xFFFF, "\xEF\xBF\xBF"},
                    EncodeRow{0x10000, "\xF0\x90\x80\x80"}, EncodeRow{0x1F600, "\xF0\x9F\x98\x80"},
                    EncodeRow{0x10FFFF, "\xF4\x8F\xBF\xBF"}, EncodeRow{0x110000, "\xF4\x90\x80\x80"},
                    EncodeRow{0x1FFFFF, "\xF7\xBF\xBF\xBF"}, EncodeRow{0x200000, "\xF8\x80\x80\x80"},
                    EncodeRow{0xFFFFFFFF, "\xFF\xBF\xBF\xBF"}));

struct FastRow {
    const char* bytes;
    unsigned int codePoint;
    int length;
};

class DecodeUTF8Fast : public testing::TestWithParam<FastRow> {};

TEST_P(DecodeUTF8Fast, GoesByTheFirstByte) {
    const char* p = GetParam().bytes;
    EXPECT_EQ(_DecodeUTF8Fast(p), GetParam().codePoint);
    EXPECT_EQ(p - GetParam().bytes, GetParam().length);
}

INSTANTIATE_TEST_SUITE_P(Rows, DecodeUTF8Fast,
                         testing::Values(FastRow{"\x7Fzzz", 0x7F, 1}, FastRow{"\xC2\x80zz", 0x80, 2},
                                         FastRow{"\xDF\xBFzz", 0x7FF, 2}, FastRow{"\xE2\x82\xACz", 0x20AC, 3},
                                         FastRow{"\xF0\x9F\x98\x80", 0x1F600, 4},
                                         // Continuation bytes lose their upper two bits unseen.
                                         FastRow{"\xC3\x41zz", 0xC1, 2}, FastRow{"\xE0\x41\xFFz", 0x7F, 3},
                                         FastRow{"\xF7\xFF\x7F\x3F", 0x1FFFFF, 4}, FastRow{"\xC0\x80zz", 0, 2},
                                         FastRow{"\xED\xA0\x80z", 0xD800, 3}, FastRow{"\xF0\x80\x80\x80", 0, 4},
                                         // What cannot lead stands for itself.
                                         FastRow{"\x80zzz", 0x80, 1}, FastRow{"\xBFzzz", 0xBF, 1},
                                         FastRow{"\xF8zzz", 0xF8, 1}, FastRow{"\xFFzzz", 0xFF, 1}));

struct CheckedRow {
    std::string bytes;
    int tail;
    int strict;
    unsigned int codePoint;
};

class DecodeUTF8Checked : public testing::TestWithParam<CheckedRow> {};

TEST_P(DecodeUTF8Checked, TailGivesItsCode) {
    const std::string& bytes = GetParam().bytes;
    const char* p = bytes.data();
    unsigned int codePoint = 0;
    EXPECT_EQ(_DecodeUTF8Tail(p, bytes.data() + bytes.size(), codePoint), GetParam().tail);
    if (GetParam().tail != 0) {
        EXPECT_EQ(p, bytes.data());
        return;
    }
    EXPECT_EQ(codePoint, GetParam().codePoint);
    EXPECT_EQ(p - bytes.data(), UTF8LengthByLead(static_cast<unsigned char>(bytes[0])));
}

TEST_P(DecodeUTF8Checked, StrictGivesItsCode) {
    const std::string& bytes = GetParam().bytes;
    const char* p = bytes.data();
    unsigned int codePoint = 0;
    EXPECT_EQ(_DecodeUTF8Strict(p, bytes.data() + bytes.size(), codePoint), GetParam().strict);
    if (GetParam().strict != 0) {
        EXPECT_EQ(p, bytes.data());
        return;
    }
    EXPECT_EQ(codePoint, GetParam().codePoint);
    EXPECT_EQ(p - bytes.data(), UTF8Length(codePoint));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DecodeUTF8Checked,
    testing::Values(CheckedRow{"", 1, 1, 0}, CheckedRow{"A", 0, 0, 'A'}, CheckedRow{std::string(1, '\0'), 0, 0, 0},
                    // Cut off.
                    CheckedRow{"\xC3", 1, 1, 0}, CheckedRow{"\xE2", 1, 1, 0}, CheckedRow{"\xE2\x82", 1, 1, 0},
                    CheckedRow{"\xF0\x9F\x98", 1, 1, 0},
                    // Invalid first byte.
                    CheckedRow{"\x80zzz", 2, 2, 0}, CheckedRow{"\xBF", 2, 2, 0},
                    CheckedRow{"\xF8\x80\x80\x80", 2, 2, 0}, CheckedRow{"\xFF", 2, 2, 0},
                    // No continuation; the first wrong byte decides, before the end is noticed.
                    CheckedRow{"\xC3z", 3, 3, 0}, CheckedRow{"\xE2z", 3, 3, 0}, CheckedRow{"\xE2\x82z", 3, 3, 0},
                    CheckedRow{"\xF0\x9F\x98\xC0", 3, 3, 0}, CheckedRow{"\xF0\xC0", 3, 3, 0},
                    // Overlong.
                    CheckedRow{"\xC0\x80", 0, 4, 0}, CheckedRow{"\xC1\xBF", 0, 4, 0x7F},
                    CheckedRow{"\xE0\x80\x80", 0, 4, 0}, CheckedRow{"\xE0\x9F\xBF", 0, 4, 0x7FF},
                    CheckedRow{"\xF0\x80\x80\x80", 0, 4, 0}, CheckedRow{"\xF0\x8F\xBF\xBF", 0, 4, 0xFFFF},
                    // No code point; this is told before overlong.
                    CheckedRow{"\xED\xA0\x80", 0, 5, 0xD800}, CheckedRow{"\xED\xBF\xBF", 0, 5, 0xDFFF},
                    CheckedRow{"\xF4\x90\x80\x80", 0, 5, 0x110000}, CheckedRow{"\xF7\xBF\xBF\xBF", 0, 5, 0x1FFFFF},
                    CheckedRow{"\xF0\x8D\xA0\x80", 0, 5, 0xD800},
                    // The bounds of what is well-formed.
                    CheckedRow{"\xC2\x80", 0, 0, 0x80}, CheckedRow{"\xDF\xBF", 0, 0, 0x7FF},
                    CheckedRow{"\xE0\xA0\x80", 0, 0, 0x800}, CheckedRow{"\xED\x9F\xBF", 0, 0, 0xD7FF},
                    CheckedRow{"\xEE\x80\x80", 0, 0, 0xE000}, CheckedRow{"\xEF\xBF\xBF", 0, 0, 0xFFFF},
                    CheckedRow{"\xF0\x90\x80\x80", 0, 0, 0x10000}, CheckedRow{"\xF4\x8F\xBF\xBF", 0, 0, 0x10FFFF}));

struct UnitsRow {
    std::vector<unsigned short> units;
    int strictCode;
    unsigned int strict;
    unsigned int fast;
    int consumedStrictly;
    int consumedFast;
};

class DecodeUTF16 : public testing::TestWithParam<UnitsRow> {};

TEST_P(DecodeUTF16, StrictClassifies) {
    const auto& units = GetParam().units;
    const unsigned short* p = units.data();
    unsigned int codePoint = 1;
    EXPECT_EQ(_DecodeUTF16Strict(p, units.data() + units.size(), codePoint), GetParam().strictCode);
    EXPECT_EQ(codePoint, GetParam().strict);
    EXPECT_EQ(p - units.data(), GetParam().consumedStrictly);
}

TEST_P(DecodeUTF16, FastJoinsWhateverFollows) {
    const auto& units = GetParam().units;
    const unsigned short* p = units.data();
    EXPECT_EQ(_DecodeUTF16Fast(p, units.data() + units.size()), GetParam().fast);
    EXPECT_EQ(p - units.data(), GetParam().consumedFast);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DecodeUTF16,
    testing::Values(
        UnitsRow{{}, 0, 0, 0, 0, 0}, UnitsRow{{0x41}, 1, 0x41, 0x41, 1, 1},
        UnitsRow{{0xD7FF, 0xDC00}, 1, 0xD7FF, 0xD7FF, 1, 1}, UnitsRow{{0xE000, 0xDC00}, 1, 0xE000, 0xE000, 1, 1},
        UnitsRow{{0xDC00, 0xDC00}, 0, 0xDC00, 0xDC00, 1, 1}, UnitsRow{{0xDFFF}, 0, 0xDFFF, 0xDFFF, 1, 1},
        UnitsRow{{0xD800}, 0, 0xD800, 0xD800, 1, 1}, UnitsRow{{0xDBFF}, 0, 0xDBFF, 0xDBFF, 1, 1},
        UnitsRow{{0xD800, 0xDC00}, 1, 0x10000, 0x10000, 2, 2}, UnitsRow{{0xD83D, 0xDE00}, 1, 0x1F600, 0x1F600, 2, 2},
        UnitsRow{{0xDBFF, 0xDFFF}, 1, 0x10FFFF, 0x10FFFF, 2, 2}, UnitsRow{{0xD800, 0x41}, 0, 0x41, 0x2441, 2, 2},
        UnitsRow{{0xD800, 0xD800}, 0, 0xD800, 0xFC00, 2, 2}, UnitsRow{{0xD800, 0xE000}, 0, 0xE000, 0x10400, 2, 2},
        UnitsRow{{0xDBFF, 0xFFFF}, 0, 0xFFFF, 0x111FFF, 2, 2}));

TEST(WriteUTF16, TakesOneUnitUpToTheBasicPlaneSurrogatesIncluded) {
    EXPECT_EQ(Units(0), std::vector<unsigned short>{0});
    EXPECT_EQ(Units(0xD800), std::vector<unsigned short>{0xD800});
    EXPECT_EQ(Units(0xFFFF), std::vector<unsigned short>{0xFFFF});
}

TEST(WriteUTF16, TakesAPairBeyond) {
    EXPECT_EQ(Units(0x10000), (std::vector<unsigned short>{0xD800, 0xDC00}));
    EXPECT_EQ(Units(0x1F600), (std::vector<unsigned short>{0xD83D, 0xDE00}));
    EXPECT_EQ(Units(0x10FFFF), (std::vector<unsigned short>{0xDBFF, 0xDFFF}));
}

TEST(WriteUTF16, CutsWhatLiesBeyondUnicode) {
    EXPECT_EQ(Units(0x110000), (std::vector<unsigned short>{0xDC00, 0xDC00}));
    EXPECT_EQ(Units(0x1FFFFF), (std::vector<unsigned short>{0xDFBF, 0xDFFF}));
    EXPECT_EQ(Units(0xFFFFFFFF), (std::vector<unsigned short>{0xD7BF, 0xDFFF}));
}

TEST(Decoders, EveryCodePointComesBack) {
    for (unsigned int codePoint = 0; codePoint <= CodePointLast; ++codePoint) {
        const bool isSurrogate = codePoint >= HighSurrogateFirst && codePoint <= SurrogateLast;
        char bytes[4];
        const char* end = _EncodeUTF8(codePoint, bytes);
        const char* fast = bytes;
        ASSERT_EQ(_DecodeUTF8Fast(fast), codePoint);
        ASSERT_EQ(fast, end);
        const char* strict = bytes;
        unsigned int decoded = 0;
        ASSERT_EQ(_DecodeUTF8Strict(strict, end, decoded), isSurrogate ? UTF8InvalidCodePoint : UTF8Decoded);
        unsigned short units[2];
        const unsigned short* unitsEnd = WriteUTF16(codePoint, units);
        const unsigned short* unit = units;
        ASSERT_EQ(_DecodeUTF16Strict(unit, unitsEnd, decoded), isSurrogate ? UTF16Unpaired : UTF16Decoded);
        ASSERT_EQ(decoded, codePoint);
        ASSERT_EQ(unit, unitsEnd);
    }
}

} // namespace
