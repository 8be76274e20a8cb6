#include "VELSysLifeCycle.h"

#include "FailingAllocation.h"
#include "QORMutex.h"
#include "TestSupport.h"
#include "VELSysThread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Participants stay registered for the rest of the process, so each test has functions of its own and looks at their
// calls only.

std::mutex s_logMutex;
std::vector<std::string> s_log;

void Log(std::string entry) {
    const std::lock_guard lock(s_logMutex);
    s_log.push_back(std::move(entry));
}

/// The calls since the last time that begin with `prefix`.
std::vector<std::string> TakeLog(const std::string& prefix) {
    const std::lock_guard lock(s_logMutex);
    std::vector<std::string> result;
    for (const std::string& entry : s_log) {
        if (entry.rfind(prefix, 0) == 0) {
            result.push_back(entry.substr(prefix.size()));
        }
    }
    s_log.clear();
    return result;
}

template <char Test, char Name>
struct Participant {
    static std::string Prefix() { return {Test, ':', Name}; }
    static void OnInitialize(void* object) { Log(Prefix() + (object ? "?" : "!")); }
    static void OnState(int state) { Log(Prefix() + "s" + std::to_string(state)); }
    static void OnSystemCall(int call) { Log(Prefix() + "c" + std::to_string(call)); }

    static int Register(unsigned int priority) {
        return VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag{priority}, OnInitialize, OnState,
                                                   OnSystemCall);
    }
    static VELSysLifeCycleStruct* RegisterModule() {
        return VELSysLifeCycleGlobalFactoryInternal("module", OnInitialize, OnState, OnSystemCall, 3);
    }
};

const int s_staticRegistration = Participant<'S', '1'>::Register(0xA00A);

TEST(VELSysLifeCycleTest, AParticipantRegistersDuringStaticInitialisation) {
    EXPECT_EQ(s_staticRegistration, 0);
    EXPECT_THAT(TakeLog("S:"), IsEmpty());
    EXPECT_EQ(VELSysLifeCycleDispatchInitialization(), 0);
    EXPECT_THAT(TakeLog("S:"), ElementsAre("1!"));
}

TEST(VELSysLifeCycleTest, RegisteringCallsNothing) {
    EXPECT_EQ((Participant<'R', '1'>::Register(1)), 0);
    EXPECT_THAT(TakeLog("R:"), IsEmpty());
}

TEST(VELSysLifeCycleTest, InitialisationGoesByRisingPriorityWithANullObject) {
    Participant<'I', '1'>::Register(0xA00A);
    Participant<'I', '2'>::Register(0xA002);
    Participant<'I', '3'>::Register(0xA003);
    EXPECT_EQ(VELSysLifeCycleDispatchInitialization(), 0);
    EXPECT_THAT(TakeLog("I:"), ElementsAre("2!", "3!", "1!"));
}

TEST(VELSysLifeCycleTest, EachInitialisationCallsAnew) {
    Participant<'A', '1'>::Register(1);
    VELSysLifeCycleDispatchInitialization();
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("A:"), ElementsAre("1!", "1!"));
}

TEST(VELSysLifeCycleTest, StateChangesGoByRisingPriorityWithTheirCode) {
    Participant<'C', '1'>::Register(9);
    Participant<'C', '2'>::Register(4);
    EXPECT_EQ(VELSysLifeCycleDispatchStateChange(8), 0);
    EXPECT_THAT(TakeLog("C:"), ElementsAre("2s8", "1s8"));
}

TEST(VELSysLifeCycleTest, SystemCallsGoByRisingPriorityWithTheirCode) {
    Participant<'Y', '1'>::Register(9);
    Participant<'Y', '2'>::Register(4);
    EXPECT_EQ(VELSysLifeCycleDispatchSystemCall(12), 0);
    EXPECT_THAT(TakeLog("Y:"), ElementsAre("2c12", "1c12"));
}

TEST(VELSysLifeCycleTest, FinalisationGoesByFallingPriorityAndHandsTerminateToTheStateFunction) {
    Participant<'F', '1'>::Register(0xA00A);
    Participant<'F', '2'>::Register(0xA002);
    Participant<'F', '3'>::Register(0xA003);
    EXPECT_EQ(VELSysLifeCycleDispatchFinalization(), 0);
    EXPECT_THAT(TakeLog("F:"), ElementsAre("1s0", "3s0", "2s0"));
}

