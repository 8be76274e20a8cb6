// The destinations of the process and what configures them.

#include "HeapLog.h"
#include "TraceSupport.h"
#include "VELSysTraceOptions.h"
#include "VirtualTable.h"

#include <climits>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

using namespace TraceSupport;
using Peek = DestinationPeek;
using Strings = std::vector<std::string>;

namespace {

class TraceManager : public TraceTest {};

struct Caller {
    static int Print(VELSysQORTrace& trace, VELSysTraceLineOptions* options, const char* format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        const int result = trace.InternalMessagePrint(options, format, arguments);
        va_end(arguments);
        return result;
    }
};

/// A trace whose class shows how it is bound.
struct BoundTrace : VELSysTrace {
    using VELSysQORTrace::Build;
    using VELSysTrace::VELSysTrace;
};

std::string Numbered(const char* stem, int number) {
    return stem + std::to_string(number);
}

} // namespace

TEST_F(TraceManager, AsksItsSourcesInOrderUntilOneWorks) {
    sources = Sources{};
    VELSysTraceCreateManager("options", nullptr);
    EXPECT_EQ(asked, (Strings{"text options", "variable", "files"}));
    VELSysTraceDestroyManager();

    asked.clear();
    sources = Sources{.variable = Items{{"STDERR", {"V"}}}, .files = Items{{"STDERR", {"F"}}}};
    VELSysTraceCreateManager(nullptr, nullptr);
    EXPECT_EQ(asked, (Strings{"text (null)", "variable"}));
    EXPECT_TRUE(TraceHandle("V"));
    EXPECT_FALSE(TraceHandle("F"));
    VELSysTraceDestroyManager();

    asked.clear();
    sources = Sources{.text = Items{}, .variable = Items{}};
    VELSysTraceCreateManager("x", nullptr);
    EXPECT_EQ(asked, Strings{"text x"});
}

TEST_F(TraceManager, WithoutConfigurationHasOneNameOnStandardOutput) {
    EXPECT_EQ(VELSysTraceCreateManager(nullptr, nullptr), 0);
    ASSERT_NE(DestinationAt(15), nullptr);
    EXPECT_EQ(Destinations(), Strings{"STDOUT_COMMON"});
    EXPECT_EQ(Peek::Names(*DestinationAt(15)), Strings{"COMMON"});
    EXPECT_EQ(Peek::Kind(*DestinationAt(15)), VELSysTraceKindStream);
    EXPECT_TRUE(Peek::IsOpen(*DestinationAt(15)));
    EXPECT_FALSE(TraceHandle("LifeCycle"));
    EXPECT_TRUE(TraceHandle("COMMON"));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path()));
}

TEST_F(TraceManager, PlacesDestinationsFromTheLastSlotOn) {
    Configure({{"STDERR", {"A"}}, {"f", {"B"}}, {"g", {"C"}, {}, VELSysTraceKindSystem}});
    EXPECT_EQ(Peek::Name(*DestinationAt(15)), "STDOUT_COMMON");
    EXPECT_EQ(Peek::Name(*DestinationAt(14)), "STDERR");
    EXPECT_EQ(Peek::Name(*DestinationAt(13)), "f");
    EXPECT_EQ(Peek::Name(*DestinationAt(12)), "g");
    EXPECT_EQ(Peek::Kind(*DestinationAt(12)), VELSysTraceKindSystem);
    EXPECT_EQ(DestinationAt(11), nullptr);
}

TEST_F(TraceManager, TakesOtherKindsForStreams) {
    Configure({{"f", {"A"}, {}, 1}, {"g", {"B"}, {}, 99}});
    EXPECT_EQ(Peek::Kind(DestinationOf("f")), VELSysTraceKindStream);
    EXPECT_EQ(Peek::Kind(DestinationOf("g")), VELSysTraceKindStream);
}

TEST_F(TraceManager, RefusesASeventeenthDestination) {
    VELSysTraceCreateManager(nullptr, nullptr);
    for (int i = 1; i < 16; ++i) {
        EXPECT_EQ(VELSysTraceManagerAddStreamTrace(Numbered("f", i).c_str(), Numbered("T", i).c_str(), 0, 0), 0);
    }
    EXPECT_EQ(Peek::Name(*DestinationAt(0)), "f15");
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f16", "T16", 0, 0), -1);
    EXPECT_FALSE(TraceHandle("T16"));
    // One that is there still takes names.
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f15", "T16", 0, 0), 0);
    EXPECT_TRUE(TraceHandle("T16"));
}

