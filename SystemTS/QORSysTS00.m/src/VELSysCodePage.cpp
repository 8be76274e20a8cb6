#include "VELSysCodePage.h"

#include "StringDebugFlags.h"
#include "UpwardCalls.h"
#include "VELSysNLSCore.h"
#include "VELSysUCAlgorithm.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

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
    published = made.release();
    VEL::internal::TellDebuggerOfCodePage(published->IsUTF8());
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
