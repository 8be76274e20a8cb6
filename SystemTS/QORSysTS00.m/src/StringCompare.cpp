#include "StringCompare.h"

#include "EnvironmentConverter.h"
#include "StringEdit.h"
#include "TextScan.h"
#include "VELSysUCDecoder.h"

#include <algorithm>
#include <cstring>

namespace VEL::internal {
namespace {

constexpr unsigned int FirstNonASCII = 0x80;

/// Walks a text character by character.
class NarrowWalk {
public:
    explicit NarrowWalk(Block block) : _next(block->Text()), _end(_next + block->_length) {}

    bool IsAtEnd() const { return _next == _end; }

    /// The next character; a byte that can't be decoded counts as "?".
    unsigned int Next() {
        const auto byte = static_cast<unsigned char>(*_next);
        if (byte < FirstNonASCII) {
            ++_next;
            return byte;
        }
        const char* next = _next;
        auto left = static_cast<unsigned long>(_end - _next);
        unsigned int code = 0;
        if (_converter.GetNextMultiByteCharAsUTF32(code, next, left) < 1 || code == 0 || next == _next) {
            ++_next;
            return '?';
        }
        _next = next;
        return code;
    }

private:
    const VELSysCodePage& _converter = EnvironmentConverter();
    const char* _next;
    const char* _end;
};

class WideWalk {
public:
    WideWalk(const UTF16Range& text, std::ptrdiff_t start) : _next(text.text + start), _end(text.text + text.length) {}

