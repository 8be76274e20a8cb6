/// @file
/// What the code pages say on standard error, and what follows each error that `iconv` may report.

#include "Child.h"
#include "CLibraryConversion.h"
#include "CodePageOracle.h"
#include "LanguageCalls.h"
#include "TestLocales.h"
#include "VELSysCodePage.h"
#include "VELSysIConvTSWrap.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cwchar>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <langinfo.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace CLibraryConversion {

std::function<std::size_t(iconv_t, char**, std::size_t*, char**, std::size_t*)> s_iconv;
std::function<std::size_t(const char*, std::size_t, std::mbstate_t&)> s_length;
int s_resets = 0;

} // namespace CLibraryConversion

using namespace CLibraryConversion;

extern "C" std::size_t __real_iconv(iconv_t descriptor, char** in, std::size_t* inLeft, char** out,
                                    std::size_t* outLeft);
extern "C" std::size_t __wrap_iconv(iconv_t descriptor, char** in, std::size_t* inLeft, char** out,
                                    std::size_t* outLeft) {
    if (in == nullptr) {
        EXPECT_EQ(inLeft, nullptr);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(outLeft, nullptr);
        ++s_resets;
    }
    return s_iconv && in != nullptr ? s_iconv(descriptor, in, inLeft, out, outLeft)
                                    : __real_iconv(descriptor, in, inLeft, out, outLeft);
}

extern "C" std::size_t __real_mbrtowc(wchar_t* out, const char* text, std::size_t length, std::mbstate_t* state);
extern "C" std::size_t __wrap_mbrtowc(wchar_t* out, const char* text, std::size_t length, std::mbstate_t* state) {
    return s_length && out == nullptr ? s_length(text, length, *state) : __real_mbrtowc(out, text, length, state);
}

namespace {

using CodePageOracle::Units;
using testing::ElementsAre;

constexpr auto Failed = static_cast<std::size_t>(-1);

/// `iconv` that always fails with `error`, having done nothing.
auto Fails(int error) {
    return [error](iconv_t, char**, std::size_t*, char**, std::size_t*) {
        errno = error;
        return Failed;
    };
}

/// Takes a byte (a unit) at a time, and answers `result`.
auto TakesOne(std::size_t result, std::size_t in, std::size_t out) {
    return [=](iconv_t, char** src, std::size_t* srcLeft, char** dst, std::size_t* dstLeft) {
        std::fill_n(*dst, out, '\0');
        **dst = **src;
        *src += in;
        *srcLeft -= in;
        *dst += out;
        *dstLeft -= out;
        return result;
    };
}

struct Converted {
    int count;
    Units units;
    unsigned long left;
    bool isAtEnd;
    std::string said;
};

/// Converts by the resumable form.
Converted Convert(const VELSysCodePage& codePage, const std::string& text, unsigned long room) {
    const char* src = text.data();
    unsigned long left = text.size();
    Units units(64, 0xAAAA);
    testing::internal::CaptureStderr();
    const int count = codePage.ConvertMBCSToUTF16(src, left, units.data(), room);
    std::string said = testing::internal::GetCapturedStderr();
    units.resize(static_cast<std::size_t>(count));
    return {count, units, left, src == nullptr, said};
}

Converted ConvertAll(const VELSysCodePage& codePage, const std::string& text) {
    Units units(64, 0xAAAA);
    int written = -1;
    testing::internal::CaptureStderr();
    const int count = codePage.ConvertMBCSToUTF16(text.data(), static_cast<int>(text.size()), units.data(), &written);
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(written, count);
    units.resize(static_cast<std::size_t>(count));
    return {count, units, 0, true, said};
}

const VELSysCodePage& EUCJP() {
    static const VELSysCodePage codePage("EUC-JP");
    return codePage;
}

} // namespace

TEST(ConversionMessage, IsGivenForACutCharacter) {
    const Converted converted = ConvertAll(EUCJP(), "a\xA4");
    EXPECT_EQ(converted.said, "iconv EINVAL error: input buffer was truncated.\n");
    EXPECT_THAT(converted.units, ElementsAre('a', '?'));
}

