#include "VELSysCodePage.h"

#include "PrintAndFlush.h"
#include "VELSysCLocale.h"
#include "VELSysNLSCore.h"
#include "VELSysStatus.h"
#include "VELSysUCAlgorithm.h"
#include "VELSysUCDecoder.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

using namespace VEL::UCS::internal;

namespace {

constexpr const char* IdentityName = "Identity";
constexpr int DefaultMaxCharSize = 16;
constexpr int UTF8MaxCharSize = 4;

/// Tells a converter's function to take all of its input, as the target has room for it.
constexpr int NoRoomGiven = -1;

constexpr const char* UTF8Name = "UTF-8";
/// The name that stands for none.
constexpr const char* NotAvailable = "N/A";
/// The form in which `iconv` takes and gives UTF-16.
constexpr const char* UTF16Name = "UTF-16LE";

/// The C locale that is known everywhere.
constexpr const char* NeutralLocale = "C";
/// Bytes of a locale name that a converter keeps, terminator included.
constexpr unsigned int LocaleSize = 85;

constexpr int MaxUnitsOfACharacter = 2;
/// As much as a conversion asks of its callers.
constexpr int MaxBytesOfACharacter = 4 * MaxUnitsOfACharacter;

/// Takes one character of UTF-8; 0 for a byte that can't be decoded and at the end. Only a character that is there as a
/// whole, whatever its first byte says, is decoded without a look at the end.
unsigned int TakeUTF8(const char*& src, unsigned long& left) {
    if (src == nullptr || left == 0) {
        return 0;
    }
    const char* const start = src;
    unsigned int code = 0;
    if (left >= UTF8MaxLength) {
        code = _DecodeUTF8Fast(src);
    } else if (_DecodeUTF8Tail(src, src + left, code) != UTF8Decoded) {
        code = 0;
        ++src;
    }
    left -= static_cast<unsigned long>(src - start);
    return code;
}

char* NewLocaleBuffer() {
    auto* const locale = static_cast<char*>(std::malloc(LocaleSize));
    if (locale != nullptr) {
        std::strcpy(locale, NeutralLocale);
    }
    return locale;
}

void FillLocale(char* locale, const char* langString) {
    VELSysCLocale::GetLocaleStringFromLangString(langString, locale, LocaleSize);
    locale[LocaleSize - 1] = '\0';
}

int HasCodePage(const VELSysNLSEntry& row, void* codePage) {
    return row.codePage == static_cast<const char*>(codePage) ? 1 : 0;
}

/// Takes the locale of the first row of the language table that has the code page, if any has it.
void FillLocaleFromTable(char* locale, char* codePage) {
    VELSysNLSFilter filter{};
    filter.predicate = HasCodePage;
    filter.argument = codePage;
    int count = 1;
    VELSysNLSNode* rows = nullptr;
    GetNLSInformationA(filter, VELSysNLSByPredicate, count, &rows);
    if (rows != nullptr) {
        FillLocale(locale, rows->entry.langString.c_str());
    }
    while (rows != nullptr) {
        delete std::exchange(rows, rows->next);
    }
}

/// A look-up of a converter's locale on the calling thread. It reads the language table, which converts text, and that
/// may be damaged and bring the thread back to the same converter.
class Request {
public:
    explicit Request(const VELSysCodePage* converter) : _converter(converter), _outer(s_innermost) {
        s_innermost = this;
    }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request() { s_innermost = _outer; }

    static bool IsMadeFor(const VELSysCodePage* converter) {
        const Request* request = s_innermost;
        while (request != nullptr && request->_converter != converter) {
            request = request->_outer;
        }
        return request != nullptr;
    }

private:
    static constinit thread_local const Request* s_innermost;

    const VELSysCodePage* _converter;
    const Request* _outer;
};
constinit thread_local const Request* Request::s_innermost = nullptr;

} // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct VELSysCodePage::Layout {
    static_assert(offsetof(VELSysCodePage, _name) == 8 && offsetof(VELSysCodePage, _toUTF16) == 16);
    static_assert(offsetof(VELSysCodePage, _fromUTF16) == 32 && offsetof(VELSysCodePage, _locale) == 48);
    static_assert(offsetof(VELSysCodePage, _toUTF16Descriptor) == 56);
    static_assert(offsetof(VELSysCodePage, _fromUTF16Descriptor) == 60);
    static_assert(offsetof(VELSysCodePage, _maxCharSize) == 64 && offsetof(VELSysCodePage, _isUTF8) == 68);
    static_assert(sizeof(VELSysCodePage) == 72);
};
#pragma GCC diagnostic pop

