#include "tools/vistrel_diag/run_texts_reading.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tools/vistrel_diag/report/rescue.h"

namespace {

/// The line as a run cut short writes it, read back.
std::optional<CutShortReading> ReadBack(RunEnd end, const CrashSite& site, const char* section) {
    std::array<char, 512> buffer = {};
    const std::size_t length = FormatCutShortLine(buffer.data(), buffer.size(), end, site, section);
    return ReadCutShortLine({std::string_view(buffer.data(), length), 7});
}

TEST(CutShortLineReading, ReadsEveryKindOfEnd) {
    for (const RunEnd end : {RunEnd::Crash, RunEnd::Abort, RunEnd::ControlC, RunEnd::ConsoleClosed,
                             RunEnd::SessionEnded, RunEnd::ClosedByInstaller}) {
        const std::optional<CutShortReading> reading = ReadBack(end, {0xC0000005, "name.dll"}, "GPUs");
        ASSERT_TRUE(reading) << static_cast<int>(end);
        EXPECT_EQ(reading->end, end);
        EXPECT_EQ(reading->section, "GPUs");
        EXPECT_EQ(reading->line, 7U);
    }
}

TEST(CutShortLineReading, ReadsTheExceptionWithoutASection) {
    const std::optional<CutShortReading> reading = ReadBack(RunEnd::Crash, {0xC00000FD, ""}, "");
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->exception_code, 0xC00000FDU);
    EXPECT_EQ(reading->module, "");
    EXPECT_EQ(reading->section, "");
}

TEST(CutShortLineReading, ReadsTheModule) {
    const std::optional<CutShortReading> reading = ReadBack(RunEnd::Crash, {0xC0001234, "name.dll"}, "GPUs");
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->exception_code, 0xC0001234U);
    EXPECT_EQ(reading->module, "name.dll");
}

TEST(CutShortLineReading, ReadsTheOffsetInTheModule) {
    const std::optional<CutShortReading> reading =
        ReadBack(RunEnd::Crash, {0xC0000005, "name.dll", 0x1A2B}, "GPUs");
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->exception_code, 0xC0000005U);
    EXPECT_EQ(reading->module, "name.dll");
    EXPECT_EQ(reading->offset, 0x1A2BU);
}

TEST(CutShortLineReading, RejectsOtherLines) {
    EXPECT_FALSE(ReadBack(static_cast<RunEnd>(99), {}, "GPUs")) << "an end that nobody knows";
    EXPECT_FALSE(ReadCutShortLine({"!! THIS RUN WAS CUT SHORT", 1}));
    EXPECT_FALSE(ReadCutShortLine({"Nothing notable", 1}));
}

}  // namespace
