#include "LocaleGuard.h"
#include "NLSTrace.h"
#include "VELSysCLocale.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <functional>
#include <iterator>
#include <langinfo.h>
#include <new>

struct VELSysCLocale::LConv::Layout {
    static_assert(offsetof(LConv, _pool) == 0 && offsetof(LConv, _values) == 1040);
    static_assert(offsetof(LConv, _conventions) == 1232 && offsetof(LConv, _used) == 1328);
    static_assert(offsetof(LConv, _source) == 1336 && sizeof(LConv) == 1344);
};

namespace {

template <class Type>
struct Item {
    nl_item item;
    Type lconv::*field;
};

// Both in the order of the slots.

constexpr Item<char*> Texts[] = {
    {RADIXCHAR, &lconv::decimal_point},
    {THOUSEP, &lconv::thousands_sep},
    {GROUPING, &lconv::grouping},
    {INT_CURR_SYMBOL, &lconv::int_curr_symbol},
    {CURRENCY_SYMBOL, &lconv::currency_symbol},
    {MON_DECIMAL_POINT, &lconv::mon_decimal_point},
    {MON_THOUSANDS_SEP, &lconv::mon_thousands_sep},
    {MON_GROUPING, &lconv::mon_grouping},
    {POSITIVE_SIGN, &lconv::positive_sign},
    {NEGATIVE_SIGN, &lconv::negative_sign},
};

constexpr Item<char> Numbers[] = {
    {INT_FRAC_DIGITS, &lconv::int_frac_digits},
    {FRAC_DIGITS, &lconv::frac_digits},
    {P_CS_PRECEDES, &lconv::p_cs_precedes},
    {P_SEP_BY_SPACE, &lconv::p_sep_by_space},
    {N_CS_PRECEDES, &lconv::n_cs_precedes},
    {N_SEP_BY_SPACE, &lconv::n_sep_by_space},
    {P_SIGN_POSN, &lconv::p_sign_posn},
    {N_SIGN_POSN, &lconv::n_sign_posn},
    // No slot holds those of the international form.
    {INT_P_CS_PRECEDES, &lconv::int_p_cs_precedes},
    {INT_P_SEP_BY_SPACE, &lconv::int_p_sep_by_space},
    {INT_N_CS_PRECEDES, &lconv::int_n_cs_precedes},
    {INT_N_SEP_BY_SPACE, &lconv::int_n_sep_by_space},
    {INT_P_SIGN_POSN, &lconv::int_p_sign_posn},
    {INT_N_SIGN_POSN, &lconv::int_n_sign_posn},
};

/// Fills all fields with what `textOf` gives for their items.
template <class TextOf>
void Fill(lconv& conventions, const TextOf& textOf) {
    for (const auto& [item, field] : Texts) {
        conventions.*field = textOf(item);
    }
    for (const auto& [item, field] : Numbers) {
        const char* const text = textOf(item);
        conventions.*field = text != nullptr ? *text : '\0';
    }
}

/// The separator that the C library writes, or a point.
wchar_t PrintedDecimalPoint() {
    constexpr std::size_t room = 32;
    wchar_t printed[room] = {};
    std::swprintf(printed, room, L"%3.1f", 0.0);
    return printed[1] != L'\0' ? printed[1] : L'.';
}

} // namespace

VELSysCLocale::LConv::~LConv() {
    _ReInit();
}

void VELSysCLocale::LConv::_ReInit() {
    for (const wchar_t*& value : _values) {
        _FreeWideCharPointer(value);
        value = nullptr;
    }
    _used = 0;
    _source = nullptr;
}

/// Not by `localeconv`, whose result is shared by all threads.
lconv* VELSysCLocale::LConv::_GetLibCLocaleConv(bool& perThread) {
    const locale_t current = uselocale(nullptr);
    perThread = VEL::internal::IsOwnLocale(current);
    if (perThread) {
        Fill(_conventions, [current](nl_item item) { return nl_langinfo_l(item, current); });
    } else {
        Fill(_conventions, [](nl_item item) { return nl_langinfo(item); });
    }
    return &_conventions;
}

void VELSysCLocale::LConv::_ReInitDecimalPoint(lconv& from) {
    const wchar_t*& point = _values[DecimalPoint];
    point = _StoreAsWideChar(from.decimal_point);
    if (point != nullptr && *point != L'\0') {
        return;
    }
    VEL::internal::NLSTrace(
        stderr, "[LConv::_ReInitDecimalPoint][WARNING] Failed to retrieve the decimal point from localeconv!\n");
    if (PoolLength - _used > 1) {
        _FreeWideCharPointer(point);
        const wchar_t printed[] = {PrintedDecimalPoint(), L'\0'};
        point = _StoreAsWideChar(printed);
    }
}

/// @return `length` zeros, or null without memory.
wchar_t* VELSysCLocale::LConv::_AllocWideCharPointer(unsigned long length) {
    if (PoolLength - _used < length) {
        return new (std::nothrow) wchar_t[length]();
    }
    wchar_t* const text = _pool + _used;
    _used += length;
    std::fill_n(text, length, L'\0');
    return text;
}

