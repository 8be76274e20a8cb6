// A process that is killed leaves every line whose call has returned.

#include "Child.h"
#include "TraceSupport.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/mman.h>
#include <thread>

namespace fs = std::filesystem;
using namespace TraceSupport;

namespace {

constexpr int RingSize = 2000;

std::string Message(int number) {
    return "line " + std::to_string(number) + " " + std::string(static_cast<std::size_t>(number * 31 % 60), 'x') + "$";
}

/// A number in a file, which outlives the process that counts.
std::atomic<int>& CountIn(const std::string& path) {
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ftruncate(file, sizeof(int)) != 0) {
        throw std::runtime_error(path);
    }
    void* const memory = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return *static_cast<std::atomic<int>*>(memory);
}

/// The numbers of the lines in a text, which must be whole but for the last one.
std::vector<int> NumbersIn(const std::string& text) {
    std::vector<int> numbers;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line) && !in.eof();) {
        const int number = std::atoi(line.c_str() + std::string(" line ").size());
        EXPECT_EQ(line, " " + Message(number));
        numbers.push_back(number);
    }
    return numbers;
}

class TraceCrash : public TraceTest, public testing::WithParamInterface<int> {
protected:
    /// Runs a child that is killed. @return How many of its calls had returned for sure.
    int Kill(const char* destination) {
        const std::string counter = scratch / "count";
        const std::string wait = std::to_string(100 + GetParam() * 1777);
        const Child child =
            RunChild("WritesUntilKilled", {{{"QORTraceDir", scratch.Path()}}, {counter, destination, wait}});
        EXPECT_EQ(child.signal, SIGKILL) << child.err;
        for (const auto& entry : fs::directory_iterator(BaseDirectory())) {
            _directory = entry.path();
        }
        return CountIn(counter);
    }

    std::string Text(const std::string& name) const { return ReadFile(_directory / name); }
    /// The numbered files that are there, and the present one behind them.
    std::vector<std::string> RotatedFiles() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(_directory)) {
            if (entry.path().filename().string().starts_with("rotated.")) {
                names.push_back(entry.path().filename());
            }
        }
        std::ranges::sort(names);
        names.emplace_back("rotated");
        return names;
    }

private:
    fs::path _directory;
};

} // namespace

CHILD_PROGRAM(WritesUntilKilled) {
    std::atomic<int>& count = CountIn(arguments[0]);
    const auto wait = std::chrono::microseconds(std::stoi(arguments[2]));
    const Items items{
        {"file", {"file"}},
        {"ring", {"ring"}, {{VELSysTraceOptionMemory, RingSize}}},
        {"rotated", {"rotated"}, {{VELSysTraceOptionRotateSize, 30000}, {VELSysTraceOptionRotateCount, 999}}}};
    if (Configure(items) != 0) {
        return 2;
    }
    VELSysQORTrace trace(arguments[1].c_str(), nullptr, QORTraModeDefault, nullptr, 0);
    std::thread([&count, wait] {
        while (count == 0) {
        }
        std::this_thread::sleep_for(wait);
        kill(getpid(), SIGKILL);
    }).detach();
    for (int i = 0;; ++i) {
        if (trace.TraPutLN(Message(i).c_str()) != 0) {
            return 3;
        }
        count = i + 1;
    }
}

TEST_P(TraceCrash, LeavesEveryLineInTheFile) {
    const int count = Kill("file");
    const std::vector<int> numbers = NumbersIn(Text("file"));
    EXPECT_GE(static_cast<int>(numbers.size()), count);
    for (int i = 0; i < static_cast<int>(numbers.size()); ++i) {
        ASSERT_EQ(numbers[static_cast<std::size_t>(i)], i);
    }
}

TEST_P(TraceCrash, LeavesTheLatestLinesInTheRing) {
    const int count = Kill("ring");
    const std::string ring = Text("ring");
    ASSERT_EQ(ring.size(), static_cast<std::size_t>(RingSize));
    // A line may go across the end.
    const std::string text = ring + ring;
    std::size_t room = RingSize - 200;
    for (int i = count; i-- > 0;) {
        const std::string line = " " + Message(i) + "\n";
        if (line.size() > room) {
            break;
        }
        room -= line.size();
        EXPECT_NE(text.find(line), std::string::npos) << i << " of " << count;
    }
}

TEST_P(TraceCrash, LeavesEveryLineInTheRotatedFiles) {
    const int count = Kill("rotated");
    int next = 0;
    for (const std::string& name : RotatedFiles()) {
        for (const int number : NumbersIn(Text(name))) {
            ASSERT_EQ(number, next++) << name;
        }
    }
    EXPECT_GE(next, count);
}

INSTANTIATE_TEST_SUITE_P(Moments, TraceCrash, testing::Range(0, 12));
