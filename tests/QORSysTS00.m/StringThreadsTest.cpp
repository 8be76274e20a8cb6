/// @file
/// Strings on several threads at once; ThreadSanitizer judges what the expectations can't see.

#include "StringBlocks.h"
#include "StringEnvironment.h"
#include "VELString.h"

#include <algorithm>
#include <barrier>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace StringBlocks;
using Str = QORInterUnicodeString;

constexpr int Threads = 4;

/// Runs `body(thread, round)` on all threads, each round beginning at once. `prepare` runs before each round, alone.
void RunRounds(int rounds, const std::function<void()>& prepare, const std::function<void(int)>& body) {
    prepare();
    int left = rounds;
    std::barrier start(Threads, [&]() noexcept {
        if (left-- < rounds) {
            prepare();
        }
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < rounds; ++round) {
                start.arrive_and_wait();
                body(thread);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void RunAtOnce(const std::function<void(int)>& body) {
    RunRounds(
        1, [] {}, body);
}

QORUnicodeString WideString(const std::u16string& text) {
    return StringOn<QORUnicodeString>(NewWide(text));
}

} // namespace

class Threaded : public StringEnvironment::InBoth {};

TEST_P(Threaded, HandlesOfOneBlockComeAndGo) {
    const QORUnicodeString shared("shared text");
    const Block block = StringAccess::BlockOf(shared);
    RunAtOnce([&](int) {
        QORUnicodeString own;
        for (int i = 0; i < 5000; ++i) {
            const QORUnicodeString copy(shared);
            own = copy;
            QORSysTSUnicodeString other;
            VEL::Copy(other, own);
            own.Reset();
        }
    });
    EXPECT_EQ(block->_refCount, 1);
    EXPECT_STREQ(shared.ConvertToChar(), "shared text");
}

TEST_P(Threaded, TheLastHandleFreesWhicheverThreadHasIt) {
    QORUnicodeString source;
    std::vector<QORUnicodeString> copies;
    RunRounds(
        500,
        [&] {
            source = "text";
            copies.assign(Threads, source);
            source.Reset();
        },
        [&](int thread) { copies[static_cast<std::size_t>(thread)].Reset(); });
    for (const QORUnicodeString& copy : copies) {
        EXPECT_TRUE(copy.IsEmpty());
    }
}

TEST_P(Threaded, ConvertersAtOnceAgreeOnOneView) {
    for (const bool isWide : {false, true}) {
        QORUnicodeString s;
        std::vector<const void*> seen(Threads);
        RunRounds(
            500,
            [&] {
                EXPECT_TRUE(std::ranges::all_of(seen, [&](const void* text) { return text == seen[0]; }));
                s = isWide ? WideString(u"some text") : QORUnicodeString("some text");
            },
            [&](int thread) {
                const void*& text = seen[static_cast<std::size_t>(thread)];
                if (isWide) {
                    text = s.ConvertToChar();
                    EXPECT_EQ(s.GetLengthInByte(), 9);
                    EXPECT_STREQ(s.ConvertToChar(), "some text");
                } else {
                    text = s.ConvertToUCChar();
                    EXPECT_EQ(s.GetLengthInChar(), 9);
                    EXPECT_EQ(Units(s.ConvertToUCChar(), 10), std::u16string(u"some text\0", 10));
                }
            });
        EXPECT_TRUE(std::ranges::all_of(seen, [&](const void* text) { return text == seen[0]; }));
    }
}

TEST_P(Threaded, HashesAtOnceAgree) {
    QORUnicodeString narrow;
    QORUnicodeString wide;
    RunRounds(
        500,
        [&] {
            narrow = QORUnicodeString("abc");
            wide = WideString(u"abc");
        },
        [&](int thread) {
            const QORUnicodeString& s = thread % 2 == 0 ? narrow : wide;
            EXPECT_EQ(s.ComputeHashKey(), 136518u);
            EXPECT_FALSE(IsStale(StringAccess::BlockOf(s)));
        });
}

TEST_P(Threaded, ReadersOfOneObjectDoNotDisturbEachOther) {
    QORUnicodeString s;
    RunRounds(
        300, [&] { s = WideString(u"gr\u00fcn"); },
        [&](int thread) {
            wchar_t wide[5];
            char bytes[20];
            unsigned long n = 0;
            switch (thread % 4) {
            case 0:
                EXPECT_EQ(s.ConvertToWChar(wide), 4);
                break;
            case 1:
                s.ConvertToUTF8(bytes, &n);
                EXPECT_EQ(n, 5u);
                break;
            case 2:
                EXPECT_EQ(s.GetLengthInByte(), IsUTF8() ? 5 : 4);
                break;
            default:
                EXPECT_NE(s.ComputeHashKey(), 0u);
            }
            const QORUnicodeString copy(s);
            EXPECT_EQ(copy.GetLengthInChar(), 4);
        });
}

TEST_P(Threaded, AWriterLeavesReadersOfTheSharedBlockAlone) {
    const QORUnicodeString shared("shared");
    RunAtOnce([&](int thread) {
        for (int i = 0; i < 2000; ++i) {
            QORUnicodeString own(shared);
            if (thread % 2 == 0) {
                own = "own";
                EXPECT_EQ(own.GetLengthInChar(), 3);
            } else {
                VEL::Isolate(own);
                own.BuildFromUCChar(Units(u"other"), 5);
                EXPECT_STREQ(own.ConvertToChar(), "other");
            }
            EXPECT_EQ(shared.GetLengthInChar(), 6);
        }
    });
    EXPECT_STREQ(shared.ConvertToChar(), "shared");
}

// A handle that becomes the only one may write at once: what the others read is behind it.
TEST_P(Threaded, TheHandleThatIsLeftMayWriteTheBlock) {
    std::vector<QORUnicodeString> copies;
    std::mutex lengths;
    std::multiset<int> seen;
    RunRounds(
        500,
        [&] {
            copies.clear();
            copies.assign(Threads, QORUnicodeString("12345"));
        },
        [&](int thread) {
            QORUnicodeString& own = copies[static_cast<std::size_t>(thread)];
            const int length = own.GetLengthInChar();
            EXPECT_STREQ(own.ConvertToChar(), "12345");
            own = "xyz";
            EXPECT_STREQ(own.ConvertToChar(), "xyz");
            const std::lock_guard lock(lengths);
            seen.insert(length);
        });
    EXPECT_EQ(seen.count(5), seen.size());
}

TEST_P(Threaded, AppendsInPlaceOnceTheReadersAreGone) {
    QORUnicodeString text;
    std::vector<QORUnicodeString> copies(Threads);
    const QORUnicodeString piece("xyz");
    const QORUnicodeString expected("a text with room xyzxyz");
    RunRounds(
        500,
        [&] {
            // Room for what is appended, so that the block itself is written once nobody else has it.
            text = "a text with room that is longer than all of it";
            text = "a text with room ";
            std::fill(copies.begin(), copies.end(), text);
        },
        [&](int thread) {
            if (thread == 0) {
                copies[0].Reset();
                text.Append(piece).Append(piece);
                EXPECT_EQ(text.ComputeHashKey(), expected.ComputeHashKey());
                EXPECT_EQ(text.GetLengthInChar(), 23);
                EXPECT_EQ(text, expected);
                return;
            }
            QORUnicodeString own;
            std::swap(own, copies[static_cast<std::size_t>(thread)]);
            own.ComputeHashKey();
            EXPECT_EQ(own.GetLengthInChar(), 17);
            EXPECT_NE(own, expected);
        });
}

TEST_P(Threaded, BlocksTravelFromThreadToThread) {
    std::mutex mutex;
    std::vector<QORUnicodeString> exchange(64);
    RunAtOnce([&](int thread) {
        for (std::size_t i = 0; i < 4000; ++i) {
            QORUnicodeString mine(std::string(i % 90 + 1, static_cast<char>('a' + thread)).c_str());
            mine.GetLengthInChar();
            {
                const std::lock_guard lock(mutex);
                std::swap(mine, exchange[i * 7 % exchange.size()]);
            }
            // What another thread made ends here.
        }
        VELStringPoolFlush();
    });
}

TEST_P(Threaded, NarrowStringsShareBlocks) {
    const QORString shared("identifier");
    RunAtOnce([&](int) {
        for (int i = 0; i < 3000; ++i) {
            const QORString copy(shared);
            EXPECT_EQ(copy.Length(), 10);
            EXPECT_EQ(copy.ComputeHashKey(), shared.ComputeHashKey());
        }
    });
    EXPECT_EQ(StringAccess::BlockOf(shared)->_refCount, 1);
}

INSTANTIATE_TEST_SUITE_P(Environments, Threaded, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

// The process's switch, the pin, the converter and the warning's wish are all settled by whoever comes first.
TEST(FirstUse, OfEverythingAtOnce) {
    RunAtOnce([](int) {
        const QORUnicodeString narrow("gr\u00fcn");
        EXPECT_EQ(narrow.GetLengthInChar(), 4);
        QORUnicodeString wide;
        wide.BuildFromUCChar(Units(u"gr\u00fcn"));
        EXPECT_STREQ(wide.ConvertToChar(), "gr\u00fcn");
        EXPECT_EQ(narrow.ComputeHashKey(), wide.ComputeHashKey());
        QORUnicodeString utf8;
        utf8.BuildFromUTF8("abc", 3);
        EXPECT_EQ(VEL::GetMainRepEncoding(utf8), 1);
        EXPECT_EQ(VELStringPoolSetForCurrentThrd(1), 1);
    });
    EXPECT_EQ(*s_pQUSFlagsForDebugger & 3u, 1u);
}

TEST(FirstUse, OfRefusedTextAtOnce) {
    testing::internal::CaptureStdout();
    RunAtOnce([](int) { EXPECT_TRUE(QORString("\x01").IsEmpty()); });
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
}

TEST(FirstUse, OfTheEmptyStringAtOnce) {
    RunAtOnce([](int) {
        for (int i = 0; i < 1000; ++i) {
            const QORUnicodeString s;
            const QORUnicodeString copy(s);
            EXPECT_EQ(copy.GetLengthInChar(), 0);
            EXPECT_EQ(copy.GetLengthInByte(), 0);
            EXPECT_EQ(copy.ComputeHashKey(), 0u);
        }
    });
    EXPECT_EQ(Str::Empty()->_refCount, 1);
}

TEST(EndOfThreads, ThreadsStartAndEndWithStringsOfOthers) {
    const QORUnicodeString shared("shared");
    for (int round = 0; round < 20; ++round) {
        std::vector<QORUnicodeString> left(Threads);
        RunAtOnce([&](int thread) {
            for (int i = 0; i < 50; ++i) {
                left[static_cast<std::size_t>(thread)] = QORUnicodeString(std::string(i + 1u, 'a').c_str());
            }
            EXPECT_EQ(shared.GetLengthInChar(), 6);
        });
        for (const QORUnicodeString& s : left) {
            EXPECT_EQ(s.GetLengthInByte(), 50);
        }
    }
}
