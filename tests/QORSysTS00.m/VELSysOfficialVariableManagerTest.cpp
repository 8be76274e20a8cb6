#include "VELSysOfficialVariableManager.h"

#include "ScratchDirectory.h"
#include "VELSysStatus.h"

#include <gtest/gtest.h>
#include <string>

namespace {

VELSysPath PathOf(const std::string& text) {
    VELSysPath path;
    path.Set(text.c_str());
    return path;
}

class OfficialVariables : public ScratchTest {
protected:
    VELSysOfficialVariableManager manager;

    int Set(VELSysOfficialPathVariable which, const std::string& text) {
        VELSysPath path = PathOf(text);
        return manager.setOfficialVariable(which, path);
    }

    VELSysPath Get(VELSysOfficialPathVariable which) {
        VELSysPath path = PathOf("/untouched");
        EXPECT_EQ(manager.getPathFromOfficialVariable(which, path), 0);
        return path;
    }

    std::string Text() const { return scratch.Path().string(); }
};

} // namespace

TEST_F(OfficialVariables, AreInvalidAtFirst) {
    for (int i = 0; i < VELSysOfficialPathVariableCount; ++i) {
        EXPECT_FALSE(Get(static_cast<VELSysOfficialPathVariable>(i)).IsValid());
    }
}

TEST_F(OfficialVariables, TakeDirectories) {
    std::filesystem::create_directory(scratch / "a");
    EXPECT_EQ(Set(VELSysOfficialPathInstall, Text() + "/a"), 0);
    EXPECT_EQ(Set(VELSysOfficialPathTrace, Text()), 0);
    EXPECT_TRUE(Get(VELSysOfficialPathInstall) == (Text() + "/a").c_str());
    EXPECT_TRUE(Get(VELSysOfficialPathTrace) == Text().c_str());
    EXPECT_FALSE(Get(VELSysOfficialPathTemporary).IsValid());
}

TEST_F(OfficialVariables, RefuseFilesAndKeepTheOldPath) {
    WriteFile(scratch / "file", "text");
    Set(VELSysOfficialPathInstall, Text());
    EXPECT_EQ(Set(VELSysOfficialPathInstall, Text() + "/file"), VEL::StatusFailure);
    EXPECT_EQ(Set(VELSysOfficialPathInstall, Text() + "/missing"), VEL::StatusFailure);
    EXPECT_EQ(Set(VELSysOfficialPathInstall, ""), VEL::StatusFailure);
    EXPECT_TRUE(Get(VELSysOfficialPathInstall) == Text().c_str());
}

TEST_F(OfficialVariables, KeepACopy) {
    VELSysPath path = PathOf(Text());
    manager.setOfficialVariable(VELSysOfficialPathInstall, path);
    path.Set("/");
    EXPECT_TRUE(Get(VELSysOfficialPathInstall) == Text().c_str());
    Get(VELSysOfficialPathInstall).Set("/");
    EXPECT_TRUE(Get(VELSysOfficialPathInstall) == Text().c_str());
}

TEST_F(OfficialVariables, ThatDoNotExistAreRefused) {
    for (const int which : {-1, static_cast<int>(VELSysOfficialPathVariableCount), 1000}) {
        const auto variable = static_cast<VELSysOfficialPathVariable>(which);
        VELSysPath path = PathOf(Text());
        EXPECT_EQ(manager.setOfficialVariable(variable, path), VEL::StatusFailure);
        EXPECT_EQ(manager.getPathFromOfficialVariable(variable, path), VEL::StatusFailure);
        EXPECT_TRUE(path == Text().c_str()) << "untouched";
    }
}
