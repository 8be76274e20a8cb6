/// @file
/// Long runs of random operations on a handful of handles, beside plain UTF-16 texts.

#include "StringModel.h"
#include "StringStates.h"

#include <random>

using namespace StringStates;

class RandomChanges : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { StringEnvironment::UseCodePage(GetParam()); }
};

TEST_P(RandomChanges, AgreeWithPlainTexts) {
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::minstd_rand random(seed);
        StringModel::Player player(
            [&random](unsigned int bound) { return static_cast<unsigned int>(random() >> 8) % bound; },
            IsUTF8Environment());
        for (int step = 0; step < 400; ++step) {
            const std::string what = player.Step();
            const std::string difference = player.FirstDifference();
            ASSERT_EQ(difference, "") << "step " << step << ": " << what;
        }
    }
    ExpectTheEmptyBlockIntact();
}

INSTANTIATE_TEST_SUITE_P(Environments, RandomChanges,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);
