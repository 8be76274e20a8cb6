/// @file
/// Conversions from a code page that go on where the room or the text ended.

#include "CodePageOracle.h"
#include "GuardedMemory.h"
#include "VELSysCodePage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using CodePageOracle::Converter;
using CodePageOracle::Result;
using CodePageOracle::Units;

/// A text of one, two, three and four bytes a character, as far as the code page has them, with damage and a zero byte.
std::string SampleOf(Converter& plain) {
    std::string text;
    for (unsigned int code :
         {0x61u, 0xE9u, 0x3042u, 0x4E00u, 0x7Au, 0x20ACu, 0xAC00u, 0x0416u, 0x4E02u, 0xFF71u, 0x32u}) {
        const std::string bytes = plain.FromUTF16({static_cast<unsigned short>(code)});
        text += bytes;
    }
    text += plain.FromUTF16({0xD83D, 0xDE00});
    text += std::string("\0x\xFF\xA1", 4) + plain.FromUTF16({0x3044}) + "\x81";
    return text;
}

} // namespace

class ResumedConversion : public testing::TestWithParam<const char*> {};

TEST_P(ResumedConversion, IsThatOfEachPieceInEveryRoom) {
    if (!CodePageOracle::IsKnown(GetParam())) {
        ASSERT_TRUE(CodePageOracle::MayBeMissing(GetParam())) << GetParam();
        GTEST_SKIP() << "this C library has no " << GetParam();
    }
    Converter plain(GetParam());
    const VELSysCodePage codePage(GetParam());
    const std::string text = SampleOf(plain);
    const GuardedMemory source(256);
    const GuardedMemory target(256);
    testing::internal::CaptureStderr();
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        for (unsigned long room = 0; room < text.size() + 2; ++room) {
            std::string rest = text.substr(0, cut);
            const char* src = source.CopyAtEnd(rest.data(), rest.size());
            unsigned long left = rest.size();
            do {
                const Result expected = plain.ToUTF16(rest, static_cast<long>(room));
                const char* const before = src;
                auto* const dst = target.AtEnd<unsigned short>(room > 0 ? room : left);
                const int count = codePage.ConvertMBCSToUTF16(src, left, dst, room);
                ASSERT_EQ(Units(dst, dst + count), expected.units);
                rest.erase(0, expected.consumed);
                ASSERT_EQ(left, rest.size());
                ASSERT_EQ(src, left > 0 ? before + expected.consumed : nullptr);
                if (expected.consumed == 0) {
                    break; // A pair that needs more room.
                }
            } while (src != nullptr);
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), plain.messages);
}

INSTANTIATE_TEST_SUITE_P(CodePages, ResumedConversion, testing::ValuesIn(CodePageOracle::CodePages),
                         [](const testing::TestParamInfo<const char*>& codePage) {
                             return CodePageOracle::TestNameOf(codePage.param);
                         });

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

/// A few pages mapped again and again, so that large texts take hardly any memory.
class RepeatedMemory {
public:
    explicit RepeatedMemory(std::size_t size) : _size((size + Piece - 1) / Piece * Piece) {
        const int file = memfd_create("repeated", 0);
        void* const memory = mmap(nullptr, _size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (file < 0 || memory == MAP_FAILED || ftruncate(file, Piece) != 0) {
            throw std::bad_alloc();
        }
        _begin = static_cast<char*>(memory);
        for (std::size_t offset = 0; offset < _size; offset += Piece) {
            if (mmap(_begin + offset, Piece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0) == MAP_FAILED) {
                throw std::bad_alloc();
            }
        }
        close(file);
    }
    RepeatedMemory(const RepeatedMemory&) = delete;
    RepeatedMemory& operator=(const RepeatedMemory&) = delete;
    ~RepeatedMemory() { munmap(_begin, _size); }

    static constexpr std::size_t Piece = std::size_t{1} << 20;
    char* Begin() const { return _begin; }

private:
    std::size_t _size;
    char* _begin = nullptr;
};

} // namespace

// No length that an `int` can tell ends a text of two bytes a character between two of them.
TEST(LargeText, IsCutBetweenCharacters) {
    constexpr unsigned long length = (1ul << 31) + 8;
    const RepeatedMemory text(length);
    for (std::size_t i = 0; i < RepeatedMemory::Piece; i += 2) {
        text.Begin()[i] = '\xA4';
        text.Begin()[i + 1] = '\xA2';
    }
    const RepeatedMemory target(2 * length);
    auto* const units = reinterpret_cast<unsigned short*>(target.Begin());
    const VELSysCodePage codePage("EUC-JP");
    const char* src = text.Begin();
    unsigned long left = length;
    testing::internal::CaptureStderr();
    const int count = codePage.ConvertMBCSToUTF16(src, left, units, ~0ul);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_GT(count, 0);
    EXPECT_EQ(units[count - 1], 0x3042);
    EXPECT_EQ(src, text.Begin() + 2ul * static_cast<unsigned long>(count)) << "two bytes a unit";
    EXPECT_EQ(left, length - 2ul * static_cast<unsigned long>(count));
}

#endif

TEST(ConversionByIconv, GivesNoTerminatorThroughIconv) {
    const VELSysCodePage codePage("EUC-JP");
    const char* src = "ab";
    unsigned long left = 2;
    unsigned short units[4] = {9, 9, 9, 9};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 3ul), 2);
    EXPECT_EQ(src, nullptr);
    EXPECT_THAT(units, testing::ElementsAre('a', 'b', 9, 9));
}
