/// @file
/// VELSysCodePage as an object, and its ways without `iconv`.

#include "VELSysCodePage.h"

#include "LanguageCalls.h"
#include "VirtualTable.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using testing::ElementsAre;

/// The units of a UTF-16 text.
std::vector<unsigned short> Units(const std::u16string& text) {
    return {text.begin(), text.end()};
}

/// A descriptor of the registry, as a code page keeps it.
IConvDesc_t HandleAt(const VELSysCodePage& codePage, std::size_t offset) {
    IConvDesc_t handle = -77;
    std::memcpy(&handle, reinterpret_cast<const char*>(&codePage) + offset, sizeof handle);
    return handle;
}

/// A resumable conversion of `text`, as which `length` bytes are given.
struct Resumed {
    int count;
    std::size_t consumed; ///< Bytes; -1 when the text came to its end.
    unsigned long left;
    std::vector<unsigned short> units; ///< The whole target, which was full of 9.

    Resumed(const VELSysCodePage& codePage, const char* text, unsigned long length, unsigned long room)
        : left(length), units(4, 9) {
        const char* src = text;
        count = codePage.ConvertMBCSToUTF16(src, left, units.data(), room);
        consumed = src != nullptr ? static_cast<std::size_t>(src - text) : static_cast<std::size_t>(-1);
    }
};
constexpr auto ToTheEnd = static_cast<std::size_t>(-1);

/// More than 32 bits can tell.
constexpr unsigned long Beyond32Bits = 0x100000000;

} // namespace

TEST(VELSysCodePage, HasNothingButItsDestructorsInItsTable) {
    static_assert(std::has_virtual_destructor_v<VELSysCodePage>);
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<VELSysCodePage>::OneMore), 2);
}

TEST(VELSysCodePage, AsksNobodyForItsLanguage) {
    for (const char* name : {"UTF-8", "N/A", "EUC-JP"}) {
        const VELSysCodePage codePage(name);
    }
    EXPECT_THAT(LanguageCalls::Calls(), testing::IsEmpty());
}

TEST(VELSysCodePage, RegistersTheWayToUTF16First) {
    const VELSysCodePage codePage("ISO-8859-1");
    EXPECT_EQ(HandleAt(codePage, 56), 0);
    EXPECT_EQ(HandleAt(codePage, 60), 1);
    const VELSysCodePage other("ISO-8859-2");
    EXPECT_EQ(HandleAt(other, 56), 2);
    EXPECT_EQ(HandleAt(other, 60), 3);
    const VELSysCodePage same("ISO-8859-1");
    EXPECT_EQ(HandleAt(same, 56), 0);
    EXPECT_EQ(HandleAt(same, 60), 1);
}

TEST(VELSysCodePage, IgnoresTheCharacterSizeGivenForUTF8) {
    const VELSysCodePage codePage("UTF-8", 1, nullptr);
    EXPECT_EQ(codePage.GetMaxCharSize(), 4);
    EXPECT_TRUE(codePage.IsUTF8());
    EXPECT_TRUE(codePage.IsValid());
    EXPECT_STREQ(codePage.GetName(), "UTF-8");
    EXPECT_EQ(VELSysCodePage("UTF-8").GetMaxCharSize(), 4);
}

TEST(VELSysCodePage, StandsInIdentityWithoutACodePage) {
    for (const char* name : {static_cast<const char*>(nullptr), "N/A"}) {
        const VELSysCodePage codePage(name, 2, nullptr);
        EXPECT_STREQ(codePage.GetName(), "Identity");
        EXPECT_FALSE(codePage.IsValid());
        EXPECT_FALSE(codePage.IsUTF8());
        EXPECT_EQ(codePage.GetMaxCharSize(), 2);
    }
    EXPECT_EQ(VELSysCodePage("N/A").GetMaxCharSize(), 16);
}

TEST(VELSysCodePage, ComparesTheNameExactly) {
    EXPECT_FALSE(VELSysCodePage("utf-8").IsUTF8());
    EXPECT_FALSE(VELSysCodePage("UTF8").IsUTF8());
}