VELSysCodePage::VELSysCodePage(const char* codePage) : VELSysCodePage(codePage, DefaultMaxCharSize, nullptr) {}

VELSysCodePage::VELSysCodePage(const char* codePage, int maxCharSize, const char* langString) {
    _Reinitialize(codePage, maxCharSize, langString);
}

VELSysCodePage::~VELSysCodePage() {
    std::free(_name);
    std::free(_locale.load(std::memory_order_relaxed));
}

void VELSysCodePage::_Reinitialize(const char* codePage, int maxCharSize, const char* langString) {
    _maxCharSize = maxCharSize;
    if (codePage != nullptr && _name != nullptr && std::strcmp(_name, codePage) == 0) {
        // Deliberately all: another language string is not taken up.
        return;
    }
    _isUTF8 = codePage != nullptr && std::strcmp(codePage, UTF8Name) == 0;
    if (char* const locale = _locale.load(std::memory_order_relaxed)) {
        std::strcpy(locale, NeutralLocale);
    }
    if (codePage == nullptr || _InitConvDesc(codePage) < 0) {
        _UseIdentity();
        return;
    }
    _toUTF16 = _isUTF8 ? &VELSysCodePage::_UTF8toUTF16 : &VELSysCodePage::_CPtoUC2;
    _fromUTF16 = _isUTF8 ? &VELSysCodePage::_UTF16toUTF8 : &VELSysCodePage::_UC2toCP;
    if (_isUTF8) {
        _maxCharSize = UTF8MaxCharSize;
    }
    if (langString != nullptr) {
        _StoreLocale(langString);
    }
    _StoreName(codePage);
}

/// Gets the handles of both directions; positive when the code page needs none.
int VELSysCodePage::_InitConvDesc(const char* codePage) {
    if (_isUTF8) {
        return VEL::StatusNote;
    }
    if (std::strcmp(codePage, NotAvailable) == 0) {
        return VEL::StatusFailure;
    }
    int status = VELSysIConvTSWrap::Open(UTF16Name, codePage, _toUTF16Descriptor);
    if (status == VEL::StatusOk) {
        status = VELSysIConvTSWrap::Open(codePage, UTF16Name, _fromUTF16Descriptor);
    }
    if (status != VEL::StatusOk) {
        VEL::internal::PrintAndFlush(
            stderr, "ERROR: SUPPLANG_R9 does not contain a valid code set for code page: %s.\n", codePage);
    }
    return status;
}

void VELSysCodePage::_UseIdentity() {
    _toUTF16 = &VELSysCodePage::_CPtoUC2ByIdentity;
    _fromUTF16 = &VELSysCodePage::_UC2toCPByIdentity;
    _StoreName(IdentityName);
}

void VELSysCodePage::_StoreName(const char* name) {
    const std::size_t size = std::strlen(name) + 1;
    void* const memory = std::realloc(_name, size);
    if (memory == nullptr) {
        // No name is better than that of the former code page.
        std::free(std::exchange(_name, nullptr));
        return;
    }
    _name = static_cast<char*>(memory);
    std::memcpy(_name, name, size);
}

void VELSysCodePage::_StoreLocale(const char* langString) {
    char* locale = _locale.load(std::memory_order_relaxed);
    if (locale == nullptr) {
        locale = NewLocaleBuffer();
        // Nobody else knows the object yet.
        _locale.store(locale, std::memory_order_relaxed);
    }
    if (locale != nullptr) {
        FillLocale(locale, langString);
    }
}

/// The C locale whose characters are those of the code page; null when nothing is known of it.
const char* VELSysCodePage::_GetAssociatedCLocale() const {
    // Acquire: with the pointer comes the text.
    if (char* const known = _locale.load(std::memory_order_acquire)) {
        return known;
    }
    if (_name == nullptr || Request::IsMadeFor(this)) {
        return nullptr;
    }
    char* const locale = NewLocaleBuffer();
    if (locale == nullptr) {
        return nullptr;
    }
    {
        const Request request(this);
        FillLocaleFromTable(locale, _name);
    }
    char* published = nullptr;
    if (!_locale.compare_exchange_strong(published, locale, std::memory_order_acq_rel, std::memory_order_acquire)) {
        std::free(locale);
        return published;
    }
    return locale;
}

