#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/unit/support/report_capture.h"

namespace {

constexpr HandReading kAway = {false, HandSource::None};
constexpr HandReading kSilent = {true, HandSource::None};
constexpr HandReading kBare = {true, HandSource::Unobstructed};
constexpr HandReading kController = {true, HandSource::Controller};

TEST(HandTracking, ReportsTheExtensions) {
    const ReportCapture report;
    PrintHandTrackingExtensions({true, false});
    PrintHandTrackingExtensions({false, true});
    EXPECT_EQ(report.Text(),
              "XR_EXT_hand_tracking             : present\n"
              "XR_EXT_hand_tracking_data_source : ABSENT\n"
              "XR_EXT_hand_tracking             : ABSENT\n"
              "XR_EXT_hand_tracking_data_source : present\n");
}

TEST(HandTracking, ReportsWhyTheProbeStopped) {
    const ReportCapture report;
    for (const HandProbeStop stop :
         {HandProbeStop::NoDevice, HandProbeStop::NoLoader, HandProbeStop::NoEntryPoints,
          HandProbeStop::NoHandTracking, HandProbeStop::NoInstance, HandProbeStop::MissingFunctions,
          HandProbeStop::NoHeadset, HandProbeStop::NoSession}) {
        PrintHandProbeStop(stop);
    }
    EXPECT_EQ(report.Text(), R"(No D3D11 device - cannot open a session, hand probe skipped.
openxr_loader.dll not found - hand probe skipped.
openxr_loader.dll missing entry points - hand probe skipped.
Without hand tracking this runtime cannot report hands at all - nothing to probe. (Bare WMR/G2 lands here.)
No runtime accepted an instance (SteamVR not running?) - skipped.
Runtime is missing functions this probe needs - skipped.
Runtime reports no headset right now - put it on and re-run.
Could not create a session (another VR app holding the scene?) - skipped.
)");
}

TEST(HandTracking, PrintsTheWatchInstructions) {
    const ReportCapture report;
    PrintWatchInstructions(12.0);
    PrintWatchInstructions(0.5);  // An exact half goes to the even number.
    EXPECT_EQ(report.Text(), R"(
Watching for 12 seconds. HOLD your controllers, then SET THEM DOWN and
raise your bare hands - the source below should flip.


Watching for 0 seconds. HOLD your controllers, then SET THEM DOWN and
raise your bare hands - the source below should flip.

)");
}

TEST(HandTracking, BoundsTheWatchSeconds) {
    EXPECT_EQ(WatchSeconds(12.0), 12.0);
    EXPECT_EQ(WatchSeconds(0.0), 0.0);
    EXPECT_EQ(WatchSeconds(-1.0), -1.0);
    EXPECT_EQ(WatchSeconds(std::nan("")), 0.0);
    EXPECT_EQ(WatchSeconds(std::numeric_limits<double>::infinity()), 0.0);
}

TEST(HandTracking, NamesTheReportedSource) {
    EXPECT_EQ(ReportedHandSource(true, true, 1), HandSource::Unobstructed);
    EXPECT_EQ(ReportedHandSource(true, true, 2), HandSource::Controller);
    EXPECT_EQ(ReportedHandSource(true, true, 0), HandSource::Controller);
    EXPECT_EQ(ReportedHandSource(true, true, -1), HandSource::Controller);
    EXPECT_EQ(ReportedHandSource(true, false, 1), HandSource::None);
    EXPECT_EQ(ReportedHandSource(false, true, 1), HandSource::None);
}

TEST(HandTracking, PrintsALineOnlyForAChange) {
    const ReportCapture report;
    HandPair hands = NewHands();
    for (const HandReading& reading :
         {kController, kController, kBare, kBare, kAway, kSilent, kAway, kController}) {
        NoteHandReading(hands[0], reading);
    }
    EXPECT_EQ(report.Text(),
              "  hand L : CONTROLLER (held)\n"
              "  hand L : UNOBSTRUCTED (bare hand)\n"
              "  hand L : none (not tracked)\n"
              "  hand L : CONTROLLER (held)\n");
}

TEST(HandTracking, PrintsTheFirstStateInAnyCase) {
    const ReportCapture report;
    HandPair hands = NewHands();
    NoteHandReading(hands[0], kAway);
    NoteHandReading(hands[1], kSilent);
    EXPECT_EQ(report.Text(), "  hand L : none (not tracked)\n  hand R : none (not tracked)\n");
    EXPECT_FALSE(hands[0].tracked);
    EXPECT_TRUE(hands[1].tracked);
}

TEST(HandTracking, IgnoresTheSourceOfAMissingHand) {
    HandPair hands = NewHands();
    NoteHandReading(hands[0], {false, HandSource::Unobstructed});
    EXPECT_FALSE(hands[0].saw_unobstructed);
    EXPECT_EQ(hands[0].last_state, HandSource::None);
}

std::string Summary(const std::vector<HandReading>& left, const std::vector<HandReading>& right,
                    bool data_source_extension) {
    HandPair hands = NewHands();
    for (const HandReading& reading : left) {
        NoteHandReading(hands[0], reading);
    }
    for (const HandReading& reading : right) {
        NoteHandReading(hands[1], reading);
    }
    const ReportCapture report;
    PrintHandSummary(hands, data_source_extension);
    return report.Text();
}

TEST(HandTracking, SummarisesBothSources) {
    EXPECT_EQ(Summary({kController, kBare}, {kBare, kAway}, true), R"(
Summary:
  hand L: tracked=yes, saw UNOBSTRUCTED, saw CONTROLLER
  hand R: tracked=yes, saw UNOBSTRUCTED
The data-source IS reported here, so Vistrel can trust it to tell a bare hand from a held controller.
)");
}

TEST(HandTracking, OneSourceOfOneHandIsEnough) {
    EXPECT_EQ(Summary({}, {kController}, true), R"(
Summary:
  hand L: tracked=no
  hand R: tracked=yes, saw CONTROLLER
The data-source IS reported here, so Vistrel can trust it to tell a bare hand from a held controller.
)");
}

TEST(HandTracking, SummarisesAMissingExtension) {
    EXPECT_EQ(Summary({kSilent}, {}, false), R"(
Summary:
  hand L: tracked=yes
  hand R: tracked=no
No data-source extension: 'tracked' is all this runtime reveals, so a hand cannot be told from a held controller here.
)");
}

TEST(HandTracking, SummarisesAnExtensionWithoutResults) {
    EXPECT_EQ(Summary({kSilent}, {kAway}, true), R"(
Summary:
  hand L: tracked=yes
  hand R: tracked=no
The data-source extension is present but never reported either source - the runtime advertises it without filling it in.
)");
}

}  // namespace