TEST(ConversionMessage, IsNotGivenForACutCharacterWithoutRoom) {
    const Converted converted = Convert(EUCJP(), "a\xA4", 1);
    EXPECT_EQ(converted.said, "");
    EXPECT_THAT(converted.units, ElementsAre('a'));
    EXPECT_EQ(converted.left, 1u);
}

TEST(ConversionMessage, IsNotGivenForABadByte) {
    const Converted converted = ConvertAll(EUCJP(), "\xFFz\xA4\x20");
    EXPECT_EQ(converted.said, "");
    EXPECT_THAT(converted.units, ElementsAre('?', 'z', '?', ' '));
}

TEST(ConversionMessage, IsNotGivenWhenTheRoomIsUsedUp) {
    const Converted converted = Convert(EUCJP(), "abc", 2);
    EXPECT_EQ(converted.said, "");
    EXPECT_THAT(converted.units, ElementsAre('a', 'b'));
    EXPECT_EQ(converted.left, 1u);
    s_iconv = Fails(E2BIG);
    EXPECT_EQ(ConvertAll(EUCJP(), "abc").said, "") << "nor when no room was given";
}

TEST(ConversionMessage, IsGivenForAnOverflowWhenTheRoomIsZero) {
    s_iconv = Fails(E2BIG);
    const Converted converted = Convert(EUCJP(), "abc", 0);
    EXPECT_EQ(converted.said, "iconv E2BIG error: buffer overflow. InBytesLeft: 3\n"
                              "iconv E2BIG error: buffer overflow. InBytesLeft: 2\n"
                              "iconv E2BIG error: buffer overflow. InBytesLeft: 1\n");
    EXPECT_THAT(converted.units, ElementsAre('?', '?', '?'));
    EXPECT_TRUE(converted.isAtEnd);
}

TEST(ConversionMessage, IsGivenForAByteThatGivesSeveralUnits) {
    CodePageOracle::Converter plain("TSCII");
    const VELSysCodePage codePage("TSCII");
    for (const char* text : {"\x82\x82", "\x82\x82z", "\x87\x87\x87"}) {
        plain.messages.clear();
        const auto expected = plain.ToUTF16(text, 0);
        const Converted converted = Convert(codePage, text, 0);
        EXPECT_EQ(converted.units, expected.units);
        EXPECT_EQ(converted.said, plain.messages);
        EXPECT_THAT(converted.said, testing::StartsWith("iconv E2BIG error: buffer overflow. InBytesLeft: "));
    }
}

TEST(ConversionMessage, NamesAnyOtherError) {
    s_iconv = Fails(EBADF);
    const Converted converted = ConvertAll(EUCJP(), "ab");
    EXPECT_EQ(converted.said,
              "iconv errno is: " + std::to_string(EBADF) + "\niconv errno is: " + std::to_string(EBADF) + "\n");
    EXPECT_THAT(converted.units, ElementsAre('?', '?'));
}

TEST(ConversionMessage, IsNotGivenWhenNothingIsLeft) {
    s_iconv = [](iconv_t, char** src, std::size_t* srcLeft, char**, std::size_t*) {
        *src += *srcLeft;
        *srcLeft = 0;
        errno = EBADF;
        return Failed;
    };
    EXPECT_EQ(ConvertAll(EUCJP(), "ab").said, "");
    EXPECT_EQ(ConvertAll(EUCJP(), "ab").count, 0);
}

CHILD_PROGRAM(MeetsACutCharacter) {
    EndWithoutFlush([] {
        unsigned short units[4];
        EUCJP().ConvertMBCSToUTF16("\xA4", 1, units, nullptr);
    });
}

CHILD_PROGRAM(MeetsAnOverflow) {
    EndWithoutFlush([] {
        s_iconv = Fails(E2BIG);
        unsigned short units[4];
        const char* src = "a";
        unsigned long left = 1;
        EUCJP().ConvertMBCSToUTF16(src, left, units, 0ul);
    });
}

