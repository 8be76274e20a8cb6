/// @file
/// Characters of strings one after the other, and text in a wanted encoding.

#include "HeapLog.h"
#include "StringStates.h"

#include <climits>
#include <gmock/gmock.h>
#include <memory>
#include <ostream>
#include <random>
#include <sstream>
#include <streambuf>

namespace {

using namespace StringStates;
using VEL::internal::OptimizedBuffer;
using VEL::internal::SType;
using VEL::UCS::internal::_GetStringAs;
using VEL::UCS::internal::StreamInsertUTF8;

constexpr std::size_t Room = 8;

const unsigned short* UnitsAt(const std::u16string& text) {
    return StringBlocks::Units(text.c_str());
}

/// One step in each of the three forms.
template <class Text, class Step>
void ExpectNext(const Text* text, const Step& next, unsigned int code, int taken) {
    unsigned int codePoint = 0xDEAD;
    EXPECT_EQ(next(codePoint, text), taken);
    EXPECT_EQ(codePoint, code);
    char bytes[Room];
    std::memset(bytes, '#', sizeof bytes);
    EXPECT_EQ(next(bytes, text), taken);
    const std::string utf8 = PlainUnicode::Encode(code);
    EXPECT_EQ(std::string(bytes, utf8.size() + 2), utf8 + '\0' + '#');
    unsigned short units[4] = {0x2323, 0x2323, 0x2323, 0x2323};
    EXPECT_EQ(next(units, text), taken);
    const std::u16string utf16 = UnitsOf(code);
    EXPECT_EQ(std::u16string(units, units + utf16.size() + 2), utf16 + u'\0' + u'\u2323');
}

const auto Next = [](auto&& out, const unsigned short* p) { return VEL::internal::_GetNext(out, p); };
const auto NextMbcs = [](auto&& out, const char* p) { return VEL::internal::_GetNextMbcs(out, p); };

std::u32string CodePointsOf(const std::u16string& text) {
    std::u32string codePoints;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t code = text[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size()) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00u);
        }
        codePoints += code;
    }
    return codePoints;
}

const std::u16string& LongText() {
    static const std::u16string text = u"a longer text with \u00e9 and \u00fc in it, beyond all inline storage";
    return text;
}

} // namespace

// Indexing.

class Index : public InAllStates {};

TEST_P(Index, GivesTheCodePointThatStartsThere) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        for (std::size_t i = 0; i < text.size(); ++i) {
            const std::u32string rest = CodePointsOf(text.substr(i));
            EXPECT_TRUE(subject.s[i] == Character(rest[0])) << i;
        }
        for (const unsigned long beyond : {text.size(), text.size() + 1, 1ul << 31, 1ul << 32, 1ul << 63, ~0ul}) {
            EXPECT_TRUE(subject.s[beyond] == QORUnicodeChar()) << beyond;
        }
        subject.ExpectUnchanged();
    }
}

INSTANTIATE_TEST_SUITE_P(States, Index, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(IndexStated, InTheMiddleOfAPairGivesTheLowSurrogate) {
    const QORUnicodeString s = WideString(u"\U0001F600x");
    EXPECT_TRUE(s[0] == Character(0x1F600));
    EXPECT_TRUE(s[1] == Character(0xDE00));
    EXPECT_TRUE(s[2] == QORUnicodeChar('x'));
}

TEST(IndexStated, AHighSurrogateIsJoinedWithWhateverFollows) {
    const QORUnicodeString s = WideString(std::u16string{char16_t(0xD800), u'A', char16_t(0xD800)});
    EXPECT_TRUE(s[0] == Character(0x2441));
    EXPECT_TRUE(s[2] == Character(0xD800)) << "nothing follows";
}

// Walking.

class Walk : public InAllStates {};

TEST_P(Walk, BeginsAndEndsInTheMainRepresentation) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text, false);
        const void* begin = nullptr;
        const void* end = nullptr;
        SType beginType{};
        SType endType{};
        VEL::internal::_GetIteratorBegin(subject.s, begin, beginType);
        VEL::internal::_GetIteratorEnd(subject.s, end, endType);
        EXPECT_EQ(beginType, IsWide(TheState()) ? VEL::internal::STypeWide : VEL::internal::STypeNarrow);
        EXPECT_EQ(endType, beginType);
        ASSERT_NE(begin, nullptr);
        if (IsWide(TheState())) {
            EXPECT_EQ(begin, subject.s.ConvertToUCChar());
            EXPECT_EQ(static_cast<const unsigned short*>(end) - static_cast<const unsigned short*>(begin),
                      static_cast<long>(text.size()));
        } else {
            EXPECT_EQ(begin, subject.s.ConvertToChar());
            EXPECT_EQ(static_cast<const char*>(end) - static_cast<const char*>(begin),
                      static_cast<long>(NarrowForm(text).size()));
        }
        if (!IsShared(TheState()) && TheState() != State::EmptyBlock) {
            EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(subject.s)) << "the other encoding is not needed";
        }
        subject.ExpectOthersUntouched();
    }
}

