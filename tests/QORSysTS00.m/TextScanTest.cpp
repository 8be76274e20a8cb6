/// @file
/// The scanning kernels against their plain definition, at every level of vectors, with guards around each run.

#include "TextScan.h"
#include "GuardedMemory.h"
#include "TextCopy.h"
#include "VELSysUCKernels.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using VEL::UCS::internal::KernelLevel;
using namespace VEL::internal;

template <class Unit>
using Text = std::basic_string<Unit>;

template <class Unit>
std::ptrdiff_t PlainFirst(const Text<Unit>& text, const Text<Unit>& what) {
    const auto place = text.find(what);
    return place == Text<Unit>::npos ? NotFound : static_cast<std::ptrdiff_t>(place);
}

template <class Unit>
std::ptrdiff_t PlainLast(const Text<Unit>& text, const Text<Unit>& what) {
    const auto place = text.rfind(what);
    return place == Text<Unit>::npos ? NotFound : static_cast<std::ptrdiff_t>(place);
}

/// All places from `start` on that don't overlap, one after the other.
template <class Unit>
std::vector<std::ptrdiff_t> PlainPlaces(const Text<Unit>& text, const Text<Unit>& what, std::size_t start,
                                        std::size_t max) {
    std::vector<std::ptrdiff_t> places;
    while (places.size() < max) {
        const auto place = text.find(what, start);
        if (place == Text<Unit>::npos) {
            break;
        }
        places.push_back(static_cast<std::ptrdiff_t>(place));
        start = place + what.size();
    }
    return places;
}

/// Text over few letters, so that beginnings of what is searched are frequent.
template <class Unit>
Text<Unit> RandomText(std::minstd_rand& random, std::size_t length, unsigned int letters) {
    Text<Unit> text(length, Unit());
    for (Unit& unit : text) {
        unit = static_cast<Unit>('a' + (random() >> 8) % letters);
    }
    return text;
}

std::ptrdiff_t Length(std::size_t length) {
    return static_cast<std::ptrdiff_t>(length);
}

} // namespace

class TextScan : public testing::TestWithParam<KernelLevel> {
protected:
    void SetUp() override {
        if (!VEL::UCS::internal::UseKernelLevel(GetParam())) {
            // A level that the processor lacks is taken by the next one below.
            VEL::UCS::internal::UseKernelLevel(KernelLevel::SSE2);
        }
    }

    template <class Unit>
    void CheckFirst(const Text<Unit>& text, const Text<Unit>& what) {
        const Unit* const placed = _memory.CopyAtEnd(text.data(), text.size());
        const Unit* const wanted = _other.CopyAtEnd(what.data(), what.size());
        ASSERT_EQ(FindFirst(placed, Length(text.size()), wanted, Length(what.size())), PlainFirst(text, what))
            << text.size() << " " << what.size();
    }

    void CheckLast(const Text<unsigned short>& text, const Text<unsigned short>& what) {
        const unsigned short* const placed = _memory.CopyAtBegin(text.data(), text.size());
        const unsigned short* const wanted = _other.CopyAtEnd(what.data(), what.size());
        ASSERT_EQ(FindLast(placed, Length(text.size()), wanted, Length(what.size())), PlainLast(text, what))
            << text.size() << " " << what.size();
    }

    template <class Unit>
    void CheckPlaces(const Text<Unit>& text, const Text<Unit>& what, std::size_t start, int max) {
        const Unit* const placed = _memory.CopyAtEnd(text.data(), text.size());
        const Unit* const wanted = _other.CopyAtEnd(what.data(), what.size());
        CheckPlaced({placed, Length(text.size()), wanted, Length(what.size())}, text, what, start, max);
    }

