#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORSysTSUnicodeString.h"

#include "NumberText.h"
#include "QORSysTSVectorOfUnicodeString.h"
#include "StringAccess.h"
#include "StringCompare.h"
#include "StringEdit.h"
#include "StringSplit.h"
#include "VELSysStatus.h"

#include <cstring>
#include <strings.h>

using namespace VEL::internal;

namespace {

constexpr auto UpToTerminator = static_cast<unsigned long>(-1);

Block BlockOf(const QORSysTSUnicodeString& s) {
    return StringAccess::BlockOf(s);
}

/// The block to build on; a null handle counts as empty.
Block BlockToBuildOn(const QORSysTSUnicodeString& s) {
    const Block block = BlockOf(s);
    return block != nullptr ? block : QORInterUnicodeString::Empty();
}

template <class Change>
QORSysTSUnicodeString& Apply(QORSysTSUnicodeString& s, const Change& change) {
    return StringAccess::Apply(s, change);
}

/// Deliberately the length of the main representation, in bytes for a narrow string, whatever units are cut then.
bool IsRange(Block block, int start, int end) {
    return block != nullptr && start >= 0 && start <= end && end <= block->_length;
}

/// The units from `start` up to `end`, which IsRange() admits; none when they are not within this encoding of the text.
template <class Unit>
TextRange<Unit> Part(const TextRange<Unit>& text, int start, int end) {
    return {text.text + start, end <= text.length ? end - start : 0};
}

/// Appends several texts at once, in the representation of the target.
template <bool IsWide>
Block AppendAll(Block block, Block a, Block b, Block c) {
    return AppendTexts<IsWide>(block, {RangeOf<IsWide>(a), RangeOf<IsWide>(b), RangeOf<IsWide>(c)}, false);
}

template <bool IsWide>
Block AppendPart(Block block, Block text, int start, int end) {
    return AppendTexts<IsWide>(block, {Part(RangeOf<IsWide>(text), start, end)}, true);
}

/// True when the units from `start` up to `end` can be replaced.
bool CanReplace(Block block, int start, int end) {
    return block != nullptr && start >= 0 && start <= end && end <= WideLength(block);
}

QORSysTSUnicodeString StringOn(Block block) {
    return StringAccess::Make<QORSysTSUnicodeString>(block);
}

} // namespace

QORSysTSUnicodeString::QORSysTSUnicodeString(const char* s)
    : _text(QORInterUnicodeString::_FromBytes(s, s != nullptr ? std::strlen(s) : 0)->Text()) {}

QORSysTSUnicodeString::QORSysTSUnicodeString(const wchar_t* s)
    : _text(BlockFromWChar(QORInterUnicodeString::Empty(), s, UpToTerminator)->Text()) {}

QORSysTSUnicodeString::QORSysTSUnicodeString(const unsigned short* s, int n)
    : _text(QORInterUnicodeString::_SetUnits(QORInterUnicodeString::Empty(), s, n)->Text()) {}

QORSysTSUnicodeString::QORSysTSUnicodeString(const QORSysTSUnicodeString& s, int start, int end)
    : QORSysTSUnicodeString(s.SubString(start, end)) {}

QORSysTSUnicodeString& QORSysTSUnicodeString::operator=(const char* s) {
    const Block block = BlockOf(*this);
    if (block == nullptr) {
        return *this;
    }
    // Deliberate: null text does not release the block held before, so that a pointer into its text stays valid for
    // ever.
    StringAccess::SetBlock(*this, s != nullptr ? QORInterUnicodeString::_SetBytes(block, s, -1)
                                               : QORInterUnicodeString::Empty());
    return *this;
}

QORSysTSUnicodeString& QORSysTSUnicodeString::operator=(const wchar_t* s) {
    StringAccess::SetBlock(*this, BlockFromWChar(BlockToBuildOn(*this), s, UpToTerminator));
    return *this;
}

