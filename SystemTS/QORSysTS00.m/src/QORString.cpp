#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORString.h"

#include "ClassIdentity.h"
#include "NarrowCheck.h"
#include "StringAccess.h"
#include "StringEdit.h"
#include "StringStream.h"
#include "TextScan.h"
#include "VELDebugBreak.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <utility>

using namespace VEL::internal;

namespace {

Block BlockOf(const QORString& s) {
    return StringAccess::BlockOf(s);
}

/// The block of a string that is ready for an operation: never null, never wide.
Block Prepared(const QORString& s) {
    return StringAccess::Prepared(s);
}

TextRange<char> TextOf(const QORString& s) {
    const Block block = Prepared(s);
    return {block->Text(), block->_length};
}

QORString StringOn(Block block) {
    return StringAccess::Make<QORString>(block);
}

/// Stands `s` on what `change` makes of its block.
template <class Change>
QORString& Apply(QORString& s, const Change& change) {
    StringAccess::SetBlock(s, change(Prepared(s)));
    return s;
}

/// Keeps, through an operation, the wide block that it makes a narrow string leave: a caller's `const char*` may be
/// that of the block's view.
class WideBlockInUse {
public:
    explicit WideBlockInUse(const QORString& s) {
        const Block block = BlockOf(s);
        _text = block != nullptr && block->IsWide() ? block->Text() : nullptr;
        AddHandle(_text);
    }
    WideBlockInUse(const WideBlockInUse&) = delete;
    WideBlockInUse& operator=(const WideBlockInUse&) = delete;
    ~WideBlockInUse() { DropHandle(_text); }

private:
    char* _text;
};

QORString& AppendBytes(QORString& s, const char* text, int length) {
    return Apply(s, [=](Block block) { return AppendTexts<false>(block, {{text, length}}, false); });
}

template <class Number>
QORString& AppendNumber(QORString& s, const char* format, Number number) {
    char digits[24];
    return AppendBytes(s, digits, std::snprintf(digits, sizeof digits, format, number));
}

} // namespace

QORString::QORString(char* s) : _text(CheckedBlock(s)->Text()) {}

QORString::QORString(QORChar c, unsigned long n) : _text(EmptyHandle()) {
    const char byte = c;
    StringAccess::SetBlock(*this, RepeatUnits<false>(&byte, 1, n));
}

QORString::QORString(const QORString& s, unsigned long n) : _text(EmptyHandle()) {
    if (n == 1) {
        Prepared(s);
        *this = s;
        return;
    }
    const TextRange<char> text = TextOf(s);
    StringAccess::SetBlock(*this, RepeatUnits<false>(text.text, text.length, n));
}

QORString& QORString::operator=(const char* s) {
    if (_text == nullptr) {
        _ReportNullHandle();
    }
    const Block fresh = CheckedBlock(s);
    QORInterUnicodeString::_Release(BlockOf(*this));
    _text = fresh->Text();
    return *this;
}

void QORString::_ReportNullHandle() const {
    VELDebugBreak(1);
    _text = EmptyHandle();
}

/// Comes before each operation: a null handle is repaired, and a wide block left for a narrow one.
void QORString::_Prepare() const {
    _Repaired();
    const Block block = BlockOf(*this);
    if (block->IsWide()) {
        _text = NarrowBlockFrom(block)->Text();
        QORInterUnicodeString::_Release(block);
    }
}

bool QORString::Init() const {
    return _text != nullptr;
}

const void* QORString::ClassId() {
    static const ClassIdentity identity{};
    return &identity;
}

int QORString::GetLengthInChar() const {
    _Prepare();
    return BlockOf(*this)->_length;
}

int QORString::GetLengthInByte() const {
    return GetLengthInChar();
}

int QORString::length() const {
    return GetLengthInChar();
}

int QORString::Length() const {
    return GetLengthInChar();
}

bool QORString::IsEmpty() const {
    return GetLengthInChar() == 0;
}

const char* QORString::ConvertToChar() const {
    _Prepare();
    return _text;
}

unsigned int QORString::ComputeHashKey() const {
    _Prepare();
    const char* text = _text;
    auto left = static_cast<std::size_t>(BlockOf(*this)->_length);
    unsigned int hash = 0;
    for (; left >= sizeof hash; left -= sizeof hash, text += sizeof hash) {
        unsigned int word;
        std::memcpy(&word, text, sizeof word);
        hash ^= word;
    }
    unsigned int rest = 0;
    std::memcpy(&rest, text, left);
    return hash ^ rest;
}

