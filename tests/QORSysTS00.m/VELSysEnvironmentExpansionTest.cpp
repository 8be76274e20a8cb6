/// @file
/// Tags: which are found, and what stands in their place.

#include "EnvironmentCalls.h"
#include "VELSysEnvironmentManager.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace EnvironmentCalls;
using Texts = std::vector<std::string>;

namespace {

class Expansion : public testing::Test {
protected:
    /// Fills the static array, which must not exist.
    void Fill(const Texts& entries) {
        ASSERT_EQ(manager.BuildStaticEnviron(entries.size()), 0);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            ASSERT_EQ(manager.BuildEnvironString(&manager.StaticEnviron()[i], entries[i].c_str()), 0);
        }
    }

    Texts Static() const { return TextsOf(manager.StaticEnviron()); }

    static Texts TextsOf(char** array) {
        Texts texts;
        for (; *array != nullptr; ++array) {
            texts.emplace_back(*array);
        }
        return texts;
    }

    Texts Expanded(const Texts& entries) {
        Fill(entries);
        EXPECT_EQ(manager.ExpandAllEnvironStrings(), 0);
        return Static();
    }

    /// The tags that are found in a text.
    Texts TagsOf(const std::string& text) {
        lines.clear();
        EXPECT_EQ(manager.BuildEnvironExpandableString(text.c_str()), 0);
        Texts tags;
        for (const std::string& line : lines) {
            const std::string start = "l_pTag=='";
            EXPECT_EQ(line.substr(0, start.size()), start);
            const std::size_t behind = line.find("', ipStringAddr=='");
            EXPECT_NE(behind, std::string::npos);
            tags.push_back(line.substr(start.size(), behind - start.size()));
        }
        return tags;
    }

    // Made before the manager.
    const bool traced = isTraced = true;
    VELSysEnvironmentManager manager;
};

} // namespace

TEST_F(Expansion, FindsTagsFromLeftToRight) {
    EXPECT_EQ(TagsOf("A=${B}/${C}${D}"), (Texts{"${B}", "${C}", "${D}"}));
    EXPECT_EQ(TagsOf("${A}${A}"), (Texts{"${A}", "${A}"}));
    EXPECT_EQ(TagsOf("A=$B {C} $ {D}"), Texts{});
    EXPECT_EQ(TagsOf(""), Texts{});
    EXPECT_EQ(TagsOf("$${A}"), Texts{"${A}"});
}

TEST_F(Expansion, FindsAnEmptyTag) {
    EXPECT_EQ(TagsOf("A=${}"), Texts{"${}"});
}

TEST_F(Expansion, ATagEndsAtTheFirstBrace) {
    EXPECT_EQ(TagsOf("${A${B}}"), Texts{"${A${B}"});
    EXPECT_EQ(TagsOf("${A}}"), Texts{"${A}"});
}

TEST_F(Expansion, AnOpenTagEndsTheSearch) {
    EXPECT_EQ(TagsOf("A=${B"), Texts{});
    EXPECT_EQ(TagsOf("A=${"), Texts{});
    EXPECT_EQ(TagsOf("A=${B}${C"), Texts{"${B}"});
}

TEST_F(Expansion, RefusesNull) {
    EXPECT_EQ(manager.BuildEnvironExpandableString(nullptr), -1);
}

TEST_F(Expansion, CutsATagOfMoreThan8192Bytes) {
    const auto tag = [](std::size_t size) { return "${" + std::string(size - 3, 'x') + "}"; };
    for (const std::size_t size : {8190, 8191, 8192}) {
        EXPECT_EQ(TagsOf(tag(size)), Texts{tag(size)}) << size;
    }
    for (const std::size_t size : {8193, 8194, 9000}) {
        EXPECT_EQ(TagsOf(tag(size)), Texts{tag(size).substr(0, 8191)}) << size;
    }
}

