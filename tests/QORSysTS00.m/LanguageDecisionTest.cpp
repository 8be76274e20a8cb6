/// @file
/// The language decision as a table: what the environment, the language table, the preferred language, the earlier
/// decision and the locales at hand make of it, and what is said on the way.

#include "LanguageChild.h"
#include "TestLocales.h"

#include <gmock/gmock.h>
#include <ostream>

namespace {

using LanguageChild::Outcome;
using LanguageChild::Play;
using LanguageChild::Rows;
using LanguageChild::Setting;
using LanguageChild::Table;
using testing::ElementsAre;
using testing::ElementsAreArray;

using Lines = std::vector<std::string>;

const std::string Usual = Table(Rows);
const std::string SetsNothing = "[PID][VELSysCLocale::ThreadLC][WARNING] MT-unsafe environment! GetLCConv is taking a "
                                "global lock - Locale per-thread: false | MT-safe localeconv: false\n\n";
const std::string FallsBack = "[PID][VELSysNLS][WARNING] Failed to validate environment settings => Falling back to "
                              "default locale settings\n";

std::string Read(const std::string& lang) {
    return "[PID][VELSysNLS][INFO] LANG variable: \"" + lang + "\"\n";
}

std::string Asked(const std::string& name) {
    return "[PID][VELSysNLSCore][INFO] Environment locale: \"" + name + "\"\n";
}

/// The lines behind the choice of a row; without `accepted` the C library refuses the locale.
std::string Chosen(const std::string& langString, const std::string& translation, const std::string& accepted = "") {
    const std::string text = "[PID][VELSysNLS][INFO] Lang string (in config file format): \"" + langString + "\"\n" +
                             "[PID][VELSysNLS][INFO] Locale string (translated): \"" + translation + "\"\n";
    return accepted.empty()
               ? text
               : text + "[PID][VELSysNLS][INFO] libC setlocale success: \"" + accepted + "\"\n" + SetsNothing;
}

/// A row that stands under the very name that LANG has.
std::string ChosenByName(const std::string& lang) {
    return Read(lang) + Chosen(lang, "", lang);
}

/// A row with another locale string.
std::string ChosenInstead(const std::string& lang, const std::string& langString) {
    return Read(lang) + Chosen(langString, langString, langString);
}

struct Case {
    const char* name;
    Setting setting;
    Lines report;
    std::string out;
    std::string err = {};
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

class LanguageDecision : public testing::TestWithParam<Case> {};

const Lines InitAndRecord = {"init", "record"};
const Lines InitAndAll = {"init", "record", "accepted", "size"};

const Case ByName[] = {
    {"JapaneseEUC",
     {"ja_JP.EUC-JP", Usual, InitAndAll},
     {"init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3", "accepted ", "size 3"},
     ChosenByName("ja_JP.EUC-JP")},
    {"JapaneseShifted",
     {"ja_JP.SJIS", Usual, InitAndAll},
     {"init 4", "Japanese|ja2|ja_JP.SJIS|SHIFT_JIS|.|2", "accepted ", "size 2"},
     ChosenByName("ja_JP.SJIS")},
    {"Korean",
     {"ko_KR.EUC-KR", Usual, InitAndAll},
     {"init 4", "Korean|ko|ko_KR.EUC-KR|EUC-KR|.|2", "accepted ", "size 2"},
     ChosenByName("ko_KR.EUC-KR")},
    {"SimplifiedChinese",
     {"zh_CN.GB18030", Usual, InitAndAll},
     {"init 4", "Simplified_Chinese|zh|zh_CN.GB18030|GB18030|.|4", "accepted ", "size 4"},
     ChosenByName("zh_CN.GB18030")},
    {"SimplifiedChineseOld",
     {"zh_CN.GB2312", Usual, InitAndAll},
     {"init 4", "Simplified_Chinese|zh2|zh_CN.GB2312|EUC-CN|.|2", "accepted ", "size 2"},
     ChosenByName("zh_CN.GB2312")},
    {"TraditionalChinese",
     {"zh_TW.BIG5", Usual, InitAndAll},
     {"init 4", "Traditional_Chinese|tw|zh_TW.BIG5|BIG5|.|2", "accepted ", "size 2"},
     ChosenByName("zh_TW.BIG5")},
    {"German",
     {"de_DE.ISO-8859-1", Usual, InitAndAll},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1", "accepted ", "size 1"},
     ChosenByName("de_DE.ISO-8859-1")},
    {"FrenchInUTF8HasFour",
     {"fr_FR.UTF-8", Usual, InitAndAll},
     {"init 4", "French|fr|fr_FR.UTF-8|UTF-8|,|4", "accepted ", "size 4"},
     ChosenByName("fr_FR.UTF-8")},
    // The C library is asked for the environment's locale, which is "C" then.
    {"UnsetLangIsAmerican",
     {std::nullopt, Usual, InitAndAll},
     {"init 4", "English|en|en_US.UTF-8|UTF-8|.|4", "accepted ", "size 4"},
     Read("en_US.UTF-8") + Chosen("en_US.UTF-8", "", "C")},
};

const Case ByPattern[] = {
    {"WithoutAPointTheFirstRowThatContainsItFits",
     {"ja_JP", Usual, InitAndAll},
     {"init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3", "accepted ja_JP.EUC-JP", "size 3"},
     ChosenInstead("ja_JP", "ja_JP.EUC-JP")},
    {"APieceOfALocaleStringFits",
     {"P.SJ", Usual, InitAndRecord},
     {"init 4", "Japanese|ja2|ja_JP.SJIS|SHIFT_JIS|.|2"},
     ChosenInstead("P.SJ", "ja_JP.SJIS")},
    {"AnotherCodeSetTakesTheFirstRowOfTheLocale",
     {"ja_JP.UTF-8", Usual, InitAndRecord},
     {"init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3"},
     ChosenInstead("ja_JP.UTF-8", "ja_JP.EUC-JP")},
    {"TheWholeTextIsLookedForFirst",
     {"ja_JP.SJIS", Table("X x ja_JP.EUC-JP EUC-JP\nX y ja_JP.SJIS SHIFT_JIS\n"), InitAndRecord},
     {"init 4", "X|y|ja_JP.SJIS|SHIFT_JIS|.|2"},
     ChosenByName("ja_JP.SJIS")},
    {"AModifierBelongsToTheCodeSet",
     {"de_DE.ISO-8859-1@euro", Usual, InitAndRecord},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1"},
     ChosenInstead("de_DE.ISO-8859-1@euro", "de_DE.ISO-8859-1")},
    {"TheBaseEndsAtTheLastPoint",
     {"fr_FR.X.Y", Table("French a fr_FR.UTF-8 A\nFrench b fr_FR.X B\n"), {"init"}},
     {"init 4"},
     Read("fr_FR.X.Y") + Chosen("fr_FR.X", "fr_FR.X")},
    {"TheBaseStandsInFront",
     {"JP.UTF-8", Table("English e en_US.UTF-8 UTF-16\n" + Rows), InitAndRecord},
     {"init 4", "English|en|en_US.UTF-8|UTF-8|.|4"},
     Read("JP.UTF-8") + Asked("null") + Chosen("en_US.UTF-8", "en_US.UTF-8", "en_US.UTF-8"),
     FallsBack},
    {"AnEmptyBaseIsInFrontOfAll",
     {".XYZ", Table("German de de_DE.ISO-8859-1 ISO-8859-1\n" + Rows), InitAndRecord},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1"},
     ChosenInstead(".XYZ", "de_DE.ISO-8859-1")},
    {"LettersCountAsTheyAre",
     {"ja_jp.SJIS", Usual, InitAndRecord},
     {"init 4", "English|en|en_US.UTF-8|UTF-8|.|4"},
     Read("ja_jp.SJIS") + Asked("null") + Chosen("en_US.UTF-8", "en_US.UTF-8", "en_US.UTF-8"),
     FallsBack},
    {"ARowWithoutALocaleStringFitsNothing",
     {"ja_JP", Table("Japanese\n\n" + Rows), InitAndRecord},
     {"init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3"},
     ChosenInstead("ja_JP", "ja_JP.EUC-JP")},
    {"CTakesTheFirstCapitalC",
     {"C", Usual, InitAndRecord},
     {"init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3"},
     ChosenInstead("C", "ja_JP.EUC-JP")},
    {"CWithoutACapitalCIsEnglish",
     {"C", Table("German c de_DE.ISO-8859-1 C\nEnglish C en_US.UTF-8 UTF-8\n"), InitAndRecord},
     {"init 4", "English|C|en_US.UTF-8|UTF-8|.|4"},
     Read("C") + Asked("C") + Chosen("en_US.UTF-8", "en_US.UTF-8", "en_US.UTF-8"),
     FallsBack},
};

const std::map<std::string, std::string> GermanCategories = {{"LC_ALL", "de_DE.ISO-8859-1"}};

const Case ByEnvironmentLocale[] = {
    {"TheEnvironmentsLocaleIsLookedForWhole",
     {"xx_XX.UTF-8", Table("X d de_AT.UTF-8 UTF-8\n" + Rows), InitAndAll, GermanCategories},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1", "accepted de_DE.ISO-8859-1", "size 1"},
     Read("xx_XX.UTF-8") + Asked("de_DE.ISO-8859-1") +
         Chosen("de_DE.ISO-8859-1", "de_DE.ISO-8859-1", "de_DE.ISO-8859-1")},
    {"ThenForItsFirstTwoCharacters",
     {"xx_XX.UTF-8", Table("X a d x\nX b\nX c dE x\nX d de x\nX e de_AT x\n"), {"init"}, GermanCategories},
     {"init 4"},
     Read("xx_XX.UTF-8") + Asked("de_DE.ISO-8859-1") + Chosen("de", "de")},
    {"AndIfNothingFitsEnglishIs",
     {"xx_XX.UTF-8", Table("X a d x\nEnglish en en_US.UTF-8 UTF-8\n"), InitAndRecord, GermanCategories},
     {"init 4", "English|en|en_US.UTF-8|UTF-8|.|4"},
     Read("xx_XX.UTF-8") + Asked("de_DE.ISO-8859-1") + Chosen("en_US.UTF-8", "en_US.UTF-8", "en_US.UTF-8"),
     FallsBack},
    {"AnEmptyLangAsksTheCLibraryAtOnce",
     {"", Usual, InitAndRecord, GermanCategories},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1"},
     Read("") + Asked("de_DE.ISO-8859-1") + Chosen("de_DE.ISO-8859-1", "de_DE.ISO-8859-1", "de_DE.ISO-8859-1")},
    {"AnEmptyLangIsCThere",
     {"", Usual, InitAndRecord},
     {"init 4", "English|en|en_US.UTF-8|UTF-8|.|4"},
     Read("") + Asked("C") + Chosen("en_US.UTF-8", "en_US.UTF-8", "en_US.UTF-8"),
     FallsBack},
    {"AMixedLocaleIsTakenByItsText",
     {"en_US.UTF-8", Table("X l LC x\n"), {"init"}, {{"LC_NUMERIC", "de_DE.ISO-8859-1"}}},
     {"init 4"},
     Read("en_US.UTF-8") +
         Asked("LC_CTYPE=en_US.UTF-8;LC_NUMERIC=de_DE.ISO-8859-1;LC_TIME=en_US.UTF-8;LC_COLLATE=en_US.UTF-8;"
               "LC_MONETARY=en_US.UTF-8;LC_MESSAGES=en_US.UTF-8;LC_PAPER=en_US.UTF-8;LC_NAME=en_US.UTF-8;"
               "LC_ADDRESS=en_US.UTF-8;LC_TELEPHONE=en_US.UTF-8;LC_MEASUREMENT=en_US.UTF-8;"
               "LC_IDENTIFICATION=en_US.UTF-8") +
         Chosen("LC", "LC")},
};

/// What English there is for a LANG that nothing fits.
Case Fallback(const char* name, const std::string& lang, const std::string& rows, const std::string& langString,
              const std::string& record) {
    return {name,
            {lang, Table(rows), InitAndRecord},
            {"init 4", record},
            Read(lang) + Asked("null") + Chosen(langString, langString),
            FallsBack};
}

const Case ByFallback[] = {
    Fallback("OneRowOfEnglishIsTakenAnyway", "xx_XX.UTF-8", "English a en_AA A\n", "en_AA", "English|a|en_AA|A|.|1"),
    Fallback("ALaterRowWithTheCodeSetIsPreferred", "xx_XX.B",
             "French f f B\nEnglish a en_AA A\nFrench f f B\nEnglish b en_BB B\nEnglish c en_CC B\n", "en_BB",
             "English|b|en_BB|B|.|1"),
    Fallback("TheFirstRowNeedNotHaveIt", "xx_XX.A", "English a en_AA A\nEnglish b en_BB A\n", "en_BB",
             "English|b|en_BB|A|.|1"),
    Fallback("WithoutTheCodeSetTheFirstRowIs", "xx_XX.D", "English a en_AA A\nEnglish b en_BB B\n", "en_AA",
             "English|a|en_AA|A|.|1"),
    Fallback("TheCodeSetBeginsAtTheLastPoint", "xx_XX.A.B",
             "English a en_AA A\nEnglish b en_BB A.B\nEnglish c en_CC B\n", "en_CC", "English|c|en_CC|B|.|1"),
    Fallback("WithoutAPointTheCodeSetIsEmptyAsMissingOnesAre", "xx",
             "English a en_AA A\nEnglish b en_BB\nEnglish c en_CC xx\n", "en_BB", "English|b|en_BB||.|1"),
    Fallback("UTF8HasFourWithoutALocale", "xx_XX.D", "English a en_AA UTF-8\n", "en_AA", "English|a|en_AA|UTF-8|.|4"),
};

const Case ByLanguage[] = {
    {"ALanguageIsItsFirstRow",
     {"fr_FR.UTF-8", Usual, {"init=Japanese", "record", "accepted"}},
     {"init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3", "accepted ja_JP.EUC-JP"},
     ChosenInstead("fr_FR.UTF-8", "ja_JP.EUC-JP")},
    {"ALanguageWhoseLocaleIsTheEnvironments",
     {"ja_JP.EUC-JP", Usual, {"init=Japanese", "accepted"}},
     {"init 4", "accepted "},
     ChosenByName("ja_JP.EUC-JP")},
    {"ALanguageThatStandsIsNotDecidedAgain",
     {"fr_FR.UTF-8", Usual, {"init=German", "init=German", "init"}},
     {"init 4", "init 1", "init 1"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1")},
    {"AnotherLanguageIs",
     {"fr_FR.UTF-8", Usual, {"init=German", "init=Korean", "record"}},
     {"init 4", "init 4", "Korean|ko|ko_KR.EUC-KR|EUC-KR|.|2"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1") + ChosenInstead("fr_FR.UTF-8", "ko_KR.EUC-KR")},
    {"AnUnknownLanguageIsTheEnvironmentsEachTime",
     {"fr_FR.UTF-8", Usual, {"init=German", "init=Klingon", "init=Klingon", "record"}},
     {"init 4", "init 4", "init 4", "French|fr|fr_FR.UTF-8|UTF-8|,|4"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1") + ChosenByName("fr_FR.UTF-8") + ChosenByName("fr_FR.UTF-8")},
    {"EnglishIsDecidedAtFirst",
     {"fr_FR.UTF-8", Usual, {"init=English", "init=English", "record"}},
     {"init 4", "init 1", "English|en|en_US.UTF-8|UTF-8|.|4"},
     ChosenInstead("fr_FR.UTF-8", "en_US.UTF-8")},
    {"AnEmptyLanguageIsTheEnvironmentsEachTime",
     {"fr_FR.UTF-8", Usual, {"init=German", "init=", "init=", "record"}},
     {"init 4", "init 4", "init 4", "French|fr|fr_FR.UTF-8|UTF-8|,|4"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1") + ChosenByName("fr_FR.UTF-8") + ChosenByName("fr_FR.UTF-8")},
    {"ALanguageIsComparedExactly",
     {"fr_FR.UTF-8", Usual, {"init=german", "record"}},
     {"init 4", "French|fr|fr_FR.UTF-8|UTF-8|,|4"},
     ChosenByName("fr_FR.UTF-8")},
};

const Case ByState[] = {
    {"ADecisionStands",
     {"de_DE.ISO-8859-1", Usual, {"init", "env=LANG=ja_JP.SJIS", "init", "record"}},
     {"init 4", "init 1", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1"},
     ChosenByName("de_DE.ISO-8859-1")},
    {"AnAnnouncedChangeIsDecided",
     {"de_DE.ISO-8859-1", Usual, {"init", "env=LANG=ja_JP.SJIS", "deinit", "init", "init", "record"}},
     {"init 4", "deinit 0", "init 4", "init 1", "Japanese|ja2|ja_JP.SJIS|SHIFT_JIS|.|2"},
     ChosenByName("de_DE.ISO-8859-1") + ChosenByName("ja_JP.SJIS")},
    {"AnAnnouncedChangeDecidesALanguageThatStands",
     {"fr_FR.UTF-8", Usual, {"init=German", "deinit", "init=German"}},
     {"init 4", "deinit 0", "init 4"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1") + ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1")},
    {"AQueryDecidesAnAnnouncedChange",
     {"de_DE.ISO-8859-1", Usual, {"init", "env=LANG=ja_JP.SJIS", "deinit", "size"}},
     {"init 4", "deinit 0", "size 2"},
     ChosenByName("de_DE.ISO-8859-1") + ChosenByName("ja_JP.SJIS")},
    {"ForcedItIsTheEnvironments",
     {"de_DE.ISO-8859-1", Usual, {"init", "env=LANG=ja_JP.SJIS", "force", "init"}},
     {"init 4", "init 4", "init 1"},
     ChosenByName("de_DE.ISO-8859-1") + ChosenByName("ja_JP.SJIS")},
    {"ForcedALanguageIsDecidedAgain",
     {"fr_FR.UTF-8", Usual, {"init=German", "force=German", "record"}},
     {"init 4", "init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1") + ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1")},
    {"WithoutAPointTheCodePageStaysWhereThereIsNoTable",
     {"ja_JP.SJIS", Usual, {"init", "env=LANG=fr_FR", "remove", "deinit", "init", "record", "size"}},
     {"init 4", "deinit 0", "init 0", "Japanese|ja2|fr_FR|SHIFT_JIS|.|2", "size 2"},
     ChosenByName("ja_JP.SJIS") + Read("fr_FR") + Read("fr_FR") + Read("fr_FR")},
    {"ARefusedLocaleLeavesTheDecimalPoint",
     {"fr_FR.UTF-8",
      Usual,
      {"init=German", "accepted", "env=LOCPATH=/nowhere", "init=Korean", "record", "accepted", "locale"}},
     {"init 4", "accepted de_DE.ISO-8859-1", "init 4", "Korean|ko|ko_KR.EUC-KR|EUC-KR|,|1", "accepted ",
      "locale de_DE.ISO-8859-1 ,, 46 46"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1") + Read("fr_FR.UTF-8") + Chosen("ko_KR.EUC-KR", "ko_KR.EUC-KR")},
    {"ARefusedLocaleHasOneByteACharacter",
     {"fr_FR.UTF-8", Usual, {"init=Japanese", "size", "env=LOCPATH=/nowhere", "init=Korean", "record", "size"}},
     {"init 4", "size 3", "init 4", "Korean|ko|ko_KR.EUC-KR|EUC-KR|.|1", "size 1"},
     ChosenInstead("fr_FR.UTF-8", "ja_JP.EUC-JP") + Read("fr_FR.UTF-8") + Chosen("ko_KR.EUC-KR", "ko_KR.EUC-KR")},
};

const Case WithoutATable[] = {
    {"TheCodeSetIsLangs",
     {"ja_JP.EUC-JP", std::nullopt, InitAndAll},
     {"init 0", "English||ja_JP.EUC-JP|EUC-JP|.|1", "accepted ", "size 1"},
     Read("ja_JP.EUC-JP") + Read("ja_JP.EUC-JP") + Read("ja_JP.EUC-JP") + Read("ja_JP.EUC-JP")},
    {"UnsetItIsUTF8",
     {std::nullopt, std::nullopt, InitAndRecord},
     {"init 0", "English||en_US.UTF-8|UTF-8|.|1"},
     Read("en_US.UTF-8") + Read("en_US.UTF-8")},
    {"TheCodeSetBeginsAtTheFirstPoint",
     {"a.B.c", std::nullopt, InitAndRecord},
     {"init 0", "English||a.B.c|B.c|.|1"},
     Read("a.B.c") + Read("a.B.c")},
    {"WithoutAPointTheCLibraryIsAsked",
     {"de_DE;comma", std::nullopt, {"init", "record", "process"}},
     {"init 0", "English||de_DE;comma|ISO-8859-1|.|1", "process de_DE;comma"},
     Read("de_DE;comma") + Read("de_DE;comma")},
    {"WithoutALocaleItsAnswerIsThatOfC",
     {"ja_JP", std::nullopt, {"init", "record", "process"}},
     {"init 0", "English||ja_JP|ANSI_X3.4-1968|.|1", "process C"},
     Read("ja_JP") + Read("ja_JP")},
    {"APointAtTheEndNamesNoCodeSet",
     {"ja_JP.", std::nullopt, {"codeset=X", "init", "record"}},
     {"init 0", "English||ja_JP.|X|.|1"},
     Read("ja_JP.") + Read("ja_JP.")},
    {"WithoutAnAnswerItIsUTF8",
     {"ja_JP", std::nullopt, {"codeset=", "init", "record"}},
     {"init 0", "English||ja_JP|UTF-8|.|1"},
     Read("ja_JP") + Read("ja_JP")},
    {"AnAskedCodeSetStays",
     {"ja_JP", std::nullopt, {"codeset=X", "init", "codeset=Y", "record"}},
     {"init 0", "English||ja_JP|X|.|1"},
     Read("ja_JP") + Read("ja_JP")},
    {"LanguagesAreNone",
     {"ja_JP.EUC-JP", std::nullopt, {"languages", "codepage=Japanese", "count"}},
     {"languages", "codepage -2147467259 ", "count -2147418113 0"},
     Read("ja_JP.EUC-JP")},
    {"ALanguageIsNotTaken",
     {"ja_JP.EUC-JP", std::nullopt, {"init=Japanese", "record"}},
     {"init 0", "English||ja_JP.EUC-JP|EUC-JP|.|1"},
     Read("ja_JP.EUC-JP") + Read("ja_JP.EUC-JP")},
    {"ATableThatComesLaterIsRead",
     {"ja_JP.EUC-JP", std::nullopt, {"init", "table=" + Usual, "init", "record"}},
     {"init 0", "init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3"},
     Read("ja_JP.EUC-JP") + ChosenByName("ja_JP.EUC-JP")},
    {"ATableWithoutABeginningIsSaid",
     {"ja_JP.EUC-JP", "BEGIN\n" + Rows, {"init"}},
     {"init 0"},
     Read("ja_JP.EUC-JP"),
     "[PID]*BEGIN* OS section not found\n"},
    {"ATableWithoutRowsIsNotSaid", {"ja_JP.EUC-JP", "*BEGIN*\n", {"init"}}, {"init 0"}, Read("ja_JP.EUC-JP")},
};

const std::string AB31(31, 'a');
const std::string AB32(32, 'b');
const std::string CP15(15, 'c');
const std::string CP16(16, 'd');

/// A preferred language of one row, whose locale nobody has.
Case Limits(const char* name, const std::string& language, const std::string& alias, const std::string& langString,
            const std::string& codePage, const std::string& record) {
    return {name,
            {"fr_FR.UTF-8",
             Table(language + ' ' + alias + ' ' + langString + ' ' + codePage + '\n'),
             {"init=" + language, "record"}},
            {"init 4", record},
            Read("fr_FR.UTF-8") + Chosen(langString, langString)};
}

const Case AtTheLimits[] = {
    Limits("FieldsThatJustFit", AB31, AB31, AB31, CP15, AB31 + '|' + AB31 + '|' + AB31 + '|' + CP15 + "|.|1"),
    Limits("ALanguageThatDoesNot", AB32, "y", "z", "w", "|y|z|w|.|1"),
    Limits("AnAliasThatDoesNot", "x", AB32, "z", "w", "x||z|w|.|1"),
    Limits("ALocaleStringThatDoesNot", "x", "y", AB32, "w", "x|y||w|.|1"),
    Limits("ACodePageThatDoesNot", "x", "y", "z", CP16, "x|y|z||.|1"),
    {"ADecimalPointThatJustFits",
     {"de_DE.ISO-8859-1", Usual, {"radix=1234567", "init", "record"}},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|1234567|1"},
     ChosenByName("de_DE.ISO-8859-1")},
    {"ADecimalPointThatDoesNot",
     {"de_DE.ISO-8859-1", Usual, {"radix=12345678", "init", "record"}},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1||1"},
     ChosenByName("de_DE.ISO-8859-1")},
};

const std::string Refused = Table("German de de_DE;comma ISO-8859-1\n" + Rows);
const std::string RefusedDots = Table("X x middle_dot;utf8 UTF-8\nX y middle_dot;latin1 ISO-8859-1\n");

const Case Adopted[] = {
    {"ALocaleByName",
     {"fr_FR.UTF-8", Usual, {"locale", "init=German", "locale", "process"}},
     {"locale C .. 44 44", "init 4", "locale de_DE.ISO-8859-1 ,, 46 46", "process de_DE.ISO-8859-1"},
     ChosenInstead("fr_FR.UTF-8", "de_DE.ISO-8859-1")},
    {"TheEnvironmentsLocale",
     {"de_DE.ISO-8859-1", Usual, {"init", "locale", "process"}},
     {"init 4", "locale de_DE.ISO-8859-1 ,, 46 46", "process de_DE.ISO-8859-1"},
     ChosenByName("de_DE.ISO-8859-1")},
    {"ALocaleThatTheStandardLibraryRefuses",
     {"de_DE;comma", Refused, {"init", "record", "accepted", "locale", "process"}},
     {"init 4", "German|de|de_DE;comma|ISO-8859-1|,|1", "accepted ", "locale * ,, 0 0", "process de_DE;comma"},
     ChosenByName("de_DE;comma")},
    {"ItsSeparatorIsOneCharacter",
     {"de_DE;comma", Refused, {"radix=12", "init", "record", "locale"}},
     {"init 4", "German|de|de_DE;comma|ISO-8859-1|12|1", "locale * 11 0 0"},
     ChosenByName("de_DE;comma")},
    // U+00B7, which a report cuts to a byte.
    {"ItsNarrowSeparatorHasNoRoomForTwoBytes",
     {"middle_dot;utf8", RefusedDots, {"init", "record", "locale"}},
     {"init 4", "X|x|middle_dot;utf8|UTF-8|\xB7|4", "locale * ?\xB7 0 0"},
     ChosenByName("middle_dot;utf8")},
    {"ItsNarrowSeparatorIsAByteOfTheLocale",
     {"middle_dot;latin1", RefusedDots, {"init", "record", "locale"}},
     {"init 4", "X|y|middle_dot;latin1|ISO-8859-1|\xB7|1", "locale * \xB7\xB7 0 0"},
     ChosenByName("middle_dot;latin1")},
    // The third request is the one for the narrow separator.
    {"ItsNarrowSeparatorWithoutALocale",
     {"de_DE;comma", Refused, {"refuse=3", "init", "locale"}},
     {"init 4", "locale * ?, 0 0"},
     ChosenByName("de_DE;comma")},
    {"NoLocale",
     {"de_DE.ISO-8859-1", Usual, InitAndAll, {{"LOCPATH", "/nowhere"}}},
     {"init 4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|.|1", "accepted ", "size 1"},
     Read("de_DE.ISO-8859-1") + Chosen("de_DE.ISO-8859-1", "")},
    {"NoLocaleInUTF8",
     {"fr_FR.UTF-8", Usual, {"init", "record", "accepted", "locale", "process"}, {{"LOCPATH", "/nowhere"}}},
     {"init 4", "French|fr|fr_FR.UTF-8|UTF-8|.|4", "accepted ", "locale C .. 44 44", "process C"},
     Read("fr_FR.UTF-8") + Chosen("fr_FR.UTF-8", "")},
    {"ARowWithoutALocaleString",
     {"de_DE.ISO-8859-1", Table("X\n"), {"init=X", "accepted", "process"}},
     {"init 4", "accepted ", "process de_DE.ISO-8859-1"},
     Read("de_DE.ISO-8859-1") + Chosen("", "", "de_DE.ISO-8859-1")},
    {"LanguagesAreThoseOfTheTable",
     {"ja_JP.EUC-JP", Usual, {"languages"}},
     {"languages English French German Japanese Korean Simplified_Chinese Traditional_Chinese"},
     ChosenByName("ja_JP.EUC-JP")},
    {"LanguagesAreThoseOfTheDecision",
     {"ja_JP.EUC-JP", Usual, {"init", "table=" + Table("English x ja_AA A\n"), "languages", "force", "languages"}},
     {"init 4", "languages English French German Japanese Korean Simplified_Chinese Traditional_Chinese", "init 4",
      "languages English"},
     ChosenByName("ja_JP.EUC-JP") + Read("ja_JP.EUC-JP") + Asked("ja_JP.EUC-JP") + Chosen("ja_AA", "ja_AA")},
};

std::string Detected(const std::string& lang, const std::string& codePage) {
    return "[PID][VELSysNLSCore][INFO] DetectNLSCoreFromEnvironment | LangEnv=\"" + lang + "\" | CodePage=\"" +
           codePage + "\"\n";
}

const Case Detection[] = {
    {"TellsTheRowAndDecidesNothing",
     {"ja_JP.EUC-JP", Usual, {"init", "env=LANG=de_DE.ISO-8859-1", "detect", "record"}},
     {"init 4", "detect 1 German|de|de_DE.ISO-8859-1|ISO-8859-1", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3"},
     ChosenByName("ja_JP.EUC-JP") + Detected("de_DE.ISO-8859-1", "ISO-8859-1")},
    {"OfAnUnsetLang",
     {"ja_JP.EUC-JP", Usual, {"init", "unset=LANG", "detect"}},
     {"init 4", "detect 1 English|en|en_US.UTF-8|UTF-8"},
     ChosenByName("ja_JP.EUC-JP") + Detected("en_US.UTF-8", "UTF-8")},
    {"OfALangWithoutAPointAsksTheCLibrary",
     {"ja_JP", Usual, {"init", "detect"}},
     {"init 4", "detect 1 Japanese|ja|ja_JP.EUC-JP|EUC-JP"},
     ChosenInstead("ja_JP", "ja_JP.EUC-JP") + Detected("ja_JP", "EUC-JP")},
    {"WithoutAnAnswerIsUTF8",
     {"ja_JP", Usual, {"init", "codeset=", "detect"}},
     {"init 4", "detect 1 Japanese|ja|ja_JP.EUC-JP|EUC-JP"},
     ChosenInstead("ja_JP", "ja_JP.EUC-JP") + Detected("ja_JP", "UTF-8")},
    {"WithoutARowLeavesTheEntry",
     {"ja_JP.EUC-JP", Usual, {"init", "env=LANG=xx_XX.UTF-8", "table=" + Table("X x xx Y\n"), "detect"}},
     {"init 4", "detect 1 came|in|as|it"},
     ChosenByName("ja_JP.EUC-JP") + Detected("xx_XX.UTF-8", "UTF-8") + Asked("null"),
     FallsBack},
    {"WithoutATableLeavesTheEntry",
     {"ja_JP.EUC-JP", Usual, {"init", "remove", "detect"}},
     {"init 4", "detect 1 came|in|as|it"},
     ChosenByName("ja_JP.EUC-JP") + Detected("ja_JP.EUC-JP", "EUC-JP") + Asked("ja_JP.EUC-JP"),
     FallsBack},
};

const auto NameOf = [](const auto& test) { return std::string(test.param.name); };

} // namespace

INSTANTIATE_TEST_SUITE_P(ByName, LanguageDecision, testing::ValuesIn(ByName), NameOf);
INSTANTIATE_TEST_SUITE_P(ByPattern, LanguageDecision, testing::ValuesIn(ByPattern), NameOf);
INSTANTIATE_TEST_SUITE_P(ByEnvironmentLocale, LanguageDecision, testing::ValuesIn(ByEnvironmentLocale), NameOf);
INSTANTIATE_TEST_SUITE_P(ByFallback, LanguageDecision, testing::ValuesIn(ByFallback), NameOf);
INSTANTIATE_TEST_SUITE_P(ByLanguage, LanguageDecision, testing::ValuesIn(ByLanguage), NameOf);
INSTANTIATE_TEST_SUITE_P(ByState, LanguageDecision, testing::ValuesIn(ByState), NameOf);
INSTANTIATE_TEST_SUITE_P(WithoutATable, LanguageDecision, testing::ValuesIn(WithoutATable), NameOf);
INSTANTIATE_TEST_SUITE_P(AtTheLimits, LanguageDecision, testing::ValuesIn(AtTheLimits), NameOf);
INSTANTIATE_TEST_SUITE_P(Adopted, LanguageDecision, testing::ValuesIn(Adopted), NameOf);
INSTANTIATE_TEST_SUITE_P(Detection, LanguageDecision, testing::ValuesIn(Detection), NameOf);

TEST_P(LanguageDecision, IsMadeAndSaid) {
    Setting setting = GetParam().setting;
    setting.isTraced = true;
    const Outcome outcome = Play(setting);
    EXPECT_THAT(outcome.report, ElementsAreArray(GetParam().report));
    EXPECT_EQ(outcome.out, GetParam().out);
    EXPECT_EQ(outcome.err, GetParam().err);
    EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal;
}

TEST_P(LanguageDecision, IsMadeInSilence) {
    const Outcome outcome = Play(GetParam().setting);
    EXPECT_THAT(outcome.report, ElementsAreArray(GetParam().report));
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal;
}

TEST(LanguageDecisionAlways, LeavesWhatStandsWhereNothingFitsATable) {
    const Outcome outcome = Play({"xx_XX.EUC-JP", Table("X x yy ISO-8859-1\n"), {"init", "init", "record"}});
    EXPECT_THAT(outcome.report, ElementsAre("init 4", "init 1", "English||xx_XX.EUC-JP|EUC-JP|.|1"));
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
}

// The session frame.

TEST(PreferredLanguage, OfTheSettingsIsTaken) {
    const Outcome outcome =
        Play({"fr_FR.UTF-8", Table(Rows), {"record", "prefer=Japanese", "record", "prefer=German", "record", "size"}});
    EXPECT_THAT(outcome.report,
                ElementsAre("French|fr|fr_FR.UTF-8|UTF-8|,|4", "prefer 0", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3",
                            "prefer 0", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1", "size 1"));
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST(PreferredLanguage, IsKeptByEachQuery) {
    const Outcome outcome =
        Play({"fr_FR.UTF-8", Table(Rows), {"prefer=Japanese", "init=German", "record", "init=Korean", "size"}});
    EXPECT_THAT(outcome.report,
                ElementsAre("prefer 0", "init 4", "Japanese|ja|ja_JP.EUC-JP|EUC-JP|.|3", "init 4", "size 3"));
}

TEST(PreferredLanguage, ThatTheTableLacksIsTheEnvironmentsAtEachQuery) {
    const Outcome outcome = Play({"fr_FR.UTF-8",
                                  Table(Rows),
                                  {"prefer=Klingon", "record", "env=LANG=de_DE.ISO-8859-1", "record",
                                   "env=LANG=ja_JP.SJIS", "size", "converter"}});
    EXPECT_THAT(Lines(outcome.report.begin(), outcome.report.end() - 1),
                ElementsAre("prefer 0", "French|fr|fr_FR.UTF-8|UTF-8|,|4", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1",
                            "size 2"));
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST(PreferredLanguage, EmptyIsTheEnvironmentsAtEachQuery) {
    const Outcome outcome = Play(
        {"fr_FR.UTF-8", Table(Rows), {"prefer=", "record", "env=LANG=de_DE.ISO-8859-1", "record", "init", "size"}});
    EXPECT_THAT(outcome.report, ElementsAre("prefer 0", "French|fr|fr_FR.UTF-8|UTF-8|,|4",
                                            "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1", "init 1", "size 1"));
}

TEST(LanguageOfASession, IsDecidedAtItsBeginning) {
    const Outcome outcome =
        Play({"ja_JP.SJIS", Table(Rows), {"session", "env=LANG=fr_FR.UTF-8", "init", "record", "end", "record"}});
    EXPECT_THAT(outcome.report, ElementsAre("session 0", "init 1", "Japanese|ja2|ja_JP.SJIS|SHIFT_JIS|.|2", "end 0",
                                            "Japanese|ja2|ja_JP.SJIS|SHIFT_JIS|.|2"));
    EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST(LanguageOfASession, StandsIfItWasDecidedEarlier) {
    const Outcome outcome = Play({"ja_JP.SJIS", Table(Rows), {"init=German", "session", "session", "record"}});
    EXPECT_THAT(outcome.report,
                ElementsAre("init 4", "session 0", "session 0", "German|de|de_DE.ISO-8859-1|ISO-8859-1|,|1"));
}
