// The operations of QORUnicodeString that change, search and compare text. How text gets in and out stands in
// QORUnicodeString.cpp and QORUnicodeStringFormats.cpp.

#include "QORUnicodeChar.h"
#include "QORUnicodeString.h"
#include "StringAccess.h"
#include "StringCompare.h"
#include "StringEdit.h"
#include "StringSplit.h"
#include "VELString.h"
#include "VELSysUCDecoder.h"
#include "VELVectorOfUnicodeString.h"

#include <cstring>

using namespace VEL::internal;

namespace {

constexpr unsigned int Space = ' ';

Block BlockOf(const QORUnicodeString& s) {
    return StringAccess::BlockOf(s);
}

template <class Change>
QORUnicodeString& Apply(QORUnicodeString& s, const Change& change) {
    return StringAccess::Apply(s, change);
}

QORUnicodeString StringOn(Block block) {
    return StringAccess::Make<QORUnicodeString>(block);
}

} // namespace

QORUnicodeString::QORUnicodeString(const QORUnicodeChar& c, unsigned long n) : _text(EmptyHandle()) {
    const unsigned int code = StringAccess::CodeOf(c);
    if (code == 0) {
        return;
    }
    unsigned short units[2];
    const int count = static_cast<int>(VEL::UCS::internal::WriteUTF16(code, units) - units);
    StringAccess::SetBlock(*this, RepeatUnits<true>(units, count, n));
}

QORUnicodeChar QORUnicodeString::operator[](unsigned long i) const {
    QORUnicodeChar character;
    const UTF16Range text = UTF16Of(BlockOf(*this));
    if (i < static_cast<unsigned long>(text.length)) {
        const unsigned short* next = text.text + i;
        character.BuildFromUCChar32(VEL::UCS::internal::_DecodeUTF16Fast(next, text.text + text.length));
    }
    return character;
}

QORUnicodeString& QORUnicodeString::Resize(int n, const QORUnicodeChar& fill, int truncate) {
    if (n < 1) {
        Reset();
        return *this;
    }
    return Apply(*this, [&](Block block) { return ResizeWide(block, n, StringAccess::CodeOf(fill), truncate != 0); });
}

QORUnicodeString& QORUnicodeString::Resize(int n) {
    if (n < 1) {
        Reset();
        return *this;
    }
    return Apply(*this, [&](Block block) { return ResizeWide(block, n, Space, true); });
}

QORUnicodeString& QORUnicodeString::_AppendText(const QORUnicodeString& s) {
    return AppendString(*this, s);
}

QORUnicodeString& QORUnicodeString::operator+=(const QORUnicodeChar& c) {
    return Apply(*this, [code = StringAccess::CodeOf(c)](Block block) { return AppendCharacter(block, code); });
}

QORUnicodeString QORUnicodeString::operator+(const QORUnicodeString& s) const {
    QORUnicodeString result(*this);
    result.Append(s);
    return result;
}

QORUnicodeString QORUnicodeString::operator+(const char* s) const {
    return *this + QORUnicodeString(s);
}

QORUnicodeString operator+(const char* a, const QORUnicodeString& b) {
    QORUnicodeString result(a);
    result.Append(b);
    return result;
}

QORUnicodeString& QORUnicodeString::ReplaceSubString(int pos, int count, const QORUnicodeString& s, int newCount) {
    if (newCount < 0) {
        return *this;
    }
    return Apply(*this, [&](Block block) { return ReplaceRange(block, pos, count, BlockOf(s), newCount); });
}

QORUnicodeString& QORUnicodeString::ReplaceSubString(int pos, int count, const QORUnicodeString& s) {
    return Apply(*this, [&](Block block) { return ReplaceRange(block, pos, count, BlockOf(s)); });
}

int QORUnicodeString::ReplaceSubString(const QORUnicodeString& what, const QORUnicodeString& with) {
    const int place = FindPosition(what, 0);
    if (place >= 0) {
        ReplaceSubString(place, what.GetLengthInChar(), with);
    }
    return place;
}

QORUnicodeString& QORUnicodeString::ReplaceAll(const QORUnicodeString& what, const QORUnicodeString& with) {
    return Apply(*this, [&](Block block) { return ReplaceAllText(block, BlockOf(what), BlockOf(with), false); });
}

