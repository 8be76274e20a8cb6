/// @file
/// The `iconv` way of the code pages, against `iconv` used directly.

#include "CodePageOracle.h"
#include "GuardedMemory.h"
#include "TestLocales.h"
#include "VELSysCodePage.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace {

using CodePageOracle::Converter;
using CodePageOracle::Result;
using CodePageOracle::Units;

constexpr std::size_t MostBytes = 64;

/// A code page, and the locale that knows its characters; null for none.
struct Subject {
    const char* codePage;
    const char* locale = nullptr;
};

std::string NameOf(const testing::TestParamInfo<Subject>& info) {
    const std::string name = CodePageOracle::TestNameOf(info.param.codePage);
    return info.param.locale != nullptr ? name + "InItsLocale" : name;
}

class CodePage : public testing::TestWithParam<Subject> {
protected:
    void SetUp() override {
        if (!CodePageOracle::IsKnown(GetParam().codePage)) {
            ASSERT_TRUE(CodePageOracle::MayBeMissing(GetParam().codePage)) << GetParam().codePage;
            GTEST_SKIP() << "this C library has no " << GetParam().codePage;
        }
        setenv("LOCPATH", QOR_TEST_LOCALES, 1);
        plain = std::make_unique<Converter>(GetParam().codePage, GetParam().locale);
        codePage = std::make_unique<VELSysCodePage>(GetParam().codePage, 1, GetParam().locale);
        testing::internal::CaptureStderr();
    }

    /// Compares all that was said.
    void ExpectMessages() {
        EXPECT_EQ(testing::internal::GetCapturedStderr(), plain->messages);
        testing::internal::CaptureStderr();
    }

    void TearDown() override {
        if (plain != nullptr) {
            EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        }
    }

    /// Converts all of a text from memory that ends with it, into memory that ends with one unit for each byte.
    Units Convert(const std::string& text) {
        const char* const src = _source.CopyAtEnd(text.data(), text.size());
        auto* const dst = _target.AtEnd<unsigned short>(text.size());
        int written = -7;
        const int count = codePage->ConvertMBCSToUTF16(src, static_cast<int>(text.size()), dst, &written);
        EXPECT_EQ(written, count);
        return {dst, dst + count};
    }

    std::string ConvertBack(const Units& text) {
        const auto* const src = _source.CopyAtEnd(text.data(), text.size());
        const std::size_t room = 4 * text.size() + 1;
        auto* const dst = _target.AtEnd<char>(room);
        std::fill_n(dst, room, '#');
        int written = -7;
        const int count = codePage->ConvertUTF16ToMBCS(src, static_cast<int>(text.size()), dst, &written);
        EXPECT_EQ(written, count);
        EXPECT_EQ(dst[count], '\0') << "terminated";
        return {dst, dst + count};
    }

    /// Takes the first character of a text.
    Result Take(const std::string& text, int& answer) {
        const char* const start = _source.CopyAtEnd(text.data(), text.size());
        const char* src = start;
        unsigned long left = text.size();
        unsigned short units[2] = {0xAAAA, 0xAAAA};
        answer = codePage->GetNextMultiByteCharAsUTF16(units, src, left);
        EXPECT_EQ(left, text.size() - static_cast<std::size_t>(src - start));
        return {Units(units, units + answer), static_cast<std::size_t>(src - start)};
    }

    void Compare(const std::string& text) {
        const Result expected = plain->ToUTF16(text, -1);
        ASSERT_EQ(Convert(text), expected.units) << testing::PrintToString(text);
        int expectedAnswer = 0;
        const Result expectedFirst = plain->Next(text, expectedAnswer);
        int answer = 0;
        ASSERT_EQ(Take(text, answer), expectedFirst) << testing::PrintToString(text);
        ASSERT_EQ(answer, expectedAnswer) << testing::PrintToString(text);
    }

    std::unique_ptr<Converter> plain;
    std::unique_ptr<const VELSysCodePage> codePage;

private:
    const GuardedMemory _source{4 * MostBytes};
    const GuardedMemory _target{4 * MostBytes};
};

} // namespace

TEST_P(CodePage, IsValidUnderItsName) {
    EXPECT_TRUE(codePage->IsValid());
    EXPECT_STREQ(codePage->GetName(), GetParam().codePage);
    EXPECT_FALSE(codePage->IsUTF8());
    EXPECT_EQ(codePage->GetMaxCharSize(), 1);
    EXPECT_EQ(VELSysCodePage(GetParam().codePage).GetMaxCharSize(), 16);
}