    /// The same with both texts in their places already.
    template <class Unit>
    void CheckPlaced(const Search<Unit>& search, const Text<Unit>& text, const Text<Unit>& what, std::size_t start,
                     int max) {
        constexpr std::ptrdiff_t Untouched = -7;
        std::vector<std::ptrdiff_t> found(static_cast<std::size_t>(max) + 1, Untouched);
        const int count = FindPlaces(search, Length(start), found.data(), max);
        const auto expected = PlainPlaces(text, what, start, static_cast<std::size_t>(max));
        ASSERT_EQ(count, static_cast<int>(expected.size()))
            << text.size() << " " << what.size() << " from " << start << " at most " << max;
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), found.begin()));
        ASSERT_EQ(found[expected.size()], Untouched);
    }

    template <class Unit>
    void CheckRandomPlaces() {
        std::minstd_rand random(17);
        for (int round = 0; round < 1200; ++round) {
            const unsigned int letters = 1 + round % 3;
            const Text<Unit> text = RandomText<Unit>(random, (random() >> 8) % 200, letters);
            const Text<Unit> what = RandomText<Unit>(random, 1 + static_cast<std::size_t>(round) / 3 % 40, letters);
            const Search<Unit> search{_memory.CopyAtEnd(text.data(), text.size()), Length(text.size()),
                                      _other.CopyAtEnd(what.data(), what.size()), Length(what.size())};
            for (std::size_t start = 0; start <= text.size(); ++start) {
                for (const int max : {1, 3, 1000}) {
                    CheckPlaced(search, text, what, start, max);
                    if (HasFatalFailure()) {
                        return;
                    }
                }
            }
        }
    }

    template <class Unit>
    void CheckPeriodicPlaces() {
        for (const std::size_t size : {2, 3, 40, 300, 999}) {
            for (const std::size_t odd : {std::size_t{0}, size / 2, size - 1, size}) {
                Text<Unit> what(size, Unit('a'));
                if (odd < size) {
                    what[odd] = Unit('b');
                }
                Text<Unit> text(6000, Unit('a'));
                CheckPlaces<Unit>(text, what, 0, 1000);
                CheckPlaces<Unit>(text, what, 1, 3);
                for (const std::size_t place : {std::size_t{50}, std::size_t{3000}, 3000 + size,
                                                3000 + 2 * size - size / 4, text.size() - size}) {
                    text.replace(place, size, what);
                    for (const std::size_t start : {std::size_t{0}, place - 1, place, place + 1}) {
                        for (const int max : {1, 2, 3, 1000}) {
                            CheckPlaces<Unit>(text, what, start, max);
                            if (HasFatalFailure()) {
                                return;
                            }
                        }
                    }
                }
            }
        }
    }

    /// Where the candidates have cost too much the search goes over to another way, and must not lose the next place.
    template <class Unit>
    void CheckPlacesWhereTheWayChanges() {
        for (const std::size_t size : {24, 40, 100}) {
            Text<Unit> what(size, Unit('a'));
            what[size / 2] = Unit('b');
            for (std::size_t place = 0; place < 500 && !HasFatalFailure(); ++place) {
                Text<Unit> text(700, Unit('a'));
                text.replace(place, size, what);
                CheckPlaces<Unit>(text, what, 0, 10);
            }
        }
    }

    template <class Unit>
    void CheckRandomSearches() {
        std::minstd_rand random(5);
        for (int round = 0; round < 6000; ++round) {
            const unsigned int letters = 1 + round % 4;
            const Text<Unit> text = RandomText<Unit>(random, (random() >> 8) % 200, letters);
            const Text<Unit> what = RandomText<Unit>(random, 1 + (random() >> 8) % (round % 50 + 1), letters);
            CheckFirst<Unit>(text, what);
            if constexpr (sizeof(Unit) == 2) {
                CheckLast(text, what);
            }
        }
    }

    template <class Unit>
    void CheckEveryPlace() {
        for (const std::size_t length : {1, 15, 16, 17, 31, 32, 33, 63, 64, 65, 130, 200}) {
            for (std::size_t size = 1; size <= std::min<std::size_t>(length, 70); ++size) {
                for (std::size_t place = 0; place + size <= length; place += 1 + length / 40) {
                    Text<Unit> text(length, Unit('.'));
                    Text<Unit> what = Text<Unit>(size, Unit('x'));
                    what.front() = Unit('<');
                    text.replace(place, size, what);
                    CheckFirst<Unit>(text, what);
                    if constexpr (sizeof(Unit) == 2) {
                        CheckLast(text, what);
                    }
                }
            }
        }
    }

    template <class Unit>
    void CheckCase() {
        std::minstd_rand random(9);
        for (int round = 0; round < 4000; ++round) {
            const std::size_t length = (random() >> 8) % 100;
            Text<Unit> text(length, Unit());
            for (Unit& unit : text) {
                // Mostly what has to be passed over.
                const unsigned int code = static_cast<unsigned int>(random() >> 8);
                unit = round % 3 == 0 ? static_cast<Unit>(code) : static_cast<Unit>("aBz@[`{Z0"[code % 9]);
            }
            const auto isASCII = [](Unit unit) { return (static_cast<unsigned int>(unit) & ~0x7Fu) == 0; };
            const auto isLower = [](Unit unit) { return unit >= Unit('a') && unit <= Unit('z'); };
            const auto isUpper = [](Unit unit) { return unit >= Unit('A') && unit <= Unit('Z'); };
            const Unit* const placed = _memory.CopyAtEnd(text.data(), length);
            const auto plain = [&](const auto& stops) {
                return std::find_if(text.begin(), text.end(), [&](Unit u) { return !isASCII(u) || stops(u); }) -
                       text.begin();
            };
            ASSERT_EQ(FindNotLowerCase(placed, Length(length)), plain(isUpper));
            ASSERT_EQ(FindNotUpperCase(placed, Length(length)), plain(isLower));
            const std::ptrdiff_t run = plain([](Unit) { return false; });
            Text<Unit> lower = text;
            Text<Unit> upper = text;
            for (std::ptrdiff_t i = 0; i < run; ++i) {
                const auto at = static_cast<std::size_t>(i);
                lower[at] = isUpper(text[at]) ? static_cast<Unit>(text[at] + 0x20) : text[at];
                upper[at] = isLower(text[at]) ? static_cast<Unit>(text[at] - 0x20) : text[at];
            }
            auto* const changed = const_cast<Unit*>(_other.CopyAtEnd(text.data(), length));
            ASSERT_EQ(LowerASCII(changed, Length(length)), run);
            ASSERT_EQ(Text<Unit>(changed, length), lower);
            std::copy(text.begin(), text.end(), changed);
            ASSERT_EQ(UpperASCII(changed, Length(length)), run);
            ASSERT_EQ(Text<Unit>(changed, length), upper);
        }
    }

    GuardedMemory _memory{std::size_t{1} << 22};
    GuardedMemory _other{std::size_t{1} << 16};
};

