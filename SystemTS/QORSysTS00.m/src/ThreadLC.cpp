#include "DuplicateText.h"
#include "LocaleGuard.h"
#include "NLSTrace.h"
#include "VELSysCLocale.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

using VEL::internal::CaptureLocaleBeforeLoad;
using VEL::internal::IsOwnLocale;
using VEL::internal::NLSTrace;

struct VELSysCLocale::ThreadLC::Layout {
    static_assert(offsetof(ThreadLC, _savedName) == 0 && offsetof(ThreadLC, _savedLocale) == 8);
    static_assert(offsetof(ThreadLC, _category) == 16 && offsetof(ThreadLC, _flags) == 20);
    static_assert(sizeof(ThreadLC) == 24);
};

namespace {

enum Flag : unsigned short {
    IsPerThread = 1,  ///< The thread's locale is the one that changed.
    MustBeUndone = 2, ///< There is something to restore.
    IsLockHolder = 4, ///< This object holds the lock of the process's locale.
};

constexpr int LastSingleCategory = 5;
constexpr int Masks[] = {LC_CTYPE_MASK,   LC_NUMERIC_MASK,  LC_TIME_MASK,
                         LC_COLLATE_MASK, LC_MONETARY_MASK, LC_MESSAGES_MASK};
static_assert(LC_ALL == LastSingleCategory + 1 && std::size(Masks) == LC_ALL);

const char* NameOfError(int error) {
    switch (error) {
    case ENOMEM:
        return "ENOMEM";
    case EINVAL:
        return "EINVAL";
    case ENOENT:
        return "ENOENT";
    default:
        return "Unknown";
    }
}

/// Reports keep `errno`, which the next one names again.
template <class... Arguments>
void Report(const char* format, Arguments... arguments) {
    const int error = errno;
    NLSTrace(stderr, format, arguments..., NameOfError(error));
    errno = error;
}

locale_t NewLocale(const char* name) {
    const locale_t locale = newlocale(LC_ALL_MASK, name, nullptr);
    if (locale == nullptr) {
        Report("[VELSysCLocale::ThreadLC][ERROR] newlocale(LC_ALL_MASK, \"%s\", (locale_t)0) returned %s\n", name);
    }
    return locale;
}

/// A copy of what is in force, for a change of some categories.
locale_t CopyOf(locale_t current) {
    if (current != LC_GLOBAL_LOCALE) {
        return duplocale(current);
    }
    return newlocale(LC_ALL_MASK, VEL::internal::EnvironmentLocaleName().text, nullptr);
}

locale_t ChangedLocale(locale_t current, int mask, const char* name) {
    const locale_t base = CopyOf(current);
    const locale_t locale = base != nullptr ? newlocale(mask, name, base) : nullptr;
    if (locale != nullptr) {
        return locale;
    }
    const int error = errno;
    if (IsOwnLocale(base)) {
        freelocale(base);
    }
    errno = error;
    Report("[VELSysCLocale::ThreadLC][ERROR] _get_changed_locale(locObj, %u, \"%s\") returned %s\n",
           static_cast<unsigned int>(mask), name);
    return nullptr;
}

} // namespace

VELSysCLocale::ThreadLC::ThreadLC(int category, const char* locale, int* status) {
    int ignored = 0;
    int& result = status != nullptr ? *status : ignored;
    CaptureLocaleBeforeLoad();
    if (locale == nullptr) {
        result = VEL::StatusFailure;
        return;
    }
    if (category < 0) {
        result = VEL::StatusBadArgument;
        return;
    }
    if (_SetForThread(category, locale)) {
        result = VEL::StatusOk;
        return;
    }
    const int error = errno;
    NLSTrace(stdout, "[VELSysCLocale::ThreadLC][WARNING] Failed to set a per-thread C locale with error %s: %s\n",
             NameOfError(error), std::strerror(error));
    result = _SetForProcess(category, locale);
}

VELSysCLocale::ThreadLC::~ThreadLC() {
    Reset();
}

/// @return False with `errno` set, and all as it was.
bool VELSysCLocale::ThreadLC::_SetForThread(int category, const char* locale) {
    const locale_t current = uselocale(nullptr);
    if (current == nullptr) {
        Report("[VELSysCLocale::ThreadLC][ERROR] uselocale((locale_t)0) returned %s\n");
        return false;
    }
    const locale_t changed =
        category > LastSingleCategory ? NewLocale(locale) : ChangedLocale(current, Masks[category], locale);
    if (changed == nullptr || !_Install(changed, current)) {
        return false;
    }
    _savedLocale = current;
    _category = category;
    _flags |= IsPerThread | MustBeUndone;
    return true;
}

/// Puts `locale` in the place of `current`, or frees it.
bool VELSysCLocale::ThreadLC::_Install(locale_t locale, locale_t current) {
    const locale_t former = uselocale(locale);
    if (former == current) {
        return true;
    }
    Report("[VELSysCLocale::ThreadLC][ERROR] uselocale(newLoc) returned %s\n");
    const int error = errno;
    if (former != nullptr) {
        uselocale(former);
    }
    freelocale(locale);
    errno = error;
    return false;
}

/// @return The constructor's status.
int VELSysCLocale::ThreadLC::_SetForProcess(int category, const char* locale) {
    _Lock();
    const char* const previous = setlocale(category, nullptr);
    if (previous == nullptr) {
        _Unlock();
        return VEL::StatusFailure;
    }
    if (std::strcmp(previous, locale) == 0) {
        _flags |= MustBeUndone;
        return VEL::StatusNote;
    }
    std::unique_ptr<char[]> name = VEL::internal::DuplicateText(previous);
    if (name == nullptr) {
        _Unlock();
        return VEL::StatusFailure;
    }
    _category = category;
    if (setlocale(category, locale) == nullptr) {
        _Unlock();
        return VEL::StatusBadArgument;
    }
    _savedName = name.release();
    _flags |= MustBeUndone;
    return VEL::StatusOk;
}

void VELSysCLocale::ThreadLC::_Lock() {
    VEL::internal::s_localeLock.WriteLock();
    _flags |= IsLockHolder;
}

void VELSysCLocale::ThreadLC::_Unlock() {
    VEL::internal::s_localeLock.WriteUnlock();
    _flags &= static_cast<unsigned short>(~IsLockHolder);
}

void VELSysCLocale::ThreadLC::Reset() {
    if ((_flags & MustBeUndone) == 0) {
        return;
    }
    _flags &= static_cast<unsigned short>(~MustBeUndone);
    if ((_flags & IsPerThread) != 0) {
        const locale_t installed = uselocale(_savedLocale);
        if (IsOwnLocale(installed)) {
            freelocale(installed);
        }
        return;
    }
    if (_savedName != nullptr) {
        setlocale(_category, _savedName);
    }
    _Unlock();
    delete[] std::exchange(_savedName, nullptr);
}
