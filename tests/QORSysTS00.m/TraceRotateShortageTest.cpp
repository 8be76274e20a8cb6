/// @file
/// Rotated files in two environments, and rotated files and reference traces when memory runs out at each request: a
/// failure, and nobody else's file touched.

#include "HeapLog.h"
#include "QORSysTSTrace.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysTraceRotate.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;

constexpr int Requests = 400;
/// What a name that lacks a part could be taken for.
constexpr const char* OthersFiles[] = {".1.txt", "log.1", ".1", "log"};

class TraceRotateEnvironment : public ScratchTest, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        StringEnvironment::UseCodePage(GetParam());
        ScratchTest::SetUp();
        fs::create_directory(scratch / "d");
        fs::current_path(scratch / "d");
    }
    void TearDown() override {
        fs::current_path("/");
        ScratchTest::TearDown();
    }
};

TEST_P(TraceRotateEnvironment, ShortageLeavesOthersFilesAlone) {
    for (const char* name : OthersFiles) {
        WriteFile(name, "others");
    }
    // Long enough for blocks that the strings don't keep for themselves.
    const std::string path = scratch.Path().string() + std::string(100, '/') + "d" + std::string(100, '/') + "log.txt";
    bool hasStruck = true;
    for (int request = 1; hasStruck && request < Requests; ++request) {
        for (const HeapShortage::Extent extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
            {
                VELSysTraceRotate* file = nullptr;
                const HeapShortage shortage(request, extent);
                file = new (std::nothrow) VELSysTraceRotate(path.c_str(), 4, 1);
                if (file != nullptr) {
                    file->Open();
                    for (const char* text : {"one.", "two.", "tri."}) {
                        const int written = file->Write(text);
                        if (written != -1 && written != 4) {
                            std::abort();
                        }
                    }
                    file->Close();
                    delete file;
                }
                hasStruck = HeapShortage::HasStruck();
            }
            for (const char* name : OthersFiles) {
                ASSERT_EQ(ReadFile(name), "others") << name << " at request " << request;
            }
        }
    }
    EXPECT_FALSE(hasStruck);
}

TEST(ReferenceTraceShortage, ATraceIsMadeOrNot) {
    for (int request = 1; request < 3; ++request) {
        const HeapShortage shortage(request, HeapShortage::FromThatOneOn);
        int wasNew = 7;
        const QORSysTSRefTrace* const made = QORSysTSRefTrace::FindRef("made", 1, &wasNew);
        if (made != nullptr || wasNew != 7) {
            std::abort();
        }
    }
    int wasNew = 7;
    EXPECT_NE(QORSysTSRefTrace::FindRef("made", 1, &wasNew), nullptr);
    EXPECT_EQ(wasNew, -1);
    const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
    if (QORSysTSRefTrace::OpenOptFile() != nullptr) {
        std::abort();
    }
}

TEST_P(TraceRotateEnvironment, NamesAreUTF8InEveryEnvironment) {
    {
        VELSysTraceRotate file("\u00e4/l\u00f6g.t\u00e4xt", 4, 11);
        EXPECT_EQ(file.Open(), -1);
        fs::create_directory("\u00e4");
        EXPECT_EQ(file.Open(), 0);
        file.Write("one.");
        file.Write("two.");
    }
    EXPECT_EQ(ReadFile("\u00e4/l\u00f6g.t\u00e4xt"), "two.");
    EXPECT_EQ(ReadFile("\u00e4/l\u00f6g.01.t\u00e4xt"), "one.");
}

INSTANTIATE_TEST_SUITE_P(CodePages, TraceRotateEnvironment,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

} // namespace
