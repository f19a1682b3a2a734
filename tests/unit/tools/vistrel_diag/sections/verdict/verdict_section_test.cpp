#include "tools/vistrel_diag/sections/verdict/verdict_section.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/unit/support/report_capture.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string VerdictOn(const VerdictInput& input) {
    const ReportCapture report;
    ReportVerdict(input);
    return report.Text();
}

/// A desktop of 3440x1440 whose warp costs `milliseconds`.
VerdictInput WarpOf(double milliseconds) {
    VerdictInput input;
    input.warp_costs = {{3440, 1440, milliseconds}};
    return input;
}

VerdictInput ModelOf(double milliseconds, double game_fps = 0.0) {
    VerdictInput input = WarpOf(1.0);
    input.model_milliseconds = milliseconds;
    input.game_fps = game_fps;
    return input;
}

constexpr const char* kSkipped =
    ">>> Part 2 was skipped, so nothing above accounts for VRAM pressure or a cross-GPU capture. Both can "
    "cause "
    "this on their own.\n";
constexpr const char* kCannotKeepUp =
    ">>> The depth map cannot keep up with the picture here. Every figure below assumes it runs as often as "
    "it "
    "can, which is far less often than you asked for.\n";

TEST(Verdict, OfAFullRun) {
    VerdictInput input;
    input.warp_costs = {{3440, 1440, 4.0}, {2560, 1440, 3.0}, {1920, 1080, 2.0}};
    input.model_milliseconds = 8.0;
    input.game_fps = 60.0;
    input.part_two_run = true;
    EXPECT_EQ(VerdictOn(input), R"(
== VERDICT =======================================================
At 3440x1440 the warp costs 4.00 ms per headset frame, for both eyes.
  Dropping the desktop to 2560x1440 would make it 1.3x cheaper (3.00 ms).
  Dropping the desktop to 1920x1080 would make it 2.0x cheaper (2.00 ms).

The AI model costs 8.00 ms per inference, and would run about 30 times a second (capped by the FPS limit).

What that adds up to, as a share of this GPU's time. Read the row for your headset:

  REFRESH   warp          AI depth mode  ReShade mode  
  72 Hz     288 ms/s      53%            29%           
  90 Hz     360 ms/s      60%            36%           
  120 Hz    480 ms/s      72%            48%           
  144 Hz    576 ms/s      82%            58%           

Whatever is left over is what the game and the SteamVR compositor share. The warp is paid in both modes; the model only in AI mode.

Taking 90 Hz and the mode this machine is set to (AI depth):
>>> FOUND IT. Vistrel takes more than half the GPU on its own (60%). The larger of the two costs above is the lever.

NOT measured by this tool:
  - the depth stage around the model: pre-process, upsample, edge restore. Only the model's own Run is timed.
  - the SteamVR compositor's own cost
  - the game's cost, and how much VRAM it wants
  - the ReShade add-on's two per-frame copies inside the game process
)");
}

TEST(Verdict, WithoutAModelAndPartTwo) {
    EXPECT_EQ(VerdictOn(WarpOf(1.0)), R"(
== VERDICT =======================================================
At 3440x1440 the warp costs 1.00 ms per headset frame, for both eyes.


What that adds up to, as a share of this GPU's time. Read the row for your headset:

  REFRESH   warp          AI depth mode  ReShade mode  
  72 Hz     72 ms/s       ?              7%            
  90 Hz     90 ms/s       ?              9%            
  120 Hz    120 ms/s      ?              12%           
  144 Hz    144 ms/s      ?              14%           

Whatever is left over is what the game and the SteamVR compositor share. The warp is paid in both modes; the model only in AI mode.

Taking 90 Hz and the mode this machine is set to (AI depth):
>>> Vistrel's own rendering is NOT the bottleneck here - it uses 9% of the GPU.
>>> If games are still slow, look at the VRAM figures from part 2, the SteamVR render resolution, or the game simply needing the whole GPU by itself.
>>> Part 2 was skipped, so nothing above accounts for VRAM pressure or a cross-GPU capture. Both can cause this on their own.

NOT measured by this tool:
  - the depth stage around the model: pre-process, upsample, edge restore. Only the model's own Run is timed.
  - the SteamVR compositor's own cost
  - the game's cost, and how much VRAM it wants
  - the ReShade add-on's two per-frame copies inside the game process
)");
}

TEST(Verdict, IsOmittedWithoutAWarpCost) {
    VerdictInput input;
    input.model_milliseconds = 8.0;
    EXPECT_EQ(VerdictOn(input), R"(
== VERDICT =======================================================
The warp could not be measured, so no verdict. The sections above are still worth reading.

NOT measured by this tool:
  - the depth stage around the model: pre-process, upsample, edge restore. Only the model's own Run is timed.
  - the SteamVR compositor's own cost
  - the game's cost, and how much VRAM it wants
  - the ReShade add-on's two per-frame copies inside the game process
)");
}

