/// @file
/// Strings that grow piece by piece: how often they ask for memory, and what becomes of a large block that is given
/// more room.

#include "HeapLog.h"
#include "QORString.h"
#include "QORSysTSUnicodeString.h"
#include "StringSubjects.h"

#include <functional>

namespace {

using namespace StringStates;

/// Beyond what the pool of a thread keeps, and beyond what the C library keeps in its heap.
constexpr std::size_t Lengths[] = {100, 300, 300000};

/// Requests that growing by half, from nothing to so many bytes, may take.
constexpr std::size_t EnoughRequests = 40;

std::u16string LongText(std::size_t length) {
    std::u16string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += static_cast<char16_t>(u'a' + i % 26);
    }
    return text;
}

/// Adds a piece many times. @return The requests that this took.
std::size_t RequestsToGrow(QORUnicodeString& s, int times, const std::function<void(QORUnicodeString&)>& add) {
    VELStringPoolSetForCurrentThrd(0);
    const HeapLog log;
    for (int i = 0; i < times; ++i) {
        add(s);
    }
    return log.Requests().size();
}

} // namespace

TEST(Growth, ByCharactersAsksSeldom) {
    for (const unsigned int code : {0x61u, 0x20ACu, 0x1F600u}) {
        for (const std::u16string& start : {std::u16string(), std::u16string(u"start"), LongText(200)}) {
            QORUnicodeString s = WideString(start);
            const QORUnicodeChar c = Character(code);
            EXPECT_LT(RequestsToGrow(s, 50000, [&](QORUnicodeString& to) { to += c; }), EnoughRequests);
            std::u16string expected = start;
            for (int i = 0; i < 50000; ++i) {
                expected += UnitsOf(code);
            }
            EXPECT_TRUE(TextOf(s) == expected);
            ExpectFreshlyWritten(s, true);
        }
    }
}

TEST(Growth, ByPiecesAsksSeldom) {
    for (const bool isWide : {false, true}) {
        const QORUnicodeString piece = StringOf(u"q", isWide);
        for (const std::size_t start : {std::size_t{0}, std::size_t{100}, std::size_t{1000}}) {
            QORUnicodeString s = StringOf(LongText(start), isWide);
            EXPECT_LT(RequestsToGrow(s, 100000, [&](QORUnicodeString& to) { to.Append(piece); }), EnoughRequests);
            EXPECT_TRUE(TextOf(s) == LongText(start) + std::u16string(100000, u'q'));
            ExpectFreshlyWritten(s, isWide);
        }
    }
}

// A short text that fits in takes a way of its own, as long as nobody else sees it.

template <class String>
class ShortAppendix : public testing::Test {
protected:
    /// How the string stands that the text is appended to.
    enum Sight { Unseen, WithView, WithHash, Shared };

    static void ExpectAppended(int length, int room, int count, Sight sight) {
        SCOPED_TRACE(testing::Message() << count << " to " << length << " with room for " << room << ", " << sight);
        const std::string text = Bytes(length);
        const std::string added = Bytes(count);
        const Block block = QORInterUnicodeString::_NewNarrow(length + room);
        std::memcpy(block->Text(), text.c_str(), text.size());
        block->SetLength(length);
        auto s = StringOn<String>(block);
        const int capacity = block->_capacity;
        const String other = sight == Shared ? s : String();
        if (sight == WithView) {
            block->_GetUTF16View();
        } else if (sight == WithHash) {
            block->_GetHash();
        }
        const auto appendix = StringOn<String>(NewNarrow(added));
        EXPECT_EQ(&s.Append(appendix), &s);
        EXPECT_EQ(BytesOf(s), text + added);
        EXPECT_EQ(BytesOf(appendix), added);
        if (count > 0) {
            ExpectFreshlyWritten(Alias(s), false);
            EXPECT_EQ(StringAccess::BlockOf(s) == block, sight != Shared && capacity > length + count);
        }
        EXPECT_EQ(BytesOf(other), sight == Shared ? text : "");
        const std::string whole = text + added;
        ExpectReadsAs(Alias(s), std::u16string(whole.begin(), whole.end()));
    }

private:
    static std::string Bytes(int length) {
        std::string bytes;
        for (int i = 0; i < length; ++i) {
            bytes += static_cast<char>('a' + i % 26);
        }
        return bytes;
    }

protected:
    static constexpr Sight AllSights[] = {Unseen, WithView, WithHash, Shared};
};