TEST_P(TextScan, FindsWhatThePlainSearchFinds) {
    CheckRandomSearches<char>();
    CheckRandomSearches<unsigned short>();
}

TEST_P(TextScan, FindsAtEveryPlace) {
    CheckEveryPlace<char>();
    CheckEveryPlace<unsigned short>();
}

TEST_P(TextScan, FindsThePlacesThatThePlainWayFinds) {
    CheckRandomPlaces<char>();
    CheckRandomPlaces<unsigned short>();
}

TEST_P(TextScan, FindsThePlacesInPeriodicTexts) {
    CheckPeriodicPlaces<char>();
    CheckPeriodicPlaces<unsigned short>();
}

TEST_P(TextScan, FindsThePlaceAtWhichTheSearchGoesAnotherWay) {
    CheckPlacesWhereTheWayChanges<char>();
    CheckPlacesWhereTheWayChanges<unsigned short>();
}

TEST_P(TextScan, FindsNoPlaceWhereNoneFitsIn) {
    const Text<char> text(100, 'a');
    for (std::size_t size = 90; size <= 110; ++size) {
        for (std::size_t start = 0; start <= text.size(); ++start) {
            CheckPlaces<char>(text, Text<char>(size, 'a'), start, 1000);
        }
    }
    CheckPlaces<unsigned short>({}, {1}, 0, 5);
}

