/// @file
/// Numbers into strings and out of them by a caller's format.

#include "HeapLog.h"
#include "QORSysTSUnicodeString.h"
#include "QORUnicodeString.h"
#include "StringStates.h"
#include "TestLocales.h"
#include "VELSysCLocale.h"
#include "VELSysStatus.h"

#include <cfloat>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>

namespace {

using namespace StringStates;

std::string TextIn(const QORUnicodeString& s) {
    return s.ConvertToChar();
}

std::string Printed(const char* format, auto number) {
    char text[6000];
    return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, format, number))};
}

/// Builds a string from a number. The text must be all that is there.
void ExpectBuilds(const std::string& text, auto number, auto... format) {
    QORUnicodeString s("what stood here");
    EXPECT_EQ(s.BuildFromNum(number, format...), static_cast<int>(text.size()));
    EXPECT_EQ(TextIn(s), text);
    EXPECT_EQ(s.GetLengthInByte(), static_cast<int>(text.size()));
    ExpectFreshlyWritten(s, false);
}

template <class Number>
void ExpectReads(Number expected, const char* text, auto... format) {
    Number number = 99;
    EXPECT_EQ(QORUnicodeString(text).ConvertToNum(&number, format...), 1) << text;
    EXPECT_EQ(number, expected) << text;
}

template <class Number>
struct Format;
template <>
struct Format<int> {
    static constexpr const char* name = "Int";
    static constexpr const char* plain = "%d";
    static constexpr const char* odd = "<%+08d>";
};
template <>
struct Format<unsigned int> {
    static constexpr const char* name = "UnsignedInt";
    static constexpr const char* plain = "%u";
    static constexpr const char* odd = "<%#12x>";
};
template <>
struct Format<long> {
    static constexpr const char* name = "Long";
    static constexpr const char* plain = "%ld";
    static constexpr const char* odd = "<%-25ld>";
};
template <>
struct Format<unsigned long> {
    static constexpr const char* name = "UnsignedLong";
    static constexpr const char* plain = "%lu";
    static constexpr const char* odd = "<%#lo>";
};
template <>
struct Format<long long> {
    static constexpr const char* name = "LongLong";
    static constexpr const char* plain = "%lld";
    static constexpr const char* odd = "<%.25lld>";
};
template <>
struct Format<unsigned long long> {
    static constexpr const char* name = "UnsignedLongLong";
    static constexpr const char* plain = "%llu";
    static constexpr const char* odd = "<%llX>";
};
template <>
struct Format<double> {
    static constexpr const char* name = "Double";
    static constexpr const char* plain = "%lf";
    static constexpr const char* odd = "<%.17g>";
};
template <>
struct Format<long double> {
    static constexpr const char* name = "LongDouble";
    static constexpr const char* plain = "%Lf";
    static constexpr const char* odd = "<%.3Le>";
};

template <class Number>
class NumberFormat : public testing::Test {
protected:
    static std::vector<Number> Numbers() {
        using Limits = std::numeric_limits<Number>;
        std::vector<Number> numbers = {Number(0), Number(1), Number(-1), Number(42), Limits::max(), Limits::min()};
        std::mt19937_64 random(1);
        for (int i = 0; i < 2000; ++i) {
            const auto bits = random() >> random() % 64;
            numbers.push_back(static_cast<Number>(random() % 2 == 0 ? bits : -bits));
        }
        if (std::is_same_v<Number, long double>) {
            // Too long for the room.
            numbers.erase(numbers.begin() + 4);
        }
        return numbers;
    }
};

using Types =
    testing::Types<int, unsigned int, long, unsigned long, long long, unsigned long long, double, long double>;

struct NameOfType {
    template <class Number>
    static std::string GetName(int) {
        return Format<Number>::name;
    }
};

class NumberFormatInStates : public InAllStates {};

class NumberFormatInLocales : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { TestLocales::UseLocale(GetParam()); }
};

} // namespace

TYPED_TEST_SUITE(NumberFormat, Types, NameOfType);

TYPED_TEST(NumberFormat, WritesAsTheCLibraryDoes) {
    for (const TypeParam number : this->Numbers()) {
        for (const char* const format : {Format<TypeParam>::plain, Format<TypeParam>::odd}) {
            ExpectBuilds(Printed(format, number), number, format);
        }
    }
}