void VELSysCLocale::LConv::_FreeWideCharPointer(const wchar_t*& text) {
    const std::less<const wchar_t*> precedes;
    if (precedes(text, _pool) || !precedes(text, std::end(_pool))) {
        delete[] text;
        text = nullptr;
    }
}

const wchar_t* VELSysCLocale::LConv::_StoreAsWideChar(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::strlen(text) + 1;
    wchar_t* const wide = _AllocWideCharPointer(length);
    if (wide != nullptr) {
        // What comes before bytes that are no character stays; zeros stand behind it.
        std::mbstate_t state = {};
        std::mbsrtowcs(wide, &text, length, &state);
        wide[length - 1] = L'\0';
    }
    return wide;
}

const wchar_t* VELSysCLocale::LConv::_StoreAsWideChar(const wchar_t* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::wcslen(text) + 1;
    wchar_t* const copy = _AllocWideCharPointer(length);
    return copy != nullptr ? std::wmemcpy(copy, text, length) : nullptr;
}

/// A text of one unit, also for 0.
const wchar_t* VELSysCLocale::LConv::_StoreAsWideChar(char value) {
    constexpr unsigned long length = 2;
    wchar_t* const text = _AllocWideCharPointer(length);
    if (text != nullptr) {
        *text = static_cast<signed char>(value);
    }
    return text;
}

void VELSysCLocale::LConv::_Convert(Value value, lconv& from) {
    static_assert(std::size(Texts) == InternationalFractionDigits && Values <= Slots);
    if (value == DecimalPoint) {
        _ReInitDecimalPoint(from);
    } else if (value < InternationalFractionDigits) {
        _values[value] = _StoreAsWideChar(from.*Texts[value].field);
    } else {
        _values[value] = _StoreAsWideChar(from.*Numbers[value - InternationalFractionDigits].field);
    }
}

void VELSysCLocale::LConv::_ConvertAll(lconv& from) {
    // Decides which of them the pool holds.
    constexpr Value order[] = {
        DecimalPoint,
        Grouping,
        MonetaryGrouping,
        ThousandsSeparator,
        InternationalCurrencySymbol,
        CurrencySymbol,
        MonetaryDecimalPoint,
        MonetaryThousandsSeparator,
        PositiveSign,
        NegativeSign,
        InternationalFractionDigits,
        FractionDigits,
        PositiveSymbolPrecedes,
        PositiveSeparatedBySpace,
        NegativeSymbolPrecedes,
        NegativeSeparatedBySpace,
        PositiveSignPosition,
        NegativeSignPosition,
    };
    static_assert(std::size(order) == Values);
    for (const Value value : order) {
        _Convert(value, from);
    }
}

const wchar_t* VELSysCLocale::LConv::_Text(Value value) {
    if (_values[value] == nullptr && _source != nullptr) {
        _Convert(value, *_source);
    }
    return _values[value];
}

char VELSysCLocale::LConv::_Number(Value value) {
    const wchar_t* const text = _Text(value);
    return text != nullptr ? static_cast<char>(*text) : '\0';
}

const wchar_t* VELSysCLocale::LConv::decimal_point() {
    return _Text(DecimalPoint);
}

const wchar_t* VELSysCLocale::LConv::thousands_sep() {
    return _Text(ThousandsSeparator);
}

const wchar_t* VELSysCLocale::LConv::grouping() {
    return _Text(Grouping);
}

const wchar_t* VELSysCLocale::LConv::int_curr_symbol() {
    return _Text(InternationalCurrencySymbol);
}

const wchar_t* VELSysCLocale::LConv::currency_symbol() {
    return _Text(CurrencySymbol);
}

const wchar_t* VELSysCLocale::LConv::mon_decimal_point() {
    return _Text(MonetaryDecimalPoint);
}

const wchar_t* VELSysCLocale::LConv::mon_thousands_sep() {
    return _Text(MonetaryThousandsSeparator);
}

const wchar_t* VELSysCLocale::LConv::mon_grouping() {
    return _Text(MonetaryGrouping);
}

const wchar_t* VELSysCLocale::LConv::positive_sign() {
    return _Text(PositiveSign);
}

const wchar_t* VELSysCLocale::LConv::negative_sign() {
    return _Text(NegativeSign);
}

char VELSysCLocale::LConv::int_frac_digits() {
    return _Number(InternationalFractionDigits);
}

char VELSysCLocale::LConv::frac_digits() {
    return _Number(FractionDigits);
}

char VELSysCLocale::LConv::p_cs_precedes() {
    return _Number(PositiveSymbolPrecedes);
}

char VELSysCLocale::LConv::p_sep_by_space() {
    return _Number(PositiveSeparatedBySpace);
}

char VELSysCLocale::LConv::n_cs_precedes() {
    return _Number(NegativeSymbolPrecedes);
}

char VELSysCLocale::LConv::n_sep_by_space() {
    return _Number(NegativeSeparatedBySpace);
}

char VELSysCLocale::LConv::p_sign_posn() {
    return _Number(PositiveSignPosition);
}

char VELSysCLocale::LConv::n_sign_posn() {
    return _Number(NegativeSignPosition);
}
