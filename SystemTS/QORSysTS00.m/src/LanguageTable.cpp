#include "LanguageTable.h"

#include "EnvironmentLookup.h"
#include "FileReading.h"
#include "NLSTrace.h"
#include "QORToken.h"
#include "QORUnicodeString.h"
#include "VELSysNLS.h"
#include "VELSysStatus.h"

#include <cstring>
#include <new>

bool VEL::internal::s_warnOfMissingTable = false;

namespace {

using VEL::internal::File;
using VEL::internal::LanguageTable;
using VEL::internal::OpenForReading;

/// A variable with a list of places, and what makes a file's name of each.
struct Place {
    const char* variable;
    const char* suffix;
};

constexpr Place Places[] = {
    {"QORReffilesPath", "/NLS/SUPPLANG_R9"},
    {"QORInstallPath", "/reffiles/NLS/SUPPLANG_R9"},
    {"VELSysNLSInstallPath", ""},
};

/// The rows while somebody uses them; guarded by the write side of the language lock.
constinit LanguageTable* s_rows = nullptr;
constinit long s_users = 0;

constinit thread_local bool t_isReading = false;

File OpenIn(const Place& place) {
    QORUnicodeString list;
    if (VELGetEnvInt(place.variable, &list) == 0) {
        return nullptr;
    }
    QORToken elements(list, 0);
    unsigned char found = 0;
    for (QORUnicodeString name = elements.GetNextToken(":", &found); found != 0;
         name = elements.GetNextToken(":", &found)) {
        name.Append(place.suffix);
        if (File file = OpenForReading(name.ConvertToChar())) {
            return file;
        }
    }
    return nullptr;
}

File OpenLanguageTable() {
    for (const Place& place : Places) {
        if (File file = OpenIn(place)) {
            return file;
        }
    }
    return nullptr;
}

void WarnOfMissingTable() {
    if (!VEL::internal::s_warnOfMissingTable) {
        return;
    }
    QORUnicodeString environment;
    VELGetEnvInt("QORDefaultEnvironment", &environment);
    if (std::strcmp(environment.ConvertToChar(), "BldzEnvironment") == 0) {
        return;
    }
    VEL::internal::NLSTrace(stderr, "VELSysNLSCore failed to open SUPPLANG_R9 file. You may regenerate your runtime "
                                    "view to fix this issue (bldz/bldvw/reinstall).");
    VEL::internal::s_warnOfMissingTable = false;
}

/// Cuts `line`, which it changes, at blanks and line ends; tabs belong to the columns.
VELSysNLSEntry RowOf(char* line) {
    VELSysNLSEntry row;
    char* rest = nullptr;
    char* piece = line;
    for (std::string* column : {&row.language, &row.alias, &row.langString, &row.codePage}) {
        const char* const token = strtok_r(piece, " \n", &rest);
        if (token == nullptr) {
            break;
        }
        *column = token;
        piece = nullptr;
    }
    return row;
}

} // namespace

int VEL::internal::ReadLanguageTable(std::FILE* file, LanguageTable& rows) {
    char line[TableLineSize];
    const auto readLine = [&] { return std::fgets(line, TableLineSize, file) != nullptr; };
    do {
        if (!readLine()) {
            NLSTrace(stderr, "*BEGIN* OS section not found");
            return 0;
        }
    } while (std::strstr(line, "*BEGIN*") == nullptr);
    if (!readLine()) {
        return 0;
    }
    do {
        if (std::strstr(line, "*END*") != nullptr) {
            break;
        }
        rows.push_back(RowOf(line));
    } while (readLine());
    return 1;
}

int VEL::internal::LoadLanguageTable(LanguageTable& rows) {
    if (!rows.empty()) {
        return 1;
    }
    const File file = OpenLanguageTable();
    if (file == nullptr) {
        WarnOfMissingTable();
        return VEL::StatusFailure;
    }
    return ReadLanguageTable(file.get(), rows);
}

bool VEL::internal::IsReadingLanguageTable() {
    return t_isReading;
}

VEL::internal::LanguageTableUse::LanguageTableUse() {
    const WriteGuard guard(VELSysNLS::Instance().lock);
    if (s_users++ > 0) {
        return;
    }
    t_isReading = true;
    try {
        auto rows = std::make_unique<LanguageTable>();
        LoadLanguageTable(*rows);
        s_rows = rows.release();
    } catch (const std::bad_alloc&) {
        // No table, until it is acquired anew.
    }
    t_isReading = false;
}

VEL::internal::LanguageTableUse::~LanguageTableUse() {
    const WriteGuard guard(VELSysNLS::Instance().lock);
    if (--s_users == 0) {
        delete s_rows;
        s_rows = nullptr;
    }
}

VEL::internal::LanguageRows VEL::internal::LanguageTableUse::Rows() const {
    // Without the lock: as long as this object lives, nobody writes it.
    return s_rows != nullptr ? LanguageRows(*s_rows) : LanguageRows();
}
