#define QORSYSTS_EMIT_STRING_MEMBERS
#include "QORChar.h"

#include <ostream>

namespace {

signed char ByteOf(const QORChar& c) {
    return static_cast<signed char>(static_cast<char>(c));
}

} // namespace

QORChar::~QORChar() = default;

bool operator==(const QORChar& a, const QORChar& b) {
    return ByteOf(a) == ByteOf(b);
}

bool operator!=(const QORChar& a, const QORChar& b) {
    return ByteOf(a) != ByteOf(b);
}

bool operator<(const QORChar& a, const QORChar& b) {
    return ByteOf(a) < ByteOf(b);
}

bool operator<=(const QORChar& a, const QORChar& b) {
    return ByteOf(a) <= ByteOf(b);
}

bool operator>(const QORChar& a, const QORChar& b) {
    return ByteOf(a) > ByteOf(b);
}

bool operator>=(const QORChar& a, const QORChar& b) {
    return ByteOf(a) >= ByteOf(b);
}

std::ostream& operator<<(std::ostream& out, const QORChar& c) {
    return out << static_cast<char>(c);
}
