/// @file
/// The language table: where it is found, how its text is read, and the one that an installation ships.

#include "LanguageTable.h"
#include "LanguageTest.h"
#include "VELSysStatus.h"

#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <iconv.h>
#include <ostream>
#include <set>
#include <sys/stat.h>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsSupersetOf;

using Rows = std::vector<std::string>;

const Rows NoTable = {"status -2147418113"};
static_assert(VEL::StatusUnexpected == -2147418113);

class LanguageTable : public LanguageTest {};

/// The descriptor flags of the library's streams, as they were opened.
std::vector<int> s_flags;

FILE* Noted(FILE* file) {
    if (file != nullptr) {
        s_flags.push_back(fcntl(fileno(file), F_GETFD));
    }
    return file;
}

struct Text {
    const char* name;
    std::string text;
    Rows rows;
};

void PrintTo(const Text& text, std::ostream* out) {
    *out << text.name;
}

class LanguageTableText : public LanguageTest, public testing::WithParamInterface<Text> {};

/// A row of `size` bytes, newline included, that ends in a fourth column "end".
std::string LineOf(std::size_t size) {
    const std::string front = "a b c";
    const std::string back = "end\n";
    return front + std::string(size - front.size() - back.size(), ' ') + back;
}

/// A row of `size` bytes, newline included, that is one word.
std::string WordOf(std::size_t size) {
    return std::string(size - 1, 'w') + "\n";
}

const std::string W511(511, 'w');

const Text Texts[] = {
    {"Rows", "*BEGIN*\na b c d\ne f g h\n*END*\n", {"a|b|c|d", "e|f|g|h"}},
    {"TextAheadIsNotRead", "a b c d\nBEGIN\n*BEGI\n*BEGIN*\ne f g h\n*END*\n", {"e|f|g|h"}},
    {"TheBeginningMayStandAnywhere", "for x*BEGIN*y of some system\na b c d\n*END*\n", {"a|b|c|d"}},
    {"TheBeginningIsNotLookedAtAgain", "*BEGIN* *END*\na b c d\n*END*\n", {"a|b|c|d"}},
    {"ASecondBeginningIsARow", "*BEGIN*\na b c d\n*BEGIN* x\ne\n", {"a|b|c|d", "*BEGIN*|x||", "e|||"}},
    {"TheEndMayStandAnywhere", "*BEGIN*\na b c d\ne x*END*y g h\ni j k l\n", {"a|b|c|d"}},
    {"TextBehindTheEndIsNotRead", "*BEGIN*\na b c d\n*END*\ne f g h\n*BEGIN*\ni j k l\n*END*\n", {"a|b|c|d"}},
    {"TheEndOfTheFileEndsIt", "*BEGIN*\na b c d\ne f g h\n", {"a|b|c|d", "e|f|g|h"}},
    {"TheLastRowNeedsNoNewline", "*BEGIN*\na b c d\ne f g h", {"a|b|c|d", "e|f|g|h"}},
    {"FurtherTokensAreIgnored", "*BEGIN*\na b c d e f\n*END*\n", {"a|b|c|d"}},
    {"MissingTokensAreEmpty", "*BEGIN*\na b c\na b\na\n*END*\n", {"a|b|c|", "a|b||", "a|||"}},
    {"AnEmptyLineIsARow", "*BEGIN*\n\na b c d\n\n*END*\n", {"|||", "a|b|c|d", "|||"}},
    {"ABlankLineIsAnEmptyRow", "*BEGIN*\n   \na b c d\n*END*\n", {"|||", "a|b|c|d"}},
    {"SeveralBlanksSeparateOnce", "*BEGIN*\n  a  b   c d  \n*END*\n", {"a|b|c|d"}},
    {"ATabSeparatesNothing", "*BEGIN*\na\tb c\td e\tf g\n*END*\n", {"a\tb|c\td|e\tf|g"}},
    {"ACarriageReturnSeparatesNothing", "*BEGIN*\r\na b c d\r\n*END*\r\n", {"a|b|c|d\r"}},
    {"ThereAreNoComments", "*BEGIN*\n# a b c\n// d\n\"e f\" g\\ h\n", {"#|a|b|c", "//|d||", "\"e|f\"|g\\|h"}},
    {"BytesAreTakenAsTheyAre", "*BEGIN*\n\xE9 \xC3\xA9 \xFF \x80\n*END*\n", {"\xE9|\xC3\xA9|\xFF|\x80"}},
    {"RowsMayRepeat", "*BEGIN*\na b c d\na b c d\n", {"a|b|c|d", "a|b|c|d"}},
    {"WithoutABeginningThereIsNone", "a b c d\n*END*\n", NoTable},
    {"AnEmptyFileIsNone", "", NoTable},
    {"NothingBehindTheBeginningIsNone", "a\n*BEGIN*\n", NoTable},
    {"NorWithoutANewline", "*BEGIN*", NoTable},
    {"NoRowsAreNone", "*BEGIN*\n*END*\na b c d\n", NoTable},
    {"ALineOf510BytesIsOne", "*BEGIN*\n" + LineOf(510) + "x\n", {"a|b|c|end", "x|||"}},
    {"ALineOf511BytesIsOne", "*BEGIN*\n" + LineOf(511) + "x\n", {"a|b|c|end", "x|||"}},
    {"ALineOf512BytesLosesItsNewline", "*BEGIN*\n" + LineOf(512) + "x\n", {"a|b|c|end", "|||", "x|||"}},
    {"ALineOf513BytesIsTwo", "*BEGIN*\n" + LineOf(513) + "x\n", {"a|b|c|en", "d|||", "x|||"}},
    {"AWordOf510BytesIsOne", "*BEGIN*\n" + WordOf(510), {W511.substr(2) + "|||"}},
    {"AWordOf512BytesLosesItsNewline", "*BEGIN*\n" + WordOf(512), {W511 + "|||", "|||"}},
    {"AWordOf1023BytesIsThree", "*BEGIN*\n" + WordOf(1023), {W511 + "|||", W511 + "|||", "|||"}},
    {"ALongLineMayHideTheEnd",
     "*BEGIN*\n" + std::string(508, 'w') + "*END*\nx\n",
     {std::string(508, 'w') + "*EN|||", "D*|||", "x|||"}},
    {"OrHaveItInItsTail", "*BEGIN*\n" + W511 + "*END*\nx\n", {W511 + "|||"}},
    {"ALongLineMayHideTheBeginning", std::string(508, 'w') + "*BEGIN*\nx\n*BEGIN*\ny\n", {"y|||"}},
    {"OrHaveItInItsHead", "*BEGIN*" + std::string(504, ' ') + "a b c d\n", {"a|b|c|d"}},
};

} // namespace

