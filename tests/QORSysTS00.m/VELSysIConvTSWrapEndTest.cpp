/// @file
/// The converter registry at the end of the session and after it, and what it says.

#include "Child.h"
#include "IConvCalls.h"
#include "QORSysSession.h"
#include "VELSysIConvTSWrap.h"
#include "VELSysStatus.h"

#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

using IConvCalls::Closed;
using IConvCalls::Companion;
using IConvCalls::HandleOf;
using IConvCalls::None;
using IConvCalls::Opened;
using IConvCalls::Opens;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(IConvEnd, ClosesEachDescriptorOnceInTheOrderOfOpening) {
    const IConvDesc_t first = HandleOf("UTF-16LE", "ISO-8859-1");
    const IConvDesc_t second = HandleOf("UTF-16LE", "ISO-8859-2");
    VELSysIConvTSWrap::GetIConvDesc(second);
    VELSysIConvTSWrap::GetIConvDesc(HandleOf("UTF-16LE", "no such code set"));
    VELSysIConvTSWrap::GetIConvDesc(first);
    VELSysIConvTSWrap::GetIConvDesc(second);
    std::thread([&] { VELSysIConvTSWrap::GetIConvDesc(first); }).join();
    EXPECT_THAT(Closed(), IsEmpty()) << "the end of a thread closes nothing";
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_EQ(Opened().size(), 6u);
    EXPECT_EQ(Closed(), Opened());
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_EQ(Closed(), Opened()) << "a second end closes nothing";
}

TEST(IConvEnd, EmptiesAndDeletesTheQueueThenTheMutex) {
    VELSysIConvTSWrap::GetIConvDesc(HandleOf("UTF-16LE", "ISO-8859-1"));
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_THAT(Companion(), ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0", "PushFirst -1", "PopLast -1",
                                         "PopLast -1", "~VELSysTSDataQueue", "~QORMutex"));
}

TEST(IConvEnd, OfASessionEndsTheRegistry) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(handle), None);
    EXPECT_EQ(QORSysEndSessionTS(0), 0);
    EXPECT_EQ(Closed(), Opened());
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
}

TEST(IConvEnd, WithoutAnyUseDoesNothing) {
    VELSysIConvTSWrap::sDeinitIConvTS(7);
    EXPECT_THAT(Companion(), IsEmpty());
}

TEST(IConvEnd, RefusesWhatComesLater) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(handle), None);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    const std::size_t calls = Companion().size();
    IConvDesc_t later = -77;
    EXPECT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", later), static_cast<int>(0x80004005));
    EXPECT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", "UTF-8", later), static_cast<int>(0x80004005));
    EXPECT_EQ(later, -77);
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None) << "this thread had it";
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle + 1), None);
    std::thread([handle] { EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None); }).join();
    EXPECT_EQ(Opens().size(), 2u);
    EXPECT_EQ(Companion().size(), calls);
}

TEST(IConvEnd, WithoutAnyUseRefusesWhatComesLater) {
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    IConvDesc_t handle = -77;
    EXPECT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle), static_cast<int>(0x80004005));
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(0), None);
    EXPECT_THAT(Companion(), IsEmpty());
}

TEST(IConvEnd, ThreadThatOutlivesItLeavesItsEntriesAlone) {
    const IConvDesc_t first = HandleOf("UTF-16LE", "ISO-8859-1");
    const IConvDesc_t second = HandleOf("UTF-16LE", "ISO-8859-2");
    std::promise<void> isReady;
    std::promise<void> hasEnded;
    std::thread thread([&] {
        EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(first), None);
        EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(second), None);
        isReady.set_value();
        hasEnded.get_future().wait();
        EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(second), None) << "the head of its list";
        EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(first), None) << "further down";
        EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(6), None) << "not in it";
    });
    isReady.get_future().wait();
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    hasEnded.set_value();
    thread.join();
    EXPECT_EQ(Closed(), Opened());
}

TEST(IConvEnd, WhileDescriptorsAreBeingOpenedClosesThemOnce) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    IConvCalls::InsideNextOpen([] { std::thread([] { VELSysIConvTSWrap::sDeinitIConvTS(0); }).join(); });
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
    EXPECT_EQ(Opened().size(), 2u);
    EXPECT_EQ(Closed(), Opened());
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
}

// The children leave by `_exit`, so that only what was flushed arrives.

CHILD_PROGRAM(AsksForUnknownHandle) {
    VELSysIConvTSWrap::GetIConvDesc(0);
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    VELSysIConvTSWrap::GetIConvDesc(9);
    _exit(0);
}

