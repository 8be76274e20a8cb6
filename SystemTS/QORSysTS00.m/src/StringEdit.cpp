#include "StringEdit.h"

#include "TextCopy.h"
#include "TextScan.h"
#include "VELStringIteration.h"
#include "VELSysUCDecoder.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace VEL::internal {
namespace {

using internal::CountLeading;
using internal::CountTrailing;
using UCS::internal::IsHighSurrogate;
using UCS::internal::IsLowSurrogate;

/// One code point in UTF-16.
struct EncodedCodePoint {
    explicit EncodedCodePoint(unsigned int code)
        : count(static_cast<int>(UCS::internal::WriteUTF16(code, units) - units)) {}

    unsigned short units[2];
    int count;
};

template <class Unit>
Unit* Move(Unit* out, const Unit* from, std::ptrdiff_t count) {
    std::memmove(out, from, static_cast<std::size_t>(count) * sizeof(Unit));
    return out + count;
}

Block EmptyAfter(Block block) {
    QORInterUnicodeString::_Release(block);
    return QORInterUnicodeString::Empty();
}

/// A text of this address lies inside the block's own.
bool LiesIn(Block block, const void* text) {
    const char* const first = block->Text();
    const std::size_t size = static_cast<std::size_t>(block->_capacity) * (block->IsWide() ? 2 : 1);
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    return address >= begin && address - begin < size;
}

/// The places of a text that are to be replaced. The first ones are kept, so that a text with a few of them is searched
/// once.
template <class Unit>
class Places {
public:
    Places(TextRange<Unit> text, TextRange<Unit> what) : _search{text.text, text.length, what.text, what.length} {
        for (int found = FindFrom(0); found > 0; found = FindFrom(_end)) {
            _count += found;
            if (found < Kept) {
                break;
            }
        }
        _isWhole = _count < Kept;
    }

    std::ptrdiff_t Count() const { return _count; }

    /// Writes the text with the places replaced. `out` may be the text itself when `with` is no longer than what it
    /// replaces.
    void Write(Unit* out, TextRange<Unit> with) {
        const bool isInPlace = out == _search.text;
        std::ptrdiff_t done = 0;
        for (std::ptrdiff_t left = _count; left > 0; left -= Kept) {
            const int found = _isWhole ? static_cast<int>(left) : FindFrom(done);
            for (int i = 0; i < found; ++i) {
                out = CopyBetween(out, done, _places[static_cast<std::size_t>(i)], isInPlace);
                out = Copy(out, with.text, with.length);
                done = _places[static_cast<std::size_t>(i)] + _search.whatLength;
            }
        }
        CopyBetween(out, done, _search.length, isInPlace);
    }

private:
    static constexpr int Kept = 512;

    int FindFrom(std::ptrdiff_t from) {
        const int found = FindPlaces(_search, from, _places.data(), Kept);
        if (found > 0) {
            _end = _places[static_cast<std::size_t>(found) - 1] + _search.whatLength;
        }
        return found;
    }

    Unit* CopyBetween(Unit* out, std::ptrdiff_t from, std::ptrdiff_t to, bool isInPlace) const {
        const Unit* const source = _search.text + from;
        if (out == source) {
            return out + (to - from);
        }
        return isInPlace ? Move(out, source, to - from) : Copy(out, source, to - from);
    }

