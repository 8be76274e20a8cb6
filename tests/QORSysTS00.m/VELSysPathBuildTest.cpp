/// @file
/// Setting paths: what is taken, what is refused, which kind it is; copies and comparison.

#include "PathSupport.h"
#include "PathTrace.h"
#include "StringEnvironment.h"
#include "VELSysStatus.h"
#include "VirtualTable.h"

#include <gmock/gmock.h>
#include <utility>

namespace {

using namespace PathSupport;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string Head = "\x01\x02\\";

/// What a text becomes by each way of building.
struct BuildRow {
    const char* name;
    std::string text;
    int code;
    State state;
};

const BuildRow Rows[] = {
    {"Absolute", "/a/b", 0, {"/a/b", Absolute, 1}},
    {"Root", "/", 0, {"/", Absolute, 1}},
    {"TwoSlashes", "//", 0, {"/", Absolute, 1}},
    {"AbsoluteSlash", "/a/", 0, {"/a", Absolute, 1}},
    {"Relative", "a/b", 0, {"a/b", Relative, 0}},
    {"OneByte", "a", 0, {"a", Relative, 0}},
    {"RelativeSlash", "a/", 0, {"a", Relative, 0}},
    {"OnlyOneSlashGoes", "a//", 0, {"a/", Relative, 0}},
    {"Dots", "./../.", 0, {"./../.", Relative, 0}},
    {"Http", "http://h", 0, {"http://h", Http, 7}},
    {"HttpSlash", "http://h/", 0, {"http://h", Http, 7}},
    {"HttpAlone", "http://", VEL::StatusFailure, {"http://", Invalid, 7}},
    {"HttpTwoSlashes", "http:///", 0, {"http://", Http, 7}},
    {"HttpsAlone", "https://", VEL::StatusFailure, {"https://", Invalid, 8}},
    {"Https", "https://h/x?y=z}", 0, {"https://h/x?y=z}", Https, 8}},
    {"HttpUpper", "HTTP://h", 0, {"HTTP://h", Relative, 0}},
    {"HttpShort", "http:/", 0, {"http:", Relative, 0}},
    {"OtherScheme", "ftp://h", 0, {"ftp://h", Relative, 0}},
    {"HttpTilde", "http://h/~x", VEL::StatusFailure, {"http://h/~x", Invalid, 7}},
    {"HttpControl", "http://h/\x1f", VEL::StatusFailure, {"http://h/\x1f", Invalid, 7}},
    {"HttpBlank", "http://h/ x", 0, {"http://h/ x", Http, 7}},
    {"HttpUmlaut", "http://h/\u00e4", VEL::StatusFailure, {"http://h/\u00e4", Invalid, 7}},
    {"HttpsDelete", "https://h\x7f", VEL::StatusFailure, {"https://h\x7f", Invalid, 8}},
    {"LocalTilde", "/home/~x", 0, {"/home/~x", Absolute, 1}},
    {"LocalControls", "/\x01\n\t*?", 0, {"/\x01\n\t*?", Absolute, 1}},
    {"Logical", Head + "doc", 0, {Head + "doc", Logical, 3}},
    {"LogicalSlash", Head + "doc/", 0, {Head + "doc", Logical, 3}},
    {"LogicalHeadAlone", Head, VEL::StatusFailure, {Head, Invalid, 3}},
    {"LogicalHeadPart", "\x01\x02", 0, {"\x01\x02", Relative, 0}},
    {"LogicalScheme", "QORDLN://x", 0, {"QORDLN://x", Invalid, 0}},
    {"LogicalSchemeSlash", "QORDLN://x/", 0, {"QORDLN://x", Invalid, 0}},
    {"LogicalSchemeAlone", "QORDLN://", 0, {"QORDLN:/", Relative, 0}},
    {"LogicalSchemeUmlaut", "QORDLN://\u00e4", 0, {"QORDLN://\u00e4", Invalid, 0}},
    {"Vault", "RBQVAULT://x", 0, {"RBQVAULT://x", Relative, 0}},
    {"Umlaut", "/\u00e4\U0001F600", 0, {"/\u00e4\U0001F600", Absolute, 1}},
    {"LongestLocal", std::string(1024, 'a'), 0, {std::string(1024, 'a'), Relative, 0}},
    {"TooLongLocal", std::string(1025, 'a'), VEL::StatusPathTooLong, {std::string(1025, 'a'), Invalid, 0}},
    {"TooLongBySlash",
     std::string(1024, 'a') + "/",
     VEL::StatusPathTooLong,
     {std::string(1024, 'a') + "/", Invalid, 0}},
    {"TooLongLogical",
     Head + std::string(1022, 'a'),
     VEL::StatusPathTooLong,
     {Head + std::string(1022, 'a'), Invalid, 3}},
    {"TooLongScheme",
     "QORDLN://" + std::string(1016, 'a'),
     VEL::StatusPathTooLong,
     {"QORDLN://" + std::string(1016, 'a'), Invalid, 0}},
    {"LongWeb", "http://" + std::string(2000, 'a'), 0, {"http://" + std::string(2000, 'a'), Http, 7}},
    {"LongestWeb", "http://" + std::string(65528, 'a'), 0, {"http://" + std::string(65528, 'a'), Http, 7}},
    {"TooLongWeb", "http://" + std::string(65529, 'a'), VEL::StatusFailure, Nothing()},
    {"FarTooLongLocal", std::string(70000, 'a'), VEL::StatusPathTooLong, Nothing()},
    {"NoUTF8", "/a\xff", VEL::StatusBadArgument, Nothing()},
    {"Overlong", "\xc0\xaf", VEL::StatusBadArgument, Nothing()},
    {"Surrogate", "a\xed\xa0\x80", VEL::StatusBadArgument, Nothing()},
};

std::u16string UTF16Of(const std::string& utf8) {
    const QORUnicodeString s = Unicode(utf8);
    return {s.ConvertToUCChar(), s.ConvertToUCChar() + s.GetLengthInChar()};
}

class PathBuild : public testing::TestWithParam<std::tuple<BuildRow, const char*>> {
protected:
    void SetUp() override { StringEnvironment::UseCodePage(std::get<1>(GetParam())); }
    const BuildRow& Row() const { return std::get<0>(GetParam()); }
    bool IsText() const { return Row().code != VEL::StatusBadArgument; }
};

TEST_P(PathBuild, FromUTF8) {
    VELSysPath path;
    EXPECT_EQ(path.Set(Row().text.c_str()), Row().code);
    EXPECT_EQ(StateOf(path), Row().state);
    EXPECT_EQ(path.IsValid(), (Row().state.mask & Invalid) == 0);
    EXPECT_EQ(path.IsAbsolute(), Row().state.mask == Absolute);
    EXPECT_EQ(path.IsRelative(), Row().state.mask == Relative);
    EXPECT_EQ(path.getType(), Row().state.mask);
    EXPECT_EQ(path.GetTypeMask(), Row().state.mask);
}

TEST_P(PathBuild, OverAnotherPath) {
    VELSysPath path = PathOf("http://another/longer/path/with/some/length");
    EXPECT_EQ(path.Set(Row().text.c_str()), Row().code);
    EXPECT_EQ(StateOf(path), Row().state);
}

TEST_P(PathBuild, FromUnits) {
    if (!IsText()) {
        return;
    }
    VELSysPath path;
    EXPECT_EQ(path.Set(Units(UTF16Of(Row().text).c_str())), Row().code);
    EXPECT_EQ(StateOf(path), Row().state);
}

TEST_P(PathBuild, FromStrings) {
    if (!IsText()) {
        return;
    }
    for (const QORUnicodeString& text : {Unicode(Row().text), Wide(UTF16Of(Row().text))}) {
        VELSysPath path;
        EXPECT_EQ(path.Set(text), Row().code);
        const State& expected = Row().state;
        EXPECT_EQ(StateOf(path), expected);
        EXPECT_EQ(StateOf(VELSysPath(text)), expected) << "the constructor drops the code";
    }
    VELSysPath path;
    EXPECT_EQ(path.Set(ThreadSafe(Row().text)), Row().code);
    EXPECT_EQ(StateOf(path), Row().state);
}

INSTANTIATE_TEST_SUITE_P(Table, PathBuild,
                         testing::Combine(testing::ValuesIn(Rows),
                                          testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne)),
                         [](const auto& row) {
                             const bool isUTF8 = std::string(std::get<1>(row.param)) == StringEnvironment::UTF8;
                             return std::string(std::get<0>(row.param).name) + (isUTF8 ? "" : "OneToOne");
                         });

