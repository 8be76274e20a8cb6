/// @file
/// Searches in strings: SearchSubString both ways, FindPosition, IsSubStringAt and Split, beside the plain way.

#include "GuardedMemory.h"
#include "StringStates.h"
#include "VELVectorOfUnicodeString.h"

#include <climits>
#include <gmock/gmock.h>
#include <memory>
#include <random>

namespace {

using namespace StringStates;
using StringEnvironment::UseCodePage;

constexpr auto Forward = QORUnicodeString::QORSearchModeForward;
constexpr auto Backward = QORUnicodeString::QORSearchModeBackward;

int PlainSearch(const std::u16string& text, const std::u16string& what, int start, bool isForward) {
    const int length = static_cast<int>(text.size());
    const int n = static_cast<int>(what.size());
    if (start < 0 || start >= length || n == 0) {
        return -1;
    }
    const auto isAt = [&](int pos) { return text.compare(static_cast<std::size_t>(pos), what.size(), what) == 0; };
    if (isForward) {
        for (int pos = start; pos <= length - n; ++pos) {
            if (isAt(pos)) {
                return pos;
            }
        }
        return -1;
    }
    for (int pos = length - n - start; pos >= 0; --pos) {
        if (isAt(pos)) {
            return pos;
        }
    }
    return -1;
}

void ExpectFoundAsPlainly(const QORUnicodeString& s, const QORUnicodeString& needle, const std::u16string& text,
                          const std::u16string& what, int start) {
    const int forward = PlainSearch(text, what, start, true);
    ASSERT_EQ(s.SearchSubString(needle, start, Forward), forward) << UTF8Of(text) << " / " << UTF8Of(what) << start;
    ASSERT_EQ(s.FindPosition(needle, start), forward) << UTF8Of(text) << " / " << UTF8Of(what) << start;
    ASSERT_EQ(s.SearchSubString(needle, start, Backward), PlainSearch(text, what, start, false))
        << UTF8Of(text) << " / " << UTF8Of(what) << start;
}

std::vector<std::u16string> AllTexts(const std::u16string& alphabet, std::size_t longest) {
    std::vector<std::u16string> texts{u""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < longest; ++i) {
        for (const char16_t unit : alphabet) {
            texts.push_back(texts[i] + unit);
        }
    }
    return texts;
}

/// A string whose units end directly in front of memory that nobody may touch.
class GuardedString {
public:
    explicit GuardedString(const std::u16string& text) : _memory((text.size() + 1) * 2 + 64) {
        const auto length = static_cast<int>(text.size());
        const std::size_t bytes = (text.size() + 1) * sizeof(char16_t);
        if (CanBeBlock(text.size())) {
            auto* const place = _memory.AtEnd<char>(QORInterUnicodeString::HeaderSize + bytes);
            const auto block = new (place) QORInterUnicodeString(
                nullptr, length, length + 1, QORInterUnicodeString::WideFlag | QORInterUnicodeString::StaleFlag);
            std::memcpy(block->Text(), text.c_str(), bytes);
            // One handle more than there is, so that nobody frees it.
            block->_refCount = 2;
            s = StringOn<QORUnicodeString>(block);
            return;
        }
        auto* const view =
            reinterpret_cast<QORInterUnicodeView*>(_memory.AtEnd<char>(QORInterUnicodeView::HeaderSize + bytes));
        view->_length = length;
        std::memcpy(view->UTF16(), text.c_str(), bytes);
        s = BytesString(UTF8Of(text));
        StringAccess::BlockOf(s)->_secondView = view;
    }
    GuardedString(const GuardedString&) = delete;
    GuardedString& operator=(const GuardedString&) = delete;
    ~GuardedString() {
        if (VEL::GetMainRepEncoding(s) == VEL::MainRepNarrow) {
            StringAccess::BlockOf(s)->_secondView = nullptr;
        }
    }

    /// A block's text is aligned in one way, a view's in another: these are the lengths that end at the guard.
    static bool CanBeBlock(std::size_t length) { return length % 8 == 2; }
    static bool CanBe(std::size_t length) { return CanBeBlock(length) || length % 2 == 1; }

private:
    GuardedMemory _memory;

public:
    QORUnicodeString s;
};

} // namespace