unsigned int QORString::hash() const {
    return ComputeHashKey();
}

char* QORString::CastToCharPtr() {
    Prepared(*this);
    while (!BlockOf(*this)->IsAlone()) {
        *this = ConvertToChar();
    }
    // What the caller writes is a change of text.
    BlockOf(*this)->_MarkChanged();
    return _text;
}

char* QORString::getUnicodeString() {
    return CastToCharPtr();
}

char* QORString::getMBCSString() {
    return CastToCharPtr();
}

QORChar QORString::operator[](int i) const {
    const TextRange<char> text = TextOf(*this);
    return i >= 0 && i < text.length ? QORChar(text.text[i]) : QORChar();
}

int QORString::Compare(const char* s) const {
    const WideBlockInUse inUse(*this);
    const char* const text = ConvertToChar();
    return s != nullptr ? std::strcmp(text, s) : static_cast<signed char>(*text);
}

int QORString::Compare(const QORString& s) const {
    const char* const text = ConvertToChar();
    return std::strcmp(text, s.ConvertToChar());
}

int QORString::compare(const char* s) const {
    return Compare(s);
}

int QORString::compare(const QORString& s) const {
    return Compare(s);
}

int QORString::CompareByCase(const QORString& s) const {
    const TextRange<char> a = TextOf(*this);
    const TextRange<char> b = TextOf(s);
    if (a.length != b.length) {
        return 0;
    }
    if (std::memcmp(a.text, b.text, static_cast<std::size_t>(a.length)) == 0) {
        return 1;
    }
    const auto differsInCase = [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); };
    return std::equal(a.text, a.text + a.length, b.text, differsInCase) ? 2 : 0;
}

int QORString::equal(const QORString& s) const {
    return CompareByCase(s);
}

bool QORString::operator==(const char* s) const {
    return Compare(s) == 0;
}

bool QORString::operator!=(const char* s) const {
    return Compare(s) != 0;
}

bool QORString::operator<(const char* s) const {
    return Compare(s) < 0;
}

bool QORString::operator<=(const char* s) const {
    return Compare(s) <= 0;
}

bool QORString::operator>(const char* s) const {
    return Compare(s) > 0;
}

bool QORString::operator>=(const char* s) const {
    return Compare(s) >= 0;
}

bool QORString::operator==(const QORString& s) const {
    return Compare(s) == 0;
}

bool QORString::operator!=(const QORString& s) const {
    return Compare(s) != 0;
}

bool QORString::operator<(const QORString& s) const {
    return Compare(s) < 0;
}

bool QORString::operator<=(const QORString& s) const {
    return Compare(s) <= 0;
}

bool QORString::operator>(const QORString& s) const {
    return Compare(s) > 0;
}

bool QORString::operator>=(const QORString& s) const {
    return Compare(s) >= 0;
}

int QORString::FindPosition(const QORString& what, int start) const {
    const TextRange<char> text = TextOf(*this);
    const TextRange<char> wanted = TextOf(what);
    if (start < 0 || start > text.length || wanted.length > text.length - start) {
        return -1;
    }
    const std::ptrdiff_t place = FindFirst(text.text + start, text.length - start, wanted.text, wanted.length);
    return place == NotFound ? -1 : start + static_cast<int>(place);
}

int QORString::index(const QORString& what, int start) const {
    return FindPosition(what, start);
}

QORString QORString::SubString(unsigned long start, unsigned long count) const {
    const TextRange<char> text = TextOf(*this);
    const auto length = static_cast<unsigned long>(text.length);
    if (count == 0 || start > length || count > length - start) {
        return *this;
    }
    return StringOn(QORInterUnicodeString::_FromBytes(text.text + start, count));
}

QORString QORString::Strip(QORStripMode mode, QORChar c) const {
    const Block block = Prepared(*this);
    return block->_length == 0 ? *this : StringOn(StripBytes(block, mode, c));
}

QORString QORString::strip(char c) const {
    return Strip(QORStripModeLeading, c);
}

QORString& QORString::operator+=(const char* s) {
    const WideBlockInUse inUse(*this);
    Prepared(*this);
    if (s == nullptr || *s == 0) {
        return *this;
    }
    const std::size_t length = std::strlen(s);
    if (!PassesCheck(s, length)) {
        return *this;
    }
    // A length that no block can have counts as no memory.
    if (length > INT_MAX) {
        StringAccess::Reset(*this);
        return *this;
    }
    return AppendBytes(*this, s, static_cast<int>(length));
}

