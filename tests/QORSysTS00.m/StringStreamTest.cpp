/// @file
/// Strings that read a line.

#include "StringStates.h"

#include <istream>
#include <sstream>
#include <stdexcept>
#include <streambuf>

namespace {

using namespace StringStates;

/// The bytes that `line` leaves: pieces of 79 bytes, each up to its first zero byte.
std::string Kept(const std::string& line) {
    std::string kept;
    for (std::size_t i = 0; i < line.size(); i += 79) {
        const std::string piece = line.substr(i, 79);
        kept += piece.c_str();
    }
    return kept;
}

std::string LineOf(std::istream& in, int skipWhite = 0) {
    QORUnicodeString s;
    EXPECT_EQ(&s.BuildFromStream(in, skipWhite), &in);
    EXPECT_EQ(VEL::GetMainRepEncoding(s), 1);
    return Narrow(StringAccess::BlockOf(s));
}

std::string Rest(std::istream& in) {
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Gives one character after the other and then ends, or throws.
class Drop : public std::streambuf {
public:
    Drop(std::string text, bool throws) : _text(std::move(text)), _throws(throws) {}

private:
    int_type underflow() override {
        if (_next == _text.size()) {
            if (_throws) {
                throw std::runtime_error("no more");
            }
            return traits_type::eof();
        }
        _current = _text[_next++];
        setg(&_current, &_current, &_current + 1);
        return traits_type::to_int_type(_current);
    }

    std::string _text;
    std::size_t _next = 0;
    char _current = 0;
    bool _throws;
};

} // namespace

class Line : public StringEnvironment::InBoth {};

TEST_P(Line, EndsAtItsLineFeedWhichIsConsumed) {
    std::istringstream in("first\n\nthird \r\n last");
    EXPECT_EQ(LineOf(in), "first");
    EXPECT_TRUE(in.good());
    EXPECT_EQ(LineOf(in), "");
    EXPECT_TRUE(in.good()) << "an empty line is no failure";
    EXPECT_EQ(LineOf(in), "third \r");
    EXPECT_EQ(LineOf(in), " last");
    EXPECT_TRUE(in.eof());
    EXPECT_FALSE(in.bad());
}

TEST_P(Line, OfAnEmptyStreamIsEmpty) {
    std::istringstream in("");
    EXPECT_EQ(LineOf(in), "");
    EXPECT_TRUE(in.eof());
    EXPECT_EQ(LineOf(in), "");
    EXPECT_EQ(LineOf(in, 1), "");
}

TEST_P(Line, OfEachLengthAroundThePieces) {
    for (const std::size_t length : {1ul, 78ul, 79ul, 80ul, 81ul, 157ul, 158ul, 159ul, 160ul, 237ul, 1000ul}) {
        std::string line;
        for (std::size_t i = 0; i < length; ++i) {
            line += static_cast<char>('a' + i % 26);
        }
        for (const int skipWhite : {0, 1}) {
            std::istringstream in(line + "\nnext");
            EXPECT_EQ(LineOf(in, skipWhite), line);
            EXPECT_TRUE(in.good());
            EXPECT_EQ(Rest(in), "next");
            std::istringstream last(line);
            EXPECT_EQ(LineOf(last, skipWhite), line);
            EXPECT_TRUE(last.eof());
            EXPECT_FALSE(last.bad());
        }
    }
}

TEST_P(Line, OfAMebibyte) {
    std::string line;
    for (int i = 0; i < 1 << 20; ++i) {
        line += static_cast<char>('a' + i % 26);
    }
    std::istringstream in(line + "\nnext");
    EXPECT_EQ(LineOf(in), line);
    EXPECT_EQ(LineOf(in), "next");
}

TEST_P(Line, KeepsBytesAsTheyAre) {
    std::istringstream in("gr\xC3\xBCn \xFF\x80\t\v\n");
    EXPECT_EQ(LineOf(in), "gr\xC3\xBCn \xFF\x80\t\v");
    // A character may be cut by the end of a piece and comes together again.
    std::istringstream cut(std::string(78, 'a') + "\xC3\xBC\n");
    EXPECT_EQ(LineOf(cut), std::string(78, 'a') + "\xC3\xBC");
}

TEST_P(Line, ZeroBytesEndTheirPiece) {
    for (const std::size_t zero : {0ul, 1ul, 40ul, 78ul, 79ul, 80ul, 100ul, 199ul}) {
        std::string line(200, 'x');
        line[zero] = '\0';
        std::istringstream in(line + "\nnext");
        EXPECT_EQ(LineOf(in), Kept(line)) << zero;
        EXPECT_EQ(Rest(in), "next");
    }
    std::istringstream zeros(std::string(300, '\0') + "\nnext");
    EXPECT_EQ(LineOf(zeros), "");
    EXPECT_EQ(Rest(zeros), "next");
}

TEST_P(Line, SkipsWhiteSpaceInFrontWhenAskedTo) {
    std::istringstream in(" \t\r\n\v\f\n  text  \n  more");
    EXPECT_EQ(LineOf(in, 1), "text  ");
    EXPECT_EQ(LineOf(in, 0), "  more");
    std::istringstream kept(" \ttext\n");
    EXPECT_EQ(LineOf(kept, 0), " \ttext");
    std::istringstream other("  text\n");
    EXPECT_EQ(LineOf(other, -1), "text");
    std::istringstream bytes(" \xA0\x85"
                             "a\n");
    EXPECT_EQ(LineOf(bytes, 1), "\xA0\x85"
                                "a")
        << "bytes of 0x80 and above are not white";
}

TEST_P(Line, OfWhiteSpaceAloneIsEmpty) {
    for (const char* white : {" ", "\n", "  \n \t\n"}) {
        std::istringstream in(white);
        EXPECT_EQ(LineOf(in, 1), "");
        EXPECT_TRUE(in.eof());
    }
}

TEST_P(Line, ReplacesWhatTheStringHeld) {
    for (const State state : AllStates) {
        for (const char* text : {"new\n", "\n", ""}) {
            Subject subject(state, u"abc");
            std::istringstream in(text);
            subject.s.BuildFromStream(in, 0);
            EXPECT_EQ(TextOf(subject.s), text[0] == 'n' ? u"new" : u"") << NameOf(state);
            if (text[0] == 'n') {
                ExpectFreshlyWritten(subject.s, false);
            } else {
                EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
            }
            subject.ExpectOthersUntouched();
        }
    }
}

TEST_P(Line, FromAStreamThatGivesOneCharacterAtATime) {
    const std::string line(200, 'q');
    Drop drop("  " + line + "\nnext", false);
    std::istream in(&drop);
    EXPECT_EQ(LineOf(in, 1), line);
    EXPECT_EQ(LineOf(in), "next");
    EXPECT_TRUE(in.eof());
}

TEST_P(Line, FromAStreamThatBreaksGivesWhatCameBefore) {
    for (const std::size_t length : {0ul, 1ul, 78ul, 79ul, 80ul, 158ul, 200ul}) {
        for (const int skipWhite : {0, 1}) {
            Drop drop(std::string(length, 'q'), true);
            std::istream in(&drop);
            QORUnicodeString s;
            EXPECT_NO_THROW(s.BuildFromStream(in, skipWhite));
            EXPECT_EQ(TextOf(s), std::u16string(length, u'q')) << length;
            EXPECT_FALSE(in.good());
        }
    }
}

TEST_P(Line, FromAStreamWithoutABufferIsEmpty) {
    for (const int skipWhite : {0, 1}) {
        std::istream in(nullptr);
        EXPECT_EQ(LineOf(in, skipWhite), "");
        EXPECT_TRUE(in.bad());
    }
}

// The stream is not at its end, so its state is cleared when nothing could be read.
TEST_P(Line, OfAFailedStreamIsReadAllTheSame) {
    std::istringstream in("text\nnext");
    in.setstate(std::ios::failbit);
    EXPECT_EQ(LineOf(in), "text");
    EXPECT_EQ(LineOf(in), "next");
}

TEST_P(Line, OfAStreamThatEndedIsEmpty) {
    std::istringstream in("text");
    EXPECT_EQ(LineOf(in), "text");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(LineOf(in), "");
        EXPECT_TRUE(in.eof());
    }
}

