/// @file
/// Path kinds and the codes of system errors.

#include "VELSysPathType.h"
#include "VELSysStatus.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

struct KindRow {
    const char* name;
    std::u16string text;
    int kind;
};

constexpr int BadHandle = static_cast<int>(0x80070006u);

class PathKinds : public testing::TestWithParam<KindRow> {};

const unsigned short* Units(const std::u16string& text) {
    return reinterpret_cast<const unsigned short*>(text.data());
}

TEST_P(PathKinds, AreToldFromTheHead) {
    const KindRow& row = GetParam();
    const int expected = row.kind == VELSysPathKindNone ? VEL::StatusFailure : VEL::StatusOk;
    int kind = 77;
    EXPECT_EQ(VELSysGetPathType(Units(row.text), &kind, row.text.size()), expected);
    EXPECT_EQ(kind, row.kind);
    kind = 77;
    EXPECT_EQ(VELSysGetPathType(Units(row.text), &kind, 0), expected);
    EXPECT_EQ(kind, row.kind) << "with the length computed";
}

INSTANTIATE_TEST_SUITE_P(
    Table, PathKinds,
    testing::Values(KindRow{"Empty", u"", -1}, KindRow{"Slash", u"/", -1}, KindRow{"OneUnit", u"a", -1},
                    KindRow{"TwoSlashes", u"//", 1}, KindRow{"TwoUnits", u"ab", 6}, KindRow{"AbsoluteOfTwo", u"/a", 1},
                    KindRow{"AbsoluteOfThree", u"/ab", 1}, KindRow{"MarkAlone", u"://", 16},
                    KindRow{"ThreeUnits", u"a:/", 6}, KindRow{"LogicalHeadAlone", u"\x01\x02\\", 6},
                    KindRow{"Logical", u"\x01\x02\\x", 5}, KindRow{"LogicalWithMark", u"\x01\x02\\x://", 5},
                    KindRow{"Absolute", u"/abc", 1}, KindRow{"AbsoluteWithMark", u"/a://b", 1},
                    KindRow{"HttpAlone", u"http://", 16}, KindRow{"Http", u"http://h", 2},
                    KindRow{"HttpUpper", u"HTTP://h", 16}, KindRow{"HttpsAlone", u"https://", 16},
                    KindRow{"Https", u"https://h", 10}, KindRow{"HttpsUpper", u"Https://h", 16},
                    KindRow{"LogicalSchemeAlone", u"QORDLN://", 16}, KindRow{"LogicalScheme", u"QORDLN://x", 9},
                    KindRow{"LogicalSchemeLower", u"qordln://x", 16}, KindRow{"Vault", u"RBQVAULT://x", 16},
                    KindRow{"OtherScheme", u"ftp://h", 16}, KindRow{"MarkInside", u"abc/d://e", 16},
                    KindRow{"MarkAtTheEnd", u"abcd://", 16}, KindRow{"MarkAtTheFront", u"://abcd", 16},
                    KindRow{"Relative", u"abcd/e", 6}, KindRow{"MarkBroken", u"ab:/ /c", 6},
                    KindRow{"Umlaut", u"\u00e4\u4e2d", 6}),
    [](const auto& row) { return row.param.name; });

TEST(PathKind, StopsAtTheGivenLength) {
    int kind = 0;
    EXPECT_EQ(VELSysGetPathType(Units(u"http://h"), &kind, 7), 0);
    EXPECT_EQ(kind, VELSysPathKindOtherURL);
    EXPECT_EQ(VELSysGetPathType(Units(u"ab://"), &kind, 4), 0);
    EXPECT_EQ(kind, VELSysPathKindRelative);
    EXPECT_EQ(VELSysGetPathType(Units(u"/abc"), &kind, 1), VEL::StatusFailure);
    EXPECT_EQ(kind, VELSysPathKindNone);
}

