// Timing depth models in a worker process: the request and the answers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "depth/inference_timing.h"
#include "tools/vistrel_diag/worker/worker_task.h"

/// Times a range of presets, or one model of the user's own. With neither, onnxruntime.dll is only loaded.
struct DepthModelRequest {
    struct CustomModel {
        std::string path;       ///< UTF-8
        std::int32_t size = 0;  ///< side of its square input in pixels
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

/// The worker's task of that name: loads the runtime, then times the models in order and sends each timing as
/// soon as it is known. Gives a sign of life with each inference.
void CarryOutDepthModelTask(const WorkerMessage& message, WorkerChannel& channel);
