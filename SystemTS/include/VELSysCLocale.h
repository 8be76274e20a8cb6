/// @file
/// The C locale of one thread.
///
/// The C library's `setlocale` and `localeconv` are the whole process's, and a thread that calls them disturbs all
/// others. Here a thread takes another locale for a few calls, and reads how the locale writes numbers and money, on
/// its own. Categories are those of `setlocale`, `LC_CTYPE` (0) to `LC_ALL` (6).
///
/// @code
/// int status = 0;
/// VELSysCLocale::ThreadLC scope(LC_NUMERIC, "C", &status);
/// const double value = std::strtod(text, nullptr);
/// @endcode
#pragma once

#include "QORSysTSExport.h"

#include <clocale>

/// Locales of threads and of the process.
class QORSYSTS_EXPORT VELSysCLocale {
public:
    /// Bytes that always hold what VELSysCLocaleEnvironGet() gives: it comes from a line of the language table, which
    /// has no more.
    static constexpr unsigned int EnvironNameSize = 512;

    /// Gives the calling thread another locale, for as long as the object lives.
    ///
    /// Where the C library refuses a locale for the thread, the process's is set, under a lock that is held until the
    /// locale is restored: such scopes must be short and must not wait for other threads, which a language decision
    /// makes wait for the scope. Scopes of one thread nest, and end in reverse order on that thread.
    class ThreadLC;

    /// How a locale writes numbers and money, as wide text. Belongs to one thread.
    class LConv;

    /// `setlocale` for the whole process. What it was before this library touched it is kept, see
    /// GetLocaleBeforeLoad().
    /// @return As `setlocale`; null, with nothing changed, when the calling thread has a locale of its own.
    static char* SetLocale(int category, const char* locale);

    /// Fills `out` from the calling thread's locale, without the heap in the usual case.
    ///
    /// On a thread with a locale of its own no text is converted before it is asked for, so the values must be read
    /// while that locale is in force. On other threads all is converted at once, under the process-wide lock.
    static void GetLCConv(LConv& out);

    /// The locale name by which the C library knows a locale string of the language table; empty, which stands for
    /// the environment's, when it is the environment's own.
    /// @param out   Receives the name, as `strncpy` copies it: unterminated when it has `size` bytes or more. Null
    ///              receives nothing.
    /// @param size  Bytes of `out`.
    /// @return `out`.
    static char* GetLocaleStringFromLangString(const char* langString, char* out, unsigned int size);
};

class QORSYSTS_EXPORT VELSysCLocale::ThreadLC {
public:
    /// @param category  What changes. Numbers above `LC_ALL` stand for `LC_ALL` where the locale is the thread's
    ///                  own; the process knows none of them.
    /// @param locale    The locale's name; empty for the environment's.
    /// @param status    Receives 0 when the locale is in force; 1 when it was so before and the process-wide lock is
    ///                  held; VEL::StatusFailure when `locale` is null or the present locale can't be had or kept;
    ///                  VEL::StatusBadArgument when `category` is negative or the C library refuses the locale. Null
    ///                  receives nothing. After a failure there is nothing to restore.
    ThreadLC(int category, const char* locale, int* status);
    ThreadLC(const ThreadLC&) = delete;
    ThreadLC& operator=(const ThreadLC&) = delete;
    /// Reset().
    ~ThreadLC();

    /// Restores the former locale, once.
    void Reset();

private:
    struct Layout;

    QORSYSTS_PRIVATE bool _SetForThread(int category, const char* locale);
    QORSYSTS_PRIVATE bool _Install(locale_t locale, locale_t current);
    QORSYSTS_PRIVATE int _SetForProcess(int category, const char* locale);
    QORSYSTS_PRIVATE void _Lock();
    QORSYSTS_PRIVATE void _Unlock();

    /// The process's locale to restore, from array `new`; null on the thread's own path.
    char* _savedName = nullptr;
    /// The thread's former locale.
    locale_t _savedLocale = nullptr;
    int _category = 0;
    unsigned short _flags = 0;
};

