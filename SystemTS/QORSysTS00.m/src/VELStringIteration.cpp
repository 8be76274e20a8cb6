#include "VELStringIteration.h"

#include "EnvironmentConverter.h"
#include "QORUnicodeChar.h"
#include "QORUnicodeString.h"
#include "StringAccess.h"
#include "StringText.h"
#include "VELSysUCAlgorithm.h"
#include "VELSysUCDecoder.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <ostream>

using namespace VEL::internal;
using namespace VEL::UCS::internal;

namespace {

/// The longest character in UTF-8.
constexpr unsigned long UTF8CharacterSize = 4;

/// Takes the character at `p` of zero-terminated UTF-16. @return The units taken.
int TakeCharacter(const unsigned short* p, unsigned int& code) {
    // The terminator is never joined, so that a walk ends there.
    const unsigned short* next = p;
    code = _DecodeUTF16Fast(next, p + (p[0] != 0 && p[1] != 0 ? 2 : 1));
    return static_cast<int>(next - p);
}

/// Bytes up to the terminator, as far as one character may take.
unsigned long BytesAhead(const char* p) {
    const VELSysCodePage& converter = EnvironmentConverter();
    return strnlen(p,
                   static_cast<unsigned long>(std::max(converter.GetMaxCharSize(), converter.GetLongestCharacter())));
}

/// Takes the character at `p` with `take`. @return The bytes taken, at least 1.
template <class Take>
int TakeMbcsCharacter(const char* p, const Take& take) {
    const char* next = p;
    unsigned long left = BytesAhead(p);
    take(next, left);
    return next > p ? static_cast<int>(next - p) : 1;
}

/// Converts units with `convert` into the buffer, which is given room for `room` elements and a terminator.
template <class T, unsigned long N, class Convert>
const T* ConvertInto(VEL::internal::OptimizedBuffer<T, N>& buffer, unsigned long room, const Convert& convert,
                     unsigned long& n) {
    T* const out = buffer.Reserve(room + 1);
    n = 0;
    if (out != nullptr) {
        T* const end = convert(out);
        *end = 0;
        n = static_cast<unsigned long>(end - out);
    }
    return out;
}

/// As UTF16Of(), but null when the view can't be allocated.
UTF16Range UTF16OrNull(Block block) {
    const UTF16Range text = VEL::internal::UTF16Of(block);
    return VEL::internal::IsMissing(block, text) ? UTF16Range{} : text;
}

template <class T, unsigned long N>
const T* UTF16Into(const UTF16Range& text, VEL::internal::OptimizedBuffer<T, N>& buffer, unsigned long& n) {
    if (text.text == nullptr) {
        n = 0;
        return nullptr;
    }
    const auto units = static_cast<unsigned long>(text.length);
    if constexpr (sizeof(T) == sizeof(char)) {
        const auto convert = [&](char* out) {
            return VELSysUCAlgorithm::unchecked::utf16to8(text.text, text.text + text.length, out);
        };
        return ConvertInto(buffer, units * UTF8CharacterSize, convert, n);
    } else {
        const auto convert = [&](unsigned int* out) {
            return VELSysUCAlgorithm::unchecked::utf16to32(text.text, text.text + text.length, out);
        };
        return ConvertInto(buffer, units, convert, n);
    }
}

/// Narrow text as UTF-16 in the buffer.
template <unsigned long N>
const unsigned short* MBCSInto(const char* s, unsigned long n,
                               VEL::internal::OptimizedBuffer<unsigned short, N>& buffer, unsigned long& units) {
    const auto convert = [&](unsigned short* out) {
        int written = 0;
        EnvironmentConverter().ConvertMBCSToUTF16(s, static_cast<int>(n), out, &written);
        return out + written;
    };
    return ConvertInto(buffer, n, convert, units);
}

/// The length of narrow text; none for null and for a length that no text has.
unsigned long LengthOf(const char* s, unsigned long n) {
    if (s == nullptr) {
        return 0;
    }
    if (n == static_cast<unsigned long>(-1)) {
        n = std::strlen(s);
    }
    return n > INT_MAX ? 0 : n;
}

} // namespace

void VEL::internal::_GetIteratorBegin(const QORUnicodeString& s, const void*& p, SType& t) {
    const Block block = StringAccess::BlockOf(s);
    t = block != nullptr && block->IsWide() ? STypeWide : STypeNarrow;
    p = t == STypeWide ? static_cast<const void*>(block->Wide()) : NarrowText(block);
}

void VEL::internal::_GetIteratorEnd(const QORUnicodeString& s, const void*& p, SType& t) {
    _GetIteratorBegin(s, p, t);
    const Block block = StringAccess::BlockOf(s);
    if (block != nullptr) {
        p = t == STypeWide ? static_cast<const void*>(block->Wide() + block->_length) : block->Text() + block->_length;
    }
}

int VEL::internal::_GetNext(unsigned int& out, const unsigned short* p) {
    return TakeCharacter(p, out);
}

int VEL::internal::_GetNext(char* out, const unsigned short* p) {
    unsigned int code;
    const int taken = TakeCharacter(p, code);
    *_EncodeUTF8(code, out) = 0;
    return taken;
}

int VEL::internal::_GetNext(unsigned short* out, const unsigned short* p) {
    unsigned int code;
    const int taken = TakeCharacter(p, code);
    *std::copy(p, p + taken, out) = 0;
    return taken;
}

