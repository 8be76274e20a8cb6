/// @file
/// Listings and file helpers when memory runs out at each request of each operation: the operation fails in its
/// ordinary way or does without, nothing leaks, nothing stays open, nothing breaks.

#include "HeapLog.h"
#include "PathAccess.h"
#include "ScratchDirectory.h"
#include "StringBlocks.h"
#include "VELSysADS.h"
#include "VELSysDirectoryIterator.h"
#include "VELSysFile.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using StringBlocks::Units;

/// A file with a name that takes a block of its own.
const char* const LongName =
    "a-file-with-a-name-of-a-good-length-that-goes-on-and-on-and-on-and-on-until-it-takes-a-block-"
    "of-its-own-whatever-else-there-is-to-take-it-from";

/// Texts that are made before memory runs out, so that only the library's requests are refused.
struct Texts {
    std::string directory;
    std::string file;
    std::string copy;
    std::string list;
    std::u16string wideFile;
    unsigned short* joined;
    QORUnicodeString directoryText{directory.c_str()};
    QORUnicodeString longName{"a name that is long enough for a block of its own, and then a little longer"};
    QORUnicodeString wholePath{"/a/directory/with/a/name/of/some/length/a-name-of-some-length-behind-the-last-slash"};
    QORUnicodeString copyText{copy.c_str()};
    QORUnicodeString fileText{file.c_str()};
    /// What operations leave to be looked at when there is memory again, where they answered 0.
    QORUnicodeString madePath = {};
    QORUnicodeString splitDirectory = {};
    QORUnicodeString splitName = {};
    bool hasMadePath = false;
    bool hasSplit = false;
    bool hasJoined = false;
};

// The next two take no memory.

bool HasText(const char* path, std::string_view text) {
    char bytes[64];
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    const ssize_t length = read(descriptor, bytes, sizeof bytes);
    close(descriptor);
    return length >= 0 && std::string_view(bytes, static_cast<std::size_t>(length)) == text;
}

/// The index in `names` of the entry that `path` names, or -1.
int IndexOf(const VELSysPath& path, std::string_view directory, const char* const (&names)[4]) {
    const VELSysPathImpl* const impl = VEL::internal::PathAccess::Of(path);
    const std::string_view text = impl != nullptr ? VEL::internal::PathAccess::Text(*impl) : "";
    if (!text.starts_with(directory) || text.size() <= directory.size() || text[directory.size()] != '/') {
        return -1;
    }
    const auto* const found = std::find(std::begin(names), std::end(names), text.substr(directory.size() + 1));
    return found != std::end(names) ? static_cast<int>(found - names) : -1;
}

void ExpectWholeResults(const Texts& texts) {
    if (texts.hasMadePath) {
        EXPECT_EQ(texts.madePath.ConvertToChar(), texts.directory + "/" + texts.longName.ConvertToChar());
    }
    if (texts.hasSplit) {
        EXPECT_STREQ(texts.splitDirectory.ConvertToChar(), "/a/directory/with/a/name/of/some/length");
        EXPECT_STREQ(texts.splitName.ConvertToChar(), "a-name-of-some-length-behind-the-last-slash");
    }
    if (texts.hasJoined) {
        EXPECT_EQ(texts.joined[0], '/');
        EXPECT_EQ(texts.joined[1], 'n');
        EXPECT_EQ(texts.joined[2], 0);
    }
}

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
        WriteFile(scratch / "copy", "old");
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
        ExpectWholeResults(texts);
        delete[] texts.joined;
    }
    const ScratchDirectory scratch;
};

TEST_P(FilesShortageTest, FailsInItsOrdinaryWay) {
    WriteFile(scratch / "a", "text");
    WriteFile(scratch / "b\xC3\xA9", "text");
    WriteFile(scratch / LongName, "text");
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
             const bool isKnown = VELSysFileFinderCurrentStat(ctx, &status) == 0;
             EXPECT_TRUE(!isKnown || S_ISREG(status.st_mode) || ctx->entry->d_name[0] == '.');
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
    {"Step",
     [](Texts& texts) {
         static const char* const names[] = {"a", "b\xC3\xA9", "copy", LongName};
         VELSysPath path;
         path.Set(texts.directory.c_str());
         int rc = 0;
         VELSysDirectoryIterator it = path.Begin(&rc);
         int seen = 0;
         for (; rc == 0; rc = it.next()) {
             if ((*it).IsValid()) {
                 const int index = IndexOf(*it, texts.directory, names);
                 EXPECT_GE(index, 0);
                 EXPECT_EQ(seen & (1 << index), 0) << "the one before still stands there";
                 seen |= 1 << index;
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
         texts.madePath = texts.directoryText;
         texts.hasMadePath = VELSysMakePath(texts.madePath, texts.longName) == 0;
         texts.hasSplit = VELSysSplitPath(texts.wholePath, texts.splitDirectory, texts.splitName) == 0;
         unsigned short name[] = {'n', 0};
         texts.hasJoined = VELSysMakePath(texts.joined, name) == 0;
     }},
    {"System calls",
     [](Texts& texts) {
         struct stat64 status;
         VELSysFileStat(Units(texts.wideFile.c_str()), &status);
         VELSysFileStat(Units(u"http://host"), &status);
         VELSysFSetTimes(QORUnicodeString(texts.file.c_str()), 1, 2);
         if (VELSysLocalFileCopy(texts.copyText, texts.fileText) == 0) {
             EXPECT_TRUE(HasText(texts.copy.c_str(), "text"));
         }
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
