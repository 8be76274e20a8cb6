#include "VELNumConvert.h"

#include "LocaleCalls.h"
#include "PlainNumber.h"
#include "QORUnicodeString.h"
#include "StringAccess.h"
#include "StringEnvironment.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <thread>

using VEL::NumConvertCtx;
using ThreadLC = VELSysCLocale::ThreadLC;

namespace {

constexpr double Untouched = -77.25;
constexpr int MiddleDot = 0xB7;
constexpr int ArabicPoint = 0x66B;
const std::string MiddleDotText = "\u00b7";

QORUnicodeString StringOf(const std::string& bytes) {
    QORUnicodeString s;
    s.BuildFromUTF8(bytes.data(), bytes.size());
    return s;
}

/// What came of reading a text.
struct Reading {
    int status = 0;
    double value = Untouched;

    bool operator==(const Reading& other) const {
        return status == other.status && std::memcmp(&value, &other.value, sizeof value) == 0;
    }
};

void PrintTo(const Reading& reading, std::ostream* out) {
    *out << std::hex << static_cast<unsigned int>(reading.status) << " with " << reading.value;
}

Reading ReadString(const QORUnicodeString& s, NumConvertCtx* ctx = nullptr) {
    Reading reading;
    reading.status = VEL::ConvertToNumEx(reading.value, s, ctx);
    return reading;
}

Reading Read(const std::string& bytes, NumConvertCtx* ctx = nullptr) {
    return ReadString(StringOf(bytes), ctx);
}

Reading ReadWith(int separator, const std::string& bytes) {
    NumConvertCtx ctx;
    ctx.SetDecimalSeparator(separator);
    return Read(bytes, &ctx);
}

Reading Good(double value) {
    return {VEL::StatusOk, value};
}

/// The fields of a context, in order.
struct ContextFields {
    VEL::_NumConvertCtx* impl;
    int flags;
    int separator;
};

ContextFields FieldsOf(const NumConvertCtx& ctx) {
    ContextFields fields;
    static_assert(sizeof fields == sizeof ctx);
    std::memcpy(static_cast<void*>(&fields), static_cast<const void*>(&ctx), sizeof fields);
    return fields;
}

/// The locale of the thread during a test: the process's, or its own.
struct ThreadLocale {
    const char* name;
    const char* process;
    const char* own = nullptr;
    int category = LC_ALL;
};

void PrintTo(const ThreadLocale& locale, std::ostream* out) {
    *out << locale.name;
}

const ThreadLocale ThreadLocales[] = {
    {"PlainC", "C"},
    {"PlainEnglish", TestLocales::English},
    {"PlainGerman", TestLocales::German},
    {"PlainTurkish", TestLocales::Turkish},
    {"PlainJapanese", TestLocales::Japanese},
    {"PlainJapaneseShiftJIS", TestLocales::JapaneseShiftJIS},
    {"PlainMiddleDot", TestLocales::MiddleDot},
    {"PlainMiddleDotOfOneByte", TestLocales::MiddleDotOfOneByte},
    {"OwnC", TestLocales::German, "C"},
    {"OwnEnglish", TestLocales::German, TestLocales::English},
    {"OwnGerman", "C", TestLocales::German},
    {"OwnTurkish", "C", TestLocales::Turkish},
    {"OwnJapanese", "C", TestLocales::Japanese},
    {"OwnJapaneseShiftJIS", "C", TestLocales::JapaneseShiftJIS},
    {"OwnLongCurrency", "C", TestLocales::LongCurrency},
    {"OwnMiddleDot", "C", TestLocales::MiddleDot},
    {"OwnMiddleDotOfOneByte", "C", TestLocales::MiddleDotOfOneByte},
    {"OwnGermanNumbers", "C", TestLocales::German, LC_NUMERIC},
};

class NumConvert : public LocaleCalls::Test {
protected:
    void SetUp() override {
        LocaleCalls::Test::SetUp();
        std::setlocale(LC_ALL, "C");
        LocaleCalls::UseEnvironmentLocale("C");
        StringEnvironment::UseCodePage(StringEnvironment::UTF8);
    }
};

class NumConvertInLocales : public NumConvert, public testing::WithParamInterface<ThreadLocale> {
protected:
    void SetUp() override {
        NumConvert::SetUp();
        TestLocales::UseLocale(GetParam().process);
        if (GetParam().own != nullptr) {
            int status = -1;
            _scope = std::make_unique<ThreadLC>(GetParam().category, GetParam().own, &status);
            ASSERT_EQ(status, VEL::StatusOk);
        }
        _locale = uselocale(nullptr);
        _processLocale = std::setlocale(LC_ALL, nullptr);
    }

