/// @file
/// Queries of the language core: rows of the table by pattern and by predicate, what follows from a language or a code
/// page, and the record.

#include "LanguageTest.h"
#include "TestLocales.h"
#include "UpwardCalls.h"
#include "VELSysCLocale.h"
#include "VELSysNLS.h"
#include "VELSysStatus.h"

#include <cstring>
#include <gmock/gmock.h>
#include <ostream>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int All = 0x7fffffff;
constexpr int Untouched = 4711;

class LanguageQuery : public LanguageTest {};

/// What a search gave.
struct Found {
    int status;
    int count;
    std::vector<std::string> rows;
};

Found Find(VELSysNLSFilter filter, char mode, int capacity) {
    VELSysNLSNode* list = nullptr;
    Found found{0, capacity, {}};
    found.status = GetNLSInformationA(filter, mode, found.count, &list);
    found.rows = TakeRows(list);
    return found;
}

Found FindPattern(const VELSysNLSEntry& pattern, int capacity = All) {
    VELSysNLSFilter filter{};
    filter.pattern = &pattern;
    return Find(filter, 0, capacity);
}

Found FindPredicate(VELSysNLSPredicate predicate, void* argument, int capacity = All) {
    VELSysNLSFilter filter{};
    filter.predicate = predicate;
    filter.argument = argument;
    return Find(filter, 1, capacity);
}

} // namespace

// GetNLSInformationA by pattern.

TEST_F(LanguageQuery, AnEmptyPatternFindsAll) {
    UseRows("a b c d\n\n");
    const Found found = FindPattern({});
    EXPECT_EQ(found.status, VEL::StatusOk);
    EXPECT_EQ(found.count, 2);
    EXPECT_THAT(found.rows, ElementsAre("a|b|c|d", "|||"));
}

TEST_F(LanguageQuery, ByLanguageIsExact) {
    UseRows("aa 1 x y\na 2 x y\nA 3 x y\n\na 4 z w\n");
    EXPECT_THAT(FindPattern({"a", "", "", ""}).rows, ElementsAre("a|2|x|y", "a|4|z|w"));
    EXPECT_THAT(FindPattern({"b", "", "", ""}).rows, IsEmpty());
}

TEST_F(LanguageQuery, ByAliasIsNotLookedAt) {
    UseRows("a 1 x y\na 2 x y\n");
    EXPECT_EQ(FindPattern({"", "1", "", ""}).count, 2);
    EXPECT_EQ(FindPattern({"", "3", "", ""}).count, 2);
}

TEST_F(LanguageQuery, ByLocaleStringThePatternHoldsTheLongerText) {
    UseRows("a 1 ja_JP x\na 2 ja_JP.EUC-JP x\na 3 JP x\na\na 4 ja_jp x\n");
    EXPECT_THAT(FindPattern({"", "", "ja_JP.EUC", ""}).rows, ElementsAre("a|1|ja_JP|x", "a|3|JP|x", "a|||"));
    EXPECT_THAT(FindPattern({"", "", "x", ""}).rows, ElementsAre("a|||"));
}

TEST_F(LanguageQuery, ByCodePageIsExact) {
    UseRows("a 1 x UTF-8\na 2 x UTF\na 3 x utf-8\na 4 x\n");
    EXPECT_THAT(FindPattern({"", "", "", "UTF-8"}).rows, ElementsAre("a|1|x|UTF-8"));
}

TEST_F(LanguageQuery, ByAllColumnsWantsEach) {
    UseRows("a 1 x y\nb 2 x y\na 3 z y\na 4 x w\na 5 x y\n");
    EXPECT_THAT(FindPattern({"a", "", "xx", "y"}).rows, ElementsAre("a|1|x|y", "a|5|x|y"));
}

TEST_F(LanguageQuery, CountsWhatItDoesNotStore) {
    UseRows("a 1\na 2\nb 3\na 4\n");
    const Found two = FindPattern({"a", "", "", ""}, 2);
    EXPECT_EQ(two.count, 3);
    EXPECT_THAT(two.rows, ElementsAre("a|1||", "a|2||"));
    const Found none = FindPattern({"a", "", "", ""}, 0);
    EXPECT_EQ(none.count, 3);
    EXPECT_THAT(none.rows, IsEmpty());
}

