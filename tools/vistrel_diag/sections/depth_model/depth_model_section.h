// What the depth model costs: the configured one alone, or every preset in a table.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "depth/depth_model_presets.h"
#include "depth/inference_timing.h"
#include "tools/vistrel_diag/worker/worker_end.h"

struct DiagSettings;

/// Timed inferences of each model.
inline constexpr int kTimedInferences = 15;

/// The functions that time the section's models.
struct DepthModelTimers {
    std::function<ModelTiming(const DepthModelPreset& preset)> preset;
    /// A model of the user's own at `path` (UTF-8), with a square input of `size` pixels.
    std::function<ModelTiming(const std::string& path, std::int32_t size)> custom;
};

/// Prints the section's lines when onnxruntime.dll cannot be loaded.
void PrintOnnxRuntimeMissing();

/// Prints the section's line when the process crashed or hung while it loaded onnxruntime.dll.
void PrintOnnxRuntimeLoadingEnded(const WorkerEnd& end);

/// Prints the section's lines up to the models: where depth comes from on this setup, and the GPU measured
/// on, by its position in GpuList.
void PrintDepthModelIntroduction(std::int32_t depth_mode, int gpu_index);

/// Times and prints the one model that the product is set to use. Returns its timing, which is not ok when
/// there is no such model.
ModelTiming PrintConfiguredModel(const DiagSettings& settings, const DepthModelTimers& timers);

/// Times and prints every preset, each row as soon as it is known. Returns the timing of the configured one,
/// which is not ok when that is not a preset.
ModelTiming PrintAllModels(std::int32_t configured_quality, const DepthModelTimers& timers);

/// Reports the whole section. The models are timed in a process of their own, or in this one when no other
/// can be started. `tool_folder` (UTF-8) is the executable's folder; `gpu_index` is the adapter that the
/// product renders on, or negative when unknown. Returns the timing of the configured model, which is not ok
/// when it could not be timed.
ModelTiming ReportDepthModelSection(std::string_view tool_folder, bool all_presets, int gpu_index);