class Search : public StringEnvironment::InBoth {};

TEST_P(Search, SmallAlphabetsAgreeWithThePlainWay) {
    const std::vector<std::u16string> texts = AllTexts(u"ab", 7);
    const std::vector<std::u16string> needles = AllTexts(u"ab", 4);
    for (const bool isTextWide : {false, true}) {
        for (const bool isNeedleWide : {false, true}) {
            for (const std::u16string& text : texts) {
                const QORUnicodeString s = StringOf(text, isTextWide);
                for (const std::u16string& what : needles) {
                    const QORUnicodeString needle = StringOf(what, isNeedleWide);
                    for (int start = -1; start <= static_cast<int>(text.size()) + 1; ++start) {
                        ASSERT_NO_FATAL_FAILURE(ExpectFoundAsPlainly(s, needle, text, what, start));
                    }
                }
            }
        }
    }
}

TEST_P(Search, ThreeLettersAgreeWithThePlainWay) {
    const std::vector<std::u16string> needles = AllTexts(u"a\u00e9z", 3);
    for (const std::u16string& text : AllTexts(u"a\u00e9z", 5)) {
        const QORUnicodeString s = NarrowString(text);
        for (const std::u16string& what : needles) {
            ASSERT_NO_FATAL_FAILURE(ExpectFoundAsPlainly(s, WideString(what), text, what, 0));
        }
    }
}

TEST_P(Search, NeedlesOfEachLengthAreFoundAtEachPosition) {
    for (std::size_t n = 1; n <= 70; ++n) {
        std::u16string what;
        for (std::size_t i = 0; i < n; ++i) {
            what += static_cast<char16_t>(u'a' + i % 3);
        }
        what.back() = u'x';
        const QORUnicodeString needle = WideString(what);
        for (const std::size_t length :
             {n, n + 1, n + 7, 15ul, 16ul, 17ul, 31ul, 32ul, 33ul, 63ul, 64ul, 65ul, 200ul}) {
            if (length < n) {
                continue;
            }
            // What fills the text is what the needle begins with.
            for (std::size_t pos = 0; pos + n <= length; ++pos) {
                std::u16string text(length, u'a');
                text.replace(pos, n, what);
                const QORUnicodeString s = WideString(text);
                ASSERT_EQ(s.FindPosition(needle, 0), static_cast<int>(pos)) << n << " in " << length;
                ASSERT_EQ(s.SearchSubString(needle, 0, Backward), static_cast<int>(pos)) << n << " in " << length;
                ASSERT_EQ(s.FindPosition(needle, static_cast<int>(pos) + 1), -1);
                const int behind = static_cast<int>(length - n - pos) + 1;
                ASSERT_EQ(s.SearchSubString(needle, behind, Backward), -1);
            }
        }
    }
}

TEST_P(Search, TextsOfEachLengthAgreeWithThePlainWay) {
    std::minstd_rand random(7);
    for (std::size_t length = 0; length <= 200; ++length) {
        std::u16string text;
        for (std::size_t i = 0; i < length; ++i) {
            text += static_cast<char16_t>(u'a' + (random() >> 8) % 2);
        }
        const QORUnicodeString s = StringOf(text, length % 2 == 0);
        for (const std::size_t n : {1ul, 2ul, 3ul, 5ul, 8ul, 16ul, 40ul}) {
            if (n > length) {
                continue;
            }
            const std::u16string what = text.substr((random() >> 8) % (length - n + 1), n);
            const QORUnicodeString needle = StringOf(what, n % 2 == 0);
            for (int start = 0; start <= static_cast<int>(length); start += 3) {
                ASSERT_NO_FATAL_FAILURE(ExpectFoundAsPlainly(s, needle, text, what, start));
            }
        }
    }
}

TEST_P(Search, LooksAtWholeUnits) {
    const std::u16string text = u"\u6100\u0061\u0161\u6161\u6162\u0100\u0001";
    const QORUnicodeString s = WideString(text);
    for (const char16_t unit : u"\u0061\u0161\u6161\u6100\u0100\u0001\u6200") {
        const std::u16string what(1, unit);
        ASSERT_NO_FATAL_FAILURE(ExpectFoundAsPlainly(s, WideString(what), text, what, 0));
        const std::u16string two{unit, char16_t(0x6161)};
        ASSERT_NO_FATAL_FAILURE(ExpectFoundAsPlainly(s, WideString(two), text, two, 0));
    }
}

