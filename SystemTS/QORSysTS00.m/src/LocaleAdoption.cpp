// What follows from the locale that the C library has accepted: how numbers are written, the longest character, and
// the standard library's locale.

#include "NLSTrace.h"
#include "SessionState.h"
#include "VELSysCLocale.h"
#include "VELSysNLS.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <locale>
#include <memory>
#include <stdexcept>

namespace {

void Publish(const std::locale& locale) {
    std::atomic_store(&VEL::internal::s_standardLocale, std::make_shared<const std::locale>(locale));
}

/// The separator as one byte of the locale `name`, or "?".
char NarrowSeparator(wchar_t separator, const char* name) {
    char narrow = '?';
    if (std::setlocale(LC_ALL, name) != nullptr) {
        const wchar_t text[] = {separator, L'\0'};
        const wchar_t* next = text;
        std::mbstate_t state = {};
        std::wcsrtombs(&narrow, &next, 1, &state);
    }
    return narrow;
}

template <class Character>
std::locale WithPunctuation(const std::locale& base, Character separator) {
    auto facet = std::make_unique<VELLocalePunctFacet<Character>>(separator);
    std::locale locale(base, facet.get());
    // The locale's from now on.
    static_cast<void>(facet.release());
    return locale;
}

/// The default locale with the separator of a locale that the standard library doesn't know.
void PublishSeparatorOnly(wchar_t separator, const char* name) {
    try {
        const std::locale wide = WithPunctuation(std::locale(), separator);
        Publish(WithPunctuation(wide, NarrowSeparator(separator, name)));
    } catch (const std::runtime_error&) {
        std::puts("[VELSysNLSCore] Catastrophic failure!");
    }
}

void PublishStandardLocale(const VELSysNLS& nls, const char* name) {
    try {
        Publish(std::locale(name));
    } catch (const std::runtime_error&) {
        PublishSeparatorOnly(*nls.decimalPoint.c_str(), name);
    }
}

} // namespace

void VEL::internal::AdoptLocale(VELSysNLS& nls, const char* name) {
    nls.maxCharSize = 1;
    if (name == nullptr) {
        nls.acceptedLocale.clear();
    } else {
        nls.acceptedLocale = name;
        VELSysCLocaleSetPerThread(1);
        VELSysCLocale::LConv conventions;
        VELSysCLocale::GetLCConv(conventions);
        if (const wchar_t* const point = conventions.decimal_point()) {
            nls.decimalPoint = point;
        }
        nls.maxCharSize = static_cast<long>(MB_CUR_MAX);
        PublishStandardLocale(nls, name);
    }
    if (nls.codePage == "UTF-8") {
        constexpr long longestUTF8 = 4;
        nls.maxCharSize = longestUTF8;
    }
}

std::shared_ptr<const std::locale> VELGetCxxLocale() {
    auto locale = std::atomic_load(&VEL::internal::s_standardLocale);
    if (locale == nullptr) {
        locale = std::make_shared<const std::locale>();
    }
    return locale;
}
