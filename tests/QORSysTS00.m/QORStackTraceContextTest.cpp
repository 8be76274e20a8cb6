/// @file
/// Stacks of a saved context: how the frames are followed, where that ends, and what damaged ones do.

#include "QORStackTrace.h"

#include "GuardedMemory.h"
#include "StackSamples.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <sys/uio.h>

using namespace StackSamples;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

int s_reads = 0;
int s_readError = 0; ///< What process_vm_readv() fails with.
bool s_hasPipes = true;

} // namespace

extern "C" ssize_t __real_process_vm_readv(pid_t, const iovec*, unsigned long, const iovec*, unsigned long,
                                           unsigned long);
extern "C" ssize_t __wrap_process_vm_readv(pid_t process, const iovec* local, unsigned long localCount,
                                           const iovec* remote, unsigned long remoteCount, unsigned long flags) {
    ++s_reads;
    if (s_readError != 0) {
        errno = s_readError;
        return -1;
    }
    return __real_process_vm_readv(process, local, localCount, remote, remoteCount, flags);
}

extern "C" int __real_pipe2(int* ends, int flags);
extern "C" int __wrap_pipe2(int* ends, int flags) {
    if (s_hasPipes) {
        return __real_pipe2(ends, flags);
    }
    errno = EMFILE;
    return -1;
}

namespace {

constexpr int NoLimit = 1000;

/// The kernel refuses to copy memory for as long as this lives.
class RefusedCopies {
public:
    explicit RefusedCopies(int error, bool hasPipes = true) {
        s_readError = error;
        s_hasPipes = hasPipes;
    }
    RefusedCopies(const RefusedCopies&) = delete;
    RefusedCopies& operator=(const RefusedCopies&) = delete;
    ~RefusedCopies() {
        s_readError = 0;
        s_hasPipes = true;
    }
};

std::vector<void*> Captured(void* context, int skip = 0, int maximum = NoLimit, int count = 300) {
    std::vector<void*> addresses(300);
    const int stored = QORSysGetIPStack(context, skip, maximum, addresses.data(), count);
    addresses.resize(static_cast<std::size_t>(stored));
    return addresses;
}

std::vector<void*> Captured(ucontext_t context) {
    return Captured(&context);
}

// --- where a walk ends -----------------------------------------------------------------------------------------------

TEST(SavedStack, IsFollowedAlongTheFrames) {
    FiveSamples stack;
    EXPECT_THAT(Captured(stack.Context()), ElementsAreArray(stack.Addresses()));
}

TEST(SavedStack, EndsAtANullFrameWithoutItsAddress) {
    const Frame outer = {nullptr, InSample(2)};
    const Frame inner = {&outer, InSample(1)};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0), InSample(1)));
    EXPECT_THAT(Captured(ContextAt(InSample(0), nullptr)), IsEmpty());
}

TEST(SavedStack, EndsAtANullAddress) {
    const Frame outer = {&outer, InSample(2)};
    const Frame inner = {&outer, nullptr};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0)));
    EXPECT_THAT(Captured(ContextAt(nullptr, &outer)), IsEmpty());
}

TEST(SavedStack, EndsBeforeAnAddressOfNoObject) {
    const Frame outer = {&outer, InSample(2)};
    const Frame inner = {&outer, Unknown()};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0)));
    EXPECT_THAT(Captured(ContextAt(Unknown(), &outer)), IsEmpty());
}

TEST(SavedStack, GoesOnBehindAnAddressWithoutSymbol) {
    const Frame outer = {&outer, nullptr};
    const Frame inner = {&outer, WithoutSymbol()};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0), WithoutSymbol()));
}

TEST(SavedStack, EndsBehindMain) {
    const Frame outer = {&outer, InSample(2)};
    const Frame inner = {&outer, InMain()};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0), InMain()));
    EXPECT_THAT(Captured(ContextAt(InMain(), &outer)), ElementsAre(InMain()));
}

TEST(SavedStack, EndsWith256AddressesWhereTheFramesGoRoundInACircle) {
    const Frame outer = {&outer, InSample(1)};
    const std::vector<void*> addresses = Captured(ContextAt(InSample(0), &outer));
    ASSERT_EQ(addresses.size(), 256U);
    EXPECT_EQ(addresses.front(), InSample(0));
    EXPECT_EQ(addresses.back(), InSample(1));
}

