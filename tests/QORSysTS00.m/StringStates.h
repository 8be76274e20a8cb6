/// @file
/// The ways in which a string can stand before an operation, and what to look at behind its handle afterwards.
#pragma once

#include "StringEnvironment.h"
#include "StringTexts.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace StringStates {

using namespace StringTexts;

enum class State { EmptyBlock, Narrow, NarrowShared, NarrowOfNoLength, Wide, WideShared, Null };

inline constexpr State AllStates[] = {
    State::EmptyBlock, State::Narrow,     State::NarrowShared, State::NarrowOfNoLength,
    State::Wide,       State::WideShared, State::Null};

inline const char* NameOf(State state) {
    constexpr const char* Names[] = {"EmptyBlock", "Narrow",     "NarrowShared", "NarrowOfNoLength",
                                     "Wide",       "WideShared", "Null"};
    return Names[static_cast<int>(state)];
}

inline void PrintTo(State state, std::ostream* out) {
    *out << NameOf(state);
}

inline bool IsShared(State state) {
    return state == State::NarrowShared || state == State::WideShared;
}
inline bool IsWide(State state) {
    return state == State::Wide || state == State::WideShared;
}
inline bool HasText(State state) {
    return state == State::Narrow || state == State::NarrowShared || IsWide(state);
}

/// The empty block is nobody's to write, count or strip of its view.
inline void ExpectTheEmptyBlockIntact() {
    const QORInterUnicodeString* empty = QORInterUnicodeString::Empty();
    EXPECT_EQ(empty->_length, 0);
    EXPECT_EQ(empty->_capacity, 0);
    EXPECT_EQ(empty->_flags, 0);
    EXPECT_EQ(empty->_refCount, 1);
    EXPECT_EQ(empty->Text()[0], 0);
    EXPECT_EQ(empty->Text()[1], 0);
    const QORInterUnicodeString::View view = empty->_secondView;
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->_length, 0);
    EXPECT_EQ(view->_text[0], 0);
}

/// What can be seen of a string from outside and inside, to find out whether anything became of it.
struct Picture {
    explicit Picture(const QORUnicodeString& s) : block(StringAccess::BlockOf(s)) {
        if (block != nullptr) {
            view = block->_secondView;
            flags = block->_flags;
            bytes.assign(block->Text(), static_cast<std::size_t>(block->_length + 1) * (block->IsWide() ? 2 : 1));
        }
    }
    bool operator==(const Picture&) const = default;

    Block block;
    const void* view = nullptr;
    int flags = 0;
    std::string bytes;
};

/// A string in one of the states. Its view is built and its hash is fresh, so that a change shows on both.
class Subject {
public:
    explicit Subject(State start, const std::u16string& text = {}, bool isPrepared = true) : state(start) {
        switch (start) {
        case State::EmptyBlock:
            break;
        case State::Narrow:
        case State::NarrowShared:
            s = BytesString(NarrowForm(text));
            break;
        case State::NarrowOfNoLength:
            s = BytesString("");
            break;
        case State::Wide:
        case State::WideShared:
            s = WideString(text);
            break;
        case State::Null:
            StringAccess::Handle(s) = nullptr;
            break;
        }
        if (isPrepared) {
            s.GetLengthInChar();
            s.GetLengthInByte();
            s.ComputeHashKey();
        }
        if (IsShared(state)) {
            other = s;
            otherUnits = other.ConvertToUCChar();
            otherBytes = other.ConvertToChar();
        }
        block = StringAccess::BlockOf(s);
        capacity = block != nullptr ? block->_capacity : 0;
        before = Picture(s);
        otherBefore = Picture(other);
    }

    Block Now() const { return StringAccess::BlockOf(s); }

    /// Whoever else holds the block still has its text, its pointers, its view and its hash.
    void ExpectOthersUntouched() const {
        if (IsShared(state)) {
            EXPECT_EQ(Picture(other), otherBefore);
            EXPECT_EQ(other.ConvertToUCChar(), otherUnits);
            EXPECT_EQ(other.ConvertToChar(), otherBytes);
            EXPECT_EQ(block->_refCount, Now() == block ? 2 : 1);
        }
        ExpectTheEmptyBlockIntact();
    }