TEST_F(LanguageQuery, StoresNothingForANegativeCapacity) {
    UseRows("a 1\na 2\n");
    const Found found = FindPattern({}, -1);
    EXPECT_EQ(found.status, VEL::StatusOk);
    EXPECT_EQ(found.count, 2);
    EXPECT_THAT(found.rows, IsEmpty());
}

TEST_F(LanguageQuery, WithoutAListCounts) {
    UseRows("a 1\na 2\n");
    const VELSysNLSEntry pattern;
    VELSysNLSFilter filter{};
    filter.pattern = &pattern;
    for (const int capacity : {0, 1, All}) {
        int count = capacity;
        EXPECT_EQ(GetNLSInformationA(filter, 0, count, nullptr), VEL::StatusOk);
        EXPECT_EQ(count, 2);
    }
}

TEST_F(LanguageQuery, WithoutAMatchLeavesTheList) {
    UseRows("a 1\n");
    const VELSysNLSEntry pattern{"b", "", "", ""};
    VELSysNLSFilter filter{};
    filter.pattern = &pattern;
    VELSysNLSNode mark{};
    VELSysNLSNode* list = &mark;
    int count = All;
    EXPECT_EQ(GetNLSInformationA(filter, 0, count, &list), VEL::StatusOk);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(list, &mark);
}

TEST_F(LanguageQuery, DoesNotReadTheSecondWordOfAPattern) {
    UseRows("a 1\n");
    const VELSysNLSEntry pattern;
    VELSysNLSFilter filter{};
    filter.pattern = &pattern;
    filter.argument = reinterpret_cast<void*>(-1L);
    EXPECT_EQ(Find(filter, 0, All).count, 1);
}

// GetNLSInformationA by predicate.

TEST_F(LanguageQuery, ByPredicateGivesItTheArgument) {
    UseRows("a 1\nb 2\na 3\n");
    std::string wanted = "a";
    const auto isWanted = [](const VELSysNLSEntry& row, void* argument) {
        return row.language == *static_cast<const std::string*>(argument) ? -7 : 0;
    };
    const Found found = FindPredicate(isWanted, &wanted);
    EXPECT_EQ(found.status, VEL::StatusOk);
    EXPECT_EQ(found.count, 2);
    EXPECT_THAT(found.rows, ElementsAre("a|1||", "a|3||"));
    EXPECT_THAT(FindPredicate(isWanted, &wanted, 1).rows, ElementsAre("a|1||"));
}

TEST_F(LanguageQuery, AsksThePredicateForEachRowInOrder) {
    UseRows("a\nb\n\nc\n");
    std::vector<std::string> asked;
    const auto note = [](const VELSysNLSEntry& row, void* argument) {
        static_cast<std::vector<std::string>*>(argument)->push_back(row.language);
        return 1;
    };
    EXPECT_EQ(FindPredicate(note, &asked, 1).count, 4);
    EXPECT_THAT(asked, ElementsAre("a", "b", "", "c"));
}

TEST_F(LanguageQuery, APredicateMayQueryItself) {
    UseRows("a x y z\nb x y w\n");
    const auto hasCodePage = [](const VELSysNLSEntry& row, void*) {
        return GetCodePageByLanguage(row.language.c_str(), nullptr) == "w" ? 1 : 0;
    };
    EXPECT_THAT(FindPredicate(hasCodePage, nullptr).rows, ElementsAre("b|x|y|w"));
    EXPECT_EQ(RowsFound().size(), 2U);
}

// Statuses, in the order in which they are found.

TEST_F(LanguageQuery, RefusesOtherModesFirst) {
    RemoveTable();
    for (const int mode : {2, 3, 127, 0x80, -2, -1}) {
        const Found found = Find({}, static_cast<char>(mode), 5);
        EXPECT_EQ(found.status, static_cast<int>(0x80070057)) << mode;
        EXPECT_EQ(found.count, 0);
    }
}

