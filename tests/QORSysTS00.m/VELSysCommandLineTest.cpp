/// @file
/// Splitting of command lines.

#include "PlainCommandLine.h"
#include "VELSysEnviron.h"

#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

using Slots = std::vector<std::optional<std::string>>;

Slots Split(const char* line) {
    char** argv = nullptr;
    int argc = 0;
    EXPECT_EQ(VELSysEnvironBuildArgumentFromCommandLine(line, &argv, &argc), 0);
    Slots slots;
    for (int i = 0; i < argc; ++i) {
        slots.push_back(argv[i] != nullptr ? std::optional<std::string>(argv[i]) : std::nullopt);
    }
    EXPECT_EQ(VELSysEnvironDeleteArgumentArrayA(&argv, argc), 0);
    EXPECT_EQ(argv, nullptr);
    return slots;
}

struct Line {
    const char* name;
    const char* line;
    Slots arguments;
};

std::ostream& operator<<(std::ostream& out, const Line& line) {
    return out << line.name;
}

const Line Lines[] = {
    {"Empty", "", {""}},
    {"TwoWords", "a b", {"a", "b"}},
    {"LeadingBlanks", "  a", {"", "a"}},
    {"TrailingBlanks", "a  ", {"a", ""}},
    {"BlanksAlone", "  ", {"", ""}},
    {"Tabs", "a\t \tb", {"a", "b"}},
    {"OtherWhiteSpaceIsPlain", "a\vb\rc", {"a\vb\rc"}},
    {"AQuotedPart", "\"a b\" c", {"a b", "c"}},
    {"BlanksInQuotesCollapse", "\"a  b\"", {"a b"}},
    {"ATabInQuotesIsASpace", "\"a\tb\"", {"a b"}},
    {"AQuoteBehindAClosedPart", "\"a\" b\" c", {"a", "b\"", "c"}},
    {"TextBehindTheClosingQuote", "\"abc\"def ghi", {"abcdef", "ghi"}},
    {"InnerQuotesStay", "\"a\"b\"c\" d", {"a\"b\"c", "d"}},
    {"QuotesInTheMiddle", "x\"y z\"", {"xy z"}},
    {"AnEscapedQuoteIsAQuote", "\"a\\\"b\" c", {"a\"b", "c"}},
    {"AnUnterminatedQuote", "\"unterminated x y", {"\"unterminated", "x", "y"}},
    {"AnUnterminatedQuoteAtTheEnd", "a \"", {"a", "\""}},
    {"TwoQuotesCloseNothing", "\"\" x", {"\"\"", "x"}},
    {"TwoQuotesAndAnother", "\"\"\" x", {"\"", "x"}},
    {"BackslashesStay", "a\\\\ b", {"a\\\\", "b"}},
    {"BackslashesBeforeAQuoteAreHalved", "\\\\\"a b\"", {"\\a b"}},
    {"AnOddRunLosesTheOddOne", "\\\\\\\"a b\"", {"\\a b"}},
    {"ASingleBackslashStays", "a\\b c", {"a\\b", "c"}},
    {"ASingleBackslashAtTheEnd", "a\\", {"a\\"}},
    {"ARunOfBackslashesAtTheEnd", "a b\\\\\\", {"a", "b\\\\\\"}},
    {"ABackslashBehindBlanksIsTakenUnseen", " \\\"a b\"", {"", "\\a b"}},
    {"ATabBehindBackslashesIsPlain", "a\\\\\tb c", {"a\\\\\tb", "c"}},
    {"ASpaceBehindBackslashesAndMore", "a\\\\  b", {"a\\\\", "\nb", std::nullopt}},
    {"ALineFeedOfItsOwnDropsWhatIsNotCounted", "a\nb c", {"a", "b"}},
    {"ALineFeedAlone", "\n", {""}},
    {"ALineFeedInQuotes", "\"a\nb\" c", {"a", "b"}},
    {"BytesAbove127", "\xE9 \xFF", {"\xE9", "\xFF"}},
};

class CommandLines : public testing::TestWithParam<Line> {};

INSTANTIATE_TEST_SUITE_P(All, CommandLines, testing::ValuesIn(Lines),
                         [](const testing::TestParamInfo<Line>& line) { return line.param.name; });

} // namespace

TEST_P(CommandLines, AreSplit) {
    EXPECT_EQ(Split(GetParam().line), GetParam().arguments);
    EXPECT_EQ(PlainCommandLine::Split(GetParam().line), GetParam().arguments);
}

TEST(VELSysCommandLine, RefusesNullArguments) {
    char* slots[] = {nullptr};
    char** argv = slots;
    int argc = 77;
    EXPECT_EQ(VELSysEnvironBuildArgumentFromCommandLine(nullptr, &argv, &argc), -1);
    EXPECT_EQ(VELSysEnvironBuildArgumentFromCommandLine("a", nullptr, &argc), -1);
    EXPECT_EQ(VELSysEnvironBuildArgumentFromCommandLine("a", &argv, nullptr), -1);
    EXPECT_EQ(argv, slots);
    EXPECT_EQ(argc, 77);
}

TEST(VELSysCommandLine, SplitsAllShortLinesByItsRules) {
    constexpr char alphabet[] = {' ', '\t', '"', '\\', 'a'};
    constexpr int longest = 7;
    std::string line;
    const auto check = [&](const auto& self) -> void {
        // A block of just this size, so that a step behind it shows.
        const std::vector<char> exact(line.c_str(), line.c_str() + line.size() + 1);
        ASSERT_EQ(Split(exact.data()), PlainCommandLine::Split(line)) << "'" << line << "'";
        if (line.size() == longest) {
            return;
        }
        for (const char c : alphabet) {
            line.push_back(c);
            self(self);
            line.pop_back();
        }
    };
    check(check);
}

TEST(VELSysCommandLine, SplitsLongLines) {
    std::string line;
    Slots expected;
    for (int i = 0; i < 2000; ++i) {
        line += (i > 0 ? " \"" : "\"") + std::to_string(i) + " x\"";
        expected.emplace_back(std::to_string(i) + " x");
    }
    EXPECT_EQ(Split(line.c_str()), expected);
}