TEST(SavedStack, IsCutAt40InATrace) {
    const Frame outer = {&outer, InSample(1)};
    ucontext_t context = ContextAt(InSample(0), &outer);
    QORStackTrace trace;
    EXPECT_EQ(trace.GetTrace(&context), 40);
    EXPECT_EQ(trace.GetDepth(), 40);
    EXPECT_EQ(trace.GetIPStack(&context), 40);
}

// --- the caller on top of the stack ----------------------------------------------------------------------------------

TEST(SavedStack, HasTheCallerOnTopOfTheStackInSecondPlace) {
    const Frame outer = {&outer, nullptr};
    const Frame inner = {&outer, InSample(2)};
    void* top = InSample(1);
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner, &top)), ElementsAre(InSample(0), InSample(1), InSample(2)));
}

TEST(SavedStack, TakesNothingFromTheTopBehindTheFirstAddress) {
    FiveSamples stack;
    void* top = InSample(4);
    ucontext_t context = *static_cast<ucontext_t*>(stack.Context());
    context.uc_mcontext.gregs[REG_RSP] = reinterpret_cast<greg_t>(&top);
    EXPECT_THAT(Captured(context),
                ElementsAre(InSample(0), InSample(4), InSample(1), InSample(2), InSample(3), InSample(4)));
}

TEST(SavedStack, DoesNotBelieveAnUnknownTopOfTheStack) {
    const Frame outer = {nullptr, nullptr};
    void* top = Unknown();
    EXPECT_THAT(Captured(ContextAt(InSample(0), &outer, &top)), ElementsAre(InSample(0)));
}

TEST(SavedStack, EndsWhereMainIsOnTopOfTheStack) {
    const Frame outer = {&outer, InSample(2)};
    void* top = InMain();
    EXPECT_THAT(Captured(ContextAt(InSample(0), &outer, &top)), ElementsAre(InSample(0), InMain()));
}

// --- the part that is asked for --------------------------------------------------------------------------------------

struct Part {
    int skip;
    int maximum;
    int count;
    int first; ///< Number of the first sample that is stored.
    int last;  ///< Number behind the last one.
};

class SavedStackPart : public testing::TestWithParam<Part> {};

TEST_P(SavedStackPart, IsStored) {
    const Part part = GetParam();
    FiveSamples stack;
    const std::vector<void*> all = stack.Addresses();
    EXPECT_THAT(Captured(stack.Context(), part.skip, part.maximum, part.count),
                ElementsAreArray(all.begin() + part.first, all.begin() + part.last));
}

INSTANTIATE_TEST_SUITE_P(All, SavedStackPart,
                         testing::Values(Part{0, 99, 40, 0, 5}, Part{1, 99, 40, 1, 5}, Part{4, 99, 40, 4, 5},
                                         Part{5, 99, 40, 0, 0}, Part{6, 99, 40, 0, 0}, Part{INT_MAX, 99, 40, 0, 0},
                                         Part{INT_MAX, INT_MAX, 40, 0, 0}, Part{0, 3, 40, 0, 3}, Part{1, 3, 40, 1, 3},
                                         Part{3, 3, 40, 0, 0}, Part{4, 3, 40, 0, 0}, Part{0, 0, 40, 0, 0},
                                         Part{0, -1, 40, 0, 0}, Part{0, INT_MIN, 40, 0, 0}, Part{0, 99, 2, 0, 2},
                                         Part{2, 99, 2, 2, 4}, Part{0, 99, 0, 0, 0}, Part{0, 99, -1, 0, 0},
                                         Part{0, 99, INT_MIN, 0, 0}, Part{-1, 99, 40, 0, 5},
                                         Part{INT_MIN, 2, 1, 0, 1}));

TEST(SavedStack, NeedsSomewhereToStoreAddresses) {
    FiveSamples stack;
    EXPECT_EQ(QORSysGetIPStack(stack.Context(), 0, NoLimit, nullptr, 40), 0);
}

// --- frames that are damaged -----------------------------------------------------------------------------------------

class DamagedFrame : public testing::TestWithParam<std::uintptr_t> {};

TEST_P(DamagedFrame, EndsTheWalk) {
    const auto* damaged = reinterpret_cast<const void*>(GetParam());
    EXPECT_THAT(Captured(ContextAt(InSample(0), damaged)), ElementsAre(InSample(0)));
    const Frame inner = {damaged, InSample(1)};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0), InSample(1)));
}

