/// @file
/// The quick sort: its result, and each of its calls beside a second way of telling its steps.

#include "VELSysQuickSort.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

// The heap, as the sort asks for its stack.
bool s_isWatched = false;
bool s_isShort = false;
int s_taken = 0;
int s_live = 0;

/// A call of a callback: its kind and the positions of its two elements.
struct Call {
    char kind;
    int a;
    int b;
    bool operator==(const Call&) const = default;
};
using Calls = std::vector<Call>;

/// The steps told by positions, with ranges on a vector and each step a function of the state.
class Oracle {
public:
    explicit Oracle(std::vector<int> keys) : _keys(std::move(keys)) {}

    void Run() {
        std::vector<std::pair<int, int>> pending = {{0, static_cast<int>(_keys.size()) - 1}};
        std::size_t capacity = 16;
        while (!pending.empty()) {
            const auto [lo, hi] = pending.back();
            if (hi - lo + 1 > 8) {
                const int mid = Partition(lo, hi);
                if (pending.size() == capacity) {
                    capacity *= 2;
                    ++growths;
                    growthsWithoutNeed += mid - 1 - lo < 1 ? 1 : 0;
                }
                pending.pop_back();
                if (mid - 1 - lo >= 1) {
                    pending.emplace_back(lo, mid - 1);
                }
                int start = mid + 1;
                if (hi - start >= 1) {
                    while (start != hi && Compare(start, mid) == 0) {
                        ++start;
                    }
                    if (start != hi) {
                        pending.emplace_back(start, hi);
                    }
                }
                continue;
            }
            if (hi - lo >= 1) {
                Cocktail(lo, hi);
            }
            pending.pop_back();
        }
    }

    Calls calls;
    int growths = 0;
    /// Those among them where the left part is not pushed.
    int growthsWithoutNeed = 0;
    const std::vector<int>& Keys() const { return _keys; }

private:
    int Compare(int a, int b) {
        calls.push_back({'c', a, b});
        const int x = _keys[static_cast<std::size_t>(a)];
        const int y = _keys[static_cast<std::size_t>(b)];
        return x < y ? -1 : x > y;
    }
    void Swap(int a, int b) {
        calls.push_back({'s', a, b});
        std::swap(_keys[static_cast<std::size_t>(a)], _keys[static_cast<std::size_t>(b)]);
    }

    int Partition(int lo, int hi) {
        int mid = lo + (hi - lo + 1) / 2;
        if (Compare(lo, mid) > 0) {
            Swap(lo, mid);
        }
        if (Compare(lo, hi) > 0) {
            Swap(lo, hi);
        }
        if (Compare(mid, hi) > 0) {
            Swap(mid, hi);
        }
        int i = lo - 1;
        int j = hi + 1;
        enum { RaiseI, LowerJ, Decide, Done } state = RaiseI;
        while (state != Done) {
            if (state == RaiseI) {
                state = LowerJ;
                if (i < mid) {
                    ++i;
                    if (i == mid || Compare(i, mid) < 0) {
                        state = RaiseI;
                    }
                }
            } else if (state == LowerJ) {
                while (j > mid) {
                    --j;
                    if (j == mid) {
                        break;
                    }
                    if (Compare(j, mid) < 0) {
                        break;
                    }
                }
                state = Decide;
            } else if (i == j) {
                state = Done;
            } else if (i < mid && mid < j) {
                Swap(i, j);
                state = RaiseI;
            } else if (i >= mid) {
                const int next = mid + 1;
                state = next == j ? Done : RaiseI;
                if (next == j) {
                    Swap(mid, j);
                    mid = j;
                } else {
                    Swap(next, j);
                    Swap(next, mid);
                    mid = next;
                    ++j;
                }
            } else {
                const int prev = mid - 1;
                state = prev == i ? Done : RaiseI;
                if (prev == i) {
                    Swap(mid, i);
                    mid = i;
                } else {
                    Swap(prev, i);
                    Swap(prev, mid);
                    mid = prev;
                    --i;
                }
            }
        }
        return mid;
    }

    void Cocktail(int lo, int hi) {
        do {
            int last = -1;
            for (int a = lo; a + 1 <= hi; ++a) {
                if (Compare(a, a + 1) > 0) {
                    Swap(a, a + 1);
                    last = a;
                }
            }
            if (last == -1 || last == lo) {
                return;
            }
            int first = -1;
            for (int b = last; b - 1 >= lo; --b) {
                if (Compare(b, b - 1) < 0) {
                    Swap(b, b - 1);
                    first = b;
                }
            }
            if (first == -1) {
                return;
            }
            lo = first;
            hi = last;
        } while (lo < hi);
    }

