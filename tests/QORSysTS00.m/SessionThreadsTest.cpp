// The main pair on several threads at once; what is wrong here shows under the sanitizers.

#include "QORSysSession.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

constexpr int Rounds = 2000;
char s_programName[] = "program";
char* s_arguments[] = {s_programName, nullptr};

template <class... Work>
void RunAtOnce(Work... work) {
    std::vector<std::jthread> threads;
    (threads.emplace_back([work] {
        for (int i = 0; i < Rounds; ++i) {
            work();
        }
    }),
     ...);
}

} // namespace

TEST(SessionThreads, InitialisingAndFinalisingAtOnceIsSafe) {
    const auto initialize = [] { VELSysMainInitialize(1, s_arguments, 3); };
    RunAtOnce(initialize, initialize, VELSysMainFinalize, VELSysMainFinalize);
    VELSysMainFinalize();
}

TEST(SessionThreads, SessionsAtOnceAreSafe) {
    RunAtOnce([] { QORSysNewSessionTS(0, 0, nullptr); }, [] { QORSysNewSessionTS(0, 0, nullptr); });
    EXPECT_EQ(QORSysEndSessionTS(0), 0);
}
