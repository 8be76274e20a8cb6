/// @file
/// What the tests of several classes need.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

/// No test waits longer than this for what it says happens at once.
constexpr std::chrono::seconds s_promptly{10};

/// True where the thread sanitizer watches, which reports the misuse of a lock by itself.
#if defined(__SANITIZE_THREAD__)
constexpr bool s_isThreadSanitized = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
constexpr bool s_isThreadSanitized = true;
#else
constexpr bool s_isThreadSanitized = false;
#endif
#else
constexpr bool s_isThreadSanitized = false;
#endif

/// Calls `function(number)` on `count` threads, which it lets loose together, and waits for all.
template <typename Function>
void RunAtOnce(int count, Function function) {
    std::atomic<int> waiting{count};
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            function(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Waits until `condition` holds.
/// @return False when it did not come to hold promptly.
template <typename Condition>
bool WaitUntil(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + s_promptly;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class Stopwatch {
public:
    std::chrono::milliseconds Elapsed() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - _start);
    }

private:
    std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};