CHILD_PROGRAM(AsksForUnknownNames) {
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("to this", "from that", handle);
    VELSysIConvTSWrap::GetIConvDesc(handle + 1);
    VELSysIConvTSWrap::GetIConvDesc(handle);
    _exit(0);
}

CHILD_PROGRAM(EndsTwice) {
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    VELSysIConvTSWrap::GetIConvDesc(handle);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    _exit(0);
}

CHILD_PROGRAM(TellsWhenItCloses) {
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    VELSysIConvTSWrap::GetIConvDesc(handle);
    IConvCalls::InsideNextClose([] { static_cast<void>(!write(STDOUT_FILENO, "closing\n", 8)); });
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    _exit(0);
}

CHILD_PROGRAM(EndsUnused) {
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    _exit(0);
}

CHILD_PROGRAM(AsksAfterTheEnd) {
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    VELSysIConvTSWrap::GetIConvDesc(0);
    std::thread([] { VELSysIConvTSWrap::GetIConvDesc(0); }).join();
    VELSysIConvTSWrap::GetIConvDesc(1);
    _exit(0);
}

CHILD_PROGRAM(WorksWell) {
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::sInitIConvTS(nullptr);
    VELSysIConvTSWrap::Open(nullptr, nullptr, handle);
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    VELSysIConvTSWrap::GetIConvDesc(handle);
    VELSysIConvTSWrap::GetIConvDesc(handle + 1);
    _exit(0);
}

namespace {

struct Said {
    const char* program;
    const char* out;
    const char* err;
};

void PrintTo(const Said& said, std::ostream* stream) {
    *stream << said.program;
}

class IConvMessages : public testing::TestWithParam<Said> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Children, IConvMessages,
    testing::Values(
        Said{"AsksForUnknownHandle", "",
             "[VELSysIConvTSWrap] The input IConvDesc_t handle is invalid.\n"
             "[VELSysIConvTSWrap] The input IConvDesc_t handle is invalid.\n"},
        Said{"AsksForUnknownNames", "",
             "[VELSysIConvTSWrap] failed to initialize converters for conversion from that <-> to this\n"},
        Said{"EndsTwice", "[VELSysIConvTSWrap] WARNING: from this point, conversions are no longer supported.\n", ""},
        Said{"EndsUnused", "", ""},
        Said{"AsksAfterTheEnd",
             "[VELSysIConvTSWrap] INFO: session is ending. Support for MBCS has been dropped in a earlier stage\n.",
             ""},
        Said{"WorksWell", "", ""}),
    [](const auto& row) { return std::string(row.param.program); });

TEST_P(IConvMessages, AreSaidUnderTheTestHarness) {
    for (const char* value : {"/somewhere", ""}) {
        const Child child = RunChild(GetParam().program, {.set = {{"KVT_RTX_IN", value}}});
        EXPECT_EQ(child.exitCode, 0);
        EXPECT_EQ(child.out, GetParam().out);
        EXPECT_EQ(child.err, GetParam().err);
    }
}

TEST(IConvMessage, OfTheEndIsOutBeforeADescriptorIsClosed) {
    const Child child = RunChild("TellsWhenItCloses", {.set = {{"KVT_RTX_IN", ""}}});
    EXPECT_EQ(child.out,
              "[VELSysIConvTSWrap] WARNING: from this point, conversions are no longer supported.\nclosing\n");
    EXPECT_EQ(RunChild("TellsWhenItCloses").out, "closing\n");
}

TEST_P(IConvMessages, AreKeptToThemselvesOtherwise) {
    const Child child = RunChild(GetParam().program);
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "");
}

CHILD_PROGRAM(NeverEndsTheSession) {
    static const struct AsksLate {
        ~AsksLate() { VELSysIConvTSWrap::GetIConvDesc(1); }
    } s_asksLate;
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    std::thread([handle] { VELSysIConvTSWrap::GetIConvDesc(handle); }).join();
    return 0;
}

TEST(IConvProcess, EndsCleanlyWithoutAnEndOfTheSession) {
    const Child child = RunChild("NeverEndsTheSession", {.set = {{"KVT_RTX_IN", ""}}});
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "");
}

CHILD_PROGRAM(LeavesAnIdleDescriptor) {
    IConvCalls::Refuse("UTF-16LE", "ISO-8859-1");
    IConvDesc_t handle = 0;
    VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle);
    VELSysIConvTSWrap::GetIConvDesc(handle);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    return 0;
}

TEST(IConvProcess, EndsCleanlyWithAnIdleDescriptor) {
    const Child child = RunChild("LeavesAnIdleDescriptor");
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.err, "");
}