TEST_P(Search, FindsZeroUnitsAndHalvesOfPairs) {
    const std::u16string text = std::u16string(u"a\0b\0\0c", 6) + u"\U0001F600";
    const QORUnicodeString s = WideString(text);
    for (const std::u16string& what :
         {std::u16string(1, u'\0'), std::u16string(2, u'\0'), std::u16string(3, u'\0'), std::u16string(u"\0c", 2),
          std::u16string(1, char16_t(0xDE00)), std::u16string(1, char16_t(0xD83D)), std::u16string(u"\U0001F600")}) {
        for (int start = 0; start < 8; ++start) {
            ASSERT_NO_FATAL_FAILURE(ExpectFoundAsPlainly(s, WideString(what), text, what, start));
        }
    }
}

TEST_P(Search, EveryModeButForwardGoesBackward) {
    const QORUnicodeString s("abcbc");
    for (const int mode : {0, 2, 3}) {
        EXPECT_EQ(s.SearchSubString(QORUnicodeString("bc"), 0, static_cast<QORUnicodeString::QORSearchMode>(mode)), 3);
    }
    EXPECT_EQ(s.SearchSubString(QORUnicodeString("bc"), 1, Backward), 1);
    EXPECT_EQ(s.SearchSubString(QORUnicodeString("bc"), 0, Forward), 1);
}

TEST_P(Search, PositionsCountUnits) {
    UseCodePage(StringEnvironment::UTF8);
    const QORUnicodeString s("\xF0\x9F\x98\x80\xC3\xA9x");
    EXPECT_EQ(s.FindPosition(QORUnicodeString("x"), 0), 3);
    EXPECT_EQ(s.FindPosition(QORUnicodeString("\xC3\xA9"), 0), 2);
    EXPECT_EQ(s.FindPosition(BytesString("\xA9"), 0), -1) << "a view has no such byte";
}

INSTANTIATE_TEST_SUITE_P(Environments, Search, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

class SearchIn : public InAllStates {};

TEST_P(SearchIn, NothingIsFoundOutsideAndNothingChanges) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const int length = static_cast<int>(text.size());
        const QORUnicodeString first = WideString(text.substr(0, 1));
        for (const auto mode : {Forward, Backward}) {
            for (const int start : {-1, INT_MIN, length, length + 1, INT_MAX}) {
                EXPECT_EQ(subject.s.SearchSubString(first, start, mode), -1);
            }
            EXPECT_EQ(subject.s.SearchSubString(QORUnicodeString(), 0, mode), -1);
            EXPECT_EQ(subject.s.SearchSubString(BytesString(""), 0, mode), -1);
            EXPECT_EQ(subject.s.SearchSubString(WideString(u""), 0, mode), -1);
            EXPECT_EQ(subject.s.SearchSubString(NullString<QORUnicodeString>(), 0, mode), -1);
            EXPECT_EQ(subject.s.SearchSubString(WideString(text + u"x"), 0, mode), -1);
            EXPECT_EQ(subject.s.SearchSubString(subject.s, 0, mode), text.empty() ? -1 : 0);
            const QORUnicodeString copy(subject.s);
            EXPECT_EQ(subject.s.SearchSubString(copy, 0, mode), text.empty() ? -1 : 0);
        }
        subject.ExpectUnchanged();
    }
}