    /// The string itself is what it was.
    void ExpectUnchanged() const {
        EXPECT_EQ(Picture(s), before);
        ExpectOthersUntouched();
    }

    /// As it was, but somebody may have asked for the view.
    void ExpectTextUnchanged() const {
        EXPECT_EQ(Now(), block);
        if (block != nullptr) {
            EXPECT_EQ(block->_flags, before.flags);
            EXPECT_EQ(Picture(s).bytes, before.bytes);
        }
        ExpectOthersUntouched();
    }

    State state;
    QORUnicodeString s;
    QORUnicodeString other;
    Block block = nullptr;
    int capacity = 0;
    Picture before{QORUnicodeString()};
    Picture otherBefore{QORUnicodeString()};
    const unsigned short* otherUnits = nullptr;
    const char* otherBytes = nullptr;
};

/// A block that has just been written: alone, stale, without a view, terminated.
inline void ExpectFreshlyWritten(const QORUnicodeString& s, bool isWide) {
    const Block block = StringAccess::BlockOf(s);
    ASSERT_NE(block, nullptr);
    ASSERT_FALSE(block->IsTheEmptyBlock());
    EXPECT_EQ(VEL::GetMainRepEncoding(s), isWide ? VEL::MainRepWide : VEL::MainRepNarrow);
    EXPECT_EQ(block->_secondView, nullptr);
    EXPECT_FALSE(VEL::internal::IsSecondViewAvailable(s));
    EXPECT_TRUE(IsStale(block));
    EXPECT_EQ(block->_refCount, 1);
    EXPECT_LT(block->_length, block->_capacity);
    EXPECT_EQ(isWide ? block->Wide()[block->_length] : block->Text()[block->_length], 0);
}

/// What every accessor says. Builds the view.
inline void ExpectReadsAs(const QORUnicodeString& s, const std::u16string& text) {
    EXPECT_EQ(TextOf(s), text);
    EXPECT_EQ(s.IsEmpty(), text.empty());
    if (StringAccess::BlockOf(s) != nullptr) {
        EXPECT_EQ(StringBlocks::Units(s.ConvertToUCChar(), s.GetLengthInChar()), text);
        EXPECT_EQ(s.ComputeHashKey(), WideString(text).ComputeHashKey());
    }
}

/// Sound texts of each kind of character.
inline const std::vector<std::u16string>& Texts() {
    static const std::vector<std::u16string> texts = {
        u"a",
        u"abc",
        u"The quick brown fox jumps over the lazy dog, twice and once more for a longer text.",
        u"gr\u00fcn",
        u"\u00e4\u00f6\u00fc \u00df\u00ff",
        u"\u20ac 20 \u65e5\u672c\u8a9e",
        u"\U0001F600",
        u"a\U0001F600b\U0001F601",
    };
    return texts;
}

/// The texts that a string in this state can have: none, or those that the environment's code page can hold.
inline std::vector<std::u16string> TextsFor(State state) {
    if (!HasText(state)) {
        return {u""};
    }
    std::vector<std::u16string> texts;
    for (const std::u16string& text : Texts()) {
        if (IsWide(state) || FitsNarrow(text)) {
            texts.push_back(text);
        }
    }
    return texts;
}

/// A test for each state in each environment.
class InAllStates : public testing::TestWithParam<std::tuple<const char*, State>> {
protected:
    void SetUp() override { StringEnvironment::UseCodePage(std::get<0>(GetParam())); }
    State TheState() const { return std::get<1>(GetParam()); }
};

inline std::string NameOfEnvironmentAndState(const testing::TestParamInfo<std::tuple<const char*, State>>& info) {
    return std::string(std::get<0>(info.param) == std::string(StringEnvironment::UTF8) ? "UTF8" : "OneToOne") +
           NameOf(std::get<1>(info.param));
}

inline auto EnvironmentsAndStates() {
    return testing::Combine(testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                            testing::ValuesIn(AllStates));
}

} // namespace StringStates