TEST_F(TraceManager, RefusesASixtyFifthNameOfADestination) {
    VELSysTraceCreateManager(nullptr, nullptr);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", Numbered("T", i).c_str(), 0, 0), 0) << i;
    }
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", "T64", 0, 0), -1);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", "T63", 0, 0), 0);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", nullptr, 0, 0), 0);
    EXPECT_EQ(Peek::Names(DestinationOf("f")).size(), 64U);
    EXPECT_EQ(Peek::NextName(DestinationOf("f")), 0);
    EXPECT_TRUE(TraceHandle("T0"));
    EXPECT_TRUE(TraceHandle("T63"));
    EXPECT_FALSE(TraceHandle("T64"));
}

TEST_F(TraceManager, RefusesANameThatAnEarlierDestinationHas) {
    Configure({{"f", {"A"}}});
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("g", "A", 0, 0), -1);
    EXPECT_EQ(Destinations(), (Strings{"STDOUT_COMMON", "f"}));
    TraceHandle("A")->Info("text");
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "A"}, "text"));
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("g", "COMMON", 0, 0), -1);
}

TEST_F(TraceManager, GivesANameOfALaterDestinationToAnEarlierOne) {
    // The walk stops at the destination that is meant, deliberately.
    Configure({{"f", {"A"}}, {"g", {"B"}}});
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", "B", 0, 0), 0);
    TraceHandle("B")->Info("text");
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "B"}, "text"));
    EXPECT_EQ(FileText("g"), "");
}

TEST_F(TraceManager, ComparesNamesExactly) {
    Configure({{"f", {"Abc"}}, {"F", {"abc"}}});
    EXPECT_TRUE(TraceHandle("Abc"));
    EXPECT_TRUE(TraceHandle("abc"));
    EXPECT_FALSE(TraceHandle("ABC"));
    EXPECT_FALSE(TraceHandle("Ab"));
    EXPECT_EQ(Destinations(), (Strings{"STDOUT_COMMON", "f", "F"}));
}

TEST_F(TraceManager, AddsNoNullOrEmptyNameToANewDestination) {
    VELSysTraceCreateManager(nullptr, nullptr);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", nullptr, 0, 0), 0);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("g", "", 0, 0), 0);
    EXPECT_EQ(Peek::Names(DestinationOf("f")), Strings{});
    EXPECT_EQ(Peek::Names(DestinationOf("g")), Strings{});
    EXPECT_EQ(Peek::NextName(DestinationOf("g")), 64);
}

TEST_F(TraceManager, KeepsDestinationNamesOf63Bytes) {
    VELSysTraceCreateManager(nullptr, nullptr);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace(std::string(63, 'f').c_str(), "A", 0, 0), 0);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace(std::string(64, 'g').c_str(), "B", 0, 0), -1);
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace(nullptr, "B", 0, 0), -1);
    EXPECT_FALSE(TraceHandle("B"));
    EXPECT_TRUE(std::filesystem::exists(File(std::string(63, 'f'))));
}

TEST_F(TraceManager, OpensAllThatCanBeOpened) {
    EXPECT_EQ(Configure({{"s", {"S"}, {}, VELSysTraceKindSystem}, {"f", {"A"}}}), -1);
    EXPECT_FALSE(Peek::IsOpen(DestinationOf("s")));
    EXPECT_TRUE(Peek::IsOpen(DestinationOf("f")));
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("g", "B", 0, 0), -1);
    EXPECT_TRUE(Peek::IsOpen(DestinationOf("g")));
}

TEST_F(TraceManager, IsMadeOnce) {
    int created = 5;
    sources = Sources{.text = Items{{"s", {"S"}, {}, VELSysTraceKindSystem}}};
    EXPECT_EQ(VELSysTraceCreateManager("x", &created), -1);
    EXPECT_EQ(created, 1);
    created = 5;
    EXPECT_EQ(VELSysTraceCreateManager("x", &created), 0);
    EXPECT_EQ(created, 5);
    EXPECT_EQ(asked.size(), 1U);
}

TEST_F(TraceManager, IsDestroyedOnce) {
    VELSysTraceCreateManager(nullptr, nullptr);
    VELSysTraceDestroyManager();
    VELSysTraceDestroyManager();
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", "A", 0, 0), -1);
    EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("STDOUT_COMMON", VELSysTraceOptionActive, 1), -1);
    EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("STDOUT_COMMON", 3, 1), -1);
}

