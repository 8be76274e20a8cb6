#include "QORChar.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <type_traits>

TEST(QORChar, HoldsAByte) {
    EXPECT_EQ(static_cast<char>(QORChar()), 0);
    const QORChar c('x');
    EXPECT_EQ(static_cast<char>(c), 'x');
    const QORChar copy(c);
    EXPECT_EQ(static_cast<char>(copy), 'x');
    QORChar other;
    other = c;
    EXPECT_EQ(static_cast<char>(other), 'x');
    EXPECT_EQ(&(other = 'y'), &other);
    EXPECT_EQ(static_cast<char>(other), 'y');
    EXPECT_EQ(static_cast<char>(QORChar('\xE9')), '\xE9');
}

TEST(QORChar, ComparesBytesAsSignedCharacters) {
    const QORChar negative('\xE9');
    const QORChar a('a');
    const QORChar b('b');
    EXPECT_TRUE(negative < a);
    EXPECT_TRUE(negative <= a);
    EXPECT_FALSE(negative > a);
    EXPECT_FALSE(negative >= a);
    EXPECT_TRUE(b > a);
    EXPECT_TRUE(b >= a);
    EXPECT_FALSE(b < a);
    EXPECT_FALSE(b <= a);
    EXPECT_TRUE(a == QORChar('a'));
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    EXPECT_FALSE(a != QORChar('a'));
    EXPECT_TRUE(a <= QORChar('a'));
    EXPECT_TRUE(a >= QORChar('a'));
    EXPECT_FALSE(a < QORChar('a'));
    EXPECT_FALSE(a > QORChar('a'));
}

TEST(QORChar, IsInsertedAsOneByte) {
    std::ostringstream out;
    EXPECT_EQ(&(out << QORChar('a') << QORChar('\0') << QORChar('\xFF')), &out);
    EXPECT_EQ(out.str(), std::string("a\0\xFF", 3));
}

namespace {

class CharWithMore : public QORChar {
public:
    virtual void More() {}
};

} // namespace

TEST(QORChar, HasNothingButADestructorInItsTable) {
    // The destructor takes the first two places; a pointer to a virtual member holds its place in bytes, plus 1.
    void (CharWithMore::*const more)() = &CharWithMore::More;
    unsigned long place = 0;
    std::memcpy(&place, &more, sizeof place);
    EXPECT_EQ(place, 2 * sizeof(void*) + 1);
    static_assert(std::has_virtual_destructor_v<QORChar>);
    static_assert(sizeof(QORChar) == 16);
    const QORChar c('q');
    EXPECT_EQ(reinterpret_cast<const char*>(&c)[sizeof(void*)], 'q');
}
