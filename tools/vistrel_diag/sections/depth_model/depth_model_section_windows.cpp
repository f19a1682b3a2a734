#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"
#include "depth/onnx_runtime_loader.h"
#include "platform/utf8.h"
#include "settings/diag_settings.h"
#include "tools/vistrel_diag/report/report.h"

ModelTiming ReportDepthModelSection(std::string_view tool_folder, bool all_presets, int gpu_index) {
    Report::Section("DEPTH MODEL INFERENCE");
    if (!LoadOnnxRuntimeModule()) {
        PrintOnnxRuntimeMissing();
        return {};
    }
    const DiagSettings& settings = DiagSettings::Instance();
    PrintDepthModelIntroduction(settings.depth_mode, gpu_index);

    DepthModelTimers timers;
    timers.preset = [&](const DepthModelPreset& preset) {
        return TimeDepthModel(std::string(tool_folder), preset.model_path, preset.display_name,
                              preset.input_width, preset.input_height, kTimedInferences, gpu_index);
    };
    timers.custom = [&](const std::string& path, std::int32_t size) {
        return TimeDepthModel("", WideFromUtf8(path), "custom model", size, size, kTimedInferences,
                              gpu_index);
    };
    return all_presets ? PrintAllModels(settings.depth_model_quality, timers)
                       : PrintConfiguredModel(settings, timers);
}
