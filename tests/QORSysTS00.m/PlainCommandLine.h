/// @file
/// The splitter of command lines, written down once more, rule by rule and byte by byte.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace PlainCommandLine {

inline bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

/// One space for each run of blanks; backslashes in front of quotes.
inline std::string Normalise(const std::string& line) {
    std::string result;
    std::size_t i = 0;
    const auto takeUnseen = [&] {
        if (i < line.size()) {
            result += line[i++];
        }
    };
    while (i < line.size()) {
        if (IsBlank(line[i])) {
            while (i < line.size() && IsBlank(line[i])) {
                ++i;
            }
            result += ' ';
            takeUnseen();
            continue;
        }
        if (line[i] != '\\') {
            result += line[i++];
            continue;
        }
        std::size_t run = 0;
        while (i + run < line.size() && line[i + run] == '\\') {
            ++run;
        }
        const bool quoteFollows = i + run < line.size() && line[i + run] == '"';
        if (run == 1 && quoteFollows) {
            result += '"';
            i += 2;
        } else if (quoteFollows) {
            result += std::string(run / 2, '\\') + '"';
            i += run + 1;
        } else if (run >= 2) {
            result += std::string(run, '\\');
            i += run;
            takeUnseen();
        } else {
            result += '\\';
            ++i;
        }
    }
    return result;
}

/// Separators become line feeds. @return The count of arguments.
inline int Separate(const std::string& text, std::string& result) {
    int count = 1;
    const auto plain = [&](char c) {
        result += c == ' ' ? '\n' : c;
        count += c == ' ' ? 1 : 0;
    };
    std::size_t i = 0;
    while (i < text.size()) {
        if (text[i] != '"') {
            plain(text[i++]);
            continue;
        }
        std::size_t latest = i;
        bool isClosed = false;
        std::size_t stop = i + 1;
        while (stop < text.size() && !(isClosed && IsBlank(text[stop]))) {
            if (text[stop] == '"') {
                latest = stop;
                isClosed = isClosed || stop >= i + 2;
            }
            ++stop;
        }
        if (!isClosed) {
            while (i < text.size()) {
                plain(text[i++]);
            }
            break;
        }
        result += text.substr(i + 1, latest - i - 1) + text.substr(latest + 1, stop - latest - 1);
        i = stop;
    }
    return count;
}

/// The arguments; a slot that gets no piece holds nothing.
inline std::vector<std::optional<std::string>> Split(const std::string& line) {
    std::string text;
    const int count = Separate(Normalise(line), text);
    std::vector<std::optional<std::string>> slots(static_cast<std::size_t>(count));
    std::size_t slot = 0;
    std::string piece;
    bool isUnseen = false;
    for (const char c : text) {
        if (c == '\n' && !isUnseen) {
            if (slot < slots.size()) {
                slots[slot++] = piece;
            }
            piece.clear();
            isUnseen = true;
            continue;
        }
        piece += c;
        isUnseen = false;
    }
    if (slot < slots.size()) {
        slots[slot] = piece;
    }
    return slots;
}

} // namespace PlainCommandLine
