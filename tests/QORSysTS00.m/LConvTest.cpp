#include "LocaleCalls.h"
#include "VELSysCLocale.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <cwchar>
#include <gmock/gmock.h>
#include <optional>

namespace {

using LocaleCalls::Answer;
using LocaleCalls::BlocksHeld;
using LocaleCalls::Log;
using LocaleCalls::Record;
using testing::ElementsAre;
using LConv = VELSysCLocale::LConv;
using ThreadLC = VELSysCLocale::ThreadLC;

constexpr std::size_t PoolLength = 260;

/// The fields in order.
struct Fields {
    wchar_t pool[PoolLength];
    const wchar_t* values[24];
    lconv conventions;
    unsigned long used;
    const lconv* source;
};

const Fields& FieldsOf(const LConv& conventions) {
    static_assert(sizeof(Fields) == sizeof conventions);
    static thread_local Fields fields;
    std::memcpy(static_cast<void*>(&fields), static_cast<const void*>(&conventions), sizeof fields);
    return fields;
}

class Conventions : public LocaleCalls::Test {
protected:
    void SetUp() override {
        Test::SetUp();
        GetLocaleBeforeLoad();
    }
    void TearDown() override { EXPECT_EQ(LocaleCalls::LocaleConvCalls(), 0); }

    /// Fills the conventions of a thread's own locale.
    void FillOwn(const char* locale) {
        _scope.emplace(LC_ALL, locale, nullptr);
        ASSERT_TRUE(VELSysCLocaleIsPerThread());
        VELSysCLocale::GetLCConv(_conventions);
    }

    std::optional<ThreadLC> _scope;
    LConv _conventions;
};

using Text = const wchar_t* (LConv::*)();
using Number = char (LConv::*)();

struct TextCase {
    const char* name;
    nl_item item;
    Text text;
};

struct NumberCase {
    const char* name;
    nl_item item;
    Number number;
};

// Both in the order of the slots.
const std::vector<TextCase> Texts = {{"DecimalPoint", RADIXCHAR, &LConv::decimal_point},
                                     {"ThousandsSeparator", THOUSEP, &LConv::thousands_sep},
                                     {"Grouping", GROUPING, &LConv::grouping},
                                     {"InternationalSymbol", INT_CURR_SYMBOL, &LConv::int_curr_symbol},
                                     {"Symbol", CURRENCY_SYMBOL, &LConv::currency_symbol},
                                     {"MonetaryPoint", MON_DECIMAL_POINT, &LConv::mon_decimal_point},
                                     {"MonetaryThousands", MON_THOUSANDS_SEP, &LConv::mon_thousands_sep},
                                     {"MonetaryGrouping", MON_GROUPING, &LConv::mon_grouping},
                                     {"PositiveSign", POSITIVE_SIGN, &LConv::positive_sign},
                                     {"NegativeSign", NEGATIVE_SIGN, &LConv::negative_sign}};
const std::vector<NumberCase> Numbers = {{"InternationalDigits", INT_FRAC_DIGITS, &LConv::int_frac_digits},
                                         {"Digits", FRAC_DIGITS, &LConv::frac_digits},
                                         {"PositivePrecedes", P_CS_PRECEDES, &LConv::p_cs_precedes},
                                         {"PositiveSpace", P_SEP_BY_SPACE, &LConv::p_sep_by_space},
                                         {"NegativePrecedes", N_CS_PRECEDES, &LConv::n_cs_precedes},
                                         {"NegativeSpace", N_SEP_BY_SPACE, &LConv::n_sep_by_space},
                                         {"PositivePosition", P_SIGN_POSN, &LConv::p_sign_posn},
                                         {"NegativePosition", N_SIGN_POSN, &LConv::n_sign_posn}};

} // namespace

TEST_F(Conventions, AreUnknownBeforeTheyAreFilled) {
    for (const TextCase& c : Texts) {
        EXPECT_EQ((_conventions.*c.text)(), nullptr) << c.name;
    }
    for (const NumberCase& c : Numbers) {
        EXPECT_EQ((_conventions.*c.number)(), 0) << c.name;
    }
}

