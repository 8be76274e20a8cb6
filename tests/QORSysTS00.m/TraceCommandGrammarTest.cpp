/// @file
/// Items in the command grammar, and the environment variable, whose items are in either.

#include "TraceCalls.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace TraceCalls;
using testing::ElementsAre;
using VEL::internal::ApplyTraceCommand;
using VEL::internal::ApplyTraceVariable;

class TraceCommand : public testing::TestWithParam<Item> {};

TEST_P(TraceCommand, SwitchesOn) {
    Recorder recorder;
    EXPECT_EQ(ApplyTraceCommand(GetParam().text.c_str(), recorder.Sink()), GetParam().result);
    EXPECT_EQ(recorder.calls, GetParam().calls) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Destination, TraceCommand,
                         testing::Values(Item{"--name A -o", 0, {"0 STDOUT", "0 STDOUT A"}},
                                         Item{"--name A -e", 0, {"0 STDERR", "0 STDERR A"}},
                                         Item{"--name A --file f.txt", 0, {"0 f.txt", "0 f.txt A"}},
                                         Item{"-o", 0, {"0 STDOUT"}}, Item{"-e -o --file f", 0, {"0 STDOUT"}},
                                         Item{"-eo", 0, {"0 STDOUT"}}, Item{"--file f -e", 0, {"0 STDERR"}},
                                         Item{"--file a b -o", 0, {"0 STDOUT"}}, Item{"--file \"a b\"", 0, {"0 a b"}},
                                         Item{"--file -5", 0, {"0 -5"}},
                                         // The empty argument behind a blank.
                                         Item{"--file ", 0, {"0 "}},
                                         // Deliberately not reported when it stands last.
                                         Item{"-o --file", 0, {"0 STDOUT"}}));

INSTANTIATE_TEST_SUITE_P(Refused, TraceCommand,
                         testing::Values(Item{"", -1, {}}, Item{" ", -1, {}}, Item{"--name A", -1, {}},
                                         Item{"--file a b", -1, {}}, Item{"--file a ", -1, {}}, Item{"--file", -1, {}},
                                         Item{"A -o", -1, {}}, Item{"-x -o", -1, {}}, Item{"-O", -1, {}},
                                         Item{"-o -o", -1, {}}, Item{"--Name A -o", -1, {}},
                                         Item{"-o --name A --name B", -1, {}}, Item{"-o --name --local-time", -1, {}},
                                         Item{"-o --local-time 1", -1, {}}, Item{"-o --unknown", -1, {}},
                                         Item{"-o --", -1, {}}));

INSTANTIATE_TEST_SUITE_P(
    Names, TraceCommand,
    testing::Values(Item{"-o --name A B C", 0, {"0 STDOUT", "0 STDOUT A", "0 STDOUT B", "0 STDOUT C"}},
                    Item{"--name \"A B\" -o", 0, {"0 STDOUT", "0 STDOUT A B"}},
                    // Short options between the names.
                    Item{"--name A -o B -n C", 0, {"0 STDOUT", "0 STDOUT A", "0 STDOUT B", "0 STDOUT C", "STDOUT 4=0"}},
                    Item{"--name A - -1 -o", 0, {"0 STDOUT", "0 STDOUT A", "0 STDOUT -1"}},
                    Item{"--name A -o ", 0, {"0 STDOUT", "0 STDOUT A", "0 STDOUT "}},
                    Item{"\t --name   A\t-o", 0, {"0 STDOUT", "0 STDOUT A"}}, Item{"-o --name", 0, {"0 STDOUT"}}));

INSTANTIATE_TEST_SUITE_P(
    Options, TraceCommand,
    testing::Values(
        Item{"--name LifeCycle Path --file life.txt --rotate-file-size 100000 --rotate-file-count 12 --local-time",
             0,
             {"0 life.txt", "0 life.txt LifeCycle", "0 life.txt Path", "life.txt 12=1", "life.txt 14=12",
              "life.txt 13=100000"}},
        // In an order of their own.
        Item{"-n -o --rotate-file-count 3 --rotate-file-size 5",
             0,
             {"0 STDOUT", "STDOUT 14=3", "STDOUT 13=5", "STDOUT 4=0"}},
        Item{"-n -o --rotate-file-size 5 --rotate-file-count 3 --local-time --name A",
             0,
             {"0 STDOUT", "0 STDOUT A", "STDOUT 12=1", "STDOUT 14=3", "STDOUT 13=5", "STDOUT 4=0"}},
        Item{"-n -o --name A", 0, {"0 STDOUT", "0 STDOUT A", "STDOUT 4=0"}},
        Item{"-o --rotate-file-count 3 4 --rotate-file-size 5 6", 0, {"0 STDOUT", "STDOUT 14=3", "STDOUT 13=5"}},
        Item{"-o --rotate-file-count 0 --rotate-file-size -5", 0, {"0 STDOUT"}},
        Item{"-o --rotate-file-count x --rotate-file-size 7x", 0, {"0 STDOUT", "STDOUT 13=7"}},
        Item{"-o --rotate-file-count 99999999999999999999 --rotate-file-size 4294967296",
             0,
             {"0 STDOUT", "STDOUT 14=2147483647", "STDOUT 13=2147483647"}},
        Item{"-o --rotate-file-size 1 --rotate-file-count", 0, {"0 STDOUT", "STDOUT 13=1"}}));

