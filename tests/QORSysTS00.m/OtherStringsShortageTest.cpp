/// @file
/// The operations of thread-safe and narrow strings when memory runs out at each request of each of them: the string
/// becomes empty or stays as it was, a missing view is reported, nothing leaks, and nobody else's text is touched.

#include "HeapLog.h"
#include "QORSysTSVectorOfUnicodeString.h"
#include "StringSubjects.h"

#include <functional>
#include <gmock/gmock.h>
#include <optional>
#include <sstream>
#include <vector>

namespace {

using namespace StringStates;

constexpr std::u16string_view Text = u"the old text, which is long enough";

/// An operation, with a narrow and a wide argument of the text "text".
template <class String>
struct Operation {
    const char* name;
    std::function<void(String& s, const String& narrow, const String& wide)> run;
    std::vector<std::u16string> others = {}; ///< Texts that the string may have when a step fails, besides the usual.
};

template <class String>
std::optional<std::u16string> TextIn(const String& s) {
    const Block block = StringAccess::BlockOf(s);
    return block != nullptr ? std::optional(TextOf(block)) : std::nullopt;
}

template <class String>
void ExpectSound(const String& s) {
    const Block block = StringAccess::BlockOf(s);
    if (block == nullptr || block->IsTheEmptyBlock()) {
        return;
    }
    ASSERT_GE(block->_length, 0);
    ASSERT_LT(block->_length, block->_capacity);
    EXPECT_EQ(block->IsWide() ? block->Wide()[block->_length] : block->Text()[block->_length], 0);
    if (QORInterUnicodeView* const view = block->_secondView) {
        EXPECT_TRUE(block->IsWide() ? std::string(view->Narrow(), static_cast<std::size_t>(view->_length)) ==
                                          NarrowForm(TextOf(block))
                                    : StringBlocks::Units(view->UTF16(), view->_length) == TextOf(block));
    }
}

/// What the operation makes of a string when there is memory.
template <class String>
std::optional<std::u16string> Outcome(const Operation<String>& operation, State state) {
    SubjectOf<String> subject(state, HasText(state) ? std::u16string(Text) : u"", false);
    operation.run(subject.s, Make<String>(u"text", false), Make<String>(u"text", true));
    return TextIn(subject.s);
}

/// Runs the operation with the given request failing.
/// @return False when it needs fewer requests.
template <class String>
bool RunShort(const Operation<String>& operation, State state, int first, HeapShortage::Extent extent) {
    const auto expected = Outcome(operation, state);
    // A wide block that can't be turned narrow is lost before the operation begins.
    const auto fromNothing = Outcome(operation, State::EmptyBlock);
    const HeapLog log;
    bool hasStruck = false;
    {
        SubjectOf<String> subject(state, HasText(state) ? std::u16string(Text) : u"", false);
        const String narrow = Make<String>(u"text", false);
        const String wide = Make<String>(u"text", true);
        const auto before = TextIn(subject.s);
        const int breaks = DebugBreaks();
        {
            const HeapShortage shortage(first, extent);
            operation.run(subject.s, narrow, wide);
            hasStruck = HeapShortage::HasStruck();
        }
        const auto after = TextIn(subject.s);
        ExpectSound(subject.s);
        ExpectTheEmptyBlockIntact();
        if (IsShared(state)) {
            EXPECT_EQ(TextOf(subject.BlockBefore()), Text);
        }
        // A wide argument of a narrow string is turned narrow, and may be lost on the way.
        EXPECT_THAT(*TextIn(wide), testing::AnyOf(std::u16string(u"text"), std::u16string()));
        EXPECT_EQ(*TextIn(narrow), u"text");
        if (!hasStruck) {
            EXPECT_EQ(after, expected);
            EXPECT_EQ(DebugBreaks(), breaks);
        } else if (DebugBreaks() == breaks && after != before && after != expected && after != std::u16string() &&
                   (after != fromNothing || !IsWide(state))) {
            EXPECT_THAT(operation.others, testing::Contains(after.value_or(u"null")));
        }
    }
    EXPECT_EQ(log.Live(), 0u) << "leaked";
    return hasStruck;
}

/// Runs the operation with its first request failing, then with its second, and so on until none fails.
template <class String>
void Sweep(const Operation<String>& operation, State state, HeapShortage::Extent extent) {
    for (int first = 1; RunShort(operation, state, first, extent); ++first) {
        ASSERT_LT(first, 100) << "never enough";
        ASSERT_FALSE(testing::Test::HasFailure()) << "request " << first;
    }
}

} // namespace

class OtherStringsShortage : public InAllStates {
protected:
    void SetUp() override {
        InAllStates::SetUp();
        // Each request reaches the heap.
        VELStringPoolSetForCurrentThrd(0);
    }