TEST_F(Expansion, ReportsATagWithItsString) {
    TagsOf("A=${B}/${C}");
    EXPECT_EQ(lines,
              (Texts{"l_pTag=='${B}', ipStringAddr=='A=${B}/${C}'", "l_pTag=='${C}', ipStringAddr=='A=${B}/${C}'"}));
}

TEST_F(Expansion, ReplacesATag) {
    EXPECT_EQ(Expanded({"ROOT=/opt", "BIN=${ROOT}/bin:${ROOT}"}), (Texts{"ROOT=/opt", "BIN=/opt/bin:/opt"}));
    EXPECT_STREQ(manager.GetEnv("BIN"), "/opt/bin:/opt");
}

TEST_F(Expansion, WithoutTagsChangesNothing) {
    Fill({"A=1"});
    const char* const value = manager.GetEnv("A");
    EXPECT_EQ(manager.ExpandAllEnvironStrings(), 0);
    EXPECT_EQ(manager.GetEnv("A"), value);
}

TEST_F(Expansion, AnUnknownTagStays) {
    EXPECT_EQ(Expanded({"A=${B}/${C}", "C=1"}), (Texts{"A=${B}/1", "C=1"}));
}

TEST_F(Expansion, AnEmptyValueDeletesTheTag) {
    EXPECT_EQ(Expanded({"A=x${B}y", "B="}), (Texts{"A=xy", "B="}));
}

TEST_F(Expansion, AnEmptyTagHasAValueInTheTableAlone) {
    EXPECT_EQ(Expanded({"A=${}", "=x"}), (Texts{"A=${}", "=x"}));
    manager.PutEnvInTable("", "table");
    manager.BuildDynamicEnviron(1);
    manager.BuildEnvironString(manager.DynamicEnviron(), "B=${}");
    manager.ExpandAllEnvironStrings();
    EXPECT_STREQ(manager.GetEnv("B"), "table");
}

TEST_F(Expansion, AValueHoldsTheResultOfAnEarlierTag) {
    EXPECT_EQ(Expanded({"A=1", "B=${A}2", "C=${B}3"}), (Texts{"A=1", "B=12", "C=123"}));
}

TEST_F(Expansion, ALaterTagReplacesWhatAnEarlierBroughtIn) {
    // The tag of C brings "${A}" into the first string, and the tag of B, which comes later, replaces it.
    EXPECT_EQ(Expanded({"C=${B}", "B=${A}", "A=1"}), (Texts{"C=1", "B=1", "A=1"}));
}

TEST_F(Expansion, ATagThatComesAfterItsTurnStays) {
    EXPECT_EQ(Expanded({"X=${A}", "Y=${B}", "A=1", "B=${A}"}), (Texts{"X=1", "Y=1", "A=1", "B=1"}));
    manager.PutEnvInTable("T", "-${A}-");
    manager.BuildDynamicEnviron(2);
    manager.BuildEnvironString(&manager.DynamicEnviron()[0], "V=${A}");
    manager.BuildEnvironString(&manager.DynamicEnviron()[1], "W=${T}");
    manager.ExpandAllEnvironStrings();
    EXPECT_EQ(TextsOf(manager.DynamicEnviron()), (Texts{"V=1", "W=-${A}-"}));
}

TEST_F(Expansion, AValueWithItsOwnTagIsInsertedOnce) {
    manager.PutEnvInTable("A", "<${A}>");
    EXPECT_EQ(Expanded({"X=${A}"}), Texts{"X=<${A}>"});
}

TEST_F(Expansion, AStringThatNamesItselfIsInsertedOncePerTag) {
    EXPECT_EQ(Expanded({"A=1${A}"}), Texts{"A=11${A}"});
}

TEST_F(Expansion, AStringWithTwoTagsIsReplacedOnceByEach) {
    manager.PutEnvInTable("A", "<${A}>");
    manager.PutEnvInTable("B", "[${B}]");
    EXPECT_EQ(Expanded({"X=${A}${B}"}), Texts{"X=<${A}>[${B}]"});
}

