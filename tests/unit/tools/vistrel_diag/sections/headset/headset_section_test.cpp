#include "tools/vistrel_diag/sections/headset/headset_section.h"

#include <gtest/gtest.h>

#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

GpuInfo Gpu(std::uint32_t index, const char* name, const AdapterLuid& luid) {
    GpuInfo gpu;
    gpu.index = index;
    gpu.name = name;
    gpu.luid = luid;
    return gpu;
}

DisplayInfo Display(bool primary, std::int32_t gpu) {
    DisplayInfo display;
    display.primary = primary;
    display.gpu = gpu;
    return display;
}

HeadsetQuery Requiring(const AdapterLuid& luid) {
    HeadsetQuery query;
    query.headset_found = true;
    query.luid_known = true;
    query.adapter_luid = luid;
    return query;
}

std::string Printed(const HeadsetQuery& query, const std::vector<GpuInfo>& gpus = {},
                    const std::vector<DisplayInfo>& displays = {}) {
    const ReportCapture report;
    PrintHeadsetSection(query, gpus, displays);
    return report.Text();
}

const std::vector<GpuInfo> kTwoGpus = {Gpu(0, "Discrete", {0xA001, 0}), Gpu(1, "Integrated", {0xA002, 0})};

TEST(HeadsetSection, NothingKnownPrintsNothing) {
    EXPECT_EQ(Printed({}), "");
}

HeadsetQuery Stopped(HeadsetStop stop) {
    HeadsetQuery query;
    query.stop = stop;
    return query;
}

TEST(HeadsetSection, ReportsWhyTheQueryStopped) {
    EXPECT_EQ(Printed(Stopped(HeadsetStop::NoLoader)),
              "openxr_loader.dll not found next to this exe - OpenXR skipped.\n");
    EXPECT_EQ(Printed(Stopped(HeadsetStop::NoEntryPoints)),
              "openxr_loader.dll is missing its entry points - OpenXR skipped.\n");
    EXPECT_EQ(Printed(Stopped(HeadsetStop::NoInstance)),
              "No OpenXR runtime accepted an instance (SteamVR not running?) - OpenXR skipped.\n");
    EXPECT_EQ(Printed(Stopped(HeadsetStop::NoHeadset)),
              "A runtime is installed but reports no headset right now. Eye resolution and required GPU "
              "unavailable.\n");
}

TEST(HeadsetSection, HowTheQuerysProcessEndedComesBeforeWhatItHadFound) {
    HeadsetQuery query;
    query.runtime = "Runtime %s 1.2.3";
    query.eye_width = 2016;
    query.eye_height = 2240;
    query.worker_end = WorkerEnd{WorkerEnd::Kind::Crashed, 0xC0000005, "vrclient_x64.dll", 0};
    EXPECT_EQ(Printed(query),
              "!! The OpenXR query crashed in vrclient_x64.dll (access violation, 0xC0000005).\n"
              "Runtime         : Runtime %s 1.2.3\n"
              "Eye resolution  : 2016x2240 per eye (runtime recommendation)\n");
}

TEST(HeadsetSection, PrintsEverythingInOrder) {
    HeadsetQuery query = Requiring({0xA001, 0});
    query.runtime = "Runtime 1.2.3";
    query.stop = HeadsetStop::NoHeadset;
    query.eye_width = 2016;
    query.eye_height = 2240;
    EXPECT_EQ(Printed(query, kTwoGpus, {Display(true, 0)}),
              "Runtime         : Runtime 1.2.3\n"
              "A runtime is installed but reports no headset right now. Eye resolution and required GPU "
              "unavailable.\n"
              "Eye resolution  : 2016x2240 per eye (runtime recommendation)\n"
              "Required GPU    : LUID 00000000:0000A001 -> GPU 0 (Discrete)\n");
}

TEST(HeadsetSection, AHeightWithoutWidthIsNotPrinted) {
    HeadsetQuery query;
    query.eye_height = 2240;
    EXPECT_EQ(Printed(query), "");
    query.eye_width = 1;
    query.eye_height = 0;
    EXPECT_EQ(Printed(query), "Eye resolution  : 1x0 per eye (runtime recommendation)\n");
}

