/// @file
/// What narrow strings print about text that is not plain, byte by byte, for each way in which such text comes, and
/// what becomes of it.

#include "Child.h"
#include "HeapLog.h"
#include "NarrowReports.h"
#include "StringSubjects.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <regex>
#include <sstream>
#include <unistd.h>

namespace {

bool s_printsTheTrueStack = false;

} // namespace

// Stands for the calling stack in what the warnings print.
extern "C" void __real__ZN3VEL8internal15PrintStackTraceEv();
extern "C" void __wrap__ZN3VEL8internal15PrintStackTraceEv() {
    if (s_printsTheTrueStack) {
        __real__ZN3VEL8internal15PrintStackTraceEv();
    } else {
        std::fputs("the calling stack\n", stdout);
    }
}

namespace {

using namespace StringStates;
using StringEnvironment::OneToOne;
using StringEnvironment::UseCodePage;
using StringEnvironment::UTF8;

using namespace NarrowReports;

/// A way in which text comes into a string "old", and what that string or the result is then.
struct Way {
    const char* name;
    std::function<QORString(QORString& old, const char* text)> take;
    std::string whenRefused;
    std::string (*whenTaken)(const std::string& text);
};

std::string Alone(const std::string& text) {
    return text;
}
std::string Behind(const std::string& text) {
    return "old" + text;
}
std::string InFront(const std::string& text) {
    return text + "old";
}

const std::vector<Way>& Ways() {
    static const std::vector<Way> ways = {
        {"constructor", [](QORString&, const char* text) { return QORString(text); }, "", Alone},
        {"constructor from chars that may be written",
         [](QORString&, const char* text) { return QORString(const_cast<char*>(text)); }, "", Alone},
        {"operator=", [](QORString& old, const char* text) { return old = text; }, "", Alone},
        {"operator+=", [](QORString& old, const char* text) { return old += text; }, "old", Behind},
        {"operator+", [](QORString& old, const char* text) { return old + text; }, "old", Behind},
        {"free operator+", [](QORString& old, const char* text) { return text + old; }, "old", InFront},
        {"ReadLine",
         [](QORString& old, const char* text) {
             std::istringstream in(text);
             old.ReadLine(in, 0);
             return old;
         },
         "", Alone},
        {"CastToCharPtr of a shared block",
         [](QORString& old, const char* text) {
             old = StringOn<QORString>(NewNarrow(text));
             const QORString other(old);
             old.CastToCharPtr();
             return old;
         },
         "", Alone},
    };
    return ways;
}

struct Text {
    const char* text;
    int position;       ///< Of the first byte that doesn't pass in a UTF-8 environment, 0 for none.
    int positionOthers; ///< In another environment.
};

const Text Inputs[] = {
    {"plain ~ text\t!", 0, 0},
    {"\r", 0, 0},
    {"a\x01", 2, 2},
    {"\x1f", 1, 1},
    {"abc\x0b", 4, 4},
    {"abc\x0c", 4, 4},
    {"abc\x7f", 0, 4},
    {"gr\xc3\xbcn", 0, 3},
    {"\x80", 0, 1},
    {"a\xff\x02", 3, 2},
    {"100%d %s %n %\x02", 14, 14},
    {"\"quoted\"\x1b[0m", 9, 9},
};

} // namespace

class NarrowWarnings : public StringEnvironment::InBoth {
protected:
    int PositionIn(const Text& text) const { return IsUTF8() ? text.position : text.positionOthers; }
};

TEST_P(NarrowWarnings, NameThePositionOfTheFirstBadByteOnceForEachWayIn) {
    for (const Way& way : Ways()) {
        for (const Text& text : Inputs) {
            SCOPED_TRACE(std::string(way.name) + ": " + text.text);
            QORString old("old");
            std::string result;
            const std::string printed = Printed([&] { result = BytesOf(way.take(old, text.text)); });
            const int position = PositionIn(text);
            EXPECT_EQ(printed, position != 0 ? NotPrintable(position, text.text) : "");
            EXPECT_EQ(result, position != 0 ? way.whenRefused : way.whenTaken(text.text));
        }
    }
}

