// Times one depth model as the product would run it: ONNX Runtime on DirectML.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "depth/inference_loop.h"

struct OnnxRuntime;

/// What became of timing one model.
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

/// What there is to say of a model before it is timed; the parameters are those of TimeDepthModel.
ModelTiming UntimedModel(const std::string& tool_folder, const std::wstring& model_path,
                         const std::string& display_name, std::int32_t width, std::int32_t height);

/// Times `runs` inferences of the model in `tool_folder` (UTF-8; when empty, `model_path` is used as it
/// stands) on the graphics adapter `gpu_index`, a negative one meaning the first. `width` and `height` are
/// the input's size unless the model declares one. An empty `display_name` names the model "custom". Calls
/// `before_each` before each inference, outside of what is timed. Throws nothing: every failure is a text in
/// the result.
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

/// The part of TimeDepthModel that talks to the runtime. Starts from `timing` as named and sized by the
/// caller and fills in the rest. Every object of the runtime is released again, on every path.
void MeasureInference(const OnnxRuntime& runtime, const InferenceRequest& request, const TickClock& clock,
                      ModelTiming& timing);

/// Carries out `attempt` and makes an error text of what it throws: "onnxruntime: " and the message for
/// an Ort::Exception, the message alone for others. What is not UTF-8 in it becomes U+FFFD.
void AttemptTiming(ModelTiming& timing, const std::function<void()>& attempt);
