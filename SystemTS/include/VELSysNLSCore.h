/// @file
/// The language decision: under which language, locale and code page the process runs.
///
/// It is made when it is first asked for, from the environment and the installation's language table "SUPPLANG_R9",
/// and made anew when a change is announced. Whatever happens, there is an answer: a row of the table, or, without a
/// table, "English" with the code set that the environment names.
///
/// @code
/// VELSysNLSEnv env = {};
/// if (GetEnvNLSData(&env) == VEL::StatusOk) {
///     std::printf("%s in %s\n", env.language, env.codePage); // "Japanese in EUC-JP"
/// }
/// @endcode
///
/// All functions may be called by any thread at once. Status codes are those of VELSysStatus.h.
#pragma once

#include "QORSysTSExport.h"

#include <cstddef>
#include <locale>
#include <memory>
#include <set>
#include <string>

/// The plain record of the language decision. Callers may zero it and pass it in.
struct VELSysNLSEnv {
    char language[32];       ///< Current language, or empty when it has 32 characters or more.
    char alias[32];          ///< Its alias, likewise.
    char langString[32];     ///< Its locale string, likewise.
    char codePage[16];       ///< Current code page, or empty when it has 16 characters or more.
    wchar_t decimalPoint[8]; ///< Decimal separator of the locale, or empty when it has 8 wide characters or more.
    long maxCharSize;        ///< Longest multi-byte character in bytes.
};

static_assert(sizeof(VELSysNLSEnv) == 152);
static_assert(offsetof(VELSysNLSEnv, decimalPoint) == 112 && offsetof(VELSysNLSEnv, maxCharSize) == 144);

/// One row of the language table. Columns that the row doesn't have are empty.
struct VELSysNLSEntry {
    std::string language;   ///< Such as "English" or "Simplified_Chinese".
    std::string alias;      ///< Carried along; nothing reads it.
    std::string langString; ///< Locale string, as `LANG` has it and the C library takes it.
    std::string codePage;   ///< Code set, as VELSysCodePage takes it.
};

/// A row in a list that its receiver owns: each node is freed by `delete`.
struct VELSysNLSNode {
    VELSysNLSEntry entry;
    VELSysNLSNode* next;
};

static_assert(offsetof(VELSysNLSNode, next) == sizeof(VELSysNLSEntry));

/// Whether a row is wanted: anything but 0.
using VELSysNLSPredicate = int (*)(const VELSysNLSEntry& row, void* argument);

/// The two ways in which GetNLSInformationA() takes its filter.
enum VELSysNLSFilterMode : char { VELSysNLSByPattern = 0, VELSysNLSByPredicate = 1 };

/// Which rows GetNLSInformationA() finds.
struct VELSysNLSFilter {
    union {
        /// VELSysNLSByPattern: a non-empty `language` or `codePage` must equal the row's; a non-empty `langString` must contain
        /// the row's; `alias` isn't looked at.
        const VELSysNLSEntry* pattern;
        /// VELSysNLSByPredicate.
        VELSysNLSPredicate predicate;
    };
    /// Passed to the predicate; a pattern needs none, and it isn't read then.
    void* argument;
};

static_assert(sizeof(VELSysNLSFilter) == 2 * sizeof(void*));

/// Punctuation of numbers with a given decimal separator and none for thousands. It is what the standard-library
/// locale gets for a locale that the C library alone knows.
template <class Character>
class VELLocalePunctFacet : public std::numpunct<Character> {
public:
    explicit VELLocalePunctFacet(Character decimalPoint) : _decimalPoint(decimalPoint) {}

protected:
    Character do_decimal_point() const override { return _decimalPoint; }
    /// 0, which stands for none.
    Character do_thousands_sep() const override { return Character(); }

private:
    Character _decimalPoint;
};

