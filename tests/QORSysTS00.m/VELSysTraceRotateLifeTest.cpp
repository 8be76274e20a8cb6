/// @file
/// The whole life of rotated files, compared with a plain model after every step.

#include "RotatedFiles.h"
#include "ScratchDirectory.h"
#include "VELSysTraceRotate.h"

#include <memory>
#include <random>

namespace {

using namespace RotatedFiles;

constexpr unsigned long MaximumSize = 40;

class TraceRotateLife : public ScratchTest, public testing::WithParamInterface<unsigned long> {
protected:
    void TearDown() override {
        made.reset();
        ScratchTest::TearDown();
    }

    void Start() {
        model.Start();
        made = std::make_unique<VELSysTraceRotate>((scratch + "/log.txt").c_str(), MaximumSize, GetParam());
        ASSERT_EQ(made->Open(), 0);
        model.Open();
        ExpectSame();
    }

    /// Gives the files the times in which they became numbered, so that a second is long enough.
    void End() {
        made.reset();
        model.Close();
        for (const auto& [index, time] : model.Times()) {
            StampFile(scratch / model.NameOf(index), time);
        }
    }

    void Write() {
        // Some are longer than a file may be.
        const std::size_t size = random() % 10 == 0 ? MaximumSize + random() % 10 : random() % 20;
        const std::string text = std::to_string(++texts) + std::string(size, 'x');
        ASSERT_EQ(made->Write(text.c_str()), static_cast<int>(text.size()));
        model.Write(text);
    }

    void RemoveOne() {
        const auto times = model.Times();
        if (times.empty()) {
            return;
        }
        const std::uint64_t index = std::next(times.begin(), static_cast<long>(random() % times.size()))->first;
        std::filesystem::remove(scratch / model.NameOf(index));
        model.Remove(index);
    }

    void ExpectSame() {
        ASSERT_EQ(ContentsOf(scratch.Path()), model.Files());
        ASSERT_EQ(NextOf(*made), model.Next());
        ASSERT_EQ(OldestOf(*made), model.Oldest());
    }

    /// At least 30 files, and each number twice.
    bool GoesOn() const { return model.Rotations() < 30 || model.Rotations() < static_cast<int>(2 * GetParam()); }

    Model model{MaximumSize, GetParam()};
    std::unique_ptr<VELSysTraceRotate> made;
    std::minstd_rand random{static_cast<unsigned int>(GetParam())};
    int texts = 0;
};

TEST_P(TraceRotateLife, EachTextIsWhereItBelongs) {
    ASSERT_NO_FATAL_FAILURE(Start());
    while (GoesOn()) {
        ASSERT_NO_FATAL_FAILURE(Write());
        ASSERT_NO_FATAL_FAILURE(ExpectSame());
    }
}

TEST_P(TraceRotateLife, GoesOnWhereItWasWhenItIsRestarted) {
    ASSERT_NO_FATAL_FAILURE(Start());
    while (GoesOn()) {
        ASSERT_NO_FATAL_FAILURE(Write());
        ASSERT_NO_FATAL_FAILURE(ExpectSame());
        if (random() % 4 == 0) {
            ASSERT_NO_FATAL_FAILURE(End());
            ASSERT_NO_FATAL_FAILURE(Start());
        }
    }
}

TEST_P(TraceRotateLife, LosesNoTextWhenOthersRemoveNumberedFiles) {
    ASSERT_NO_FATAL_FAILURE(Start());
    while (GoesOn()) {
        ASSERT_NO_FATAL_FAILURE(Write());
        if (random() % 3 == 0) {
            RemoveOne();
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSame());
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, TraceRotateLife, testing::Values(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 70, 101),
                         testing::PrintToStringParamName());

} // namespace
