// The records of the reference traces, and the option file that fills their table.

#include "QORSysTSTrace.h"

#include "FileReading.h"
#include "HeapMemory.h"
#include "StandardStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

struct QORSysTSRefTrace::Layout {
    static_assert(offsetof(QORSysTSRefTrace, _references) == 0 && offsetof(QORSysTSRefTrace, _state) == 2);
    static_assert(offsetof(QORSysTSRefTrace, _name) == 4 && offsetof(QORSysTSRefTrace, _file) == 72);
    static_assert(offsetof(QORSysTSRefTrace, _next) == 80 && sizeof(QORSysTSRefTrace) == 88);
};

QORSysTSRefTrace** QORSysTSRefTrace::S_RefTable = nullptr;
unsigned int QORSysTSRefTrace::S_Status = 0;

namespace {

constexpr unsigned int StatusRead = 1;
/// Bytes of a line with the terminator.
constexpr std::size_t LineSize = 4092;

constexpr const char* FirstQuoteMessage =
    "Error in QORSysTSTraceOpt.txt file : Missing 1st \" in -o option. The -o option syntax is -o \"file_path\"  and "
    "the \" characters are mandatory .\n";
constexpr const char* SecondQuoteMessage =
    "Error in QORSysTSTraceOpt.txt file : missing 2nd  \" in -o option. The -o option syntax is -o \"file_path\"  and "
    "the \" characters are mandatory .\n";

/// Stores `text` with a terminator, cut to what `size` bytes hold.
void StoreText(char* target, std::size_t size, std::string_view text) {
    const std::size_t length = std::min(text.size(), size - 1);
    std::copy_n(text.data(), length, target);
    target[length] = 0;
}

/// The output that a line names behind its trace; reports what is wrong with it.
void ReadOutput(std::string_view rest, char* file) {
    constexpr std::string_view option = " -o ";
    const std::size_t found = rest.find(option);
    if (found == std::string_view::npos) {
        return;
    }
    rest.remove_prefix(found + option.size());
    if (rest.empty() || rest.front() != '"') {
        std::fputs(FirstQuoteMessage, stderr);
        return;
    }
    rest.remove_prefix(1);
    const std::size_t end = rest.find('"');
    if (end == std::string_view::npos) {
        std::fputs(SecondQuoteMessage, stderr);
        return;
    }
    StoreText(file, QORSysTSRefTrace::FileSize, rest.substr(0, end));
}

std::FILE* OpenOutput(const char* name, bool isEmptied) {
    const std::string_view text(name);
    if (text == "STDOUT" || text == "stdout") {
        return stdout;
    }
    if (text == "STDERR" || text == "stderr") {
        return stderr;
    }
    std::FILE* const file = std::fopen(name, isEmptied ? "we" : "a+e");
    if (file == nullptr) {
        std::fprintf(stderr, "QORSysTSTrace Error  : unable to open trace file %s. Trace redirected to stderr.\n",
                     name);
        return stderr;
    }
    return file;
}

} // namespace

QORSysTSRefTrace::QORSysTSRefTrace(const char* name) : _file(stderr) {
    if (name != nullptr) {
        StoreText(_name, sizeof _name, name);
    }
}

QORSysTSRefTrace::~QORSysTSRefTrace() {
    _CloseFile();
    _next = nullptr;
    _references = 0;
    _state = 0;
    // Kept from the optimiser: a destroyed record stays recognisable, although no program may look at it.
    asm volatile("" : : "r"(this) : "memory");
}

void QORSysTSRefTrace::_CloseFile() {
    std::FILE* const file = std::exchange(_file, nullptr);
    if (file != nullptr && !VEL::internal::IsStandard(file)) {
        std::fclose(file);
    }
}

unsigned int QORSysTSRefTrace::CalcRefKey(const char* name) {
    unsigned int sum = 0;
    for (unsigned int i = 0; name != nullptr && i < NameSize && name[i] != 0; ++i) {
        sum += static_cast<unsigned char>(name[i]);
    }
    return sum & (TableSize - 1);
}

std::FILE* QORSysTSRefTrace::OpenOptFile() {
    const char* directory = std::getenv("QORSysTSTraDec");
    if (directory == nullptr) {
        directory = std::getenv("HOME");
    }
    if (directory == nullptr) {
        directory = "/tmp/";
    }
    char* path = nullptr;
    if (asprintf(&path, "%s/QORSysTSTraceOpt.txt", directory) < 0) {
        return nullptr;
    }
    const VEL::internal::HeapArray<char> owned(path);
    return VEL::internal::OpenForReading(path).release();
}

