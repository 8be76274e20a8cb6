// Audits text files: walks directories, reads each file as narrow text, takes it to UTF-16 and back, and prints what
// became of it.
//
//   codepage_audit DIRECTORY... [-name=PATTERN] [-depth=N] [-codepage=NAME] [-output=FILE] [-help]
//
// One line per file: bytes, UTF-16 code units, code points, hash, lines, words, whether the bytes are valid UTF-8, and
// whether the way to UTF-16 and back gives the same bytes; with a code page declared, where the file leaves it. Then
// the ten most frequent words of all files. The exit code is 0 when everything could be read, 1 when something could
// not, 2 for a wrong command line.
//
// What it does can be followed by the traces "Audit" and "Audit.File":
//
//   VELSysTrace="--name Audit Audit.File -e" codepage_audit DIRECTORY

#include "AuditOptions.h"
#include "AuditTrace.h"
#include "DirectoryWalk.h"
#include "TextAudit.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

int Run(const AuditOptions& options, std::FILE* report) {
    const AuditTrace trace("Audit");
    std::vector<VELSysPath> files;
    DirectoryWalk walk(options.pattern, options.depth);
    for (const char* location : options.locations) {
        const VELSysPath path{QORUnicodeString(location)};
        if (path.IsDirectory(0)) {
            walk.Collect(path, files);
        } else {
            files.push_back(path);
        }
        if (trace) {
            trace->Info("%zu files with those of %s", files.size(), location);
        }
    }
    TextAudit audit(report, options.codePage);
    std::size_t read = 0;
    for (const VELSysPath& file : files) {
        read += audit.Audit(file) ? 1 : 0;
    }
    audit.WriteMostFrequentWords();
    if (trace) {
        trace->Info("%zu of %zu files read, %d directories not listed", read, files.size(), walk.Failures());
    }
    std::fprintf(report, "%zu of %zu files audited\n", read, files.size());
    return read == files.size() && walk.Failures() == 0 ? 0 : 1;
}

int RunWithReport(const AuditOptions& options) {
    if (options.output.IsEmpty()) {
        return Run(options, stdout);
    }
    std::FILE* report = nullptr;
    int result = 1;
    int status = VELSysLocalFileOpen(options.output, "w", report);
    if (status == VEL::StatusOk) {
        result = Run(options, report);
        status = VELSysLocalFileClose(report);
    }
    if (status != VEL::StatusOk) {
        std::fprintf(stderr, "codepage_audit: %s cannot be written: %s\n", options.output.ConvertToChar(),
                     std::strerror(errno));
        return 1;
    }
    return result;
}

} // namespace

int main(int argc, char** argv) {
    QORSysNewSessionTS(0, 0, nullptr);
    VELSysMainInitialize(argc, argv, VELSysMainStoreArguments);
    int result = 0;
    {
        AuditOptions options;
        if (!ReadOptions(argc, argv, options)) {
            PrintUsage(stderr, argv[0]);
            result = 2;
        } else if (options.help) {
            PrintUsage(stdout, argv[0]);
        } else {
            result = RunWithReport(options);
        }
    }
    VELSysMainFinalize();
    QORSysEndSessionTS(0);
    return result;
}