TEST_F(TraceManager, IsMadeByTheFirstTrace) {
    sources = Sources{.variable = Items{{"f", {"A"}}}};
    const TraceHandle trace("A");
    ASSERT_TRUE(trace);
    EXPECT_EQ(asked, (Strings{"text (null)", "variable"}));
}

TEST_F(TraceManager, SetsRotationOnlyWithBothNumbers) {
    VELSysTraceCreateManager(nullptr, nullptr);
    VELSysTraceManagerAddStreamTrace("f", "A", 3, 5000);
    EXPECT_EQ(Peek::RotateCount(DestinationOf("f")), 3U);
    EXPECT_EQ(Peek::RotateSize(DestinationOf("f")), 5000U);
    VELSysTraceManagerAddStreamTrace("g", "B", 3, 0);
    VELSysTraceManagerAddStreamTrace("g", "C", 0, 3);
    EXPECT_EQ(Peek::RotateCount(DestinationOf("g")), 0U);
    EXPECT_EQ(Peek::RotateSize(DestinationOf("g")), 0U);
}

TEST_F(TraceManager, OptionsChangeTheirDestination) {
    Configure({{"f", {"A"}}});
    VELSysTraceObjBase& o = DestinationOf("f");
    const auto add = [](int option, int value) { return VELSysTraceManagerAddOptionToTrace("f", option, value); };
    EXPECT_TRUE(Peek::IsActive(o));
    EXPECT_EQ(add(VELSysTraceOptionActive, 0), 0);
    EXPECT_FALSE(Peek::IsActive(o));
    EXPECT_EQ(add(VELSysTraceOptionActive, -2), 0);
    EXPECT_TRUE(Peek::IsActive(o));

    EXPECT_EQ(Peek::MaximumCode(o), 1024);
    EXPECT_EQ(add(VELSysTraceOptionMaximumCode, 100), 0);
    EXPECT_EQ(Peek::MaximumCode(o), 100);
    EXPECT_EQ(add(VELSysTraceOptionMaximumCode, 1025), 0);
    EXPECT_EQ(Peek::MaximumCode(o), 1024);
    EXPECT_EQ(add(VELSysTraceOptionMaximumCode, INT_MIN), 0);
    EXPECT_EQ(Peek::MaximumCode(o), INT_MIN);

    EXPECT_EQ(Peek::MinimumCode(o), 0);
    EXPECT_EQ(add(VELSysTraceOptionMinimumCode, 2000), 0);
    EXPECT_EQ(Peek::MinimumCode(o), 2000);
    EXPECT_EQ(add(VELSysTraceOptionMinimumCode, -1), 0);
    EXPECT_EQ(Peek::MinimumCode(o), 0);

    EXPECT_EQ(add(VELSysTraceOptionEnabled, 0), 0);
    EXPECT_FALSE(Peek::IsEnabled(o));
    EXPECT_EQ(add(VELSysTraceOptionEnabled, 3), 0);
    EXPECT_TRUE(Peek::IsEnabled(o));

    EXPECT_EQ(add(VELSysTraceOptionLocalTime, 3), 0);
    EXPECT_TRUE(Peek::IsLocalTime(o));
    EXPECT_EQ(add(VELSysTraceOptionLocalTime, 0), 0);
    EXPECT_FALSE(Peek::IsLocalTime(o));

    EXPECT_EQ(add(VELSysTraceOptionRotateSize, INT_MAX), 0);
    EXPECT_EQ(Peek::RotateSize(o), static_cast<unsigned long>(INT_MAX));
    EXPECT_EQ(add(VELSysTraceOptionRotateCount, 9), 0);
    EXPECT_EQ(Peek::RotateCount(o), 9U);
}

TEST_F(TraceManager, TakesRotationBeyondTheOptionsRange) {
    VELSysTraceCreateManager(nullptr, nullptr);
    const unsigned long large = 1UL << 40;
    EXPECT_EQ(VELSysTraceManagerAddStreamTrace("f", "A", large, large + 1), 0);
    EXPECT_EQ(Peek::RotateCount(DestinationOf("f")), large);
    EXPECT_EQ(Peek::RotateSize(DestinationOf("f")), large + 1);
}

