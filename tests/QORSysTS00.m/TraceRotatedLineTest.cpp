// Lines that go to a rotated file, which are strings on their way.

#include "HeapLog.h"
#include "StringEnvironment.h"
#include "TraceSupport.h"

#include <cstdarg>
#include <gtest/gtest.h>

using namespace TraceSupport;

namespace {

/// In a UTF-8 environment and in another.
class TraceRotatedLine : public TraceTest, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        StringEnvironment::UseCodePage(GetParam());
        TraceTest::SetUp();
        ASSERT_EQ(
            Configure({{"f", {"A"}, {{VELSysTraceOptionRotateSize, 10000000}, {VELSysTraceOptionRotateCount, 3}}}}), 0);
    }
    bool IsUTF8() const { return GetParam() == std::string(StringEnvironment::UTF8); }
};

int Print(VELSysQORTrace& trace, VELSysTraceLineOptions options, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = trace.InternalMessagePrint(&options, format, arguments);
    va_end(arguments);
    return result;
}

} // namespace

TEST_P(TraceRotatedLine, CountsCharactersAgainstBytes) {
    const TraceHandle trace("A");
    std::string expected;
    for (const char* text : {"a", "\u00e4", "\xFF", "a\u20ac"}) {
        const bool isOneByteEach = !IsUTF8() || text == std::string("a") || text == std::string("\xFF");
        EXPECT_EQ(trace->Info("%s", text), isOneByteEach ? 0 : -1) << text;
        // The line is written all the same.
        expected += PlainLine({.level = 1, .tag = "A"}, text);
        EXPECT_EQ(FileText("f"), expected);
    }
}

TEST_P(TraceRotatedLine, OfANullTerminatorHasNone) {
    const TraceHandle trace("A");
    EXPECT_EQ(Print(*trace.Writer(), {0, VELSysTraceWarning, 0, 0, "A", nullptr, nullptr}, "text"), 0);
    EXPECT_EQ(FileText("f"), "[W] text");
}

TEST_P(TraceRotatedLine, IsWrittenWholeOrNotAtAllWithoutMemory) {
    const TraceHandle trace("A");
    std::string expected;
    for (const std::size_t size : {1U, 100U, 3000U}) {
        const std::string message(size, 'm');
        const std::string line = PlainLine({.level = 2, .tag = "A"}, message);
        bool hasStruck = true;
        for (int request = 1; hasStruck; ++request) {
            for (const HeapShortage::Extent extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
                int result = 1;
                {
                    const HeapShortage shortage(request, extent);
                    result = trace->Debug("%s", message.c_str());
                    hasStruck = HeapShortage::HasStruck();
                }
                expected += result == 0 ? line : "";
                ASSERT_TRUE(result == 0 || (result == -1 && hasStruck)) << request;
                ASSERT_EQ(FileText("f"), expected) << request;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(CodePages, TraceRotatedLine,
                         testing::Values(StringEnvironment::UTF8, StringEnvironment::OneToOne),
                         StringEnvironment::NameOf);