int VEL::internal::_GetNext(char* out, const char* p) {
    int length = 0;
    const int wanted = UTF8LengthByLead(static_cast<unsigned char>(*p));
    do {
        out[length] = p[length];
        ++length;
    } while (length < wanted && p[length] != 0);
    out[length] = 0;
    return length;
}

int VEL::internal::_GetNextMbcs(unsigned int& out, const char* p) {
    out = 0;
    return TakeMbcsCharacter(p, [&](const char*& next, unsigned long& left) {
        EnvironmentConverter().GetNextMultiByteCharAsUTF32(out, next, left);
    });
}

int VEL::internal::_GetNextMbcs(char* out, const char* p) {
    return TakeMbcsCharacter(p, [&](const char*& next, unsigned long& left) {
        const int count = EnvironmentConverter().GetNextMultiByteCharAsUTF8(out, next, left);
        out[count > 0 ? count : 0] = 0;
    });
}

int VEL::internal::_GetNextMbcs(unsigned short* out, const char* p) {
    return TakeMbcsCharacter(p, [&](const char*& next, unsigned long& left) {
        const int count = EnvironmentConverter().GetNextMultiByteCharAsUTF16(out, next, left);
        out[count > 0 ? count : 0] = 0;
    });
}

void VEL::UCS::internal::_GetStringAs(const char*& out, unsigned int& n, const QORUnicodeString& s,
                                      OptimizedBuffer<char, 32>& buffer) {
    const Block block = StringAccess::BlockOf(s);
    unsigned long length = 0;
    out = block != nullptr ? ReadyUTF8(block, length) : EmptyHandle();
    if (out == nullptr) {
        out = UTF16Into(UTF16OrNull(block), buffer, length);
    }
    n = static_cast<unsigned int>(length);
}

void VEL::UCS::internal::_GetStringAs(const unsigned short*& out, unsigned int& n, const QORUnicodeString& s,
                                      OptimizedBuffer<unsigned short, 16>&) {
    const UTF16Range text = UTF16OrNull(StringAccess::BlockOf(s));
    out = text.text;
    n = static_cast<unsigned int>(text.length);
}

void VEL::UCS::internal::_GetStringAs(const unsigned int*& out, unsigned int& n, const QORUnicodeString& s,
                                      OptimizedBuffer<unsigned int, 8>& buffer) {
    const Block block = StringAccess::BlockOf(s);
    unsigned long length = 0;
    const bool isDirect = block != nullptr && !block->IsWide() && EnvironmentConverter().IsUTF8() &&
                          block->_secondView.load(std::memory_order_relaxed) == nullptr;
    if (isDirect) {
        const auto convert = [&](unsigned int* to) {
            return VELSysUCAlgorithm::unchecked::utf8to32(block->Text(), block->Text() + block->_length, to);
        };
        out = ConvertInto(buffer, static_cast<unsigned long>(block->_length), convert, length);
    } else {
        out = UTF16Into(UTF16OrNull(block), buffer, length);
    }
    n = static_cast<unsigned int>(length);
}

const unsigned short* VEL::UCS::internal::_GetStringAs(const char* s, unsigned long& n,
                                                       OptimizedBuffer<unsigned short, 16>& buffer) {
    return MBCSInto(s, LengthOf(s, n), buffer, n);
}

const char* VEL::UCS::internal::_GetStringAs(const char* s, unsigned long& n, OptimizedBuffer<char, 32>& buffer) {
    const unsigned long length = LengthOf(s, n);
    if (EnvironmentConverter().IsUTF8()) {
        n = length;
        return s;
    }
    OptimizedBuffer<unsigned short, 16> units;
    unsigned long count = 0;
    const unsigned short* const text = MBCSInto(s, length, units, count);
    n = 0;
    return text != nullptr ? UTF16Into(UTF16Range{text, static_cast<int>(count)}, buffer, n) : nullptr;
}

const unsigned int* VEL::UCS::internal::_GetStringAs(const char* s, unsigned long& n,
                                                     OptimizedBuffer<unsigned int, 8>& buffer) {
    const unsigned long length = LengthOf(s, n);
    n = 0;
    if (EnvironmentConverter().IsUTF8()) {
        const auto convert = [&](unsigned int* out) {
            return VELSysUCAlgorithm::unchecked::utf8to32(s, s + length, out);
        };
        return ConvertInto(buffer, length, convert, n);
    }
    OptimizedBuffer<unsigned short, 16> units;
    unsigned long count = 0;
    const unsigned short* const text = MBCSInto(s, length, units, count);
    return text != nullptr ? UTF16Into(UTF16Range{text, static_cast<int>(count)}, buffer, n) : nullptr;
}

std::ostream& VEL::UCS::internal::StreamInsertUTF8(std::ostream& out, const QORUnicodeString& s) {
    OptimizedBuffer<char, 32> buffer;
    const char* text = nullptr;
    unsigned int length = 0;
    _GetStringAs(text, length, s, buffer);
    if (text == nullptr) {
        out.setstate(std::ios_base::failbit);
        return out;
    }
    return out << text;
}

std::ostream& VEL::UCS::internal::StreamInsertUTF8(std::ostream& out, const QORUnicodeChar& c) {
    char bytes[UTF8CharacterSize + 1];
    *_EncodeUTF8(StringAccess::CodeOf(c), bytes) = 0;
    return out << bytes;
}