TEST_P(SearchIn, IsSubStringAtComparesTheRange) {
    for (const std::u16string& text : TextsFor(TheState())) {
        const int length = static_cast<int>(text.size());
        Subject subject(TheState(), text);
        for (int pos = -1; pos <= length + 1; ++pos) {
            for (int n = 1; n <= 3; ++n) {
                const bool isWithin = pos >= 0 && pos + n <= length;
                const std::u16string what =
                    isWithin ? text.substr(static_cast<std::size_t>(pos), static_cast<std::size_t>(n))
                             : std::u16string(static_cast<std::size_t>(n), u'a');
                EXPECT_EQ(VEL::IsSubStringAt(subject.s, pos, WideString(what)), isWithin) << pos;
                EXPECT_FALSE(VEL::IsSubStringAt(subject.s, pos, WideString(what + u"#")));
                EXPECT_FALSE(VEL::IsSubStringAt(subject.s, pos, WideString(std::u16string(what.size(), u'#'))));
                if (isWithin && FitsNarrow(what) && !(what.front() >= 0xDC00 && what.front() <= 0xDFFF) &&
                    !(what.back() >= 0xD800 && what.back() <= 0xDBFF)) {
                    EXPECT_TRUE(VEL::IsSubStringAt(subject.s, pos, NarrowString(what)));
                }
            }
        }
        EXPECT_FALSE(VEL::IsSubStringAt(subject.s, INT_MAX, QORUnicodeString("a")));
        EXPECT_FALSE(VEL::IsSubStringAt(subject.s, INT_MIN, QORUnicodeString("a")));
        EXPECT_TRUE(VEL::IsSubStringAt(subject.s, 0, subject.s) || TheState() == State::Null);
        subject.ExpectUnchanged();
    }
}

// Any range of no units is empty, wherever it stands, and equals the empty text.
TEST_P(SearchIn, IsSubStringAtIsTrueOfAnEmptyTextEverywhere) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        for (const int pos : {0, 1, -1, 1000, INT_MAX}) {
            EXPECT_TRUE(VEL::IsSubStringAt(subject.s, pos, QORUnicodeString())) << pos;
            EXPECT_TRUE(VEL::IsSubStringAt(subject.s, pos, WideString(u""))) << pos;
        }
    }
}

TEST_P(SearchIn, SplitGivesThePiecesBetweenSeparators) {
    for (std::u16string text : TextsFor(TheState())) {
        if (HasText(TheState())) {
            text = u"," + text + u",," + text + u",";
        }
        for (const std::u16string separator : {u",", u",,", u"\u00e9", u"#"}) {
            for (const bool isWide : {false, true}) {
                Subject subject(TheState(), text);
                std::vector<std::u16string> expected;
                std::size_t first = 0;
                for (std::size_t pos; (pos = text.find(separator, first)) != std::u16string::npos;) {
                    expected.push_back(text.substr(first, pos - first));
                    first = pos + separator.size();
                }
                expected.push_back(text.substr(first));
                VELVectorOfUnicodeString pieces;
                pieces.PutBack(QORUnicodeString("old"));
                VEL::Split(subject.s, StringOf(separator, isWide), pieces);
                ASSERT_EQ(pieces.GetLength(), static_cast<int>(expected.size())) << UTF8Of(text);
                for (int i = 0; i < pieces.GetLength(); ++i) {
                    EXPECT_EQ(TextOf(*pieces.GetAsPtr(i)), expected[static_cast<std::size_t>(i)]);
                }
                EXPECT_EQ(Picture(subject.s), subject.before);
                ExpectTheEmptyBlockIntact();
            }
        }
    }
}

TEST_P(SearchIn, SplitByNothingOrByTheStringItself) {
    for (const std::u16string& text : TextsFor(TheState())) {
        Subject subject(TheState(), text);
        const QORUnicodeString nothings[] = {QORUnicodeString(), BytesString(""), WideString(u""),
                                             NullString<QORUnicodeString>()};
        for (const QORUnicodeString& nothing : nothings) {
            VELVectorOfUnicodeString pieces;
            VEL::Split(subject.s, nothing, pieces);
            ASSERT_EQ(pieces.GetLength(), 1);
            EXPECT_EQ(TextOf(*pieces.GetAsPtr(0)), text);
        }
        VELVectorOfUnicodeString pieces;
        VEL::Split(subject.s, subject.s, pieces);
        ASSERT_EQ(pieces.GetLength(), text.empty() ? 1 : 2);
        EXPECT_TRUE(pieces.GetAsPtr(0)->IsEmpty());
        EXPECT_EQ(TextOf(subject.s), text);
    }
    ExpectTheEmptyBlockIntact();
}

INSTANTIATE_TEST_SUITE_P(States, SearchIn, EnvironmentsAndStates(), NameOfEnvironmentAndState);

