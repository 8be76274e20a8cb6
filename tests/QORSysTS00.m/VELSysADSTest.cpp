/// @file
/// Named texts of a file: what is stored, what is listed, what is reported, and a file whose attributes change while
/// they are read.

#include "VELSysADS.h"
#include "Child.h"
#include "FileCalls.h"
#include "ScratchDirectory.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using FileCalls::Changes;
using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;
using Texts = std::vector<std::pair<std::string, std::string>>;

Texts TextsOf(VELSysADSList& list) {
    Texts texts;
    for (VELSysADSItem* item = list.GetStringFirst(); item != nullptr; item = list.GetStringNext()) {
        texts.emplace_back(item->name, item->value);
    }
    return texts;
}

/// What `call` writes to standard output, behind what it answers.
template <class Call>
std::string Report(const Call& call) {
    testing::internal::CaptureStdout();
    const int result = call();
    return std::to_string(result) + " " + testing::internal::GetCapturedStdout();
}

// Lists.

class OpenList : public VELSysADSList {
public:
    using VELSysADSList::ChildCompareItem;
    using VELSysADSList::ChildCopyItem;
    using VELSysADSList::ChildDeleteItem;
};

TEST(VELSysADSList, KeepsOrderAndDuplicates) {
    VELSysADSList list;
    EXPECT_EQ(list.GetStringFirst(), nullptr);
    list.Add("b", "1");
    list.Add("a", "2");
    list.Add("b", "1");
    EXPECT_EQ(list.Count(), 3);
    EXPECT_THAT(TextsOf(list), ElementsAre(Pair("b", "1"), Pair("a", "2"), Pair("b", "1")));
    list.RemoveAll();
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.GetStringNext(), nullptr);
}

TEST(VELSysADSList, CutsWhatDoesNotFit) {
    VELSysADSList list;
    list.Add(std::string(300, 'n').c_str(), std::string(2000, 'v').c_str());
    list.Add(std::string(255, 'n').c_str(), std::string(1023, 'v').c_str());
    const Texts texts = TextsOf(list);
    EXPECT_EQ(texts.at(0).first, std::string(255, 'n'));
    EXPECT_EQ(texts.at(0).second, std::string(1023, 'v'));
    EXPECT_EQ(texts.at(0), texts.at(1));
}

TEST(VELSysADSList, NullFieldsStayEmpty) {
    VELSysADSList list;
    list.Add(nullptr, "v");
    list.Add("n", nullptr);
    EXPECT_THAT(TextsOf(list), ElementsAre(Pair("", "v"), Pair("n", "")));
}

TEST(VELSysADSList, ItemsAreCopiedComparedByNameAndReleased) {
    OpenList list;
    VELSysADSItem a = {"a", "1"};
    VELSysADSItem otherA = {"a", "2"};
    VELSysADSItem b = {"b", "1"};
    EXPECT_EQ(list.ChildCompareItem(&a, &otherA), 0);
    EXPECT_LT(list.ChildCompareItem(&a, &b), 0);
    EXPECT_GT(list.ChildCompareItem(&b, &a), 0);
    EXPECT_EQ(list.ChildCompareItem(nullptr, &a), 0);
    EXPECT_EQ(list.ChildCompareItem(&a, nullptr), 0);
    EXPECT_EQ(list.ChildCopyItem(nullptr), nullptr);
    void* const copy = list.ChildCopyItem(&a);
    EXPECT_NE(copy, &a);
    EXPECT_STREQ(static_cast<VELSysADSItem*>(copy)->value, "1");
    list.ChildDeleteItem(copy);
    list.ChildDeleteItem(nullptr);
}

// Attributes of a file.

class VELSysADSStringTest : public ScratchTest {
protected:
    void SetUp() override {
        ScratchTest::SetUp();
        WriteFile(path, "");
        if (setxattr(path.c_str(), "user.probe", "x", 1, 0) != 0) {
            GTEST_SKIP() << "the scratch directory's file system carries no attributes of users";
        }
        removexattr(path.c_str(), "user.probe");
    }
    int Set(const char* name, const char* value, int flags = 0) {
        return VELSysADSStringSet(name, value, path.c_str(), flags);
    }
    std::string Get(const char* name) {
        char value[100];
        VELSysADSStringGet(value, sizeof value, name, path.c_str());
        return value;
    }
    Texts Listed() {
        VELSysADSStringList(&list, path.c_str());
        Texts texts = TextsOf(list);
        // Some systems add a label of their own.
        std::erase_if(texts, [](const auto& text) { return text.first.rfind("user.", 0) != 0; });
        return texts;
    }
    const std::string path = scratch + "/file";
    VELSysADSList list;
};

TEST_F(VELSysADSStringTest, IsStoredWithItsTerminator) {
    EXPECT_EQ(Set("user.a", "text"), 0);
    EXPECT_EQ(getxattr(path.c_str(), "user.a", nullptr, 0), 5);
    EXPECT_EQ(Get("user.a"), "text");
}

