// The splitter of command lines. A line is normalised, its separators become line feeds, and it is cut at those.

#include "VELSysEnviron.h"
#include "VELSysEnvironmentManager.h"

#include <cstring>
#include <memory>

namespace {

constexpr char Separator = '\n';

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Makes one space of each run of blanks and resolves the backslashes in front of quotes, without a look at which text
/// is quoted. Writes no more than it reads.
/// @return The end of what was written.
char* Normalise(const char* in, char* out) {
    for (;;) {
        while (!IsBlank(*in) && *in != '\\' && *in != '\0') {
            *out++ = *in++;
        }
        if (*in == '\0') {
            return out;
        }
        // The byte behind a run of blanks, or of several backslashes that no quote follows, is deliberately taken as it
        // stands, whatever it is.
        bool takesNext = true;
        if (*in == '\\') {
            const std::size_t run = std::strspn(in, "\\");
            const bool isBeforeQuote = in[run] == '"';
            const std::size_t kept = isBeforeQuote ? run / 2 : run;
            std::memset(out, '\\', kept);
            out += kept;
            in += run;
            takesNext = isBeforeQuote || run > 1;
        } else {
            while (IsBlank(*in)) {
                ++in;
            }
            *out++ = ' ';
        }
        if (takesNext && *in != '\0') {
            *out++ = *in++;
        }
    }
}

/// A quoted part: the last quote in front of the blank, or the end, at which it stops.
struct QuotedPart {
    const char* lastQuote; ///< Null when nothing closes the part.
    const char* stop;
};

/// @param open  The opening quote.
QuotedPart FindQuotedPart(const char* open, const char* end) {
    const char* lastQuote = nullptr;
    const char* p = open + 1;
    for (; p < end; ++p) {
        // A quote right behind the opening one closes nothing.
        if (*p == '"' && p - open > 1) {
            lastQuote = p;
        } else if (IsBlank(*p) && lastQuote != nullptr) {
            break;
        }
    }
    return {lastQuote, p};
}

char* CopyRange(const char* first, const char* last, char* out) {
    const auto size = static_cast<std::size_t>(last - first);
    std::memmove(out, first, size);
    return out + size;
}

/// Text with its separators, in place.
struct SeparatedText {
    const char* end;
    int count; ///< One more than the number of separators made.
};

/// Turns the spaces outside of quoted parts into separators and takes the quotes away.
SeparatedText Separate(char* text, const char* end) {
    int count = 1;
    bool mayQuote = true;
    char* out = text;
    for (const char* in = text; in < end;) {
        if (*in == '"' && mayQuote) {
            const QuotedPart part = FindQuotedPart(in, end);
            if (part.lastQuote != nullptr) {
                out = CopyRange(in + 1, part.lastQuote, out);
                out = CopyRange(part.lastQuote + 1, part.stop, out);
                in = part.stop;
                continue;
            }
            // Never closed: quotes are plain from here on.
            mayQuote = false;
        }
        const bool separates = *in == ' ';
        count += separates ? 1 : 0;
        *out++ = separates ? Separator : *in;
        ++in;
    }
    return {out, count};
}

/// Frees a vector that is not handed out.
struct DeleteArguments {
    int count;
    void operator()(char** argv) const { VELSysEnvironDeleteArgumentArrayA(&argv, count); }
};

/// Cuts the text, which ends at `end`, into the slots. The byte behind a separator belongs to its piece unseen,
/// deliberately, so that of two separators in a row the second doesn't separate. Separators that the line had from the
/// start give pieces that nobody counted; those are dropped.
void Cut(const char* text, const char* end, char** argv, int count) {
    const char* piece = text;
    const char* from = piece;
    for (int i = 0; i < count; ++i) {
        const auto* const separator =
            static_cast<const char*>(std::memchr(from, Separator, static_cast<std::size_t>(end - from)));
        const char* const stop = separator != nullptr ? separator : end;
        const auto length = static_cast<std::size_t>(stop - piece);
        argv[i] = new char[length + 1];
        std::memcpy(argv[i], piece, length);
        argv[i][length] = '\0';
        if (stop == end) {
            return;
        }
        piece = stop + 1;
        from = piece < end ? piece + 1 : piece;
    }
}

} // namespace

int VELSysEnvironBuildArgumentFromCommandLine(const char* line, char*** argv, int* argc) {
    if (line == nullptr || argv == nullptr || argc == nullptr) {
        return -1;
    }
    const std::unique_ptr<char[]> text(new char[std::strlen(line) + 1]);
    const auto [end, count] = Separate(text.get(), Normalise(line, text.get()));
    char** vector = nullptr;
    if (VELSysEnvironmentManager::BuildArgumentArrayA(count, &vector) != 0) {
        return -1;
    }
    std::unique_ptr<char*[], DeleteArguments> pieces(vector, DeleteArguments{count});
    Cut(text.get(), end, vector, count);
    *argv = pieces.release();
    *argc = count;
    return 0;
}
