/// @file
/// Narrow strings and streams: ReadLine and the insertion operator.

#include "StringSubjects.h"

#include <iterator>
#include <sstream>
#include <stdexcept>
#include <streambuf>

namespace {

using namespace StringStates;

using NarrowSubject = SubjectOf<QORString>;

constexpr std::size_t ChunkSize = 79;

bool IsWhite(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// A line by the plain way: what is read, and what is left over.
struct PlainLine {
    std::string text;
    std::string rest;
};

PlainLine ReadPlainly(const std::string& input, bool skipsWhite) {
    std::size_t first = 0;
    while (skipsWhite && first < input.size() && IsWhite(input[first])) {
        ++first;
    }
    const std::size_t end = input.find('\n', first);
    if (end == std::string::npos) {
        return {input.substr(first), ""};
    }
    return {input.substr(first, end - first), input.substr(end + 1)};
}

std::string RestOf(std::istream& in) {
    in.clear();
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// Gives the text, and fails when asked for more.
class FailingSource : public std::streambuf {
public:
    explicit FailingSource(std::string text) : _text(std::move(text)) {}

protected:
    int_type underflow() override {
        if (_isGiven) {
            throw std::runtime_error("the device is gone");
        }
        _isGiven = true;
        setg(_text.data(), _text.data(), _text.data() + _text.size());
        return traits_type::to_int_type(_text[0]);
    }

private:
    std::string _text;
    bool _isGiven = false;
};

/// Text of this length in which no two chunks are alike.
std::string LongText(std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += static_cast<char>('!' + (i + i / ChunkSize) % 90);
    }
    return text;
}

} // namespace

class NarrowLine : public InAllStates {};

TEST_P(NarrowLine, IsReadUpToTheLineFeedWhichIsConsumed) {
    const std::string inputs[] = {"",
                                  "\n",
                                  "abc",
                                  "abc\n",
                                  "abc\ndef\n",
                                  "\nabc\n",
                                  "\n\n\n",
                                  "  abc  \n  def",
                                  " \t\r\v\f\n\n abc\nd",
                                  "   ",
                                  "   \n",
                                  "a\r\nb",
                                  LongText(78) + "\nx",
                                  LongText(79) + "\nx",
                                  LongText(80) + "\nx",
                                  LongText(158) + "\nx",
                                  LongText(159) + "\nx",
                                  LongText(79),
                                  LongText(158),
                                  LongText(1000) + "\n" + LongText(300),
                                  "  " + LongText(79) + "\n"};
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        for (const std::string& input : inputs) {
            // Vertical white space passes no check, so it may only be skipped.
            for (const int skipWhite : {0, 1, 2}) {
                if (skipWhite == 0 && input.find('\v') != std::string::npos) {
                    continue;
                }
                SCOPED_TRACE(input);
                const PlainLine expected = ReadPlainly(input, skipWhite != 0);
                NarrowSubject subject(TheState(), text);
                std::istringstream in(input);
                EXPECT_EQ(&subject.s.ReadLine(in, skipWhite), &in);
                ExpectBytes(subject, expected.text);
                EXPECT_EQ(RestOf(in), expected.rest);
            }
        }
    }
}

TEST_P(NarrowLine, AtTheEndOfTheStreamIsEmpty) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        NarrowSubject subject(TheState(), text);
        std::istringstream in("abc");
        subject.s.ReadLine(in, 0);
        EXPECT_TRUE(in.eof());
        subject.s.ReadLine(in, 0);
        EXPECT_EQ(subject.s.Length(), 0);
        subject.s.ReadLine(in, 1);
        EXPECT_EQ(subject.s.Length(), 0);
        subject.ExpectOthersUntouched();
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowLine, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(NarrowLineOfABadStream, StopsWhereTheStreamFails) {
    const std::string texts[] = {"abc", LongText(79), LongText(100), LongText(158), "abc\n" + LongText(10)};
    for (const std::string& text : texts) {
        FailingSource source(text);
        std::istream in(&source);
        QORString s("old");
        s.ReadLine(in, 0);
        EXPECT_EQ(BytesOf(s), ReadPlainly(text, false).text);
    }
}

