#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORUnicodeString.h"

#include "ClassIdentity.h"
#include "StringAccess.h"
#include "StringText.h"

#include <climits>
#include <cstring>

using namespace VEL::internal;

namespace {

Block BlockOf(const QORUnicodeString& s) {
    return StringAccess::BlockOf(s);
}

/// The block to build on; a null handle counts as empty.
Block BlockToBuildOn(const QORUnicodeString& s) {
    const Block block = BlockOf(s);
    return block != nullptr ? block : QORInterUnicodeString::Empty();
}

/// Stands `s` on `block`. 1, or -1 when that is the empty block.
int Built(QORUnicodeString& s, Block block) {
    StringAccess::SetBlock(s, block);
    return block->IsTheEmptyBlock() ? -1 : 1;
}

/// The bytes of `s` up to its end or a zero byte; `n` is read as a signed 32-bit number.
std::size_t BoundedLength(const char* s, unsigned long n) {
    // Deliberate: whether there is anything to take is asked of the low 32 bits.
    return s == nullptr || static_cast<int>(n) < 1 ? 0 : strnlen(s, n);
}

} // namespace

QORUnicodeString::QORUnicodeString(const char* s)
    : _text(QORInterUnicodeString::_FromBytes(s, s != nullptr ? std::strlen(s) : 0)->Text()) {}

QORUnicodeString::QORUnicodeString(const char* s, unsigned long n)
    : _text(QORInterUnicodeString::_FromBytes(s, BoundedLength(s, n))->Text()) {}

QORUnicodeString::QORUnicodeString(const QORUnicodeString& s, unsigned long n) : _text(EmptyHandle()) {
    const Block source = BlockOf(s);
    if (source == nullptr || source->_length == 0 || n == 0 ||
        n > static_cast<unsigned long>(INT_MAX / source->_length)) {
        return;
    }
    const int length = source->_length * static_cast<int>(n);
    const std::size_t unit = source->IsWide() ? sizeof(unsigned short) : sizeof(char);
    const Block block =
        source->IsWide() ? QORInterUnicodeString::_NewWide(length) : QORInterUnicodeString::_NewNarrow(length);
    if (block->IsTheEmptyBlock()) {
        return;
    }
    const std::size_t piece = static_cast<std::size_t>(source->_length) * unit;
    for (unsigned long i = 0; i < n; ++i) {
        std::memcpy(block->Text() + i * piece, source->Text(), piece);
    }
    StringAccess::SetBlock(*this, block);
}

QORUnicodeString& QORUnicodeString::operator=(const char* s) {
    StringAccess::SetBlock(*this, QORInterUnicodeString::_SetBytes(BlockToBuildOn(*this), s, -1));
    return *this;
}

int QORUnicodeString::BuildFromUTF8(const char* s, unsigned long n) {
    StringAccess::SetBlock(*this, BlockFromUTF8(BlockToBuildOn(*this), s, n));
    return 0;
}

int QORUnicodeString::BuildFromUCChar(const unsigned short* s, int n) {
    return Built(*this, QORInterUnicodeString::_SetUnits(BlockToBuildOn(*this), s, n));
}

int QORUnicodeString::BuildFromUCChar(const unsigned short* s) {
    return BuildFromUCChar(s, CountUnits(s));
}

int QORUnicodeString::BuildFromUTF16(const unsigned short* s, unsigned long n) {
    // A length that no block can have counts as no memory.
    return BuildFromUCChar(s, n > INT_MAX ? 0 : static_cast<int>(n));
}

int QORUnicodeString::BuildFromWChar(const wchar_t* s) {
    return BuildFromWChar(s, static_cast<unsigned long>(-1));
}

int QORUnicodeString::BuildFromWChar(const wchar_t* s, unsigned long n) {
    return Built(*this, BlockFromWChar(BlockToBuildOn(*this), s, n));
}

const char* QORUnicodeString::ConvertToChar() const {
    return NarrowText(BlockOf(*this));
}

const char* QORUnicodeString::CastToCharPtr() const {
    return ConvertToChar();
}

const unsigned short* QORUnicodeString::ConvertToUCChar() const {
    return WideText(BlockOf(*this));
}

int QORUnicodeString::ConvertToUTF16(unsigned short* out, unsigned long* n) const {
    return CopyAsUTF16(BlockOf(*this), out, n);
}

int QORUnicodeString::ConvertToUTF8(char* out, unsigned long* n) const {
    return CopyAsUTF8(BlockOf(*this), out, n);
}

int QORUnicodeString::ConvertToWChar(wchar_t* out) const {
    return CopyAsWChar(BlockOf(*this), out);
}

int QORUnicodeString::GetLengthInChar() const {
    return WideLength(BlockOf(*this));
}

int QORUnicodeString::GetLengthInByte() const {
    return NarrowLength(BlockOf(*this));
}

unsigned int QORUnicodeString::ComputeHashKey() const {
    return HashOf(BlockOf(*this));
}

const void* QORUnicodeString::ClassId() {
    static const ClassIdentity identity{};
    return &identity;
}

void QORUnicodeString::Reset() {
    StringAccess::Reset(*this);
}