TEST_F(Expansion, ATagThatStandsTwiceTakesTwoTurns) {
    // Each occurrence is a tag of its own, with a turn of its own.
    manager.PutEnvInTable("A", "<${A}>");
    EXPECT_EQ(Expanded({"X=${A},${A}"}), Texts{"X=<<${A}>>,<<${A}>>"});
}

TEST_F(Expansion, EveryTagIsTriedOnEveryRegisteredString) {
    manager.PutEnvInTable("A", "${B}");
    manager.PutEnvInTable("B", "${C}");
    manager.PutEnvInTable("C", "end");
    EXPECT_EQ(Expanded({"X=${A}", "Y=${B}", "Z=${C}", "N=none"}), (Texts{"X=end", "Y=end", "Z=end", "N=none"}));
}

TEST_F(Expansion, StringsOfAllArraysAreReplaced) {
    manager.BuildDynamicEnviron(1);
    manager.BuildStaticEnviron(1);
    manager.BuildOfficialEnviron(1);
    manager.BuildEnvironString(manager.DynamicEnviron(), "D=${X}");
    manager.BuildEnvironString(manager.StaticEnviron(), "S=${X}");
    manager.BuildEnvironString(manager.OfficialEnviron(), "O=${X}");
    manager.PutEnvInTable("X", "1");
    manager.ExpandAllEnvironStrings();
    EXPECT_STREQ(manager.GetEnv("D"), "1");
    EXPECT_STREQ(manager.GetEnv("S"), "1");
    EXPECT_STREQ(manager.GetEnv("O"), "1");
}

TEST_F(Expansion, AStringInNoArrayHasNoEffect) {
    const std::string stranger = "S=${A}";
    manager.BuildEnvironExpandableString(stranger.c_str());
    manager.PutEnvInTable("A", "1");
    EXPECT_EQ(Expanded({"X=${A}"}), Texts{"X=1"});
    EXPECT_EQ(stranger, "S=${A}");
}

TEST_F(Expansion, ATagOfAStrangerIsReplacedInRegisteredStrings) {
    manager.PutEnvInTable("A", "${B}");
    manager.PutEnvInTable("B", "1");
    const std::string stranger = "S=${B}";
    Fill({"X=${A}"});
    manager.BuildEnvironExpandableString(stranger.c_str());
    manager.ExpandAllEnvironStrings();
    EXPECT_EQ(Static(), Texts{"X=1"});
}

TEST_F(Expansion, ASlotThatWasRefilledHasItsLastString) {
    Fill({"X=${A}", "Y=${A}"});
    for (const char* text : {"X=none", "X=${B}", "X=${A}${A}"}) {
        manager.BuildEnvironString(&manager.StaticEnviron()[0], text);
    }
    manager.PutEnvInTable("A", "1");
    manager.ExpandAllEnvironStrings();
    EXPECT_EQ(Static(), (Texts{"X=11", "Y=1"}));
}

TEST_F(Expansion, ARebuiltDynamicArrayIsNotTouchedThroughOldAddresses) {
    manager.BuildDynamicEnviron(2);
    manager.BuildEnvironString(&manager.DynamicEnviron()[0], "X=${A}");
    manager.BuildEnvironString(&manager.DynamicEnviron()[1], "Y=${A}");
    manager.BuildDynamicEnviron(1);
    manager.BuildEnvironString(&manager.DynamicEnviron()[0], "Z=${A}");
    manager.PutEnvInTable("A", "<${A}>");
    manager.ExpandAllEnvironStrings();
    // Three tags in the list, each with its turn.
    EXPECT_EQ(TextsOf(manager.DynamicEnviron()), Texts{"Z=<<<${A}>>>"});
}

TEST_F(Expansion, ADroppedArrayIsNoArray) {
    Fill({"X=${A}"});
    const char* const dropped = manager.StaticEnviron()[0];
    manager.PutEnvInTable("A", "1");
    EXPECT_EQ(Expanded({"Y=${A}"}), Texts{"Y=1"});
    EXPECT_STREQ(dropped, "X=${A}");
}

