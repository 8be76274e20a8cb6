/// @file
/// Operations on strings when memory runs out at each of their requests: a string becomes empty or stays as it was,
/// nothing leaks, nothing throws, and nobody else is touched.

#include "HeapLog.h"
#include "QORSysTSUnicodeString.h"
#include "StringStates.h"
#include "VELVectorOfUnicodeString.h"

#include <functional>
#include <gmock/gmock.h>
#include <sstream>
#include <vector>

namespace {

using namespace StringStates;

const std::u16string Old = u"the old text, which is long enough \u00e9";

/// What an operation works with; nothing here is made while there is a shortage.
struct Arguments {
    explicit Arguments(bool isWide)
        : longer(StringOf(u"a longer text than all that was there before, twenty times twenty", isWide)),
          shorter(StringOf(u"xy", isWide)), found(StringOf(u"e", isWide)), separator(StringOf(u" ", isWide)) {}

    QORUnicodeString longer;
    QORUnicodeString shorter;
    QORUnicodeString found;
    QORUnicodeString separator;
    QORUnicodeChar letter = QORUnicodeChar('x');
    QORUnicodeChar accent = Character(0xE9);
    QORUnicodeChar pair = Character(0x1F600);
};

struct Operation {
    const char* name;
    std::function<void(QORUnicodeString&, const Arguments&)> run;
    std::u16string partial = {}; ///< What a first step may leave.
};

using S = QORUnicodeString;
using A = const Arguments;

const std::vector<Operation>& Changes() {
    static const std::vector<Operation> operations = {
        {"Append longer", [](S& s, A& a) { s.Append(a.longer); }},
        {"Append shorter", [](S& s, A& a) { s += a.shorter; }},
        {"Append itself", [](S& s, A&) { s += s; }},
        {"+= character", [](S& s, A& a) { s += a.letter; }},
        {"+= pair", [](S& s, A& a) { s += a.pair; }},
        {"+", [](S& s, A& a) { s = s + a.longer; }},
        {"+ bytes", [](S& s, A&) { s = s + "bytes that are not few, for there is more"; }},
        {"bytes +", [](S& s, A&) { s = "bytes" + s; }, u"bytes"},
        {"Resize longer", [](S& s, A&) { s.Resize(200); }},
        {"Resize shorter", [](S& s, A&) { s.Resize(3); }},
        {"Resize without truncation", [](S& s, A& a) { s.Resize(3, a.letter, 0); }},
        {"Resize to nothing", [](S& s, A&) { s.Resize(0); }},
        {"ReplaceSubString range by longer", [](S& s, A& a) { s.ReplaceSubString(0, 0, a.longer); }},
        {"ReplaceSubString range by shorter", [](S& s, A& a) { s.ReplaceSubString(0, 30, a.shorter); }},
        {"ReplaceSubString counted", [](S& s, A& a) { s.ReplaceSubString(0, 0, a.shorter, 100); }},
        {"ReplaceSubString by itself", [](S& s, A&) { s.ReplaceSubString(0, 0, s); }},
        {"ReplaceSubString", [](S& s, A& a) { s.ReplaceSubString(a.found, a.longer); }},
        {"ReplaceAll longer", [](S& s, A& a) { s.ReplaceAll(a.found, a.longer); }},
        {"ReplaceAll shorter", [](S& s, A& a) { s.ReplaceAll(a.found, QORUnicodeString()); }},
        {"ReplaceAll by itself", [](S& s, A& a) { s.ReplaceAll(a.found, s); }},
        {"ReplaceAll of itself", [](S& s, A& a) { s.ReplaceAll(s, a.longer); }},
        {"Remove", [](S& s, A&) { s.Remove(0, 1); }},
        {"Insert", [](S& s, A& a) { s.Insert(0, a.longer); }},
        {"SubString", [](S& s, A&) { s = s.SubString(1, 20); }},
        {"Strip spaces", [](S& s, A&) { s = s.Strip(QORUnicodeString::QORStripModeAll); }},
        {"Strip letters", [](S& s, A& a) { s = s.Strip(QORUnicodeString::QORStripModeBoth, a.accent); }},
        {"Strip nothing", [](S& s, A& a) { s = s.Strip(QORUnicodeString::QORStripModeLeading, a.pair); }},
        {"ToUpper", [](S& s, A&) { s.ToUpper(); }},
        {"ToLower", [](S& s, A&) { s.ToLower(); }},
        {"repeated character", [](S& s, A& a) { s = QORUnicodeString(a.pair, 40); }},
        {"BuildFromSTEP quoted", [](S& s, A&) { s.BuildFromSTEP("\"a text in quotes, long enough\""); }},
        {"BuildFromSTEP digits", [](S& s, A&) { s.BuildFromSTEP("\\X2\\20AC20AC20AC20AC20AC20AC20AC20AC"); }},
        {"BuildFromSTEP long digits", [](S& s, A&) { s.BuildFromSTEP("\\X4\\000020AC000020AC000020AC000020AC"); }},
        {"BuildFromSTEP damaged", [](S& s, A&) { s.BuildFromSTEP("\\X2\\20AC20ACzzzz"); }},
    };
    return operations;
}

wchar_t* s_counted;
char s_step[1000];

const std::vector<Operation>& Looks() {
    static const std::vector<Operation> operations = {
        {"SearchSubString", [](S& s, A& a) { s.SearchSubString(a.found, 0, QORUnicodeString::QORSearchModeForward); }},
        {"backward", [](S& s, A& a) { s.SearchSubString(a.found, 0, QORUnicodeString::QORSearchModeBackward); }},
        {"IsSubStringAt", [](S& s, A& a) { VEL::IsSubStringAt(s, 1, a.shorter); }},
        {"Split",
         [](S& s, A& a) {
             VELVectorOfUnicodeString pieces;
             VEL::Split(s, a.separator, pieces);
         }},
        {"==", [](S& s, A& a) { (void)(s == a.longer); }},
        {"== bytes", [](S& s, A&) { (void)(s == "the old text, which is long enough \xC3\xA9"); }},
        {"<", [](S& s, A& a) { (void)(s < a.longer); }},
        {"SortCompare", [](S& s, A& a) { s.SortCompare(a.longer, 1); }},
        {"Compare", [](S& s, A& a) { s.Compare(a.longer); }},
        {"StrCollate", [](S& s, A& a) { VEL::StrCollate(s, a.longer); }},
        {"WildMatch", [](S& s, A& a) { s.WildMatch(a.longer, a.letter, a.accent); }},
        {"WildMatch itself", [](S& s, A& a) { s.WildMatch(s, a.letter, a.accent); }},
        {"[]", [](S& s, A&) { (void)s[3]; }},
        {"ConvertToSTEP", [](S& s, A&) { s.ConvertToSTEP(s_step); }},
        {"ConvertToBSTR",
         [](S& s, A&) {
             s.ConvertToBSTR(&s_counted);
             if (s_counted != nullptr) {
                 std::free(reinterpret_cast<char*>(s_counted) - 4);
             }
         }},
        {"_GetStringAs UTF-8",
         [](S& s, A&) {
             VEL::internal::OptimizedBuffer<char, 32> buffer;
             const char* out;
             unsigned int n;
             VEL::UCS::internal::_GetStringAs(out, n, s, buffer);
             EXPECT_TRUE(out != nullptr || n == 0);
         }},
        {"_GetStringAs UTF-16",
         [](S& s, A&) {
             VEL::internal::OptimizedBuffer<unsigned short, 16> buffer;
             const unsigned short* out;
             unsigned int n;
             VEL::UCS::internal::_GetStringAs(out, n, s, buffer);
             EXPECT_TRUE(out != nullptr || n == 0);
         }},
        {"_GetStringAs UTF-32",
         [](S& s, A&) {
             VEL::internal::OptimizedBuffer<unsigned int, 8> buffer;
             const unsigned int* out;
             unsigned int n;
             VEL::UCS::internal::_GetStringAs(out, n, s, buffer);
             EXPECT_TRUE(out != nullptr || n == 0);
         }},
    };
    return operations;
}

/// Runs the operation with its first request failing, then with its second, and so on until none fails.
void Sweep(const Operation& operation, State state, bool isWide, HeapShortage::Extent extent) {
    const std::u16string start = HasText(state) ? Old : u"";
    std::u16string expected;
    {
        Subject subject(state, start, false);
        operation.run(subject.s, Arguments(isWide));
        expected = TextOf(subject.s);
    }
    for (int first = 1;; ++first) {
        SCOPED_TRACE("request " + std::to_string(first));
        ASSERT_LT(first, 2000);
        const HeapLog log;
        bool hasStruck = false;
        {
            const Arguments arguments(isWide);
            Subject subject(state, start, false);
            const std::u16string longer = TextOf(arguments.longer);
            bool hasThrown = false;
            {
                const HeapShortage shortage(first, extent);
                try {
                    operation.run(subject.s, arguments);
                } catch (const std::bad_alloc&) {
                    hasThrown = true;
                }
                hasStruck = HeapShortage::HasStruck();
            }
            EXPECT_FALSE(hasThrown) << "operations never throw";
            const std::u16string after = TextOf(subject.s);
            if (hasStruck) {
                EXPECT_THAT(after, testing::AnyOf(u"", start, expected, operation.partial)) << UTF8Of(after);
            } else {
                EXPECT_EQ(after, expected);
            }
            EXPECT_EQ(TextOf(arguments.longer), longer);
            EXPECT_EQ(TextOf(arguments.shorter), u"xy");
            if (IsShared(state)) {
                EXPECT_EQ(TextOf(subject.other), start);
            }
            if (const Block block = subject.Now(); block != nullptr && !block->IsTheEmptyBlock()) {
                EXPECT_LT(block->_length, block->_capacity);
            }
            ExpectTheEmptyBlockIntact();
        }
        EXPECT_EQ(log.Live(), 0u) << "leaked";
        if (!hasStruck) {
            return;
        }
    }
}

} // namespace

