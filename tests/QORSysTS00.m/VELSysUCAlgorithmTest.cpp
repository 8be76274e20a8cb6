#include "VELSysUCAlgorithm.h"

#include "GuardedMemory.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

using Units = std::vector<unsigned short>;
using CodePoints = std::vector<unsigned int>;
using unchecked = VELSysUCAlgorithm::unchecked;

Units Utf8To16(const std::string& text) {
    Units units(text.size());
    units.resize(static_cast<std::size_t>(unchecked::utf8to16(text.data(), text.data() + text.size(), units.data()) -
                                          units.data()));
    return units;
}

CodePoints Utf8To32(const std::string& text) {
    CodePoints values(text.size());
    values.resize(static_cast<std::size_t>(unchecked::utf8to32(text.data(), text.data() + text.size(), values.data()) -
                                           values.data()));
    return values;
}

std::string Utf16To8(const Units& units) {
    std::string text(3 * units.size() + 1, '\0');
    text.resize(static_cast<std::size_t>(unchecked::utf16to8(units.data(), units.data() + units.size(), text.data()) -
                                         text.data()));
    return text;
}

CodePoints Utf16To32(const Units& units) {
    CodePoints values(units.size());
    values.resize(static_cast<std::size_t>(
        unchecked::utf16to32(units.data(), units.data() + units.size(), values.data()) - values.data()));
    return values;
}

Units Utf32To16(const CodePoints& values) {
    Units units(2 * values.size());
    units.resize(static_cast<std::size_t>(
        unchecked::utf32to16(values.data(), values.data() + values.size(), units.data()) - units.data()));
    return units;
}

std::string Utf32To8(const CodePoints& values) {
    std::string text(4 * values.size() + 1, '\0');
    text.resize(static_cast<std::size_t>(
        unchecked::utf32to8(values.data(), values.data() + values.size(), text.data()) - text.data()));
    return text;
}

int IsUTF8(const std::string& text) {
    const char* p = text.data();
    return VELSysUCAlgorithm::IsUTF8(p, text.size());
}

int CharUTF8Len(const std::string& text) {
    return VELSysUCAlgorithm::CharUTF8Len(text.data(), text.size());
}

TEST(Unchecked, AnEmptyRangeGivesTheTargetBack) {
    const char* none = nullptr;
    const unsigned short* noUnits = nullptr;
    const unsigned int* noValues = nullptr;
    unsigned short units[1];
    unsigned int values[1];
    char bytes[1];
    EXPECT_EQ(unchecked::utf8to16(none, none, units), units);
    EXPECT_EQ(unchecked::utf8to32(none, none, values), values);
    EXPECT_EQ(unchecked::utf16to8(noUnits, noUnits, bytes), bytes);
    EXPECT_EQ(unchecked::utf16to32(noUnits, noUnits, values), values);
    EXPECT_EQ(unchecked::utf32to16(noValues, noValues, units), units);
    EXPECT_EQ(unchecked::utf32to8(noValues, noValues, bytes), bytes);
}

TEST(Unchecked, ALoneLeadByteVanishes) {
    EXPECT_EQ(Utf8To16("\xC3"), Units{});
    EXPECT_EQ(Utf8To32("\xC3"), CodePoints{});
}