TEST_F(VELSysADSStringTest, IsReplacedUnlessFlagsForbid) {
    EXPECT_EQ(Set("user.a", "one", 1), 0);
    EXPECT_EQ(Set("user.a", "two", 0), 0);
    EXPECT_EQ(Get("user.a"), "two");
    for (const int flags : {1, 2, -1}) {
        EXPECT_EQ(Report([&] { return Set("user.a", "three", flags); }),
                  "-1 XATTR_CREATE was specified, and the attribute exists already.\n");
    }
    EXPECT_EQ(Get("user.a"), "two");
}

TEST_F(VELSysADSStringTest, IsRemoved) {
    Set("user.a", "text");
    EXPECT_EQ(Report([&] { return VELSysADSStringDel("user.a", path.c_str()); }), "0 ");
    EXPECT_EQ(Get("user.a"), "");
    EXPECT_EQ(Report([&] { return VELSysADSStringDel("user.a", path.c_str()); }), "-1 Unknow error.\n");
}

TEST_F(VELSysADSStringTest, NamesNeedANamespace) {
    EXPECT_EQ(Report([&] { return Set("a", "text"); }),
              "-1 The namespace prefix of name is not valid. Or rxtended attributes are not supported by the "
              "filesystem, or are disabled\n");
    EXPECT_EQ(Report([&] { return VELSysADSStringDel("a", path.c_str()); }),
              "-1 The namespace prefix of name is not valid. Or rxtended attributes are not supported by the "
              "filesystem, or are disabled\n");
}

TEST_F(VELSysADSStringTest, GetClearsTheWholeTarget) {
    char value[8] = "1234567";
    VELSysADSStringGet(value, sizeof value, "user.none", path.c_str());
    EXPECT_EQ(std::string(value, 8), std::string(8, '\0'));
    Set("user.a", "ab");
    std::fill_n(value, 8, 'x');
    VELSysADSStringGet(value, sizeof value, "user.a", path.c_str());
    EXPECT_EQ(std::string(value, 8), std::string("ab\0\0\0\0\0\0", 8));
}

TEST_F(VELSysADSStringTest, GetOfNullsOnlyClears) {
    char value[4] = "abc";
    VELSysADSStringGet(nullptr, 4, "user.a", path.c_str());
    VELSysADSStringGet(value, 0, "user.a", path.c_str());
    EXPECT_STREQ(value, "abc");
    VELSysADSStringGet(value, 4, nullptr, path.c_str());
    EXPECT_STREQ(value, "");
    value[0] = 'a';
    VELSysADSStringGet(value, 4, "user.a", nullptr);
    EXPECT_STREQ(value, "");
}

TEST_F(VELSysADSStringTest, ATextThatDoesNotFitIsEmpty) {
    Set("user.a", "text");
    char value[5] = "";
    VELSysADSStringGet(value, 5, "user.a", path.c_str());
    EXPECT_STREQ(value, "text");
    VELSysADSStringGet(value, 4, "user.a", path.c_str());
    EXPECT_STREQ(value, "");
}

TEST_F(VELSysADSStringTest, AForeignTextIsTerminatedWithinTheTarget) {
    setxattr(path.c_str(), "user.a", "text", 4, 0);
    char value[4];
    VELSysADSStringGet(value, 4, "user.a", path.c_str());
    EXPECT_STREQ(value, "tex");
}

TEST_F(VELSysADSStringTest, NullsAreRefusedWithoutAReport) {
    EXPECT_EQ(Report([&] { return VELSysADSStringSet(nullptr, "v", path.c_str(), 0); }), "-1 ");
    EXPECT_EQ(Report([&] { return VELSysADSStringSet("user.a", nullptr, path.c_str(), 0); }), "-1 ");
    EXPECT_EQ(Report([&] { return VELSysADSStringSet("user.a", "v", nullptr, 0); }), "-1 ");
    EXPECT_EQ(Report([&] { return VELSysADSStringDel(nullptr, path.c_str()); }), "-1 Unknow error.\n");
    EXPECT_EQ(Report([&] { return VELSysADSStringDel("user.a", nullptr); }), "-1 Unknow error.\n");
}

TEST_F(VELSysADSStringTest, AllAreListedInPlaceOfWhatWasThere) {
    list.Add("old", "old");
    Set("user.a", "1");
    Set("user.b", "2");
    EXPECT_THAT(Listed(), UnorderedElementsAre(Pair("user.a", "1"), Pair("user.b", "2")));
}

TEST_F(VELSysADSStringTest, AValueOfNoBytesIsNotListedAndAnEmptyTextIs) {
    setxattr(path.c_str(), "user.none", "", 0, 0);
    setxattr(path.c_str(), "user.foreign", "ab", 2, 0);
    Set("user.empty", "");
    EXPECT_THAT(Listed(), UnorderedElementsAre(Pair("user.empty", ""), Pair("user.foreign", "ab")));
}