    std::vector<int> _keys;
};

/// An element of any size, with its key in front.
struct Recorder {
    char* base;
    int size;
    Calls calls;
    int PositionOf(const void* element) const {
        const auto distance = static_cast<const char*>(element) - base;
        EXPECT_EQ(distance % size, 0);
        return static_cast<int>(distance / size);
    }
};

int KeyOf(const void* element) {
    int key;
    std::memcpy(&key, element, sizeof key);
    return key;
}

int RecordCompare(void* context, const void* a, const void* b) {
    auto* const recorder = static_cast<Recorder*>(context);
    recorder->calls.push_back({'c', recorder->PositionOf(a), recorder->PositionOf(b)});
    const int x = KeyOf(a);
    const int y = KeyOf(b);
    return x < y ? -1 : x > y;
}

void RecordSwap(void* context, void* a, void* b) {
    auto* const recorder = static_cast<Recorder*>(context);
    recorder->calls.push_back({'s', recorder->PositionOf(a), recorder->PositionOf(b)});
    std::swap_ranges(static_cast<char*>(a), static_cast<char*>(a) + recorder->size, static_cast<char*>(b));
}

/// The elements of these keys, each with its index in front of a filler.
std::vector<char> Elements(const std::vector<int>& keys, int size) {
    std::vector<char> bytes(keys.size() * static_cast<std::size_t>(size) + 1);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        std::memcpy(&bytes[i * static_cast<std::size_t>(size)], &keys[i], sizeof keys[i]);
    }
    return bytes;
}

std::vector<int> KeysIn(const std::vector<char>& bytes, int size) {
    std::vector<int> keys;
    for (std::size_t i = 0; i + static_cast<std::size_t>(size) <= bytes.size(); i += static_cast<std::size_t>(size)) {
        keys.push_back(KeyOf(&bytes[i]));
    }
    return keys;
}

/// Sorts and compares each call with the oracle's.
void ExpectCallsOfTheSteps(const std::vector<int>& keys, int size = 4) {
    Oracle oracle(keys);
    oracle.Run();
    std::vector<char> bytes = Elements(keys, size);
    Recorder recorder{bytes.data(), size, {}};
    s_taken = 0;
    s_isWatched = true;
    VELSysQuickSort(bytes.data(), static_cast<int>(keys.size()), size, &recorder, RecordSwap, &recorder, RecordCompare);
    s_isWatched = false;
    ASSERT_TRUE(recorder.calls == oracle.calls) << testing::PrintToString(keys);
    const std::vector<int> sorted = KeysIn(bytes, size);
    ASSERT_EQ(sorted, oracle.Keys());
    ASSERT_TRUE(std::ranges::is_sorted(sorted)) << testing::PrintToString(keys);
}

/// The same through the default exchange: it must not be called, so only the comparisons are seen.
void ExpectComparisonsOfTheSteps(const std::vector<int>& keys) {
    Oracle oracle(keys);
    oracle.Run();
    std::erase_if(oracle.calls, [](const Call& call) { return call.kind == 's'; });
    std::vector<char> bytes = Elements(keys, 8);
    Recorder recorder{bytes.data(), 8, {}};
    VELSysQuickSort(bytes.data(), static_cast<int>(keys.size()), 8, nullptr, VELSysQuickSortSwapDefault, &recorder,
                    RecordCompare);
    ASSERT_TRUE(recorder.calls == oracle.calls) << testing::PrintToString(keys);
    ASSERT_EQ(KeysIn(bytes, 8), oracle.Keys());
}

std::vector<int> RandomKeys(std::mt19937& random, int count, int distinct) {
    std::vector<int> keys(static_cast<std::size_t>(count));
    std::ranges::generate(keys, [&] { return std::uniform_int_distribution<int>(0, distinct - 1)(random); });
    return keys;
}

/// Decides late which of two elements is the larger, so that each pivot has two elements in front of it: these wait,
/// and the sort goes on with all the others.
class Adversary {
public:
    /// Behind so many pivots that have two elements in front of them, the others have one.
    Adversary(int count, int pivotsWithTwo)
        : _pivotsWithTwo(pivotsWithTwo), _keys(static_cast<std::size_t>(count), Undecided) {}