bool VELSysCodePage::IsValid() const {
    return _fromUTF16 != &VELSysCodePage::_UC2toCPByIdentity;
}

int VELSysCodePage::GetLongestCharacter() const {
    if (_isUTF8) {
        return UTF8MaxCharSize;
    }
    return IsValid() ? MB_LEN_MAX : 1;
}

int VELSysCodePage::ConvertMBCSToUTF16(const char* src, int length, unsigned short* dst, int* written) const {
    int count = NoRoomGiven;
    length = src != nullptr ? std::max(length, 0) : 0;
    (this->*_toUTF16)(src, length, dst, count);
    if (written != nullptr) {
        *written = count;
    }
    return count;
}

int VELSysCodePage::ConvertMBCSToUTF16(const char*& src, unsigned long& length, unsigned short* dst,
                                       unsigned long room) const {
    if (src == nullptr) {
        return -1;
    }
    // In pieces that a 32-bit length can tell; the caller comes back for the rest. A piece ends where its room does, so
    // that it cuts no character.
    const int offered = static_cast<int>(std::min<unsigned long>(length, INT_MAX));
    if (length > INT_MAX) {
        room = std::min<unsigned long>(room, INT_MAX / MB_LEN_MAX);
    }
    int left = offered;
    int count = static_cast<int>(std::min<unsigned long>(room, INT_MAX));
    const int result = (this->*_toUTF16)(src, left, dst, count);
    length -= static_cast<unsigned long>(offered - left);
    if (length == 0) {
        src = nullptr;
    }
    return result;
}

int VELSysCodePage::ConvertUTF16ToMBCS(const unsigned short* src, int length, char* dst, int* written) const {
    return (this->*_fromUTF16)(src, src != nullptr ? std::max(length, 0) : 0, dst, written);
}

int VELSysCodePage::CanConvertUTF16ToMBCS(const unsigned short* src, int length) const {
    if (src == nullptr) {
        return 0;
    }
    for (int i = 0; i < length;) {
        const int units = IsHighSurrogate(src[i]) && i + 1 < length ? 2 : 1;
        char bytes[MaxBytesOfACharacter + 1];
        int byteCount = 0;
        ConvertUTF16ToMBCS(src + i, units, bytes, &byteCount);
        unsigned short back[MaxBytesOfACharacter + 1];
        int backCount = 0;
        ConvertMBCSToUTF16(bytes, byteCount, back, &backCount);
        if (backCount != units || !std::equal(back, back + units, src + i)) {
            return -1;
        }
        i += units;
    }
    return 0;
}

int VELSysCodePage::CanConvertMBCSToUTF16(const char* src, unsigned long length) const {
    if (src == nullptr) {
        return 0;
    }
    while (length > 0) {
        const char* const start = src;
        unsigned short units[MaxUnitsOfACharacter];
        const int count = GetNextMultiByteCharAsUTF16(units, src, length);
        if (count > MaxUnitsOfACharacter) {
            VEL::internal::PrintAndFlush(stderr,
                                         "ERROR: VELSysCodePage::CanConvertMBCSToUTF16 - an overflow has occurred!\n");
            return -1;
        }
        if (src == start) {
            VEL::internal::PrintAndFlush(stderr,
                                         "ERROR: VELSysCodePage::GetNextMultiByteCharAsUTF16 is probably bugged!\n");
            return -1;
        }
        char bytes[MaxBytesOfACharacter + 1];
        int byteCount = 0;
        ConvertUTF16ToMBCS(units, count, bytes, &byteCount);
        if (byteCount != src - start || !std::equal(start, src, bytes)) {
            return -1;
        }
    }
    return 0;
}

