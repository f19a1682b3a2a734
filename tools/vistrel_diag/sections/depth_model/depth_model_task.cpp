#include "tools/vistrel_diag/sections/depth_model/depth_model_task.h"

namespace {

template <typename Field>
Field Number(const WorkerMessage& message, std::string_view name) {
    return static_cast<Field>(message.Integer(name).value_or(0));
}

}  // namespace

WorkerMessage MessageOf(const DepthModelRequest& request) {
    WorkerMessage message;
    message.SetText("tool_folder", request.tool_folder)
        .SetInteger("gpu_index", request.gpu_index)
        .SetInteger("first_preset", request.first_preset)
        .SetInteger("preset_count", request.preset_count);
    if (request.custom) {
        message.SetText("custom_path", request.custom->path).SetInteger("custom_size", request.custom->size);
    }
    return message;
}

DepthModelRequest DepthModelRequestOf(const WorkerMessage& message) {
    DepthModelRequest request;
    request.tool_folder = message.Text("tool_folder").value_or("");
    request.gpu_index = Number<int>(message, "gpu_index");
    request.first_preset = Number<int>(message, "first_preset");
    request.preset_count = Number<int>(message, "preset_count");
    if (const std::optional<std::string> path = message.Text("custom_path")) {
        request.custom = {*path, Number<std::int32_t>(message, "custom_size")};
    }
    return request;
}

WorkerMessage MessageOf(const ModelTiming& timing) {
    return WorkerMessage()
        .SetTruth("ok", timing.ok)
        .SetText("name", timing.name)
        .SetText("path_tried", timing.path_tried)
        .SetInteger("width", timing.width)
        .SetInteger("height", timing.height)
        .SetNumber("median_ms", timing.median_ms)
        .SetNumber("min_ms", timing.min_ms)
        .SetNumber("max_ms", timing.max_ms)
        .SetText("error", timing.error);
}

ModelTiming ModelTimingOf(const WorkerMessage& message) {
    ModelTiming timing;
    timing.ok = message.Truth("ok");
    timing.name = message.Text("name").value_or("");
    timing.path_tried = message.Text("path_tried").value_or("");
    timing.width = Number<std::int32_t>(message, "width");
    timing.height = Number<std::int32_t>(message, "height");
    timing.median_ms = message.Number("median_ms").value_or(0.0);
    timing.min_ms = message.Number("min_ms").value_or(0.0);
    timing.max_ms = message.Number("max_ms").value_or(0.0);
    timing.error = message.Text("error").value_or("");
    return timing;
}