using StringsThatAppend = testing::Types<QORUnicodeString, QORSysTSUnicodeString>;
TYPED_TEST_SUITE(ShortAppendix, StringsThatAppend);

TYPED_TEST(ShortAppendix, OfEachLengthIsAppendedToAnyRoom) {
    for (const int length : {1, 5, 8, 30, 100}) {
        for (int room = 0; room <= 24; ++room) {
            for (int count = 0; count <= 20; ++count) {
                for (const auto sight : this->AllSights) {
                    this->ExpectAppended(length, room, count, sight);
                }
            }
        }
    }
}

TYPED_TEST(ShortAppendix, MayBeTheStringItself) {
    for (int length = 1; length <= 20; ++length) {
        const std::string text(static_cast<std::size_t>(length), 'x');
        const Block block = QORInterUnicodeString::_NewNarrow(3 * length + 8);
        std::memcpy(block->Text(), text.c_str(), text.size());
        block->SetLength(length);
        auto s = StringOn<TypeParam>(block);
        s.Append(s);
        EXPECT_EQ(BytesOf(s), text + text);
        EXPECT_EQ(StringAccess::BlockOf(s), block);
        s.Append(StringOn<TypeParam>(NewWide(u"w")));
        EXPECT_EQ(TextOf(Alias(s)), std::u16string(2 * text.size(), u'x') + u"w");
    }
}

TYPED_TEST(ShortAppendix, LeavesTheEmptyBlockAlone) {
    TypeParam s;
    s.Append(StringOn<TypeParam>(NewNarrow("abc")));
    EXPECT_EQ(BytesOf(s), "abc");
    ExpectTheEmptyBlockIntact();
    s.Append(TypeParam());
    EXPECT_EQ(BytesOf(s), "abc");
    const auto null = NullString<TypeParam>();
    s.Append(null);
    EXPECT_EQ(BytesOf(s), "abc");
    auto nothing = NullString<TypeParam>();
    nothing.Append(s);
    EXPECT_EQ(StringAccess::BlockOf(nothing), nullptr);
    ExpectTheEmptyBlockIntact();
}

// From here on, each operation makes a full block of its own larger.