TEST_P(DamagedFrame, IsHarmlessAsTopOfTheStack) {
    const Frame outer = {nullptr, nullptr};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &outer, reinterpret_cast<const void*>(GetParam()))),
                ElementsAre(InSample(0)));
}

TEST_P(DamagedFrame, IsHarmlessAsContext) {
    EXPECT_THAT(Captured(reinterpret_cast<void*>(GetParam())), IsEmpty());
}

constexpr std::uintptr_t Last = std::numeric_limits<std::uintptr_t>::max();
INSTANTIATE_TEST_SUITE_P(All, DamagedFrame,
                         testing::Values(1, 7, 8, 4095, 4096, std::uintptr_t(1) << 47, (std::uintptr_t(1) << 47) - 8,
                                         std::uintptr_t(1) << 63, Last - 15, Last - 7, Last));

TEST(SavedStack, EndsBeforeAFrameThatCannotBeReadAsAWhole) {
    const GuardedMemory memory(1);
    const Frame whole = {&whole, nullptr};
    const Frame* atEnd = memory.CopyAtEnd(&whole, 1);
    const auto* halfOutside = reinterpret_cast<const char*>(atEnd) + sizeof(void*);
    const Frame inner = {halfOutside, InSample(1)};
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0), InSample(1)));
    const auto* outside = reinterpret_cast<const char*>(atEnd + 1);
    EXPECT_THAT(Captured(ContextAt(InSample(0), outside)), ElementsAre(InSample(0)));
}

TEST(SavedStack, HasNothingOfWhatWasReadBeforeAFailure) {
    const Frame outer = {nullptr, nullptr};
    struct alignas(1024) Window {
        ucontext_t context;
        Frame frame;
    } window;
    static_assert(sizeof window == 1024);
    const GuardedMemory memory(1);
    const char* outside = memory.AtBegin<char>() - 1024 + offsetof(Window, frame);
    window.context = ContextAt(InSample(0), outside, outside);
    window.frame = {&outer, InSample(1)};
    EXPECT_THAT(Captured(&window.context), ElementsAre(InSample(0)));
}

TEST(SavedStack, IsReadUpToTheLastByteOfItsMemory) {
    const GuardedMemory memory(1);
    const Frame inner = {memory.AtEnd<Frame>(1), InSample(1)};
    const Frame outer = {nullptr, nullptr};
    memory.CopyAtEnd(&outer, 1);
    EXPECT_THAT(Captured(ContextAt(InSample(0), &inner)), ElementsAre(InSample(0), InSample(1)));
}

TEST(SavedStack, IsFollowedWhereverAFrameLies) {
    const GuardedMemory memory(8192);
    const Frame outer = {nullptr, nullptr};
    const Frame inner = {&outer, InSample(1)};
    for (std::size_t offset = 0; offset <= 8192 - sizeof(Frame); ++offset) {
        char* place = memory.AtBegin<char>() + offset;
        std::memcpy(place, &inner, sizeof inner);
        ASSERT_THAT(Captured(ContextAt(InSample(0), place)), ElementsAre(InSample(0), InSample(1))) << offset;
        std::memset(place, 0, sizeof inner);
    }
}

TEST(SavedStack, OfRandomFramesIsHarmless) {
    std::array<std::uintptr_t, 512> words;
    const auto base = reinterpret_cast<std::uintptr_t>(words.data());
    std::uint64_t random = 1;
    for (int round = 0; round < 200; ++round) {
        for (std::uintptr_t& word : words) {
            random = random * 6364136223846793005U + 1442695040888963407U;
            const std::uint64_t value = random >> 20;
            const std::uintptr_t choices[] = {base + value % sizeof words, value,
                                              reinterpret_cast<std::uintptr_t>(InSample(static_cast<int>(value % 5))),
                                              base + value % words.size() * sizeof(void*)};
            word = choices[random >> 62];
        }
        EXPECT_LE(Captured(ContextAt(InSample(0), words.data(), words.data())).size(), 256U);
    }
}

// --- how it is read --------------------------------------------------------------------------------------------------

TEST(SavedStack, IsReadWithFewSystemCalls) {
    alignas(1024) Frame frames[64];
    for (std::size_t i = 0; i < 63; ++i) {
        frames[i] = {frames + i + 1, InSample(1)};
    }
    frames[63] = {nullptr, nullptr};
    ucontext_t context = ContextAt(InSample(0), frames);
    s_reads = 0;
    EXPECT_EQ(Captured(&context).size(), 64U);
    EXPECT_LE(s_reads, 4);
}

