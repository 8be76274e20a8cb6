#include "VELSysCLocale.h"

#include "LocaleGuard.h"
#include "NLSTrace.h"

#include <cstdio>
#include <cstring>

using VEL::internal::CaptureLocaleBeforeLoad;
using VEL::internal::NLSTrace;

namespace {

/// Bytes of the name that is kept, terminator included; a longer one is cut.
constexpr std::size_t KeptNameSize = 86;

struct CapturedName {
    CapturedName() {
        if (const char* const name = setlocale(LC_ALL, nullptr)) {
            std::memcpy(text, name, strnlen(name, sizeof text - 1));
        }
    }

    char text[KeptNameSize] = {};
};

const char* NameOf(bool value) {
    return value ? "true" : "false";
}

} // namespace

const char* VEL::internal::CaptureLocaleBeforeLoad() {
    static const CapturedName s_name;
    return s_name.text;
}

bool VEL::internal::IsOwnLocale(locale_t locale) {
    return locale != nullptr && locale != LC_GLOBAL_LOCALE;
}

bool VELSysCLocaleIsPerThread() {
    return VEL::internal::IsOwnLocale(uselocale(nullptr));
}

int VELSysCLocaleSetPerThread(int perThread) {
    return static_cast<int>(VELSysCLocaleIsPerThread()) == perThread ? 0 : -1;
}

const char* GetLocaleBeforeLoad() {
    return CaptureLocaleBeforeLoad();
}

char* VELSysCLocale::SetLocale(int category, const char* locale) {
    if (VELSysCLocaleIsPerThread()) {
        return nullptr;
    }
    CaptureLocaleBeforeLoad();
    return setlocale(category, locale);
}

void VELSysCLocale::GetLCConv(LConv& out) {
    CaptureLocaleBeforeLoad();
    out._ReInit();
    bool perThread = false;
    lconv* const conventions = out._GetLibCLocaleConv(perThread);
    if (perThread) {
        out._source = conventions;
        return;
    }
    NLSTrace(stdout,
             "[VELSysCLocale::ThreadLC][WARNING] MT-unsafe environment! GetLCConv is taking a global lock - Locale "
             "per-thread: %s | MT-safe localeconv: %s\n",
             NameOf(VELSysCLocaleIsPerThread()), NameOf(perThread));
    // From here on the C library's texts stay as they are read.
    const VEL::internal::LocaleGuard guard;
    out._ConvertAll(*out._GetLibCLocaleConv(perThread));
}