TEST(PathBuilding, NullAndEmptyAreRefused) {
    for (const char* const former : {"", "/former"}) {
        VELSysPath path = PathOf(former);
        EXPECT_EQ(path.Set(static_cast<const char*>(nullptr)), VEL::StatusFailure);
        EXPECT_EQ(StateOf(path), Nothing());
        path = PathOf(former);
        EXPECT_EQ(path.Set(""), VEL::StatusBadArgument);
        EXPECT_EQ(StateOf(path), Nothing());
        path = PathOf(former);
        EXPECT_EQ(path.Set(static_cast<const unsigned short*>(nullptr)), VEL::StatusFailure);
        EXPECT_EQ(StateOf(path), Nothing());
        path = PathOf(former);
        EXPECT_EQ(path.Set(Units(u"")), VEL::StatusFailure);
        EXPECT_EQ(StateOf(path), Nothing());
        path = PathOf(former);
        EXPECT_EQ(path.Set(QORUnicodeString()), VEL::StatusFailure);
        EXPECT_EQ(StateOf(path), Nothing());
        path = PathOf(former);
        EXPECT_EQ(path.Set(QORSysTSUnicodeString()), VEL::StatusFailure);
        EXPECT_EQ(StateOf(path), Nothing());
    }
}

TEST(PathBuilding, UnpairedSurrogatesAreNoText) {
    VELSysPath path;
    EXPECT_EQ(path.Set(Units(u"/a\xdc00")), VEL::StatusBadArgument);
    EXPECT_EQ(path.Set(Wide(u"/a\xd800")), VEL::StatusBadArgument);
    EXPECT_EQ(StateOf(path), Nothing());
}

