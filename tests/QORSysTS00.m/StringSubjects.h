/// @file
/// Strings of any of the three classes in each of the states, looked at through the eyes of a QORUnicodeString.
#pragma once

#include "QORString.h"
#include "QORSysTSUnicodeString.h"
#include "StringStates.h"

#include <string>
#include <utility>
#include <vector>

namespace StringStates {

/// A QORUnicodeString on the block of any string, which counts no handle.
class Alias {
public:
    template <class String>
    explicit Alias(const String& s) {
        StringAccess::Handle(_alias) = StringAccess::Handle(s);
    }
    Alias(const Alias&) = delete;
    Alias& operator=(const Alias&) = delete;
    ~Alias() { StringAccess::Handle(_alias) = VEL::internal::EmptyHandle(); }

    operator const QORUnicodeString&() const { return _alias; }

private:
    QORUnicodeString _alias;
};

/// A string of a class in one of the states. Who else holds its block is a QORUnicodeString.
template <class String>
class SubjectOf {
public:
    explicit SubjectOf(State state, const std::u16string& text = {}, bool isPrepared = true)
        : _subject(state, text, isPrepared) {
        std::swap(StringAccess::Handle(s), StringAccess::Handle(_subject.s));
    }
    SubjectOf(const SubjectOf&) = delete;
    SubjectOf& operator=(const SubjectOf&) = delete;

    State Start() const { return _subject.state; }
    Block BlockBefore() const { return _subject.block; }
    int CapacityBefore() const { return _subject.capacity; }
    Block Now() const { return StringAccess::BlockOf(s); }

    void ExpectOthersUntouched() const {
        Look([](const Subject& subject) { subject.ExpectOthersUntouched(); });
    }
    void ExpectUnchanged() const {
        Look([](const Subject& subject) { subject.ExpectUnchanged(); });
    }
    void ExpectTextUnchanged() const {
        Look([](const Subject& subject) { subject.ExpectTextUnchanged(); });
    }

    String s;

private:
    template <class Action>
    void Look(const Action& action) const {
        StringAccess::Handle(_subject.s) = StringAccess::Handle(s);
        action(_subject);
        StringAccess::Handle(_subject.s) = VEL::internal::EmptyHandle();
    }

    mutable Subject _subject;
};

/// A string of a class with this text. Narrow text of no length is the empty block, wide text a block of its own.
template <class String>
String Make(const std::u16string& text, bool isWide) {
    if (text.empty() && !isWide) {
        return String();
    }
    return StringOn<String>(isWide ? NewWide(text) : NewNarrow(NarrowForm(text)));
}

/// The bytes of a string that is narrow; looks without touching.
template <class String>
std::string BytesOf(const String& s) {
    return StringBlocks::Narrow(StringAccess::BlockOf(s));
}

/// The texts of TextsFor() that a narrow string makes of a string in this state without losing any of it.
inline std::vector<std::u16string> NarrowTextsFor(State state) {
    std::vector<std::u16string> texts;
    for (const std::u16string& text : TextsFor(state)) {
        const bool isASCII = std::ranges::all_of(text, [](char16_t unit) { return unit < 0x80; });
        if (isASCII || !IsWide(state) || IsUTF8Environment()) {
            texts.push_back(text);
        }
    }
    return texts;
}

/// What became of a narrow string that was only read, or that an operation left alone: narrow text stays where it is,
/// wide text stands in a narrow block of its own, a null handle is repaired.
inline void ExpectOnlyNormalised(const SubjectOf<QORString>& subject, const std::u16string& text) {
    if (subject.Start() == State::Null) {
        EXPECT_TRUE(IsOnTheEmptyBlock(subject.s));
    } else if (IsWide(subject.Start())) {
        const std::string bytes = NarrowForm(text);
        ExpectFreshlyWritten(Alias(subject.s), false);
        EXPECT_EQ(BytesOf(subject.s), bytes);
        EXPECT_EQ(subject.Now()->_capacity, CapacityFor(false, static_cast<int>(bytes.size())));
        subject.ExpectOthersUntouched();
    } else {
        subject.ExpectUnchanged();
    }
    ExpectTheEmptyBlockIntact();
}

/// What became of a narrow string that was written.
inline void ExpectBytes(const SubjectOf<QORString>& subject, const std::string& bytes) {
    ASSERT_NE(subject.Now(), nullptr);
    EXPECT_EQ(BytesOf(subject.s), bytes);
    EXPECT_FALSE(subject.Now()->IsWide());
    if (subject.Now()->IsTheEmptyBlock()) {
        EXPECT_EQ(bytes, "");
    } else {
        ExpectFreshlyWritten(Alias(subject.s), false);
    }
    subject.ExpectOthersUntouched();
}

} // namespace StringStates
