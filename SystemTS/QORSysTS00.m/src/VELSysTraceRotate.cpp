#include "VELSysTraceRotate.h"

#include "CountedStream.h"
#include "HeapMemory.h"
#include "VELSysStr.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysTraceRotate::Layout {
    using Rotate = VELSysTraceRotate;
    static_assert(offsetof(Rotate, _stream) == 8 && offsetof(Rotate, _maximumSize) == 16);
    static_assert(offsetof(Rotate, _path) == 24 && offsetof(Rotate, _stem) == 32);
    static_assert(offsetof(Rotate, _extension) == 40 && offsetof(Rotate, _next) == 48);
    static_assert(offsetof(Rotate, _oldest) == 56 && offsetof(Rotate, _count) == 64);
    static_assert(offsetof(Rotate, _format) == 72 && offsetof(Rotate, _callback) == 136);
    static_assert(offsetof(Rotate, _data) == 144 && sizeof(Rotate) == 152);
};
#pragma GCC diagnostic pop

namespace {

using VEL::internal::CountedMode;
using VEL::internal::HeapArray;
using VEL::internal::WriteWhole;

/// Numbered names have so many bytes with their terminator; what is longer is cut, deliberately.
constexpr std::size_t NameSize = 260;
/// So many numbers are asked for one by one before listing the directory is cheaper.
constexpr unsigned long FewNumbers = 64;
/// So many are asked for where the directory can't be listed.
constexpr unsigned long MostNumbers = 65536;
constexpr unsigned long Base = 10;
constexpr std::size_t CopyBlockSize = 8192;
constexpr mode_t CopyMode = S_IRUSR | S_IWUSR;

/// A text as the system is given it, which is UTF-8 in every environment.
class SystemText {
public:
    explicit SystemText(const QORUnicodeString& text) : _bytes(VELSysStrToUTF8(text)), _isEmpty(text.IsEmpty()) {}

    /// False where memory is out.
    bool IsThere() const { return _isEmpty || _bytes != nullptr; }
    const char* Get() const { return _bytes != nullptr ? _bytes.get() : ""; }

private:
    HeapArray<char> _bytes;
    bool _isEmpty;
};

/// The decimal digits that the numbers are filled up to.
unsigned int CountDigits(unsigned long count) {
    unsigned int digits = 0;
    for (unsigned long reached = 1; reached < count; ++digits) {
        const bool isLast = reached > std::numeric_limits<unsigned long>::max() / Base;
        reached = isLast ? count : reached * Base;
    }
    return digits;
}

/// The names of the numbered files.
class NumberedNames {
public:
    NumberedNames(const QORUnicodeString& stem, const QORUnicodeString& extension, const char* format,
                  unsigned long count)
        : _stem(stem), _extension(extension), _format(format),
          // The format takes an `int`.
          _last(std::min(count, static_cast<unsigned long>(INT_MAX))) {
        const std::size_t begin = std::strlen(_stem.Get()) + 1;
        const std::size_t room = begin < NameSize - 1 ? NameSize - 1 - begin : 0;
        const std::size_t digits = CountDigits(count);
        if (room == 0) {
            _run = Endless;
            return;
        }
        for (std::size_t shown = room; shown < digits; ++shown) {
            _run *= Base;
        }
    }

    bool AreThere() const { return _stem.IsThere() && _extension.IsThere(); }
    /// The highest number.
    unsigned long Last() const { return _last; }
    /// The name with a number, valid until the next call.
    const char* Form(unsigned long index) {
        std::snprintf(_name, sizeof _name, _format, _stem.Get(), static_cast<int>(index), _extension.Get());
        return _name;
    }
    /// The first number behind `index` with another name: names that are cut may have lost digits.
    unsigned long Following(unsigned long index) const { return (index / _run + 1) * _run; }
    /// The different names, about.
    unsigned long Size() const { return _last / _run; }

    /// The directory in which the numbers stand, with its slash; empty for the working directory.
    std::string_view Directory() const {
        const std::string_view stem(_stem.Get());
        return stem.substr(0, stem.rfind('/') + 1);
    }
    /// The lowest number that the name of an entry of that directory has; 0 for none.
    unsigned long NumberOf(std::string_view entry);

private:
    static constexpr unsigned long Endless = std::numeric_limits<unsigned long>::max();

