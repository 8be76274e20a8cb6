#include "VELString.h"

#include "StringAccess.h"
#include "StringDebugFlags.h"

#include <algorithm>
#include <atomic>

using VEL::internal::StringAccess;
using Block = QORInterUnicodeString::Block;

namespace {

constexpr unsigned int NarrowIsUTF8 = 1;
/// The bits of the debugger's word that are ours.
constexpr unsigned int OwnDebugFlags = 1 | 2;
constexpr unsigned short LastASCII = 127;

unsigned int s_debugFlags = 0;

template <class String>
int MainRepEncodingOf(const String& s) {
    const Block block = StringAccess::BlockOf(s);
    if (block == nullptr) {
        return VEL::MainRepNone;
    }
    return block->IsWide() ? VEL::MainRepWide : VEL::MainRepNarrow;
}

template <class String>
void IsolateBlock(String& s) {
    const Block block = StringAccess::BlockOf(s);
    if (block == nullptr) {
        return;
    }
    StringAccess::SetBlock(s, block->IsWide()
                                  ? QORInterUnicodeString::_EnsureWide(block, block->_length, true, false)
                                  : QORInterUnicodeString::_EnsureNarrow(block, block->_length, true, false));
}

template <class String>
bool PackBlock(String& s) {
    const Block block = StringAccess::BlockOf(s);
    if (block == nullptr || !block->IsWide()) {
        return false;
    }
    const unsigned short* text = block->Wide();
    if (std::any_of(text, text + block->_length, [](unsigned short unit) { return unit > LastASCII; })) {
        return false;
    }
    // Through the multi-byte view, so that the text is what the environment's converter makes of it.
    StringAccess::SetBlock(s, QORInterUnicodeString::_ToNarrow(block, block->_length, true));
    return true;
}

template <class To, class From>
void ShareBlock(To& to, const From& from) {
    char* const text = StringAccess::Handle(from);
    if (StringAccess::Handle(to) == text) {
        return;
    }
    VEL::internal::AddHandle(text);
    VEL::internal::DropHandle(StringAccess::Handle(to));
    StringAccess::Handle(to) = text;
}

/// Not guarded against `to` and `from` being one string, deliberately: its text is lost.
template <class To, class From>
void MoveBlock(To& to, From& from) {
    VEL::internal::DropHandle(StringAccess::Handle(to));
    StringAccess::Handle(to) = StringAccess::Handle(from);
    StringAccess::Handle(from) = VEL::internal::EmptyHandle();
}

} // namespace

unsigned int* s_pQUSFlagsForDebugger = &s_debugFlags;

void VEL::internal::TellDebuggerOfCodePage(bool isUTF8) {
    const std::atomic_ref<unsigned int> flags(*s_pQUSFlagsForDebugger);
    unsigned int old = flags.load(std::memory_order_relaxed);
    while (!flags.compare_exchange_weak(old, (old & ~OwnDebugFlags) | (isUTF8 ? NarrowIsUTF8 : 0),
                                        std::memory_order_relaxed)) {
    }
}

int VEL::GetMainRepEncoding(QORUnicodeString const& s) {
    return MainRepEncodingOf(s);
}

int VEL::GetMainRepEncoding(QORString const& s) {
    return MainRepEncodingOf(s);
}

bool VEL::internal::IsSecondViewAvailable(QORUnicodeString const& s) {
    const Block block = StringAccess::BlockOf(s);
    return block != nullptr && block->_secondView.load(std::memory_order_relaxed) != nullptr;
}

void VEL::Isolate(QORUnicodeString& s) {
    IsolateBlock(s);
}

void VEL::Isolate(QORString& s) {
    IsolateBlock(s);
}

bool VEL::Pack(QORUnicodeString& s) {
    return PackBlock(s);
}

bool VEL::Pack(QORString& s) {
    return PackBlock(s);
}

void VEL::Copy(QORString& to, QORUnicodeString const& from) {
    ShareBlock(to, from);
}

void VEL::Copy(QORString& to, QORSysTSUnicodeString const& from) {
    ShareBlock(to, from);
}

void VEL::Copy(QORUnicodeString& to, QORString const& from) {
    ShareBlock(to, from);
}

void VEL::Copy(QORUnicodeString& to, QORSysTSUnicodeString const& from) {
    ShareBlock(to, from);
}

void VEL::Copy(QORSysTSUnicodeString& to, QORString const& from) {
    ShareBlock(to, from);
}

void VEL::Copy(QORSysTSUnicodeString& to, QORUnicodeString const& from) {
    ShareBlock(to, from);
}

void VEL::Move(QORString& to, QORString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORString& to, QORUnicodeString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORString& to, QORSysTSUnicodeString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORUnicodeString& to, QORString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORUnicodeString& to, QORUnicodeString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORUnicodeString& to, QORSysTSUnicodeString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORSysTSUnicodeString& to, QORString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORSysTSUnicodeString& to, QORUnicodeString& from) {
    MoveBlock(to, from);
}

void VEL::Move(QORSysTSUnicodeString& to, QORSysTSUnicodeString& from) {
    MoveBlock(to, from);
}

namespace {

/// An `n` of -1 means up to the zero unit.
QORUnicodeString FromUnits(const unsigned short* s, unsigned long n, int* err) {
    constexpr auto UpToZeroUnit = static_cast<unsigned long>(-1);
    QORUnicodeString result;
    if (n == UpToZeroUnit) {
        result.BuildFromUCChar(s);
    } else {
        result.BuildFromUTF16(s, n);
    }
    if (err != nullptr) {
        *err = 0;
    }
    return result;
}

} // namespace

QORUnicodeString VEL::QUSFrom(const char16_t* s, unsigned long n, int* err) {
    return FromUnits(reinterpret_cast<const unsigned short*>(s), n, err);
}

QORUnicodeString VEL::QUSFrom(const unsigned short* s, unsigned long n, int* err) {
    return FromUnits(s, n, err);
}

QORUnicodeString VEL::QUSFrom(const wchar_t* s, unsigned long n, int* err) {
    QORUnicodeString result;
    result.BuildFromWChar(s, n);
    if (err != nullptr) {
        *err = 0;
    }
    return result;
}