    void TearDown() override {
        // Nothing but a scope's end changes the locale.
        EXPECT_EQ(uselocale(nullptr), _locale);
        EXPECT_EQ(_processLocale, std::setlocale(LC_ALL, nullptr));
        EXPECT_FALSE(LocaleCalls::IsLockHeld());
    }

private:
    std::unique_ptr<ThreadLC> _scope;
    locale_t _locale = nullptr;
    std::string _processLocale;
};

} // namespace

TEST_F(NumConvert, ContextBeginsAsResetLeavesIt) {
    NumConvertCtx ctx;
    ContextFields fields = FieldsOf(ctx);
    EXPECT_EQ(fields.impl, nullptr);
    EXPECT_EQ(fields.flags, 0);
    EXPECT_EQ(fields.separator, '.');
    ctx.SetDecimalSeparator(';');
    ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment | NumConvertCtx::Reserved);
    fields = FieldsOf(ctx);
    EXPECT_EQ(fields.flags, 17);
    EXPECT_EQ(fields.separator, ';');
    ctx.Reset();
    fields = FieldsOf(ctx);
    EXPECT_EQ(fields.flags, 0);
    EXPECT_EQ(fields.separator, '.');
}

TEST_F(NumConvert, ContextDeletesWhatItOwns) {
    static int s_deleted = 0;
    class Owned : public VEL::_NumConvertCtx {
    public:
        ~Owned() override { ++s_deleted; }
    };
    {
        NumConvertCtx ctx;
        VEL::_NumConvertCtx* const owned = new Owned;
        std::memcpy(static_cast<void*>(&ctx), static_cast<const void*>(&owned), sizeof owned);
        ctx.Reset();
        EXPECT_EQ(FieldsOf(ctx).impl, owned);
    }
    EXPECT_EQ(s_deleted, 1);
}

TEST_F(NumConvert, SeparatorIsSetAndZeroIsThePoint) {
    NumConvertCtx ctx;
    EXPECT_EQ(ctx.SetDecimalSeparator(','), 1);
    EXPECT_EQ(ctx.GetDecimalSeparator(), ',');
    EXPECT_EQ(ctx.SetDecimalSeparator(ArabicPoint), 1);
    EXPECT_EQ(ctx.GetDecimalSeparator(), ArabicPoint);
    EXPECT_EQ(ctx.SetDecimalSeparator(0), 1);
    EXPECT_EQ(ctx.GetDecimalSeparator(), '.');
}

TEST_F(NumConvert, SeparatorOfTheEnvironmentIsAskedForAndRefused) {
    NumConvertCtx ctx;
    ctx.SetDecimalSeparator(',');
    const int queries = StringEnvironment::Queries();
    ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment);
    EXPECT_EQ(StringEnvironment::Queries(), queries + 1);
    EXPECT_EQ(ctx.GetDecimalSeparator(), ',');
    EXPECT_EQ(ctx.SetDecimalSeparator(';'), 0);
    EXPECT_EQ(ctx.SetDecimalSeparator(0), 0);
    EXPECT_EQ(ctx.GetDecimalSeparator(), ',');
    ctx.SetFlags(NumConvertCtx::Reserved);
    EXPECT_EQ(StringEnvironment::Queries(), queries + 1);
    EXPECT_EQ(ctx.SetDecimalSeparator(0), 1);
    EXPECT_EQ(ctx.GetDecimalSeparator(), '.');
}

TEST_F(NumConvert, ReservedFlagComesAheadOfAll) {
    for (const int flags : {16, 17, 16 | 4}) {
        NumConvertCtx ctx;
        ctx.SetFlags(flags);
        LocaleCalls::Record();
        EXPECT_EQ(Read("1.5", &ctx), (Reading{VEL::StatusNotImplemented, Untouched}));
        EXPECT_EQ(Read("", &ctx), (Reading{VEL::StatusNotImplemented, Untouched}));
        EXPECT_THAT(LocaleCalls::Log(), testing::IsEmpty());
    }
}

TEST_F(NumConvert, OtherFlagsSayNothing) {
    NumConvertCtx ctx;
    ctx.SetFlags(2 | 4 | 8 | 32);
    EXPECT_EQ(Read("1.5", &ctx), Good(1.5));
}

