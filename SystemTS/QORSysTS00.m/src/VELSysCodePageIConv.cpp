// The `iconv` way of the code pages.

#include "Latin1.h"
#include "NoDescriptor.h"
#include "PrintAndFlush.h"
#include "VELSysCLocale.h"
#include "VELSysCodePage.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwchar>

using VEL::internal::NoDescriptor;
using VEL::internal::PrintAndFlush;

namespace {

constexpr auto Failed = static_cast<std::size_t>(-1);

constexpr std::size_t UnitSize = sizeof(unsigned short);
/// As much as a conversion asks of its callers.
constexpr std::size_t BytesPerUnit = 4;
constexpr char QuestionMark = '?';

/// Bytes that suffice for a first character and for seeing that another one follows, in all but a few code pages.
constexpr int Sight = 8;

/// One conversion, up to the reset of its descriptor.
class Conversion {
public:
    Conversion(iconv_t descriptor, const void* in, std::size_t inLeft, void* out, std::size_t outLeft)
        : _descriptor(descriptor), _in(static_cast<const char*>(in)), _inLeft(inLeft), _out(static_cast<char*>(out)),
          _outLeft(outLeft) {}
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion() { iconv(_descriptor, nullptr, nullptr, nullptr, nullptr); }

    /// As `iconv`.
    std::size_t Run() { return iconv(_descriptor, const_cast<char**>(&_in), &_inLeft, &_out, &_outLeft); }

    const char* In() const { return _in; }
    std::size_t InLeft() const { return _inLeft; }
    const char* Out() const { return _out; }
    std::size_t OutLeft() const { return _outLeft; }

    void Skip(std::size_t bytes) {
        _in += bytes;
        _inLeft -= bytes;
    }

    void WriteQuestionMark(std::size_t size) {
        *_out++ = QuestionMark;
        std::fill_n(_out, size - 1, '\0');
        _out += size - 1;
        _outLeft -= size;
    }

private:
    iconv_t _descriptor;
    const char* _in;
    std::size_t _inLeft;
    char* _out;
    std::size_t _outLeft;
};

/// Says what stopped a conversion to UTF-16, if that is worth a word. @return Whether the bytes that stopped it may be
/// passed over.
bool TellError(int error, const Conversion& text, bool hasRoomGiven) {
    switch (error) {
    case EILSEQ:
        return true;
    case E2BIG:
        if (hasRoomGiven) {
            return false;
        }
        PrintAndFlush(stderr, "iconv E2BIG error: buffer overflow. InBytesLeft: %llu\n",
                      static_cast<unsigned long long>(text.InLeft()));
        break;
    case EINVAL:
        if (text.OutLeft() == 0) {
            return false;
        }
        PrintAndFlush(stderr, "iconv EINVAL error: input buffer was truncated.\n");
        break;
    default:
        PrintAndFlush(stderr, "iconv errno is: %d\n", error);
        break;
    }
    return true;
}

/// Bytes of the character at the start of a text, as a C locale sees it; 1 where it sees none. Nothing is read behind
/// the text.
std::size_t LengthInLocale(const char* locale, const char* text, std::size_t length, std::mbstate_t& state) {
    int status = 0;
    const VELSysCLocale::ThreadLC scope(LC_CTYPE, locale, &status);
    const std::size_t bytes = std::mbrtowc(nullptr, text, length, &state);
    constexpr auto IsDamaged = static_cast<std::size_t>(-1);
    constexpr auto IsCut = static_cast<std::size_t>(-2);
    return bytes == IsDamaged || bytes == IsCut ? 1 : std::max<std::size_t>(bytes, 1);
}

/// Puts a question mark in the place of the character that stopped the conversion, which the caller has room for.
/// @return Whether it may go on.
bool PassOver(Conversion& text, const char* locale, std::mbstate_t& state) {
    // Beyond the rest only where the C library doesn't keep to it.
    const std::size_t length = locale != nullptr ? LengthInLocale(locale, text.In(), text.InLeft(), state) : 1;
    if (length > text.InLeft()) {
        text.Skip(text.InLeft());
        return false;
    }
    text.Skip(length);
    text.WriteQuestionMark(UnitSize);
    return text.InLeft() > 0;
}

} // namespace

bool VELSysCodePage::_IsLatin1() const {
    return _name != nullptr && std::strcmp(_name, VEL::internal::Latin1Name) == 0;
}

