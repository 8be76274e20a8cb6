#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORSysTSUnicodeString.h"

#include "StringAccess.h"
#include "StringText.h"
#include "VELSysStatus.h"

#include <cstring>

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

} // namespace

QORSysTSUnicodeString::QORSysTSUnicodeString(const char* s)
    : _text(QORInterUnicodeString::_FromBytes(s, s != nullptr ? std::strlen(s) : 0)->Text()) {}

QORSysTSUnicodeString::QORSysTSUnicodeString(const wchar_t* s)
    : _text(BlockFromWChar(QORInterUnicodeString::Empty(), s, UpToTerminator)->Text()) {}

QORSysTSUnicodeString::QORSysTSUnicodeString(const unsigned short* s, int n)
    : _text(QORInterUnicodeString::_SetUnits(QORInterUnicodeString::Empty(), s, n)->Text()) {}

QORSysTSUnicodeString& QORSysTSUnicodeString::operator=(const char* s) {
    const Block block = BlockOf(*this);
    if (block == nullptr) {
        return *this;
    }
    // Deliberate: null text does not release the block held before, so that a pointer into its text stays valid for
    // ever.
    StringAccess::SetBlock(
        *this, s != nullptr ? QORInterUnicodeString::_SetBytes(block, s, -1) : QORInterUnicodeString::Empty());
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
