#include "tools/vistrel_diag/sections/warp/warp_section.h"

#include <gtest/gtest.h>

#include "tests/unit/support/report_capture.h"

namespace {

/// The sizes in one line each.
std::string Listed(std::int32_t width, std::int32_t height) {
    std::string text;
    for (const WarpSize& size : WarpSizes({width, height})) {
        text += FormatText("%dx%d %s\n", size.width, size.height, size.label.c_str());
    }
    return text;
}

TEST(WarpSizes, PutsTheDesktopFirst) {
    EXPECT_EQ(Listed(3440, 1440),
              "3440x1440 your desktop (what runs today)\n2560x1440 1440p\n1920x1080 1080p\n");
}

TEST(WarpSizes, NamesADesktopOfAFixedSizeOnce) {
    EXPECT_EQ(Listed(2560, 1440), "2560x1440 your desktop (what runs today)\n1920x1080 1080p\n");
    EXPECT_EQ(Listed(1920, 1080), "1920x1080 your desktop (what runs today)\n2560x1440 1440p\n");
}

TEST(WarpSizes, ComparesBothSides) {
    EXPECT_EQ(Listed(2560, 1080),
              "2560x1080 your desktop (what runs today)\n2560x1440 1440p\n1920x1080 1080p\n");
}

TEST(WarpSizes, OmitsAnUnknownDesktop) {
    EXPECT_EQ(Listed(0, 0), "2560x1440 1440p\n1920x1080 1080p\n");
    EXPECT_EQ(Listed(1280, 0), "2560x1440 1440p\n1920x1080 1080p\n");
    EXPECT_EQ(Listed(0, 720), "2560x1440 1440p\n1920x1080 1080p\n");
}

std::string SizeText(const CaptureMeasurement& capture, const std::vector<DisplayInfo>& displays) {
    const DesktopSize size = SizeOfDesktop(capture, displays);
    return FormatText("%dx%d", size.width, size.height);
}

DisplayInfo Display(std::int32_t width, std::int32_t height, bool primary) {
    DisplayInfo display;
    display.width = width;
    display.height = height;
    display.primary = primary;
    return display;
}

CaptureMeasurement Captured(bool ok, std::uint32_t width, std::uint32_t height) {
    CaptureMeasurement capture;
    capture.ok = ok;
    capture.width = width;
    capture.height = height;
    return capture;
}

TEST(SizeOfDesktop, IsThatOfTheCapture) {
    EXPECT_EQ(SizeText(Captured(true, 3440, 1440), {Display(1920, 1080, true)}), "3440x1440");
}

TEST(SizeOfDesktop, IsThatOfTheLastPrimaryDisplayWithoutACapture) {
    const CaptureMeasurement failed = Captured(false, 3440, 1440);
    EXPECT_EQ(
        SizeText(failed, {Display(800, 600, false), Display(1920, 1080, true), Display(640, 480, false)}),
        "1920x1080");
    EXPECT_EQ(SizeText(failed, {Display(1920, 1080, true), Display(1280, 720, true)}), "1280x720");
}

TEST(SizeOfDesktop, IsUnknownWithoutBoth) {
    EXPECT_EQ(SizeText(Captured(false, 0, 0), {Display(800, 600, false)}), "0x0");
    EXPECT_EQ(SizeText(Captured(false, 0, 0), {}), "0x0");
}

TEST(WarpSection, PrintsTheTable) {
    const ReportCapture report;
    PrintWarpTableHeader();
    PrintWarpRow({3440, 1440, "your desktop (what runs today)"}, {3440, 1440, 4.125, 93.5, true});
    PrintWarpRow({2560, 1440, "1440p"}, {2560, 1440, 123.456, 0.0, true});
    EXPECT_EQ(report.Text(), R"(SIZE                                            GPU ms      VRAM MB
3440x1440  your desktop (what runs today)         4.12           94
2560x1440  1440p                                123.46            0
)");
}

TEST(WarpSection, QuotesTheCompiler) {
    const ReportCapture report;
    PrintWarpShaderFailure("C:\\V\\s.hlsl(3,5-9): error X3004: undeclared identifier 'foo'\n100%s");
    EXPECT_EQ(
        report.Text(),
        R"(!! stereo_warp.hlsl could not be compiled: C:\V\s.hlsl(3,5-9): error X3004: undeclared identifier 'foo'
100%s
!! Put this exe in the Vistrel install folder, next to the vistrel\ directory.
)");
}

std::string FailureLines(std::optional<WarpFailure> failure, std::optional<DepthMapFailure> depth_map = {}) {
    const ReportCapture report;
    WarpTiming timing;
    timing.width = 1280;
    timing.height = 720;
    timing.failure = failure;
    timing.depth_map_failure = depth_map;
    PrintWarpFailures(timing);
    return report.Text();
}

TEST(WarpSection, HasATextForEveryFailure) {
    EXPECT_EQ(FailureLines({}), "");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::ColourTexture, 0x8007000E}),
              "!! could not create the 1280x720 colour texture (out of VRAM?)\n");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::DepthTexture, 0x8007000E}),
              "!! could not create the 1280x720 depth texture\n");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::LeftEyeTarget, 0x8007000E}),
              "!! could not create eye target 0 at 1280x720\n");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::RightEyeTarget, 0x8007000E}),
              "!! could not create eye target 1 at 1280x720\n");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::VertexShader, {}}), "!! vertex shader failed to compile\n");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::NoUsableTime, {}}),
              "!! GPU timing produced nothing usable at 1280x720\n");
}

TEST(WarpSection, ReportsTheDepthMapFirst) {
    EXPECT_EQ(FailureLines({}, DepthMapFailure{"(1,1): error %s", {}}),
              "!! shader compile failed: (1,1): error %s\n");
    EXPECT_EQ(FailureLines(WarpFailure{WarpStop::NoUsableTime, {}}, DepthMapFailure{"", 0x80004005}),
              "!! shader compile failed: CreatePixelShader failed (0x80004005)\n"
              "!! GPU timing produced nothing usable at 1280x720\n");
}

TEST(WarpSection, TheWaitForTheGpuIsShownOnTheConsoleOnly) {
    const ReportCapture report;
    testing::internal::CaptureStdout();
    PrintWaitForGpu();
    const std::string console = testing::internal::GetCapturedStdout();
    EXPECT_NE(console.find("The GPU has not answered for 20 seconds. The tool still waits for it;\n"
                           "Ctrl-C ends the run and keeps the report.\n"),
              std::string::npos);
    EXPECT_EQ(report.Text(), "");
}

}  // namespace
