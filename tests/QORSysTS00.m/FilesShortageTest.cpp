/// @file
/// Listings and file helpers when memory runs out at each request of each operation: the operation fails in its
/// ordinary way or does without, nothing leaks, nothing stays open, nothing breaks.

#include "HeapLog.h"
#include "ScratchDirectory.h"
#include "StringBlocks.h"
#include "VELSysADS.h"
#include "VELSysDirectoryIterator.h"
#include "VELSysFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using StringBlocks::Units;

/// Texts that are made before memory runs out, so that only the library's requests are refused.
struct Texts {
    std::string directory;
    std::string file;
    std::string copy;
    std::string list;
    std::u16string wideFile;
    unsigned short* joined;
};

struct Operation {
    const char* name;
    void (*run)(Texts& texts);
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

class FilesShortageTest : public testing::TestWithParam<Operation> {
protected:
    void Run(int request, HeapShortage::Extent extent, bool& hasStruck) {
        const std::string directory = scratch.Path();
        const std::string file = directory + "/a";
        Texts texts = {directory,
                       file,
                       directory + "/copy",
                       directory + "/none:" + directory,
                       {file.begin(), file.end()},
                       new unsigned short[1]()};
        {
            const HeapShortage shortage(request, extent);
            GetParam().run(texts);
            hasStruck = HeapShortage::HasStruck();
        }
        delete[] texts.joined;
    }
    const ScratchDirectory scratch;
};

TEST_P(FilesShortageTest, FailsInItsOrdinaryWay) {
    WriteFile(scratch / "a", "text");
    WriteFile(scratch / "b\xC3\xA9", "text");
    setenv("PATH", "/nowhere:/nowhere/else", 1);
    constexpr int Limit = 2000;
    bool hasStruck = true;
    Run(Limit, HeapShortage::OnlyThatOne, hasStruck);
    const int descriptors = OpenDescriptors();
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        hasStruck = true;
        int request = 1;
        for (; hasStruck && request < Limit; ++request) {
            Run(request, extent, hasStruck);
        }
        EXPECT_LT(request, Limit);
        EXPECT_GT(request, 2);
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

const Operation Operations[] = {
    {"List",
     [](Texts& texts) {
         VELSysFNMatchOptions options;
         options.literalBrackets = 1;
         VELSysFileFinderCtx* ctx = nullptr;
         QORUnicodeString name;
         struct stat64 status;
         int rc = VELSysFileFinderFirst(ctx, texts.directory.c_str(), "[*", options);
         EXPECT_LT(rc, 0) << "the pattern is never lost";
         for (rc = VELSysFileFinderFirst(ctx, texts.directory.c_str(), "*", options); rc == 0;
              rc = VELSysFileFinderNext(ctx)) {
             VELSysFileFinderCurrentName(ctx, name);
             VELSysFileFinderCurrentStat(ctx, &status);
         }
         VELSysFileFinderClose(ctx);
     }},
    {"Walk",
     [](Texts& texts) {
         VELSysPath path;
         path.Set(texts.directory.c_str());
         for (VELSysDirectoryIterator it = path.Begin("*", VELSysFNMatchOptions(), nullptr); it != path.End(); ++it) {
             const VELSysDirectoryIterator copy(it);
             VELSysPath current;
             it.GetCurrentPath(current);
             if (it == VELSysDirectoryIterator()) {
                 break;
             }
         }
     }},
    {"Names",
     [](Texts&) {
         char* narrow = nullptr;
         if (VELSysNameFilter(Units(u"\u20AC/ab"), &narrow, 1) == 0) {
             EXPECT_STREQ(narrow, "\xE2\x82\xAC/ab");
             delete[] narrow;
         }
         narrow = nullptr;
         if (QORConvertUcsToStr(Units(u"\u20AC"), &narrow, 0) == 0) {
             EXPECT_STREQ(narrow, "\xE2\x82\xAC");
             delete[] narrow;
         } else {
             EXPECT_EQ(narrow, nullptr);
         }
     }},
    {"Join and split",
     [](Texts& texts) {
         QORUnicodeString path(texts.directory.c_str());
         VELSysMakePath(path, "a name that is long enough for a block of its own, and then a little longer");
         QORUnicodeString parent;
         QORUnicodeString name;
         VELSysSplitPath(path, parent, name);
         unsigned short longName[] = {'n', 0};
         VELSysMakePath(texts.joined, longName);
     }},
    {"System calls",
     [](Texts& texts) {
         struct stat64 status;
         VELSysFileStat(Units(texts.wideFile.c_str()), &status);
         VELSysFileStat(Units(u"http://host"), &status);
         VELSysFSetTimes(QORUnicodeString(texts.file.c_str()), 1, 2);
         VELSysLocalFileCopy(QORUnicodeString(texts.copy.c_str()), QORUnicodeString(texts.file.c_str()));
         VELSysDeleteFile(QORUnicodeString(texts.copy.c_str()));
         QORUnicodeString name;
         VELSysGetTempFileName(name, nullptr, nullptr);
         char buffer[100];
         QORGetLoginName(buffer, sizeof buffer);
     }},
    {"Search",
     [](Texts& texts) {
         QORUnicodeString found;
         const QORUnicodeString list(texts.list.c_str());
         VELFindFileByRelPath("a", found, &list);
         QORWhence(found, "no-such-program");
         VELGetMainInstallPath();
     }},
    {"Named texts",
     [](Texts& texts) {
         VELSysADSList list;
         list.Add("name", "value");
         VELSysADSStringSet("user.a", "text", texts.file.c_str(), 0);
         VELSysADSStringList(&list, texts.file.c_str());
     }},
};

INSTANTIATE_TEST_SUITE_P(Operations, FilesShortageTest, testing::ValuesIn(Operations));

} // namespace
