#include "VELSysCodePage.h"

#include "StringDebugFlags.h"
#include "VELSysNLSCore.h"
#include "VELSysUCAlgorithm.h"
#include "VELSysUCDecoder.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

using namespace VEL::UCS::internal;

namespace {

constexpr const char* IdentityName = "Identity";
constexpr int DefaultMaxCharSize = 16;
constexpr int UTF8MaxCharSize = 4;

/// Tells a converter's function to take all of its input, as the target has room for it.
constexpr int NoRoomGiven = -1;

/// Keeps a converter that readers on other threads may still be inside.
void Retire(const VELSysCodePage* converter) {
    static std::mutex guard;
    static std::vector<std::unique_ptr<const VELSysCodePage>> retired;
    const std::lock_guard lock(guard);
    retired.emplace_back(converter);
}

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

int ReportBug(const char* message) {
    std::fputs(message, stderr);
    std::fflush(stderr);
    return -1;
}

} // namespace

constinit std::atomic<const VELSysCodePage*> VELSysCodePage::_sCPConverter{nullptr};

VELSysCodePage::VELSysCodePage(const char* codePage) : VELSysCodePage(codePage, DefaultMaxCharSize, nullptr) {}

VELSysCodePage::VELSysCodePage(const char* codePage, int maxCharSize, const char* langString) {
    _Reinitialize(codePage, maxCharSize, langString);
}

VELSysCodePage::~VELSysCodePage() {
    std::free(_name);
    std::free(_locale);
}

int VELSysCodePage::_Reinitialize(const char* codePage, int maxCharSize, const char*) {
    _maxCharSize = maxCharSize;
    if (codePage != nullptr && _name != nullptr && std::strcmp(_name, codePage) == 0) {
        return 0;
    }
    _isUTF8 = codePage != nullptr && std::strcmp(codePage, "UTF-8") == 0;
    if (_isUTF8) {
        _toUTF16 = &VELSysCodePage::_UTF8toUTF16;
        _fromUTF16 = &VELSysCodePage::_UTF16toUTF8;
        _maxCharSize = UTF8MaxCharSize;
        _StoreName(codePage);
        return 0;
    }
    _toUTF16 = &VELSysCodePage::_CPtoUC2ByIdentity;
    _fromUTF16 = &VELSysCodePage::_UC2toCPByIdentity;
    _StoreName(IdentityName);
    return 0;
}

void VELSysCodePage::_StoreName(const char* name) {
    const std::size_t size = std::strlen(name) + 1;
    if (void* memory = std::realloc(_name, size)) {
        _name = static_cast<char*>(memory);
        std::memcpy(_name, name, size);
    }
}

bool VELSysCodePage::IsValid() const {
    return _fromUTF16 != &VELSysCodePage::_UC2toCPByIdentity;
}

int VELSysCodePage::ConvertMBCSToUTF16(const char* src, int length, unsigned short* dst, int* written) const {
    int count = NoRoomGiven;
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
    // In pieces that a 32-bit length can tell; the caller comes back for the rest.
    const int offered = static_cast<int>(std::min<unsigned long>(length, INT_MAX));
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
    return (this->*_fromUTF16)(src, length, dst, written);
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
            return ReportBug("ERROR: VELSysCodePage::CanConvertMBCSToUTF16 - an overflow has occurred!\n");
        }
        if (src == start) {
            return ReportBug("ERROR: VELSysCodePage::GetNextMultiByteCharAsUTF16 is probably bugged!\n");
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
    int count = 0;
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

const VELSysCodePage& VELSysCodePage::GetEnvConverter() {
    // Acquire: with the pointer comes the object behind it.
    if (const VELSysCodePage* converter = _sCPConverter.load(std::memory_order_acquire)) {
        return *converter;
    }
    static std::once_flag hookIsRegistered;
    std::call_once(hookIsRegistered, [] { RegisterNLSChangeHook(OnChangeNLSCore); });
    VELSysNLSEnv env{};
    GetEnvNLSData(&env);
    auto made = std::make_unique<const VELSysCodePage>(env.codePage, static_cast<int>(VELGetMultiByteCharMaxSize()),
                                                       env.langString);
    const VELSysCodePage* published = nullptr;
    if (!_sCPConverter.compare_exchange_strong(published, made.get(), std::memory_order_acq_rel,
                                               std::memory_order_acquire)) {
        return *published;
    }
    static_cast<void>(made.release());
    // Told again when a change of language came in between, whose word this would overwrite.
    do {
        published = _sCPConverter.load(std::memory_order_acquire);
        VEL::internal::TellDebuggerOfCodePage(published->IsUTF8());
    } while (published != _sCPConverter.load(std::memory_order_acquire));
    return *published;
}

void VELSysCodePage::OnChangeNLSCore(const VELSysNLSEnv& env) {
    auto made = std::make_unique<const VELSysCodePage>(env.codePage, static_cast<int>(VELGetMultiByteCharMaxSize()),
                                                       env.langString);
    VEL::internal::TellDebuggerOfCodePage(made->IsUTF8());
    if (const VELSysCodePage* replaced = _sCPConverter.exchange(made.release(), std::memory_order_acq_rel)) {
        Retire(replaced);
    }
}