TEST(Unchecked, DamagedLastByteVanishes) {
    EXPECT_EQ(Utf8To16("abcd\xC3"), (Units{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(Utf8To16("abcd\x80"), (Units{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(Utf8To16("abcd\xFF"), (Units{'a', 'b', 'c', 'd'}));
}

TEST(Unchecked, DamageWithinTheLastThreeBytesVanishesByteForByte) {
    EXPECT_EQ(Utf8To16("abcd\xF0\x9F\x98"), (Units{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(Utf8To16("abcd\xE2zz"), (Units{'a', 'b', 'c', 'd', 'z', 'z'}));
    EXPECT_EQ(Utf8To16("abcd\xE2\x82z"), (Units{'a', 'b', 'c', 'd', 'z'}));
}

TEST(Unchecked, AStrayByteFourBeforeTheEndStandsForItself) {
    EXPECT_EQ(Utf8To16("\x80"
                       "abcd"),
              (Units{0x80, 'a', 'b', 'c', 'd'}));
    EXPECT_EQ(Utf8To16("\x80"
                       "abc"),
              (Units{0x80, 'a', 'b', 'c'}));
    EXPECT_EQ(Utf8To16("\xFF"
                       "abcd"),
              (Units{0xFF, 'a', 'b', 'c', 'd'}));
    EXPECT_EQ(Utf8To32("\xF8"
                       "abcd"),
              (CodePoints{0xF8, 'a', 'b', 'c', 'd'}));
}

TEST(Unchecked, AStrayByteThreeBeforeTheEndVanishes) {
    EXPECT_EQ(Utf8To16("\x80"
                       "ab"),
              (Units{'a', 'b'}));
    EXPECT_EQ(Utf8To16("x\x80"
                       "ab"),
              (Units{'x', 'a', 'b'}));
}

TEST(Unchecked, ALeadByteTakesWhateverFollows) {
    EXPECT_EQ(Utf8To16("\xC3"
                       "Axyz"),
              (Units{0xC1, 'x', 'y', 'z'}));
    EXPECT_EQ(Utf8To16("\xE2"
                       "ABxyz"),
              (Units{0x2042, 'x', 'y', 'z'}));
    EXPECT_EQ(Utf8To32("\xF1"
                       "ABCxyz"),
              (CodePoints{0x41083, 'x', 'y', 'z'}));
}

TEST(Unchecked, OverlongFormsAndSurrogatesPass) {
    EXPECT_EQ(Utf8To16("\xC0\x80"), Units{0});
    EXPECT_EQ(Utf8To16("\xE0\x80\x80"), Units{0});
    EXPECT_EQ(Utf8To16("\xF0\x80\x80\x80"), Units{0});
    EXPECT_EQ(Utf8To16("\xED\xA0\x80\xED\xB0\x80"), (Units{0xD800, 0xDC00}));
    EXPECT_EQ(Utf8To32("\xED\xA0\x80\xED\xB0\x80"), (CodePoints{0xD800, 0xDC00}));
}

TEST(Unchecked, ValuesBeyondUnicodeAreCutToUnits) {
    EXPECT_EQ(Utf8To16("\xF4\x90\x80\x80"), (Units{0xDC00, 0xDC00}));
    EXPECT_EQ(Utf8To16("\xF7\xBF\xBF\xBF"), (Units{0xDFBF, 0xDFFF}));
    EXPECT_EQ(Utf8To32("\xF7\xBF\xBF\xBF"), CodePoints{0x1FFFFF});
    EXPECT_EQ(Utf32To16({0xFFFFFFFF}), (Units{0xD7BF, 0xDFFF}));
    EXPECT_EQ(Utf32To8({0xFFFFFFFF}), "\xFF\xBF\xBF\xBF");
}

TEST(Unchecked, TextSurvives) {
    const std::string text = "A\u00e4\u20ac\U0001F600z";
    const CodePoints values{'A', 0xE4, 0x20AC, 0x1F600, 'z'};
    const Units units{'A', 0xE4, 0x20AC, 0xD83D, 0xDE00, 'z'};
    EXPECT_EQ(Utf8To16(text), units);
    EXPECT_EQ(Utf8To32(text), values);
    EXPECT_EQ(Utf16To8(units), text);
    EXPECT_EQ(Utf16To32(units), values);
    EXPECT_EQ(Utf32To16(values), units);
    EXPECT_EQ(Utf32To8(values), text);
}

TEST(Unchecked, ALoneHighSurrogateTakesThreeBytes) {
    EXPECT_EQ(Utf16To8({0xD800}), "\xED\xA0\x80");
    EXPECT_EQ(Utf16To32({0xD800}), CodePoints{0xD800});
    EXPECT_EQ(Utf16To8({'a', 0xDBFF}), "a\xED\xAF\xBF");
}

TEST(Unchecked, ALowSurrogateTakesThreeBytesAnywhere) {
    EXPECT_EQ(Utf16To8({0xDC00, 'a', 0xDFFF}), "\xED\xB0\x80"
                                               "a\xED\xBF\xBF");
    EXPECT_EQ(Utf16To32({0xDC00, 'a'}), (CodePoints{0xDC00, 'a'}));
}

TEST(Unchecked, AHighSurrogateIsJoinedWithWhateverFollows) {
    EXPECT_EQ(Utf16To8({0xD800, 0x41}), "\xE2\x91\x81");
    EXPECT_EQ(Utf16To32({0xD800, 0x41}), CodePoints{0x2441});
    EXPECT_EQ(Utf16To8({0xD800, 0xD800, 0xDC00}), "\xEF\xB0\x80\xED\xB0\x80");
    EXPECT_EQ(Utf16To32({0xDBFF, 0xFFFF}), CodePoints{0x111FFF});
}

TEST(Unchecked, NothingIsTerminated) {
    char bytes[] = {1, 1, 1};
    const unsigned short units[] = {'a', 'b'};
    unchecked::utf16to8(units, units + 2, bytes);
    EXPECT_EQ(bytes[2], 1);
}

TEST(IsUTF8, AnEmptyRangeIsWellFormed) {
    EXPECT_EQ(IsUTF8(""), 0);
    const char* none = nullptr;
    EXPECT_EQ(VELSysUCAlgorithm::IsUTF8(none, 0), 0);
}

TEST(IsUTF8, RefusesANullText) {
    const char* none = nullptr;
    EXPECT_EQ(VELSysUCAlgorithm::IsUTF8(none, 1), -1);
}

TEST(IsUTF8, DoesNotMoveThePointer) {
    const char* const text = "abc\xC3";
    const char* p = text;
    EXPECT_EQ(VELSysUCAlgorithm::IsUTF8(p, 3), 0);
    EXPECT_EQ(p, text);
    EXPECT_EQ(VELSysUCAlgorithm::IsUTF8(p, 4), -1);
    EXPECT_EQ(p, text);
}

TEST(IsUTF8, JudgesForms) {
    EXPECT_EQ(IsUTF8("A\u00e4\u20ac\U0001F600z"), 0);
    EXPECT_EQ(IsUTF8("\xC0\x80"), -1);
    EXPECT_EQ(IsUTF8("\xED\xA0\x80"), -1);
    EXPECT_EQ(IsUTF8("\xF4\x90\x80\x80"), -1);
    EXPECT_EQ(IsUTF8("\xF4\x8F\xBF\xBF"), 0);
    EXPECT_EQ(IsUTF8("\x80"), -1);
    EXPECT_EQ(IsUTF8("\xE2\x82"), -1);
    EXPECT_EQ(IsUTF8(std::string(3, '\0')), 0);
}

TEST(CharUTF8Len, GivesTheLengthOfTheFirstCharacter) {
    EXPECT_EQ(CharUTF8Len("abc"), 1);
    EXPECT_EQ(CharUTF8Len("\u00e9"), 2);
    EXPECT_EQ(CharUTF8Len("\u20ac!"), 3);
    EXPECT_EQ(CharUTF8Len("\U0001F600"), 4);
}

TEST(CharUTF8Len, ATextThatStartsWithItsTerminatorHasNone) {
    EXPECT_EQ(VELSysUCAlgorithm::CharUTF8Len("", 0), 0);
    EXPECT_EQ(VELSysUCAlgorithm::CharUTF8Len("", 5), 0);
}

TEST(CharUTF8Len, RefusesNullAndIllFormed) {
    EXPECT_EQ(VELSysUCAlgorithm::CharUTF8Len(nullptr, 3), -1);
    EXPECT_EQ(CharUTF8Len("\x80"), -1);
    EXPECT_EQ(CharUTF8Len("\xC3"), -1);
    EXPECT_EQ(CharUTF8Len("\xC0\x80"), -1);
    EXPECT_EQ(CharUTF8Len("\xED\xA0\x80"), -1);
    EXPECT_EQ(VELSysUCAlgorithm::CharUTF8Len("\u00e9", 1), -1);
}

TEST(CharUTF8Len, NoBytesOfAnUnterminatedTextAreIllFormed) {
    EXPECT_EQ(VELSysUCAlgorithm::CharUTF8Len("a", 0), -1);
}

struct LegacyResult {
    int result;
    Units units;

    bool operator==(const LegacyResult&) const = default;
};

/// `behind` is the byte behind the range.
LegacyResult Legacy(const std::string& text, char behind = 0) {
    constexpr unsigned short Untouched = 0xABCD;
    const std::string source = text + behind;
    Units units(text.size() + 1, Untouched);
    int written = -7;
    const int result = VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(source.data(), text.size(), units.data(), &written);
    for (std::size_t i = static_cast<std::size_t>(written); i < units.size(); ++i) {
        EXPECT_EQ(units[i], Untouched);
    }
    units.resize(static_cast<std::size_t>(written));
    return {result, units};
}

TEST(Legacy, ANullTargetIsRefusedAndTheCountLeftAlone) {
    int written = -7;
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy("abc", 3, nullptr, &written), -1);
    EXPECT_EQ(written, -7);
}

TEST(Legacy, ANullSourceIsRefused) {
    unsigned short units[1];
    int written = -7;
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(nullptr, 1, units, &written), -1);
    EXPECT_EQ(written, -7);
}

TEST(Legacy, ANullCountIsLeftOut) {
    unsigned short units[3];
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy("abc", 3, units, nullptr), 0);
    EXPECT_EQ(units[2], 'c');
}

TEST(Legacy, AnEmptyRangeGivesNothing) {
    EXPECT_EQ(Legacy(""), (LegacyResult{0, {}}));
}

TEST(Legacy, ConvertsTheBasicPlane) {
    EXPECT_EQ(Legacy("A\u00e4\u20acz"), (LegacyResult{0, {'A', 0xE4, 0x20AC, 'z'}}));
    EXPECT_EQ(Legacy("\xEF\xBF\xBF"), (LegacyResult{0, {0xFFFF}}));
}

TEST(Legacy, BeyondTheBasicPlaneStandsAQuestionMark) {
    EXPECT_EQ(Legacy("\xF0\x9F\x98\x80"), (LegacyResult{0, {'?'}}));
    EXPECT_EQ(Legacy("\xF0\x90\x80\x80x"), (LegacyResult{0, {'?', 'x'}}));
    EXPECT_EQ(Legacy("\xF0\x8F\xBF\xBF"), (LegacyResult{0, {0xFFFF}}));
}

TEST(Legacy, FiveAndSixByteFormsAreOneCharacter) {
    EXPECT_EQ(Legacy("\xF8\x88\x80\x80\x80z"), (LegacyResult{0, {'?', 'z'}}));
    EXPECT_EQ(Legacy("\xF8\x80\x80\x81\x81z"), (LegacyResult{0, {0x41, 'z'}}));
    EXPECT_EQ(Legacy("\xFC\x80\x80\x80\x81\x81z"), (LegacyResult{0, {0x41, 'z'}}));
    EXPECT_EQ(Legacy("\xFD\xBF\xBF\xBF\xBF\xBFz"), (LegacyResult{0, {'?', 'z'}}));
    // FE and FF count as leads of six bytes too; their sums run over.
    EXPECT_EQ(Legacy("\xFF\x80\x80\x80\x80\x80z"), (LegacyResult{0, {'?', 'z'}}));
}

TEST(Legacy, AStrayContinuationByteStandsForItself) {
    EXPECT_EQ(Legacy("\x80\xBFz"), (LegacyResult{0, {0x80, 0xBF, 'z'}}));
}

TEST(Legacy, ContinuationBytesAreSummedUnseen) {
    // 0xC3 << 6, plus 0x41, less 0x3080.
    EXPECT_EQ(Legacy("\xC3"
                     "A"),
              (LegacyResult{0, {0x81}}));
    // Below zero the sum wraps around, and lies beyond the basic plane.
    EXPECT_EQ(Legacy(std::string("\xC0\0", 2)), (LegacyResult{0, {'?'}}));
}

TEST(Legacy, ACharacterThatLacksItsLastByteTakesTheOneBehindTheRange) {
    EXPECT_EQ(Legacy("a\xC3", '\xA4'), (LegacyResult{0, {'a', 0xE4}}));
    EXPECT_EQ(Legacy("\xE2\x82", '\xAC'), (LegacyResult{0, {0x20AC}}));
    EXPECT_EQ(Legacy("\xC4"), (LegacyResult{0, {0x80}}));
}

TEST(Legacy, ACharacterThatLacksMoreStopsTheConversion) {
    EXPECT_EQ(Legacy("ab\xE2"), (LegacyResult{-2, {'a', 'b'}}));
    EXPECT_EQ(Legacy("\xF0\x9F"), (LegacyResult{-2, {}}));
    EXPECT_EQ(Legacy("ab\xFC\x80\x80\x80"), (LegacyResult{-2, {'a', 'b'}}));
}

TEST(Legacy, ReadsOneByteBehindTheRangeAtMost) {
    const GuardedMemory memory(64);
    unsigned short units[4];
    int written = 0;
    const char* text = memory.CopyAtEnd("\xE2\x82\xAC", 3);
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(text, 2, units, &written), 0);
    EXPECT_EQ(units[0], 0x20AC);
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(text, 1, units, &written), -2);
    const char* ascii = memory.CopyAtEnd("abc", 3);
    EXPECT_EQ(VELSysUCAlgorithm::ConvertUTF8ToUCS2Legacy(ascii, 3, units, &written), 0);
}

} // namespace
