/// @file
/// Strings in the shared library: loaded and unloaded, and bound by name.

#include "Child.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

bool IsMapped() {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libQORSysTS.so") != std::string::npos) {
            return true;
        }
    }
    return false;
}

/// The library, loaded, and its functions by name.
class Library {
public:
    /// @param stay  RTLD_NODELETE keeps the library loaded for good.
    explicit Library(int stay = 0) : _handle(dlopen(STRING_LIBRARY, RTLD_NOW | RTLD_LOCAL | stay)) {
        if (_handle == nullptr) {
            std::printf("%s\n", dlerror());
        }
    }
    ~Library() { Unload(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    void Unload() {
        if (_handle != nullptr) {
            dlclose(_handle);
            _handle = nullptr;
        }
    }

    template <class Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(_handle, name));
    }

private:
    void* _handle;
};

using Constructor = void(void*);
using TextConstructor = void(void*, const char*);
using CopyConstructor = void(void*, const void*);
using Assignment = void*(void*, const void*);
using Destructor = void(void*);

void MakeAndDestroyAString(const Library& library) {
    void* s;
    library.Find<TextConstructor>("_ZN16QORUnicodeStringC1EPKc")(&s, "text");
    library.Find<Destructor>("_ZN16QORUnicodeStringD1Ev")(&s);
}

struct ClassNames {
    const char* name;
    std::string prefix;
    friend void PrintTo(const ClassNames& names, std::ostream* out) { *out << names.name; }
};

} // namespace

CHILD_PROGRAM(LoadsTheLibraryOnly) {
    Library library;
    const bool before = IsMapped();
    library.Unload();
    std::printf("%d %d\n", before, IsMapped());
    return 0;
}

CHILD_PROGRAM(LoadsTheLibraryAndAsksForEmptyStrings) {
    Library library;
    void* s;
    library.Find<Constructor>("_ZN16QORUnicodeStringC1Ev")(&s);
    library.Find<Destructor>("_ZN16QORUnicodeStringD1Ev")(&s);
    library.Unload();
    std::printf("%d\n", IsMapped());
    return 0;
}

CHILD_PROGRAM(UsesAStringOfTheLibrary) {
    Library library;
    MakeAndDestroyAString(library);
    const bool hasError = dlerror() != nullptr;
    library.Unload();
    std::printf("%d %d\n", IsMapped(), hasError);
    return 0;
}

CHILD_PROGRAM(UsesAStringOnAThreadThatOutlivesTheLibrary) {
    std::thread([] {
        Library library;
        MakeAndDestroyAString(library);
        library.Unload();
        std::printf("%d\n", IsMapped());
    }).join();
    std::puts("ended");
    return 0;
}

// Its life-cycle participants stay registered with the companion library.
TEST(StringLibrary, StaysLoadedAlsoWhenNobodyUsedAString) {
    EXPECT_EQ(RunChild("LoadsTheLibraryOnly").out, "1 1\n");
    EXPECT_EQ(RunChild("LoadsTheLibraryAndAsksForEmptyStrings").out, "1\n");
}

TEST(StringLibrary, PinsItselfWhenAThreadUsesAString) {
    const Child child = RunChild("UsesAStringOfTheLibrary");
    EXPECT_EQ(child.out, "1 0\n");
    EXPECT_EQ(child.exitCode, 0);
}

TEST(StringLibrary, EndsAThreadsPoolAfterItWasUnloaded) {
    const Child child = RunChild("UsesAStringOnAThreadThatOutlivesTheLibrary");
    EXPECT_EQ(child.out, "1\nended\n");
    EXPECT_EQ(child.exitCode, 0);
}

class ExportedMembers : public testing::TestWithParam<ClassNames> {
protected:
    template <class Function>
    Function* Find(const std::string& suffix) const {
        Function* const function = _library.Find<Function>((GetParam().prefix + suffix).c_str());
        EXPECT_NE(function, nullptr) << GetParam().prefix << suffix;
        return function;
    }

private:
    Library _library{RTLD_NODELETE};
};

// What callers compile into themselves is there for those who bind by name.
TEST_P(ExportedMembers, AreFoundByName) {
    for (const char* suffix :
         {"C1Ev", "C2Ev", "C1ERKS_", "C2ERKS_", "C1EPKc", "C2EPKc", "D1Ev", "D2Ev", "aSERKS_", "aSEPKc"}) {
        // The narrow string is made from text that may be written.
        const bool isNarrow = GetParam().prefix == "_ZN9QORString";
        const std::string own = isNarrow && std::strncmp(suffix + 1, "1EPKc", 5) == 0   ? "C1EPc"
                                : isNarrow && std::strncmp(suffix + 1, "2EPKc", 5) == 0 ? "C2EPc"
                                                                                        : suffix;
        Find<void()>(own);
    }
}

TEST_P(ExportedMembers, CountHandlesAsTheInlineFormsDo) {
    auto* const construct = Find<Constructor>("C1Ev");
    auto* const assignText = Find<Assignment>("aSEPKc");
    auto* const copy = Find<CopyConstructor>("C1ERKS_");
    auto* const assign = Find<Assignment>("aSERKS_");
    auto* const destroy = Find<Destructor>("D1Ev");
    ASSERT_TRUE(construct != nullptr && assignText != nullptr && copy != nullptr && assign != nullptr &&
                destroy != nullptr);
    char* s;
    construct(&s);
    char* const empty = s;
    EXPECT_STREQ(empty, "");
    assignText(&s, "text");
    EXPECT_STREQ(s, "text");
    char* copied;
    copy(&copied, &s);
    EXPECT_EQ(copied, s);
    char* assigned;
    construct(&assigned);
    EXPECT_EQ(assigned, empty);
    EXPECT_EQ(assign(&assigned, &s), &assigned);
    EXPECT_EQ(assigned, s);
    int count;
    std::memcpy(&count, s - 6, sizeof count);
    EXPECT_EQ(count, 3);
    for (char** handle : {&s, &copied, &assigned}) {
        destroy(handle);
        EXPECT_EQ(*handle, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Classes, ExportedMembers,
                         testing::Values(ClassNames{"QORUnicodeString", "_ZN16QORUnicodeString"},
                                         ClassNames{"QORSysTSUnicodeString", "_ZN21QORSysTSUnicodeString"},
                                         ClassNames{"QORString", "_ZN9QORString"}),
                         [](const auto& row) { return std::string(row.param.name); });
