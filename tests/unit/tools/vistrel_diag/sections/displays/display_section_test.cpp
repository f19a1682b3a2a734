#include "tools/vistrel_diag/sections/displays/display_section.h"

#include <gtest/gtest.h>

#include "tests/unit/support/report_capture.h"

namespace {

constexpr const char* kClosingNote =
    "\n(* = primary. Vistrel captures the primary display unless told otherwise, and warps at exactly that "
    "pixel count.)\n";

GpuInfo Gpu(std::uint32_t index, const char* name, std::vector<std::string> displays) {
    GpuInfo gpu;
    gpu.index = index;
    gpu.name = name;
    gpu.displays = std::move(displays);
    return gpu;
}

DisplayInfo Display(const char* name) {
    DisplayInfo display;
    display.name = name;
    return display;
}

std::int32_t MatchedGpu(const char* display, const std::vector<GpuInfo>& gpus) {
    std::vector<DisplayInfo> displays = {Display(display)};
    MatchDisplaysWithGpus(displays, gpus);
    return displays.front().gpu;
}

std::string Printed(const std::vector<DisplayInfo>& displays, const std::vector<GpuInfo>& gpus) {
    const ReportCapture report;
    PrintDisplaySection(displays, gpus);
    return report.Text();
}

TEST(MatchDisplaysWithGpus, ReturnsThePositionInTheListAndNotTheAdapterIndex) {
    const std::vector<GpuInfo> gpus = {Gpu(0, "first", {R"(\\.\DISPLAY1)"}),
                                       Gpu(2, "after a skipped one", {R"(\\.\DISPLAY2)", R"(\\.\DISPLAY3)"})};
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY1)", gpus), 0);
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY2)", gpus), 1);
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY3)", gpus), 1);
}

TEST(MatchDisplaysWithGpus, TakesTheLastOfSeveralGpus) {
    const std::vector<GpuInfo> gpus = {Gpu(0, "a", {R"(\\.\DISPLAY1)"}), Gpu(1, "b", {R"(\\.\DISPLAY1)"}),
                                       Gpu(2, "c", {R"(\\.\DISPLAY2)"})};
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY1)", gpus), 1);
}

TEST(MatchDisplaysWithGpus, ComparesNamesExactly) {
    const std::vector<GpuInfo> gpus = {
        Gpu(0, "a", {R"(\\.\DISPLAY10)", R"(\\.\display1)", R"(\\.\DISPLAY)"})};
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY1)", gpus), -1);
}

TEST(MatchDisplaysWithGpus, ReturnsMinusOneWhenNoGpuClaimsTheDisplay) {
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY1)", {}), -1);
    EXPECT_EQ(MatchedGpu(R"(\\.\DISPLAY1)", {Gpu(0, "a", {})}), -1);
}

TEST(MatchDisplaysWithGpus, ReplacesAnEarlierMatch) {
    std::vector<DisplayInfo> displays = {Display(R"(\\.\DISPLAY1)")};
    displays.front().gpu = 7;
    MatchDisplaysWithGpus(displays, {});
    EXPECT_EQ(displays.front().gpu, -1);
}

TEST(PrintDisplaySection, MarksThePrimaryDisplayAtAnyPosition) {
    const std::vector<GpuInfo> gpus = {Gpu(0, "Radeon", {}), Gpu(3, "GeForce", {})};
    EXPECT_EQ(Printed({{R"(\\.\DISPLAY1)", 1920, 1080, 60, false, 0},
                       {R"(\\.\DISPLAY22)", 3840, 2160, 144, true, 1}},
                      gpus),
              "  \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU 0 (Radeon)\n"
              "* \\\\.\\DISPLAY22  : 3840x2160 @ 144 Hz  -> driven by GPU 1 (GeForce)\n" +
                  std::string(kClosingNote));
}

TEST(PrintDisplaySection, PrintsAnUnknownGpu) {
    EXPECT_EQ(
        Printed({{R"(\\.\DISPLAY1)", 1280, 720, 0, true, -1}}, {}),
        "* \\\\.\\DISPLAY1   : 1280x720 @ 0 Hz  -> driven by GPU -1 (UNKNOWN)\n" + std::string(kClosingNote));
}

TEST(PrintDisplaySection, NeverCutsALongName) {
    EXPECT_EQ(Printed({{R"(\\.\DISPLAY1234567)", 1080, 1920, 59, false, -1}}, {}),
              "  \\\\.\\DISPLAY1234567 : 1080x1920 @ 59 Hz  -> driven by GPU -1 (UNKNOWN)\n" +
                  std::string(kClosingNote));
}

TEST(PrintDisplaySection, PrintsOnlyTheNoteWithoutDisplays) {
    EXPECT_EQ(Printed({}, {Gpu(0, "a", {R"(\\.\DISPLAY1)"})}), kClosingNote);
}

TEST(DisplayList, HoldsWhatItWasLastGiven) {
    SetDisplayList({Display("a"), Display("b")});
    ASSERT_EQ(DisplayList().size(), 2U);
    EXPECT_EQ(DisplayList().back().name, "b");
    SetDisplayList({});
    EXPECT_TRUE(DisplayList().empty());
}

}  // namespace