TEST_F(LanguageQuery, MissesTheTableNext) {
    RemoveTable();
    for (const char mode : {0, 1}) {
        const Found found = Find({}, mode, 5);
        EXPECT_EQ(found.status, static_cast<int>(0x8000ffff));
        EXPECT_EQ(found.count, 0);
    }
}

TEST_F(LanguageQuery, RefusesANullPatternLast) {
    for (const char mode : {0, 1}) {
        const Found found = Find({}, mode, 5);
        EXPECT_EQ(found.status, static_cast<int>(0x80004005));
        EXPECT_EQ(found.count, 0);
    }
}

// What follows from a language or a code page.

TEST_F(LanguageQuery, TheCodePageOfALanguageIsThatOfItsFirstRow) {
    int status = Untouched;
    EXPECT_EQ(GetCodePageByLanguage("Japanese", &status), "EUC-JP");
    EXPECT_EQ(status, VEL::StatusOk);
    EXPECT_EQ(GetCodePageByLanguage("French", nullptr), "UTF-8");
}

TEST_F(LanguageQuery, AnUnknownLanguageHasNoCodePage) {
    for (const char* language : {static_cast<const char*>(nullptr), "Klingon", "japanese", "Japan"}) {
        int status = Untouched;
        EXPECT_EQ(GetCodePageByLanguage(language, &status), "");
        EXPECT_EQ(status, static_cast<int>(0x80004005));
        EXPECT_EQ(GetCodePageByLanguage(language, nullptr), "");
    }
}

TEST_F(LanguageQuery, ARowMayLackACodePage) {
    UseRows("a\na b c d\n");
    int status = Untouched;
    EXPECT_EQ(GetCodePageByLanguage("a", &status), "");
    EXPECT_EQ(status, VEL::StatusOk);
}

TEST_F(LanguageQuery, CodePagesOfIdeographsHaveANumber) {
    EXPECT_EQ(GetLocaleTypeFromCP("EUC-JP"), 1);
    EXPECT_EQ(GetLocaleTypeFromCP("SHIFT_JIS"), 1);
    EXPECT_EQ(GetLocaleTypeFromCP("EUC-KR"), 2);
    EXPECT_EQ(GetLocaleTypeFromCP("BIG5"), 3);
    EXPECT_EQ(GetLocaleTypeFromCP("GB18030"), 4);
    EXPECT_EQ(GetLocaleTypeFromCP("EUC-CN"), 4);
    EXPECT_EQ(GetLocaleTypeFromCP("UTF-8"), 0);
    EXPECT_EQ(GetLocaleTypeFromCP("ISO-8859-1"), 0);
    EXPECT_EQ(GetLocaleTypeFromCP("euc-jp"), 0);
    EXPECT_EQ(GetLocaleTypeFromCP("unknown"), 0);
    EXPECT_EQ(GetLocaleTypeFromCP(nullptr), 0);
}

TEST_F(LanguageQuery, OfASharedCodePageTheLastLanguageCounts) {
    UseRows("Korean k k UTF-8\nJapanese j j UTF-8\nEnglish e e UTF-8\nKorean k k X\nTraditional_Chinese t t X\n");
    EXPECT_EQ(GetLocaleTypeFromCP("UTF-8"), 1) << "English is none of them";
    EXPECT_EQ(GetLocaleTypeFromCP("X"), 3);
    RemoveTable();
    EXPECT_EQ(GetLocaleTypeFromCP("UTF-8"), 0);
}

TEST_F(LanguageQuery, LanguagesReplaceWhatTheSetHeld) {
    UseRows("b\na\nb\n\nEnglish en de_DE.ISO-8859-1 ISO-8859-1\n");
    std::set<std::string> languages = {"old"};
    GetSupportedLanguageList(languages);
    EXPECT_THAT(languages, ElementsAre("", "English", "a", "b"));
}

// The usual code pages.

