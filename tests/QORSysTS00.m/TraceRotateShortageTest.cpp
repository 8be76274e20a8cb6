/// @file
/// Rotated files in two environments, and rotated files and reference traces when memory runs out at each request: a
/// failure, and nobody else's file touched.

#include "HeapLog.h"
#include "HeapMemory.h"
#include "QORSysTSTrace.h"
#include "RotatedFiles.h"
#include "ScratchDirectory.h"
#include "StringEnvironment.h"
#include "VELSysStr.h"
#include "VELSysTraceRotate.h"

#include <algorithm>
#include <chrono>
#include <random>

namespace {

namespace fs = std::filesystem;

constexpr int Requests = 400;
/// What a name that lacks a part could be taken for.
constexpr const char* OthersFiles[] = {".1.txt", "log.1", ".1", "log"};

/// A text of an object, as the system is given it.
std::string SystemTextOf(const VELSysTraceRotate& object, std::size_t offset) {
    const VEL::internal::HeapArray<char> bytes(VELSysStrToUTF8(RotatedFiles::TextOf(object, offset)));
    return bytes != nullptr ? bytes.get() : "";
}

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

TEST_P(TraceRotateEnvironment, ARestartGoesOnAtTheOldest) {
    fs::create_directory("\u00e4");
    for (const unsigned long count : {9UL, 70UL}) {
        const std::string zero = count > 10 ? "0" : "";
        for (const char* number : {"1", "2", "3"}) {
            WriteFile("\u00e4/l\u00f6g." + zero + number + ".t\u00e4xt", number);
        }
        fs::last_write_time("\u00e4/l\u00f6g." + zero + "2.t\u00e4xt",
                            fs::file_time_type::clock::now() - std::chrono::hours(1));
        EXPECT_EQ(RotatedFiles::OldestOf(VELSysTraceRotate("\u00e4/l\u00f6g.t\u00e4xt", 4, count)), 2U) << count;
    }
}

TEST_P(TraceRotateEnvironment, APathThatIsNotUTF8IsPartedAsItIsOpened) {
    std::minstd_rand random(1);
    int parted = 0;
    for (int round = 0; round < 4000; ++round) {
        std::string path;
        for (int i = 0; i < 6; ++i) {
            static constexpr char bytes[] = "a.\x80\xBF\xA0\xC3\xE2\x82\xED\xF0\x9F\xF8\xFF";
            path += bytes[random() % (sizeof bytes - 1)];
        }
        path = (round % 2 == 0 ? "x" : "x.") + path;
        const VELSysTraceRotate file(path.c_str(), 4, 9);
        const std::string whole = SystemTextOf(file, 24);
        if (whole.empty()) {
            // Not to be parted, and not to be opened.
            continue;
        }
        ++parted;
        const std::string stem = SystemTextOf(file, 32);
        ASSERT_EQ(stem + SystemTextOf(file, 40), whole);
        ASSERT_EQ(stem, whole.substr(0, whole.find('.')));
    }
    EXPECT_GT(parted, 3800);
}

INSTANTIATE_TEST_SUITE_P(CodePages, TraceRotateEnvironment,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);

} // namespace