int QORSysTSRefTrace::ReadOptFile(std::FILE* options, char* name, int* state, char* file) {
    if (options == nullptr || name == nullptr || state == nullptr || file == nullptr) {
        return 0;
    }
    char buffer[LineSize];
    while (std::fgets(buffer, sizeof buffer, options) != nullptr) {
        *state = 0;
        StoreText(file, FileSize, "STDERR");
        std::string_view line(buffer);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        constexpr std::string_view mark = "t:";
        // Comments, which begin with "//", are passed over as everything else is.
        if (line.substr(0, mark.size()) != mark) {
            continue;
        }
        line.remove_prefix(mark.size());
        const std::size_t end = std::min(line.find_first_of(" \n\r"), line.size());
        StoreText(name, NameSize, line.substr(0, end));
        ReadOutput(line.substr(end), file);
        return 1;
    }
    return 0;
}

QORSysTSRefTrace* QORSysTSRefTrace::FindRef(const char* name, int create, int* wasNew) {
    if (name == nullptr || strnlen(name, NameSize) == NameSize) {
        return nullptr;
    }
    if (S_RefTable == nullptr) {
        S_RefTable = new (std::nothrow) QORSysTSRefTrace*[TableSize]();
        if (S_RefTable == nullptr) {
            return nullptr;
        }
    }
    QORSysTSRefTrace** link = &S_RefTable[CalcRefKey(name)];
    for (; *link != nullptr; link = &(*link)->_next) {
        if (std::strcmp((*link)->_name, name) == 0) {
            if (wasNew != nullptr) {
                *wasNew = 0;
            }
            return *link;
        }
    }
    if (create == 0) {
        return nullptr;
    }
    *link = new (std::nothrow) QORSysTSRefTrace(name);
    if (*link != nullptr && wasNew != nullptr) {
        *wasNew = -1;
    }
    return *link;
}

void QORSysTSRefTrace::SetState(int state, char* file) {
    _state = static_cast<unsigned short>(state | StateActive);
    if (file == nullptr) {
        return;
    }
    _CloseFile();
    _file = OpenOutput(file, (state & StateActive) != 0);
}

void QORSysTSRefTrace::InitFromEnv() {
    if ((S_Status & StatusRead) != 0) {
        return;
    }
    S_Status |= StatusRead;
    if (std::getenv("QORSysTSTraDecLoad") != nullptr) {
        return;
    }
    const VEL::internal::File options(OpenOptFile());
    char name[NameSize];
    char file[FileSize];
    int state = 0;
    while (ReadOptFile(options.get(), name, &state, file) != 0) {
        int wasNew = 0;
        QORSysTSRefTrace* const reference = FindRef(name, 1, &wasNew);
        if (reference != nullptr && wasNew != 0) {
            reference->SetState(state, file);
        }
    }
}

QORSysTSRefTrace* QORSysTSRefTrace::ObtainRef(const char* name) {
    InitFromEnv();
    return FindRef(name, 0, nullptr);
}

int QORSysTSRefTrace::Release() {
    if (_references > 0) {
        --_references;
    }
    return _references;
}

template <class Value>
int QORSysTSRefTrace::_Print(const char* format, Value value) {
    if (_file == nullptr) {
        return 1;
    }
    std::fprintf(_file, format, value);
    return 0;
}

int QORSysTSRefTrace::operator<<(const QORUnicodeString& text) {
    return *this << text.ConvertToChar();
}

int QORSysTSRefTrace::operator<<(const char* text) {
    if (_file == nullptr) {
        return 1;
    }
    if (text != nullptr) {
        std::fputs(text, _file);
    }
    return 0;
}

int QORSysTSRefTrace::operator<<(int value) {
    return _Print("%d", value);
}

int QORSysTSRefTrace::operator<<(unsigned int value) {
    return _Print("%u", value);
}

int QORSysTSRefTrace::operator<<(long value) {
    return _Print("%ld", value);
}

int QORSysTSRefTrace::operator<<(unsigned long value) {
    return _Print("%lu", value);
}

int QORSysTSRefTrace::operator<<(double value) {
    return _Print("%f", value);
}

int QORSysTSRefTrace::operator<<(float value) {
    return _Print("%f", static_cast<double>(value));
}

int QORSysTSRefTrace::operator<<(QORSysTSTrcControl control) {
    return *this << (control == QORSysTSTrcEndLine ? "\n" : "");
}

int QORSysTSRefTrace::Flush() {
    return 0;
}