TEST(VELSysLifeCycleTest, EqualPrioritiesGoInTheOrderOfRegistrationAndBack) {
    Participant<'E', '1'>::Register(5);
    Participant<'E', '2'>::Register(5);
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("E:"), ElementsAre("1!", "2!"));
    VELSysLifeCycleDispatchFinalization();
    EXPECT_THAT(TakeLog("E:"), ElementsAre("2s0", "1s0"));
}

TEST(VELSysLifeCycleTest, ModulesComeBehindTheHighestPriority) {
    VELSysLifeCycleStruct* const module = Participant<'M', '1'>::RegisterModule();
    ASSERT_NE(module, nullptr);
    Participant<'M', '2'>::Register(0xFFFFFFFF);
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("M:"), ElementsAre("2!", "1!"));
    VELSysLifeCycleDispatchFinalization();
    EXPECT_THAT(TakeLog("M:"), ElementsAre("1s0", "2s0"));
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0);
}

TEST(VELSysLifeCycleTest, ParticipantsStayAfterFinalisation) {
    Participant<'P', '1'>::Register(1);
    VELSysLifeCycleDispatchFinalization();
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("P:"), ElementsAre("1s0", "1!"));
}

TEST(VELSysLifeCycleTest, NullFunctionsArePassedOver) {
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag{1}, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(VELSysLifeCycleDispatchInitialization(), 0);
    EXPECT_EQ(VELSysLifeCycleDispatchStateChange(1), 0);
    EXPECT_EQ(VELSysLifeCycleDispatchSystemCall(0), 0);
    EXPECT_EQ(VELSysLifeCycleDispatchFinalization(), 0);
}

TEST(VELSysLifeCycleTest, AModuleThatLeftIsNotCalled) {
    VELSysLifeCycleStruct* const module = Participant<'L', '1'>::RegisterModule();
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0);
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("L:"), IsEmpty());
}

TEST(VELSysLifeCycleTest, AModuleWithoutANameIsTaken) {
    VELSysLifeCycleStruct* const module = VELSysLifeCycleGlobalFactoryInternal(nullptr, nullptr, nullptr, nullptr, 0);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0);
}

TEST(VELSysLifeCycleTest, AnUnknownModuleIsRefused) {
    VELSysLifeCycleStruct* const module = Participant<'U', '1'>::RegisterModule();
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(nullptr), -1);
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0);
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), -1);
}

bool s_registersWithin = false;

void RegisterWithin(void*) {
    if (s_registersWithin) {
        s_registersWithin = false;
        Participant<'W', '1'>::Register(6);
        Participant<'W', '2'>::Register(4);
    }
}

TEST(VELSysLifeCycleTest, AParticipantRegisteredWithinADispatchIsReachedIfItsPlaceIsToCome) {
    VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag{5}, RegisterWithin, nullptr, nullptr);
    s_registersWithin = true;
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("W:"), ElementsAre("1!"));
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("W:"), ElementsAre("2!", "1!"));
}

VELSysLifeCycleStruct* s_leavingModule = nullptr;

void LeaveWithin(int) {
    if (s_leavingModule) {
        EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(s_leavingModule), 0);
        s_leavingModule = nullptr;
        Log("V:left");
    }
}

TEST(VELSysLifeCycleTest, AModuleMayLeaveFromWithinItsOwnFunction) {
    s_leavingModule = VELSysLifeCycleGlobalFactoryInternal("module", nullptr, LeaveWithin, nullptr, 0);
    VELSysLifeCycleStruct* const next = Participant<'V', '1'>::RegisterModule();
    VELSysLifeCycleDispatchStateChange(1);
    EXPECT_THAT(TakeLog("V:"), ElementsAre("left", "1s1"));
    VELSysLifeCycleGlobalFactoryInternalCheck(next);
}

int s_nesting = 0;

void DispatchWithin(int state) {
    if (s_nesting > 0) {
        --s_nesting;
        VELSysLifeCycleDispatchStateChange(state + 1);
    }
}

