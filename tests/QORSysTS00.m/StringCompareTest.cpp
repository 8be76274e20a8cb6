/// @file
/// Equality, orderings and comparison of strings, in all pairs of representations.

#include "StringStates.h"
#include "TestLocales.h"

#include <cstring>
#include <cwctype>
#include <random>
#include <vector>

namespace {

using namespace StringStates;

int Sign(long value) {
    return (value > 0) - (value < 0);
}

/// Texts that are near each other, with bytes and units that order differently.
const std::vector<std::u16string>& ListedTexts() {
    static const std::vector<std::u16string> texts = {
        u"",
        u"a",
        u"A",
        u"abc",
        u"ABC",
        u"aBc",
        u"abd",
        u"abcd",
        u"ab",
        u"b",
        u"[",
        u"_",
        std::u16string(u"a\0b", 3),
        std::u16string(u"a\0c", 3),
        std::u16string(u"a\0", 2),
        std::u16string(1, u'\0'),
        u"a\u007f",
        u"a\u0080",
        u"a\u00e9",
        u"a\u00c9",
        u"\u00e9",
        u"\u00ff",
        u"\u0100",
        u"\u20ac",
        u"\ud7ff",
        u"\ue000",
        u"\uffee",
        u"\U00010000",
        u"\U0001F600",
        u"\U00010400",
        u"\U00010428",
        u"the same text but for the last letter, long enough for vectors: x",
        u"the same text but for the last letter, long enough for vectors: y",
        u"THE SAME TEXT BUT FOR THE LAST LETTER, LONG ENOUGH FOR VECTORS: X",
    };
    return texts;
}

/// The order of two texts up to the first zero unit, and the difference there.
int UnitOrder(const std::u16string& a, const std::u16string& b) {
    for (std::size_t i = 0;; ++i) {
        const int x = i < a.size() ? a[i] : 0;
        const int y = i < b.size() ? b[i] : 0;
        if (x != y || x == 0) {
            return x - y;
        }
    }
}

int ByteOrder(const std::u16string& a, const std::u16string& b) {
    return Sign(std::strcmp(NarrowForm(a).c_str(), NarrowForm(b).c_str()));
}

/// The C locale knows the case of ASCII alone.
int CaseOrder(std::u16string a, std::u16string b) {
    if (a == b) {
        return 2;
    }
    for (std::u16string* text : {&a, &b}) {
        for (char16_t& unit : *text) {
            unit = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
        }
    }
    return a == b ? 1 : 0;
}

/// Units are compared with ASCII bytes; from the first other byte on, bytes with bytes.
bool EqualsBytes(const std::u16string& text, bool isWide, const std::string& bytes) {
    const std::string narrow = NarrowForm(text);
    if (!isWide) {
        return std::strcmp(narrow.c_str(), bytes.c_str()) == 0;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (static_cast<unsigned char>(bytes[i]) >= 0x80) {
            return std::strcmp(narrow.c_str() + i, bytes.c_str() + i) == 0;
        }
        if (i >= text.size() || text[i] != static_cast<unsigned char>(bytes[i])) {
            return false;
        }
    }
    return bytes.size() >= text.size() || text[bytes.size()] == 0;
}

void ExpectOperators(const QORUnicodeString& a, const QORUnicodeString& b, int order) {
    EXPECT_EQ(a < b, order < 0);
    EXPECT_EQ(a <= b, order <= 0);
    EXPECT_EQ(a > b, order > 0);
    EXPECT_EQ(a >= b, order >= 0);
}

void ExpectCompared(const std::u16string& left, bool isLeftWide, const std::u16string& right, bool isRightWide) {
    QORUnicodeString a = StringOf(left, isLeftWide);
    QORUnicodeString b = StringOf(right, isRightWide);
    EXPECT_EQ(a == b, left == right);
    EXPECT_EQ(a != b, left != right);
    EXPECT_EQ(a.Compare(b), CaseOrder(left, right));
    const bool areNarrow = !isLeftWide && !isRightWide;
    const int units = UnitOrder(left, right);
    const int order = areNarrow ? ByteOrder(left, right) : Sign(units);
    EXPECT_EQ(Sign(a.SortCompare(b)), order);
    EXPECT_EQ(Sign(a.SortCompare(b, 0)), order);
    EXPECT_EQ(a.SortCompare(b, 1), units);
    EXPECT_EQ(a.SortCompare(b, 3), units);
    EXPECT_EQ(Sign(a.SortCompare(b, 2)), order) << "bit value 1 alone counts";
    if (!areNarrow) {
        EXPECT_EQ(a.SortCompare(b), units);
    }
    ExpectOperators(a, b, order);
    EXPECT_EQ(VELSysCompareUnicodeStrings(a, b), left == right ? 0 : order < 0 ? -1 : 1);
    EXPECT_EQ(VELSysCmpUnicodeStrings(&a, &b), left == right ? 0 : order < 0 ? -1 : 1);
    EXPECT_EQ(TextOf(a), left);
    EXPECT_EQ(TextOf(b), right);
}

} // namespace