TEST(VELSysCodePage, ConvertsUTF8AndTerminates) {
    const VELSysCodePage codePage("UTF-8");
    const std::string text = "a\u00e9\u20ac\U0001F600";
    std::vector<unsigned short> units(text.size() + 1, 0xAAAA);
    int written = -5;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text.data(), static_cast<int>(text.size()), units.data(), &written), 5);
    EXPECT_EQ(written, 5);
    EXPECT_THAT(std::vector(units.begin(), units.begin() + 5),
                testing::ElementsAreArray(Units(u"a\u00e9\u20ac\U0001F600")));
    EXPECT_EQ(units[5], 0);

    std::vector<char> bytes(5 * 4 + 1, '#');
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(units.data(), 5, bytes.data(), &written), 10);
    EXPECT_EQ(written, 10);
    EXPECT_EQ(std::string(bytes.data()), text);
}

TEST(VELSysCodePage, LeavesUTF8UnterminatedWhenNobodyAsksForTheLength) {
    const VELSysCodePage codePage("UTF-8");
    const unsigned short units[] = {'a', 'b'};
    char bytes[9] = "########";
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(units, 2, bytes, nullptr), 2);
    EXPECT_STREQ(bytes, "ab######");
    const VELSysCodePage identity("N/A");
    EXPECT_EQ(identity.ConvertUTF16ToMBCS(units, 2, bytes, nullptr), 2);
    EXPECT_STREQ(bytes, "ab");
}

TEST(VELSysCodePage, ResumesUTF8WhereTheRoomEnded) {
    const VELSysCodePage codePage("UTF-8");
    const std::string text = "ab\U0001F600c";
    const char* src = text.data();
    unsigned long left = text.size();
    unsigned short units[4] = {};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 3ul), 2) << "the pair does not fit";
    EXPECT_EQ(src, text.data() + 2);
    EXPECT_EQ(left, 5u);
    EXPECT_EQ(units[2], 0) << "terminated";
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 3ul), 3);
    EXPECT_EQ(src, nullptr);
    EXPECT_EQ(left, 0u);
    EXPECT_EQ(units[0], 0xD83D);
    EXPECT_EQ(units[3], 0);
}

TEST(VELSysCodePage, ResumingWithoutRoomDoesNothing) {
    const VELSysCodePage codePage("UTF-8");
    const char* const text = "abc";
    const char* src = text;
    unsigned long left = 3;
    unsigned short units[1] = {7};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 0ul), 0);
    EXPECT_EQ(src, text);
    EXPECT_EQ(left, 3u);
    EXPECT_EQ(units[0], 7);
    src = nullptr;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 1ul), -1);
}

TEST(VELSysCodePage, ResumingFromNothingEnds) {
    const VELSysCodePage codePage("UTF-8");
    const char* src = "";
    unsigned long left = 0;
    unsigned short units[2] = {7, 7};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 1ul), 0);
    EXPECT_EQ(src, nullptr);
    EXPECT_EQ(units[0], 0);
}

TEST(VELSysCodePage, MapsBytesOneToOneInIdentity) {
    const VELSysCodePage codePage(nullptr);
    const char text[] = "a\xE9\xFF";
    unsigned short units[4] = {9, 9, 9, 9};
    int written = 0;
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text, 3, units, &written), 3);
    EXPECT_EQ(written, 3);
    EXPECT_THAT(units, ElementsAre('a', 0xE9, 0xFF, 9)) << "no terminator without a room";
    const unsigned short wide[] = {'a', 0x20AC, 0x1FF};
    char bytes[4] = "###";
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(wide, 3, bytes, &written), 3);
    EXPECT_STREQ(bytes, "a\xAC\xFF") << "the low bytes";
}

TEST(VELSysCodePage, ResumesIdentity) {
    const VELSysCodePage codePage(nullptr);
    const char* const text = "abc";
    const char* src = text;
    unsigned long left = 3;
    unsigned short units[4] = {9, 9, 9, 9};
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 2ul), 2);
    EXPECT_EQ(src, text + 2);
    EXPECT_EQ(left, 1u);
    EXPECT_THAT(units, ElementsAre('a', 'b', 9, 9)) << "the room ended first: no terminator";
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(src, left, units, 2ul), 1);
    EXPECT_EQ(src, nullptr);
    EXPECT_THAT(units, ElementsAre('c', 0, 9, 9)) << "the input ended first: a zero unit";
}

