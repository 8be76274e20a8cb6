#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORString.h"

#include "ClassIdentity.h"
#include "SessionState.h"
#include "StringAccess.h"
#include "StringText.h"
#include "UpwardCalls.h"
#include "VELDebugBreak.h"
#include "VELSysCodePage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace VEL::internal;

namespace {

constexpr unsigned char FirstNonASCII = 0x80;

bool ChecksAreOn() {
    return s_StringChecksEnabled != 0;
}

void EndWarning() {
    PrintStackTrace();
    std::fflush(stdout);
}

void WarnNotPrintable(int position, const char* text) {
    static const bool isSuppressed = std::getenv("QORStringWarningSuppress") != nullptr;
    if (!ChecksAreOn() || isSuppressed) {
        return;
    }
    const char* const line = "*************************************************************************************\n";
    std::fputs(line, stdout);
    std::printf("* [QORString][Warning] The code '%d' does not map to a printable US ASCII character. *\n", position);
    std::printf("* String: \"%s\".\n", text);
    std::fputs("* STACK TRACE:                                                                      *\n", stdout);
    std::fputs(line, stdout);
    EndWarning();
}

void WarnDataCorruption() {
    if (!ChecksAreOn() || VELSysCodePage::GetEnvConverter().IsUTF8()) {
        return;
    }
    const char* const line = "***************************************************************\n";
    std::fputs(line, stdout);
    std::fputs("* [QORString] Risk of data corruption detected:               *\n"
               "* Non-ASCII Unicode data is being converted to MBCS (char *). *\n"
               "* STACK TRACE:                                                *\n",
               stdout);
    std::fputs(line, stdout);
    EndWarning();
}

/// Bytes that may stand in plain text: those that print, tabulator and line ends, and what a UTF-8 environment needs.
bool Passes(unsigned char byte, bool isUTF8) {
    if (byte == '\t' || byte == '\n' || byte == '\r') {
        return true;
    }
    return byte >= ' ' && (isUTF8 || byte <= '~');
}

/// True for text that may pass. The first byte that may not is reported, by its position counted from 1.
bool CheckNarrowText(const char* text, std::size_t n) {
    const bool isUTF8 = VELSysCodePage::GetEnvConverter().IsUTF8();
    const char* bad =
        std::find_if(text, text + n, [=](char byte) { return !Passes(static_cast<unsigned char>(byte), isUTF8); });
    if (bad == text + n) {
        return true;
    }
    WarnNotPrintable(static_cast<int>(bad - text) + 1, text);
    return false;
}

/// A new block with a copy of `text`; the empty block for null, "" and what the check refuses.
Block CheckedBlock(const char* text) {
    if (text == nullptr || *text == 0) {
        return QORInterUnicodeString::Empty();
    }
    const std::size_t length = std::strlen(text);
    if (ChecksAreOn() && !CheckNarrowText(text, length)) {
        return QORInterUnicodeString::Empty();
    }
    return QORInterUnicodeString::_FromBytes(text, length);
}

/// The block with the narrow form of a wide block's text. ASCII passes silently; anything else is reported and goes
/// through the multi-byte view and the check.
Block NarrowBlockFrom(Block wide) {
    const Block narrow = QORInterUnicodeString::_NewNarrow(wide->_length);
    if (narrow->IsTheEmptyBlock()) {
        return narrow;
    }
    const unsigned short* units = wide->Wide();
    const unsigned short* end = units + wide->_length;
    if (std::all_of(units, end, [](unsigned short unit) { return unit < FirstNonASCII; })) {
        std::transform(units, end, narrow->Text(), [](unsigned short unit) { return static_cast<char>(unit); });
        return narrow;
    }
    QORInterUnicodeString::_Release(narrow);
    WarnDataCorruption();
    const auto [text, length] = MBCSOf(wide);
    if (length < 1 || (ChecksAreOn() && !CheckNarrowText(text, static_cast<std::size_t>(length)))) {
        return QORInterUnicodeString::Empty();
    }
    return QORInterUnicodeString::_FromBytes(text, static_cast<std::size_t>(length));
}

Block BlockOf(const QORString& s) {
    return StringAccess::BlockOf(s);
}

} // namespace

QORString::QORString(char* s) : _text(CheckedBlock(s)->Text()) {}

QORString& QORString::operator=(const char* s) {
    if (_text == nullptr) {
        _ReportNullHandle();
    }
    const Block fresh = CheckedBlock(s);
    QORInterUnicodeString::_Release(BlockOf(*this));
    _text = fresh->Text();
    return *this;
}

void QORString::_ReportNullHandle() const {
    VELDebugBreak(1);
    _text = EmptyHandle();
}

/// Comes before each operation: a null handle is repaired, and a wide block left for a narrow one.
void QORString::_Prepare() const {
    if (_text == nullptr) {
        _text = EmptyHandle();
        return;
    }
    const Block block = BlockOf(*this);
    if (block->IsWide()) {
        _text = NarrowBlockFrom(block)->Text();
        QORInterUnicodeString::_Release(block);
    }
}

bool QORString::Init() const {
    return _text != nullptr;
}

const void* QORString::ClassId() {
    static const ClassIdentity identity{};
    return &identity;
}

int QORString::GetLengthInChar() const {
    _Prepare();
    return BlockOf(*this)->_length;
}

int QORString::GetLengthInByte() const {
    return GetLengthInChar();
}

int QORString::length() const {
    return GetLengthInChar();
}

int QORString::Length() const {
    return GetLengthInChar();
}

bool QORString::IsEmpty() const {
    return GetLengthInChar() == 0;
}

const char* QORString::ConvertToChar() const {
    _Prepare();
    return _text;
}

unsigned int QORString::ComputeHashKey() const {
    _Prepare();
    const char* text = _text;
    auto left = static_cast<std::size_t>(BlockOf(*this)->_length);
    unsigned int hash = 0;
    for (; left >= sizeof hash; left -= sizeof hash, text += sizeof hash) {
        unsigned int word;
        std::memcpy(&word, text, sizeof word);
        hash ^= word;
    }
    unsigned int rest = 0;
    std::memcpy(&rest, text, left);
    return hash ^ rest;
}

unsigned int QORString::hash() const {
    return ComputeHashKey();
}
