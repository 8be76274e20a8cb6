#include "UTF8Text.h"

#include "QORUnicodeString.h"
#include "StringAccess.h"
#include "StringText.h"
#include "VELSysUCAlgorithm.h"

#include <cstring>

namespace VEL::internal {

UTF8Text::UTF8Text(const unsigned short* text) {
    if (text != nullptr) {
        _Convert(text, static_cast<std::size_t>(CountUnits(text)));
    }
}

UTF8Text::UTF8Text(const QORUnicodeString& text) {
    const Block block = StringAccess::BlockOf(text);
    if (block == nullptr || block->_length == 0) {
        _bytes = "";
        return;
    }
    unsigned long length = 0;
    if (const char* const ready = ReadyUTF8(block, length)) {
        _bytes = ready;
        _length = strnlen(ready, length);
        return;
    }
    const UTF16Range units = UTF16Of(block);
    if (!IsMissing(block, units)) {
        _Convert(units.text, static_cast<std::size_t>(units.length));
    }
}

void UTF8Text::_Convert(const unsigned short* text, std::size_t n) {
    constexpr std::size_t BytesPerUnit = 3;
    char* out = _room;
    if (n * BytesPerUnit >= sizeof _room) {
        _memory = static_cast<char*>(std::malloc(n * BytesPerUnit + 1));
        out = _memory;
    }
    if (out == nullptr) {
        return;
    }
    *VELSysUCAlgorithm::unchecked::utf16to8(text, text + n, out) = '\0';
    _bytes = out;
    _length = std::strlen(out);
}

} // namespace VEL::internal
