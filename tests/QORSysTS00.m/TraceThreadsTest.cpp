// Traces on several threads and in several processes.

#include "Child.h"
#include "TraceSupport.h"
#include "VELSysLifeCycle.h"
#include "VELSysNLSCore.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace TraceSupport;

namespace {

class TraceThreads : public TraceTest {};

/// Runs `action` on threads that begin together, each with its number.
void OnThreads(int count, const std::function<void(int)>& action) {
    std::atomic<int> waiting{count};
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0) {
            }
            action(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// The message of a line without elements: thread, number and a text whose length depends on both.
std::string Message(int thread, int number) {
    return std::to_string(thread) + " " + std::to_string(number) + " " +
           std::string(static_cast<std::size_t>((number * 37 + thread) % 500), static_cast<char>('a' + thread));
}

/// Expects each line that a thread wrote once, whole and in its thread's order.
void ExpectAll(const std::string& text, int threads, int lines) {
    std::istringstream in(text);
    std::map<int, int> next;
    int count = 0;
    for (std::string line; std::getline(in, line); ++count) {
        const int thread = std::atoi(line.c_str());
        ASSERT_EQ(line, " " + Message(thread, next[thread]++));
    }
    EXPECT_EQ(count, threads * lines);
}

} // namespace

TEST_F(TraceThreads, ShareOneTraceWithoutLosingALine) {
    constexpr int threads = 2;
    constexpr int lines = 2000;
    Configure({{"f", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    OnThreads(threads, [&](int thread) {
        for (int i = 0; i < lines; ++i) {
            ASSERT_EQ(trace.TraPutLN(Message(thread, i).c_str()), 0);
        }
    });
    ExpectAll(FileText("f"), threads, lines);
}

CHILD_PROGRAM(PrintsBesideLongLines) {
    Configure({{"STDOUT", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    OnThreads(2, [&](int thread) {
        for (int i = 0; i < 300; ++i) {
            if (thread == 0) {
                trace.TraPutLN(std::string(9000, 'x').c_str());
                continue;
            }
            flockfile(stdout);
            for (int part = 0; part < 100; ++part) {
                std::fputs("part", stdout);
            }
            std::fputs("\n", stdout);
            funlockfile(stdout);
        }
    });
    VELSysTraceDestroyManager();
    return 0;
}

TEST_F(TraceThreads, LeavePrintsOfOthersWholeBesideLongLines) {
    std::string print;
    for (int part = 0; part < 100; ++part) {
        print += "part";
    }
    std::istringstream in(RunChild("PrintsBesideLongLines").out);
    std::map<std::string, int> lines;
    for (std::string line; std::getline(in, line);) {
        ++lines[line];
    }
    EXPECT_TRUE(lines == (std::map<std::string, int>{{" " + std::string(9000, 'x'), 300}, {print, 300}}));
}

TEST_F(TraceThreads, KeepCodeAndLevelOfTheirLines) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    OnThreads(2, [&](int thread) {
        for (int i = 0; i < 2000; ++i) {
            if (thread == 0) {
                trace->Info(1, "first");
            } else {
                trace->Error("file", 7, 2, "second");
            }
        }
    });
    std::istringstream in(FileText("f"));
    const auto ends = [](const std::string& line, const char* end) { return line.ends_with(end); };
    int count = 0;
    for (std::string line; std::getline(in, line); ++count) {
        const bool isFirst = line.starts_with("[I]") && ends(line, "[00000001] first");
        const bool isSecond = line.starts_with("[E]") && ends(line, "[00000002](file : 7) second");
        ASSERT_TRUE(isFirst || isSecond) << line;
    }
    EXPECT_EQ(count, 4000);
}

TEST_F(TraceThreads, ShareADestinationThatIsRotated) {
    Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, 100000000}, {VELSysTraceOptionRotateCount, 2}}}});
    OnThreads(2, [&](int thread) {
        VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
        for (int i = 0; i < 300; ++i) {
            ASSERT_EQ(trace.TraPutLN(Message(thread, i).c_str()), 0);
        }
    });
    ExpectAll(FileText("f"), 2, 300);
}

TEST_F(TraceThreads, RaceForOneHandle) {
    Configure({{"f", {"A"}}});
    for (int round = 0; round < 200; ++round) {
        void* handle = nullptr;
        void* seen[4] = {};
        OnThreads(4, [&](int thread) {
            VELSysTraceCreate__(&handle, "A");
            seen[thread] = std::atomic_ref(handle).load();
        });
        for (const void* one : seen) {
            EXPECT_EQ(one, handle);
        }
        EXPECT_EQ(DestinationPeek::Users(DestinationOf("f")), 1U);
        OnThreads(4, [&](int) { VELSysTraceDestroy__(&handle); });
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(DestinationPeek::Users(DestinationOf("f")), 0U);
    }
}

TEST_F(TraceThreads, CreateAndDestroyAtOnce) {
    Configure({{"f", {"A"}}});
    void* handle = nullptr;
    OnThreads(4, [&](int thread) {
        for (int i = 0; i < 500; ++i) {
            if (thread % 2 == 0) {
                VELSysTraceCreate__(&handle, "A");
            } else {
                VELSysTraceDestroy__(&handle);
            }
        }
    });
    VELSysTraceDestroy__(&handle);
    EXPECT_EQ(DestinationPeek::Users(DestinationOf("f")), 0U);
}

TEST_F(TraceThreads, MakeOneManager) {
    for (int round = 0; round < 50; ++round) {
        sources = Sources{.text = Items{{"f", {"A"}}}};
        std::atomic<int> makers{0};
        int opened = 0;
        insideMakeDirectory = [&](const std::string& path, unsigned int) -> std::optional<int> {
            opened += path.ends_with("_I") ? 1 : 0;
            return std::nullopt;
        };
        OnThreads(4, [&](int thread) {
            if (thread % 2 == 0) {
                EXPECT_TRUE(TraceHandle("A"));
            } else {
                int created = 0;
                EXPECT_EQ(VELSysTraceCreateManager("", &created), 0);
                makers += created;
            }
        });
        EXPECT_LE(makers, 1);
        EXPECT_EQ(opened, 1);
        VELSysTraceDestroyManager();
    }
}

TEST_F(TraceThreads, WriteInACopyOfTheProcessThatIsMadeWhileAnotherWrites) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    std::atomic<bool> isOver{false};
    std::thread writer([&] {
        while (!isOver) {
            trace->Info("of the writer");
        }
    });
    for (int round = 0; round < 50; ++round) {
        const pid_t pid = fork();
        if (pid == 0) {
            alarm(20);
            const bool isWritten = trace->Info("of the copy") == 0;
            void* another = nullptr;
            VELSysTraceCreate__(&another, "A");
            _exit(isWritten && another != nullptr ? 0 : 1);
        }
        int status = -1;
        waitpid(pid, &status, 0);
        EXPECT_EQ(status, 0) << round;
        if (status != 0) {
            break;
        }
    }
    isOver = true;
    writer.join();
    EXPECT_EQ(trace->Info("after all"), 0);
}