namespace {

template <class String>
struct Enlargement {
    const char* name;
    bool isForWide;
    bool isForNarrow;
    std::function<void(String&)> run;
    std::function<std::u16string(const std::u16string&)> result;
};

std::u16string Doubled(const std::u16string& text) {
    return text + text;
}

std::u16string WithMore(const std::u16string& text) {
    return text + u"and some more text behind it";
}

/// The same text in either representation; made while there is memory.
template <class String>
const String& More(bool isWide) {
    static const String narrow = Make<String>(WithMore(u""), false);
    static const String wide = Make<String>(WithMore(u""), true);
    return isWide ? wide : narrow;
}

std::vector<Enlargement<QORUnicodeString>> EnlargementsOf(const QORUnicodeString&) {
    using S = QORUnicodeString;
    return {
        {"Append narrow", false, true, [](S& s) { s.Append(More<S>(false)); }, WithMore},
        {"Append wide", true, false, [](S& s) { s.Append(More<S>(true)); }, WithMore},
        {"Append itself", true, true, [](S& s) { s.Append(s); }, Doubled},
        {"+= itself", true, true, [](S& s) { s += s; }, Doubled},
        {"+= character", true, false,
         [](S& s) {
             for (int i = 0; i < 8; ++i) {
                 s += QORUnicodeChar('x');
             }
         },
         [](const std::u16string& text) { return text + u"xxxxxxxx"; }},
        {"Resize", true, false, [](S& s) { s.Resize(StringAccess::BlockOf(s)->_length + 8); },
         [](const std::u16string& text) { return text + u"        "; }},
    };
}

std::vector<Enlargement<QORSysTSUnicodeString>> EnlargementsOf(const QORSysTSUnicodeString&) {
    using S = QORSysTSUnicodeString;
    return {
        {"Append narrow", false, true, [](S& s) { s.Append(More<S>(false)); }, WithMore},
        {"Append wide", true, false, [](S& s) { s.Append(More<S>(true)); }, WithMore},
        {"Append itself", true, true, [](S& s) { s.Append(s); }, Doubled},
        {"Append itself and nothing", true, true, [](S& s) { s.Append(s, S()); }, Doubled},
        {"Append all of itself", true, true, [](S& s) { s.Append(s, 0, StringAccess::BlockOf(s)->_length); }, Doubled},
        {"SetCapacity", true, true, [](S& s) { s.SetCapacity(2 * StringAccess::BlockOf(s)->_length); },
         [](const std::u16string& text) { return text; }},
    };
}

std::vector<Enlargement<QORString>> EnlargementsOf(const QORString&) {
    using S = QORString;
    return {
        {"+=", false, true, [](S& s) { s += More<S>(false); }, WithMore},
        {"+= chars", false, true, [](S& s) { s += "and some more text behind it"; }, WithMore},
        {"+= itself", false, true, [](S& s) { s += s; }, Doubled},
        {"+= chars of its own", false, true, [](S& s) { s += s.ConvertToChar(); }, Doubled},
    };
}

/// Runs `check` for each operation on a string of each length and representation.
template <class String, class Check>
void ForEachEnlargement(const Check& check) {
    VELStringPoolSetForCurrentThrd(0);
    More<String>(true);
    for (const Enlargement<String>& enlargement : EnlargementsOf(String())) {
        for (const std::size_t length : Lengths) {
            for (const bool isWide : {false, true}) {
                if (isWide ? enlargement.isForWide : enlargement.isForNarrow) {
                    SCOPED_TRACE(testing::Message() << enlargement.name << " " << length << (isWide ? " wide" : ""));
                    check(enlargement, LongText(length), isWide);
                }
            }
        }
    }
}

} // namespace

template <class String>
class Enlarged : public testing::Test {};

using AllStrings = testing::Types<QORUnicodeString, QORSysTSUnicodeString, QORString>;
TYPED_TEST_SUITE(Enlarged, AllStrings);

TYPED_TEST(Enlarged, IsChangedAndTheHandlesOwn) {
    ForEachEnlargement<TypeParam>([](const auto& enlargement, const std::u16string& text, bool isWide) {
        const HeapLog log;
        {
            SubjectOf<TypeParam> subject(isWide ? State::Wide : State::Narrow, text);
            enlargement.run(subject.s);
            ExpectFreshlyWritten(Alias(subject.s), isWide);
            const std::u16string expected = enlargement.result(text);
            EXPECT_TRUE(TextOf(Alias(subject.s)) == expected);
            ExpectReadsAs(Alias(subject.s), expected);
            TypeParam copy(subject.s);
            EXPECT_EQ(StringAccess::BlockOf(copy), subject.Now());
            EXPECT_EQ(subject.Now()->_refCount, 2);
            ExpectTheEmptyBlockIntact();
        }
        EXPECT_EQ(log.Live(), 0u) << "leaked";
    });
}

TYPED_TEST(Enlarged, LeavesASharedBlockAlone) {
    ForEachEnlargement<TypeParam>([](const auto& enlargement, const std::u16string& text, bool isWide) {
        SubjectOf<TypeParam> subject(isWide ? State::WideShared : State::NarrowShared, text);
        enlargement.run(subject.s);
        EXPECT_NE(subject.Now(), subject.BlockBefore());
        EXPECT_TRUE(TextOf(Alias(subject.s)) == enlargement.result(text));
        subject.ExpectOthersUntouched();
    });
}

TYPED_TEST(Enlarged, IsEmptyWithoutMemory) {
    ForEachEnlargement<TypeParam>([](const auto& enlargement, const std::u16string& text, bool isWide) {
        const HeapLog log;
        {
            SubjectOf<TypeParam> subject(isWide ? State::Wide : State::Narrow, text);
            {
                const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
                enlargement.run(subject.s);
                EXPECT_TRUE(HeapShortage::HasStruck());
            }
            EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
            ExpectTheEmptyBlockIntact();
        }
        EXPECT_EQ(log.Live(), 0u) << "leaked";
    });
}
