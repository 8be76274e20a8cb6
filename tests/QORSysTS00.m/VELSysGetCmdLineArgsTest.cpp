#include "ArgumentStore.h"
#include "Child.h"
#include "HeapLog.h"
#include "VELString.h"
#include "VELSysNLSCore.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ArgumentStore;

namespace {

/// The command line as the system tells it, when a test chooses it.
bool s_isChosen = false;
std::string s_text;
bool s_openFails = false;
bool s_readFails = false;
std::size_t s_largestRead = 0;
std::vector<std::size_t> s_reads;
int s_descriptor = -1;
std::size_t s_position = 0;
int s_opened = 0;
int s_openFlags = 0;
/// Reads that a signal interrupts before the others succeed.
int s_interruptedReads = 0;
/// Run inside each read, and while the environment's language is being decided.
void (*s_insideRead)() = nullptr;
void (*s_insideDecision)() = nullptr;

/// The store being filled from the command line that was read.
struct Fill {
    bool fileIsClosed;
    int argc;
    char** argv;
};
std::vector<Fill> s_fills;

void Choose(const std::string& text) {
    s_isChosen = true;
    s_text = text;
    s_reads.reserve(1000);
}

std::vector<std::string> Arguments() {
    int argc = 77;
    char** argv = nullptr;
    VELSysGetCmdLineArgs(argc, argv);
    if (argv == nullptr) {
        EXPECT_EQ(argc, 0);
        return {};
    }
    EXPECT_EQ(argv[argc], nullptr);
    return {argv, argv + argc};
}

} // namespace

extern "C" int __real_open(const char* name, int flags, ...);
extern "C" int __wrap_open(const char* name, int flags, ...) {
    if (std::strstr(name, "cmdline") == nullptr) {
        std::va_list arguments;
        va_start(arguments, flags);
        const int mode = va_arg(arguments, int);
        va_end(arguments);
        return __real_open(name, flags, mode);
    }
    ++s_opened;
    // Without the heap, which a test may have closed.
    char expected[64];
    std::snprintf(expected, sizeof expected, "/proc/%d/cmdline", getpid());
    EXPECT_STREQ(name, expected);
    s_openFlags = flags;
    if (s_openFails) {
        errno = EACCES;
        return -1;
    }
    s_descriptor = __real_open(name, flags);
    s_position = 0;
    return s_descriptor;
}

extern "C" ssize_t __real_read(int descriptor, void* out, std::size_t room);
extern "C" ssize_t __wrap_read(int descriptor, void* out, std::size_t room) {
    if (descriptor != s_descriptor || descriptor < 0) {
        return __real_read(descriptor, out, room);
    }
    s_reads.push_back(room);
    if (s_insideRead != nullptr) {
        s_insideRead();
    }
    if (s_interruptedReads > 0) {
        --s_interruptedReads;
        errno = EINTR;
        return -1;
    }
    if (s_readFails) {
        errno = EIO;
        return -1;
    }
    if (!s_isChosen) {
        return __real_read(descriptor, out, room);
    }
    std::size_t count = std::min(room, s_text.size() - s_position);
    count = s_largestRead != 0 ? std::min(count, s_largestRead) : count;
    std::memcpy(out, s_text.data() + s_position, count);
    s_position += count;
    return static_cast<ssize_t>(count);
}

extern "C" int __real__Z14VELSysTSSetArgiPPc(int argc, char** argv);
extern "C" int __wrap__Z14VELSysTSSetArgiPPc(int argc, char** argv) {
    s_fills.push_back({fcntl(s_descriptor, F_GETFD) == -1, argc, argv});
    return __real__Z14VELSysTSSetArgiPPc(argc, argv);
}

// In place of the language core: UTF-8, whatever the machine's locale.

extern "C" int __wrap__Z13GetEnvNLSDataP12VELSysNLSEnv(VELSysNLSEnv* env) {
    if (s_insideDecision != nullptr) {
        s_insideDecision();
    }
    *env = {};
    std::strcpy(env->codePage, "UTF-8");
    return 0;
}

extern "C" int __wrap__Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE(void (*)(const VELSysNLSEnv&)) {
    return 0;
}

extern "C" long __wrap__Z26VELGetMultiByteCharMaxSizev() {
    return 1;
}