TEST(Verdict, SkipsSizesThatAreHardlyCheaper) {
    VerdictInput input = WarpOf(1.05);
    input.warp_costs.push_back({2560, 1440, 1.0});
    input.warp_costs.push_back({1920, 1080, 0.0});
    input.warp_costs.push_back({5120, 2160, 2.0});
    EXPECT_THAT(VerdictOn(input), Not(HasSubstr("Dropping")));
    input.warp_costs[0].milliseconds = 1.0501;
    EXPECT_THAT(VerdictOn(input),
                HasSubstr("  Dropping the desktop to 2560x1440 would make it 1.1x cheaper (1.00 ms).\n\n"));
}

TEST(Verdict, TakesNinetyWhenNoFrameRateIsKnown) {
    EXPECT_THAT(VerdictOn(ModelOf(8.0)),
                HasSubstr("and would run about 30 times a second (capped by the FPS limit).\n\n"));
    VerdictInput unlimited = ModelOf(8.0);
    unlimited.ai_fps_limit = 200.0F;
    EXPECT_THAT(VerdictOn(unlimited),
                HasSubstr("and would run about 90 times a second (capped by your frame rate).\n\n"));
}

TEST(Verdict, AModelSlowerThanRequestedLimitsTheRate) {
    EXPECT_THAT(
        VerdictOn(ModelOf(50.0, 60.0)),
        HasSubstr(
            "The AI model costs 50.00 ms per inference, and would run about 20 times a second (the model "
            "cannot go faster than that on this GPU).\n" +
            std::string(kCannotKeepUp)));
}

TEST(Verdict, AModelSlowerThanASecondIsPrintedInSeconds) {
    EXPECT_THAT(
        VerdictOn(ModelOf(1500.0)),
        HasSubstr("\nThe AI model costs 1500.00 ms per inference - one map every 1.5 seconds. It cannot run "
                  "even once a second on this GPU.\n" +
                  std::string(kCannotKeepUp)));
}

TEST(Verdict, AModelOfExactlyASecondStillRunsOnceASecond) {
    EXPECT_THAT(
        VerdictOn(ModelOf(1000.0)),
        HasSubstr("would run about 1 times a second (the model cannot go faster than that on this GPU)."));
}

TEST(Verdict, AModelThatCostsNothingIsCappedByTheLimit) {
    const std::string verdict = VerdictOn(ModelOf(0.0));
    EXPECT_THAT(verdict,
                HasSubstr("The AI model costs 0.00 ms per inference, and would run about 30 times a second "
                          "(capped by the FPS limit).\n"));
    EXPECT_THAT(verdict, Not(HasSubstr("cannot keep up")));
}

TEST(Verdict, ALimitEqualToTheFrameRateIsTheLimit) {
    VerdictInput input = ModelOf(8.0, 60.0);
    input.ai_fps_limit = 60.0F;
    EXPECT_THAT(VerdictOn(input), HasSubstr("about 60 times a second (capped by the FPS limit)."));
    input.ai_fps_limit = 60.01F;
    EXPECT_THAT(VerdictOn(input), HasSubstr("about 60 times a second (capped by your frame rate)."));
}

TEST(Verdict, AFrameRateOfOneIsIgnored) {
    VerdictInput input = ModelOf(8.0, 1.0);
    input.desktop_fps = 24.0;
    EXPECT_THAT(VerdictOn(input), HasSubstr("about 24 times a second (capped by your frame rate)."));
    input.desktop_fps = 1.0;
    EXPECT_THAT(VerdictOn(input), HasSubstr("about 30 times a second (capped by the FPS limit)."));
}

TEST(Verdict, ALimitThatIsNotANumberIsIgnored) {
    VerdictInput input = ModelOf(8.0, 60.0);
    input.ai_fps_limit = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(VerdictOn(input), HasSubstr("about 60 times a second (capped by the FPS limit)."));
    input.ai_fps_limit = std::numeric_limits<float>::infinity();
    EXPECT_THAT(VerdictOn(input), HasSubstr("about 60 times a second (capped by your frame rate)."));
}