TEST_F(Expansion, ASecondRunIsHarmless) {
    Fill({"X=${A}", "Y=${A}${A}", "A=1"});
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(manager.ExpandAllEnvironStrings(), 0);
        EXPECT_EQ(Static(), (Texts{"X=1", "Y=11", "A=1"}));
    }
}

TEST_F(Expansion, AValueMayStandInTheStringThatChanges) {
    // The value of A lies in the first string, which the same turn allocates anew.
    Fill({"A=${B}", "X=${A}", "Y=${A}"});
    manager.ExpandAllEnvironStrings();
    EXPECT_EQ(Static(), (Texts{"A=${B}", "X=${B}", "Y=${B}"}));
}

TEST_F(Expansion, AStringIsAllocatedAnewByEachTagThatIsKnown) {
    Fill({"X=${A}", "Y=${B}"});
    manager.PutEnvInTable("A", "1");
    const char* const before = manager.StaticEnviron()[1];
    lines.clear();
    manager.ExpandAllEnvironStrings();
    EXPECT_NE(manager.StaticEnviron()[1], before);
    EXPECT_EQ(Static(), (Texts{"X=1", "Y=${B}"}));
}

TEST_F(Expansion, ReportsEachStep) {
    Fill({"X=${A}", "Y=${B}${A}"});
    manager.PutEnvInTable("A", "1");
    lines.clear();
    manager.ExpandAllEnvironStrings();
    EXPECT_EQ(lines, (Texts{"l_pExpandableStr=='${A}', l_pTagAsString=='A'", "\tl_pEnvSet='1'", "*l_pEnvLine=='X=1'",
                            "*l_pEnvLine=='Y=${B}1'", "l_pExpandableStr=='${B}', l_pTagAsString=='B'",
                            "l_pExpandableStr=='${A}', l_pTagAsString=='A'", "\tl_pEnvSet='1'", "*l_pEnvLine=='X=1'",
                            "*l_pEnvLine=='Y=${B}1'"}));
}

TEST_F(Expansion, SkipsATagOf8192BytesAndTakesShorterOnes) {
    const std::string shorter(8188, 'x');
    const std::string longer(8189, 'x');
    manager.PutEnvInTable(shorter.c_str(), "1");
    manager.PutEnvInTable(longer.c_str(), "2");
    EXPECT_EQ(Expanded({"X=${" + longer + "}", "Y=${" + shorter + "}"}), (Texts{"X=${" + longer + "}", "Y=1"}));
}

TEST_F(Expansion, ACutTagIsLookedUpWithoutItsLastByte) {
    const std::string name(9000, 'x');
    // 8191 bytes, less the two in front and the last.
    manager.PutEnvInTable(name.substr(0, 8188).c_str(), "1");
    EXPECT_EQ(Expanded({"X=${" + name + "}"}), Texts{"X=1" + std::string(9000 - 8189, 'x') + "}"});
}

TEST(ExpansionWithoutATrace, WritesNoLines) {
    VELSysEnvironmentManager manager;
    manager.BuildStaticEnviron(2);
    manager.BuildEnvironString(&manager.StaticEnviron()[0], "A=1");
    manager.BuildEnvironString(&manager.StaticEnviron()[1], "B=${A}");
    manager.ExpandAllEnvironStrings();
    EXPECT_STREQ(manager.GetEnv("B"), "1");
    EXPECT_TRUE(lines.empty());
}

TEST(ExpansionOfManyStrings, EndsSoon) {
    VELSysEnvironmentManager manager;
    constexpr std::size_t count = 500;
    manager.BuildStaticEnviron(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string text = "V" + std::to_string(i) + "=${V" + std::to_string(i / 2) + "}${U}${";
        manager.BuildEnvironString(&manager.StaticEnviron()[i], text.c_str());
    }
    EXPECT_EQ(manager.ExpandAllEnvironStrings(), 0);
}