TEST(SearchStated, ModesHaveTheirNumbers) {
    EXPECT_EQ(QORUnicodeString::QORSearchModeForward, 1);
    EXPECT_EQ(QORUnicodeString::QORSearchModeBackward, 2);
    const QORUnicodeString s("abcbc");
    EXPECT_EQ(s.SearchSubString("bc", 0, static_cast<QORUnicodeString::QORSearchMode>(1)), 1);
    EXPECT_EQ(s.SearchSubString("bc", 0, static_cast<QORUnicodeString::QORSearchMode>(2)), 3);
}

TEST(SearchStated, BuildsTheViewsOfBothNarrowStrings) {
    for (const auto mode : {QORUnicodeString::QORSearchModeForward, QORUnicodeString::QORSearchModeBackward}) {
        for (const char* wanted : {"bc", "#", "longer than the text"}) {
            const QORUnicodeString s("abcbc");
            const QORUnicodeString what(wanted);
            s.SearchSubString(what, 0, mode);
            EXPECT_TRUE(VEL::internal::IsSecondViewAvailable(s)) << wanted;
            EXPECT_TRUE(VEL::internal::IsSecondViewAvailable(what)) << wanted;
        }
    }
}

// The vector is cleared first, so the text must have been taken out of it by then.
TEST(Split, OfAStringInTheVectorThatItFills) {
    VELVectorOfUnicodeString strings;
    strings.PutBack(QORUnicodeString("a;b;c"));
    strings.PutBack(QORUnicodeString(";"));
    VEL::Split(*strings.GetAsPtr(0), *strings.GetAsPtr(1), strings);
    ASSERT_EQ(strings.GetLength(), 3);
    EXPECT_STREQ(strings.GetAsPtr(0)->ConvertToChar(), "a");
    EXPECT_STREQ(strings.GetAsPtr(1)->ConvertToChar(), "b");
    EXPECT_STREQ(strings.GetAsPtr(2)->ConvertToChar(), "c");
}

// Places are found so many at a time.
TEST(Split, AroundTheNumberOfPlacesThatAreFoundAtOnce) {
    for (const int separators : {255, 256, 257, 511, 512, 513}) {
        for (const std::u16string separator : {u",", u";;"}) {
            for (const bool isLastEmpty : {false, true}) {
                std::u16string text;
                std::vector<std::u16string> expected;
                for (int i = 0; i < separators; ++i) {
                    expected.push_back(std::u16string(static_cast<std::size_t>(i % 3), u'q'));
                    text += expected.back() + separator;
                }
                expected.push_back(isLastEmpty ? u"" : u"end");
                text += expected.back();
                for (const int wide : {0, 1, 2, 3}) {
                    VELVectorOfUnicodeString pieces;
                    VEL::Split(StringOf(text, (wide & 1) != 0), StringOf(separator, (wide & 2) != 0), pieces);
                    ASSERT_EQ(pieces.GetLength(), separators + 1);
                    for (int i = 0; i <= separators; ++i) {
                        ASSERT_EQ(TextOf(*pieces.GetAsPtr(i)), expected[static_cast<std::size_t>(i)]) << i;
                    }
                }
            }
        }
    }
}

TEST(Split, ManyPieces) {
    const QORUnicodeString s(std::string(100000, ',').c_str());
    VELVectorOfUnicodeString pieces;
    VEL::Split(s, QORUnicodeString(","), pieces);
    EXPECT_EQ(pieces.GetLength(), 100001);
    ExpectTheEmptyBlockIntact();
}