QORUnicodeString& QORUnicodeString::Remove(int pos, int count) {
    return Apply(*this, [&](Block block) { return ReplaceRange(block, pos, count, nullptr); });
}

QORUnicodeString& QORUnicodeString::Insert(int pos, const QORUnicodeString& s) {
    return Apply(*this, [&](Block block) { return ReplaceRange(block, pos, 0, BlockOf(s)); });
}

QORUnicodeString QORUnicodeString::SubString(int start, int count) const {
    const UTF16Range text = UTF16Of(BlockOf(*this));
    if (start < 0 || count < 1 || count > text.length - start) {
        return {};
    }
    return StringOn(CutText(text, start, count));
}

QORUnicodeString QORUnicodeString::Strip(QORStripMode mode, const QORUnicodeChar& c) const {
    const Block block = BlockOf(*this);
    return block != nullptr ? StringOn(StripText(block, mode, StringAccess::CodeOf(c))) : *this;
}

QORUnicodeString QORUnicodeString::Strip(QORStripMode mode) const {
    const Block block = BlockOf(*this);
    return block != nullptr ? StringOn(StripText(block, mode, Space)) : *this;
}

QORUnicodeString& QORUnicodeString::ToUpper() {
    return Apply(*this, [](Block block) { return ChangeCase(block, LetterCase::Upper); });
}

QORUnicodeString& QORUnicodeString::ToLower() {
    return Apply(*this, [](Block block) { return ChangeCase(block, LetterCase::Lower); });
}

int QORUnicodeString::SearchSubString(const QORUnicodeString& what, int start, QORSearchMode mode) const {
    return mode == QORSearchModeForward ? SearchForward(BlockOf(*this), BlockOf(what), start)
                                        : SearchBackward(BlockOf(*this), BlockOf(what), start);
}

int QORUnicodeString::FindPosition(const QORUnicodeString& what, int start) const {
    return SearchSubString(what, start, QORSearchModeForward);
}

int QORUnicodeString::Compare(const QORUnicodeString& other) const {
    return CompareByCase(BlockOf(*this), BlockOf(other));
}

int QORUnicodeString::SortCompare(const QORUnicodeString& other, int mode) const {
    constexpr int ByUnits = 1;
    return OrderAnyTexts(_text, other._text, (mode & ByUnits) != 0);
}

bool QORUnicodeString::operator==(const char* s) const {
    const Block block = BlockOf(*this);
    if (s == nullptr || *s == 0) {
        return IsEmpty();
    }
    if (block == nullptr) {
        return false;
    }
    return EqualsNarrow(block, s);
}

bool QORUnicodeString::operator!=(const char* s) const {
    return !(*this == s);
}

bool QORUnicodeString::WildMatch(const QORUnicodeString& pattern, const QORUnicodeChar& wild,
                                 const QORUnicodeChar& quote) const {
    return MatchWild(UTF16Of(BlockOf(*this)), UTF16Of(BlockOf(pattern)), StringAccess::CodeOf(wild),
                     StringAccess::CodeOf(quote));
}

int VELSysCompareUnicodeStrings(QORUnicodeString& a, QORUnicodeString& b) {
    if (a == b) {
        return 0;
    }
    return a < b ? -1 : 1;
}

int VELSysCmpUnicodeStrings(QORUnicodeString* a, QORUnicodeString* b) {
    if (a == nullptr || b == nullptr) {
        return a == b ? 0 : 1;
    }
    return VELSysCompareUnicodeStrings(*a, *b);
}

void VEL::Split(const QORUnicodeString& s, const QORUnicodeString& separator, VELVectorOfUnicodeString& out) {
    SplitText(s, separator, out);
}

bool VEL::IsSubStringAt(const QORUnicodeString& s, int pos, const QORUnicodeString& what) {
    return s.SubString(pos, what.GetLengthInChar()) == what;
}

int VEL::StrCollate(const QORUnicodeString& a, const QORUnicodeString& b) {
    if (BlockOf(a) == nullptr) {
        return -1;
    }
    if (BlockOf(b) == nullptr) {
        return 1;
    }
    return std::strcoll(a.ConvertToChar(), b.ConvertToChar());
}
