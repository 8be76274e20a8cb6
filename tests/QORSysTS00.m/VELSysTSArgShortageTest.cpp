/// @file
/// The argument store when memory runs out at each request of a call.

#include "ArgumentStore.h"
#include "HeapLog.h"
#include "QORSysTSUnicodeString.h"

#include <gtest/gtest.h>
#include <optional>

using namespace ArgumentStore;

namespace {

/// Runs a call with its first request failing, then with its second, until it needs no more.
/// @param check  Told what each run left behind.
template <class Prepare, class Call, class Check>
void Sweep(const Prepare& prepare, const Call& call, const Check& check) {
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        for (int request = 1;; ++request) {
            ASSERT_LT(request, 1000);
            prepare();
            bool hasStruck = false;
            int status = 0;
            {
                const HeapShortage shortage(request, extent);
                status = call();
                hasStruck = HeapShortage::HasStruck();
            }
            if (!hasStruck) {
                EXPECT_EQ(status, 0);
                break;
            }
            check(status);
        }
    }
}

} // namespace

TEST(VELSysTSArgShortage, OfTheCommandLineLosesOptionsAndNothingElse) {
    char program[] = "program";
    char flag[] = "-flag";
    char e[] = "-e";
    char first[] = "first";
    char second[] = "second";
    char level[] = "--level=3";
    char level2[] = "--level=4";
    char* argv[] = {program, flag, e, first, second, level, level2, nullptr};
    Sweep([] { Set({"-old"}); }, [&] { return VELSysTSSetArg(7, argv); },
          [](int status) {
              EXPECT_EQ(status, 0);
              EXPECT_EQ(Get("old"), Missing());
              EXPECT_TRUE(Get("flag") == Flag() || Get("flag") == Missing());
              EXPECT_TRUE(Get("e") == Value("first second") || Get("e") == Missing());
              const Found found = Get("level");
              EXPECT_TRUE(found == Value("3") || found == Value("4") || found == Missing()) << found;
          });
}

TEST(VELSysTSArgShortage, OfTheFirstTableIsAnOrdinaryFailure) {
    const QORUnicodeString value("1");
    {
        const HeapShortage shortage(1, HeapShortage::FromThatOneOn);
        EXPECT_EQ(VELSysTSSetArg(0, nullptr), 0);
        EXPECT_EQ(VELSysTSAddArg("a", &value), VEL::StatusFailure);
        EXPECT_EQ(VELSysTSResetArg("a"), VEL::StatusFailure);
    }
    EXPECT_EQ(Get("a"), Failed(VEL::StatusFailure));
}

TEST(VELSysTSArgShortage, OfAnAdditionFails) {
    for (const char* const encoding : {"narrow", "wide"}) {
        Sweep(
            [] {
                Set({"-a=old", "-b"});
            },
            [&] {
                // Made inside, so that no view is there from the run before.
                QORUnicodeString value("a value that is longer than the shortest");
                if (encoding[0] == 'w') {
                    value.BuildFromUCChar(reinterpret_cast<const unsigned short*>(u"x"), 1);
                }
                return value.IsEmpty() ? VEL::StatusFailure : VELSysTSAddArg("a", &value);
            },
            [](int status) {
                EXPECT_EQ(status, VEL::StatusFailure);
                EXPECT_TRUE(Get("a") == Missing() || Get("a") == Value("old"));
                EXPECT_EQ(Get("b"), Flag());
            });
    }
}

TEST(VELSysTSArgShortage, OfAnAdditionRemovesTheOldOptionAllTheSame) {
    // Without a 16-bit view in the first form, so that the conversion has all of its steps to fail in.
    for (const bool isNarrow : {true, false}) {
        std::optional<QORUnicodeString> value;
        int failures = 0;
        Sweep(
            [&] {
                Set({"-a=old", "-b"});
                value.emplace("a value that is \xC3\xA9 longer than the shortest");
                if (!isNarrow) {
                    value->BuildFromUCChar(reinterpret_cast<const unsigned short*>(u"\u00E9"), 1);
                }
            },
            [&] { return VELSysTSAddArg("a", &*value); },
            [&](int status) {
                ++failures;
                EXPECT_EQ(status, VEL::StatusFailure);
                EXPECT_EQ(Get("a"), Missing());
                EXPECT_EQ(Get("b"), Flag());
            });
        EXPECT_GT(failures, 2);
    }
}

TEST(VELSysTSArgShortage, OfAFlagFails) {
    Sweep([] { Set({"-a=old"}); }, [] { return VELSysTSAddArg("a", nullptr); },
          [](int status) {
              EXPECT_EQ(status, VEL::StatusFailure);
              EXPECT_EQ(Get("a"), Missing());
          });
}

TEST(VELSysTSArgShortage, OfALookUpFailsAndLeavesTheValueOrNone) {
    for (const std::size_t length : {1UL, 2000UL}) {
        const std::string text(length, 'x');
        Set({"-a=" + text});
        int hasValue = 0;
        int isAdded = 0;
        QORUnicodeString value;
        int failures = 0;
        Sweep(
            [&] {
                value = Untouched;
                hasValue = 77;
                isAdded = 78;
            },
            [&] { return VELSysTSGetArg("a", hasValue, isAdded, value); },
            [&](int status) {
                ++failures;
                EXPECT_EQ(status, VEL::StatusFailure);
                EXPECT_EQ(hasValue, 77);
                EXPECT_EQ(isAdded, 78);
                EXPECT_TRUE(UTF8Of(value) == Untouched || value.IsEmpty());
            });
        EXPECT_GT(failures, 0);
        EXPECT_EQ(UTF8Of(value), text);
    }
}
