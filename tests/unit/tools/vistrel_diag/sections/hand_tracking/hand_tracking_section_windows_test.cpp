#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"

#include <d3d11.h>
#include <gmock/gmock.h>
#include <windows.h>
#include <wrl/client.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <regex>
#include <string>

#include "platform/stopwatch.h"
#include "tests/lab/openxr/openxr_lab.h"
#include "tests/unit/support/report_capture.h"

// The clock of this program: these replace Windows' functions. Sleeping takes no real time, and every reading
// of the clock advances it a little, so that polling makes progress. The speed of the machine does not matter
// then. The runtime in its DLL has the real clock.
namespace {

constexpr std::int64_t kTicksPerMillisecond = 1'000;
constexpr std::int64_t kTicksOfALook = 10;

std::atomic<std::int64_t> scripted_ticks = 0;
std::atomic<std::int64_t> slept_milliseconds = 0;

BOOL WINAPI ScriptedQueryPerformanceCounter(LARGE_INTEGER* ticks) {
    ticks->QuadPart = scripted_ticks += kTicksOfALook;
    return TRUE;
}

BOOL WINAPI ScriptedQueryPerformanceFrequency(LARGE_INTEGER* frequency) {
    frequency->QuadPart = 1'000 * kTicksPerMillisecond;
    return TRUE;
}

void WINAPI ScriptedSleep(DWORD milliseconds) {
    scripted_ticks += milliseconds * kTicksPerMillisecond;
    slept_milliseconds += milliseconds;
}

}  // namespace

extern "C" {
decltype(&QueryPerformanceCounter) __imp_QueryPerformanceCounter = ScriptedQueryPerformanceCounter;
decltype(&QueryPerformanceFrequency) __imp_QueryPerformanceFrequency = ScriptedQueryPerformanceFrequency;
decltype(&Sleep) __imp_Sleep = ScriptedSleep;
}

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

const std::string kHeader = "\n== HAND TRACKING (bare hand vs controller) =======================\n";
const std::string kBothPresent =
    "XR_EXT_hand_tracking             : present\n"
    "XR_EXT_hand_tracking_data_source : present\n";
const std::string kCleanUp =
    "xrDestroyHandTrackerEXT left\n"
    "xrDestroyHandTrackerEXT right\n"
    "xrDestroySpace\n"
    "xrDestroySession\n"
    "xrDestroyInstance\n"
    "unloaded\n";

ID3D11Device* Device() {
    static const Microsoft::WRL::ComPtr<ID3D11Device> device = [] {
        Microsoft::WRL::ComPtr<ID3D11Device> made;
        D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION, &made,
                          nullptr, nullptr);
        return made;
    }();
    return device.Get();
}

struct Probed {
    std::string report;
    std::string log;
    double seconds = 0.0;    ///< by the scripted clock
    std::int64_t slept = 0;  ///< milliseconds of them
    int waits = 0;           ///< for frames
};

/// Watches for `seconds` with `lab`'s runtime.
Probed Probe(const OpenXrLab& lab, const std::string& script, double seconds = 12.0) {
    lab.SetScript(script);
    const ReportCapture report;
    const Stopwatch stopwatch;
    const std::int64_t slept_before = slept_milliseconds;
    ProbeHandTracking(Device(), seconds);
    Probed probed = {report.Text(), lab.Log(), stopwatch.Seconds(), slept_milliseconds - slept_before};
    // Removed, because the number of frames depends on the machine.
    static const std::regex waits("frames waited for: ([0-9]+)\n");
    if (std::smatch match; std::regex_search(probed.log, match, waits)) {
        probed.waits = std::stoi(match[1]);
        probed.log = std::regex_replace(probed.log, waits, "");
    }
    EXPECT_THAT(probed.log, Not(HasSubstr("WRONG")));
    EXPECT_EQ(GetModuleHandleW(L"openxr_loader.dll"), nullptr);
    return probed;
}

TEST(HandTrackingProbe, StopsWithoutADevice) {
    const OpenXrLab lab(LabLoader::StandIn);
    const ReportCapture report;
    ProbeHandTracking(nullptr, 12.0);
    EXPECT_EQ(report.Text(), kHeader + "No D3D11 device - cannot open a session, hand probe skipped.\n");
    EXPECT_EQ(lab.Log(), "");
}

TEST(HandTrackingProbe, StopsWithoutALoader) {
    const OpenXrLab lab(LabLoader::None);
    EXPECT_EQ(Probe(lab, "").report, kHeader + "openxr_loader.dll not found - hand probe skipped.\n");
}

