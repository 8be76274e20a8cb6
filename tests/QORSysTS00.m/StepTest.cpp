/// @file
/// Strings in and out of exchange files and of counted wide texts.

#include "Child.h"
#include "HeapLog.h"
#include "StringStates.h"

#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <random>

namespace {

using namespace StringStates;
using StringEnvironment::UseCodePage;

std::string StepOf(const QORUnicodeString& s) {
    std::string out(16 + 4 * static_cast<std::size_t>(s.GetLengthInChar()), '#');
    EXPECT_EQ(s.ConvertToSTEP(out.data()), 0);
    const std::size_t length = std::strlen(out.c_str());
    EXPECT_LT(length, 5 + 4 * static_cast<std::size_t>(s.GetLengthInChar()));
    EXPECT_EQ(out[length + 1], '#') << "nothing is written behind the terminator";
    return out.substr(0, length);
}

/// What the reader makes of a text: its result, the units, and whether the string was left alone.
struct Read {
    int result;
    std::u16string text;
    bool isUnchanged;

    bool operator==(const Read&) const = default;
};

const Read Refused{-1, u"old", true};

Read ReadStep(const char* step) {
    QORUnicodeString s("old");
    s.ComputeHashKey();
    const Picture before(s);
    const int result = s.BuildFromSTEP(step);
    const bool isUnchanged = Picture(s) == before;
    if (!isUnchanged && !s.IsEmpty()) {
        ExpectFreshlyWritten(s, true);
    }
    ExpectTheEmptyBlockIntact();
    return {result, TextOf(s), isUnchanged};
}

Read ReadStep(const std::string& step) {
    return ReadStep(step.c_str());
}

Read Text(const std::u16string& text) {
    return {0, text, false};
}

void PrintTo(const Read& read, std::ostream* out) {
    *out << read.result << " '" << UTF8Of(read.text) << "'" << (read.isUnchanged ? " unchanged" : "");
}

const Read Emptied{-1, u"", false};

/// What the digits of each group come to, by the C library.
Read ReadGroups(const std::string& digits, std::size_t width) {
    std::u16string text;
    for (std::size_t i = 0; i + width <= digits.size(); i += width) {
        const std::string group = digits.substr(i, width);
        unsigned short half = 0;
        unsigned int full = 0;
        if ((width == 4 ? std::sscanf(group.c_str(), "%hx", &half) : std::sscanf(group.c_str(), "%x", &full)) != 1) {
            return Emptied;
        }
        text += static_cast<char16_t>(width == 4 ? half : full);
    }
    return text.empty() ? Refused : Text(text);
}

} // namespace

class Step : public StringEnvironment::InBoth {};

TEST_P(Step, WritesBytesInQuotes) {
    EXPECT_EQ(StepOf(QORUnicodeString()), "\"\"");
    EXPECT_EQ(StepOf(BytesString("")), "\"\"");
    EXPECT_EQ(StepOf(WideString(u"")), "\"\"");
    EXPECT_EQ(StepOf(QORUnicodeString("abc")), "\"abc\"");
    EXPECT_EQ(StepOf(WideString(u"abc")), "\"abc\"");
    EXPECT_EQ(StepOf(WideString(u"a\"b\\")), "\"a\"b\\\"");
    EXPECT_EQ(StepOf(WideString(u"\u00e9\u00ff\u0080")), "\"\xe9\xff\x80\"");
    EXPECT_EQ(StepOf(NarrowString(u"\u00e9")), "\"\xe9\"");
}

TEST_P(Step, WritesDigitsWhenAUnitIsAboveABytesRange) {
    EXPECT_EQ(StepOf(WideString(u"\u20ac")), "\\X2\\20AC");
    EXPECT_EQ(StepOf(WideString(u"\u0100")), "\\X2\\0100");
    EXPECT_EQ(StepOf(WideString(u"a\u00e9\u0100\n\uffff")), "\\X2\\006100E90100000AFFFF");
    EXPECT_EQ(StepOf(WideString(u"\U0001F600")), "\\X2\\D83DDE00");
}