TEST_P(CodePage, GivesWhatIconvGivesForEachByteAndEachPair) {
    for (int first = 0; first < 256; ++first) {
        ASSERT_NO_FATAL_FAILURE(Compare(std::string(1, static_cast<char>(first))));
        // Where each damaged byte takes a locale of its own, a sample of the second bytes is enough for ASCII.
        const int step = GetParam().locale != nullptr && first < 128 ? 16 : 1;
        for (int second = 0; second < 256; second += step) {
            ASSERT_NO_FATAL_FAILURE(Compare({static_cast<char>(first), static_cast<char>(second)}));
        }
    }
    ExpectMessages();
}

TEST_P(CodePage, GivesWhatIconvGivesForEachUnit) {
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        const Units text{static_cast<unsigned short>(unit)};
        ASSERT_EQ(ConvertBack(text), plain->FromUTF16(text)) << unit;
    }
    for (unsigned int code = 0x10000; code <= 0x10FFFF; code += code < 0x30000 ? 7 : 4099) {
        const Units text{static_cast<unsigned short>(0xD7C0 + (code >> 10)),
                         static_cast<unsigned short>(0xDC00 | (code & 0x3FF))};
        ASSERT_EQ(ConvertBack(text), plain->FromUTF16(text)) << code;
    }
}

TEST_P(CodePage, GivesWhatIconvGivesForDamagedText) {
    std::mt19937 random(GetParam().codePage[0]);
    const int rounds = GetParam().locale != nullptr ? 500 : 5000;
    for (int round = 0; round < rounds; ++round) {
        std::string text(random() % 24 + 1, 'a');
        for (char& byte : text) {
            // High bytes prevail; what they have between them are digits, which GB18030 has inside characters.
            byte = static_cast<char>(random() % 4 == 0 ? '0' + random() % 10
                                     : random() % 2    ? 0x81 + random() % 0x7E
                                                       : random());
        }
        ASSERT_NO_FATAL_FAILURE(Compare(text));
    }
    ExpectMessages();
}

TEST_P(CodePage, PutsAQuestionMarkForEachUnitWithoutAPlace) {
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        Units text(random() % 15 + 1);
        for (unsigned short& unit : text) {
            unit = static_cast<unsigned short>(random() % 3 == 0 ? 0xD800 + random() % 0x800
                                               : random() % 2    ? random() % 0x100
                                                                 : random());
        }
        ASSERT_EQ(ConvertBack(text), plain->FromUTF16(text));
    }
    EXPECT_EQ(ConvertBack({'a', 0xD83D, 'b', 0xDE00}), "a?b?");
    EXPECT_EQ(ConvertBack({'a', 0xD83D}), "a?") << "at the end, too";
}

TEST_P(CodePage, GivesWhatIconvGivesAroundAUnitThatBreaksARun) {
    const Units breaks[] = {{0x100},          {0x20AC},         {0xD800}, {0xDC00},
                            {0xD83D, 0xDE00}, {0xDB40, 0xDC41}, {0xFEFF}, {0x3042}};
    for (std::size_t length = 1; length <= 50; ++length) {
        Units run(length);
        for (std::size_t i = 0; i < length; ++i) {
            run[i] = static_cast<unsigned short>(i * 37 % 0x100);
        }
        ASSERT_EQ(ConvertBack(run), plain->FromUTF16(run)) << length;
        std::string bytes(run.begin(), run.end());
        ASSERT_NO_FATAL_FAILURE(Compare(bytes));
        for (std::size_t at = 0; at <= length; ++at) {
            const Units& piece = breaks[(length + at) % std::size(breaks)];
            Units text(run);
            text.insert(text.begin() + static_cast<std::ptrdiff_t>(at), piece.begin(), piece.end());
            ASSERT_EQ(ConvertBack(text), plain->FromUTF16(text)) << length << " " << at;
        }
    }
    ExpectMessages();
}

TEST_P(CodePage, TakesEachByteInTurnWhateverItIs) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        std::string text(random() % 40 + 1, '\0');
        std::ranges::generate(text, [&] { return static_cast<char>(random()); });
        const std::string all = text;
        const char* src = text.data();
        unsigned long left = text.size();
        while (left > 0) {
            int expectedAnswer = 0;
            const Result expected = plain->Next(std::string(src, left), expectedAnswer);
            const char* const before = src;
            unsigned short units[2];
            const int answer = codePage->GetNextMultiByteCharAsUTF16(units, src, left);
            ASSERT_EQ(answer, expectedAnswer);
            ASSERT_EQ(Result({Units(units, units + answer), static_cast<std::size_t>(src - before)}), expected);
            if (src == before) {
                break;
            }
        }
    }
    ExpectMessages();
}