class OperationsShortage : public InAllStates {
protected:
    void SetUp() override {
        InAllStates::SetUp();
        // Each request reaches the heap.
        VELStringPoolSetForCurrentThrd(0);
    }

    void SweepAll(const std::vector<Operation>& operations) {
        for (const Operation& operation : operations) {
            for (const bool isWide : {false, true}) {
                for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
                    SCOPED_TRACE(testing::Message()
                                 << operation.name << (isWide ? ", wide arguments" : "")
                                 << (extent == HeapShortage::OnlyThatOne ? ", once" : ", from then on"));
                    Sweep(operation, TheState(), isWide, extent);
                }
            }
        }
    }
};

TEST_P(OperationsShortage, ChangesEmptyTheStringOrLeaveIt) {
    SweepAll(Changes());
}

TEST_P(OperationsShortage, LooksLeaveTheString) {
    SweepAll(Looks());
}

INSTANTIATE_TEST_SUITE_P(States, OperationsShortage, EnvironmentsAndStates(), NameOfEnvironmentAndState);

// A text that is missing for want of memory equals nothing, not even a text that has none.

template <class String>
class MissingText : public testing::Test {
protected:
    /// Runs `action` without memory, which it needs.
    template <class Action>
    static bool InAShortage(const Action& action) {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        const bool result = action();
        EXPECT_TRUE(HeapShortage::HasStruck());
        return result;
    }