TEST(PathBuilding, NarrowStringsThatAreNoUTF8AreRefused) {
    VELSysPath path;
    EXPECT_EQ(path.Set(QORUnicodeString("/a\xff")), VEL::StatusBadArgument);
    EXPECT_EQ(StateOf(path), Nothing());
}

TEST(PathBuilding, AStringKeepsItsSlashBehindTextThatIsNotASCII) {
    VELSysPath path;
    for (const QORUnicodeString& text : {Unicode("/\u00e4/"), Wide(u"/\u00e4/")}) {
        EXPECT_EQ(path.Set(text), 0);
        EXPECT_EQ(StateOf(path), (State{"/\u00e4/", Absolute, 1}));
    }
    EXPECT_EQ(path.Set(Unicode("\U0001F600//")), 0);
    EXPECT_EQ(StateOf(path), (State{"\U0001F600//", Relative, 0}));
    EXPECT_EQ(path.Set(ThreadSafe("/\u00e4/")), 0);
    EXPECT_EQ(StateOf(path), (State{"/\u00e4/", Absolute, 1}));
    EXPECT_EQ(path.Set("/\u00e4/"), 0);
    EXPECT_EQ(StateOf(path), (State{"/\u00e4", Absolute, 1})) << "bytes lose it";
    EXPECT_EQ(path.Set(Units(u"/\u00e4/")), 0);
    EXPECT_EQ(StateOf(path), (State{"/\u00e4", Absolute, 1})) << "units lose it";
}

TEST(PathBuilding, EndsAtTheFirstZero) {
    using namespace std::literals;
    VELSysPath path;
    EXPECT_EQ(path.Set(Wide(u"/a\0b"s)), 0);
    EXPECT_EQ(StateOf(path), (State{"/a", Absolute, 1}));
    EXPECT_EQ(path.Set(Wide(u"\0b"s)), VEL::StatusFailure);
    EXPECT_EQ(path.Set(Unicode("/a\0b"s)), 0);
    EXPECT_EQ(StateOf(path), (State{"/a", Absolute, 1}));
}

TEST(PathBuilding, NarrowTextIsOfTheEnvironment) {
    StringEnvironment::UseCodePage(StringEnvironment::OneToOne);
    VELSysPath path;
    EXPECT_EQ(path.Set(QORUnicodeString("/\xe4")), 0);
    EXPECT_EQ(StateOf(path), (State{"/\u00e4", Absolute, 1}));
    EXPECT_EQ(UTF8Of(path.ToString(nullptr)), "/\u00e4");
    EXPECT_STREQ(path.ToString(nullptr).ConvertToChar(), "/\xe4");
}