    Search<Unit> _search;
    std::ptrdiff_t _count = 0;
    std::ptrdiff_t _end = 0; ///< Behind the last place that was found.
    bool _isWhole;           ///< All places are kept.
    std::array<std::ptrdiff_t, Kept> _places;
};

/// `text` is that of the block in the wanted representation, which need not be the block's own.
template <bool IsWide>
Block ReplacePlaces(Block block, TextRange<UnitOf<IsWide>> text, TextRange<UnitOf<IsWide>> what,
                    TextRange<UnitOf<IsWide>> with) {
    using Unit = UnitOf<IsWide>;
    Places<Unit> places(text, what);
    if (places.Count() == 0) {
        return block;
    }
    const std::ptrdiff_t length = text.length + places.Count() * (std::ptrdiff_t{with.length} - what.length);
    if (length < 1 || length > INT_MAX) {
        return EmptyAfter(block);
    }
    if (!block->IsAlone() || block->_capacity <= length || block->IsWide() != IsWide) {
        const Block fresh = Representation<IsWide>::New(static_cast<int>(length));
        if (!fresh->IsTheEmptyBlock()) {
            places.Write(Representation<IsWide>::Text(fresh), with);
        }
        QORInterUnicodeString::_Release(block);
        return fresh;
    }
    if (with.length <= what.length && !LiesIn(block, what.text) && !LiesIn(block, with.text)) {
        places.Write(Representation<IsWide>::Text(block), with);
        block->SetLength(static_cast<int>(length));
        block->_MarkChanged();
        return block;
    }
    const std::unique_ptr<Unit, decltype(&std::free)> result(
        static_cast<Unit*>(std::malloc(static_cast<std::size_t>(length) * sizeof(Unit))), std::free);
    if (result == nullptr) {
        return EmptyAfter(block);
    }
    places.Write(result.get(), with);
    return Representation<IsWide>::Set(block, result.get(), static_cast<int>(length));
}

/// Where a code point stands at the start of a text, and at its end. A true pair counts as one code point, so that a
/// surrogate is stripped only where it stands alone.
bool StartsWith(const unsigned short* first, const unsigned short* last, const EncodedCodePoint& code) {
    if (last - first < code.count || first[0] != code.units[0]) {
        return false;
    }
    if (code.count == 2) {
        return first[1] == code.units[1];
    }
    return !IsHighSurrogate(first[0]) || last - first < 2 || !IsLowSurrogate(first[1]);
}

bool EndsWith(const unsigned short* first, const unsigned short* last, const EncodedCodePoint& code) {
    if (last - first < code.count || last[-1] != code.units[code.count - 1]) {
        return false;
    }
    if (code.count == 2) {
        return last[-2] == code.units[0];
    }
    return !IsLowSurrogate(last[-1]) || last - first < 2 || !IsHighSurrogate(last[-2]);
}

/// Units at the start (end) of a text that are copies of a code point.
std::ptrdiff_t CountLeading(const unsigned short* text, std::ptrdiff_t length, const EncodedCodePoint& code) {
    std::ptrdiff_t count = 0;
    while (StartsWith(text + count, text + length, code)) {
        count += code.count;
    }
    return count;
}

std::ptrdiff_t CountTrailing(const unsigned short* text, std::ptrdiff_t length, const EncodedCodePoint& code) {
    std::ptrdiff_t count = 0;
    while (EndsWith(text, text + length - count, code)) {
        count += code.count;
    }
    return count;
}

/// Of a byte, and of a unit that is no surrogate and so a code point wherever it stands.
template <class Unit>
bool StartsWith(const Unit* first, const Unit* last, Unit unit) {
    return first < last && *first == unit;
}

template <class Unit>
constexpr int CountOf(Unit) {
    return 1;
}

int CountOf(const EncodedCodePoint& code) {
    return code.count;
}

std::ptrdiff_t CountUnits(const char*, const char*) {
    return 1;
}

std::ptrdiff_t CountUnits(const unsigned short* first, const unsigned short* last) {
    return IsHighSurrogate(*first) && last - first > 1 && IsLowSurrogate(first[1]) ? 2 : 1;
}

/// Copies what is not the character. With a null `out` it only counts. @return Units that are left.
template <class Unit, class Character>
int CopyOthers(const Unit* first, const Unit* last, const Character& character, Unit* out) {
    std::ptrdiff_t left = 0;
    while (first < last) {
        if (StartsWith(first, last, character)) {
            first += CountOf(character);
            continue;
        }
        const std::ptrdiff_t units = CountUnits(first, last);
        if (out != nullptr) {
            std::copy(first, first + units, out + left);
        }
        left += units;
        first += units;
    }
    return static_cast<int>(left);
}

/// @param kept  The block to share when nothing is stripped, or null to have a copy.
template <bool IsWide, class Character>
Block Strip(TextRange<UnitOf<IsWide>> text, int mode, const Character& character, Block kept) {
    const auto* first = text.text;
    const auto* last = text.text + text.length;
    const bool stripsAll = mode == StripAll;
    if (!stripsAll && (mode & StripLeading) != 0) {
        first += CountLeading(first, last - first, character);
    }
    if (!stripsAll && (mode & StripTrailing) != 0) {
        last -= CountTrailing(first, last - first, character);
    }
    const int length = stripsAll ? CopyOthers(first, last, character, {}) : static_cast<int>(last - first);
    if (length == text.length && kept != nullptr) {
        AddHandle(kept->Text());
        return kept;
    }
    const Block fresh = Representation<IsWide>::New(length);
    if (!fresh->IsTheEmptyBlock()) {
        auto* const out = Representation<IsWide>::Text(fresh);
        if (stripsAll) {
            CopyOthers(first, last, character, out);
        } else {
            Copy(out, first, length);
        }
    }
    return fresh;
}

} // namespace