TEST_P(TextScan, FindsAnEmptyTextAtOnce) {
    const unsigned short text[] = {1, 2};
    EXPECT_EQ(FindFirst(text, 2, text, 0), 0);
    EXPECT_EQ(FindLast(text, 2, text, 0), 2);
    EXPECT_EQ(FindFirst("", 0, "", 0), 0);
}

TEST_P(TextScan, FindsNothingThatIsLongerThanTheText) {
    const unsigned short text[] = {1, 1, 1};
    EXPECT_EQ(FindFirst(text, 2, text, 3), NotFound);
    EXPECT_EQ(FindLast(text, 2, text, 3), NotFound);
}

// Long enough for the search by hash to take over, with places in front of it, behind it, and none.
TEST_P(TextScan, FindsInPeriodicTexts) {
    for (const std::size_t size : {40, 300, 999}) {
        for (const std::size_t odd : {std::size_t{0}, size / 2, size - 1}) {
            Text<unsigned short> what(size, 'a');
            what[odd] = 'b';
            Text<unsigned short> text(20000, 'a');
            CheckFirst<unsigned short>(text, what);
            CheckLast(text, what);
            for (const std::size_t place : {std::size_t{0}, std::size_t{50}, std::size_t{9000}, text.size() - size}) {
                Text<unsigned short> holding = text;
                holding.replace(place, size, what);
                CheckFirst<unsigned short>(holding, what);
                CheckLast(holding, what);
                CheckFirst<char>(Text<char>(holding.begin(), holding.end()), Text<char>(what.begin(), what.end()));
            }
        }
    }
}

TEST_P(TextScan, FindsTheFirstDifferenceAndTheFirstZero) {
    for (std::size_t length = 0; length < 80; ++length) {
        const Text<unsigned short> text(length, 0x4141);
        for (std::size_t place = 0; place <= length; ++place) {
            for (const unsigned short unit : {0x4142, 0x4241, 0x0000}) {
                for (const bool inBoth : {false, true}) {
                    Text<unsigned short> a = text;
                    Text<unsigned short> b = text;
                    if (place < length) {
                        a[place] = unit;
                        b[place] = inBoth ? unit : b[place];
                    }
                    const bool stops = place < length && (unit == 0 || !inBoth);
                    ASSERT_EQ(FindDifferenceOrZero(_memory.CopyAtEnd(a.data(), length),
                                                   _other.CopyAtEnd(b.data(), length), Length(length)),
                              Length(stops ? place : length));
                }
            }
        }
    }
}

TEST_P(TextScan, ChangesTheCaseOfASCIIOnly) {
    CheckCase<char>();
    CheckCase<unsigned short>();
}

// Copies.

class TextCopying : public TextScan {
protected:
    static constexpr std::size_t Alignments = 64;
    /// Room on either side of a copy in which nothing may change.
    static constexpr std::size_t Margin = 64;
    static constexpr char Untouched = '#';

    void SetUp() override {
        TextScan::SetUp();
        std::minstd_rand random(23);
        for (char& byte : _source) {
            byte = static_cast<char>(random() >> 8);
        }
    }

    /// Copies between the given offsets from a multiple of 64 and looks at what stands there and around.
    void CheckCopy(std::size_t length, std::size_t toOffset, std::size_t fromOffset) {
        char* const to = Aligned(_target) + Margin + toOffset;
        const char* const from = Aligned(_source) + fromOffset;
        char* const end = VEL::internal::Copy(to, from, Length(length));
        ASSERT_EQ(end, to + length);
        ASSERT_EQ(std::memcmp(to, from, length), 0) << length << " to " << toOffset << " from " << fromOffset;
        ASSERT_TRUE(IsUntouched(to - Margin) && IsUntouched(end))
            << length << " to " << toOffset << " from " << fromOffset;
        std::memset(to, Untouched, length);
    }