TEST_F(NumConvert, EmptyTextsAreZero) {
    EXPECT_EQ(ReadString(QORUnicodeString()), Good(0));
    QORUnicodeString null;
    VEL::internal::StringAccess::Handle(null) = nullptr;
    EXPECT_EQ(ReadString(null), Good(0));
    QORUnicodeString emptied("text");
    emptied = "";
    EXPECT_EQ(ReadString(emptied), Good(0));
}

TEST_F(NumConvert, ZeroBytesEndNoNumber) {
    EXPECT_EQ(Read(std::string("1.5\0", 4)).status, VEL::StatusBadArgument);
    EXPECT_EQ(Read(std::string("1.5 \0 ", 6)).status, VEL::StatusBadArgument);
    EXPECT_EQ(Read(std::string("\0", 1)).status, VEL::StatusBadArgument);
    EXPECT_EQ(ReadWith(',', std::string("1,5\0", 4)).status, VEL::StatusBadArgument);
}

TEST_F(NumConvert, WideTextIsReadInTheCodePage) {
    for (const char* const codePage : {StringEnvironment::UTF8, StringEnvironment::OneToOne}) {
        StringEnvironment::UseCodePage(codePage);
        QORUnicodeString s;
        s.BuildFromWChar(L" 1.5 ");
        EXPECT_EQ(ReadString(s), Good(1.5));
        s.BuildFromWChar(L"1\u00b75");
        NumConvertCtx ctx;
        ctx.SetDecimalSeparator(MiddleDot);
        EXPECT_EQ(ReadString(s, &ctx), Good(1.5));
    }
}

// Its unit would be cut to the letter k.
TEST_F(NumConvert, SeparatorThatTheCodePageDoesNotHaveIsNowhere) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    EXPECT_EQ(ReadWith(ArabicPoint, "1k5").status, VEL::StatusBadArgument);
    EXPECT_EQ(ReadWith(ArabicPoint, "15"), Good(15));
}

TEST_F(NumConvert, SeparatorThatTheCodePageDoesNotHaveIsNotReported) {
    StringEnvironment::UseCodePage("ISO-8859-1");
    testing::internal::CaptureStderr();
    EXPECT_EQ(ReadWith(ArabicPoint, "15"), Good(15));
    EXPECT_EQ(ReadWith(ArabicPoint, "1.5").status, VEL::StatusBadArgument);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(NumConvert, RoundingIsThatOfTheProcessor) {
    const std::string third = "0.33333333333333333333333333";
    std::fesetround(FE_UPWARD);
    const Reading up = Read(third);
    std::fesetround(FE_DOWNWARD);
    const Reading down = Read(third);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(down, Good(1.0 / 3));
    EXPECT_EQ(up, Good(std::nextafter(1.0 / 3, 1)));
}

// Each of them would cost more than the reading.
TEST_F(NumConvert, PlainThreadMakesNoLocale) {
    Read("0x1");
    LocaleCalls::Record();
    EXPECT_EQ(Read("1.5"), Good(1.5));
    EXPECT_EQ(Read(" 0x1.8 "), Good(1.5));
    EXPECT_EQ(ReadWith(',', "1,5"), Good(1.5));
    EXPECT_EQ(ReadWith(';', "1;5"), Good(1.5));
    EXPECT_THAT(LocaleCalls::Log(), testing::Each("uselocale ?"));
}

TEST_F(NumConvert, PlainThreadReadsWithoutLocalesOfItsOwn) {
    TestLocales::UseLocale(TestLocales::German);
    const std::string process = std::setlocale(LC_ALL, nullptr);
    // The one that is kept can't be had, then one for the call can't be had either.
    for (int nth : {1, 0, 1}) {
        if (nth > 0) {
            LocaleCalls::Fail("newlocale", ENOMEM, nth);
        }
        EXPECT_EQ(Read(" 1.5"), Good(1.5));
        EXPECT_EQ(ReadWith(',', " 1,5"), Good(1.5));
        EXPECT_EQ(process, std::setlocale(LC_ALL, nullptr));
        EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
        EXPECT_FALSE(LocaleCalls::IsLockHeld());
    }
}

TEST_F(NumConvert, LocaleOfTheEnvironmentIsTakenForTheRetry) {
    NumConvertCtx ctx;
    ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment);
    LocaleCalls::UseEnvironmentLocale(TestLocales::German);
    LocaleCalls::Record();
    EXPECT_EQ(Read("1.5", &ctx), Good(1.5));
    EXPECT_THAT(LocaleCalls::Log(), testing::Contains(std::string("newlocale all ") + TestLocales::German));
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
    EXPECT_EQ(Read("1,5", &ctx).status, VEL::StatusBadArgument);
    // On a thread with a locale of its own that is enough by itself.
    const ThreadLC scope(LC_ALL, TestLocales::English, nullptr);
    LocaleCalls::Record();
    EXPECT_EQ(Read("1.5", &ctx), Good(1.5));
    EXPECT_EQ(Read("x", &ctx).status, VEL::StatusBadArgument);
    EXPECT_THAT(LocaleCalls::Log(), testing::Each("uselocale ?"));
    EXPECT_EQ(Read("1.x", &ctx).status, VEL::StatusBadArgument);
    EXPECT_THAT(LocaleCalls::Log(), testing::Contains(std::string("newlocale all ") + TestLocales::German));
}

