/// @file
/// Items in the line grammar: what each of them switches on.

#include "TraceCalls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace TraceCalls;
using testing::ElementsAre;

const std::string Letters63(63, 'x');
const std::string Letters64(64, 'x');

class TraceLine : public testing::TestWithParam<Item> {};

TEST_P(TraceLine, SwitchesOn) {
    Recorder recorder;
    EXPECT_EQ(VEL::internal::ApplyTraceLine(GetParam().text.c_str(), recorder.Sink()), GetParam().result);
    EXPECT_EQ(recorder.calls, GetParam().calls) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Destination, TraceLine,
    testing::Values(Item{"-O A", 0, {"0 STDOUT", "0 STDOUT A"}}, Item{"-o A", 0, {"0 STDOUT", "0 STDOUT A"}},
                    Item{"-E A", 0, {"0 STDERR", "0 STDERR A"}}, Item{"-e A", 0, {"0 STDERR", "0 STDERR A"}},
                    Item{"-Frun.txt A", 0, {"0 run.txt", "0 run.txt A"}},
                    Item{"-frun.txt A", 0, {"0 run.txt", "0 run.txt A"}}, Item{"-Slog A", 0, {"2 log", "2 log A"}},
                    Item{"-slog A", 0, {"2 log", "2 log A"}},
                    // Nothing but a destination.
                    Item{"-O", 0, {"0 STDOUT"}},
                    // Inside a word.
                    Item{"my-output", 0, {"0 STDOUT", "0 STDOUT my-output"}},
                    Item{"a-elephant -o", 0, {"0 STDERR", "0 STDERR a-elephant"}},
                    Item{"x-file", 0, {"0 ile", "0 ile x-file"}}, Item{"--option A", 0, {"0 STDOUT", "0 STDOUT A"}},
                    Item{"-Output A", 0, {"0 STDOUT", "0 STDOUT A"}}));

INSTANTIATE_TEST_SUITE_P(
    FirstDestination, TraceLine,
    testing::Values(Item{"-O -E A", 0, {"0 STDOUT", "0 STDOUT A"}}, Item{"-E -O A", 0, {"0 STDERR", "0 STDERR A"}},
                    Item{"A -Fa -Fb", 0, {"0 a", "0 a A"}}, Item{"-Slog -Frun A", 0, {"2 log", "2 log A"}},
                    // No name directly behind the letter.
                    Item{"-F -E A", 0, {"0 STDERR", "0 STDERR A"}}, Item{"-F run -O", 0, {"0 STDOUT", "0 STDOUT run"}},
                    Item{"-S -E A", 0, {"0 STDERR", "0 STDERR A"}}, Item{"-S -O", 0, {"0 STDOUT"}},
                    Item{"-S\t-F\n-Frun", 0, {"0 run"}}, Item{"-S -Frun", 0, {"0 run"}},
                    Item{"-F-E A", 0, {"0 -E", "0 -E A"}}));

INSTANTIATE_TEST_SUITE_P(NoDestination, TraceLine,
                         testing::Values(Item{"", -1, {}}, Item{" ", -1, {}}, Item{"A B", -1, {}}, Item{"-F", -1, {}},
                                         Item{"-F A", -1, {}}, Item{"A -S", -1, {}}, Item{"-", -1, {}},
                                         Item{"--", -1, {}}, Item{"-L100 -N --local-time", -1, {}},
                                         Item{"# a comment", -1, {}}));

// The name of a file goes up to white space, whatever splits the rest.
INSTANTIATE_TEST_SUITE_P(Separators, TraceLine,
                         testing::Values(Item{"-O A B,C;D:E|F",
                                              0,
                                              {"0 STDOUT", "0 STDOUT A", "0 STDOUT B", "0 STDOUT C", "0 STDOUT D",
                                               "0 STDOUT E", "0 STDOUT F"}},
                                         Item{" ,;:|-O, :A ;; ", 0, {"0 STDOUT", "0 STDOUT A"}},
                                         Item{"-Fa:b,c A", 0, {"0 a:b,c", "0 a:b,c b", "0 a:b,c c", "0 a:b,c A"}},
                                         Item{"-O A\tB", 0, {"0 STDOUT", "0 STDOUT A\tB"}},
                                         Item{"-Frun\tA B", 0, {"0 run", "0 run B"}},
                                         Item{"-Frun\vA B", 0, {"0 run", "0 run B"}},
                                         Item{"-Frun\fA B", 0, {"0 run", "0 run B"}},
                                         Item{"-Frun\rA B", 0, {"0 run", "0 run B"}}));

