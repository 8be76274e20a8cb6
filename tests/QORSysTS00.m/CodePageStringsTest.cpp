/// @file
/// Strings and characters in environments whose characters have several bytes while the longest is said to be 1, as it
/// is without a language table.

#include "CodePageOracle.h"
#include "GuardedMemory.h"
#include "LanguageCalls.h"
#include "QORUnicodeChar.h"
#include "QORUnicodeString.h"
#include "VELStringIteration.h"
#include "VELSysCodePage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace LanguageCalls;
using VEL::internal::_GetNextMbcs;

namespace {

/// A text, character by character.
struct Letter {
    std::string bytes;
    unsigned int code;
};

struct Environment {
    const char* codePage;
    std::vector<Letter> letters;

    std::string Bytes() const {
        std::string bytes;
        for (const Letter& letter : letters) {
            bytes += letter.bytes;
        }
        return bytes;
    }
    std::u16string Units() const {
        std::u16string units;
        for (const Letter& letter : letters) {
            if (letter.code > 0xFFFF) {
                units += static_cast<char16_t>(0xD7C0 + (letter.code >> 10));
                units += static_cast<char16_t>(0xDC00 | (letter.code & 0x3FF));
            } else {
                units += static_cast<char16_t>(letter.code);
            }
        }
        return units;
    }
};

class CodePageStrings : public testing::TestWithParam<Environment> {
protected:
    void SetUp() override {
        s_maxCharSize = 1;
        Change(GetParam().codePage);
        ASSERT_EQ(VELSysCodePage::GetEnvConverter().GetMaxCharSize(), 1);
    }
    const std::string bytes = GetParam().Bytes();
    const std::u16string units = GetParam().Units();
};

} // namespace

TEST_P(CodePageStrings, HaveTheirTextBothWays) {
    const QORUnicodeString narrow(bytes.c_str());
    EXPECT_EQ(narrow.GetLengthInChar(), static_cast<int>(units.size()));
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(narrow.ConvertToUCChar())), units);
    QORUnicodeString wide;
    wide.BuildFromUCChar(reinterpret_cast<const unsigned short*>(units.c_str()));
    EXPECT_EQ(std::string(wide.ConvertToChar()), bytes);
    EXPECT_EQ(wide.GetLengthInByte(), static_cast<int>(bytes.size()));
    EXPECT_TRUE(wide == narrow);
}

TEST_P(CodePageStrings, AreWalkedCharacterByCharacter) {
    const char* next = bytes.c_str();
    for (const Letter& letter : GetParam().letters) {
        unsigned int code = 0;
        ASSERT_EQ(_GetNextMbcs(code, next), static_cast<int>(letter.bytes.size()));
        EXPECT_EQ(code, letter.code);
        char utf8[8];
        EXPECT_EQ(_GetNextMbcs(utf8, next), static_cast<int>(letter.bytes.size()));
        unsigned short pair[3];
        EXPECT_EQ(_GetNextMbcs(pair, next), static_cast<int>(letter.bytes.size()));
        next += letter.bytes.size();
    }
    EXPECT_EQ(*next, '\0');
}

TEST_P(CodePageStrings, AreReadUpToTheirTerminatorOnly) {
    const GuardedMemory memory(64);
    for (const Letter& letter : GetParam().letters) {
        const char* const text = memory.CopyAtEnd(letter.bytes.c_str(), letter.bytes.size() + 1);
        unsigned int code = 0;
        EXPECT_EQ(_GetNextMbcs(code, text), static_cast<int>(letter.bytes.size()));
        EXPECT_EQ(code, letter.code);
        QORUnicodeChar c;
        EXPECT_EQ(c.BuildFromChar(text, static_cast<unsigned long>(-1)), 0);
        EXPECT_EQ(c.ConvertToUC2Bytes(), static_cast<unsigned short>(letter.code));
        EXPECT_EQ(c.ConvertToChar(), letter.bytes);
    }
}

TEST_P(CodePageStrings, GiveTheirFirstCharacterAndNotMore) {
    for (const Letter& letter : GetParam().letters) {
        QORUnicodeChar c;
        c = (letter.bytes + bytes).c_str();
        EXPECT_EQ(c.ConvertToUC2Bytes(), static_cast<unsigned short>(letter.code));
        EXPECT_EQ(c.ConvertToChar(), letter.bytes);
        QORUnicodeChar back;
        back.BuildFromUCChar32(letter.code);
        EXPECT_EQ(back.ConvertToChar(), letter.bytes);
    }
}

TEST_P(CodePageStrings, KeepADamagedEnd) {
    const std::string cut = bytes + GetParam().letters.back().bytes.substr(0, 1);
    testing::internal::CaptureStderr();
    const QORUnicodeString narrow(cut.c_str());
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(narrow.ConvertToUCChar())), units + u"?");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "iconv EINVAL error: input buffer was truncated.\n");
}

INSTANTIATE_TEST_SUITE_P(
    Environments, CodePageStrings,
    testing::Values(
        Environment{"EUC-JP", {{"a", 'a'}, {"\xA4\xA2", 0x3042}, {"\x8E\xB1", 0xFF71}, {"\x8F\xB0\xA1", 0x4E02}}},
        Environment{"SHIFT_JIS", {{"a", 'a'}, {"\x82\xA0", 0x3042}, {"\xB1", 0xFF71}, {"\x83\x41", 0x30A2}}},
        Environment{"GB18030",
                    {{"a", 'a'}, {"\xB0\xA1", 0x554A}, {"\x81\x30\x84\x36", 0xA5}, {"\x94\x39\xFC\x36", 0x1F600}}},
        Environment{"BIG5", {{"z", 'z'}, {"\xA4\x40", 0x4E00}}}),
    [](const testing::TestParamInfo<Environment>& environment) {
        return CodePageOracle::TestNameOf(environment.param.codePage);
    });

// One byte gives up to four units: a view has room for one each, and its terminator.
TEST(CodePageOfSeveralUnitsAByte, FillsAViewAndNotMore) {
    Change("TSCII");
    testing::internal::CaptureStderr();
    for (std::size_t length = 1; length < 40; ++length) {
        const QORUnicodeString text(std::string(length, '\x82').c_str());
        EXPECT_EQ(text.GetLengthInChar(), static_cast<int>(length));
        EXPECT_EQ(text.ConvertToUCChar()[length], 0);
    }
    testing::internal::GetCapturedStderr();
}

TEST(LongestCharacter, IsWhatTheCodePageCanProduce) {
    EXPECT_EQ(VELSysCodePage("UTF-8", 1, nullptr).GetLongestCharacter(), 4);
    EXPECT_EQ(VELSysCodePage("N/A", 7, nullptr).GetLongestCharacter(), 1);
    EXPECT_EQ(VELSysCodePage("EUC-JP", 1, nullptr).GetLongestCharacter(), 16);
}