QORString& QORString::operator+=(const QORString& s) {
    const bool isOnEmptyBlock = Prepared(*this)->IsTheEmptyBlock();
    const TextRange<char> text = TextOf(s);
    return isOnEmptyBlock ? *this = s : AppendBytes(*this, text.text, text.length);
}

QORString& QORString::Append(const QORString& s) {
    return *this += s;
}

QORString& QORString::operator+=(QORChar const& c) {
    const char byte = c;
    return AppendBytes(*this, &byte, 1);
}

QORString& QORString::operator+=(int number) {
    return AppendNumber(*this, "%d", number);
}

QORString& QORString::operator+=(unsigned int number) {
    return AppendNumber(*this, "%u", number);
}

QORString& QORString::operator+=(long number) {
    return AppendNumber(*this, "%ld", number);
}

QORString& QORString::operator+=(unsigned long number) {
    return AppendNumber(*this, "%lu", number);
}

QORString& QORString::operator+=(long long number) {
    return AppendNumber(*this, "%lld", number);
}

QORString& QORString::operator+=(unsigned long long number) {
    return AppendNumber(*this, "%llu", number);
}

QORString QORString::operator+(const char* s) const {
    const WideBlockInUse inUse(*this);
    Prepared(*this);
    QORString result(*this);
    result += s;
    return result;
}

QORString QORString::operator+(const QORString& s) const {
    Prepared(*this);
    QORString result(*this);
    result += s;
    return result;
}

QORString operator+(const char* a, const QORString& b) {
    const WideBlockInUse inUse(b);
    Prepared(b);
    QORString result(a);
    result += b;
    return result;
}

QORString& QORString::Resize(int n, QORChar fill, int truncate) {
    return Apply(*this, [&](Block block) { return ResizeBytes(block, n, fill, truncate != 0); });
}

QORString& QORString::pad(int n, char fill, int truncate) {
    return Resize(n, fill, truncate);
}

QORString& QORString::ReplaceSubString(int pos, int count, const QORString& s) {
    return Apply(*this, [&](Block block) { return ReplaceBytes(block, pos, count, TextOf(s)); });
}

QORString& QORString::ReplaceSubString(int pos, int count, const QORString& s, int newCount) {
    Prepared(*this);
    Prepared(s);
    QORString with(s);
    with.Resize(newCount, ' ', 1);
    return ReplaceSubString(pos, count, with);
}

int QORString::ReplaceSubString(const QORString& what, const QORString& with) {
    const int place = FindPosition(what, 0);
    Prepared(with);
    if (place >= 0) {
        ReplaceSubString(place, what.Length(), with);
    }
    return place;
}

QORString& QORString::replace(int pos, int count, const QORString& s) {
    return ReplaceSubString(pos, count, s);
}

int QORString::replace(const QORString& what, const QORString& with) {
    return ReplaceSubString(what, with);
}

QORString& QORString::Remove(int pos, int count) {
    return ReplaceSubString(pos, count, QORString());
}

QORString& QORString::remove(int pos, int count) {
    return Remove(pos, count);
}

QORString& QORString::Insert(int pos, const QORString& s) {
    return ReplaceSubString(pos, 0, s);
}

QORString& QORString::insert(int pos, const QORString& s) {
    return Insert(pos, s);
}

QORString& QORString::ToUpper() {
    return Apply(*this, [](Block block) { return ChangeCase(block, LetterCase::Upper); });
}

QORString& QORString::ToLower() {
    return Apply(*this, [](Block block) { return ChangeCase(block, LetterCase::Lower); });
}

QORString& QORString::toUpper() {
    return ToUpper();
}

QORString& QORString::toLower() {
    return ToLower();
}

std::istream& QORString::ReadLine(std::istream& in, int skipWhite) {
    const StreamWithoutExceptions guard(in);
    QORString line;
    if (skipWhite == 0 || SkipWhite(in)) {
        ReadLineInPieces(in, [&](const char* piece) { line += piece; });
    }
    *this = std::move(line);
    return in;
}

std::ostream& operator<<(std::ostream& out, const QORString& s) {
    return out << s.ConvertToChar();
}

int QORSysUTF8Str(QORString* s, char* text) {
    if (s == nullptr || text == nullptr) {
        return VEL::StatusOk;
    }
    // All that is read of the text is read first: it may be the string's own.
    const std::size_t length = std::strlen(text);
    const Block fresh = QORInterUnicodeString::_FromBytes(text, length);
    StringAccess::Reset(*s);
    StringAccess::SetBlock(*s, fresh);
    return length != 0 ? VEL::StatusOk : VEL::StatusFailure;
}