TEST_P(Step, WritesZeroUnits) {
    char out[32];
    std::memset(out, '#', sizeof out);
    WideString(std::u16string(u"a\0b", 3)).ConvertToSTEP(out);
    EXPECT_EQ(std::string(out, 7), std::string("\"a\0b\"\0#", 7));
    EXPECT_EQ(StepOf(WideString(std::u16string(u"\0\u0100", 2))), "\\X2\\00000100");
}

TEST_P(Step, WritesNothingForANullHandle) {
    char out[8] = "as was";
    EXPECT_EQ(NullString<QORUnicodeString>().ConvertToSTEP(out), 0);
    EXPECT_STREQ(out, "as was");
}

TEST_P(Step, WritingChangesNothing) {
    for (const State state : AllStates) {
        Subject subject(state, u"abc");
        char out[64];
        subject.s.ConvertToSTEP(out);
        subject.ExpectUnchanged();
    }
}

TEST_P(Step, ReadsTheTextBetweenQuotes) {
    EXPECT_EQ(ReadStep("\"abc\""), Text(u"abc"));
    EXPECT_EQ(ReadStep("\"\""), Text(u""));
    EXPECT_EQ(ReadStep("\"a\"b\""), Text(u"a\"b"));
    EXPECT_EQ(ReadStep("\"\"\""), Text(u"\""));
    EXPECT_EQ(ReadStep("\"\\X2\\20AC\""), Text(u"\\X2\\20AC"));
    EXPECT_EQ(ReadStep("\"" + std::string(1000, 'x') + "\""), Text(std::u16string(1000, u'x')));
}

TEST_P(Step, ExtendsTheSignOfBytes) {
    EXPECT_EQ(ReadStep("\"\x7f\x80\xe9\xff\""), Text(u"\u007f\uff80\uffe9\uffff"));
    EXPECT_EQ(ReadStep("\"\xC3\xA9\""), Text(u"\uffc3\uffa9"));
}

TEST_P(Step, ALoneQuoteIsNoTextOrAnEmptyOne) {
    const Read read = ReadStep("\"");
    EXPECT_TRUE(read == Refused || read == Text(u"")) << testing::PrintToString(read);
}

TEST_P(Step, ReadsFourDigitsAUnit) {
    EXPECT_EQ(ReadStep("\\X2\\20AC"), Text(u"\u20ac"));
    EXPECT_EQ(ReadStep("\\X2\\20ac0041D83DDE00"), Text(u"\u20acA\U0001F600"));
    EXPECT_EQ(ReadStep("\\X2\\FFFF0001"), Text(u"\uffff\u0001"));
    EXPECT_EQ(ReadStep("\\X2\\00410000").text, std::u16string(u"A\0", 2));
    std::string digits;
    for (int i = 0; i < 1000; ++i) {
        digits += "263A";
    }
    EXPECT_EQ(ReadStep("\\X2\\" + digits), Text(std::u16string(1000, u'\u263a')));
}

TEST_P(Step, ReadsEightDigitsAUnit) {
    EXPECT_EQ(ReadStep("\\X4\\000020AC"), Text(u"\u20ac"));
    EXPECT_EQ(ReadStep("\\X4\\0000FFFF00000041"), Text(u"\uffffA"));
}

TEST_P(Step, DigitsLeftOverAreIgnored) {
    for (const char* rest : {"2", "20", "20A", "#", " ", "\"", "\\X0"}) {
        EXPECT_EQ(ReadStep(std::string("\\X2\\20AC") + rest), Text(u"\u20ac")) << rest;
        EXPECT_EQ(ReadStep(std::string("\\X2\\") + rest), Refused) << rest;
        EXPECT_EQ(ReadStep(std::string("\\X4\\000020AC") + rest), Text(u"\u20ac")) << rest;
        EXPECT_EQ(ReadStep(std::string("\\X4\\20AC") + rest), Refused) << rest;
    }
    EXPECT_EQ(ReadStep("\\X2\\"), Refused);
    EXPECT_EQ(ReadStep("\\X4\\"), Refused);
    EXPECT_EQ(ReadStep("\\X4\\0010000"), Refused);
}