TYPED_TEST(NumberFormat, ReadsAsTheCLibraryDoes) {
    for (const char* const text : {"42", " -7 and more", "+3", "1e2", "0x10", "99999999999999999999"}) {
        TypeParam expected = 0;
        const int count = std::sscanf(text, Format<TypeParam>::plain, &expected);
        TypeParam number = 0;
        EXPECT_EQ(QORUnicodeString(text).ConvertToNum(&number, Format<TypeParam>::plain), count);
        EXPECT_EQ(number, expected) << text;
    }
}

TYPED_TEST(NumberFormat, ReadsNothingFromOtherText) {
    const QORUnicodeString word("word");
    TypeParam number = 5;
    EXPECT_EQ(word.ConvertToNum(&number, Format<TypeParam>::plain), 0);
    EXPECT_EQ(QORUnicodeString().ConvertToNum(&number, Format<TypeParam>::plain), EOF);
    EXPECT_EQ(QORUnicodeString("7").ConvertToNum(&number, nullptr), EOF);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(QORUnicodeString("7").ConvertToNum(static_cast<TypeParam*>(nullptr), Format<TypeParam>::plain), EOF);
    QORUnicodeString null;
    StringAccess::Handle(null) = nullptr;
    EXPECT_EQ(null.ConvertToNum(&number, Format<TypeParam>::plain), EOF);
    EXPECT_EQ(number, 5);
}

TYPED_TEST(NumberFormat, NothingWrittenChangesNothing) {
    for (const char* const format : {"", static_cast<const char*>(nullptr)}) {
        QORUnicodeString s("what stands here");
        s.GetLengthInChar();
        const Picture before(s);
        EXPECT_EQ(s.BuildFromNum(TypeParam(1), format), format == nullptr ? -1 : 0);
        EXPECT_EQ(Picture(s), before);
    }
}

TEST(NumberFormats, IntegersHaveADefault) {
    ExpectBuilds("-5", -5);
    ExpectBuilds("4294967295", UINT_MAX);
    ExpectBuilds("-9223372036854775808", LONG_MIN);
    ExpectBuilds("18446744073709551615", ULONG_MAX);
    ExpectBuilds("-9223372036854775808", LLONG_MIN);
    ExpectBuilds("18446744073709551615", ULLONG_MAX);
    ExpectReads(-5, "-5");
    ExpectReads(UINT_MAX, "4294967295");
    ExpectReads(LONG_MIN, "-9223372036854775808");
    ExpectReads(ULONG_MAX, "18446744073709551615");
    ExpectReads(LLONG_MIN, "-9223372036854775808");
    ExpectReads(ULLONG_MAX, "18446744073709551615");
}

TEST(NumberFormats, ShortFormatsOfLongNumbersAreReplaced) {
    ExpectBuilds("5", 5L, "%d");
    ExpectBuilds("5000000000", 5000000000L, "%d");
    ExpectBuilds("5000000000", 5000000000UL, "%u");
    ExpectReads(5000000000L, "5000000000", "%d");
    ExpectReads(5000000000UL, "5000000000", "%u");
}

// Each takes the low 32 bits.
TEST(NumberFormats, NoOtherFormatsAreReplaced) {
    const long number = 5000000000L;
    ExpectBuilds("705032704", number, "%u");
    ExpectBuilds("705032704 ", number, "%d ");
    ExpectBuilds("705032704", number, "%1d");
    ExpectBuilds("705032704", number, "%i");
    ExpectBuilds("705032704", static_cast<unsigned long>(number), "%d");
    ExpectBuilds("705032704!", static_cast<unsigned long>(number), "%u!");
    ExpectBuilds("705032704", static_cast<long long>(number), "%d");
    ExpectBuilds("705032704", static_cast<unsigned long long>(number), "%u");
}

