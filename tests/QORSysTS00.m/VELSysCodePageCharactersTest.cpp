/// @file
/// VELSysCodePage one character at a time, and the questions whether a text survives a conversion.

#include "Child.h"
#include "GuardedMemory.h"
#include "VELSysCodePage.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Units = std::vector<unsigned short>;

/// What taking one character gave.
struct Taken {
    int result;
    Units units;
    unsigned int code;
    std::string utf8;
    std::size_t consumed;
};

/// Takes the first character in all three forms, from memory that ends with the text.
Taken Take(const VELSysCodePage& codePage, const std::string& text) {
    const GuardedMemory memory(64);
    const char* const start = memory.CopyAtEnd(text.data(), text.size());
    Taken taken{};
    const char* src = start;
    unsigned long left = text.size();
    unsigned short units[2] = {0xAAAA, 0xAAAA};
    taken.result = codePage.GetNextMultiByteCharAsUTF16(units, src, left);
    taken.units.assign(units, units + taken.result);
    taken.consumed = static_cast<std::size_t>(src - start);
    EXPECT_EQ(left, text.size() - taken.consumed);

    src = start;
    left = text.size();
    taken.code = 0xAAAAAAAA;
    const int result32 = codePage.GetNextMultiByteCharAsUTF32(taken.code, src, left);
    EXPECT_EQ(result32, codePage.IsUTF8() ? 1 : taken.result);
    EXPECT_EQ(src, start + taken.consumed);
    EXPECT_EQ(left, text.size() - taken.consumed);

    src = start;
    left = text.size();
    char bytes[4] = {'#', '#', '#', '#'};
    const int count = codePage.GetNextMultiByteCharAsUTF8(bytes, src, left);
    EXPECT_EQ(src, start + taken.consumed);
    EXPECT_EQ(left, text.size() - taken.consumed);
    taken.utf8.assign(bytes, bytes + count);
    EXPECT_TRUE(std::all_of(bytes + count, bytes + 4, [](char byte) { return byte == '#'; })) << "no terminator";
    return taken;
}

/// A code page whose way to UTF-16 and back is written down by the test, as that of any code page may be.
class ScriptedCodePage : public VELSysCodePage {
public:
    using ToUTF16Function = std::function<int(const char*& src, int& length, unsigned short* dst, int& room)>;
    using FromUTF16Function = std::function<int(const unsigned short* src, int length, char* dst, int* written)>;

    explicit ScriptedCodePage(ToUTF16Function toUTF16, FromUTF16Function fromUTF16 = nullptr)
        : VELSysCodePage("N/A"), _to(std::move(toUTF16)), _from(std::move(fromUTF16)) {
        const auto to = static_cast<ToUTF16>(&ScriptedCodePage::ScriptedToUTF16);
        std::memcpy(reinterpret_cast<char*>(this) + 16, &to, sizeof to);
        if (_from) {
            const auto from = static_cast<FromUTF16>(&ScriptedCodePage::ScriptedFromUTF16);
            std::memcpy(reinterpret_cast<char*>(this) + 32, &from, sizeof from);
        }
    }

private:
    using ToUTF16 = int (VELSysCodePage::*)(const char*&, int&, unsigned short*, int&) const;
    using FromUTF16 = int (VELSysCodePage::*)(const unsigned short*, int, char*, int*) const;

    int ScriptedToUTF16(const char*& src, int& length, unsigned short* dst, int& room) const {
        return room = _to(src, length, dst, room);
    }
    int ScriptedFromUTF16(const unsigned short* src, int length, char* dst, int* written) const {
        return _from(src, length, dst, written);
    }

    ToUTF16Function _to;
    FromUTF16Function _from;
};

/// Consumes `consumed` bytes and writes the units, as far as there is room for all of them.
ScriptedCodePage::ToUTF16Function Gives(int consumed, const Units& units) {
    return [=](const char*& src, int& length, unsigned short* dst, int& room) {
        if (room < static_cast<int>(units.size())) {
            return 0;
        }
        src += consumed;
        length -= consumed;
        std::ranges::copy(units, dst);
        return static_cast<int>(units.size());
    };
}

} // namespace