TEST_P(Step, AGroupThatCantBeReadLeavesAnEmptyString) {
    for (const char* digits :
         {"ghij", "zzzz", "    ", "-   ", "+---", "\\X0\\", "20ACzzzz", "zzzz20AC", "\xff\xff\xff\xff"}) {
        EXPECT_EQ(ReadStep(std::string("\\X2\\") + digits), Emptied) << digits;
    }
    for (const char* digits : {"ghijghij", "        ", "000020ACzzzzzzzz"}) {
        EXPECT_EQ(ReadStep(std::string("\\X4\\") + digits), Emptied) << digits;
    }
    QORUnicodeString s("old");
    s.ComputeHashKey();
    EXPECT_EQ(s.BuildFromSTEP("\\X2\\zzzz"), -1);
    ExpectFreshlyWritten(s, true);
    EXPECT_EQ(StringAccess::BlockOf(s)->_length, 0);
    EXPECT_EQ(s.ComputeHashKey(), 0u);
}

TEST_P(Step, EachGroupIsReadOnItsOwnAsTheCLibraryReadsIt) {
    const char* const groups[] = {"20AC", " 12 ", "\t\n12", "   A",    "12 4",      "1g00", "0x1F",
                                  "0X1f", "0x00", "0xAg",   "x123",    "+12F",      "-001", "-FFF",
                                  "+ 12", "--12", "1-23",   "\f\v\r1", "1\xC3\xA9g"};
    for (const char* first : groups) {
        EXPECT_EQ(ReadStep(std::string("\\X2\\") + first), ReadGroups(first, 4)) << first;
        for (const char* second : groups) {
            const std::string digits = std::string(first) + second;
            EXPECT_EQ(ReadStep("\\X2\\" + digits), ReadGroups(digits, 4)) << digits;
            if (ReadGroups(digits, 8).text.size() == 1) {
                EXPECT_EQ(ReadStep("\\X4\\" + digits), ReadGroups(digits, 8)) << digits;
            }
        }
    }
}

TEST_P(Step, RandomDigitsAgreeWithTheCLibrary) {
    std::minstd_rand random(3);
    constexpr char Alphabet[] = "0123456789abcdefABCDEFxX+- \tgz";
    for (int round = 0; round < 20000; ++round) {
        std::string digits;
        for (std::size_t left = (random() >> 8) % 14; left > 0; --left) {
            digits += Alphabet[(random() >> 8) % (sizeof Alphabet - 1)];
        }
        ASSERT_EQ(ReadStep("\\X2\\" + digits), ReadGroups(digits, 4)) << digits;
    }
}

TEST_P(Step, AnythingElseLeavesTheStringUnchanged) {
    for (const char* step : {"", "plain", "\"abc", "abc\"", "a\"", "\\", "\\X", "\\X2", "\\X3\\20AC", "\\x2\\20AC",
                             " \\X2\\20AC", "\\X4", "X2\\20AC", "\\X2/20AC", "'abc'"}) {
        EXPECT_EQ(ReadStep(step), Refused) << step;
    }
}

TEST_P(Step, NoTextResets) {
    EXPECT_EQ(ReadStep(nullptr), Emptied);
    for (const State state : AllStates) {
        Subject subject(state, u"abc");
        EXPECT_EQ(subject.s.BuildFromSTEP(nullptr), -1);
        EXPECT_TRUE(subject.s.IsEmpty());
        subject.ExpectOthersUntouched();
    }
}

TEST_P(Step, ReadsIntoAnyString) {
    for (const State state : AllStates) {
        for (const char* step :
             {"\"xyz\"", "\\X2\\007800790020", "\\X4\\000000780000007900000020", "\\X2\\zzzz", "plain", "\"\""}) {
            Subject subject(state, u"abc");
            const int result = subject.s.BuildFromSTEP(step);
            if (std::string(step) == "plain") {
                EXPECT_EQ(result, -1);
                subject.ExpectUnchanged();
                continue;
            }
            subject.ExpectOthersUntouched();
            if (state != State::Null) {
                EXPECT_EQ(result, std::string(step) == "\\X2\\zzzz" ? -1 : 0) << NameOf(state) << step;
                EXPECT_EQ(TextOf(subject.s), ReadStep(step).text);
            }
        }
    }
}