TEST(SearchGuarded, ReadsNothingBehindTheTextOrTheNeedle) {
    for (std::size_t length = 1; length <= 200; ++length) {
        if (!GuardedString::CanBe(length)) {
            continue;
        }
        std::u16string text(length, u'a');
        text.back() = u'b';
        const GuardedString s(text);
        for (const std::size_t n : {1ul, 2ul, 3ul, 5ul, 7ul, 8ul, 9ul, 10ul, 17ul, 18ul, 33ul, 66ul, length}) {
            if (n > length || !GuardedString::CanBe(n)) {
                continue;
            }
            std::u16string what(n, u'a');
            const GuardedString absent(what.substr(1) + u"c");
            ASSERT_EQ(s.s.FindPosition(absent.s, 0), -1);
            ASSERT_EQ(s.s.SearchSubString(absent.s, 0, Backward), -1);
            what.back() = u'b';
            const GuardedString present(what);
            ASSERT_EQ(s.s.FindPosition(present.s, 0), static_cast<int>(length - n)) << n << " in " << length;
            ASSERT_EQ(s.s.SearchSubString(present.s, 0, Backward), static_cast<int>(length - n));
            ASSERT_TRUE(VEL::IsSubStringAt(s.s, static_cast<int>(length - n), present.s));
            ASSERT_EQ(present.s == absent.s, false);
        }
    }
}

TEST(SearchGuarded, ComparisonsReadNothingBehindTheText) {
    for (std::size_t length = 1; length <= 200; ++length) {
        if (!GuardedString::CanBe(length)) {
            continue;
        }
        const std::u16string text(length, u'a');
        const GuardedString a(text);
        const GuardedString b(text);
        EXPECT_TRUE(a.s == b.s);
        EXPECT_EQ(a.s.Compare(b.s), 2);
        EXPECT_EQ(a.s.SortCompare(b.s, 1), 0);
        const QORUnicodeString wide = WideString(text);
        EXPECT_TRUE(a.s == wide);
        EXPECT_TRUE(wide == b.s);
        EXPECT_EQ(a.s.SortCompare(wide), 0);
        EXPECT_EQ(wide.Compare(b.s), 2);
    }
}

// What a search that starts afresh at each position takes a thousand times as long for.

namespace {

constexpr int Mebi = 1 << 20;

std::u16string Periodic(std::size_t before, std::size_t behind) {
    return std::u16string(before, u'a') + u"b" + std::u16string(behind, u'a');
}

} // namespace

TEST(SearchPeriodic, NeedlesThatNearlyMatchEverywhereFinish) {
    const QORUnicodeString text = WideString(std::u16string(Mebi, u'a'));
    for (const std::size_t before : {0ul, 1ul, 500ul, 998ul, 999ul}) {
        const QORUnicodeString needle = WideString(Periodic(before, 999 - before));
        EXPECT_EQ(text.FindPosition(needle, 0), -1);
        EXPECT_EQ(text.SearchSubString(needle, 0, Backward), -1);
    }
}

TEST(SearchPeriodic, NeedlesOfTheSamePeriodAreFound) {
    std::u16string text;
    for (int i = 0; i < Mebi / 2; ++i) {
        text += u"ab";
    }
    const QORUnicodeString s = WideString(text + u"b" + text);
    const std::u16string what = text.substr(0, 1000) + u"bab";
    EXPECT_EQ(s.FindPosition(WideString(what), 0), Mebi - 1000);
    EXPECT_EQ(s.SearchSubString(WideString(what), 0, Backward), Mebi - 1000);
    EXPECT_EQ(s.FindPosition(WideString(what + u"b"), 0), -1);
    EXPECT_EQ(s.SearchSubString(WideString(what + u"b"), 0, Backward), -1);
}

TEST(SearchPeriodic, ReplaceAllAndSplitFinish) {
    for (const bool isWide : {false, true}) {
        const std::u16string what = Periodic(999, 0);
        QORUnicodeString s = StringOf(std::u16string(Mebi, u'a') + u"b" + std::u16string(Mebi, u'a'), isWide);
        VELVectorOfUnicodeString pieces;
        VEL::Split(s, StringOf(what, isWide), pieces);
        ASSERT_EQ(pieces.GetLength(), 2);
        EXPECT_EQ(pieces.GetAsPtr(0)->GetLengthInChar(), Mebi - 999);
        s.ReplaceAll(StringOf(what, isWide), StringOf(u"-", isWide));
        EXPECT_EQ(s.GetLengthInChar(), 2 * Mebi - 998);
        EXPECT_EQ(s.FindPosition(QORUnicodeString("-"), 0), Mebi - 999);
        s.ReplaceAll(StringOf(Periodic(500, 499), isWide), QORUnicodeString());
        EXPECT_EQ(s.GetLengthInChar(), 2 * Mebi - 998);
    }
}