class Comparison : public StringEnvironment::InBoth {};

TEST_P(Comparison, OfAllPairsInAllRepresentations) {
    for (const std::u16string& left : ListedTexts()) {
        for (const std::u16string& right : ListedTexts()) {
            for (const int wide : {0, 1, 2, 3}) {
                const bool isLeftWide = (wide & 1) != 0 || !FitsNarrow(left);
                const bool isRightWide = (wide & 2) != 0 || !FitsNarrow(right);
                SCOPED_TRACE(testing::Message() << UTF8Of(left) << isLeftWide << " " << UTF8Of(right) << isRightWide);
                ExpectCompared(left, isLeftWide, right, isRightWide);
            }
        }
    }
    ExpectTheEmptyBlockIntact();
}

TEST_P(Comparison, FindsADifferenceAtEachPositionOfEachLength) {
    for (std::size_t length = 1; length <= 100; ++length) {
        std::u16string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += static_cast<char16_t>(u'a' + i % 26);
        }
        for (const int wide : {0, 1, 2, 3}) {
            const QORUnicodeString a = StringOf(text, (wide & 1) != 0);
            const QORUnicodeString same = StringOf(text, (wide & 2) != 0);
            ASSERT_TRUE(a == same);
            ASSERT_EQ(a.Compare(same), 2);
            ASSERT_EQ(a.SortCompare(same), 0);
            for (std::size_t pos = 0; pos < length; ++pos) {
                std::u16string other = text;
                other[pos] = static_cast<char16_t>(text[pos] - 0x20);
                const QORUnicodeString b = StringOf(other, (wide & 2) != 0);
                ASSERT_TRUE(a != b) << length << " at " << pos;
                ASSERT_EQ(a.Compare(b), 1) << length << " at " << pos;
                ASSERT_EQ(b.Compare(a), 1) << length << " at " << pos;
                ASSERT_GT(a.SortCompare(b), 0) << length << " at " << pos;
                ASSERT_LT(b.SortCompare(a), 0) << length << " at " << pos;
                other[pos] = u'!';
                const QORUnicodeString c = StringOf(other, (wide & 2) != 0);
                ASSERT_EQ(a.Compare(c), 0) << length << " at " << pos;
                ASSERT_EQ(c.Compare(a), 0) << length << " at " << pos;
                ASSERT_FALSE(a == c);
            }
        }
    }
}

TEST_P(Comparison, OfATextWithItsBeginning) {
    for (std::size_t length = 1; length <= 100; ++length) {
        const std::u16string text(length, u'q');
        for (const int wide : {0, 1, 2, 3}) {
            const QORUnicodeString a = StringOf(text, (wide & 1) != 0);
            const QORUnicodeString b = StringOf(text.substr(1), (wide & 2) != 0);
            ASSERT_FALSE(a == b);
            ASSERT_EQ(a.Compare(b), 0);
            ASSERT_EQ(b.Compare(a), 0);
            ASSERT_GT(a.SortCompare(b), 0);
            ASSERT_LT(b.SortCompare(a), 0);
        }
    }
}