class QORSYSTS_EXPORT VELSysCLocale::LConv {
public:
    LConv() = default;
    LConv(const LConv&) = delete;
    LConv& operator=(const LConv&) = delete;
    ~LConv();

    // Texts as in `struct lconv`, zero-terminated. They stay the object's until it is filled anew; null when unknown or
    // without memory.

    const wchar_t* decimal_point();
    const wchar_t* thousands_sep();
    const wchar_t* grouping();
    const wchar_t* int_curr_symbol();
    const wchar_t* currency_symbol();
    const wchar_t* mon_decimal_point();
    const wchar_t* mon_thousands_sep();
    const wchar_t* mon_grouping();
    const wchar_t* positive_sign();
    const wchar_t* negative_sign();

    // Small numbers as in `struct lconv`; 0 when unknown. What the locale leaves open is as the locale's data have it:
    // -1 or `CHAR_MAX`.

    char int_frac_digits();
    char frac_digits();
    char p_cs_precedes();
    char p_sep_by_space();
    char n_cs_precedes();
    char n_sep_by_space();
    char p_sign_posn();
    char n_sign_posn();

private:
    friend class VELSysCLocale;
    struct Layout;

    static constexpr unsigned long PoolLength = 260;
    static constexpr int Slots = 24;
    /// Slots of the values; the rest stays empty.
    enum Value : int {
        DecimalPoint,
        ThousandsSeparator,
        Grouping,
        InternationalCurrencySymbol,
        CurrencySymbol,
        MonetaryDecimalPoint,
        MonetaryThousandsSeparator,
        MonetaryGrouping,
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
        Values
    };

    QORSYSTS_PRIVATE void _ReInit();
    QORSYSTS_PRIVATE lconv* _GetLibCLocaleConv(bool& perThread);
    QORSYSTS_PRIVATE void _ReInitDecimalPoint(lconv& from);
    QORSYSTS_PRIVATE wchar_t* _AllocWideCharPointer(unsigned long length);
    QORSYSTS_PRIVATE void _FreeWideCharPointer(const wchar_t*& text);
    QORSYSTS_PRIVATE const wchar_t* _StoreAsWideChar(const char* text);
    QORSYSTS_PRIVATE const wchar_t* _StoreAsWideChar(const wchar_t* text);
    QORSYSTS_PRIVATE const wchar_t* _StoreAsWideChar(char value);
    QORSYSTS_PRIVATE void _Convert(Value value, lconv& from);
    QORSYSTS_PRIVATE void _ConvertAll(lconv& from);
    QORSYSTS_PRIVATE const wchar_t* _Text(Value value);
    QORSYSTS_PRIVATE char _Number(Value value);

    /// Cleared where it is handed out.
    wchar_t _pool[PoolLength];
    /// Each in the pool or from array `new`; null until known.
    const wchar_t* _values[Slots] = {};
    lconv _conventions = {};
    unsigned long _used = 0;
    /// `_conventions` while values are converted on request; null when all have been.
    lconv* _source = nullptr;
};

/// Whether the calling thread has a locale of its own.
QORSYSTS_EXPORT bool VELSysCLocaleIsPerThread();

/// Changes nothing: tells whether the calling thread is as wanted.
/// @param perThread  1 for a locale of its own, 0 for the process's.
/// @return 0 when it is, otherwise -1.
QORSYSTS_EXPORT int VELSysCLocaleSetPerThread(int perThread);

/// The process's locale before this library first touched it, cut to 85 bytes; empty when it could not be had.
QORSYSTS_EXPORT const char* GetLocaleBeforeLoad();

/// The locale string of the language decision that the C library has accepted; empty for the environment's locale and
/// when there is none.
/// @param out  Receives the string with its terminator: VELSysCLocale::EnvironNameSize bytes are always
///             enough. Null receives nothing.
/// @return `out`.
QORSYSTS_EXPORT char* VELSysCLocaleEnvironGet(char* out);
