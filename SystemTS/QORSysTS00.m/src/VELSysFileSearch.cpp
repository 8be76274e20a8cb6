// The search along lists of directories, for programs, and for where this program is installed.

#include "DuplicateText.h"
#include "NativeText.h"
#include "QORToken.h"
#include "QORUnicodeChar.h"
#include "SystemError.h"
#include "UTF8Text.h"
#include "VELSysEnviron.h"
#include "VELSysFile.h"
#include "VELSysPath.h"
#include "VELSysStatus.h"
#include "VELSysTSArg.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using VEL::internal::NativeText;

constexpr const char* ListSeparator = ":";
/// A tokenizer keeps empty pieces.
constexpr unsigned char KeepEmpty = 1;

constexpr int NoProgram = -2;

/// Longest text of a variable or argument that the install path is looked for in.
constexpr std::size_t LongestSource = 4095;

int StatOf(const QORUnicodeString& path, struct stat64& status) {
    return VEL::internal::StatusOfCall(stat64(NativeText(path).Get(), &status));
}

/// Looks whether `found` is a program; where it isn't there, without quotes and blanks around it.
/// @return 0, with what was looked at in `found`, or a negative number.
int CheckProgram(QORUnicodeString& found) {
    struct stat64 status;
    QORUnicodeString stripped = found;
    if (StatOf(stripped, status) < 0) {
        stripped = found.Strip(QORUnicodeString::QORStripModeBoth, QORUnicodeChar('"'))
                       .Strip(QORUnicodeString::QORStripModeBoth);
        const int rc = StatOf(stripped, status);
        if (rc < 0) {
            return rc;
        }
    }
    if (S_ISDIR(status.st_mode) || (status.st_mode & S_IXUSR) == 0) {
        return NoProgram;
    }
    found = stripped;
    return VEL::StatusOk;
}

/// QORWhence() with a name of its own, since the caller's may be the result too.
int FindProgram(QORUnicodeString& found, QORUnicodeString name) {
    found = name;
    if (CheckProgram(found) == VEL::StatusOk) {
        return 0;
    }
    QORUnicodeString list;
    VELGetEnvInt("PATH", &list);
    if (list.IsEmpty()) {
        std::perror("QORWhence -> QORGetEnvU() | PATH incorrect ");
        return -1;
    }
    QORToken pieces(list, KeepEmpty);
    for (;;) {
        // Behind the last piece comes an empty one, so the root is the last place.
        const QORUnicodeString piece = pieces.GetNextToken(ListSeparator, nullptr);
        found = piece + "/" + name;
        if (CheckProgram(found) == VEL::StatusOk) {
            return 0;
        }
        if (piece.IsEmpty()) {
            return NoProgram;
        }
    }
}

/// The name by which the program was started, null when it isn't known.
const char* StartedName() {
    int count = 0;
    char** arguments = nullptr;
    VELSysGetCmdLineArgs(count, arguments);
    return count > 0 && arguments != nullptr ? arguments[0] : nullptr;
}

/// The first directory of `PATH` in which there is a readable file of that name, with the name; empty without one.
std::string FindInPath(const char* name) {
    const char* const variable = std::getenv("PATH");
    if (variable == nullptr) {
        return {};
    }
    std::string_view rest(variable, strnlen(variable, LongestSource));
    while (!rest.empty()) {
        const std::string_view piece = rest.substr(0, rest.find(ListSeparator[0]));
        rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
        if (piece.empty()) {
            continue;
        }
        std::string program(piece);
        if (program.back() != '/') {
            program += '/';
        }
        program += name;
        if (access(program.c_str(), R_OK) == 0) {
            return program;
        }
    }
    return {};
}

/// The program's own file, as far as it is known.
std::string LocateProgram(const char* name) {
    if (std::strchr(name, '/') == nullptr) {
        return FindInPath(name);
    }
    if (name[0] == '/') {
        return {name, strnlen(name, LongestSource)};
    }
    char directory[LongestSource + 1];
    if (getcwd(directory, sizeof directory) == nullptr) {
        return {};
    }
    return std::string(directory) + '/' + name;
}

/// Native text as UTF-8: as it stands where it is UTF-8.
std::string AsUTF8(const std::string& text) {
    if (VEL::internal::IsUTF8(text.data(), text.size())) {
        return text;
    }
    // From the wide form: a narrow string may give its bytes as they stand.
    const QORUnicodeString native(text.c_str());
    const VEL::internal::UTF8Text converted(native.ConvertToUCChar());
    return converted.Get() != nullptr ? std::string(converted.Get(), converted.Length()) : std::string();
}

/// The program's directory without the two above it: below "linux/code/bin" stands what is run.
std::string FindInstallPath() {
    static constexpr int Levels = 3;
    const char* const name = StartedName();
    std::string path = name != nullptr ? LocateProgram(name) : std::string();
    for (int level = 0; level < Levels; ++level) {
        const std::size_t slash = path.rfind('/');
        if (slash == std::string::npos) {
            break;
        }
        path.resize(slash);
    }
    return AsUTF8(path);
}

} // namespace

int VELFindFileByRelPath(const QORUnicodeString& relative, QORUnicodeString& found,
                         const QORUnicodeString* searchPath) {
    QORUnicodeString list;
    if (searchPath != nullptr) {
        list = *searchPath;
    } else {
        VELGetEnvInt("QORInstallPath", &list);
    }
    if (list.IsEmpty() || *list.ConvertToUCChar() == ListSeparator[0]) {
        // The tokenizer doesn't report an empty piece at the start.
        return 0;
    }
    QORToken pieces(list, KeepEmpty);
    for (;;) {
        const QORUnicodeString piece = pieces.GetNextToken(ListSeparator, nullptr);
        if (piece.IsEmpty()) {
            return 0;
        }
        VELSysPath path(piece);
        // Deliberate: what can't be appended leaves the directory itself to be looked for.
        path.Append(relative);
        if (path.IsFile(0) || path.IsDirectory(0)) {
            path.GetAsString(found);
            return 1;
        }
    }
}

int QORWhence(QORUnicodeString& found, const QORUnicodeString& name) {
    return FindProgram(found, name);
}

const char* VELGetMainInstallPath() {
    static constinit std::atomic<const char*> s_path{nullptr};
    // Acquire and release: the text is written before its address is there.
    const char* path = s_path.load(std::memory_order_acquire);
    if (path != nullptr) {
        return path;
    }
    std::unique_ptr<char[]> made;
    try {
        const std::string found = FindInstallPath();
        made = VEL::internal::DuplicateText(found.c_str(), found.size());
    } catch (const std::exception&) {
        made = nullptr;
    }
    if (made == nullptr) {
        // Without memory it isn't known this time.
        return "";
    }
    // The first one stays, since its address is out.
    if (!s_path.compare_exchange_strong(path, made.get(), std::memory_order_acq_rel, std::memory_order_acquire)) {
        return path;
    }
    return made.release();
}
