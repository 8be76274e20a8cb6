#include "NativeText.h"

#include "EnvironmentConverter.h"

#include <cstring>

namespace VEL::internal {

NativeText::NativeText(const char* utf8) : _bytes(utf8 != nullptr ? utf8 : "") {
    if (utf8 != nullptr && !EnvironmentConverter().IsUTF8()) {
        _text.BuildFromUTF8(utf8, std::strlen(utf8));
        _bytes = _text.ConvertToChar();
    }
}

NativeText::NativeText(const unsigned short* text) {
    _text.BuildFromUCChar(text);
    _bytes = _text.ConvertToChar();
}

NativeText::NativeText(const QORUnicodeString& text) : _text(text), _bytes(_text.ConvertToChar()) {}

bool NativeText::IsExact() const {
    const VELSysCodePage& converter = EnvironmentConverter();
    return converter.IsUTF8() || converter.CanConvertUTF16ToMBCS(_text.ConvertToUCChar(), _text.GetLengthInChar()) == 0;
}

} // namespace VEL::internal