extern "C" char* __wrap__ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj(const char*, char* out,
                                                                                 unsigned int size) {
    return std::strncpy(out, "C", size);
}

CHILD_PROGRAM(PrintsItsCommandLine) {
    const std::vector<std::string> found = Arguments();
    // The program, the switch and the name of the child program come first.
    const std::vector<std::string> own(found.begin() + 3, found.end());
    std::printf("%zu %d\n", found.size(), own == arguments ? 1 : 0);
    return Get("child-program") == Flag() ? 0 : 1;
}

TEST(VELSysGetCmdLineArgs, AreThoseOfTheProcess) {
    const Child child = RunChild("PrintsItsCommandLine", {.set = {}, .arguments = {"a", "", "\xE9\xFF", "b c", ""}});
    EXPECT_EQ(child.out, "8 1\n");
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

TEST(VELSysGetCmdLineArgs, MayBeThousands) {
    const Child child = RunChild("PrintsItsCommandLine", {.set = {}, .arguments = std::vector<std::string>(3000, "x")});
    EXPECT_EQ(child.out, "3003 1\n");
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

TEST(VELSysGetCmdLineArgs, MayBeLong) {
    // Close to the longest argument that the system hands over.
    const Child child = RunChild("PrintsItsCommandLine",
                                 {.set = {}, .arguments = {std::string(120000, 'x'), "y", std::string(100000, 'z')}});
    EXPECT_EQ(child.out, "6 1\n");
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

TEST(VELSysGetCmdLineArgs, MayBeLongerThanThisSystemsOwn) {
    const std::string longest(200 * 1024, 'x');
    Choose("program" + std::string(1, '\0') + longest + std::string(1, '\0'));
    EXPECT_EQ(Arguments(), (std::vector<std::string>{"program", longest}));
}

TEST(VELSysGetCmdLineArgs, AreReadInDoublingSteps) {
    Choose(std::string(7000, 'x') + '\0');
    EXPECT_EQ(Arguments().size(), 1U);
    EXPECT_EQ(s_reads, (std::vector<std::size_t>{1024, 2048, 4096, 167}));
}

TEST(VELSysGetCmdLineArgs, AreReadThroughADescriptorOfThisProcessAlone) {
    Choose("");
    Arguments();
    EXPECT_EQ(s_openFlags & O_ACCMODE, O_RDONLY);
    EXPECT_EQ(s_openFlags & O_CLOEXEC, O_CLOEXEC) << "no program that is started meanwhile inherits it";
}

TEST(VELSysGetCmdLineArgs, AreReadOnAfterASignal) {
    s_interruptedReads = 1;
    Choose(std::string("program\0-a\0", 11));
    EXPECT_EQ(Arguments(), (std::vector<std::string>{"program", "-a"}));
    EXPECT_EQ(s_opened, 1);
    EXPECT_EQ(s_reads.size(), 3U);
}

TEST(VELSysGetCmdLineArgs, AreKeptWithoutRoomBehindThem) {
    Choose(std::string("program\0word\0", 13));
    // The table and its room are there before.
    Set({});
    int argc = 0;
    char** argv = nullptr;
    const HeapLog heap;
    VELSysGetCmdLineArgs(argc, argv);
    EXPECT_EQ(heap.Requests(), (std::vector<std::size_t>{1024, 13, 3 * sizeof(char*)}));
    EXPECT_EQ(heap.Live(), 2U);
}

TEST(VELSysGetCmdLineArgs, FillTheStoreOnceTheFileIsClosed) {
    Choose(std::string("program\0-a=1\0", 13));
    int argc = 0;
    char** argv = nullptr;
    VELSysGetCmdLineArgs(argc, argv);
    ASSERT_EQ(s_fills.size(), 1U);
    EXPECT_TRUE(s_fills[0].fileIsClosed);
    EXPECT_EQ(s_fills[0].argc, 2);
    EXPECT_EQ(s_fills[0].argv, argv);
}

TEST(VELSysGetCmdLineArgs, ArriveInPieces) {
    s_largestRead = 3;
    Choose(std::string("program\0-a=1\0\0", 14));
    EXPECT_EQ(Arguments(), (std::vector<std::string>{"program", "-a=1", ""}));
}

TEST(VELSysGetCmdLineArgs, FillingTheBufferExactlyAreWhole) {
    for (const std::size_t size : {1023, 1024, 1025, 3072}) {
        const Child child = RunChild("FillsTheBuffer", {.set = {}, .arguments = {std::to_string(size)}});
        EXPECT_EQ(child.exitCode, 0) << size << child.err;
    }
}

CHILD_PROGRAM(FillsTheBuffer) {
    const std::size_t size = std::stoul(arguments[0]);
    Choose(std::string(size - 1, 'x') + '\0');
    return Arguments() == std::vector<std::string>{std::string(size - 1, 'x')} ? 0 : 1;
}

TEST(VELSysGetCmdLineArgs, WithoutATerminatorEndWithTheText) {
    Choose(std::string("program\0title", 13));
    EXPECT_EQ(Arguments(), (std::vector<std::string>{"program", "title"}));
}

TEST(VELSysGetCmdLineArgs, WithoutATerminatorFillingTheBufferEndWithTheText) {
    Choose(std::string(1024, 'x'));
    EXPECT_EQ(Arguments(), std::vector<std::string>{std::string(1024, 'x')});
}

TEST(VELSysGetCmdLineArgs, MayBeNone) {
    Choose("");
    int argc = 77;
    char** argv = nullptr;
    VELSysGetCmdLineArgs(argc, argv);
    EXPECT_EQ(argc, 0);
    ASSERT_NE(argv, nullptr);
    EXPECT_EQ(argv[0], nullptr);
    EXPECT_EQ(VELSysGetCmdLineArgs(argc), nullptr);
    EXPECT_EQ(s_opened, 1);
}

TEST(VELSysGetCmdLineArgs, AreReadOnce) {
    Choose(std::string("program\0-a\0", 11));
    int argc = 0;
    char** first = nullptr;
    VELSysGetCmdLineArgs(argc, first);
    Choose("other");
    char** second = nullptr;
    VELSysGetCmdLineArgs(argc, second);
    EXPECT_EQ(first, second);
    EXPECT_EQ(argc, 2);
    EXPECT_EQ(s_opened, 1);
}

TEST(VELSysGetCmdLineArgs, ReplaceTheStoreTheFirstTimeOnly) {
    Choose(std::string("program\0-a=1\0", 13));
    VELSysTSAddArg("b", nullptr);
    Arguments();
    EXPECT_EQ(Get("a"), Value("1"));
    EXPECT_EQ(Get("b"), Missing());
    VELSysTSAddArg("b", nullptr);
    Arguments();
    EXPECT_EQ(Get("b"), Flag(1));
}

TEST(VELSysGetCmdLineArgs, AreTriedAgainAfterAFailure) {
    Choose(std::string("program\0-a\0", 11));
    VELSysTSAddArg("b", nullptr);
    s_openFails = true;
    EXPECT_TRUE(Arguments().empty());
    int argc = 77;
    EXPECT_EQ(VELSysGetCmdLineArgs(argc), nullptr);
    EXPECT_EQ(argc, 0);
    s_openFails = false;
    s_readFails = true;
    EXPECT_TRUE(Arguments().empty());
    EXPECT_EQ(fcntl(s_descriptor, F_GETFD), -1) << "the file is closed";
    EXPECT_EQ(Get("b"), Flag(1));
    s_readFails = false;
    EXPECT_EQ(Arguments().size(), 2U);
    EXPECT_EQ(fcntl(s_descriptor, F_GETFD), -1) << "the file is closed";
    EXPECT_EQ(s_opened, 4);
}

TEST(VELSysGetCmdLineArgs, WithoutMemoryAreTriedAgain) {
    Choose(std::string("program\0-a\0", 11) + std::string(2000, 'x') + '\0');
    for (int request = 1;; ++request) {
        ASSERT_LT(request, 100);
        int argc = 77;
        char** argv = nullptr;
        bool hasStruck = false;
        {
            const HeapShortage shortage(request, HeapShortage::OnlyThatOne);
            VELSysGetCmdLineArgs(argc, argv);
            hasStruck = HeapShortage::HasStruck();
        }
        if (argv != nullptr) {
            EXPECT_EQ(argc, 3);
            EXPECT_GT(request, 2);
            break;
        }
        EXPECT_TRUE(hasStruck);
        EXPECT_EQ(argc, 0);
    }
}

TEST(VELSysGetCmdLineArgs, AsStringsAreNarrow) {
    Choose(std::string("program\0\xC3\xA9\0\0", 12));
    int argc = 0;
    QORUnicodeString* const strings = VELSysGetCmdLineArgs(argc);
    ASSERT_EQ(argc, 3);
    EXPECT_STREQ(strings[0].ConvertToChar(), "program");
    EXPECT_STREQ(strings[1].ConvertToChar(), "\xC3\xA9");
    EXPECT_STREQ(strings[2].ConvertToChar(), "");
    EXPECT_EQ(VEL::GetMainRepEncoding(strings[1]), VEL::MainRepNarrow);
    std::size_t count = 0;
    std::memcpy(&count, reinterpret_cast<const char*>(strings) - sizeof count, sizeof count);
    EXPECT_EQ(count, 3U) << "the count stands in front";
    delete[] strings;
}

TEST(VELSysGetCmdLineArgs, AsStringsMayBeOutOfMemory) {
    Arguments();
    int argc = 77;
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(VELSysGetCmdLineArgs(argc), nullptr);
}

TEST(VELSysGetCmdLineArgs, AreReadByOneOfSeveralThreads) {
    std::atomic<int> ready{0};
    char** found[2] = {};
    const auto get = [&](int i) {
        ++ready;
        while (ready < 2) {
        }
        int argc = 0;
        VELSysGetCmdLineArgs(argc, found[i]);
        EXPECT_GT(argc, 0);
    };
    std::thread first(get, 0);
    std::thread second(get, 1);
    first.join();
    second.join();
    EXPECT_EQ(found[0], found[1]);
    EXPECT_EQ(s_opened, 1);
}

// The language decision behind a string's conversion reads the command line, too. A lock that is held meanwhile would
// never come free; an alarm ends the child then.

namespace {

constexpr unsigned int LongestWait = 20;
std::atomic<bool> s_isReading{false};
std::atomic<bool> s_isDeciding{false};

void Await(const std::atomic<bool>& flag) {
    while (!flag) {
        std::this_thread::yield();
    }
}

/// Adds an option, under a key of the command line, whose conversion needs the environment's converter.
bool AddsItsValue() {
    const QORUnicodeString value("\xC3\xA9");
    return VELSysTSAddArg("a", &value) == 0 && Get("a") == Value("\xC3\xA9", 1);
}

} // namespace

CHILD_PROGRAM(AddsWhileTheDecisionAsks) {
    alarm(LongestWait);
    Choose(std::string("program\0-a=1\0-b\0", 16));
    s_insideDecision = [] { Arguments(); };
    return AddsItsValue() && Get("b") == Flag() && s_opened == 1 ? 0 : 1;
}

TEST(VELSysGetCmdLineArgs, MayBeAskedForByTheDecisionBehindAnAddition) {
    const Child child = RunChild("AddsWhileTheDecisionAsks");
    EXPECT_EQ(child.signal, 0);
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

CHILD_PROGRAM(AddsWhileTheDecisionAndAThreadAsk) {
    alarm(LongestWait);
    Choose(std::string("program\0-a=1\0-b\0", 16));
    // The thread is inside the once-only reading before the decision asks, and reads on when it is about to ask.
    s_insideDecision = [] {
        s_isDeciding = true;
        Await(s_isReading);
        Arguments();
    };
    s_insideRead = [] {
        s_isReading = true;
        Await(s_isDeciding);
    };
    std::thread reader([] { EXPECT_EQ(Arguments().size(), 3U); });
    const bool isAdded = AddsItsValue();
    reader.join();
    return isAdded && Get("b") == Flag() && s_opened == 1 && !testing::Test::HasFailure() ? 0 : 1;
}

TEST(VELSysGetCmdLineArgs, MayBeAskedForByTheDecisionAndByAnotherThread) {
    const Child child = RunChild("AddsWhileTheDecisionAndAThreadAsk");
    EXPECT_EQ(child.signal, 0);
    EXPECT_EQ(child.exitCode, 0) << child.err;
}
