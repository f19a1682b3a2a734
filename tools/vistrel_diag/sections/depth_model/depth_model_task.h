// Timing depth models in a worker process: what it is asked and what it answers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "depth/inference_timing.h"
#include "tools/vistrel_diag/worker/worker_task.h"

/// Presets in a row, or else one model of the user's own, or else none: then onnxruntime.dll is only loaded.
struct DepthModelRequest {
    struct CustomModel {
        std::string path;       ///< UTF-8
        std::int32_t size = 0;  ///< pixels of a side of its square input
    };

    std::string tool_folder;  ///< UTF-8
    int gpu_index = -1;
    int first_preset = 0;
    int preset_count = 0;
    std::optional<CustomModel> custom;
};

WorkerMessage MessageOf(const DepthModelRequest& request);
DepthModelRequest DepthModelRequestOf(const WorkerMessage& message);

WorkerMessage MessageOf(const ModelTiming& timing);
ModelTiming ModelTimingOf(const WorkerMessage& message);

inline constexpr std::string_view kDepthModelTask = "depth_models";

/// The worker's answer before any timing: whether onnxruntime.dll could be loaded.
inline constexpr std::string_view kRuntimeLoaded = "loaded";

/// The worker's task of that name: loads the runtime, then times the models in their order and tells each
/// timing as soon as it is known. Each inference is a sign of life.
void CarryOutDepthModelTask(const WorkerMessage& request, WorkerChannel& channel);