    void CheckAllOffsets(std::size_t length) {
        for (std::size_t to = 0; to < Alignments && !HasFatalFailure(); ++to) {
            for (std::size_t from = 0; from < Alignments && !HasFatalFailure(); ++from) {
                CheckCopy(length, to, from);
            }
        }
    }

    /// Each offset of one side, with two of the other.
    void CheckEachOffset(std::size_t length) {
        for (std::size_t offset = 0; offset < Alignments && !HasFatalFailure(); ++offset) {
            CheckCopy(length, offset, 0);
            CheckCopy(length, offset, 26);
            CheckCopy(length, 0, offset);
            CheckCopy(length, 26, offset);
        }
    }

private:
    static constexpr std::size_t Longest = std::size_t{3} << 20;

    static char* Aligned(std::vector<char>& bytes) {
        const std::size_t beyond = reinterpret_cast<std::uintptr_t>(bytes.data()) % Alignments;
        return bytes.data() + (Alignments - beyond) % Alignments;
    }

    static bool IsUntouched(const char* margin) {
        static const std::vector<char> untouched(Margin, Untouched);
        return std::memcmp(margin, untouched.data(), Margin) == 0;
    }

    std::vector<char> _source = std::vector<char>(Longest + 2 * Alignments);
    std::vector<char> _target = std::vector<char>(Longest + 2 * Margin + 2 * Alignments, Untouched);
};

TEST_P(TextCopying, CopiesShortRunsAtEveryOffset) {
    for (std::size_t length = 0; length <= 600 && !HasFatalFailure(); ++length) {
        CheckAllOffsets(length);
    }
}

TEST_P(TextCopying, CopiesLongRunsAtEveryOffset) {
    for (const std::size_t length :
         {1023, 2047, 2048, 2049, 2079, 2080, 2111, 2112, 2175, 2176, 4096, 5001, 65536 + 7}) {
        CheckAllOffsets(length);
    }
    constexpr std::size_t Mebibyte = std::size_t{1} << 20;
    for (const std::size_t length : {Mebibyte / 4 + 1, Mebibyte - 1, Mebibyte, Mebibyte + 1, 3 * Mebibyte}) {
        CheckEachOffset(length);
    }
}

TEST_P(TextCopying, TouchesNothingOutsideTheRuns) {
    const GuardedMemory from(std::size_t{1} << 17);
    const GuardedMemory to(std::size_t{1} << 17);
    for (std::size_t length = 0; length <= 5000; length += length < 2200 ? 1 : 97) {
        const std::string text(length, 'x');
        VEL::internal::Copy(to.AtEnd<char>(length), from.CopyAtEnd(text.data(), length), Length(length));
        VEL::internal::Copy(to.AtBegin<char>(), from.CopyAtBegin(text.data(), length), Length(length));
        VEL::internal::Copy(to.AtBegin<char>(), from.CopyAtEnd(text.data(), length), Length(length));
        const std::size_t units = length / 2;
        VEL::internal::Copy(to.AtEnd<unsigned short>(units), from.AtEnd<unsigned short>(units), Length(units));
        ASSERT_EQ(std::string(to.AtBegin<char>(), length), text);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, TextCopying, testing::Values(KernelLevel::SSE2, KernelLevel::AVX2),
                         [](const auto& level) { return level.param == KernelLevel::AVX2 ? "AVX2" : "SSE2"; });

INSTANTIATE_TEST_SUITE_P(Levels, TextScan, testing::Values(KernelLevel::SSE2, KernelLevel::AVX2),
                         [](const auto& level) { return level.param == KernelLevel::AVX2 ? "AVX2" : "SSE2"; });