TEST_F(NumConvert, WithoutALocaleOfTheEnvironmentItIsC) {
    TestLocales::UseLocale(TestLocales::German);
    LocaleCalls::UseEnvironmentLocale("");
    NumConvertCtx ctx;
    ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment);
    Read("", &ctx);
    LocaleCalls::Record();
    EXPECT_EQ(Read("1.5", &ctx), Good(1.5));
    EXPECT_THAT(LocaleCalls::Log(), testing::Each("uselocale ?"));
}

TEST_F(NumConvert, UnknownLocaleOfTheEnvironmentLeavesTheProcesss) {
    TestLocales::UseLocale(TestLocales::German);
    const std::string process = std::setlocale(LC_ALL, nullptr);
    LocaleCalls::UseEnvironmentLocale("no_SUCH.locale");
    NumConvertCtx ctx;
    ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment);
    EXPECT_EQ(Read("1.5", &ctx), Good(1.5));
    EXPECT_EQ(Read("1,5", &ctx).status, VEL::StatusBadArgument);
    EXPECT_EQ(process, std::setlocale(LC_ALL, nullptr));
    EXPECT_FALSE(LocaleCalls::IsLockHeld());
}

TEST_F(NumConvert, ReadsInALocaleWithALongName) {
    std::string name;
    const char* separator = "";
    for (const char* const category :
         {"LC_CTYPE", "LC_NUMERIC", "LC_TIME", "LC_COLLATE", "LC_MONETARY", "LC_MESSAGES", "LC_PAPER", "LC_NAME",
          "LC_ADDRESS", "LC_TELEPHONE", "LC_MEASUREMENT", "LC_IDENTIFICATION"}) {
        name += std::string(separator) + category + "=" + TestLocales::German;
        separator = ";";
    }
    ASSERT_LT(name.size(), 512U);
    ASSERT_NE(std::setlocale(LC_ALL, name.c_str()), nullptr);
    std::setlocale(LC_ALL, "C");
    LocaleCalls::UseEnvironmentLocale(name.c_str());
    NumConvertCtx ctx;
    ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment);
    EXPECT_EQ(Read("1.5", &ctx), Good(1.5));
}

TEST_F(NumConvert, LongTextsAreReadToo) {
    const std::string zeros(100000, '0');
    EXPECT_EQ(Read(zeros + "1.5" + zeros), Good(1.5));
    EXPECT_EQ(ReadWith(',', zeros + "1,5" + zeros), Good(1.5));
    EXPECT_EQ(ReadWith(',', zeros + "1,5" + zeros + ",").status, VEL::StatusBadArgument);
    EXPECT_EQ(ReadWith(',', zeros + "1.5" + zeros).status, VEL::StatusBadArgument);
}

TEST_P(NumConvertInLocales, TextsOfThePoint) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Read("1.5"), Good(1.5));
    EXPECT_EQ(Read("-1.5e3"), Good(-1500));
    EXPECT_EQ(Read("+.5"), Good(0.5));
    EXPECT_EQ(Read("5."), Good(5));
    EXPECT_EQ(Read("-0"), Good(-0.0));
    EXPECT_EQ(Read("0"), Good(0));
    EXPECT_EQ(Read("0x1.8p1"), Good(3));
    EXPECT_EQ(Read("inf"), Good(infinity));
    EXPECT_EQ(Read("-Infinity"), Good(-infinity));
    EXPECT_EQ(Read("1e999"), Good(infinity));
    EXPECT_EQ(Read("1e-999"), Good(0));
    EXPECT_EQ(Read("4.9e-324"), Good(4.9e-324));
    EXPECT_EQ(Read("  2  "), Good(2));
    EXPECT_EQ(Read("\t\n\v\f\r 2.5\t\n\v\f\r "), Good(2.5));
    EXPECT_EQ(Read(""), Good(0));
    for (const char* const text : {"abc", "2x", "2I", "1.5.5", "1,5", ".", "-", "+", " ", "e5", "1 5", "1e", "0x",
                                   "- 1", "1.5,", "\u00b7", "1\u00b75", "1.5\u00b7"}) {
        EXPECT_EQ(Read(text).status, VEL::StatusBadArgument) << text;
    }
}