TEST_P(NarrowWarnings, AreSwitchedOffAndOnWithTheChecks) {
    for (const Way& way : Ways()) {
        SCOPED_TRACE(way.name);
        QORString old("old");
        VELStringInit(0);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(BytesOf(way.take(old, "a\x01\xff")), way.whenTaken("a\x01\xff")); }), "");
        old = "old";
        VELStringInit(1);
        EXPECT_EQ(Printed([&] { EXPECT_EQ(BytesOf(way.take(old, "a\x01\xff")), way.whenRefused); }),
                  NotPrintable(2, "a\x01\xff"));
    }
}

TEST_P(NarrowWarnings, PassOverTheOneWayWithoutACheck) {
    char text[] = "a\x01\xff";
    QORString s("old");
    EXPECT_EQ(Printed([&] {
                  EXPECT_EQ(QORSysUTF8Str(&s, text), 0);
                  EXPECT_EQ(BytesOf(s), text);
                  QORString copy(s);
                  copy += s;
                  copy += QORChar('\x02');
                  copy += QORString(QORChar('\x03'), 2);
                  EXPECT_EQ(BytesOf(copy), "a\x01\xff"
                                           "a\x01\xff\x02\x03\x03");
                  s.CastToCharPtr();
                  EXPECT_EQ(BytesOf(s), text) << "alone, it isn't assigned again";
              }),
              "");
}

// Chunks of a line.

TEST_P(NarrowWarnings, LeaveTheBadChunkOfALineOutOnItsOwn) {
    const std::string first(79, 'a');
    const std::string second = "bb\x01" + std::string(76, 'b');
    const std::string third = std::string(20, 'c') + "\x02";
    const std::string last(79, 'd');
    std::istringstream in(first + second + last + third + "\nnext\n");
    QORString s("old");
    EXPECT_EQ(Printed([&] { s.ReadLine(in, 0); }), NotPrintable(3, second) + NotPrintable(21, third));
    EXPECT_EQ(BytesOf(s), first + last);
    EXPECT_EQ(Printed([&] { s.ReadLine(in, 0); }), "");
    EXPECT_EQ(BytesOf(s), "next");
}

// Wide text that is not plain.

namespace {

struct FirstUse {
    const char* name;
    std::function<void(QORString&)> use;
};

/// Every operation that can be the first to meet a wide block, on the left side and as an argument. None of them adds
/// text that would be reported itself.
const std::vector<FirstUse>& FirstUses() {
    static const QORString plain("plain");
    static const std::vector<FirstUse> uses = {
        {"ConvertToChar", [](QORString& s) { s.ConvertToChar(); }},
        {"operator const char*", [](QORString& s) { static_cast<void>(static_cast<const char*>(s)); }},
        {"Length", [](QORString& s) { s.Length(); }},
        {"IsEmpty", [](QORString& s) { s.IsEmpty(); }},
        {"hash", [](QORString& s) { s.hash(); }},
        {"CastToCharPtr", [](QORString& s) { s.CastToCharPtr(); }},
        {"getUnicodeString", [](QORString& s) { s.getUnicodeString(); }},
        {"getMBCSString", [](QORString& s) { s.getMBCSString(); }},
        {"operator[]", [](QORString& s) { s[0]; }},
        {"Compare chars", [](QORString& s) { s.Compare("x"); }},
        {"Compare null", [](QORString& s) { s.Compare(static_cast<const char*>(nullptr)); }},
        {"Compare", [](QORString& s) { s.Compare(plain); }},
        {"Compare argument", [](QORString& s) { plain.Compare(s); }},
        {"==", [](QORString& s) { static_cast<void>(s == plain); }},
        {"< argument", [](QORString& s) { static_cast<void>(plain < s); }},
        {"CompareByCase", [](QORString& s) { s.CompareByCase(plain); }},
        {"CompareByCase argument", [](QORString& s) { plain.CompareByCase(s); }},
        {"FindPosition", [](QORString& s) { s.FindPosition(plain, 0); }},
        {"FindPosition argument", [](QORString& s) { plain.FindPosition(s, 0); }},
        {"SubString", [](QORString& s) { s.SubString(0, 1).Length(); }},
        {"Strip", [](QORString& s) { s.Strip(QORString::QORStripModeBoth, QORChar(' ')); }},
        {"<<",
         [](QORString& s) {
             std::ostringstream out;
             out << s;
         }},
        {"repetition", [](QORString& s) { QORString(s, 2).Length(); }},
        {"+= chars", [](QORString& s) { s += "x"; }},
        {"+=", [](QORString& s) { s += plain; }},
        {"+= argument", [](QORString& s) { QORString("plain") += s; }},
        {"Append argument", [](QORString& s) { QORString("plain").Append(s); }},
        {"+= byte", [](QORString& s) { s += QORChar('x'); }},
        {"+= number", [](QORString& s) { s += 5; }},
        {"+ chars", [](QORString& s) { (s + "x").Length(); }},
        {"+", [](QORString& s) { (s + plain).Length(); }},
        {"+ argument", [](QORString& s) { (plain + s).Length(); }},
        {"free +", [](QORString& s) { ("x" + s).Length(); }},
        {"Resize", [](QORString& s) { s.Resize(20, QORChar(' '), 1); }},
        {"ReplaceSubString", [](QORString& s) { s.ReplaceSubString(0, 1, plain); }},
        {"ReplaceSubString argument", [](QORString& s) { QORString("plain").ReplaceSubString(0, 1, s); }},
        {"ReplaceSubString counted argument", [](QORString& s) { QORString("plain").ReplaceSubString(0, 1, s, 1); }},
        {"ReplaceSubString first", [](QORString& s) { s.ReplaceSubString(plain, plain); }},
        {"ReplaceSubString first of argument",
         [](QORString& s) { QORString("plain").ReplaceSubString(s, QORString()); }},
        {"ReplaceSubString first by argument",
         [](QORString& s) { QORString("plain").ReplaceSubString(QORString("a"), s); }},
        {"Remove", [](QORString& s) { s.Remove(0, 1); }},
        {"Insert", [](QORString& s) { s.Insert(0, plain); }},
        {"Insert argument", [](QORString& s) { QORString("plain").Insert(0, s); }},
        {"ToUpper", [](QORString& s) { s.ToUpper(); }},
        {"ToLower", [](QORString& s) { s.ToLower(); }},
    };
    return uses;
}

} // namespace