TEST_P(Comparison, WithTheStringItselfAndAnotherHandle) {
    for (const std::u16string& text : ListedTexts()) {
        QORUnicodeString s = WideString(text);
        QORUnicodeString copy(s);
        for (QORUnicodeString* other : {&s, &copy}) {
            EXPECT_TRUE(s == *other);
            EXPECT_FALSE(s != *other);
            EXPECT_EQ(s.Compare(*other), 2);
            EXPECT_EQ(s.SortCompare(*other), 0);
            ExpectOperators(s, *other, 0);
            EXPECT_EQ(VELSysCompareUnicodeStrings(s, *other), 0);
            EXPECT_EQ(VEL::StrCollate(s, *other), 0);
        }
    }
}

TEST_P(Comparison, OfStringsWithoutText) {
    const QORUnicodeString nothings[] = {QORUnicodeString(), BytesString(""), WideString(u"")};
    const QORUnicodeString text("a");
    for (const QORUnicodeString& a : nothings) {
        for (const QORUnicodeString& b : nothings) {
            EXPECT_TRUE(a == b);
            EXPECT_EQ(a.Compare(b), 2);
            EXPECT_EQ(a.SortCompare(b), 0);
            ExpectOperators(a, b, 0);
        }
        EXPECT_FALSE(a == text);
        EXPECT_EQ(a.Compare(text), 0);
        EXPECT_EQ(text.Compare(a), 0);
        EXPECT_LT(a.SortCompare(text), 0);
        EXPECT_GT(text.SortCompare(a), 0);
    }
    ExpectTheEmptyBlockIntact();
}

TEST_P(Comparison, WithNullHandles) {
    auto null = NullString<QORUnicodeString>();
    auto another = NullString<QORUnicodeString>();
    EXPECT_TRUE(null == another);
    EXPECT_TRUE(null == null);
    EXPECT_EQ(null.Compare(another), 2);
    EXPECT_EQ(null.SortCompare(another), -1);
    EXPECT_EQ(null.SortCompare(null), -1);
    ExpectOperators(null, another, -1);
    EXPECT_EQ(VEL::StrCollate(null, another), -1);
    EXPECT_EQ(VELSysCompareUnicodeStrings(null, another), 0);
    for (QORUnicodeString s :
         {QORUnicodeString(), BytesString(""), WideString(u""), QORUnicodeString("a"), WideString(u"a")}) {
        SCOPED_TRACE(testing::Message() << VEL::GetMainRepEncoding(s) << s.IsEmpty());
        EXPECT_FALSE(null == s) << "a null handle on the left is different";
        EXPECT_TRUE(null != s);
        EXPECT_EQ(null.Compare(s), 0);
        EXPECT_EQ(s.Compare(null), 0);
        EXPECT_EQ(null.SortCompare(s), -1);
        EXPECT_EQ(null.SortCompare(s, 1), -1);
        EXPECT_EQ(s.SortCompare(null), 1);
        EXPECT_EQ(s.SortCompare(null, 1), 1);
        ExpectOperators(null, s, -1);
        ExpectOperators(s, null, 1);
        EXPECT_EQ(VEL::StrCollate(null, s), -1);
        EXPECT_EQ(VEL::StrCollate(s, null), 1);
        EXPECT_EQ(VELSysCompareUnicodeStrings(null, s), -1);
        EXPECT_EQ(VELSysCmpUnicodeStrings(&null, &s), -1);
        if (!s.IsEmpty()) {
            EXPECT_FALSE(s == null);
            EXPECT_EQ(VELSysCompareUnicodeStrings(s, null), 1);
        }
    }
}

TEST_P(Comparison, OfPointersThatAreNull) {
    QORUnicodeString s("a");
    EXPECT_EQ(VELSysCmpUnicodeStrings(nullptr, nullptr), 0);
    EXPECT_EQ(VELSysCmpUnicodeStrings(nullptr, &s), 1);
    EXPECT_EQ(VELSysCmpUnicodeStrings(&s, nullptr), 1);
}

