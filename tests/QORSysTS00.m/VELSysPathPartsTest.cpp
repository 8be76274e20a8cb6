/// @file
/// Appending, extensions, splitting.

#include "PathSupport.h"
#include "StringEnvironment.h"
#include "VELSysStatus.h"

#include <functional>
#include <optional>

namespace {

using namespace PathSupport;

const std::string Head = "\x01\x02\\";

/// Marks the stat cache good, so that it can be seen whether an operation voids it.
VELSysPath WithStat(const std::string& text) {
    VELSysPath path = PathOf(text);
    EXPECT_EQ(StateOf(path).isStatValid, false);
    PathAccess::DeclareStatValid(*PathAccess::Of(path));
    return path;
}

template <class Row>
std::string NameOfRow(const testing::TestParamInfo<Row>& info) {
    return info.param.name;
}

// Appending.

struct AppendRow {
    const char* name;
    std::string path;
    std::string piece;
    int code;
    std::string text;
    bool isStatValid = false;
};

const AppendRow AppendRows[] = {
    {"Component", "/a", "b", 0, "/a/b"},
    {"TrailingSlash", "/a", "b/", 0, "/a/b"},
    {"LeadingSlash", "/a", "/b", 0, "/a/b"},
    {"BothSlashes", "/a", "/b/", 0, "/a/b"},
    {"TwoTrailing", "/a", "b//", 0, "/a/b/"},
    {"TwoLeading", "/a", "//b", 0, "/a//b"},
    {"Dot", "/a", ".", 0, "/a", true},
    {"DotSlash", "/a", "./", 0, "/a/."},
    {"Empty", "/a", "", 0, "/a"},
    {"Slash", "/a", "/", 0, "/a"},
    {"TwoSlashes", "/a", "//", 0, "/a"},
    {"ThreeSlashes", "/a", "///", 0, "/a//"},
    {"DotDot", "/a", "..", 0, "/a/.."},
    {"Inner", "/a", "b/./../c", 0, "/a/b/./../c"},
    {"ToRoot", "/", "a", 0, "/a"},
    {"EmptyToRoot", "/", "", 0, "/"},
    {"ToSlash", "a//", "b", 0, "a/b"},
    {"ToRelative", "a", "/b", 0, "a/b"},
    {"Umlaut", "a", "\u00e4", 0, "a/\u00e4"},
    {"EmptyToWeb", "http://h", "", 0, "http://h/"},
    {"SlashToWeb", "https://h", "/", 0, "https://h/"},
    {"DotToWeb", "http://h", ".", 0, "http://h", true},
    {"ToWeb", "http://h", "x/", 0, "http://h/x"},
    {"ToWebRoot", "http:///", "x", 0, "http://x"},
    {"WebTakesAnything", "http://h", "~\u00e4", 0, "http://h/~\u00e4"},
    {"ToLogical", Head + "x", "y", 0, Head + "x/y"},
    {"EmptyToLogical", Head + "x", "", 0, Head + "x"},
    {"Longest", "/a", std::string(1024, 'b'), 0, "/a/" + std::string(1024, 'b')},
    {"TooLong", "/a", std::string(1025, 'b'), VEL::StatusPathTooLong, "/a"},
    {"TooLongBySlash", "/a", std::string(1024, 'b') + "/", VEL::StatusPathTooLong, "/a"},
    {"TooLongToWeb", "http://h", std::string(1025, 'b'), VEL::StatusPathTooLong, "http://h"},
    {"ToInvalid", "QORDLN://x", "y", VEL::StatusFailure, "QORDLN://x/y"},
    {"DotToInvalid", "QORDLN://x", ".", 0, "QORDLN://x", true},
};

class Appending : public testing::TestWithParam<AppendRow> {
protected:
    void Check(const std::function<int(VELSysPath&)>& append) const {
        const AppendRow& row = GetParam();
        VELSysPath path = WithStat(row.path);
        State expected = StateOf(path);
        expected.text = row.text;
        expected.isStatValid = row.isStatValid;
        EXPECT_EQ(append(path), row.code);
        EXPECT_EQ(StateOf(path), expected);
    }
};

TEST_P(Appending, OfEveryFormIsTheSame) {
    const std::string piece = GetParam().piece;
    const QORUnicodeString units = Unicode(piece);
    for (const char* const codePage : {StringEnvironment::UTF8, StringEnvironment::OneToOne}) {
        StringEnvironment::UseCodePage(codePage);
        Check([&](VELSysPath& path) { return path.Append(piece.c_str()); });
        Check([&](VELSysPath& path) { return path.append(piece.c_str()); });
        Check([&](VELSysPath& path) { return path.Append(units.ConvertToUCChar()); });
        Check([&](VELSysPath& path) { return path.append(units.ConvertToUCChar()); });
        Check([&](VELSysPath& path) { return path.Append(Unicode(piece)); });
        Check([&](VELSysPath& path) { return path.append(Unicode(piece)); });
        Check([&](VELSysPath& path) { return path.Append(ThreadSafe(piece)); });
        Check([&](VELSysPath& path) { return path.append(ThreadSafe(piece)); });
        Check([&](VELSysPath& path) {
            int rc = 1;
            EXPECT_EQ(&path.Add(Unicode(piece), &rc), &path);
            return rc;
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Appending, testing::ValuesIn(AppendRows), NameOfRow<AppendRow>);

TEST(AppendedPath, GivesItsStoredText) {
    VELSysPath path = WithStat("/a");
    EXPECT_EQ(path.Append(PathOf("/b")), 0);
    EXPECT_EQ(StateOf(path), (State{"/a/b", Absolute, 1}));
    EXPECT_EQ(path.append(PathOf("c")), 0);
    EXPECT_EQ(path.Append(PathOf("http://h")), 0);
    EXPECT_EQ(StateOf(path), (State{"/a/b/c/http://h", Absolute, 1}));
    EXPECT_EQ(path.Append(VELSysPath()), 0) << "no text counts as empty";
    int rc = 0;
    EXPECT_EQ(&path.Add(PathOf("d"), &rc), &path);
    EXPECT_EQ(StateOf(path).text, "/a/b/c/http://h/d");
}

TEST(AppendedPath, MayBeThePathItself) {
    VELSysPath path = PathOf("/a");
    EXPECT_EQ(path.Append(path), 0);
    EXPECT_EQ(StateOf(path), (State{"/a/a", Absolute, 1}));
    for (int i = 0; i < 5; ++i) {
        path.Append(path);
    }
    EXPECT_EQ(StateOf(path).text.size(), 128u);
}

TEST(Append, NullCountsAsEmpty) {
    VELSysPath path = WithStat("http://h");
    EXPECT_EQ(path.Append(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(StateOf(path), (State{"http://h/", Http, 7}));
    EXPECT_EQ(path.Append(static_cast<const unsigned short*>(nullptr)), 0);
    EXPECT_EQ(StateOf(path), (State{"http://h/", Http, 7}));
}

TEST(Append, WhatIsNoUTF8ChangesNothing) {
    VELSysPath path = WithStat("/a");
    EXPECT_EQ(path.Append("b\xff"), VEL::StatusBadArgument);
    EXPECT_EQ(path.Append(QORUnicodeString("b\xff")), VEL::StatusBadArgument);
    EXPECT_EQ(path.Append(Units(u"\xdc00")), VEL::StatusBadArgument);
    EXPECT_EQ(path.Append((std::string(2000, 'a') + "\xff").c_str()), VEL::StatusBadArgument);
    EXPECT_EQ(StateOf(path), (State{"/a", Absolute, 1, true}));
}

TEST(Append, WithoutATextFails) {
    VELSysPath path;
    EXPECT_EQ(path.Append("a"), VEL::StatusFailure);
    EXPECT_EQ(path.Append(Units(u"a")), VEL::StatusFailure);
    EXPECT_EQ(path.Append(Unicode("a")), VEL::StatusFailure);
    EXPECT_EQ(path.Append(static_cast<const char*>(nullptr)), VEL::StatusFailure);
    EXPECT_EQ(path.Append("."), VEL::StatusFailure);
    EXPECT_EQ(path.Append("\xff"), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), Nothing());
}

TEST(Append, MakesAnEmptyTextAbsolute) {
    VELSysPathImpl impl;
    PathAccess::SetText(impl, "", 0);
    PathAccess::Mask(impl) = Relative;
    EXPECT_EQ(impl.append("a"), 0);
    EXPECT_EQ(StateOf(impl), (State{"/a", Relative, 0})) << "by its text alone";
}

TEST(Append, ClearsTheReservedBit) {
    VELSysPath path = PathOf("/a");
    PathAccess::Mask(*PathAccess::Of(path)) |= Reserved;
    EXPECT_EQ(path.GetTypeMask(), Absolute | Reserved);
    EXPECT_EQ(path.getType(), Absolute) << "the low byte";
    path.Append(".");
    EXPECT_EQ(path.GetTypeMask(), Absolute | Reserved);
    path.Append("");
    EXPECT_EQ(path.GetTypeMask(), Absolute);
}

TEST(Append, StopsShortOf65536Bytes) {
    VELSysPath path = PathOf("/");
    const std::string piece(1023, 'a');
    for (int i = 0; i < 63; ++i) {
        ASSERT_EQ(path.Append(piece.c_str()), 0);
    }
    ASSERT_EQ(path.Append(std::string(1022, 'b').c_str()), 0);
    EXPECT_EQ(StateOf(path).text.size(), 65535u);
    const State full = StateOf(path);
    EXPECT_EQ(path.Append("c"), VEL::StatusFailure);
    EXPECT_EQ(path.Append(path), VEL::StatusPathTooLong);
    EXPECT_EQ(path.AddExtension("c"), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(""), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(Unicode("c")), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(std::string(100000, 'c').c_str()), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), full);
    EXPECT_FALSE(path.Exists(0));
    const VELSysPath copy(path);
    EXPECT_TRUE(copy == path);
    int rc = 0;
    EXPECT_EQ(StateOf(copy.GetParent(&rc)).text.size(), 65535u - 1023);
}

TEST(Chains, KeepTheFirstFailure) {
    VELSysPath path = PathOf("/a");
    int rc = 0;
    path.Add(Unicode("b"), &rc).Add(PathOf("c"), &rc).Add(QORUnicodeString("\xff"), &rc).Add(Unicode("d"), &rc);
    EXPECT_EQ(rc, VEL::StatusBadArgument);
    EXPECT_EQ(StateOf(path).text, "/a/b/c");
    path.Add(PathOf("d"), &rc).RemExtension(&rc);
    EXPECT_EQ(rc, VEL::StatusBadArgument);
    EXPECT_EQ(StateOf(path.GetParent(&rc)), Nothing());
    EXPECT_EQ(StateOf(path.GetName(&rc)), Nothing());
    EXPECT_EQ(StateOf(path).text, "/a/b/c");
    path.Add(Unicode("d"), nullptr).RemExtension(nullptr);
    EXPECT_EQ(StateOf(path).text, "/a/b/c/d");
    rc = 1;
    EXPECT_EQ(StateOf(path.GetParent(&rc)).text, "/a/b/c") << "a note doesn't end a chain";
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(StateOf(path.GetParent(nullptr)).text, "/a/b/c");
    EXPECT_EQ(StateOf(path.GetName(nullptr)).text, "d");
}

// Extensions.

struct ExtensionRow {
    const char* name;
    std::string path;
    std::optional<std::string> extension;
    std::optional<std::string> removed; ///< What is left without the extension; nothing where it can't be removed.
};

const ExtensionRow ExtensionRows[] = {
    {"Absolute", "/a/b.c", "c", "/a/b"},
    {"Last", "x.tar.gz", "gz", "x.tar"},
    {"DotAtTheEnd", "x.", std::nullopt, "x"},
    {"InTheDirectory", "/a.b/c", std::nullopt, std::nullopt},
    {"HiddenRelative", ".profile", std::nullopt, std::nullopt},
    {"HiddenAbsolute", "/a/.profile", "profile", std::nullopt},
    {"HiddenBehindSlash", "a/.b", "b", std::nullopt},
    {"HiddenWithExtension", ".a.b", "b", ".a"},
    {"None", "/a/b", std::nullopt, std::nullopt},
    {"NoneRelative", "a", std::nullopt, std::nullopt},
    {"DotDotX", "..x", "x", std::nullopt},
    {"DotDotXBehindSlash", "a/..x", "x", std::nullopt},
    {"ThreeDots", "...", std::nullopt, ".."},
    {"DotDot", "..", std::nullopt, std::nullopt},
    {"Dot", ".", std::nullopt, std::nullopt},
    {"Umlaut", "/\u00e4.\u00f6", "\u00f6", "/\u00e4"},
    {"Web", "http://h/x.y", "y", "http://h/x"},
    {"WebHost", "http://h.y", "y", "http://h"},
    {"LogicalWithoutSlash", Head + "x.y", std::nullopt, Head + "x"},
    {"Logical", Head + "a/x.y", "y", Head + "a/x"},
    {"Slash", "a.b//", std::nullopt, std::nullopt},
    {"Root", "/", std::nullopt, std::nullopt},
    {"Invalid", "QORDLN://x.y", "y", "QORDLN://x"},
    {"InvalidFlat", "QORDLN:/.y", "y", std::nullopt},
};

class Extensions : public testing::TestWithParam<ExtensionRow> {};

TEST_P(Extensions, AreFound) {
    const ExtensionRow& row = GetParam();
    const VELSysPath path = WithStat(row.path);
    const State before = StateOf(path);
    QORUnicodeString extension("former");
    QORSysTSUnicodeString threadSafe("former");
    const int code = row.extension.has_value() ? 0 : VEL::StatusFailure;
    EXPECT_EQ(path.GetExtension(extension), code);
    EXPECT_EQ(path.getExtension(threadSafe), code);
    EXPECT_EQ(UTF8Of(extension), row.extension.value_or("former"));
    EXPECT_EQ(UTF8Of(threadSafe), row.extension.value_or("former"));
    EXPECT_EQ(StateOf(path), before);
}

TEST_P(Extensions, AreRemoved) {
    const ExtensionRow& row = GetParam();
    VELSysPath path = WithStat(row.path);
    State expected = StateOf(path);
    int rc = 7;
    EXPECT_EQ(&path.RemExtension(&rc), &path);
    EXPECT_EQ(rc, row.removed.has_value() ? 0 : VEL::StatusFailure);
    if (row.removed.has_value()) {
        expected.text = *row.removed;
        expected.isStatValid = false;
    }
    EXPECT_EQ(StateOf(path), expected);
}

INSTANTIATE_TEST_SUITE_P(Table, Extensions, testing::ValuesIn(ExtensionRows), NameOfRow<ExtensionRow>);

TEST(Extension, WithoutATextFails) {
    VELSysPath path;
    QORUnicodeString extension;
    int rc = 0;
    EXPECT_EQ(path.GetExtension(extension), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension("a"), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(Units(u"a")), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(Unicode("a")), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension("\xff"), VEL::StatusBadArgument) << "that is looked at first";
    EXPECT_EQ(path.AddExtension(Units(u"\xd800")), VEL::StatusFailure) << "and of 16-bit text isn't";
    EXPECT_EQ(path.RemExtension(Unicode("a")), VEL::StatusFailure);
    path.RemExtension(&rc);
    EXPECT_EQ(rc, VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), Nothing());
}

TEST(Extension, RemovedDownToNothingOfAPathLeavesItInvalid) {
    VELSysPath path = PathOf(Head + ".x");
    int rc = 0;
    path.RemExtension(&rc);
    EXPECT_EQ(rc, VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), (State{Head, Invalid, 3}));
}

TEST(Extension, IsAddedBehindADot) {
    VELSysPath path = WithStat("a");
    EXPECT_EQ(path.AddExtension("txt"), 0);
    EXPECT_EQ(StateOf(path), (State{"a.txt", Relative, 0}));
    EXPECT_EQ(path.AddExtension(".gz"), 0);
    EXPECT_EQ(StateOf(path).text, "a.txt.gz");
    EXPECT_EQ(path.AddExtension(Units(u"\u00e4")), 0);
    EXPECT_EQ(path.addExtension(Units(u".b")), 0);
    EXPECT_EQ(path.addExtension("c"), 0);
    EXPECT_EQ(StateOf(path).text, "a.txt.gz.\u00e4.b.c");
    EXPECT_EQ(path.AddExtension(""), 0);
    EXPECT_EQ(StateOf(path).text, "a.txt.gz.\u00e4.b.c.");
}

TEST(Extension, OfAStringIsAddedWithoutADot) {
    VELSysPath path = WithStat("a");
    EXPECT_EQ(path.AddExtension(Unicode("txt")), 0);
    EXPECT_EQ(StateOf(path), (State{"atxt", Relative, 0}));
    EXPECT_EQ(path.addExtension(Unicode(".b")), 0);
    EXPECT_EQ(path.addExtension(ThreadSafe("c")), 0);
    EXPECT_EQ(StateOf(path).text, "atxt.bc");
    path = WithStat("a");
    EXPECT_EQ(path.AddExtension(QORUnicodeString()), VEL::StatusFailure);
    EXPECT_EQ(path.addExtension(QORSysTSUnicodeString()), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), (State{"a", Relative, 0, true}));
}

TEST(Extension, ThatIsRefusedChangesNothing) {
    VELSysPath path = WithStat("a");
    EXPECT_EQ(path.AddExtension(static_cast<const char*>(nullptr)), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(static_cast<const unsigned short*>(nullptr)), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension("\xff"), VEL::StatusBadArgument);
    EXPECT_EQ(path.AddExtension(Units(u"\xd800")), VEL::StatusBadArgument);
    EXPECT_EQ(path.AddExtension(QORUnicodeString("\xff")), VEL::StatusBadArgument);
    EXPECT_EQ(StateOf(path), (State{"a", Relative, 0, true}));
}

TEST(Extension, StandsBehindATrailingSlash) {
    VELSysPath path = PathOf("a//");
    EXPECT_EQ(path.AddExtension("b"), 0);
    EXPECT_EQ(StateOf(path), (State{"a/.b", Relative, 0}));
    path = PathOf("QORDLN://x");
    EXPECT_EQ(path.AddExtension("b"), 0) << "an invalid path takes one too";
    EXPECT_EQ(StateOf(path), (State{"QORDLN://x.b", Invalid, 0}));
    path = PathOf("a");
    EXPECT_EQ(path.AddExtension(std::string(3000, 'b').c_str()), 0) << "length counts for pieces alone";
    EXPECT_EQ(StateOf(path).text.size(), 3002u);
}

struct RemovalRow {
    const char* name;
    std::string path;
    std::string extension;
    std::optional<State> state; ///< Nothing where it is refused.
};

const RemovalRow RemovalRows[] = {
    {"WithDot", "/a/b.txt", ".txt", State{"/a/b", Absolute, 1}},
    {"WithoutDot", "/a/b.txt", "txt", State{"/a/b", Absolute, 1}},
    {"OfTwo", "/a/b.tar.gz", "tar.gz", State{"/a/b", Absolute, 1}},
    {"Case", "/a/b.TXT", "txt", std::nullopt},
    {"Other", "/a/b.txt", "tx", std::nullopt},
    {"NotAtTheDot", "/a/btxt", "txt", std::nullopt},
    {"AllOfTheName", "/a/.txt", "txt", std::nullopt},
    {"Shorter", "/a/t", "txt", std::nullopt},
    {"Flat", "b.txt", "txt", State{"b", Relative, 0}},
    {"AtRoot", "/b.txt", "txt", State{"/b", Absolute, 1}},
    {"Web", "http://h/b.txt", "txt", State{"http://h/b", Http, 7}},
    {"WebHost", "http://h.txt", "txt", State{"http://h", Http, 7}},
    {"Logical", Head + "a/b.txt", "txt", State{Head + "a/b", Logical, 3}},
    {"Slash", "b.txt//", "txt", std::nullopt},
    {"Empty", "/a/b.", "", State{"/a/b", Absolute, 1}},
    {"NothingButTheDot", "/a/b.", ".", State{"/a/b", Absolute, 1}},
    {"LeavesADot", "/a/..txt", "txt", State{"/a", Absolute, 1}},
    {"Invalid", "QORDLN://b.txt", "txt", std::nullopt},
    {"Umlaut", "/a/\u00e4.\u00f6", "\u00f6", State{"/a/\u00e4", Absolute, 1}},
};

class NamedExtension : public testing::TestWithParam<RemovalRow> {};

TEST_P(NamedExtension, IsRemoved) {
    const RemovalRow& row = GetParam();
    for (const bool isThreadSafe : {false, true}) {
        VELSysPath path = WithStat(row.path);
        const State expected = row.state.value_or(StateOf(path));
        const int code =
            isThreadSafe ? path.removeExtension(ThreadSafe(row.extension)) : path.RemExtension(Unicode(row.extension));
        EXPECT_EQ(code, row.state.has_value() ? 0 : VEL::StatusFailure);
        EXPECT_EQ(StateOf(path), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, NamedExtension, testing::ValuesIn(RemovalRows), NameOfRow<RemovalRow>);

TEST(NamedExtension, LeavesThePathWhenTheStemIsTooLong) {
    VELSysPath path = PathOf("http://h/" + std::string(1025, 'a') + ".txt");
    const State before = StateOf(path);
    EXPECT_EQ(path.RemExtension(Unicode("txt")), VEL::StatusPathTooLong);
    EXPECT_EQ(StateOf(path), before);
}

// Splitting.

struct SplitRow {
    const char* name;
    std::string path;
    int code;
    State parent;
    std::string component;
};

const State Former{"former", Relative, 0};

const SplitRow SplitRows[] = {
    {"Absolute", "/a/b", 0, {"/a", Absolute, 1}, "b"},
    {"AtRoot", "/a", 0, {"/", Absolute, 1}, "a"},
    {"Root", "/", 1, Former, ""},
    {"Flat", "a", 1, Former, "a"},
    {"Relative", "a/b/c", 0, {"a/b", Relative, 0}, "c"},
    {"Web", "http://h/x", 0, {"http://h", Http, 7}, "x"},
    {"WebHost", "http://h", 1, Former, "http://h"},
    {"Webs", "https://h/x/y", 0, {"https://h/x", Https, 8}, "y"},
    {"WebWithoutHost", "http:///x", 0, {"http://", Http, 7}, "x"},
    {"Logical", Head + "x/y", 0, {Head + "x", Logical, 3}, "y"},
    {"LogicalFlat", Head + "x", 1, Former, Head + "x"},
    {"LogicalHead", Head + "/x", 0, {Head, Logical, 3}, "x"},
    {"SlashIsHidden", "a/b//", 0, {"a", Relative, 0}, "b"},
    {"SlashIsHiddenFlat", "a//", 1, Former, "a"},
    {"DoubleSlash", "a//b", 0, {"a/", Relative, 0}, "b"},
    {"RootTwice", "//b", 0, {"/", Absolute, 1}, "b"},
    {"RootThrice", "///", 0, {"/", Absolute, 1}, ""},
    {"WebRoot", "http:///", 1, Former, "http:/"},
    {"Umlaut", "/\u00e4/\u00f6", 0, {"/\u00e4", Absolute, 1}, "\u00f6"},
    {"Invalid", "QORDLN://x/y", VEL::StatusFailure, Former, "unchanged"},
};

class Splitting : public testing::TestWithParam<SplitRow> {};

TEST_P(Splitting, GivesParentAndName) {
    const SplitRow& row = GetParam();
    const VELSysPath path = WithStat(row.path);
    const State before = StateOf(path);
    VELSysPath parent = PathOf("former");
    QORSysTSUnicodeString name("unchanged");
    EXPECT_EQ(path.split(parent, name), row.code);
    EXPECT_EQ(StateOf(parent), row.parent);
    EXPECT_EQ(UTF8Of(name), row.component);
    EXPECT_EQ(StateOf(path), before);
}

TEST_P(Splitting, IntoItself) {
    const SplitRow& row = GetParam();
    VELSysPath path = PathOf(row.path);
    const State expected = row.code == 0 ? row.parent : StateOf(path);
    QORSysTSUnicodeString name("unchanged");
    EXPECT_EQ(path.split(path, name), row.code);
    EXPECT_EQ(StateOf(path), expected);
    EXPECT_EQ(UTF8Of(name), row.component);
}

TEST_P(Splitting, GivesTheParentAsAPath) {
    const SplitRow& row = GetParam();
    int rc = 77;
    const VELSysPath parent = PathOf(row.path).GetParent(&rc);
    EXPECT_EQ(rc, row.code);
    EXPECT_EQ(StateOf(parent), row.code == 0 ? row.parent : Nothing());
}

TEST_P(Splitting, GivesTheNameAsAPath) {
    const SplitRow& row = GetParam();
    const VELSysPath path = WithStat(row.path);
    int rc = 77;
    const VELSysPath name = path.GetName(&rc);
    if (row.code != 0) {
        EXPECT_EQ(rc, 0);
        EXPECT_EQ(StateOf(name), StateOf(path)) << "a copy, where there is no parent";
        return;
    }
    EXPECT_EQ(rc, row.component.empty() ? VEL::StatusFailure : 0);
    EXPECT_EQ(StateOf(name), row.component.empty() ? Nothing() : (State{row.component, Relative, 0}));
}

INSTANTIATE_TEST_SUITE_P(Table, Splitting, testing::ValuesIn(SplitRows), NameOfRow<SplitRow>);

TEST(Split, OfAPathWithoutTextFails) {
    VELSysPath parent = PathOf("former");
    QORSysTSUnicodeString name("unchanged");
    EXPECT_EQ(VELSysPath().split(parent, name), VEL::StatusFailure);
    EXPECT_EQ(VELSysPath().split(parent, name, name, name), VEL::StatusFailure);
    EXPECT_EQ(StateOf(parent), Former);
    EXPECT_EQ(UTF8Of(name), "unchanged");
    int rc = 5;
    EXPECT_EQ(StateOf(VELSysPath().GetName(&rc)), Nothing());
    EXPECT_EQ(rc, 0);
    rc = 5;
    EXPECT_EQ(PathAccess::Of(Empty().GetName(&rc)) != nullptr, true);
    EXPECT_EQ(rc, 0);
}

TEST(Name, BelowAParentThatIsNoPathIsTheWholeText) {
    VELSysPath path = PathOf("QORDLN:");
    ASSERT_EQ(path.Append("//x/y"), 0);
    const State whole = {"QORDLN://x/y", Relative, 0};
    ASSERT_EQ(StateOf(path), whole);
    int rc = 0;
    EXPECT_EQ(StateOf(path.GetName(&rc)), whole);
    EXPECT_EQ(rc, 0);
}

TEST(Name, ThatIsTooLongForAPathFails) {
    int rc = 0;
    const VELSysPath name = PathOf("http://h/" + std::string(1025, 'a')).GetName(&rc);
    EXPECT_EQ(rc, VEL::StatusPathTooLong);
    EXPECT_FALSE(name.IsValid());
}

struct FourRow {
    const char* name;
    std::string path;
    int code;
    State parent;
    std::string directory;
    std::string stem;
    std::string extension;
    std::string baseName;
};

const FourRow FourRows[] = {
    {"Full", "/x/y/f.e", 0, {"/x", Absolute, 1}, "y", "f", "e", "f.e"},
    {"TwoDots", "/x/y/f.e.d", 0, {"/x", Absolute, 1}, "y", "f.e", "d", "f.e.d"},
    {"OneDirectory", "/y/f.e", 0, {"/", Absolute, 1}, "y", "f", "e", "f.e"},
    {"AtRoot", "/f.e", 0, Former, "", "f", "e", "f.e"},
    {"Relative", "y/f.e", 0, Former, "y", "f", "e", "f.e"},
    {"Flat", "f.e", VEL::StatusFailure, Former, "unchanged", "f", "e", ""},
    {"NoExtension", "/x/y/f", VEL::StatusFailure, Former, "unchanged", "unchanged", "unchanged", ""},
    {"Hidden", "/x/y/.e", 0, {"/x", Absolute, 1}, "y", "", "e", ".e"},
    {"Web", "http://h/x/f.e", 0, {"http://h", Http, 7}, "x", "f", "e", "f.e"},
    {"WebHost", "http://h/f.e", 0, Former, "http://h", "f", "e", "f.e"},
    {"Invalid", "QORDLN://x/f.e", VEL::StatusFailure, Former, "unchanged", "unchanged", "e", ""},
};

class FourWaySplit : public testing::TestWithParam<FourRow> {};

TEST_P(FourWaySplit, GivesItsParts) {
    const FourRow& row = GetParam();
    const VELSysPath path = PathOf(row.path);
    VELSysPath parent = PathOf("former");
    QORSysTSUnicodeString directory("unchanged");
    QORSysTSUnicodeString stem("unchanged");
    QORSysTSUnicodeString extension("unchanged");
    EXPECT_EQ(path.split(parent, directory, stem, extension), row.code);
    EXPECT_EQ(StateOf(parent), row.parent);
    EXPECT_EQ(UTF8Of(directory), row.directory);
    EXPECT_EQ(UTF8Of(stem), row.stem);
    EXPECT_EQ(UTF8Of(extension), row.extension);
    EXPECT_EQ(StateOf(path), StateOf(PathOf(row.path)));
}

TEST_P(FourWaySplit, GivesTheBaseName) {
    const FourRow& row = GetParam();
    QORUnicodeString name("former");
    EXPECT_EQ(VELSysPathBaseName(PathOf(row.path), name), row.code);
    EXPECT_EQ(UTF8Of(name), row.baseName);
}

INSTANTIATE_TEST_SUITE_P(Table, FourWaySplit, testing::ValuesIn(FourRows), NameOfRow<FourRow>);

TEST(BaseName, OfNothingIsEmpty) {
    QORUnicodeString name("former");
    EXPECT_EQ(VELSysPathBaseName(Empty(), name), VEL::StatusFailure);
    EXPECT_TRUE(name.IsEmpty());
}

TEST(Entries, AreJoinedToTheirDirectory) {
    VELSysPathImpl entry;
    const auto join = [&](const std::string& owner, const std::string& name) {
        const VELSysPath path = PathOf(owner);
        return PathAccess::SetEntry(entry, *PathAccess::Of(path), name.data(), name.size());
    };
    EXPECT_TRUE(join("/a", "b"));
    EXPECT_EQ(StateOf(entry), (State{"/a/b", Absolute, 1}));
    EXPECT_TRUE(join("/", "c"));
    EXPECT_EQ(StateOf(entry), (State{"/c", Absolute, 1}));
    EXPECT_TRUE(join(Head + "x", "y"));
    EXPECT_EQ(StateOf(entry), (State{Head + "x/y", Logical, 3}));
    EXPECT_FALSE(join("", "y"));
}

} // namespace