    SystemText _stem;
    SystemText _extension;
    const char* _format;
    unsigned long _last;
    unsigned long _run = 1; ///< So many numbers in a row have one name.
    char _name[NameSize] = {};
};

unsigned long NumberedNames::NumberOf(std::string_view entry) {
    const std::size_t begin = Directory().size();
    const std::size_t digits = std::strlen(_stem.Get()) - begin + 1;
    if (entry.size() <= digits) {
        return 0;
    }
    unsigned long number = 0;
    const auto [end, error] = std::from_chars(entry.data() + digits, entry.data() + entry.size(), number);
    if (error != std::errc() || number > _last / _run) {
        return 0;
    }
    number = std::max(number * _run, 1UL);
    const std::string_view name = std::string_view(Form(number)).substr(begin);
    const bool isSame = name.substr(0, name.find('/')) == entry;
    return isSame ? number : 0;
}

/// The numbered file that was changed first.
class Oldest {
public:
    explicit Oldest(NumberedNames& names) : _names(names) {}

    /// Its number; 1 when there is no numbered file.
    unsigned long Find() {
        if (_names.Size() <= FewNumbers) {
            _AskUpTo(_names.Last());
        } else if (!_AskListed()) {
            _AskUpTo(std::min(_names.Last(), MostNumbers));
        }
        return _index;
    }

private:
    void _Ask(unsigned long index) {
        struct stat64 status;
        if (stat64(_names.Form(index), &status) != 0) {
            return;
        }
        const long modified = status.st_mtime;
        const bool isOlder = !_modified || modified < *_modified || (modified == *_modified && index < _index);
        if (isOlder) {
            _modified = modified;
            _index = index;
        }
    }

    void _AskUpTo(unsigned long last) {
        for (unsigned long i = 1; i <= last; i = _names.Following(i)) {
            _Ask(i);
        }
    }

    /// Asks for those that the directory has. False when it can't be listed.
    bool _AskListed() {
        char directory[NameSize] = ".";
        const std::string_view text = _names.Directory();
        std::copy(text.begin(), text.end(), directory);
        const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(directory), closedir);
        if (listing == nullptr) {
            return errno == ENOENT || errno == ENOTDIR;
        }
        errno = 0;
        while (const dirent64* entry = readdir64(listing.get())) {
            const unsigned long index = _names.NumberOf(entry->d_name);
            if (index != 0) {
                _Ask(index);
            }
            errno = 0;
        }
        return errno == 0;
    }

    NumberedNames& _names;
    std::optional<long> _modified;
    unsigned long _index = 1;
};

/// The first number from `first` on whose name can't be opened for reading; 0 when there is none.
unsigned long FindFree(NumberedNames& names, unsigned long first) {
    for (unsigned long i = first; i <= names.Last(); i = names.Following(i)) {
        // Asks and doesn't open: a process without a free descriptor would take every name for free.
        if (faccessat(AT_FDCWD, names.Form(i), R_OK, AT_EACCESS) != 0) {
            return i;
        }
    }
    return 0;
}

class Descriptor {
public:
    Descriptor(const char* path, int flags) : _number(open(path, flags | O_CLOEXEC, CopyMode)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (IsOpen()) {
            close(_number);
        }
    }

    bool IsOpen() const { return _number >= 0; }
    int Get() const { return _number; }

private:
    int _number;
};

/// Copies a file; what the target has behind the source's end stays.
bool CopyFile(const char* from, const char* to) {
    const Descriptor source(from, O_RDONLY);
    if (!source.IsOpen()) {
        return false;
    }
    const Descriptor target(to, O_WRONLY | O_CREAT);
    if (!target.IsOpen()) {
        return false;
    }
    char block[CopyBlockSize];
    for (;;) {
        const ssize_t count = read(source.Get(), block, sizeof block);
        if (count <= 0) {
            return count == 0;
        }
        const auto size = static_cast<std::size_t>(count);
        if (WriteWhole(target.Get(), block, size) != size) {
            return false;
        }
    }
}

} // namespace

VELSysTraceRotate::VELSysTraceRotate(const char* path, unsigned long maximumSize, unsigned long count)
    : VELSysTraceRotate(path, nullptr, nullptr, maximumSize, count) {}

VELSysTraceRotate::VELSysTraceRotate(const char* path, Callback callback, void* data, unsigned long maximumSize,
                                     unsigned long count)
    : _maximumSize(maximumSize != 0 ? maximumSize : DefaultMaximumSize), _count(count != 0 ? count : DefaultCount),
      _callback(callback), _data(data) {
    _Build(path != nullptr ? path : "");
}

VELSysTraceRotate::~VELSysTraceRotate() {
    Close();
}