TEST(PathBuilding, DropsWhatWasKnown) {
    GroupLibraryState& library = GroupLibrary();
    library.realPath = u"/";
    VELSysPath path = PathOf(Head + "x");
    EXPECT_TRUE(path.Exists(0));
    EXPECT_EQ(StateOf(path), (State{Head + "x", Logical, 3, true}));
    EXPECT_EQ(path.Set("a"), 0);
    EXPECT_EQ(StateOf(path), (State{"a", Relative, 0, false}));
    EXPECT_TRUE(PathAccess::Translated(*PathAccess::Of(path)).IsEmpty());
}

TEST(PathClassification, KeepsTheBitsThatAreThere) {
    VELSysPathImpl impl;
    EXPECT_EQ(impl.InitPathType(), VEL::StatusFailure);
    EXPECT_EQ(StateOf(impl), Nothing());
    impl.BuildFromUTF8("/a");
    PathAccess::Mask(impl) |= Reserved;
    EXPECT_EQ(impl.InitPathType(), 0);
    EXPECT_EQ(StateOf(impl), (State{"/a", Absolute | Reserved, 1}));
    impl.BuildFromUTF8("QORDLN://x");
    PathAccess::Mask(impl) = Logical;
    EXPECT_EQ(impl.InitPathType(), 0);
    EXPECT_EQ(StateOf(impl), (State{"QORDLN://x", Logical | Invalid, 0})) << "the invalid bit comes first";
}

// Objects.

TEST(PathObjects, HaveTheirSizes) {
    EXPECT_EQ(sizeof(VELSysPath), 16u);
    EXPECT_EQ(sizeof(VELSysPathImpl), 184u);
    EXPECT_TRUE(PathAccess::HasPinnedLayout());
}

TEST(PathObjects, StartWithoutAText) {
    EXPECT_EQ(StateOf(VELSysPath()), Nothing());
    EXPECT_EQ(VELSysPath().getType(), 1);
    EXPECT_FALSE(VELSysPath().IsValid());
}

TEST(PathObjects, HaveAVirtualDestructorFirst) {
    // A further operation stands behind the two slots of the destructor.
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<VELSysPath>::OneMore), 2);
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<VELSysPathImpl>::OneMore), 2);
}

TEST(PathObjects, CopiesHaveTheirOwnText) {
    VELSysPath path = PathOf("/");
    EXPECT_TRUE(path.Exists(0));
    const VELSysPath copy(path);
    EXPECT_EQ(StateOf(copy), (State{"/", Absolute, 1, true}));
    path.Append("proc");
    EXPECT_EQ(StateOf(copy), (State{"/", Absolute, 1, true}));
    VELSysPath assigned = PathOf("something/longer");
    assigned = copy;
    EXPECT_EQ(StateOf(assigned), (State{"/", Absolute, 1, true}));
    struct stat64 status = {};
    EXPECT_EQ(assigned.Stat(status, 0), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode)) << "the cache is copied";
    assigned = VELSysPath();
    EXPECT_EQ(StateOf(assigned), Nothing());
    const VELSysPath& same = assigned;
    assigned = same;
    EXPECT_EQ(StateOf(assigned), Nothing());
}

TEST(PathObjects, CopiesKeepWhatWasTranslated) {
    GroupLibrary().realPath = u"/x";
    VELSysPath path = PathOf(Head + "x");
    path.Exists(0);
    const VELSysPath copy(path);
    EXPECT_EQ(UTF8Of(PathAccess::Translated(*PathAccess::Of(copy))), "/x");
}

TEST(PathObjects, AssigningNothingMakesInvalidAndKeepsTheText) {
    VELSysPath path = PathOf("http://h/x");
    const VELSysPath nothing = Empty();
    path = nothing;
    EXPECT_EQ(StateOf(path), (State{"http://h/x", Invalid, 7}));
    VELSysPath empty = Empty();
    const VELSysPath another = Empty();
    empty = another;
    EXPECT_EQ(PathAccess::Of(empty), nullptr);
    empty = path;
    EXPECT_EQ(StateOf(empty), (State{"http://h/x", Invalid, 7})) << "an implementation is made";
}

