#include "QORSysSession.h"

#include "Child.h"
#include "QORUnicodeString.h"
#include "SessionCalls.h"
#include "SessionState.h"
#include "UpwardCalls.h"
#include "VELString.h"
#include "VELStringPool.h"
#include "VELSysStatus.h"

#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace SessionCalls;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int ArgumentCount = 2;
char s_programName[] = "program";
char s_argument[] = "-option";
char* s_arguments[] = {s_programName, s_argument, nullptr};

/// The participant of a priority.
Participant ParticipantOf(unsigned int priority) {
    for (const Participant& participant : Participants()) {
        if (participant.priority == priority) {
            return participant;
        }
    }
    ADD_FAILURE() << "no participant under " << priority;
    return {};
}

} // namespace

// Loading.

TEST(Load, RunsItsStepsInOrderAndNoParticipant) {
    EXPECT_THAT(Log(), ElementsAre("ClearEmptyView", "getenv QORDevelopmentStage", "QORResourceLock 1",
                                   "AtExit locale lock", "QORResourceLock 1", "Register A00A", "AtExit standard locale",
                                   "Register A002", "Register A003"));
}

CHILD_PROGRAM(ShowsStringChecks) {
    return VEL::internal::s_StringChecksEnabled;
}

struct StageRow {
    const char* stage;
    int checks;
    friend void PrintTo(const StageRow& row, std::ostream* out) {
        *out << (row.stage != nullptr ? row.stage : "unset") << " gives " << row.checks;
    }
};

class DevelopmentStage : public testing::TestWithParam<StageRow> {};

TEST_P(DevelopmentStage, SwitchesTheStringChecksOffByOneValueAlone) {
    ChildSetup setup;
    if (GetParam().stage != nullptr) {
        setup.set["QORDevelopmentStage"] = GetParam().stage;
    }
    EXPECT_EQ(RunChild("ShowsStringChecks", setup).exitCode, GetParam().checks);
}

INSTANTIATE_TEST_SUITE_P(Rows, DevelopmentStage,
                         testing::Values(StageRow{nullptr, 1}, StageRow{"FALSE", 0}, StageRow{"false", 1},
                                         StageRow{"FALSE ", 1}, StageRow{" FALSE", 1}, StageRow{"FALS", 1},
                                         StageRow{"", 1}, StageRow{"TRUE", 1}, StageRow{"0", 1}));

CHILD_PROGRAM(EndsPlainly) {
    return 0;
}

TEST(Load, MakesTheLocksOfLocaleAndLanguageThatAreDestroyedAtExit) {
    EXPECT_EQ(RunChild("EndsPlainly", {.set = {{"PRINT_EXIT_CALLS", "1"}}}).out,
              "~QORResourceLock\n~QORResourceLock\n");
}

// The participants.

TEST(LanguageParticipant, InitialisesTheLanguageCoreAndDoesNothingElse) {
    const Participant language = ParticipantOf(0xA00A);
    Clear();
    language.start(nullptr);
    EXPECT_THAT(Log(), ElementsAre("InitNLSCore (null) 0"));
    Clear();
    for (const int code : {0, 1, 7}) {
        language.state(code);
        language.event(code);
    }
    EXPECT_THAT(Log(), IsEmpty());
}

TEST(LanguageParticipant, LeavesOutALanguageThatItCanNotCopy) {
    VELSysHashMapString settings;
    settings.Put("sys.nls.core.preferredlang", "French");
    VELSystemInit(settings);
    const Participant language = ParticipantOf(0xA00A);
    Clear();
    memoryIsOut = true;
    language.start(nullptr);
    memoryIsOut = false;
    language.start(nullptr);
    EXPECT_THAT(Log(), ElementsAre("InitNLSCore (null) 0", "InitNLSCore French 0"));
}

TEST(TraceParticipant, DestroysTheManagerThatItCreated) {
    const Participant trace = ParticipantOf(0xA002);
    traceIsCreated = 1;
    Clear();
    trace.start(nullptr);
    EXPECT_THAT(Log(), ElementsAre("TraceCreateManager (null) 0"));
    Clear();
    trace.state(1);
    trace.event(0);
    EXPECT_THAT(Log(), IsEmpty()) << "only the terminate state ends it";
    trace.state(0);
    EXPECT_THAT(Log(), ElementsAre("TraceDestroyManager"));
}