TEST_P(Walk, GoesThroughAllCodePoints) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const void* p = nullptr;
        const void* end = nullptr;
        SType type{};
        VEL::internal::_GetIteratorBegin(subject.s, p, type);
        VEL::internal::_GetIteratorEnd(subject.s, end, type);
        std::u32string codePoints;
        while (p != end) {
            unsigned int code = 0;
            if (type == VEL::internal::STypeWide) {
                const auto* const units = static_cast<const unsigned short*>(p);
                p = units + VEL::internal::_GetNext(code, units);
            } else {
                const auto* const bytes = static_cast<const char*>(p);
                p = bytes + VEL::internal::_GetNextMbcs(code, bytes);
            }
            codePoints += code;
        }
        EXPECT_EQ(codePoints, CodePointsOf(text));
    }
}

INSTANTIATE_TEST_SUITE_P(States, Walk, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NextOfUnits, TakesOneCharacter) {
    for (const unsigned int code :
         {0x41u, 0x7Fu, 0x80u, 0x7FFu, 0x800u, 0x20ACu, 0xD7FFu, 0xE000u, 0xFFFFu, 0x10000u, 0x1F600u, 0x10FFFFu}) {
        const std::u16string text = UnitsOf(code) + u"xyz";
        ExpectNext(UnitsAt(text), Next, code, code > 0xFFFF ? 2 : 1);
    }
    ExpectNext(UnitsAt(std::u16string(1, char16_t(0xDE00)) + u"x"), Next, 0xDE00, 1);
}

TEST(NextOfUnits, JoinsAHighSurrogateWithWhateverFollows) {
    const std::u16string text{char16_t(0xD800), u'A', u'x'};
    unsigned int code = 0;
    EXPECT_EQ(VEL::internal::_GetNext(code, UnitsAt(text)), 2);
    EXPECT_EQ(code, 0x2441u);
    char bytes[Room];
    EXPECT_EQ(VEL::internal::_GetNext(bytes, UnitsAt(text)), 2);
    EXPECT_STREQ(bytes, "\xE2\x91\x81");
}

TEST(NextOfUnits, AHighSurrogateAtTheEndStandsAlone) {
    const std::u16string text(1, char16_t(0xD83D));
    unsigned int code = 0;
    EXPECT_EQ(VEL::internal::_GetNext(code, UnitsAt(text)), 1);
    EXPECT_EQ(code, 0xD83Du);
    unsigned short units[4];
    EXPECT_EQ(VEL::internal::_GetNext(units, UnitsAt(text)), 1);
    EXPECT_EQ(units[0], 0xD83D);
    EXPECT_EQ(units[1], 0);
}