CHILD_PROGRAM(MeetsAnotherError) {
    EndWithoutFlush([] {
        s_iconv = Fails(EBADF);
        unsigned short units[4];
        EUCJP().ConvertMBCSToUTF16("a", 1, units, nullptr);
    });
}

CHILD_PROGRAM(AsksForACodePageAfterTheEnd) {
    EndWithoutFlush([] {
        VELSysIConvTSWrap::sDeinitIConvTS(0);
        const VELSysCodePage codePage("EUC-JP", 3, "ja");
        const bool isIdentity = !codePage.IsValid() && std::string(codePage.GetName()) == "Identity";
        _exit(isIdentity ? 0 : 1);
    });
}

TEST(ConversionMessage, IsFlushedAtOnce) {
    EXPECT_EQ(RunChild("MeetsACutCharacter").err, "iconv EINVAL error: input buffer was truncated.\n");
    EXPECT_EQ(RunChild("MeetsAnOverflow").err, "iconv E2BIG error: buffer overflow. InBytesLeft: 1\n");
    EXPECT_EQ(RunChild("MeetsAnotherError").err, "iconv errno is: " + std::to_string(EBADF) + "\n");
}

TEST(CodePageMessage, IsGivenWhenThereAreNoHandlesAnyMore) {
    const Child child = RunChild("AsksForACodePageAfterTheEnd");
    EXPECT_EQ(child.err, "ERROR: SUPPLANG_R9 does not contain a valid code set for code page: EUC-JP.\n");
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.out, "");
}

TEST(CodePageMessage, IsNotGivenForIdentityAndUTF8) {
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(VELSysCodePage("N/A").IsValid());
    EXPECT_FALSE(VELSysCodePage(nullptr).IsValid());
    EXPECT_TRUE(VELSysCodePage("UTF-8").IsValid());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(EndOfTheSession, LeavesIdentityWithoutAWord) {
    const VELSysCodePage codePage("EUC-JP");
    const char text[] = "\xA4\xA2";
    unsigned short units[4];
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text, 2, units, nullptr), 1);
    EXPECT_EQ(units[0], 0x3042);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_EQ(codePage.ConvertMBCSToUTF16(text, 2, units, nullptr), 2);
    EXPECT_EQ(units[0], 0xA4);
    char bytes[9];
    EXPECT_EQ(codePage.ConvertUTF16ToMBCS(units, 2, bytes, nullptr), 2);
    EXPECT_STREQ(bytes, text);
    const char* src = text;
    unsigned long left = 2;
    EXPECT_EQ(codePage.GetNextMultiByteCharAsUTF16(units, src, left), 1);
    EXPECT_EQ(units[0], 0xA4);
    EXPECT_EQ(left, 1u);
    EXPECT_EQ(codePage.CanConvertMBCSToUTF16(text, 2), 0);
    EXPECT_TRUE(codePage.IsValid());
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
}

TEST(Conversion, ResetsItsDescriptor) {
    EXPECT_EQ(ConvertAll(EUCJP(), "a").count, 1);
    EXPECT_EQ(s_resets, 1);
    char bytes[5];
    const unsigned short unit = 'a';
    EUCJP().ConvertUTF16ToMBCS(&unit, 1, bytes, nullptr);
    EXPECT_EQ(s_resets, 2);
    s_iconv = Fails(EBADF);
    ConvertAll(EUCJP(), "a");
    EUCJP().ConvertUTF16ToMBCS(&unit, 1, bytes, nullptr);
    EXPECT_EQ(s_resets, 4);
}

TEST(Conversion, FromUTF16GoesOnAfterAPositiveResult) {
    s_iconv = TakesOne(1, 2, 1);
    const unsigned short units[] = {'a', 'b', 'c'};
    char bytes[13] = "############";
    EXPECT_EQ(EUCJP().ConvertUTF16ToMBCS(units, 3, bytes, nullptr), 3);
    EXPECT_STREQ(bytes, "abc");
}