template <bool IsWide>
Block RepeatUnits(const UnitOf<IsWide>* text, int length, unsigned long times) {
    // A length that no block can have counts as no memory.
    if (length < 1 || times == 0 || times > static_cast<unsigned long>(INT_MAX / length)) {
        return QORInterUnicodeString::Empty();
    }
    const int total = length * static_cast<int>(times);
    const Block block = Representation<IsWide>::New(total);
    if (block->IsTheEmptyBlock()) {
        return block;
    }
    // The part that is done doubles with each copy.
    auto* const out = Representation<IsWide>::Text(block);
    Copy(out, text, length);
    for (int done = length; done < total;) {
        const int next = std::min(done, total - done);
        Copy(out + done, out, next);
        done += next;
    }
    return block;
}

template Block RepeatUnits<false>(const char*, int, unsigned long);
template Block RepeatUnits<true>(const unsigned short*, int, unsigned long);

template <bool IsWide>
Block AppendTexts(Block block, std::initializer_list<TextRange<UnitOf<IsWide>>> texts, bool grow) {
    std::int64_t length = block->_length;
    for (const auto& text : texts) {
        length += text.length;
    }
    if (length == block->_length) {
        return block;
    }
    if (length > INT_MAX) {
        return EmptyAfter(block);
    }
    const auto newLength = static_cast<int>(length);
    auto* const units = Representation<IsWide>::Text(block);
    const auto appendTo = [&](UnitOf<IsWide>* out) {
        for (const auto& text : texts) {
            out = Copy(out, text.text, text.length);
        }
    };
    if (block->IsAlone() && block->_capacity > newLength) {
        appendTo(units + block->_length);
        block->SetLength(newLength);
        block->_MarkChanged();
        return block;
    }
    const int capacity = QORInterUnicodeString::_NewLength(block, newLength, grow);
    const bool areOwn = std::any_of(texts.begin(), texts.end(), [=](auto& text) { return LiesIn(block, text.text); });
    if (!areOwn && QORInterUnicodeString::_IsEnlargedInPlace(block)) {
        const int oldLength = block->_length;
        const Block larger = QORInterUnicodeString::_Enlarge(block, capacity);
        if (!larger->IsTheEmptyBlock()) {
            appendTo(Representation<IsWide>::Text(larger) + oldLength);
            larger->SetLength(newLength);
        }
        return larger;
    }
    const Block fresh = Representation<IsWide>::New(capacity);
    if (!fresh->IsTheEmptyBlock()) {
        appendTo(Copy(Representation<IsWide>::Text(fresh), units, block->_length));
        fresh->SetLength(newLength);
    }
    // Last, since the texts may be the old block's own.
    QORInterUnicodeString::_Release(block);
    return fresh;
}