TEST(PathObjects, MoveAssignmentExchanges) {
    VELSysPath a = PathOf("/a");
    VELSysPath b = PathOf("b");
    const VELSysPathImpl* const implA = PathAccess::Of(a);
    a = std::move(b);
    EXPECT_EQ(StateOf(a), (State{"b", Relative, 0}));
    EXPECT_EQ(StateOf(b), (State{"/a", Absolute, 1}));
    EXPECT_EQ(PathAccess::Of(b), implA);
    VELSysPath& same = a;
    a = std::move(same);
    EXPECT_EQ(StateOf(a), (State{"b", Relative, 0}));
    const VELSysPath moved(std::move(a));
    EXPECT_EQ(StateOf(moved), (State{"b", Relative, 0}));
    EXPECT_EQ(PathAccess::Of(a), nullptr);
}

TEST(PathObjects, WithoutImplementationAnswerPlainly) {
    VELSysPath path = Empty();
    const VELSysPath copy(path);
    EXPECT_EQ(PathAccess::Of(copy), nullptr);
    for (VELSysPath* const handle : {&path, const_cast<VELSysPath*>(&copy)}) {
        EXPECT_EQ(handle->Set("/a"), VEL::StatusNoObject);
        EXPECT_EQ(handle->Set(Units(u"/a")), VEL::StatusNoObject);
        EXPECT_EQ(handle->Set(Unicode("/a")), VEL::StatusNoObject);
        EXPECT_EQ(handle->Set(ThreadSafe("/a")), VEL::StatusNoObject);
        EXPECT_EQ(handle->getType(), 1);
        EXPECT_EQ(handle->GetTypeMask(), 0u);
        EXPECT_FALSE(handle->IsValid());
        EXPECT_FALSE(handle->IsAbsolute());
        EXPECT_FALSE(handle->IsRelative());
    }
}

TEST(PathObjects, WithoutImplementationRefuseEverything) {
    VELSysPath path = Empty();
    VELSysPath other = PathOf("/a");
    QORUnicodeString text("former");
    QORSysTSUnicodeString a;
    QORSysTSUnicodeString b;
    QORSysTSUnicodeString c;
    struct stat64 status = {};
    long modified = 0;
    long accessed = 0;
    int rc = 0;
    EXPECT_EQ(path.Append("a"), VEL::StatusFailure);
    EXPECT_EQ(path.Append(Units(u"a")), VEL::StatusFailure);
    EXPECT_EQ(path.Append(Unicode("a")), VEL::StatusFailure);
    EXPECT_EQ(path.Append(ThreadSafe("a")), VEL::StatusFailure);
    EXPECT_EQ(path.Append(other), VEL::StatusFailure);
    EXPECT_EQ(other.Append(path), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension("a"), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(Units(u"a")), VEL::StatusFailure);
    EXPECT_EQ(path.AddExtension(Unicode("a")), VEL::StatusFailure);
    EXPECT_EQ(path.addExtension(ThreadSafe("a")), VEL::StatusFailure);
    EXPECT_EQ(path.RemExtension(Unicode("a")), VEL::StatusFailure);
    EXPECT_EQ(&path.RemExtension(&rc), &path);
    EXPECT_EQ(rc, VEL::StatusFailure);
    EXPECT_EQ(path.GetExtension(text), VEL::StatusFailure);
    EXPECT_EQ(path.getExtension(a), VEL::StatusFailure);
    EXPECT_EQ(path.split(other, a), VEL::StatusFailure);
    EXPECT_EQ(path.split(other, a, b, c), VEL::StatusFailure);
    EXPECT_EQ(path.GetAsString(text), VEL::StatusFailure);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(path.getAsString(a), VEL::StatusFailure);
    rc = 0;
    EXPECT_TRUE(path.ToString(&rc).IsEmpty());
    EXPECT_EQ(rc, VEL::StatusFailure);
    rc = 0;
    EXPECT_EQ(StateOf(path.GetParent(&rc)), Nothing());
    EXPECT_EQ(rc, VEL::StatusFailure);
    EXPECT_EQ(path.Stat(status, 1), VEL::StatusFailure);
    EXPECT_FALSE(path.Exists(0));
    EXPECT_FALSE(path.IsFile(0));
    EXPECT_FALSE(path.IsDirectory(1));
    EXPECT_FALSE(path.CanRead(0));
    EXPECT_FALSE(path.CanWrite(0));
    EXPECT_EQ(path.GetTimes(modified, accessed), VEL::StatusFailure);
    EXPECT_EQ(path.SetTimes(1, 1), VEL::StatusFailure);
    EXPECT_EQ(path.MakeDir(), VEL::StatusFailure);
    EXPECT_EQ(path.Remove(1), VEL::StatusFailure);
    EXPECT_EQ(path.Chmod(0777), VEL::StatusFailure);
    EXPECT_EQ(path.Move(other), VEL::StatusFailure);
    EXPECT_TRUE(VELSysPathImpl::ToString_NoExtendedLengthPrefix(path).IsEmpty());
    path.PrintInTrace("label", 0);
    EXPECT_EQ(StateOf(other), (State{"/a", Absolute, 1}));
}