TEST_P(CodePage, SaysWhatSurvivesTheWayBack) {
    for (unsigned int unit = 1; unit < 0xFFFF; unit += unit < 0x700 ? 1 : 13) {
        const Units text{'a', static_cast<unsigned short>(unit), 'b'};
        const std::string bytes = plain->FromUTF16({static_cast<unsigned short>(unit)});
        const bool survives =
            plain->ToUTF16(bytes, -1).units == Units{static_cast<unsigned short>(unit)} && (unit & 0xFC00) != 0xD800;
        if ((unit & 0xFC00) != 0xD800) {
            ASSERT_EQ(codePage->CanConvertUTF16ToMBCS(text.data(), 3), survives ? 0 : -1) << unit;
        }
        if (survives && unit != '\\' && unit != '~') {
            ASSERT_EQ(codePage->CanConvertMBCSToUTF16(bytes.data(), bytes.size()), 0) << unit;
        }
    }
    const Units halves{'a', 0xD83D};
    EXPECT_EQ(codePage->CanConvertUTF16ToMBCS(halves.data(), 2), -1);
    EXPECT_EQ(codePage->CanConvertMBCSToUTF16("ab\xFF", 3),
              plain->FromUTF16(plain->ToUTF16("\xFF", -1).units) == "\xFF" ? 0 : -1);
    EXPECT_EQ(codePage->CanConvertMBCSToUTF16("ab", 2), 0);
    EXPECT_EQ(codePage->CanConvertMBCSToUTF16("", 0), 0);
    testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
}

INSTANTIATE_TEST_SUITE_P(All, CodePage, testing::ValuesIn([] {
                             std::vector<Subject> subjects;
                             for (const char* codePage : CodePageOracle::CodePages) {
                                 subjects.push_back({codePage});
                             }
                             subjects.push_back({"EUC-JP", TestLocales::Japanese});
                             subjects.push_back({"SHIFT_JIS", TestLocales::JapaneseShiftJIS});
                             return subjects;
                         }()),
                         NameOf);

namespace {

/// Has as many units of room as the text has bytes; the escape sequences take more than there is.
std::string ConvertedBy(const char* name, const Units& text) {
    const GuardedMemory memory(4096);
    const VELSysCodePage codePage(name);
    const std::size_t room = 4 * text.size() + 1;
    auto* const dst = memory.AtEnd<char>(room);
    int written = 0;
    codePage.ConvertUTF16ToMBCS(text.data(), static_cast<int>(text.size()), dst, &written);
    EXPECT_EQ(dst[written], '\0');
    return {dst, dst + written};
}

} // namespace

TEST(StatefulCodePage, NeverWritesBehindItsRoom) {
    for (const char* name : {"ISO-2022-JP", "ISO-2022-KR", "ISO-2022-CN-EXT", "UTF-7", "UTF-16", "UTF-32", "TSCII"}) {
        if (!CodePageOracle::IsKnown(name)) {
            continue;
        }
        Converter plain(name);
        for (std::size_t length = 1; length < 100; ++length) {
            Units text(length);
            for (std::size_t i = 0; i < length; ++i) {
                text[i] = i % 2 == 0 ? 0x4E00 : length % 3 == 0 ? 0x263A : 'a';
            }
            ASSERT_EQ(ConvertedBy(name, text), plain.FromUTF16(text)) << name << " " << length;
        }
    }
}

// Escape sequences are no characters, so that a first one may be many bytes away.
TEST(StatefulCodePage, GivesItsFirstCharacterBehindAnyEscapeSequences) {
    const VELSysCodePage codePage("ISO-2022-JP-2", 1, nullptr);
    Converter plain("ISO-2022-JP-2");
    const std::string kanji = "\x1B$B$\"";
    for (const std::string& text :
         {kanji + "\x1B(B\x1B$B$\"", kanji + "\x1B(B", kanji, kanji + "\x1B(Ba", std::string("\x1B$(D\x1B$(D\x1B(Bab"),
          std::string("\x1B(B\x1B(B\x1B(B\x1B(B\x1B(Bab"), std::string("\x1B$(D\x1B$(D"), std::string("\x1B$")}) {
        int expectedAnswer = 0;
        const Result expected = plain.Next(text, expectedAnswer);
        const char* src = text.data();
        unsigned long left = text.size();
        unsigned short units[2];
        testing::internal::CaptureStderr();
        const int answer = codePage.GetNextMultiByteCharAsUTF16(units, src, left);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), plain.messages);
        plain.messages.clear();
        EXPECT_EQ(answer, expectedAnswer) << testing::PrintToString(text);
        EXPECT_EQ(Result({Units(units, units + answer), text.size() - left}), expected) << testing::PrintToString(text);
    }
}