    template <class String>
    void SweepAll(const std::vector<Operation<String>>& operations) {
        for (const Operation<String>& operation : operations) {
            for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
                SCOPED_TRACE(testing::Message() << operation.name << ", extent " << extent);
                Sweep(operation, TheState(), extent);
            }
        }
    }
};

TEST_P(OtherStringsShortage, ThreadSafeStringsThatChange) {
    using S = QORSysTSUnicodeString;
    SweepAll<S>({
        {"SubString", [](S& s, const S&, const S&) { s = s.SubString(1, 5); }},
        {"part constructor", [](S& s, const S&, const S&) { s = S(s, 1, 5); }},
        {"Append narrow", [](S& s, const S& n, const S&) { s.Append(n); }},
        {"Append wide", [](S& s, const S&, const S& w) { s.Append(w); }},
        {"Append itself", [](S& s, const S&, const S&) { s.Append(s); }},
        {"Append two", [](S& s, const S& n, const S& w) { s.Append(n, w); }},
        {"Append three", [](S& s, const S& n, const S& w) { s.Append(w, s, n); }},
        {"Append narrow part", [](S& s, const S& n, const S&) { s.Append(n, 1, 3); }},
        {"Append wide part", [](S& s, const S&, const S& w) { s.Append(w, 1, 3); }},
        {"Insert", [](S& s, const S& n, const S&) { s.Insert(0, n); }},
        {"Insert wide", [](S& s, const S&, const S& w) { s.Insert(0, w); }},
        {"Insert itself", [](S& s, const S&, const S&) { s.Insert(0, s); }},
        {"Insert part", [](S& s, const S& n, const S&) { s.Insert(0, n, 1, 3); }},
        {"Insert wide part", [](S& s, const S&, const S& w) { s.Insert(1, w, 1, 3); }},
        {"Insert part at the end", [](S& s, const S& n, const S&) { s.Insert(34, n, 1, 3); }},
        {"ReplaceRange longer", [](S& s, const S&, const S& w) { s.ReplaceRange(1, 2, w); }},
        {"ReplaceRange shorter", [](S& s, const S& n, const S&) { s.ReplaceRange(1, 20, n); }},
        {"ReplaceRange by itself", [](S& s, const S&, const S&) { s.ReplaceRange(1, 20, s); }},
        {"ReplaceSubString", [](S& s, const S& n, const S& w) { s.ReplaceSubString(n, w, 1); }},
        {"ReplaceSubString by itself", [](S& s, const S& n, const S&) { s.ReplaceSubString(n, s, 1); }},
        {"ReplaceAll", [](S& s, const S& n, const S&) { s.ReplaceAll(n, s); }},
        {"ReplaceAll wide", [](S& s, const S& n, const S& w) { s.ReplaceAll(w, n); }},
        {"ToUpper", [](S& s, const S&, const S&) { s.ToUpper(); }},
        {"SetCapacity", [](S& s, const S&, const S&) { s.SetCapacity(1000); }},
        {"SetCapacity below", [](S& s, const S&, const S&) { s.SetCapacity(2); }},
    });
}

TEST_P(OtherStringsShortage, ThreadSafeStringsThatAreRead) {
    using S = QORSysTSUnicodeString;
    SweepAll<S>({
        {"SearchSubString", [](S& s, const S& n, const S&) { s.SearchSubString(n, 0); }},
        {"SearchSubStringBackward", [](S& s, const S&, const S& w) { s.SearchSubStringBackward(w, 0); }},
        {"IsSubStringAt", [](S& s, const S& n, const S&) { s.IsSubStringAt(3, n); }},
        {"Compare", [](S& s, const S&, const S& w) { s.Compare(w, 0); }},
        {"Compare without case", [](S& s, const S&, const S& w) { w.Compare(s, 1); }},
        {"==", [](S& s, const S& n, const S& w) { static_cast<void>(s == n || w == s); }},
        {"<", [](S& s, const S& n, const S& w) { static_cast<void>(s < n || w < s); }},
        {"Split",
         [](S& s, const S& n, const S&) {
             QORSysTSVectorOfUnicodeString out;
             s.Split(n, out);
         }},
        {"Split at a wide separator",
         [](S& s, const S&, const S& w) {
             QORSysTSVectorOfUnicodeString out;
             out.PutBack(w);
             s.Split(w, out);
         }},
    });
}