TEST_P(NumConvertInLocales, TextsOfTheComma) {
    EXPECT_EQ(ReadWith(',', "1,5"), Good(1.5));
    EXPECT_EQ(ReadWith(',', " -1,5e3 "), Good(-1500));
    EXPECT_EQ(ReadWith(',', ",5"), Good(0.5));
    EXPECT_EQ(ReadWith(',', "5,"), Good(5));
    EXPECT_EQ(ReadWith(',', "15"), Good(15));
    EXPECT_EQ(ReadWith(',', ""), Good(0));
    for (const char* const text : {"1.5", "1,5,5", "1,5.", ",", "1,5x", "1.5,5"}) {
        EXPECT_EQ(ReadWith(',', text).status, VEL::StatusBadArgument) << text;
    }
}

TEST_P(NumConvertInLocales, TextsOfOtherSeparators) {
    EXPECT_EQ(ReadWith(MiddleDot, "1" + MiddleDotText + "5"), Good(1.5));
    EXPECT_EQ(ReadWith(MiddleDot, "15"), Good(15));
    EXPECT_EQ(ReadWith(MiddleDot, "1" + MiddleDotText + "5" + MiddleDotText).status, VEL::StatusBadArgument);
    EXPECT_EQ(ReadWith(MiddleDot, "1.5").status, VEL::StatusBadArgument);
    EXPECT_EQ(ReadWith(ArabicPoint, "1\u066b5"), Good(1.5));
    EXPECT_EQ(ReadWith(' ', "1 5"), Good(1.5));
    EXPECT_EQ(ReadWith('e', "1e5"), Good(1.5));
    for (const int separator : {-1, -'.', 0x110000, 0xD800, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(ReadWith(separator, "15"), Good(15)) << separator;
        EXPECT_EQ(ReadWith(separator, "1.5").status, VEL::StatusBadArgument) << separator;
    }
}

// The separator is found in the bytes that the text has.
TEST_P(NumConvertInLocales, TextsInOtherCodePages) {
    struct Case {
        const char* codePage;
        wchar_t separator;
    };
    const wchar_t katakanaDot = 0x30FB;
    for (const auto& [codePage, separator] :
         {Case{"ISO-8859-1", MiddleDot}, Case{"SHIFT_JIS", katakanaDot}, Case{"EUC-JP", katakanaDot},
          Case{"GB18030", ArabicPoint}, Case{"BIG5", 0x3002}, Case{"EUC-KR", MiddleDot}}) {
        SCOPED_TRACE(codePage);
        StringEnvironment::UseCodePage(codePage, 4);
        NumConvertCtx ctx;
        ctx.SetDecimalSeparator(separator);
        const auto read = [&, dot = separator](std::wstring text) {
            std::replace(text.begin(), text.end(), L'|', dot);
            QORUnicodeString s;
            s.BuildFromWChar(text.c_str());
            return ReadString(s, &ctx);
        };
        EXPECT_EQ(read(L" -1|5e1 "), Good(-15));
        EXPECT_EQ(read(L"|5"), Good(0.5));
        EXPECT_EQ(read(L"15"), Good(15));
        EXPECT_EQ(read(L"1|5|").status, VEL::StatusBadArgument);
        EXPECT_EQ(read(L"1.5").status, VEL::StatusBadArgument);
        EXPECT_EQ(read(L"|").status, VEL::StatusBadArgument);
        ctx.Reset();
        EXPECT_EQ(read(L" -1.5e1 "), Good(-15));
        EXPECT_EQ(read(L"1|5").status, VEL::StatusBadArgument);
    }
}

// Formats follow the locale.
TEST_P(NumConvertInLocales, FormatsWriteAndReadTheLocalesOwn) {
    char expected[32];
    std::snprintf(expected, sizeof expected, "%.2f", 1.5);
    QORUnicodeString s;
    EXPECT_EQ(s.BuildFromNum(1.5, "%.2f"), static_cast<int>(std::strlen(expected)));
    EXPECT_STREQ(s.ConvertToChar(), expected);
    double value = 0;
    EXPECT_EQ(s.ConvertToNum(&value, "%lf"), 1);
    EXPECT_EQ(value, 1.5);
}

// The definition is the oracle: for text of pieces that numbers are made of.
TEST_P(NumConvertInLocales, RandomTextsReadAsDefined) {
    const std::vector<std::string> pieces = {"0",
                                             "1",
                                             "25",
                                             "7",
                                             ".",
                                             ".",
                                             ",",
                                             ",",
                                             "e",
                                             "E-",
                                             "+",
                                             "-",
                                             "0x",
                                             "p",
                                             "inf",
                                             "nan",
                                             "nan(1)",
                                             " ",
                                             "\t",
                                             "x",
                                             MiddleDotText,
                                             "\u066b",
                                             std::string(1, '\0'),
                                             "308",
                                             "99999999999999999999"};
    std::mt19937 random(20);
    const auto upTo = [&](std::size_t n) { return static_cast<std::size_t>(random()) % n; };
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t n = upTo(8); n > 0; --n) {
            text += pieces[upTo(pieces.size())];
        }
        constexpr int separators[] = {'.', ',', '.', ',', 'e', ' ', '1', '-', MiddleDot, ArabicPoint, -5, 0x110000};
        const int separator = separators[upTo(std::size(separators))];
        const char* const environments[] = {nullptr, nullptr, nullptr, "", "C", TestLocales::German};
        const char* const environment = environments[upTo(std::size(environments))];
        NumConvertCtx ctx;
        ctx.SetDecimalSeparator(separator);
        if (environment != nullptr) {
            LocaleCalls::UseEnvironmentLocale(environment);
            ctx.SetFlags(NumConvertCtx::LocaleOfEnvironment);
        }
        LocaleCalls::Record();
        const QORUnicodeString s = StringOf(text);
        Reading expected;
        expected.status = PlainNumber::Convert(expected.value, s, separator, environment);
        ASSERT_EQ(ReadString(s, &ctx), expected) << "\"" << text << "\" with " << separator;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, NumConvertInLocales, testing::ValuesIn(ThreadLocales),
                         [](const auto& test) { return test.param.name; });

