/// @file
/// Reading a line from a stream, for the string classes that do.
#pragma once

#include <cctype>
#include <istream>

namespace VEL::internal {

/// While it lives a stream reports by its state alone, whatever exceptions were asked of it: what has been read must
/// not be lost on the way.
class StreamWithoutExceptions {
public:
    explicit StreamWithoutExceptions(std::istream& in) : _in(in), _mask(in.exceptions()) {
        _in.exceptions(std::ios_base::goodbit);
    }
    StreamWithoutExceptions(const StreamWithoutExceptions&) = delete;
    StreamWithoutExceptions& operator=(const StreamWithoutExceptions&) = delete;
    ~StreamWithoutExceptions() {
        try {
            _in.exceptions(_mask);
        } catch (const std::ios_base::failure&) {
            // The mask stands again; what it would throw for has been told by the state.
        }
    }

private:
    std::istream& _in;
    std::ios_base::iostate _mask;
};

/// Passes over white space, line feeds too. @return False at the end of the stream and when it fails.
inline bool SkipWhite(std::istream& in) {
    char next;
    while (in.get(next)) {
        if (std::isspace(static_cast<unsigned char>(next)) == 0) {
            in.putback(next);
            return true;
        }
    }
    return false;
}

/// Reads up to the line feed, which is consumed, and hands on zero-terminated pieces of at most 79 bytes.
template <class Take>
void ReadLineInPieces(std::istream& in, const Take& take) {
    constexpr int PieceSize = 80;
    for (;;) {
        char piece[PieceSize] = {};
        in.get(piece, PieceSize, '\n');
        if (in.gcount() == 0 && !in.eof()) {
            // An empty piece is no failure: the line feed follows.
            in.clear();
        }
        take(piece);
        char next;
        if (!in.get(next) || next == '\n') {
            return;
        }
        in.putback(next);
    }
}

} // namespace VEL::internal
