/// @file
/// Numbers when memory runs out.

#include "HeapLog.h"
#include "QORSysTSUnicodeString.h"
#include "QORUnicodeString.h"
#include "StringStates.h"
#include "VELNumConvert.h"
#include "VELStringPool.h"
#include "VELSysCodePage.h"
#include "VELSysStatus.h"

#include <functional>

namespace {

using namespace StringStates;

/// Runs `act` with its first request failing, then with its second, and so on until none fails.
void Sweep(const std::function<void(bool isLastTime)>& act) {
    VELStringPoolSetForCurrentThrd(0);
    // It stays for the process.
    VELSysCodePage::GetEnvConverter();
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        bool hasStruck = true;
        for (int first = 1; hasStruck; ++first) {
            ASSERT_LT(first, 20) << "never enough";
            const HeapLog log;
            {
                const HeapShortage shortage(first, extent);
                act(false);
                hasStruck = HeapShortage::HasStruck();
            }
            EXPECT_EQ(log.Live(), 0u) << "leaked";
        }
    }
    act(true);
}

} // namespace

TEST(NumberShortage, BuildingLeavesTheTextOrNothing) {
    Sweep([](bool) {
        QORUnicodeString s;
        EXPECT_EQ(s.BuildFromNum(-12), 3);
        EXPECT_TRUE(s.IsEmpty() || std::string(s.ConvertToChar()) == "-12");
        QORSysTSUnicodeString ts;
        EXPECT_EQ(ts.BuildFromNum(-12), VEL::StatusOk);
        EXPECT_TRUE(ts.GetLengthInByte() == 0 || std::string(ts.ConvertToChar()) == "-12");
    });
}

TEST(NumberShortage, ViewThatIsMissingIsNoNumber) {
    Sweep([](bool hasMemory) {
        const auto text = [] {
            QORUnicodeString s;
            s.BuildFromWChar(L"1.5");
            return s;
        };
        const QORUnicodeString s = text();
        double value = -1;
        const int status = VEL::ConvertToNumEx(value, s, nullptr);
        if (!s.IsEmpty()) {
            EXPECT_TRUE(status == VEL::StatusOk ? value == 1.5 : !hasMemory && value == -1);
        }
        int number = -1;
        const int count = s.ConvertToNum(&number);
        EXPECT_TRUE(count == 1 ? number == 1 : number == -1);
    });
}

TEST(NumberShortage, TextWithASeparatorIsReadOrNot) {
    const QORUnicodeString comma((std::string(100, '0') + "1,5").c_str());
    const QORUnicodeString dot("1\u00b75");
    VEL::NumConvertCtx commaContext;
    commaContext.SetDecimalSeparator(',');
    VEL::NumConvertCtx dotContext;
    dotContext.SetDecimalSeparator(0xB7);
    Sweep([&](bool hasMemory) {
        for (const auto& [s, ctx] : {std::pair(&comma, &commaContext), std::pair(&dot, &dotContext)}) {
            double value = 0;
            const int status = VEL::ConvertToNumEx(value, *s, ctx);
            if (status == VEL::StatusOk || hasMemory) {
                EXPECT_EQ(status, VEL::StatusOk);
                EXPECT_EQ(value, 1.5);
            } else {
                EXPECT_EQ(status, VEL::StatusBadArgument);
            }
        }
    });
}
