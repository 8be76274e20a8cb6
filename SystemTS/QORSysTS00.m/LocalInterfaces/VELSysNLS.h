/// @file
/// What the language core keeps.
#pragma once

#include "LocaleGuard.h"
#include "QORResourceLock.h"
#include "VELSysNLSCore.h"

#include <memory>
#include <set>
#include <string>

/// The state of the language decision: one for the process. It is made while the library loads, so that it outlives
/// all that the program makes later.
class VELSysNLS {
public:
    static VELSysNLS& Instance();

    VELSysNLS(const VELSysNLS&) = delete;
    VELSysNLS& operator=(const VELSysNLS&) = delete;

    /// Whether a decision in the language `wanted` is due, and why; both reasons are never given at once. A null or
    /// empty language is told without the lock, another one under either side of it.
    /// @param fromEnvironment  Receives whether the environment decides.
    /// @param fromLanguage     Receives whether `wanted` decides.
    bool IsInitNLSRequired(const char* wanted, bool& fromEnvironment, bool& fromLanguage) const;

    /// The record of what is decided. The caller holds the lock.
    VELSysNLSEnv Snapshot() const;

    // Written under the write side of the lock, read under either side.

    QORResourceLock lock{1};
    std::string language = "English";
    std::string alias;
    std::string environmentLanguage; ///< The raw value of "LANG".
    std::string langString;
    std::string codePage;
    std::string acceptedLocale; ///< What the C library accepted, empty for the environment's or none.
    std::wstring decimalPoint = L".";
    long maxCharSize = 1;
    std::wstring reserved; ///< Stays empty, deliberately.
    std::set<std::string> languages;

private:
    struct Layout;

    VELSysNLS() = default;
};

namespace VEL::internal {

/// Announces or withdraws that a decision is due, whatever the language.
void SetDecisionDue(bool isDue);
bool IsDecisionDue();

/// What `LANG` says, "en_US.UTF-8" when it isn't set.
std::string EnvironmentLanguage();

/// Takes the code set of `language`, a value of `LANG`, when it names one. When there is none then, it is asked of the
/// C library, which is put into the environment's locale for it.
void TakeCodeSet(const std::string& language, std::string& codeSet);

/// The name by which the C library gets `langString`: itself, or the empty string, which stands for the environment's,
/// for null and for the raw value of `LANG`.
const char* TranslateLangString(const char* langString, const std::string& environmentLanguage);

/// Takes over what follows from the locale `name`, which the C library has accepted; null when it has accepted none.
/// The caller holds the write side.
void AdoptLocale(VELSysNLS& nls, const char* name);

/// Keeps the language in which the process is to run, null for the environment's. The session asks for it.
void KeepPreferredLanguage(const char* language);
/// A copy of it, null for none.
std::unique_ptr<char[]> PreferredLanguage();
/// Makes the state. Loading asks for it.
void PrepareNLSCore();

/// One side of a resource lock, held.
class ReadGuard {
public:
    explicit ReadGuard(QORResourceLock& lock) : _lock(lock) { _lock.ReadLock(); }
    ReadGuard(const ReadGuard&) = delete;
    ReadGuard& operator=(const ReadGuard&) = delete;
    ~ReadGuard() { _lock.ReadUnlock(); }

private:
    QORResourceLock& _lock;
};

/// Takes the lock of the process's locale first: what is done under the write side reads and changes that locale, and a
/// scope that has it locked may ask for the language.
class WriteGuard {
public:
    explicit WriteGuard(QORResourceLock& lock) : _lock(lock) { _lock.WriteLock(); }
    WriteGuard(const WriteGuard&) = delete;
    WriteGuard& operator=(const WriteGuard&) = delete;
    ~WriteGuard() { _lock.WriteUnlock(); }

private:
    LocaleGuard _localeGuard;
    QORResourceLock& _lock;
};

} // namespace VEL::internal