namespace {

struct UsualCodePage {
    const char* language;
    const char* codePage;
};

void PrintTo(const UsualCodePage& usual, std::ostream* out) {
    *out << usual.language;
}

class UsualCodePages : public testing::TestWithParam<UsualCodePage> {};

/// What `strncpy` makes of 85 bytes, in a field that is filled with "#".
struct Field {
    char bytes[90];
    Field() { std::memset(bytes, '#', sizeof bytes); }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, UsualCodePages,
                         testing::Values(UsualCodePage{"English", "ISO-8859-1"}, UsualCodePage{"French", "ISO-8859-1"},
                                         UsualCodePage{"German", "ISO-8859-1"}, UsualCodePage{"Dutch", "ISO-8859-1"},
                                         UsualCodePage{"Danish", "ISO-8859-1"}, UsualCodePage{"Spanish", "ISO-8859-1"},
                                         UsualCodePage{"Italian", "ISO-8859-1"},
                                         UsualCodePage{"Portuguese", "ISO-8859-1"},
                                         UsualCodePage{"Swedish", "ISO-8859-1"}, UsualCodePage{"Finnish", "ISO-8859-1"},
                                         UsualCodePage{"Icelandic", "ISO-8859-1"}, UsualCodePage{"Japanese", "IBM-932"},
                                         UsualCodePage{"Simplified_Chinese", "EUC-CN"},
                                         UsualCodePage{"Korean", "EUC-KR"}, UsualCodePage{"Czech", "ISO-8859-2"},
                                         UsualCodePage{"Polish", "ISO-8859-2"}, UsualCodePage{"Russian", "ISO-8859-5"},
                                         UsualCodePage{"Traditional_Chinese", "CN-BIG5"}),
                         [](const auto& test) { return std::string(test.param.language); });

TEST_P(UsualCodePages, AreCopiedAndFilledUpWithZeros) {
    Field expected;
    std::strncpy(expected.bytes, GetParam().codePage, 85);
    Field field;
    EXPECT_EQ(VELGetANSICodePageByLanguage(GetParam().language, field.bytes), VEL::StatusOk);
    EXPECT_EQ(std::memcmp(field.bytes, expected.bytes, sizeof field.bytes), 0) << field.bytes;
    EXPECT_EQ(VELGetANSICodePageByLanguage(GetParam().language, nullptr), VEL::StatusOk);
}

TEST(UsualCodePage, OfAnotherLanguageIsNone) {
    const Field untouched;
    Field field;
    for (const char* language : {"", "Klingon", "english", "English ", "Englis", "Chinese"}) {
        EXPECT_EQ(VELGetANSICodePageByLanguage(language, field.bytes), static_cast<int>(0x80070002)) << language;
    }
    EXPECT_EQ(VELGetANSICodePageByLanguage(nullptr, field.bytes), static_cast<int>(0x80070057));
    EXPECT_EQ(std::memcmp(field.bytes, untouched.bytes, sizeof field.bytes), 0);
}

TEST(PointerCheck, IsTrueForNull) {
    int object = 0;
    EXPECT_TRUE(VELSysIsPointerNull(nullptr));
    EXPECT_FALSE(VELSysIsPointerNull(&object));
}

// The record.

TEST_F(LanguageQuery, TheRecordWantsAPlace) {
    EXPECT_EQ(GetEnvNLSData(nullptr), static_cast<int>(0x80070057));
}

TEST_F(LanguageQuery, TheRecordIsFilledWhole) {
    VELSysNLSEnv record;
    std::memset(static_cast<void*>(&record), '#', sizeof record);
    EXPECT_EQ(GetEnvNLSData(&record), VEL::StatusOk);
    EXPECT_STREQ(record.language, "German");
    EXPECT_STREQ(record.alias, "de");
    EXPECT_STREQ(record.langString, "de_DE.ISO-8859-1");
    EXPECT_STREQ(record.codePage, "ISO-8859-1");
    EXPECT_STREQ(record.decimalPoint, L",");
    EXPECT_EQ(record.maxCharSize, 1);
}

TEST_F(LanguageQuery, TheRecordIsInALanguagePreferredSince) {
    EXPECT_EQ(LanguageChild::Record(), "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1");
    VEL::internal::KeepPreferredLanguage("Japanese");
    EXPECT_EQ(LanguageChild::Record(), "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3") << "though no change is announced";
    VEL::internal::KeepPreferredLanguage("French");
    EXPECT_EQ(VELGetMultiByteCharMaxSize(), 4);
    VEL::internal::KeepPreferredLanguage(nullptr);
    EXPECT_EQ(LanguageChild::Record(), "French|fr|fr_FR.UTF-8|UTF-8|,|4") << "what is decided stands";
}

TEST_F(LanguageQuery, AnyLangIsEndured) {
    const std::string large(100000, '\xE9');
    for (const std::string& lang : {large, "x." + large, std::string(), std::string("\xFF.\xFE"), std::string(".")}) {
        setenv("LANG", lang.c_str(), 1);
        EXPECT_EQ(InitNLSCore(nullptr, true), 4);
        EXPECT_EQ(VELSysNLS::Instance().environmentLanguage, lang);
        VELSysNLSEnv record;
        EXPECT_EQ(GetEnvNLSData(&record), VEL::StatusOk);
        EXPECT_STREQ(record.language, "English") << lang.substr(0, 9);
        char name[VELSysCLocale::EnvironNameSize];
        EXPECT_EQ(VELSysCLocaleEnvironGet(name), name);
    }
}

TEST_F(LanguageQuery, TheLongestLocaleOfATableIsAcceptedWhole) {
    // A list of all categories is a locale's name, too.
    std::string list;
    for (const char* const category :
         {"LC_CTYPE", "LC_NUMERIC", "LC_TIME", "LC_COLLATE", "LC_MONETARY", "LC_MESSAGES", "LC_PAPER", "LC_NAME",
          "LC_ADDRESS", "LC_TELEPHONE", "LC_MEASUREMENT", "LC_IDENTIFICATION"}) {
        list += (list.empty() ? "" : ";") + std::string(category) + '=' + (list.empty() ? "C" : TestLocales::German);
    }
    UseRows("L a " + list + " ISO-8859-1\n");
    EXPECT_EQ(InitNLSCore("L", true), 4);
    char name[VELSysCLocale::EnvironNameSize];
    EXPECT_EQ(VELSysCLocaleEnvironGet(name), name);
    EXPECT_EQ(name, list);
}

TEST_F(LanguageQuery, TheLongestCharacterIsTheLocales) {
    EXPECT_EQ(VELGetMultiByteCharMaxSize(), 1);
    InitNLSCore("Japanese", false);
    EXPECT_EQ(VELGetMultiByteCharMaxSize(), 3);
    InitNLSCore("French", false);
    EXPECT_EQ(VELGetMultiByteCharMaxSize(), 4);
}

TEST_F(LanguageQuery, TheAcceptedLocaleIsCopied) {
    char name[VELSysCLocale::EnvironNameSize];
    EXPECT_EQ(VELSysCLocaleEnvironGet(name), name);
    EXPECT_STREQ(name, "") << "the environment's";
    InitNLSCore("Japanese", false);
    EXPECT_EQ(VELSysCLocaleEnvironGet(name), name);
    EXPECT_STREQ(name, TestLocales::Japanese);
}

TEST_F(LanguageQuery, TheAcceptedLocaleWithoutAPlaceIsDecidedOnly) {
    EXPECT_EQ(VELSysCLocaleEnvironGet(nullptr), nullptr);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), TestLocales::German);
    EXPECT_EQ(InitNLSCore(nullptr, false), 1);
    EXPECT_EQ(VELSysCLocaleEnvironGet(nullptr), nullptr);
}