TEST_F(Conventions, EachValueIsItsItemInItsSlot) {
    std::vector<std::string> answers;
    for (const TextCase& c : Texts) {
        answers.emplace_back(c.name);
    }
    for (std::size_t i = 0; i < Texts.size(); ++i) {
        Answer(Texts[i].item, answers[i].c_str());
    }
    static const char digits[][2] = {"\1", "\2", "\3", "\4", "\5", "\6", "\7", "\x8"};
    for (std::size_t i = 0; i < Numbers.size(); ++i) {
        Answer(Numbers[i].item, digits[i]);
    }
    const auto expectAll = [&] {
        for (std::size_t i = 0; i < Texts.size(); ++i) {
            const wchar_t* const text = (_conventions.*Texts[i].text)();
            ASSERT_NE(text, nullptr);
            EXPECT_EQ(text, std::wstring(answers[i].begin(), answers[i].end()));
            EXPECT_EQ(FieldsOf(_conventions).values[i], text);
        }
        for (std::size_t i = 0; i < Numbers.size(); ++i) {
            EXPECT_EQ((_conventions.*Numbers[i].number)(), static_cast<int>(i) + 1);
            const wchar_t* const slot = FieldsOf(_conventions).values[Texts.size() + i];
            ASSERT_NE(slot, nullptr);
            EXPECT_EQ(slot, std::wstring(1, static_cast<wchar_t>(i + 1)));
        }
        for (std::size_t i = 18; i < 24; ++i) {
            EXPECT_EQ(FieldsOf(_conventions).values[i], nullptr);
        }
    };
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_EQ(FieldsOf(_conventions).source, nullptr);
    expectAll();
    FillOwn(TestLocales::English);
    EXPECT_NE(FieldsOf(_conventions).source, nullptr);
    expectAll();
}

TEST_F(Conventions, TheStructIsFilledWithAllItems) {
    FillOwn(TestLocales::German);
    const lconv& c = FieldsOf(_conventions).conventions;
    EXPECT_STREQ(c.decimal_point, ",");
    EXPECT_STREQ(c.int_curr_symbol, "EUR ");
    const nl_item items[] = {INT_P_CS_PRECEDES,  INT_P_SEP_BY_SPACE, INT_N_CS_PRECEDES,
                             INT_N_SEP_BY_SPACE, INT_P_SIGN_POSN,    INT_N_SIGN_POSN};
    const char values[] = {c.int_p_cs_precedes,  c.int_p_sep_by_space, c.int_n_cs_precedes,
                           c.int_n_sep_by_space, c.int_p_sign_posn,    c.int_n_sign_posn};
    for (std::size_t i = 0; i < std::size(items); ++i) {
        EXPECT_EQ(values[i], *nl_langinfo_l(items[i], uselocale(nullptr)));
    }
}

TEST_F(Conventions, OfAThreadsOwnLocaleTakeNoLockAndAreConvertedOnRequest) {
    _scope.emplace(LC_ALL, TestLocales::German, nullptr);
    Record();
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?"));
    EXPECT_EQ(FieldsOf(_conventions).used, 0U);
    EXPECT_EQ(FieldsOf(_conventions).source,
              reinterpret_cast<const lconv*>(reinterpret_cast<const char*>(&_conventions) + 1232));
    const wchar_t* const point = _conventions.decimal_point();
    EXPECT_STREQ(point, L",");
    EXPECT_EQ(FieldsOf(_conventions).used, 2U);
    EXPECT_EQ(_conventions.decimal_point(), point) << "and kept";
    EXPECT_EQ(FieldsOf(_conventions).used, 2U);
    EXPECT_EQ(_conventions.frac_digits(), 2);
    EXPECT_EQ(FieldsOf(_conventions).used, 4U);
    EXPECT_EQ(_conventions.n_cs_precedes(), 0);
    EXPECT_EQ(FieldsOf(_conventions).used, 6U) << "a zero takes two places";
}

TEST_F(Conventions, OfThePlainThreadAreConvertedAtOnceUnderTheLock) {
    TestLocales::UseLocale(TestLocales::German);
    Record();
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "uselocale ?", "WriteLock", "uselocale ?", "WriteUnlock"));
    EXPECT_FALSE(LocaleCalls::IsLockHeld());
    TestLocales::UseLocale(TestLocales::English);
    Record();
    EXPECT_STREQ(_conventions.decimal_point(), L",");
    EXPECT_STREQ(_conventions.int_curr_symbol(), L"EUR ");
    EXPECT_EQ(_conventions.p_cs_precedes(), 0);
    EXPECT_THAT(Log(), ElementsAre()) << "without the C library";
}

TEST_F(Conventions, OfThePlainThreadAreConvertedInThisOrder) {
    TestLocales::UseLocale(TestLocales::German);
    VELSysCLocale::GetLCConv(_conventions);
    const Text order[] = {&LConv::decimal_point,     &LConv::grouping,          &LConv::mon_grouping,
                          &LConv::thousands_sep,     &LConv::int_curr_symbol,   &LConv::currency_symbol,
                          &LConv::mon_decimal_point, &LConv::mon_thousands_sep, &LConv::positive_sign,
                          &LConv::negative_sign};
    const wchar_t* next = (_conventions.*order[0])();
    for (const Text text : order) {
        EXPECT_EQ((_conventions.*text)(), next);
        next += std::wcslen(next) + 1;
    }
    for (std::size_t i = 0; i < Numbers.size(); ++i) {
        EXPECT_EQ(FieldsOf(_conventions).values[Texts.size() + i], next);
        next += 2;
    }
}

