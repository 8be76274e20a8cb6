#include "VELSysDevelopmentStage.h"

#include "Child.h"
#include "HeapLog.h"
#include "VirtualTable.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace {

std::vector<std::string> s_calls;
/// What VELSysGetEnvA() knows, or null as on this platform.
const char* s_variable = nullptr;
/// Objects given back so far.
int s_deleted = 0;

int Stage() {
    int stage = 77;
    EXPECT_EQ(VELSysDevelopmentStage(&stage), 0);
    return stage;
}

} // namespace

extern "C" int __wrap__Z13VELSysGetEnvAPmPcmPKc(std::size_t* length, char* buffer, std::size_t room, const char* name) {
    s_calls.push_back(std::string(buffer == nullptr ? "size of " : "value of ") + name);
    if (s_variable == nullptr) {
        return -1;
    }
    *length = std::strlen(s_variable);
    if (buffer != nullptr) {
        std::snprintf(buffer, room, "%s", s_variable);
    }
    return 0;
}

extern "C" int __real__Z26VELSysLifeCycleDynamicLoadPKcPPv(const char* library, void** handle);
extern "C" int __wrap__Z26VELSysLifeCycleDynamicLoadPKcPPv(const char* library, void** handle) {
    s_calls.push_back(std::string("load ") + library);
    return __real__Z26VELSysLifeCycleDynamicLoadPKcPPv(library, handle);
}

extern "C" void* __real__Z33VELSysLifeCycleDynamicGetFunctionPvPKc(void* handle, const char* function);
extern "C" void* __wrap__Z33VELSysLifeCycleDynamicGetFunctionPvPKc(void* handle, const char* function) {
    s_calls.push_back(std::string("function ") + function);
    return __real__Z33VELSysLifeCycleDynamicGetFunctionPvPKc(handle, function);
}

extern "C" int __real__Z28VELSysLifeCycleDynamicUnloadPv(void* handle);
extern "C" int __wrap__Z28VELSysLifeCycleDynamicUnloadPv(void* handle) {
    s_calls.push_back("unload");
    return __real__Z28VELSysLifeCycleDynamicUnloadPv(handle);
}

extern "C" void __real__ZdlPv(void* block);
extern "C" void __wrap__ZdlPv(void* block) {
    ++s_deleted;
    __real__ZdlPv(block);
}

extern "C" void __real__ZdlPvm(void* block, std::size_t size);
extern "C" void __wrap__ZdlPvm(void* block, std::size_t size) {
    ++s_deleted;
    __real__ZdlPvm(block, size);
}

CHILD_PROGRAM(PrintsTheStage) {
    std::printf("%d\n", Stage());
    for (const std::string& call : s_calls) {
        std::puts(call.c_str());
    }
    return 0;
}

TEST(VELSysDevelopmentStage, RefusesNull) {
    EXPECT_EQ(VELSysDevelopmentStage(nullptr), -1);
    EXPECT_TRUE(s_calls.empty());
}

TEST(VELSysDevelopmentStage, IsZeroWithoutTheLibraryWhateverTheVariable) {
    for (const char* value : {"TRUE", "YES", "FALSE"}) {
        const Child child = RunChild("PrintsTheStage", {.set = {{"QORDevelopmentStage", value}}});
        EXPECT_EQ(child.out, "0\nsize of QORDevelopmentStage\nload PZ4DevPhase\n");
    }
}

TEST(VELSysDevelopmentStage, IsTwoWithTheLibrary) {
    const Child child = RunChild("PrintsTheStage", {.set = {{"LD_LIBRARY_PATH", WITH_DEV_PHASE}}});
    EXPECT_EQ(child.out, "2\nsize of QORDevelopmentStage\nload PZ4DevPhase\nfunction InDevPhase\nunload\n");
    EXPECT_EQ(child.exitCode, 0) << child.err;
}

TEST(VELSysDevelopmentStage, IsZeroWithALibraryWithoutTheFunction) {
    const Child child = RunChild("PrintsTheStage", {.set = {{"LD_LIBRARY_PATH", WITH_OTHER_DEV_PHASE}}});
    EXPECT_EQ(child.out, "0\nsize of QORDevelopmentStage\nload PZ4DevPhase\nfunction InDevPhase\nunload\n");
}

TEST(VELSysDevelopmentStage, IsFoundOutOnce) {
    EXPECT_EQ(Stage(), 0);
    const std::size_t calls = s_calls.size();
    EXPECT_EQ(Stage(), 0);
    EXPECT_EQ(s_calls.size(), calls);
}

TEST(VELSysDevelopmentStage, IsFoundOutAgainAfterAClear) {
    Stage();
    s_calls.clear();
    VELSysDevelopmentStageClear();
    EXPECT_TRUE(s_calls.empty());
    EXPECT_EQ(Stage(), 0);
    EXPECT_EQ(s_calls, (std::vector<std::string>{"size of QORDevelopmentStage", "load PZ4DevPhase"}));
    VELSysDevelopmentStageClear();
    VELSysDevelopmentStageClear();
}

TEST(VELSysDevelopmentStage, GivesItsObjectBackOnceCleared) {
    Stage();
    s_deleted = 0;
    VELSysDevelopmentStageClear();
    EXPECT_EQ(s_deleted, 1);
    VELSysDevelopmentStageClear();
    EXPECT_EQ(s_deleted, 1);
}

TEST(VELSysDevelopmentStage, StartsAtZeroAgainAfterAClear) {
    s_variable = "YES";
    EXPECT_EQ(Stage(), 1);
    VELSysDevelopmentStageClear();
    s_variable = nullptr;
    EXPECT_EQ(Stage(), 0);
    VELSysDevelopmentStageClear();
}

TEST(VELSysDevelopmentStage, IsOneWhereTheVariableCouldBeRead) {
    for (const char* value : {"TRUE", "YES", "true", "yEs"}) {
        s_variable = value;
        s_calls.clear();
        VELSysDevelopmentStageClear();
        EXPECT_EQ(Stage(), 1) << value;
        EXPECT_EQ(s_calls, (std::vector<std::string>{"size of QORDevelopmentStage", "value of QORDevelopmentStage"}));
    }
    for (const char* value : {"", "NO", "TRUES", "FALSE"}) {
        s_variable = value;
        VELSysDevelopmentStageClear();
        EXPECT_EQ(Stage(), 0) << value;
    }
    VELSysDevelopmentStageClear();
}

TEST(VELSysDevelopmentStage, FailsWithoutMemory) {
    int stage = 77;
    {
        const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
        EXPECT_EQ(VELSysDevelopmentStage(&stage), -1);
    }
    EXPECT_EQ(stage, 77);
    EXPECT_EQ(Stage(), 0);
    VELSysDevelopmentStageClear();
}

TEST(VELSysDevelopmentStageManager, HasAVirtualDestructorAlone) {
    using Manager = VELSysDevelopmentStageManager;
    EXPECT_EQ(VirtualTable::SlotOf(&VirtualTable::WithOneMore<Manager>::OneMore), 2);
    EXPECT_TRUE((std::is_base_of_v<VELSysDevelopmentStageManagerImplementation, Manager>));
    EXPECT_EQ(Manager().stage, 0);
}