/// Makes the language decision, unless it stands.
/// @param language  The language to run in; empty for that of the environment; null for what stands, or the
///                  environment's when a change has been announced. In place of a language that the table doesn't have
///                  comes the environment's.
/// @param force     Also when it stands.
/// @return 0 when there is no table; 1 when the decision stood; 2 when this thread is just making it, a call from
///         within, which does nothing; 4 when it was made. (3 is not given.)
QORSYSTS_EXPORT int InitNLSCore(const char* language, bool force);

/// Announces a change: the next query decides again. Nothing is torn down.
/// @return 0.
QORSYSTS_EXPORT int DeInitNLSCore(int reserved);

/// The decision, made if it is due.
/// @return 0; VEL::StatusBadArgument for null.
QORSYSTS_EXPORT int GetEnvNLSData(VELSysNLSEnv* env);

/// Finds rows of the language table, which is read for it, in the order of the file.
/// @param mode   Of VELSysNLSFilterMode.
/// @param count  In: how many rows `list` may receive. Out: how many there are, which may be more.
/// @param list   Receives the rows as a list that the caller owns; null only counts. Left alone when there is none.
/// @return 0; VEL::StatusBadArgument for another mode; VEL::StatusUnexpected when the table can't be had or is empty;
///         VEL::StatusFailure for a null pattern or predicate, and without memory, when there is no list either and
///         `count` has no meaning.
QORSYSTS_EXPORT int GetNLSInformationA(VELSysNLSFilter filter, char mode, int& count, VELSysNLSNode** list);

/// The row that fits the environment, whatever the decision is.
/// @param entry  Receives the row; left alone when the table has no row for it and none of "English".
/// @return 1.
QORSYSTS_EXPORT int DetectNLSCoreFromEnvironment(VELSysNLSEntry& entry);

/// The code page of the first row of `language`.
/// @param status  Receives 0, or VEL::StatusFailure for a null or unknown language; may be null.
/// @return Empty when there is none.
QORSYSTS_EXPORT std::string GetCodePageByLanguage(const char* language, int* status);

/// Which of the languages written in ideographs has this code page: 1 for Japanese, 2 for Korean, 3 for traditional
/// Chinese, 4 for simplified Chinese, and 0 for none. Of several, the last in the table counts.
QORSYSTS_EXPORT int GetLocaleTypeFromCP(const char* codePage);

/// The languages of the table, as the decision found them.
QORSYSTS_EXPORT void GetSupportedLanguageList(std::set<std::string>& out);

/// Longest character of the locale's code set in bytes: 4 for UTF-8, and 1 while the C library has not accepted a
/// locale. The code page of text may be another one, with longer characters.
QORSYSTS_EXPORT long VELGetMultiByteCharMaxSize();

/// The standard library's locale of the decision; the default one while there is none.
QORSYSTS_EXPORT std::shared_ptr<const std::locale> VELGetCxxLocale();

/// The usual code page of a language, from a fixed list that knows nothing of the table.
/// @param out  Receives the name, as `strncpy` copies it into 85 bytes; null receives nothing.
/// @return 0; VEL::StatusBadArgument for a null language; VEL::StatusNotFound, with `out` left alone, for one that
///         the list doesn't have.
QORSYSTS_EXPORT int VELGetANSICodePageByLanguage(const char* language, char* out);

/// @return True for null.
QORSYSTS_EXPORT bool VELSysIsPointerNull(void* pointer);

/// Has `hook` called at each decision, on the thread that makes it, while it holds the language lock: it may query and
/// register, and must not wait for another thread that does.
///
/// There are 4 places, for the whole process and for good, and the converter of the environment takes one of them when
/// it is first asked for. A process that fills all four before that is not refused anything; its narrow text then
/// stays in the code page that is in force when the converter is first asked for.
/// @return 0; 1 when it is registered already; VEL::StatusBadArgument for null; VEL::StatusFailure when all places are
///         taken.
QORSYSTS_EXPORT int RegisterNLSChangeHook(void (*hook)(const VELSysNLSEnv& env));