class ProbeWithLoaderWithout : public testing::TestWithParam<LabLoader> {};

TEST_P(ProbeWithLoaderWithout, AnEntryPoint) {
    const OpenXrLab lab(GetParam());
    const Probed probed = Probe(lab, "");
    EXPECT_EQ(probed.report, kHeader + "openxr_loader.dll missing entry points - hand probe skipped.\n");
    EXPECT_EQ(probed.log, "loaded, XR_LOADER_DEBUG=none\nunloaded\n");
}

INSTANTIATE_TEST_SUITE_P(HandTrackingProbe, ProbeWithLoaderWithout,
                         testing::Values(LabLoader::WithoutExports, LabLoader::WithoutCreate,
                                         LabLoader::WithoutFind, LabLoader::WithoutEnumerate));

TEST(HandTrackingProbe, StopsWithoutARuntime) {
    const OpenXrLab lab(LabLoader::Genuine, false);
    EXPECT_EQ(Probe(lab, "").report, kHeader +
                                         "XR_EXT_hand_tracking             : ABSENT\n"
                                         "XR_EXT_hand_tracking_data_source : ABSENT\n"
                                         "Without hand tracking this runtime cannot report hands at all - "
                                         "nothing to probe. (Bare WMR/G2 lands here.)\n");
}

/// Common to the genuine loader and to the replacement that exposes the same runtime without it.
class HandTrackingProbeBehind : public testing::TestWithParam<LabLoader> {
  protected:
    const OpenXrLab lab_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Loaders, HandTrackingProbeBehind,
                         testing::Values(LabLoader::Genuine, LabLoader::StandIn));