extern "C" {

FILE* __real_fdopen(int descriptor, const char* mode);
FILE* __real_fopen(const char* name, const char* mode);

FILE* __wrap_fdopen(int descriptor, const char* mode) {
    return Noted(__real_fdopen(descriptor, mode));
}

FILE* __wrap_fopen(const char* name, const char* mode) {
    return Noted(__real_fopen(name, mode));
}
}

INSTANTIATE_TEST_SUITE_P(Each, LanguageTableText, testing::ValuesIn(Texts),
                         [](const auto& test) { return test.param.name; });

TEST_P(LanguageTableText, GivesItsRows) {
    UseTable(GetParam().text);
    EXPECT_THAT(RowsFound(), ElementsAreArray(GetParam().rows));
}

TEST_F(LanguageTable, IsReadAnewByEachQuery) {
    UseRows("a\n");
    EXPECT_THAT(RowsFound(), ElementsAre("a|||"));
    UseRows("b\nc\n");
    EXPECT_THAT(RowsFound(), ElementsAre("b|||", "c|||"));
    RemoveTable();
    EXPECT_THAT(RowsFound(), ElementsAreArray(NoTable));
    UseRows("d\n");
    EXPECT_THAT(RowsFound(), ElementsAre("d|||"));
}

TEST_F(LanguageTable, LoadsWithAResult) {
    using VEL::internal::LoadLanguageTable;
    VEL::internal::LanguageTable rows;
    EXPECT_EQ(LoadLanguageTable(rows), 1);
    EXPECT_EQ(rows.size(), 10U);
    RemoveTable();
    EXPECT_EQ(LoadLanguageTable(rows), 1) << "loaded already";
    EXPECT_EQ(rows.size(), 10U);
    rows.clear();
    EXPECT_EQ(LoadLanguageTable(rows), static_cast<int>(0x80004005)) << "no file";
    for (const char* const text : {"a b c d\n", "*BEGIN*\n", "*BEGIN*"}) {
        UseTable(text);
        EXPECT_EQ(LoadLanguageTable(rows), 0) << text;
        EXPECT_TRUE(rows.empty());
    }
    UseTable("*BEGIN*\n*END*\n");
    EXPECT_EQ(LoadLanguageTable(rows), 1);
    EXPECT_TRUE(rows.empty());
}

