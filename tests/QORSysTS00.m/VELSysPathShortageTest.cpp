/// @file
/// Paths when memory runs out at each request of each operation: a failure, a sound object, and no leak.

#include "HeapLog.h"
#include "PathSupport.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysStatus.h"

#include <functional>
#include <vector>

namespace {

using namespace PathSupport;

/// Directories that are made and removed.
std::string s_made;
std::string s_below;

void ExpectSound(const VELSysPath& path) {
    const VELSysPathImpl* const impl = PathAccess::Of(path);
    if (impl == nullptr) {
        return;
    }
    // Without memory of its own.
    const char* const text = PathAccess::Text(*impl);
    EXPECT_EQ(text != nullptr ? std::strlen(text) : 0, PathAccess::Length(*impl));
    EXPECT_TRUE(text != nullptr || PathAccess::IsInvalid(*impl));
}

struct Operation {
    const char* name;
    std::function<void(VELSysPath& path)> run;
};

const std::string LongText = "/a/path/of/some/length/" + std::string(900, 'x') + "/\u00e4/name.ext";

const std::vector<Operation>& Operations() {
    static const QORUnicodeString wide = Wide(u"/a/wide/t\u00e4xt/" + std::u16string(700, u'x'));
    static const QORUnicodeString extension = Unicode("ext");
    static const VELSysPath other = PathOf(LongText);
    static const std::u16string units = u"/units/" + std::u16string(700, u'x');
    static const std::vector<Operation> operations = {
        {"Construct", [](VELSysPath&) { ExpectSound(VELSysPath()); }},
        {"ConstructFrom", [](VELSysPath&) { ExpectSound(VELSysPath(wide)); }},
        {"Copy", [](VELSysPath& path) { ExpectSound(VELSysPath(path)); }},
        {"Assign", [](VELSysPath& path) { path = other; }},
        {"Set", [](VELSysPath& path) { path.Set(LongText.c_str()); }},
        {"SetUnits", [](VELSysPath& path) { path.Set(Units(units.c_str())); }},
        {"SetString", [](VELSysPath& path) { path.Set(wide); }},
        {"Append", [](VELSysPath& path) { path.Append(LongText.c_str()); }},
        {"AppendUnits", [](VELSysPath& path) { path.Append(Units(units.c_str())); }},
        {"AppendString", [](VELSysPath& path) { path.Append(wide); }},
        {"AppendSelf", [](VELSysPath& path) { path.Append(path); }},
        {"AddExtension", [](VELSysPath& path) { path.AddExtension(LongText.c_str()); }},
        {"AddExtensionString", [](VELSysPath& path) { path.AddExtension(wide); }},
        {"RemExtension", [](VELSysPath& path) { path.RemExtension(nullptr); }},
        {"RemExtensionNamed", [](VELSysPath& path) { path.RemExtension(extension); }},
        {"GetExtension",
         [](VELSysPath& path) {
             QORUnicodeString found;
             path.GetExtension(found);
         }},
        {"Split",
         [](VELSysPath& path) {
             VELSysPath parent;
             QORSysTSUnicodeString a;
             QORSysTSUnicodeString b;
             QORSysTSUnicodeString c;
             path.split(parent, a);
             ExpectSound(parent);
             path.split(parent, a, b, c);
             ExpectSound(parent);
         }},
        {"GetParent",
         [](VELSysPath& path) {
             int rc = 0;
             const VELSysPath parent = path.GetParent(&rc);
             ExpectSound(parent);
             EXPECT_TRUE(rc < 0 || parent.IsValid());
         }},
        {"GetName",
         [](VELSysPath& path) {
             int rc = 0;
             ExpectSound(path.GetName(&rc));
         }},
        {"BaseName",
         [](VELSysPath& path) {
             QORUnicodeString name;
             VELSysPathBaseName(path, name);
         }},
        {"Compare",
         [](VELSysPath& path) {
             const bool isEqual = path == LongText.c_str() || path == wide || path == Units(units.c_str());
             EXPECT_FALSE(isEqual);
         }},
        {"GetAsString",
         [](VELSysPath& path) {
             QORSysTSUnicodeString text;
             path.getAsString(text);
         }},
        {"Exists", [](VELSysPath& path) { path.Exists(1); }},
        {"MakeAndRemove",
         [](VELSysPath& path) {
             path.Set(s_below.c_str());
             path.MakeDir();
             path.Set(s_made.c_str());
             path.Remove(1);
         }},
        {"Home",
         [](VELSysPath& path) {
             VELSysPathHome(path);
             VELSysPathDocument(path);
             VELSysPathImplGetResourceDirectoryPathA();
         }},
        {"TemporaryName", [](VELSysPath& path) { VELSysPath::GetTempFilePath(path, nullptr, nullptr); }},
    };
    return operations;
}

class Shortage : public testing::TestWithParam<const char*> {
protected:
    ScratchDirectory scratch;