TEST(NumberFormats, ConvertNumToStringTakesFormatsAsTheyAre) {
    QORUnicodeString s;
    EXPECT_EQ(s.ConvertNumToString(-5, "%d"), 2);
    EXPECT_EQ(TextIn(s), "-5");
    EXPECT_EQ(s.ConvertNumToString(5000000000L, "%ld"), 10);
    EXPECT_EQ(TextIn(s), "5000000000");
    EXPECT_EQ(s.ConvertNumToString(5000000000L, "%d"), 9);
    EXPECT_EQ(TextIn(s), "705032704");
    EXPECT_EQ(s.ConvertNumToString(5000000000UL, "%lu"), 10);
    EXPECT_EQ(TextIn(s), "5000000000");
    EXPECT_EQ(s.ConvertNumToString(5000000000UL, "%u"), 9);
    EXPECT_EQ(TextIn(s), "705032704");
    EXPECT_EQ(s.ConvertNumToString(1.5, "%g"), 3);
    EXPECT_EQ(TextIn(s), "1.5");
    EXPECT_EQ(s.ConvertNumToString(2.5L, "%Lg"), 3);
    EXPECT_EQ(TextIn(s), "2.5");
    EXPECT_EQ(s.ConvertNumToString(1, ""), 0);
    EXPECT_EQ(s.ConvertNumToString(1L, nullptr), -1);
    EXPECT_EQ(TextIn(s), "2.5");
    EXPECT_EQ(s.ConvertNumToString(1, "%60d"), 60);
    EXPECT_EQ(TextIn(s), std::string(47, ' '));
    EXPECT_EQ(s.ConvertNumToString(1.0, "%500f"), 500);
    EXPECT_EQ(TextIn(s), std::string(399, ' '));
}

TEST(NumberFormats, TextIsCutToTheRoom) {
    const auto cut = [](int width, auto number, const std::string& conversion, std::size_t room) {
        const std::string format = "%0" + std::to_string(width) + conversion;
        QORUnicodeString s;
        EXPECT_EQ(s.BuildFromNum(number, format.c_str()), width);
        EXPECT_EQ(TextIn(s), Printed(format.c_str(), number).substr(0, room - 1)) << format;
    };
    for (const int width : {46, 47, 48, 49, 100, 5000}) {
        cut(width, 12, "d", 48);
        cut(width, 12u, "u", 48);
        cut(width, 12l, "ld", 48);
        cut(width, 12ul, "lu", 48);
        cut(width, 12ll, "lld", 48);
        cut(width, 12ull, "llu", 48);
    }
    for (const int width : {48, 398, 399, 400, 401, 5000}) {
        cut(width, 1.5, "f", 400);
        cut(width, 1.5L, "Lf", 400);
    }
    ExpectBuilds(Printed("%f", -DBL_MAX), -DBL_MAX, "%f");
    QORUnicodeString s;
    EXPECT_EQ(s.BuildFromNum(LDBL_MAX, "%Lf"), 4940);
    EXPECT_EQ(TextIn(s), Printed("%Lf", LDBL_MAX).substr(0, 399));
}

TEST(NumberFormats, TextEndsAtAZeroByte) {
    QORUnicodeString s("what stood here");
    EXPECT_EQ(s.BuildFromNum(0, "%c"), 1);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(s.BuildFromNum(0, "ab%cde"), 5);
    EXPECT_EQ(TextIn(s), "ab");
}

TEST(NumberFormats, TextOfTheFormatIsKeptByteByByte) {
    ExpectBuilds("\u20ac 5\xff", 5, "\u20ac %d\xff");
    QORUnicodeString s("%d");
    EXPECT_EQ(s.BuildFromNum(5, s), 1);
    EXPECT_EQ(TextIn(s), "5");
}

TEST(NumberFormats, ABlockWithRoomIsWrittenInPlace) {
    QORUnicodeString s("a text with room for all that comes");
    const HeapLog log;
    s.BuildFromNum(123456);
    s.BuildFromNum(1.5, "%f");
    EXPECT_EQ(log.Requests().size(), 0u);
}

TEST_P(NumberFormatInStates, BuildsNarrowTextInAnyState) {
    Subject subject(TheState(), HasText(TheState()) ? u"text" : u"");
    EXPECT_EQ(subject.s.BuildFromNum(-12), 3);
    EXPECT_EQ(TextIn(subject.s), "-12");
    ExpectFreshlyWritten(subject.s, false);
    subject.ExpectOthersUntouched();
}

