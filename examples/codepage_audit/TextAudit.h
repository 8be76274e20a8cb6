/// @file
/// The audit of single files.
#pragma once

#include "QORSysTS.h"

#include <cstdio>
#include <string>

/// Audits files one by one and writes a line for each, then the ten most frequent words of all.
class TextAudit {
public:
    /// @param report  Where the lines go; stays the caller's.
    explicit TextAudit(std::FILE* report) : _report(report) {}

    /// Audits one file. @return False when it can't be read, which has been told on standard error.
    bool Audit(const VELSysPath& file);
    void WriteMostFrequentWords();

private:
    void _WriteLine(const char* name, const std::string& content);

    std::FILE* _report;
    VELVectorOfUnicodeString _words;
};
