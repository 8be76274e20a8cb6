#include "FakeConverter.h"

#include "VELSysCodePage.h"

#include <cstring>

namespace FakeConverter {

const std::string* s_longForm = nullptr;
bool s_fails = false;
int s_conversions = 0;

} // namespace FakeConverter

using namespace FakeConverter;

extern "C" int __real__ZNK14VELSysCodePage18ConvertUTF16ToMBCSEPKtiPcPi(const VELSysCodePage*,
                                                                        const unsigned short* src, int length,
                                                                        char* dst, int* written);
extern "C" int __real__ZNK14VELSysCodePage27GetNextMultiByteCharAsUTF32ERjRPKcRm(const VELSysCodePage*,
                                                                                 unsigned int& out, const char*& src,
                                                                                 unsigned long& left);

extern "C" int __wrap__ZNK14VELSysCodePage18ConvertUTF16ToMBCSEPKtiPcPi(const VELSysCodePage* converter,
                                                                        const unsigned short* src, int length,
                                                                        char* dst, int* written) {
    ++s_conversions;
    if (s_fails) {
        *written = -1;
        return -1;
    }
    if (s_longForm == nullptr) {
        return __real__ZNK14VELSysCodePage18ConvertUTF16ToMBCSEPKtiPcPi(converter, src, length, dst, written);
    }
    std::memcpy(dst, s_longForm->c_str(), s_longForm->size() + 1);
    *written = static_cast<int>(s_longForm->size());
    return *written;
}

extern "C" int __wrap__ZNK14VELSysCodePage27GetNextMultiByteCharAsUTF32ERjRPKcRm(const VELSysCodePage* converter,
                                                                                 unsigned int& out, const char*& src,
                                                                                 unsigned long& left) {
    if (s_longForm == nullptr) {
        return __real__ZNK14VELSysCodePage27GetNextMultiByteCharAsUTF32ERjRPKcRm(converter, out, src, left);
    }
    out = 0x100;
    src += left;
    left = 0;
    return 1;
}
