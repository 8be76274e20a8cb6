#include "QORToken.h"
#include "TokenInput.h"

#include <optional>

namespace {

using TokenInput::Require;
using Text = std::u16string;

QORUnicodeString StringOf(const Text& text) {
    QORUnicodeString s;
    s.BuildFromUCChar(reinterpret_cast<const unsigned short*>(text.data()), static_cast<int>(text.size()));
    return s;
}

/// The definition, unit by unit.
class PlainToken {
public:
    PlainToken(const Text& text, bool keepEmpty) : _text(text), _keepEmpty(keepEmpty) {}

    void Reset() { _position = 0; }

    std::optional<Text> Next(const Text& delimiters) {
        if (_position == _text.size()) {
            return std::nullopt;
        }
        if (_keepEmpty) {
            _position += IsDelimiter(delimiters) ? 1 : 0;
        } else {
            while (_position < _text.size() && IsDelimiter(delimiters)) {
                ++_position;
            }
            if (_position == _text.size()) {
                return std::nullopt;
            }
        }
        const std::size_t start = _position;
        while (_position < _text.size() && !IsDelimiter(delimiters)) {
            ++_position;
        }
        return _text.substr(start, _position - start);
    }

private:
    bool IsDelimiter(const Text& delimiters) const { return delimiters.find(_text[_position]) != Text::npos; }

    const Text& _text;
    bool _keepEmpty;
    std::size_t _position = 0;
};

/// Takes all tokens. Each second one is cut at white space when `mixes` says so.
void Compare(QORToken& tokens, PlainToken& plain, const Text& delimiters, bool mixes) {
    const Text whiteSpace = u" \t\n";
    const QORUnicodeString units = StringOf(delimiters);
    for (bool isWhite = false;; isWhite = mixes && !isWhite) {
        unsigned char found = 77;
        const QORUnicodeString token = isWhite ? tokens.GetNextToken(&found) : tokens.GetNextToken(units, &found);
        const std::optional<Text> expected = plain.Next(isWhite ? whiteSpace : delimiters);
        Require(found == (expected.has_value() ? 1 : 0));
        const Text text(token.ConvertToUCChar(), token.ConvertToUCChar() + token.GetLengthInChar());
        Require(text == expected.value_or(Text()));
        if (found == 0) {
            return;
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TokenInput::Input<char16_t> input(data, size);
    const bool keepEmpty = (input.choices & 1) != 0;
    QORToken tokens(StringOf(input.text), keepEmpty ? 1 : 0);
    PlainToken plain(input.text, keepEmpty);
    for (int round = 0; round < 2; ++round) {
        Compare(tokens, plain, input.delimiters, (input.choices & 2) != 0);
        tokens.Reset();
        plain.Reset();
    }
    return 0;
}
