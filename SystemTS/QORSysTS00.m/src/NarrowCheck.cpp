#include "NarrowCheck.h"

#include "EnvironmentConverter.h"
#include "SessionState.h"
#include "UpwardCalls.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace VEL::internal {
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
    if (!ChecksAreOn() || EnvironmentConverter().IsUTF8()) {
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
    const bool isUTF8 = EnvironmentConverter().IsUTF8();
    const char* bad =
        std::find_if(text, text + n, [=](char byte) { return !Passes(static_cast<unsigned char>(byte), isUTF8); });
    if (bad == text + n) {
        return true;
    }
    WarnNotPrintable(static_cast<int>(bad - text) + 1, text);
    return false;
}

} // namespace

bool PassesCheck(const char* text, std::size_t n) {
    return !ChecksAreOn() || CheckNarrowText(text, n);
}

Block CheckedBlock(const char* text) {
    if (text == nullptr || *text == 0) {
        return QORInterUnicodeString::Empty();
    }
    const std::size_t length = std::strlen(text);
    if (!PassesCheck(text, length)) {
        return QORInterUnicodeString::Empty();
    }
    return QORInterUnicodeString::_FromBytes(text, length);
}

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
    if (length < 1 || !PassesCheck(text, static_cast<std::size_t>(length))) {
        return QORInterUnicodeString::Empty();
    }
    return QORInterUnicodeString::_FromBytes(text, static_cast<std::size_t>(length));
}

} // namespace VEL::internal
