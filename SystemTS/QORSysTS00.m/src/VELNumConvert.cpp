#include "VELNumConvert.h"

#include "LocaleGuard.h"
#include "QORUnicodeString.h"
#include "StringAccess.h"
#include "StringText.h"
#include "VELStringIteration.h"
#include "VELSysCLocale.h"
#include "VELSysNLSCore.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cctype>
#include <cfenv>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <langinfo.h>
#include <string_view>
#include <system_error>

using namespace VEL::internal;

struct VEL::NumConvertCtx::Layout {
    static_assert(offsetof(NumConvertCtx, _impl) == 0 && offsetof(NumConvertCtx, _flags) == 8);
    static_assert(offsetof(NumConvertCtx, _separator) == 12 && sizeof(NumConvertCtx) == 16);
    static_assert(sizeof(_NumConvertCtx) == sizeof(void*));
};

namespace {

constexpr char Point = '.';
constexpr char Comma = ',';
constexpr const char* PlainLocale = "C";

bool IsASCII(int code) {
    return code > 0 && code < 0x80;
}

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

/// The decimal separator of a text.
class Separator {
public:
    Separator(int code, std::string_view text) : _code(code), _byte(static_cast<char>(code)) {
        constexpr int lastCodePoint = 0x10FFFF;
        if (IsASCII(code) || code < 0 || code > lastCodePoint ||
            std::all_of(text.begin(), text.end(), [](char byte) { return IsASCII(byte) || byte == '\0'; })) {
            return;
        }
        // Only now, since a conversion that fails is reported.
        const wchar_t character = code;
        QORUnicodeString wide;
        if (wide.BuildFromWChar(&character, 1) == 1) {
            _form = wide.ConvertToChar();
            if (_form != wide) {
                // Something else stands in for a character that the code page doesn't have.
                _form.Reset();
            }
        }
    }

    int Code() const { return _code; }
    /// As narrow text; empty when it can't be in the text.
    std::string_view Text() const {
        if (IsASCII(_code)) {
            return {&_byte, 1};
        }
        const auto [text, length] = MBCSOf(StringAccess::BlockOf(_form));
        return {text, static_cast<std::size_t>(length)};
    }
    bool IsIn(std::string_view text) const { return !Text().empty() && text.find(Text()) != std::string_view::npos; }

private:
    int _code;
    char _byte;
    QORUnicodeString _form;
};

/// The decimal point of a locale, as a character and as its narrow text.
struct DecimalPoint {
    int code;
    char text[2 * MB_LEN_MAX];
};

DecimalPoint DecimalPointInForce() {
    VELSysCLocale::LConv conventions;
    VELSysCLocale::GetLCConv(conventions);
    const wchar_t* wide = conventions.decimal_point();
    const DecimalPoint plain{Point, "."};
    if (wide == nullptr || *wide == L'\0') {
        return plain;
    }
    DecimalPoint point{*wide, {}};
    std::mbstate_t state = {};
    const std::size_t length = std::wcsrtombs(point.text, &wide, sizeof point.text - 1, &state);
    return length != static_cast<std::size_t>(-1) ? point : plain;
}

/// @param locale  In force, or PlainLocale.
DecimalPoint DecimalPointOf(locale_t locale) {
    if (IsOwnLocale(locale)) {
        const char* const text = nl_langinfo_l(RADIXCHAR, locale);
        // A character of ASCII is the same in every locale, and no conversion is needed.
        if (IsASCII(text[0]) && text[1] == '\0') {
            return {text[0], {text[0]}};
        }
    }
    return DecimalPointInForce();
}

double Read(const char* text, char** end, locale_t locale) {
    return IsOwnLocale(locale) ? strtod_l(text, end, locale) : std::strtod(text, end);
}

bool IsSpace(char byte, locale_t locale) {
    const auto code = static_cast<unsigned char>(byte);
    return (IsOwnLocale(locale) ? isspace_l(code, locale) : std::isspace(code)) != 0;
}

/// Reads a text that has the locale's decimal point. @param text  Zero-terminated.
int ReadAll(double& value, std::string_view text, locale_t locale) {
    char* rest = nullptr;
    value = Read(text.data(), &rest, locale);
    const char* const end = text.data() + text.size();
    if (rest != text.data()) {
        while (rest != end && IsSpace(*rest, locale)) {
            ++rest;
        }
    }
    return rest == end ? VEL::StatusOk : VEL::StatusBadArgument;
}

/// Reads a text in which a separator stands for the locale's decimal point.
int ReadSeparated(double& value, std::string_view text, std::string_view separator, std::string_view point,
                  locale_t locale) {
    const std::size_t place = separator.empty() ? std::string_view::npos : text.find(separator);
    if (place == std::string_view::npos) {
        const bool hasForeignSeparator = text.find(point) != std::string_view::npos;
        return hasForeignSeparator ? VEL::StatusBadArgument : ReadAll(value, text, locale);
    }
    const std::string_view behind = text.substr(place + separator.size());
    if (behind.find(separator) != std::string_view::npos) {
        return VEL::StatusBadArgument;
    }
    const std::size_t length = place + point.size() + behind.size();
    OptimizedBuffer<char, 64> buffer;
    char* const copy = buffer.Reserve(length + 1);
    if (copy == nullptr) {
        return VEL::StatusBadArgument;
    }
    char* const pointInCopy = copy + text.copy(copy, place);
    behind.copy(pointInCopy + point.copy(pointInCopy, point.size()), behind.size());
    copy[length] = '\0';
    return ReadAll(value, {copy, length}, locale);
}

/// @param locale  In force, or PlainLocale.
int Read(double& value, std::string_view text, const Separator& separator, locale_t locale) {
    const DecimalPoint point = DecimalPointOf(locale);
    return point.code == separator.Code() ? ReadAll(value, text, locale)
                                          : ReadSeparated(value, text, separator.Text(), point.text, locale);
}

/// Reads a short decimal number as ReadAll() does in a locale with this separator, at a fraction of the cost.
/// @return False, with `value` left alone, for all other texts, whether they are numbers or not.
bool ReadQuickly(double& value, std::string_view text, int separator) {
    char copy[32];
    // What is read here is rounded to the nearest.
    if (text.size() > sizeof copy || (separator != Point && separator != Comma) || std::fegetround() != FE_TONEAREST) {
        return false;
    }
    if (separator == Comma) {
        if (text.find(Point) != std::string_view::npos) {
            return false;
        }
        std::replace_copy(text.begin(), text.end(), copy, Comma, Point);
        text = {copy, text.size()};
    }
    const char* const first = text.data();
    const char* const end = first + text.size();
    const char* const lead = text.starts_with('-') ? first + 1 : first;
    // Infinity and what is no number have names and forms that the C library knows.
    if (lead == end || !(IsDigit(*lead) || *lead == Point)) {
        return false;
    }
    double number = 0;
    const auto [rest, error] = std::from_chars(first, end, number);
    if (error != std::errc() || rest != end) {
        return false;
    }
    value = number;
    return true;
}

/// True for a locale of the thread whose decimal point is no part of anything else in a number.
bool HasUsualPoint(locale_t own) {
    const char* const text = nl_langinfo_l(RADIXCHAR, own);
    return *text == Point || *text == Comma;
}

/// PlainLocale, which is made but once; null when it can't be had.
locale_t KeptPlainLocale() {
    static const locale_t s_locale = newlocale(LC_ALL_MASK, PlainLocale, nullptr);
    return s_locale;
}

int ReadInLocale(double& value, std::string_view text, const Separator& separator, const char* name) {
    const bool isPlain = std::strcmp(name, PlainLocale) == 0;
    if (const locale_t kept = isPlain ? KeptPlainLocale() : nullptr) {
        return Read(value, text, separator, kept);
    }
    int status = VEL::StatusOk;
    const VELSysCLocale::ThreadLC scope(LC_ALL, name, &status);
    return Read(value, text, separator, uselocale(nullptr));
}

int ReadInEnvironmentLocale(double& value, std::string_view text, const Separator& separator) {
    const VEL::internal::EnvironmentLocaleName name;
    return ReadInLocale(value, text, separator, *name.text != '\0' ? name.text : PlainLocale);
}

} // namespace

