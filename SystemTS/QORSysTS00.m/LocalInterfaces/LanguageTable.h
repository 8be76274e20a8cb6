/// @file
/// The language table "SUPPLANG_R9" of the installation.
#pragma once

#include "VELSysCLocale.h"
#include "VELSysNLSCore.h"

#include <cstdio>
#include <span>
#include <vector>

namespace VEL::internal {

/// The rows in the order of the file.
using LanguageTable = std::vector<VELSysNLSEntry>;
using LanguageRows = std::span<const VELSysNLSEntry>;

/// Bytes that a line of the table is read into, terminator included. A longer one counts as several.
inline constexpr int TableLineSize = VELSysCLocale::EnvironNameSize;

/// Says on standard error when no table can be opened. Nothing sets it: an installation without a table runs in
/// English, and that is no fault.
extern bool s_warnOfMissingTable;

/// Reads the rows of an open table.
/// @return 1, or 0 when there is no table in the file.
int ReadLanguageTable(std::FILE* file, LanguageTable& rows);

/// Finds the table by the variables that tell where it may be, the first file that opens counts, and reads it.
/// @param rows  Left alone when it holds rows.
/// @return 1; 0 when there is no table in the file; VEL::StatusFailure when no file opens.
int LoadLanguageTable(LanguageTable& rows);

/// Whether the calling thread is just reading the table for its first user. That takes strings, which may come back to
/// the language core from within.
bool IsReadingLanguageTable();

/// Keeps the table in memory while one of these objects lives; the first reads it, the last gives it back. What it
/// holds doesn't change meanwhile.
class LanguageTableUse {
public:
    LanguageTableUse();
    LanguageTableUse(const LanguageTableUse&) = delete;
    LanguageTableUse& operator=(const LanguageTableUse&) = delete;
    ~LanguageTableUse();

    /// Empty when there is no table.
    LanguageRows Rows() const;
};

/// The first row of which `isWanted` holds, or null.
template <class Wanted>
const VELSysNLSEntry* FirstRow(LanguageRows rows, const Wanted& isWanted) {
    for (const VELSysNLSEntry& row : rows) {
        if (isWanted(row)) {
            return &row;
        }
    }
    return nullptr;
}

/// The row that fits the environment with `LANG` as given. When nothing fits, English; when there is none either,
/// `entry` is left alone.
/// @return 1.
int ValidateEnvironmentEntry(LanguageRows rows, const std::string& environmentLanguage, VELSysNLSEntry& entry);

} // namespace VEL::internal