    int Compare(int a, int b) {
        double& x = _keys[static_cast<std::size_t>(a)];
        double& y = _keys[static_cast<std::size_t>(b)];
        if (x == Undecided && y == Undecided) {
            Decide(a == _candidate ? x : y);
        }
        if (x == Undecided) {
            Meet(a, y);
        } else if (y == Undecided) {
            Meet(b, x);
        }
        return x < y ? -1 : x > y;
    }
    std::vector<int> Keys() const {
        std::vector<int> keys;
        for (const double key : _keys) {
            keys.push_back(static_cast<int>(4 * key));
        }
        return keys;
    }

private:
    static constexpr double Undecided = 100'000'000;

    void Decide(double& key) {
        _latest += 2;
        _met.clear();
        key = _latest;
    }
    /// Of those that meet the latest key, the second and the third fall below it.
    void Meet(int element, double decided) {
        _candidate = element;
        if (decided != _latest || std::ranges::count(_met, element) != 0) {
            return;
        }
        _met.push_back(element);
        if (_met.size() == 2 || (_met.size() == 3 && _latest <= 2 * _pivotsWithTwo)) {
            _keys[static_cast<std::size_t>(element)] = _latest - 1 + 0.25 * static_cast<double>(_met.size() - 2);
        }
    }

    int _pivotsWithTwo;
    std::vector<double> _keys;
    std::vector<int> _met;
    double _latest = 0;
    int _candidate = -1;
};

/// Keys with which many ranges wait at once.
std::vector<int> KeysThatPileUp(int count, int pivotsWithTwo = INT_MAX / 2) {
    Adversary adversary(count, pivotsWithTwo);
    std::vector<int> elements(static_cast<std::size_t>(count));
    std::iota(elements.begin(), elements.end(), 0);
    VELSysQuickSort(
        elements.data(), count, sizeof(int), nullptr,
        [](void*, void* a, void* b) { std::swap(*static_cast<int*>(a), *static_cast<int*>(b)); }, &adversary,
        [](void* context, const void* a, const void* b) {
            return static_cast<Adversary*>(context)->Compare(KeyOf(a), KeyOf(b));
        });
    return adversary.Keys();
}

/// How far the calling stack goes down while the comparisons run.
struct StackDepth {
    std::uintptr_t lowest = UINTPTR_MAX;
    std::uintptr_t highest = 0;
};

int CompareOnTheStack(void* context, const void* a, const void* b) {
    auto* const depth = static_cast<StackDepth*>(context);
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    depth->lowest = std::min(depth->lowest, here);
    depth->highest = std::max(depth->highest, here);
    const int x = KeyOf(a);
    const int y = KeyOf(b);
    return x < y ? -1 : x > y;
}

} // namespace

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    if (!s_isWatched) {
        return __real_malloc(size);
    }
    ++s_taken;
    if (s_isShort) {
        return nullptr;
    }
    ++s_live;
    return __real_malloc(size);
}

extern "C" void __real_free(void* block);
extern "C" void __wrap_free(void* block) {
    if (s_isWatched && block != nullptr) {
        --s_live;
    }
    __real_free(block);
}

TEST(QuickSort, CallsAsItsStepsSayForAllOrdersOfUpToEight) {
    for (int count = 0; count <= 8; ++count) {
        std::vector<int> keys(static_cast<std::size_t>(count));
        std::iota(keys.begin(), keys.end(), 1);
        do {
            ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
        } while (std::ranges::next_permutation(keys).found);
    }
}

TEST(QuickSort, CallsAsItsStepsSayForAllKeysOfFew) {
    // Three distinct keys on up to ten places: the smallest ranges that are partitioned, too.
    for (int count = 1; count <= 10; ++count) {
        std::vector<int> keys(static_cast<std::size_t>(count), 0);
        bool isLast = false;
        while (!isLast) {
            ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
            isLast = true;
            for (int& key : keys) {
                key = (key + 1) % 3;
                if (key != 0) {
                    isLast = false;
                    break;
                }
            }
        }
    }
}

TEST(QuickSort, CallsAsItsStepsSayForRandomKeys) {
    std::mt19937 random(1);
    for (int round = 0; round < 600; ++round) {
        const int count = std::uniform_int_distribution<int>(9, round % 10 == 0 ? 2000 : 120)(random);
        for (const int distinct : {2, 3, 10, count / 4 + 1, 1'000'000}) {
            const std::vector<int> keys = RandomKeys(random, count, distinct);
            ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
            ASSERT_NO_FATAL_FAILURE(ExpectComparisonsOfTheSteps(keys));
        }
    }
}