TEST_F(LanguageTable, InPlaceOfADirectoryIsNone) {
    RemoveTable();
    std::filesystem::create_directory(scratch / "NLS/SUPPLANG_R9");
    EXPECT_THAT(RowsFound(), ElementsAreArray(NoTable));
    EXPECT_EQ(InitNLSCore(nullptr, false), 0);
}

TEST_F(LanguageTable, MayHoldZeroBytes) {
    UseTable("*BEGIN*\n" + std::string("a\0b c d e\nf\n", 12) + "*END*\n");
    EXPECT_EQ(RowsFound().back(), "f|||");
}

// Where it is found. "a" to "c" are directories with a table that tells their name.

namespace {

class LanguageTablePlace : public LanguageTest {
protected:
    void SetUp() override {
        LanguageTest::SetUp();
        for (const char* name : {"a", "b", "c"}) {
            for (const char* suffix : {"NLS", "reffiles/NLS"}) {
                const std::filesystem::path directory = scratch / name / suffix;
                std::filesystem::create_directories(directory);
                WriteFile(directory / "SUPPLANG_R9", LanguageChild::Table(std::string(name) + ' ' + suffix + '\n'));
            }
        }
        unsetenv("QORReffilesPath");
    }

    /// Sets a variable to names with ":" between them, each led by the scratch directory.
    void Set(const char* variable, const std::vector<std::string>& names) {
        std::string list;
        for (const std::string& name : names) {
            list += (list.empty() ? "" : ":") + (scratch / name).string();
        }
        setenv(variable, list.c_str(), 1);
    }
};

} // namespace

TEST_F(LanguageTablePlace, IsTheReferenceFiles) {
    Set("QORReffilesPath", {"a"});
    EXPECT_THAT(RowsFound(), ElementsAre("a|NLS||"));
}

TEST_F(LanguageTablePlace, IsTheInstallation) {
    Set("QORInstallPath", {"a"});
    EXPECT_THAT(RowsFound(), ElementsAre("a|reffiles/NLS||"));
}

TEST_F(LanguageTablePlace, IsNamedAsAFile) {
    Set("VELSysNLSInstallPath", {"a/NLS/SUPPLANG_R9"});
    EXPECT_THAT(RowsFound(), ElementsAre("a|NLS||"));
}

TEST_F(LanguageTablePlace, OfAFileHasNoSuffix) {
    Set("VELSysNLSInstallPath", {"a"});
    EXPECT_THAT(RowsFound(), ElementsAreArray(NoTable));
}

TEST_F(LanguageTablePlace, IsLookedForInOrderOfTheVariables) {
    Set("VELSysNLSInstallPath", {"c/NLS/SUPPLANG_R9"});
    Set("QORInstallPath", {"b"});
    Set("QORReffilesPath", {"a"});
    EXPECT_THAT(RowsFound(), ElementsAre("a|NLS||"));
    unsetenv("QORReffilesPath");
    EXPECT_THAT(RowsFound(), ElementsAre("b|reffiles/NLS||"));
    Set("QORInstallPath", {"nowhere"});
    EXPECT_THAT(RowsFound(), ElementsAre("c|NLS||")) << "a list in which no file opens";
}

TEST_F(LanguageTablePlace, IsTheFirstOfAList) {
    Set("QORReffilesPath", {"nowhere", "b", "a"});
    EXPECT_THAT(RowsFound(), ElementsAre("b|NLS||"));
    Set("QORReffilesPath", {"nowhere", "elsewhere"});
    Set("QORInstallPath", {"nowhere", "c", "a"});
    EXPECT_THAT(RowsFound(), ElementsAre("c|reffiles/NLS||"));
    Set("QORInstallPath", {"nowhere"});
    Set("VELSysNLSInstallPath", {"nowhere", "b/NLS/SUPPLANG_R9", "a/NLS/SUPPLANG_R9"});
    EXPECT_THAT(RowsFound(), ElementsAre("b|NLS||"));
}