TEST(NextCharacter, IsTakenFromUTF8) {
    const VELSysCodePage codePage("UTF-8");
    const struct {
        std::string text;
        Units units;
        unsigned int code;
        std::size_t consumed;
    } rows[] = {
        {"a", {'a'}, 'a', 1},
        {"abcd", {'a'}, 'a', 1},
        {"\u00e9", {0xE9}, 0xE9, 2},
        {"\u00e9xyz", {0xE9}, 0xE9, 2},
        {"\u20ac", {0x20AC}, 0x20AC, 3},
        {"\u20acx", {0x20AC}, 0x20AC, 3},
        {"\U0001F600", {0xD83D, 0xDE00}, 0x1F600, 4},
        {"\U0001F600x", {0xD83D, 0xDE00}, 0x1F600, 4},
        {std::string(1, '\0'), {0}, 0, 1},
        {std::string("\0abc", 4), {0}, 0, 1},
    };
    for (const auto& row : rows) {
        const Taken taken = Take(codePage, row.text);
        EXPECT_EQ(taken.result, static_cast<int>(row.units.size()));
        EXPECT_EQ(taken.units, row.units);
        EXPECT_EQ(taken.code, row.code);
        EXPECT_EQ(taken.consumed, row.consumed);
        EXPECT_EQ(taken.utf8, row.text.substr(0, row.consumed));
    }
}

TEST(NextCharacter, IsDecodedByItsFirstByteWhileFourBytesAreThere) {
    const VELSysCodePage codePage("UTF-8");
    const struct {
        std::string text;
        unsigned int code;
        std::size_t consumed;
    } rows[] = {
        {"\xC3"
         "abc",
         (3u << 6) | ('a' & 0x3F), 2},
        {"\x80"
         "abc",
         0x80, 1},
        {"\xFF"
         "abc",
         0xFF, 1},
        {"\xE2"
         "abc",
         (2u << 12) | (0x21u << 6) | 0x22, 3},
    };
    for (const auto& row : rows) {
        const Taken taken = Take(codePage, row.text);
        EXPECT_EQ(taken.code, row.code);
        EXPECT_EQ(taken.consumed, row.consumed);
        EXPECT_EQ(taken.utf8, row.text.substr(0, row.consumed)) << "the bytes are copied unchecked";
    }
}