TEST_P(Comparison, ChangesNothing) {
    for (const State state : AllStates) {
        Subject a(state, u"abc");
        for (const State otherState : AllStates) {
            Subject b(otherState, u"abd");
            (void)(a.s == b.s);
            (void)(a.s < b.s);
            (void)a.s.Compare(b.s);
            (void)a.s.SortCompare(b.s, 1);
            (void)(a.s == "abc");
            (void)VEL::StrCollate(a.s, b.s);
            (void)VELSysCompareUnicodeStrings(a.s, b.s);
            a.ExpectUnchanged();
            b.ExpectUnchanged();
        }
    }
}

// With narrow text.

TEST_P(Comparison, WithBytes) {
    for (const std::u16string& left : ListedTexts()) {
        for (const std::u16string& right : ListedTexts()) {
            if (!FitsNarrow(right) || right.find(u'\0') != std::u16string::npos) {
                continue;
            }
            const std::string bytes = NarrowForm(right);
            for (const bool isWide : {false, true}) {
                if (!isWide && !FitsNarrow(left)) {
                    continue;
                }
                SCOPED_TRACE(testing::Message() << UTF8Of(left) << isWide << " " << UTF8Of(right));
                const QORUnicodeString s = StringOf(left, isWide);
                if (!bytes.empty()) {
                    EXPECT_EQ(s == bytes.c_str(), EqualsBytes(left, isWide, bytes));
                    EXPECT_EQ(s != bytes.c_str(), !EqualsBytes(left, isWide, bytes));
                } else if (left.empty() || left[0] != 0) {
                    EXPECT_EQ(s == "", left.empty());
                    EXPECT_EQ(s != "", !left.empty());
                }
            }
        }
    }
}

TEST_P(Comparison, WithBytesThatDifferAtEachPosition) {
    for (std::size_t length = 1; length <= 100; ++length) {
        for (const char16_t letter : {u'q', u'\u00e9'}) {
            const std::u16string text(length, letter);
            const std::string bytes = NarrowForm(text);
            for (const bool isWide : {false, true}) {
                const QORUnicodeString s = StringOf(text, isWide);
                ASSERT_TRUE(s == bytes.c_str());
                ASSERT_FALSE(s == (bytes + "q").c_str());
                ASSERT_FALSE(s == bytes.substr(0, bytes.size() - 1).c_str());
                for (std::size_t pos = 0; pos < bytes.size(); ++pos) {
                    std::string other = bytes;
                    other[pos] = '!';
                    ASSERT_FALSE(s == other.c_str()) << length << " at " << pos;
                    ASSERT_TRUE(s != other.c_str()) << length << " at " << pos;
                }
            }
        }
    }
}

TEST_P(Comparison, NoBytesEqualAnEmptyString) {
    constexpr const char* NoBytes = nullptr;
    const QORUnicodeString nothings[] = {QORUnicodeString(), BytesString(""), WideString(u""),
                                         NullString<QORUnicodeString>()};
    for (const QORUnicodeString& nothing : nothings) {
        EXPECT_TRUE(nothing == NoBytes);
        EXPECT_FALSE(nothing != NoBytes);
        EXPECT_TRUE(nothing == "");
        EXPECT_FALSE(nothing != "");
        EXPECT_FALSE(nothing == "a");
        EXPECT_TRUE(nothing != "a");
        EXPECT_FALSE(nothing == "\xC3\xA9");
    }
    for (const bool isWide : {false, true}) {
        const QORUnicodeString s = StringOf(u"a", isWide);
        EXPECT_FALSE(s == NoBytes);
        EXPECT_TRUE(s != NoBytes);
        EXPECT_FALSE(s == "");
    }
    ExpectTheEmptyBlockIntact();
}

TEST_P(Comparison, WithBytesLooksAtWholeUnits) {
    EXPECT_FALSE(WideString(u"\u0161") == "a");
    EXPECT_FALSE(WideString(u"a\u0100") == "a");
    EXPECT_FALSE(WideString(u"\u6161") == "aa");
}