int QORSysTSUnicodeString::BuildFromUCChar(const unsigned short* s, int n) {
    const Block block = QORInterUnicodeString::_SetUnits(BlockToBuildOn(*this), s, n);
    StringAccess::SetBlock(*this, block);
    return block->IsTheEmptyBlock() ? VEL::StatusFailure : VEL::StatusOk;
}

int QORSysTSUnicodeString::BuildFromUTF8(const char* s, unsigned long n) {
    StringAccess::SetBlock(*this, BlockFromUTF8(BlockToBuildOn(*this), s, n));
    return VEL::StatusOk;
}

int QORSysTSUnicodeString::BuildFromNum(int value, const char* format) {
    return BuildNumber(*this, value, format) > 0 ? VEL::StatusOk : VEL::StatusFailure;
}

int QORSysTSUnicodeString::ConvertToNum(int& value, const char* format) const {
    return ReadNumber(ConvertToChar(), &value, format) > 0 ? VEL::StatusOk : VEL::StatusFailure;
}

const char* QORSysTSUnicodeString::ConvertToChar() const {
    return NarrowText(BlockOf(*this));
}

const unsigned short* QORSysTSUnicodeString::ConvertToUCChar() const {
    return WideText(BlockOf(*this));
}

int QORSysTSUnicodeString::ConvertToUTF8(char* out, unsigned long* n) const {
    return CopyAsUTF8(BlockOf(*this), out, n);
}

int QORSysTSUnicodeString::GetLengthInChar() const {
    return WideLength(BlockOf(*this));
}

int QORSysTSUnicodeString::GetLengthInByte() const {
    return NarrowLength(BlockOf(*this));
}

const unsigned short* QORSysTSUnicodeString::GetBinDump(unsigned int& byteCount) const {
    const Block block = BlockOf(*this);
    const UTF16Range source = UTF16Of(block);
    byteCount = static_cast<unsigned int>(source.length) * sizeof(unsigned short);
    return block != nullptr ? source.text : nullptr;
}

unsigned int QORSysTSUnicodeString::HashFunc() const {
    return HashOf(BlockOf(*this));
}

QORSysTSUnicodeString& QORSysTSUnicodeString::_AppendText(const QORSysTSUnicodeString& s) {
    return AppendString(*this, s);
}

QORSysTSUnicodeString& QORSysTSUnicodeString::Append(const QORSysTSUnicodeString& a, const QORSysTSUnicodeString& b) {
    return Append(a, b, QORSysTSUnicodeString());
}

QORSysTSUnicodeString& QORSysTSUnicodeString::Append(const QORSysTSUnicodeString& a, const QORSysTSUnicodeString& b,
                                                     const QORSysTSUnicodeString& c) {
    return Apply(*this, [&](Block block) {
        return block->IsWide() ? AppendAll<true>(block, BlockOf(a), BlockOf(b), BlockOf(c))
                               : AppendAll<false>(block, BlockOf(a), BlockOf(b), BlockOf(c));
    });
}

QORSysTSUnicodeString& QORSysTSUnicodeString::Append(const QORSysTSUnicodeString& s, int start, int end) {
    const Block block = BlockOf(*this);
    if (block == nullptr) {
        return *this;
    }
    if (block->IsTheEmptyBlock()) {
        return *this = s.SubString(start, end);
    }
    const Block text = BlockOf(s);
    if (IsRange(text, start, end)) {
        StringAccess::SetBlock(*this, block->IsWide() ? AppendPart<true>(block, text, start, end)
                                                      : AppendPart<false>(block, text, start, end));
    }
    return *this;
}

int QORSysTSUnicodeString::Insert(int pos, const QORSysTSUnicodeString& s) {
    return ReplaceRange(pos, pos, s);
}