TEST_F(LanguageTablePlace, OfAnEmptyVariableIsNone) {
    setenv("QORReffilesPath", "", 1);
    setenv("QORInstallPath", "", 1);
    setenv("VELSysNLSInstallPath", "", 1);
    EXPECT_THAT(RowsFound(), ElementsAreArray(NoTable));
    Set("VELSysNLSInstallPath", {"b/NLS/SUPPLANG_R9"});
    EXPECT_THAT(RowsFound(), ElementsAre("b|NLS||"));
}

TEST_F(LanguageTablePlace, ThatOpensIsTheLastOne) {
    WriteFile(scratch / "a/NLS/SUPPLANG_R9", "no beginning\n");
    Set("QORReffilesPath", {"a", "b"});
    Set("QORInstallPath", {"c"});
    EXPECT_THAT(RowsFound(), ElementsAreArray(NoTable)) << "an unusable file ends the search";
}

TEST_F(LanguageTablePlace, MayBeNestedDeeply) {
    const std::string deep = std::string(200, 'x') + '/' + std::string(200, 'y') + '/' + std::string(200, 'z');
    std::filesystem::create_directories(scratch / deep / "NLS");
    WriteFile(scratch / deep / "NLS/SUPPLANG_R9", LanguageChild::Table("deep\n"));
    Set("QORReffilesPath", {deep});
    EXPECT_THAT(RowsFound(), ElementsAre("deep|||"));
}

// What is there and is no regular file. It counts as a file that opens and is empty.

/// Argument: what stands in the first place of a list.
CHILD_PROGRAM(FindsNoRegularFile) {
    LanguageChild::BeginChild();
    const std::string& kind = arguments[0];
    const std::string first = std::getenv("TABLE_DIRECTORY") + std::string("/first");
    int writer = -1;
    if (kind == "directory") {
        std::filesystem::create_directory(first);
    } else if (kind == "device") {
        std::filesystem::create_symlink("/dev/zero", first);
    } else if (mkfifo(first.c_str(), S_IRUSR | S_IWUSR) == 0 && kind == "silent") {
        writer = open(first.c_str(), O_RDWR | O_CLOEXEC);
    }
    LanguageChild::PlayStep("init");
    LanguageChild::PlayStep("count");
    LanguageChild::Report("writes " + std::to_string(writer < 0 ? 0 : 1));
    return std::filesystem::exists(first) ? 0 : 1;
}

namespace {
class NoRegularFile : public testing::TestWithParam<const char*> {};
} // namespace