TEST_F(TraceManager, RingOnAFileThatIsOpenTakesNoLines) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("x"), 0);
    EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionMemory, 100), 0);
    EXPECT_EQ(trace->Info("y"), -1);
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "A"}, "x"));
}

TEST_F(TraceManager, LineOfTheSystemKindIsFormedAndGoesNowhere) {
    Configure({{"s", {"A"}, {}, VELSysTraceKindSystem}});
    VELSysTraceObjBase& o = DestinationOf("s");
    EXPECT_EQ(TraceHandle("A")->Info("text"), 0);
    EXPECT_EQ(Peek::LastPrefix(o), PlainPrefix({.level = 1, .tag = "A"}));
    EXPECT_FALSE(std::filesystem::exists(BaseDirectory()));
}

TEST_F(TraceManager, ThatCannotBeMadeIsMadeLater) {
    sources = Sources{.text = Items{{"f", {"A"}}}};
    for (const int request : {1, 2}) {
        int created = 5;
        int result = 0;
        {
            const HeapShortage shortage(request, HeapShortage::OnlyThatOne);
            result = VELSysTraceCreateManager(nullptr, &created);
            ASSERT_TRUE(HeapShortage::HasStruck());
        }
        EXPECT_EQ(result, -1) << request;
        EXPECT_EQ(created, 5) << request;
        EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("STDOUT_COMMON", 4, 1), -1) << request;
    }
    EXPECT_TRUE(TraceHandle("A"));
}

TEST_F(TraceManager, OptionsOfOtherNumbersDoNothing) {
    Configure({{"f", {"A"}}});
    for (const int option : {INT_MIN, -1, 0, 1, 2, 3, 5, 6, 7, 15, 16, INT_MAX}) {
        EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("f", option, 0), 0) << option;
    }
    VELSysTraceObjBase& o = DestinationOf("f");
    EXPECT_TRUE(Peek::IsActive(o) && Peek::IsEnabled(o) && !Peek::IsLocalTime(o));
    EXPECT_EQ(Peek::MaximumCode(o), 1024);
    EXPECT_EQ(Peek::Kind(o), VELSysTraceKindStream);
}

TEST_F(TraceManager, OptionsNeedADestination) {
    Configure({{"f", {"A"}}});
    for (const int option : {4, 8, 9, 10, 11, 12, 13, 14}) {
        EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("g", option, 1), -1) << option;
        EXPECT_EQ(VELSysTraceManagerAddOptionToTrace(nullptr, option, 1), -1) << option;
    }
}

TEST_F(TraceManager, MemoryOptionMakesARingOnce) {
    Configure({{"f", {"A"}}});
    VELSysTraceObjBase& o = DestinationOf("f");
    const auto add = [](int value) { return VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionMemory, value); };
    for (const int value : {0, -1, INT_MIN}) {
        EXPECT_EQ(add(value), -1);
        EXPECT_EQ(Peek::Kind(o), VELSysTraceKindStream);
        EXPECT_EQ(Peek::MemorySize(o), 0U);
    }
    EXPECT_EQ(add(8193), 0);
    EXPECT_EQ(Peek::Kind(o), VELSysTraceKindMemory);
    EXPECT_EQ(Peek::MemorySize(o), 8192U);
    EXPECT_EQ(add(0), 0);
    EXPECT_EQ(add(10), 0);
    EXPECT_EQ(Peek::MemorySize(o), 8192U);
}

TEST_F(TraceManager, CountsTheUsersOfADestination) {
    Configure({{"f", {"A", "B"}}});
    VELSysTraceObjBase& o = DestinationOf("f");
    EXPECT_EQ(Peek::Users(o), 0U);
    {
        const TraceHandle a("A");
        const TraceHandle b("B");
        const TraceHandle again("A");
        const TraceHandle none("C");
        EXPECT_EQ(Peek::Users(o), 3U);
    }
    EXPECT_EQ(Peek::Users(o), 0U);
}

TEST_F(TraceManager, BuildAnswersWhetherTheNameIsKnown) {
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("none", "second", QORTraModeDefault, "f", 9);
    EXPECT_EQ(trace.TraPrint("x"), -1);
    EXPECT_EQ(trace.Build(nullptr, "f", 0), -1);
    EXPECT_EQ(trace.Build("other", "f", 0), -1);
    EXPECT_EQ(trace.Build("A", "elsewhere", 77), 0);
    EXPECT_EQ(Peek::Mode(DestinationOf("f")), 77U);
    EXPECT_EQ(Peek::Users(DestinationOf("f")), 0U);
    EXPECT_EQ(trace.TraPrint("x"), 0);
    EXPECT_EQ(FileText("f"), " x");
}