CHILD_PROGRAM(TracesInAHookWhileAnotherThreadReadsOptionFiles) {
    static std::atomic<bool> isInHook{false};
    static std::atomic<bool> isReading{false};
    alarm(20);
    sources.reset();
    usesSystemClocks = true;
    RegisterNLSChangeHook([](const VELSysNLSEnv&) {
        isInHook = true;
        while (!isReading) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        const TraceHandle trace("A");
    });
    std::thread decider([] { InitNLSCore(nullptr, true); });
    while (!isInHook) {
        std::this_thread::yield();
    }
    isReading = true;
    VELSysTraceCreateManager(nullptr, nullptr);
    decider.join();
    return TraceHandle("A") ? 0 : 1;
}

TEST_F(TraceThreads, MayTraceWhileTheLanguageIsDecided) {
    const std::filesystem::path home = scratch / "f\xC3\xBCr";
    std::filesystem::create_directory(home);
    WriteFile(home / "OPFILE.1", "-e A\n");
    const Child child = RunChild("TracesInAHookWhileAnotherThreadReadsOptionFiles",
                                 {{{"HOME", home.string()}, {"LANG", "C.UTF-8"}, {"QORReffilesPath", QOR_TEST_DATA}}});
    EXPECT_EQ(child.signal, 0) << "they wait for each other";
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

TEST_F(TraceThreads, WriteWhileTheManagerEnds) {
    for (int round = 0; round < 30; ++round) {
        Configure({{"f", {"A"}}, {"r", {"R"}, {{VELSysTraceOptionMemory, 500}}}});
        const TraceHandle file("A");
        const TraceHandle ring("R");
        std::atomic<int> written{0};
        OnThreads(3, [&](int thread) {
            if (thread == 0) {
                while (written < 20) {
                    std::this_thread::yield();
                }
                VELSysTraceDestroyManager();
                return;
            }
            while (file->Info("text") == 0) {
                ring->Info("text");
                ++written;
            }
        });
        EXPECT_EQ(file->Info("text"), -1);
        EXPECT_EQ(ring->Info("text"), -1);
    }
}

TEST_F(TraceThreads, ChangeOptionsAndActivityWhileOthersWrite) {
    Configure({{"f", {"A"}}});
    const TraceHandle trace("A");
    OnThreads(3, [&](int thread) {
        for (int i = 0; i < 500; ++i) {
            if (thread == 0) {
                VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionEnabled, i % 2);
                VELSysTraceManagerAddOptionToTrace("f", VELSysTraceOptionActive, i % 2);
            } else if (thread == 1) {
                VELSysTraceActivate__(trace.Writer(), i % 2);
            } else {
                trace->Info("text");
            }
        }
    });
}

