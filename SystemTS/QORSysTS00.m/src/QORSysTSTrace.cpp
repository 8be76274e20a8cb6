#include "QORSysTSTrace.h"

#include "VELSysStatus.h"

#include <cstdint>

static_assert(sizeof(QORSysTSTrace) == sizeof(void*));

namespace {

/// A code that has no name.
const char* Number(int code) {
    static char s_text[32];
    const auto bits = static_cast<std::uintptr_t>(static_cast<unsigned int>(code));
    std::snprintf(s_text, sizeof s_text, "HR_%-p", reinterpret_cast<void*>(bits));
    return s_text;
}

} // namespace

QORSysTSTrace::QORSysTSTrace(const char* name) : _reference(QORSysTSRefTrace::ObtainRef(name)) {}

QORSysTSTrace::~QORSysTSTrace() {
    if (_reference != nullptr) {
        _reference->Release();
    }
}

bool QORSysTSTrace::IsActive() const {
    return _reference != nullptr && _reference->IsActive();
}

template <class Value>
QORSysTSTrace& QORSysTSTrace::_Forward(const Value& value) {
    if (_reference != nullptr) {
        *_reference << value;
    }
    return *this;
}

QORSysTSTrace& QORSysTSTrace::operator<<(const QORUnicodeString& text) {
    return _Forward(text);
}

QORSysTSTrace& QORSysTSTrace::operator<<(const char* text) {
    return _Forward(text);
}

QORSysTSTrace& QORSysTSTrace::operator<<(int value) {
    return _Forward(value);
}

QORSysTSTrace& QORSysTSTrace::operator<<(unsigned int value) {
    return _Forward(value);
}

QORSysTSTrace& QORSysTSTrace::operator<<(long value) {
    return _Forward(value);
}

QORSysTSTrace& QORSysTSTrace::operator<<(unsigned long value) {
    return _Forward(value);
}

QORSysTSTrace& QORSysTSTrace::operator<<(double value) {
    return _Forward(value);
}

QORSysTSTrace& QORSysTSTrace::operator<<(float value) {
    return _Forward(value);
}

QORSysTSTrace& QORSysTSTrace::operator<<(QORSysTSTrcControl control) {
    return _Forward(control);
}

int QORSysTSTrace::Flush() {
    return _reference != nullptr ? _reference->Flush() : 0;
}

const char* QORSysTSTrace::HRV(int code) {
    switch (code) {
    case VEL::StatusOk:
        return "S_OK";
    case VEL::StatusNote:
        return "S_FALSE";
    case VEL::StatusFailure:
        return "E_FAIL";
    case VEL::StatusUnexpected:
        return "E_UNEXPECTED";
    case VEL::StatusNoInterface:
        return "E_NOINTERFACE";
    case VEL::StatusNotImplemented:
        return "E_NOTIMPL";
    default:
        return Number(code);
    }
}