TEST(VELSysLifeCycleTest, AFunctionMayDispatch) {
    VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag{1}, nullptr, DispatchWithin, nullptr);
    Participant<'N', '1'>::Register(2);
    s_nesting = 1;
    VELSysLifeCycleDispatchStateChange(20);
    EXPECT_THAT(TakeLog("N:"), ElementsAre("1s21", "1s20"));
}

int s_waitsForAnotherThread = 0;

void WaitForAnotherThread(int) {
    if (s_waitsForAnotherThread > 0) {
        --s_waitsForAnotherThread;
        std::thread([] {
            VELSysLifeCycleStruct* const module = Participant<'T', '1'>::RegisterModule();
            VELSysLifeCycleDispatchSystemCall(1);
            VELSysLifeCycleGlobalFactoryInternalCheck(module);
        }).join();
    }
}

TEST(VELSysLifeCycleTest, AFunctionMayWaitForAThreadThatRegistersAndDispatches) {
    VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag{1}, nullptr, WaitForAnotherThread, nullptr);
    s_waitsForAnotherThread = 1;
    VELSysLifeCycleDispatchStateChange(1);
    EXPECT_THAT(TakeLog("T:"), ElementsAre("1c1"));
}

std::atomic<bool> s_isInSlowFunction{false};
std::atomic<bool> s_mayLeaveSlowFunction{true};

void BeSlow(int) {
    s_isInSlowFunction = true;
    WaitUntil([] { return s_mayLeaveSlowFunction.load(); });
    s_isInSlowFunction = false;
}

TEST(VELSysLifeCycleTest, LeavingWaitsForACallOnAnotherThread) {
    VELSysLifeCycleStruct* const module = VELSysLifeCycleGlobalFactoryInternal("slow", nullptr, BeSlow, nullptr, 0);
    s_mayLeaveSlowFunction = false;
    std::thread dispatcher([] { VELSysLifeCycleDispatchStateChange(1); });
    ASSERT_TRUE(WaitUntil([] { return s_isInSlowFunction.load(); }));
    std::thread release([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        s_mayLeaveSlowFunction = true;
    });
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0);
    EXPECT_FALSE(s_isInSlowFunction);
    release.join();
    dispatcher.join();
}

/// Two modules, called on a thread each, whose functions take the other one out.
struct LeavingPair {
    template <int Number>
    static void TakeOtherOut(int state) {
        if (state == s_state + Number) {
            ++s_inside;
            WaitUntil([] { return s_inside == 2; });
            s_results[Number] = VELSysLifeCycleGlobalFactoryInternalCheck(s_modules[1 - Number]);
        } else if (state == s_state + 2) {
            ++s_laterCalls;
        }
    }

    static constexpr int s_state = 1000;
    static inline VELSysLifeCycleStruct* s_modules[2];
    static inline std::atomic<int> s_inside{0};
    static inline std::atomic<int> s_results[2] = {7, 7};
    static inline std::atomic<int> s_laterCalls{0};
};

TEST(VELSysLifeCycleTest, OfModulesThatTakeEachOtherOutOneIsNotWaitedFor) {
    using Pair = LeavingPair;
    Pair::s_modules[0] = VELSysLifeCycleGlobalFactoryInternal("first", nullptr, Pair::TakeOtherOut<0>, nullptr, 0);
    Pair::s_modules[1] = VELSysLifeCycleGlobalFactoryInternal("second", nullptr, Pair::TakeOtherOut<1>, nullptr, 0);
    RunAtOnce(2, [](int number) { VELSysLifeCycleDispatchStateChange(Pair::s_state + number); });
    // The one that waited did so until the other one's function had returned.
    EXPECT_EQ(Pair::s_results[0] + Pair::s_results[1], -1);
    EXPECT_NE(Pair::s_results[0], Pair::s_results[1]);
    // Both have left.
    VELSysLifeCycleDispatchStateChange(Pair::s_state + 2);
    EXPECT_EQ(Pair::s_laterCalls, 0);
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(Pair::s_modules[0]), -1);
    EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(Pair::s_modules[1]), -1);
}