TEST(NextOfUTF8, CopiesOneCharacter) {
    for (const std::string character : {"A", "\x7f", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        for (const std::string rest : {"", "x", "xyz"}) {
            char out[Room];
            std::memset(out, '#', sizeof out);
            EXPECT_EQ(VEL::internal::_GetNext(out, (character + rest).c_str()), static_cast<int>(character.size()));
            EXPECT_EQ(std::string(out, character.size() + 2), character + '\0' + '#');
        }
    }
}

TEST(NextOfUTF8, LooksAtTheFirstByteAlone) {
    const std::pair<const char*, const char*> cases[] = {{"\x80xyz", "\x80"},   {"\xFFxyz", "\xFF"},
                                                         {"\xF8xyz", "\xF8"},   {"\xC3xyz", "\xC3x"},
                                                         {"\xE2xyz", "\xE2xy"}, {"\xF0xyz", "\xF0xyz"}};
    for (const auto& [text, character] : cases) {
        char out[Room];
        EXPECT_EQ(VEL::internal::_GetNext(out, text), static_cast<int>(std::strlen(character)));
        EXPECT_STREQ(out, character);
    }
}

TEST(NextOfUTF8, NeverGoesBeyondTheTerminator) {
    for (const char* text : {"\xC3", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98"}) {
        char out[Room];
        const std::size_t length = std::strlen(text);
        const std::unique_ptr<char[]> exact(new char[length + 1]);
        std::memcpy(exact.get(), text, length + 1);
        const int taken = VEL::internal::_GetNext(out, exact.get());
        EXPECT_GE(taken, 1);
        EXPECT_LE(taken, static_cast<int>(length));
        EXPECT_EQ(std::string(out), std::string(text, static_cast<std::size_t>(taken)));
    }
}

class NextOfNarrow : public StringEnvironment::InBoth {};

TEST_P(NextOfNarrow, TakesOneCharacter) {
    for (const unsigned int code : {0x41u, 0x7Fu, 0x80u, 0xE9u, 0xFFu, 0x7FFu, 0x20ACu, 0xFFFFu, 0x1F600u}) {
        const std::u16string character = UnitsOf(code);
        if (!FitsNarrow(character)) {
            continue;
        }
        for (const char16_t* rest : {u"", u"x", u"wxyz"}) {
            const std::string bytes = NarrowForm(character + rest);
            ExpectNext(bytes.c_str(), NextMbcs, code, static_cast<int>(NarrowForm(character).size()));
        }
    }
}

TEST_P(NextOfNarrow, DamagedTextIsWalkedToItsEnd) {
    std::minstd_rand random(5);
    for (int round = 0; round < 5000; ++round) {
        std::string bytes;
        for (std::size_t left = 1 + (random() >> 8) % 12; left > 0; --left) {
            bytes += static_cast<char>(0x70 + (random() >> 8) % 0x90);
        }
        const std::unique_ptr<char[]> exact(new char[bytes.size() + 1]);
        std::memcpy(exact.get(), bytes.c_str(), bytes.size() + 1);
        const char* const end = exact.get() + bytes.size();
        for (const char* p = exact.get(); p != end;) {
            unsigned int code = 0;
            char utf8[Room];
            unsigned short units[4];
            const int taken = VEL::internal::_GetNextMbcs(code, p);
            ASSERT_GE(taken, 1);
            ASSERT_LE(taken, end - p);
            ASSERT_EQ(VEL::internal::_GetNextMbcs(utf8, p), taken);
            ASSERT_LE(std::memchr(utf8, 0, 5) != nullptr ? std::strlen(utf8) : 99, 4u);
            ASSERT_EQ(VEL::internal::_GetNextMbcs(units, p), taken);
            p += taken;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, NextOfNarrow,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST_P(NextOfNarrow, TakesOneByteAtTheTerminator) {
    unsigned int code = 0xDEAD;
    EXPECT_EQ(VEL::internal::_GetNextMbcs(code, ""), 1);
    EXPECT_EQ(code, 0u);
    char bytes[Room] = "#######";
    EXPECT_EQ(VEL::internal::_GetNextMbcs(bytes, ""), 1);
    EXPECT_STREQ(bytes, "");
    unsigned short units[4] = {0x2323, 0x2323, 0x2323, 0x2323};
    EXPECT_EQ(VEL::internal::_GetNextMbcs(units, ""), 1);
    EXPECT_EQ(units[0], 0);
}

// Text in a wanted encoding.

class StringAs : public InAllStates {
protected:
    std::vector<std::u16string> Texts() const {
        std::vector<std::u16string> texts = TextsFor(TheState());
        if (HasText(TheState())) {
            texts.push_back(LongText());
            texts.push_back(std::u16string(7, u'\u00e9'));
            texts.push_back(std::u16string(8, u'\u00e9'));
        }
        return texts;
    }
};

TEST_P(StringAs, UTF8) {
    for (const std::u16string& text : Texts()) {
        for (const bool hasView : {false, true}) {
            Subject subject(TheState(), text, hasView);
            const std::string expected = UTF8Of(text);
            OptimizedBuffer<char, 32> buffer;
            const char* out = nullptr;
            unsigned int n = 77;
            _GetStringAs(out, n, subject.s, buffer);
            EXPECT_EQ(n, expected.size());
            if (TheState() == State::Null) {
                EXPECT_TRUE(out == nullptr || *out == 0);
                continue;
            }
            ASSERT_NE(out, nullptr);
            EXPECT_EQ(std::string(out, n + 1), std::string(expected.c_str(), expected.size() + 1));
            const bool isAtHand = IsUTF8Environment() && (!IsWide(TheState()) || hasView || IsShared(TheState()));
            if (HasText(TheState())) {
                EXPECT_EQ(out == buffer.Data(), !isAtHand);
            }
            if (isAtHand && HasText(TheState())) {
                EXPECT_EQ(out, subject.s.ConvertToChar());
            } else if (HasText(TheState())) {
                EXPECT_EQ(buffer.Capacity(), std::max<std::size_t>(32, 4 * text.size() + 1));
            }
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(StringAs, UTF8OfAWideStringBuildsNoView) {
    for (const std::u16string& text : Texts()) {
        if (TheState() != State::Wide) {
            return;
        }
        Subject subject(TheState(), text, false);
        OptimizedBuffer<char, 32> buffer;
        const char* out = nullptr;
        unsigned int n = 0;
        _GetStringAs(out, n, subject.s, buffer);
        EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(subject.s));
    }
}

TEST_P(StringAs, UTF16) {
    for (const std::u16string& text : Texts()) {
        Subject subject(TheState(), text);
        OptimizedBuffer<unsigned short, 16> buffer;
        const unsigned short* out = UnitsAt(u"old");
        unsigned int n = 77;
        _GetStringAs(out, n, subject.s, buffer);
        EXPECT_EQ(n, text.size());
        EXPECT_NE(out, buffer.Data());
        subject.ExpectUnchanged();
        if (HasText(TheState())) {
            EXPECT_EQ(out, subject.s.ConvertToUCChar());
        } else {
            EXPECT_TRUE(out == nullptr ? TheState() == State::Null : *out == 0);
        }
    }
}

TEST_P(StringAs, UTF32) {
    for (const std::u16string& text : Texts()) {
        for (const bool hasView : {false, true}) {
            Subject subject(TheState(), text, hasView);
            const std::u32string expected = CodePointsOf(text);
            OptimizedBuffer<unsigned int, 8> buffer;
            const unsigned int* out = nullptr;
            unsigned int n = 77;
            _GetStringAs(out, n, subject.s, buffer);
            EXPECT_EQ(n, expected.size());
            if (TheState() == State::Null) {
                EXPECT_TRUE(out == nullptr || *out == 0);
                continue;
            }
            ASSERT_NE(out, nullptr);
            EXPECT_EQ(out, buffer.Data());
            EXPECT_EQ(std::u32string(out, out + n), expected);
            EXPECT_EQ(out[n], 0u);
            if (TheState() == State::Narrow && !hasView && IsUTF8Environment()) {
                EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(subject.s));
            }
            subject.ExpectOthersUntouched();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, StringAs, EnvironmentsAndStates(), NameOfEnvironmentAndState);

class NarrowAs : public StringEnvironment::InBoth {};

TEST_P(NarrowAs, AnyEncodingOfAllOrSoManyBytes) {
    for (std::u16string text : {std::u16string(), std::u16string(u"a"), std::u16string(u"gr\u00fcn"), LongText(),
                                std::u16string(u"\u65e5\u672c\U0001F600")}) {
        if (!FitsNarrow(text)) {
            continue;
        }
        const std::string bytes = NarrowForm(text);
        for (const bool isCounted : {false, true}) {
            const std::string given = isCounted ? bytes + "more" : bytes;
            const unsigned long count = isCounted ? bytes.size() : -1ul;

            unsigned long n = count;
            OptimizedBuffer<unsigned short, 16> units;
            const unsigned short* const utf16 = _GetStringAs(given.c_str(), n, units);
            ASSERT_NE(utf16, nullptr);
            EXPECT_EQ(n, text.size());
            EXPECT_EQ(std::u16string(utf16, utf16 + n), text);
            EXPECT_EQ(utf16[n], 0);

            n = count;
            OptimizedBuffer<char, 32> narrow;
            const char* const utf8 = _GetStringAs(given.c_str(), n, narrow);
            ASSERT_NE(utf8, nullptr);
            EXPECT_EQ(n, UTF8Of(text).size());
            EXPECT_EQ(std::string(utf8, n), UTF8Of(text));
            EXPECT_EQ(utf8 == given.c_str(), IsUTF8()) << "UTF-8 is UTF-8 already";

            n = count;
            OptimizedBuffer<unsigned int, 8> wide;
            const unsigned int* const utf32 = _GetStringAs(given.c_str(), n, wide);
            ASSERT_NE(utf32, nullptr);
            EXPECT_EQ(std::u32string(utf32, utf32 + n), CodePointsOf(text));
            EXPECT_EQ(utf32[n], 0u);
        }
    }
}

namespace {

/// Asks for a text while its requests are refused, from the first one to the last. It is null and of no length then.
template <class T, unsigned long N>
void ExpectNullInAShortage(const std::u16string& text, bool isWide, const std::basic_string<T>& expected) {
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        bool hasStruck = true;
        for (int first = 1; hasStruck; ++first) {
            SCOPED_TRACE(testing::Message() << UTF8Of(text) << isWide << ", request " << first);
            const T old[] = {1, 0};
            const T* out = old;
            unsigned int n = 77;
            const QORUnicodeString s = StringOf(text, isWide);
            OptimizedBuffer<T, N> buffer;
            {
                const HeapShortage shortage(first, extent);
                _GetStringAs(out, n, s, buffer);
                hasStruck = HeapShortage::HasStruck();
            }
            if (hasStruck) {
                EXPECT_EQ(out, nullptr);
                EXPECT_EQ(n, 0u);
            } else {
                EXPECT_EQ(std::basic_string<T>(out, out + n), expected);
            }
        }
    }
}

} // namespace

TEST_P(NarrowAs, WithoutMemoryIsNullAndOfNoLength) {
    VELStringPoolSetForCurrentThrd(0);
    // A short text needs no more than its view, a long one the buffer too.
    for (const std::u16string& text : {std::u16string(u"abc"), std::u16string(u"gr\u00fcn"), LongText()}) {
        const std::string utf8 = UTF8Of(text);
        const std::u32string utf32 = CodePointsOf(text);
        for (const bool isWide : {false, true}) {
            ExpectNullInAShortage<char, 32>(text, isWide, utf8);
            ExpectNullInAShortage<unsigned short, 16>(text, isWide, {text.begin(), text.end()});
            ExpectNullInAShortage<unsigned int, 8>(text, isWide, {utf32.begin(), utf32.end()});
        }
    }
}

namespace {

/// Takes text without a request for memory.
class FixedTarget : public std::streambuf {
public:
    FixedTarget() { setp(_bytes, _bytes + sizeof _bytes); }
    std::string Text() const { return {pbase(), pptr()}; }

private:
    char _bytes[256];
};

} // namespace

TEST_P(NarrowAs, WithoutMemoryIsNotInsertedAndFails) {
    VELStringPoolSetForCurrentThrd(0);
    for (const std::u16string& text : {std::u16string(u"abc"), LongText()}) {
        for (const bool isWide : {false, true}) {
            const QORUnicodeString s = StringOf(text, isWide);
            const std::string utf8 = UTF8Of(text);
            FixedTarget target;
            std::ostream out(&target);
            bool hasStruck = false;
            {
                const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
                StreamInsertUTF8(out, s);
                hasStruck = HeapShortage::HasStruck();
            }
            EXPECT_EQ(out.rdstate(), hasStruck ? std::ios::failbit : std::ios::goodbit);
            EXPECT_EQ(target.Text(), hasStruck ? "" : utf8);
            EXPECT_TRUE(hasStruck || isWide || IsUTF8()) << "a view is needed";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, NarrowAs, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(ScratchBuffer, StaysInPlaceAsLongAsItCan) {
    const HeapLog log;
    {
        OptimizedBuffer<unsigned short, 16> buffer;
        EXPECT_EQ(buffer.Capacity(), 16u);
        unsigned short* const inPlace = buffer.Data();
        EXPECT_EQ(buffer.Reserve(16), inPlace);
        inPlace[3] = 77;
        unsigned short* const moved = buffer.Reserve(17);
        EXPECT_NE(moved, inPlace);
        EXPECT_EQ(buffer.Data(), moved);
        EXPECT_EQ(moved[3], 77);
        EXPECT_EQ(buffer.Capacity(), 17u);
        const volatile unsigned long fewer = 5;
        EXPECT_EQ(buffer.Reserve(fewer), moved);
        EXPECT_EQ(buffer.Capacity(), 17u);
        EXPECT_NE(buffer.Reserve(1000), nullptr);
        EXPECT_EQ(buffer.Data()[3], 77);
    }
    EXPECT_EQ(log.Live(), 0u);
}

namespace {

/// The storage in use, and its elements, as they lie behind the elements in place.
template <class T>
std::pair<const T*, unsigned long> FieldsOf(const void* buffer) {
    std::pair<const T*, unsigned long> fields;
    std::memcpy(&fields.first, static_cast<const char*>(buffer) + 32, sizeof fields.first);
    std::memcpy(&fields.second, static_cast<const char*>(buffer) + 40, sizeof fields.second);
    return fields;
}

template <class T, unsigned long N>
void ExpectFieldsInOrder() {
    OptimizedBuffer<T, N> buffer;
    static_assert(sizeof buffer == 48);
    EXPECT_EQ(static_cast<void*>(buffer.Data()), &buffer);
    EXPECT_EQ(FieldsOf<T>(&buffer), std::pair(static_cast<const T*>(buffer.Data()), N));
    buffer.Reserve(1000);
    EXPECT_EQ(FieldsOf<T>(&buffer), std::pair(static_cast<const T*>(buffer.Data()), 1000ul));
}

} // namespace

// Callers reach into it.
TEST(ScratchBuffer, HasTheElementsInPlaceThenTheStorageThenItsSize) {
    ExpectFieldsInOrder<char, 32>();
    ExpectFieldsInOrder<unsigned short, 16>();
    ExpectFieldsInOrder<unsigned int, 8>();
}

TEST(ScratchBuffer, WithoutMemoryKeepsWhatItHas) {
    OptimizedBuffer<unsigned int, 8> buffer;
    buffer.Data()[0] = 77;
    EXPECT_EQ(buffer.Reserve(~0ul), nullptr);
    EXPECT_EQ(buffer.Capacity(), 8u);
    EXPECT_EQ(buffer.Data()[0], 77u);
}

static_assert(sizeof(SType) == sizeof(int));
static_assert(VEL::internal::STypeNarrow == 1 && VEL::internal::STypeWide == 2);

// Insertion into streams.

class Insertion : public InAllStates {};

TEST_P(Insertion, OfAStringIsItsUTF8UpToTheFirstZero) {
    for (const std::u16string& text : TextsFor(TheState())) {
        for (const std::u16string& whole : {text, text + u'\0' + u"more", u'\0' + text}) {
            if (!HasText(TheState()) && !whole.empty()) {
                continue;
            }
            Subject subject(TheState(), whole);
            std::ostringstream out;
            out << "<";
            EXPECT_EQ(&StreamInsertUTF8(out, subject.s), &out);
            EXPECT_TRUE(out.good() || TheState() == State::Null) << "a null handle may have no text";
            out.clear();
            out << ">";
            EXPECT_EQ(out.str(), "<" + std::string(UTF8Of(whole).c_str()) + ">");
            subject.ExpectUnchanged();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(States, Insertion, EnvironmentsAndStates(), NameOfEnvironmentAndState);

class CharacterInsertion : public StringEnvironment::InBoth {};

TEST_P(CharacterInsertion, IsItsUTF8) {
    for (const unsigned int code : {0x41u, 0x7Fu, 0xE9u, 0x20ACu, 0xFFFFu, 0x1F600u, 0x10FFFFu}) {
        std::ostringstream out;
        EXPECT_EQ(&StreamInsertUTF8(out, Character(code)), &out);
        EXPECT_EQ(out.str(), PlainUnicode::Encode(code));
        EXPECT_TRUE(out.good());
    }
}

TEST_P(CharacterInsertion, OfCodeZeroIsNothing) {
    std::ostringstream out;
    out << "<";
    StreamInsertUTF8(out, QORUnicodeChar());
    out << ">";
    EXPECT_EQ(out.str(), "<>");
    EXPECT_TRUE(out.good());
}

INSTANTIATE_TEST_SUITE_P(Environments, CharacterInsertion,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(InsertionStated, WithoutMemoryFails) {
    StringEnvironment::UseCodePage(StringEnvironment::UTF8);
    const QORUnicodeString s = WideString(LongText());
    std::ostringstream out;
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        StreamInsertUTF8(out, s);
    }
    EXPECT_TRUE(out.fail());
    EXPECT_EQ(out.str(), "");
}