TEST(StatefulCodePage, StartsEachConversionAnew) {
    const VELSysCodePage codePage("ISO-2022-JP");
    const char text[] = "\x1B$B$\"";
    unsigned short units[8];
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text, 5, units, nullptr), 1);
    EXPECT_EQ(units[0], 0x3042);
    EXPECT_EQ(codePage.ConvertMBCSToUTF16("$\"", 2, units, nullptr), 2) << "ASCII again";
    EXPECT_EQ(units[0], '$');
}

TEST(CodePageOfSeveralUnitsAByte, StopsAtTheEndOfTheRoom) {
    const VELSysCodePage codePage("TSCII");
    // U+0BB8 U+0BCD U+0BB0 U+0BC0 in one byte.
    const GuardedMemory memory(64);
    auto* const units = memory.AtEnd<unsigned short>(1);
    testing::internal::CaptureStderr();
    codePage.ConvertMBCSToUTF16("\x82", 1, units, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(units[0], 0x0BB8);
}

TEST(UnknownCodePage, IsValidAndConvertsAsIdentity) {
    const VELSysCodePage codePage("no such code set");
    EXPECT_TRUE(codePage.IsValid());
    EXPECT_STREQ(codePage.GetName(), "no such code set");
    testing::internal::CaptureStderr();
    unsigned short units[4] = {9, 9, 9, 9};
    int written = 0;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16("a\xE9\xFF", 3, units, &written), 3);
    EXPECT_THAT(units, testing::ElementsAre('a', 0xE9, 0xFF, 9));
    const char* src = "ab";
    unsigned long left = 2;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 3ul), 2);
    EXPECT_EQ(src, nullptr);
    EXPECT_EQ(units[2], 0) << "terminated as identity terminates";
    char bytes[4] = "###";
    const unsigned short wide[] = {'a', 0x20AC};
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(wide, 2, bytes, &written), 2);
    EXPECT_STREQ(bytes, "a\xAC");
    EXPECT_EQ(codePage.CanConvertMBCSToUTF16("a\xE9", 2), 0);
    src = "\xE9";
    left = 1;
    EXPECT_EQ(codePage.GetNextMultiByteCharAsUTF16(units, src, left), 1);
    EXPECT_EQ(units[0], 0xE9);
    EXPECT_EQ(left, 0u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(CodePageOfBytes, GivesAQuestionMarkForAnUnpairedSurrogate) {
    const unsigned short units[] = {0xD83D};
    char bytes[5];
    EXPECT_EQ(VELSysCodePage("ISO-8859-1").ConvertUTF16ToMBCS(units, 1, bytes, nullptr), 1);
    EXPECT_STREQ(bytes, "?");
    EXPECT_EQ(VELSysCodePage("UTF-8").ConvertUTF16ToMBCS(units, 1, bytes, nullptr), 3) << "the unchecked algorithm";
}

TEST(NoText, ConvertsToNothingOnEveryWay) {
    for (const char* name : {"UTF-8", "N/A", "EUC-JP"}) {
        const VELSysCodePage codePage(name);
        unsigned short units[2] = {9, 9};
        int written = -1;
        EXPECT_EQ(codePage.ConvertMBCSToUTF16(nullptr, 3, units, &written), 0);
        EXPECT_EQ(written, 0);
        EXPECT_EQ(codePage.ConvertMBCSToUTF16("abc", -1, units, &written), 0);
        EXPECT_EQ(written, 0);
        char bytes[2] = "#";
        EXPECT_EQ(codePage.ConvertUTF16ToMBCS(nullptr, 3, bytes, &written), 0);
        EXPECT_EQ(written, 0);
        EXPECT_EQ(bytes[0], '\0');
        const unsigned short wide[] = {'a'};
        EXPECT_EQ(codePage.ConvertUTF16ToMBCS(wide, -1, bytes, &written), 0);
        EXPECT_EQ(written, 0);
    }
}
