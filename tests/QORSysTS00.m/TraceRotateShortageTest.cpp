/// @file
/// Rotated files and reference traces when memory runs out at each request: a failure, nobody else's file touched, and
/// no leak.

#include "HeapLog.h"
#include "QORSysTSTrace.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysTraceRotate.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;

constexpr int Requests = 400;

class TraceShortage : public ScratchTest, public testing::WithParamInterface<const char*> {
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

    /// @param path  In the working directory.
    void RunRotation(const char* path) {
        // What a name that lacks a part could be taken for.
        for (const char* name : {".1.txt", "log.1", ".1", "log"}) {
            WriteFile(name, "others");
        }
        VELSysTraceRotate file(path, 4, 1);
        file.Open();
        for (const char* text : {"one.", "two.", "tri."}) {
            file.Write(text);
        }
        file.Close();
    }
};

TEST_P(TraceShortage, LeavesOthersFilesAlone) {
    RunRotation("log.txt");
    bool hasStruck = true;
    for (int request = 1; hasStruck && request < Requests; ++request) {
        for (const HeapShortage::Extent extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
            {
                VELSysTraceRotate* file = nullptr;
                const HeapShortage shortage(request, extent);
                file = new (std::nothrow) VELSysTraceRotate("log.txt", 4, 1);
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
            for (const char* name : {".1.txt", "log.1", ".1", "log"}) {
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

INSTANTIATE_TEST_SUITE_P(CodePages, TraceShortage,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

} // namespace
