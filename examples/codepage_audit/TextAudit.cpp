#include "TextAudit.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace {

constexpr int MostFrequent = 10;

struct CloseFile {
    void operator()(std::FILE* file) const { VELSysLocalFileClose(file); }
};

/// The whole of a file, or nothing, with `errno` telling why.
std::optional<std::string> ReadFile(const QORUnicodeString& path) {
    std::FILE* opened = nullptr;
    VELSysLocalFileOpen(path, "rb", opened);
    const std::unique_ptr<std::FILE, CloseFile> file(opened);
    if (file == nullptr) {
        return std::nullopt;
    }
    std::string content;
    char buffer[65536];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get())) {
        content.append(buffer, count);
    }
    if (std::ferror(file.get()) != 0) {
        return std::nullopt;
    }
    return content;
}

/// The code points of a text; a unit that belongs to no pair counts as one.
unsigned long CountCodePoints(const QORUnicodeString& text) {
    const unsigned short* units = text.ConvertToUCChar();
    const auto length = static_cast<unsigned long>(text.GetLengthInChar());
    const auto codePoints = std::make_unique<unsigned int[]>(length + 1);
    return static_cast<unsigned long>(VELSysUCAlgorithm::unchecked::utf16to32(units, units + length, codePoints.get()) -
                                      codePoints.get());
}

/// True when the bytes come back from UTF-16 as they went in.
bool SurvivesUTF16(const QORUnicodeString& text) {
    QORUnicodeString wide;
    wide.BuildFromUCChar(text.ConvertToUCChar(), text.GetLengthInChar());
    return wide.GetLengthInByte() == text.GetLengthInByte() &&
           std::memcmp(wide.ConvertToChar(), text.ConvertToChar(), static_cast<std::size_t>(text.GetLengthInByte())) ==
               0;
}

int CountLines(const QORUnicodeString& text) {
    VELVectorOfUnicodeString lines;
    VEL::Split(text, QORUnicodeString("\n"), lines);
    // Behind the last line feed no line has to follow.
    QORUnicodeString last;
    lines.Get(lines.GetLength() - 1, last);
    return lines.GetLength() - (last.IsEmpty() ? 1 : 0);
}

/// Adds the words of a text, in lower case and without punctuation around them. @return Their number.
int CollectWords(const QORUnicodeString& text, VELVectorOfUnicodeString& words) {
    const int before = words.GetLength();
    QORToken tokens(text, 0);
    unsigned char found = 0;
    const QORUnicodeString delimiters(" \t\r\n.,;:!?()[]{}<>\"'`*#|/\\=+-");
    for (QORUnicodeString word = tokens.GetNextToken(delimiters, &found); found != 0;
         word = tokens.GetNextToken(delimiters, &found)) {
        words.PutBack(word.ToLower());
    }
    return words.GetLength() - before;
}

struct Frequency {
    QORUnicodeString word;
    int count;
};

} // namespace

TextAudit::TextAudit(std::FILE* report, const QORUnicodeString& codePage) : _report(report) {
    if (!codePage.IsEmpty()) {
        _codePage.emplace(codePage.ConvertToChar());
    }
}

bool TextAudit::Audit(const VELSysPath& file) {
    const QORUnicodeString name = file.ToString(nullptr);
    const std::optional<std::string> content = ReadFile(name);
    if (!content) {
        const char* const cause = std::strerror(errno);
        std::fprintf(stderr, "%s: cannot be read: %s\n", name.ConvertToChar(), cause);
        if (_trace) {
            _trace->Warning("%s: %s", name.ConvertToChar(), cause);
        }
        return false;
    }
    if (_trace) {
        _trace->Info("%s: %zu bytes", name.ConvertToChar(), content->size());
    }
    _WriteLine(name.ConvertToChar(), *content);
    return true;
}

void TextAudit::_WriteLine(const char* name, const std::string& content) {
    const QORUnicodeString text(content.data(), content.size());
    const char* bytes = content.data();
    const bool isUTF8 = VELSysUCAlgorithm::IsUTF8(bytes, content.size()) == 0;
    std::fprintf(_report,
                 "%s: %zu bytes, %d code units, %lu code points, hash %08x, %d lines, %d words, %s UTF-8, "
                 "UTF-16 and back: %s",
                 name, content.size(), text.GetLengthInChar(), CountCodePoints(text), text.ComputeHashKey(),
                 CountLines(text), CollectWords(text, _words), isUTF8 ? "valid" : "not valid",
                 SurvivesUTF16(text) ? "the same" : "differs");
    // Narrow text ends at its first zero byte.
    if (static_cast<std::size_t>(text.GetLengthInByte()) < content.size()) {
        std::fprintf(_report, ", zero byte at %d", text.GetLengthInByte());
    }
    _WriteOffence(content);
    std::fputc('\n', _report);
}

void TextAudit::_WriteOffence(const std::string& content) {
    if (!_codePage) {
        return;
    }
    if (const auto offset = _codePage->FirstOffence(content.data(), content.size())) {
        std::fprintf(_report, ", not %s from byte %lu", _codePage->Name(), *offset);
    } else {
        std::fprintf(_report, ", survives as %s", _codePage->Name());
    }
}

void TextAudit::WriteMostFrequentWords() {
    _words.Sort([](const QORUnicodeString* a, const QORUnicodeString* b) { return a->SortCompare(*b); });
    std::vector<Frequency> frequencies;
    for (int i = 0; i < _words.GetLength(); ++i) {
        const QORUnicodeString& word = *_words.GetAsPtr(i);
        if (frequencies.empty() || frequencies.back().word != word) {
            frequencies.push_back({word, 0});
        }
        ++frequencies.back().count;
    }
    const auto shown = std::min<std::size_t>(MostFrequent, frequencies.size());
    std::partial_sort(frequencies.begin(), frequencies.begin() + static_cast<std::ptrdiff_t>(shown), frequencies.end(),
                      [](const Frequency& a, const Frequency& b) {
                          return a.count != b.count ? a.count > b.count : a.word < b.word;
                      });
    for (std::size_t i = 0; i < shown; ++i) {
        std::fprintf(_report, "%8d  %s\n", frequencies[i].count, frequencies[i].word.ConvertToChar());
    }
}
