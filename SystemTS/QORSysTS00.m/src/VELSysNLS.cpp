#include "VELSysNLS.h"

#include "Assertion.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>

namespace {

/// Set from the beginning, so that the first request decides.
constinit std::atomic<unsigned char> s_decisionIsDue{1};

/// Copies `text` with its terminator when it fits; the target stays as it is otherwise.
template <class Character, std::size_t N>
void CopyIfItFits(Character (&target)[N], const std::basic_string<Character>& text) {
    if (text.size() < N) {
        std::copy_n(text.c_str(), text.size() + 1, target);
    }
}

} // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysNLS::Layout {
    static_assert(offsetof(VELSysNLS, lock) == 0 && offsetof(VELSysNLS, language) == sizeof(QORResourceLock));
    static_assert(offsetof(VELSysNLS, alias) == offsetof(VELSysNLS, language) + sizeof language);
    static_assert(offsetof(VELSysNLS, environmentLanguage) == offsetof(VELSysNLS, alias) + sizeof alias);
    static_assert(offsetof(VELSysNLS, langString) ==
                  offsetof(VELSysNLS, environmentLanguage) + sizeof environmentLanguage);
    static_assert(offsetof(VELSysNLS, codePage) == offsetof(VELSysNLS, langString) + sizeof langString);
    static_assert(offsetof(VELSysNLS, acceptedLocale) == offsetof(VELSysNLS, codePage) + sizeof codePage);
    static_assert(offsetof(VELSysNLS, decimalPoint) == offsetof(VELSysNLS, acceptedLocale) + sizeof acceptedLocale);
    static_assert(offsetof(VELSysNLS, maxCharSize) == offsetof(VELSysNLS, decimalPoint) + sizeof decimalPoint);
    static_assert(offsetof(VELSysNLS, reserved) == offsetof(VELSysNLS, maxCharSize) + sizeof maxCharSize);
    static_assert(offsetof(VELSysNLS, languages) == offsetof(VELSysNLS, reserved) + sizeof reserved);
};
#pragma GCC diagnostic pop

VELSysNLS& VELSysNLS::Instance() {
    static VELSysNLS instance;
    return instance;
}

bool VELSysNLS::IsInitNLSRequired(const char* wanted, bool& fromEnvironment, bool& fromLanguage) const {
    fromEnvironment = false;
    fromLanguage = false;
    const bool isDue = VEL::internal::IsDecisionDue();
    if (wanted == nullptr) {
        fromEnvironment = isDue;
    } else if (*wanted == '\0') {
        fromEnvironment = true;
    } else {
        fromLanguage = isDue || language != wanted;
    }
    if (!fromEnvironment && !fromLanguage) {
        return false;
    }
    if (fromEnvironment == fromLanguage) {
        VEL::internal::FailAssertion("bInitFromLangRequired ^ bInitFromEnvRequired", __FILE__, __LINE__,
                                     __PRETTY_FUNCTION__);
    }
    return true;
}

VELSysNLSEnv VELSysNLS::Snapshot() const {
    VELSysNLSEnv env = {};
    CopyIfItFits(env.language, language);
    CopyIfItFits(env.alias, alias);
    CopyIfItFits(env.langString, langString);
    CopyIfItFits(env.codePage, codePage);
    CopyIfItFits(env.decimalPoint, decimalPoint);
    env.maxCharSize = maxCharSize;
    return env;
}

bool VEL::internal::IsDecisionDue() {
    return s_decisionIsDue.load(std::memory_order_acquire) != 0;
}

void VEL::internal::SetDecisionDue(bool isDue) {
    // With a full fence: what a decision has written is seen by whoever sees that none is due.
    s_decisionIsDue.store(isDue ? 1 : 0, std::memory_order_seq_cst);
}