    void SetUp() override { VELStringPoolSetForCurrentThrd(0); }
};

using StringsWithEquality = testing::Types<QORUnicodeString, QORSysTSUnicodeString>;
TYPED_TEST_SUITE(MissingText, StringsWithEquality);

TYPED_TEST(MissingText, EqualsNothing) {
    for (const std::u16string other : {u"", u"abc", u"x"}) {
        const auto narrow = StringOn<TypeParam>(NewNarrow("abc"));
        const auto wide = StringOn<TypeParam>(NewWide(other));
        EXPECT_FALSE(this->InAShortage([&] { return narrow == wide; }));
        EXPECT_FALSE(this->InAShortage([&] { return wide == narrow; }));
        EXPECT_TRUE(this->InAShortage([&] { return narrow != wide; }));
        EXPECT_TRUE(this->InAShortage([&] { return wide != narrow; }));
        EXPECT_EQ(narrow == wide, other == u"abc") << "with memory";
        EXPECT_EQ(wide == narrow, other == u"abc");
    }
}

TEST(MissingTextIn, StandsNowhere) {
    VELStringPoolSetForCurrentThrd(0);
    const auto narrow = [] { return StringOn<QORSysTSUnicodeString>(NewNarrow("abc")); };
    const auto wide = [](const char16_t* text) { return StringOn<QORSysTSUnicodeString>(NewWide(text)); };
    const QORSysTSUnicodeString text = narrow();
    const QORSysTSUnicodeString what = narrow();
    const QORSysTSUnicodeString nothing = wide(u"");
    const QORSysTSUnicodeString abc = wide(u"abc");
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_FALSE(text.IsSubStringAt(0, nothing));
        EXPECT_FALSE(text.IsSubStringAt(0, abc));
        EXPECT_FALSE(nothing.IsSubStringAt(0, what));
        EXPECT_FALSE(abc.IsSubStringAt(0, what));
        EXPECT_FALSE(abc.IsSubStringAt(3, what));
        EXPECT_TRUE(HeapShortage::HasStruck());
    }
    EXPECT_TRUE(text.IsSubStringAt(0, nothing));
    EXPECT_TRUE(abc.IsSubStringAt(0, what));
}

