#include "AuditOptions.h"

#include "DeclaredCodePage.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr const char* KnownOptions[] = {"help", "name", "depth", "output", "codepage"};

/// The name of an option as the argument store has it; nothing for an argument that is no option.
std::string NameOfOption(const char* argument) {
    if (*argument != '-') {
        return {};
    }
    const char* const name = argument + (argument[1] == '-' ? 2 : 1);
    return {name, std::strcspn(name, "=")};
}

bool IsKnown(const std::string& name) {
    for (const char* known : KnownOptions) {
        if (name == known) {
            return true;
        }
    }
    return false;
}

/// Takes the value of an option that has to have one. @return False when it has none.
bool TakeValue(const char* option, QORUnicodeString& value) {
    int hasValue = 0;
    if (VELSysTSGetArg(option, hasValue, value) != VEL::StatusOk) {
        return true;
    }
    if (hasValue != 0 && !value.IsEmpty()) {
        return true;
    }
    std::fprintf(stderr, "codepage_audit: -%s needs a value: -%s=...\n", option, option);
    return false;
}

bool TakeDepth(int& depth) {
    QORUnicodeString text;
    if (!TakeValue("depth", text)) {
        return false;
    }
    if (text.IsEmpty()) {
        return true;
    }
    char* end = nullptr;
    const long number = std::strtol(text.ConvertToChar(), &end, 10);
    if (*end != 0 || number < 0 || number > INT_MAX) {
        std::fprintf(stderr, "codepage_audit: -depth=%s is no number of levels\n", text.ConvertToChar());
        return false;
    }
    depth = static_cast<int>(number);
    return true;
}

bool TakeCodePage(QORUnicodeString& codePage) {
    if (!TakeValue("codepage", codePage)) {
        return false;
    }
    if (codePage.IsEmpty() || DeclaredCodePage::IsKnown(codePage.ConvertToChar())) {
        return true;
    }
    std::fprintf(stderr,
                 "codepage_audit: -codepage=%s is no code page that this machine converts; iconv -l lists them\n",
                 codePage.ConvertToChar());
    return false;
}

} // namespace

bool ReadOptions(int argc, char** argv, AuditOptions& options) {
    for (int i = 1; i < argc; ++i) {
        if (*argv[i] != '-') {
            options.locations.push_back(argv[i]);
        } else if (!IsKnown(NameOfOption(argv[i]))) {
            std::fprintf(stderr, "codepage_audit: unknown option %s\n", argv[i]);
            return false;
        }
    }
    int hasValue = 0;
    QORUnicodeString unused;
    options.help = VELSysTSGetArg("help", hasValue, unused) == VEL::StatusOk;
    if (!TakeValue("name", options.pattern) || !TakeDepth(options.depth) || !TakeValue("output", options.output) ||
        !TakeCodePage(options.codePage)) {
        return false;
    }
    if (!options.help && options.locations.empty()) {
        std::fprintf(stderr, "codepage_audit: no directory given\n");
        return false;
    }
    return true;
}

void PrintUsage(std::FILE* stream, const char* program) {
    std::fprintf(stream,
                 "usage: %s DIRECTORY... [OPTIONS]\n"
                 "Audits the encoding of the text files in directories; single files may be given as well.\n"
                 "  -name=PATTERN   only files whose name matches, such as -name=*.txt\n"
                 "  -depth=N        enter at most N levels of directories below each one given\n"
                 "  -codepage=NAME  tell where files leave this code page, such as -codepage=SHIFT_JIS\n"
                 "  -output=FILE    write the report to a file\n"
                 "  -help           print this text\n",
                 program);
}