VEL::_NumConvertCtx::~_NumConvertCtx() = default;

VEL::NumConvertCtx::NumConvertCtx() {
    Reset();
}

VEL::NumConvertCtx::~NumConvertCtx() {
    delete _impl;
}

int VEL::NumConvertCtx::SetDecimalSeparator(int c) {
    if ((_flags & LocaleOfEnvironment) != 0) {
        return 0;
    }
    _separator = c != 0 ? c : Point;
    return 1;
}

int VEL::NumConvertCtx::GetDecimalSeparator() {
    return _separator;
}

void VEL::NumConvertCtx::SetFlags(int flags) {
    _flags = flags;
    if ((flags & LocaleOfEnvironment) == 0) {
        return;
    }
    VELSysNLSEnv environment = {};
    GetEnvNLSData(&environment);
    // Deliberate: the flag stands already, so this is refused. Callers rely on the separator that they have set before.
    SetDecimalSeparator(*environment.decimalPoint);
}

void VEL::NumConvertCtx::Reset() {
    _flags = 0;
    _separator = Point;
}

int VEL::ConvertToNumEx(double& value, const QORUnicodeString& s, NumConvertCtx* ctx) {
    const int flags = ctx != nullptr ? ctx->_flags : 0;
    if ((flags & NumConvertCtx::Reserved) != 0) {
        return StatusNotImplemented;
    }
    CaptureLocaleBeforeLoad();
    const Block block = StringAccess::BlockOf(s);
    const MBCSRange range = MBCSOf(block);
    if (IsMissing(block, range)) {
        return StatusBadArgument;
    }
    const std::string_view text(range.text, static_cast<std::size_t>(range.length));
    const int code = ctx != nullptr ? ctx->_separator : Point;
    const locale_t current = uselocale(nullptr);
    const bool isOwn = IsOwnLocale(current);
    const bool isEnvironment = (flags & NumConvertCtx::LocaleOfEnvironment) != 0;
    if ((isOwn ? HasUsualPoint(current) : !isEnvironment) && ReadQuickly(value, text, code)) {
        return StatusOk;
    }
    const Separator separator(code, text);
    if (isOwn) {
        const int result = Read(value, text, separator, current);
        if (result == StatusOk || !separator.IsIn(text)) {
            return result;
        }
    }
    return isEnvironment ? ReadInEnvironmentLocale(value, text, separator)
                         : ReadInLocale(value, text, separator, PlainLocale);
}
