// The line grammar of a trace configuration. A line is read twice: for its destination, and for all the rest.

#include "TraceConfiguration.h"
#include "VELSysTraceManager.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

using VEL::internal::ReadTraceNumber;
using VEL::internal::TraceSink;

constexpr const char* WhiteSpace = " \t\n\v\f\r";
constexpr const char* Separators = " ,;:|";

/// The longest piece of a line and its terminator.
constexpr std::size_t PieceSize = VELSysTraceObjBase::NameSize;

constexpr char LocalTime[] = "--local-time";

struct Destination {
    int kind = VELSysTraceKindStream;
    char name[PieceSize] = {};
};

/// Copies a piece, cut to what there is room for.
void CopyPiece(char (&piece)[PieceSize], const char* text, std::size_t length) {
    const std::size_t kept = std::min(length, PieceSize - 1);
    std::memcpy(piece, text, kept);
    piece[kept] = '\0';
}

/// Takes the first destination that stands behind a dash. Deliberately, the dash may stand inside a word, and the
/// destination of "--file" is "ile".
bool FindDestination(const char* text, Destination& found) {
    for (const char* dash = std::strchr(text, '-'); dash != nullptr; dash = std::strchr(dash + 1, '-')) {
        const char* name = nullptr;
        int kind = VELSysTraceKindStream;
        switch (dash[1]) {
        case 'E':
        case 'e':
            name = "STDERR";
            break;
        case 'O':
        case 'o':
            name = "STDOUT";
            break;
        case 'F':
        case 'f':
            name = dash + 2;
            break;
        case 'S':
        case 's':
            name = dash + 2;
            kind = VELSysTraceKindSystem;
            break;
        default:
            continue;
        }
        const std::size_t length = std::strcspn(name, WhiteSpace);
        if (length > 0) {
            found.kind = kind;
            CopyPiece(found.name, name, length);
            return true;
        }
    }
    return false;
}

int AddNumber(const Destination& destination, int option, const char* number, const TraceSink& sink) {
    const int value = ReadTraceNumber(number);
    return value != 0 ? sink.addOption(destination.name, option, value, sink.data) : 0;
}

int ApplyPiece(const char* piece, const Destination& destination, const TraceSink& sink) {
    if (*piece != '-') {
        return sink.addTrace(destination.kind, destination.name, piece, sink.data);
    }
    if (std::strncmp(piece, LocalTime, sizeof LocalTime - 1) == 0) {
        return sink.addOption(destination.name, VELSysTraceOptionLocalTime, 1, sink.data);
    }
    switch (piece[1]) {
    case 'I':
    case 'i':
        return AddNumber(destination, VELSysTraceOptionMinimumCode, piece + 2, sink);
    case 'L':
    case 'l':
        return AddNumber(destination, VELSysTraceOptionMaximumCode, piece + 2, sink);
    case 'M':
    case 'm':
        return AddNumber(destination, VELSysTraceOptionMemory, piece + 2, sink);
    case 'N':
    case 'n':
        return sink.addOption(destination.name, VELSysTraceOptionActive, 0, sink.data);
    default:
        return 0;
    }
}

} // namespace

int VEL::internal::ReadTraceNumber(const char* text) {
    constexpr long least = std::numeric_limits<int>::min();
    constexpr long greatest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::strtol(text, nullptr, 10), least, greatest));
}

int VEL::internal::ApplyTraceLine(const char* text, const TraceSink& sink) {
    Destination destination;
    if (text == nullptr || !FindDestination(text, destination)) {
        return -1;
    }
    if (const int refusal = sink.addTrace(destination.kind, destination.name, nullptr, sink.data); refusal != 0) {
        return refusal;
    }
    int result = 0;
    for (text += std::strspn(text, Separators); *text != '\0'; text += std::strspn(text, Separators)) {
        const std::size_t length = std::strcspn(text, Separators);
        char piece[PieceSize];
        CopyPiece(piece, text, length);
        if (ApplyPiece(piece, destination, sink) != 0) {
            result = -1;
        }
        text += length;
    }
    return result;
}
