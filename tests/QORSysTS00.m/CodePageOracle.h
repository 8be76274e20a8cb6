/// @file
/// What a code page must give, written down step by step around the C library's `iconv`. Nothing here is fast.
#pragma once

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iconv.h>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace CodePageOracle {

using Units = std::vector<unsigned short>;

/// The code pages that tests go through, as `iconv` knows them.
inline const std::initializer_list<const char*> CodePages = {"ISO-8859-1", "ISO-8859-2", "ISO-8859-5", "ISO-8859-15",
                                                             "EUC-JP",     "SHIFT_JIS",  "IBM-932",    "EUC-KR",
                                                             "EUC-CN",     "GB18030",    "BIG5"};

inline bool IsKnown(const char* codePage) {
    const iconv_t descriptor = iconv_open("UTF-16LE", codePage);
    if (descriptor == reinterpret_cast<iconv_t>(-1)) {
        return false;
    }
    iconv_close(descriptor);
    return true;
}

/// Whether a C library may be without the code page; it has all others.
inline bool MayBeMissing(const std::string& codePage) {
    return codePage == "IBM-932";
}

/// The name of a code page as that of a test.
inline std::string TestNameOf(std::string codePage) {
    std::erase_if(codePage, [](char c) { return c == '-' || c == '_'; });
    return codePage;
}

/// What a conversion came to.
struct Result {
    Units units;          ///< Or bytes, one each.
    std::size_t consumed; ///< Bytes of the source.
    bool operator==(const Result&) const = default;
};

class Converter {
public:
    /// @param locale  The C locale that tells how long a damaged character is; null for none.
    explicit Converter(const char* codePage, const char* locale = nullptr)
        : _toUTF16(Open("UTF-16LE", codePage)), _fromUTF16(Open(codePage, "UTF-16LE")) {
        if (locale != nullptr) {
            _locale = newlocale(LC_ALL_MASK, locale, nullptr);
            if (_locale == nullptr) {
                throw std::runtime_error(std::string("no locale ") + locale);
            }
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        iconv_close(_toUTF16);
        iconv_close(_fromUTF16);
        if (_locale != nullptr) {
            freelocale(_locale);
        }
    }

    /// @param room  In units; below 1, one for each byte.
    Result ToUTF16(const std::string& text, long room) {
        const std::size_t units = room < 1 ? text.size() : static_cast<std::size_t>(room);
        std::vector<char> target(2 * units + 2);
        char* in = const_cast<char*>(text.data());
        std::size_t inLeft = text.size();
        char* out = target.data();
        std::size_t outLeft = 2 * units;
        std::mbstate_t state{};
        for (;;) {
            errno = 0;
            if (iconv(_toUTF16, &in, &inLeft, &out, &outLeft) != Failed) {
                break;
            }
            const int error = errno;
            if (inLeft == 0) {
                break;
            }
            if (error == E2BIG) {
                if (room != 0) {
                    break;
                }
                messages += "iconv E2BIG error: buffer overflow. InBytesLeft: " + std::to_string(inLeft) + "\n";
            } else if (error == EINVAL) {
                if (outLeft == 0) {
                    break;
                }
                messages += "iconv EINVAL error: input buffer was truncated.\n";
            } else if (error != EILSEQ) {
                messages += "iconv errno is: " + std::to_string(error) + "\n";
            }
            if (outLeft < 2) {
                break;
            }
            const std::size_t length = DamagedLength(in, inLeft, state);
            if (length > inLeft) {
                in += inLeft;
                inLeft = 0;
                break;
            }
            in += length;
            inLeft -= length;
            *out++ = '?';
            *out++ = 0;
            outLeft -= 2;
            if (inLeft == 0) {
                break;
            }
        }
        iconv(_toUTF16, nullptr, nullptr, nullptr, nullptr);
        Result result{Units(static_cast<std::size_t>(out - target.data()) / 2), text.size() - inLeft};
        if (!result.units.empty()) {
            std::memcpy(result.units.data(), target.data(), 2 * result.units.size());
        }
        return result;
    }

    std::string FromUTF16(const Units& text) {
        std::string target(4 * text.size(), '\0');
        char* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
        std::size_t inLeft = 2 * text.size();
        char* out = target.data();
        std::size_t outLeft = target.size();
        while (inLeft > 0) {
            const std::size_t result = iconv(_fromUTF16, &in, &inLeft, &out, &outLeft);
            if (result == 0 || inLeft == 0) {
                break;
            }
            if (result == Failed) {
                if (outLeft == 0) {
                    break;
                }
                *out++ = '?';
                --outLeft;
                in += 2;
                inLeft -= 2;
            }
        }
        iconv(_fromUTF16, nullptr, nullptr, nullptr, nullptr);
        target.resize(static_cast<std::size_t>(out - target.data()));
        return target;
    }

    /// The first character of a text that is not empty. `result` is what taking it answers.
    Result Next(const std::string& text, int& result) {
        Result taken = ToUTF16(text, 1);
        if (taken.units.empty()) {
            taken = ToUTF16(text, 2);
        }
        result = static_cast<int>(taken.units.size());
        if (result > 0) {
            return taken;
        }
        const bool isZero = taken.consumed == text.size() || text[taken.consumed] == 0;
        result = isZero ? 1 : 0;
        return {isZero ? Units{0} : Units{}, taken.consumed == 0 ? 1ul : 0ul};
    }

    /// All that was said so far.
    std::string messages;

private:
    static constexpr auto Failed = static_cast<std::size_t>(-1);

    static iconv_t Open(const char* to, const char* from) {
        const iconv_t descriptor = iconv_open(to, from);
        if (descriptor == reinterpret_cast<iconv_t>(-1)) {
            throw std::runtime_error(std::string("no way from ") + from + " to " + to);
        }
        return descriptor;
    }

    std::size_t DamagedLength(const char* in, std::size_t left, std::mbstate_t& state) const {
        if (_locale == nullptr) {
            return 1;
        }
        const locale_t former = uselocale(_locale);
        const std::size_t length = std::mbrtowc(nullptr, in, left, &state);
        uselocale(former);
        return length == Failed || length == static_cast<std::size_t>(-2) || length == 0 ? 1 : length;
    }

    iconv_t _toUTF16;
    iconv_t _fromUTF16;
    locale_t _locale = nullptr;
};

} // namespace CodePageOracle