void VELSysTraceRotate::_Build(const char* path) {
    const std::size_t length = std::strlen(path);
    _path.BuildFromUTF8(path, length);
    // Parted as the system is given it: a path that isn't UTF-8 has other bytes there.
    const SystemText whole(_path);
    const std::string_view text(whole.Get());
    const std::size_t stemLength = std::min(text.find('.'), text.size());
    _stem.BuildFromUTF8(text.data(), stemLength);
    _extension.BuildFromUTF8(text.data() + stemLength, text.size() - stemLength);
    std::snprintf(_format, sizeof _format, "%s0%dd%s", "%s.%", static_cast<int>(CountDigits(_count)), "%s");
    const bool isWhole = text.empty() == (length == 0) && SystemText(_stem).Get() == text.substr(0, stemLength) &&
                         SystemText(_extension).Get() == text.substr(stemLength);
    if (!isWhole) {
        // Without memory, or not UTF-8 in a way that the parts show: other names are others' files.
        _path.BuildFromUTF8(nullptr, 0);
        return;
    }
    NumberedNames names(_stem, _extension, _format, _count);
    if (names.AreThere()) {
        _next = _oldest = Oldest(names).Find();
    }
}

bool VELSysTraceRotate::IsMoreWriteAllowed(std::size_t length) const {
    const long position = _stream != nullptr ? std::ftell(_stream) : 0;
    if (position < 0) {
        // What is no file, such as a device, has no position and never fills up.
        return true;
    }
    const auto size = static_cast<unsigned long>(position);
    return size <= _maximumSize && length <= _maximumSize - size;
}

/// Opens the present file in place of the stream that is open.
int VELSysTraceRotate::_OpenStream(VEL::internal::CountedMode mode) {
    if (_stream != nullptr) {
        std::fclose(std::exchange(_stream, nullptr));
    }
    _stream = VEL::internal::OpenCountedStream(SystemText(_path).Get(), mode);
    return _stream != nullptr ? 0 : -1;
}

int VELSysTraceRotate::Open() {
    if (IsMoreWriteAllowed(0)) {
        return _OpenStream(CountedMode::Append);
    }
    Close();
    RenameFile();
    return _OpenStream(CountedMode::Empty);
}

void VELSysTraceRotate::PrepareToWrite(std::size_t length) {
    if (IsMoreWriteAllowed(length)) {
        return;
    }
    Close();
    RenameFile();
    // Deliberately also where the file couldn't be moved: its text goes.
    _OpenStream(CountedMode::Empty);
}

int VELSysTraceRotate::Write(const char* text) {
    if (_stream == nullptr || text == nullptr) {
        return -1;
    }
    const std::size_t length = std::strlen(text);
    if (length > INT_MAX) {
        return -1;
    }
    PrepareToWrite(length);
    if (_stream == nullptr) {
        return -1;
    }
    const bool isWritten = std::fwrite(text, 1, length, _stream) == length;
    std::fflush(_stream);
    return isWritten ? static_cast<int>(length) : -1;
}

void VELSysTraceRotate::Close() {
    if (_stream == nullptr) {
        return;
    }
    const bool isUnwritten = std::ftell(_stream) == 0;
    std::fclose(std::exchange(_stream, nullptr));
    if (isUnwritten) {
        unlink(SystemText(_path).Get());
    }
}

void VELSysTraceRotate::RenameFile() {
    const SystemText present(_path);
    NumberedNames names(_stem, _extension, _format, _count);
    if (*present.Get() == 0 || !names.AreThere()) {
        return;
    }
    const unsigned long free = FindFree(names, _next);
    if (free != 0) {
        if (_MoveTo(present.Get(), names.Form(free))) {
            _next = free + 1;
        }
        return;
    }
    const char* const target = names.Form(_oldest);
    _AdvanceOldest(names.Last());
    // Somebody else may have removed it.
    if (unlink(target) == 0 || errno == ENOENT) {
        _MoveTo(present.Get(), target);
    }
}

/// The numbers go round as they always have: from the highest but one the search goes on at 1, deliberately.
void VELSysTraceRotate::_AdvanceOldest(unsigned long last) {
    if (_oldest >= last) {
        _oldest = 1;
        _next = 2;
        return;
    }
    ++_oldest;
    _next = _oldest == last ? 1 : _oldest;
}

bool VELSysTraceRotate::_MoveTo(const char* present, const char* target) const {
    if (rename(present, target) == 0) {
        if (_callback != nullptr) {
            _callback(target, _data);
        }
        return true;
    }
    return CopyFile(present, target);
}