/// A module whose function joins a thread that takes it out.
struct JoiningModule {
    static void JoinThread(int state) {
        if (state == s_state) {
            s_isInside = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(s_pauseBeforeJoin));
            s_joined = s_thread.Join();
        }
    }
    static int TakeOut(void*) {
        WaitUntil([] { return s_isInside.load(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(s_pauseBeforeLeave));
        return VELSysLifeCycleGlobalFactoryInternalCheck(s_module);
    }
    static void Play() {
        s_isInside = false;
        s_module = VELSysLifeCycleGlobalFactoryInternal("joining", nullptr, JoinThread, nullptr, 0);
        s_thread.SetFunction(TakeOut, nullptr, 0);
        s_thread.Run();
        VELSysLifeCycleDispatchStateChange(s_state);
        EXPECT_EQ(s_thread.Join(), 0);
        EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(s_module), -1);
    }

    static constexpr int s_state = 2000;
    /// Which of the two waits begins last: in milliseconds, long enough for the other one to be under way.
    static inline int s_pauseBeforeJoin = 0;
    static inline int s_pauseBeforeLeave = 0;
    static inline VELSysLifeCycleStruct* s_module = nullptr;
    static inline VELSysThread s_thread;
    static inline std::atomic<bool> s_isInside{false};
    static inline int s_joined = 7;
};

TEST(VELSysLifeCycleTest, AModuleDoesNotWaitForItsFunctionThatJoinsTheLeavingThread) {
    JoiningModule::s_pauseBeforeJoin = 0;
    JoiningModule::s_pauseBeforeLeave = 100;
    JoiningModule::Play();
    EXPECT_EQ(JoiningModule::s_joined, 0);
    EXPECT_EQ(JoiningModule::s_thread.GetResult(), -1);
}

TEST(VELSysLifeCycleTest, AFunctionDoesNotJoinAThreadOnWhichItsModuleIsLeaving) {
    JoiningModule::s_pauseBeforeJoin = 100;
    JoiningModule::s_pauseBeforeLeave = 0;
    JoiningModule::Play();
    EXPECT_EQ(JoiningModule::s_joined, -1);
    EXPECT_EQ(JoiningModule::s_thread.GetResult(), 0);
}

TEST(VELSysLifeCycleTest, AThreadOnWhichAModuleLeftIsJoinedByTheOneThatCalledIt) {
    // The joining thread comes from the module's function straight away, before the leaving one has noticed.
    constexpr int state = 3000;
    constexpr int rounds = 300;
    static std::atomic<bool> s_isCalled;
    static VELSysLifeCycleStruct* s_called;
    for (int round = 0; round < rounds; ++round) {
        s_isCalled = false;
        s_called = VELSysLifeCycleGlobalFactoryInternal(
            "called", nullptr,
            [](int code) {
                if (code == state) {
                    s_isCalled = true;
                    std::this_thread::sleep_for(std::chrono::microseconds(200));
                }
            },
            nullptr, 0);
        VELSysThread thread;
        thread.SetFunction(
            [](void*) {
                WaitUntil([] { return s_isCalled.load(); });
                return VELSysLifeCycleGlobalFactoryInternalCheck(s_called);
            },
            nullptr, 0);
        thread.Run();
        VELSysLifeCycleDispatchStateChange(state);
        ASSERT_EQ(thread.Join(), 0);
        ASSERT_EQ(thread.GetResult(), 0);
    }
}

void Throw(int) {
    if (s_nesting < 0) {
        s_nesting = 0;
        throw 1;
    }
}

TEST(VELSysLifeCycleTest, TheRegistryOutlivesAFunctionThatThrows) {
    VELSysLifeCycleStruct* const module = VELSysLifeCycleGlobalFactoryInternal("thrower", nullptr, Throw, nullptr, 0);
    s_nesting = -1;
    EXPECT_THROW(VELSysLifeCycleDispatchStateChange(1), int);
    EXPECT_EQ(VELSysLifeCycleDispatchStateChange(1), 0);
    std::thread([module] { EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0); }).join();
}

TEST(VELSysLifeCycleTest, ThreadsRegisterDispatchAndLeaveAtOnce) {
    constexpr int rounds = 200;
    RunAtOnce(4, [](int number) {
        for (int round = 0; round < rounds; ++round) {
            if (number % 2) {
                VELSysLifeCycleDispatchStateChange(round);
                continue;
            }
            VELSysLifeCycleStruct* const module = VELSysLifeCycleGlobalFactoryInternal(
                "module", nullptr, [](int) {}, nullptr, 0);
            VELSysLifeCycleDispatchSystemCall(round);
            EXPECT_EQ(VELSysLifeCycleGlobalFactoryInternalCheck(module), 0);
        }
    });
}