CHILD_PROGRAM(WritesAsOneOfTwo) {
    timer = timeval{FixedTime, 0};
    Configure({{"same", {"A"}}});
    VELSysQORTrace trace("A", nullptr, QORTraModeDefault, nullptr, 0);
    for (int i = 0; i < 500; ++i) {
        trace.TraPutLN(Message(std::atoi(arguments[0].c_str()), i).c_str());
    }
    VELSysTraceDestroyManager();
    return 0;
}

TEST_F(TraceThreads, OfTwoProcessesWriteToDirectoriesOfTheirOwn) {
    const auto run = [&](const char* number) {
        return RunChild("WritesAsOneOfTwo", {{{"QORTraceDir", scratch.Path()}}, {number}});
    };
    auto other = std::async(std::launch::async, run, "1");
    EXPECT_EQ(run("0").exitCode, 0);
    EXPECT_EQ(other.get().exitCode, 0);
    std::vector<std::string> texts;
    for (const auto& entry : fs::directory_iterator(BaseDirectory())) {
        texts.push_back(ReadFile(entry.path() / "same"));
    }
    std::ranges::sort(texts);
    ASSERT_EQ(texts.size(), 2U);
    for (int process = 0; process < 2; ++process) {
        std::string expected;
        for (int i = 0; i < 500; ++i) {
            expected += " " + Message(process, i) + "\n";
        }
        EXPECT_TRUE(texts[static_cast<std::size_t>(process)] == expected);
    }
}

// The life cycle.

TEST_F(TraceThreads, LiveFromTheBeginningOfTheLifeCycleToItsEnd) {
    sources = Sources{.variable = Items{{"f", {"A"}}}};
    VELSysLifeCycleDispatchInitialization();
    EXPECT_EQ(Destinations(), (std::vector<std::string>{"STDOUT_COMMON", "f"}));
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("text"), 0);
    VELSysLifeCycleDispatchFinalization();
    EXPECT_EQ(Destinations(), std::vector<std::string>{});
    EXPECT_EQ(trace->Info("text"), -1);
}

TEST_F(TraceThreads, OutliveTheLifeCycleWhenTheManagerWasThereBefore) {
    Configure({{"f", {"A"}}});
    VELSysLifeCycleDispatchInitialization();
    VELSysLifeCycleDispatchFinalization();
    const TraceHandle trace("A");
    EXPECT_EQ(trace->Info("text"), 0);
}