TEST_P(Line, IsKeptWhateverExceptionsTheStreamIsAskedFor) {
    constexpr auto Mask = std::ios::eofbit | std::ios::failbit;
    const std::string longLine(158, 'q');
    for (const std::string& text :
         {std::string(), std::string("text"), std::string("text\nnext"), std::string("\nnext"), std::string("  "),
          std::string("  text"), longLine, longLine + "\nnext"}) {
        for (const int skipWhite : {0, 1}) {
            SCOPED_TRACE(text);
            std::istringstream plain(text);
            std::istringstream in(text);
            in.exceptions(Mask);
            // The third call finds a stream that failed before.
            for (int call = 0; call < 3; ++call) {
                QORUnicodeString expected;
                expected.BuildFromStream(plain, skipWhite);
                QORUnicodeString s("old");
                EXPECT_NO_THROW(s.BuildFromStream(in, skipWhite));
                EXPECT_EQ(TextOf(s), TextOf(expected));
                EXPECT_EQ(in.exceptions(), Mask);
                EXPECT_EQ(in.rdstate(), plain.rdstate());
            }
        }
    }
}

TEST_P(Line, FromAStreamThatBreaksNeverThrows) {
    constexpr auto Mask = std::ios::badbit | std::ios::failbit;
    for (const int skipWhite : {0, 1}) {
        Drop drop("qqq", true);
        std::istream in(&drop);
        in.exceptions(Mask);
        QORUnicodeString s("old");
        EXPECT_NO_THROW(s.BuildFromStream(in, skipWhite));
        EXPECT_EQ(TextOf(s), u"qqq");
        EXPECT_EQ(in.exceptions(), Mask);
        EXPECT_FALSE(in.good());
    }
}

INSTANTIATE_TEST_SUITE_P(Environments, Line, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);