template Block AppendTexts<false>(Block, std::initializer_list<TextRange<char>>, bool);
template Block AppendTexts<true>(Block, std::initializer_list<TextRange<unsigned short>>, bool);

Block AppendText(Block block, Block text) {
    if (!block->IsWide() && !text->IsWide()) {
        return AppendTexts<false>(block, {{text->Text(), text->_length}}, true);
    }
    if (block->IsWide()) {
        return AppendTexts<true>(block, {UTF16Of(text)}, true);
    }
    const UTF16Range own = UTF16Of(block);
    if (IsMissing(block, own)) {
        return block;
    }
    // There is no growth on the way from narrow to wide.
    return ReplaceRange(block, own.length, 0, text);
}

Block ReplaceRange(Block block, int pos, int count, Block with, int newCount) {
    const UTF16Range text = UTF16Of(block);
    const UTF16Range source = UTF16Of(with);
    if (IsMissing(block, text) || IsMissing(with, source) || pos < 0 || count < 0 || pos > text.length ||
        count > text.length - pos || newCount < WholeLength) {
        return block;
    }
    newCount = newCount == WholeLength ? source.length : newCount;
    const int rest = text.length - pos - count;
    if (newCount > INT_MAX - pos - rest) {
        return EmptyAfter(block);
    }
    const int length = pos + newCount + rest;
    const int copied = std::min(newCount, source.length);
    const unsigned short* from = source.text;
    const auto fillIn = [&](unsigned short* out) {
        out = Copy(out, from, copied);
        std::fill(out, out + (newCount - copied), u' ');
    };
    if (block->IsWide() && block->IsAlone() && block->_capacity > length) {
        OptimizedBuffer<unsigned short, 16> aside;
        if (LiesIn(block, from)) {
            // The string's own text, which is about to move.
            unsigned short* const kept = aside.Reserve(static_cast<unsigned long>(copied));
            if (kept == nullptr) {
                return EmptyAfter(block);
            }
            Copy(kept, from, copied);
            from = kept;
        }
        unsigned short* const units = block->Wide();
        Move(units + pos + newCount, units + pos + count, rest);
        fillIn(units + pos);
        block->SetLength(length);
        block->_MarkChanged();
        return block;
    }
    const Block fresh = QORInterUnicodeString::_NewWide(length);
    if (!fresh->IsTheEmptyBlock()) {
        unsigned short* const units = fresh->Wide();
        Copy(units, text.text, pos);
        fillIn(units + pos);
        Copy(units + pos + newCount, text.text + pos + count, rest);
    }
    QORInterUnicodeString::_Release(block);
    return fresh;
}

Block AppendCharacter(Block block, unsigned int code) {
    const UTF16Range text = UTF16Of(block);
    const int units = UCS::internal::UTF16Length(code);
    if (IsMissing(block, text)) {
        return block;
    }
    if (text.length > INT_MAX - units) {
        return EmptyAfter(block);
    }
    return ResizeWide(block, text.length + units, code, true, true);
}

Block ReplaceAllText(Block block, Block what, Block with, bool isWide) {
    if (what == nullptr || what->_length == 0) {
        return block;
    }
    const bool withIsWide = with != nullptr && with->IsWide();
    if (!isWide && !block->IsWide() && !what->IsWide() && !withIsWide) {
        const MBCSRange source = MBCSOf(with);
        return ReplacePlaces<false>(block, {block->Text(), block->_length}, {what->Text(), what->_length},
                                    {source.text, source.length});
    }
    const UTF16Range text = UTF16Of(block);
    const UTF16Range wanted = UTF16Of(what);
    const UTF16Range source = UTF16Of(with);
    if (wanted.length == 0 || IsMissing(with, source)) {
        return block;
    }
    return ReplacePlaces<true>(block, {text.text, text.length}, {wanted.text, wanted.length},
                               {source.text, source.length});
}

