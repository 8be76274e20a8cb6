#include "VELSysStr.h"

#include "GuardedMemory.h"
#include "HeapLog.h"
#include "QORUnicodeString.h"
#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using namespace StringBlocks;
using testing::Each;
using testing::ElementsAre;

template <class T>
std::unique_ptr<T, decltype(&std::free)> Owned(T* block) {
    return {block, std::free};
}

QORUnicodeString WideString(const std::u16string& text) {
    QORUnicodeString s;
    s.BuildFromUCChar(Units(text.c_str()), static_cast<int>(text.size()));
    return s;
}

constexpr const char* NoText = nullptr;
constexpr const wchar_t* NoWideText = nullptr;
char* const NoTarget = nullptr;
wchar_t* const NoWideTarget = nullptr;

} // namespace

TEST(VELSysStrCpy, FillsTheTargetWithZeros) {
    char target[6] = {'#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(VELSysStrCpy(target, 5, "ab"), 0);
    EXPECT_THAT(target, ElementsAre('a', 'b', 0, 0, 0, '#'));
}

TEST(VELSysStrCpy, CutsANarrowText) {
    char target[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(VELSysStrCpy(target, 3, "abc"), 0);
    EXPECT_THAT(target, ElementsAre('a', 'b', 0, '#'));
    EXPECT_EQ(VELSysStrCpy(target, 4, "xyz"), 0) << "an exact fit";
    EXPECT_STREQ(target, "xyz");
    EXPECT_EQ(VELSysStrCpy(target, 1, "abc"), 0);
    EXPECT_THAT(target, ElementsAre(0, 'y', 'z', 0));
    EXPECT_EQ(VELSysStrCpy(target, 0, "abc"), -1);
    EXPECT_THAT(target, ElementsAre(0, 'y', 'z', 0));
}

TEST(VELSysStrCpy, WidensUTF8) {
    wchar_t target[6] = L"#####";
    EXPECT_EQ(VELSysStrCpy(target, 5, "a\u20ac"), 0);
    EXPECT_THAT(target, ElementsAre(L'a', 0x20AC, 0, L'#', L'#', 0));
    EXPECT_EQ(VELSysStrCpy(target, 5, "\U0001F600"), 0) << "four bytes and a terminator";
    EXPECT_THAT(target, ElementsAre(0x1F600, 0, 0, L'#', L'#', 0));
    EXPECT_EQ(VELSysStrCpy(target, 4, "\U0001F600"), -1) << "although one element would do";
    EXPECT_THAT(target, ElementsAre(0x1F600, 0, 0, L'#', L'#', 0));
    EXPECT_EQ(VELSysStrCpy(target, 1, ""), 0);
    EXPECT_EQ(target[0], 0);
    EXPECT_EQ(VELSysStrCpy(target, 0, ""), -1);
}

TEST(VELSysStrCpy, NarrowsToUTF8WithRoomForTheLongestForm) {
    char target[10] = "#########";
    EXPECT_EQ(VELSysStrCpy(target, 8, L"ab"), -1) << "nine bytes are reserved";
    EXPECT_STREQ(target, "#########");
    EXPECT_EQ(VELSysStrCpy(target, 9, L"ab"), 0);
    EXPECT_STREQ(target, "ab");
    EXPECT_EQ(target[3], '#');
    EXPECT_EQ(VELSysStrCpy(target, 9, L"\u20ac\U0001F600"), 0);
    EXPECT_STREQ(target, "\u20ac\U0001F600");
    EXPECT_EQ(VELSysStrCpy(target, 1, L""), 0);
    EXPECT_STREQ(target, "");
    EXPECT_EQ(VELSysStrCpy(target, 0, L""), -1);
}

TEST(VELSysStrCpy, CutsAWideText) {
    wchar_t target[5] = L"####";
    EXPECT_EQ(VELSysStrCpy(target, 4, L"ab"), 0);
    EXPECT_THAT(target, ElementsAre(L'a', L'b', 0, L'#', 0)) << "nothing is filled";
    EXPECT_EQ(VELSysStrCpy(target, 3, L"abc"), 0);
    EXPECT_THAT(target, ElementsAre(L'a', L'b', 0, L'#', 0));
    EXPECT_EQ(VELSysStrCpy(target, 4, L"xyz"), 0);
    EXPECT_STREQ(target, L"xyz");
    EXPECT_EQ(VELSysStrCpy(target, 1, L"abc"), 0);
    EXPECT_THAT(target, ElementsAre(0, L'y', L'z', 0, 0));
    EXPECT_EQ(VELSysStrCpy(target, 0, L"abc"), -1);
}

TEST(VELSysStrCpy, RefusesNull) {
    char narrow[4] = "abc";
    wchar_t wide[4] = L"abc";
    EXPECT_EQ(VELSysStrCpy(narrow, 4, NoText), -1);
    EXPECT_EQ(VELSysStrCpy(narrow, 4, NoWideText), -1);
    EXPECT_EQ(VELSysStrCpy(wide, 4, NoText), -1);
    EXPECT_EQ(VELSysStrCpy(wide, 4, NoWideText), -1);
    EXPECT_EQ(VELSysStrCpy(NoTarget, 4, "x"), -1);
    EXPECT_EQ(VELSysStrCpy(NoTarget, 4, L"x"), -1);
    EXPECT_EQ(VELSysStrCpy(NoWideTarget, 4, "x"), -1);
    EXPECT_EQ(VELSysStrCpy(NoWideTarget, 4, L"x"), -1);
    EXPECT_STREQ(narrow, "abc");
    EXPECT_STREQ(wide, L"abc");
}

TEST(VELSysStrCat, AppendsAsFarAsTheRoomGoes) {
    char target[6] = {'a', 0, '#', '#', '#', '#'};
    EXPECT_EQ(VELSysStrCat(target, 5, "bc"), 0);
    EXPECT_THAT(target, ElementsAre('a', 'b', 'c', 0, '#', '#'));
    EXPECT_EQ(VELSysStrCat(target, 5, "xyz"), 0);
    EXPECT_THAT(target, ElementsAre('a', 'b', 'c', 'x', 0, '#'));
    wchar_t wide[6] = {L'a', 0, L'#', L'#', L'#', L'#'};
    EXPECT_EQ(VELSysStrCat(wide, 5, L"bc"), 0);
    EXPECT_THAT(wide, ElementsAre(L'a', L'b', L'c', 0, L'#', L'#'));
    EXPECT_EQ(VELSysStrCat(wide, 5, L"xyz"), 0);
    EXPECT_THAT(wide, ElementsAre(L'a', L'b', L'c', L'x', 0, L'#'));
}

TEST(VELSysStrCat, LeavesAFullTargetAlone) {
    char target[5] = "abc";
    EXPECT_EQ(VELSysStrCat(target, 4, "d"), 0);
    EXPECT_STREQ(target, "abc");
    wchar_t wide[5] = L"abc";
    EXPECT_EQ(VELSysStrCat(wide, 4, L"d"), 0);
    EXPECT_STREQ(wide, L"abc");
    char empty[2] = "";
    EXPECT_EQ(VELSysStrCat(empty, 1, "d"), 0);
    EXPECT_STREQ(empty, "");
}

TEST(VELSysStrCat, RefusesATargetWithoutATerminator) {
    char target[5] = "abcd";
    EXPECT_EQ(VELSysStrCat(target, 4, "e"), -1);
    EXPECT_EQ(VELSysStrCat(target, 3, ""), -1);
    EXPECT_EQ(VELSysStrCat(target, 0, "e"), -1);
    EXPECT_STREQ(target, "abcd");
    wchar_t wide[5] = L"abcd";
    EXPECT_EQ(VELSysStrCat(wide, 4, L"e"), -1);
    EXPECT_EQ(VELSysStrCat(wide, 0, L"e"), -1);
    EXPECT_STREQ(wide, L"abcd");
    const GuardedMemory memory(4);
    char* const guarded = memory.AtEnd<char>(4);
    std::memcpy(guarded, "abcd", 4);
    EXPECT_EQ(VELSysStrCat(guarded, 4, "e"), -1);
}

TEST(VELSysStrCat, RefusesNull) {
    char narrow[4] = "a";
    wchar_t wide[4] = L"a";
    EXPECT_EQ(VELSysStrCat(narrow, 4, nullptr), -1);
    EXPECT_EQ(VELSysStrCat(wide, 4, nullptr), -1);
    EXPECT_EQ(VELSysStrCat(NoTarget, 4, "x"), -1);
    EXPECT_EQ(VELSysStrCat(NoWideTarget, 4, L"x"), -1);
}

TEST(VELSysStrSep, Separates) {
    char text[] = "a,,b";
    char* rest = text;
    EXPECT_STREQ(VELSysStrSep(&rest, ","), "a");
    EXPECT_STREQ(VELSysStrSep(&rest, ","), "");
    EXPECT_STREQ(VELSysStrSep(&rest, ","), "b");
    EXPECT_EQ(rest, nullptr);
    EXPECT_EQ(VELSysStrSep(&rest, ","), nullptr);
    EXPECT_EQ(VELSysStrSep(nullptr, ","), nullptr);
    rest = text;
    EXPECT_EQ(VELSysStrSep(&rest, nullptr), nullptr);
    EXPECT_EQ(rest, text);
}

TEST(QORSysStrtokLegacy, WalksOverTheText) {
    char text[] = ",,a,b";
    char* state = nullptr;
    EXPECT_STREQ(QORSysStrtokLegacy(text, ",", &state), "a");
    EXPECT_EQ(state, text + 4) << "behind the delimiter";
    EXPECT_EQ(text[3], 0) << "the delimiter is overwritten";
    EXPECT_STREQ(QORSysStrtokLegacy(nullptr, ",", &state), "b");
    EXPECT_EQ(state, nullptr) << "the token ends with the text";
    EXPECT_EQ(QORSysStrtokLegacy(nullptr, ",", &state), nullptr);
    EXPECT_EQ(state, nullptr);
}

TEST(QORSysStrtokLegacy, StaysOnTheZeroByteWhenTheTextEndsBehindADelimiter) {
    char text[] = "a,b,";
    char* state = nullptr;
    EXPECT_STREQ(QORSysStrtokLegacy(text, ",", &state), "a");
    EXPECT_STREQ(QORSysStrtokLegacy(nullptr, ",", &state), "b");
    EXPECT_EQ(state, text + 3);
    EXPECT_EQ(*state, 0);
    EXPECT_EQ(QORSysStrtokLegacy(nullptr, ",", &state), nullptr);
    EXPECT_EQ(state, text + 3) << "untouched";
}

TEST(QORSysStrtokLegacy, LeavesTheStateWhenNothingIsLeft) {
    char other[] = "x";
    for (const char* text : {"", ",,;"}) {
        char copy[4];
        std::strcpy(copy, text);
        char* state = other;
        EXPECT_EQ(QORSysStrtokLegacy(copy, ",;", &state), nullptr);
        EXPECT_EQ(state, other);
        EXPECT_STREQ(copy, text);
    }
    char text[] = "a,,;";
    char* state = nullptr;
    EXPECT_STREQ(QORSysStrtokLegacy(text, ",;", &state), "a");
    EXPECT_EQ(state, text + 2);
    EXPECT_EQ(QORSysStrtokLegacy(nullptr, ",;", &state), nullptr);
    EXPECT_EQ(state, text + 2);
}

TEST(QORSysStrtokLegacy, GivesAllWithoutDelimiters) {
    char text[] = "a,b";
    char* state = text;
    EXPECT_EQ(QORSysStrtokLegacy(text, "", &state), text);
    EXPECT_EQ(state, nullptr);
    EXPECT_STREQ(text, "a,b");
}

TEST(QORSysStrtokLegacy, TakesTheTextBeforeTheState) {
    char text[] = "a b";
    char other[] = "c d";
    char* state = other;
    EXPECT_STREQ(QORSysStrtokLegacy(text, " ", &state), "a");
    EXPECT_STREQ(QORSysStrtokLegacy(nullptr, " ", &state), "b");
    EXPECT_STREQ(other, "c d");
}

TEST(QORSysStrtokLegacy, GivesNullForNull) {
    char text[] = "a b";
    char* state = text;
    EXPECT_EQ(QORSysStrtokLegacy(text, nullptr, &state), nullptr);
    EXPECT_EQ(QORSysStrtokLegacy(text, " ", nullptr), nullptr);
    state = nullptr;
    EXPECT_EQ(QORSysStrtokLegacy(nullptr, " ", &state), nullptr);
    EXPECT_STREQ(text, "a b");
}

class SizedUTF8 : public StringEnvironment::InBoth {};

TEST_P(SizedUTF8, FillsTheTargetWithZeros) {
    for (QORUnicodeString s : {WideString(u"\u20ac"), WideString(u"abc")}) {
        char target[10];
        std::memset(target, '#', sizeof target);
        EXPECT_EQ(VELSysStrToUTF8(target, 9, s), 0);
        const std::string expected = s.ConvertToUCChar()[0] == 0x20AC ? "\u20ac" : "abc";
        EXPECT_EQ(std::string(target, 9), expected + std::string(6, '\0'));
        EXPECT_EQ(target[9], '#');
    }
}

TEST_P(SizedUTF8, RefusesATargetThatWouldJustFit) {
    QORUnicodeString s = WideString(u"abc");
    char target[16];
    std::memset(target, '#', sizeof target);
    EXPECT_EQ(VELSysStrToUTF8(target, 4, s), -1) << "the suggestion is 7";
    EXPECT_EQ(VELSysStrToUTF8(target, 7, s), -1);
    EXPECT_THAT(target, Each('#'));
    EXPECT_EQ(VELSysStrToUTF8(target, 8, s), 0);
    EXPECT_STREQ(target, "abc");
    QORUnicodeString eight = WideString(u"12345678");
    EXPECT_EQ(VELSysStrToUTF8(target, 8, eight), -1);
    EXPECT_EQ(VELSysStrToUTF8(target, 9, eight), 0) << "a suggestion is never below the length";
    EXPECT_STREQ(target, "12345678");
}

TEST_P(SizedUTF8, RefusesNullAndAnEmptyString) {
    QORUnicodeString s = WideString(u"abc");
    EXPECT_EQ(VELSysStrToUTF8(nullptr, 100, s), -1);
    char target[4] = "xyz";
    EXPECT_EQ(VELSysStrToUTF8(target, 0, s), -1);
    QORUnicodeString empty;
    EXPECT_EQ(VELSysStrToUTF8(target, 4, empty), -1);
    QORUnicodeString null = NullString<QORUnicodeString>();
    EXPECT_EQ(VELSysStrToUTF8(target, 4, null), -1);
    EXPECT_STREQ(target, "xyz");
}

TEST_P(SizedUTF8, GivesABlockOfUTF8) {
    EXPECT_STREQ(Owned(VELSysStrToUTF8(WideString(u"\u20ac\U0001F600 12345"))).get(), "\u20ac\U0001F600 12345");
    const QORUnicodeString narrow(IsUTF8() ? "gr\u00fcn" : "gr\xFCn");
    EXPECT_STREQ(Owned(VELSysStrToUTF8(narrow)).get(), "gr\u00fcn");
    EXPECT_EQ(VELSysStrToUTF8(QORUnicodeString()), nullptr);
    EXPECT_EQ(VELSysStrToUTF8(NullString<QORUnicodeString>()), nullptr);
}

TEST_P(SizedUTF8, GivesABlockOfUTF8FromWideText) {
    EXPECT_STREQ(Owned(VELSysStrToUTF8(L"\u20ac\U0001F600")).get(), "\u20ac\U0001F600");
    EXPECT_STREQ(Owned(VELSysStrToUTF8(L"a")).get(), "a");
    EXPECT_EQ(VELSysStrToUTF8(NoWideText), nullptr);
    EXPECT_EQ(VELSysStrToUTF8(L""), nullptr);
}

TEST_P(SizedUTF8, GivesABlockOfWideText) {
    EXPECT_STREQ(Owned(VELSysStrToWChar(WideString(u"a\u20ac\U0001F600"))).get(), L"a\u20ac\U0001F600");
    const QORUnicodeString narrow(IsUTF8() ? "gr\u00fcn" : "gr\xFCn");
    EXPECT_STREQ(Owned(VELSysStrToWChar(narrow)).get(), L"gr\u00fcn");
    EXPECT_STREQ(Owned(VELSysStrToWChar(QORUnicodeString())).get(), L"");
    EXPECT_STREQ(Owned(VELSysStrToWChar(NullString<QORUnicodeString>())).get(), L"");
}

TEST_P(SizedUTF8, GivesABlockOfTheSuggestedSize) {
    for (const std::u16string& text : {std::u16string(), std::u16string(u"a"), std::u16string(u"ab"),
                                       std::u16string(u"a\u20ac\U0001F600"), std::u16string(100, u'x')}) {
        const QORUnicodeString s = WideString(text);
        const HeapLog log;
        const auto wide = Owned(VELSysStrToWChar(s));
        EXPECT_THAT(log.Requests(), ElementsAre(static_cast<std::size_t>(s.ConvertToWChar(nullptr)) * sizeof(wchar_t)));
    }
}

TEST_P(SizedUTF8, BuildsAStringFromUTF8) {
    QORUnicodeString s("before");
    EXPECT_EQ(VELSysStrBuildU(s, nullptr), -1);
    EXPECT_EQ(s, "before");
    EXPECT_EQ(VELSysStrBuildU(s, "gr\u00fcn"), 0);
    EXPECT_EQ(Units(s.ConvertToUCChar(), s.GetLengthInChar()), u"gr\u00fcn");
    EXPECT_EQ(VEL::GetMainRepEncoding(s), IsUTF8() ? VEL::MainRepNarrow : VEL::MainRepWide);
    EXPECT_EQ(VELSysStrBuildU(s, ""), 0);
    EXPECT_TRUE(s.IsEmpty());
}

namespace {

/// Runs `call` on a fresh string while request `first` is refused. @return Whether there was such a request.
template <class Call>
bool RunInShortage(int first, HeapShortage::Extent extent, bool isWide, const Call& call) {
    const QORUnicodeString s = isWide ? WideString(u"a longer text") : QORUnicodeString("a longer text");
    const HeapShortage shortage(first, extent);
    call(s);
    return HeapShortage::HasStruck();
}

/// Runs `call` until it is no longer refused anything. It answers null when it gives no block, and the text otherwise.
template <class Call>
void Sweep(const Call& call) {
    VELStringPoolSetForCurrentThrd(0);
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        for (const bool isWide : {false, true}) {
            bool hasStruck = true;
            for (int first = 1; hasStruck; ++first) {
                bool isGiven = false;
                hasStruck = RunInShortage(first, extent, isWide,
                                          [&](const QORUnicodeString& s) { isGiven = call(s, "a longer text"); });
                EXPECT_EQ(isGiven, !hasStruck) << first;
            }
        }
    }
}

} // namespace

TEST_P(SizedUTF8, GivesNoBlockInAShortage) {
    Sweep([](const QORUnicodeString& s, const char* text) {
        const auto block = Owned(VELSysStrToUTF8(s));
        return block != nullptr && std::strcmp(block.get(), text) == 0;
    });
    Sweep([](const QORUnicodeString& s, const char* text) {
        const auto block = Owned(VELSysStrToWChar(s));
        return block != nullptr && std::equal(text, text + std::strlen(text) + 1, block.get());
    });
    Sweep([](const QORUnicodeString&, const char* text) {
        const auto block = Owned(VELSysStrToUTF8(L"a longer text"));
        return block != nullptr && std::strcmp(block.get(), text) == 0;
    });
}

TEST_P(SizedUTF8, RefusesATextWhoseViewIsMissing) {
    Sweep([](const QORUnicodeString& s, const char* text) {
        QORUnicodeString copy(s);
        char target[64] = "#";
        const int result = VELSysStrToUTF8(target, sizeof target, copy);
        EXPECT_STREQ(target, result == 0 ? text : "#");
        return result == 0;
    });
}

TEST_P(SizedUTF8, NeverWritesMoreThanItMeasured) {
    VELStringPoolSetForCurrentThrd(0);
    const std::string text = "a text whose view is missing once, and is there at the second look";
    for (int first = 1; first <= 4; ++first) {
        const QORUnicodeString s(text.c_str());
        const HeapShortage shortage(first, HeapShortage::OnlyThatOne);
        const auto wide = Owned(VELSysStrToWChar(s));
        EXPECT_TRUE(wide == nullptr || std::equal(text.c_str(), text.c_str() + text.size() + 1, wide.get())) << first;
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, SizedUTF8, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);
