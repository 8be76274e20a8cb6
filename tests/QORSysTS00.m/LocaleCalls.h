/// @file
/// What the library asks of the C library's locales, of the lock of the process's locale and of the heap, and failures
/// on demand. What is recorded and what fails is the calling thread's.
#pragma once

#include "Child.h"
#include "TestLocales.h"
#include "VELSysCLocale.h"

#include <functional>
#include <langinfo.h>
#include <locale.h>
#include <string>
#include <vector>

namespace LocaleCalls {

/// Begins a new record.
void Record();

/// The calls since, such as "newlocale 2 de_DE.ISO-8859-1", "setlocale 6 ?", which asks, or "WriteLock". A mask of all
/// categories is "all".
std::vector<std::string> Log();

/// The locales freed since.
std::vector<locale_t> Freed();

/// Lets the `nth` next call of that name fail, counted from 1. Of "uselocale" and "setlocale" those that ask are named
/// with a "?" behind.
void Fail(const std::string& call, int error, int nth = 1);

/// Lets the next `uselocale` that asks answer this.
void PretendCurrent(locale_t current);

/// Lets every `nl_langinfo` answer this for an item; null is an answer, too.
void Answer(nl_item item, const char* text);

/// What the language decision answers; "C" at first.
void UseEnvironmentLocale(const char* name);

/// Called where a variable is looked up in the application.
void DuringLookup(std::function<void()> action);

/// Calls of `localeconv`, on all threads.
int LocaleConvCalls();

/// Blocks of array `new` that doesn't throw, on all threads.
int BlocksHeld();

/// True while another thread can't take the lock of the process's locale.
bool IsLockHeld();

/// The name of a category in a locale of a thread.
std::string NameOf(int category, locale_t locale);

/// The fields of a scope, in order.
struct ScopeFields {
    char* savedName;
    locale_t savedLocale;
    int category;
    unsigned short flags;
};

ScopeFields FieldsOf(const VELSysCLocale::ThreadLC& scope);

/// Puts test locales where the C library looks for them.
class Test : public testing::Test {
protected:
    void SetUp() override { setenv("LOCPATH", QOR_TEST_LOCALES, 1); }
};

/// Begins a child's output, so that Traced() knows its process id.
void PrintProcessId();

/// Runs a child with tracing on. Its id is "[PID]" in what it wrote, and the line of PrintProcessId() is left out.
Child Traced(const std::string& program, const std::vector<std::string>& arguments = {});

} // namespace LocaleCalls