    void SetUp() override {
        StringEnvironment::UseCodePage(GetParam());
        s_made = scratch + "/made";
        s_below = s_made + "/below/it";
        setenv("HOME", "/home/of/somebody", 1);
        setenv("QORInstallPath", "/a:/b", 1);
        Operations();
        PathOf("/").Exists(0);
    }
};

TEST_P(Shortage, AtEachRequestLeavesSoundPaths) {
    const int descriptors = OpenDescriptors();
    for (const Operation& operation : Operations()) {
        for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
            bool hasStruck = true;
            for (int request = 1; hasStruck; ++request) {
                SCOPED_TRACE(std::string(operation.name) + " at request " + std::to_string(request));
                VELSysPath path = PathOf("/x/y/name.ext");
                {
                    const HeapShortage shortage(request, extent);
                    operation.run(path);
                    hasStruck = HeapShortage::HasStruck();
                }
                ExpectSound(path);
                ASSERT_LT(request, 200);
            }
        }
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

INSTANTIATE_TEST_SUITE_P(Environments, Shortage, testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

TEST(PathMemory, ThatIsMissingIsAFailure) {
    VELSysPath path = PathOf("/x");
    const std::string longer = "/" + std::string(500, 'y');
    const QORUnicodeString wide = Wide(u"/\u00e4" + std::u16string(500, u'y'));
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(path.Append(longer.c_str()), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), (State{"/x", Absolute, 1})) << "appending leaves the path";
    EXPECT_EQ(path.AddExtension(longer.c_str()), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), (State{"/x", Absolute, 1}));
    EXPECT_EQ(path.Set(longer.c_str()), VEL::StatusFailure);
    EXPECT_EQ(StateOf(path), Nothing());
    const VELSysPath none;
    EXPECT_EQ(PathAccess::Of(none), nullptr);
    EXPECT_EQ(VELSysPath(none).getType(), 1);
}

TEST(PathMemory, ASetOfNoMoreBytesNeedsNone) {
    VELSysPath path = PathOf("/x/y/z");
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    EXPECT_EQ(path.Set("/a/b/c"), 0);
    EXPECT_EQ(StateOf(path), (State{"/a/b/c", Absolute, 1}));
}

struct WellKnown {
    const char* variable;
    const char* (*getter)();
};

class WellKnownDirectory : public testing::TestWithParam<WellKnown> {};

TEST_P(WellKnownDirectory, IsTheOneThatWasRememberedFirst) {
    const auto& [variable, getter] = GetParam();
    const char* meanwhile = nullptr;
    const HeapLog log;
    setenv(variable, "/late", 1);
    InsideNextRequest([&] {
        setenv(variable, "/early", 1);
        meanwhile = getter();
    });
    EXPECT_EQ(getter(), meanwhile);
    EXPECT_STREQ(meanwhile, "/early");
    EXPECT_EQ(log.Live(), 1u) << "the other copy is given back";
}

INSTANTIATE_TEST_SUITE_P(Getters, WellKnownDirectory,
                         testing::Values(WellKnown{"HOME", VELSysPathImplGetHomeDirectoryPathA},
                                         WellKnown{"HOME", VELSysPathImplGetDocumentDirectoryPathA},
                                         WellKnown{"QORInstallPath", VELSysPathImplGetResourceDirectoryPathA}));

TEST(PathMemory, IsGivenBack) {
    const HeapLog log;
    {
        VELSysPath path = PathOf("/x/y");
        path.Append("z");
        VELSysPath copy(path);
        copy = std::move(path);
        copy = VELSysPath();
        int rc = 0;
        copy = PathOf("/a/b.c").GetParent(&rc).GetName(&rc);
    }
    EXPECT_EQ(log.Live(), 0u);
}

} // namespace

// By `malloc`, so that they are refused as all that is.

extern "C" char* __wrap_strndup(const char* text, std::size_t n) {
    const std::size_t length = strnlen(text, n);
    auto* const copy = static_cast<char*>(std::malloc(length + 1));
    if (copy != nullptr) {
        std::memcpy(copy, text, length);
        copy[length] = '\0';
    }
    return copy;
}

extern "C" char* __wrap_strdup(const char* text) {
    return __wrap_strndup(text, std::strlen(text));
}