TEST(HeadsetSection, NotesADisplayOnAnotherGpu) {
    EXPECT_EQ(Printed(Requiring({0xA001, 0}), kTwoGpus, {Display(false, 0), Display(true, 1)}),
              R"(Required GPU    : LUID 00000000:0000A001 -> GPU 0 (Discrete)

!! NOTE: the headset requires GPU 0 while the primary display is driven by GPU 1.
!! Every captured frame therefore crosses between the two through system memory. Vistrel does this and the picture is correct; it costs time that a single-GPU machine does not pay.
!! Capturing the game's WINDOW instead skips the trip. On a laptop with a MUX switch, forcing the panel onto Discrete does too.
)");
}

TEST(HeadsetSection, NotesNothingForOtherDisplaysOrUnclaimedOnes) {
    const std::string line = "Required GPU    : LUID 00000000:0000A001 -> GPU 0 (Discrete)\n";
    EXPECT_EQ(Printed(Requiring({0xA001, 0}), kTwoGpus, {Display(false, 1)}), line);
    EXPECT_EQ(Printed(Requiring({0xA001, 0}), kTwoGpus, {Display(true, -1)}), line);
    EXPECT_EQ(Printed(Requiring({0xA001, 0}), kTwoGpus, {Display(true, 0)}), line);
    EXPECT_EQ(Printed(Requiring({0xA001, 0}), kTwoGpus), line);
}

TEST(HeadsetSection, NotesEveryPrimaryDisplay) {
    const std::string text = Printed(Requiring({0xA001, 0}), kTwoGpus, {Display(true, 1), Display(true, 1)});
    EXPECT_NE(text.find("\n\n!! NOTE:"), text.rfind("\n\n!! NOTE:"));
}

TEST(HeadsetSection, ReportsAnUnknownGpu) {
    for (const AdapterLuid& luid : {AdapterLuid{0xA003, 0}, AdapterLuid{0xA001, 1}, AdapterLuid{0, 0xA001}}) {
        EXPECT_EQ(Printed(Requiring(luid), kTwoGpus, {Display(true, 0)}),
                  "Required GPU    : LUID " + FormatLuid(luid) + " -> GPU -1 (NOT FOUND)\n");
    }
    EXPECT_EQ(Printed(Requiring({0xA001, -1}), {}, {Display(true, 0)}),
              "Required GPU    : LUID FFFFFFFF:0000A001 -> GPU -1 (NOT FOUND)\n");
}

TEST(HeadsetSection, TakesTheLastOfSeveralMatches) {
    const std::vector<GpuInfo> gpus = {Gpu(0, "First", {7, 7}), Gpu(1, "Second", {7, 7}),
                                       Gpu(2, "Third", {8, 8})};
    EXPECT_EQ(Printed(Requiring({7, 7}), gpus),
              "Required GPU    : LUID 00000007:00000007 -> GPU 1 (Second)\n");
}

TEST(HeadsetSection, AfterASkippedAdapterTheNumberIsTheIndexAndTheNameThePositions) {
    const std::vector<GpuInfo> gpus = {Gpu(1, "First listed", {1, 0}), Gpu(2, "Second listed", {2, 0})};
    EXPECT_EQ(Printed(Requiring({1, 0}), gpus, {Display(true, 0)}),
              R"(Required GPU    : LUID 00000000:00000001 -> GPU 1 (Second listed)

!! NOTE: the headset requires GPU 1 while the primary display is driven by GPU 0.
!! Every captured frame therefore crosses between the two through system memory. Vistrel does this and the picture is correct; it costs time that a single-GPU machine does not pay.
!! Capturing the game's WINDOW instead skips the trip. On a laptop with a MUX switch, forcing the panel onto Second listed does too.
)");
    // No entry has that position: there is no name, and nothing is read past the list.
    EXPECT_EQ(Printed(Requiring({2, 0}), gpus),
              "Required GPU    : LUID 00000000:00000002 -> GPU 2 (NOT FOUND)\n");
}

TEST(HeadsetSection, ReportsAgainstTheListsOfTheRun) {
    SetGpuList(kTwoGpus);
    SetDisplayList({Display(true, 1)});
    const ReportCapture report;
    ReportHeadsetSection(Requiring({0xA002, 0}));
    EXPECT_EQ(report.Text(),
              "\n== HEADSET / OPENXR ==============================================\n"
              "Required GPU    : LUID 00000000:0000A002 -> GPU 1 (Integrated)\n");
    SetGpuList({});
    SetDisplayList({});
}

}  // namespace