TEST(PathObjects, WithoutImplementationServeAsTargets) {
    VELSysPath parent = Empty();
    QORSysTSUnicodeString name;
    EXPECT_EQ(PathOf("/a/b").split(parent, name), 0);
    EXPECT_EQ(StateOf(parent), (State{"/a", Absolute, 1}));
}

// Comparison.

TEST(PathComparison, IgnoresTheCaseOfASCIIAlone) {
    EXPECT_TRUE(PathOf("/A/b") == PathOf("/a/B"));
    EXPECT_TRUE(PathOf("HTTP://H") == PathOf("http://h")) << "whatever the kinds";
    EXPECT_FALSE(PathOf("/\u00e4") == PathOf("/\u00c4"));
    EXPECT_FALSE(PathOf("a/b") == PathOf("a/./b"));
    EXPECT_FALSE(PathOf("a//") == PathOf("a"));
    EXPECT_TRUE(PathOf("a/") == PathOf("a"));
    EXPECT_FALSE(PathOf("a") == PathOf("ab"));
}

TEST(PathComparison, OfPathsWithoutText) {
    EXPECT_TRUE(VELSysPath() == VELSysPath());
    EXPECT_FALSE(VELSysPath() == PathOf("a"));
    EXPECT_FALSE(PathOf("a") == VELSysPath());
    EXPECT_TRUE(Empty() == Empty());
    EXPECT_TRUE(Empty() == VELSysPath());
    EXPECT_FALSE(Empty() == PathOf("a"));
    EXPECT_FALSE(PathOf("a") == Empty());
    VELSysPath kept = PathOf("a");
    const VELSysPath nothing = Empty();
    kept = nothing;
    EXPECT_TRUE(kept == PathOf("a")) << "an invalid path compares by its text";
}

TEST(PathComparison, WithTextBuildsAPathFirst) {
    const VELSysPath path = PathOf("/a/b");
    EXPECT_TRUE(path == "/A/B/");
    EXPECT_TRUE("/A/B/" == path);
    EXPECT_TRUE(path == Units(u"/a/b/"));
    EXPECT_TRUE(Units(u"/a/b/") == path);
    EXPECT_TRUE(path == Unicode("/a/B/"));
    EXPECT_TRUE(Unicode("/a/B/") == path);
    EXPECT_FALSE(path == "/a/b//");
    EXPECT_FALSE(path == Units(u"/a"));
    EXPECT_FALSE(path == Unicode("/a"));
}

TEST(PathComparison, WithTextThatIsNoPath) {
    VELSysPath invalid = PathOf("http://");
    ASSERT_EQ(StateOf(invalid), (State{"http://", Invalid, 7}));
    EXPECT_FALSE(invalid == "http://");
    EXPECT_FALSE("http://" == invalid);
    EXPECT_FALSE(invalid == Units(u"http://"));
    EXPECT_TRUE(invalid == Unicode("http://")) << "a string compares with what the failed build has left";
    EXPECT_TRUE(Unicode("http://") == invalid);
    EXPECT_FALSE(VELSysPath() == "");
    EXPECT_FALSE(VELSysPath() == static_cast<const char*>(nullptr));
    EXPECT_FALSE(VELSysPath() == static_cast<const unsigned short*>(nullptr));
    EXPECT_TRUE(VELSysPath() == QORUnicodeString());
    EXPECT_TRUE(Empty() == QORUnicodeString());
    EXPECT_FALSE(Empty() == "a");
    EXPECT_FALSE(Empty() == Unicode("a"));
    EXPECT_FALSE(PathOf("a") == QORUnicodeString());
}