TEST_P(Comparison, WithTheStringsOwnBytes) {
    for (const bool isWide : {false, true}) {
        const QORUnicodeString s = StringOf(u"gr\u00fcn", isWide);
        EXPECT_TRUE(s == s.ConvertToChar());
        EXPECT_FALSE(s != s.ConvertToChar());
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, Comparison,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(CompareStated, Cases) {
    const QORUnicodeString lower("abc");
    EXPECT_EQ(QORUnicodeString("ABC").Compare(lower), 1);
    EXPECT_EQ(QORUnicodeString("abc").Compare(lower), 2);
    EXPECT_EQ(lower.Compare(QORUnicodeString("abd")), 0);
    EXPECT_EQ(QORUnicodeString().Compare(QORUnicodeString("a")), 0);
    EXPECT_EQ(QORUnicodeString().Compare(QORUnicodeString()), 2);
    EXPECT_TRUE(lower == WideString(u"abc"));
    EXPECT_EQ(lower.Compare(WideString(u"abc")), 2);
}

// Bytes order U+10000 behind U+E000, units the other way round.
TEST(SortCompareStated, NarrowStringsOrderByBytesAndOthersByUnits) {
    const std::u16string bmp = u"\ue000";
    const std::u16string pair = u"\U00010000";
    EXPECT_TRUE(NarrowString(bmp) < NarrowString(pair));
    EXPECT_TRUE(WideString(bmp) > WideString(pair));
    EXPECT_TRUE(NarrowString(bmp) > WideString(pair));
    EXPECT_TRUE(WideString(bmp) > NarrowString(pair));
    EXPECT_EQ(NarrowString(bmp).SortCompare(NarrowString(pair), 1), 0xE000 - 0xD800);
}

TEST(SortCompareStated, BytesAreUnsigned) {
    EXPECT_TRUE(BytesString("\x7f") < BytesString("\x80"));
    EXPECT_TRUE(BytesString("a") < BytesString("\xff"));
}

TEST(EqualityOfNarrowText, IsOfBytesAndWithWideTextOfUnits) {
    const QORUnicodeString overlong = BytesString("\xC1\xA1");
    const QORUnicodeString plain("a");
    EXPECT_FALSE(overlong == plain);
    EXPECT_TRUE(overlong == WideString(u"a"));
    EXPECT_TRUE(WideString(u"a") == overlong);
    EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(plain)) << "no view for narrow with narrow";
}

TEST(StrCollate, FollowsTheNarrowTexts) {
    EXPECT_LT(VEL::StrCollate(QORUnicodeString("abc"), WideString(u"abd")), 0);
    EXPECT_GT(VEL::StrCollate(WideString(u"b"), QORUnicodeString("a")), 0);
    EXPECT_EQ(VEL::StrCollate(WideString(u"gr\u00fcn"), NarrowString(u"gr\u00fcn")), 0);
    EXPECT_EQ(VEL::StrCollate(QORUnicodeString(), WideString(u"")), 0);
    EXPECT_LT(VEL::StrCollate(QORUnicodeString("B"), QORUnicodeString("a")), 0) << "the C locale orders by bytes";
}

// In this locale letters order whatever their case and accents, in bytes and units they don't.
TEST(StrCollate, FollowsTheLocaleInForceAndOrderingsDoNot) {
    TestLocales::UseLocale(TestLocales::English);
    const std::pair<const char16_t*, const char16_t*> pairs[] = {
        {u"a", u"B"}, {u"abc", u"ABD"}, {u"\u00e9", u"f"}, {u"cot\u00e9x", u"cotz"}};
    for (const auto& [first, second] : pairs) {
        for (const int wide : {0, 1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << UTF8Of(first) << " " << UTF8Of(second) << wide);
            QORUnicodeString a = StringOf(first, (wide & 1) != 0);
            QORUnicodeString b = StringOf(second, (wide & 2) != 0);
            const std::string x = UTF8Of(first);
            const std::string y = UTF8Of(second);
            ASSERT_LT(std::strcoll(x.c_str(), y.c_str()), 0);
            ASSERT_GT(std::strcmp(x.c_str(), y.c_str()), 0);
            EXPECT_EQ(VEL::StrCollate(a, b), std::strcoll(x.c_str(), y.c_str()));
            EXPECT_EQ(VEL::StrCollate(b, a), std::strcoll(y.c_str(), x.c_str()));
            ExpectOperators(a, b, 1);
            ExpectOperators(b, a, -1);
            EXPECT_GT(a.SortCompare(b), 0);
            EXPECT_GT(a.SortCompare(b, 1), 0);
            EXPECT_EQ(VELSysCompareUnicodeStrings(a, b), 1);
        }
    }
}

TEST(CompareNarrow, BuildsNoViews) {
    for (const char* other : {"abc", "ABC", "abd", "gr\u00fcn", "GR\u00fcN", "abcdefg", "\x80"}) {
        for (const char* text : {"abc", "gr\u00fcn"}) {
            const QORUnicodeString a(text);
            const QORUnicodeString b(other);
            a.Compare(b);
            EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(a)) << other;
            EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(b)) << other;
        }
    }
}

