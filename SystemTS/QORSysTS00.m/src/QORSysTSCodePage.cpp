#include "QORSysTSCodePage.h"

#include "VELSysCodePage.h"
#include "VELSysUCAlgorithm.h"

int QORSysTSCodePage::ConvertStrToUcs(const char* src, int length, unsigned short* dst, int* written) {
    return VELSysCodePage::GetEnvConverter().ConvertMBCSToUTF16(src, length, dst, written);
}

int QORSysTSCodePage::ConvertUcsToStr(const unsigned short* src, int length, char* dst, int* written) {
    return VELSysCodePage::GetEnvConverter().ConvertUTF16ToMBCS(src, length, dst, written);
}

int QORSysTSCodePage::ConvertUCS2ToUTF8(unsigned short* src, int length, char* dst, unsigned long* written) {
    const char* const end = VELSysUCAlgorithm::unchecked::utf16to8(src, src + length, dst);
    if (written != nullptr) {
        *written = static_cast<unsigned long>(end - dst);
    }
    return 0;
}

int QORSysTSCodePage::ConvertUTF8ToUCS2(const char* src, unsigned long length, unsigned short* dst, int* written) {
    const unsigned short* const end = VELSysUCAlgorithm::unchecked::utf8to16(src, src + length, dst);
    if (written != nullptr) {
        *written = static_cast<int>(end - dst);
    }
    return 0;
}