TEST(SavedStack, LeavesTheErrorNumberAlone) {
    errno = ENOTTY;
    EXPECT_EQ(Captured(ContextAt(InSample(0), Unknown())).size(), 1U);
    EXPECT_EQ(errno, ENOTTY);
    const RefusedCopies refused(EPERM, false);
    FiveSamples stack;
    EXPECT_THAT(Captured(stack.Context()), IsEmpty());
    EXPECT_EQ(errno, ENOTTY);
}

std::ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class RefusedRead : public testing::TestWithParam<int> {};

TEST_P(RefusedRead, GivesTheSameStack) {
    const RefusedCopies refused(GetParam());
    const std::ptrdiff_t open = OpenDescriptors();
    FiveSamples stack;
    EXPECT_THAT(Captured(stack.Context()), ElementsAreArray(stack.Addresses()));
    EXPECT_THAT(Captured(ContextAt(InSample(0), Unknown())), ElementsAre(InSample(0)));
    EXPECT_EQ(OpenDescriptors(), open);
}

INSTANTIATE_TEST_SUITE_P(All, RefusedRead, testing::Values(EPERM, ENOSYS));

// --- signals ---------------------------------------------------------------------------------------------------------

QORStackTrace s_trace;

void OnTrap(int, siginfo_t*, void* context) {
    s_trace.GetTrace(context);
}

std::string NameIn(QORBasicStackTrace& trace, int index) {
    char name[64];
    trace.Read(index, name, sizeof name);
    return name;
}

} // namespace

// Functions that trap: one with a frame, and one that has none yet.
asm(R"(
    .text
    .globl TrapsWithFrame
    .type TrapsWithFrame, @function
TrapsWithFrame:
    pushq %rbp
    movq %rsp, %rbp
    pushq $0
    int3
    leave
    ret
    .size TrapsWithFrame, . - TrapsWithFrame

    .globl TrapsWithoutFrame
    .type TrapsWithoutFrame, @function
TrapsWithoutFrame:
    int3
    ret
    .size TrapsWithoutFrame, . - TrapsWithoutFrame
)");

extern "C" {
void TrapsWithFrame();
void TrapsWithoutFrame();

__attribute__((noinline)) void InnerCaller(void (*trap)()) {
    trap();
    asm volatile("");
}

__attribute__((noinline)) void OuterCaller(void (*trap)()) {
    InnerCaller(trap);
    asm volatile("");
}
}

namespace {

class TrappedFunction : public testing::Test {
protected:
    static void SetUpTestSuite() {
        struct sigaction action = {};
        action.sa_sigaction = OnTrap;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigaction(SIGTRAP, &action, nullptr);
    }
};

TEST_F(TrappedFunction, IsSeenWithItsCallers) {
    OuterCaller(TrapsWithFrame);
    ASSERT_GE(s_trace.GetDepth(), 3);
    EXPECT_EQ(NameIn(s_trace, 0), "TrapsWithFrame");
    EXPECT_EQ(NameIn(s_trace, 1), "InnerCaller");
    EXPECT_EQ(NameIn(s_trace, 2), "OuterCaller");
}

TEST_F(TrappedFunction, WithoutFrameIsSeenWithItsCallers) {
    OuterCaller(TrapsWithoutFrame);
    ASSERT_GE(s_trace.GetDepth(), 3);
    EXPECT_EQ(NameIn(s_trace, 0), "TrapsWithoutFrame");
    EXPECT_EQ(NameIn(s_trace, 1), "InnerCaller");
    EXPECT_EQ(NameIn(s_trace, 2), "OuterCaller");
}

TEST_F(TrappedFunction, IsSeenFromAnAlternateStack) {
    const GuardedMemory memory(65536);
    stack_t alternate = {};
    alternate.ss_sp = memory.AtBegin<char>();
    alternate.ss_size = 65536;
    stack_t usual = {};
    ASSERT_EQ(sigaltstack(&alternate, &usual), 0);
    OuterCaller(TrapsWithFrame);
    ASSERT_EQ(sigaltstack(&usual, nullptr), 0);
    ASSERT_GE(s_trace.GetDepth(), 2);
    EXPECT_EQ(NameIn(s_trace, 0), "TrapsWithFrame");
    EXPECT_EQ(NameIn(s_trace, 1), "InnerCaller");
}

} // namespace