TEST_P(OtherStringsShortage, NarrowStringsThatChange) {
    using S = QORString;
    const QORChar x('x');
    SweepAll<S>({
        {"bytes", [x](S& s, const S&, const S&) { s = S(x, 40); }},
        {"repetition", [](S& s, const S&, const S&) { s = S(s, 3); }},
        {"QORSysUTF8Str",
         [](S& s, const S&, const S&) {
             char bytes[] = "gr\u00fcn";
             QORSysUTF8Str(&s, bytes);
         }},
        {"CastToCharPtr", [](S& s, const S&, const S&) { s.CastToCharPtr(); }},
        {"SubString", [](S& s, const S&, const S&) { s = s.SubString(1, 5); }},
        {"Strip", [](S& s, const S&, const S&) { s = s.Strip(S::QORStripModeAll, QORChar('t')); }},
        {"Strip nothing", [x](S& s, const S&, const S&) { s = s.Strip(S::QORStripModeBoth, x); }},
        {"+= chars", [](S& s, const S&, const S&) { s += "some more text"; }},
        {"+= narrow", [](S& s, const S& n, const S&) { s += n; }},
        {"+= wide", [](S& s, const S&, const S& w) { s += w; }},
        {"+= itself", [](S& s, const S&, const S&) { s += s; }},
        {"+= byte", [x](S& s, const S&, const S&) { s += x; }},
        {"+= number", [](S& s, const S&, const S&) { s += 1234567890; }},
        {"+ chars", [](S& s, const S&, const S&) { s = s + "some more text"; }, {u"some more text"}},
        {"+", [](S& s, const S&, const S& w) { s = s + w; }, {u"text"}},
        {"free +", [](S& s, const S&, const S&) { s = "some more text" + s; }, {u"some more text"}},
        {"Resize longer", [x](S& s, const S&, const S&) { s.Resize(100, x, 0); }},
        {"Resize shorter", [x](S& s, const S&, const S&) { s.Resize(5, x, 1); }},
        {"ReplaceSubString", [](S& s, const S& n, const S&) { s.ReplaceSubString(1, 2, n); }},
        {"ReplaceSubString wide",
         [](S& s, const S&, const S& w) { s.ReplaceSubString(1, 2, w); },
         {u"t old text, which is long enough"}},
        {"ReplaceSubString counted",
         [](S& s, const S& n, const S&) { s.ReplaceSubString(1, 2, n, 6); },
         {u"t old text, which is long enough"}},
        {"ReplaceSubString first", [](S& s, const S& n, const S&) { s.ReplaceSubString(n, S()); }},
        {"ReplaceSubString first of wide",
         [](S& s, const S& n, const S& w) { s.ReplaceSubString(w, n); },
         {u"textthe old text, which is long enough"}},
        {"Remove", [](S& s, const S&, const S&) { s.Remove(1, 3); }},
        {"Insert", [](S& s, const S& n, const S&) { s.Insert(3, n); }},
        {"Insert itself", [](S& s, const S&, const S&) { s.Insert(3, s); }},
        {"ToUpper", [](S& s, const S&, const S&) { s.ToUpper(); }},
        {"ReadLine",
         [](S& s, const S&, const S&) {
             std::istringstream in("a short line\n");
             s.ReadLine(in, 0);
         }},
    });
}

TEST_P(OtherStringsShortage, NarrowStringsThatAreRead) {
    using S = QORString;
    SweepAll<S>({
        {"Compare", [](S& s, const S&, const S& w) { s.Compare(w); }},
        {"CompareByCase", [](S& s, const S&, const S& w) { s.CompareByCase(w); }},
        {"FindPosition", [](S& s, const S&, const S& w) { s.FindPosition(w, 0); }},
        {"operator[]", [](S& s, const S&, const S&) { static_cast<void>(s[3]); }},
        {"<<",
         [](S& s, const S&, const S&) {
             std::ostringstream out;
             out << s;
         }},
    });
    EXPECT_EQ(DebugBreaks(), 0);
}

// A long line grows by many blocks; what could be had of it, or nothing, is the text.
TEST_P(OtherStringsShortage, ALongLineIsNeverForeignText) {
    const std::string line(1000, 'a');
    bool hasStruck = true;
    for (int first = 1; hasStruck; ++first) {
        ASSERT_LT(first, 100);
        const HeapLog log;
        {
            SubjectOf<QORString> subject(TheState(), HasText(TheState()) ? std::u16string(Text) : u"", false);
            std::istringstream in(line + "\n");
            {
                const HeapShortage shortage(first, HeapShortage::OnlyThatOne);
                subject.s.ReadLine(in, 0);
                hasStruck = HeapShortage::HasStruck();
            }
            const std::string bytes = BytesOf(subject.s);
            EXPECT_EQ(bytes, std::string(bytes.size(), 'a'));
            EXPECT_LE(bytes.size(), line.size());
            EXPECT_TRUE(hasStruck || bytes == line);
        }
        EXPECT_EQ(log.Live(), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(States, OtherStringsShortage, EnvironmentsAndStates(), NameOfEnvironmentAndState);