TEST(TraceParticipant, LeavesAForeignManagerAlone) {
    const Participant trace = ParticipantOf(0xA002);
    Clear();
    trace.state(0);
    EXPECT_THAT(Log(), IsEmpty()) << "nothing was created yet";
    trace.start(nullptr);
    Clear();
    trace.state(0);
    EXPECT_THAT(Log(), IsEmpty());
}

TEST(TraceParticipant, ClearsTheOwnershipWordOnEachInitialisation) {
    const Participant trace = ParticipantOf(0xA002);
    traceIsCreated = 1;
    trace.start(nullptr);
    traceIsCreated = -1;
    Clear();
    trace.start(nullptr);
    EXPECT_THAT(Log(), ElementsAre("TraceCreateManager (null) 0"));
    Clear();
    trace.state(0);
    EXPECT_THAT(Log(), IsEmpty()) << "the second initialisation found a manager that stands";
}

TEST(ContextParticipant, MakesTheContextInAllThreePlaces) {
    const Participant context = ParticipantOf(0xA003);
    Clear();
    context.start(nullptr);
    context.state(0);
    context.state(5);
    context.event(3);
    EXPECT_THAT(Log(), ElementsAre("EnsureMainContext", "EnsureMainContext", "EnsureMainContext", "EnsureMainContext"));
}

// The session.

TEST(NewSession, DispatchesInitialisationAndHandsOnItsResult) {
    Clear();
    dispatchResult = -7;
    EXPECT_EQ(QORSysNewSessionTS(1, 2, nullptr), -7);
    dispatchResult = 3;
    EXPECT_EQ(QORSysNewSessionTS(0, 0, nullptr), 3);
    EXPECT_THAT(Log(), ElementsAre("DispatchInitialization", "TraceCreateManager (null) 0", "EnsureMainContext",
                                   "InitNLSCore (null) 0", "DispatchInitialization", "TraceCreateManager (null) 0",
                                   "EnsureMainContext", "InitNLSCore (null) 0"));
}

TEST(EndSession, RunsItsStepsInOrderWithTheCode) {
    traceIsCreated = 1;
    QORSysNewSessionTS(0, 0, nullptr);
    Clear();
    dispatchResult = -1;
    EXPECT_EQ(QORSysEndSessionTS(42), 0) << "whatever its steps did";
    EXPECT_THAT(Log(), ElementsAre("DispatchFinalization", "EnsureMainContext", "TraceDestroyManager",
                                   "FinalReleaseCPUResourceManager 42", "StringPoolSet 0", "DeinitIConvTS 42"));
}

TEST(EndSession, LeavesTheThreadWithoutAPoolAndTheStringsAtWork) {
    { const QORUnicodeString filler("a short text"); }
    QORSysEndSessionTS(0);
    EXPECT_EQ(VEL::internal::t_stringPool.status, VEL::internal::StringPool::Off);
    for (const auto& bucket : VEL::internal::t_stringPool.buckets) {
        EXPECT_EQ(bucket.head, nullptr);
    }
    const QORUnicodeString text("text after the end");
    EXPECT_EQ(text.GetLengthInChar(), 18);
    QORSysNewSessionTS(0, 0, nullptr);
    EXPECT_EQ(VEL::internal::t_stringPool.status, VEL::internal::StringPool::Off) << "a new session leaves it off";
    EXPECT_EQ(VELStringInit(1), 0);
    EXPECT_EQ(VEL::internal::t_stringPool.status, VEL::internal::StringPool::On);
}

TEST(EndSession, WithoutASessionWorks) {
    EXPECT_EQ(QORSysEndSessionTS(0), 0);
    EXPECT_EQ(QORSysEndSessionTS(1), 0);
}

TEST(StringInit, StoresTheChecksAndSwitchesThePoolOn) {
    VELStringDeInit(0);
    Clear();
    EXPECT_EQ(VELStringInit(0), 0);
    EXPECT_EQ(VEL::internal::s_StringChecksEnabled, 0);
    EXPECT_EQ(VELStringInit(5), 1) << "the pool is on already";
    EXPECT_EQ(VEL::internal::s_StringChecksEnabled, 5);
    EXPECT_THAT(Log(), ElementsAre("StringPoolSet 1", "StringPoolSet 1"));
}

