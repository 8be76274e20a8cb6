#include "VLString.h"

#include "FakeConverter.h"
#include "GuardedMemory.h"
#include "HeapLog.h"
#include "StringEnvironment.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

const unsigned short* VL(const char16_t* text) {
    return reinterpret_cast<const unsigned short*>(text);
}

std::u16string Text(const unsigned short* s) {
    return {s, s + VLwcslen(s)};
}

/// Takes over a new array and gives its text.
std::u16string Owned(unsigned short* s) {
    EXPECT_NE(s, nullptr);
    const std::unique_ptr<unsigned short[]> owner(s);
    return Text(s);
}

constexpr const unsigned short* Null = nullptr;

} // namespace

TEST(VLwcslen, CountsUnits) {
    EXPECT_EQ(VLwcslen(VL(u"")), 0u);
    EXPECT_EQ(VLwcslen(VL(u"ab\U0001F600")), 4u);
    EXPECT_EQ(VLwcslen(nullptr), 0u);
}

TEST(VLwcscpy, CopiesTheTerminatorToo) {
    unsigned short target[4] = {9, 9, 9, 9};
    EXPECT_EQ(VLwcscpy(target, VL(u"ab")), target);
    EXPECT_THAT(target, ElementsAre('a', 'b', 0, 9));
    EXPECT_EQ(VLwcscpy(target, VL(u"")), target);
    EXPECT_THAT(target, ElementsAre(0, 'b', 0, 9));
    EXPECT_EQ(VLwcscpy(nullptr, VL(u"ab")), nullptr);
    target[0] = 'x';
    EXPECT_EQ(VLwcscpy(target, nullptr), target);
    EXPECT_EQ(target[0], 0);
}