TEST(NextCharacter, PassesOverAByteThatIsNoUTF8NearTheEnd) {
    const VELSysCodePage codePage("UTF-8");
    for (const std::string text :
         {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\x80", "\xFF", "\xC3(", "\xE2\x82(", "\x80xx"}) {
        const Taken taken = Take(codePage, text);
        EXPECT_EQ(taken.result, 1);
        EXPECT_EQ(taken.units, Units{0});
        EXPECT_EQ(taken.code, 0u);
        EXPECT_EQ(taken.consumed, 1u);
        EXPECT_EQ(taken.utf8, text.substr(0, 1));
    }
}

TEST(NextCharacter, IsZeroAtTheEnd) {
    for (const char* name : {"UTF-8", "N/A"}) {
        const VELSysCodePage codePage(name);
        const Taken taken = Take(codePage, "");
        EXPECT_EQ(taken.result, 1);
        EXPECT_EQ(taken.units, Units{0});
        EXPECT_EQ(taken.code, 0u);
        EXPECT_EQ(taken.consumed, 0u);
        EXPECT_EQ(taken.utf8, codePage.IsUTF8() ? "" : std::string(1, '\0'));
        const char* src = nullptr;
        for (unsigned long left : {0ul, 5ul}) {
            unsigned short units[2] = {7, 7};
            EXPECT_EQ(codePage.GetNextMultiByteCharAsUTF16(units, src, left), 1);
            EXPECT_EQ(units[0], 0);
            EXPECT_EQ(src, nullptr);
        }
    }
}

TEST(NextCharacter, IsAByteInIdentity) {
    const VELSysCodePage codePage("N/A");
    for (int byte = 0; byte < 0x100; ++byte) {
        for (const std::size_t length : {1, 5}) {
            const Taken taken = Take(codePage, std::string(length, static_cast<char>(byte)));
            EXPECT_EQ(taken.result, 1);
            EXPECT_EQ(taken.units, Units{static_cast<unsigned short>(byte)});
            EXPECT_EQ(taken.code, static_cast<unsigned int>(byte));
            EXPECT_EQ(taken.consumed, 1u);
            EXPECT_EQ(taken.utf8.size(), byte < 0x80 ? 1u : 2u);
        }
    }
    EXPECT_EQ(Take(codePage, "\xE9").utf8, "\u00e9");
}

TEST(NextCharacter, GetsRoomForAPairAtASecondAttempt) {
    const ScriptedCodePage codePage(Gives(3, {0xD83D, 0xDE00}));
    const Taken taken = Take(codePage, "xyz!");
    EXPECT_EQ(taken.result, 2);
    EXPECT_EQ(taken.units, (Units{0xD83D, 0xDE00}));
    EXPECT_EQ(taken.code, 0x1F600u);
    EXPECT_EQ(taken.utf8, "\U0001F600");
    EXPECT_EQ(taken.consumed, 3u);
}

TEST(NextCharacter, JoinsNothingButALeadSurrogate) {
    EXPECT_EQ(Take(ScriptedCodePage(Gives(1, {0xD83D})), "x").code, 0xD83Du) << "there is no second unit";
    EXPECT_EQ(Take(ScriptedCodePage(Gives(1, {0xDBFF, 0xDFFF})), "x").code, 0x10FFFFu);
    EXPECT_EQ(Take(ScriptedCodePage(Gives(1, {0xDC00, 0x0041})), "x").code, 0xDC00u);
}

TEST(NextCharacter, PassesOverAByteThatGivesNothing) {
    const ScriptedCodePage codePage(Gives(0, {}));
    const Taken taken = Take(codePage, "xy");
    EXPECT_EQ(taken.result, 0);
    EXPECT_EQ(taken.code, 0xAAAAAAAAu) << "left alone";
    EXPECT_EQ(taken.utf8, "");
    EXPECT_EQ(taken.consumed, 1u);
    const Taken zero = Take(codePage, std::string("\0y", 2));
    EXPECT_EQ(zero.result, 1);
    EXPECT_EQ(zero.units, Units{0});
    EXPECT_EQ(zero.consumed, 1u);
}

TEST(NextCharacter, StaysWhereTheInputWasPartlyConsumed) {
    const ScriptedCodePage codePage(Gives(2, {}));
    const Taken taken = Take(codePage, "xyz");
    EXPECT_EQ(taken.result, 0);
    EXPECT_EQ(taken.consumed, 0u);
    const Taken zero = Take(codePage, std::string("xy\0z", 4));
    EXPECT_EQ(zero.result, 1) << "the attempt stopped at a zero byte";
    EXPECT_EQ(zero.units, Units{0});
    EXPECT_EQ(zero.consumed, 0u);
    const Taken end = Take(codePage, "xy");
    EXPECT_EQ(end.result, 1) << "the end counts as a zero byte";
    EXPECT_EQ(end.consumed, 0u);
}

namespace {

int CanConvert(const VELSysCodePage& codePage, const std::u16string& text) {
    return codePage.CanConvertUTF16ToMBCS(reinterpret_cast<const unsigned short*>(text.data()),
                                          static_cast<int>(text.size()));
}

int CanConvert(const VELSysCodePage& codePage, const std::string& text) {
    const GuardedMemory memory(64);
    return codePage.CanConvertMBCSToUTF16(memory.CopyAtEnd(text.data(), text.size()), text.size());
}

} // namespace

TEST(CanConvertUTF16ToMBCS, AsksForEachCharacter) {
    const VELSysCodePage codePage("UTF-8");
    EXPECT_EQ(codePage.CanConvertUTF16ToMBCS(nullptr, 5), 0);
    EXPECT_EQ(CanConvert(codePage, u""), 0);
    EXPECT_EQ(CanConvert(codePage, u"a\u00e9\u20ac\U0001F600"), 0);
    EXPECT_EQ(CanConvert(codePage, std::u16string(u"a\0b", 3)), 0);
    EXPECT_EQ(CanConvert(codePage, u"a\xD83D"), 0) << "a lone surrogate comes back at the end";
    EXPECT_EQ(CanConvert(codePage, u"\xDE00"
                                   u"a"),
              0);
    EXPECT_EQ(CanConvert(codePage, u"a\xD83D"
                                   u"b"),
              -1)
        << "joined with what follows";
    const unsigned short unit = 'a';
    EXPECT_EQ(codePage.CanConvertUTF16ToMBCS(&unit, -1), 0);
}

TEST(CanConvertUTF16ToMBCS, SeesWhatIdentityCuts) {
    const VELSysCodePage codePage("N/A");
    EXPECT_EQ(CanConvert(codePage, u"a\u00e9\u00ff"), 0);
    EXPECT_EQ(CanConvert(codePage, u"a\u0100"), -1);
    EXPECT_EQ(CanConvert(codePage, u"\u20ac"), -1);
    EXPECT_EQ(CanConvert(codePage, u"a\U0001F600"), -1);
}

TEST(CanConvertUTF16ToMBCS, SeesAQuestionMark) {
    const auto questionMark = [](const unsigned short*, int length, char* dst, int* written) {
        std::memset(dst, '?', static_cast<std::size_t>(length));
        dst[length] = 0;
        *written = length;
        return length;
    };
    const auto bytes = [](const char*& src, int& length, unsigned short* dst, int&) {
        std::transform(src, src + length, dst, [](char byte) { return static_cast<unsigned char>(byte); });
        return length;
    };
    const ScriptedCodePage codePage(bytes, questionMark);
    EXPECT_EQ(CanConvert(codePage, u"?"), 0);
    EXPECT_EQ(CanConvert(codePage, u"\u20ac"), -1);
    EXPECT_EQ(CanConvert(codePage, u"\U0001F600"), -1);
}

TEST(CanConvertMBCSToUTF16, AsksForEachCharacter) {
    const VELSysCodePage codePage("UTF-8");
    EXPECT_EQ(codePage.CanConvertMBCSToUTF16(nullptr, 5), 0);
    EXPECT_EQ(CanConvert(codePage, ""), 0);
    EXPECT_EQ(CanConvert(codePage, "a\u00e9\u20ac\U0001F600"), 0);
    EXPECT_EQ(CanConvert(codePage, std::string("a\0b", 3)), 0);
    EXPECT_EQ(CanConvert(codePage, "abc\xC3"), -1) << "cut";
    EXPECT_EQ(CanConvert(codePage, "\xFF"
                                   "abcd"),
              -1);
    EXPECT_EQ(CanConvert(codePage, "\xC0\x80"
                                   "abcd"),
              -1)
        << "overlong";
    EXPECT_EQ(CanConvert(VELSysCodePage("N/A"), "a\xE9\xFF"), 0);
}

TEST(CanConvertMBCSToUTF16, SaysWhenAConverterGivesTooMuch) {
    // Three units where there is room for one, in memory that has room for them.
    const ScriptedCodePage codePage([](const char*&, int&, unsigned short*, int&) { return 3; });
    testing::internal::CaptureStderr();
    EXPECT_EQ(CanConvert(codePage, "x"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: VELSysCodePage::CanConvertMBCSToUTF16 - an overflow has occurred!\n");
}

TEST(CanConvertMBCSToUTF16, SaysWhenAConverterDoesNotGetOn) {
    const ScriptedCodePage codePage(Gives(2, {}));
    testing::internal::CaptureStderr();
    EXPECT_EQ(CanConvert(codePage, "xyz"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR: VELSysCodePage::GetNextMultiByteCharAsUTF16 is probably bugged!\n");
}

CHILD_PROGRAM(MeetsTooMuch) {
    EndWithoutFlush(
        [] { CanConvert(ScriptedCodePage([](const char*&, int&, unsigned short*, int&) { return 3; }), "x"); });
}

CHILD_PROGRAM(DoesNotGetOn) {
    EndWithoutFlush([] { CanConvert(ScriptedCodePage(Gives(2, {})), "xyz"); });
}

TEST(CanConvertMBCSToUTF16, FlushesWhatItSays) {
    EXPECT_EQ(RunChild("MeetsTooMuch").err,
              "ERROR: VELSysCodePage::CanConvertMBCSToUTF16 - an overflow has occurred!\n");
    EXPECT_EQ(RunChild("DoesNotGetOn").err, "ERROR: VELSysCodePage::GetNextMultiByteCharAsUTF16 is probably bugged!\n");
}

TEST(CanConvertMBCSToUTF16, RefusesAByteThatGivesNothing) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(CanConvert(ScriptedCodePage(Gives(0, {})), "x"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(CanConvertMBCSToUTF16, RefusesAWayBackThatIsLonger) {
    const auto twice = [](const unsigned short* src, int, char* dst, int* written) {
        dst[0] = dst[1] = static_cast<char>(*src);
        return *written = 2;
    };
    EXPECT_EQ(CanConvert(ScriptedCodePage(Gives(1, {'x'}), twice), "x"), -1);
}