TEST_F(Conventions, AreWideTextOfTheThreadsLocale) {
    FillOwn(TestLocales::Japanese);
    const std::string bytes = nl_langinfo_l(CURRENCY_SYMBOL, uselocale(nullptr));
    ASSERT_EQ(bytes.size(), 2U);
    EXPECT_STREQ(_conventions.currency_symbol(), L"\uffe5");
    FillOwn(TestLocales::LongCurrency);
    EXPECT_EQ(_conventions.currency_symbol()[0], L'\u20ac');
}

TEST_F(Conventions, ALongCurrencySymbolIsOnTheHeapAndGivenBack) {
    const int before = BlocksHeld();
    FillOwn(TestLocales::LongCurrency);
    EXPECT_EQ(std::wcslen(_conventions.currency_symbol()), 300U);
    EXPECT_EQ(BlocksHeld(), before + 1);
    EXPECT_EQ(FieldsOf(_conventions).used, 0U);
    EXPECT_STREQ(_conventions.decimal_point(), L".");
    EXPECT_EQ(FieldsOf(_conventions).used, 2U) << "the pool serves the others";
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_EQ(BlocksHeld(), before);
    EXPECT_EQ(FieldsOf(_conventions).used, 0U);
    _scope.reset();
    TestLocales::UseLocale(TestLocales::LongCurrency);
    {
        LConv eager;
        VELSysCLocale::GetLCConv(eager);
        EXPECT_EQ(std::wcslen(eager.currency_symbol()), 300U);
        EXPECT_EQ(BlocksHeld(), before + 1);
    }
    EXPECT_EQ(BlocksHeld(), before);
}

TEST_F(Conventions, ThePoolIsUsedToItsEnd) {
    const int before = BlocksHeld();
    const std::string fitting(PoolLength - 1, 'x');
    Answer(CURRENCY_SYMBOL, fitting.c_str());
    FillOwn(TestLocales::English);
    EXPECT_EQ(_conventions.currency_symbol(), std::wstring(PoolLength - 1, L'x'));
    EXPECT_EQ(FieldsOf(_conventions).used, PoolLength);
    EXPECT_EQ(BlocksHeld(), before);
    EXPECT_STREQ(_conventions.mon_decimal_point(), L".");
    EXPECT_EQ(_conventions.frac_digits(), 2);
    EXPECT_EQ(BlocksHeld(), before + 2);
    const std::string larger(PoolLength, 'x');
    Answer(CURRENCY_SYMBOL, larger.c_str());
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_EQ(_conventions.currency_symbol(), std::wstring(PoolLength, L'x'));
    EXPECT_EQ(FieldsOf(_conventions).used, 0U);
    EXPECT_EQ(BlocksHeld(), before + 1);
}

TEST_F(Conventions, WithoutMemoryALongTextIsUnknown) {
    FillOwn(TestLocales::LongCurrency);
    LocaleCalls::Fail("new", ENOMEM);
    EXPECT_EQ(_conventions.currency_symbol(), nullptr);
    EXPECT_NE(_conventions.currency_symbol(), nullptr) << "until there is memory";
}

TEST_F(Conventions, WithoutItemTheValueIsUnknown) {
    Answer(THOUSEP, nullptr);
    Answer(FRAC_DIGITS, nullptr);
    FillOwn(TestLocales::English);
    EXPECT_EQ(_conventions.thousands_sep(), nullptr);
    EXPECT_EQ(_conventions.frac_digits(), 0);
}

TEST_F(Conventions, TextIsKeptUpToDamage) {
    Answer(CURRENCY_SYMBOL, "ab\xff"
                            "cd");
    FillOwn(TestLocales::English);
    const wchar_t* const symbol = _conventions.currency_symbol();
    EXPECT_STREQ(symbol, L"ab");
    EXPECT_EQ(FieldsOf(_conventions).used, 6U);
    EXPECT_EQ(symbol[5], L'\0');
}

TEST_F(Conventions, NumbersAreSigned) {
    Answer(FRAC_DIGITS, "\xff");
    Answer(P_SIGN_POSN, "\x7f");
    FillOwn(TestLocales::English);
    EXPECT_EQ(_conventions.frac_digits(), -1);
    EXPECT_EQ(FieldsOf(_conventions).values[11][0], -1);
    EXPECT_EQ(_conventions.p_sign_posn(), CHAR_MAX);
}