Block ResizeWide(Block block, int n, unsigned int fill, bool truncate, bool grow) {
    if (n < 1) {
        return EmptyAfter(block);
    }
    const UTF16Range text = UTF16Of(block);
    if (IsMissing(block, text) || n == text.length || (n < text.length && !truncate)) {
        return block;
    }
    const int oldLength = text.length;
    block = block->IsWide() ? QORInterUnicodeString::_EnsureWide(block, n, true, grow)
                            : QORInterUnicodeString::_ToWide(block, n, true);
    if (block->IsTheEmptyBlock()) {
        return block;
    }
    int length = std::min(n, oldLength);
    const EncodedCodePoint code(fill);
    for (; n - length >= code.count; length += code.count) {
        std::copy_n(code.units, code.count, block->Wide() + length);
    }
    block->SetLength(length);
    block->_MarkChanged();
    return block;
}

Block StripText(Block block, int mode, unsigned int code) {
    constexpr unsigned int LastStrippedFromBytes = 126;
    if (code == 0 || block->_length == 0 || mode < StripLeading || mode > StripAll) {
        AddHandle(block->Text());
        return block;
    }
    if (!block->IsWide() && code <= LastStrippedFromBytes) {
        return Strip<false>({block->Text(), block->_length}, mode, static_cast<char>(code), block);
    }
    const UTF16Range text = UTF16Of(block);
    if (code > UCS::internal::CodePointLast) {
        // No text holds it, though its two units may stand there.
        mode = 0;
    }
    const Block kept = block->IsWide() ? block : nullptr;
    if (code < UCS::internal::HighSurrogateFirst) {
        return Strip<true>({text.text, text.length}, mode, static_cast<unsigned short>(code), kept);
    }
    return Strip<true>({text.text, text.length}, mode, EncodedCodePoint(code), kept);
}

Block StripBytes(Block block, int mode, char byte) {
    return Strip<false>({block->Text(), block->_length}, mode, byte, nullptr);
}

Block ReplaceBytes(Block block, int pos, int count, const TextRange<char>& with) {
    const int length = block->_length;
    const std::int64_t newLength = std::int64_t{length} - count + with.length;
    if (length == 0 || pos < 0 || count < 0 || pos > length || newLength < 0) {
        return block;
    }
    // A range that goes on behind the end ends there.
    const auto rest = static_cast<int>(std::max(length - pos - std::int64_t{count}, std::int64_t{0}));
    const std::int64_t total = std::int64_t{pos} + with.length + rest;
    const Block fresh =
        total > INT_MAX ? QORInterUnicodeString::Empty() : QORInterUnicodeString::_NewNarrow(static_cast<int>(total));
    if (!fresh->IsTheEmptyBlock()) {
        char* out = Copy(fresh->Text(), block->Text(), pos);
        out = Copy(out, with.text, with.length);
        Copy(out, block->Text() + length - rest, rest);
    }
    QORInterUnicodeString::_Release(block);
    return fresh;
}

Block ResizeBytes(Block block, int n, char fill, bool truncate) {
    const int length = block->_length;
    if (n >= length) {
        const Block fresh = QORInterUnicodeString::_NewNarrow(n);
        if (!fresh->IsTheEmptyBlock()) {
            char* const out = Copy(fresh->Text(), block->Text(), length);
            std::memset(out, fill, static_cast<std::size_t>(n - length));
        }
        QORInterUnicodeString::_Release(block);
        return fresh;
    }
    if (!truncate) {
        return block;
    }
    n = std::max(n, 0);
    block = QORInterUnicodeString::_EnsureNarrow(block, n, true, false);
    if (!block->IsTheEmptyBlock()) {
        block->SetLength(n);
        block->_MarkChanged();
    }
    return block;
}

Block CutText(const UTF16Range& text, int start, int count) {
    const Block fresh = QORInterUnicodeString::_NewWide(count);
    if (!fresh->IsTheEmptyBlock()) {
        Copy(fresh->Wide(), text.text + start, count);
    }
    return fresh;
}

} // namespace VEL::internal
