/// @file
/// What the fuzzers of the code pages share: the code pages, each with its plain form.
#pragma once

#include "CodePageOracle.h"
#include "VELSysCodePage.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace CodePageFuzz {

/// Ends the run: libFuzzer keeps the input.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A code page and its plain form; null for one that has no `iconv` way.
struct Subject {
    std::unique_ptr<VELSysCodePage> codePage;
    std::unique_ptr<CodePageOracle::Converter> plain;
};

/// The code page that a byte of the input names.
inline Subject& SubjectOf(unsigned int choice) {
    static std::vector<Subject>& subjects = *[] {
        // No locale in any table: each damaged byte counts for itself, and the reports go nowhere.
        unsetenv("QORReffilesPath");
        unsetenv("QORInstallPath");
        unsetenv("VELSysNLSInstallPath");
        stderr = std::fopen("/dev/null", "w");
        auto* const all = new std::vector<Subject>;
        for (const char* name : CodePageOracle::CodePages) {
            if (CodePageOracle::IsKnown(name)) {
                all->push_back({std::make_unique<VELSysCodePage>(name, 1, "C"),
                                std::make_unique<CodePageOracle::Converter>(name, "C")});
            }
        }
        for (const char* name : {"ISO-2022-JP", "UTF-7", "TSCII"}) {
            if (CodePageOracle::IsKnown(name)) {
                all->push_back({std::make_unique<VELSysCodePage>(name, 1, "C"),
                                std::make_unique<CodePageOracle::Converter>(name, "C")});
            }
        }
        all->push_back({std::make_unique<VELSysCodePage>("UTF-8"), nullptr});
        all->push_back({std::make_unique<VELSysCodePage>("N/A"), nullptr});
        return all;
    }();
    return subjects[choice % subjects.size()];
}

} // namespace CodePageFuzz