TEST(StringDeInit, AnswersZeroWhateverHappened) {
    Clear();
    EXPECT_EQ(VELStringDeInit(99), 0);
    EXPECT_EQ(VELStringDeInit(99), 0) << "the pool is off already, which it drops";
    EXPECT_THAT(Log(), ElementsAre("StringPoolSet 0", "StringPoolSet 0"));
}

// Settings.

TEST(SystemInit, WithoutThePreferredLanguageOnlyDispatches) {
    VELSysHashMapString settings;
    settings.Put("sys.nls.core.preferredlanguage", "French");
    Clear();
    EXPECT_EQ(VELSystemInit(settings), 0);
    EXPECT_THAT(Log(), ElementsAre("DispatchInitialization", "TraceCreateManager (null) 0", "EnsureMainContext",
                                   "InitNLSCore (null) 0"));
    EXPECT_EQ(VEL::internal::PreferredLanguage().get(), nullptr);
}

TEST(SystemInit, BringsTheLanguageCoreUpInThePreferredLanguage) {
    VELSysHashMapString settings;
    char language[] = "French";
    settings.Put("sys.nls.core.preferredlang", language);
    Clear();
    EXPECT_EQ(VELSystemInit(settings), 0);
    EXPECT_THAT(Log(), ElementsAre("DeInitNLSCore 0 before (null)", "DispatchInitialization",
                                   "TraceCreateManager (null) 0", "EnsureMainContext", "InitNLSCore French 0"));
    std::strcpy(language, "Dutch!");
    EXPECT_STREQ(VEL::internal::PreferredLanguage().get(), "French") << "it is a copy";
    settings.Put("sys.nls.core.preferredlang", "Japanese");
    Clear();
    VELSystemInit(settings);
    EXPECT_EQ(Log().front(), "DeInitNLSCore 0 before French") << "the text is replaced afterwards";
    EXPECT_STREQ(VEL::internal::PreferredLanguage().get(), "Japanese");
}

TEST(SystemInit, WithoutMemoryThereIsNoPreferredLanguage) {
    VELSysHashMapString settings;
    settings.Put("sys.nls.core.preferredlang", "French");
    VELSystemInit(settings);
    settings.Put("sys.nls.core.preferredlang", "Japanese");
    Clear();
    memoryIsOut = true;
    EXPECT_EQ(VELSystemInit(settings), 0);
    memoryIsOut = false;
    EXPECT_THAT(Log(), ElementsAre("DeInitNLSCore 0 before French", "DispatchInitialization",
                                   "TraceCreateManager (null) 0", "EnsureMainContext", "InitNLSCore (null) 0"));
    EXPECT_EQ(VEL::internal::PreferredLanguage().get(), nullptr);
}

TEST(SystemInit, TakesANullLanguageForNone) {
    VELSysHashMapString settings;
    settings.Put("sys.nls.core.preferredlang", "French");
    VELSystemInit(settings);
    settings.Put("sys.nls.core.preferredlang", nullptr);
    Clear();
    VELSystemInit(settings);
    EXPECT_THAT(Log(), testing::Not(testing::Contains(testing::StartsWith("DeInitNLSCore"))));
    EXPECT_STREQ(VEL::internal::PreferredLanguage().get(), "French");
}

TEST(SystemInit, CompressesTheResult) {
    const VELSysHashMapString settings;
    for (const int result : {1, -1, 5, -2147467259}) {
        dispatchResult = result;
        EXPECT_EQ(VELSystemInit(settings), -1) << result;
    }
    dispatchResult = 0;
    EXPECT_EQ(VELSystemInit(settings), 0);
}

// The main pair.

TEST(MainInitialize, WithoutFlagsOnlyMakesTheMutex) {
    Clear();
    VELSysMainInitialize(ArgumentCount, s_arguments, 0);
    EXPECT_THAT(Log(), ElementsAre("QORMutex 0 1 0", "Lock", "Unlock"));
}

TEST(MainInitialize, StoresTheCommandLineBeforeItStartsTheWatchdog) {
    Clear();
    VELSysMainInitialize(ArgumentCount, s_arguments, VELSysMainStoreArguments | VELSysMainStartWatchDog);
    EXPECT_THAT(Log(), ElementsAre("QORMutex 0 1 0", "Lock", "SetArg 2 program",
                                   "WatchDogInitialize 2 program (null) 0", "Unlock"));
}