TEST_P(HandTrackingProbeBehind, CallsTheRuntimeInTheDocumentedOrder) {
    const Probed probed = Probe(lab_, "event 0 ready\nevent 5 exiting\nhand left 0 bare\n");
    EXPECT_THAT(probed.log, HasSubstr(R"(
xrCreateInstance vistrel_diag 1.0.34 XR_KHR_D3D11_enable XR_EXT_hand_tracking XR_EXT_hand_tracking_data_source
xrGetSystem
xrGetD3D11GraphicsRequirementsKHR
xrCreateSession
xrCreateReferenceSpace
xrCreateHandTrackerEXT left 1 2
xrCreateHandTrackerEXT right 1 2
xrBeginSession
xrWaitFrame
xrBeginFrame
xrLocateHandJointsEXT left
xrLocateHandJointsEXT right
xrEndFrame
)" + kCleanUp));
    EXPECT_THAT(probed.log, EndsWith(kCleanUp));
}

TEST_P(HandTrackingProbeBehind, DoesNotUseAMissingDataSource) {
    const Probed probed = Probe(lab_,
                                "extensions XR_KHR_D3D11_enable XR_EXT_hand_tracking\n"
                                "event 0 ready\nevent 5 exiting\n");
    EXPECT_THAT(probed.log,
                HasSubstr("xrCreateInstance vistrel_diag 1.0.34 XR_KHR_D3D11_enable XR_EXT_hand_tracking\n"));
    EXPECT_THAT(probed.log, HasSubstr("xrCreateHandTrackerEXT left\nxrCreateHandTrackerEXT right\n"));
    EXPECT_THAT(probed.log, EndsWith(kCleanUp));
}

TEST_P(HandTrackingProbeBehind, StopsWhenTheInstanceIsRefused) {
    EXPECT_EQ(Probe(lab_, "result xrCreateInstance -2").report,
              kHeader + kBothPresent + "No runtime accepted an instance (SteamVR not running?) - skipped.\n");
}

TEST_P(HandTrackingProbeBehind, StopsWithoutAHeadset) {
    for (const char* script : {"result xrGetSystem -35", "system 0"}) {
        const Probed probed = Probe(lab_, script);
        EXPECT_EQ(probed.report,
                  kHeader + kBothPresent + "Runtime reports no headset right now - put it on and re-run.\n");
        EXPECT_THAT(probed.log, EndsWith("xrGetSystem\nxrDestroyInstance\nunloaded\n"));
    }
}

TEST_P(HandTrackingProbeBehind, StopsWhenTheSessionIsRefusedOrNull) {
    for (const char* script : {"result xrCreateSession -38", "null xrCreateSession"}) {
        const Probed probed = Probe(lab_, script);
        EXPECT_EQ(probed.report,
                  kHeader + kBothPresent +
                      "Could not create a session (another VR app holding the scene?) - skipped.\n");
        EXPECT_THAT(probed.log, EndsWith("xrCreateSession\nxrDestroyInstance\nunloaded\n"));
    }
}

TEST_P(HandTrackingProbeBehind, StopsWhenARequiredFunctionIsMissing) {
    for (const char* function :
         {"xrGetSystem", "xrCreateSession", "xrCreateReferenceSpace", "xrPollEvent", "xrBeginSession",
          "xrWaitFrame", "xrBeginFrame", "xrEndFrame", "xrCreateHandTrackerEXT", "xrLocateHandJointsEXT"}) {
        SCOPED_TRACE(function);
        const Probed probed = Probe(lab_, std::string("missing ") + function);
        EXPECT_EQ(probed.report,
                  kHeader + kBothPresent + "Runtime is missing functions this probe needs - skipped.\n");
        EXPECT_THAT(probed.log, EndsWith("xrDestroyInstance\nunloaded\n"));
    }
}

TEST_P(HandTrackingProbeBehind, WorksWithoutEachOtherFunction) {
    for (const char* function : {"xrGetD3D11GraphicsRequirementsKHR", "xrDestroySession", "xrDestroySpace",
                                 "xrEndSession", "xrDestroyHandTrackerEXT"}) {
        SCOPED_TRACE(function);
        const Probed probed = Probe(lab_, std::string("missing ") + function +
                                              "\nhand left 0 bare\nevent 0 ready\nevent 5 stopping\n"
                                              "event 10 exiting\n");
        EXPECT_THAT(probed.report, HasSubstr("  hand L: tracked=yes, saw UNOBSTRUCTED\n"));
        EXPECT_THAT(probed.log, Not(HasSubstr(function)));
        EXPECT_THAT(probed.log, EndsWith("xrDestroyInstance\nunloaded\n"));
    }
}

TEST(HandTrackingProbe, WorksWithoutDestroyInstance) {
    const OpenXrLab lab(LabLoader::StandIn);  // The genuine loader brings a function of its own.
    const Probed probed = Probe(lab, "missing xrDestroyInstance\nevent 0 exiting");
    EXPECT_THAT(probed.log, EndsWith("xrDestroySession\nunloaded\n"));
}

TEST(HandTrackingProbe, TreatsANullInstanceAsAFailure) {
    const OpenXrLab lab(LabLoader::StandIn);
    EXPECT_THAT(Probe(lab, "null xrCreateInstance").report,
                EndsWith("No runtime accepted an instance (SteamVR not running?) - skipped.\n"));
}

TEST(HandTrackingProbe, TreatsExtensionsThatCannotBeListedAsAbsent) {
    const OpenXrLab lab(LabLoader::StandIn);
    for (const char* script : {"result xrEnumerateInstanceExtensionProperties -2", "extensions",
                               "grow extensions 1", "unterminated extensions", "claim extensions 0"}) {
        SCOPED_TRACE(script);
        EXPECT_THAT(Probe(lab, script).report, HasSubstr("XR_EXT_hand_tracking             : ABSENT\n"
                                                         "XR_EXT_hand_tracking_data_source : ABSENT\n"));
    }
}

TEST(HandTrackingProbe, RejectsMillionsOfExtensions) {
    const OpenXrLab lab(LabLoader::StandIn);
    EXPECT_THAT(Probe(lab, "claim extensions 4294967295\nevent 0 exiting").report, HasSubstr(kBothPresent));
    EXPECT_THAT(Probe(lab, "claim extensions 5000000\ngrow extensions 4999990").report,
                HasSubstr("XR_EXT_hand_tracking             : ABSENT\n"));
}

TEST_P(HandTrackingProbeBehind, FailingWaitsTakeNoLongerThanTheWatchAndDoNotSpin) {
    const Probed probed = Probe(lab_, "result xrWaitFrame -2\nevent 0 ready\nhand left 0 bare", 0.6);
    EXPECT_GE(probed.seconds, 0.6);
    EXPECT_LT(probed.seconds, 0.62);
    EXPECT_GT(probed.waits, 50);  // One each 10 ms.
    EXPECT_EQ(probed.slept, 10 * probed.waits);
    EXPECT_THAT(probed.report, HasSubstr("\n\nSummary:\n  hand L: tracked=no\n  hand R: tracked=no\n"));
    EXPECT_THAT(probed.log, Not(HasSubstr("xrBeginFrame")));
}

TEST_P(HandTrackingProbeBehind, EventsWithoutEndTakeNoLongerThanTheWatch) {
    const Probed probed = Probe(lab_, "endless_events\nevent 0 ready\nhand left 0 bare", 0.3);
    EXPECT_GE(probed.seconds, 0.3);
    EXPECT_LT(probed.seconds, 0.32);
    EXPECT_THAT(probed.log, EndsWith(kCleanUp));
}

TEST_P(HandTrackingProbeBehind, ASessionThatNeverBeginsTakesAsLongAsTheWatch) {
    for (const char* script :
         {"event 0 idle", "result xrPollEvent -2", "result xrBeginSession -2\nevent 0 ready"}) {
        SCOPED_TRACE(script);
        const Probed probed = Probe(lab_, script, 0.3);
        EXPECT_GE(probed.seconds, 0.3);
        EXPECT_LT(probed.seconds, 0.32);
        EXPECT_GE(probed.slept, 290);  // Polling takes hardly any of it.
        EXPECT_EQ(probed.waits, 0);
        EXPECT_THAT(probed.report, HasSubstr("the source below should flip.\n\n\nSummary:\n"));
    }
}

TEST_P(HandTrackingProbeBehind, RetriesASessionThatDoesNotBegin) {
    const Probed probed =
        Probe(lab_, "result xrBeginSession -2\nevent 0 ready\nevent 2 ready\nevent 4 exiting");
    EXPECT_THAT(probed.log, HasSubstr("xrBeginSession\nxrBeginSession\n"));
}

TEST_P(HandTrackingProbeBehind, ReadyTwiceBeginsOnce) {
    const Probed probed = Probe(lab_, "event 0 ready\nevent 2 ready\nevent 4 exiting");
    EXPECT_EQ(probed.log.find("xrBeginSession"), probed.log.rfind("xrBeginSession"));
    EXPECT_THAT(probed.log, HasSubstr("xrBeginSession"));
}

TEST_P(HandTrackingProbeBehind, NoTimeToWatch) {
    for (const double seconds : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        SCOPED_TRACE(seconds);
        const Probed probed = Probe(lab_, "event 0 ready\nhand left 0 bare", seconds);
        EXPECT_THAT(probed.report,
                    HasSubstr("the source below should flip.\n\n\nSummary:\n  hand L: tracked=no\n"));
        EXPECT_THAT(probed.log, Not(HasSubstr("xrBeginSession")));
        EXPECT_THAT(probed.log, EndsWith(kCleanUp));
    }
}

TEST_P(HandTrackingProbeBehind, DestroysASingleTracker) {
    const Probed probed =
        Probe(lab_, "result xrCreateHandTrackerEXT:left -1\nevent 0 ready\nevent 9 exiting");
    EXPECT_THAT(probed.log, Not(HasSubstr("xrLocateHandJointsEXT left")));
    EXPECT_THAT(probed.log, EndsWith("xrEndFrame\n"
                                     "xrDestroyHandTrackerEXT right\n"
                                     "xrDestroySpace\nxrDestroySession\nxrDestroyInstance\nunloaded\n"));
}

/// A script of tests/lab/openxr/probes with its report.
class HandTrackingGolden : public testing::TestWithParam<std::tuple<LabLoader, std::string>> {};

TEST_P(HandTrackingGolden, Report) {
    const auto& [loader, scenario] = GetParam();
    const OpenXrLab lab(loader);
    const std::string file = "tests/lab/openxr/probes/" + scenario;
    const Probed probed = Probe(lab, ReadSourceFile(file + ".txt"));
    EXPECT_EQ(probed.report, ReadSourceFile(file + ".report"));
    EXPECT_LT(probed.seconds, 11.0);  // The scripts end the session before the watch does.
}

INSTANTIATE_TEST_SUITE_P(Scenarios, HandTrackingGolden,
                         testing::Combine(testing::Values(LabLoader::Genuine, LabLoader::StandIn),
                                          testing::Values("controller_to_bare", "no_data_source",
                                                          "no_hand_tracking", "silent_source", "never_ready",
                                                          "session_refused", "ready_again", "one_tracker",
                                                          "no_space")),
                         [](const auto& instance) {
                             return std::get<1>(instance.param) +
                                    (std::get<0>(instance.param) == LabLoader::Genuine ? "_genuine"
                                                                                       : "_stand_in");
                         });

}  // namespace