TEST_F(LanguageQuery, ALocaleStringIsTranslated) {
    char name[40];
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString("ja_JP.SJIS", name, sizeof name), name);
    EXPECT_STREQ(name, "ja_JP.SJIS");
    EXPECT_STREQ(VELSysCLocale::GetLocaleStringFromLangString("de_DE.ISO-8859-1", name, sizeof name), "");
    EXPECT_STREQ(VELSysCLocale::GetLocaleStringFromLangString("de_DE.ISO-8859-15", name, sizeof name),
                 "de_DE.ISO-8859-15");
    EXPECT_STREQ(VELSysCLocale::GetLocaleStringFromLangString("", name, sizeof name), "");
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString("x", nullptr, 5), nullptr);
}

TEST_F(LanguageQuery, ALocaleStringIsTranslatedByTheLangOfTheDecision) {
    char name[40];
    InitNLSCore(nullptr, false);
    setenv("LANG", "ja_JP.SJIS", 1);
    EXPECT_STREQ(VELSysCLocale::GetLocaleStringFromLangString("de_DE.ISO-8859-1", name, sizeof name), "");
    EXPECT_STREQ(VELSysCLocale::GetLocaleStringFromLangString("ja_JP.SJIS", name, sizeof name), "ja_JP.SJIS");
    DeInitNLSCore(0);
    EXPECT_STREQ(VELSysCLocale::GetLocaleStringFromLangString("ja_JP.SJIS", name, sizeof name), "");
}