TEST(QuickSort, CallsAsItsStepsSayForOrderedKeys) {
    for (const int count : {9, 10, 16, 17, 100, 1000}) {
        std::vector<int> keys(static_cast<std::size_t>(count));
        std::iota(keys.begin(), keys.end(), 0);
        ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
        std::ranges::reverse(keys);
        ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
        std::ranges::sort(keys, {}, [&](int key) { return std::abs(2 * key - count); });
        ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
        std::ranges::fill(keys, 7);
        ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
    }
}

TEST(QuickSort, ServesElementsOfAnySize) {
    std::mt19937 random(2);
    for (const int size : {4, 5, 8, 12, 16, 100}) {
        for (const int count : {2, 8, 9, 300}) {
            ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(RandomKeys(random, count, 50), size));
        }
    }
}

TEST(QuickSort, EndsWhateverTheComparisonsAnswer) {
    // Answers without sense: no place outside the array may be named, and the sort must end.
    for (unsigned int seed = 0; seed < 200; ++seed) {
        struct Senseless {
            std::mt19937 random;
            int least;
            std::vector<int> elements;
        } senseless{std::mt19937(seed), -1 - static_cast<int>(seed % 3), std::vector<int>(500)};
        const auto check = [](Senseless& s, const void* element) {
            EXPECT_GE(static_cast<const int*>(element), s.elements.data());
            EXPECT_LT(static_cast<const int*>(element), s.elements.data() + s.elements.size());
        };
        static constexpr auto Check = check;
        VELSysQuickSort(
            senseless.elements.data(), 500, sizeof(int), &senseless,
            [](void* context, void* a, void* b) {
                Check(*static_cast<Senseless*>(context), a);
                Check(*static_cast<Senseless*>(context), b);
                EXPECT_NE(a, b);
            },
            &senseless,
            [](void* context, const void* a, const void* b) {
                auto& s = *static_cast<Senseless*>(context);
                Check(s, a);
                Check(s, b);
                return std::uniform_int_distribution<int>(s.least, 5)(s.random);
            });
    }
}

TEST(QuickSort, CallsNothingBelowTwoElements) {
    const auto swap = [](void*, void*, void*) { ADD_FAILURE(); };
    const auto compare = [](void*, const void*, const void*) -> int {
        ADD_FAILURE();
        return 0;
    };
    int element = 1;
    for (const int count : {1, 0, -1, INT32_MIN}) {
        VELSysQuickSort(&element, count, 4, nullptr, swap, nullptr, compare);
        VELSysQuickSort(nullptr, count, 4, nullptr, swap, nullptr, compare);
    }
    int elements[] = {2, 1};
    for (const int size : {0, -1, -4, INT32_MIN}) {
        VELSysQuickSort(elements, 2, size, nullptr, swap, nullptr, compare);
    }
    VELSysQuickSort(elements, 2, 4, nullptr, nullptr, nullptr, compare);
    VELSysQuickSort(elements, 2, 4, nullptr, swap, nullptr, nullptr);
    EXPECT_EQ(elements[0], 2);
}

TEST(QuickSort, SwapsNothingInASmallRangeOfEquals) {
    for (int count = 2; count <= 8; ++count) {
        const std::vector<int> keys(static_cast<std::size_t>(count), 5);
        std::vector<char> bytes = Elements(keys, 4);
        Recorder recorder{bytes.data(), 4, {}};
        VELSysQuickSort(bytes.data(), count, 4, &recorder, RecordSwap, &recorder, RecordCompare);
        EXPECT_EQ(recorder.calls.size(), static_cast<std::size_t>(count) - 1);
        EXPECT_TRUE(std::ranges::all_of(recorder.calls, [](const Call& call) { return call.kind == 'c'; }));
    }
}

TEST(QuickSort, HandsEachContextToItsOwnCallback) {
    static int s_swapContext;
    static int s_compareContext;
    const auto swap = [](void* context, void* a, void* b) {
        EXPECT_EQ(context, &s_swapContext);
        std::swap(*static_cast<int*>(a), *static_cast<int*>(b));
    };
    const auto compare = [](void* context, const void* a, const void* b) {
        EXPECT_EQ(context, &s_compareContext);
        return KeyOf(a) - KeyOf(b);
    };
    int elements[] = {3, 1, 2, 9, 8, 7, 4, 5, 6, 0};
    VELSysQuickSort(elements, 10, 4, &s_swapContext, swap, &s_compareContext, compare);
    EXPECT_TRUE(std::ranges::is_sorted(elements));
    int two[] = {2, 1};
    VELSysQuickSort(
        two, 2, 4, nullptr, [](void* context, void*, void*) { EXPECT_EQ(context, nullptr); }, nullptr,
        [](void* context, const void*, const void*) {
            EXPECT_EQ(context, nullptr);
            return 1;
        });
}