TEST(MissingTextIn, StandsNowhereInAStringEither) {
    VELStringPoolSetForCurrentThrd(0);
    const QORUnicodeString text = BytesString("abc");
    const QORUnicodeString what = BytesString("abc");
    const QORUnicodeString nothing = WideString(u"");
    const QORUnicodeString abc = WideString(u"abc");
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_FALSE(VEL::IsSubStringAt(text, 0, abc));
        EXPECT_FALSE(VEL::IsSubStringAt(nothing, 0, what));
        EXPECT_FALSE(VEL::IsSubStringAt(abc, 0, what));
        EXPECT_FALSE(VEL::IsSubStringAt(abc, 3, what));
        EXPECT_TRUE(HeapShortage::HasStruck());
    }
    EXPECT_TRUE(VEL::IsSubStringAt(abc, 0, what));
}

TEST(StreamShortage, GivesAPartOfTheLineOrNothing) {
    VELStringPoolSetForCurrentThrd(0);
    const std::string line(500, 'q');
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        for (int first = 1;; ++first) {
            std::istringstream in(line + "\nnext");
            const HeapLog log;
            bool hasStruck = false;
            {
                QORUnicodeString s;
                {
                    const HeapShortage shortage(first, extent);
                    s.BuildFromStream(in, 1);
                    hasStruck = HeapShortage::HasStruck();
                }
                EXPECT_THAT(s.ConvertToChar(), testing::MatchesRegex("q*"));
                EXPECT_TRUE(hasStruck || s.GetLengthInByte() == 500);
                std::string rest;
                EXPECT_TRUE(std::getline(in, rest));
                EXPECT_EQ(rest, "next") << "the line is consumed";
            }
            EXPECT_EQ(log.Live(), 0u);
            if (!hasStruck) {
                break;
            }
        }
    }
}
