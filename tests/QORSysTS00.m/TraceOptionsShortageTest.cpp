/// @file
/// The configuration of traces, and the option file of the reference traces, when memory runs out at each request: what
/// can't be read has no effect, and no descriptor stays open. Whether a block is lost the leak check tells: some are
/// kept for the next string.

#include "Child.h"
#include "HeapLog.h"
#include "QORSysTSTrace.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "TraceConfiguration.h"
#include "VELSysTraceOptions.h"

#include <cstdarg>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <string>

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

} // namespace

extern "C" int __wrap_asprintf(char** text, const char* format, ...) {
    if (HeapShortage::Refuses()) {
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, format);
    const int length = vasprintf(text, format, arguments);
    va_end(arguments);
    return length;
}

namespace {

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

TEST_P(TraceOptionsShortage, LeavesPathsOut) {
    // The path of a name that isn't UTF-8 is built in steps of its own, the last of which is a copy.
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    const ScratchDirectory scratch;
    WriteFile(scratch / "OPFILE.\xF6-1", "");
    const std::string directory = scratch.Path();
    const auto count = [](const wchar_t*, void*) { return ++s_calls, 0; };
    Sweep([&] { return VELSysTraceGetOpFileInDirectory(directory.c_str(), count, nullptr); }, 1, GetParam());
    StringEnvironment::UseCodePage(StringEnvironment::UTF8);
}

/// Reads the option file with a request failing, and tells whether it was made and which traces there are.
CHILD_PROGRAM(ReadsReferenceTraces) {
    const int request = std::atoi(arguments[0].c_str());
    const auto extent = static_cast<HeapShortage::Extent>(std::atoi(arguments[1].c_str()));
    bool hasStruck = false;
    const int before = OpenDescriptors();
    {
        const HeapShortage shortage(request, extent);
        QORSysTSRefTrace::InitFromEnv();
        hasStruck = HeapShortage::HasStruck();
    }
    const auto isActive = [](const char* name) {
        const QORSysTSRefTrace* const found = QORSysTSRefTrace::FindRef(name, 0, nullptr);
        return found != nullptr && found->IsActive();
    };
    std::printf("%d%d%d%d", hasStruck ? 1 : 0, isActive("A") ? 1 : 0, isActive("B") ? 1 : 0,
                OpenDescriptors() - before);
    return 0;
}

TEST_P(TraceOptionsShortage, LeavesReferenceTracesOut) {
    const ScratchDirectory scratch;
    WriteFile(scratch / "QORSysTSTraceOpt.txt", "t:A\nt:B\n");
    // The path of the file, the table, then a record for each line.
    const char* const onlyThatOne[] = {"1000", "1010", "1010", "1100", "0110"};
    const char* const fromThatOneOn[] = {"1000", "1000", "1000", "1100", "0110"};
    for (int request = 1; request <= 5; ++request) {
        const Child child =
            RunChild("ReadsReferenceTraces", {.set = {{"HOME", scratch.Path()}},
                                              .arguments = {std::to_string(request), std::to_string(GetParam())}});
        EXPECT_EQ(child.out, (GetParam() == HeapShortage::OnlyThatOne ? onlyThatOne : fromThatOneOn)[request - 1])
            << "request " << request;
        EXPECT_EQ(child.exitCode, 0) << child.err;
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, TraceOptionsShortage,
                         testing::Values(HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn));

} // namespace
