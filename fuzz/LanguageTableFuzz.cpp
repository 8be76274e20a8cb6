// The reader of the language table: an input is the text of the file. Text without zero bytes gives the rows that its
// lines have by the plain reading of them; other text gives some.

#include "LanguageTable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t LongestLine = 511;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::size_t size = text.substr(0, LongestLine).find('\n');
        size = size == std::string_view::npos ? std::min(text.size(), LongestLine) : size + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

VELSysNLSEntry RowOf(std::string_view line) {
    VELSysNLSEntry row;
    for (std::string* const column : {&row.language, &row.alias, &row.langString, &row.codePage}) {
        const std::size_t begin = line.find_first_not_of(" \n");
        line.remove_prefix(begin == std::string_view::npos ? line.size() : begin);
        const std::string_view token = line.substr(0, line.find_first_of(" \n"));
        *column = token;
        line.remove_prefix(token.size());
    }
    return row;
}

std::vector<VELSysNLSEntry> PlainRows(std::string_view text) {
    std::vector<VELSysNLSEntry> rows;
    bool hasBegun = false;
    for (const std::string_view line : LinesOf(text)) {
        if (!hasBegun) {
            hasBegun = line.find("*BEGIN*") != std::string_view::npos;
        } else if (line.find("*END*") != std::string_view::npos) {
            break;
        } else {
            rows.push_back(RowOf(line));
        }
    }
    return rows;
}

bool AreSame(const VELSysNLSEntry& left, const VELSysNLSEntry& right) {
    return left.language == right.language && left.alias == right.alias && left.langString == right.langString &&
           left.codePage == right.codePage;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    if (text.empty()) {
        return 0;
    }
    const std::unique_ptr<std::FILE, CloseFile> file(fmemopen(text.data(), text.size(), "rb"));
    VEL::internal::LanguageTable rows;
    const int result = VEL::internal::ReadLanguageTable(file.get(), rows);
    Require(result == 0 || result == 1);
    if (text.find('\0') != std::string::npos) {
        return 0;
    }
    const std::vector<VELSysNLSEntry> expected = PlainRows(text);
    Require(rows.size() == expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Require(AreSame(rows[i], expected[i]));
    }
    return 0;
}