TEST(VLwcsncpy, AlwaysTerminatesAndNeverPads) {
    unsigned short target[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(VLwcsncpy(target, VL(u"abcde"), 2), target);
    EXPECT_THAT(target, ElementsAre('a', 'b', 0, 9, 9));
    EXPECT_EQ(VLwcsncpy(target, VL(u"x"), 4), target);
    EXPECT_THAT(target, ElementsAre('x', 0, 0, 9, 9));
    EXPECT_EQ(VLwcsncpy(target, VL(u"yz"), 0), target);
    EXPECT_THAT(target, ElementsAre(0, 0, 0, 9, 9));
    EXPECT_EQ(VLwcsncpy(target, VL(u"abcd"), 4), target);
    EXPECT_THAT(target, ElementsAre('a', 'b', 'c', 'd', 0));
    EXPECT_EQ(VLwcsncpy(nullptr, VL(u"yz"), 1), nullptr);
}

TEST(VLwcscmp, GivesTheDifferenceOfTheFirstUnitsThatDiffer) {
    EXPECT_EQ(VLwcscmp(VL(u"abc"), VL(u"abc")), 0);
    EXPECT_EQ(VLwcscmp(VL(u"abc"), VL(u"abf")), -3);
    EXPECT_EQ(VLwcscmp(VL(u"abf"), VL(u"abc")), 3);
    EXPECT_EQ(VLwcscmp(VL(u"ab"), VL(u"abc")), -'c');
    EXPECT_EQ(VLwcscmp(VL(u"abc"), VL(u"ab")), 'c');
    EXPECT_EQ(VLwcscmp(VL(u"\uFFFF"), VL(u"")), 0xFFFF);
    EXPECT_EQ(VLwcscmp(VL(u""), VL(u"")), 0);
    EXPECT_EQ(VLwcscmp(nullptr, nullptr), 0);
    EXPECT_EQ(VLwcscmp(nullptr, VL(u"a")), -'a');
    EXPECT_EQ(VLwcscmp(VL(u"a"), nullptr), 'a');
}

TEST(VLwcsncmp, LooksAtTheFirstUnitsAlsoForACountOfZero) {
    EXPECT_EQ(VLwcsncmp(VL(u"a"), VL(u"b"), 0), -1);
    EXPECT_EQ(VLwcsncmp(VL(u"a"), VL(u"b"), 1), -1);
    EXPECT_EQ(VLwcsncmp(VL(u"ab"), VL(u"ac"), 0), 0);
    EXPECT_EQ(VLwcsncmp(VL(u"ab"), VL(u"ac"), 1), 0);
    EXPECT_EQ(VLwcsncmp(VL(u"ab"), VL(u"ac"), 2), -1);
    EXPECT_EQ(VLwcsncmp(VL(u"ab"), VL(u"ab"), 9), 0);
    EXPECT_EQ(VLwcsncmp(VL(u"ab"), VL(u"a"), 9), 'b');
    EXPECT_EQ(VLwcsncmp(VL(u"a"), VL(u"ab"), 1), 0);
    EXPECT_EQ(VLwcsncmp(nullptr, VL(u"b"), 0), -'b');
}

TEST(VLwcsrchr, FindsTheLastUnit) {
    const auto* const s = VL(u"abcabc");
    EXPECT_EQ(VLwcsrchr(s, 'a'), s + 3);
    EXPECT_EQ(VLwcsrchr(s, 'c'), s + 5);
    EXPECT_EQ(VLwcsrchr(VL(u"abb"), 'a')[1], 'b') << "at the start";
    EXPECT_EQ(VLwcsrchr(s, 'x'), nullptr);
    EXPECT_EQ(VLwcsrchr(s, 0), s + 6) << "the terminator";
    const auto* const empty = VL(u"");
    EXPECT_EQ(VLwcsrchr(empty, 0), empty);
    EXPECT_EQ(VLwcsrchr(empty, 'a'), nullptr);
    EXPECT_EQ(VLwcsrchr(nullptr, 'a'), nullptr);
    EXPECT_EQ(VLwcsrchr(nullptr, 0), nullptr);
}

TEST(VLwcscat, WritesBehindTheTerminator) {
    unsigned short target[7] = {'a', 'b', 0, 9, 9, 9, 9};
    EXPECT_EQ(VLwcscat(target, VL(u"cd")), target + 5);
    EXPECT_THAT(target, ElementsAre('a', 'b', 0, 'c', 'd', 9, 9)) << "no terminator of its own";
    EXPECT_EQ(VLwcscat(target, VL(u"")), target + 3);
    EXPECT_THAT(target, ElementsAre('a', 'b', 0, 'c', 'd', 9, 9));
    EXPECT_EQ(VLwcscat(target, nullptr), target + 3);
    EXPECT_EQ(VLwcscat(nullptr, VL(u"cd")), nullptr);
}

TEST(VLwcsstr, FindsTheFirstOccurrence) {
    const auto* const s = VL(u"abcabcd");
    EXPECT_EQ(VLwcsstr(s, VL(u"abc")), s);
    EXPECT_EQ(VLwcsstr(s, VL(u"cd")), s + 5);
    EXPECT_EQ(VLwcsstr(s, VL(u"bca")), s + 1);
    EXPECT_EQ(VLwcsstr(s, VL(u"x")), nullptr);
    EXPECT_EQ(VLwcsstr(s, VL(u"abcabcde")), nullptr);
    EXPECT_EQ(VLwcsstr(s, VL(u"")), s);
    EXPECT_EQ(VLwcsstr(s, nullptr), s);
    EXPECT_EQ(VLwcsstr(VL(u""), VL(u"")), nullptr);
    EXPECT_EQ(VLwcsstr(VL(u""), VL(u"a")), nullptr);
    EXPECT_EQ(VLwcsstr(nullptr, VL(u"")), nullptr);
}

TEST(VLwstrdup, Copies) {
    const auto* const s = VL(u"ab\u20ac");
    unsigned short* const copy = VLwstrdup(s);
    EXPECT_NE(copy, s);
    EXPECT_EQ(Owned(copy), u"ab\u20ac");
    EXPECT_EQ(Owned(VLwstrdup(VL(u""))), u"");
    EXPECT_EQ(VLwstrdup(nullptr), nullptr);
}

TEST(VLwstrappend, JoinsIntoANewArray) {
    const auto* const a = VL(u"ab");
    EXPECT_EQ(Owned(VLwstrappend(a, VL(u"cd"))), u"abcd");
    EXPECT_EQ(Text(a), u"ab");
    EXPECT_EQ(Owned(VLwstrappend(VL(u""), VL(u""))), u"");
    EXPECT_EQ(Owned(VLwstrappend(a, a)), u"abab");
}

TEST(VLwstrappend, TakesNullForAnEmptyText) {
    EXPECT_EQ(Owned(VLwstrappend(nullptr, VL(u"cd"))), u"cd");
    EXPECT_EQ(Owned(VLwstrappend(VL(u"ab"), Null)), u"ab");
    EXPECT_EQ(Owned(VLwstrappend(nullptr, Null)), u"");
    EXPECT_EQ(Owned(VLwstrappend(nullptr, "cd")), u"cd");
    EXPECT_EQ(Owned(VLwstrappend(VL(u"ab"), static_cast<const char*>(nullptr))), u"ab");
    EXPECT_EQ(Owned(VLwstrappend(nullptr, static_cast<const char*>(nullptr))), u"");
}

class VLConversion : public StringEnvironment::InBoth {};

TEST_P(VLConversion, AppendsNarrowTextFromTheCodePage) {
    const char* const narrow = IsUTF8() ? "\u00e9\u20ac\U0001F600" : "\xE9";
    const std::u16string wide = IsUTF8() ? u"\u00e9\u20ac\U0001F600" : u"\u00e9";
    EXPECT_EQ(Owned(VLwstrappend(VL(u"a\u20ac"), narrow)), u"a\u20ac" + wide);
    EXPECT_EQ(Owned(VLwstrappend(VL(u""), "")), u"");
}

TEST_P(VLConversion, GivesNarrowTextInAnArrayThatHoldsIt) {
    const struct {
        std::u16string wide;
        std::string utf8;
        std::string oneToOne;
    } rows[] = {
        {u"", "", ""},
        {u"abc", "abc", "abc"},
        {u"\u00e9", "\u00e9", "\xE9"},
        {u"\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac", "\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac", "\xAC\xAC\xAC\xAC\xAC\xAC"},
        {u"\U0001F600", "\U0001F600", "=\x01"},
    };
    for (const auto& row : rows) {
        const std::string& narrow = IsUTF8() ? row.utf8 : std::string(row.wide.begin(), row.wide.end());
        char* out = nullptr;
        EXPECT_EQ(VLwstrTostr(VL(row.wide.c_str()), out), static_cast<int>(narrow.size()));
        const std::unique_ptr<char[]> owner(out);
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(std::string(out, narrow.size()), narrow);
        // All of the stated array is there, and zero.
        const std::size_t size = std::max(2 * row.wide.size(), narrow.size()) + 1;
        EXPECT_TRUE(std::all_of(out + narrow.size(), out + size, [](char byte) { return byte == 0; }));
    }
}

TEST_P(VLConversion, GivesWideTextInOneUnitAByte) {
    const std::string narrow = IsUTF8() ? "a\u20ac\U0001F600" : "a\xE9";
    const std::u16string wide = IsUTF8() ? u"a\u20ac\U0001F600" : u"a\u00e9";
    unsigned short* out = nullptr;
    EXPECT_EQ(VLstrTowstr(narrow.c_str(), out), static_cast<int>(wide.size()));
    const std::unique_ptr<unsigned short[]> owner(out);
    EXPECT_EQ(Text(out), wide);
    EXPECT_TRUE(std::all_of(out + wide.size(), out + narrow.size() + 1, [](unsigned short unit) { return unit == 0; }));
    EXPECT_EQ(VLstrTowstr("", out), 0);
    EXPECT_EQ(Owned(out), u"");
}

TEST_P(VLConversion, GivesNullForNull) {
    char bytes[1];
    char* narrow = bytes;
    EXPECT_EQ(VLwstrTostr(nullptr, narrow), 0);
    EXPECT_EQ(narrow, nullptr);
    unsigned short units[1];
    unsigned short* wide = units;
    EXPECT_EQ(VLstrTowstr(nullptr, wide), 0);
    EXPECT_EQ(wide, nullptr);
}

TEST_P(VLConversion, OfTextThatTheConverterRefusesIsEmpty) {
    FakeConverter::s_fails = true;
    char* out = nullptr;
    EXPECT_EQ(VLwstrTostr(VL(u"abc"), out), 0);
    FakeConverter::s_fails = false;
    const std::unique_ptr<char[]> owner(out);
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(std::all_of(out, out + 7, [](char byte) { return byte == 0; }));
}

INSTANTIATE_TEST_SUITE_P(Environments, VLConversion,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(VLShortage, GivesNull) {
    // The environment's converter is there before.
    delete[] VLwstrappend(VL(u"a"), "b");
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_EQ(VLwstrdup(VL(u"a")), nullptr);
        EXPECT_EQ(VLwstrappend(VL(u"a"), VL(u"b")), nullptr);
        EXPECT_EQ(VLwstrappend(VL(u"a"), "b"), nullptr);
        unsigned short units[1];
        unsigned short* wide = units;
        EXPECT_EQ(VLstrTowstr("a", wide), 0);
        EXPECT_EQ(wide, nullptr);
    }
    for (int first = 1; first <= 2; ++first) {
        const HeapShortage shortage(first, HeapShortage::FromThatOneOn);
        char bytes[1];
        char* narrow = bytes;
        EXPECT_EQ(VLwstrTostr(VL(u"\u20ac"), narrow), 0) << first;
        EXPECT_EQ(narrow, nullptr);
        EXPECT_TRUE(HeapShortage::HasStruck());
    }
}

TEST(VLString, ReadsNothingBehindATerminator) {
    const GuardedMemory memory(64);
    const GuardedMemory other(64);
    const unsigned short* const s = memory.CopyAtEnd(VL(u"abc"), 4);
    const unsigned short* const t = other.CopyAtEnd(VL(u"abc"), 4);
    EXPECT_EQ(VLwcslen(s), 3u);
    EXPECT_EQ(VLwcscmp(s, t), 0);
    EXPECT_EQ(VLwcsncmp(s, t, 100), 0);
    EXPECT_EQ(VLwcsstr(s, t), s);
    EXPECT_EQ(VLwcsrchr(s, 0), s + 3);
    EXPECT_EQ(Owned(VLwstrappend(s, t)), u"abcabc");
    char* out = nullptr;
    EXPECT_EQ(VLwstrTostr(s, out), 3);
    delete[] out;
}