TEST_P(Step, WithoutMemoryIsEmptyAndNoFailure) {
    VELStringPoolSetForCurrentThrd(0);
    for (const char* step : {"\"abc\"", "\\X2\\20AC20AC", "\\X4\\000020AC", "\\X2\\zzzz"}) {
        for (const State state : AllStates) {
            Subject subject(state, u"abc");
            {
                const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
                EXPECT_EQ(subject.s.BuildFromSTEP(step), 0) << step;
            }
            EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(Step, ReadsTheStringsOwnText) {
    for (const bool isShared : {false, true}) {
        for (const char* step : {"\"abcdefghijkl\"", "\\X2\\20AC20AC20AC", "\\X2\\zzzz", "\\X4\\000020AC"}) {
            QORUnicodeString narrow(step);
            const QORUnicodeString copy = isShared ? narrow : QORUnicodeString();
            narrow.BuildFromSTEP(narrow.ConvertToChar());
            EXPECT_EQ(TextOf(narrow), ReadStep(step).text);
            QORUnicodeString wide = WideString(std::u16string(step, step + std::strlen(step)));
            const QORUnicodeString wideCopy = isShared ? wide : QORUnicodeString();
            wide.BuildFromSTEP(wide.ConvertToChar());
            EXPECT_EQ(TextOf(wide), ReadStep(step).text);
        }
    }
}

TEST_P(Step, TextOfDigitsComesBack) {
    for (const std::u16string& text :
         {std::u16string(u"\u20ac"), std::u16string(u"a\0\u0100", 3), std::u16string(500, u'\u4e00')}) {
        QORUnicodeString s;
        EXPECT_EQ(s.BuildFromSTEP(StepOf(WideString(text)).c_str()), 0);
        EXPECT_EQ(TextOf(s), text);
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, Step, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

// The report of cut values.

CHILD_PROGRAM(ReadsStep) {
    QORUnicodeString s;
    std::printf("%d", s.BuildFromSTEP(arguments[0].c_str()));
    for (const char16_t unit : TextOf(s)) {
        std::printf(" %04X", static_cast<unsigned int>(unit));
    }
    return 0;
}

namespace {

std::string ReportOf(const std::string& step, const std::string& value) {
    return "Message from  QORUnicodeString::BuildFromSTEP\n"
           "Conversion from a 4 bytes Unicode character to a 2 bytes unicode character\n"
           "with data loss\n"
           "Express String : " +
           step + "\nUnicode value  : " + value;
}

} // namespace

TEST(StepReport, OfAValueThatIsCut) {
    const Child child = RunChild("ReadsStep", {.set = {}, .arguments = {"\\X4\\00010000"}});
    EXPECT_EQ(child.err, ReportOf("\\X4\\00010000", "10000"));
    EXPECT_EQ(child.out, "0 0000");
}

TEST(StepReport, OfEachValueThatIsCutWithTheWholeText) {
    const std::string step = "\\X4\\000020AC0001F600FFFFFFFF0000FFFF12";
    const Child child = RunChild("ReadsStep", {.set = {}, .arguments = {step}});
    EXPECT_EQ(child.err, ReportOf(step, "1f600") + ReportOf(step, "ffffffff"));
    EXPECT_EQ(child.out, "0 20AC F600 FFFF FFFF");
}

TEST(StepReport, IsNotWrittenOtherwise) {
    for (const char* step : {"\\X4\\0000FFFF", "\\X2\\FFFF", "\\X4\\zzzzzzzz", "plain", "\"a\"", "\\X4\\0001000"}) {
        EXPECT_EQ(RunChild("ReadsStep", {.set = {}, .arguments = {step}}).err, "") << step;
    }
}

TEST(StepReport, PrintsFormatSignsAsTheyAre) {
    const std::string step = "\\X4\\00010000%s%n";
    EXPECT_EQ(RunChild("ReadsStep", {.set = {}, .arguments = {step}}).err, ReportOf(step, "10000"));
}

// Counted wide text.

namespace {

/// The block of a counted text: size, elements and terminator.
std::vector<unsigned int> CountedText(unsigned int bytes, const std::vector<unsigned int>& elements) {
    std::vector<unsigned int> block{bytes};
    block.insert(block.end(), elements.begin(), elements.end());
    block.push_back(0);
    return block;
}

int BuildFrom(QORUnicodeString& s, std::vector<unsigned int>& block) {
    wchar_t* const text = reinterpret_cast<wchar_t*>(block.data() + 1);
    return s.BuildFromBSTR(text);
}

} // namespace

class CountedWideText : public InAllStates {};

TEST_P(CountedWideText, GivesOneElementAUnit) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        wchar_t* out = nullptr;
        EXPECT_EQ(subject.s.ConvertToBSTR(&out), 0);
        if (TheState() == State::Null && out == nullptr) {
            continue;
        }
        ASSERT_NE(out, nullptr);
        const auto* const block = reinterpret_cast<unsigned int*>(out) - 1;
        EXPECT_EQ(block[0], text.size() * 4);
        EXPECT_EQ(std::u16string(out, out + text.size()), text);
        EXPECT_EQ(out[text.size()], 0);
        std::free(reinterpret_cast<char*>(out) - 4);
        subject.ExpectUnchanged();
    }
}

TEST_P(CountedWideText, IsTakenElementByElement) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        auto block = CountedText(16, {0x61, 0xE9, 0x20AC, 0x1F600});
        const int result = BuildFrom(subject.s, block);
        subject.ExpectOthersUntouched();
        if (TheState() == State::Null) {
            EXPECT_EQ(result, -1);
            continue;
        }
        EXPECT_EQ(result, 0);
        ExpectFreshlyWritten(subject.s, true);
        ExpectReadsAs(subject.s, u"a\u00e9\u20ac\uf600");
    }
}

TEST_P(CountedWideText, OfNoElementsIsEmpty) {
    for (const unsigned int bytes : {0u, 1u, 3u}) {
        Subject subject(TheState(), u"abc");
        auto block = CountedText(bytes, {0x61});
        EXPECT_EQ(BuildFrom(subject.s, block), TheState() == State::Null ? -1 : 0);
        EXPECT_TRUE(subject.s.IsEmpty());
        subject.ExpectOthersUntouched();
    }
}

TEST_P(CountedWideText, NullResets) {
    Subject subject(TheState(), u"abc");
    wchar_t* const nothing = nullptr;
    EXPECT_EQ(subject.s.BuildFromBSTR(nothing), -1);
    EXPECT_TRUE(subject.s.IsEmpty());
    subject.ExpectOthersUntouched();
}

INSTANTIATE_TEST_SUITE_P(States, CountedWideText, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(CountedWideTextForms, CountsInWholeElements) {
    for (unsigned int bytes = 4; bytes < 16; ++bytes) {
        QORUnicodeString s;
        auto block = CountedText(bytes, {0x61, 0x62, 0x63, 0x64});
        EXPECT_EQ(BuildFrom(s, block), 0);
        EXPECT_EQ(TextOf(s), std::u16string(u"abcd").substr(0, bytes / 4));
    }
}

TEST(CountedWideTextForms, HoldsZeroElements) {
    QORUnicodeString s;
    auto block = CountedText(12, {0, 0x61, 0x10000});
    EXPECT_EQ(BuildFrom(s, block), 0);
    EXPECT_EQ(TextOf(s), std::u16string(u"\0a\0", 3));
    wchar_t* out = nullptr;
    s.ConvertToBSTR(&out);
    EXPECT_EQ(std::u16string(out, out + 3), std::u16string(u"\0a\0", 3));
    std::free(reinterpret_cast<char*>(out) - 4);
}

TEST(CountedWideTextForms, WithoutMemoryIsNull) {
    VELStringPoolSetForCurrentThrd(0);
    const QORUnicodeString s = WideString(u"abc");
    wchar_t* out = reinterpret_cast<wchar_t*>(&out);
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_EQ(s.ConvertToBSTR(&out), 0);
    }
    EXPECT_EQ(out, nullptr);
    QORUnicodeString target("old");
    auto block = CountedText(4, {0x61});
    auto none = CountedText(3, {0x61});
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(BuildFrom(target, block), -1);
    EXPECT_TRUE(IsOnTheEmptyBlock(target));
    EXPECT_EQ(BuildFrom(target, none), 0);
}

TEST(CountedWideTextForms, TakesSoManyBytes) {
    const QORUnicodeString s = WideString(u"abc");
    const HeapLog log;
    wchar_t* out = nullptr;
    s.ConvertToBSTR(&out);
    EXPECT_THAT(log.Requests(), testing::ElementsAre(20u));
    std::free(reinterpret_cast<char*>(out) - 4);
    EXPECT_EQ(log.Live(), 0u);
}