TEST_F(LanguageQuery, ALocaleStringIsCopiedAsStrncpyDoes) {
    Field field;
    Field expected;
    std::memcpy(expected.bytes, "ja_JP", 5);
    VELSysCLocale::GetLocaleStringFromLangString("ja_JP.SJIS", field.bytes, 5);
    EXPECT_EQ(std::memcmp(field.bytes, expected.bytes, sizeof field.bytes), 0) << "cut without a terminator";
    VELSysCLocale::GetLocaleStringFromLangString("x", field.bytes, 0);
    EXPECT_EQ(std::memcmp(field.bytes, expected.bytes, sizeof field.bytes), 0);
    std::memcpy(expected.bytes, "ab\0\0\0\0", 6);
    VELSysCLocale::GetLocaleStringFromLangString("ab", field.bytes, 6);
    EXPECT_EQ(std::memcmp(field.bytes, expected.bytes, sizeof field.bytes), 0) << "filled up with zeros";
}

TEST_F(LanguageQuery, ALocaleStringIsCopiedOntoItself) {
    char name[16] = "ja_JP.SJIS";
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString(name, name, sizeof name), name);
    EXPECT_STREQ(name, "ja_JP.SJIS");
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString(name + 1, name, sizeof name), name);
    EXPECT_STREQ(name, "a_JP.SJIS") << "to the front";
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString(name, name + 2, sizeof name - 2), name + 2);
    EXPECT_STREQ(name, "a_a_JP.SJIS") << "to the back";
    std::strcpy(name, "ja_JP.SJIS");
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString(name, name + 4, 4), name + 4);
    EXPECT_EQ(std::string(name, sizeof name), std::string("ja_Jja_JIS\0\0\0\0\0\0", sizeof name)) << "cut";
}

TEST_F(LanguageQuery, ANullLocaleStringIsHarmless) {
    char name[40] = "old";
    EXPECT_EQ(VELSysCLocale::GetLocaleStringFromLangString(nullptr, name, sizeof name), name);
}

// The standard library's locale.

TEST_F(LanguageQuery, TheStandardLocaleIsTheDefaultOneUntilThereIsADecision) {
    RemoveTable();
    const std::shared_ptr<const std::locale> first = VELGetCxxLocale();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(*first, std::locale());
    EXPECT_NE(first, VELGetCxxLocale()) << "not kept";
    std::locale::global(std::locale(std::locale(), new VELLocalePunctFacet<char>('#')));
    EXPECT_EQ(std::use_facet<std::numpunct<char>>(*VELGetCxxLocale()).decimal_point(), '#');
}

TEST_F(LanguageQuery, TheStandardLocaleIsPublishedByADecision) {
    EXPECT_EQ(VELGetCxxLocale()->name(), "C") << "asking for it decides nothing";
    InitNLSCore(nullptr, false);
    const std::shared_ptr<const std::locale> german = VELGetCxxLocale();
    EXPECT_EQ(german->name(), "de_DE.ISO-8859-1");
    EXPECT_EQ(german, VELGetCxxLocale());
    InitNLSCore("Japanese", false);
    EXPECT_EQ(VELGetCxxLocale()->name(), TestLocales::Japanese);
    EXPECT_EQ(german->name(), "de_DE.ISO-8859-1") << "kept by its reader";
}

