#include "tools/vistrel_diag/guided_run.h"

#include <windows.h>

#include <optional>
#include <string>

#include "platform/luid.h"
#include "platform/module_folder.h"
#include "settings/diag_settings.h"
#include "settings/settings_file.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/report/rescue.h"
#include "tools/vistrel_diag/run_texts.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_device.h"
#include "tools/vistrel_diag/sections/capture/capture_section.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"
#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_section.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"
#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/sections/injection/injection_section.h"
#include "tools/vistrel_diag/sections/machine/machine_section.h"
#include "tools/vistrel_diag/sections/product_log/product_log_section.h"
#include "tools/vistrel_diag/sections/running_software/running_software_section.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"
#include "tools/vistrel_diag/sections/verdict/verdict_section.h"
#include "tools/vistrel_diag/sections/warp/warp_section.h"

namespace {

constexpr double kHandWatchSeconds = 12.0;  // Long enough to put two controllers down and raise the hands.

/// Greets the person and opens the report.
void Begin(const RunOptions& options, const std::string& tool_folder) {
    PrintBanner();
    if (!options.quick) {
        AskContinue("Ready to start part 1?");  // The answer is ignored: there is nothing to skip yet.
    }
    PrintOpeningLines(tool_folder);
    if (!options.quick && IsVistrelRunning()) {
        WaitForVistrelToClose();
    }
}

/// The machine, the product's settings and the headset. Returns the adapter that the OpenXR runtime requires,
/// if it names one.
std::optional<AdapterLuid> ReportPartOne(const std::string& tool_folder) {
    Report::Section("PART 1 - BASELINE, NOTHING ELSE RUNNING");
    ReportRunningSoftwareSection();
    ReportMachineSection();
    ReportGpuSection();
    ReportDisplaySection();
    ReportGpuOverrideSection();
    ReportInjectionSection(tool_folder);
    LoadProductSettings(tool_folder);  // The sections report the result.
    ReportSettingsInEffect();
    ReportSettingsVerbatim();
    ReportProductLog();
    const HeadsetQuery headset = AskHeadset();
    ReportHeadsetSection(headset);
    return headset.luid_known ? std::optional(headset.adapter_luid) : std::nullopt;
}

/// The measurements that need the benchmark device.
void MeasurePartOne(const RunOptions& options, const BenchmarkDevice& benchmark, VerdictInput& verdict) {
    const CaptureMeasurement capture =
        ReportCaptureSection(benchmark.device.Get(), benchmark.context.Get(), options.capture_seconds);
    verdict.desktop_fps = capture.ok ? FramesPerSecond(capture) : 0.0;
    for (const WarpTiming& timing : ReportWarpSection(benchmark.device.Get(), benchmark.context.Get(),
                                                      benchmark.gpu.adapter.get(), capture)) {
        verdict.warp_costs.push_back({timing.width, timing.height, timing.gpu_ms});
    }
}

void MeasureDepthModel(const RunOptions& options, const std::string& tool_folder, int gpu_index,
                       VerdictInput& verdict) {
    const ModelTiming configured = ReportDepthModelSection(tool_folder, options.run_models, gpu_index);
    if (configured.ok) {
        verdict.model_milliseconds = configured.median_ms;
    }
}

void OfferHandTracking(ID3D11Device* device) {
    Report::Line("");
    if (AskContinue(
            "Run the hand-tracking check? (hold controllers, then set them down and raise your hands)")) {
        ProbeHandTracking(device, kHandWatchSeconds);
    }
}

void ReportPartTwo(const RunOptions& options, const BenchmarkDevice& benchmark, VerdictInput& verdict) {
    verdict.part_two_run = true;
    Report::Section("PART 2 - HEADSET ON, GAME RUNNING");
    ReportRunningSoftwareSection();
    Report::Line("");
    ReportVramLines("while the game is running");
    ReportHeadsetSection(AskHeadset());
    if (!benchmark.device) {
        return;
    }
    OfferHandTracking(benchmark.device.Get());
    const CaptureMeasurement capture =
        ReportGameFrameRate(benchmark.device.Get(), benchmark.context.Get(), options.capture_seconds);
    verdict.game_fps = capture.ok ? FramesPerSecond(capture) : 0.0;
}

void OfferPartTwo(const RunOptions& options, const BenchmarkDevice& benchmark, VerdictInput& verdict) {
    PrintPartTwoInstructions();
    if (!AskContinue("Headset on and game running?")) {
        ReportPartTwoSkipped();
        return;
    }
    CountDownToPartTwo([] { Sleep(1000); });
    ReportPartTwo(options, benchmark, verdict);
}

}  // namespace

void CarryOutRun(const RunOptions& options) {
    const std::string tool_folder = ExecutableFolder();
    Rescue rescue(Report::FilePath(tool_folder));
    Begin(options, tool_folder);

    VerdictInput verdict;
    verdict.refresh_hz = options.refresh_hz;
    const std::optional<AdapterLuid> required_adapter = ReportPartOne(tool_folder);
    const BenchmarkDevice benchmark = ReportBenchmarkSetup(required_adapter);
    if (benchmark.device) {
        MeasurePartOne(options, benchmark, verdict);
    }
    MeasureDepthModel(options, tool_folder, benchmark.gpu.index, verdict);
    if (!options.quick) {
        OfferPartTwo(options, benchmark, verdict);
    }
    verdict.ai_fps_limit = DiagSettings::Instance().ai_fps_limit;
    verdict.depth_mode = DiagSettings::Instance().depth_mode;
    ReportVerdict(verdict);
    rescue.WriteOrdinaryReport([&tool_folder] { Report::WriteFile(tool_folder); });

    WaitForEnter("\nPress Enter to close.\n");
    SetGpuList({});  // The process ends without running static destructors.
}
