#include "NLSTrace.h"

#include "LocaleCalls.h"

#include <unistd.h>

using LocaleCalls::Traced;
using VEL::internal::NLSTrace;

CHILD_PROGRAM(TracesLines) {
    LocaleCalls::PrintProcessId();
    NLSTrace(stdout, "%s and %d", "text", 7);
    NLSTrace(stderr, "line\n");
    unsetenv("VELSysNLSCoreTrace");
    NLSTrace(stderr, "last");
    _exit(0);
}

TEST(NLSTrace, WritesAndFlushesLinesToTheStreamGiven) {
    const Child child = Traced("TracesLines");
    EXPECT_EQ(child.out, "[PID]text and 7\n");
    EXPECT_EQ(child.err, "[PID]line\n\n[PID]last\n") << "on stays on";
}

CHILD_PROGRAM(TracesTooEarly) {
    NLSTrace(stdout, "first");
    setenv("VELSysNLSCoreTrace", "1", 1);
    NLSTrace(stderr, "second");
    return 0;
}

TEST(NLSTrace, IsDecidedAtTheFirstUse) {
    const Child child = RunChild("TracesTooEarly");
    EXPECT_EQ(child.out + child.err, "");
    EXPECT_EQ(child.exitCode, 0);
}

CHILD_PROGRAM(TracesWhileDeciding) {
    LocaleCalls::DuringLookup([] { NLSTrace(stdout, "during the lookup"); });
    NLSTrace(stdout, "first");
    return 0;
}

TEST(NLSTrace, DoesNotLoopThroughTheLookup) {
    const Child child = RunChild("TracesWhileDeciding");
    EXPECT_EQ(child.out + child.err, "");
    EXPECT_EQ(child.exitCode, 0);
}