TEST_F(TraceManager, InternalMessagePrintTakesNoTerminatorOnARing) {
    Configure({{"r", {"A"}, {{VELSysTraceOptionMemory, 4}}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    VELSysTraceLineOptions options{0, 1, 0, 0, nullptr, nullptr, nullptr};
    EXPECT_EQ(Caller::Print(trace, &options, "%d", 12), 0);
    EXPECT_EQ(FileText("r"), std::string(" 12\0", 4));
}

TEST_F(TraceManager, InternalMessagePrintNeedsFormatAndOptions) {
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    VELSysTraceLineOptions options{VELSysTraceName, 3, 0, 8, "tag", "!", "file"};
    EXPECT_EQ(Caller::Print(trace, nullptr, "x"), -1);
    EXPECT_EQ(Caller::Print(trace, &options, nullptr), -1);
    EXPECT_EQ(Caller::Print(trace, &options, "%d", 5), 0);
    options.terminator = nullptr;
    options.level = 9;
    EXPECT_EQ(Caller::Print(trace, &options, "%d", 6), 0);
    EXPECT_EQ(FileText("f"), "[W][tag](file : 8) 5![tag](file : 8) 6");
}

TEST_F(TraceManager, EndLeavesTracesThatWriteNothing) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    VELSysTraceDestroyManager();
    EXPECT_EQ(trace->Info("text"), -1);
    EXPECT_EQ(trace->Error("f", 1, "text"), -1);
    EXPECT_EQ(trace.Writer()->TraPrint("text"), -1);
    EXPECT_TRUE(std::filesystem::is_empty(BaseDirectory()));
}

TEST_F(TraceManager, NewOneIsNotWrittenToByOlderTraces) {
    Configure({{"f", {"A"}}});
    const TraceHandle old("A");
    VELSysTraceDestroyManager();
    Configure({{"f", {"A"}}});
    EXPECT_EQ(old->Info("old"), -1);
    EXPECT_EQ(Peek::Users(DestinationOf("f")), 0U);
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("new"), 0);
    EXPECT_EQ(FileText("f"), PlainLine({.level = 1, .tag = "A"}, "new"));
    EXPECT_EQ(Peek::Users(DestinationOf("f")), 1U);
}

TEST_F(TraceManager, NewOneKeepsItsUsersWhenOlderTracesGo) {
    Configure({{"f", {"A"}}});
    {
        const TraceHandle old("A");
        VELSysTraceDestroyManager();
        Configure({{"f", {"A"}}});
        const TraceHandle trace("A");
        VELSysTraceDestroy__(nullptr);
        EXPECT_EQ(Peek::Users(DestinationOf("f")), 1U);
    }
    EXPECT_EQ(Peek::Users(DestinationOf("f")), 0U);
}

TEST_F(TraceManager, TracesOfNamesThatAreGoneMayBeBuiltAgain) {
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    VELSysTraceDestroyManager();
    Configure({{"g", {"A"}}});
    EXPECT_EQ(trace.Build("A", nullptr, 0), 0);
    EXPECT_EQ(trace.TraPrint("x"), 0);
    EXPECT_EQ(FileText("g"), " x");
}

TEST_F(TraceManager, BuildShowsTheNewName) {
    Configure({{"f", {"A"}}, {"g", {"B"}}});
    BoundTrace trace("A");
    EXPECT_EQ(trace.Build("B", nullptr, 0), 0);
    EXPECT_EQ(trace.Info("x"), 0);
    EXPECT_EQ(FileText("g"), PlainLine({.level = 1, .tag = "B"}, "x"));
    VELSysTraceDestroyManager();
    Configure({{"h", {"B"}}});
    EXPECT_EQ(trace.Info("y"), -1);
    EXPECT_EQ(trace.Build("B", nullptr, 0), 0);
    EXPECT_EQ(trace.Info("z"), 0);
    EXPECT_EQ(FileText("h"), PlainLine({.level = 1, .tag = "B"}, "z"));
}

TEST_F(TraceManager, BuildOfANameThatIsNotKnownSwitchesOff) {
    Configure({{"f", {"A"}}});
    BoundTrace trace("A");
    EXPECT_EQ(trace.Build(nullptr, nullptr, 0), -1);
    EXPECT_EQ(trace.Info("x"), 0);
    EXPECT_EQ(trace.Build("none", nullptr, 0), -1);
    EXPECT_EQ(trace.Info("y"), -1);
    VELSysTraceActivate__(reinterpret_cast<VELSysQORTrace*>(&trace), 1);
    EXPECT_EQ(trace.Info("y"), -1) << "it isn't enabled either";
    EXPECT_EQ(trace.Build("A", nullptr, 0), 0);
    EXPECT_EQ(trace.Info("z"), 0);
}

TEST_F(TraceManager, UsersAreNotLessThanNone) {
    Configure({{"f", {"A"}}});
    {
        VELSysQORTrace trace("none", nullptr, QORTraModeDefault, nullptr, 0);
        EXPECT_EQ(trace.Build("A", nullptr, 0), 0);
        EXPECT_EQ(Peek::Users(DestinationOf("f")), 0U);
    }
    EXPECT_EQ(Peek::Users(DestinationOf("f")), 0U);
}

TEST_F(TraceManager, ForgetsTheTracesThatAreGone) {
    Configure({{"f", {"A"}}});
    std::vector<std::unique_ptr<VELSysTrace>> traces;
    for (int i = 0; i < 5; ++i) {
        traces.push_back(std::make_unique<VELSysTrace>("A"));
    }
    for (const int gone : {2, 0, 4}) {
        traces[static_cast<std::size_t>(gone)].reset();
    }
    VELSysTraceDestroyManager();
    Configure({{"g", {"A"}}});
    EXPECT_EQ(traces[1]->Info("x"), -1);
    EXPECT_EQ(traces[3]->Info("x"), -1);
    EXPECT_EQ(FileText("g"), "");
}

TEST_F(TraceManager, MayBeDestroyedByAParsersCallback) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    static bool isStillThere = false;
    static std::filesystem::path directory;
    directory = ProcessDirectory();
    const auto addTrace = [](int, const char*, const char*, void*) {
        VELSysTraceDestroyManager();
        // Its destinations go with the last who uses it.
        isStillThere = std::filesystem::exists(directory);
        return VELSysTraceCreateManager("", nullptr);
    };
    const auto addOption = [](const char*, int, int, void*) { return 0; };
    char text[] = "-FX B\n-FY C\n";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fmemopen(text, sizeof text - 1, "r"), std::fclose);
    EXPECT_EQ(VELSysTraceOpFileParser(file.get(), addTrace, addOption, nullptr, nullptr), 0);
    EXPECT_TRUE(isStillThere);
    EXPECT_FALSE(std::filesystem::exists(ProcessDirectory())) << "the file was empty";
    EXPECT_EQ(trace->Info("x"), -1);
    EXPECT_EQ(VELSysTraceManagerAddOptionToTrace("STDOUT_COMMON", 4, 1), -1) << "there is none";
    Configure({{"g", {"A"}}});
    EXPECT_TRUE(TraceHandle("A"));
}

TEST_F(TraceManager, SurvivesEveryShortageOfMemory) {
    bool isComplete = false;
    for (int i = 1; !isComplete && i < 1000; ++i) {
        // What the test itself needs it has before.
        asked.clear();
        asked.reserve(10);
        sources = Sources{.text = Items{{"f", {"A"}}, {"r", {"R"}, {{VELSysTraceOptionMemory, 100}}}}};
        {
            const HeapShortage shortage(i, HeapShortage::OnlyThatOne);
            VELSysTraceCreateManager("", nullptr);
            for (const char* name : {"A", "R", "COMMON"}) {
                const TraceHandle trace(name);
                if (trace && name[1] == '\0') {
                    trace->Info("text");
                }
            }
            VELSysTraceDestroyManager();
            isComplete = !HeapShortage::HasStruck();
        }
        std::filesystem::remove_all(BaseDirectory());
    }
    EXPECT_TRUE(isComplete);
}

TEST(TraceClasses, HaveTheirVirtualOperationsInOrder) {
    EXPECT_EQ(VirtualTable::SlotOf(&VELSysTraceObjBase::Open), 2);
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<VELSysTraceStreamObj>::OneMore), 3);
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<VELSysTraceManager>::OneMore), 2);
}