TEST_F(NumConvert, DecimalTextsReadAsDefined) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 200000; ++round) {
        // Any number, written with few digits or with all of them.
        std::uint64_t bits = random();
        double number;
        std::memcpy(&number, &bits, sizeof number);
        char text[64];
        const int digits = static_cast<int>(random() % 20);
        std::snprintf(text, sizeof text, random() % 2 == 0 ? "%.*g" : "%.*e", digits, number);
        Reading expected{VEL::StatusOk, std::strtod(text, nullptr)};
        ASSERT_EQ(Read(text), expected) << text;
        if (char* const point = std::strchr(text, '.')) {
            *point = ',';
            ASSERT_EQ(ReadWith(',', text), expected) << text;
        }
    }
}

TEST_F(NumConvert, ThreadsReadAtOnce) {
    const QORUnicodeString point("  1.5");
    const QORUnicodeString comma("1,5");
    NumConvertCtx commaContext;
    commaContext.SetDecimalSeparator(',');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            std::unique_ptr<ThreadLC> scope;
            if (i > 1) {
                scope =
                    std::make_unique<ThreadLC>(LC_ALL, i == 2 ? TestLocales::German : TestLocales::MiddleDot, nullptr);
            }
            for (int round = 0; round < 500; ++round) {
                ASSERT_EQ(ReadString(point), Good(1.5));
                ASSERT_EQ(ReadString(comma, &commaContext), Good(1.5));
                ASSERT_EQ(ReadString(comma).status, VEL::StatusBadArgument);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

CHILD_PROGRAM(ReadsOneNumber) {
    std::setlocale(LC_ALL, "C");
    double value = 0;
    const int status = VEL::ConvertToNumEx(value, QORUnicodeString("1.5"), nullptr);
    std::setlocale(LC_ALL, "en_US.UTF-8");
    std::fputs(GetLocaleBeforeLoad(), stdout);
    return status;
}

TEST(NumConvertFirstUse, KeepsTheProcesssLocaleAndTracesNothing) {
    const Child child =
        RunChild("ReadsOneNumber", {.set = {{"LOCPATH", QOR_TEST_LOCALES}, {"VELSysNLSCoreTrace", ""}}});
    EXPECT_EQ(child.out, "C");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.exitCode, 0);
}