TEST_P(NarrowWarnings, ReportWideTextThatIsNotASCIITwiceAndItIsLost) {
    for (const FirstUse& first : FirstUses()) {
        SCOPED_TRACE(first.name);
        QORString s = StringOn<QORString>(NewWide(u"a gr\u00fcn"));
        const std::string expected = IsUTF8() ? "" : DataCorruption + NotPrintable(5, "a gr\xfcn");
        EXPECT_EQ(Printed([&] { first.use(s); }), expected);
        EXPECT_FALSE(StringAccess::BlockOf(s)->IsWide());
        EXPECT_EQ(Printed([&] { s.Length(); }), "") << "only the first use";
    }
}

TEST_P(NarrowWarnings, AreSilentAboutWideASCIIText) {
    for (const FirstUse& first : FirstUses()) {
        SCOPED_TRACE(first.name);
        QORString s = StringOn<QORString>(NewWide(u"plain\x7f"));
        EXPECT_EQ(Printed([&] { first.use(s); }), "");
        EXPECT_FALSE(StringAccess::BlockOf(s)->IsWide());
    }
}

TEST_P(NarrowWarnings, WaitForTheFirstUse) {
    EXPECT_EQ(Printed([] {
                  const QORString s = StringOn<QORString>(NewWide(u"gr\u00fcn"));
                  const QORString copy(s);
                  QORString assigned("old");
                  assigned = copy;
                  EXPECT_TRUE(assigned.Init());
                  EXPECT_TRUE(StringAccess::BlockOf(assigned)->IsWide());
                  EXPECT_EQ(StringAccess::BlockOf(assigned), StringAccess::BlockOf(s));
              }),
              "");
}