int QORSysTSUnicodeString::Insert(int pos, const QORSysTSUnicodeString& s, int start, int end) {
    const Block block = BlockOf(*this);
    if (block == nullptr || !IsRange(BlockOf(s), start, end) || start == end || pos < 0 || pos > block->_length) {
        return VEL::StatusFailure;
    }
    if (pos == block->_length) {
        Append(s, start, end);
        return BlockOf(*this)->IsTheEmptyBlock() ? VEL::StatusFailure : VEL::StatusOk;
    }
    // Deliberately done whatever becomes of it: in a narrow string `pos` may be beyond the last UTF-16 unit.
    const QORSysTSUnicodeString piece = s.SubString(start, end);
    Apply(*this, [&](Block own) { return VEL::internal::ReplaceRange(own, pos, 0, BlockOf(piece)); });
    return VEL::StatusOk;
}

int QORSysTSUnicodeString::ReplaceRange(int start, int end, const QORSysTSUnicodeString& s) {
    const Block text = BlockOf(s);
    if (text == nullptr || !CanReplace(BlockOf(*this), start, end)) {
        return VEL::StatusFailure;
    }
    Apply(*this, [=](Block block) { return VEL::internal::ReplaceRange(block, start, end - start, text); });
    return VEL::StatusOk;
}

int QORSysTSUnicodeString::ReplaceSubString(const QORSysTSUnicodeString& what, const QORSysTSUnicodeString& with,
                                            int start) {
    const int place = SearchSubString(what, start);
    if (place >= 0) {
        const int count = what.GetLengthInChar();
        Apply(*this, [&](Block block) { return VEL::internal::ReplaceRange(block, place, count, BlockOf(with)); });
    }
    return place;
}

QORSysTSUnicodeString& QORSysTSUnicodeString::ReplaceAll(const QORSysTSUnicodeString& what,
                                                         const QORSysTSUnicodeString& with) {
    return Apply(*this, [&](Block block) { return ReplaceAllText(block, BlockOf(what), BlockOf(with), true); });
}

QORSysTSUnicodeString QORSysTSUnicodeString::SubString(int start, int end) const {
    const Block block = BlockOf(*this);
    if (!IsRange(block, start, end)) {
        return {};
    }
    const UTF16Range part = Part(UTF16Of(block), start, end);
    return StringOn(CutText(part, 0, part.length));
}

int QORSysTSUnicodeString::SearchSubString(const QORSysTSUnicodeString& what, int start) const {
    return SearchForward(BlockOf(*this), BlockOf(what), start);
}

int QORSysTSUnicodeString::SearchSubStringBackward(const QORSysTSUnicodeString& what, int start) const {
    return SearchBackward(BlockOf(*this), BlockOf(what), start);
}

bool QORSysTSUnicodeString::IsSubStringAt(int pos, const QORSysTSUnicodeString& what) const {
    return IsTextAt(BlockOf(*this), pos, BlockOf(what));
}

void QORSysTSUnicodeString::Split(const QORSysTSUnicodeString& separator, QORSysTSVectorOfUnicodeString& out) const {
    SplitText(*this, separator, out);
}

QORSysTSUnicodeString& QORSysTSUnicodeString::ToUpper() {
    return Apply(*this, [](Block block) { return ChangeCase(block, LetterCase::Upper); });
}

QORSysTSUnicodeString& QORSysTSUnicodeString::ToLower() {
    return Apply(*this, [](Block block) { return ChangeCase(block, LetterCase::Lower); });
}

void QORSysTSUnicodeString::SetCapacity(int n) {
    Apply(*this, [n](Block block) {
        if (n < 1) {
            QORInterUnicodeString::_Release(block);
            return QORInterUnicodeString::Empty();
        }
        return block->IsWide() ? QORInterUnicodeString::_EnsureWide(block, n, true, false)
                               : QORInterUnicodeString::_EnsureNarrow(block, n, true, false);
    });
}

int QORSysTSUnicodeString::Compare(const QORSysTSUnicodeString& other, unsigned char ignoreCase) const {
    const char* const a = ConvertToChar();
    const char* const b = other.ConvertToChar();
    return ignoreCase != 0 ? strcasecmp(a, b) : std::strcmp(a, b);
}
