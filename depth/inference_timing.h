// Times one depth model as the product would run it: ONNX Runtime on DirectML.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "depth/inference_loop.h"

struct OnnxRuntime;

/// The result of timing one model.
struct ModelTiming {
    bool ok = false;  ///< at least one timed run completed
    std::string name;
    std::string path_tried;   ///< UTF-8
    std::int32_t width = 0;   ///< pixels; the model's own when it declares them
    std::int32_t height = 0;  ///< pixels; likewise
    double median_ms = 0.0;
    double min_ms = 0.0;
    double max_ms = 0.0;
    std::string error;  ///< why it failed; empty when ok
};

/// The result with what is known of a model before it is timed; the parameters are those of TimeDepthModel.
ModelTiming UntimedModel(const std::string& tool_folder, const std::wstring& model_path,
                         const std::string& display_name, std::int32_t width, std::int32_t height);

/// Times `runs` inferences of the model in `tool_folder` (UTF-8; when empty, `model_path` is used as it
/// stands) on the graphics adapter `gpu_index`, where a negative index means the first. `width` and `height`
/// are the input's size unless the model declares one. An empty `display_name` names the model "custom".
/// Calls `before_each` before each inference, outside the timed part. Throws nothing: every failure becomes a
/// text in the result.
ModelTiming TimeDepthModel(const std::string& tool_folder, const std::wstring& model_path,
                           const std::string& display_name, std::int32_t width, std::int32_t height, int runs,
                           int gpu_index, const std::function<void()>& before_each = {});

/// How a model is to be run.
struct InferenceRequest {
    std::filesystem::path model_file;
    bool half_precision = false;
    int runs = 0;
    int device_id = 0;                       ///< DirectML's, never negative
    std::function<void()> before_each = {};  ///< called before each inference; may be empty
};

/// The part of TimeDepthModel that talks to the runtime. The caller has set the names and the size in
/// `timing`; this fills in the rest. Every object of the runtime is released on every path.
void MeasureInference(const OnnxRuntime& runtime, const InferenceRequest& request, const TickClock& clock,
                      ModelTiming& timing);

/// Calls `attempt` and turns an exception from it into the error text: "onnxruntime: " and the message for an
/// Ort::Exception, the message alone for others. Bytes that are not UTF-8 become U+FFFD.
void AttemptTiming(ModelTiming& timing, const std::function<void()>& attempt);
