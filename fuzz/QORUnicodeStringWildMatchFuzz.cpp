#include "PlainWildMatch.h"
#include "StringFuzz.h"

namespace {

using namespace StringTexts;

/// Few different units, so that something matches.
constexpr char16_t Alphabet[] = {u'a', u'b', u'*', u'\'', u'"', u'\u00e9', 0xD83D, 0xDE00};
constexpr unsigned int Codes[] = {'*', '\'', '"', 'a', 0xE9, 0x1F600, 0xD83D, 0xDE00};
constexpr std::size_t Longest = 10;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    StringFuzz::UseUTF8();
    return 0;
}

// Three bits a unit, the pattern first; a byte with its highest bit set begins the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    StringFuzz::Input input(data, size);
    const unsigned int wild = Codes[input.Below(8)];
    const unsigned int quote = Codes[input.Below(8)];
    const bool isWide = input.Below(2) != 0;
    std::u16string parts[2];
    for (int part = 0; !input.IsEmpty();) {
        const unsigned int byte = input.TakeByte();
        part = byte >= 0x80 ? 1 : part;
        parts[part] += Alphabet[byte % (isWide ? 8 : 6)];
    }
    if (parts[0].size() > Longest || parts[1].size() > Longest) {
        return -1;
    }
    const bool isMatch =
        StringOf(parts[1], isWide).WildMatch(StringOf(parts[0], isWide), Character(wild), Character(quote));
    StringFuzz::Require(isMatch == PlainWildMatch::Matcher(wild, quote).Matches(parts[1], parts[0]));
    return 0;
}