INSTANTIATE_TEST_SUITE_P(Options, TraceLine,
                         testing::Values(Item{"-O --local-time", 0, {"0 STDOUT", "STDOUT 12=1"}},
                                         Item{"-O --local-timely", 0, {"0 STDOUT", "STDOUT 12=1"}},
                                         Item{"-O --Local-time", 0, {"0 STDOUT"}},
                                         Item{"-O --local-tim", 0, {"0 STDOUT"}},
                                         Item{"-O -I5 -i6", 0, {"0 STDOUT", "STDOUT 9=5", "STDOUT 9=6"}},
                                         Item{"-O -L100 -l200", 0, {"0 STDOUT", "STDOUT 8=100", "STDOUT 8=200"}},
                                         Item{"-O -M512 -m1", 0, {"0 STDOUT", "STDOUT 10=512", "STDOUT 10=1"}},
                                         Item{"-O -N A -n", 0, {"0 STDOUT", "STDOUT 4=0", "0 STDOUT A", "STDOUT 4=0"}},
                                         // Numbers.
                                         Item{"-O -L -L0 -Lx -I0 -M-0 -M", 0, {"0 STDOUT"}},
                                         Item{"-O -L0x10 -L12x -L010 -L-3 -L+4",
                                              0,
                                              {"0 STDOUT", "STDOUT 8=12", "STDOUT 8=10", "STDOUT 8=-3", "STDOUT 8=4"}},
                                         Item{"-O -L2147483648 -I-99999999999999999999",
                                              0,
                                              {"0 STDOUT", "STDOUT 8=2147483647", "STDOUT 9=-2147483648"}},
                                         // Anything else with a dash.
                                         Item{"-O -X -x5 - -- --name -5 -Z", 0, {"0 STDOUT"}}));

INSTANTIATE_TEST_SUITE_P(Order, TraceLine,
                         testing::Values(Item{"-FLifeCycle.txt LifeCycle Path -L100",
                                              0,
                                              {"0 LifeCycle.txt", "0 LifeCycle.txt LifeCycle", "0 LifeCycle.txt Path",
                                               "LifeCycle.txt 8=100"}},
                                         Item{"LifeCycle,Path -L100 -FLifeCycle.txt",
                                              0,
                                              {"0 LifeCycle.txt", "0 LifeCycle.txt LifeCycle", "0 LifeCycle.txt Path",
                                               "LifeCycle.txt 8=100"}}));

INSTANTIATE_TEST_SUITE_P(
    Limits, TraceLine,
    testing::Values(Item{"-F" + Letters63, 0, {"0 " + Letters63}}, Item{"-F" + Letters64, 0, {"0 " + Letters63}},
                    Item{"-S" + Letters64 + "y", 0, {"2 " + Letters63}},
                    Item{"-O " + Letters63, 0, {"0 STDOUT", "0 STDOUT " + Letters63}},
                    Item{"-O " + Letters64 + " A", 0, {"0 STDOUT", "0 STDOUT " + Letters63, "0 STDOUT A"}},
                    // The 63 bytes of a number begin with its dash.
                    Item{"-O -L" + std::string(60, '0') + "7", 0, {"0 STDOUT", "STDOUT 8=7"}},
                    Item{"-O -L" + std::string(61, '0') + "7", 0, {"0 STDOUT"}}));

TEST(TraceLineGrammar, ALineOf20000BytesIsReadToItsEnd) {
    Recorder recorder;
    const std::string line = std::string(20000, '-') + "," + std::string(20000, ' ') + "A -O";
    EXPECT_EQ(VEL::internal::ApplyTraceLine(line.c_str(), recorder.Sink()), 0);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A"));
}

TEST(TraceLineGrammar, NullHasNoDestination) {
    Recorder recorder;
    EXPECT_EQ(VEL::internal::ApplyTraceLine(nullptr, recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre());
}

TEST(TraceLineGrammar, ARefusedDestinationEndsTheLineWithItsResult) {
    Recorder recorder;
    recorder.answers = {{"0 STDOUT", 7}};
    EXPECT_EQ(VEL::internal::ApplyTraceLine("-O A -E", recorder.Sink()), 7);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT"));
}

TEST(TraceLineGrammar, ARefusedNameFailsAndTheRestIsRead) {
    Recorder recorder;
    recorder.answers = {{"0 STDOUT A", 5}};
    EXPECT_EQ(VEL::internal::ApplyTraceLine("-O A B -N", recorder.Sink()), -1);
    EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "0 STDOUT A", "0 STDOUT B", "STDOUT 4=0"));
}

TEST(TraceLineGrammar, ARefusedOptionFailsAndTheRestIsRead) {
    for (const std::string option : {"8=5", "9=6", "10=7", "4=0", "12=1"}) {
        Recorder recorder;
        recorder.answers = {{"STDOUT " + option, 5}};
        EXPECT_EQ(VEL::internal::ApplyTraceLine("-O -L5 -I6 -M7 -N --local-time A", recorder.Sink()), -1) << option;
        EXPECT_THAT(recorder.calls, ElementsAre("0 STDOUT", "STDOUT 8=5", "STDOUT 9=6", "STDOUT 10=7", "STDOUT 4=0",
                                                "STDOUT 12=1", "0 STDOUT A"));
    }
}

} // namespace