TEST(Verdict, ALimitOfMinusInfinityIsPrintedAsItIs) {
    VerdictInput input = ModelOf(8.0, 60.0);
    input.ai_fps_limit = -std::numeric_limits<float>::infinity();
    input.depth_mode = std::numeric_limits<std::int32_t>::min();
    EXPECT_THAT(VerdictOn(input), HasSubstr(R"(
The AI model costs 8.00 ms per inference - one map every 0.0 seconds. It cannot run even once a second on this GPU.

What that adds up to, as a share of this GPU's time. Read the row for your headset:

  REFRESH   warp          AI depth mode  ReShade mode  
  72 Hz     72 ms/s       -inf%          7%            
  90 Hz     90 ms/s       -inf%          9%            
  120 Hz    120 ms/s      -inf%          12%           
  144 Hz    144 ms/s      -inf%          14%           

Whatever is left over is what the game and the SteamVR compositor share. The warp is paid in both modes; the model only in AI mode.

Taking 90 Hz and the mode this machine is set to (AI depth):
>>> Vistrel's own rendering is NOT the bottleneck here - it uses -inf% of the GPU.
)"));
}

TEST(Verdict, ShowsTheRequestedRefreshRateInOrder) {
    VerdictInput input = WarpOf(1.0);
    input.refresh_hz = 100;
    EXPECT_THAT(VerdictOn(input), HasSubstr("\n  90 Hz     90 ms/s       ?              9%            "
                                            "\n  100 Hz    100 ms/s      ?              10%           "
                                            "\n  120 Hz    120 ms/s      ?              12%           \n"));
    input.refresh_hz = 1;
    EXPECT_THAT(VerdictOn(input),
                HasSubstr("\n  1 Hz      1 ms/s        ?              0%            \n  72 Hz"));
    input.refresh_hz = std::numeric_limits<std::int32_t>::max();
    EXPECT_THAT(VerdictOn(input),
                HasSubstr("\n  2147483647 Hz 2147483647 ms/s ?              214748365%    \n"));
}

TEST(Verdict, ShowsNoRowForARateThatIsListedOrInvalid) {
    const std::string verdict = VerdictOn(WarpOf(1.0));
    for (const std::int32_t refresh : {72, 90, 120, 144, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
        VerdictInput input = WarpOf(1.0);
        input.refresh_hz = refresh;
        EXPECT_EQ(VerdictOn(input), verdict) << refresh;
    }
}

TEST(Verdict, HalfTheGpuExactlyIsASignificantSlice) {
    VerdictInput input = WarpOf(4.0);
    input.model_milliseconds = 7.0;
    input.ai_fps_limit = 20.0F;
    EXPECT_THAT(
        VerdictOn(input),
        HasSubstr("(AI depth):\n>>> Vistrel takes a significant slice (50%) but not a fatal one. Worth "
                  "trimming, though something else is likely contributing too.\n"));
}

TEST(Verdict, AQuarterOfTheGpuExactlyIsNotTheBottleneck) {
    VerdictInput input = WarpOf(2.0);
    input.model_milliseconds = 7.0;
    input.ai_fps_limit = 10.0F;
    EXPECT_THAT(VerdictOn(input),
                HasSubstr(">>> Vistrel's own rendering is NOT the bottleneck here - it uses 25% "
                          "of the GPU.\n>>> If games are still slow"));
}

TEST(Verdict, ReShadeDepthCountsTheWarpAlone) {
    VerdictInput input = WarpOf(2.0);
    input.model_milliseconds = 30.0;
    EXPECT_THAT(VerdictOn(input), HasSubstr("(AI depth):\n>>> FOUND IT."));
    input.depth_mode = 1;
    EXPECT_THAT(VerdictOn(input),
                HasSubstr("(ReShade depth):\n>>> Vistrel's own rendering is NOT the bottleneck "
                          "here - it uses 18% of the GPU.\n"));
    input.depth_mode = 2;
    EXPECT_THAT(VerdictOn(input), HasSubstr("(AI depth):\n>>> FOUND IT."));
}

TEST(Verdict, NotesACheapReShadePathOnlyWithATimedModel) {
    constexpr const char* kNote =
        ">>> Note: on the ReShade path Vistrel costs only 9% here. If games are just as slow in THAT mode, "
        "the cause "
        "is almost certainly not Vistrel's rendering at all.\n";
    VerdictInput input = ModelOf(8.0);
    EXPECT_THAT(VerdictOn(input), HasSubstr(kNote + std::string(kSkipped)));
    input.depth_mode = 1;
    EXPECT_THAT(VerdictOn(input), HasSubstr(kNote));
    input.model_milliseconds.reset();
    EXPECT_THAT(VerdictOn(input), Not(HasSubstr("Note:")));
    VerdictInput dear = ModelOf(8.0);
    dear.warp_costs[0].milliseconds = 1.75;
    EXPECT_THAT(VerdictOn(dear), Not(HasSubstr("Note:")));
}

TEST(Verdict, ReportsThatPartTwoWasSkippedWithOrWithoutAModel) {
    EXPECT_THAT(VerdictOn(ModelOf(8.0)), HasSubstr(kSkipped));
    EXPECT_THAT(VerdictOn(WarpOf(1.0)), HasSubstr(kSkipped));
    VerdictInput input = WarpOf(1.0);
    input.part_two_run = true;
    EXPECT_THAT(VerdictOn(input), Not(HasSubstr("skipped")));
}

}  // namespace