TEST_F(Conventions, ADecimalPointThatIsMissingIsThePrintedOne) {
    for (const char* const missing : {static_cast<const char*>(nullptr), ""}) {
        Answer(RADIXCHAR, missing);
        FillOwn(TestLocales::German);
        EXPECT_STREQ(_conventions.decimal_point(), L",");
    }
    Answer(RADIXCHAR, "\xff");
    FillOwn(TestLocales::English);
    EXPECT_STREQ(_conventions.decimal_point(), L".") << "not sound in UTF-8";
}

TEST_F(Conventions, ADecimalPointThatCannotBePrintedIsAPoint) {
    Answer(RADIXCHAR, nullptr);
    FillOwn(TestLocales::German);
    LocaleCalls::Fail("swprintf", EILSEQ);
    EXPECT_STREQ(_conventions.decimal_point(), L".");
}

TEST_F(Conventions, APrintedDecimalPointIsNotPutOnTheHeap) {
    Answer(RADIXCHAR, nullptr);
    const std::string filling(PoolLength - 2, 'x');
    Answer(CURRENCY_SYMBOL, filling.c_str());
    FillOwn(TestLocales::German);
    ASSERT_NE(_conventions.currency_symbol(), nullptr);
    EXPECT_EQ(_conventions.decimal_point(), nullptr) << "one place is free";
    const std::string shorter(PoolLength - 3, 'x');
    Answer(CURRENCY_SYMBOL, shorter.c_str());
    VELSysCLocale::GetLCConv(_conventions);
    ASSERT_NE(_conventions.currency_symbol(), nullptr);
    EXPECT_STREQ(_conventions.decimal_point(), L",") << "two are";
    EXPECT_EQ(FieldsOf(_conventions).used, PoolLength);
}

TEST_F(Conventions, APointThatCantBeConvertedIsGivenBack) {
    const int before = BlocksHeld();
    {
        LConv c;
        Answer(RADIXCHAR, "\xff\xff");
        const std::string filling(PoolLength - 3, 'x');
        Answer(CURRENCY_SYMBOL, filling.c_str());
        const ThreadLC scope(LC_ALL, TestLocales::English, nullptr);
        VELSysCLocale::GetLCConv(c);
        ASSERT_NE(c.currency_symbol(), nullptr);
        EXPECT_STREQ(c.decimal_point(), L".");
    }
    EXPECT_EQ(BlocksHeld(), before);
}

TEST_F(Conventions, FilledAtOnceNoLongerLookAtTheFormerLocale) {
    FillOwn(TestLocales::German);
    _scope.reset();
    Answer(THOUSEP, nullptr);
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_EQ(FieldsOf(_conventions).source, nullptr);
}

TEST_F(Conventions, FilledAnewShowNothingOfTheFormerText) {
    const std::string filling(PoolLength - 1, 'x');
    Answer(CURRENCY_SYMBOL, filling.c_str());
    FillOwn(TestLocales::English);
    ASSERT_NE(_conventions.currency_symbol(), nullptr);
    Answer(CURRENCY_SYMBOL, "ab\xff"
                            "cd");
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_STREQ(_conventions.currency_symbol(), L"ab");
    EXPECT_EQ(_conventions.frac_digits(), 2);
    EXPECT_STREQ(FieldsOf(_conventions).values[11], L"\x2");
}

TEST_F(Conventions, OfThePlainThreadAreConvertedUnderTheLock) {
    TestLocales::UseLocale(TestLocales::LongCurrency);
    Record();
    VELSysCLocale::GetLCConv(_conventions);
    EXPECT_THAT(Log(), ElementsAre("uselocale ?", "uselocale ?", "WriteLock", "uselocale ?", "new", "WriteUnlock"));
}

CHILD_PROGRAM(FillsConventions) {
    LocaleCalls::PrintProcessId();
    LConv conventions;
    VELSysCLocale::GetLCConv(conventions);
    const ThreadLC scope(LC_ALL, TestLocales::German, nullptr);
    VELSysCLocale::GetLCConv(conventions);
    Answer(RADIXCHAR, nullptr);
    VELSysCLocale::GetLCConv(conventions);
    conventions.decimal_point();
    return 0;
}

TEST(ConventionsReport, TellsOfTheLockAndOfAMissingPoint) {
    const Child child = LocaleCalls::Traced("FillsConventions");
    EXPECT_EQ(child.out, "[PID][VELSysCLocale::ThreadLC][WARNING] MT-unsafe environment! GetLCConv is taking a global "
                         "lock - Locale per-thread: false | MT-safe localeconv: false\n\n");
    EXPECT_EQ(child.err, "[PID][LConv::_ReInitDecimalPoint][WARNING] Failed to retrieve the decimal point from "
                         "localeconv!\n\n");
    EXPECT_EQ(child.exitCode, 0);
}