// The checks are on or off; the first report is about the environment, the second about the bytes.
TEST_P(NarrowWarnings, TellOfBadBytesInConvertedTextToo) {
    const QORString s = StringOn<QORString>(NewWide(u"\u0001\u00fc"));
    EXPECT_EQ(Printed([&] { s.Length(); }),
              IsUTF8() ? NotPrintable(1, "\x01\u00fc") : DataCorruption + NotPrintable(1, "\x01\xfc"));
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

TEST_P(NarrowWarnings, AreMissingWhereThereIsNoMemoryForTheText) {
    VELStringPoolSetForCurrentThrd(0);
    const QORString s = StringOn<QORString>(NewWide(u"gr\u00fcn"));
    EXPECT_EQ(Printed([&] {
                  const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
                  EXPECT_EQ(s.Length(), 0);
              }),
              "");
    EXPECT_TRUE(IsOnTheEmptyBlock(s));
}

INSTANTIATE_TEST_SUITE_P(Environments, NarrowWarnings, testing::Values(UTF8, OneToOne), StringEnvironment::NameOf);

// Of several strings the one that is worked on is turned narrow first, then the others from left to right.

namespace {

struct ManyTexts {
    const char* name;
    int count; ///< Of the strings that take part.
    std::function<void(QORString& s, const QORString& a, const QORString& b)> use;
};

const std::vector<ManyTexts>& UsesOfManyTexts() {
    static const std::vector<ManyTexts> uses = {
        {"+=", 2, [](QORString& s, const QORString& a, const QORString&) { s += a; }},
        {"Append", 2, [](QORString& s, const QORString& a, const QORString&) { s.Append(a); }},
        {"+", 2, [](QORString& s, const QORString& a, const QORString&) { static_cast<void>(s + a); }},
        {"Compare", 2, [](QORString& s, const QORString& a, const QORString&) { s.Compare(a); }},
        {"compare", 2, [](QORString& s, const QORString& a, const QORString&) { s.compare(a); }},
        {"==", 2, [](QORString& s, const QORString& a, const QORString&) { static_cast<void>(s == a); }},
        {"<", 2, [](QORString& s, const QORString& a, const QORString&) { static_cast<void>(s < a); }},
        {"CompareByCase", 2, [](QORString& s, const QORString& a, const QORString&) { s.CompareByCase(a); }},
        {"FindPosition", 2, [](QORString& s, const QORString& a, const QORString&) { s.FindPosition(a, 0); }},
        {"Insert", 2, [](QORString& s, const QORString& a, const QORString&) { s.Insert(0, a); }},
        {"ReplaceSubString of a range", 2,
         [](QORString& s, const QORString& a, const QORString&) { s.ReplaceSubString(0, 1, a); }},
        {"ReplaceSubString counted", 2,
         [](QORString& s, const QORString& a, const QORString&) { s.ReplaceSubString(0, 1, a, 1); }},
        {"ReplaceSubString", 3, [](QORString& s, const QORString& a, const QORString& b) { s.ReplaceSubString(a, b); }},
        {"replace", 3, [](QORString& s, const QORString& a, const QORString& b) { s.replace(a, b); }},
    };
    return uses;
}

} // namespace

TEST(NarrowWarningsOrder, IsThatOfTheStringAndItsArguments) {
    UseCodePage(OneToOne);
    for (const ManyTexts& texts : UsesOfManyTexts()) {
        SCOPED_TRACE(texts.name);
        QORString s = StringOn<QORString>(NewWide(u"T\u00e9"));
        const QORString a = StringOn<QORString>(NewWide(u"A\u00e9"));
        const QORString b = StringOn<QORString>(NewWide(u"B\u00e9"));
        std::string expected = DataCorruption + NotPrintable(2, "T\xe9") + DataCorruption + NotPrintable(2, "A\xe9");
        if (texts.count > 2) {
            expected += DataCorruption + NotPrintable(2, "B\xe9");
        }
        EXPECT_EQ(Printed([&] { texts.use(s, a, b); }), expected);
    }
}

TEST(NarrowWarningsOrder, ComesToAReplacementThatIsNotNeeded) {
    UseCodePage(OneToOne);
    for (const bool isAlias : {false, true}) {
        QORString s("plain");
        const QORString with = StringOn<QORString>(NewWide(u"A\u00e9"));
        EXPECT_EQ(Printed([&] {
                      const QORString what("not there");
                      EXPECT_EQ(isAlias ? s.replace(what, with) : s.ReplaceSubString(what, with), -1);
                  }),
                  DataCorruption + NotPrintable(2, "A\xe9"));
        EXPECT_TRUE(IsOnTheEmptyBlock(with));
        EXPECT_EQ(BytesOf(s), "plain");
    }
}

// The process's environment has its say.

CHILD_PROGRAM(TakesTextInEveryWay) {
    UseCodePage(arguments.at(0).c_str());
    for (const Way& way : Ways()) {
        QORString old("old");
        const QORString result = way.take(old, "a\x01\xff");
        std::fprintf(stderr, "%s|", BytesOf(result).c_str());
    }
    const QORString wide = StringOn<QORString>(NewWide(u"\u00e9"));
    std::fprintf(stderr, "%s", wide.ConvertToChar());
    // What was printed is out already.
    _exit(0);
}

namespace {

struct Row {
    const char* codePage;
    const char* stage;
    const char* suppress;
    bool isPrinted;
    bool isRefused;
    friend void PrintTo(const Row& row, std::ostream* out) {
        *out << row.codePage << ", QORDevelopmentStage " << (row.stage != nullptr ? row.stage : "unset")
             << ", QORStringWarningSuppress " << (row.suppress != nullptr ? row.suppress : "unset");
    }
};

} // namespace

class NarrowWarningsByProcess : public testing::TestWithParam<Row> {};

TEST_P(NarrowWarningsByProcess, AreAsItsEnvironmentSays) {
    const Row& row = GetParam();
    ChildSetup setup{.set = {}, .arguments = {row.codePage}};
    if (row.stage != nullptr) {
        setup.set["QORDevelopmentStage"] = row.stage;
    }
    if (row.suppress != nullptr) {
        setup.set["QORStringWarningSuppress"] = row.suppress;
    }
    const Child child = RunChild("TakesTextInEveryWay", setup);
    const bool isUTF8 = std::string(row.codePage) == UTF8;
    std::string printed;
    std::string results;
    for (const Way& way : Ways()) {
        printed += row.isPrinted ? NotPrintable(2, "a\x01\xff") : "";
        results += (row.isRefused ? way.whenRefused : way.whenTaken("a\x01\xff")) + "|";
    }
    if (!isUTF8 && row.isRefused) {
        printed += DataCorruption + (row.isPrinted ? NotPrintable(1, "\xe9") : "");
    } else {
        results += isUTF8 ? "\xc3\xa9" : "\xe9";
    }
    EXPECT_EQ(child.out, printed);
    EXPECT_EQ(child.err, results);
    EXPECT_EQ(child.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NarrowWarningsByProcess,
    testing::Values(Row{UTF8, nullptr, nullptr, true, true}, Row{UTF8, "TRUE", nullptr, true, true},
                    Row{UTF8, nullptr, "1", false, true}, Row{UTF8, "FALSE", nullptr, false, false},
                    Row{UTF8, "FALSE", "1", false, false}, Row{OneToOne, nullptr, nullptr, true, true},
                    Row{OneToOne, "TRUE", nullptr, true, true}, Row{OneToOne, nullptr, "1", false, true},
                    Row{OneToOne, nullptr, "", false, true}, Row{OneToOne, "FALSE", nullptr, false, false},
                    Row{OneToOne, "FALSE", "1", false, false}));

// The true calling stack.

CHILD_PROGRAM(WarnsWithTheTrueStack) {
    s_printsTheTrueStack = true;
    if (arguments.at(0) == "refused") {
        const QORString s("a\x01");
    } else {
        UseCodePage(OneToOne);
        VELStringInit(1);
        StringOn<QORString>(NewWide(u"\u00e9")).Length();
    }
    _exit(0);
}

namespace {

/// The output without what the warning says in front of the stack, which must be there.
std::string Behind(const std::string& output, std::string warning) {
    const std::string standIn = "the calling stack\n";
    warning.erase(warning.size() - standIn.size());
    EXPECT_THAT(output, testing::StartsWith(warning));
    return output.substr(std::min(warning.size(), output.size()));
}

} // namespace

TEST(NarrowWarningsStack, StandsBehindTheWarningAndIsFlushed) {
    const Child child = RunChild("WarnsWithTheTrueStack", {.set = {}, .arguments = {"refused"}});
    const std::string stack = Behind(child.out, NotPrintable(2, "a\x01"));
    EXPECT_TRUE(std::regex_match(stack, std::regex("(pc:0x[0-9a-f]+ in [^\n]+\n)+"))) << stack;
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.exitCode, 0);
}

TEST(NarrowWarningsStack, StandsBehindEachOfTheTwoReportsOfLostText) {
    const Child child = RunChild("WarnsWithTheTrueStack", {.set = {}, .arguments = {"lost"}});
    std::string stacks = Behind(child.out, DataCorruption);
    const std::string second = NotPrintable(1, "\xe9");
    const std::size_t found = stacks.find(second.substr(0, second.find('\n') + 1));
    ASSERT_NE(found, std::string::npos) << child.out;
    const std::regex lines("(pc:0x[0-9a-f]+ in [^\n]+\n)+");
    EXPECT_TRUE(std::regex_match(stacks.substr(0, found), lines)) << stacks;
    EXPECT_TRUE(std::regex_match(Behind(stacks.substr(found), second), lines)) << stacks;
}