TEST(LocalePunctFacet, HasOnePointAndNoThousands) {
    const std::locale locale(std::locale(std::locale::classic(), new VELLocalePunctFacet<char>(',')),
                             new VELLocalePunctFacet<wchar_t>(L'\u066B'));
    EXPECT_EQ(std::use_facet<std::numpunct<char>>(locale).decimal_point(), ',');
    EXPECT_EQ(std::use_facet<std::numpunct<char>>(locale).thousands_sep(), '\0');
    EXPECT_EQ(std::use_facet<std::numpunct<char>>(locale).grouping(), "");
    EXPECT_EQ(std::use_facet<std::numpunct<wchar_t>>(locale).decimal_point(), L'\u066B');
    EXPECT_EQ(std::use_facet<std::numpunct<wchar_t>>(locale).thousands_sep(), L'\0');
}

// A thread with a locale of its own keeps the C library from taking another.

TEST_F(LanguageQuery, OnAThreadWithALocaleOfItsOwnNoneIsAccepted) {
    const VELSysCLocale::ThreadLC scope(LC_ALL, TestLocales::Japanese, nullptr);
    EXPECT_EQ(InitNLSCore(nullptr, true), 4);
    char name[VELSysCLocale::EnvironNameSize];
    EXPECT_STREQ(VELSysCLocaleEnvironGet(name), "");
    VELSysNLSEnv record;
    GetEnvNLSData(&record);
    EXPECT_STREQ(record.language, "German");
    EXPECT_STREQ(record.decimalPoint, L".");
    EXPECT_EQ(record.maxCharSize, 1);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

// When a decision is due.

namespace {

struct Due {
    bool isRequired;
    bool fromEnvironment;
    bool fromLanguage;
    bool operator==(const Due&) const = default;
};

Due DueIn(const char* language) {
    Due due{false, true, true};
    due.isRequired = VELSysNLS::Instance().IsInitNLSRequired(language, due.fromEnvironment, due.fromLanguage);
    return due;
}

constexpr Due NotDue = {false, false, false};
constexpr Due FromEnvironment = {true, true, false};
constexpr Due FromLanguage = {true, false, true};

} // namespace

TEST_F(LanguageQuery, ADecisionIsDueAtFirst) {
    EXPECT_EQ(DueIn(nullptr), FromEnvironment);
    EXPECT_EQ(DueIn(""), FromEnvironment);
    EXPECT_EQ(DueIn("English"), FromLanguage) << "the language that stands at first";
    EXPECT_EQ(DueIn("German"), FromLanguage);
}

TEST_F(LanguageQuery, ADecisionIsDueForAnotherLanguageOrAnEmptyOne) {
    InitNLSCore(nullptr, false);
    EXPECT_EQ(DueIn(nullptr), NotDue);
    EXPECT_EQ(DueIn(""), FromEnvironment);
    EXPECT_EQ(DueIn("German"), NotDue);
    EXPECT_EQ(DueIn("English"), FromLanguage);
    DeInitNLSCore(0);
    EXPECT_EQ(DueIn(nullptr), FromEnvironment);
    EXPECT_EQ(DueIn("German"), FromLanguage);
}

TEST_F(LanguageQuery, WithoutATableADecisionStaysDue) {
    RemoveTable();
    EXPECT_EQ(InitNLSCore(nullptr, false), 0);
    EXPECT_EQ(DueIn(nullptr), FromEnvironment);
}

TEST_F(LanguageQuery, AFurtherWideTextStaysEmpty) {
    InitNLSCore(nullptr, false);
    EXPECT_EQ(VELSysNLS::Instance().reserved, L"");
    EXPECT_EQ(VELSysNLS::Instance().environmentLanguage, "de_DE.ISO-8859-1");
}