TEST(Conversion, FromUTF16StopsAfterAResultOfZero) {
    s_iconv = TakesOne(0, 2, 1);
    const unsigned short units[] = {'a', 'b', 'c'};
    char bytes[13] = "############";
    EXPECT_EQ(EUCJP().ConvertUTF16ToMBCS(units, 3, bytes, nullptr), 1);
    EXPECT_STREQ(bytes, "a");
}

TEST(Conversion, ToUTF16StopsAfterAnySuccess) {
    s_iconv = TakesOne(1, 1, 2);
    EXPECT_THAT(ConvertAll(EUCJP(), "abc").units, ElementsAre('a'));
}

TEST(Conversion, FromUTF16MarksEachUnitThatFails) {
    s_iconv = Fails(EINVAL);
    const unsigned short units[] = {'a', 'b', 'c'};
    char bytes[13] = "############";
    testing::internal::CaptureStderr();
    EXPECT_EQ(EUCJP().ConvertUTF16ToMBCS(units, 3, bytes, nullptr), 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_STREQ(bytes, "???");
}

TEST(Conversion, FromUTF16StopsAfterAFailureThatLeftNothing) {
    int runs = 0;
    s_iconv = [&](iconv_t, char** src, std::size_t* srcLeft, char**, std::size_t*) {
        ++runs;
        *src += *srcLeft;
        *srcLeft = 0;
        errno = EILSEQ;
        return Failed;
    };
    const unsigned short units[] = {'a', 'b'};
    char bytes[9] = "########";
    int written = -1;
    EXPECT_EQ(EUCJP().ConvertUTF16ToMBCS(units, 2, bytes, &written), 0);
    EXPECT_EQ(written, 0);
    EXPECT_EQ(std::string(bytes, 8), std::string("\0#######", 8)) << "no mark";
    EXPECT_EQ(runs, 1);
}

// 4 bytes a unit are more than the answer can tell.
TEST(Conversion, FromUTF16GivesNoMoreThanTheAnswerCanTell) {
    constexpr int units = 600'000'000;
    constexpr std::size_t size = std::size_t{4} * units + 1;
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto* const dst = static_cast<char*>(memory);
    dst[INT_MAX] = '#';
    const VELSysCodePage codePage("UTF-32LE");
    s_iconv = [](iconv_t, char** src, std::size_t* srcLeft, char** out, std::size_t* outLeft) {
        const std::size_t taken = std::min(*srcLeft / 2, *outLeft / 4);
        *src += 2 * taken;
        *srcLeft -= 2 * taken;
        *out += 4 * taken;
        *outLeft -= 4 * taken;
        errno = E2BIG;
        return *srcLeft == 0 ? 0 : Failed;
    };
    int written = -1;
    // Nobody reads the units.
    const int count = codePage.ConvertUTF16ToMBCS(static_cast<unsigned short*>(memory), units, dst, &written);
    EXPECT_EQ(written, count);
    EXPECT_EQ(count, INT_MAX);
    EXPECT_EQ(dst[INT_MAX], '\0');
    munmap(memory, size);
}

TEST(Conversion, FromUTF16StopsWhenTheRoomIsUsedUp) {
    s_iconv = [](iconv_t, char**, std::size_t*, char** dst, std::size_t* dstLeft) {
        std::fill_n(*dst, *dstLeft, 'x');
        *dst += *dstLeft;
        *dstLeft = 0;
        errno = E2BIG;
        return Failed;
    };
    const unsigned short units[] = {'a', 'b'};
    char bytes[9] = "########";
    EXPECT_EQ(EUCJP().ConvertUTF16ToMBCS(units, 2, bytes, nullptr), 8);
    EXPECT_STREQ(bytes, "xxxxxxxx");
}

class DamagedCharacter : public testing::Test {
protected:
    const VELSysCodePage codePage{"EUC-JP", 3, "C"};
};

TEST_F(DamagedCharacter, IsAsLongAsItsLocaleSays) {
    std::vector<std::size_t> lengths;
    s_length = [&](const char*, std::size_t length, std::mbstate_t&) {
        lengths.push_back(length);
        return 2ul;
    };
    EXPECT_THAT(ConvertAll(codePage, "\xFF\xFF\xFF\xFFz").units, ElementsAre('?', '?', 'z'));
    EXPECT_THAT(lengths, ElementsAre(5, 3)) << "the locale sees what is left, and no more";
}

TEST_F(DamagedCharacter, HasOneByteWhereTheLocaleSeesNone) {
    for (const std::size_t answer : {static_cast<std::size_t>(-1), static_cast<std::size_t>(-2), std::size_t{0}}) {
        s_length = [&](const char*, std::size_t, std::mbstate_t&) { return answer; };
        EXPECT_THAT(ConvertAll(codePage, "\xFF\xFFz").units, ElementsAre('?', '?', 'z'));
    }
}

TEST_F(DamagedCharacter, EndsTheTextWhenItIsLonger) {
    s_length = [&](const char*, std::size_t length, std::mbstate_t&) { return length + 1; };
    const Converted converted = Convert(codePage, "a\xFF\xFFz", 9);
    EXPECT_THAT(converted.units, ElementsAre('a'));
    EXPECT_TRUE(converted.isAtEnd);
}

TEST_F(DamagedCharacter, IsSeenInAStateThatLastsForTheConversion) {
    setenv("LOCPATH", QOR_TEST_LOCALES, 1);
    const VELSysCodePage inUTF8("EUC-JP", 3, TestLocales::English);
    std::vector<bool> states;
    s_length = [&](const char*, std::size_t, std::mbstate_t& state) {
        states.push_back(std::mbsinit(&state) != 0);
        if (states.back()) {
            // The lead byte of a character that nothing completes.
            wchar_t none;
            std::mbrtowc(&none, "\xE2", 1, &state);
            EXPECT_FALSE(std::mbsinit(&state));
        }
        return 1ul;
    };
    EXPECT_THAT(ConvertAll(inUTF8, "\xFF\xFF").units, ElementsAre('?', '?'));
    EXPECT_THAT(states, ElementsAre(true, false));
    EXPECT_THAT(ConvertAll(inUTF8, "\xFF").units, ElementsAre('?'));
    EXPECT_THAT(states, ElementsAre(true, false, true)) << "the next conversion has one of its own";
}

TEST_F(DamagedCharacter, IsSeenInTheThreadsOwnLocale) {
    const locale_t before = uselocale(nullptr);
    locale_t inside = nullptr;
    s_length = [&](const char*, std::size_t, std::mbstate_t&) {
        inside = uselocale(nullptr);
        return 1ul;
    };
    ConvertAll(codePage, "\xFF");
    EXPECT_NE(inside, before);
    EXPECT_NE(inside, nullptr);
    EXPECT_EQ(uselocale(nullptr), before);
}

TEST_F(DamagedCharacter, IsSeenInTheCharactersOfItsLocaleAlone) {
    setenv("LOCPATH", QOR_TEST_LOCALES, 1);
    const VELSysCodePage inGerman("EUC-JP", 3, TestLocales::German);
    std::string codeSet;
    std::string decimalPoint;
    s_length = [&](const char*, std::size_t, std::mbstate_t&) {
        codeSet = nl_langinfo(CODESET);
        decimalPoint = nl_langinfo(RADIXCHAR);
        return 1ul;
    };
    ConvertAll(inGerman, "\xFF");
    EXPECT_EQ(codeSet, "ISO-8859-1");
    EXPECT_EQ(decimalPoint, ".") << "numbers stay as they were";
}

TEST_F(DamagedCharacter, NeedsRoomForItsMark) {
    const Converted converted = Convert(codePage, "a\xFFz", 1);
    EXPECT_THAT(converted.units, ElementsAre('a'));
    EXPECT_EQ(converted.left, 2u);
}
