/// @file
/// The configuration of traces when memory runs out at each request: what can't be read has no effect, nothing leaks,
/// nothing stays open.

#include "HeapLog.h"
#include "ScratchDirectory.h"
#include "TraceConfiguration.h"
#include "VELSysTraceOptions.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

/// Destinations, names and options told; the sink takes no memory.
int s_calls = 0;

const VEL::internal::TraceSink Sink{
    [](int, const char*, const char*, void*) { return ++s_calls, 0; },
    [](const char*, int, int, void*) { return ++s_calls, 0; },
    nullptr,
};

/// Runs `action` with its first request failing, then with its second, until it needs no more.
/// @param calls    What it tells with enough memory; less without.
void Sweep(const std::function<int()>& action, int calls, HeapShortage::Extent extent) {
    // Whatever is made once.
    s_calls = 0;
    ASSERT_EQ(action(), 0);
    ASSERT_EQ(s_calls, calls);
    const int descriptors = OpenDescriptors();
    for (int request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        s_calls = 0;
        int result = 0;
        bool hasStruck = false;
        {
            const HeapShortage shortage(request, extent);
            result = action();
            hasStruck = HeapShortage::HasStruck();
        }
        EXPECT_EQ(OpenDescriptors(), descriptors);
        if (!hasStruck) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(s_calls, calls);
            return;
        }
        EXPECT_TRUE(result == 0 || result == -1) << result;
        EXPECT_LE(s_calls, calls) << "request " << request;
    }
}

class TraceOptionsShortage : public testing::TestWithParam<HeapShortage::Extent> {};

TEST_P(TraceOptionsShortage, RefusesACommand) {
    Sweep([] { return VEL::internal::ApplyTraceCommand("-o --name A B --rotate-file-size 5", Sink); }, 4, GetParam());
}

TEST_P(TraceOptionsShortage, DoesNotTouchALine) {
    const HeapShortage shortage(1, GetParam());
    EXPECT_EQ(VEL::internal::ApplyTraceLine("-O A B -N", Sink), 0);
    EXPECT_FALSE(HeapShortage::HasStruck());
}

TEST_P(TraceOptionsShortage, LeavesAnItemOfTheVariableToTheLineGrammar) {
    setenv("VELSysTrace", "-O A,-e B", 1);
    Sweep([] { return VEL::internal::ApplyTraceVariable(Sink); }, 4, GetParam());
    unsetenv("VELSysTrace");
}

TEST_P(TraceOptionsShortage, LeavesOptionFilesOut) {
    const ScratchDirectory scratch;
    WriteFile(scratch / "OPFILE.1", "-O A\n");
    WriteFile(scratch / ".optionfile-with-a-name-that-takes-a-block-of-its-own-2", "-E B\n");
    setenv("QORTraDecDir", scratch.Path().c_str(), 1);
    Sweep([] { return VEL::internal::ApplyTraceOptionFiles(Sink); }, 4, GetParam());
    unsetenv("QORTraDecDir");
}

INSTANTIATE_TEST_SUITE_P(Requests, TraceOptionsShortage,
                         testing::Values(HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn));

} // namespace