TEST(QuickSort, NeverTouchesTheElementsItself) {
    // The base is no array at all: only the distances count.
    struct Handles {
        std::vector<int> keys;
        static int At(const void* handle) {
            return static_cast<int>(reinterpret_cast<std::uintptr_t>(handle) / 16) - 1;
        }
    } handles{{5, 3, 9, 1, 7, 2, 8, 4, 6, 0, 11, 10}};
    VELSysQuickSort(
        reinterpret_cast<void*>(16), 12, 16, &handles,
        [](void* context, void* a, void* b) {
            auto& keys = static_cast<Handles*>(context)->keys;
            std::swap(keys[static_cast<std::size_t>(Handles::At(a))], keys[static_cast<std::size_t>(Handles::At(b))]);
        },
        &handles,
        [](void* context, const void* a, const void* b) {
            const auto& keys = static_cast<Handles*>(context)->keys;
            return keys[static_cast<std::size_t>(Handles::At(a))] - keys[static_cast<std::size_t>(Handles::At(b))];
        });
    EXPECT_TRUE(std::ranges::is_sorted(handles.keys));
}

TEST(QuickSort, SwapDefaultExchangesTwoWords) {
    std::uint64_t words[] = {1, 0xFEDCBA9876543210, 3, 4};
    VELSysQuickSortSwapDefault(nullptr, &words[1], &words[3]);
    EXPECT_EQ(words[0], 1u);
    EXPECT_EQ(words[1], 4u);
    EXPECT_EQ(words[2], 3u);
    EXPECT_EQ(words[3], 0xFEDCBA9876543210);
    char bytes[18] = "01234567abcdefgh!";
    VELSysQuickSortSwapDefault(words, bytes, bytes + 8);
    EXPECT_EQ(std::string(bytes), "abcdefgh01234567!");
    VELSysQuickSortSwapDefault(words, bytes + 1, bytes + 9);
    EXPECT_EQ(std::string(bytes), "a1234567!bcdefgh0") << "not aligned";
}

TEST(QuickSort, UsuallyTakesNoMemory) {
    std::mt19937 random(3);
    ExpectCallsOfTheSteps(RandomKeys(random, 1000, 1'000'000));
    EXPECT_EQ(s_taken, 0);
}

TEST(QuickSort, TakesALargerStackForManyRanges) {
    for (const int count : {20, 40, 50, 60, 70, 100, 200, 400, 800}) {
        const std::vector<int> keys = KeysThatPileUp(count);
        Oracle oracle(keys);
        oracle.Run();
        ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
        EXPECT_EQ(s_taken, oracle.growths) << count;
        EXPECT_EQ(s_live, 0) << "all is freed";
        if (count >= 400) {
            EXPECT_GE(oracle.growths, 3);
        }
    }
}

TEST(QuickSort, TakesALargerStackWheneverItIsFull) {
    int growthsWithoutNeed = 0;
    for (int pivotsWithTwo = 10; pivotsWithTwo < 24; ++pivotsWithTwo) {
        for (int count = 60; count < 120; ++count) {
            const std::vector<int> keys = KeysThatPileUp(count, pivotsWithTwo);
            Oracle oracle(keys);
            oracle.Run();
            ASSERT_NO_FATAL_FAILURE(ExpectCallsOfTheSteps(keys));
            ASSERT_EQ(s_taken, oracle.growths) << pivotsWithTwo << " and " << count;
            growthsWithoutNeed += oracle.growthsWithoutNeed;
        }
    }
    EXPECT_GT(growthsWithoutNeed, 0) << "also where the left part does not wait";
}

TEST(QuickSort, SortsWithoutMemoryAndWithoutDeepCalls) {
    constexpr int Count = 2000;
    const std::vector<int> keys = KeysThatPileUp(Count);
    std::vector<char> bytes = Elements(keys, 4);
    StackDepth depth;
    Recorder recorder{bytes.data(), 4, {}};
    s_taken = 0;
    s_isWatched = true;
    s_isShort = true;
    VELSysQuickSort(bytes.data(), Count, 4, &recorder, RecordSwap, &depth, CompareOnTheStack);
    s_isWatched = false;
    EXPECT_GT(s_taken, 100) << "refused again and again";
    EXPECT_TRUE(std::ranges::is_sorted(KeysIn(bytes, 4)));
    EXPECT_LT(depth.highest - depth.lowest, 20'000u);
}