TEST(TraceCommandGrammar, ARefusedDestinationFails) {
    Recorder recorder;
    recorder.answers = {{"0 STDOUT", 7}};
    EXPECT_EQ(ApplyTraceCommand("-o --name A", recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT"));
}

TEST(TraceCommandGrammar, RefusedNamesAndOptionsAreNotLookedAt) {
    Recorder recorder;
    recorder.answers = {{"0 STDOUT A", -1}, {"STDOUT 12=1", -1}, {"STDOUT 4=0", -1}};
    EXPECT_EQ(ApplyTraceCommand("-on --name A B --local-time", recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "0 STDOUT B", "STDOUT 12=1", "STDOUT 4=0"));
}

TEST(TraceCommandGrammar, ALineFeedCutsTheItem) {
    Recorder recorder;
    EXPECT_EQ(ApplyTraceCommand("-o --name A\nB C", recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "0 STDOUT B"));
}

class TraceVariable : public testing::TestWithParam<Item> {
protected:
    void TearDown() override { unsetenv("VELSysTrace"); }
};

TEST_P(TraceVariable, SwitchesOn) {
    ASSERT_EQ(setenv("VELSysTrace", GetParam().text.c_str(), 1), 0);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceVariable(recorder.Sink()), GetParam().result);
    EXPECT_EQ(recorder.calls, GetParam().calls) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(OneItem, TraceVariable,
                         testing::Values(Item{"--name A --file f.txt", 0, {"0 f.txt", "0 f.txt A"}},
                                         Item{"-e LifeCycle", 0, {"0 STDERR", "0 STDERR LifeCycle"}},
                                         // The letter in "--file", when the line grammar gets it.
                                         Item{"--name A --file a b", 0, {"0 ile", "0 ile A", "0 ile a", "0 ile b"}},
                                         Item{"A", -1, {}}, Item{" ", -1, {}}, Item{"", -1, {}}));

INSTANTIATE_TEST_SUITE_P(
    SeveralItems, TraceVariable,
    testing::Values(Item{"-e A,--name B -o;-Frun C:-Slog D|--file g --name E",
                         0,
                         {"0 STDERR", "0 STDERR A", "0 STDOUT", "0 STDOUT B", "0 run", "0 run C", "2 log", "2 log D",
                          "0 g", "0 g E"}},
                    // Items, not names: the second has no destination.
                    Item{"-o A,B,-e C", -1, {"0 STDOUT", "0 STDOUT A"}}, Item{"A,-o B", -1, {}},
                    // Empty ones.
                    Item{",-o A", -1, {}}, Item{"-o,,-e", -1, {"0 STDOUT"}}, Item{"-o|", -1, {"0 STDOUT"}},
                    Item{":", -1, {}},
                    // A quote doesn't keep an item together.
                    Item{"-o --name \"A,-e B\"", 0, {"0 STDOUT", "0 STDOUT \"A", "0 STDERR", "0 STDERR B\""}}));

TEST(TraceVariableValue, ThatIsNotSetFails) {
    unsetenv("VELSysTrace");
    Recorder recorder;
    EXPECT_EQ(ApplyTraceVariable(recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre());
}

TEST(TraceVariableValue, EndsAtTheFirstItemThatTheLineGrammarRefusesWithItsResult) {
    ASSERT_EQ(setenv("VELSysTrace", "-o A,-e B,-Frun C", 1), 0);
    Recorder recorder;
    recorder.answers = {{"0 STDERR", 7}};
    EXPECT_EQ(ApplyTraceVariable(recorder.Sink()), 7);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "0 STDERR"));
}

TEST(TraceVariableValue, WhoseDestinationTheCommandGrammarIsRefusedGoesToTheLineGrammar) {
    ASSERT_EQ(setenv("VELSysTrace", "-o --name A", 1), 0);
    Recorder recorder;
    recorder.answers = {{"0 STDOUT", -3}};
    EXPECT_EQ(ApplyTraceVariable(recorder.Sink()), -3);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT"));
}

TEST(TraceVariableValue, IsCutAt8191Bytes) {
    const std::string head = "--file f --name " + std::string(8175 - 2, ' ');
    for (const auto& [value, name] : {std::pair(head + "AB", "0 f AB"), std::pair(head + "ABC", "0 f AB")}) {
        ASSERT_EQ(setenv("VELSysTrace", value.c_str(), 1), 0);
        Recorder recorder;
        EXPECT_EQ(ApplyTraceVariable(recorder.Sink()), 0);
        EXPECT_THAT(recorder.calls, ElementsAre("0 f", name)) << value.size();
    }
}

TEST(TraceVariableValue, IsLeftAsItWas) {
    ASSERT_EQ(setenv("VELSysTrace", "-o A,-e B", 1), 0);
    Recorder recorder;
    EXPECT_EQ(ApplyTraceVariable(recorder.Sink()), 0);
    EXPECT_STREQ(std::getenv("VELSysTrace"), "-o A,-e B");
}

} // namespace