TEST(CompareNarrow, TakesAByteThatCantBeDecodedForAQuestionMark) {
    EXPECT_EQ(BytesString("a\x80").Compare(BytesString("A?")), 1);
    EXPECT_EQ(BytesString("A?b").Compare(BytesString("a\xFF"
                                                     "b")),
              1);
    EXPECT_EQ(BytesString("a\xE2\x82").Compare(BytesString("A??")), 1) << "one for each byte";
    EXPECT_EQ(BytesString("a\x80").Compare(BytesString("A!")), 0);
    EXPECT_EQ(BytesString("a\x80").Compare(BytesString("A")), 0);
}

namespace {

/// The code points of a wide text as a walk from its start meets them, in lower case or as they are.
std::vector<unsigned int> CodePointsOf(const std::u16string& text, bool inLowerCase) {
    std::vector<unsigned int> codes;
    const unsigned short* next = StringBlocks::Units(text.c_str());
    for (const unsigned short* const end = next + text.size(); next != end;) {
        const unsigned int code = VEL::UCS::internal::_DecodeUTF16Fast(next, end);
        const bool isUpper = code >= 'A' && code <= 'Z';
        codes.push_back(!inLowerCase   ? code
                        : code < 0x80u ? code + (isUpper ? 0x20 : 0)
                                       : static_cast<unsigned int>(std::towlower(code)));
    }
    return codes;
}

} // namespace

// Halves of pairs stand anywhere, so that what differs may be either half of a character.
TEST(CompareWide, GoesCharacterByCharacter) {
    TestLocales::UseLocale(TestLocales::English);
    constexpr char16_t Alphabet[] = {u'a', u'A', u'b', u'\u00e9', u'\u00c9', 0xD800, 0xD801, 0xDC00, 0xDC28};
    std::minstd_rand random(31);
    const auto anyUnit = [&] { return Alphabet[(random() >> 8) % std::size(Alphabet)]; };
    for (int round = 0; round < 40000; ++round) {
        std::u16string left;
        for (std::size_t length = (random() >> 8) % 24; length > 0; --length) {
            left += anyUnit();
        }
        std::u16string right = left;
        for (std::size_t changes = (random() >> 8) % 3; changes > 0 && !right.empty(); --changes) {
            right[(random() >> 8) % right.size()] = anyUnit();
        }
        if (round % 8 == 0) {
            right += anyUnit();
        }
        const int expected = left == right                                             ? 2
                             : CodePointsOf(left, true) != CodePointsOf(right, true)   ? 0
                             : CodePointsOf(left, false) != CodePointsOf(right, false) ? 1
                                                                                       : 2;
        ASSERT_EQ(WideString(left).Compare(WideString(right)), expected)
            << testing::PrintToString(left) << " " << testing::PrintToString(right);
    }
}