TEST(PathKind, NullArgumentsAreRefused) {
    int kind = 77;
    EXPECT_EQ(VELSysGetPathType(nullptr, &kind, 5), BadHandle);
    EXPECT_EQ(kind, 77);
    EXPECT_EQ(VELSysGetPathType(Units(u"/a"), nullptr, 2), BadHandle);
    EXPECT_EQ(VELSysGetPathType(nullptr, nullptr, 0), BadHandle);
}

const std::map<int, unsigned int> StorageCodes = {
    {2, 0x80030002},  {4, 0x800300fd},  {5, 0x8003001d},  {9, 0x80030006},  {11, 0x80030021}, {12, 0x80030008},
    {13, 0x80030005}, {14, 0x800300fc}, {17, 0x80030050}, {22, 0x80030057}, {23, 0x80030070}, {24, 0x80030004},
    {28, 0x80030070}, {30, 0x80030013}, {36, 0x800300fc}, {75, 0x800300fd}, {122, 0x8003001d}};

const std::map<int, unsigned int> SystemCodes = {
    {2, 0x2},   {4, 0x3E3}, {5, 0x4005}, {9, 0x6},  {11, 0x4005}, {12, 0x8},  {13, 0x5},  {14, 0x4005},
    {17, 0x50}, {22, 0x57}, {23, 0x12},  {24, 0x4}, {28, 0x70},   {30, 0x13}, {36, 0x7B}, {75, 0x216}};

TEST(ConvertError, OfStorageFollowsItsTable) {
    for (int error = -3; error <= 200; ++error) {
        const auto found = StorageCodes.find(error);
        const unsigned int expected = found != StorageCodes.end() ? found->second : 0x800300fd;
        EXPECT_EQ(static_cast<unsigned int>(VELConvertError(error, 3)), expected) << error;
    }
}

TEST(ConvertError, OfAnyOtherFacilityFollowsTheSecondTable) {
    for (const int facility : {0, 1, 2, 4, 7, 0x7FF}) {
        for (int error = -3; error <= 200; ++error) {
            const auto found = SystemCodes.find(error);
            const unsigned int low = found != SystemCodes.end() ? found->second : 0x4005;
            EXPECT_EQ(static_cast<unsigned int>(VELConvertError(error, facility)),
                      0x80000000u | static_cast<unsigned int>(facility) << 16 | low)
                << error << " of " << facility;
        }
    }
}

TEST(ConvertError, GivesTheKnownExamples) {
    EXPECT_EQ(static_cast<unsigned int>(VELConvertError(ENOENT, 7)), 0x80070002u);
    EXPECT_EQ(static_cast<unsigned int>(VELConvertError(145, 7)), 0x80074005u);
    EXPECT_EQ(VELConvertError(145, 7), VEL::StatusNotEmpty);
    EXPECT_EQ(VELConvertError(0, 7), VEL::StatusNotEmpty) << "no error is a failure too";
}

template <std::size_t Size>
std::u16string TextOf(const unsigned short (&constant)[Size]) {
    return {constant, constant + Size};
}

TEST(PathConstants, EndInAZeroUnit) {
    using namespace std::literals;
    EXPECT_EQ(TextOf(URL), u"://\0"s);
    EXPECT_EQ(TextOf(HTTPURL), u"http://\0"s);
    EXPECT_EQ(TextOf(HTTPSURL), u"https://\0"s);
    EXPECT_EQ(TextOf(DLURL), u"QORDLN://\0"s);
    EXPECT_EQ(TextOf(RBQURL), u"RBQVAULT://\0"s);
    EXPECT_EQ(TextOf(DLHead), u"\x01\x02\x5C\0"s);
}

TEST(PathConstants, SingleUnitsHaveNoTerminator) {
    EXPECT_EQ(TextOf(Slash), u"/");
    EXPECT_EQ(TextOf(AntiS), u"\\");
    EXPECT_EQ(TextOf(Env), u"$");
}

} // namespace