TEST_F(VELSysADSStringTest, LongValuesAreCutInTheList) {
    Set("user.a", std::string(2000, 'v').c_str());
    EXPECT_THAT(Listed(), ElementsAre(Pair("user.a", std::string(1023, 'v'))));
}

TEST_F(VELSysADSStringTest, ListingNothingEmptiesTheList) {
    list.Add("old", "old");
    VELSysADSStringList(&list, (path + "none").c_str());
    EXPECT_EQ(list.Count(), 0);
    list.Add("old", "old");
    VELSysADSStringList(&list, nullptr);
    EXPECT_EQ(list.Count(), 1);
    VELSysADSStringList(nullptr, path.c_str());
}

TEST_F(VELSysADSStringTest, AListThatGrowsMeanwhileIsReadAgain) {
    Set("user.a", "1");
    Changes changes;
    changes.afterSizeOfList = [&] { Set("user.another", "2"); };
    EXPECT_THAT(Listed(), UnorderedElementsAre(Pair("user.a", "1"), Pair("user.another", "2")));
}

TEST_F(VELSysADSStringTest, AValueThatGrowsMeanwhileIsReadAgain) {
    Set("user.a", "1");
    const std::string longer(1000, 'v');
    Changes changes;
    changes.afterSizeOfValue = [&] { Set("user.a", longer.c_str()); };
    EXPECT_THAT(Listed(), ElementsAre(Pair("user.a", longer)));
}

TEST_F(VELSysADSStringTest, AValueThatGoesMeanwhileEndsTheWalk) {
    Set("user.a", "1");
    Changes changes;
    changes.afterSizeOfValue = [&] { removexattr(path.c_str(), "user.a"); };
    EXPECT_TRUE(Listed().empty());
}

TEST_F(VELSysADSStringTest, AListThatGrowsForEverIsGivenUp) {
    Set("user.a", "1");
    Changes changes;
    changes.listsOutOfRange = 1000;
    VELSysADSStringList(&list, path.c_str());
    EXPECT_EQ(list.Count(), 0);
    EXPECT_GT(changes.listsOutOfRange, 0);
}

TEST_F(VELSysADSStringTest, AFailingReadOfAValueEndsTheWalk) {
    Set("user.a", "1");
    Set("user.b", "2");
    Changes changes;
    changes.getxattrError = EIO;
    VELSysADSStringList(&list, path.c_str());
    EXPECT_EQ(list.Count(), 0) << "the other one isn't listed";
}

// Reports.

CHILD_PROGRAM(RefusesTextsAndIsGone) {
    Changes changes;
    changes.setxattrError = EROFS;
    changes.removexattrError = EROFS;
    if (arguments.at(0) == "set") {
        VELSysADSStringSet("user.a", "v", "/", 0);
    } else {
        VELSysADSStringDel("user.a", "/");
    }
    _exit(0);
}

TEST(VELSysADSMessage, IsWrittenAtOnce) {
    EXPECT_EQ(RunChild("RefusesTextsAndIsGone", {.set = {}, .arguments = {"set"}}).out,
              "The file system is mounted read-only\n");
    EXPECT_EQ(RunChild("RefusesTextsAndIsGone", {.set = {}, .arguments = {"delete"}}).out, "Unknow error.\n");
}

struct Message {
    int error;
    const char* text;
};

class VELSysADSMessageTest : public testing::TestWithParam<Message> {};

TEST_P(VELSysADSMessageTest, OfASetThatFails) {
    Changes changes;
    changes.setxattrError = GetParam().error;
    EXPECT_EQ(Report([] { return VELSysADSStringSet("user.a", "v", "/", 0); }), std::string("-1 ") + GetParam().text);
}

TEST_P(VELSysADSMessageTest, OfARemovalThatFails) {
    Changes changes;
    changes.removexattrError = GetParam().error;
    EXPECT_EQ(Report([] { return VELSysADSStringDel("user.a", "/"); }),
              std::string("-1 ") + (GetParam().error == EOPNOTSUPP ? GetParam().text : "Unknow error.\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Errors, VELSysADSMessageTest,
    testing::Values(
        Message{EEXIST, "XATTR_CREATE was specified, and the attribute exists already.\n"},
        Message{ENOTDIR, "A component of path is not a directory\n"},
        Message{EINVAL, "Name or options is invalid.  name must be valid UTF-8 and options must make sense\n"},
        Message{ENOSPC, "There is insufficient space remaining to store the extended attribute.\n"},
        Message{EROFS, "The file system is mounted read-only\n"},
        Message{EOPNOTSUPP, "The namespace prefix of name is not valid. Or rxtended attributes are not supported by "
                            "the filesystem, or are disabled\n"},
        Message{EDQUOT, "Disk quota limits meant that there is insufficient space remaining to store the extended "
                        "attribute.\n"},
        Message{ENOENT, "Unknow error.\n"}, Message{ERANGE, "Unknow error.\n"}));

} // namespace