int VELSysCodePage::_CPtoUC2(const char*& src, int& srcLength, unsigned short* dst, int& dstLength) const {
    const iconv_t descriptor = VELSysIConvTSWrap::GetIConvDesc(_toUTF16Descriptor);
    if (descriptor == NoDescriptor) {
        return _CPtoUC2ByIdentity(src, srcLength, dst, dstLength);
    }
    // 0 is "not given" as to the report, too: deliberately other than a negative one.
    const bool hasRoomGiven = dstLength != 0;
    const auto room = static_cast<std::size_t>(dstLength < 1 ? srcLength : dstLength);
    if (_IsLatin1()) {
        // As `iconv` does it: no byte is damaged.
        dstLength = static_cast<int>(std::min(room, static_cast<std::size_t>(srcLength)));
        VEL::internal::WidenLatin1(src, static_cast<std::size_t>(dstLength), dst);
        src += dstLength;
        srcLength -= dstLength;
        return dstLength;
    }
    Conversion text(descriptor, src, static_cast<std::size_t>(srcLength), dst, room * UnitSize);
    // One state for all that a conversion passes over, and none beyond it, so that threads don't meet in it.
    std::mbstate_t state{};
    while (text.InLeft() > 0 && text.Run() == Failed && text.InLeft() > 0) {
        if (!TellError(errno, text, hasRoomGiven) || text.OutLeft() < UnitSize ||
            !PassOver(text, _GetAssociatedCLocale(), state)) {
            break;
        }
    }
    src = text.In();
    srcLength = static_cast<int>(text.InLeft());
    dstLength = static_cast<int>(reinterpret_cast<const unsigned short*>(text.Out()) - dst);
    return dstLength;
}

int VELSysCodePage::_UC2toCP(const unsigned short* src, int length, char* dst, int* written) const {
    const iconv_t descriptor = VELSysIConvTSWrap::GetIConvDesc(_fromUTF16Descriptor);
    if (descriptor == NoDescriptor) {
        return _UC2toCPByIdentity(src, length, dst, written);
    }
    const auto units = static_cast<std::size_t>(length);
    // No more than the answer can tell.
    const std::size_t room = std::min<std::size_t>(units * BytesPerUnit, INT_MAX);
    // As `iconv` does it, up to the first unit that the code page doesn't have.
    const std::size_t plain = _IsLatin1() ? VEL::internal::NarrowLatin1(src, units, dst) : 0;
    Conversion text(descriptor, src + plain, (units - plain) * UnitSize, dst + plain, room - plain);
    while (text.InLeft() > 0) {
        const std::size_t result = text.Run();
        if (result == 0) {
            break;
        }
        if (result != Failed) {
            continue;
        }
        // Escape sequences may take more than the room; then the rest of the text is lost.
        if (text.InLeft() == 0 || text.OutLeft() == 0) {
            break;
        }
        text.Skip(UnitSize);
        text.WriteQuestionMark(1);
    }
    const auto count = static_cast<int>(text.Out() - dst);
    dst[count] = '\0';
    if (written != nullptr) {
        *written = count;
    }
    return count;
}

/// Takes a first character without a look at the whole text, of which `iconv` would decode thousands of bytes each
/// time. `src` moves past it. @return The units written, which are those that _CPtoUC2() gives; 0 when these bytes
/// don't settle it.
int VELSysCodePage::_CPtoUC2InSight(const char*& src, int srcLength, unsigned short* dst) const {
    const iconv_t descriptor = VELSysIConvTSWrap::GetIConvDesc(_toUTF16Descriptor);
    if (descriptor == NoDescriptor) {
        return 0;
    }
    if (_IsLatin1()) {
        *dst = static_cast<unsigned char>(*src++);
        return 1;
    }
    const int seen = std::min(srcLength, Sight);
    for (std::size_t room = 1; room <= 2; ++room) {
        Conversion text(descriptor, src, static_cast<std::size_t>(seen), dst, room * UnitSize);
        const bool isWhole = text.Run() != Failed;
        // A character is settled when the next one didn't fit, or when there is nothing behind what was seen.
        if (isWhole ? seen < srcLength : errno != E2BIG) {
            return 0;
        }
        if (text.OutLeft() < room * UnitSize) {
            src = text.In();
            return static_cast<int>(room - text.OutLeft() / UnitSize);
        }
    }
    return 0;
}