TEST_P(NumberFormatInStates, NothingWrittenChangesNothing) {
    Subject subject(TheState(), HasText(TheState()) ? u"text" : u"");
    EXPECT_EQ(subject.s.BuildFromNum(0, "%.0d"), 0);
    subject.ExpectUnchanged();
}

TEST_P(NumberFormatInStates, ReadsInAnyState) {
    const Subject subject(TheState(), HasText(TheState()) ? u"-12x" : u"");
    int number = 5;
    EXPECT_EQ(subject.s.ConvertToNum(&number), HasText(TheState()) ? 1 : EOF);
    EXPECT_EQ(number, HasText(TheState()) ? -12 : 5);
    subject.ExpectUnchanged();
}

INSTANTIATE_TEST_SUITE_P(States, NumberFormatInStates, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST_P(NumberFormatInLocales, TheLocaleOfTheThreadDecides) {
    for (const char* const own : {static_cast<const char*>(nullptr), "C"}) {
        const VELSysCLocale::ThreadLC scope(LC_ALL, own, nullptr);
        QORUnicodeString s;
        s.BuildFromNum(1.5, "%.2f");
        EXPECT_EQ(TextIn(s), Printed("%.2f", 1.5));
        double number = 0;
        EXPECT_EQ(s.ConvertToNum(&number, "%lf"), 1);
        EXPECT_EQ(number, 1.5);
        s.BuildFromNum(-1234567, "%'d");
        EXPECT_EQ(TextIn(s), Printed("%'d", -1234567));
        s.BuildFromNum(-1234567);
        EXPECT_EQ(TextIn(s), "-1234567");
    }
}

INSTANTIATE_TEST_SUITE_P(Each, NumberFormatInLocales,
                         testing::Values("C", TestLocales::English, TestLocales::Turkish, TestLocales::German,
                                         TestLocales::Japanese, TestLocales::LongCurrency, TestLocales::MiddleDot,
                                         TestLocales::MiddleDotOfOneByte));

TEST(ThreadSafeStringNumbers, BuildingAnswersAStatus) {
    QORSysTSUnicodeString s("what stood here");
    EXPECT_EQ(s.BuildFromNum(-5, "%d"), VEL::StatusOk);
    EXPECT_STREQ(s.ConvertToChar(), "-5");
    EXPECT_EQ(s.BuildFromNum(7), VEL::StatusOk);
    EXPECT_STREQ(s.ConvertToChar(), "7");
    EXPECT_EQ(s.BuildFromNum(5, ""), VEL::StatusFailure);
    EXPECT_EQ(s.BuildFromNum(0, "%.0d"), VEL::StatusFailure);
    EXPECT_EQ(s.BuildFromNum(5, nullptr), VEL::StatusFailure);
    EXPECT_STREQ(s.ConvertToChar(), "7");
    EXPECT_EQ(s.BuildFromNum(1, "%0100d"), VEL::StatusOk);
    EXPECT_EQ(s.ConvertToChar(), std::string(47, '0'));
}

TEST(ThreadSafeStringNumbers, NullHandleStaysNull) {
    QORSysTSUnicodeString s;
    StringAccess::Handle(s) = nullptr;
    EXPECT_EQ(s.BuildFromNum(5), VEL::StatusOk);
    EXPECT_EQ(StringAccess::BlockOf(s), nullptr);
    int number = 5;
    EXPECT_EQ(s.ConvertToNum(number), VEL::StatusFailure);
    EXPECT_EQ(number, 5);
}

TEST(ThreadSafeStringNumbers, ReadingAnswersAStatus) {
    int number = 5;
    EXPECT_EQ(QORSysTSUnicodeString("x").ConvertToNum(number, "%d"), VEL::StatusFailure);
    EXPECT_EQ(QORSysTSUnicodeString("").ConvertToNum(number, "%d"), VEL::StatusFailure);
    EXPECT_EQ(QORSysTSUnicodeString("7").ConvertToNum(number, nullptr), VEL::StatusFailure);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(QORSysTSUnicodeString(" -7x").ConvertToNum(number), VEL::StatusOk);
    EXPECT_EQ(number, -7);
    EXPECT_EQ(QORSysTSUnicodeString(L"1f").ConvertToNum(number, "%x"), VEL::StatusOk);
    EXPECT_EQ(number, 31);
}