    bool IsAtEnd() const { return _next == _end; }
    unsigned int Next() { return UCS::internal::_DecodeUTF16Fast(_next, _end); }

private:
    const unsigned short* _next;
    const unsigned short* _end;
};

/// The first place at which two texts differ, or at which the shorter one ends.
std::ptrdiff_t FindDifference(const UTF16Range& a, const UTF16Range& b) {
    const std::ptrdiff_t length = std::min(a.length, b.length);
    std::ptrdiff_t place = 0;
    for (;; ++place) {
        place += FindDifferenceOrZero(a.text + place, b.text + place, length - place);
        if (place == length || a.text[place] != b.text[place]) {
            return place;
        }
    }
}

/// The start of the character that the unit at `place` belongs to, as a walk from the start of the text sees it: a high
/// surrogate is joined with whatever unit follows.
std::ptrdiff_t CharacterStart(const UTF16Range& text, std::ptrdiff_t place) {
    std::ptrdiff_t first = place;
    while (first > 0 && UCS::internal::IsHighSurrogate(text.text[first - 1])) {
        --first;
    }
    return place - (place - first) % 2;
}

template <class Walk>
int CompareWalks(Walk a, Walk b) {
    int result = 2;
    while (!a.IsAtEnd() && !b.IsAtEnd()) {
        const unsigned int x = a.Next();
        const unsigned int y = b.Next();
        if (x == y) {
            continue;
        }
        if (MapCase(x, LetterCase::Lower) != MapCase(y, LetterCase::Lower)) {
            return 0;
        }
        result = 1;
    }
    return a.IsAtEnd() && b.IsAtEnd() ? result : 0;
}

/// Views are made on demand, so a reader is handed the block as it is.
Block BlockBehind(const char* text) {
    return QORInterUnicodeString::FromText(const_cast<char*>(text));
}

template <class Range>
bool HasSameUnits(const Range& a, const Range& b) {
    return a.length == b.length &&
           std::memcmp(a.text, b.text, static_cast<std::size_t>(a.length) * sizeof *a.text) == 0;
}

} // namespace

int SearchForward(Block text, Block what, int start) {
    const UTF16Range in = UTF16Of(text);
    const UTF16Range wanted = UTF16Of(what);
    if (start < 0 || start >= in.length || wanted.length == 0 || wanted.length > in.length - start) {
        return -1;
    }
    const std::ptrdiff_t place = FindFirst(in.text + start, in.length - start, wanted.text, wanted.length);
    return place == NotFound ? -1 : start + static_cast<int>(place);
}

int SearchBackward(Block text, Block what, int start) {
    const UTF16Range in = UTF16Of(text);
    const UTF16Range wanted = UTF16Of(what);
    if (start < 0 || start >= in.length || wanted.length == 0 || wanted.length > in.length - start) {
        return -1;
    }
    return static_cast<int>(FindLast(in.text, in.length - start, wanted.text, wanted.length));
}

bool IsTextAt(Block text, int pos, Block what) {
    if (text == nullptr || what == nullptr || pos < 0) {
        return false;
    }
    const UTF16Range in = UTF16Of(text);
    const UTF16Range wanted = UTF16Of(what);
    return !IsMissing(text, in) && !IsMissing(what, wanted) && pos <= in.length && wanted.length <= in.length - pos &&
           HasSameUnits(UTF16Range{in.text + pos, wanted.length}, wanted);
}

int CompareByCase(Block a, Block b) {
    if (a == b) {
        return 2;
    }
    if (a == nullptr || b == nullptr) {
        return 0;
    }
    if (a->_length == 0 || b->_length == 0) {
        return a->_length == b->_length ? 2 : 0;
    }
    if (!a->IsWide() && !b->IsWide()) {
        if (HasSameUnits(MBCSOf(a), MBCSOf(b))) {
            return 2;
        }
        return CompareWalks(NarrowWalk(a), NarrowWalk(b));
    }
    const UTF16Range first = UTF16Of(a);
    const UTF16Range second = UTF16Of(b);
    const std::ptrdiff_t place = FindDifference(first, second);
    if (place == first.length && place == second.length) {
        return 2;
    }
    const std::ptrdiff_t start = CharacterStart(first, place);
    return CompareWalks(WideWalk(first, start), WideWalk(second, start));
}

int OrderAnyTexts(const char* a, const char* b, bool byUnits) noexcept {
    if (a == nullptr) {
        return -1;
    }
    if (b == nullptr) {
        return 1;
    }
    if (!byUnits && ((TextFlags(a) | TextFlags(b)) & WideTextFlag) == 0) {
        return std::strcmp(a, b);
    }
    const UTF16Range first = UTF16Of(BlockBehind(a));
    const UTF16Range second = UTF16Of(BlockBehind(b));
    // With the terminator of the shorter one, at which they differ at the latest.
    const int length = first.length < second.length ? first.length : second.length;
    const std::ptrdiff_t place = FindDifferenceOrZero(first.text, second.text, std::ptrdiff_t{length} + 1);
    return place > length ? 0 : static_cast<int>(first.text[place]) - static_cast<int>(second.text[place]);
}

bool AreEqualAnyTexts(const char* a, const char* b) noexcept {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    const Block first = BlockBehind(a);
    const Block second = BlockBehind(b);
    if (!first->IsWide() && !second->IsWide()) {
        return HasSameUnits(MBCSOf(first), MBCSOf(second));
    }
    const UTF16Range x = UTF16Of(first);
    const UTF16Range y = UTF16Of(second);
    return HasSameUnits(x, y) && !IsMissing(first, x) && !IsMissing(second, y);
}

bool EqualsNarrow(Block block, const char* s) {
    if (!block->IsWide()) {
        return std::strcmp(block->Text(), s) == 0;
    }
    const unsigned short* const units = block->Wide();
    std::ptrdiff_t i = 0;
    while (static_cast<unsigned char>(s[i]) < FirstNonASCII) {
        if (units[i] != static_cast<unsigned char>(s[i])) {
            return false;
        }
        if (s[i] == 0) {
            return true;
        }
        ++i;
    }
    // All in front of it is ASCII, so the narrow text has the same offsets up to here.
    const MBCSRange text = MBCSOf(block);
    return i <= text.length && std::strcmp(text.text + i, s + i) == 0;
}

} // namespace VEL::internal
