/// @file
/// The audit of single files.
#pragma once

#include "AuditTrace.h"
#include "DeclaredCodePage.h"
#include "QORSysTS.h"

#include <cstdio>
#include <optional>
#include <string>

/// Audits files one by one and writes a line for each, then the ten most frequent words of all.
class TextAudit {
public:
    /// @param report    Where the lines go; stays the caller's.
    /// @param codePage  What the files are said to be in; empty when nothing is said.
    TextAudit(std::FILE* report, const QORUnicodeString& codePage);

    /// Audits one file. @return False when it can't be read, which has been told on standard error.
    bool Audit(const VELSysPath& file);
    void WriteMostFrequentWords();

private:
    void _WriteLine(const char* name, const std::string& content);
    void _WriteOffence(const std::string& content);

    AuditTrace _trace{"Audit.File"};
    std::FILE* _report;
    std::optional<DeclaredCodePage> _codePage;
    VELVectorOfUnicodeString _words;
};
