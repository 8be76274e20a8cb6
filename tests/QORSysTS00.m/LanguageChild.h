/// @file
/// Processes under a language: a child with the environment, the language table and the locales that a test gives,
/// which plays a script and reports what each step gave.
///
/// Steps are "verb" or "verb=text":
/// - "init", "init=L", "force", "force=L": InitNLSCore(), with null where no text is given; reports "init 4"
/// - "deinit", "prefer=L" (VELSystemInit()), "session", "end": report their result
/// - "record": reports the record as "language|alias|langString|codePage|decimalPoint|maxCharSize"
/// - "accepted", "size", "languages", "locale" (name, separators, thousands), "converter", "detect", "codepage=L",
///   "count": report what the query gives
/// - "process": reports the C locale of the process
/// - "env=NAME=VALUE", "unset=NAME", "table=TEXT", "remove" (the table's file): change what the next step finds
/// - "codeset=TEXT", "radix=TEXT": what `nl_langinfo` answers from here on
/// - "refuse=N": `setlocale` refuses the Nth locale that it is given and all behind it
#pragma once

#include "Child.h"
#include "ScratchDirectory.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace LanguageChild {

struct Setting {
    std::optional<std::string> lang = {};         ///< `LANG`; unset without it.
    std::optional<std::string> table = {};        ///< Text of the table's file; there is none without it.
    std::vector<std::string> script = {};         ///< The steps.
    std::map<std::string, std::string> more = {}; ///< Further variables, which replace the usual ones.
    bool isTraced = false;                        ///< Whether the language core speaks.
};

struct Outcome {
    std::vector<std::string> report; ///< One line for each step that reports.
    std::string out;                 ///< The rest of standard output, the process id being "[PID]".
    std::string err;                 ///< Standard error, likewise.
    int exitCode;                    ///< As in Child.
    int signal;                      ///< As in Child; a process that hangs ends by `SIGALRM`.
};

/// A table's file with these rows.
std::string Table(const std::string& rows);

/// The rows that most tests use. Their locales are the test locales.
inline const std::string Rows = "English en en_US.UTF-8 UTF-8\n"
                                "English en2 en_US.ISO-8859-1 ISO-8859-1\n"
                                "Japanese ja ja_JP.EUC-JP EUC-JP\n"
                                "Japanese ja2 ja_JP.SJIS SHIFT_JIS\n"
                                "Korean ko ko_KR.EUC-KR EUC-KR\n"
                                "Simplified_Chinese zh zh_CN.GB18030 GB18030\n"
                                "Simplified_Chinese zh2 zh_CN.GB2312 EUC-CN\n"
                                "Traditional_Chinese tw zh_TW.BIG5 BIG5\n"
                                "German de de_DE.ISO-8859-1 ISO-8859-1\n"
                                "French fr fr_FR.UTF-8 UTF-8\n";

/// Runs the script.
Outcome Play(const Setting& setting);

/// Runs another child program of the test in such an environment. Lines that it begins with "= " are its report.
Outcome Run(const std::string& program, const Setting& setting);

/// Begins a child program: it ends by `SIGALRM` when it hangs.
void BeginChild();

/// Writes a line of the report.
void Report(const std::string& line);

/// One step of a script.
void PlayStep(const std::string& step);

/// The record in force, as the step "record" reports it.
std::string Record();

} // namespace LanguageChild