// Text.

TEST(PathText, ComesBack) {
    const VELSysPath path = PathOf("/\u00e4/b");
    QORUnicodeString text;
    EXPECT_EQ(path.GetAsString(text), 0);
    EXPECT_EQ(UTF8Of(text), "/\u00e4/b");
    QORSysTSUnicodeString threadSafe;
    EXPECT_EQ(path.getAsString(threadSafe), 0);
    EXPECT_EQ(UTF8Of(threadSafe), "/\u00e4/b");
    int rc = 5;
    EXPECT_EQ(UTF8Of(path.ToString(&rc)), "/\u00e4/b");
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(UTF8Of(VELSysPathImpl::ToString_NoExtendedLengthPrefix(path)), "/\u00e4/b");
    rc = -7;
    EXPECT_TRUE(path.ToString(&rc).IsEmpty());
    EXPECT_EQ(rc, -7);
}

TEST(PathText, OfAPathWithoutAnyIsEmptyAndAFailure) {
    QORUnicodeString text("former");
    EXPECT_EQ(VELSysPath().GetAsString(text), VEL::StatusFailure);
    EXPECT_TRUE(text.IsEmpty());
    QORSysTSUnicodeString threadSafe("former");
    EXPECT_EQ(VELSysPath().getAsString(threadSafe), VEL::StatusFailure);
    EXPECT_EQ(threadSafe.GetLengthInChar(), 0);
    EXPECT_TRUE(VELSysPathImpl::ToString_NoExtendedLengthPrefix(VELSysPath()).IsEmpty());
}

// The trace.

TEST(PathTraces, AreMadeAtTheFirstUse) {
    PathTrace::isConfigured = true;
    const VELSysPath path = PathOf("/a");
    EXPECT_THAT(PathTrace::events, IsEmpty());
    path.PrintInTrace("Label", 3);
    path.PrintInTrace(nullptr, 0);
    VELSysPath().PrintInTrace("Nothing", 0);
    EXPECT_THAT(PathTrace::events,
                ElementsAre("create VELSysPath", "0: Label : Path is /a", "0:  : Path is /a", "0: Nothing : Path is "));
}

TEST(PathTraces, StayNullWhileNoneIsConfigured) {
    PathOf("/a").PrintInTrace("Label", 0);
    EXPECT_THAT(PathTrace::events, ElementsAre("create VELSysPath"));
    PathTrace::isConfigured = true;
    PathOf("/a").PrintInTrace("Label", 0);
    EXPECT_THAT(PathTrace::events, ElementsAre("create VELSysPath", "create VELSysPath", "0: Label : Path is /a"));
}

TEST(PathTraces, OfTheLoserOfARaceAreDestroyed) {
    PathTrace::isConfigured = true;
    PathTrace::insideCreate = [] { PathOf("/inner").PrintInTrace("Winner", 0); };
    PathOf("/outer").PrintInTrace("Loser", 0);
    EXPECT_THAT(PathTrace::events, ElementsAre("create VELSysPath", "create VELSysPath", "1: Winner : Path is /inner",
                                               "destroy 0", "1: Loser : Path is /outer"));
}

TEST(PathTraces, TellOfBuildsFromUTF8ThatFail) {
    PathTrace::isConfigured = true;
    PathOf("http://");
    PathOf("");
    PathOf("\xff");
    VELSysPath path;
    path.Set(static_cast<const char*>(nullptr));
    EXPECT_THAT(PathTrace::events,
                ElementsAre("create VELSysPath", "0: BuildFromUTF8 Failed : Path is http://",
                            "0: BuildFromUTF8 Failed : Path is ", "0: BuildFromUTF8 Failed : Path is ",
                            "0: BuildFromUTF8 Failed : Path is "));
    PathTrace::events.clear();
    path.Set(Units(u"http://"));
    path.Set(Unicode("http://"));
    PathOf("/fine");
    EXPECT_THAT(PathTrace::events, IsEmpty());
}

} // namespace
