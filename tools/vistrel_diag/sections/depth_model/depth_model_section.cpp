#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"

#include "settings/diag_settings.h"
#include "tools/vistrel_diag/report/progress.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

void PrintSingleModel(const ModelTiming& timing) {
    if (!timing.ok) {
        Report::Line("Model           : %s", timing.name.c_str());
        Report::Line("Could not time it: %s", timing.error.c_str());
        Report::Line("Path tried      : %s", timing.path_tried.c_str());
        return;
    }
    Report::Line("Model           : %s (%dx%d)", timing.name.c_str(), timing.width, timing.height);
    Report::Line("Inference       : %.2f ms median (%.2f min, %.2f max) over %d runs", timing.median_ms,
                 timing.min_ms, timing.max_ms, kTimedInferences);
    Report::Line("");
    Report::Line(
        "Re-run without --no-models to time every preset and see what the cheaper ones would cost here.");
}

void PrintModelRow(const DepthModelPreset& preset, const ModelTiming& timing, bool configured) {
    if (timing.ok) {
        Report::Line("%-28s %10.2f %10.2f %10.2f%s", timing.name.c_str(), timing.median_ms, timing.min_ms,
                     timing.max_ms, configured ? "   <- YOURS" : "");
    } else {
        Report::Line("%-28s %10s  (%s)", preset.display_name, "-", timing.error.c_str());
    }
}

}  // namespace

void PrintOnnxRuntimeMissing() {
    Report::Line("onnxruntime.dll is not next to this exe, so inference cannot be timed.");
    Report::Line(
        "Put vistrel_diag.exe in the Vistrel install folder (the one with Vistrel.exe and onnxruntime.dll) "
        "and run it again.");
}

void PrintOnnxRuntimeLoadingEnded(const WorkerEnd& end) {
    Report::Line("!! Loading onnxruntime.dll %s.", WorkerEndText(end).c_str());
}

void PrintDepthModelIntroduction(std::int32_t depth_mode, int gpu_index) {
    if (depth_mode == DiagSettings::kReShadeDepthMode) {
        Report::Line(
            "Depth comes from ReShade on this setup, so no model runs. Timing the configured model anyway, "
            "for reference if AI mode is ever used.");
    }
    const std::vector<GpuInfo>& gpus = GpuList();
    if (gpu_index >= 0 && static_cast<std::size_t>(gpu_index) < gpus.size()) {
        Report::Line("Measured on     : GPU %d (%s)", gpu_index, gpus[gpu_index].name.c_str());
    }
    Report::Line("");
}

ModelTiming PrintConfiguredModel(const DiagSettings& settings, const DepthModelTimers& timers) {
    const DepthModelPreset* const preset = FindDepthModelPreset(settings.depth_model_quality);
    if (preset == nullptr && settings.custom_model_path.empty()) {
        Report::Line(
            "Quality is set to Custom but no custom model path is stored - the app would have no model to "
            "load here either.");
        return {};
    }
    Progress::Show("Timing the depth model");
    ModelTiming timing = preset != nullptr
                             ? timers.preset(*preset)
                             : timers.custom(settings.custom_model_path, settings.ai_resolution);
    Progress::Clear();
    PrintSingleModel(timing);
    return timing;
}

ModelTiming PrintAllModels(std::int32_t configured_quality, const DepthModelTimers& timers) {
    const DepthModelPreset* const configured_preset = FindDepthModelPreset(configured_quality);
    ModelTiming configured;
    Report::Line("%-28s %10s %10s %10s", "MODEL", "median ms", "min", "max");
    int step = 0;
    for (const DepthModelPreset& preset : DepthModelPresets()) {
        const int steps = static_cast<int>(DepthModelPresets().size());
        Progress::Show("Depth model", ++step, steps, preset.display_name);
        const ModelTiming timing = timers.preset(preset);
        const bool is_configured = &preset == configured_preset;
        PrintModelRow(preset, timing, is_configured);
        if (is_configured) {
            configured = timing;
        }
    }
    Progress::Clear();
    return configured;
}