/// Identity, by choice and for want of a descriptor.
class IdentityWay : public testing::TestWithParam<const char*> {
protected:
    const VELSysCodePage codePage{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(CodePages, IdentityWay, testing::Values("N/A", "no such code set"), [](const auto& row) {
    return std::string(row.index == 0 ? "ByChoice" : "WithoutDescriptor");
});

TEST_P(IdentityWay, WithoutRoomTakesAllAndGivesNoTerminator) {
    const Resumed resumed(codePage, "a\xE9z", 3, 0);
    EXPECT_EQ(resumed.count, 3);
    EXPECT_EQ(resumed.consumed, ToTheEnd);
    EXPECT_EQ(resumed.left, 0u);
    EXPECT_THAT(resumed.units, ElementsAre('a', 0xE9, 'z', 9));
    EXPECT_THAT(Resumed(codePage, "", 0, 0).units, ElementsAre(9, 9, 9, 9)) << "not even for nothing";
}

TEST_P(IdentityWay, WithRoomGivesAZeroUnitForNothing) {
    for (const unsigned long room : {1ul, 2ul}) {
        const Resumed resumed(codePage, "", 0, room);
        EXPECT_EQ(resumed.count, 0);
        EXPECT_EQ(resumed.consumed, ToTheEnd);
        EXPECT_THAT(resumed.units, ElementsAre(0, 9, 9, 9));
    }
}

TEST_P(IdentityWay, GivesNoTerminatorWhereTheRoomEndsWithTheText) {
    const Resumed resumed(codePage, "ab", 2, 2);
    EXPECT_EQ(resumed.count, 2);
    EXPECT_EQ(resumed.consumed, ToTheEnd);
    EXPECT_THAT(resumed.units, ElementsAre('a', 'b', 9, 9));
}

TEST_P(IdentityWay, TakesTextsOfAnyLength) {
    for (const unsigned long length : {Beyond32Bits, Beyond32Bits + 1, Beyond32Bits + 5, Beyond32Bits / 2,
                                       Beyond32Bits / 2 + 1, Beyond32Bits - 1, ~0ul}) {
        const Resumed resumed(codePage, "abc", length, 2);
        EXPECT_EQ(resumed.count, 2) << length;
        EXPECT_EQ(resumed.consumed, 2u);
        EXPECT_EQ(resumed.left, length - 2);
        EXPECT_THAT(resumed.units, ElementsAre('a', 'b', 9, 9));
    }
}

/// Every way to UTF-16, in sizes that 32 bits can't tell.
class LargeSize : public testing::TestWithParam<const char*> {
protected:
    const VELSysCodePage codePage{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(CodePages, LargeSize, testing::Values("UTF-8", "N/A", "EUC-JP"), [](const auto& row) {
    return std::string(row.index == 0 ? "UTF8" : row.index == 1 ? "Identity" : "Iconv");
});

TEST_P(LargeSize, OfTheRoomIsARoom) {
    for (const unsigned long room : {Beyond32Bits, Beyond32Bits + 1, Beyond32Bits / 2, Beyond32Bits - 1, ~0ul}) {
        const Resumed resumed(codePage, "ab", 2, room);
        EXPECT_EQ(resumed.count, 2) << room;
        EXPECT_EQ(resumed.consumed, ToTheEnd);
        EXPECT_EQ(resumed.left, 0u);
        const bool isTerminated = std::string(GetParam()) != "EUC-JP";
        EXPECT_THAT(resumed.units, ElementsAre('a', 'b', isTerminated ? 0 : 9, 9)) << room;
    }
}

TEST_P(LargeSize, OfTheRestLeavesTheNextCharacter) {
    for (const unsigned long length : {Beyond32Bits, Beyond32Bits + 1, Beyond32Bits / 2, ~0ul}) {
        const char* const text = "abcdefghijklmnop";
        const char* src = text;
        unsigned long left = length;
        unsigned short units[2] = {9, 9};
        EXPECT_EQ(codePage.GetNextMultiByteCharAsUTF16(units, src, left), 1) << length;
        EXPECT_EQ(units[0], 'a');
        EXPECT_EQ(src, text + 1);
        EXPECT_EQ(left, length - 1);
        unsigned int code = 9;
        EXPECT_EQ(codePage.GetNextMultiByteCharAsUTF32(code, src, left), 1);
        EXPECT_EQ(code, 'b');
        char bytes[4];
        EXPECT_EQ(codePage.GetNextMultiByteCharAsUTF8(bytes, src, left), 1);
        EXPECT_EQ(bytes[0], 'c');
        EXPECT_EQ(src, text + 3);
        EXPECT_EQ(left, length - 3);
    }
}