int VELSysCodePage::GetNextMultiByteCharAsUTF16(unsigned short* out, const char*& src, unsigned long& left) const {
    if (_isUTF8) {
        return static_cast<int>(WriteUTF16(TakeUTF8(src, left), out) - out);
    }
    if (src == nullptr || left == 0) {
        *out = 0;
        return 1;
    }
    const int offered = static_cast<int>(std::min<unsigned long>(left, INT_MAX));
    const char* next = src;
    unsigned short units[MaxUnitsOfACharacter + 1];
    int count = _toUTF16 == &VELSysCodePage::_CPtoUC2 ? _CPtoUC2InSight(next, offered, units) : 0;
    for (int room = 1; room <= MaxUnitsOfACharacter && count < 1; ++room) {
        next = src;
        int rest = offered;
        count = room;
        (this->*_toUTF16)(next, rest, units, count);
    }
    const auto consumed = static_cast<unsigned long>(next - src);
    if (count > 0) {
        std::copy(units, units + std::min(count, MaxUnitsOfACharacter), out);
        src = next;
        left -= consumed;
        return count;
    }
    if (consumed == 0) {
        // A caller's loop must get on.
        ++src;
        --left;
    }
    if (consumed < static_cast<unsigned long>(offered) && *next != 0) {
        return 0;
    }
    *out = 0;
    return 1;
}

int VELSysCodePage::GetNextMultiByteCharAsUTF32(unsigned int& out, const char*& src, unsigned long& left) const {
    if (_isUTF8) {
        out = TakeUTF8(src, left);
        return 1;
    }
    unsigned short units[MaxUnitsOfACharacter];
    const int count = GetNextMultiByteCharAsUTF16(units, src, left);
    if (count > 0) {
        out = count > 1 && IsHighSurrogate(units[0]) ? JoinSurrogates(units[0], units[1]) : units[0];
    }
    return count;
}

int VELSysCodePage::GetNextMultiByteCharAsUTF8(char* out, const char*& src, unsigned long& left) const {
    if (_isUTF8) {
        const char* const start = src;
        TakeUTF8(src, left);
        return static_cast<int>(std::copy(start, src, out) - out);
    }
    unsigned int code = 0;
    if (GetNextMultiByteCharAsUTF32(code, src, left) < 1) {
        return 0;
    }
    return static_cast<int>(_EncodeUTF8(code, out) - out);
}

int VELSysCodePage::_UTF8toUTF16(const char*& src, int& srcLength, unsigned short* dst, int& dstLength) const {
    if (dstLength == NoRoomGiven) {
        unsigned short* end = VELSysUCAlgorithm::unchecked::utf8to16(src, src + srcLength, dst);
        *end = 0;
        dstLength = static_cast<int>(end - dst);
        return dstLength;
    }
    if (dstLength < 1) {
        return dstLength;
    }
    const char* start = src;
    const char* next = src;
    const int offered = srcLength;
    dstLength = VELSysUCAlgorithm::ConvertUTF8ToUTF16(next, srcLength, dst, static_cast<unsigned int>(dstLength));
    // The algorithm marks the end of the source by a null pointer; here the pointer always tells how far it came.
    src = start + (offered - srcLength);
    dst[dstLength] = 0;
    return dstLength;
}

int VELSysCodePage::_UTF16toUTF8(const unsigned short* src, int length, char* dst, int* written) const {
    char* end = VELSysUCAlgorithm::unchecked::utf16to8(src, src + length, dst);
    const int count = static_cast<int>(end - dst);
    if (written != nullptr) {
        *end = 0;
        *written = count;
    }
    return count;
}

int VELSysCodePage::_CPtoUC2ByIdentity(const char*& src, int& srcLength, unsigned short* dst, int& dstLength) const {
    const bool hasRoom = dstLength > 0;
    const int count = hasRoom ? std::min(srcLength, dstLength) : srcLength;
    std::transform(src, src + count, dst, [](char byte) { return static_cast<unsigned char>(byte); });
    if (hasRoom && count < dstLength) {
        dst[count] = 0;
    }
    src += count;
    srcLength -= count;
    dstLength = count;
    return count;
}

int VELSysCodePage::_UC2toCPByIdentity(const unsigned short* src, int length, char* dst, int* written) const {
    std::transform(src, src + length, dst, [](unsigned short unit) { return static_cast<char>(unit); });
    dst[length] = 0;
    if (written != nullptr) {
        *written = length;
    }
    return length;
}