INSTANTIATE_TEST_SUITE_P(Each, NoRegularFile, testing::Values("directory", "device", "unwritten", "silent"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(NoRegularFile, EndsTheSearchAndHasNoBeginning) {
    const LanguageChild::Outcome outcome =
        LanguageChild::Run("FindsNoRegularFile",
                           {.lang = "x.UTF-8",
                            .table = LanguageChild::Table(LanguageChild::Rows),
                            .script = {GetParam()},
                            .more = {{"QORReffilesPath", "-"}, {"VELSysNLSInstallPath", "{}/first:{}/NLS/SUPPLANG_R9"}},
                            .isTraced = true});
    EXPECT_EQ(outcome.exitCode, 0) << "signal " << outcome.signal;
    const bool isSilent = std::string(GetParam()) == "silent";
    EXPECT_THAT(outcome.report, ElementsAre("init 0", "count -2147418113 0", isSilent ? "writes 1" : "writes 0"));
    EXPECT_EQ(outcome.err, "[PID]*BEGIN* OS section not found\n[PID]*BEGIN* OS section not found\n");
}

TEST_F(LanguageTable, IsNotInheritedByOtherPrograms) {
    s_flags.clear();
    RowsFound();
    EXPECT_THAT(s_flags, ElementsAre(FD_CLOEXEC));
    RemoveTable();
    std::filesystem::create_directory(scratch / "NLS/SUPPLANG_R9");
    s_flags.clear();
    RowsFound();
    EXPECT_THAT(s_flags, ElementsAre(FD_CLOEXEC));
}

// The warning of a missing table. Nothing asks for it but this test.

CHILD_PROGRAM(WarnsOfAMissingTable) {
    LanguageChild::PlayStep("init");
    VEL::internal::s_warnOfMissingTable = true;
    LanguageChild::PlayStep("count");
    LanguageChild::Report(VEL::internal::s_warnOfMissingTable ? "set" : "cleared");
    LanguageChild::PlayStep("count");
    return 0;
}

TEST(MissingLanguageTable, IsWarnedOfOnceWhenAsked) {
    const LanguageChild::Outcome outcome = LanguageChild::Run(
        "WarnsOfAMissingTable", {.lang = "x.UTF-8", .more = {{"QORDefaultEnvironment", "y"}}, .isTraced = true});
    EXPECT_EQ(outcome.err,
              "[PID]VELSysNLSCore failed to open SUPPLANG_R9 file. You may regenerate your runtime view to "
              "fix this issue (bldz/bldvw/reinstall).\n");
    EXPECT_THAT(outcome.report, ElementsAre("init 0", "count -2147418113 0", "cleared", "count -2147418113 0"));
}

TEST(MissingLanguageTable, IsWarnedOfWithoutAnEnvironment) {
    const LanguageChild::Outcome outcome =
        LanguageChild::Run("WarnsOfAMissingTable", {.lang = "x.UTF-8", .isTraced = true});
    EXPECT_EQ(outcome.err,
              "[PID]VELSysNLSCore failed to open SUPPLANG_R9 file. You may regenerate your runtime view to "
              "fix this issue (bldz/bldvw/reinstall).\n");
    EXPECT_EQ(outcome.report.at(2), "cleared");
}

TEST(MissingLanguageTable, IsNotWarnedOfInTheBuildersEnvironment) {
    const LanguageChild::Outcome outcome = LanguageChild::Run(
        "WarnsOfAMissingTable",
        {.lang = "x.UTF-8", .more = {{"QORDefaultEnvironment", "BldzEnvironment"}}, .isTraced = true});
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.report, ElementsAre("init 0", "count -2147418113 0", "set", "count -2147418113 0"));
}

TEST(MissingLanguageTable, IsNotWarnedOfWithoutATrace) {
    const LanguageChild::Outcome outcome =
        LanguageChild::Run("WarnsOfAMissingTable", {.lang = "x.UTF-8", .more = {{"QORDefaultEnvironment", "y"}}});
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_THAT(outcome.report, ElementsAre("init 0", "count -2147418113 0", "cleared", "count -2147418113 0"));
}

// What an installation ships.

namespace {

class ShippedLanguageTable : public LanguageTest {
protected:
    void SetUp() override {
        LanguageTest::SetUp();
        unsetenv("QORReffilesPath");
        setenv("VELSysNLSInstallPath", QOR_LANGUAGE_TABLE, 1);
    }

    /// One column of all rows.
    static std::set<std::string> Column(std::string VELSysNLSEntry::*column) {
        const VELSysNLSEntry all;
        VELSysNLSFilter filter{};
        filter.pattern = &all;
        int count = 1 << 20;
        VELSysNLSNode* list = nullptr;
        GetNLSInformationA(filter, 0, count, &list);
        std::set<std::string> values;
        for (const VELSysNLSNode* node = list; node != nullptr; node = node->next) {
            values.insert(node->entry.*column);
        }
        TakeRows(list);
        return values;
    }
};

} // namespace

TEST_F(ShippedLanguageTable, HasEveryLanguageThatTheSystemKnows) {
    EXPECT_THAT(Column(&VELSysNLSEntry::language),
                IsSupersetOf({"English", "French", "German", "Dutch", "Danish", "Spanish", "Italian", "Portuguese",
                              "Swedish", "Finnish", "Icelandic", "Japanese", "Simplified_Chinese", "Korean", "Czech",
                              "Polish", "Russian", "Traditional_Chinese"}));
}

TEST_F(ShippedLanguageTable, HasOnlyLanguagesWithAUsualCodePage) {
    for (const std::string& language : Column(&VELSysNLSEntry::language)) {
        EXPECT_EQ(VELGetANSICodePageByLanguage(language.c_str(), nullptr), 0) << language;
    }
}

TEST_F(ShippedLanguageTable, HasOnlyCodePagesThatCanBeConverted) {
    for (const std::string& codePage : Column(&VELSysNLSEntry::codePage)) {
        EXPECT_LT(codePage.size(), sizeof(VELSysNLSEnv::codePage)) << codePage;
        for (const auto& [to, from] : {std::pair("UTF-16LE", codePage.c_str()), {codePage.c_str(), "UTF-16LE"}}) {
            const iconv_t descriptor = iconv_open(to, from);
            ASSERT_NE(descriptor, reinterpret_cast<iconv_t>(-1)) << from << " to " << to;
            iconv_close(descriptor);
        }
    }
}

TEST_F(ShippedLanguageTable, HasColumnsThatTheRecordHolds) {
    for (const auto column : {&VELSysNLSEntry::language, &VELSysNLSEntry::alias, &VELSysNLSEntry::langString}) {
        for (const std::string& value : Column(column)) {
            EXPECT_FALSE(value.empty());
            EXPECT_LT(value.size(), sizeof(VELSysNLSEnv::language)) << value;
            EXPECT_EQ(value.find_first_of("\t\r"), std::string::npos) << value;
        }
    }
}

TEST_F(ShippedLanguageTable, HasEachLocaleOnce) {
    EXPECT_EQ(Column(&VELSysNLSEntry::langString).size(), RowsFound().size());
}

TEST_F(ShippedLanguageTable, ServesTheTestLocales) {
    const std::pair<const char*, const char*> expected[] = {{"en_US.UTF-8", "English"},
                                                            {"fr_FR.UTF-8", "French"},
                                                            {"de_DE.ISO-8859-1", "German"},
                                                            {"ja_JP.EUC-JP", "Japanese"},
                                                            {"zh_CN.GB18030", "Simplified_Chinese"},
                                                            {"ko_KR.EUC-KR", "Korean"},
                                                            {"zh_TW.BIG5", "Traditional_Chinese"},
                                                            {"C", "English"},
                                                            {"xx_XX.UTF-8", "English"}};
    for (const auto& [lang, language] : expected) {
        setenv("LANG", lang, 1);
        VELSysNLSEntry entry;
        DetectNLSCoreFromEnvironment(entry);
        EXPECT_EQ(entry.language, language) << lang;
    }
}

namespace {

struct Served {
    const char* name;
    const char* lang;
    const char* language;
    const char* codePage;
};

void PrintTo(const Served& served, std::ostream* out) {
    *out << served.lang;
}

class ShippedLanguageTableServes : public ShippedLanguageTable, public testing::WithParamInterface<Served> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, ShippedLanguageTableServes,
                         testing::Values(Served{"GermanWithTheEuro", "de_DE.ISO-8859-15", "German", "ISO-8859-15"},
                                         Served{"GermanInTheOtherSpelling", "de_DE.iso88591", "German", "ISO-8859-1"},
                                         Served{"GermanByItsModifier", "de_DE@euro", "German", "ISO-8859-15"},
                                         Served{"JapaneseShifted", "ja_JP.SJIS", "Japanese", "SHIFT_JIS"},
                                         Served{"JapaneseEUC", "ja_JP.eucJP", "Japanese", "EUC-JP"},
                                         Served{"AmericanInTheOtherSpelling", "en_US.utf8", "English", "UTF-8"},
                                         Served{"ChineseExtended", "zh_CN.gbk", "Simplified_Chinese", "GBK"},
                                         Served{"C", "C", "English", "UTF-8"},
                                         Served{"POSIX", "POSIX", "English", "UTF-8"},
                                         Served{"Nobody", "xx_YY.UTF-8", "English", "UTF-8"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(ShippedLanguageTableServes, TheLanguageAndItsCodePage) {
    setenv("LANG", GetParam().lang, 1);
    VELSysNLSEntry entry;
    EXPECT_EQ(DetectNLSCoreFromEnvironment(entry), 1);
    EXPECT_EQ(entry.language, GetParam().language);
    EXPECT_EQ(entry.codePage, GetParam().codePage);
    EXPECT_EQ(InitNLSCore(nullptr, true), 4);
    VELSysNLSEnv record;
    GetEnvNLSData(&record);
    EXPECT_STREQ(record.language, GetParam().language);
    EXPECT_STREQ(record.codePage, GetParam().codePage);
}