TEST(NarrowLineOfABadStream, WithoutASourceIsEmpty) {
    for (const int skipWhite : {0, 1}) {
        std::istream in(nullptr);
        QORString s("old");
        EXPECT_EQ(&s.ReadLine(in, skipWhite), &in);
        EXPECT_EQ(s.Length(), 0);
    }
}

// The error state of a stream that isn't at its end is cleared when nothing could be read.
TEST(NarrowLineOfABadStream, ThatOnlyFailedBeforeIsReadOn) {
    std::istringstream in("abc\ndef");
    in.setstate(std::ios::failbit);
    QORString s("old");
    s.ReadLine(in, 0);
    EXPECT_EQ(BytesOf(s), "abc");
    s.ReadLine(in, 0);
    EXPECT_EQ(BytesOf(s), "def");
}

TEST(NarrowLineOfABadStream, SkippingWhiteSpaceEndsWithTheText) {
    FailingSource source("  \t ");
    std::istream in(&source);
    QORString s("old");
    s.ReadLine(in, 1);
    EXPECT_EQ(s.Length(), 0);
}

TEST(NarrowLineOfABadStream, IsKeptWhateverExceptionsTheStreamIsAskedFor) {
    constexpr auto Mask = std::ios::eofbit | std::ios::failbit;
    for (const std::string& text : {std::string(), std::string("abc"), std::string("abc\ndef"), std::string("  "),
                                    LongText(158), LongText(158) + "\ndef"}) {
        for (const int skipWhite : {0, 1}) {
            SCOPED_TRACE(text);
            std::istringstream plain(text);
            std::istringstream in(text);
            in.exceptions(Mask);
            // The third call finds a stream that failed before.
            for (int call = 0; call < 3; ++call) {
                QORString expected;
                expected.ReadLine(plain, skipWhite);
                QORString s("old");
                EXPECT_NO_THROW(s.ReadLine(in, skipWhite));
                EXPECT_EQ(BytesOf(s), BytesOf(expected));
                EXPECT_EQ(in.exceptions(), Mask);
                EXPECT_EQ(in.rdstate(), plain.rdstate());
            }
        }
    }
}

TEST(NarrowLineOfABadStream, NeverThrowsWhenTheSourceBreaks) {
    constexpr auto Mask = std::ios::badbit | std::ios::failbit;
    for (const int skipWhite : {0, 1}) {
        FailingSource source("abc");
        std::istream in(&source);
        in.exceptions(Mask);
        QORString s("old");
        EXPECT_NO_THROW(s.ReadLine(in, skipWhite));
        EXPECT_EQ(BytesOf(s), "abc");
        EXPECT_EQ(in.exceptions(), Mask);
    }
}

TEST(NarrowLineStated, EndsAChunkAtAZeroByte) {
    std::istringstream in(std::string("ab\0cd\nnext", 10));
    QORString s;
    s.ReadLine(in, 0);
    EXPECT_EQ(BytesOf(s), "ab");
    EXPECT_EQ(RestOf(in), "next");
}

TEST(NarrowLineStated, KeepsCharactersThatStandOnTwoChunks) {
    const std::string line = LongText(78) + "\u00e9" + LongText(30);
    std::istringstream in(line);
    QORString s;
    s.ReadLine(in, 0);
    EXPECT_EQ(BytesOf(s), line);
}

TEST(NarrowLineStated, OfOneMebibyteComesWhole) {
    const std::string line = LongText(1 << 20);
    std::istringstream in(line + "\nnext");
    QORString s("old");
    s.ReadLine(in, 0);
    EXPECT_TRUE(BytesOf(s) == line);
    s.ReadLine(in, 0);
    EXPECT_EQ(BytesOf(s), "next");
}

// Insertion.

class NarrowInsertion : public InAllStates {};

TEST_P(NarrowInsertion, WritesTheText) {
    for (const std::u16string& text : NarrowTextsFor(TheState())) {
        const NarrowSubject subject(TheState(), text);
        std::ostringstream out;
        EXPECT_EQ(&(out << subject.s), &out);
        out << "|" << subject.s;
        EXPECT_EQ(out.str(), NarrowForm(text) + "|" + NarrowForm(text));
        EXPECT_TRUE(out.good());
        ExpectOnlyNormalised(subject, text);
    }
}

INSTANTIATE_TEST_SUITE_P(States, NarrowInsertion, EnvironmentsAndStates(), NameOfEnvironmentAndState);