TEST(MainInitialize, DoesWhatEachFlagAsksFor) {
    Clear();
    VELSysMainInitialize(ArgumentCount, s_arguments, 1);
    VELSysMainInitialize(ArgumentCount, s_arguments, 2);
    VELSysMainInitialize(ArgumentCount, s_arguments, 4);
    EXPECT_THAT(Log(), ElementsAre("QORMutex 0 1 0", "Lock", "SetArg 2 program", "Unlock", "QORMutex 0 1 0",
                                   "~QORMutex", "Lock", "WatchDogInitialize 2 program (null) 0", "Unlock",
                                   "QORMutex 0 1 0", "~QORMutex", "Lock", "Unlock"));
}

TEST(MainInitialize, ReadsTheFlagsAgainAfterTheCommandLine) {
    // The mutex is recursive: a call from inside the argument store runs to its end.
    insideSetArg = [] {
        insideSetArg = nullptr;
        VELSysMainInitialize(0, s_arguments, 2);
    };
    Clear();
    VELSysMainInitialize(ArgumentCount, s_arguments, 1);
    EXPECT_THAT(Log(), ElementsAre("QORMutex 0 1 0", "Lock", "SetArg 2 program", "QORMutex 0 1 0", "~QORMutex", "Lock",
                                   "WatchDogInitialize 0  (null) 0", "Unlock", "WatchDogInitialize 2 program (null) 0",
                                   "Unlock"));
}

TEST(MainInitialize, WithoutAMutexDoesNothing) {
    Clear();
    memoryIsOut = true;
    VELSysMainInitialize(ArgumentCount, s_arguments, VELSysMainStoreArguments | VELSysMainStartWatchDog);
    memoryIsOut = false;
    EXPECT_THAT(Log(), IsEmpty());
    VELSysMainFinalize();
    EXPECT_THAT(Log(), IsEmpty());
}

TEST(MainInitialize, WithoutMemoryUsesTheMutexThatIsThere) {
    VELSysMainInitialize(ArgumentCount, s_arguments, 0);
    Clear();
    memoryIsOut = true;
    VELSysMainInitialize(ArgumentCount, s_arguments, VELSysMainStoreArguments);
    memoryIsOut = false;
    EXPECT_THAT(Log(), ElementsAre("Lock", "SetArg 2 program", "Unlock"));
}

TEST(MainFinalize, WithoutInitialisationDoesNothing) {
    Clear();
    VELSysMainFinalize();
    EXPECT_THAT(Log(), IsEmpty());
}

TEST(MainFinalize, EndsTheWatchdogByTheLastFlags) {
    VELSysMainInitialize(ArgumentCount, s_arguments, 2);
    Clear();
    VELSysMainFinalize();
    EXPECT_THAT(Log(), ElementsAre("Lock", "WatchDogFinalize", "Unlock", "~QORMutex"));
    VELSysMainInitialize(ArgumentCount, s_arguments, 2);
    VELSysMainInitialize(ArgumentCount, s_arguments, 1);
    Clear();
    VELSysMainFinalize();
    EXPECT_THAT(Log(), ElementsAre("Lock", "Unlock", "~QORMutex"));
    Clear();
    VELSysMainFinalize();
    EXPECT_THAT(Log(), IsEmpty()) << "the mutex is withdrawn";
}

TEST(MainInitialize, WorksAgainAfterFinalisation) {
    VELSysMainInitialize(ArgumentCount, s_arguments, 0);
    VELSysMainFinalize();
    Clear();
    VELSysMainInitialize(ArgumentCount, s_arguments, 1);
    EXPECT_THAT(Log(), ElementsAre("QORMutex 0 1 0", "Lock", "SetArg 2 program", "Unlock"));
}

TEST(MainFinalize, FromInsideInitialisationLeavesTheHeldMutexAlive) {
    insideSetArg = [] {
        insideSetArg = nullptr;
        VELSysMainFinalize();
    };
    Clear();
    VELSysMainInitialize(ArgumentCount, s_arguments, 1);
    EXPECT_THAT(Log(),
                ElementsAre("QORMutex 0 1 0", "Lock", "SetArg 2 program", "Lock", "Unlock", "Unlock", "~QORMutex"));
}