TEST(VELSysLifeCycleTest, AModuleIsUnloadedSafelyWhileAnotherThreadDispatches) {
    std::atomic<bool> isOver{false};
    std::thread dispatcher([&] {
        while (!isOver) {
            VELSysLifeCycleDispatchStateChange(1);
        }
    });
    for (int round = 0; round < 100; ++round) {
        void* handle = nullptr;
        ASSERT_EQ(VELSysLifeCycleDynamicLoad(TEST_PLUG_IN, &handle), 0);
        EXPECT_EQ(VELSysLifeCycleDynamicUnload(handle), 0);
    }
    isOver = true;
    dispatcher.join();
}

TEST(VELSysLifeCycleTest, MemoryShortageRefusesARegistration) {
    const int refusals = SweepAllocations([](const FailingAllocation& shortage) {
        const int result = VELSysLifeCycleGlobalFactoryPrivate(VELSysLifeCyclePriorFlag{1}, nullptr, nullptr, nullptr);
        EXPECT_EQ(result, shortage.HasFailed() ? -1 : 0);
    });
    EXPECT_GT(refusals, 0);
    const int moduleRefusals = SweepAllocations([](const FailingAllocation& shortage) {
        VELSysLifeCycleStruct* const module = VELSysLifeCycleGlobalFactoryInternal(
            "a name that is too long to stand within a string object", nullptr, nullptr, nullptr, 0);
        EXPECT_EQ(module == nullptr, shortage.HasFailed());
        VELSysLifeCycleGlobalFactoryInternalCheck(module);
    });
    EXPECT_GT(moduleRefusals, 1);
}

TEST(VELSysLifeCycleTest, TheFinalReleaseLeavesEverythingUsable) {
    Participant<'Z', '1'>::Register(1);
    EXPECT_EQ(VELSysFinalReleaseCPUResourceManager(0), 0);
    EXPECT_EQ(VELSysFinalReleaseCPUResourceManager(-1), 0);
    VELSysLifeCycleDispatchInitialization();
    EXPECT_THAT(TakeLog("Z:"), ElementsAre("1!"));
}

TEST(VELSysLifeCycleTest, AFunctionIsFoundInALibraryThatWasLoaded) {
    void* handle = nullptr;
    ASSERT_EQ(VELSysLifeCycleDynamicLoad(TEST_PLUG_IN, &handle), 0);
    ASSERT_NE(handle, nullptr);
    auto* const function =
        reinterpret_cast<int (*)()>(VELSysLifeCycleDynamicGetFunction(handle, "QORSysMTTestPlugInAnswer"));
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function(), 42);
    EXPECT_EQ(VELSysLifeCycleDynamicGetFunction(handle, "QORSysMTTestPlugInMissing"), nullptr);
    EXPECT_EQ(VELSysLifeCycleDynamicUnload(handle), 0);
}

TEST(VELSysLifeCycleTest, AMissingLibraryClearsTheHandle) {
    int anything = 0;
    void* handle = &anything;
    EXPECT_EQ(VELSysLifeCycleDynamicLoad("QORSysMTNoSuchLibrary", &handle), -1);
    EXPECT_EQ(handle, nullptr);
}

TEST(VELSysLifeCycleTest, NullArgumentsOfTheBindingAreRefused) {
    void* handle = nullptr;
    EXPECT_EQ(VELSysLifeCycleDynamicLoad(TEST_PLUG_IN, nullptr), -1);
    EXPECT_EQ(VELSysLifeCycleDynamicLoad(nullptr, &handle), -1);
    EXPECT_EQ(VELSysLifeCycleDynamicGetFunction(nullptr, "QORSysMTTestPlugInAnswer"), nullptr);
    EXPECT_EQ(VELSysLifeCycleDynamicUnload(nullptr), -1);
    ASSERT_EQ(VELSysLifeCycleDynamicLoad(TEST_PLUG_IN, &handle), 0);
    EXPECT_EQ(VELSysLifeCycleDynamicGetFunction(handle, nullptr), nullptr);
    VELSysLifeCycleDynamicUnload(handle);
}

} // namespace
